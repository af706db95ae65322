// Speed of the paint document's undo history on a 15-megapixel picture (5000 x 3000, 32 bits,
// 60 MB a state) in the temporary folder: the cost of keeping one state after a change, once
// the history is full so that every state also shifts the older ones down; the cost of one
// undo or redo; and the peak resident memory before and after 50 states, which must not grow
// with the number of states kept.
#include <benchmark/benchmark.h>

#include <QDir>
#include <cstring>
#include <sys/resource.h>
#include <unistd.h>

#include "UndoHistory.h"
#include "basTsMainPro.h"
#include "clsDIB.h"

namespace {

constexpr int Width = 5000;
constexpr int Height = 3000;

double PeakRssMB()
{
    rusage Usage{};
    getrusage(RUSAGE_SELF, &Usage);
    return double(Usage.ru_maxrss) / 1024.0; // ru_maxrss is in kilobytes
}

// A picture of many colours, so nothing about it is cheaper than a real one.
bool MakePicture(clsDIB& Dib)
{
    if (!Dib.CreateBlankDIB(Width, Height, 32, 0xFFFFFF, true, true))
        return false;
    auto* Pixel = reinterpret_cast<uint32_t*>(Dib.DIBBitsPtr());
    for (int64_t I = 0; I < int64_t(Width) * Height; ++I)
        Pixel[I] = uint32_t(I * 2654435761u);
    return true;
}

// A history in the temporary folder, under a name no running program uses, and its picture;
// false (the benchmark skipped) when the picture cannot be made.
bool Prepare(benchmark::State& State, UndoHistory& History, clsDIB& Picture)
{
    if (basTsMainPro::TempFolder.isEmpty())
        basTsMainPro::TempFolder = QDir::tempPath() + QLatin1Char('/');
    History.UndoBase = basTsMainPro::TempFolder + QStringLiteral("bench%1_").arg(getpid());
    if (MakePicture(Picture))
        return true;
    State.SkipWithError("no surface");
    return false;
}

void SaveUndoState(benchmark::State& State)
{
    clsDIB Picture;
    UndoHistory History;
    if (!Prepare(State, History, Picture))
        return;
    for (int I = 0; I < UndoHistory::MaxStates; ++I)
        History.SaveUndoState(Picture);
    for (auto _ : State) {
        Picture.DIBBitsPtr()[0] ^= 1; // a change
        History.SaveUndoState(Picture);
    }
    State.SetBytesProcessed(State.iterations() * int64_t(Picture.DIBSize()));
    History.DeleteAll();
}

void UndoRedo(benchmark::State& State)
{
    clsDIB Picture;
    UndoHistory History;
    if (!Prepare(State, History, Picture))
        return;
    History.SaveUndoState(Picture);
    History.SaveUndoState(Picture);
    bool Back = true;
    for (auto _ : State) {
        if (!(Back ? History.Undo(Picture) : History.Redo(Picture))) {
            State.SkipWithError("state not loaded");
            break;
        }
        Back = !Back;
    }
    History.DeleteAll();
}

void FiftyStatesMemory(benchmark::State& State)
{
    clsDIB Picture;
    UndoHistory History;
    if (!Prepare(State, History, Picture))
        return;
    History.SaveUndoState(Picture);
    const double Before = PeakRssMB();
    for (auto _ : State)
        for (int I = 0; I < 50; ++I) {
            Picture.DIBBitsPtr()[0] ^= 1;
            History.SaveUndoState(Picture);
        }
    State.counters["PeakRssBeforeMB"] = Before;
    State.counters["PeakRssAfterMB"] = PeakRssMB();
    History.DeleteAll();
}

} // namespace

// The memory run comes first, so that no other run's peak hides its own.
BENCHMARK(FiftyStatesMemory)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();
BENCHMARK(SaveUndoState)->Unit(benchmark::kMillisecond)->MinTime(2.0)->UseRealTime();
BENCHMARK(UndoRedo)->Unit(benchmark::kMillisecond)->MinTime(2.0)->UseRealTime();

BENCHMARK_MAIN();
