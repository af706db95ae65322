#include <gtest/gtest.h>

#include <climits>
#include <deque>
#include <random>
#include <string>
#include <vector>

#include "PixelArray32.h"
#include "PixelMap.h"
#include "basFill.h"
#include "clsDIB.h"

namespace {

constexpr uint32_t White = 0xFFFFFF;
constexpr uint32_t Black = 0x000000;
constexpr uint32_t Red = 0x0000FF;

const PixelLegend Colors = {{'.', White}, {'#', Black}, {'r', Red}};

// A picture drawn from rows of characters: '.' white, '#' black, 'r' red.
void Draw(clsDIB& Dib, const std::vector<std::string>& Rows, bool TopDown = true)
{
    DrawPixels(Dib, Rows, Colors, TopDown);
}

std::vector<std::string> Map(clsDIB& Dib)
{
    return MapPixels(Dib, Colors);
}

basFill::FillBrush Brush(int Pattern, uint32_t Ink, uint32_t Flooded)
{
    basFill::FillBrush Made;
    EXPECT_TRUE(basFill::MakeFillBrush(Pattern, Ink, Flooded, nullptr, Made)) << Pattern;
    return Made;
}

} // namespace

TEST(basFill, FillInsideARingStaysInside)
{
    const std::vector<std::string> Ring{".......", ".#####.", ".#...#.", ".#...#.", ".#####.", "......."};
    for (bool TopDown : {true, false}) {
        clsDIB Dib;
        Draw(Dib, Ring, TopDown);
        EXPECT_EQ(basFill::ExtFloodFill(Dib, 3, 2, White, Brush(0, Red, White)), QRect(2, 2, 3, 2));
        EXPECT_EQ(Map(Dib), (std::vector<std::string>{".......", ".#####.", ".#rrr#.", ".#rrr#.", ".#####.",
                                                      "......."}));
        EXPECT_EQ(basFill::ExtFloodFill(Dib, 0, 0, White, Brush(0, Red, White)), QRect(0, 0, 7, 6));
        EXPECT_EQ(Map(Dib), (std::vector<std::string>{"rrrrrrr", "r#####r", "r#rrr#r", "r#rrr#r", "r#####r",
                                                      "rrrrrrr"}));
    }
}

TEST(basFill, SolidFillOfTheFloodedColourChangesNothing)
{
    clsDIB Dib;
    Draw(Dib, {"..#..", "..#..", "....."});
    const std::vector<std::string> Before = Map(Dib);
    EXPECT_EQ(basFill::ExtFloodFill(Dib, 0, 0, White, Brush(0, White, White)), QRect(0, 0, 5, 3));
    EXPECT_EQ(Map(Dib), Before);
}

TEST(basFill, DiagonalGapDoesNotLeak)
{
    clsDIB Dib;
    Draw(Dib, {"...#", "..#.", ".#..", "#..."});
    EXPECT_EQ(basFill::ExtFloodFill(Dib, 0, 0, White, Brush(0, Red, White)), QRect(0, 0, 3, 3));
    EXPECT_EQ(Map(Dib), (std::vector<std::string>{"rrr#", "rr#.", "r#..", "#..."}));
}

TEST(basFill, StartOutsideOrOnAnotherColourDoesNothing)
{
    clsDIB Dib;
    Draw(Dib, {"..#", "..."});
    const basFill::FillBrush Solid = Brush(0, Red, White);
    const struct { int X, Y; uint32_t Flooded; } Cases[] = {
        {-1, 0, White}, {3, 0, White}, {0, 2, White}, {INT_MIN, INT_MAX, White}, {2, 0, White}, {0, 0, Black},
    };
    for (const auto& C : Cases)
        EXPECT_TRUE(basFill::ExtFloodFill(Dib, C.X, C.Y, C.Flooded, Solid).isEmpty()) << C.X << "," << C.Y;
    EXPECT_EQ(Map(Dib), (std::vector<std::string>{"..#", "..."}));
}

TEST(basFill, PatternsLeaveTheirGapsInTheFloodedColour)
{
    // Ink pixels in an 8 by 8 tile, and two pixels that show the orientation.
    const struct { int Pattern, Ink; QPoint On, Off; } Cases[] = {
        {1, 2, {0, 0}, {1, 0}},  {2, 8, {2, 2}, {1, 1}},  {3, 8, {5, 0}, {0, 5}},  {4, 8, {0, 5}, {5, 0}},
        {5, 8, {7, 0}, {0, 0}},  {6, 8, {0, 0}, {7, 0}},  {7, 15, {0, 6}, {6, 6}}, {8, 16, {3, 4}, {3, 5}},
    };
    for (const auto& C : Cases) {
        clsDIB Dib;
        Draw(Dib, std::vector<std::string>(16, std::string(16, '.')), C.Pattern % 2 == 0);
        // Started off the origin: the tiles still line up with the picture's corner.
        EXPECT_EQ(basFill::ExtFloodFill(Dib, 9, 13, White, Brush(C.Pattern, Red, White)), QRect(0, 0, 16, 16));
        int Count = 0;
        for (int Y = 0; Y < 16; ++Y)
            for (int X = 0; X < 16; ++X) {
                const uint32_t C1 = Dib.DIBhDC()->GetPixel(X, Y);
                EXPECT_TRUE(C1 == Red || C1 == White);
                EXPECT_EQ(C1, Dib.DIBhDC()->GetPixel(X % 8, Y % 8)) << C.Pattern;
                Count += C1 == Red;
            }
        EXPECT_EQ(Count, 4 * C.Ink) << C.Pattern;
        EXPECT_EQ(Dib.DIBhDC()->GetPixel(C.On.x(), C.On.y()), Red) << C.Pattern;
        EXPECT_EQ(Dib.DIBhDC()->GetPixel(C.Off.x(), C.Off.y()), White) << C.Pattern;
    }
}

TEST(basFill, CustomPatternIsTiledAndAMissingOneEndsTheFill)
{
    clsDIB Pattern, Dib;
    Draw(Pattern, {"r#", ".r"});
    basFill::FillBrush Made;
    ASSERT_TRUE(basFill::MakeFillBrush(9, Black, White, &Pattern, Made));
    Draw(Dib, {".....", ".....", "....."}, false);
    basFill::ExtFloodFill(Dib, 4, 2, White, Made);
    EXPECT_EQ(Map(Dib), (std::vector<std::string>{"r#r#r", ".r.r.", "r#r#r"}));

    clsDIB Empty;
    basFill::FillBrush Kept = Made;
    EXPECT_FALSE(basFill::MakeFillBrush(9, Black, White, nullptr, Kept));
    EXPECT_FALSE(basFill::MakeFillBrush(9, Black, White, &Empty, Kept));
    EXPECT_FALSE(basFill::MakeFillBrush(10, Black, White, &Pattern, Kept));
    EXPECT_FALSE(basFill::MakeFillBrush(-1, Black, White, &Pattern, Kept));
    EXPECT_EQ(Kept.Tile, Made.Tile);
    // A malformed brush paints nothing.
    EXPECT_TRUE(basFill::ExtFloodFill(Dib, 1, 1, White, basFill::FillBrush{{}, 1, 1}).isEmpty());
    EXPECT_TRUE(basFill::ExtFloodFill(Dib, 1, 1, White, basFill::FillBrush{{0, 0}, 0, 2}).isEmpty());
}

// A plain breadth-first fill to hold the scanline fill against, on pictures of noise.
TEST(basFill, AgreesWithAPlainFillOnNoise)
{
    std::mt19937 Random(12345);
    for (int Round = 0; Round < 40; ++Round) {
        const int W = 1 + static_cast<int>(Random() % 70), H = 1 + static_cast<int>(Random() % 40);
        const unsigned Density = 20 + Random() % 30;
        std::vector<std::string> Rows(static_cast<size_t>(H), std::string(static_cast<size_t>(W), '.'));
        for (std::string& Row : Rows)
            for (char& C : Row)
                C = Random() % 100 < Density ? '#' : '.';
        const int X = static_cast<int>(Random() % W), Y = static_cast<int>(Random() % H);
        Rows[Y][X] = '.';
        // Solid red, and a hatch whose gaps are the flooded colour.
        const basFill::FillBrush Used = Brush(Round % 2 ? 0 : 3 + Round % 6, Red, White);
        clsDIB Dib;
        Draw(Dib, Rows, Round % 3 != 0);
        const QRect Box = basFill::ExtFloodFill(Dib, X, Y, White, Used);

        std::vector<std::string> Expected = Rows;
        std::vector<char> Seen(static_cast<size_t>(W * H), 0);
        std::deque<QPoint> Queue{QPoint(X, Y)};
        Seen[Y * W + X] = 1;
        QRect Reached;
        while (!Queue.empty()) {
            const QPoint P = Queue.front();
            Queue.pop_front();
            Reached |= QRect(P, P);
            const uint32_t Word = Used.Tile[(P.y() % Used.TileHeight) * Used.TileWidth + P.x() % Used.TileWidth];
            Expected[P.y()][P.x()] = Word == PixelArray32::ToWord(Red) ? 'r' : '.';
            for (const QPoint N : {P + QPoint(1, 0), P - QPoint(1, 0), P + QPoint(0, 1), P - QPoint(0, 1)})
                if (N.x() >= 0 && N.y() >= 0 && N.x() < W && N.y() < H && Rows[N.y()][N.x()] == '.' &&
                    !Seen[N.y() * W + N.x()]) {
                    Seen[N.y() * W + N.x()] = 1;
                    Queue.push_back(N);
                }
        }
        EXPECT_EQ(Map(Dib), Expected) << Round;
        EXPECT_EQ(Box, Reached) << Round;
    }
}

TEST(basFill, ReplaceColorTakesExactlyThatColour)
{
    clsDIB Dib;
    Draw(Dib, {"....", "....", "...."}, false);
    PixelArray32 Pixels(Dib);
    Pixels.At(1, 0) = PixelArray32::ToWord(0x112233);
    Pixels.At(3, 1) = 0xFF000000 | PixelArray32::ToWord(0x112233); // same colour, fourth byte set
    Pixels.At(0, 2) = PixelArray32::ToWord(0x112234);
    Pixels.At(2, 2) = PixelArray32::ToWord(0x122233);
    EXPECT_EQ(basFill::ReplaceColor(Dib, 0x112233, Red), QRect(1, 0, 3, 2));
    EXPECT_EQ(Map(Dib), (std::vector<std::string>{".r..", "...r", "?.?."}));
    EXPECT_EQ(Pixels.At(3, 1), PixelArray32::ToWord(Red));
    EXPECT_TRUE(basFill::ReplaceColor(Dib, 0x112233, Black).isEmpty());
}

TEST(basFill, EmptyAndShallowSurfacesAreLeftAlone)
{
    clsDIB Empty, Shallow;
    ASSERT_TRUE(Shallow.CreateBlankDIB(4, 4, 8, White, true));
    for (clsDIB* Dib : {&Empty, &Shallow}) {
        EXPECT_TRUE(basFill::ExtFloodFill(*Dib, 1, 1, Black, Brush(0, Red, Black)).isEmpty());
        EXPECT_TRUE(basFill::ReplaceColor(*Dib, Black, Red).isEmpty());
    }
    EXPECT_EQ(Shallow.DIBhDC()->GetPixel(1, 1), Black);
}
