// The colour chart: its colour sets, picking a colour for each target, the palette file reader
// and the remembered window place.
#include "basSettings.h"
#include "basTsMainPro.h"
#include "frmTsColorChart.h"
#include "shell/SettingsFileTest.h"

#include <QGuiApplication>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QTest>

#include <set>

namespace {

using basTsMainPro::ColorChartMode;
using basTsMainPro::ColorChartTarget;

constexpr uint32_t Rgb(uint32_t r, uint32_t g, uint32_t b)
{
    return r | (g << 8) | (b << 16);
}

class frmTsColorChartTest : public SettingsFileTest {
protected:
    void SetUp() override
    {
        basTsMainPro::SetAppFolder(Dir.path());
        basTsMainPro::ColorFirst = 0x000000;
        basTsMainPro::ColorSecond = 0xFFFFFF;
        basTsMainPro::ColorBezierFill = 0x0000FF;
    }

    void TearDown() override
    {
        delete Chart.data();
        basTsMainPro::SetAppFolder(QString());
    }

    frmTsColorChart& Open(ColorChartMode mode, ColorChartTarget target = ColorChartTarget::First)
    {
        delete Chart.data();
        basTsMainPro::ChartMode = mode;
        basTsMainPro::ChartTarget = target;
        frmTsColorChart::Register(); // as the program does at start-up
        Chart = qobject_cast<frmTsColorChart*>(basTsMainPro::CreateForm(QStringLiteral("frmTsColorChart")));
        EXPECT_NE(Chart.data(), nullptr);
        Chart->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(Chart.data()));
        return *Chart;
    }

    QString PaletteFile(const QByteArray& text)
    {
        const QString path = Dir.filePath(QStringLiteral("test.pal"));
        WriteFile(path, text);
        return path;
    }

    QPointer<frmTsColorChart> Chart;
};

} // namespace

TEST_F(frmTsColorChartTest, ColorSetsAreDistinctAndHoldTheBasicColors)
{
    const struct {
        ColorChartMode Mode;
        size_t Count;
    } cases[] = {{ColorChartMode::Palette256, 256}, {ColorChartMode::WebSafe, 216}, {ColorChartMode::Chart, 350}};
    for (const auto& c : cases) {
        frmTsColorChart& chart = Open(c.Mode);
        std::set<uint32_t> colors;
        for (int i = 0; i < chart.CellCount(); ++i)
            colors.insert(chart.CellColor(i));
        EXPECT_EQ(static_cast<size_t>(chart.CellCount()), c.Count);
        EXPECT_EQ(colors.size(), c.Count) << "a colour is repeated";
        for (const uint32_t basic : {Rgb(0, 0, 0), Rgb(255, 255, 255), Rgb(255, 0, 0), Rgb(0, 255, 0), Rgb(0, 0, 255)})
            EXPECT_EQ(colors.count(basic), 1u) << std::hex << basic;
        if (c.Mode == ColorChartMode::WebSafe) {
            for (const uint32_t color : colors)
                for (int shift : {0, 8, 16})
                    EXPECT_EQ(((color >> shift) & 255) % 0x33, 0u) << std::hex << color;
        }
        // The window fits the place the settings keep free for it: 2790 by 7110 twips.
        EXPECT_LE(chart.frameGeometry().width() * 15, basSettings::ColorChartMarginWidth);
        EXPECT_LE(chart.frameGeometry().height() * 15, basSettings::ColorChartMarginHeight);
    }
}

TEST_F(frmTsColorChartTest, ClickingAWebSafeCellSetsTheTargetColor)
{
    // Six 6 x 6 blocks, one per red level, two across; in a block green goes down, blue across.
    const struct {
        ColorChartTarget Target;
        int Column;
        int Row;
        uint32_t Expected;
        const char* Shown;
    } cases[] = {
        {ColorChartTarget::First, 0, 0, Rgb(0, 0, 0), "RGB(0, 0, 0)\n#000000"},
        {ColorChartTarget::Second, 6, 13, Rgb(0xFF, 0x33, 0x00), "RGB(255, 51, 0)\n#FF3300"},
        {ColorChartTarget::BezierFill, 3, 8, Rgb(0x66, 0x66, 0x99), "RGB(102, 102, 153)\n#666699"},
        {ColorChartTarget::First, 11, 17, Rgb(0xFF, 0xFF, 0xFF), "RGB(255, 255, 255)\n#FFFFFF"},
    };
    for (const auto& c : cases) {
        SetUp();
        frmTsColorChart& chart = Open(ColorChartMode::WebSafe, c.Target);
        const QPoint centre = chart.CellRect(c.Row * chart.Columns() + c.Column).center();
        auto* picChart = chart.findChild<QWidget*>(QStringLiteral("picChart"));
        ASSERT_NE(picChart, nullptr);
        QTest::mouseMove(picChart, centre);
        EXPECT_EQ(chart.findChild<QLabel*>(QStringLiteral("lblColorValue"))->text(), QString::fromLatin1(c.Shown));
        QTest::mouseClick(picChart, Qt::LeftButton, {}, centre);
        const uint32_t expectedFirst = c.Target == ColorChartTarget::First ? c.Expected : 0x000000;
        const uint32_t expectedSecond = c.Target == ColorChartTarget::Second ? c.Expected : 0xFFFFFF;
        const uint32_t expectedBezier = c.Target == ColorChartTarget::BezierFill ? c.Expected : 0x0000FF;
        EXPECT_EQ(basTsMainPro::ColorFirst, expectedFirst);
        EXPECT_EQ(basTsMainPro::ColorSecond, expectedSecond);
        EXPECT_EQ(basTsMainPro::ColorBezierFill, expectedBezier);
        // The chart stays open for the next pick; the button closes it.
        EXPECT_TRUE(chart.isVisible());
        QTest::mouseClick(chart.findChild<QPushButton*>(QStringLiteral("cmdClose")), Qt::LeftButton);
        EXPECT_FALSE(Chart && Chart->isVisible());
    }
}

TEST_F(frmTsColorChartTest, PaletteFilesAreReadTolerantly)
{
    const struct {
        const char* Name;
        QByteArray Text;
        std::vector<uint32_t> Expected;
    } cases[] = {
        {"good", "JASC-PAL\r\n0100\r\n3\r\n255 0 0\r\n0 128 64\r\n1\t2 3\r\n",
         {Rgb(255, 0, 0), Rgb(0, 128, 64), Rgb(1, 2, 3)}},
        {"bad lines skipped, values held", "JASC-PAL\n0100\n4\n10 20\nred green blue\n300 -5 7\n\n4 5 6 extra\n",
         {Rgb(255, 0, 7), Rgb(4, 5, 6)}},
        {"count stops early", "JASC-PAL\n0100\n1\n9 9 9\n8 8 8\n", {Rgb(9, 9, 9)}},
        {"byte-order mark", "\xEF\xBB\xBFJASC-PAL\n0100\n1\n7 7 7\n", {Rgb(7, 7, 7)}},
        {"no header", "0100\n1\n9 9 9\n", {}},
        {"garbage", QByteArray("\x00\xFF\x13JASC\x00PAL\n\n\xFE", 11), {}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(frmTsColorChart::ReadJascPalette(PaletteFile(c.Text)), c.Expected) << c.Name;
    EXPECT_TRUE(frmTsColorChart::ReadJascPalette(Dir.filePath(QStringLiteral("missing.pal"))).empty());

    // More lines than a palette holds: never more than 256 colours.
    QByteArray big = "JASC-PAL\n0100\n9999\n";
    for (int i = 0; i < 400; ++i)
        big += "1 2 3\n";
    EXPECT_EQ(frmTsColorChart::ReadJascPalette(PaletteFile(big)).size(), 256u);

    // The picture's own palette is what the chart shows.
    basTsMainPro::ChartPaletteFile = PaletteFile(cases[0].Text);
    frmTsColorChart& chart = Open(ColorChartMode::PictureOwn, ColorChartTarget::Second);
    ASSERT_EQ(chart.CellCount(), 3);
    QTest::mouseClick(chart.findChild<QWidget*>(QStringLiteral("picChart")), Qt::LeftButton, {},
                      chart.CellRect(1).center());
    EXPECT_EQ(basTsMainPro::ColorSecond, Rgb(0, 128, 64));
}

TEST_F(frmTsColorChartTest, PlaceIsClampedOnShowAndWrittenOnClose)
{
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    const int right = (screen.x() + screen.width()) * 15 - basSettings::ColorChartMarginWidth;
    const int bottom = (screen.y() + screen.height()) * 15 - basSettings::ColorChartMarginHeight;
    const struct {
        const char* Left;
        const char* Top;
        int ExpectedLeft;
        int ExpectedTop;
    } cases[] = {
        {"30000", "30000", right, bottom},
        {"-450", "150", 0, 150},
        {"300", "junk", 300, 0},
    };
    for (const auto& c : cases) {
        WriteFile(Ini, QByteArray("[ColorChart Pos]\r\nLeft=") + c.Left + "\r\nTop=" + c.Top + "\r\n");
        frmTsColorChart& chart = Open(ColorChartMode::Chart);
        EXPECT_EQ(chart.pos(), QPoint(c.ExpectedLeft / 15, c.ExpectedTop / 15)) << c.Left << " " << c.Top;
        chart.close();
        const basSettings::ColorChartPos written = basSettings::ReadColorChartPos(Ini);
        EXPECT_EQ(written.Left, c.ExpectedLeft) << c.Left;
        EXPECT_EQ(written.Top, c.ExpectedTop) << c.Top;
    }
}
