#pragma once
// The print window: prints the active document's picture on one sheet, to a printer of the system
// or to a PDF file. The user places the picture on the paper by its left and top edges and sizes
// it by width and height (in inches or millimetres), by a percentage of its own size, to the
// paper, or centred; a preview shows the sheet as it will come out. Sizes are checked before
// anything is printed, with the program's messages.
#include <QDialog>
#include <QImage>
#include <QRectF>
#include <QSizeF>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <vector>

class clsDIB;
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QPrinter;
class QPushButton;
class QRadioButton;
class QSpinBox;

class frmTsPrint : public QDialog {
    Q_OBJECT
public:
    // Takes a copy of the active document's picture (its canvas named "Canvas").
    explicit frmTsPrint(QWidget* Parent = nullptr);
    ~frmTsPrint() override;

    // Registers the factory by which documents open the window by name.
    static void Register();

    // Replaces the picture to print (a copy is kept) and places it as on opening: at its own size
    // when that fits the paper, else fitted to it, centred. False for a surface without pixels.
    bool SetPicture(clsDIB& Source);
    const QImage& Picture() const { return PictureImage; }

    // ---- Controls, named as their objectName ----
    std::vector<QRadioButton*> optDestination; // 0 a printer, 1 a PDF file
    QComboBox* cboPrinter = nullptr;
    QLineEdit* txbPdfFile = nullptr;
    QPushButton* cmdPdfBrowse = nullptr;
    QComboBox* cboPaperSize = nullptr;         // item data: QPageSize::PageSizeId
    std::vector<QRadioButton*> optOrientation; // 0 portrait, 1 landscape
    QComboBox* cboUnits = nullptr;             // 0 inches, 1 millimetres
    QDoubleSpinBox* txbLeft = nullptr;
    QDoubleSpinBox* txbTop = nullptr;
    QCheckBox* ckbCenter = nullptr;
    QDoubleSpinBox* txbWidth = nullptr;
    QDoubleSpinBox* txbHeight = nullptr;
    QCheckBox* ckbKeepRatio = nullptr;
    QSpinBox* txbPercent = nullptr;
    QPushButton* cmdFitToPaper = nullptr;
    QPushButton* cmdOriginalSize = nullptr;
    QLabel* lblPixels = nullptr;
    QWidget* picPreview = nullptr;
    QPushButton* cmdPrint = nullptr;
    QPushButton* cmdClose = nullptr;

    // The picture's place on the paper in inches, from the paper's top left corner.
    QRectF Placement() const { return Place; }
    void SetPlacement(const QRectF& Inches);
    // The chosen paper in inches, as oriented.
    QSizeF PaperSize() const;
    // The printed size in pixels at the screen's resolution: what "Original size" calls 100%.
    QSize PrintPixels() const;

    // The message that stops printing `Inches` on a paper of `Paper` inches, or "" when it may go.
    // The size comes first (it must be positive and hold at most MaxPrintPixels at the screen's
    // resolution), then the position, then whether the picture stays on the paper.
    static QString CheckPlacement(const QRectF& Inches, const QSizeF& Paper, int DpiX, int DpiY);
    static constexpr int64_t MaxPrintPixels = 3000000;
    // "Fit to paper" keeps this much paper free on every side, in inches.
    static constexpr double FitMargin = 0.5;

    // The Print button: checks, asks the printer dialog or a PDF file name when none is given,
    // and prints. True when the sheet was printed; the window then closes.
    bool PrintNow();

    // The printers of this system. Tests put their own list in; nullopt asks the system again.
    static QStringList PrinterNames();
    static void SetPrinterNamesForTest(std::optional<QStringList> Names);

protected:
    bool eventFilter(QObject* Watched, QEvent* Event) override;

private:
    void BuildControls();
    void ConnectControls();
    void DestinationChanged();
    void PaperChanged();
    void UnitsChanged();
    void EdgeEdited();
    void SizeEdited(bool WidthEdited);
    void PercentEdited();
    void CenterToggled();
    void FitToPaper();
    void OriginalSize();
    void PlaceAtScale(double Scale);
    void Recentre();
    void ShowPlacement();
    void PaintPreview();
    bool ChoosePdfFile();
    bool PrintOn(QPrinter& Printer);
    double UnitsPerInch() const;
    // The screen's resolution, by which a picture's own size becomes inches.
    static int PixelsPerInchX();
    static int PixelsPerInchY();

    QImage PictureImage;
    QImage PreviewImage; // a small copy for the preview
    QString DocumentName;
    QRectF Place;
    bool Showing = false; // fields are being set from Place
};
