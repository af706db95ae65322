// The brush, pattern and stamp loader driven from the toolbox of a frame with a real document:
// scripted file dialogs and loader answers, the surfaces it leaves in the canvas, and the tools
// that use them.
#include <QImage>
#include <QLabel>
#include <QRadioButton>

#include "PaintTest.h"
#include "basSettings.h"
#include "frmTsStampOrBrush.h"

namespace {

constexpr uint32_t Left = 0x2040C0;  // 0x00BBGGRR
constexpr uint32_t Right = 0x10A030;

QRgb Rgb(uint32_t Color)
{
    return qRgb(Color & 255, (Color >> 8) & 255, (Color >> 16) & 255);
}

class StampTest : public PaintTest {
protected:
    StampOrBrushScript Stamps;

    // A white picture with a block of Width x Height at (X, Y), its left half Left and its right
    // half Right, and one white pixel inside it at (X + 1, Y + 1).
    QString WriteBlock(const QString& Name, QSize Size, QRect Block)
    {
        QImage Picture(Size, QImage::Format_RGB32);
        Picture.fill(Qt::white);
        for (int Y = Block.top(); Y <= Block.bottom(); ++Y)
            for (int X = Block.left(); X <= Block.right(); ++X)
                Picture.setPixel(X, Y, Rgb(X - Block.left() < Block.width() / 2 ? Left : Right));
        if (Block.width() > 2 && Block.height() > 2)
            Picture.setPixel(Block.left() + 1, Block.top() + 1, qRgb(255, 255, 255));
        const QString Path = Files.filePath(Name);
        EXPECT_TRUE(Picture.save(Path, "BMP"));
        return Path;
    }

    // The colour the block holds at (X, Y) of its own box, or white where it is transparent.
    static uint32_t BlockColor(int X, int Y, int Width)
    {
        if (X == 1 && Y == 1)
            return 0xFFFFFF;
        return X < Width / 2 ? Left : Right;
    }

    QString LastFolder(const char* Key)
    {
        return basSettings::ReadRaw(QString::fromLatin1(basSettings::SectionLastFolder), QString::fromLatin1(Key),
                                    basSettings::SettingsFilePath());
    }
};

} // namespace

TEST_F(StampTest, ImageStampIsTheNonWhiteBoxAndStampsOnlyThatBox)
{
    frmTsPaint* Doc = OpenThroughMenu(Suite + "rgb24.bmp");
    ASSERT_NE(Doc, nullptr);
    const QString Path = WriteBlock("block.bmp", QSize(20, 16), QRect(5, 4, 6, 5));
    Dialogs.Answer(Path);
    Stamps.Answer({});
    Frame->cmdStampLoad[1]->click();

    ASSERT_EQ(Stamps.Calls().size(), 1u);
    EXPECT_EQ(Stamps.Calls()[0].Target, frmTsStampOrBrush::StampTarget::ImageStamp);
    EXPECT_EQ(Dialogs.Calls().back().InitDir, basTsMainPro::AppFolder());
    EXPECT_EQ(Dialogs.Calls().back().Filter, frmTsStampOrBrush::PictureFilter());
    EXPECT_EQ(LastFolder(basSettings::KeyLastFolderStamp), Files.path() + "/");
    clsDIB& Stamp = Doc->Canvas->DIBStamp;
    clsDIB& Mask = Doc->Canvas->DIBStampMask;
    ASSERT_EQ(Stamp.DIBWidth(), 6);
    ASSERT_EQ(Stamp.DIBHeight(), 5);
    ASSERT_EQ(Mask.DIBWidth(), 6);
    ASSERT_EQ(Mask.DIBHeight(), 5);
    for (int Y = 0; Y < 5; ++Y)
        for (int X = 0; X < 6; ++X) {
            const bool Clear = BlockColor(X, Y, 6) == 0xFFFFFF;
            EXPECT_EQ(Mask.DIBhDC()->GetPixel(X, Y), Clear ? 0xFFFFFFu : 0u) << X << "," << Y;
            EXPECT_EQ(Stamp.DIBhDC()->GetPixel(X, Y), Clear ? 0u : BlockColor(X, Y, 6)) << X << "," << Y;
        }
    EXPECT_FALSE(Frame->picStamp->pixmap().isNull());

    // Stamped with its centre at (50, 40): the box starts at (47, 38); everything else, and the
    // white pixel inside the block, keeps the picture.
    std::vector<uint32_t> Expected = Pixels(Doc->Canvas->DIB);
    const int W = Doc->Canvas->DIB.DIBWidth();
    for (int Y = 0; Y < 5; ++Y)
        for (int X = 0; X < 6; ++X)
            if (BlockColor(X, Y, 6) != 0xFFFFFF)
                Expected[static_cast<size_t>(38 + Y) * W + 47 + X] = BlockColor(X, Y, 6);
    Frame->imgTools[12]->click();
    ASSERT_EQ(Doc->Canvas->CanvasOp(), ucCanvas::OpStamp);
    Stroke(Doc, QPoint(50, 40), QPoint(50, 40));
    EXPECT_EQ(Pixels(Doc->Canvas->DIB), Expected);
}

TEST_F(StampTest, TextStampIsTheTextInTheFirstColorCroppedToItsInk)
{
    frmTsPaint* Doc = OpenThroughMenu(Suite + "rgb24.bmp");
    ASSERT_NE(Doc, nullptr);
    StampOrBrushAnswer Answer;
    Answer.Text = "Hi";
    Stamps.Answer(Answer);
    Frame->cmdStampLoad[0]->click();

    ASSERT_EQ(Stamps.Calls().size(), 1u);
    EXPECT_EQ(Stamps.Calls()[0].Target, frmTsStampOrBrush::StampTarget::TextStamp);
    EXPECT_EQ(Stamps.Calls()[0].TextColor, 0x0000FFu);
    EXPECT_EQ(Stamps.Calls()[0].FontSize, frmTsStampOrBrush::DefaultFontPoints);
    EXPECT_TRUE(Dialogs.Calls().size() == 1u) << "a text stamp asks for no file";
    clsDIB& Stamp = Doc->Canvas->DIBStamp;
    clsDIB& Mask = Doc->Canvas->DIBStampMask;
    const int W = Mask.DIBWidth(), H = Mask.DIBHeight();
    ASSERT_GE(W, 2);
    ASSERT_GE(H, 2);
    // Without smoothing every inked pixel is exactly the first colour, and the box is tight: ink
    // touches each of its four sides.
    int Inked = 0;
    bool Top = false, Bottom = false, LeftSide = false, RightSide = false;
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X) {
            const uint32_t M = Mask.DIBhDC()->GetPixel(X, Y);
            ASSERT_TRUE(M == 0 || M == 0xFFFFFF);
            EXPECT_EQ(Stamp.DIBhDC()->GetPixel(X, Y), M == 0 ? 0x0000FFu : 0u);
            if (M != 0)
                continue;
            ++Inked;
            Top |= Y == 0;
            Bottom |= Y == H - 1;
            LeftSide |= X == 0;
            RightSide |= X == W - 1;
        }
    EXPECT_GT(Inked, 10);
    EXPECT_LT(Inked, W * H);
    EXPECT_TRUE(Top && Bottom && LeftSide && RightSide);
}

TEST_F(StampTest, BrushLoadsSelectsStyle8AndRemembersItsFolder)
{
    frmTsPaint* Doc = OpenThroughMenu(Suite + "rgb24.bmp");
    ASSERT_NE(Doc, nullptr);
    Dialogs.Answer(WriteBlock("brush.bmp", QSize(12, 12), QRect(2, 3, 8, 4)));
    Stamps.Answer({});
    Frame->cmdCustomBrush->click();
    EXPECT_EQ(Doc->Canvas->DIBCustomBrush.DIBWidth(), 8);
    EXPECT_EQ(Doc->Canvas->DIBCustomBrushMask.DIBHeight(), 4);
    EXPECT_EQ(Doc->Canvas->BrushStyle, 8);
    EXPECT_TRUE(Frame->optBrushStyle[8]->isChecked());
    EXPECT_FALSE(Frame->picCustomBrush->pixmap().isNull());
    EXPECT_EQ(LastFolder(basSettings::KeyLastFolderCustomBrush), Files.path() + "/");
    EXPECT_TRUE(Boxes.Texts().empty());

    // The next choice starts in that folder.
    Stamps.AnswerCancel();
    Dialogs.Answer(Files.filePath("brush.bmp"));
    Frame->cmdCustomBrush->click();
    EXPECT_EQ(Dialogs.Calls().back().InitDir, Files.path() + "/");
}

TEST_F(StampTest, BelowTwoByTwoIsRefusedAndTheOldBrushAndStyleStay)
{
    frmTsPaint* Doc = OpenThroughMenu(Suite + "rgb24.bmp");
    ASSERT_NE(Doc, nullptr);
    Dialogs.Answer(WriteBlock("brush.bmp", QSize(12, 12), QRect(2, 3, 8, 4)));
    Stamps.Answer({});
    Frame->cmdCustomBrush->click();
    ASSERT_EQ(Doc->Canvas->DIBCustomBrush.DIBWidth(), 8);
    const std::vector<uint32_t> OldBrush = Pixels(Doc->Canvas->DIBCustomBrush);
    Frame->optBrushStyle[1]->click();
    ASSERT_EQ(Doc->Canvas->BrushStyle, 1);

    const std::pair<const char*, QRect> Cases[] = {
        {"white.bmp", QRect()},             // nothing but white
        {"dot.bmp", QRect(4, 4, 1, 1)},     // one pixel
        {"line.bmp", QRect(4, 1, 1, 7)},    // one pixel wide
        {"row.bmp", QRect(1, 4, 7, 1)},     // one pixel high
    };
    for (const auto& [Name, Block] : Cases) {
        Boxes.Clear();
        Dialogs.Answer(WriteBlock(Name, QSize(10, 10), Block));
        Stamps.Answer({});
        Frame->cmdCustomBrush->click();
        EXPECT_EQ(Boxes.Texts(), std::vector<QString>{"Non-transparent area smaller than the minimum size\n"
                                                      "of 2 x 2 pixels"})
            << Name;
        EXPECT_EQ(Pixels(Doc->Canvas->DIBCustomBrush), OldBrush) << Name;
        EXPECT_EQ(Doc->Canvas->DIBCustomBrush.DIBWidth(), 8) << Name;
        EXPECT_EQ(Doc->Canvas->BrushStyle, 1) << Name;
        EXPECT_TRUE(Frame->optBrushStyle[1]->isChecked()) << Name;
    }
}

TEST_F(StampTest, CancelLeavesCanvasAndToolboxAlone)
{
    frmTsPaint* Doc = OpenThroughMenu(Suite + "rgb24.bmp");
    ASSERT_NE(Doc, nullptr);
    const QString Path = WriteBlock("block.bmp", QSize(20, 16), QRect(5, 4, 6, 5));
    // The file dialog cancelled, then the loader cancelled after a file was read.
    for (bool FileChosen : {false, true}) {
        if (FileChosen) {
            for (int I = 0; I < 3; ++I) {
                Dialogs.Answer(Path);
                Stamps.AnswerCancel();
            }
        }
        Frame->cmdCustomBrush->click();
        Frame->cmdCustomPattern->click();
        Frame->cmdStampLoad[1]->click();
        Stamps.AnswerCancel();
        Frame->cmdStampLoad[0]->click();
        ucCanvas* C = Doc->Canvas;
        for (clsDIB* Surface : {&C->DIBCustomBrush, &C->DIBCustomBrushMask, &C->DIBPattern, &C->DIBStamp,
                                &C->DIBStampMask})
            EXPECT_EQ(Surface->DIBBitsPtr(), nullptr) << FileChosen;
        EXPECT_EQ(C->BrushStyle, 0);
        EXPECT_EQ(C->FillPattern, 0);
        EXPECT_TRUE(Frame->optBrushStyle[0]->isChecked());
        EXPECT_TRUE(Frame->optFillPattern[0]->isChecked());
        EXPECT_TRUE(Frame->picStamp->pixmap().isNull());
    }
    EXPECT_TRUE(Boxes.Texts().empty());
}

TEST_F(StampTest, PatternKeepsTheWholePictureAndFillsTiled)
{
    basTsMainPro::NewImageWidth = 50;
    basTsMainPro::NewImageHeight = 40;
    auto* Doc = qobject_cast<frmTsPaint*>(Frame->ShowNewDocument(basTsMainPro::DocOpenFromFileNew, QString()));
    QApplication::processEvents();
    ASSERT_NE(Doc, nullptr);
    // Larger than 256 x 256: scaled down, keeping its proportions.
    Dialogs.Answer(WriteBlock("large.bmp", QSize(600, 300), QRect(100, 100, 200, 50)));
    Stamps.Answer({});
    Frame->cmdCustomPattern->click();
    EXPECT_EQ(Doc->Canvas->DIBPattern.DIBWidth(), 256);
    EXPECT_EQ(Doc->Canvas->DIBPattern.DIBHeight(), 128);

    Dialogs.Answer(WriteBlock("tile.bmp", QSize(20, 16), QRect(5, 4, 6, 5)));
    Stamps.Answer({});
    Frame->cmdCustomPattern->click();
    clsDIB& Tile = Doc->Canvas->DIBPattern;
    ASSERT_EQ(Tile.DIBWidth(), 20);
    ASSERT_EQ(Tile.DIBHeight(), 16);
    EXPECT_EQ(Doc->Canvas->FillPattern, 9);
    EXPECT_TRUE(Frame->optFillPattern[9]->isChecked());
    EXPECT_EQ(LastFolder(basSettings::KeyLastFolderCustomPattern), Files.path() + "/");
    const std::vector<uint32_t> TilePixels = Pixels(Tile);
    EXPECT_EQ(TilePixels.front(), 0xFFFFFFu) << "white is part of a pattern";

    // A fill of the white picture lays the tile from the picture's origin.
    Frame->imgTools[2]->click();
    Stroke(Doc, QPoint(30, 30), QPoint(30, 30));
    const std::vector<uint32_t> Filled = Pixels(Doc->Canvas->DIB);
    for (int Y = 0; Y < 40; ++Y)
        for (int X = 0; X < 50; ++X)
            ASSERT_EQ(Filled[static_cast<size_t>(Y) * 50 + X], TilePixels[static_cast<size_t>(Y % 16) * 20 + X % 20])
                << X << "," << Y;
}

TEST(StampOrBrushSource, AlphaIsLaidOnWhiteUnlessUnused)
{
    struct Case {
        QRgb In;
        QRgb Other;  // the second pixel of the picture
        uint32_t Out;
    };
    const Case Cases[] = {
        {qRgba(255, 0, 0, 255), qRgba(0, 0, 0, 0), 0x0000FF},       // opaque red
        {qRgba(255, 0, 0, 0), qRgba(0, 0, 0, 255), 0xFFFFFF},       // transparent: white
        {qRgba(0, 0, 0, 128), qRgba(0, 0, 0, 255), 0x7F7F7F},       // half black on white
        {qRgba(255, 0, 0, 0), qRgba(0, 0, 0, 0), 0x0000FF},         // no alpha used at all: opaque
    };
    for (const Case& C : Cases) {
        QImage Picture(2, 1, QImage::Format_ARGB32);
        Picture.setPixel(0, 0, C.In);
        Picture.setPixel(1, 0, C.Other);
        clsDIB Out;
        ASSERT_TRUE(frmTsStampOrBrush::SourceFromImage(Picture, Out));
        EXPECT_EQ(Out.DIBhDC()->GetPixel(0, 0), C.Out) << std::hex << C.In;
    }
}
