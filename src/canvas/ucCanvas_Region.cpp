// Regions under the mouse (operations 11 and 12): the rubber box, the hits on a region that is up,
// the move and the resize by an edge, and the lifting and laying of the region's image.
//
// The region is held in picture pixels (RegionBox); the box on screen (RegionLeft ...) is derived
// from it whenever the view changes, so it stays on its pixels at any zoom and scroll. Once
// lifted, DIBRegion holds the whole image and DIBSnapshot the picture beneath; the picture shows
// the region laid at its box, so a part dragged beyond the picture is kept until the drop.
#include <QMouseEvent>
#include <QTimer>
#include <algorithm>
#include <cstdlib>
#include <utility>

#include "PictureBox.h"
#include "PixelArray32.h"
#include "ScanRegion.h"
#include "basCanvasImages.h"
#include "ucCanvas.h"

namespace {

// Where the mask is white the image is black, as an image and mask pair has it.
void ClearMasked(clsDIB& Image, clsDIB& Mask)
{
    PixelArray32 I(Image), M(Mask);
    if (!I.Valid() || !M.Valid() || I.Width() != M.Width() || I.Height() != M.Height())
        return;
    for (int Y = 0; Y < I.Height(); ++Y) {
        uint32_t* Line = I.Row(Y);
        const uint32_t* Masked = M.Row(Y);
        for (int X = 0; X < I.Width(); ++X)
            if ((Masked[X] & 0xFFFFFF) == 0xFFFFFF)
                Line[X] = 0;
    }
}

}  // namespace

int ucCanvas::DisplayExtent(int Start, int Count, bool Horizontal) const
{
    const QRect D = Layout().Disp;
    const int Size = Horizontal ? DIB.DIBWidth() : DIB.DIBHeight();
    const int Disp = Horizontal ? D.width() : D.height();
    const int Scroll = Horizontal ? ScrollX : ScrollY;
    return PictureToDisplay(Start + Count, Size, Disp, Magnify(), Scroll, FitInView()) -
           PictureToDisplay(Start, Size, Disp, Magnify(), Scroll, FitInView());
}

void ucCanvas::SyncRegionBox()
{
    if ((!RegionOn && !RegionSelecting) || !DIB.DIBBitsPtr()) {
        if (!RegionOn && !RegionSelecting)
            RegionLeft = RegionRight = RegionTop = RegionBottom = 0;
        return;
    }
    const QRect D = Layout().Disp;
    const int X = PictureToDisplay(RegionBox.x(), DIB.DIBWidth(), D.width(), Magnify(), ScrollX, FitInView());
    const int Y = PictureToDisplay(RegionBox.y(), DIB.DIBHeight(), D.height(), Magnify(), ScrollY, FitInView());
    RegionLeft = static_cast<float>(X);
    RegionTop = static_cast<float>(Y);
    RegionRight = static_cast<float>(X + DisplayExtent(RegionBox.x(), RegionBox.width(), true) - 1);
    RegionBottom = static_cast<float>(Y + DisplayExtent(RegionBox.y(), RegionBox.height(), false) - 1);
}

void ucCanvas::ReportRegionBox()
{
    emit RegionStartAndSize(RegionBox.x(), RegionBox.y(), RegionBox.width(), RegionBox.height());
}

int ucCanvas::RegionHit(QPoint Display, QPoint Image) const
{
    const int L = static_cast<int>(RegionLeft), R = static_cast<int>(RegionRight);
    const int T = static_cast<int>(RegionTop), B = static_cast<int>(RegionBottom);
    if (!RegionOn || Display.x() < L || Display.x() > R || Display.y() < T || Display.y() > B)
        return -1;
    if (RegionOval && !ScanRegion::Ellipse(0, 0, RegionBox.width(), RegionBox.height())
                           .Contains(Image.x() - RegionBox.x(), Image.y() - RegionBox.y()))
        return -2;
    if (SuspendRegionResizeByEdgeDragging)
        return 0;
    // A small box keeps its middle half for moving.
    const int BandX = std::min(RegionEdgeBand, (R - L + 1) / 4);
    const int BandY = std::min(RegionEdgeBand, (B - T + 1) / 4);
    if (Display.y() < T + BandY)
        return 1;
    if (Display.x() > R - BandX)
        return 2;
    if (Display.y() > B - BandY)
        return 3;
    if (Display.x() < L + BandX)
        return 4;
    return 0;
}

void ucCanvas::RegionHover(QPoint Display, QPoint Image)
{
    const int Hit = RegionHit(Display, Image);
    if (Hit >= 1) {
        picDisp->setCursor(Hit == 1 || Hit == 3 ? Qt::SizeVerCursor : Qt::SizeHorCursor);
        picDisp->setProperty("CursorName", QString());
        return;
    }
    const QString Name = Hit == 0 ? ((PasteFlag || PasteTextFlag) ? "PASTEDRAG" : "REGIONDRAG") : "REGION";
    picDisp->setCursor(basCanvasImages::CanvasCursor(Name));
    picDisp->setProperty("CursorName", Name);
}

void ucCanvas::RegionDown(QMouseEvent* Event, QPoint Image, QPoint Display)
{
    const bool Left = Event->button() == Qt::LeftButton;
    if (!RegionOn) {
        if (!Left)
            return;
        RegionSelecting = true;
        RegionAnchor = QPoint(std::clamp(Image.x(), 0, DIB.DIBWidth()), std::clamp(Image.y(), 0, DIB.DIBHeight()));
        RegionBox = QRect(RegionAnchor, QSize(0, 0));
        SyncRegionBox();
        picDisp->update();
        return;
    }
    const int Hit = RegionHit(Display, Image);
    if (!Left) {
        if (Hit >= 0 && PasteTextFlag)
            emit PastedTextRightClicked();
        return;
    }
    if (Hit == -1) {
        DropRegion();
        return;
    }
    if (Hit == -2)
        return;
    // Ctrl asks for a copy: a region not yet lifted leaves its place as it is; a lifted one
    // leaves a copy of itself where it stands.
    const bool Copy = Hit == 0 && (Event->modifiers() & Qt::ControlModifier);
    if (!RegionMoving)
        PrepareRegionDragging(Copy);
    else if (Copy)
        TakeSnapshot();
    if (!RegionMoving)
        return;
    RegionEdge = static_cast<int16_t>(Hit);
    RegionGrab = Image - RegionBox.topLeft();
    RegionDragging = true;
}

void ucCanvas::RegionMove(QMouseEvent* Event, QPoint Image, QPoint Display)
{
    if (RegionSelecting) {
        if (Event->buttons() & Qt::LeftButton)
            SelectTo(Image, Event->modifiers() & Qt::ShiftModifier);
        return;
    }
    if (RegionDragging) {
        if (!(Event->buttons() & Qt::LeftButton))
            return;
        if (RegionEdge != 0) {
            EdgeTo(Display);
            return;
        }
        const QPoint TopLeft = Image - RegionGrab;
        if (TopLeft == RegionBox.topLeft())
            return;
        RegionBox.moveTopLeft(TopLeft);
        UpdateRegionDragging();
        ReportRegionBox();
        return;
    }
    if (RegionOn && Event->buttons() == Qt::NoButton)
        RegionHover(Display, Image);
}

void ucCanvas::RegionUp(QMouseEvent* Event, QPoint Image, QPoint Display)
{
    if (RegionSelecting) {
        SelectTo(Image, Event->modifiers() & Qt::ShiftModifier);
        RegionSelecting = false;
        if (RegionBox.width() < 1 || RegionBox.height() < 1) {
            RegionBox = QRect();
            SyncRegionBox();
            picDisp->update();
            return;
        }
        RegionOn = true;
        RegionOval = Op == OpOvalRegion;
        RegionMoving = false;
        RegionHasHoles = false;
        RegionPlaced = QRect();
        SyncRegionBox();
        Timer1->start();
        PlaceGrips();
        picDisp->update();
        RegionHover(Display, Image);
        emit RegionMade();
        return;
    }
    if (!RegionDragging)
        return;
    RegionDragging = false;
    if (RegionEdge != 0) {
        RegionEdge = 0;
        if (RegionBox.size() != QSize(DIBRegion.DIBWidth(), DIBRegion.DIBHeight()))
            StretchRegion(RegionBox.size());
        UpdateRegionDragging();
    }
    picDisp->update();
    RegionHover(Display, Image);
}

void ucCanvas::SelectTo(QPoint Image, bool Square)
{
    const int W = DIB.DIBWidth(), H = DIB.DIBHeight();
    const QPoint A = RegionAnchor;
    int Dx = std::clamp(Image.x(), 0, W) - A.x();
    int Dy = std::clamp(Image.y(), 0, H) - A.y();
    if (Square) {
        // The square takes the larger extent, as far as the picture has room for it.
        const int RoomX = Dx < 0 ? A.x() : W - A.x();
        const int RoomY = Dy < 0 ? A.y() : H - A.y();
        const int Side = std::min({std::max(std::abs(Dx), std::abs(Dy)), RoomX, RoomY});
        Dx = Dx < 0 ? -Side : Side;
        Dy = Dy < 0 ? -Side : Side;
    }
    RegionBox = QRect(std::min(A.x(), A.x() + Dx), std::min(A.y(), A.y() + Dy), std::abs(Dx), std::abs(Dy));
    SyncRegionBox();
    ReportRegionBox();
    picDisp->update();
}

void ucCanvas::EdgeTo(QPoint Display)
{
    // The cursor stays inside the picture's area of picDisp, so an edge never leaves the picture.
    const QRect Area = ImageToDisplay(QRect(0, 0, DIB.DIBWidth(), DIB.DIBHeight()));
    if (Area.isEmpty())
        return;
    const QPoint P = DisplayToImage(QPoint(std::clamp(Display.x(), Area.left(), Area.right()),
                                           std::clamp(Display.y(), Area.top(), Area.bottom())));
    QRect Box = RegionBox;
    switch (RegionEdge) {
    case 1: Box.setTop(P.y()); break;
    case 2: Box.setRight(P.x()); break;
    case 3: Box.setBottom(P.y()); break;
    default: Box.setLeft(P.x()); break;
    }
    const bool Horizontal = RegionEdge == 2 || RegionEdge == 4;
    const int Extent = Horizontal ? DisplayExtent(Box.x(), Box.width(), true) : DisplayExtent(Box.y(), Box.height(), false);
    if (Extent <= RegionMinEdgeSize || Box == RegionBox)
        return;
    RegionBox = Box;
    SyncRegionBox();
    ReportRegionBox();
    picDisp->update();
}

bool ucCanvas::BuildRegionImage(const QRect& Box, clsDIB& Image, clsDIB& Mask, bool& Holes)
{
    const int W = Box.width(), H = Box.height();
    // Mask first at the image's size and order, so that the pair routine keeps it.
    if (!Image.CreateBlankDIB(W, H, 32, 0, true) || !Mask.CreateBlankDIB(W, H, 32, 0, true))
        return false;
    BitBlt(Image.DIBhDC(), 0, 0, W, H, DIB.DIBhDC(), Box.x(), Box.y(), SRCCOPY);
    Holes = false;
    if (RegionTransparent || (RegionTranslucent && TranslucentTransparent)) {
        Image.Create_ImageMask_Pair(Image, Mask, static_cast<int32_t>(TransparentColor & 0xFFFFFF));
        Holes = true;
    }
    if (RegionOval) {
        CutRegionOval(Mask, QRect(0, 0, W, H), 0xFFFFFF, true);
        ClearMasked(Image, Mask);
        Holes = true;
    }
    return true;
}

void ucCanvas::PrepareRegionDragging(bool Copy)
{
    if (!RegionOn || RegionMoving || !DIB.DIBBitsPtr())
        return;
    const QRect Box = RegionBox.intersected(QRect(0, 0, DIB.DIBWidth(), DIB.DIBHeight()));
    bool Holes = false;
    if (Box.isEmpty() || !BuildRegionImage(Box, DIBRegion, DIBRegionMask, Holes))
        return;
    RegionBox = Box;
    RegionHasHoles = Holes;
    RegionKeyColor = TransparentColor & 0xFFFFFF;
    if (!Copy) {
        if (RegionOval)
            CutRegionOval(DIB, Box, TransparentColor, false);
        else
            DIB.DIBhDC()->FillRect(Box.x(), Box.y(), Box.width(), Box.height(), TransparentColor);
    }
    TakeSnapshot();
    RegionMoving = true;
    RegionPlaced = QRect();
    UpdateRegionDragging();
    emit ViewChanged();
}

void ucCanvas::UpdateRegionDragging()
{
    if (!RegionOn)
        return;
    if (RegionMoving) {
        // A picture replaced beneath the region leaves nothing to lay it on.
        if (!DIBRegion.DIBBitsPtr() || DIBSnapshot.DIBWidth() != DIB.DIBWidth() ||
            DIBSnapshot.DIBHeight() != DIB.DIBHeight()) {
            EndRegion();
            return;
        }
        const QRect Old = CopyPixels(DIBSnapshot, DIB, RegionPlaced);
        PlaceRegion(DIB, RegionBox.topLeft());
        RegionPlaced = QRect(RegionBox.topLeft(), QSize(DIBRegion.DIBWidth(), DIBRegion.DIBHeight()));
        RepaintImageBox(Old.united(RegionPlaced.intersected(QRect(0, 0, DIB.DIBWidth(), DIB.DIBHeight()))));
    }
    SyncRegionBox();
    picDisp->update();
}

void ucCanvas::PlaceRegion(clsDIB& Target, QPoint At)
{
    const int W = DIBRegion.DIBWidth(), H = DIBRegion.DIBHeight();
    if (RegionTranslucent) {
        UpdateRegionDragging_Process_Translucent(Target, At);
    } else if (RegionTransparent || RegionHasHoles) {
        // (picture AND mask) XOR image: the mask's black takes the image, its white keeps the
        // picture, where the image is black.
        BitBlt(Target.DIBhDC(), At.x(), At.y(), W, H, DIBRegionMask.DIBhDC(), 0, 0, SRCAND);
        BitBlt(Target.DIBhDC(), At.x(), At.y(), W, H, DIBRegion.DIBhDC(), 0, 0, SRCINVERT);
    } else {
        BitBlt(Target.DIBhDC(), At.x(), At.y(), W, H, DIBRegion.DIBhDC(), 0, 0, SRCCOPY);
    }
}

void ucCanvas::UpdateRegionDragging_Process_Translucent(clsDIB& Target, QPoint At)
{
    const int W = DIBRegion.DIBWidth(), H = DIBRegion.DIBHeight();
    clsDIB Under;
    if (!Target.DIBBitsPtr() || !Under.CreateBlankDIB(W, H, 32, 0, true))
        return;
    BitBlt(Under.DIBhDC(), 0, 0, W, H, Target.DIBhDC(), At.x(), At.y(), SRCCOPY);
    const int32_t Percent = std::clamp<int32_t>(TranslucentPercent, 0, 100);
    // Blended on a surface of its own, whose progress nobody hears: a drag is not a long job.
    if (TranslucentTransparent || RegionHasHoles)
        Under.BlendIn_Masked(Under, DIBRegion, DIBRegionMask, Percent);
    else
        Under.BlendIn(Under, DIBRegion, Percent, -1);
    BitBlt(Target.DIBhDC(), At.x(), At.y(), W, H, Under.DIBhDC(), 0, 0, SRCCOPY);
    TranslucencyPending = true;
}

void ucCanvas::StretchRegion(QSize Size)
{
    const int W = Size.width(), H = Size.height();
    clsDIB Image, Mask;
    if (Size.isEmpty() || !Image.CreateBlankDIB(W, H, 32, 0, true) || !Mask.CreateBlankDIB(W, H, 32, 0, true))
        return;
    // Nearest pixel for both, so that the image stays black wherever the mask is white.
    for (auto [To, From] : {std::pair{&Image, &DIBRegion}, std::pair{&Mask, &DIBRegionMask}}) {
        SetStretchBltMode(To->DIBhDC(), COLORONCOLOR);
        StretchBlt(To->DIBhDC(), 0, 0, W, H, From->DIBhDC(), 0, 0, From->DIBWidth(), From->DIBHeight(), SRCCOPY);
        if (!From->CreateBlankDIB(W, H, 32, 0, true))
            return;
        BitBlt(From->DIBhDC(), 0, 0, W, H, To->DIBhDC(), 0, 0, SRCCOPY);
    }
}

void ucCanvas::ClearAreasOutsideImageShape()
{
    ClearMasked(DIBRegion, DIBRegionMask);
}

void ucCanvas::CutRegionOval(clsDIB& Target, const QRect& Box, uint32_t Color, bool Outside)
{
    if (!Target.DIBBitsPtr() || Box.isEmpty())
        return;
    const int Right = Box.x() + Box.width(), Bottom = Box.y() + Box.height();
    ScanRegion Shape = ScanRegion::Ellipse(Box.x(), Box.y(), Right, Bottom);
    if (Outside) {
        ScanRegion Rest = ScanRegion::Rect(Box.x(), Box.y(), Right, Bottom);
        Rest.Subtract(Shape);
        Shape = Rest;
    }
    Shape.Fill(Target, Color);
}
