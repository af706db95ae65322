#include "ucProgress.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPalette>

namespace {

constexpr uint32_t Fore = 0x0000FF; // red, as 0x00BBGGRR
constexpr uint32_t Back = 0x00FF00; // green
constexpr QRgb ForeRgb = 0xFFFF0000;
constexpr QRgb BackRgb = 0xFF00FF00;

QImage Grab(ucProgress& Bar)
{
    return Bar.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

} // namespace

TEST(ucProgress, StartValues)
{
    ucProgress Bar;
    EXPECT_EQ(Bar.BorderStyle(), 0);
    EXPECT_EQ(Bar.Max(), 100);
    EXPECT_EQ(Bar.Value(), 0);
    const QColor Base = Bar.palette().color(QPalette::Base);
    const QColor Highlight = Bar.palette().color(QPalette::Highlight);
    EXPECT_EQ(Bar.BackColor(), uint32_t(Base.red() | Base.green() << 8 | Base.blue() << 16));
    EXPECT_EQ(Bar.ForeColor(), uint32_t(Highlight.red() | Highlight.green() << 8 | Highlight.blue() << 16));
}

TEST(ucProgress, FilledColumnsFollowValueOverMax)
{
    struct Case {
        int Border;
        int Width; // the inner width is this less the frame
        int Max;
        int Value;
        int StoredValue;
        int Filled;
    };
    const Case Cases[] = {
        {1, 102, 200, 50, 50, 25},  // a quarter of 100 inner columns
        {1, 102, 200, 300, 200, 100}, // clamped to Max: all filled
        {1, 102, 200, -5, 0, 0},      // clamped to 0
        {0, 100, 3, 1, 1, 33},        // truncated, not rounded
        {0, 100, 0, 50, 0, 0},        // no Max: nothing filled
        {0, 100, -10, 5, 0, 0},
        {0, 1000, 2000000000, 1999999999, 1999999999, 999}, // no overflow on large values
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(testing::Message() << "border " << C.Border << " max " << C.Max << " value " << C.Value);
        ucProgress Bar;
        Bar.resize(C.Width, 10);
        Bar.SetBorderStyle(C.Border);
        Bar.SetForeColor(Fore);
        Bar.SetBackColor(Back);
        Bar.SetMax(C.Max);
        Bar.SetValue(C.Value);
        EXPECT_EQ(Bar.Value(), C.StoredValue);
        EXPECT_EQ(Bar.FilledWidth(), C.Filled);
        const QImage Image = Grab(Bar);
        ASSERT_EQ(Image.width(), C.Width);
        const int Y = Image.height() / 2;
        int ForeColumns = 0;
        for (int x = C.Border; x < C.Width - C.Border; ++x) {
            const QRgb Pixel = Image.pixel(x, Y);
            const QRgb Expected = x - C.Border < C.Filled ? ForeRgb : BackRgb;
            ASSERT_EQ(Pixel, Expected) << "column " << x;
            ForeColumns += Pixel == ForeRgb;
        }
        EXPECT_EQ(ForeColumns, C.Filled);
        if (C.Border == 1) {
            EXPECT_NE(Image.pixel(0, Y), ForeRgb);
            EXPECT_NE(Image.pixel(C.Width - 1, Y), BackRgb);
            EXPECT_NE(Image.pixel(C.Width / 2, 0), ForeRgb);
        }
    }
}

TEST(ucProgress, LoweringMaxPullsValueDown)
{
    ucProgress Bar;
    Bar.SetValue(80);
    Bar.SetMax(50);
    EXPECT_EQ(Bar.Value(), 50);
    Bar.SetMax(0);
    EXPECT_EQ(Bar.Value(), 0);
}
