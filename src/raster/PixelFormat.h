#pragma once
// Reading and writing one pixel of a row in a context's own storage. A "native" value is
// what the storage holds: a table index for depths up to 8, a 5-5-5 word for 16 bits, and
// the quad 0xAARRGGBB (bytes blue, green, red, alpha) for 24 and 32 bits.
#include <cstdint>
#include <cstring>

namespace PixelFormat {

inline uint32_t ReadNative(const uint8_t* Row, int X, int Bpp)
{
    switch (Bpp) {
    case 1: return (Row[X >> 3] >> (7 - (X & 7))) & 1;
    case 4: return (X & 1) ? (Row[X >> 1] & 0x0F) : (Row[X >> 1] >> 4);
    case 8: return Row[X];
    case 16: return static_cast<uint32_t>(Row[X * 2]) | (static_cast<uint32_t>(Row[X * 2 + 1]) << 8);
    case 24: {
        const uint8_t* P = Row + X * 3;
        return static_cast<uint32_t>(P[0]) | (static_cast<uint32_t>(P[1]) << 8) | (static_cast<uint32_t>(P[2]) << 16);
    }
    default: {
        uint32_t V;
        std::memcpy(&V, Row + X * 4, 4);
        return V;
    }
    }
}

inline void WriteNative(uint8_t* Row, int X, int Bpp, uint32_t Value)
{
    switch (Bpp) {
    case 1: {
        const uint8_t Bit = static_cast<uint8_t>(0x80 >> (X & 7));
        if (Value & 1)
            Row[X >> 3] |= Bit;
        else
            Row[X >> 3] &= static_cast<uint8_t>(~Bit);
        break;
    }
    case 4:
        if (X & 1)
            Row[X >> 1] = static_cast<uint8_t>((Row[X >> 1] & 0xF0) | (Value & 0x0F));
        else
            Row[X >> 1] = static_cast<uint8_t>((Row[X >> 1] & 0x0F) | ((Value & 0x0F) << 4));
        break;
    case 8: Row[X] = static_cast<uint8_t>(Value); break;
    case 16:
        Row[X * 2] = static_cast<uint8_t>(Value);
        Row[X * 2 + 1] = static_cast<uint8_t>(Value >> 8);
        break;
    case 24: {
        uint8_t* P = Row + X * 3;
        P[0] = static_cast<uint8_t>(Value);
        P[1] = static_cast<uint8_t>(Value >> 8);
        P[2] = static_cast<uint8_t>(Value >> 16);
        break;
    }
    default: std::memcpy(Row + X * 4, &Value, 4); break;
    }
}

// 5-5-5 to a quad: each five bits widened by repeating their top bits, so white stays white.
inline uint32_t QuadFrom555(uint32_t Word)
{
    const uint32_t R = (Word >> 10) & 31, G = (Word >> 5) & 31, B = Word & 31;
    return (((R << 3) | (R >> 2)) << 16) | (((G << 3) | (G >> 2)) << 8) | ((B << 3) | (B >> 2));
}

inline uint32_t QuadTo555(uint32_t Quad)
{
    return (((Quad >> 19) & 31) << 10) | (((Quad >> 11) & 31) << 5) | ((Quad >> 3) & 31);
}

} // namespace PixelFormat
