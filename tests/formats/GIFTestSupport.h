#pragma once
// What the GIF file tests share: GIF streams made block by block by readable recipes, files in a
// temporary folder, the indexes of a surface, and giflib as the independent reader of every frame.
#include <gif_lib.h>

#include <QTemporaryDir>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>
#include <vector>

#include "basGIFLZWEnc.h"
#include "basMath.h"
#include "clsDIB.h"

namespace GIFTest {

// A GIF stream, built in file order.
struct Stream {
    std::vector<uint8_t> Bytes;

    Stream& Raw(std::initializer_list<int> Values)
    {
        for (int V : Values)
            Bytes.push_back(static_cast<uint8_t>(V));
        return *this;
    }
    Stream& Word(int Value) { return Raw({Value & 255, (Value >> 8) & 255}); }
    Stream& Text(const std::string& Value)
    {
        Bytes.insert(Bytes.end(), Value.begin(), Value.end());
        return *this;
    }
    // Signature, version and screen; a global table of 2^GlobalBits entries (none for 0) whose
    // entry i is (i, 2i, 3i) modulo 256.
    static Stream Head(const char* Version, int Width, int Height, int GlobalBits = 1, int Background = 0)
    {
        Stream S;
        S.Text("GIF").Text(Version).Word(Width).Word(Height);
        S.Raw({GlobalBits ? 0x80 | ((GlobalBits - 1) << 4) | (GlobalBits - 1) : 0, Background, 0});
        S.Table(GlobalBits);
        return S;
    }
    Stream& Table(int Bits)
    {
        for (int I = 0; Bits && I < (1 << Bits); ++I)
            Raw({I, 2 * I, 3 * I});
        return *this;
    }
    Stream& Control(int Flags, int Delay, int Index) { return Raw({0x21, 0xF9, 4, Flags}).Word(Delay).Raw({Index, 0}); }
    // Sub-blocks of at most 255 bytes, then the terminator.
    Stream& SubBlocks(const std::vector<uint8_t>& Data)
    {
        for (size_t At = 0; At < Data.size(); At += 255) {
            const size_t N = std::min<size_t>(255, Data.size() - At);
            Bytes.push_back(static_cast<uint8_t>(N));
            Bytes.insert(Bytes.end(), Data.begin() + static_cast<ptrdiff_t>(At),
                         Data.begin() + static_cast<ptrdiff_t>(At + N));
        }
        Bytes.push_back(0);
        return *this;
    }
    Stream& Comment(const std::string& Value)
    {
        Raw({0x21, 0xFE});
        return SubBlocks(std::vector<uint8_t>(Value.begin(), Value.end()));
    }
    Stream& Loops(int Count) { return Raw({0x21, 0xFF, 11}).Text("NETSCAPE2.0").Raw({3, 1}).Word(Count).Raw({0}); }
    // An image descriptor with a local table of 2^LocalBits entries (none for 0), and its pixels,
    // row by row, compressed at the minimum code size max(CodeBits, 2).
    Stream& Image(int Left, int Top, int Width, int Height, const std::vector<uint8_t>& Pixels, int CodeBits = 1,
                  int LocalBits = 0, bool Interlaced = false)
    {
        Raw({0x2C}).Word(Left).Word(Top).Word(Width).Word(Height);
        Raw({(LocalBits ? 0x80 | (LocalBits - 1) : 0) | (Interlaced ? 0x40 : 0)});
        Table(LocalBits);
        clsDIB Dib;
        Dib.CreateBlankDIB(Width, Height, 8, 0xFFFFFF, true);
        for (int Y = 0; Y < Height; ++Y)
            std::memcpy(Dib.DIBhDC()->Row(Y), Pixels.data() + static_cast<size_t>(Y) * Width, static_cast<size_t>(Width));
        const int MinCodeSize = std::max(CodeBits, 2);
        Raw({MinCodeSize});
        basGIFLZWEnc::EncodeFrameLZW(Bytes, Dib, static_cast<uint8_t>(MinCodeSize + 1), Interlaced);
        return Raw({0});
    }
    // Pads with junk bytes between blocks (the reader skips them) up to Size bytes, less Reserve.
    Stream& PadTo(size_t Size, size_t Reserve = 1)
    {
        while (Bytes.size() + Reserve < Size)
            Bytes.push_back(0x00);
        return *this;
    }
    Stream& Trailer() { return Raw({0x3B}); }
};

// A temporary folder for the files of one test.
struct Folder {
    QTemporaryDir Dir;
    std::string Path(const std::string& Name) const { return Dir.path().toStdString() + "/" + Name; }
    std::string Write(const std::string& Name, const std::vector<uint8_t>& Bytes) const
    {
        std::ofstream(Path(Name), std::ios::binary)
            .write(reinterpret_cast<const char*>(Bytes.data()), static_cast<std::streamsize>(Bytes.size()));
        return Path(Name);
    }
};

inline std::vector<uint8_t> ReadFile(const std::string& Path)
{
    std::ifstream In(Path, std::ios::binary);
    return {std::istreambuf_iterator<char>(In), std::istreambuf_iterator<char>()};
}

// The indexes of an 8-bit surface row by row, top first, without the row padding.
inline std::vector<uint8_t> Indexes(const clsDIB& Dib)
{
    std::vector<uint8_t> Out;
    for (int Y = 0; Dib.DIBBitsPtr() && Y < Dib.DIBHeight(); ++Y)
        Out.insert(Out.end(), Dib.DIBhDC()->Row(Y), Dib.DIBhDC()->Row(Y) + Dib.DIBWidth());
    return Out;
}

// One image as giflib reads it.
struct GiflibFrame {
    int Left = 0, Top = 0, Width = 0, Height = 0;
    bool Interlaced = false;
    std::vector<uint8_t> Raster;  // indexes, top row first
    std::vector<uint8_t> Colors;  // the table in force, red, green, blue
    bool Local = false;
};

// Every image of a file as giflib reads it; false when giflib reports an error.
inline bool GiflibRead(const std::string& Path, std::vector<GiflibFrame>& Frames)
{
    int Error = 0;
    GifFileType* Gif = DGifOpenFileName(Path.c_str(), &Error);
    if (!Gif)
        return false;
    const bool Good = DGifSlurp(Gif) == GIF_OK;
    Frames.clear();
    for (int I = 0; Good && I < Gif->ImageCount; ++I) {
        const SavedImage& Image = Gif->SavedImages[I];
        GiflibFrame F;
        F.Left = Image.ImageDesc.Left;
        F.Top = Image.ImageDesc.Top;
        F.Width = Image.ImageDesc.Width;
        F.Height = Image.ImageDesc.Height;
        F.Interlaced = Image.ImageDesc.Interlace;
        F.Raster.assign(Image.RasterBits, Image.RasterBits + static_cast<size_t>(F.Width) * F.Height);
        const ColorMapObject* Map = Image.ImageDesc.ColorMap ? Image.ImageDesc.ColorMap : Gif->SColorMap;
        F.Local = Image.ImageDesc.ColorMap != nullptr;
        for (int C = 0; Map && C < Map->ColorCount; ++C)
            F.Colors.insert(F.Colors.end(), {Map->Colors[C].Red, Map->Colors[C].Green, Map->Colors[C].Blue});
        Frames.push_back(std::move(F));
    }
    DGifCloseFile(Gif, &Error);
    return Good;
}

} // namespace GIFTest
