#pragma once
// The canvas's own images: the tool cursors, the magnifying glass, the Bezier node and the canvas
// grip. Cursors are drawn as SVG (assets/cursors) and rendered at the screen's pixel ratio; the
// glass is drawn in code, aliased, because the canvas reads it pixel by pixel as a mask.
#include <QCursor>
#include <QImage>
#include <QPixmap>
#include <QPoint>
#include <QString>
#include <cstdint>

namespace basCanvasImages {

// The cursor of a canvas operation by its resource name: "PAINT", "ERASE", "FILL", "POLIGON",
// "LINE", "ARC", "BEZIERSTART", "BEZIER", "RECTANGLE", "OVAL", "REGION", "REGIONDRAG", "PASTEDRAG",
// "STAMP", "SPRAY", "REPLACE", "COLORPICKER", "HANDOFF", "HANDON". An unknown name gives the arrow.
// Cursors are 32 x 32 logical pixels with the hotspot where the tool acts; they are made once per
// name and pixel ratio.
QCursor CanvasCursor(const QString& Name);
// The hotspot at 1x; (-1, -1) for an unknown name.
QPoint CursorHotspot(const QString& Name);
// True when the name is a canvas cursor and its picture loads.
bool HasCursor(const QString& Name);

// The magnifying glass, Format_RGB32, GlassWidth x GlassHeight. Three classes of pixels: the key
// colour (the corner pixel) outside the lens, where the picture shows; pure white on the lens face,
// where the magnified view shows; anything else is the rim and handle, drawn as they are. The convex
// glass has the same outline with a thicker, tinted edge inside the rim and a smaller face.
constexpr int GlassWidth = 160;
constexpr int GlassHeight = 120;
QImage GlassImage(bool Convex = false);
// The corner pixel of the glass as 0x00BBGGRR.
uint32_t GlassKeyColor();

// The Bezier node handle (9 x 9) and the canvas edge grip (6 x 6), logical sizes, drawn in device
// pixels so they stay crisp.
constexpr int NodeSize = 9;
constexpr int GripSize = 6;
QPixmap NodePixmap();
QPixmap GripPixmap();

} // namespace basCanvasImages
