// The host's handles on the region: paste, the paste flags, drop, cut, copy and crop, and the
// region's box in picture pixels. The document reads the clipboard and gives the messages; the
// canvas lays the image and keeps it movable until it is dropped.
#include <QTimer>
#include <algorithm>

#include "PictureBox.h"
#include "PixelArray32.h"
#include "ucCanvas.h"

bool ucCanvas::RegionMoveReady() const
{
    return (Op == OpRegion || Op == OpOvalRegion) && DIB.DIBBitsPtr() && RegionOn && RegionBox.width() >= 1 &&
           RegionBox.height() >= 1;
}

void ucCanvas::setRegionMoveReady(bool Value)
{
    if (!Value)
        EndRegion();
}

QRect ucCanvas::RegionImageBox() const
{
    return RegionOn ? RegionBox : QRect();
}

void ucCanvas::GetRegionData(int& Left, int& Right, int& Top, int& Bottom) const
{
    const QRect Box = RegionImageBox();
    Left = Box.x();
    Top = Box.y();
    Right = Box.x() + Box.width() - (Box.isEmpty() ? 0 : 1);
    Bottom = Box.y() + Box.height() - (Box.isEmpty() ? 0 : 1);
}

bool ucCanvas::EndRegion()
{
    const bool Lifted = RegionOn && RegionMoving;
    Timer1->stop();
    RegionOn = RegionSelecting = RegionMoving = RegionDragging = RegionOval = RegionHasHoles = false;
    RegionEdge = 0;
    RegionBox = RegionPlaced = QRect();
    RegionLeft = RegionRight = RegionTop = RegionBottom = 0;
    PasteFlag = PasteTextFlag = false;
    TranslucencyPending = false;
    if (PasteSetFlags) {
        RegionTransparent = FlagsBeforePaste.Transparent;
        RegionTranslucent = FlagsBeforePaste.Translucent;
        TranslucentTransparent = FlagsBeforePaste.TranslucentTransparent;
        TranslucentPercent = FlagsBeforePaste.Percent;
        PasteSetFlags = false;
    }
    DIBRegion.ClearUp();
    DIBRegionMask.ClearUp();
    DIBSnapshot.ClearUp();
    UpdateCursor();
    PlaceGrips();
    picDisp->update();
    return Lifted;
}

void ucCanvas::DropRegion()
{
    if (!RegionOn && !RegionSelecting)
        return;
    const bool WasOn = RegionOn;
    // The picture already shows the region where it stands: ending it is the merge.
    const bool Lifted = EndRegion();
    if (!WasOn)
        return;
    emit RegionDropped();
    if (Lifted)
        emit PictureChanged();
}

void ucCanvas::DiscardRegion()
{
    if (!RegionOn && !RegionSelecting)
        return;
    const bool WasOn = RegionOn;
    const bool Pasted = PasteFlag || PasteTextFlag;
    if (RegionMoving)
        RepaintImageBox(CopyPixels(DIBSnapshot, DIB, RegionPlaced));
    const bool Lifted = EndRegion();
    if (!WasOn)
        return;
    emit RegionDropped();
    if (Lifted && !Pasted)
        emit PictureChanged();
}

void ucCanvas::setPasteOn(bool Value)
{
    SetPasteFlag(PasteFlag, Value);
}

void ucCanvas::setPasteOnText(bool Value)
{
    SetPasteFlag(PasteTextFlag, Value);
}

void ucCanvas::SetPasteFlag(bool& Flag, bool Value)
{
    if (Value || !RegionOn) {
        Flag = Value;
        UpdateCursor();
        return;
    }
    EndRegion();
    // Through the scroll operation and back, so the tool starts afresh.
    const int32_t Current = Op;
    setCanvasOp(OpScroll);
    setCanvasOp(Current);
    emit RegionDropped();
    emit PictureChanged();
}

bool ucCanvas::BeginPaste(clsDIB& Image, int Kind, int16_t Percent)
{
    if (!DIB.DIBBitsPtr() || !Image.DIBBitsPtr() || Kind < 0 || Kind > 3)
        return false;
    const int W = Image.DIBWidth(), H = Image.DIBHeight();
    // Taken before anything is dropped, since the image may be one of the canvas's own surfaces.
    clsDIB Incoming;
    if (!Incoming.CreateBlankDIB(W, H, 32, 0, true))
        return false;
    BitBlt(Incoming.DIBhDC(), 0, 0, W, H, Image.DIBhDC(), 0, 0, SRCCOPY);
    DropRegion();
    setCanvasOp(OpRegion);
    if (!DIBRegion.CreateBlankDIB(W, H, 32, 0, true) || !DIBRegionMask.CreateBlankDIB(W, H, 32, 0, true))
        return false;
    BitBlt(DIBRegion.DIBhDC(), 0, 0, W, H, Incoming.DIBhDC(), 0, 0, SRCCOPY);
    FlagsBeforePaste = {RegionTransparent, RegionTranslucent, TranslucentTransparent, TranslucentPercent};
    PasteSetFlags = true;
    RegionTransparent = Kind == 1;
    RegionTranslucent = Kind >= 2;
    TranslucentTransparent = Kind == 2;
    TranslucentPercent = std::clamp<int16_t>(Percent, 0, 100);
    RegionHasHoles = Kind == 1 || Kind == 2;
    RegionKeyColor = TransparentColor & 0xFFFFFF;
    if (RegionHasHoles) {
        RegionKeyColor = DIBRegion.DIBhDC()->GetPixel(0, 0) & 0xFFFFFF;
        DIBRegion.Create_ImageMask_Pair(DIBRegion, DIBRegionMask, static_cast<int32_t>(RegionKeyColor));
    }
    int X = 0, Y = 0;
    GetVisibleStartInfo(X, Y);
    RegionBox = QRect(X, Y, W, H);
    RegionPlaced = QRect();
    RegionOval = false;
    RegionEdge = 0;
    RegionDragging = false;
    // Lifted already, over a picture that is not cut.
    RegionOn = true;
    RegionMoving = true;
    PasteFlag = true;
    TakeSnapshot();
    UpdateRegionDragging();
    Timer1->start();
    UpdateCursor();
    PlaceGrips();
    emit RegionMade();
    return true;
}

void ucCanvas::CutRegion()
{
    if (!RegionOn || !DIB.DIBBitsPtr())
        return;
    const QRect Picture(0, 0, DIB.DIBWidth(), DIB.DIBHeight());
    const QRect Box = RegionBox;
    QRect Touched = Box.intersected(Picture);
    // A lifted region leaves first, then its place takes the background.
    if (RegionMoving)
        Touched = Touched.united(CopyPixels(DIBSnapshot, DIB, RegionPlaced));
    if (RegionOval)
        CutRegionOval(DIB, Box, TransparentColor, false);
    else
        DIB.DIBhDC()->FillRect(Box.x(), Box.y(), Box.width(), Box.height(), TransparentColor);
    EndRegion();
    RepaintImageBox(Touched);
    emit RegionDropped();
    emit PictureChanged();
}

bool ucCanvas::CopyRegionTo(clsDIB& Out)
{
    if (!RegionOn || !DIB.DIBBitsPtr())
        return false;
    clsDIB Built, BuiltMask;
    clsDIB* Image = &DIBRegion;
    clsDIB* Mask = &DIBRegionMask;
    bool Holes = RegionHasHoles;
    uint32_t Key = RegionKeyColor;
    if (!RegionMoving) {
        const QRect Box = RegionBox.intersected(QRect(0, 0, DIB.DIBWidth(), DIB.DIBHeight()));
        if (Box.isEmpty() || !BuildRegionImage(Box, Built, BuiltMask, Holes))
            return false;
        Image = &Built;
        Mask = &BuiltMask;
        Key = TransparentColor & 0xFFFFFF;
    }
    if (&Out == Image || &Out == Mask || &Out == &DIB)
        return false;
    const int W = Image->DIBWidth(), H = Image->DIBHeight();
    if (!Out.CreateBlankDIB(W, H, 32, 0, true))
        return false;
    BitBlt(Out.DIBhDC(), 0, 0, W, H, Image->DIBhDC(), 0, 0, SRCCOPY);
    if (!Holes)
        return true;
    // The masked-out pixels, black in the pair, go back to the key colour.
    PixelArray32 O(Out), M(*Mask);
    if (!O.Valid() || !M.Valid())
        return true;
    const uint32_t KeyWord = PixelArray32::ToWord(Key);
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X)
            if ((M.At(X, Y) & 0xFFFFFF) == 0xFFFFFF)
                O.At(X, Y) = KeyWord;
    return true;
}

bool ucCanvas::CropToRegion()
{
    if (!RegionOn || !DIB.DIBBitsPtr())
        return false;
    const QRect Box = RegionBox;
    if (Box.width() < 10 || Box.height() < 10)
        return false;
    clsDIB Cropped;
    if (!Cropped.CreateBlankDIB(Box.width(), Box.height(), 32, TransparentColor & 0xFFFFFF, true))
        return false;
    // A lifted region is laid again over the picture beneath, so a part beyond the old picture
    // comes along.
    const bool Lifted = RegionMoving && DIBSnapshot.DIBBitsPtr();
    BitBlt(Cropped.DIBhDC(), 0, 0, Box.width(), Box.height(), (Lifted ? DIBSnapshot : DIB).DIBhDC(), Box.x(), Box.y(),
           SRCCOPY);
    if (Lifted)
        PlaceRegion(Cropped, QPoint(0, 0));
    EndRegion();
    SetPicture(Cropped);
    SetScrollValues(0, 0);
    CanvasResize();
    emit RegionDropped();
    emit PictureChanged();
    return true;
}

void ucCanvas::AdjustRegionDispPosition_After_FormMax(int Dx, int Dy)
{
    if (!RegionOn || RegionDragging)
        return;
    const QPoint Corner(static_cast<int>(RegionLeft), static_cast<int>(RegionTop));
    RegionBox.translate(DisplayToImage(Corner + QPoint(Dx, Dy)) - DisplayToImage(Corner));
    UpdateRegionDragging();
}
