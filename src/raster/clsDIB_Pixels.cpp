// The pixel routines. They work on 32-bit memory through row pointers, the row of storage
// row r lying at r * width * 4; surfaces of other depths are left alone.
#include <array>
#include <cstdlib>
#include <memory>
#include <cmath>
#include <cstring>

#include "basMath.h"
#include "clsDIB.h"

namespace {

inline uint8_t* Pixel(uint8_t* Bits, int Width, int Row, int X)
{
    return Bits + (static_cast<size_t>(Row) * Width + X) * 4;
}

// The blend of two bytes with fixed weights, worked out once per call for every pair of
// bytes with exactly the arithmetic of the pixel loop.
using BlendTable = std::array<uint8_t, 65536>;

void MakeBlendTable(BlendTable& Table, int32_t Percent)
{
    const float A = static_cast<float>(Percent) / 100.0f;
    const float B = 1.0f - A;
    for (int Target = 0; Target < 256; ++Target)
        for (int Source = 0; Source < 256; ++Source) {
            const float Value = B * static_cast<float>(Target) + A * static_cast<float>(Source);
            Table[static_cast<size_t>(Target) * 256 + Source] =
                static_cast<uint8_t>(std::clamp(RoundHalfEven(Value), 0, 255));
        }
}

inline void BlendPixel(const BlendTable& Table, uint8_t* T, const uint8_t* S)
{
    T[0] = Table[static_cast<size_t>(T[0]) * 256 + S[0]];
    T[1] = Table[static_cast<size_t>(T[1]) * 256 + S[1]];
    T[2] = Table[static_cast<size_t>(T[2]) * 256 + S[2]];
}

} // namespace

void clsDIB::Post_Icon_Arrays_To_DIB(clsDIB& Target, const Array2D<uint32_t>& Colors, const Array2D<uint8_t>& Mask,
                                     const Array2D<uint8_t>& Alpha)
{
    const int W = Target.Width, H = Target.Height;
    if (!Target.Bits || Target.StorageBpp() != 32 || Colors.Width() < W || Colors.Height() < H ||
        Mask.Width() < W || Mask.Height() < H || Alpha.Width() < W || Alpha.Height() < H)
        return;
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X) {
            uint8_t* P = Pixel(Target.Bits, W, H - 1 - Y, X);
            if (Mask(X, Y) == 0) {
                const uint32_t C = Colors(X, Y);
                P[0] = ColorB(C);
                P[1] = ColorG(C);
                P[2] = ColorR(C);
                P[3] = Alpha(X, Y);
            } else {
                std::memset(P, 255, 4);
            }
        }
}

void clsDIB::Fill_DIB_With_AlphaValues(clsDIB& Target, const DeviceContext* MaskDC, const Array2D<uint8_t>& Alpha)
{
    const int W = Target.Width, H = Target.Height;
    if (!Target.Bits || !MaskDC || Target.StorageBpp() != 32 || Alpha.Width() < W || Alpha.Height() < H)
        return;
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X) {
            uint8_t* P = Pixel(Target.Bits, W, H - 1 - Y, X);
            if (MaskDC->GetPixel(X, Y) == 0)
                P[3] = Alpha(X, Y);
            else
                std::memset(P, 255, 4);
        }
}

void clsDIB::Display_DIB_With_Alpha(clsDIB& Source, DeviceContext* TargetDC, uint32_t Back, bool Flip)
{
    if (!Source.Context || !TargetDC)
        return;
    clsDIB Temp;
    if (!Temp.CreateBlankDIB(Source.Width, Source.Height, 32, 0xFFFFFF, false, true))
        return;
    PaintFromDIBtoDIB(Source, Temp, 0, 0, Source.Width, Source.Height);
    const int16_t BackR = ColorR(Back), BackG = ColorG(Back), BackB = ColorB(Back);
    if (Source.HasAlpha) {
        const size_t Count = static_cast<size_t>(Temp.Width) * Temp.Height;
        for (size_t I = 0; I < Count; ++I) {
            uint8_t* P = Temp.Bits + I * 4;
            // A whole percentage, then each channel, as 16-bit integers.
            const auto Percent = static_cast<int16_t>(std::floor(static_cast<double>(P[3]) / 255.0 * 100.0));
            const auto Rest = static_cast<int16_t>(100 - Percent);
            P[0] = static_cast<uint8_t>((Rest * BackB + Percent * P[0]) / 100);
            P[1] = static_cast<uint8_t>((Rest * BackG + Percent * P[1]) / 100);
            P[2] = static_cast<uint8_t>((Rest * BackR + Percent * P[2]) / 100);
        }
    }
    if (!Flip)
        BitBlt(TargetDC, 0, 0, Temp.Width, Temp.Height, Temp.Context.get(), 0, 0, SRCCOPY);
    else
        StretchBlt(TargetDC, 0, Temp.Height - 1, Temp.Width, -Temp.Height, Temp.Context.get(), 0, 0, Temp.Width,
                   Temp.Height, SRCCOPY);
}

void clsDIB::StretchPaintFromDIBtoDIB_Antialias_NativeDB(clsDIB& Source, clsDIB& Target)
{
    if (!Source.Bits || !Target.Bits || Source.StorageBpp() != 32 || Target.StorageBpp() != 32)
        return;
    const int SrcW = Source.Width, SrcH = Source.Height;
    const int DstW = Target.Width, DstH = Target.Height;
    // The minus one stands in the numerator only.
    const float RatioX = static_cast<float>(SrcW - 1) / static_cast<float>(DstW);
    const float RatioY = static_cast<float>(SrcH - 1) / static_cast<float>(DstH);
    auto Round = [](float Value) { return static_cast<float>(RoundHalfEven(Value)); };
    for (int Y = 0; Y < DstH; ++Y) {
        const float SY = RatioY * static_cast<float>(Y);
        const int IY = static_cast<int>(std::floor(SY));
        const float FY = SY - static_cast<float>(IY);
        const int DY = (IY + 1 < SrcH - 1) ? 1 : 0;
        uint8_t* Out = Pixel(Target.Bits, DstW, Y, 0);
        for (int X = 0; X < DstW; ++X, Out += 4) {
            const float SX = RatioX * static_cast<float>(X);
            const int IX = static_cast<int>(std::floor(SX));
            const float FX = SX - static_cast<float>(IX);
            const int DX = (IX + 1 < SrcW - 1) ? 1 : 0;
            const uint8_t* P00 = Pixel(Source.Bits, SrcW, IY, IX);
            const uint8_t* P10 = Pixel(Source.Bits, SrcW, IY, IX + DX);
            const uint8_t* P01 = Pixel(Source.Bits, SrcW, IY + DY, IX);
            // The diagonal sample falls back to the pixel itself unless both neighbours exist.
            const uint8_t* P11 = (DX && DY) ? Pixel(Source.Bits, SrcW, IY + 1, IX + 1) : P00;
            for (int C = 0; C < 3; ++C) {
                const float Top = Round((1.0f - FX) * P00[C] + FX * P10[C]);
                const float Bottom = Round((1.0f - FX) * P01[C] + FX * P11[C]);
                const int Value = RoundHalfEven((1.0f - FY) * Top + FY * Bottom);
                Out[C] = static_cast<uint8_t>(std::clamp(Value, 0, 255));
            }
        }
    }
}

void clsDIB::RotateDIB(clsDIB& Dib, int16_t Mode)
{
    if (Mode < 0 || Mode >= 4 || !Dib.Context)
        return;
    const int W = Dib.Width, H = Dib.Height;
    if (Mode == 0) {
        StretchBlt(Dib.Context.get(), W - 1, 0, -W, H, Dib.Context.get(), 0, 0, W, H, SRCCOPY);
        return;
    }
    if (Mode == 1) {
        StretchBlt(Dib.Context.get(), 0, H - 1, W, -H, Dib.Context.get(), 0, 0, W, H, SRCCOPY);
        return;
    }
    // The old pixels as 32-bit memory: the surface's own when it already is, else a copy.
    const bool TopDown = Dib.Context->TopDown();
    clsDIB Copy;
    if (Dib.StorageBpp() != 32) {
        if (!Copy.CreateBlankDIB(W, H, 32, 0xFFFFFF, TopDown, true))
            return;
        PaintFromDIBtoDIB(Dib, Copy, 0, 0, W, H);
    }
    const PixelMemory Old = Dib.StorageBpp() == 32 ? Dib.TakeBits() : Copy.TakeBits();
    // Every pixel is written below, so the white back colour need not be painted first.
    if (!Dib.Create(H, W, 32, 0xFFFFFF, TopDown, true, false))
        return;
    // Moves in picture coordinates, so that a top-down surface turns the same way as a
    // bottom-up one: clockwise, new (x, y) is old (y, H - 1 - x); counter-clockwise, new
    // (x, y) is old (W - 1 - y, x). Rows are walked in tiles that stay in the cache.
    const auto* OldRow0 = reinterpret_cast<const uint32_t*>(Old.Data()) + (TopDown ? 0 : static_cast<ptrdiff_t>(H - 1) * W);
    const ptrdiff_t OldStep = TopDown ? W : -static_cast<ptrdiff_t>(W);
    auto* NewRow0 = reinterpret_cast<uint32_t*>(Dib.Bits) + (TopDown ? 0 : static_cast<ptrdiff_t>(W - 1) * H);
    const ptrdiff_t NewStep = TopDown ? H : -static_cast<ptrdiff_t>(H);
    constexpr int Tile = 32;
    for (int TileY = 0; TileY < W; TileY += Tile)
        for (int TileX = 0; TileX < H; TileX += Tile) {
            const int EndY = std::min(TileY + Tile, W), EndX = std::min(TileX + Tile, H);
            for (int NewY = TileY; NewY < EndY; ++NewY) {
                uint32_t* Out = NewRow0 + NewY * NewStep;
                if (Mode == 3) {
                    const uint32_t* In = OldRow0 + (H - 1) * OldStep + NewY;
                    for (int NewX = TileX; NewX < EndX; ++NewX)
                        Out[NewX] = In[-NewX * OldStep];
                } else {
                    const uint32_t* In = OldRow0 + (W - 1 - NewY);
                    for (int NewX = TileX; NewX < EndX; ++NewX)
                        Out[NewX] = In[NewX * OldStep];
                }
            }
        }
}

void clsDIB::BlendIn(clsDIB& Target, clsDIB& Source, int32_t Percent, int32_t ExcludeColor)
{
    if (!Target.Bits || !Source.Bits || Target.StorageBpp() != 32 || Source.StorageBpp() != 32)
        return;
    static BlendTable Table;
    MakeBlendTable(Table, Percent);
    const bool Exclude = ExcludeColor >= 0;
    const auto ExR = ColorR(static_cast<uint32_t>(ExcludeColor)), ExG = ColorG(static_cast<uint32_t>(ExcludeColor)),
               ExB = ColorB(static_cast<uint32_t>(ExcludeColor));
    const int Rows = std::min(Target.Height, Source.Height);
    const int Columns = std::min(Target.Width, Source.Width);
    for (int Y = 0; Y < Target.Height; ++Y) {
        if (Y < Rows) {
            uint8_t* T = Pixel(Target.Bits, Target.Width, Y, 0);
            const uint8_t* S = Pixel(Source.Bits, Source.Width, Y, 0);
            for (int X = 0; X < Columns; ++X, T += 4, S += 4) {
                if (Exclude && S[0] == ExB && S[1] == ExG && S[2] == ExR)
                    continue;
                BlendPixel(Table, T, S);
            }
        }
        if (Progress)
            Progress(static_cast<int32_t>(static_cast<int64_t>(Y + 1) * 100 / Target.Height));
    }
    if (ProgressEnd)
        ProgressEnd();
}

void clsDIB::BlendIn_Masked(clsDIB& Target, clsDIB& Source, clsDIB& Mask, int32_t Percent)
{
    if (!Target.Bits || !Source.Bits || !Mask.Bits || Target.StorageBpp() != 32 || Source.StorageBpp() != 32 ||
        Mask.StorageBpp() != 32)
        return;
    if (Target.Width != Source.Width || Target.Width != Mask.Width || Target.Height != Source.Height ||
        Target.Height != Mask.Height)
        return;
    static BlendTable Table;
    MakeBlendTable(Table, Percent);
    const size_t RowPixels = static_cast<size_t>(Target.Width);
    for (int Y = 0; Y < Target.Height; ++Y) {
        uint8_t* T = Pixel(Target.Bits, Target.Width, Y, 0);
        const uint8_t* S = Pixel(Source.Bits, Source.Width, Y, 0);
        const uint8_t* M = Pixel(Mask.Bits, Mask.Width, Y, 0);
        for (size_t X = 0; X < RowPixels; ++X, T += 4, S += 4, M += 4) {
            // Black image over white mask: the transparent part of an image and mask pair.
            if (S[0] == 0 && S[1] == 0 && S[2] == 0 && M[0] == 255 && M[1] == 255 && M[2] == 255)
                continue;
            BlendPixel(Table, T, S);
        }
        if (Progress)
            Progress(static_cast<int32_t>(static_cast<int64_t>(Y + 1) * 100 / Target.Height));
    }
    if (ProgressEnd)
        ProgressEnd();
}

void clsDIB::CreateMask_viaDC(clsDIB& Dib)
{
    if (!Dib.Context)
        return;
    clsDIB Temp;
    if (!Temp.CreateBlankDIB(Dib.Width, Dib.Height, 32, 0xFFFFFF, false, true))
        return;
    PaintFromDIBtoDIB(Dib, Temp, 0, 0, Dib.Width, Dib.Height);
    // Through one bit a pixel: the background colour (white) gives 1, all else 0; back in
    // colour, 1 is white and 0 black.
    const size_t Count = static_cast<size_t>(Temp.Width) * Temp.Height;
    for (size_t I = 0; I < Count; ++I) {
        uint32_t* P = reinterpret_cast<uint32_t*>(Temp.Bits) + I;
        *P = (*P & 0xFFFFFF) == 0xFFFFFF ? 0xFFFFFF : 0;
    }
    BitBlt(Dib.Context.get(), 0, 0, Dib.Width, Dib.Height, Temp.Context.get(), 0, 0, SRCCOPY);
}

void clsDIB::Create_ImageMask_Pair(clsDIB& Image, clsDIB& Mask, int32_t TransparentColor)
{
    if (!Image.Bits || Image.StorageBpp() != 32)
        return;
    if (!Mask.Bits || Mask.Width != Image.Width || Mask.Height != Image.Height)
        if (!Mask.CreateBlankDIB(Image.Width, Image.Height, 32, 0xFFFFFF, false, true))
            return;
    if (Mask.StorageBpp() != 32)
        return;
    uint8_t R, G, B;
    if (TransparentColor >= 0) {
        R = ColorR(static_cast<uint32_t>(TransparentColor));
        G = ColorG(static_cast<uint32_t>(TransparentColor));
        B = ColorB(static_cast<uint32_t>(TransparentColor));
    } else {
        const uint8_t* P = Pixel(Image.Bits, Image.Width, Image.Height - 1, 0);
        B = P[0];
        G = P[1];
        R = P[2];
    }
    const size_t Count = static_cast<size_t>(Image.Width) * Image.Height;
    for (size_t I = 0; I < Count; ++I) {
        uint8_t* P = Image.Bits + I * 4;
        uint8_t* M = Mask.Bits + I * 4;
        if (P[0] == B && P[1] == G && P[2] == R) {
            M[0] = M[1] = M[2] = 255;
            P[0] = P[1] = P[2] = 0;
        } else {
            M[0] = M[1] = M[2] = 0;
        }
    }
}

void clsDIB::DIBNetPaintedArea(clsDIB& Dib, int32_t& Left, int32_t& Top, int32_t& Right, int32_t& Bottom,
                               uint32_t Back)
{
    Left = Dib.Width - 1;
    Top = Dib.Height - 1;
    Right = 0;
    Bottom = 0;
    if (!Dib.Bits || Dib.StorageBpp() != 32)
        return;
    const uint32_t BackQuad = QuadFromColor(Back & 0xFFFFFF);
    for (int Y = 0; Y < Dib.Height; ++Y) {
        const uint32_t* Row = reinterpret_cast<const uint32_t*>(Pixel(Dib.Bits, Dib.Width, Y, 0));
        for (int X = 0; X < Dib.Width; ++X) {
            if ((Row[X] & 0xFFFFFF) == BackQuad)
                continue;
            Left = std::min(Left, X);
            Right = std::max(Right, X);
            Top = std::min(Top, Y);
            Bottom = std::max(Bottom, Y);
        }
    }
}
