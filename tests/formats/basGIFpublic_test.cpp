// The routines beside the GIF class: the byte view, the paletted BMP writer and the reduction of a
// true-colour picture through the palette work file.
#include <gtest/gtest.h>

#include <filesystem>

#include "GIFTestSupport.h"
#include "basGIFpublic.h"
#include "clsPal.h"

namespace {

// A 3 x 2 true-colour picture, top row black, bright red, white; bottom row dark red, blue and a
// near white.
void Picture(clsDIB& Dib, bool TopDown)
{
    ASSERT_TRUE(Dib.CreateBlankDIB(3, 2, 32, 0, TopDown, true));
    const uint32_t Colors[2][3] = {{RGBColor(0, 0, 0), RGBColor(255, 0, 0), RGBColor(255, 255, 255)},
                                   {RGBColor(128, 0, 0), RGBColor(0, 0, 255), RGBColor(250, 250, 250)}};
    for (int Y = 0; Y < 2; ++Y)
        for (int X = 0; X < 3; ++X)
            Dib.DIBhDC()->SetPixelV(X, Y, Colors[Y][X]);
}

uint32_t Le32(const std::vector<uint8_t>& B, size_t At)
{
    return B[At] | (B[At + 1] << 8) | (B[At + 2] << 16) | (uint32_t(B[At + 3]) << 24);
}

} // namespace

TEST(basGIFpublic, MapDIBBitsLaysTheViewOverTheRows)
{
    clsDIB Dib;
    basGIFpublic::ByteView View;
    EXPECT_FALSE(basGIFpublic::MapDIBBits(View, Dib));
    EXPECT_EQ(View.Bits, nullptr);
    ASSERT_TRUE(Dib.CreateBlankDIB(5, 2, 8, 0, true));
    ASSERT_TRUE(basGIFpublic::MapDIBBits(View, Dib));
    EXPECT_EQ(View.Columns, 8);
    EXPECT_EQ(View.Rows, 2);
    View(4, 1) = 7;
    EXPECT_EQ(Dib.DIBBitsPtr()[8 + 4], 7);
}

TEST(basGIFpublic, SaveBMPWithPaletteWritesNearestIndexesBottomRowFirst)
{
    GIFTest::Folder Dir;
    clsPal Pal;
    Pal.CreatePalette16();
    struct Case {
        int16_t Bits;
        bool TopDown;
        std::vector<uint8_t> Rows;  // bottom row first, with padding
    } Cases[] = {
        {4, true, {0x1C, 0xF0, 0, 0, 0x09, 0xF0, 0, 0}},
        {4, false, {0x1C, 0xF0, 0, 0, 0x09, 0xF0, 0, 0}},
        {8, true, {1, 12, 15, 0, 0, 9, 15, 0}},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Bits);
        clsDIB Dib;
        Picture(Dib, C.TopDown);
        const std::string Path = Dir.Path("p.bmp");
        ASSERT_TRUE(basGIFpublic::SaveBMPWithPalette(Path, Dib, Pal, C.Bits));
        const std::vector<uint8_t> B = GIFTest::ReadFile(Path);
        const uint32_t Table = 4u << C.Bits;
        ASSERT_EQ(B.size(), 54 + Table + C.Rows.size());
        EXPECT_EQ(B[0], 'B');
        EXPECT_EQ(Le32(B, 2), B.size());
        EXPECT_EQ(Le32(B, 10), 54 + Table);
        EXPECT_EQ(Le32(B, 14), 40u);
        EXPECT_EQ(Le32(B, 18), 3u);
        EXPECT_EQ(Le32(B, 22), 2u);
        EXPECT_EQ(B[28], C.Bits);
        EXPECT_EQ(std::vector<uint8_t>(B.begin() + 54 + 9 * 4, B.begin() + 54 + 10 * 4),
                  (std::vector<uint8_t>{0, 0, 255, 0}));
        EXPECT_EQ(std::vector<uint8_t>(B.begin() + 54 + Table, B.end()), C.Rows);
    }
    clsDIB Dib;
    Picture(Dib, true);
    EXPECT_FALSE(basGIFpublic::SaveBMPWithPalette(Dir.Path("p.bmp"), Dib, Pal, 24));
}

TEST(basGIFpublic, ReduceToPaletteFileKeepsFewColoursExactlyAndDithersMany)
{
    GIFTest::Folder Dir;
    const std::string Work = Dir.Path(basGIFpublic::PaletteWorkFile);
    {
        clsDIB Dib;
        Picture(Dib, false);
        clsPal Pal;
        std::ofstream(Work) << "left over";
        ASSERT_TRUE(basGIFpublic::ReduceToPaletteFile(Dib, Pal, Dir.Dir.path().toStdString()));
        EXPECT_FALSE(std::filesystem::exists(Work));
        EXPECT_EQ(Dib.DIBbpp(), 8);
        EXPECT_TRUE(Dib.DIBhDC()->TopDown());
        EXPECT_EQ(Pal.MaxCount(), 6);
        EXPECT_EQ(Dib.DIBhDC()->GetPixel(1, 0), RGBColor(255, 0, 0));
        EXPECT_EQ(Dib.DIBhDC()->GetPixel(2, 1), RGBColor(250, 250, 250));
        const uint8_t Index = Dib.DIBhDC()->Row(1)[1];
        EXPECT_EQ(RGBColor(Pal.rgbR(Index), Pal.rgbG(Index), Pal.rgbB(Index)), RGBColor(0, 0, 255));
    }
    clsDIB Ramp;
    ASSERT_TRUE(Ramp.CreateBlankDIB(64, 32, 32, 0, true, true));
    for (int Y = 0; Y < 32; ++Y)
        for (int X = 0; X < 64; ++X)
            Ramp.DIBhDC()->SetPixelV(X, Y, RGBColor(X * 4, Y * 8, 128));
    clsPal Pal;
    ASSERT_TRUE(basGIFpublic::ReduceToPaletteFile(Ramp, Pal, Dir.Dir.path().toStdString()));
    EXPECT_EQ(Ramp.DIBbpp(), 8);
    EXPECT_LE(Pal.MaxCount(), 256);
    EXPECT_GT(Pal.MaxCount(), 64);
    const uint32_t Corner = Ramp.DIBhDC()->GetPixel(63, 31);
    EXPECT_NEAR(ColorR(Corner), 252, 24);
    EXPECT_NEAR(ColorG(Corner), 248, 24);
    clsDIB Empty;
    EXPECT_FALSE(basGIFpublic::ReduceToPaletteFile(Empty, Pal, Dir.Dir.path().toStdString()));
    EXPECT_FALSE(std::filesystem::exists(Work));
}
