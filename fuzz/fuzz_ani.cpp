// The animated cursor reader on one file: its steps drawn, the pattern search for jiffies and
// hotspot, the editor's open, and what it opened written again and read back.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "basANI.h"

using namespace basANI;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
    const std::string Folder = "/tmp/fuzz_ani_" + std::to_string(getpid());
    std::filesystem::create_directories(Folder);
    const std::string Path = Folder + "/in.ani";
    if (FILE* Out = std::fopen(Path.c_str(), "wb")) {
        std::fwrite(Data, 1, Size, Out);
        std::fclose(Out);
    }
    AniCursor Cursor;
    LoadAniCursor(Path, Cursor);
    const int16_t Steps = CountAniSteps(Cursor);
    AniData Info;
    ReadAniData(Path, Steps > 0 ? Steps : 4, Info);

    AniFrameList Frames;
    if (ReadAniFile(Path, MaxFrames, Frames, Info) == AniOk) {
        int16_t Failed = 0;
        const std::string Copy = Folder + "/out.ani";
        if (SaveAniFile(Copy, Frames, std::vector<uint32_t>(Info.Jiffies.begin(), Info.Jiffies.end()),
                        uint16_t(Info.HotspotX), uint16_t(Info.HotspotY), Folder, Failed) == SaveOk)
            ReadAniFile(Copy, MaxFrames, Frames, Info);
    }
    std::error_code Error;
    std::filesystem::remove_all(Folder, Error);
    return 0;
}
