#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <string>
#include <tuple>
#include <vector>

#include "PixelArray32.h"
#include "PixelMap.h"
#include "basBrush.h"
#include "clsDIB.h"

namespace {

constexpr uint32_t White = 0xFFFFFF;
constexpr uint32_t Ink = 0x3366CC;

// The picture as rows of characters: '.' for White, '#' for Ink, '?' for anything else.
std::vector<std::string> Map(clsDIB& Dib)
{
    return MapPixels(Dib, {{'.', White}, {'#', Ink}});
}

int CountInk(clsDIB& Dib)
{
    int Count = 0;
    for (const std::string& Row : Map(Dib))
        Count += static_cast<int>(std::count(Row.begin(), Row.end(), '#'));
    return Count;
}

// The box of the pixels that are not white.
QRect Painted(clsDIB& Dib)
{
    QRect Box;
    for (int Y = 0; Y < Dib.DIBHeight(); ++Y)
        for (int X = 0; X < Dib.DIBWidth(); ++X)
            if (Dib.DIBhDC()->GetPixel(X, Y) != White)
                Box |= QRect(X, Y, 1, 1);
    return Box;
}

} // namespace

TEST(basBrush, BoxDabSquareOfEachSizeClippedToThePicture)
{
    const struct { int X, Y, Size; QRect Box; } Cases[] = {
        {2, 2, 1, QRect(2, 2, 1, 1)}, {2, 2, 2, QRect(1, 1, 2, 2)},   {2, 2, 3, QRect(1, 1, 3, 3)},
        {2, 2, 4, QRect(0, 0, 4, 4)}, {0, 2, 4, QRect(0, 0, 2, 4)},   {4, 2, 4, QRect(2, 0, 3, 4)},
        {2, 0, 3, QRect(1, 0, 3, 2)}, {2, 4, 3, QRect(1, 3, 3, 2)},   {-2, 2, 3, QRect()},
        {2, 6, 3, QRect()},           {2, 2, 0, QRect()},             {2, 2, -5, QRect()},
        {2, 2, INT_MAX, QRect(0, 0, 5, 5)}, {INT_MIN, INT_MAX, INT_MAX, QRect()},
    };
    for (bool TopDown : {true, false})
        for (const auto& C : Cases) {
            clsDIB Dib;
            ASSERT_TRUE(Dib.CreateBlankDIB(5, 5, 32, White, TopDown));
            EXPECT_EQ(basBrush::BoxDab(Dib, C.X, C.Y, C.Size, Ink), C.Box) << C.X << "," << C.Y << " " << C.Size;
            EXPECT_EQ(Painted(Dib), C.Box) << C.X << "," << C.Y << " " << C.Size;
            EXPECT_EQ(CountInk(Dib), C.Box.width() * C.Box.height()) << C.X << "," << C.Y << " " << C.Size;
        }
}

TEST(basBrush, EraseWritesTheBackgroundColourWithTheFourthByteClear)
{
    clsDIB Dib;
    ASSERT_TRUE(Dib.CreateBlankDIB(4, 4, 32, Ink, false));
    PixelArray32(Dib).At(1, 1) = 0xFF000000 | PixelArray32::ToWord(Ink);
    basBrush::BoxDab(Dib, 1, 1, 2, 0xABCDEF);
    PixelArray32 Pixels(Dib);
    for (int Y = 0; Y < 4; ++Y)
        for (int X = 0; X < 4; ++X)
            EXPECT_EQ(Pixels.At(X, Y), PixelArray32::ToWord(X < 2 && Y < 2 ? 0xABCDEF : Ink)) << X << "," << Y;
}

TEST(basBrush, RoundDabIsTheDiscOfTheRoundedHalfSize)
{
    // Lattice points with i*i + j*j <= r*r; sizes 5 and 17 halve to ties, which go to the even r.
    const struct { int Size, Count; } Cases[] = {{1, 1}, {2, 5}, {3, 13}, {5, 13}, {6, 29}, {7, 49}, {17, 197}};
    for (const auto& C : Cases) {
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(21, 21, 32, White, true));
        basBrush::PaintBrushDab(Dib, 10, 10, C.Size, 100, 1, Ink, 0);
        EXPECT_EQ(CountInk(Dib), C.Count) << C.Size;
    }
    clsDIB Dib;
    ASSERT_TRUE(Dib.CreateBlankDIB(7, 7, 32, White, false));
    EXPECT_EQ(basBrush::PaintBrushDab(Dib, 3, 3, 3, 100, 1, Ink, 0), QRect(1, 1, 5, 5));
    EXPECT_EQ(Map(Dib), (std::vector<std::string>{".......", "...#...", "..###..", ".#####.", "..###..", "...#...",
                                                   "......."}));
}

TEST(basBrush, BarStylesAtSizeThree)
{
    // r = 2, e = 2: the bars cover the offsets -1 and 0 across them.
    const struct { int Style; std::vector<std::string> Rows; } Cases[] = {
        {2, {".........", ".........", ".....##..", "....##...", "...##....", "..##.....", "..#......", ".........",
             "........."}},
        {3, {".........", ".#.......", ".##......", "..##.....", "...##....", "....##...", ".....##..", "......##.",
             "........."}},
        {4, {".........", ".........", ".........", ".#######.", ".#######.", ".........", ".........", ".........",
             "........."}},
        {5, {".........", "...##....", "...##....", "...##....", "...##....", "...##....", "...##....", "...##....",
             "........."}},
    };
    for (const auto& C : Cases) {
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(9, 9, 32, White, true));
        basBrush::PaintBrushDab(Dib, 4, 4, 3, 100, C.Style, Ink, 0);
        EXPECT_EQ(Map(Dib), C.Rows) << C.Style;
    }
}

TEST(basBrush, BarWidthFollowsTheEdgeTable)
{
    const struct { int Size, E, R; } Cases[] = {{2, 1, 1}, {4, 2, 2}, {8, 3, 4}, {12, 4, 6}, {16, 5, 8}, {17, 6, 8}};
    for (const auto& C : Cases) {
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(41, 41, 32, White, true));
        basBrush::PaintBrushDab(Dib, 20, 20, C.Size, 100, 4, Ink, 0);
        EXPECT_EQ(Painted(Dib), QRect(20 - C.R - 1, 20 - C.E / 2, 2 * C.R + 3, C.E)) << C.Size;
        EXPECT_EQ(CountInk(Dib), C.E * (2 * C.R + 3)) << C.Size;
        ASSERT_TRUE(Dib.CreateBlankDIB(41, 41, 32, White, false));
        basBrush::PaintBrushDab(Dib, 20, 20, C.Size, 100, 5, Ink, 0);
        EXPECT_EQ(Painted(Dib), QRect(20 - C.E / 2, 20 - C.R - 1, C.E, 2 * C.R + 3)) << C.Size;
    }
}

TEST(basBrush, TranslucencyBlendsEachByteTruncated)
{
    const uint32_t Old = 0x0764FF;   // red 255, green 100, blue 7
    const uint32_t Color = 0xC83300; // red 0, green 51, blue 200
    const struct { int Percent; uint32_t Expected; } Cases[] = {
        {50, 0x674B7F},   // 127.5, 75.5, 103.5
        {30, 0x4055B2},   // 178.5, 85.3, 64.9
        {100, Color},     {150, Color}, // clamped to 100
        {0, Old},         {-20, Old},
    };
    for (int Style : {1, 6})
        for (const auto& C : Cases) {
            clsDIB Dib;
            ASSERT_TRUE(Dib.CreateBlankDIB(9, 9, 32, Old, true));
            const QRect Box = basBrush::PaintBrushDab(Dib, 4, 4, 5, C.Percent, Style, Color, 0);
            EXPECT_EQ(Dib.DIBhDC()->GetPixel(4, 4), C.Expected) << C.Percent;
            EXPECT_EQ(Dib.DIBhDC()->GetPixel(0, 0), Old) << C.Percent;
            EXPECT_EQ(Box.isEmpty(), C.Percent <= 0) << C.Percent;
        }
}

TEST(basBrush, SmoothedDabIsFullInsideFourFifthsAndFadesOutside)
{
    // r = 10: full up to d = 8; at d = 9 the weight is 127 of 255 (63 at 50%); nothing at d = 10.
    for (const auto& [Percent, Full, AtNine] : {std::tuple{100, 0, 128}, std::tuple{50, 127, 192}}) {
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(31, 31, 32, White, true));
        basBrush::PaintBrushDab(Dib, 15, 15, 20, Percent, 6, 0, 0);
        auto Grey = [&](int X, int Y) { return static_cast<int>(Dib.DIBhDC()->GetPixel(X, Y) & 0xFF); };
        for (int I = 0; I <= 8; ++I)
            EXPECT_EQ(Grey(15 + I, 15), Full) << I;
        EXPECT_EQ(Grey(24, 15), AtNine);
        EXPECT_EQ(Grey(15, 6), AtNine);
        EXPECT_EQ(Grey(25, 15), 255);
        EXPECT_EQ(Dib.DIBhDC()->GetPixel(9, 9), Percent == 100 ? 0x3E3E3Eu : 0x9F9F9Fu); // d = 8.49
        EXPECT_EQ(Painted(Dib), QRect(6, 6, 19, 19));
    }
}

TEST(basBrush, SprayCoverageFollowsTheDensity)
{
    // r = 100: offsets -100..99 with i*i + j*j <= 9999, each painted with chance (1 - t)^2.
    int Eligible = 0;
    for (int J = -100; J < 100; ++J)
        for (int I = -100; I < 100; ++I)
            Eligible += I * I + J * J <= 9999;
    std::vector<std::string> Previous;
    for (const auto& [Density, Chance] : {std::pair{0, 0.04}, std::pair{1, 0.16}, std::pair{2, 0.36}}) {
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(201, 201, 32, White, Density != 1));
        const QRect Box = basBrush::SprayDab(Dib, 100, 100, 200, Density, 100, Ink);
        const std::vector<std::string> Rows = Map(Dib);
        int Inside = 0, Outside = 0;
        for (int Y = 0; Y < 201; ++Y)
            for (int X = 0; X < 201; ++X)
                if (Rows[Y][X] == '#')
                    ((X - 100) * (X - 100) + (Y - 100) * (Y - 100) <= 9999 && X < 200 && Y < 200 ? Inside : Outside)++;
        EXPECT_EQ(Outside, 0) << Density;
        EXPECT_NEAR(static_cast<double>(Inside) / Eligible, Chance, 0.015) << Density;
        EXPECT_EQ(Box, Painted(Dib)) << Density;
        // Each dab draws afresh: the same dab twice gives another pattern.
        ASSERT_TRUE(Dib.CreateBlankDIB(201, 201, 32, White, true));
        basBrush::SprayDab(Dib, 100, 100, 200, Density, 100, Ink);
        EXPECT_NE(Map(Dib), Rows) << Density;
    }
}

TEST(basBrush, SmallSpraysStayOnTheirOffsets)
{
    // Offsets run from -r to r - 1 with i*i + j*j <= r*r - 1: size 1 (r = 0) has none, size 2
    // (r = 1) only the point, size 3 (r = 2) the square -1..1. Over many dabs of the highest
    // density every allowed pixel is hit and no other; style 7 of the paint brush is the spray.
    const struct { int X, Y, Size; QRect Reach; } Cases[] = {
        {4, 4, 1, QRect()}, {0, 0, 2, QRect(0, 0, 1, 1)}, {4, 4, 3, QRect(3, 3, 3, 3)}, {7, 7, 3, QRect(6, 6, 2, 2)},
    };
    for (const auto& C : Cases) {
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(8, 8, 32, White, C.Size == 3));
        for (int Round = 0; Round < 200; ++Round) {
            const QRect Box = Round % 2 ? basBrush::SprayDab(Dib, C.X, C.Y, C.Size, 2, 100, Ink)
                                        : basBrush::PaintBrushDab(Dib, C.X, C.Y, C.Size, 100, 7, Ink, 2);
            EXPECT_TRUE(C.Reach.contains(Box) || Box.isEmpty()) << C.Size;
        }
        EXPECT_EQ(Painted(Dib), C.Reach) << C.X << "," << C.Size;
        EXPECT_EQ(CountInk(Dib), C.Reach.width() * C.Reach.height()) << C.X << "," << C.Size;
    }
}

TEST(basBrush, CustomDabAndsTheMaskThenOrsTheBrush)
{
    clsDIB Dib, Brush, Mask;
    ASSERT_TRUE(Dib.CreateBlankDIB(6, 6, 32, White, false));
    ASSERT_TRUE(Brush.CreateBlankDIB(4, 4, 32, 0x010101, true));
    ASSERT_TRUE(Mask.CreateBlankDIB(4, 4, 32, 0x808080, true));
    // Top left at (5 - 2, 5 - 2); the rest of the brush lies outside the picture.
    EXPECT_EQ(basBrush::CustomBrushDab(Dib, Brush, Mask, 5, 5), QRect(3, 3, 3, 3));
    for (int Y = 0; Y < 6; ++Y)
        for (int X = 0; X < 6; ++X)
            EXPECT_EQ(Dib.DIBhDC()->GetPixel(X, Y), X >= 3 && Y >= 3 ? 0x818181u : White) << X << "," << Y;

    clsDIB Empty, Small;
    ASSERT_TRUE(Small.CreateBlankDIB(3, 4, 32, 0, true));
    EXPECT_TRUE(basBrush::CustomBrushDab(Dib, Empty, Mask, 1, 1).isEmpty());
    EXPECT_TRUE(basBrush::CustomBrushDab(Dib, Brush, Empty, 1, 1).isEmpty());
    EXPECT_TRUE(basBrush::CustomBrushDab(Dib, Brush, Small, 1, 1).isEmpty());
    EXPECT_TRUE(basBrush::CustomBrushDab(Dib, Brush, Mask, INT_MIN, INT_MAX).isEmpty());
    EXPECT_EQ(Dib.DIBhDC()->GetPixel(0, 0), White);
}

TEST(basBrush, CustomDabDueOnceTheBrushWidthIsCovered)
{
    const struct { int LastX, LastY, X, Y, Width; bool Due; } Cases[] = {
        {0, 0, 3, 4, 5, true},     {0, 0, 3, 3, 5, false}, {10, 10, 10, 16, 7, false}, {10, 10, 10, 3, 7, true},
        {5, 5, 5, 5, 0, true},     {INT_MIN, INT_MIN, INT_MAX, INT_MAX, INT_MAX, true},
    };
    for (const auto& C : Cases)
        EXPECT_EQ(basBrush::CustomDabDue(C.LastX, C.LastY, C.X, C.Y, C.Width), C.Due) << C.X << "," << C.Y;
}

TEST(basBrush, OvalMaskLeavesThePictureOutsideTheEllipse)
{
    clsDIB Brush, Mask, Dib;
    ASSERT_TRUE(Brush.CreateBlankDIB(5, 3, 32, Ink, false));
    ASSERT_TRUE(basBrush::MakeCustomBrushMask(Brush, Mask, 0));
    ASSERT_EQ(Mask.DIBWidth(), 5);
    ASSERT_EQ(Mask.DIBHeight(), 3);
    const std::vector<std::string> Oval{".###.", "#####", ".###."};
    for (int Y = 0; Y < 3; ++Y)
        for (int X = 0; X < 5; ++X) {
            const bool Inside = Oval[Y][X] == '#';
            EXPECT_EQ(PixelArray32(Mask).At(X, Y), Inside ? 0u : 0xFFFFFFFFu) << X << "," << Y;
            EXPECT_EQ(Brush.DIBhDC()->GetPixel(X, Y), Inside ? Ink : 0u) << X << "," << Y;
        }
    // Stamped on a picture whose fourth bytes are set, the corners keep every byte.
    ASSERT_TRUE(Dib.CreateBlankDIB(5, 3, 32, White, true));
    PixelArray32 Pixels(Dib);
    for (int Y = 0; Y < 3; ++Y)
        for (int X = 0; X < 5; ++X)
            Pixels.At(X, Y) = 0xFFFFFFFF;
    basBrush::CustomBrushDab(Dib, Brush, Mask, 2, 1);
    for (int Y = 0; Y < 3; ++Y)
        for (int X = 0; X < 5; ++X)
            EXPECT_EQ(Pixels.At(X, Y), Oval[Y][X] == '#' ? PixelArray32::ToWord(Ink) : 0xFFFFFFFFu) << X << "," << Y;

    // The rectangle keeps the whole brush; an empty brush or the brush as its own mask fail.
    clsDIB Square, Empty;
    ASSERT_TRUE(Square.CreateBlankDIB(3, 3, 32, Ink, true));
    ASSERT_TRUE(basBrush::MakeCustomBrushMask(Square, Mask, 1));
    EXPECT_EQ(Mask.DIBWidth(), 3);
    EXPECT_EQ(Mask.DIBhDC()->GetPixel(0, 0), 0u);
    EXPECT_FALSE(basBrush::MakeCustomBrushMask(Empty, Mask, 0));
    EXPECT_FALSE(basBrush::MakeCustomBrushMask(Square, Square, 0));
    EXPECT_EQ(Map(Square), (std::vector<std::string>{"###", "###", "###"}));
}

TEST(basBrush, EmptyShallowAndFarAwayDrawNothing)
{
    clsDIB Empty, Shallow, Brush, Mask, Dib;
    ASSERT_TRUE(Shallow.CreateBlankDIB(8, 8, 8, White, true));
    ASSERT_TRUE(Brush.CreateBlankDIB(2, 2, 32, Ink, true));
    ASSERT_TRUE(Mask.CreateBlankDIB(2, 2, 32, 0, true));
    for (clsDIB* Surface : {&Empty, &Shallow}) {
        EXPECT_TRUE(basBrush::BoxDab(*Surface, 2, 2, 3, Ink).isEmpty());
        for (int Style = 0; Style <= 9; ++Style)
            EXPECT_TRUE(basBrush::PaintBrushDab(*Surface, 2, 2, 5, 50, Style, Ink, 2).isEmpty());
        EXPECT_TRUE(basBrush::CustomBrushDab(*Surface, Brush, Mask, 2, 2).isEmpty());
        EXPECT_FALSE(basBrush::MakeCustomBrushMask(*Surface, Mask, 0));
    }
    EXPECT_EQ(Shallow.DIBhDC()->GetPixel(2, 2), 0u); // a blank 8-bit surface stays index 0, black
    ASSERT_TRUE(Dib.CreateBlankDIB(6, 4, 32, White, false));
    for (int Style = 1; Style <= 7; ++Style)
        EXPECT_TRUE(basBrush::PaintBrushDab(Dib, INT_MIN, INT_MAX, INT_MAX, 100, Style, Ink, 2).isEmpty()) << Style;
    EXPECT_EQ(basBrush::PaintBrushDab(Dib, 3, 2, INT_MAX, 100, 1, Ink, 0), QRect(0, 0, 6, 4));
    EXPECT_EQ(CountInk(Dib), 24);
}
