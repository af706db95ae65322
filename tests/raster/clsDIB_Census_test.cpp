// The colour census: CountColorsDIB, IsMultiColorDIB, BPPperActualDIB, with its limit of
// 32,767 red and blue pairs.
#include <gtest/gtest.h>

#include <set>

#include "TestImages.h"
#include "clsDIB.h"

using namespace TestImages;

namespace {

const uint32_t Standard16[16] = {0xFFFFFF, 0x808080, 0xFF00FF, 0x0000FF, 0x00FFFF, 0x00FF00, 0xFFFF00, 0xFF0000,
                                 0xC0C0C0, 0x000000, 0x800080, 0x000080, 0x008080, 0x008000, 0x808000, 0x800000};

// A 32-bit surface holding the colours given, one a pixel, repeated to fill it.
void MakeOfColors(clsDIB& Dib, const std::vector<uint32_t>& Colors, int Width = 0)
{
    const int W = Width ? Width : int(Colors.size());
    const int H = int((Colors.size() + W - 1) / W) + 1;
    std::vector<uint32_t> Q(size_t(W) * H);
    for (size_t I = 0; I < Q.size(); ++I)
        Q[I] = QuadOfColor(Colors[I % Colors.size()], uint8_t(I * 13));  // alpha plays no part
    MakeDIB32(Dib, W, H, Q);
}

std::vector<uint32_t> Distinct(int Count, uint32_t Seed)
{
    std::set<uint32_t> Seen;
    std::vector<uint32_t> Out;
    for (uint32_t W : RandomWords(size_t(Count) * 2, Seed))
        if (Seen.insert(W & 0x00FFFFFF).second && int(Out.size()) < Count)
            Out.push_back(W & 0x00FFFFFF);
    return Out;
}

} // namespace

TEST(clsDIBCensus, CountsDistinctColoursIgnoringAlpha)
{
    clsDIB Caller;
    struct Case {
        std::vector<uint32_t> Colors;
        int Width;
    };
    const Case Cases[] = {{{0x123456}, 0}, {{0, 0xFFFFFF, 0, 0x010000}, 3}, {Distinct(300, 1), 17},
                          {Distinct(1000, 2), 64}, {{0x00FF00, 0x00FE00, 0x01FF00, 0x00FF01}, 2}};
    for (const Case& C : Cases) {
        clsDIB Dib;
        MakeOfColors(Dib, C.Colors, C.Width);
        const std::set<uint32_t> Unique(C.Colors.begin(), C.Colors.end());
        EXPECT_EQ(Caller.CountColorsDIB(Dib), int(Unique.size()));
    }

    // Shallow surfaces count colours, not indexes: two entries of one colour are one colour.
    clsDIB Eight;
    ASSERT_TRUE(Eight.CreateBlankDIB(4, 2, 8, 0, false));
    std::vector<uint8_t> Table(1024, 0);
    const uint8_t Entries[4][3] = {{10, 20, 30}, {10, 20, 30}, {1, 2, 3}, {0, 0, 0}};
    for (int I = 0; I < 4; ++I)
        std::copy(Entries[I], Entries[I] + 3, Table.begin() + I * 4);
    Eight.SetPaletteToDIB8BPP(Table);
    for (int R = 0; R < 2; ++R)
        for (int X = 0; X < 4; ++X)
            Eight.DIBBitsPtr()[R * 4 + X] = uint8_t(X);
    EXPECT_EQ(Caller.CountColorsDIB(Eight), 3);

    // A blank 1-bit surface is black whatever its back colour.
    clsDIB One;
    ASSERT_TRUE(One.CreateBlankDIB(9, 3, 1, 0x00FFFFFF, false));
    EXPECT_EQ(Caller.CountColorsDIB(One), 1);
    EXPECT_EQ(Caller.IsMultiColorDIB(One), 0);
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

TEST(clsDIBCensus, IsMultiColorGivesTheOneColourOrMinusOne)
{
    clsDIB Caller;
    const std::pair<std::vector<uint32_t>, int32_t> Cases[] = {
        {{0x123456}, 0x123456}, {{0}, 0}, {{0xFFFFFF}, 0xFFFFFF}, {{0x123456, 0x123457}, -1}, {Distinct(50, 3), -1}};
    for (const auto& [Colors, Expected] : Cases) {
        clsDIB Dib;
        MakeOfColors(Dib, Colors);
        EXPECT_EQ(Caller.IsMultiColorDIB(Dib), Expected) << std::hex << Colors[0];
    }
}

TEST(clsDIBCensus, ActualDepthIsTheSmallestThatHoldsTheColours)
{
    std::vector<uint32_t> All16(Standard16, Standard16 + 16);
    std::vector<uint32_t> Plus = All16;
    Plus.push_back(0x123456);
    std::vector<uint32_t> Two56 = Distinct(256, 4), Two57 = Distinct(257, 5);
    const std::pair<std::vector<uint32_t>, int32_t> Cases[] = {
        {{0, 0xFFFFFF}, 1},       {{0}, 1},         {{0xFFFFFF}, 1},          {{0x808080, 0xC0C0C0}, 4},
        {{0xFF0000, 0x000080}, 4}, {All16, 4},      {{0x010101, 0xFEFEFE}, 8}, {{0, 0xFFFFFF, 0x7F7F7F}, 8},
        {Plus, 8},                {Two56, 8},       {Two57, 24},
    };
    clsDIB Caller;
    for (const auto& [Colors, Expected] : Cases) {
        clsDIB Dib;
        MakeOfColors(Dib, Colors, 16);
        EXPECT_EQ(Caller.BPPperActualDIB(Dib), Expected) << Colors.size() << " colours, first " << std::hex << Colors[0];
    }
    // Through the table of a shallow surface.
    clsDIB Four;
    ASSERT_TRUE(Four.CreateBlankDIB(5, 2, 4, 0x00FFFFFF, false));
    Four.DIBBitsPtr()[0] = 0x01;  // entry 1: white
    EXPECT_EQ(Caller.BPPperActualDIB(Four), 1);
    clsDIB Empty;
    EXPECT_EQ(Caller.BPPperActualDIB(Empty), 0);
}
