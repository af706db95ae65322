// The PCX reader and writer.
//
// Reading rules, where the format leaves a choice:
// - The manufacturer byte must be 10 and the version 0, 2, 3 or 5. Encoding 1 is run-length
//   decoded over the whole body, runs crossing line ends; encoding 0 is read raw; any other
//   encoding is refused.
// - The bytes per plane line must cover the window's width; fewer make the load fail.
// - Mono pictures are black and white whatever the header's palette says; 16-colour pictures
//   take the header's 16 colours; 256-colour pictures the 768 bytes after a byte 12 that stands
//   769 bytes from the end of the file, or a grey ramp when that byte is not 12.
// - Pixel data that ends early, or a size no file of this length could hold, makes the load
//   fail. Two bits a pixel (CGA) and every other depth and plane combination are refused.
#include "clsPCX.h"

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

// A run of the encoder is two bytes for at most 63, so no file holds more than 32 bytes of
// lines for each byte of its body.
constexpr int64_t MostLineBytesPerByte = 32;
// The longest run a count byte holds, 255 - 192.
constexpr size_t LongestRun = 63;
// The lines of a picture may hold at most this many bytes for each of its allowed pixels: the
// widest layout, 24 bits in three planes, needs 3 and a pad byte a plane.
constexpr int64_t MostLineBytesPerPixel = 4;
// The palette tail: a marker byte, then 256 red, green, blue triples.
constexpr size_t PaletteTail = 769;

PCXHeader ParseHeader(const uint8_t* B)
{
    PCXHeader H;
    H.Manufacturer = B[0];
    H.Version = B[1];
    H.Encoding = B[2];
    H.BitsPerPixel = B[3];
    H.XMin = LE16(B + 4);
    H.YMin = LE16(B + 6);
    H.XMax = LE16(B + 8);
    H.YMax = LE16(B + 10);
    H.HRes = LE16(B + 12);
    H.VRes = LE16(B + 14);
    std::copy_n(B + 16, 48, H.Palette.begin());
    H.Reserved = B[64];
    H.Planes = B[65];
    H.BytesPerLine = LE16(B + 66);
    return H;
}

bool KnownLayout(uint8_t Bits, uint8_t Planes)
{
    return (Bits == 1 && (Planes == 1 || Planes == 4)) || (Bits == 4 && Planes == 1) ||
           (Bits == 8 && (Planes == 1 || Planes == 3));
}

// Run-length decoding of Total bytes of lines. False when the input ends first.
bool Unpack(const uint8_t* In, size_t InCount, size_t Total, std::vector<uint8_t>& Out)
{
    Out.resize(Total);
    uint8_t* P = Out.data();
    size_t I = 0, O = 0;
    while (O < Total) {
        if (I >= InCount)
            return false;
        const uint8_t B = In[I++];
        if (B < 192) {
            P[O++] = B;
            continue;
        }
        if (I >= InCount)
            return false;
        const size_t Run = std::min<size_t>(B - 192u, Total - O);
        std::memset(P + O, In[I++], Run);
        O += Run;
    }
    return true;
}

// Appends the encoding of Count bytes at Out, which has room for twice as many.
uint8_t* Encode(const uint8_t* In, size_t Count, uint8_t* Out)
{
    size_t I = 0;
    while (I < Count) {
        const uint8_t B = In[I];
        size_t Run = 1;
        // Eight bytes a step while they all repeat, then byte by byte.
        const size_t Limit = std::min(LongestRun, Count - I);
        const uint64_t Repeated = B * 0x0101010101010101ull;
        for (uint64_t Word; Run + 8 <= Limit; Run += 8) {
            std::memcpy(&Word, In + I + Run, 8);
            if (Word != Repeated)
                break;
        }
        while (Run < Limit && In[I + Run] == B)
            ++Run;
        if (Run >= 2 || B >= 192)
            *Out++ = static_cast<uint8_t>(192 + Run);
        *Out++ = B;
        I += Run;
    }
    return Out;
}



} // namespace

bool clsPCX::IsPCX() const
{
    const uint8_t V = Head.Version;
    return Head.Manufacturer == 10 && (V == 0 || V == 2 || V == 3 || V == 5);
}

void clsPCX::ClearUp()
{
    Head = PCXHeader();
    PictureWidth = PictureHeight = 0;
    Bitmap.ClearUp();
}

bool clsPCX::LoadPCX(const std::string& FileName)
{
    std::vector<uint8_t> File;
    if (!FileBytes::Read(FileName, File, clsPCX::MaxFileBytes)) {
        ClearUp();
        return false;
    }
    return LoadPCXBytes(File.data(), File.size());
}

bool clsPCX::LoadPCXBytes(const uint8_t* Bytes, size_t Count)
{
    ClearUp();
    if (Bytes && Count >= HeaderSize) {
        Head = ParseHeader(Bytes);
        if (IsPCX() && Decode(Bytes, Count, Bitmap))
            return true;
    }
    ClearUp();
    return false;
}

bool clsPCX::Decode(const uint8_t* Bytes, size_t Count, clsDIB& Into)
{
    const int64_t W = int64_t{Head.XMax} - Head.XMin + 1;
    const int64_t H = int64_t{Head.YMax} - Head.YMin + 1;
    if (!KnownLayout(Head.BitsPerPixel, Head.Planes) || W < 1 || H < 1 || W > MaxSide || H > MaxSide ||
        W * H > MaxPixels)
        return false;
    const int64_t PlaneLine = Head.BytesPerLine;
    const int64_t Total = PlaneLine * Head.Planes * H;
    if (PlaneLine < (W * Head.BitsPerPixel + 7) / 8 || Total > MaxPixels * MostLineBytesPerPixel)
        return false;
    const uint8_t* In = Bytes + HeaderSize;
    const size_t InCount = Count - HeaderSize;
    std::vector<uint8_t> Body;
    if (Head.Encoding == 0) {
        if (static_cast<int64_t>(InCount) < Total)
            return false;
        Body.assign(In, In + Total);
    } else if (Head.Encoding == 1) {
        if (Total > static_cast<int64_t>(InCount) * MostLineBytesPerByte ||
            !Unpack(In, InCount, static_cast<size_t>(Total), Body))
            return false;
    } else {
        return false;
    }
    PictureWidth = static_cast<int32_t>(W);
    PictureHeight = static_cast<int32_t>(H);
    return MakePicture(Body, Bytes, Count, Into);
}

bool clsPCX::MakePicture(const std::vector<uint8_t>& Body, const uint8_t* Bytes, size_t Count, clsDIB& Into)
{
    const int32_t W = PictureWidth, H = PictureHeight;
    const size_t PlaneLine = Head.BytesPerLine;
    const size_t LineBytes = PlaneLine * Head.Planes;
    const int OutBits = Head.Planes == 3 ? 24 : Head.Planes == 4 ? 4 : Head.BitsPerPixel;
    const size_t Stride = (static_cast<size_t>(W) * OutBits + 31) / 32 * 4;
    // Rows padded to whole words, top row first.
    std::vector<uint8_t> Rows(Stride * static_cast<size_t>(H), 0);
    for (int32_t Y = 0; Y < H; ++Y) {
        const uint8_t* L = &Body[static_cast<size_t>(Y) * LineBytes];
        uint8_t* Out = &Rows[static_cast<size_t>(Y) * Stride];
        if (Head.Planes == 3) {
            const uint8_t* R = L;
            const uint8_t* G = L + PlaneLine;
            const uint8_t* B = L + 2 * PlaneLine;
            for (int32_t X = 0; X < W; ++X, Out += 3) {
                Out[0] = B[X];
                Out[1] = G[X];
                Out[2] = R[X];
            }
        } else if (Head.Planes == 4) {
            // One bit of each plane makes a nibble, plane 0 the lowest bit.
            for (int32_t X = 0; X < W; ++X) {
                const size_t At = static_cast<size_t>(X) >> 3;
                const int Shift = 7 - (X & 7);
                uint32_t Nibble = 0;
                for (size_t P = 0; P < 4; ++P)
                    Nibble |= ((L[P * PlaneLine + At] >> Shift) & 1u) << P;
                Out[X >> 1] |= static_cast<uint8_t>((X & 1) ? Nibble : Nibble << 4);
            }
        } else {
            std::memcpy(Out, L, (static_cast<size_t>(W) * OutBits + 7) / 8);
        }
    }

    bool Made = false;
    const std::vector<uint8_t> HeaderPalette(Head.Palette.begin(), Head.Palette.end());
    switch (OutBits) {
    case 1:
        basBitMap::SetPalette2FromRGB({0, 0, 0, 255, 255, 255});
        Made = basBitMap::BitmapFromRows1(Rows, W, H, true);
        break;
    case 4:
        basBitMap::SetPalette16FromRGB(HeaderPalette);
        Made = basBitMap::BitmapFromRows4(Rows, W, H, true);
        break;
    case 8:
        if (Count >= HeaderSize + PaletteTail && Bytes[Count - PaletteTail] == PaletteMarker)
            basBitMap::SetPalette256FromRGB(std::vector<uint8_t>(Bytes + Count - 768, Bytes + Count));
        else
            basBitMap::BuildGrayRamp(8, true);
        Made = basBitMap::BitmapFromRows8(Rows, W, H, true);
        break;
    default: Made = basBitMap::BitmapFromRows24(Rows, W, H, true); break;
    }
    Rows = {};
    if (!Made || !Into.CreateBlankDIB(W, H, 32, 0, true))
        return false;
    basBitMap::PaintBitmapToDC(Into.DIBhDC(), W, H, 0, 0);
    return true;
}

void clsPCX::DrawPCX(DeviceContext* Target, int32_t X, int32_t Y, int32_t Width, int32_t Height)
{
    if (!Target || !Bitmap.DIBhDC())
        return;
    BitBlt(Target, X, Y, Width < 1 ? PictureWidth : Width, Height < 1 ? PictureHeight : Height, Bitmap.DIBhDC(),
           0, 0, SRCCOPY);
}

bool clsPCX::PCXFileBytes(DeviceContext* Source, int32_t Width, int32_t Height, int16_t Compress,
                          std::vector<uint8_t>& File)
{
    File.clear();
    if (!Source || Width < 1 || Height < 1 || Width > MaxSide || Height > MaxSide)
        return false;
    // A 24- or 32-bit source that covers the picture is read in place; any other goes through a
    // 24-bit copy.
    const bool Direct = (Source->Bpp() == 24 || Source->Bpp() == 32) && Source->Width() >= Width &&
                        Source->Height() >= Height;
    clsDIB Work;
    if (!Direct) {
        if (!Work.CreateBlankDIB(Width, Height, 24, 0, true))
            return false;
        BitBlt(Work.DIBhDC(), 0, 0, Width, Height, Source, 0, 0, SRCCOPY);
    }
    DeviceContext* Rows = Direct ? Source : Work.DIBhDC();
    const int Step = Rows->Bpp() / 8;

    const size_t PlaneLine = static_cast<size_t>(Width) + (Width & 1);
    const size_t LineBytes = PlaneLine * 3;
    // Room for the worst case of a line (every byte escaped); the file grows line by line.
    File.assign(HeaderSize, 0);
    File.reserve(HeaderSize + LineBytes * static_cast<size_t>(Height) + LineBytes * 2);
    std::vector<uint8_t> Packed(LineBytes * 2);
    uint8_t* H = File.data();
    H[0] = 10;
    H[1] = 5;
    H[2] = Compress ? 1 : 0;
    H[3] = 8;
    // The window starts at 1, so that x maximum is the width itself.
    PutLE16(H + 4, 1);
    PutLE16(H + 6, 1);
    PutLE16(H + 8, static_cast<uint32_t>(Width));
    PutLE16(H + 10, static_cast<uint32_t>(Height));
    PutLE16(H + 12, 96);
    PutLE16(H + 14, 96);
    H[65] = 3;
    PutLE16(H + 66, static_cast<uint32_t>(PlaneLine));

    // A line is the red plane, the green plane and the blue plane, each padded with a 0 to an
    // even length. Runs stay inside a plane when there is such a pad byte.
    std::vector<uint8_t> Line(LineBytes, 0);
    for (int32_t Y = 0; Y < Height; ++Y) {
        const uint8_t* Pixel = Rows->Row(Y);
        uint8_t* R = Line.data();
        uint8_t* G = R + PlaneLine;
        uint8_t* B = G + PlaneLine;
        for (int32_t X = 0; X < Width; ++X, Pixel += Step) {
            R[X] = Pixel[2];
            G[X] = Pixel[1];
            B[X] = Pixel[0];
        }
        if (!Compress) {
            File.insert(File.end(), Line.begin(), Line.end());
            continue;
        }
        uint8_t* Out = Packed.data();
        if (Width & 1) {
            for (size_t P = 0; P < 3; ++P)
                Out = Encode(Line.data() + P * PlaneLine, PlaneLine, Out);
        } else {
            Out = Encode(Line.data(), LineBytes, Out);
        }
        File.insert(File.end(), Packed.data(), Out);
    }
    return true;
}

bool clsPCX::SavePCXinFile(const std::string& FileName, DeviceContext* Source, int32_t Width, int32_t Height,
                           int16_t Compress)
{
    std::vector<uint8_t> File;
    return PCXFileBytes(Source, Width, Height, Compress, File) && FileBytes::Write(FileName, File);
}

bool clsPCX::LoadPCXToDIB(const std::string& FileName, clsDIB& Target)
{
    std::vector<uint8_t> File;
    if (!FileBytes::Read(FileName, File, clsPCX::MaxFileBytes) || File.size() < HeaderSize)
        return false;
    clsPCX Reader;
    Reader.Head = ParseHeader(File.data());
    return Reader.IsPCX() && Reader.Decode(File.data(), File.size(), Target);
}

bool clsPCX::SaveDIBAsPCX(const std::string& FileName, clsDIB& Source)
{
    return clsPCX().SavePCXinFile(FileName, Source.DIBhDC(), Source.DIBWidth(), Source.DIBHeight(), -1);
}
