#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

#include "basLine.h"
#include "clsDIB.h"

namespace {

constexpr uint32_t White = 0xFFFFFF, Red = 0x0000FF;

uint32_t At(const clsDIB& Dib, int X, int Y)
{
    return Dib.DIBhDC()->GetPixel(X, Y) & 0xFFFFFF;
}

// Row Y as a string, '#' for red pixels and '.' for white ones.
std::string RowOf(const clsDIB& Dib, int Y)
{
    std::string Row;
    for (int X = 0; X < Dib.DIBWidth(); ++X)
        Row += At(Dib, X, Y) == Red ? '#' : '.';
    return Row;
}

int CountRed(const clsDIB& Dib)
{
    int N = 0;
    for (int Y = 0; Y < Dib.DIBHeight(); ++Y)
        for (int X = 0; X < Dib.DIBWidth(); ++X)
            N += At(Dib, X, Y) == Red;
    return N;
}

}  // namespace

TEST(basLine, ArrowHeadFollowsTheLineAngle)
{
    struct Case {
        int X1, Y1, X2, Y2, Brush;
        QPoint Barb1, Barb2;
    };
    const Case Cases[] = {
        {0, 0, 20, 0, 3, {14, -6}, {14, 6}},     // 0 degrees, L = 8: 8 cos 45 = 5.657
        {0, 0, 10, 10, 1, {10, 2}, {2, 10}},     // 45 degrees
        {5, 0, 5, 20, 3, {11, 14}, {-1, 14}},    // vertical, downwards: a = 90, d = 1
        {5, 20, 5, 0, 3, {-1, 6}, {11, 6}},      // vertical, upwards: d = -1
        {20, 0, 0, 0, 3, {6, 6}, {6, -6}},       // 180 degrees: a = 0, d = -1
        {0, 0, 30, 0, 10, {23, -7}, {23, 7}},    // brush 10 is the barb length
        {0, 0, 4, 3, 3, {3, -5}, {-4, 4}},       // a = 36.87: 8 cos 81.87 = 1.131, 8 sin 81.87 = 7.920
        {7, 7, 7, 7, 3, {7, 7}, {7, 7}},         // no length: d = 0
    };
    for (const Case& C : Cases) {
        const basLine::ArrowBarbs Head = basLine::ArrowHeadAt(C.X1, C.Y1, C.X2, C.Y2, C.Brush);
        EXPECT_EQ(Head.Tip, QPoint(C.X2, C.Y2)) << C.X2 << "," << C.Y2;
        EXPECT_EQ(Head.Barb1, C.Barb1) << C.X2 << "," << C.Y2;
        EXPECT_EQ(Head.Barb2, C.Barb2) << C.X2 << "," << C.Y2;
    }
    // At the start the barbs turn round: the head points back along the line.
    const basLine::ArrowBarbs Start = basLine::ArrowHeadAtStart(0, 0, 20, 0, 3);
    EXPECT_EQ(Start.Tip, QPoint(0, 0));
    EXPECT_EQ(Start.Barb1, QPoint(6, 6));
    EXPECT_EQ(Start.Barb2, QPoint(6, -6));
}

TEST(basLine, DashPatternsAlongALevelLine)
{
    // Size 1: dashes of 12 every 14 pixels; dots every 3; dash dot every 28 with the dot at 19;
    // dash dot dot every 42 with its dots 2 pixels apart at 25 and 28.
    struct Case {
        int Type;
        const char* Row;
    };
    const Case Cases[] = {
        {2, "############..############..############..############..#####..."},
        {3, "#..#..#..#..#..#..#..#..#..#..#..#..#..#..#..#..#..#..#..#..#..."},
        {4, "############.......#........############.......#........#####..."},
        {5, "############.............#..#.............############.........."},
    };
    for (const Case& C : Cases) {
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(64, 5, 32, White, true));
        basLine::DrawDashedLine(Dib, 0, 2, 60, 2, Red, 1, C.Type);
        EXPECT_EQ(RowOf(Dib, 2), C.Row) << C.Type;
        EXPECT_EQ(RowOf(Dib, 1), std::string(64, '.')) << C.Type;
        EXPECT_EQ(RowOf(Dib, 3), std::string(64, '.')) << C.Type;
    }
}

TEST(basLine, SizesAreLimitedTo21AndLinesClipped)
{
    for (int Type : {0, 1, 2, 4}) {
        clsDIB Big, Limit;
        ASSERT_TRUE(Big.CreateBlankDIB(90, 70, 32, White, true));
        ASSERT_TRUE(Limit.CreateBlankDIB(90, 70, 32, White, true));
        if (Type < 2) {
            basLine::DrawLineShaped(Big, -3000, -2210, 5000, 3790, Red, 30, Type);
            basLine::DrawLineShaped(Limit, -3000, -2210, 5000, 3790, Red, 21, Type);
        } else {
            basLine::DrawDashedLine(Big, 10, 5, 80, 60, Red, 30, Type);
            basLine::DrawDashedLine(Limit, 10, 5, 80, 60, Red, 21, Type);
        }
        EXPECT_GT(CountRed(Limit), 0) << Type;
        EXPECT_EQ(std::memcmp(Big.DIBBitsPtr(), Limit.DIBBitsPtr(), Big.DIBSize()), 0) << Type;
    }
    clsDIB Dib;
    ASSERT_TRUE(Dib.CreateBlankDIB(20, 20, 32, White, true));
    EXPECT_EQ(basLine::DrawLineShaped(Dib, INT_MIN, INT_MIN, INT_MAX, INT_MAX, Red, 21, 0), QRect(0, 0, 20, 20));
    EXPECT_EQ(basLine::DrawPlainLine(Dib, -2000000000, 5, 2000000000, 5, Red).height(), 1);
    EXPECT_EQ(basLine::DrawLineShaped(Dib, 0, 0, 5, 5, Red, 3, 5), QRect());
    EXPECT_EQ(basLine::DrawDashedLine(Dib, 0, 0, 5, 5, Red, 3, 1), QRect());
    EXPECT_EQ(basLine::DrawLineShaped(Dib, 100, 100, 200, 300, Red, 3, 0), QRect());
}

TEST(basLine, ShapedPensAcrossAndAtTheEnds)
{
    struct Case {
        int X1, Y1, X2, Y2, Size, Type;
        int Column, FirstRow, LastRow;  // what the line covers in one column
    };
    const Case Cases[] = {
        {4, 10, 20, 10, 3, 0, 12, 8, 11},  // level round line: pen widened to 4, extra row above
        {20, 10, 4, 10, 3, 0, 12, 8, 11},  // the same whichever end comes first
        {4, 10, 20, 10, 3, 1, 12, 9, 11},  // square ends are not widened
        {4, 10, 20, 10, 3, 1, 3, 9, 11},   // ... and reach half the width past the end
        {4, 10, 20, 10, 3, 2, 3, -1, -1},  // flat ends stop at the end pixel
        {4, 10, 20, 10, 1, 0, 12, 10, 10}, // size 1: no widening
    };
    for (const Case& C : Cases) {
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(25, 20, 32, White, true));
        basLine::DrawLineShaped(Dib, C.X1, C.Y1, C.X2, C.Y2, Red, C.Size, C.Type);
        int First = -1, Last = -1;
        for (int Y = 0; Y < 20; ++Y)
            if (At(Dib, C.Column, Y) == Red)
                Last = Y, First = First < 0 ? Y : First;
        EXPECT_EQ(First, C.FirstRow) << C.X1 << " " << C.Size << " " << C.Type;
        EXPECT_EQ(Last, C.LastRow) << C.X1 << " " << C.Size << " " << C.Type;
    }
    EXPECT_EQ(basLine::PenWidthForAngle(90, 5), 6);
    EXPECT_EQ(basLine::PenWidthForAngle(45, 5), 5.5);
    EXPECT_EQ(basLine::PenWidthForAngle(165, 5), 5);
}

TEST(basLine, PlainLineHoldsBothEnds)
{
    clsDIB Dib;
    ASSERT_TRUE(Dib.CreateBlankDIB(12, 8, 32, White, true));
    EXPECT_EQ(basLine::DrawPlainLine(Dib, 9, 6, 2, 3, Red), QRect(QPoint(2, 3), QPoint(9, 6)));
    EXPECT_EQ(At(Dib, 2, 3), Red);
    EXPECT_EQ(At(Dib, 9, 6), Red);
    EXPECT_EQ(CountRed(Dib), 8);
    // The tool draws brush 1 plain whatever the type: a dashed type leaves no gap.
    clsDIB Tool;
    ASSERT_TRUE(Tool.CreateBlankDIB(40, 3, 32, White, true));
    basLine::DrawLineTool(Tool, 0, 1, 39, 1, Red, 1, 2);
    EXPECT_EQ(RowOf(Tool, 1), std::string(40, '#'));
}

TEST(basLine, ToolArrowsAndAntialiasingOnEitherStorageOrder)
{
    for (bool TopDown : {true, false}) {
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(40, 30, 32, White, TopDown));
        basLine::DrawLineTool(Dib, 5, 15, 35, 15, Red, 2, 7);
        const basLine::ArrowBarbs End = basLine::ArrowHeadAt(5, 15, 35, 15, 2);
        const basLine::ArrowBarbs Start = basLine::ArrowHeadAtStart(5, 15, 35, 15, 2);
        for (QPoint P : {End.Barb1, End.Barb2, Start.Barb1, Start.Barb2})
            EXPECT_EQ(At(Dib, P.x(), P.y()), Red) << TopDown << " " << P.x() << "," << P.y();
        EXPECT_EQ(At(Dib, 20, 5), White);

        // The antialiased line: solid along its middle, shaded at its edges, nothing far off.
        clsDIB Smooth;
        ASSERT_TRUE(Smooth.CreateBlankDIB(40, 12, 32, White, TopDown));
        const QRect Box = basLine::DrawLineTool(Smooth, 2, 2, 37, 9, 0x000000, 5, 8);
        EXPECT_TRUE(Box.contains(QPoint(2, 2)) && Box.contains(QPoint(37, 9))) << TopDown;
        EXPECT_LT(At(Smooth, 20, 6) & 255, 40u) << TopDown;  // the line passes y = 5.6 here
        int Shaded = 0;
        for (int Y = 0; Y < 12; ++Y)
            for (int X = 0; X < 40; ++X)
                Shaded += (At(Smooth, X, Y) & 255) > 40 && At(Smooth, X, Y) != White;
        EXPECT_GT(Shaded, 10) << TopDown;
        EXPECT_EQ(At(Smooth, 20, 1), White) << TopDown;
        EXPECT_EQ(At(Smooth, 20, 10), White) << TopDown;
    }
}

TEST(basLine, SurfacesWithoutThirtyTwoBitsAreLeftAlone)
{
    clsDIB Empty, Paletted;
    ASSERT_TRUE(Paletted.CreateBlankDIB(8, 8, 8, White, true));
    for (clsDIB* Dib : {&Empty, &Paletted}) {
        for (int Type = 0; Type <= 8; ++Type)
            EXPECT_EQ(basLine::DrawLineTool(*Dib, 0, 0, 7, 7, Red, 3, Type), QRect()) << Type;
        EXPECT_EQ(basLine::DrawPlainLine(*Dib, 0, 0, 7, 7, Red), QRect());
    }
}
