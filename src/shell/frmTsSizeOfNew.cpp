// The new picture / new animation size dialog.
#include "frmTsSizeOfNew.h"

#include "basMsgBox.h"
#include "basTsMainPro.h"

#include <QApplication>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>

#include <algorithm>

namespace {

struct Preset {
    int Width;
    int Height;
};
constexpr Preset ImagePresets[] = {{320, 200}, {640, 480}, {800, 600}, {1024, 768}, {680, 860}};
constexpr Preset GIFaniPresets[] = {{50, 50}, {75, 75}, {100, 100}, {120, 120}, {240, 240}};
constexpr int ImageStartIndex = 1;  // 640 x 480
constexpr int GIFaniStartIndex = 2; // 100 x 100

QString PresetCaption(const Preset& preset)
{
    return QStringLiteral("%1 x %2").arg(preset.Width).arg(preset.Height);
}

// The number in a field as typed; an empty field counts as 0.
int64_t FieldValue(const QLineEdit* field)
{
    return field->text().toLongLong();
}

int32_t Clamped(int64_t value, int32_t maxSide)
{
    return static_cast<int32_t>(std::clamp<int64_t>(value, 1, maxSide));
}

QLineEdit* SizeField(QWidget* parent, const QString& name, int digits)
{
    auto* field = new QLineEdit(parent);
    field->setObjectName(name);
    field->setValidator(new QRegularExpressionValidator(
        QRegularExpression(QStringLiteral("[0-9]{0,%1}").arg(digits)), field));
    field->setAlignment(Qt::AlignRight);
    field->setMaximumWidth(field->fontMetrics().horizontalAdvance(QStringLiteral("0")) * (digits + 2) + 12);
    return field;
}

QRadioButton* Option(QWidget* parent, const QString& name, const QString& caption)
{
    auto* option = new QRadioButton(caption, parent);
    option->setObjectName(name);
    return option;
}

// The row of the custom choice: the option, then width and height fields.
QHBoxLayout* CustomRow(QRadioButton* option, QLineEdit* width, QLineEdit* height)
{
    auto* row = new QHBoxLayout;
    row->addWidget(option);
    row->addSpacing(12);
    auto* widthLabel = new QLabel(QObject::tr("&Width:"), option->parentWidget());
    widthLabel->setBuddy(width);
    auto* heightLabel = new QLabel(QObject::tr("&Height:"), option->parentWidget());
    heightLabel->setBuddy(height);
    row->addWidget(widthLabel);
    row->addWidget(width);
    row->addSpacing(8);
    row->addWidget(heightLabel);
    row->addWidget(height);
    row->addStretch(1);
    return row;
}

} // namespace

frmTsSizeOfNew::frmTsSizeOfNew(bool forAnimation, QWidget* parent) : QDialog(parent), AnimationMode(forAnimation)
{
    setObjectName(QStringLiteral("frmTsSizeOfNew"));
    setWindowTitle(forAnimation ? tr("Size of New Animation") : tr("Size of New Picture"));

    BuildImageFrame();
    BuildGIFaniFrame();
    fraImageSize->setVisible(!forAnimation);
    fraGIFaniSize->setVisible(forAnimation);

    cmdOK = new QPushButton(tr("OK"), this);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdOK->setDefault(true);
    cmdCancel = new QPushButton(tr("Cancel"), this);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    connect(cmdOK, &QPushButton::clicked, this, &frmTsSizeOfNew::cmdOK_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdCancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(fraImageSize);
    layout->addWidget(fraGIFaniSize);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    UpdateCustomFields();
}

void frmTsSizeOfNew::BuildImageFrame()
{
    fraImageSize = new QGroupBox(tr("Picture size (pixels)"), this);
    fraImageSize->setObjectName(QStringLiteral("fraImageSize"));
    auto* layout = new QVBoxLayout(fraImageSize);
    for (int i = 0; i < static_cast<int>(std::size(ImagePresets)); ++i) {
        optImageSize.push_back(
            Option(fraImageSize, QStringLiteral("optImageSize_%1").arg(i), PresetCaption(ImagePresets[i])));
        layout->addWidget(optImageSize.back());
    }
    optImageSize.push_back(Option(fraImageSize, QStringLiteral("optImageSize_5"), tr("Custom")));
    txbImageWidth = SizeField(fraImageSize, QStringLiteral("txbImageWidth"), 5);
    txbImageHeight = SizeField(fraImageSize, QStringLiteral("txbImageHeight"), 5);
    txbImageWidth->setText(QString::number(Clamped(basTsMainPro::NewImageWidth, MaxImageSide)));
    txbImageHeight->setText(QString::number(Clamped(basTsMainPro::NewImageHeight, MaxImageSide)));
    layout->addLayout(CustomRow(optImageSize[ImageCustomIndex], txbImageWidth, txbImageHeight));
    optImageSize[ImageStartIndex]->setChecked(true);

    for (QRadioButton* option : optImageSize)
        connect(option, &QRadioButton::toggled, this, &frmTsSizeOfNew::UpdateCustomFields);
    for (QLineEdit* field : {txbImageWidth, txbImageHeight})
        connect(field, &QLineEdit::editingFinished, this, [this, field] { txbImageSize_LostFocus(field); });
}

void frmTsSizeOfNew::BuildGIFaniFrame()
{
    fraGIFaniSize = new QGroupBox(tr("Animation size (pixels)"), this);
    fraGIFaniSize->setObjectName(QStringLiteral("fraGIFaniSize"));
    auto* layout = new QVBoxLayout(fraGIFaniSize);
    for (int i = 0; i < static_cast<int>(std::size(GIFaniPresets)); ++i) {
        optGIFaniSize.push_back(
            Option(fraGIFaniSize, QStringLiteral("optGIFaniSize_%1").arg(i), PresetCaption(GIFaniPresets[i])));
        layout->addWidget(optGIFaniSize.back());
    }
    optGIFaniSize.push_back(nullptr);
    optGIFaniSize.push_back(Option(fraGIFaniSize, QStringLiteral("optGIFaniSize_6"), tr("Custom")));
    txbGIFaniWidth = SizeField(fraGIFaniSize, QStringLiteral("txbGIFaniWidth"), 4);
    txbGIFaniHeight = SizeField(fraGIFaniSize, QStringLiteral("txbGIFaniHeight"), 4);
    txbGIFaniWidth->setText(QString::number(Clamped(basTsMainPro::NewImageWidth, MaxAnimationSide)));
    txbGIFaniHeight->setText(QString::number(Clamped(basTsMainPro::NewImageHeight, MaxAnimationSide)));
    layout->addLayout(CustomRow(optGIFaniSize[GIFaniCustomIndex], txbGIFaniWidth, txbGIFaniHeight));
    optGIFaniSize[GIFaniStartIndex]->setChecked(true);

    for (QRadioButton* option : optGIFaniSize) {
        if (option != nullptr)
            connect(option, &QRadioButton::toggled, this, &frmTsSizeOfNew::UpdateCustomFields);
    }
    for (QLineEdit* field : {txbGIFaniWidth, txbGIFaniHeight})
        connect(field, &QLineEdit::editingFinished, this, [this, field] { txbGIFaniSize_LostFocus(field); });
}

void frmTsSizeOfNew::UpdateCustomFields()
{
    const bool imageCustom = optImageSize[ImageCustomIndex]->isChecked();
    txbImageWidth->setEnabled(imageCustom);
    txbImageHeight->setEnabled(imageCustom);
    const bool gifCustom = optGIFaniSize[GIFaniCustomIndex]->isChecked();
    txbGIFaniWidth->setEnabled(gifCustom);
    txbGIFaniHeight->setEnabled(gifCustom);
    // Choosing Custom is choosing to type: the width takes the focus.
    QLineEdit* first = AnimationMode ? txbGIFaniWidth : txbImageWidth;
    if ((AnimationMode ? gifCustom : imageCustom) && isVisible()) {
        first->setFocus(Qt::OtherFocusReason);
        first->selectAll();
    }
}

QSize frmTsSizeOfNew::ChosenSize() const
{
    if (AnimationMode) {
        if (optGIFaniSize[GIFaniCustomIndex]->isChecked())
            return {Clamped(FieldValue(txbGIFaniWidth), MaxAnimationSide),
                    Clamped(FieldValue(txbGIFaniHeight), MaxAnimationSide)};
        for (int i = 0; i < static_cast<int>(std::size(GIFaniPresets)); ++i) {
            if (optGIFaniSize[i]->isChecked())
                return {GIFaniPresets[i].Width, GIFaniPresets[i].Height};
        }
        return {GIFaniPresets[GIFaniStartIndex].Width, GIFaniPresets[GIFaniStartIndex].Height};
    }
    if (optImageSize[ImageCustomIndex]->isChecked())
        return {Clamped(FieldValue(txbImageWidth), MaxImageSide), Clamped(FieldValue(txbImageHeight), MaxImageSide)};
    for (int i = 0; i < static_cast<int>(std::size(ImagePresets)); ++i) {
        if (optImageSize[i]->isChecked())
            return {ImagePresets[i].Width, ImagePresets[i].Height};
    }
    return {ImagePresets[ImageStartIndex].Width, ImagePresets[ImageStartIndex].Height};
}

void frmTsSizeOfNew::txbImageSize_LostFocus(QLineEdit* field)
{
    // Moving to Cancel, or the dialog going away, is no reason to check what was typed.
    if (Closing || QApplication::focusWidget() == cmdCancel)
        return;
    const int64_t width = FieldValue(txbImageWidth);
    const int64_t height = FieldValue(txbImageHeight);
    if (width * height > ThresholdPixels) {
        const QString which = field == txbImageWidth ? QStringLiteral("width") : QStringLiteral("height");
        basMsgBox::MsgBox(tr("Value entered in %1 will result in %2 x %3 exceeding the threshhold.")
                              .arg(which)
                              .arg(width)
                              .arg(height),
                          basMsgBox::MsgBoxButtons::OK, basMsgBox::MsgBoxIcon::Exclamation);
    }
    const int32_t kept = Clamped(FieldValue(field), MaxImageSide);
    if (kept != FieldValue(field))
        field->setText(QString::number(kept));
}

void frmTsSizeOfNew::txbGIFaniSize_LostFocus(QLineEdit* field)
{
    if (Closing)
        return;
    const int32_t kept = Clamped(FieldValue(field), MaxAnimationSide);
    if (kept != FieldValue(field))
        field->setText(QString::number(kept));
}

void frmTsSizeOfNew::cmdOK_Click()
{
    const QSize size = ChosenSize();
    if (!AnimationMode && optImageSize[ImageCustomIndex]->isChecked()) {
        txbImageWidth->setText(QString::number(size.width()));
        txbImageHeight->setText(QString::number(size.height()));
        if (size.width() > LargeWidth || size.height() > LargeHeight) {
            const basMsgBox::MsgBoxResult sure =
                basMsgBox::MsgBox(tr("Value entered in width and/or height appear to be rather large.  Sure?"),
                                  basMsgBox::MsgBoxButtons::YesNo, basMsgBox::MsgBoxIcon::Question);
            if (sure != basMsgBox::MsgBoxResult::Yes) {
                txbImageWidth->setFocus(Qt::OtherFocusReason);
                txbImageWidth->selectAll();
                return;
            }
        }
    } else if (AnimationMode && optGIFaniSize[GIFaniCustomIndex]->isChecked()) {
        txbGIFaniWidth->setText(QString::number(size.width()));
        txbGIFaniHeight->setText(QString::number(size.height()));
    }
    basTsMainPro::NewImageWidth = size.width();
    basTsMainPro::NewImageHeight = size.height();
    accept();
}

void frmTsSizeOfNew::done(int result)
{
    Closing = true;
    QDialog::done(result);
}

void frmTsSizeOfNew::showEvent(QShowEvent* event)
{
    Closing = false;
    QDialog::showEvent(event);
    // The checked choice takes the focus, so the arrow keys move between the sizes at once.
    const std::vector<QRadioButton*>& options = AnimationMode ? optGIFaniSize : optImageSize;
    for (QRadioButton* option : options) {
        if (option != nullptr && option->isChecked())
            option->setFocus(Qt::OtherFocusReason);
    }
}
