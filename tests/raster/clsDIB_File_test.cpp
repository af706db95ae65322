// CreateDIBFromFile on the good files of the BMP suite: a bottom-up surface of the file's
// depth whose image rows match the suite's reference rendering, turned upside down in place
// when FlipIfOpaque asks for it and the picture has no alpha.
#include <gtest/gtest.h>

#include "TestImages.h"
#include "clsDIB.h"

using namespace TestImages;

class CreateDIBFromSuiteFile : public testing::TestWithParam<SuiteFile> {};

TEST_P(CreateDIBFromSuiteFile, GivesABottomUpSurfaceOfTheFilesDepth)
{
    const SuiteFile& F = GetParam();
    for (bool Flip : {false, true}) {
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateDIBFromFile(TestData(QStringLiteral("bmpsuite/g/%1.bmp").arg(F.Name)), Flip));
        const int W = Dib.DIBWidth(), H = Dib.DIBHeight(), Stride = StrideOf(W, F.Depth);
        EXPECT_EQ(Shape(Dib), (std::vector<int64_t>{W, H, F.Depth, F.Depth, Stride, Stride * H, H, false}));
        EXPECT_EQ(Dib.Header().biSize, 40);
        EXPECT_EQ(Dib.Header().biWidth, W);
        // The context reads the rows bottom-up, so a flipped surface shows upside down.
        const auto PixelAt = [&](int X, int Y) { return RgbOfColor(Dib.DIBhDC()->GetPixel(X, Flip ? H - 1 - Y : Y)); };
        EXPECT_EQ(ReferenceDifferences(F.Reference, W, H, PixelAt), "") << "FlipIfOpaque " << Flip;
    }
}

INSTANTIATE_TEST_SUITE_P(g, CreateDIBFromSuiteFile, testing::ValuesIn(BmpSuiteGood),
                         [](const testing::TestParamInfo<SuiteFile>& Info) {
                             return SafeTestName(QString::fromLatin1(Info.param.Name));
                         });

TEST(clsDIBFile, AnyAlphaByteSetsTheFlagAndStopsTheFlip)
{
    const QString Path = TestData(QStringLiteral("bmpsuite/q/rgb32fakealpha.bmp"));
    const QByteArray File = ReadBytes(Path);
    for (bool Flip : {false, true}) {
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateDIBFromFile(Path, Flip));
        EXPECT_TRUE(Dib.DIBhasAlpha());
        EXPECT_EQ(Dib.DIBbpp(), 32);
        const auto PixelAt = [&](int X, int Y) { return RgbOfColor(Dib.DIBhDC()->GetPixel(X, Y)); };
        const int W = Dib.DIBWidth(), Offset = uint8_t(File[10]) | (uint8_t(File[11]) << 8);
        EXPECT_EQ(ReferenceDifferences("rgb24", W, Dib.DIBHeight(), PixelAt), "") << "FlipIfOpaque " << Flip;
        // The alpha bytes are the file's own, row for row (the file is bottom-up too).
        int Wrong = 0;
        for (int I = 0; I < W * Dib.DIBHeight(); ++I)
            Wrong += QA(GetQuad(Dib, I % W, I / W)) != uint8_t(File[Offset + I * 4 + 3]);
        EXPECT_EQ(Wrong, 0);
    }
    clsDIB Opaque;
    ASSERT_TRUE(Opaque.CreateDIBFromFile(TestData(QStringLiteral("bmpsuite/g/rgb32.bmp")), false));
    EXPECT_FALSE(Opaque.DIBhasAlpha());
}
