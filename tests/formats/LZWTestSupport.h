#pragma once
// What the LZW codec tests share: 8-bit surfaces of known pixels, streams of codes packed by
// hand, and giflib as an independent decoder of whole GIF files held in memory.
#include <gif_lib.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

#include "clsDIB.h"

namespace LZWTest {

// An 8-bit top-down surface whose every byte (padding included) is Fill.
inline std::unique_ptr<clsDIB> MakeSurface(int Width, int Height, uint8_t Fill = 0)
{
    auto Dib = std::make_unique<clsDIB>();
    if (Dib->CreateBlankDIB(Width, Height, 8, 0xFFFFFF, true))
        std::memset(Dib->DIBBitsPtr(), Fill, static_cast<size_t>(Dib->DIBSize()));
    return Dib;
}

// The pixels row by row, top first, without the row padding.
inline std::vector<uint8_t> Pixels(const clsDIB& Dib)
{
    std::vector<uint8_t> Out;
    for (int Y = 0; Y < Dib.DIBHeight(); ++Y) {
        const uint8_t* Row = Dib.DIBBitsPtr() + static_cast<size_t>(Y) * Dib.BytesPerScanline();
        Out.insert(Out.end(), Row, Row + Dib.DIBWidth());
    }
    return Out;
}

inline std::unique_ptr<clsDIB> SurfaceOf(int Width, int Height, const std::vector<uint8_t>& Values)
{
    auto Dib = MakeSurface(Width, Height, 0xAB);
    for (int Y = 0; Y < Height; ++Y)
        std::copy_n(Values.begin() + static_cast<ptrdiff_t>(Y) * Width, Width,
                    Dib->DIBBitsPtr() + static_cast<size_t>(Y) * Dib->BytesPerScanline());
    return Dib;
}

// Codes packed lowest bit first, each at the width given; the result is laid out as the
// decoder takes it, data from index 1 on.
inline std::vector<uint8_t> PackCodes(std::initializer_list<std::pair<int, int>> CodesAndWidths)
{
    std::vector<uint8_t> Data{0};
    uint64_t Bits = 0;
    int Count = 0;
    for (const auto& [Code, Width] : CodesAndWidths) {
        Bits |= static_cast<uint64_t>(Code) << Count;
        Count += Width;
        while (Count >= 8) {
            Data.push_back(static_cast<uint8_t>(Bits));
            Bits >>= 8;
            Count -= 8;
        }
    }
    if (Count > 0)
        Data.push_back(static_cast<uint8_t>(Bits));
    return Data;
}

// The contents of a run of sub-blocks, joined, from index 1 on. Empty when a length byte
// points past the end.
inline std::vector<uint8_t> JoinSubBlocks(const std::vector<uint8_t>& Blocks)
{
    std::vector<uint8_t> Data{0};
    size_t Pos = 0;
    while (Pos < Blocks.size()) {
        const size_t Length = Blocks[Pos];
        if (Length == 0 || Pos + 1 + Length > Blocks.size())
            return Length == 0 ? Data : std::vector<uint8_t>();
        Data.insert(Data.end(), Blocks.begin() + static_cast<ptrdiff_t>(Pos) + 1,
                    Blocks.begin() + static_cast<ptrdiff_t>(Pos + 1 + Length));
        Pos += 1 + Length;
    }
    return Data;
}

// A GIF file of one image around the given sub-blocks, with a grey global table of
// 2^MinCodeSize entries.
inline std::vector<uint8_t> WrapInGif(int Width, int Height, int MinCodeSize, bool Interlaced,
                                      const std::vector<uint8_t>& Blocks)
{
    const int TableBits = std::max(MinCodeSize, 1);
    std::vector<uint8_t> File{'G', 'I', 'F', '8', '9', 'a'};
    auto Word = [&File](int Value) {
        File.push_back(static_cast<uint8_t>(Value));
        File.push_back(static_cast<uint8_t>(Value >> 8));
    };
    Word(Width);
    Word(Height);
    File.push_back(static_cast<uint8_t>(0x80 | ((TableBits - 1) << 4) | (TableBits - 1)));
    File.push_back(0);
    File.push_back(0);
    for (int I = 0; I < (1 << TableBits); ++I)
        File.insert(File.end(), 3, static_cast<uint8_t>(I));
    File.push_back(0x2C);
    Word(0);
    Word(0);
    Word(Width);
    Word(Height);
    File.push_back(Interlaced ? 0x40 : 0);
    File.push_back(static_cast<uint8_t>(MinCodeSize));
    File.insert(File.end(), Blocks.begin(), Blocks.end());
    File.push_back(0);
    File.push_back(0x3B);
    return File;
}

struct MemoryReader {
    const std::vector<uint8_t>* File;
    size_t Pos;
};

inline int ReadFromMemory(GifFileType* Gif, GifByteType* Buffer, int Count)
{
    auto* Reader = static_cast<MemoryReader*>(Gif->UserData);
    const size_t Left = Reader->File->size() - Reader->Pos;
    const size_t Take = std::min(Left, static_cast<size_t>(Count));
    std::memcpy(Buffer, Reader->File->data() + Reader->Pos, Take);
    Reader->Pos += Take;
    return static_cast<int>(Take);
}

// giflib's reading of the first image of a GIF file in memory: its indexes row by row, top
// first (interlaced images put in order). False when giflib refuses the file.
inline bool GiflibDecode(const std::vector<uint8_t>& File, std::vector<uint8_t>& Raster, int& Width, int& Height)
{
    MemoryReader Reader{&File, 0};
    int Error = 0;
    GifFileType* Gif = DGifOpen(&Reader, ReadFromMemory, &Error);
    if (!Gif)
        return false;
    const bool Good = DGifSlurp(Gif) == GIF_OK && Gif->ImageCount > 0;
    if (Good) {
        const SavedImage& Image = Gif->SavedImages[0];
        Width = Image.ImageDesc.Width;
        Height = Image.ImageDesc.Height;
        Raster.assign(Image.RasterBits, Image.RasterBits + static_cast<size_t>(Width) * Height);
    }
    DGifCloseFile(Gif, &Error);
    return Good;
}

} // namespace LZWTest
