#include "CanvasView.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyle>
#include <QWheelEvent>
#include <QWindow>
#include <algorithm>
#include <cmath>
#include <cstring>

#include "PictureBox.h"
#include "PixelArray32.h"

CanvasView::CanvasView(QWidget* Parent) : QWidget(Parent)
{
    setFocusPolicy(Qt::StrongFocus);
    picTemp = new QLabel(this);
    picTemp->setObjectName("picTemp");
    picTemp->hide();
    HsbDisp = new QScrollBar(Qt::Horizontal, this);
    HsbDisp->setObjectName("HsbDisp");
    HsbDisp->hide();
    VsbDisp = new QScrollBar(Qt::Vertical, this);
    VsbDisp->setObjectName("VsbDisp");
    VsbDisp->hide();
    picDisp = new PictureBox(this);
    picDisp->setObjectName("picDisp");
    picDisp->installEventFilter(this);
    picDisp->PaintOverlay = [this](QPainter& Painter) { PaintOverlay(Painter); };
    picDisp->hide();
    for (QScrollBar* Bar : {HsbDisp, VsbDisp}) {
        // Both the drag (Scroll) and the step (Change) of a bar come here.
        connect(Bar, &QScrollBar::valueChanged, this, [this] {
            if (BarGuard)
                return;
            SetScrollValues(HsbDisp->isVisible() ? HsbDisp->value() : 0,
                            VsbDisp->isVisible() ? VsbDisp->value() : 0, true, true);
        });
    }
}

CanvasView::~CanvasView() = default;

bool CanvasView::SetPicture(clsDIB& Source)
{
    if (&Source == &DIB || !Source.DIBBitsPtr())
        return false;
    const int W = Source.DIBWidth();
    const int H = Source.DIBHeight();
    if (!DIB.CreateBlankDIB(W, H, 32, 0xFFFFFF, true))
        return false;
    return BitBlt(DIB.DIBhDC(), 0, 0, W, H, Source.DIBhDC(), 0, 0, SRCCOPY);
}

void CanvasView::setMagnify(int16_t Value)
{
    MagnifyValue = std::max<int16_t>(1, Value);
}

void CanvasView::setFitInView(bool Value)
{
    FitIn = Value;
}

void CanvasView::setFitInEvenIfSmaller(bool Value)
{
    FitEvenIfSmaller = Value;
}

void CanvasView::setToShowXYlinesInScrollMode(bool Value)
{
    ShowXYLines = Value;
    picDisp->update();
}

void CanvasView::CanvasResize()
{
    if (!DIB.DIBBitsPtr() || (window() && window()->isMinimized()))
        return;
    const qreal Dpr = devicePixelRatioF();
    const int Bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    CurrentLayout = ComputeCanvasLayout(DIB, MagnifyValue, FitIn, FitEvenIfSmaller,
                                        static_cast<int>(std::lround(width() * Dpr)),
                                        static_cast<int>(std::lround(height() * Dpr)),
                                        static_cast<int>(std::lround(Bar * Dpr)));
    const CanvasLayout& L = CurrentLayout;
    const int InnerW = static_cast<int>(std::lround(L.InnerWidth / Dpr));
    const int InnerH = static_cast<int>(std::lround(L.InnerHeight / Dpr));
    BarGuard = true;
    HsbDisp->setVisible(L.HBar);
    VsbDisp->setVisible(L.VBar);
    HsbDisp->setGeometry(0, InnerH, InnerW, Bar);
    VsbDisp->setGeometry(InnerW, 0, Bar, InnerH);
    BarGuard = false;
    const QRect Disp = L.Disp;
    picDisp->setGeometry(static_cast<int>(std::lround(Disp.left() / Dpr)), static_cast<int>(std::lround(Disp.top() / Dpr)),
                         static_cast<int>(std::lround(Disp.width() / Dpr)),
                         static_cast<int>(std::lround(Disp.height() / Dpr)));
    if (picDisp->Image.size() != Disp.size())
        picDisp->Image = QImage(Disp.size(), QImage::Format_RGB32);
    picDisp->show();
    ScrollX = std::clamp(ScrollX, 0, L.ScrollMaxX);
    ScrollY = std::clamp(ScrollY, 0, L.ScrollMaxY);
    MoveBars();
    UpdateDisplay();
}

void CanvasView::CanvasPicPaint()
{
    UpdateDisplay();
}

void CanvasView::MoveBars()
{
    BarGuard = true;
    const CanvasLayout& L = CurrentLayout;
    HsbDisp->setRange(0, L.ScrollMaxX);
    VsbDisp->setRange(0, L.ScrollMaxY);
    HsbDisp->setPageStep(std::max(1, L.Disp.width()));
    VsbDisp->setPageStep(std::max(1, L.Disp.height()));
    HsbDisp->setSingleStep(std::max(1, 16 * static_cast<int>(MagnifyValue)));
    VsbDisp->setSingleStep(std::max(1, 16 * static_cast<int>(MagnifyValue)));
    HsbDisp->setValue(ScrollX);
    VsbDisp->setValue(ScrollY);
    BarGuard = false;
}

void CanvasView::GetScrollValues(int& X, int& Y) const
{
    X = ScrollX;
    Y = ScrollY;
}

void CanvasView::SetScrollValues(int X, int Y, bool ReportNodes, bool PaintNow)
{
    ScrollX = std::clamp(X, 0, CurrentLayout.ScrollMaxX);
    ScrollY = std::clamp(Y, 0, CurrentLayout.ScrollMaxY);
    MoveBars();
    AfterScroll(ReportNodes);
    UpdateDisplay();
    if (PaintNow)
        picDisp->repaint();
    emit ViewChanged();
}

void CanvasView::GetScrollMaxInfo(int& X, int& Y) const
{
    X = CurrentLayout.ScrollMaxX;
    Y = CurrentLayout.ScrollMaxY;
}

void CanvasView::GetVisibleStartInfo(int& X, int& Y) const
{
    X = FitIn ? 0 : MapX.First;
    Y = FitIn ? 0 : MapY.First;
}

void CanvasView::GetVisibleInfo(int& X1, int& Y1, int& X2, int& Y2) const
{
    const QRect Disp = CurrentLayout.Disp;
    const QPoint A = DisplayToImage(QPoint(0, 0));
    const QPoint B = DisplayToImage(QPoint(Disp.width() - 1, Disp.height() - 1));
    X1 = std::clamp(A.x(), 0, std::max(0, DIB.DIBWidth() - 1));
    Y1 = std::clamp(A.y(), 0, std::max(0, DIB.DIBHeight() - 1));
    X2 = std::clamp(B.x(), 0, std::max(0, DIB.DIBWidth() - 1));
    Y2 = std::clamp(B.y(), 0, std::max(0, DIB.DIBHeight() - 1));
}

void CanvasView::GetDisplayedPortionSize(int& Width, int& Height) const
{
    int X1, Y1, X2, Y2;
    GetVisibleInfo(X1, Y1, X2, Y2);
    Width = DIB.DIBBitsPtr() ? X2 - X1 + 1 : 0;
    Height = DIB.DIBBitsPtr() ? Y2 - Y1 + 1 : 0;
}

uint32_t CanvasView::DIB_XY_Color(int X, int Y) const
{
    if (!DIB.DIBBitsPtr())
        return CLR_INVALID;
    return DIB.DIBhDC()->GetPixel(X, Y);
}

QPoint CanvasView::DisplayToImage(QPoint Display) const
{
    const QRect Disp = CurrentLayout.Disp;
    return QPoint(DisplayToPicture(Display.x(), DIB.DIBWidth(), Disp.width(), MagnifyValue, ScrollX, FitIn),
                  DisplayToPicture(Display.y(), DIB.DIBHeight(), Disp.height(), MagnifyValue, ScrollY, FitIn));
}

QRect CanvasView::ImageToDisplay(const QRect& ImageBox) const
{
    if (ImageBox.isEmpty())
        return QRect();
    const QRect Disp = CurrentLayout.Disp;
    const int W = DIB.DIBWidth();
    const int H = DIB.DIBHeight();
    const int L = PictureToDisplay(ImageBox.left(), W, Disp.width(), MagnifyValue, ScrollX, FitIn);
    const int T = PictureToDisplay(ImageBox.top(), H, Disp.height(), MagnifyValue, ScrollY, FitIn);
    const int R = PictureToDisplay(ImageBox.right() + 1, W, Disp.width(), MagnifyValue, ScrollX, FitIn);
    const int B = PictureToDisplay(ImageBox.bottom() + 1, H, Disp.height(), MagnifyValue, ScrollY, FitIn);
    return QRect(L, T, R - L, B - T).intersected(QRect(QPoint(0, 0), Disp.size()));
}

void CanvasView::RepaintImageBox(const QRect& ImageBox)
{
    const QRect Box = ImageToDisplay(ImageBox);
    if (Box.isEmpty())
        return;
    RenderDisplayBox(Box);
    picDisp->UpdateDevice(Box);
    LastRepaint = Box;
}

void CanvasView::UpdateDisplay()
{
    if (!DIB.DIBBitsPtr() || picDisp->Image.isNull())
        return;
    BuildMaps();
    const QRect All(QPoint(0, 0), picDisp->Image.size());
    RenderDisplayBox(All);
    picDisp->update();
    LastRepaint = All;
    AfterDisplayUpdate();
}

void CanvasView::BuildMaps()
{
    const QRect Disp = CurrentLayout.Disp;
    const int W = DIB.DIBWidth();
    const int H = DIB.DIBHeight();
    const int M = MagnifyValue;
    ColumnOf.assign(std::max(0, Disp.width()), -1);
    RowOf.assign(std::max(0, Disp.height()), -1);
    if (FitIn) {
        MapX = AxisMapping{0, W, 0, Disp.width()};
        MapY = AxisMapping{0, H, 0, Disp.height()};
        for (int D = 0; D < Disp.width(); ++D)
            ColumnOf[D] = std::min(W - 1, DisplayToPicture(D, W, Disp.width(), 1, 0, true));
        for (int D = 0; D < Disp.height(); ++D)
            RowOf[D] = std::min(H - 1, DisplayToPicture(D, H, Disp.height(), 1, 0, true));
        return;
    }
    MapX = ComputeAxisMapping(W, Disp.width(), M, ScrollX, CurrentLayout.ScrollMaxX);
    MapY = ComputeAxisMapping(H, Disp.height(), M, ScrollY, CurrentLayout.ScrollMaxY);
    auto Fill = [M](std::vector<int>& Of, const AxisMapping& A, int Size) {
        for (int D = 0; D < static_cast<int>(Of.size()); ++D) {
            const int P = D - A.DestStart;
            if (P >= 0 && P < A.SourceCount * M) {
                const int I = A.First + P / M;
                Of[D] = I < Size ? I : -1;
            }
        }
    };
    Fill(ColumnOf, MapX, W);
    Fill(RowOf, MapY, H);
}

void CanvasView::RenderDisplayBox(const QRect& DisplayBox)
{
    QImage& Image = picDisp->Image;
    const QRect Box = DisplayBox.intersected(QRect(QPoint(0, 0), Image.size()));
    PixelArray32 Pixels(DIB);
    if (Box.isEmpty() || !Pixels.Valid() || static_cast<int>(ColumnOf.size()) < Image.width() ||
        static_cast<int>(RowOf.size()) < Image.height())
        return;
    const uint32_t Face = palette().window().color().rgb();
    const int L = Box.left();
    const int Wd = Box.width();
    const int* Columns = ColumnOf.data() + L;
    // Columns run consecutively at zoom 1 (not fitted): a straight copy.
    const bool Straight = !FitIn && MagnifyValue == 1 && Columns[0] >= 0 && Columns[Wd - 1] == Columns[0] + Wd - 1;
    int PrevRow = -2;
    uint32_t* PrevLine = nullptr;
    for (int Y = Box.top(); Y <= Box.bottom(); ++Y) {
        uint32_t* Line = reinterpret_cast<uint32_t*>(Image.scanLine(Y)) + L;
        const int R = RowOf[Y];
        if (R < 0) {
            std::fill(Line, Line + Wd, Face);
            PrevRow = -2;
            continue;
        }
        if (R == PrevRow) {
            std::memcpy(Line, PrevLine, static_cast<size_t>(Wd) * 4);
            continue;
        }
        const uint32_t* Source = Pixels.Row(R);
        if (Straight) {
            const uint32_t* S = Source + Columns[0];
            for (int X = 0; X < Wd; ++X)
                Line[X] = S[X] | 0xFF000000u;
        } else {
            for (int X = 0; X < Wd; ++X) {
                const int C = Columns[X];
                Line[X] = C >= 0 ? (Source[C] | 0xFF000000u) : Face;
            }
        }
        PrevRow = R;
        PrevLine = Line;
    }
}

void CanvasView::ClearView()
{
    // The screen is cleared of whatever was drawn over the picture; the picture itself stays and
    // is shown again at its actual size from the top left.
    picDisp->Image.fill(palette().window().color());
    MagnifyValue = 1;
    ScrollX = ScrollY = 0;
    ResetScrollBars();
    if (DIB.DIBBitsPtr()) {
        CanvasResize();
    } else {
        picDisp->Image = QImage();
        picDisp->hide();
        CurrentLayout = CanvasLayout();
        ColumnOf.clear();
        RowOf.clear();
    }
    update();
}

void CanvasView::ResetScrollBars()
{
    BarGuard = true;
    HsbDisp->setValue(0);
    VsbDisp->setValue(0);
    HsbDisp->hide();
    VsbDisp->hide();
    BarGuard = false;
}

void CanvasView::paintEvent(QPaintEvent*)
{
    // The control around the picture box is the window's face colour.
    QPainter P(this);
    P.fillRect(rect(), palette().window());
}

void CanvasView::resizeEvent(QResizeEvent*)
{
    CanvasResize();
}

void CanvasView::keyReleaseEvent(QKeyEvent* Event)
{
    emit KeyReleased(Event->key());
}

void CanvasView::wheelEvent(QWheelEvent* Event)
{
    const int Steps = Event->angleDelta().y() / 120;
    if (Event->modifiers() & Qt::ControlModifier) {
        if (Steps != 0)
            emit ZoomRequested(Steps);
        return;
    }
    if (Steps == 0)
        return;
    if (Event->modifiers() & Qt::ShiftModifier)
        SetScrollValues(ScrollX - Steps * 3 * HsbDisp->singleStep(), ScrollY, true, true);
    else
        SetScrollValues(ScrollX, ScrollY - Steps * 3 * VsbDisp->singleStep(), true, true);
}

bool CanvasView::eventFilter(QObject* Watched, QEvent* Event)
{
    if (Watched != picDisp)
        return QWidget::eventFilter(Watched, Event);
    const qreal Dpr = picDisp->Dpr();
    auto DevicePoint = [Dpr](QMouseEvent* M) {
        return QPoint(static_cast<int>(std::floor(M->position().x() * Dpr)),
                      static_cast<int>(std::floor(M->position().y() * Dpr)));
    };
    switch (Event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick: {
        auto* M = static_cast<QMouseEvent*>(Event);
        setFocus(Qt::MouseFocusReason);
        PictureMouseDown(M, DevicePoint(M));
        return true;
    }
    case QEvent::MouseMove: {
        auto* M = static_cast<QMouseEvent*>(Event);
        PictureMouseMove(M, DevicePoint(M));
        return true;
    }
    case QEvent::MouseButtonRelease: {
        auto* M = static_cast<QMouseEvent*>(Event);
        PictureMouseUp(M, DevicePoint(M));
        return true;
    }
    case QEvent::Wheel:
        wheelEvent(static_cast<QWheelEvent*>(Event));
        return true;
    default:
        return QWidget::eventFilter(Watched, Event);
    }
}

bool CanvasView::HandScrollPossible() const
{
    return CurrentLayout.ScrollMaxX > 0 || CurrentLayout.ScrollMaxY > 0;
}

void CanvasView::UpdateCursorOfView()
{
    picDisp->setCursor(HandDragging ? Qt::ClosedHandCursor
                                    : (HandScrollPossible() ? Qt::OpenHandCursor : Qt::ArrowCursor));
}

void CanvasView::PictureMouseDown(QMouseEvent* Event, QPoint Display)
{
    if (!DIB.DIBBitsPtr())
        return;
    if (Event->button() == Qt::RightButton) {
        if (ReportRightClick) {
            const QPoint P = DisplayToImage(Display);
            emit RightClickInScrollMode(P.x(), P.y(), DIB_XY_Color(P.x(), P.y()));
        }
        return;
    }
    if (Event->button() == Qt::LeftButton && HandScrollPossible()) {
        HandDragging = true;
        HandStart = Display;
        HandScrollX = ScrollX;
        HandScrollY = ScrollY;
        UpdateCursorOfView();
    }
}

void CanvasView::PictureMouseMove(QMouseEvent* Event, QPoint Display)
{
    if (!DIB.DIBBitsPtr())
        return;
    const QPoint P = DisplayToImage(Display);
    if (HandDragging && (Event->buttons() & Qt::LeftButton)) {
        SetScrollValues(HandScrollX - (Display.x() - HandStart.x()), HandScrollY - (Display.y() - HandStart.y()),
                        true, true);
    }
    if (MonitorXY && P.x() >= 0 && P.y() >= 0 && P.x() < DIB.DIBWidth() && P.y() < DIB.DIBHeight())
        emit PixelUnderMouse(P.x(), P.y(), DIB_XY_Color(P.x(), P.y()));
    if (NotifyMouseMove)
        emit CanvasMouseMoved(P.x(), P.y());
    if (ShowXYLines)
        picDisp->update();
    LastMouse = Display;
}

void CanvasView::PictureMouseUp(QMouseEvent*, QPoint)
{
    if (HandDragging) {
        HandDragging = false;
        UpdateCursorOfView();
    }
}

void CanvasView::PaintOverlay(QPainter& Painter)
{
    if (!ShowXYLines || LastMouse.x() < 0)
        return;
    Painter.setPen(QPen(QColor(128, 128, 128), 1, Qt::DotLine));
    Painter.drawLine(LastMouse.x(), 0, LastMouse.x(), picDisp->Image.height());
    Painter.drawLine(0, LastMouse.y(), picDisp->Image.width(), LastMouse.y());
}
