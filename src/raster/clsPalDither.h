#pragma once
// Colour reduction of a 32-bit surface to black and white or to a palette. The pixels of the
// surface are rewritten in place with the reduced colours, and a table of packed rows of 1, 4
// or 8 bits, bottom-up as a BMP wants them, is filled for the file writers.
#include <cstdint>
#include <functional>
#include <vector>

class clsDIB;
class clsPal;

class clsPalDither {
public:
    // Sizes the table to Height rows of (BPP * Width + 31) / 32 * 4 zero bytes; row y is
    // storage row y of the surface. Null for an empty or impossibly large table.
    uint8_t* CreateBlankPaletteTable(int32_t Width, int32_t Height, uint8_t BPP);
    std::vector<uint8_t> TableEntry() const { return Table; }
    const std::vector<uint8_t>& TableRef() const { return Table; }
    uint8_t* TableEntryPtr() { return Table.empty() ? nullptr : Table.data(); }
    int32_t TableStride() const { return Stride; }

    // Error diffusion to black and white around the picture's mean grey level. Strength 15
    // lets two thirds of each error take effect; a Strength of 0 leaves the surface alone.
    // Only the Stucki routine fills the packed table (1 bit, white set); the others leave it zero.
    void DitherToBW_Stucki(clsDIB& Dib, int32_t Strength);
    void DitherToBW_FloydSteinberg(clsDIB& Dib, int32_t Strength);
    void DitherToBW_Burke(clsDIB& Dib, int32_t Strength);
    // Black and white by a 4 by 4 threshold matrix; the table is made and stays zero.
    void DitherToBW_Ordered(clsDIB& Dib);
    // Nearest palette colour on a 4-bit-a-channel cube, the error diffused through the surface
    // itself; 4- or 8-bit indexes in the table. Alpha bytes become 0.
    void DitherToPalette16(clsDIB& Dib, const clsPal& Pal);
    void DitherToPalette256(clsDIB& Dib, const clsPal& Pal);
    // No pixel work: Progress with each storage row's number, then ProgressEnd.
    void DitherToTrueColor(clsDIB& Dib);

    // Events: the percentage done after each row (pictures higher than one row), and the end
    // of a pass.
    std::function<void(int32_t Percent)> Progress;
    std::function<void()> ProgressEnd;

private:
    enum class Kernel { FloydSteinberg, Burke, Stucki };
    void DitherToBW_Diffuse(clsDIB& Dib, int32_t Strength, Kernel Which);
    void DitherToPalette(clsDIB& Dib, const clsPal& Pal, int Bits);
    void RowDone(int32_t Y, int32_t Height);
    void PassDone();

    std::vector<uint8_t> Table;
    int32_t Stride = 0;
};
