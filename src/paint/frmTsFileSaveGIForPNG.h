#pragma once
// The small dialog with which the paint document saves a picture as GIF or PNG: transparency by a
// colour picked from the picture with a right click, interlace, and for PNG the background colour
// chunk and the opacity. Tests set Answer, which stands in for the user.
#include <QDialog>
#include <QImage>
#include <cstdint>
#include <array>
#include <functional>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QRadioButton;

class frmTsFileSaveGIForPNG : public QDialog {
    Q_OBJECT
public:
    enum class Kind { GIF, PNG24, PNGOptimized, PNG8 };

    frmTsFileSaveGIForPNG(Kind SaveKind, const QImage& Picture, QWidget* Parent = nullptr);

    // Shows the dialog (or asks Answer); true on OK.
    bool Run();
    // When set, called in place of showing the dialog: it may set the controls and answers OK.
    static inline std::function<bool(frmTsFileSaveGIForPNG&)> Answer;

    // The options as the controls hold them.
    bool Transparency() const;
    bool Interlaced() const;
    uint32_t TransparentColor() const { return PickedColor; }
    void setTransparentColor(uint32_t Color);
    bool BackgroundChunk() const;
    bool AlphaValues() const;
    int Opacity() const;

    QGroupBox* fraOptions = nullptr;
    QLabel* lblSaveAsOption = nullptr;
    QLabel* picImage = nullptr;
    QCheckBox* ckbGIFsetTransparency = nullptr;
    QLabel* picGIFtranspColor = nullptr;
    QCheckBox* ckbGIFinterlaced = nullptr;
    QCheckBox* ckbPNGinterlaced = nullptr;
    QCheckBox* ckbPNGSetBgdColorChunk = nullptr;
    QCheckBox* ckbPNGSetTransparency = nullptr;
    std::array<QRadioButton*, 2> optTransparency{};
    QComboBox* cboPNGalphaValue = nullptr;

protected:
    bool eventFilter(QObject* Watched, QEvent* Event) override;

private:
    void ShowColor();

    Kind SaveKind;
    QImage Picture;
    QImage Shown;  // the picture as the preview shows it, for mapping clicks back
    uint32_t PickedColor = 0xFFFFFF;
};
