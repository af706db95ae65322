// The canvas's view: layout, zoom and scroll, grips, the rules of setting the operation, the glass
// and the clean-up.
#include <QLabel>
#include <QScrollBar>
#include <QTest>

#include "CanvasTest.h"
#include "basCanvasImages.h"

using ViewTest = CanvasTest;

TEST_F(ViewTest, StartValuesOfTheProperties)
{
    ucCanvas C;
    EXPECT_EQ(C.CanvasScreenMode(), 0);
    EXPECT_EQ(C.CanvasOp(), ucCanvas::OpScroll);
    EXPECT_TRUE(C.HandScrollEnabled);
    EXPECT_EQ(C.Magnify(), 1);
    EXPECT_EQ(C.BrushSize, 3);
    EXPECT_EQ(C.PaintBrushTranslucencyPercent, 100);
    EXPECT_EQ(C.SprayTranslucencyPercent, 100);
    EXPECT_EQ(C.SprayDensity, 2);
    EXPECT_FLOAT_EQ(C.PolygonConcaveFactor, 1.0f);
    EXPECT_TRUE(C.AllowAntialiasing);
    EXPECT_EQ(C.MagnifyGlassFactor(), 2);
    EXPECT_FALSE(C.UseConvexGlass());
    // The children are there by their names.
    for (const char* Name : {"picDragVertical", "picDragHorizontal", "picDrag", "Timer1", "picTemp", "HsbDisp",
                             "VsbDisp", "picDisp", "imgNode_0", "imgNode_3", "picGlass", "shpDrag", "imgPattern_1"})
        EXPECT_NE(C.findChild<QObject*>(Name), nullptr) << Name;
}

TEST_F(ViewTest, ZoomScrollsAndShowsTheRightPixels)
{
    Open(200, 100);
    Canvas->DIB.DIBhDC()->SetPixelV(2, 0, 0x0000FF);
    Canvas->setMagnify(3);
    Canvas->CanvasResize();
    ASSERT_TRUE(Canvas->HsbDisp->isVisible());
    int MaxX = 0, MaxY = 0;
    Canvas->GetScrollMaxInfo(MaxX, MaxY);
    EXPECT_EQ(MaxX, 600 - (Canvas->Layout().InnerWidth - 2));
    Canvas->SetScrollValues(7, 0, false, true);
    int X = 0, Y = 0;
    Canvas->GetVisibleStartInfo(X, Y);
    EXPECT_EQ(X, 2);
    // Column 2 starts one display pixel left of the box: display pixels 0 and 1 show it.
    const QImage& Shown = Canvas->picDisp->Image;
    EXPECT_EQ(Shown.pixel(0, 0) & 0xFFFFFF, 0xFF0000u);
    EXPECT_EQ(Shown.pixel(1, 0) & 0xFFFFFF, 0xFF0000u);
    EXPECT_EQ(Shown.pixel(2, 0) & 0xFFFFFF, 0xFFFFFFu);
    // Values beyond the ends are clamped; the bar follows.
    Canvas->SetScrollValues(-5, 99999);
    Canvas->GetScrollValues(X, Y);
    EXPECT_EQ(X, 0);
    EXPECT_EQ(Y, MaxY);
    Canvas->SetScrollValues(99999, 0);
    EXPECT_EQ(Canvas->HsbDisp->value(), MaxX);
    // Fit-in shows the whole picture without bars.
    Canvas->setFitInView(true);
    Canvas->CanvasResize();
    EXPECT_FALSE(Canvas->HsbDisp->isVisible());
    EXPECT_FALSE(Canvas->VsbDisp->isVisible());
    EXPECT_LE(Canvas->Layout().Disp.width(), 400);
}

TEST_F(ViewTest, GripsShowOnlyAboveFivePixelsInScrollModeAtZoomOne)
{
    struct Case {
        int W, H;
        bool Shown;
    };
    for (const Case& C : {Case{6, 6, true}, Case{5, 5, false}, Case{100, 5, false}}) {
        Open(C.W, C.H);
        Canvas->setCanvasOp(ucCanvas::OpScroll);
        EXPECT_EQ(Canvas->GripsShowing(), C.Shown) << C.W << "x" << C.H;
    }
    Open(50, 40);
    Canvas->setCanvasOp(ucCanvas::OpScroll);
    ASSERT_TRUE(Canvas->GripsShowing());
    Canvas->setCanvasOp(ucCanvas::OpPaint);
    EXPECT_FALSE(Canvas->GripsShowing());
    Canvas->setCanvasOp(ucCanvas::OpScroll);
    Canvas->setSuspendCanvasResizeByEdgeDragging(true);
    EXPECT_FALSE(Canvas->GripsShowing());
    Canvas->setSuspendCanvasResizeByEdgeDragging(false);
    EXPECT_TRUE(Canvas->GripsShowing());
    Canvas->setMagnify(2);
    Canvas->CanvasResize();
    EXPECT_FALSE(Canvas->GripsShowing());
    Canvas->setMagnify(1);
    Canvas->setCanvasScreenMode(0);
    Canvas->CanvasResize();
    EXPECT_FALSE(Canvas->GripsShowing());
}

TEST_F(ViewTest, DraggingTheCornerGripResizesThePicture)
{
    Open(50, 40);
    Canvas->setCanvasOp(ucCanvas::OpScroll);
    Canvas->DIB.DIBhDC()->SetPixelV(49, 39, 0x00FF00);
    QSignalSpy Dragging(Canvas.get(), &ucCanvas::CanvasEdgeDragging);
    QSignalSpy Changed(Canvas.get(), &ucCanvas::PictureChanged);
    QSignalSpy Ended(Canvas.get(), &ucCanvas::CanvasEdgeDragEnded);
    QLabel* Grip = Canvas->picDrag;
    QTest::mousePress(Grip, Qt::LeftButton, {}, QPoint(2, 2));
    QTest::mouseMove(Grip, QPoint(22, 12));
    QTest::mouseRelease(Grip, Qt::LeftButton, {}, QPoint(22, 12));
    ASSERT_FALSE(Dragging.isEmpty());
    EXPECT_EQ(Dragging.last().at(0).toInt(), 70);
    EXPECT_EQ(Dragging.last().at(1).toInt(), 50);
    EXPECT_EQ(Canvas->DIB.DIBWidth(), 70);
    EXPECT_EQ(Canvas->DIB.DIBHeight(), 50);
    EXPECT_EQ(Pixel(49, 39), 0x00FF00u);  // the old picture at the top left
    EXPECT_EQ(Pixel(69, 49), 0xFFFFFFu);  // white around it
    EXPECT_EQ(Changed.count(), 1);
    EXPECT_EQ(Ended.count(), 1);
}

TEST_F(ViewTest, SettingTheSameOperationKeepsAPolygonGoing)
{
    Open(100, 80);
    Canvas->setCanvasOp(ucCanvas::OpPolygon);
    Canvas->PolygonDrawMethod = 1;
    Click(10, 10);
    Click(50, 10);
    ASSERT_TRUE(Canvas->PolygonInProgress());
    Canvas->setCanvasOp(ucCanvas::OpPolygon);
    EXPECT_TRUE(Canvas->PolygonInProgress());
    // Leaving the tool mid-way takes the drawn edges back.
    Canvas->setCanvasOp(ucCanvas::OpLine);
    EXPECT_FALSE(Canvas->PolygonInProgress());
    EXPECT_EQ(Count(0xFFFFFF), 100 * 80);
}

TEST_F(ViewTest, GlassNeedsAPictureOfAFifthOfItsSize)
{
    const int GW = basCanvasImages::GlassWidth, GH = basCanvasImages::GlassHeight;
    struct Case {
        int W, H;
        bool Shows;
    };
    const Case Cases[] = {{GW / 5, GH / 5, true}, {GW / 5 - 1, GH, false}, {GW, GH / 5 - 1, false}, {GW * 2, GH * 2, true}};
    for (const Case& C : Cases) {
        Open(C.W, C.H);
        Canvas->setCanvasOp(ucCanvas::OpGlass);
        EXPECT_EQ(Canvas->GlassShowing(), C.Shows) << C.W << "x" << C.H;
        Canvas->setCanvasOp(ucCanvas::OpScroll);
        EXPECT_FALSE(Canvas->GlassShowing());
    }
    // The host's messages.
    Open(GW - 1, GH);
    EXPECT_EQ(Canvas->GlassRefusalMessage(), "Width and/or height of current image is smaller than magnifying glass,\n"
                                             "please use Zoom In to enlarge image instead.");
    Open(GW, GH);
    EXPECT_TRUE(Canvas->GlassRefusalMessage().isEmpty());
    Canvas->setMagnify(2);
    EXPECT_EQ(Canvas->GlassRefusalMessage(),
              "Magnifying glass is available only when image is not magnified/magnifiable.");
    EXPECT_EQ(ucCanvas::MagnifyRefusalMessage(5001, 10, 2), "Will result in W or H exceeding the max 10000");
    EXPECT_EQ(ucCanvas::MagnifyRefusalMessage(4000, 4000, 1), "Will result in W x H exceeding the max set (15000000 pixels).");
    EXPECT_TRUE(ucCanvas::MagnifyRefusalMessage(2000, 1500, 2).isEmpty());
}

TEST_F(ViewTest, GlassMagnifiesAndLeavesThePictureAsItWas)
{
    const int GW = basCanvasImages::GlassWidth, GH = basCanvasImages::GlassHeight;
    Open(GW * 3, GH * 3);
    // A red block in the middle, the rest white.
    Canvas->DIB.DIBhDC()->FillRect(GW * 3 / 2 - 10, GH * 3 / 2 - 10, 20, 20, 0x0000FF);
    const std::vector<uint32_t> Before = Snapshot();
    Canvas->setCanvasOp(ucCanvas::OpGlass);
    ASSERT_TRUE(Canvas->GlassShowing());
    Hover(GW * 3 / 2, GH * 3 / 2);
    const QPoint Pos = Canvas->GlassPosition();
    EXPECT_EQ(Pos, QPoint(GW * 3 / 2 - GW / 2, GH * 3 / 2 - GH / 2));
    // At factor 2 the 20-pixel block covers about 40 pixels across the lens's centre.
    int Red = 0;
    for (int X = Pos.x(); X < Pos.x() + GW; ++X)
        Red += Pixel(X, Pos.y() + GH / 2) == 0x0000FF;
    EXPECT_NEAR(Red, 40, 2);
    // The glass stops at 0.8 of the picture beyond the edge.
    Hover(-10000 / 3, 0);
    EXPECT_GE(Canvas->GlassPosition().x(), static_cast<int>(-0.8 * GW * 3));
    Canvas->setCanvasOp(ucCanvas::OpScroll);
    EXPECT_EQ(Snapshot(), Before);
}

TEST_F(ViewTest, CleanseResetsTheViewAndKeepsThePicture)
{
    Open(60, 40);
    Canvas->DIB.DIBhDC()->SetPixelV(3, 3, 0x0000FF);
    Canvas->setMagnify(2);
    Canvas->setCanvasOp(ucCanvas::OpPolygon);
    Canvas->PolygonDrawMethod = 1;
    Click(10, 10);
    QSignalSpy View(Canvas.get(), &ucCanvas::ViewChanged);
    QSignalSpy Starting(Canvas.get(), &ucCanvas::OperationStarting);
    Canvas->CanvasCleanse();
    EXPECT_EQ(Pixel(3, 3), 0x0000FFu);
    EXPECT_EQ(Canvas->CanvasOp(), ucCanvas::OpScroll);
    EXPECT_EQ(Canvas->Magnify(), 1);
    EXPECT_FALSE(Canvas->PolygonInProgress());
    EXPECT_EQ(View.count(), 1);
    EXPECT_EQ(Starting.count(), 1);
    // With no picture the mouse does nothing at all.
    ucCanvas Empty;
    Empty.resize(200, 100);
    Empty.show();
    QSignalSpy Changed(&Empty, &ucCanvas::PictureChanged);
    for (int Op : {ucCanvas::OpPaint, ucCanvas::OpFill, ucCanvas::OpPolygon, ucCanvas::OpGlass}) {
        Empty.setCanvasScreenMode(1);
        Empty.setCanvasOp(Op);
        QTest::mouseClick(Empty.picDisp, Qt::LeftButton, {}, QPoint(5, 5));
    }
    EXPECT_EQ(Changed.count(), 0);
}

TEST_F(ViewTest, HandScrollDragsTheView)
{
    Open(1000, 800, 300, 200);
    Canvas->setCanvasOp(ucCanvas::OpScroll);
    EXPECT_EQ(Canvas->picDisp->property("CursorName").toString(), "HANDON");
    Canvas->SetScrollValues(100, 100);
    const QPoint Start(150, 100);
    Send(QEvent::MouseButtonPress, Start, Qt::LeftButton, Qt::LeftButton);
    Send(QEvent::MouseMove, Start + QPoint(30, -20), Qt::NoButton, Qt::LeftButton);
    Send(QEvent::MouseButtonRelease, Start + QPoint(30, -20), Qt::LeftButton, Qt::NoButton);
    int X = 0, Y = 0;
    Canvas->GetScrollValues(X, Y);
    EXPECT_EQ(X, 70);
    EXPECT_EQ(Y, 120);
    Open(50, 40, 300, 200);
    Canvas->setCanvasOp(ucCanvas::OpScroll);
    EXPECT_EQ(Canvas->picDisp->property("CursorName").toString(), "HANDOFF");
}
