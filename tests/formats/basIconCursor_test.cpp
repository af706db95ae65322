// The icon editor's file routines: every depth written is read back the same by icotool and by
// the loader, the depth and palette rules, the status texts of made-up and real files, cursors,
// refusals of bad files, and the .icl scan against wrestool.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "IconPalettes.h"
#include "IconTestSupport.h"

using namespace basIconCursor;
using namespace IconTest;

namespace {

// A distinct colour for every index below 1024, never black, white or a static colour.
uint32_t Distinct(int I)
{
    return uint32_t(I & 255) | uint32_t(0x11 + (I >> 8)) << 8 | 0x220000u;
}

// An icon file of blank images: width, height, depth, the entry's colour byte and bit count.
struct Spec {
    int W, H, Bits, ColorByte = 0, EntryBits = -1;
};
std::vector<uint8_t> BuildIcon(const std::vector<Spec>& Images)
{
    std::vector<uint8_t> Out, Records;
    const auto Put = [](std::vector<uint8_t>& To, uint32_t V, int N) {
        for (int I = 0; I < N; ++I)
            To.push_back(uint8_t(V >> (8 * I)));
    };
    Put(Out, 0, 2), Put(Out, 1, 2), Put(Out, uint32_t(Images.size()), 2);
    for (const Spec& S : Images) {
        const uint32_t Rows = ((S.W * S.Bits + 31) / 32 + (S.W + 31) / 32) * 4 * S.H;
        const uint32_t Size = 40 + (S.Bits <= 8 ? 4u << S.Bits : 0) + Rows;
        Put(Out, S.W, 1), Put(Out, S.H, 1), Put(Out, S.ColorByte, 1), Put(Out, 0, 1), Put(Out, 1, 2);
        Put(Out, uint32_t(S.EntryBits < 0 ? S.Bits : S.EntryBits), 2), Put(Out, Size, 4);
        Put(Out, uint32_t(6 + 16 * Images.size() + Records.size()), 4);
        const size_t Start = Records.size();
        Put(Records, 40, 4), Put(Records, S.W, 4), Put(Records, S.H * 2, 4);
        Put(Records, 1, 2), Put(Records, S.Bits, 2);
        Records.resize(Start + Size, 0);
    }
    Out.insert(Out.end(), Records.begin(), Records.end());
    return Out;
}

std::string StatusOf(const std::vector<uint8_t>& Bytes, bool Strict, bool Prefer8 = false)
{
    WriteBytes(Scratch("status.ico"), Bytes);
    IconRecord Record;
    return ReadIconFileStatus(Scratch("status.ico"), Record, Strict, Prefer8);
}

} // namespace

// Each depth the writer chooses (a 48 by 48 picture of static colours at 4 bits): the file is
// IconResourceBytes behind 22 bytes of header and entry, icotool lists and extracts the same
// picture, and the loader gives it back.
TEST(basIconCursor, EveryDepthWrittenIsReadBackByIcotoolAndTheLoader)
{
    struct Case {
        int Side, Bits;
        std::function<uint32_t(int, int)> Color;
        const char* Status;
    } Cases[] = {
        {16, 1, [](int X, int Y) { return (X ^ Y) & 1 ? 0xFFFFFFu : 0u; }, "1/1/0/16/16/2/1/2/1"},
        {48, 4, [](int X, int Y) { return IconPalettes::Palette16[(X / 3 + Y) % 16]; }, "1/1/0/48/48/16/4/16/4"},
        {32, 8, [](int X, int Y) { return Distinct((X * 7 + Y) % 200); }, "1/1/0/32/32/256/8/256/8"},
        {24, 24, [](int X, int Y) { return Distinct(X + 24 * Y); }, "1/1/0/24/24/-1/24/-1/24"},
        {32, 32, [](int X, int Y) { return Distinct(X * 32 + Y); }, "1/1/0/32/32/-1/32/-1/32"},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Bits);
        clsDIB Image, Mask, Image2, Mask2;
        MakePictures(Image, Mask, C.Side, C.Side, C.Color, [](int X, int Y) { return (X + 2 * Y) % 7 == 0; });
        Array2D<uint8_t> Alpha, Alpha2;
        if (C.Bits == 32) {
            Alpha.Resize(C.Side, C.Side);
            for (int Y = 0; Y < C.Side; ++Y)
                for (int X = 0; X < C.Side; ++X)
                    Alpha(X, Y) = uint8_t(1 + (X * 8 + Y) % 255);
        }
        const std::string File = Scratch("depth.ico");
        ASSERT_TRUE(SaveIconFile(Image, Mask, File, C.Bits == 32, Alpha));
        EXPECT_EQ(std::filesystem::file_size(File), 22u + IconResourceBytes(C.Side, C.Side, int16_t(C.Bits)));
        const std::vector<ListedImage> Listed = IcotoolList(File);
        ASSERT_EQ(Listed.size(), 1u);
        EXPECT_EQ(Listed[0].Field("width"), C.Side);
        EXPECT_EQ(Listed[0].Field("bit-depth"), C.Bits);
        EXPECT_EQ(IcotoolPixels(File, 1), PairAsRGBA(Image, Mask, Alpha));
        const std::vector<uint8_t> B = FileBytes(File);
        if (C.Bits == 4) {  // the 16 static colours as the palette, 64 bytes
            EXPECT_EQ(std::vector<uint8_t>(B.begin() + 62, B.begin() + 126),
                      IconPalettes::TableBytes(IconPalettes::Palette16));
        }

        IconRecord Record;
        EXPECT_EQ(ReadIconFileStatus(File, Record, true), C.Status);
        ASSERT_TRUE(LoadIconFileToPictures(File, 0, Image2, Mask2, Alpha2));
        EXPECT_EQ(Colors(Mask2), Colors(Mask));
        EXPECT_EQ(PairAsRGBA(Image2, Mask2, Alpha2), PairAsRGBA(Image, Mask, Alpha));
        // Below 32 bits the colour under a transparent pixel comes back too.
        EXPECT_EQ(Colors(Image2) == Colors(Image), C.Bits != 32);
        EXPECT_EQ(Alpha2.Width(), C.Bits == 32 ? C.Side : 0);
    }
}

TEST(basIconCursor, EightBitPaletteIsBlackWhiteThenFirstAppearance)
{
    // 256 colours: black at pixel 100, white at pixel 37.
    const auto Color = [](int X, int Y) {
        const int I = Y * 16 + X;
        return I == 100 ? 0u : I == 37 ? 0xFFFFFFu : Distinct(I);
    };
    clsDIB Image, Mask;
    MakePictures(Image, Mask, 16, 16, Color);
    Array2D<uint8_t> Alpha;
    ASSERT_TRUE(SaveIconFile(Image, Mask, Scratch("p256.ico"), false, Alpha));
    const std::vector<uint8_t> B = FileBytes(Scratch("p256.ico"));
    ASSERT_EQ(B[36], 8);
    std::vector<uint32_t> Expected = {0, 0xFFFFFF};
    for (int I = 0; I < 256; ++I)
        if (I != 100 && I != 37)
            Expected.push_back(Distinct(I));
    for (size_t I = 0; I < 256; ++I)
        EXPECT_EQ(uint32_t(B[64 + 4 * I]) | B[63 + 4 * I] << 8 | B[62 + 4 * I] << 16, Expected[I]) << I;
    EXPECT_EQ(B[1086 + 9 * 16 + 4], 0);  // pixel 100, in the tenth row of the file
    EXPECT_EQ(B[1086 + 15 * 16], 2);     // the first pixel

    MakePictures(Image, Mask, 17, 16, [](int X, int Y) { return Distinct(Y * 17 + X); });
    EXPECT_EQ(ClassifyIconColors(Image), -1);
    MakePictures(Image, Mask, 4, 4, [](int X, int) { return X ? 0xFFFFFFu : 0xC0C0C0u; });
    EXPECT_EQ(ClassifyIconColors(Image), 16);
    // The fourth byte, which drawing may set, is no part of a colour.
    MakePictures(Image, Mask, 4, 4, [](int X, int) { return X ? 0xFFFFFFu : 0u; });
    Image.DIBhDC()->Row(2)[3] = 0xFF;
    EXPECT_EQ(ClassifyIconColors(Image), 2);
}

TEST(basIconCursor, AlphaOfAnOpaquePixelZeroReadsBackAs255)
{
    clsDIB Image, Mask, Image2, Mask2;
    MakePictures(Image, Mask, 16, 16, [](int, int) { return 0x336699u; }, [](int X, int Y) { return X + Y == 0; });
    Array2D<uint8_t> Alpha(16, 16, 200), Alpha2;
    Alpha(3, 4) = 0;
    ASSERT_TRUE(SaveIconFile(Image, Mask, Scratch("alpha.ico"), true, Alpha));
    const std::vector<uint8_t> B = FileBytes(Scratch("alpha.ico"));
    const auto AlphaByte = [&](int X, int Y) { return B[62 + (15 - Y) * 64 + X * 4 + 3]; };
    EXPECT_EQ(AlphaByte(3, 4), 0);
    EXPECT_EQ(AlphaByte(0, 0), 0);  // transparent
    EXPECT_EQ(AlphaByte(1, 0), 200);
    ASSERT_TRUE(LoadIconFileToPictures(Scratch("alpha.ico"), 0, Image2, Mask2, Alpha2));
    EXPECT_EQ(Alpha2(3, 4), 255);
    EXPECT_EQ(Alpha2(1, 0), 200);
    EXPECT_EQ(Colors(Image2)[0], 0u);  // a transparent 32-bit pixel turns black
}

// 24-bit rows at a width the standard sizes never have get 4 - (width and 3) bytes of padding
// and are read back by the same rule; alpha of the wrong size is cleared and gives 24 bits.
TEST(basIconCursor, OddWidthTrueColourKeepsTheProgramsRowRule)
{
    clsDIB Image, Mask, Image2, Mask2;
    MakePictures(Image, Mask, 13, 13, [](int X, int Y) { return Distinct(X * 13 + Y); },
                 [](int X, int) { return X == 12; });
    Array2D<uint8_t> Alpha(10, 10, 9);
    ASSERT_TRUE(SaveIconFile(Image, Mask, Scratch("odd.ico"), true, Alpha));
    EXPECT_EQ(Alpha.Width(), 0);
    const std::vector<uint8_t> B = FileBytes(Scratch("odd.ico"));
    EXPECT_EQ(B[36], 24);
    EXPECT_EQ(B.size(), 62u + (39 + 3) * 13 + 4 * 13);
    EXPECT_EQ(B[14] | B[15] << 8, IconResourceBytes(13, 13, 24));
    ASSERT_TRUE(LoadIconFileToPictures(Scratch("odd.ico"), 0, Image2, Mask2, Alpha));
    EXPECT_EQ(Colors(Image2), Colors(Image));
}

TEST(basIconCursor, IconResourceBytesByTheProgramsFormulas)
{
    const int Cases[][4] = {
        {32, 32, 1, 40 + 8 + (4 + 4) * 32},    {32, 32, 4, 40 + 64 + (16 + 4) * 32},
        {32, 32, 8, 40 + 1024 + (32 + 4) * 32}, {32, 32, 24, 40 + (96 + 4) * 32},
        {32, 32, 32, 40 + (128 + 4) * 32},      {48, 48, 24, 40 + (144 + 8) * 48},
        {16, 16, 4, 40 + 64 + (8 + 4) * 16},    {13, 13, 24, 40 + 40 * 13 + 4 * 13},
        {32, 32, 16, 0},
        // Beyond the standard sizes the mask row 4 * (width / 33 + 1) gives 65 pixels 8 bytes.
        {65, 65, 1, 40 + 8 + (12 + 8) * 65},
    };
    for (const auto& C : Cases)
        EXPECT_EQ(IconResourceBytes(C[0], C[1], int16_t(C[2])), C[3]) << C[0] << "@" << C[2];
}

// Sizes, counts and depths agree with `icotool -l` for these files.
TEST(basIconCursor, StatusTextsOfRealFiles)
{
    const char* Cases[][3] = {
        {"mozilla-ico-bmp-1bpp/ico-size-33x33-1bpp.ico", "1/0/0/0/0/0/0/0/0", "1/1/0/33/33/2/1/2/1"},
        {"mozilla-ico-bmp-24bpp/ico-size-8x8-24bpp.ico", "1/0/0/0/0/0/0/0/0", "1/0/0/0/0/0/0/0/0"},
        {"imlib2/icon-128-d8.ico", "1/0/0/0/0/0/0/0/0", "1/1/0/128/128/256/8/256/8"},
        {"neko98/Awake.ico", "1/1/0/32/32/16/0/16/4", "1/1/0/32/32/16/0/16/4"},
        // The first 32 by 32 is 4-bit; the 8-bit one further on replaces it.
        {"nsis/nsis3-install.ico", "2/5/4/32/32/256/8/256/8", "2/5/4/32/32/256/8/256/8"},
        {"misc/pinta-app.ico", "2/3/1/32/32/-1/32/-1/32", "2/3/1/32/32/-1/32/-1/32"},
        {"mejico-order/icon.ico", "2/0/0/0/0/0/0/0/0", "2/2/0/2/2/-1/24/-1/24"},
        {"mozilla-ico-bmp-24bpp/ico-size-256x256-24bpp.ico", "0/0/0/0/0/0/0/0/0", "0/0/0/0/0/0/0/0/0"},
        {"pillow/no_cursors.cur", "0/0/0/0/0/0/0/0/0", "0/0/0/0/0/0/0/0/0"},
        {"misc/wx-horse.cur", "0/0/0/0/0/0/0/0/0", "0/0/0/0/0/0/0/0/0"},
        // A PNG image taken for a bitmap header: its bit count field reads "DR".
        {"image-rs/png-32bpp-alpha.ico", "1/1/0/32/32/-1/32/-1/21060", "1/1/0/32/32/-1/32/-1/21060"},
    };
    for (const auto& C : Cases) {
        IconRecord Record;
        const std::string File = TestData + "/ico-cur/" + C[0];
        EXPECT_EQ(ReadIconFileStatus(File, Record, true), C[1]) << C[0];
        EXPECT_EQ(ReadIconFileStatus(File, Record, false), C[2]) << C[0];
    }
    clsDIB Image, Mask;
    Array2D<uint8_t> Alpha;
    EXPECT_FALSE(LoadIconFileToPictures(TestData + "/ico-cur/image-rs/png-32bpp-alpha.ico", 0, Image, Mask, Alpha));
    EXPECT_EQ(ErrorText(LastError()), "Incoming icon is a True Color icon but not of 24 BPP or 32 BPP.");
}

TEST(basIconCursor, StatusChoiceAmongSeveralImages)
{
    const std::vector<Spec> Mixed = {{16, 16, 4}, {32, 32, 4}, {32, 32, 8}, {32, 32, 8}, {48, 48, 8}};
    const std::vector<Spec> Large = {{64, 64, 32}, {128, 128, 32}};
    const struct {
        std::vector<Spec> Images;
        bool Strict, Prefer8;
        const char* Expected;
    } Cases[] = {
        {Mixed, true, false, "2/5/3/32/32/256/8/256/8"},  // the last 8-bit 32 by 32
        {Mixed, true, true, "2/5/2/32/32/256/8/256/8"},   // the search stops at the first
        {{{16, 16, 4}, {48, 48, 8}}, true, false, "2/2/0/16/16/16/4/16/4"},
        {Large, true, false, "2/0/0/0/0/0/0/0/0"},
        {Large, false, false, "2/2/0/128/128/-1/32/-1/32"},  // image 0, the last entry's size
        {{{16, 24, 4}, {24, 24, 8}}, true, false, "2/1/1/24/24/256/8/256/8"},
        // Colour count by the entry: its colour byte, rounded to 2 or 16, else from bit count.
        {{{32, 32, 8, 3}}, true, false, "1/1/0/32/32/16/8/256/8"},
        {{{32, 32, 8, 1}}, true, false, "1/1/0/32/32/2/8/256/8"},
        {{{32, 32, 8, 0, 0}}, true, false, "1/1/0/32/32/256/0/256/8"},
        {{{32, 32, 8, 0, 4}}, true, false, "1/1/0/32/32/16/4/256/8"},
        {{{32, 32, 8, 0, 9}}, true, false, "1/1/0/32/32/-1/9/256/8"},
    };
    for (const auto& C : Cases)
        EXPECT_EQ(StatusOf(BuildIcon(C.Images), C.Strict, C.Prefer8), C.Expected);
}

TEST(basIconCursor, CursorsAreAcceptedOnlyAt32By32WithTheHotspotInside)
{
    clsDIB Image, Mask, Image2, Mask2;
    MakePictures(Image, Mask, 32, 32, [](int X, int) { return X < 9 ? 0xFFFFFFu : 0u; },
                 [](int X, int Y) { return X > Y; });
    const struct {
        uint16_t X, Y;
        const char* Status;
    } Cases[] = {{5, 7, "1/2/1"}, {31, 31, "1/2/1"}, {32, 0, "0/0/0"}, {0, 32, "0/0/0"}};
    for (const auto& C : Cases) {
        const std::string File = Scratch("hot.cur");
        ASSERT_TRUE(SaveCursorFile(Image, Mask, File, C.X, C.Y));
        EXPECT_EQ(ReadCursorFileStatus(File), C.Status) << C.X << "," << C.Y;
        const std::vector<ListedImage> Listed = IcotoolList(File);
        ASSERT_EQ(Listed.size(), 1u);
        EXPECT_TRUE(Listed[0].Cursor());
        EXPECT_EQ(Listed[0].Field("hotspot-x") * 100 + Listed[0].Field("hotspot-y"), C.X * 100 + C.Y);
        Array2D<uint8_t> Alpha;
        int16_t HotX = -1, HotY = -1;
        ASSERT_TRUE(LoadCursorFileToPictures(File, Image2, Mask2, Alpha, HotX, HotY));
        EXPECT_EQ(HotX * 100 + HotY, C.X * 100 + C.Y);
        EXPECT_EQ(Colors(Image2), Colors(Image));
    }
    MakePictures(Image, Mask, 32, 32, [](int X, int Y) { return Distinct(X * 32 + Y); });
    ASSERT_TRUE(SaveCursorFile(Image, Mask, Scratch("true.cur"), 1, 2));
    EXPECT_EQ(ReadCursorFileStatus(Scratch("true.cur")), "1/-1/24");  // never alpha
    MakePictures(Image, Mask, 16, 16, [](int, int) { return 0u; });
    ASSERT_TRUE(SaveCursorFile(Image, Mask, Scratch("small.cur"), 1, 2));
    EXPECT_EQ(ReadCursorFileStatus(Scratch("small.cur")), "0/0/0");
    EXPECT_EQ(ReadCursorFileStatus(TestData + "/ico-cur/pillow/deerstalker.cur"), "1/-1/32");
    EXPECT_EQ(ReadCursorFileStatus(TestData + "/ico-cur/mozilla-cur/pointer.cur"), "0/0/0");  // type 1
}

TEST(basIconCursor, BadFilesAreRefused)
{
    const std::vector<uint8_t> Good = BuildIcon({{32, 32, 4}});
    const auto With = [&](const std::vector<std::pair<size_t, uint8_t>>& Changes) {
        std::vector<uint8_t> Bytes = Good;
        for (const auto& [At, Value] : Changes)
            Bytes.at(At) = Value;
        return Bytes;
    };
    const std::string None = "0/0/0/0/0/0/0/0/0";
    const struct {
        std::vector<uint8_t> Bytes;
        std::string Status;
        int16_t Error;
    } Cases[] = {
        {{}, None, ErrInvalid},
        {std::vector<uint8_t>(Good.begin(), Good.begin() + 6), None, ErrInvalid},
        {With({{4, 200}}), None, ErrInvalid},           // more entries than the file holds
        {With({{5, 0xFF}}), None, ErrInvalid},          // count below 1
        {With({{6, 0}}), None, ErrInvalid},             // width 0: 256 pixels
        {With({{14, 0}, {15, 0}}), None, ErrInvalid},  // no bytes in the record
        {With({{20, 0x7F}}), None, ErrInvalid},         // record beyond the end
        {std::vector<uint8_t>(Good.begin(), Good.end() - 1), "1/1/0/32/32/16/4/16/4", ErrInvalid},
        {With({{36, 16}}), "1/1/0/32/32/16/4/-1/16", ErrTrueColorDepth},
    };
    for (const auto& C : Cases) {
        EXPECT_EQ(StatusOf(C.Bytes, true), C.Status);
        clsDIB Image, Mask;
        Array2D<uint8_t> Alpha;
        EXPECT_FALSE(LoadIconFileToPictures(Scratch("status.ico"), 0, Image, Mask, Alpha)) << C.Status;
        EXPECT_EQ(LastError(), C.Error) << C.Status;
    }
}

TEST(basIconCursor, SavingRefusesWhatTheFileCannotHold)
{
    clsDIB Image, Mask, Small;
    Array2D<uint8_t> Alpha;
    MakePictures(Image, Mask, 32, 32, [](int, int) { return 0u; });
    const std::string File = Scratch("readonly.ico");
    ASSERT_TRUE(SaveIconFile(Image, Mask, File, false, Alpha));
    std::filesystem::permissions(File, std::filesystem::perms::owner_read);
    EXPECT_FALSE(SaveCursorFile(Image, Mask, File, 0, 0));
    EXPECT_EQ(ErrorText(LastError()), "File is read-only");
    std::filesystem::permissions(File, std::filesystem::perms::owner_all);
    MakePictures(Small, Mask, 16, 16, [](int, int) { return 0u; });
    EXPECT_FALSE(SaveIconFile(Image, Mask, File, false, Alpha));  // mask of another size
    MakePictures(Image, Mask, 256, 16, [](int, int) { return 0u; });
    EXPECT_FALSE(SaveIconFile(Image, Mask, File, false, Alpha));  // the width byte would be 0
}

// Every real file whose chosen image loads gives the pixels icotool extracts. Not compared:
// true-colour images whose width makes the program's row rule differ from the usual one (15,
// 17, 23, 31 and 33 pixels wide), and mejico-order's 2 by 2 images, which icotool misreads.
TEST(basIconCursor, RealFilesLoadAsIcotoolExtractsThem)
{
    int Compared = 0;
    for (const auto& Entry : std::filesystem::recursive_directory_iterator(TestData + "/ico-cur")) {
        const std::string File = Entry.path().string();
        if (Entry.path().extension() != ".ico" || File.find("mejico-order") != std::string::npos)
            continue;
        IconRecord Record;
        int Kind, Usable, Index, W, H, Bits;
        std::sscanf(ReadIconFileStatus(File, Record, false).c_str(), "%d/%d/%d/%d/%d/%*d/%*d/%*d/%d", &Kind, &Usable,
                    &Index, &W, &H, &Bits);
        clsDIB Image, Mask;
        Array2D<uint8_t> Alpha;
        if (Kind == 0 || Usable == 0 || !LoadIconFileToPictures(File, int16_t(Index), Image, Mask, Alpha) ||
            (Bits >= 24 && W % 4 != 0 && !(Bits == 24 && W % 4 == 2)))
            continue;
        const std::vector<uint32_t> Theirs = IcotoolPixels(File, Index + 1), Ours = PairAsRGBA(Image, Mask, Alpha);
        if (Theirs.empty())
            continue;  // icotool refuses it
        ASSERT_EQ(Theirs.size(), Ours.size()) << File;
        for (size_t I = 0; I < Ours.size(); ++I) {
            // At 32 bits an alpha of 0 under a clear mask bit reads as 255, and under a set one
            // icotool shows what the alpha says.
            if (Bits == 32 && ((Theirs[I] == 0 && Ours[I] >> 24 == 255) || Ours[I] == 0))
                continue;
            ASSERT_EQ(Theirs[I], Ours[I]) << File << " pixel " << I;
        }
        ++Compared;
    }
    EXPECT_GE(Compared, 50);
}

// The scan finds exactly the icon images (and the cursor images behind their hotspot) that
// wrestool extracts, where they are of a standard size and not PNG. They are found in the file
// by their bytes: wrestool's offsets are addresses in memory.
TEST(basIconCursor, IclScanFindsTheImagesWrestoolExtracts)
{
    const std::string Dir = TestData + "/pe-icl/";
    for (const char* Name : {"icl/Neko98.icl", "wine/hh.exe", "wine/wordpad.exe", "nsis/nsis-stub-zlib-x86-ansi.exe",
                             "nsis/nsis-ui-modern.exe", "ne/smalle.fon"}) {
        const std::vector<uint8_t> Bytes = FileBytes(Dir + Name);
        const std::string Raw = Scratch("raw/");
        std::filesystem::remove_all(Raw);
        std::filesystem::create_directories(Raw);
        RunCommand("wrestool -x --raw --type=icon -o " + Raw + " " + Dir + Name);
        RunCommand("wrestool -x --raw --type=cursor -o " + Raw + " " + Dir + Name);
        std::set<int64_t> Expected, Found;
        for (const auto& Entry : std::filesystem::directory_iterator(Raw)) {
            const std::vector<uint8_t> Data = FileBytes(Entry.path().string());
            // Names end in _type_name_language; a cursor resource (type 1) starts with its hotspot.
            const std::string Base = Entry.path().filename().string();
            const size_t Skip = std::regex_search(Base, std::regex("_1_[^_]+_[^_]+$")) ? 4 : 0;
            if (Data.size() > Skip + 40 && Data[Skip] == 40 && std::set<int>{16, 24, 32, 48}.count(Data[Skip + 4]))
                Expected.insert(std::search(Bytes.begin(), Bytes.end(), Data.begin(), Data.end()) - Bytes.begin() +
                                int64_t(Skip));
        }
        std::vector<IclRecord> Records;
        ASSERT_TRUE(ScanIclFile(Dir + Name, Records)) << Name;
        for (const IclRecord& R : Records)
            Found.insert(R.Start);
        EXPECT_EQ(Found, Expected) << Name;
    }
    std::vector<IclRecord> Records;
    ASSERT_TRUE(ScanIclFile(Dir + "icl/Neko98.icl", Records));
    ASSERT_EQ(Records.size(), 40u);
    EXPECT_EQ(Records[0].End - Records[0].Start, 744);
    EXPECT_EQ(Records[0].SizeText, "32x4 ");
    // The first record decoded is the first icon group's image as icotool extracts it.
    RunCommand("wrestool -x --type=group_icon --name=1 -o " + Scratch("group.ico") + " " + Dir + "icl/Neko98.icl");
    clsDIB Image, Mask;
    Array2D<uint8_t> Alpha;
    ASSERT_TRUE(LoadIclRecordToPictures(Dir + "icl/Neko98.icl", Records[0], Image, Mask, Alpha));
    EXPECT_EQ(IcotoolPixels(Scratch("group.ico"), 1), PairAsRGBA(Image, Mask, Alpha));
    EXPECT_FALSE(ScanIclFile(TestData + "/ico-cur/misc/wx-horse.ico", Records));  // no "MZ"
}
