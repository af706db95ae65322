// The icon reader on a whole file in memory, then every way of drawing each image, the
// searches, and the writer's bytes read back.
#include <cstdint>
#include <vector>

#include "clsDIB.h"
#include "clsICO.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
    // Large enough for every seed, small enough to keep each input quick.
    clsICO::MaxTotalBytes = 16LL * 1024 * 1024;
    clsICO Ico;
    if (!Ico.OpenICOBytes(Data, Size))
        return 0;
    clsDIB Deep, Shallow;
    if (!Deep.CreateBlankDIB(40, 40, 32, 0x808080, false, true) || !Shallow.CreateBlankDIB(24, 24, 8, 0xFFFFFF, true))
        return 0;
    std::vector<int16_t> All;
    for (int16_t I = 0; I < Ico.IconCount(); ++I) {
        Ico.DrawIcon_To_DIB(Deep, I, -3, 5);
        Ico.DrawIcon_To_DIB(Shallow, I, 2, -1);
        Ico.DrawImage(Deep.DIBhDC(), I, 0, 0);
        Ico.DrawMask(Shallow.DIBhDC(), I, 1, 1);
        Ico.SeekIcon_Size(Ico.IconWidth(I), Ico.IconHeight(I));
        All.push_back(I);
    }
    std::vector<uint8_t> File;
    if (Ico.BuildICO(All, File)) {
        clsICO Again;
        Again.OpenICOBytes(File.data(), File.size());
    }
    return 0;
}
