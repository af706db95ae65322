// The picture loader on the BMP suite: good files at their depth with the pixels of the
// suite's own reference renderings, the depth policy, and questionable files that load
// right or not at all.
#include <gtest/gtest.h>

#include <QDir>
#include <set>

#include "TestImages.h"
#include "basPicture.h"

using namespace TestImages;

namespace {

std::string ReferenceDifferences(const StdPicture& Picture, const char* Reference, bool WithAlpha = false)
{
    const QImage& Image = Picture.Image();
    return TestImages::ReferenceDifferences(Reference, Image.width(), Image.height(),
                                            [&](int X, int Y) { return Image.pixel(X, Y); }, WithAlpha);
}

} // namespace

class BmpSuiteGoodFile : public testing::TestWithParam<SuiteFile> {};

TEST_P(BmpSuiteGoodFile, LoadsAtItsDepthWithTheReferencePixels)
{
    const SuiteFile& F = GetParam();
    const QString Path = TestData(QStringLiteral("bmpsuite/g/%1.bmp").arg(F.Name));
    StdPicture Picture;
    ASSERT_TRUE(basPicture::LoadPicture(Path, Picture));
    EXPECT_TRUE(Picture.IsBitmap());
    EXPECT_EQ(Picture.Bpp(), F.Depth);
    EXPECT_EQ(basPicture::PictureDepthForBmp(basPicture::ReadBmpHeader(ReadBytes(Path))), F.Depth);
    const QImage::Format Expected = F.Depth == 1    ? QImage::Format_Mono
                                    : F.Depth <= 8  ? QImage::Format_Indexed8
                                    : F.Depth == 24 ? QImage::Format_BGR888
                                                    : QImage::Format_ARGB32;
    EXPECT_EQ(Picture.Image().format(), Expected);
    EXPECT_LE(Picture.Image().colorCount(), F.Depth == 4 ? 16 : 256);
    EXPECT_EQ(ReferenceDifferences(Picture, F.Reference), "");
}

INSTANTIATE_TEST_SUITE_P(g, BmpSuiteGoodFile, testing::ValuesIn(BmpSuiteGood),
                         [](const testing::TestParamInfo<SuiteFile>& Info) {
                             return SafeTestName(QString::fromLatin1(Info.param.Name));
                         });

TEST(basPicture, EveryGoodFileOfTheSuiteIsChecked)
{
    std::set<QString> Listed, Present;
    for (const SuiteFile& F : BmpSuiteGood)
        Listed.insert(QString::fromLatin1(F.Name) + QStringLiteral(".bmp"));
    for (const QString& Name : QDir(TestData(QStringLiteral("bmpsuite/g"))).entryList({QStringLiteral("*.bmp")}))
        Present.insert(Name);
    EXPECT_EQ(Listed, Present);
}

TEST(basPicture, AlphaMasksMakeThirtyTwoBits)
{
    for (const auto& [BitCount, AlphaMask, Depth] :
         {std::tuple{16, 0u, 24}, {16, 0x8000u, 32}, {32, 0xFF000000u, 32}}) {
        basPicture::BmpHeaderInfo Info;
        Info.Valid = true;
        Info.Width = Info.Height = 4;
        Info.BitCount = uint16_t(BitCount);
        Info.Compression = AlphaMask ? 3 : 0;
        Info.HeaderSize = AlphaMask ? 124 : 40;
        Info.AlphaMask = AlphaMask;
        EXPECT_EQ(basPicture::PictureDepthForBmp(Info), Depth) << BitCount << " bits, alpha " << AlphaMask;
    }
    // Two bits a pixel is a handheld format and not a picture depth: such files are refused.
    EXPECT_FALSE(basPicture::ReadBmpHeader(ReadBytes(TestData("bmpsuite/q/pal2.bmp"))).Valid);
    // Alpha masks as the files give them: in a V5 header, and after a 40-byte header.
    for (const auto& [Name, Mask] : {std::pair{"rgba32-1", 0xFF000000u}, {"rgba16-4444", 0xF000u},
                                     {"rgba32abf", 0x00FF0000u}, {"rgb32-xbgr", 0u}}) {
        const QByteArray File = ReadBytes(TestData(QStringLiteral("bmpsuite/q/%1.bmp").arg(Name)));
        EXPECT_EQ(basPicture::ReadBmpHeader(File).AlphaMask, Mask) << Name;
    }
}

TEST(basPicture, QuestionableFilesLoadRightOrNotAtAll)
{
    const struct {
        const char* Reference;
        int Depth;
        bool WithAlpha;
        std::vector<const char*> Names;
    } Groups[] = {
        {"pal8", 8, false, {"pal8offs", "pal8os2-sz", "pal8os2sp", "pal8os2v2", "pal8os2v2-40sz", "pal8os2v2-sz",
                            "pal8oversizepal"}},
        {"rgb24", 24, false, {"rgb24largepal", "rgb24prof"}},
        {"rgb24", 32, false, {"rgb32-xbgr", "rgb32h52", "rgb32fakealpha"}},
        {"rgb16-231", 24, false, {"rgb16-231"}},
        {"rgba16-4444", 32, true, {"rgba16-4444"}},
        {"rgba32", 32, true, {"rgba32-1", "rgba32h56", "rgba32abf"}},
    };
    int Loaded = 0;
    for (const auto& G : Groups)
        for (const char* Name : G.Names) {
            StdPicture Picture;
            if (!basPicture::LoadPicture(TestData(QStringLiteral("bmpsuite/q/%1.bmp").arg(Name)), Picture))
                continue;
            ++Loaded;
            EXPECT_EQ(Picture.Bpp(), G.Depth) << Name;
            EXPECT_EQ(ReferenceDifferences(Picture, G.Reference, G.WithAlpha), "") << Name;
        }
    EXPECT_GT(Loaded, 0);
}
