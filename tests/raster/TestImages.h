#pragma once
// What the raster tests share: surfaces of known pixels, raw access to a surface's
// memory by storage row, file bytes and little-endian fields, and the reference decoders
// (the toolkit's PNG reader and ImageMagick) that the loader is checked against.
#include <QByteArray>
#include <QImage>
#include <QString>
#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "DeviceContext.h"
#include "clsDIB.h"

namespace TestImages {

// A name fit for a parameterised test: letters and digits, the rest as underscores.
std::string SafeTestName(const QString& Text);

// A path inside the public test suites.
QString TestData(const QString& Relative);
QByteArray ReadBytes(const QString& Path);
bool WriteBytes(const QString& Path, const QByteArray& Bytes);

uint16_t Le16(const QByteArray& Bytes, int Offset);
uint32_t Le32(const QByteArray& Bytes, int Offset);
void PutLe16(QByteArray& Bytes, uint16_t Value);
void PutLe32(QByteArray& Bytes, uint32_t Value);

// Row size of a packed DIB row, written out here rather than taken from the code.
int32_t StrideOf(int32_t Width, int Bits);

// A 32-bit pixel as the little-endian word of its bytes blue, green, red, alpha.
inline uint32_t Quad(uint8_t B, uint8_t G, uint8_t R, uint8_t A = 0)
{
    return uint32_t(B) | (uint32_t(G) << 8) | (uint32_t(R) << 16) | (uint32_t(A) << 24);
}
inline uint8_t QB(uint32_t Q) { return uint8_t(Q); }
inline uint8_t QG(uint32_t Q) { return uint8_t(Q >> 8); }
inline uint8_t QR(uint32_t Q) { return uint8_t(Q >> 16); }
inline uint8_t QA(uint32_t Q) { return uint8_t(Q >> 24); }
// Colour value 0x00BBGGRR of a quad, alpha dropped, and back.
inline uint32_t ColorOfQuad(uint32_t Q) { return uint32_t(QR(Q)) | (uint32_t(QG(Q)) << 8) | (uint32_t(QB(Q)) << 16); }
inline uint32_t QuadOfColor(uint32_t C, uint8_t A = 0)
{
    return Quad(uint8_t(C >> 16), uint8_t(C >> 8), uint8_t(C), A);
}
inline uint32_t ColorOfRgb(QRgb Rgb) { return uint32_t(qRed(Rgb)) | (uint32_t(qGreen(Rgb)) << 8) | (uint32_t(qBlue(Rgb)) << 16); }

// Deterministic pseudo-random words.
std::vector<uint32_t> RandomWords(size_t Count, uint32_t Seed);

// Raw memory of a surface, by storage row; the stride follows the depth of the memory.
uint8_t* StorageRow(const clsDIB& Dib, int Row);
int StorageRowOfImageRow(const clsDIB& Dib, int Y);
uint32_t GetQuad(const clsDIB& Dib, int X, int Row);
void SetQuad(clsDIB& Dib, int X, int Row, uint32_t Value);
// The colour 0x00BBGGRR at column X of a storage row, for any depth, through the table.
uint32_t StoredColor(const clsDIB& Dib, int X, int Row);
// The table entries of a shallow surface as colour values.
std::vector<uint32_t> TableColors(const clsDIB& Dib);

// A 32-bit surface whose image pixel (x, y) is Quads[y * Width + x].
void MakeDIB32(clsDIB& Dib, int Width, int Height, const std::vector<uint32_t>& Quads, bool TopDown = false);
// The quads of a 32-bit surface in image order (row 0 at the top).
std::vector<uint32_t> ImageQuads(const clsDIB& Dib);
// The quads of a 32-bit surface in storage order.
std::vector<uint32_t> StorageQuads(const clsDIB& Dib);

// Pixel memory owned by a test, with a device context over it.
struct RawSurface {
    RawSurface(int Width, int Height, int Bpp, bool TopDown, std::vector<uint32_t> Table = {});
    int W, H, Bpp;
    bool TopDown;
    int Stride;
    std::vector<uint8_t> Bytes;
    std::vector<uint32_t> Table;  // quads 0x00RRGGBB
    std::unique_ptr<DeviceContext> Dc;

    uint8_t* RowPtr(int Y);  // image row
    uint32_t Get(int X, int Y);  // index for depths to 8, quad for 32
    void Set(int X, int Y, uint32_t Value);
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

// Reference decoders, kept apart from the loader under test.
QImage LoadReference(const QString& Path);  // the toolkit's PNG reader, as ARGB32
// ImageMagick's decoding as 8-bit red, green, blue, alpha, row 0 at the top.
bool MagickRgba(const QString& Path, int& Width, int& Height, QByteArray& Rgba, QString& Error);

} // namespace TestImages
