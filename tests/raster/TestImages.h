#pragma once
// What the raster tests share: surfaces of known pixels, raw access to a surface's memory by
// storage row, file bytes, and the reference renderings the loader is checked against.
#include <QByteArray>
#include <QFile>
#include <QImage>
#include <QString>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "DeviceContext.h"
#include "clsDIB.h"

namespace TestImages {

std::string SafeTestName(const QString& Text);  // letters and digits, the rest as underscores
inline QString TestData(const QString& Relative) { return QStringLiteral(TESSAVO_TESTDATA "/") + Relative; }
inline QByteArray ReadBytes(const QString& Path)
{
    QFile File(Path);
    return File.open(QIODevice::ReadOnly) ? File.readAll() : QByteArray();
}
inline bool WriteBytes(const QString& Path, const QByteArray& Bytes)
{
    QFile File(Path);
    return File.open(QIODevice::WriteOnly | QIODevice::Truncate) && File.write(Bytes) == Bytes.size();
}
// Row size of a packed DIB row, written out here rather than taken from the code.
inline int32_t StrideOf(int32_t Width, int Bits) { return (Width * Bits + 31) / 32 * 4; }
// A BMP file as the writers lay it out; bfSize leaves out the 14 bytes of the file header.
QByteArray BmpFile(int Width, int Height, int Bits, const QByteArray& Table, const QByteArray& Rows);

// A 32-bit pixel as the little-endian word of its bytes blue, green, red, alpha.
inline uint32_t Quad(uint8_t B, uint8_t G, uint8_t R, uint8_t A = 0)
{
    return uint32_t(B) | (uint32_t(G) << 8) | (uint32_t(R) << 16) | (uint32_t(A) << 24);
}
inline uint8_t QB(uint32_t Q) { return uint8_t(Q); }
inline uint8_t QG(uint32_t Q) { return uint8_t(Q >> 8); }
inline uint8_t QR(uint32_t Q) { return uint8_t(Q >> 16); }
inline uint8_t QA(uint32_t Q) { return uint8_t(Q >> 24); }
// Colour value 0x00BBGGRR of a quad or a QRgb, alpha dropped, and back.
inline uint32_t ColorOfQuad(uint32_t Q) { return QR(Q) | (uint32_t(QG(Q)) << 8) | (uint32_t(QB(Q)) << 16); }
inline uint32_t QuadOfColor(uint32_t C, uint8_t A = 0) { return Quad(QR(C), QG(C), QB(C), A); }
inline uint32_t ColorOfRgb(QRgb Rgb) { return ColorOfQuad(Rgb); }
inline QRgb RgbOfColor(uint32_t C) { return qRgb(int(C & 255), int((C >> 8) & 255), int((C >> 16) & 255)); }

std::vector<uint32_t> RandomWords(size_t Count, uint32_t Seed);  // the same on every machine
// The value a rule gives for each pixel of a Width by Height picture, row by row.
std::vector<uint32_t> Grid(int Width, int Height, const std::function<uint32_t(int X, int Y)>& At);
// The colours of a context in image order.
inline std::vector<uint32_t> Colors(const DeviceContext* Dc)
{
    return Grid(Dc->Width(), Dc->Height(), [Dc](int X, int Y) { return Dc->GetPixel(X, Y); });
}
// A surface's bookkeeping in one list: width, height, bpp, storage bpp, stride, size, biHeight, alpha flag.
inline std::vector<int64_t> Shape(const clsDIB& Dib)
{
    return {Dib.DIBWidth(),         Dib.DIBHeight(), Dib.DIBbpp(),          Dib.StorageBpp(),
            Dib.BytesPerScanline(), Dib.DIBSize(),   Dib.Header().biHeight, Dib.DIBhasAlpha()};
}

inline std::vector<uint8_t> Memory(const clsDIB& Dib)
{
    return std::vector<uint8_t>(Dib.DIBBitsPtr(), Dib.DIBBitsPtr() + Dib.DIBSize());
}
// Quads of a 32-bit surface's memory, by storage row.
inline uint32_t GetQuad(const clsDIB& Dib, int X, int Row)
{
    uint32_t V;
    std::memcpy(&V, Dib.DIBBitsPtr() + (size_t(Row) * Dib.DIBWidth() + X) * 4, 4);
    return V;
}
inline void SetQuad(clsDIB& Dib, int X, int Row, uint32_t V)
{
    std::memcpy(Dib.DIBBitsPtr() + (size_t(Row) * Dib.DIBWidth() + X) * 4, &V, 4);
}
// A 32-bit surface whose image pixel (x, y) is Quads[y * Width + x].
void MakeDIB32(clsDIB& Dib, int Width, int Height, const std::vector<uint32_t>& Quads, bool TopDown = false);
std::vector<uint32_t> ImageQuads(const clsDIB& Dib);  // row 0 at the top
inline std::vector<uint32_t> StorageQuads(const clsDIB& Dib)
{
    return Grid(Dib.DIBWidth(), Dib.DIBHeight(), [&](int X, int R) { return GetQuad(Dib, X, R); });
}

// Pixel memory owned by a test, with a device context over it.
struct RawSurface {
    RawSurface(int Width, int Height, int Bpp, bool TopDown, std::vector<uint32_t> Table = {});
    int W, H, Bpp;
    bool TopDown;
    int Stride;
    std::vector<uint8_t> Bytes;
    std::vector<uint32_t> Table;  // quads 0x00RRGGBB
    std::unique_ptr<DeviceContext> Dc;

    uint8_t* RowPtr(int Y) { return Bytes.data() + size_t(TopDown ? Y : H - 1 - Y) * Stride; }
    uint32_t Get(int X, int Y);  // index for depths to 8, the stored bytes for 24 and 32
    void Set(int X, int Y, uint32_t Value);
    std::vector<uint32_t> Pixels(uint32_t Mask = 0xFFFFFFFFu)
    {
        return Grid(W, H, [&](int X, int Y) { return Get(X, Y) & Mask; });
    }
};

// The good files of the BMP suite: the suite's reference rendering of each and the depth
// the loader keeps (1, 4, 8, 24 and 32 as in the header, 16 bits as 24).
struct SuiteFile {
    const char* Name;
    const char* Reference;
    int Depth;
};
extern const std::vector<SuiteFile> BmpSuiteGood;
inline void PrintTo(const SuiteFile& File, std::ostream* Out) { *Out << File.Name; }

// "" when PixelAt(x, y) has the colour of every pixel of the suite's rendering Reference (and,
// WithAlpha, its alpha: pixels the rendering shows fully transparent are then compared by alpha
// only); else the count and the first difference.
std::string ReferenceDifferences(const char* Reference, int Width, int Height,
                                 const std::function<QRgb(int, int)>& PixelAt, bool WithAlpha = false);

} // namespace TestImages
