// The toolbox: tool images, brush size, colour boxes and the ten option panels. Each control
// tells the active document window by name; the document keeps the value in its canvas.
#include "frmTsMainPro.h"

#include "basMath.h"
#include "basMsgBox.h"
#include "basTsMainPro.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QDockWidget>
#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QIcon>
#include <QLabel>
#include <QMouseEvent>
#include <QRadioButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

const char* const ToolIcons[frmTsMainPro::ToolCount] = {
    "tool_00_paint",     "tool_01_erase",         "tool_02_fill",           "tool_03_polygon",
    "tool_04_line",      "tool_05_arc",           "tool_06_bezier",         "tool_07_bezier_filled",
    "tool_08_rectangle", "tool_09_rectangle_filled", "tool_10_oval",        "tool_11_oval_filled",
    "tool_12_stamp",     "tool_13_spray",         "tool_14_select_rect",    "tool_15_select_oval",
    "tool_16_replace_color", "tool_17_color_picker", "tool_18_clear_tools"};

const char* const ToolTips[frmTsMainPro::ToolCount] = {
    "Paint  (+Shift if straight vertically,  or +Ctrl if straight horizontally)",
    "Erase  (+Shift if straight vertically,  or +Ctrl if straight horizontally)",
    "Fill ",
    "Polygon",
    "Line (+Shift key if for a straight vertical, horizontal or diagonal line )",
    "Arc (Click 3 points to form an arc.   You may drag to change size before releasing mouse for last point.  +Shift if chord wanted.)",
    "Bezier curve",
    "Filled Bezier curve",
    "Rectangle   (+Shift key if for perfect square)",
    "Filled Rectangle   (+Shift key if for perfect square)",
    "Oval (+Shift key if for perfect circle)",
    "Filled Oval (+Shift key if for perfect circle)",
    "Stamp",
    "Spray",
    "Select region (+Shift if for perfect square)",
    "Select oval region (+Shift if for perfect circle)",
    "Replace painted color",
    "Color picker (Left click on image for first color,  right click for 2nd)",
    "Clear all tools"};

const char* const PanelTitles[frmTsMainPro::OptionPanelCount] = {
    "Paint brush style", "Fill pattern",           "Polygon draw option", "Line type",
    "Filled Bezier color", "Rectangle corner shape", "Oval enhancement",  "Stamp source",
    "Spray option",      "Region extra option"};

// An empty framed box that shows a loaded brush, pattern or stamp.
QLabel* PreviewBox(QWidget* parent, const QString& name, int side)
{
    auto* box = new QLabel(parent);
    box->setObjectName(name);
    box->setFixedSize(side, side);
    box->setFrameShape(QFrame::StyledPanel);
    return box;
}

QComboBox* NamedCombo(QWidget* parent, const QString& name)
{
    auto* combo = new QComboBox(parent);
    combo->setObjectName(name);
    return combo;
}

QLabel* ColorBox(QWidget* parent, const QString& name, const QString& tip)
{
    auto* box = new QLabel(parent);
    box->setObjectName(name);
    box->setToolTip(tip);
    box->setFrameShape(QFrame::Box);
    box->setAutoFillBackground(true);
    box->setCursor(Qt::PointingHandCursor);
    return box;
}

// A column of options, each a radio button with its sample image beside it; a click on the image
// chooses the option as a click on the button does.
void AddImageOptions(QGroupBox* panel, QGridLayout* grid, int count, const QString& optName, const QString& imgName,
                     const QString& iconPrefix, const QStringList& tips, std::vector<QRadioButton*>& options,
                     std::vector<QToolButton*>& images, int columns = 2)
{
    auto* group = new QButtonGroup(panel);
    for (int i = 0; i < count; ++i) {
        auto* option = new QRadioButton(panel);
        option->setObjectName(QStringLiteral("%1_%2").arg(optName).arg(i));
        option->setToolTip(tips.value(i));
        // Only the indicator, so the button is its indicator's size and a click anywhere on it counts.
        option->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
        group->addButton(option, i);
        options.push_back(option);
        const int row = i / columns;
        const int column = (i % columns) * 2;
        grid->addWidget(option, row, column);
        QToolButton* image = frmTsMainPro::ImageButton(panel, QStringLiteral("%1_%2").arg(imgName).arg(i),
                                                       QStringLiteral("%1_%2").arg(iconPrefix).arg(i), tips.value(i),
                                                       QSize(32, 16));
        images.push_back(image);
        grid->addWidget(image, row, column + 1);
    }
    if (!options.empty())
        options.front()->setChecked(true);
}

} // namespace

QToolButton* frmTsMainPro::ImageButton(QWidget* parent, const QString& name, const QString& icon, const QString& tip,
                                       QSize iconSize)
{
    auto* button = new QToolButton(parent);
    button->setObjectName(name);
    button->setIcon(QIcon(QStringLiteral(":/icons/%1.svg").arg(icon)));
    button->setIconSize(iconSize);
    button->setToolTip(tip);
    button->setAutoRaise(true);
    return button;
}

void frmTsMainPro::BuildToolbox()
{
    auto* dock = new QDockWidget(tr("Toolbox"), this);
    dock->setObjectName(QStringLiteral("dockToolbox"));
    dock->setFeatures(QDockWidget::NoDockWidgetFeatures);
    dock->setTitleBarWidget(new QWidget(dock));
    auto* box = new QWidget(dock);
    box->setObjectName(QStringLiteral("picToolbox"));
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->setSpacing(6);

    auto* top = new QHBoxLayout;
    auto* tools = new QGridLayout;
    tools->setSpacing(1);
    for (int i = 0; i < ToolCount; ++i) {
        QToolButton* tool = ImageButton(box, QStringLiteral("imgTools_%1").arg(i), QString::fromLatin1(ToolIcons[i]),
                                        QString::fromLatin1(ToolTips[i]));
        tool->setCheckable(true);
        tool->setFixedSize(30, 30);
        tools->addWidget(tool, i / 2, i % 2);
        imgTools.push_back(tool);
    }
    top->addLayout(tools);
    top->addSpacing(6);

    auto* right = new QVBoxLayout;
    right->setSpacing(4);
    auto* sizeRow = new QHBoxLayout;
    auto* sizeLabel = new QLabel(tr("Size"), box);
    sizeLabel->setObjectName(QStringLiteral("lblBrushSize"));
    cboBrushSize = NamedCombo(box, QStringLiteral("cboBrushSize"));
    cboBrushSize->setToolTip(tr("Brush size in pixels"));
    sizeLabel->setBuddy(cboBrushSize);
    sizeRow->addWidget(sizeLabel);
    sizeRow->addWidget(cboBrushSize, 1);
    right->addLayout(sizeRow);

    // The first colour's box overlaps the second's, as painters expect.
    auto* well = new QWidget(box);
    well->setObjectName(QStringLiteral("picColorWell"));
    well->setFixedSize(64, 58);
    picColorToUse.push_back(ColorBox(well, QStringLiteral("picColorToUse_0"),
                                     tr("First color: left click for its value, right click to swap")));
    picColorToUse.push_back(ColorBox(well, QStringLiteral("picColorToUse_1"),
                                     tr("Second color: left click for its value, right click to swap")));
    picColorToUse[1]->setGeometry(22, 20, 34, 34);
    picColorToUse[0]->setGeometry(2, 2, 34, 34);
    picColorToUse[0]->raise();
    imgSwapColor = ImageButton(well, QStringLiteral("imgSwapColor"), QStringLiteral("swap_color"),
                               tr("Swap first and second colors"), QSize(16, 16));
    imgSwapColor->setGeometry(40, 0, 20, 20);
    right->addWidget(well, 0, Qt::AlignHCenter);

    auto* paletteRows = new QGridLayout;
    paletteRows->setSpacing(1);
    const QString targets[2] = {tr("2nd"), tr("1st")};
    for (int i : {1, 0}) {
        const int row = 1 - i;
        paletteRows->addWidget(new QLabel(targets[i], box), row, 0);
        cmdPalette256.insert(cmdPalette256.begin(), nullptr);
        cmdPaletteWebSafe.insert(cmdPaletteWebSafe.begin(), nullptr);
        cmdColorChart.insert(cmdColorChart.begin(), nullptr);
    }
    for (int i = 0; i < 2; ++i) {
        const int row = 1 - i;
        cmdPalette256[i] = ImageButton(box, QStringLiteral("cmdPalette256_%1").arg(i), QStringLiteral("palette_256"),
                                       i == 1 ? tr("First color from the picture's palette (256 colors)")
                                              : tr("Second color from the picture's palette (256 colors)"), QSize(16, 16));
        cmdPaletteWebSafe[i] = ImageButton(box, QStringLiteral("cmdPaletteWebSafe_%1").arg(i), QStringLiteral("palette_websafe"),
                                           i == 1 ? tr("First color from the web-safe palette")
                                                  : tr("Second color from the web-safe palette"), QSize(16, 16));
        cmdColorChart[i] = ImageButton(box, QStringLiteral("cmdColorChart_%1").arg(i), QStringLiteral("color_chart"),
                                       i == 1 ? tr("First color from the color chart")
                                              : tr("Second color from the color chart"), QSize(16, 16));
        paletteRows->addWidget(cmdPalette256[i], row, 1);
        paletteRows->addWidget(cmdPaletteWebSafe[i], row, 2);
        paletteRows->addWidget(cmdColorChart[i], row, 3);
    }
    right->addLayout(paletteRows);
    right->addStretch(1);
    top->addLayout(right, 1);
    layout->addLayout(top);

    BuildOptionPanels(layout);
    layout->addStretch(1);

    // The marker over the pressed tool; it lets clicks through to the tool.
    shpTool = new QFrame(box);
    shpTool->setObjectName(QStringLiteral("shpTool"));
    shpTool->setFrameShape(QFrame::Box);
    shpTool->setLineWidth(2);
    shpTool->setStyleSheet(QStringLiteral("QFrame#shpTool { border: 2px solid palette(highlight); background: transparent; }"));
    shpTool->setAttribute(Qt::WA_TransparentForMouseEvents);
    shpTool->hide();

    dock->setWidget(box);
    box->setFixedWidth(200);
    addDockWidget(Qt::LeftDockWidgetArea, dock);
}

void frmTsMainPro::BuildOptionPanels(QVBoxLayout* layout)
{
    QWidget* box = layout->parentWidget();
    for (int i = 0; i < OptionPanelCount; ++i) {
        auto* panel = new QGroupBox(tr(PanelTitles[i]), box);
        panel->setObjectName(QStringLiteral("fraOption_%1").arg(i));
        panel->hide();
        fraOption.push_back(panel);
        layout->addWidget(panel);
    }

    // 0: paint brush style.
    {
        QGroupBox* panel = fraOption[0];
        auto* v = new QVBoxLayout(panel);
        auto* grid = new QGridLayout;
        AddImageOptions(panel, grid, 9, QStringLiteral("optBrushStyle"), QStringLiteral("imgBrushStyle"),
                        QStringLiteral("brush_style"),
                        {tr("Normal"), tr("Round"), tr("Forward diagonal"), tr("Backward diagonal"), tr("Horizontal"),
                         tr("Vertical"), tr("Smoothed round"), tr("Spray"), tr("Custom")},
                        optBrushStyle, imgBrushStyle);
        v->addLayout(grid);
        auto* custom = new QHBoxLayout;
        cmdCustomBrush = ImageButton(panel, QStringLiteral("cmdCustomBrush"), QStringLiteral("custom_brush"),
                                     tr("Load a custom brush"));
        picCustomBrush = PreviewBox(panel, QStringLiteral("picCustomBrush"), 32);
        cboCustomBrushShape = NamedCombo(panel, QStringLiteral("cboCustomBrushShape"));
        cboCustomBrushShape->setToolTip(tr("Shape of the custom brush"));
        custom->addWidget(cmdCustomBrush);
        custom->addWidget(picCustomBrush);
        custom->addWidget(cboCustomBrushShape, 1);
        v->addLayout(custom);
        auto* opaque = new QHBoxLayout;
        lblBrush = new QLabel(tr("Opaque %"), panel);
        lblBrush->setObjectName(QStringLiteral("lblBrush"));
        cboPaintBrushTranslucencyPercent = NamedCombo(panel, QStringLiteral("cboPaintBrushTranslucencyPercent"));
        lblBrush->setBuddy(cboPaintBrushTranslucencyPercent);
        opaque->addWidget(lblBrush);
        opaque->addWidget(cboPaintBrushTranslucencyPercent, 1);
        v->addLayout(opaque);
    }
    // 1: fill pattern.
    {
        QGroupBox* panel = fraOption[1];
        auto* v = new QVBoxLayout(panel);
        auto* grid = new QGridLayout;
        AddImageOptions(panel, grid, 10, QStringLiteral("optFillPattern"), QStringLiteral("imgPatternOption"),
                        QStringLiteral("fill_pattern"),
                        {tr("Solid"), tr("Dot style 1"), tr("Dot style 2"), tr("Horizontal line"), tr("Vertical line"),
                         tr("Forward diagonal"), tr("Backward diagonal"), tr("Cross"), tr("Diagonal cross"), tr("Custom")},
                        optFillPattern, imgPatternOption);
        v->addLayout(grid);
        auto* custom = new QHBoxLayout;
        cmdCustomPattern = ImageButton(panel, QStringLiteral("cmdCustomPattern"), QStringLiteral("custom_pattern"),
                                       tr("Load a custom pattern"));
        picCustomPattern = PreviewBox(panel, QStringLiteral("picCustomPattern"), 32);
        custom->addWidget(cmdCustomPattern);
        custom->addWidget(picCustomPattern);
        custom->addStretch(1);
        v->addLayout(custom);
    }
    // 2: polygon.
    {
        QGroupBox* panel = fraOption[2];
        auto* grid = new QGridLayout(panel);
        cboPolygonOperationType = NamedCombo(panel, QStringLiteral("cboPolygonOperationType"));
        grid->addWidget(cboPolygonOperationType, 0, 0, 1, 2);
        auto* group = new QButtonGroup(panel);
        const QString methods[2] = {tr("Auto"), tr("Manual")};
        const char* const methodIcons[2] = {"polygon_auto", "polygon_manual"};
        for (int i = 0; i < 2; ++i) {
            auto* option = new QRadioButton(methods[i], panel);
            option->setObjectName(QStringLiteral("optPolygonDrawMethod_%1").arg(i));
            option->setIcon(QIcon(QStringLiteral(":/icons/%1.svg").arg(QString::fromLatin1(methodIcons[i]))));
            option->setIconSize(QSize(32, 16));
            group->addButton(option, i);
            grid->addWidget(option, 1, i);
            optPolygonDrawMethod.push_back(option);
        }
        optPolygonDrawMethod[0]->setChecked(true);
        const QString captions[4] = {tr("No. of angles/sides"), tr("Distance from center (pixels)"),
                                     tr("(Set only if for concave)"), tr("Rotate polygon (degrees)")};
        for (int i = 0; i < 4; ++i) {
            auto* label = new QLabel(captions[i], panel);
            label->setObjectName(QStringLiteral("lblPolygonSetting_%1").arg(i));
            label->setWordWrap(true);
            QComboBox* combo = NamedCombo(panel, QStringLiteral("cboPolygonSetting_%1").arg(i));
            label->setBuddy(combo);
            combo->setToolTip(captions[i]);
            grid->addWidget(label, 2 + i, 0);
            grid->addWidget(combo, 2 + i, 1);
            cboPolygonSetting.push_back(combo);
        }
    }
    // 3: line type.
    {
        QGroupBox* panel = fraOption[3];
        auto* grid = new QGridLayout(panel);
        AddImageOptions(panel, grid, 9, QStringLiteral("optLineType"), QStringLiteral("imgToolOptionLine"),
                        QStringLiteral("line_type"),
                        {tr("Solid (non-square brush)"), tr("Solid (square brush)"), tr("Dash"), tr("Dot"),
                         tr("Dash dot"), tr("Dash dot dot"), tr("Arrow at one end"), tr("Arrows at both ends"),
                         QStringLiteral("Antialiased line  (fixed brush at 2 only)")},
                        optLineType, imgToolOptionLine);
    }
    // 4: filled Bezier colour.
    {
        QGroupBox* panel = fraOption[4];
        auto* row = new QHBoxLayout(panel);
        picColorToUse.push_back(ColorBox(panel, QStringLiteral("picColorToUse_2"),
                                         tr("Fill color of the Bezier curve: left click for its value, right click to take the first color")));
        picColorToUse[2]->setFixedSize(34, 34);
        cmdPaletteWebSafe.push_back(ImageButton(panel, QStringLiteral("cmdPaletteWebSafe_2"),
                                                QStringLiteral("palette_websafe"), tr("Fill color from the web-safe palette"),
                                                QSize(16, 16)));
        cmdColorChart.push_back(ImageButton(panel, QStringLiteral("cmdColorChart_2"), QStringLiteral("color_chart"),
                                            tr("Fill color from the color chart"), QSize(16, 16)));
        row->addWidget(picColorToUse[2]);
        row->addWidget(cmdPaletteWebSafe[2]);
        row->addWidget(cmdColorChart[2]);
        row->addStretch(1);
    }
    // 5: rectangle corners.
    {
        QGroupBox* panel = fraOption[5];
        auto* grid = new QGridLayout(panel);
        AddImageOptions(panel, grid, 4, QStringLiteral("optRectangleCornerShape"), QStringLiteral("imgRectangleOption"),
                        QStringLiteral("rect_corner"),
                        {tr("Normal"), tr("Small rounded"), tr("Medium rounded"), tr("Large rounded")},
                        optRectangleCornerShape, imgRectangleOption);
    }
    // 6: oval.
    {
        QGroupBox* panel = fraOption[6];
        auto* grid = new QGridLayout(panel);
        auto* group = new QButtonGroup(panel);
        const QString captions[2] = {tr("Normal"), tr("Antialiasing")};
        for (int i = 0; i < 2; ++i) {
            auto* option = new QRadioButton(captions[i], panel);
            option->setObjectName(QStringLiteral("optOvalEnhancement_%1").arg(i));
            option->setIcon(QIcon(QStringLiteral(":/icons/oval_%1.svg").arg(i)));
            option->setIconSize(QSize(32, 16));
            group->addButton(option, i);
            grid->addWidget(option, i, 0);
            optOvalEnhancement.push_back(option);
        }
        optOvalEnhancement[0]->setChecked(true);
    }
    // 7: stamp.
    {
        QGroupBox* panel = fraOption[7];
        auto* row = new QHBoxLayout(panel);
        cmdStampLoad.push_back(ImageButton(panel, QStringLiteral("cmdStampLoad_0"), QStringLiteral("stamp_text"),
                                           tr("Make a stamp from text")));
        cmdStampLoad.push_back(ImageButton(panel, QStringLiteral("cmdStampLoad_1"), QStringLiteral("stamp_image"),
                                           tr("Load a stamp from a picture")));
        picStamp = PreviewBox(panel, QStringLiteral("picStamp"), 48);
        row->addWidget(cmdStampLoad[0]);
        row->addWidget(cmdStampLoad[1]);
        row->addWidget(picStamp);
        row->addStretch(1);
    }
    // 8: spray.
    {
        QGroupBox* panel = fraOption[8];
        auto* grid = new QGridLayout(panel);
        cboSprayDensity = NamedCombo(panel, QStringLiteral("cboSprayDensity"));
        cboSprayTranslucencyPercent = NamedCombo(panel, QStringLiteral("cboSprayTranslucencyPercent"));
        auto* density = new QLabel(tr("Density"), panel);
        density->setBuddy(cboSprayDensity);
        auto* opaque = new QLabel(tr("Opaque %"), panel);
        opaque->setBuddy(cboSprayTranslucencyPercent);
        grid->addWidget(density, 0, 0);
        grid->addWidget(cboSprayDensity, 0, 1);
        grid->addWidget(opaque, 1, 0);
        grid->addWidget(cboSprayTranslucencyPercent, 1, 1);
    }
    // 9: region extras.
    {
        QGroupBox* panel = fraOption[9];
        auto* row = new QHBoxLayout(panel);
        cmdRegionOperation.push_back(ImageButton(panel, QStringLiteral("cmdRegionOperation_0"),
                                                 QStringLiteral("region_border"), tr("Create border of region")));
        cmdRegionOperation.push_back(ImageButton(panel, QStringLiteral("cmdRegionOperation_1"),
                                                 QStringLiteral("region_shadow"), tr("Add dropdown shadow to region")));
        row->addWidget(cmdRegionOperation[0]);
        row->addWidget(cmdRegionOperation[1]);
        row->addStretch(1);
    }
}

void frmTsMainPro::FillComboBoxes()
{
    for (int i = 1; i <= 20; ++i)
        cboBrushSize->addItem(QString::number(i));
    for (int i = 1; i <= 8; ++i)
        cboMagnify->addItem(QStringLiteral("%1 x 100 percent").arg(i));
    for (int i = 2; i <= 6; ++i)
        cboGlass->addItem(QStringLiteral("%1 x 100 percent").arg(i));
    for (int percent = 100; percent >= 20; percent -= 5) {
        cboPaintBrushTranslucencyPercent->addItem(QString::number(percent));
        cboSprayTranslucencyPercent->addItem(QString::number(percent));
    }
    cboSprayDensity->addItems({QStringLiteral("Low"), QStringLiteral("Medium"), QStringLiteral("High")});
    cboSprayDensity->setCurrentIndex(1);
    cboCustomBrushShape->addItems({QStringLiteral("As Oval"), QStringLiteral("Rectangle")});
    cboPolygonOperationType->addItems({QStringLiteral(" 1.    Outline"), QStringLiteral(" 2.    Filled"),
                                       QStringLiteral(" 3.    Clear inside"), QStringLiteral(" 4.    1 & Clipboard"),
                                       QStringLiteral(" 5.    2 & Clipboard"), QStringLiteral(" 6.    3 & Clipboard"),
                                       QStringLiteral(" 7.    1 & Crop"), QStringLiteral(" 8.    2 & Crop"),
                                       QStringLiteral(" 9.    3 & Crop")});
    // Vertices, radius, concave factor (1.0 is convex) and rotation.
    for (int n = 3; n <= 24; ++n)
        cboPolygonSetting[0]->addItem(QString::number(n));
    cboPolygonSetting[0]->setCurrentText(QStringLiteral("5"));
    for (int r = 10; r <= 400; r += 10)
        cboPolygonSetting[1]->addItem(QString::number(r));
    cboPolygonSetting[1]->setCurrentText(QStringLiteral("50"));
    for (int c = 1; c <= 10; ++c)
        cboPolygonSetting[2]->addItem(QString::number(c / 10.0, 'f', 1));
    cboPolygonSetting[2]->setCurrentIndex(9);
    for (int a = 0; a < 360; a += 15)
        cboPolygonSetting[3]->addItem(QString::number(a));
}

void frmTsMainPro::ConnectToolbox()
{
    for (int i = 0; i < ToolCount; ++i)
        connect(imgTools[i], &QToolButton::clicked, this, [this, i] { imgTools_Click(i); });
    for (QLabel* box : picColorToUse)
        box->installEventFilter(this);
    connect(imgSwapColor, &QToolButton::clicked, this, [this] { imgSwapColor_Click(); });
    for (int i = 0; i < 2; ++i) {
        connect(cmdPalette256[i], &QToolButton::clicked, this, [this, i] {
            if (ActiveChild()) {
                basTsMainPro::ChartTarget = static_cast<basTsMainPro::ColorChartTarget>(i);
                CallChild("do_cmdPalette256Click");
            } else {
                OpenColorChart(i, static_cast<int>(basTsMainPro::ColorChartMode::Palette256));
            }
        });
    }
    for (int i = 0; i < 3; ++i) {
        connect(cmdPaletteWebSafe[i], &QToolButton::clicked, this, [this, i] {
            OpenColorChart(i, static_cast<int>(basTsMainPro::ColorChartMode::WebSafe));
            if (i == 2)
                CallChild("Notify_BezierOp_FromMDI");
        });
        connect(cmdColorChart[i], &QToolButton::clicked, this, [this, i] {
            OpenColorChart(i, static_cast<int>(basTsMainPro::ColorChartMode::Chart));
            if (i == 2)
                CallChild("Notify_BezierOp_FromMDI");
        });
    }

    auto notify = [this](const char* name) {
        return [this, name] {
            if (!OptionEventsIgnored())
                CallChild(name);
        };
    };
    connect(cboBrushSize, &QComboBox::activated, this, notify("Notify_BrushSize_FromMDI"));
    connect(cboCustomBrushShape, &QComboBox::activated, this, notify("Notify_CustomBrushShape_FromMDI"));
    connect(cboPaintBrushTranslucencyPercent, &QComboBox::activated, this, notify("Notify_PaintBrushTranslucencyPercent"));
    connect(cboSprayDensity, &QComboBox::activated, this, notify("Notify_SprayDensity"));
    connect(cboSprayTranslucencyPercent, &QComboBox::activated, this, notify("Notify_SprayTranslucencyPercent"));
    connect(cboPolygonOperationType, &QComboBox::activated, this, notify("Notify_PolygonOperationType_FromMDI"));
    for (QComboBox* combo : cboPolygonSetting)
        connect(combo, &QComboBox::activated, this, notify("Notify_PolygonSetting_FromMDI"));
    for (QRadioButton* option : optPolygonDrawMethod)
        connect(option, &QRadioButton::clicked, this, notify("Notify_PolygonDrawMethod_FromMDI"));
    for (QRadioButton* option : optOvalEnhancement)
        connect(option, &QRadioButton::clicked, this, notify("Notify_OvalEnhancement_FromMDI"));

    auto pairOptions = [this, notify](std::vector<QRadioButton*>& options, std::vector<QToolButton*>& images,
                                      const char* name) {
        for (size_t i = 0; i < options.size(); ++i) {
            connect(options[i], &QRadioButton::clicked, this, notify(name));
            connect(images[i], &QToolButton::clicked, this, [this, option = options[i], name] {
                if (OptionEventsIgnored())
                    return;
                option->setChecked(true);
                CallChild(name);
            });
        }
    };
    pairOptions(optBrushStyle, imgBrushStyle, "Notify_BrushStyle_FromMDI");
    pairOptions(optFillPattern, imgPatternOption, "Notify_FillPattern_FromMDI");
    pairOptions(optLineType, imgToolOptionLine, "Notify_LineType_FromMDI");
    pairOptions(optRectangleCornerShape, imgRectangleOption, "Notify_RectangleCornerShape_FromMDI");

    connect(cmdCustomBrush, &QToolButton::clicked, this, [this] { CallChild("Do_cmdCustomBrushClick"); });
    connect(cmdCustomPattern, &QToolButton::clicked, this, [this] { CallChild("Do_cmdCustomPatternClick"); });
    for (int i = 0; i < 2; ++i) {
        connect(cmdStampLoad[i], &QToolButton::clicked, this, [this, i] { CallChild("Do_cmdStampLoadClick", i); });
        connect(cmdRegionOperation[i], &QToolButton::clicked, this, [this, i] { CallChild("Do_cmdRegionOperation", i); });
    }
}

void frmTsMainPro::imgTools_Click(int index)
{
    // Pressing is the document's business: it presses the image when it takes the tool.
    imgTools[index]->setChecked(!imgTools[index]->isChecked());
    CallChild("Do_imgToolsClick", index);
}

void frmTsMainPro::PressToolImage(int index)
{
    for (int i = 0; i < ToolCount; ++i)
        imgTools[i]->setChecked(i == index);
    if (index < 0 || index >= ToolCount)
        return;
    shpTool->setGeometry(imgTools[index]->geometry().adjusted(-1, -1, 1, 1));
    shpTool->show();
    shpTool->raise();
}

void frmTsMainPro::FlatAllToolsImages()
{
    for (QToolButton* tool : imgTools)
        tool->setChecked(false);
    shpTool->hide();
    shpTool->move(-100, -100);
    CallChild("Notify_SetScrollOp_FromMDI");
}

void frmTsMainPro::SetOptionFrame(int index)
{
    for (int i = 0; i < OptionPanelCount; ++i)
        fraOption[i]->setVisible(i == index);
}

void frmTsMainPro::updateColorToUse()
{
    const uint32_t colors[3] = {basTsMainPro::ColorFirst, basTsMainPro::ColorSecond, basTsMainPro::ColorBezierFill};
    for (int i = 0; i < 3; ++i) {
        QPalette palette = picColorToUse[i]->palette();
        palette.setColor(QPalette::Window, QColor(ColorR(colors[i]), ColorG(colors[i]), ColorB(colors[i])));
        picColorToUse[i]->setPalette(palette);
    }
    CallChild("Notify_ColorToUse_FromMDI");
    CallChild("Notify_BezierFillColor_FromMDI");
}

QString frmTsMainPro::ColorValueText(uint32_t color)
{
    const int r = ColorR(color);
    const int g = ColorG(color);
    const int b = ColorB(color);
    return QStringLiteral("RGB(%1, %2, %3)     HTML #%4 / h%5")
        .arg(r)
        .arg(g)
        .arg(b)
        .arg(basTsMainPro::ColorToHex(r, g, b))
        .arg(QStringLiteral("%1").arg(color, 6, 16, QLatin1Char('0')).toUpper());
}

void frmTsMainPro::picColorToUse_Click(int index, bool rightButton)
{
    if (!rightButton) {
        static const char* const labels[3] = {"Currently selected color for Paint/Fill/Shape ...:   ",
                                              "Second color for Paint/Fill/Shape ...:   ",
                                              "Currently selected color for Bezier curve:   "};
        const uint32_t colors[3] = {basTsMainPro::ColorFirst, basTsMainPro::ColorSecond, basTsMainPro::ColorBezierFill};
        basMsgBox::InputBox(QString::fromLatin1(labels[index]), QStringLiteral("Color Value:  "),
                            ColorValueText(colors[index]));
        return;
    }
    if (index == 2)
        basTsMainPro::ColorBezierFill = basTsMainPro::ColorFirst;
    else
        std::swap(basTsMainPro::ColorFirst, basTsMainPro::ColorSecond);
    updateColorToUse();
}

void frmTsMainPro::imgSwapColor_Click()
{
    std::swap(basTsMainPro::ColorFirst, basTsMainPro::ColorSecond);
    updateColorToUse();
}

void frmTsMainPro::OpenColorChart(int target, int mode)
{
    basTsMainPro::UnloadForm(QStringLiteral("frmTsColorChart"));
    basTsMainPro::ChartTarget = static_cast<basTsMainPro::ColorChartTarget>(target);
    basTsMainPro::ChartMode = static_cast<basTsMainPro::ColorChartMode>(mode);
    if (QWidget* chart = basTsMainPro::CreateForm(QStringLiteral("frmTsColorChart"))) {
        chart->show();
        chart->raise();
    }
}

bool frmTsMainPro::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::MouseButtonPress) {
        for (int i = 0; i < static_cast<int>(picColorToUse.size()); ++i) {
            if (watched != picColorToUse[i])
                continue;
            const auto* mouse = static_cast<QMouseEvent*>(event);
            picColorToUse_Click(i, mouse->button() == Qt::RightButton);
            return true;
        }
    }
    return QMainWindow::eventFilter(watched, event);
}
