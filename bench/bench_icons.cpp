#include <benchmark/benchmark.h>

#include <Magick++.h>
#include <QBuffer>
#include <QCoreApplication>
#include <QImage>
#include <QImageReader>
#include <QTemporaryDir>

#include <cstring>
#include <fstream>
#include <iterator>
#include <list>
#include <random>
#include <vector>

#include "Array2D.h"
#include "basIconCursor.h"
#include "clsICO.h"

// Reading a whole icon family in memory, in megapixels a second over all its images: the sizes
// 16, 24, 32, 48, 64 and 128, each at 32 bits with alpha and at 8 bits, twelve images in all,
// written by the icon editor's writer. Ours (clsICO::OpenICOBytes, every image into its surfaces
// and alpha) beside Qt's ICO reader (QImageReader, stepping through the images) and
// ImageMagick's library (Magick++ readImages of the blob, held to one thread).
namespace {

constexpr int Sides[] = {16, 24, 32, 48, 64, 128};

struct Family {
    std::vector<uint8_t> File;
    double Megapixels = 0;
    int Images = 0;
};

std::vector<uint8_t> SingleIcon(int Side, bool TrueColour, const QString& Folder)
{
    clsDIB Image, Mask;
    Image.CreateBlankDIB(Side, Side, 32, 0, true);
    Mask.CreateBlankDIB(Side, Side, 32, 0, true);
    Array2D<uint8_t> Alpha(Side, Side, 255);
    std::mt19937 Noise(static_cast<unsigned>(Side));
    // A round badge: smooth colours inside, clear outside, soft at the edge; 8-bit versions hold
    // 200 colours.
    for (int Y = 0; Y < Side; ++Y)
        for (int X = 0; X < Side; ++X) {
            const int Dx = 2 * X - Side + 1, Dy = 2 * Y - Side + 1;
            const bool Inside = Dx * Dx + Dy * Dy < Side * Side;
            const uint32_t Shade = TrueColour ? (X * 255 / Side) | (Y * 255 / Side) << 8 | (Noise() % 256) << 16
                                              : (Noise() % 200) * 0x010101u / 2;
            Image.DIBhDC()->SetPixelV(X, Y, Inside ? Shade & 0xFFFFFF : 0);
            Mask.DIBhDC()->SetPixelV(X, Y, Inside ? 0 : 0xFFFFFF);
            Alpha(X, Y) = Inside ? static_cast<uint8_t>(128 + Noise() % 128) : 0;
        }
    const std::string Name = (Folder + QStringLiteral("/one.ico")).toStdString();
    if (!basIconCursor::SaveIconFile(Image, Mask, Name, TrueColour, Alpha))
        return {};
    std::ifstream In(Name, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(In), {});
}

const Family& Icons()
{
    static Family F;
    if (!F.File.empty())
        return F;
    QTemporaryDir Folder;
    std::vector<std::vector<uint8_t>> Singles;
    for (int Side : Sides)
        for (bool TrueColour : {true, false}) {
            Singles.push_back(SingleIcon(Side, TrueColour, Folder.path()));
            F.Megapixels += Side * Side / 1e6;
        }
    // One file: the header, every entry with its new offset, then the records.
    F.Images = static_cast<int>(Singles.size());
    F.File = {0, 0, 1, 0, static_cast<uint8_t>(F.Images), 0};
    uint32_t Offset = 6 + 16 * static_cast<uint32_t>(F.Images);
    for (const auto& One : Singles) {
        F.File.insert(F.File.end(), One.begin() + 6, One.begin() + 18);
        const uint32_t Record = static_cast<uint32_t>(One.size() - 22);
        for (int B = 0; B < 4; ++B)
            F.File.push_back(static_cast<uint8_t>(Offset >> (8 * B)));
        Offset += Record;
    }
    for (const auto& One : Singles)
        F.File.insert(F.File.end(), One.begin() + 22, One.end());
    return F;
}

void Rate(benchmark::State& State, const Family& F)
{
    State.counters["MP"] = benchmark::Counter(F.Megapixels, benchmark::Counter::kIsIterationInvariantRate);
    State.counters["file_KB"] = static_cast<double>(F.File.size()) / 1024.0;
}

void BM_LoadIconsOurs(benchmark::State& State)
{
    const Family& F = Icons();
    for (auto _ : State) {
        clsICO Ico;
        if (!Ico.OpenICOBytes(F.File.data(), F.File.size()) || Ico.IconCount() != F.Images)
            State.SkipWithError("our reader failed");
        benchmark::DoNotOptimize(Ico.DIBXOR(0));
    }
    Rate(State, F);
}

void BM_LoadIconsQt(benchmark::State& State)
{
    const Family& F = Icons();
    const QByteArray Bytes(reinterpret_cast<const char*>(F.File.data()), static_cast<qsizetype>(F.File.size()));
    for (auto _ : State) {
        QBuffer Buffer;
        Buffer.setData(Bytes);
        Buffer.open(QIODevice::ReadOnly);
        QImageReader Reader(&Buffer, "ico");
        int Read = 0;
        do {
            const QImage Image = Reader.read();
            Read += !Image.isNull();
            benchmark::DoNotOptimize(Image.constBits());
        } while (Reader.jumpToNextImage());
        if (Read != F.Images)
            State.SkipWithError("Qt's reader failed");
    }
    Rate(State, F);
}

void BM_LoadIconsMagick(benchmark::State& State)
{
    const Family& F = Icons();
    const Magick::Blob Blob(F.File.data(), F.File.size());
    for (auto _ : State) {
        std::list<Magick::Image> Images;
        Magick::ReadOptions Options;
        std::strncpy(Options.imageInfo()->magick, "ICO", MaxTextExtent - 1);
        Magick::readImages(&Images, Blob, Options);
        if (static_cast<int>(Images.size()) != F.Images)
            State.SkipWithError("ImageMagick failed");
        benchmark::DoNotOptimize(Images.front().getConstPixels(0, 0, 1, 1));
    }
    Rate(State, F);
}

BENCHMARK(BM_LoadIconsOurs)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_LoadIconsQt)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_LoadIconsMagick)->Unit(benchmark::kMicrosecond);

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
