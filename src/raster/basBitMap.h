#pragma once
// Turns rows of raw pixel bytes from the file readers into a bitmap, then paints it on a
// surface. The readers call, in this order: a palette routine, a BitmapFromRows routine,
// PaintBitmapToDC. The module keeps as its state one colour table for each of the depths
// 1, 4 and 8, and the bitmap most recently made.
#include <cstdint>
#include <vector>

#include "DeviceContext.h"

namespace basBitMap {

// Fills the two entries of the 1-bit table from six bytes (red, green, blue twice). Any
// other length leaves the table as it is and only zeroes the reserved byte of entry 1.
void SetPalette2FromRGB(const std::vector<uint8_t>& Rgb);
// Copies up to 16 (or 256) red, green, blue triples into the 4-bit (or 8-bit) table.
void SetPalette16FromRGB(const std::vector<uint8_t>& Rgb);
void SetPalette256FromRGB(const std::vector<uint8_t>& Rgb);

// Rows are packed as in a DIB: (Width * bpp + 31) / 32 * 4 bytes each, bottom row first
// unless TopDown. Missing bytes read as 0. The bitmap made is 32 bits a pixel, like a
// bitmap compatible with the screen. False if the size is refused.
bool BitmapFromRows1(const std::vector<uint8_t>& Rows, int Width, int Height, bool TopDown);
bool BitmapFromRows4(const std::vector<uint8_t>& Rows, int Width, int Height, bool TopDown);
bool BitmapFromRows8(const std::vector<uint8_t>& Rows, int Width, int Height, bool TopDown);
// 5-5-5 pixels, little-endian words.
bool BitmapFromRows16(const std::vector<uint8_t>& Rows, int Width, int Height, bool TopDown);
bool BitmapFromRows24(const std::vector<uint8_t>& Rows, int Width, int Height, bool TopDown);
bool BitmapFromRows32(const std::vector<uint8_t>& Rows, int Width, int Height, bool TopDown);

// BitBlt with SRCCOPY of the last bitmap made to the target at X, Y.
void PaintBitmapToDC(DeviceContext* Target, int Width, int Height, int X, int Y);

// The grey ramp of a grey PNG of BitDepth bits: 2^depth levels (256 for 16 bits), level i
// the running sum of the step 255 / (levels - 1) rounded to a byte. With KeepTable the
// ramp also becomes the colour table of its depth (depth 2 goes to the 4-bit table).
// Returns the levels as red, green, blue triples.
std::vector<uint8_t> BuildGrayRamp(int16_t BitDepth, bool KeepTable);

// The module's state, for the readers' tests.
const std::vector<uint32_t>& ColorTable(int Bpp);
const DeviceContext* LastBitmap();

} // namespace basBitMap
