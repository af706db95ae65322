// Blending and masks: BlendIn, BlendIn_Masked, CreateMask_viaDC, Create_ImageMask_Pair and
// DIBNetPaintedArea.
#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "TestImages.h"
#include "clsDIB.h"

using namespace TestImages;

namespace {

// The weighted blend of every channel but alpha, weights in single precision, ties to even.
uint32_t MixQuad(int Percent, uint32_t T, uint32_t S)
{
    const float A = float(Percent / 100.0), B = 1.0f - A;
    const auto Mix = [&](uint8_t Target, uint8_t Source) { return uint8_t(std::nearbyint(B * Target + A * Source)); };
    return Quad(Mix(QB(T), QB(S)), Mix(QG(T), QG(S)), Mix(QR(T), QR(S)), QA(T));
}

struct Recorder {
    std::vector<int32_t> Steps;
    int Ends = 0;
    explicit Recorder(clsDIB& Dib)
    {
        Dib.Progress = [this](int32_t P) { Steps.push_back(P); };
        Dib.ProgressEnd = [this] { ++Ends; };
    }
};

} // namespace

TEST(clsDIBBlend, BlendInWeighsEveryChannelButAlpha)
{
    const int W = 8, H = 4;
    std::vector<uint32_t> T = RandomWords(W * H, 100), S = RandomWords(W * H, 101);
    // Ties of the half blend: 1.5 -> 2, 2.5 -> 2, 127.5 -> 128, 126.5 -> 126.
    T[0] = Quad(1, 2, 0, 9);
    S[0] = Quad(2, 3, 255, 200);
    T[1] = Quad(255, 126, 127, 0);
    S[1] = Quad(0, 127, 126, 0);
    T[2] = Quad(5, 5, 5, 1);  // 0.7 * 5 in single precision is 3.5 exactly
    S[2] = Quad(0, 0, 0, 2);
    for (int Percent : {0, 100, 50, 30, 67}) {
        SCOPED_TRACE(testing::Message() << Percent << " percent");
        clsDIB Target, Source;
        MakeDIB32(Target, W, H, T);
        MakeDIB32(Source, W, H, S);
        Recorder Events(Target);
        Target.BlendIn(Target, Source, Percent, -1);
        std::vector<uint32_t> Expected(W * H);
        for (int I = 0; I < W * H; ++I)
            Expected[I] = Percent == 0     ? T[I]
                          : Percent == 100 ? (T[I] & 0xFF000000u) | (S[I] & 0x00FFFFFFu)
                                           : MixQuad(Percent, T[I], S[I]);
        EXPECT_EQ(ImageQuads(Target), Expected);
        EXPECT_EQ(Events.Steps, (std::vector<int32_t>{25, 50, 75, 100}));
        EXPECT_EQ(Events.Ends, 1);
    }
}

TEST(clsDIBBlend, BlendInSkipsTheExcludedColourAndStaysInTheCommonArea)
{
    std::vector<uint32_t> S = RandomWords(6, 111);
    S[1] = Quad(0x11, 0x22, 0x33, 0x99);  // the excluded colour 0x00112233, whatever its alpha
    S[4] = Quad(0x11, 0x22, 0x34, 0x00);  // one step off: blended
    // A smaller source blends its own area, a larger one the whole target.
    for (const auto [TW, TH, SW, SH] : {std::array{4, 3, 3, 2}, std::array{2, 1, 3, 2}}) {
        clsDIB Target, Source;
        MakeDIB32(Target, TW, TH, RandomWords(size_t(TW * TH), 110));
        MakeDIB32(Source, SW, SH, S);
        const std::vector<uint32_t> Tst = StorageQuads(Target), Sst = StorageQuads(Source);
        Target.BlendIn(Target, Source, 40, 0x00112233);
        std::vector<uint32_t> Expected = Tst;
        for (int R = 0; R < std::min(TH, SH); ++R)  // storage rows and columns that both surfaces have
            for (int X = 0; X < std::min(TW, SW); ++X)
                if (ColorOfQuad(Sst[R * SW + X]) != 0x00112233u)
                    Expected[R * TW + X] = MixQuad(40, Tst[R * TW + X], Sst[R * SW + X]);
        EXPECT_EQ(StorageQuads(Target), Expected) << TW << "x" << TH;
        clsDIB Empty;
        Target.BlendIn(Target, Empty, 50, -1);  // nothing without both surfaces
        EXPECT_EQ(StorageQuads(Target), Expected);
    }
}

TEST(clsDIBBlend, BlendInMaskedSkipsOnlyBlackOverWhite)
{
    // Source and mask per pixel, image order, 3 by 2.
    const uint32_t Black = Quad(0, 0, 0), White = Quad(255, 255, 255);
    const std::vector<uint32_t> S = {Black, Black, Quad(0, 0, 255), Quad(0, 0, 0, 0x80), Quad(1, 0, 0), Black};
    const std::vector<uint32_t> M = {White, Black, White, Quad(255, 255, 255, 0x10), White, Quad(255, 254, 255)};
    const std::vector<bool> Skipped = {true, false, false, true, false, false};
    const std::vector<uint32_t> T = RandomWords(6, 120);
    clsDIB Target, Source, Mask;
    MakeDIB32(Target, 3, 2, T);
    MakeDIB32(Source, 3, 2, S);
    MakeDIB32(Mask, 3, 2, M);
    Recorder Events(Target);
    Target.BlendIn_Masked(Target, Source, Mask, 60);
    const std::vector<uint32_t> Actual = ImageQuads(Target);
    for (int I = 0; I < 6; ++I)
        EXPECT_EQ(Actual[I], Skipped[I] ? T[I] : MixQuad(60, T[I], S[I])) << "pixel " << I;
    EXPECT_EQ(Events.Steps, (std::vector<int32_t>{50, 100}));
    EXPECT_EQ(Events.Ends, 1);

    // Any size that differs leaves the target alone.
    for (int Which = 0; Which < 2; ++Which) {
        clsDIB Odd, Again;
        MakeDIB32(Again, 3, 2, T);
        MakeDIB32(Odd, Which ? 3 : 2, Which ? 3 : 2, RandomWords(9, 121));
        Again.BlendIn_Masked(Again, Which ? Source : Odd, Which ? Odd : Mask, 60);
        EXPECT_EQ(ImageQuads(Again), T) << "mismatch " << Which;
    }
}

TEST(clsDIBBlend, CreateMaskViaDCKeepsOnlyWhite)
{
    const std::vector<uint32_t> Q = {Quad(255, 255, 255, 0), Quad(0, 0, 0, 255),     Quad(255, 255, 254, 0),
                                     Quad(0, 0, 255, 0),     Quad(255, 255, 255, 7), Quad(128, 128, 128, 0),
                                     Quad(254, 255, 255, 0), Quad(255, 255, 255, 255)};
    clsDIB Dib, Caller;
    MakeDIB32(Dib, 4, 2, Q);
    Caller.CreateMask_viaDC(Dib);
    ASSERT_EQ(Dib.DIBWidth() * Dib.DIBHeight(), 8);
    const std::vector<uint32_t> Actual = ImageQuads(Dib);
    for (int I = 0; I < 8; ++I)
        EXPECT_EQ(Actual[I] & 0x00FFFFFFu, (Q[I] & 0x00FFFFFFu) == 0x00FFFFFFu ? 0x00FFFFFFu : 0u) << "pixel " << I;
}

TEST(clsDIBBlend, ImageMaskPairMarksTheTransparentColour)
{
    struct Case {
        int32_t Transparent;  // negative: the top left pixel
        bool SameSizeMask;
    };
    for (const Case& C : {Case{0x00112233, true}, Case{-1, false}, Case{0, true}}) {
        SCOPED_TRACE(testing::Message() << "transparent " << C.Transparent);
        const int W = 4, H = 3;
        std::vector<uint32_t> I = RandomWords(W * H, 130);
        const uint32_t Key = C.Transparent >= 0 ? uint32_t(C.Transparent) : ColorOfQuad(I[0]);
        for (int K : {0, 5, 11})
            if (C.Transparent >= 0 || K != 0)
                I[K] = QuadOfColor(Key, uint8_t(K * 20 + 1));  // alpha bytes differ
        clsDIB Image, Mask, Caller;
        MakeDIB32(Image, W, H, I);
        const std::vector<uint32_t> M = RandomWords(W * H, 131);
        if (C.SameSizeMask)
            MakeDIB32(Mask, W, H, M);
        else
            ASSERT_TRUE(Mask.CreateBlankDIB(2, 2, 8, 0, false));
        Caller.Create_ImageMask_Pair(Image, Mask, C.Transparent);
        ASSERT_EQ(Mask.DIBWidth(), W);
        ASSERT_EQ(Mask.DIBHeight(), H);
        EXPECT_EQ(Mask.DIBbpp(), 32);
        const std::vector<uint32_t> ImageAfter = ImageQuads(Image), MaskAfter = ImageQuads(Mask);
        for (int K = 0; K < W * H; ++K) {
            const bool Hit = ColorOfQuad(I[K]) == Key;
            const uint32_t MaskAlpha = C.SameSizeMask ? (M[K] & 0xFF000000u) : 0u;
            EXPECT_EQ(ImageAfter[K], Hit ? (I[K] & 0xFF000000u) : I[K]) << "pixel " << K;
            EXPECT_EQ(MaskAfter[K], (Hit ? 0x00FFFFFFu : 0u) | MaskAlpha) << "pixel " << K;
        }
    }
}

TEST(clsDIBBlend, NetPaintedAreaWorksInStorageRows)
{
    clsDIB Dib, Caller;
    ASSERT_TRUE(Dib.CreateBlankDIB(6, 5, 32, 0x00FFFFFF, false));
    int32_t L = -9, T = -9, R = -9, B = -9;
    const auto Area = [&](uint32_t Back) {
        Caller.DIBNetPaintedArea(Dib, L, T, R, B, Back);
        return std::vector<int32_t>{L, T, R, B};
    };
    SetQuad(Dib, 5, 0, Quad(255, 255, 255, 0x44));  // alpha alone does not count
    EXPECT_EQ(Area(0x00FFFFFF), (std::vector<int32_t>{5, 4, 0, 0}));  // nothing painted: the limits where they began
    Dib.DIBhDC()->SetPixelV(1, 1, 0x00FFFEFF);  // image row 1: storage row 3
    Dib.DIBhDC()->SetPixelV(4, 2, 0x00000000);  // image row 2: storage row 2
    EXPECT_EQ(Area(0x00FFFFFF), (std::vector<int32_t>{1, 2, 4, 3}));
    // Against another back colour everything white counts as painted.
    EXPECT_EQ(Area(0x00000000), (std::vector<int32_t>{0, 0, 5, 4}));
}
