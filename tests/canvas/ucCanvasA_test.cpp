#include <gtest/gtest.h>

#include <QApplication>
#include <QMouseEvent>
#include <QScrollBar>
#include <QSignalSpy>

#include "PictureBox.h"
#include "ucCanvasA.h"

TEST(ucCanvasA, ShowsScrollsAndReportsWithoutTools)
{
    ucCanvasA View;
    View.resize(200, 150);
    View.show();
    clsDIB Picture;
    ASSERT_TRUE(Picture.CreateBlankDIB(300, 200, 24, 0xFFFFFF, false));
    Picture.DIBhDC()->SetPixelV(299, 199, 0x00FF00);
    ASSERT_TRUE(View.SetPicture(Picture));
    View.setMagnify(2);
    View.CanvasResize();
    EXPECT_TRUE(View.HsbDisp->isVisible());
    EXPECT_EQ(View.DIB_XY_Color(299, 199), 0x00FF00u);
    EXPECT_EQ(View.DIB_XY_Color(300, 0), CLR_INVALID);
    View.SetScrollValues(1000000, 1000000);
    int X = 0, Y = 0, MaxX = 0, MaxY = 0;
    View.GetScrollValues(X, Y);
    View.GetScrollMaxInfo(MaxX, MaxY);
    EXPECT_EQ(QPoint(X, Y), QPoint(MaxX, MaxY));
    // The bottom right pixel shows in the bottom right corner of the box.
    const QImage& Shown = View.picDisp->Image;
    EXPECT_EQ(Shown.pixel(Shown.width() - 1, Shown.height() - 1) & 0xFFFFFF, 0x00FF00u);
    // A click is a report, never a change; the right button reports when asked to.
    View.setToReportRightClickDataInScrollMode(true);
    QSignalSpy Right(&View, &ucCanvasA::RightClickInScrollMode);
    QMouseEvent Press(QEvent::MouseButtonPress, QPointF(Shown.width() - 1, Shown.height() - 1), QPointF(),
                      Qt::RightButton, Qt::RightButton, Qt::NoModifier);
    QApplication::sendEvent(View.picDisp, &Press);
    ASSERT_EQ(Right.count(), 1);
    EXPECT_EQ(Right.at(0).at(0).toInt(), 299);
    EXPECT_EQ(Right.at(0).at(2).toUInt(), 0x00FF00u);
    View.CanvasCleanse();
    EXPECT_EQ(View.Magnify(), 1);
    View.GetScrollValues(X, Y);
    EXPECT_EQ(QPoint(X, Y), QPoint(0, 0));
    EXPECT_EQ(View.DIB_XY_Color(299, 199), 0x00FF00u);
}
