#pragma once
// The platform picture loader: BMP (at the depth its header gives), JPEG, every other
// format the toolkit reads, WMF and EMF, into a picture. Failure is a false answer.
#include <QByteArray>
#include <QString>
#include <cstdint>

#include "StdPicture.h"

namespace basPicture {

// Sides above this, or pixel memory above MaxPictureBytes, are refused before any allocation.
constexpr int MaxPictureSide = 32767;
constexpr int64_t MaxPictureBytes = int64_t(2) * 1024 * 1024 * 1024;

struct BmpHeaderInfo {
    bool Valid = false;
    int32_t Width = 0;
    int32_t Height = 0;        // positive; TopDown tells the order
    bool TopDown = false;
    uint16_t BitCount = 0;
    uint32_t Compression = 0;
    uint32_t HeaderSize = 0;
    uint32_t OffBits = 0;
    uint32_t AlphaMask = 0;    // from a V3+ header or the BITFIELDS masks, 0 if none
};

// Reads and checks the file and info headers of a BMP held in memory. Valid is false for
// anything the loader refuses: bad signature, unknown header size, planes other than 1,
// a depth or compression it does not know, sides of 0 or over the limit, pixel data
// that lies beyond the end of the file.
BmpHeaderInfo ReadBmpHeader(const QByteArray& Bytes);

// The depth a picture keeps for a BMP of this header: 1, 4, 8, 24 or 32.
int PictureDepthForBmp(const BmpHeaderInfo& Info);

// Decodes a BMP held in memory.
bool LoadBmpFromMemory(const QByteArray& Bytes, StdPicture& Picture);

// Rasterises a Windows metafile (WMF, placeable or not) or an enhanced metafile on white,
// at its own size at 96 dots an inch.
bool LoadMetafileFromMemory(const QByteArray& Bytes, StdPicture& Picture);

// Loads any picture file. The format comes from the file's first bytes, not its name.
bool LoadPicture(const QString& FileName, StdPicture& Picture);

} // namespace basPicture
