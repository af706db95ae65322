// The frame's menus: File of the no-document state with the recent files, Options, Window, Help.
#include "frmTsMainPro.h"

#include "basFileHistory.h"
#include "basMsgBox.h"
#include "basSettings.h"
#include "basTsMainPro.h"
#include "clsTsDialog.h"
#include "frmTsSizeOfNew.h"

#include <QActionGroup>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QMdiArea>
#include <QMenuBar>
#include <QStandardPaths>
#include <QTextBrowser>
#include <QUrl>

using basMsgBox::MsgBox;
using basMsgBox::MsgBoxButtons;
using basMsgBox::MsgBoxIcon;

namespace {

QAction* NamedAction(QObject* parent, const QString& name, const QString& caption)
{
    auto* action = new QAction(caption, parent);
    action->setObjectName(name);
    return action;
}

// Help pages beside the program, or in the installed share folder.
QString HelpFolder()
{
    const QString beside = basTsMainPro::AppFolder() + QStringLiteral("help/");
    if (basTsMainPro::FolderExists(beside))
        return beside;
    const QString installed = basTsMainPro::AppFolder() + QStringLiteral("../share/tessavo/help/");
    if (basTsMainPro::FolderExists(installed))
        return QDir::cleanPath(installed) + QLatin1Char('/');
    return QString();
}

const char* const HelpPages[] = {"index.html", "toolbox.html", "files.html", "options.html", "shortcuts.html"};
constexpr int HelpAboutIndex = 5;

} // namespace

void frmTsMainPro::BuildMenus()
{
    QMenuBar* bar = menuBar();

    mnuFile = bar->addMenu(tr("&File"));
    mnuFile->setObjectName(QStringLiteral("mnuFile"));
    mnuFileNew = NamedAction(this, QStringLiteral("mnuFileNew"), tr("&New ...."));
    mnuFileNew->setShortcut(QKeySequence::New);
    mnuFileOpen = NamedAction(this, QStringLiteral("mnuFileOpen"), tr("&Open ...."));
    mnuFileOpen->setShortcut(QKeySequence::Open);
    // Without a paint document window to open into, these two stay off.
    const bool documentsAvailable = basTsMainPro::HasFormFactory(QStringLiteral("frmTsPaint"));
    mnuFileNew->setEnabled(documentsAvailable);
    mnuFileOpen->setEnabled(documentsAvailable);
    connect(mnuFileNew, &QAction::triggered, this, [this] { mnuFileNew_Click(); });
    connect(mnuFileOpen, &QAction::triggered, this, [this] { mnuFileOpen_Click(); });
    mnuFile->addAction(mnuFileNew);
    mnuFile->addAction(mnuFileOpen);

    for (int i = 0; i <= basFileHistory::MaxEntries; ++i) {
        QAction* entry = NamedAction(this, QStringLiteral("mnuFileHistory_%1").arg(i), QString());
        entry->setSeparator(i == 0);
        entry->setVisible(false);
        entry->setEnabled(false);
        if (i > 0)
            connect(entry, &QAction::triggered, this, [this, i] { mnuFileHistory_Click(i); });
        mnuFile->addAction(entry);
        mnuFileHistory.push_back(entry);
    }
    mnuFile->addSeparator();
    mnuFileHistoryIconEditor = mnuFile->addMenu(tr("Recent &Icon Files"));
    mnuFileHistoryIconEditor->setObjectName(QStringLiteral("mnuFileHistoryIconEditor"));
    mnuFileHistoryGIFani = mnuFile->addMenu(tr("Recent Animated &GIF Files"));
    mnuFileHistoryGIFani->setObjectName(QStringLiteral("mnuFileHistoryGIFani"));
    for (int i = 0; i <= basFileHistory::MaxEntries; ++i) {
        QAction* icon = NamedAction(this, QStringLiteral("mnuFileHistoryIconEditorSub_%1").arg(i), QString());
        QAction* gif = NamedAction(this, QStringLiteral("mnuFileHistoryGIFaniSub_%1").arg(i), QString());
        for (QAction* entry : {icon, gif}) {
            entry->setSeparator(i == 0);
            entry->setVisible(false);
            entry->setEnabled(false);
        }
        if (i > 0) {
            connect(icon, &QAction::triggered, this, [this, i] { mnuFileHistoryIconEditor_Click(i); });
            connect(gif, &QAction::triggered, this, [this, i] { mnuFileHistoryGIFani_Click(i); });
        }
        mnuFileHistoryIconEditor->addAction(icon);
        mnuFileHistoryGIFani->addAction(gif);
        mnuFileHistoryIconEditorSub.push_back(icon);
        mnuFileHistoryGIFaniSub.push_back(gif);
    }
    mnuFile->addSeparator();
    mnuFileExit = NamedAction(this, QStringLiteral("mnuFileExit"), tr("E&xit"));
    mnuFileExit->setShortcut(QKeySequence::Quit);
    connect(mnuFileExit, &QAction::triggered, this, [this] { mnuFileExit_Click(); });
    mnuFile->addAction(mnuFileExit);

    // Menus of the documents, which bring their own menu bars; the frame keeps them hidden.
    for (const auto& [name, caption] : {std::pair{"mnuRotate", "&Rotate"}, std::pair{"mnuText", "&Text"},
                                        std::pair{"mnuEffects", "&Effects"}, std::pair{"mnuLayer", "&Layer"},
                                        std::pair{"mnuResize", "Re&size"}, std::pair{"mnuBPP", "&BPP"}}) {
        QMenu* menu = bar->addMenu(tr(caption));
        menu->setObjectName(QString::fromLatin1(name));
        DocumentMenus.push_back(menu);
    }

    mnuOptions = bar->addMenu(tr("&Options"));
    mnuOptions->setObjectName(QStringLiteral("mnuOptions"));
    const QString captions[11] = {
        QString(),
        tr("Set To &SDI Only  (Default Is MDI- Multi-Document-Interface)"),
        QString(),
        tr("Use &Alternative Region Marquee  (Current Session Only)"),
        tr("&Remind If Display Setting Below 32-bit True Color"),
        tr("Suspend &Canvas Resize By Edge Dragging  (Current Session Only)"),
        tr("Open ICO/CUR File Given At Program Start In &Icon Editor"),
        tr("Suspend R&egion Resize By Edge Dragging  (Current Session Only)"),
        tr("&Fit In Even If Image Smaller Than Screen"),
        QString(),
        tr("Add Back Original E&XIF When Saving JPG"),
    };
    for (int i = 0; i <= 10; ++i) {
        QAction* entry = NamedAction(this, QStringLiteral("mnuOptionsSub_%1").arg(i), captions[i]);
        const bool separator = captions[i].isEmpty();
        entry->setSeparator(separator);
        entry->setCheckable(!separator);
        if (!separator)
            connect(entry, &QAction::triggered, this, [this, i] { mnuOptionsSub_Click(i); });
        mnuOptionsSub.push_back(entry);
    }
    mnuMonitorRAM = new QMenu(tr("&Monitor RAM"), this);
    mnuMonitorRAM->setObjectName(QStringLiteral("mnuMonitorRAM"));
    auto* ramGroup = new QActionGroup(this);
    const QString ramCaptions[5] = {tr("&No Monitoring"), tr("Remind When Below &10 MB"),
                                    tr("Remind When Below &20 MB"), tr("Remind When Below &30 MB"),
                                    tr("Remind When Below &40 MB")};
    for (int i = 0; i < basSettings::WatchRAMEntries; ++i) {
        QAction* entry = NamedAction(this, QStringLiteral("mnuSubMonitorRAM_%1").arg(i), ramCaptions[i]);
        entry->setCheckable(true);
        entry->setActionGroup(ramGroup);
        connect(entry, &QAction::triggered, this, [this, i] { mnuSubMonitorRAM_Click(i); });
        mnuMonitorRAM->addAction(entry);
        mnuSubMonitorRAM.push_back(entry);
    }
    // Shown grouped by kind; the index of each entry stays its name.
    for (int i : {1, 2, 4, 6, 8, 10, 9})
        mnuOptions->addAction(mnuOptionsSub[i]);
    mnuOptions->addMenu(mnuMonitorRAM);
    for (int i : {0, 3, 5, 7})
        mnuOptions->addAction(mnuOptionsSub[i]);

    QMenu* window = bar->addMenu(tr("&Window"));
    window->setObjectName(QStringLiteral("mnuWindow"));
    window->addAction(tr("&Tile"), this, [this] { MdiArea->tileSubWindows(); });
    window->addAction(tr("&Cascade"), this, [this] { MdiArea->cascadeSubWindows(); });

    mnuHelp = bar->addMenu(tr("&Help"));
    mnuHelp->setObjectName(QStringLiteral("mnuHelp"));
    const QString helpCaptions[6] = {tr("&Contents"),          tr("&Toolbox"), tr("&Files And Formats"),
                                     tr("&Options"),           tr("&Keyboard Shortcuts"),
                                     tr("&About Tessavo ....")};
    for (int i = 0; i <= HelpAboutIndex; ++i) {
        QAction* entry = NamedAction(this, QStringLiteral("mnuHelpSub_%1").arg(i), helpCaptions[i]);
        if (i == 0)
            entry->setShortcut(QKeySequence::HelpContents);
        connect(entry, &QAction::triggered, this, [this, i] { mnuHelpSub_Click(i); });
        if (i == HelpAboutIndex)
            mnuHelp->addSeparator();
        mnuHelp->addAction(entry);
        mnuHelpSub.push_back(entry);
    }
}

void frmTsMainPro::mnuFileExit_Click()
{
    close();
}

void frmTsMainPro::mnuFileNew_Click()
{
    basTsMainPro::CloseToolWindows();
    frmTsSizeOfNew dialog(false, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    basTsMainPro::ResetDocSlots();
    ShowNewDocument(basTsMainPro::DocOpenFromFileNew, QString());
}

QString frmTsMainPro::OpenFilter()
{
    return QStringLiteral(
        "All Pictures (*.bmp;*.gif;*.jpg;*.jpeg;*.png;*.tif;*.tiff;*.tga;*.pcx;*.ico;*.cur;*.wmf;*.emf)|"
        "*.bmp;*.gif;*.jpg;*.jpeg;*.png;*.tif;*.tiff;*.tga;*.pcx;*.ico;*.cur;*.wmf;*.emf|"
        "(*.bmp)|*.bmp|(*.gif)|*.gif|(*.jpg, *.jpeg)|*.jpg;*.jpeg|(*.png)|*.png|(*.tif;*.tiff)|*.tif;*.tiff|"
        "(*.tga)|*.tga|(*.pcx)|*.pcx|(*.ico;*.cur)|*.ico;*.cur|(*.wmf;*.emf)|*.wmf;*.emf|");
}

void frmTsMainPro::mnuFileOpen_Click()
{
    basTsMainPro::CloseToolWindows();
    clsTsDialog dialog;
    dialog.Filter = OpenFilter();
    dialog.DialogTitle = tr("Open");
    dialog.InitDir = QDir::currentPath();
    if (!dialog.ShowOpen(this) || dialog.FileName.isEmpty())
        return;
    basTsMainPro::ResetDocSlots();
    ShowNewDocument(basTsMainPro::DocOpenFromFileOpen, dialog.FileName);
}

void frmTsMainPro::ListHistoryInto(const char* section, std::vector<QAction*>& entries,
                                   std::array<QString, 8>& paths, QAction* separator)
{
    const QString ini = basSettings::SettingsFilePath();
    if (!QFileInfo::exists(ini))
        return;
    paths.fill(QString());
    const basFileHistory::HistoryList list = basFileHistory::ListHistory(QString::fromLatin1(section), ini);
    for (int i = 1; i <= basFileHistory::MaxEntries; ++i) {
        QAction* entry = entries[i];
        const bool used = i <= static_cast<int>(list.Entries.size());
        if (used) {
            paths[i - 1] = list.Entries[i - 1].FullPath;
            entry->setText(list.Entries[i - 1].Caption);
        }
        entry->setVisible(used);
        entry->setEnabled(used);
    }
    separator->setVisible(list.ShowSeparator);
}

void frmTsMainPro::MDI_List_File_History()
{
    ListHistoryInto(basFileHistory::SectionPaint, mnuFileHistory, FileHistoryPaths, mnuFileHistory[0]);
    if (!basTsMainPro::HasFormFactory(QStringLiteral("frmTsPaint"))) {
        for (int i = 1; i <= basFileHistory::MaxEntries; ++i)
            mnuFileHistory[i]->setEnabled(false);
    }
}

void frmTsMainPro::MDI_List_File_History_IconEditor()
{
    ListHistoryInto(basFileHistory::SectionIconEditor, mnuFileHistoryIconEditorSub, FileHistoryPathsIconEditor,
                    mnuFileHistoryIconEditorSub[0]);
    mnuFileHistoryIconEditor->setEnabled(basTsMainPro::HasFormFactory(QStringLiteral("frmTsIconEdit")));
}

void frmTsMainPro::MDI_List_File_History_GIFani()
{
    ListHistoryInto(basFileHistory::SectionGIFani, mnuFileHistoryGIFaniSub, FileHistoryPathsGIFani,
                    mnuFileHistoryGIFaniSub[0]);
    mnuFileHistoryGIFani->setEnabled(basTsMainPro::HasFormFactory(QStringLiteral("frmTsGIFani")));
}

QString frmTsMainPro::HistoryFileIfPresent(const std::array<QString, 8>& paths, int index)
{
    // The path comes from the list, not from the caption, which may be shortened.
    const QString path = paths[index - 1];
    if (basTsMainPro::FileExists(path))
        return path;
    MsgBox(QString::fromLatin1(basFileHistory::FileNotFoundMessage));
    return QString();
}

void frmTsMainPro::mnuFileHistory_Click(int index)
{
    const QString path = HistoryFileIfPresent(FileHistoryPaths, index);
    if (path.isEmpty())
        return;
    basTsMainPro::CloseToolWindows();
    basTsMainPro::ResetDocSlots();
    ShowNewDocument(basTsMainPro::DocOpenFromFileOpen, path);
}

void frmTsMainPro::mnuFileHistoryIconEditor_Click(int index)
{
    const QString path = HistoryFileIfPresent(FileHistoryPathsIconEditor, index);
    if (!path.isEmpty())
        OpenInIconEditor(path);
}

void frmTsMainPro::mnuFileHistoryGIFani_Click(int index)
{
    const QString path = HistoryFileIfPresent(FileHistoryPathsGIFani, index);
    if (path.isEmpty())
        return;
    if (QWidget* editor = basTsMainPro::CreateForm(QStringLiteral("frmTsGIFani"))) {
        editor->setProperty("OpenPath", path);
        editor->show();
    }
}

basSettings::OptionSettings frmTsMainPro::OptionsFromMenus() const
{
    basSettings::OptionSettings options;
    options.SDIOnly = mnuOptionsSub[1]->isChecked();
    options.RemindColorSetting = mnuOptionsSub[4]->isChecked();
    options.InvokeIconEditorOnProgramStart = mnuOptionsSub[6]->isChecked();
    options.FitInEvenIfSmaller = mnuOptionsSub[8]->isChecked();
    options.JPGAddBackEXIF = mnuOptionsSub[10]->isChecked();
    options.WatchRAMChecked.reset();
    for (int i = 0; i < basSettings::WatchRAMEntries; ++i) {
        if (mnuSubMonitorRAM[i]->isChecked())
            options.WatchRAMChecked = i;
    }
    return options;
}

void frmTsMainPro::CopyOptionMenusToMirrors()
{
    const basSettings::OptionSettings options = OptionsFromMenus();
    basTsMainPro::SDIOnly = options.SDIOnly;
    basTsMainPro::WatchRAMIndex = basSettings::WatchRAMMirror(options.WatchRAMChecked);
    basTsMainPro::RemindColorSetting = options.RemindColorSetting;
    basTsMainPro::InvokeIconEditorOnProgramStart = options.InvokeIconEditorOnProgramStart;
    basTsMainPro::FitInEvenIfSmaller = options.FitInEvenIfSmaller;
    basTsMainPro::JPGAddBackEXIF = options.JPGAddBackEXIF;
    basTsMainPro::UseAlternativeMarquee = mnuOptionsSub[3]->isChecked();
    basTsMainPro::SuspendCanvasResize = mnuOptionsSub[5]->isChecked();
    basTsMainPro::SuspendRegionResize = mnuOptionsSub[7]->isChecked();
    UpdateModePanel();
}

void frmTsMainPro::MDI_UpdateOptionMenus()
{
    // A document changed an option in its own menu: the mirrors are the truth.
    mnuOptionsSub[1]->setChecked(basTsMainPro::SDIOnly);
    mnuOptionsSub[3]->setChecked(basTsMainPro::UseAlternativeMarquee);
    mnuOptionsSub[4]->setChecked(basTsMainPro::RemindColorSetting);
    mnuOptionsSub[5]->setChecked(basTsMainPro::SuspendCanvasResize);
    mnuOptionsSub[6]->setChecked(basTsMainPro::InvokeIconEditorOnProgramStart);
    mnuOptionsSub[7]->setChecked(basTsMainPro::SuspendRegionResize);
    mnuOptionsSub[8]->setChecked(basTsMainPro::FitInEvenIfSmaller);
    mnuOptionsSub[10]->setChecked(basTsMainPro::JPGAddBackEXIF);
    for (int i = 0; i < basSettings::WatchRAMEntries; ++i)
        mnuSubMonitorRAM[i]->setChecked(i == basTsMainPro::WatchRAMIndex);
    UpdateModePanel();
}

void frmTsMainPro::mnuOptionsSub_Click(int index)
{
    if (Loading)
        return;
    if (index == 1 && mnuOptionsSub[1]->isChecked()) {
        int open = 0;
        for (QWidget* form : basTsMainPro::DocForms())
            open += form != nullptr;
        if (open > 1) {
            mnuOptionsSub[1]->setChecked(false);
            MsgBox(QStringLiteral("Cannot change to SDI when there are more than one documents currently."));
            return;
        }
    }
    // The region options cannot change under a region: documents tell through their "RegionExists".
    if (index == 3 || index == 7) {
        for (QWidget* form : basTsMainPro::DocForms()) {
            if (form != nullptr && form->property("RegionExists").toBool()) {
                const QSignalBlocker blocker(mnuOptionsSub[index]);
                mnuOptionsSub[index]->setChecked(!mnuOptionsSub[index]->isChecked());
                MsgBox(QStringLiteral("Cannot reset this option when there is a region currently."));
                return;
            }
        }
    }
    CopyOptionMenusToMirrors();
    emit OptionsChanged();
}

void frmTsMainPro::mnuSubMonitorRAM_Click(int)
{
    if (Loading)
        return;
    CopyOptionMenusToMirrors();
}

void frmTsMainPro::UpdateModePanel()
{
    if (StatusPanel.size() < 4)
        return;
    QLabel* panel = StatusPanel[3];
    panel->setText(basTsMainPro::SDIOnly ? QStringLiteral("SDI") : QStringLiteral("MDI"));
    panel->setEnabled(!basTsMainPro::SDIOnly);
}

void frmTsMainPro::mnuHelpSub_Click(int index)
{
    if (index == HelpAboutIndex) {
        MsgBox(tr("Tessavo %1\nPaint program, icon editor and animated GIF editor.")
                   .arg(QCoreApplication::applicationVersion()),
               MsgBoxButtons::OK, MsgBoxIcon::Information);
        return;
    }
    if (index < 0 || index >= HelpAboutIndex)
        return;
    OpenHelpPage(QString::fromLatin1(HelpPages[index]));
}

void frmTsMainPro::OpenHelpPage(const QString& page)
{
    const QString folder = HelpFolder();
    if (folder.isEmpty()) {
        MsgBox(QStringLiteral("TsPaint.chm missing in current folder."));
        return;
    }
    auto* browser = qobject_cast<QTextBrowser*>(basTsMainPro::FindForm(QStringLiteral("frmTsHelp")));
    if (browser == nullptr) {
        browser = new QTextBrowser(this);
        browser->setObjectName(QStringLiteral("frmTsHelp"));
        browser->setWindowFlag(Qt::Window);
        browser->setAttribute(Qt::WA_DeleteOnClose);
        browser->setOpenExternalLinks(true);
        browser->setWindowTitle(tr("Tessavo Help"));
        browser->resize(720, 560);
    }
    browser->setSearchPaths({folder});
    browser->setSource(QUrl::fromLocalFile(folder + page));
    browser->show();
    browser->raise();
}
