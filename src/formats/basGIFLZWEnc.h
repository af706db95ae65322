#pragma once
// The LZW encoder of GIF images: a hashed LZW with a table of 5003 slots and an immediate Clear
// when the code space is full. It reads straight from the pixel memory of an 8-bit surface and
// writes finished data sub-blocks (a length byte of at most 254, then the data). The minimum code
// size byte in front and the zero-length terminator behind belong to the caller. All state is
// module-level and reused from call to call, so only one encode runs at a time.
#include <cstdint>
#include <vector>

class clsDIB;

namespace basGIFLZWEnc {

// Builds the mask table (2 to the power n, less 1, at index n). The table is also ready at
// start-up; clsGIF rebuilds it on construction.
void InitEncoderMasks();

// Compresses DIB and appends its sub-blocks to Output, one whole sub-block at a time. The byte
// vector stands in for the open binary file: the caller writes it out at the place where the
// image data belongs (or hands in the vector that already holds the file so far).
// InitBits is the minimum code size plus 1 (3 for a 2-bit frame, 9 for an 8-bit one).
// Interlaced frames of a height above 4 are read in the four passes (rows 0, 8, ..., then 4,
// 12, ..., then 2, 6, ..., then 1, 3, ...); lower ones in plain row order.
// A surface that is not 8-bit gives no output and true. False when InitBits is above 16, with
// nothing written; and false when a pixel beyond the code size went out as the End code before
// the last code and the bit count went below 0 (the sub-blocks finished before that stay in
// Output). Indexes below 2 to the power (InitBits - 1) always give true.
bool EncodeFrameLZW(std::vector<uint8_t>& Output, const clsDIB& DIB, uint8_t InitBits, bool Interlaced);

} // namespace basGIFLZWEnc
