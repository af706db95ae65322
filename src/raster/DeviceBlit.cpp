// The program's own BitBlt and StretchBlt over device contexts: exact byte loops, with
// block copies where source and target store pixels alike.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <unordered_map>
#include <vector>

#include "DeviceContext.h"
#include "PixelFormat.h"
#include "basMath.h"

namespace {

// Turns source pixels into the target's native values.
class Converter {
public:
    Converter(const DeviceContext& Source, const DeviceContext& Target) : Src(Source), Dst(Target)
    {
        SameIndexes = Src.Bpp() <= 8 && Src.Bpp() == Dst.Bpp() && Src.ColorCount() == Dst.ColorCount() &&
                      std::equal(Src.ColorTable(), Src.ColorTable() + Src.ColorCount(), Dst.ColorTable());
        Raw = SameIndexes || (Src.Bpp() > 8 && Src.Bpp() == Dst.Bpp());
    }

    bool IsRaw() const { return Raw; }

    uint32_t SourceQuad(uint32_t Native) const
    {
        const int Bpp = Src.Bpp();
        if (Bpp <= 8)
            return static_cast<int>(Native) < Src.ColorCount() ? (Src.ColorTable()[Native] & 0xFFFFFF) : 0;
        if (Bpp == 16)
            return PixelFormat::QuadFrom555(Native);
        if (Bpp == 24)
            return Native & 0xFFFFFF;
        return Native;
    }

    uint32_t TargetNative(uint32_t Quad)
    {
        const int Bpp = Dst.Bpp();
        if (Bpp == 32)
            return Quad;
        if (Bpp == 24)
            return Quad & 0xFFFFFF;
        if (Bpp == 16)
            return PixelFormat::QuadTo555(Quad);
        const uint32_t Key = Quad & 0xFFFFFF;
        auto Found = Nearest.find(Key);
        if (Found != Nearest.end())
            return Found->second;
        const uint32_t Index = static_cast<uint32_t>(Dst.NearestIndex(ColorFromQuad(Key)));
        Nearest.emplace(Key, Index);
        return Index;
    }

    uint32_t Convert(uint32_t SourceNative)
    {
        return Raw ? SourceNative : TargetNative(SourceQuad(SourceNative));
    }

private:
    const DeviceContext& Src;
    const DeviceContext& Dst;
    bool SameIndexes = false;
    bool Raw = false;
    std::unordered_map<uint32_t, uint32_t> Nearest;
};

inline uint32_t Combine(uint32_t Rop, uint32_t Target, uint32_t Source)
{
    switch (Rop) {
    case SRCAND: return Target & Source;
    case SRCPAINT: return Target | Source;
    case SRCINVERT: return Target ^ Source;
    default: return Source;
    }
}

bool KnownRop(uint32_t Rop)
{
    return Rop == SRCCOPY || Rop == SRCAND || Rop == SRCPAINT || Rop == SRCINVERT;
}

// A copy of a source context's pixels, so that a context can be blitted onto itself.
struct Snapshot {
    std::vector<uint8_t> Bytes;
    std::unique_ptr<DeviceContext> Context;
    explicit Snapshot(const DeviceContext& Source)
        : Bytes(Source.Bits(), Source.Bits() + static_cast<size_t>(Source.Stride()) * Source.Height())
    {
        Context = std::make_unique<DeviceContext>(Bytes.data(), Source.Width(), Source.Height(), Source.Bpp(),
                                                  Source.Stride(), Source.TopDown(), Source.ColorTable(),
                                                  Source.ColorCount());
    }
};

// Writes a row of target-native values at (X, Y) with the raster operation.
void PutRow(const DeviceContext& Target, int X, int Y, const uint32_t* Values, int Count, uint32_t Rop)
{
    uint8_t* Row = Target.Row(Y);
    const int Bpp = Target.Bpp();
    if (Bpp == 32) {
        uint32_t* P = reinterpret_cast<uint32_t*>(Row) + X;
        if (Rop == SRCCOPY)
            std::memcpy(P, Values, static_cast<size_t>(Count) * 4);
        else
            for (int I = 0; I < Count; ++I)
                P[I] = Combine(Rop, P[I], Values[I]);
        return;
    }
    for (int I = 0; I < Count; ++I) {
        uint32_t V = Values[I];
        if (Rop != SRCCOPY)
            V = Combine(Rop, PixelFormat::ReadNative(Row, X + I, Bpp), V);
        PixelFormat::WriteNative(Row, X + I, Bpp, V);
    }
}

// Clips a copy of Width x Height from (SrcX, SrcY) to (X, Y) to both surfaces along one axis.
bool ClipAxis(int& X, int& SrcX, int& Extent, int TargetSize, int SourceSize)
{
    if (X < 0) {
        SrcX -= X;
        Extent += X;
        X = 0;
    }
    if (SrcX < 0) {
        X -= SrcX;
        Extent += SrcX;
        SrcX = 0;
    }
    Extent = std::min({Extent, TargetSize - X, SourceSize - SrcX});
    return Extent > 0;
}

} // namespace

bool BitBlt(DeviceContext* Target, int X, int Y, int Width, int Height, const DeviceContext* Source, int SrcX,
            int SrcY, uint32_t Rop)
{
    if (!Target || !Source || !Target->Bits() || !Source->Bits() || !KnownRop(Rop))
        return false;
    Target->EndPaint();
    Source->EndPaint();
    if (!ClipAxis(X, SrcX, Width, Target->Width(), Source->Width()) ||
        !ClipAxis(Y, SrcY, Height, Target->Height(), Source->Height()))
        return true;
    std::unique_ptr<Snapshot> Copy;
    if (Source == Target || Source->Bits() == Target->Bits()) {
        Copy = std::make_unique<Snapshot>(*Source);
        Source = Copy->Context.get();
    }
    Converter Convert(*Source, *Target);
    const int Bpp = Target->Bpp();
    // Block copies where both store pixels alike and whole bytes are moved.
    if (Convert.IsRaw() && Rop == SRCCOPY && Bpp >= 8) {
        const size_t Bytes = static_cast<size_t>(Width) * (Bpp / 8);
        for (int Line = 0; Line < Height; ++Line)
            std::memcpy(Target->Row(Y + Line) + static_cast<size_t>(X) * (Bpp / 8),
                        Source->Row(SrcY + Line) + static_cast<size_t>(SrcX) * (Bpp / 8), Bytes);
        return true;
    }
    const int SrcBpp = Source->Bpp();
    // 32 to 24 bits, the road of every 24-bit BMP written: drop the fourth byte.
    if (SrcBpp == 32 && Bpp == 24 && Rop == SRCCOPY) {
        for (int Line = 0; Line < Height; ++Line) {
            const uint8_t* From = Source->Row(SrcY + Line) + static_cast<size_t>(SrcX) * 4;
            uint8_t* To = Target->Row(Y + Line) + static_cast<size_t>(X) * 3;
            for (int I = 0; I < Width; ++I, From += 4, To += 3) {
                To[0] = From[0];
                To[1] = From[1];
                To[2] = From[2];
            }
        }
        return true;
    }
    std::vector<uint32_t> Values(static_cast<size_t>(Width));
    for (int Line = 0; Line < Height; ++Line) {
        const uint8_t* From = Source->Row(SrcY + Line);
        if (SrcBpp == 32 && Convert.IsRaw())
            std::memcpy(Values.data(), From + static_cast<size_t>(SrcX) * 4, Values.size() * 4);
        else
            for (int I = 0; I < Width; ++I)
                Values[I] = Convert.Convert(PixelFormat::ReadNative(From, SrcX + I, SrcBpp));
        PutRow(*Target, X, Y + Line, Values.data(), Width, Rop);
    }
    return true;
}

namespace {

// The contributions of source pixels to one target pixel along an axis.
struct Tap {
    int Index;
    float Weight;
};

// Area averaging when shrinking, bilinear interpolation between pixel centres when enlarging.
std::vector<std::vector<Tap>> HalftoneTaps(int TargetSize, int SourceSize, bool Flip)
{
    std::vector<std::vector<Tap>> Taps(static_cast<size_t>(TargetSize));
    const double Scale = static_cast<double>(SourceSize) / TargetSize;
    for (int I = 0; I < TargetSize; ++I) {
        const int J = Flip ? TargetSize - 1 - I : I;
        std::vector<Tap>& List = Taps[static_cast<size_t>(I)];
        if (TargetSize >= SourceSize) {
            const double Pos = std::clamp((J + 0.5) * Scale - 0.5, 0.0, SourceSize - 1.0);
            const int I0 = static_cast<int>(std::floor(Pos));
            const int I1 = std::min(I0 + 1, SourceSize - 1);
            const float F = static_cast<float>(Pos - I0);
            List.push_back({I0, 1.0f - F});
            if (I1 != I0 && F > 0)
                List.push_back({I1, F});
        } else {
            const double Start = J * Scale, End = (J + 1) * Scale;
            for (int K = static_cast<int>(std::floor(Start)); K < End && K < SourceSize; ++K) {
                const double Covered = std::min<double>(K + 1, End) - std::max<double>(K, Start);
                if (Covered > 0)
                    List.push_back({K, static_cast<float>(Covered / Scale)});
            }
        }
    }
    return Taps;
}

} // namespace

bool StretchBlt(DeviceContext* Target, int X, int Y, int Width, int Height, const DeviceContext* Source, int SrcX,
                int SrcY, int SrcWidth, int SrcHeight, uint32_t Rop)
{
    if (!Target || !Source || !Target->Bits() || !Source->Bits() || !KnownRop(Rop))
        return false;
    Target->EndPaint();
    Source->EndPaint();
    if (Width == 0 || Height == 0 || SrcWidth == 0 || SrcHeight == 0)
        return false;
    // A negative extent runs from its origin (inclusive) towards smaller coordinates.
    bool FlipX = false, FlipY = false;
    if (Width < 0) {
        X += Width + 1;
        Width = -Width;
        FlipX = !FlipX;
    }
    if (Height < 0) {
        Y += Height + 1;
        Height = -Height;
        FlipY = !FlipY;
    }
    if (SrcWidth < 0) {
        SrcX += SrcWidth + 1;
        SrcWidth = -SrcWidth;
        FlipX = !FlipX;
    }
    if (SrcHeight < 0) {
        SrcY += SrcHeight + 1;
        SrcHeight = -SrcHeight;
        FlipY = !FlipY;
    }
    if (!FlipX && !FlipY && Width == SrcWidth && Height == SrcHeight)
        return BitBlt(Target, X, Y, Width, Height, Source, SrcX, SrcY, Rop);

    std::unique_ptr<Snapshot> Copy;
    if (Source == Target || Source->Bits() == Target->Bits()) {
        Copy = std::make_unique<Snapshot>(*Source);
        Source = Copy->Context.get();
    }
    Converter Convert(*Source, *Target);
    const int SrcBpp = Source->Bpp();

    // The target columns inside the target, and their source columns.
    const int Left = std::max(X, 0), Right = std::min(X + Width, Target->Width());
    const int Top = std::max(Y, 0), Bottom = std::min(Y + Height, Target->Height());
    if (Left >= Right || Top >= Bottom)
        return true;
    std::vector<uint32_t> Values(static_cast<size_t>(Right - Left));

    if (Target->StretchMode != HALFTONE) {
        auto Nearest = [](int I, int Extent, int SrcExtent, bool Flip) {
            const int J = Flip ? Extent - 1 - I : I;
            return static_cast<int>((static_cast<int64_t>(2 * J + 1) * SrcExtent) / (2 * static_cast<int64_t>(Extent)));
        };
        std::vector<int> Columns(static_cast<size_t>(Right - Left));
        for (int Col = Left; Col < Right; ++Col)
            Columns[static_cast<size_t>(Col - Left)] = SrcX + Nearest(Col - X, Width, SrcWidth, FlipX);
        for (int Line = Top; Line < Bottom; ++Line) {
            const int SrcLine = SrcY + Nearest(Line - Y, Height, SrcHeight, FlipY);
            if (SrcLine < 0 || SrcLine >= Source->Height())
                continue;
            const uint8_t* From = Source->Row(SrcLine);
            // Pixels whose source lies outside the source are left alone: write runs.
            int Run = 0;
            for (int I = 0; I <= Right - Left; ++I) {
                const bool Inside = I < Right - Left && Columns[static_cast<size_t>(I)] >= 0 &&
                                    Columns[static_cast<size_t>(I)] < Source->Width();
                if (Inside) {
                    Values[static_cast<size_t>(I)] =
                        Convert.Convert(PixelFormat::ReadNative(From, Columns[static_cast<size_t>(I)], SrcBpp));
                    continue;
                }
                if (I > Run)
                    PutRow(*Target, Left + Run, Line, Values.data() + Run, I - Run, Rop);
                Run = I + 1;
            }
        }
        return true;
    }

    // HALFTONE: weights over the part of the source rectangle that lies inside the source.
    const int SrcLeft = std::max(SrcX, 0), SrcRight = std::min(SrcX + SrcWidth, Source->Width());
    const int SrcTop = std::max(SrcY, 0), SrcBottom = std::min(SrcY + SrcHeight, Source->Height());
    if (SrcLeft >= SrcRight || SrcTop >= SrcBottom)
        return true;
    const auto ColumnTaps = HalftoneTaps(Width, SrcWidth, FlipX);
    const auto RowTaps = HalftoneTaps(Height, SrcHeight, FlipY);
    // Source rows as quads, made once each.
    const int SpanWidth = SrcRight - SrcLeft;
    std::vector<uint32_t> Quads(static_cast<size_t>(SpanWidth) * (SrcBottom - SrcTop));
    for (int Line = SrcTop; Line < SrcBottom; ++Line) {
        const uint8_t* From = Source->Row(Line);
        uint32_t* To = Quads.data() + static_cast<size_t>(Line - SrcTop) * SpanWidth;
        for (int Col = SrcLeft; Col < SrcRight; ++Col)
            To[Col - SrcLeft] = Convert.SourceQuad(PixelFormat::ReadNative(From, Col, SrcBpp));
    }
    for (int Line = Top; Line < Bottom; ++Line) {
        for (int Col = Left; Col < Right; ++Col) {
            float Sum[4] = {0, 0, 0, 0};
            float Total = 0;
            for (const Tap& RowTap : RowTaps[static_cast<size_t>(Line - Y)]) {
                const int SrcLine = SrcY + RowTap.Index;
                if (SrcLine < SrcTop || SrcLine >= SrcBottom)
                    continue;
                const uint32_t* From = Quads.data() + static_cast<size_t>(SrcLine - SrcTop) * SpanWidth;
                for (const Tap& ColTap : ColumnTaps[static_cast<size_t>(Col - X)]) {
                    const int SrcCol = SrcX + ColTap.Index;
                    if (SrcCol < SrcLeft || SrcCol >= SrcRight)
                        continue;
                    const float Weight = RowTap.Weight * ColTap.Weight;
                    const uint32_t Q = From[SrcCol - SrcLeft];
                    for (int Channel = 0; Channel < 4; ++Channel)
                        Sum[Channel] += Weight * static_cast<float>((Q >> (8 * Channel)) & 255);
                    Total += Weight;
                }
            }
            uint32_t Quad = 0;
            if (Total > 0)
                for (int Channel = 0; Channel < 4; ++Channel)
                    Quad |= static_cast<uint32_t>(std::clamp(RoundHalfEven(Sum[Channel] / Total), 0, 255))
                            << (8 * Channel);
            Values[static_cast<size_t>(Col - Left)] = Convert.TargetNative(Quad);
        }
        PutRow(*Target, Left, Line, Values.data(), Right - Left, Rop);
    }
    return true;
}
