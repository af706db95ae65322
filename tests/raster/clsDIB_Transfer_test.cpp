// Transfers between surfaces and pictures: CloneDIB, PaintFromDIBtoDIB, the stretching
// member, CreateDIBFromPic, FillDIBFromPic, TileDIB and ColorBackGroundDIB.
#include <gtest/gtest.h>

#include "StdPicture.h"
#include "TestImages.h"
#include "clsDIB.h"

using namespace TestImages;

namespace {

// A picture of the given depth, 5 by 3, whose pixels come from Seed. Indexed pictures get
// a table of distinct colours.
StdPicture MakePicture(int Bpp, uint32_t Seed)
{
    const int W = 5, H = 3;
    const std::vector<uint32_t> R = RandomWords(64, Seed);
    QImage Image;
    if (Bpp <= 8) {
        Image = QImage(W, H, Bpp == 1 ? QImage::Format_Mono : QImage::Format_Indexed8);
        QList<QRgb> Table;
        for (int I = 0; I < (1 << Bpp); ++I)
            Table.append(qRgb(I * 7 % 256, (I * 13 + 50) % 256, 255 - I));
        Image.setColorTable(Table);
        for (int Y = 0; Y < H; ++Y)
            for (int X = 0; X < W; ++X)
                Image.setPixel(X, Y, R[Y * W + X] % (1u << Bpp));
    } else {
        Image = QImage(W, H, Bpp == 24 ? QImage::Format_BGR888 : QImage::Format_ARGB32);
        for (int Y = 0; Y < H; ++Y)
            for (int X = 0; X < W; ++X)
                Image.setPixel(X, Y, R[Y * W + X] | 0xFF000000u);
    }
    return StdPicture(Image, Bpp);
}

uint32_t PictureColor(const StdPicture& Picture, int X, int Y)
{
    return ColorOfRgb(Picture.Image().pixel(X, Y));
}

} // namespace

TEST(clsDIBTransfer, CloneCopiesBytesAndTableButNotTheAlphaFlag)
{
    clsDIB Source, Target, Caller;
    MakeDIB32(Source, 3, 2, RandomWords(6, 1));
    Source.setDIBhasAlpha(true);
    ASSERT_TRUE(Target.CreateBlankDIB(7, 7, 8, 0, false));  // replaced by the clone
    Caller.CloneDIB(Source, Target, 0x00ABCDEF, false);
    EXPECT_EQ(Target.DIBWidth(), 3);
    EXPECT_EQ(Target.DIBHeight(), 2);
    EXPECT_EQ(Target.DIBbpp(), 32);
    EXPECT_EQ(Target.DIBBackColor(), 0x00ABCDEFu);
    EXPECT_FALSE(Target.DIBhasAlpha());
    EXPECT_EQ(StorageQuads(Target), StorageQuads(Source));  // alpha bytes included

    // A top-down clone takes the same block of bytes, so its picture is upside down.
    clsDIB Flipped;
    Caller.CloneDIB(Source, Flipped, 0, true);
    EXPECT_EQ(Flipped.Header().biHeight, -2);
    EXPECT_EQ(StorageQuads(Flipped), StorageQuads(Source));
    EXPECT_EQ(Flipped.DIBhDC()->GetPixel(1, 0), Source.DIBhDC()->GetPixel(1, 1));

    for (int16_t Bpp : {int16_t(1), int16_t(4), int16_t(8)}) {
        SCOPED_TRACE(testing::Message() << Bpp << " bits");
        clsDIB Shallow, Copy;
        ASSERT_TRUE(Shallow.CreateBlankDIB(9, 4, Bpp, 0x00FFFFFF, false));
        std::vector<uint8_t> Table(size_t(4) << Bpp);
        for (size_t I = 0; I < Table.size(); ++I)
            Table[I] = (I % 4 == 3) ? 0 : uint8_t(I * 31 + 5);
        Shallow.SetPaletteToDIB8BPP(Table);
        const std::vector<uint32_t> Bytes = RandomWords(size_t(Shallow.DIBSize()), 3);
        for (int I = 0; I < Shallow.DIBSize(); ++I)
            Shallow.DIBBitsPtr()[I] = uint8_t(Bytes[I]);
        Caller.CloneDIB(Shallow, Copy, 0, false);
        EXPECT_EQ(Copy.DIBbpp(), Bpp);
        EXPECT_EQ(Copy.Header().biBitCount, Bpp);
        ASSERT_EQ(Copy.DIBSize(), Shallow.DIBSize());
        EXPECT_TRUE(std::equal(Copy.DIBBitsPtr(), Copy.DIBBitsPtr() + Copy.DIBSize(), Shallow.DIBBitsPtr()));
        std::vector<uint8_t> CopyTable;
        Copy.GetPaletteFromDIB8BPP(CopyTable);
        EXPECT_EQ(CopyTable, Table);
    }
}

TEST(clsDIBTransfer, CloneOfATrue24BitSurfaceKeepsItsPicture)
{
    // A 24-bit file gives memory of three bytes a pixel; its clone holds four and reports 24.
    clsDIB Source, Target, Caller;
    ASSERT_TRUE(Source.CreateBlankDIB(3, 2, 24, 0, false, false));
    const uint32_t Colors[2][3] = {{0x010203, 0xA0B0C0, 0x00FF00}, {0x123456, 0xFFFFFF, 0x000080}};
    for (int Y = 0; Y < 2; ++Y)
        for (int X = 0; X < 3; ++X)
            Source.DIBhDC()->SetPixelV(X, Y, Colors[Y][X]);
    Caller.CloneDIB(Source, Target, 0, false);
    EXPECT_EQ(Target.DIBbpp(), 24);
    EXPECT_EQ(Target.StorageBpp(), 32);
    for (int Y = 0; Y < 2; ++Y)
        for (int X = 0; X < 3; ++X)
            EXPECT_EQ(Target.DIBhDC()->GetPixel(X, Y), Colors[Y][X]) << X << "," << Y;
}

TEST(clsDIBTransfer, PaintFromDIBtoDIBCopiesTheClippedBlock)
{
    struct Case {
        int X, Y, Width, Height, SrcX, SrcY;
    };
    const Case Cases[] = {{1, 1, 0, 0, 0, 0},  {0, 0, 2, 1, 1, 1},  {4, 3, 0, 0, 0, 0},
                          {-1, -1, 0, -5, 0, 0}, {2, 0, 3, 2, 0, 0}, {0, 2, 1, 1, 2, 1}};
    clsDIB Source, Caller;
    const std::vector<uint32_t> S = RandomWords(6, 11);
    MakeDIB32(Source, 3, 2, S);
    for (const Case& C : Cases) {
        SCOPED_TRACE(testing::Message() << "at " << C.X << "," << C.Y << " size " << C.Width << "x" << C.Height
                                        << " from " << C.SrcX << "," << C.SrcY);
        clsDIB Target;
        const std::vector<uint32_t> T = RandomWords(20, 12);
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
    for (int Y = 0; Y < 4; ++Y)
        for (int X = 0; X < 6; ++X)
            EXPECT_EQ(Target.DIBhDC()->GetPixel(X, Y), ColorOfQuad(S[(Y / 2) * 3 + X / 2])) << X << "," << Y;
    EXPECT_EQ(GetStretchBltMode(Target.DIBhDC()), BLACKONWHITE);
}

TEST(clsDIBTransfer, CreateDIBFromPicKeepsDepthTableAndPixels)
{
    for (int Bpp : {1, 4, 8, 24, 32}) {
        for (bool Force32 : {false, true}) {
            SCOPED_TRACE(testing::Message() << "picture of " << Bpp << " bits, Force32 " << Force32);
            const StdPicture Picture = MakePicture(Bpp, uint32_t(Bpp));
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
                std::vector<uint32_t> Table;
                for (QRgb C : Picture.Image().colorTable())
                    Table.push_back(ColorOfRgb(C));
                EXPECT_EQ(TableColors(Dib), Table);
            }
            for (int Y = 0; Y < 3; ++Y)
                for (int X = 0; X < 5; ++X)
                    EXPECT_EQ(StoredColor(Dib, X, 2 - Y), PictureColor(Picture, X, Y)) << X << "," << Y;
        }
    }
    clsDIB Dib;
    EXPECT_EQ(Dib.BPPperActualPic(StdPicture()), -1);
    EXPECT_FALSE(Dib.CreateDIBFromPic(StdPicture(), false));
    EXPECT_EQ(Dib.DIBhDC(), nullptr);
}

TEST(clsDIBTransfer, FillDIBFromPicAndTileDIBPaintThePicture)
{
    const StdPicture Picture = MakePicture(24, 40);
    clsDIB Dib;
    ASSERT_TRUE(Dib.CreateBlankDIB(6, 4, 32, 0x00808080, false));
    ASSERT_TRUE(Dib.FillDIBFromPic(Picture));
    for (int Y = 0; Y < 4; ++Y)
        for (int X = 0; X < 6; ++X)
            EXPECT_EQ(Dib.DIBhDC()->GetPixel(X, Y), (X < 5 && Y < 3) ? PictureColor(Picture, X, Y) : 0x00808080u);

    // Tiles from the top left, cut by the target's edges.
    QImage TileImage(2, 3, QImage::Format_ARGB32);
    const std::vector<uint32_t> R = RandomWords(6, 41);
    for (int I = 0; I < 6; ++I)
        TileImage.setPixel(I % 2, I / 2, R[I] | 0xFF000000u);
    const StdPicture Tile(TileImage, 32);
    clsDIB Target, Caller;
    ASSERT_TRUE(Target.CreateBlankDIB(5, 7, 32, 0, false));
    Caller.TileDIB(Target, Tile);
    for (int Y = 0; Y < 7; ++Y)
        for (int X = 0; X < 5; ++X)
            EXPECT_EQ(Target.DIBhDC()->GetPixel(X, Y), ColorOfRgb(TileImage.pixel(X % 2, Y % 3))) << X << "," << Y;
}

TEST(clsDIBTransfer, ColorBackGroundDIBStoresTheColourOnTheCaller)
{
    clsDIB Caller, Target;
    ASSERT_TRUE(Caller.CreateBlankDIB(2, 2, 32, 0x00010101, false));
    ASSERT_TRUE(Target.CreateBlankDIB(3, 2, 32, 0x00020202, false));
    Caller.ColorBackGroundDIB(Target, 0x00563412);
    for (uint32_t Q : StorageQuads(Target))
        EXPECT_EQ(Q, Quad(0x56, 0x34, 0x12, 0));
    EXPECT_EQ(Caller.DIBBackColor(), 0x00563412u);
    EXPECT_EQ(Target.DIBBackColor(), 0x00020202u);
    // The caller's own pixels are not touched.
    EXPECT_EQ(Caller.DIBhDC()->GetPixel(0, 0), 0x00010101u);
}
