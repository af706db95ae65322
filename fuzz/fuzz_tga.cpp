// The TGA reader on a whole file in memory and the drawing of what it decodes. A picture that
// loads is written out and read back, and must come back the same.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "clsDIB.h"
#include "clsTGA.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
    // Large enough for every seed, small enough to keep each input quick.
    clsTGA::MaxPixels = 1 << 20;
    clsTGA Reader;
    if (!Reader.LoadTGABytes(Data, Size))
        return 0;
    clsDIB Target;
    if (Target.CreateBlankDIB(48, 48, 32, 0x808080, true))
        Reader.DrawTGA(Target.DIBhDC(), 3, -5);
    clsDIB& Picture = Reader.Picture();
    std::vector<uint8_t> File;
    if (!clsTGA::TGAFileBytes(Picture.DIBhDC(), Picture.DIBWidth(), Picture.DIBHeight(), File))
        std::abort();
    clsTGA Back;
    if (!Back.LoadTGABytes(File.data(), File.size()) ||
        std::memcmp(Back.Picture().DIBBitsPtr(), Picture.DIBBitsPtr(), static_cast<size_t>(Picture.DIBSize())) != 0)
        std::abort();
    return 0;
}
