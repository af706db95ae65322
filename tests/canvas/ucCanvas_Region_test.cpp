// Regions and paste on a shown canvas: selecting, moving, copying, resizing by the edges, dropping,
// the paste kinds and the host's cut and crop, checked pixel by pixel.
#include <QTimer>
#include <vector>

#include "CanvasTest.h"
#include "basMath.h"

namespace {

constexpr uint32_t Red = 0x0000FF, Blue = 0xFF0000, Green = 0x00FF00, White = 0xFFFFFF, Yellow = 0x00FFFF;

// Half of each channel from either colour, rounded to even.
uint32_t Blend50(uint32_t A, uint32_t B)
{
    uint32_t Out = 0;
    for (int Shift : {0, 8, 16})
        Out |= static_cast<uint32_t>(RoundHalfEven(0.5 * ((A >> Shift) & 255) + 0.5 * ((B >> Shift) & 255))) << Shift;
    return Out;
}

}  // namespace

class RegionTest : public CanvasTest {
protected:
    void Stroke(int X1, int Y1, int X2, int Y2, Qt::KeyboardModifiers Mods = Qt::NoModifier)
    {
        Press(X1, Y1, Qt::LeftButton, Mods);
        Drag(X2, Y2, Mods);
        Release(X2, Y2, Qt::LeftButton, Mods);
    }
    void Block(int X, int Y, int W, int H, uint32_t C)
    {
        Canvas->DIB.DIBhDC()->FillRect(X, Y, W, H, C);
        Canvas->CanvasPicPaint();
    }
    QString CursorName() const { return Canvas->picDisp->property("CursorName").toString(); }
    // Records the events that matter here by their numbers.
    std::vector<int> Events;
    void Listen()
    {
        QObject::connect(Canvas.get(), &ucCanvas::OperationStarting, [this] { Events.push_back(19); });
        QObject::connect(Canvas.get(), &ucCanvas::RegionDropped, [this] { Events.push_back(9); });
        QObject::connect(Canvas.get(), &ucCanvas::PictureChanged, [this] { Events.push_back(5); });
    }
};

TEST_F(RegionTest, SelectingReportsTheBoxInPicturePixelsAtEveryZoomAndScroll)
{
    struct Case {
        int Zoom, W, H, ScrollX, ScrollY, X1, Y1, X2, Y2;
    };
    for (const Case& C : {Case{1, 100, 80, 0, 0, 10, 10, 30, 25}, Case{2, 100, 80, 0, 0, 10, 10, 30, 25},
                          Case{2, 400, 300, 101, 51, 100, 60, 120, 75}}) {
        Open(C.W, C.H);
        Canvas->setMagnify(static_cast<int16_t>(C.Zoom));
        Canvas->CanvasResize();
        Canvas->SetScrollValues(C.ScrollX, C.ScrollY);
        Canvas->setCanvasOp(ucCanvas::OpRegion);
        QSignalSpy Size(Canvas.get(), &ucCanvas::RegionStartAndSize);
        QSignalSpy Made(Canvas.get(), &ucCanvas::RegionMade);
        Stroke(C.X1, C.Y1, C.X2, C.Y2);
        ASSERT_EQ(Made.count(), 1);
        ASSERT_FALSE(Size.isEmpty());
        const QList<QVariant> Last = Size.last();
        EXPECT_EQ(Last.at(0).toInt(), C.X1);
        EXPECT_EQ(Last.at(1).toInt(), C.Y1);
        EXPECT_EQ(Last.at(2).toInt(), C.X2 - C.X1);
        EXPECT_EQ(Last.at(3).toInt(), C.Y2 - C.Y1);
        EXPECT_TRUE(Canvas->RegionMoveReady());
        EXPECT_TRUE(Canvas->Timer1->isActive());
        int L = 0, R = 0, T = 0, B = 0;
        Canvas->GetRegionData(L, R, T, B);
        EXPECT_EQ(QRect(QPoint(L, T), QPoint(R, B)), QRect(QPoint(C.X1, C.Y1), QPoint(C.X2 - 1, C.Y2 - 1)));
        // On screen: the first and last display pixels of the box, which follows a scroll.
        EXPECT_EQ(Canvas->RegionLeft, C.X1 * C.Zoom - C.ScrollX);
        EXPECT_EQ(Canvas->RegionRight, C.X2 * C.Zoom - C.ScrollX - 1);
        EXPECT_EQ(Canvas->RegionTop, C.Y1 * C.Zoom - C.ScrollY);
        Canvas->SetScrollValues(0, 0);
        EXPECT_EQ(Canvas->RegionLeft, C.X1 * C.Zoom);
        EXPECT_EQ(Canvas->RegionBottom, C.Y2 * C.Zoom - 1);
    }
}

TEST_F(RegionTest, ShiftSquaresTheBoxAndAClickMakesNoRegion)
{
    Open(100, 80);
    Canvas->setCanvasOp(ucCanvas::OpRegion);
    Stroke(10, 10, 40, 20, Qt::ShiftModifier);
    EXPECT_EQ(Canvas->RegionImageBox(), QRect(10, 10, 30, 30));
    // Ended by the host: no region, box zeroed.
    Canvas->setRegionMoveReady(false);
    EXPECT_FALSE(Canvas->HasRegion());
    EXPECT_FALSE(Canvas->RegionMoveReady());
    EXPECT_EQ(Canvas->RegionRight, 0.0f);
    QSignalSpy Made(Canvas.get(), &ucCanvas::RegionMade);
    Click(50, 50);
    EXPECT_EQ(Made.count(), 0);
    EXPECT_FALSE(Canvas->HasRegion());
}

TEST_F(RegionTest, DraggingMovesThePixelsAndCtrlLeavesThemInPlace)
{
    struct Case {
        Qt::KeyboardModifiers Mods;
        int Reds, Greens, RedsAfterSecondDrag;
    };
    for (const Case& C : {Case{Qt::NoModifier, 100, 100, 100}, Case{Qt::ControlModifier, 200, 0, 300}}) {
        Open(100, 80);
        Canvas->TransparentColor = Green;
        Block(20, 20, 10, 10, Red);
        Canvas->setCanvasOp(ucCanvas::OpRegion);
        Stroke(20, 20, 30, 30);
        QSignalSpy Changed(Canvas.get(), &ucCanvas::PictureChanged);
        Stroke(25, 25, 55, 45, C.Mods);
        EXPECT_TRUE(Canvas->RegionLifted());
        EXPECT_EQ(Canvas->RegionImageBox(), QRect(50, 40, 10, 10));
        EXPECT_EQ(Pixel(50, 40), Red);
        EXPECT_EQ(Pixel(59, 49), Red);
        EXPECT_EQ(Count(Red), C.Reds);
        EXPECT_EQ(Count(Green), C.Greens);  // the old place takes the background colour
        EXPECT_EQ(Changed.count(), 0);       // nothing is final before the drop
        // Once lifted, a copy drag leaves a copy where the region stood.
        Stroke(55, 45, 75, 45, C.Mods);
        EXPECT_EQ(Count(Red), C.RedsAfterSecondDrag);
        Canvas->DropRegion();
        EXPECT_EQ(Changed.count(), 1);
        EXPECT_EQ(Count(Red), C.RedsAfterSecondDrag);
    }
}

TEST_F(RegionTest, APartDraggedOffThePictureComesBackWhole)
{
    Open(100, 80);
    Block(20, 20, 10, 10, Red);
    Block(29, 20, 1, 10, Blue);  // the block's right column
    const std::vector<uint32_t> Before = Snapshot();
    Canvas->setCanvasOp(ucCanvas::OpRegion);
    Stroke(20, 20, 30, 30);
    Press(25, 25);
    Drag(100, 25);
    EXPECT_EQ(Canvas->RegionImageBox(), QRect(95, 20, 10, 10));
    EXPECT_EQ(Pixel(99, 25), Red);
    EXPECT_EQ(Count(Blue), 0);
    Drag(25, 25);
    Release(25, 25);
    EXPECT_EQ(Snapshot(), Before);
}

TEST_F(RegionTest, AClickOutsideDropsAndLeavingTheToolMerges)
{
    Open(100, 80);
    Block(20, 20, 10, 10, Red);
    Canvas->setCanvasOp(ucCanvas::OpRegion);
    Stroke(20, 20, 30, 30);
    Stroke(25, 25, 35, 25);
    const std::vector<uint32_t> Moved = Snapshot();
    Listen();
    Click(80, 70);
    EXPECT_EQ(Events, (std::vector<int>{19, 9, 5}));
    EXPECT_FALSE(Canvas->HasRegion());
    EXPECT_FALSE(Canvas->Timer1->isActive());
    EXPECT_EQ(Canvas->RegionLeft, 0.0f);
    EXPECT_EQ(Snapshot(), Moved);
    // A region never lifted is dropped with the tool, the picture unchanged.
    Stroke(10, 10, 20, 20);
    Events.clear();
    Canvas->setCanvasOp(ucCanvas::OpPaint);
    EXPECT_EQ(Events, (std::vector<int>{9}));
    EXPECT_FALSE(Canvas->HasRegion());
}

TEST_F(RegionTest, AnOvalRegionMovesOnlyWhenGrabbedInsideItsEllipse)
{
    Open(100, 80, 400, 300, Red);
    Canvas->TransparentColor = Green;
    Canvas->setCanvasOp(ucCanvas::OpOvalRegion);
    Stroke(10, 10, 50, 50);
    Stroke(11, 11, 31, 31);  // a corner of the box, off the ellipse
    EXPECT_FALSE(Canvas->RegionLifted());
    EXPECT_EQ(Canvas->RegionImageBox(), QRect(10, 10, 40, 40));
    Stroke(30, 30, 40, 40);
    EXPECT_EQ(Canvas->RegionImageBox(), QRect(20, 20, 40, 40));
    EXPECT_EQ(Pixel(15, 30), Green);  // the old ellipse, uncovered
    EXPECT_EQ(Pixel(10, 10), Red);    // the old box's corner was never cut
    EXPECT_EQ(Pixel(59, 59), Red);    // the new box's corner shows the picture, not the cut corner
    EXPECT_EQ(Count(Red) + Count(Green), 100 * 80);
    // Copied out, the corners take the background colour.
    clsDIB Out;
    ASSERT_TRUE(Canvas->CopyRegionTo(Out));
    EXPECT_EQ(Out.DIBhDC()->GetPixel(0, 0) & 0xFFFFFF, Green);
    EXPECT_EQ(Out.DIBhDC()->GetPixel(20, 20) & 0xFFFFFF, Red);
}

TEST_F(RegionTest, AnEdgeDragStretchesTheRegion)
{
    Open(100, 80);
    Block(10, 10, 20, 30, Red);
    Block(30, 10, 20, 30, Blue);
    Canvas->setCanvasOp(ucCanvas::OpRegion);
    Stroke(10, 10, 50, 40);
    Hover(48, 20);
    EXPECT_EQ(Canvas->picDisp->cursor().shape(), Qt::SizeHorCursor);
    Hover(25, 11);
    EXPECT_EQ(Canvas->picDisp->cursor().shape(), Qt::SizeVerCursor);
    Hover(25, 25);
    EXPECT_EQ(CursorName(), "REGIONDRAG");
    Stroke(48, 20, 69, 20);
    EXPECT_EQ(Canvas->RegionImageBox(), QRect(10, 10, 60, 30));
    EXPECT_EQ(Pixel(39, 20), Red);
    EXPECT_EQ(Pixel(40, 20), Blue);
    EXPECT_EQ(Pixel(69, 39), Blue);
    EXPECT_EQ(Pixel(70, 20), White);
    Canvas->SuspendRegionResizeByEdgeDragging = true;
    Hover(68, 20);
    EXPECT_EQ(CursorName(), "REGIONDRAG");
}

TEST_F(RegionTest, EdgesStopAboveFifteenDisplayPixels)
{
    for (int Zoom : {1, 2}) {
        Open(100, 80);
        Canvas->setMagnify(static_cast<int16_t>(Zoom));
        Canvas->CanvasResize();
        Canvas->setCanvasOp(ucCanvas::OpRegion);
        Stroke(10, 10, 40, 40);
        const int Keep = 16 / Zoom;  // the fewest pixels over 15 display pixels
        Press(11, 20);               // the left band
        Drag(40 - Keep, 20);
        Drag(40 - Keep + 1, 20);  // would leave 15 display pixels or less: ignored
        Release(40 - Keep + 1, 20);
        EXPECT_EQ(Canvas->RegionImageBox(), QRect(40 - Keep, 10, Keep, 30)) << Zoom;
        EXPECT_EQ(Canvas->DIBRegion.DIBWidth(), Keep);
    }
}

TEST_F(RegionTest, PasteKinds)
{
    // Red with a blue top row: blue is the key of the transparent kinds.
    clsDIB Image;
    ASSERT_TRUE(Image.CreateBlankDIB(10, 10, 32, Red, false));
    Image.DIBhDC()->FillRect(0, 0, 10, 1, Blue);
    struct Case {
        int Kind, Percent;
        uint32_t TopLeft, Middle;
    };
    const Case Cases[] = {{0, 100, Blue, Red},
                          {1, 100, Yellow, Red},
                          {3, 100, Blue, Red},
                          {2, 100, Yellow, Red},
                          {3, 50, Blend50(Blue, Yellow), Blend50(Red, Yellow)},
                          {2, 50, Yellow, Blend50(Red, Yellow)}};
    std::vector<uint32_t> Solid[2];  // opaque and transparent, to compare the translucent ones at 100%
    for (const Case& C : Cases) {
        Open(100, 80, 400, 300, Yellow);
        ASSERT_TRUE(Canvas->BeginPaste(Image, C.Kind, static_cast<int16_t>(C.Percent)));
        EXPECT_TRUE(Canvas->PasteOn());
        EXPECT_EQ(Canvas->CanvasOp(), ucCanvas::OpRegion);
        EXPECT_EQ(CursorName(), "PASTEDRAG");
        EXPECT_EQ(Canvas->RegionImageBox(), QRect(0, 0, 10, 10));
        EXPECT_EQ(Pixel(0, 0), C.TopLeft) << C.Kind << " " << C.Percent;
        EXPECT_EQ(Pixel(5, 5), C.Middle) << C.Kind << " " << C.Percent;
        EXPECT_EQ(Canvas->TranslucencyPending, C.Kind >= 2);
        if (C.Percent == 100) {
            std::vector<uint32_t>& Same = Solid[C.Kind == 1 || C.Kind == 2];
            if (Same.empty())
                Same = Snapshot();
            else
                EXPECT_EQ(Snapshot(), Same) << C.Kind;
        }
        // Nothing was cut beneath the paste.
        Stroke(5, 5, 35, 35);
        EXPECT_EQ(Count(Yellow), 100 * 80 - 100 + (C.Kind == 1 || C.Kind == 2 ? 10 : 0));
    }
    // At a scroll the paste stands at the first visible pixel.
    Open(400, 300);
    Canvas->setMagnify(2);
    Canvas->CanvasResize();
    Canvas->SetScrollValues(101, 51);
    ASSERT_TRUE(Canvas->BeginPaste(Image, 0));
    EXPECT_EQ(Canvas->RegionImageBox(), QRect(50, 25, 10, 10));
    EXPECT_FALSE(Canvas->BeginPaste(Image, 4));
}

TEST_F(RegionTest, EndingAPasteMergesItAndRightClickOnTextReports)
{
    clsDIB Image;
    ASSERT_TRUE(Image.CreateBlankDIB(10, 10, 32, Red, true));
    Open(100, 80);
    ASSERT_TRUE(Canvas->BeginPaste(Image, 0));
    Canvas->setPasteOnText(true);
    QSignalSpy Text(Canvas.get(), &ucCanvas::PastedTextRightClicked);
    Click(5, 5, Qt::RightButton);
    Click(50, 50, Qt::RightButton);
    EXPECT_EQ(Text.count(), 1);
    EXPECT_TRUE(Canvas->HasRegion());
    QSignalSpy Changed(Canvas.get(), &ucCanvas::PictureChanged);
    Canvas->setPasteOn(false);
    EXPECT_FALSE(Canvas->HasRegion());
    EXPECT_FALSE(Canvas->PasteOn());
    EXPECT_FALSE(Canvas->PasteOnText());
    EXPECT_EQ(Canvas->CanvasOp(), ucCanvas::OpRegion);
    EXPECT_EQ(Changed.count(), 1);
    EXPECT_EQ(Count(Red), 100);
}

TEST_F(RegionTest, CutFillsThePlaceAndNeedsARegion)
{
    Open(100, 80);
    Canvas->TransparentColor = Green;
    Block(20, 20, 10, 10, Red);
    Canvas->setCanvasOp(ucCanvas::OpRegion);
    const std::vector<uint32_t> Before = Snapshot();
    QSignalSpy Changed(Canvas.get(), &ucCanvas::PictureChanged);
    Canvas->CutRegion();
    EXPECT_EQ(Snapshot(), Before);
    EXPECT_EQ(Changed.count(), 0);
    Stroke(20, 20, 30, 30);
    Canvas->CutRegion();
    EXPECT_EQ(Count(Green), 100);
    EXPECT_EQ(Count(Red), 0);
    EXPECT_FALSE(Canvas->HasRegion());
    EXPECT_EQ(Changed.count(), 1);
}

TEST_F(RegionTest, CropRefusesABoxUnderTenPixels)
{
    struct Case {
        int W, H;
        bool Done;
    };
    for (const Case& C : {Case{9, 20, false}, Case{20, 9, false}, Case{10, 10, true}}) {
        Open(100, 80);
        Block(20, 20, 10, 10, Red);
        Canvas->setCanvasOp(ucCanvas::OpRegion);
        Stroke(20, 20, 20 + C.W, 20 + C.H);
        EXPECT_EQ(Canvas->CropToRegion(), C.Done) << C.W << "x" << C.H;
        EXPECT_EQ(Canvas->HasRegion(), !C.Done);
        EXPECT_EQ(Canvas->DIB.DIBWidth(), C.Done ? C.W : 100);
        EXPECT_EQ(Canvas->DIB.DIBHeight(), C.Done ? C.H : 80);
        if (C.Done) {
            EXPECT_EQ(Count(Red), C.W * C.H);
        }
    }
}

TEST_F(RegionTest, ADiscardedPasteLeavesNoTraceAndTheHostCanShiftTheRegion)
{
    clsDIB Image;
    ASSERT_TRUE(Image.CreateBlankDIB(10, 10, 32, Red, true));
    Open(100, 80);
    Canvas->setMagnify(2);
    Canvas->CanvasResize();
    ASSERT_TRUE(Canvas->BeginPaste(Image, 0));
    // Seven display pixels at zoom 2 are three whole picture pixels.
    Canvas->AdjustRegionDispPosition_After_FormMax(7, 20);
    EXPECT_EQ(Canvas->RegionImageBox(), QRect(3, 10, 10, 10));
    EXPECT_EQ(Pixel(3, 10), Red);
    EXPECT_EQ(Pixel(2, 10), White);
    QSignalSpy Changed(Canvas.get(), &ucCanvas::PictureChanged);
    Canvas->DiscardRegion();
    EXPECT_FALSE(Canvas->HasRegion());
    EXPECT_EQ(Count(White), 100 * 80);
    EXPECT_EQ(Changed.count(), 0);
}
