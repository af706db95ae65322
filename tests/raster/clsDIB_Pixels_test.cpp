// Pixel routines of the surface: alpha display, icon arrays, bilinear resampling, best fit
// and quarter turns. Expected pixels come from the formulas, written out here.
#include <gtest/gtest.h>

#include <cmath>

#include "TestImages.h"
#include "clsDIB.h"

using namespace TestImages;

namespace {

uint8_t Blend(int A, int Back, int C)
{
    const int P = A * 100 / 255;  // floor(A / 255 * 100): a whole percentage
    return uint8_t(((100 - P) * Back + P * C) / 100);
}

} // namespace

TEST(clsDIBPixels, DisplayWithAlphaBlendsInWholePercent)
{
    // Every alpha value once, with colours spread over the range.
    const int W = 16, H = 16;
    std::vector<uint32_t> Q = RandomWords(W * H, 60);
    for (int I = 0; I < W * H; ++I)
        Q[I] = (Q[I] & 0x00FFFFFFu) | (uint32_t(I) << 24);
    Q[0] = Quad(255, 0, 128, 0);
    Q[255] = Quad(0, 255, 1, 255);
    const uint32_t Back = 0x00C08040;  // red 0x40, green 0x80, blue 0xC0
    clsDIB Source, Caller;
    MakeDIB32(Source, W, H, Q);
    Source.setDIBhasAlpha(true);
    for (bool Flip : {false, true}) {
        SCOPED_TRACE(testing::Message() << "Flip " << Flip);
        clsDIB Target;
        ASSERT_TRUE(Target.CreateBlankDIB(W + 2, H + 1, 32, 0x00010203, false));
        Caller.Display_DIB_With_Alpha(Source, Target.DIBhDC(), Back, Flip);
        for (int Y = 0; Y < H + 1; ++Y)
            for (int X = 0; X < W + 2; ++X) {
                uint32_t Expected = 0x00010203;  // outside the source's size
                if (X < W && Y < H) {
                    const uint32_t S = Q[(Flip ? H - 1 - Y : Y) * W + X];
                    const int A = QA(S);
                    Expected = uint32_t(Blend(A, 0x40, QR(S))) | (uint32_t(Blend(A, 0x80, QG(S))) << 8) |
                               (uint32_t(Blend(A, 0xC0, QB(S))) << 16);
                }
                ASSERT_EQ(Target.DIBhDC()->GetPixel(X, Y), Expected) << X << "," << Y;
            }
    }
    // Without the alpha flag the colours are shown as they are.
    Source.setDIBhasAlpha(false);
    clsDIB Target;
    ASSERT_TRUE(Target.CreateBlankDIB(W, H, 32, 0, false));
    Caller.Display_DIB_With_Alpha(Source, Target.DIBhDC(), Back, false);
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X)
            ASSERT_EQ(Target.DIBhDC()->GetPixel(X, Y), ColorOfQuad(Q[Y * W + X]));
}

TEST(clsDIBPixels, IconArraysGoToStorageRowsFromTheBottom)
{
    const int W = 4, H = 3;
    Array2D<uint32_t> Colors(W, H);
    Array2D<uint8_t> Mask(W, H), Alpha(W, H);
    const std::vector<uint32_t> R = RandomWords(W * H, 70);
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X) {
            Colors(X, Y) = R[Y * W + X] & 0x00FFFFFF;
            Mask(X, Y) = uint8_t((X + Y) % 3 == 0 ? 1 + X : 0);
            Alpha(X, Y) = uint8_t(R[Y * W + X] >> 24);
        }
    clsDIB Target, Caller;
    MakeDIB32(Target, W, H, RandomWords(W * H, 71));
    Caller.Post_Icon_Arrays_To_DIB(Target, Colors, Mask, Alpha);
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X) {
            const uint32_t C = Colors(X, Y);
            const uint32_t Expected = Mask(X, Y) ? 0xFFFFFFFFu : QuadOfColor(C, Alpha(X, Y));
            EXPECT_EQ(GetQuad(Target, X, H - 1 - Y), Expected) << X << "," << Y;
        }
}

TEST(clsDIBPixels, AlphaValuesFollowTheMaskContext)
{
    const int W = 5, H = 3;
    clsDIB Target, MaskDib, Caller;
    const std::vector<uint32_t> Before = RandomWords(W * H, 80);
    MakeDIB32(Target, W, H, Before);
    ASSERT_TRUE(MaskDib.CreateBlankDIB(W, H, 32, 0, false));
    Array2D<uint8_t> Alpha(W, H);
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X) {
            Alpha(X, Y) = uint8_t(X * 40 + Y * 7 + 3);
            // White, and a near-black that is still not 0, mark transparent pixels.
            if (X == Y)
                MaskDib.DIBhDC()->SetPixelV(X, Y, 0x00FFFFFF);
            else if (X == 4)
                MaskDib.DIBhDC()->SetPixelV(X, Y, 0x00010000);
        }
    Caller.Fill_DIB_With_AlphaValues(Target, MaskDib.DIBhDC(), Alpha);
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X) {
            const uint32_t Old = Before[Y * W + X];
            const uint32_t Expected = (X == Y || X == 4) ? 0xFFFFFFFFu : ((Old & 0x00FFFFFFu) | (uint32_t(Alpha(X, Y)) << 24));
            EXPECT_EQ(GetQuad(Target, X, H - 1 - Y), Expected) << X << "," << Y;
        }
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
    const Case Cases[] = {{5, 4, 3, 3}, {4, 4, 8, 8}, {3, 3, 3, 4}, {6, 5, 1, 3}, {3, 5, 6, 10}, {8, 3, 3, 7},
                          {7, 6, 4, 5}, {2, 2, 5, 4}, {1, 3, 4, 4}, {10, 10, 3, 3}, {16, 9, 7, 12}};
    for (const Case& C : Cases) {
        SCOPED_TRACE(testing::Message() << C.SW << "x" << C.SH << " to " << C.DW << "x" << C.DH);
        const std::vector<uint32_t> S = RandomWords(size_t(C.SW * C.SH), uint32_t(C.SW * 31 + C.DH));
        const std::vector<uint32_t> D = RandomWords(size_t(C.DW * C.DH), uint32_t(C.DW * 17 + C.SH));
        clsDIB Source, Target, Caller;
        MakeDIB32(Source, C.SW, C.SH, S);
        MakeDIB32(Target, C.DW, C.DH, D);
        // Both sides are addressed in storage rows, so compare in storage order.
        const std::vector<uint32_t> Expected = Bilinear(StorageQuads(Source), C.SW, C.SH, StorageQuads(Target), C.DW, C.DH);
        Caller.StretchPaintFromDIBtoDIB_Antialias_NativeDB(Source, Target);
        EXPECT_EQ(StorageQuads(Target), Expected);
        EXPECT_EQ(Target.DIBWidth(), C.DW);
        EXPECT_EQ(Source.DIBWidth(), C.SW);
    }
}

TEST(clsDIBPixels, AntialiasToWidthOneTakesColumnZero)
{
    std::vector<uint32_t> S(16, Quad(0xF0, 0xF0, 0xF0));
    for (int Y = 0; Y < 4; ++Y)
        S[Y * 4] = Quad(0x10, 0x20, uint8_t(0x30 + Y));
    clsDIB Source, Target, Caller;
    MakeDIB32(Source, 4, 4, S);
    MakeDIB32(Target, 1, 4, std::vector<uint32_t>(4, Quad(0, 0, 0, 0x77)));
    Caller.StretchPaintFromDIBtoDIB_Antialias_NativeDB(Source, Target);
    // ratioY = 3/4: storage rows 0, 0.75, 1.5, 2.25 of the source; row 3 is never a neighbour.
    const uint8_t Reds[4] = {0x33, 0x32, 0x32, 0x31};  // source storage row r holds red 0x33 - r
    for (int R = 0; R < 4; ++R)
        EXPECT_EQ(GetQuad(Target, 0, R), Quad(0x10, 0x20, Reds[R], 0x77)) << "storage row " << R;
}

TEST(clsDIBPixels, BestFitScalesInSinglePrecisionAndCentres)
{
    struct Case {
        int DW, DH, BoxW, BoxH;
        bool Enlarge;
        int X, Y, W, H;
    };
    const Case Cases[] = {
        {10, 5, 100, 100, false, 45, 47, 10, 5},    // fits: size kept, centred
        {10, 5, 11, 6, false, 0, 0, 10, 5},         // (11 - 10) / 2 = 0
        {10, 5, 100, 100, true, 0, 25, 100, 50},    // enlarged to the width
        {5, 4, 100, 2, false, 49, 0, 2, 2},         // 2.5 rounds to 2
        {7, 4, 100, 2, false, 48, 0, 4, 2},         // 3.5 rounds to 4
        {95, 10, 1000, 3, false, 485, 0, 29, 3},    // 0.3f * 95 is just above 28.5
        {200, 100, 50, 50, false, 0, 12, 50, 25},   // scaleX below scaleY: width takes the box
        {100, 100, 40, 40, false, 0, 0, 40, 40},    // equal scales: height takes the box
        {3, 3, 10, 5, true, 2, 0, 5, 5},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(testing::Message() << C.DW << "x" << C.DH << " in " << C.BoxW << "x" << C.BoxH);
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(C.DW, C.DH, 32, 0, false));
        int32_t X = -1, Y = -1, W = -1, H = -1;
        Dib.GetBestFitPointAndSize(C.BoxW, C.BoxH, X, Y, W, H, C.Enlarge);
        EXPECT_EQ(X, C.X);
        EXPECT_EQ(Y, C.Y);
        EXPECT_EQ(W, C.W);
        EXPECT_EQ(H, C.H);
    }
    clsDIB Empty;
    int32_t X = -1, Y = -2, W = -3, H = -4;
    Empty.GetBestFitPointAndSize(100, 100, X, Y, W, H, true);
    EXPECT_EQ(X, -1);
    EXPECT_EQ(Y, -2);
    EXPECT_EQ(W, -3);
    EXPECT_EQ(H, -4);
}

TEST(clsDIBPixels, RotateMovesEveryPixelExactly)
{
    const int W = 3, H = 5;
    const std::vector<uint32_t> Q = RandomWords(W * H, 90);
    for (int Mode = 0; Mode <= 5; ++Mode) {
        SCOPED_TRACE(testing::Message() << "mode " << Mode);
        clsDIB Dib, Caller;
        MakeDIB32(Dib, W, H, Q);
        const std::vector<uint32_t> Old = StorageQuads(Dib);  // Old[r * W + c]
        Caller.RotateDIB(Dib, int16_t(Mode));
        const bool Turn = Mode == 2 || Mode == 3;
        const int NW = Turn ? H : W, NH = Turn ? W : H;
        ASSERT_EQ(Dib.DIBWidth(), NW);
        ASSERT_EQ(Dib.DIBHeight(), NH);
        EXPECT_EQ(Dib.DIBbpp(), 32);
        std::vector<uint32_t> Expected(size_t(NW * NH));
        for (int R = 0; R < H; ++R)
            for (int C = 0; C < W; ++C) {
                const uint32_t P = Old[R * W + C];
                switch (Mode) {
                case 0: Expected[R * W + (W - 1 - C)] = P; break;
                case 1: Expected[(H - 1 - R) * W + C] = P; break;
                case 2: Expected[C * NW + (H - 1 - R)] = P; break;
                case 3: Expected[(W - 1 - C) * NW + R] = P; break;
                default: Expected[R * W + C] = P; break;
                }
            }
        const std::vector<uint32_t> Actual = StorageQuads(Dib);
        for (size_t I = 0; I < Expected.size(); ++I) {
            // The mirrors go through the stretching blit, which owes nothing to alpha bytes.
            const uint32_t Mask = (Mode == 0 || Mode == 1) ? 0x00FFFFFFu : 0xFFFFFFFFu;
            ASSERT_EQ(Actual[I] & Mask, Expected[I] & Mask) << "storage index " << I;
        }
    }
}

TEST(clsDIBPixels, RotateGivesThirtyTwoBitsWhateverTheDepth)
{
    clsDIB Dib, Caller;
    ASSERT_TRUE(Dib.CreateBlankDIB(3, 5, 8, 0, false));
    std::vector<uint8_t> Table(1024, 0);
    for (int I = 0; I < 256; ++I) {
        Table[I * 4] = uint8_t(I);
        Table[I * 4 + 1] = uint8_t(I ^ 0x55);
        Table[I * 4 + 2] = uint8_t(255 - I);
    }
    Dib.SetPaletteToDIB8BPP(Table);
    for (int R = 0; R < 5; ++R)
        for (int C = 0; C < 3; ++C)
            Dib.DIBBitsPtr()[R * 4 + C] = uint8_t(R * 3 + C + 1);
    Caller.RotateDIB(Dib, 3);
    ASSERT_EQ(Dib.DIBWidth(), 5);
    ASSERT_EQ(Dib.DIBHeight(), 3);
    EXPECT_EQ(Dib.DIBbpp(), 32);
    EXPECT_EQ(Dib.Header().biBitCount, 32);
    EXPECT_EQ(Dib.BytesPerScanline(), 20);
    for (int R = 0; R < 5; ++R)
        for (int C = 0; C < 3; ++C) {
            const int I = R * 3 + C + 1;  // mode 3: column r, storage row W - 1 - c
            EXPECT_EQ(ColorOfQuad(GetQuad(Dib, R, 2 - C)), uint32_t(255 - I) | (uint32_t(I ^ 0x55) << 8) | (uint32_t(I) << 16));
        }

    // Mirrors keep the depth: an 8-bit surface stays 8-bit with its indexes moved.
    clsDIB Eight;
    ASSERT_TRUE(Eight.CreateBlankDIB(3, 2, 8, 0, false));
    for (int R = 0; R < 2; ++R)
        for (int C = 0; C < 3; ++C)
            Eight.DIBBitsPtr()[R * 4 + C] = uint8_t(10 * R + C);
    Caller.RotateDIB(Eight, 0);
    EXPECT_EQ(Eight.DIBbpp(), 8);
    for (int R = 0; R < 2; ++R)
        for (int C = 0; C < 3; ++C)
            EXPECT_EQ(Caller.PaletteIndex_In_DIB_XY(Eight, C, R), 10 * R + (2 - C));

    clsDIB Empty;
    Caller.RotateDIB(Empty, 2);
    EXPECT_EQ(Empty.DIBhDC(), nullptr);
}
