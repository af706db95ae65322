#pragma once
// The start of an icon or cursor file, as both icon readers take it: the 6-byte header and the
// 16-byte directory entries, little-endian, and the entry test they both apply.
#include <cstdint>

namespace IconFileLayout {

struct FileHeader {
    int16_t Reserved = 0;
    int16_t Type = 0;  // 1 icon, 2 cursor
    int16_t Count = 0;
};

// In a cursor Planes and BitCount hold the hotspot x and y.
struct DirEntry {
    uint8_t Width = 0;
    uint8_t Height = 0;
    uint8_t ColorCount = 0;
    uint8_t Reserved = 0;
    int16_t Planes = 0;
    int16_t BitCount = 0;
    int32_t BytesInRes = 0;
    int32_t ImageOffset = 0;
};

// The 16 bytes at P.
inline DirEntry ParseEntry(const uint8_t* P)
{
    const auto Le16 = [P](int At) { return static_cast<int16_t>(P[At] | (P[At + 1] << 8)); };
    const auto Le32 = [P](int At) {
        return static_cast<int32_t>(uint32_t{P[At]} | (uint32_t{P[At + 1]} << 8) | (uint32_t{P[At + 2]} << 16) |
                                    (uint32_t{P[At + 3]} << 24));
    };
    DirEntry Entry;
    Entry.Width = P[0];
    Entry.Height = P[1];
    Entry.ColorCount = P[2];
    Entry.Reserved = P[3];
    Entry.Planes = Le16(4);
    Entry.BitCount = Le16(6);
    Entry.BytesInRes = Le32(8);
    Entry.ImageOffset = Le32(12);
    return Entry;
}

// The entry test, the same everywhere and applied to the first entry only: a 0 width or height
// byte (a 256-pixel image) fails it.
inline bool EntryPasses(const DirEntry& Entry)
{
    return Entry.Width != 0 && Entry.Height != 0 && Entry.BytesInRes > 0 && Entry.ImageOffset > 0;
}

} // namespace IconFileLayout
