#include "basINI.h"

#include <QDir>
#include <QFileInfo>

#include "SettingsFileTest.h"

using namespace basINI;
using basINITest = SettingsFileTest;

namespace {

// One file with every kind of line the reader meets in old settings files.
const char ReadSample[] =
    "; settings\r\n"
    "[Options]\r\n"
    "SDIOnly=-1\r\n"
    "  watchram =  2  \r\n"
    "Empty=\r\n"
    "Blank=   \t\r\n"
    "No equals sign here\r\n"
    "Url=a=b=c\r\n"
    "=orphan value\r\n"
    "\r\n"
    "[options]\r\n"
    "Extra=x\r\n"
    "SDIOnly=0\r\n"
    "[Broken\r\n"
    "Key=v\r\n"
    "[ Spaced Name ] trailing text\r\n"
    "K = spaced value \r\n"
    "; Comment=1\r\n"
    "#Hash=2\r\n"
    "Tabbed\t=\tt\t\r\n";

const struct {
    const char* Section;
    const char* Key;
    const char* Expected;
} ReadCases[] = {
    {"OPTIONS", "sdionly", "-1"},  // case-insensitive; the first of duplicate keys wins
    {"Options", "WatchRAM", "2"},  // key and value trimmed
    {"Options", "Empty", "<def>"}, // empty value reads as missing
    {"Options", "Blank", "<def>"},
    {"Options", "No equals sign here", "<def>"},
    {"Options", "Url", "a=b=c"},   // only the first "=" separates
    {"Options", "", "<def>"},
    {"Options", "Extra", "x"},     // a repeated section continues the first
    {"Broken", "Key", "v"},        // a header without "]"
    {" spaced name ", "k", "spaced value"},
    {"Spaced Name", "; Comment", "<def>"},
    {"Spaced Name", "#Hash", "<def>"},
    {"Spaced Name", "Tabbed", "t"},
    {"Nowhere", "Key", "<def>"},
    {"", "Key", "<def>"},
};

} // namespace

TEST_F(basINITest, ReadsWithEveryLineEnd)
{
    for (const char* lineEnd : {"\r\n", "\n", "\r"}) {
        WriteFile(Ini, QByteArray(ReadSample).replace("\r\n", lineEnd));
        for (const auto& c : ReadCases)
            EXPECT_EQ(IniRead(c.Section, c.Key, QStringLiteral("<def>"), Ini), QString::fromUtf8(c.Expected))
                << "line end " << QByteArray(lineEnd).toHex().constData() << " [" << c.Section << "] " << c.Key;
    }
    EXPECT_EQ(IniRead("Options", "SDIOnly", "d", Dir.filePath("missing.ini")), "d");
    EXPECT_FALSE(QFile::exists(Dir.filePath("missing.ini")));
    EXPECT_EQ(IniRead("Options", "SDIOnly", "d", Dir.path()), "d"); // a folder is no settings file
}

TEST_F(basINITest, ValueIsCappedAt2047Characters)
{
    const QString exact(2047, QLatin1Char('x'));
    const QString longer(3000, QLatin1Char('y'));
    const QString pairAtEdge = QString(2046, QLatin1Char('z')) + QString::fromUtf8("\xF0\x9F\x98\x80");
    WriteFile(Ini, "[S]\nexact=" + exact.toUtf8() + "\nlonger=" + longer.toUtf8() + "\npair=" + pairAtEdge.toUtf8()
                       + "\n");
    EXPECT_EQ(IniRead("S", "exact", "", Ini), exact);
    EXPECT_EQ(IniRead("S", "longer", "", Ini), QString(2047, QLatin1Char('y')));
    EXPECT_EQ(IniRead("S", "pair", "", Ini), QString(2046, QLatin1Char('z'))); // no half character
    EXPECT_EQ(IniRead("S", "none", longer, Ini).size(), 2047);
}

TEST_F(basINITest, TextIsUtf8WithLatin1Fallback)
{
    WriteFile(Ini, "\xEF\xBB\xBF[Gr\xC3\xB6\xC3\x9F" "e]\n\xC3\x84pfel=caf\xC3\xA9\nOld=caf\xE9\nMixed=\xFF\xFE\n");
    const QString section = QString::fromUtf8("Gr\xC3\xB6\xC3\x9F" "e");
    EXPECT_EQ(IniRead(QString::fromUtf8("GR\xC3\x96\xC3\x9F" "E"), QString::fromUtf8("\xC3\xA4pfel"), "", Ini),
              QString::fromUtf8("caf\xC3\xA9"));
    EXPECT_EQ(IniRead(section, "old", "", Ini), QString::fromLatin1("caf\xE9"));
    EXPECT_EQ(IniRead(section, "Mixed", "", Ini), QString::fromLatin1("\xFF\xFE"));
    ASSERT_TRUE(IniWrite(section, "New", QString::fromUtf8("\xE2\x82\xAC"), Ini));
    EXPECT_EQ(ReadFile(Ini), "\xEF\xBB\xBF[Gr\xC3\xB6\xC3\x9F" "e]\n\xC3\x84pfel=caf\xC3\xA9\nOld=caf\xE9\n"
                             "Mixed=\xFF\xFE\nNew=\xE2\x82\xAC\n");
}

TEST_F(basINITest, WriteAndDeleteKeepEveryOtherByte)
{
    const char sample[] = "; comment\r\n\r\n[Options]\r\nSDIOnly = 0\r\nforeign line\r\n\r\n[Other]\r\na=1\r\n";
    const struct {
        const char* Before;
        const char* Section;
        const char* Key;
        const char* Value; // null: the key is deleted
        const char* After;
    } cases[] = {
        // An existing key keeps its place, its spelling and the blanks before its value.
        {sample, "options", "sdionly", "-1",
         "; comment\r\n\r\n[Options]\r\nSDIOnly = -1\r\nforeign line\r\n\r\n[Other]\r\na=1\r\n"},
        {sample, "Options", "SDIOnly", "",
         "; comment\r\n\r\n[Options]\r\nSDIOnly = \r\nforeign line\r\n\r\n[Other]\r\na=1\r\n"},
        // A new key follows the last line of its section, ahead of the blank line.
        {sample, "Options", "WatchRAM", "3",
         "; comment\r\n\r\n[Options]\r\nSDIOnly = 0\r\nforeign line\r\nWatchRAM=3\r\n\r\n[Other]\r\na=1\r\n"},
        {sample, "OTHER", "b", "x=y",
         "; comment\r\n\r\n[Options]\r\nSDIOnly = 0\r\nforeign line\r\n\r\n[Other]\r\na=1\r\nb=x=y\r\n"},
        {sample, "New Section", "k", " v ",
         "; comment\r\n\r\n[Options]\r\nSDIOnly = 0\r\nforeign line\r\n\r\n[Other]\r\na=1\r\n"
         "[New Section]\r\nk= v \r\n"},
        {"[A]\nx=1", "A", "y", "2", "[A]\nx=1\ny=2\n"},          // no final line end
        {"[A]\n\n\n[B]\n", "a", "k", "v", "[A]\nk=v\n\n\n[B]\n"}, // empty section
        {"k=1\n[A]\n", "A", "k", "2", "k=1\n[A]\nk=2\n"},        // lines before any section belong to none
        {"[A]\n;k=1\n", "A", "k", "2", "[A]\n;k=1\nk=2\n"},      // a comment is not the key
        {"[A]\r\nk=old\r", "A", "k", "new", "[A]\r\nk=new\r"},
        {"", "S", "k", "v", "[S]\nk=v\n"},
        {"[A]\nx=1\n[B]\n[a]\ny=2\n", "A", "z", "3", "[A]\nx=1\nz=3\n[B]\n[a]\ny=2\n"},
        {"[A]\nx=1\n[B]\n[a]\ny=2\n", "A", "Y", "3", "[A]\nx=1\n[B]\n[a]\ny=3\n"},
        {"[A]\r\nx=1\r\ny=2\r\n[B]\r\nx=3\r\n", "a", "X", nullptr, "[A]\r\ny=2\r\n[B]\r\nx=3\r\n"},
        {"[A]\nx=1\n[B]\n[A]\nx=2\n", "A", "x", nullptr, "[A]\n[B]\n[A]\n"}, // no older copy surfaces
        {"[A]\ny=2\nx=1", "A", "x", nullptr, "[A]\ny=2\n"},
        {"[A]\n;x=1\nx\n", "A", "x", nullptr, "[A]\n;x=1\nx\n"},
        {"[A]\nx=\n", "A", "x", nullptr, "[A]\n"},
    };
    for (const auto& c : cases) {
        WriteFile(Ini, c.Before);
        EXPECT_TRUE(c.Value ? IniWrite(c.Section, c.Key, c.Value, Ini) : IniDelete(c.Section, c.Key, Ini));
        EXPECT_EQ(ReadFile(Ini), c.After) << c.Before;
        EXPECT_EQ(IniRead(c.Section, c.Key, "gone", Ini), c.Value && *c.Value ? QString(c.Value).trimmed() : "gone");
    }
    QFile::remove(Ini);
    EXPECT_TRUE(IniDelete("A", "x", Ini));
    EXPECT_FALSE(QFile::exists(Ini));
}

TEST_F(basINITest, RefusedWritesLeaveTheFile)
{
    const struct {
        const char* Section;
        const char* Key;
        const char* Value;
    } refused[] = {{"", "k", "v"}, {"S", "", "v"}, {"S", "a=b", "v"}, {"S", "k", "two\nlines"},
                   {"S", "k", "cr\r"}, {"S]", "k", "v"}, {"S", ";k", "v"}, {"S", "[k", "v"}};
    WriteFile(Ini, "[S]\r\nk=1\r\n");
    for (const auto& c : refused)
        EXPECT_FALSE(IniWrite(c.Section, c.Key, c.Value, Ini)) << c.Section << " " << c.Key;
    EXPECT_EQ(ReadFile(Ini), "[S]\r\nk=1\r\n");
}

TEST_F(basINITest, WriteCreatesTheFileButNotTheFolder)
{
    EXPECT_TRUE(IniWrite("Options", "SDIOnly", "-1", Ini));
    EXPECT_TRUE(IniWrite("Options", "WatchRAM", "3", Ini));
    EXPECT_EQ(ReadFile(Ini), "[Options]\nSDIOnly=-1\nWatchRAM=3\n");
    // Only the settings file is left: the temporary of each write was renamed over it.
    EXPECT_EQ(QDir(Dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"TsPaint.ini"});
    EXPECT_FALSE(IniWrite("Options", "SDIOnly", "-1", Dir.filePath(QStringLiteral("gone/TsPaint.ini"))));
    EXPECT_FALSE(QFileInfo::exists(Dir.filePath(QStringLiteral("gone"))));
    EXPECT_FALSE(IniWrite("Options", "SDIOnly", "-1", Dir.path())); // a folder cannot be replaced
    EXPECT_TRUE(QFileInfo(Dir.path()).isDir());
}

TEST(basINIBuffer, AnyBytesSurviveReadWriteAndDelete)
{
    // Pseudo-random lines built from the characters that matter to the parser.
    const char alphabet[] = "[]=; \t\r\nAaSk#\xEF\xBB\xBF\xC3\xFF";
    uint32_t state = 12345;
    for (int round = 0; round < 300; ++round) {
        QByteArray bytes;
        for (int i = 0; i < round * 3; ++i) {
            state = state * 1103515245u + 12345u;
            bytes += alphabet[(state >> 16) % (sizeof(alphabet) - 1)];
        }
        ASSERT_TRUE(IniWriteBuffer(bytes, "A", "K", "value"));
        ASSERT_EQ(IniReadBuffer(bytes, "a", "k", ""), "value") << bytes.toHex().constData();
        ASSERT_TRUE(IniDeleteBuffer(bytes, "A", "k"));
        ASSERT_EQ(IniReadBuffer(bytes, "a", "k", "none"), "none") << bytes.toHex().constData();
    }
}
