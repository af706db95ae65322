#pragma once
// The icons held as resources in a DLL or EXE: the program's own reader of the resource
// tables of PE files (PE32 and PE32+) and of 16-bit NE files. It finds the icon groups
// (RT_GROUP_ICON) and the icon images (RT_ICON) they name, in any language, and builds icon
// files from them in memory, which clsICO can open. Every offset, size and address of the
// file is checked against the file before use, and every walk over its tables is bounded:
// a damaged file gives fewer icons or false, never a crash.
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace basPEResource {

constexpr uint16_t RT_ICON = 3;
constexpr uint16_t RT_GROUP_ICON = 14;
// Largest file read whole.
constexpr int64_t MaxFileBytes = int64_t(256) * 1024 * 1024;
// The Windows loader takes no more sections than this.
constexpr uint32_t MaxSections = 96;
// Group entries kept from one file, all groups together: a file whose groups share one large
// group directory could otherwise ask for far more than it holds.
constexpr size_t MaxGroupEntries = size_t(1) << 20;
// Largest icon file built from a group.
constexpr size_t MaxIconFileBytes = size_t(64) * 1024 * 1024;

// One entry of a group's directory (GRPICONDIR): the fields of an icon file's directory
// entry, with the id of the RT_ICON resource in place of the offset.
struct GroupIconEntry {
    uint8_t Width = 0;  // 0 means 256
    uint8_t Height = 0;
    uint8_t ColorCount = 0;
    uint8_t Reserved = 0;
    uint16_t Planes = 0;
    uint16_t BitCount = 0;
    uint32_t BytesInRes = 0;
    uint16_t Id = 0;
};

struct IconGroup {
    // "#" and the number for a numbered resource, else its name.
    std::string Name;
    uint16_t Language = 0;
    std::vector<GroupIconEntry> Entries;
};

// Where a resource's bytes lie in the file.
struct ResourceSpan {
    size_t Offset = 0;
    size_t Size = 0;
};

struct IconResources {
    std::vector<uint8_t> File;
    bool IsNE = false;
    // In the order of the file's resource table, one per name (the first language).
    std::vector<IconGroup> Groups;
    // RT_ICON resources by numeric id, the first language of each.
    std::map<uint16_t, ResourceSpan> Icons;
};

// Reads the file and its icon resources. False unless the file starts "MZ" and has a PE or
// NE header that can be read; a file without resources, or whose resource tables are
// damaged past some point, gives true with the groups found up to there.
bool ReadIconResources(const std::string& FileName, IconResources& Out);
bool ReadIconResourcesBytes(std::vector<uint8_t> File, IconResources& Out);

int32_t IconGroupCount(const IconResources& Res);
// The bytes of the RT_ICON resource of that id (a bitmap header and rows, or a PNG).
bool IconImageBytes(const IconResources& Res, uint16_t Id, std::vector<uint8_t>& Bytes);
// A whole group as an icon file: header, one entry per image whose resource exists (records
// in the group's order from 6 + 16 times the count), then the images.
bool GroupIconFile(const IconResources& Res, int32_t GroupIndex, std::vector<uint8_t>& Ico);
// Index within the group of the image closest in size to 32 by 32 (Large) or 16 by 16:
// bitmap images before PNG ones, then the least difference in width plus height, then the
// greater depth, then the first. -1 when the group has no image present.
int32_t ChooseGroupImage(const IconResources& Res, int32_t GroupIndex, bool Large);
// The chosen image as a single-image icon file (record at offset 22).
bool ExtractIconFile(const IconResources& Res, int32_t GroupIndex, bool Large, std::vector<uint8_t>& Ico);
// The same in one call on a file: the icon of a given index, large or small. Index -1 gives
// the count of groups as the result, with nothing in Ico; otherwise the result is 1 when an
// icon was built and 0 when not.
int32_t ExtractIconFromFile(const std::string& FileName, int32_t Index, bool Large, std::vector<uint8_t>& Ico);

} // namespace basPEResource
