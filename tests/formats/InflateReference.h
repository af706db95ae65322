#pragma once
// A slow inflate that follows the decoding rules literally, as the oracle of clsPNG::Inflate on
// damaged streams: a bit position over the input, trees searched length by length from the
// shortest, every byte put one at a time under the cut rule.
#include <cstddef>
#include <cstdint>
#include <algorithm>
#include <vector>

namespace InflateReference {

using Bytes = std::vector<uint8_t>;

constexpr uint8_t CodeLengthOrder[19] = {16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1, 15};
constexpr uint16_t LengthBase[29] = {3,  4,  5,  6,  7,  8,  9,  10, 11,  13,  15,  17,  19,  23, 27,
                                     31, 35, 43, 51, 59, 67, 83, 99, 115, 131, 163, 195, 227, 258};
constexpr uint8_t LengthExtra[29] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2,
                                     2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5, 0};
constexpr uint16_t DistBase[30] = {1,    2,    3,    4,    5,    7,    9,    13,    17,    25,
                                   33,   49,   65,   97,   129,  193,  257,  385,   513,   769,
                                   1025, 1537, 2049, 3073, 4097, 6145, 8193, 12289, 16385, 24577};
constexpr uint8_t DistExtra[30] = {0, 0, 0, 0, 1, 1, 2, 2,  3,  3,  4,  4,  5,  5,  6,
                                   6, 7, 7, 8, 8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13};

// Canonical codes of a set of lengths, each code's first bit its most significant one.
std::vector<uint32_t> CanonicalCodes(const std::vector<uint8_t>& Lengths)
{
    uint32_t Count[16] = {}, Next[16] = {};
    for (uint8_t L : Lengths)
        ++Count[L];
    Count[0] = 0;
    for (int L = 1, Code = 0; L < 16; ++L) {
        Code = (Code + Count[L - 1]) << 1;
        Next[L] = Code;
    }
    std::vector<uint32_t> Codes(Lengths.size());
    for (size_t S = 0; S < Lengths.size(); ++S)
        if (Lengths[S])
            Codes[S] = Next[Lengths[S]]++;
    return Codes;
}

// The reference decoder: a bit position over the input, trees searched length by length from
// the shortest, every byte put one at a time under the cut rule.
struct Reference {
    struct Tree {
        uint32_t Count[16] = {}, First[16] = {};
        std::vector<uint16_t> Symbols[16];  // by length, in symbol order
        int Max = 0;
    };
    const uint8_t* In;
    size_t BitTotal, Pos = 0;
    Bytes Out;
    size_t Produced = 0;
    bool Deflate64;
    int Messages = 0;
    uint8_t* Data = Out.data();
    size_t Size = Out.size();

    bool Bits(unsigned N, uint32_t& V)
    {
        if (Pos + N > BitTotal)
            return false;
        V = 0;
        for (unsigned I = 0; I < N; ++I, ++Pos)
            V |= uint32_t((In[Pos / 8] >> (Pos % 8)) & 1u) << I;
        return true;
    }
    bool Build(const uint8_t* Lengths, size_t N, Tree& T)
    {
        T = Tree();
        uint64_t Kraft = 0;
        for (size_t S = 0; S < N; ++S)
            if (Lengths[S]) {
                T.Symbols[Lengths[S]].push_back(uint16_t(S));
                ++T.Count[Lengths[S]];
                Kraft += uint64_t(1) << (15 - Lengths[S]);
                T.Max = std::max<int>(T.Max, Lengths[S]);
            }
        const std::vector<uint8_t> L(Lengths, Lengths + N);
        const auto Codes = CanonicalCodes(L);
        for (int Len = 1; Len < 16; ++Len)
            if (T.Count[Len])
                T.First[Len] = Codes[T.Symbols[Len][0]];
        if (Kraft > (uint64_t(1) << 15)) {
            ++Messages;
            return false;
        }
        return true;
    }
    // Tries every length from 1 up to the longest, a bit more each time; a length needs its
    // bits, and the first code of that length and pattern wins.
    int Decode(const Tree& T, uint32_t& Symbol)
    {
        if (T.Max == 0)
            return clsPNG::InflateBadCode;
        uint32_t Code = 0;
        for (int L = 1; L <= T.Max; ++L) {
            if (Pos + L > BitTotal)
                return clsPNG::InflateInputEnded;
            Code = (Code << 1) | ((In[(Pos + L - 1) / 8] >> ((Pos + L - 1) % 8)) & 1u);
            if (T.Count[L] && Code >= T.First[L] && Code - T.First[L] < T.Count[L]) {
                Symbol = T.Symbols[L][Code - T.First[L]];
                Pos += L;
                return 0;
            }
        }
        return clsPNG::InflateBadCode;
    }
    void Put(uint8_t B)
    {
        if (Produced < Size)
            Data[Produced] = B;
        else if (Size)
            Data[Size - 1] = B;
        ++Produced;
    }
    int Codes(const Tree& Lit, const Tree& Dist)
    {
        for (;;) {
            uint32_t S, V;
            if (int R = Decode(Lit, S))
                return R;
            if (S < 256) {
                Put(uint8_t(S));
                continue;
            }
            if (S == 256)
                return 0;
            if (S > 285)
                return clsPNG::InflateBadCode;
            size_t Length;
            if (S == 285 && Deflate64) {
                if (!Bits(16, V))
                    return clsPNG::InflateInputEnded;
                Length = V + 3;
            } else {
                if (!Bits(LengthExtra[S - 257], V))
                    return clsPNG::InflateInputEnded;
                Length = LengthBase[S - 257] + V;
            }
            if (int R = Decode(Dist, S))
                return R;
            if (S >= 30)
                return clsPNG::InflateBadCode;
            if (!Bits(DistExtra[S], V))
                return clsPNG::InflateInputEnded;
            const size_t Distance = DistBase[S] + V;
            if (Distance > Produced)
                return clsPNG::InflateBadCode;
            for (size_t I = 0; I < Length; ++I) {
                const size_t At = Produced < Size ? Produced : Size;  // where the write position stops
                Put(At >= Distance ? Data[At - Distance] : 0);
            }
        }
    }
    int Dynamic()
    {
        uint32_t NLit, NDist, NCode, V;
        if (!Bits(5, NLit) || !Bits(5, NDist) || !Bits(4, NCode))
            return clsPNG::InflateInputEnded;
        NLit += 257, NDist += 1, NCode += 4;
        uint8_t CodeLengths[19] = {};
        for (uint32_t I = 0; I < NCode; ++I) {
            if (!Bits(3, V))
                return clsPNG::InflateInputEnded;
            CodeLengths[CodeLengthOrder[I]] = uint8_t(V);
        }
        Tree CodeTree, Lit, Dist;
        if (!Build(CodeLengths, 19, CodeTree))
            return clsPNG::InflateTree;
        uint8_t Lengths[320] = {};
        for (uint32_t I = 0; I < NLit + NDist;) {
            uint32_t S, Repeat;
            uint8_t Value = 0;
            if (int R = Decode(CodeTree, S))
                return R;
            if (S < 16) {
                Lengths[I++] = uint8_t(S);
                continue;
            }
            if (S == 16 && I == 0)
                return clsPNG::InflateRepeatFirst;
            const unsigned ExtraBits = S == 16 ? 2 : S == 17 ? 3 : 7;
            if (!Bits(ExtraBits, V))
                return clsPNG::InflateInputEnded;
            Repeat = V + (S == 18 ? 11 : 3);
            if (S == 16)
                Value = Lengths[I - 1];
            if (I + Repeat > NLit + NDist)
                return clsPNG::InflateRepeatOverrun;
            while (Repeat--)
                Lengths[I++] = Value;
        }
        if (!Build(Lengths, NLit, Lit) || !Build(Lengths + NLit, NDist, Dist))
            return clsPNG::InflateTree;
        return Codes(Lit, Dist);
    }
    int Run()
    {
        for (;;) {
            uint32_t Final, Type;
            if (!Bits(1, Final) || !Bits(2, Type))
                return clsPNG::InflateInputEnded;
            int R;
            if (Type == 0) {
                Pos = (Pos + 7) / 8 * 8;
                uint32_t Len, NLen;
                if (!Bits(16, Len) || !Bits(16, NLen))
                    return clsPNG::InflateInputEnded;
                if ((Len ^ NLen) != 0xFFFF || Pos + size_t(Len) * 8 > BitTotal)
                    return clsPNG::InflateStoredLength;
                for (uint32_t I = 0; I < Len; ++I)
                    Put(In[Pos / 8 + I]);
                Pos += size_t(Len) * 8;
                R = 0;
            } else if (Type == 1) {
                uint8_t L[288], D[32];
                for (int S = 0; S < 288; ++S)
                    L[S] = S < 144 ? 8 : S < 256 ? 9 : S < 280 ? 7 : 8;
                std::fill(D, D + 32, uint8_t(5));
                Tree Lit, Dist;
                Build(L, 288, Lit);
                Build(D, 32, Dist);
                R = Codes(Lit, Dist);
            } else if (Type == 2) {
                R = Dynamic();
            } else {
                return clsPNG::InflateBlockType;
            }
            if (R || Final)
                return R;
        }
    }
};

} // namespace InflateReference
