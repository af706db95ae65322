#pragma once
// The bitmap surface on which the whole program paints: pixel memory of 1 to 32 bits a
// pixel, rows bottom-up unless created top-down, stride (width * bpp + 31) / 32 * 4, with
// its device context for blits and drawing.
#include <QString>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "Array2D.h"
#include "DeviceContext.h"
#include "PixelMemory.h"
#include "StdPicture.h"

class clsPal;
class clsPalDither;

// The header of a surface, laid out as a BITMAPINFOHEADER.
struct BitmapInfoHeader {
    int32_t biSize = 0;
    int32_t biWidth = 0;
    int32_t biHeight = 0;
    int16_t biPlanes = 0;
    int16_t biBitCount = 0;
    int32_t biCompression = 0;
    int32_t biSizeImage = 0;
    int32_t biXPelsPerMeter = 0;
    int32_t biYPelsPerMeter = 0;
    int32_t biClrUsed = 0;
    int32_t biClrImportant = 0;
};

class clsDIB {
public:
    clsDIB() = default;
    ~clsDIB();
    clsDIB(const clsDIB&) = delete;
    clsDIB& operator=(const clsDIB&) = delete;

    bool CreateBlankDIB(int32_t Width, int32_t Height, int16_t BPP, uint32_t BackColor, bool TopDown,
                        bool Force32 = false);
    bool CreateDIBFromPic(const StdPicture& Picture, bool Force32);
    bool CreateDIBFromFile(const QString& FileName, bool FlipIfOpaque);

    void Post_Icon_Arrays_To_DIB(clsDIB& Target, const Array2D<uint32_t>& Colors, const Array2D<uint8_t>& Mask,
                                 const Array2D<uint8_t>& Alpha);
    void Fill_DIB_With_AlphaValues(clsDIB& Target, const DeviceContext* MaskDC, const Array2D<uint8_t>& Alpha);
    void Display_DIB_With_Alpha(clsDIB& Source, DeviceContext* TargetDC, uint32_t BackColor, bool Flip);

    bool Save_DIB_To_File(const QString& FileName, clsDIB& Source);
    bool Save_BMP_To_File_With_PAL(const QString& FileName, clsDIB& Source, const clsPal& Pal,
                                   const clsPalDither& PalDither, int16_t BPP);

    void CloneDIB(clsDIB& Source, clsDIB& Target, uint32_t BackColor, bool TopDown);
    void PaintFromDIBtoDIB(clsDIB& Source, clsDIB& Target, int X, int Y, int Width, int Height, int SrcX = 0,
                           int SrcY = 0);
    void StretchPaintFromDIBtoDIB(clsDIB& Source, clsDIB& Target, bool Halftone = false, int X = 0, int Y = 0,
                                  int Width = 0, int Height = 0, int SrcX = 0, int SrcY = 0, int SrcWidth = 0,
                                  int SrcHeight = 0);
    bool FillDIBFromPic(const StdPicture& Picture);
    void PaintFromPicToDIB(const StdPicture& Picture, clsDIB& Target, int X, int Y, int Width, int Height, int SrcX,
                           int SrcY, uint32_t Rop);
    void PaintFromDIBToPic(clsDIB& Source, StdPicture& Picture, int X, int Y, int Width, int Height, int SrcX,
                           int SrcY, uint32_t Rop);
    void StretchPaintFromDIBToPic(clsDIB& Source, StdPicture& Picture, bool Halftone, int X, int Y, int Width,
                                  int Height, int SrcX, int SrcY, int SrcWidth, int SrcHeight);
    // The window's device context stands for the window.
    void StretchPaintFromDIBToForm(clsDIB& Source, DeviceContext* FormDC, bool Halftone, int X, int Y, int Width,
                                   int Height, int SrcX, int SrcY, int SrcWidth, int SrcHeight);
    void StretchPaintFromPicToDIB(const StdPicture& Picture, clsDIB& Target, bool Halftone, int X, int Y, int Width,
                                  int Height, int SrcX, int SrcY, int SrcWidth, int SrcHeight);
    void StretchPaintFromDIBtoDIB_Antialias_NativeDB(clsDIB& Source, clsDIB& Target);

    int32_t BytesPerScanline() const { return Stride; }
    int32_t DIBWidth() const { return Width; }
    int32_t DIBHeight() const { return Height; }
    DeviceContext* DIBhDC() const { return Context.get(); }
    // The section's handle: its pixel memory, null when there is none.
    const void* DIBhDIB() const { return Bits; }
    uint8_t* DIBBitsPtr() const { return Bits; }
    int32_t DIBbpp() const { return Bpp; }
    bool DIBhasAlpha() const { return HasAlpha; }
    void setDIBhasAlpha(bool Value) { HasAlpha = Value; }
    int32_t DIBSize() const { return Stride * Height; }
    uint32_t DIBBackColor() const { return BackColor; }
    const BitmapInfoHeader& Header() const { return Info; }
    // Depth of the pixel memory itself: 32 where Force32 raised a deeper request.
    int32_t StorageBpp() const { return Info.biBitCount; }

    void ClearUp();

    int32_t BPPperActualPic(const StdPicture& Picture) const;
    int32_t BPPperActualDIB(clsDIB& Dib);
    int32_t CountColorsDIB(clsDIB& Dib);
    int32_t IsMultiColorDIB(clsDIB& Dib);

    void CopyToClipboard();
    void GetBestFitPointAndSize(int32_t BoxWidth, int32_t BoxHeight, int32_t& X, int32_t& Y, int32_t& OutWidth,
                                int32_t& OutHeight, bool Enlarge);
    void RotateDIB(clsDIB& Dib, int16_t Mode);
    void BlendIn(clsDIB& Target, clsDIB& Source, int32_t Percent, int32_t ExcludeColor);
    void BlendIn_Masked(clsDIB& Target, clsDIB& Source, clsDIB& Mask, int32_t Percent);
    void CreateMask_viaDC(clsDIB& Dib);
    void Create_ImageMask_Pair(clsDIB& Image, clsDIB& Mask, int32_t TransparentColor);
    void ColorBackGroundDIB(clsDIB& Target, uint32_t Color);
    void TileDIB(clsDIB& Target, const StdPicture& Tile);
    void DIBNetPaintedArea(clsDIB& Dib, int32_t& Left, int32_t& Top, int32_t& Right, int32_t& Bottom,
                           uint32_t BackColor);
    void SetPaletteToDIB8BPP(const std::vector<uint8_t>& ColorTable);
    int32_t GetPaletteFromDIB8BPP(std::vector<uint8_t>& ColorTable) const;
    int16_t PaletteIndex_In_DIB_XY(clsDIB& Dib, int X, int Y);

    // Events: once per row of BlendIn and BlendIn_Masked with the percentage done, and
    // once when they finish.
    std::function<void(int32_t Percent)> Progress;
    std::function<void()> ProgressEnd;

private:
    bool Allocate(int32_t NewWidth, int32_t NewHeight, int StorageBits, bool TopDown);
    // CreateBlankDIB, optionally without painting the back colour, for callers that write
    // every pixel at once themselves.
    bool Create(int32_t NewWidth, int32_t NewHeight, int16_t BPP, uint32_t NewBackColor, bool TopDown, bool Force32,
                bool Fill);
    // Hands the pixel memory over to the caller and clears.
    PixelMemory TakeBits();
    void Census(clsDIB& Dib, int Mode, int32_t& Result);

    BitmapInfoHeader Info;
    std::unique_ptr<DeviceContext> Context;
    PixelMemory Memory;
    uint8_t* Bits = nullptr;
    std::vector<uint32_t> ColorTable;
    int32_t Bpp = 0;
    int32_t Width = 0;
    int32_t Height = 0;
    int32_t Stride = 0;
    bool HasAlpha = false;
    uint32_t BackColor = 0;
};
