#pragma once
// The shape tools' pixel work: rectangles with plain or rounded corners, ovals (also
// antialiased), the arc through three points, the Bezier curve and polygons, on a 32-bit
// surface. Solid areas go through ScanRegion, strokes through the line tool's pen (basLine).
// Every routine returns the box it touched inside the picture, empty when nothing was.
#include <QPoint>
#include <QPointF>
#include <QRect>
#include <array>
#include <cstdint>
#include <vector>

class clsDIB;

namespace basShape {

// Corners in any order; the box holds both corner pixels. CornerShape 0: a frame of BrushSize
// (BitsBrushLine) or, Filled, the solid box. 1, 2, 3: corners rounded with a diameter of 10, 20,
// 30; the outline is the rounded box less the rounded box inset by BrushSize (same corners).
QRect DrawRectangle(clsDIB& Dib, int X1, int Y1, int X2, int Y2, uint32_t Color, int BrushSize, bool Filled,
                    int CornerShape);
// A rectangular frame BrushSize thick, inside the box (both corners included).
QRect BitsBrushLine(clsDIB& Dib, int Left, int Top, int Right, int Bottom, uint32_t Color, int BrushSize);

// The ellipse inscribed in the box (both corners included); the outline is that ellipse less the
// one inset by BrushSize.
QRect DrawOval(clsDIB& Dib, int X1, int Y1, int X2, int Y2, uint32_t Color, int BrushSize, bool Filled);
// The thin antialiased ellipse through the box's edge pixels, added onto what stands there.
QRect DrawOvalAntialiased(clsDIB& Dib, int X1, int Y1, int X2, int Y2, uint32_t Color);

// Centre and radius of the circle through three points; false when they are collinear or two
// of them coincide.
bool ArcFromThreePoints(QPointF P1, QPointF P2, QPointF P3, QPointF& Centre, double& Radius);
// The arc from P1 to P2 through P3 with a round pen of BrushSize; Chord also joins the ends.
// Collinear points give the straight line P1-P2.
QRect DrawArc(clsDIB& Dib, QPoint P1, QPoint P2, QPoint P3, uint32_t Color, int BrushSize, bool Chord);

// The cubic curve through Nodes[0] and Nodes[3], pulled by Nodes[1] and Nodes[2], with a round
// pen of BrushSize. BezierType 1 closes it, fills the inside (alternate rule) with FillColor and
// strokes the closed outline.
QRect DrawBezier(clsDIB& Dib, const std::array<QPoint, 4>& Nodes, uint32_t Color, int BrushSize, int BezierType,
                 uint32_t FillColor);

// The automatic polygon's vertices around the centre, see the source for the geometry.
std::vector<QPoint> PolygonAutoVertices(int CentreX, int CentreY, int NumPoints, int Radius, float ConcaveFactor,
                                        int AngleDegrees);
// OperationType modulo 3: 0 the closed outline with the round brush, 1 filled with Color, 2 the
// inside cleared to BackColor. The filled inside follows the region rule (vertices on pixel
// corners, right and bottom edges excluded).
QRect DrawPolygon(clsDIB& Dib, const std::vector<QPoint>& Points, uint32_t Color, int BrushSize, int OperationType,
                  uint32_t BackColor);

}  // namespace basShape
