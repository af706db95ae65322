#pragma once
// The loader of the custom brush, the custom fill pattern and the two stamps. It reads a picture
// file (or draws a line of text), shows what it will give, and on OK leaves the result in Image
// (a top-down 32-bit surface) and, for the brush and the stamps, Mask. White is the transparent
// colour: a brush or stamp keeps only the box of its non-white pixels, its mask is black where the
// picture is not white and white elsewhere, and its image is black where the mask is white, so that
// the mask laid with SRCAND and then the image with SRCPAINT print only the non-white parts. A
// pattern keeps the whole picture, since a fill tiles it whole. Tests install a StampOrBrushScript,
// which answers in place of the user.
#include <QDialog>
#include <QFont>
#include <QImage>
#include <QString>
#include <cstdint>
#include <deque>
#include <vector>

#include "clsDIB.h"

class QCheckBox;
class QFontComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

class frmTsStampOrBrush : public QDialog {
    Q_OBJECT
public:
    enum class StampTarget { CustomBrush = 0, CustomPattern = 1, TextStamp = 2, ImageStamp = 3 };

    explicit frmTsStampOrBrush(StampTarget Target, QWidget* Parent = nullptr);
    ~frmTsStampOrBrush() override;

    // Image targets first ask for the picture file (a cancel there ends it all), then the dialog
    // shows; a StampOrBrushScript answers instead when one is installed. True when OK left a
    // result in Image (and Mask).
    bool Run();

    StampTarget Target() const { return For; }
    bool IsImageTarget() const { return For != StampTarget::TextStamp; }

    // The result of OK.
    clsDIB Image, Mask;
    // Copies the result into the surfaces that keep it (Mask may be null for a pattern).
    void CopyResultTo(clsDIB& ToImage, clsDIB* ToMask);
    // The result as it looks on white, for the toolbox's preview boxes.
    QImage ResultPreview();

    // The picture file read last (image targets).
    QString FileName;
    // The colour of the text stamp; the first colour when the dialog opens.
    uint32_t TextColor = 0;

    // Limits. A brush or stamp whose non-white box is narrower or lower than MinimumSide is
    // refused. A pattern wider or taller than MaxPatternSide is scaled down to fit, keeping its
    // proportions: a fill tile of that size already shows any picture, and a larger one only
    // costs memory at every fill. A picture of more than MaxSourcePixels is refused, as the
    // document refuses it. Text is cut to MaxTextLength characters and its size kept to
    // MinFontPoints..MaxFontPoints, which bounds the surface it is drawn on.
    static constexpr int MinimumSide = 2;
    static constexpr int MaxPatternSide = 256;
    static constexpr int64_t MaxSourcePixels = 15000000;
    static constexpr int MaxTextLength = 100;
    static constexpr int MinFontPoints = 6;
    static constexpr int MaxFontPoints = 144;
    static constexpr int DefaultFontPoints = 24;
    static constexpr uint32_t White = 0xFFFFFF;

    // ---- The work, also used by tests ----
    enum class LoadResult { Loaded, Unreadable, TooLarge };
    // Reads a picture file into a top-down 32-bit surface. Transparent parts of a picture with an
    // alpha channel are laid on white; a 32-bit picture whose alpha is 0 everywhere is opaque.
    static LoadResult LoadSource(const QString& Path, clsDIB& Source);
    // Any image into the same kind of surface, by the same rule.
    static bool SourceFromImage(const QImage& Picture, clsDIB& Source);
    // Draws one line of text in Color on white, with a margin round it. Smooth draws antialiased
    // edges (which blend towards white); otherwise every text pixel is exactly Color. False for
    // text that is empty or only blanks.
    static bool RenderText(const QString& Text, const QFont& Font, uint32_t Color, bool Smooth, clsDIB& Source);
    enum class MakeResult { Made, TooSmall, Failed };
    // The brush or stamp pair of a source: the box of its non-white pixels, the mask and the image.
    static MakeResult MakeStampPair(clsDIB& Source, clsDIB& ToImage, clsDIB& ToMask);
    // The pattern of a source: the whole picture, scaled down to MaxPatternSide when larger.
    static bool MakePattern(clsDIB& Source, clsDIB& ToPattern);
    // A surface as a picture (RGB32), for previews.
    static QImage ImageOf(clsDIB& Dib);
    // The font of the text stamp at a size in points (96 pixels an inch).
    static QFont StampFont(const QString& Family, int Points, bool Bold, bool Italic);
    // "Non-transparent area smaller than the minimum size" / "of 2 x 2 pixels".
    static QString TooSmallMessage();
    // The "Last Folder" key of a target ("CustomBrush", "CustomPattern", "Stamp").
    static QString LastFolderKey(StampTarget Target);
    // The open dialog's filter: the pictures the loader reads.
    static QString PictureFilter();

    // ---- Controls, named as their objectName ----
    QLineEdit* txtFileName = nullptr;   // image targets: the file, read-only
    QPushButton* cmdBrowse = nullptr;
    QLineEdit* txtStampText = nullptr;  // text stamp
    QFontComboBox* cboFontName = nullptr;
    QSpinBox* txtFontSize = nullptr;
    QCheckBox* ckbBold = nullptr;
    QCheckBox* ckbItalic = nullptr;
    QCheckBox* ckbSmooth = nullptr;
    QLabel* picTextColor = nullptr;
    QPushButton* cmdTextColor = nullptr;
    QLabel* picPreview = nullptr;
    QLabel* lblPreviewSize = nullptr;
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdCancel = nullptr;

    // Asks for a picture file in the target's last folder and reads it. False when cancelled or
    // unreadable (said in a message); the picture shown before stays.
    bool cmdBrowse_Click();
    // Makes the result; true when it was accepted. A brush or stamp below the minimum size says
    // so and the dialog stays open.
    bool cmdOK_Click();
    // The font as chosen in the controls.
    QFont ChosenFont() const;

private:
    void BuildControls();
    void RedrawText();
    void UpdatePreview();
    void ShowTextColor();
    void cmdTextColor_Click();
    bool RunScripted();

    StampTarget For;
    clsDIB Source;
    bool HasSource = false;
};

// What a script answers for one dialog: OK or Cancel, and for a text stamp what is typed and
// chosen. Empty and zero fields leave the dialog's own values.
struct StampOrBrushAnswer {
    bool Accept = true;
    QString Text;
    QString FontName;
    int FontSize = 0;
    bool Bold = false;
    bool Italic = false;
    bool Smooth = false;
    bool SetColor = false;
    uint32_t Color = 0;
};

// What the dialog offered when it was run: the target and the text stamp's starting values.
struct StampOrBrushCall {
    frmTsStampOrBrush::StampTarget Target = frmTsStampOrBrush::StampTarget::CustomBrush;
    QString FontName;
    int FontSize = 0;
    uint32_t TextColor = 0;
};

// While an object of this class lives, the dialog is not shown: image targets still ask for their
// file through clsTsDialog (answer it with a TsDialogScript), then the answers are taken in order.
// An OK that is refused (too small) takes the next answer, as a user who stays in the dialog; an
// empty queue cancels.
class StampOrBrushScript {
public:
    StampOrBrushScript();
    ~StampOrBrushScript();
    StampOrBrushScript(const StampOrBrushScript&) = delete;
    StampOrBrushScript& operator=(const StampOrBrushScript&) = delete;

    void Answer(const StampOrBrushAnswer& Answer) { Answers.push_back(Answer); }
    void AnswerCancel()
    {
        StampOrBrushAnswer Cancel;
        Cancel.Accept = false;
        Answers.push_back(Cancel);
    }
    const std::vector<StampOrBrushCall>& Calls() const { return Recorded; }

    static StampOrBrushScript* Active();

private:
    friend class frmTsStampOrBrush;
    std::deque<StampOrBrushAnswer> Answers;
    std::vector<StampOrBrushCall> Recorded;
    StampOrBrushScript* Previous = nullptr;
};
