// The device context over a surface's memory: pixel reads and writes in image coordinates,
// the solid fill, and the painter's flip on bottom-up surfaces.
#include <gtest/gtest.h>

#include <QPainter>

#include "DeviceContext.h"
#include "TestImages.h"

using namespace TestImages;

TEST(DeviceContext, PixelsAreAddressedInImageCoordinates)
{
    for (int Bpp : {24, 32}) {
        for (bool TopDown : {false, true}) {
            SCOPED_TRACE(testing::Message() << Bpp << " bits, top-down " << TopDown);
            RawSurface S(3, 4, Bpp, TopDown);
            S.Dc->SetPixelV(2, 0, 0x00563412);  // red 0x12, green 0x34, blue 0x56
            for (auto [X, Y] : {std::pair{-1, 0}, {3, 0}, {0, -1}, {0, 4}}) {
                EXPECT_EQ(S.Dc->GetPixel(X, Y), CLR_INVALID);
                S.Dc->SetPixelV(X, Y, 0x00FFFFFF);  // outside: nothing written
            }
            std::vector<uint8_t> Expected(S.Bytes.size(), 0);
            const size_t At = size_t(TopDown ? 0 : 3) * S.Stride + 2 * (Bpp / 8);
            Expected[At] = 0x56;
            Expected[At + 1] = 0x34;
            Expected[At + 2] = 0x12;
            EXPECT_EQ(S.Bytes, Expected);
            EXPECT_EQ(S.Dc->GetPixel(2, 0), 0x00563412u);
        }
    }
}

TEST(DeviceContext, ShallowPixelsGoThroughTheTable)
{
    std::vector<uint32_t> Table(16, 0x00FFFFFF);
    Table[0] = 0;
    Table[5] = 0x00102030;  // quad: red 0x10, green 0x20, blue 0x30
    Table[9] = 0x00102030;
    RawSurface S(5, 2, 4, false, Table);
    S.Dc->SetPixelV(3, 1, 0x00302010);  // colour value of red 0x10 ...: entry 5, the lowest of the two
    EXPECT_EQ(S.Get(3, 1), 5u);
    EXPECT_EQ(S.Dc->GetPixel(3, 1), 0x00302010u);
    S.Dc->SetPixelV(0, 0, 0x00EEEEEE);
    EXPECT_EQ(S.Get(0, 0), 1u);
    S.Dc->FillRect(1, 0, 2, 2, 0x00010101);
    EXPECT_EQ((std::vector<uint32_t>{S.Get(1, 0), S.Get(2, 1), S.Get(3, 1)}), (std::vector<uint32_t>{0, 0, 5}));
}

TEST(DeviceContext, FillRectIsClippedAndClearsAlpha)
{
    struct Case {
        int X, Y, W, H;
    };
    for (const Case& C : {Case{-1, -1, 3, 3}, Case{2, 1, 9, 9}, Case{0, 0, 4, 3}, Case{5, 0, 2, 2}, Case{1, 1, 0, 2}}) {
        RawSurface S(4, 3, 32, false);
        const std::vector<uint32_t> Before = Grid(4, 3, [](int X, int Y) { return 0xFF000000u | (X * 16 + Y); });
        for (int I = 0; I < 12; ++I)
            S.Set(I % 4, I / 4, Before[I]);
        S.Dc->FillRect(C.X, C.Y, C.W, C.H, 0x00332211);
        EXPECT_EQ(S.Pixels(), Grid(4, 3, [&](int X, int Y) {
                      const bool Inside = X >= C.X && X < C.X + C.W && Y >= C.Y && Y < C.Y + C.H;
                      return Inside ? Quad(0x33, 0x22, 0x11, 0) : Before[Y * 4 + X];
                  }))
            << "filling " << C.X << "," << C.Y << " " << C.W << "x" << C.H;
    }
}

TEST(DeviceContext, PainterDrawsImageRowZeroIntoTheLastStorageRow)
{
    RawSurface S(5, 4, 32, false);
    QPainter* Painter = S.Dc->Painter();
    ASSERT_NE(Painter, nullptr);
    Painter->setRenderHint(QPainter::Antialiasing, false);
    Painter->setPen(QPen(QColor(0x12, 0x34, 0x56), 1));
    Painter->drawLine(0, 0, 4, 0);
    S.Dc->EndPaint();
    // Image row 0 is the last row in memory.
    EXPECT_EQ(S.Pixels(0x00FFFFFF), Grid(5, 4, [](int, int Y) { return Y == 0 ? Quad(0x56, 0x34, 0x12) : 0u; }));
    RawSurface Eight(4, 4, 8, false);
    EXPECT_EQ(Eight.Dc->Painter(), nullptr);  // shallow surfaces have no painter
}
