// The PNG reader on a whole file in memory, in image mode and in tag mode, and the drawing of
// what it decodes. Mutated files mostly fail their CRCs, so each input is also read with every
// chunk's CRC made right, to reach the decoder behind the walker.
#include <cstdint>
#include <vector>

#include "clsCRC.h"
#include "clsDIB.h"
#include "clsPNG.h"

namespace {

void Decode(const std::vector<uint8_t>& File)
{
    clsPNG Png;
    if (Png.OpenPNGBytes(File.data(), File.size()) == 0) {
        clsDIB Target;
        if (Target.CreateBlankDIB(48, 48, 32, 0x808080, true))
            Png.DrawPNG(Target.DIBhDC(), -1, -1, 3, 5);
    }
    Png.ClearUp();
    Png.OpenPNGBytes(File.data(), File.size(), true);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
    // Large enough for every seed, small enough to keep each input quick.
    clsPNG::MaxPixels = 4LL * 1024 * 1024;
    std::vector<uint8_t> File(Data, Data + Size);
    Decode(File);
    bool Changed = false;
    for (size_t At = 8; At + 12 <= File.size();) {
        const uint64_t Length = (uint64_t{File[At]} << 24) | (File[At + 1] << 16) | (File[At + 2] << 8) | File[At + 3];
        if (Length > File.size() - At - 12)
            break;
        const uint32_t Crc = clsCRC::Crc32(&File[At + 4], static_cast<size_t>(Length) + 4);
        uint8_t* Stored = &File[At + 8 + Length];
        const uint8_t Right[4] = {static_cast<uint8_t>(Crc >> 24), static_cast<uint8_t>(Crc >> 16),
                                  static_cast<uint8_t>(Crc >> 8), static_cast<uint8_t>(Crc)};
        for (int I = 0; I < 4; ++I) {
            Changed |= Stored[I] != Right[I];
            Stored[I] = Right[I];
        }
        At += 12 + Length;
    }
    if (Changed)
        Decode(File);
    return 0;
}
