// Icons, cursors, TGA and PCX in the paint document: files of the test suites opened as the
// picture, refusals in the document's words, TGA and PCX saved and read back, and a picture or
// its region saved as an icon or cursor through frmTsFileSaveICOorCUR driven by real clicks.
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include "PaintTest.h"
#include "basIconCursor.h"
#include "basMath.h"
#include "frmTsFileSaveICOorCUR.h"

namespace {

const QString Data = QStringLiteral(TESSAVO_TESTDATA "/");

class PaintIcons : public PaintTest {
protected:
    void TearDown() override
    {
        frmTsFileSaveICOorCUR::Answer = nullptr;
        PaintTest::TearDown();
    }

    frmTsPaint* NewPicture(int W, int H)
    {
        basTsMainPro::NewImageWidth = W;
        basTsMainPro::NewImageHeight = H;
        auto* Doc = qobject_cast<frmTsPaint*>(Frame->ShowNewDocument(basTsMainPro::DocOpenFromFileNew, QString()));
        for (int I = 0; I < 5; ++I)
            QApplication::processEvents();
        return Doc;
    }

    void Trigger(frmTsPaint* Doc, const char* Entry)
    {
        QAction* Action = Doc->findChild<QAction*>(QString::fromLatin1(Entry));
        ASSERT_NE(Action, nullptr) << Entry;
        ASSERT_TRUE(Action->isEnabled()) << Entry;
        Action->trigger();
    }
};

TEST_F(PaintIcons, OpensIconsCursorsTgaAndPcxAndRefusesBadOnesInItsOwnWords)
{
    const struct {
        const char* File;
        int Width, Height;  // 0: refused
        const char* Message;
    } Cases[] = {
        {"ico-cur/mozilla-ico-bmp-8bpp/ico-size-16x16-8bpp.ico", 16, 16, nullptr},
        {"ico-cur/pillow/deerstalker.cur", 32, 32, nullptr},
        {"tga/truevision/ctc24.tga", 128, 128, nullptr},
        {"pcx/gfxprim/ver3_0_palette_8bpp_10x10_white.pcx", 10, 10, nullptr},
        {"ico-cur/mozilla-ico-png/ico-size-4x4-png.ico", 0, 0,
         "Invalid icon file or icon not a size of\n the allowable limit."},
        {"ico-cur/mozilla-cur/pointer.cur", 0, 0, nullptr},  // an icon file named .cur
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(C.File);
        const QString Path = Data + C.File;
        ASSERT_TRUE(QFile::exists(Path));
        Boxes.Clear();
        frmTsPaint* Doc = OpenThroughMenu(Path);
        if (C.Width == 0) {
            ASSERT_FALSE(Boxes.Texts().empty());
            EXPECT_EQ(Boxes.Texts().back(), C.Message ? QString(C.Message) : QStringLiteral("Invalid cursor file"));
            continue;
        }
        ASSERT_NE(Doc, nullptr);
        EXPECT_TRUE(Boxes.Texts().empty());
        EXPECT_EQ(Doc->Canvas->DIB.DIBWidth(), C.Width);
        EXPECT_EQ(Doc->Canvas->DIB.DIBHeight(), C.Height);
    }
}

TEST_F(PaintIcons, TgaAndPcxSaveAndReadBackTheSamePixels)
{
    for (const char* Entry : {"mnuFileSaveTGASub", "mnuFileSavePCXSub"}) {
        SCOPED_TRACE(Entry);
        frmTsPaint* Doc = NewPicture(13, 7);  // odd width: PCX pads its lines, TGA does not
        ASSERT_NE(Doc, nullptr);
        for (int Y = 0; Y < 7; ++Y)
            for (int X = 0; X < 13; ++X)
                Doc->Canvas->DIB.DIBhDC()->SetPixelV(X, Y, RGBColor(X * 19, Y * 36, 200 - X * 3));
        const std::vector<uint32_t> Expected = Pixels(Doc->Canvas->DIB);
        const bool Pcx = QString(Entry).contains("PCX");
        const QString Target = Files.filePath(Pcx ? "saved" : "saved.tga");
        Dialogs.Answer(Target);
        Trigger(Doc, Entry);
        const QString Written = Pcx ? Target + ".pcx" : Target;
        EXPECT_EQ(Dialogs.Calls().back().Filter, Pcx ? "(*.pcx)|*.pcx|" : "(*.tga)|*.tga|");
        ASSERT_TRUE(QFile::exists(Written));
        EXPECT_FALSE(Doc->Dirty());
        // Save keeps the format.
        QFile::remove(Written);
        Doc->mnuFileSave_Click();
        ASSERT_TRUE(QFile::exists(Written));
        frmTsPaint* Back = OpenThroughMenu(Written);
        ASSERT_NE(Back, nullptr);
        EXPECT_EQ(Pixels(Back->Canvas->DIB), Expected);
    }
}

TEST_F(PaintIcons, SavesTheRegionAsAnIconWithThePickedColourTransparent)
{
    frmTsPaint* Doc = NewPicture(60, 40);
    ASSERT_NE(Doc, nullptr);
    // A red square on white, and a region drawn around the square's top-left 16 x 16.
    Doc->Canvas->DIB.DIBhDC()->FillRect(10, 10, 12, 12, 0x0000FF);
    Frame->imgTools[14]->click();
    Stroke(Doc, QPoint(6, 6), QPoint(22, 22));
    ASSERT_TRUE(Doc->Canvas->HasRegion());
    const QRect Box = Doc->Canvas->RegionImageBox();

    const QString Target = Files.filePath("region");
    bool Shown = false;
    frmTsFileSaveICOorCUR::Answer = [&](frmTsFileSaveICOorCUR& Dialog) {
        Shown = true;
        EXPECT_EQ(Dialog.windowTitle(), "Save as Icon");
        Dialog.cboIconSize->setCurrentIndex(Dialog.cboIconSize->findText("16 x 16"));
        EXPECT_EQ(Dialog.lblColorDepth->text(), "Color depth:   4 BPP   16-color");  // red and white
        // Proceed with no name first.
        Dialog.cmdProceed->click();
        // A left click on a white pixel of the magnified picture makes white transparent.
        QTest::mouseClick(Dialog.picMagnified, Qt::LeftButton, {}, QPoint(1, 1));
        EXPECT_TRUE(Dialog.ckbUseTransparent->isChecked());
        EXPECT_EQ(Dialog.TransparentColor(), 0xFFFFFFu);
        Dialog.txtFileSpec->setText(Target);
        Dialog.cmdProceed->click();
        return true;
    };
    Boxes.Answer(basMsgBox::MsgBoxResult::Yes);  // import the region
    Trigger(Doc, "mnuFileSaveICOSub");
    ASSERT_TRUE(Shown);
    const std::vector<QString> Texts = Boxes.Texts();
    ASSERT_EQ(Texts.size(), 3u);
    EXPECT_EQ(Texts[0], "Currently there is a region drawn.  Import the region?\n(Otherwise whole picture)");
    EXPECT_EQ(Texts[1], "No file specification yet");
    EXPECT_EQ(Texts[2], "Saved to " + Target + ".ico");

    // Read back by the icon editor's own reader: the region picked down to 16 x 16, white gone.
    clsDIB Image, Mask, Expected;
    Array2D<uint8_t> Alpha;
    ASSERT_TRUE(basIconCursor::LoadIconFileToPictures(QFile::encodeName(Target + ".ico").toStdString(), 0, Image,
                                                      Mask, Alpha));
    ASSERT_EQ(Image.DIBWidth(), 16);
    ASSERT_TRUE(Expected.CreateBlankDIB(16, 16, 32, 0, true));
    SetStretchBltMode(Expected.DIBhDC(), COLORONCOLOR);
    StretchBlt(Expected.DIBhDC(), 0, 0, 16, 16, Doc->Canvas->DIB.DIBhDC(), Box.x(), Box.y(), Box.width(),
               Box.height(), SRCCOPY);
    int RedPixels = 0;
    for (int Y = 0; Y < 16; ++Y)
        for (int X = 0; X < 16; ++X) {
            const bool Red = Expected.DIBhDC()->GetPixel(X, Y) == 0x0000FFu;
            RedPixels += Red;
            ASSERT_EQ(Mask.DIBhDC()->GetPixel(X, Y), Red ? 0x000000u : 0xFFFFFFu) << X << "," << Y;
            ASSERT_EQ(Image.DIBhDC()->GetPixel(X, Y), Red ? 0x0000FFu : 0x000000u) << X << "," << Y;
        }
    EXPECT_GT(RedPixels, 60);
    EXPECT_LT(RedPixels, 256);
}

TEST_F(PaintIcons, SavesACursorWithTheHotspotClickedAndRefusesAReadOnlyFile)
{
    frmTsPaint* Doc = NewPicture(40, 40);
    ASSERT_NE(Doc, nullptr);
    Doc->Canvas->DIB.DIBhDC()->FillRect(0, 0, 20, 40, 0xFF0000);
    const QString Target = Files.filePath("arrow.cur");
    QFile ReadOnly(Files.filePath("locked.cur"));
    ASSERT_TRUE(ReadOnly.open(QIODevice::WriteOnly));
    ReadOnly.close();
    ReadOnly.setPermissions(QFileDevice::ReadOwner);
    frmTsFileSaveICOorCUR::Answer = [&](frmTsFileSaveICOorCUR& Dialog) {
        EXPECT_EQ(Dialog.windowTitle(), "Save as Cursor");
        EXPECT_FALSE(Dialog.cboIconSize->isVisible());
        // A right click on the magnified picture (8 screen pixels a cursor pixel) sets the hotspot.
        QTest::mouseClick(Dialog.picMagnified, Qt::RightButton, {}, QPoint(5 * 8 + 3, 9 * 8 + 1));
        EXPECT_EQ(Dialog.Hotspot(), QPoint(5, 9));
        Dialog.txtFileSpec->setText(ReadOnly.fileName());
        Dialog.cmdProceed->click();
        Dialog.txtFileSpec->setText(Target);
        Dialog.cmdProceed->click();
        return true;
    };
    Trigger(Doc, "mnuFileSaveCURSub");
    ASSERT_EQ(Boxes.Texts().size(), 2u);
    EXPECT_EQ(Boxes.Texts()[0], "File is read only.");
    EXPECT_EQ(Boxes.Texts()[1], "Saved to " + Target);
    EXPECT_EQ(basIconCursor::ReadCursorFileStatus(QFile::encodeName(Target).toStdString()), "1/16/4");
    clsDIB Image, Mask;
    Array2D<uint8_t> Alpha;
    int16_t HotX = -1, HotY = -1;
    ASSERT_TRUE(basIconCursor::LoadCursorFileToPictures(QFile::encodeName(Target).toStdString(), Image, Mask, Alpha,
                                                        HotX, HotY));
    EXPECT_EQ(HotX, 5);
    EXPECT_EQ(HotY, 9);
    EXPECT_EQ(Image.DIBhDC()->GetPixel(3, 3), 0xFF0000u);
    EXPECT_EQ(Image.DIBhDC()->GetPixel(30, 3), 0xFFFFFFu);
}

} // namespace
