// Broken and questionable bitmaps through the loader and CreateDIBFromFile. A file whose
// structure is wrong (bit count, header size, planes, sides, sizes beyond the limits,
// pixel data cut short, run-length data that overruns or runs top-down) is refused by
// both; any other file of the collections may load or be refused, the same by both, but
// never crashes.
#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <chrono>
#include <map>
#include <set>

#include "TestImages.h"
#include "basPicture.h"
#include "clsDIB.h"

using namespace TestImages;

namespace {

const char* const Folders[] = {"bmpsuite/b/", "bmpsuite/q/", "bmpsuite/x/", "bmp-extra/gfxprim-corrupt/",
                               "bmp-extra/gfxprim-questionable/", "bmp-extra/image-rs-bad/",
                               "bmp-extra/image-rs-lenient/"};

// Files that must be refused, by folder: those the header reader refuses already, and the others.
const struct {
    const char* Folder;
    const char* ByHeader;
    const char* ByPixels;
} MustRefuse[] = {
    {"bmpsuite/b/", "badbitcount badheadersize badplanes badwidth reallybig shortfile",
     "badrle badrle4 badrle4bis badrlebis rletopdown"},
    {"bmp-extra/gfxprim-corrupt/",
     "1bpp-pixeldata-cropped 32bpp-pixeldata-cropped 4bpp-pixeldata-cropped 8bpp-pixeldata-cropped bitdepth-large "
     "bitdepth-zero colormasks-cropped colormasks-missing compression-unknown emptyfile height-zero "
     "infoheader-cropped infoheader-missing infoheadersize-small infoheadersize-zero magicnumber-bad offbits-large "
     "offbits-negative palette-missing pixeldata-missing width-negative width-times-height-overflow width-zero",
     "rle4-delta-cropped rle4-runlength-cropped rle8-delta-cropped rle8-deltaleavesimage"},
    {"bmp-extra/image-rs-bad/", "Bad_badbitcount Bad_height Bad_reallybig Bad_shortfile Bad_width", ""},
    // Zero sides make no surface; a top-down run-length file is refused however common.
    {"bmp-extra/gfxprim-questionable/", "32bpp-0x0 32bpp-0x240", "rle8-height-negative"},
};

// Each file that must be refused, and whether the header reader refuses it already.
std::map<QString, bool> Refusals()
{
    std::map<QString, bool> Out;
    for (const auto& F : MustRefuse)
        for (bool ByHeader : {true, false}) {
            const QString Names = QString::fromLatin1(ByHeader ? F.ByHeader : F.ByPixels);
            for (const QString& Name : Names.split(' ', Qt::SkipEmptyParts))
                Out[QString::fromLatin1(F.Folder) + Name + QStringLiteral(".bmp")] = ByHeader;
        }
    return Out;
}

std::vector<QString> CollectionFiles()
{
    std::vector<QString> Out;
    for (const char* Folder : Folders)
        for (const QString& Name : QDir(TestData(QString::fromLatin1(Folder))).entryList({QStringLiteral("*.bmp")}))
            Out.push_back(QString::fromLatin1(Folder) + Name);
    return Out;
}

class BrokenBitmap : public testing::TestWithParam<QString> {};

} // namespace

TEST_P(BrokenBitmap, IsRefusedOrLoadsWithoutHarm)
{
    const QString Path = TestData(GetParam());
    const auto Start = std::chrono::steady_clock::now();
    StdPicture Picture;
    const bool Loaded = basPicture::LoadPicture(Path, Picture);
    clsDIB Dib;
    const bool Made = Dib.CreateDIBFromFile(Path, true);
    EXPECT_LT(std::chrono::steady_clock::now() - Start, std::chrono::seconds(2));
    const std::map<QString, bool> Refused = Refusals();
    const auto Refusal = Refused.find(GetParam());
    if (Refusal != Refused.end()) {
        EXPECT_FALSE(Loaded) << "the loader accepted it";
        EXPECT_FALSE(Picture.IsBitmap());
        EXPECT_FALSE(Made) << "CreateDIBFromFile accepted it";
        EXPECT_EQ(Dib.DIBhDC(), nullptr);
        if (Refusal->second) {
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

INSTANTIATE_TEST_SUITE_P(Files, BrokenBitmap, testing::ValuesIn(CollectionFiles()),
                         [](const testing::TestParamInfo<QString>& Info) {
                             return SafeTestName(Info.param.section(QLatin1Char('/'), -2, -2) + QLatin1Char('_') +
                                                 QFileInfo(Info.param).completeBaseName());
                         });

TEST(basPicture, EveryFileThatMustBeRefusedIsInTheCollections)
{
    const std::vector<QString> Files = CollectionFiles();
    const std::map<QString, bool> Refused = Refusals();
    for (const auto& Entry : Refused)
        EXPECT_NE(std::find(Files.begin(), Files.end(), Entry.first), Files.end()) << Entry.first.toStdString();
}

TEST(basPicture, HopelessFilesAreRefusedQuickly)
{
    QTemporaryDir Dir;
    const QString Empty = Dir.filePath(QStringLiteral("empty.bmp")), Huge = Dir.filePath(QStringLiteral("huge.bmp")),
                  Deep = Dir.filePath(QStringLiteral("deep.bmp"));
    ASSERT_TRUE(WriteBytes(Empty, {}));
    // A valid-looking header followed by a few bytes: sides beyond the limit, then within it but memory beyond.
    ASSERT_TRUE(WriteBytes(Huge, BmpFile(40000, 40000, 24, {}, QByteArray(4096, '\x7f'))));
    ASSERT_TRUE(WriteBytes(Deep, BmpFile(32767, 32767, 24, {}, QByteArray(4096, '\x7f'))));
    for (const QString& Path : {Dir.filePath(QStringLiteral("missing.bmp")), Empty, Dir.path(), Huge, Deep}) {
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
