#pragma once
// A plain progress bar: a background, an optional one-pixel frame and a part filled from the left
// in proportion to Value / Max. Colours are 0x00BBGGRR like everywhere in the program; Enabled is
// the widget's own.
#include <QWidget>
#include <cstdint>

class ucProgress : public QWidget {
    Q_OBJECT
    Q_PROPERTY(int BorderStyle READ BorderStyle WRITE SetBorderStyle)
    Q_PROPERTY(uint BackColor READ BackColor WRITE SetBackColor)
    Q_PROPERTY(uint ForeColor READ ForeColor WRITE SetForeColor)
    Q_PROPERTY(int Max READ Max WRITE SetMax)
    Q_PROPERTY(int Value READ Value WRITE SetValue)

public:
    explicit ucProgress(QWidget* Parent = nullptr);

    // 0 none, 1 fixed single.
    int BorderStyle() const { return Border; }
    void SetBorderStyle(int Style);
    uint32_t BackColor() const { return Back; }
    void SetBackColor(uint32_t Color);
    uint32_t ForeColor() const { return Fore; }
    void SetForeColor(uint32_t Color);
    // A Max of 0 or below shows nothing filled. Lowering Max pulls Value down with it.
    int Max() const { return Maximum; }
    void SetMax(int NewMax);
    // Clamped to 0..Max. The bar is drawn again at once when the filled part changes, so it moves
    // during long work that does not return to the event loop.
    int Value() const { return Current; }
    void SetValue(int NewValue);

    // The filled part's width in pixels for the current size, inner width * Value / Max.
    int FilledWidth() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* Event) override;

private:
    QRect InnerRect() const;

    int Border = 0;
    uint32_t Back = 0;
    uint32_t Fore = 0;
    int Maximum = 100;
    int Current = 0;
};
