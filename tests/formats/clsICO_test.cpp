// The icon reader and writer: the alpha walk and its row skip, the entry test and the refusals,
// the choice of SeekIcon_Size, the AND/OR drawing and the alpha pass, the byte layout of the
// files written; then every file of the public ICO/CUR suite against icotool's extraction, and
// every file written back through icotool again.
#include <gtest/gtest.h>
#include <png.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>

#include "IconPalettes.h"
#include "basMath.h"
#include "clsDIB.h"
#include "clsICO.h"

namespace {

using Bytes = std::vector<uint8_t>;
namespace fs = std::filesystem;

void Put16(Bytes& Out, uint32_t V) { Out.insert(Out.end(), {uint8_t(V), uint8_t(V >> 8)}); }
void Put32(Bytes& Out, uint32_t V) { Put16(Out, V & 0xFFFF), Put16(Out, V >> 16); }
Bytes operator+(Bytes A, const Bytes& B) { return A.insert(A.end(), B.begin(), B.end()), A; }

// A 40-byte bitmap header and what follows it.
Bytes Record(int32_t Width, int32_t HeaderHeight, int Bpp, const Bytes& Rest)
{
    Bytes Out;
    Put32(Out, 40), Put32(Out, uint32_t(Width)), Put32(Out, uint32_t(HeaderHeight)), Put16(Out, 1), Put16(Out, uint32_t(Bpp));
    Out.resize(40, 0);
    return Out + Rest;
}

struct Entry {
    uint8_t W, H, Colors;
    uint16_t Planes, BitCount;
    Bytes Rec;
};

// Header, directory, then the records in order from 6 + 16 n.
Bytes IconFile(uint16_t Type, const std::vector<Entry>& Entries)
{
    Bytes Out, Records;
    Put16(Out, 0), Put16(Out, Type), Put16(Out, uint32_t(Entries.size()));
    for (const Entry& E : Entries) {
        Out.insert(Out.end(), {E.W, E.H, E.Colors, 0});
        Put16(Out, E.Planes), Put16(Out, E.BitCount), Put32(Out, uint32_t(E.Rec.size()));
        Put32(Out, uint32_t(6 + 16 * Entries.size() + Records.size()));
        Records = Records + E.Rec;
    }
    return Out + Records;
}

std::string TempPath(const std::string& Name)
{
    return testing::TempDir() + "clsICO_" + std::to_string(getpid()) + "_" + Name;
}

Bytes ReadAll(const std::string& Path)
{
    std::ifstream In(Path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(In), std::istreambuf_iterator<char>());
}

std::string WriteTemp(const std::string& Name, const Bytes& Data)
{
    const std::string Path = TempPath(Name);
    std::ofstream(Path, std::ios::binary).write(reinterpret_cast<const char*>(Data.data()), std::streamsize(Data.size()));
    return Path;
}

// A 1-bit 3 by 2 icon record: rows of 4 bytes, colours then mask, bottom row first.
const Bytes Palette2 = {0, 0, 0, 0, 255, 255, 255, 0};
const Bytes Bits1 = {0x40, 0, 0, 0, 0xA0, 0, 0, 0};
const Bytes Mask1 = {0x20, 0, 0, 0, 0x00, 0, 0, 0};
Bytes OneBitRecord() { return Record(3, 4, 1, Palette2 + Bits1 + Mask1); }

// A 32-bit 2 by 2 record: bottom row blue alpha 0 and red alpha 128, top row green alpha 255
// and a masked pixel whose alpha byte is 7.
const Bytes Pixels32 = {255, 0, 0, 0, 0, 0, 255, 128, 0, 255, 0, 255, 9, 9, 9, 7};
const Bytes Mask32 = {0x00, 0, 0, 0, 0x40, 0, 0, 0};
Bytes Record32() { return Record(2, 4, 32, Pixels32 + Mask32); }

bool Open(clsICO& Ico, const Bytes& File) { return Ico.OpenICOBytes(File.data(), File.size()); }

std::vector<uint8_t> AlphaValues(const clsICO& Ico, int16_t Index)
{
    Array2D<uint8_t> Alpha;
    std::vector<uint8_t> Out;
    if (Ico.getArrayAlpha(Index, Alpha))
        for (int Y = 0; Y < Alpha.Height(); ++Y)
            for (int X = 0; X < Alpha.Width(); ++X)
                Out.push_back(Alpha(X, Y));
    return Out;
}

TEST(clsICO_Open, AlphaWalkFromTheLastRowWithTheRowSkip)
{
    auto Counting = [](size_t N) {
        Bytes Out(N);
        for (size_t I = 0; I < N; ++I)
            Out[I] = uint8_t(I + 1);
        return Out;
    };
    struct Case {
        const char* Name;
        int W, H;
        Bytes Colors;
        std::vector<uint8_t> Alpha;  // image rows from the top
    } Cases[] = {
        {"alpha 0 on an opaque pixel reads 255", 4, 1, {1, 1, 1, 0, 2, 2, 2, 1, 3, 3, 3, 128, 4, 4, 4, 255},
         {255, 1, 128, 255}},
        {"width 4: rows follow each other", 4, 2, Counting(32), {20, 24, 28, 32, 4, 8, 12, 16}},
        // Byte i holds i + 1. The bottom row takes bytes 3..19, then 3 bytes are skipped; the
        // top row's last pixel would lie past the data and keeps 255.
        {"width 5 skips 3 bytes a row", 5, 2, Counting(40), {27, 31, 35, 39, 255, 4, 8, 12, 16, 20}},
        {"width 2 skips 2 bytes a row", 2, 3, Counting(24), {24, 255, 14, 18, 4, 8}},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        const Bytes Mask(size_t(C.H) * 4, 0);
        clsICO Ico;
        ASSERT_TRUE(Open(Ico, IconFile(1, {{uint8_t(C.W), uint8_t(C.H), 0, 1, 32, Record(C.W, 2 * C.H, 32, C.Colors + Mask)}})));
        EXPECT_EQ(AlphaValues(Ico, 0), C.Alpha);
    }
}

TEST(clsICO_Open, RefusalsLeaveTheObjectEmpty)
{
    const Bytes Good = IconFile(1, {{3, 2, 2, 1, 1, OneBitRecord()}});
    const Bytes Two = IconFile(1, {{3, 2, 2, 1, 1, OneBitRecord()}, {2, 2, 0, 1, 32, Record32()}});
    auto Patch = [](Bytes File, size_t At, std::initializer_list<uint8_t> Values) {
        std::copy(Values.begin(), Values.end(), File.begin() + std::ptrdiff_t(At));
        return File;
    };
    Bytes Png = Good;
    std::copy_n("\x89PNG\r\n\x1a\n", 8, Png.begin() + 22);
    struct Case {
        const char* Name;
        Bytes File;
        bool Opens;
        int16_t Icons, Cursors;
    } Cases[] = {
        {"good icon", Good, true, 1, 0},
        {"cursor", Patch(Good, 2, {2}), true, 0, 1},
        {"type 0", Patch(Good, 2, {0}), false, 0, 0},
        {"type 3", Patch(Good, 2, {3}), false, 0, 0},
        {"count 0", Patch(Good, 4, {0}), false, 0, 0},
        {"count negative", Patch(Good, 4, {0, 0x80}), false, 0, 0},
        {"first width 0", Patch(Good, 6, {0}), false, 0, 0},
        {"first height 0", Patch(Good, 7, {0}), false, 0, 0},
        {"bytes 0", Patch(Good, 14, {0, 0, 0, 0}), false, 0, 0},
        {"bytes negative", Patch(Good, 14, {0x40, 0, 0, 0x80}), false, 0, 0},
        {"offset 0", Patch(Good, 18, {0, 0, 0, 0}), false, 0, 0},
        {"second width 0", Patch(Two, 22, {0}), false, 2, 0},
        {"second height 0", Patch(Two, 23, {0}), false, 2, 0},
        {"directory cut", Bytes(Two.begin(), Two.begin() + 30), false, 2, 0},
        {"record cut by a byte", Bytes(Good.begin(), Good.end() - 1), false, 1, 0},
        {"record behind the end", Patch(Good, 18, {0xF0, 0, 0, 0}), false, 1, 0},
        {"PNG image", Png, false, 1, 0},
        {"depth 2", Patch(Good, 22 + 14, {2}), false, 1, 0},
        {"header height 1", Patch(Good, 22 + 8, {1}), false, 1, 0},
        {"header height negative", Patch(Good, 22 + 8, {0xFC, 0xFF, 0xFF, 0xFF}), false, 1, 0},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        const std::string Path = WriteTemp("refusal.ico", C.File);
        clsICO Ico;
        ASSERT_TRUE(Open(Ico, Two));
        EXPECT_EQ(Ico.OpenICO(Path), C.Opens);
        EXPECT_EQ(Ico.IconCount(), C.Opens ? 1 : 0);
        EXPECT_EQ(Ico.FileType(), C.Opens ? C.File[2] : 0);
        EXPECT_EQ(Ico.DIBXOR(0) != nullptr, C.Opens);
        EXPECT_EQ(Ico.ValidIcons(Path), C.Icons);
        EXPECT_EQ(Ico.ValidCursor(Path), C.Cursors);
        fs::remove(Path);
    }
}

TEST(clsICO_Query, SeekAndFields)
{
    auto Image = [](uint8_t Side, int Bpp) {
        const int Palette = Bpp <= 8 ? (1 << Bpp) * 4 : 0;
        const size_t Row = size_t((Side * Bpp + 31) / 32 * 4), MaskRow = size_t((Side + 31) / 32 * 4);
        return Entry{Side, Side, 0, 1, uint16_t(Bpp), Record(Side, Side * 2, Bpp, Bytes(Palette + (Row + MaskRow) * Side))};
    };
    clsICO Ico;
    ASSERT_TRUE(Open(Ico, IconFile(1, {Image(16, 4), Image(16, 8), Image(32, 8), Image(32, 32), Image(32, 24),
                                       Image(16, 8), Image(48, 1)})));
    EXPECT_EQ(Ico.IconCount(), 7);
    struct Case {
        int W, H, Bpp;
        int16_t Exact, BySize;
    } Cases[] = {
        {16, 16, 8, 1, 5},    // no deep image: the last of 8 bits or below
        {32, 32, 24, 4, 3},   // the first above 8 bits
        {48, 48, 1, 6, 6},
        {16, 16, 32, -1, 5},
        {24, 24, 8, -1, -1},
    };
    for (const Case& C : Cases) {
        EXPECT_EQ(Ico.SeekIcon(C.W, C.H, C.Bpp), C.Exact) << C.W << " " << C.Bpp;
        EXPECT_EQ(Ico.SeekIcon_Size(C.W, C.H), C.BySize) << C.W;
    }
    EXPECT_EQ(Ico.IconBytesInRes(6), 40 + 8 + (8 + 8) * 48);
    EXPECT_EQ(Ico.HotSpotX(0), 0);

    ASSERT_TRUE(Open(Ico, IconFile(2, {{3, 2, 2, 16, 23, OneBitRecord()}})));
    EXPECT_EQ(Ico.HotSpotX(0), 16);
    EXPECT_EQ(Ico.HotSpotY(0), 23);
    for (const auto& [Colors, Bpp] :
         std::initializer_list<std::pair<int, int>>{{2, 1}, {16, 4}, {256, 8}, {0, 24}, {1, 24}, {255, 24}, {-1, 24}})
        EXPECT_EQ(clsICO::convBPP_Upto24(Colors), Bpp) << Colors;
}

TEST(clsICO_Draw, MaskWithAndColourWithOrThenAlpha)
{
    // 24 bits, 2 by 2, rows of 8 bytes. Top row: red opaque, black transparent. Bottom row:
    // 0x00F0F0 (red and green F0) under a white mask, an inverse pixel, then black opaque.
    const Bytes Colors = {0, 0xF0, 0xF0, 0, 0, 0, 0, 0, 0, 0, 255, 0, 0, 0, 0, 0};
    const Bytes Mask = {0x80, 0, 0, 0, 0x40, 0, 0, 0};
    clsICO Ico;
    ASSERT_TRUE(Open(Ico, IconFile(1, {{2, 2, 0, 1, 24, Record(2, 4, 24, Colors + Mask)}})));
    clsDIB Target;
    ASSERT_TRUE(Target.CreateBlankDIB(4, 3, 32, 0x303030, false, true));
    ASSERT_TRUE(Ico.DrawIcon_To_DIB(Target, 0, 1, 1));
    const uint32_t Expected[3][4] = {{0x303030, 0x303030, 0x303030, 0x303030},
                                     {0x303030, 0x0000FF, 0x303030, 0x303030},
                                     // OR, where XOR would give 0x30C0C0
                                     {0x303030, 0x30F0F0, 0x000000, 0x303030}};
    for (int Y = 0; Y < 3; ++Y)
        for (int X = 0; X < 4; ++X)
            EXPECT_EQ(Target.DIBhDC()->GetPixel(X, Y), Expected[Y][X]) << X << "," << Y;

    // 32 bits, 3 by 1: alpha 128 over the target, alpha 0 under a black mask (drawn whole),
    // and a masked pixel. Percent floor(128 / 255 * 100) = 50.
    const Bytes Colors32 = {200, 0, 100, 128, 0, 0, 10, 0, 0, 0, 0, 0};
    ASSERT_TRUE(Open(Ico, IconFile(1, {{3, 1, 0, 1, 32, Record(3, 2, 32, Colors32 + Bytes{0x20, 0, 0, 0})}})));
    ASSERT_TRUE(Target.CreateBlankDIB(3, 1, 32, RGBColor(200, 50, 0), false, true));
    ASSERT_TRUE(Ico.DrawIcon_To_DIB(Target, 0, 0, 0));
    EXPECT_EQ(Target.DIBhDC()->GetPixel(0, 0), RGBColor(150, 25, 100));
    EXPECT_EQ(Target.DIBhDC()->GetPixel(1, 0), RGBColor(10, 0, 0));
    EXPECT_EQ(Target.DIBhDC()->GetPixel(2, 0), RGBColor(200, 50, 0));
    EXPECT_FALSE(Ico.DrawIcon_To_DIB(Target, 1, 0, 0));
}

TEST(clsICO_Save, LayoutsByteForByte)
{
    // Read with the records in reverse order and a stale size; written in index order,
    // offsets 6 + 16 n and on, sizes of the records written.
    Bytes In;
    Put16(In, 0), Put16(In, 1), Put16(In, 2);
    const Bytes A = OneBitRecord(), B = Record32();
    In = In + Bytes{3, 2, 2, 0, 1, 0, 1, 0, 1, 0, 0, 0};
    Put32(In, uint32_t(38 + B.size() + 5));
    In = In + Bytes{2, 2, 0, 0, 1, 0, 32, 0, 1, 0, 0, 0, 38, 0, 0, 0} + B + Bytes(5, 0xEE) + A;
    clsICO Ico;
    ASSERT_TRUE(Open(Ico, In));
    // Width 2: the walk skips 2 bytes behind the bottom row, so the top row starts at the
    // masked pixel's blue byte (9) and its second pixel lies past the data.
    EXPECT_EQ(AlphaValues(Ico, 1), (std::vector<uint8_t>{9, 255, 255, 128}));
    Array2D<uint8_t> Alpha(2, 2, 0);
    EXPECT_FALSE(Ico.putArrayAlpha(1, Array2D<uint8_t>(2, 3)));
    Alpha(0, 0) = 44, Alpha(1, 0) = 45, Alpha(0, 1) = 46, Alpha(1, 1) = 47;
    ASSERT_TRUE(Ico.putArrayAlpha(1, Alpha));

    // The alpha array where the mask is black, the byte read elsewhere (7 at top right).
    const Bytes B2 = Record(2, 4, 32, Bytes{255, 0, 0, 46, 0, 0, 255, 47, 0, 255, 0, 44, 9, 9, 9, 7} + Mask32);
    Bytes All;
    Put16(All, 0), Put16(All, 1), Put16(All, 2);
    All = All + Bytes{3, 2, 2, 0, 1, 0, 1, 0, uint8_t(A.size()), 0, 0, 0, 38, 0, 0, 0};
    All = All + Bytes{2, 2, 0, 0, 1, 0, 32, 0, uint8_t(B2.size()), 0, 0, 0, uint8_t(38 + A.size()), 0, 0, 0} + A + B2;
    const Bytes Single = Bytes{0, 0, 1, 0, 1, 0, 2, 2, 0, 0, 1, 0, 32, 0, uint8_t(B2.size()), 0, 0, 0, 22, 0, 0, 0} + B2;
    const std::string PathAll = TempPath("all.ico"), PathSingle = TempPath("single.ico");
    ASSERT_TRUE(Ico.SaveICO_All(PathAll));
    ASSERT_TRUE(Ico.SaveICO_Single(1, PathSingle));
    EXPECT_EQ(ReadAll(PathAll), All);
    EXPECT_EQ(ReadAll(PathSingle), Single);
    EXPECT_FALSE(Ico.SaveICO_Single(2, PathSingle));
    EXPECT_FALSE(Ico.SaveICO_All(testing::TempDir() + "no-such-folder/x.ico"));

    // A cursor's image is written as an icon: planes 1 and the depth replace the hotspot.
    ASSERT_TRUE(Open(Ico, IconFile(2, {{3, 2, 2, 16, 23, OneBitRecord()}})));
    ASSERT_TRUE(Ico.SaveICO_Single(0, PathSingle));
    EXPECT_EQ(ReadAll(PathSingle), (Bytes{0, 0, 1, 0, 1, 0, 3, 2, 2, 0, 1, 0, 1, 0, uint8_t(A.size()), 0, 0, 0, 22, 0, 0, 0} + A));
    fs::remove(PathAll);
    fs::remove(PathSingle);
}

TEST(IconPalettes, TheTablesRealIconsCarry)
{
    for (const auto& [File, Table] : {std::pair{"neko98/Awake.ico", IconPalettes::TableBytes(IconPalettes::Palette16)},
                                      std::pair{"neko98/playing.cur", IconPalettes::TableBytes(IconPalettes::Palette2)}}) {
        const Bytes Icon = ReadAll(std::string(TESSAVO_TESTDATA) + "/ico-cur/" + File);
        ASSERT_GT(Icon.size(), 62 + Table.size());
        EXPECT_EQ(Bytes(Icon.begin() + 62, Icon.begin() + 62 + std::ptrdiff_t(Table.size())), Table) << File;
    }
    EXPECT_EQ(IconPalettes::IndexIn16(0xC0C0C0), 7);
    EXPECT_EQ(IconPalettes::IndexIn16(0xC0C0C1), -1);
}

// ---- The public suite against icotool and ImageMagick ----

std::string Run(const std::string& Command, int& Status)
{
    std::string Out;
    FILE* Pipe = popen(Command.c_str(), "r");
    if (!Pipe)
        return Status = -1, Out;
    char Buffer[4096];
    for (size_t N; (N = fread(Buffer, 1, sizeof Buffer, Pipe)) > 0;)
        Out.append(Buffer, N);
    Status = pclose(Pipe);
    return Out;
}

struct Rgba {
    int W = 0, H = 0;
    Bytes Pixels;  // top row first
};

Rgba DecodePng(const std::string& Path)
{
    Rgba Out;
    png_image Image{};
    Image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&Image, Path.c_str()))
        return Out;
    Image.format = PNG_FORMAT_RGBA;
    Out.Pixels.resize(PNG_IMAGE_SIZE(Image));
    if (!png_image_finish_read(&Image, nullptr, Out.Pixels.data(), 0, nullptr))
        return Rgba();
    Out.W = int(Image.width), Out.H = int(Image.height);
    return Out;
}

// icotool's listing of a file: how many images, and whether it had anything to say
// besides the images (a warning about a field, a refusal).
size_t IcotoolList(const std::string& File, bool& Clean)
{
    int Status = 0;
    const std::string List = Run("icotool -l '" + File + "' 2>&1", Status);
    size_t Images = 0, Lines = 0;
    for (size_t At = 0; At < List.size(); At = List.find('\n', At) + 1, ++Lines)
        Images += List.compare(At, 2, "--") == 0;
    Clean = Status == 0 && Lines == Images;
    return Images;
}

// icotool's images of a file, in directory order.
std::vector<Rgba> IcotoolImages(const std::string& File)
{
    const fs::path Dir = TempPath("x");
    fs::remove_all(Dir);
    fs::create_directories(Dir);
    int Status = 0;
    Run("icotool -x -o '" + Dir.string() + "' '" + File + "' 2>/dev/null", Status);
    std::vector<Rgba> Out;
    for (const auto& E : fs::directory_iterator(Dir)) {
        // name_<index>_<w>x<h>x<depth>.png
        const std::string Name = E.path().stem().string();
        const size_t Last = Name.rfind('_'), Before = Name.rfind('_', Last - 1);
        const size_t Index = std::stoul(Name.substr(Before + 1, Last - Before - 1));
        if (Index >= 1 && Index <= 256) {
            Out.resize(std::max(Out.size(), Index));
            Out[Index - 1] = DecodePng(E.path().string());
        }
    }
    fs::remove_all(Dir);
    return Out;
}

// ImageMagick's reading of one image of the file, taken to be of the given size.
Rgba MagickImage(const std::string& File, int16_t Index, int W, int H)
{
    int Status = 0;
    const std::string Raw = Run("convert '" + File + "[" + std::to_string(Index) + "]' -depth 8 rgba:- 2>/dev/null", Status);
    Rgba Out;
    if (Status == 0 && Raw.size() == size_t(W) * size_t(H) * 4)
        Out = {W, H, Bytes(Raw.begin(), Raw.end())};
    return Out;
}

// The alpha value the walk gives pixel (X, Y) of a reference image: the byte the walk meets
// there, 0 read as 255, or 255 past the data; -1 where it meets a colour byte of a pixel the
// reference shows transparent, whose colour it does not tell.
int WalkedAlpha(const Rgba& Ref, int X, int Y)
{
    const size_t W = size_t(Ref.W), H = size_t(Ref.H), Skip = W % 4 ? 4 - W % 4 : 0;
    const size_t At = (H - 1 - size_t(Y)) * (W * 4 + Skip) + size_t(X) * 4 + 3;
    if (At >= W * H * 4)
        return 255;
    const size_t Pixel = At / 4, Byte = At % 4;
    const uint8_t* P = &Ref.Pixels[((H - 1 - Pixel / W) * W + Pixel % W) * 4];
    if (Byte != 3 && P[3] == 0)
        return -1;
    const uint8_t Value = Byte == 3 ? P[3] : P[2 - Byte];  // blue, green, red
    return Value ? Value : 255;
}

// Our image against a reference: where the reference is opaque the colours agree; below 32
// bits the mask is its transparency. At 32 bits our alpha is, for a file read, what the walk
// takes from the reference's bytes; for a file written, the reference's alpha where the mask
// is black.
std::string Compare(const clsICO& Ico, int16_t Index, const Rgba& Ref, bool Written = false)
{
    const clsDIB& Color = *Ico.DIBXOR(Index);
    const clsDIB& Mask = *Ico.DIBAND(Index);
    const int W = Color.DIBWidth(), H = Color.DIBHeight();
    if (Ref.W != W || Ref.H != H)
        return "size " + std::to_string(W) + "x" + std::to_string(H) + " vs " + std::to_string(Ref.W) + "x" +
               std::to_string(Ref.H);
    Array2D<uint8_t> Alpha;
    const bool Deep = Ico.getArrayAlpha(Index, Alpha);
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X) {
            const uint8_t* P = &Ref.Pixels[(size_t(Y) * W + X) * 4];
            const uint32_t Ours = Color.DIBhDC()->GetPixel(X, Y);
            const std::string At = " at " + std::to_string(X) + "," + std::to_string(Y);
            if (P[3] != 0 && Ours != RGBColor(P[0], P[1], P[2]))
                return "colour" + At;
            if (!Deep && (Mask.DIBhDC()->GetPixel(X, Y) != 0) != (P[3] == 0))
                return "mask" + At;
            const bool Opaque = Mask.DIBhDC()->GetPixel(X, Y) == 0;
            const int Expected = !Deep ? -1 : !Written ? WalkedAlpha(Ref, X, Y) : Opaque ? P[3] : -1;
            if (Expected >= 0 && Alpha(X, Y) != Expected)
                return "alpha" + At;
        }
    return "";
}

// The reference for one image. icotool reads 24-bit rows without their padding to 32 bits, so
// images whose 24-bit rows are padded are compared with ImageMagick, which pads them as the
// format and Mozilla's reference renderings do.
Rgba Reference(const clsICO& Ico, int16_t Index, const std::string& File, const std::vector<Rgba>& Icotool,
               bool Magick)
{
    const int W = Ico.IconWidth(Index), H = Ico.IconHeight(Index);
    if (Magick || (Ico.IconBPP(Index) == 24 && W * 3 % 4 != 0))
        return MagickImage(File, Index, W, H);
    return size_t(Index) < Icotool.size() ? Icotool[size_t(Index)] : Rgba();
}

// Files this reader refuses by its rules: PNG images, 256-pixel entries, broken files.
const std::set<std::string> Refused = {
    // PNG images
    "png_8x8.ico", "lenient-bpp.ico", "oom-0d0085eb7f66ea55d9119206235cd29e089b9140.ico", "png-32bpp-alpha.ico",
    "png_l8.ico", "png_rgb8.ico", "2png.ico", "ico-size-1x1-png.ico", "ico-size-2x2-png.ico",
    "ico-size-3x3-png.ico", "ico-size-4x4-png.ico", "ico-size-6x6-png.ico", "ico-size-7x7-png.ico",
    "hopper_draw.ico",
    // 256-pixel entries (some PNG as well)
    "ico-size-256x256-png.ico", "ico-size-256x256-24bpp.ico", "ico-size-256x256-4bpp.ico",
    "ico-size-256x256-8bpp.ico", "hopper_256x256.ico", "pillow.ico", "nsis-menu.ico", "nsis3-install.ico",
    // broken: directory or records cut short, empty directory, bad depth
    "fail-bug778204.ico", "fail-invalid.3.ico", "randomly-modified-bad-header.ico",
    "randomly-modified-bug776040.ico", "randomly-modified-invalid.2.ico",
    "crash-981fee302fe0fc543ee48292cc3d6ace7e97e633.ico", "no_cursors.cur", "invalid-bpp.ico",
};
// Files icotool refuses for a directory byte count that disagrees with the record, which this
// reader does not read: ImageMagick is the reference.
const std::set<std::string> WrongByteCount = {"hopper_mask.ico", "Bad_smile-incorrect-image-length.ico",
                                              "mask_1.cur"};
// Files no other reader sees as this one does, checked on the bytes: a bitmap header of 124
// bytes, behind whose first 40 this reader takes the rows to start all the same; and a 2 by 2
// entry whose bitmap header says 16 by 8, the size this reader takes (ImageMagick takes the
// entry's).
const std::set<std::string> ByHand = {"bmp_v5_with_icc.ico", "invalid-compression.ico"};
// Files whose bitmap header names a compression, a field this reader ignores: they read as
// the same file with the field cleared reads elsewhere.
const std::set<std::string> Compressed = {"fail-invalid.1.ico", "invalid-compression-RLE4.ico",
                                          "invalid-compression.ico"};

std::string ClearedCompression(const std::string& Path)
{
    Bytes File = ReadAll(Path);
    const size_t At = size_t(File[18] | File[19] << 8) + 16;
    std::fill_n(File.begin() + std::ptrdiff_t(At), 4, 0);
    return WriteTemp("cleared.ico", File);
}

class clsICO_Files : public testing::TestWithParam<std::string> {};

TEST_P(clsICO_Files, LoadAsTheReferencesAndWriteBack)
{
    std::vector<std::string> Paths;
    for (const auto& E : fs::directory_iterator(std::string(TESSAVO_TESTDATA) + "/ico-cur/" + GetParam()))
        if (E.path().extension() == ".ico" || E.path().extension() == ".cur")
            Paths.push_back(E.path().string());
    std::sort(Paths.begin(), Paths.end());
    ASSERT_FALSE(Paths.empty());
    for (const std::string& Path : Paths) {
        const std::string Name = fs::path(Path).filename().string();
        SCOPED_TRACE(Name);
        clsICO Ico;
        const bool Opened = Ico.OpenICO(Path);
        EXPECT_EQ(Opened, !Refused.count(Name));
        if (!Opened) {
            EXPECT_EQ(Ico.IconCount(), 0);
            continue;
        }
        const bool Magick = WrongByteCount.count(Name) > 0;
        const std::string Source = Compressed.count(Name) ? ClearedCompression(Path) : Path;
        bool Clean = false;
        if (ByHand.count(Name)) {
            const Bytes File = ReadAll(Path);
            const clsDIB &Color = *Ico.DIBXOR(0), &Mask = *Ico.DIBAND(0);
            const auto At = File.begin() + Ico.Entries()[0].ImageOffset + 40;
            EXPECT_EQ(Ico.IconBPP(0), 24);
            EXPECT_TRUE(std::equal(Color.DIBBitsPtr(), Color.DIBBitsPtr() + Color.DIBSize(), At));
            EXPECT_TRUE(std::equal(Mask.DIBBitsPtr(), Mask.DIBBitsPtr() + Mask.DIBSize(), At + Color.DIBSize()));
        } else {
            if (!Magick) {
                EXPECT_EQ(IcotoolList(Source, Clean), size_t(Ico.IconCount()));
            }
            const std::vector<Rgba> Refs = IcotoolImages(Source);
            for (int16_t I = 0; I < Ico.IconCount(); ++I)
                EXPECT_EQ(Compare(Ico, I, Reference(Ico, I, Source, Refs, Magick)), "") << "image " << I;
        }

        const std::string Written = TempPath("written.ico");
        ASSERT_TRUE(Ico.SaveICO_All(Written));
        EXPECT_EQ(IcotoolList(Written, Clean), size_t(Ico.IconCount()));
        EXPECT_TRUE(Clean);
        const std::vector<Rgba> Back = IcotoolImages(Written);
        for (int16_t I = 0; I < Ico.IconCount(); ++I)
            EXPECT_EQ(Compare(Ico, I, Reference(Ico, I, Written, Back, false), true), "") << "written image " << I;
        fs::remove(Written);
        if (Source != Path)
            fs::remove(Source);
    }
}

INSTANTIATE_TEST_SUITE_P(Suite, clsICO_Files,
                         testing::Values("gdk-pixbuf", "gfxprim", "image-rs", "imlib2", "mejico-order", "mejico-png",
                                         "misc", "mozilla-cur", "mozilla-ico-bmp-1bpp", "mozilla-ico-bmp-24bpp",
                                         "mozilla-ico-bmp-32bpp", "mozilla-ico-bmp-4bpp", "mozilla-ico-bmp-8bpp",
                                         "mozilla-ico-bmp-corrupted", "mozilla-ico-mixed", "mozilla-ico-png", "neko98",
                                         "nsis", "pillow"),
                         [](const testing::TestParamInfo<std::string>& Info) {
                             std::string Name = Info.param;
                             std::replace(Name.begin(), Name.end(), '-', '_');
                             return Name;
                         });

} // namespace
