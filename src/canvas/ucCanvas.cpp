#include "ucCanvas.h"

#include <QApplication>
#include <QFrame>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QTimer>
#include <QtMath>

#include "PictureBox.h"
#include "basCanvasImages.h"
#include "basFill.h"
#include "basShape.h"

namespace {

constexpr int GripSide = 6;
constexpr int MaxSide = 10000;
constexpr long long MaxPixels = 15000000;

QLabel* MakeLabel(QWidget* Parent, const QString& Name)
{
    auto* Label = new QLabel(Parent);
    Label->setObjectName(Name);
    Label->hide();
    return Label;
}

QPixmap PatternPixmap(int Index)
{
    // Shown in black on white, as the fill rewrites it: white to the flooded colour, other to the colour.
    basFill::FillBrush Brush;
    basFill::MakeFillBrush(Index + 1, 0x000000, 0xFFFFFF, nullptr, Brush);
    QImage Image(Brush.TileWidth, Brush.TileHeight, QImage::Format_RGB32);
    for (int Y = 0; Y < Brush.TileHeight; ++Y)
        for (int X = 0; X < Brush.TileWidth; ++X)
            Image.setPixel(X, Y, Brush.Tile[static_cast<size_t>(Y) * Brush.TileWidth + X] | 0xFF000000u);
    return QPixmap::fromImage(Image);
}

}  // namespace

ucCanvas::ucCanvas(QWidget* Parent) : CanvasView(Parent)
{
    // Children in the control's order.
    picDragVertical = MakeLabel(this, "picDragVertical");
    picDragHorizontal = MakeLabel(this, "picDragHorizontal");
    picDrag = MakeLabel(this, "picDrag");
    const std::pair<QLabel*, Qt::CursorShape> Grips[] = {
        {picDragVertical, Qt::SizeVerCursor}, {picDragHorizontal, Qt::SizeHorCursor}, {picDrag, Qt::SizeFDiagCursor}};
    for (const auto& [Grip, Shape] : Grips) {
        Grip->setPixmap(basCanvasImages::GripPixmap());
        Grip->setFixedSize(GripSide, GripSide);
        Grip->setScaledContents(true);
        Grip->setCursor(Shape);
        Grip->installEventFilter(this);
    }
    Timer1 = new QTimer(this);
    Timer1->setObjectName("Timer1");
    Timer1->setInterval(120);
    connect(Timer1, &QTimer::timeout, this, &ucCanvas::OnTimer);
    picTemp->raise();
    picDisp->raise();
    for (int I = 0; I < 4; ++I) {
        imgNode[I] = MakeLabel(picDisp, QStringLiteral("imgNode_%1").arg(I));
        imgNode[I]->setPixmap(basCanvasImages::NodePixmap());
        imgNode[I]->setFixedSize(basCanvasImages::NodePixmap().size() / basCanvasImages::NodePixmap().devicePixelRatio());
        imgNode[I]->setAttribute(Qt::WA_TransparentForMouseEvents);
    }
    picGlass = MakeLabel(this, "picGlass");
    picGlass->setPixmap(QPixmap::fromImage(basCanvasImages::GlassImage()));
    shpDrag = new QFrame(this);
    shpDrag->setObjectName("shpDrag");
    shpDrag->setFrameShape(QFrame::Box);
    shpDrag->setStyleSheet("QFrame#shpDrag { border: 1px dashed palette(text); background: transparent; }");
    shpDrag->setAttribute(Qt::WA_TransparentForMouseEvents);
    shpDrag->hide();
    for (int I = 0; I < 2; ++I) {
        imgPattern[I] = MakeLabel(this, QStringLiteral("imgPattern_%1").arg(I));
        imgPattern[I]->setPixmap(PatternPixmap(I));
    }
    DIB.Progress = [this](int32_t Percent) { emit DIBProgress(Percent); };
    DIB.ProgressEnd = [this] { emit DIBProgressEnd(); };
    UpdateCursor();
}

ucCanvas::~ucCanvas()
{
    DIB.Progress = nullptr;
    DIB.ProgressEnd = nullptr;
}

void ucCanvas::setCanvasScreenMode(int32_t Value)
{
    ScreenMode = Value;
    UpdateDisplay();
    UpdateCursor();
}

void ucCanvas::setCanvasOp(int32_t Value)
{
    if (Value == Op && Value != OpScroll)
        return;
    // Leaving the region tools merges the region where it stands.
    if (RegionOn || RegionSelecting)
        DropRegion();
    if (Op == OpGlass && Value != OpGlass)
        GlassOnOff(false);
    if (Op == OpBezier)
        BezierAbort();
    if (Op == OpPolygon)
        PolygonAbort();
    // A rubber band or an unfinished arc of the old tool goes away with it.
    RubberKind = 0;
    ArcStage = 0;
    StrokeActive = false;
    picDisp->update();
    Op = Value;
    UpdateCursor();
    if (Op == OpGlass && DIB.DIBBitsPtr() && 0.2 * GlassWidth() <= DIB.DIBWidth() &&
        0.2 * GlassHeight() <= DIB.DIBHeight())
        GlassOnOff(true);
    PlaceGrips();
}

void ucCanvas::setSuspendCanvasResizeByEdgeDragging(bool Value)
{
    SuspendEdgeDrag = Value;
    PlaceGrips();
}

void ucCanvas::setUseConvexGlass(bool Value)
{
    if (Value == ConvexGlass)
        return;
    ConvexGlass = Value;
    picGlass->setPixmap(QPixmap::fromImage(basCanvasImages::GlassImage(ConvexGlass)));
    if (GlassOn) {
        const QPoint Centre = GlassPos + QPoint(GlassWidth() / 2, GlassHeight() / 2);
        GlassOnOff(false);
        GlassOnOff(true);
        MoveGlass(Centre);
    }
}

void ucCanvas::setMagnifyGlassFactor(int16_t Value)
{
    GlassFactor = std::max<int16_t>(1, Value);
    if (GlassOn)
        MoveGlass(GlassPos + QPoint(GlassWidth() / 2, GlassHeight() / 2));
}

int ucCanvas::GlassWidth() const
{
    return basCanvasImages::GlassWidth;
}

int ucCanvas::GlassHeight() const
{
    return basCanvasImages::GlassHeight;
}

QString ucCanvas::GlassRefusalMessage() const
{
    if (Magnify() != 1 || FitInView())
        return QStringLiteral("Magnifying glass is available only when image is not magnified/magnifiable.");
    if (DIB.DIBWidth() < GlassWidth() || DIB.DIBHeight() < GlassHeight())
        return QStringLiteral("Width and/or height of current image is smaller than magnifying glass,\n"
                              "please use Zoom In to enlarge image instead.");
    return QString();
}

QString ucCanvas::MagnifyRefusalMessage(int Width, int Height, int Factor)
{
    const long long W = static_cast<long long>(Width) * Factor;
    const long long H = static_cast<long long>(Height) * Factor;
    if (W > MaxSide || H > MaxSide)
        return QStringLiteral("Will result in W or H exceeding the max %1").arg(MaxSide);
    if (W * H > MaxPixels)
        return QStringLiteral("Will result in W x H exceeding the max set (%1 pixels).").arg(MaxPixels);
    return QString();
}

void ucCanvas::UpdateDisplay()
{
    CanvasView::UpdateDisplay();
}

void ucCanvas::AfterDisplayUpdate()
{
    SyncRegionBox();
    PlaceGrips();
    updateBezierNodePositions();
}

void ucCanvas::AfterScroll(bool ReportNodes)
{
    if (ReportNodes)
        updateBezierNodePositions();
    SyncRegionBox();
    if (RegionOn || Op == OpGlass)
        picDisp->update();
}

bool ucCanvas::GripsShowing() const
{
    return !picDrag->isHidden();
}

void ucCanvas::HideGrips()
{
    picDrag->hide();
    picDragVertical->hide();
    picDragHorizontal->hide();
}

void ucCanvas::PlaceGrips()
{
    if (GripDragged)
        return;
    HideGrips();
    const CanvasLayout& L = Layout();
    if (!DIB.DIBBitsPtr() || SuspendEdgeDrag || FitInView() || L.HBar || L.VBar || Op != OpScroll ||
        ScreenMode == 0 || Magnify() != 1 || RegionOn || DIB.DIBWidth() <= 5 || DIB.DIBHeight() <= 5)
        return;
    const QRect D = picDisp->geometry();
    picDragHorizontal->move(D.right() + 1, D.top() + D.height() / 2 - GripSide / 2);
    picDragVertical->move(D.left() + D.width() / 2 - GripSide / 2, D.bottom() + 1);
    picDrag->move(D.right() + 1, D.bottom() + 1);
    for (QLabel* Grip : {picDrag, picDragVertical, picDragHorizontal}) {
        Grip->show();
        Grip->raise();
    }
}

void ucCanvas::UpdateCursorOfView()
{
    UpdateCursor();
}

bool ucCanvas::HandScrollPossible() const
{
    return HandScrollEnabled && CanvasView::HandScrollPossible();
}

void ucCanvas::UpdateCursor()
{
    const int32_t Effective = ScreenMode == 0 ? static_cast<int32_t>(OpScroll) : Op;
    QString Name;
    switch (Effective) {
    case OpPaint: Name = "PAINT"; break;
    case OpErase: Name = "ERASE"; break;
    case OpFill: Name = "FILL"; break;
    case OpPolygon: Name = "POLIGON"; break;
    case OpLine: Name = "LINE"; break;
    case OpArc: Name = "ARC"; break;
    case OpBezier: Name = BezierOn ? "BEZIER" : "BEZIERSTART"; break;
    case OpRectangle:
    case OpFilledRectangle: Name = "RECTANGLE"; break;
    case OpOval:
    case OpFilledOval: Name = "OVAL"; break;
    case OpRegion:
    case OpOvalRegion: Name = (PasteFlag || PasteTextFlag) ? "PASTEDRAG" : "REGION"; break;
    case OpStamp: Name = "STAMP"; break;
    case OpSpray: Name = "SPRAY"; break;
    case OpReplaceColor: Name = "REPLACE"; break;
    case OpColorPicker: Name = "COLORPICKER"; break;
    case OpGlass: picDisp->setCursor(GlassOn ? Qt::BlankCursor : Qt::ArrowCursor); return;
    default: Name = HandScrollPossible() ? "HANDON" : "HANDOFF"; break;
    }
    picDisp->setCursor(basCanvasImages::CanvasCursor(Name));
    picDisp->setProperty("CursorName", Name);
}

void ucCanvas::CanvasCleanse()
{
    if (Op == OpGlass)
        GlassOnOff(false);
    Timer1->stop();
    for (QLabel* Node : imgNode)
        Node->hide();
    HideGrips();
    BezierOn = false;
    PolygonPoints.clear();
    RubberKind = 0;
    ArcStage = 0;
    StrokeActive = false;
    EndRegion();
    DIBGlassView.ClearUp();
    ClearView();
    emit ViewChanged();
    emit OperationStarting();
    Op = OpScroll;
    UpdateCursor();
}

void ucCanvas::GetLineInfo(int& X1, int& X2, int& Y1, int& Y2) const
{
    X1 = RubberA.x();
    X2 = RubberB.x();
    Y1 = RubberA.y();
    Y2 = RubberB.y();
}

void ucCanvas::doRotateOperation(int16_t Mode)
{
    if (!DIB.DIBBitsPtr())
        return;
    // The region is merged first: its box would not survive the turn.
    if (RegionOn || RegionSelecting) {
        EndRegion();
        emit RegionDropped();
    }
    DIB.RotateDIB(DIB, Mode);
    CanvasResize();
    emit PictureChanged();
}

QRect ucCanvas::BitsBrushLine(int Left, int Top, int Right, int Bottom)
{
    if (!DIB.DIBBitsPtr())
        return QRect();
    const QRect Box = basShape::BitsBrushLine(DIB, Left, Top, Right, Bottom, ColorToUse, BrushSize);
    RepaintImageBox(Box);
    return Box;
}

void ucCanvas::OnTimer()
{
    if (!RegionOn) {
        Timer1->stop();
        return;
    }
    // During a drag the marquee stands still.
    if (StrokeActive || RegionDragging || QApplication::mouseButtons() != Qt::NoButton)
        return;
    if (SuspendAntsMarching || UseAlternativeRegionMarquee)
        return;
    AntsPhase = (AntsPhase + 1) % 8;
    picDisp->update();
}

void ucCanvas::PaintOverlay(QPainter& Painter)
{
    CanvasView::PaintOverlay(Painter);
    Painter.setRenderHint(QPainter::Antialiasing, false);
    // The marquee, or while selecting the rubber box, which is the marquee standing still.
    if ((RegionOn || RegionSelecting) && RegionRight >= RegionLeft && RegionBottom >= RegionTop) {
        const QRectF Box(RegionLeft, RegionTop, RegionRight - RegionLeft, RegionBottom - RegionTop);
        const bool Oval = RegionOn ? RegionOval : Op == OpOvalRegion;
        auto Draw = [&](const QPen& Pen) {
            Painter.setPen(Pen);
            Painter.setBrush(Qt::NoBrush);
            if (Oval)
                Painter.drawEllipse(Box);
            else
                Painter.drawRect(Box);
        };
        if (UseAlternativeRegionMarquee) {
            Draw(QPen(Qt::black, 1, Qt::DotLine));
        } else {
            Draw(QPen(Qt::white, 1));
            QPen Ants(Qt::black, 1, Qt::CustomDashLine);
            Ants.setDashPattern({4, 4});
            Ants.setDashOffset((SuspendAntsMarching || RegionSelecting) ? 0 : AntsPhase);
            Draw(Ants);
        }
    }
    if (RubberKind == 0)
        return;
    const QPoint A = PixelCentreOnDisplay(RubberA), B = PixelCentreOnDisplay(RubberB);
    const QRect Box = QRect(A, B).normalized();
    QPen Pen(Qt::black, 1, Qt::DashLine);
    Painter.setBrush(Qt::NoBrush);
    auto Centre = [this](QPoint I) { return PixelCentreOnDisplay(I); };
    for (const QColor& Colour : {QColor(Qt::white), QColor(Qt::black)}) {
        Pen.setColor(Colour);
        Pen.setStyle(Colour == QColor(Qt::white) ? Qt::SolidLine : Qt::DashLine);
        Painter.setPen(Pen);
        switch (RubberKind) {
        case 1: Painter.drawLine(Centre(RubberA), Centre(RubberB)); break;
        case 2: Painter.drawRect(Box); break;
        case 3: Painter.drawEllipse(Box); break;
        default: break;
        }
    }
}
