#pragma once
// The program's own regions, in place of the platform's region calls: a shape held as sorted,
// disjoint spans of pixels for each row. Building, subtracting and filling are exact and cost
// time in proportion to the rows, whatever the shape.
//
// Like the platform's regions, boxes exclude their right and bottom edges, and a pixel belongs
// to a shape when its centre lies inside. Rows outside 0..32767 are dropped: regions are only
// filled on pictures, whose rows start at 0 and never reach that far, and the limit keeps a
// region built from absurd coordinates at a bounded size. Columns are held to +-2^24.
#include <QPoint>
#include <QPointF>
#include <QRect>
#include <cstdint>
#include <vector>

class clsDIB;

class ScanRegion {
public:
    static constexpr int MaxRows = 32768;
    // Polygons with more vertices than this are refused (empty region).
    static constexpr size_t MaxPolygonPoints = 100000;

    ScanRegion() = default;

    static ScanRegion Rect(int Left, int Top, int Right, int Bottom);
    // The ellipse inscribed in the box.
    static ScanRegion Ellipse(int Left, int Top, int Right, int Bottom);
    // The box with its corners rounded by quarter ellipses CornerWidth wide and CornerHeight high.
    static ScanRegion RoundRect(int Left, int Top, int Right, int Bottom, int CornerWidth, int CornerHeight);
    // Even-odd (alternate) fill; vertices lie on pixel corners, so the square (0,0)-(10,0)-(10,10)-(0,10)
    // holds exactly the pixels 0..9 by 0..9.
    static ScanRegion Polygon(const std::vector<QPoint>& Points);
    // The same for real vertices, in the same corner coordinates.
    static ScanRegion PolygonF(const std::vector<QPointF>& Points);

    void Subtract(const ScanRegion& Other);
    bool Contains(int X, int Y) const;
    bool IsEmpty() const;
    QRect Bounds() const;
    // Solid colour over every pixel of the region inside the picture; the touched box.
    QRect Fill(clsDIB& Dib, uint32_t Color) const;

private:
    struct Span {
        int Left;
        int Right;  // exclusive
    };
    // Rows Top .. Top + rows - 1; row R's spans are Spans[RowStart[R - Top] .. RowStart[R - Top + 1]).
    int Top = 0;
    std::vector<uint32_t> RowStart;
    std::vector<Span> Spans;

    // The box with corner ellipses of the given diameters, cut to the box's size.
    static ScanRegion RoundBox(int Left, int Top, int Right, int Bottom, double CornerWidth, double CornerHeight);
    int RowCount() const { return RowStart.empty() ? 0 : static_cast<int>(RowStart.size()) - 1; }
    // Starts an empty region over rows [First, Last), clipped to the allowed rows; Rows is how
    // many rows the caller is to build.
    static ScanRegion Begin(double First, double Last, int& Rows);
    // Adds one span to the row being built (rows are built in order; call EndRow after each).
    void AddSpan(int Left, int Right);
    void EndRow() { RowStart.push_back(static_cast<uint32_t>(Spans.size())); }
    // Pixels whose centre x + 0.5 lies in [XLeft, XRight] (with a small tolerance), as one span.
    void AddCentreSpan(double XLeft, double XRight);
};
