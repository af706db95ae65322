#include <benchmark/benchmark.h>

#include <Magick++.h>
#include <QBuffer>
#include <QCoreApplication>
#include <QImage>
#include <QImageReader>

#include <random>
#include <vector>

#include "clsDIB.h"
#include "clsPCX.h"
#include "clsTGA.h"

// Whole-file reading and writing of 2048 x 2048 24-bit pictures in memory, in megapixels a
// second: a photo (smooth gradients and noise, where run-length encoding finds few runs) and a
// drawing (flat areas and thin lines). The files are ours: an uncompressed 24-bit TGA and a
// run-length encoded three-plane PCX, read by every reader of the format. Ours read into a 32-bit
// surface (LoadTGABytes, LoadPCXBytes) and write from one (TGAFileBytes, PCXFileBytes
// compressed). Beside them: Qt's TGA reader (QImageReader; Qt has no TGA writer and no PCX)
// and ImageMagick's library (Magick++ blobs into its own 16-bit pixels, held to one thread as
// ours runs on one).
namespace {

constexpr int Side = 2048;

struct Fixture {
    clsDIB Surface;
    std::vector<uint8_t> Tga, Pcx;
};

Fixture& Picture(int Kind)
{
    static Fixture Pictures[2];
    Fixture& F = Pictures[Kind];
    if (F.Surface.DIBhDC())
        return F;
    F.Surface.CreateBlankDIB(Side, Side, 32, 0, true);
    std::mt19937 Noise(7);
    for (int Y = 0; Y < Side; ++Y) {
        uint8_t* P = F.Surface.DIBhDC()->Row(Y);
        for (int X = 0; X < Side; ++X, P += 4) {
            if (Kind == 0) {
                P[0] = static_cast<uint8_t>(X / 8 + Noise() % 9);
                P[1] = static_cast<uint8_t>(Y / 8 + Noise() % 9);
                P[2] = static_cast<uint8_t>((X + Y) / 16 + Noise() % 9);
            } else {
                const bool Line = X % 97 == 0 || Y % 131 == 0;
                P[0] = Line ? 0 : static_cast<uint8_t>(X / 256 * 30);
                P[1] = Line ? 0 : static_cast<uint8_t>(Y / 256 * 30);
                P[2] = Line ? 0 : 200;
            }
        }
    }
    clsTGA::TGAFileBytes(F.Surface.DIBhDC(), Side, Side, F.Tga);
    clsPCX::PCXFileBytes(F.Surface.DIBhDC(), Side, Side, -1, F.Pcx);
    return F;
}

void Rate(benchmark::State& State, size_t FileBytes)
{
    State.counters["MP"] = benchmark::Counter(double{Side} * Side / 1e6, benchmark::Counter::kIsIterationInvariantRate);
    State.counters["file_KB"] = static_cast<double>(FileBytes) / 1024.0;
    State.SetItemsProcessed(State.iterations() * int64_t{Side} * Side);
}

void BM_LoadTGAOurs(benchmark::State& State)
{
    const Fixture& F = Picture(static_cast<int>(State.range(0)));
    for (auto _ : State) {
        clsTGA Reader;
        if (!Reader.LoadTGABytes(F.Tga.data(), F.Tga.size()))
            State.SkipWithError("our reader failed");
        benchmark::DoNotOptimize(Reader.Picture().DIBBitsPtr());
    }
    Rate(State, F.Tga.size());
}

void BM_LoadTGAQt(benchmark::State& State)
{
    const Fixture& F = Picture(static_cast<int>(State.range(0)));
    // Qt reads only files with the TGA 2.0 footer, which ours do not write.
    QByteArray Bytes(reinterpret_cast<const char*>(F.Tga.data()), static_cast<qsizetype>(F.Tga.size()));
    Bytes.append(QByteArray(8, '\0') + QByteArray("TRUEVISION-XFILE.", 18));
    for (auto _ : State) {
        QBuffer Buffer;
        Buffer.setData(Bytes);
        Buffer.open(QIODevice::ReadOnly);
        QImageReader Reader(&Buffer, "tga");
        const QImage Image = Reader.read();
        if (Image.width() != Side)
            State.SkipWithError("Qt's reader failed");
        benchmark::DoNotOptimize(Image.constBits());
    }
    Rate(State, F.Tga.size());
}

void MagickLoad(benchmark::State& State, const std::vector<uint8_t>& File, const char* Format)
{
    const Magick::Blob Blob(File.data(), File.size());
    for (auto _ : State) {
        Magick::Image Image;
        Image.magick(Format);
        Image.read(Blob);
        if (Image.columns() != Side)
            State.SkipWithError("ImageMagick failed");
        benchmark::DoNotOptimize(Image.getConstPixels(0, 0, 1, 1));
    }
    Rate(State, File.size());
}

void MagickSave(benchmark::State& State, const Fixture& F, const char* Format)
{
    Magick::Image Image;
    Image.magick("TGA");
    Image.read(Magick::Blob(F.Tga.data(), F.Tga.size()));
    Image.magick(Format);
    Image.compressType(std::string(Format) == "PCX" ? Magick::RLECompression : Magick::NoCompression);
    size_t Bytes = 0;
    for (auto _ : State) {
        Magick::Blob Out;
        Image.write(&Out);
        Bytes = Out.length();
    }
    Rate(State, Bytes);
}

void BM_LoadTGAMagick(benchmark::State& State) { MagickLoad(State, Picture(static_cast<int>(State.range(0))).Tga, "TGA"); }
void BM_LoadPCXMagick(benchmark::State& State) { MagickLoad(State, Picture(static_cast<int>(State.range(0))).Pcx, "PCX"); }
void BM_SaveTGAMagick(benchmark::State& State) { MagickSave(State, Picture(static_cast<int>(State.range(0))), "TGA"); }
void BM_SavePCXMagick(benchmark::State& State) { MagickSave(State, Picture(static_cast<int>(State.range(0))), "PCX"); }

void BM_LoadPCXOurs(benchmark::State& State)
{
    const Fixture& F = Picture(static_cast<int>(State.range(0)));
    for (auto _ : State) {
        clsPCX Reader;
        if (!Reader.LoadPCXBytes(F.Pcx.data(), F.Pcx.size()))
            State.SkipWithError("our reader failed");
        benchmark::DoNotOptimize(Reader.Picture().DIBBitsPtr());
    }
    Rate(State, F.Pcx.size());
}

void BM_SaveTGAOurs(benchmark::State& State)
{
    Fixture& F = Picture(static_cast<int>(State.range(0)));
    std::vector<uint8_t> File;
    for (auto _ : State)
        clsTGA::TGAFileBytes(F.Surface.DIBhDC(), Side, Side, File);
    Rate(State, File.size());
}

void BM_SavePCXOurs(benchmark::State& State)
{
    Fixture& F = Picture(static_cast<int>(State.range(0)));
    std::vector<uint8_t> File;
    for (auto _ : State)
        clsPCX::PCXFileBytes(F.Surface.DIBhDC(), Side, Side, -1, File);
    Rate(State, File.size());
}

// Argument 0 is the photo, 1 the drawing.
BENCHMARK(BM_LoadTGAOurs)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadTGAQt)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadTGAMagick)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SaveTGAOurs)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SaveTGAMagick)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadPCXOurs)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadPCXMagick)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SavePCXOurs)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SavePCXMagick)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication App(argc, argv);
    Magick::InitializeMagick(*argv);
    Magick::ResourceLimits::thread(1);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
