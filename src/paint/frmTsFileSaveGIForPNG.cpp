#include "frmTsFileSaveGIForPNG.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QMouseEvent>
#include <QRadioButton>
#include <QVBoxLayout>
#include <array>

namespace {

constexpr int PreviewSide = 240;

template <class T>
T* Named(T* Widget, const char* Name)
{
    Widget->setObjectName(QString::fromLatin1(Name));
    return Widget;
}

QString KindText(frmTsFileSaveGIForPNG::Kind K)
{
    switch (K) {
    case frmTsFileSaveGIForPNG::Kind::PNG24: return QStringLiteral("Save As 24-Bit PNG");
    case frmTsFileSaveGIForPNG::Kind::PNGOptimized: return QStringLiteral("Save As Optimized PNG");
    case frmTsFileSaveGIForPNG::Kind::PNG8: return QStringLiteral("Save As Paletted 8-Bit PNG");
    default: return QString();
    }
}

} // namespace

frmTsFileSaveGIForPNG::frmTsFileSaveGIForPNG(Kind Which, const QImage& Source, QWidget* Parent)
    : QDialog(Parent), SaveKind(Which), Picture(Source.convertToFormat(QImage::Format_RGB32))
{
    setObjectName(QStringLiteral("frmTsFileSaveGIForPNG"));
    const bool Gif = Which == Kind::GIF;
    setWindowTitle(Gif ? tr("Save As GIF") : tr("Save As PNG"));
    auto* Layout = new QVBoxLayout(this);
    fraOptions = Named(new QGroupBox(Gif ? QStringLiteral("GIF file save options") : QStringLiteral("PNG file save options"),
                                     this),
                       "fraOptions");
    auto* Grid = new QGridLayout(fraOptions);
    lblSaveAsOption = Named(new QLabel(KindText(Which), fraOptions), "lblSaveAsOption");
    lblSaveAsOption->setVisible(!Gif);
    Grid->addWidget(lblSaveAsOption, 0, 0, 1, 2);

    // The picture, shrunk to fit; a right click on it picks the transparent colour.
    picImage = Named(new QLabel(fraOptions), "picImage");
    Shown = Picture.width() > PreviewSide || Picture.height() > PreviewSide
                ? Picture.scaled(PreviewSide, PreviewSide, Qt::KeepAspectRatio, Qt::FastTransformation)
                : Picture;
    picImage->setPixmap(QPixmap::fromImage(Shown));
    picImage->setFixedSize(Shown.size());
    picImage->setCursor(Qt::CrossCursor);
    picImage->installEventFilter(this);
    Grid->addWidget(picImage, 1, 0, 6, 1);
    Grid->addWidget(new QLabel(QStringLiteral("(Right click on image to  change)"), fraOptions), 7, 0);

    ckbGIFsetTransparency = Named(new QCheckBox(tr("Set Transparency"), fraOptions), "ckbGIFsetTransparency");
    picGIFtranspColor = Named(new QLabel(fraOptions), "picGIFtranspColor");
    picGIFtranspColor->setFixedSize(32, 20);
    picGIFtranspColor->setFrameShape(QFrame::Box);
    ckbGIFinterlaced = Named(new QCheckBox(tr("Interlaced"), fraOptions), "ckbGIFinterlaced");
    ckbPNGinterlaced = Named(new QCheckBox(tr("Interlaced"), fraOptions), "ckbPNGinterlaced");
    ckbPNGSetBgdColorChunk = Named(new QCheckBox(QStringLiteral("Set Background Color"), fraOptions), "ckbPNGSetBgdColorChunk");
    ckbPNGSetTransparency = Named(new QCheckBox(QStringLiteral("Set Transparency"), fraOptions), "ckbPNGSetTransparency");
    optTransparency[0] = Named(new QRadioButton(QStringLiteral("Single transparent color"), fraOptions), "optTransparency_0");
    optTransparency[1] = Named(new QRadioButton(QStringLiteral("As alpha values to apply"), fraOptions), "optTransparency_1");
    optTransparency[0]->setChecked(true);
    cboPNGalphaValue = Named(new QComboBox(fraOptions), "cboPNGalphaValue");
    for (int Percent = 100; Percent >= 0; Percent -= 10)
        cboPNGalphaValue->addItem(QString::number(Percent));
    auto* Opacity = new QLabel(QStringLiteral("Opacity:"), fraOptions);
    Opacity->setBuddy(cboPNGalphaValue);

    int Row = 1;
    if (Gif) {
        Grid->addWidget(ckbGIFsetTransparency, Row++, 1);
        Grid->addWidget(picGIFtranspColor, Row++, 1);
        Grid->addWidget(ckbGIFinterlaced, Row++, 1);
    } else {
        Grid->addWidget(ckbPNGSetTransparency, Row++, 1);
        Grid->addWidget(optTransparency[0], Row++, 1);
        Grid->addWidget(optTransparency[1], Row++, 1);
        auto* OpacityRow = new QHBoxLayout;
        OpacityRow->addWidget(Opacity);
        OpacityRow->addWidget(cboPNGalphaValue);
        Grid->addLayout(OpacityRow, Row++, 1);
        Grid->addWidget(picGIFtranspColor, Row++, 1);
        Grid->addWidget(ckbPNGSetBgdColorChunk, Row++, 1);
        Grid->addWidget(ckbPNGinterlaced, Row++, 1);
    }
    for (QWidget* W : std::initializer_list<QWidget*>{ckbGIFsetTransparency, ckbGIFinterlaced})
        W->setVisible(Gif);
    for (QWidget* W : std::initializer_list<QWidget*>{ckbPNGinterlaced, ckbPNGSetBgdColorChunk, ckbPNGSetTransparency,
                                                      optTransparency[0], optTransparency[1], cboPNGalphaValue, Opacity})
        W->setVisible(!Gif);
    Layout->addWidget(fraOptions);
    auto* Buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(Buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(Buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    Layout->addWidget(Buttons);
    // The top-left pixel is the usual background: it is offered first.
    if (!Picture.isNull())
        PickedColor = static_cast<uint32_t>(qRed(Picture.pixel(0, 0)) | qGreen(Picture.pixel(0, 0)) << 8 |
                                            qBlue(Picture.pixel(0, 0)) << 16);
    ShowColor();
}

bool frmTsFileSaveGIForPNG::Run()
{
    if (Answer)
        return Answer(*this);
    return exec() == QDialog::Accepted;
}

bool frmTsFileSaveGIForPNG::Transparency() const
{
    return SaveKind == Kind::GIF ? ckbGIFsetTransparency->isChecked() : ckbPNGSetTransparency->isChecked();
}

bool frmTsFileSaveGIForPNG::Interlaced() const
{
    return SaveKind == Kind::GIF ? ckbGIFinterlaced->isChecked() : ckbPNGinterlaced->isChecked();
}

bool frmTsFileSaveGIForPNG::BackgroundChunk() const
{
    return ckbPNGSetBgdColorChunk->isChecked();
}

bool frmTsFileSaveGIForPNG::AlphaValues() const
{
    return optTransparency[1]->isChecked();
}

int frmTsFileSaveGIForPNG::Opacity() const
{
    return cboPNGalphaValue->currentText().toInt();
}

void frmTsFileSaveGIForPNG::setTransparentColor(uint32_t Color)
{
    PickedColor = Color & 0xFFFFFF;
    ShowColor();
}

void frmTsFileSaveGIForPNG::ShowColor()
{
    const QColor C(PickedColor & 255, (PickedColor >> 8) & 255, (PickedColor >> 16) & 255);
    picGIFtranspColor->setStyleSheet(QStringLiteral("background: %1;").arg(C.name()));
    picGIFtranspColor->setToolTip(QStringLiteral("RGB(%1, %2, %3)").arg(C.red()).arg(C.green()).arg(C.blue()));
}

bool frmTsFileSaveGIForPNG::eventFilter(QObject* Watched, QEvent* Event)
{
    if (Watched == picImage && Event->type() == QEvent::MouseButtonPress) {
        const auto* Mouse = static_cast<QMouseEvent*>(Event);
        if (Mouse->button() == Qt::RightButton && !Shown.isNull()) {
            const QPoint P = Mouse->position().toPoint();
            if (QRect(QPoint(0, 0), Shown.size()).contains(P)) {
                const QRgb Pixel = Shown.pixel(P);
                setTransparentColor(static_cast<uint32_t>(qRed(Pixel) | qGreen(Pixel) << 8 | qBlue(Pixel) << 16));
                // Picking a colour means wanting it transparent.
                (SaveKind == Kind::GIF ? ckbGIFsetTransparency : ckbPNGSetTransparency)->setChecked(true);
            }
            return true;
        }
    }
    return QDialog::eventFilter(Watched, Event);
}
