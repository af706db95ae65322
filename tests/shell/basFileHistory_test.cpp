#include "basFileHistory.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include "SettingsFileTest.h"

using namespace basFileHistory;
using basFileHistoryTest = SettingsFileTest;

namespace {

QStringList Paths(const HistoryList& list)
{
    QStringList paths;
    for (const HistoryEntry& entry : list.Entries)
        paths.append(entry.FullPath);
    return paths;
}

} // namespace

TEST_F(basFileHistoryTest, NewestFirstAndEightAtMost)
{
    EXPECT_TRUE(AddToHistory(SectionPaint, "/p/1.png", Ini));
    EXPECT_EQ(ReadFile(Ini), "[File History]\n1.=/p/1.png\n");
    for (int i = 2; i <= 9; ++i)
        EXPECT_TRUE(AddToHistory(SectionPaint, QStringLiteral("/p/%1.png").arg(i), Ini));
    EXPECT_EQ(ReadFile(Ini), "[File History]\n1.=/p/9.png\n2.=/p/8.png\n3.=/p/7.png\n4.=/p/6.png\n"
                             "5.=/p/5.png\n6.=/p/4.png\n7.=/p/3.png\n8.=/p/2.png\n");
    // A file further down moves to the top; the rest keep their order.
    EXPECT_TRUE(AddToHistory(SectionPaint, "/p/5.png", Ini));
    EXPECT_EQ(Paths(ListHistory(SectionPaint, Ini)),
              (QStringList{"/p/5.png", "/p/9.png", "/p/8.png", "/p/7.png", "/p/6.png", "/p/4.png", "/p/3.png",
                           "/p/2.png"}));
}

TEST_F(basFileHistoryTest, ReopeningTheFirstFileChangesNothing)
{
    const char before[] = "; mine\r\n[File History]\r\n1.=/p/a.png\r\n2.=/p/b.png\r\n[Options]\r\nSDIOnly=0\r\n";
    WriteFile(Ini, before);
    const QDateTime old = QDateTime::fromSecsSinceEpoch(1000000000);
    {
        QFile file(Ini);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.setFileTime(old, QFileDevice::FileModificationTime));
    }
    EXPECT_TRUE(AddToHistory(SectionPaint, "/p/a.png", Ini));
    EXPECT_TRUE(AddToHistory(SectionPaint, "  /p/a.png\t", Ini)); // equal after trimming
    EXPECT_EQ(ReadFile(Ini), before);
    EXPECT_EQ(QFileInfo(Ini).lastModified(), old);
}

TEST_F(basFileHistoryTest, EmptiesAndCopiesAreDroppedWhenTheListIsRebuilt)
{
    WriteFile(Ini, "[File History GIFani]\r\n1.=/a.gif\r\n2.=\r\n3.=/b.gif\r\n4.=/a.gif\r\n7.=/c.gif\r\n"
                   "[Other]\r\nx=1\r\n");
    EXPECT_TRUE(AddToHistory(SectionGIFani, "/c.gif", Ini));
    // Only copies of the new path go; the list is otherwise taken as it stands.
    EXPECT_EQ(ReadFile(Ini), "[File History GIFani]\r\n1.=/c.gif\r\n2.=/a.gif\r\n3.=/b.gif\r\n"
                             "4.=/a.gif\r\n[Other]\r\nx=1\r\n");
    // With "1." empty the path simply becomes "1.", whatever follows.
    WriteFile(Ini, "[File History GIFani]\n2.=/b.gif\n");
    EXPECT_TRUE(AddToHistory(SectionGIFani, "/b.gif", Ini));
    EXPECT_EQ(ReadFile(Ini), "[File History GIFani]\n2.=/b.gif\n1.=/b.gif\n");
    EXPECT_FALSE(AddToHistory(SectionGIFani, "  ", Ini));
}

TEST_F(basFileHistoryTest, TheFourListsAreIndependent)
{
    for (int round = 1; round <= 2; ++round)
        for (const QString section : {SectionPaint, SectionIconEditor, SectionGIFani, SectionANIcursor})
            EXPECT_TRUE(AddToHistory(section, QStringLiteral("/%1/%2").arg(section).arg(round), Ini));
    EXPECT_EQ(ReadFile(Ini),
              "[File History]\n1.=/File History/2\n2.=/File History/1\n"
              "[File History Icon Editor]\n1.=/File History Icon Editor/2\n2.=/File History Icon Editor/1\n"
              "[File History GIFani]\n1.=/File History GIFani/2\n2.=/File History GIFani/1\n"
              "[File History - ANIcursor]\n1.=/File History - ANIcursor/2\n2.=/File History - ANIcursor/1\n");
}

TEST_F(basFileHistoryTest, ListGivesNumberedCaptionsAndChoosingTakesTheFullPath)
{
    const HistoryList none = ListHistory(SectionPaint, Ini);
    EXPECT_TRUE(none.Entries.empty());
    EXPECT_FALSE(none.ShowSeparator);
    EXPECT_FALSE(QFile::exists(Ini));

    const QString present = Dir.filePath("folder/with/a/deep/" + QString(90, QLatin1Char('p')) + ".png");
    ASSERT_TRUE(QDir().mkpath(QFileInfo(present).absolutePath()));
    WriteFile(present, "x");
    const QString longPath = "/home/user/pictures/holidays/2021/" + QString(80, QLatin1Char('s')) + ".png";
    WriteFile(Ini, ("[File History Icon Editor]\n2.=  " + present + "  \n3.=\n5.=/b.cur\n8.=" + longPath
                    + "\n[File History]\n1.=/other.png\n").toUtf8());
    const HistoryList list = ListHistory(SectionIconEditor, Ini);
    EXPECT_EQ(Paths(list), (QStringList{present, "/b.cur", longPath}));
    EXPECT_TRUE(list.ShowSeparator);
    ASSERT_EQ(list.Entries.size(), 3u);
    EXPECT_EQ(list.Entries[1].Caption, "&2 /b.cur");
    EXPECT_EQ(list.Entries[2].Caption, "&3 /ho......" + QString(67, QLatin1Char('s')) + ".png");

    // A missing file is chosen as well, and stays in the list.
    const QString expected[] = {present, "/b.cur", longPath, "", ""};
    for (int index : {0, 1, 2, -1, 3}) {
        const HistoryChoice choice = ChooseHistoryEntry(list, index);
        EXPECT_EQ(choice.FullPath, expected[index < 0 ? 3 : index]) << index;
        EXPECT_EQ(choice.Exists, index == 0) << index;
    }
    EXPECT_EQ(Paths(ListHistory(SectionIconEditor, Ini)), Paths(list));
    EXPECT_TRUE(ListHistory(SectionANIcursor, Ini).Entries.empty());
    EXPECT_STREQ(FileNotFoundMessage, "File not found.");
    EXPECT_EQ(EntryKey(8), "8.");
}
