#pragma once
// Routines beside the GIF file class: a byte view over the rows of an 8-bit surface, a BMP
// writer for a surface with a palette, and the reduction of a true-colour surface to 256
// colours by way of a temporary BMP file.
#include <cstdint>
#include <string>

class clsDIB;
class clsPal;

namespace basGIFpublic {

// A two-dimensional byte view over a surface's pixel memory: Columns bytes a row (the stride),
// Rows rows, row 0 being the first row in memory. It owns nothing.
struct ByteView {
    uint8_t* Bits = nullptr;
    int32_t Columns = 0;
    int32_t Rows = 0;
    uint8_t* Row(int32_t Y) const { return Bits + static_cast<intptr_t>(Y) * Columns; }
    uint8_t& operator()(int32_t X, int32_t Y) const { return Bits[static_cast<intptr_t>(Y) * Columns + X]; }
};

// Lays the view over the surface: BytesPerScanline columns and DIBHeight rows. False (and an
// empty view) when the surface has no pixels.
bool MapDIBBits(ByteView& Target, const clsDIB& Dib);

// Writes the surface as a BMP file of Bits (1, 4 or 8) bits a pixel with the palette's
// 2^Bits entries as its colour table; each pixel is written as the index of the palette's entry
// nearest to its colour. The rows go out bottom row first whatever the surface's row order.
// The file's size field counts the whole file. False on an unsupported depth or a write error.
bool SaveBMPWithPalette(const std::string& FileName, clsDIB& Dib, const clsPal& Pal, int16_t Bits);

// The work file of ReduceToPaletteFile, made in the folder it is given.
inline constexpr const char* PaletteWorkFile = "tmpGIFPal.tmp";

// Gives a true-colour surface a palette of up to 256 colours: a picture of 256 colours or fewer
// keeps its exact colours, a richer one gets an optimal palette and is dithered to it. The result
// goes through Folder + "tmpGIFPal.tmp" (an 8-bit BMP, deleted again) and comes back into Dib as
// an 8-bit top-down surface whose colour table is Pal's. False, with Dib as it was, on failure.
bool ReduceToPaletteFile(clsDIB& Dib, clsPal& Pal, const std::string& Folder);

} // namespace basGIFpublic
