// Every GIF of the public suites: the reader gives frame by frame the indexes, places and colour
// tables giflib reads, refuses exactly the files its rules refuse, and a round trip through Save
// reads back identically, in this reader and in giflib.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "GIFTestSupport.h"
#include "clsGIF.h"

namespace {

std::vector<std::string> SuiteFiles()
{
    std::vector<std::string> Files;
    std::error_code Error;
    for (const auto& Suite : std::filesystem::directory_iterator(TESSAVO_TESTDATA, Error)) {
        if (Suite.path().filename().string().rfind("gif-", 0) != 0)
            continue;
        for (const auto& Entry : std::filesystem::recursive_directory_iterator(Suite.path(), Error))
            if (Entry.is_regular_file() && Entry.path().extension() == ".gif")
                Files.push_back(Entry.path().string());
    }
    std::sort(Files.begin(), Files.end());
    return Files;
}

std::string Name(const std::string& Path)
{
    return std::filesystem::path(Path).filename().string();
}

// Streams giflib reads that this reader refuses, by its own rules: an image beyond the first
// finds no control block of its number, or the screen is wider than 32767.
const std::map<std::string, int16_t> Refused = {
    {"animation-multi-image.gif", 20}, {"animation-no-delays.gif", 20}, {"comment_after_last_frame.gif", 20},
    {"high-color.gif", 20}, {"images-combine.gif", 20}, {"images-overlap.gif", 20}, {"no_palette.gif", 20},
    {"no_palette_with_background.gif", 20}, {"no_palette_with_transparency_after_rgb.gif", 20},
    {"test_extents.gif", 20}, {"max-width.gif", 6},
};

// Files whose pixels this reader takes otherwise than giflib, by the decoder's own rules.
const std::map<std::string, const char*> ReadOtherwise = {
    {"all-blues.gif", "data longer than the surface, cut where the read position meets its size"},
    {"all-reds.gif", "the same"},
    {"interlace.gif", "the same"},
    {"hopper_resized.gif", "the same"},
    {"many-clears.gif", "a Clear straight after a Clear is a pixel"},
    {"no-clear.gif", "a stream that does not begin with Clear loses its first code"},
    {"no-clear-and-eoi.gif", "the same"},
};

// The file tests on whole files: a short file, junk after the trailer, a bad version.
const std::map<std::string, int16_t> FileCodes = {
    {"gif87a.gif", 2}, {"porsche.gif", 5}, {"afl-010.gif", 4}, {"fail-bug778584.gif", 3}, {"max-width.gif", 6},
    {"fire.gif", 0},
};

// Whether every index of every frame fits the code size its table gives: an index at or above
// the Clear code cannot be written as a pixel.
bool Representable(clsGIF& Gif)
{
    for (int16_t F = 1; F <= Gif.FramesCount(); ++F) {
        const int Entries = Gif.LocalPaletteUsed(F) ? Gif.LocalPaletteEntries(F) : Gif.GlobalPaletteEntries();
        int Bits = 2;
        while ((1 << Bits) < Entries)
            ++Bits;
        for (uint8_t Index : GIFTest::Indexes(Gif.FrameDIBXOR(F)))
            if (Index >= (1 << Bits))
                return false;
    }
    return true;
}

int16_t LoadBytes(clsGIF& Gif, const std::string& Path)
{
    std::vector<uint8_t> Bytes = GIFTest::ReadFile(Path);
    return Gif.LoadStream(Bytes);
}

// The frame's table entries as red, green, blue triples, as many as giflib has.
std::vector<uint8_t> Colors(clsGIF& Gif, int16_t Frame, size_t Triples)
{
    std::vector<uint8_t> Out;
    for (size_t I = 0; I < Triples && I < 256; ++I) {
        const uint32_t C = Gif.LocalPaletteColor(Frame, static_cast<int32_t>(I));
        Out.insert(Out.end(), {ColorR(C), ColorG(C), ColorB(C)});
    }
    return Out;
}

void ExpectLikeGiflib(clsGIF& Gif, const std::vector<GIFTest::GiflibFrame>& Frames, bool Pixels)
{
    ASSERT_LE(Gif.FramesCount(), static_cast<int>(Frames.size()));
    for (int16_t F = 1; F <= Gif.FramesCount(); ++F) {
        SCOPED_TRACE(F);
        const GIFTest::GiflibFrame& G = Frames[F - 1];
        EXPECT_EQ(Gif.FrameLeft(F), static_cast<int16_t>(G.Left));
        EXPECT_EQ(Gif.FrameTop(F), static_cast<int16_t>(G.Top));
        EXPECT_EQ(Gif.FrameWidth(F), G.Width);
        EXPECT_EQ(Gif.FrameHeight(F), G.Height);
        EXPECT_EQ(Gif.FrameInterlaced(F), G.Interlaced);
        EXPECT_EQ(Colors(Gif, F, G.Colors.size() / 3), G.Colors);
        if (Pixels) {
            EXPECT_TRUE(GIFTest::Indexes(Gif.FrameDIBXOR(F)) == G.Raster);
        }
    }
}

} // namespace

TEST(clsGIFFiles, SuiteFilesReadLikeGiflib)
{
    const std::vector<std::string> Files = SuiteFiles();
    ASSERT_GT(Files.size(), 150u);
    int Compared = 0;
    for (const std::string& Path : Files) {
        SCOPED_TRACE(Path);
        clsGIF Gif;
        const int16_t FileCode = Gif.LoadFromGIFFile(Path);
        if (FileCodes.count(Name(Path))) {
            EXPECT_EQ(FileCode, FileCodes.at(Name(Path)));
        }
        // The block reader is compared on every stream, short ones too.
        const int16_t Code = LoadBytes(Gif, Path);
        std::vector<GIFTest::GiflibFrame> Frames;
        if (!GIFTest::GiflibRead(Path, Frames))
            continue;  // damaged beyond giflib: this reader only has to survive it
        const auto Refusal = Refused.find(Name(Path));
        if (Refusal != Refused.end()) {
            EXPECT_EQ(Code, Refusal->second);
            continue;
        }
        EXPECT_EQ(Code, 0);
        ExpectLikeGiflib(Gif, Frames, !ReadOtherwise.count(Name(Path)));
        ++Compared;
    }
    EXPECT_GT(Compared, 60);
}

TEST(clsGIFFiles, RoundTripThroughSaveReadsBackIdentically)
{
    GIFTest::Folder Dir;
    int RoundTrips = 0;
    for (const std::string& Path : SuiteFiles()) {
        SCOPED_TRACE(Path);
        clsGIF Gif;
        if (LoadBytes(Gif, Path) != 0 || !Representable(Gif))
            continue;
        const std::string Copy = Dir.Path("copy.gif");
        // A comment goes out as one sub-block: a longer one fails the save.
        std::string Comment = Gif.CommentText();
        if (Comment.size() > 255) {
            EXPECT_FALSE(Gif.Save(Copy, 0, Comment));
            Comment.clear();
        }
        ASSERT_TRUE(Gif.Save(Copy, 0, Comment));
        clsGIF Again;
        ASSERT_EQ(LoadBytes(Again, Copy), 0);
        ASSERT_EQ(Again.FramesCount(), Gif.FramesCount());
        EXPECT_EQ(Again.BgdWidth(), Gif.BgdWidth());
        EXPECT_EQ(Again.BgdHeight(), Gif.BgdHeight());
        EXPECT_EQ(Again.NetscapeLoops(), Gif.NetscapeLoops());
        EXPECT_EQ(Again.CommentText(), Comment);
        for (int16_t F = 1; F <= Gif.FramesCount(); ++F) {
            SCOPED_TRACE(F);
            EXPECT_EQ(Again.FrameDelay(F), Gif.FrameDelay(F));
            EXPECT_EQ(Again.FrameDisposalMethod(F), Gif.FrameDisposalMethod(F));
            EXPECT_EQ(Again.FrameUseTransparentColor(F), Gif.FrameUseTransparentColor(F));
            EXPECT_EQ(Again.FrameTransparentColorIndex(F), Gif.FrameTransparentColorIndex(F));
            EXPECT_EQ(Again.FrameLeft(F), Gif.FrameLeft(F));
            EXPECT_EQ(Again.FrameTop(F), Gif.FrameTop(F));
            EXPECT_TRUE(GIFTest::Indexes(Again.FrameDIBXOR(F)) == GIFTest::Indexes(Gif.FrameDIBXOR(F)));
            EXPECT_EQ(Colors(Again, F, 256), Colors(Gif, F, 256));
        }
        std::vector<GIFTest::GiflibFrame> Frames;
        ASSERT_TRUE(GIFTest::GiflibRead(Copy, Frames));
        ExpectLikeGiflib(Again, Frames, true);
        ++RoundTrips;
    }
    EXPECT_GT(RoundTrips, 60);
}
