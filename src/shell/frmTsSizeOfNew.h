#pragma once

// The size of a new picture or a new animation: a few common sizes and a custom one. OK writes
// the choice to basTsMainPro::NewImageWidth and NewImageHeight; Cancel leaves them alone.

#include <QDialog>
#include <QSize>

#include <cstdint>
#include <vector>

class QGroupBox;
class QLineEdit;
class QPushButton;
class QRadioButton;

class frmTsSizeOfNew : public QDialog {
    Q_OBJECT

public:
    explicit frmTsSizeOfNew(bool forAnimation = false, QWidget* parent = nullptr);

    // A custom picture of more pixels than this is warned about when a field is left.
    static constexpr int64_t ThresholdPixels = 15000000;
    // A custom picture side is at most this many pixels (and at least 1).
    static constexpr int32_t MaxImageSide = 10000;
    // A custom picture wider or taller than these asks for confirmation on OK.
    static constexpr int32_t LargeWidth = 800;
    static constexpr int32_t LargeHeight = 600;
    // A custom animation side is at most this many pixels: every one of up to 120 frames holds a
    // full-size 8-bit surface and mask, so 1000 x 1000 already costs well over 100 MB, and an
    // animation beyond that is no longer something a GIF viewer plays smoothly.
    static constexpr int32_t MaxAnimationSide = 1000;

    bool ForAnimation() const { return AnimationMode; }
    // The size of the checked choice, custom fields clamped to their limits.
    QSize ChosenSize() const;

    // ---- Controls, named as their objectName ----
    QGroupBox* fraImageSize = nullptr;
    std::vector<QRadioButton*> optImageSize; // 0..5, 5 custom
    QLineEdit* txbImageWidth = nullptr;
    QLineEdit* txbImageHeight = nullptr;
    QGroupBox* fraGIFaniSize = nullptr;
    std::vector<QRadioButton*> optGIFaniSize; // 0..4 and 6 custom; entry 5 does not exist (null)
    QLineEdit* txbGIFaniWidth = nullptr;
    QLineEdit* txbGIFaniHeight = nullptr;
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdCancel = nullptr;

    static constexpr int ImageCustomIndex = 5;
    static constexpr int GIFaniCustomIndex = 6;

public slots:
    void done(int result) override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void BuildImageFrame();
    void BuildGIFaniFrame();
    void UpdateCustomFields();
    void txbImageSize_LostFocus(QLineEdit* field);
    void txbGIFaniSize_LostFocus(QLineEdit* field);
    void cmdOK_Click();

    bool AnimationMode = false;
    bool Closing = false; // leaving a field while the dialog closes checks nothing
};
