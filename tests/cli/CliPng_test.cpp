// tessavo-cli's PNG commands as a user runs them: the chunk list against the file's own bytes,
// decoded pictures against libpng's, the reader's refusals, and files written by convert read
// back by libpng and checked by pngcheck.
#include <gtest/gtest.h>

#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <set>

#include "CliTest.h"
#include "PngReadBack.h"

namespace {

const QString PngSuite = QStringLiteral(TESSAVO_TESTDATA "/pngsuite/png/");
const QString BmpSuite = QStringLiteral(TESSAVO_TESTDATA "/bmpsuite/g/");


} // namespace

TEST(CliPng, TagsListEveryChunkWithItsStoredCrc)
{
    // basn2c08 has an IDAT whose CRC has a leading zero digit; ct1n0g04 has text chunks;
    // tbbn3p08 a palette, transparency and background.
    for (const char* Name : {"basn2c08.png", "ct1n0g04.png", "tbbn3p08.png"}) {
        const QString File = PngSuite + Name;
        QString Expected;
        for (const PngChunk& C : PngChunks(ReadAll(File))) {
            ASSERT_EQ(C.StoredCrc, C.ComputedCrc) << Name;
            Expected += QStringLiteral("%1/%2/%3\n").arg(QString::fromLatin1(C.Type)).arg(C.Data.size()).arg(C.StoredCrc, 0, 16);
        }
        const CliResult R = RunCli({"png", "tags", File});
        EXPECT_EQ(R.Exit, 0) << Name;
        EXPECT_EQ(R.Out, Expected) << Name;
        EXPECT_TRUE(R.Out.startsWith("IHDR/13/")) << Name;
        EXPECT_TRUE(R.Out.endsWith("IEND/0/ae426082\n")) << Name;
    }
}

TEST(CliPng, DecodeGivesLibpngsPixels)
{
    QTemporaryDir Dir;
    const struct {
        const char* File;
        int Bits;  // of the BMP written: 32 where the picture has alpha
    } Cases[] = {
        {"basn2c08.png", 24}, {"basn2c16.png", 24}, {"basn3p04.png", 24}, {"basn0g08.png", 24},
        {"basi0g04.png", 24}, {"basn6a08.png", 32}, {"basn4a08.png", 32},
    };
    for (const auto& C : Cases) {
        const QString Target = Dir.filePath(QString(C.File) + ".bmp");
        const CliResult R = RunCli({"png", "decode", PngSuite + C.File, Target});
        ASSERT_EQ(R.Exit, 0) << C.File << R.Err.toStdString();
        PngReadBack Reference;
        ASSERT_TRUE(ReadPngBack(PngSuite + C.File, Reference)) << C.File;
        int W = 0, H = 0, Bits = 0;
        std::vector<uint8_t> Rgba;
        ASSERT_TRUE(ReadBmp(Target, W, H, Bits, Rgba)) << C.File;
        EXPECT_EQ(Bits, C.Bits) << C.File;
        EXPECT_EQ(W, Reference.Width) << C.File;
        EXPECT_EQ(H, Reference.Height) << C.File;
        EXPECT_EQ(Rgba, Reference.Rgba) << C.File;
    }
}

TEST(CliPng, RefusedFilesExitWithTheReadersMessage)
{
    QTemporaryDir Dir;
    const QString Extra = QStringLiteral(TESSAVO_TESTDATA "/png-extra/");
    const std::pair<QString, QString> Cases[] = {
        {Dir.filePath("missing.png"), "Error: 1   File not found."},
        {Extra + "libspng/badadler.png", "Error: 2   Invalid PNG file."},  // 67 bytes
        {PngSuite + "xs1n0g01.png", "Error: 3   Invalid PNG file signature."},
        {Extra + "gdk-pixbuf/fail-invalid.2.png", "Error: 6   Invalid CRC check sum found."},
    };
    const QString Target = Dir.filePath("out.bmp");
    for (const auto& [File, Message] : Cases) {
        for (const QStringList& Command : {QStringList{"png", "tags", File}, QStringList{"png", "decode", File, Target}}) {
            const CliResult R = RunCli(Command);
            EXPECT_EQ(R.Exit, 1) << Command.join(' ').toStdString();
            EXPECT_EQ(R.Err, Message + "\n") << Command.join(' ').toStdString();
            EXPECT_TRUE(R.Out.isEmpty());
        }
        EXPECT_FALSE(QFile::exists(Target));
    }
    for (const QStringList& Wrong : {QStringList{"png", "decode", PngSuite + "basn2c08.png", Dir.filePath("a.gif")},
                                     QStringList{"png", "info", PngSuite + "basn2c08.png"},
                                     QStringList{"convert", BmpSuite + "rgb24.bmp", Dir.filePath("a.png"), "--bpp", "4"},
                                     QStringList{"convert", BmpSuite + "rgb24.bmp", Dir.filePath("a.png"), "--dither", "floyd"}})
        EXPECT_EQ(RunCli(Wrong).Exit, 2) << Wrong.join(' ').toStdString();
}

TEST(CliPng, ConvertWritesTrueColourOrPalettedFilesThatCheckClean)
{
    QTemporaryDir Dir;
    const struct {
        const char* Input;
        QStringList Options;
        int ColorType;
        bool Exact;  // the input's pixels survive exactly (true colour, or 256 colours at most)
    } Cases[] = {
        {"rgb24.bmp", {}, 2, true},
        {"rgb24.bmp", {"--bpp", "24"}, 2, true},
        {"pal8.bmp", {"--bpp", "8"}, 3, true},
        {"rgb24.bmp", {"--bpp", "8"}, 3, false},
    };
    int N = 0;
    for (const auto& C : Cases) {
        const QString Target = Dir.filePath(QString("out%1.png").arg(++N));
        const CliResult R = RunCli(QStringList{"convert", BmpSuite + C.Input, Target} + C.Options);
        ASSERT_EQ(R.Exit, 0) << C.Input << R.Err.toStdString();
        QProcess Check;
        Check.start("pngcheck", {"-q", Target});
        ASSERT_TRUE(Check.waitForFinished(30000));
        EXPECT_EQ(Check.exitCode(), 0) << Check.readAllStandardOutput().toStdString();
        PngReadBack Back;
        ASSERT_TRUE(ReadPngBack(Target, Back)) << C.Input;
        EXPECT_EQ(Back.ColorType, C.ColorType) << C.Input;
        EXPECT_EQ(Back.BitDepth, 8);
        const QImage Source = QImage(BmpSuite + C.Input).convertToFormat(QImage::Format_RGBA8888);
        ASSERT_EQ(Back.Width, Source.width());
        ASSERT_EQ(Back.Height, Source.height());
        const std::vector<uint8_t> Expected(Source.constBits(), Source.constBits() + Source.sizeInBytes());
        if (C.Exact) {
            EXPECT_EQ(Back.Rgba, Expected) << C.Input;
        } else {
            // A richer picture is dithered to a palette of its own.
            std::set<uint32_t> Colors;
            for (size_t I = 0; I < Back.Rgba.size(); I += 4)
                Colors.insert(Back.Rgba[I] | Back.Rgba[I + 1] << 8 | Back.Rgba[I + 2] << 16);
            EXPECT_LE(Colors.size(), 256u);
            EXPECT_GT(Colors.size(), 16u);
        }
    }
}
