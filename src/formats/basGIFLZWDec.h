#pragma once
// The LZW decoder of GIF images. It writes straight into the pixel memory of an 8-bit surface
// and is deliberately tolerant: it reports nothing, and whatever goes wrong in the data, decoding
// stops and the pixels written so far stand. All state is module-level and reused from call to
// call, so only one decode runs at a time.
#include <cstdint>
#include <vector>

class clsDIB;

namespace basGIFLZWDec {

// Builds the power table (2 to the power k at index k + 1). The table is also ready at start-up;
// clsGIF rebuilds it on construction.
void InitDecoderPowers();

// Decodes the LZW data of one image into DIB, whose rows are taken in memory order (clsGIF
// creates its frames top-down, so row 0 is the top). Data holds the joined sub-block contents
// from index 1 on; element 0 is unused, as the sub-block gatherer of the GIF reader builds it.
// MinCodeSize is the byte in front of the data. Interlaced frames of a height above 4 are read
// in the four passes; lower ones in plain row order. A surface that is not 8-bit is left alone.
void DecodeFrameLZW(clsDIB& DIB, bool Interlaced, uint8_t MinCodeSize, const std::vector<uint8_t>& Data);

} // namespace basGIFLZWDec
