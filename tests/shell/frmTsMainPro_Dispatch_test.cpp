// The toolbox and toolbar call the active document window by name: every control, its name.
#include "FrameTest.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QRadioButton>
#include <QTest>
#include <QToolButton>

namespace {

struct DispatchRow {
    const char* Control;
    const char* Expected; // names joined by ","
};

// Clicks a button, picks the second entry of a list, or checks a box, as a user would.
void Operate(QWidget* control)
{
    if (auto* combo = qobject_cast<QComboBox*>(control)) {
        combo->setFocus();
        QTest::keyClick(combo, Qt::Key_Down);
        return;
    }
    if (auto* radio = qobject_cast<QRadioButton*>(control)) {
        radio->setChecked(false);
    }
    QTest::mouseClick(control, Qt::LeftButton, {}, control->rect().center());
}

} // namespace

TEST_F(FrameTest, EveryControlCallsItsNameOnTheActiveDocument)
{
    const DispatchRow rows[] = {
        {"cmdEditTB_0", "mnuEditUndoAll_Click"},
        {"cmdEditTB_1", "mnuEditUndo_Click"},
        {"cmdEditTB_2", "mnuEditRedo_Click"},
        {"cmdEditTB_3", "mnuEditCut_Click"},
        {"cmdEditTB_4", "mnuEditCopy_Click"},
        {"cmdEditTB_5", "mnuEditPaste_Click"},
        {"cmdEditTB_6", "mnuEditPasteTransparent_Click"},
        {"cmdEditTB_7", "Do_mnuEffectsSubClick(0)"},
        {"cmdEditTB_8", "Do_mnuEffectsSubClick(1)"},
        {"ckbFitIn", "Do_ckbFitInClick"},
        {"cmdGlass", "Do_cmdGlassClick"},
        {"cmdZoom_0", "Do_cmdZoomClick(0)"},
        {"cmdZoom_1", "Do_cmdZoomClick(1)"},
        {"cmdZoom_2", "Do_cmdZoomClick(2)"},
        {"cboMagnify", "Do_cboMagnifyClick"},
        {"cboGlass", "Do_cboGlassClick"},
        {"cboBrushSize", "Notify_BrushSize_FromMDI"},
        {"cboCustomBrushShape", "Notify_CustomBrushShape_FromMDI"},
        {"imgTools_0", "Do_imgToolsClick(0)"},
        {"imgTools_13", "Do_imgToolsClick(13)"},
        {"imgTools_18", "Do_imgToolsClick(18)"},
        {"optBrushStyle_3", "Notify_BrushStyle_FromMDI"},
        {"imgBrushStyle_5", "Notify_BrushStyle_FromMDI"},
        {"cboPaintBrushTranslucencyPercent", "Notify_PaintBrushTranslucencyPercent"},
        {"cboSprayDensity", "Notify_SprayDensity"},
        {"cboSprayTranslucencyPercent", "Notify_SprayTranslucencyPercent"},
        {"cmdCustomBrush", "Do_cmdCustomBrushClick"},
        {"cmdCustomPattern", "Do_cmdCustomPatternClick"},
        {"cmdStampLoad_0", "Do_cmdStampLoadClick(0)"},
        {"cmdStampLoad_1", "Do_cmdStampLoadClick(1)"},
        {"optFillPattern_2", "Notify_FillPattern_FromMDI"},
        {"imgPatternOption_9", "Notify_FillPattern_FromMDI"},
        {"optLineType_4", "Notify_LineType_FromMDI"},
        {"imgToolOptionLine_8", "Notify_LineType_FromMDI"},
        {"optRectangleCornerShape_1", "Notify_RectangleCornerShape_FromMDI"},
        {"imgRectangleOption_3", "Notify_RectangleCornerShape_FromMDI"},
        {"optOvalEnhancement_1", "Notify_OvalEnhancement_FromMDI"},
        {"cboPolygonOperationType", "Notify_PolygonOperationType_FromMDI"},
        {"optPolygonDrawMethod_1", "Notify_PolygonDrawMethod_FromMDI"},
        {"cboPolygonSetting_0", "Notify_PolygonSetting_FromMDI"},
        {"cboPolygonSetting_3", "Notify_PolygonSetting_FromMDI"},
        {"imgSwapColor", "Notify_ColorToUse_FromMDI,Notify_BezierFillColor_FromMDI"},
        {"cmdPalette256_1", "do_cmdPalette256Click"},
        {"cmdRegionOperation_0", "Do_cmdRegionOperation(0)"},
        {"cmdRegionOperation_1", "Do_cmdRegionOperation(1)"},
        {"imgUpperLeft", "Do_imgUpperLeftClick"},
        {"imgLowerRight", "Do_imgLowerRightClick"},
        {"imgPanoramic", "Do_imgPanoramicClick"},
        {"cmdMode", "UpdateAllowableMenusForScreenMode,Do_UpdateZoomButtons,Do_UpdateGlassButton,Do_UpdateModeChange"},
        {"cmdFileNew", "Do_cmdFileNewClick"},
        {"cmdFileOpen", "Do_cmdFileOpenClick"},
        {"cmdFileBrowser", "Do_cmdFileBrowserClick"},
    };
    frmTsMainPro& frame = MakeFrame();
    frame.show();
    RecordingChild* child = OpenChild();
    // Panels show one at a time; the tested controls must be reachable.
    for (QGroupBox* panel : frame.fraOption)
        panel->show();
    for (const DispatchRow& row : rows) {
        QWidget* control = Control<QWidget>(QString::fromLatin1(row.Control));
        ASSERT_NE(control, nullptr);
        child->Calls.clear();
        Operate(control);
        EXPECT_EQ(child->Calls.join(QLatin1Char(',')).toStdString(), std::string(row.Expected)) << row.Control;
    }
    EXPECT_TRUE(Boxes.Calls().empty());
}

TEST_F(FrameTest, FrameRoutinesCallTheDocument)
{
    frmTsMainPro& frame = MakeFrame();
    RecordingChild* child = OpenChild();
    frame.updateColorToUse();
    frame.FlatAllToolsImages();
    frame.cmdGlass_Click();
    EXPECT_EQ(child->Calls, QStringList({QStringLiteral("Notify_ColorToUse_FromMDI"),
                                          QStringLiteral("Notify_BezierFillColor_FromMDI"),
                                          QStringLiteral("Notify_SetScrollOp_FromMDI"),
                                          QStringLiteral("Do_cmdGlassClick")}));
    // The Bezier box's own chart buttons also tell the document about the Bezier operation.
    child->Calls.clear();
    frame.cmdColorChart[2]->click();
    frame.cmdPaletteWebSafe[2]->click();
    frame.cmdColorChart[1]->click();
    EXPECT_EQ(child->Calls, QStringList({QStringLiteral("Notify_BezierOp_FromMDI"),
                                          QStringLiteral("Notify_BezierOp_FromMDI")}));
}

TEST_F(FrameTest, WithoutADocumentNothingHappens)
{
    frmTsMainPro& frame = MakeFrame();
    frame.show();
    frame.imgTools[4]->click();
    EXPECT_FALSE(frame.imgTools[4]->isChecked());
    frame.cmdEditTB[1]->setEnabled(true);
    frame.cmdEditTB[1]->click();
    frame.cboBrushSize->setFocus();
    QTest::keyClick(frame.cboBrushSize, Qt::Key_Down);
    EXPECT_TRUE(Boxes.Calls().empty());
    // The toolbar is off until a document is there.
    EXPECT_FALSE(frame.cmdZoom[0]->isEnabled());
    EXPECT_FALSE(frame.cmdEditTB[0]->isEnabled());
}

TEST_F(FrameTest, ADocumentLackingANameIsReported)
{
    basTsMainPro::RegisterFormFactory(QStringLiteral("frmTsPaint"), [] { return new MuteChild; });
    frmTsMainPro& frame = MakeFrame();
    basTsMainPro::DocOpenMode = basTsMainPro::DocOpenFromFileNew;
    frame.ShowDocumentWindow(0, QStringLiteral("Untitled:1"));
    frame.cmdZoom[0]->click();
    ASSERT_EQ(Boxes.Calls().size(), 1u);
    EXPECT_TRUE(Boxes.Calls()[0].Text.contains(QStringLiteral("Do_cmdZoomClick")));
    EXPECT_EQ(Boxes.Calls()[0].Icon, basMsgBox::MsgBoxIcon::Critical);
    // cmdMode stops at the first name that fails.
    frame.cmdMode->click();
    EXPECT_EQ(Boxes.Calls().size(), 2u);
}

TEST_F(FrameTest, ColorBoxesShowSwapAndCopy)
{
    frmTsMainPro& frame = MakeFrame();
    frame.show();
    basTsMainPro::ColorFirst = 0x38220C; // RGB(12, 34, 56)
    basTsMainPro::ColorSecond = 0xFFFFFF;
    basTsMainPro::ColorBezierFill = 0x0000FF;

    QTest::mouseClick(frame.picColorToUse[0], Qt::LeftButton);
    ASSERT_EQ(Boxes.Calls().size(), 1u);
    const basMsgBox::MsgBoxCall& shown = Boxes.Calls()[0];
    EXPECT_TRUE(shown.IsInputBox);
    EXPECT_EQ(shown.Title, QStringLiteral("Color Value:  "));
    EXPECT_EQ(shown.Text, QStringLiteral("Currently selected color for Paint/Fill/Shape ...:   "));
    EXPECT_EQ(shown.DefaultText, QStringLiteral("RGB(12, 34, 56)     HTML #0C2238 / h38220C"));
    QTest::mouseClick(frame.picColorToUse[1], Qt::LeftButton);
    QTest::mouseClick(frame.picColorToUse[2], Qt::LeftButton);
    EXPECT_EQ(Boxes.Calls()[1].Text, QStringLiteral("Second color for Paint/Fill/Shape ...:   "));
    EXPECT_EQ(Boxes.Calls()[2].Text, QStringLiteral("Currently selected color for Bezier curve:   "));

    QTest::mouseClick(frame.picColorToUse[1], Qt::RightButton);
    EXPECT_EQ(basTsMainPro::ColorFirst, 0xFFFFFFu);
    EXPECT_EQ(basTsMainPro::ColorSecond, 0x38220Cu);
    QTest::mouseClick(frame.imgSwapColor, Qt::LeftButton);
    EXPECT_EQ(basTsMainPro::ColorFirst, 0x38220Cu);
    QTest::mouseClick(frame.picColorToUse[2], Qt::RightButton);
    EXPECT_EQ(basTsMainPro::ColorBezierFill, 0x38220Cu);
    EXPECT_EQ(frame.picColorToUse[2]->palette().color(QPalette::Window), QColor(12, 34, 56));
}

TEST_F(FrameTest, ToolboxHoldsItsListsAndPanels)
{
    frmTsMainPro& frame = MakeFrame();
    ASSERT_EQ(frame.imgTools.size(), 19u);
    EXPECT_EQ(frame.imgTools[0]->toolTip(),
              QStringLiteral("Paint  (+Shift if straight vertically,  or +Ctrl if straight horizontally)"));
    EXPECT_EQ(frame.imgTools[2]->toolTip(), QStringLiteral("Fill "));
    EXPECT_EQ(frame.imgTools[17]->toolTip(),
              QStringLiteral("Color picker (Left click on image for first color,  right click for 2nd)"));
    EXPECT_EQ(frame.imgTools[18]->toolTip(), QStringLiteral("Clear all tools"));

    EXPECT_EQ(frame.cboBrushSize->count(), 20);
    EXPECT_EQ(frame.cboMagnify->itemText(7), QStringLiteral("8 x 100 percent"));
    EXPECT_EQ(frame.cboGlass->count(), 5);
    EXPECT_EQ(frame.cboGlass->itemText(0), QStringLiteral("2 x 100 percent"));
    EXPECT_EQ(frame.cboPaintBrushTranslucencyPercent->count(), 17);
    EXPECT_EQ(frame.cboSprayTranslucencyPercent->itemText(16), QStringLiteral("20"));
    EXPECT_EQ(frame.cboPolygonOperationType->count(), 9);
    EXPECT_EQ(frame.cboPolygonOperationType->itemText(5), QStringLiteral(" 6.    3 & Clipboard"));
    EXPECT_EQ(frame.lblBrush->text(), QStringLiteral("Opaque %"));

    const char* const titles[] = {"Paint brush style", "Fill pattern",     "Polygon draw option", "Line type",
                                  "Filled Bezier color", "Rectangle corner shape", "Oval enhancement",
                                  "Stamp source", "Spray option", "Region extra option"};
    frame.show();
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(frame.fraOption[i]->title(), QString::fromLatin1(titles[i]));
        frame.SetOptionFrame(i);
        for (int j = 0; j < 10; ++j)
            EXPECT_EQ(frame.fraOption[j]->isVisible(), i == j) << i << " " << j;
    }
    frame.PressToolImage(8);
    EXPECT_TRUE(frame.imgTools[8]->isChecked());
    EXPECT_TRUE(frame.shpTool->isVisible());
    frame.FlatAllToolsImages();
    EXPECT_FALSE(frame.imgTools[8]->isChecked());
    EXPECT_FALSE(frame.shpTool->isVisible());
}
