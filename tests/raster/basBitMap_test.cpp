// The readers' bridge: palette routines, bitmaps from packed rows of every depth in both
// row orders painted onto a surface, and the grey ramps of PNG grey images.
#include <gtest/gtest.h>

#include <chrono>

#include "TestImages.h"
#include "basBitMap.h"
#include "clsDIB.h"

using namespace TestImages;

namespace {

std::vector<uint8_t> Bytes(size_t Count, uint32_t Seed)
{
    std::vector<uint8_t> Out;
    for (uint32_t W : RandomWords(Count, Seed))
        Out.push_back(uint8_t(W >> 8));
    return Out;
}

// Red, green, blue triples as table entries read as one word each.
std::vector<uint32_t> Entries(const std::vector<uint8_t>& Rgb)
{
    std::vector<uint32_t> Out;
    for (size_t I = 0; I + 2 < Rgb.size(); I += 3)
        Out.push_back((uint32_t(Rgb[I]) << 16) | (uint32_t(Rgb[I + 1]) << 8) | Rgb[I + 2]);
    return Out;
}

std::vector<uint32_t> Table(int Bpp, size_t Count)
{
    const std::vector<uint32_t>& T = basBitMap::ColorTable(Bpp);
    return std::vector<uint32_t>(T.begin(), T.begin() + std::min(Count, T.size()));
}

} // namespace

TEST(basBitMap, PaletteRoutinesFillTheirTables)
{
    const std::vector<uint8_t> Rgb16 = Bytes(48, 1), Rgb256 = Bytes(768, 2);
    basBitMap::SetPalette2FromRGB({1, 2, 3, 4, 5, 6});
    for (size_t Length : {0, 3, 5, 7, 12})
        basBitMap::SetPalette2FromRGB(std::vector<uint8_t>(Length, 0xEE));  // six bytes or nothing
    basBitMap::SetPalette16FromRGB(Rgb16);
    basBitMap::SetPalette256FromRGB(Rgb256);
    EXPECT_EQ(Table(1, 2), Entries({1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(Table(4, 16), Entries(Rgb16));
    EXPECT_EQ(Table(8, 256), Entries(Rgb256));
    basBitMap::SetPalette16FromRGB({9, 8, 7, 6, 5, 4});  // a shorter list sets the entries it has
    EXPECT_EQ(Table(4, 2), Entries({9, 8, 7, 6, 5, 4}));
}

TEST(basBitMap, BitmapsFromRowsPaintOntoASurface)
{
    const int W = 5, H = 3;
    basBitMap::SetPalette2FromRGB({10, 20, 30, 200, 210, 220});
    basBitMap::SetPalette16FromRGB(Bytes(48, 3));
    basBitMap::SetPalette256FromRGB(Bytes(768, 4));
    const auto Widen5 = [](uint32_t V) { return uint8_t((V << 3) | (V >> 2)); };
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
            EXPECT_EQ(Colors(Dib.DIBhDC()), Grid(W + 2, H + 2, [&](int X, int Y) {
                          const int PX = X - 1, PY = Y - 1;
                          if (PX < 0 || PX >= W || PY < 0 || PY >= H)
                              return 0x00808080u;
                          const uint8_t* Row = Rows.data() + (TopDown ? PY : H - 1 - PY) * Stride;
                          if (Bpp <= 8) {
                              const int Index = Bpp == 1   ? (Row[PX / 8] >> (7 - PX % 8)) & 1
                                                : Bpp == 4 ? (PX % 2 ? Row[PX / 2] & 15 : Row[PX / 2] >> 4)
                                                           : Row[PX];
                              return ColorOfQuad(basBitMap::ColorTable(Bpp)[Index]);
                          }
                          if (Bpp == 16) {
                              const uint32_t V = Row[PX * 2] | (Row[PX * 2 + 1] << 8);
                              return ColorOfQuad(Quad(Widen5(V & 31), Widen5((V >> 5) & 31), Widen5((V >> 10) & 31)));
                          }
                          return ColorOfQuad(Quad(Row[PX * Bpp / 8], Row[PX * Bpp / 8 + 1], Row[PX * Bpp / 8 + 2]));
                      }));
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
    EXPECT_EQ(Colors(Dib.DIBhDC()), Grid(5, 3, [&](int X, int Y) {
                  return Y ? 0u : ColorOfQuad(Quad(OneRow[X * 3], OneRow[X * 3 + 1], OneRow[X * 3 + 2]));
              }));
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
        std::vector<uint8_t> Expected;
        for (int I = 0; I < C.Levels; ++I)
            Expected.insert(Expected.end(), 3, uint8_t(I * C.Step));
        // Without KeepTable the tables stay as they are; with it the ramp goes into the table of its depth.
        for (bool Keep : {false, true}) {
            basBitMap::SetPalette256FromRGB(std::vector<uint8_t>(768, 0x55));
            basBitMap::SetPalette16FromRGB(std::vector<uint8_t>(48, 0x55));
            basBitMap::SetPalette2FromRGB(std::vector<uint8_t>(6, 0x55));
            EXPECT_EQ(basBitMap::BuildGrayRamp(C.Depth, Keep), Expected);
            if (C.TableBpp) {
                EXPECT_EQ(Table(C.TableBpp, size_t(C.Levels)),
                          Entries(Keep ? Expected : std::vector<uint8_t>(size_t(C.Levels) * 3, 0x55)));
            }
        }
    }
}
