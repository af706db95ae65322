#pragma once
// Pictures as rows of characters for the drawing tests, each character one colour of a legend.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "clsDIB.h"

using PixelLegend = std::vector<std::pair<char, uint32_t>>;

// The picture's rows; a colour missing from the legend shows as '?'.
inline std::vector<std::string> MapPixels(clsDIB& Dib, const PixelLegend& Legend)
{
    std::vector<std::string> Rows;
    for (int Y = 0; Y < Dib.DIBHeight(); ++Y) {
        std::string Row;
        for (int X = 0; X < Dib.DIBWidth(); ++X) {
            const uint32_t C = Dib.DIBhDC()->GetPixel(X, Y);
            char Shown = '?';
            for (const auto& [Key, Color] : Legend)
                if (Color == C)
                    Shown = Key;
            Row += Shown;
        }
        Rows.push_back(Row);
    }
    return Rows;
}

// A 32-bit picture drawn from rows; characters missing from the legend are the first entry's colour.
inline void DrawPixels(clsDIB& Dib, const std::vector<std::string>& Rows, const PixelLegend& Legend, bool TopDown)
{
    ASSERT_TRUE(Dib.CreateBlankDIB(static_cast<int>(Rows[0].size()), static_cast<int>(Rows.size()), 32,
                                   Legend.front().second, TopDown));
    for (int Y = 0; Y < static_cast<int>(Rows.size()); ++Y)
        for (int X = 0; X < static_cast<int>(Rows[0].size()); ++X)
            for (const auto& [Key, Color] : Legend)
                if (Key == Rows[Y][X])
                    Dib.DIBhDC()->SetPixelV(X, Y, Color);
}
