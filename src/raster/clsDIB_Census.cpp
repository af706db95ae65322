// The colour census behind CountColorsDIB, IsMultiColorDIB and BPPperActualDIB: a table of
// red and blue pairs pointing into rows of green flags. Both tables are fixed in size, so
// the count stops at 32,767 pairs: 8 MB of table and no need to count further.
#include <algorithm>
#include <cstring>
#include <memory>

#include "basMath.h"
#include "clsDIB.h"

namespace {

constexpr int MaxPairs = 32767;

enum CensusMode { CountColors, MultiColor, ActualBpp };

struct CensusTables {
    int16_t PairRow[256][256];          // [red][blue]: row of the pair in GreenSeen, 0 if unseen
    uint8_t GreenSeen[MaxPairs + 1][256]; // [row][green]: 1 where the colour has been seen
};

CensusTables& Tables()
{
    static auto Storage = std::make_unique<CensusTables>();
    return *Storage;
}

constexpr uint32_t StandardColors[16] = {0xFFFFFF, 0x808080, 0xFF00FF, 0x0000FF, 0x00FFFF, 0x00FF00,
                                         0xFFFF00, 0xFF0000, 0xC0C0C0, 0x000000, 0x800080, 0x000080,
                                         0x008080, 0x008000, 0x808000, 0x800000};

} // namespace

void clsDIB::Census(clsDIB& Dib, int Mode, int32_t& Result)
{
    Result = 0;
    if (!Dib.Context)
        return;
    // The loop reads 32-bit memory; anything else is painted on a 32-bit copy first.
    clsDIB Copy;
    clsDIB* Subject = &Dib;
    if (Dib.StorageBpp() != 32) {
        if (!Copy.CreateBlankDIB(Dib.Width, Dib.Height, 32, 0xFFFFFF, false, true))
            return;
        PaintFromDIBtoDIB(Dib, Copy, 0, 0, Dib.Width, Dib.Height);
        Subject = &Copy;
    }
    CensusTables& T = Tables();
    int NextRow = 1;
    int32_t Count = 0;
    uint32_t FirstColor = 0;
    uint32_t Seen[256];
    bool Stopped = false;
    const uint8_t* P = Subject->Bits;
    const size_t Pixels = static_cast<size_t>(Subject->Width) * Subject->Height;
    for (size_t I = 0; I < Pixels && !Stopped; ++I, P += 4) {
        const uint8_t B = P[0], G = P[1], R = P[2];
        int16_t& Row = T.PairRow[R][B];
        if (Row == 0) {
            if (NextRow > MaxPairs)
                break;
            Row = static_cast<int16_t>(NextRow++);
        } else if (T.GreenSeen[Row][G]) {
            continue;
        }
        T.GreenSeen[Row][G] = 1;
        const uint32_t Color = RGBColor(R, G, B);
        ++Count;
        switch (Mode) {
        case MultiColor:
            if (Count == 1)
                FirstColor = Color;
            else
                Stopped = true;
            break;
        case ActualBpp:
            if (Count > 256)
                Stopped = true;
            else
                Seen[Count - 1] = Color;
            break;
        default:
            break;
        }
    }
    // Leave the tables clean for the next call: only the rows handed out were touched.
    std::memset(T.PairRow, 0, sizeof(T.PairRow));
    std::memset(T.GreenSeen[1], 0, static_cast<size_t>(NextRow - 1) * 256);

    switch (Mode) {
    case MultiColor:
        Result = Count >= 2 ? -1 : static_cast<int32_t>(FirstColor);
        break;
    case ActualBpp:
        if (Count > 256) {
            Result = 24;
        } else if (Count == 0) {
            Result = 0;
        } else if (std::all_of(Seen, Seen + Count, [](uint32_t C) { return C == 0 || C == 0xFFFFFF; })) {
            Result = 1;
        } else if (std::all_of(Seen, Seen + Count, [](uint32_t C) {
                       return std::find(std::begin(StandardColors), std::end(StandardColors), C) !=
                              std::end(StandardColors);
                   })) {
            Result = 4;
        } else {
            Result = 8;
        }
        break;
    default:
        Result = Count;
        break;
    }
}

int32_t clsDIB::CountColorsDIB(clsDIB& Dib)
{
    int32_t Result;
    Census(Dib, CountColors, Result);
    return Result;
}

int32_t clsDIB::IsMultiColorDIB(clsDIB& Dib)
{
    int32_t Result;
    Census(Dib, MultiColor, Result);
    return Result;
}

int32_t clsDIB::BPPperActualDIB(clsDIB& Dib)
{
    int32_t Result;
    Census(Dib, ActualBpp, Result);
    return Result;
}
