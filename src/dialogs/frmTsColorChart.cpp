// The colour chart tool window: its colour sets, the grid, picking, and its remembered place.
#include "frmTsColorChart.h"

#include "basMath.h"
#include "basSettings.h"
#include "frmTsMainPro.h"

#include <QCloseEvent>
#include <QColor>
#include <QFile>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeySequence>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>
#include <QVBoxLayout>

#include <algorithm>
#include <limits>

namespace {

constexpr int WebSafeLevel = 0x33;
constexpr int WebSafeColumns = 12;
constexpr int ChartHues = 24;
constexpr int ChartShades = 7; // per saturation band
constexpr int ChartColumns = 2 * ChartShades;
constexpr int MaxPaletteColors = 256;
constexpr int TwipsPerPixel = 15;

uint32_t FromRGB(int r, int g, int b)
{
    return RGBColor(static_cast<uint32_t>(r), static_cast<uint32_t>(g), static_cast<uint32_t>(b));
}

uint32_t FromHsl(double hue, double saturation, double lightness)
{
    const QColor color = QColor::fromHslF(static_cast<float>(hue), static_cast<float>(saturation),
                                          static_cast<float>(lightness));
    return FromRGB(color.red(), color.green(), color.blue());
}

QColor ToQColor(uint32_t color)
{
    return QColor(ColorR(color), ColorG(color), ColorB(color));
}

int16_t PixelsToTwips(int pixels)
{
    const long long twips = static_cast<long long>(pixels) * TwipsPerPixel;
    return static_cast<int16_t>(std::clamp<long long>(twips, std::numeric_limits<int16_t>::min(),
                                                      std::numeric_limits<int16_t>::max()));
}

uint32_t CurrentColor(basTsMainPro::ColorChartTarget target)
{
    switch (target) {
    case basTsMainPro::ColorChartTarget::Second:
        return basTsMainPro::ColorSecond;
    case basTsMainPro::ColorChartTarget::First:
        return basTsMainPro::ColorFirst;
    case basTsMainPro::ColorChartTarget::BezierFill:
        break;
    }
    return basTsMainPro::ColorBezierFill;
}

} // namespace

std::vector<uint32_t> frmTsColorChart::Palette256Colors()
{
    // The classic 16 first, as every paint program's basic colours.
    std::vector<uint32_t> colors = {
        FromRGB(0, 0, 0),       FromRGB(128, 0, 0),     FromRGB(0, 128, 0),   FromRGB(128, 128, 0),
        FromRGB(0, 0, 128),     FromRGB(128, 0, 128),   FromRGB(0, 128, 128), FromRGB(192, 192, 192),
        FromRGB(128, 128, 128), FromRGB(255, 0, 0),     FromRGB(0, 255, 0),   FromRGB(255, 255, 0),
        FromRGB(0, 0, 255),     FromRGB(255, 0, 255),   FromRGB(0, 255, 255), FromRGB(255, 255, 255)};
    const size_t classic = colors.size();
    // The cube, less the eight colours the classic ones already hold: 208.
    for (int r = 0; r < 6; ++r)
        for (int g = 0; g < 6; ++g)
            for (int b = 0; b < 6; ++b) {
                const uint32_t color = FromRGB(r * WebSafeLevel, g * WebSafeLevel, b * WebSafeLevel);
                if (std::find(colors.begin(), colors.begin() + static_cast<long>(classic), color)
                    == colors.begin() + static_cast<long>(classic))
                    colors.push_back(color);
            }
    // 32 greys 5, 13, ..., 253: none of them is already a classic or a cube grey.
    for (int v = 5; v < 256; v += 8)
        colors.push_back(FromRGB(v, v, v));
    return colors;
}

std::vector<uint32_t> frmTsColorChart::WebSafeColors()
{
    std::vector<uint32_t> colors;
    for (int row = 0; row < 18; ++row)
        for (int col = 0; col < WebSafeColumns; ++col) {
            const int red = (row / 6) * 2 + col / 6;
            colors.push_back(FromRGB(red * WebSafeLevel, (row % 6) * WebSafeLevel, (col % 6) * WebSafeLevel));
        }
    return colors;
}

std::vector<uint32_t> frmTsColorChart::ChartColors()
{
    std::vector<uint32_t> colors;
    for (int hue = 0; hue < ChartHues; ++hue) {
        const double h = hue / static_cast<double>(ChartHues);
        for (const double saturation : {1.0, 0.5})
            for (int shade = 1; shade <= ChartShades; ++shade)
                colors.push_back(FromHsl(h, saturation, shade / (ChartShades + 1.0)));
    }
    for (int i = 0; i < ChartColumns; ++i) {
        const int v = RoundHalfEven(255.0 * i / (ChartColumns - 1));
        colors.push_back(FromRGB(v, v, v));
    }
    return colors;
}

std::vector<uint32_t> frmTsColorChart::ReadJascPalette(const QString& path)
{
    std::vector<uint32_t> colors;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return colors;
    // A palette has at most 259 useful lines; a little slack for blank ones, and no more.
    constexpr int MaxLines = 1024;
    constexpr qint64 MaxLineLength = 256;
    int lineNumber = 0;
    int wanted = MaxPaletteColors;
    while (!file.atEnd() && lineNumber < MaxLines && static_cast<int>(colors.size()) < wanted) {
        QByteArray raw = file.readLine(MaxLineLength);
        ++lineNumber;
        if (lineNumber == 1 && raw.startsWith("\xEF\xBB\xBF"))
            raw.remove(0, 3); // a byte-order mark left by some editors
        const QString line = QString::fromLatin1(raw).trimmed();
        if (lineNumber == 1) {
            if (line != QLatin1String("JASC-PAL"))
                return colors;
            continue;
        }
        if (lineNumber == 2)
            continue; // the version, "0100"
        if (lineNumber == 3) {
            bool ok = false;
            const int count = line.toInt(&ok);
            if (ok && count >= 0)
                wanted = std::min(count, MaxPaletteColors);
            continue;
        }
        const QStringList fields = line.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
        if (fields.size() < 3)
            continue;
        int rgb[3] = {0, 0, 0};
        bool valid = true;
        for (int i = 0; i < 3 && valid; ++i)
            rgb[i] = std::clamp(fields[i].toInt(&valid), 0, 255);
        if (valid)
            colors.push_back(FromRGB(rgb[0], rgb[1], rgb[2]));
    }
    return colors;
}

QString frmTsColorChart::ColorValueText(uint32_t color)
{
    const int r = ColorR(color);
    const int g = ColorG(color);
    const int b = ColorB(color);
    return QStringLiteral("RGB(%1, %2, %3)\n#%4").arg(r).arg(g).arg(b).arg(basTsMainPro::ColorToHex(r, g, b));
}

frmTsColorChart::frmTsColorChart(QWidget* parent)
    : QWidget(parent, Qt::Tool), ChartTarget(basTsMainPro::ChartTarget), ChartMode(basTsMainPro::ChartMode)
{
    setObjectName(QStringLiteral("frmTsColorChart"));
    setAttribute(Qt::WA_DeleteOnClose);

    switch (ChartMode) {
    case basTsMainPro::ColorChartMode::Palette256:
        Colors = Palette256Colors();
        setWindowTitle(tr("256-Color Palette"));
        break;
    case basTsMainPro::ColorChartMode::WebSafe:
        Colors = WebSafeColors();
        GridColumns = WebSafeColumns;
        setWindowTitle(tr("Web-Safe Colors"));
        break;
    case basTsMainPro::ColorChartMode::Chart:
        Colors = ChartColors();
        GridColumns = ChartColumns;
        setWindowTitle(tr("Color Chart"));
        break;
    case basTsMainPro::ColorChartMode::PictureOwn:
        Colors = ReadJascPalette(basTsMainPro::ChartPaletteFile);
        setWindowTitle(tr("Picture Palette"));
        break;
    }
    GridCell = ChartWidth / GridColumns;

    lblTarget = new QLabel(this);
    lblTarget->setObjectName(QStringLiteral("lblTarget"));
    picChart = new QWidget(this);
    picChart->setObjectName(QStringLiteral("picChart"));
    picChart->setMouseTracking(true);
    picChart->setCursor(Qt::PointingHandCursor);
    const int rows = (CellCount() + GridColumns - 1) / GridColumns;
    picChart->setFixedSize(GridColumns * GridCell + 1, std::max(rows * GridCell + 1, 3 * GridCell));
    picChart->installEventFilter(this);
    lblColorValue = new QLabel(this);
    lblColorValue->setObjectName(QStringLiteral("lblColorValue"));
    lblColorValue->setTextInteractionFlags(Qt::TextSelectableByMouse);
    lblColorValue->setMinimumHeight(2 * lblColorValue->fontMetrics().lineSpacing());
    cmdClose = new QPushButton(tr("&Close"), this);
    cmdClose->setObjectName(QStringLiteral("cmdClose"));
    connect(cmdClose, &QPushButton::clicked, this, &QWidget::close);
    auto* escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, &QWidget::close);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addWidget(lblTarget);
    layout->addWidget(picChart, 0, Qt::AlignHCenter);
    layout->addWidget(lblColorValue);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdClose);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    ShowTargetCaption();
}

void frmTsColorChart::Register()
{
    basTsMainPro::RegisterFormFactory(QStringLiteral("frmTsColorChart"),
                                      [] { return new frmTsColorChart(frmTsMainPro::Instance()); });
}

uint32_t frmTsColorChart::CellColor(int index) const
{
    return index >= 0 && index < CellCount() ? Colors[static_cast<size_t>(index)] : 0;
}

QRect frmTsColorChart::CellRect(int index) const
{
    if (index < 0 || index >= CellCount())
        return {};
    return {(index % GridColumns) * GridCell, (index / GridColumns) * GridCell, GridCell, GridCell};
}

int frmTsColorChart::CellAt(QPoint point) const
{
    if (point.x() < 0 || point.y() < 0 || GridCell <= 0)
        return -1;
    const int col = point.x() / GridCell;
    const int row = point.y() / GridCell;
    if (col >= GridColumns)
        return -1;
    const int index = row * GridColumns + col;
    return index < CellCount() ? index : -1;
}

void frmTsColorChart::ShowTargetCaption()
{
    lblTarget->setText(ChartTarget == basTsMainPro::ColorChartTarget::First    ? tr("For: first color")
                       : ChartTarget == basTsMainPro::ColorChartTarget::Second ? tr("For: second color")
                                                                               : tr("For: Bezier fill color"));
    lblColorValue->setText(ColorValueText(CurrentColor(ChartTarget)));
}

void frmTsColorChart::PaintChart()
{
    QPainter painter(picChart);
    if (Colors.empty()) {
        painter.setPen(palette().color(QPalette::Mid));
        painter.drawRect(picChart->rect().adjusted(0, 0, -1, -1));
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(picChart->rect(), Qt::AlignCenter, tr("No colors"));
        return;
    }
    const QColor gridLine = palette().color(QPalette::Mid);
    const uint32_t current = CurrentColor(ChartTarget);
    int marked = -1;
    for (int i = 0; i < CellCount(); ++i) {
        const QRect cell = CellRect(i);
        painter.fillRect(cell.adjusted(0, 0, 1, 1), gridLine);
        painter.fillRect(cell.adjusted(1, 1, 0, 0), ToQColor(Colors[static_cast<size_t>(i)]));
        if (marked < 0 && Colors[static_cast<size_t>(i)] == current)
            marked = i;
    }
    // The colour in use and the one under the pointer get a frame that shows on any colour.
    for (const int cell : {marked, HoverCell}) {
        if (cell < 0)
            continue;
        const QRect r = CellRect(cell);
        painter.setPen(Qt::black);
        painter.drawRect(r);
        painter.setPen(Qt::white);
        painter.drawRect(r.adjusted(1, 1, -1, -1));
    }
}

void frmTsColorChart::picChart_MouseMove(QPoint point)
{
    const int cell = CellAt(point);
    if (cell == HoverCell)
        return;
    HoverCell = cell;
    if (cell >= 0)
        lblColorValue->setText(ColorValueText(CellColor(cell)));
    else
        ShowTargetCaption();
    picChart->update();
}

void frmTsColorChart::picChart_Click(QPoint point)
{
    const int cell = CellAt(point);
    if (cell < 0)
        return;
    basTsMainPro::SetChartColor(ChartTarget, CellColor(cell));
    if (frmTsMainPro* frame = frmTsMainPro::Instance())
        frame->updateColorToUse();
    picChart->update();
}

bool frmTsColorChart::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != picChart)
        return QWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::Paint:
        PaintChart();
        return true;
    case QEvent::MouseMove:
        picChart_MouseMove(static_cast<QMouseEvent*>(event)->position().toPoint());
        return true;
    case QEvent::MouseButtonPress: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() == Qt::LeftButton)
            picChart_Click(mouse->position().toPoint());
        return true;
    }
    case QEvent::Leave:
        picChart_MouseMove(QPoint(-1, -1));
        return false;
    default:
        return false;
    }
}

QRect frmTsColorChart::AvailableScreen() const
{
    const QScreen* shown = screen() ? screen() : QGuiApplication::primaryScreen();
    return shown ? shown->availableGeometry() : QRect(0, 0, 1024, 768);
}

void frmTsColorChart::PlaceOnScreen()
{
    const basSettings::ColorChartPos stored = basSettings::ReadColorChartPos(basSettings::SettingsFilePath());
    if (stored.Left == -1 && stored.Top == -1) {
        // Never placed before: beside the frame's centre, or wherever the window manager puts it.
        if (QWidget* owner = parentWidget())
            move(owner->frameGeometry().center() - QPoint(width() / 2, height() / 2));
        return;
    }
    const QRect screenArea = AvailableScreen();
    const basSettings::ColorChartPos pos =
        basSettings::ClampColorChartPos(stored, (screenArea.x() + screenArea.width()) * TwipsPerPixel,
                                        (screenArea.y() + screenArea.height()) * TwipsPerPixel);
    move(pos.Left / TwipsPerPixel, pos.Top / TwipsPerPixel);
}

void frmTsColorChart::SavePosition()
{
    const QRect screenArea = AvailableScreen();
    const basSettings::ColorChartPos pos = basSettings::ClampColorChartPos(
        {PixelsToTwips(x()), PixelsToTwips(y())}, (screenArea.x() + screenArea.width()) * TwipsPerPixel,
        (screenArea.y() + screenArea.height()) * TwipsPerPixel);
    basSettings::WriteColorChartPos(pos, basSettings::SettingsFilePathForWriting());
}

void frmTsColorChart::showEvent(QShowEvent* event)
{
    if (!Placed) {
        Placed = true;
        adjustSize();
        PlaceOnScreen();
    }
    QWidget::showEvent(event);
}

void frmTsColorChart::closeEvent(QCloseEvent* event)
{
    if (Placed)
        SavePosition();
    QWidget::closeEvent(event);
}
