#pragma once
// The line tool's pixel work: plain, shaped, dashed, arrowed and antialiased lines on a 32-bit
// surface, and the pen that the arc and curve tools share with it.
//
// Coordinates are image pixels, row 0 at the top. The pen is the program's own: it fills the
// pixels whose centres lie inside the pen's outline (the band along the line, with round,
// square or flat ends), row by row and clipped to the picture, so any line costs at most one
// pass over the picture's rows whatever its ends. Across the line the band is half open
// (from -width/2 inclusive to +width/2 exclusive), so a level line of width w covers exactly w
// rows. Every routine returns the box it touched inside the picture, empty when nothing was.
#include <QPoint>
#include <QPointF>
#include <QRect>
#include <cstdint>
#include <vector>

class clsDIB;

namespace basLine {

enum class PenEnds { Round, Square, Flat };

// The pen along one segment, ends A and B included; Width in pixels (at least 1).
QRect DrawPenSegment(clsDIB& Dib, QPointF A, QPointF B, uint32_t Color, double Width, PenEnds Ends);
// The pen along a path of segments with round ends and joins.
QRect DrawPenPath(clsDIB& Dib, const std::vector<QPointF>& Points, uint32_t Color, double Width);

// A plain one-pixel line (brush size 1) including both ends.
QRect DrawPlainLine(clsDIB& Dib, int X1, int Y1, int X2, int Y2, uint32_t Color);

// Types 0 to 4 (others draw nothing); the size is limited to 1..21. Type 0 has round ends,
// type 1 square ends, types 2 to 4 (the pieces of the patterned lines) flat ends. Type 0 with a
// size above 1 adjusts its pen to the angle of the line, see PenWidthForAngle.
QRect DrawLineShaped(clsDIB& Dib, int X1, int Y1, int X2, int Y2, uint32_t Color, int Size, int Type);
// The pen width that DrawLineShaped type 0 uses for a line at AngleDegrees (whole degrees,
// 0..179) with a brush of Size.
double PenWidthForAngle(int AngleDegrees, int Size);

// Types 2 dash, 3 dot, 4 dash dot, 5 dash dot dot (others draw nothing); size limited to 1..21.
// The pattern is measured from (X1, Y1); see the source for its geometry.
QRect DrawDashedLine(clsDIB& Dib, int X1, int Y1, int X2, int Y2, uint32_t Color, int Size, int Type);

struct ArrowBarbs {
    QPoint Tip, Barb1, Barb2;
};
// The arrow head at the end (X2, Y2) of the line, barb ends rounded half to even.
ArrowBarbs ArrowHeadAt(int X1, int Y1, int X2, int Y2, int BrushSize);
// The head at the start (X1, Y1), for lines with arrows at both ends: the same barbs with the
// signs turned round.
ArrowBarbs ArrowHeadAtStart(int X1, int Y1, int X2, int Y2, int BrushSize);
// The two barbs of the head at (X2, Y2), drawn with a round pen of BrushSize.
QRect DrawArrowHead(clsDIB& Dib, int X1, int Y1, int X2, int Y2, uint32_t Color, int BrushSize);

// Antialiased line with the brush fixed at 2.
QRect DrawLineAntialiased(clsDIB& Dib, int X1, int Y1, int X2, int Y2, uint32_t Color);

// The line tool's mouse-up: brush 1 (or less) a plain line, whatever the type; otherwise types
// 0 and 1 shaped, 2 to 5 dashed, 6 solid with an arrow at the end, 7 with arrows at both ends,
// 8 antialiased. Other types draw nothing.
QRect DrawLineTool(clsDIB& Dib, int X1, int Y1, int X2, int Y2, uint32_t Color, int BrushSize, int LineType);

}  // namespace basLine
