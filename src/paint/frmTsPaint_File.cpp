// Opening, first activation, saving and closing of the paint document.
#include <QLabel>
#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QMdiSubWindow>

#include "basFileHistory.h"
#include "basMsgBox.h"
#include "basSettings.h"
#include "basTsMainPro.h"
#include "clsTsDialog.h"
#include "frmTsMainPro.h"
#include "frmTsPaint.h"
#include "frmTsSizeOfNew.h"
#include "ucCanvas.h"

using namespace basMsgBox;

namespace {

constexpr long long MaxPixels = 15000000;

// Extensions whose readers arrive with their own codecs; until then they cannot be opened here.
bool AwaitingOwnReader(const QString& Ext)
{
    static const QStringList Pending = {".TIF", ".TIFF"};
    return Pending.contains(Ext);
}

} // namespace

void frmTsPaint::FirstActivation()
{
    Undo.UndoBase = basTsMainPro::TempFolder + property("Tag").toString();
    // The canvas takes the toolbox's present state.
    for (const char* Name :
         {"Notify_BrushSize_FromMDI", "Notify_CustomBrushShape_FromMDI", "Notify_PolygonOperationType_FromMDI",
          "Notify_PolygonDrawMethod_FromMDI", "Notify_PolygonSetting_FromMDI", "Notify_ColorToUse_FromMDI",
          "Notify_BezierFillColor_FromMDI", "Notify_FillPattern_FromMDI", "Notify_BrushStyle_FromMDI",
          "Notify_PaintBrushTranslucencyPercent", "Notify_SprayDensity", "Notify_SprayTranslucencyPercent",
          "Notify_LineType_FromMDI", "Notify_RectangleCornerShape_FromMDI", "Notify_OvalEnhancement_FromMDI"})
        QMetaObject::invokeMethod(this, Name);
    ApplyOptions();
    if (frmTsMainPro* F = Frame())
        connect(F, &frmTsMainPro::OptionsChanged, this, &frmTsPaint::ApplyOptions);

    const int Mode = basTsMainPro::DocOpenMode;
    if (Mode == basTsMainPro::DocOpenFromCommandLine || Mode == basTsMainPro::DocOpenFromFileOpen ||
        Mode == basTsMainPro::DocOpenFromFileBrowser) {
        LoadOpenFile(basTsMainPro::DocOpenPath, Mode);
    } else if (Mode == basTsMainPro::DocOpenFromFileNew) {
        clsDIB Blank;
        if (Blank.CreateBlankDIB(basTsMainPro::NewImageWidth, basTsMainPro::NewImageHeight, 32, 0xFFFFFF, true)) {
            TakePicture(Blank);
            FilePath.clear();
            SetCaption();
        }
    }
    if (Canvas->DIB.DIBBitsPtr() && Undo.UndoPos == 0) {
        Undo.SaveUndoState(Canvas->DIB);
        updateEditButtons();
    }
    Do_UpdateModeChange();
}

bool frmTsPaint::TakePicture(clsDIB& Picture)
{
    if (!Canvas->SetPicture(Picture))
        return false;
    Canvas->SetScrollValues(0, 0);
    UpdateDisplay();
    return true;
}

void frmTsPaint::SetCaption()
{
    const QString Caption = FilePath.isEmpty()
                                ? QStringLiteral("Untitled:%1").arg(Slot() + 1)
                                : basTsMainPro::ShortenPathForDisplay(FilePath, basTsMainPro::DisplayPathLength);
    setWindowTitle(Caption);
}

void frmTsPaint::LoadOpenFile(const QString& Path, int)
{
    // 1.
    basTsMainPro::CloseToolWindows();
    if (!basTsMainPro::FileExists(Path)) {
        MsgBox(QStringLiteral("File not found"));
        return;
    }
    // 2.
    const QString Ext = basTsMainPro::ParseFileSpec(Path, 6).toUpper();
    if (Ext.isEmpty()) {
        MsgBox(QStringLiteral("No file extension"));
        return;
    }
    // 3.
    if (Ext == ".ANI") {
        MsgBox(QStringLiteral("Please use Icon Editor main program (To extract icons from ANI file, select Extract\n"
                              "main menu.  To edit ANI, select Animation main menu)"));
        return;
    }
    if (Ext == ".DLL" || Ext == ".ICL" || Ext == ".EXE") {
        MsgBox(QStringLiteral("Please use Icon Editor main program (To extract icons, select Extract main menu)"));
        return;
    }
    clsDIB Incoming;
    QString ReaderMessage;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    // PNG goes through the program's own reader until the picture loader takes it.
    const bool Read =
        !AwaitingOwnReader(Ext) &&
        (Ext == ".ICO" || Ext == ".CUR" ? ReadIconOrCursor(Path, Ext == ".CUR", Incoming, ReaderMessage)
         : Ext == ".TGA" || Ext == ".PCX" ? ReadTGAOrPCX(Path, Ext == ".PCX", Incoming)
         : Ext == ".GIF"                  ? ReadGIFFirstFrame(Path, Incoming)
         : Ext == ".PNG"                  ? ReadPNGFile(Path, Incoming, ReaderMessage)
                                          : Incoming.CreateDIBFromFile(Path, false));
    QApplication::restoreOverrideCursor();
    // 4.
    if (!Read) {
        if (ReaderMessage.isEmpty())
            MsgBox(QStringLiteral("Failed to retrieve incoming image"));
        else
            MsgBox(ReaderMessage, MsgBoxButtons::OK, MsgBoxIcon::Exclamation);
        return;
    }
    if (static_cast<long long>(Incoming.DIBWidth()) * Incoming.DIBHeight() > MaxPixels) {
        MsgBox(QStringLiteral("Incoming image exceeds max size allowed."));
        return;
    }
    // 5.
    if (!TakePicture(Incoming)) {
        MsgBox(QStringLiteral("Failed to retrieve incoming image"));
        return;
    }
    FilePath = Path;
    OriginalWidth = Incoming.DIBWidth();
    OriginalHeight = Incoming.DIBHeight();
    OriginalBitsPerPixel = Incoming.DIBbpp();
    OriginalFileSize = QFileInfo(Path).size();
    SetCaption();
    basFileHistory::AddToHistory(QString::fromLatin1(basFileHistory::SectionPaint), Path,
                                 basSettings::SettingsFilePath());
    if (frmTsMainPro* F = Frame())
        F->MDI_List_File_History();
    // A file opened into a window that already had a picture starts a new history from it.
    if (Undo.UndoPos > 0) {
        Undo.DeleteAll();
        Undo.UndoPos = Undo.UndoTop = 0;
        Undo.SaveUndoState(Canvas->DIB);
        updateEditButtons();
    }
    MarkDirty(false);
}

void frmTsPaint::Do_cmdFileNewClick()
{
    basTsMainPro::CloseToolWindows();
    frmTsSizeOfNew Dialog(false, this);
    if (Dialog.exec() != QDialog::Accepted)
        return;
    if (frmTsMainPro* F = Frame())
        F->ShowNewDocument(basTsMainPro::DocOpenFromFileNew, QString());
}

void frmTsPaint::Do_cmdFileOpenClick()
{
    basTsMainPro::CloseToolWindows();
    clsTsDialog Dialog;
    Dialog.Filter = frmTsMainPro::OpenFilter();
    Dialog.DialogTitle = tr("Open");
    Dialog.InitDir = FilePath.isEmpty() ? QDir::currentPath() : basTsMainPro::ParseFileSpec(FilePath, 0);
    if (!Dialog.ShowOpen(this) || Dialog.FileName.isEmpty())
        return;
    // In SDI the one window takes the file; otherwise a new window opens.
    if (basTsMainPro::SDIOnly) {
        if (!AskSaveCurr())
            return;
        LoadOpenFile(Dialog.FileName, basTsMainPro::DocOpenFromFileOpen);
        return;
    }
    if (frmTsMainPro* F = Frame())
        F->ShowNewDocument(basTsMainPro::DocOpenFromFileOpen, Dialog.FileName);
}

void frmTsPaint::Do_cmdFileBrowserClick()
{
    if (QWidget* Browser = basTsMainPro::CreateForm(QStringLiteral("frmTsBrowser")))
        Browser->show();
}

void frmTsPaint::mnuFileSave_Click()
{
    if (!Canvas->DIB.DIBBitsPtr())
        return;
    if (FilePath.isEmpty()) {
        MsgBox(QStringLiteral("This is a newly created, please choose a graphics format to save."));
        return;
    }
    const QString Ext = basTsMainPro::ParseFileSpec(FilePath, 6).toUpper();
    if (Ext == ".BMP") {
        SaveTo(FilePath);
        return;
    }
    if (Ext == ".TGA" || Ext == ".PCX") {
        SaveAsTGAOrPCX(FilePath, Ext == ".PCX");
        return;
    }
    if (Ext == ".GIF") {
        // A GIF asks its options again: they are not kept with the picture.
        SaveAsGIF(FilePath);
        return;
    }
    if (Ext == ".JPG" || Ext == ".JPEG") {
        MsgBox(QStringLiteral("For JPG graphics, please select desired quality."));
        return;
    }
    MsgBox(QStringLiteral("Please choose a graphics format to save."));
}

bool frmTsPaint::SaveAsBMP()
{
    if (!Canvas->DIB.DIBBitsPtr())
        return false;
    clsTsDialog Dialog;
    Dialog.Filter = QStringLiteral("(*.bmp)|*.bmp|");
    Dialog.DialogTitle = tr("Save As BMP");
    Dialog.InitDir = FilePath.isEmpty() ? QDir::currentPath() : basTsMainPro::ParseFileSpec(FilePath, 0);
    Dialog.FileName = FilePath.isEmpty() ? QString() : basTsMainPro::ParseFileSpec(FilePath, 5) + ".bmp";
    if (!Dialog.ShowSave(this) || Dialog.FileName.isEmpty())
        return false;
    QString Path = Dialog.FileName;
    if (basTsMainPro::ParseFileSpec(Path, 6).toUpper() != ".BMP")
        Path += QStringLiteral(".bmp");
    return SaveTo(Path);
}

bool frmTsPaint::SaveTo(const QString& Path)
{
    if (basTsMainPro::FileExists(Path) && basTsMainPro::IsReadOnlyFile(Path)) {
        MsgBox(QStringLiteral("File is read only."));
        return false;
    }
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const bool Saved = Canvas->DIB.Save_DIB_To_File(Path, Canvas->DIB);
    QApplication::restoreOverrideCursor();
    return AfterSave(Saved, Path);
}

bool frmTsPaint::AfterSave(bool Saved, const QString& Path)
{
    if (!Saved) {
        MsgBox(QStringLiteral("Failed to save this file."));
        return false;
    }
    // The picture is now that file: its name in the caption and the history, nothing unsaved.
    FilePath = Path;
    SetCaption();
    MarkDirty(false);
    basFileHistory::AddToHistory(QString::fromLatin1(basFileHistory::SectionPaint), Path,
                                 basSettings::SettingsFilePath());
    if (frmTsMainPro* F = Frame())
        F->MDI_List_File_History();
    return true;
}

void frmTsPaint::mnuFileClose_Click()
{
    if (QMdiSubWindow* Sub = qobject_cast<QMdiSubWindow*>(parentWidget()))
        Sub->close();
    else
        close();
}

namespace {

// Asks once for every unsaved picture; true when the windows may close.
bool AskForAllDocuments(const QString& LastLine)
{
    const auto& Slots = basTsMainPro::DocSlots();
    const bool AnyDirty = std::any_of(Slots.begin(), Slots.end(),
                                      [](const basTsMainPro::DocSlot& S) { return !S.Closed && S.Dirty; });
    if (AnyDirty && MsgBox(QStringLiteral("Changes to one or more files have not been saved yet.\n") + LastLine,
                           MsgBoxButtons::YesNo, MsgBoxIcon::Question) != MsgBoxResult::Yes)
        return false;
    // The question has been answered for every window.
    for (basTsMainPro::DocSlot& S : basTsMainPro::DocSlots())
        S.Dirty = false;
    return true;
}

} // namespace

void frmTsPaint::mnuFileCloseAll_Click()
{
    if (AskForAllDocuments(QStringLiteral("Proceed to close all windows?")))
        basTsMainPro::CloseAllDocuments();
}

void frmTsPaint::mnuFileExit_Click()
{
    if (!AskForAllDocuments(QStringLiteral("Proceed to exit program?")))
        return;
    if (frmTsMainPro* F = Frame())
        F->mnuFileExit_Click();
}

void frmTsPaint::mnuIconEditorSub_Click(int Index)
{
    // The icon and animation editors work alone: they are not started beside other pictures.
    int Open = 0;
    for (QWidget* Form : basTsMainPro::DocForms())
        Open += Form != nullptr;
    if (Open > 1) {
        MsgBox(QStringLiteral("You have more than one picture windows loaded currently"));
        return;
    }
    if (QWidget* Editor = basTsMainPro::CreateForm(Index == 0 ? QStringLiteral("frmTsIconEdit")
                                                              : QStringLiteral("frmTsGIFani"))) {
        Editor->show();
    }
}
