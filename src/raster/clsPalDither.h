#pragma once
// Packed pixel rows of 1, 4 or 8 bits, bottom-up as a BMP wants them: the table that the
// reduction routines fill and the file writers take as pixel data.
#include <cstdint>
#include <vector>

class clsPalDither {
public:
    // Sizes the table to Height rows of (BPP * Width + 31) / 32 * 4 zero bytes.
    uint8_t* CreateBlankPaletteTable(int32_t Width, int32_t Height, uint8_t BPP);
    std::vector<uint8_t> TableEntry() const { return Table; }
    const std::vector<uint8_t>& TableRef() const { return Table; }
    uint8_t* TableEntryPtr() { return Table.empty() ? nullptr : Table.data(); }
    int32_t TableStride() const { return Stride; }

private:
    std::vector<uint8_t> Table;
    int32_t Stride = 0;
};
