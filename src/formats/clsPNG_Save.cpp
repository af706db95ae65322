// The PNG writer: 8-bit paletted or 24-bit (with an optional alpha plane) rows, filter None on
// every row, zlib's compress2 at level 9 for the deflate step.
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "clsCRC.h"
#include "clsDIB.h"
#include "clsPNG.h"
#include "clsPal.h"

namespace {

void PutBE32(std::vector<uint8_t>& Out, uint32_t Value)
{
    Out.push_back(static_cast<uint8_t>(Value >> 24));
    Out.push_back(static_cast<uint8_t>(Value >> 16));
    Out.push_back(static_cast<uint8_t>(Value >> 8));
    Out.push_back(static_cast<uint8_t>(Value));
}

// Seed 1, modulus 65521; the sums are folded only every 5552 bytes, the most that cannot
// overflow 32 bits.
uint32_t Adler32(const uint8_t* Bytes, size_t Count)
{
    uint32_t A = 1, B = 0;
    while (Count > 0) {
        size_t Block = Count < 5552 ? Count : 5552;
        Count -= Block;
        while (Block-- > 0) {
            A += *Bytes++;
            B += A;
        }
        A %= 65521;
        B %= 65521;
    }
    return (B << 16) | A;
}

// The colour 0x00BBGGRR as the six bytes 0, R, 0, G, 0, B.
std::array<uint8_t, 6> SixBytes(uint32_t Color)
{
    return {0, static_cast<uint8_t>(Color), 0, static_cast<uint8_t>(Color >> 8), 0, static_cast<uint8_t>(Color >> 16)};
}

bool IsReadOnly(const std::filesystem::path& Path)
{
    std::error_code Ec;
    const auto Status = std::filesystem::status(Path, Ec);
    return !Ec && std::filesystem::exists(Status) &&
           (Status.permissions() & std::filesystem::perms::owner_write) == std::filesystem::perms::none;
}

// Rows of 8-bit indexes (Width bytes each, top row first) and a 256-entry R, G, B palette of the
// source. An 8-bit source keeps its own indexes and colour table; any other is brought to 32 bits
// and given its exact colours when it has at most 256, an optimal palette otherwise.
bool IndexedRows(DeviceContext* Source, int32_t Width, int32_t Height, std::vector<uint8_t>& Rows,
                 std::vector<uint8_t>& Palette)
{
    Rows.assign(static_cast<size_t>(Width) * static_cast<size_t>(Height), 0);
    Palette.assign(768, 0);
    if (Source->Bpp() == 8 && Source->ColorTable()) {
        const int32_t Entries = std::min(Source->ColorCount(), 256);
        for (int32_t I = 0; I < Entries; ++I) {
            const uint32_t Quad = Source->ColorTable()[I];
            Palette[I * 3] = static_cast<uint8_t>(Quad >> 16);
            Palette[I * 3 + 1] = static_cast<uint8_t>(Quad >> 8);
            Palette[I * 3 + 2] = static_cast<uint8_t>(Quad);
        }
        const int32_t CopyWidth = std::min(Width, Source->Width());
        for (int32_t Y = 0; Y < std::min(Height, Source->Height()); ++Y)
            std::memcpy(&Rows[static_cast<size_t>(Y) * Width], Source->Row(Y), static_cast<size_t>(CopyWidth));
        return true;
    }
    clsDIB Work;
    if (!Work.CreateBlankDIB(Width, Height, 32, 0, true))
        return false;
    BitBlt(Work.DIBhDC(), 0, 0, Width, Height, Source, 0, 0, SRCCOPY);
    clsPal Pal;
    if (Work.CountColorsDIB(Work) <= 256)
        Pal.CreatePalette256(Work);
    else
        Pal.CreateOptimal(Work, 256, 8);
    for (int32_t I = 0; I < 256; ++I) {
        Palette[I * 3] = Pal.rgbR(static_cast<uint8_t>(I));
        Palette[I * 3 + 1] = Pal.rgbG(static_cast<uint8_t>(I));
        Palette[I * 3 + 2] = Pal.rgbB(static_cast<uint8_t>(I));
    }
    for (int32_t Y = 0; Y < Height; ++Y) {
        const uint8_t* Pixel = Work.DIBhDC()->Row(Y);
        uint8_t* Out = &Rows[static_cast<size_t>(Y) * Width];
        for (int32_t X = 0; X < Width; ++X, Pixel += 4)
            Out[X] = static_cast<uint8_t>(Pal.NearestPaletteIndex(Pixel[2], Pixel[1], Pixel[0]));
    }
    return true;
}

} // namespace

void clsPNG::WriteChunk(std::vector<uint8_t>& File, const char* Type, const uint8_t* Payload, size_t Count)
{
    PutBE32(File, static_cast<uint32_t>(Count));
    const size_t TypeAt = File.size();
    File.insert(File.end(), Type, Type + 4);
    if (Count > 0)
        File.insert(File.end(), Payload, Payload + Count);
    clsCRC& Check = Crc();
    Check.setAlgorithm(1);
    Check.Clear();
    PutBE32(File, Check.AddBytes(File.data() + TypeAt, 4 + Count));
}

int32_t clsPNG::SavePNG(const std::string& FileName, DeviceContext* Source, int32_t Width, int32_t Height,
                        int16_t BitsPerPixel)
{
    if (BitsPerPixel != 8 && BitsPerPixel != 24)
        return Error = ErrSaveDepth;
    if (!Source || Width < 1 || Height < 1)
        return Error = -1;

    // The filtered rows: a filter byte 0, then the row's exact bytes. The picture is taken
    // through a surface of even width, whose extra column is dropped here.
    const int32_t EvenWidth = Width + (Width & 1);
    const bool Paletted = BitsPerPixel == 8;
    const bool WithAlpha = !Paletted && AlphaFlag &&
                           AlphaBytes.size() == static_cast<size_t>(Width) * static_cast<size_t>(Height);
    const size_t PixelBytes = Paletted ? 1 : WithAlpha ? 4 : 3;
    const size_t RowBytes = PixelBytes * static_cast<size_t>(Width) + 1;
    std::vector<uint8_t> Filtered(RowBytes * static_cast<size_t>(Height));
    std::vector<uint8_t> Palette;
    if (Paletted) {
        std::vector<uint8_t> Indexes;
        if (!IndexedRows(Source, EvenWidth, Height, Indexes, Palette))
            return Error = -1;
        for (int32_t Y = 0; Y < Height; ++Y)
            std::memcpy(&Filtered[Y * RowBytes + 1], &Indexes[static_cast<size_t>(Y) * EvenWidth],
                        static_cast<size_t>(Width));
    } else {
        clsDIB Work;
        if (!Work.CreateBlankDIB(EvenWidth, Height, 24, 0, true))
            return Error = -1;
        BitBlt(Work.DIBhDC(), 0, 0, EvenWidth, Height, Source, 0, 0, SRCCOPY);
        const uint8_t* Alpha = AlphaBytes.data();
        for (int32_t Y = 0; Y < Height; ++Y) {
            const uint8_t* In = Work.DIBhDC()->Row(Y);
            uint8_t* Out = &Filtered[Y * RowBytes + 1];
            for (int32_t X = 0; X < Width; ++X, In += 3, Out += PixelBytes) {
                Out[0] = In[2];
                Out[1] = In[1];
                Out[2] = In[0];
                if (WithAlpha)
                    Out[3] = *Alpha++;
            }
        }
    }

    // IDAT: compress2's stream, then the Adler-32 of the rows once more.
    const uint32_t Check = Adler32(Filtered.data(), Filtered.size());
    uLongf Packed = static_cast<uLongf>(static_cast<double>(Filtered.size()) * 0.001 + 15 + Filtered.size());
    std::vector<uint8_t> Idat(Packed);
    if (compress2(Idat.data(), &Packed, Filtered.data(), Filtered.size(), 9) != Z_OK)
        return Error = -1;
    Idat.resize(Packed);
    PutBE32(Idat, Check);
    Filtered = {};

    const std::filesystem::path Path(FileName);
    std::error_code Ec;
    if (IsReadOnly(Path))
        return Error = ErrSaveReadOnly;
    std::filesystem::remove(Path, Ec);
    if (std::filesystem::exists(Path, Ec))
        return Error = ErrSaveReadOnly;

    std::vector<uint8_t> File = {137, 'P', 'N', 'G', 13, 10, 26, 10};
    File.reserve(Idat.size() + Idat.size() / 100000 * 12 + 2048);
    uint8_t Header[13];
    for (int I = 0; I < 4; ++I) {
        Header[I] = static_cast<uint8_t>(static_cast<uint32_t>(Width) >> (24 - 8 * I));
        Header[4 + I] = static_cast<uint8_t>(static_cast<uint32_t>(Height) >> (24 - 8 * I));
    }
    Header[8] = 8;
    Header[9] = Paletted ? 3 : AlphaFlag ? 6 : 2;
    Header[10] = Header[11] = Header[12] = 0;
    WriteChunk(File, "IHDR", Header, 13);
    if (Paletted)
        WriteChunk(File, "PLTE", Palette.data(), Palette.size());
    if (TranspFlag)
        WriteChunk(File, "tRNS", SixBytes(TranspColorValue).data(), 6);
    if (BkgdFlag)
        WriteChunk(File, "bKGD", SixBytes(BkgdColor).data(), 6);
    const size_t Split = SplitSize > 0 ? static_cast<size_t>(SplitSize) : Idat.size();
    for (size_t At = 0; At < Idat.size(); At += Split)
        WriteChunk(File, "IDAT", Idat.data() + At, std::min(Split, Idat.size() - At));
    if (!Comment.empty())
        WriteChunk(File, "tEXt", reinterpret_cast<const uint8_t*>(Comment.data()), Comment.size());
    WriteChunk(File, "IEND", nullptr, 0);

    std::ofstream Out(Path, std::ios::binary | std::ios::trunc);
    if (!Out.write(reinterpret_cast<const char*>(File.data()), static_cast<std::streamsize>(File.size())))
        return Error = -1;
    return Error = 0;
}
