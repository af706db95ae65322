#include <gtest/gtest.h>

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QTest>

#include "frmTsFileSaveGIForPNG.h"

TEST(frmTsFileSaveGIForPNG, ARightClickPicksTheTransparentColour)
{
    QImage Picture(20, 10, QImage::Format_RGB32);
    Picture.fill(QColor(255, 255, 255));
    Picture.setPixel(5, 5, qRgb(10, 20, 30));
    frmTsFileSaveGIForPNG Dialog(frmTsFileSaveGIForPNG::Kind::GIF, Picture);
    EXPECT_EQ(Dialog.fraOptions->title(), "GIF file save options");
    EXPECT_EQ(Dialog.TransparentColor(), 0xFFFFFFu);  // the top-left pixel is offered first
    EXPECT_FALSE(Dialog.Transparency());
    QTest::mouseClick(Dialog.picImage, Qt::LeftButton, {}, QPoint(5, 5));
    EXPECT_EQ(Dialog.TransparentColor(), 0xFFFFFFu);  // only the right button picks
    QTest::mouseClick(Dialog.picImage, Qt::RightButton, {}, QPoint(5, 5));
    EXPECT_EQ(Dialog.TransparentColor(), 0x1E140Au);
    EXPECT_TRUE(Dialog.Transparency());
    EXPECT_FALSE(Dialog.ckbPNGSetTransparency->isVisibleTo(&Dialog));
}

TEST(frmTsFileSaveGIForPNG, PngKindsNameThemselvesAndTheHookAnswers)
{
    const std::pair<frmTsFileSaveGIForPNG::Kind, const char*> Kinds[] = {
        {frmTsFileSaveGIForPNG::Kind::PNG24, "Save As 24-Bit PNG"},
        {frmTsFileSaveGIForPNG::Kind::PNGOptimized, "Save As Optimized PNG"},
        {frmTsFileSaveGIForPNG::Kind::PNG8, "Save As Paletted 8-Bit PNG"},
    };
    for (const auto& [Kind, Text] : Kinds) {
        frmTsFileSaveGIForPNG Dialog(Kind, QImage(4, 4, QImage::Format_RGB32));
        EXPECT_EQ(Dialog.lblSaveAsOption->text(), Text);
        EXPECT_EQ(Dialog.fraOptions->title(), "PNG file save options");
    }
    frmTsFileSaveGIForPNG::Answer = [](frmTsFileSaveGIForPNG& D) {
        D.ckbGIFinterlaced->setChecked(true);
        return true;
    };
    frmTsFileSaveGIForPNG Dialog(frmTsFileSaveGIForPNG::Kind::GIF, QImage(4, 4, QImage::Format_RGB32));
    EXPECT_TRUE(Dialog.Run());
    EXPECT_TRUE(Dialog.Interlaced());
    frmTsFileSaveGIForPNG::Answer = nullptr;
}
