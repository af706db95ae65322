// The GIF LZW encoder: exact sub-block bytes of small frames worked out code by code, the Clear
// at a full table, round trips through the decoder, and giflib's reading of what it writes.
#include <gtest/gtest.h>

#include <random>

#include "LZWTestSupport.h"
#include "basGIFLZWDec.h"
#include "basGIFLZWEnc.h"

using namespace LZWTest;

namespace {

class GIFLZWEnc : public ::testing::Test {
protected:
    void SetUp() override
    {
        basGIFLZWDec::InitDecoderPowers();
        basGIFLZWEnc::InitEncoderMasks();
    }
};

std::vector<uint8_t> Encode(const clsDIB& Dib, int InitBits, bool Interlaced)
{
    std::vector<uint8_t> Out;
    EXPECT_TRUE(basGIFLZWEnc::EncodeFrameLZW(Out, Dib, static_cast<uint8_t>(InitBits), Interlaced));
    return Out;
}

struct SmallFrame {
    const char* Name;
    int Width, Height;
    std::vector<uint8_t> Pixels;  // row by row, top first
    int InitBits;
    bool Interlaced;
    std::vector<uint8_t> Expected;  // length byte, then data
};

TEST_F(GIFLZWEnc, SmallFramesGiveTheseExactSubBlocks)
{
    const SmallFrame Cases[] = {
        // Clear 4, 0, End 5, all 3 bits: 100 000 101 -> 0x44 0x01.
        {"one pixel, 2 bits", 1, 1, {0}, 3, false, {0x02, 0x44, 0x01}},
        // Clear 256, 7, End 257, all 9 bits.
        {"one pixel, 8 bits", 1, 1, {7}, 9, false, {0x04, 0x00, 0x0F, 0x04, 0x04}},
        // Clear 4, 0, 1, 6 (0 1) at 3 bits; the table then passes 7 and the width becomes 4:
        // 8 (0 1 0), 1, End 5.
        {"two colours", 8, 1, {0, 1, 0, 1, 0, 1, 0, 1}, 3, false, {0x03, 0x44, 0x8C, 0x51}},
        // Height 3 is too low for the passes: rows 0, 1, 2. Clear 4, 0, 1, 2 at 3 bits, End 5 at 4.
        {"interlaced, height 3", 1, 3, {0, 1, 2}, 3, true, {0x02, 0x44, 0x54}},
        {"plain, height 3", 1, 3, {0, 1, 2}, 3, false, {0x02, 0x44, 0x54}},
        // Rows 0, 4, 2, 1, 3: Clear 8, 0, 4, 2, 1, 3, End 9, all 4 bits.
        {"interlaced, height 5", 1, 5, {0, 1, 2, 3, 4}, 4, true, {0x04, 0x08, 0x24, 0x31, 0x09}},
        // Rows in order: Clear 8, 0, 1, 2, 3, 4, End 9.
        {"plain, height 5", 1, 5, {0, 1, 2, 3, 4}, 4, false, {0x04, 0x08, 0x21, 0x43, 0x09}},
        // Pixel 0 after pixel 0 has the key 0, and a slot holding it ends a probe as an empty one
        // does. (16, 1) takes slot 0; (0, 0) probes on to slot 5002; (32, 2) also starts at slot 0,
        // stops at 5002 and overwrites it; so the second (0, 0) is not found again.
        // Clear 256, 16, 1, 0, 0, 32, 2, 0, 0, End 257, all 9 bits.
        {"key 0 ends a probe", 8, 1, {16, 1, 0, 0, 32, 2, 0, 0}, 9, false,
         {0x0C, 0x00, 0x21, 0x04, 0x00, 0x00, 0x00, 0x84, 0x00, 0x00, 0x00, 0x02, 0x02}},
    };
    for (const SmallFrame& Case : Cases) {
        SCOPED_TRACE(Case.Name);
        auto Dib = SurfaceOf(Case.Width, Case.Height, Case.Pixels);
        EXPECT_EQ(Encode(*Dib, Case.InitBits, Case.Interlaced), Case.Expected);
    }
}

// Pixels whose neighbouring pairs never repeat: 256 steps of 1, then 256 of 3, 5, ..., each
// step odd, so every pair is new and every pixel goes out as its own code.
std::vector<uint8_t> PairsNeverRepeat(int Count)
{
    std::vector<uint8_t> Out(static_cast<size_t>(Count));
    uint8_t Value = 0;
    for (int I = 0; I < Count; ++I) {
        if (I > 0)
            Value = static_cast<uint8_t>(Value + 2 * ((I - 1) / 256) + 1);
        Out[static_cast<size_t>(I)] = Value;
    }
    return Out;
}

TEST_F(GIFLZWEnc, ClearGoesOutAtWidth12TheMomentTheTableIsFull)
{
    // With Clear 256 the codes 258 to 4095 make 3838 entries. The pixels p0 .. p3838 go out at
    // 9 bits (255 codes), 10 (512), 11 (1024) and 12 (2048), behind Clear at 9: 43264 bits,
    // 5408 whole bytes. The pair behind p3838 is not stored: Clear follows at 12 bits, then
    // p3839 = 227, p3840 = 0, p3841 = 31 and End 257 at 9 bits:
    // 0x100 | 227 << 12 | 0 << 21 | 31 << 30 | 257 << 39 = 00 31 0E C0 87 80.
    // The two bytes before them hold p3837 = 169 and p3838 = 198 at 12 bits: 60 0C.
    auto Dib = SurfaceOf(3842, 1, PairsNeverRepeat(3842));
    const std::vector<uint8_t> Out = Encode(*Dib, 9, false);
    ASSERT_EQ(Out.size(), 5436u);  // 5414 data bytes in 21 sub-blocks of 254 and one of 80
    for (size_t Block = 0; Block < 21; ++Block)
        EXPECT_EQ(Out[Block * 255], 254) << Block;
    EXPECT_EQ(Out[21 * 255], 80);
    const std::vector<uint8_t> Tail(Out.end() - 8, Out.end());
    EXPECT_EQ(Tail, (std::vector<uint8_t>{0x60, 0x0C, 0x00, 0x31, 0x0E, 0xC0, 0x87, 0x80}));
}

TEST_F(GIFLZWEnc, NothingButAnEightBitSurface)
{
    clsDIB Deep;
    ASSERT_TRUE(Deep.CreateBlankDIB(4, 4, 32, 0xFFFFFF, true));
    clsDIB Shallow;
    ASSERT_TRUE(Shallow.CreateBlankDIB(4, 4, 4, 0xFFFFFF, true));
    std::vector<uint8_t> Out{0x55};
    EXPECT_TRUE(basGIFLZWEnc::EncodeFrameLZW(Out, Deep, 9, false));
    EXPECT_TRUE(basGIFLZWEnc::EncodeFrameLZW(Out, Shallow, 9, false));
    EXPECT_EQ(Out, std::vector<uint8_t>{0x55});
    auto Dib = MakeSurface(4, 4);
    EXPECT_FALSE(basGIFLZWEnc::EncodeFrameLZW(Out, *Dib, 17, false));
    EXPECT_EQ(Out, std::vector<uint8_t>{0x55});
}

TEST_F(GIFLZWEnc, IndexBeyondTheCodeSizeThatEqualsEndFlushesTheBits)
{
    struct Case {
        const char* Name;
        std::vector<uint8_t> Pixels;
        bool Result;
        std::vector<uint8_t> Expected;
    };
    const Case Cases[] = {
        // Clear 4 and 5 at 3 bits: 5 counts as End, so its byte 0x2C and the sub-block go out
        // at once and the bit count falls to -2; the next code (1) finds no mask and fails.
        {"bits left over", {5, 1}, false, {0x01, 0x2C}},
        // Clear 4, 0, 1, 2 at 3 bits, 5 at 4 ends on a byte boundary: the sub-block of two bytes
        // goes out and the encode goes on with 3 and End 5 at 4 bits.
        {"on a byte boundary", {0, 1, 2, 5, 3}, true, {0x02, 0x44, 0x54, 0x01, 0x53}},
    };
    for (const Case& Each : Cases) {
        SCOPED_TRACE(Each.Name);
        auto Dib = SurfaceOf(static_cast<int>(Each.Pixels.size()), 1, Each.Pixels);
        std::vector<uint8_t> Out;
        EXPECT_EQ(basGIFLZWEnc::EncodeFrameLZW(Out, *Dib, 3, false), Each.Result);
        EXPECT_EQ(Out, Each.Expected);
    }
}

// Frames with both noise and runs, so that tables fill and clear: values below 2^CodeSize in
// runs of 1 to 6, some rows repeating the row above.
std::vector<uint8_t> MixedFrame(std::mt19937& Random, int Width, int Height, int CodeSize)
{
    std::vector<uint8_t> Out;
    const uint32_t Mask = (1u << CodeSize) - 1;
    while (Out.size() < static_cast<size_t>(Width) * Height) {
        if (Out.size() >= static_cast<size_t>(Width) && Out.size() % Width == 0 && Random() % 4 == 0) {
            Out.insert(Out.end(), Out.end() - Width, Out.end());
            continue;
        }
        const uint8_t Value = static_cast<uint8_t>(Random() & Mask);
        Out.insert(Out.end(), 1 + Random() % 6, Value);
    }
    Out.resize(static_cast<size_t>(Width) * Height);
    return Out;
}

struct FrameSize {
    int Width, Height;
};
// Frames whose data outgrows their surface can be cut by the decoder (two 8-bit pixels make 5
// bytes for a surface of 4); those are the decoder tests' business.
const FrameSize Sizes[] = {{1, 1}, {1, 7}, {3, 3}, {5, 4}, {7, 5}, {13, 9}, {64, 17}, {101, 33}, {250, 181}};

TEST_F(GIFLZWEnc, RoundTripThroughTheDecoderIsExact)
{
    std::mt19937 Random(7);
    for (const FrameSize& Size : Sizes) {
        for (int CodeSize = 2; CodeSize <= 8; ++CodeSize) {
            for (bool Interlaced : {false, true}) {
                SCOPED_TRACE(testing::Message() << Size.Width << "x" << Size.Height << " code size " << CodeSize
                                                << (Interlaced ? " interlaced" : ""));
                const std::vector<uint8_t> Values = MixedFrame(Random, Size.Width, Size.Height, CodeSize);
                auto Source = SurfaceOf(Size.Width, Size.Height, Values);
                const std::vector<uint8_t> Blocks = Encode(*Source, CodeSize + 1, Interlaced);
                // Every sub-block but the last is full at 254 bytes.
                size_t Pos = 0;
                while (Pos < Blocks.size()) {
                    const size_t Length = Blocks[Pos];
                    Pos += 1 + Length;
                    if (Pos < Blocks.size()) {
                        ASSERT_EQ(Length, 254u);
                    }
                }
                ASSERT_EQ(Pos, Blocks.size());
                const std::vector<uint8_t> Data = JoinSubBlocks(Blocks);
                auto Target = MakeSurface(Size.Width, Size.Height, 0xEE);
                basGIFLZWDec::DecodeFrameLZW(*Target, Interlaced, static_cast<uint8_t>(CodeSize), Data);
                EXPECT_EQ(Pixels(*Target), Values);
            }
        }
    }
}

TEST_F(GIFLZWEnc, GiflibReadsTheSameIndexes)
{
    std::mt19937 Random(11);
    for (const FrameSize& Size : Sizes) {
        for (int CodeSize = 2; CodeSize <= 8; ++CodeSize) {
            for (bool Interlaced : {false, true}) {
                SCOPED_TRACE(testing::Message() << Size.Width << "x" << Size.Height << " code size " << CodeSize
                                                << (Interlaced ? " interlaced" : ""));
                // Half the frames pure noise, which fills the table fastest.
                std::vector<uint8_t> Values = MixedFrame(Random, Size.Width, Size.Height, CodeSize);
                if (CodeSize % 2 == 0)
                    for (uint8_t& Value : Values)
                        Value = static_cast<uint8_t>(Random() & ((1u << CodeSize) - 1));
                auto Source = SurfaceOf(Size.Width, Size.Height, Values);
                // An interlaced frame of height 4 or less goes out in plain row order, on purpose;
                // giflib would read such a file in passes, so it gets no interlace flag here.
                const std::vector<uint8_t> File = WrapInGif(Size.Width, Size.Height, CodeSize,
                                                            Interlaced && Size.Height > 4,
                                                            Encode(*Source, CodeSize + 1, Interlaced));
                std::vector<uint8_t> Raster;
                int Width = 0, Height = 0;
                ASSERT_TRUE(GiflibDecode(File, Raster, Width, Height));
                EXPECT_EQ(Raster, Values);
            }
        }
    }
}

} // namespace
