#include "basTsMainPro.h"

#include <QFileInfo>

#include <sys/stat.h>

#include "SettingsFileTest.h"

using namespace basTsMainPro;

TEST(basTsMainPro, ParseFileSpecParts)
{
    const QString path255 = QStringLiteral("/") + QString(250, QLatin1Char('p')) + QStringLiteral(".png");
    const QString path256 = QStringLiteral("/") + QString(251, QLatin1Char('p')) + QStringLiteral(".png");
    const struct {
        QString Path;
        const char* Parts[7]; // parts 0..6
    } cases[] = {
        {"/home/user/pics/photo.final.png",
         {"/home/user/pics/", "/home/user/pics/photo.final", "", "/home/user/pics/", "photo.final.png", "photo.final",
          ".png"}},
        {"name", {"", "name", "", "", "name", "name", ""}},
        {"/dir.d/file", {"/dir.d/", "/dir.d/file", "", "/dir.d/", "file", "file", ""}},
        {"/folder/", {"/folder/", "/folder/", "", "/folder/", "", "", ""}},
        {"/x/archive.", {"/x/", "/x/archive", "", "/x/", "archive.", "archive", "."}},
        {"rel/a.b", {"rel/", "rel/a", "", "rel/", "a.b", "a", ".b"}},
    };
    for (const QString& refused : {QString("$x/a.png"), QString(" /a.png"), QString("\t/a.png"), QString(), path256})
        for (int part = 0; part <= 6; ++part)
            EXPECT_EQ(ParseFileSpec(refused, part), "") << refused.toStdString() << " part " << part;
    for (const auto& c : cases)
        for (int part = 0; part <= 6; ++part)
            EXPECT_EQ(ParseFileSpec(c.Path, part), QString::fromUtf8(c.Parts[part]))
                << c.Path.toStdString() << " part " << part;
    EXPECT_EQ(ParseFileSpec(path255, 4), QString(250, QLatin1Char('p')) + QStringLiteral(".png"));
    EXPECT_EQ(ParseFileSpec("/a/b.png", -1), "");
    EXPECT_EQ(ParseFileSpec("/a/b.png", 7), "");
}

TEST(basTsMainPro, ShortenPathForDisplay)
{
    const QString longName = QString(90, QLatin1Char('n')) + QStringLiteral(".png");
    const struct {
        QString Path;
        int MaxLen;
        QString Expected;
    } cases[] = {
        {"/a/b/c.png", 80, "/a/b/c.png"},         // three "/": unchanged
        {"/a/b/c/d.png", 80, "/a/...../d.png"},   // four: may even grow
        {"relative/dir/x/y/z.png", 80, "relative/dir/...../z.png"},
        {"/home/" + longName, 80, "/ho......" + QString(67, QLatin1Char('n')) + ".png"},
        {"/a/b/c/d/" + longName, 80, "/a/......" + QString(67, QLatin1Char('n')) + ".png"},
        {"/abcdefghij", 10, "/ab......j"},        // one over
        {"/abcdefghi", 10, "/abcdefghi"},         // exactly maxLen
        {"abcdefghijkl", 10, "abc......l"},
        {"abcdefghijkl", 5, "abc......"},         // no tail below 9
        {"", 80, ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ShortenPathForDisplay(c.Path, c.MaxLen), c.Expected) << c.Path.toStdString();
    EXPECT_EQ(ShortenPathForDisplay("/home/" + longName, DisplayPathLength).size(), 80);
}

TEST(basTsMainPro, FileAndFolderTests)
{
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("picture.png"));
    WriteFile(file, "");
    const QString pipe = dir.filePath(QStringLiteral("pipe"));
    ASSERT_EQ(mkfifo(pipe.toLocal8Bit().constData(), 0600), 0);

    const struct {
        QString Path;
        bool IsFile;
        bool IsFolder;
    } cases[] = {
        {file, true, false},
        {dir.path(), false, true},
        {dir.path() + "/", false, true},
        {dir.filePath(QStringLiteral("missing.png")), false, false},
        {pipe, false, false}, // must not wait for a writer
        {"", false, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(FileExists(c.Path), c.IsFile) << c.Path.toStdString();
        EXPECT_EQ(FolderExists(c.Path), c.IsFolder) << c.Path.toStdString();
    }
}

TEST(basTsMainPro, AppFolderEndsInSlashAndCanBeSet)
{
    SetAppFolder(QString());
    const QString own = AppFolder();
    EXPECT_TRUE(own.endsWith('/'));
    EXPECT_TRUE(QFileInfo::exists(own + "tessavo_shell_tests")) << own.toStdString();
    SetAppFolder("/opt/tessavo");
    EXPECT_EQ(AppFolder(), "/opt/tessavo/");
    SetAppFolder("/opt/tessavo/");
    EXPECT_EQ(AppFolder(), "/opt/tessavo/");
    SetAppFolder(QString());
    EXPECT_EQ(AppFolder(), own);
}
