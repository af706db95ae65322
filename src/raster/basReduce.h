#pragma once
// Colour reduction as the paint document's BPP menu and the command line offer it: a palette
// recipe of clsPal and a ditherer of clsPalDither, run on one 32-bit bottom-up surface, leaving
// the reduced colours in the surface and the packed rows for a 1-, 4- or 8-bit file.
#include <QString>
#include <cstdint>

class clsDIB;
class clsPal;
class clsPalDither;

namespace basReduce {

enum class PaletteKind { Optimal, Exact, Standard16, Grays, Halftone, Websafe };
enum class BWMethod { Stucki, FloydSteinberg, Burke, Ordered };

struct Recipe {
    int Bpp = 8;                            // 1, 4 or 8
    PaletteKind Palette = PaletteKind::Optimal;
    int HalftoneLevel = 4;                  // 0 to 4, for PaletteKind::Halftone
    BWMethod Dither = BWMethod::Stucki;     // for 1 bit
};

// The strength every caller gives the black-and-white ditherers.
constexpr int32_t DitherStrength = 15;

// False when the recipe does not fit its depth (a palette of more entries than 2^Bpp) or the
// surface is not a 32-bit bottom-up one with pixels.
bool Reduce(clsDIB& Surface, const Recipe& Plan, clsPal& Pal, clsPalDither& Dither);

// Parses the command line's names: "optimal", "exact", "16", "grays", "halftone:N", "websafe";
// "stucki", "floyd", "burke", "ordered".
bool ParsePalette(const QString& Name, Recipe& Plan);
bool ParseDither(const QString& Name, Recipe& Plan);

} // namespace basReduce
