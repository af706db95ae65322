// The custom brush, the custom pattern and the stamps, loaded through frmTsStampOrBrush. A cancel,
// or a brush or stamp refused as too small, leaves the canvas and the toolbox as they were.
#include <QLabel>
#include <QPixmap>
#include <QRadioButton>

#include "frmTsMainPro.h"
#include "frmTsPaint.h"
#include "frmTsStampOrBrush.h"
#include "ucCanvas.h"

namespace {

// The toolbox's small box shows the result whole: shrunk to fit when larger, at its own size
// when it fits.
void ShowInPreviewBox(QLabel* Box, const QImage& Picture)
{
    if (!Box)
        return;
    Box->setAlignment(Qt::AlignCenter);
    const QSize Room = Box->contentsRect().size().expandedTo(QSize(1, 1));
    if (Picture.width() > Room.width() || Picture.height() > Room.height())
        Box->setPixmap(QPixmap::fromImage(Picture.scaled(Room, Qt::KeepAspectRatio, Qt::SmoothTransformation)));
    else
        Box->setPixmap(QPixmap::fromImage(Picture));
}

} // namespace

void frmTsPaint::Do_cmdCustomBrushClick()
{
    AbortRunningShape();
    frmTsMainPro* F = Frame();
    frmTsStampOrBrush Dialog(frmTsStampOrBrush::StampTarget::CustomBrush, this);
    if (!Dialog.Run()) {
        // The option keeps showing the style in use.
        if (F && Canvas->BrushStyle >= 0 && Canvas->BrushStyle < static_cast<int>(F->optBrushStyle.size()))
            F->optBrushStyle[Canvas->BrushStyle]->setChecked(true);
        return;
    }
    Dialog.CopyResultTo(Canvas->DIBCustomBrush, &Canvas->DIBCustomBrushMask);
    if (!F || F->optBrushStyle.size() <= 8) {
        Canvas->BrushStyle = 8;
        return;
    }
    ShowInPreviewBox(F->picCustomBrush, Dialog.ResultPreview());
    F->optBrushStyle[8]->setChecked(true);
    Notify_BrushStyle_FromMDI();
}

void frmTsPaint::Do_cmdCustomPatternClick()
{
    AbortRunningShape();
    frmTsMainPro* F = Frame();
    frmTsStampOrBrush Dialog(frmTsStampOrBrush::StampTarget::CustomPattern, this);
    if (!Dialog.Run()) {
        if (F && Canvas->FillPattern >= 0 && Canvas->FillPattern < static_cast<int>(F->optFillPattern.size()))
            F->optFillPattern[Canvas->FillPattern]->setChecked(true);
        return;
    }
    Dialog.CopyResultTo(Canvas->DIBPattern, nullptr);
    if (!F || F->optFillPattern.size() <= 9) {
        Canvas->FillPattern = 9;
        return;
    }
    ShowInPreviewBox(F->picCustomPattern, Dialog.ResultPreview());
    F->optFillPattern[9]->setChecked(true);
    Notify_FillPattern_FromMDI();
}

void frmTsPaint::Do_cmdStampLoadClick(int Index)
{
    if (Index != 0 && Index != 1)
        return;
    AbortRunningShape();
    frmTsStampOrBrush Dialog(Index == 0 ? frmTsStampOrBrush::StampTarget::TextStamp
                                        : frmTsStampOrBrush::StampTarget::ImageStamp,
                             this);
    if (!Dialog.Run())
        return;
    Dialog.CopyResultTo(Canvas->DIBStamp, &Canvas->DIBStampMask);
    if (frmTsMainPro* F = Frame())
        ShowInPreviewBox(F->picStamp, Dialog.ResultPreview());
}
