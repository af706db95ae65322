// tessavo-cli as a user runs it: the real executable, its output, its exit codes, and the
// files it writes, checked against an independent decoder and ImageMagick's colour count.
#include <gtest/gtest.h>

#include "CliTest.h"

#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

namespace {

const QString Suite = QStringLiteral(TESSAVO_TESTDATA "/bmpsuite/");

int UniqueColorsByImageMagick(const QString& File)
{
    QProcess Identify;
    // Colours as red, green and blue, as the census counts them.
    Identify.start("identify", {"-alpha", "off", "-format", "%k", File});
    Identify.waitForFinished(60000);
    return Identify.readAllStandardOutput().trimmed().toInt();
}

uint32_t LE32(const QByteArray& B, int At)
{
    return static_cast<uint8_t>(B[At]) | (static_cast<uint8_t>(B[At + 1]) << 8) |
           (static_cast<uint8_t>(B[At + 2]) << 16) | (static_cast<uint32_t>(static_cast<uint8_t>(B[At + 3])) << 24);
}


} // namespace

TEST(CliInfo, ReportsSizeDepthColoursAndAlphaOfSuiteFiles)
{
    struct Case {
        const char* File;
        const char* Size;
        int Depth;
        int ActualBpp;
        const char* Alpha;
    };
    const Case Cases[] = {
        {"g/pal1.bmp", "127 x 64", 1, 1, "no"},    {"g/pal1bg.bmp", "127 x 64", 1, 8, "no"},
        {"g/pal4.bmp", "127 x 64", 4, 8, "no"},    {"g/pal8.bmp", "127 x 64", 8, 8, "no"},
        {"g/pal8w124.bmp", "124 x 61", 8, 8, "no"}, {"g/rgb16.bmp", "127 x 64", 24, 24, "no"},
        {"g/rgb24.bmp", "127 x 64", 24, 24, "no"}, {"g/rgb32.bmp", "127 x 64", 32, 24, "no"},
        {"q/rgb32fakealpha.bmp", "127 x 64", 32, 24, "yes"},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.File);
        const CliResult R = RunCli({"info", Suite + C.File});
        ASSERT_EQ(R.Exit, 0) << R.Err.toStdString();
        const QString Expected = QString("size: %1\ndepth: %2\ncolors: %3\nactual-bpp: %4\nalpha: %5\n")
                                     .arg(C.Size)
                                     .arg(C.Depth)
                                     .arg(UniqueColorsByImageMagick(Suite + C.File))
                                     .arg(C.ActualBpp)
                                     .arg(C.Alpha);
        EXPECT_EQ(R.Out.toStdString(), Expected.toStdString());
        EXPECT_TRUE(R.Err.isEmpty()) << R.Err.toStdString();
    }
}

TEST(CliConvert, WritesThePixelRowsOfAPlainBmpUnchanged)
{
    QTemporaryDir Dir;
    const QString Out = Dir.filePath("out.bmp");
    const CliResult R = RunCli({"convert", Suite + "g/rgb24.bmp", Out});
    ASSERT_EQ(R.Exit, 0) << R.Err.toStdString();
    const QByteArray In = ReadAll(Suite + "g/rgb24.bmp");
    const QByteArray Written = ReadAll(Out);
    ASSERT_EQ(Written.size(), 54 + 128 * 3 * 64);
    EXPECT_EQ(Written.left(2), QByteArray("BM"));
    EXPECT_EQ(LE32(Written, 2), static_cast<uint32_t>(Written.size() - 14));
    EXPECT_EQ(LE32(Written, 10), 54u);
    EXPECT_EQ(LE32(Written, 18), 127u);
    EXPECT_EQ(LE32(Written, 22), 64u);
    // Both are bottom-up 24-bit rows of 384 bytes; the padding bytes of our rows are zero.
    const int Offset = static_cast<int>(LE32(In, 10));
    for (int Row = 0; Row < 64; ++Row)
        ASSERT_EQ(Written.mid(54 + Row * 384, 381), In.mid(Offset + Row * 384, 381)) << "row " << Row;
}

TEST(CliConvert, PalettedFileBecomesTheColoursAnIndependentDecoderSees)
{
    QTemporaryDir Dir;
    const QString Out = Dir.filePath("pal8.bmp");
    ASSERT_EQ(RunCli({"convert", Suite + "g/pal8.bmp", Out}).Exit, 0);
    const QImage Expected = QImage(Suite + "html/pal8.png").convertToFormat(QImage::Format_RGB32);
    const QImage Written = QImage(Out).convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(Written.size(), Expected.size());
    for (int Y = 0; Y < Written.height(); ++Y)
        for (int X = 0; X < Written.width(); ++X)
            ASSERT_EQ(Written.pixel(X, Y), Expected.pixel(X, Y)) << X << "," << Y;
}

TEST(CliRotateAndResize, ProduceTheTurnedAndScaledPicture)
{
    QTemporaryDir Dir;
    const QImage Source = QImage(Suite + "g/rgb24.bmp").convertToFormat(QImage::Format_RGB32);
    const QString Turned = Dir.filePath("turned.bmp");
    ASSERT_EQ(RunCli({"rotate", "3", Suite + "g/rgb24.bmp", Turned}).Exit, 0);
    const QImage T = QImage(Turned).convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(T.size(), QSize(64, 127));
    for (int Y = 0; Y < T.height(); ++Y)
        for (int X = 0; X < T.width(); ++X)
            ASSERT_EQ(T.pixel(X, Y), Source.pixel(Y, Source.height() - 1 - X)) << X << "," << Y;

    const QString Small = Dir.filePath("small.bmp");
    ASSERT_EQ(RunCli({"resize", "40", "20", Suite + "g/rgb24.bmp", Small}).Exit, 0);
    EXPECT_EQ(QImage(Small).size(), QSize(40, 20));
}

TEST(CliErrors, SayTheProgramsMessageAndExitWithTheRightCode)
{
    QTemporaryDir Dir;
    struct Case {
        QStringList Arguments;
        int Exit;
        const char* ErrStarts;
    };
    const Case Cases[] = {
        {{"info", Dir.filePath("missing.bmp")}, 1, "File not found\n"},
        {{"info", Suite + "b/badrle.bmp"}, 1, "Failed to retrieve incoming image\n"},
        {{"info", Suite + "b/shortfile.bmp"}, 1, "Failed to retrieve incoming image\n"},
        {{"convert", Suite + "g/pal8.bmp", Dir.filePath("no/such/folder/out.bmp")}, 1, "Failed to save this file.\n"},
        {{}, 2, "tessavo-cli: no command given"},
        {{"frobnicate"}, 2, "tessavo-cli: unknown command"},
        {{"info"}, 2, "tessavo-cli: info takes one file"},
        {{"convert", Suite + "g/pal8.bmp", Dir.filePath("out.xyz")}, 2, "tessavo-cli: convert takes"},
        {{"rotate", "4", Suite + "g/pal8.bmp", Dir.filePath("o.bmp")}, 2, "tessavo-cli: rotate takes"},
        {{"resize", "0", "10", Suite + "g/pal8.bmp", Dir.filePath("o.bmp")}, 2, "tessavo-cli: resize takes"},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Arguments.join(' ').toStdString());
        const CliResult R = RunCli(C.Arguments);
        EXPECT_EQ(R.Exit, C.Exit);
        EXPECT_TRUE(R.Err.startsWith(C.ErrStarts)) << R.Err.toStdString();
        EXPECT_TRUE(R.Out.isEmpty());
    }
}

TEST(CliHelp, PrintsUsageAndSucceeds)
{
    const CliResult R = RunCli({"--help"});
    EXPECT_EQ(R.Exit, 0);
    EXPECT_TRUE(R.Out.startsWith("Usage: tessavo-cli COMMAND ARGUMENTS\n"));
    for (const char* Command : {"info FILE", "convert IN OUT.bmp", "rotate MODE IN OUT.bmp", "resize W H IN OUT.bmp"})
        EXPECT_TRUE(R.Out.contains(Command)) << Command;
}

TEST(CliConvert, ReducesToPalettedFilesThatImageMagickReadsAlike)
{
    QTemporaryDir Dir;
    struct Case {
        QStringList Options;
        int Bpp;
        int MaxColours;
    };
    const Case Cases[] = {
        {{"--bpp", "8"}, 8, 256},
        {{"--bpp", "8", "--palette", "websafe"}, 8, 216},
        {{"--bpp", "8", "--palette", "halftone:1"}, 8, 27},
        {{"--bpp", "4"}, 4, 16},
        {{"--bpp", "4", "--palette", "grays"}, 4, 16},
        {{"--bpp", "1"}, 1, 2},
        {{"--bpp", "1", "--dither", "ordered"}, 1, 2},
    };
    for (const Case& C : Cases) {
        const QString Out = Dir.filePath("out.bmp");
        const CliResult R = RunCli(QStringList{"convert"} + C.Options + QStringList{Suite + "g/rgb24.bmp", Out});
        ASSERT_EQ(R.Exit, 0) << C.Options.join(' ').toStdString() << R.Err.toStdString();
        const QByteArray File = ReadAll(Out);
        ASSERT_GT(File.size(), 54);
        EXPECT_EQ(static_cast<uint8_t>(File[28]), C.Bpp) << C.Options.join(' ').toStdString();
        EXPECT_EQ(LE32(File, 10), 54u + 4u * (1u << C.Bpp));  // the pixels follow the full colour table
        // Two decoders agree on every pixel, and the colours fit the table.
        const QString Ppm = Dir.filePath("out.ppm");
        QProcess Convert;
        Convert.start("convert", {Out, "-depth", "8", Ppm});
        ASSERT_TRUE(Convert.waitForFinished(60000));
        const QImage Ours = QImage(Out).convertToFormat(QImage::Format_RGB32);
        const QImage Theirs = QImage(Ppm).convertToFormat(QImage::Format_RGB32);
        ASSERT_EQ(Ours.size(), QSize(127, 64));
        EXPECT_EQ(Ours, Theirs) << C.Options.join(' ').toStdString();
        EXPECT_LE(UniqueColorsByImageMagick(Out), C.MaxColours);
    }
}

TEST(CliConvert, RefusesReductionsThatDoNotFit)
{
    QTemporaryDir Dir;
    const QString In = Suite + "g/rgb24.bmp", Out = Dir.filePath("out.bmp");
    EXPECT_EQ(RunCli({"convert", "--bpp", "8", "--dither", "floyd", In, Out}).Exit, 2);
    EXPECT_EQ(RunCli({"convert", "--palette", "16", In, Out}).Exit, 2);
    EXPECT_EQ(RunCli({"convert", "--bpp", "2", In, Out}).Exit, 2);
    EXPECT_EQ(RunCli({"convert", "--bpp", "8", "--palette", "halftone:5", In, Out}).Exit, 2);
    const CliResult R = RunCli({"convert", "--bpp", "4", "--palette", "websafe", In, Out});
    EXPECT_EQ(R.Exit, 1);
    EXPECT_EQ(R.Err.trimmed(), "The palette does not fit 4 bits.");
}
