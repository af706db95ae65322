// PNG in the paint document: the three kinds of the Save As menu read back by libpng, the save
// options' chunks and alpha, the refusals before anything is written, and PNG files opened as
// the picture.
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QRadioButton>
#include <QTest>

#include "PaintTest.h"
#include "basMath.h"
#include "cli/PngReadBack.h"
#include "clsPNG.h"
#include "frmTsFileSaveGIForPNG.h"

namespace {

const QString PngSuite = QStringLiteral(TESSAVO_TESTDATA "/pngsuite/png/");

class PaintPNG : public PaintTest {
protected:
    void TearDown() override
    {
        frmTsFileSaveGIForPNG::Answer = nullptr;
        basTsMainPro::SetZlibAvailableForTest(true);
        basTsMainPro::GdiPlusAvailable = GdiPlusWas;
        PaintTest::TearDown();
    }

    // A new white picture with a red and a blue box: three colours.
    frmTsPaint* NewPicture(int W = 30, int H = 20)
    {
        basTsMainPro::NewImageWidth = W;
        basTsMainPro::NewImageHeight = H;
        auto* Doc = qobject_cast<frmTsPaint*>(Frame->ShowNewDocument(basTsMainPro::DocOpenFromFileNew, QString()));
        for (int I = 0; I < 5; ++I)
            QApplication::processEvents();
        if (Doc) {
            Doc->Canvas->DIB.DIBhDC()->FillRect(2, 3, 10, 6, 0x0000FF);
            Doc->Canvas->DIB.DIBhDC()->FillRect(15, 8, 9, 9, 0xFF0000);
        }
        return Doc;
    }

    // Chooses a Save As PNG entry, answering the file dialog with Target (none when empty) and the
    // options with Set.
    void SaveThroughMenu(frmTsPaint* Doc, const char* Entry, const QString& Target,
                         std::function<void(frmTsFileSaveGIForPNG&)> Set = {})
    {
        if (!Target.isEmpty())
            Dialogs.Answer(Target);
        OptionsShown = 0;
        frmTsFileSaveGIForPNG::Answer = [this, Set](frmTsFileSaveGIForPNG& Options) {
            ++OptionsShown;
            if (Set)
                Set(Options);
            return true;
        };
        QAction* Action = Doc->findChild<QAction*>(QString::fromLatin1(Entry));
        ASSERT_NE(Action, nullptr) << Entry;
        Action->trigger();
        frmTsFileSaveGIForPNG::Answer = nullptr;
    }

    // The picture as libpng's red, green, blue bytes with alpha 255.
    static std::vector<uint8_t> Opaque(clsDIB& Dib)
    {
        std::vector<uint8_t> Rgba;
        for (uint32_t C : Pixels(Dib))
            Rgba.insert(Rgba.end(), {uint8_t(C), uint8_t(C >> 8), uint8_t(C >> 16), 255});
        return Rgba;
    }

    int OptionsShown = 0;
    bool GdiPlusWas = basTsMainPro::GdiPlusAvailable;
};

QByteArray ReadAll(const QString& Name)
{
    QFile F(Name);
    return F.open(QIODevice::ReadOnly) ? F.readAll() : QByteArray();
}

// The six bytes the writer gives a colour in tRNS and bKGD.
QByteArray SixBytes(uint32_t Color)
{
    return QByteArray::fromRawData("\0", 1) + char(Color & 255) + '\0' + char((Color >> 8) & 255) + '\0' +
           char((Color >> 16) & 255);
}

} // namespace

TEST_F(PaintPNG, EachKindWritesItsColourTypeWithThePicturesPixels)
{
    const struct {
        const char* Entry;
        bool ManyColours;
        int ColorType;
    } Cases[] = {
        {"mnuFileSavePNG24", false, 2},
        {"mnuFileSavePNGOptimized", false, 3},
        {"mnuFileSavePNGOptimized", true, 2},
        {"mnuFileSavePNG8", false, 3},
    };
    int N = 0;
    for (const auto& C : Cases) {
        SCOPED_TRACE(std::string(C.Entry) + (C.ManyColours ? " many colours" : ""));
        frmTsPaint* Doc = NewPicture(31, 20);  // odd width: the writer's even work surface is cut back
        ASSERT_NE(Doc, nullptr);
        if (C.ManyColours)
            for (int Y = 0; Y < 20; ++Y)
                for (int X = 0; X < 31; ++X)
                    Doc->Canvas->DIB.DIBhDC()->SetPixelV(X, Y, RGBColor(X * 8, Y * 12, 255 - X - Y));
        const std::vector<uint8_t> Expected = Opaque(Doc->Canvas->DIB);
        // The name typed without its extension gets one; no option ticked asks first (Yes).
        const QString Name = Files.filePath(QString("kind%1").arg(++N));
        SaveThroughMenu(Doc, C.Entry, Name);
        const QString Target = Name + ".png";
        EXPECT_EQ(Dialogs.Calls().back().Filter, "(*.png)|*.png|");
        EXPECT_EQ(OptionsShown, 1);
        ASSERT_GE(Boxes.Texts().size(), 2u);
        EXPECT_EQ(Boxes.Texts().end()[-2], "No particular setting to be made.   Proceed?");
        EXPECT_EQ(Boxes.Texts().back(), "Saved to " + Target);
        EXPECT_EQ(Doc->windowTitle(), basTsMainPro::ShortenPathForDisplay(Target, 80));
        EXPECT_FALSE(QFile::exists(basTsMainPro::TempFolder + "xxGIF256.bmp"));

        PngReadBack Back;
        ASSERT_TRUE(ReadPngBack(Target, Back));
        EXPECT_EQ(Back.ColorType, C.ColorType);
        EXPECT_EQ(Back.BitDepth, 8);
        EXPECT_EQ(Back.Width, 31);
        EXPECT_EQ(Back.Height, 20);
        EXPECT_EQ(Back.Rgba, Expected);
        const std::vector<PngChunk> Chunks = PngChunks(ReadAll(Target));
        EXPECT_EQ(FindChunk(Chunks, "tRNS"), nullptr);
        EXPECT_EQ(FindChunk(Chunks, "bKGD"), nullptr);
    }
}

TEST_F(PaintPNG, TransparencyAndBackgroundOptionsGoIntoTheFile)
{
    const struct {
        const char* Entry;
        bool AlphaValues;
        bool Background;
        int ColorType;
        bool TransparentChunk;
        int PickedAlpha;  // as libpng reads the picked colour's pixels; -1: not checked
    } Cases[] = {
        {"mnuFileSavePNG24", false, true, 2, true, 0},
        {"mnuFileSavePNG24", true, false, 6, false, 76},  // 30 % of 255 = 76.5, to even
        {"mnuFileSavePNG8", true, true, 3, true, -1},     // paletted: the single colour instead
    };
    int N = 0;
    for (const auto& C : Cases) {
        SCOPED_TRACE(std::string(C.Entry) + (C.AlphaValues ? " alpha values" : " single colour"));
        frmTsPaint* Doc = NewPicture();
        ASSERT_NE(Doc, nullptr);
        const QString Target = Files.filePath(QString("options%1.png").arg(++N));
        SaveThroughMenu(Doc, C.Entry, Target, [&C](frmTsFileSaveGIForPNG& Options) {
            // A right click on a red pixel picks the colour and ticks transparency.
            QTest::mouseClick(Options.picImage, Qt::RightButton, Qt::KeyboardModifiers(), QPoint(4, 5));
            if (C.AlphaValues) {
                Options.optTransparency[1]->click();
                Options.cboPNGalphaValue->setCurrentIndex(Options.cboPNGalphaValue->findText("30"));
            }
            Options.ckbPNGSetBgdColorChunk->setChecked(C.Background);
        });
        EXPECT_EQ(Boxes.Texts().back(), "Saved to " + Target);  // options ticked: no question
        const std::vector<PngChunk> Chunks = PngChunks(ReadAll(Target));
        const PngChunk* Trns = FindChunk(Chunks, "tRNS");
        const PngChunk* Bkgd = FindChunk(Chunks, "bKGD");
        ASSERT_EQ(Trns != nullptr, C.TransparentChunk);
        ASSERT_EQ(Bkgd != nullptr, C.Background);
        if (Trns) {
            EXPECT_EQ(Trns->Data, SixBytes(0x0000FF));
        }
        if (Bkgd) {
            EXPECT_EQ(Bkgd->Data, SixBytes(0x0000FF));
        }
        PngReadBack Back;
        ASSERT_TRUE(ReadPngBack(Target, Back));
        EXPECT_EQ(Back.ColorType, C.ColorType);
        const std::vector<uint32_t> Picture = Pixels(Doc->Canvas->DIB);
        for (size_t I = 0; I < Picture.size(); ++I) {
            for (int K = 0; K < 3; ++K)
                ASSERT_EQ(Back.Rgba[I * 4 + K], uint8_t(Picture[I] >> (8 * K))) << I;
            if (C.PickedAlpha >= 0) {
                ASSERT_EQ(Back.Rgba[I * 4 + 3], Picture[I] == 0x0000FF ? C.PickedAlpha : 255) << I;
            }
        }
    }
}

TEST_F(PaintPNG, NothingIsWrittenWhenRefusedOrDeclined)
{
    frmTsPaint* Doc = NewPicture();
    ASSERT_NE(Doc, nullptr);
    const QString Target = Files.filePath("refused.png");

    // Without zlib: told before any dialog, in words that depend on the picture loader.
    basTsMainPro::SetZlibAvailableForTest(false);
    const std::pair<bool, const char*> Missing[] = {
        {true, "zLIB.dll missing in Tessavo Paint program folder.\nHence cannot proceed to save PNG file."},
        {false, "(1) zLIB.dll missing in Tessavo Paint program folder and (2) GDIplus.dll not found.\n"
                "Hence cannot proceed to save PNG file."},
    };
    for (const auto& [GdiPlus, Message] : Missing)
        for (const char* Entry : {"mnuFileSavePNG24", "mnuFileSavePNGOptimized", "mnuFileSavePNG8"}) {
            basTsMainPro::GdiPlusAvailable = GdiPlus;
            const size_t DialogsBefore = Dialogs.Calls().size();
            SaveThroughMenu(Doc, Entry, QString());
            EXPECT_EQ(Boxes.Texts().back(), Message) << Entry;
            EXPECT_EQ(Dialogs.Calls().size(), DialogsBefore) << Entry;
            EXPECT_EQ(OptionsShown, 0);
        }
    basTsMainPro::SetZlibAvailableForTest(true);

    // No option ticked, and No to the question.
    Boxes.Answer(basMsgBox::MsgBoxResult::No);
    SaveThroughMenu(Doc, "mnuFileSavePNG24", Target);
    EXPECT_EQ(Boxes.Calls().back().Text, "No particular setting to be made.   Proceed?");
    EXPECT_EQ(Boxes.Calls().back().Buttons, basMsgBox::MsgBoxButtons::YesNo);
    EXPECT_EQ(Boxes.Calls().back().Icon, basMsgBox::MsgBoxIcon::Question);
    EXPECT_FALSE(QFile::exists(Target));
    EXPECT_EQ(Doc->windowTitle(), "Untitled:1");

    // A read-only target stays as it was, and the options are not asked.
    QFile Locked(Target);
    ASSERT_TRUE(Locked.open(QIODevice::WriteOnly));
    Locked.write("kept");
    Locked.close();
    QFile::setPermissions(Target, QFile::ReadOwner);
    SaveThroughMenu(Doc, "mnuFileSavePNG8", Target);
    EXPECT_EQ(Boxes.Texts().back(), "File is read only.");
    EXPECT_EQ(OptionsShown, 0);
    EXPECT_EQ(ReadAll(Target), "kept");
}

TEST_F(PaintPNG, PngFilesOpenAsThePicture)
{
    // Transparent parts come out on white: the file's own composition rule with white behind.
    auto OnWhite = [](uint8_t S, uint8_t A) { return uint8_t((S * A + (255 - A) * 255 + 255) >> 8); };
    for (const char* Name : {"basn2c08.png", "basn3p04.png", "basi0g04.png", "basn6a08.png", "tbbn3p08.png"}) {
        SCOPED_TRACE(Name);
        PngReadBack Reference;
        ASSERT_TRUE(ReadPngBack(PngSuite + Name, Reference));
        frmTsPaint* Doc = OpenThroughMenu(PngSuite + Name);
        ASSERT_NE(Doc, nullptr);
        EXPECT_EQ(Doc->FilePath, PngSuite + Name);
        ASSERT_EQ(Doc->Canvas->DIB.DIBWidth(), Reference.Width);
        ASSERT_EQ(Doc->Canvas->DIB.DIBHeight(), Reference.Height);
        const std::vector<uint32_t> Picture = Pixels(Doc->Canvas->DIB);
        for (size_t I = 0; I < Picture.size(); ++I) {
            const uint8_t* P = &Reference.Rgba[I * 4];
            ASSERT_EQ(Picture[I], RGBColor(OnWhite(P[0], P[3]), OnWhite(P[1], P[3]), OnWhite(P[2], P[3]))) << I;
        }
    }
    // A file the reader refuses tells why, and the picture stays.
    frmTsPaint* Doc = OpenThroughMenu(PngSuite + "basn2c08.png");
    ASSERT_NE(Doc, nullptr);
    const std::vector<uint32_t> Before = Pixels(Doc->Canvas->DIB);
    Doc->LoadOpenFile(QStringLiteral(TESSAVO_TESTDATA "/png-extra/gdk-pixbuf/fail-invalid.2.png"),
                      basTsMainPro::DocOpenFromFileOpen);
    EXPECT_EQ(Boxes.Texts().back(), "Error: 6   Invalid CRC check sum found.");
    EXPECT_EQ(Pixels(Doc->Canvas->DIB), Before);
}
