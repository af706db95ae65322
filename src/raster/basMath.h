#pragma once
// One rounding for the whole program: to nearest, ties to even.
#include <cmath>
#include <cstdint>

inline int32_t RoundHalfEven(double Value)
{
    return static_cast<int32_t>(std::nearbyint(Value));
}

// Colour values are 0x00BBGGRR, red in the low byte.
inline uint8_t ColorR(uint32_t Color) { return static_cast<uint8_t>(Color & 255); }
inline uint8_t ColorG(uint32_t Color) { return static_cast<uint8_t>((Color >> 8) & 255); }
inline uint8_t ColorB(uint32_t Color) { return static_cast<uint8_t>((Color >> 16) & 255); }
inline uint32_t RGBColor(uint32_t R, uint32_t G, uint32_t B) { return (R & 255) | ((G & 255) << 8) | ((B & 255) << 16); }
