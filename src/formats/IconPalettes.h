#pragma once
// The fixed colour tables of icons and cursors: black and white for 1 bit, and the sixteen
// static colours for 4 bits, in index order. Both the general icon reader and the icon
// editor's file routines use them, so a 4-bit icon means the same colours everywhere.
#include <array>
#include <cstdint>
#include <vector>

namespace IconPalettes {

// Colour values, 0x00BBGGRR.
inline constexpr std::array<uint32_t, 2> Palette2 = {0x000000, 0xFFFFFF};

inline constexpr std::array<uint32_t, 16> Palette16 = {
    0x000000,  // black
    0x000080,  // maroon
    0x008000,  // green
    0x008080,  // olive
    0x800000,  // navy
    0x800080,  // purple
    0x808000,  // teal
    0xC0C0C0,  // silver
    0x808080,  // grey
    0x0000FF,  // red
    0x00FF00,  // lime
    0x00FFFF,  // yellow
    0xFF0000,  // blue
    0xFF00FF,  // magenta
    0xFFFF00,  // cyan
    0xFFFFFF,  // white
};

// A colour table as it lies in a file: blue, green, red, 0 for each entry.
template <size_t N>
std::vector<uint8_t> TableBytes(const std::array<uint32_t, N>& Colors)
{
    std::vector<uint8_t> Bytes;
    Bytes.reserve(N * 4);
    for (const uint32_t Color : Colors) {
        Bytes.push_back(static_cast<uint8_t>(Color >> 16));
        Bytes.push_back(static_cast<uint8_t>(Color >> 8));
        Bytes.push_back(static_cast<uint8_t>(Color));
        Bytes.push_back(0);
    }
    return Bytes;
}

// Index of a colour in the 16-colour table by exact comparison, -1 when it is not there.
inline int IndexIn16(uint32_t Color)
{
    for (size_t I = 0; I < Palette16.size(); ++I)
        if (Palette16[I] == (Color & 0xFFFFFF))
            return static_cast<int>(I);
    return -1;
}

} // namespace IconPalettes
