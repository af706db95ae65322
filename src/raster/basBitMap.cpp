#include "basBitMap.h"

#include <algorithm>
#include <memory>

#include "basMath.h"
#include "basPicture.h"

namespace basBitMap {

namespace {

struct ModuleState {
    std::vector<uint32_t> Table1 = std::vector<uint32_t>(2, 0);
    std::vector<uint32_t> Table4 = std::vector<uint32_t>(16, 0);
    std::vector<uint32_t> Table8 = std::vector<uint32_t>(256, 0);
    // The bitmap most recently made: 32 bits a pixel, top-down.
    std::vector<uint8_t> Pixels;
    std::unique_ptr<DeviceContext> Bitmap;
};

ModuleState& State()
{
    static ModuleState S;
    return S;
}

void SetTableFromTriples(std::vector<uint32_t>& Table, const std::vector<uint8_t>& Rgb)
{
    const size_t Entries = std::min(Table.size(), Rgb.size() / 3);
    for (size_t I = 0; I < Entries; ++I)
        Table[I] = QuadFromColor(RGBColor(Rgb[I * 3], Rgb[I * 3 + 1], Rgb[I * 3 + 2]));
}

// Makes the module's bitmap from packed rows of the given depth.
bool MakeBitmap(const std::vector<uint8_t>& Rows, int Width, int Height, bool TopDown, int Bpp)
{
    ModuleState& S = State();
    if (Width <= 0 || Height <= 0 || Width > basPicture::MaxPictureSide || Height > basPicture::MaxPictureSide)
        return false;
    const int64_t Stride = (static_cast<int64_t>(Width) * Bpp + 31) / 32 * 4;
    if (static_cast<int64_t>(Width) * 4 * Height > basPicture::MaxPictureBytes)
        return false;
    // Rows shorter than the header says read as zeros beyond their end.
    std::vector<uint8_t> Source(static_cast<size_t>(Stride * Height), 0);
    std::copy_n(Rows.begin(), std::min(Rows.size(), Source.size()), Source.begin());
    std::vector<uint32_t>* Table = Bpp == 1 ? &S.Table1 : Bpp == 4 ? &S.Table4 : Bpp == 8 ? &S.Table8 : nullptr;
    DeviceContext From(Source.data(), Width, Height, Bpp, static_cast<int>(Stride), TopDown,
                       Table ? Table->data() : nullptr, Table ? static_cast<int>(Table->size()) : 0);
    S.Bitmap.reset();
    S.Pixels.assign(static_cast<size_t>(Width) * 4 * Height, 0);
    S.Bitmap = std::make_unique<DeviceContext>(S.Pixels.data(), Width, Height, 32, Width * 4, true, nullptr, 0);
    BitBlt(S.Bitmap.get(), 0, 0, Width, Height, &From, 0, 0, SRCCOPY);
    return true;
}

} // namespace

void SetPalette2FromRGB(const std::vector<uint8_t>& Rgb)
{
    std::vector<uint32_t>& Table = State().Table1;
    if (Rgb.size() != 6) {
        Table[1] &= 0x00FFFFFF;
        return;
    }
    SetTableFromTriples(Table, Rgb);
}

void SetPalette16FromRGB(const std::vector<uint8_t>& Rgb)
{
    SetTableFromTriples(State().Table4, Rgb);
}

void SetPalette256FromRGB(const std::vector<uint8_t>& Rgb)
{
    SetTableFromTriples(State().Table8, Rgb);
}

bool BitmapFromRows1(const std::vector<uint8_t>& Rows, int Width, int Height, bool TopDown)
{
    return MakeBitmap(Rows, Width, Height, TopDown, 1);
}

bool BitmapFromRows4(const std::vector<uint8_t>& Rows, int Width, int Height, bool TopDown)
{
    return MakeBitmap(Rows, Width, Height, TopDown, 4);
}

bool BitmapFromRows8(const std::vector<uint8_t>& Rows, int Width, int Height, bool TopDown)
{
    return MakeBitmap(Rows, Width, Height, TopDown, 8);
}

bool BitmapFromRows16(const std::vector<uint8_t>& Rows, int Width, int Height, bool TopDown)
{
    return MakeBitmap(Rows, Width, Height, TopDown, 16);
}

bool BitmapFromRows24(const std::vector<uint8_t>& Rows, int Width, int Height, bool TopDown)
{
    return MakeBitmap(Rows, Width, Height, TopDown, 24);
}

bool BitmapFromRows32(const std::vector<uint8_t>& Rows, int Width, int Height, bool TopDown)
{
    return MakeBitmap(Rows, Width, Height, TopDown, 32);
}

void PaintBitmapToDC(DeviceContext* Target, int Width, int Height, int X, int Y)
{
    if (State().Bitmap)
        BitBlt(Target, X, Y, Width, Height, State().Bitmap.get(), 0, 0, SRCCOPY);
}

std::vector<uint8_t> BuildGrayRamp(int16_t BitDepth, bool KeepTable)
{
    const int Depth = BitDepth >= 16 ? 8 : std::clamp<int>(BitDepth, 1, 8);
    const int Entries = 1 << Depth;
    const float Step = 255.0f / static_cast<float>(Entries - 1);
    std::vector<uint8_t> Triples;
    Triples.reserve(static_cast<size_t>(Entries) * 3);
    float Sum = 0;
    for (int I = 0; I < Entries; ++I) {
        const auto Level = static_cast<uint8_t>(std::clamp(RoundHalfEven(Sum), 0, 255));
        Triples.insert(Triples.end(), {Level, Level, Level});
        Sum += Step;
    }
    if (KeepTable) {
        ModuleState& S = State();
        std::vector<uint32_t>& Table = Depth == 1 ? S.Table1 : Depth <= 4 ? S.Table4 : S.Table8;
        SetTableFromTriples(Table, Triples);
    }
    return Triples;
}

const std::vector<uint32_t>& ColorTable(int Bpp)
{
    ModuleState& S = State();
    return Bpp == 1 ? S.Table1 : Bpp == 4 ? S.Table4 : S.Table8;
}

const DeviceContext* LastBitmap()
{
    return State().Bitmap.get();
}

} // namespace basBitMap
