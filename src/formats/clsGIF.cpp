// Life of the GIF object, its records and the fields the editor reads and sets.
#include "clsGIF.h"

#include <algorithm>
#include <cstring>

#include "basGIFLZWDec.h"
#include "basGIFLZWEnc.h"
#include "basMath.h"

clsGIF::clsGIF()
{
    basGIFLZWDec::InitDecoderPowers();
    basGIFLZWEnc::InitEncoderMasks();
    ResetRecords();
}

clsGIF::~clsGIF()
{
    ClearUp();
}

void clsGIF::ResetRecords()
{
    Controls.assign(2, FrameControl());
    Frames.clear();
    Frames.resize(2);
}

void clsGIF::EnsureRecords(int32_t Upper)
{
    const size_t Size = static_cast<size_t>(std::max(Upper, 1)) + 1;
    if (Controls.size() < Size)
        Controls.resize(Size);
    if (Frames.size() < Size)
        Frames.resize(Size);
}

void clsGIF::ClearUp()
{
    // Whether a global palette exists survives: the editor reads it after a failed load.
    const bool KeepExists = Header.GlobalExists;
    Header = FileHeader();
    Header.GlobalExists = KeepExists;
    Count = 0;
    ResetRecords();
    LastIndex = 0;
    ScratchA.ClearUp();
}

float clsGIF::PixelAspectRatio() const
{
    return (static_cast<float>(Header.Screen.AspectByte) + 15.0f) / 64.0f;
}

void clsGIF::setPixelAspectRatio(float Value)
{
    if (!(Value > 0))
        return;
    const int32_t Byte = RoundHalfEven(Value * 64.0 - 15.0);
    if (Byte >= 0 && Byte <= 255)
        Header.Screen.AspectByte = static_cast<uint8_t>(Byte);
}

uint32_t clsGIF::PaletteColor(const std::array<uint8_t, 1024>& Palette, int32_t Index)
{
    if (Index < 0 || Index > 255)
        return 0;
    const uint8_t* Entry = &Palette[static_cast<size_t>(Index) * 4];
    return RGBColor(Entry[2], Entry[1], Entry[0]);
}

void clsGIF::getGlobalPalette(std::vector<uint8_t>& Target) const
{
    Target.assign(Header.GlobalPalette.begin(), Header.GlobalPalette.end());
}

void clsGIF::CopyToGlobalPalette(const uint8_t* Source, int32_t Bytes)
{
    if (Source && Bytes > 0)
        std::memcpy(Header.GlobalPalette.data(), Source, static_cast<size_t>(std::min(Bytes, 1024)));
}

uint32_t clsGIF::GlobalPaletteColor(int32_t Index) const
{
    return Header.GlobalExists ? PaletteColor(Header.GlobalPalette, Index) : 0;
}

void clsGIF::GlobalPaletteR_G_B_Get(int32_t Index, uint8_t& Red, uint8_t& Green, uint8_t& Blue) const
{
    if (Index < 0 || Index > 255)
        return;
    Blue = Header.GlobalPalette[Index * 4];
    Green = Header.GlobalPalette[Index * 4 + 1];
    Red = Header.GlobalPalette[Index * 4 + 2];
}

void clsGIF::GlobalPaletteR_G_B_Change(int32_t Index, uint8_t Red, uint8_t Green, uint8_t Blue)
{
    if (!Header.GlobalExists || Index < 0 || Index > 255)
        return;
    Header.GlobalPalette[Index * 4] = Blue;
    Header.GlobalPalette[Index * 4 + 1] = Green;
    Header.GlobalPalette[Index * 4 + 2] = Red;
}

int32_t clsGIF::GlobalPaletteR_G_B_Find(uint8_t Red, uint8_t Green, uint8_t Blue) const
{
    const int32_t Entries = std::min<int32_t>(Header.GlobalEntries, 256);
    for (int32_t I = 0; I < Entries; ++I) {
        const uint8_t* Entry = &Header.GlobalPalette[static_cast<size_t>(I) * 4];
        if (Entry[2] == Red && Entry[1] == Green && Entry[0] == Blue)
            return I;
    }
    return -1;
}

int32_t clsGIF::GlobalTransparentColorIndex() const
{
    for (int16_t F = 1; F <= Count; ++F)
        if (Controls[F].UseTransparentColor)
            return Controls[F].TransparentColorIndex;
    return -1;
}

void clsGIF::setFramesCount(int16_t Value)
{
    Count = std::max<int16_t>(Value, 0);
    EnsureRecords(Count);
}

clsDIB& clsGIF::FrameDIBXOR(int16_t Frame)
{
    return ValidFrame(Frame) ? *Frames[Frame].DIBXOR : NoSurface;
}

clsDIB& clsGIF::FrameDIBAND(int16_t Frame)
{
    return ValidFrame(Frame) ? *Frames[Frame].DIBAND : NoSurface;
}

// The plain fields of a frame: a read out of range answers 0, a store there does nothing.
#define FRAME_FIELD(Type, Name, Array, Field)                        \
    Type clsGIF::Name(int16_t Frame) const                           \
    {                                                                \
        return ValidFrame(Frame) ? Type(Array[Frame].Field) : Type(); \
    }                                                                \
    void clsGIF::set##Name(int16_t Frame, Type Value)                \
    {                                                                \
        if (ValidFrame(Frame))                                       \
            Array[Frame].Field = Value;                              \
    }

FRAME_FIELD(int16_t, FrameDelay, Controls, Delay)
FRAME_FIELD(bool, FrameInterlaced, Frames, Interlaced)
FRAME_FIELD(int16_t, FrameLeft, Frames, Left)
FRAME_FIELD(int16_t, FrameTop, Frames, Top)
FRAME_FIELD(bool, FrameUseTransparentColor, Controls, UseTransparentColor)
FRAME_FIELD(int16_t, FrameTransparentColorIndex, Controls, TransparentColorIndex)
FRAME_FIELD(uint8_t, FrameDisposalMethod, Controls, DisposalMethod)
FRAME_FIELD(bool, LocalPaletteUsed, Frames, LocalPaletteUsed)
FRAME_FIELD(bool, LocalPaletteSorted, Frames, LocalPaletteSorted)
FRAME_FIELD(int16_t, LocalPaletteEntries, Frames, LocalPaletteEntries)

#undef FRAME_FIELD

int32_t clsGIF::FrameWidth(int16_t Frame) const
{
    return ValidFrame(Frame) ? Frames[Frame].DIBXOR->DIBWidth() : 0;
}

int32_t clsGIF::FrameHeight(int16_t Frame) const
{
    return ValidFrame(Frame) ? Frames[Frame].DIBXOR->DIBHeight() : 0;
}

uint32_t clsGIF::FrameTransparentColor(int16_t Frame) const
{
    if (!ValidFrame(Frame))
        return 0;
    const int32_t Index = Controls[Frame].TransparentColorIndex;
    if (Frames[Frame].LocalPaletteUsed || !Header.GlobalExists)
        return PaletteColor(Frames[Frame].Palette, Index);
    return PaletteColor(Header.GlobalPalette, Index);
}

uint8_t* clsGIF::LocalPalettePtr(int16_t Frame)
{
    return ValidFrame(Frame) ? Frames[Frame].Palette.data() : nullptr;
}

void clsGIF::getLocalPalette(int16_t Frame, std::vector<uint8_t>& Target) const
{
    if (ValidFrame(Frame))
        Target.assign(Frames[Frame].Palette.begin(), Frames[Frame].Palette.end());
}

void clsGIF::CopyToLocalPalette(int16_t Frame, const uint8_t* Source, int32_t Bytes)
{
    if (ValidFrame(Frame) && Source && Bytes > 0)
        std::memcpy(Frames[Frame].Palette.data(), Source, static_cast<size_t>(std::min(Bytes, 1024)));
}

uint32_t clsGIF::LocalPaletteColor(int16_t Frame, int32_t Index) const
{
    return ValidFrame(Frame) ? PaletteColor(Frames[Frame].Palette, Index) : 0;
}

void clsGIF::LocalPaletteR_G_B_Get(int16_t Frame, int32_t Index, uint8_t& Red, uint8_t& Green,
                                   uint8_t& Blue) const
{
    if (!ValidFrame(Frame) || Index < 0 || Index > 255)
        return;
    const uint8_t* Entry = &Frames[Frame].Palette[static_cast<size_t>(Index) * 4];
    Blue = Entry[0];
    Green = Entry[1];
    Red = Entry[2];
}

void clsGIF::LocalPaletteR_G_B_Change(int16_t Frame, int32_t Index, uint8_t Red, uint8_t Green, uint8_t Blue)
{
    if (!ValidFrame(Frame) || Index < 0 || Index > 255)
        return;
    uint8_t* Entry = &Frames[Frame].Palette[static_cast<size_t>(Index) * 4];
    Entry[0] = Blue;
    Entry[1] = Green;
    Entry[2] = Red;
}

uint8_t clsGIF::PaletteIndex_In_DIB_XY(clsDIB& Dib, int32_t X, int32_t Y) const
{
    if (!Dib.DIBBitsPtr() || Dib.DIBbpp() != 8 || X < 0 || Y < 0 || X >= Dib.BytesPerScanline() ||
        Y >= Dib.DIBHeight())
        return 0;
    return Dib.DIBBitsPtr()[static_cast<size_t>(Y) * Dib.BytesPerScanline() + X];
}
