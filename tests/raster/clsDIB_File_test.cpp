// CreateDIBFromFile on the good files of the BMP suite: a bottom-up surface of the file's
// depth whose image rows match the suite's reference rendering, turned upside down in place
// when FlipIfOpaque asks for it and the picture has no alpha.
#include <gtest/gtest.h>

#include "TestImages.h"
#include "clsDIB.h"

using namespace TestImages;

namespace {

// Counts pixels whose colour differs, with storage row Row(y) standing for image row y.
template <class RowOf>
std::string Differences(const clsDIB& Dib, const QImage& Reference, RowOf Row)
{
    int Count = 0;
    std::string First;
    for (int Y = 0; Y < Reference.height(); ++Y)
        for (int X = 0; X < Reference.width(); ++X) {
            const uint32_t Actual = StoredColor(Dib, X, Row(Y)), Expected = ColorOfRgb(Reference.pixel(X, Y));
            if (Actual != Expected && Count++ == 0)
                First = QStringLiteral("first at %1,%2: %3 instead of %4")
                            .arg(X)
                            .arg(Y)
                            .arg(Actual, 6, 16, QLatin1Char('0'))
                            .arg(Expected, 6, 16, QLatin1Char('0'))
                            .toStdString();
        }
    return Count ? std::to_string(Count) + " pixels differ, " + First : std::string();
}

} // namespace

class CreateDIBFromSuiteFile : public testing::TestWithParam<SuiteFile> {};

TEST_P(CreateDIBFromSuiteFile, GivesABottomUpSurfaceOfTheFilesDepth)
{
    const SuiteFile& F = GetParam();
    const QString Path = TestData(QStringLiteral("bmpsuite/g/%1.bmp").arg(F.Name));
    const QImage Reference = LoadReference(TestData(QStringLiteral("bmpsuite/html/%1.png").arg(F.Reference)));
    ASSERT_FALSE(Reference.isNull());
    const int W = Reference.width(), H = Reference.height();
    for (bool Flip : {false, true}) {
        SCOPED_TRACE(testing::Message() << "FlipIfOpaque " << Flip);
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateDIBFromFile(Path, Flip));
        EXPECT_EQ(Dib.DIBWidth(), W);
        EXPECT_EQ(Dib.DIBHeight(), H);
        EXPECT_EQ(Dib.DIBbpp(), F.Depth);
        EXPECT_EQ(Dib.Header().biSize, 40);
        EXPECT_EQ(Dib.Header().biWidth, W);
        EXPECT_EQ(Dib.Header().biHeight, H);
        EXPECT_EQ(Dib.Header().biPlanes, 1);
        EXPECT_EQ(Dib.Header().biBitCount, F.Depth);
        EXPECT_EQ(Dib.BytesPerScanline(), StrideOf(W, F.Depth));
        EXPECT_EQ(Dib.DIBSize(), StrideOf(W, F.Depth) * H);
        EXPECT_FALSE(Dib.DIBhasAlpha());
        ASSERT_NE(Dib.DIBhDC(), nullptr);
        const auto Row = [Flip, H](int Y) { return Flip ? Y : H - 1 - Y; };
        EXPECT_EQ(Differences(Dib, Reference, Row), "");
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
    const QImage Reference = LoadReference(TestData(QStringLiteral("bmpsuite/html/rgb24.png")));
    for (bool Flip : {false, true}) {
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateDIBFromFile(Path, Flip));
        EXPECT_TRUE(Dib.DIBhasAlpha());
        EXPECT_EQ(Dib.DIBbpp(), 32);
        const int H = Dib.DIBHeight();
        EXPECT_EQ(Differences(Dib, Reference, [H](int Y) { return H - 1 - Y; }), "") << "FlipIfOpaque " << Flip;
        // The alpha bytes are the file's own, row for row (the file is bottom-up too).
        const int Offset = int(Le32(File, 10));
        int Wrong = 0;
        for (int R = 0; R < H; ++R)
            for (int X = 0; X < Dib.DIBWidth(); ++X)
                Wrong += QA(GetQuad(Dib, X, R)) != uint8_t(File[Offset + (R * Dib.DIBWidth() + X) * 4 + 3]);
        EXPECT_EQ(Wrong, 0);
    }
    clsDIB Opaque;
    ASSERT_TRUE(Opaque.CreateDIBFromFile(TestData(QStringLiteral("bmpsuite/g/rgb32.bmp")), false));
    EXPECT_FALSE(Opaque.DIBhasAlpha());
}
