// The rubber-band tools: line, rectangles, ovals, the three-point arc, Bezier curves and polygons.
#include <QLabel>
#include <QMouseEvent>
#include <QtMath>
#include <algorithm>
#include <cmath>

#include "PictureBox.h"
#include "basLine.h"
#include "basShape.h"
#include "ucCanvas.h"

namespace {

// Shift on the line tool: the nearest of horizontal, vertical and diagonal.
QPoint SnapLine(QPoint A, QPoint B)
{
    const int Dx = B.x() - A.x();
    const int Dy = B.y() - A.y();
    if (std::abs(Dx) >= 2 * std::abs(Dy))
        return QPoint(B.x(), A.y());
    if (std::abs(Dy) >= 2 * std::abs(Dx))
        return QPoint(A.x(), B.y());
    const int Side = std::max(std::abs(Dx), std::abs(Dy));
    return QPoint(A.x() + (Dx < 0 ? -Side : Side), A.y() + (Dy < 0 ? -Side : Side));
}

// Shift on boxes and ovals: a square, on the side of the larger extent.
QPoint SnapSquare(QPoint A, QPoint B)
{
    const int Dx = B.x() - A.x();
    const int Dy = B.y() - A.y();
    const int Side = std::max(std::abs(Dx), std::abs(Dy));
    return QPoint(A.x() + (Dx < 0 ? -Side : Side), A.y() + (Dy < 0 ? -Side : Side));
}

}  // namespace

QPoint ucCanvas::PixelCentreOnDisplay(QPoint Image) const
{
    const QRect Disp = Layout().Disp;
    const int W = DIB.DIBWidth();
    const int H = DIB.DIBHeight();
    const int X0 = PictureToDisplay(Image.x(), W, Disp.width(), Magnify(), ScrollX, FitInView());
    const int X1 = PictureToDisplay(Image.x() + 1, W, Disp.width(), Magnify(), ScrollX, FitInView());
    const int Y0 = PictureToDisplay(Image.y(), H, Disp.height(), Magnify(), ScrollY, FitInView());
    const int Y1 = PictureToDisplay(Image.y() + 1, H, Disp.height(), Magnify(), ScrollY, FitInView());
    return QPoint((X0 + X1) / 2, (Y0 + Y1) / 2);
}

void ucCanvas::ShapeDown(QMouseEvent* Event, QPoint Image)
{
    if (Event->button() != Qt::LeftButton)
        return;
    StrokeActive = true;
    RubberA = RubberB = Image;
    RubberKind = Op == OpLine ? 1 : (Op == OpRectangle || Op == OpFilledRectangle) ? 2 : 3;
    picDisp->update();
}

void ucCanvas::ShapeMove(QMouseEvent* Event, QPoint Image)
{
    if (!StrokeActive || !(Event->buttons() & Qt::LeftButton))
        return;
    const bool Shift = Event->modifiers() & Qt::ShiftModifier;
    if (Op == OpLine) {
        RubberB = Shift ? SnapLine(RubberA, Image) : Image;
        const double Dx = RubberB.x() - RubberA.x();
        const double Dy = RubberB.y() - RubberA.y();
        const double Angle = (Dx == 0 && Dy == 0) ? 0.0 : qRadiansToDegrees(std::atan2(-Dy, Dx));
        emit LineLengthAndAngle(RubberA.x(), RubberA.y(), std::hypot(Dx, Dy), Angle);
    } else {
        RubberB = Shift ? SnapSquare(RubberA, Image) : Image;
        const int W = std::abs(RubberB.x() - RubberA.x()) + 1;
        const int H = std::abs(RubberB.y() - RubberA.y()) + 1;
        if (RubberKind == 3)
            emit EllipseRadii(RubberA.x(), RubberA.y(), W / 2, H / 2);
        else
            emit RegionStartAndSize(RubberA.x(), RubberA.y(), W, H);
    }
    picDisp->update();
}

void ucCanvas::ShapeUp(QMouseEvent* Event, QPoint Image)
{
    if (!StrokeActive)
        return;
    ShapeMove(Event, Image);  // the release point counts, with its Shift
    StrokeActive = false;
    RubberKind = 0;
    picDisp->update();
    const QPoint A = RubberA, B = RubberB;
    QRect Box;
    switch (Op) {
    case OpLine:
        Box = basLine::DrawLineTool(DIB, A.x(), A.y(), B.x(), B.y(), ColorToUse, BrushSize, LineType);
        break;
    case OpRectangle:
    case OpFilledRectangle:
        Box = basShape::DrawRectangle(DIB, A.x(), A.y(), B.x(), B.y(), ColorToUse, BrushSize, Op == OpFilledRectangle,
                                      RectangleCornerShape);
        break;
    default:
        if (OvalEnhancement == 1 && AllowAntialiasing) {
            if (Op == OpFilledOval)
                Box = basShape::DrawOval(DIB, A.x(), A.y(), B.x(), B.y(), ColorToUse, BrushSize, true);
            Box = Box.united(basShape::DrawOvalAntialiased(DIB, A.x(), A.y(), B.x(), B.y(), ColorToUse));
        } else {
            Box = basShape::DrawOval(DIB, A.x(), A.y(), B.x(), B.y(), ColorToUse, BrushSize, Op == OpFilledOval);
        }
        break;
    }
    Changed(Box);
}

void ucCanvas::ArcDown(QPoint Image)
{
    switch (ArcStage) {
    case 0:
        ArcP1 = ArcP2 = Image;
        ArcStage = 1;
        RubberKind = 1;
        RubberA = RubberB = Image;
        break;
    case 1:
        ArcP2 = Image;
        ArcStage = 2;
        RubberKind = 1;
        RubberB = Image;
        TakeSnapshot();
        RubberShown = QRect();
        break;
    default:
        ArcStage = 3;
        ArcMove(nullptr, Image);
        break;
    }
    picDisp->update();
}

void ucCanvas::ArcMove(QMouseEvent* Event, QPoint Image)
{
    if (ArcStage == 1) {
        RubberB = Image;
        picDisp->update();
        return;
    }
    if (ArcStage < 2)
        return;
    RubberKind = 0;
    ArcP3 = Image;
    const bool Chord = Event && (Event->modifiers() & Qt::ShiftModifier);
    const QRect Old = RubberShown;
    RestoreSnapshotBox(Old);
    RubberShown = basShape::DrawArc(DIB, ArcP1, ArcP2, ArcP3, ColorToUse, BrushSize, Chord);
    RepaintImageBox(RubberShown);
    QPointF Centre;
    double Radius = 0;
    if (basShape::ArcFromThreePoints(ArcP1, ArcP2, ArcP3, Centre, Radius))
        emit ArcCentreAndRadius(qRound(Centre.x()), qRound(Centre.y()), Radius);
}

void ucCanvas::ArcUp(QMouseEvent* Event, QPoint Image)
{
    if (ArcStage == 1 && Image != ArcP1) {
        // The chord was dragged out in one stroke.
        ArcDown(Image);
        return;
    }
    if (ArcStage != 3)
        return;
    ArcMove(Event, Image);
    ArcStage = 0;
    DIBSnapshot.ClearUp();
    const QRect Box = RubberShown;
    RubberShown = QRect();
    Changed(Box);
}

int ucCanvas::NodeAt(QPoint Display) const
{
    if (!BezierOn)
        return -1;
    const int Reach = static_cast<int>(std::ceil(imgNode[0]->width() * picDisp->Dpr() / 2.0)) + 2;
    for (int I = 3; I >= 0; --I) {
        const QPoint C = PixelCentreOnDisplay(Nodes[I]);
        if (std::abs(C.x() - Display.x()) <= Reach && std::abs(C.y() - Display.y()) <= Reach)
            return I;
    }
    return -1;
}

void ucCanvas::BezierDown(QMouseEvent* Event, QPoint Image, QPoint Display)
{
    if (!BezierOn) {
        if (Event->button() != Qt::LeftButton)
            return;
        TakeSnapshot();
        Nodes.fill(Image);
        BezierSpreading = true;
        RubberShown = QRect();
        updateBezierNodePositions();
        return;
    }
    const int Node = Event->button() == Qt::LeftButton ? NodeAt(Display) : -1;
    if (Node >= 0)
        DraggedNode = Node;
    else
        BezierFinish();
}

void ucCanvas::BezierMove(QPoint Image)
{
    if (BezierSpreading) {
        // The nodes spread evenly along the rubber line.
        const QPoint A = Nodes[0];
        Nodes[3] = Image;
        Nodes[1] = A + (Image - A) / 3;
        Nodes[2] = A + (Image - A) * 2 / 3;
    } else if (DraggedNode >= 0) {
        Nodes[DraggedNode] = Image;
    } else {
        return;
    }
    DrawBezierFromSnapshot();
    updateBezierNodePositions();
}

void ucCanvas::BezierUp(QPoint Image)
{
    if (BezierSpreading) {
        BezierMove(Image);
        BezierSpreading = false;
        if (Nodes[0] == Nodes[3]) {
            // A click without a drag makes no curve.
            BezierAbort();
            return;
        }
        BezierOn = true;
        UpdateCursor();
        updateBezierNodePositions();
        return;
    }
    DraggedNode = -1;
}

void ucCanvas::DrawBezierFromSnapshot()
{
    const QRect Old = RubberShown;
    RestoreSnapshotBox(Old);
    RubberShown = basShape::DrawBezier(DIB, Nodes, ColorToUse, BrushSize, BezierType, BezierFillColor);
    RepaintImageBox(RubberShown);
}

void ucCanvas::BezierFinish()
{
    BezierOn = false;
    BezierSpreading = false;
    DraggedNode = -1;
    DIBSnapshot.ClearUp();
    const QRect Box = RubberShown;
    RubberShown = QRect();
    updateBezierNodePositions();
    UpdateCursor();
    emit BezierFinished();
    Changed(Box);
}

void ucCanvas::BezierAbort()
{
    if (BezierOn || BezierSpreading) {
        RestoreSnapshotBox(RubberShown);
        DIBSnapshot.ClearUp();
    }
    BezierOn = false;
    BezierSpreading = false;
    DraggedNode = -1;
    RubberShown = QRect();
    updateBezierNodePositions();
    UpdateCursor();
}

void ucCanvas::updateBezierNodePositions()
{
    const bool Show = (BezierOn || BezierSpreading) && DIB.DIBBitsPtr();
    const qreal Dpr = picDisp->Dpr();
    for (int I = 0; I < 4; ++I) {
        QLabel* Node = imgNode[I];
        if (!Show) {
            Node->hide();
            continue;
        }
        const QPoint C = PixelCentreOnDisplay(Nodes[I]);
        Node->move(static_cast<int>(std::lround(C.x() / Dpr)) - Node->width() / 2,
                   static_cast<int>(std::lround(C.y() / Dpr)) - Node->height() / 2);
        Node->show();
        Node->raise();
    }
}

void ucCanvas::PolygonDown(QMouseEvent* Event, QPoint Image)
{
    if (PolygonDrawMethod == 0) {
        if (Event->button() != Qt::LeftButton)
            return;
        PolygonApply(basShape::PolygonAutoVertices(Image.x(), Image.y(), PolygonNumPoints, PolygonRadius,
                                                   PolygonConcaveFactor, PolygonAngle));
        return;
    }
    if (Event->button() == Qt::RightButton) {
        if (PolygonPoints.size() >= 3)
            PolygonFinish();
        else
            PolygonAbort();
        return;
    }
    if (PolygonPoints.empty()) {
        TakeSnapshot();
        PolygonPoints.push_back(Image);
        RubberKind = 1;
        RubberA = RubberB = Image;
        picDisp->update();
        return;
    }
    // A click on the first vertex closes the polygon.
    const QPoint First = PixelCentreOnDisplay(PolygonPoints.front());
    const QPoint Here = PixelCentreOnDisplay(Image);
    if (PolygonPoints.size() >= 3 && std::abs(First.x() - Here.x()) <= 4 && std::abs(First.y() - Here.y()) <= 4) {
        PolygonFinish();
        return;
    }
    const QPoint Last = PolygonPoints.back();
    RepaintImageBox(basLine::DrawLineShaped(DIB, Last.x(), Last.y(), Image.x(), Image.y(), ColorToUse, BrushSize, 0));
    PolygonPoints.push_back(Image);
    RubberA = RubberB = Image;
}

void ucCanvas::PolygonFinish()
{
    const std::vector<QPoint> Points = PolygonPoints;
    RestoreSnapshot();
    PolygonPoints.clear();
    DIBSnapshot.ClearUp();
    RubberKind = 0;
    picDisp->update();
    PolygonApply(Points);
}

void ucCanvas::PolygonAbort()
{
    if (!PolygonPoints.empty()) {
        RestoreSnapshot();
        DIBSnapshot.ClearUp();
    }
    PolygonPoints.clear();
    RubberKind = 0;
    picDisp->update();
}

void ucCanvas::PolygonApply(const std::vector<QPoint>& Points)
{
    if (Points.size() < 2)
        return;
    const int Type = std::clamp<int>(PolygonOperationType, 0, 8);
    QRect Shape = basShape::DrawPolygon(DIB, Points, ColorToUse, BrushSize, Type % 3, TransparentColor);
    // The shape's box: its vertices' bounds inside the picture.
    int L = Points[0].x(), R = L, T = Points[0].y(), B = T;
    for (const QPoint& P : Points) {
        L = std::min(L, P.x());
        R = std::max(R, P.x());
        T = std::min(T, P.y());
        B = std::max(B, P.y());
    }
    const QRect Box = QRect(QPoint(L, T), QPoint(R, B)).intersected(QRect(0, 0, DIB.DIBWidth(), DIB.DIBHeight()));
    if (Type >= 3 && !Box.isEmpty()) {
        clsDIB Part;
        if (Part.CreateBlankDIB(Box.width(), Box.height(), 32, 0xFFFFFF, true)) {
            BitBlt(Part.DIBhDC(), 0, 0, Box.width(), Box.height(), DIB.DIBhDC(), Box.left(), Box.top(), SRCCOPY);
            if (Type <= 5) {
                Part.CopyToClipboard();
            } else {
                SetPicture(Part);
                SetScrollValues(0, 0);
                CanvasResize();
                Shape = QRect(0, 0, DIB.DIBWidth(), DIB.DIBHeight());
            }
        }
    }
    emit PolygonFinished();
    Changed(Shape);
}
