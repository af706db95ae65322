#include "clsPal.h"

#include <algorithm>

uint8_t* clsPal::CreateBlankPalette(int16_t Size)
{
    ClearUp();
    Count = std::clamp<int32_t>(Size, 2, 256);
    return Table.data();
}

void clsPal::GetPaletteFromPAL(std::vector<uint8_t>& Bytes) const
{
    Bytes.assign(Table.begin(), Table.end());
}

void clsPal::ClearUp()
{
    Table.fill(0);
    Count = 0;
}
