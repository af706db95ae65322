// The software blits: BitBlt's raster operations, depth conversion, clipping and overlap,
// StretchBlt's nearest sampling, mirroring and halftone averaging. The surfaces are memory
// owned by the tests with a device context over it.
#include <gtest/gtest.h>

#include "DeviceContext.h"
#include "TestImages.h"

using namespace TestImages;

namespace {

std::vector<uint32_t> DistinctTable(int Count)
{
    std::vector<uint32_t> T;
    for (int I = 0; I < Count; ++I)
        T.push_back((uint32_t(I) << 16) | (uint32_t(255 - I) << 8) | uint32_t((I * 7) & 255));
    return T;
}

void FillRandom(RawSurface& S, uint32_t Seed)
{
    const std::vector<uint32_t> R = RandomWords(size_t(S.W) * S.H, Seed);
    const uint32_t Mask = S.Bpp >= 32 ? 0xFFFFFFFFu : ((1u << S.Bpp) - 1);
    for (int Y = 0; Y < S.H; ++Y)
        for (int X = 0; X < S.W; ++X)
            S.Set(X, Y, R[Y * S.W + X] & Mask);
}

std::vector<uint32_t> Pixels(RawSurface& S)
{
    std::vector<uint32_t> Out;
    for (int Y = 0; Y < S.H; ++Y)
        for (int X = 0; X < S.W; ++X)
            Out.push_back(S.Get(X, Y));
    return Out;
}

uint32_t Rop(uint32_t Op, uint32_t S, uint32_t D)
{
    switch (Op) {
    case SRCAND: return S & D;
    case SRCPAINT: return S | D;
    case SRCINVERT: return S ^ D;
    default: return S;
    }
}

} // namespace

TEST(DeviceBlit, RasterOperationsCombineTheStoredBits)
{
    for (int Bpp : {32, 8}) {
        for (uint32_t Op : {SRCCOPY, SRCAND, SRCPAINT, SRCINVERT}) {
            SCOPED_TRACE(testing::Message() << Bpp << " bits, operation " << std::hex << Op);
            const std::vector<uint32_t> Table = Bpp == 8 ? DistinctTable(256) : std::vector<uint32_t>{};
            RawSurface S(5, 3, Bpp, false, Table), T(5, 3, Bpp, true, Table);
            FillRandom(S, 1);
            FillRandom(T, 2);
            const std::vector<uint32_t> Sp = Pixels(S), Tp = Pixels(T);
            ASSERT_TRUE(BitBlt(T.Dc.get(), 0, 0, 5, 3, S.Dc.get(), 0, 0, Op));
            std::vector<uint32_t> Expected(Sp.size());
            for (size_t I = 0; I < Sp.size(); ++I)
                Expected[I] = Rop(Op, Sp[I], Tp[I]);
            EXPECT_EQ(Pixels(T), Expected);
        }
    }
}

TEST(DeviceBlit, ShallowSourcesAreConvertedThroughTheirTable)
{
    for (int Bpp : {1, 4, 8}) {
        SCOPED_TRACE(testing::Message() << Bpp << " bits to 32");
        RawSurface S(9, 3, Bpp, false, DistinctTable(1 << Bpp)), T(9, 3, 32, false);
        FillRandom(S, 3);
        ASSERT_TRUE(BitBlt(T.Dc.get(), 0, 0, 9, 3, S.Dc.get(), 0, 0, SRCCOPY));
        for (int Y = 0; Y < 3; ++Y)
            for (int X = 0; X < 9; ++X)
                EXPECT_EQ(T.Get(X, Y) & 0x00FFFFFFu, S.Table[S.Get(X, Y)]) << X << "," << Y;
    }
}

TEST(DeviceBlit, DeepToEightBitsTakesTheNearestLowestIndex)
{
    std::vector<uint32_t> Table(256, 0x00FAFAFA);
    Table[0] = 0;
    Table[1] = 0x000A0A0A;
    Table[2] = 0x000A0A0A;
    Table[3] = 0x00140000;  // red 20
    // Source quads (blue, green, red) and the index each must land on.
    const std::pair<uint32_t, uint32_t> Cases[] = {
        {Quad(10, 10, 10), 1}, {Quad(0, 0, 15), 3}, {Quad(5, 5, 5), 0},         {Quad(240, 240, 240), 4},
        {Quad(0, 0, 20), 3},   {Quad(0, 0, 0), 0},  {Quad(255, 255, 255, 9), 4}, {Quad(6, 5, 5), 1},
    };
    RawSurface S(8, 1, 32, false), T(8, 1, 8, false, Table);
    for (int X = 0; X < 8; ++X)
        S.Set(X, 0, Cases[X].first);
    ASSERT_TRUE(BitBlt(T.Dc.get(), 0, 0, 8, 1, S.Dc.get(), 0, 0, SRCCOPY));
    for (int X = 0; X < 8; ++X)
        EXPECT_EQ(T.Get(X, 0), Cases[X].second) << "pixel " << X;
    EXPECT_EQ(T.Dc->NearestIndex(0x00050505), 0);
    EXPECT_EQ(T.Dc->NearestIndex(0x0000000F), 3);
}

TEST(DeviceBlit, BitBltClipsAtEveryEdge)
{
    struct Case {
        int X, Y, W, H, SrcX, SrcY;
    };
    const Case Cases[] = {{-1, -1, 3, 3, 0, 0}, {3, 3, 3, 3, 0, 0},  {2, -2, 3, 3, 0, 0}, {-2, 2, 4, 4, 0, 0},
                          {0, 0, 3, 3, -1, -1}, {0, 0, 3, 3, 2, 1},  {1, 0, 9, 9, 0, 0},  {10, 0, 3, 3, 0, 0},
                          {0, -5, 3, 3, 0, 0},  {0, 0, 0, 3, 0, 0},  {0, 0, 3, 3, 0, 5},  {-3, -3, 9, 9, -1, -2}};
    for (const Case& C : Cases) {
        SCOPED_TRACE(testing::Message() << "at " << C.X << "," << C.Y << " size " << C.W << "x" << C.H << " from "
                                        << C.SrcX << "," << C.SrcY);
        RawSurface S(3, 3, 32, false), T(4, 4, 32, false);
        FillRandom(S, 4);
        FillRandom(T, 5);
        std::vector<uint32_t> Expected = Pixels(T);
        for (int Y = 0; Y < 4; ++Y)
            for (int X = 0; X < 4; ++X) {
                const int SX = X - C.X + C.SrcX, SY = Y - C.Y + C.SrcY;
                if (X >= C.X && X < C.X + C.W && Y >= C.Y && Y < C.Y + C.H && SX >= 0 && SX < 3 && SY >= 0 && SY < 3)
                    Expected[Y * 4 + X] = S.Get(SX, SY);
            }
        BitBlt(T.Dc.get(), C.X, C.Y, C.W, C.H, S.Dc.get(), C.SrcX, C.SrcY, SRCCOPY);
        EXPECT_EQ(Pixels(T), Expected);
    }
}

TEST(DeviceBlit, SameContextWithOverlapCopiesTheOriginal)
{
    struct Case {
        int X, Y, SrcX, SrcY;
    };
    for (const Case& C : {Case{1, 1, 0, 0}, Case{0, 0, 1, 1}, Case{0, 1, 0, 0}, Case{0, 0, 0, 2}, Case{2, 0, 0, 0},
                          Case{0, 0, 3, 0}, Case{1, 0, 0, 1}}) {
        for (bool TopDown : {false, true}) {
            SCOPED_TRACE(testing::Message() << "to " << C.X << "," << C.Y << " from " << C.SrcX << "," << C.SrcY
                                            << " top-down " << TopDown);
            RawSurface S(5, 5, 32, TopDown);
            FillRandom(S, 6);
            const std::vector<uint32_t> Before = Pixels(S);
            std::vector<uint32_t> Expected = Before;
            for (int Y = 0; Y < 4; ++Y)
                for (int X = 0; X < 4; ++X) {
                    const int TX = C.X + X, TY = C.Y + Y, SX = C.SrcX + X, SY = C.SrcY + Y;
                    if (TX < 5 && TY < 5 && SX < 5 && SY < 5)
                        Expected[TY * 5 + TX] = Before[SY * 5 + SX];
                }
            BitBlt(S.Dc.get(), C.X, C.Y, 4, 4, S.Dc.get(), C.SrcX, C.SrcY, SRCCOPY);
            EXPECT_EQ(Pixels(S), Expected);
        }
    }
}

TEST(DeviceBlit, StretchBltNearestEnlargesByWholeFactors)
{
    for (int Factor : {1, 2, 3}) {
        SCOPED_TRACE(testing::Message() << "factor " << Factor);
        RawSurface S(3, 2, 32, false), T(3 * Factor + 2, 2 * Factor + 1, 32, true);
        FillRandom(S, 7);
        FillRandom(T, 8);
        std::vector<uint32_t> Expected = Pixels(T);
        for (int Y = 0; Y < 2 * Factor; ++Y)
            for (int X = 0; X < 3 * Factor; ++X)
                Expected[(Y + 1) * T.W + X + 2] = S.Get(X / Factor, Y / Factor);
        SetStretchBltMode(T.Dc.get(), COLORONCOLOR);
        ASSERT_TRUE(StretchBlt(T.Dc.get(), 2, 1, 3 * Factor, 2 * Factor, S.Dc.get(), 0, 0, 3, 2, SRCCOPY));
        const std::vector<uint32_t> Actual = Pixels(T);
        for (size_t I = 0; I < Actual.size(); ++I)
            EXPECT_EQ(Actual[I] & 0x00FFFFFFu, Expected[I] & 0x00FFFFFFu) << "pixel " << I;
    }
}

TEST(DeviceBlit, NegativeExtentsMirrorExactly)
{
    const int W = 5, H = 4;
    struct Case {
        bool MirrorX, MirrorY, SameContext;
    };
    for (const Case& C : {Case{true, false, false}, Case{false, true, false}, Case{true, true, false},
                          Case{true, false, true}, Case{false, true, true}}) {
        SCOPED_TRACE(testing::Message() << "mirror x " << C.MirrorX << ", y " << C.MirrorY << ", onto itself "
                                        << C.SameContext);
        RawSurface S(W, H, 32, false), Other(W, H, 32, false);
        FillRandom(S, 9);
        const std::vector<uint32_t> Before = Pixels(S);
        RawSurface& T = C.SameContext ? S : Other;
        SetStretchBltMode(T.Dc.get(), COLORONCOLOR);
        StretchBlt(T.Dc.get(), C.MirrorX ? W - 1 : 0, C.MirrorY ? H - 1 : 0, C.MirrorX ? -W : W, C.MirrorY ? -H : H,
                   S.Dc.get(), 0, 0, W, H, SRCCOPY);
        for (int Y = 0; Y < H; ++Y)
            for (int X = 0; X < W; ++X) {
                const uint32_t From = Before[(C.MirrorY ? H - 1 - Y : Y) * W + (C.MirrorX ? W - 1 - X : X)];
                EXPECT_EQ(T.Get(X, Y) & 0x00FFFFFFu, From & 0x00FFFFFFu) << X << "," << Y;
            }
    }
}

TEST(DeviceBlit, HalftoneAveragesWhenShrinkingByTwo)
{
    RawSurface S(4, 4, 32, false), T(2, 2, 32, false);
    const std::vector<uint32_t> R = RandomWords(48, 10);
    // Each 2 by 2 block gets channel sums divisible by four, so the average is whole.
    for (int BY = 0; BY < 2; ++BY)
        for (int BX = 0; BX < 2; ++BX) {
            uint32_t Sum[3] = {0, 0, 0};
            for (int K = 0; K < 4; ++K) {
                uint8_t C[3];
                for (int Ch = 0; Ch < 3; ++Ch) {
                    C[Ch] = uint8_t(R[(BY * 2 + BX) * 12 + K * 3 + Ch]);
                    if (K == 3)
                        C[Ch] = uint8_t((C[Ch] & 0xFC) | ((4 - Sum[Ch] % 4) % 4));
                    Sum[Ch] += C[Ch];
                }
                S.Set(BX * 2 + K % 2, BY * 2 + K / 2, Quad(C[0], C[1], C[2]));
            }
            T.Set(BX, BY, Quad(uint8_t(Sum[0] / 4), uint8_t(Sum[1] / 4), uint8_t(Sum[2] / 4)));
        }
    const std::vector<uint32_t> Expected = Pixels(T);
    FillRandom(T, 11);
    SetStretchBltMode(T.Dc.get(), HALFTONE);
    EXPECT_EQ(GetStretchBltMode(T.Dc.get()), HALFTONE);
    ASSERT_TRUE(StretchBlt(T.Dc.get(), 0, 0, 2, 2, S.Dc.get(), 0, 0, 4, 4, SRCCOPY));
    for (int I = 0; I < 4; ++I)
        EXPECT_EQ(T.Get(I % 2, I / 2) & 0x00FFFFFFu, Expected[I] & 0x00FFFFFFu) << "pixel " << I;
}
