// The icon editor's readers on one file: the icon status with each rule, the image it
// chooses loaded into the pictures and written back, the cursor status and loader, and the
// .icl scan with each record decoded.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "basIconCursor.h"

using namespace basIconCursor;

namespace {

void WriteFile(const std::string& Path, const uint8_t* Data, size_t Size)
{
    if (FILE* Out = std::fopen(Path.c_str(), "wb")) {
        std::fwrite(Data, 1, Size, Out);
        std::fclose(Out);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
    const std::string Path = "/tmp/fuzz_icon_status_" + std::to_string(getpid());
    WriteFile(Path, Data, Size);
    clsDIB Image, Mask;
    Array2D<uint8_t> Alpha;
    for (int Rule = 0; Rule < 3; ++Rule) {
        IconRecord Record;
        const std::string Status = ReadIconFileStatus(Path, Record, Rule == 0, Rule == 2);
        int Kind = 0, Usable = 0, Index = 0;
        std::sscanf(Status.c_str(), "%d/%d/%d", &Kind, &Usable, &Index);
        if (Kind == 0 || Usable == 0 || !LoadIconFileToPictures(Path, int16_t(Index), Image, Mask, Alpha))
            continue;
        const std::string Copy = Path + ".ico";
        if (SaveIconFile(Image, Mask, Copy, Alpha.Width() > 0, Alpha))
            LoadIconFileToPictures(Copy, 0, Image, Mask, Alpha);
        std::remove(Copy.c_str());
    }
    int16_t HotX = 0, HotY = 0;
    if (ReadCursorFileStatus(Path) != "0/0/0" && LoadCursorFileToPictures(Path, Image, Mask, Alpha, HotX, HotY)) {
        const std::string Copy = Path + ".cur";
        SaveCursorFile(Image, Mask, Copy, uint16_t(HotX), uint16_t(HotY));
        std::remove(Copy.c_str());
    }
    std::vector<IclRecord> Records;
    if (ScanIclFile(Path, Records))
        for (size_t I = 0; I < Records.size() && I < 16; ++I)
            LoadIclRecordToPictures(Path, Records[I], Image, Mask, Alpha);
    std::remove(Path.c_str());
    return 0;
}
