// The TGA reader and writer.
//
// Reading rules, where the format leaves a choice:
// - The identification field is skipped, and a colour map is present only when the colour map
//   type is 1; its entries are rounded up to whole bytes, so 15-bit entries take 2 bytes.
// - An 8-bit picture takes its colours from the map, entry k going to index first entry + k
//   (indexes the map does not reach are black). Without a map, a colour-mapped type (1, 9) is
//   refused and any other becomes grey. Entries of 2 bytes keep their 5-bit values, 0 to 31.
// - 16-bit grey pictures (types 3 and 11) show their low byte, the grey level, as grey; other
//   16-bit pictures are 5-5-5 colour. The fourth byte of 32-bit pixels is dropped.
// - The origin in the header is taken off the size and the pixels are read in rows of the
//   smaller width; the descriptor's origin bits are not read: rows are taken in file order as
//   the bottom-up rows of a bitmap.
// - Types 9 and 10 are run-length decoded; a packet that runs past the last pixel is cut
//   there. Type 11 is not decoded: its bytes are read as raw grey pixels, zeros past the end.
// - Pixel data that ends early (raw or encoded), a colour map cut off, or a size no file of
//   this length could hold makes the load fail.
#include "clsTGA.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "DeviceContext.h"
#include "FileBytes.h"
#include "basBitMap.h"

namespace {

uint16_t LE16(const uint8_t* P)
{
    return static_cast<uint16_t>(P[0] | (P[1] << 8));
}

void PutLE16(uint8_t* P, uint32_t Value)
{
    P[0] = static_cast<uint8_t>(Value);
    P[1] = static_cast<uint8_t>(Value >> 8);
}

// A run-length packet of n + 1 bytes yields at most 128 pixels, so no file can hold more pixels
// than 64 times its pixel data's length.
constexpr int64_t MostPixelsPerByte = 64;

TGAHeader ParseHeader(const uint8_t* B)
{
    TGAHeader H;
    H.IdLength = B[0];
    H.ColorMapType = B[1];
    H.ImageType = B[2];
    H.FirstEntry = LE16(B + 3);
    H.MapLength = LE16(B + 5);
    H.EntrySize = B[7];
    H.XOrigin = LE16(B + 8);
    H.YOrigin = LE16(B + 10);
    H.Width = LE16(B + 12);
    H.Height = LE16(B + 14);
    H.BitsPerPixel = B[16];
    H.Descriptor = B[17];
    return H;
}

// The colour map as 256 red, green, blue triples, entry k at index First + k.
bool ReadColorMap(const uint8_t* Map, const TGAHeader& Head, size_t EntryBytes, std::vector<uint8_t>& Palette)
{
    if (EntryBytes < 2 || EntryBytes > 4)
        return false;
    Palette.assign(256 * 3, 0);
    for (size_t K = 0; K < Head.MapLength; ++K) {
        const size_t Index = size_t{Head.FirstEntry} + K;
        if (Index >= 256)
            break;
        const uint8_t* E = Map + K * EntryBytes;
        uint8_t* T = &Palette[Index * 3];
        if (EntryBytes == 2) {
            const uint32_t Word = LE16(E);
            T[0] = static_cast<uint8_t>((Word >> 10) & 31);
            T[1] = static_cast<uint8_t>((Word >> 5) & 31);
            T[2] = static_cast<uint8_t>(Word & 31);
        } else {
            T[0] = E[2];
            T[1] = E[1];
            T[2] = E[0];
        }
    }
    return true;
}

// Run-length decoding of Expected bytes of pixels. False when the input ends first.
bool Unpack(const uint8_t* In, size_t InCount, size_t PixelBytes, size_t Expected, std::vector<uint8_t>& Out)
{
    Out.resize(Expected);
    size_t I = 0, O = 0;
    while (O < Expected) {
        if (I >= InCount)
            return false;
        const uint8_t Packet = In[I++];
        const size_t Bytes = std::min(size_t{(Packet & 127u) + 1u} * PixelBytes, Expected - O);
        if (Packet < 128) {
            if (InCount - I < Bytes)
                return false;
            std::memcpy(&Out[O], In + I, Bytes);
            I += Bytes;
        } else {
            if (InCount - I < PixelBytes)
                return false;
            const uint8_t* Pixel = In + I;
            I += PixelBytes;
            if (PixelBytes == 1) {
                std::memset(&Out[O], *Pixel, Bytes);
            } else {
                uint8_t* P = &Out[O];
                for (size_t K = 0; K < Bytes; K += PixelBytes)
                    std::memcpy(P + K, Pixel, PixelBytes);
            }
        }
        O += Bytes;
    }
    return true;
}



} // namespace

bool clsTGA::IsTGA() const
{
    const uint8_t Bits = Head.BitsPerPixel;
    const uint8_t Type = Head.ImageType;
    return (Bits == 8 || Bits == 16 || Bits == 24 || Bits == 32) &&
           (Type == 1 || Type == 2 || Type == 3 || Type == 9 || Type == 10 || Type == 11);
}

void clsTGA::ClearUp()
{
    Head = TGAHeader();
    PictureWidth = PictureHeight = 0;
    Bitmap.ClearUp();
}

bool clsTGA::LoadTGA(const std::string& FileName)
{
    std::vector<uint8_t> File;
    if (!FileBytes::Read(FileName, File, clsTGA::MaxFileBytes)) {
        ClearUp();
        return false;
    }
    return LoadTGABytes(File.data(), File.size());
}

bool clsTGA::LoadTGABytes(const uint8_t* Bytes, size_t Count)
{
    ClearUp();
    if (Bytes && Count >= HeaderSize) {
        Head = ParseHeader(Bytes);
        if (IsTGA() && Decode(Bytes, Count, Bitmap))
            return true;
    }
    ClearUp();
    return false;
}

bool clsTGA::Decode(const uint8_t* Bytes, size_t Count, clsDIB& Into)
{
    const int64_t W = int64_t{Head.Width} - Head.XOrigin;
    const int64_t H = int64_t{Head.Height} - Head.YOrigin;
    if (W < 1 || H < 1 || W > MaxSide || H > MaxSide || W * H > MaxPixels)
        return false;
    size_t At = HeaderSize + Head.IdLength;
    const size_t EntryBytes = (Head.EntrySize + 7u) / 8u;
    const size_t MapBytes = Head.ColorMapType == 1 ? size_t{Head.MapLength} * EntryBytes : 0;
    if (At > Count || Count - At < MapBytes)
        return false;
    std::vector<uint8_t> Palette;
    if (Head.BitsPerPixel == 8) {
        if (MapBytes > 0) {
            if (!ReadColorMap(Bytes + At, Head, EntryBytes, Palette))
                return false;
        } else if (Head.ImageType == 1 || Head.ImageType == 9) {
            return false;
        }
    }
    At += MapBytes;

    const size_t PixelBytes = Head.BitsPerPixel / 8u;
    const size_t Expected = static_cast<size_t>(W * H) * PixelBytes;
    const uint8_t* Data = Bytes + At;
    size_t Available = Count - At;
    if (W * H > static_cast<int64_t>(Available) * MostPixelsPerByte)
        return false;
    std::vector<uint8_t> Unpacked;
    if (Compressed()) {
        if (!Unpack(Data, Available, PixelBytes, Expected, Unpacked))
            return false;
        Data = Unpacked.data();
        Available = Expected;
    } else if (Head.ImageType != 11 && Available < Expected) {
        return false;
    }
    PictureWidth = static_cast<int32_t>(W);
    PictureHeight = static_cast<int32_t>(H);
    return MakePicture(Data, Available, Palette, Into);
}

bool clsTGA::MakePicture(const uint8_t* Pixels, size_t Available, const std::vector<uint8_t>& Palette,
                         clsDIB& Into)
{
    const int32_t W = PictureWidth, H = PictureHeight;
    const int Bits = Head.BitsPerPixel;
    const bool Grey16 = Bits == 16 && (Head.ImageType == 3 || Head.ImageType == 11);
    const int OutBits = Grey16 ? 8 : Bits;
    const size_t InRow = static_cast<size_t>(W) * (Bits / 8);
    const size_t Stride = (static_cast<size_t>(W) * OutBits + 31) / 32 * 4;
    // Rows padded to whole words, bottom row first as the file stores them; missing bytes of a
    // type 11 picture stay 0.
    std::vector<uint8_t> Rows(Stride * static_cast<size_t>(H), 0);
    for (int32_t Y = 0; Y < H; ++Y) {
        const size_t From = static_cast<size_t>(Y) * InRow;
        if (From >= Available)
            break;
        const size_t Take = std::min(InRow, Available - From);
        const uint8_t* In = Pixels + From;
        uint8_t* Out = &Rows[static_cast<size_t>(Y) * Stride];
        if (Grey16) {
            for (size_t X = 0; X < Take / 2; ++X)
                Out[X] = In[X * 2];
        } else {
            std::memcpy(Out, In, Take);
            if (Bits == 32)
                for (size_t X = 3; X < Take; X += 4)
                    Out[X] = 0;
        }
    }

    bool Made = false;
    switch (OutBits) {
    case 8:
        if (Palette.empty())
            basBitMap::BuildGrayRamp(8, true);
        else
            basBitMap::SetPalette256FromRGB(Palette);
        Made = basBitMap::BitmapFromRows8(Rows, W, H, false);
        break;
    case 16: Made = basBitMap::BitmapFromRows16(Rows, W, H, false); break;
    case 24: Made = basBitMap::BitmapFromRows24(Rows, W, H, false); break;
    default: Made = basBitMap::BitmapFromRows32(Rows, W, H, false); break;
    }
    Rows = {};
    if (!Made || !Into.CreateBlankDIB(W, H, 32, 0, true))
        return false;
    basBitMap::PaintBitmapToDC(Into.DIBhDC(), W, H, 0, 0);
    return true;
}

void clsTGA::DrawTGA(DeviceContext* Target, int32_t X, int32_t Y, int32_t Width, int32_t Height)
{
    if (!Target || !Bitmap.DIBhDC())
        return;
    BitBlt(Target, X, Y, Width < 1 ? PictureWidth : Width, Height < 1 ? PictureHeight : Height, Bitmap.DIBhDC(),
           0, 0, SRCCOPY);
}

bool clsTGA::TGAFileBytes(DeviceContext* Source, int32_t Width, int32_t Height, std::vector<uint8_t>& File)
{
    File.clear();
    if (!Source || Width < 1 || Height < 1 || Width > MaxSide || Height > MaxSide)
        return false;
    clsDIB Work;
    if (!Work.CreateBlankDIB(Width, Height, 24, 0, false))
        return false;
    BitBlt(Work.DIBhDC(), 0, 0, Width, Height, Source, 0, 0, SRCCOPY);
    const size_t RowBytes = static_cast<size_t>(Width) * 3;
    File.assign(HeaderSize + RowBytes * static_cast<size_t>(Height), 0);
    File[2] = 2;
    PutLE16(&File[12], static_cast<uint32_t>(Width));
    PutLE16(&File[14], static_cast<uint32_t>(Height));
    File[16] = 24;
    // Bottom row first, each row cut to its pixels.
    for (int32_t Y = 0; Y < Height; ++Y)
        std::memcpy(&File[HeaderSize + static_cast<size_t>(Y) * RowBytes], Work.DIBhDC()->Row(Height - 1 - Y),
                    RowBytes);
    return true;
}

bool clsTGA::SaveTGAinFile(const std::string& FileName, DeviceContext* Source, int32_t Width, int32_t Height)
{
    std::vector<uint8_t> File;
    return TGAFileBytes(Source, Width, Height, File) && FileBytes::Write(FileName, File);
}

bool clsTGA::LoadTGAToDIB(const std::string& FileName, clsDIB& Target)
{
    std::vector<uint8_t> File;
    if (!FileBytes::Read(FileName, File, clsTGA::MaxFileBytes) || File.size() < HeaderSize)
        return false;
    clsTGA Reader;
    Reader.Head = ParseHeader(File.data());
    return Reader.IsTGA() && Reader.Decode(File.data(), File.size(), Target);
}

bool clsTGA::SaveDIBAsTGA(const std::string& FileName, clsDIB& Source)
{
    return clsTGA().SaveTGAinFile(FileName, Source.DIBhDC(), Source.DIBWidth(), Source.DIBHeight());
}
