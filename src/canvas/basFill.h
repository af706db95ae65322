#pragma once
// The fill tool and replace colour: the brushes the fill paints with, the program's own scanline
// flood fill (the meaning of FLOODFILLSURFACE), and the replacement of one exact colour. Each
// routine writes straight into a 32-bit picture and answers the box it touched, inside the picture
// (empty when nothing was touched). Pixels compare by their colour bytes alone.
#include <QRect>
#include <cstdint>
#include <vector>

class clsDIB;

namespace basFill {

// A fill brush: a tile of stored pixel words (PixelArray32::ToWord), repeated from the picture's
// origin, so that pixel (x, y) takes tile pixel (x mod TileWidth, y mod TileHeight).
struct FillBrush {
    std::vector<uint32_t> Tile;
    int TileWidth = 1;
    int TileHeight = 1;
};

// The brush of a FillPattern. 0: solid ColorToUse. 1 and 2: the two 8 by 8 dot tiles (1 sparse,
// two dots a tile; 2 denser, eight), dots in ColorToUse and the rest in the flooded colour.
// 3 to 8: the 8 by 8 hatches horizontal, vertical, forward diagonal (/), backward diagonal (\),
// cross and diagonal cross, one-pixel lines in ColorToUse on the flooded colour. 9: the custom
// pattern surface tiled as it stands (any depth). False when pattern 9 has no surface or no bits,
// or the pattern number is unknown: then there is nothing to fill with.
bool MakeFillBrush(int FillPattern, uint32_t ColorToUse, uint32_t FloodedColor, clsDIB* CustomPattern,
                   FillBrush& Brush);

// Paints with the brush every pixel of FloodedColor that is 4-connected to (X, Y) through pixels
// of that colour. A start outside the picture or on another colour does nothing. A brush that
// paints the flooded colour itself (a solid fill of the same colour, the gaps of a hatch) is safe:
// every run of the area is filled once.
QRect ExtFloodFill(clsDIB& Dib, int X, int Y, uint32_t FloodedColor, const FillBrush& Brush);

// Every pixel of exactly the colour Old becomes New. The answer is the box of those pixels.
QRect ReplaceColor(clsDIB& Dib, uint32_t Old, uint32_t New);

} // namespace basFill
