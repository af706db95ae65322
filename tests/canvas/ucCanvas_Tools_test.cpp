// The tools driven by mouse and key events on a shown canvas, checked pixel by pixel.
#include <QTest>

#include "CanvasTest.h"

using ToolTest = CanvasTest;

namespace {
constexpr uint32_t Red = 0x0000FF, Blue = 0xFF0000, White = 0xFFFFFF, Black = 0;
}

TEST_F(ToolTest, PaintBoxDabsFollowTheStrokeAndClipAtTheEdges)
{
    Open(40, 30);
    Canvas->setCanvasOp(ucCanvas::OpPaint);
    Canvas->ColorToUse = Red;
    Canvas->BrushSize = 4;
    QSignalSpy Changed(Canvas.get(), &ucCanvas::PictureChanged);
    Press(10, 10);
    // Size 4: from the point less 2 to that plus 3.
    EXPECT_EQ(Count(Red), 16);
    EXPECT_EQ(Pixel(8, 8), Red);
    EXPECT_EQ(Pixel(11, 11), Red);
    EXPECT_EQ(Pixel(12, 12), White);
    // Only the dab's box is repainted on a move.
    Drag(20, 10);
    EXPECT_LE(Canvas->LastRepaintBox().width() * Canvas->LastRepaintBox().height(), 16);
    Release(20, 10);
    EXPECT_EQ(Changed.count(), 1);
    // A dab at the corner is clipped to the picture.
    Click(0, 0);
    EXPECT_EQ(Pixel(0, 0), Red);
    EXPECT_EQ(Pixel(1, 1), Red);
    EXPECT_EQ(Pixel(2, 2), White);
    EXPECT_EQ(Changed.count(), 2);
}

TEST_F(ToolTest, ShiftKeepsTheStrokeUprightAndCtrlLevel)
{
    struct Case {
        Qt::KeyboardModifiers Mods;
        QPoint Expected;  // where the dab for a move to (25, 20) lands
    };
    for (const Case& C : {Case{Qt::ShiftModifier, {5, 20}}, Case{Qt::ControlModifier, {25, 5}}}) {
        Open(40, 30);
        Canvas->setCanvasOp(ucCanvas::OpPaint);
        Canvas->ColorToUse = Red;
        Canvas->BrushSize = 1;
        Press(5, 5, Qt::LeftButton, C.Mods);
        Drag(25, 20, C.Mods);
        Release(25, 20, Qt::LeftButton, C.Mods);
        EXPECT_EQ(Count(Red), 2);
        EXPECT_EQ(Pixel(C.Expected.x(), C.Expected.y()), Red);
    }
}

TEST_F(ToolTest, EraseUsesTheBackgroundColourWhateverTheStyle)
{
    Open(30, 30, 400, 300, Red);
    Canvas->setCanvasOp(ucCanvas::OpErase);
    Canvas->TransparentColor = Blue;
    Canvas->BrushStyle = 1;
    Canvas->BrushSize = 3;
    Click(10, 10);
    EXPECT_EQ(Count(Blue), 9);
    EXPECT_EQ(Pixel(9, 9), Blue);
}

TEST_F(ToolTest, TranslucencyZeroLeavesThePictureYetReportsAChange)
{
    Open(30, 30);
    Canvas->setCanvasOp(ucCanvas::OpPaint);
    Canvas->BrushStyle = 1;
    Canvas->PaintBrushTranslucencyPercent = 0;
    Canvas->ColorToUse = Red;
    QSignalSpy Changed(Canvas.get(), &ucCanvas::PictureChanged);
    Click(15, 15);
    EXPECT_EQ(Count(White), 900);
    EXPECT_EQ(Changed.count(), 1);
}

TEST_F(ToolTest, ToolsWithoutTheirSourceEndSilently)
{
    Open(30, 30);
    QSignalSpy Changed(Canvas.get(), &ucCanvas::PictureChanged);
    Canvas->setCanvasOp(ucCanvas::OpPaint);
    Canvas->BrushStyle = 8;  // no custom brush loaded
    Click(10, 10);
    Canvas->setCanvasOp(ucCanvas::OpStamp);  // no stamp
    Click(10, 10);
    Canvas->setCanvasOp(ucCanvas::OpFill);
    Canvas->FillPattern = 9;  // no custom pattern
    Click(10, 10);
    EXPECT_EQ(Changed.count(), 0);
    EXPECT_EQ(Count(White), 900);
}

TEST_F(ToolTest, FillStaysInsideItsBorderAndReplaceTakesEveryPixel)
{
    Open(40, 40);
    Canvas->ColorToUse = Black;
    Canvas->BrushSize = 1;
    Canvas->setCanvasOp(ucCanvas::OpRectangle);
    Press(5, 5);
    Drag(20, 20);
    Release(20, 20);
    ASSERT_EQ(Pixel(5, 5), Black);
    ASSERT_EQ(Pixel(20, 12), Black);
    Canvas->ColorToUse = Red;
    Canvas->setCanvasOp(ucCanvas::OpFill);
    QSignalSpy Changed(Canvas.get(), &ucCanvas::PictureChanged);
    Click(10, 10);
    EXPECT_EQ(Count(Red), 14 * 14);
    EXPECT_EQ(Pixel(30, 30), White);
    EXPECT_EQ(Changed.count(), 1);
    // A solid fill on a pixel of its own colour changes nothing.
    const auto Before = Snapshot();
    Click(10, 10);
    EXPECT_EQ(Snapshot(), Before);
    // Replace colour: every white pixel, connected or not, becomes blue.
    Canvas->ColorToUse = Blue;
    Canvas->setCanvasOp(ucCanvas::OpReplaceColor);
    Click(30, 30);
    EXPECT_EQ(Count(Blue), 40 * 40 - 14 * 14 - (16 * 16 - 14 * 14));
    EXPECT_EQ(Count(White), 0);
}

TEST_F(ToolTest, LineWithShiftSnapsLevel)
{
    Open(60, 40);
    Canvas->setCanvasOp(ucCanvas::OpLine);
    Canvas->ColorToUse = Red;
    Canvas->BrushSize = 1;
    QSignalSpy Length(Canvas.get(), &ucCanvas::LineLengthAndAngle);
    Press(10, 20, Qt::LeftButton, Qt::ShiftModifier);
    Drag(40, 22, Qt::ShiftModifier);
    Release(40, 22, Qt::LeftButton, Qt::ShiftModifier);
    EXPECT_EQ(Count(Red), 31);
    EXPECT_EQ(Pixel(40, 20), Red);
    EXPECT_EQ(Pixel(40, 22), White);
    ASSERT_FALSE(Length.isEmpty());
    EXPECT_DOUBLE_EQ(Length.last().at(2).toDouble(), 30.0);
}

TEST_F(ToolTest, BezierAbortRestoresAndAClickOutsideFinishes)
{
    Open(80, 60);
    Canvas->setCanvasOp(ucCanvas::OpBezier);
    Canvas->ColorToUse = Red;
    Canvas->BrushSize = 1;
    Press(10, 30);
    Drag(70, 30);
    Release(70, 30);
    ASSERT_TRUE(Canvas->BezierInProgress());
    EXPECT_EQ(Canvas->picDisp->property("CursorName").toString(), "BEZIER");
    EXPECT_GT(Count(Red), 50);
    // Drag a middle node up: the curve bends.
    Press(30, 30);
    Drag(30, 5);
    Release(30, 5);
    EXPECT_EQ(Pixel(40, 30), White);
    QTest::keyClick(Canvas.get(), Qt::Key_Escape);
    EXPECT_FALSE(Canvas->BezierInProgress());
    EXPECT_EQ(Count(White), 80 * 60);
    // Drawn again and finished by a click away from the nodes.
    QSignalSpy Finished(Canvas.get(), &ucCanvas::BezierFinished);
    QSignalSpy Changed(Canvas.get(), &ucCanvas::PictureChanged);
    Press(10, 30);
    Drag(70, 30);
    Release(70, 30);
    Click(40, 55);
    EXPECT_FALSE(Canvas->BezierInProgress());
    EXPECT_EQ(Finished.count(), 1);
    EXPECT_EQ(Changed.count(), 1);
    EXPECT_EQ(Count(Red), 61);
}

TEST_F(ToolTest, PolygonsAutoAndManual)
{
    Open(100, 100);
    Canvas->setCanvasOp(ucCanvas::OpPolygon);
    Canvas->ColorToUse = Red;
    Canvas->PolygonDrawMethod = 0;
    Canvas->PolygonNumPoints = 4;
    Canvas->PolygonRadius = 20;
    Canvas->PolygonOperationType = 1;  // filled
    QSignalSpy Finished(Canvas.get(), &ucCanvas::PolygonFinished);
    QSignalSpy Changed(Canvas.get(), &ucCanvas::PictureChanged);
    Click(50, 50);
    EXPECT_EQ(Pixel(50, 50), Red);     // inside the diamond
    EXPECT_EQ(Pixel(50, 32), Red);     // near its top vertex
    EXPECT_EQ(Pixel(35, 35), White);   // outside, by the corner of its box
    EXPECT_EQ(Finished.count(), 1);
    EXPECT_EQ(Changed.count(), 1);
    // Manual: three clicks, then the right button closes it.
    Open(100, 100);
    Canvas->setCanvasOp(ucCanvas::OpPolygon);
    Canvas->ColorToUse = Blue;
    Canvas->PolygonDrawMethod = 1;
    Canvas->PolygonOperationType = 1;
    QSignalSpy Done(Canvas.get(), &ucCanvas::PolygonFinished);
    Click(10, 10);
    Click(90, 10);
    Click(50, 90);
    Click(50, 90, Qt::RightButton);
    EXPECT_FALSE(Canvas->PolygonInProgress());
    EXPECT_EQ(Done.count(), 1);
    EXPECT_EQ(Pixel(50, 30), Blue);
    EXPECT_EQ(Pixel(15, 60), White);
}

TEST_F(ToolTest, ColourPickerReportsBothButtons)
{
    Open(20, 20, 400, 300, Red);
    Canvas->setCanvasOp(ucCanvas::OpColorPicker);
    QSignalSpy Picked(Canvas.get(), &ucCanvas::ColorPicked);
    Click(3, 3);
    Click(3, 3, Qt::RightButton);
    ASSERT_EQ(Picked.count(), 2);
    EXPECT_EQ(Picked.at(0).at(0).toUInt(), Red);
    EXPECT_FALSE(Picked.at(0).at(1).toBool());
    EXPECT_TRUE(Picked.at(1).at(1).toBool());
}

TEST_F(ToolTest, ViewModeOnlyScrolls)
{
    Open(30, 30);
    Canvas->setCanvasOp(ucCanvas::OpPaint);
    Canvas->setCanvasScreenMode(0);
    QSignalSpy Changed(Canvas.get(), &ucCanvas::PictureChanged);
    Click(10, 10);
    EXPECT_EQ(Changed.count(), 0);
    EXPECT_EQ(Count(White), 900);
}

namespace {
// A solid square surface of colour C, and its all-black mask.
void Square(clsDIB& Dib, int Side, uint32_t C)
{
    ASSERT_TRUE(Dib.CreateBlankDIB(Side, Side, 32, C, true));
}
}  // namespace

TEST_F(ToolTest, CustomBrushStampsOnlyAtItsWidthAndTakesTheOvalShape)
{
    Open(60, 30);
    Square(Canvas->DIBCustomBrush, 5, Red);
    Square(Canvas->DIBCustomBrushMask, 5, Black);
    Canvas->setCanvasOp(ucCanvas::OpPaint);
    Canvas->BrushStyle = 8;
    Canvas->CustomBrushShape = 1;
    Press(10, 10);
    for (int X : {12, 14, 15, 17, 19, 20})
        Drag(X, 10);
    Release(20, 10);
    EXPECT_EQ(Count(Red), 3 * 25);  // at 10, 15 and 20: separate stamps
    EXPECT_EQ(Pixel(8, 8), Red);    // top left = point less half the size
    // The oval shape leaves the brush's corners out, and the loaded brush stays whole.
    Open(60, 30);
    Square(Canvas->DIBCustomBrush, 5, Red);
    Square(Canvas->DIBCustomBrushMask, 5, Black);
    Canvas->setCanvasOp(ucCanvas::OpPaint);
    Canvas->BrushStyle = 8;
    Canvas->CustomBrushShape = 0;
    Click(10, 10);
    EXPECT_EQ(Pixel(10, 10), Red);
    EXPECT_EQ(Pixel(8, 8), White);
    EXPECT_EQ(Canvas->DIBCustomBrush.DIBhDC()->GetPixel(0, 0), Red);
}

TEST_F(ToolTest, StampIsCentredOnTheClick)
{
    Open(30, 30);
    Square(Canvas->DIBStamp, 3, Blue);
    Square(Canvas->DIBStampMask, 3, Black);
    Canvas->setCanvasOp(ucCanvas::OpStamp);
    QSignalSpy Changed(Canvas.get(), &ucCanvas::PictureChanged);
    Click(10, 10);
    EXPECT_EQ(Count(Blue), 9);
    EXPECT_EQ(Pixel(9, 9), Blue);
    EXPECT_EQ(Pixel(11, 11), Blue);
    EXPECT_EQ(Changed.count(), 1);
}

TEST_F(ToolTest, ArcThroughThreeClicks)
{
    Open(60, 60);
    Canvas->setCanvasOp(ucCanvas::OpArc);
    Canvas->ColorToUse = Red;
    Canvas->BrushSize = 1;
    QSignalSpy Circle(Canvas.get(), &ucCanvas::ArcCentreAndRadius);
    QSignalSpy Changed(Canvas.get(), &ucCanvas::PictureChanged);
    Click(10, 30);
    Click(50, 30);
    Hover(30, 15);  // the bulge follows the mouse before the last click
    Click(30, 10);
    ASSERT_FALSE(Circle.isEmpty());
    EXPECT_EQ(Circle.last().at(0).toInt(), 30);
    EXPECT_EQ(Circle.last().at(1).toInt(), 30);
    EXPECT_NEAR(Circle.last().at(2).toDouble(), 20.0, 1e-9);
    EXPECT_EQ(Pixel(30, 10), Red);
    EXPECT_EQ(Pixel(30, 50), White);  // the other half of the circle is not drawn
    EXPECT_EQ(Changed.count(), 1);
}

TEST_F(ToolTest, SprayPaintsScatteredPixelsInsideItsCircle)
{
    Open(200, 200);
    Canvas->setCanvasOp(ucCanvas::OpSpray);
    Canvas->ColorToUse = Red;
    Canvas->BrushSize = 100;
    Canvas->SprayDensity = 2;  // threshold 0.4: 36% of the disc
    Click(100, 100);
    const double Disc = 3.14159265 * 50 * 50;
    EXPECT_NEAR(Count(Red) / Disc, 0.36, 0.03);
    EXPECT_EQ(Pixel(100, 40), White);
}
