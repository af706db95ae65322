// Speed of the heavy surface routines on a 4096 x 4096 32-bit photo-like picture, each beside
// what a user would otherwise reach for, and a plain memcpy of the same 64 MB as the limit of
// the machine. Every figure counts the 16.8 million pixels of the 4096 x 4096 surface, so the
// rates read as pixels per second throughout (MP/s is the same in millions). Rates come from
// the CPU time of the whole process, so work handed to a library's worker threads counts, and
// other programs running on the machine disturb the figures less than wall time would.
#include <benchmark/benchmark.h>

#include <QFile>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QTransform>
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <unordered_set>
#include <vector>

extern "C" {
#include <libswscale/swscale.h>
}

#include "clsDIB.h"

namespace {

constexpr int Side = 4096;
constexpr int64_t Pixels = int64_t(Side) * Side;
constexpr double MinSeconds = 1.0;

// A cheap deterministic hash for the noise, so every run measures the same picture.
uint32_t Hash(uint32_t X, uint32_t Y, uint32_t Seed)
{
    uint32_t H = X * 0x9E3779B1u ^ Y * 0x85EBCA77u ^ Seed * 0xC2B2AE3Du;
    H ^= H >> 15;
    H *= 0x2C1B3C6Du;
    H ^= H >> 12;
    H *= 0x297A2D39u;
    H ^= H >> 15;
    return H;
}

int Noise(uint32_t X, uint32_t Y, uint32_t Seed, int Amplitude)
{
    return static_cast<int>(Hash(X, Y, Seed) % static_cast<uint32_t>(2 * Amplitude + 1)) - Amplitude;
}

// Smooth gradients and waves with mild noise, as pixel words of a 32-bit surface (blue,
// green, red, alpha in memory). Red stays within 0..127 and blue within 0..191, so the
// picture holds at most 24,576 red and blue pairs: the colour census, which stops at
// 32,767 pairs, then runs over the whole surface. Green varies freely.
std::vector<uint32_t> MakePhoto(uint32_t Seed)
{
    std::vector<double> WaveX(Side), WaveY(Side);
    const double Phase = Seed * 0.7;
    for (int I = 0; I < Side; ++I) {
        WaveX[I] = std::sin(I * 0.0021 + Phase);
        WaveY[I] = std::cos(I * 0.0017 - Phase);
    }
    std::vector<uint32_t> Words(static_cast<size_t>(Pixels));
    for (int Y = 0; Y < Side; ++Y)
        for (int X = 0; X < Side; ++X) {
            const double U = static_cast<double>(X) / Side, V = static_cast<double>(Y) / Side;
            const int R = std::clamp(static_cast<int>(12 + 96 * U + 10 * WaveY[Y]) + Noise(X, Y, Seed, 3), 0, 127);
            const int B = std::clamp(static_cast<int>(24 + 140 * V + 14 * WaveX[X]) + Noise(X, Y, Seed + 1, 3), 0, 191);
            const int G = std::clamp(static_cast<int>(128 + 80 * WaveX[X] * WaveY[Y] + 40 * (U - V)) +
                                         Noise(X, Y, Seed + 2, 6),
                                     0, 255);
            Words[static_cast<size_t>(Y) * Side + X] =
                0xFF000000u | static_cast<uint32_t>(R) << 16 | static_cast<uint32_t>(G) << 8 | static_cast<uint32_t>(B);
        }
    return Words;
}

const std::vector<uint32_t>& PhotoA()
{
    static const std::vector<uint32_t> Words = MakePhoto(1);
    return Words;
}

const std::vector<uint32_t>& PhotoB()
{
    static const std::vector<uint32_t> Words = MakePhoto(2);
    return Words;
}

bool MakeSurface(clsDIB& Dib, const std::vector<uint32_t>& Photo)
{
    if (!Dib.CreateBlankDIB(Side, Side, 32, 0xFFFFFF, false, true))
        return false;
    std::memcpy(Dib.DIBBitsPtr(), Photo.data(), static_cast<size_t>(Pixels) * 4);
    return true;
}

QImage MakeImage(const std::vector<uint32_t>& Photo)
{
    QImage Image(Side, Side, QImage::Format_RGB32);
    std::memcpy(Image.bits(), Photo.data(), static_cast<size_t>(Pixels) * 4);
    return Image;
}

void CountPixels(benchmark::State& State)
{
    State.SetItemsProcessed(State.iterations() * Pixels);
    State.counters["MP/s"] =
        benchmark::Counter(static_cast<double>(State.iterations()) * Pixels / 1e6, benchmark::Counter::kIsRate);
}

QString OutputFile()
{
    return QFile::exists("/dev/shm") ? QStringLiteral("/dev/shm/tessavo_bench.bmp")
                                     : QStringLiteral("/tmp/tessavo_bench.bmp");
}

// ---- BlendIn: 50% of a second picture into the first. The target is restored before
// each pass, out of the timing, so every pass blends the same pictures.

void BlendIn(benchmark::State& State)
{
    clsDIB Target, Source;
    if (!MakeSurface(Target, PhotoA()) || !MakeSurface(Source, PhotoB()))
        return State.SkipWithError("surface not created");
    for (auto _ : State) {
        State.PauseTiming();
        std::memcpy(Target.DIBBitsPtr(), PhotoA().data(), static_cast<size_t>(Pixels) * 4);
        State.ResumeTiming();
        Target.BlendIn(Target, Source, 50, -1);
        benchmark::ClobberMemory();
    }
    CountPixels(State);
}

void BlendInPeerQPainter(benchmark::State& State)
{
    QImage Target = MakeImage(PhotoA());
    const QImage Source = MakeImage(PhotoB());
    for (auto _ : State) {
        State.PauseTiming();
        std::memcpy(Target.bits(), PhotoA().data(), static_cast<size_t>(Pixels) * 4);
        State.ResumeTiming();
        QPainter Painter(&Target);
        Painter.setOpacity(0.5);
        Painter.drawImage(0, 0, Source);
        Painter.end();
        benchmark::ClobberMemory();
    }
    CountPixels(State);
}

// ---- RotateDIB mode 3, a quarter turn clockwise; the square surface keeps its size.

void RotateDIB3(benchmark::State& State)
{
    clsDIB Dib;
    if (!MakeSurface(Dib, PhotoA()))
        return State.SkipWithError("surface not created");
    for (auto _ : State) {
        Dib.RotateDIB(Dib, 3);
        benchmark::DoNotOptimize(Dib.DIBBitsPtr());
        benchmark::ClobberMemory();
    }
    if (Dib.DIBWidth() != Side || Dib.DIBHeight() != Side)
        State.SkipWithError("rotation changed the size");
    CountPixels(State);
}

void RotatePeerQImage(benchmark::State& State)
{
    const QImage Image = MakeImage(PhotoA());
    for (auto _ : State) {
        QImage Turned = Image.transformed(QTransform().rotate(90));
        benchmark::DoNotOptimize(Turned.constBits());
        benchmark::ClobberMemory();
    }
    CountPixels(State);
}

// ---- Colour census. Both peers count distinct 24-bit colours of the same picture; the
// bitmap count also checks that the census saw the whole surface.

int64_t BitmapCount(const uint32_t* Words, int64_t Count, std::vector<uint64_t>& Seen)
{
    std::fill(Seen.begin(), Seen.end(), 0);
    for (int64_t I = 0; I < Count; ++I) {
        const uint32_t Key = Words[I] & 0xFFFFFF;
        Seen[Key >> 6] |= uint64_t(1) << (Key & 63);
    }
    int64_t Distinct = 0;
    for (const uint64_t Word : Seen)
        Distinct += std::popcount(Word);
    return Distinct;
}

void CountColorsDIB(benchmark::State& State)
{
    clsDIB Dib;
    if (!MakeSurface(Dib, PhotoA()))
        return State.SkipWithError("surface not created");
    std::vector<uint64_t> Seen(size_t(1) << 18);
    const int64_t Expected = BitmapCount(PhotoA().data(), Pixels, Seen);
    int32_t Count = 0;
    for (auto _ : State) {
        Count = Dib.CountColorsDIB(Dib);
        benchmark::DoNotOptimize(Count);
    }
    if (Count != Expected)
        State.SkipWithError("the census did not count every colour");
    State.counters["Colours"] = static_cast<double>(Count);
    CountPixels(State);
}

void CountPeerBitmap(benchmark::State& State)
{
    std::vector<uint64_t> Seen(size_t(1) << 18);
    int64_t Count = 0;
    for (auto _ : State) {
        Count = BitmapCount(PhotoA().data(), Pixels, Seen);
        benchmark::DoNotOptimize(Count);
    }
    State.counters["Colours"] = static_cast<double>(Count);
    CountPixels(State);
}

void CountPeerUnorderedSet(benchmark::State& State)
{
    const std::vector<uint32_t>& Words = PhotoA();
    size_t Count = 0;
    for (auto _ : State) {
        std::unordered_set<uint32_t> Colours;
        for (const uint32_t Word : Words)
            Colours.insert(Word & 0xFFFFFF);
        Count = Colours.size();
        benchmark::DoNotOptimize(Count);
    }
    State.counters["Colours"] = static_cast<double>(Count);
    CountPixels(State);
}

// ---- Bilinear resampling to half size (2048 x 2048). Pixels counted are the source's.

void StretchAntialias(benchmark::State& State)
{
    clsDIB Source, Target;
    if (!MakeSurface(Source, PhotoA()) || !Target.CreateBlankDIB(Side / 2, Side / 2, 32, 0xFFFFFF, false, true))
        return State.SkipWithError("surface not created");
    for (auto _ : State) {
        Target.StretchPaintFromDIBtoDIB_Antialias_NativeDB(Source, Target);
        benchmark::ClobberMemory();
    }
    CountPixels(State);
}

void StretchPeerQImage(benchmark::State& State)
{
    const QImage Image = MakeImage(PhotoA());
    for (auto _ : State) {
        QImage Half = Image.scaled(Side / 2, Side / 2, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        benchmark::DoNotOptimize(Half.constBits());
        benchmark::ClobberMemory();
    }
    CountPixels(State);
}

void StretchPeerSwscale(benchmark::State& State)
{
    const std::vector<uint32_t>& Words = PhotoA();
    std::vector<uint32_t> Half(static_cast<size_t>(Pixels / 4));
    SwsContext* Context = sws_getContext(Side, Side, AV_PIX_FMT_BGR0, Side / 2, Side / 2, AV_PIX_FMT_BGR0,
                                         SWS_BILINEAR, nullptr, nullptr, nullptr);
    if (!Context)
        return State.SkipWithError("no swscale context");
    const uint8_t* const From[4] = {reinterpret_cast<const uint8_t*>(Words.data()), nullptr, nullptr, nullptr};
    const int FromStride[4] = {Side * 4, 0, 0, 0};
    uint8_t* const To[4] = {reinterpret_cast<uint8_t*>(Half.data()), nullptr, nullptr, nullptr};
    const int ToStride[4] = {Side / 2 * 4, 0, 0, 0};
    for (auto _ : State) {
        sws_scale(Context, From, FromStride, 0, Side, To, ToStride);
        benchmark::ClobberMemory();
    }
    sws_freeContext(Context);
    CountPixels(State);
}

// ---- BMP writers; the surface has no alpha, so both write 24 bits a pixel.

void SaveDIBToFile(benchmark::State& State)
{
    clsDIB Dib;
    if (!MakeSurface(Dib, PhotoA()))
        return State.SkipWithError("surface not created");
    const QString Name = OutputFile();
    for (auto _ : State)
        if (!Dib.Save_DIB_To_File(Name, Dib))
            return State.SkipWithError("file not written");
    State.counters["FileBytes"] = static_cast<double>(QFile(Name).size());
    QFile::remove(Name);
    CountPixels(State);
}

void SavePeerQImageWriter(benchmark::State& State)
{
    const QImage Image = MakeImage(PhotoA());
    const QString Name = OutputFile();
    for (auto _ : State) {
        QImageWriter Writer(Name, "bmp");
        if (!Writer.write(Image))
            return State.SkipWithError("file not written");
    }
    State.counters["FileBytes"] = static_cast<double>(QFile(Name).size());
    QFile::remove(Name);
    CountPixels(State);
}

// ---- The machine's limit: one plain copy of the surface's 64 MB.

void Memcpy64MB(benchmark::State& State)
{
    const std::vector<uint32_t>& Words = PhotoA();
    std::vector<uint32_t> Copy(Words.size(), 1);
    for (auto _ : State) {
        std::memcpy(Copy.data(), Words.data(), Words.size() * 4);
        benchmark::ClobberMemory();
    }
    CountPixels(State);
}

void Register(const char* Name, void (*Function)(benchmark::State&))
{
    benchmark::RegisterBenchmark(Name, Function)
        ->Unit(benchmark::kMillisecond)
        ->MinTime(MinSeconds)
        ->MeasureProcessCPUTime();
}

} // namespace

int main(int argc, char** argv)
{
    // Made once, before any timing.
    PhotoA();
    PhotoB();
    Register("BlendIn", BlendIn);
    Register("BlendIn_peer_QPainter_opacity", BlendInPeerQPainter);
    Register("RotateDIB_mode3", RotateDIB3);
    Register("RotateDIB_peer_QImage_transformed", RotatePeerQImage);
    Register("CountColorsDIB", CountColorsDIB);
    Register("CountColorsDIB_peer_bitmap16M", CountPeerBitmap);
    Register("CountColorsDIB_peer_unordered_set", CountPeerUnorderedSet);
    Register("StretchAntialias_half", StretchAntialias);
    Register("StretchAntialias_peer_QImage_smooth", StretchPeerQImage);
    Register("StretchAntialias_peer_swscale_bilinear", StretchPeerSwscale);
    Register("Save_DIB_To_File", SaveDIBToFile);
    Register("Save_peer_QImageWriter_bmp", SavePeerQImageWriter);
    Register("memcpy_64MB", Memcpy64MB);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
