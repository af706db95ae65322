#include "basINI.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace basINI;

// Readable failure messages: text as text, bytes with their control characters escaped.
static void PrintTo(const QString& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
}

static void PrintTo(const QByteArray& bytes, std::ostream* os)
{
    *os << '"';
    for (const char c : bytes) {
        const auto u = static_cast<unsigned char>(c);
        if (u >= 0x20 && u < 0x7F)
            *os << c;
        else
            *os << "\\x" << "0123456789ABCDEF"[u >> 4] << "0123456789ABCDEF"[u & 15];
    }
    *os << '"';
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

class basINITest : public ::testing::Test {
protected:
    QTemporaryDir Dir;
    QString Ini = Dir.filePath(QStringLiteral("TsPaint.ini"));
};

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

struct ReadCase {
    const char* Section;
    const char* Key;
    const char* Expected;
};

const ReadCase ReadCases[] = {
    {"Options", "SDIOnly", "-1"},
    {"OPTIONS", "sdionly", "-1"},     // case-insensitive; the first of duplicate keys wins
    {"Options", "WatchRAM", "2"},     // key and value trimmed
    {"Options", "Empty", "<def>"},    // empty value reads as missing
    {"Options", "Blank", "<def>"},
    {"Options", "Missing", "<def>"},
    {"Options", "No equals sign here", "<def>"},
    {"Options", "Url", "a=b=c"},      // only the first "=" separates
    {"Options", "", "<def>"},
    {"Options", "Extra", "x"},        // a repeated section continues the first
    {"Broken", "Key", "v"},           // a header without "]"
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
        QByteArray bytes(ReadSample);
        bytes.replace("\r\n", lineEnd);
        WriteBytes(Ini, bytes);
        for (const ReadCase& c : ReadCases)
            EXPECT_EQ(IniRead(c.Section, c.Key, QStringLiteral("<def>"), Ini), QString::fromUtf8(c.Expected))
                << "line end " << QByteArray(lineEnd).toHex().constData() << " [" << c.Section << "] " << c.Key;
    }
}

TEST_F(basINITest, MissingFileGivesDefault)
{
    EXPECT_EQ(IniRead("Options", "SDIOnly", "d", Ini), "d");
    EXPECT_EQ(IniRead("Options", "SDIOnly", "d", Dir.path()), "d"); // a folder is no settings file
    EXPECT_FALSE(QFile::exists(Ini));
}

TEST_F(basINITest, ValueIsCappedAt2047Characters)
{
    const QString exact(2047, QLatin1Char('x'));
    const QString longer(3000, QLatin1Char('y'));
    const QString pairAtEdge = QString(2046, QLatin1Char('z')) + QString::fromUtf8("\xF0\x9F\x98\x80");
    WriteBytes(Ini, "[S]\nexact=" + exact.toUtf8() + "\nlonger=" + longer.toUtf8() + "\npair=" + pairAtEdge.toUtf8()
                        + "\n");
    EXPECT_EQ(IniRead("S", "exact", "", Ini), exact);
    EXPECT_EQ(IniRead("S", "longer", "", Ini), QString(2047, QLatin1Char('y')));
    EXPECT_EQ(IniRead("S", "pair", "", Ini), QString(2046, QLatin1Char('z'))); // no half character
    EXPECT_EQ(IniRead("S", "none", longer, Ini).size(), 2047);
}

TEST_F(basINITest, TextIsUtf8WithLatin1Fallback)
{
    WriteBytes(Ini, "\xEF\xBB\xBF[Gr\xC3\xB6\xC3\x9F" "e]\n\xC3\x84pfel=caf\xC3\xA9\nOld=caf\xE9\nMixed=\xFF\xFE\n");
    EXPECT_EQ(IniRead(QString::fromUtf8("GR\xC3\x96\xC3\x9F" "E"), QString::fromUtf8("\xC3\xA4pfel"), "", Ini),
              QString::fromUtf8("caf\xC3\xA9"));
    EXPECT_EQ(IniRead(QString::fromUtf8("Gr\xC3\xB6\xC3\x9F" "e"), "old", "", Ini), QString::fromLatin1("caf\xE9"));
    EXPECT_EQ(IniRead(QString::fromUtf8("Gr\xC3\xB6\xC3\x9F" "e"), "Mixed", "", Ini), QString::fromLatin1("\xFF\xFE"));
    ASSERT_TRUE(IniWrite(QString::fromUtf8("Gr\xC3\xB6\xC3\x9F" "e"), "New", QString::fromUtf8("\xE2\x82\xAC"), Ini));
    EXPECT_TRUE(ReadBytes(Ini).endsWith("Mixed=\xFF\xFE\nNew=\xE2\x82\xAC\n"));
}

namespace {

const char WriteSample[] =
    "; comment\r\n"
    "\r\n"
    "[Options]\r\n"
    "SDIOnly = 0\r\n"
    "foreign line\r\n"
    "\r\n"
    "[Other]\r\n"
    "a=1\r\n";

struct WriteCase {
    const char* Section;
    const char* Key;
    const char* Value;
    const char* Expected;
};

const WriteCase WriteCases[] = {
    // An existing key keeps its place, its spelling and the blanks before its value.
    {"options", "sdionly", "-1",
     "; comment\r\n\r\n[Options]\r\nSDIOnly = -1\r\nforeign line\r\n\r\n[Other]\r\na=1\r\n"},
    // A new key follows the last line of its section, ahead of the blank line.
    {"Options", "WatchRAM", "3",
     "; comment\r\n\r\n[Options]\r\nSDIOnly = 0\r\nforeign line\r\nWatchRAM=3\r\n\r\n[Other]\r\na=1\r\n"},
    {"OTHER", "b", "x=y",
     "; comment\r\n\r\n[Options]\r\nSDIOnly = 0\r\nforeign line\r\n\r\n[Other]\r\na=1\r\nb=x=y\r\n"},
    {"New Section", "k", " v ",
     "; comment\r\n\r\n[Options]\r\nSDIOnly = 0\r\nforeign line\r\n\r\n[Other]\r\na=1\r\n[New Section]\r\nk= v \r\n"},
    {"Options", "SDIOnly", "",
     "; comment\r\n\r\n[Options]\r\nSDIOnly = \r\nforeign line\r\n\r\n[Other]\r\na=1\r\n"},
};

struct SmallCase {
    const char* Before;
    const char* Section;
    const char* Key;
    const char* Value;
    const char* After;
};

const SmallCase SmallCases[] = {
    {"[A]\nx=1", "A", "y", "2", "[A]\nx=1\ny=2\n"},          // no final line end
    {"[A]\nx=1", "B", "k", "v", "[A]\nx=1\n[B]\nk=v\n"},
    {"[A]\n\n\n[B]\n", "a", "k", "v", "[A]\nk=v\n\n\n[B]\n"}, // empty section
    {"k=1\n[A]\n", "A", "k", "2", "k=1\n[A]\nk=2\n"},        // lines before any section belong to none
    {"[A]\n;k=1\n", "A", "k", "2", "[A]\n;k=1\nk=2\n"},      // a comment is not the key
    {"[A]\r\nk=old\r", "A", "k", "new", "[A]\r\nk=new\r"},
    {"", "S", "k", "v", "[S]\nk=v\n"},
    {"[A]\nx=1\n[B]\n[a]\ny=2\n", "A", "z", "3", "[A]\nx=1\nz=3\n[B]\n[a]\ny=2\n"},
    {"[A]\nx=1\n[B]\n[a]\ny=2\n", "A", "Y", "3", "[A]\nx=1\n[B]\n[a]\ny=3\n"},
};

} // namespace

TEST_F(basINITest, WriteKeepsEveryOtherByte)
{
    for (const WriteCase& c : WriteCases) {
        WriteBytes(Ini, WriteSample);
        EXPECT_TRUE(IniWrite(c.Section, c.Key, c.Value, Ini));
        EXPECT_EQ(ReadBytes(Ini), QByteArray(c.Expected)) << "[" << c.Section << "] " << c.Key;
    }
    for (const SmallCase& c : SmallCases) {
        WriteBytes(Ini, c.Before);
        EXPECT_TRUE(IniWrite(c.Section, c.Key, c.Value, Ini));
        EXPECT_EQ(ReadBytes(Ini), QByteArray(c.After)) << c.Before;
        EXPECT_EQ(IniRead(c.Section, c.Key, "", Ini), c.Value);
    }
}

TEST_F(basINITest, RefusedWritesLeaveTheFile)
{
    const struct {
        const char* Section;
        const char* Key;
        const char* Value;
    } refused[] = {{"", "k", "v"}, {"S", "", "v"}, {"S", "a=b", "v"}, {"S", "k", "two\nlines"},
                   {"S", "k", "cr\r"}, {"S]", "k", "v"}, {"S", ";k", "v"}, {"S", "[k", "v"}};
    WriteBytes(Ini, WriteSample);
    for (const auto& c : refused)
        EXPECT_FALSE(IniWrite(c.Section, c.Key, c.Value, Ini)) << c.Section << " " << c.Key;
    EXPECT_EQ(ReadBytes(Ini), QByteArray(WriteSample));
}

TEST_F(basINITest, WriteCreatesTheFileButNotTheFolder)
{
    EXPECT_TRUE(IniWrite("Options", "SDIOnly", "-1", Ini));
    EXPECT_EQ(ReadBytes(Ini), QByteArray("[Options]\nSDIOnly=-1\n"));
    EXPECT_TRUE(IniWrite("Options", "WatchRAM", "3", Ini));
    EXPECT_EQ(ReadBytes(Ini), QByteArray("[Options]\nSDIOnly=-1\nWatchRAM=3\n"));
    // Only the settings file is left: the temporary of each write was renamed over it.
    EXPECT_EQ(QDir(Dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"TsPaint.ini"});

    const QString inMissingFolder = Dir.filePath(QStringLiteral("gone/TsPaint.ini"));
    EXPECT_FALSE(IniWrite("Options", "SDIOnly", "-1", inMissingFolder));
    EXPECT_FALSE(QFileInfo::exists(Dir.filePath(QStringLiteral("gone"))));
    EXPECT_FALSE(IniWrite("Options", "SDIOnly", "-1", Dir.path())); // a folder cannot be replaced
    EXPECT_TRUE(QFileInfo(Dir.path()).isDir());
}

TEST_F(basINITest, DeleteRemovesTheKeyLinesOnly)
{
    const struct {
        const char* Before;
        const char* Section;
        const char* Key;
        const char* After;
    } cases[] = {
        {"[A]\r\nx=1\r\ny=2\r\n[B]\r\nx=3\r\n", "a", "X", "[A]\r\ny=2\r\n[B]\r\nx=3\r\n"},
        {"[A]\nx=1\n[B]\n[A]\nx=2\n", "A", "x", "[A]\n[B]\n[A]\n"}, // no older copy surfaces
        {"[A]\ny=2\nx=1", "A", "x", "[A]\ny=2\n"},
        {"[A]\ny=2\n", "A", "x", "[A]\ny=2\n"},
        {"[A]\n;x=1\nx\n", "A", "x", "[A]\n;x=1\nx\n"},
        {"[A]\nx=\n", "A", "x", "[A]\n"},
    };
    for (const auto& c : cases) {
        WriteBytes(Ini, c.Before);
        EXPECT_TRUE(IniDelete(c.Section, c.Key, Ini));
        EXPECT_EQ(ReadBytes(Ini), QByteArray(c.After)) << c.Before;
        EXPECT_EQ(IniRead(c.Section, c.Key, "gone", Ini), "gone");
    }
    QFile::remove(Ini);
    EXPECT_TRUE(IniDelete("A", "x", Ini));
    EXPECT_FALSE(QFile::exists(Ini));
}

TEST(basINIBuffer, AnyBytesSurviveReadWriteAndDelete)
{
    // Pseudo-random lines built from the characters that matter to the parser.
    const char alphabet[] = "[]=; \t\r\nAaSk#\xEF\xBB\xBF\xC3\xFF";
    uint32_t state = 12345;
    for (int round = 0; round < 300; ++round) {
        QByteArray bytes;
        const int length = round * 3;
        for (int i = 0; i < length; ++i) {
            state = state * 1103515245u + 12345u;
            bytes += alphabet[(state >> 16) % (sizeof(alphabet) - 1)];
        }
        ASSERT_TRUE(IniWriteBuffer(bytes, "A", "K", "value"));
        ASSERT_EQ(IniReadBuffer(bytes, "a", "k", ""), "value") << bytes.toHex().constData();
        ASSERT_TRUE(IniDeleteBuffer(bytes, "A", "k"));
        ASSERT_EQ(IniReadBuffer(bytes, "a", "k", "none"), "none") << bytes.toHex().constData();
    }
}
