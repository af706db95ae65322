#pragma once
// What the PNG tests share: pixels as alpha << 24 | 0x00BBGGRR, and the reader's bitmap read
// back through its depth, row layout and colour table.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "basMath.h"
#include "clsPNG.h"

namespace PNGTestSupport {

inline uint32_t Pixel(uint32_t R, uint32_t G, uint32_t B, uint32_t A = 255)
{
    return RGBColor(R, G, B) | (A << 24);
}

// The decoded bitmap read back through its depth, row layout and colour table.
inline std::vector<uint32_t> Pixels(const clsPNG& Png)
{
    const size_t W = Png.Width(), H = Png.Height(), Bits = Png.WorkingDepth();
    const std::vector<uint8_t>& Rows = Png.BitmapRows();
    const std::vector<uint8_t>& Table = Png.BitmapPalette();
    const size_t Stride = (W * Bits + 31) / 32 * 4;
    if (Bits == 0 || Rows.size() < Stride * H)
        return {};
    std::vector<uint32_t> Out;
    for (size_t Y = 0; Y < H; ++Y) {
        const uint8_t* Row = &Rows[(Bits == 32 ? H - 1 - Y : Y) * Stride];
        for (size_t X = 0; X < W; ++X) {
            if (Bits >= 24) {
                const uint8_t* Px = Row + X * Bits / 8;
                Out.push_back(Pixel(Px[2], Px[1], Px[0], Bits == 32 ? Px[3] : 255));
                continue;
            }
            const size_t Index = (Row[X * Bits / 8] >> (8 - Bits - X * Bits % 8)) & ((1u << Bits) - 1);
            if (Index * 3 + 2 >= Table.size())
                return {};
            Out.push_back(Pixel(Table[Index * 3], Table[Index * 3 + 1], Table[Index * 3 + 2]));
        }
    }
    return Out;
}

inline testing::AssertionResult SamePixels(const std::vector<uint32_t>& Got, const std::vector<uint32_t>& Want)
{
    if (Got.size() != Want.size())
        return testing::AssertionFailure() << Got.size() << " pixels, expected " << Want.size();
    for (size_t I = 0; I < Got.size(); ++I)
        if (Got[I] != Want[I])
            return testing::AssertionFailure() << "pixel " << I << ": " << std::hex << Got[I] << ", expected " << Want[I];
    return testing::AssertionSuccess();
}

} // namespace PNGTestSupport
