#include "TestImages.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <cstring>

namespace TestImages {

std::string SafeTestName(const QString& Text)
{
    std::string Out;
    for (QChar C : Text)
        Out += C.isLetterOrNumber() && C.unicode() < 128 ? char(C.unicode()) : '_';
    return Out;
}

QString TestData(const QString& Relative)
{
    return QStringLiteral(TESSAVO_TESTDATA) + QLatin1Char('/') + Relative;
}

QByteArray ReadBytes(const QString& Path)
{
    QFile File(Path);
    if (!File.open(QIODevice::ReadOnly))
        return {};
    return File.readAll();
}

bool WriteBytes(const QString& Path, const QByteArray& Bytes)
{
    QFile File(Path);
    if (!File.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return File.write(Bytes) == Bytes.size();
}

uint16_t Le16(const QByteArray& Bytes, int Offset)
{
    const auto* P = reinterpret_cast<const uint8_t*>(Bytes.constData()) + Offset;
    return uint16_t(P[0] | (P[1] << 8));
}

uint32_t Le32(const QByteArray& Bytes, int Offset)
{
    const auto* P = reinterpret_cast<const uint8_t*>(Bytes.constData()) + Offset;
    return uint32_t(P[0]) | (uint32_t(P[1]) << 8) | (uint32_t(P[2]) << 16) | (uint32_t(P[3]) << 24);
}

void PutLe16(QByteArray& Bytes, uint16_t Value)
{
    Bytes.append(char(Value & 255));
    Bytes.append(char(Value >> 8));
}

void PutLe32(QByteArray& Bytes, uint32_t Value)
{
    for (int I = 0; I < 4; ++I)
        Bytes.append(char((Value >> (8 * I)) & 255));
}

int32_t StrideOf(int32_t Width, int Bits)
{
    return (Width * Bits + 31) / 32 * 4;
}

std::vector<uint32_t> RandomWords(size_t Count, uint32_t Seed)
{
    std::vector<uint32_t> Out(Count);
    uint32_t S = Seed * 2654435761u + 12345u;
    for (auto& W : Out) {
        // xorshift32: enough spread for test pictures, the same on every machine.
        S ^= S << 13;
        S ^= S >> 17;
        S ^= S << 5;
        W = S;
    }
    return Out;
}

uint8_t* StorageRow(const clsDIB& Dib, int Row)
{
    return Dib.DIBBitsPtr() + static_cast<size_t>(Row) * StrideOf(Dib.DIBWidth(), Dib.Header().biBitCount);
}

int StorageRowOfImageRow(const clsDIB& Dib, int Y)
{
    return Dib.Header().biHeight < 0 ? Y : Dib.DIBHeight() - 1 - Y;
}

uint32_t GetQuad(const clsDIB& Dib, int X, int Row)
{
    uint32_t V;
    std::memcpy(&V, StorageRow(Dib, Row) + X * 4, 4);
    return V;
}

void SetQuad(clsDIB& Dib, int X, int Row, uint32_t Value)
{
    std::memcpy(StorageRow(Dib, Row) + X * 4, &Value, 4);
}

std::vector<uint32_t> TableColors(const clsDIB& Dib)
{
    std::vector<uint8_t> Bytes;
    const int Count = Dib.GetPaletteFromDIB8BPP(Bytes);
    std::vector<uint32_t> Out;
    for (int I = 0; I < Count && (I * 4 + 3) < int(Bytes.size()); ++I)
        Out.push_back(uint32_t(Bytes[I * 4 + 2]) | (uint32_t(Bytes[I * 4 + 1]) << 8) |
                      (uint32_t(Bytes[I * 4]) << 16));
    return Out;
}

uint32_t StoredColor(const clsDIB& Dib, int X, int Row)
{
    const uint8_t* P = StorageRow(Dib, Row);
    const int Bits = Dib.Header().biBitCount;
    if (Bits == 32)
        return ColorOfQuad(GetQuad(Dib, X, Row));
    if (Bits == 24)
        return uint32_t(P[X * 3 + 2]) | (uint32_t(P[X * 3 + 1]) << 8) | (uint32_t(P[X * 3]) << 16);
    int Index = 0;
    if (Bits == 8)
        Index = P[X];
    else if (Bits == 4)
        Index = (X % 2) ? (P[X / 2] & 15) : (P[X / 2] >> 4);
    else if (Bits == 1)
        Index = (P[X / 8] >> (7 - X % 8)) & 1;
    const std::vector<uint32_t> Table = TableColors(Dib);
    return Index < int(Table.size()) ? Table[Index] : 0xFFFFFFFFu;
}

void MakeDIB32(clsDIB& Dib, int Width, int Height, const std::vector<uint32_t>& Quads, bool TopDown)
{
    Dib.CreateBlankDIB(Width, Height, 32, 0, TopDown, true);
    for (int Y = 0; Y < Height; ++Y)
        for (int X = 0; X < Width; ++X)
            SetQuad(Dib, X, StorageRowOfImageRow(Dib, Y), Quads[size_t(Y) * Width + X]);
}

std::vector<uint32_t> ImageQuads(const clsDIB& Dib)
{
    std::vector<uint32_t> Out;
    for (int Y = 0; Y < Dib.DIBHeight(); ++Y)
        for (int X = 0; X < Dib.DIBWidth(); ++X)
            Out.push_back(GetQuad(Dib, X, StorageRowOfImageRow(Dib, Y)));
    return Out;
}

std::vector<uint32_t> StorageQuads(const clsDIB& Dib)
{
    std::vector<uint32_t> Out;
    for (int R = 0; R < Dib.DIBHeight(); ++R)
        for (int X = 0; X < Dib.DIBWidth(); ++X)
            Out.push_back(GetQuad(Dib, X, R));
    return Out;
}

RawSurface::RawSurface(int Width, int Height, int Depth, bool IsTopDown, std::vector<uint32_t> Colors)
    : W(Width), H(Height), Bpp(Depth), TopDown(IsTopDown), Stride(StrideOf(Width, Depth)),
      Bytes(size_t(StrideOf(Width, Depth)) * Height), Table(std::move(Colors))
{
    if (Bpp <= 8)
        Table.resize(size_t(1) << Bpp, 0);
    Dc = std::make_unique<DeviceContext>(Bytes.data(), W, H, Bpp, Stride, TopDown,
                                         Table.empty() ? nullptr : Table.data(), int(Table.size()));
}

uint8_t* RawSurface::RowPtr(int Y)
{
    return Bytes.data() + size_t(TopDown ? Y : H - 1 - Y) * Stride;
}

uint32_t RawSurface::Get(int X, int Y)
{
    const uint8_t* P = RowPtr(Y);
    switch (Bpp) {
    case 1: return (P[X / 8] >> (7 - X % 8)) & 1;
    case 4: return (X % 2) ? (P[X / 2] & 15) : (P[X / 2] >> 4);
    case 8: return P[X];
    case 24: return uint32_t(P[X * 3]) | (uint32_t(P[X * 3 + 1]) << 8) | (uint32_t(P[X * 3 + 2]) << 16);
    default: {
        uint32_t V;
        std::memcpy(&V, P + X * 4, 4);
        return V;
    }
    }
}

void RawSurface::Set(int X, int Y, uint32_t Value)
{
    uint8_t* P = RowPtr(Y);
    switch (Bpp) {
    case 1: {
        const uint8_t Bit = uint8_t(0x80 >> (X % 8));
        P[X / 8] = uint8_t((Value & 1) ? (P[X / 8] | Bit) : (P[X / 8] & ~Bit));
        break;
    }
    case 4:
        P[X / 2] = uint8_t((X % 2) ? ((P[X / 2] & 0xF0) | (Value & 15)) : ((P[X / 2] & 0x0F) | ((Value & 15) << 4)));
        break;
    case 8: P[X] = uint8_t(Value); break;
    case 24:
        P[X * 3] = uint8_t(Value);
        P[X * 3 + 1] = uint8_t(Value >> 8);
        P[X * 3 + 2] = uint8_t(Value >> 16);
        break;
    default: std::memcpy(P + X * 4, &Value, 4); break;
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

QImage LoadReference(const QString& Path)
{
    QImage Image(Path);
    return Image.isNull() ? Image : Image.convertToFormat(QImage::Format_ARGB32);
}

bool MagickRgba(const QString& Path, int& Width, int& Height, QByteArray& Rgba, QString& Error)
{
    const QString Convert = QStandardPaths::findExecutable(QStringLiteral("convert"));
    if (Convert.isEmpty()) {
        Error = QStringLiteral("ImageMagick's convert is not installed");
        return false;
    }
    QProcess Process;
    // The size first, then the pixels: "WIDTH HEIGHT\n" followed by raw RGBA.
    Process.start(Convert, {Path + QStringLiteral("[0]"), QStringLiteral("-depth"), QStringLiteral("8"),
                            QStringLiteral("-format"), QStringLiteral("%w %h\n"), QStringLiteral("-write"),
                            QStringLiteral("info:-"), QStringLiteral("rgba:-")});
    if (!Process.waitForFinished(20000)) {
        Error = QStringLiteral("convert did not finish");
        return false;
    }
    const QByteArray Out = Process.readAllStandardOutput();
    const int Newline = Out.indexOf('\n');
    const QList<QByteArray> Size = Out.left(Newline).split(' ');
    if (Newline < 0 || Size.size() != 2) {
        Error = QString::fromLocal8Bit(Process.readAllStandardError());
        return false;
    }
    Width = Size[0].toInt();
    Height = Size[1].toInt();
    Rgba = Out.mid(Newline + 1);
    if (Rgba.size() != qsizetype(Width) * Height * 4) {
        Error = QStringLiteral("convert gave %1 bytes").arg(Rgba.size());
        return false;
    }
    return true;
}

} // namespace TestImages
