// The print window: placement on the paper, the messages that stop a print, and a sheet printed
// to a PDF file.
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QLineEdit>
#include <QPageSize>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTemporaryDir>

#include <memory>

#include "basMsgBox.h"
#include "basTsMainPro.h"
#include "clsDIB.h"
#include "clsTsDialog.h"
#include "frmTsPrint.h"

namespace {

class PrintTest : public ::testing::Test {
protected:
    QTemporaryDir Files;
    basMsgBox::MsgBoxScript Boxes;
    TsDialogScript Dialogs;
    std::unique_ptr<frmTsPrint> Window;

    void SetUp() override
    {
        // 100 pixels an inch, so that a 400 x 200 picture is 4 x 2 inches at its own size.
        basTsMainPro::ScreenDpiX = 100;
        basTsMainPro::ScreenDpiY = 100;
        frmTsPrint::SetPrinterNamesForTest(QStringList());
        Window = std::make_unique<frmTsPrint>();
        Window->cboPaperSize->setCurrentIndex(Window->cboPaperSize->findData(static_cast<int>(QPageSize::Letter)));
        clsDIB Picture;
        ASSERT_TRUE(Picture.CreateBlankDIB(400, 200, 24, 0x0000FF, false));
        ASSERT_TRUE(Window->SetPicture(Picture));
        Window->show();
        QApplication::processEvents();
    }
    void TearDown() override
    {
        Window.reset();
        frmTsPrint::SetPrinterNamesForTest(std::nullopt);
        basTsMainPro::ScreenDpiX = 96;
        basTsMainPro::ScreenDpiY = 96;
    }
    QString Pdf(const QString& Name) const { return Files.filePath(Name); }
};

TEST_F(PrintTest, PlacementFollowsTheSizeFieldsAndButtons)
{
    // On opening: its own size, centred on the Letter paper, without a printer set to PDF.
    EXPECT_TRUE(Window->optDestination[1]->isChecked());
    EXPECT_FALSE(Window->cboPrinter->isEnabled());
    EXPECT_EQ(Window->Picture().pixel(0, 0), qRgb(255, 0, 0));
    EXPECT_EQ(Window->Placement(), QRectF(2.25, 4.5, 4, 2));
    EXPECT_EQ(Window->txbPercent->value(), 100);
    EXPECT_EQ(Window->PrintPixels(), QSize(400, 200));

    Window->cmdFitToPaper->click(); // 7.5 inches across leave half an inch each side
    EXPECT_EQ(Window->Placement(), QRectF(0.5, 3.625, 7.5, 3.75));
    EXPECT_EQ(Window->txbPercent->value(), 188);

    Window->optOrientation[1]->setChecked(true); // still centred on the turned paper
    EXPECT_EQ(Window->Placement(), QRectF(1.75, 2.375, 7.5, 3.75));

    Window->txbWidth->setValue(3); // proportions kept
    EXPECT_EQ(Window->Placement(), QRectF(4, 3.5, 3, 1.5));
    Window->ckbKeepRatio->setChecked(false);
    Window->txbHeight->setValue(2.5);
    EXPECT_EQ(Window->Placement().size(), QSizeF(3, 2.5));

    Window->ckbCenter->setChecked(false);
    Window->txbLeft->setValue(0.5);
    Window->txbTop->setValue(1);
    EXPECT_EQ(Window->Placement().topLeft(), QPointF(0.5, 1));

    Window->txbPercent->setValue(50);
    EXPECT_EQ(Window->Placement(), QRectF(0.5, 1, 2, 1));
    Window->cboUnits->setCurrentIndex(1); // the same place in millimetres
    EXPECT_DOUBLE_EQ(Window->txbWidth->value(), 50.8);
    EXPECT_DOUBLE_EQ(Window->txbLeft->value(), 12.7);
    Window->txbWidth->setValue(101.6);
    EXPECT_EQ(Window->Placement(), QRectF(0.5, 1, 4, 1));
    Window->cmdOriginalSize->click();
    EXPECT_EQ(Window->Placement().size(), QSizeF(4, 2));
}

struct MessageCase {
    const char* Name;
    bool Landscape;
    bool ToPrinter;
    double Left, Top, Width, Height;
    const char* Message; // empty: the sheet is printed
};

TEST_F(PrintTest, EachRefusalInItsCase)
{
    const MessageCase Cases[] = {
        {"no printer", false, true, 1, 1, 2, 1, "No printer found "},
        {"zero width", false, false, 1, 1, 0, 1, "Please reset print size."},
        {"zero height", false, false, 1, 1, 1, 0, "Please reset print size."},
        {"just over 3 MP", false, false, 0, 0, 20.01, 15, "Cannot print a size of width x height over 3 MPiexls."},
        // 2000 x 1500 pixels are allowed; the paper is what refuses them.
        {"exactly 3 MP", false, false, 0, 0, 20, 15, "Image size greater than paper size"},
        {"left at the edge", false, false, 8.5, 1, 1, 1, "Image position outside paper size"},
        {"top beyond", false, false, 1, 11.5, 1, 1, "Image position outside paper size"},
        {"right over", false, false, 1, 1, 7.51, 2, "Image size greater than paper size"},
        {"bottom over", false, false, 1, 9, 2, 2.01, "Image size greater than paper size"},
        {"to the edges", false, false, 1, 9, 7.5, 2, ""},
        {"wide portrait", false, false, 1, 1, 9.5, 2, "Image size greater than paper size"},
        {"wide landscape", true, false, 1, 1, 9.5, 2, ""},
    };
    int Printed = 0;
    for (const MessageCase& C : Cases) {
        SCOPED_TRACE(C.Name);
        Window = std::make_unique<frmTsPrint>();
        Window->cboPaperSize->setCurrentIndex(Window->cboPaperSize->findData(static_cast<int>(QPageSize::Letter)));
        clsDIB Picture;
        ASSERT_TRUE(Picture.CreateBlankDIB(400, 200, 32, 0xFFFFFF, true));
        ASSERT_TRUE(Window->SetPicture(Picture));
        Window->optOrientation[C.Landscape ? 1 : 0]->setChecked(true);
        Window->optDestination[C.ToPrinter ? 0 : 1]->setChecked(true);
        Window->ckbCenter->setChecked(false);
        Window->ckbKeepRatio->setChecked(false);
        Window->txbLeft->setValue(C.Left);
        Window->txbTop->setValue(C.Top);
        Window->txbWidth->setValue(C.Width);
        Window->txbHeight->setValue(C.Height);
        const QString Path = Pdf(QStringLiteral("case%1.pdf").arg(++Printed));
        Window->txbPdfFile->setText(Path);
        Boxes.Clear();
        Window->cmdPrint->click();
        const QString Expected = QString::fromLatin1(C.Message);
        if (Expected.isEmpty()) {
            EXPECT_TRUE(Boxes.Texts().empty());
            EXPECT_TRUE(QFile::exists(Path));
            EXPECT_EQ(Window->result(), QDialog::Accepted);
        } else {
            EXPECT_EQ(Boxes.Texts(), std::vector<QString>{Expected});
            EXPECT_FALSE(QFile::exists(Path));
            EXPECT_NE(Window->result(), QDialog::Accepted);
        }
    }
    EXPECT_TRUE(Dialogs.Calls().empty());
}

TEST_F(PrintTest, PrintsTheSheetToAPdfFileNamedInTheSaveDialog)
{
    Window->optOrientation[1]->setChecked(true);
    Dialogs.Answer(Pdf(QStringLiteral("sheet"))); // the extension is added
    Window->cmdPrint->click();
    ASSERT_EQ(Dialogs.Calls().size(), 1u);
    EXPECT_EQ(Dialogs.Calls()[0].Kind, TsDialogKind::Save);
    EXPECT_EQ(Dialogs.Calls()[0].Filter, QStringLiteral("PDF (*.pdf)|*.pdf|"));
    EXPECT_TRUE(Boxes.Texts().empty());
    EXPECT_EQ(Window->txbPdfFile->text(), Pdf(QStringLiteral("sheet.pdf")));
    QFile File(Pdf(QStringLiteral("sheet.pdf")));
    ASSERT_TRUE(File.open(QIODevice::ReadOnly));
    const QByteArray Bytes = File.readAll();
    EXPECT_TRUE(Bytes.startsWith("%PDF-"));
    EXPECT_TRUE(Bytes.contains("/MediaBox [0 0 792.000000 612.000000]")) << "Letter, landscape";
    EXPECT_TRUE(Bytes.contains("/Subtype /Image"));
    EXPECT_EQ(Window->result(), QDialog::Accepted);

    // A cancelled dialog prints nothing and keeps the window.
    frmTsPrint Second;
    clsDIB Picture;
    ASSERT_TRUE(Picture.CreateBlankDIB(40, 20, 32, 0, true));
    ASSERT_TRUE(Second.SetPicture(Picture));
    Second.optDestination[1]->setChecked(true);
    EXPECT_FALSE(Second.PrintNow());
    EXPECT_TRUE(Second.txbPdfFile->text().isEmpty());
}

} // namespace
