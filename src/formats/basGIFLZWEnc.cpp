// The GIF LZW encoder: the classic open-addressing hashed LZW with 5003 slots, a displacement
// probe and an immediate Clear when the code space is full.
#include "basGIFLZWEnc.h"

#include "clsDIB.h"

#include <cstring>

namespace basGIFLZWEnc {
namespace {

constexpr int32_t HashSize = 5003;  // a prime, so the displacement probe visits every slot
constexpr int32_t HashShift = 4;    // 5003 doubles 4 times to reach 65536: multiplier 2^(8 - 4)
constexpr int32_t MaxMaxCode = 4096;
constexpr int32_t MaxBits = 12;
constexpr int32_t PacketSize = 254;  // data bytes of a full sub-block

// 2 to the power n, less 1, at index n.
constexpr int NumMasks = 17;
int32_t Masks[NumMasks];

struct MaskTableAtStart {
    MaskTableAtStart() { InitEncoderMasks(); }
} BuildMasksAtStart;

// The key of the pair in each slot (-1 empty) and its code.
int32_t HashTable[HashSize];
int32_t CodeTable[HashSize];

// Bytes written by the encoder, length bytes included. Kept for the record only.
int32_t TotalWritten = 0;

// The finished bytes on their way out, a sub-block at a time. Only this leaves the encoder's
// frame, so the coding state below stays in registers.
struct PacketWriter {
    uint8_t Buffer[256];  // index 0 is the length byte, data from index 1 (255: a byte beyond a full one)
    int32_t PacketCount = 0;
    std::vector<uint8_t>* Output = nullptr;
    int32_t Written = 0;
};

// The state of one encode.
struct EncoderState {
    int32_t InitBits = 0;
    int32_t NBits = 0;
    int32_t MaxCode = 0;
    int32_t ClearCode = 0;
    int32_t EOFCode = 0;
    int32_t FreeEnt = 0;
    bool ClearFlag = false;
    bool Failed = false;
    uint32_t Accumulator = 0;
    int32_t AccumulatedBits = 0;
    // Pixel reading
    const uint8_t* Bits = nullptr;
    size_t Stride = 0;
    int32_t Width = 0;
    int32_t Height = 0;
    int32_t CurY = 0;
    int32_t Pass = 0;
    bool Interlace = false;
};

inline void LZWInitPacket(PacketWriter& P) { P.PacketCount = 0; }

void LZWFlushPacket(PacketWriter& P)
{
    if (P.PacketCount < 1)
        return;
    P.Buffer[0] = static_cast<uint8_t>(P.PacketCount);
    P.Output->insert(P.Output->end(), P.Buffer, P.Buffer + P.PacketCount + 1);
    P.Written += P.PacketCount + 1;
    LZWInitPacket(P);
}

inline void LZWPutByte(PacketWriter& P, uint8_t Byte)
{
    P.Buffer[++P.PacketCount] = Byte;
    if (P.PacketCount >= PacketSize)
        LZWFlushPacket(P);
}

// A full sub-block goes out; a byte that came beyond it starts the next one.
void LZWFlushFullPacket(PacketWriter& P)
{
    const int32_t Beyond = P.PacketCount - PacketSize;
    P.PacketCount = PacketSize;
    LZWFlushPacket(P);
    if (Beyond > 0)
        P.Buffer[1] = P.Buffer[PacketSize + 1];
    P.PacketCount = Beyond;
}

[[gnu::always_inline]] inline void LZWOutputCode(EncoderState& S, PacketWriter& P, int32_t Code)
{
    // Behind an End that went out before the last code (a pixel of that value in a frame whose
    // indexes exceed the code size) the bit count is below 0, and the mask table has no entry
    // for it: the encode fails, and what went out stays out.
    if (S.AccumulatedBits < 0) {
        S.Failed = true;
        return;
    }
    // The accumulator holds only its unwritten bits, so the code goes straight above them. A
    // code of at most 16 bits on top of at most 7 makes at most two whole bytes: both are put
    // in place, and the count moves on by those that are whole. Bits of a code above its width
    // (an index beyond the code size) never reach a whole byte and are masked off.
    S.Accumulator |= static_cast<uint32_t>(Code) << S.AccumulatedBits;
    S.AccumulatedBits += S.NBits;
    uint8_t* Place = P.Buffer + P.PacketCount + 1;
    Place[0] = static_cast<uint8_t>(S.Accumulator);
    Place[1] = static_cast<uint8_t>(S.Accumulator >> 8);
    const int32_t Whole = S.AccumulatedBits >> 3;
    P.PacketCount += Whole;
    S.AccumulatedBits &= 7;
    S.Accumulator = (S.Accumulator >> (8 * Whole)) & static_cast<uint32_t>(Masks[S.AccumulatedBits]);
    if (P.PacketCount >= PacketSize)
        LZWFlushFullPacket(P);
    // The width changes behind the code that found the table past the present width's reach,
    // and falls back behind a Clear.
    if (S.FreeEnt > S.MaxCode || S.ClearFlag) {
        if (S.ClearFlag) {
            S.NBits = S.InitBits;
            S.MaxCode = Masks[S.NBits];
            S.ClearFlag = false;
        } else {
            ++S.NBits;
            S.MaxCode = S.NBits == MaxBits ? MaxMaxCode : Masks[S.NBits];
        }
    }
    if (Code == S.EOFCode) {
        if (S.AccumulatedBits > 0) {
            LZWPutByte(P, static_cast<uint8_t>(S.Accumulator));
            S.Accumulator = 0;
            S.AccumulatedBits -= 8;
        }
        LZWFlushPacket(P);
    }
}

inline void LZWClearHash() { std::memset(HashTable, 0xFF, sizeof(HashTable)); }

inline void LZWClearBlock(EncoderState& S, PacketWriter& P)
{
    LZWClearHash();
    S.ClearFlag = true;
    S.FreeEnt = S.ClearCode + 2;
    LZWOutputCode(S, P, S.ClearCode);
}

// Moves to the next row to read: the next one down, or in an interlaced frame the next of the
// pass, then the first of the next pass. The pixel count ends the reading, not this.
inline void LZWNextRow(EncoderState& S)
{
    if (!S.Interlace) {
        ++S.CurY;
        return;
    }
    switch (S.Pass) {
    case 0:
        S.CurY += 8;
        if (S.CurY >= S.Height) {
            S.CurY = 4;
            S.Pass = 1;
        }
        break;
    case 1:
        S.CurY += 8;
        if (S.CurY >= S.Height) {
            S.CurY = 2;
            S.Pass = 2;
        }
        break;
    case 2:
        S.CurY += 4;
        if (S.CurY >= S.Height) {
            S.CurY = 1;
            S.Pass = 3;
        }
        break;
    default:
        S.CurY += 2;
        break;
    }
}

void LZWCompress(EncoderState& Shared, std::vector<uint8_t>* Output)
{
    EncoderState S = Shared;
    PacketWriter P;
    P.Output = Output;
    S.Pass = 0;
    S.CurY = 0;
    S.Accumulator = 0;
    S.AccumulatedBits = 0;
    S.ClearFlag = false;
    S.NBits = S.InitBits;
    S.MaxCode = Masks[S.NBits];
    // A minimum code size of -1 has no Clear code of its own: 2 to the power -1 rounds to 0.
    S.ClearCode = S.InitBits >= 1 ? (1 << (S.InitBits - 1)) : 0;
    S.EOFCode = S.ClearCode + 1;
    S.FreeEnt = S.ClearCode + 2;

    LZWInitPacket(P);
    LZWClearHash();
    LZWOutputCode(S, P, S.ClearCode);

    // Width * Height pixels, a whole row at a time, in the order LZWNextRow gives.
    int32_t RowsLeft = S.Height;
    const uint8_t* Pixel = S.Bits;
    const uint8_t* RowEnd = Pixel + S.Width;
    int32_t Ent = *Pixel++;
    --RowsLeft;
    for (;;) {
        if (Pixel == RowEnd) {
            if (RowsLeft == 0)
                break;
            --RowsLeft;
            LZWNextRow(S);
            Pixel = S.Bits + static_cast<size_t>(S.CurY) * S.Stride;
            RowEnd = Pixel + S.Width;
        }
        const int32_t C = *Pixel++;
        const int32_t Key = (C << 12) + Ent;
        int32_t Slot = (C << HashShift) ^ Ent;
        int32_t Held = HashTable[Slot];
        if (Held == Key) {
            Ent = CodeTable[Slot];
            continue;
        }
        if (Held >= 0) {
            const int32_t Displacement = Slot == 0 ? 1 : HashSize - Slot;
            bool Found = false;
            for (;;) {
                Slot -= Displacement;
                if (Slot < 0)
                    Slot += HashSize;
                Held = HashTable[Slot];
                if (Held == Key) {
                    Found = true;
                    break;
                }
                // A slot holding the key 0 (pixel 0 after pixel 0) ends a probe like an empty one.
                if (Held <= 0)
                    break;
            }
            if (Found) {
                Ent = CodeTable[Slot];
                continue;
            }
        }
        LZWOutputCode(S, P, Ent);
        Ent = C;
        if (S.FreeEnt < MaxMaxCode) {
            CodeTable[Slot] = S.FreeEnt++;
            HashTable[Slot] = Key;
        } else {
            // The Clear is never deferred: this pair is not stored.
            LZWClearBlock(S, P);
        }
    }
    LZWOutputCode(S, P, Ent);
    LZWOutputCode(S, P, S.EOFCode);
    TotalWritten = P.Written;
    Shared.Failed = S.Failed;
}

} // namespace

void InitEncoderMasks()
{
    Masks[0] = 0;
    for (int I = 1; I < NumMasks; ++I)
        Masks[I] = 2 * Masks[I - 1] + 1;
}

bool EncodeFrameLZW(std::vector<uint8_t>& Output, const clsDIB& DIB, uint8_t InitBits, bool Interlaced)
{
    if (DIB.DIBbpp() != 8 || !DIB.DIBBitsPtr() || DIB.DIBWidth() < 1 || DIB.DIBHeight() < 1)
        return true;
    // The widths run from InitBits up; the mask table ends at 16 bits.
    if (InitBits >= NumMasks)
        return false;
    EncoderState S;
    S.InitBits = InitBits;
    S.Bits = DIB.DIBBitsPtr();
    S.Stride = static_cast<size_t>(DIB.BytesPerScanline());
    S.Width = DIB.DIBWidth();
    S.Height = DIB.DIBHeight();
    S.Interlace = S.Height > 4 && Interlaced;
    LZWCompress(S, &Output);
    return !S.Failed;
}

} // namespace basGIFLZWEnc
