// The resource reader on a whole file in memory, then every group as an icon file and as its
// large and small image, each opened by the icon reader.
#include <cstdint>
#include <vector>

#include "basPEResource.h"
#include "clsICO.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
    clsICO::MaxTotalBytes = 16LL * 1024 * 1024;
    basPEResource::IconResources Res;
    if (!basPEResource::ReadIconResourcesBytes(std::vector<uint8_t>(Data, Data + Size), Res))
        return 0;
    std::vector<uint8_t> Bytes;
    for (const auto& [Id, Span] : Res.Icons)
        basPEResource::IconImageBytes(Res, Id, Bytes);
    for (int32_t G = 0; G < basPEResource::IconGroupCount(Res); ++G) {
        clsICO Ico;
        if (basPEResource::GroupIconFile(Res, G, Bytes))
            Ico.OpenICOBytes(Bytes.data(), Bytes.size());
        for (const bool Large : {true, false})
            if (basPEResource::ExtractIconFile(Res, G, Large, Bytes))
                Ico.OpenICOBytes(Bytes.data(), Bytes.size());
    }
    return 0;
}
