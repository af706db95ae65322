// The custom brush, custom pattern and stamp loader: its controls, the file choice and OK.
#include "frmTsStampOrBrush.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QDialogButtonBox>
#include <QFontComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>

#include "PixelArray32.h"
#include "basMath.h"
#include "basMsgBox.h"
#include "basSettings.h"
#include "basTsMainPro.h"
#include "clsTsDialog.h"

using namespace basMsgBox;

namespace {

constexpr int PreviewWidth = 240;
constexpr int PreviewHeight = 140;
constexpr int MaxPreviewZoom = 8;

QString TitleOf(frmTsStampOrBrush::StampTarget Target)
{
    switch (Target) {
    case frmTsStampOrBrush::StampTarget::CustomBrush: return frmTsStampOrBrush::tr("Custom Brush");
    case frmTsStampOrBrush::StampTarget::CustomPattern: return frmTsStampOrBrush::tr("Custom Pattern");
    case frmTsStampOrBrush::StampTarget::TextStamp: return frmTsStampOrBrush::tr("Text Stamp");
    case frmTsStampOrBrush::StampTarget::ImageStamp: break;
    }
    return frmTsStampOrBrush::tr("Image Stamp");
}

} // namespace

frmTsStampOrBrush::frmTsStampOrBrush(StampTarget Target, QWidget* Parent)
    : QDialog(Parent), TextColor(basTsMainPro::ColorFirst), For(Target)
{
    setObjectName(QStringLiteral("frmTsStampOrBrush"));
    setWindowTitle(TitleOf(Target));
    BuildControls();
    if (For == StampTarget::TextStamp)
        RedrawText();
    UpdatePreview();
}

frmTsStampOrBrush::~frmTsStampOrBrush() = default;

QString frmTsStampOrBrush::TooSmallMessage()
{
    return QStringLiteral("Non-transparent area smaller than the minimum size\nof %1 x %2 pixels")
        .arg(MinimumSide)
        .arg(MinimumSide);
}

QString frmTsStampOrBrush::LastFolderKey(StampTarget Target)
{
    switch (Target) {
    case StampTarget::CustomBrush: return QString::fromLatin1(basSettings::KeyLastFolderCustomBrush);
    case StampTarget::CustomPattern: return QString::fromLatin1(basSettings::KeyLastFolderCustomPattern);
    case StampTarget::TextStamp:
    case StampTarget::ImageStamp: break;
    }
    return QString::fromLatin1(basSettings::KeyLastFolderStamp);
}

QString frmTsStampOrBrush::PictureFilter()
{
    return QStringLiteral("All Pictures (*.bmp;*.gif;*.jpg;*.jpeg;*.png;*.tif;*.tiff;*.wmf;*.emf)|"
                          "*.bmp;*.gif;*.jpg;*.jpeg;*.png;*.tif;*.tiff;*.wmf;*.emf|"
                          "(*.bmp)|*.bmp|(*.gif)|*.gif|(*.jpg, *.jpeg)|*.jpg;*.jpeg|(*.png)|*.png|"
                          "(*.tif;*.tiff)|*.tif;*.tiff|(*.wmf;*.emf)|*.wmf;*.emf|");
}

void frmTsStampOrBrush::BuildControls()
{
    auto* Layout = new QVBoxLayout(this);
    if (IsImageTarget()) {
        auto* Row = new QHBoxLayout;
        auto* Caption = new QLabel(tr("Picture &file:"), this);
        txtFileName = new QLineEdit(this);
        txtFileName->setObjectName(QStringLiteral("txtFileName"));
        txtFileName->setReadOnly(true);
        txtFileName->setMinimumWidth(260);
        Caption->setBuddy(txtFileName);
        cmdBrowse = new QPushButton(tr("&Browse..."), this);
        cmdBrowse->setObjectName(QStringLiteral("cmdBrowse"));
        cmdBrowse->setAutoDefault(false);
        connect(cmdBrowse, &QPushButton::clicked, this, [this] { cmdBrowse_Click(); });
        Row->addWidget(Caption);
        Row->addWidget(txtFileName, 1);
        Row->addWidget(cmdBrowse);
        Layout->addLayout(Row);
    } else {
        auto* Grid = new QGridLayout;
        auto* TextCaption = new QLabel(tr("&Text:"), this);
        txtStampText = new QLineEdit(this);
        txtStampText->setObjectName(QStringLiteral("txtStampText"));
        txtStampText->setMaxLength(MaxTextLength);
        TextCaption->setBuddy(txtStampText);
        Grid->addWidget(TextCaption, 0, 0);
        Grid->addWidget(txtStampText, 0, 1, 1, 4);

        auto* FontCaption = new QLabel(tr("&Font:"), this);
        cboFontName = new QFontComboBox(this);
        cboFontName->setObjectName(QStringLiteral("cboFontName"));
        // "Arial" is the program's text font; the font system maps it to a face of its metrics.
        cboFontName->setCurrentFont(QFont(QStringLiteral("Arial")));
        FontCaption->setBuddy(cboFontName);
        txtFontSize = new QSpinBox(this);
        txtFontSize->setObjectName(QStringLiteral("txtFontSize"));
        txtFontSize->setRange(MinFontPoints, MaxFontPoints);
        txtFontSize->setValue(DefaultFontPoints);
        txtFontSize->setSuffix(tr(" pt"));
        ckbBold = new QCheckBox(tr("B&old"), this);
        ckbBold->setObjectName(QStringLiteral("ckbBold"));
        ckbItalic = new QCheckBox(tr("&Italic"), this);
        ckbItalic->setObjectName(QStringLiteral("ckbItalic"));
        Grid->addWidget(FontCaption, 1, 0);
        Grid->addWidget(cboFontName, 1, 1);
        Grid->addWidget(txtFontSize, 1, 2);
        Grid->addWidget(ckbBold, 1, 3);
        Grid->addWidget(ckbItalic, 1, 4);

        auto* ColorCaption = new QLabel(tr("Color:"), this);
        picTextColor = new QLabel(this);
        picTextColor->setObjectName(QStringLiteral("picTextColor"));
        picTextColor->setFixedSize(40, 20);
        picTextColor->setFrameShape(QFrame::Box);
        picTextColor->setAutoFillBackground(true);
        cmdTextColor = new QPushButton(tr("&Change..."), this);
        cmdTextColor->setObjectName(QStringLiteral("cmdTextColor"));
        cmdTextColor->setAutoDefault(false);
        connect(cmdTextColor, &QPushButton::clicked, this, [this] { cmdTextColor_Click(); });
        ckbSmooth = new QCheckBox(tr("&Smooth edges"), this);
        ckbSmooth->setObjectName(QStringLiteral("ckbSmooth"));
        ckbSmooth->setToolTip(tr("Smooth edges blend towards white, which shows as a light rim on dark pictures"));
        auto* ColorRow = new QHBoxLayout;
        ColorRow->addWidget(picTextColor);
        ColorRow->addWidget(cmdTextColor);
        ColorRow->addSpacing(12);
        ColorRow->addWidget(ckbSmooth);
        ColorRow->addStretch(1);
        Grid->addWidget(ColorCaption, 2, 0);
        Grid->addLayout(ColorRow, 2, 1, 1, 4);
        Grid->setColumnStretch(1, 1);
        Layout->addLayout(Grid);
        ShowTextColor();

        connect(txtStampText, &QLineEdit::textChanged, this, [this] { RedrawText(); });
        connect(cboFontName, &QFontComboBox::currentFontChanged, this, [this] { RedrawText(); });
        connect(txtFontSize, &QSpinBox::valueChanged, this, [this] { RedrawText(); });
        for (QCheckBox* Box : {ckbBold, ckbItalic, ckbSmooth})
            connect(Box, &QCheckBox::toggled, this, [this] { RedrawText(); });
    }

    auto* PreviewFrame = new QGroupBox(tr("Preview"), this);
    auto* PreviewLayout = new QVBoxLayout(PreviewFrame);
    picPreview = new QLabel(PreviewFrame);
    picPreview->setObjectName(QStringLiteral("picPreview"));
    picPreview->setFixedSize(PreviewWidth, PreviewHeight);
    picPreview->setAlignment(Qt::AlignCenter);
    picPreview->setFrameShape(QFrame::StyledPanel);
    // The picture's own white, whatever the desktop's palette.
    picPreview->setStyleSheet(QStringLiteral("background-color: white;"));
    lblPreviewSize = new QLabel(PreviewFrame);
    lblPreviewSize->setObjectName(QStringLiteral("lblPreviewSize"));
    lblPreviewSize->setAlignment(Qt::AlignHCenter);
    auto* Note = new QLabel(For == StampTarget::CustomPattern
                                ? tr("The whole picture is tiled; one larger than %1 x %1 is scaled down.")
                                      .arg(MaxPatternSide)
                                : tr("White parts are transparent."),
                            PreviewFrame);
    Note->setWordWrap(true);
    PreviewLayout->addWidget(picPreview, 0, Qt::AlignHCenter);
    PreviewLayout->addWidget(lblPreviewSize);
    PreviewLayout->addWidget(Note);
    Layout->addWidget(PreviewFrame);

    auto* Buttons = new QDialogButtonBox(this);
    cmdOK = Buttons->addButton(QDialogButtonBox::Ok);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdOK->setDefault(true);
    cmdCancel = Buttons->addButton(QDialogButtonBox::Cancel);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    connect(cmdOK, &QPushButton::clicked, this, [this] { cmdOK_Click(); });
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    Layout->addWidget(Buttons);
    Layout->setSizeConstraint(QLayout::SetFixedSize);
    if (txtStampText)
        txtStampText->setFocus();
}

QFont frmTsStampOrBrush::ChosenFont() const
{
    if (!cboFontName)
        return StampFont(QStringLiteral("Arial"), DefaultFontPoints, false, false);
    return StampFont(cboFontName->currentFont().family(), txtFontSize->value(), ckbBold->isChecked(),
                     ckbItalic->isChecked());
}

void frmTsStampOrBrush::ShowTextColor()
{
    if (!picTextColor)
        return;
    QPalette Colors = picTextColor->palette();
    Colors.setColor(QPalette::Window, QColor(ColorR(TextColor), ColorG(TextColor), ColorB(TextColor)));
    picTextColor->setPalette(Colors);
}

void frmTsStampOrBrush::cmdTextColor_Click()
{
    const QColor Chosen = QColorDialog::getColor(QColor(ColorR(TextColor), ColorG(TextColor), ColorB(TextColor)),
                                                 this, tr("Text color"));
    if (!Chosen.isValid())
        return;
    TextColor = RGBColor(static_cast<uint32_t>(Chosen.red()), static_cast<uint32_t>(Chosen.green()),
                         static_cast<uint32_t>(Chosen.blue()));
    ShowTextColor();
    RedrawText();
}

void frmTsStampOrBrush::RedrawText()
{
    if (!txtStampText)
        return;
    HasSource = RenderText(txtStampText->text(), ChosenFont(), TextColor, ckbSmooth->isChecked(), Source);
    if (!HasSource)
        Source.ClearUp();
    UpdatePreview();
}

void frmTsStampOrBrush::UpdatePreview()
{
    cmdOK->setEnabled(HasSource);
    if (!HasSource) {
        picPreview->clear();
        lblPreviewSize->clear();
        return;
    }
    QSize Room = picPreview->contentsRect().size();
    if (Room.isEmpty())
        Room = picPreview->size();
    QPixmap Shown(Room);
    Shown.fill(Qt::white);
    QPainter Painter(&Shown);
    if (For == StampTarget::CustomPattern) {
        clsDIB Tile;
        if (MakePattern(Source, Tile)) {
            Painter.drawTiledPixmap(Shown.rect(), QPixmap::fromImage(ImageOf(Tile)));
            lblPreviewSize->setText(tr("Pattern: %1 x %2 pixels").arg(Tile.DIBWidth()).arg(Tile.DIBHeight()));
        }
    } else {
        const QImage Picture = ImageOf(Source);
        // Large pictures shrink to fit; small ones grow by whole steps, pixels kept square.
        QImage Fitted;
        if (Picture.width() > Room.width() || Picture.height() > Room.height()) {
            Fitted = Picture.scaled(Room, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        } else {
            const int Zoom = std::clamp(std::min(Room.width() / Picture.width(), Room.height() / Picture.height()), 1,
                                        MaxPreviewZoom);
            Fitted = Picture.scaled(Picture.size() * Zoom, Qt::IgnoreAspectRatio, Qt::FastTransformation);
        }
        Painter.drawImage((Room.width() - Fitted.width()) / 2, (Room.height() - Fitted.height()) / 2, Fitted);
        basTsMainPro::PixelBox Box;
        if (basTsMainPro::NonBlankBounds(Source, White, Box))
            lblPreviewSize->setText(tr("Non-white area: %1 x %2 pixels")
                                        .arg(Box.Right - Box.Left + 1)
                                        .arg(Box.Bottom - Box.Top + 1));
        else
            lblPreviewSize->setText(tr("All white: nothing to stamp"));
    }
    Painter.end();
    picPreview->setPixmap(Shown);
}

bool frmTsStampOrBrush::cmdBrowse_Click()
{
    clsTsDialog Dialog;
    Dialog.Filter = PictureFilter();
    Dialog.DialogTitle = TitleOf(For);
    const QString Key = LastFolderKey(For);
    Dialog.InitDir = basSettings::ReadLastFolder(Key, basTsMainPro::AppFolder(), basSettings::SettingsFilePath());
    // Before the loader shows, the file dialog stands over the document.
    if (!Dialog.ShowOpen(isVisible() ? this : parentWidget()) || Dialog.FileName.isEmpty())
        return false;
    basSettings::WriteLastFolder(Key, basTsMainPro::ParseFileSpec(Dialog.FileName, 0),
                                 basSettings::SettingsFilePathForWriting());
    clsDIB Read;
    switch (LoadSource(Dialog.FileName, Read)) {
    case LoadResult::Unreadable: MsgBox(QStringLiteral("Failed to retrieve incoming image")); return false;
    case LoadResult::TooLarge: MsgBox(QStringLiteral("Incoming image exceeds max size allowed.")); return false;
    case LoadResult::Loaded: break;
    }
    Read.CloneDIB(Read, Source, White, true);
    HasSource = Source.DIBBitsPtr() != nullptr;
    FileName = Dialog.FileName;
    txtFileName->setText(FileName);
    UpdatePreview();
    return HasSource;
}

bool frmTsStampOrBrush::cmdOK_Click()
{
    if (!HasSource)
        return false;
    if (For == StampTarget::CustomPattern) {
        Mask.ClearUp();
        if (!MakePattern(Source, Image))
            return false;
        accept();
        return true;
    }
    switch (MakeStampPair(Source, Image, Mask)) {
    case MakeResult::TooSmall:
        MsgBox(TooSmallMessage());
        Image.ClearUp();
        Mask.ClearUp();
        return false;
    case MakeResult::Failed:
        Image.ClearUp();
        Mask.ClearUp();
        return false;
    case MakeResult::Made: break;
    }
    accept();
    return true;
}

void frmTsStampOrBrush::CopyResultTo(clsDIB& ToImage, clsDIB* ToMask)
{
    Image.CloneDIB(Image, ToImage, White, true);
    if (ToMask)
        Mask.CloneDIB(Mask, *ToMask, White, true);
}

QImage frmTsStampOrBrush::ResultPreview()
{
    QImage Picture = ImageOf(Image);
    if (Picture.isNull() || !Mask.DIBBitsPtr())
        return Picture;
    PixelArray32 Cover(Mask);
    if (!Cover.Valid() || Cover.Width() != Picture.width() || Cover.Height() != Picture.height())
        return Picture;
    // Under the mask's white the image is black; on white it shows as the page it is laid on.
    for (int Y = 0; Y < Picture.height(); ++Y) {
        const uint32_t* MaskRow = Cover.Row(Y);
        QRgb* Row = reinterpret_cast<QRgb*>(Picture.scanLine(Y));
        for (int X = 0; X < Picture.width(); ++X)
            if ((MaskRow[X] & 0xFFFFFF) != 0)
                Row[X] = qRgb(255, 255, 255);
    }
    return Picture;
}
