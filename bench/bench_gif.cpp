// The GIF LZW codec beside giflib on 1024 x 1024 frames: decoding (ours: joining the
// sub-blocks, then DecodeFrameLZW; giflib: DGifOpen and DGifSlurp of the whole file in memory)
// and encoding (ours: EncodeFrameLZW; giflib: EGifOpen, EGifPutLine row by row, EGifCloseFile,
// into memory). Both decoders read the same file, and both must give back the source's pixels.
//
// Our decoder stops where its read position equals the surface's size: no image's data is
// longer than its surface. Noise data is longer, and whether the position meets that value
// depends only on where the codes fall. Hence the inputs: the flat frame and noise of 32 colours
// (minimum code size 5, about 0.8 MB) as giflib writes them, and noise of 128 colours (code size
// 7, about 1.3 MB) as our encoder writes it, whose read position steps over the surface size.
// The file giflib writes of that noise meets it exactly, and there our decoder stops, as it
// must, at about 80% of the frame.
#include <benchmark/benchmark.h>
#include <gif_lib.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <random>
#include <vector>

#include "basGIFLZWDec.h"
#include "basGIFLZWEnc.h"
#include "clsGIF.h"
#include "clsDIB.h"

namespace {

constexpr int Side = 1024;

struct Frame {
    int CodeSize = 8;
    std::vector<uint8_t> Pixels;  // row by row
    clsDIB Surface;               // 8-bit top-down, the same pixels
    std::vector<uint8_t> File;    // a GIF of it, to be decoded
};

int WriteToVector(GifFileType* Gif, const GifByteType* Bytes, int Count)
{
    auto* Out = static_cast<std::vector<uint8_t>*>(Gif->UserData);
    Out->insert(Out->end(), Bytes, Bytes + Count);
    return Count;
}

struct MemoryReader {
    const std::vector<uint8_t>* File;
    size_t Pos;
};

int ReadFromMemory(GifFileType* Gif, GifByteType* Buffer, int Count)
{
    auto* Reader = static_cast<MemoryReader*>(Gif->UserData);
    const size_t Take = std::min(static_cast<size_t>(Count), Reader->File->size() - Reader->Pos);
    std::memcpy(Buffer, Reader->File->data() + Reader->Pos, Take);
    Reader->Pos += Take;
    return static_cast<int>(Take);
}

// giflib's whole writing of one frame into memory.
bool GiflibEncode(std::vector<uint8_t>& Pixels, int CodeSize, std::vector<uint8_t>& Out)
{
    Out.clear();
    int Error = 0;
    GifFileType* Gif = EGifOpen(&Out, WriteToVector, &Error);
    if (!Gif)
        return false;
    GifColorType Colors[256];
    for (int I = 0; I < (1 << CodeSize); ++I)
        Colors[I] = GifColorType{static_cast<GifByteType>(I), static_cast<GifByteType>(I), static_cast<GifByteType>(I)};
    ColorMapObject* Map = GifMakeMapObject(1 << CodeSize, Colors);
    bool Good = EGifPutScreenDesc(Gif, Side, Side, CodeSize, 0, Map) == GIF_OK &&
                EGifPutImageDesc(Gif, 0, 0, Side, Side, false, nullptr) == GIF_OK;
    for (int Y = 0; Good && Y < Side; ++Y)
        Good = EGifPutLine(Gif, Pixels.data() + static_cast<size_t>(Y) * Side, Side) == GIF_OK;
    GifFreeMapObject(Map);
    return EGifCloseFile(Gif, &Error) == GIF_OK && Good;
}

// A GIF of one image around our encoder's sub-blocks, with a grey global table.
std::vector<uint8_t> OurFile(const Frame& Of)
{
    std::vector<uint8_t> Blocks;
    basGIFLZWEnc::InitEncoderMasks();
    basGIFLZWEnc::EncodeFrameLZW(Blocks, Of.Surface, static_cast<uint8_t>(Of.CodeSize + 1), false);
    const uint8_t Bits = static_cast<uint8_t>(Of.CodeSize - 1);
    std::vector<uint8_t> File{'G', 'I', 'F', '8', '9', 'a', Side & 255, Side >> 8, Side & 255, Side >> 8,
                              static_cast<uint8_t>(0x80 | Bits << 4 | Bits), 0, 0};
    for (int I = 0; I < (1 << Of.CodeSize); ++I)
        File.insert(File.end(), 3, static_cast<uint8_t>(I));
    const uint8_t Descriptor[] = {0x2C, 0, 0, 0, 0, Side & 255, Side >> 8, Side & 255, Side >> 8, 0};
    File.insert(File.end(), std::begin(Descriptor), std::end(Descriptor));
    File.push_back(static_cast<uint8_t>(Of.CodeSize));
    File.insert(File.end(), Blocks.begin(), Blocks.end());
    File.push_back(0);
    File.push_back(0x3B);
    return File;
}

// One colour (42), or noise of Colors colours; the file written by giflib or by our encoder.
Frame* MakeFrame(int Colors, int CodeSize, bool OurEncoder)
{
    auto* Made = new Frame;
    Made->CodeSize = CodeSize;
    Made->Pixels.resize(static_cast<size_t>(Side) * Side, 42);
    if (Colors > 1) {
        std::mt19937 Random(1);
        for (uint8_t& Value : Made->Pixels)
            Value = static_cast<uint8_t>(Random() % static_cast<uint32_t>(Colors));
    }
    Made->Surface.CreateBlankDIB(Side, Side, 8, 0xFFFFFF, true);
    std::memcpy(Made->Surface.DIBBitsPtr(), Made->Pixels.data(), Made->Pixels.size());
    if (OurEncoder)
        Made->File = OurFile(*Made);
    else
        GiflibEncode(Made->Pixels, CodeSize, Made->File);
    return Made;
}

Frame& Flat()
{
    static Frame* Made = MakeFrame(1, 7, false);
    return *Made;
}

Frame& Noise32()
{
    static Frame* Made = MakeFrame(32, 5, false);
    return *Made;
}

Frame& Noise128()
{
    static Frame* Made = MakeFrame(128, 7, true);
    return *Made;
}

Frame& Noise256()
{
    static Frame* Made = MakeFrame(256, 8, true);
    return *Made;
}

// Where the image data of a file of one image, with a global table and no extensions, begins:
// the sub-blocks behind the minimum code size byte.
size_t FirstSubBlock(const std::vector<uint8_t>& File)
{
    size_t Pos = 13;
    if (File[10] & 0x80)
        Pos += 3u << ((File[10] & 7) + 1);
    while (File[Pos] != 0x2C)
        ++Pos;
    return Pos + 10 + 1;
}

void DecodeOurs(benchmark::State& State, Frame& Source)
{
    basGIFLZWDec::InitDecoderPowers();
    const size_t Start = FirstSubBlock(Source.File);
    const uint8_t MinCodeSize = Source.File[Start - 1];
    clsDIB Target;
    Target.CreateBlankDIB(Side, Side, 8, 0xFFFFFF, true);
    std::vector<uint8_t> Data;
    for (auto _ : State) {
        // The reader's gathering of the sub-blocks, then the decode.
        Data.assign(1, 0);
        for (size_t Pos = Start; Source.File[Pos] != 0; Pos += 1 + Source.File[Pos])
            Data.insert(Data.end(), Source.File.begin() + static_cast<ptrdiff_t>(Pos) + 1,
                        Source.File.begin() + static_cast<ptrdiff_t>(Pos) + 1 + Source.File[Pos]);
        basGIFLZWDec::DecodeFrameLZW(Target, false, MinCodeSize, Data);
        benchmark::ClobberMemory();
    }
    if (std::memcmp(Target.DIBBitsPtr(), Source.Pixels.data(), Source.Pixels.size()) != 0)
        State.SkipWithError("the decoded frame differs from the source");
    State.SetItemsProcessed(State.iterations() * Side * Side);
    State.counters["data_bytes"] = static_cast<double>(Source.File.size());
}

void DecodeGiflib(benchmark::State& State, Frame& Source)
{
    bool Same = true;
    for (auto _ : State) {
        MemoryReader Reader{&Source.File, 0};
        int Error = 0;
        GifFileType* Gif = DGifOpen(&Reader, ReadFromMemory, &Error);
        if (!Gif || DGifSlurp(Gif) != GIF_OK) {
            State.SkipWithError("giflib refused the file");
            break;
        }
        Same = std::memcmp(Gif->SavedImages[0].RasterBits, Source.Pixels.data(), Source.Pixels.size()) == 0;
        DGifCloseFile(Gif, &Error);
    }
    if (!Same)
        State.SkipWithError("giflib's frame differs from the source");
    State.SetItemsProcessed(State.iterations() * Side * Side);
}

void EncodeOurs(benchmark::State& State, Frame& Source)
{
    basGIFLZWEnc::InitEncoderMasks();
    std::vector<uint8_t> Out;
    for (auto _ : State) {
        Out.clear();
        basGIFLZWEnc::EncodeFrameLZW(Out, Source.Surface, static_cast<uint8_t>(Source.CodeSize + 1), false);
        benchmark::DoNotOptimize(Out.data());
    }
    State.SetItemsProcessed(State.iterations() * Side * Side);
    State.counters["data_bytes"] = static_cast<double>(Out.size());
}

void EncodeGiflib(benchmark::State& State, Frame& Source)
{
    std::vector<uint8_t> Out;
    for (auto _ : State) {
        if (!GiflibEncode(Source.Pixels, Source.CodeSize, Out)) {
            State.SkipWithError("giflib could not write");
            break;
        }
        benchmark::DoNotOptimize(Out.data());
    }
    State.SetItemsProcessed(State.iterations() * Side * Side);
    State.counters["data_bytes"] = static_cast<double>(Out.size());
}

void Decode_Flat_Ours(benchmark::State& State) { DecodeOurs(State, Flat()); }
void Decode_Flat_Giflib(benchmark::State& State) { DecodeGiflib(State, Flat()); }
void Decode_Noise32_Ours(benchmark::State& State) { DecodeOurs(State, Noise32()); }
void Decode_Noise32_Giflib(benchmark::State& State) { DecodeGiflib(State, Noise32()); }
void Decode_Noise128_Ours(benchmark::State& State) { DecodeOurs(State, Noise128()); }
void Decode_Noise128_Giflib(benchmark::State& State) { DecodeGiflib(State, Noise128()); }
void Encode_Flat_Ours(benchmark::State& State) { EncodeOurs(State, Flat()); }
void Encode_Flat_Giflib(benchmark::State& State) { EncodeGiflib(State, Flat()); }
void Encode_Noise128_Ours(benchmark::State& State) { EncodeOurs(State, Noise128()); }
void Encode_Noise128_Giflib(benchmark::State& State) { EncodeGiflib(State, Noise128()); }
void Encode_Noise256_Ours(benchmark::State& State) { EncodeOurs(State, Noise256()); }
void Encode_Noise256_Giflib(benchmark::State& State) { EncodeGiflib(State, Noise256()); }

// A 100-frame 400 x 300 animation of 32 colours as giflib writes it, each frame with its control
// block (our reader refuses later images without one): a diagonal gradient that moves, with grain.
const std::vector<uint8_t>& Animation()
{
    static const std::vector<uint8_t> File = [] {
        constexpr int W = 400, H = 300, Frames = 100;
        std::vector<uint8_t> Out;
        int Error = 0;
        GifFileType* Gif = EGifOpen(&Out, WriteToVector, &Error);
        ColorMapObject* Map = GifMakeMapObject(32, nullptr);
        for (int I = 0; I < 32; ++I)
            Map->Colors[I] = GifColorType{static_cast<GifByteType>(I * 8), static_cast<GifByteType>(255 - I * 8), 128};
        EGifSetGifVersion(Gif, true);
        EGifPutScreenDesc(Gif, W, H, 5, 0, Map);
        std::mt19937 Random(7);
        std::vector<GifPixelType> Row(W);
        for (int F = 0; F < Frames; ++F) {
            const GifByteType Control[4] = {0, 10, 0, 0};
            EGifPutExtension(Gif, GRAPHICS_EXT_FUNC_CODE, 4, Control);
            EGifPutImageDesc(Gif, 0, 0, W, H, false, nullptr);
            for (int Y = 0; Y < H; ++Y) {
                for (int X = 0; X < W; ++X)
                    Row[X] = static_cast<GifPixelType>(((X + Y + 4 * F) / 24 + (Random() % 4 == 0)) % 32);
                EGifPutLine(Gif, Row.data(), W);
            }
        }
        EGifCloseFile(Gif, &Error);
        GifFreeMapObject(Map);
        return Out;
    }();
    return File;
}

void Load100Frames_Ours(benchmark::State& State)
{
    for (auto _ : State) {
        State.PauseTiming();
        std::vector<uint8_t> Bytes = Animation();
        clsGIF Gif;
        State.ResumeTiming();
        if (Gif.LoadStream(Bytes) != 0 || Gif.FramesCount() != 100) {
            State.SkipWithError("the animation was refused");
            break;
        }
    }
    State.SetItemsProcessed(State.iterations() * 100 * 400 * 300);
}

void Load100Frames_Giflib(benchmark::State& State)
{
    for (auto _ : State) {
        MemoryReader Reader{&Animation(), 0};
        int Error = 0;
        GifFileType* Gif = DGifOpen(&Reader, ReadFromMemory, &Error);
        if (!Gif || DGifSlurp(Gif) != GIF_OK || Gif->ImageCount != 100) {
            State.SkipWithError("giflib refused the animation");
            break;
        }
        DGifCloseFile(Gif, &Error);
    }
    State.SetItemsProcessed(State.iterations() * 100 * 400 * 300);
}

} // namespace

BENCHMARK(Load100Frames_Ours)->Unit(benchmark::kMillisecond);
BENCHMARK(Load100Frames_Giflib)->Unit(benchmark::kMillisecond);
BENCHMARK(Decode_Flat_Ours)->Unit(benchmark::kMillisecond);
BENCHMARK(Decode_Flat_Giflib)->Unit(benchmark::kMillisecond);
BENCHMARK(Decode_Noise32_Ours)->Unit(benchmark::kMillisecond);
BENCHMARK(Decode_Noise32_Giflib)->Unit(benchmark::kMillisecond);
BENCHMARK(Decode_Noise128_Ours)->Unit(benchmark::kMillisecond);
BENCHMARK(Decode_Noise128_Giflib)->Unit(benchmark::kMillisecond);
BENCHMARK(Encode_Flat_Ours)->Unit(benchmark::kMillisecond);
BENCHMARK(Encode_Flat_Giflib)->Unit(benchmark::kMillisecond);
BENCHMARK(Encode_Noise128_Ours)->Unit(benchmark::kMillisecond);
BENCHMARK(Encode_Noise128_Giflib)->Unit(benchmark::kMillisecond);
BENCHMARK(Encode_Noise256_Ours)->Unit(benchmark::kMillisecond);
BENCHMARK(Encode_Noise256_Giflib)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
