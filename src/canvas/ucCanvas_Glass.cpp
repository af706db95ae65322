// The magnifying glass: drawn into the picture itself around the mouse, over a clean copy of the
// picture from which the pixels under its last place are put back at each move.
#include <QImage>
#include <QLabel>
#include <algorithm>
#include <cmath>

#include "PictureBox.h"
#include "PixelArray32.h"
#include "basCanvasImages.h"
#include "ucCanvas.h"

void ucCanvas::GlassOnOff(bool On)
{
    if (!On) {
        if (!GlassOn)
            return;
        RestoreUnderGlass();
        RepaintImageBox(GlassLast);
        GlassOn = false;
        GlassLast = QRect();
        DIBGlassCopy.ClearUp();
        DIBGlassView.ClearUp();
        UpdateCursor();
        return;
    }
    if (GlassOn || !DIB.DIBBitsPtr())
        return;
    const QImage Glass = basCanvasImages::GlassImage(ConvexGlass).convertToFormat(QImage::Format_RGB32);
    const int GW = Glass.width();
    const int GH = Glass.height();
    const int W = DIB.DIBWidth();
    const int H = DIB.DIBHeight();
    if (!DIBGlass.CreateBlankDIB(GW, GH, 32, 0xFFFFFF, true) || !DIBGlassMask.CreateBlankDIB(GW, GH, 32, 0xFFFFFF, true) ||
        !DIBGlassView.CreateBlankDIB(GW, GH, 32, 0xFFFFFF, true) || !DIBGlassCopy.CreateBlankDIB(W, H, 32, 0xFFFFFF, true))
        return;
    PixelArray32 Image(DIBGlass), Mask(DIBGlassMask);
    for (int Y = 0; Y < GH; ++Y) {
        const auto* Line = reinterpret_cast<const uint32_t*>(Glass.constScanLine(Y));
        for (int X = 0; X < GW; ++X)
            Image.At(X, Y) = Mask.At(X, Y) = Line[X] & 0xFFFFFF;
    }
    BitBlt(DIBGlassCopy.DIBhDC(), 0, 0, W, H, DIB.DIBhDC(), 0, 0, SRCCOPY);
    GlassOn = true;
    GlassLast = QRect();
    UpdateCursor();
    // The glass starts over the mouse when it is on the picture, else in the middle of the view.
    QPoint At = DisplayToImage(picDisp->mapFromGlobal(QCursor::pos()) * picDisp->Dpr());
    if (!QRect(0, 0, W, H).contains(At)) {
        int X1, Y1, X2, Y2;
        GetVisibleInfo(X1, Y1, X2, Y2);
        At = QPoint((X1 + X2) / 2, (Y1 + Y2) / 2);
    }
    MoveGlass(At);
}

void ucCanvas::MoveGlass(QPoint Image)
{
    if (!GlassOn)
        return;
    const int W = DIB.DIBWidth();
    const int H = DIB.DIBHeight();
    const int GW = DIBGlass.DIBWidth();
    const int GH = DIBGlass.DIBHeight();
    // The glass may hang over the edges by up to 0.8 of the picture.
    const double MinX = -0.8 * W, MaxX = W - GW + 0.8 * W;
    const double MinY = -0.8 * H, MaxY = H - GH + 0.8 * H;
    GlassPos = QPoint(static_cast<int>(std::clamp<double>(Image.x() - GW / 2, MinX, std::max(MinX, MaxX))),
                      static_cast<int>(std::clamp<double>(Image.y() - GH / 2, MinY, std::max(MinY, MaxY))));
    BuildGlassView();
    DrawGlass();
}

void ucCanvas::BuildGlassView()
{
    const int GW = DIBGlassView.DIBWidth();
    const int GH = DIBGlassView.DIBHeight();
    const double SrcW = ConvexGlass ? GW / 2.0 : static_cast<double>(GW / std::max<int16_t>(1, GlassFactor));
    const double SrcH = ConvexGlass ? GH / 2.0 : static_cast<double>(GH / std::max<int16_t>(1, GlassFactor));
    const double Left = GlassPos.x() + (GW - SrcW) / 2.0;
    const double Top = GlassPos.y() + (GH - SrcH) / 2.0;
    PixelArray32 View(DIBGlassView), Copy(DIBGlassCopy);
    if (!View.Valid() || !Copy.Valid())
        return;
    // Nearest pixel, as a plain stretch; outside the picture the glass shows white.
    for (int Y = 0; Y < GH; ++Y) {
        const int SY = static_cast<int>(std::floor(Top + (2.0 * Y + 1) * SrcH / (2.0 * GH)));
        uint32_t* Line = View.Row(Y);
        for (int X = 0; X < GW; ++X) {
            const int SX = static_cast<int>(std::floor(Left + (2.0 * X + 1) * SrcW / (2.0 * GW)));
            Line[X] = Copy.Contains(SX, SY) ? Copy.At(SX, SY) : 0xFFFFFFu;
        }
    }
}

void ucCanvas::RestoreUnderGlass()
{
    CopyPixels(DIBGlassCopy, DIB, GlassLast);
}

void ucCanvas::DrawGlass()
{
    const QRect Before = GlassLast;
    RestoreUnderGlass();
    PixelArray32 Pixels(DIB), Glass(DIBGlass), Mask(DIBGlassMask), View(DIBGlassView);
    if (!Pixels.Valid() || !Glass.Valid() || !Mask.Valid() || !View.Valid())
        return;
    const uint32_t Key = Mask.At(0, 0) & 0xFFFFFF;
    const QRect Box =
        QRect(GlassPos, QSize(Glass.Width(), Glass.Height())).intersected(QRect(0, 0, Pixels.Width(), Pixels.Height()));
    for (int Y = Box.top(); Y <= Box.bottom(); ++Y) {
        const int GY = Y - GlassPos.y();
        uint32_t* Line = Pixels.Row(Y);
        for (int X = Box.left(); X <= Box.right(); ++X) {
            const int GX = X - GlassPos.x();
            const uint32_t M = Mask.At(GX, GY) & 0xFFFFFF;
            if (M == Key)
                continue;
            Line[X] = M == 0xFFFFFF ? View.At(GX, GY) : Glass.At(GX, GY);
        }
    }
    GlassLast = Box;
    RepaintImageBox(Before.united(Box));
}
