// The icon reader: header, directory, and each image's colour, mask and alpha; the queries
// and the drawing of an image.
#include "clsICO.h"
#include "FileBytes.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>

#include "IconPalettes.h"
#include "basMath.h"

namespace {

uint16_t LE16(const uint8_t* P) { return static_cast<uint16_t>(P[0] | (P[1] << 8)); }
uint32_t LE32(const uint8_t* P)
{
    return uint32_t{P[0]} | (uint32_t{P[1]} << 8) | (uint32_t{P[2]} << 16) | (uint32_t{P[3]} << 24);
}

int64_t RowBytes(int64_t Width, int Bits) { return (Width * Bits + 31) / 32 * 4; }

using IconFileLayout::EntryPasses;
using IconFileLayout::ParseEntry;


int16_t ValidCount(const std::string& FileName, int16_t Type)
{
    std::vector<uint8_t> Head;
    if (!FileBytes::Read(FileName, Head, clsICO::HeaderBytes + clsICO::EntryBytes, true) ||
        Head.size() < clsICO::HeaderBytes + clsICO::EntryBytes)
        return 0;
    const auto FileType = static_cast<int16_t>(LE16(&Head[2]));
    const auto Count = static_cast<int16_t>(LE16(&Head[4]));
    if (FileType != Type || Count <= 0 || !EntryPasses(ParseEntry(&Head[6])))
        return 0;
    return Count;
}

} // namespace

clsICO::clsICO() = default;
clsICO::~clsICO() = default;

bool clsICO::OpenICO(const std::string& FileName)
{
    ClearUp();
    std::vector<uint8_t> File;
    if (!FileBytes::Read(FileName, File, MaxFileBytes, false))
        return false;
    return OpenICOBytes(File.data(), File.size());
}

bool clsICO::OpenICOBytes(const uint8_t* Bytes, size_t Count)
{
    ClearUp();
    if (!Bytes || Count < HeaderBytes)
        return false;
    Header.Reserved = static_cast<int16_t>(LE16(Bytes));
    Header.Type = static_cast<int16_t>(LE16(Bytes + 2));
    Header.Count = static_cast<int16_t>(LE16(Bytes + 4));
    const size_t Entries = Header.Count > 0 ? static_cast<size_t>(Header.Count) : 0;
    if ((Header.Type != 1 && Header.Type != 2) || Entries == 0 || HeaderBytes + Entries * EntryBytes > Count) {
        ClearUp();
        return false;
    }
    for (size_t I = 0; I < Entries; ++I)
        Directory.push_back(ParseEntry(Bytes + HeaderBytes + I * EntryBytes));
    bool Good = EntryPasses(Directory[0]);
    // A width or height byte of 0 is a 256-pixel image, which this reader does not take.
    for (size_t I = 0; Good && I < Entries; ++I)
        Good = Directory[I].Width != 0 && Directory[I].Height != 0;
    int64_t Budget = MaxTotalBytes;
    for (size_t I = 0; Good && I < Entries; ++I)
        Good = ReadImage(Bytes, Count, Directory[I], Budget);
    if (!Good)
        ClearUp();
    return Good;
}

bool clsICO::ReadImage(const uint8_t* File, size_t FileSize, const IconDirEntry& Entry, int64_t& Budget)
{
    const int64_t Offset = Entry.ImageOffset;
    const auto Size = static_cast<int64_t>(FileSize);
    if (Offset < 0 || Offset + int64_t(BitmapHeaderBytes) > Size)
        return false;
    const uint8_t* Bitmap = File + Offset;
    // Every image is taken to start with a 40-byte bitmap header, whatever its size field
    // says; a PNG's signature read so gives a width far beyond any surface.
    const auto Width = static_cast<int32_t>(LE32(Bitmap + 4));
    const double HalfHeight = static_cast<double>(static_cast<int32_t>(LE32(Bitmap + 8))) / 2.0;
    const int Depth = static_cast<int16_t>(LE16(Bitmap + 14));
    if (HalfHeight < 1 || HalfHeight > 32767 || Width < 1 || Width > 32767)
        return false;
    const int32_t Height = RoundHalfEven(HalfHeight);
    if (Depth != 1 && Depth != 4 && Depth != 8 && Depth != 16 && Depth != 24 && Depth != 32)
        return false;
    const int64_t PaletteBytes = Depth <= 8 ? (int64_t(1) << Depth) * 4 : 0;
    const int64_t ColorBytes = RowBytes(Width, Depth) * Height;
    const int64_t MaskBytes = RowBytes(Width, 1) * Height;
    if (Offset + int64_t(BitmapHeaderBytes) + PaletteBytes + ColorBytes + MaskBytes > Size)
        return false;
    Budget -= ColorBytes + MaskBytes + (Depth == 32 ? int64_t(Width) * Height : 0);
    if (Budget < 0)
        return false;

    auto Image = std::make_unique<IconImage>();
    if (!Image->Color.CreateBlankDIB(Width, Height, static_cast<int16_t>(Depth), 0, false) ||
        !Image->Mask.CreateBlankDIB(Width, Height, 1, 0xFFFFFF, false) || Image->Color.DIBSize() != ColorBytes ||
        Image->Mask.DIBSize() != MaskBytes)
        return false;
    const uint8_t* Palette = Bitmap + BitmapHeaderBytes;
    const uint8_t* Colors = Palette + PaletteBytes;
    if (PaletteBytes)
        Image->Color.SetPaletteToDIB8BPP(std::vector<uint8_t>(Palette, Palette + PaletteBytes));
    std::memcpy(Image->Color.DIBBitsPtr(), Colors, static_cast<size_t>(ColorBytes));
    Image->Mask.SetPaletteToDIB8BPP(IconPalettes::TableBytes(IconPalettes::Palette2));
    std::memcpy(Image->Mask.DIBBitsPtr(), Colors + ColorBytes, static_cast<size_t>(MaskBytes));

    if (Depth == 32) {
        // From the last image row up, every fourth byte; 0 leaves full opacity, so an alpha
        // of 0 on an opaque pixel reads back as 255. Rows are taken to carry the padding the
        // icon editor writes behind rows whose width is no multiple of 4, though 32-bit rows
        // have none; the walk ends where the colour data does.
        Image->Alpha.Resize(Width, Height, 255);
        const size_t Skip = (Width & 3) ? static_cast<size_t>(4 - (Width & 3)) : 0;
        const auto End = static_cast<size_t>(ColorBytes);
        size_t At = 3;
        bool Any = false;
        for (int32_t Row = Height - 1; Row >= 0 && At < End; --Row) {
            for (int32_t X = 0; X < Width && At < End; ++X, At += 4)
                if (Colors[At]) {
                    Image->Alpha(X, Row) = Colors[At];
                    Any = true;
                }
            At += Skip;
        }
        Image->Color.setDIBhasAlpha(Any);
    }
    Images.push_back(std::move(Image));
    return true;
}

int16_t clsICO::ValidIcons(const std::string& FileName)
{
    return ValidCount(FileName, 1);
}

int16_t clsICO::ValidCursor(const std::string& FileName)
{
    return ValidCount(FileName, 2);
}

bool clsICO::DrawIcon_To_DIB(clsDIB& Target, int16_t Index, int32_t X, int32_t Y)
{
    if (!InRange(Index) || !Target.DIBhDC())
        return false;
    IconImage& Image = *Images[static_cast<size_t>(Index)];
    const int W = Image.Color.DIBWidth(), H = Image.Color.DIBHeight();
    const bool Blend = Image.Color.DIBbpp() == 32 && Image.Alpha.Width() == W && Image.Alpha.Height() == H;
    // What lies under the icon, for the alpha pass.
    clsDIB Under;
    if (Blend) {
        if (!Under.CreateBlankDIB(W, H, 32, 0, false, true))
            return false;
        BitBlt(Under.DIBhDC(), 0, 0, W, H, Target.DIBhDC(), X, Y, SRCCOPY);
    }
    if (!BitBlt(Target.DIBhDC(), X, Y, W, H, Image.Mask.DIBhDC(), 0, 0, SRCAND) ||
        !BitBlt(Target.DIBhDC(), X, Y, W, H, Image.Color.DIBhDC(), 0, 0, SRCPAINT))
        return false;
    if (!Blend)
        return true;
    // Where the mask is black the target now holds the icon's colour; it is laid over what
    // was there by the alpha value with the surface's per-pixel weighting: a whole
    // percentage, then each channel, in 16-bit integers.
    clsDIB Over;
    if (!Over.CreateBlankDIB(W, H, 32, 0, false, true))
        return false;
    BitBlt(Over.DIBhDC(), 0, 0, W, H, Target.DIBhDC(), X, Y, SRCCOPY);
    const DeviceContext* MaskDC = Image.Mask.DIBhDC();
    for (int Row = 0; Row < H; ++Row) {
        const uint8_t* MaskRow = MaskDC->Row(Row);
        const uint8_t* From = Under.DIBhDC()->Row(Row);
        uint8_t* To = Over.DIBhDC()->Row(Row);
        for (int Col = 0; Col < W; ++Col) {
            const uint8_t A = Image.Alpha(Col, Row);
            if (A == 255 || (MaskRow[Col >> 3] & (0x80 >> (Col & 7))))
                continue;
            const auto Percent = static_cast<int16_t>(std::floor(static_cast<double>(A) / 255.0 * 100.0));
            const auto Rest = static_cast<int16_t>(100 - Percent);
            for (int C = 0; C < 3; ++C) {
                const size_t I = static_cast<size_t>(Col) * 4 + static_cast<size_t>(C);
                To[I] = static_cast<uint8_t>((Rest * From[I] + Percent * To[I]) / 100);
            }
        }
    }
    return BitBlt(Target.DIBhDC(), X, Y, W, H, Over.DIBhDC(), 0, 0, SRCCOPY);
}

bool clsICO::DrawImage(DeviceContext* Target, int16_t Index, int32_t X, int32_t Y)
{
    if (!InRange(Index))
        return false;
    const clsDIB& Color = Images[static_cast<size_t>(Index)]->Color;
    return BitBlt(Target, X, Y, Color.DIBWidth(), Color.DIBHeight(), Color.DIBhDC(), 0, 0, SRCCOPY);
}

bool clsICO::DrawMask(DeviceContext* Target, int16_t Index, int32_t X, int32_t Y)
{
    if (!InRange(Index))
        return false;
    const clsDIB& Mask = Images[static_cast<size_t>(Index)]->Mask;
    return BitBlt(Target, X, Y, Mask.DIBWidth(), Mask.DIBHeight(), Mask.DIBhDC(), 0, 0, SRCCOPY);
}

int16_t clsICO::SeekIcon(int32_t Width, int32_t Height, int32_t BitCount) const
{
    for (int16_t I = 0; I < IconCount(); ++I)
        if (IconWidth(I) == Width && IconHeight(I) == Height && IconBPP(I) == BitCount)
            return I;
    return -1;
}

int16_t clsICO::SeekIcon_Size(int32_t Width, int32_t Height) const
{
    int16_t Last = -1;
    for (int16_t I = 0; I < IconCount(); ++I) {
        if (IconWidth(I) != Width || IconHeight(I) != Height)
            continue;
        if (IconBPP(I) > 8)
            return I;
        Last = I;
    }
    return Last;
}

clsDIB* clsICO::DIBXOR(int16_t Index) const
{
    return InRange(Index) ? &Images[static_cast<size_t>(Index)]->Color : nullptr;
}

clsDIB* clsICO::DIBAND(int16_t Index) const
{
    return InRange(Index) ? &Images[static_cast<size_t>(Index)]->Mask : nullptr;
}

bool clsICO::getArrayAlpha(int16_t Index, Array2D<uint8_t>& Alpha) const
{
    if (!InRange(Index) || Images[static_cast<size_t>(Index)]->Alpha.Width() == 0)
        return false;
    Alpha = Images[static_cast<size_t>(Index)]->Alpha;
    return true;
}

bool clsICO::putArrayAlpha(int16_t Index, const Array2D<uint8_t>& Alpha)
{
    if (!InRange(Index) || Alpha.Width() != IconWidth(Index) || Alpha.Height() != IconHeight(Index))
        return false;
    Images[static_cast<size_t>(Index)]->Alpha = Alpha;
    return true;
}

int32_t clsICO::IconWidth(int16_t Index) const
{
    return InRange(Index) ? Images[static_cast<size_t>(Index)]->Color.DIBWidth() : 0;
}

int32_t clsICO::IconHeight(int16_t Index) const
{
    return InRange(Index) ? Images[static_cast<size_t>(Index)]->Color.DIBHeight() : 0;
}

int32_t clsICO::IconBPP(int16_t Index) const
{
    return InRange(Index) ? Images[static_cast<size_t>(Index)]->Color.DIBbpp() : 0;
}

int32_t clsICO::IconBytesInRes(int16_t Index) const
{
    return InRange(Index) ? Directory[static_cast<size_t>(Index)].BytesInRes : 0;
}

int16_t clsICO::HotSpotX(int16_t Index) const
{
    return InRange(Index) && Header.Type == 2 ? Directory[static_cast<size_t>(Index)].Planes : int16_t(0);
}

int16_t clsICO::HotSpotY(int16_t Index) const
{
    return InRange(Index) && Header.Type == 2 ? Directory[static_cast<size_t>(Index)].BitCount : int16_t(0);
}

int16_t clsICO::convBPP_Upto24(int32_t ColorCount)
{
    switch (ColorCount) {
    case 2: return 1;
    case 16: return 4;
    case 256: return 8;
    default: return 24;
    }
}

void clsICO::ClearUp()
{
    Images.clear();
    Directory.clear();
    Header = IconHeader();
}
