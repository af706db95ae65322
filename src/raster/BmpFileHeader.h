#pragma once
// The 54 bytes in front of every BMP file the program writes: the file header and a
// BITMAPINFOHEADER, little-endian.
#include <cstdint>
#include <vector>

inline void PutLE16(std::vector<uint8_t>& Out, uint32_t Value)
{
    Out.push_back(static_cast<uint8_t>(Value));
    Out.push_back(static_cast<uint8_t>(Value >> 8));
}

inline void PutLE32(std::vector<uint8_t>& Out, uint32_t Value)
{
    PutLE16(Out, Value & 0xFFFF);
    PutLE16(Out, Value >> 16);
}

// TableBytes of colour table and PixelBytes of rows follow. The surface writers leave the 14
// bytes of the file header out of the file size field, as the program has always written it;
// CountFileHeader gives the true size.
inline std::vector<uint8_t> BmpFileHeaders(int32_t Width, int32_t Height, int BitCount, uint32_t TableBytes,
                                           uint32_t PixelBytes, bool CountFileHeader)
{
    std::vector<uint8_t> Out;
    Out.reserve(54 + TableBytes);
    Out.push_back('B');
    Out.push_back('M');
    PutLE32(Out, (CountFileHeader ? 54 : 40) + TableBytes + PixelBytes);
    PutLE32(Out, 0);
    PutLE32(Out, 54 + TableBytes);
    PutLE32(Out, 40);
    PutLE32(Out, static_cast<uint32_t>(Width));
    PutLE32(Out, static_cast<uint32_t>(Height));
    PutLE16(Out, 1);
    PutLE16(Out, static_cast<uint32_t>(BitCount));
    for (int I = 0; I < 6; ++I)
        PutLE32(Out, 0);
    return Out;
}
