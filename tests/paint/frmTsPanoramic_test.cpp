// The panoramic view over a document's canvas: the marked part, scrolling by click and drag, the
// refresh of the picture, and following the active document of the frame.
#include <gtest/gtest.h>

#include <QApplication>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMouseEvent>
#include <QStyle>
#include <QTemporaryDir>

#include <memory>

#include "PictureBox.h"
#include "PixelArray32.h"
#include "basTsMainPro.h"
#include "frmTsMainPro.h"
#include "frmTsPanoramic.h"
#include "ucCanvas.h"

namespace {

// A document window as the view sees it: a widget holding a canvas named "Canvas".
ucCanvas* MakeDocument(QWidget& Document, int Width, int Height, uint32_t Fill)
{
    auto* Canvas = new ucCanvas(&Document);
    Canvas->setObjectName(QStringLiteral("Canvas"));
    // A picture box of 400 x 300 device pixels once both scroll bars show.
    const int Bar = Canvas->style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    Document.resize(402 + Bar, 302 + Bar);
    Canvas->setGeometry(0, 0, 402 + Bar, 302 + Bar);
    clsDIB Picture;
    EXPECT_TRUE(Picture.CreateBlankDIB(Width, Height, 32, Fill, true));
    EXPECT_TRUE(Canvas->SetPicture(Picture));
    return Canvas;
}

class PanoramicTest : public ::testing::Test {
protected:
    QWidget Document;
    ucCanvas* Canvas = nullptr;
    std::unique_ptr<frmTsPanoramic> View;

    void SetUp() override
    {
        // 800 x 600 in a 200 x 150 view: one view pixel for 4 x 4 picture pixels.
        Canvas = MakeDocument(Document, 800, 600, 0xFFFFFF);
        Document.show();
        Canvas->CanvasResize();
        View = std::make_unique<frmTsPanoramic>();
        View->resize(200, 150);
        View->show();
        View->FollowDocument(&Document);
        QApplication::processEvents();
        ASSERT_EQ(View->PictureBox(), QRect(0, 0, 200, 150));
    }

    void Mouse(QEvent::Type Type, QPoint At, Qt::MouseButtons Buttons)
    {
        const Qt::MouseButton Button = Type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent Event(Type, QPointF(At), View->picPanoramic->mapToGlobal(QPointF(At)), Button, Buttons,
                          Qt::NoModifier);
        QApplication::sendEvent(View->picPanoramic, &Event);
    }
    QImage Shown() const { return View->picPanoramic->grab().toImage(); }
};

struct MarkCase {
    int Magnify;
    bool FitIn;
    int ScrollX, ScrollY;
    QRect Visible; // picture pixels the canvas shows
    QRect Mark;    // view pixels marked
};

TEST_F(PanoramicTest, MarkCoversTheVisiblePartAtEveryZoomAndScroll)
{
    const MarkCase Cases[] = {
        {1, false, 0, 0, QRect(QPoint(0, 0), QPoint(399, 299)), QRect(QPoint(0, 0), QPoint(99, 74))},
        {1, false, 100, 60, QRect(QPoint(100, 60), QPoint(499, 359)), QRect(QPoint(25, 15), QPoint(124, 89))},
        {1, false, 9999, 9999, QRect(QPoint(400, 300), QPoint(799, 599)), QRect(QPoint(100, 75), QPoint(199, 149))},
        // Zoom 4: 100 x 75 picture pixels, and a part-shown last row still counts.
        {4, false, 800, 400, QRect(QPoint(200, 100), QPoint(299, 174)), QRect(QPoint(50, 25), QPoint(74, 43))},
        {4, false, 2, 2, QRect(QPoint(0, 0), QPoint(100, 75)), QRect(QPoint(0, 0), QPoint(25, 18))},
        {1, true, 0, 0, QRect(QPoint(0, 0), QPoint(799, 599)), QRect(QPoint(0, 0), QPoint(199, 149))},
    };
    for (const MarkCase& C : Cases) {
        SCOPED_TRACE(testing::Message() << "zoom " << C.Magnify << " fit " << C.FitIn << " scroll " << C.ScrollX);
        // As the document zooms: no view event, only the canvas repainting at the new zoom.
        Canvas->setMagnify(static_cast<int16_t>(C.Magnify));
        Canvas->setFitInView(C.FitIn);
        Canvas->CanvasResize();
        if (!C.FitIn)
            Canvas->SetScrollValues(C.ScrollX, C.ScrollY, true, true);
        QApplication::processEvents();
        int X1, Y1, X2, Y2;
        Canvas->GetVisibleInfo(X1, Y1, X2, Y2);
        ASSERT_EQ(QRect(QPoint(X1, Y1), QPoint(X2, Y2)), C.Visible);
        EXPECT_EQ(View->MarkBox(), C.Mark);
        const QImage Image = Shown();
        EXPECT_EQ(Image.pixel(C.Mark.topLeft()), frmTsPanoramic::MarkColor);
        EXPECT_EQ(Image.pixel(C.Mark.bottomRight()), frmTsPanoramic::MarkColor);
        EXPECT_EQ(Image.pixel(C.Mark.center()), qRgb(255, 255, 255));
    }
}

struct ClickCase {
    int Magnify;
    QPoint Press, Release;
    int ScrollX, ScrollY;
};

TEST_F(PanoramicTest, ClickAndDragBringThePointToTheMiddleOfTheCanvas)
{
    const ClickCase Cases[] = {
        // View (100, 75) is picture (400, 300): its middle, 801 at zoom 2, less half the box.
        {2, QPoint(100, 75), QPoint(100, 75), 601, 451},
        {2, QPoint(100, 75), QPoint(150, 100), 1001, 651},
        {1, QPoint(10, 10), QPoint(10, 10), 0, 0},
        {1, QPoint(199, 149), QPoint(199, 149), 400, 300},
        {4, QPoint(50, 40), QPoint(50, 40), 602, 492},
    };
    for (const ClickCase& C : Cases) {
        SCOPED_TRACE(testing::Message() << "zoom " << C.Magnify << " to " << C.Release.x() << "," << C.Release.y());
        Canvas->setMagnify(static_cast<int16_t>(C.Magnify));
        Canvas->CanvasResize();
        Canvas->SetScrollValues(0, 0);
        Mouse(QEvent::MouseButtonPress, C.Press, Qt::LeftButton);
        if (C.Release != C.Press)
            Mouse(QEvent::MouseMove, C.Release, Qt::LeftButton);
        Mouse(QEvent::MouseButtonRelease, C.Release, Qt::NoButton);
        int X = -1, Y = -1;
        Canvas->GetScrollValues(X, Y);
        EXPECT_EQ(X, C.ScrollX);
        EXPECT_EQ(Y, C.ScrollY);
        // The mark has moved with the canvas.
        int X1, Y1, X2, Y2;
        Canvas->GetVisibleInfo(X1, Y1, X2, Y2);
        EXPECT_EQ(View->MarkBox().topLeft(), QPoint(X1 / 4, Y1 / 4));
    }
    // A move without the button pressed does not scroll.
    Canvas->SetScrollValues(0, 0);
    Mouse(QEvent::MouseMove, QPoint(150, 100), Qt::NoButton);
    int X = -1, Y = -1;
    Canvas->GetScrollValues(X, Y);
    EXPECT_EQ(QPoint(X, Y), QPoint(0, 0));
}

TEST_F(PanoramicTest, RefreshPictureShowsTheChangedPicture)
{
    const QImage Before = Shown();
    ASSERT_EQ(Before.pixel(100, 75), qRgb(255, 255, 255));
    {
        // Picture pixels 400..407 x 300..307 become view pixels 100..101 x 75..76.
        PixelArray32 Pixels(Canvas->DIB);
        for (int Y = 300; Y < 308; ++Y)
            for (int X = 400; X < 408; ++X)
                Pixels.At(X, Y) = PixelArray32::ToWord(0xFF0000);
    }
    EXPECT_EQ(Shown().pixel(100, 75), qRgb(255, 255, 255)) << "the picture is copied only when it changed";
    QMetaObject::invokeMethod(View.get(), "RefreshPicture");
    const QImage After = Shown();
    EXPECT_EQ(After.pixel(100, 75), qRgb(0, 0, 255));
    EXPECT_EQ(After.pixel(101, 76), qRgb(0, 0, 255));
    EXPECT_EQ(After.pixel(102, 77), qRgb(255, 255, 255));

    // A picture of another shape takes another box: 300 x 600 stands 75 wide in the middle.
    clsDIB Tall;
    ASSERT_TRUE(Tall.CreateBlankDIB(300, 600, 32, 0x000000, true));
    ASSERT_TRUE(Canvas->SetPicture(Tall));
    Canvas->CanvasResize();
    View->RefreshPicture();
    EXPECT_EQ(View->PictureBox(), QRect(62, 0, 75, 150));
    EXPECT_EQ(Shown().pixel(100, 100), qRgb(0, 0, 0));
}

TEST(PanoramicFrameTest, FollowsTheActiveDocumentAndClosesWithTheToolWindows)
{
    QTemporaryDir AppDir;
    basTsMainPro::SetAppFolder(AppDir.path());
    frmTsPanoramic::Register();
    {
        frmTsMainPro Frame;
        Frame.resize(1000, 700);
        Frame.show();
        auto* Wide = new QWidget;
        auto* Tall = new QWidget;
        ucCanvas* WideCanvas = MakeDocument(*Wide, 800, 400, 0xFFFFFF);
        ucCanvas* TallCanvas = MakeDocument(*Tall, 200, 400, 0xFFFFFF);
        QMdiSubWindow* WideSub = Frame.MdiArea->addSubWindow(Wide);
        QMdiSubWindow* TallSub = Frame.MdiArea->addSubWindow(Tall);
        WideSub->show();
        TallSub->show();
        Frame.MdiArea->setActiveSubWindow(WideSub);
        QApplication::processEvents();

        auto* View = qobject_cast<frmTsPanoramic*>(basTsMainPro::CreateForm(QStringLiteral("frmTsPanoramic")));
        ASSERT_NE(View, nullptr);
        View->show();
        QApplication::processEvents();
        EXPECT_EQ(View->Canvas(), WideCanvas);
        EXPECT_TRUE(View->isWindow());
        EXPECT_EQ(View->parentWidget(), &Frame);
        // Asking again gives the open view.
        EXPECT_EQ(basTsMainPro::CreateForm(QStringLiteral("frmTsPanoramic")), View);

        Frame.MdiArea->setActiveSubWindow(TallSub);
        QApplication::processEvents();
        EXPECT_EQ(View->Canvas(), TallCanvas);
        EXPECT_EQ(View->PictureBox().width() * 2, View->PictureBox().height());

        QPointer<frmTsPanoramic> Guard(View);
        basTsMainPro::CloseToolWindows();
        QApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_TRUE(Guard.isNull());
        EXPECT_FALSE(basTsMainPro::IsFormLoaded(QStringLiteral("frmTsPanoramic")));
        Frame.MdiArea->closeAllSubWindows();
    }
    basTsMainPro::RegisterFormFactory(QStringLiteral("frmTsPanoramic"), nullptr);
    basTsMainPro::SetAppFolder(QString());
}

} // namespace
