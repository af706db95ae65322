// The toolbox's side in the document: choosing a tool, and the option notifications that store the
// frame's controls in the canvas.
#include <QLabel>
#include <QCheckBox>
#include <QComboBox>
#include <QRadioButton>
#include <QToolButton>

#include "basMsgBox.h"
#include "basTsMainPro.h"
#include "frmTsMainPro.h"
#include "frmTsPaint.h"
#include "ucCanvas.h"

using namespace basMsgBox;

namespace {

struct ToolEntry {
    int32_t Op;
    int Panel;  // -1: the panel that shows stays
};
// Image index to operation and option panel; entry 7 is the filled Bezier.
constexpr ToolEntry Tools[frmTsMainPro::ToolCount] = {
    {0, 0},  {1, 0},  {2, 1},  {3, 2},  {4, 3},   {5, -1},  {6, -1},  {6, 4},  {7, 5},   {8, 5},
    {9, 6},  {10, 6}, {13, 7}, {14, 8}, {11, 9},  {12, 9},  {15, -1}, {16, -1}, {18, -1},
};

int CheckedIndex(const std::vector<QRadioButton*>& Options)
{
    for (size_t I = 0; I < Options.size(); ++I)
        if (Options[I]->isChecked())
            return static_cast<int>(I);
    return 0;
}

} // namespace

void frmTsPaint::AbortRunningShape()
{
    if (Canvas->PolygonInProgress())
        Canvas->PolygonAbort();
    if (Canvas->BezierInProgress())
        Canvas->BezierAbort();
}

void frmTsPaint::Do_imgToolsClick(int Index)
{
    frmTsMainPro* F = Frame();
    if (!F || !Canvas->DIB.DIBBitsPtr() || Index < 0 || Index >= frmTsMainPro::ToolCount)
        return;
    // 2 and 3: an open polygon is taken back; a lifted region is merged, which takes its undo state.
    AbortRunningShape();
    if (Canvas->HasRegion())
        Canvas->DropRegion();
    // 4.
    if (Index == frmTsMainPro::ClearToolsIndex) {
        F->FlatAllToolsImages();
        Canvas->CanvasPicPaint();
    } else {
        SelectTool(Index);
    }
    // 5.
    F->StatusPanel[0]->clear();
}

void frmTsPaint::SelectTool(int Index)
{
    frmTsMainPro* F = Frame();
    if (!F)
        return;
    F->PressToolImage(Index);
    const ToolEntry& Entry = Tools[Index];
    if (Entry.Op == ucCanvas::OpBezier)
        Canvas->BezierType = Index == 7 ? 1 : 0;
    // A drawing tool means painting: the view mode gives way.
    if (Canvas->CanvasScreenMode() == 0)
        Canvas->setCanvasScreenMode(1);
    Canvas->setCanvasOp(Entry.Op);
    if (Entry.Panel >= 0)
        F->SetOptionFrame(Entry.Panel);
    if (Entry.Panel == 9 && F->cmdRegionOperation.size() > 1)
        F->cmdRegionOperation[1]->setVisible(Index == 14);
    if (Entry.Op == ucCanvas::OpGlass || Entry.Op == ucCanvas::OpScroll)
        Canvas->CanvasPicPaint();
}

void frmTsPaint::Notify_SetScrollOp_FromMDI()
{
    AbortRunningShape();
    Canvas->setCanvasOp(ucCanvas::OpScroll);
}

void frmTsPaint::Notify_BrushSize_FromMDI()
{
    if (frmTsMainPro* F = Frame()) {
        AbortRunningShape();
        // The list holds 1 to 20: index 2 is a brush of 3.
        Canvas->BrushSize = F->cboBrushSize->currentIndex() + 1;
    }
}

void frmTsPaint::Notify_CustomBrushShape_FromMDI()
{
    if (frmTsMainPro* F = Frame()) {
        AbortRunningShape();
        Canvas->CustomBrushShape = static_cast<int16_t>(std::max(0, F->cboCustomBrushShape->currentIndex()));
    }
}

void frmTsPaint::Notify_PolygonOperationType_FromMDI()
{
    if (frmTsMainPro* F = Frame()) {
        AbortRunningShape();
        Canvas->PolygonOperationType = static_cast<int16_t>(std::max(0, F->cboPolygonOperationType->currentIndex()));
    }
}

void frmTsPaint::Notify_PolygonDrawMethod_FromMDI()
{
    if (frmTsMainPro* F = Frame()) {
        AbortRunningShape();
        Canvas->PolygonDrawMethod = static_cast<int16_t>(CheckedIndex(F->optPolygonDrawMethod));
    }
}

void frmTsPaint::Notify_PolygonSetting_FromMDI()
{
    frmTsMainPro* F = Frame();
    if (!F || F->cboPolygonSetting.size() < 4)
        return;
    AbortRunningShape();
    Canvas->PolygonNumPoints = static_cast<int16_t>(F->cboPolygonSetting[0]->currentText().toInt());
    Canvas->PolygonRadius = static_cast<int16_t>(F->cboPolygonSetting[1]->currentText().toInt());
    Canvas->PolygonConcaveFactor = F->cboPolygonSetting[2]->currentText().toFloat();
    Canvas->PolygonAngle = static_cast<int16_t>(F->cboPolygonSetting[3]->currentText().toInt());
}

void frmTsPaint::Notify_ColorToUse_FromMDI()
{
    AbortRunningShape();
    Canvas->ColorToUse = basTsMainPro::ColorFirst;
    // The second colour is the background: what the eraser and a cut leave behind.
    Canvas->TransparentColor = basTsMainPro::ColorSecond;
}

void frmTsPaint::Notify_BezierFillColor_FromMDI()
{
    AbortRunningShape();
    Canvas->BezierFillColor = basTsMainPro::ColorBezierFill;
}

void frmTsPaint::Notify_BezierOp_FromMDI()
{
    AbortRunningShape();
    if (frmTsMainPro* F = Frame())
        Canvas->BezierType = F->imgTools[7]->isChecked() ? 1 : 0;
}

void frmTsPaint::Notify_FillPattern_FromMDI()
{
    frmTsMainPro* F = Frame();
    if (!F)
        return;
    AbortRunningShape();
    const int Pattern = CheckedIndex(F->optFillPattern);
    if (Pattern == 9 && !Canvas->DIBPattern.DIBBitsPtr()) {
        MsgBox(QStringLiteral("No custom Pattern loaded yet.\n(To load a custom Pattern, click the Button)."));
        F->optFillPattern[Canvas->FillPattern]->setChecked(true);
        return;
    }
    Canvas->FillPattern = static_cast<int16_t>(Pattern);
}

void frmTsPaint::Notify_BrushStyle_FromMDI()
{
    frmTsMainPro* F = Frame();
    if (!F)
        return;
    AbortRunningShape();
    const int Style = CheckedIndex(F->optBrushStyle);
    if (Style == 8 && !Canvas->DIBCustomBrush.DIBBitsPtr()) {
        MsgBox(QStringLiteral("No custom brush loaded yet.\n(To load a custom brush, click the Button)."));
        F->optBrushStyle[Canvas->BrushStyle]->setChecked(true);
        return;
    }
    Canvas->BrushStyle = static_cast<int16_t>(Style);
}

void frmTsPaint::Notify_PaintBrushTranslucencyPercent()
{
    AbortRunningShape();
    if (frmTsMainPro* F = Frame())
        Canvas->PaintBrushTranslucencyPercent =
            static_cast<int16_t>(F->cboPaintBrushTranslucencyPercent->currentText().toInt());
}

void frmTsPaint::Notify_SprayDensity()
{
    AbortRunningShape();
    if (frmTsMainPro* F = Frame())
        Canvas->SprayDensity = static_cast<int16_t>(std::max(0, F->cboSprayDensity->currentIndex()));
}

void frmTsPaint::Notify_SprayTranslucencyPercent()
{
    AbortRunningShape();
    if (frmTsMainPro* F = Frame())
        Canvas->SprayTranslucencyPercent = static_cast<int16_t>(F->cboSprayTranslucencyPercent->currentText().toInt());
}

void frmTsPaint::Notify_LineType_FromMDI()
{
    if (frmTsMainPro* F = Frame()) {
        AbortRunningShape();
        Canvas->LineType = static_cast<int16_t>(CheckedIndex(F->optLineType));
    }
}

void frmTsPaint::Notify_RectangleCornerShape_FromMDI()
{
    if (frmTsMainPro* F = Frame()) {
        AbortRunningShape();
        Canvas->RectangleCornerShape = static_cast<int16_t>(CheckedIndex(F->optRectangleCornerShape));
    }
}

void frmTsPaint::Notify_OvalEnhancement_FromMDI()
{
    if (frmTsMainPro* F = Frame()) {
        AbortRunningShape();
        Canvas->OvalEnhancement = static_cast<int16_t>(CheckedIndex(F->optOvalEnhancement));
    }
}
