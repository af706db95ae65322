// The frame: settings on load, recent files, options, command-line files, closing.
#include "FrameTest.h"

#include "basSettings.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QDir>
#include <QTest>
#include <QTextBrowser>

namespace {

QByteArray HistoryIni(const QStringList& paths)
{
    QByteArray ini = "[File History]\r\n";
    for (int i = 0; i < paths.size(); ++i)
        ini += QStringLiteral("%1.=%2\r\n").arg(i + 1).arg(paths[i]).toUtf8();
    return ini;
}

} // namespace

TEST_F(FrameTest, LoadReadsOptionsAndListsTheHistory)
{
    const QString deep = Dir.filePath(QStringLiteral("one/two/three/four/picture.bmp"));
    WriteFile(Ini, "[Options]\r\nSDIOnly=-1\r\nWatchRAM=9\r\nRemindColorSetting=1\r\nFitInEvenIfSmaller=-1\r\n"
                   "[Settings]\r\nBrushSizeIndex=7\r\n" +
                       HistoryIni({deep, QStringLiteral("/tmp/b.gif")}));
    frmTsMainPro& frame = MakeFrame();

    EXPECT_TRUE(frame.mnuOptionsSub[1]->isChecked());
    EXPECT_FALSE(frame.mnuOptionsSub[4]->isChecked()); // "1" is not "-1"
    EXPECT_TRUE(frame.mnuOptionsSub[6]->isChecked());  // missing: default on
    EXPECT_TRUE(frame.mnuOptionsSub[8]->isChecked());
    for (QAction* entry : frame.mnuSubMonitorRAM)
        EXPECT_FALSE(entry->isChecked());
    EXPECT_TRUE(basTsMainPro::SDIOnly);
    EXPECT_EQ(basTsMainPro::WatchRAMIndex, 0);
    EXPECT_FALSE(basTsMainPro::RemindColorSetting);
    EXPECT_EQ(frame.cboBrushSize->currentText(), QStringLiteral("8"));
    EXPECT_EQ(frame.StatusPanel[3]->text(), QStringLiteral("SDI"));
    EXPECT_FALSE(frame.StatusPanel[3]->isEnabled());

    EXPECT_TRUE(frame.mnuFileHistory[0]->isVisible());
    EXPECT_EQ(frame.mnuFileHistory[1]->text(),
              QStringLiteral("&1 ") + basTsMainPro::ShortenPathForDisplay(deep, 80));
    EXPECT_TRUE(frame.mnuFileHistory[1]->text().contains(QStringLiteral("/...../picture.bmp")));
    EXPECT_EQ(frame.mnuFileHistory[2]->text(), QStringLiteral("&2 /tmp/b.gif"));
    EXPECT_EQ(frame.FileHistoryPaths[0], deep);
    EXPECT_FALSE(frame.mnuFileHistory[3]->isVisible());
    EXPECT_FALSE(frame.mnuFileHistory[3]->isEnabled());
    // Document menus are the documents' own.
    for (QMenu* menu : frame.DocumentMenus)
        EXPECT_FALSE(menu->menuAction()->isVisible());
}

TEST_F(FrameTest, GarbageSettingsReadAsDefaults)
{
    WriteFile(Ini, "[Options]\r\nSDIOnly=yes\r\nWatchRAM=abc\r\nRemindColorSetting=\r\n"
                   "[Settings]\r\nBrushSizeIndex=-1\r\n[ColorChart Pos]\r\nLeft=zz\r\nTop=99999999\r\n\x01\xff garbage\r\n");
    frmTsMainPro& frame = MakeFrame();
    EXPECT_FALSE(basTsMainPro::SDIOnly);
    EXPECT_TRUE(basTsMainPro::RemindColorSetting);
    EXPECT_EQ(frame.cboBrushSize->currentIndex(), 2);
    EXPECT_EQ(frame.StatusPanel[3]->text(), QStringLiteral("MDI"));
    EXPECT_TRUE(frame.StatusPanel[3]->isEnabled());
    EXPECT_FALSE(frame.mnuFileHistory[0]->isVisible());
    EXPECT_TRUE(Boxes.Calls().empty());
}

TEST_F(FrameTest, MissingHistoryFileSaysSoAndStaysListed)
{
    const QString gone = Dir.filePath(QStringLiteral("gone.bmp"));
    WriteFile(Ini, HistoryIni({gone}));
    frmTsMainPro& frame = MakeFrame();
    frame.mnuFileHistory[1]->trigger();
    ASSERT_EQ(Boxes.Texts(), std::vector<QString>{QStringLiteral("File not found.")});
    EXPECT_EQ(Boxes.Calls()[0].Title, QStringLiteral("Tessavo, Icon Editor & Animated GIF Editor"));
    EXPECT_EQ(frame.FileHistoryPaths[0], gone);
    EXPECT_TRUE(frame.mnuFileHistory[1]->isVisible());
    EXPECT_TRUE(frame.MdiArea->subWindowList().isEmpty());
}

TEST_F(FrameTest, SdiIsRefusedWithMoreThanOneDocument)
{
    frmTsMainPro& frame = MakeFrame();
    OpenChild();
    OpenChild();
    frame.mnuOptionsSub[1]->trigger();
    EXPECT_EQ(Boxes.Texts(),
              std::vector<QString>{QStringLiteral("Cannot change to SDI when there are more than one documents currently.")});
    EXPECT_FALSE(frame.mnuOptionsSub[1]->isChecked());
    EXPECT_FALSE(basTsMainPro::SDIOnly);
    EXPECT_EQ(frame.StatusPanel[3]->text(), QStringLiteral("MDI"));
}

TEST_F(FrameTest, CommandLineFileOpensByExtensionOnly)
{
    frmTsMainPro& frame = MakeFrame();
    const QString picture = Dir.filePath(QStringLiteral("a b.Bmp"));
    const QString text = Dir.filePath(QStringLiteral("notes.txt"));
    WriteFile(picture, "BM");
    WriteFile(text, "text");

    frame.OpenFromCommandLine(text);
    frame.OpenFromCommandLine(Dir.filePath(QStringLiteral("missing.bmp")));
    EXPECT_TRUE(frame.MdiArea->subWindowList().isEmpty());
    EXPECT_TRUE(Boxes.Calls().empty());

    frame.OpenFromCommandLine(QLatin1Char('"') + picture + QLatin1Char('"'));
    ASSERT_EQ(frame.MdiArea->subWindowList().size(), 1);
    QWidget* child = frame.ActiveChild();
    EXPECT_EQ(child->windowTitle(), basTsMainPro::ShortenPathForDisplay(picture, 80));
    EXPECT_EQ(child->property("Tag").toString(), QStringLiteral("0"));
    EXPECT_EQ(basTsMainPro::DocOpenMode, 2);
    EXPECT_EQ(basTsMainPro::DocOpenPath, picture);

    // In SDI mode the open document loads the file itself.
    basTsMainPro::SDIOnly = true;
    frame.OpenFromCommandLine(picture);
    EXPECT_EQ(frame.MdiArea->subWindowList().size(), 1);
    EXPECT_TRUE(static_cast<RecordingChild*>(child)->Calls.contains(QStringLiteral("LoadOpenFile(%1, 2)").arg(picture)));
    basTsMainPro::SDIOnly = false;
}

TEST_F(FrameTest, ExtensionTests)
{
    struct Case {
        const char* Path;
        bool Allowed;
        bool IconEditor;
    };
    const Case cases[] = {
        {"/x/a.bmp", true, false}, {"/x/a.JPEG", true, false}, {"/x/a.tiff", true, false},
        {"/x/a.ico", true, true},  {"/x/a.CUR", true, true},   {"/x/a.jp", false, false},
        {"/x/a.ani", false, false}, {"/x/a", false, false},    {".ico", true, false},
    };
    for (const Case& c : cases) {
        const QString path = QString::fromLatin1(c.Path);
        EXPECT_EQ(frmTsMainPro::CommandLineExtensionAllowed(path), c.Allowed) << c.Path;
        EXPECT_EQ(frmTsMainPro::OpensInIconEditor(path, true), c.IconEditor) << c.Path;
        EXPECT_FALSE(frmTsMainPro::OpensInIconEditor(path, false)) << c.Path;
    }
}

TEST_F(FrameTest, SecondStartHandsItsFileToTheHiddenBox)
{
    frmTsMainPro& frame = MakeFrame();
    const QString picture = Dir.filePath(QStringLiteral("second.gif"));
    WriteFile(picture, "GIF89a");
    frame.txbCommandHidden->setText(picture);
    EXPECT_TRUE(frame.txbCommandHidden->text().isEmpty());
    ASSERT_EQ(frame.MdiArea->subWindowList().size(), 1);
    EXPECT_EQ(basTsMainPro::DocOpenPath, picture);
}

TEST_F(FrameTest, ClosingAsksAboutUnsavedWorkAndWritesOptions)
{
    frmTsMainPro& frame = MakeFrame();
    OpenChild();
    basTsMainPro::DocSlots()[0].Dirty = true;
    frame.mnuOptionsSub[8]->trigger();

    Boxes.Answer(basMsgBox::MsgBoxResult::No);
    EXPECT_FALSE(frame.close());
    EXPECT_EQ(Boxes.Texts(), std::vector<QString>{QStringLiteral(
                                 "Changes to one or more files have not been saved yet.\nProceed to close all windows?")});
    EXPECT_EQ(Boxes.Calls()[0].Buttons, basMsgBox::MsgBoxButtons::YesNo);
    EXPECT_EQ(frame.MdiArea->subWindowList().size(), 1);

    Boxes.Answer(basMsgBox::MsgBoxResult::Yes);
    EXPECT_TRUE(frame.close());
    const std::string ini = ReadFile(Ini);
    EXPECT_NE(ini.find("FitInEvenIfSmaller=-1"), std::string::npos) << ini;
    EXPECT_NE(ini.find("WatchRAM=3"), std::string::npos) << ini;
    EXPECT_NE(ini.find("BrushSizeIndex=2"), std::string::npos) << ini;
    // An unset chart position is kept on the screen, at its top left corner.
    EXPECT_NE(ini.find("[ColorChart Pos]\nLeft=0\nTop=0"), std::string::npos) << ini;
    // Asked once: a confirmed close does not ask again.
    EXPECT_EQ(Boxes.Calls().size(), 2u);
}

TEST_F(FrameTest, RamWatchRemindsBelowItsLimit)
{
    MakeFrame();
    basTsMainPro::SetAvailablePhysicalKBForTest(25000);
    basTsMainPro::WatchRAMIndex = 2; // 20000 KB
    EXPECT_TRUE(basTsMainPro::CheckRamLevel());
    basTsMainPro::WatchRAMIndex = 3; // 30000 KB
    EXPECT_FALSE(basTsMainPro::CheckRamLevel());
    basTsMainPro::WatchRAMIndex = 0;
    EXPECT_TRUE(basTsMainPro::CheckRamLevel());
    basTsMainPro::SetAvailablePhysicalKBForTest(-1);
    ASSERT_EQ(Boxes.Calls().size(), 1u);
    EXPECT_EQ(Boxes.Calls()[0].Text, QStringLiteral("Reminder: Your current RAM memory at 25000 KB is running low.\n"
                                                     "You may wish to try to reboot.\n\n"
                                                     "(Note: You can change Option to remove RAM monitoring)"));
    EXPECT_EQ(Boxes.Calls()[0].Icon, basMsgBox::MsgBoxIcon::Information);
}

TEST_F(FrameTest, HelpNeedsItsFolder)
{
    frmTsMainPro& frame = MakeFrame();
    frame.mnuHelpSub_Click(0);
    EXPECT_EQ(Boxes.Texts(), std::vector<QString>{QStringLiteral("TsPaint.chm missing in current folder.")});

    ASSERT_TRUE(QDir(Dir.path()).mkpath(QStringLiteral("help")));
    WriteFile(Dir.filePath(QStringLiteral("help/toolbox.html")), "<html><body><h1>Tools</h1></body></html>");
    frame.mnuHelpSub_Click(1);
    auto* browser = qobject_cast<QTextBrowser*>(basTsMainPro::FindForm(QStringLiteral("frmTsHelp")));
    ASSERT_NE(browser, nullptr);
    EXPECT_TRUE(browser->toPlainText().contains(QStringLiteral("Tools")));
    EXPECT_EQ(Boxes.Calls().size(), 1u);
    browser->close();
}

TEST_F(FrameTest, FrameKeepsItsMinimumSize)
{
    frmTsMainPro& frame = MakeFrame();
    frame.show();
    frame.resize(300, 200);
    EXPECT_EQ(frame.width(), 790);  // 11850 twips
    EXPECT_EQ(frame.height(), 587); // 8805 twips
}

TEST_F(FrameTest, ColourDepthReminder)
{
    EXPECT_EQ(frmTsMainPro::ColorDepthReminderText(),
              QStringLiteral("Your current display setting in Windows is below 32-bit True Color.\n"
                             "(To stop this reminder, uncheck Options submenu)"));
    // True colour screens report depth 24 and count as 32 bits per pixel; 16-bit screens remind.
    EXPECT_EQ(frmTsMainPro::ScreenBitsPerPixel(24), 32);
    EXPECT_EQ(frmTsMainPro::ScreenBitsPerPixel(32), 32);
    EXPECT_EQ(frmTsMainPro::ScreenBitsPerPixel(16), 16);
}
