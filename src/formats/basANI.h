#pragma once
// Animated cursors (RIFF "ACON" files) for the icon editor's animated cursor session.
//
// Reading has two halves, as the editor uses them. The frames' pictures come from the file's
// own chunks: each "icon" chunk inside the LIST "fram" is an icon or cursor file, decoded by the
// icon editor's rules and drawn at 32 by 32 (image and mask, as basIconCursor holds them), one
// picture per step of the animation, the steps following a "seq " chunk when there is one. The
// jiffies and the hotspot come from a search of the whole file for byte patterns, first hit from
// the start of the file, exactly as the program has always read them.
//
// Writing saves each frame through basIconCursor::SaveIconFile to a temporary file, makes it a
// cursor with the hotspot, and gathers the files into the RIFF layout below.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "clsDIB.h"

namespace basANI {

// The editor holds at most this many frames.
constexpr int16_t MaxFrames = 70;
// Stepping through a file ends here.
constexpr int16_t MaxSteps = 128;
// Every frame is drawn at this size.
constexpr int32_t FrameSide = 32;
// The temporary frame files have two-digit numbers.
constexpr int16_t MaxSavedFrames = 99;

// One frame: image and mask pictures of 32 by 32, 32-bit top-down, mask white where
// transparent, image black there for frames that came from 32-bit icons.
struct AniFrame {
    clsDIB Image;
    clsDIB Mask;
};
using AniFrameList = std::vector<std::unique_ptr<AniFrame>>;

// A file's frames as loaded, in place of the platform's loaded cursor.
struct AniCursor {
    std::vector<uint8_t> Bytes;
    // Start and length of each "icon" chunk's data, in file order.
    std::vector<std::pair<int64_t, int64_t>> Frames;
    // Frame index of each step, from the "seq " chunk; empty when the frames play in order.
    std::vector<int32_t> Sequence;
};

// Reads a RIFF "ACON" file and finds its frames. False when it cannot be read or is no
// animated cursor.
bool LoadAniCursor(const std::string& FileName, AniCursor& Cursor);
// Draws step Step at 32 by 32; false when the step does not exist or its icon cannot be read.
bool DrawAniStep(const AniCursor& Cursor, int16_t Step, clsDIB& Image, clsDIB& Mask);
// Steps from 0 until one cannot be drawn, at most MaxSteps: the file's frame count.
int16_t CountAniSteps(const AniCursor& Cursor);

// Jiffies of each frame (1 to 90) and the hotspot (0 to 31 each, the same for all frames).
struct AniData {
    std::vector<uint8_t> Jiffies;
    bool HasHotspot = false;
    int16_t HotspotX = 0;
    int16_t HotspotY = 0;
};
// The pattern search for FrameCount frames. False when the file does not start with "RIFF",
// has no "anih" or a jiffy lies beyond its end; a file without a cursor hotspot reads true with
// HasHotspot false.
bool ReadAniData(const std::string& FileName, int16_t FrameCount, AniData& Data);

// The text shown when a file has no frames or more than Limit.
std::string FrameLimitMessage(int16_t Limit = MaxFrames);

enum : int16_t {
    AniOk = 0,
    AniUnreadable = 1,   // the file cannot be read or is no animated cursor
    AniFrameLimit = 2,   // no step could be drawn, or more than the limit: FrameLimitMessage
    AniDataFailed = 3,   // the jiffies could not be read
};
// The editor's open: draws the steps as CountAniSteps counts them, refuses none or more than
// Limit, then reads the jiffies and the hotspot.
int16_t ReadAniFile(const std::string& FileName, int16_t Limit, AniFrameList& Frames, AniData& Data);

enum : int16_t {
    SaveOk = 0,
    SaveNoFrames = 1,       // no frames, more than MaxSavedFrames, or jiffies not one per frame
    SaveFrameFailed = 2,    // a frame could not be saved (FailedFrame, 1-based)
    SaveTempMissing = 3,    // a temporary frame file was gone when gathered
    SaveWriteFailed = 4,
    SaveReadOnly = 5,       // the target is read-only
};
// Writes the frames with their jiffies and the hotspot. The temporary files "ANI_Tmp_01" and
// on are made in TempFolder and deleted again.
int16_t SaveAniFile(const std::string& FileName, const AniFrameList& Frames, const std::vector<uint32_t>& Jiffies,
                    uint16_t HotspotX, uint16_t HotspotY, const std::string& TempFolder, int16_t& FailedFrame);

} // namespace basANI
