#pragma once
// Saves a paint document's picture (or its region) as a single-image icon or cursor: the source
// stretched to the chosen size, a colour picked on the magnified picture made transparent, the
// depth the colours call for, a cursor's hotspot, and the finished icon shown as the desktop
// would draw it. Tests set Answer, which stands in for the user while the dialog is open.
#include <QDialog>
#include <cstdint>
#include <functional>

#include "Array2D.h"
#include "clsDIB.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

class frmTsFileSaveICOorCUR : public QDialog {
    Q_OBJECT
public:
    // Mode "1" saves an icon; anything else a cursor. Source is any surface; it is copied.
    frmTsFileSaveICOorCUR(const QString& Mode, clsDIB& Source, const QString& InitialFolder, QWidget* Parent = nullptr);

    // Shows the dialog (or hands it to Answer); true when a file was saved.
    bool Run();
    static inline std::function<bool(frmTsFileSaveICOorCUR&)> Answer;

    bool IsIcon() const { return IconMode; }
    int32_t IconSide() const;
    void setTransparentColor(uint32_t Color);
    uint32_t TransparentColor() const { return PickedColor; }
    // The hotspot cboCursorHotSpot holds, clamped to the cursor.
    QPoint Hotspot() const;
    // The two pictures as they would be saved: the image and its mask (white is transparent).
    const clsDIB& IconImage() const { return Image; }
    const clsDIB& IconMask() const { return Mask; }
    // The name of the file saved.
    QString SavedFile() const { return Saved; }

    QLabel* lblCaption = nullptr;
    QComboBox* cboIconSize = nullptr;
    QLabel* lblCursorSize = nullptr;
    QComboBox* cboHowToTake = nullptr;
    QCheckBox* ckbUseTransparent = nullptr;
    QLabel* picTransparentColor = nullptr;
    QLabel* picMagnified = nullptr;
    QLabel* picActual = nullptr;
    QLabel* lblColorDepth = nullptr;
    QComboBox* cboCursorHotSpot = nullptr;
    QPushButton* cmdShowHotspot = nullptr;
    QLineEdit* txtFileSpec = nullptr;
    QPushButton* cmdBrowse = nullptr;
    QPushButton* cmdProceed = nullptr;

    // The magnification of picMagnified: pixels of the screen a pixel of the icon.
    int Zoom() const;

protected:
    bool eventFilter(QObject* Watched, QEvent* Event) override;

private:
    void Rebuild();
    void ShowPictures();
    void Browse();
    void Proceed();

    bool IconMode = true;
    clsDIB Source;
    clsDIB Image;
    clsDIB Mask;
    Array2D<uint8_t> Alpha;
    uint32_t PickedColor = 0xFFFFFF;
    bool HotspotShown = false;
    QString Folder;
    QString Saved;
};
