// The reader's inflate: raw deflate data (the two zlib header bytes already dropped) into a
// buffer of fixed size.
//
// Decoding policy, which the tests hold the decoder to:
// - Bytes go to Out[p], p counting every byte produced from 0. Once p reaches Out.size(), each
//   further byte, literal, copied or stored, lands on the last position Out.size() - 1, and
//   decoding goes on to the end of the stream, so a later block can still fail.
// - The source of a copied byte is min(p, Out.size()) - distance. Before the cut that is the
//   usual byte `distance` back; after it every byte of a copy reads Out[size - distance] and
//   writes it to the last position. A source before the buffer's start, which only a cut copy
//   can have, reads as 0. With an empty Out nothing is written and decoding still runs.
// - Written gets every byte produced, the cut ones included.
// - Codes are canonical. Lengths that over-subscribe the code space fail to build (the message
//   "Error in tree creation (Static)" and InflateTree, for every tree, dynamic ones included);
//   incomplete codes and all-zero lengths build, and a bit pattern no code has fails with
//   InflateBadCode when met.
// - A code is sought length by length from the shortest: it needs as many bits as its length,
//   and a pattern no code has needs as many bits as the longest code. A code or field that needs
//   bits past the input's end gives InflateInputEnded; the symbol is not output.
// - Within a match the checks come in the order the bits are read: length code, its extra bits,
//   distance code (30 and 31 are bad codes), its extra bits, then the distance against the
//   bytes produced so far.
// - A stored block needs its four length bytes (else InflateInputEnded), LEN and NLEN must be
//   complements and LEN must fit the input left (else InflateStoredLength).
//
// The decoder proper is table driven: an 11-bit primary table for literals and lengths and an
// 8-bit one for distances, with subtables for longer codes, a 64-bit bit buffer filled a word at
// a time, and a fast loop that runs while both the input and the output are far from their ends.
// Near either end a checked path takes over, which applies the rules above literally.
#include "clsPNG.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace {

// Table entries, one 32-bit word a slot:
//   bits 0-7    bits to drop: the code length plus the extra bits (for a link: the primary bits)
//   bits 8-11   the code length alone (for a link: the index bits of its subtable)
//   bits 12-14  kind, 0 for a length or distance
//   bits 16-30  value: literal byte, length or distance base, symbol, or subtable offset
//   bit 31      literal
constexpr uint32_t EntryLiteral = 0x80000000u;
constexpr uint32_t KindMask = 7u << 12;
constexpr uint32_t KindEnd = 1u << 12;
constexpr uint32_t KindLink = 2u << 12;
constexpr uint32_t KindBadSymbol = 3u << 12;
constexpr uint32_t KindNoCode = 4u << 12;

constexpr unsigned MaxCodeLength = 15;
constexpr unsigned LitBits = 11;
constexpr unsigned DistBits = 8;
constexpr unsigned CodeLengthBits = 7;  // the code-length code has no code longer than 7
constexpr unsigned MaxLitSymbols = 288;
constexpr unsigned MaxDistSymbols = 32;
// Every code longer than the primary bits can open a subtable of at most 2^(15 - bits) slots.
constexpr size_t LitTableSize = (size_t{1} << LitBits) + MaxLitSymbols * (size_t{1} << (MaxCodeLength - LitBits));
constexpr size_t DistTableSize = (size_t{1} << DistBits) + MaxDistSymbols * (size_t{1} << (MaxCodeLength - DistBits));

constexpr uint16_t LengthBase[29] = {3,  4,  5,  6,  7,  8,  9,  10, 11,  13,  15,  17,  19,  23, 27,
                                     31, 35, 43, 51, 59, 67, 83, 99, 115, 131, 163, 195, 227, 258};
constexpr uint8_t LengthExtra[29] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2,
                                     2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5, 0};
constexpr uint16_t DistBase[30] = {1,    2,    3,    4,    5,    7,    9,    13,    17,    25,
                                   33,   49,   65,   97,   129,  193,  257,  385,   513,   769,
                                   1025, 1537, 2049, 3073, 4097, 6145, 8193, 12289, 16385, 24577};
constexpr uint8_t DistExtra[30] = {0, 0, 0, 0, 1, 1, 2, 2,  3,  3,  4,  4,  5,  5,  6,
                                   6, 7, 7, 8, 8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13};
constexpr uint8_t CodeLengthOrder[19] = {16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1, 15};

// What a symbol's entry holds apart from its code length: kind, value and extra bits.
using LitPayloadTable = std::array<uint32_t, MaxLitSymbols>;
constexpr LitPayloadTable MakeLitPayloads(bool Deflate64)
{
    LitPayloadTable P{};
    for (unsigned S = 0; S < MaxLitSymbols; ++S) {
        if (S < 256)
            P[S] = EntryLiteral | (S << 16);
        else if (S == 256)
            P[S] = KindEnd;
        else if (S == 285 && Deflate64)
            P[S] = (3u << 16) | 16u;
        else if (S <= 285)
            P[S] = (uint32_t{LengthBase[S - 257]} << 16) | LengthExtra[S - 257];
        else
            P[S] = KindBadSymbol;
    }
    return P;
}
constexpr LitPayloadTable LitPayloads[2] = {MakeLitPayloads(false), MakeLitPayloads(true)};

constexpr std::array<uint32_t, MaxDistSymbols> MakeDistPayloads()
{
    std::array<uint32_t, MaxDistSymbols> P{};
    for (unsigned S = 0; S < MaxDistSymbols; ++S)
        P[S] = S < 30 ? (uint32_t{DistBase[S]} << 16) | DistExtra[S] : KindBadSymbol;
    return P;
}
constexpr auto DistPayloads = MakeDistPayloads();

constexpr std::array<uint32_t, 19> MakeCodeLengthPayloads()
{
    std::array<uint32_t, 19> P{};
    for (unsigned S = 0; S < 19; ++S)
        P[S] = S << 16;
    return P;
}
constexpr auto CodeLengthPayloads = MakeCodeLengthPayloads();

uint32_t ReverseBits(uint32_t Code, unsigned Length)
{
    uint32_t R = 0;
    for (unsigned I = 0; I < Length; ++I) {
        R = (R << 1) | (Code & 1u);
        Code >>= 1;
    }
    return R;
}

// Fills Table (2^Bits primary slots, then subtables) with the canonical code of Lengths (each 0
// to 15). False when the lengths over-subscribe the code space. MaxLength gets the longest code
// length, 0 for an empty code.
bool BuildTable(const uint8_t* Lengths, unsigned Count, const uint32_t* Payloads, unsigned Bits, uint32_t* Table,
                uint8_t& MaxLength)
{
    uint16_t LengthCount[MaxCodeLength + 1] = {};
    for (unsigned S = 0; S < Count; ++S)
        ++LengthCount[Lengths[S]];
    int32_t Left = 1;  // unused code space, in units of the current length
    MaxLength = 0;
    for (unsigned L = 1; L <= MaxCodeLength; ++L) {
        Left = Left * 2 - LengthCount[L];
        if (Left < 0)
            return false;
        if (LengthCount[L])
            MaxLength = static_cast<uint8_t>(L);
    }

    // Symbols in canonical order: by length, then by symbol.
    uint16_t Next[MaxCodeLength + 1];
    Next[1] = 0;
    for (unsigned L = 1; L < MaxCodeLength; ++L)
        Next[L + 1] = static_cast<uint16_t>(Next[L] + LengthCount[L]);
    const unsigned Coded = Next[MaxCodeLength] + LengthCount[MaxCodeLength];
    uint16_t Sorted[MaxLitSymbols + MaxDistSymbols];
    for (unsigned S = 0; S < Count; ++S)
        if (Lengths[S])
            Sorted[Next[Lengths[S]]++] = static_cast<uint16_t>(S);
    // Their codes, bit-reversed because the stream sends a code's first bit first.
    uint16_t Reversed[MaxLitSymbols + MaxDistSymbols];
    uint32_t Code = 0;
    unsigned CodeLength = 0;
    for (unsigned I = 0; I < Coded; ++I) {
        const unsigned L = Lengths[Sorted[I]];
        Code <<= L - CodeLength;
        CodeLength = L;
        Reversed[I] = static_cast<uint16_t>(ReverseBits(Code, L));
        ++Code;
    }

    const unsigned Size = 1u << Bits;
    if (Left > 0)
        std::fill(Table, Table + Size, KindNoCode);
    unsigned I = 0;
    for (; I < Coded; ++I) {
        const unsigned L = Lengths[Sorted[I]];
        if (L > Bits)
            break;
        const uint32_t Entry = Payloads[Sorted[I]] + (L << 8) + L;
        for (unsigned J = Reversed[I]; J < Size; J += 1u << L)
            Table[J] = Entry;
    }
    // Longer codes share a subtable per primary slot. In canonical order the codes of one slot
    // follow each other, the longest last.
    unsigned Free = Size;
    while (I < Coded) {
        const unsigned Slot = Reversed[I] & (Size - 1);
        unsigned End = I + 1;
        while (End < Coded && (Reversed[End] & (Size - 1)) == Slot)
            ++End;
        const unsigned SubBits = Lengths[Sorted[End - 1]] - Bits;
        const unsigned SubSize = 1u << SubBits;
        Table[Slot] = (Free << 16) | KindLink | (SubBits << 8) | Bits;
        std::fill(Table + Free, Table + Free + SubSize, KindNoCode);
        for (; I < End; ++I) {
            const unsigned L = Lengths[Sorted[I]] - Bits;
            const uint32_t Entry = Payloads[Sorted[I]] + (L << 8) + L;
            for (unsigned J = Reversed[I] >> Bits; J < SubSize; J += 1u << L)
                Table[Free + J] = Entry;
        }
        Free += SubSize;
    }
    return true;
}

// The fixed codes, built once and shared; their codes are at most 9 and 5 bits long.
struct FixedCodes {
    std::array<uint32_t, size_t{1} << LitBits> Lit;
    std::array<uint32_t, size_t{1} << DistBits> Dist;
    uint8_t LitMax = 0;
    uint8_t DistMax = 0;
};

const FixedCodes& Fixed(bool Deflate64)
{
    static const std::array<FixedCodes, 2> Codes = [] {
        std::array<FixedCodes, 2> C{};
        uint8_t Lengths[MaxLitSymbols];
        std::fill(Lengths, Lengths + 144, uint8_t{8});
        std::fill(Lengths + 144, Lengths + 256, uint8_t{9});
        std::fill(Lengths + 256, Lengths + 280, uint8_t{7});
        std::fill(Lengths + 280, Lengths + 288, uint8_t{8});
        uint8_t DistLengths[MaxDistSymbols];
        std::fill(DistLengths, DistLengths + MaxDistSymbols, uint8_t{5});
        for (int K = 0; K < 2; ++K) {
            BuildTable(Lengths, MaxLitSymbols, LitPayloads[K].data(), LitBits, C[K].Lit.data(), C[K].LitMax);
            BuildTable(DistLengths, MaxDistSymbols, DistPayloads.data(), DistBits, C[K].Dist.data(), C[K].DistMax);
        }
        return C;
    }();
    return Codes[Deflate64 ? 1 : 0];
}

inline uint64_t Load64(const uint8_t* P)
{
    uint64_t V;
    std::memcpy(&V, P, 8);
    if constexpr (std::endian::native == std::endian::big)
        V = __builtin_bswap64(V);
    return V;
}

// Through a register, so that the two places may overlap.
inline void Copy8(uint8_t* To, const uint8_t* From)
{
    uint64_t V;
    std::memcpy(&V, From, 8);
    std::memcpy(To, &V, 8);
}

// The fast loop runs while this much input and output are left: three refills of at most 7
// bytes each read 8 bytes ahead, and three literals and a match of 258 bytes stay inside the
// buffer, as do the 8 bytes read at the start of a short match.
constexpr size_t FastInMargin = 32;
constexpr size_t FastOutMargin = 272;

// Stores the first Count (1 to 8) bytes of Word at To, keeping the rest of the 8 bytes there:
// the bytes past the output stay as the caller left them.
inline void StorePart(uint8_t* To, uint64_t Word, size_t Count)
{
    uint64_t Old;
    std::memcpy(&Old, To, 8);
    const uint64_t Mask = std::endian::native == std::endian::little ? ~uint64_t{0} >> (64 - 8 * Count)
                                                                     : ~uint64_t{0} << (64 - 8 * Count);
    Word = (Word & Mask) | (Old & ~Mask);
    std::memcpy(To, &Word, 8);
}

// Copies a match of 3 to 258 bytes in words, writing exactly its bytes.
inline void CopyMatchFast(uint8_t* Out, size_t Distance, size_t Length)
{
    const uint8_t* Src = Out - Distance;
    uint8_t* const End = Out + Length;
    uint64_t Word;
    if (Distance >= 8) {
        if (Length <= 8) {
            std::memcpy(&Word, Src, 8);
            StorePart(Out, Word, Length);
            return;
        }
        do {
            Copy8(Out, Src);
            Out += 8;
            Src += 8;
        } while (Out + 8 < End);
        // The last word ends on the match's end; its source is already in place.
        Copy8(End - 8, End - 8 - Distance);
        return;
    }
    if (Distance == 1) {
        Word = Out[-1] * uint64_t{0x0101010101010101};
        if (Length <= 8) {
            StorePart(Out, Word, Length);
            return;
        }
        do {
            std::memcpy(Out, &Word, 8);
            Out += 8;
        } while (Out + 8 < End);
        std::memcpy(End - 8, &Word, 8);
        return;
    }
    if (Length < 8) {
        for (size_t I = 0; I < Length; ++I)
            Out[I] = Src[I];
        return;
    }
    // A period of 2 to 7 bytes: lay down one word byte by byte, repeat it at a step that is a
    // whole number of periods, and finish byte by byte.
    for (int I = 0; I < 8; ++I)
        Out[I] = Src[I];
    std::memcpy(&Word, Src, 8);
    static constexpr uint8_t Steps[8] = {0, 8, 8, 6, 8, 5, 6, 7};
    const unsigned Step = Steps[Distance];
    uint8_t* P = Out + Step;
    for (; P + 8 <= End; P += Step)
        std::memcpy(P, &Word, 8);
    for (P += 8 - Step; P < End; ++P)
        *P = P[-Distance];
}

struct Decoder {
    Decoder(const uint8_t* Input, size_t InLength, uint8_t* Output, size_t OutLength, bool Form64)
        : In(Input), InEnd(Input + InLength), Out(Output), OutSize(OutLength), Deflate64(Form64)
    {
    }

    const uint8_t* In;
    const uint8_t* InEnd;
    uint64_t BitBuf = 0;
    unsigned BitsLeft = 0;  // valid bits in BitBuf, the bits above them zero
    uint8_t* Out;
    size_t OutSize;
    size_t Produced = 0;
    bool Deflate64;
    uint8_t LitMax = 0;
    uint8_t DistMax = 0;
    uint8_t CodeLengthMax = 0;
    // Left uninitialised: every slot a decode can reach is written when the table is built.
    uint32_t LitTable[LitTableSize];
    uint32_t DistTable[DistTableSize];
    uint32_t CodeLengthTable[size_t{1} << CodeLengthBits];

    // Tops the bit buffer up byte by byte: afterwards it holds at least 56 bits, or the whole
    // rest of the input.
    void Refill()
    {
        while (BitsLeft < 56 && In < InEnd) {
            BitBuf |= uint64_t{*In++} << BitsLeft;
            BitsLeft += 8;
        }
    }
    uint32_t Take(unsigned Count)
    {
        const uint32_t V = static_cast<uint32_t>(BitBuf & ((uint64_t{1} << Count) - 1));
        BitBuf >>= Count;
        BitsLeft -= Count;
        return V;
    }
    // Reads Count bits (at most 16) into Value, or says the input has ended.
    bool Read(unsigned Count, uint32_t& Value)
    {
        Refill();
        if (BitsLeft < Count)
            return false;
        Value = Take(Count);
        return true;
    }

    // The checked decode of one code: drops its bits and gives its entry, or an error.
    int32_t DecodeChecked(const uint32_t* Table, unsigned Bits, uint8_t MaxLength, uint32_t& Entry)
    {
        Refill();
        uint32_t E = Table[BitBuf & ((1u << Bits) - 1)];
        unsigned Length = 0;
        if ((E & KindMask) == KindLink) {
            Length = Bits;
            E = Table[(E >> 16) + ((BitBuf >> Bits) & ((1u << ((E >> 8) & 15)) - 1))];
        }
        if ((E & KindMask) == KindNoCode)
            return BitsLeft >= MaxLength ? clsPNG::InflateBadCode : clsPNG::InflateInputEnded;
        Length += (E >> 8) & 15;
        if (Length > BitsLeft)
            return clsPNG::InflateInputEnded;
        if ((E & KindMask) == KindBadSymbol)
            return clsPNG::InflateBadCode;
        Take(Length);
        Entry = E;
        return clsPNG::InflateOK;
    }

    void Put(uint8_t Byte)
    {
        if (Produced < OutSize)
            Out[Produced] = Byte;
        else if (OutSize)
            Out[OutSize - 1] = Byte;
        ++Produced;
    }

    // Copies a match under the cut rule; Distance is at most Produced.
    void CopyMatchChecked(size_t Distance, size_t Length)
    {
        const size_t Fit = Produced < OutSize ? std::min(Length, OutSize - Produced) : 0;
        uint8_t* To = Out + Produced;
        const uint8_t* From = To - Distance;
        for (size_t I = 0; I < Fit; ++I)
            To[I] = From[I];
        // Past the cut every byte reads the same source and writes the last position.
        if (Fit < Length && OutSize)
            Out[OutSize - 1] = Distance <= OutSize ? Out[OutSize - Distance] : 0;
        Produced += Length;
    }

    static int32_t TreeFailed()
    {
        if (clsPNG::MessageSink)
            clsPNG::MessageSink("Error in tree creation (Static)", clsPNG::Caption);
        return clsPNG::InflateTree;
    }

    int32_t Stored();
    int32_t DynamicHeader();
    int32_t Codes(const uint32_t* Lit, uint8_t LitMaxLength, const uint32_t* Dist, uint8_t DistMaxLength);
    int32_t Run();
};

int32_t Decoder::Stored()
{
    // Drop the bits up to the byte boundary and give the whole bytes still in the buffer back.
    BitsLeft &= ~7u;
    In -= BitsLeft / 8;
    BitBuf = 0;
    BitsLeft = 0;
    if (InEnd - In < 4)
        return clsPNG::InflateInputEnded;
    const size_t Len = In[0] | (size_t{In[1]} << 8);
    const size_t NLen = In[2] | (size_t{In[3]} << 8);
    In += 4;
    if ((Len ^ NLen) != 0xFFFF || Len > static_cast<size_t>(InEnd - In))
        return clsPNG::InflateStoredLength;
    const size_t Fit = Produced < OutSize ? std::min(Len, OutSize - Produced) : 0;
    if (Fit)
        std::memcpy(Out + Produced, In, Fit);
    if (Fit < Len && OutSize)
        Out[OutSize - 1] = In[Len - 1];
    Produced += Len;
    In += Len;
    return clsPNG::InflateOK;
}

int32_t Decoder::DynamicHeader()
{
    uint32_t V;
    if (!Read(14, V))
        return clsPNG::InflateInputEnded;
    const unsigned NLit = (V & 31) + 257;
    const unsigned NDist = ((V >> 5) & 31) + 1;
    const unsigned NCodeLength = (V >> 10) + 4;
    uint8_t CodeLengthLengths[19] = {};
    for (unsigned I = 0; I < NCodeLength; ++I) {
        if (!Read(3, V))
            return clsPNG::InflateInputEnded;
        CodeLengthLengths[CodeLengthOrder[I]] = static_cast<uint8_t>(V);
    }
    if (!BuildTable(CodeLengthLengths, 19, CodeLengthPayloads.data(), CodeLengthBits, CodeLengthTable, CodeLengthMax))
        return TreeFailed();

    uint8_t Lengths[MaxLitSymbols + MaxDistSymbols];
    const unsigned Total = NLit + NDist;
    unsigned I = 0;
    while (I < Total) {
        uint32_t E;
        if (const int32_t R = DecodeChecked(CodeLengthTable, CodeLengthBits, CodeLengthMax, E))
            return R;
        const unsigned Symbol = E >> 16;
        if (Symbol < 16) {
            Lengths[I++] = static_cast<uint8_t>(Symbol);
            continue;
        }
        unsigned Repeat;
        uint8_t Value = 0;
        if (Symbol == 16) {
            if (I == 0)
                return clsPNG::InflateRepeatFirst;
            if (!Read(2, V))
                return clsPNG::InflateInputEnded;
            Repeat = 3 + V;
            Value = Lengths[I - 1];
        } else if (Symbol == 17) {
            if (!Read(3, V))
                return clsPNG::InflateInputEnded;
            Repeat = 3 + V;
        } else {
            if (!Read(7, V))
                return clsPNG::InflateInputEnded;
            Repeat = 11 + V;
        }
        if (I + Repeat > Total)
            return clsPNG::InflateRepeatOverrun;
        std::fill(Lengths + I, Lengths + I + Repeat, Value);
        I += Repeat;
    }
    if (!BuildTable(Lengths, NLit, LitPayloads[Deflate64 ? 1 : 0].data(), LitBits, LitTable, LitMax) ||
        !BuildTable(Lengths + NLit, NDist, DistPayloads.data(), DistBits, DistTable, DistMax))
        return TreeFailed();
    return clsPNG::InflateOK;
}

// Decodes the codes of one block up to its end code.
int32_t Decoder::Codes(const uint32_t* Lit, uint8_t LitMaxLength, const uint32_t* Dist, uint8_t DistMaxLength)
{
    constexpr uint64_t LitMask = (uint64_t{1} << LitBits) - 1;
    constexpr uint64_t DistMask = (uint64_t{1} << DistBits) - 1;

    if (OutSize - std::min(Produced, OutSize) > FastOutMargin && InEnd - In > static_cast<ptrdiff_t>(FastInMargin)) {
        // The fast loop works on locals, which byte stores cannot alias.
        const uint8_t* Src = In;
        const uint8_t* const SrcFastEnd = InEnd - FastInMargin;
        uint64_t Bits = BitBuf;
        unsigned Left = BitsLeft;
        uint8_t* const Begin = Out;
        uint8_t* Dst = Out + Produced;
        uint8_t* const DstFastEnd = Out + OutSize - FastOutMargin;
        int32_t Result = 1;  // 1: left the loop with the block unfinished

        // Afterwards Left is 56 to 63; only bytes below SrcFastEnd + 8 are ever read.
        auto Refill = [&] {
            Bits |= Load64(Src) << Left;
            Src += (63 - Left) >> 3;
            Left |= 56;
        };
        auto Drop = [&](unsigned Count) {
            Bits >>= Count;
            Left -= Count;
        };

        while (Dst < DstFastEnd && Src < SrcFastEnd) {
            Refill();
            uint32_t E = Lit[Bits & LitMask];
            // Up to three literals a refill: three codes of 15 bits fit in 56.
            if (E & EntryLiteral) {
                Drop(E & 0xFF);
                *Dst++ = static_cast<uint8_t>(E >> 16);
                E = Lit[Bits & LitMask];
                if (E & EntryLiteral) {
                    Drop(E & 0xFF);
                    *Dst++ = static_cast<uint8_t>(E >> 16);
                    E = Lit[Bits & LitMask];
                    if (E & EntryLiteral) {
                        Drop(E & 0xFF);
                        *Dst++ = static_cast<uint8_t>(E >> 16);
                        continue;
                    }
                }
            }
            if (E & KindMask) {
                if ((E & KindMask) == KindLink) {
                    Drop(LitBits);
                    E = Lit[(E >> 16) + (Bits & ((1u << ((E >> 8) & 15)) - 1))];
                    if (E & EntryLiteral) {
                        Drop(E & 0xFF);
                        *Dst++ = static_cast<uint8_t>(E >> 16);
                        continue;
                    }
                }
                if ((E & KindMask) == KindEnd) {
                    Drop(E & 0xFF);
                    Result = clsPNG::InflateOK;
                    break;
                }
                if (E & KindMask) {  // 286, 287 or no code; at least 26 real bits are at hand
                    Result = clsPNG::InflateBadCode;
                    break;
                }
            }
            // A length: code and extra bits take at most 20 bits, 31 in the Deflate64 form.
            if (Left < 32)
                Refill();
            unsigned Total = E & 0xFF;
            const size_t Length = (E >> 16) + ((Bits & ((uint64_t{1} << Total) - 1)) >> ((E >> 8) & 15));
            Drop(Total);
            if (Left < 28)
                Refill();
            E = Dist[Bits & DistMask];
            if (E & KindMask) {
                if ((E & KindMask) == KindLink) {
                    Drop(DistBits);
                    E = Dist[(E >> 16) + (Bits & ((1u << ((E >> 8) & 15)) - 1))];
                }
                if (E & KindMask) {
                    Result = clsPNG::InflateBadCode;
                    break;
                }
            }
            Total = E & 0xFF;
            const size_t Distance = (E >> 16) + ((Bits & ((uint64_t{1} << Total) - 1)) >> ((E >> 8) & 15));
            Drop(Total);
            if (Distance > static_cast<size_t>(Dst - Begin)) {
                Result = clsPNG::InflateBadCode;
                break;
            }
            if (Length <= 258) {
                CopyMatchFast(Dst, Distance, Length);
                Dst += Length;
            } else {  // a long Deflate64 match, copied exactly; it may reach the end of the buffer
                Produced = static_cast<size_t>(Dst - Begin);
                CopyMatchChecked(Distance, Length);
                Dst = Begin + std::min(Produced, OutSize);
                if (Produced > OutSize) {
                    Result = 2;  // cut: continue on the checked path
                    break;
                }
            }
        }
        // The checked path keeps zeros above its bits; the fast refill leaves input there.
        if (Result != 2)
            Produced = static_cast<size_t>(Dst - Begin);
        In = Src;
        BitBuf = Bits & ((uint64_t{1} << Left) - 1);
        BitsLeft = Left;
        if (Result <= 0)
            return Result;
    }

    for (;;) {
        uint32_t E;
        if (const int32_t R = DecodeChecked(Lit, LitBits, LitMaxLength, E))
            return R;
        if (E & EntryLiteral) {
            Put(static_cast<uint8_t>(E >> 16));
            continue;
        }
        if ((E & KindMask) == KindEnd)
            return clsPNG::InflateOK;
        uint32_t Extra;
        if (!Read((E & 0xFF) - ((E >> 8) & 15), Extra))
            return clsPNG::InflateInputEnded;
        const size_t Length = (E >> 16) + Extra;
        if (const int32_t R = DecodeChecked(Dist, DistBits, DistMaxLength, E))
            return R;
        if (!Read((E & 0xFF) - ((E >> 8) & 15), Extra))
            return clsPNG::InflateInputEnded;
        const size_t Distance = (E >> 16) + Extra;
        if (Distance > Produced)
            return clsPNG::InflateBadCode;
        CopyMatchChecked(Distance, Length);
    }
}

int32_t Decoder::Run()
{
    for (;;) {
        uint32_t Header;
        if (!Read(3, Header))
            return clsPNG::InflateInputEnded;
        int32_t R;
        switch (Header >> 1) {
        case 0:
            R = Stored();
            break;
        case 1: {
            const FixedCodes& F = Fixed(Deflate64);
            R = Codes(F.Lit.data(), F.LitMax, F.Dist.data(), F.DistMax);
            break;
        }
        case 2:
            R = DynamicHeader();
            if (R == clsPNG::InflateOK)
                R = Codes(LitTable, LitMax, DistTable, DistMax);
            break;
        default:
            return clsPNG::InflateBlockType;
        }
        if (R != clsPNG::InflateOK)
            return R;
        if (Header & 1)
            return clsPNG::InflateOK;
    }
}

}  // namespace

int32_t clsPNG::Inflate(const uint8_t* In, size_t InLength, std::vector<uint8_t>& Out, bool Deflate64, size_t* Written)
{
    // About 45 KB of tables; the decoder keeps them on the stack so that no call allocates.
    Decoder D(In, InLength, Out.data(), Out.size(), Deflate64);
    const int32_t Result = D.Run();
    if (Written)
        *Written = D.Produced;
    return Result;
}
