// Speed of the drawing tools' pixel work on 32-bit top-down pictures, as the canvas holds them:
// the flood fill of a 4000 x 4000 area of one colour, solid and with a hatch (whose gaps keep the
// flooded colour, so the fill leans on its record of finished runs), and round brush dabs of
// size 20 at full strength and translucent. "Mpixels" is the rate in millions of pixels painted a second.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "basBrush.h"
#include "basFill.h"
#include "clsDIB.h"

namespace {

constexpr int Side = 4000;
constexpr double AreaMegapixels = double(Side) * Side / 1e6;

void FloodFillSolid(benchmark::State& State)
{
    clsDIB Dib;
    if (!Dib.CreateBlankDIB(Side, Side, 32, 0xFFFFFF, true)) {
        State.SkipWithError("no surface");
        return;
    }
    basFill::FillBrush ToBlack, ToWhite;
    basFill::MakeFillBrush(0, 0x000000, 0xFFFFFF, nullptr, ToBlack);
    basFill::MakeFillBrush(0, 0xFFFFFF, 0x000000, nullptr, ToWhite);
    // Each round fills the whole area back to the other colour, so no round needs a reset.
    bool White = true;
    for (auto _ : State) {
        const QRect Box = basFill::ExtFloodFill(Dib, Side / 2, Side / 2, White ? 0xFFFFFF : 0x000000,
                                                White ? ToBlack : ToWhite);
        benchmark::DoNotOptimize(Box);
        White = !White;
    }
    State.SetItemsProcessed(State.iterations() * int64_t(Side) * Side);
    State.counters["Mpixels"] = benchmark::Counter(AreaMegapixels, benchmark::Counter::kIsIterationInvariantRate);
}

void FloodFillHatch(benchmark::State& State)
{
    clsDIB Dib;
    if (!Dib.CreateBlankDIB(Side, Side, 32, 0xFFFFFF, true)) {
        State.SkipWithError("no surface");
        return;
    }
    const size_t Bytes = size_t(Dib.DIBSize());
    const std::vector<uint8_t> Blank(Dib.DIBBitsPtr(), Dib.DIBBitsPtr() + Bytes);
    basFill::FillBrush Cross;
    basFill::MakeFillBrush(8, 0x000000, 0xFFFFFF, nullptr, Cross);
    for (auto _ : State) {
        State.PauseTiming();
        std::memcpy(Dib.DIBBitsPtr(), Blank.data(), Bytes);
        State.ResumeTiming();
        const QRect Box = basFill::ExtFloodFill(Dib, Side / 2, Side / 2, 0xFFFFFF, Cross);
        benchmark::DoNotOptimize(Box);
    }
    State.SetItemsProcessed(State.iterations() * int64_t(Side) * Side);
    State.counters["Mpixels"] = benchmark::Counter(AreaMegapixels, benchmark::Counter::kIsIterationInvariantRate);
}

void RoundDab(benchmark::State& State)
{
    const int Percent = static_cast<int>(State.range(0));
    clsDIB Dib;
    if (!Dib.CreateBlankDIB(1000, 1000, 32, 0xFFFFFF, true)) {
        State.SkipWithError("no surface");
        return;
    }
    // A stroke across the picture, so that translucent dabs keep blending with fresh pixels.
    int X = 0;
    for (auto _ : State) {
        const QRect Box = basBrush::PaintBrushDab(Dib, 20 + X, 500, 20, Percent, 1, 0x3366CC, 0);
        benchmark::DoNotOptimize(Box);
        X = (X + 1) % 960;
    }
    // Size 20 gives r = 10: the disc holds 317 pixels.
    State.SetItemsProcessed(State.iterations());
    State.counters["Mpixels"] = benchmark::Counter(317e-6, benchmark::Counter::kIsIterationInvariantRate);
}

} // namespace

BENCHMARK(FloodFillSolid)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(FloodFillHatch)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(RoundDab)->Arg(100)->Arg(50)->Unit(benchmark::kNanosecond)->MinTime(1.0);

BENCHMARK_MAIN();
