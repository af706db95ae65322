// The GIF LZW decoder. Table-driven, with a small output stack; it stops silently at the first
// index that would leave its tables, its stack, the data or the surface.
#include "basGIFLZWDec.h"

#include "clsDIB.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>

namespace basGIFLZWDec {
namespace {

constexpr int32_t TableLast = 4096;  // Prefix and Suffix run from 0 to 4096
constexpr int32_t StackLast = 4000;  // the output stack runs from 0 to 4000
constexpr int32_t MaxCodeSize = 12;

// 2 to the power k at index k + 1, index 0 being 0; index 32 holds 0x80000000.
constexpr int NumPowers = 33;
int32_t Powers[NumPowers];

struct PowerTableAtStart {
    PowerTableAtStart() { InitDecoderPowers(); }
} BuildPowersAtStart;

// The string table. It keeps its contents from call to call: an entry of a damaged stream can
// be read before this run wrote it, and then it gives what the last run left there.
int32_t Prefix[TableLast + 1];
uint8_t Suffix[TableLast + 1];

// The signed 32-bit arithmetic of the codec: a product or a difference outside it is an error
// like an index out of bounds.
bool FitsInt32(int64_t Value) { return Value >= INT32_MIN && Value <= INT32_MAX; }

// All state of one decode. LZWDecodeLoop works on a copy held in its own frame so that the
// compiler can keep it in registers: the pixel stores cannot reach it.
struct DecoderState {
    // Code reading. The data is read a word at a time, but what the reader has taken stands as
    // if it took one byte at a time, only when the codes ask: BitPos bits make a read position
    // of ceil(BitPos / 8) + 1.
    int32_t InitCodeSize = 0;
    int32_t ClearCode = 0;
    int32_t CodeSize = 0;
    int32_t MaxCode = 0;
    uint32_t CodeMask = 0;
    const uint8_t* Bytes = nullptr;  // the data proper: Data(1) on
    size_t DataBytes = 0;
    uint64_t TotalBits = 0;
    uint64_t BitPos = 0;
    uint64_t SurfaceBytes = 0;
    // Pixel writing
    uint8_t* Bits = nullptr;
    size_t Stride = 0;
    int32_t RowWidth = 0;
    int32_t LastRow = 0;
    int32_t Pass = 0;
    int32_t Y = 0;
    uint8_t* RowPtr = nullptr;  // the next pixel's place
    int32_t RowLeft = 0;        // pixels until the end of the row
    uint8_t PassStep[4] = {};
    uint8_t PassStart[4] = {};
};

// The length of each entry's string while it is sure to be what the chain of Prefix gives: the
// entry was made since the last Clear from a code that was itself sure. 0 where it is not (the
// string of a code that stood above the next free code, or of Clear); such strings go the slow
// way through the stack, with all its tests.
uint16_t Length[TableLast + 1];

// Sets the code width and the values that follow from it. False where the width's largest code
// leaves the signed 32-bit range (a width of 31) or the power table (a width above 31).
inline bool SetCodeSize(DecoderState& S, int32_t Size)
{
    if (Size < 0 || Size + 1 >= NumPowers)
        return false;
    const int64_t Largest = static_cast<int64_t>(Powers[Size + 1]) - 1;
    if (!FitsInt32(Largest))
        return false;
    S.CodeSize = Size;
    S.MaxCode = static_cast<int32_t>(Largest);
    S.CodeMask = static_cast<uint32_t>(Largest);
    return true;
}

// A reader that takes a byte whenever it holds fewer bits than the code needs keeps them in a
// signed 32-bit buffer. With codes wider than 24 bits a byte can land on the sign bit or above;
// that is an overflow, and it ends the decode.
bool WideCodeFits(const DecoderState& S)
{
    int32_t Held = static_cast<int32_t>((8 - (S.BitPos & 7)) & 7);
    size_t Next = static_cast<size_t>((S.BitPos + 7) >> 3);
    while (Held < S.CodeSize) {
        if (Held >= 24 && (static_cast<uint64_t>(S.Bytes[Next]) << Held) > INT32_MAX)
            return false;
        Held += 8;
        ++Next;
    }
    return true;
}

// Takes the next code, lowest bit first. False when the data runs out.
inline bool LZWGetCode(DecoderState& S, int32_t& Code)
{
    if (S.BitPos + static_cast<uint64_t>(S.CodeSize) > S.TotalBits)
        return false;
    if (S.CodeSize > 24 && !WideCodeFits(S))
        return false;
    const size_t At = static_cast<size_t>(S.BitPos >> 3);
    uint64_t Word = 0;
    if (std::endian::native == std::endian::little && At + 8 <= S.DataBytes) {
        std::memcpy(&Word, S.Bytes + At, 8);
    } else {
        const size_t End = std::min(S.DataBytes, At + 8);
        for (size_t I = At; I < End; ++I)
            Word |= static_cast<uint64_t>(S.Bytes[I]) << (8 * (I - At));
    }
    Code = static_cast<int32_t>((Word >> (S.BitPos & 7)) & S.CodeMask);
    S.BitPos += static_cast<uint64_t>(S.CodeSize);
    return true;
}

// Pushes the string of Code on the stack from Start on, last byte first, and answers the index
// of its first byte; -1 when the chain leaves the table or the stack.
inline int32_t LZWExpandCode(uint8_t* Stack, int32_t Start, int32_t Code, int32_t ClearCode)
{
    int32_t Pos = Start;
    while (Code >= ClearCode) {
        if (Code > TableLast || Pos > StackLast)
            return -1;
        Stack[Pos++] = Suffix[Code];
        Code = Prefix[Code];
    }
    if (Pos > StackLast)
        return -1;
    Stack[Pos] = static_cast<uint8_t>(Code);
    return Pos;
}

// Moves to the next row of the pass, or to the first row of the next pass once this one runs
// past the surface. False when a fifth pass would begin: the pass tables have four entries.
inline bool AdvanceRow(DecoderState& S)
{
    S.Y += S.PassStep[S.Pass];
    if (S.Y > S.LastRow) {
        if (++S.Pass > 3)
            return false;
        S.Y = S.PassStart[S.Pass];
    }
    S.RowPtr = S.Bits + static_cast<size_t>(S.Y) * S.Stride;
    S.RowLeft = S.RowWidth;
    return true;
}

inline bool PutPixel(DecoderState& S, uint8_t Value)
{
    *S.RowPtr++ = Value;
    if (--S.RowLeft == 0)
        return AdvanceRow(S);
    return true;
}

// Writes Stack(Top) down to Stack(0) as pixels.
bool PutString(DecoderState& S, const uint8_t* Stack, int32_t Top)
{
    const uint8_t* Src = Stack + Top;
    int32_t Count = Top + 1;
    while (Count > 0) {
        const int32_t Run = Count < S.RowLeft ? Count : S.RowLeft;
        uint8_t* Dst = S.RowPtr;
        for (int32_t I = 0; I < Run; ++I)
            Dst[I] = Src[-I];
        Src -= Run;
        Count -= Run;
        S.RowPtr += Run;
        S.RowLeft -= Run;
        if (S.RowLeft == 0 && !AdvanceRow(S))
            return false;
    }
    return true;
}

// Writes the string of a sure Code of Count bytes straight into the row, last byte first, where
// the stack would have held it and then given it out in the same order. Answers its first byte.
inline uint8_t PutChain(uint8_t* Dst, int32_t Code, int32_t Count)
{
    for (int32_t I = Count - 1; I > 0; --I) {
        Dst[I] = Suffix[Code];
        Code = Prefix[Code];
    }
    Dst[0] = static_cast<uint8_t>(Code);
    return Dst[0];
}

void LZWDecodeLoop(DecoderState& Shared)
{
    DecoderState S = Shared;
    uint8_t Stack[StackLast + 1];
    Stack[0] = 0;

    const int32_t ClearCode = S.ClearCode;
    const int32_t EndCode = ClearCode + 1;
    const uint64_t StopAt = S.SurfaceBytes - 1;  // ceil(BitPos / 8) + 1 = SurfaceBytes
    int32_t NextFree = ClearCode + 2;
    bool FirstAfterClear = true;
    int32_t OldCode = 0;
    int32_t FirstByte = 0;
    int32_t StackTop = 0;
    int32_t Code = 0;

    // The length of a code's string while it is sure, else 0.
    auto SureLength = [&](int32_t Of) -> int32_t {
        if (Of < ClearCode)
            return 1;
        return Of >= ClearCode + 2 && Of < NextFree ? Length[Of] : 0;
    };

    // The stream is taken to begin with a Clear code: the first code goes unread.
    if (!LZWGetCode(S, Code))
        return;
    for (;;) {
        if (!LZWGetCode(S, Code) || Code == EndCode)
            break;
        if (FirstAfterClear) {
            // Before the test for Clear: a Clear straight after a Clear is a pixel.
            FirstAfterClear = false;
            OldCode = FirstByte = Code;
            if (!PutPixel(S, static_cast<uint8_t>(Code)))
                break;
        } else if (Code == ClearCode) {
            FirstAfterClear = true;
            SetCodeSize(S, S.InitCodeSize);
            NextFree = ClearCode + 2;
        } else {
            bool Written = false;
            if (Code < NextFree) {
                const int32_t Count = SureLength(Code);
                if (Count > 0 && Count <= S.RowLeft && Count <= StackLast + 1) {
                    FirstByte = PutChain(S.RowPtr, Code, Count);
                    S.RowPtr += Count;
                    S.RowLeft -= Count;
                    StackTop = -1;
                    Written = true;
                } else {
                    StackTop = LZWExpandCode(Stack, 0, Code, ClearCode);
                    if (StackTop < 0)
                        break;
                }
            } else if (Code == NextFree) {
                const int32_t Count = SureLength(OldCode);
                if (Count > 0 && Count + 1 <= S.RowLeft && Count <= StackLast) {
                    S.RowPtr[Count] = static_cast<uint8_t>(FirstByte);
                    FirstByte = PutChain(S.RowPtr, OldCode, Count);
                    S.RowPtr += Count + 1;
                    S.RowLeft -= Count + 1;
                    StackTop = -1;
                    Written = true;
                } else {
                    Stack[0] = static_cast<uint8_t>(FirstByte);
                    StackTop = LZWExpandCode(Stack, 1, OldCode, ClearCode);
                    if (StackTop < 0)
                        break;
                }
            }
            if (Written) {
                if (S.RowLeft == 0 && !AdvanceRow(S))
                    break;
            } else {
                // A code above NextFree expands nothing and pops what the stack top says:
                // nothing after an earlier string (top -1), Stack(0) if no string came yet.
                if (StackTop < 0)
                    break;
                FirstByte = Stack[StackTop];
                if (!PutString(S, Stack, StackTop))
                    break;
                StackTop = -1;
            }
            if (NextFree > TableLast)
                break;
            const int32_t OldLength = SureLength(OldCode);
            Prefix[NextFree] = OldCode;
            Suffix[NextFree] = static_cast<uint8_t>(FirstByte);
            Length[NextFree] = static_cast<uint16_t>(OldLength > 0 ? OldLength + 1 : 0);
            ++NextFree;
            if (NextFree > S.MaxCode && S.CodeSize < MaxCodeSize)
                SetCodeSize(S, S.CodeSize + 1);
            OldCode = Code;
        }
        // No image's data is longer than its surface: stop where the read position meets the
        // surface's size exactly. A position that jumps over it runs on to the End code.
        if (((S.BitPos + 7) >> 3) == StopAt)
            break;
    }
}

} // namespace

void InitDecoderPowers()
{
    Powers[0] = 0;
    Powers[1] = 1;
    for (int I = 2; I < NumPowers - 1; ++I)
        Powers[I] = Powers[I - 1] * 2;
    // The top entry is the sign bit of a signed 32-bit value.
    Powers[NumPowers - 1] = INT32_MIN;
}

void DecodeFrameLZW(clsDIB& DIB, bool Interlaced, uint8_t MinCodeSize, const std::vector<uint8_t>& Data)
{
    if (DIB.DIBbpp() != 8 || !DIB.DIBBitsPtr() || DIB.DIBWidth() < 1 || DIB.DIBHeight() < 1)
        return;
    DecoderState S;
    // Data(0) is unused: the reading starts at Data(1).
    S.Bytes = Data.size() > 1 ? Data.data() + 1 : nullptr;
    S.DataBytes = Data.size() > 1 ? Data.size() - 1 : 0;
    S.TotalBits = static_cast<uint64_t>(S.DataBytes) * 8;
    S.SurfaceBytes = static_cast<uint64_t>(DIB.DIBSize());
    S.RowWidth = DIB.DIBWidth();
    S.LastRow = DIB.DIBHeight() - 1;
    // A low interlaced frame (height 1 to 4) is read in plain row order, on purpose.
    const bool Passes = DIB.DIBHeight() > 4 && Interlaced;
    static constexpr uint8_t InterlaceStep[4] = {8, 8, 4, 2};
    static constexpr uint8_t InterlaceStart[4] = {0, 4, 2, 1};
    for (int I = 0; I < 4; ++I) {
        S.PassStep[I] = Passes ? InterlaceStep[I] : 1;
        S.PassStart[I] = Passes ? InterlaceStart[I] : 0;
    }
    S.Pass = 0;
    S.InitCodeSize = MinCodeSize + 1;
    if (MinCodeSize + 1 >= NumPowers)
        return;
    S.ClearCode = Powers[MinCodeSize + 1];
    if (!SetCodeSize(S, S.InitCodeSize))
        return;
    S.BitPos = 0;
    S.Bits = DIB.DIBBitsPtr();
    S.Stride = static_cast<size_t>(DIB.BytesPerScanline());
    S.Y = 0;
    S.RowPtr = S.Bits;
    S.RowLeft = S.RowWidth;
    LZWDecodeLoop(S);
}

} // namespace basGIFLZWDec
