// The frame list: copies that share surfaces, moves and swaps, deletion and the screen size,
// blank frames, frames taken in from files with their clipping, palettes, masks and drawing.
#include <gtest/gtest.h>

#include "GIFTestSupport.h"
#include "clsGIF.h"

using GIFTest::Stream;

namespace {

// Three frames told apart by their delays 1, 2, 3 on a 4 x 3 screen: 4 x 3 at (0, 0),
// 2 x 2 at (1, 1) and 1 x 1 at (2, 0); the third is transparent on index 1.
void LoadThree(clsGIF& Gif)
{
    Stream S = Stream::Head("89a", 4, 3, 2)
                   .Control(0, 1, 0).Image(0, 0, 4, 3, {0, 1, 2, 3, 3, 2, 1, 0, 1, 1, 1, 1}, 2)
                   .Control(0, 2, 0).Image(1, 1, 2, 2, {2, 2, 2, 2}, 2)
                   .Control(1, 3, 1).Image(2, 0, 1, 1, {1}, 2).Trailer();
    ASSERT_EQ(Gif.LoadStream(S.Bytes), 0);
}

std::vector<int> Delays(const clsGIF& Gif)
{
    std::vector<int> Out;
    for (int16_t F = 1; F <= Gif.FramesCount(); ++F)
        Out.push_back(Gif.FrameDelay(F) * 10 + Gif.FrameWidth(F));
    return Out;
}

// A file of one 4 x 4 image with a local table of 4 entries, indexes 0 to 15 taken modulo 4.
std::string FourByFour(const GIFTest::Folder& Dir)
{
    std::vector<uint8_t> Pixels(16);
    for (int I = 0; I < 16; ++I)
        Pixels[I] = static_cast<uint8_t>((I + I / 4) % 4);
    return Dir.Write("four.gif", Stream::Head("87a", 9, 9, 0).Control(0, 77, 0).Image(0, 0, 4, 4, Pixels, 2, 2)
                                     .PadTo(101).Trailer().Bytes);
}

} // namespace

TEST(clsGIFFrames, CopySharesSurfacesAndRecords)
{
    clsGIF Gif;
    LoadThree(Gif);
    EXPECT_FALSE(Gif.FrameCopy(1, 1));
    EXPECT_FALSE(Gif.FrameCopy(0, 1));
    EXPECT_FALSE(Gif.FrameCopy(1, 4));
    ASSERT_TRUE(Gif.FrameCopy(1, 3));
    EXPECT_EQ(&Gif.FrameDIBXOR(3), &Gif.FrameDIBXOR(1));
    EXPECT_EQ(&Gif.FrameDIBAND(3), &Gif.FrameDIBAND(1));
    EXPECT_EQ(Delays(Gif), (std::vector<int>{14, 22, 14}));
    EXPECT_FALSE(Gif.FrameUseTransparentColor(3));
}

TEST(clsGIFFrames, MovesAndSwaps)
{
    struct Case {
        const char* Name;
        std::function<void(clsGIF&)> Op;
        std::vector<int> Order;
        int FirstLeft;
    } Cases[] = {
        {"up 2", [](clsGIF& G) { G.FrameMoveUp(2); }, {22, 14, 31}, 0},
        {"up 1", [](clsGIF& G) { G.FrameMoveUp(1); }, {14, 22, 31}, 0},
        {"down 1", [](clsGIF& G) { G.FrameMoveDown(1); }, {22, 14, 31}, 0},
        {"down 3", [](clsGIF& G) { G.FrameMoveDown(3); }, {14, 22, 31}, 0},
        {"to 1 -> 3", [](clsGIF& G) { EXPECT_TRUE(G.FrameMoveTo(1, 3)); }, {22, 31, 14}, 0},
        {"to 3 -> 1", [](clsGIF& G) { EXPECT_TRUE(G.FrameMoveTo(3, 1)); }, {31, 14, 22}, 0},
        {"to 2 -> 2", [](clsGIF& G) { EXPECT_FALSE(G.FrameMoveTo(2, 2)); }, {14, 22, 31}, 0},
        {"swap 1 3", [](clsGIF& G) { EXPECT_TRUE(G.FrameSwap(1, 3)); }, {31, 22, 14}, 2},
        {"swap 2 4", [](clsGIF& G) { EXPECT_FALSE(G.FrameSwap(2, 4)); }, {14, 22, 31}, 0},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        clsGIF Gif;
        LoadThree(Gif);
        C.Op(Gif);
        EXPECT_EQ(Delays(Gif), C.Order);
        EXPECT_EQ(Gif.FrameLeft(1), C.FirstLeft);
        EXPECT_EQ(Gif.FrameTop(1), 0);
    }
    // Surfaces move with their records: the transparent frame keeps its mask.
    clsGIF Gif;
    LoadThree(Gif);
    Gif.FrameMoveTo(3, 1);
    EXPECT_TRUE(Gif.FrameUseTransparentColor(1));
    EXPECT_EQ(Gif.FrameDIBAND(1).DIBhDC()->Row(0)[0], 0x80);
}

TEST(clsGIFFrames, DeleteAndTheScreenSize)
{
    clsGIF Gif;
    LoadThree(Gif);
    Gif.FrameDelete(2);
    EXPECT_EQ(Delays(Gif), (std::vector<int>{14, 31}));
    EXPECT_EQ(Gif.BgdWidth(), 4);
    Gif.FrameDelete(1);
    EXPECT_EQ(Delays(Gif), (std::vector<int>{31}));
    EXPECT_EQ(Gif.BgdWidth(), 1);
    EXPECT_EQ(Gif.BgdHeight(), 1);
    EXPECT_EQ(Gif.FrameLeft(1), 0);
    Gif.FrameDelete(5);
    EXPECT_EQ(Gif.FramesCount(), 1);
    Gif.FrameDelete(1);
    EXPECT_EQ(Gif.FramesCount(), 0);
    EXPECT_EQ(Gif.FrameWidth(1), 0);
    Gif.setFramesCount(2);
    EXPECT_EQ(Gif.FramesCount(), 2);
    EXPECT_EQ(Gif.FrameDelay(2), 0);
}

TEST(clsGIFFrames, InsertBlank)
{
    clsGIF Gif;
    LoadThree(Gif);
    EXPECT_FALSE(Gif.FrameInsertBlank(0, 0, 0));
    EXPECT_FALSE(Gif.FrameInsertBlank(5, 0, 0));
    // After a frame without transparency: white, opaque, the screen's size, the previous delay.
    ASSERT_TRUE(Gif.FrameInsertBlank(2, 0, 0));
    EXPECT_EQ(Delays(Gif), (std::vector<int>{14, 14, 22, 31}));
    EXPECT_EQ(Gif.FrameHeight(2), 3);
    EXPECT_EQ(Gif.LocalPaletteColor(2, 0), 0xFFFFFFu);
    EXPECT_TRUE(Gif.LocalPaletteUsed(2));
    EXPECT_EQ(Gif.LocalPaletteEntries(2), 256);
    EXPECT_FALSE(Gif.FrameUseTransparentColor(2));
    EXPECT_EQ(GIFTest::Indexes(Gif.FrameDIBXOR(2)), std::vector<uint8_t>(12, 0));
    EXPECT_EQ(Gif.FrameDIBAND(2).DIBhDC()->Row(2)[0], 0x00);
    // After the transparent frame: its transparent colour, transparent on index 0.
    ASSERT_TRUE(Gif.FrameInsertBlank(5, 2, 1));
    EXPECT_EQ(Gif.FrameDelay(5), 3);
    EXPECT_TRUE(Gif.FrameUseTransparentColor(5));
    EXPECT_EQ(Gif.FrameTransparentColorIndex(5), 0);
    EXPECT_EQ(Gif.LocalPaletteColor(5, 0), RGBColor(1, 2, 3));
    EXPECT_EQ(Gif.FrameDIBAND(5).DIBhDC()->Row(0)[0], 0xC0);
    // At the head: delay 10, and the screen takes the blank's size.
    ASSERT_TRUE(Gif.FrameInsertBlank(1, 6, 5));
    EXPECT_EQ(Gif.FramesCount(), 6);
    EXPECT_EQ(Gif.FrameDelay(1), 10);
    EXPECT_EQ(Gif.BgdWidth(), 6);
    EXPECT_EQ(Gif.BgdHeight(), 5);
    while (Gif.FramesCount() < clsGIF::MaxFrames)
        ASSERT_TRUE(Gif.FrameInsertBlank(1, 1, 1));
    EXPECT_FALSE(Gif.FrameInsertBlank(1, 1, 1));
}

TEST(clsGIFFrames, LoadFromGIFFileAddOn)
{
    GIFTest::Folder Dir;
    const std::string Four = FourByFour(Dir);
    clsGIF Gif;
    EXPECT_EQ(Gif.LoadFromGIFFileAddOn(Four, 2, 5, 0, false, false, 0, 0, 0, false), 0);
    EXPECT_EQ(Gif.FramesCount(), 0);
    ASSERT_EQ(Gif.LoadFromGIFFileAddOn(Four, 1, 5, 6, true, true, RGBColor(2, 4, 6), 3, 3, true), 0);
    EXPECT_EQ(Gif.FramesCount(), 1);
    EXPECT_EQ(Gif.GIFVersion(), "87a");
    EXPECT_EQ(Gif.BgdWidth(), 9);
    EXPECT_EQ(Gif.FrameLeft(1), 0);  // the first frame stands at the origin
    EXPECT_EQ(Gif.FrameDelay(1), 5);
    EXPECT_EQ(Gif.FrameDisposalMethod(1), 0);  // only 0 to 3 are taken
    EXPECT_TRUE(Gif.FrameInterlaced(1));
    EXPECT_TRUE(Gif.LocalPaletteUsed(1));
    EXPECT_EQ(Gif.FrameTransparentColorIndex(1), 2);
    EXPECT_TRUE(Gif.GlobalPaletteExists());
    EXPECT_EQ(Gif.GlobalPaletteEntries(), 256);
    EXPECT_EQ(Gif.GlobalPaletteColor(3), RGBColor(3, 6, 9));
    EXPECT_EQ(Gif.FrameDIBAND(1).DIBhDC()->Row(0)[0], 0x20);
    // A second frame keeps the screen of the first; no match for the colour takes index 0.
    Gif.setBgdWidth(7);
    ASSERT_EQ(Gif.LoadFromGIFFileAddOn(Four, 2, 8, 2, false, true, RGBColor(9, 9, 9), 1, 2, false), 0);
    EXPECT_EQ(Gif.FramesCount(), 2);
    EXPECT_EQ(Gif.BgdWidth(), 7);
    EXPECT_EQ(Gif.FrameLeft(2), 1);
    EXPECT_EQ(Gif.FrameTop(2), 2);
    EXPECT_EQ(Gif.FrameDisposalMethod(2), 2);
    EXPECT_EQ(Gif.FrameTransparentColorIndex(2), 0);
    EXPECT_EQ(Gif.GlobalPaletteEntries(), 256);
    // A refused file empties the object.
    const std::string Bad = Dir.Write("bad.gif", std::vector<uint8_t>(200, 'G'));
    EXPECT_EQ(Gif.LoadFromGIFFileAddOn(Bad, 3, 0, 0, false, false, 0, 0, 0, false), 3);
    EXPECT_EQ(Gif.FramesCount(), 0);
}

TEST(clsGIFFrames, InsertAndReplaceImagesClipToTheScreen)
{
    GIFTest::Folder Dir;
    const std::string Four = FourByFour(Dir);
    clsGIF Gif;
    LoadThree(Gif);
    // Inserted after frame 1 at the origin: the 4 x 4 image is cut to the 4 x 3 screen.
    ASSERT_TRUE(Gif.FrameInsertImage(Four, 2));
    EXPECT_EQ(Delays(Gif), (std::vector<int>{14, 14, 22, 31}));
    EXPECT_EQ(Gif.FrameHeight(2), 3);
    EXPECT_EQ(GIFTest::Indexes(Gif.FrameDIBXOR(2)), (std::vector<uint8_t>{0, 1, 2, 3, 1, 2, 3, 0, 2, 3, 0, 1}));
    EXPECT_EQ(Gif.LocalPaletteColor(2, 3), RGBColor(3, 6, 9));
    EXPECT_EQ(Gif.GIFVersion(), "89a");
    EXPECT_EQ(Gif.GlobalPaletteEntries(), 4);
    EXPECT_EQ(Gif.BgdWidth(), 4);
    // Replacing frame 3 (at 1, 1) keeps its place and delay and cuts the image to 3 x 2.
    ASSERT_TRUE(Gif.FrameReplaceImage(Four, 3));
    EXPECT_EQ(Gif.FrameDelay(3), 2);
    EXPECT_EQ(Gif.FrameLeft(3), 1);
    EXPECT_EQ(Gif.FrameWidth(3), 3);
    EXPECT_EQ(GIFTest::Indexes(Gif.FrameDIBXOR(3)), (std::vector<uint8_t>{0, 1, 2, 1, 2, 3}));
    // The transparent frame stays transparent on the colour it had, found in the new palette.
    ASSERT_TRUE(Gif.FrameReplaceImage(Four, 4));
    EXPECT_TRUE(Gif.FrameUseTransparentColor(4));
    EXPECT_EQ(Gif.FrameTransparentColorIndex(4), 1);
    EXPECT_EQ(Gif.FrameDIBAND(4).DIBhDC()->Row(0)[0], 0x40);
    // At the head the screen takes the new image's size.
    ASSERT_TRUE(Gif.FrameInsertImage(Four, 1));
    EXPECT_EQ(Gif.FramesCount(), 5);
    EXPECT_EQ(Gif.BgdWidth(), 4);
    EXPECT_EQ(Gif.BgdHeight(), 4);
    // A file that fails leaves the animation as it was.
    EXPECT_FALSE(Gif.FrameInsertImage(Dir.Path("missing.gif"), 2));
    EXPECT_FALSE(Gif.FrameReplaceImage(Four, 6));
    EXPECT_EQ(Gif.FramesCount(), 5);
}

TEST(clsGIFFrames, PalettesMasksAndDrawing)
{
    clsGIF Gif;
    LoadThree(Gif);
    EXPECT_FALSE(clsGIF().Remask_All_Frames());
    // Frame 1 made transparent on index 1 by its record and a remask.
    Gif.setFrameUseTransparentColor(1, true);
    Gif.setFrameTransparentColorIndex(1, 1);
    ASSERT_TRUE(Gif.Remask_All_Frames());
    EXPECT_EQ(Gif.FrameDIBAND(1).DIBhDC()->Row(0)[0], 0x40);
    EXPECT_EQ(Gif.FrameDIBAND(1).DIBhDC()->Row(2)[0], 0xF0);

    clsDIB Target;
    ASSERT_TRUE(Target.CreateBlankDIB(4, 3, 32, RGBColor(9, 9, 9), true, true));
    Gif.FrameDraw(Target.DIBhDC(), 1, 0, 0);
    EXPECT_EQ(Target.DIBhDC()->GetPixel(0, 0), RGBColor(0, 0, 0));
    EXPECT_EQ(Target.DIBhDC()->GetPixel(1, 0), RGBColor(9, 9, 9));
    EXPECT_EQ(Target.DIBhDC()->GetPixel(3, 0), RGBColor(3, 6, 9));
    Gif.FrameDraw(Target.DIBhDC(), 2, 1, 0);  // no transparency: a plain copy at (1 + 1, 1)
    EXPECT_EQ(Target.DIBhDC()->GetPixel(3, 2), RGBColor(2, 4, 6));
    EXPECT_EQ(Target.DIBhDC()->GetPixel(1, 2), RGBColor(9, 9, 9));
    // The background of the frame's box is its transparent colour, at the origin if asked.
    Gif.FrameDraw(Target.DIBhDC(), 3, 0, 1, true, true);
    EXPECT_EQ(Target.DIBhDC()->GetPixel(0, 0), RGBColor(1, 2, 3));
    EXPECT_EQ(Target.DIBhDC()->GetPixel(2, 1), RGBColor(2, 4, 6));

    // Palette synchronising.
    Gif.LocalPaletteR_G_B_Change(2, 2, 200, 100, 50);
    std::vector<uint8_t> Table;
    Gif.FrameDIBXOR(2).GetPaletteFromDIB8BPP(Table);
    EXPECT_EQ(Table[8], 6);
    Gif.UpdateLocalPalettePerLocal(2);
    Gif.FrameDIBXOR(2).GetPaletteFromDIB8BPP(Table);
    EXPECT_EQ(Table[8], 50);
    Gif.setLocalPaletteUsed(2, true);
    Gif.UpdateLocalPalettePerGlobal(2);
    EXPECT_FALSE(Gif.LocalPaletteUsed(2));
    EXPECT_EQ(Gif.LocalPaletteColor(2, 2), RGBColor(2, 4, 6));
    Gif.UpdateLocalPalettePerGlobal(3);
    Gif.FrameDIBXOR(3).GetPaletteFromDIB8BPP(Table);
    EXPECT_EQ(std::vector<uint8_t>(Table.begin() + 4, Table.begin() + 8), (std::vector<uint8_t>{0, 0, 0, 0}));

    Gif.ClearUp();
    EXPECT_TRUE(Gif.GlobalPaletteExists());
    Gif.setGlobalPaletteExists(false);
    Gif.ClearUp();
    EXPECT_FALSE(Gif.GlobalPaletteExists());
}
