#include "DeviceContext.h"

#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cstring>

#include "PixelFormat.h"
#include "basMath.h"

DeviceContext::DeviceContext(uint8_t* Bits, int Width, int Height, int Bpp, int Stride, bool TopDown,
                             uint32_t* ColorTable, int ColorCount)
    : Memory(Bits), W(Width), H(Height), Depth(Bpp), RowBytes(Stride), IsTopDown(TopDown), Table(ColorTable),
      TableCount(ColorTable ? ColorCount : 0)
{
}

DeviceContext::~DeviceContext()
{
    EndPaint();
}

uint32_t DeviceContext::GetPixel(int X, int Y) const
{
    EndPaint();
    if (X < 0 || Y < 0 || X >= W || Y >= H)
        return CLR_INVALID;
    const uint32_t Native = PixelFormat::ReadNative(Row(Y), X, Depth);
    if (Depth <= 8)
        return static_cast<int>(Native) < TableCount ? ColorFromQuad(Table[Native] & 0xFFFFFF) : 0;
    if (Depth == 16)
        return ColorFromQuad(PixelFormat::QuadFrom555(Native));
    return ColorFromQuad(Native & 0xFFFFFF);
}

int DeviceContext::NearestIndex(uint32_t Color) const
{
    const int R = ColorR(Color), G = ColorG(Color), B = ColorB(Color);
    int Best = 0;
    int BestDistance = 0x7FFFFFFF;
    for (int I = 0; I < TableCount; ++I) {
        const uint32_t Q = Table[I];
        const int DR = static_cast<int>((Q >> 16) & 255) - R;
        const int DG = static_cast<int>((Q >> 8) & 255) - G;
        const int DB = static_cast<int>(Q & 255) - B;
        const int Distance = DR * DR + DG * DG + DB * DB;
        if (Distance < BestDistance) {
            BestDistance = Distance;
            Best = I;
        }
    }
    return Best;
}

static uint32_t NativeFromColor(const DeviceContext& Context, uint32_t Color)
{
    if (Context.Bpp() <= 8)
        return static_cast<uint32_t>(Context.NearestIndex(Color));
    const uint32_t Quad = QuadFromColor(Color & 0xFFFFFF);
    return Context.Bpp() == 16 ? PixelFormat::QuadTo555(Quad) : Quad;
}

void DeviceContext::SetPixelV(int X, int Y, uint32_t Color)
{
    EndPaint();
    if (X < 0 || Y < 0 || X >= W || Y >= H)
        return;
    PixelFormat::WriteNative(Row(Y), X, Depth, NativeFromColor(*this, Color));
}

void DeviceContext::FillRect(int X, int Y, int Width, int Height, uint32_t Color)
{
    EndPaint();
    const int Left = std::max(X, 0), Top = std::max(Y, 0);
    const int Right = std::min(X + Width, W), Bottom = std::min(Y + Height, H);
    if (Left >= Right || Top >= Bottom)
        return;
    const uint32_t Native = NativeFromColor(*this, Color);
    for (int Line = Top; Line < Bottom; ++Line) {
        uint8_t* P = Row(Line);
        if (Depth == 32) {
            uint32_t* Px = reinterpret_cast<uint32_t*>(P) + Left;
            std::fill(Px, Px + (Right - Left), Native);
        } else if (Depth == 8) {
            std::fill(P + Left, P + Right, static_cast<uint8_t>(Native));
        } else {
            for (int Col = Left; Col < Right; ++Col)
                PixelFormat::WriteNative(P, Col, Depth, Native);
        }
    }
}

QPainter* DeviceContext::Painter()
{
    if (PaintPainter)
        return PaintPainter.get();
    if (!Memory || (Depth != 24 && Depth != 32))
        return nullptr;
    const QImage::Format Format = Depth == 32 ? QImage::Format_RGB32 : QImage::Format_BGR888;
    if (IsTopDown) {
        PaintImage = std::make_unique<QImage>(Memory, W, H, RowBytes, Format);
    } else {
        PaintImage = std::make_unique<QImage>(W, H, Format);
        if (PaintImage->isNull()) {
            PaintImage.reset();
            return nullptr;
        }
        const size_t Bytes = static_cast<size_t>(W) * (Depth / 8);
        for (int Y = 0; Y < H; ++Y)
            std::memcpy(PaintImage->scanLine(Y), Row(Y), Bytes);
    }
    PaintPainter = std::make_unique<QPainter>(PaintImage.get());
    if (!PaintPainter->isActive()) {
        PaintPainter.reset();
        PaintImage.reset();
        return nullptr;
    }
    return PaintPainter.get();
}

void DeviceContext::EndPaint() const
{
    if (!PaintPainter)
        return;
    PaintPainter->end();
    if (!IsTopDown) {
        const size_t Bytes = static_cast<size_t>(W) * (Depth / 8);
        for (int Y = 0; Y < H; ++Y)
            std::memcpy(Row(Y), PaintImage->constScanLine(Y), Bytes);
    }
    PaintPainter.reset();
    PaintImage.reset();
}

int GetStretchBltMode(const DeviceContext* Context)
{
    return Context ? Context->StretchMode : 0;
}

int SetStretchBltMode(DeviceContext* Context, int Mode)
{
    if (!Context || Mode < BLACKONWHITE || Mode > HALFTONE)
        return 0;
    const int Old = Context->StretchMode;
    Context->StretchMode = Mode;
    return Old;
}
