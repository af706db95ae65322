// The GIF reader on a whole stream, then what the editor does with what it gives: masks,
// drawing, moving and deleting frames, and a save that is read back.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "clsDIB.h"
#include "clsGIF.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
    std::vector<uint8_t> Bytes(Data, Data + Size);
    clsGIF Gif;
    if (Gif.LoadStream(Bytes) != 0)
        return 0;
    Gif.Remask_All_Frames();
    clsDIB Target;
    if (Target.CreateBlankDIB(64, 64, 32, 0x808080, true, true))
        for (int16_t F = 1; F <= Gif.FramesCount(); ++F)
            Gif.FrameDraw(Target.DIBhDC(), F, -1, 2, true, F & 1);
    Gif.UpdateLocalPalettePerGlobal(1);
    Gif.FrameMoveTo(1, Gif.FramesCount());
    Gif.FrameSwap(1, 2);
    const std::string Path = "/tmp/fuzz_gif_" + std::to_string(getpid()) + ".gif";
    if (Gif.Save(Path, 0, Gif.CommentText())) {
        clsGIF Again;
        Again.LoadFromGIFFile(Path);
    }
    std::remove(Path.c_str());
    Gif.FrameDelete(1);
    Gif.FrameInsertBlank(1, 3, 2);
    return 0;
}
