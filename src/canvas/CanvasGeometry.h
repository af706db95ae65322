#pragma once
// The arithmetic of the canvas view, apart from any window: where the picture box stands in the
// control, which scroll bars show, how far they scroll, and how display pixels map to picture
// pixels at an integer zoom or fitted to the window.
#include <QRect>

class clsDIB;

struct CanvasLayout {
    bool HBar = false;
    bool VBar = false;
    int InnerWidth = 0;   // the control less the bars that show
    int InnerHeight = 0;
    QRect Disp;           // the picture box inside the control
    int ScrollMaxX = 0;   // the overhang, in display pixels
    int ScrollMaxY = 0;
};

// Scroll bars show only where Magnify x the picture exceeds the inner size less the 2-pixel
// margin; a bar that shows narrows the other side, so the test runs twice. In fit-in mode no bar
// shows and the picture box takes the best-fit rectangle, its left and top at least 1.
CanvasLayout ComputeCanvasLayout(clsDIB& Dib, int Magnify, bool FitIn, bool FitEvenIfSmaller, int ControlWidth,
                                 int ControlHeight, int BarThickness);

// One axis of the stretch from the picture into the picture box.
struct AxisMapping {
    int First = 0;        // first picture column (row) shown: Scroll / Magnify, truncated
    int SourceCount = 0;  // picture columns drawn
    int DestStart = 0;    // display position of the first column: -(Scroll mod Magnify)
    int DestCount = 0;    // display pixels they cover
};

// With no overhang the whole axis is drawn from 0. Otherwise the first column is Scroll / Magnify
// and it starts Scroll mod Magnify pixels left of the box. As many columns are taken as reach
// the far edge of the box (one more than the box's width / Magnify when the start is cut), so no
// stale strip is left at the right or bottom.
AxisMapping ComputeAxisMapping(int PictureSize, int DispSize, int Magnify, int Scroll, int ScrollMax);

// Picture column under display pixel D of the box, and the display pixel where picture column I
// starts. At an integer zoom: (D + Scroll) / Magnify, floored; fitted: the nearest-pixel rule of
// the stretch, (2D + 1) x picture / (2 x box), floored.
int DisplayToPicture(int D, int PictureSize, int DispSize, int Magnify, int Scroll, bool FitIn);
int PictureToDisplay(int I, int PictureSize, int DispSize, int Magnify, int Scroll, bool FitIn);
