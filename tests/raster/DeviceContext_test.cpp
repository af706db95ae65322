// The device context over a surface's memory: pixel reads and writes in image coordinates,
// the solid fill, and the painter's flip on bottom-up surfaces.
#include <gtest/gtest.h>

#include <QPainter>

#include "DeviceContext.h"
#include "TestImages.h"

using namespace TestImages;

TEST(DeviceContext, PixelsAreAddressedInImageCoordinates)
{
    for (bool TopDown : {false, true}) {
        for (int Bpp : {24, 32}) {
            SCOPED_TRACE(testing::Message() << Bpp << " bits, top-down " << TopDown);
            RawSurface S(3, 4, Bpp, TopDown);
            S.Dc->SetPixelV(2, 0, 0x00563412);  // red 0x12, green 0x34, blue 0x56
            const uint8_t* Row = S.Bytes.data() + (TopDown ? 0 : 3) * S.Stride + 2 * (Bpp / 8);
            EXPECT_EQ(Row[0], 0x56);
            EXPECT_EQ(Row[1], 0x34);
            EXPECT_EQ(Row[2], 0x12);
            EXPECT_EQ(S.Dc->GetPixel(2, 0), 0x00563412u);
            EXPECT_EQ(S.Dc->GetPixel(2, 3), 0u);
            for (auto [X, Y] : {std::pair{-1, 0}, {3, 0}, {0, -1}, {0, 4}}) {
                EXPECT_EQ(S.Dc->GetPixel(X, Y), CLR_INVALID);
                S.Dc->SetPixelV(X, Y, 0x00FFFFFF);  // outside: nothing written
            }
            for (size_t I = 0; I < S.Bytes.size(); ++I)
                if (S.Bytes.data() + I < Row || S.Bytes.data() + I >= Row + Bpp / 8) {
                    ASSERT_EQ(S.Bytes[I], 0) << "byte " << I;
                }
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
    EXPECT_EQ(S.Get(1, 0), 0u);
    EXPECT_EQ(S.Get(2, 1), 0u);
    EXPECT_EQ(S.Get(3, 1), 5u);
}

TEST(DeviceContext, FillRectIsClippedAndClearsAlpha)
{
    struct Case {
        int X, Y, W, H;
    };
    for (const Case& C : {Case{-1, -1, 3, 3}, Case{2, 1, 9, 9}, Case{0, 0, 4, 3}, Case{5, 0, 2, 2}, Case{1, 1, 0, 2}}) {
        SCOPED_TRACE(testing::Message() << C.X << "," << C.Y << " " << C.W << "x" << C.H);
        RawSurface S(4, 3, 32, false);
        for (int Y = 0; Y < 3; ++Y)
            for (int X = 0; X < 4; ++X)
                S.Set(X, Y, 0xFF000000u | uint32_t(X * 16 + Y));
        S.Dc->FillRect(C.X, C.Y, C.W, C.H, 0x00332211);
        for (int Y = 0; Y < 3; ++Y)
            for (int X = 0; X < 4; ++X) {
                const bool Inside = X >= C.X && X < C.X + C.W && Y >= C.Y && Y < C.Y + C.H;
                EXPECT_EQ(S.Get(X, Y), Inside ? Quad(0x33, 0x22, 0x11, 0) : 0xFF000000u | uint32_t(X * 16 + Y))
                    << X << "," << Y;
            }
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
    for (int R = 0; R < 4; ++R)
        for (int X = 0; X < 5; ++X) {
            const uint8_t* P = S.Bytes.data() + R * S.Stride + X * 4;
            if (R == 3) {
                EXPECT_EQ(P[0], 0x56) << "column " << X;  // blue
                EXPECT_EQ(P[1], 0x34);
                EXPECT_EQ(P[2], 0x12);  // red
            } else {
                EXPECT_EQ(P[0] | P[1] | P[2], 0) << "storage row " << R << ", column " << X;
            }
        }

    // Shallow surfaces have no painter.
    RawSurface Eight(4, 4, 8, false);
    EXPECT_EQ(Eight.Dc->Painter(), nullptr);
}
