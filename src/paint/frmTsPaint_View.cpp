// The view commands of the toolbar: zoom, fit-in, the magnifying glass, the screen mode and the
// jumps to the picture's corners; and the commands that arrive with later windows.
#include <QLabel>
#include <QCheckBox>
#include <QFile>
#include <unordered_set>
#include <QComboBox>
#include <QMenu>
#include <QToolButton>

#include "PixelArray32.h"
#include "basMsgBox.h"
#include "basTsMainPro.h"
#include "frmTsMainPro.h"
#include "frmTsPaint.h"
#include "ucCanvas.h"

using namespace basMsgBox;

namespace {
constexpr int MaxMagnify = 8;
// The smallest regions the border and the drop shadow can work in.
constexpr int MinRegionForBorder = 10;
constexpr int MinRegionForShadow = 10;
}

void frmTsPaint::Do_cmdZoomClick(int Index)
{
    if (!Canvas->DIB.DIBBitsPtr())
        return;
    int Factor = Canvas->Magnify();
    if (Index == 0)
        Factor = std::min(MaxMagnify, Factor + 1);
    else if (Index == 1)
        Factor = std::max(1, Factor - 1);
    else
        Factor = 1;
    SetZoom(Factor);
}

void frmTsPaint::Do_cboMagnifyClick()
{
    frmTsMainPro* F = Frame();
    if (F && Canvas->DIB.DIBBitsPtr() && !SetZoom(F->cboMagnify->currentIndex() + 1))
        F->cboMagnify->setCurrentIndex(Canvas->Magnify() - 1);
}

bool frmTsPaint::SetZoom(int Factor)
{
    const QString Refusal = ucCanvas::MagnifyRefusalMessage(Canvas->DIB.DIBWidth(), Canvas->DIB.DIBHeight(), Factor);
    if (!Refusal.isEmpty()) {
        MsgBox(Refusal);
        return false;
    }
    // The glass works only on the picture at its actual size.
    if (Canvas->CanvasOp() == ucCanvas::OpGlass && Factor != 1)
        Canvas->setCanvasOp(ucCanvas::OpScroll);
    Canvas->setMagnify(static_cast<int16_t>(Factor));
    Canvas->setFitInView(false);
    if (frmTsMainPro* F = Frame()) {
        F->ckbFitIn->setChecked(false);
        F->cboMagnify->setCurrentIndex(Factor - 1);
    }
    UpdateDisplay();
    Do_UpdateZoomButtons();
    return true;
}

void frmTsPaint::Do_ckbFitInClick()
{
    frmTsMainPro* F = Frame();
    if (!F || !Canvas->DIB.DIBBitsPtr())
        return;
    if (Canvas->CanvasOp() == ucCanvas::OpGlass)
        Canvas->setCanvasOp(ucCanvas::OpScroll);
    Canvas->setFitInEvenIfSmaller(basTsMainPro::FitInEvenIfSmaller);
    Canvas->setFitInView(F->ckbFitIn->isChecked());
    UpdateDisplay();
    Do_UpdateZoomButtons();
}

void frmTsPaint::Do_cmdGlassClick()
{
    if (!Canvas->DIB.DIBBitsPtr())
        return;
    if (Canvas->CanvasOp() == ucCanvas::OpGlass) {
        Canvas->setCanvasOp(ucCanvas::OpScroll);
        Do_UpdateGlassButton();
        return;
    }
    const QString Refusal = Canvas->GlassRefusalMessage();
    if (!Refusal.isEmpty()) {
        MsgBox(Refusal);
        Do_UpdateGlassButton();
        return;
    }
    AbortRunningShape();
    if (frmTsMainPro* F = Frame()) {
        F->FlatAllToolsImages();
        Canvas->setMagnifyGlassFactor(static_cast<int16_t>(F->cboGlass->currentIndex() + 2));
    }
    Canvas->setCanvasOp(ucCanvas::OpGlass);
    Do_UpdateGlassButton();
}

void frmTsPaint::Do_cboGlassClick()
{
    if (frmTsMainPro* F = Frame())
        Canvas->setMagnifyGlassFactor(static_cast<int16_t>(F->cboGlass->currentIndex() + 2));
}

void frmTsPaint::Do_UpdateZoomButtons()
{
    frmTsMainPro* F = Frame();
    if (!F || F->cmdZoom.size() < 3)
        return;
    const bool Picture = Canvas->DIB.DIBBitsPtr() != nullptr;
    F->cmdZoom[0]->setEnabled(Picture && Canvas->Magnify() < MaxMagnify);
    F->cmdZoom[1]->setEnabled(Picture && Canvas->Magnify() > 1);
    F->cmdZoom[2]->setEnabled(Picture && (Canvas->Magnify() != 1 || Canvas->FitInView()));
}

void frmTsPaint::Do_UpdateGlassButton()
{
    if (frmTsMainPro* F = Frame()) {
        F->cmdGlass->setCheckable(true);
        F->cmdGlass->setChecked(Canvas->CanvasOp() == ucCanvas::OpGlass);
    }
}

void frmTsPaint::Do_UpdateModeChange()
{
    // The mode button turns view into paint and back.
    AbortRunningShape();
    const bool ToPaint = Canvas->CanvasScreenMode() == 0;
    Canvas->setCanvasScreenMode(ToPaint ? 1 : 0);
    if (frmTsMainPro* F = Frame()) {
        if (!ToPaint)
            F->FlatAllToolsImages();
        F->cmdMode->setCheckable(true);
        F->cmdMode->setChecked(ToPaint);
    }
    Canvas->setCanvasOp(ucCanvas::OpScroll);
    UpdateAllowableMenusForScreenMode();
}

void frmTsPaint::UpdateAllowableMenusForScreenMode()
{
    const bool Paint = Canvas->CanvasScreenMode() != 0;
    for (const char* Name : {"mnuEditCut", "mnuEditPaste", "mnuEditPasteTransparent"})
        if (QAction* Action = findChild<QAction*>(QString::fromLatin1(Name)))
            Action->setVisible(Paint || QString::fromLatin1(Name) != "mnuEditCut");
    updateEditButtons();
}

void frmTsPaint::OnOffQuickScroll()
{
    if (frmTsMainPro* F = Frame()) {
        F->imgUpperLeft->setEnabled(Canvas->DIB.DIBBitsPtr() != nullptr);
        F->imgLowerRight->setEnabled(Canvas->DIB.DIBBitsPtr() != nullptr);
    }
}

void frmTsPaint::Do_imgUpperLeftClick()
{
    Canvas->SetScrollValues(0, 0, true, true);
}

void frmTsPaint::Do_imgLowerRightClick()
{
    int X = 0, Y = 0;
    Canvas->GetScrollMaxInfo(X, Y);
    Canvas->SetScrollValues(X, Y, true, true);
}

void frmTsPaint::Do_imgPanoramicClick()
{
    if (QWidget* Panoramic = basTsMainPro::CreateForm(QStringLiteral("frmTsPanoramic")))
        Panoramic->show();
}

void frmTsPaint::Do_cmdRegionOperation(int Index)
{
    if (!Canvas->HasRegion()) {
        MsgBox(QStringLiteral("Currently there is no region on image yet."));
        return;
    }
    const QRect Box = Canvas->RegionImageBox();
    if (Index == 0 && (Box.width() < MinRegionForBorder || Box.height() < MinRegionForBorder)) {
        MsgBox(QStringLiteral("Current region too small to create border."));
        return;
    }
    if (!QRect(0, 0, Canvas->DIB.DIBWidth(), Canvas->DIB.DIBHeight()).contains(Box)) {
        MsgBox(QStringLiteral("Region extended beyond canvas area, extra operation unallowed."));
        return;
    }
    // A drop shadow needs room for its offset inside the region.
    if (Index == 1 && (Box.width() < MinRegionForShadow || Box.height() < MinRegionForShadow)) {
        MsgBox(QStringLiteral("Width or height of region incompatible."));
        return;
    }
    if (QWidget* Dialog = basTsMainPro::CreateForm(QStringLiteral("frmTsRegionOp"))) {
        Dialog->setProperty("Operation", Index);
        Dialog->show();
    }
}

// Commands whose windows and filters arrive with their own parts of the program: they answer, and
// do nothing until then.
void frmTsPaint::Do_mnuEffectsSubClick(int) {}

void frmTsPaint::do_cmdPalette256Click()
{
    // The chart shows the picture's own colours when it has 256 or fewer; otherwise the user may
    // make or load a palette in the chart instead.
    auto OpenChart = [](basTsMainPro::ColorChartMode Mode) {
        basTsMainPro::UnloadForm(QStringLiteral("frmTsColorChart"));
        basTsMainPro::ChartMode = Mode;
        if (QWidget* Chart = basTsMainPro::CreateForm(QStringLiteral("frmTsColorChart"))) {
            Chart->show();
            Chart->raise();
        }
    };
    const QString Note = QStringLiteral("\n(To reduce colors of current image, use Color Reduction menu.)");
    if (!Canvas->DIB.DIBBitsPtr()) {
        if (MsgBox(QStringLiteral("No image loaded yet.  Create new/load existing palette file?") + Note,
                   MsgBoxButtons::YesNo, MsgBoxIcon::Question) == MsgBoxResult::Yes)
            OpenChart(basTsMainPro::ColorChartMode::Palette256);
        return;
    }
    std::vector<uint32_t> Colors;
    if (!PictureColors(Colors)) {
        if (MsgBox(QStringLiteral("Current image not of 256 or less colors.   Create new/load existing palette file?") +
                       Note,
                   MsgBoxButtons::YesNo, MsgBoxIcon::Question) == MsgBoxResult::Yes)
            OpenChart(basTsMainPro::ColorChartMode::Palette256);
        return;
    }
    // The work file, in the JASC-PAL form the chart reads: always 256 lines, black after the last colour.
    const QString Path = basTsMainPro::TempFolder + QStringLiteral("tmpGIFpal.pal");
    QFile File(Path);
    if (!File.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return;
    QByteArray Text = "JASC-PAL\r\n0100\r\n256\r\n";
    for (int I = 0; I < 256; ++I) {
        const uint32_t C = I < static_cast<int>(Colors.size()) ? Colors[I] : 0;
        Text += QByteArray::number(C & 255) + ' ' + QByteArray::number((C >> 8) & 255) + ' ' +
                QByteArray::number((C >> 16) & 255) + "\r\n";
    }
    if (File.write(Text) != Text.size())
        return;
    File.close();
    basTsMainPro::ChartPaletteFile = Path;
    OpenChart(basTsMainPro::ColorChartMode::PictureOwn);
}

bool frmTsPaint::PictureColors(std::vector<uint32_t>& Colors) const
{
    // The picture's colours in the order they first appear, row by row; false beyond 256.
    PixelArray32 Pixels(Canvas->DIB);
    if (!Pixels.Valid())
        return false;
    std::unordered_set<uint32_t> Seen;
    for (int Y = 0; Y < Pixels.Height(); ++Y) {
        const uint32_t* Row = Pixels.Row(Y);
        for (int X = 0; X < Pixels.Width(); ++X) {
            const uint32_t C = PixelArray32::ToColor(Row[X]) & 0xFFFFFF;
            if (Seen.insert(C).second) {
                if (Seen.size() > 256)
                    return false;
                Colors.push_back(C);
            }
        }
    }
    return true;
}
