#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <numbers>
#include <cstring>

#include "basShape.h"
#include "clsDIB.h"

namespace {

constexpr uint32_t White = 0xFFFFFF, Red = 0x0000FF, Blue = 0xFF0000, Green = 0x00FF00;

struct Expect {
    int X, Y;
    uint32_t Color;
};

class basShapeTest : public ::testing::Test {
protected:
    clsDIB Dib;
    void Open(int Width, int Height, uint32_t Fill = White) { ASSERT_TRUE(Dib.CreateBlankDIB(Width, Height, 32, Fill, true)); }
    uint32_t At(int X, int Y) const { return Dib.DIBhDC()->GetPixel(X, Y) & 0xFFFFFF; }
    void Check(std::initializer_list<Expect> Pixels, const char* What) const
    {
        for (const Expect& E : Pixels)
            EXPECT_EQ(At(E.X, E.Y), E.Color) << What << " at " << E.X << "," << E.Y;
    }
};

}  // namespace

TEST_F(basShapeTest, RectangleFramesAndRoundedCorners)
{
    Open(32, 22);
    EXPECT_EQ(basShape::DrawRectangle(Dib, 9, 7, 2, 2, Red, 2, false, 0), QRect(2, 2, 8, 6));
    Check({{2, 2, Red}, {3, 3, Red}, {4, 4, White}, {9, 7, Red}, {8, 6, Red}, {7, 5, White}, {10, 7, White}}, "frame");
    basShape::DrawRectangle(Dib, 12, 2, 14, 4, Blue, 2, true, 0);
    Check({{13, 3, Blue}, {15, 3, White}}, "box");

    Open(32, 22);
    basShape::DrawRectangle(Dib, 0, 0, 29, 19, Red, 3, false, 1);  // corners of diameter 10
    Check({{0, 0, White}, {2, 0, White}, {15, 0, Red}, {15, 2, Red}, {15, 3, White}, {0, 10, Red}, {2, 10, Red},
           {3, 10, White}, {29, 19, White}, {15, 19, Red}},
          "rounded frame");
    Open(32, 22);
    basShape::DrawRectangle(Dib, 0, 0, 29, 19, Red, 3, true, 3);
    Check({{0, 0, White}, {15, 10, Red}, {15, 0, Red}, {0, 10, Red}, {4, 1, White}}, "rounded box");

    // A brush wider than half the box fills it.
    Open(8, 8);
    EXPECT_EQ(basShape::BitsBrushLine(Dib, 4, 4, 1, 1, Red, 10), QRect(1, 1, 4, 4));
    Check({{2, 2, Red}, {5, 5, White}}, "thick frame");
}

TEST_F(basShapeTest, OvalRingIsTheBrushWide)
{
    Open(24, 24);
    basShape::DrawOval(Dib, 20, 20, 0, 0, Red, 3, false);
    std::string Row, Column;
    for (int I = 0; I < 24; ++I) {
        Row += At(I, 10) == Red ? '#' : '.';
        Column += At(10, I) == Red ? '#' : '.';
    }
    EXPECT_EQ(Row, "###...............###...");
    EXPECT_EQ(Column, Row);
    basShape::DrawOval(Dib, 0, 0, 20, 20, Blue, 3, true);
    Check({{10, 10, Blue}, {0, 0, White}, {20, 20, White}}, "filled oval");
}

TEST_F(basShapeTest, AntialiasedOvalAddsNearTheCurveAndSaturates)
{
    Open(50, 50, 0);
    basShape::DrawOvalAntialiased(Dib, 30, 40, 10, 0, Red);  // centre (20, 20), radii 10 and 20
    std::vector<uint32_t> First(50 * 50);
    for (int Y = 0; Y < 50; ++Y)
        for (int X = 0; X < 50; ++X)
            First[Y * 50 + X] = At(X, Y);
    EXPECT_EQ(At(30, 20), Red);  // the point at angle 0 lies on the pixel: full weight
    const QRect Box = basShape::DrawOvalAntialiased(Dib, 10, 0, 30, 40, Red);
    EXPECT_TRUE(QRect(9, -1, 23, 43).contains(Box));
    int Touched = 0;
    for (int Y = 0; Y < 50; ++Y) {
        for (int X = 0; X < 50; ++X) {
            const uint32_t C = At(X, Y);
            if (C == 0)
                continue;
            ++Touched;
            EXPECT_EQ(C & 0xFFFF00, 0u) << X << "," << Y;                 // red only, in the colour's proportion
            EXPECT_GE(C, First[Y * 50 + X]) << X << "," << Y;             // added, held at 255, never wrapped
            double Nearest = 1e9;
            for (int I = 0; I < 2000; ++I) {
                const double A = I * std::numbers::pi / 1000;
                Nearest = std::min(Nearest, std::hypot(20 + 10 * std::cos(A) - X, 20 + 20 * std::sin(A) - Y));
            }
            EXPECT_LT(Nearest, 1.5) << X << "," << Y;
        }
    }
    EXPECT_GT(Touched, 100);
    EXPECT_EQ(basShape::DrawOvalAntialiased(Dib, INT_MIN, INT_MIN, INT_MAX, INT_MAX, Red).isEmpty(), true);
}

TEST_F(basShapeTest, ArcThroughThreePoints)
{
    struct Case {
        QPointF P1, P2, P3;
        bool Found;
        QPointF Centre;
        double Radius;
    };
    const Case Cases[] = {
        {{10, 20}, {30, 20}, {20, 10}, true, {20, 20}, 10},
        {{3, 4}, {-4, 3}, {5, 0}, true, {0, 0}, 5},
        {{0, 0}, {1, 1}, {5, 5}, false, {}, 0},
        {{1, 1}, {1, 1}, {3, 4}, false, {}, 0},
        {{0, 0}, {4, 4}, {0, 0}, false, {}, 0},
    };
    for (const Case& C : Cases) {
        QPointF Centre;
        double Radius = 0;
        ASSERT_EQ(basShape::ArcFromThreePoints(C.P1, C.P2, C.P3, Centre, Radius), C.Found) << C.P1.x();
        if (C.Found) {
            EXPECT_NEAR(Centre.x(), C.Centre.x(), 1e-9);
            EXPECT_NEAR(Centre.y(), C.Centre.y(), 1e-9);
            EXPECT_NEAR(Radius, C.Radius, 1e-9);
        }
    }

    Open(40, 40);
    basShape::DrawArc(Dib, {10, 20}, {30, 20}, {20, 10}, Red, 1, false);
    Check({{10, 20, Red}, {20, 10, Red}, {30, 20, Red}, {13, 13, Red}, {20, 30, White}, {20, 20, White}}, "upper arc");
    basShape::DrawArc(Dib, {10, 20}, {30, 20}, {20, 30}, Blue, 1, true);
    Check({{20, 30, Blue}, {20, 20, Blue}, {20, 10, Red}}, "lower arc with its chord");
    basShape::DrawArc(Dib, {5, 35}, {15, 35}, {10, 35}, Green, 1, false);
    Check({{4, 35, White}, {5, 35, Green}, {15, 35, Green}, {16, 35, White}}, "collinear");
}

TEST_F(basShapeTest, BezierStraightAndFilled)
{
    Open(25, 10);
    basShape::DrawBezier(Dib, {QPoint(2, 5), QPoint(8, 5), QPoint(14, 5), QPoint(20, 5)}, Red, 1, 0, Blue);
    for (int X = 0; X < 25; ++X) {
        EXPECT_EQ(At(X, 5), X >= 2 && X <= 20 ? Red : White) << X;
        EXPECT_EQ(At(X, 4), White) << X;
        EXPECT_EQ(At(X, 6), White) << X;
    }
    Open(40, 40);
    basShape::DrawBezier(Dib, {QPoint(5, 30), QPoint(5, 5), QPoint(35, 5), QPoint(35, 30)}, Blue, 1, 1, Red);
    // The curve peaks at y = 11.25 over x = 20; the path is closed along y = 30.
    Check({{20, 20, Red}, {20, 11, Blue}, {20, 30, Blue}, {5, 30, Blue}, {20, 8, White}, {20, 35, White}}, "filled");
}

TEST(basShape, PolygonAutoVertices)
{
    struct Case {
        int N;
        float C;
        int Angle;
        std::vector<QPoint> Expected;
    };
    const Case Cases[] = {
        {3, 1.0f, 0, {{50, 40}, {41, 55}, {59, 55}}},
        {4, 1.0f, 45, {{43, 43}, {43, 57}, {57, 57}, {57, 43}}},
        {4, 0.2f, 0, {{50, 40}, {47, 47}, {40, 50}, {47, 53}, {50, 60}, {53, 53}, {60, 50}, {53, 47}}},  // c = 0.4
        {4, 1.5f, 0, {{50, 40}, {39, 39}, {40, 50}, {39, 61}, {50, 60}, {61, 61}, {60, 50}, {61, 39}}},
        {0, 1.0f, 0, {}},
    };
    for (const Case& C : Cases)
        EXPECT_EQ(basShape::PolygonAutoVertices(50, 50, C.N, 10, C.C, C.Angle), C.Expected) << C.N << " " << C.C;
    // A star of 9 points has 18 vertices, the odd ones on half the radius.
    const std::vector<QPoint> Star = basShape::PolygonAutoVertices(50, 50, 9, 10, 0.5f, 0);
    ASSERT_EQ(Star.size(), 18u);
    for (size_t I = 0; I < Star.size(); ++I)
        EXPECT_NEAR(std::hypot(Star[I].x() - 50, Star[I].y() - 50), I % 2 ? 5 : 10, 0.75) << I;
    EXPECT_EQ(Star[1], QPoint(48, 45));
}

TEST_F(basShapeTest, PolygonOutlineFillAndClear)
{
    const std::vector<QPoint> Square{{2, 2}, {12, 2}, {12, 12}, {2, 12}};
    Open(16, 16);
    EXPECT_EQ(basShape::DrawPolygon(Dib, Square, Red, 1, 4, Green), QRect(2, 2, 10, 10));  // 4 is 1, filled
    Check({{2, 2, Red}, {11, 11, Red}, {12, 12, White}, {12, 5, White}}, "filled");
    basShape::DrawPolygon(Dib, Square, Red, 1, 2, Green);
    Check({{5, 5, Green}, {2, 2, Green}, {12, 12, White}}, "cleared");
    Open(16, 16);
    basShape::DrawPolygon(Dib, Square, Red, 1, 0, Green);
    Check({{12, 12, Red}, {7, 2, Red}, {2, 7, Red}, {7, 7, White}}, "outline");
}

TEST(basShape, SurfacesWithoutThirtyTwoBitsAreLeftAlone)
{
    clsDIB Empty;
    EXPECT_EQ(basShape::DrawRectangle(Empty, 0, 0, 5, 5, Red, 2, false, 1), QRect());
    EXPECT_EQ(basShape::DrawOval(Empty, 0, 0, 5, 5, Red, 2, true), QRect());
    EXPECT_EQ(basShape::DrawOvalAntialiased(Empty, 0, 0, 5, 5, Red), QRect());
    EXPECT_EQ(basShape::DrawArc(Empty, {0, 0}, {5, 0}, {2, 2}, Red, 2, true), QRect());
    EXPECT_EQ(basShape::DrawBezier(Empty, {QPoint(0, 0), QPoint(1, 1), QPoint(2, 2), QPoint(3, 0)}, Red, 2, 1, 0),
              QRect());
    EXPECT_EQ(basShape::DrawPolygon(Empty, {{0, 0}, {5, 0}, {0, 5}}, Red, 2, 1, 0), QRect());
}
