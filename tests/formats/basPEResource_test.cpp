// The resource reader: on the PE files of the public set against wrestool's extraction (groups
// as icon files, icon images as raw bytes); the choice of the large and small image; made-up
// PE32, PE32+ and NE files for names, languages and damage of every kind.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

#include "basPEResource.h"
#include "clsICO.h"

namespace {

using Bytes = std::vector<uint8_t>;
namespace fs = std::filesystem;
using namespace basPEResource;

void Put16(Bytes& Out, size_t At, uint32_t V) { Out[At] = uint8_t(V), Out[At + 1] = uint8_t(V >> 8); }
void Put32(Bytes& Out, size_t At, uint32_t V) { Put16(Out, At, V & 0xFFFF), Put16(Out, At + 2, V >> 16); }
uint32_t Get32(const Bytes& In, size_t At) { return In[At] | In[At + 1] << 8 | In[At + 2] << 16 | uint32_t(In[At + 3]) << 24; }
Bytes operator+(Bytes A, const Bytes& B) { return A.insert(A.end(), B.begin(), B.end()), A; }

Bytes ReadAll(const std::string& Path)
{
    std::ifstream In(Path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(In), std::istreambuf_iterator<char>());
}

std::string Testdata(const std::string& Name) { return std::string(TESSAVO_TESTDATA) + "/pe-icl/" + Name; }

// ---- The public files against wrestool ----

struct FileCase {
    const char* Name;
    int32_t Groups, Icons;
    // The group's image chosen as large and as small: width and depth.
    int LargeSide, LargeBpp, SmallSide, SmallBpp;
};

const FileCase Files[] = {
    {"wine/hh.exe", 1, 10, 32, 32, 16, 32},
    {"wine/notepad.exe", 1, 10, 32, 32, 16, 32},
    {"wine/winemine.exe", 1, 10, 32, 32, 16, 32},
    {"wine/wordpad.exe", 1, 10, 32, 32, 16, 32},
    {"nsis/nsis-stub-zlib-x86-ansi.exe", 1, 1, 32, 4, 32, 4},
    {"nsis/nsis-ui-modern.exe", 0, 0, 0, 0, 0, 0},
    {"icl/Neko98.icl", 40, 40, 32, 4, 32, 4},
    {"ne/smalle.fon", 0, 0, 0, 0, 0, 0},
};

// wrestool's files for one resource type, by name: "<file>_<type>_<name>[_<language>][.ico]".
std::map<std::string, Bytes> Wrestool(const std::string& File, int Type)
{
    const fs::path Dir = testing::TempDir() + "basPEResource_" + std::to_string(getpid());
    fs::remove_all(Dir);
    fs::create_directories(Dir);
    const std::string Command = "wrestool -x " + std::string(Type == 3 ? "--raw " : "") + "--type=" +
                                std::to_string(Type) + " -o '" + Dir.string() + "/' '" + File + "' 2>/dev/null";
    EXPECT_EQ(std::system(Command.c_str()), 0);
    std::map<std::string, Bytes> Out;
    for (const auto& E : fs::directory_iterator(Dir)) {
        std::string Name = E.path().filename().string();
        Name = Name.substr(fs::path(File).filename().string().size() + 2 + std::to_string(Type).size());
        Out[Name.substr(0, std::min(Name.find('_'), Name.find(".ico")))] = ReadAll(E.path().string());
    }
    fs::remove_all(Dir);
    return Out;
}

TEST(basPEResource_Files, AsWrestoolExtractsThemAndIconsOpen)
{
    for (const FileCase& C : Files) {
        SCOPED_TRACE(C.Name);
        const std::string Path = Testdata(C.Name);
        IconResources Res;
        ASSERT_TRUE(ReadIconResources(Path, Res));
        EXPECT_EQ(IconGroupCount(Res), C.Groups);
        EXPECT_EQ(Res.Icons.size(), size_t(C.Icons));
        std::vector<uint8_t> Ico;
        EXPECT_EQ(ExtractIconFromFile(Path, -1, true, Ico), C.Groups);

        const auto Groups = Wrestool(Path, RT_GROUP_ICON);
        ASSERT_EQ(Groups.size(), size_t(C.Groups));
        for (int32_t G = 0; G < IconGroupCount(Res); ++G) {
            const std::string& Full = Res.Groups[size_t(G)].Name;
            const std::string Name = Full[0] == '#' ? Full.substr(1) : Full;
            ASSERT_TRUE(Groups.count(Name)) << Name;
            ASSERT_TRUE(GroupIconFile(Res, G, Ico));
            // wrestool's file goes on behind the images for as many bytes as the group
            // resource is long, whatever its buffer held there; those are not compared.
            Bytes Theirs = Groups.at(Name);
            const size_t Extra = 6 + 14 * Res.Groups[size_t(G)].Entries.size();
            ASSERT_EQ(Theirs.size(), Ico.size() + Extra);
            Theirs.resize(Ico.size());
            EXPECT_EQ(Ico, Theirs) << Name;
        }
        const auto Images = Wrestool(Path, RT_ICON);
        EXPECT_EQ(Images.size(), size_t(C.Icons));
        for (const auto& [Id, Data] : Images) {
            Bytes Ours;
            ASSERT_TRUE(IconImageBytes(Res, uint16_t(std::stoi(Id)), Ours)) << Id;
            EXPECT_EQ(Ours, Data) << Id;
        }

        // The first group's large and small icon, as files the icon reader opens.
        for (const bool Large : {true, false}) {
            ASSERT_EQ(ExtractIconFromFile(Path, 0, Large, Ico), C.Groups ? 1 : 0);
            if (!C.Groups)
                continue;
            clsICO Reader;
            ASSERT_TRUE(Reader.OpenICOBytes(Ico.data(), Ico.size()));
            ASSERT_EQ(Reader.IconCount(), 1);
            EXPECT_EQ(Reader.Entries()[0].ImageOffset, 22);
            EXPECT_EQ(Reader.IconWidth(0), Large ? C.LargeSide : C.SmallSide);
            EXPECT_EQ(Reader.IconBPP(0), Large ? C.LargeBpp : C.SmallBpp);
        }
        EXPECT_EQ(ExtractIconFromFile(Path, C.Groups, true, Ico), 0);
    }
}

// ---- The choice of image, on resources laid out by hand ----

TEST(basPEResource_Choice, BitmapsFirstThenNearestThenDeepest)
{
    struct Image {
        uint8_t Side;
        uint16_t GroupBpp, HeaderBpp;
        bool Png, Present;
    };
    struct Case {
        const char* Name;
        std::vector<Image> Images;
        int32_t Large, Small;
    } Cases[] = {
        {"sizes", {{48, 8, 8, false, true}, {32, 8, 8, false, true}, {16, 8, 8, false, true}}, 1, 2},
        {"same size: the deeper", {{32, 4, 4, false, true}, {32, 32, 32, false, true}, {32, 8, 8, false, true}}, 1, 1},
        {"a tie keeps the first", {{24, 8, 8, false, true}, {40, 8, 8, false, true}}, 0, 0},
        {"group depth 0: the header's", {{32, 0, 24, false, true}, {32, 8, 8, false, true}}, 0, 0},
        {"a PNG only when no bitmap", {{32, 32, 0, true, true}, {0, 32, 32, false, true}}, 1, 1},
        {"256 is 0 in the group", {{0, 32, 32, false, true}, {64, 32, 32, false, true}}, 1, 1},
        {"missing images skipped", {{32, 32, 32, false, false}, {48, 8, 8, false, true}}, 1, 1},
        {"nothing present", {{32, 32, 32, false, false}}, -1, -1},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        IconResources Res;
        IconGroup Group;
        for (size_t I = 0; I < C.Images.size(); ++I) {
            const Image& Im = C.Images[I];
            Bytes Data(40, 0);
            if (Im.Png)
                std::copy_n("\x89PNG\r\n\x1a\n", 8, Data.begin());
            else
                Put16(Data, 14, Im.HeaderBpp);
            if (Im.Present)
                Res.Icons[uint16_t(I + 1)] = {Res.File.size(), Data.size()};
            Res.File = Res.File + Data;
            Group.Entries.push_back({Im.Side, Im.Side, 0, 0, 1, Im.GroupBpp, 40, uint16_t(I + 1)});
        }
        Res.Groups.push_back(Group);
        EXPECT_EQ(ChooseGroupImage(Res, 0, true), C.Large);
        EXPECT_EQ(ChooseGroupImage(Res, 0, false), C.Small);
        Bytes Ico;
        EXPECT_EQ(ExtractIconFile(Res, 0, true, Ico), C.Large >= 0);
        EXPECT_EQ(Ico.size(), C.Large >= 0 ? 22u + 40u : 0u);
    }
}

// ---- Made-up files ----

struct Resource {
    uint16_t Type;
    std::string Name;  // "#n" for a number
    uint16_t Language;
    Bytes Data;
};

// A PE file with one section, ".rsrc" at address 0x1000 and file offset 0x200, holding the
// resource tree of the resources given (grouped by type, then name, in the order given).
Bytes MakePE(const std::vector<Resource>& Resources, bool Plus)
{
    std::vector<uint16_t> Types;
    std::vector<std::vector<std::string>> Names;
    for (const Resource& R : Resources) {
        auto T = std::find(Types.begin(), Types.end(), R.Type);
        if (T == Types.end())
            Types.push_back(R.Type), Names.emplace_back(), T = Types.end() - 1;
        auto& N = Names[size_t(T - Types.begin())];
        if (std::find(N.begin(), N.end(), R.Name) == N.end())
            N.push_back(R.Name);
    }
    // Layout: root, type directories, name directories, language directories, data entries,
    // name strings, data.
    Bytes Tree(16 + 8 * Types.size());
    Put16(Tree, 14, uint32_t(Types.size()));
    auto Directory = [&Tree](size_t Count) {
        const size_t At = Tree.size();
        Tree.resize(At + 16 + 8 * Count);
        Put16(Tree, At + 14, uint32_t(Count));
        return At;
    };
    auto NameField = [&Tree](const std::string& Name) -> uint32_t {
        if (Name[0] == '#')
            return uint32_t(std::stoul(Name.substr(1)));
        const size_t At = Tree.size();
        Tree.resize(At + 2 + 2 * Name.size());
        Put16(Tree, At, uint32_t(Name.size()));
        for (size_t I = 0; I < Name.size(); ++I)
            Put16(Tree, At + 2 + 2 * I, uint8_t(Name[I]));
        return 0x80000000u | uint32_t(At);
    };
    for (size_t T = 0; T < Types.size(); ++T) {
        const size_t TypeDir = Directory(Names[T].size());
        Put32(Tree, 16 + 8 * T, Types[T]);
        Put32(Tree, 16 + 8 * T + 4, 0x80000000u | uint32_t(TypeDir));
        for (size_t N = 0; N < Names[T].size(); ++N) {
            std::vector<const Resource*> Langs;
            for (const Resource& R : Resources)
                if (R.Type == Types[T] && R.Name == Names[T][N])
                    Langs.push_back(&R);
            const size_t LangDir = Directory(Langs.size());
            Put32(Tree, TypeDir + 16 + 8 * N, NameField(Names[T][N]));
            Put32(Tree, TypeDir + 16 + 8 * N + 4, 0x80000000u | uint32_t(LangDir));
            for (size_t L = 0; L < Langs.size(); ++L) {
                const size_t Entry = Tree.size();
                Tree.resize(Entry + 16);
                Put32(Tree, LangDir + 16 + 8 * L, Langs[L]->Language);
                Put32(Tree, LangDir + 16 + 8 * L + 4, uint32_t(Entry));
                Put32(Tree, Entry, uint32_t(0x1000 + Tree.size()));
                Put32(Tree, Entry + 4, uint32_t(Langs[L]->Data.size()));
                Tree = Tree + Langs[L]->Data;
            }
        }
    }
    const size_t Optional = 0x58, OptionalSize = Plus ? 240 : 224, Sections = Optional + OptionalSize;
    Bytes File(0x200);
    File[0] = 'M', File[1] = 'Z';
    Put32(File, 0x3C, 0x40);
    Put32(File, 0x40, 0x4550);
    Put16(File, 0x46, 1);
    Put16(File, 0x54, uint32_t(OptionalSize));
    Put16(File, Optional, Plus ? 0x20B : 0x10B);
    const size_t Dirs = Optional + (Plus ? 108 : 92);
    Put32(File, Dirs, 16);
    Put32(File, Dirs + 4 + 16, 0x1000);
    Put32(File, Dirs + 4 + 20, uint32_t(Tree.size()));
    std::copy_n(".rsrc", 5, File.begin() + std::ptrdiff_t(Sections));
    Put32(File, Sections + 8, uint32_t(Tree.size()));
    Put32(File, Sections + 12, 0x1000);
    Put32(File, Sections + 16, uint32_t(Tree.size()));
    Put32(File, Sections + 20, 0x200);
    return File + Tree;
}

// A group directory naming icons Id..Id + Count - 1, each 16 by 16 at 4 bits, of Size bytes.
Bytes GroupData(uint16_t Id, uint16_t Count, uint32_t Size)
{
    Bytes Out(6 + 14 * size_t(Count));
    Put16(Out, 2, 1);
    Put16(Out, 4, Count);
    for (size_t I = 0; I < Count; ++I) {
        Out[6 + 14 * I] = Out[7 + 14 * I] = 16;
        Put16(Out, 6 + 14 * I + 4, 1), Put16(Out, 6 + 14 * I + 6, 4), Put32(Out, 6 + 14 * I + 8, Size);
        Put16(Out, 6 + 14 * I + 12, uint32_t(Id + I));
    }
    return Out;
}

Bytes Filled(size_t Size, uint8_t Value) { return Bytes(Size, Value); }

TEST(basPEResource_Made, NamesLanguagesAndBothFormats)
{
    const std::vector<Resource> Resources = {
        {RT_ICON, "#1", 1033, Filled(40, 0xA1)},  {RT_ICON, "#1", 1031, Filled(40, 0xB1)},
        {RT_ICON, "#2", 0, Filled(24, 0xA2)},     {RT_GROUP_ICON, "MAINICON", 1031, GroupData(1, 2, 40)},
        {RT_GROUP_ICON, "MAINICON", 1033, GroupData(9, 1, 40)}, {RT_GROUP_ICON, "#7", 0, GroupData(2, 2, 99)},
        {5, "#1", 0, Filled(8, 0)},
    };
    for (const bool Plus : {false, true}) {
        SCOPED_TRACE(Plus ? "PE32+" : "PE32");
        IconResources Res;
        ASSERT_TRUE(ReadIconResourcesBytes(MakePE(Resources, Plus), Res));
        ASSERT_EQ(IconGroupCount(Res), 2);
        // Any language: the first listed.
        EXPECT_EQ(Res.Groups[0].Name, "MAINICON");
        EXPECT_EQ(Res.Groups[0].Language, 1031);
        EXPECT_EQ(Res.Groups[1].Name, "#7");
        Bytes Image;
        ASSERT_TRUE(IconImageBytes(Res, 1, Image));
        EXPECT_EQ(Image, Filled(40, 0xA1));
        EXPECT_FALSE(IconImageBytes(Res, 3, Image));
        // Group 7 names icons 2 and 3; only 2 exists, and is smaller than the group says.
        Bytes Ico;
        ASSERT_TRUE(GroupIconFile(Res, 1, Ico));
        EXPECT_EQ(Ico, (Bytes{0, 0, 1, 0, 1, 0, 16, 16, 0, 0, 1, 0, 4, 0, 24, 0, 0, 0, 22, 0, 0, 0} + Filled(24, 0xA2)));
        ASSERT_TRUE(GroupIconFile(Res, 0, Ico));
        EXPECT_EQ(Ico.size(), 6u + 32u + 40u + 24u);
        EXPECT_EQ(Get32(Ico, 6 + 16 + 12), 6u + 32u + 40u);
        EXPECT_FALSE(GroupIconFile(Res, 2, Ico));
    }
}

TEST(basPEResource_Made, DamageGivesFalseOrFewerGroups)
{
    const Bytes Good = MakePE({{RT_ICON, "#1", 0, Filled(40, 1)}, {RT_GROUP_ICON, "#1", 0, GroupData(1, 1, 40)}}, false);
    // Offsets in Good: PE header 0x40, optional header 0x58, data directories from 0x58 + 96,
    // the section table at 0x138, the tree at 0x200: the root, RT_ICON's name directory at
    // 0x220, its language directory at 0x238, its data entry at 0x250.
    auto Patch = [&Good](size_t At, uint32_t Value, int Width = 4) {
        Bytes File = Good;
        Width == 4 ? Put32(File, At, Value) : Put16(File, At, Value);
        return File;
    };
    struct Case {
        const char* Name;
        Bytes File;
        bool Read;
        int32_t Groups;
        size_t Icons;
    } Cases[] = {
        {"good", Good, true, 1, 1},
        {"no MZ", Patch(0, 0x5A4E, 2), false, 0, 0},
        {"header past the end", Patch(0x3C, 0x7FFFFFF0), false, 0, 0},
        {"no PE signature", Patch(0x40, 0x4551), false, 0, 0},
        {"unknown optional header", Patch(0x58, 0x107, 2), false, 0, 0},
        {"optional header past the end", Patch(0x54, 0xFFFF, 2), false, 0, 0},
        {"two data directories", Patch(0x58 + 92, 2), true, 0, 0},
        {"no resource table", Patch(0x58 + 96 + 16, 0), true, 0, 0},
        {"resources outside the sections", Patch(0x58 + 96 + 16, 0x9000), true, 0, 0},
        {"section data past the end", Patch(0x138 + 20, 0xFFFFFF00), true, 0, 0},
        {"section shorter than its tree", Patch(0x138 + 16, 0x20), true, 0, 0},
        {"directory count past the section", Patch(0x200 + 14, 0xFFFF, 2), true, 1, 1},
        {"name points back to the root", Patch(0x220 + 16 + 4, 0x80000000u), true, 1, 0},
        {"data past the section", Patch(0x250 + 4, 0x7FFFFFFF), true, 1, 0},
        {"data address wraps", Patch(0x250, 0xFFFFFFF0), true, 1, 0},
        {"cut in the tree", Bytes(Good.begin(), Good.begin() + 0x230), true, 0, 0},
        {"cut in the headers", Bytes(Good.begin(), Good.begin() + 0x60), false, 0, 0},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        IconResources Res;
        EXPECT_EQ(ReadIconResourcesBytes(C.File, Res), C.Read);
        EXPECT_EQ(IconGroupCount(Res), C.Groups);
        EXPECT_EQ(Res.Icons.size(), C.Icons);
        for (int32_t G = 0; G < IconGroupCount(Res); ++G) {
            Bytes Ico;
            GroupIconFile(Res, G, Ico);
            ExtractIconFile(Res, G, false, Ico);
        }
    }
}

// A 16-bit file: resource table at 0x80 with alignment shift 4; a named group and two icons,
// each resource padded to its 16-byte units.
TEST(basPEResource_Made, NEResourceTable)
{
    Bytes File(0x100);
    File[0] = 'M', File[1] = 'Z';
    Put32(File, 0x3C, 0x40);
    File[0x40] = 'N', File[0x41] = 'E';
    Put16(File, 0x40 + 0x24, 0x40);
    Put16(File, 0x40 + 0x26, 0x80);
    Put16(File, 0x80, 4);
    auto Name = [&File](size_t At, uint16_t Type, uint16_t Count) { Put16(File, At, Type), Put16(File, At + 2, Count); };
    auto Info = [&File](size_t At, uint16_t Offset, uint16_t Units, uint16_t Id) {
        Put16(File, At, Offset >> 4), Put16(File, At + 2, Units), Put16(File, At + 6, Id);
    };
    Name(0x82, 0x8000 | RT_GROUP_ICON, 1);
    Info(0x8A, 0x100, 3, 0x60);  // named: the counted string at table + 0x60
    Name(0x96, 0x8000 | RT_ICON, 2);
    Info(0x9E, 0x130, 3, 0x8005);
    Info(0xAA, 0x160, 2, 0x8006);
    File[0xE0] = 3, File[0xE1] = 'A', File[0xE2] = 'P', File[0xE3] = 'P';
    Bytes Group = GroupData(5, 2, 40);
    Group.resize(48, 0);
    File = File + Group + Filled(48, 0xC5) + Filled(32, 0xC6);
    IconResources Res;
    ASSERT_TRUE(ReadIconResourcesBytes(File, Res));
    EXPECT_TRUE(Res.IsNE);
    ASSERT_EQ(IconGroupCount(Res), 1);
    EXPECT_EQ(Res.Groups[0].Name, "APP");
    Bytes Ico;
    ASSERT_TRUE(GroupIconFile(Res, 0, Ico));
    // The first image is cut to the 40 bytes the group gives it; the second, 32 bytes long,
    // keeps its own size.
    EXPECT_EQ(Ico, (Bytes{0, 0, 1, 0, 2, 0, 16, 16, 0, 0, 1, 0, 4, 0, 40, 0, 0, 0, 38, 0, 0, 0, 16, 16, 0, 0, 1, 0, 4, 0,
                          32, 0, 0, 0, 78, 0, 0, 0} +
                    Filled(40, 0xC5) + Filled(32, 0xC6)));
    // A shift past any file gives no groups.
    Put16(File, 0x80, 30);
    ASSERT_TRUE(ReadIconResourcesBytes(File, Res));
    EXPECT_EQ(IconGroupCount(Res), 0);
}

} // namespace
