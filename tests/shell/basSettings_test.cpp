#include "basSettings.h"

#include "basTsMainPro.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <climits>

#include "SettingsFileTest.h"

using namespace basSettings;
using basSettingsTest = SettingsFileTest;

namespace {

// Backdates the file so that any rewrite shows in its modification time.
QDateTime Backdate(const QString& path)
{
    const QDateTime old = QDateTime::fromSecsSinceEpoch(1000000000);
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadWrite) && file.setFileTime(old, QFileDevice::FileModificationTime));
    return old;
}

} // namespace

TEST(basSettings, BooleanRule)
{
    const struct {
        const char* Stored;
        bool WhenMissing, Expected;
    } cases[] = {{"-1", false, true},    {"1", true, false},   {"0", true, false}, {"True", true, false},
                 {"-01", true, false},   {"", true, true},     {"", false, false}};
    for (const auto& c : cases)
        EXPECT_EQ(BooleanFromText(c.Stored, c.WhenMissing), c.Expected) << c.Stored << " " << c.WhenMissing;
    EXPECT_EQ(TextFromBoolean(true), "-1");
    EXPECT_EQ(TextFromBoolean(false), "0");
}

TEST(basSettings, NumberRules)
{
    const struct {
        const char* Stored;
        std::optional<int> WatchRAM;
        int Mirror;
        int BrushSize; // list of 10 entries
        int16_t ChartCoordinate;
        int SlideSize;
        int Number;
    } cases[] = {
        {"", 3, 3, 2, -1, 0, 0},
        {"0", 0, 0, 0, 0, 0, 0},
        {"4", 4, 4, 4, 4, 4, 4},
        {"9", std::nullopt, 0, 9, 9, 9, 9},
        {"10", std::nullopt, 0, 2, 10, 10, 10},
        {"-1", std::nullopt, 0, 2, -1, -1, -1},
        {"abc", std::nullopt, 0, 2, -1, 0, 0},
        {"x5", std::nullopt, 0, 2, -1, 0, 0}, // holds a digit but does not start with a number
        {"3 big", std::nullopt, 0, 2, -1, 3, 3},
        {"32767", std::nullopt, 0, 2, 32767, 32767, 32767},
        {"-32769", std::nullopt, 0, 2, -1, -32769, -32769},
        {"99999999999", std::nullopt, 0, 2, -1, INT_MAX, INT_MAX},
    };
    for (const auto& c : cases) {
        const QString stored = QString::fromUtf8(c.Stored);
        EXPECT_EQ(WatchRAMFromText(stored), c.WatchRAM) << c.Stored;
        EXPECT_EQ(WatchRAMMirror(WatchRAMFromText(stored)), c.Mirror) << c.Stored;
        EXPECT_EQ(BrushSizeIndexFromText(stored, 10), c.BrushSize) << c.Stored;
        EXPECT_EQ(ColorChartCoordinateFromText(stored), c.ChartCoordinate) << c.Stored;
        EXPECT_EQ(SlideSizeFromText(stored), c.SlideSize) << c.Stored;
        EXPECT_EQ(NumberFromText(stored), c.Number) << c.Stored;
    }
    EXPECT_EQ(BrushSizeIndexFromText("9", 9), 2); // beyond a shorter list
}

TEST(basSettings, ColorChartStaysOnScreen)
{
    // A 1280 x 960 screen at 15 twips a pixel: the chart may go up to 16410 across and 7290 down.
    const struct {
        int16_t Left, Top;
        int ScreenWidth, ScreenHeight;
        int16_t ExpectedLeft, ExpectedTop;
    } cases[] = {
        {-1, -1, 19200, 14400, 0, 0},             {100, 200, 19200, 14400, 100, 200},
        {20000, 9000, 19200, 14400, 16410, 7290}, {16410, 7290, 19200, 14400, 16410, 7290},
        {-500, 32767, 19200, 14400, 0, 7290},     {100, 100, 2000, 5000, 0, 0},
    };
    for (const auto& c : cases) {
        const ColorChartPos pos = ClampColorChartPos({c.Left, c.Top}, c.ScreenWidth, c.ScreenHeight);
        EXPECT_EQ(pos.Left, c.ExpectedLeft) << c.Left;
        EXPECT_EQ(pos.Top, c.ExpectedTop) << c.Top;
    }
}

TEST_F(basSettingsTest, EveryKeyIsReadUnderItsOwnName)
{
    QTemporaryDir folders;
    const QString f = folders.path();
    for (const char* name : {"pal", "browse", "brush", "pattern", "stamp", "batch", "build", "palani", "extract"})
        ASSERT_TRUE(QDir(f).mkpath(name));
    ASSERT_TRUE(QDir(f).mkpath("icons"));
    // Spelled out by hand so that a misspelt constant cannot pass.
    WriteFile(Ini, ("[Options]\nSDIOnly=-1\nWatchRAM=1\nRemindColorSetting=0\nInvokeIconEditorOnProgramStart=1\n"
                    "FitInEvenIfSmaller=-1\nJPGAddBackEXIF=0\n"
                    "[Settings]\nBrushSizeIndex=7\n"
                    "[ColorChart Pos]\nLeft=1500\nTop=-20\n"
                    "[DialogShowPreview]\nShowPreview=0\n"
                    "[SlideShow]\nSlideSize=4\nSlideStyle=2\nSlidePace=11\n"
                    "[Last Folder]\nPAL=" + f + "/pal\nFileBrowse=" + f + "/browse\nCustomBrush=" + f
                    + "/brush\nCustomPattern=" + f + "/pattern\nStamp=" + f + "/stamp\nBatchConvert=" + f
                    + "/batch\nGIFaniBuildLactFolder=" + f + "/build\nPAL_GIFani=" + f + "/palani\n"
                    "GIFaniExtractFolder=" + f + "/extract\n"
                    "[GIFani Screen Pos]\nLeft=1\nTop=2\nWidth=3\nHeight=4\nWinState=2\n"
                    "[IconEditor Options]\nGridLines=-1\nDisplayPixelRGB=0\nTooltip256ColorChart=-1\nFlagMsgIfAlpha=0\n"
                    "[IconEditor Last Folder]\nLastFolder=" + f + "/icons\n").toUtf8());

    const OptionSettings o = ReadOptions(Ini);
    EXPECT_EQ(o.WatchRAMChecked, 1);
    EXPECT_EQ((std::vector<bool>{o.SDIOnly, o.RemindColorSetting, o.InvokeIconEditorOnProgramStart, // "1" is not "-1"
                                 o.FitInEvenIfSmaller, o.JPGAddBackEXIF}),
              (std::vector<bool>{true, false, false, true, false}));
    EXPECT_EQ(ReadBrushSizeIndex(12, Ini), 7);
    EXPECT_EQ(ReadColorChartPos(Ini).Left, 1500);
    EXPECT_EQ(ReadColorChartPos(Ini).Top, -20);
    EXPECT_FALSE(ReadShowPreview(Ini));
    const SlideShowSettings slides = ReadSlideShow(Ini);
    EXPECT_EQ((std::vector<int>{slides.SlideSize, slides.SlideStyle, slides.SlidePace}), (std::vector<int>{4, 2, 11}));

    const struct {
        const char* Key;
        const char* Folder;
    } lastFolders[] = {{KeyLastFolderPAL, "pal"},           {KeyLastFolderFileBrowse, "browse"},
                       {KeyLastFolderCustomBrush, "brush"}, {KeyLastFolderCustomPattern, "pattern"},
                       {KeyLastFolderStamp, "stamp"},       {KeyLastFolderBatchConvert, "batch"},
                       {KeyLastFolderGIFaniBuild, "build"}, {KeyLastFolderPALGIFani, "palani"},
                       {KeyLastFolderGIFaniExtract, "extract"}};
    for (const auto& c : lastFolders)
        EXPECT_EQ(ReadLastFolder(c.Key, "fallback", Ini), f + "/" + c.Folder) << c.Key;
    EXPECT_EQ(ReadLastFolder(SectionIconEditorLastFolder, KeyIconEditorLastFolder, "fallback", Ini), f + "/icons");

    const struct {
        const char* Section;
        const char* Key;
        const char* Value;
    } raw[] = {{SectionGIFaniScreenPos, KeyLeft, "1"},         {SectionGIFaniScreenPos, KeyTop, "2"},
               {SectionGIFaniScreenPos, KeyWidth, "3"},        {SectionGIFaniScreenPos, KeyHeight, "4"},
               {SectionGIFaniScreenPos, KeyWinState, "2"},     {SectionIconEditorOptions, KeyGridLines, "-1"},
               {SectionIconEditorOptions, KeyDisplayPixelRGB, "0"},
               {SectionIconEditorOptions, KeyTooltip256ColorChart, "-1"},
               {SectionIconEditorOptions, KeyFlagMsgIfAlpha, "0"}};
    for (const auto& c : raw)
        EXPECT_EQ(ReadRaw(c.Section, c.Key, Ini), c.Value) << c.Section << " " << c.Key;

    // A folder that has gone, or a file in its place, gives the caller's fallback.
    ASSERT_TRUE(QDir(f + "/pal").removeRecursively() && QDir(f + "/stamp").removeRecursively());
    WriteFile(f + "/stamp", "x");
    for (const char* key : {KeyLastFolderPAL, KeyLastFolderStamp, "Unknown"})
        EXPECT_EQ(ReadLastFolder(key, "fallback", Ini), "fallback") << key;
}

TEST_F(basSettingsTest, MissingFileGivesDefaults)
{
    const OptionSettings o = ReadOptions(Ini);
    EXPECT_EQ(o.WatchRAMChecked, 3);
    EXPECT_EQ((std::vector<bool>{o.SDIOnly, o.RemindColorSetting, o.InvokeIconEditorOnProgramStart,
                                 o.FitInEvenIfSmaller, o.JPGAddBackEXIF}),
              (std::vector<bool>{false, true, true, false, true}));
    EXPECT_EQ(ReadBrushSizeIndex(12, Ini), 2);
    EXPECT_EQ(ReadColorChartPos(Ini).Left, -1);
    EXPECT_EQ(ReadColorChartPos(Ini).Top, -1);
    EXPECT_TRUE(ReadShowPreview(Ini));
    EXPECT_EQ(ReadSlideShow(Ini).SlideSize, 0);
    EXPECT_FALSE(QFile::exists(Ini));
}

TEST_F(basSettingsTest, OptionsAreWrittenOnlyWhenChangedOrAbsent)
{
    OptionSettings options;
    const std::string defaults = "[Options]\nSDIOnly=0\nWatchRAM=3\nRemindColorSetting=-1\n"
                                 "InvokeIconEditorOnProgramStart=-1\nFitInEvenIfSmaller=0\nJPGAddBackEXIF=-1\n";
    WriteOptions(options, Ini);
    EXPECT_EQ(ReadFile(Ini), defaults);
    const QDateTime old = Backdate(Ini);
    WriteOptions(options, Ini); // nothing changed: the file is not touched
    EXPECT_EQ(QFileInfo(Ini).lastModified(), old);

    // Equal after trimming counts as unchanged; an empty key counts as absent.
    WriteFile(Ini, "[Options]\r\nSDIOnly =  0 \r\nWatchRAM=3\r\nRemindColorSetting=\r\n; keep\r\n"
                   "InvokeIconEditorOnProgramStart=-1\r\nFitInEvenIfSmaller=0\r\nJPGAddBackEXIF=-1\r\n");
    options.FitInEvenIfSmaller = true;
    WriteOptions(options, Ini);
    EXPECT_EQ(ReadFile(Ini), "[Options]\r\nSDIOnly =  0 \r\nWatchRAM=3\r\nRemindColorSetting=-1\r\n; keep\r\n"
                             "InvokeIconEditorOnProgramStart=-1\r\nFitInEvenIfSmaller=-1\r\nJPGAddBackEXIF=-1\r\n");

    // A stored "WatchRAM" of 9 checks no entry, and the mirror 0 is what goes back.
    WriteFile(Ini, QByteArray::fromStdString(defaults).replace("WatchRAM=3", "WatchRAM=9"));
    const OptionSettings stored = ReadOptions(Ini);
    EXPECT_FALSE(stored.WatchRAMChecked.has_value());
    WriteOptions(stored, Ini);
    EXPECT_EQ(ReadFile(Ini), QByteArray::fromStdString(defaults).replace("WatchRAM=3", "WatchRAM=0").toStdString());
}

TEST_F(basSettingsTest, OtherValuesAreWrittenAsDecimalTextWhenChanged)
{
    for (int round = 0; round < 2; ++round) {
        const QDateTime old = round ? Backdate(Ini) : QDateTime();
        WriteBrushSizeIndex(5, Ini);
        WriteColorChartPos({120, -1}, Ini);
        WriteShowPreview(false, Ini);
        WriteSlideShow({3, 1, 20}, Ini);
        WriteLastFolder(KeyLastFolderGIFaniBuild, "/home/u/anim", Ini);
        EXPECT_EQ(ReadFile(Ini), "[Settings]\nBrushSizeIndex=5\n[ColorChart Pos]\nLeft=120\nTop=-1\n"
                                 "[DialogShowPreview]\nShowPreview=0\n[SlideShow]\nSlideSize=3\nSlideStyle=1\n"
                                 "SlidePace=20\n[Last Folder]\nGIFaniBuildLactFolder=/home/u/anim\n");
        EXPECT_EQ(QFileInfo(Ini).lastModified() == old, round == 1) << "round " << round;
    }
    EXPECT_FALSE(WriteIfChanged(SectionSettings, KeyBrushSizeIndex, "5", Ini));
    EXPECT_TRUE(WriteIfChanged(SectionSettings, KeyBrushSizeIndex, "6", Ini));
}

TEST_F(basSettingsTest, FileSitsBesideTheProgramOrInTheUserFolder)
{
    basTsMainPro::SetAppFolder(Dir.path());
    EXPECT_EQ(SettingsFilePath(), Dir.path() + "/TsPaint.ini");
    EXPECT_EQ(SettingsFilePathForWriting(), Dir.path() + "/TsPaint.ini");

    // A folder the program cannot write to sends the file to the per-user data folder.
    const QByteArray oldDataHome = qgetenv("XDG_DATA_HOME");
    const QString oldName = QCoreApplication::applicationName();
    qputenv("XDG_DATA_HOME", Dir.filePath(QStringLiteral("data")).toLocal8Bit());
    QCoreApplication::setApplicationName(QStringLiteral("TessavoTest"));
    basTsMainPro::SetAppFolder(Dir.filePath(QStringLiteral("not-there")));
    const QString userFile = Dir.path() + "/data/TessavoTest/TsPaint.ini";
    EXPECT_EQ(SettingsFilePath(), userFile);
    EXPECT_FALSE(QFileInfo::exists(Dir.path() + "/data/TessavoTest"));
    EXPECT_EQ(SettingsFilePathForWriting(), userFile);
    EXPECT_TRUE(QFileInfo(Dir.path() + "/data/TessavoTest").isDir());

    QCoreApplication::setApplicationName(oldName);
    if (oldDataHome.isNull())
        qunsetenv("XDG_DATA_HOME");
    else
        qputenv("XDG_DATA_HOME", oldDataHome);
    basTsMainPro::SetAppFolder(QString());
}
