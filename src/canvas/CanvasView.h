#pragma once
// What the canvas and its display-only sibling share: the picture `DIB`, the picture box
// `picDisp` with its scroll bars, zoom by `Magnify` or fit-in, the one painter `UpdateDisplay`,
// repaints limited to a touched box, and the mapping between display and picture pixels.
// Display coordinates are device pixels of `picDisp`, so one picture pixel is one device pixel
// at zoom 1 whatever the screen's scaling.
#include <QPoint>
#include <QRect>
#include <QWidget>
#include <cstdint>
#include <vector>

#include "CanvasGeometry.h"
#include "clsDIB.h"

class PictureBox;
class QScrollBar;
class QLabel;
class QMouseEvent;

class CanvasView : public QWidget {
    Q_OBJECT
public:
    explicit CanvasView(QWidget* Parent = nullptr);
    ~CanvasView() override;

    // The picture, 32 bits a pixel, rows top-down so that drawing happens in its own memory.
    clsDIB DIB;

    PictureBox* picDisp = nullptr;
    QScrollBar* HsbDisp = nullptr;
    QScrollBar* VsbDisp = nullptr;
    QLabel* picTemp = nullptr;

    // Takes a copy of Source as the picture (any depth), as a top-down 32-bit surface.
    bool SetPicture(clsDIB& Source);

    int16_t Magnify() const { return MagnifyValue; }
    void setMagnify(int16_t Value);
    bool FitInView() const { return FitIn; }
    void setFitInView(bool Value);
    bool FitInEvenIfSmaller() const { return FitEvenIfSmaller; }
    void setFitInEvenIfSmaller(bool Value);

    // Which reports the host wants.
    void setToNotifyCanvasMouseMove(bool Value) { NotifyMouseMove = Value; }
    void setToReportRightClickDataInScrollMode(bool Value) { ReportRightClick = Value; }
    void setToMonitorXYdata(bool Value) { MonitorXY = Value; }
    void setToShowXYlinesInScrollMode(bool Value);

    void CanvasResize();
    void CanvasPicPaint();
    void GetScrollValues(int& X, int& Y) const;
    // Clamps both to 0..maximum and stores them; ReportNodes moves the Bezier nodes along,
    // PaintNow repaints at once. Raises the view event.
    void SetScrollValues(int X, int Y, bool ReportNodes = false, bool PaintNow = false);
    void GetScrollMaxInfo(int& X, int& Y) const;
    void GetVisibleStartInfo(int& X, int& Y) const;
    void GetVisibleInfo(int& X1, int& Y1, int& X2, int& Y2) const;
    void GetDisplayedPortionSize(int& Width, int& Height) const;
    uint32_t DIB_XY_Color(int X, int Y) const;

    // Picture pixel under a display point, and the display box of a picture box.
    QPoint DisplayToImage(QPoint Display) const;
    QRect ImageToDisplay(const QRect& ImageBox) const;
    // Redraws the display image over a picture box and repaints that part of the screen only.
    void RepaintImageBox(const QRect& ImageBox);
    // The display box repainted last by RepaintImageBox or UpdateDisplay, for measurements.
    QRect LastRepaintBox() const { return LastRepaint; }
    const CanvasLayout& Layout() const { return CurrentLayout; }

signals:
    void KeyReleased(int Key);           // event 1
    void ViewChanged();                  // event 2
    void RightClickInScrollMode(int X, int Y, uint32_t Color);  // event 3
    void PixelUnderMouse(int X, int Y, uint32_t Color);         // event 14
    void CanvasMouseMoved(int X, int Y);
    // Ctrl+wheel: the host chooses the zoom, as it does for its zoom buttons.
    void ZoomRequested(int Steps);

protected:
    void paintEvent(QPaintEvent* Event) override;
    void resizeEvent(QResizeEvent* Event) override;
    void keyReleaseEvent(QKeyEvent* Event) override;
    void wheelEvent(QWheelEvent* Event) override;
    bool eventFilter(QObject* Watched, QEvent* Event) override;

    // The one painter: picture into the display image, then the screen.
    virtual void UpdateDisplay();
    // Called after UpdateDisplay has painted, for grips and overlays.
    virtual void AfterDisplayUpdate() {}
    // Called when the scroll values change, before the repaint.
    virtual void AfterScroll(bool /*ReportNodes*/) {}
    virtual void UpdateCursorOfView();
    virtual void PaintOverlay(QPainter& Painter);
    // Mouse on the picture box, with the display point in device pixels.
    virtual void PictureMouseDown(QMouseEvent* Event, QPoint Display);
    virtual void PictureMouseMove(QMouseEvent* Event, QPoint Display);
    virtual void PictureMouseUp(QMouseEvent* Event, QPoint Display);
    virtual void PictureKeyPress(QKeyEvent*) {}
    // True when the hand may drag the picture now.
    virtual bool HandScrollPossible() const;

    void ClearView();
    void ResetScrollBars();
    // Hand scroll: the press point and the scroll values at the press.
    bool HandDragging = false;
    QPoint HandStart;
    int HandScrollX = 0;
    int HandScrollY = 0;
    QPoint LastMouse{-1, -1};
    bool NotifyMouseMove = false;
    bool ReportRightClick = false;
    bool MonitorXY = false;
    bool ShowXYLines = false;

    int ScrollX = 0;
    int ScrollY = 0;

private:
    void RenderDisplayBox(const QRect& DisplayBox);
    void BuildMaps();
    void ReadBars();
    void MoveBars();

    CanvasLayout CurrentLayout;
    AxisMapping MapX, MapY;
    std::vector<int> ColumnOf;  // picture column of each display column, -1 for none
    std::vector<int> RowOf;
    QRect LastRepaint;
    int16_t MagnifyValue = 1;
    bool FitIn = false;
    bool FitEvenIfSmaller = false;
    bool BarGuard = false;
};
