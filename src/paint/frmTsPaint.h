#pragma once
// One open picture: a document window of the frame around one canvas (`Canvas`), with its own
// menus that stand in the frame's menu bar while it is active. It turns menu commands into file,
// edit and canvas work, keeps the picture's undo history, and answers every command that the
// frame's toolbar and toolbox call by name.
#include <QString>
#include <QWidget>
#include <vector>

#include "UndoHistory.h"
#include "basReduce.h"
#include "clsPal.h"
#include "clsPalDither.h"

class QAction;
class QMenu;
class QMenuBar;
class ucCanvas;
class frmTsMainPro;

class frmTsPaint : public QWidget {
    Q_OBJECT
    // The frame asks before it changes an option that a region depends on.
    Q_PROPERTY(bool RegionExists READ RegionExists)
public:
    explicit frmTsPaint(QWidget* Parent = nullptr);
    ~frmTsPaint() override;

    static void Register();

    ucCanvas* Canvas = nullptr;
    QMenuBar* DocumentMenuBar = nullptr;
    clsPal cPal;
    clsPalDither cPalDither;

    // The picture's file; empty for a new picture.
    QString FilePath;
    // What the Inquiry menu tells of the picture as it was opened.
    int OriginalWidth = 0;
    int OriginalHeight = 0;
    int OriginalBitsPerPixel = 0;
    qint64 OriginalFileSize = 0;

    // Late-bound commands, in the order of the design.
    Q_INVOKABLE void cPAL_Progress(int Percent);
    Q_INVOKABLE void cPAL_ProgressEnd();
    Q_INVOKABLE void cPalDither_Progress(int Percent);
    Q_INVOKABLE void cPalDither_ProgressEnd();
    Q_INVOKABLE void cDIBFilter_Progress(int Percent);
    Q_INVOKABLE void cDIBFilter_ProgressEnd();
    Q_INVOKABLE void LoadOpenFile(const QString& Path, int Mode);
    Q_INVOKABLE void mnuIconEditorSub_Click(int Index);
    Q_INVOKABLE void mnuEditUndoAll_Click();
    Q_INVOKABLE void mnuEditUndo_Click();
    Q_INVOKABLE void mnuEditRedo_Click();
    Q_INVOKABLE void mnuEditCut_Click();
    Q_INVOKABLE void mnuEditCopy_Click();
    Q_INVOKABLE void mnuEditPaste_Click();
    Q_INVOKABLE void mnuEditPasteTransparent_Click();
    Q_INVOKABLE void Canvas_DIBProgress(int Percent);
    Q_INVOKABLE void Canvas_DIBProgressEnd();
    Q_INVOKABLE void UpdateDisplay();
    Q_INVOKABLE bool AskSaveCurr();
    Q_INVOKABLE void MakePicSize();
    Q_INVOKABLE void UpdateAllowableMenusForScreenMode();
    Q_INVOKABLE void updateEditButtons();
    Q_INVOKABLE void OnOffQuickScroll();
    Q_INVOKABLE void Do_ckbFitInClick();
    Q_INVOKABLE void Do_cmdZoomClick(int Index);
    Q_INVOKABLE void Do_cmdGlassClick();
    Q_INVOKABLE void Do_cboMagnifyClick();
    Q_INVOKABLE void Do_cboGlassClick();
    Q_INVOKABLE void Notify_SetScrollOp_FromMDI();
    Q_INVOKABLE void Notify_BrushSize_FromMDI();
    Q_INVOKABLE void Notify_CustomBrushShape_FromMDI();
    Q_INVOKABLE void Do_cmdCustomBrushClick();
    Q_INVOKABLE void Do_cmdCustomPatternClick();
    Q_INVOKABLE void Do_cmdStampLoadClick(int Index);
    Q_INVOKABLE void Notify_PolygonOperationType_FromMDI();
    Q_INVOKABLE void Notify_PolygonDrawMethod_FromMDI();
    Q_INVOKABLE void Notify_PolygonSetting_FromMDI();
    Q_INVOKABLE void Notify_ColorToUse_FromMDI();
    Q_INVOKABLE void Notify_BezierFillColor_FromMDI();
    Q_INVOKABLE void Notify_BezierOp_FromMDI();
    Q_INVOKABLE void Do_imgToolsClick(int Index);
    Q_INVOKABLE void Notify_FillPattern_FromMDI();
    Q_INVOKABLE void Notify_BrushStyle_FromMDI();
    Q_INVOKABLE void Notify_PaintBrushTranslucencyPercent();
    Q_INVOKABLE void Notify_SprayDensity();
    Q_INVOKABLE void Notify_SprayTranslucencyPercent();
    Q_INVOKABLE void Notify_LineType_FromMDI();
    Q_INVOKABLE void Notify_RectangleCornerShape_FromMDI();
    Q_INVOKABLE void Notify_OvalEnhancement_FromMDI();
    Q_INVOKABLE void Do_cmdRegionOperation(int Index);
    Q_INVOKABLE void Do_imgUpperLeftClick();
    Q_INVOKABLE void Do_imgLowerRightClick();
    Q_INVOKABLE void Do_imgPanoramicClick();
    Q_INVOKABLE void Do_cmdFileNewClick();
    Q_INVOKABLE void Do_cmdFileBrowserClick();
    Q_INVOKABLE void Do_cmdFileOpenClick();
    Q_INVOKABLE void Do_mnuEffectsSubClick(int Index);
    Q_INVOKABLE void Do_UpdateZoomButtons();
    Q_INVOKABLE void Do_UpdateGlassButton();
    Q_INVOKABLE void Do_UpdateModeChange();
    Q_INVOKABLE void do_cmdPalette256Click();

    // The Edit menu's further commands.
    static constexpr int TranslucentSteps = 9;  // 10 to 90 percent
    void mnuEditCutCopy_Click();
    void mnuEditPasteTranslucentTransparentSub_Click(int Index);
    void mnuEditPasteTranslucentNotTransparentSub_Click(int Index);
    void mnuEditCrop_Click();
    void mnuEditCropPerImageInsideRegion_Click();
    void mnuEditCleansePaint_Click();
    void mnuEditClearClipboard_Click();

    // The BPP menu.
    void mnuColorReductionSub_Click(int Index);
    void mnuColorReductionBWSub_Click(int Index);

    // The File menu's commands.
    void mnuFileSave_Click();
    bool SaveAsBMP();
    void mnuFileSaveGIFSub_Click();
    bool SaveAsGIF(const QString& Path);
    // The PNG kinds of the Save As menu, in its order.
    enum PNGKind { PNG24Bit = 0, PNGOptimized = 1, PNG8Bit = 2 };
    void mnuFileSavePNGSub_Click(int Index);
    bool SaveAsPNG(const QString& Path, int Index);
    void mnuFileSaveTGAorPCX_Click(bool Pcx);
    bool SaveAsTGAOrPCX(const QString& Path, bool Pcx);
    void mnuFileSaveICOorCUR_Click(bool Cursor);
    void mnuFileClose_Click();
    void mnuFileCloseAll_Click();
    void mnuFileExit_Click();
    // Marks the document's slot changed or saved.
    void MarkDirty(bool Dirty);
    bool Dirty() const;
    bool RegionExists() const;
    // Takes the frame's options into the canvas.
    void ApplyOptions();
    int Slot() const;
    UndoHistory& History() { return Undo; }

protected:
    void showEvent(QShowEvent* Event) override;
    void closeEvent(QCloseEvent* Event) override;

private:
    // frmTsPaint_Menus.cpp
    void BuildMenus();
    QAction* AddAction(QMenu* Menu, const QString& Name, const QString& Caption, const QKeySequence& Keys = {});
    // frmTsPaint_File.cpp
    void FirstActivation();
    bool TakePicture(clsDIB& Picture);
    // frmTsPaint_GIF.cpp
    static bool ReadGIFFirstFrame(const QString& Path, clsDIB& Picture);
    // frmTsPaint_PNG.cpp: Message gets the reader's own words when it refuses the file.
    static bool ReadPNGFile(const QString& Path, clsDIB& Picture, QString& Message);
    // frmTsPaint_Icons.cpp: the chosen image of an icon, or a cursor's, drawn on white.
    static bool ReadIconOrCursor(const QString& Path, bool Cursor, clsDIB& Picture, QString& Message);
    static bool ReadTGAOrPCX(const QString& Path, bool Pcx, clsDIB& Picture);
    void SetCaption();
    bool SaveTo(const QString& Path);
    // The message of a failed save, or the picture taken as the file it was saved to.
    bool AfterSave(bool Saved, const QString& Path);
    // frmTsPaint_BPP.cpp
    void BuildBPPMenu();
    void ReduceColors(const basReduce::Recipe& Plan);
    // frmTsPaint_Toolbox.cpp
    void SelectTool(int Index);
    void AbortRunningShape();
    // frmTsPaint_View.cpp
    bool SetZoom(int Factor);
    // frmTsPaint_Edit.cpp
    void SaveUndoState();
    void DropForUndo();
    bool PictureColors(std::vector<uint32_t>& Colors) const;
    void LoadUndoStateInto(bool Loaded, int OldWidth, int OldHeight);
    void OnPictureChanged();
    void PasteFromClipboard(int Kind, int Percent = 100);
    void ShowSizePanels();
    frmTsMainPro* Frame() const;

    UndoHistory Undo;
    bool FirstActivationDone = false;
    bool Busy = false;
    bool IgnoreChanges = false;
    std::vector<QAction*> mnuEditSub;
    QMenu* mnuFile = nullptr;
    QMenu* mnuEdit = nullptr;
    QMenu* mnuInquiry = nullptr;
};
