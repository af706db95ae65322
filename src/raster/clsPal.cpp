#include "clsPal.h"

#include <algorithm>
#include <cstdlib>

#include "basMath.h"
#include "clsDIB.h"

namespace {

constexpr size_t CacheSize = size_t{1} << 18;
constexpr uint32_t NoQuery = 0xFFFFFFFFu;  // no query has bits above the low 24

int32_t NextHandle = 0;

} // namespace

int32_t clsPal::RowPercent(int32_t Y, int32_t Height)
{
    return RoundHalfEven(static_cast<double>(Y) / (Height - 1) * 100);
}

bool clsPal::Readable32(const clsDIB& Dib)
{
    return Dib.DIBBitsPtr() && Dib.StorageBpp() == 32 && Dib.DIBWidth() > 0 && Dib.DIBHeight() > 0;
}

uint8_t* clsPal::CreateBlankPalette(int16_t Size)
{
    ClearUp();
    Count = std::clamp<int32_t>(Size, 2, 256);
    return Table.data();
}

void clsPal::GetPaletteFromPAL(std::vector<uint8_t>& Bytes) const
{
    Bytes.assign(Table.begin(), Table.end());
}

void clsPal::ClearUp()
{
    Table.fill(0);
    Count = 0;
    Platform.reset();
}

void clsPal::RebuildPlatformPalette()
{
    Platform.reset();
    const int32_t Entries = std::min(Count, 256);
    if (Entries < 1) return;  // the platform makes no palette of no entries
    auto Made = std::make_unique<PlatformPalette>();
    NextHandle = NextHandle == INT32_MAX ? 1 : NextHandle + 1;
    Made->Handle = NextHandle;
    Made->Entries.resize(static_cast<size_t>(Entries));
    for (int32_t I = 0; I < Entries; ++I)
        std::copy_n(Table.begin() + I * 4, 4, Made->Entries[static_cast<size_t>(I)].begin());
    Platform = std::move(Made);
}

int32_t clsPal::PlatformPalette::Nearest(int32_t Red, int32_t Green, int32_t Blue)
{
    if (Candidates.empty()) Candidates.resize(512);
    std::vector<uint8_t>& Cell = Candidates[static_cast<size_t>((Red >> 5) * 64 + (Green >> 5) * 8 + (Blue >> 5))];
    if (Cell.empty()) {
        // An entry can be nearest somewhere in the cell only if the cell comes no closer to it
        // than the worst case of the entry whose farthest corner is nearest. Ties stay in, in
        // index order, so the lowest index still wins.
        const std::array<int32_t, 3> Low = {Red & ~31, Green & ~31, Blue & ~31};
        std::vector<int32_t> Closest(Entries.size());
        int32_t Bound = INT32_MAX;
        for (size_t I = 0; I < Entries.size(); ++I) {
            int32_t Near = 0, Far = 0;
            for (size_t K = 0; K < 3; ++K) {
                const int32_t V = Entries[I][K];
                const int32_t In = std::clamp(V, Low[K], Low[K] + 31);
                const int32_t Out = std::max(std::abs(V - Low[K]), std::abs(V - Low[K] - 31));
                Near += (V - In) * (V - In);
                Far += Out * Out;
            }
            Closest[I] = Near;
            Bound = std::min(Bound, Far);
        }
        for (size_t I = 0; I < Entries.size(); ++I)
            if (Closest[I] <= Bound) Cell.push_back(static_cast<uint8_t>(I));
    }
    int32_t Best = 0;
    int32_t BestDistance = INT32_MAX;
    for (const uint8_t I : Cell) {
        const int32_t DR = Entries[I][0] - Red;
        const int32_t DG = Entries[I][1] - Green;
        const int32_t DB = Entries[I][2] - Blue;
        const int32_t Distance = DR * DR + DG * DG + DB * DB;
        if (Distance < BestDistance) {
            BestDistance = Distance;
            Best = I;
        }
    }
    return Best;
}

int32_t clsPal::NearestMiss(uint32_t Query) const
{
    // The query is a colour value 0x00BBGGRR whose red byte holds the caller's blue; the palette
    // entries hold the table's blue where the platform reads red. The two exchanges cancel, so
    // each channel meets its own.
    const int32_t Best = Platform->Nearest(static_cast<int32_t>(Query & 255), static_cast<int32_t>((Query >> 8) & 255),
                                           static_cast<int32_t>((Query >> 16) & 255));
    if (Platform->CacheKeys.empty()) {
        Platform->CacheKeys.assign(CacheSize, NoQuery);
        Platform->CacheIndexes.assign(CacheSize, 0);
    }
    const uint32_t Slot = CacheSlot(Query);
    Platform->CacheKeys[Slot] = Query;
    Platform->CacheIndexes[Slot] = static_cast<uint8_t>(Best);
    return Best;
}

bool clsPal::IsGreyScale() const
{
    if (Count < 1) return false;
    const int32_t Entries = std::min(Count, 256);
    for (int32_t I = 0; I < Entries; ++I) {
        const uint8_t* Entry = Table.data() + I * 4;
        if (Entry[0] != Entry[1] || Entry[1] != Entry[2]) return false;
    }
    return true;
}

void clsPal::SetEntry(int32_t Index, int32_t Red, int32_t Green, int32_t Blue)
{
    uint8_t* Entry = Table.data() + Index * 4;
    Entry[0] = static_cast<uint8_t>(Blue);
    Entry[1] = static_cast<uint8_t>(Green);
    Entry[2] = static_cast<uint8_t>(Red);
}

void clsPal::RaiseProgress(int32_t Percent)
{
    if (Progress) Progress(Percent);
}

void clsPal::RaiseProgressEnd()
{
    if (ProgressEnd) ProgressEnd();
}

void clsPal::CreatePalette2()
{
    CreateBlankPalette(2);
    SetEntry(1, 255, 255, 255);
    RebuildPlatformPalette();
}

void clsPal::CreatePalette16()
{
    // Red, green, blue.
    static constexpr int32_t Colors[16][3] = {
        {0, 0, 0},     {128, 0, 0},   {0, 128, 0},     {128, 128, 0},   {0, 0, 128}, {128, 0, 128},
        {0, 128, 128}, {192, 192, 192}, {128, 128, 128}, {255, 0, 0},   {0, 255, 0}, {255, 255, 0},
        {0, 0, 255},   {255, 0, 255}, {0, 255, 255},   {255, 255, 255}};
    CreateBlankPalette(16);
    for (int32_t I = 0; I < 16; ++I)
        SetEntry(I, Colors[I][0], Colors[I][1], Colors[I][2]);
    RebuildPlatformPalette();
}

void clsPal::CreateGrays(int16_t Levels)
{
    const int32_t Entries = Levels < 16 ? 2 : Levels < 256 ? 16 : 256;
    const int32_t Step = 255 / (Entries - 1);
    CreateBlankPalette(static_cast<int16_t>(Entries));
    for (int32_t I = 0; I < Entries; ++I)
        SetEntry(I, Step * I, Step * I, Step * I);
    RebuildPlatformPalette();
}

void clsPal::CreateHalftone(int32_t Level)
{
    static constexpr int32_t Steps[5] = {256, 128, 85, 64, 51};
    if (Level < 0 || Level > 4) return;
    const int32_t Step = Steps[Level];
    CreateBlankPalette(256);
    int32_t Made = 0;
    for (int32_t B = 0; B <= 256; B += Step)
        for (int32_t G = 0; G <= 256; G += Step)
            for (int32_t R = 0; R <= 256; R += Step)
                SetEntry(Made++, std::min(R, 255), std::min(G, 255), std::min(B, 255));
    Count = Made;
    RebuildPlatformPalette();
}

void clsPal::CreateWebsafe()
{
    CreateBlankPalette(256);
    std::vector<uint32_t> Made;
    Made.reserve(216);
    for (int32_t B = 0; B <= 255; B += 51)
        for (int32_t G = 0; G <= 255; G += 51)
            for (int32_t R = 0; R <= 255; R += 51) {
                const uint32_t Color = RGBColor(R, G, B);
                if (std::find(Made.begin(), Made.end(), Color) != Made.end()) continue;
                SetEntry(static_cast<int32_t>(Made.size()), R, G, B);
                Made.push_back(Color);
            }
    Count = static_cast<int32_t>(Made.size());
    RebuildPlatformPalette();
}

void clsPal::CreatePalette256(clsDIB& Dib)
{
    // Colour values in the order first seen.
    std::vector<uint32_t> Found;
    Found.reserve(256);
    if (Readable32(Dib)) {
        const int32_t Width = Dib.DIBWidth();
        const int32_t Height = Dib.DIBHeight();
        bool Full = false;
        for (int32_t Y = 0; Y < Height && !Full; ++Y) {
            const uint8_t* Row = Dib.DIBBitsPtr() + static_cast<size_t>(Y) * Dib.BytesPerScanline();
            for (int32_t X = 0; X < Width; ++X) {
                const uint8_t* Pixel = Row + X * 4;
                const uint32_t Entry = RGBColor(Pixel[2], Pixel[1], Pixel[0]);
                // The pixel before is the likeliest match; the list keeps its order either way.
                if ((!Found.empty() && Found.back() == Entry) ||
                    std::find(Found.begin(), Found.end(), Entry) != Found.end())
                    continue;
                Found.push_back(Entry);
                if (Found.size() == 256) {
                    Full = true;
                    break;
                }
            }
            if (!Full && Height > 1) RaiseProgress(RowPercent(Y, Height));
        }
    }
    RaiseProgressEnd();
    CreateBlankPalette(256);
    for (size_t I = 0; I < Found.size(); ++I)
        SetEntry(static_cast<int32_t>(I), ColorR(Found[I]), ColorG(Found[I]), ColorB(Found[I]));
    Count = static_cast<int32_t>(Found.size());
    RaiseProgressEnd();
    RebuildPlatformPalette();
}
