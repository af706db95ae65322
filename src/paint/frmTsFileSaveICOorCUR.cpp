#include "frmTsFileSaveICOorCUR.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QRegularExpression>
#include <QVBoxLayout>
#include <algorithm>
#include <cstring>

#include "basIconCursor.h"
#include "basMath.h"
#include "basMsgBox.h"
#include "basTsMainPro.h"
#include "clsTsDialog.h"

using namespace basMsgBox;

namespace {

constexpr int CursorSide = 32;
constexpr int MagnifiedSide = 256;

template <class T>
T* Named(T* Widget, const char* Name)
{
    Widget->setObjectName(QString::fromLatin1(Name));
    return Widget;
}

// A top-down 32-bit surface as an image of the screen.
QImage ToImage(const clsDIB& Dib)
{
    QImage Out(Dib.DIBWidth(), Dib.DIBHeight(), QImage::Format_RGB32);
    for (int Y = 0; Y < Dib.DIBHeight(); ++Y)
        std::memcpy(Out.scanLine(Y), Dib.DIBhDC()->Row(Y), static_cast<size_t>(Dib.DIBWidth()) * 4);
    return Out;
}

QString DepthText(int16_t Colors)
{
    switch (Colors) {
    case 2: return QStringLiteral("Color depth:   1 BPP   2-color");
    case 16: return QStringLiteral("Color depth:   4 BPP   16-color");
    case 256: return QStringLiteral("Color depth:   8 BPP   256-color");
    default: return QStringLiteral("Color depth:   True Color");
    }
}

} // namespace

frmTsFileSaveICOorCUR::frmTsFileSaveICOorCUR(const QString& Mode, clsDIB& From, const QString& InitialFolder,
                                             QWidget* Parent)
    : QDialog(Parent), IconMode(Mode == QStringLiteral("1")), Folder(InitialFolder)
{
    setObjectName(QStringLiteral("frmTsFileSaveICOorCUR"));
    setWindowTitle(IconMode ? QStringLiteral("Save as Icon") : QStringLiteral("Save as Cursor"));
    if (From.DIBBitsPtr() && Source.CreateBlankDIB(From.DIBWidth(), From.DIBHeight(), 32, 0xFFFFFF, true))
        BitBlt(Source.DIBhDC(), 0, 0, From.DIBWidth(), From.DIBHeight(), From.DIBhDC(), 0, 0, SRCCOPY);

    auto* Layout = new QVBoxLayout(this);
    lblCaption = Named(new QLabel(QStringLiteral("Save as Icon / Cursor"), this), "lblCaption");
    Layout->addWidget(lblCaption);
    auto* Grid = new QGridLayout;
    Layout->addLayout(Grid);

    cboIconSize = Named(new QComboBox(this), "cboIconSize");
    cboIconSize->addItems({QStringLiteral("32 x 32"), QStringLiteral("16 x 16"), QStringLiteral("48 x 48"),
                           QStringLiteral("24 x 24"), QStringLiteral("64 x 64"), QStringLiteral("12 x 12")});
    lblCursorSize = Named(new QLabel(QStringLiteral("Cursor size:   32 x 32"), this), "lblCursorSize");
    cboIconSize->setVisible(IconMode);
    lblCursorSize->setVisible(!IconMode);
    Grid->addWidget(IconMode ? static_cast<QWidget*>(cboIconSize) : lblCursorSize, 0, 0);

    cboHowToTake = Named(new QComboBox(this), "cboHowToTake");
    cboHowToTake->addItems({QStringLiteral("Stretch source to full icon/cursor size"),
                            QStringLiteral("Stretch source preserving aspect ratio")});
    Grid->addWidget(cboHowToTake, 0, 1);

    // The picture magnified: a left click picks the transparent colour, a right click a
    // cursor's hotspot.
    picMagnified = Named(new QLabel(this), "picMagnified");
    picMagnified->setFixedSize(MagnifiedSide, MagnifiedSide);
    picMagnified->setCursor(Qt::CrossCursor);
    picMagnified->installEventFilter(this);
    Grid->addWidget(picMagnified, 1, 0, 6, 1);
    Grid->addWidget(new QLabel(QStringLiteral("(Left click on magnified image to select)"), this), 7, 0);

    ckbUseTransparent = Named(new QCheckBox(QStringLiteral("Make transparency  (transparent areas are as white on Mask)"), this),
                              "ckbUseTransparent");
    Grid->addWidget(ckbUseTransparent, 1, 1);
    auto* ColorRow = new QHBoxLayout;
    ColorRow->addWidget(new QLabel(QStringLiteral("Transparent color"), this));
    picTransparentColor = Named(new QLabel(this), "picTransparentColor");
    picTransparentColor->setFixedSize(32, 20);
    picTransparentColor->setFrameShape(QFrame::Box);
    ColorRow->addWidget(picTransparentColor);
    ColorRow->addStretch();
    Grid->addLayout(ColorRow, 2, 1);

    lblColorDepth = Named(new QLabel(this), "lblColorDepth");
    Grid->addWidget(lblColorDepth, 3, 1);

    auto* HotspotRow = new QHBoxLayout;
    auto* HotspotLabel = new QLabel(QStringLiteral("Set hotspot:"), this);
    cboCursorHotSpot = Named(new QComboBox(this), "cboCursorHotSpot");
    cboCursorHotSpot->setEditable(true);
    cboCursorHotSpot->addItems({QStringLiteral("0, 0"), QStringLiteral("16, 16"), QStringLiteral("31, 0"),
                                QStringLiteral("0, 31"), QStringLiteral("31, 31")});
    HotspotLabel->setBuddy(cboCursorHotSpot);
    cmdShowHotspot = Named(new QPushButton(QStringLiteral("Show Hotspot"), this), "cmdShowHotspot");
    cmdShowHotspot->setCheckable(true);
    HotspotRow->addWidget(HotspotLabel);
    HotspotRow->addWidget(cboCursorHotSpot);
    HotspotRow->addWidget(cmdShowHotspot);
    Grid->addLayout(HotspotRow, 4, 1);
    for (QWidget* W : std::initializer_list<QWidget*>{HotspotLabel, cboCursorHotSpot, cmdShowHotspot})
        W->setVisible(!IconMode);

    auto* ActualRow = new QHBoxLayout;
    ActualRow->addWidget(new QLabel(QStringLiteral("Actual"), this));
    picActual = Named(new QLabel(this), "picActual");
    picActual->setFixedSize(64, 64);
    ActualRow->addWidget(picActual);
    ActualRow->addStretch();
    Grid->addLayout(ActualRow, 5, 1);

    auto* FileRow = new QHBoxLayout;
    txtFileSpec = Named(new QLineEdit(this), "txtFileSpec");
    cmdBrowse = Named(new QPushButton(QStringLiteral("..."), this), "cmdBrowse");
    FileRow->addWidget(txtFileSpec);
    FileRow->addWidget(cmdBrowse);
    Layout->addLayout(FileRow);

    auto* Buttons = new QDialogButtonBox(this);
    cmdProceed = Named(Buttons->addButton(QStringLiteral("Proceed"), QDialogButtonBox::AcceptRole), "cmdProceed");
    Buttons->addButton(QDialogButtonBox::Cancel);
    connect(Buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(cmdProceed, &QPushButton::clicked, this, &frmTsFileSaveICOorCUR::Proceed);
    connect(cmdBrowse, &QPushButton::clicked, this, &frmTsFileSaveICOorCUR::Browse);
    Layout->addWidget(Buttons);

    connect(cboIconSize, &QComboBox::currentIndexChanged, this, &frmTsFileSaveICOorCUR::Rebuild);
    connect(cboHowToTake, &QComboBox::currentIndexChanged, this, &frmTsFileSaveICOorCUR::Rebuild);
    connect(ckbUseTransparent, &QCheckBox::toggled, this, &frmTsFileSaveICOorCUR::Rebuild);
    connect(cboCursorHotSpot, &QComboBox::currentTextChanged, this, &frmTsFileSaveICOorCUR::ShowPictures);
    connect(cmdShowHotspot, &QPushButton::toggled, this, [this](bool On) {
        HotspotShown = On;
        ShowPictures();
    });
    // The top-left pixel is the usual background: it is offered first.
    if (Source.DIBBitsPtr())
        PickedColor = Source.DIBhDC()->GetPixel(0, 0) & 0xFFFFFF;
    Rebuild();
}

int32_t frmTsFileSaveICOorCUR::IconSide() const
{
    if (!IconMode)
        return CursorSide;
    return cboIconSize->currentText().section(QLatin1Char(' '), 0, 0).toInt();
}

int frmTsFileSaveICOorCUR::Zoom() const { return std::max(1, MagnifiedSide / IconSide()); }

QPoint frmTsFileSaveICOorCUR::Hotspot() const
{
    const QStringList Parts = cboCursorHotSpot->currentText().split(QRegularExpression(QStringLiteral("[,\\s]+")),
                                                                    Qt::SkipEmptyParts);
    const int X = Parts.size() > 0 ? Parts[0].toInt() : 0;
    const int Y = Parts.size() > 1 ? Parts[1].toInt() : 0;
    return {std::clamp(X, 0, CursorSide - 1), std::clamp(Y, 0, CursorSide - 1)};
}

void frmTsFileSaveICOorCUR::setTransparentColor(uint32_t Color)
{
    PickedColor = Color & 0xFFFFFF;
    Rebuild();
}

void frmTsFileSaveICOorCUR::Rebuild()
{
    const int Side = IconSide();
    // 1. The source stretched to the icon: to the full size, or into the middle with its aspect
    // kept, the margins in the transparent colour so that they drop out when it is used. Pixels
    // are picked, not averaged, so that the transparent colour stays exact.
    Image.CreateBlankDIB(Side, Side, 32, PickedColor, true);
    if (Source.DIBBitsPtr()) {
        int X = 0, Y = 0, W = Side, H = Side;
        if (cboHowToTake->currentIndex() == 1) {
            const double Scale = std::min(static_cast<double>(Side) / Source.DIBWidth(),
                                          static_cast<double>(Side) / Source.DIBHeight());
            W = std::max(1, RoundHalfEven(Source.DIBWidth() * Scale));
            H = std::max(1, RoundHalfEven(Source.DIBHeight() * Scale));
            X = (Side - W) / 2;
            Y = (Side - H) / 2;
        }
        SetStretchBltMode(Image.DIBhDC(), COLORONCOLOR);
        StretchBlt(Image.DIBhDC(), X, Y, W, H, Source.DIBhDC(), 0, 0, Source.DIBWidth(), Source.DIBHeight(), SRCCOPY);
    }
    // 3. The mask: black, or white where the transparent colour is, which turns black on the image.
    Mask.CreateBlankDIB(Side, Side, 32, 0x000000, true);
    if (ckbUseTransparent->isChecked()) {
        for (int Y = 0; Y < Side; ++Y) {
            uint32_t* Pixel = reinterpret_cast<uint32_t*>(Image.DIBhDC()->Row(Y));
            uint32_t* Cover = reinterpret_cast<uint32_t*>(Mask.DIBhDC()->Row(Y));
            for (int X = 0; X < Side; ++X)
                if (ColorFromQuad(Pixel[X] & 0xFFFFFF) == PickedColor) {
                    Pixel[X] = 0;
                    Cover[X] = 0xFFFFFF;
                }
        }
    }
    // 2. The depth the colours call for.
    lblColorDepth->setText(DepthText(basIconCursor::ClassifyIconColors(Image)));
    ShowPictures();
}

void frmTsFileSaveICOorCUR::ShowPictures()
{
    const QColor C(ColorR(PickedColor), ColorG(PickedColor), ColorB(PickedColor));
    picTransparentColor->setStyleSheet(QStringLiteral("background: %1;").arg(C.name()));
    picTransparentColor->setToolTip(QStringLiteral("RGB(%1, %2, %3)").arg(C.red()).arg(C.green()).arg(C.blue()));

    const int Side = IconSide(), Scale = Zoom();
    QImage Magnified = ToImage(Image).scaled(Side * Scale, Side * Scale, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    if (!IconMode && HotspotShown) {
        QPainter Painter(&Magnified);
        const QPoint Spot = Hotspot();
        Painter.setPen(QPen(Qt::red, 2));
        Painter.drawRect(Spot.x() * Scale, Spot.y() * Scale, Scale - 1, Scale - 1);
    }
    picMagnified->setPixmap(QPixmap::fromImage(Magnified));

    // 4. The icon as the desktop draws it on the form's colour: the mask with AND, then the
    // image with XOR.
    clsDIB Actual;
    const QColor Form = palette().color(QPalette::Window);
    Actual.CreateBlankDIB(Side, Side, 32, RGBColor(Form.red(), Form.green(), Form.blue()), true);
    BitBlt(Actual.DIBhDC(), 0, 0, Side, Side, Mask.DIBhDC(), 0, 0, SRCAND);
    BitBlt(Actual.DIBhDC(), 0, 0, Side, Side, Image.DIBhDC(), 0, 0, SRCINVERT);
    picActual->setPixmap(QPixmap::fromImage(ToImage(Actual)));
}

bool frmTsFileSaveICOorCUR::eventFilter(QObject* Watched, QEvent* Event)
{
    if (Watched == picMagnified && Event->type() == QEvent::MouseButtonPress) {
        const auto* Mouse = static_cast<QMouseEvent*>(Event);
        const QPoint P = Mouse->position().toPoint() / Zoom();
        if (P.x() < 0 || P.y() < 0 || P.x() >= IconSide() || P.y() >= IconSide())
            return true;
        if (Mouse->button() == Qt::LeftButton) {
            // A pixel already made transparent shows black: the picked colour stays.
            if (Mask.DIBhDC()->GetPixel(P.x(), P.y()) != 0xFFFFFF) {
                ckbUseTransparent->blockSignals(true);
                ckbUseTransparent->setChecked(true);
                ckbUseTransparent->blockSignals(false);
                setTransparentColor(Image.DIBhDC()->GetPixel(P.x(), P.y()));
            }
        } else if (Mouse->button() == Qt::RightButton && !IconMode) {
            cboCursorHotSpot->setEditText(QStringLiteral("%1, %2").arg(P.x()).arg(P.y()));
        }
        return true;
    }
    return QDialog::eventFilter(Watched, Event);
}

void frmTsFileSaveICOorCUR::Browse()
{
    clsTsDialog Dialog;
    Dialog.Filter = IconMode ? QStringLiteral("(*.ico)|*.ico|") : QStringLiteral("(*.cur)|*.cur|");
    Dialog.DialogTitle = windowTitle();
    Dialog.InitDir = Folder;
    if (Dialog.ShowSave(this) && !Dialog.FileName.isEmpty())
        txtFileSpec->setText(Dialog.FileName);
}

void frmTsFileSaveICOorCUR::Proceed()
{
    QString Path = txtFileSpec->text().trimmed();
    if (Path.isEmpty()) {
        MsgBox(QStringLiteral("No file specification yet"));
        return;
    }
    const QString Ext = IconMode ? QStringLiteral(".ico") : QStringLiteral(".cur");
    if (!Path.endsWith(Ext, Qt::CaseInsensitive))
        Path += Ext;
    if (basTsMainPro::FileExists(Path) && basTsMainPro::IsReadOnlyFile(Path)) {
        MsgBox(QStringLiteral("File is read only."));
        return;
    }
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const std::string Name = QFile::encodeName(Path).toStdString();
    Alpha = Array2D<uint8_t>();
    const QPoint Spot = Hotspot();
    const bool Done = IconMode ? basIconCursor::SaveIconFile(Image, Mask, Name, false, Alpha)
                               : basIconCursor::SaveCursorFile(Image, Mask, Name, static_cast<uint16_t>(Spot.x()),
                                                               static_cast<uint16_t>(Spot.y()));
    QApplication::restoreOverrideCursor();
    if (!Done) {
        MsgBox(IconMode ? QStringLiteral("Failed to save icon file.") : QStringLiteral("Failed to save cursor file."));
        return;
    }
    Saved = Path;
    MsgBox(QStringLiteral("Saved to ") + Path);
    accept();
}

bool frmTsFileSaveICOorCUR::Run()
{
    if (Answer) {
        Answer(*this);
        return !Saved.isEmpty();
    }
    return exec() == QDialog::Accepted;
}
