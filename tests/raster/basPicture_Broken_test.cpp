// Broken and questionable bitmaps through the loader and CreateDIBFromFile. A file whose
// structure is wrong (bit count, header size, planes, sides, sizes beyond the limits,
// pixel data cut short, run-length data that overruns or runs top-down) is refused by
// both; any other odd file may load or be refused, the same by both, but never crashes.
#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <chrono>
#include <set>

#include "TestImages.h"
#include "basPicture.h"
#include "clsDIB.h"

using namespace TestImages;

namespace {

enum class Verdict { Refused, RefusedByHeader, Either };

struct BrokenFile {
    const char* Path;
    Verdict Expect;
};
void PrintTo(const BrokenFile& File, std::ostream* Out) { *Out << File.Path; }

constexpr Verdict R = Verdict::Refused, H = Verdict::RefusedByHeader, E = Verdict::Either;

const BrokenFile BrokenFiles[] = {
    {"bmpsuite/b/badbitcount.bmp", H}, {"bmpsuite/b/baddens1.bmp", E}, {"bmpsuite/b/badfilesize.bmp", E},
    {"bmpsuite/b/badheadersize.bmp", H}, {"bmpsuite/b/badpalettesize.bmp", E}, {"bmpsuite/b/badplanes.bmp", H},
    {"bmpsuite/b/badrle.bmp", R}, {"bmpsuite/b/badrle4.bmp", R}, {"bmpsuite/b/badrle4bis.bmp", R},
    {"bmpsuite/b/badrlebis.bmp", R}, {"bmpsuite/b/badwidth.bmp", H}, {"bmpsuite/b/reallybig.bmp", H},
    {"bmpsuite/b/rgb16-880.bmp", E}, {"bmpsuite/b/rletopdown.bmp", R}, {"bmpsuite/b/shortfile.bmp", H},

    {"bmp-extra/gfxprim-corrupt/1bpp-no-palette.bmp", E},
    {"bmp-extra/gfxprim-corrupt/1bpp-pixeldata-cropped.bmp", H},
    {"bmp-extra/gfxprim-corrupt/32bpp-pixeldata-cropped.bmp", H},
    {"bmp-extra/gfxprim-corrupt/4bpp-no-palette.bmp", E},
    {"bmp-extra/gfxprim-corrupt/4bpp-pixeldata-cropped.bmp", H},
    {"bmp-extra/gfxprim-corrupt/8bpp-colorsimportant-large.bmp", E},
    {"bmp-extra/gfxprim-corrupt/8bpp-colorsimportant-negative.bmp", E},
    {"bmp-extra/gfxprim-corrupt/8bpp-colorsused-large.bmp", E},
    {"bmp-extra/gfxprim-corrupt/8bpp-no-palette.bmp", E},
    {"bmp-extra/gfxprim-corrupt/8bpp-pixeldata-cropped.bmp", H},
    {"bmp-extra/gfxprim-corrupt/bitdepth-large.bmp", H},
    {"bmp-extra/gfxprim-corrupt/bitdepth-zero.bmp", H},
    {"bmp-extra/gfxprim-corrupt/colormasks-cropped.bmp", H},
    {"bmp-extra/gfxprim-corrupt/colormasks-missing.bmp", H},
    {"bmp-extra/gfxprim-corrupt/compression-bad-rle8-for-4bpp.bmp", E},
    {"bmp-extra/gfxprim-corrupt/compression-unknown.bmp", H},
    {"bmp-extra/gfxprim-corrupt/emptyfile.bmp", H},
    {"bmp-extra/gfxprim-corrupt/height-zero.bmp", H},
    {"bmp-extra/gfxprim-corrupt/infoheader-cropped.bmp", H},
    {"bmp-extra/gfxprim-corrupt/infoheader-missing.bmp", H},
    {"bmp-extra/gfxprim-corrupt/infoheadersize-small.bmp", H},
    {"bmp-extra/gfxprim-corrupt/infoheadersize-zero.bmp", H},
    {"bmp-extra/gfxprim-corrupt/magicnumber-bad.bmp", H},
    {"bmp-extra/gfxprim-corrupt/offbits-large.bmp", H},
    {"bmp-extra/gfxprim-corrupt/offbits-negative.bmp", H},
    {"bmp-extra/gfxprim-corrupt/offbits-zero.bmp", E},
    {"bmp-extra/gfxprim-corrupt/palette-missing.bmp", H},
    {"bmp-extra/gfxprim-corrupt/palette-too-big.bmp", E},
    {"bmp-extra/gfxprim-corrupt/pixeldata-missing.bmp", H},
    {"bmp-extra/gfxprim-corrupt/rle4-delta-cropped.bmp", R},
    {"bmp-extra/gfxprim-corrupt/rle4-no-end-of-line-marker.bmp", E},
    {"bmp-extra/gfxprim-corrupt/rle4-runlength-cropped.bmp", R},
    {"bmp-extra/gfxprim-corrupt/rle8-delta-cropped.bmp", R},
    {"bmp-extra/gfxprim-corrupt/rle8-deltaleavesimage.bmp", R},
    {"bmp-extra/gfxprim-corrupt/rle8-no-end-of-line-marker.bmp", E},
    {"bmp-extra/gfxprim-corrupt/width-negative.bmp", H},
    {"bmp-extra/gfxprim-corrupt/width-times-height-overflow.bmp", H},
    {"bmp-extra/gfxprim-corrupt/width-zero.bmp", H},

    {"bmp-extra/image-rs-bad/Bad_badbitcount.bmp", H}, {"bmp-extra/image-rs-bad/Bad_height.bmp", H},
    {"bmp-extra/image-rs-bad/Bad_reallybig.bmp", H}, {"bmp-extra/image-rs-bad/Bad_shortfile.bmp", H},
    {"bmp-extra/image-rs-bad/Bad_width.bmp", H},

    {"bmp-extra/image-rs-lenient/V5_A8_R8_G8_B8_Rgb_BadMask.bmp", E},
    {"bmp-extra/image-rs-lenient/rle_overflow.bmp", E},

    // Zero sides make no surface; a top-down run-length file is refused however common.
    {"bmp-extra/gfxprim-questionable/32bpp-0x0.bmp", H},
    {"bmp-extra/gfxprim-questionable/32bpp-0x240.bmp", H},
    {"bmp-extra/gfxprim-questionable/rle8-height-negative.bmp", R},
    {"bmp-extra/gfxprim-questionable/8bpp-pixels-not-in-palette.bmp", E},
    {"bmp-extra/gfxprim-questionable/filesize-bad.bmp", E},
    {"bmp-extra/gfxprim-questionable/filesize-zero.bmp", E},
    {"bmp-extra/gfxprim-questionable/pels-per-meter-x-negative.bmp", E},
    {"bmp-extra/gfxprim-questionable/pels-per-meter-x-zero.bmp", E},
    {"bmp-extra/gfxprim-questionable/pels-per-meter-y-large.bmp", E},
    {"bmp-extra/gfxprim-questionable/pels-per-meter-y-zero.bmp", E},
    {"bmp-extra/gfxprim-questionable/pixeldata-rle8-toomuch.bmp", E},
    {"bmp-extra/gfxprim-questionable/pixeldata-toomuch.bmp", E},
    {"bmp-extra/gfxprim-questionable/planes-zero.bmp", E},
    {"bmp-extra/gfxprim-questionable/reserved1-bad.bmp", E},
    {"bmp-extra/gfxprim-questionable/reserved2-bad.bmp", E},
    {"bmp-extra/gfxprim-questionable/rle4-no-end-of-bitmap-marker.bmp", E},
    {"bmp-extra/gfxprim-questionable/rle8-no-end-of-bitmap-marker.bmp", E},

    {"bmpsuite/q/pal1p1.bmp", E}, {"bmpsuite/q/pal2.bmp", E}, {"bmpsuite/q/pal4rlecut.bmp", E},
    {"bmpsuite/q/pal8offs.bmp", E}, {"bmpsuite/q/pal8os2-sz.bmp", E}, {"bmpsuite/q/pal8os2sp.bmp", E},
    {"bmpsuite/q/pal8os2v2-40sz.bmp", E}, {"bmpsuite/q/pal8os2v2-sz.bmp", E}, {"bmpsuite/q/pal8os2v2.bmp", E},
    {"bmpsuite/q/pal8oversizepal.bmp", E}, {"bmpsuite/q/pal8rletrns.bmp", E}, {"bmpsuite/q/rgb16-231.bmp", E},
    {"bmpsuite/q/rgb16faketrns.bmp", E}, {"bmpsuite/q/rgb24jpeg.bmp", E}, {"bmpsuite/q/rgb24largepal.bmp", E},
    {"bmpsuite/q/rgb24prof.bmp", E}, {"bmpsuite/q/rgb24prof2.bmp", E}, {"bmpsuite/q/rgb24rle24.bmp", E},
    {"bmpsuite/q/rgb32-7187.bmp", E}, {"bmpsuite/q/rgb32-xbgr.bmp", E}, {"bmpsuite/q/rgb32fakealpha.bmp", E},
    {"bmpsuite/q/rgb32h52.bmp", E}, {"bmpsuite/q/rgba16-1924.bmp", E}, {"bmpsuite/q/rgba16-4444.bmp", E},
    {"bmpsuite/q/rgba32-1.bmp", E}, {"bmpsuite/q/rgba32-1010102.bmp", E}, {"bmpsuite/q/rgba32-61754.bmp", E},
    {"bmpsuite/q/rgba32-81284.bmp", E}, {"bmpsuite/q/rgba32abf.bmp", E}, {"bmpsuite/q/rgba32h56.bmp", E},
    {"bmpsuite/q/rgba64.bmp", E}, {"bmpsuite/x/ba-bm.bmp", E},
};

class BrokenBitmap : public testing::TestWithParam<BrokenFile> {};

} // namespace

TEST_P(BrokenBitmap, IsRefusedOrLoadsWithoutHarm)
{
    const BrokenFile& F = GetParam();
    const QString Path = TestData(QString::fromLatin1(F.Path));
    ASSERT_TRUE(QFileInfo::exists(Path));
    const auto Start = std::chrono::steady_clock::now();
    StdPicture Picture;
    const bool Loaded = basPicture::LoadPicture(Path, Picture);
    clsDIB Dib;
    const bool Made = Dib.CreateDIBFromFile(Path, true);
    EXPECT_LT(std::chrono::steady_clock::now() - Start, std::chrono::seconds(2));
    if (F.Expect != Verdict::Either) {
        EXPECT_FALSE(Loaded) << "the loader accepted it";
        EXPECT_FALSE(Picture.IsBitmap());
        EXPECT_FALSE(Made) << "CreateDIBFromFile accepted it";
        EXPECT_EQ(Dib.DIBhDC(), nullptr);
        if (F.Expect == Verdict::RefusedByHeader) {
            EXPECT_FALSE(basPicture::ReadBmpHeader(ReadBytes(Path)).Valid);
        }
        return;
    }
    EXPECT_EQ(Loaded, Made);
    if (Loaded) {
        EXPECT_GT(Picture.Width(), 0);
        EXPECT_GT(Picture.Height(), 0);
        EXPECT_LE(Picture.Width(), basPicture::MaxPictureSide);
        EXPECT_LE(Picture.Height(), basPicture::MaxPictureSide);
        EXPECT_TRUE(std::set<int>({1, 4, 8, 24, 32}).count(Picture.Bpp())) << Picture.Bpp();
    }
    if (Made) {
        EXPECT_EQ(Dib.DIBWidth(), Picture.Width());
        EXPECT_EQ(Dib.DIBHeight(), Picture.Height());
        EXPECT_EQ(Dib.DIBbpp(), Picture.Bpp());
    }
}

INSTANTIATE_TEST_SUITE_P(Files, BrokenBitmap, testing::ValuesIn(BrokenFiles),
                         [](const testing::TestParamInfo<BrokenFile>& Info) {
                             const QString Path = QString::fromLatin1(Info.param.Path);
                             return SafeTestName(Path.section(QLatin1Char('/'), -2, -2) + QLatin1Char('_') +
                                                 QFileInfo(Path).completeBaseName());
                         });

TEST(basPicture, EveryBrokenAndOddFileIsRun)
{
    std::set<QString> Listed, Present;
    for (const BrokenFile& F : BrokenFiles)
        Listed.insert(QString::fromLatin1(F.Path));
    for (const char* Folder : {"bmpsuite/b", "bmpsuite/q", "bmpsuite/x", "bmp-extra/gfxprim-corrupt",
                               "bmp-extra/gfxprim-questionable", "bmp-extra/image-rs-bad", "bmp-extra/image-rs-lenient"})
        for (const QString& Name : QDir(TestData(QString::fromLatin1(Folder))).entryList({QStringLiteral("*.bmp")}))
            Present.insert(QString::fromLatin1(Folder) + QLatin1Char('/') + Name);
    EXPECT_EQ(Listed, Present);
}

TEST(basPicture, HopelessFilesAreRefusedQuickly)
{
    QTemporaryDir Dir;
    const QString Empty = Dir.filePath(QStringLiteral("empty.bmp"));
    ASSERT_TRUE(WriteBytes(Empty, {}));
    // A valid-looking header of 40000 by 40000 at 24 bits, followed by a few bytes.
    QByteArray Huge("BM");
    PutLe32(Huge, 0);
    PutLe32(Huge, 0);
    PutLe32(Huge, 54);
    for (uint32_t V : {40u, 40000u, 40000u})
        PutLe32(Huge, V);
    PutLe16(Huge, 1);
    PutLe16(Huge, 24);
    for (int I = 0; I < 6; ++I)
        PutLe32(Huge, 0);
    Huge.append(QByteArray(4096, '\x7f'));
    const QString HugePath = Dir.filePath(QStringLiteral("huge.bmp"));
    ASSERT_TRUE(WriteBytes(HugePath, Huge));
    // Sides within the limit, memory beyond it.
    QByteArray Deep = Huge;
    for (int I = 0; I < 2; ++I)
        Deep[18 + I * 4] = '\xFF', Deep[19 + I * 4] = '\x7F', Deep[20 + I * 4] = 0, Deep[21 + I * 4] = 0;
    const QString DeepPath = Dir.filePath(QStringLiteral("deep.bmp"));
    ASSERT_TRUE(WriteBytes(DeepPath, Deep));

    for (const QString& Path : {Dir.filePath(QStringLiteral("missing.bmp")), Empty, Dir.path(), HugePath, DeepPath}) {
        SCOPED_TRACE(Path.toStdString());
        const auto Start = std::chrono::steady_clock::now();
        StdPicture Picture;
        EXPECT_FALSE(basPicture::LoadPicture(Path, Picture));
        clsDIB Dib;
        EXPECT_FALSE(Dib.CreateDIBFromFile(Path, false));
        EXPECT_EQ(Dib.DIBhDC(), nullptr);
        EXPECT_LT(std::chrono::steady_clock::now() - Start, std::chrono::milliseconds(500));
    }
}
