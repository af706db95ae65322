#pragma once
// The device context of a surface: a view of pixel memory that somebody else owns
// (a clsDIB, a picture, a window's back buffer), its colour table, its stretch mode and
// background colour, and a QPainter over the same bytes for drawing. The blits of the
// program are its own byte loops over these views; only drawing goes through QPainter.
#include <cstdint>
#include <memory>

class QImage;
class QPainter;

// Raster operations of BitBlt and StretchBlt.
constexpr uint32_t SRCCOPY = 0x00CC0020;
constexpr uint32_t SRCAND = 0x008800C6;
constexpr uint32_t SRCPAINT = 0x00EE0086;
constexpr uint32_t SRCINVERT = 0x00660046;

// Stretch modes.
constexpr int BLACKONWHITE = 1;
constexpr int WHITEONBLACK = 2;
constexpr int COLORONCOLOR = 3;
constexpr int HALFTONE = 4;

// GetPixel outside the surface.
constexpr uint32_t CLR_INVALID = 0xFFFFFFFF;

// A colour table entry as it lies in memory (blue, green, red, reserved), read as one
// little-endian word: 0x00RRGGBB. Colour values elsewhere are 0x00BBGGRR.
inline uint32_t QuadFromColor(uint32_t Color)
{
    return ((Color & 0xFF) << 16) | (Color & 0xFF00) | ((Color >> 16) & 0xFF);
}
inline uint32_t ColorFromQuad(uint32_t Quad)
{
    return ((Quad & 0xFF) << 16) | (Quad & 0xFF00) | ((Quad >> 16) & 0xFF);
}

class DeviceContext {
public:
    // Bpp is the storage depth: 1, 4, 8, 16 (5-5-5), 24 or 32. ColorTable holds
    // ColorCount quads for depths up to 8 and may be null otherwise.
    DeviceContext(uint8_t* Bits, int Width, int Height, int Bpp, int Stride, bool TopDown,
                  uint32_t* ColorTable, int ColorCount);
    ~DeviceContext();
    DeviceContext(const DeviceContext&) = delete;
    DeviceContext& operator=(const DeviceContext&) = delete;

    int Width() const { return W; }
    int Height() const { return H; }
    int Bpp() const { return Depth; }
    int Stride() const { return RowBytes; }
    bool TopDown() const { return IsTopDown; }
    uint8_t* Bits() const { return Memory; }
    // Image row Y, 0 being the top row, whatever the storage order.
    uint8_t* Row(int Y) const { return Memory + static_cast<intptr_t>(IsTopDown ? Y : H - 1 - Y) * RowBytes; }
    uint32_t* ColorTable() const { return Table; }
    int ColorCount() const { return TableCount; }

    int StretchMode = BLACKONWHITE;
    uint32_t BkColor = 0xFFFFFF;

    // Colour 0x00BBGGRR of the pixel at image coordinates, CLR_INVALID outside.
    uint32_t GetPixel(int X, int Y) const;
    void SetPixelV(int X, int Y, uint32_t Color);
    // Solid brush over a rectangle in image coordinates, clipped. The alpha byte of a
    // 32-bit surface becomes 0, as a brush leaves it.
    void FillRect(int X, int Y, int Width, int Height, uint32_t Color);
    // Lowest index of the nearest table colour by Euclidean RGB distance.
    int NearestIndex(uint32_t Color) const;

    // A painter in image coordinates, row 0 at the top. Only 24- and 32-bit surfaces can
    // be drawn on; for the others this is null. A top-down surface is painted in place. A
    // bottom-up one is painted on a top-down copy that EndPaint puts back row by row: a
    // flipping transform would mirror text and pictures and move one-pixel lines by a row.
    // Any other use of the context (blits, GetPixel, SetPixelV, FillRect) ends the painting
    // first; code that reads the memory directly calls EndPaint itself.
    QPainter* Painter();
    void EndPaint() const;

private:
    uint8_t* Memory;
    int W, H, Depth, RowBytes;
    bool IsTopDown;
    uint32_t* Table;
    int TableCount;
    mutable std::unique_ptr<QImage> PaintImage;
    mutable std::unique_ptr<QPainter> PaintPainter;
};

// Copies a block from one context to another in image coordinates, converting depths
// through the colour tables; the raster operation combines source and target bits as
// the target stores them. Clipped to both surfaces; the same context may be both.
bool BitBlt(DeviceContext* Target, int X, int Y, int Width, int Height,
            const DeviceContext* Source, int SrcX, int SrcY, uint32_t Rop);

// Stretched copy in the target's stretch mode: HALFTONE averages areas when shrinking
// and interpolates bilinearly when enlarging; every other mode takes the nearest pixel.
// A negative extent mirrors: the rectangle then runs from X (inclusive) leftwards or
// from Y upwards, so X = width - 1 with Width = -width mirrors a whole surface.
bool StretchBlt(DeviceContext* Target, int X, int Y, int Width, int Height,
                const DeviceContext* Source, int SrcX, int SrcY, int SrcWidth, int SrcHeight,
                uint32_t Rop);

int GetStretchBltMode(const DeviceContext* Context);
int SetStretchBltMode(DeviceContext* Context, int Mode);
