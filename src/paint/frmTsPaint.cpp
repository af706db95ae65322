#include "frmTsPaint.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QMenuBar>
#include <QProgressBar>
#include <QTimer>
#include <QVBoxLayout>

#include "basMsgBox.h"
#include "basTsMainPro.h"
#include "frmTsMainPro.h"
#include "ucCanvas.h"

using namespace basMsgBox;

frmTsPaint::frmTsPaint(QWidget* Parent) : QWidget(Parent)
{
    setObjectName(QStringLiteral("frmTsPaint"));
    auto* Layout = new QVBoxLayout(this);
    Layout->setContentsMargins(0, 0, 0, 0);
    Canvas = new ucCanvas(this);
    Canvas->setObjectName(QStringLiteral("Canvas"));
    Layout->addWidget(Canvas);
    setMinimumSize(120, 90);
    BuildMenus();

    connect(Canvas, &ucCanvas::PictureChanged, this, &frmTsPaint::OnPictureChanged);
    connect(Canvas, &ucCanvas::CanvasEdgeDragEnded, this, &frmTsPaint::ShowSizePanels);
    connect(Canvas, &ucCanvas::CanvasEdgeDragging, this, [this](int W, int H) {
        if (frmTsMainPro* F = Frame())
            F->StatusPanel[1]->setText(QStringLiteral("%1 x %2").arg(W).arg(H));
    });
    connect(Canvas, &ucCanvas::DIBProgress, this, &frmTsPaint::Canvas_DIBProgress);
    connect(Canvas, &ucCanvas::DIBProgressEnd, this, &frmTsPaint::Canvas_DIBProgressEnd);
    connect(Canvas, &ucCanvas::ZoomRequested, this, [this](int Steps) { Do_cmdZoomClick(Steps > 0 ? 0 : 1); });
    connect(Canvas, &ucCanvas::KeyReleased, this, [] { basTsMainPro::CloseToolWindows(); });
    connect(Canvas, &ucCanvas::OperationStarting, this, [this] {
        if (frmTsMainPro* F = Frame())
            F->StatusPanel[0]->clear();
    });
    connect(Canvas, &ucCanvas::ColorPicked, this, [this](uint32_t Color, bool Second) {
        (Second ? basTsMainPro::ColorSecond : basTsMainPro::ColorFirst) = Color;
        if (frmTsMainPro* F = Frame())
            F->updateColorToUse();
    });
    connect(Canvas, &ucCanvas::PixelUnderMouse, this, [this](int X, int Y, uint32_t Color) {
        if (frmTsMainPro* F = Frame())
            F->StatusPanel[2]->setText(QStringLiteral("[%1, %2]  RGB(%3, %4, %5)")
                                           .arg(X)
                                           .arg(Y)
                                           .arg(Color & 255)
                                           .arg((Color >> 8) & 255)
                                           .arg((Color >> 16) & 255));
    });
    connect(Canvas, &ucCanvas::LineLengthAndAngle, this, [this](int X, int Y, double L, double A) {
        if (frmTsMainPro* F = Frame())
            F->StatusPanel[0]->setText(QStringLiteral("Start [%1, %2]   L=%3   A=%4")
                                           .arg(X)
                                           .arg(Y)
                                           .arg(L, 0, 'f', 1)
                                           .arg(A, 0, 'f', 1));
    });
    connect(Canvas, &ucCanvas::RegionStartAndSize, this, [this](int X, int Y, int W, int H) {
        if (frmTsMainPro* F = Frame())
            F->StatusPanel[0]->setText(QStringLiteral("Start [%1, %2]   W=%3 H=%4").arg(X).arg(Y).arg(W).arg(H));
    });
    connect(Canvas, &ucCanvas::ArcCentreAndRadius, this, [this](int X, int Y, double R) {
        if (frmTsMainPro* F = Frame())
            F->StatusPanel[0]->setText(QStringLiteral("]  C=[%1, %2]  R=%3").arg(X).arg(Y).arg(R, 0, 'f', 1));
    });
    connect(Canvas, &ucCanvas::EllipseRadii, this, [this](int X, int Y, int W, int H) {
        if (frmTsMainPro* F = Frame())
            F->StatusPanel[0]->setText(
                QStringLiteral("Start [%1, %2]  Radius    w=%3  h=%4").arg(X).arg(Y).arg(W).arg(H));
    });
    for (auto Signal : {&ucCanvas::RegionMade, &ucCanvas::RegionDropped, &ucCanvas::PolygonFinished,
                        &ucCanvas::BezierFinished})
        connect(Canvas, Signal, this, &frmTsPaint::updateEditButtons);

    Undo.Yield = [] { QApplication::processEvents(QEventLoop::ExcludeUserInputEvents); };
    Undo.Busy = [this](bool On) {
        Busy = On;
        DocumentMenuBar->setEnabled(!On);
    };
}

frmTsPaint::~frmTsPaint() = default;

void frmTsPaint::Register()
{
    basTsMainPro::RegisterFormFactory(QStringLiteral("frmTsPaint"), [] { return new frmTsPaint; });
}

frmTsMainPro* frmTsPaint::Frame() const
{
    return frmTsMainPro::Instance();
}

int frmTsPaint::Slot() const
{
    bool Ok = false;
    const int N = property("Tag").toString().toInt(&Ok);
    return Ok ? N : -1;
}

void frmTsPaint::MarkDirty(bool Value)
{
    std::vector<basTsMainPro::DocSlot>& Slots = basTsMainPro::DocSlots();
    const int N = Slot();
    if (N >= 0 && N < static_cast<int>(Slots.size()))
        Slots[N].Dirty = Value;
}

bool frmTsPaint::Dirty() const
{
    const std::vector<basTsMainPro::DocSlot>& Slots = basTsMainPro::DocSlots();
    const int N = Slot();
    return N >= 0 && N < static_cast<int>(Slots.size()) && Slots[N].Dirty;
}

bool frmTsPaint::RegionExists() const
{
    return Canvas->HasRegion();
}

void frmTsPaint::ApplyOptions()
{
    Canvas->UseAlternativeRegionMarquee = basTsMainPro::UseAlternativeMarquee;
    Canvas->setSuspendCanvasResizeByEdgeDragging(basTsMainPro::SuspendCanvasResize);
    Canvas->SuspendRegionResizeByEdgeDragging = basTsMainPro::SuspendRegionResize;
    if (Canvas->FitInEvenIfSmaller() != basTsMainPro::FitInEvenIfSmaller) {
        Canvas->setFitInEvenIfSmaller(basTsMainPro::FitInEvenIfSmaller);
        if (Canvas->FitInView())
            UpdateDisplay();
    }
}

void frmTsPaint::showEvent(QShowEvent* Event)
{
    QWidget::showEvent(Event);
    if (!FirstActivationDone) {
        FirstActivationDone = true;
        // After the frame has placed the window, so the canvas knows its size.
        QTimer::singleShot(0, this, &frmTsPaint::FirstActivation);
    }
}

bool frmTsPaint::AskSaveCurr()
{
    if (!Dirty())
        return true;
    return MsgBox(QStringLiteral("Current picture not saved yet.  Proceed still?"), MsgBoxButtons::YesNo,
                  MsgBoxIcon::Question) == MsgBoxResult::Yes;
}

void frmTsPaint::closeEvent(QCloseEvent* Event)
{
    if (Busy || !AskSaveCurr()) {
        Event->ignore();
        return;
    }
    Canvas->CanvasCleanse();
    Undo.DeleteAll();
    MarkDirty(false);
    const int N = Slot();
    if (N >= 0 && N < static_cast<int>(basTsMainPro::DocSlots().size()))
        basTsMainPro::DocSlots()[N].Closed = true;
    Event->accept();
}

void frmTsPaint::UpdateDisplay()
{
    Canvas->CanvasResize();
    ShowSizePanels();
}

void frmTsPaint::ShowSizePanels()
{
    frmTsMainPro* F = Frame();
    if (!F || !Canvas->DIB.DIBBitsPtr())
        return;
    const int W = Canvas->DIB.DIBWidth();
    const int H = Canvas->DIB.DIBHeight();
    F->StatusPanel[1]->setText(QStringLiteral("%1 x %2").arg(W).arg(H));
    F->StatusPanel[1]->setToolTip(QStringLiteral("Net image size %1 x %2, on screen %3 x %4")
                                      .arg(W)
                                      .arg(H)
                                      .arg(W * Canvas->Magnify())
                                      .arg(H * Canvas->Magnify()));
}

void frmTsPaint::MakePicSize()
{
    UpdateDisplay();
}

// Progress of the member objects and the canvas goes to the frame's bar.
void frmTsPaint::cPAL_Progress(int Percent)
{
    Canvas_DIBProgress(Percent);
}
void frmTsPaint::cPAL_ProgressEnd()
{
    Canvas_DIBProgressEnd();
}
void frmTsPaint::cPalDither_Progress(int Percent)
{
    Canvas_DIBProgress(Percent);
}
void frmTsPaint::cPalDither_ProgressEnd()
{
    Canvas_DIBProgressEnd();
}
void frmTsPaint::cDIBFilter_Progress(int Percent)
{
    Canvas_DIBProgress(Percent);
}
void frmTsPaint::cDIBFilter_ProgressEnd()
{
    Canvas_DIBProgressEnd();
}

void frmTsPaint::Canvas_DIBProgress(int Percent)
{
    if (frmTsMainPro* F = Frame()) {
        F->Progress->setValue(std::clamp(Percent, 0, 100));
    }
}

void frmTsPaint::Canvas_DIBProgressEnd()
{
    if (frmTsMainPro* F = Frame()) {
        F->Progress->setValue(0);
    }
}
