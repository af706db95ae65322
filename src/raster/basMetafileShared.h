#pragma once
// Internal to the metafile loader (basMetafile*.cpp), not part of the picture loader's API.
#include <QString>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "basPicture.h"

namespace basPicture::Metafile {

constexpr double ScreenDpi = 96.0;
constexpr uint32_t PlaceableKey = 0x9AC6CDD7;
constexpr size_t MaxSvgBytes = size_t(64) * 1024 * 1024;
// The libraries may read a little past what a record describes (a colour table shorter than
// its bit depth implies): zero bytes after the data keep such reads inside the buffer.
constexpr size_t TailPadding = 4096;

using ByteVector = std::vector<uint8_t>;

inline uint16_t ReadU16(const uint8_t* P) { return static_cast<uint16_t>(P[0] | (P[1] << 8)); }
inline int16_t ReadS16(const uint8_t* P) { return static_cast<int16_t>(ReadU16(P)); }
inline uint32_t ReadU32(const uint8_t* P) { return uint32_t(ReadU16(P)) | (uint32_t(ReadU16(P + 2)) << 16); }
inline int32_t ReadS32(const uint8_t* P) { return static_cast<int32_t>(ReadU32(P)); }
inline void WriteU32(uint8_t* P, uint32_t V)
{
    for (int I = 0; I < 4; ++I)
        P[I] = static_cast<uint8_t>(V >> (8 * I));
}

// The pixel size of a length given in units per inch, or -1 when it is out of range.
int PixelsFor(double Length, double UnitsPerInch);

// Whether a picture of these sides may be allocated.
bool SizeAllowed(int Width, int Height);

// A bitmap embedded in a record: sane sides, a colour table inside the space given for the
// header and, uncompressed, bits inside the space given for them (right after the table when
// BitsFollow). The libraries allocate by these fields before they look at the data.
bool DibSane(const uint8_t* Dib, size_t InfoAvail, size_t BitsAvail, bool BitsFollow);

struct WmfLayout {
    bool Placeable = false;
    int Width = 0;  // from the placeable header, else 0
    int Height = 0;
    ByteVector Window; // the file's mapping records and a blit over its window, for placeable files
};

// Checks a WMF and readies it for libwmf; false refuses the file.
bool PrepareWmf(ByteVector& Data, WmfLayout& Layout);

// The WMF as SVG text, with the picture size it is drawn at.
bool WmfToSvg(ByteVector& Data, WmfLayout& Layout, QString& Svg, int& Width, int& Height);

struct EmfLayout {
    int Width = 0;
    int Height = 0;
};

// Checks an EMF and readies it for libemf2svg; false refuses the file.
bool PrepareEmf(ByteVector& Data, EmfLayout& Layout);

// The EMF as SVG text.
bool EmfToSvg(ByteVector& Data, QString& Svg);

// Paints the SVG on white over a picture of the given size.
bool RenderSvg(const QString& Svg, int Width, int Height, StdPicture& Picture);

} // namespace basPicture::Metafile
