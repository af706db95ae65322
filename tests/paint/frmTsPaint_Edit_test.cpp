// Regions, paste and crop through the document's commands, and the histories of two documents.
#include <QClipboard>
#include <QComboBox>
#include <QImage>

#include "PaintTest.h"

namespace {

class EditTest : public PaintTest {
protected:
    // A new white picture with a red block at (10, 10)-(29, 29).
    frmTsPaint* NewPicture(int W = 100, int H = 80)
    {
        basTsMainPro::NewImageWidth = W;
        basTsMainPro::NewImageHeight = H;
        auto* Doc = qobject_cast<frmTsPaint*>(Frame->ShowNewDocument(basTsMainPro::DocOpenFromFileNew, QString()));
        for (int I = 0; I < 5; ++I)
            QApplication::processEvents();
        Doc->Canvas->DIB.DIBhDC()->FillRect(10, 10, 20, 20, Red);
        Doc->Canvas->CanvasPicPaint();
        emit Doc->Canvas->PictureChanged();  // as a tool reports its change
        return Doc;
    }
    static uint32_t At(frmTsPaint* Doc, int X, int Y) { return Doc->Canvas->DIB.DIBhDC()->GetPixel(X, Y) & 0xFFFFFF; }
    static constexpr uint32_t Red = 0x0000FF, Blue = 0xFF0000, White = 0xFFFFFF;
};

} // namespace

TEST_F(EditTest, RegionMovedAndDroppedTakesUndoStates)
{
    frmTsPaint* Doc = NewPicture();
    Frame->imgTools[14]->click();
    ASSERT_EQ(Doc->Canvas->CanvasOp(), ucCanvas::OpRegion);
    Stroke(Doc, QPoint(10, 10), QPoint(30, 30));
    ASSERT_TRUE(Doc->Canvas->HasRegion());
    EXPECT_TRUE(Doc->property("RegionExists").toBool());
    // The marquee option refuses to change under a region.
    const bool Before = Frame->mnuOptionsSub[3]->isChecked();
    Frame->mnuOptionsSub[3]->trigger();
    EXPECT_EQ(Boxes.Texts().back(), "Cannot reset this option when there is a region currently.");
    EXPECT_EQ(Frame->mnuOptionsSub[3]->isChecked(), Before);

    Stroke(Doc, QPoint(15, 15), QPoint(65, 35));  // moved 50 right, 20 down
    EXPECT_EQ(At(Doc, 12, 12), White);  // the old place takes the background colour
    EXPECT_EQ(At(Doc, 62, 32), Red);
    const int States = Doc->History().UndoPos;
    Stroke(Doc, QPoint(5, 75), QPoint(5, 75));  // a click outside drops it
    EXPECT_FALSE(Doc->Canvas->HasRegion());
    EXPECT_EQ(Doc->History().UndoPos, States + 1);
    EXPECT_EQ(At(Doc, 62, 32), Red);
    Frame->cmdEditTB[1]->click();
    EXPECT_EQ(At(Doc, 12, 12), Red);
}

TEST_F(EditTest, PasteEachKindFromTheClipboard)
{
    frmTsPaint* Doc = NewPicture();
    // A 10 x 10 blue square with a white top-left pixel, the key of a transparent paste.
    QImage Image(10, 10, QImage::Format_RGB32);
    Image.fill(QColor(0, 0, 255));
    Image.setPixel(0, 0, qRgb(255, 255, 255));
    QApplication::clipboard()->setImage(Image);

    Doc->mnuEditPaste_Click();
    ASSERT_TRUE(Doc->Canvas->PasteOn());
    EXPECT_EQ(At(Doc, 0, 0), White);  // the pasted top-left pixel itself
    EXPECT_EQ(At(Doc, 5, 5), Blue);
    Doc->Canvas->setPasteOn(false);
    EXPECT_EQ(At(Doc, 5, 5), Blue);

    Doc->Canvas->DIB.DIBhDC()->FillRect(0, 0, 10, 10, Red);
    Doc->mnuEditPasteTransparent_Click();
    EXPECT_EQ(At(Doc, 0, 0), Red);  // the key colour lets the picture through
    EXPECT_EQ(At(Doc, 5, 5), Blue);
    Doc->Canvas->setPasteOn(false);

    Doc->Canvas->DIB.DIBhDC()->FillRect(0, 0, 10, 10, Red);
    Doc->mnuEditPasteTranslucentNotTransparentSub_Click(4);  // 50 percent
    const uint32_t Mixed = At(Doc, 5, 5);
    EXPECT_NEAR(static_cast<int>(Mixed & 0xFF), 127, 2);
    EXPECT_NEAR(static_cast<int>(Mixed >> 16), 127, 2);
    Doc->Canvas->setPasteOn(false);

    // An empty clipboard and an image over the limits are refused; the picture stays.
    QApplication::clipboard()->clear();
    Doc->mnuEditPaste_Click();
    EXPECT_EQ(Boxes.Texts().back(), "Failed to fetch image from clipboard.");
    QApplication::clipboard()->setImage(QImage(10001, 1, QImage::Format_RGB32));
    Doc->mnuEditPaste_Click();
    EXPECT_EQ(Boxes.Texts().back(), "Width or height over 10000");
    EXPECT_FALSE(Doc->Canvas->PasteOn());
}

TEST_F(EditTest, PasteOfALargerImageAsksToEnlarge)
{
    frmTsPaint* Doc = NewPicture(40, 30);
    QImage Image(60, 50, QImage::Format_RGB32);
    Image.fill(QColor(0, 0, 255));
    QApplication::clipboard()->setImage(Image);
    Boxes.Answer(basMsgBox::MsgBoxResult::Yes);
    Doc->mnuEditPaste_Click();
    EXPECT_TRUE(Boxes.Texts().back().startsWith("Incoming image at 60 x 50 is larger than the current"));
    EXPECT_EQ(Doc->Canvas->DIB.DIBWidth(), 60);
    EXPECT_EQ(Doc->Canvas->DIB.DIBHeight(), 50);
    EXPECT_TRUE(Doc->Canvas->PasteOn());
}

TEST_F(EditTest, CropToTheRegionOrRefuseASmallOne)
{
    frmTsPaint* Doc = NewPicture();
    Frame->imgTools[14]->click();
    Stroke(Doc, QPoint(50, 50), QPoint(55, 70));
    Doc->mnuEditCrop_Click();
    EXPECT_EQ(Boxes.Texts().back(), "Size too small to crop.");
    EXPECT_EQ(Doc->Canvas->DIB.DIBWidth(), 100);
    Stroke(Doc, QPoint(90, 5), QPoint(90, 5));  // drop the small one
    Stroke(Doc, QPoint(5, 5), QPoint(35, 25));
    const int States = Doc->History().UndoPos;
    Doc->mnuEditCrop_Click();
    EXPECT_EQ(Doc->Canvas->DIB.DIBWidth(), 30);
    EXPECT_EQ(Doc->Canvas->DIB.DIBHeight(), 20);
    EXPECT_EQ(At(Doc, 5, 5), Red);  // picture (10, 10)
    EXPECT_EQ(Doc->History().UndoPos, States + 1);
    // Undo goes back across the size change.
    Frame->cmdEditTB[1]->click();
    EXPECT_EQ(Doc->Canvas->DIB.DIBWidth(), 100);
}

TEST_F(EditTest, TwoDocumentsKeepTheirStatesApart)
{
    frmTsPaint* First = NewPicture();
    frmTsPaint* Second = NewPicture();
    ASSERT_NE(First, Second);
    EXPECT_NE(First->History().UndoBase, Second->History().UndoBase);
    Frame->imgTools[0]->click();
    Stroke(Second, QPoint(50, 50), QPoint(60, 50));
    EXPECT_EQ(Second->History().UndoPos, 3);
    EXPECT_EQ(First->History().UndoPos, 2);
    EXPECT_TRUE(QFile::exists(First->History().StateFile(1)));
    EXPECT_TRUE(QFile::exists(Second->History().StateFile(2)));
    EXPECT_FALSE(QFile::exists(First->History().StateFile(3)));
}

TEST_F(EditTest, CloseAllAsksOnceForUnsavedPictures)
{
    frmTsPaint* First = NewPicture();
    NewPicture();  // both changed by their red blocks
    ASSERT_TRUE(First->Dirty());
    // An editor session is not started beside two pictures.
    First->mnuIconEditorSub_Click(0);
    EXPECT_EQ(Boxes.Texts().back(), "You have more than one picture windows loaded currently");
    Boxes.Answer(basMsgBox::MsgBoxResult::No);
    First->mnuFileCloseAll_Click();
    EXPECT_EQ(Boxes.Texts().back(), "Changes to one or more files have not been saved yet.\nProceed to close all windows?");
    EXPECT_EQ(Frame->MdiArea->subWindowList().size(), 2);
    const size_t Asked = Boxes.Texts().size();
    Boxes.Answer(basMsgBox::MsgBoxResult::Yes);
    First->mnuFileCloseAll_Click();
    QApplication::processEvents();
    EXPECT_EQ(Boxes.Texts().size(), Asked + 1);  // one question, not one per window
    EXPECT_TRUE(Frame->MdiArea->subWindowList().isEmpty());
}

TEST_F(EditTest, UndoWithALiftedRegionTakesItAwayUnmerged)
{
    frmTsPaint* Doc = NewPicture();
    const int States = Doc->History().UndoPos;
    Frame->imgTools[14]->click();
    Stroke(Doc, QPoint(10, 10), QPoint(30, 30));
    Stroke(Doc, QPoint(15, 15), QPoint(65, 35));
    ASSERT_TRUE(Doc->Canvas->RegionLifted());
    Frame->cmdEditTB[1]->click();
    EXPECT_FALSE(Doc->Canvas->HasRegion());
    EXPECT_EQ(Doc->History().UndoPos, States - 1);  // no state was taken for the region on its way out
    EXPECT_EQ(At(Doc, 62, 32), White);
}

TEST_F(EditTest, ThePicturesOwnPaletteGoesToTheChart)
{
    frmTsPaint* Doc = NewPicture(40, 20);  // white with a red block
    Doc->Canvas->DIB.DIBhDC()->SetPixelV(0, 0, 0x00FF00);
    Doc->do_cmdPalette256Click();
    QFile File(basTsMainPro::ChartPaletteFile);
    ASSERT_TRUE(File.open(QIODevice::ReadOnly));
    const QList<QByteArray> Lines = File.readAll().split('\n');
    ASSERT_EQ(Lines.size(), 3 + 256 + 1);
    EXPECT_EQ(Lines[0], "JASC-PAL\r");
    EXPECT_EQ(Lines[2], "256\r");
    EXPECT_EQ(Lines[3], "0 255 0\r");      // first seen, top left
    EXPECT_EQ(Lines[4], "255 255 255\r");
    EXPECT_EQ(Lines[5], "255 0 0\r");
    EXPECT_EQ(Lines[6], "0 0 0\r");        // the rest is black
    EXPECT_EQ(basTsMainPro::ChartMode, basTsMainPro::ColorChartMode::PictureOwn);
    // A picture of more colours is refused with the advice.
    for (int X = 0; X < 40; ++X)
        for (int Y = 0; Y < 10; ++Y)
            Doc->Canvas->DIB.DIBhDC()->SetPixelV(X, Y, static_cast<uint32_t>(X * 10 + Y));
    Boxes.Answer(basMsgBox::MsgBoxResult::No);
    Doc->do_cmdPalette256Click();
    ASSERT_FALSE(Boxes.Texts().empty());
    EXPECT_EQ(Boxes.Texts().back(), "Current image not of 256 or less colors.   Create new/load existing palette file?\n"
                                    "(To reduce colors of current image, use Color Reduction menu.)");
}

TEST_F(EditTest, ZoomStepsAndItsLimits)
{
    frmTsPaint* Doc = NewPicture(2000, 1500);
    Frame->cmdZoom[0]->click();
    EXPECT_EQ(Doc->Canvas->Magnify(), 2);
    EXPECT_EQ(Frame->cboMagnify->currentIndex(), 1);
    Frame->cmdZoom[0]->click();  // 6000 x 4500 is 27 million pixels
    EXPECT_EQ(Boxes.Texts().back(), "Will result in W x H exceeding the max set (15000000 pixels).");
    EXPECT_EQ(Doc->Canvas->Magnify(), 2);
    Frame->cmdZoom[2]->click();
    EXPECT_EQ(Doc->Canvas->Magnify(), 1);
}
