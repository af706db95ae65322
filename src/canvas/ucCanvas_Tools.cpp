// Mouse routing of the canvas, the brush-like tools (paint, erase, spray), the one-click tools
// (fill, replace colour, stamp, colour picker) and the resize of the picture by its edge grips.
#include <QApplication>
#include <QFrame>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <algorithm>
#include <cmath>

#include "PictureBox.h"
#include "PixelArray32.h"
#include "basBrush.h"
#include "basMath.h"
#include "basFill.h"
#include "ucCanvas.h"

void ucCanvas::PictureMouseDown(QMouseEvent* Event, QPoint Display)
{
    if (!DIB.DIBBitsPtr() || GripDragged)
        return;
    const int32_t Effective = ScreenMode == 0 ? static_cast<int32_t>(OpScroll) : Op;
    if (Event->button() == Qt::RightButton) {
        // The right button counts in polygon and Bezier, with a region, with the glass, for the
        // picker's second colour and for the scroll mode's report.
        const bool Counts = Effective == OpPolygon || Effective == OpBezier || RegionOn || Effective == OpGlass ||
                            Effective == OpColorPicker || (Effective == OpScroll && ReportRightClick);
        if (!Counts)
            return;
    } else if (Event->button() != Qt::LeftButton) {
        return;
    }
    emit OperationStarting();
    EventDone = false;
    const QPoint Image = DisplayToImage(Display);
    switch (Effective) {
    case OpScroll: CanvasView::PictureMouseDown(Event, Display); break;
    case OpGlass: MoveGlass(Image); break;
    default: ToolDown(Event, Image, Display); break;
    }
}

void ucCanvas::PictureMouseMove(QMouseEvent* Event, QPoint Display)
{
    if (!DIB.DIBBitsPtr() || GripDragged)
        return;
    const int32_t Effective = ScreenMode == 0 ? static_cast<int32_t>(OpScroll) : Op;
    CanvasView::PictureMouseMove(Event, Display);
    const QPoint Image = DisplayToImage(Display);
    if (Effective == OpGlass)
        MoveGlass(Image);
    else if (Effective != OpScroll)
        ToolMove(Event, Image, Display);
}

void ucCanvas::PictureMouseUp(QMouseEvent* Event, QPoint Display)
{
    if (!DIB.DIBBitsPtr() || GripDragged)
        return;
    const int32_t Effective = ScreenMode == 0 ? static_cast<int32_t>(OpScroll) : Op;
    if (Effective == OpScroll || Effective == OpGlass) {
        CanvasView::PictureMouseUp(Event, Display);
        return;
    }
    ToolUp(Event, DisplayToImage(Display), Display);
}

void ucCanvas::ToolDown(QMouseEvent* Event, QPoint Image, QPoint Display)
{
    switch (Op) {
    case OpPaint:
    case OpErase:
    case OpSpray:
        if (Event->button() != Qt::LeftButton)
            return;
        // A custom brush that is not loaded does nothing at all.
        if (Op == OpPaint && BrushStyle == 8 && !PrepareCustomBrush())
            return;
        StrokeActive = true;
        ColorR = ::ColorR(ColorToUse);
        ColorG = ::ColorG(ColorToUse);
        ColorB = ::ColorB(ColorToUse);
        StrokeStart = Image;
        LastDab = Image;
        Dab(Image);
        break;
    case OpColorPicker: {
        const uint32_t Color = DIB_XY_Color(Image.x(), Image.y());
        if (Color != CLR_INVALID)
            emit ColorPicked(Color & 0xFFFFFF, Event->button() == Qt::RightButton);
        break;
    }
    case OpLine:
    case OpRectangle:
    case OpFilledRectangle:
    case OpOval:
    case OpFilledOval: ShapeDown(Event, Image); break;
    case OpArc: ArcDown(Image); break;
    case OpBezier: BezierDown(Event, Image, Display); break;
    case OpPolygon: PolygonDown(Event, Image); break;
    case OpFill:
    case OpReplaceColor:
    case OpStamp:
        if (Event->button() == Qt::LeftButton)
            StrokeActive = true;
        break;
    case OpRegion:
    case OpOvalRegion: RegionDown(Event, Image, Display); break;
    default: break;
    }
}

void ucCanvas::ToolMove(QMouseEvent* Event, QPoint Image, QPoint Display)
{
    switch (Op) {
    case OpPaint:
    case OpErase:
    case OpSpray: {
        if (!StrokeActive || !(Event->buttons() & Qt::LeftButton))
            return;
        const QPoint At = Constrained(Image, Event->modifiers());
        if (At == LastDab)
            return;
        if (Op == OpPaint && BrushStyle == 8 &&
            !basBrush::CustomDabDue(LastDab.x(), LastDab.y(), At.x(), At.y(), StrokeBrush.DIBWidth()))
            return;
        Dab(At);
        break;
    }
    case OpLine:
    case OpRectangle:
    case OpFilledRectangle:
    case OpOval:
    case OpFilledOval: ShapeMove(Event, Image); break;
    case OpArc: ArcMove(Event, Image); break;
    case OpBezier: BezierMove(Image); break;
    case OpPolygon:
        if (!PolygonPoints.empty()) {
            RubberKind = 1;
            RubberA = PolygonPoints.back();
            RubberB = Image;
            picDisp->update();
        }
        break;
    case OpRegion:
    case OpOvalRegion: RegionMove(Event, Image, Display); break;
    default: break;
    }
}

void ucCanvas::ToolUp(QMouseEvent* Event, QPoint Image, QPoint Display)
{
    switch (Op) {
    case OpPaint:
    case OpErase:
    case OpSpray:
        if (!StrokeActive)
            return;
        StrokeActive = false;
        emit PictureChanged();
        break;
    case OpFill: {
        if (!StrokeActive)
            return;
        StrokeActive = false;
        const uint32_t Flooded = DIB_XY_Color(Image.x(), Image.y());
        if (Flooded == CLR_INVALID)
            return;
        basFill::FillBrush Brush;
        if (!basFill::MakeFillBrush(FillPattern, ColorToUse, Flooded & 0xFFFFFF, &DIBPattern, Brush))
            return;
        Changed(basFill::ExtFloodFill(DIB, Image.x(), Image.y(), Flooded & 0xFFFFFF, Brush));
        break;
    }
    case OpReplaceColor: {
        if (!StrokeActive)
            return;
        StrokeActive = false;
        const uint32_t Old = DIB_XY_Color(Image.x(), Image.y());
        if (Old == CLR_INVALID)
            return;
        Changed(basFill::ReplaceColor(DIB, Old & 0xFFFFFF, ColorToUse));
        break;
    }
    case OpStamp:
        if (!StrokeActive)
            return;
        StrokeActive = false;
        if (!DIBStamp.DIBBitsPtr() || !DIBStampMask.DIBBitsPtr())
            return;
        Changed(basBrush::CustomBrushDab(DIB, DIBStamp, DIBStampMask, Image.x(), Image.y()));
        break;
    case OpLine:
    case OpRectangle:
    case OpFilledRectangle:
    case OpOval:
    case OpFilledOval: ShapeUp(Event, Image); break;
    case OpArc: ArcUp(Event, Image); break;
    case OpBezier: BezierUp(Image); break;
    case OpRegion:
    case OpOvalRegion: RegionUp(Event, Image, Display); break;
    default: break;
    }
}

bool ucCanvas::PrepareCustomBrush()
{
    const int W = DIBCustomBrush.DIBWidth();
    const int H = DIBCustomBrush.DIBHeight();
    if (!DIBCustomBrush.DIBBitsPtr() || !DIBCustomBrushMask.DIBBitsPtr() || DIBCustomBrushMask.DIBWidth() != W ||
        DIBCustomBrushMask.DIBHeight() != H)
        return false;
    if (!StrokeBrush.CreateBlankDIB(W, H, 32, 0, true) || !StrokeMask.CreateBlankDIB(W, H, 32, 0, true))
        return false;
    BitBlt(StrokeBrush.DIBhDC(), 0, 0, W, H, DIBCustomBrush.DIBhDC(), 0, 0, SRCCOPY);
    BitBlt(StrokeMask.DIBhDC(), 0, 0, W, H, DIBCustomBrushMask.DIBhDC(), 0, 0, SRCCOPY);
    if (CustomBrushShape == 0) {
        // The oval cuts the brush; the loaded mask still keeps its own transparent parts.
        clsDIB Oval;
        if (basBrush::MakeCustomBrushMask(StrokeBrush, Oval, 0))
            BitBlt(StrokeMask.DIBhDC(), 0, 0, W, H, Oval.DIBhDC(), 0, 0, SRCPAINT);
    }
    return true;
}

QPoint ucCanvas::Constrained(QPoint Image, Qt::KeyboardModifiers Modifiers) const
{
    // Shift keeps the stroke straight vertically, Ctrl straight horizontally.
    if (Modifiers & Qt::ShiftModifier)
        return QPoint(StrokeStart.x(), Image.y());
    if (Modifiers & Qt::ControlModifier)
        return QPoint(Image.x(), StrokeStart.y());
    return Image;
}

void ucCanvas::Dab(QPoint At)
{
    QRect Box;
    if (Op == OpErase) {
        Box = basBrush::BoxDab(DIB, At.x(), At.y(), BrushSize, TransparentColor);
    } else if (Op == OpSpray) {
        Box = basBrush::SprayDab(DIB, At.x(), At.y(), BrushSize, SprayDensity, SprayTranslucencyPercent, ColorToUse);
    } else if (BrushStyle == 0) {
        Box = basBrush::BoxDab(DIB, At.x(), At.y(), BrushSize, ColorToUse);
    } else if (BrushStyle == 8) {
        Box = basBrush::CustomBrushDab(DIB, StrokeBrush, StrokeMask, At.x(), At.y());
    } else {
        Box = basBrush::PaintBrushDab(DIB, At.x(), At.y(), BrushSize, PaintBrushTranslucencyPercent, BrushStyle,
                                      ColorToUse, SprayDensity);
    }
    LastDab = At;
    RepaintImageBox(Box);
}

void ucCanvas::Changed(const QRect& ImageBox)
{
    RepaintImageBox(ImageBox);
    emit PictureChanged();
}

void ucCanvas::TakeSnapshot()
{
    const int W = DIB.DIBWidth();
    const int H = DIB.DIBHeight();
    if (DIBSnapshot.CreateBlankDIB(W, H, 32, 0xFFFFFF, true))
        BitBlt(DIBSnapshot.DIBhDC(), 0, 0, W, H, DIB.DIBhDC(), 0, 0, SRCCOPY);
}

void ucCanvas::RestoreSnapshot()
{
    RestoreSnapshotBox(QRect(0, 0, DIB.DIBWidth(), DIB.DIBHeight()));
}

void ucCanvas::RestoreSnapshotBox(const QRect& ImageBox)
{
    RepaintImageBox(CopyPixels(DIBSnapshot, DIB, ImageBox));
}

QRect ucCanvas::CopyPixels(clsDIB& From, clsDIB& To, const QRect& ImageBox)
{
    PixelArray32 Source(From), Target(To);
    const QRect Box = ImageBox.intersected(QRect(0, 0, Target.Width(), Target.Height()));
    if (!Source.Valid() || !Target.Valid() || Box.isEmpty() || Source.Width() != Target.Width() ||
        Source.Height() != Target.Height())
        return QRect();
    for (int Y = Box.top(); Y <= Box.bottom(); ++Y)
        std::copy(Source.Row(Y) + Box.left(), Source.Row(Y) + Box.right() + 1, Target.Row(Y) + Box.left());
    return Box;
}

void ucCanvas::keyPressEvent(QKeyEvent* Event)
{
    PictureKeyPress(Event);
}

void ucCanvas::PictureKeyPress(QKeyEvent* Event)
{
    if (Event->key() != Qt::Key_Escape)
        return;
    // Escape takes back whatever the mouse has started and not finished.
    if (BezierOn || BezierSpreading)
        BezierAbort();
    if (!PolygonPoints.empty())
        PolygonAbort();
    if (ArcStage > 0) {
        RestoreSnapshotBox(RubberShown);
        ArcStage = 0;
        DIBSnapshot.ClearUp();
    }
    if (RubberKind != 0 && (Op == OpLine || (Op >= OpRectangle && Op <= OpFilledOval)))
        StrokeActive = false;
    if (RegionSelecting) {
        RegionSelecting = false;
        RegionBox = QRect();
        SyncRegionBox();
    }
    RubberKind = 0;
    picDisp->update();
}

bool ucCanvas::eventFilter(QObject* Watched, QEvent* Event)
{
    for (QLabel* Grip : {picDrag, picDragVertical, picDragHorizontal})
        if (Watched == Grip)
            return GripEvent(Grip, Event);
    return CanvasView::eventFilter(Watched, Event);
}

bool ucCanvas::GripEvent(QLabel* Grip, QEvent* Event)
{
    const qreal Dpr = devicePixelRatioF();
    auto NewSize = [&](QMouseEvent* M) {
        const QPointF Delta = (M->globalPosition() - QPointF(GripStart)) * Dpr;
        int W = GripSize.width(), H = GripSize.height();
        if (Grip != picDragVertical)
            W += static_cast<int>(std::lround(Delta.x()));
        if (Grip != picDragHorizontal)
            H += static_cast<int>(std::lround(Delta.y()));
        return QSize(std::clamp(W, 1, 10000), std::clamp(H, 1, 10000));
    };
    switch (Event->type()) {
    case QEvent::MouseButtonPress: {
        auto* M = static_cast<QMouseEvent*>(Event);
        if (M->button() != Qt::LeftButton || !DIB.DIBBitsPtr())
            return true;
        GripDragged = Grip;
        GripStart = M->globalPosition().toPoint();
        GripSize = QSize(DIB.DIBWidth(), DIB.DIBHeight());
        shpDrag->setGeometry(picDisp->geometry());
        shpDrag->show();
        shpDrag->raise();
        return true;
    }
    case QEvent::MouseMove: {
        if (GripDragged != Grip)
            return true;
        const QSize Size = NewSize(static_cast<QMouseEvent*>(Event));
        shpDrag->setGeometry(QRect(picDisp->pos(), QSize(static_cast<int>(std::lround(Size.width() / Dpr)),
                                                          static_cast<int>(std::lround(Size.height() / Dpr)))));
        emit CanvasEdgeDragging(Size.width(), Size.height());
        return true;
    }
    case QEvent::MouseButtonRelease: {
        if (GripDragged != Grip)
            return true;
        const QSize Size = NewSize(static_cast<QMouseEvent*>(Event));
        GripDragged = nullptr;
        shpDrag->hide();
        if (Size != GripSize) {
            // The new picture is white, with the old one at its top left.
            clsDIB Resized;
            if (Resized.CreateBlankDIB(Size.width(), Size.height(), 32, 0xFFFFFF, true)) {
                BitBlt(Resized.DIBhDC(), 0, 0, GripSize.width(), GripSize.height(), DIB.DIBhDC(), 0, 0, SRCCOPY);
                SetPicture(Resized);
                CanvasResize();
                emit PictureChanged();
            }
        }
        PlaceGrips();
        emit CanvasEdgeDragEnded();
        return true;
    }
    default: return false;
    }
}
