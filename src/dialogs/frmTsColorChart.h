#pragma once

// The colour chart: a small tool window beside the frame that shows a grid of colours (the
// 256-colour palette, the web-safe colours, a chart of hues and shades, or the picture's own
// palette). Clicking a colour makes it the toolbox colour the chart was opened for. The window
// keeps its place in the settings file between runs.

#include "basTsMainPro.h"

#include <QRect>
#include <QWidget>

#include <cstdint>
#include <vector>

class QLabel;
class QPushButton;

class frmTsColorChart : public QWidget {
    Q_OBJECT

public:
    // Takes its target, mode and palette file from basTsMainPro at construction.
    explicit frmTsColorChart(QWidget* parent = nullptr);

    // Registers the factory by which the frame opens the chart by name.
    static void Register();

    // ---- The colours of each mode, 0x00BBGGRR ----

    // The 16 classic colours, the 6 x 6 x 6 cube of the web-safe levels, then 24 greys from 8 to
    // 238 in steps of 10: 256 colours.
    static std::vector<uint32_t> Palette256Colors();
    // Levels 00, 33, 66, 99, CC, FF of red, green and blue, in six 6 x 6 blocks (one per red),
    // two blocks across: 216 colours on a grid 12 wide.
    static std::vector<uint32_t> WebSafeColors();
    // One row per hue (24 hues, 15 degrees apart) from dark to light: seven shades at full
    // saturation, then seven at half saturation; a last row of 14 greys from black to white.
    static std::vector<uint32_t> ChartColors();
    // The colours of a "JASC-PAL" palette file: header, version line, count, then "r g b" lines.
    // Lines that do not start with three numbers are skipped, components are held to 0..255, and
    // at most the stated count (and never more than 256) is read. Empty for an unreadable file or
    // one without the header.
    static std::vector<uint32_t> ReadJascPalette(const QString& path);

    // ---- The grid, in picChart's coordinates ----
    static constexpr int ChartWidth = 160;
    int Columns() const { return GridColumns; }
    int CellSize() const { return GridCell; }
    int CellCount() const { return static_cast<int>(Colors.size()); }
    uint32_t CellColor(int index) const;
    QRect CellRect(int index) const; // empty for an index outside the grid
    int CellAt(QPoint point) const;  // -1 outside every cell

    basTsMainPro::ColorChartTarget Target() const { return ChartTarget; }
    basTsMainPro::ColorChartMode Mode() const { return ChartMode; }

    // The text shown for a colour under the pointer: "RGB(r, g, b)" and "#RRGGBB" on two lines.
    static QString ColorValueText(uint32_t color);

    // ---- Controls, named as their objectName ----
    QLabel* lblTarget = nullptr;
    QWidget* picChart = nullptr;
    QLabel* lblColorValue = nullptr;
    QPushButton* cmdClose = nullptr;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void PaintChart();
    void picChart_MouseMove(QPoint point);
    void picChart_Click(QPoint point);
    void ShowTargetCaption();
    void PlaceOnScreen();
    void SavePosition();
    QRect AvailableScreen() const;

    basTsMainPro::ColorChartTarget ChartTarget;
    basTsMainPro::ColorChartMode ChartMode;
    std::vector<uint32_t> Colors;
    int GridColumns = 16; // the palettes; the web-safe set and the chart set their own
    int GridCell = 10;
    int HoverCell = -1;
    bool Placed = false;
};
