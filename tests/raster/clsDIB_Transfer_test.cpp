// Transfers between surfaces and pictures: CloneDIB, PaintFromDIBtoDIB, the stretching
// member, CreateDIBFromPic, FillDIBFromPic, TileDIB and ColorBackGroundDIB.
#include <gtest/gtest.h>

#include "StdPicture.h"
#include "TestImages.h"
#include "clsDIB.h"

using namespace TestImages;

namespace {

// A picture of the given depth whose pixels come from Seed; indexed ones get distinct colours.
StdPicture MakePicture(int Bpp, int W, int H, uint32_t Seed)
{
    const std::vector<uint32_t> R = RandomWords(size_t(W * H), Seed);
    QImage Image(W, H, Bpp == 1 ? QImage::Format_Mono : Bpp <= 8 ? QImage::Format_Indexed8 : QImage::Format_ARGB32);
    if (Bpp <= 8) {
        QList<QRgb> Table;
        for (int I = 0; I < (1 << Bpp); ++I)
            Table.append(qRgb(I * 7 % 256, (I * 13 + 50) % 256, 255 - I));
        Image.setColorTable(Table);
    }
    for (int I = 0; I < W * H; ++I)
        Image.setPixel(I % W, I / W, Bpp <= 8 ? R[I] % (1u << Bpp) : R[I] | 0xFF000000u);
    return StdPicture(Bpp == 24 ? Image.convertToFormat(QImage::Format_BGR888) : Image, Bpp);
}

} // namespace

TEST(clsDIBTransfer, CloneCopiesBytesAndTableButNotTheAlphaFlag)
{
    clsDIB Caller;
    for (int16_t Bpp : {int16_t(1), int16_t(4), int16_t(8), int16_t(32)}) {
        SCOPED_TRACE(testing::Message() << Bpp << " bits");
        clsDIB Source, Target, Flipped;
        ASSERT_TRUE(Source.CreateBlankDIB(9, 4, Bpp, 0x00FFFFFF, false));
        std::vector<uint8_t> Table(Bpp <= 8 ? size_t(4) << Bpp : 0), CopyTable;
        for (size_t I = 0; I < Table.size(); ++I)
            Table[I] = (I % 4 == 3) ? 0 : uint8_t(I * 31 + 5);
        Source.SetPaletteToDIB8BPP(Table);
        const std::vector<uint32_t> Bytes = RandomWords(size_t(Source.DIBSize()), uint32_t(Bpp));
        std::copy(Bytes.begin(), Bytes.end(), Source.DIBBitsPtr());  // each word cut to a byte, alpha bytes too
        Source.setDIBhasAlpha(true);
        ASSERT_TRUE(Target.CreateBlankDIB(7, 7, 8, 0, false));  // replaced by the clone
        Caller.CloneDIB(Source, Target, 0x00ABCDEF, false);
        std::vector<int64_t> Expected = Shape(Source);
        Expected.back() = false;
        EXPECT_EQ(Shape(Target), Expected);
        EXPECT_EQ(Target.DIBBackColor(), 0x00ABCDEFu);
        EXPECT_EQ(Memory(Target), Memory(Source));
        Target.GetPaletteFromDIB8BPP(CopyTable);
        EXPECT_EQ(CopyTable, Table);
        // A top-down clone takes the same block of bytes, so its picture is upside down.
        Caller.CloneDIB(Source, Flipped, 0, true);
        EXPECT_EQ(Flipped.Header().biHeight, -4);
        EXPECT_EQ(Memory(Flipped), Memory(Source));
        EXPECT_EQ(Flipped.DIBhDC()->GetPixel(1, 0), Source.DIBhDC()->GetPixel(1, 3));
    }
}

TEST(clsDIBTransfer, CloneOfATrue24BitSurfaceKeepsItsPicture)
{
    // A 24-bit file gives memory of three bytes a pixel; its clone holds four and reports 24.
    clsDIB Source, Target, Caller;
    ASSERT_TRUE(Source.CreateBlankDIB(3, 2, 24, 0, false, false));
    const std::vector<uint32_t> Picture = {0x010203, 0xA0B0C0, 0x00FF00, 0x123456, 0xFFFFFF, 0x000080};
    for (int I = 0; I < 6; ++I)
        Source.DIBhDC()->SetPixelV(I % 3, I / 3, Picture[I]);
    Caller.CloneDIB(Source, Target, 0, false);
    EXPECT_EQ(Target.DIBbpp(), 24);
    EXPECT_EQ(Target.StorageBpp(), 32);
    EXPECT_EQ(Colors(Target.DIBhDC()), Picture);
}

TEST(clsDIBTransfer, PaintFromDIBtoDIBCopiesTheClippedBlock)
{
    struct Case {
        int X, Y, Width, Height, SrcX, SrcY;
    };
    clsDIB Source, Caller;
    const std::vector<uint32_t> S = RandomWords(6, 11), T = RandomWords(20, 12);
    MakeDIB32(Source, 3, 2, S);
    // Sizes below 1 stand for the whole source.
    for (const Case& C : {Case{1, 1, 0, 0, 0, 0}, Case{0, 0, 2, 1, 1, 1}, Case{4, 3, 0, 0, 0, 0},
                          Case{-1, -1, 0, -5, 0, 0}, Case{0, 2, 1, 1, 2, 1}}) {
        SCOPED_TRACE(testing::Message() << "at " << C.X << "," << C.Y << " size " << C.Width << "x" << C.Height
                                        << " from " << C.SrcX << "," << C.SrcY);
        clsDIB Target;
        MakeDIB32(Target, 5, 4, T);
        Caller.PaintFromDIBtoDIB(Source, Target, C.X, C.Y, C.Width, C.Height, C.SrcX, C.SrcY);
        const int W = C.Width < 1 ? 3 : C.Width, H = C.Height < 1 ? 2 : C.Height;
        std::vector<uint32_t> Expected = T;
        for (int Y = 0; Y < 4; ++Y)
            for (int X = 0; X < 5; ++X) {
                const int SX = X - C.X + C.SrcX, SY = Y - C.Y + C.SrcY;
                if (X >= C.X && X < C.X + W && Y >= C.Y && Y < C.Y + H && SX >= 0 && SX < 3 && SY >= 0 && SY < 2)
                    Expected[Y * 5 + X] = S[SY * 3 + SX];
            }
        EXPECT_EQ(ImageQuads(Target), Expected);
    }
    // Without both device contexts nothing happens.
    clsDIB Empty, Target;
    MakeDIB32(Target, 2, 2, {1, 2, 3, 4});
    Caller.PaintFromDIBtoDIB(Empty, Target, 0, 0, 0, 0);
    Caller.PaintFromDIBtoDIB(Source, Empty, 0, 0, 0, 0);
    EXPECT_EQ(ImageQuads(Target), (std::vector<uint32_t>{1, 2, 3, 4}));
    EXPECT_EQ(Empty.DIBhDC(), nullptr);
}

TEST(clsDIBTransfer, StretchPaintDoublesAndPutsTheModeBack)
{
    clsDIB Source, Target, Caller;
    const std::vector<uint32_t> S = RandomWords(6, 21);
    MakeDIB32(Source, 3, 2, S);
    ASSERT_TRUE(Target.CreateBlankDIB(6, 4, 32, 0, false));
    SetStretchBltMode(Target.DIBhDC(), BLACKONWHITE);
    Caller.StretchPaintFromDIBtoDIB(Source, Target);  // every size below 1: the whole surfaces
    EXPECT_EQ(Colors(Target.DIBhDC()), Grid(6, 4, [&](int X, int Y) { return ColorOfQuad(S[Y / 2 * 3 + X / 2]); }));
    EXPECT_EQ(GetStretchBltMode(Target.DIBhDC()), BLACKONWHITE);
}

TEST(clsDIBTransfer, CreateDIBFromPicKeepsDepthTableAndPixels)
{
    for (int Bpp : {1, 4, 8, 24, 32}) {
        for (bool Force32 : {false, true}) {
            SCOPED_TRACE(testing::Message() << "picture of " << Bpp << " bits, Force32 " << Force32);
            const StdPicture Picture = MakePicture(Bpp, 5, 3, uint32_t(Bpp));
            clsDIB Dib;
            EXPECT_EQ(Dib.BPPperActualPic(Picture), Bpp);
            ASSERT_TRUE(Dib.CreateDIBFromPic(Picture, Force32));
            EXPECT_EQ(Dib.DIBWidth(), 5);
            EXPECT_EQ(Dib.DIBHeight(), 3);
            const int Reported = Force32 ? 32 : Bpp;
            const int Stored = (Force32 || Bpp == 24) ? 32 : Bpp;  // a 24-bit picture lands in 32-bit memory
            EXPECT_EQ(Dib.DIBbpp(), Reported);
            EXPECT_EQ(Dib.StorageBpp(), Stored);
            EXPECT_EQ(Dib.BytesPerScanline(), StrideOf(5, Reported));
            EXPECT_GT(Dib.Header().biHeight, 0);
            if (Stored <= 8) {
                std::vector<uint8_t> Table, Expected;
                Dib.GetPaletteFromDIB8BPP(Table);
                for (QRgb C : Picture.Image().colorTable())
                    Expected.insert(Expected.end(), {uint8_t(qBlue(C)), uint8_t(qGreen(C)), uint8_t(qRed(C)), 0});
                EXPECT_EQ(Table, Expected);
            }
            const QImage& Image = Picture.Image();
            EXPECT_EQ(Colors(Dib.DIBhDC()), Grid(5, 3, [&](int X, int Y) { return ColorOfRgb(Image.pixel(X, Y)); }));
        }
    }
    clsDIB Dib;
    EXPECT_EQ(Dib.BPPperActualPic(StdPicture()), -1);
    EXPECT_FALSE(Dib.CreateDIBFromPic(StdPicture(), false));
    EXPECT_EQ(Dib.DIBhDC(), nullptr);
}

TEST(clsDIBTransfer, FillDIBFromPicAndTileDIBPaintThePicture)
{
    const StdPicture Picture = MakePicture(24, 5, 3, 40), Tile = MakePicture(32, 2, 3, 41);
    clsDIB Dib, Target, Caller;
    ASSERT_TRUE(Dib.CreateBlankDIB(6, 4, 32, 0x00808080, false));
    ASSERT_TRUE(Dib.FillDIBFromPic(Picture));
    EXPECT_EQ(Colors(Dib.DIBhDC()), Grid(6, 4, [&](int X, int Y) {
                  return (X < 5 && Y < 3) ? ColorOfRgb(Picture.Image().pixel(X, Y)) : 0x00808080u;
              }));
    // Tiles from the top left, cut by the target's edges.
    ASSERT_TRUE(Target.CreateBlankDIB(5, 7, 32, 0, false));
    Caller.TileDIB(Target, Tile);
    EXPECT_EQ(Colors(Target.DIBhDC()),
              Grid(5, 7, [&](int X, int Y) { return ColorOfRgb(Tile.Image().pixel(X % 2, Y % 3)); }));
}

TEST(clsDIBTransfer, ColorBackGroundDIBStoresTheColourOnTheCaller)
{
    clsDIB Caller, Target;
    ASSERT_TRUE(Caller.CreateBlankDIB(2, 2, 32, 0x00010101, false));
    ASSERT_TRUE(Target.CreateBlankDIB(3, 2, 32, 0x00020202, false));
    Caller.ColorBackGroundDIB(Target, 0x00563412);
    EXPECT_EQ(StorageQuads(Target), std::vector<uint32_t>(6, Quad(0x56, 0x34, 0x12, 0)));
    EXPECT_EQ(Caller.DIBBackColor(), 0x00563412u);
    EXPECT_EQ(Target.DIBBackColor(), 0x00020202u);
    EXPECT_EQ(Caller.DIBhDC()->GetPixel(0, 0), 0x00010101u);  // the caller's own pixels are not touched
}
