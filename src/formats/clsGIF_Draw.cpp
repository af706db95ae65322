// Masks, palettes and drawing of frames.
#include "clsGIF.h"

#include <algorithm>
#include <cstring>

#include "DeviceContext.h"

namespace {

const std::vector<uint8_t> BlackAndWhite = {0, 0, 0, 0, 255, 255, 255, 0};

} // namespace

void clsGIF::MaskRecord(FrameRecord& Record, const FrameControl& Control, uint8_t Index)
{
    clsDIB& Image = *Record.DIBXOR;
    clsDIB& Mask = *Record.DIBAND;
    std::vector<uint8_t> Table(Record.Palette.begin(), Record.Palette.end());
    const int32_t Width = Image.DIBWidth();
    const int32_t Height = Image.DIBHeight();
    if (Image.DIBBitsPtr() && (Mask.DIBWidth() != Width || Mask.DIBHeight() != Height || Mask.DIBbpp() != 1))
        Mask.CreateBlankDIB(Width, Height, 1, 0xFFFFFF, true);
    if (!Control.UseTransparentColor) {
        // No transparency: the mask is all black and the image shows its own palette.
        if (Mask.DIBBitsPtr())
            std::memset(Mask.DIBBitsPtr(), 0, static_cast<size_t>(Mask.DIBSize()));
        Image.SetPaletteToDIB8BPP(Table);
        return;
    }
    // White where the pixel holds the transparent index, black elsewhere; the transparent entry
    // of the image's own table becomes black so that ORing it leaves the background.
    if (Image.DIBBitsPtr() && Mask.DIBBitsPtr() && Image.DIBbpp() == 8) {
        Mask.SetPaletteToDIB8BPP(BlackAndWhite);
        const int32_t MaskStride = Mask.BytesPerScanline();
        for (int32_t Y = 0; Y < Height; ++Y) {
            const uint8_t* From = Image.DIBhDC()->Row(Y);
            uint8_t* To = Mask.DIBhDC()->Row(Y);
            std::memset(To, 0, static_cast<size_t>(MaskStride));
            for (int32_t X = 0; X < Width; ++X)
                if (From[X] == Index)
                    To[X >> 3] |= static_cast<uint8_t>(0x80 >> (X & 7));
        }
    }
    std::fill_n(Table.begin() + Index * 4, 3, uint8_t(0));
    Image.SetPaletteToDIB8BPP(Table);
}

void clsGIF::FrameMask(int16_t Frame, uint8_t Index)
{
    if (ValidFrame(Frame))
        MaskRecord(Frames[Frame], Controls[Frame], Index);
}

bool clsGIF::Remask_All_Frames()
{
    for (int16_t F = 1; F <= Count; ++F)
        FrameMask(F, static_cast<uint8_t>(Controls[F].TransparentColorIndex));
    return Count > 0;
}

void clsGIF::UpdateLocalPalettePerGlobal(int16_t Frame)
{
    if (!ValidFrame(Frame))
        return;
    FrameRecord& Record = Frames[Frame];
    Record.Palette = Header.GlobalPalette;
    Record.LocalPaletteEntries = Header.GlobalEntries;
    Record.DIBXOR->SetPaletteToDIB8BPP(std::vector<uint8_t>(Record.Palette.begin(), Record.Palette.end()));
    if (Controls[Frame].UseTransparentColor)
        FrameMask(Frame, static_cast<uint8_t>(Controls[Frame].TransparentColorIndex));
    Record.LocalPaletteUsed = false;
}

void clsGIF::UpdateLocalPalettePerLocal(int16_t Frame)
{
    if (!ValidFrame(Frame))
        return;
    FrameRecord& Record = Frames[Frame];
    Record.DIBXOR->SetPaletteToDIB8BPP(std::vector<uint8_t>(Record.Palette.begin(), Record.Palette.end()));
    if (Controls[Frame].UseTransparentColor)
        FrameMask(Frame, static_cast<uint8_t>(Controls[Frame].TransparentColorIndex));
}

void clsGIF::FrameDraw(DeviceContext* hDC, int16_t Frame, int32_t X, int32_t Y, bool DrawBackground, bool AtOrigin)
{
    if (!hDC || !ValidFrame(Frame))
        return;
    const FrameRecord& Record = Frames[Frame];
    const int32_t Width = Record.DIBXOR->DIBWidth();
    const int32_t Height = Record.DIBXOR->DIBHeight();
    if (Width < 1 || Height < 1)
        return;
    const int32_t PlaceX = Record.Left + X;
    const int32_t PlaceY = Record.Top + Y;
    if (!Controls[Frame].UseTransparentColor) {
        BitBlt(hDC, PlaceX, PlaceY, Width, Height, Record.DIBXOR->DIBhDC(), 0, 0, SRCCOPY);
        return;
    }
    if (DrawBackground && ScratchA.CreateBlankDIB(Width, Height, 32, FrameTransparentColor(Frame), false, true)) {
        BitBlt(hDC, AtOrigin ? 0 : PlaceX, AtOrigin ? 0 : PlaceY, Width, Height, ScratchA.DIBhDC(), 0, 0, SRCCOPY);
        ScratchA.ClearUp();
    }
    BitBlt(hDC, PlaceX, PlaceY, Width, Height, Record.DIBAND->DIBhDC(), 0, 0, SRCAND);
    BitBlt(hDC, PlaceX, PlaceY, Width, Height, Record.DIBXOR->DIBhDC(), 0, 0, SRCPAINT);
}
