// The document's own menus. While the document is active the frame shows them in its menu bar in
// place of its own File menu and document menus.
#include <QAction>
#include <QLocale>
#include <QMenu>
#include <QMenuBar>

#include "basTsMainPro.h"
#include "frmTsMainPro.h"
#include "frmTsPaint.h"
#include "ucCanvas.h"

QAction* frmTsPaint::AddAction(QMenu* Menu, const QString& Name, const QString& Caption, const QKeySequence& Keys)
{
    auto* Action = new QAction(Caption, this);
    Action->setObjectName(Name);
    if (!Keys.isEmpty()) {
        Action->setShortcut(Keys);
        Action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        addAction(Action);
    }
    Menu->addAction(Action);
    return Action;
}

void frmTsPaint::BuildMenus()
{
    DocumentMenuBar = new QMenuBar(this);
    DocumentMenuBar->setObjectName(QStringLiteral("DocumentMenuBar"));
    DocumentMenuBar->setNativeMenuBar(false);
    DocumentMenuBar->hide();

    mnuFile = DocumentMenuBar->addMenu(tr("&File"));
    mnuFile->setObjectName(QStringLiteral("mnuFile"));
    connect(AddAction(mnuFile, "mnuFileNew", tr("&New ...."), QKeySequence::New), &QAction::triggered, this,
            &frmTsPaint::Do_cmdFileNewClick);
    connect(AddAction(mnuFile, "mnuFileOpen", tr("&Open ...."), QKeySequence::Open), &QAction::triggered, this,
            &frmTsPaint::Do_cmdFileOpenClick);
    mnuFile->addSeparator();
    connect(AddAction(mnuFile, "mnuFileSave", tr("&Save"), QKeySequence::Save), &QAction::triggered, this,
            &frmTsPaint::mnuFileSave_Click);
    QMenu* SaveAs = mnuFile->addMenu(tr("Save &As"));
    SaveAs->setObjectName(QStringLiteral("mnuFileSaveAs"));
    connect(AddAction(SaveAs, "mnuFileSaveBMPSub", tr("&BMP ...."), QKeySequence::SaveAs), &QAction::triggered, this,
            [this] { SaveAsBMP(); });
    connect(AddAction(SaveAs, "mnuFileSaveGIFSub", tr("&GIF ....")), &QAction::triggered, this,
            &frmTsPaint::mnuFileSaveGIFSub_Click);
    connect(AddAction(SaveAs, "mnuFileSaveTGASub", tr("&TGA ....")), &QAction::triggered, this,
            [this] { mnuFileSaveTGAorPCX_Click(false); });
    connect(AddAction(SaveAs, "mnuFileSavePCXSub", tr("P&CX ....")), &QAction::triggered, this,
            [this] { mnuFileSaveTGAorPCX_Click(true); });
    // JPG and TIF arrive with their writers.
    for (const auto& [Name, Caption] :
         {std::pair{"mnuFileSaveJPGSub", "&JPG ...."}, std::pair{"mnuFileSaveTIFSub", "T&IF ...."}})
        AddAction(SaveAs, Name, tr(Caption))->setEnabled(false);
    connect(AddAction(SaveAs, "mnuFileSaveICOSub", tr("&ICO ....")), &QAction::triggered, this,
            [this] { mnuFileSaveICOorCUR_Click(false); });
    connect(AddAction(SaveAs, "mnuFileSaveCURSub", tr("C&UR ....")), &QAction::triggered, this,
            [this] { mnuFileSaveICOorCUR_Click(true); });
    // PNG, in its place after JPG: three kinds of file.
    QMenu* Png = new QMenu(tr("&PNG ...."), SaveAs);
    Png->setObjectName(QStringLiteral("mnuFileSavePNGSub"));
    SaveAs->insertMenu(findChild<QAction*>(QStringLiteral("mnuFileSaveTIFSub"), Qt::FindDirectChildrenOnly), Png);
    const char* const PngEntries[][2] = {{"mnuFileSavePNG24", "Save As 24-Bit PNG"},
                                         {"mnuFileSavePNGOptimized", "Save As Optimized PNG"},
                                         {"mnuFileSavePNG8", "Save As Paletted 8-Bit PNG"}};
    for (int I = 0; I < 3; ++I)
        connect(AddAction(Png, PngEntries[I][0], tr(PngEntries[I][1])), &QAction::triggered, this,
                [this, I] { mnuFileSavePNGSub_Click(I); });
    mnuFile->addSeparator();
    connect(AddAction(mnuFile, "mnuFilePrint", tr("&Print ...."), QKeySequence::Print), &QAction::triggered, this, [] {
        if (QWidget* Print = basTsMainPro::CreateForm(QStringLiteral("frmTsPrint")))
            Print->show();
    });
    mnuFile->addSeparator();
    connect(AddAction(mnuFile, "mnuFileClose", tr("&Close"), QKeySequence::Close), &QAction::triggered, this,
            &frmTsPaint::mnuFileClose_Click);
    connect(AddAction(mnuFile, "mnuFileCloseAll", tr("Close A&ll")), &QAction::triggered, this,
            &frmTsPaint::mnuFileCloseAll_Click);
    mnuFile->addSeparator();
    connect(AddAction(mnuFile, "mnuFileExit", tr("E&xit")), &QAction::triggered, this, &frmTsPaint::mnuFileExit_Click);

    mnuEdit = DocumentMenuBar->addMenu(tr("&Edit"));
    mnuEdit->setObjectName(QStringLiteral("mnuEdit"));
    const struct {
        const char* Name;
        const char* Caption;
        QKeySequence Keys;
        void (frmTsPaint::*Slot)();
    } EditEntries[] = {
        {"mnuEditUndoAll", "Undo &All", {}, &frmTsPaint::mnuEditUndoAll_Click},
        {"mnuEditUndo", "&Undo", QKeySequence::Undo, &frmTsPaint::mnuEditUndo_Click},
        {"mnuEditRedo", "&Redo", QKeySequence(Qt::CTRL | Qt::Key_Y), &frmTsPaint::mnuEditRedo_Click},
        {"mnuEditCut", "Cu&t", QKeySequence::Delete, &frmTsPaint::mnuEditCut_Click},
        {"mnuEditCopy", "&Copy", QKeySequence::Copy, &frmTsPaint::mnuEditCopy_Click},
        {"mnuEditPaste", "&Paste", QKeySequence::Paste, &frmTsPaint::mnuEditPaste_Click},
        {"mnuEditPasteTransparent", "Paste &Transparent", {}, &frmTsPaint::mnuEditPasteTransparent_Click},
    };
    for (const auto& Entry : EditEntries) {
        QAction* Action = AddAction(mnuEdit, Entry.Name, tr(Entry.Caption), Entry.Keys);
        connect(Action, &QAction::triggered, this, Entry.Slot);
        mnuEditSub.push_back(Action);
        if (QString::fromLatin1(Entry.Name) == "mnuEditRedo") {
            Action->setShortcuts({QKeySequence(Qt::CTRL | Qt::Key_Y), QKeySequence::Redo});
            mnuEdit->addSeparator();
        }
    }

    // Entries beyond the toolbar's, in the order of the menu.
    mnuEdit->addSeparator();
    // Ctrl+X takes the region to the clipboard as users expect; Delete only clears its place.
    connect(AddAction(mnuEdit, "mnuEditCutCopy", tr("Cut && Cop&y"), QKeySequence::Cut), &QAction::triggered, this,
            &frmTsPaint::mnuEditCutCopy_Click);
    QMenu* Translucent = mnuEdit->addMenu(tr("Paste Trans&lucent"));
    Translucent->setObjectName(QStringLiteral("mnuEditPasteTranslucent"));
    QMenu* TranslucentKeyed = Translucent->addMenu(tr("&Transparent"));
    TranslucentKeyed->setObjectName(QStringLiteral("mnuEditPasteTranslucentTransparent"));
    QMenu* TranslucentPlain = Translucent->addMenu(tr("&Not Transparent"));
    TranslucentPlain->setObjectName(QStringLiteral("mnuEditPasteTranslucentNotTransparent"));
    for (int I = 0; I < TranslucentSteps; ++I) {
        const int Percent = 10 + 10 * I;
        connect(AddAction(TranslucentKeyed, QStringLiteral("mnuEditPasteTranslucentTransparentSub_%1").arg(I),
                          tr("%1 %").arg(Percent)),
                &QAction::triggered, this, [this, I] { mnuEditPasteTranslucentTransparentSub_Click(I); });
        connect(AddAction(TranslucentPlain, QStringLiteral("mnuEditPasteTranslucentNotTransparentSub_%1").arg(I),
                          tr("%1 %").arg(Percent)),
                &QAction::triggered, this, [this, I] { mnuEditPasteTranslucentNotTransparentSub_Click(I); });
    }
    mnuEdit->addSeparator();
    connect(AddAction(mnuEdit, "mnuEditCrop", tr("C&rop")), &QAction::triggered, this, &frmTsPaint::mnuEditCrop_Click);
    connect(AddAction(mnuEdit, "mnuEditCropPerImageInsideRegion", tr("Crop Per &Image Inside Region")),
            &QAction::triggered, this, &frmTsPaint::mnuEditCropPerImageInsideRegion_Click);
    mnuEdit->addSeparator();
    connect(AddAction(mnuEdit, "mnuEditCleansePaint", tr("Cl&eanse Paint")), &QAction::triggered, this,
            &frmTsPaint::mnuEditCleansePaint_Click);
    connect(AddAction(mnuEdit, "mnuEditClearClipboard", tr("Clear Clip&board")), &QAction::triggered, this,
            &frmTsPaint::mnuEditClearClipboard_Click);
    connect(mnuEdit, &QMenu::aboutToShow, this, &frmTsPaint::updateEditButtons);

    BuildBPPMenu();

    mnuInquiry = DocumentMenuBar->addMenu(tr("&Inquiry"));
    mnuInquiry->setObjectName(QStringLiteral("mnuInquiry"));
    connect(mnuInquiry, &QMenu::aboutToShow, this, [this] {
        mnuInquiry->clear();
        const QString Unknown = QStringLiteral("-");
        const bool Opened = OriginalWidth > 0;
        const QString Texts[] = {
            QStringLiteral("Original Image Size:  ") +
                (Opened ? QStringLiteral("%1 x %2").arg(OriginalWidth).arg(OriginalHeight) : Unknown),
            QStringLiteral("Current Net Size:  ") +
                (Canvas->DIB.DIBBitsPtr()
                     ? QStringLiteral("%1 x %2").arg(Canvas->DIB.DIBWidth()).arg(Canvas->DIB.DIBHeight())
                     : Unknown),
            QStringLiteral("Original image color depth:  ") +
                (Opened ? QStringLiteral("%1-bit").arg(OriginalBitsPerPixel) : Unknown),
            QStringLiteral("File Size:  ") + (OriginalFileSize > 0 ? QLocale().toString(OriginalFileSize) + " bytes"
                                                                   : Unknown),
        };
        for (const QString& Text : Texts)
            mnuInquiry->addAction(Text)->setEnabled(false);
    });
    updateEditButtons();
}
