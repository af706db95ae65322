// The software blits: BitBlt's raster operations, depth conversion, clipping and overlap,
// StretchBlt's nearest sampling, mirroring and halftone averaging.
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
    for (int I = 0; I < S.W * S.H; ++I)
        S.Set(I % S.W, I / S.W, S.Bpp >= 32 ? R[I] : R[I] & ((1u << S.Bpp) - 1));
}

} // namespace

TEST(DeviceBlit, RasterOperationsCombineTheStoredBitsAndShallowSourcesGoThroughTheirTable)
{
    struct Case {
        int SourceBpp, TargetBpp;
        uint32_t Op;
    };
    for (const Case& C : {Case{32, 32, SRCCOPY}, Case{32, 32, SRCAND}, Case{32, 32, SRCPAINT}, Case{32, 32, SRCINVERT},
                          Case{8, 8, SRCCOPY}, Case{8, 8, SRCAND}, Case{8, 8, SRCPAINT}, Case{8, 8, SRCINVERT},
                          Case{1, 32, SRCCOPY}, Case{4, 32, SRCCOPY}, Case{8, 32, SRCCOPY}}) {
        const std::vector<uint32_t> Table = DistinctTable(C.SourceBpp <= 8 ? 1 << C.SourceBpp : 0);
        RawSurface S(9, 3, C.SourceBpp, false, Table), T(9, 3, C.TargetBpp, true, Table);
        FillRandom(S, 1);
        FillRandom(T, 2);
        std::vector<uint32_t> Expected = S.Pixels();
        const std::vector<uint32_t> Before = T.Pixels();
        for (size_t I = 0; I < Expected.size(); ++I) {
            const uint32_t P = Expected[I], D = Before[I];
            Expected[I] = C.SourceBpp != C.TargetBpp ? Table[P]
                          : C.Op == SRCAND           ? P & D
                          : C.Op == SRCPAINT         ? P | D
                          : C.Op == SRCINVERT        ? P ^ D
                                                     : P;
        }
        ASSERT_TRUE(BitBlt(T.Dc.get(), 0, 0, 9, 3, S.Dc.get(), 0, 0, C.Op));
        EXPECT_EQ(T.Pixels(C.SourceBpp != C.TargetBpp ? 0x00FFFFFF : 0xFFFFFFFF), Expected)
            << C.SourceBpp << " to " << C.TargetBpp << " bits, operation " << std::hex << C.Op;
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
    EXPECT_EQ(T.Dc->NearestIndex(0x0000000F), 3);
}

TEST(DeviceBlit, BitBltClipsAtEveryEdgeAndCopiesOverlapsFromTheOriginal)
{
    struct Case {
        int X, Y, W, H, SrcX, SrcY;
        bool Same;  // target and source the same 4 by 4 context
    };
    const Case Cases[] = {
        {-1, -1, 3, 3, 0, 0, false}, {2, -2, 3, 3, 0, 0, false},  {-2, 2, 4, 4, 0, 0, false},
        {0, 0, 3, 3, -1, -1, false}, {0, 0, 3, 3, 2, 1, false},   {1, 0, 9, 9, 0, 0, false},
        {10, 0, 3, 3, 0, 0, false},  {0, 0, 0, 3, 0, 0, false},   {-3, -3, 9, 9, -1, -2, false},
        {1, 1, 4, 4, 0, 0, true},    {0, 0, 4, 4, 1, 1, true},    {0, 1, 4, 4, 0, 0, true},  // onto itself
        {2, 0, 4, 4, 0, 0, true},    {0, 0, 4, 4, 2, 0, true},    {1, 0, 4, 4, 0, 1, true},
    };
    for (const Case& C : Cases) {
        for (bool TopDown : {false, true}) {
            SCOPED_TRACE(testing::Message() << "at " << C.X << "," << C.Y << " size " << C.W << "x" << C.H << " from "
                                            << C.SrcX << "," << C.SrcY << (C.Same ? " onto itself" : "")
                                            << ", top-down " << TopDown);
            RawSurface T(4, 4, 32, TopDown), Other(3, 3, 32, !TopDown);
            RawSurface& S = C.Same ? T : Other;
            FillRandom(S, 4);
            FillRandom(T, 5);
            const std::vector<uint32_t> Source = S.Pixels(), Target = T.Pixels();
            const std::vector<uint32_t> Expected = Grid(4, 4, [&](int X, int Y) {
                const int SX = X - C.X + C.SrcX, SY = Y - C.Y + C.SrcY;
                const bool Inside = X >= C.X && X < C.X + C.W && Y >= C.Y && Y < C.Y + C.H;
                return Inside && SX >= 0 && SX < S.W && SY >= 0 && SY < S.H ? Source[SY * S.W + SX] : Target[Y * 4 + X];
            });
            BitBlt(T.Dc.get(), C.X, C.Y, C.W, C.H, S.Dc.get(), C.SrcX, C.SrcY, SRCCOPY);
            EXPECT_EQ(T.Pixels(), Expected);
        }
    }
}

TEST(DeviceBlit, StretchBltNearestEnlargesAndNegativeExtentsMirror)
{
    for (int F : {1, 3}) {
        RawSurface S(3, 2, 32, false), T(3 * F + 2, 2 * F + 1, 32, true);
        FillRandom(S, 7);
        FillRandom(T, 8);
        const std::vector<uint32_t> Before = T.Pixels(0x00FFFFFF);
        SetStretchBltMode(T.Dc.get(), COLORONCOLOR);
        ASSERT_TRUE(StretchBlt(T.Dc.get(), 2, 1, 3 * F, 2 * F, S.Dc.get(), 0, 0, 3, 2, SRCCOPY));
        EXPECT_EQ(T.Pixels(0x00FFFFFF), Grid(T.W, T.H, [&](int X, int Y) {
                      return X >= 2 && Y >= 1 && Y <= 2 * F ? S.Get((X - 2) / F, (Y - 1) / F) & 0x00FFFFFF
                                                            : Before[Y * T.W + X];
                  }))
            << "factor " << F;
    }
    const int W = 5, H = 4;
    struct Case {
        bool MirrorX, MirrorY, SameContext;
    };
    for (const Case& C : {Case{true, false, false}, Case{false, true, false}, Case{true, true, false},
                          Case{true, false, true}, Case{false, true, true}}) {
        RawSurface S(W, H, 32, false), Other(W, H, 32, false);
        FillRandom(S, 9);
        const std::vector<uint32_t> Before = S.Pixels(0x00FFFFFF);
        RawSurface& T = C.SameContext ? S : Other;
        SetStretchBltMode(T.Dc.get(), COLORONCOLOR);
        StretchBlt(T.Dc.get(), C.MirrorX ? W - 1 : 0, C.MirrorY ? H - 1 : 0, C.MirrorX ? -W : W, C.MirrorY ? -H : H,
                   S.Dc.get(), 0, 0, W, H, SRCCOPY);
        const std::vector<uint32_t> Expected = Grid(W, H, [&](int X, int Y) {
            return Before[(C.MirrorY ? H - 1 - Y : Y) * W + (C.MirrorX ? W - 1 - X : X)];
        });
        EXPECT_EQ(T.Pixels(0x00FFFFFF), Expected)
            << "mirror x " << C.MirrorX << ", y " << C.MirrorY << ", onto itself " << C.SameContext;
    }
}

TEST(DeviceBlit, HalftoneAveragesWhenShrinkingByTwo)
{
    RawSurface S(4, 4, 32, false), T(2, 2, 32, false);
    FillRandom(S, 10);
    FillRandom(T, 11);
    // The fourth pixel of each 2 by 2 block makes every channel sum divisible by four, so the average is whole.
    std::vector<uint32_t> Expected;
    for (int B = 0; B < 4; ++B) {
        const int X = B % 2 * 2, Y = B / 2 * 2;
        uint32_t Fourth = 0, Average = 0;
        for (int Shift : {0, 8, 16}) {
            uint32_t Sum = 0;
            for (int K = 0; K < 3; ++K)
                Sum += (S.Get(X + K % 2, Y + K / 2) >> Shift) & 255;
            const uint32_t C = ((S.Get(X + 1, Y + 1) >> Shift) & 0xFC) | ((4 - Sum % 4) % 4);
            Fourth |= C << Shift;
            Average |= ((Sum + C) / 4) << Shift;
        }
        S.Set(X + 1, Y + 1, Fourth);
        Expected.push_back(Average);
    }
    SetStretchBltMode(T.Dc.get(), HALFTONE);
    EXPECT_EQ(GetStretchBltMode(T.Dc.get()), HALFTONE);
    ASSERT_TRUE(StretchBlt(T.Dc.get(), 0, 0, 2, 2, S.Dc.get(), 0, 0, 4, 4, SRCCOPY));
    EXPECT_EQ(T.Pixels(0x00FFFFFF), Expected);
}
