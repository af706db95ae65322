#pragma once
// The icon editor's path between a file and the editor's two pictures: exactly one image of an
// .ico or .cur file is read into, or written from, an image picture and a mask picture, with
// the depth chosen on saving from the picture's colours. Also the byte scan of .icl files.
//
// The two pictures are 32-bit top-down surfaces of equal size. The image holds each pixel's
// colour (blue, green, red, the fourth byte 0); the mask is black (0x000000) where the icon is
// opaque and white (0xFFFFFF) where it is transparent. A 32-bit icon's alpha values lie beside
// them in a byte array indexed (x, row from the top); it is empty for every other depth. Both
// pictures being 32-bit lets the editor's tools paint on them directly.
//
// Images are taken to be bitmaps behind a 40-byte header: an image stored as PNG is not known,
// and an entry whose width or height byte is 0 (a 256-pixel image) makes a file invalid.
//
// The routines share one header record (SharedRecord) and one error field, filled anew by each
// call: no two of them may run at once. Nothing here shows a message; the texts the caller
// shows come from ErrorText.
#include <cstdint>
#include <string>
#include <vector>

#include "Array2D.h"
#include "IconFileLayout.h"
#include "clsDIB.h"

namespace basIconCursor {

using IconFileHeader = IconFileLayout::FileHeader;
using IconDirEntry = IconFileLayout::DirEntry;

// Header and directory of the file last read or written, and the bitmap header of the image
// last read or written.
struct IconRecord {
    IconFileHeader Header;
    std::vector<IconDirEntry> Entries;
    BitmapInfoHeader Bitmap;
};

IconRecord& SharedRecord();

// The error field.
enum : int16_t {
    ErrNone = 0,
    ErrFile = 1,              // the file could not be read or written
    ErrInvalid = 2,           // the file's structure or size is refused
    ErrTrueColorDepth = 3,    // a true-colour image of neither 24 nor 32 bits
    ErrReadOnly = 4,          // the file to write is read-only
};
int16_t LastError();
// What the caller shows for a code; empty where the caller has its own words.
std::string ErrorText(int16_t Code);

// Largest file read whole: no icon, cursor or animated cursor comes near it.
constexpr int64_t MaxFileBytes = int64_t(64) * 1024 * 1024;
// Largest .icl (or other resource file) scanned.
constexpr int64_t MaxScanBytes = int64_t(256) * 1024 * 1024;

// Nine numbers joined by "/": kind (0 invalid, 1 one image, 2 several), usable images, index
// chosen, width, height, colour count and bit count by directory entry, colour count and bit
// count by the image's bitmap header. Header and directory go to Destination. StrictSize takes
// a single image only at 16, 24, 32 or 48 pixels a side (otherwise 12 to 128); Prefer8Bit ends
// the search at an 8-bit 32 by 32 image after the first one.
std::string ReadIconFileStatus(const std::string& FileName, IconRecord& Destination, bool StrictSize,
                               bool Prefer8Bit = false);
// "1/" colour count "/" bit count of an acceptable cursor (32 by 32, image at offset 22, hotspot
// inside), "0/0/0" otherwise. Fills SharedRecord.
std::string ReadCursorFileStatus(const std::string& FileName);

// Reads image Index (field 3 of the status) into the two pictures at the directory entry's
// size. Alpha is sized and filled only for a 32-bit image. A true-colour image of another depth
// fails with ErrTrueColorDepth.
bool LoadIconFileToPictures(const std::string& FileName, int16_t Index, clsDIB& Image, clsDIB& Mask,
                            Array2D<uint8_t>& Alpha);
// The first image of a cursor, with its hotspot.
bool LoadCursorFileToPictures(const std::string& FileName, clsDIB& Image, clsDIB& Mask, Array2D<uint8_t>& Alpha,
                              int16_t& HotspotX, int16_t& HotspotY);
// Decodes the image record at Offset of an icon or cursor file held in Bytes, Width by Height
// pixels, by the same rules. The step under the two loaders, the .icl records and the frames
// of animated cursors.
bool DecodeIconRecord(const std::vector<uint8_t>& Bytes, int64_t Offset, int32_t Width, int32_t Height,
                      clsDIB& Image, clsDIB& Mask, Array2D<uint8_t>& Alpha);

// 2 (black and white only), 16 (the static colours only), 256 (at most 256 colours) or -1.
int16_t ClassifyIconColors(const clsDIB& Image);
// Bytes of an image record of this size and depth, by the program's own row formulas; 0 for a
// depth other than 1, 4, 8, 24 or 32.
int32_t IconResourceBytes(int32_t Width, int32_t Height, int16_t BitCount);

// Writes the pictures as a single-image icon. With Use32 and an alpha array of the picture's
// size the icon is 32-bit; with Use32 and any other array the array is cleared and the icon is
// 24-bit; without Use32 the depth comes from ClassifyIconColors.
bool SaveIconFile(const clsDIB& Image, const clsDIB& Mask, const std::string& FileName, bool Use32,
                  Array2D<uint8_t>& Alpha);
// The same as a cursor: hotspot in the entry, never alpha.
bool SaveCursorFile(const clsDIB& Image, const clsDIB& Mask, const std::string& FileName, uint16_t HotspotX,
                    uint16_t HotspotY);

// An icon record found in an .icl file: where it lies, a size text of 5 characters (width, "x",
// bits, blank-padded: "32x4 ") and its bits.
struct IclRecord {
    int64_t Start = 0;
    int64_t End = 0;
    std::string SizeText;
    int16_t Bits = 0;
    int32_t Width = 0;
};
// Scans the whole file byte by byte for icon records. False when the file cannot be read or does
// not start with "MZ"; true with no records is a file without icons.
bool ScanIclFile(const std::string& FileName, std::vector<IclRecord>& Records);
// Decodes one record found by the scan, by the unpacking of LoadIconFileToPictures.
bool LoadIclRecordToPictures(const std::string& FileName, const IclRecord& Record, clsDIB& Image, clsDIB& Mask,
                             Array2D<uint8_t>& Alpha);

// Shared by the readers of this module and of animated cursors.
bool ReadFileBytes(const std::string& FileName, std::vector<uint8_t>& Bytes, int64_t Limit);
// Colour values 0x00BBGGRR of every pixel, rows from the top; false for an empty surface.
bool PictureColors(const clsDIB& Picture, std::vector<uint32_t>& Colors);

} // namespace basIconCursor
