#pragma once

// The program's frame: a multi-document window with the menu bar of the no-document state, the
// toolbar, the toolbox on the left and the status bar. It owns no picture. Every button and list
// acts on the active document window by calling a command name on it (Do_*, Notify_*_FromMDI,
// mnuEdit*_Click); a window that lacks the name is reported as a fault of that window.

#include "basSettings.h"

#include <QMainWindow>
#include <QPointer>
#include <QSize>
#include <QString>

#include <array>
#include <vector>

class QAction;
class QCheckBox;
class QComboBox;
class QFrame;
class QGroupBox;
class QLabel;
class QLineEdit;
class QMdiArea;
class QMdiSubWindow;
class QMenu;
class QProgressBar;
class QRadioButton;
class QToolButton;
class QVBoxLayout;

class frmTsMainPro : public QMainWindow {
    Q_OBJECT

public:
    // `commandLine` is the program's one argument, a file to open on first activation.
    explicit frmTsMainPro(const QString& commandLine = QString(), QWidget* parent = nullptr);
    ~frmTsMainPro() override;

    // The frame of this run, or null before it is made and after it is gone.
    static frmTsMainPro* Instance();

    // ---- Public members called by documents and dialogs ----
    Q_INVOKABLE void mnuFileExit_Click();
    Q_INVOKABLE void cmdGlass_Click();
    Q_INVOKABLE void updateColorToUse();
    Q_INVOKABLE void FlatAllToolsImages();
    Q_INVOKABLE void SetOptionFrame(int index);
    Q_INVOKABLE void MDI_disableAllButtonsOnToolBar();
    Q_INVOKABLE void mnuHelpSub_Click(int index);
    Q_INVOKABLE void MDI_UpdateOptionMenus();
    Q_INVOKABLE void MDI_List_File_History();
    Q_INVOKABLE void MDI_List_File_History_IconEditor();
    Q_INVOKABLE void MDI_List_File_History_GIFani();

    // Opens a file named on the command line or by a second start of the program.
    void OpenFromCommandLine(const QString& path);
    // The active document window's own widget, or null.
    QWidget* ActiveChild() const;
    // Sets DocOpenMode and DocOpenPath and shows a document window for them in the next free slot,
    // captioned with the shortened path or "Untitled:1".
    QWidget* ShowNewDocument(int mode, const QString& path);
    // Makes a document window for the current DocOpenMode and DocOpenPath in slot `slot`.
    QWidget* ShowDocumentWindow(int slot, const QString& caption);
    // Calls `name` on the active document window; nothing happens without one. False when the
    // window lacks the name (which is reported).
    bool CallChild(const char* name);
    bool CallChild(const char* name, int index);
    bool CallChild(const char* name, const QString& path, int mode);

    // The test for the icon editor on start: length over 4, ".CUR" or ".ICO", option set.
    static bool OpensInIconEditor(const QString& path, bool invokeIconEditor);
    // The extensions a command-line file may have.
    static bool CommandLineExtensionAllowed(const QString& path);
    // The colour-depth reminder and the RAM reminder texts.
    static QString ColorDepthReminderText();
    // Bits per pixel of a screen of the given colour depth.
    static int ScreenBitsPerPixel(int depth);
    // The text of the colour value box: "RGB(r, g, b)     HTML #RRGGBB / hBBGGRR".
    static QString ColorValueText(uint32_t color);
    // A flat button showing the project's icon ":/icons/<icon>.svg", named `name`.
    static QToolButton* ImageButton(QWidget* parent, const QString& name, const QString& icon, const QString& tip,
                                    QSize iconSize = QSize(24, 24));
    // The File Open dialog's filter.
    static QString OpenFilter();

    // ---- Controls, named as their objectName ----
    QMdiArea* MdiArea = nullptr;
    QProgressBar* Progress = nullptr;
    QLineEdit* txbCommandHidden = nullptr;
    std::vector<QLabel*> StatusPanel; // 0 message, 1 picture size, 2 position, 3 "SDI"/"MDI"

    // Toolbar.
    QToolButton* cmdFileNew = nullptr;
    QToolButton* cmdFileOpen = nullptr;
    QToolButton* cmdFileBrowser = nullptr;
    std::vector<QToolButton*> cmdEditTB; // undo all, undo, redo, cut, copy, paste, paste transparent, brighten, darken
    std::vector<QToolButton*> cmdZoom;   // zoom in, zoom out, original size
    QToolButton* cmdGlass = nullptr;
    QComboBox* cboMagnify = nullptr;
    QComboBox* cboGlass = nullptr;
    QCheckBox* ckbFitIn = nullptr;
    QToolButton* cmdMode = nullptr;
    QToolButton* imgUpperLeft = nullptr;
    QToolButton* imgLowerRight = nullptr;
    QToolButton* imgPanoramic = nullptr;

    // Toolbox.
    std::vector<QToolButton*> imgTools; // 0..18
    QFrame* shpTool = nullptr;
    QComboBox* cboBrushSize = nullptr;
    std::vector<QLabel*> picColorToUse; // 0 first colour, 1 second colour, 2 Bezier fill
    QToolButton* imgSwapColor = nullptr;
    std::vector<QToolButton*> cmdPalette256;     // 0 second colour, 1 first colour
    std::vector<QToolButton*> cmdPaletteWebSafe; // 0 second, 1 first, 2 Bezier fill
    std::vector<QToolButton*> cmdColorChart;     // 0 second, 1 first, 2 Bezier fill
    std::vector<QGroupBox*> fraOption;           // 0..9

    std::vector<QRadioButton*> optBrushStyle; // 0..8
    std::vector<QToolButton*> imgBrushStyle;
    QComboBox* cboCustomBrushShape = nullptr;
    QToolButton* cmdCustomBrush = nullptr;
    QLabel* picCustomBrush = nullptr;
    QLabel* lblBrush = nullptr;
    QComboBox* cboPaintBrushTranslucencyPercent = nullptr;
    std::vector<QRadioButton*> optFillPattern; // 0..9
    std::vector<QToolButton*> imgPatternOption;
    QToolButton* cmdCustomPattern = nullptr;
    QLabel* picCustomPattern = nullptr;
    QComboBox* cboPolygonOperationType = nullptr;
    std::vector<QRadioButton*> optPolygonDrawMethod; // 0 auto, 1 manual
    std::vector<QComboBox*> cboPolygonSetting;       // vertices, radius, concave factor, angle
    std::vector<QRadioButton*> optLineType;          // 0..8
    std::vector<QToolButton*> imgToolOptionLine;
    std::vector<QRadioButton*> optRectangleCornerShape; // 0..3
    std::vector<QToolButton*> imgRectangleOption;
    std::vector<QRadioButton*> optOvalEnhancement; // 0..1
    std::vector<QToolButton*> cmdStampLoad;        // 0 text, 1 image
    QLabel* picStamp = nullptr;
    QComboBox* cboSprayDensity = nullptr;
    QComboBox* cboSprayTranslucencyPercent = nullptr;
    std::vector<QToolButton*> cmdRegionOperation; // 0 border, 1 drop shadow

    // Menus.
    QMenu* mnuFile = nullptr;
    QAction* mnuFileNew = nullptr;
    QAction* mnuFileOpen = nullptr;
    std::vector<QAction*> mnuFileHistory; // 0 separator, 1..8 files
    QMenu* mnuFileHistoryIconEditor = nullptr;
    std::vector<QAction*> mnuFileHistoryIconEditorSub;
    QMenu* mnuFileHistoryGIFani = nullptr;
    std::vector<QAction*> mnuFileHistoryGIFaniSub;
    QAction* mnuFileExit = nullptr;
    QMenu* mnuOptions = nullptr;
    std::vector<QAction*> mnuOptionsSub; // 0..10; entries 1, 3..8, 10 are options
    QMenu* mnuMonitorRAM = nullptr;
    std::vector<QAction*> mnuSubMonitorRAM; // 0 none, 1..4 10 to 40 MB
    QMenu* mnuHelp = nullptr;
    std::vector<QAction*> mnuHelpSub;
    // Document menus the frame carries hidden: documents bring their own.
    std::vector<QMenu*> DocumentMenus; // mnuRotate, mnuText, mnuEffects, mnuLayer, mnuResize, mnuBPP

    // Full paths behind the history entries, 8 each.
    std::array<QString, 8> FileHistoryPaths;
    std::array<QString, 8> FileHistoryPathsIconEditor;
    std::array<QString, 8> FileHistoryPathsGIFani;

    // Minimum size of the frame, in pixels (11850 by 8805 twips).
    static constexpr int MinimumWidthPixels = 11850 / 15;
    static constexpr int MinimumHeightPixels = 8805 / 15;

    // Index of the entry that clears all tools.
    static constexpr int ClearToolsIndex = 18;
    static constexpr int ToolCount = 19;
    static constexpr int OptionPanelCount = 10;

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    // Load steps.
    void BuildMenus();
    void BuildToolbar();
    void BuildStatusBar();
    void BuildToolbox();
    void BuildOptionPanels(QVBoxLayout* layout);
    void FillComboBoxes();
    void ReadSettingsOnLoad();
    void ConnectToolbar();
    void ConnectToolbox();

    // Handlers.
    void FirstActivation();
    void RemindColorDepth();
    void txbCommandHidden_Change();
    void mnuFileNew_Click();
    void mnuFileOpen_Click();
    // The file behind a history entry, or empty after "File not found." when it is gone.
    QString HistoryFileIfPresent(const std::array<QString, 8>& paths, int index);
    void mnuFileHistory_Click(int index);
    void mnuFileHistoryIconEditor_Click(int index);
    void mnuFileHistoryGIFani_Click(int index);
    void mnuOptionsSub_Click(int index);
    void mnuSubMonitorRAM_Click(int index);
    void CopyOptionMenusToMirrors();
    void UpdateModePanel();
    void imgTools_Click(int index);
    void picColorToUse_Click(int index, bool rightButton);
    void imgSwapColor_Click();
    void OpenColorChart(int target, int mode);
    void ListHistoryInto(const char* section, std::vector<QAction*>& entries, std::array<QString, 8>& paths,
                         QAction* separator);
    bool QueryUnload();
    void UnloadFrame();
    bool OptionEventsIgnored() const;
    void SetDocumentToolBarEnabled(bool enabled);
    bool InvokeOnChild(const char* name, QGenericArgument first, QGenericArgument second);
    QSize ScreenSizeTwips() const;
    void OpenInIconEditor(const QString& path);
    basSettings::OptionSettings OptionsFromMenus() const;
    void OpenHelpPage(const QString& page);
    bool eventFilter(QObject* watched, QEvent* event) override;

    QString CommandLine;
    bool FirstActivationDone = false;
    bool Loading = false;          // option events ignore what loading does
    bool CloseConfirmed = false;   // the query-unload question has been answered
    bool Unloaded = false;
    QString LastPaletteFolder;
    QString FileBrowserFolder;
    bool ShowPreviewSetting = true;
    int SlideSize = 0;
    int SlideStyle = 0;
    int SlidePace = 0;

public:
    // The program's temporary file of this run, deleted at unload when it exists.
    QString TemporaryFile;
    // Marks a tool pressed: checks its image and moves shpTool over it.
    void PressToolImage(int index);
signals:
    // An option of the Options menu changed; the mirrors in basTsMainPro hold the new values.
    void OptionsChanged();

public:
    // Puts the menus of a document (its hidden "DocumentMenuBar") in the frame's bar; null restores.
    void ShowMenusOf(QWidget* child);

private:
    std::vector<QPointer<QAction>> ShownDocumentMenus;
};
