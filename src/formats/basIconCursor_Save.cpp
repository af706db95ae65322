// Writing for the icon editor: the depth a picture needs, the record size by the program's own
// formulas, and the single-image icon and cursor files.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <unordered_map>

#include "BmpFileHeader.h"
#include "IconPalettes.h"
#include "basIconCursor.h"
#include "basIconCursor_Layout.h"

namespace basIconCursor {

namespace {

constexpr uint32_t Black = 0x000000;
constexpr uint32_t White = 0xFFFFFF;

// Palette index of each pixel of an 8-bit icon: black 0, white 1, then the other colours in the
// order they first appear, at most 256 entries. A colour left out (only when black or white were
// absent from 256 colours) takes the nearest entry.
std::vector<uint8_t> BuildPalette256(const std::vector<uint32_t>& Colors, std::vector<uint32_t>& Palette)
{
    Palette = {Black, White};
    std::unordered_map<uint32_t, uint8_t> Index = {{Black, 0}, {White, 1}};
    for (const uint32_t Color : Colors)
        if (Palette.size() < 256 && Index.emplace(Color, static_cast<uint8_t>(Palette.size())).second)
            Palette.push_back(Color);
    std::vector<uint8_t> Indexes(Colors.size());
    for (size_t I = 0; I < Colors.size(); ++I) {
        const auto Found = Index.find(Colors[I]);
        if (Found != Index.end()) {
            Indexes[I] = Found->second;
            continue;
        }
        int64_t Best = INT64_MAX;
        for (size_t P = 0; P < Palette.size(); ++P) {
            const int64_t DR = int64_t(Colors[I] & 255) - (Palette[P] & 255);
            const int64_t DG = int64_t((Colors[I] >> 8) & 255) - ((Palette[P] >> 8) & 255);
            const int64_t DB = int64_t((Colors[I] >> 16) & 255) - ((Palette[P] >> 16) & 255);
            const int64_t Distance = DR * DR + DG * DG + DB * DB;
            if (Distance < Best) {
                Best = Distance;
                Indexes[I] = static_cast<uint8_t>(P);
            }
        }
    }
    return Indexes;
}

void PutTable(std::vector<uint8_t>& Out, const uint32_t* Colors, size_t Count, size_t Entries)
{
    for (size_t I = 0; I < Entries; ++I) {
        const uint32_t Color = I < Count ? Colors[I] : 0;
        Out.push_back(static_cast<uint8_t>(Color >> 16));
        Out.push_back(static_cast<uint8_t>(Color >> 8));
        Out.push_back(static_cast<uint8_t>(Color));
        Out.push_back(0);
    }
}

// Rows of 1 bit a pixel, bottom row first, bit 1 where the pixel is white.
void PutWhiteBits(std::vector<uint8_t>& Out, const std::vector<uint32_t>& Colors, int32_t Width, int32_t Height)
{
    const int64_t Row = PaddedRowBytes(Width, 1);
    for (int32_t Y = Height - 1; Y >= 0; --Y) {
        const size_t Start = Out.size();
        Out.resize(Start + static_cast<size_t>(Row), 0);
        for (int32_t X = 0; X < Width; ++X)
            if (Colors[static_cast<size_t>(Y) * Width + X] == White)
                Out[Start + static_cast<size_t>(X >> 3)] |= static_cast<uint8_t>(0x80 >> (X & 7));
    }
}

bool SaveSingleImage(const clsDIB& Image, const clsDIB& Mask, const std::string& FileName, int16_t Type,
                     bool Use32, Array2D<uint8_t>* Alpha, uint16_t HotspotX, uint16_t HotspotY)
{
    SetLastError(ErrInvalid);
    const int32_t Width = Image.DIBWidth(), Height = Image.DIBHeight();
    std::vector<uint32_t> Colors, MaskColors;
    // Width and height are bytes of the entry, and 0 would be read as a 256-pixel image.
    if (Width < 1 || Height < 1 || Width > 255 || Height > 255 || Mask.DIBWidth() != Width ||
        Mask.DIBHeight() != Height || !PictureColors(Image, Colors) || !PictureColors(Mask, MaskColors))
        return false;

    int16_t Bits;
    if (Use32 && Alpha) {
        Bits = 32;
        if (Alpha->Width() != Width || Alpha->Height() != Height) {
            Alpha->Resize(0, 0);
            Bits = 24;
        }
    } else {
        switch (ClassifyIconColors(Image)) {
        case 2: Bits = 1; break;
        case 16: Bits = 4; break;
        case 256: Bits = 8; break;
        default: Bits = 24; break;
        }
    }

    IconRecord& Record = SharedRecord();
    Record = IconRecord();
    Record.Header = {0, Type, 1};
    IconDirEntry Entry;
    Entry.Width = static_cast<uint8_t>(Width);
    Entry.Height = static_cast<uint8_t>(Height);
    Entry.ColorCount = Bits == 1 ? 2 : (Bits == 4 ? 16 : 0);
    Entry.Planes = Type == 2 ? static_cast<int16_t>(HotspotX) : 1;
    Entry.BitCount = Type == 2 ? static_cast<int16_t>(HotspotY) : Bits;
    Entry.BytesInRes = IconResourceBytes(Width, Height, Bits);
    Entry.ImageOffset = static_cast<int32_t>(FileHeaderBytes + EntryBytes);
    Record.Entries.push_back(Entry);
    BitmapInfoHeader& Header = Record.Bitmap;
    Header.biSize = 40;
    Header.biWidth = Width;
    Header.biHeight = Height * 2;
    Header.biPlanes = 1;
    Header.biBitCount = Bits;

    std::vector<uint8_t> Out;
    Out.reserve(static_cast<size_t>(FileHeaderBytes + EntryBytes + Entry.BytesInRes + 4 * Height));
    PutLE16(Out, 0);
    PutLE16(Out, static_cast<uint16_t>(Type));
    PutLE16(Out, 1);
    Out.push_back(Entry.Width);
    Out.push_back(Entry.Height);
    Out.push_back(Entry.ColorCount);
    Out.push_back(0);
    PutLE16(Out, static_cast<uint16_t>(Entry.Planes));
    PutLE16(Out, static_cast<uint16_t>(Entry.BitCount));
    PutLE32(Out, static_cast<uint32_t>(Entry.BytesInRes));
    PutLE32(Out, static_cast<uint32_t>(Entry.ImageOffset));
    PutLE32(Out, 40);
    PutLE32(Out, static_cast<uint32_t>(Width));
    PutLE32(Out, static_cast<uint32_t>(Height * 2));
    PutLE16(Out, 1);
    PutLE16(Out, static_cast<uint16_t>(Bits));
    for (int I = 0; I < 6; ++I)
        PutLE32(Out, 0);

    const auto Pixel = [&](int32_t X, int32_t Y) { return Colors[static_cast<size_t>(Y) * Width + X]; };
    if (Bits == 1) {
        PutTable(Out, IconPalettes::Palette2.data(), 2, 2);
        PutWhiteBits(Out, Colors, Width, Height);
    } else if (Bits == 4) {
        PutTable(Out, IconPalettes::Palette16.data(), 16, 16);
        const int64_t Row = PaddedRowBytes(Width, 4);
        for (int32_t Y = Height - 1; Y >= 0; --Y) {
            const size_t Start = Out.size();
            Out.resize(Start + static_cast<size_t>(Row), 0);
            for (int32_t X = 0; X < Width; ++X) {
                const int Index = std::max(IconPalettes::IndexIn16(Pixel(X, Y)), 0);
                Out[Start + static_cast<size_t>(X >> 1)] |= static_cast<uint8_t>((X & 1) ? Index : Index << 4);
            }
        }
    } else if (Bits == 8) {
        std::vector<uint32_t> Palette;
        const std::vector<uint8_t> Indexes = BuildPalette256(Colors, Palette);
        PutTable(Out, Palette.data(), Palette.size(), 256);
        const int64_t Row = PaddedRowBytes(Width, 8);
        for (int32_t Y = Height - 1; Y >= 0; --Y) {
            const size_t Start = Out.size();
            Out.resize(Start + static_cast<size_t>(Row), 0);
            std::copy_n(Indexes.begin() + static_cast<ptrdiff_t>(Y) * Width, Width,
                        Out.begin() + static_cast<ptrdiff_t>(Start));
        }
    } else {
        const int64_t Padding = TrueColorPadding(Width);
        for (int32_t Y = Height - 1; Y >= 0; --Y) {
            for (int32_t X = 0; X < Width; ++X) {
                const uint32_t Color = Pixel(X, Y);
                Out.push_back(static_cast<uint8_t>(Color >> 16));
                Out.push_back(static_cast<uint8_t>(Color >> 8));
                Out.push_back(static_cast<uint8_t>(Color));
                if (Bits == 32)
                    Out.push_back(MaskColors[static_cast<size_t>(Y) * Width + X] == White ? 0 : (*Alpha)(X, Y));
            }
            Out.insert(Out.end(), static_cast<size_t>(Padding), 0);
        }
    }
    PutWhiteBits(Out, MaskColors, Width, Height);
    return WriteFileBytes(FileName, Out);
}

} // namespace

bool WriteFileBytes(const std::string& FileName, const std::vector<uint8_t>& Bytes)
{
    std::error_code Code;
    const std::filesystem::path Path(FileName);
    if (std::filesystem::exists(Path, Code)) {
        const auto Perms = std::filesystem::status(Path, Code).permissions();
        if ((Perms & std::filesystem::perms::owner_write) == std::filesystem::perms::none) {
            SetLastError(ErrReadOnly);
            return false;
        }
        std::filesystem::remove(Path, Code);
    }
    SetLastError(ErrFile);
    std::ofstream Out(Path, std::ios::binary | std::ios::trunc);
    if (!Out || !Out.write(reinterpret_cast<const char*>(Bytes.data()), std::streamsize(Bytes.size())))
        return false;
    Out.close();
    if (!Out)
        return false;
    SetLastError(ErrNone);
    return true;
}

bool PictureColors(const clsDIB& Picture, std::vector<uint32_t>& Colors)
{
    const DeviceContext* DC = Picture.DIBhDC();
    Colors.clear();
    if (!DC)
        return false;
    DC->EndPaint();
    const int32_t Width = Picture.DIBWidth(), Height = Picture.DIBHeight();
    Colors.resize(static_cast<size_t>(Width) * Height);
    const int Bpp = DC->Bpp();
    for (int32_t Y = 0; Y < Height; ++Y) {
        uint32_t* Dst = Colors.data() + static_cast<size_t>(Y) * Width;
        if (Bpp == 32 || Bpp == 24) {
            const uint8_t* P = DC->Row(Y);
            const int Step = Bpp / 8;
            for (int32_t X = 0; X < Width; ++X, P += Step)
                Dst[X] = uint32_t{P[2]} | (uint32_t{P[1]} << 8) | (uint32_t{P[0]} << 16);
        } else {
            for (int32_t X = 0; X < Width; ++X)
                Dst[X] = DC->GetPixel(X, Y) & 0xFFFFFF;
        }
    }
    return true;
}

int16_t ClassifyIconColors(const clsDIB& Image)
{
    std::vector<uint32_t> Colors;
    if (!PictureColors(Image, Colors))
        return -1;
    if (std::all_of(Colors.begin(), Colors.end(), [](uint32_t C) { return C == Black || C == White; }))
        return 2;
    if (std::all_of(Colors.begin(), Colors.end(), [](uint32_t C) { return IconPalettes::IndexIn16(C) >= 0; }))
        return 16;
    std::sort(Colors.begin(), Colors.end());
    const auto Distinct = std::unique(Colors.begin(), Colors.end()) - Colors.begin();
    return Distinct <= 256 ? 256 : -1;
}

int32_t IconResourceBytes(int32_t Width, int32_t Height, int16_t BitCount)
{
    if (Width < 1 || Height < 1)
        return 0;
    const int64_t W = Width;
    int64_t Table = 0, Row;
    switch (BitCount) {
    case 1: Table = 8; Row = ((W + 7) / 8 + 3) & ~int64_t(3); break;
    case 4: Table = 64; Row = ((W + 1) / 2 + 3) & ~int64_t(3); break;
    case 8: Table = 1024; Row = (W + 3) & ~int64_t(3); break;
    case 24: Row = ((W + 1) * 3) & ~int64_t(3); break;
    case 32: Row = (W * 4 + 3) & ~int64_t(3); break;
    default: return 0;
    }
    // The mask row is the program's own formula: exact for the standard sizes, kept as it is.
    const int64_t MaskRow = 4 * (W / 33 + 1);
    const int64_t Bytes = 40 + Table + (Row + MaskRow) * Height;
    return Bytes > INT32_MAX ? 0 : static_cast<int32_t>(Bytes);
}

bool SaveIconFile(const clsDIB& Image, const clsDIB& Mask, const std::string& FileName, bool Use32,
                  Array2D<uint8_t>& Alpha)
{
    return SaveSingleImage(Image, Mask, FileName, 1, Use32, &Alpha, 0, 0);
}

bool SaveCursorFile(const clsDIB& Image, const clsDIB& Mask, const std::string& FileName, uint16_t HotspotX,
                    uint16_t HotspotY)
{
    return SaveSingleImage(Image, Mask, FileName, 2, false, nullptr, HotspotX, HotspotY);
}

} // namespace basIconCursor
