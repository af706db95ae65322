// Pixel routines of the surface: alpha display, icon arrays, bilinear resampling, best fit
// and quarter turns. Expected pixels come from the formulas, written out here.
#include <gtest/gtest.h>

#include <cmath>

#include "TestImages.h"
#include "clsDIB.h"

using namespace TestImages;

TEST(clsDIBPixels, DisplayWithAlphaBlendsInWholePercent)
{
    const int W = 16, H = 16;
    std::vector<uint32_t> Q = RandomWords(W * H, 60);
    for (int I = 0; I < W * H; ++I)
        Q[I] = (Q[I] & 0x00FFFFFFu) | (uint32_t(I) << 24);  // every alpha value once
    const auto Blend = [](int A, int Back, int C) {
        const int P = A * 100 / 255;  // floor(A / 255 * 100): a whole percentage
        return uint32_t(((100 - P) * Back + P * C) / 100);
    };
    clsDIB Source, Caller;
    MakeDIB32(Source, W, H, Q);
    for (int Mode = 0; Mode < 3; ++Mode) {
        const bool Alpha = Mode < 2, Flip = Mode == 1;
        Source.setDIBhasAlpha(Alpha);
        clsDIB Target;
        ASSERT_TRUE(Target.CreateBlankDIB(W + 2, H + 1, 32, 0x00010203, false));
        Caller.Display_DIB_With_Alpha(Source, Target.DIBhDC(), 0x00C08040, Flip);
        EXPECT_EQ(Colors(Target.DIBhDC()), Grid(W + 2, H + 1, [&](int X, int Y) {
                      if (X >= W || Y >= H)
                          return 0x00010203u;  // outside the source's size
                      const uint32_t S = Q[(Flip ? H - 1 - Y : Y) * W + X];
                      const int A = QA(S);
                      if (!Alpha)
                          return ColorOfQuad(S);
                      return Blend(A, 0x40, QR(S)) | (Blend(A, 0x80, QG(S)) << 8) | (Blend(A, 0xC0, QB(S)) << 16);
                  }))
            << "alpha " << Alpha << ", flip " << Flip;
    }
}

TEST(clsDIBPixels, IconArraysAndAlphaValuesGoToStorageRowsFromTheBottom)
{
    const int W = 5, H = 3;
    Array2D<uint32_t> IconColors(W, H);
    Array2D<uint8_t> Mask(W, H), Alpha(W, H);
    const std::vector<uint32_t> R = RandomWords(W * H, 70), Before = RandomWords(W * H, 71);
    clsDIB Icon, Filled, MaskDib, Caller;
    ASSERT_TRUE(MaskDib.CreateBlankDIB(W, H, 32, 0, false));
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X) {
            IconColors(X, Y) = R[Y * W + X] & 0x00FFFFFF;
            Mask(X, Y) = uint8_t((X + Y) % 3 == 0 ? 1 + X : 0);
            Alpha(X, Y) = uint8_t(R[Y * W + X] >> 24);
            // White, and a near-black that is still not 0, mark transparent pixels.
            if (Mask(X, Y))
                MaskDib.DIBhDC()->SetPixelV(X, Y, X == 4 ? 0x00010000 : 0x00FFFFFF);
        }
    MakeDIB32(Icon, W, H, Before);
    MakeDIB32(Filled, W, H, Before);
    Caller.Post_Icon_Arrays_To_DIB(Icon, IconColors, Mask, Alpha);
    Caller.Fill_DIB_With_AlphaValues(Filled, MaskDib.DIBhDC(), Alpha);
    const uint32_t Hidden = 0xFFFFFFFFu;
    EXPECT_EQ(ImageQuads(Icon), Grid(W, H, [&](int X, int Y) {
                  return Mask(X, Y) ? Hidden : QuadOfColor(IconColors(X, Y), Alpha(X, Y));
              }));
    EXPECT_EQ(ImageQuads(Filled), Grid(W, H, [&](int X, int Y) {
                  return Mask(X, Y) ? Hidden : (Before[Y * W + X] & 0x00FFFFFFu) | (uint32_t(Alpha(X, Y)) << 24);
              }));
}

namespace {

// The bilinear formula written out: single precision, storage rows, ties to even.
std::vector<uint32_t> Bilinear(const std::vector<uint32_t>& Src, int SW, int SH, const std::vector<uint32_t>& Dst,
                               int DW, int DH)
{
    std::vector<uint32_t> Out = Dst;
    const float RatioX = float(SW - 1) / float(DW), RatioY = float(SH - 1) / float(DH);
    for (int Y = 0; Y < DH; ++Y)
        for (int X = 0; X < DW; ++X) {
            const float SY = RatioY * float(Y), SX = RatioX * float(X);
            const int IY = int(std::floor(SY)), IX = int(std::floor(SX));
            const float FY = SY - float(IY), FX = SX - float(IX);
            const int DX = (IX + 1 < SW - 1) ? 1 : 0, DY = (IY + 1 < SH - 1) ? 1 : 0;
            const uint32_t P00 = Src[IY * SW + IX], P10 = Src[IY * SW + IX + DX], P01 = Src[(IY + DY) * SW + IX];
            const uint32_t P11 = (DX && DY) ? Src[(IY + 1) * SW + IX + 1] : P00;
            uint32_t Result = Out[Y * DW + X] & 0xFF000000u;
            for (int Shift : {0, 8, 16}) {
                const auto C = [Shift](uint32_t P) { return float((P >> Shift) & 255); };
                const float Top = std::nearbyint((1 - FX) * C(P00) + FX * C(P10));
                const float Bottom = std::nearbyint((1 - FX) * C(P01) + FX * C(P11));
                const int V = int(std::nearbyint((1 - FY) * Top + FY * Bottom));
                Result |= uint32_t(std::clamp(V, 0, 255)) << Shift;
            }
            Out[Y * DW + X] = Result;
        }
    return Out;
}

} // namespace

TEST(clsDIBPixels, AntialiasResamplingFollowsItsFormula)
{
    struct Case {
        int SW, SH, DW, DH;
    };
    for (const Case& C : {Case{5, 4, 3, 3}, Case{4, 4, 8, 8}, Case{6, 5, 1, 3}, Case{3, 5, 6, 10}, Case{2, 2, 5, 4},
                          Case{1, 3, 4, 4}, Case{16, 9, 7, 12}}) {
        SCOPED_TRACE(testing::Message() << C.SW << "x" << C.SH << " to " << C.DW << "x" << C.DH);
        clsDIB Source, Target, Caller;
        MakeDIB32(Source, C.SW, C.SH, RandomWords(size_t(C.SW * C.SH), uint32_t(C.SW * 31 + C.DH)));
        MakeDIB32(Target, C.DW, C.DH, RandomWords(size_t(C.DW * C.DH), uint32_t(C.DW * 17 + C.SH)));
        // Both sides are addressed in storage rows, so compare in storage order.
        const std::vector<uint32_t> Expected =
            Bilinear(StorageQuads(Source), C.SW, C.SH, StorageQuads(Target), C.DW, C.DH);
        Caller.StretchPaintFromDIBtoDIB_Antialias_NativeDB(Source, Target);
        EXPECT_EQ(StorageQuads(Target), Expected);
    }
}

TEST(clsDIBPixels, BestFitScalesInSinglePrecisionAndCentres)
{
    struct Case {
        int DW, DH, BoxW, BoxH;
        bool Enlarge;
        int X, Y, W, H;
    };
    for (const Case& C : {
             Case{10, 5, 100, 100, false, 45, 47, 10, 5},   // fits: size kept, centred, 47.5 floors
             Case{10, 5, 100, 100, true, 0, 25, 100, 50},   // enlarged to the width
             Case{3, 3, 10, 5, true, 2, 0, 5, 5},           // enlarged to the height
             Case{5, 4, 100, 2, false, 49, 0, 2, 2},        // 2.5 rounds to 2
             Case{7, 4, 100, 2, false, 48, 0, 4, 2},        // 3.5 rounds to 4
             Case{95, 10, 1000, 3, false, 485, 0, 29, 3},   // 0.3f * 95 is just above 28.5
             Case{200, 100, 50, 50, false, 0, 12, 50, 25},  // scaleX below scaleY: width takes the box
             Case{100, 100, 40, 40, false, 0, 0, 40, 40},   // equal scales: height takes the box
         }) {
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(C.DW, C.DH, 32, 0, false));
        int32_t X = -1, Y = -1, W = -1, H = -1;
        Dib.GetBestFitPointAndSize(C.BoxW, C.BoxH, X, Y, W, H, C.Enlarge);
        EXPECT_EQ((std::vector<int32_t>{X, Y, W, H}), (std::vector<int32_t>{C.X, C.Y, C.W, C.H}))
            << C.DW << "x" << C.DH << " in " << C.BoxW << "x" << C.BoxH;
    }
    clsDIB Empty;
    int32_t X = -1, Y = -2, W = -3, H = -4;
    Empty.GetBestFitPointAndSize(100, 100, X, Y, W, H, true);
    EXPECT_EQ((std::vector<int32_t>{X, Y, W, H}), (std::vector<int32_t>{-1, -2, -3, -4}));
}

namespace {

// Where each pixel of a W by H surface goes, in storage order: mirrors (modes 0 and 1), quarter turns (2 and 3).
std::vector<uint32_t> Rotated(const std::vector<uint32_t>& Old, int W, int H, int Mode)
{
    std::vector<uint32_t> Out(Old.size());
    for (int R = 0; R < H; ++R)
        for (int C = 0; C < W; ++C) {
            const uint32_t P = Old[R * W + C];
            switch (Mode) {
            case 0: Out[R * W + (W - 1 - C)] = P; break;
            case 1: Out[(H - 1 - R) * W + C] = P; break;
            case 2: Out[C * H + (H - 1 - R)] = P; break;
            case 3: Out[(W - 1 - C) * H + R] = P; break;
            default: Out[R * W + C] = P; break;
            }
        }
    return Out;
}

// The colours of a bottom-up surface in storage order.
std::vector<uint32_t> StorageColors(const clsDIB& Dib)
{
    const int H = Dib.DIBHeight();
    return Grid(Dib.DIBWidth(), H, [&](int X, int R) { return Dib.DIBhDC()->GetPixel(X, H - 1 - R); });
}

} // namespace

TEST(clsDIBPixels, RotateMovesEveryPixelAndTurnsGiveThirtyTwoBits)
{
    const int W = 3, H = 5;
    const std::vector<uint32_t> Q = RandomWords(W * H, 90);
    std::vector<uint8_t> Table(1024, 0);
    for (int I = 0; I < 256; ++I) {
        Table[I * 4] = uint8_t(I);
        Table[I * 4 + 1] = uint8_t(I ^ 0x55);
        Table[I * 4 + 2] = uint8_t(255 - I);
    }
    for (int Mode = 0; Mode <= 5; ++Mode) {
        SCOPED_TRACE(testing::Message() << "mode " << Mode);
        const bool Turn = Mode == 2 || Mode == 3;
        clsDIB Deep, Eight, Caller;
        MakeDIB32(Deep, W, H, Q);
        ASSERT_TRUE(Eight.CreateBlankDIB(W, H, 8, 0, false));
        Eight.SetPaletteToDIB8BPP(Table);
        for (int I = 0; I < W * H; ++I)
            Eight.DIBBitsPtr()[I / W * 4 + I % W] = uint8_t(Q[I]);
        const std::vector<uint32_t> OldQuads = StorageQuads(Deep), OldColors = StorageColors(Eight);
        Caller.RotateDIB(Deep, int16_t(Mode));
        Caller.RotateDIB(Eight, int16_t(Mode));
        const int NW = Turn ? H : W, NH = Turn ? W : H, EightBits = Turn ? 32 : 8;
        ASSERT_EQ(Shape(Deep), (std::vector<int64_t>{NW, NH, 32, 32, NW * 4, NW * NH * 4, NH, false}));
        ASSERT_EQ(Shape(Eight), (std::vector<int64_t>{NW, NH, EightBits, EightBits, StrideOf(NW, EightBits),
                                                      StrideOf(NW, EightBits) * NH, NH, false}));
        // The mirrors go through the stretching blit, which owes nothing to alpha bytes.
        std::vector<uint32_t> Actual = StorageQuads(Deep), Expected = Rotated(OldQuads, W, H, Mode);
        for (size_t I = 0; I < Actual.size() && Mode < 2; ++I) {
            Actual[I] &= 0x00FFFFFF;
            Expected[I] &= 0x00FFFFFF;
        }
        EXPECT_EQ(Actual, Expected);
        EXPECT_EQ(StorageColors(Eight), Rotated(OldColors, W, H, Mode));
    }
    clsDIB Empty, Caller;
    Caller.RotateDIB(Empty, 2);
    EXPECT_EQ(Empty.DIBhDC(), nullptr);
}
