#include "basBrush.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <random>

#include "PixelArray32.h"
#include "basMath.h"
#include "clsDIB.h"

namespace {

// Sizes beyond this are taken as this: no picture is as large, and the squares of the offsets
// then stay far inside 64 bits wherever the point lies.
constexpr int MaxDabSize = 1 << 24;

// An inclusive box in image coordinates, 64-bit so that far points and huge sizes cannot overflow.
struct Box {
    int64_t Left, Top, Right, Bottom;

    bool ClipTo(const PixelArray32& Pixels)
    {
        Left = std::max<int64_t>(Left, 0);
        Top = std::max<int64_t>(Top, 0);
        Right = std::min<int64_t>(Right, Pixels.Width() - 1);
        Bottom = std::min<int64_t>(Bottom, Pixels.Height() - 1);
        return Left <= Right && Top <= Bottom;
    }
    QRect Rect() const
    {
        return QRect(QPoint(static_cast<int>(Left), static_cast<int>(Top)),
                     QPoint(static_cast<int>(Right), static_cast<int>(Bottom)));
    }
};

int64_t Radius(int Size)
{
    return Size <= 0 ? 0 : RoundHalfEven(std::min(Size, MaxDabSize) / 2.0);
}

int EdgeWidth(int Size)
{
    if (Size < 3)
        return 1;
    if (Size < 5)
        return 2;
    if (Size < 9)
        return 3;
    if (Size < 13)
        return 4;
    if (Size <= 16)
        return 5;
    return 6;
}

// Whole square root, rounded down.
int64_t FloorSqrt(int64_t Value)
{
    int64_t Root = static_cast<int64_t>(std::sqrt(static_cast<double>(Value)));
    while (Root * Root > Value)
        --Root;
    while ((Root + 1) * (Root + 1) <= Value)
        ++Root;
    return Root;
}

// Color * Percent / 100 + old * (100 - Percent) / 100 for blue, green and red, truncated.
class Blender {
public:
    Blender(uint32_t Color, int Percent)
        : B(ColorB(Color) * static_cast<uint32_t>(Percent)), G(ColorG(Color) * static_cast<uint32_t>(Percent)),
          R(ColorR(Color) * static_cast<uint32_t>(Percent)), Rest(100 - static_cast<uint32_t>(Percent))
    {
    }
    uint32_t operator()(uint32_t Old) const
    {
        const uint32_t NewB = (B + (Old & 0xFF) * Rest) / 100;
        const uint32_t NewG = (G + ((Old >> 8) & 0xFF) * Rest) / 100;
        const uint32_t NewR = (R + ((Old >> 16) & 0xFF) * Rest) / 100;
        return NewB | (NewG << 8) | (NewR << 16);
    }

private:
    uint32_t B, G, R, Rest;
};

// The same with a weight of 0 to 255 for the smoothed edge.
uint32_t BlendWeighted(uint32_t Old, uint32_t Color, uint32_t Weight)
{
    const uint32_t Rest = 255 - Weight;
    const uint32_t NewB = (ColorB(Color) * Weight + (Old & 0xFF) * Rest) / 255;
    const uint32_t NewG = (ColorG(Color) * Weight + ((Old >> 8) & 0xFF) * Rest) / 255;
    const uint32_t NewR = (ColorR(Color) * Weight + ((Old >> 16) & 0xFF) * Rest) / 255;
    return NewB | (NewG << 8) | (NewR << 16);
}

// Offsets I (from the point) of the pixels that row offset J of a style holds, as [First, Last];
// false when the row holds none.
bool RowOffsets(int Style, int64_t J, int64_t R, int64_t Low, int64_t High, int64_t& First, int64_t& Last)
{
    switch (Style) {
    case 1:
    case 6:
        if (J < -R || J > R)
            return false;
        Last = FloorSqrt(R * R - J * J);
        First = -Last;
        return true;
    case 2: // i + j across the bar
        First = Low - J;
        Last = High - J;
        return true;
    case 3: // i - j across the bar
        First = Low + J;
        Last = High + J;
        return true;
    case 4:
        if (J < Low || J > High)
            return false;
        First = INT64_MIN / 4;
        Last = INT64_MAX / 4;
        return true;
    default: // 5
        First = Low;
        Last = High;
        return true;
    }
}

// The smoothed disc's pixel at squared distance D2 from the point: full up to 0.8 r, then the
// weight (r - d) / (0.2 r) scaled to 0..255 and by the percentage.
void SmoothPixel(uint32_t& Pixel, int64_t D2, int64_t R, int Percent, uint32_t Word, const Blender& Blend,
                 uint32_t Color)
{
    if (25 * D2 <= 16 * R * R) {
        Pixel = Percent == 100 ? Word : Blend(Pixel);
        return;
    }
    if (D2 >= R * R)
        return;
    const double D = std::sqrt(static_cast<double>(D2));
    const double Weight = (R - D) / (0.2 * R) * (255.0 / 100.0) * Percent;
    const uint32_t Whole = static_cast<uint32_t>(std::clamp(Weight, 0.0, 255.0));
    if (Whole > 0)
        Pixel = BlendWeighted(Pixel, Color, Whole);
}

// A seed that differs for every dab, even for dabs within one clock tick.
std::seed_seq::result_type DeviceSeed()
{
    try {
        std::random_device Device;
        return Device();
    } catch (...) {
        return 0x9E3779B9u;
    }
}

std::mt19937 FreshRandomSource()
{
    static const std::seed_seq::result_type Base = DeviceSeed();
    static std::atomic<uint32_t> Counter{0};
    const auto Ticks = static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    std::seed_seq Seed{Base, ++Counter, static_cast<uint32_t>(Ticks), static_cast<uint32_t>(Ticks >> 32)};
    return std::mt19937(Seed);
}

} // namespace

namespace basBrush {

QRect BoxDab(clsDIB& Dib, int X, int Y, int Size, uint32_t Color)
{
    PixelArray32 Pixels(Dib);
    if (!Pixels.Valid() || Size <= 0)
        return {};
    Box Area{int64_t(X) - Size / 2, int64_t(Y) - Size / 2, 0, 0};
    Area.Right = Area.Left + Size - 1;
    Area.Bottom = Area.Top + Size - 1;
    if (!Area.ClipTo(Pixels))
        return {};
    const uint32_t Word = PixelArray32::ToWord(Color);
    for (int64_t Y1 = Area.Top; Y1 <= Area.Bottom; ++Y1) {
        uint32_t* Row = Pixels.Row(static_cast<int>(Y1));
        std::fill(Row + Area.Left, Row + Area.Right + 1, Word);
    }
    return Area.Rect();
}

QRect PaintBrushDab(clsDIB& Dib, int X, int Y, int Size, int Percent, int Style, uint32_t Color, int SprayDensity)
{
    if (Style == 7)
        return SprayDab(Dib, X, Y, Size, SprayDensity, Percent, Color);
    PixelArray32 Pixels(Dib);
    const int Pct = std::clamp(Percent, 0, 100);
    if (!Pixels.Valid() || Style < 1 || Style > 6 || Pct == 0)
        return {};
    const int64_t R = Radius(Size);
    const int E = EdgeWidth(Size);
    const int64_t Low = -(E / 2), High = Low + E - 1;
    // Half extents of the box: the bars of 3, 4 and 5 reach one pixel further along themselves.
    const int64_t HalfX = (Style == 3 || Style == 4 || Style == 6) ? R + 1 : R;
    const int64_t HalfY = (Style == 3 || Style == 5 || Style == 6) ? R + 1 : R;
    Box Area{X - HalfX, Y - HalfY, X + HalfX, Y + HalfY};
    if (!Area.ClipTo(Pixels))
        return {};
    const uint32_t Word = PixelArray32::ToWord(Color);
    const Blender Blend(Color, Pct);
    for (int64_t Y1 = Area.Top; Y1 <= Area.Bottom; ++Y1) {
        const int64_t J = Y1 - Y;
        int64_t First = 0, Last = 0;
        if (!RowOffsets(Style, J, R, Low, High, First, Last))
            continue;
        const int64_t Left = std::max(Area.Left, X + First), Right = std::min(Area.Right, X + Last);
        if (Left > Right)
            continue;
        uint32_t* Row = Pixels.Row(static_cast<int>(Y1));
        if (Style == 6) {
            for (int64_t X1 = Left; X1 <= Right; ++X1)
                SmoothPixel(Row[X1], (X1 - X) * (X1 - X) + J * J, R, Pct, Word, Blend, Color);
        } else if (Pct == 100) {
            std::fill(Row + Left, Row + Right + 1, Word);
        } else {
            for (int64_t X1 = Left; X1 <= Right; ++X1)
                Row[X1] = Blend(Row[X1]);
        }
    }
    return Area.Rect();
}

QRect SprayDab(clsDIB& Dib, int X, int Y, int Size, int Density, int Percent, uint32_t Color)
{
    PixelArray32 Pixels(Dib);
    const int Pct = std::clamp(Percent, 0, 100);
    if (!Pixels.Valid() || Pct == 0)
        return {};
    const int64_t R = Radius(Size);
    // The offsets run from -r to r - 1.
    Box Area{X - R, Y - R, X + R - 1, Y + R - 1};
    if (!Area.ClipTo(Pixels))
        return {};
    const double Threshold = Density == 0 ? 0.8 : Density == 1 ? 0.6 : 0.4;
    std::mt19937 Random = FreshRandomSource();
    auto Draw = [&Random] { return Random() * (1.0 / 4294967296.0); };
    const uint32_t Word = PixelArray32::ToWord(Color);
    const Blender Blend(Color, Pct);
    int64_t MinX = INT64_MAX, MaxX = INT64_MIN, MinY = INT64_MAX, MaxY = INT64_MIN;
    for (int64_t Y1 = Area.Top; Y1 <= Area.Bottom; ++Y1) {
        const int64_t J = Y1 - Y;
        uint32_t* Row = Pixels.Row(static_cast<int>(Y1));
        for (int64_t X1 = Area.Left; X1 <= Area.Right; ++X1) {
            const int64_t I = X1 - X;
            if (I * I + J * J > R * R - 1)
                continue;
            const double First = Draw();
            const double Second = Draw();
            if (First <= Threshold || Second <= Threshold)
                continue;
            Row[X1] = Pct == 100 ? Word : Blend(Row[X1]);
            MinX = std::min(MinX, X1);
            MaxX = std::max(MaxX, X1);
            MinY = std::min(MinY, Y1);
            MaxY = std::max(MaxY, Y1);
        }
    }
    if (MinX > MaxX)
        return {};
    return Box{MinX, MinY, MaxX, MaxY}.Rect();
}

QRect CustomBrushDab(clsDIB& Dib, clsDIB& Brush, clsDIB& Mask, int X, int Y)
{
    PixelArray32 Pixels(Dib);
    DeviceContext* BrushDC = Brush.DIBhDC();
    DeviceContext* MaskDC = Mask.DIBhDC();
    if (!Pixels.Valid() || !BrushDC || !MaskDC || !BrushDC->Bits() || !MaskDC->Bits())
        return {};
    const int W = BrushDC->Width(), H = BrushDC->Height();
    if (W < 1 || H < 1 || MaskDC->Width() != W || MaskDC->Height() != H)
        return {};
    Box Area{int64_t(X) - W / 2, int64_t(Y) - H / 2, 0, 0};
    Area.Right = Area.Left + W - 1;
    Area.Bottom = Area.Top + H - 1;
    const int64_t Left = Area.Left, Top = Area.Top;
    if (!Area.ClipTo(Pixels))
        return {};
    // The box meets the picture, so its corner is within a brush's size of it and fits an int.
    BitBlt(Dib.DIBhDC(), static_cast<int>(Left), static_cast<int>(Top), W, H, MaskDC, 0, 0, SRCAND);
    BitBlt(Dib.DIBhDC(), static_cast<int>(Left), static_cast<int>(Top), W, H, BrushDC, 0, 0, SRCPAINT);
    return Area.Rect();
}

bool CustomDabDue(int LastX, int LastY, int X, int Y, int BrushWidth)
{
    const double DX = static_cast<double>(X) - LastX, DY = static_cast<double>(Y) - LastY;
    return std::sqrt(DX * DX + DY * DY) >= BrushWidth;
}

bool MakeCustomBrushMask(clsDIB& Brush, clsDIB& Mask, int CustomBrushShape)
{
    if (&Brush == &Mask)
        return false;
    PixelArray32 Image(Brush);
    if (!Image.Valid())
        return false;
    const int W = Image.Width(), H = Image.Height();
    if (!Mask.CreateBlankDIB(W, H, 32, 0, true))
        return false;
    if (CustomBrushShape != 0)
        return true;
    PixelArray32 Cover(Mask);
    // A pixel is inside when its centre lies in the ellipse: with centre offsets doubled to stay
    // whole, (2x + 1 - W)^2 / W^2 + (2y + 1 - H)^2 / H^2 <= 1. Sides of at most 32767 keep
    // these products within 64 bits.
    const int64_t W2 = int64_t(W) * W, H2 = int64_t(H) * H;
    for (int Y = 0; Y < H; ++Y) {
        const int64_t DY = 2 * int64_t(Y) + 1 - H;
        uint32_t* ImageRow = Image.Row(Y);
        uint32_t* CoverRow = Cover.Row(Y);
        for (int X = 0; X < W; ++X) {
            const int64_t DX = 2 * int64_t(X) + 1 - W;
            if (DX * DX * H2 + DY * DY * W2 > W2 * H2) {
                ImageRow[X] = 0;
                CoverRow[X] = 0xFFFFFFFF;
            }
        }
    }
    return true;
}

} // namespace basBrush
