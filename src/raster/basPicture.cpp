// The picture loader. BMP headers are read and checked here, so that a lying header is
// refused before anything is allocated, and so that the picture keeps the file's depth;
// the pixels themselves are decoded by the toolkit's BMP reader.
#include "basPicture.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <bit>
#include <cstring>

namespace basPicture {

namespace {

uint16_t LE16(const QByteArray& B, qsizetype At)
{
    return static_cast<uint16_t>(static_cast<uint8_t>(B[At]) | (static_cast<uint8_t>(B[At + 1]) << 8));
}

uint32_t LE32(const QByteArray& B, qsizetype At)
{
    return static_cast<uint32_t>(LE16(B, At)) | (static_cast<uint32_t>(LE16(B, At + 2)) << 16);
}

constexpr uint32_t BiRgb = 0, BiRle8 = 1, BiRle4 = 2, BiBitfields = 3, BiAlphaBitfields = 6;

bool KnownHeaderSize(uint32_t Size)
{
    return Size == 12 || Size == 16 || Size == 40 || Size == 52 || Size == 56 || Size == 64 || Size == 108 ||
           Size == 124;
}

// The toolkit's readers refuse to allocate more than this; raise it to the program's own bound.
void RaiseAllocationLimit(QImageReader& Reader)
{
    Reader.setAllocationLimit(static_cast<int>(MaxPictureBytes / (1024 * 1024)));
}

// Alpha bytes as they stand in a 32-bit BI_RGB file, which the toolkit's reader drops.
void CopyRawAlpha(const QByteArray& Bytes, const BmpHeaderInfo& Info, QImage& Image)
{
    const qsizetype Stride = static_cast<qsizetype>(Info.Width) * 4;
    for (int Y = 0; Y < Info.Height; ++Y) {
        const int FileRow = Info.TopDown ? Y : Info.Height - 1 - Y;
        const char* From = Bytes.constData() + Info.OffBits + FileRow * Stride;
        uint8_t* To = Image.scanLine(Y);
        for (int X = 0; X < Info.Width; ++X)
            To[X * 4 + 3] = static_cast<uint8_t>(From[X * 4 + 3]);
    }
}

// True when the RLE stream stays inside the picture: no run, absolute block or delta may
// reach past the right edge or the last row, and no block past the end of the file.
// A missing end marker is forgiven (the rest of the picture stays index 0); a stream cut
// in the middle of a command is not.
bool RleStaysInside(const QByteArray& Bytes, const BmpHeaderInfo& Info)
{
    const bool Four = Info.Compression == BiRle4;
    const qsizetype End = Bytes.size();
    qsizetype At = Info.OffBits;
    int64_t X = 0, Y = 0;
    while (At + 1 < End) {
        const uint8_t Count = static_cast<uint8_t>(Bytes[At]);
        const uint8_t Code = static_cast<uint8_t>(Bytes[At + 1]);
        At += 2;
        if (Count > 0) {
            if (Y >= Info.Height || X + Count > Info.Width)
                return false;
            X += Count;
            continue;
        }
        if (Code == 0) {
            X = 0;
            ++Y;
        } else if (Code == 1) {
            return true;
        } else if (Code == 2) {
            if (At + 1 >= End)
                return false;
            X += static_cast<uint8_t>(Bytes[At]);
            Y += static_cast<uint8_t>(Bytes[At + 1]);
            At += 2;
            if (X > Info.Width || Y > Info.Height)
                return false;
        } else {
            const qsizetype DataBytes = Four ? (Code + 1) / 2 : Code;
            if (Y >= Info.Height || X + Code > Info.Width || At + DataBytes > End)
                return false;
            X += Code;
            At += (DataBytes + 1) & ~qsizetype(1);
        }
    }
    // A stream that stops in the middle of a command was cut short.
    return At >= End;
}

// Channel masks must be contiguous runs of one to eight bits that do not overlap, with
// red, green and blue all present.
bool MasksUsable(const QByteArray& Bytes, const BmpHeaderInfo& Info)
{
    if (Bytes.size() < 66)
        return false;
    const uint32_t Red = LE32(Bytes, 54), Green = LE32(Bytes, 58), Blue = LE32(Bytes, 62);
    const uint32_t Limit = Info.BitCount == 16 ? 0xFFFF : 0xFFFFFFFF;
    uint32_t Seen = 0;
    for (const uint32_t Mask : {Red, Green, Blue, Info.AlphaMask}) {
        if (Mask == 0)
            continue;
        const uint32_t Shifted = Mask >> std::countr_zero(Mask);
        if ((Shifted & (Shifted + 1)) != 0 || std::popcount(Mask) > 8 || (Mask & Seen) || Mask > Limit)
            return false;
        Seen |= Mask;
    }
    return Red && Green && Blue;
}

// The channel masks of a 16-bit file: BI_RGB means 5-5-5.
struct ChannelMasks {
    uint32_t Red = 0x7C00, Green = 0x03E0, Blue = 0x001F, Alpha = 0;
};

// A channel's bits widened to a byte by scaling, so that its largest value is 255.
inline uint8_t Widen(uint32_t Pixel, uint32_t Mask)
{
    if (!Mask)
        return 0;
    const int Shift = std::countr_zero(Mask);
    const uint32_t Max = Mask >> Shift;
    return static_cast<uint8_t>((((Pixel & Mask) >> Shift) * 255 + Max / 2) / Max);
}

// 16-bit pixels are widened here rather than by the toolkit, whose reader shifts the bits
// without scaling, so that white would come out grey (248).
QImage Decode16(const QByteArray& Bytes, const BmpHeaderInfo& Info)
{
    ChannelMasks M;
    if (Info.Compression != BiRgb) {
        M.Red = LE32(Bytes, 54);
        M.Green = LE32(Bytes, 58);
        M.Blue = LE32(Bytes, 62);
        M.Alpha = Info.AlphaMask;
    }
    QImage Image(Info.Width, Info.Height, M.Alpha ? QImage::Format_ARGB32 : QImage::Format_BGR888);
    if (Image.isNull())
        return Image;
    const qsizetype Stride = (static_cast<qsizetype>(Info.Width) * 16 + 31) / 32 * 4;
    for (int Y = 0; Y < Info.Height; ++Y) {
        const int FileRow = Info.TopDown ? Y : Info.Height - 1 - Y;
        const auto* From = reinterpret_cast<const uint8_t*>(Bytes.constData() + Info.OffBits + FileRow * Stride);
        uint8_t* To = Image.scanLine(Y);
        for (int X = 0; X < Info.Width; ++X, From += 2) {
            const uint32_t Pixel = From[0] | (From[1] << 8);
            *To++ = Widen(Pixel, M.Blue);
            *To++ = Widen(Pixel, M.Green);
            *To++ = Widen(Pixel, M.Red);
            if (M.Alpha)
                *To++ = Widen(Pixel, M.Alpha);
        }
    }
    return Image;
}

} // namespace

BmpHeaderInfo ReadBmpHeader(const QByteArray& Bytes)
{
    BmpHeaderInfo Info;
    const qsizetype Size = Bytes.size();
    if (Size < 26 || Bytes[0] != 'B' || Bytes[1] != 'M')
        return Info;
    Info.OffBits = LE32(Bytes, 10);
    Info.HeaderSize = LE32(Bytes, 14);
    if (!KnownHeaderSize(Info.HeaderSize) || 14 + static_cast<qsizetype>(Info.HeaderSize) > Size)
        return Info;
    int64_t Height;
    uint16_t Planes;
    if (Info.HeaderSize == 12) {
        Info.Width = static_cast<int16_t>(LE16(Bytes, 18));
        Height = static_cast<int16_t>(LE16(Bytes, 20));
        Planes = LE16(Bytes, 22);
        Info.BitCount = LE16(Bytes, 24);
    } else {
        Info.Width = static_cast<int32_t>(LE32(Bytes, 18));
        Height = static_cast<int32_t>(LE32(Bytes, 22));
        Planes = LE16(Bytes, 26);
        Info.BitCount = LE16(Bytes, 28);
        Info.Compression = Info.HeaderSize >= 20 ? LE32(Bytes, 30) : BiRgb;
    }
    Info.TopDown = Height < 0;
    Info.Height = static_cast<int32_t>(Height < 0 ? -Height : Height);
    if (Planes != 1 || Info.Width <= 0 || Info.Height <= 0 || Info.Width > MaxPictureSide ||
        Info.Height > MaxPictureSide)
        return Info;
    const uint16_t Bits = Info.BitCount;
    // Two bits a pixel belongs to handheld systems only; it is not a picture depth here.
    if (Bits != 1 && Bits != 4 && Bits != 8 && Bits != 16 && Bits != 24 && Bits != 32)
        return Info;
    const uint32_t C = Info.Compression;
    const bool Rle = (C == BiRle8 && Bits == 8) || (C == BiRle4 && Bits == 4);
    const bool Fields = (C == BiBitfields || C == BiAlphaBitfields) && (Bits == 16 || Bits == 32);
    // The OS/2 2.0 header gives codes 3 and 4 other meanings (Huffman, RLE24): not read.
    if (Info.HeaderSize == 64 && C != BiRgb && !Rle)
        return Info;
    if (C != BiRgb && !Rle && !Fields)
        return Info;
    if (Rle && Info.TopDown)
        return Info;
    const int64_t Stride = (static_cast<int64_t>(Info.Width) * Bits + 31) / 32 * 4;
    if (Stride * Info.Height > MaxPictureBytes)
        return Info;
    if (Info.OffBits < 14 + Info.HeaderSize || Info.OffBits >= static_cast<uint64_t>(Size))
        return Info;
    // Uncompressed rows must all be there.
    if (!Rle && Info.OffBits + Stride * Info.Height > Size)
        return Info;
    // The toolkit's reader takes a full table of three-byte entries from an OS/2 1.x header.
    if (Bits <= 8 && Info.HeaderSize == 12 && Info.OffBits < 26 + 3 * (1u << Bits))
        return Info;
    if (Bits <= 8 && Info.HeaderSize >= 40) {
        const uint32_t Used = LE32(Bytes, 46);
        if (Used > 256 && static_cast<int64_t>(Used) * 4 > Size)
            return Info;
    }
    if (Fields) {
        if (Info.HeaderSize >= 56)
            Info.AlphaMask = LE32(Bytes, 66);
        else if (C == BiAlphaBitfields && Info.HeaderSize == 40 && Size >= 70)
            Info.AlphaMask = LE32(Bytes, 66);
    }
    if (Fields && !MasksUsable(Bytes, Info))
        return Info;
    if (Rle && !RleStaysInside(Bytes, Info))
        return Info;
    Info.Valid = true;
    return Info;
}

int PictureDepthForBmp(const BmpHeaderInfo& Info)
{
    switch (Info.BitCount) {
    case 1: return 1;
    case 4: return 4;
    case 8: return 8;
    case 16: return Info.AlphaMask ? 32 : 24;
    case 24: return 24;
    default: return 32;
    }
}

bool LoadBmpFromMemory(const QByteArray& Bytes, StdPicture& Picture)
{
    const BmpHeaderInfo Info = ReadBmpHeader(Bytes);
    if (!Info.Valid)
        return false;
    if (Info.BitCount == 16) {
        QImage Image = Decode16(Bytes, Info);
        if (Image.isNull())
            return false;
        Picture = StdPicture(Image, Info.AlphaMask ? 32 : 24);
        return true;
    }
    QBuffer Buffer;
    Buffer.setData(Bytes);
    Buffer.open(QIODevice::ReadOnly);
    QImageReader Reader(&Buffer, "bmp");
    RaiseAllocationLimit(Reader);
    QImage Image;
    if (!Reader.read(&Image) || Image.isNull() || Image.width() != Info.Width || Image.height() != Info.Height)
        return false;
    const int Depth = PictureDepthForBmp(Info);
    if (Depth <= 8) {
        QImage Indexed = Image.format() == QImage::Format_Indexed8 ? Image
                         : Image.format() == QImage::Format_Mono || Image.format() == QImage::Format_MonoLSB
                             ? Image.convertToFormat(QImage::Format_Indexed8)
                             : QImage();
        if (Indexed.isNull())
            return false;
        if (Depth == 1) {
            QImage Mono(Indexed.size(), QImage::Format_Mono);
            Mono.setColorTable(Indexed.colorTable().mid(0, 2));
            for (int Y = 0; Y < Indexed.height(); ++Y) {
                const uint8_t* From = Indexed.constScanLine(Y);
                uint8_t* To = Mono.scanLine(Y);
                std::memset(To, 0, static_cast<size_t>(Mono.bytesPerLine()));
                for (int X = 0; X < Indexed.width(); ++X)
                    if (From[X] & 1)
                        To[X >> 3] |= static_cast<uint8_t>(0x80 >> (X & 7));
            }
            Picture = StdPicture(Mono, 1);
        } else {
            Picture = StdPicture(Indexed, Depth);
        }
        return true;
    }
    if (Depth == 24) {
        Picture = StdPicture(Image.convertToFormat(QImage::Format_BGR888), 24);
        return true;
    }
    QImage Deep = Image.convertToFormat(QImage::Format_ARGB32);
    if (Info.BitCount == 32 && Info.Compression == BiRgb)
        CopyRawAlpha(Bytes, Info, Deep);
    else if (!Info.AlphaMask)
        for (int Y = 0; Y < Deep.height(); ++Y) {
            uint8_t* Row = Deep.scanLine(Y);
            for (int X = 0; X < Deep.width(); ++X)
                Row[X * 4 + 3] = 0;
        }
    Picture = StdPicture(Deep, 32);
    return true;
}

bool LoadPicture(const QString& FileName, StdPicture& Picture)
{
    QFile File(FileName);
    if (!QFileInfo(FileName).isFile() || File.size() == 0 || File.size() > MaxPictureBytes ||
        !File.open(QIODevice::ReadOnly))
        return false;
    const QByteArray Bytes = File.readAll();
    if (Bytes.isEmpty())
        return false;
    if (Bytes.startsWith("BM"))
        return LoadBmpFromMemory(Bytes, Picture);
    if (LoadMetafileFromMemory(Bytes, Picture))
        return true;
    QBuffer Buffer;
    Buffer.setData(Bytes);
    Buffer.open(QIODevice::ReadOnly);
    QImageReader Reader(&Buffer);
    RaiseAllocationLimit(Reader);
    const QSize Size = Reader.size();
    if (Size.isValid() && (Size.width() > MaxPictureSide || Size.height() > MaxPictureSide))
        return false;
    QImage Image;
    if (!Reader.read(&Image) || Image.isNull() || Image.width() > MaxPictureSide ||
        Image.height() > MaxPictureSide)
        return false;
    StdPicture Loaded = StdPicture::FromImage(Image);
    if (!Loaded.IsBitmap())
        return false;
    Picture = std::move(Loaded);
    return true;
}

} // namespace basPicture
