#include "clsPalDither.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <new>

#include "basMath.h"
#include "clsDIB.h"
#include "clsPal.h"

namespace {

// The largest table a 32-bit size could describe.
constexpr int64_t MaxTableBytes = INT32_MAX;

// A neighbour that takes Weight / divisor of a pixel's error.
struct Tap {
    int8_t Dx;
    int8_t Dy;
    int8_t Weight;
};

constexpr Tap FloydSteinbergTaps[] = {{1, 0, 6}, {-1, 1, 2}, {0, 1, 4}, {1, 1, 0}};
constexpr Tap BurkeTaps[] = {{1, 0, 8}, {2, 0, 4}, {-2, 1, 2}, {-1, 1, 4}, {0, 1, 8}, {1, 1, 4}, {2, 1, 2}};
constexpr Tap StuckiTaps[] = {{1, 0, 8},  {2, 0, 4},  {-2, 1, 2}, {-1, 1, 4}, {0, 1, 8},  {1, 1, 4},
                              {2, 1, 2},  {-2, 2, 1}, {-1, 2, 2}, {0, 2, 4},  {1, 2, 2},  {2, 2, 1}};

// Errors run from -255 to 255; tables over them are indexed by error + 255.
constexpr int ErrorSpan = 511;

// The grey level of a 32-bit pixel: the sum of its channels divided by three.
inline int GrayLevel(const uint8_t* P)
{
    return (P[0] + P[1] + P[2]) / 3;
}

// The pixel memory of a 32-bit surface with any painting finished, null for anything else.
uint8_t* PixelsOf(clsDIB& Dib)
{
    if (!Dib.DIBBitsPtr() || Dib.StorageBpp() != 32 || Dib.DIBWidth() < 1 || Dib.DIBHeight() < 1)
        return nullptr;
    if (Dib.DIBhDC())
        Dib.DIBhDC()->EndPaint();
    return Dib.DIBBitsPtr();
}

} // namespace

uint8_t* clsPalDither::CreateBlankPaletteTable(int32_t Width, int32_t Height, uint8_t BPP)
{
    Table.clear();
    Stride = 0;
    const int64_t RowBytes = (static_cast<int64_t>(BPP) * Width + 31) / 32 * 4;
    if (Width <= 0 || Height <= 0 || RowBytes * Height > MaxTableBytes)
        return nullptr;
    try {
        Table.assign(static_cast<size_t>(RowBytes) * static_cast<size_t>(Height), 0);
    } catch (const std::bad_alloc&) {
        Table.clear();
        return nullptr;
    }
    Stride = static_cast<int32_t>(RowBytes);
    return TableEntryPtr();
}

void clsPalDither::RowDone(int32_t Y, int32_t Height)
{
    if (Height > 1 && Progress)
        Progress(RoundHalfEven(static_cast<double>(Y) / static_cast<double>(Height - 1) * 100.0));
}

void clsPalDither::PassDone()
{
    if (ProgressEnd)
        ProgressEnd();
}

void clsPalDither::DitherToBW_Stucki(clsDIB& Dib, int32_t Strength)
{
    DitherToBW_Diffuse(Dib, Strength, Kernel::Stucki);
}

void clsPalDither::DitherToBW_FloydSteinberg(clsDIB& Dib, int32_t Strength)
{
    DitherToBW_Diffuse(Dib, Strength, Kernel::FloydSteinberg);
}

void clsPalDither::DitherToBW_Burke(clsDIB& Dib, int32_t Strength)
{
    DitherToBW_Diffuse(Dib, Strength, Kernel::Burke);
}

void clsPalDither::DitherToBW_Diffuse(clsDIB& Dib, int32_t Strength, Kernel Which)
{
    const bool Stucki = Which == Kernel::Stucki;
    const Tap* Taps = Stucki ? StuckiTaps : Which == Kernel::Burke ? BurkeTaps : FloydSteinbergTaps;
    const int TapCount = Stucki ? 12 : Which == Kernel::Burke ? 7 : 4;
    const int32_t Divisor = Stucki ? 42 : Which == Kernel::Burke ? 32 : 16;
    // Stucki's neighbours to the right and below stop one short of the edge.
    const int Short = Stucki ? 1 : 0;

    CreateBlankPaletteTable(Dib.DIBWidth(), Dib.DIBHeight(), 1);
    uint8_t* Bits = PixelsOf(Dib);
    if (!Bits || Strength == 0 || (Stucki && Table.empty()))
        return;
    const int32_t W = Dib.DIBWidth(), H = Dib.DIBHeight();
    const size_t RowBytes = static_cast<size_t>(W) * 4;

    // The threshold is the picture's own mean level.
    int64_t Sum = 0;
    for (int32_t Y = 0; Y < H; ++Y) {
        const uint8_t* P = Bits + Y * RowBytes;
        for (int32_t X = 0; X < W; ++X, P += 4)
            Sum += GrayLevel(P);
        RowDone(Y, H);
    }
    if (!Stucki)
        PassDone();
    const int32_t Mean = static_cast<int32_t>(Sum / (static_cast<int64_t>(W) * H));

    // The divisions, paid once per error value. An error row gathers from each tap at most
    // once and the weights sum to no more than the divisor, so gathered errors stay within
    // -255..255 as well.
    std::array<int32_t, ErrorSpan> Effect{};
    std::vector<int32_t> Shares(static_cast<size_t>(TapCount) * ErrorSpan);
    std::array<int32_t, 12> XMin{}, XMax{};
    for (int E = -255; E <= 255; ++E) {
        Effect[E + 255] = E * 10 / Strength;
        for (int T = 0; T < TapCount; ++T)
            Shares[static_cast<size_t>(T) * ErrorSpan + E + 255] = E * Taps[T].Weight / Divisor;
    }
    for (int T = 0; T < TapCount; ++T) {
        XMin[T] = std::max(0, -Taps[T].Dx);
        XMax[T] = Taps[T].Dx > 0 ? W - 1 - Taps[T].Dx - Short : W - 1;
    }

    std::vector<int32_t> Errors(static_cast<size_t>(W) * 3, 0);
    int32_t* Rows[3] = {Errors.data(), Errors.data() + W, Errors.data() + 2 * static_cast<size_t>(W)};
    for (int32_t Y = 0; Y < H; ++Y) {
        uint8_t* P = Bits + Y * RowBytes;
        uint8_t* Packed = Stucki ? Table.data() + static_cast<size_t>(Y) * Stride : nullptr;
        const bool RowOpen[3] = {true, Y + 1 < H - Short, Y + 2 < H - Short};
        for (int32_t X = 0; X < W; ++X, P += 4) {
            const int V = std::clamp(GrayLevel(P) + Effect[Rows[0][X] + 255], 0, 255);
            const int Out = V >= Mean ? 255 : 0;
            P[0] = P[1] = P[2] = static_cast<uint8_t>(Out);
            if (Packed && Out)
                Packed[X >> 3] |= static_cast<uint8_t>(0x80u >> (X & 7));
            const int32_t* Share = Shares.data() + (V - Out + 255);
            for (int T = 0; T < TapCount; ++T, Share += ErrorSpan)
                if (X >= XMin[T] && X <= XMax[T] && RowOpen[Taps[T].Dy])
                    Rows[Taps[T].Dy][X + Taps[T].Dx] += *Share;
        }
        int32_t* Done = Rows[0];
        Rows[0] = Rows[1];
        Rows[1] = Rows[2];
        Rows[2] = Done;
        std::fill(Done, Done + W, 0);
        RowDone(Y, H);
    }
    PassDone();
}

void clsPalDither::DitherToBW_Ordered(clsDIB& Dib)
{
    // Threshold by [storage row and 3][column and 3].
    static constexpr uint8_t Matrix[4][4] = {{1, 13, 4, 16}, {9, 5, 12, 8}, {3, 15, 2, 14}, {11, 7, 10, 6}};
    CreateBlankPaletteTable(Dib.DIBWidth(), Dib.DIBHeight(), 1);
    uint8_t* Bits = PixelsOf(Dib);
    if (!Bits)
        return;
    const int32_t W = Dib.DIBWidth(), H = Dib.DIBHeight();
    for (int32_t Y = 0; Y < H; ++Y) {
        uint8_t* P = Bits + Y * static_cast<size_t>(W) * 4;
        for (int32_t X = 0; X < W; ++X, P += 4) {
            const int Level = GrayLevel(P) / 16 + 1;
            P[0] = P[1] = P[2] = Level < Matrix[Y & 3][X & 3] ? 0 : 255;
        }
        RowDone(Y, H);
    }
    PassDone();
}

void clsPalDither::DitherToPalette16(clsDIB& Dib, const clsPal& Pal)
{
    DitherToPalette(Dib, Pal, 4);
}

void clsPalDither::DitherToPalette256(clsDIB& Dib, const clsPal& Pal)
{
    DitherToPalette(Dib, Pal, 8);
}

void clsPalDither::DitherToPalette(clsDIB& Dib, const clsPal& Pal, int Bits)
{
    uint8_t* Pixels = PixelsOf(Dib);
    if (!Pixels || !CreateBlankPaletteTable(Dib.DIBWidth(), Dib.DIBHeight(), static_cast<uint8_t>(Bits)))
        return;
    const int Count = std::clamp<int32_t>(Pal.MaxCount(), 0, 256);
    if (Count < 1)
        return;
    const int32_t W = Dib.DIBWidth(), H = Dib.DIBHeight();

    // Entries as blue, green, red; indexes beyond those in use read black.
    std::array<uint8_t, 256 * 3> Entries{};
    for (int I = 0; I < Count; ++I) {
        const auto Index = static_cast<uint8_t>(I);
        Entries[I * 3] = Pal.rgbB(Index);
        Entries[I * 3 + 1] = Pal.rgbG(Index);
        Entries[I * 3 + 2] = Pal.rgbR(Index);
    }
    // Colours are matched only to 4 bits a channel: the nearest entry of each point of a
    // 16 by 16 by 16 grid of 17 steps, blue outermost, reached through Level17 of a channel.
    std::array<uint8_t, 4096> Cube{};
    for (int B = 0; B < 16; ++B)
        for (int G = 0; G < 16; ++G)
            for (int R = 0; R < 16; ++R) {
                const int32_t Index = Pal.NearestPaletteIndex(static_cast<uint8_t>(17 * R),
                                                              static_cast<uint8_t>(17 * G),
                                                              static_cast<uint8_t>(17 * B));
                Cube[B * 256 + G * 16 + R] = static_cast<uint8_t>(Index >= 0 && Index < 256 ? Index : 0);
            }
    std::array<uint16_t, 256> CubeB{}, CubeG{}, CubeR{};
    for (int V = 0; V < 256; ++V) {
        const auto Level17 = static_cast<uint16_t>(RoundHalfEven(V / 17.0));
        CubeB[V] = static_cast<uint16_t>(Level17 * 256);
        CubeG[V] = static_cast<uint16_t>(Level17 * 16);
        CubeR[V] = Level17;
    }
    // A channel plus a share of an error lies in -111..366; stored clamped to 0..255.
    std::array<uint8_t, 512> Clamp{};
    for (int V = -128; V < 384; ++V)
        Clamp[V + 128] = static_cast<uint8_t>(std::clamp(V, 0, 255));
    const auto Spread = [&Clamp](uint8_t* Q, int EB, int EG, int ER, int Weight) {
        Q[0] = Clamp[Q[0] + EB * Weight / 16 + 128];
        Q[1] = Clamp[Q[1] + EG * Weight / 16 + 128];
        Q[2] = Clamp[Q[2] + ER * Weight / 16 + 128];
    };

    // The error goes straight into the pixels ahead: the surface holds what has gathered.
    const size_t RowBytes = static_cast<size_t>(W) * 4;
    for (int32_t Y = 0; Y < H; ++Y) {
        uint8_t* P = Pixels + Y * RowBytes;
        uint8_t* Packed = Table.data() + static_cast<size_t>(Y) * Stride;
        const bool Below = Y < H - 1;
        for (int32_t X = 0; X < W; ++X, P += 4) {
            const int B = P[0], G = P[1], R = P[2];
            const uint8_t Index = Cube[CubeB[B] + CubeG[G] + CubeR[R]];
            if (Bits == 8)
                Packed[X] = Index;
            else if (X & 1)
                Packed[X >> 1] = static_cast<uint8_t>((Packed[X >> 1] & 0xF0) | (Index & 15));
            else
                Packed[X >> 1] = static_cast<uint8_t>((Packed[X >> 1] & 0x0F) | (Index << 4));
            const uint8_t* Entry = &Entries[Index * 3];
            const int EB = B - Entry[0], EG = G - Entry[1], ER = R - Entry[2];
            P[0] = Entry[0];
            P[1] = Entry[1];
            P[2] = Entry[2];
            P[3] = 0;
            // Small errors are dropped, which keeps flat areas clean.
            if (std::abs(EB) + std::abs(EG) + std::abs(ER) <= 3)
                continue;
            if (X < W - 1)
                Spread(P + 4, EB, EG, ER, 7);
            if (Below) {
                uint8_t* Q = P + RowBytes;
                Spread(Q, EB, EG, ER, 5);
                if (X < W - 1)
                    Spread(Q + 4, EB, EG, ER, 1);
                if (X > 0)
                    Spread(Q - 4, EB, EG, ER, 3);
            }
        }
        RowDone(Y, H);
    }
    PassDone();
}

void clsPalDither::DitherToTrueColor(clsDIB& Dib)
{
    if (!Dib.DIBBitsPtr())
        return;
    for (int32_t Y = 0; Y < Dib.DIBHeight(); ++Y)
        if (Progress)
            Progress(Y);
    PassDone();
}
