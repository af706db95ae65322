// The frame's life: load order, first activation, files from the command line, closing.
#include "frmTsMainPro.h"

#include "basFileHistory.h"
#include "basMsgBox.h"
#include "basSettings.h"
#include "basTsMainPro.h"

#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMenuBar>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMimeData>
#include <QPointer>
#include <QScreen>
#include <QStatusBar>
#include <QTimer>
#include <QUrl>

using basMsgBox::MsgBox;
using basMsgBox::MsgBoxButtons;
using basMsgBox::MsgBoxIcon;
using basMsgBox::MsgBoxResult;

namespace {

frmTsMainPro*& TheFrame()
{
    static frmTsMainPro* frame = nullptr;
    return frame;
}

QString IniFile()
{
    return basSettings::SettingsFilePath();
}

} // namespace

static void InitResources()
{
    Q_INIT_RESOURCE(tessavo);
}

frmTsMainPro::frmTsMainPro(const QString& commandLine, QWidget* parent)
    : QMainWindow(parent), CommandLine(commandLine)
{
    InitResources();
    TheFrame() = this;
    setObjectName(QStringLiteral("frmTsMainPro"));
    setWindowTitle(QString::fromUtf8(basTsMainPro::ProductTitle));
    setAcceptDrops(true);

    MdiArea = new QMdiArea(this);
    MdiArea->setObjectName(QStringLiteral("MdiArea"));
    MdiArea->setViewMode(QMdiArea::SubWindowView);
    setCentralWidget(MdiArea);
    connect(MdiArea, &QMdiArea::subWindowActivated, this, [this](QMdiSubWindow* sub) {
        if (sub == nullptr && MdiArea->subWindowList().isEmpty())
            MDI_disableAllButtonsOnToolBar();
        else if (sub != nullptr)
            SetDocumentToolBarEnabled(true);
        if (sub != nullptr || MdiArea->subWindowList().isEmpty())
            ShowMenusOf(sub ? sub->widget() : nullptr);
    });

    // The address later starts hand their file names to.
    txbCommandHidden = new QLineEdit(this);
    txbCommandHidden->setObjectName(QStringLiteral("txbCommandHidden"));
    txbCommandHidden->hide();
    connect(txbCommandHidden, &QLineEdit::textChanged, this, [this] { txbCommandHidden_Change(); });

    // 1. Option events ignore what loading does.
    Loading = true;
    // 2. The picture loader needs no start-up call here; a failure cannot happen.
    BuildMenus();
    BuildToolbar();
    // 3. Tool marker and lists.
    BuildToolbox();
    FillComboBoxes();
    // 4.
    MDI_disableAllButtonsOnToolBar();
    BuildStatusBar();
    ConnectToolbar();
    ConnectToolbox();
    // 5 to 9.
    ReadSettingsOnLoad();
    // 10. Document menus stay hidden: documents bring their own menu bars.
    for (QMenu* menu : DocumentMenus)
        menu->menuAction()->setVisible(false);
    // 11.
    Loading = false;

    const QSize minimum(MinimumWidthPixels, MinimumHeightPixels);
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        const QSize available = screen->availableSize();
        resize(std::max(minimum.width(), available.width() * 4 / 5), std::max(minimum.height(), available.height() * 4 / 5));
    } else {
        resize(minimum);
    }
    updateColorToUse();
}

frmTsMainPro::~frmTsMainPro()
{
    if (TheFrame() == this)
        TheFrame() = nullptr;
}

frmTsMainPro* frmTsMainPro::Instance()
{
    return TheFrame();
}

void frmTsMainPro::ReadSettingsOnLoad()
{
    const QString ini = IniFile();
    // 5. The colour chart reads and clamps its own place each time it is shown.
    // 6. Folders, dialog preview, slide show.
    LastPaletteFolder = basSettings::ReadLastFolder(QString::fromLatin1(basSettings::KeyLastFolderPAL),
                                                    basTsMainPro::AppFolder(), ini);
    ShowPreviewSetting = basSettings::ReadShowPreview(ini);
    FileBrowserFolder = basSettings::ReadLastFolder(QString::fromLatin1(basSettings::KeyLastFolderFileBrowse),
                                                    QString(), ini);
    const basSettings::SlideShowSettings slides = basSettings::ReadSlideShow(ini);
    SlideSize = slides.SlideSize;
    SlideStyle = slides.SlideStyle;
    SlidePace = slides.SlidePace;
    // 7, 8. Options into the menu, then the mirrors and the mode panel.
    const basSettings::OptionSettings options = basSettings::ReadOptions(ini);
    mnuOptionsSub[1]->setChecked(options.SDIOnly);
    mnuOptionsSub[4]->setChecked(options.RemindColorSetting);
    mnuOptionsSub[6]->setChecked(options.InvokeIconEditorOnProgramStart);
    mnuOptionsSub[8]->setChecked(options.FitInEvenIfSmaller);
    mnuOptionsSub[10]->setChecked(options.JPGAddBackEXIF);
    for (int i = 0; i < basSettings::WatchRAMEntries; ++i)
        mnuSubMonitorRAM[i]->setChecked(options.WatchRAMChecked && *options.WatchRAMChecked == i);
    cboBrushSize->setCurrentIndex(basSettings::ReadBrushSizeIndex(cboBrushSize->count(), ini));
    CopyOptionMenusToMirrors();
    // 9. The file histories.
    MDI_List_File_History();
    MDI_List_File_History_IconEditor();
    MDI_List_File_History_GIFani();
}

QSize frmTsMainPro::ScreenSizeTwips() const
{
    const QScreen* screen = this->screen() ? this->screen() : QGuiApplication::primaryScreen();
    const QSize size = screen ? screen->size() : QSize(1024, 768);
    return size * 15;
}

void frmTsMainPro::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    if (FirstActivationDone)
        return;
    FirstActivationDone = true;
    // After the window is up, so that the reminder and the document appear over it.
    QTimer::singleShot(0, this, [this] { FirstActivation(); });
}

void frmTsMainPro::FirstActivation()
{
    if (!CommandLine.isEmpty()) {
        QString path = CommandLine;
        path.remove(QLatin1Char('"'));
        if (OpensInIconEditor(path, mnuOptionsSub[6]->isChecked())) {
            OpenInIconEditor(path);
        } else {
            OpenFromCommandLine(path);
            QDir::setCurrent(basTsMainPro::AppFolder());
        }
    }
    RemindColorDepth();
}

bool frmTsMainPro::OpensInIconEditor(const QString& path, bool invokeIconEditor)
{
    if (path.size() <= 4 || !invokeIconEditor)
        return false;
    const QString extension = path.right(4).toUpper();
    return extension == QLatin1String(".CUR") || extension == QLatin1String(".ICO");
}

void frmTsMainPro::OpenInIconEditor(const QString& path)
{
    QWidget* editor = basTsMainPro::CreateForm(QStringLiteral("frmTsIconEdit"));
    if (editor == nullptr) {
        // Without the icon editor the picture opens as a paint document.
        OpenFromCommandLine(path);
        return;
    }
    editor->setProperty("OpenPath", path);
    editor->show();
}

QString frmTsMainPro::ColorDepthReminderText()
{
    return QStringLiteral("Your current display setting in Windows is below 32-bit True Color.\n"
                          "(To stop this reminder, uncheck Options submenu)");
}

int frmTsMainPro::ScreenBitsPerPixel(int depth)
{
    // X11 and Wayland report true colour as depth 24; each pixel still takes 32 bits, as in the
    // 32-bit true colour mode the reminder asks for.
    return depth >= 24 ? 32 : depth;
}

void frmTsMainPro::RemindColorDepth()
{
    const QScreen* screen = this->screen() ? this->screen() : QGuiApplication::primaryScreen();
    const int bitsPerPixel = ScreenBitsPerPixel(screen ? screen->depth() : 32);
    if (bitsPerPixel < 32 && basTsMainPro::RemindColorSetting)
        MsgBox(ColorDepthReminderText(), MsgBoxButtons::OK, MsgBoxIcon::Information);
}

bool frmTsMainPro::CommandLineExtensionAllowed(const QString& path)
{
    static const QString allowed = QStringLiteral(".bmp/.gif/.jpg/.jpeg/.wmf/.emf/.png/.tif/.tiff/.tga/.pcx/.ico/.cur").toUpper();
    const QString extension = basTsMainPro::ParseFileSpec(path, 6).toUpper();
    if (extension.size() < 2)
        return false;
    // Whole entries only: ".jp" must not pass because ".jpg" contains it.
    return allowed.split(QLatin1Char('/'), Qt::SkipEmptyParts).contains(extension);
}

void frmTsMainPro::OpenFromCommandLine(const QString& commandLine)
{
    QString path = commandLine;
    path.remove(QLatin1Char('"'));
    if (path.size() < 5 || !basTsMainPro::FileExists(path))
        return;
    if (!CommandLineExtensionAllowed(path))
        return;
    if (!basTsMainPro::AnyDocumentOpen() || !basTsMainPro::SDIOnly) {
        ShowNewDocument(basTsMainPro::DocOpenFromCommandLine, path);
    } else {
        CallChild("LoadOpenFile", path, basTsMainPro::DocOpenFromCommandLine);
    }
}

void frmTsMainPro::txbCommandHidden_Change()
{
    const QString text = txbCommandHidden->text();
    if (text.isEmpty())
        return;
    basTsMainPro::CloseToolWindows();
    {
        const QSignalBlocker blocker(txbCommandHidden);
        txbCommandHidden->clear();
    }
    // A later start asked for a file: bring the frame forward as well.
    if (isMinimized())
        showNormal();
    raise();
    activateWindow();
    OpenFromCommandLine(text);
}

QWidget* frmTsMainPro::ShowNewDocument(int mode, const QString& path)
{
    basTsMainPro::DocOpenMode = mode;
    basTsMainPro::DocOpenPath = path;
    const QString caption = path.isEmpty()
                                ? QStringLiteral("Untitled:1")
                                : basTsMainPro::ShortenPathForDisplay(path, basTsMainPro::DisplayPathLength);
    return ShowDocumentWindow(basTsMainPro::NextFreeDocSlot(), caption);
}

QWidget* frmTsMainPro::ShowDocumentWindow(int slot, const QString& caption)
{
    QWidget* child = basTsMainPro::CreateForm(QStringLiteral("frmTsPaint"));
    if (child == nullptr)
        return nullptr;
    std::vector<basTsMainPro::DocSlot>& docSlots = basTsMainPro::DocSlots();
    std::vector<QWidget*>& forms = basTsMainPro::DocForms();
    if (slot >= static_cast<int>(docSlots.size()))
        docSlots.resize(slot + 1);
    forms.resize(docSlots.size(), nullptr);
    docSlots[slot] = basTsMainPro::DocSlot{};
    forms[slot] = child;
    child->setProperty("Tag", QString::number(slot));
    child->setWindowTitle(caption);
    child->setAttribute(Qt::WA_DeleteOnClose);
    QMdiSubWindow* sub = MdiArea->addSubWindow(child);
    sub->setAttribute(Qt::WA_DeleteOnClose);
    connect(child, &QObject::destroyed, this, [slot] {
        std::vector<basTsMainPro::DocSlot>& docSlotsNow = basTsMainPro::DocSlots();
        std::vector<QWidget*>& formsNow = basTsMainPro::DocForms();
        if (slot < static_cast<int>(docSlotsNow.size()))
            docSlotsNow[slot].Closed = true;
        if (slot < static_cast<int>(formsNow.size()))
            formsNow[slot] = nullptr;
    });
    sub->showMaximized();
    MdiArea->setActiveSubWindow(sub);
    return child;
}

QWidget* frmTsMainPro::ActiveChild() const
{
    QMdiSubWindow* sub = MdiArea->activeSubWindow();
    if (sub == nullptr)
        sub = MdiArea->currentSubWindow();
    return sub ? sub->widget() : nullptr;
}

bool frmTsMainPro::QueryUnload()
{
    if (CloseConfirmed)
        return true;
    const std::vector<basTsMainPro::DocSlot>& docSlots = basTsMainPro::DocSlots();
    const bool anyDirty = std::any_of(docSlots.begin(), docSlots.end(),
                                      [](const basTsMainPro::DocSlot& slot) { return !slot.Closed && slot.Dirty; });
    if (anyDirty) {
        const MsgBoxResult answer = MsgBox(QStringLiteral("Changes to one or more files have not been saved yet.\n"
                                                          "Proceed to close all windows?"),
                                           MsgBoxButtons::YesNo, MsgBoxIcon::Question);
        if (answer != MsgBoxResult::Yes)
            return false;
    }
    CloseConfirmed = true;
    return true;
}

void frmTsMainPro::UnloadFrame()
{
    if (Unloaded)
        return;
    Unloaded = true;
    // 1. Tool windows and documents.
    basTsMainPro::CloseToolWindows();
    basTsMainPro::CloseAllDocuments();
    // 2, 3. Nothing to shut down for the picture loader; the shared animation goes with its editor.
    const QString ini = basSettings::SettingsFilePathForWriting();
    // 4. The colour chart's place, clamped as at load.
    const QSize screenTwips = ScreenSizeTwips();
    // The chart wrote its place when it closed a moment ago; that is the place to keep.
    const basSettings::ColorChartPos pos = basSettings::ClampColorChartPos(
        basSettings::ReadColorChartPos(ini), screenTwips.width(), screenTwips.height());
    basSettings::WriteColorChartPos(pos, ini);
    // 5. Folders, options, dialog preview, slide show.
    basSettings::WriteLastFolder(QString::fromLatin1(basSettings::KeyLastFolderPAL), LastPaletteFolder, ini);
    basSettings::WriteOptions(OptionsFromMenus(), ini);
    basSettings::WriteBrushSizeIndex(cboBrushSize->currentIndex(), ini);
    basSettings::WriteShowPreview(ShowPreviewSetting, ini);
    basSettings::WriteSlideShow({SlideSize, SlideStyle, SlidePace}, ini);
    // 6. The program's temporary file.
    if (!TemporaryFile.isEmpty() && basTsMainPro::FileExists(TemporaryFile))
        basTsMainPro::DeleteFileSafe(TemporaryFile);
    // 7. Every remaining window, last first.
    const QList<QWidget*> windows = QApplication::topLevelWidgets();
    for (auto it = windows.crbegin(); it != windows.crend(); ++it) {
        if (*it != this && (*it)->isVisible())
            (*it)->close();
    }
}

void frmTsMainPro::closeEvent(QCloseEvent* event)
{
    if (!QueryUnload()) {
        event->ignore();
        return;
    }
    UnloadFrame();
    event->accept();
}

void frmTsMainPro::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    if (isMinimized())
        return;
    const int w = std::max(width(), MinimumWidthPixels);
    const int h = std::max(height(), MinimumHeightPixels);
    if (w != width() || h != height())
        resize(w, h);
}

void frmTsMainPro::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void frmTsMainPro::dropEvent(QDropEvent* event)
{
    for (const QUrl& url : event->mimeData()->urls()) {
        if (url.isLocalFile())
            OpenFromCommandLine(url.toLocalFile());
    }
    event->acceptProposedAction();
}

void frmTsMainPro::ShowMenusOf(QWidget* child)
{
    // A document brings its menus in a hidden bar named "DocumentMenuBar"; while it is active they
    // stand in the frame's bar before Options and Help, in place of the frame's File menu.
    QMenuBar* bar = menuBar();
    for (const QPointer<QAction>& action : ShownDocumentMenus)
        if (action)
            bar->removeAction(action);
    ShownDocumentMenus.clear();
    QMenuBar* documentBar = child ? child->findChild<QMenuBar*>(QStringLiteral("DocumentMenuBar")) : nullptr;
    mnuFile->menuAction()->setVisible(documentBar == nullptr);
    if (documentBar == nullptr)
        return;
    for (QAction* action : documentBar->actions()) {
        bar->insertAction(mnuOptions->menuAction(), action);
        ShownDocumentMenus.push_back(action);
    }
}
