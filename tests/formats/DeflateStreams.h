#pragma once
// Hand-made and random deflate streams for the inflate tests: a bit writer, dynamic headers,
// random code lengths and streams, and the damage done to them.
#include <cstdint>
#include <random>
#include <vector>

#include "InflateReference.h"

namespace InflateReference {

// Deflate bits, least significant first; Huffman codes go out first bit first.
struct BitWriter {
    Bytes Out;
    size_t Count = 0;
    BitWriter& Put(uint32_t Value, unsigned N)
    {
        while (N) {
            if (Count % 8 == 0)
                Out.push_back(0);
            const unsigned K = std::min(N, 8 - unsigned(Count % 8));
            Out.back() |= uint8_t((Value & ((1u << K) - 1)) << (Count % 8));
            Value >>= K, N -= K, Count += K;
        }
        return *this;
    }
    BitWriter& Code(uint32_t Code, unsigned Length)
    {
        uint32_t Reversed = 0;
        for (unsigned I = 0; I < Length; ++I)
            Reversed |= ((Code >> I) & 1u) << (Length - 1 - I);
        return Put(Reversed, Length);
    }
    BitWriter& Fixed(unsigned S)  // a literal/length symbol of the fixed code
    {
        return S < 144   ? Code(0x30 + S, 8)
               : S < 256 ? Code(0x190 + S - 144, 9)
               : S < 280 ? Code(S - 256, 7)
                         : Code(0xC0 + S - 280, 8);
    }
    BitWriter& Aligned(std::initializer_list<uint8_t> List)  // to a byte boundary, then whole bytes
    {
        Count = (Count + 7) / 8 * 8;
        for (uint8_t B : List)
            Out.push_back(B), Count += 8;
        return *this;
    }
};

// A dynamic block header: all 19 code-length codes 5 bits long, so that code-length symbol S is
// sent as the five bits of S; then the lengths as given, one symbol each, or the code-length
// symbols given.
BitWriter DynamicHeader(bool Final, const std::vector<uint8_t>& Lit, const std::vector<uint8_t>& Dist,
                        const std::vector<uint8_t>& CodeLengthSymbols = {})
{
    BitWriter W;
    W.Put(Final, 1).Put(2, 2).Put(uint32_t(Lit.size() - 257), 5).Put(uint32_t(Dist.size() - 1), 5).Put(15, 4);
    for (int I = 0; I < 19; ++I)
        W.Put(5, 3);
    if (!CodeLengthSymbols.empty()) {
        for (uint8_t S : CodeLengthSymbols)
            W.Code(S, 5);
        return W;
    }
    for (uint8_t L : Lit)
        W.Code(L, 5);
    for (uint8_t L : Dist)
        W.Code(L, 5);
    return W;
}

// Incomplete literal/length codes: 'a' is 0 and the end code 100, leaving 101 and 11 unused;
// WithLength, 'a' is 0, length 3 is 10 and the end code 110, leaving 111 unused.
std::vector<uint8_t> IncompleteLit(bool WithLength = false)
{
    std::vector<uint8_t> L(258, 0);
    L['a'] = 1;
    L[256] = 3;
    L[257] = WithLength ? 2 : 0;
    return L;
}

// Random code lengths for Count symbols: a complete code made by splitting leaves, the last one
// more often than not so that long codes appear, then now and then made incomplete,
// over-subscribed or empty.
std::vector<uint8_t> RandomLengths(std::mt19937& R, size_t Count, unsigned MaxLength, size_t Used)
{
    std::vector<uint8_t> Depth{0};
    while (Depth.size() < Used) {
        size_t I = R() % 2 ? Depth.size() - 1 : R() % Depth.size();
        while (Depth[I] >= MaxLength)
            I = (I + 1) % Depth.size();
        Depth.push_back(++Depth[I]);
    }
    std::vector<uint8_t> L(Count, 0);
    std::vector<size_t> Symbols(Count);
    for (size_t S = 0; S < Count; ++S)
        Symbols[S] = S;
    std::shuffle(Symbols.begin(), Symbols.end(), R);
    for (size_t I = 0; I < Used; ++I)
        L[Symbols[I]] = std::max<uint8_t>(Depth[I], 1);
    switch (R() % 24) {
    case 0:  // incomplete
        L[Symbols[R() % Used]] = 0;
        break;
    case 1:  // over-subscribed
        if (L[Symbols[0]] > 1)
            --L[Symbols[0]];
        break;
    case 2:  // empty
        std::fill(L.begin(), L.end(), uint8_t(0));
        break;
    }
    return L;
}

// A stream of one to three blocks, dynamic most of all, whose codes are random and whose data
// are random literals and matches that stay within what was produced.
Bytes RandomStream(std::mt19937& R, bool Deflate64)
{
    BitWriter W;
    size_t Produced = 0;
    const int Blocks = 1 + R() % 3;
    for (int B = 0; B < Blocks; ++B) {
        const bool Final = B == Blocks - 1;
        const unsigned Type = R() % 8 == 0 ? 0 : R() % 4 == 0 ? 1 : 2;
        W.Put(Final, 1).Put(Type, 2);
        if (Type == 0) {
            const size_t N = R() % 100;
            W.Aligned({uint8_t(N), 0, uint8_t(~N), 0xFF});
            for (size_t I = 0; I < N; ++I)
                W.Aligned({uint8_t(R())});
            Produced += N;
            continue;
        }
        std::vector<uint8_t> Lit(288, 8), Dist(32, 5);
        if (Type == 1) {
            std::fill(Lit.begin() + 144, Lit.begin() + 256, uint8_t(9));
            std::fill(Lit.begin() + 256, Lit.begin() + 280, uint8_t(7));
        } else {
            const size_t NLit = 257 + R() % 32, NDist = 1 + R() % 32;
            Lit = RandomLengths(R, NLit, 15, 1 + R() % NLit);
            if (!Lit[256] && R() % 4)
                std::swap(Lit[256], Lit[R() % 256]);
            Dist = RandomLengths(R, NDist, 15, 1 + R() % NDist);
            std::vector<uint8_t> CodeLength = RandomLengths(R, 19, 7, R() % 8 ? 19 : 1 + R() % 19);
            const auto CodeLengthCodes = CanonicalCodes(CodeLength);
            W.Put(uint32_t(NLit - 257), 5).Put(uint32_t(NDist - 1), 5).Put(15, 4);
            for (uint8_t S : CodeLengthOrder)
                W.Put(CodeLength[S], 3);
            std::vector<uint8_t> All(Lit);
            All.insert(All.end(), Dist.begin(), Dist.end());
            const auto Send = [&](unsigned S) {
                W.Code(CodeLengthCodes[S], CodeLength[S]);
                return CodeLength[S] != 0;
            };
            for (size_t I = 0; I < All.size();) {
                size_t Run = 1;
                while (I + Run < All.size() && All[I + Run] == All[I])
                    ++Run;
                if (All[I] == 0 && Run >= 11 && CodeLength[18]) {
                    Run = std::min<size_t>(Run, 11 + R() % 128);
                    Send(18), W.Put(uint32_t(Run - 11), 7);
                } else if (All[I] == 0 && Run >= 3 && CodeLength[17]) {
                    Run = std::min<size_t>(Run, 10);
                    Send(17), W.Put(uint32_t(Run - 3), 3);
                } else if (I > 0 && All[I] == All[I - 1] && Run >= 3 && CodeLength[16]) {
                    Run = std::min<size_t>(Run, 6);
                    Send(16), W.Put(uint32_t(Run - 3), 2);
                } else if (Run = 1; !Send(All[I])) {
                    return W.Out;  // the code-length code lacks this length: the rest is noise
                }
                I += Run;
            }
        }
        const auto LitCodes = CanonicalCodes(Lit), DistCodes = CanonicalCodes(Dist);
        std::vector<unsigned> Literals, Lengths, Distances;
        for (unsigned S = 0; S < std::min<size_t>(Lit.size(), 286); ++S)
            if (Lit[S] && S != 256)
                (S < 256 ? Literals : Lengths).push_back(S);
        for (unsigned S = 0; S < std::min<size_t>(Dist.size(), 30); ++S)
            if (Dist[S])
                Distances.push_back(S);
        size_t Usable = 0;  // the distance codes whose base is within what was produced
        for (size_t N = R() % 1000; N-- && Produced < 3000;) {
            while (Usable < Distances.size() && DistBase[Distances[Usable]] <= Produced)
                ++Usable;
            if (!Lengths.empty() && Usable && R() % 3 == 0) {
                const unsigned S = Lengths[R() % Lengths.size()];
                W.Code(LitCodes[S], Lit[S]);
                const unsigned Extra = S == 285 && Deflate64 ? 16 : LengthExtra[S - 257];
                const uint32_t V = R() & ((1u << Extra) - 1) & (R() % 8 ? 1023 : 0xFFFF);
                W.Put(V, Extra);
                const unsigned D = Distances[R() % Usable];
                W.Code(DistCodes[D], Dist[D]);
                W.Put(uint32_t(R() % std::min<size_t>(size_t(1) << DistExtra[D], Produced - DistBase[D] + 1)),
                      DistExtra[D]);
                Produced += S == 285 && Deflate64 ? V + 3 : LengthBase[S - 257] + V;
            } else if (!Literals.empty()) {
                const unsigned S = Literals[R() % Literals.size()];
                W.Code(LitCodes[S], Lit[S]);
                ++Produced;
            }
        }
        if (!Lit[256])
            return W.Out;
        W.Code(LitCodes[256], Lit[256]);
    }
    return W.Out;
}

// Damages a stream: flipped bits (the dynamic header's counts among them), a cut, inserted or
// replaced bytes, or noise throughout.
Bytes Damage(std::mt19937& R, Bytes S)
{
    switch (R() % 8) {
    case 0:
        break;
    case 1:
    case 2:
        for (int N = 1 + R() % 3; N-- && !S.empty();) {
            const size_t Bit = R() % 2 ? R() % std::min<size_t>(S.size() * 8, 40) : R() % (S.size() * 8);
            S[Bit / 8] ^= uint8_t(1u << (Bit % 8));
        }
        break;
    case 3:
        S.resize(R() % (S.size() + 1));
        break;
    case 4:
        for (int N = 1 + R() % 4; N--;)
            S.insert(S.begin() + long(R() % (S.size() + 1)), uint8_t(R()));
        break;
    case 5:
        for (int N = 1 + R() % 4; N-- && !S.empty();)
            S[R() % S.size()] = uint8_t(R());
        break;
    case 6:
        for (uint8_t& B : S)
            B = uint8_t(R());
        break;
    default:
        S.resize(R() % 64);
        for (uint8_t& B : S)
            B = uint8_t(R());
        break;
    }
    return S;
}

} // namespace InflateReference
