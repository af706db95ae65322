#include "TestImages.h"

namespace TestImages {

std::string SafeTestName(const QString& Text)
{
    std::string Out;
    for (QChar C : Text)
        Out += C.isLetterOrNumber() && C.unicode() < 128 ? char(C.unicode()) : '_';
    return Out;
}

QByteArray BmpFile(int Width, int Height, int Bits, const QByteArray& Table, const QByteArray& Rows)
{
    QByteArray F("BM");
    // bfSize, the two reserved words, bfOffBits, biSize, the sides, then planes 1 and the bit count.
    for (uint32_t V : {uint32_t(40 + Table.size() + Rows.size()), 0u, uint32_t(54 + Table.size()), 40u,
                       uint32_t(Width), uint32_t(Height), 1u | (uint32_t(Bits) << 16)})
        for (int I = 0; I < 4; ++I)
            F.append(char(V >> (8 * I)));
    // Compression, image size, resolutions, colours used and important: all zero.
    return F + QByteArray(24, '\0') + Table + Rows;
}

std::vector<uint32_t> RandomWords(size_t Count, uint32_t Seed)
{
    std::vector<uint32_t> Out(Count);
    uint32_t S = Seed * 2654435761u + 12345u;
    for (auto& W : Out) {
        S ^= S << 13;  // xorshift32
        S ^= S >> 17;
        S ^= S << 5;
        W = S;
    }
    return Out;
}

std::vector<uint32_t> Grid(int Width, int Height, const std::function<uint32_t(int X, int Y)>& At)
{
    std::vector<uint32_t> Out;
    for (int Y = 0; Y < Height; ++Y)
        for (int X = 0; X < Width; ++X)
            Out.push_back(At(X, Y));
    return Out;
}

void MakeDIB32(clsDIB& Dib, int Width, int Height, const std::vector<uint32_t>& Quads, bool TopDown)
{
    Dib.CreateBlankDIB(Width, Height, 32, 0, TopDown, true);
    for (int Y = 0; Y < Height; ++Y)
        for (int X = 0; X < Width; ++X)
            SetQuad(Dib, X, TopDown ? Y : Height - 1 - Y, Quads[size_t(Y) * Width + X]);
}

std::vector<uint32_t> ImageQuads(const clsDIB& Dib)
{
    const int H = Dib.DIBHeight();
    const bool TopDown = Dib.Header().biHeight < 0;
    return Grid(Dib.DIBWidth(), H, [&](int X, int Y) { return GetQuad(Dib, X, TopDown ? Y : H - 1 - Y); });
}

RawSurface::RawSurface(int Width, int Height, int Depth, bool IsTopDown, std::vector<uint32_t> Colors)
    : W(Width), H(Height), Bpp(Depth), TopDown(IsTopDown), Stride(StrideOf(Width, Depth)),
      Bytes(size_t(Stride) * Height), Table(std::move(Colors))
{
    if (Bpp <= 8)
        Table.resize(size_t(1) << Bpp, 0);
    Dc = std::make_unique<DeviceContext>(Bytes.data(), W, H, Bpp, Stride, TopDown,
                                         Table.empty() ? nullptr : Table.data(), int(Table.size()));
}

uint32_t RawSurface::Get(int X, int Y)
{
    const uint8_t* P = RowPtr(Y);
    if (Bpp < 8)  // the leftmost pixel in the high bits
        return (P[X * Bpp / 8] >> (8 - Bpp - X * Bpp % 8)) & ((1u << Bpp) - 1);
    uint32_t V = 0;
    std::memcpy(&V, P + X * Bpp / 8, size_t(Bpp / 8));
    return V;
}

void RawSurface::Set(int X, int Y, uint32_t Value)
{
    uint8_t* P = RowPtr(Y);
    if (Bpp < 8) {
        const int Shift = 8 - Bpp - X * Bpp % 8;
        const uint32_t Mask = ((1u << Bpp) - 1) << Shift;
        P[X * Bpp / 8] = uint8_t((P[X * Bpp / 8] & ~Mask) | ((Value << Shift) & Mask));
    } else {
        std::memcpy(P + X * Bpp / 8, &Value, size_t(Bpp / 8));
    }
}

const std::vector<SuiteFile> BmpSuiteGood = {
    {"pal1", "pal1", 1},          {"pal1bg", "pal1bg", 1},       {"pal4", "pal4", 4},
    {"pal4rle", "pal4", 4},       {"pal8", "pal8", 8},           {"pal8gs", "pal8gs", 8},
    {"pal8nonsquare", "pal8nonsquare-e", 8},                     {"pal8rle", "pal8", 8},
    {"pal8topdown", "pal8", 8},   {"pal8v4", "pal8", 8},         {"pal8v5", "pal8", 8},
    {"pal8w124", "pal8w124", 8},  {"pal8w126", "pal8w126", 8},   {"rgb16-565", "rgb16-565", 24},
    {"rgb16-565pal", "rgb16-565", 24},                           {"rgb16", "rgb16", 24},
    {"rgb24", "rgb24", 24},       {"rgb24pal", "rgb24", 24},     {"rgb32", "rgb24", 32},
    {"rgb32bf", "rgb24", 32},
};

std::string ReferenceDifferences(const char* Reference, int Width, int Height,
                                 const std::function<QRgb(int, int)>& PixelAt, bool WithAlpha)
{
    const QImage Image =
        QImage(TestData(QStringLiteral("bmpsuite/html/%1.png").arg(Reference))).convertToFormat(QImage::Format_ARGB32);
    if (Image.isNull() || Image.width() != Width || Image.height() != Height)
        return "no rendering of that size";
    int Count = 0;
    std::string First;
    for (int Y = 0; Y < Height; ++Y)
        for (int X = 0; X < Width; ++X) {
            const QRgb A = PixelAt(X, Y), R = Image.pixel(X, Y);
            const bool SameColor = (A & 0xFFFFFF) == (R & 0xFFFFFF);
            if (WithAlpha ? qAlpha(A) == qAlpha(R) && (qAlpha(R) == 0 || SameColor) : SameColor)
                continue;
            if (Count++ == 0)
                First = QStringLiteral("first at %1,%2: %3 instead of %4")
                            .arg(X)
                            .arg(Y)
                            .arg(A, 8, 16, QLatin1Char('0'))
                            .arg(R, 8, 16, QLatin1Char('0'))
                            .toStdString();
        }
    return Count ? std::to_string(Count) + " pixels differ, " + First : std::string();
}

} // namespace TestImages
