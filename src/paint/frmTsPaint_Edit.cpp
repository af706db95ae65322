// Undo and redo, the Edit menu, and the picture's changes as the canvas reports them.
#include <QApplication>
#include <QClipboard>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QImage>
#include <QToolButton>

#include "PixelArray32.h"
#include "basMsgBox.h"
#include "basTsMainPro.h"
#include "frmTsMainPro.h"
#include "frmTsPaint.h"
#include "ucCanvas.h"

using namespace basMsgBox;

namespace {

constexpr int MaxSide = 10000;
constexpr long long MaxPixels = 15000000;

// Buttons of the frame's edit toolbar, by index.
enum EditButton { UndoAllButton, UndoButton, RedoButton, CutButton, CopyButton, PasteButton, PasteTransparentButton };

} // namespace

void frmTsPaint::OnPictureChanged()
{
    if (IgnoreChanges)
        return;
    MarkDirty(true);
    SaveUndoState();
    // The overview follows the picture.
    if (QWidget* Panoramic = basTsMainPro::FindForm(QStringLiteral("frmTsPanoramic")))
        QMetaObject::invokeMethod(Panoramic, "RefreshPicture");
}

void frmTsPaint::SaveUndoState()
{
    if (!Canvas->DIB.DIBBitsPtr())
        return;
    Undo.SaveUndoState(Canvas->DIB);
    updateEditButtons();
}

void frmTsPaint::updateEditButtons()
{
    const bool HasPicture = Canvas->DIB.DIBBitsPtr() != nullptr;
    const bool States[] = {Undo.CanUndoAll(), Undo.CanUndo(), Undo.CanRedo(), HasPicture && Canvas->HasRegion(),
                           HasPicture, HasPicture, HasPicture};
    for (size_t I = 0; I < mnuEditSub.size() && I < std::size(States); ++I)
        mnuEditSub[I]->setEnabled(States[I] && !Busy);
    if (frmTsMainPro* F = Frame()) {
        if (F->ActiveChild() != this)
            return;
        for (size_t I = 0; I < std::size(States) && I < F->cmdEditTB.size(); ++I)
            F->cmdEditTB[I]->setEnabled(States[I] && !Busy);
    }
}

void frmTsPaint::DropForUndo()
{
    // The state to come replaces the picture: a region or a glass goes without being merged.
    AbortRunningShape();
    if (Canvas->HasRegion()) {
        // The canvas reports the lifted region's place as a change; it is no state of its own.
        const bool Was = IgnoreChanges;
        IgnoreChanges = true;
        Canvas->DiscardRegion();
        IgnoreChanges = Was;
    }
    if (Canvas->CanvasOp() == ucCanvas::OpGlass)
        Canvas->setCanvasOp(ucCanvas::OpScroll);
}

void frmTsPaint::LoadUndoStateInto(bool Loaded, int OldWidth, int OldHeight)
{
    if (!Loaded)
        return;
    if (Canvas->DIB.DIBWidth() != OldWidth || Canvas->DIB.DIBHeight() != OldHeight)
        Canvas->SetScrollValues(0, 0);
    Canvas->setCanvasOp(ucCanvas::OpScroll);
    if (frmTsMainPro* F = Frame())
        F->FlatAllToolsImages();
    UpdateDisplay();
    MarkDirty(true);
    updateEditButtons();
    if (QWidget* Panoramic = basTsMainPro::FindForm(QStringLiteral("frmTsPanoramic")))
        QMetaObject::invokeMethod(Panoramic, "RefreshPicture");
}

void frmTsPaint::mnuEditUndo_Click()
{
    if (Busy || !Undo.CanUndo())
        return;
    basTsMainPro::CloseToolWindows();
    if (frmTsMainPro* F = Frame())
        F->StatusPanel[0]->clear();
    DropForUndo();
    const int W = Canvas->DIB.DIBWidth(), H = Canvas->DIB.DIBHeight();
    Canvas->setCanvasOp(ucCanvas::OpScroll);
    LoadUndoStateInto(Undo.Undo(Canvas->DIB), W, H);
}

void frmTsPaint::mnuEditRedo_Click()
{
    if (Busy || !Undo.CanRedo())
        return;
    DropForUndo();
    const int W = Canvas->DIB.DIBWidth(), H = Canvas->DIB.DIBHeight();
    Canvas->setCanvasOp(ucCanvas::OpScroll);
    LoadUndoStateInto(Undo.Redo(Canvas->DIB), W, H);
}

void frmTsPaint::mnuEditUndoAll_Click()
{
    if (Busy || !Undo.CanUndoAll())
        return;
    if (MsgBox(QStringLiteral("There will not be Redo after Undo All.  Sure to Undo All?"), MsgBoxButtons::YesNo,
               MsgBoxIcon::Question) != MsgBoxResult::Yes)
        return;
    DropForUndo();
    const int W = Canvas->DIB.DIBWidth(), H = Canvas->DIB.DIBHeight();
    Canvas->setCanvasOp(ucCanvas::OpScroll);
    LoadUndoStateInto(Undo.UndoAll(Canvas->DIB), W, H);
}

void frmTsPaint::mnuEditCut_Click()
{
    if (!Canvas->HasRegion())
        return;
    Canvas->CutRegion();
}

void frmTsPaint::mnuEditCopy_Click()
{
    if (!Canvas->DIB.DIBBitsPtr())
        return;
    clsDIB Part;
    if (Canvas->HasRegion() && Canvas->CopyRegionTo(Part))
        Part.CopyToClipboard();
    else
        Canvas->DIB.CopyToClipboard();
}

void frmTsPaint::mnuEditPaste_Click()
{
    PasteFromClipboard(0);
}

void frmTsPaint::mnuEditPasteTransparent_Click()
{
    PasteFromClipboard(1);
}

void frmTsPaint::PasteFromClipboard(int Kind, int Percent)
{
    if (!Canvas->DIB.DIBBitsPtr())
        return;
    // 1.
    if (Canvas->FitInView()) {
        if (MsgBox(QStringLiteral("Cannot paste in Fit-In screen.  Change to actual-size screen?"),
                   MsgBoxButtons::YesNo, MsgBoxIcon::Question) != MsgBoxResult::Yes)
            return;
        if (frmTsMainPro* F = Frame())
            F->ckbFitIn->setChecked(false);
        Canvas->setFitInView(false);
        UpdateDisplay();
    }
    // 2.
    const QImage Image = QApplication::clipboard()->image();
    if (Image.isNull()) {
        MsgBox(QStringLiteral("Failed to fetch image from clipboard."));
        return;
    }
    // 3.
    if (Image.width() > MaxSide || Image.height() > MaxSide) {
        MsgBox(QStringLiteral("Width or height over %1").arg(MaxSide));
        return;
    }
    if (static_cast<long long>(Image.width()) * Image.height() > MaxPixels) {
        MsgBox(QStringLiteral("Width x height of incoming image is greater than 15,000,000 pixels "));
        return;
    }
    // 4. A larger image enlarges the canvas to take it.
    const int W = Canvas->DIB.DIBWidth(), H = Canvas->DIB.DIBHeight();
    if (Image.width() > W || Image.height() > H) {
        const QString Text = QStringLiteral("Incoming image at %1 x %2 is larger than the current %3 x %4.\n")
                                 .arg(Image.width())
                                 .arg(Image.height())
                                 .arg(W)
                                 .arg(H) +
                             (Canvas->CanvasScreenMode() == 0
                                  ? QStringLiteral("As you are currently in View mode, current image will be superseded")
                                  : QStringLiteral("Enlarge the canvas to take it?"));
        if (MsgBox(Text, MsgBoxButtons::YesNo, MsgBoxIcon::Question) != MsgBoxResult::Yes)
            return;
        clsDIB Larger;
        if (!Larger.CreateBlankDIB(std::max(W, Image.width()), std::max(H, Image.height()), 32, 0xFFFFFF, true))
            return;
        if (Canvas->CanvasScreenMode() != 0)
            BitBlt(Larger.DIBhDC(), 0, 0, W, H, Canvas->DIB.DIBhDC(), 0, 0, SRCCOPY);
        TakePicture(Larger);
        SaveUndoState();
        MarkDirty(true);
    }
    // 5.
    clsDIB Incoming;
    const QImage Rgb = Image.convertToFormat(QImage::Format_RGB32);
    if (!Incoming.CreateBlankDIB(Rgb.width(), Rgb.height(), 32, 0xFFFFFF, true))
        return;
    PixelArray32 Pixels(Incoming);
    for (int Y = 0; Y < Rgb.height(); ++Y) {
        const auto* Line = reinterpret_cast<const uint32_t*>(Rgb.constScanLine(Y));
        for (int X = 0; X < Rgb.width(); ++X)
            Pixels.At(X, Y) = Line[X] & 0xFFFFFF;
    }
    if (Canvas->CanvasScreenMode() == 0)
        Canvas->setCanvasScreenMode(1);
    Canvas->BeginPaste(Incoming, Kind, static_cast<int16_t>(Percent));
    updateEditButtons();
}

void frmTsPaint::mnuEditCutCopy_Click()
{
    if (!Canvas->HasRegion())
        return;
    mnuEditCopy_Click();
    mnuEditCut_Click();
}

void frmTsPaint::mnuEditPasteTranslucentTransparentSub_Click(int Index)
{
    PasteFromClipboard(2, 10 + 10 * std::clamp(Index, 0, TranslucentSteps - 1));
}

void frmTsPaint::mnuEditPasteTranslucentNotTransparentSub_Click(int Index)
{
    PasteFromClipboard(3, 10 + 10 * std::clamp(Index, 0, TranslucentSteps - 1));
}

void frmTsPaint::mnuEditCrop_Click()
{
    if (!Canvas->HasRegion())
        return;
    if (!Canvas->CropToRegion()) {
        MsgBox(QStringLiteral("Size too small to crop."));
        return;
    }
    // The canvas reported the change, which took the undo state.
    Canvas->SetScrollValues(0, 0);
    UpdateDisplay();
}

void frmTsPaint::mnuEditCropPerImageInsideRegion_Click()
{
    if (!Canvas->HasRegion())
        return;
    if (Canvas->RegionLifted() && (Canvas->DIBSnapshot.DIBWidth() != Canvas->DIB.DIBWidth() ||
                                   Canvas->DIBSnapshot.DIBHeight() != Canvas->DIB.DIBHeight())) {
        MsgBox(QStringLiteral("Snapshot size discrepant"));
        return;
    }
    if (Canvas->DIBRegionMask.DIBBitsPtr() && (Canvas->DIBRegionMask.DIBWidth() != Canvas->DIBRegion.DIBWidth() ||
                                               Canvas->DIBRegionMask.DIBHeight() != Canvas->DIBRegion.DIBHeight())) {
        MsgBox(QStringLiteral("Mask size discrepant"));
        return;
    }
    clsDIB Image;
    const QRect Box = Canvas->RegionImageBox();
    if (!Canvas->CopyRegionTo(Image))
        return;
    basTsMainPro::PixelBox Used;
    if (!basTsMainPro::NonBlankBounds(Image, Canvas->TransparentColor, Used))
        Used = {0, 0, Image.DIBWidth() - 1, Image.DIBHeight() - 1};
    Canvas->DropRegion();
    const QRect Crop =
        QRect(QPoint(Box.left() + Used.Left, Box.top() + Used.Top), QPoint(Box.left() + Used.Right, Box.top() + Used.Bottom))
            .intersected(QRect(0, 0, Canvas->DIB.DIBWidth(), Canvas->DIB.DIBHeight()));
    clsDIB Part;
    if (Crop.isEmpty() || !Part.CreateBlankDIB(Crop.width(), Crop.height(), 32, 0xFFFFFF, true))
        return;
    BitBlt(Part.DIBhDC(), 0, 0, Crop.width(), Crop.height(), Canvas->DIB.DIBhDC(), Crop.left(), Crop.top(), SRCCOPY);
    TakePicture(Part);
    MarkDirty(true);
    SaveUndoState();
    MsgBox(QStringLiteral("Reminder:  If the cropped image is invisible, it is because you have cropped\n"
                          "a white sheet, i.e. cropped white image is put back on a white sheet."));
}

void frmTsPaint::mnuEditCleansePaint_Click()
{
    Canvas->CanvasCleanse();
    if (frmTsMainPro* F = Frame()) {
        F->FlatAllToolsImages();
        F->cboMagnify->setCurrentIndex(0);
    }
    UpdateDisplay();
}

void frmTsPaint::mnuEditClearClipboard_Click()
{
    QApplication::clipboard()->clear();
}
