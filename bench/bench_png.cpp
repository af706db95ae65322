#include <benchmark/benchmark.h>
#include <png.h>
#include <spng.h>
#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

#include "clsPNG.h"

// Whole-file decoding of 2048 x 2048 pictures from memory, in megapixels a second: a photo-like
// RGB picture (smooth gradients and noise) and a palette picture (8-bit indexes running smoothly
// with dithering noise), both written by libpng at its default settings. Ours is OpenPNGBytes in
// image mode, which gives 24-bit rows for the photo and 8-bit indexes with their colour table
// for the palette picture; libpng (simplified API) and libspng give 8-bit RGB rows.
namespace DecodeBench {

constexpr int Side = 2048;

struct Picture {
    std::vector<uint8_t> Pixels;  // R, G, B or indexes, row by row
    std::vector<png_color> Palette;
    std::vector<uint8_t> File;
};

void Append(png_structp Png, png_bytep Data, size_t Count)
{
    auto* Out = static_cast<std::vector<uint8_t>*>(png_get_io_ptr(Png));
    Out->insert(Out->end(), Data, Data + Count);
}

void WriteWithLibpng(Picture& P, int ColorType)
{
    png_structp Png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop Info = png_create_info_struct(Png);
    png_set_write_fn(Png, &P.File, Append, nullptr);
    png_set_IHDR(Png, Info, Side, Side, 8, ColorType, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    if (!P.Palette.empty())
        png_set_PLTE(Png, Info, P.Palette.data(), static_cast<int>(P.Palette.size()));
    png_write_info(Png, Info);
    const size_t Row = P.Pixels.size() / Side;
    for (int Y = 0; Y < Side; ++Y)
        png_write_row(Png, &P.Pixels[Y * Row]);
    png_write_end(Png, Info);
    png_destroy_write_struct(&Png, &Info);
}

const Picture& Photo()
{
    static const Picture P = [] {
        Picture Out;
        std::mt19937 Noise(7);
        Out.Pixels.reserve(size_t{Side} * Side * 3);
        for (int Y = 0; Y < Side; ++Y)
            for (int X = 0; X < Side; ++X) {
                const double Level[3] = {120 + 90 * std::sin(X / 310.0 + Y / 530.0), 128 + 100 * std::cos(Y / 270.0),
                                         110 + 80 * std::sin((X + Y) / 410.0)};
                for (double L : Level)
                    Out.Pixels.push_back(static_cast<uint8_t>(std::clamp(L + static_cast<int>(Noise() % 9) - 4, 0.0, 255.0)));
            }
        WriteWithLibpng(Out, PNG_COLOR_TYPE_RGB);
        return Out;
    }();
    return P;
}

const Picture& Paletted()
{
    static const Picture P = [] {
        Picture Out;
        std::mt19937 Noise(11);
        for (int I = 0; I < 256; ++I)
            Out.Palette.push_back({static_cast<png_byte>(I), static_cast<png_byte>(255 - I / 2), static_cast<png_byte>(I * 3)});
        Out.Pixels.reserve(size_t{Side} * Side);
        for (int Y = 0; Y < Side; ++Y)
            for (int X = 0; X < Side; ++X)
                Out.Pixels.push_back(static_cast<uint8_t>((X / 9 + Y / 13 + Noise() % 3) & 255));
        WriteWithLibpng(Out, PNG_COLOR_TYPE_PALETTE);
        return Out;
    }();
    return P;
}

void Rate(benchmark::State& State, const Picture& P)
{
    State.counters["MP"] = benchmark::Counter(double{Side} * Side / 1e6, benchmark::Counter::kIsIterationInvariantRate);
    State.counters["file_KB"] = static_cast<double>(P.File.size()) / 1024.0;
    State.SetItemsProcessed(State.iterations() * int64_t{Side} * Side);
}

// Ours must give the source's pixels before it is timed.
bool OursCorrect(const Picture& P)
{
    clsPNG Png;
    if (Png.OpenPNGBytes(P.File.data(), P.File.size()) != 0)
        return false;
    const std::vector<uint8_t>& Rows = Png.BitmapRows();
    const bool Indexed = !P.Palette.empty();
    if (Png.WorkingDepth() != (Indexed ? 8 : 24) || Rows.size() < size_t{Side} * Side * (Indexed ? 1 : 3))
        return false;
    for (size_t I = 0; I < size_t{Side} * Side; ++I)
        if (Indexed ? Rows[I] != P.Pixels[I]
                    : Rows[I * 3] != P.Pixels[I * 3 + 2] || Rows[I * 3 + 1] != P.Pixels[I * 3 + 1] ||
                          Rows[I * 3 + 2] != P.Pixels[I * 3])
            return false;
    return true;
}

void Ours(benchmark::State& State, const Picture& P)
{
    if (!OursCorrect(P)) {
        State.SkipWithError("our decoder differs from the source");
        return;
    }
    for (auto _ : State) {
        clsPNG Png;
        benchmark::DoNotOptimize(Png.OpenPNGBytes(P.File.data(), P.File.size()));
        benchmark::DoNotOptimize(Png.BitmapRows().data());
    }
    Rate(State, P);
}

void Libpng(benchmark::State& State, const Picture& P)
{
    std::vector<uint8_t> Out(size_t{Side} * Side * 3);
    for (auto _ : State) {
        png_image Image{};
        Image.version = PNG_IMAGE_VERSION;
        png_image_begin_read_from_memory(&Image, P.File.data(), P.File.size());
        Image.format = PNG_FORMAT_RGB;
        if (!png_image_finish_read(&Image, nullptr, Out.data(), 0, nullptr)) {
            State.SkipWithError("libpng failed");
            return;
        }
        benchmark::DoNotOptimize(Out.data());
    }
    Rate(State, P);
}

void Spng(benchmark::State& State, const Picture& P)
{
    std::vector<uint8_t> Out(size_t{Side} * Side * 3);
    for (auto _ : State) {
        spng_ctx* Ctx = spng_ctx_new(0);
        spng_set_png_buffer(Ctx, P.File.data(), P.File.size());
        const int Result = spng_decode_image(Ctx, Out.data(), Out.size(), SPNG_FMT_RGB8, 0);
        spng_ctx_free(Ctx);
        if (Result != 0) {
            State.SkipWithError("libspng failed");
            return;
        }
        benchmark::DoNotOptimize(Out.data());
    }
    Rate(State, P);
}

void BM_DecodePhotoOurs(benchmark::State& State) { Ours(State, Photo()); }
void BM_DecodePhotoLibpng(benchmark::State& State) { Libpng(State, Photo()); }
void BM_DecodePhotoSpng(benchmark::State& State) { Spng(State, Photo()); }
void BM_DecodePaletteOurs(benchmark::State& State) { Ours(State, Paletted()); }
void BM_DecodePaletteLibpng(benchmark::State& State) { Libpng(State, Paletted()); }
void BM_DecodePaletteSpng(benchmark::State& State) { Spng(State, Paletted()); }

BENCHMARK(BM_DecodePhotoOurs)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodePhotoLibpng)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodePhotoSpng)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodePaletteOurs)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodePaletteLibpng)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodePaletteSpng)->Unit(benchmark::kMillisecond);

} // namespace DecodeBench

// The inflate alone, on the IDAT stream of two 2048 x 2048 RGB pictures filtered as a PNG writer
// would (per row the filter with the least sum of absolute values) and compressed by compress2 at
// level 6: a photo-like picture (smooth gradients, texture and sensor noise) and a flat one
// (large areas of a few colours). Rates are output bytes a second. Ours is clsPNG::Inflate on
// the stream without its two header bytes; zlib's inflate and libdeflate's zlib decoder take
// the whole stream and check its Adler-32 too, zlib's raw inflate does not.
namespace InflateBench {

constexpr int Side = 2048;
constexpr size_t RowBytes = size_t{Side} * 3;

uint8_t Paeth(int A, int B, int C)
{
    const int P = A + B - C, PA = std::abs(P - A), PB = std::abs(P - B), PC = std::abs(P - C);
    return static_cast<uint8_t>(PA <= PB && PA <= PC ? A : PB <= PC ? B : C);
}

struct Stream {
    std::vector<uint8_t> Raw;   // filter byte and filtered row, row after row
    std::vector<uint8_t> Zlib;  // compress2 output
};

Stream Filter(const std::vector<uint8_t>& Pixels)
{
    Stream S;
    S.Raw.reserve((RowBytes + 1) * Side);
    std::vector<uint8_t> Zero(RowBytes, 0), Candidate[5];
    for (int Y = 0; Y < Side; ++Y) {
        const uint8_t* Row = &Pixels[Y * RowBytes];
        const uint8_t* Up = Y ? &Pixels[(Y - 1) * RowBytes] : Zero.data();
        int Best = 0;
        uint64_t BestSum = UINT64_MAX;
        for (int F = 0; F < 5; ++F) {
            Candidate[F].resize(RowBytes);
            uint64_t Sum = 0;
            for (size_t X = 0; X < RowBytes; ++X) {
                const int A = X >= 3 ? Row[X - 3] : 0, B = Up[X], C = X >= 3 ? Up[X - 3] : 0;
                const int Predicted = F == 0 ? 0 : F == 1 ? A : F == 2 ? B : F == 3 ? (A + B) / 2 : Paeth(A, B, C);
                const auto V = static_cast<uint8_t>(Row[X] - Predicted);
                Candidate[F][X] = V;
                Sum += V < 128 ? V : 256 - V;
            }
            if (Sum < BestSum)
                BestSum = Sum, Best = F;
        }
        S.Raw.push_back(static_cast<uint8_t>(Best));
        S.Raw.insert(S.Raw.end(), Candidate[Best].begin(), Candidate[Best].end());
    }
    uLongf Length = compressBound(static_cast<uLong>(S.Raw.size()));
    S.Zlib.resize(Length);
    compress2(S.Zlib.data(), &Length, S.Raw.data(), static_cast<uLong>(S.Raw.size()), 6);
    S.Zlib.resize(Length);
    return S;
}

const Stream& PhotoStream()
{
    static const Stream S = [] {
        std::vector<uint8_t> Pixels(RowBytes * Side);
        std::mt19937 Noise(3);
        for (int Y = 0; Y < Side; ++Y)
            for (int X = 0; X < Side; ++X) {
                const double Light = 0.6 + 0.4 * std::sin(X / 700.0) * std::cos(Y / 900.0);
                const double Texture = 12 * std::sin(X / 23.0 + std::sin(Y / 37.0) * 3);
                const double Base[3] = {170 * Light + Texture, 140 * Light + 0.5 * Texture + Y / 40.0,
                                        100 * Light - 0.3 * Texture + X / 50.0};
                const int Grain = static_cast<int>(Noise() % 5) - 2;
                for (int C = 0; C < 3; ++C)
                    Pixels[Y * RowBytes + X * 3 + C] = static_cast<uint8_t>(
                        std::clamp(Base[C] + Grain + static_cast<int>(Noise() % 3) - 1, 0.0, 255.0));
            }
        return Filter(Pixels);
    }();
    return S;
}

const Stream& FlatStream()
{
    static const Stream S = [] {
        // A drawing: a background, overlapping rectangles and discs and thin lines in eight
        // colours.
        static constexpr uint8_t Colours[8][3] = {{250, 250, 245}, {30, 60, 200}, {220, 40, 40},  {250, 210, 0},
                                                  {20, 20, 20},    {60, 180, 90}, {140, 80, 160}, {0, 170, 190}};
        std::vector<uint8_t> Index(size_t{Side} * Side, 0);
        std::mt19937 R(5);
        for (int Shape = 0; Shape < 2500; ++Shape) {
            const int X0 = static_cast<int>(R() % Side), Y0 = static_cast<int>(R() % Side);
            const int W = 6 + static_cast<int>(R() % 120),
                      H = Shape % 3 == 2 ? 1 + static_cast<int>(R() % 3) : 6 + static_cast<int>(R() % 120);
            const auto C = static_cast<uint8_t>(1 + R() % 7);
            const bool Disc = Shape % 3 == 1;
            for (int Y = Y0; Y < std::min(Side, Y0 + H); ++Y)
                for (int X = X0; X < std::min(Side, X0 + W); ++X) {
                    const int DX = 2 * (X - X0) - W, DY = 2 * (Y - Y0) - H;
                    if (!Disc || int64_t{DX} * DX * H * H + int64_t{DY} * DY * W * W <= int64_t{W} * W * H * H)
                        Index[size_t(Y) * Side + X] = C;
                }
        }
        std::vector<uint8_t> Pixels(RowBytes * Side);
        for (size_t I = 0; I < Index.size(); ++I)
            std::copy(Colours[Index[I]], Colours[Index[I]] + 3, &Pixels[I * 3]);
        return Filter(Pixels);
    }();
    return S;
}

void Rate(benchmark::State& State, const Stream& S)
{
    State.SetBytesProcessed(State.iterations() * static_cast<int64_t>(S.Raw.size()));
    State.counters["ratio"] = static_cast<double>(S.Raw.size()) / static_cast<double>(S.Zlib.size());
}

void Ours(benchmark::State& State, const Stream& S)
{
    std::vector<uint8_t> Out(S.Raw.size());
    size_t Written = 0;
    if (clsPNG::Inflate(S.Zlib.data() + 2, S.Zlib.size() - 2, Out, false, &Written) != clsPNG::InflateOK ||
        Written != S.Raw.size() || Out != S.Raw) {
        State.SkipWithError("our inflate differs from the source");
        return;
    }
    for (auto _ : State) {
        benchmark::DoNotOptimize(clsPNG::Inflate(S.Zlib.data() + 2, S.Zlib.size() - 2, Out, false));
        benchmark::ClobberMemory();
    }
    Rate(State, S);
}

void Zlib(benchmark::State& State, const Stream& S, bool Raw)
{
    std::vector<uint8_t> Out(S.Raw.size());
    for (auto _ : State) {
        z_stream Z{};
        if (Raw)
            inflateInit2(&Z, -15);
        else
            inflateInit(&Z);
        Z.next_in = const_cast<Bytef*>(S.Zlib.data() + (Raw ? 2 : 0));
        Z.avail_in = static_cast<uInt>(S.Zlib.size() - (Raw ? 2 : 0));
        Z.next_out = Out.data();
        Z.avail_out = static_cast<uInt>(Out.size());
        const int Result = inflate(&Z, Z_FINISH);
        inflateEnd(&Z);
        if (Result != Z_STREAM_END) {
            State.SkipWithError("zlib failed");
            return;
        }
        benchmark::ClobberMemory();
    }
    Rate(State, S);
}

void Libdeflate(benchmark::State& State, const Stream& S)
{
    std::vector<uint8_t> Out(S.Raw.size());
    libdeflate_decompressor* D = libdeflate_alloc_decompressor();
    for (auto _ : State) {
        if (libdeflate_zlib_decompress(D, S.Zlib.data(), S.Zlib.size(), Out.data(), Out.size(), nullptr) !=
            LIBDEFLATE_SUCCESS) {
            State.SkipWithError("libdeflate failed");
            break;
        }
        benchmark::ClobberMemory();
    }
    libdeflate_free_decompressor(D);
    Rate(State, S);
}

void BM_InflatePhotoOurs(benchmark::State& State)
{
    Ours(State, PhotoStream());
}
void BM_InflatePhotoZlib(benchmark::State& State)
{
    Zlib(State, PhotoStream(), false);
}
void BM_InflatePhotoZlibRaw(benchmark::State& State)
{
    Zlib(State, PhotoStream(), true);
}
void BM_InflatePhotoLibdeflate(benchmark::State& State)
{
    Libdeflate(State, PhotoStream());
}
void BM_InflateFlatOurs(benchmark::State& State)
{
    Ours(State, FlatStream());
}
void BM_InflateFlatZlib(benchmark::State& State)
{
    Zlib(State, FlatStream(), false);
}
void BM_InflateFlatZlibRaw(benchmark::State& State)
{
    Zlib(State, FlatStream(), true);
}
void BM_InflateFlatLibdeflate(benchmark::State& State)
{
    Libdeflate(State, FlatStream());
}

BENCHMARK(BM_InflatePhotoOurs)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_InflatePhotoZlib)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_InflatePhotoZlibRaw)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_InflatePhotoLibdeflate)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_InflateFlatOurs)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_InflateFlatZlib)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_InflateFlatZlibRaw)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_InflateFlatLibdeflate)->Unit(benchmark::kMillisecond);

} // namespace InflateBench

BENCHMARK_MAIN();
