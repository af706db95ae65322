// The colour census: CountColorsDIB, IsMultiColorDIB, BPPperActualDIB, with its limit of
// 32,767 red and blue pairs.
#include <gtest/gtest.h>

#include <set>

#include "TestImages.h"
#include "clsDIB.h"

using namespace TestImages;

namespace {

// A 32-bit surface of 16 columns holding the colours given, one a pixel, repeated to fill it.
void MakeOfColors(clsDIB& Dib, const std::vector<uint32_t>& Colors)
{
    std::vector<uint32_t> Q(16 * (Colors.size() / 16 + 2));
    for (size_t I = 0; I < Q.size(); ++I)
        Q[I] = QuadOfColor(Colors[I % Colors.size()], uint8_t(I * 13));  // alpha plays no part
    MakeDIB32(Dib, 16, int(Q.size() / 16), Q);
}

std::vector<uint32_t> Distinct(size_t Count, uint32_t Seed)
{
    std::set<uint32_t> Seen;
    std::vector<uint32_t> Out;
    for (uint32_t W : RandomWords(Count * 2, Seed))
        if (Seen.insert(W & 0x00FFFFFF).second && Out.size() < Count)
            Out.push_back(W & 0x00FFFFFF);
    return Out;
}

} // namespace

TEST(clsDIBCensus, CountAndDepthFollowTheDistinctColours)
{
    const std::vector<uint32_t> Standard16 = {0xFFFFFF, 0x808080, 0xFF00FF, 0x0000FF, 0x00FFFF, 0x00FF00,
                                              0xFFFF00, 0xFF0000, 0xC0C0C0, 0x000000, 0x800080, 0x000080,
                                              0x008080, 0x008000, 0x808000, 0x800000};
    std::vector<uint32_t> Plus = Standard16;
    Plus.push_back(0x123456);
    struct Case {
        std::vector<uint32_t> Colors;
        int32_t OneColor, Depth;  // IsMultiColorDIB, BPPperActualDIB
    };
    const Case Cases[] = {
        {{0x123456}, 0x123456, 8},  {{0}, 0, 1},   {{0xFFFFFF}, 0xFFFFFF, 1},  {{0, 0xFFFFFF, 0, 0x010000}, -1, 8},
        {{0x808080, 0xC0C0C0}, -1, 4}, {{0xFF0000, 0x000080}, -1, 4},          {Standard16, -1, 4},
        {{0x00FF00, 0x00FE00, 0x01FF00, 0x00FF01}, -1, 8},                      {{0, 0xFFFFFF, 0x7F7F7F}, -1, 8},
        {Plus, -1, 8},                 {Distinct(256, 4), -1, 8},               {Distinct(257, 5), -1, 24},
        {Distinct(1000, 2), -1, 24},
    };
    clsDIB Caller;
    for (const Case& C : Cases) {
        SCOPED_TRACE(testing::Message() << C.Colors.size() << " colours, first " << std::hex << C.Colors[0]);
        clsDIB Dib;
        MakeOfColors(Dib, C.Colors);
        EXPECT_EQ(Caller.CountColorsDIB(Dib), int(std::set<uint32_t>(C.Colors.begin(), C.Colors.end()).size()));
        EXPECT_EQ(Caller.IsMultiColorDIB(Dib), C.OneColor);
        EXPECT_EQ(Caller.BPPperActualDIB(Dib), C.Depth);
    }

    // Shallow surfaces count colours, not indexes: two entries of one colour are one colour.
    clsDIB Eight;
    ASSERT_TRUE(Eight.CreateBlankDIB(4, 2, 8, 0, false));
    std::vector<uint8_t> Table(1024, 0);
    const uint8_t Entries[3][3] = {{10, 20, 30}, {10, 20, 30}, {1, 2, 3}};
    for (int I = 0; I < 3; ++I)
        std::copy(Entries[I], Entries[I] + 3, Table.begin() + I * 4);
    Eight.SetPaletteToDIB8BPP(Table);
    for (int I = 0; I < 8; ++I)
        Eight.DIBBitsPtr()[I] = uint8_t(I % 4);
    EXPECT_EQ(Caller.CountColorsDIB(Eight), 3);
    // A blank 1-bit surface is black whatever its back colour.
    clsDIB One, Four, Empty;
    ASSERT_TRUE(One.CreateBlankDIB(9, 3, 1, 0x00FFFFFF, false));
    EXPECT_EQ(Caller.CountColorsDIB(One), 1);
    EXPECT_EQ(Caller.IsMultiColorDIB(One), 0);
    ASSERT_TRUE(Four.CreateBlankDIB(5, 2, 4, 0x00FFFFFF, false));
    Four.DIBBitsPtr()[0] = 0x01;  // entry 1: white
    EXPECT_EQ(Caller.BPPperActualDIB(Four), 1);
    EXPECT_EQ(Caller.BPPperActualDIB(Empty), 0);
}

TEST(clsDIBCensus, CountStopsAtTheRedBluePairLimit)
{
    // 256 by 256: each row holds 128 red and blue pairs, each pair twice in a row with
    // green 0 and 1; 32,768 pairs and 65,536 colours in all. Whatever the order of the
    // rows, the 32,768th pair arrives when 32,767 pairs of two colours have been counted.
    std::vector<uint32_t> Q(256 * 256);
    for (int Y = 0; Y < 256; ++Y)
        for (int X = 0; X < 256; ++X) {
            const int Pair = Y * 128 + X / 2;
            Q[Y * 256 + X] = Quad(uint8_t(Pair >> 8), uint8_t(X % 2), uint8_t(Pair & 255));
        }
    clsDIB Dib, Caller;
    MakeDIB32(Dib, 256, 256, Q);
    EXPECT_EQ(Caller.CountColorsDIB(Dib), 2 * 32767);
    // The last pair (bottom right) made into two more greens of the first: 32,767 pairs,
    // all 65,536 colours counted.
    for (int X = 254; X < 256; ++X)
        SetQuad(Dib, X, 0, Quad(0, uint8_t(X % 2 + 2), 0));
    EXPECT_EQ(Caller.CountColorsDIB(Dib), 65536);
}
