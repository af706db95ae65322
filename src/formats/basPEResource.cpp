// The resource tables of PE and NE files, as far as icons need them, and the icon files built
// from what they hold.
#include "basPEResource.h"
#include "FileBytes.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

namespace basPEResource {

namespace {

// Little-endian reads that give 0 outside the file; callers test Has first where it matters.
class Bytes {
public:
    explicit Bytes(const std::vector<uint8_t>& File) : Data(File) {}
    bool Has(uint64_t At, uint64_t Count) const { return At <= Data.size() && Count <= Data.size() - At; }
    uint8_t U8(uint64_t At) const { return Has(At, 1) ? Data[At] : 0; }
    uint16_t U16(uint64_t At) const { return Has(At, 2) ? static_cast<uint16_t>(Data[At] | (Data[At + 1] << 8)) : 0; }
    uint32_t U32(uint64_t At) const { return Has(At, 4) ? uint32_t{U16(At)} | (uint32_t{U16(At + 2)} << 16) : 0; }

private:
    const std::vector<uint8_t>& Data;
};

struct Section {
    uint32_t Address = 0;
    uint32_t Size = 0;
    uint32_t RawOffset = 0;
};

// A PE file's sections, to turn addresses into file offsets.
class AddressMap {
public:
    explicit AddressMap(const Bytes& File) : In(File) {}
    void Add(const Section& S) { Sections.push_back(S); }
    // The file offset of Size bytes at address Rva, when they lie whole in one section's data.
    bool Map(uint64_t Rva, uint64_t Size, size_t& Offset) const
    {
        for (const Section& S : Sections) {
            if (Rva < S.Address || Rva - S.Address > S.Size || Size > S.Size - (Rva - S.Address))
                continue;
            const uint64_t At = uint64_t{S.RawOffset} + (Rva - S.Address);
            if (!In.Has(At, Size))
                continue;
            Offset = static_cast<size_t>(At);
            return true;
        }
        return false;
    }

private:
    const Bytes& In;
    std::vector<Section> Sections;
};

constexpr uint32_t HighBit = 0x80000000u;
constexpr size_t GroupHeaderBytes = 6;
constexpr size_t GroupEntryBytes = 14;

// A group's directory from its bytes, within what is left of the file's entry budget; false
// when it is too short for its header or the budget is spent.
bool ParseGroup(const Bytes& In, const ResourceSpan& Span, IconGroup& Group, size_t& Budget)
{
    if (Span.Size < GroupHeaderBytes || Budget == 0)
        return false;
    const size_t Count = std::min<size_t>({In.U16(Span.Offset + 4), (Span.Size - GroupHeaderBytes) / GroupEntryBytes, Budget});
    Budget -= Count;
    for (size_t I = 0; I < Count; ++I) {
        const uint64_t At = Span.Offset + GroupHeaderBytes + I * GroupEntryBytes;
        GroupIconEntry Entry;
        Entry.Width = In.U8(At);
        Entry.Height = In.U8(At + 1);
        Entry.ColorCount = In.U8(At + 2);
        Entry.Reserved = In.U8(At + 3);
        Entry.Planes = In.U16(At + 4);
        Entry.BitCount = In.U16(At + 6);
        Entry.BytesInRes = In.U32(At + 8);
        Entry.Id = In.U16(At + 12);
        Group.Entries.push_back(Entry);
    }
    return true;
}

// A PE directory entry's name: "#" and the number, or the counted UTF-16 string it points at
// (characters above 127 become "?").
std::string PEName(const Bytes& In, const AddressMap& Map, uint32_t ResourceRva, uint32_t Name)
{
    if (!(Name & HighBit))
        return "#" + std::to_string(Name);
    size_t At = 0;
    const uint64_t Rva = uint64_t{ResourceRva} + (Name & ~HighBit);
    if (!Map.Map(Rva, 2, At))
        return "";
    const uint16_t Length = In.U16(At);
    if (!Map.Map(Rva, 2 + uint64_t{Length} * 2, At))
        return "";
    std::string Text;
    for (uint16_t I = 0; I < Length; ++I) {
        const uint16_t C = In.U16(At + 2 + uint64_t{I} * 2);
        Text.push_back(C < 128 ? static_cast<char>(C) : '?');
    }
    return Text;
}

// The entries of the PE resource directory at resource offset Dir, at most Most of them:
// pairs of name and target.
std::vector<std::pair<uint32_t, uint32_t>> PEDirectory(const Bytes& In, const AddressMap& Map, uint32_t ResourceRva,
                                                       uint32_t Dir, size_t Most = 0x20000)
{
    std::vector<std::pair<uint32_t, uint32_t>> Entries;
    size_t At = 0;
    if (!Map.Map(uint64_t{ResourceRva} + Dir, 16, At))
        return Entries;
    const size_t Count = std::min(size_t{In.U16(At + 12)} + In.U16(At + 14), Most);
    for (size_t I = 0; I < Count; ++I) {
        size_t Entry = 0;
        if (!Map.Map(uint64_t{ResourceRva} + Dir + 16 + I * 8, 8, Entry))
            break;
        Entries.emplace_back(In.U32(Entry), In.U32(Entry + 4));
    }
    return Entries;
}

void ReadPE(const Bytes& In, uint64_t PEAt, IconResources& Out, bool& Good)
{
    const uint16_t SectionCount = In.U16(PEAt + 6);
    const uint16_t OptionalSize = In.U16(PEAt + 20);
    const uint64_t Optional = PEAt + 24;
    const uint16_t Magic = In.U16(Optional);
    const uint64_t DirCountAt = Magic == 0x20B ? 108 : 92;
    Good = (Magic == 0x10B || Magic == 0x20B) && In.Has(Optional, OptionalSize);
    if (!Good)
        return;
    // The resource table is the third data directory.
    if (In.U32(Optional + DirCountAt) < 3 || DirCountAt + 4 + 3 * 8 > OptionalSize)
        return;
    const uint32_t ResourceRva = In.U32(Optional + DirCountAt + 4 + 2 * 8);
    if (ResourceRva == 0)
        return;
    AddressMap Map(In);
    const uint64_t Table = Optional + OptionalSize;
    for (uint64_t I = 0; I < std::min<uint32_t>(SectionCount, MaxSections) && In.Has(Table + I * 40, 40); ++I) {
        const uint64_t S = Table + I * 40;
        const uint32_t Virtual = In.U32(S + 8), Raw = In.U32(S + 16);
        // Bytes past the raw data exist only in memory; past the virtual size they are padding
        // that a later section's addresses may claim.
        Map.Add({In.U32(S + 12), Virtual ? std::min(Virtual, Raw) : Raw, In.U32(S + 20)});
    }
    bool SeenIcons = false, SeenGroups = false;
    size_t Budget = MaxGroupEntries;
    for (const auto& [Type, TypeTarget] : PEDirectory(In, Map, ResourceRva, 0)) {
        const bool Icons = Type == RT_ICON && !SeenIcons, Groups = Type == RT_GROUP_ICON && !SeenGroups;
        if ((!Icons && !Groups) || !(TypeTarget & HighBit))
            continue;
        (Icons ? SeenIcons : SeenGroups) = true;
        for (const auto& [Name, NameTarget] : PEDirectory(In, Map, ResourceRva, TypeTarget & ~HighBit)) {
            if (!(NameTarget & HighBit))
                continue;
            // Any language: the first one listed.
            const auto Languages = PEDirectory(In, Map, ResourceRva, NameTarget & ~HighBit, 1);
            if (Languages.empty() || (Languages[0].second & HighBit))
                continue;
            size_t Entry = 0, Data = 0;
            if (!Map.Map(uint64_t{ResourceRva} + Languages[0].second, 16, Entry))
                continue;
            const uint32_t Size = In.U32(Entry + 4);
            if (!Map.Map(In.U32(Entry), Size, Data))
                continue;
            const ResourceSpan Span{Data, Size};
            if (Icons) {
                if (!(Name & HighBit) && Name <= 0xFFFF)
                    Out.Icons.emplace(static_cast<uint16_t>(Name), Span);
                continue;
            }
            IconGroup Group;
            Group.Name = PEName(In, Map, ResourceRva, Name);
            Group.Language = static_cast<uint16_t>(Languages[0].first);
            if (ParseGroup(In, Span, Group, Budget))
                Out.Groups.push_back(std::move(Group));
        }
    }
}

// The resource table of a 16-bit file: an alignment shift, then per type a count and that
// many 12-byte name records whose offsets and lengths are in units of 2^shift bytes.
void ReadNE(const Bytes& In, uint64_t NEAt, IconResources& Out)
{
    Out.IsNE = true;
    const uint16_t TableRel = In.U16(NEAt + 0x24);
    if (TableRel == In.U16(NEAt + 0x26))
        return;  // no resource table
    const uint64_t Table = NEAt + TableRel;
    const uint16_t Shift = In.U16(Table);
    if (Shift > 24)
        return;
    bool SeenIcons = false, SeenGroups = false;
    size_t Budget = MaxGroupEntries;
    for (uint64_t At = Table + 2; In.Has(At, 8);) {
        const uint16_t Type = In.U16(At);
        const uint16_t Count = In.U16(At + 2);
        At += 8;
        if (Type == 0 || !In.Has(At, uint64_t{Count} * 12))
            break;
        const bool Icons = Type == (0x8000 | RT_ICON) && !SeenIcons;
        const bool Groups = Type == (0x8000 | RT_GROUP_ICON) && !SeenGroups;
        SeenIcons |= Icons;
        SeenGroups |= Groups;
        for (uint64_t I = 0; (Icons || Groups) && I < Count; ++I) {
            const uint64_t Record = At + I * 12;
            const uint64_t Offset = uint64_t{In.U16(Record)} << Shift;
            const uint64_t Size = uint64_t{In.U16(Record + 2)} << Shift;
            const uint16_t Id = In.U16(Record + 6);
            if (!In.Has(Offset, Size))
                continue;
            const ResourceSpan Span{static_cast<size_t>(Offset), static_cast<size_t>(Size)};
            if (Icons) {
                if (Id & 0x8000)
                    Out.Icons.emplace(static_cast<uint16_t>(Id & 0x7FFF), Span);
                continue;
            }
            IconGroup Group;
            if (Id & 0x8000) {
                Group.Name = "#" + std::to_string(Id & 0x7FFF);
            } else {
                const uint8_t Length = In.U8(Table + Id);
                for (uint64_t C = 0; C < Length && In.Has(Table + Id + 1 + C, 1); ++C)
                    Group.Name.push_back(static_cast<char>(In.U8(Table + Id + 1 + C)));
            }
            if (ParseGroup(In, Span, Group, Budget))
                Out.Groups.push_back(std::move(Group));
        }
        At += uint64_t{Count} * 12;
    }
}

bool IsPNG(const IconResources& Res, const ResourceSpan& Span)
{
    static constexpr uint8_t Signature[8] = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
    return Span.Size >= 8 && std::equal(Signature, Signature + 8, Res.File.begin() + static_cast<ptrdiff_t>(Span.Offset));
}

const ResourceSpan* FindIcon(const IconResources& Res, uint16_t Id)
{
    const auto Found = Res.Icons.find(Id);
    return Found == Res.Icons.end() ? nullptr : &Found->second;
}

// The bytes of an image: its resource, cut to the group's count where that is smaller (NE
// resources are padded to their alignment).
size_t ImageSize(const GroupIconEntry& Entry, const ResourceSpan& Span)
{
    return Entry.BytesInRes > 0 && Entry.BytesInRes < Span.Size ? Entry.BytesInRes : Span.Size;
}

bool BuildIcon(const IconResources& Res, const std::vector<const GroupIconEntry*>& Entries, std::vector<uint8_t>& Ico)
{
    Ico.clear();
    if (Entries.empty() || Entries.size() > 0xFFFF)
        return false;
    auto Put16 = [&Ico](uint32_t V) {
        Ico.push_back(static_cast<uint8_t>(V));
        Ico.push_back(static_cast<uint8_t>(V >> 8));
    };
    Put16(0);
    Put16(1);
    Put16(static_cast<uint32_t>(Entries.size()));
    uint64_t Offset = GroupHeaderBytes + 16 * Entries.size();
    for (const GroupIconEntry* Entry : Entries) {
        const size_t Size = ImageSize(*Entry, *FindIcon(Res, Entry->Id));
        if (Offset + Size > MaxIconFileBytes) {
            Ico.clear();
            return false;
        }
        Ico.insert(Ico.end(), {Entry->Width, Entry->Height, Entry->ColorCount, Entry->Reserved});
        Put16(Entry->Planes);
        Put16(Entry->BitCount);
        Put16(static_cast<uint32_t>(Size & 0xFFFF));
        Put16(static_cast<uint32_t>(Size >> 16));
        Put16(static_cast<uint32_t>(Offset & 0xFFFF));
        Put16(static_cast<uint32_t>(Offset >> 16));
        Offset += Size;
    }
    for (const GroupIconEntry* Entry : Entries) {
        const ResourceSpan& Span = *FindIcon(Res, Entry->Id);
        const auto From = Res.File.begin() + static_cast<ptrdiff_t>(Span.Offset);
        Ico.insert(Ico.end(), From, From + static_cast<ptrdiff_t>(ImageSize(*Entry, Span)));
    }
    return true;
}

} // namespace

bool ReadIconResourcesBytes(std::vector<uint8_t> File, IconResources& Out)
{
    Out = IconResources();
    Out.File = std::move(File);
    const Bytes In(Out.File);
    if (!In.Has(0, 64) || Out.File[0] != 'M' || Out.File[1] != 'Z')
        return false;
    const uint64_t HeaderAt = In.U32(0x3C);
    if (!In.Has(HeaderAt, 2))
        return false;
    if (In.U8(HeaderAt) == 'N' && In.U8(HeaderAt + 1) == 'E' && In.Has(HeaderAt, 0x40)) {
        ReadNE(In, HeaderAt, Out);
        return true;
    }
    bool Good = In.Has(HeaderAt, 24) && In.U32(HeaderAt) == 0x00004550;  // "PE\0\0"
    if (Good)
        ReadPE(In, HeaderAt, Out, Good);
    return Good;
}

bool ReadIconResources(const std::string& FileName, IconResources& Out)
{
    Out = IconResources();
    std::vector<uint8_t> File;
    return FileBytes::Read(FileName, File, MaxFileBytes) && ReadIconResourcesBytes(std::move(File), Out);
}

int32_t IconGroupCount(const IconResources& Res)
{
    return static_cast<int32_t>(Res.Groups.size());
}

bool IconImageBytes(const IconResources& Res, uint16_t Id, std::vector<uint8_t>& Out)
{
    Out.clear();
    const ResourceSpan* Span = FindIcon(Res, Id);
    if (!Span)
        return false;
    const auto From = Res.File.begin() + static_cast<ptrdiff_t>(Span->Offset);
    Out.assign(From, From + static_cast<ptrdiff_t>(Span->Size));
    return true;
}

bool GroupIconFile(const IconResources& Res, int32_t GroupIndex, std::vector<uint8_t>& Ico)
{
    Ico.clear();
    if (GroupIndex < 0 || GroupIndex >= IconGroupCount(Res))
        return false;
    std::vector<const GroupIconEntry*> Present;
    for (const GroupIconEntry& Entry : Res.Groups[static_cast<size_t>(GroupIndex)].Entries)
        if (FindIcon(Res, Entry.Id))
            Present.push_back(&Entry);
    return BuildIcon(Res, Present, Ico);
}

int32_t ChooseGroupImage(const IconResources& Res, int32_t GroupIndex, bool Large)
{
    if (GroupIndex < 0 || GroupIndex >= IconGroupCount(Res))
        return -1;
    const int Side = Large ? 32 : 16;
    const auto& Entries = Res.Groups[static_cast<size_t>(GroupIndex)].Entries;
    int32_t Best = -1;
    int BestPng = 0, BestDistance = 0, BestDepth = 0;
    for (size_t I = 0; I < Entries.size(); ++I) {
        const GroupIconEntry& Entry = Entries[I];
        const ResourceSpan* Span = FindIcon(Res, Entry.Id);
        if (!Span)
            continue;
        const int Png = IsPNG(Res, *Span) ? 1 : 0;
        const int Width = Entry.Width ? Entry.Width : 256, Height = Entry.Height ? Entry.Height : 256;
        const int Distance = std::abs(Width - Side) + std::abs(Height - Side);
        // A depth of 0 in the group: the image's own bitmap header tells.
        int Depth = Entry.BitCount;
        if (Depth == 0 && !Png && Span->Size >= 16)
            Depth = Res.File[Span->Offset + 14] | (Res.File[Span->Offset + 15] << 8);
        if (Best < 0 || Png < BestPng || (Png == BestPng && Distance < BestDistance) ||
            (Png == BestPng && Distance == BestDistance && Depth > BestDepth)) {
            Best = static_cast<int32_t>(I);
            BestPng = Png;
            BestDistance = Distance;
            BestDepth = Depth;
        }
    }
    return Best;
}

bool ExtractIconFile(const IconResources& Res, int32_t GroupIndex, bool Large, std::vector<uint8_t>& Ico)
{
    const int32_t Chosen = ChooseGroupImage(Res, GroupIndex, Large);
    if (Chosen < 0) {
        Ico.clear();
        return false;
    }
    return BuildIcon(Res, {&Res.Groups[static_cast<size_t>(GroupIndex)].Entries[static_cast<size_t>(Chosen)]}, Ico);
}

int32_t ExtractIconFromFile(const std::string& FileName, int32_t Index, bool Large, std::vector<uint8_t>& Ico)
{
    Ico.clear();
    IconResources Res;
    if (!ReadIconResources(FileName, Res))
        return 0;
    if (Index == -1)
        return IconGroupCount(Res);
    return ExtractIconFile(Res, Index, Large, Ico) ? 1 : 0;
}

} // namespace basPEResource
