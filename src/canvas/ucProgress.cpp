#include "ucProgress.h"

#include "basMath.h"

#include <QPainter>
#include <QPalette>

#include <algorithm>

namespace {

uint32_t ToBGR(const QColor& Color)
{
    return RGBColor(uint32_t(Color.red()), uint32_t(Color.green()), uint32_t(Color.blue()));
}

QColor FromBGR(uint32_t Color)
{
    return QColor(ColorR(Color), ColorG(Color), ColorB(Color));
}

} // namespace

ucProgress::ucProgress(QWidget* Parent) : QWidget(Parent)
{
    setObjectName(QStringLiteral("ucProgress"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    Back = ToBGR(palette().color(QPalette::Base));
    Fore = ToBGR(palette().color(QPalette::Highlight));
}

void ucProgress::SetBorderStyle(int Style)
{
    Style = Style == 1 ? 1 : 0;
    if (Style == Border)
        return;
    Border = Style;
    update();
}

void ucProgress::SetBackColor(uint32_t Color)
{
    Back = Color & 0xFFFFFF;
    update();
}

void ucProgress::SetForeColor(uint32_t Color)
{
    Fore = Color & 0xFFFFFF;
    update();
}

void ucProgress::SetMax(int NewMax)
{
    const int Before = FilledWidth();
    Maximum = NewMax;
    Current = std::clamp(Current, 0, std::max(0, Maximum));
    if (FilledWidth() != Before)
        update();
}

void ucProgress::SetValue(int NewValue)
{
    const int Before = FilledWidth();
    Current = std::clamp(NewValue, 0, std::max(0, Maximum));
    if (FilledWidth() != Before && isVisible())
        repaint();
}

QRect ucProgress::InnerRect() const
{
    return Border == 1 ? rect().adjusted(1, 1, -1, -1) : rect();
}

int ucProgress::FilledWidth() const
{
    const int Inner = std::max(0, InnerRect().width());
    if (Maximum <= 0)
        return 0;
    // 64 bits: a wide bar times a large Value overflows 32.
    return int(int64_t(Inner) * Current / Maximum);
}

QSize ucProgress::sizeHint() const
{
    return QSize(120, 16);
}

QSize ucProgress::minimumSizeHint() const
{
    return QSize(8, 4);
}

void ucProgress::paintEvent(QPaintEvent*)
{
    QPainter Painter(this);
    if (Border == 1) {
        Painter.setPen(palette().color(QPalette::Mid));
        Painter.setBrush(Qt::NoBrush);
        Painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
    const QRect Inner = InnerRect();
    if (Inner.isEmpty())
        return;
    Painter.fillRect(Inner, FromBGR(Back));
    const int Filled = FilledWidth();
    if (Filled > 0)
        Painter.fillRect(QRect(Inner.left(), Inner.top(), Filled, Inner.height()), FromBGR(Fore));
}
