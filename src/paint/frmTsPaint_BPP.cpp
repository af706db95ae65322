// The BPP menu: the picture's colours reduced to a palette or to black and white, shown at once
// and kept as an undo state.
#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>

#include "basMsgBox.h"
#include "basReduce.h"
#include "basTsMainPro.h"
#include "frmTsPaint.h"
#include "ucCanvas.h"

using namespace basMsgBox;

namespace {

using basReduce::PaletteKind;

struct ReductionEntry {
    const char* Caption;
    int Bpp;
    PaletteKind Palette;
    int Level;
};
const ReductionEntry Reductions[] = {
    {"256 Colors, &Optimal Palette", 8, PaletteKind::Optimal, 0},
    {"256 Colors, &Exact Palette  (First 256 Colors)", 8, PaletteKind::Exact, 0},
    {"&16 Standard Colors", 4, PaletteKind::Standard16, 0},
    {"256 &Grays", 8, PaletteKind::Grays, 0},
    {"16 G&rays", 4, PaletteKind::Grays, 0},
    {"&Halftone 8 Colors", 8, PaletteKind::Halftone, 0},
    {"Halftone 27 Colors", 8, PaletteKind::Halftone, 1},
    {"Halftone 64 Colors", 8, PaletteKind::Halftone, 2},
    {"Halftone 125 Colors", 8, PaletteKind::Halftone, 3},
    {"Halftone 216 Colors", 8, PaletteKind::Halftone, 4},
    {"&Websafe 216 Colors", 8, PaletteKind::Websafe, 0},
};
constexpr int WebsafeEntry = 10;

const char* const BlackAndWhite[] = {"Black && White, &Stucki", "Black && White, &Floyd-Steinberg",
                                     "Black && White, &Burke", "Black && White, &Ordered"};

} // namespace

void frmTsPaint::BuildBPPMenu()
{
    QMenu* Menu = DocumentMenuBar->addMenu(tr("&BPP"));
    Menu->setObjectName(QStringLiteral("mnuBPP"));
    for (int I = 0; I < static_cast<int>(std::size(Reductions)); ++I)
        connect(AddAction(Menu, QStringLiteral("mnuColorReductionSub_%1").arg(I), tr(Reductions[I].Caption)),
                &QAction::triggered, this, [this, I] { mnuColorReductionSub_Click(I); });
    Menu->addSeparator();
    for (int I = 0; I < static_cast<int>(std::size(BlackAndWhite)); ++I)
        connect(AddAction(Menu, QStringLiteral("mnuColorReductionBWSub_%1").arg(I), tr(BlackAndWhite[I])),
                &QAction::triggered, this, [this, I] { mnuColorReductionBWSub_Click(I); });
}

void frmTsPaint::mnuColorReductionSub_Click(int Index)
{
    if (!Canvas->DIB.DIBBitsPtr() || Index < 0 || Index >= static_cast<int>(std::size(Reductions)))
        return;
    const QString Question = Index == WebsafeEntry ? QStringLiteral("Proceed to convert websafe?")
                                                   : QStringLiteral("Proceed to change BPP?");
    if (MsgBox(Question, MsgBoxButtons::YesNo, MsgBoxIcon::Question) != MsgBoxResult::Yes)
        return;
    basReduce::Recipe Plan;
    Plan.Bpp = Reductions[Index].Bpp;
    Plan.Palette = Reductions[Index].Palette;
    Plan.HalftoneLevel = Reductions[Index].Level;
    ReduceColors(Plan);
}

void frmTsPaint::mnuColorReductionBWSub_Click(int Index)
{
    if (!Canvas->DIB.DIBBitsPtr() || Index < 0 || Index >= static_cast<int>(std::size(BlackAndWhite)))
        return;
    if (MsgBox(QStringLiteral("Proceed to convert to B&W?"), MsgBoxButtons::YesNo, MsgBoxIcon::Question) !=
        MsgBoxResult::Yes)
        return;
    basReduce::Recipe Plan;
    Plan.Bpp = 1;
    Plan.Dither = static_cast<basReduce::BWMethod>(Index);
    ReduceColors(Plan);
}

void frmTsPaint::ReduceColors(const basReduce::Recipe& Plan)
{
    AbortRunningShape();
    if (Canvas->HasRegion())
        Canvas->DropRegion();
    // The reducers work on a bottom-up surface, the order of a file's rows.
    clsDIB Work;
    const int W = Canvas->DIB.DIBWidth(), H = Canvas->DIB.DIBHeight();
    if (!Work.CreateBlankDIB(W, H, 32, 0xFFFFFF, false) ||
        !BitBlt(Work.DIBhDC(), 0, 0, W, H, Canvas->DIB.DIBhDC(), 0, 0, SRCCOPY))
        return;
    cPal.Progress = [this](int32_t Percent) { cPAL_Progress(Percent); };
    cPal.ProgressEnd = [this] { cPAL_ProgressEnd(); };
    cPalDither.Progress = [this](int32_t Percent) { cPalDither_Progress(Percent); };
    cPalDither.ProgressEnd = [this] { cPalDither_ProgressEnd(); };
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const bool Done = basReduce::Reduce(Work, Plan, cPal, cPalDither);
    QApplication::restoreOverrideCursor();
    Canvas_DIBProgressEnd();
    if (!Done || !Canvas->SetPicture(Work))
        return;
    Canvas->CanvasPicPaint();
    MarkDirty(true);
    SaveUndoState();
}
