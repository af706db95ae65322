// The metafile loader against the public WMF and EMF suites, against metafiles built here with
// a known drawing, and against bytes that are not metafiles or are damaged.
#include "basPicture.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdint>
#include <dlfcn.h>
#include <random>
#include <thread>
#include <utility>
#include <vector>

// A spy on fontconfig's global teardown, which libemf2svg calls after resolving glyph-index
// text and which pulls the font configuration from under Qt. Calls pass on to fontconfig.
static std::atomic<int> FontconfigTeardowns{0};
extern "C" void FcFini()
{
    ++FontconfigTeardowns;
    if (auto Real = reinterpret_cast<void (*)()>(dlsym(RTLD_NEXT, "FcFini")))
        Real();
}

namespace {

const QString Suite = QStringLiteral(TESSAVO_TESTDATA "/wmf-emf/");

QByteArray ReadFile(const QString& Path)
{
    QFile File(Path);
    return File.open(QIODevice::ReadOnly) ? File.readAll() : QByteArray();
}

uint16_t U16(const QByteArray& B, int At) { return uint16_t(uint8_t(B[At]) | (uint8_t(B[At + 1]) << 8)); }
int32_t S32(const QByteArray& B, int At) { return int32_t(U16(B, At) | (uint32_t(U16(B, At + 2)) << 16)); }
void PutU32(QByteArray& B, int At, uint32_t V)
{
    for (int I = 0; I < 4; ++I)
        B[At + I] = char(V >> (8 * I));
}

bool IsPlaceable(const QByteArray& B) { return B.size() >= 22 && uint32_t(S32(B, 0)) == 0x9AC6CDD7u; }
bool IsEmf(const QByteArray& B) { return B.size() >= 88 && S32(B, 0) == 1 && S32(B, 40) == 0x464D4520; }

// The size the header asks for at 96 dots an inch; an invalid size where the header has none.
QSize HeaderSize(const QByteArray& B)
{
    if (IsPlaceable(B)) {
        const double Inch = U16(B, 14);
        const double Width = std::abs(int16_t(U16(B, 10)) - int16_t(U16(B, 6)));
        const double Height = std::abs(int16_t(U16(B, 12)) - int16_t(U16(B, 8)));
        return QSize(int(std::nearbyint(Width * 96 / Inch)), int(std::nearbyint(Height * 96 / Inch)));
    }
    if (IsEmf(B)) // the frame, in 0.01 mm
        return QSize(int(std::nearbyint((double(S32(B, 32)) - S32(B, 24)) * 96 / 2540)),
                     int(std::nearbyint((double(S32(B, 36)) - S32(B, 28)) * 96 / 2540)));
    return QSize();
}

int64_t NonWhitePixels(const QImage& Image)
{
    int64_t Count = 0;
    for (int Y = 0; Y < Image.height(); ++Y)
        for (int X = 0; X < Image.width(); ++X)
            Count += (Image.pixel(X, Y) & 0xFFFFFF) != 0xFFFFFF;
    return Count;
}

// A picture a refused load must leave as it was.
StdPicture Sentinel()
{
    QImage Image(3, 2, QImage::Format_BGR888);
    Image.fill(QColor(1, 2, 3));
    return StdPicture(Image, 24);
}

bool IsSentinel(const StdPicture& Picture)
{
    return Picture.Bpp() == 24 && Picture.Width() == 3 && Picture.Height() == 2
        && Picture.Image().pixel(2, 1) == qRgb(1, 2, 3);
}

// A Windows metafile from 16-bit words: records are {function, parameters...}.
QByteArray BuildWmf(const std::vector<std::vector<int>>& Records, int Left, int Top, int Right, int Bottom,
                    int Inch)
{
    QByteArray Body;
    auto Word = [](QByteArray& To, int V) { To.append(char(V & 0xFF)).append(char((V >> 8) & 0xFF)); };
    int Largest = 3;
    for (const auto& Record : Records) {
        const int Words = int(Record.size()) + 2;
        Largest = std::max(Largest, Words);
        Word(Body, Words);
        Word(Body, 0);
        for (int V : Record)
            Word(Body, V);
    }
    for (int V : {3, 0, 0})
        Word(Body, V);
    QByteArray File;
    uint16_t Sum = 0;
    for (int V : {0xCDD7, 0x9AC6, 0, Left, Top, Right, Bottom, Inch, 0, 0}) {
        Word(File, V);
        Sum ^= uint16_t(V);
    }
    Word(File, Sum);
    const int FileWords = int(18 + Body.size()) / 2;
    for (int V : {1, 9, 0x300, FileWords & 0xFFFF, FileWords >> 16, 8, Largest, 0, 0})
        Word(File, V);
    return File + Body;
}

// Mapping and objects shared by the built files: anisotropic mapping, transparent background
// mode, window 0,0 to 1000,1000 (one inch at 1000 units an inch, so 96 by 96 pixels), a solid
// red brush and no pen.
std::vector<std::vector<int>> RedPage()
{
    return {{0x0103, 8}, {0x0102, 1}, {0x020B, 0, 0}, {0x020C, 1000, 1000}, {0x02FC, 0, 0x00FF, 0, 0}, {0x012D, 0},
            {0x02FA, 5, 0, 0, 0, 0}, {0x012D, 1}};
}

class MetafileTest : public ::testing::Test {
protected:
    // Painting text needs the font database, so the loader wants a GUI application. One made
    // here goes again after these tests, and Qt then hands fontconfig's configuration back
    // (kept to the end, LeakSanitizer reports it).
    static void SetUpTestSuite()
    {
        if (QCoreApplication::instance())
            return;
        if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        static int Argc = 1;
        static char Name[] = "tessavo_raster_tests";
        static char* Argv[] = {Name, nullptr};
        Owned = new QGuiApplication(Argc, Argv);
    }
    static void TearDownTestSuite()
    {
        delete Owned;
        Owned = nullptr;
    }
    static inline QGuiApplication* Owned = nullptr;
};

TEST_F(MetafileTest, EveryGoodSuiteFileRendersAtItsOwnSize)
{
    // Good files that do not draw, each with the reason; all others must show a drawing.
    const QString Refused = QStringLiteral("libuemf/test_libuemf_ref.wmf"); // libwmf 0.2.12 rejects
        // its META_CREATEREGION record as "unexpectedly short" and abandons the whole file.
    const QString Blank = QStringLiteral("libemf2svg/test-030.emf"); // only selects stock objects
    int Files = 0;
    for (const char* Folder : {"libwmf", "pillow", "libuemf", "libemf2svg", "libemf2svg-ea"}) {
        for (const QString& Name : QDir(Suite + Folder).entryList({"*.wmf", "*.emf"}, QDir::Files)) {
            const QString Key = QString(Folder) + "/" + Name;
            SCOPED_TRACE(Key.toStdString());
            ++Files;
            const QByteArray Bytes = ReadFile(Suite + Key);
            StdPicture Picture = Sentinel();
            const bool Loaded = basPicture::LoadMetafileFromMemory(Bytes, Picture);
            if (Key == Refused) {
                EXPECT_FALSE(Loaded);
                EXPECT_TRUE(IsSentinel(Picture));
                continue;
            }
            ASSERT_TRUE(Loaded);
            EXPECT_EQ(Picture.Bpp(), 24);
            EXPECT_EQ(Picture.Image().format(), QImage::Format_BGR888);
            const QSize Expected = HeaderSize(Bytes);
            if (Expected.isValid()) {
                EXPECT_EQ(QSize(Picture.Width(), Picture.Height()), Expected);
            }
            EXPECT_TRUE(Picture.Width() >= 8 && Picture.Width() <= 16000);
            EXPECT_TRUE(Picture.Height() >= 8 && Picture.Height() <= 16000);
            const int64_t Drawn = NonWhitePixels(Picture.Image());
            if (Key == Blank) {
                EXPECT_EQ(Drawn, 0);
            } else { // a real drawing, not a few stray pixels of a drawing collapsed to a point
                EXPECT_GE(Drawn * 100, int64_t(Picture.Width()) * Picture.Height());
            }
        }
    }
    EXPECT_EQ(Files, 42);
}

TEST_F(MetafileTest, PlaceableSizeFollowsItsHeader)
{
    int Checked = 0;
    for (const char* Folder : {"libwmf", "pillow"}) {
        for (const QString& Name : QDir(Suite + Folder).entryList({"*.wmf"}, QDir::Files)) {
            const QByteArray Bytes = ReadFile(Suite + Folder + "/" + Name);
            if (!IsPlaceable(Bytes))
                continue;
            SCOPED_TRACE(Name.toStdString());
            StdPicture Picture;
            ASSERT_TRUE(basPicture::LoadMetafileFromMemory(Bytes, Picture));
            EXPECT_EQ(QSize(Picture.Width(), Picture.Height()), HeaderSize(Bytes));
            ++Checked;
        }
    }
    EXPECT_EQ(Checked, 12);
    // Built frames: a flipped frame counts by its extent; sizes round to the nearest pixel.
    const struct { int Left, Top, Right, Bottom, Inch, Width, Height; } Frames[] = {
        {0, 0, 1440, 720, 1440, 96, 48}, {1000, 1000, 0, 0, 1000, 96, 96},
        {100, 100, 1100, 600, 2540, 38, 19}, {-500, -250, 500, 250, 1000, 96, 48}};
    for (const auto& F : Frames) {
        auto Records = RedPage();
        Records.push_back({0x041B, 500, 1000, 0, 0});
        StdPicture Picture;
        const QByteArray Bytes = BuildWmf(Records, F.Left, F.Top, F.Right, F.Bottom, F.Inch);
        ASSERT_TRUE(basPicture::LoadMetafileFromMemory(Bytes, Picture));
        EXPECT_EQ(Picture.Width(), F.Width);
        EXPECT_EQ(Picture.Height(), F.Height);
    }
}

TEST_F(MetafileTest, WindowMapsOntoThePictureAndClipsTheRest)
{
    // Rectangle(bottom, right, top, left) in a window of 1000 by 1000 on 96 by 96 pixels.
    const struct { std::vector<int> Rectangle; QPoint Red[2]; QPoint White[2]; } Cases[] = {
        {{0x041B, 500, 1000, 0, 0}, {{2, 2}, {93, 45}}, {{2, 50}, {93, 93}}},      // top half
        {{0x041B, 1500, 1500, 500, 500}, {{50, 50}, {94, 94}}, {{45, 45}, {94, 2}}}, // runs off the window
    };
    for (const auto& Case : Cases) {
        auto Records = RedPage();
        Records.push_back(Case.Rectangle);
        StdPicture Picture;
        ASSERT_TRUE(basPicture::LoadMetafileFromMemory(BuildWmf(Records, 0, 0, 1000, 1000, 1000), Picture));
        ASSERT_EQ(Picture.Width(), 96);
        for (const QPoint& P : Case.Red) // opaque red, though the background mode is transparent
            EXPECT_EQ(Picture.Image().pixel(P) & 0xFFFFFF, 0xFF0000u) << P.x() << "," << P.y();
        for (const QPoint& P : Case.White)
            EXPECT_EQ(Picture.Image().pixel(P) & 0xFFFFFF, 0xFFFFFFu) << P.x() << "," << P.y();
    }
}

TEST_F(MetafileTest, BitmapsAndTextSurviveTheWayThroughSvg)
{
    // STRETCHDIB over the window: a 2 by 1 bitmap, blue then green (bits are blue, green, red).
    const std::vector<int> Dib = {40, 0, 2, 0, 1, 0, 1, 24, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                  0x00FF, 0x0000, 0x00FF, 0};
    std::vector<int> Stretch = {0x0F43, 0x0020, 0x00CC, 0, 1, 2, 0, 0, 1000, 1000, 0, 0};
    Stretch.insert(Stretch.end(), Dib.begin(), Dib.end());
    auto Records = RedPage();
    Records.push_back(Stretch);
    StdPicture Picture;
    ASSERT_TRUE(basPicture::LoadMetafileFromMemory(BuildWmf(Records, 0, 0, 1000, 1000, 1000), Picture));
    EXPECT_EQ(Picture.Image().pixel(20, 48) & 0xFFFFFF, 0x0000FFu);
    EXPECT_EQ(Picture.Image().pixel(75, 48) & 0xFFFFFF, 0x00FF00u);

    // The same bitmap claiming 30000 rows, or a colour table of 65534 or 4294901760 entries,
    // that it does not carry is refused before libwmf allocates (words from the DIB's start).
    for (const auto& [Word, Value] : {std::pair{4, 30000}, std::pair{16, 0xFFFE}, std::pair{17, 0xFFFF}}) {
        auto Bad = Records;
        Bad.back()[12 + Word] = Value;
        StdPicture Refused = Sentinel();
        EXPECT_FALSE(basPicture::LoadMetafileFromMemory(BuildWmf(Bad, 0, 0, 1000, 1000, 1000), Refused)) << Word;
        EXPECT_TRUE(IsSentinel(Refused));
    }

    // Text with characters that mean something in XML, and one beyond ASCII.
    const QByteArray Face("Arial\0\0\0", 8), Text("a<b&c>\xE9", 7);
    std::vector<int> Font = {0x02FB, -300, 0, 0, 0, 400, 0, 0, 0, 0};
    for (int I = 0; I < Face.size(); I += 2)
        Font.push_back(uint8_t(Face[I]) | (uint8_t(Face[I + 1]) << 8));
    std::vector<int> Out = {0x0521, int(Text.size())};
    for (int I = 0; I < Text.size(); I += 2)
        Out.push_back(uint8_t(Text[I]) | (I + 1 < Text.size() ? uint8_t(Text[I + 1]) << 8 : 0));
    Out.insert(Out.end(), {400, 50});
    Records = RedPage();
    Records.push_back(Font);
    Records.push_back({0x012D, 2});
    Records.push_back(Out);
    StdPicture Written;
    ASSERT_TRUE(basPicture::LoadMetafileFromMemory(BuildWmf(Records, 0, 0, 1000, 1000, 1000), Written));
    EXPECT_GT(NonWhitePixels(Written.Image()), 50);
}

TEST_F(MetafileTest, BytesThatAreNotMetafilesAreRefused)
{
    const QByteArray Wmf = ReadFile(Suite + "libwmf/sample.wmf"), Emf = ReadFile(Suite + "libemf2svg/test-057.emf");
    ASSERT_FALSE(Wmf.isEmpty());
    ASSERT_FALSE(Emf.isEmpty());
    QByteArray Random(4096, 0);
    std::mt19937 Generator(7);
    for (char& C : Random)
        C = char(Generator());
    QByteArray LongEmf = Emf, ZeroInch = Wmf, LongRecord = Wmf;
    const QByteArray HugeFrame = BuildWmf(RedPage(), 0, 0, 32000, 32000, 10);
    PutU32(LongEmf, 48, uint32_t(Emf.size()) + 4);   // claims more bytes than there are
    ZeroInch[14] = ZeroInch[15] = 0;                 // no units per inch
    PutU32(LongRecord, 40, 0x10000);                 // first record runs past the end
    QByteArray HugeEmf = Emf;
    PutU32(HugeEmf, 32, 0x7FFFFFFF);                 // a frame a kilometre wide
    const struct { const char* Name; QByteArray Bytes; } Cases[] = {
        {"empty", QByteArray()},
        {"bmp", ReadFile(TESSAVO_TESTDATA "/bmpsuite/g/rgb24.bmp")},
        {"png signature", QByteArray("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16)},
        {"random", Random},
        {"placeable key only", Wmf.left(20)},
        {"placeable, short standard header", Wmf.left(30)},
        {"wmf cut before its end record", Wmf.left(Wmf.size() / 2)},
        {"emf header cut short", Emf.left(80)},
        {"emf cut in the middle", Emf.left(Emf.size() / 2)},
        {"emf claiming more bytes", LongEmf},
        {"emf frame too large", HugeEmf},
        {"wmf without units per inch", ZeroInch},
        {"wmf record past the end", LongRecord},
        {"wmf frame too large", HugeFrame},
    };
    for (const auto& Case : Cases) {
        SCOPED_TRACE(Case.Name);
        StdPicture Picture = Sentinel();
        EXPECT_FALSE(basPicture::LoadMetafileFromMemory(Case.Bytes, Picture));
        EXPECT_TRUE(IsSentinel(Picture));
    }
}

TEST_F(MetafileTest, DamagedFilesAreRefusedOrLoadWithoutHarm)
{
    auto Check = [](const QByteArray& Bytes) {
        StdPicture Picture = Sentinel();
        if (basPicture::LoadMetafileFromMemory(Bytes, Picture)) {
            EXPECT_EQ(Picture.Bpp(), 24);
            EXPECT_TRUE(Picture.Width() > 0 && Picture.Width() <= basPicture::MaxPictureSide);
            EXPECT_TRUE(Picture.Height() > 0 && Picture.Height() <= basPicture::MaxPictureSide);
            return true;
        }
        EXPECT_TRUE(IsSentinel(Picture));
        return false;
    };
    const QStringList Corrupt = QDir(Suite + "libemf2svg-corrupted").entryList({"*.emf"}, QDir::Files);
    EXPECT_EQ(Corrupt.size(), 9);
    for (const QString& Name : Corrupt) {
        SCOPED_TRACE(Name.toStdString());
        const bool Loaded = Check(ReadFile(Suite + "libemf2svg-corrupted/" + Name));
        // A description that lies outside the header is caught before the converter runs.
        if (Name.contains("215400") || Name.contains("080539")) {
            EXPECT_FALSE(Loaded);
        }
    }
    // Good files with bytes overwritten and with their tails cut off.
    std::mt19937 Generator(2024);
    for (const char* Name :
         {"libwmf/fulltest.wmf", "libwmf/text.wmf", "libemf2svg/test-104.emf", "libuemf/test_mm_text_ref.emf"}) {
        SCOPED_TRACE(Name);
        const QByteArray Good = ReadFile(Suite + Name);
        ASSERT_FALSE(Good.isEmpty());
        for (int Round = 0; Round < 60; ++Round) {
            QByteArray Bytes = Good;
            const int Changes = 1 + int(Generator() % 8);
            for (int I = 0; I < Changes; ++I)
                Bytes[int(Generator() % uint32_t(Bytes.size()))] = char(Generator());
            Check(Round % 4 == 3 ? Bytes.left(int(Generator() % uint32_t(Bytes.size()))) : Bytes);
        }
    }
}

TEST_F(MetafileTest, GlyphIndexTextLeavesTheSharedFontConfigurationAlone)
{
    // The spy only counts if the libraries' calls reach it.
    ASSERT_EQ(dlsym(RTLD_DEFAULT, "FcFini"), reinterpret_cast<void*>(&FcFini));
    // Mark the text of every EXTTEXTOUTW record as glyph indices (option bit 0x10).
    QByteArray Bytes = ReadFile(Suite + "libemf2svg/test-131.emf");
    int Marked = 0;
    for (int Pos = S32(Bytes, 4); Pos + 8 <= Bytes.size();) {
        const int Type = S32(Bytes, Pos), Size = S32(Bytes, Pos + 4);
        if (Type == 84) {
            Bytes[Pos + 52] = char(uint8_t(Bytes[Pos + 52]) | 0x10);
            ++Marked;
        }
        if (Type == 14 || Size < 8)
            break;
        Pos += Size;
    }
    ASSERT_EQ(Marked, 9);
    const int Before = FontconfigTeardowns;
    StdPicture Picture;
    ASSERT_TRUE(basPicture::LoadMetafileFromMemory(Bytes, Picture));
    EXPECT_EQ(FontconfigTeardowns, Before);
    EXPECT_GE(NonWhitePixels(Picture.Image()) * 100, int64_t(Picture.Width()) * Picture.Height());

    // Before the first text, an EXTTEXTOUTW of 12 bytes and a comment record holding, where
    // the text record's fields would lie, one glyph-index character.
    QByteArray Short = ReadFile(Suite + "libemf2svg/test-131.emf");
    int FirstText = S32(Short, 4);
    while (S32(Short, FirstText) != 84)
        FirstText += S32(Short, FirstText + 4);
    QByteArray Inserted(60, 0);
    for (const auto& [At, Value] : {std::pair{0, 84}, std::pair{4, 12}, std::pair{12, 70}, std::pair{16, 48},
                                    std::pair{20, 36}, std::pair{44, 1}, std::pair{48, 56}, std::pair{52, 0x10}})
        PutU32(Inserted, At, uint32_t(Value));
    Short.insert(FirstText, Inserted);
    PutU32(Short, 48, uint32_t(Short.size()));
    PutU32(Short, 52, uint32_t(S32(Short, 52)) + 2);
    StdPicture Refused = Sentinel();
    EXPECT_FALSE(basPicture::LoadMetafileFromMemory(Short, Refused));
    EXPECT_TRUE(IsSentinel(Refused));
    EXPECT_EQ(FontconfigTeardowns, Before);
}

TEST_F(MetafileTest, ConcurrentLoadsMatchSequentialOnes)
{
    const QStringList Names = {"libwmf/ant.wmf", "libwmf/text.wmf", "libemf2svg/test-131.emf",
                               "libemf2svg-ea/EA-test-file-003.emf"};
    std::vector<QByteArray> Files;
    std::vector<QImage> Expected;
    for (const QString& Name : Names) {
        Files.push_back(ReadFile(Suite + Name));
        StdPicture Picture;
        ASSERT_TRUE(basPicture::LoadMetafileFromMemory(Files.back(), Picture));
        Expected.push_back(Picture.Image());
    }
    std::vector<QImage> Got(Files.size() * 2);
    std::vector<std::thread> Threads;
    for (size_t I = 0; I < Got.size(); ++I)
        Threads.emplace_back([&, I] {
            StdPicture Picture;
            if (basPicture::LoadMetafileFromMemory(Files[I % Files.size()], Picture))
                Got[I] = Picture.Image();
        });
    for (std::thread& Thread : Threads)
        Thread.join();
    for (size_t I = 0; I < Got.size(); ++I)
        EXPECT_TRUE(Got[I] == Expected[I % Files.size()]) << Names[int(I % Files.size())].toStdString();
}

} // namespace
