// The print window: its controls, the picture it takes from the document, and printing to a
// printer of the system or to a PDF file.
#include "frmTsPrint.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPageSize>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QStandardPaths>
#include <QVBoxLayout>

#include <algorithm>

#include "CanvasView.h"
#include "PixelArray32.h"
#include "basMath.h"
#include "basMsgBox.h"
#include "basTsMainPro.h"
#include "clsTsDialog.h"
#include "frmTsMainPro.h"

using namespace basMsgBox;

namespace {

std::optional<QStringList>& PrinterOverride()
{
    static std::optional<QStringList> Names;
    return Names;
}

constexpr int PreviewSide = 480;

const QPageSize::PageSizeId PaperChoices[] = {
    QPageSize::A3,     QPageSize::A4,    QPageSize::A5,        QPageSize::B5,
    QPageSize::Letter, QPageSize::Legal, QPageSize::Executive, QPageSize::Tabloid,
};

QPageSize::PageSizeId DefaultPaper()
{
    if (!PrinterOverride()) {
        const QPrinterInfo Default = QPrinterInfo::defaultPrinter();
        if (!Default.isNull() && Default.defaultPageSize().isValid())
            return Default.defaultPageSize().id();
    }
    return QLocale::system().measurementSystem() == QLocale::ImperialUSSystem ? QPageSize::Letter : QPageSize::A4;
}

// The picture as an opaque image of its own; the surface may have any depth.
QImage ImageOfPicture(clsDIB& Source)
{
    const int W = Source.DIBWidth();
    const int H = Source.DIBHeight();
    if (!Source.DIBBitsPtr() || W < 1 || H < 1)
        return QImage();
    clsDIB Copy;
    clsDIB* Surface = &Source;
    if (Source.StorageBpp() != 32) {
        if (!Copy.CreateBlankDIB(W, H, 32, 0xFFFFFF, true) ||
            !BitBlt(Copy.DIBhDC(), 0, 0, W, H, Source.DIBhDC(), 0, 0, SRCCOPY))
            return QImage();
        Surface = &Copy;
    }
    PixelArray32 Pixels(*Surface);
    if (!Pixels.Valid())
        return QImage();
    QImage Image(W, H, QImage::Format_RGB32);
    if (Image.isNull())
        return QImage();
    for (int Y = 0; Y < H; ++Y) {
        const uint32_t* From = Pixels.Row(Y);
        auto* To = reinterpret_cast<QRgb*>(Image.scanLine(Y));
        for (int X = 0; X < W; ++X)
            To[X] = From[X] | 0xFF000000u;
    }
    return Image;
}

} // namespace

frmTsPrint::frmTsPrint(QWidget* Parent) : QDialog(Parent)
{
    setObjectName(QStringLiteral("frmTsPrint"));
    setWindowTitle(tr("Print"));
    setModal(true);
    BuildControls();

    const QStringList Printers = PrinterNames();
    cboPrinter->addItems(Printers);
    const int DefaultIndex = PrinterOverride() ? 0 : Printers.indexOf(QPrinterInfo::defaultPrinterName());
    cboPrinter->setCurrentIndex(std::max(0, DefaultIndex));
    // Without a printer the window still prints, to a PDF file.
    optDestination[Printers.isEmpty() ? 1 : 0]->setChecked(true);
    const int Paper = cboPaperSize->findData(static_cast<int>(DefaultPaper()));
    cboPaperSize->setCurrentIndex(Paper >= 0 ? Paper : cboPaperSize->findData(static_cast<int>(QPageSize::A4)));
    ConnectControls();
    DestinationChanged();
    UnitsChanged();

    QWidget* Document = nullptr;
    if (frmTsMainPro* Frame = frmTsMainPro::Instance())
        Document = Frame->ActiveChild();
    if (Document) {
        DocumentName = basTsMainPro::ParseFileSpec(Document->windowTitle(), 5);
        DocumentName.replace(QLatin1Char(':'), QLatin1Char('_'));
        if (auto* Canvas = Document->findChild<CanvasView*>(QStringLiteral("Canvas")))
            SetPicture(Canvas->DIB);
    }
    if (DocumentName.isEmpty())
        DocumentName = QStringLiteral("Untitled");
    cmdPrint->setEnabled(!PictureImage.isNull());
}

frmTsPrint::~frmTsPrint() = default;

void frmTsPrint::Register()
{
    basTsMainPro::RegisterFormFactory(QStringLiteral("frmTsPrint"), []() -> QWidget* {
        if (QWidget* Open = basTsMainPro::FindForm(QStringLiteral("frmTsPrint")))
            return Open;
        auto* Window = new frmTsPrint(frmTsMainPro::Instance());
        Window->setAttribute(Qt::WA_DeleteOnClose);
        return Window;
    });
}

QStringList frmTsPrint::PrinterNames()
{
    if (PrinterOverride())
        return *PrinterOverride();
    return QPrinterInfo::availablePrinterNames();
}

void frmTsPrint::SetPrinterNamesForTest(std::optional<QStringList> Names)
{
    PrinterOverride() = std::move(Names);
}

void frmTsPrint::BuildControls()
{
    auto* Main = new QHBoxLayout(this);
    auto* Left = new QVBoxLayout;
    Main->addLayout(Left);

    auto* fraDestination = new QGroupBox(tr("Print to"), this);
    auto* Destination = new QGridLayout(fraDestination);
    for (int I = 0; I < 2; ++I) {
        optDestination.push_back(new QRadioButton(I == 0 ? tr("&Printer:") : tr("P&DF file:"), fraDestination));
        optDestination[I]->setObjectName(QStringLiteral("optDestination_%1").arg(I));
        Destination->addWidget(optDestination[I], I, 0);
    }
    cboPrinter = new QComboBox(fraDestination);
    cboPrinter->setObjectName(QStringLiteral("cboPrinter"));
    cboPrinter->setPlaceholderText(tr("(no printer)"));
    Destination->addWidget(cboPrinter, 0, 1, 1, 2);
    txbPdfFile = new QLineEdit(fraDestination);
    txbPdfFile->setObjectName(QStringLiteral("txbPdfFile"));
    txbPdfFile->setMinimumWidth(180);
    Destination->addWidget(txbPdfFile, 1, 1);
    cmdPdfBrowse = new QPushButton(tr("Browse ...."), fraDestination);
    cmdPdfBrowse->setObjectName(QStringLiteral("cmdPdfBrowse"));
    cmdPdfBrowse->setAutoDefault(false);
    Destination->addWidget(cmdPdfBrowse, 1, 2);
    Left->addWidget(fraDestination);

    auto* fraPaper = new QGroupBox(tr("Paper"), this);
    auto* Paper = new QHBoxLayout(fraPaper);
    cboPaperSize = new QComboBox(fraPaper);
    cboPaperSize->setObjectName(QStringLiteral("cboPaperSize"));
    for (QPageSize::PageSizeId Id : PaperChoices)
        cboPaperSize->addItem(QPageSize(Id).name(), static_cast<int>(Id));
    Paper->addWidget(cboPaperSize, 1);
    for (int I = 0; I < 2; ++I) {
        optOrientation.push_back(new QRadioButton(I == 0 ? tr("Portrait") : tr("Landscape"), fraPaper));
        optOrientation[I]->setObjectName(QStringLiteral("optOrientation_%1").arg(I));
        Paper->addWidget(optOrientation[I]);
    }
    optOrientation[0]->setChecked(true);
    Left->addWidget(fraPaper);

    auto* fraPlacement = new QGroupBox(tr("Position and size"), this);
    auto* Grid = new QGridLayout(fraPlacement);
    auto Field = [fraPlacement](const QString& Name) {
        auto* Box = new QDoubleSpinBox(fraPlacement);
        Box->setObjectName(Name);
        Box->setKeyboardTracking(false); // a value counts once it is typed in full
        Box->setAlignment(Qt::AlignRight);
        return Box;
    };
    cboUnits = new QComboBox(fraPlacement);
    cboUnits->setObjectName(QStringLiteral("cboUnits"));
    cboUnits->addItems({tr("inch"), tr("mm")});
    Grid->addWidget(new QLabel(tr("Units:"), fraPlacement), 0, 0);
    Grid->addWidget(cboUnits, 0, 1);
    txbLeft = Field(QStringLiteral("txbLeft"));
    txbTop = Field(QStringLiteral("txbTop"));
    ckbCenter = new QCheckBox(tr("Center"), fraPlacement);
    ckbCenter->setObjectName(QStringLiteral("ckbCenter"));
    ckbCenter->setChecked(true);
    Grid->addWidget(new QLabel(tr("Left:"), fraPlacement), 1, 0);
    Grid->addWidget(txbLeft, 1, 1);
    Grid->addWidget(new QLabel(tr("Top:"), fraPlacement), 1, 2);
    Grid->addWidget(txbTop, 1, 3);
    Grid->addWidget(ckbCenter, 1, 4);
    txbWidth = Field(QStringLiteral("txbWidth"));
    txbHeight = Field(QStringLiteral("txbHeight"));
    ckbKeepRatio = new QCheckBox(tr("Keep proportions"), fraPlacement);
    ckbKeepRatio->setObjectName(QStringLiteral("ckbKeepRatio"));
    ckbKeepRatio->setChecked(true);
    Grid->addWidget(new QLabel(tr("Width:"), fraPlacement), 2, 0);
    Grid->addWidget(txbWidth, 2, 1);
    Grid->addWidget(new QLabel(tr("Height:"), fraPlacement), 2, 2);
    Grid->addWidget(txbHeight, 2, 3);
    Grid->addWidget(ckbKeepRatio, 2, 4);
    txbPercent = new QSpinBox(fraPlacement);
    txbPercent->setObjectName(QStringLiteral("txbPercent"));
    txbPercent->setRange(1, 10000);
    txbPercent->setKeyboardTracking(false);
    txbPercent->setAlignment(Qt::AlignRight);
    Grid->addWidget(new QLabel(tr("Size at (%):"), fraPlacement), 3, 0);
    Grid->addWidget(txbPercent, 3, 1);
    cmdFitToPaper = new QPushButton(tr("Fit to paper"), fraPlacement);
    cmdFitToPaper->setObjectName(QStringLiteral("cmdFitToPaper"));
    cmdOriginalSize = new QPushButton(tr("Original size"), fraPlacement);
    cmdOriginalSize->setObjectName(QStringLiteral("cmdOriginalSize"));
    for (QPushButton* Button : {cmdFitToPaper, cmdOriginalSize})
        Button->setAutoDefault(false);
    Grid->addWidget(cmdFitToPaper, 3, 2, 1, 2);
    Grid->addWidget(cmdOriginalSize, 3, 4);
    lblPixels = new QLabel(fraPlacement);
    lblPixels->setObjectName(QStringLiteral("lblPixels"));
    Grid->addWidget(lblPixels, 4, 0, 1, 5);
    Left->addWidget(fraPlacement);
    Left->addStretch(1);

    auto* Buttons = new QHBoxLayout;
    Buttons->addStretch(1);
    cmdPrint = new QPushButton(tr("Print"), this);
    cmdPrint->setObjectName(QStringLiteral("cmdPrint"));
    cmdPrint->setDefault(true);
    cmdClose = new QPushButton(tr("Close"), this);
    cmdClose->setObjectName(QStringLiteral("cmdClose"));
    cmdClose->setAutoDefault(false);
    Buttons->addWidget(cmdPrint);
    Buttons->addWidget(cmdClose);
    Left->addLayout(Buttons);

    picPreview = new QWidget(this);
    picPreview->setObjectName(QStringLiteral("picPreview"));
    picPreview->setMinimumSize(220, 280);
    picPreview->setAttribute(Qt::WA_OpaquePaintEvent);
    picPreview->installEventFilter(this);
    Main->addWidget(picPreview, 1);
}

void frmTsPrint::ConnectControls()
{
    for (QRadioButton* Option : optDestination)
        connect(Option, &QRadioButton::toggled, this, &frmTsPrint::DestinationChanged);
    connect(cmdPdfBrowse, &QPushButton::clicked, this, &frmTsPrint::ChoosePdfFile);
    connect(cboPaperSize, &QComboBox::currentIndexChanged, this, &frmTsPrint::PaperChanged);
    connect(optOrientation[1], &QRadioButton::toggled, this, &frmTsPrint::PaperChanged);
    connect(cboUnits, &QComboBox::currentIndexChanged, this, &frmTsPrint::UnitsChanged);
    for (QDoubleSpinBox* Box : {txbLeft, txbTop})
        connect(Box, &QDoubleSpinBox::valueChanged, this, &frmTsPrint::EdgeEdited);
    connect(txbWidth, &QDoubleSpinBox::valueChanged, this, [this] { SizeEdited(true); });
    connect(txbHeight, &QDoubleSpinBox::valueChanged, this, [this] { SizeEdited(false); });
    connect(txbPercent, &QSpinBox::valueChanged, this, &frmTsPrint::PercentEdited);
    connect(ckbCenter, &QCheckBox::toggled, this, &frmTsPrint::CenterToggled);
    connect(ckbKeepRatio, &QCheckBox::toggled, this, [this](bool On) {
        if (On)
            SizeEdited(true);
    });
    connect(cmdFitToPaper, &QPushButton::clicked, this, &frmTsPrint::FitToPaper);
    connect(cmdOriginalSize, &QPushButton::clicked, this, &frmTsPrint::OriginalSize);
    connect(cmdPrint, &QPushButton::clicked, this, &frmTsPrint::PrintNow);
    connect(cmdClose, &QPushButton::clicked, this, &QDialog::reject);
}

void frmTsPrint::DestinationChanged()
{
    const bool ToPrinter = optDestination[0]->isChecked();
    cboPrinter->setEnabled(ToPrinter && cboPrinter->count() > 0);
    txbPdfFile->setEnabled(!ToPrinter);
    cmdPdfBrowse->setEnabled(!ToPrinter);
}

bool frmTsPrint::SetPicture(clsDIB& Source)
{
    QImage Image = ImageOfPicture(Source);
    if (Image.isNull())
        return false;
    PictureImage = std::move(Image);
    PreviewImage = PictureImage.width() > PreviewSide || PictureImage.height() > PreviewSide
                       ? PictureImage.scaled(PreviewSide, PreviewSide, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                       : PictureImage;
    cmdPrint->setEnabled(true);
    // At its own size when that fits, else as large as the paper allows.
    OriginalSize();
    const QSizeF Paper = PaperSize();
    if (Place.width() > Paper.width() - 2 * FitMargin || Place.height() > Paper.height() - 2 * FitMargin)
        FitToPaper();
    return true;
}

bool frmTsPrint::ChoosePdfFile()
{
    clsTsDialog Dialog;
    Dialog.Filter = QStringLiteral("PDF (*.pdf)|*.pdf|");
    Dialog.DialogTitle = tr("Print to PDF file");
    Dialog.InitDir = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    Dialog.FileName = DocumentName + QStringLiteral(".pdf");
    Dialog.ShowPreview = false;
    if (!Dialog.ShowSave(this))
        return false;
    QString Path = Dialog.FileName;
    if (!Path.endsWith(QStringLiteral(".pdf"), Qt::CaseInsensitive))
        Path += QStringLiteral(".pdf");
    txbPdfFile->setText(Path);
    return true;
}

bool frmTsPrint::PrintNow()
{
    if (PictureImage.isNull())
        return false;
    const bool ToPrinter = optDestination[0]->isChecked();
    if (ToPrinter && PrinterNames().isEmpty()) {
        MsgBox(QStringLiteral("No printer found "), MsgBoxButtons::OK, MsgBoxIcon::Exclamation);
        return false;
    }
    const QString Refusal = CheckPlacement(Place, PaperSize(), PixelsPerInchX(), PixelsPerInchY());
    if (!Refusal.isEmpty()) {
        MsgBox(Refusal, MsgBoxButtons::OK, MsgBoxIcon::Exclamation);
        return false;
    }
    QPrinter Printer(QPrinter::HighResolution);
    Printer.setDocName(DocumentName);
    Printer.setFullPage(true); // positions count from the paper's corner
    Printer.setPageSize(QPageSize(static_cast<QPageSize::PageSizeId>(cboPaperSize->currentData().toInt())));
    Printer.setPageOrientation(optOrientation[1]->isChecked() ? QPageLayout::Landscape : QPageLayout::Portrait);
    if (ToPrinter) {
        Printer.setPrinterName(cboPrinter->currentText());
        QPrintDialog Dialog(&Printer, this);
        if (Dialog.exec() != QDialog::Accepted)
            return false;
        // The printer's own dialog may have changed the paper.
        const QSizeF Paper = Printer.pageLayout().fullRect(QPageLayout::Inch).size();
        const QString Late = CheckPlacement(Place, Paper, PixelsPerInchX(), PixelsPerInchY());
        if (!Late.isEmpty()) {
            MsgBox(Late, MsgBoxButtons::OK, MsgBoxIcon::Exclamation);
            return false;
        }
    } else {
        if (txbPdfFile->text().trimmed().isEmpty() && !ChoosePdfFile())
            return false;
        const QString Path = txbPdfFile->text().trimmed();
        if (basTsMainPro::IsReadOnlyFile(Path)) {
            MsgBox(QStringLiteral("File is read only."), MsgBoxButtons::OK, MsgBoxIcon::Exclamation);
            return false;
        }
        Printer.setOutputFormat(QPrinter::PdfFormat);
        Printer.setOutputFileName(Path);
    }
    if (!PrintOn(Printer)) {
        MsgBox(ToPrinter ? tr("Printing has been unsuccessful.") : QStringLiteral("Failed to save this file."),
               MsgBoxButtons::OK, MsgBoxIcon::Exclamation);
        return false;
    }
    accept();
    return true;
}

bool frmTsPrint::PrintOn(QPrinter& Printer)
{
    QPainter Painter;
    if (!Painter.begin(&Printer))
        return false;
    const double Dpi = Printer.resolution();
    const QRectF Target(Place.left() * Dpi, Place.top() * Dpi, Place.width() * Dpi, Place.height() * Dpi);
    // Enlarged pixels stay sharp; a reduction is smoothed.
    Painter.setRenderHint(QPainter::SmoothPixmapTransform, Target.width() < PictureImage.width());
    Painter.drawImage(Target, PictureImage);
    return Painter.end();
}
