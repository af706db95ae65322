// The loader's work on pixels: reading a picture or drawing text onto white, and turning the
// result into a brush or stamp pair or a fill pattern.
#include <QFontMetrics>
#include <QPainter>

#include <algorithm>

#include "PixelArray32.h"
#include "basMath.h"
#include "basPicture.h"
#include "basTsMainPro.h"
#include "frmTsStampOrBrush.h"

namespace {

constexpr uint32_t WhiteWord = 0x00FFFFFF;
// The mask's white keeps every bit of the picture under it, the fourth byte too.
constexpr uint32_t MaskClear = 0xFFFFFFFF;

// A channel of opacity Alpha laid on white, rounded to nearest (255 is odd, so there are no ties).
uint32_t OnWhite(uint32_t Channel, uint32_t Alpha)
{
    return (Channel * Alpha + 255 * (255 - Alpha) + 127) / 255;
}

} // namespace

bool frmTsStampOrBrush::SourceFromImage(const QImage& Picture, clsDIB& Out)
{
    if (Picture.isNull() || static_cast<int64_t>(Picture.width()) * Picture.height() > MaxSourcePixels)
        return false;
    const QImage Argb = Picture.convertToFormat(QImage::Format_ARGB32);
    const int W = Argb.width(), H = Argb.height();
    // Pictures saved with 32 bits but no alpha leave that byte 0 everywhere: they are opaque.
    bool UsesAlpha = false;
    for (int Y = 0; Y < H && !UsesAlpha; ++Y) {
        const QRgb* In = reinterpret_cast<const QRgb*>(Argb.constScanLine(Y));
        for (int X = 0; X < W; ++X)
            if (qAlpha(In[X]) != 0) {
                UsesAlpha = true;
                break;
            }
    }
    if (!Out.CreateBlankDIB(W, H, 32, White, true))
        return false;
    PixelArray32 Pixels(Out);
    if (!Pixels.Valid())
        return false;
    for (int Y = 0; Y < H; ++Y) {
        const QRgb* In = reinterpret_cast<const QRgb*>(Argb.constScanLine(Y));
        uint32_t* Row = Pixels.Row(Y);
        if (!UsesAlpha) {
            for (int X = 0; X < W; ++X)
                Row[X] = In[X] & WhiteWord;
            continue;
        }
        for (int X = 0; X < W; ++X) {
            const uint32_t A = static_cast<uint32_t>(qAlpha(In[X]));
            Row[X] = A == 255 ? In[X] & WhiteWord
                              : (OnWhite(static_cast<uint32_t>(qRed(In[X])), A) << 16) |
                                    (OnWhite(static_cast<uint32_t>(qGreen(In[X])), A) << 8) |
                                    OnWhite(static_cast<uint32_t>(qBlue(In[X])), A);
        }
    }
    return true;
}

frmTsStampOrBrush::LoadResult frmTsStampOrBrush::LoadSource(const QString& Path, clsDIB& Out)
{
    StdPicture Picture;
    if (!basPicture::LoadPicture(Path, Picture) || !Picture.IsBitmap())
        return LoadResult::Unreadable;
    if (static_cast<int64_t>(Picture.Width()) * Picture.Height() > MaxSourcePixels)
        return LoadResult::TooLarge;
    return SourceFromImage(Picture.Image(), Out) ? LoadResult::Loaded : LoadResult::Unreadable;
}

QFont frmTsStampOrBrush::StampFont(const QString& Family, int Points, bool Bold, bool Italic)
{
    QFont Font(Family);
    // A size in pixels, so the stamp is the same on every screen.
    Font.setPixelSize(RoundHalfEven(std::clamp(Points, MinFontPoints, MaxFontPoints) * 96.0 / 72.0));
    Font.setBold(Bold);
    Font.setItalic(Italic);
    return Font;
}

bool frmTsStampOrBrush::RenderText(const QString& Text, const QFont& Font, uint32_t Color, bool Smooth,
                                   clsDIB& Out)
{
    const QString Line = Text.left(MaxTextLength);
    if (Line.trimmed().isEmpty())
        return false;
    QFont Drawn(Font);
    Drawn.setStyleStrategy(Smooth ? QFont::PreferAntialias : QFont::NoAntialias);
    const QFontMetrics Metrics(Drawn);
    // Italic overhangs and glyphs that reach past their advance still land on the surface; the
    // useful box is cut out afterwards.
    const int Margin = Metrics.height() / 2 + 2;
    const int W = Metrics.horizontalAdvance(Line) + 2 * Margin;
    const int H = Metrics.height() + 2 * Margin;
    QImage Picture(W, H, QImage::Format_RGB32);
    if (Picture.isNull())
        return false;
    Picture.fill(Qt::white);
    {
        QPainter Painter(&Picture);
        Painter.setRenderHint(QPainter::TextAntialiasing, Smooth);
        Painter.setFont(Drawn);
        Painter.setPen(QColor(ColorR(Color), ColorG(Color), ColorB(Color)));
        Painter.drawText(Margin, Margin + Metrics.ascent(), Line);
    }
    return SourceFromImage(Picture, Out);
}

frmTsStampOrBrush::MakeResult frmTsStampOrBrush::MakeStampPair(clsDIB& From, clsDIB& ToImage, clsDIB& ToMask)
{
    basTsMainPro::PixelBox Box;
    if (!basTsMainPro::NonBlankBounds(From, White, Box))
        return MakeResult::TooSmall;
    const int W = Box.Right - Box.Left + 1, H = Box.Bottom - Box.Top + 1;
    if (W < MinimumSide || H < MinimumSide)
        return MakeResult::TooSmall;
    PixelArray32 In(From);
    if (!In.Valid() || !ToImage.CreateBlankDIB(W, H, 32, 0, true) || !ToMask.CreateBlankDIB(W, H, 32, 0, true))
        return MakeResult::Failed;
    PixelArray32 OutImage(ToImage), OutMask(ToMask);
    if (!OutImage.Valid() || !OutMask.Valid())
        return MakeResult::Failed;
    for (int Y = 0; Y < H; ++Y) {
        const uint32_t* Row = In.Row(Box.Top + Y) + Box.Left;
        uint32_t* ImageRow = OutImage.Row(Y);
        uint32_t* MaskRow = OutMask.Row(Y);
        for (int X = 0; X < W; ++X) {
            const bool Clear = (Row[X] & WhiteWord) == WhiteWord;
            ImageRow[X] = Clear ? 0 : Row[X] & WhiteWord;
            MaskRow[X] = Clear ? MaskClear : 0;
        }
    }
    return MakeResult::Made;
}

bool frmTsStampOrBrush::MakePattern(clsDIB& From, clsDIB& ToPattern)
{
    const int W = From.DIBWidth(), H = From.DIBHeight();
    if (!From.DIBhDC() || W < 1 || H < 1)
        return false;
    int32_t OutW = W, OutH = H;
    if (W > MaxPatternSide || H > MaxPatternSide)
        basTsMainPro::BestFitSize(W, H, MaxPatternSide, MaxPatternSide, OutW, OutH, false);
    OutW = std::clamp<int32_t>(OutW, 1, MaxPatternSide);
    OutH = std::clamp<int32_t>(OutH, 1, MaxPatternSide);
    if (!ToPattern.CreateBlankDIB(OutW, OutH, 32, White, true))
        return false;
    if (OutW == W && OutH == H)
        return BitBlt(ToPattern.DIBhDC(), 0, 0, W, H, From.DIBhDC(), 0, 0, SRCCOPY);
    // Averaging keeps fine detail of the picture as a tone instead of dropping it.
    ToPattern.StretchPaintFromDIBtoDIB(From, ToPattern, true, 0, 0, OutW, OutH, 0, 0, W, H);
    return true;
}

QImage frmTsStampOrBrush::ImageOf(clsDIB& Dib)
{
    PixelArray32 Pixels(Dib);
    if (!Pixels.Valid() || Pixels.Width() < 1 || Pixels.Height() < 1)
        return {};
    QImage Picture(Pixels.Width(), Pixels.Height(), QImage::Format_RGB32);
    if (Picture.isNull())
        return {};
    // Stored words and RGB32 share their layout; only the fourth byte differs.
    for (int Y = 0; Y < Pixels.Height(); ++Y) {
        const uint32_t* In = Pixels.Row(Y);
        QRgb* Row = reinterpret_cast<QRgb*>(Picture.scanLine(Y));
        for (int X = 0; X < Pixels.Width(); ++X)
            Row[X] = In[X] | 0xFF000000u;
    }
    return Picture;
}
