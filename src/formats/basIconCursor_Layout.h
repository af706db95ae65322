#pragma once
// The byte layout of icon and cursor files as the files of basIconCursor read and write it.
// Private to the module (and to the animated cursor reader, which holds icons too).
#include <cstdint>
#include <string>
#include <vector>

#include "basIconCursor.h"

namespace basIconCursor {

constexpr int64_t FileHeaderBytes = 6;
constexpr int64_t EntryBytes = 16;
constexpr int64_t BitmapHeaderBytes = 40;

void SetLastError(int16_t Code);
// Writes a whole file in place of any existing one; a read-only one is refused with ErrReadOnly.
bool WriteFileBytes(const std::string& FileName, const std::vector<uint8_t>& Bytes);

inline uint16_t LE16(const uint8_t* P)
{
    return static_cast<uint16_t>(P[0] | (P[1] << 8));
}

inline uint32_t LE32(const uint8_t* P)
{
    return uint32_t{P[0]} | (uint32_t{P[1]} << 8) | (uint32_t{P[2]} << 16) | (uint32_t{P[3]} << 24);
}

// A row padded to 32 bits.
inline int64_t PaddedRowBytes(int64_t Width, int32_t Bits)
{
    return (Width * Bits + 31) / 32 * 4;
}

// The padding behind a 24- or 32-bit colour row: 4 - (width and 3) bytes when width and 3 is
// not 0, for both depths. It is not what 24-bit rows call for, but the standard sizes never meet
// the difference and the program's files of other widths are read back by the same rule.
inline int64_t TrueColorPadding(int64_t Width)
{
    return (Width & 3) != 0 ? 4 - (Width & 3) : 0;
}

// Colour row bytes of an image record as this module reads and writes them.
inline int64_t ColorRowBytes(int64_t Width, int32_t Bits)
{
    if (Bits == 24 || Bits == 32)
        return Width * (Bits / 8) + TrueColorPadding(Width);
    return PaddedRowBytes(Width, Bits);
}

using IconFileLayout::EntryPasses;

// Header and directory from the start of Bytes; false when the header or any entry it counts
// lies beyond the end.
inline bool ReadDirectory(const std::vector<uint8_t>& Bytes, IconRecord& Record)
{
    if (static_cast<int64_t>(Bytes.size()) < FileHeaderBytes)
        return false;
    const uint8_t* P = Bytes.data();
    Record.Header.Reserved = static_cast<int16_t>(LE16(P));
    Record.Header.Type = static_cast<int16_t>(LE16(P + 2));
    Record.Header.Count = static_cast<int16_t>(LE16(P + 4));
    Record.Entries.clear();
    const int64_t Count = Record.Header.Count > 0 ? Record.Header.Count : 0;
    if (FileHeaderBytes + EntryBytes * Count > static_cast<int64_t>(Bytes.size()))
        return false;
    Record.Entries.resize(static_cast<size_t>(Count));
    for (int64_t I = 0; I < Count; ++I) {
        const uint8_t* E = P + FileHeaderBytes + EntryBytes * I;
        Record.Entries[static_cast<size_t>(I)] = IconFileLayout::ParseEntry(E);
    }
    return true;
}

// The 40-byte bitmap header at Offset; false when it does not lie in Bytes.
inline bool ReadBitmapHeader(const std::vector<uint8_t>& Bytes, int64_t Offset, BitmapInfoHeader& Header)
{
    if (Offset < 0 || Offset + BitmapHeaderBytes > static_cast<int64_t>(Bytes.size()))
        return false;
    const uint8_t* P = Bytes.data() + Offset;
    Header.biSize = static_cast<int32_t>(LE32(P));
    Header.biWidth = static_cast<int32_t>(LE32(P + 4));
    Header.biHeight = static_cast<int32_t>(LE32(P + 8));
    Header.biPlanes = static_cast<int16_t>(LE16(P + 12));
    Header.biBitCount = static_cast<int16_t>(LE16(P + 14));
    Header.biCompression = static_cast<int32_t>(LE32(P + 16));
    Header.biSizeImage = static_cast<int32_t>(LE32(P + 20));
    Header.biXPelsPerMeter = static_cast<int32_t>(LE32(P + 24));
    Header.biYPelsPerMeter = static_cast<int32_t>(LE32(P + 28));
    Header.biClrUsed = static_cast<int32_t>(LE32(P + 32));
    Header.biClrImportant = static_cast<int32_t>(LE32(P + 36));
    return true;
}

} // namespace basIconCursor
