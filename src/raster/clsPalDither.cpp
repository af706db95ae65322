#include "clsPalDither.h"

#include <cstddef>

uint8_t* clsPalDither::CreateBlankPaletteTable(int32_t Width, int32_t Height, uint8_t BPP)
{
    Table.clear();
    Stride = 0;
    if (Width <= 0 || Height <= 0)
        return nullptr;
    Stride = static_cast<int32_t>((static_cast<int64_t>(BPP) * Width + 31) / 32 * 4);
    Table.assign(static_cast<size_t>(Stride) * Height, 0);
    return Table.data();
}
