// tessavo-cli's icon commands as a user runs them, checked against icoutils and ImageMagick:
// images taken out of icons, animated cursors and programs, and pictures written as icons,
// cursors, TGA and PCX.
#include <gtest/gtest.h>

#include <QDir>
#include <QImage>
#include <QTemporaryDir>

#include "CliTest.h"

namespace {

const QString Data = QStringLiteral(TESSAVO_TESTDATA "/");

// What a tool printed on its standard output, or an empty text when it failed.
QString Tool(const QString& Program, const QStringList& Arguments)
{
    QProcess Process;
    Process.start(Program, Arguments);
    Process.waitForFinished(60000);
    return Process.exitStatus() == QProcess::NormalExit && Process.exitCode() == 0
               ? QString::fromUtf8(Process.readAllStandardOutput())
               : QString();
}

bool Ran(const QString& Program, const QStringList& Arguments)
{
    QProcess Process;
    Process.start(Program, Arguments);
    return Process.waitForFinished(60000) && Process.exitStatus() == QProcess::NormalExit && Process.exitCode() == 0;
}

// The pixels of a picture file as ARGB, read by Qt (BMP, PNG).
std::vector<QRgb> Argb(const QString& File)
{
    const QImage Image = QImage(File).convertToFormat(QImage::Format_ARGB32);
    std::vector<QRgb> Out;
    for (int Y = 0; Y < Image.height(); ++Y)
        for (int X = 0; X < Image.width(); ++X)
            Out.push_back(Image.pixel(X, Y));
    return Out;
}

TEST(CliIcons, ExtractedImagesMatchIcotool)
{
    // Widths a multiple of 4: other 32-bit widths have their alpha read by the program's own
    // row rule, which icotool does not share.
    for (const char* File : {"ico-cur/mozilla-ico-bmp-32bpp/ico-transparent-32bpp.ico",
                             "ico-cur/mozilla-ico-bmp-8bpp/ico-partial-transparent-8bpp.ico",
                             "ico-cur/mozilla-ico-bmp-1bpp/ico-partial-transparent-1bpp.ico"}) {
        SCOPED_TRACE(File);
        QTemporaryDir Ours, Theirs;
        const CliResult Info = RunCli({"ico", "info", Data + File});
        ASSERT_EQ(Info.Exit, 0) << Info.Err.toStdString();
        const QStringList Listed = Tool("icotool", {"-l", Data + File}).split('\n', Qt::SkipEmptyParts);
        ASSERT_FALSE(Listed.isEmpty());
        EXPECT_TRUE(Info.Out.contains(QStringLiteral("images: %1\n").arg(Listed.size())));
        const CliResult Extract = RunCli({"ico", "extract", Data + File, Ours.path()});
        ASSERT_EQ(Extract.Exit, 0) << Extract.Err.toStdString();
        ASSERT_TRUE(Ran("icotool", {"-x", "-o", Theirs.path(), Data + File}));
        const QStringList Pngs = QDir(Theirs.path()).entryList({"*.png"}, QDir::Files, QDir::Name);
        ASSERT_EQ(Pngs.size(), Listed.size());
        for (int I = 0; I < Pngs.size(); ++I) {
            int W = 0, H = 0, Bits = 0;
            std::vector<uint8_t> Rgba;
            ASSERT_TRUE(ReadBmp(Ours.filePath(QStringLiteral("%1.bmp").arg(I + 1, 3, 10, QChar('0'))), W, H, Bits, Rgba));
            std::vector<QRgb> Mine;
            for (size_t P = 0; P + 3 < Rgba.size(); P += 4)
                Mine.push_back(qRgba(Rgba[P], Rgba[P + 1], Rgba[P + 2], Rgba[P + 3]));
            std::vector<QRgb> Reference = Argb(Theirs.filePath(Pngs[I]));
            ASSERT_EQ(Mine.size(), Reference.size());
            // Fully transparent pixels may keep any colour.
            for (size_t P = 0; P < Mine.size(); ++P) {
                if (qAlpha(Reference[P]) != 0 || qAlpha(Mine[P]) != 0) {
                    ASSERT_EQ(Mine[P], Reference[P]) << "image " << I << " pixel " << P;
                }
            }
        }
    }
}

TEST(CliIcons, AnimatedCursorsAndProgramsGiveUpTheirIcons)
{
    QTemporaryDir Folder;
    const QString Ani = Data + "ani/wx-hourglass.ani";
    const CliResult Info = RunCli({"ani", "info", Ani});
    ASSERT_EQ(Info.Exit, 0) << Info.Err.toStdString();
    // As many frames as the file has icon chunks.
    const int Icons = static_cast<int>(ReadAll(Ani).count("icon"));
    EXPECT_TRUE(Info.Out.startsWith(QStringLiteral("frames: %1\n").arg(Icons))) << Info.Out.toStdString();
    const CliResult Extract = RunCli({"ani", "extract", Ani, Folder.filePath("frames")});
    ASSERT_EQ(Extract.Exit, 0);
    EXPECT_EQ(QDir(Folder.filePath("frames")).entryList({"*.bmp"}, QDir::Files).size(), Icons);
    EXPECT_EQ(QImage(Folder.filePath("frames/001.bmp")).size(), QSize(32, 32));

    for (const char* Program : {"pe-icl/wine/notepad.exe", "pe-icl/nsis/nsis-stub-zlib-x86-ansi.exe"}) {
        SCOPED_TRACE(Program);
        const QString Out = Folder.filePath(QFileInfo(Program).baseName());
        const int Groups = Tool("wrestool", {"-l", "--type=14", Data + Program}).count("--type=14");
        ASSERT_GT(Groups, 0);
        const CliResult Pe = RunCli({"pe", "icons", Data + Program, Out});
        ASSERT_EQ(Pe.Exit, 0) << Pe.Err.toStdString();
        EXPECT_EQ(Pe.Out, QStringLiteral("icons: %1\n").arg(Groups));
        for (const QString& Ico : QDir(Out).entryList({"*.ico"}, QDir::Files))
            EXPECT_FALSE(Tool("icotool", {"-l", Out + "/" + Ico}).isEmpty()) << Ico.toStdString();
    }
    EXPECT_EQ(RunCli({"pe", "icons", Data + "ani/wx-hourglass.ani", Folder.filePath("none")}).Exit, 1);
}

TEST(CliIcons, ConvertWritesIconsCursorsTgaAndPcxOthersRead)
{
    QTemporaryDir Folder;
    const QString Source = Data + "bmpsuite/g/rgb24.bmp";
    const std::vector<QRgb> Expected = Argb(Source);
    for (const QString Name : {"out.tga", "out.pcx"}) {
        SCOPED_TRACE(Name.toStdString());
        QStringList Arguments = {"convert", Source, Folder.filePath(Name)};
        if (Name.endsWith("pcx"))
            Arguments << "--compress";
        ASSERT_EQ(RunCli(Arguments).Exit, 0);
        // ImageMagick reads it back to the same pixels.
        const QString Png = Folder.filePath(Name + ".png");
        // (TGA files are bottom-up; ImageMagick only marks that unless asked to orient them.)
        ASSERT_TRUE(Ran("convert", {Folder.filePath(Name), "-auto-orient", Png}));
        EXPECT_EQ(Argb(Png), Expected);
    }
    const struct {
        QStringList Options;
        const char* Name;
        const char* Listed;
    } Icons[] = {
        {{"--size", "48"}, "big.ico", "--icon --index=1 --width=48 --height=48 --bit-depth=24"},
        {{"--transparent", "FFFFFF", "--hotspot", "5,31"}, "arrow.cur",
         "--cursor --index=1 --width=32 --height=32 --bit-depth=24 --palette-size=0 --hotspot-x=5 --hotspot-y=31"},
    };
    for (const auto& C : Icons) {
        SCOPED_TRACE(C.Name);
        ASSERT_EQ(RunCli(QStringList{"convert", Source, Folder.filePath(C.Name)} + C.Options).Exit, 0);
        EXPECT_TRUE(Tool("icotool", {"-l", Folder.filePath(C.Name)}).startsWith(C.Listed));
    }
    // Options belong to their formats.
    for (const QStringList& Wrong : {QStringList{"out.tga", "--compress"}, QStringList{"out.ico", "--hotspot", "1,1"},
                                     QStringList{"out.cur", "--size", "16"}, QStringList{"out.ico", "--size", "20"},
                                     QStringList{"out.cur", "--hotspot", "32,0"}})
        EXPECT_EQ(RunCli(QStringList{"convert", Source, Folder.filePath(Wrong[0])} + Wrong.mid(1)).Exit, 2)
            << Wrong.join(' ').toStdString();
}

} // namespace
