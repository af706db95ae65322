// The readers' bridge: palette routines, bitmaps from packed rows of every depth in both
// row orders painted onto a surface, and the grey ramps of PNG grey images.
#include <gtest/gtest.h>

#include <chrono>

#include "TestImages.h"
#include "basBitMap.h"
#include "clsDIB.h"

using namespace TestImages;

namespace {

uint32_t QuadRgb(uint32_t R, uint32_t G, uint32_t B)
{
    return (R << 16) | (G << 8) | B;  // a table entry read as one word
}

std::vector<uint8_t> Bytes(size_t Count, uint32_t Seed)
{
    std::vector<uint8_t> Out;
    for (uint32_t W : RandomWords(Count, Seed))
        Out.push_back(uint8_t(W >> 8));
    return Out;
}

uint8_t Widen5(uint32_t V)
{
    return uint8_t((V << 3) | (V >> 2));
}

} // namespace

TEST(basBitMap, SetPalette2FromRGBTakesSixBytesOnly)
{
    basBitMap::SetPalette2FromRGB({1, 2, 3, 4, 5, 6});
    const std::vector<uint32_t>& Table = basBitMap::ColorTable(1);
    ASSERT_GE(Table.size(), 2u);
    EXPECT_EQ(Table[0], QuadRgb(1, 2, 3));
    EXPECT_EQ(Table[1], QuadRgb(4, 5, 6));
    for (size_t Length : {0, 3, 5, 7, 9, 12}) {
        basBitMap::SetPalette2FromRGB(std::vector<uint8_t>(Length, 0xEE));
        EXPECT_EQ(basBitMap::ColorTable(1)[0], QuadRgb(1, 2, 3)) << Length << " bytes";
        EXPECT_EQ(basBitMap::ColorTable(1)[1], QuadRgb(4, 5, 6)) << Length << " bytes";
    }
}

TEST(basBitMap, SetPalette16And256FromRGBFillTheirTables)
{
    const std::vector<uint8_t> Rgb16 = Bytes(48, 1), Rgb256 = Bytes(768, 2);
    basBitMap::SetPalette16FromRGB(Rgb16);
    basBitMap::SetPalette256FromRGB(Rgb256);
    ASSERT_GE(basBitMap::ColorTable(4).size(), 16u);
    ASSERT_GE(basBitMap::ColorTable(8).size(), 256u);
    for (int I = 0; I < 16; ++I)
        EXPECT_EQ(basBitMap::ColorTable(4)[I], QuadRgb(Rgb16[I * 3], Rgb16[I * 3 + 1], Rgb16[I * 3 + 2])) << I;
    for (int I = 0; I < 256; ++I)
        EXPECT_EQ(basBitMap::ColorTable(8)[I], QuadRgb(Rgb256[I * 3], Rgb256[I * 3 + 1], Rgb256[I * 3 + 2])) << I;
    // A shorter list sets the entries it has.
    basBitMap::SetPalette16FromRGB({9, 8, 7, 6, 5, 4});
    EXPECT_EQ(basBitMap::ColorTable(4)[0], QuadRgb(9, 8, 7));
    EXPECT_EQ(basBitMap::ColorTable(4)[1], QuadRgb(6, 5, 4));
}

TEST(basBitMap, BitmapsFromRowsPaintOntoASurface)
{
    const int W = 5, H = 3;
    basBitMap::SetPalette2FromRGB({10, 20, 30, 200, 210, 220});
    basBitMap::SetPalette16FromRGB(Bytes(48, 3));
    basBitMap::SetPalette256FromRGB(Bytes(768, 4));
    for (int Bpp : {1, 4, 8, 16, 24, 32}) {
        for (bool TopDown : {false, true}) {
            SCOPED_TRACE(testing::Message() << Bpp << " bits, top-down " << TopDown);
            const int Stride = StrideOf(W, Bpp);
            const std::vector<uint8_t> Rows = Bytes(size_t(Stride) * H, uint32_t(Bpp * 2 + TopDown));
            bool Made = false;
            switch (Bpp) {
            case 1: Made = basBitMap::BitmapFromRows1(Rows, W, H, TopDown); break;
            case 4: Made = basBitMap::BitmapFromRows4(Rows, W, H, TopDown); break;
            case 8: Made = basBitMap::BitmapFromRows8(Rows, W, H, TopDown); break;
            case 16: Made = basBitMap::BitmapFromRows16(Rows, W, H, TopDown); break;
            case 24: Made = basBitMap::BitmapFromRows24(Rows, W, H, TopDown); break;
            default: Made = basBitMap::BitmapFromRows32(Rows, W, H, TopDown); break;
            }
            ASSERT_TRUE(Made);
            ASSERT_NE(basBitMap::LastBitmap(), nullptr);
            EXPECT_EQ(basBitMap::LastBitmap()->Width(), W);
            EXPECT_EQ(basBitMap::LastBitmap()->Height(), H);

            clsDIB Dib;
            ASSERT_TRUE(Dib.CreateBlankDIB(W + 2, H + 2, 32, 0x00808080, false));
            basBitMap::PaintBitmapToDC(Dib.DIBhDC(), W, H, 1, 1);
            for (int Y = 0; Y < H + 2; ++Y)
                for (int X = 0; X < W + 2; ++X) {
                    uint32_t Expected = 0x00808080;
                    if (X >= 1 && X <= W && Y >= 1 && Y <= H) {
                        const int PX = X - 1, PY = Y - 1;
                        const uint8_t* Row = Rows.data() + (TopDown ? PY : H - 1 - PY) * Stride;
                        uint32_t Q = 0;
                        if (Bpp == 1)
                            Q = basBitMap::ColorTable(1)[(Row[PX / 8] >> (7 - PX % 8)) & 1];
                        else if (Bpp == 4)
                            Q = basBitMap::ColorTable(4)[PX % 2 ? Row[PX / 2] & 15 : Row[PX / 2] >> 4];
                        else if (Bpp == 8)
                            Q = basBitMap::ColorTable(8)[Row[PX]];
                        else if (Bpp == 16) {
                            const uint32_t V = Row[PX * 2] | (Row[PX * 2 + 1] << 8);
                            Q = Quad(Widen5(V & 31), Widen5((V >> 5) & 31), Widen5((V >> 10) & 31));
                        } else {
                            const int Step = Bpp / 8;
                            Q = Quad(Row[PX * Step], Row[PX * Step + 1], Row[PX * Step + 2]);
                        }
                        Expected = ColorOfQuad(Q);
                    }
                    ASSERT_EQ(Dib.DIBhDC()->GetPixel(X, Y), Expected) << X << "," << Y;
                }
        }
    }
}

TEST(basBitMap, MissingBytesReadAsZeroAndBadSizesAreRefused)
{
    const std::vector<uint8_t> OneRow = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    ASSERT_TRUE(basBitMap::BitmapFromRows24(OneRow, 5, 3, true));
    clsDIB Dib;
    ASSERT_TRUE(Dib.CreateBlankDIB(5, 3, 32, 0x00FFFFFF, true));
    basBitMap::PaintBitmapToDC(Dib.DIBhDC(), 5, 3, 0, 0);
    for (int X = 0; X < 5; ++X) {
        EXPECT_EQ(Dib.DIBhDC()->GetPixel(X, 0), ColorOfQuad(Quad(OneRow[X * 3], OneRow[X * 3 + 1], OneRow[X * 3 + 2])));
        EXPECT_EQ(Dib.DIBhDC()->GetPixel(X, 1), 0u);
        EXPECT_EQ(Dib.DIBhDC()->GetPixel(X, 2), 0u);
    }
    const auto Start = std::chrono::steady_clock::now();
    EXPECT_FALSE(basBitMap::BitmapFromRows8({}, 0, 3, false));
    EXPECT_FALSE(basBitMap::BitmapFromRows8({}, 3, -1, false));
    EXPECT_FALSE(basBitMap::BitmapFromRows32({}, 40000, 40000, false));
    EXPECT_FALSE(basBitMap::BitmapFromRows1({}, 2147483647, 2, true));
    EXPECT_LT(std::chrono::steady_clock::now() - Start, std::chrono::seconds(1));
}

TEST(basBitMap, GrayRampsForEveryPngDepth)
{
    struct Case {
        int16_t Depth;
        int Levels, Step, TableBpp;
    };
    for (const Case& C : {Case{1, 2, 255, 1}, Case{2, 4, 85, 4}, Case{4, 16, 17, 4}, Case{8, 256, 1, 8},
                          Case{16, 256, 1, 0}}) {
        SCOPED_TRACE(testing::Message() << "depth " << C.Depth);
        basBitMap::SetPalette256FromRGB(std::vector<uint8_t>(768, 0x55));
        basBitMap::SetPalette16FromRGB(std::vector<uint8_t>(48, 0x55));
        basBitMap::SetPalette2FromRGB(std::vector<uint8_t>(6, 0x55));
        const std::vector<uint8_t> Ramp = basBitMap::BuildGrayRamp(C.Depth, true);
        ASSERT_EQ(Ramp.size(), size_t(C.Levels) * 3);
        for (int I = 0; I < C.Levels; ++I) {
            const uint8_t V = uint8_t(I * C.Step);
            EXPECT_EQ(Ramp[I * 3], V);
            EXPECT_EQ(Ramp[I * 3 + 1], V);
            EXPECT_EQ(Ramp[I * 3 + 2], V);
            if (C.TableBpp) {
                EXPECT_EQ(basBitMap::ColorTable(C.TableBpp)[I], QuadRgb(V, V, V)) << "entry " << I;
            }
        }
        // Without KeepTable the tables stay as they are.
        basBitMap::SetPalette256FromRGB(std::vector<uint8_t>(768, 0x66));
        basBitMap::SetPalette16FromRGB(std::vector<uint8_t>(48, 0x66));
        basBitMap::SetPalette2FromRGB(std::vector<uint8_t>(6, 0x66));
        EXPECT_EQ(basBitMap::BuildGrayRamp(C.Depth, false), Ramp);
        if (C.TableBpp) {
            EXPECT_EQ(basBitMap::ColorTable(C.TableBpp)[1], QuadRgb(0x66, 0x66, 0x66));
        }
    }
}
