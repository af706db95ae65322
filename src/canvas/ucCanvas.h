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
    // How a region is laid on the picture, read at each placement: transparent (the mask keeps
    // the key colour out), translucent at TranslucentPercent (with TranslucentTransparent the
    // mask keeps the key colour out of the blend). A selection is keyed on TransparentColor when
    // it is lifted; a paste sets these for itself and puts them back when it ends.
    bool RegionTransparent = false;
    bool RegionTranslucent = false;
    bool TranslucentTransparent = false;
    int16_t TranslucentPercent = 0;
    // Set by a translucent placement until the region is dropped.
    bool TranslucencyPending = false;
    // The region's box on screen, in display pixels of picDisp (right and bottom are the last
    // pixels inside), and whether one is up. The box follows its picture pixels through
    // scrolling, zoom and resizing.
    bool RegionOn = false;
    float RegionLeft = 0, RegionRight = 0, RegionTop = 0, RegionBottom = 0;
    // Edge bands: a press this many display pixels inside the box's edge (a quarter of the box's
    // side when that is less) resizes instead of moving. An edge drag never leaves a side of the
    // box at RegionMinEdgeSize display pixels or less.
    static constexpr int RegionEdgeBand = 4;
    static constexpr int RegionMinEdgeSize = 15;

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

    // Regions (operations 11 and 12) and paste. The mouse selects, moves (Ctrl+drag copies),
    // resizes by the edges and drops; these are the host's handles on the same machinery.
    // True for operation 11 or 12 with a picture and a region of at least 1 by 1; setting it
    // false ends the region where it stands (paste flags cleared, box zeroed) without events.
    bool RegionMoveReady() const;
    void setRegionMoveReady(bool Value);
    // Setting either false with a region up merges the region where it stands, passes through
    // operation 18 and back, and raises events 9 and 5.
    bool PasteOn() const { return PasteFlag; }
    void setPasteOn(bool Value);
    bool PasteOnText() const { return PasteTextFlag; }
    void setPasteOnText(bool Value);
    // Lays Image (any depth) over the picture as a lifted region at the visible top left, in
    // operation 11 with PasteOn set; the picture beneath is not cut. Kind 0 opaque; 1 transparent
    // where the image has the colour of its top left pixel; 2 that key kept out and the rest
    // blended at Percent; 3 all of it blended at Percent. A region already up is dropped first.
    // Raises event 8. False with no picture, no image or an unknown kind. For pasted text the host
    // sets PasteOnText afterwards.
    bool BeginPaste(clsDIB& Image, int Kind, int16_t Percent = 100);
    bool HasRegion() const { return RegionOn; }
    bool RegionLifted() const { return RegionMoving; }
    // The region in picture pixels (it may reach beyond the picture); empty without one.
    QRect RegionImageBox() const;
    // The same as first and last columns and rows.
    void GetRegionData(int& Left, int& Right, int& Top, int& Bottom) const;
    // Merges the region where it stands: event 9, and event 5 when it was lifted.
    void DropRegion();
    // Takes the region away without merging it: the picture beneath comes back (a paste leaves
    // no trace; a moved selection leaves its place cut, event 5). Event 9. For replacing pasted
    // text with its edited version.
    void DiscardRegion();
    // Fills the region's place with TransparentColor (its ellipse for an oval region) and drops
    // it, event 5. Nothing without a region.
    void CutRegion();
    // The region's image as a top-down 32-bit surface, its masked-out pixels in the key colour;
    // false without a region.
    bool CopyRegionTo(clsDIB& Out);
    // The picture becomes the region's box (parts beyond the old picture in TransparentColor),
    // scrolled to the start; events 9 and 5. False, and nothing changes, without a region or when
    // the box is under 10 pixels in width or height.
    bool CropToRegion();
    // Lifts the region: its pixels go to DIBRegion (the outside of an oval region masked out and
    // cleared), the place is filled with TransparentColor unless Copy, and DIBSnapshot takes the
    // picture beneath. Raises event 2.
    void PrepareRegionDragging(bool Copy = false);
    // Puts the picture back where the region stood and lays the region at its box.
    void UpdateRegionDragging();
    // Blends the region into Target with its top left at At.
    void UpdateRegionDragging_Process_Translucent(clsDIB& Target, QPoint At);
    // Moves the region by Dx, Dy display pixels (whole picture pixels). The box already follows
    // its picture pixels when the view scrolls, zooms or resizes, so a maximise needs no call
    // unless the picture itself moved inside picDisp.
    void AdjustRegionDispPosition_After_FormMax(int Dx, int Dy);
    // Where DIBRegionMask is white, DIBRegion becomes black: the image of an image and mask pair.
    void ClearAreasOutsideImageShape();
    // Fills the ellipse inscribed in Box on Target with Color, or with Outside the rest of Box.
    static void CutRegionOval(clsDIB& Target, const QRect& Box, uint32_t Color, bool Outside);

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
    // ucCanvas_Region.cpp: selecting, hits, moving and resizing by the mouse.
    void RegionDown(QMouseEvent* Event, QPoint Image, QPoint Display);
    void RegionMove(QMouseEvent* Event, QPoint Image, QPoint Display);
    void RegionUp(QMouseEvent* Event, QPoint Image, QPoint Display);
    // -1 outside the box, -2 in the box but off an oval's ellipse, 0 inside, 1 to 4 an edge band.
    int RegionHit(QPoint Display, QPoint Image) const;
    void RegionHover(QPoint Display, QPoint Image);
    void SelectTo(QPoint Image, bool Square);
    void EdgeTo(QPoint Display);
    // Display pixels covered by Count picture columns (rows) from Start.
    int DisplayExtent(int Start, int Count, bool Horizontal) const;
    // The box on screen from the box in picture pixels.
    void SyncRegionBox();
    void ReportRegionBox();
    // The region's surfaces, and their laying on a target with the top left at At.
    bool BuildRegionImage(const QRect& Box, clsDIB& Image, clsDIB& Mask, bool& Holes);
    void PlaceRegion(clsDIB& Target, QPoint At);
    void StretchRegion(QSize Size);
    // ucCanvas_Paste.cpp: ends the region where it stands, quietly; true when it was lifted.
    bool EndRegion();
    void SetPasteFlag(bool& Flag, bool Value);

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
    // The region: the box in picture pixels, where the lifted image stands in the picture now
    // (empty when nowhere), and the mouse's work on it.
    bool PasteFlag = false;
    bool PasteTextFlag = false;
    bool RegionSelecting = false;  // the rubber box is being drawn
    bool RegionMoving = false;     // lifted: DIBRegion holds the image, DIBSnapshot the picture beneath
    bool RegionDragging = false;   // a move or an edge drag is under way
    bool RegionOval = false;
    bool RegionHasHoles = false;   // the mask has white: oval or keyed
    int16_t RegionEdge = 0;        // 0 none, 1 top, 2 right, 3 bottom, 4 left
    QPoint RegionAnchor, RegionGrab;
    QRect RegionBox, RegionPlaced;
    uint32_t RegionKeyColor = 0;
    // The laying flags as they were before a paste set its own.
    struct LayingFlags {
        bool Transparent = false, Translucent = false, TranslucentTransparent = false;
        int16_t Percent = 0;
    };
    bool PasteSetFlags = false;
    LayingFlags FlagsBeforePaste;
};
