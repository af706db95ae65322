// The frame list: copying, moving, swapping, deleting, and frames taken in from other files or
// made blank.
#include "clsGIF.h"

#include <algorithm>
#include <cstring>
#include <utility>

bool clsGIF::FrameCopy(int16_t Source, int16_t Target)
{
    if (!ValidFrame(Source) || !ValidFrame(Target) || Source == Target)
        return false;
    Controls[Target] = Controls[Source];
    // The surfaces are shared, not copied: shifting the list moves references only.
    Frames[Target] = Frames[Source];
    return true;
}

void clsGIF::FrameMoveUp(int16_t Frame)
{
    if (!ValidFrame(Frame) || Frame == 1)
        return;
    FrameSwap(Frame, static_cast<int16_t>(Frame - 1));
    Frames[1].Left = Frames[1].Top = 0;
}

void clsGIF::FrameMoveDown(int16_t Frame)
{
    if (!ValidFrame(Frame) || Frame == Count)
        return;
    FrameSwap(Frame, static_cast<int16_t>(Frame + 1));
    Frames[1].Left = Frames[1].Top = 0;
}

bool clsGIF::FrameMoveTo(int16_t From, int16_t To)
{
    if (!ValidFrame(From) || !ValidFrame(To) || From == To)
        return false;
    const FrameControl SavedControl = Controls[From];
    const FrameRecord SavedRecord = Frames[From];
    const int16_t Step = From < To ? 1 : -1;
    for (int16_t F = From; F != To; F = static_cast<int16_t>(F + Step))
        FrameCopy(static_cast<int16_t>(F + Step), F);
    Controls[To] = SavedControl;
    Frames[To] = SavedRecord;
    Frames[1].Left = Frames[1].Top = 0;
    return true;
}

bool clsGIF::FrameSwap(int16_t One, int16_t Other)
{
    if (!ValidFrame(One) || !ValidFrame(Other) || One == Other)
        return false;
    std::swap(Controls[One], Controls[Other]);
    std::swap(Frames[One], Frames[Other]);
    return true;
}

void clsGIF::FrameDelete(int16_t Frame)
{
    if (!ValidFrame(Frame))
        return;
    Frames.erase(Frames.begin() + Frame);
    Controls.erase(Controls.begin() + Frame);
    --Count;
    if (Count == 0) {
        ResetRecords();
        return;
    }
    Frames.resize(size_t(Count) + 1);
    Controls.resize(std::max(Controls.size(), size_t(Count) + 1));
    // The first frame sets the screen.
    if (Frame == 1) {
        Header.Screen.Width = static_cast<int16_t>(Frames[1].DIBXOR->DIBWidth());
        Header.Screen.Height = static_cast<int16_t>(Frames[1].DIBXOR->DIBHeight());
        Frames[1].Left = Frames[1].Top = 0;
    }
}

void clsGIF::OpenSlot(int16_t Frame)
{
    ++Count;
    EnsureRecords(Count);
    for (int16_t F = Count; F > Frame; --F)
        FrameCopy(static_cast<int16_t>(F - 1), F);
}

int16_t clsGIF::ReadFirstImage(const std::string& FileName, LoadedImage& Image)
{
    std::vector<uint8_t> Bytes;
    int16_t Code = FileTests(FileName, Bytes, ErrLoadFailed);
    if (Code != ErrNone)
        return Code;
    std::vector<FrameControl> Ctrls(2);
    std::vector<FrameRecord> Records(2);
    int16_t Images = 0;
    Code = ReadStream(Bytes, Image.Header, Ctrls, Records, Images, true);
    if (Code == ErrNone && Images < 1)
        Code = ErrNoFrame;
    if (Code != ErrNone)
        return Code;
    Image.Control = Ctrls[1];
    Image.Record = std::move(Records[1]);
    return ErrNone;
}

void clsGIF::PlaceImage(LoadedImage& Image, int16_t Frame, int16_t Delay, uint8_t Disposal, bool UseTransparent,
                        int32_t TransparentColor, int16_t Left, int16_t Top, bool Interlaced)
{
    EnsureRecords(Frame);
    FrameRecord& Record = Frames[Frame];
    Record = std::move(Image.Record);
    Record.Interlaced = Interlaced;
    Record.LocalPaletteUsed = true;
    Record.Left = Left;
    Record.Top = Top;
    FrameControl& Control = Controls[Frame];
    Control = FrameControl();
    Control.Delay = Delay;
    Control.DisposalMethod = Disposal <= 3 ? Disposal : 0;
    if (UseTransparent) {
        Control.UseTransparentColor = true;
        const int32_t Entries = std::min<int32_t>(Record.LocalPaletteEntries, 256);
        for (int32_t I = 0; I < Entries; ++I)
            if (TransparentColor >= 0 && PaletteColor(Record.Palette, I) == static_cast<uint32_t>(TransparentColor)) {
                Control.TransparentColorIndex = static_cast<int16_t>(I);
                break;
            }
    }
    // The file's own fields come with it, its comment apart; the callers put back what they keep.
    const std::string KeepComment = Header.Comment;
    Header = Image.Header;
    Header.Comment = KeepComment;
    MaskRecord(Record, Control, static_cast<uint8_t>(Control.TransparentColorIndex));
}

int16_t clsGIF::LoadFromGIFFileAddOn(const std::string& FileName, int16_t Frame, int16_t Delay, uint8_t Disposal,
                                     bool MakeGlobal, bool UseTransparent, int32_t TransparentColor, int16_t Left,
                                     int16_t Top, bool Interlaced)
{
    if (Frame < 1 || Frame > Count + 1 || Frame > MaxFrames)
        return ErrNone;
    LoadedImage Image;
    const int16_t Code = ReadFirstImage(FileName, Image);
    if (Code != ErrNone) {
        ClearUp();
        return Code;
    }
    const FileHeader Before = Header;
    if (Frame == 1) {
        ResetRecords();
        Left = Top = 0;
    }
    PlaceImage(Image, Frame, Delay, Disposal, UseTransparent, TransparentColor, Left, Top, Interlaced);
    Count = Frame;
    // Only the first frame sets the logical screen and its colour table.
    if (Frame > 1) {
        Header.Screen = Before.Screen;
        Header.GlobalExists = Before.GlobalExists;
        Header.GlobalSorted = Before.GlobalSorted;
        Header.GlobalEntries = Before.GlobalEntries;
        Header.GlobalPalette = Before.GlobalPalette;
    }
    if (MakeGlobal) {
        Header.GlobalExists = true;
        Header.GlobalEntries = 256;
        Header.GlobalPalette = Frames[Frame].Palette;
    }
    return ErrNone;
}

bool clsGIF::FrameReplaceImage(const std::string& FileName, int16_t Frame)
{
    if (!ValidFrame(Frame))
        return false;
    const FileHeader Saved = Header;
    const FrameControl& Control = Controls[Frame];
    const FrameRecord& Record = Frames[Frame];
    LoadedImage Image;
    if (ReadFirstImage(FileName, Image) != ErrNone)
        return false;
    // The file's header fields are put back below, the global table with them, so the new
    // image never becomes the global palette here.
    PlaceImage(Image, Frame, Control.Delay, Control.DisposalMethod, Control.UseTransparentColor,
               static_cast<int32_t>(FrameTransparentColor(Frame)), Record.Left, Record.Top, Record.Interlaced);
    const ScreenDescriptor NewScreen = Header.Screen;
    Header = Saved;
    if (Frame == 1)
        Header.Screen = NewScreen;
    Header.Screen.Width = static_cast<int16_t>(Frames[1].DIBXOR->DIBWidth());
    Header.Screen.Height = static_cast<int16_t>(Frames[1].DIBXOR->DIBHeight());
    if (Frame == 1)
        Frames[1].Left = Frames[1].Top = 0;
    else
        ClipFrameToScreen(Frame);
    return true;
}

bool clsGIF::FrameInsertImage(const std::string& FileName, int16_t Frame)
{
    if (Frame < 1 || Frame > Count + 1 || Count >= MaxFrames)
        return false;
    const FileHeader Saved = Header;
    const bool UseTransparent = Count >= 1 && Controls[1].UseTransparentColor;
    const uint32_t TransparentColor = FrameTransparentColor(1);
    LoadedImage Image;
    if (ReadFirstImage(FileName, Image) != ErrNone)
        return false;
    OpenSlot(Frame);
    // Timing follows the frame before, or at the head of the list the frame that was first.
    const int16_t Neighbour = Frame > 1 ? static_cast<int16_t>(Frame - 1) : static_cast<int16_t>(2);
    const bool HasNeighbour = ValidFrame(Neighbour);
    PlaceImage(Image, Frame, HasNeighbour ? Controls[Neighbour].Delay : int16_t(0),
               HasNeighbour ? Controls[Neighbour].DisposalMethod : uint8_t(0), UseTransparent,
               static_cast<int32_t>(TransparentColor), 0, 0, false);
    const ScreenDescriptor NewScreen = Header.Screen;
    Header = Saved;
    if (Frame == 1) {
        Header.Screen = NewScreen;
        Header.Screen.Width = static_cast<int16_t>(Frames[1].DIBXOR->DIBWidth());
        Header.Screen.Height = static_cast<int16_t>(Frames[1].DIBXOR->DIBHeight());
    } else {
        ClipFrameToScreen(Frame);
    }
    return true;
}

bool clsGIF::FrameInsertBlank(int16_t Frame, int32_t Width, int32_t Height)
{
    if (Frame < 1 || Frame > Count + 1 || Count >= MaxFrames)
        return false;
    if (Width == 0)
        Width = Header.Screen.Width;
    if (Height == 0)
        Height = Header.Screen.Height;
    FrameRecord Record;
    if (Width < 1 || Height < 1 || Width > MaxScreenSide || Height > MaxScreenSide ||
        int64_t(Width) * Height > MaxScreenArea || !Record.DIBXOR->CreateBlankDIB(Width, Height, 8, 0xFFFFFF, true) ||
        !Record.DIBAND->CreateBlankDIB(Width, Height, 1, 0xFFFFFF, true))
        return false;
    OpenSlot(Frame);
    // The blank takes its colour from a neighbour: its transparent colour if it has one.
    const int16_t Neighbour = Frame > 1 ? static_cast<int16_t>(Frame - 1) : static_cast<int16_t>(2);
    FrameControl Control;
    uint32_t Color = 0xFFFFFF;
    if (ValidFrame(Neighbour) && Controls[Neighbour].UseTransparentColor) {
        Color = FrameTransparentColor(Neighbour);
        Control.UseTransparentColor = true;
        Control.TransparentColorIndex = 0;
    }
    Record.LocalPaletteUsed = true;
    Record.LocalPaletteEntries = 256;
    Record.Palette[0] = static_cast<uint8_t>((Color >> 16) & 255);
    Record.Palette[1] = static_cast<uint8_t>((Color >> 8) & 255);
    Record.Palette[2] = static_cast<uint8_t>(Color & 255);
    if (Frame == 1) {
        Control.Delay = 10;
        Header.Screen.Width = static_cast<int16_t>(Width);
        Header.Screen.Height = static_cast<int16_t>(Height);
    } else {
        Control.Delay = Controls[Frame - 1].Delay;
    }
    MaskRecord(Record, Control, 0);
    Frames[Frame] = std::move(Record);
    Controls[Frame] = Control;
    return true;
}

void clsGIF::ClipFrameToScreen(int16_t Frame)
{
    if (Frame <= 1 || !ValidFrame(Frame))
        return;
    FrameRecord& Record = Frames[Frame];
    const clsDIB& Old = *Record.DIBXOR;
    const int32_t Width = Old.DIBWidth();
    const int32_t Height = Old.DIBHeight();
    if (Record.Left + Width <= Header.Screen.Width && Record.Top + Height <= Header.Screen.Height)
        return;
    const int32_t KeptWidth = std::min(Width, Header.Screen.Width - Record.Left);
    const int32_t KeptHeight = std::min(Height, Header.Screen.Height - Record.Top);
    if (KeptWidth < 1 || KeptHeight < 1 || !Old.DIBBitsPtr())
        return;
    // The kept part's indexes are copied as they stand, so colours and transparency stay exact.
    auto Cut = std::make_shared<clsDIB>();
    if (!Cut->CreateBlankDIB(KeptWidth, KeptHeight, 8, 0xFFFFFF, true))
        return;
    std::vector<uint8_t> Table;
    Old.GetPaletteFromDIB8BPP(Table);
    Cut->SetPaletteToDIB8BPP(Table);
    for (int32_t Y = 0; Y < KeptHeight; ++Y)
        std::memcpy(Cut->DIBhDC()->Row(Y), Old.DIBhDC()->Row(Y), static_cast<size_t>(KeptWidth));
    Record.DIBXOR = Cut;
    Record.DIBAND = std::make_shared<clsDIB>();
    MaskRecord(Record, Controls[Frame], static_cast<uint8_t>(Controls[Frame].TransparentColorIndex));
}
