#pragma once
// The dabs of the paint, erase, spray and stamp tools: each one writes straight into a 32-bit
// picture and answers the box it touched, in image coordinates and inside the picture (empty when
// nothing was touched). Any point, any size and any surface are accepted: an empty surface or one
// that does not store 32 bits a pixel is left alone. Colours are 0x00BBGGRR; pixels written here
// get the fourth byte 0.
#include <QRect>
#include <cstdint>

class clsDIB;

namespace basBrush {

// Brush style 0 and the eraser: the square whose top left is the point less the whole part of
// Size / 2 and whose far corner is that + Size - 1, clipped to the picture, filled with Color.
QRect BoxDab(clsDIB& Dib, int X, int Y, int Size, uint32_t Color);

// Brush styles 1 to 7 at Percent (0 to 100, others clamped) of Color over what stands there.
// r is Size / 2 rounded, e the edge width (1 under size 3, 2 under 5, 3 under 9, 4 under 13,
// 5 up to 16, 6 above). 1 a disc of offsets i*i + j*j <= r*r; 2 and 3 the forward (/) and
// backward (\) diagonal bars, e diagonals wide; 4 a horizontal bar e rows high; 5 a vertical bar
// e columns wide; 6 a disc full up to 0.8 r whose outer fifth fades out (weight (r - d) / (0.2 r)
// scaled to 0..255 and by Percent, truncated); 7 SprayDab at SprayDensity. Styles 1 and 2 work in
// the box of the point +- r; the others widen it to r + 1 along their direction (3 and 6 both
// ways, 4 left and right, 5 up and down), so the bars of 3, 4 and 5 run one pixel further at each
// end than the disc. A bar of width e covers the offsets -(e / 2) to -(e / 2) + e - 1 across it.
// Translucent pixels take Color * p + old * (1 - p) per byte, truncated. Percent 0 touches nothing.
QRect PaintBrushDab(clsDIB& Dib, int X, int Y, int Size, int Percent, int Style, uint32_t Color, int SprayDensity);

// The spray: offsets i, j from -r to r - 1 with i*i + j*j <= r*r - 1; each such pixel inside the
// picture draws two random numbers in [0, 1) and changes only when both exceed the threshold
// (0.8 for Density 0, 0.6 for 1, 0.4 otherwise). The random source is seeded afresh for every dab.
// The answer is the box of the pixels that were painted.
QRect SprayDab(clsDIB& Dib, int X, int Y, int Size, int Density, int Percent, uint32_t Color);

// The custom brush and the stamp: top left = point less half the brush's size, the mask blitted
// with SRCAND, then the brush with SRCPAINT. An empty brush or mask, or the two of unequal size,
// draws nothing.
QRect CustomBrushDab(clsDIB& Dib, clsDIB& Brush, clsDIB& Mask, int X, int Y);

// A stroke of the custom brush stamps again only once it has moved the brush's width away.
bool CustomDabDue(int LastX, int LastY, int X, int Y, int BrushWidth);

// Makes Mask a 32-bit surface of the brush's size for CustomBrushDab. Shape 0 (oval): mask black
// inside the ellipse inscribed in the brush (pixel centres inside it) and all bits set outside,
// and the brush's own pixels outside the ellipse become 0, so that SRCAND and SRCPAINT leave the
// picture there untouched. The brush is changed for good: going back to the rectangle means
// loading it again. Any other shape (1, rectangle): the mask is black all over and the brush stays.
// False, with nothing changed, when the brush is empty or not 32-bit, or Mask is Brush.
bool MakeCustomBrushMask(clsDIB& Brush, clsDIB& Mask, int CustomBrushShape);

} // namespace basBrush
