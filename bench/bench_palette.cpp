// Colour reduction of a 1024 x 1024 photo-like picture to 256 colours: the octree palette, the
// dithering to it, and both together, beside ImageMagick's "convert -colors 256" run as a whole
// process on the same picture (the tool a user would reach for).
#include <benchmark/benchmark.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <algorithm>
#include <cmath>
#include <cstring>

#include "clsDIB.h"
#include "clsPal.h"
#include "clsPalDither.h"

namespace {

constexpr int Side = 1024;

// Gradients over the whole colour range with waves and a little grain, made once.
const clsDIB& Photo()
{
    static clsDIB* Made = [] {
        auto* Dib = new clsDIB;
        Dib->CreateBlankDIB(Side, Side, 32, 0xFFFFFF, false, true);
        for (int Y = 0; Y < Side; ++Y) {
            auto* Row = reinterpret_cast<uint32_t*>(Dib->DIBhDC()->Row(Y));
            for (int X = 0; X < Side; ++X) {
                const uint32_t Grain = (static_cast<uint32_t>(X) * 2654435761u ^ static_cast<uint32_t>(Y) * 40503u) >> 28;
                const int R = std::clamp(static_cast<int>(255.0 * X / Side + 20 * std::sin(Y * 0.01)) + int(Grain), 0, 255);
                const int G = std::clamp(static_cast<int>(128 + 110 * std::sin(X * 0.004) * std::cos(Y * 0.006)), 0, 255);
                const int B = std::clamp(static_cast<int>(255.0 * Y / Side) - int(Grain), 0, 255);
                Row[X] = static_cast<uint32_t>(R) << 16 | static_cast<uint32_t>(G) << 8 | static_cast<uint32_t>(B);
            }
        }
        return Dib;
    }();
    return *Made;
}

// A fresh copy for routines that change the surface; made outside the timing.
void CopyPhoto(clsDIB& Into)
{
    Into.CreateBlankDIB(Side, Side, 32, 0xFFFFFF, false, true);
    std::memcpy(Into.DIBBitsPtr(), Photo().DIBBitsPtr(), static_cast<size_t>(Side) * Side * 4);
}

void CreateOptimal(benchmark::State& State)
{
    clsDIB Surface;
    CopyPhoto(Surface);
    for (auto _ : State) {
        clsPal Pal;
        Pal.CreateOptimal(Surface, 256, 8);
        benchmark::DoNotOptimize(Pal.MaxCount());
    }
}

void DitherToPalette256(benchmark::State& State)
{
    clsDIB Surface;
    clsPal Pal;
    CopyPhoto(Surface);
    Pal.CreateOptimal(Surface, 256, 8);
    for (auto _ : State) {
        State.PauseTiming();
        CopyPhoto(Surface);
        State.ResumeTiming();
        clsPalDither Dither;
        Dither.DitherToPalette256(Surface, Pal);
    }
}

void ReduceAndDither(benchmark::State& State)
{
    clsDIB Surface;
    for (auto _ : State) {
        State.PauseTiming();
        CopyPhoto(Surface);
        State.ResumeTiming();
        clsPal Pal;
        clsPalDither Dither;
        Pal.CreateOptimal(Surface, 256, 8);
        Dither.DitherToPalette256(Surface, Pal);
    }
}

// The whole ImageMagick process, reading a raw PPM and writing a BMP as our figures do not: its
// time bounds its reduction's from above, which is the comparison users make.
void PeerImageMagick(benchmark::State& State)
{
    const QString In = QDir::temp().filePath("tessavo-bench-palette-in.ppm");
    const QString Out = QDir::temp().filePath("tessavo-bench-palette-out.bmp");
    {
        QFile File(In);
        if (!File.open(QIODevice::WriteOnly)) {
            State.SkipWithError("no temporary folder");
            return;
        }
        QByteArray Ppm = "P6\n" + QByteArray::number(Side) + " " + QByteArray::number(Side) + "\n255\n";
        for (int Y = 0; Y < Side; ++Y) {
            const auto* Row = reinterpret_cast<const uint32_t*>(Photo().DIBhDC()->Row(Y));
            for (int X = 0; X < Side; ++X) {
                Ppm += char(Row[X] >> 16);
                Ppm += char(Row[X] >> 8);
                Ppm += char(Row[X]);
            }
        }
        File.write(Ppm);
    }
    for (auto _ : State) {
        if (QProcess::execute("convert", {In, "-colors", "256", Out}) != 0) {
            State.SkipWithError("ImageMagick's convert failed or is not installed");
            break;
        }
    }
    QFile::remove(In);
    QFile::remove(Out);
}

} // namespace

int main(int argc, char** argv)
{
    Photo();
    for (auto [Name, Function] : {std::pair{"CreateOptimal_256", &CreateOptimal},
                                  std::pair{"DitherToPalette256", &DitherToPalette256},
                                  std::pair{"CreateOptimal_and_DitherToPalette256", &ReduceAndDither},
                                  std::pair{"peer_ImageMagick_convert_colors_256_process", &PeerImageMagick}})
        benchmark::RegisterBenchmark(Name, Function)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(1.0);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
