#include <gtest/gtest.h>

#include "CanvasGeometry.h"
#include "clsDIB.h"

TEST(CanvasGeometry, AxisMappingAtZoomAndScroll)
{
    struct Case {
        int Picture, Disp, Magnify, Scroll, ScrollMax;
        int First, DestStart, SourceCount;
    };
    const Case Cases[] = {
        {100, 50, 3, 7, 250, 2, -1, 17},     // 3 x 7: column 2 starts one pixel left of the box
        {100, 50, 1, 30, 50, 30, 0, 50},     // zoom 1: a straight window
        {100, 50, 4, 398, 350, 87, -2, 13},  // scroll clamped to its maximum, the last columns
        {20, 60, 3, 0, 0, 0, 0, 20},         // no overhang: every column from 0
    };
    for (const Case& C : Cases) {
        const AxisMapping A = ComputeAxisMapping(C.Picture, C.Disp, C.Magnify, C.Scroll, C.ScrollMax);
        EXPECT_EQ(A.First, C.First) << C.Magnify << " " << C.Scroll;
        EXPECT_EQ(A.DestStart, C.DestStart) << C.Magnify << " " << C.Scroll;
        EXPECT_EQ(A.SourceCount, C.SourceCount) << C.Magnify << " " << C.Scroll;
        // The columns drawn always reach the far edge of the box, or the picture's end.
        EXPECT_TRUE(A.DestStart + A.SourceCount * C.Magnify >= C.Disp || A.First + A.SourceCount == C.Picture);
    }
}

TEST(CanvasGeometry, DisplayAndPictureMapBothWays)
{
    // Zoom 3 scrolled by 7: display 0 lies in column 2 (its second display pixel).
    EXPECT_EQ(DisplayToPicture(0, 100, 50, 3, 7, false), 2);
    EXPECT_EQ(DisplayToPicture(1, 100, 50, 3, 7, false), 2);
    EXPECT_EQ(DisplayToPicture(2, 100, 50, 3, 7, false), 3);
    EXPECT_EQ(DisplayToPicture(-8, 100, 50, 3, 7, false), -1);
    EXPECT_EQ(PictureToDisplay(3, 100, 50, 3, 7, false), 2);
    // Fitted 400 into 100: the nearest-pixel rule of the stretch, and back to the first pixel.
    EXPECT_EQ(DisplayToPicture(0, 400, 100, 1, 0, true), 2);
    EXPECT_EQ(DisplayToPicture(99, 400, 100, 1, 0, true), 398);
    for (int D = 0; D < 100; ++D) {
        const int I = DisplayToPicture(D, 400, 100, 1, 0, true);
        EXPECT_LE(PictureToDisplay(I, 400, 100, 1, 0, true), D);
        EXPECT_GT(PictureToDisplay(I + 1, 400, 100, 1, 0, true), D);
    }
}

TEST(CanvasGeometry, LayoutCentresOrScrolls)
{
    clsDIB Dib;
    ASSERT_TRUE(Dib.CreateBlankDIB(100, 50, 32, 0xFFFFFF, true));
    // Fits: centred, no bars.
    CanvasLayout L = ComputeCanvasLayout(Dib, 1, false, false, 300, 200, 15);
    EXPECT_FALSE(L.HBar || L.VBar);
    EXPECT_EQ(L.Disp, QRect(100, 75, 100, 50));
    // Zoom 3 overhangs across only; the bar takes height, the height still fits.
    L = ComputeCanvasLayout(Dib, 3, false, false, 300, 200, 15);
    EXPECT_TRUE(L.HBar);
    EXPECT_FALSE(L.VBar);
    EXPECT_EQ(L.Disp, QRect(1, (185 - 150) / 2, 298, 150));
    EXPECT_EQ(L.ScrollMaxX, 300 - 298);
    // A bar that shows can bring the other one: 400 x 200 fits across only without the upright bar.
    L = ComputeCanvasLayout(Dib, 4, false, false, 410, 200, 15);
    EXPECT_TRUE(L.HBar && L.VBar);
    EXPECT_EQ(L.ScrollMaxX, 400 - (410 - 15 - 2));
    EXPECT_EQ(L.ScrollMaxY, 200 - (200 - 15 - 2));
    // Fit-in: no bars, the best-fit box, left and top at least 1.
    L = ComputeCanvasLayout(Dib, 4, true, true, 302, 202, 15);
    EXPECT_FALSE(L.HBar || L.VBar);
    EXPECT_EQ(L.Disp, QRect(1, 25, 300, 150));
}
