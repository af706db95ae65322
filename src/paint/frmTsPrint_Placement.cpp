// The print window's placement of the picture: the position and size fields in either unit,
// the size buttons, the checks before printing, and the preview of the sheet.
#include "frmTsPrint.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QEvent>
#include <QLabel>
#include <QPageSize>
#include <QPainter>
#include <QRadioButton>
#include <QSpinBox>

#include <algorithm>
#include <cmath>

#include "basMath.h"
#include "basTsMainPro.h"

namespace {

// Half of the finest step the fields show, so a value typed to the paper's edge is on the paper.
constexpr double EdgeTolerance = 0.005;
constexpr double MillimetresPerInch = 25.4;
constexpr double MaxFieldInches = 999.99;

} // namespace

int frmTsPrint::PixelsPerInchX()
{
    return std::max<int>(1, basTsMainPro::ScreenDpiX);
}

int frmTsPrint::PixelsPerInchY()
{
    return std::max<int>(1, basTsMainPro::ScreenDpiY);
}

double frmTsPrint::UnitsPerInch() const
{
    return cboUnits->currentIndex() == 1 ? MillimetresPerInch : 1.0;
}

QSizeF frmTsPrint::PaperSize() const
{
    const QPageSize Page(static_cast<QPageSize::PageSizeId>(cboPaperSize->currentData().toInt()));
    // Metric papers are measured from their exact millimetres, not from a rounded inch size.
    QSizeF Size = Page.definitionUnits() == QPageSize::Millimeter ? Page.definitionSize() / MillimetresPerInch
                  : Page.definitionUnits() == QPageSize::Inch    ? Page.definitionSize()
                                                                 : Page.size(QPageSize::Inch);
    return optOrientation[1]->isChecked() ? Size.transposed() : Size;
}

QSize frmTsPrint::PrintPixels() const
{
    const double Limit = 1e9; // far above any size the fields take
    return QSize(RoundHalfEven(std::min(Place.width() * PixelsPerInchX(), Limit)),
                 RoundHalfEven(std::min(Place.height() * PixelsPerInchY(), Limit)));
}

void frmTsPrint::SetPlacement(const QRectF& Inches)
{
    Place = Inches;
    if (ckbCenter->isChecked())
        Recentre();
    ShowPlacement();
}

QString frmTsPrint::CheckPlacement(const QRectF& Inches, const QSizeF& Paper, int DpiX, int DpiY)
{
    if (!(Inches.width() > 0) || !(Inches.height() > 0))
        return QStringLiteral("Please reset print size.");
    // Counted in floating point: a size typed far too large must not overflow on the way.
    const double Pixels = std::nearbyint(Inches.width() * DpiX) * std::nearbyint(Inches.height() * DpiY);
    if (Pixels > static_cast<double>(MaxPrintPixels))
        return QStringLiteral("Cannot print a size of width x height over 3 MPiexls.");
    if (Inches.left() < 0 || Inches.top() < 0 || Inches.left() >= Paper.width() || Inches.top() >= Paper.height())
        return QStringLiteral("Image position outside paper size");
    if (Inches.right() > Paper.width() + EdgeTolerance || Inches.bottom() > Paper.height() + EdgeTolerance)
        return QStringLiteral("Image size greater than paper size");
    return QString();
}

void frmTsPrint::PaperChanged()
{
    if (ckbCenter->isChecked())
        Recentre();
    ShowPlacement();
}

void frmTsPrint::UnitsChanged()
{
    const bool Metric = cboUnits->currentIndex() == 1;
    Showing = true;
    for (QDoubleSpinBox* Box : {txbLeft, txbTop, txbWidth, txbHeight}) {
        Box->setDecimals(Metric ? 1 : 2);
        Box->setSingleStep(Metric ? 1.0 : 0.1);
        Box->setRange(0.0, MaxFieldInches * UnitsPerInch());
    }
    Showing = false;
    ShowPlacement();
}

void frmTsPrint::EdgeEdited()
{
    if (Showing)
        return;
    Place.moveTo(txbLeft->value() / UnitsPerInch(), txbTop->value() / UnitsPerInch());
    ShowPlacement();
}

void frmTsPrint::SizeEdited(bool WidthEdited)
{
    if (Showing)
        return;
    double W = txbWidth->value() / UnitsPerInch();
    double H = txbHeight->value() / UnitsPerInch();
    if (ckbKeepRatio->isChecked() && !PictureImage.isNull()) {
        // Height per width of the picture printed at the screen's resolution.
        const double Ratio = (PictureImage.height() / double(PixelsPerInchY())) /
                             (PictureImage.width() / double(PixelsPerInchX()));
        if (WidthEdited)
            H = W * Ratio;
        else
            W = H / Ratio;
    }
    Place.setSize(QSizeF(W, H));
    if (ckbCenter->isChecked())
        Recentre();
    ShowPlacement();
}

void frmTsPrint::PercentEdited()
{
    if (!Showing)
        PlaceAtScale(txbPercent->value() / 100.0);
}

void frmTsPrint::PlaceAtScale(double Scale)
{
    if (PictureImage.isNull())
        return;
    Place.setSize(QSizeF(PictureImage.width() * Scale / PixelsPerInchX(),
                         PictureImage.height() * Scale / PixelsPerInchY()));
    if (ckbCenter->isChecked())
        Recentre();
    ShowPlacement();
}

void frmTsPrint::CenterToggled()
{
    if (ckbCenter->isChecked())
        Recentre();
    ShowPlacement();
}

void frmTsPrint::OriginalSize()
{
    PlaceAtScale(1.0);
}

void frmTsPrint::FitToPaper()
{
    if (PictureImage.isNull())
        return;
    const QSizeF Paper = PaperSize();
    const double Scale = std::min((Paper.width() - 2 * FitMargin) * PixelsPerInchX() / PictureImage.width(),
                                  (Paper.height() - 2 * FitMargin) * PixelsPerInchY() / PictureImage.height());
    {
        const QSignalBlocker Blocker(ckbCenter);
        ckbCenter->setChecked(true);
    }
    PlaceAtScale(Scale);
}

void frmTsPrint::Recentre()
{
    // A picture larger than the paper stays at the corner, so the check names its size.
    const QSizeF Paper = PaperSize();
    Place.moveTo(std::max(0.0, (Paper.width() - Place.width()) / 2),
                 std::max(0.0, (Paper.height() - Place.height()) / 2));
}

void frmTsPrint::ShowPlacement()
{
    Showing = true;
    const double U = UnitsPerInch();
    txbLeft->setValue(Place.left() * U);
    txbTop->setValue(Place.top() * U);
    txbWidth->setValue(Place.width() * U);
    txbHeight->setValue(Place.height() * U);
    txbLeft->setEnabled(!ckbCenter->isChecked());
    txbTop->setEnabled(!ckbCenter->isChecked());
    if (!PictureImage.isNull())
        txbPercent->setValue(RoundHalfEven(
            std::clamp(Place.width() * PixelsPerInchX() * 100.0 / PictureImage.width(), 0.0, 1e6)));
    const QSize Pixels = PrintPixels();
    lblPixels->setText(tr("Printed size: %1 x %2 pixels at %3 pixels per inch")
                           .arg(Pixels.width())
                           .arg(Pixels.height())
                           .arg(PixelsPerInchX()));
    Showing = false;
    picPreview->update();
}

void frmTsPrint::PaintPreview()
{
    QPainter Painter(picPreview);
    Painter.fillRect(picPreview->rect(), palette().color(QPalette::Mid));
    const QSizeF Paper = PaperSize();
    const QRectF Area = QRectF(picPreview->rect()).adjusted(10, 10, -10, -10);
    if (Paper.isEmpty() || Area.isEmpty())
        return;
    const double Scale = std::min(Area.width() / Paper.width(), Area.height() / Paper.height());
    QRectF Sheet(QPointF(), Paper * Scale);
    Sheet.moveCenter(Area.center());
    Painter.fillRect(Sheet.translated(3, 3), palette().color(QPalette::Shadow));
    Painter.fillRect(Sheet, Qt::white); // paper is white in either colour scheme
    if (!PreviewImage.isNull()) {
        Painter.save();
        Painter.setClipRect(Sheet);
        Painter.setRenderHint(QPainter::SmoothPixmapTransform);
        Painter.drawImage(QRectF(Sheet.left() + Place.left() * Scale, Sheet.top() + Place.top() * Scale,
                                 Place.width() * Scale, Place.height() * Scale),
                          PreviewImage);
        Painter.restore();
    }
    Painter.setPen(palette().color(QPalette::Dark));
    Painter.drawRect(Sheet);
}

bool frmTsPrint::eventFilter(QObject* Watched, QEvent* Event)
{
    if (Watched == picPreview && Event->type() == QEvent::Paint) {
        PaintPreview();
        return true;
    }
    return QDialog::eventFilter(Watched, Event);
}
