// The GIF writers: the bytes of a small animation, the version, table sizes and flags, the loop
// and comment blocks, one frame alone, failures, and the writer of a single 8-bit surface.
#include <gtest/gtest.h>

#include <filesystem>

#include "GIFTestSupport.h"
#include "clsGIF.h"
#include "clsPal.h"

using GIFTest::Stream;

namespace {

// Two frames of one pixel on a 3 x 2 screen with a global table of 4 entries: the first
// transparent with disposal 2, the second with a local table of 2 entries and interlaced.
Stream TinyAnimation()
{
    return Stream::Head("89a", 3, 2, 2).Loops(2).Control(0x09, 10, 3).Image(0, 0, 1, 1, {1}, 2)
        .Control(0, 20, 0).Image(2, 1, 1, 1, {1}, 1, 1, true).Trailer();
}

std::vector<uint8_t> Concat(std::initializer_list<std::vector<uint8_t>> Parts)
{
    std::vector<uint8_t> All;
    for (const auto& P : Parts)
        All.insert(All.end(), P.begin(), P.end());
    return All;
}

std::vector<uint8_t> Text(const std::string& S)
{
    return {S.begin(), S.end()};
}

// The sub-blocks of one pixel of value 1 at minimum code size 2: Clear, 1, End at 3 bits.
const std::vector<uint8_t> OnePixel = {2, 0x4C, 0x01, 0};
const std::vector<uint8_t> Screen = {3, 0, 2, 0, 0x91, 0, 0, 0, 0, 0, 1, 2, 3, 2, 4, 6, 3, 6, 9};
const std::vector<uint8_t> LoopBlock = Concat({{0x21, 0xFF, 0x0B}, Text("NETSCAPE2.0"), {3, 1, 2, 0, 0}});
const std::vector<uint8_t> Frame1 = Concat({{0x21, 0xF9, 4, 0x09, 10, 0, 3, 0, 0x2C, 0, 0, 0, 0, 1, 0, 1, 0, 0x01, 2},
                                            OnePixel});
const std::vector<uint8_t> Frame2 = Concat(
    {{0x21, 0xF9, 4, 0, 20, 0, 0, 0, 0x2C, 2, 0, 1, 0, 1, 0, 1, 0, 0xC0, 0, 0, 0, 1, 2, 3, 2}, OnePixel});

} // namespace

TEST(clsGIFSave, TinyAnimationByteForByte)
{
    GIFTest::Folder Dir;
    clsGIF Gif;
    Stream S = TinyAnimation();
    ASSERT_EQ(Gif.LoadStream(S.Bytes), 0);
    const std::vector<uint8_t> Comment = {0x21, 0xFE, 2, 'H', 'i', 0};
    struct Case {
        int16_t FrameOne;
        std::string Comment;
        std::vector<uint8_t> Expected;
    } Cases[] = {
        {0, "", Concat({Text("GIF89a"), Screen, LoopBlock, Frame1, Frame2, {0x3B}})},
        {0, "Hi", Concat({Text("GIF89a"), Screen, LoopBlock, Comment, Frame1, Frame2, {0x3B}})},
        {2, "", Concat({Text("GIF89a"), Screen, LoopBlock, Frame2, {0x3B}})},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.FrameOne);
        const std::string Path = Dir.Path("tiny.gif");
        ASSERT_TRUE(Gif.Save(Path, C.FrameOne, C.Comment));
        EXPECT_EQ(GIFTest::ReadFile(Path), C.Expected);
        std::vector<GIFTest::GiflibFrame> Frames;
        ASSERT_TRUE(GIFTest::GiflibRead(Path, Frames));
        EXPECT_EQ(Frames.size(), C.FrameOne ? 1u : 2u);
    }
}

TEST(clsGIFSave, VersionTableSizesAndFailures)
{
    GIFTest::Folder Dir;
    const std::string Path = Dir.Path("out.gif");
    clsGIF Empty;
    ASSERT_TRUE(Empty.Save(Path));
    EXPECT_EQ(GIFTest::ReadFile(Path), Concat({Text("GIF87a"), {0, 0, 0, 0, 0, 0, 0, 0x3B}}));
    ASSERT_TRUE(Empty.Save(Path, 0, "c"));
    EXPECT_EQ(GIFTest::ReadFile(Path), Concat({Text("GIF89a"), {0, 0, 0, 0, 0, 0, 0}, {0x21, 0xFE, 1, 'c', 0, 0x3B}}));

    // A global table of 5 entries takes 8 places, the last 3 black; sorted sets 8.
    clsGIF Gif;
    Stream S = Stream::Head("89a", 1, 1, 3).Image(0, 0, 1, 1, {4}, 3).Trailer();
    ASSERT_EQ(Gif.LoadStream(S.Bytes), 0);
    Gif.setGlobalPaletteEntries(5);
    Gif.setGlobalPaletteSorted(true);
    ASSERT_TRUE(Gif.Save(Path));
    std::vector<uint8_t> Out = GIFTest::ReadFile(Path);
    EXPECT_EQ(Out[10], 0x80 | 0x20 | 0x08 | 0x02);
    EXPECT_EQ(std::vector<uint8_t>(Out.begin() + 13, Out.begin() + 37),
              (std::vector<uint8_t>{0, 0, 0, 1, 2, 3, 2, 4, 6, 3, 6, 9, 4, 8, 12, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    // Image descriptor flags: the global size field (the frame's own sort flag came from the
    // file); code size 3.
    const size_t Descriptor = 37 + 19 + 8;
    EXPECT_EQ(Out[Descriptor], 0x2C);
    EXPECT_EQ(Out[Descriptor + 9], 0x02);
    EXPECT_EQ(Out[Descriptor + 10], 3);

    // A comment over 255 characters fails after the blocks before it.
    EXPECT_FALSE(Gif.Save(Path, 0, std::string(256, 'x')));
    EXPECT_EQ(GIFTest::ReadFile(Path).size(), 13u + 24u + 19u);
    // A frame that does not exist, and a frame with neither table.
    EXPECT_FALSE(Gif.Save(Path, 2));
    Gif.setGlobalPaletteExists(false);
    EXPECT_FALSE(Gif.Save(Path));
    EXPECT_FALSE(Gif.Save(Dir.Path("no/such/folder.gif")));
}

TEST(clsGIFSave, SubBlocksHoldAtMost254BytesAndReadBackIdentically)
{
    GIFTest::Folder Dir;
    std::vector<uint8_t> Noise(64 * 40);
    uint32_t Seed = 12345;
    for (uint8_t& P : Noise)
        P = static_cast<uint8_t>((Seed = Seed * 1103515245 + 12345) >> 24);
    clsGIF Gif;
    Stream S = Stream::Head("89a", 64, 40, 8).Image(0, 0, 64, 40, Noise, 8, 0, true).Trailer();
    ASSERT_EQ(Gif.LoadStream(S.Bytes), 0);
    const std::string Path = Dir.Path("noise.gif");
    ASSERT_TRUE(Gif.Save(Path));
    const std::vector<uint8_t> Out = GIFTest::ReadFile(Path);
    size_t Pos = 13 + 768 + 19 + 8 + 10 + 1;
    int Blocks = 0;
    while (Out[Pos] != 0) {
        EXPECT_LE(Out[Pos], 254);
        Pos += Out[Pos] + 1u;
        ++Blocks;
    }
    EXPECT_GT(Blocks, 10);
    EXPECT_EQ(Out[Pos + 1], 0x3B);
    clsGIF Again;
    ASSERT_EQ(Again.LoadFromGIFFile(Path), 0);
    EXPECT_EQ(GIFTest::Indexes(Again.FrameDIBXOR(1)), Noise);
    EXPECT_TRUE(Again.FrameInterlaced(1));
}

TEST(clsGIFSave, SaveGIFFrom_BPP8_DIB)
{
    GIFTest::Folder Dir;
    clsPal Pal;
    Pal.CreatePalette16();
    clsDIB Dib;
    ASSERT_TRUE(Dib.CreateBlankDIB(2, 6, 8, 0xFFFFFF, true));
    for (int Y = 0; Y < 6; ++Y)
        Dib.DIBhDC()->Row(Y)[1] = static_cast<uint8_t>(Y + 1);
    struct Case {
        bool UseTransparent;
        int32_t Color;
        bool Interlace;
        std::string Comment;
        const char* Version;
        int GCEFlags;
        int Index;
    } Cases[] = {
        {false, -1, false, "", "87a", 0, 0},
        {true, static_cast<int32_t>(RGBColor(0, 128, 0)), false, "", "89a", 1, 2},
        {true, static_cast<int32_t>(RGBColor(1, 2, 3)), true, "", "89a", 1, 0},
        {true, -1, false, "", "89a", 1, 0},
        {false, -1, true, "note", "89a", 0, 0},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Index);
        const std::string Path = Dir.Path("one.gif");
        ASSERT_TRUE(clsGIF().SaveGIFFrom_BPP8_DIB(Path, Dib, Pal, C.UseTransparent, C.Color, C.Interlace, C.Comment));
        const std::vector<uint8_t> Out = GIFTest::ReadFile(Path);
        EXPECT_EQ(std::vector<uint8_t>(Out.begin(), Out.begin() + 13),
                  Concat({Text("GIF"), Text(C.Version), {2, 0, 6, 0, 0xF7, 0, 0}}));
        EXPECT_EQ(std::vector<uint8_t>(Out.begin() + 13 + 3 * 9, Out.begin() + 13 + 3 * 10),
                  (std::vector<uint8_t>{255, 0, 0}));
        const size_t Block = 13 + 768 + (C.Comment.empty() ? 0 : 3 + C.Comment.size() + 1);
        EXPECT_EQ(std::vector<uint8_t>(Out.begin() + Block, Out.begin() + Block + 19),
                  (std::vector<uint8_t>{0x21, 0xF9, 4, uint8_t(C.GCEFlags), 0, 0, uint8_t(C.Index), 0, 0x2C, 0, 0, 0,
                                        0, 2, 0, 6, 0, uint8_t(C.Interlace ? 0x47 : 7), 8}));
        EXPECT_EQ(Out.back(), 0x3B);
        std::vector<GIFTest::GiflibFrame> Frames;
        ASSERT_TRUE(GIFTest::GiflibRead(Path, Frames));
        ASSERT_EQ(Frames.size(), 1u);
        EXPECT_EQ(Frames[0].Raster, GIFTest::Indexes(Dib));
    }
    clsDIB Deep;
    ASSERT_TRUE(Deep.CreateBlankDIB(2, 2, 32, 0, true, true));
    EXPECT_FALSE(clsGIF().SaveGIFFrom_BPP8_DIB(Dir.Path("deep.gif"), Deep, Pal, false, -1, false));
}
