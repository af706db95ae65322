#pragma once
// The canvas control: one picture and everything that happens to it under the mouse. It shows the
// picture at an integer zoom or fitted, scrolls it, runs the drawing tools by `CanvasOp`, offers the
// magnifying glass, the hand scroll and the resize of the picture by its edge grips, and reports to
// its host through signals (numbered as the host knows them). It knows nothing of files or menus
// and shows no messages: the host does, with the texts it can ask for here.
#include <QPointer>
#include <QString>
#include <array>
#include <vector>

#include "CanvasView.h"

class QFrame;
class QLabel;
class QTimer;

class ucCanvas : public CanvasView {
    Q_OBJECT
public:
    explicit ucCanvas(QWidget* Parent = nullptr);
    ~ucCanvas() override;

    // Operations, the values of CanvasOp.
    enum Operation : int32_t {
        OpPaint = 0, OpErase = 1, OpFill = 2, OpPolygon = 3, OpLine = 4, OpArc = 5, OpBezier = 6,
        OpRectangle = 7, OpFilledRectangle = 8, OpOval = 9, OpFilledOval = 10, OpRegion = 11,
        OpOvalRegion = 12, OpStamp = 13, OpSpray = 14, OpReplaceColor = 15, OpColorPicker = 16,
        OpGlass = 17, OpScroll = 18
    };

    // Surfaces beside the picture.
    clsDIB DIBRegion, DIBRegionMask, DIBSnapshot, DIBPattern, DIBCustomBrush, DIBCustomBrushMask;
    clsDIB DIBStamp, DIBStampMask;
    clsDIB DIBGlass, DIBGlassMask, DIBGlassView;

    // Child controls.
    QLabel* picDragVertical = nullptr;    // grip on the bottom edge
    QLabel* picDragHorizontal = nullptr;  // grip on the right edge
    QLabel* picDrag = nullptr;            // grip on the bottom right corner
    QTimer* Timer1 = nullptr;             // the marching ants
    std::array<QLabel*, 4> imgNode{};     // the Bezier nodes
    QLabel* picGlass = nullptr;           // holds the glass image
    QFrame* shpDrag = nullptr;            // rubber box of the edge drag
    std::array<QLabel*, 2> imgPattern{};  // the two dot patterns of the fill

    // Properties with behaviour.
    int32_t CanvasScreenMode() const { return ScreenMode; }
    void setCanvasScreenMode(int32_t Value);
    int32_t CanvasOp() const { return Op; }
    void setCanvasOp(int32_t Value);
    bool SuspendCanvasResizeByEdgeDragging() const { return SuspendEdgeDrag; }
    void setSuspendCanvasResizeByEdgeDragging(bool Value);
    bool UseConvexGlass() const { return ConvexGlass; }
    void setUseConvexGlass(bool Value);
    int16_t MagnifyGlassFactor() const { return GlassFactor; }
    void setMagnifyGlassFactor(int16_t Value);

    // Plain properties, read by the tools when they act.
    bool HandScrollEnabled = true;
    bool UseAlternativeRegionMarquee = false;
    bool SuspendRegionResizeByEdgeDragging = false;
    uint32_t TransparentColor = 0;
    uint32_t ColorToUse = 0;
    uint32_t BezierFillColor = 0;
    int32_t BrushSize = 3;
    int16_t BrushStyle = 0;
    int16_t CustomBrushShape = 0;
    int16_t PaintBrushTranslucencyPercent = 100;
    int16_t SprayTranslucencyPercent = 100;
    int16_t SprayDensity = 2;
    int16_t PolygonOperationType = 0;
    int16_t PolygonDrawMethod = 0;
    int16_t PolygonNumPoints = 5;
    int16_t PolygonRadius = 50;
    float PolygonConcaveFactor = 1.0f;
    int16_t PolygonAngle = 0;
    int16_t FillPattern = 0;
    int16_t LineType = 0;
    int16_t RectangleCornerShape = 0;
    int16_t OvalEnhancement = 0;
    int16_t BezierType = 0;
    bool AllowAntialiasing = true;
    bool SuspendAntsMarching = false;
    QString FileExtAllowed;
    // The region and paste state, kept here for the region tools.
    bool RegionMoveReady = false;
    bool RegionTransparent = false;
    bool RegionTranslucent = false;
    bool TranslucentTransparent = false;
    int16_t TranslucentPercent = 0;
    bool PasteOn = false;
    bool PasteOnText = false;
    bool TranslucencyPending = false;
    // The region's box on screen, in display pixels, and whether one is up.
    bool RegionOn = false;
    float RegionLeft = 0, RegionRight = 0, RegionTop = 0, RegionBottom = 0;

    // Interface operations.
    void CanvasCleanse();
    void GetLineInfo(int& X1, int& X2, int& Y1, int& Y2) const;
    void doRotateOperation(int16_t Mode);
    QRect BitsBrushLine(int Left, int Top, int Right, int Bottom);
    void updateBezierNodePositions();
    bool PolygonInProgress() const { return !PolygonPoints.empty(); }
    void PolygonAbort();
    bool BezierInProgress() const { return BezierOn; }
    void BezierAbort();

    // The glass's image size.
    int GlassWidth() const;
    int GlassHeight() const;
    // What the host says when it cannot offer the glass: empty when it can.
    QString GlassRefusalMessage() const;
    // What the host says when a zoom factor would make the picture too large: empty when allowed.
    static QString MagnifyRefusalMessage(int Width, int Height, int Factor);
    // Whether the glass is up now, and where (its top left in picture pixels).
    bool GlassShowing() const { return GlassOn; }
    QPoint GlassPosition() const { return GlassPos; }
    // Whether the edge grips show.
    bool GripsShowing() const;

signals:
    void PastedTextRightClicked();                        // event 4
    void PictureChanged();                                // event 5
    void CanvasEdgeDragEnded();                           // event 6
    void CanvasEdgeDragging(int Width, int Height);       // event 7
    void RegionMade();                                    // event 8
    void RegionDropped();                                 // event 9
    void PolygonFinished();                               // event 10
    void BezierFinished();                                // event 11
    void RegionStartAndSize(int X, int Y, int Width, int Height);          // event 15
    void LineLengthAndAngle(int X, int Y, double Length, double Angle);    // event 16
    void ArcCentreAndRadius(int X, int Y, double Radius);                  // event 17
    void EllipseRadii(int X, int Y, int RadiusX, int RadiusY);             // event 18
    void OperationStarting();                             // event 19
    void DIBProgress(int Percent);                        // event 20
    void DIBProgressEnd();                                // event 21
    // The colour picker's report: the first colour by the left button, the second by the right.
    void ColorPicked(uint32_t Color, bool SecondColor);

protected:
    void UpdateDisplay() override;
    void AfterDisplayUpdate() override;
    void AfterScroll(bool ReportNodes) override;
    void PaintOverlay(QPainter& Painter) override;
    void PictureMouseDown(QMouseEvent* Event, QPoint Display) override;
    void PictureMouseMove(QMouseEvent* Event, QPoint Display) override;
    void PictureMouseUp(QMouseEvent* Event, QPoint Display) override;
    void PictureKeyPress(QKeyEvent* Event) override;
    void keyPressEvent(QKeyEvent* Event) override;
    bool HandScrollPossible() const override;
    void UpdateCursorOfView() override;
    bool eventFilter(QObject* Watched, QEvent* Event) override;

private:
    // ucCanvas.cpp: view, cursor, grips, marquee.
    void UpdateCursor();
    void PlaceGrips();
    void HideGrips();
    void OnTimer();
    // ucCanvas_Glass.cpp
    void GlassOnOff(bool On);
    void MoveGlass(QPoint Image);
    void BuildGlassView();
    void DrawGlass();
    void RestoreUnderGlass();
    // ucCanvas_Grips.cpp
    bool GripEvent(QLabel* Grip, QEvent* Event);
    // ucCanvas_Tools.cpp
    void ToolDown(QMouseEvent* Event, QPoint Image, QPoint Display);
    void ToolMove(QMouseEvent* Event, QPoint Image, QPoint Display);
    void ToolUp(QMouseEvent* Event, QPoint Image, QPoint Display);
    QPoint Constrained(QPoint Image, Qt::KeyboardModifiers Modifiers) const;
    void Dab(QPoint Image);
    // The custom brush of this stroke: the loaded brush and mask, cut to an oval for shape 0.
    bool PrepareCustomBrush();
    void Changed(const QRect& ImageBox);
    void TakeSnapshot();
    void RestoreSnapshot();
    void RestoreSnapshotBox(const QRect& ImageBox);
    // Copies a box between two surfaces of one size; the box copied, empty when none.
    static QRect CopyPixels(clsDIB& From, clsDIB& To, const QRect& ImageBox);
    // Display point of a picture pixel's centre, unclipped.
    QPoint PixelCentreOnDisplay(QPoint Image) const;
    // ucCanvas_Shapes.cpp
    void ShapeDown(QMouseEvent* Event, QPoint Image);
    void ShapeMove(QMouseEvent* Event, QPoint Image);
    void ShapeUp(QMouseEvent* Event, QPoint Image);
    void ArcDown(QPoint Image);
    void ArcMove(QMouseEvent* Event, QPoint Image);
    void ArcUp(QMouseEvent* Event, QPoint Image);
    void BezierDown(QMouseEvent* Event, QPoint Image, QPoint Display);
    void BezierMove(QPoint Image);
    void BezierUp(QPoint Image);
    void DrawBezierFromSnapshot();
    void BezierFinish();
    void PolygonDown(QMouseEvent* Event, QPoint Image);
    void PolygonFinish();
    void PolygonApply(const std::vector<QPoint>& Points);
    int NodeAt(QPoint Display) const;

    int32_t ScreenMode = 0;
    int32_t Op = OpScroll;
    bool SuspendEdgeDrag = false;
    bool ConvexGlass = false;
    int16_t GlassFactor = 2;

    // A tool's drag.
    bool StrokeActive = false;
    bool EventDone = false;
    uint8_t ColorR = 0, ColorG = 0, ColorB = 0;
    QPoint StrokeStart, LastDab;
    // Rubber band shown over the picture: 0 none, 1 line, 2 box, 3 ellipse.
    int RubberKind = 0;
    QPoint RubberA, RubberB;
    QRect RubberShown;
    // The arc: clicks so far, and its points.
    int ArcStage = 0;
    QPoint ArcP1, ArcP2, ArcP3;
    // The Bezier curve.
    bool BezierOn = false;
    bool BezierSpreading = false;
    int DraggedNode = -1;
    std::array<QPoint, 4> Nodes{};
    // The manual polygon's vertices so far.
    std::vector<QPoint> PolygonPoints;
    QPoint PolygonMouse;
    // The glass.
    bool GlassOn = false;
    QPoint GlassPos;
    QRect GlassLast;
    clsDIB DIBGlassCopy;
    clsDIB StrokeBrush, StrokeMask;
    // The edge drag.
    QLabel* GripDragged = nullptr;
    QPoint GripStart;
    QSize GripSize;
    // The marquee's dash phase.
    int AntsPhase = 0;
};
