// The PCX reader on a whole file in memory and the drawing of what it decodes. A picture that
// loads is written out, run-length encoded and raw, and read back, and must come back the same.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "clsDIB.h"
#include "clsPCX.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
    // Large enough for every seed, small enough to keep each input quick.
    clsPCX::MaxPixels = 1 << 18;
    clsPCX Reader;
    if (!Reader.LoadPCXBytes(Data, Size))
        return 0;
    clsDIB Target;
    if (Target.CreateBlankDIB(48, 48, 32, 0x808080, true))
        Reader.DrawPCX(Target.DIBhDC(), -3, 5);
    clsDIB& Picture = Reader.Picture();
    for (const int16_t Compress : {int16_t(-1), int16_t(0)}) {
        std::vector<uint8_t> File;
        if (!clsPCX::PCXFileBytes(Picture.DIBhDC(), Picture.DIBWidth(), Picture.DIBHeight(), Compress, File))
            std::abort();
        clsPCX Back;
        if (!Back.LoadPCXBytes(File.data(), File.size()) ||
            std::memcmp(Back.Picture().DIBBitsPtr(), Picture.DIBBitsPtr(), static_cast<size_t>(Picture.DIBSize())) != 0)
            std::abort();
    }
    return 0;
}
