// The picture loader on the BMP suite and the collections of broken bitmaps: good files at
// their depth with the pixels of the suite's own reference renderings, broken files
// refused, odd files loaded or refused but never a crash.
#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <set>

#include "TestImages.h"
#include "basPicture.h"

using namespace TestImages;

namespace {

// Compares the colours (and, where asked, the alpha) of two images of one size. Pixels the
// reference shows fully transparent are compared by alpha only.
std::string Differences(const QImage& Actual, const QImage& Reference, bool WithAlpha)
{
    if (Actual.size() != Reference.size())
        return "size differs";
    int Count = 0;
    std::string First;
    for (int Y = 0; Y < Reference.height(); ++Y)
        for (int X = 0; X < Reference.width(); ++X) {
            const QRgb A = Actual.pixel(X, Y), R = Reference.pixel(X, Y);
            const bool Same = WithAlpha ? (qAlpha(A) == qAlpha(R) && (qAlpha(R) == 0 || (A & 0xFFFFFF) == (R & 0xFFFFFF)))
                                        : (A & 0xFFFFFF) == (R & 0xFFFFFF);
            if (!Same && Count++ == 0)
                First = QStringLiteral("first at %1,%2: %3 instead of %4")
                            .arg(X)
                            .arg(Y)
                            .arg(A, 8, 16, QLatin1Char('0'))
                            .arg(R, 8, 16, QLatin1Char('0'))
                            .toStdString();
        }
    return Count ? std::to_string(Count) + " pixels differ, " + First : std::string();
}

} // namespace

class BmpSuiteGoodFile : public testing::TestWithParam<SuiteFile> {};

TEST_P(BmpSuiteGoodFile, LoadsAtItsDepthWithTheReferencePixels)
{
    const SuiteFile& F = GetParam();
    const QImage Reference = LoadReference(TestData(QStringLiteral("bmpsuite/html/%1.png").arg(F.Reference)));
    ASSERT_FALSE(Reference.isNull());
    StdPicture Picture;
    ASSERT_TRUE(basPicture::LoadPicture(TestData(QStringLiteral("bmpsuite/g/%1.bmp").arg(F.Name)), Picture));
    EXPECT_TRUE(Picture.IsBitmap());
    EXPECT_EQ(Picture.Bpp(), F.Depth);
    ASSERT_EQ(Picture.Width(), Reference.width());
    ASSERT_EQ(Picture.Height(), Reference.height());
    const QImage::Format Expected = F.Depth == 1   ? QImage::Format_Mono
                                    : F.Depth <= 8 ? QImage::Format_Indexed8
                                    : F.Depth == 24 ? QImage::Format_BGR888
                                                    : QImage::Format_ARGB32;
    EXPECT_EQ(Picture.Image().format(), Expected);
    if (F.Depth == 4) {
        EXPECT_LE(Picture.Image().colorCount(), 16);
    }
    EXPECT_EQ(Differences(Picture.Image(), Reference, false), "");
}

TEST_P(BmpSuiteGoodFile, HeaderIsReadAsTheFileSaysIt)
{
    const SuiteFile& F = GetParam();
    const QByteArray Bytes = ReadBytes(TestData(QStringLiteral("bmpsuite/g/%1.bmp").arg(F.Name)));
    ASSERT_GT(Bytes.size(), 54);
    const basPicture::BmpHeaderInfo Info = basPicture::ReadBmpHeader(Bytes);
    const int32_t Height = int32_t(Le32(Bytes, 22));
    EXPECT_TRUE(Info.Valid);
    EXPECT_EQ(Info.Width, int32_t(Le32(Bytes, 18)));
    EXPECT_EQ(Info.Height, Height < 0 ? -Height : Height);
    EXPECT_EQ(Info.TopDown, Height < 0);
    EXPECT_EQ(Info.BitCount, Le16(Bytes, 28));
    EXPECT_EQ(Info.Compression, Le32(Bytes, 30));
    EXPECT_EQ(Info.HeaderSize, Le32(Bytes, 14));
    EXPECT_EQ(Info.OffBits, Le32(Bytes, 10));
    EXPECT_EQ(Info.AlphaMask, 0u);
    EXPECT_EQ(basPicture::PictureDepthForBmp(Info), F.Depth);
}

INSTANTIATE_TEST_SUITE_P(g, BmpSuiteGoodFile, testing::ValuesIn(BmpSuiteGood),
                         [](const testing::TestParamInfo<SuiteFile>& Info) { return SafeTestName(QString::fromLatin1(Info.param.Name)); });

TEST(basPicture, EveryGoodFileOfTheSuiteIsChecked)
{
    std::set<QString> Listed, Present;
    for (const SuiteFile& F : BmpSuiteGood)
        Listed.insert(QString::fromLatin1(F.Name) + QStringLiteral(".bmp"));
    for (const QString& Name : QDir(TestData(QStringLiteral("bmpsuite/g"))).entryList({QStringLiteral("*.bmp")}))
        Present.insert(Name);
    EXPECT_EQ(Listed, Present);
}

TEST(basPicture, DepthPolicyFollowsTheHeader)
{
    struct Case {
        uint16_t BitCount;
        uint32_t AlphaMask;
        int Depth;
    };
    for (const Case& C : {Case{1, 0, 1}, Case{4, 0, 4}, Case{8, 0, 8}, Case{16, 0, 24},
                          Case{16, 0xF000, 32}, Case{16, 0x8000, 32}, Case{24, 0, 24}, Case{32, 0, 32},
                          Case{32, 0xFF000000, 32}}) {
        basPicture::BmpHeaderInfo Info;
        Info.Valid = true;
        Info.Width = 4;
        Info.Height = 4;
        Info.BitCount = C.BitCount;
        Info.Compression = C.AlphaMask ? 3 : 0;
        Info.HeaderSize = C.AlphaMask ? 124 : 40;
        Info.AlphaMask = C.AlphaMask;
        EXPECT_EQ(basPicture::PictureDepthForBmp(Info), C.Depth) << C.BitCount << " bits, alpha " << C.AlphaMask;
    }
    // Two bits a pixel is a handheld format and not a picture depth: such files are refused.
    EXPECT_FALSE(basPicture::ReadBmpHeader(ReadBytes(TestData("bmpsuite/q/pal2.bmp"))).Valid);

    // Alpha masks as the files give them: in a V5 header, and after a 40-byte header.
    const std::pair<const char*, uint32_t> Files[] = {{"bmpsuite/q/rgba32-1.bmp", 0xFF000000u},
                                                     {"bmpsuite/q/rgba16-4444.bmp", 0xF000u},
                                                     {"bmpsuite/q/rgba32abf.bmp", 0x00FF0000u},
                                                     {"bmpsuite/q/rgb32-xbgr.bmp", 0u}};
    for (const auto& [Path, Mask] : Files)
        EXPECT_EQ(basPicture::ReadBmpHeader(ReadBytes(TestData(QString::fromLatin1(Path)))).AlphaMask, Mask) << Path;
}

// Questionable files with a reference rendering: they may be refused, but a file that
// loads must load right.
struct OddFile {
    const char* Path;
    const char* Reference;
    int Depth;
    bool WithAlpha;
};
void PrintTo(const OddFile& File, std::ostream* Out) { *Out << File.Path; }

class BmpSuiteOddFile : public testing::TestWithParam<OddFile> {};

TEST_P(BmpSuiteOddFile, LoadsRightOrNotAtAll)
{
    const OddFile& F = GetParam();
    StdPicture Picture;
    if (!basPicture::LoadPicture(TestData(QString::fromLatin1(F.Path)), Picture)) {
        RecordProperty("refused", F.Path);
        return;
    }
    EXPECT_EQ(Picture.Bpp(), F.Depth);
    const QImage Reference = LoadReference(TestData(QStringLiteral("bmpsuite/html/%1.png").arg(F.Reference)));
    EXPECT_EQ(Differences(Picture.Image(), Reference, F.WithAlpha), "");
}

const OddFile OddFiles[] = {
    {"bmpsuite/q/pal8offs.bmp", "pal8", 8, false},
    {"bmpsuite/q/pal8os2-sz.bmp", "pal8", 8, false},
    {"bmpsuite/q/pal8os2sp.bmp", "pal8", 8, false},
    {"bmpsuite/q/pal8os2v2.bmp", "pal8", 8, false},
    {"bmpsuite/q/pal8os2v2-40sz.bmp", "pal8", 8, false},
    {"bmpsuite/q/pal8os2v2-sz.bmp", "pal8", 8, false},
    {"bmpsuite/q/pal8oversizepal.bmp", "pal8", 8, false},
    {"bmpsuite/q/rgb24largepal.bmp", "rgb24", 24, false},
    {"bmpsuite/q/rgb24prof.bmp", "rgb24", 24, false},
    {"bmpsuite/q/rgb32-xbgr.bmp", "rgb24", 32, false},
    {"bmpsuite/q/rgb32h52.bmp", "rgb24", 32, false},
    {"bmpsuite/q/rgb32fakealpha.bmp", "rgb24", 32, false},
    {"bmpsuite/q/rgb16-231.bmp", "rgb16-231", 24, false},
    {"bmpsuite/q/rgba16-4444.bmp", "rgba16-4444", 32, true},
    {"bmpsuite/q/rgba32-1.bmp", "rgba32", 32, true},
    {"bmpsuite/q/rgba32h56.bmp", "rgba32", 32, true},
    {"bmpsuite/q/rgba32abf.bmp", "rgba32", 32, true},
};

INSTANTIATE_TEST_SUITE_P(q, BmpSuiteOddFile, testing::ValuesIn(OddFiles),
                         [](const testing::TestParamInfo<OddFile>& Info) { return SafeTestName(QFileInfo(QString::fromLatin1(Info.param.Path)).completeBaseName()); });

// Files with odd header fields but plain pixels, and no reference rendering of their own:
// ImageMagick decodes them, and a file the loader takes must show the same colours.
struct MagickFile {
    const char* Path;
    int Depth;
};
void PrintTo(const MagickFile& File, std::ostream* Out) { *Out << File.Path; }

class MagickCheckedFile : public testing::TestWithParam<MagickFile> {};

TEST_P(MagickCheckedFile, LoadsLikeImageMagickOrNotAtAll)
{
    const QString Path = TestData(QString::fromLatin1(GetParam().Path));
    int W = 0, H = 0;
    QByteArray Rgba;
    QString Error;
    ASSERT_TRUE(MagickRgba(Path, W, H, Rgba, Error)) << Error.toStdString();
    StdPicture Picture;
    if (!basPicture::LoadPicture(Path, Picture)) {
        RecordProperty("refused", GetParam().Path);
        return;
    }
    EXPECT_EQ(Picture.Bpp(), GetParam().Depth);
    QImage Reference(W, H, QImage::Format_ARGB32);
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X) {
            const auto* P = reinterpret_cast<const uint8_t*>(Rgba.constData()) + (Y * W + X) * 4;
            Reference.setPixel(X, Y, qRgba(P[0], P[1], P[2], 255));
        }
    EXPECT_EQ(Differences(Picture.Image(), Reference, false), "");
}

const MagickFile MagickFiles[] = {
    {"bmpsuite/b/baddens1.bmp", 1},
    {"bmp-extra/gfxprim-questionable/filesize-bad.bmp", 1},
    {"bmp-extra/gfxprim-questionable/filesize-zero.bmp", 1},
    {"bmp-extra/gfxprim-questionable/reserved1-bad.bmp", 1},
    {"bmp-extra/gfxprim-questionable/reserved2-bad.bmp", 1},
    {"bmp-extra/gfxprim-questionable/pixeldata-toomuch.bmp", 1},
    {"bmp-extra/gfxprim-questionable/pels-per-meter-x-negative.bmp", 8},
    {"bmp-extra/gfxprim-questionable/pels-per-meter-x-zero.bmp", 8},
    {"bmp-extra/gfxprim-questionable/pels-per-meter-y-large.bmp", 8},
    {"bmp-extra/gfxprim-questionable/pels-per-meter-y-zero.bmp", 8},
    {"bmp-extra/gfxprim-questionable/rle4-no-end-of-bitmap-marker.bmp", 4},
    {"bmp-extra/gfxprim-questionable/rle8-no-end-of-bitmap-marker.bmp", 8},
};

INSTANTIATE_TEST_SUITE_P(Odd, MagickCheckedFile, testing::ValuesIn(MagickFiles),
                         [](const testing::TestParamInfo<MagickFile>& Info) {
                             return SafeTestName(QFileInfo(QString::fromLatin1(Info.param.Path)).completeBaseName());
                         });
