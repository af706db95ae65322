#include "frmTsPanoramic.h"

#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMouseEvent>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "CanvasView.h"
#include "PictureBox.h"
#include "PixelArray32.h"
#include "basTsMainPro.h"
#include "frmTsMainPro.h"

namespace {

constexpr int StartWidth = 240;
constexpr int StartHeight = 180;
// Distance from the document area's top right corner when the view first opens.
constexpr int StartInset = 16;

int64_t FloorDiv(int64_t A, int64_t B)
{
    return A / B - ((A % B != 0) && ((A < 0) != (B < 0)) ? 1 : 0);
}

int64_t CeilDiv(int64_t A, int64_t B)
{
    return -FloorDiv(-A, B);
}

} // namespace

frmTsPanoramic::frmTsPanoramic(QWidget* Parent) : QWidget(Parent, Qt::Tool)
{
    setObjectName(QStringLiteral("frmTsPanoramic"));
    setWindowTitle(tr("Panoramic View"));
    auto* Box = new QVBoxLayout(this);
    Box->setContentsMargins(0, 0, 0, 0);
    picPanoramic = new QWidget(this);
    picPanoramic->setObjectName(QStringLiteral("picPanoramic"));
    picPanoramic->setAttribute(Qt::WA_OpaquePaintEvent);
    picPanoramic->setCursor(Qt::PointingHandCursor);
    picPanoramic->setToolTip(tr("Click or drag to move the view of the picture"));
    picPanoramic->setMinimumSize(48, 36);
    picPanoramic->installEventFilter(this);
    Box->addWidget(picPanoramic);
    resize(StartWidth, StartHeight);

    if (frmTsMainPro* Frame = frmTsMainPro::Instance()) {
        connect(Frame->MdiArea, &QMdiArea::subWindowActivated, this, &frmTsPanoramic::ActiveDocumentChanged);
        FollowDocument(Frame->ActiveChild());
    }
}

frmTsPanoramic::~frmTsPanoramic() = default;

void frmTsPanoramic::Register()
{
    basTsMainPro::RegisterFormFactory(QStringLiteral("frmTsPanoramic"), []() -> QWidget* {
        // One view for the whole program: a second request brings the open one forward.
        if (QWidget* Open = basTsMainPro::FindForm(QStringLiteral("frmTsPanoramic"))) {
            Open->raise();
            return Open;
        }
        auto* View = new frmTsPanoramic(frmTsMainPro::Instance());
        View->setAttribute(Qt::WA_DeleteOnClose);
        return View;
    });
}

void frmTsPanoramic::ActiveDocumentChanged()
{
    frmTsMainPro* Frame = frmTsMainPro::Instance();
    if (Frame == nullptr)
        return;
    // The area reports no active window while this view has the focus; the document stays.
    QWidget* Child = Frame->ActiveChild();
    if (Child != nullptr || Frame->MdiArea->subWindowList().isEmpty())
        FollowDocument(Child);
}

void frmTsPanoramic::FollowDocument(QWidget* Document)
{
    CanvasView* View = Document ? Document->findChild<CanvasView*>(QStringLiteral("Canvas")) : nullptr;
    if (Document == CurrentDocument && View == CurrentCanvas)
        return;
    if (CurrentCanvas) {
        disconnect(CurrentCanvas, nullptr, this, nullptr);
        CurrentCanvas->removeEventFilter(this);
        CurrentCanvas->picDisp->removeEventFilter(this);
    }
    CurrentDocument = Document;
    CurrentCanvas = View;
    if (View) {
        connect(View, &CanvasView::ViewChanged, this, &frmTsPanoramic::UpdateMark);
        // Closing the document takes its canvas: the view goes blank.
        connect(View, &QObject::destroyed, this, [this] {
            Layout();
            UpdateMark();
            picPanoramic->update();
        });
        // Zoom, fit-in and a new size of the document window repaint the canvas without a view
        // event; the mark follows them from there.
        View->installEventFilter(this);
        View->picDisp->installEventFilter(this);
    }
    RefreshPicture();
}

CanvasView* frmTsPanoramic::Canvas() const
{
    return CurrentCanvas;
}

void frmTsPanoramic::RefreshPicture()
{
    // The scaled copy is made when the view paints next, so a burst of changes costs one copy.
    ThumbStale = true;
    Layout();
    UpdateMark();
    picPanoramic->update();
}

void frmTsPanoramic::Layout()
{
    const QRect OldBox = ThumbBox;
    const int AreaW = picPanoramic->width();
    const int AreaH = picPanoramic->height();
    const bool HasPicture = CurrentCanvas && CurrentCanvas->DIB.DIBBitsPtr() != nullptr;
    if (!HasPicture || AreaW < 1 || AreaH < 1) {
        ThumbBox = QRect();
        PictureSize = QSize();
        Thumbnail = QImage();
        return;
    }
    const int64_t W = CurrentCanvas->DIB.DIBWidth();
    const int64_t H = CurrentCanvas->DIB.DIBHeight();
    int64_t ThumbW = AreaW;
    int64_t ThumbH = AreaH;
    if (AreaW * H <= AreaH * W)
        ThumbH = std::max<int64_t>(1, AreaW * H / W);
    else
        ThumbW = std::max<int64_t>(1, AreaH * W / H);
    ThumbBox = QRect(static_cast<int>((AreaW - ThumbW) / 2), static_cast<int>((AreaH - ThumbH) / 2),
                     static_cast<int>(ThumbW), static_cast<int>(ThumbH));
    const QSize NewPictureSize(static_cast<int>(W), static_cast<int>(H));
    if (ThumbBox.size() != OldBox.size() || NewPictureSize != PictureSize)
        ThumbStale = true;
    PictureSize = NewPictureSize;
}

void frmTsPanoramic::BuildThumbnail()
{
    ThumbStale = false;
    Thumbnail = QImage();
    if (!CurrentCanvas || ThumbBox.isEmpty())
        return;
    clsDIB& Dib = CurrentCanvas->DIB;
    PixelArray32 Pixels(Dib);
    if (!Pixels.Valid())
        return;
    const int W = Pixels.Width();
    const int H = Pixels.Height();
    // A view of the picture's own memory; rows stored bottom-up are turned over in the copy.
    const bool TopDown = H < 2 || Pixels.Row(1) > Pixels.Row(0);
    const auto* First = reinterpret_cast<const uchar*>(TopDown ? Pixels.Row(0) : Pixels.Row(H - 1));
    QImage Memory(First, W, H, Dib.BytesPerScanline(), QImage::Format_RGB32);
    if (!TopDown)
        Memory = Memory.mirrored(false, true);
    const bool Shrinks = ThumbBox.width() < W || ThumbBox.height() < H;
    if (ThumbBox.size() == QSize(W, H))
        Thumbnail = Memory.copy();
    else
        Thumbnail = Memory.scaled(ThumbBox.size(), Qt::IgnoreAspectRatio,
                                  Shrinks ? Qt::SmoothTransformation : Qt::FastTransformation);
    // The fourth byte of a pixel is not an alpha value here; the copy must be opaque.
    for (int Y = 0; Y < Thumbnail.height(); ++Y) {
        auto* Row = reinterpret_cast<QRgb*>(Thumbnail.scanLine(Y));
        for (int X = 0; X < Thumbnail.width(); ++X)
            Row[X] |= 0xFF000000u;
    }
}

void frmTsPanoramic::UpdateMark()
{
    const QRect Old = Marked;
    Marked = QRect();
    const bool HasPicture = CurrentCanvas && CurrentCanvas->DIB.DIBBitsPtr() != nullptr;
    if (HasPicture && QSize(CurrentCanvas->DIB.DIBWidth(), CurrentCanvas->DIB.DIBHeight()) != PictureSize)
        Layout();
    if (HasPicture && !ThumbBox.isEmpty()) {
        int X1 = 0, Y1 = 0, X2 = 0, Y2 = 0;
        CurrentCanvas->GetVisibleInfo(X1, Y1, X2, Y2);
        const int64_t W = PictureSize.width();
        const int64_t H = PictureSize.height();
        const int64_t TW = ThumbBox.width();
        const int64_t TH = ThumbBox.height();
        // The smallest box of whole view pixels that covers the visible picture pixels.
        const int64_t Left = FloorDiv(X1 * TW, W);
        const int64_t Top = FloorDiv(Y1 * TH, H);
        const int64_t Right = std::max(Left, CeilDiv((X2 + 1) * TW, W) - 1);
        const int64_t Bottom = std::max(Top, CeilDiv((Y2 + 1) * TH, H) - 1);
        Marked = QRect(QPoint(static_cast<int>(Left), static_cast<int>(Top)),
                       QPoint(static_cast<int>(Right), static_cast<int>(Bottom)))
                     .translated(ThumbBox.topLeft());
    }
    if (Marked != Old)
        picPanoramic->update();
}

QPoint frmTsPanoramic::PictureAt(QPointF Point) const
{
    if (ThumbBox.isEmpty() || PictureSize.isEmpty())
        return QPoint();
    const double X = std::floor((Point.x() - ThumbBox.x()) * PictureSize.width() / ThumbBox.width());
    const double Y = std::floor((Point.y() - ThumbBox.y()) * PictureSize.height() / ThumbBox.height());
    return QPoint(static_cast<int>(std::clamp(X, 0.0, PictureSize.width() - 1.0)),
                  static_cast<int>(std::clamp(Y, 0.0, PictureSize.height() - 1.0)));
}

void frmTsPanoramic::CentreCanvasOn(QPoint Point)
{
    if (!CurrentCanvas || !CurrentCanvas->DIB.DIBBitsPtr() || CurrentCanvas->FitInView())
        return;
    const int M = CurrentCanvas->Magnify();
    const QRect Disp = CurrentCanvas->Layout().Disp;
    // The middle of the picture pixel goes to the middle of the picture box.
    CurrentCanvas->SetScrollValues(Point.x() * M + M / 2 - Disp.width() / 2,
                                   Point.y() * M + M / 2 - Disp.height() / 2, true, true);
}

void frmTsPanoramic::MouseAt(QPointF Point)
{
    if (ThumbBox.isEmpty())
        return;
    CentreCanvasOn(PictureAt(Point));
}

void frmTsPanoramic::PaintPicture()
{
    QPainter Painter(picPanoramic);
    Painter.fillRect(picPanoramic->rect(), palette().color(QPalette::Dark));
    if (ThumbBox.isEmpty())
        return;
    if (ThumbStale)
        BuildThumbnail();
    Painter.drawImage(ThumbBox.topLeft(), Thumbnail);
    if (!Marked.isEmpty()) {
        Painter.setPen(QPen(QColor::fromRgb(MarkColor), 1));
        Painter.setBrush(Qt::NoBrush);
        Painter.drawRect(Marked.adjusted(0, 0, -1, -1));
    }
}

bool frmTsPanoramic::eventFilter(QObject* Watched, QEvent* Event)
{
    if (Watched == picPanoramic) {
        switch (Event->type()) {
        case QEvent::Paint:
            PaintPicture();
            return true;
        case QEvent::Resize:
            Layout();
            UpdateMark();
            break;
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick: {
            auto* Mouse = static_cast<QMouseEvent*>(Event);
            if (Mouse->button() == Qt::LeftButton) {
                Dragging = true;
                MouseAt(Mouse->position());
            }
            return true;
        }
        case QEvent::MouseMove: {
            auto* Mouse = static_cast<QMouseEvent*>(Event);
            if (Dragging && (Mouse->buttons() & Qt::LeftButton))
                MouseAt(Mouse->position());
            return true;
        }
        case QEvent::MouseButtonRelease:
            Dragging = false;
            return true;
        default:
            break;
        }
    } else if (CurrentCanvas && (Watched == CurrentCanvas || Watched == CurrentCanvas->picDisp)) {
        if (Event->type() == QEvent::Paint || Event->type() == QEvent::Resize)
            UpdateMark();
    }
    return QWidget::eventFilter(Watched, Event);
}

void frmTsPanoramic::showEvent(QShowEvent* Event)
{
    QWidget::showEvent(Event);
    if (Placed)
        return;
    Placed = true;
    // First shown at the top right of the document area, where it hides the least of the picture.
    if (frmTsMainPro* Frame = frmTsMainPro::Instance()) {
        const QPoint Corner = Frame->MdiArea->mapToGlobal(QPoint(Frame->MdiArea->width(), 0));
        move(Corner.x() - frameGeometry().width() - StartInset, Corner.y() + StartInset);
    }
}
