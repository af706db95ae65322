#pragma once
// A colour table of up to 256 entries, stored blue, green, red, 0, with the platform palette
// made from it, and the recipes that fill it: two colours, the sixteen standard colours, grey
// ramps, colour cubes, the web-safe cube, the exact colours of an image and an octree reduction.
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

class clsDIB;

class clsPal {
public:
    clsPal() = default;
    ~clsPal() { ClearUp(); }
    clsPal(const clsPal&) = delete;
    clsPal& operator=(const clsPal&) = delete;

    // Clears, then sizes the table for 256 zero entries with Size (clamped to 2..256) in use.
    uint8_t* CreateBlankPalette(int16_t Size);
    uint8_t* PalettePtr() { return Table.data(); }
    const uint8_t* PalettePtr() const { return Table.data(); }
    // All 1,024 bytes of the table.
    void GetPaletteFromPAL(std::vector<uint8_t>& Bytes) const;
    // Handle of the platform palette, 0 while there is none.
    int32_t PALhPal() const { return Platform ? Platform->Handle : 0; }
    // Entries in use; writing neither resizes the table nor rebuilds the platform palette.
    int32_t MaxCount() const { return Count; }
    void setMaxCount(int32_t Value) { Count = Value; }

    // Writes change the table only; the platform palette keeps its colours until a recipe rebuilds it.
    uint8_t rgbR(uint8_t Index) const { return Table[Index * 4 + 2]; }
    uint8_t rgbG(uint8_t Index) const { return Table[Index * 4 + 1]; }
    uint8_t rgbB(uint8_t Index) const { return Table[Index * 4]; }
    void rgbR(uint8_t Index, uint8_t Value) { Table[Index * 4 + 2] = Value; }
    void rgbG(uint8_t Index, uint8_t Value) { Table[Index * 4 + 1] = Value; }
    void rgbB(uint8_t Index, uint8_t Value) { Table[Index * 4] = Value; }

    // Erases the table, sets MaxCount to 0 and deletes the platform palette.
    void ClearUp();

    // The platform palette's entry nearest (Euclidean, lowest index on a tie) to the colour value
    // Red * 65536 + Green * 256 + Blue: as the palette holds red and blue exchanged, each channel
    // meets its own, so this is the table's entry nearest to Red, Green, Blue. 0 with no palette.
    int32_t NearestPaletteIndex(uint8_t Red, uint8_t Green, uint8_t Blue) const
    {
        if (!Platform) return 0;
        const uint32_t Query = (uint32_t{Red} << 16) | (uint32_t{Green} << 8) | Blue;
        const uint32_t Slot = CacheSlot(Query);
        if (!Platform->CacheKeys.empty() && Platform->CacheKeys[Slot] == Query) return Platform->CacheIndexes[Slot];
        return NearestMiss(Query);
    }
    // False on an empty table; otherwise whether every entry in use is grey.
    bool IsGreyScale() const;

    void CreatePalette2();
    void CreatePalette16();
    // Levels below 16 give 2 entries, below 256 give 16, else 256.
    void CreateGrays(int16_t Levels);
    // A colour cube of 2, 3, 4, 5 or 6 levels a channel for Level 0 to 4, red varying fastest.
    // Any other Level leaves the palette as it was.
    void CreateHalftone(int32_t Level);
    void CreateWebsafe();
    // The first 256 distinct colours of a 32-bit surface in storage order.
    void CreatePalette256(clsDIB& Dib);
    // About MaxColors (brought into 1..256) colours of a 32-bit surface by an octree of MaxDepth
    // (brought into 1..8) levels; the root's children are never merged, so up to 8 may remain.
    void CreateOptimal(clsDIB& Dib, int32_t MaxColors, int32_t MaxDepth);

    // Events: the percentage done while an image is scanned, and the end of a stage.
    std::function<void(int32_t Percent)> Progress;
    std::function<void()> ProgressEnd;

private:
    // The platform palette: the table's bytes taken as red, green, blue, flags entries, so it
    // holds red and blue exchanged. It remembers answered queries in a direct-mapped cache and
    // keeps, for each cube of 32 values a side, the entries that can be nearest inside it.
    struct PlatformPalette {
        int32_t Handle = 0;
        std::vector<std::array<uint8_t, 4>> Entries;
        std::vector<uint32_t> CacheKeys;
        std::vector<uint8_t> CacheIndexes;
        std::vector<std::vector<uint8_t>> Candidates;  // by cell, empty until first asked
        int32_t Nearest(int32_t Red, int32_t Green, int32_t Blue);
    };
    static uint32_t CacheSlot(uint32_t Query)
    {
        // Six high bits of each channel.
        return ((Query >> 6) & 0x3F000) | ((Query >> 4) & 0xFC0) | ((Query >> 2) & 0x3F);
    }
    int32_t NearestMiss(uint32_t Query) const;
    void RebuildPlatformPalette();
    // Index is below 256 and each channel 0..255.
    void SetEntry(int32_t Index, int32_t Red, int32_t Green, int32_t Blue);
    // Percentage of a scan after row Y of Height rows, as the progress bar wants it.
    static int32_t RowPercent(int32_t Y, int32_t Height);
    // True when the surface has 32-bit pixel rows to read.
    static bool Readable32(const clsDIB& Dib);
    void RaiseProgress(int32_t Percent);
    void RaiseProgressEnd();

    std::array<uint8_t, 1024> Table{};
    int32_t Count = 0;
    std::unique_ptr<PlatformPalette> Platform;
};
