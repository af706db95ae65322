#pragma once
// A colour table of up to 256 entries, stored blue, green, red, 0. The table and its
// accessors; the recipes that fill it (grey ramps, cubes, octree) build on these.
#include <array>
#include <cstdint>
#include <vector>

class clsPal {
public:
    clsPal() = default;
    ~clsPal() { ClearUp(); }

    // Clears, then sizes the table for 256 zero entries with Size (clamped to 2..256) in use.
    uint8_t* CreateBlankPalette(int16_t Size);
    uint8_t* PalettePtr() { return Table.data(); }
    const uint8_t* PalettePtr() const { return Table.data(); }
    void GetPaletteFromPAL(std::vector<uint8_t>& Bytes) const;
    int32_t MaxCount() const { return Count; }
    void setMaxCount(int32_t Value) { Count = Value; }

    uint8_t rgbR(uint8_t Index) const { return Table[Index * 4 + 2]; }
    uint8_t rgbG(uint8_t Index) const { return Table[Index * 4 + 1]; }
    uint8_t rgbB(uint8_t Index) const { return Table[Index * 4]; }
    void rgbR(uint8_t Index, uint8_t Value) { Table[Index * 4 + 2] = Value; }
    void rgbG(uint8_t Index, uint8_t Value) { Table[Index * 4 + 1] = Value; }
    void rgbB(uint8_t Index, uint8_t Value) { Table[Index * 4] = Value; }

    void ClearUp();

private:
    std::array<uint8_t, 1024> Table{};
    int32_t Count = 0;
};
