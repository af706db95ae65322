#include "basReduce.h"

#include "clsDIB.h"
#include "clsPal.h"
#include "clsPalDither.h"

namespace basReduce {

namespace {

// The packed 1-bit rows of a surface whose pixels are black or white: only the Stucki ditherer
// writes them itself, so the other three are packed here from what they left in the surface.
void PackBlackAndWhite(clsDIB& Surface, clsPalDither& Dither)
{
    const int W = Surface.DIBWidth();
    const int H = Surface.DIBHeight();
    uint8_t* Table = Dither.CreateBlankPaletteTable(W, H, 1);
    if (!Table)
        return;
    const int32_t Stride = Dither.TableStride();
    const uint8_t* Bits = Surface.DIBBitsPtr();
    const int32_t SurfaceStride = Surface.BytesPerScanline();
    for (int Y = 0; Y < H; ++Y) {
        const uint8_t* Pixel = Bits + static_cast<intptr_t>(Y) * SurfaceStride;
        uint8_t* Row = Table + static_cast<intptr_t>(Y) * Stride;
        for (int X = 0; X < W; ++X, Pixel += 4)
            if (Pixel[0] != 0)
                Row[X / 8] |= static_cast<uint8_t>(0x80 >> (X & 7));
    }
}

} // namespace

bool Reduce(clsDIB& Surface, const Recipe& Plan, clsPal& Pal, clsPalDither& Dither)
{
    if (!Surface.DIBBitsPtr() || Surface.StorageBpp() != 32 || Surface.DIBhDC()->TopDown())
        return false;
    if (Plan.Bpp == 1) {
        Pal.CreatePalette2();
        switch (Plan.Dither) {
        case BWMethod::Stucki: Dither.DitherToBW_Stucki(Surface, DitherStrength); return true;
        case BWMethod::FloydSteinberg: Dither.DitherToBW_FloydSteinberg(Surface, DitherStrength); break;
        case BWMethod::Burke: Dither.DitherToBW_Burke(Surface, DitherStrength); break;
        case BWMethod::Ordered: Dither.DitherToBW_Ordered(Surface); break;
        }
        PackBlackAndWhite(Surface, Dither);
        return true;
    }
    if (Plan.Bpp != 4 && Plan.Bpp != 8)
        return false;
    const int Entries = 1 << Plan.Bpp;
    switch (Plan.Palette) {
    case PaletteKind::Optimal: Pal.CreateOptimal(Surface, Entries, 8); break;
    case PaletteKind::Exact:
        Pal.CreatePalette256(Surface);
        if (Pal.MaxCount() > Entries)
            return false;
        break;
    case PaletteKind::Standard16: Pal.CreatePalette16(); break;
    case PaletteKind::Grays: Pal.CreateGrays(static_cast<int16_t>(Entries)); break;
    case PaletteKind::Halftone:
        if (Plan.HalftoneLevel < 0 || Plan.HalftoneLevel > 4)
            return false;
        Pal.CreateHalftone(Plan.HalftoneLevel);
        break;
    case PaletteKind::Websafe: Pal.CreateWebsafe(); break;
    }
    if (Pal.MaxCount() < 1 || Pal.MaxCount() > Entries)
        return false;
    if (Plan.Bpp == 4)
        Dither.DitherToPalette16(Surface, Pal);
    else
        Dither.DitherToPalette256(Surface, Pal);
    return true;
}

bool ParsePalette(const QString& Name, Recipe& Plan)
{
    const QString N = Name.toLower();
    if (N == "optimal")
        Plan.Palette = PaletteKind::Optimal;
    else if (N == "exact")
        Plan.Palette = PaletteKind::Exact;
    else if (N == "16")
        Plan.Palette = PaletteKind::Standard16;
    else if (N == "grays" || N == "greys")
        Plan.Palette = PaletteKind::Grays;
    else if (N == "websafe")
        Plan.Palette = PaletteKind::Websafe;
    else if (N.startsWith("halftone:")) {
        bool Ok = false;
        const int Level = N.mid(9).toInt(&Ok);
        if (!Ok || Level < 0 || Level > 4)
            return false;
        Plan.Palette = PaletteKind::Halftone;
        Plan.HalftoneLevel = Level;
    } else {
        return false;
    }
    return true;
}

bool ParseDither(const QString& Name, Recipe& Plan)
{
    const QString N = Name.toLower();
    if (N == "stucki")
        Plan.Dither = BWMethod::Stucki;
    else if (N == "floyd")
        Plan.Dither = BWMethod::FloydSteinberg;
    else if (N == "burke")
        Plan.Dither = BWMethod::Burke;
    else if (N == "ordered")
        Plan.Dither = BWMethod::Ordered;
    else
        return false;
    return true;
}

} // namespace basReduce
