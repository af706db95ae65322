// The toolbar, the status bar and the calls by name to the active document window.
#include "frmTsMainPro.h"

#include "basMsgBox.h"
#include "basTsMainPro.h"

#include <QCheckBox>
#include <QComboBox>
#include <QIcon>
#include <QLabel>
#include <QMdiArea>
#include <QMetaObject>
#include <QProgressBar>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>

namespace {

QToolButton* ToolbarButton(QToolBar* bar, const QString& name, const QString& icon, const QString& tip)
{
    QToolButton* button = frmTsMainPro::ImageButton(bar, name, icon, tip);
    bar->addWidget(button);
    return button;
}

// A document that lacks a command the frame relies on is a fault in that document.
void ReportMissingCommand(QWidget* child, const char* name)
{
    const QString text = QStringLiteral("Internal fault: the window \"%1\" does not answer to %2.")
                             .arg(child->objectName(), QString::fromLatin1(name));
    qCritical("%s", qPrintable(text));
    basMsgBox::MsgBox(text, basMsgBox::MsgBoxButtons::OK, basMsgBox::MsgBoxIcon::Critical);
}

} // namespace

void frmTsMainPro::BuildToolbar()
{
    QToolBar* bar = addToolBar(tr("Toolbar"));
    bar->setObjectName(QStringLiteral("tbToolBar"));
    bar->setMovable(false);
    bar->setIconSize(QSize(24, 24));

    cmdFileNew = ToolbarButton(bar, QStringLiteral("cmdFileNew"), QStringLiteral("file_new"), tr("New picture (Ctrl+N)"));
    cmdFileOpen = ToolbarButton(bar, QStringLiteral("cmdFileOpen"), QStringLiteral("file_open"), tr("Open picture (Ctrl+O)"));
    cmdFileBrowser = ToolbarButton(bar, QStringLiteral("cmdFileBrowser"), QStringLiteral("file_browser"), tr("File browser"));
    // Off like their menu entries while no paint document can be made.
    cmdFileNew->setEnabled(mnuFileNew->isEnabled());
    cmdFileOpen->setEnabled(mnuFileOpen->isEnabled());
    bar->addSeparator();

    const char* const editIcons[] = {"undo_all", "undo", "redo", "cut", "copy", "paste", "paste_transparent",
                                     "brighten", "darken"};
    const QString editTips[] = {tr("Undo all"), tr("Undo (Ctrl+Z)"), tr("Redo (Ctrl+Y)"), tr("Cut (Ctrl+X)"),
                                tr("Copy (Ctrl+C)"), tr("Paste (Ctrl+V)"), tr("Paste transparent"), tr("Brighten"),
                                tr("Darken")};
    for (int i = 0; i < 9; ++i) {
        if (i == 3 || i == 7)
            bar->addSeparator();
        cmdEditTB.push_back(ToolbarButton(bar, QStringLiteral("cmdEditTB_%1").arg(i),
                                          QString::fromLatin1(editIcons[i]), editTips[i]));
    }
    bar->addSeparator();

    const char* const zoomIcons[] = {"zoom_in", "zoom_out", "zoom_original"};
    const QString zoomTips[] = {tr("Zoom in (Ctrl++)"), tr("Zoom out (Ctrl+-)"), tr("Original size (Ctrl+0)")};
    for (int i = 0; i < 3; ++i)
        cmdZoom.push_back(ToolbarButton(bar, QStringLiteral("cmdZoom_%1").arg(i), QString::fromLatin1(zoomIcons[i]), zoomTips[i]));
    cmdZoom[0]->setShortcut(QKeySequence::ZoomIn);
    cmdZoom[1]->setShortcut(QKeySequence::ZoomOut);
    cmdZoom[2]->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_0));
    cboMagnify = new QComboBox(bar);
    cboMagnify->setObjectName(QStringLiteral("cboMagnify"));
    cboMagnify->setToolTip(tr("Magnification"));
    bar->addWidget(cboMagnify);
    ckbFitIn = new QCheckBox(tr("Fit in"), bar);
    ckbFitIn->setObjectName(QStringLiteral("ckbFitIn"));
    ckbFitIn->setToolTip(tr("Fit the picture in the window"));
    bar->addWidget(ckbFitIn);
    bar->addSeparator();
    cmdGlass = ToolbarButton(bar, QStringLiteral("cmdGlass"), QStringLiteral("glass"), tr("Magnifying glass"));
    cmdGlass->setCheckable(true);
    cboGlass = new QComboBox(bar);
    cboGlass->setObjectName(QStringLiteral("cboGlass"));
    cboGlass->setToolTip(tr("Magnification of the glass"));
    bar->addWidget(cboGlass);
    bar->addSeparator();
    cmdMode = ToolbarButton(bar, QStringLiteral("cmdMode"), QStringLiteral("mode_paint"), tr("Switch between view and paint mode"));
    imgUpperLeft = ToolbarButton(bar, QStringLiteral("imgUpperLeft"), QStringLiteral("upper_left"), tr("Go to the upper left corner"));
    imgLowerRight = ToolbarButton(bar, QStringLiteral("imgLowerRight"), QStringLiteral("lower_right"), tr("Go to the lower right corner"));
    imgPanoramic = ToolbarButton(bar, QStringLiteral("imgPanoramic"), QStringLiteral("panoramic"), tr("Panoramic view"));
}

void frmTsMainPro::BuildStatusBar()
{
    QStatusBar* bar = statusBar();
    bar->setObjectName(QStringLiteral("sbStatusBar"));
    const int widths[] = {0, 110, 110, 44};
    for (int i = 0; i < 4; ++i) {
        auto* panel = new QLabel(bar);
        panel->setObjectName(QStringLiteral("StatusPanel_%1").arg(i));
        panel->setFrameShape(QFrame::StyledPanel);
        panel->setFrameShadow(QFrame::Sunken);
        if (widths[i] > 0) {
            panel->setMinimumWidth(widths[i]);
            panel->setAlignment(Qt::AlignCenter);
            bar->addPermanentWidget(panel);
        } else {
            bar->addWidget(panel, 1);
        }
        StatusPanel.push_back(panel);
    }
    Progress = new QProgressBar(bar);
    Progress->setObjectName(QStringLiteral("Progress"));
    Progress->setRange(0, 100);
    Progress->setValue(0);
    Progress->setMaximumWidth(160);
    Progress->setTextVisible(false);
    bar->addPermanentWidget(Progress);
}

void frmTsMainPro::ConnectToolbar()
{
    connect(cmdFileNew, &QToolButton::clicked, this, [this] {
        if (ActiveChild())
            CallChild("Do_cmdFileNewClick");
        else if (mnuFileNew->isEnabled())
            mnuFileNew_Click();
    });
    connect(cmdFileOpen, &QToolButton::clicked, this, [this] {
        if (ActiveChild())
            CallChild("Do_cmdFileOpenClick");
        else if (mnuFileOpen->isEnabled())
            mnuFileOpen_Click();
    });
    connect(cmdFileBrowser, &QToolButton::clicked, this, [this] { CallChild("Do_cmdFileBrowserClick"); });

    const char* const editNames[] = {"mnuEditUndoAll_Click", "mnuEditUndo_Click", "mnuEditRedo_Click",
                                     "mnuEditCut_Click", "mnuEditCopy_Click", "mnuEditPaste_Click",
                                     "mnuEditPasteTransparent_Click"};
    for (int i = 0; i < 7; ++i)
        connect(cmdEditTB[i], &QToolButton::clicked, this, [this, name = editNames[i]] { CallChild(name); });
    // Brighten and Darken are the first two entries of the effects menu.
    connect(cmdEditTB[7], &QToolButton::clicked, this, [this] { CallChild("Do_mnuEffectsSubClick", 0); });
    connect(cmdEditTB[8], &QToolButton::clicked, this, [this] { CallChild("Do_mnuEffectsSubClick", 1); });

    for (int i = 0; i < 3; ++i)
        connect(cmdZoom[i], &QToolButton::clicked, this, [this, i] { CallChild("Do_cmdZoomClick", i); });
    connect(ckbFitIn, &QCheckBox::clicked, this, [this] { CallChild("Do_ckbFitInClick"); });
    connect(cmdGlass, &QToolButton::clicked, this, [this] { cmdGlass_Click(); });
    connect(cboMagnify, &QComboBox::activated, this, [this] {
        if (!OptionEventsIgnored())
            CallChild("Do_cboMagnifyClick");
    });
    connect(cboGlass, &QComboBox::activated, this, [this] {
        if (!OptionEventsIgnored())
            CallChild("Do_cboGlassClick");
    });
    connect(cmdMode, &QToolButton::clicked, this, [this] {
        for (const char* name : {"UpdateAllowableMenusForScreenMode", "Do_UpdateZoomButtons",
                                 "Do_UpdateGlassButton", "Do_UpdateModeChange"}) {
            if (!CallChild(name))
                break;
        }
    });
    connect(imgUpperLeft, &QToolButton::clicked, this, [this] { CallChild("Do_imgUpperLeftClick"); });
    connect(imgLowerRight, &QToolButton::clicked, this, [this] { CallChild("Do_imgLowerRightClick"); });
    connect(imgPanoramic, &QToolButton::clicked, this, [this] { CallChild("Do_imgPanoramicClick"); });
}

void frmTsMainPro::cmdGlass_Click()
{
    CallChild("Do_cmdGlassClick");
}

void frmTsMainPro::MDI_disableAllButtonsOnToolBar()
{
    SetDocumentToolBarEnabled(false);
    cmdGlass->setChecked(false);
    if (!StatusPanel.empty()) {
        StatusPanel[0]->clear();
        StatusPanel[1]->clear();
        StatusPanel[2]->clear();
    }
    if (Progress)
        Progress->setValue(0);
}

void frmTsMainPro::SetDocumentToolBarEnabled(bool enabled)
{
    // With a document the buttons come on; the document narrows them to what its picture allows.
    for (QToolButton* button : cmdEditTB)
        button->setEnabled(enabled);
    for (QToolButton* button : cmdZoom)
        button->setEnabled(enabled);
    for (QWidget* control : std::initializer_list<QWidget*>{cmdGlass, cboMagnify, cboGlass, ckbFitIn, cmdMode,
                                                            imgUpperLeft, imgLowerRight, imgPanoramic, cmdFileBrowser})
        control->setEnabled(enabled);
}

bool frmTsMainPro::OptionEventsIgnored() const
{
    return Loading;
}

bool frmTsMainPro::InvokeOnChild(const char* name, QGenericArgument first, QGenericArgument second)
{
    QWidget* child = ActiveChild();
    if (child == nullptr)
        return true;
    if (QMetaObject::invokeMethod(child, name, Qt::DirectConnection, first, second))
        return true;
    ReportMissingCommand(child, name);
    return false;
}

bool frmTsMainPro::CallChild(const char* name)
{
    return InvokeOnChild(name, QGenericArgument(), QGenericArgument());
}

bool frmTsMainPro::CallChild(const char* name, int index)
{
    return InvokeOnChild(name, Q_ARG(int, index), QGenericArgument());
}

bool frmTsMainPro::CallChild(const char* name, const QString& path, int mode)
{
    return InvokeOnChild(name, Q_ARG(QString, path), Q_ARG(int, mode));
}
