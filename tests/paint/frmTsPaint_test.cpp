// The paint document driven as a user drives it: the frame's menus and toolbox, scripted file
// dialogs and message boxes, mouse strokes on the canvas, and the files it leaves behind.
#include <QComboBox>
#include <QDataStream>
#include <QRadioButton>

#include "PaintTest.h"
#include "frmTsFileSaveGIForPNG.h"

#include <QCheckBox>


TEST_F(PaintTest, OpenPaintUndoRedoSaveAndReopen)
{
    frmTsPaint* Doc = OpenThroughMenu(Suite + "rgb24.bmp");
    ASSERT_NE(Doc, nullptr);
    ASSERT_EQ(Doc->Canvas->DIB.DIBWidth(), 127);
    EXPECT_EQ(Doc->windowTitle(), basTsMainPro::ShortenPathForDisplay(Suite + "rgb24.bmp", 80));
    EXPECT_EQ(Doc->History().UndoPos, 1);
    EXPECT_TRUE(QFile::exists(Doc->History().UndoBase + "001.m_Temp"));
    const std::vector<uint32_t> Opened = Pixels(Doc->Canvas->DIB);

    // The paint tool from the toolbox, a stroke with the mouse.
    Frame->imgTools[0]->click();
    EXPECT_EQ(Doc->Canvas->CanvasOp(), ucCanvas::OpPaint);
    Stroke(Doc, QPoint(10, 10), QPoint(60, 30));
    const std::vector<uint32_t> Painted = Pixels(Doc->Canvas->DIB);
    EXPECT_NE(Painted, Opened);
    EXPECT_EQ(Doc->Canvas->DIB.DIBhDC()->GetPixel(10, 10), 0x0000FFu);
    EXPECT_TRUE(Doc->Dirty());
    EXPECT_EQ(Doc->History().UndoPos, 2);

    Frame->cmdEditTB[1]->click();  // undo
    EXPECT_EQ(Pixels(Doc->Canvas->DIB), Opened);
    Frame->cmdEditTB[2]->click();  // redo
    EXPECT_EQ(Pixels(Doc->Canvas->DIB), Painted);
    Boxes.Answer(basMsgBox::MsgBoxResult::Yes);
    Frame->cmdEditTB[0]->click();  // undo all
    EXPECT_EQ(Boxes.Texts().back(), "There will not be Redo after Undo All.  Sure to Undo All?");
    EXPECT_EQ(Pixels(Doc->Canvas->DIB), Opened);
    EXPECT_FALSE(Frame->cmdEditTB[2]->isEnabled());

    // Painted again and saved as BMP; the file opens to the same pixels.
    Stroke(Doc, QPoint(5, 50), QPoint(100, 50));
    const std::vector<uint32_t> Saved = Pixels(Doc->Canvas->DIB);
    const QString Target = Files.filePath("painted.bmp");
    Dialogs.Answer(Target);
    ASSERT_TRUE(Doc->SaveAsBMP());
    EXPECT_FALSE(Doc->Dirty());
    EXPECT_EQ(Doc->windowTitle(), basTsMainPro::ShortenPathForDisplay(Target, 80));
    frmTsPaint* Again = OpenThroughMenu(Target);
    ASSERT_NE(Again, nullptr);
    ASSERT_NE(Again, Doc);
    EXPECT_EQ(Pixels(Again->Canvas->DIB), Saved);
}

TEST_F(PaintTest, ClosingADirtyPictureAsksAndTheStatesGoWithIt)
{
    frmTsPaint* Doc = OpenThroughMenu(Suite + "rgb24.bmp");
    ASSERT_NE(Doc, nullptr);
    Frame->imgTools[0]->click();
    Stroke(Doc, QPoint(10, 10), QPoint(20, 10));
    const QString First = Doc->History().StateFile(1);
    ASSERT_TRUE(QFile::exists(First));
    Boxes.Answer(basMsgBox::MsgBoxResult::No);
    Doc->mnuFileClose_Click();
    QApplication::processEvents();
    EXPECT_EQ(Boxes.Texts().back(), "Current picture not saved yet.  Proceed still?");
    EXPECT_EQ(Frame->ActiveChild(), Doc);
    Boxes.Answer(basMsgBox::MsgBoxResult::Yes);
    Doc->mnuFileClose_Click();
    QApplication::processEvents();
    EXPECT_FALSE(QFile::exists(First));
    EXPECT_TRUE(Frame->MdiArea->subWindowList().isEmpty());
}

TEST_F(PaintTest, LoadOpenFileRefusesWithItsMessages)
{
    // A new white picture, as File New makes once its size is chosen.
    basTsMainPro::NewImageWidth = 40;
    basTsMainPro::NewImageHeight = 30;
    auto* Doc = qobject_cast<frmTsPaint*>(Frame->ShowNewDocument(basTsMainPro::DocOpenFromFileNew, QString()));
    QApplication::processEvents();
    ASSERT_NE(Doc, nullptr);
    EXPECT_EQ(Doc->windowTitle(), "Untitled:1");
    EXPECT_EQ(Doc->Canvas->DIB.DIBWidth(), 40);
    const std::vector<uint32_t> Before = Pixels(Doc->Canvas->DIB);
    QFile::copy(Suite + "rgb24.bmp", Files.filePath("noext"));
    QFile::copy(Suite + "rgb24.bmp", Files.filePath("a.gif"));
    QFile::copy(Suite + "rgb24.bmp", Files.filePath("a.ani"));
    QFile::copy(Suite + "rgb24.bmp", Files.filePath("a.dll"));
    QFile Broken(Files.filePath("broken.bmp"));
    ASSERT_TRUE(Broken.open(QIODevice::WriteOnly));
    Broken.write("BM not a picture");
    Broken.close();
    const std::pair<QString, QString> Cases[] = {
        {Files.filePath("missing.bmp"), "File not found"},
        {Files.filePath("noext"), "No file extension"},
        {Files.filePath("a.gif"), "Failed to retrieve incoming image"},
        {Files.filePath("broken.bmp"), "Failed to retrieve incoming image"},
        {Files.filePath("a.ani"), "Please use Icon Editor main program (To extract icons from ANI file, select Extract\n"
                                  "main menu.  To edit ANI, select Animation main menu)"},
        {Files.filePath("a.dll"), "Please use Icon Editor main program (To extract icons, select Extract main menu)"},
    };
    for (const auto& [Path, Message] : Cases) {
        Doc->LoadOpenFile(Path, basTsMainPro::DocOpenFromFileOpen);
        EXPECT_EQ(Boxes.Texts().back(), Message) << Path.toStdString();
        EXPECT_EQ(Pixels(Doc->Canvas->DIB), Before);
    }
    // A new picture has no format yet.
    Doc->mnuFileSave_Click();
    EXPECT_EQ(Boxes.Texts().back(), "This is a newly created, please choose a graphics format to save.");
}

TEST_F(PaintTest, TooLargeOrUnsavableFilesAreRefused)
{
    frmTsPaint* Doc = OpenThroughMenu(Suite + "rgb24.bmp");
    ASSERT_NE(Doc, nullptr);
    // A 1-bit BMP of 4000 x 4000, 16 million pixels: past the 15 million the editor takes.
    const QString Big = Files.filePath("big.bmp");
    {
        const quint32 Rows = 500 * 4000, Offset = 14 + 40 + 8;
        QByteArray Bmp;
        QDataStream Out(&Bmp, QIODevice::WriteOnly);
        Out.setByteOrder(QDataStream::LittleEndian);
        Out << quint8('B') << quint8('M') << quint32(Offset + Rows) << quint32(0) << Offset;
        Out << quint32(40) << qint32(4000) << qint32(4000) << quint16(1) << quint16(1) << quint32(0) << Rows
            << qint32(2835) << qint32(2835) << quint32(2) << quint32(2);
        Out << quint32(0) << quint32(0xFFFFFF);
        Bmp.append(QByteArray(Rows, '\xFF'));
        QFile File(Big);
        ASSERT_TRUE(File.open(QIODevice::WriteOnly));
        File.write(Bmp);
    }
    Doc->LoadOpenFile(Big, basTsMainPro::DocOpenFromFileOpen);
    EXPECT_EQ(Boxes.Texts().back(), "Incoming image exceeds max size allowed.");
    EXPECT_EQ(Doc->Canvas->DIB.DIBWidth(), 127);

    // A read-only target, and a target that cannot be written at all.
    const QString Locked = Files.filePath("locked.bmp");
    QFile::copy(Suite + "rgb24.bmp", Locked);
    QFile::setPermissions(Locked, QFile::ReadOwner);
    Dialogs.Answer(Locked);
    EXPECT_FALSE(Doc->SaveAsBMP());
    EXPECT_EQ(Boxes.Texts().back(), "File is read only.");
    Dialogs.Answer(Files.filePath("no/such/folder/x.bmp"));
    EXPECT_FALSE(Doc->SaveAsBMP());
    EXPECT_EQ(Boxes.Texts().back(), "Failed to save this file.");
    EXPECT_EQ(Dialogs.Calls().back().Filter, "(*.bmp)|*.bmp|");
}

TEST_F(PaintTest, SingleDocumentModeOpensIntoTheSameWindow)
{
    frmTsPaint* Doc = OpenThroughMenu(Suite + "rgb24.bmp");
    ASSERT_NE(Doc, nullptr);
    basTsMainPro::SDIOnly = true;
    Dialogs.Answer(Suite + "pal8.bmp");
    Frame->cmdFileOpen->click();
    QApplication::processEvents();
    basTsMainPro::SDIOnly = false;
    EXPECT_EQ(Frame->MdiArea->subWindowList().size(), 1);
    EXPECT_EQ(Frame->ActiveChild(), Doc);
    EXPECT_EQ(Doc->FilePath, Suite + "pal8.bmp");
    EXPECT_EQ(Doc->History().UndoPos, 1);  // a new history for the new picture
    // In the usual mode a second window opens.
    Dialogs.Answer(Suite + "rgb24.bmp");
    Frame->cmdFileOpen->click();
    for (int I = 0; I < 5; ++I)
        QApplication::processEvents();
    EXPECT_EQ(Frame->MdiArea->subWindowList().size(), 2);
}

TEST_F(PaintTest, OptionsReachTheCanvasAndRefuseWhatIsNotLoaded)
{
    frmTsPaint* Doc = OpenThroughMenu(Suite + "rgb24.bmp");
    ASSERT_NE(Doc, nullptr);
    Frame->cboBrushSize->setCurrentIndex(6);
    Frame->cboBrushSize->activated(6);
    EXPECT_EQ(Doc->Canvas->BrushSize, 7);
    Frame->optLineType[5]->click();
    EXPECT_EQ(Doc->Canvas->LineType, 5);
    // A polygon under way is taken back by any option change.
    Frame->imgTools[3]->click();
    Frame->optPolygonDrawMethod[1]->click();
    Stroke(Doc, QPoint(10, 10), QPoint(10, 10));
    Stroke(Doc, QPoint(40, 10), QPoint(40, 10));
    ASSERT_TRUE(Doc->Canvas->PolygonInProgress());
    Frame->optRectangleCornerShape[2]->click();
    EXPECT_FALSE(Doc->Canvas->PolygonInProgress());
    // Style 8 and pattern 9 need what was loaded for them.
    Frame->optBrushStyle[8]->click();
    EXPECT_EQ(Boxes.Texts().back(), "No custom brush loaded yet.\n(To load a custom brush, click the Button).");
    EXPECT_EQ(Doc->Canvas->BrushStyle, 0);
    EXPECT_TRUE(Frame->optBrushStyle[0]->isChecked());
    Frame->optFillPattern[9]->click();
    EXPECT_EQ(Boxes.Texts().back(), "No custom Pattern loaded yet.\n(To load a custom Pattern, click the Button).");
    EXPECT_EQ(Doc->Canvas->FillPattern, 0);
}

TEST_F(PaintTest, GifOpensItsFirstFrameAndAPictureSavesAsGif)
{
    basTsMainPro::NewImageWidth = 30;
    basTsMainPro::NewImageHeight = 20;
    auto* Doc = qobject_cast<frmTsPaint*>(Frame->ShowNewDocument(basTsMainPro::DocOpenFromFileNew, QString()));
    for (int I = 0; I < 5; ++I)
        QApplication::processEvents();
    ASSERT_NE(Doc, nullptr);
    Doc->Canvas->DIB.DIBhDC()->FillRect(5, 5, 10, 6, 0x0000FF);
    const std::vector<uint32_t> Painted = Pixels(Doc->Canvas->DIB);
    const QString Target = Files.filePath("saved.gif");

    // Neither transparent nor interlaced: asked first, and No saves nothing.
    frmTsFileSaveGIForPNG::Answer = [](frmTsFileSaveGIForPNG&) { return true; };
    Boxes.Answer(basMsgBox::MsgBoxResult::No);
    EXPECT_FALSE(Doc->SaveAsGIF(Target));
    EXPECT_EQ(Boxes.Texts().back(), "Non-transparent and non-interlaced.   Proceed?");
    EXPECT_FALSE(QFile::exists(Target));

    frmTsFileSaveGIForPNG::Answer = [](frmTsFileSaveGIForPNG& Options) {
        Options.ckbGIFinterlaced->setChecked(true);
        return true;
    };
    EXPECT_TRUE(Doc->SaveAsGIF(Target));
    frmTsFileSaveGIForPNG::Answer = nullptr;
    EXPECT_EQ(Boxes.Texts().back(), "Saved to " + Target);
    EXPECT_FALSE(QFile::exists(basTsMainPro::TempFolder + "xxGIF256.bmp"));
    EXPECT_EQ(Doc->windowTitle(), basTsMainPro::ShortenPathForDisplay(Target, 80));

    // Two colours survive the palette exactly; the file opens to the same picture.
    frmTsPaint* Again = OpenThroughMenu(Target);
    ASSERT_NE(Again, nullptr);
    EXPECT_EQ(Pixels(Again->Canvas->DIB), Painted);
}
