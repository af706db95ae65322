#pragma once
// Pictures as lists of 0x00BBGGRR colours, top row first, for comparing a reader of ours with
// ImageMagick's.
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "clsDIB.h"

namespace PixelCompare {

using Pixels = std::vector<uint32_t>;

// ImageMagick's picture as 8-bit red, green, blue samples; Options go before the output.
inline Pixels ImageMagick(const std::string& File, const std::string& Options = "")
{
    FILE* Pipe = popen(("convert '" + File + "' " + Options + " -depth 8 rgb:- 2>/dev/null").c_str(), "r");
    Pixels Out;
    for (uint8_t P[3]; Pipe && fread(P, 1, 3, Pipe) == 3;)
        Out.push_back(P[0] | P[1] << 8 | P[2] << 16);
    if (Pipe)
        pclose(Pipe);
    return Out;
}

inline Pixels Ours(clsDIB& Dib)
{
    Pixels Out;
    for (int Y = 0; Y < Dib.DIBHeight(); ++Y)
        for (int X = 0; X < Dib.DIBWidth(); ++X)
            Out.push_back(Dib.DIBhDC()->GetPixel(X, Y));
    return Out;
}

} // namespace PixelCompare
