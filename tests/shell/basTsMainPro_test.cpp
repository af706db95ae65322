#include "basTsMainPro.h"

#include "DeviceContext.h"
#include "clsDIB.h"

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

TEST(basTsMainPro, BestFitSize)
{
    struct Case {
        int32_t W, H, MaxW, MaxH;
        bool Force;
        int32_t OutW, OutH;
    };
    const Case cases[] = {
        {100, 50, 200, 200, false, 100, 50},  // inside: unchanged
        {100, 50, 200, 200, true, 200, 100},  // forced: enlarged to the limit
        {400, 100, 200, 200, false, 200, 50}, // too wide
        {100, 400, 200, 200, false, 50, 200}, // too tall
        {300, 300, 200, 100, false, 100, 100},
        {3, 2, 4, 4, true, 4, 3},             // 2.67 rounds to 3
        {5, 2, 2, 10, true, 2, 1},            // 0.8 rounds to 1
    };
    for (const Case& c : cases) {
        int32_t w = -1, h = -1;
        BestFitSize(c.W, c.H, c.MaxW, c.MaxH, w, h, c.Force);
        EXPECT_EQ(w, c.OutW) << c.W << "x" << c.H;
        EXPECT_EQ(h, c.OutH) << c.W << "x" << c.H;
    }
}

TEST(basTsMainPro, ColourHelpers)
{
    EXPECT_EQ(ColorToHex(12, 34, 255), QStringLiteral("0C22FF"));
    EXPECT_EQ(ColorToHex(0, 0, 0), QStringLiteral("000000"));
    int16_t r = -5, g = 300, b = 128;
    ClampRGB(r, g, b);
    EXPECT_EQ(r, 0);
    EXPECT_EQ(g, 255);
    EXPECT_EQ(b, 128);
    EXPECT_EQ(RamLimitKB(0), 0);
    EXPECT_EQ(RamLimitKB(3), 30000);
    EXPECT_EQ(RamLimitKB(5), 0);
}

TEST(basTsMainPro, DocumentSlots)
{
    ResetDocSlots();
    EXPECT_FALSE(AnyDocumentOpen());
    EXPECT_EQ(NextFreeDocSlot(), 0);
    QWidget* const fake = reinterpret_cast<QWidget*>(uintptr_t{16}); // never dereferenced
    DocForms()[0] = fake;
    EXPECT_TRUE(AnyDocumentOpen());
    EXPECT_EQ(NextFreeDocSlot(), 1);
    EXPECT_EQ(DocSlots().size(), 2u);
    DocForms()[1] = fake;
    DocForms()[0] = nullptr;
    DocSlots()[0].Closed = true;
    EXPECT_EQ(NextFreeDocSlot(), 0); // a closed slot is used again
    ResetDocSlots();
    EXPECT_EQ(DocSlots().size(), 1u);
}

TEST(basTsMainPro, DialogMemoriesStartAtTheirDefaults)
{
    TextDialogMemory[2] = 45;
    ShadowMemory = 7;
    ResetDialogMemories();
    EXPECT_EQ(TextDialogMemory[0], -1);
    EXPECT_EQ(TextDialogMemory[2], -361);
    EXPECT_EQ(ShadowMemory, -1);
    EXPECT_EQ(RegionOperationMemory, -1);
}

TEST(basTsMainPro, NonBlankBounds)
{
    clsDIB picture;
    ASSERT_TRUE(picture.CreateBlankDIB(10, 8, 32, 0xFFFFFF, false));
    PixelBox box;
    EXPECT_FALSE(NonBlankBounds(picture, 0xFFFFFF, box));
    picture.DIBhDC()->SetPixelV(2, 6, 0x0000FF);
    picture.DIBhDC()->SetPixelV(7, 1, 0x00FF00);
    ASSERT_TRUE(NonBlankBounds(picture, 0xFFFFFF, box));
    EXPECT_EQ(box.Left, 2);
    EXPECT_EQ(box.Top, 1);
    EXPECT_EQ(box.Right, 7);
    EXPECT_EQ(box.Bottom, 6);
}

TEST_F(SettingsFileTest, DeleteFileSafeSparesReadOnlyFiles)
{
    const QString file = Dir.filePath(QStringLiteral("locked.bmp"));
    WriteFile(file, "BM");
    ASSERT_EQ(::chmod(file.toLocal8Bit().constData(), 0444), 0);
    EXPECT_TRUE(IsReadOnlyFile(file));
    EXPECT_FALSE(DeleteFileSafe(file));
    EXPECT_TRUE(QFileInfo::exists(file));
    EXPECT_TRUE(ClearFileAttributes(file));
    EXPECT_FALSE(IsReadOnlyFile(file));
    EXPECT_TRUE(DeleteFileSafe(file));
    EXPECT_FALSE(QFileInfo::exists(file));
}
