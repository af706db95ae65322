// The GIF reader: the file tests and their limits, the block loop, the pairing of control
// blocks with images, comments, loops, masks and the messages of a refused file.
#include <gtest/gtest.h>

#include "GIFTestSupport.h"
#include "clsGIF.h"

using GIFTest::Stream;

namespace {

// A file of one 2 x 2 image, padded with junk bytes to Size bytes.
std::vector<uint8_t> SmallFile(size_t Size, const char* Version = "89a", int Width = 2, int Height = 2)
{
    return Stream::Head(Version, Width, Height).Image(0, 0, 2, 2, {0, 1, 1, 0}).PadTo(Size).Trailer().Bytes;
}

int16_t Load(clsGIF& Gif, Stream S)
{
    return Gif.LoadStream(S.Bytes);
}

const std::vector<uint8_t> Dot = {1};

} // namespace

TEST(clsGIFLoad, FileTestsAnswerTheirCodesInOrder)
{
    GIFTest::Folder Dir;
    auto Patched = [](std::vector<uint8_t> B, size_t At, std::initializer_list<int> Values) {
        for (int V : Values)
            B[At++] = static_cast<uint8_t>(V);
        return B;
    };
    std::vector<uint8_t> Junk = SmallFile(101);
    Junk.push_back(0);
    struct Case {
        const char* Name;
        std::vector<uint8_t> Bytes;
        int16_t Code;
    } Cases[] = {
        {"100.gif", SmallFile(100), 2},
        {"101.gif", SmallFile(101), 0},
        {"87a.gif", SmallFile(101, "87a"), 0},
        {"sig.gif", Patched(SmallFile(101), 0, {'G', 'I', 'X'}), 3},
        {"ver.gif", Patched(SmallFile(101), 3, {'8', '8', 'a'}), 4},
        {"junk.gif", Junk, 5},
        {"w0.gif", SmallFile(101, "89a", 0, 5), 6},
        {"neg.gif", SmallFile(101, "89a", 40000, 1), 6},
        {"area.gif", SmallFile(101, "89a", 4000, 3751), 6},
        {"limit.gif", SmallFile(101, "89a", 10000, 1500), 0},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        const std::string Path = Dir.Write(C.Name, C.Bytes);
        clsGIF Gif;
        EXPECT_EQ(Gif.PreliminaryTest(Path), C.Code);
        EXPECT_EQ(Gif.LoadFromGIFFile(Path), C.Code);
        EXPECT_EQ(Gif.FramesCount(), C.Code == 0 ? 1 : 0);
    }
    clsGIF Gif;
    EXPECT_EQ(Gif.LoadFromGIFFile(Dir.Path("missing.gif")), 1);
    // The file tests take the area alone; the reader then holds the side to 10000.
    EXPECT_EQ(Gif.PreliminaryTest(Dir.Write("side.gif", SmallFile(101, "89a", 10001, 1))), 0);
    EXPECT_EQ(Gif.LoadFromGIFFile(Dir.Path("side.gif")), 6);
}

TEST(clsGIFLoad, ARefusalEmptiesTheObjectButKeepsGlobalPaletteExists)
{
    clsGIF Gif;
    ASSERT_EQ(Load(Gif, Stream::Head("89a", 3, 2, 2).Loops(4).Comment("c").Image(0, 0, 2, 2, {0, 1, 2, 3}, 2).Trailer()), 0);
    EXPECT_EQ(Gif.GIFVersion(), "89a");
    EXPECT_EQ(Gif.GlobalPaletteEntries(), 4);
    Stream Bad = Stream::Head("89a", 3, 2, 2);
    Bad.Bytes.resize(Bad.Bytes.size() - 2);
    EXPECT_EQ(Load(Gif, Bad), clsGIF::ErrOutOfBounds);
    EXPECT_EQ(Gif.FramesCount(), 0);
    EXPECT_EQ(Gif.GIFVersion(), "");
    EXPECT_EQ(Gif.BgdWidth(), 0);
    EXPECT_EQ(Gif.NetscapeLoops(), 0);
    EXPECT_EQ(Gif.GlobalPaletteEntries(), 0);
    EXPECT_FALSE(Gif.hasComment());
    EXPECT_EQ(Gif.FrameWidth(1), 0);
    EXPECT_TRUE(Gif.GlobalPaletteExists());
}

TEST(clsGIFLoad, StreamRefusalsAndTolerances)
{
    auto Images = [](int Count, int ScreenWidth = 1) {
        Stream S = Stream::Head("89a", ScreenWidth, 1);
        for (int I = 0; I < Count; ++I)
            S.Control(0, I, 0).Image(0, 0, 1, 1, Dot);
        return S.Trailer();
    };
    Stream Truncated = Images(1);
    Truncated.Bytes.resize(Truncated.Bytes.size() - 3);  // inside the image data
    Stream NoTrailer = Images(1);
    NoTrailer.Bytes.pop_back();
    // A frame whose descriptor claims 65535 x 65535 on a 10 x 10 screen.
    Stream Huge = Stream::Head("89a", 10, 10).Image(0, 0, 1, 1, Dot).Trailer();
    std::fill_n(Huge.Bytes.begin() + 13 + 6 + 5, 4, uint8_t(0xFF));
    Stream Empty = Stream::Head("89a", 1, 1).Control(0, 0, 0).Raw({0x2C}).Word(0).Word(0).Word(1).Word(1).Raw({0, 2, 0});
    struct Case {
        const char* Name;
        Stream S;
        int16_t Code;
        int16_t Frames;
    } Cases[] = {
        {"120 images", Images(120), 0, 120},
        {"121 images", Images(121), 12, 0},
        {"one image on a 2001-wide screen", Images(1, 2001), 0, 1},
        {"second image on a 2001-wide screen", Images(2, 2001), 6, 0},
        {"two images on a 2000-wide screen", Images(2, 2000), 0, 2},
        {"two images, one control block",
         Stream::Head("89a", 1, 1).Control(0, 5, 0).Image(0, 0, 1, 1, Dot).Image(0, 0, 1, 1, Dot).Trailer(), 20, 0},
        {"three images, control blocks before the second and third only",
         Stream::Head("89a", 1, 1).Image(0, 0, 1, 1, Dot).Control(0, 5, 0).Image(0, 0, 1, 1, Dot).Control(0, 6, 0)
             .Image(0, 0, 1, 1, Dot).Trailer(),
         20, 0},
        {"an image without data ends the reading",
         Stream::Head("89a", 1, 1).Control(0, 1, 0).Image(0, 0, 1, 1, Dot).Control(0, 2, 0).Raw({0x2C}).Word(0).Word(0)
             .Word(1).Word(1).Raw({0, 2, 0}).Control(0, 3, 0).Image(0, 0, 1, 1, Dot).Trailer(),
         0, 1},
        {"only an image without data", Empty.Trailer(), 13, 0},
        {"no image", Stream::Head("89a", 1, 1).Comment("x").Trailer(), 13, 0},
        {"junk and unknown extensions between blocks",
         Stream::Head("89a", 1, 1).Raw({0, 0x13, 0xFF}).Raw({0x21, 0x99}).SubBlocks({1, 2, 3}).Raw({0x21, 0x01})
             .SubBlocks(std::vector<uint8_t>(13, 7)).Image(0, 0, 1, 1, Dot).Raw({0x77}).Trailer(),
         0, 1},
        {"data cut short", Truncated, 20, 0},
        {"no trailer", NoTrailer, 11, 0},
        {"cut in the screen descriptor", Stream().Text("GIF89a").Raw({1, 0, 1}), 11, 0},
        {"cut in the signature", Stream().Text("GI"), 20, 0},
        {"frame too large to allocate", Huge, 20, 0},
        {"damaged LZW data ends the frame silently",
         Stream::Head("89a", 4, 4).Raw({0x2C}).Word(0).Word(0).Word(4).Word(4).Raw({0, 2}).SubBlocks({0xFF, 0x13, 0xFE})
             .Trailer(),
         0, 1},
        {"short NETSCAPE2.0 block",
         Stream::Head("89a", 1, 1).Raw({0x21, 0xFF, 11}).Text("NETSCAPE2.0").SubBlocks({1}).Image(0, 0, 1, 1, Dot).Trailer(),
         20, 0},
    };
    for (Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        clsGIF Gif;
        EXPECT_EQ(Gif.LoadStream(C.S.Bytes), C.Code);
        EXPECT_TRUE(C.S.Bytes.empty());
        EXPECT_EQ(Gif.FramesCount(), C.Frames);
    }
}

TEST(clsGIFLoad, ControlBlocksPairWithImagesByNumber)
{
    clsGIF Gif;
    // Frame 1's block stands after it; a single image needs none.
    ASSERT_EQ(Load(Gif, Stream::Head("89a", 1, 1).Image(0, 0, 1, 1, Dot).Control(0x0D, 7, 3).Control(0x02, 9, 1)
                            .Image(0, 0, 1, 1, Dot).Trailer()),
              0);
    EXPECT_EQ(Gif.FrameDelay(1), 7);
    EXPECT_TRUE(Gif.FrameUseTransparentColor(1));
    EXPECT_EQ(Gif.FrameTransparentColorIndex(1), 3);
    EXPECT_EQ(Gif.FrameDisposalMethod(1), 3);
    EXPECT_EQ(Gif.FrameDelay(2), 9);
    EXPECT_FALSE(Gif.FrameUseTransparentColor(2));
    EXPECT_EQ(Gif.FrameTransparentColorIndex(2), 0);  // only set with the flag
    ASSERT_EQ(Load(Gif, Stream::Head("89a", 1, 1).Image(0, 0, 1, 1, Dot).Trailer()), 0);
    EXPECT_FALSE(Gif.FrameUseTransparentColor(1));
    EXPECT_EQ(Gif.FrameDelay(1), 0);
    EXPECT_EQ(Gif.GlobalTransparentColorIndex(), -1);
}

TEST(clsGIFLoad, CommentsOnlyFrom89aAndOnlyTheFirst)
{
    std::string Printable;
    for (int I = 0; I < 127; ++I)
        Printable.push_back(static_cast<char>(32 + I % 95));
    struct Case {
        const char* Version;
        std::vector<std::string> Comments;
        std::string Kept;
    } Cases[] = {
        {"89a", {"Hello"}, "Hello"},
        {"87a", {"Hello"}, ""},
        {"89a", {"first", "second"}, "first"},
        {"89a", {std::string("\x01\x02\x03\x04\x05\x06\x07\x08\x09" "ab\r\n\x7F\xC3", 15)}, "ab\r\n"},
        {"89a", {Printable}, Printable},
        {"89a", {std::string(3, '\0'), "then"}, "then"},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Kept);
        Stream S = Stream::Head(C.Version, 1, 1);
        for (const std::string& Text : C.Comments)
            S.Comment(Text);
        clsGIF Gif;
        ASSERT_EQ(Load(Gif, S.Image(0, 0, 1, 1, Dot).Trailer()), 0);
        EXPECT_EQ(Gif.CommentText(), C.Kept);
        EXPECT_EQ(Gif.hasComment(), !C.Kept.empty());
    }
}

TEST(clsGIFLoad, ScreenPaletteLoopsAndFrameFields)
{
    Stream S = Stream::Head("89a", 7, 5, 3, 6);
    S.Bytes[10] |= 0x08 | 0x02;  // sorted; the size field's bit of value 2 is what hasUserInput reads
    S.Bytes[12] = 49;
    S.Loops(513).Image(-2, 3, 2, 1, {1, 0}, 2, 2, true).Trailer();
    clsGIF Gif;
    ASSERT_EQ(Gif.LoadStream(S.Bytes), 0);
    EXPECT_EQ(Gif.BgdWidth(), 7);
    EXPECT_EQ(Gif.BgdHeight(), 5);
    EXPECT_EQ(Gif.BgdColorIndex(), 6);
    EXPECT_FLOAT_EQ(Gif.PixelAspectRatio(), 1.0f);
    EXPECT_EQ(Gif.NetscapeLoops(), 513);
    EXPECT_TRUE(Gif.GlobalPaletteSorted());
    EXPECT_TRUE(Gif.hasUserInput());
    EXPECT_EQ(Gif.GlobalPaletteEntries(), 8);  // the size field held the bit of value 2 already
    EXPECT_EQ(Gif.GlobalPaletteColor(5), RGBColor(5, 10, 15));
    EXPECT_EQ(Gif.GlobalPaletteR_G_B_Find(7, 14, 21), 7);
    EXPECT_EQ(Gif.GlobalPaletteR_G_B_Find(7, 14, 22), -1);
    EXPECT_EQ(Gif.FrameLeft(1), -2);
    EXPECT_EQ(Gif.FrameTop(1), 3);
    EXPECT_TRUE(Gif.FrameInterlaced(1));
    EXPECT_TRUE(Gif.LocalPaletteUsed(1));
    EXPECT_EQ(Gif.LocalPaletteEntries(1), 4);
    EXPECT_EQ(Gif.LocalPaletteColor(1, 3), RGBColor(3, 6, 9));
    EXPECT_EQ(GIFTest::Indexes(Gif.FrameDIBXOR(1)), (std::vector<uint8_t>{1, 0}));
    Gif.setPixelAspectRatio(2.0f);
    EXPECT_FLOAT_EQ(Gif.PixelAspectRatio(), 2.0f);
}

TEST(clsGIFLoad, TransparencyMasksTheFrameAndBlackensItsEntry)
{
    clsGIF Gif;
    ASSERT_EQ(Load(Gif, Stream::Head("89a", 9, 2, 2).Control(1, 0, 2).Image(0, 0, 9, 2,
                                                                          {2, 0, 2, 1, 2, 2, 2, 2, 2,
                                                                           0, 1, 3, 2, 0, 0, 0, 0, 2}, 2)
                            .Trailer()),
              0);
    const clsDIB& Mask = Gif.FrameDIBAND(1);
    ASSERT_EQ(Mask.DIBbpp(), 1);
    EXPECT_EQ(Mask.DIBhDC()->Row(0)[0], 0xAF);
    EXPECT_EQ(Mask.DIBhDC()->Row(0)[1], 0x80);
    EXPECT_EQ(Mask.DIBhDC()->Row(1)[0], 0x10);
    EXPECT_EQ(Mask.DIBhDC()->Row(1)[1], 0x80);
    std::vector<uint8_t> Table;
    Gif.FrameDIBXOR(1).GetPaletteFromDIB8BPP(Table);
    EXPECT_EQ(std::vector<uint8_t>(Table.begin() + 4, Table.begin() + 16),
              (std::vector<uint8_t>{3, 2, 1, 0, 0, 0, 0, 0, 9, 6, 3, 0}));
    EXPECT_EQ(Gif.LocalPaletteColor(1, 2), RGBColor(2, 4, 6));  // the frame's palette stays
    EXPECT_EQ(Gif.FrameTransparentColor(1), RGBColor(2, 4, 6));
    EXPECT_EQ(Gif.GlobalTransparentColorIndex(), 2);
}

TEST(clsGIFLoad, MessagesOfTheCodes)
{
    const std::pair<int16_t, const char*> Cases[] = {
        {1, "File not found."},
        {2, "Not a GIF file."},
        {3, "No GIF signature."},
        {4, "Unknown GIF version."},
        {5, "No GIF trailer found."},
        {6, "Unallowed GIF size or max width/height excceded, refer Help."},
        {7, "Failed to open this file as animated GIF."},
        {8, "Unknown error on loading GIF file."},
        {11, "Invalid/corrupted file - failed to read within boundary"},
        {12, "No of frames exceeds maximum allowed: 120."},
        {13, "No frame found."},
        {20, "Invalid GIF file/failed to read GIF image."},
        {9, "Invalid GIF file/failed to read GIF image."},
    };
    for (const auto& [Code, Text] : Cases) {
        EXPECT_EQ(clsGIF::ErrMessageText(Code, ""), std::string(Text) + "\n");
        EXPECT_EQ(clsGIF::ErrMessageText(Code, "/a/b.gif"), "/a/b.gif\n" + std::string(Text) + "\n");
    }
    std::string Shown, Title;
    clsGIF::MessageSink = [&](const std::string& T, const std::string& Caption) {
        Shown = T;
        Title = Caption;
    };
    clsGIF Gif;
    Gif.FlagErrMessage(5, "x.gif", "Tessavo, Icon Editor & Animated GIF Editor");
    clsGIF::MessageSink = nullptr;
    EXPECT_EQ(Shown, "x.gif\nNo GIF trailer found.\n");
    EXPECT_EQ(Title, "Tessavo, Icon Editor & Animated GIF Editor");
}
