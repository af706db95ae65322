#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <numbers>

#include "ScanRegion.h"
#include "clsDIB.h"

namespace {

struct Probe {
    int X, Y;
    bool Inside;
};

void ExpectMembership(const ScanRegion& Region, std::initializer_list<Probe> Probes, const char* What)
{
    for (const Probe& P : Probes)
        EXPECT_EQ(Region.Contains(P.X, P.Y), P.Inside) << What << " at " << P.X << "," << P.Y;
}

}  // namespace

TEST(ScanRegion, ShapesHoldThePixelsWhoseCentresLieInside)
{
    // Boxes leave out their right and bottom edges; corners may come in any order.
    const ScanRegion Box = ScanRegion::Rect(6, 8, 2, 3);
    ExpectMembership(Box, {{2, 3, true}, {5, 7, true}, {6, 7, false}, {5, 8, false}, {1, 3, false}}, "rect");
    EXPECT_EQ(Box.Bounds(), QRect(2, 3, 4, 5));

    // Ellipse in 10 by 10: the top row runs 3..6, the middle rows the whole width.
    const ScanRegion Oval = ScanRegion::Ellipse(0, 0, 10, 10);
    ExpectMembership(Oval, {{3, 0, true}, {6, 0, true}, {2, 0, false}, {7, 0, false}, {0, 0, false},
                            {0, 4, true}, {9, 5, true}, {10, 5, false}, {4, 10, false}}, "ellipse");
    EXPECT_EQ(Oval.Bounds(), QRect(0, 0, 10, 10));

    // Corners of diameter 10: the top row starts at 3, the corner pixels stay out.
    const ScanRegion Round = ScanRegion::RoundRect(0, 0, 20, 20, 10, 10);
    ExpectMembership(Round, {{0, 0, false}, {2, 0, false}, {3, 0, true}, {16, 0, true}, {17, 0, false},
                             {0, 5, true}, {19, 10, true}, {19, 19, false}, {10, 19, true}}, "roundrect");

    // Vertices on pixel corners: the square 0..10 holds exactly the pixels 0..9.
    const ScanRegion Square = ScanRegion::Polygon({{0, 0}, {10, 0}, {10, 10}, {0, 10}});
    ExpectMembership(Square, {{0, 0, true}, {9, 9, true}, {10, 9, false}, {9, 10, false}}, "square");
    EXPECT_EQ(Square.Bounds(), QRect(0, 0, 10, 10));
    const ScanRegion Triangle = ScanRegion::Polygon({{0, 0}, {10, 0}, {0, 10}});
    ExpectMembership(Triangle, {{8, 0, true}, {9, 0, false}, {0, 8, true}, {4, 4, true}, {5, 5, false}}, "triangle");
}

TEST(ScanRegion, PolygonsFillByTheAlternateRule)
{
    // A five-pointed star drawn in one stroke: its arms are inside, its centre is crossed twice.
    std::vector<QPoint> Star;
    for (int I = 0; I < 5; ++I) {
        const double Angle = (I * 2 % 5) * 2 * std::numbers::pi / 5 - std::numbers::pi / 2;
        Star.emplace_back(static_cast<int>(std::lround(50 + 40 * std::cos(Angle))),
                          static_cast<int>(std::lround(50 + 40 * std::sin(Angle))));
    }
    const ScanRegion Region = ScanRegion::Polygon(Star);
    ExpectMembership(Region, {{50, 20, true}, {50, 50, false}, {50, 95, false}}, "star");
}

TEST(ScanRegion, SubtractCarvesEachRow)
{
    ScanRegion Frame = ScanRegion::Rect(0, 0, 10, 10);
    Frame.Subtract(ScanRegion::Rect(3, 3, 6, 6));
    Frame.Subtract(ScanRegion::Rect(8, -5, 30, 1));  // starts above, reaches past the right
    ExpectMembership(Frame, {{2, 4, true}, {3, 4, false}, {5, 5, false}, {6, 4, true}, {4, 6, true},
                             {7, 0, true}, {8, 0, false}, {8, 1, true}}, "frame");
    EXPECT_EQ(Frame.Bounds(), QRect(0, 0, 10, 10));
    Frame.Subtract(ScanRegion::Rect(-1, -1, 11, 11));
    EXPECT_TRUE(Frame.IsEmpty());
    EXPECT_EQ(Frame.Bounds(), QRect());
}

TEST(ScanRegion, FillIsClippedToThePicture)
{
    clsDIB Dib;
    ASSERT_TRUE(Dib.CreateBlankDIB(8, 6, 32, 0xFFFFFF, false));
    EXPECT_EQ(ScanRegion::Rect(5, -3, 20, 2).Fill(Dib, 0x123456), QRect(5, 0, 3, 2));
    EXPECT_EQ(Dib.DIBhDC()->GetPixel(7, 1), 0x123456u);
    EXPECT_EQ(Dib.DIBhDC()->GetPixel(4, 1), 0xFFFFFFu);
    EXPECT_EQ(Dib.DIBhDC()->GetPixel(5, 2), 0xFFFFFFu);
    EXPECT_EQ(ScanRegion::Rect(9, 0, 20, 2).Fill(Dib, 0), QRect());
    clsDIB Empty;
    EXPECT_EQ(ScanRegion::Rect(0, 0, 4, 4).Fill(Empty, 0), QRect());
}

TEST(ScanRegion, AbsurdCoordinatesStayBounded)
{
    // Rows are held to 0..32767; negative rows are dropped.
    const ScanRegion Huge = ScanRegion::Rect(INT_MIN, INT_MIN, INT_MAX, INT_MAX);
    ExpectMembership(Huge, {{0, 0, true}, {-5, 32767, true}, {0, 32768, false}, {0, -1, false}}, "rect");
    EXPECT_EQ(Huge.Bounds().height(), ScanRegion::MaxRows);
    const ScanRegion Oval = ScanRegion::Ellipse(-2000000000, -2000000000, 2000000000, 2000000000);
    ExpectMembership(Oval, {{0, 0, true}, {100, 100, true}}, "ellipse");
    const ScanRegion Far = ScanRegion::Polygon({{INT_MIN, INT_MIN}, {INT_MAX, 0}, {0, INT_MAX}});
    EXPECT_LE(Far.Bounds().height(), ScanRegion::MaxRows);
    EXPECT_TRUE(ScanRegion::RoundRect(0, 0, 5, 5, INT_MAX, INT_MIN).Contains(2, 2));
    EXPECT_TRUE(ScanRegion::Polygon(std::vector<QPoint>{{0, 0}, {5, 5}}).IsEmpty());
}
