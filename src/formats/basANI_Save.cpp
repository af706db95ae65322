// Writing animated cursors: each frame becomes a cursor file of its own, and the files are
// gathered into the RIFF chunks of the program's layout.
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "BmpFileHeader.h"
#include "basANI.h"
#include "basIconCursor.h"
#include "basIconCursor_Layout.h"

namespace basANI {

namespace {

const std::string Artist = "OrvelleWorks";
const std::string Title = "Edited with Icon Editor of Orvelle Works";

void PutTag(std::vector<uint8_t>& Out, const char* Tag)
{
    for (int I = 0; I < 4; ++I)
        Out.push_back(static_cast<uint8_t>(Tag[I]));
}

// A string chunk: its length with the NUL, the characters, the NUL; not padded to even.
void PutText(std::vector<uint8_t>& Out, const char* Tag, const std::string& Text)
{
    PutTag(Out, Tag);
    PutLE32(Out, static_cast<uint32_t>(Text.size() + 1));
    Out.insert(Out.end(), Text.begin(), Text.end());
    Out.push_back(0);
}

std::string TempName(const std::string& Folder, size_t Frame)
{
    char Number[4];
    std::snprintf(Number, sizeof Number, "%02u", static_cast<unsigned>(Frame % 100));
    return (std::filesystem::path(Folder) / ("ANI_Tmp_" + std::string(Number))).string();
}

// Turns a saved icon into the frame's cursor: type 2 and the hotspot in place of planes and
// bit count.
bool PatchCursor(const std::string& FileName, uint16_t HotspotX, uint16_t HotspotY)
{
    std::fstream File(FileName, std::ios::binary | std::ios::in | std::ios::out);
    const auto Put = [&](std::streamoff At, uint16_t Value) {
        const char Bytes[2] = {static_cast<char>(Value & 0xFF), static_cast<char>(Value >> 8)};
        File.seekp(At);
        File.write(Bytes, 2);
    };
    Put(2, 2);
    Put(10, HotspotX);
    Put(12, HotspotY);
    return static_cast<bool>(File);
}

void RemoveTemps(const std::string& Folder, size_t Count)
{
    std::error_code Error;
    for (size_t I = 1; I <= Count; ++I)
        std::filesystem::remove(TempName(Folder, I), Error);
}

} // namespace

int16_t SaveAniFile(const std::string& FileName, const AniFrameList& Frames, const std::vector<uint32_t>& Jiffies,
                    uint16_t HotspotX, uint16_t HotspotY, const std::string& TempFolder, int16_t& FailedFrame)
{
    FailedFrame = 0;
    if (Frames.empty() || Frames.size() > static_cast<size_t>(MaxSavedFrames) || Jiffies.size() != Frames.size())
        return SaveNoFrames;
    for (const auto& Frame : Frames)
        if (!Frame)
            return SaveNoFrames;
    std::error_code Error;
    if (std::filesystem::exists(FileName, Error) &&
        (std::filesystem::status(FileName, Error).permissions() & std::filesystem::perms::owner_write) ==
            std::filesystem::perms::none)
        return SaveReadOnly;

    for (size_t I = 0; I < Frames.size(); ++I) {
        Array2D<uint8_t> NoAlpha;
        const std::string Temp = TempName(TempFolder, I + 1);
        if (!basIconCursor::SaveIconFile(Frames[I]->Image, Frames[I]->Mask, Temp, false, NoAlpha) ||
            !PatchCursor(Temp, HotspotX, HotspotY)) {
            RemoveTemps(TempFolder, Frames.size());
            FailedFrame = static_cast<int16_t>(I + 1);
            return SaveFrameFailed;
        }
    }
    std::vector<std::vector<uint8_t>> Icons(Frames.size());
    for (size_t I = 0; I < Frames.size(); ++I)
        if (!basIconCursor::ReadFileBytes(TempName(TempFolder, I + 1), Icons[I], basIconCursor::MaxFileBytes)) {
            RemoveTemps(TempFolder, Frames.size());
            return SaveTempMissing;
        }
    RemoveTemps(TempFolder, Frames.size());

    const auto Count = static_cast<uint32_t>(Frames.size());
    uint32_t FramBytes = 4;
    for (const auto& Icon : Icons)
        FramBytes += static_cast<uint32_t>(Icon.size()) + 8;
    std::vector<uint8_t> Out;
    Out.reserve(FramBytes + 256);
    PutTag(Out, "RIFF");
    PutLE32(Out, 0);  // the whole file's length, filled in at the end
    PutTag(Out, "ACON");
    PutTag(Out, "LIST");
    PutLE32(Out, static_cast<uint32_t>(Artist.size() + Title.size() + 22));
    PutTag(Out, "INFO");
    PutText(Out, "INAM", Title);
    PutText(Out, "IART", Artist);
    PutTag(Out, "anih");
    PutLE32(Out, 36);
    PutLE32(Out, 36);
    PutLE32(Out, Count);  // frames
    PutLE32(Out, Count);  // steps
    Out.insert(Out.end(), 16, 0);  // width, height, bit count, planes
    PutLE32(Out, 10);  // default rate
    PutLE32(Out, 1);   // frames are icons
    PutTag(Out, "rate");
    PutLE32(Out, Count * 4);
    for (const uint32_t Jiffy : Jiffies)
        PutLE32(Out, Jiffy);
    PutTag(Out, "LIST");
    PutLE32(Out, FramBytes);
    PutTag(Out, "fram");
    for (const auto& Icon : Icons) {
        PutTag(Out, "icon");
        PutLE32(Out, static_cast<uint32_t>(Icon.size()));
        Out.insert(Out.end(), Icon.begin(), Icon.end());
    }
    // Eight more than RIFF asks for, as the program has always written it.
    const auto Total = static_cast<uint32_t>(Out.size());
    for (int B = 0; B < 4; ++B)
        Out[4 + B] = static_cast<uint8_t>(Total >> (8 * B));
    if (!basIconCursor::WriteFileBytes(FileName, Out))
        return basIconCursor::LastError() == basIconCursor::ErrReadOnly ? SaveReadOnly : SaveWriteFailed;
    return SaveOk;
}

} // namespace basANI
