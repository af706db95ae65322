#include "basFileHistory.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

using namespace basFileHistory;

static void PrintTo(const QString& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
}

namespace {

QByteArray ReadBytes(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray("<missing>");
    return file.readAll();
}

void WriteBytes(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

QStringList Paths(const HistoryList& list)
{
    QStringList paths;
    for (const HistoryEntry& entry : list.Entries)
        paths.append(entry.FullPath);
    return paths;
}

class basFileHistoryTest : public ::testing::Test {
protected:
    QTemporaryDir Dir;
    QString Ini = Dir.filePath(QStringLiteral("TsPaint.ini"));
};

} // namespace

TEST_F(basFileHistoryTest, NewestFirstAndEightAtMost)
{
    EXPECT_TRUE(AddToHistory(SectionPaint, "/p/1.png", Ini));
    EXPECT_EQ(ReadBytes(Ini), QByteArray("[File History]\n1.=/p/1.png\n"));
    for (int i = 2; i <= 9; ++i)
        EXPECT_TRUE(AddToHistory(SectionPaint, QStringLiteral("/p/%1.png").arg(i), Ini));
    EXPECT_EQ(ReadBytes(Ini), QByteArray("[File History]\n1.=/p/9.png\n2.=/p/8.png\n3.=/p/7.png\n4.=/p/6.png\n"
                                         "5.=/p/5.png\n6.=/p/4.png\n7.=/p/3.png\n8.=/p/2.png\n"));

    // A file further down moves to the top; the rest keep their order.
    EXPECT_TRUE(AddToHistory(SectionPaint, "/p/5.png", Ini));
    EXPECT_EQ(Paths(ListHistory(SectionPaint, Ini)),
              (QStringList{"/p/5.png", "/p/9.png", "/p/8.png", "/p/7.png", "/p/6.png", "/p/4.png", "/p/3.png",
                           "/p/2.png"}));
}

TEST_F(basFileHistoryTest, ReopeningTheFirstFileChangesNothing)
{
    WriteBytes(Ini, "; mine\r\n[File History]\r\n1.=/p/a.png\r\n2.=/p/b.png\r\n3.=/p/c.png\r\n[Options]\r\nSDIOnly=0\r\n");
    const QByteArray before = ReadBytes(Ini);
    const QDateTime old = QDateTime::fromSecsSinceEpoch(1000000000);
    {
        QFile file(Ini);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(old, QFileDevice::FileModificationTime));
    }
    const HistoryList listBefore = ListHistory(SectionPaint, Ini);
    EXPECT_TRUE(AddToHistory(SectionPaint, "/p/a.png", Ini));
    EXPECT_TRUE(AddToHistory(SectionPaint, "  /p/a.png\t", Ini)); // equal after trimming
    EXPECT_EQ(ReadBytes(Ini), before);
    EXPECT_EQ(QFileInfo(Ini).lastModified(), old);
    const HistoryList listAfter = ListHistory(SectionPaint, Ini);
    EXPECT_EQ(Paths(listAfter), Paths(listBefore));
}

TEST_F(basFileHistoryTest, EmptiesAndCopiesAreDroppedWhenTheListIsRebuilt)
{
    WriteBytes(Ini, "[File History GIFani]\r\n1.=/a.gif\r\n2.=\r\n3.=/b.gif\r\n4.=/a.gif\r\n7.=/c.gif\r\n"
                    "[Other]\r\nx=1\r\n");
    EXPECT_TRUE(AddToHistory(SectionGIFani, "/c.gif", Ini));
    // Only copies of the new path go; the list is otherwise taken as it stands.
    EXPECT_EQ(ReadBytes(Ini), QByteArray("[File History GIFani]\r\n1.=/c.gif\r\n2.=/a.gif\r\n3.=/b.gif\r\n"
                                         "4.=/a.gif\r\n[Other]\r\nx=1\r\n"));
    // With "1." empty the path simply becomes "1.", whatever follows.
    WriteBytes(Ini, "[File History GIFani]\n2.=/b.gif\n");
    EXPECT_TRUE(AddToHistory(SectionGIFani, "/b.gif", Ini));
    EXPECT_EQ(ReadBytes(Ini), QByteArray("[File History GIFani]\n2.=/b.gif\n1.=/b.gif\n"));
    EXPECT_FALSE(AddToHistory(SectionGIFani, "  ", Ini));
}

TEST_F(basFileHistoryTest, TheFourListsAreIndependent)
{
    const char* sections[] = {SectionPaint, SectionIconEditor, SectionGIFani, SectionANIcursor};
    for (int round = 1; round <= 2; ++round)
        for (const char* section : sections)
            EXPECT_TRUE(AddToHistory(section, QStringLiteral("/%1/%2").arg(QString::fromUtf8(section)).arg(round), Ini));
    EXPECT_EQ(ReadBytes(Ini),
              QByteArray("[File History]\n1.=/File History/2\n2.=/File History/1\n"
                         "[File History Icon Editor]\n1.=/File History Icon Editor/2\n2.=/File History Icon Editor/1\n"
                         "[File History GIFani]\n1.=/File History GIFani/2\n2.=/File History GIFani/1\n"
                         "[File History - ANIcursor]\n1.=/File History - ANIcursor/2\n"
                         "2.=/File History - ANIcursor/1\n"));
}

TEST_F(basFileHistoryTest, ListGivesNumberedCaptions)
{
    const HistoryList none = ListHistory(SectionPaint, Ini);
    EXPECT_TRUE(none.Entries.empty());
    EXPECT_FALSE(none.ShowSeparator);
    EXPECT_FALSE(QFile::exists(Ini));

    const QString longPath = "/home/user/pictures/holidays/2021/" + QString(80, QLatin1Char('s')) + ".png";
    WriteBytes(Ini, ("[File History Icon Editor]\n2.=  /icons/a.ico  \n3.=\n5.=/b.cur\n8.=" + longPath
                     + "\n[File History]\n1.=/other.png\n").toUtf8());
    const HistoryList list = ListHistory(SectionIconEditor, Ini);
    ASSERT_EQ(list.Entries.size(), 3u);
    EXPECT_TRUE(list.ShowSeparator);
    EXPECT_EQ(list.Entries[0].FullPath, "/icons/a.ico");
    EXPECT_EQ(list.Entries[0].Caption, "&1 /icons/a.ico");
    EXPECT_EQ(list.Entries[1].Caption, "&2 /b.cur");
    EXPECT_EQ(list.Entries[2].FullPath, longPath);
    EXPECT_EQ(list.Entries[2].Caption, "&3 /ho......" + QString(67, QLatin1Char('s')) + ".png");

    const HistoryList empty = ListHistory(SectionANIcursor, Ini);
    EXPECT_TRUE(empty.Entries.empty());
    EXPECT_FALSE(empty.ShowSeparator);
}

TEST_F(basFileHistoryTest, ChoosingAnEntryTakesTheFullPath)
{
    const QString present = Dir.filePath(QStringLiteral("folder/with/a/deep/") + QString(90, QLatin1Char('p')) + ".png");
    ASSERT_TRUE(QDir().mkpath(QFileInfo(present).absolutePath()));
    WriteBytes(present, "x");
    const QString gone = Dir.filePath(QStringLiteral("gone.png"));
    WriteBytes(Ini, ("[File History]\n1.=" + present + "\n2.=" + gone + "\n").toUtf8());

    const HistoryList list = ListHistory(SectionPaint, Ini);
    ASSERT_EQ(list.Entries.size(), 2u);
    EXPECT_NE(list.Entries[0].Caption.mid(3), present); // the caption is shortened
    const HistoryChoice first = ChooseHistoryEntry(list, 0);
    EXPECT_EQ(first.FullPath, present);
    EXPECT_TRUE(first.Exists);
    const HistoryChoice second = ChooseHistoryEntry(list, 1);
    EXPECT_EQ(second.FullPath, gone);
    EXPECT_FALSE(second.Exists);
    EXPECT_EQ(Paths(ListHistory(SectionPaint, Ini)), (QStringList{present, gone})); // a missing file stays
    for (int outside : {-1, 2}) {
        const HistoryChoice none = ChooseHistoryEntry(list, outside);
        EXPECT_TRUE(none.FullPath.isEmpty());
        EXPECT_FALSE(none.Exists);
    }
    EXPECT_STREQ(FileNotFoundMessage, "File not found.");
    EXPECT_EQ(EntryKey(8), "8.");
}
