// tessavo-cli's GIF commands as a user runs them: gif info, gif frames against giflib's
// reference decodes, and convert to GIF read back by Qt's own GIF reader.
#include <gtest/gtest.h>

#include "CliTest.h"

#include <QFile>
#include <QImage>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>

namespace {

const QString GifSuite = QStringLiteral(TESSAVO_TESTDATA "/");


// A 32-bit BMP's pixels as red, green, blue rows top first, and its alpha bytes.
bool ReadBmp32(const QString& File, int& Width, int& Height, QByteArray& Rgb, QByteArray& Alpha)
{
    const QByteArray B = ReadAll(File);
    if (B.size() < 54 || B[28] != 32)
        return false;
    auto Le32 = [&B](int At) {
        return static_cast<int32_t>(uint8_t(B[At]) | (uint8_t(B[At + 1]) << 8) | (uint8_t(B[At + 2]) << 16) |
                                    (uint32_t(uint8_t(B[At + 3])) << 24));
    };
    Width = Le32(18);
    Height = Le32(22);
    if (B.size() != 54 + Width * Height * 4)
        return false;
    for (int Y = Height - 1; Y >= 0; --Y)
        for (int X = 0; X < Width; ++X) {
            const char* P = B.constData() + 54 + (Y * Width + X) * 4;
            Rgb.append(P[2]).append(P[1]).append(P[0]);
            Alpha.append(P[3]);
        }
    return true;
}

} // namespace

TEST(CliGif, InfoTellsScreenLoopsPaletteCommentAndFrames)
{
    struct Case {
        const char* File;
        const char* Expected;
    } Cases[] = {
        {"gif-giflib/pic/x-trans.gif",
         "version: 89a\nscreen: 100 x 100\nbackground: 0\nloops: 0\nglobal-palette: 256\ncomment: Made with GIMP\n"
         "frames: 1\nframe 1: 100 x 100, left 0, top 0, delay 10, disposal 0, transparent 0, interlaced yes, "
         "palette global\n"},
        {"gif-peterdn/animated_transparent_loop.gif",
         "version: 89a\nscreen: 100 x 100\nbackground: 0\nloops: 0\nglobal-palette: 2\ncomment: \nframes: 4\n"
         "frame 1: 100 x 100, left 0, top 0, delay 100, disposal 1, transparent 1, interlaced no, palette global\n"
         "frame 2: 30 x 30, left 10, top 10, delay 100, disposal 2, transparent -, interlaced no, palette 2\n"
         "frame 3: 40 x 40, left 30, top 30, delay 100, disposal 2, transparent -, interlaced no, palette 2\n"
         "frame 4: 30 x 30, left 60, top 60, delay 100, disposal 2, transparent -, interlaced no, palette 2\n"},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.File);
        const CliResult R = RunCli({"gif", "info", GifSuite + C.File});
        EXPECT_EQ(R.Exit, 0);
        EXPECT_EQ(R.Out.toStdString(), C.Expected);
        EXPECT_TRUE(R.Err.isEmpty()) << R.Err.toStdString();
    }
}

TEST(CliGif, RefusedFilesGiveTheReadersMessage)
{
    QTemporaryDir Dir;
    struct Case {
        QStringList Arguments;
        int Exit;
        QString Err;
    } Cases[] = {
        {{"gif", "info", Dir.filePath("missing.gif")}, 1, Dir.filePath("missing.gif") + "\nFile not found.\n"},
        {{"gif", "info", GifSuite + "gif-testsuite/comment.gif"}, 1,
         GifSuite + "gif-testsuite/comment.gif\nNot a GIF file.\n"},
        {{"gif", "frames", GifSuite + "gif-giflib/pic/porsche.gif", Dir.path()}, 1,
         GifSuite + "gif-giflib/pic/porsche.gif\nNo GIF trailer found.\n"},
        {{"gif", "frames", GifSuite + "gif-giflib/pic/fire.gif"}, 2, "tessavo-cli: gif takes"},
        {{"gif", "show", GifSuite + "gif-giflib/pic/fire.gif"}, 2, "tessavo-cli: gif takes"},
        {{"convert", "--bpp", "8", GifSuite + "gif-giflib/pic/fire.gif", Dir.filePath("o.gif")}, 2,
         "tessavo-cli: convert takes"},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Arguments.join(' ').toStdString());
        const CliResult R = RunCli(C.Arguments);
        EXPECT_EQ(R.Exit, C.Exit);
        EXPECT_TRUE(R.Err.startsWith(C.Err)) << R.Err.toStdString();
        EXPECT_TRUE(R.Out.isEmpty());
    }
    EXPECT_TRUE(RunCli({"--help"}).Out.contains("gif frames FILE DIR"));
}

TEST(CliGif, FramesAreTheColoursGiflibDecodesWithTransparencyInAlpha)
{
    struct Case {
        const char* File;
        int Frames;
        int Width, Height;
        bool Transparent;
        bool Reference;  // giflib's picture is of the first image: files of one image only
    } Cases[] = {
        {"x-trans", 1, 100, 100, true, true},
        {"gifgrid", 1, 100, 100, false, true},
        {"treescap", 1, 40, 40, false, true},
        {"fire", 33, 30, 60, false, false},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.File);
        QTemporaryDir Dir;
        const CliResult R = RunCli({"gif", "frames", GifSuite + "gif-giflib/pic/" + C.File + ".gif", Dir.filePath("f")});
        ASSERT_EQ(R.Exit, 0) << R.Err.toStdString();
        EXPECT_EQ(R.Out, QString("frames: %1\n").arg(C.Frames));
        EXPECT_TRUE(QFile::exists(Dir.filePath(QString("f/%1.bmp").arg(C.Frames, 3, 10, QChar('0')))));
        EXPECT_FALSE(QFile::exists(Dir.filePath(QString("f/%1.bmp").arg(C.Frames + 1, 3, 10, QChar('0')))));
        int Width = 0, Height = 0;
        QByteArray Rgb, Alpha;
        ASSERT_TRUE(ReadBmp32(Dir.filePath("f/001.bmp"), Width, Height, Rgb, Alpha));
        EXPECT_EQ(Width, C.Width);
        EXPECT_EQ(Height, C.Height);
        if (C.Reference) {
            EXPECT_TRUE(Rgb == ReadAll(GifSuite + "gif-giflib/expected/" + C.File + ".rgb"));
        }
        EXPECT_EQ(Alpha.count('\0') > 0, C.Transparent);
        EXPECT_EQ(Alpha.count('\0') + Alpha.count('\xFF'), Alpha.size());
    }
}

TEST(CliGif, ConvertWritesAGifThatQtReadsAlike)
{
    QTemporaryDir Dir;
    const QString Bmp = GifSuite + "bmpsuite/g/";
    // At most 256 colours: the very colours; more: a palette of 256 at most, the size kept.
    for (const char* Source : {"pal8.bmp", "pal4.bmp", "rgb24.bmp"}) {
        SCOPED_TRACE(Source);
        const QString Out = Dir.filePath("out.gif");
        const CliResult R = RunCli({"convert", Bmp + Source, Out});
        ASSERT_EQ(R.Exit, 0) << R.Err.toStdString();
        const QImage Written = QImage(Out, "GIF").convertToFormat(QImage::Format_RGB32);
        const QImage Original = QImage(Bmp + Source).convertToFormat(QImage::Format_RGB32);
        ASSERT_EQ(Written.size(), Original.size());
        if (QString(Source) != "rgb24.bmp") {
            EXPECT_EQ(Written, Original);
        } else {
            QSet<QRgb> Colours;
            for (int Y = 0; Y < Written.height(); ++Y)
                for (int X = 0; X < Written.width(); ++X)
                    Colours.insert(Written.pixel(X, Y));
            EXPECT_LE(Colours.size(), 256);
            EXPECT_GT(Colours.size(), 100);
        }
        EXPECT_TRUE(RunCli({"gif", "info", Out}).Out.startsWith("version: 87a\nscreen: 127 x 64\n"));
        EXPECT_FALSE(QFile::exists(Dir.filePath("tmpGIFPal.tmp")));
    }
}
