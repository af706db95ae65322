// The palette: the fixed recipes' tables, the grey test, nearest-colour queries and the
// platform palette behind them, the exact colours of a picture and the octree's character.
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "TestImages.h"
#include "clsDIB.h"
#include "clsPal.h"

using namespace TestImages;

namespace {

using Rgb = std::array<int, 3>;  // red, green, blue

Rgb EntryOf(const clsPal& Pal, int Index)
{
    const auto I = uint8_t(Index);
    return {Pal.rgbR(I), Pal.rgbG(I), Pal.rgbB(I)};
}
std::vector<Rgb> EntriesOf(const clsPal& Pal)
{
    std::vector<Rgb> Out;
    for (int I = 0; I < Pal.MaxCount(); ++I)
        Out.push_back(EntryOf(Pal, I));
    return Out;
}

// One row of quads, storage order being image order.
void MakeRow(clsDIB& Dib, const std::vector<uint32_t>& Quads) { MakeDIB32(Dib, int(Quads.size()), 1, Quads, true); }

// Smooth ramps with a little noise, as a photograph has: many colours, few repeated.
void MakePhoto(clsDIB& Dib, int Width, int Height)
{
    const std::vector<uint32_t> Noise = RandomWords(size_t(Width) * Height, 7);
    MakeDIB32(Dib, Width, Height, Grid(Width, Height, [&](int X, int Y) {
                  const uint32_t N = Noise[size_t(Y) * Width + X];
                  return Quad(uint8_t(40 + X * 3 + N % 9), uint8_t(Y * 4 + (N >> 8) % 7),
                              uint8_t(200 - X - Y + (N >> 16) % 5));
              }));
}

void Record(clsPal& Pal, std::vector<std::string>& Events)
{
    Pal.Progress = [&Events](int32_t P) { Events.push_back(std::to_string(P)); };
    Pal.ProgressEnd = [&Events] { Events.push_back("end"); };
}

} // namespace

TEST(clsPal, RecipesMakeTheirTables)
{
    struct Case {
        const char* Name;
        std::function<void(clsPal&)> Make;
        int Count;
        std::vector<std::pair<int, Rgb>> Pinned;  // worked out by hand
    };
    const std::vector<Case> Cases = {
        {"Palette2", [](clsPal& P) { P.CreatePalette2(); }, 2, {{1, {255, 255, 255}}}},
        {"Palette16", [](clsPal& P) { P.CreatePalette16(); }, 16,
         {{6, {0, 128, 128}}, {7, {192, 192, 192}}, {8, {128, 128, 128}}, {12, {0, 0, 255}}}},
        {"Grays 15", [](clsPal& P) { P.CreateGrays(15); }, 2, {{1, {255, 255, 255}}}},
        {"Grays 16", [](clsPal& P) { P.CreateGrays(16); }, 16, {{1, {17, 17, 17}}, {15, {255, 255, 255}}}},
        {"Grays 256", [](clsPal& P) { P.CreateGrays(256); }, 256, {{200, {200, 200, 200}}, {255, {255, 255, 255}}}},
        {"Halftone 0", [](clsPal& P) { P.CreateHalftone(0); }, 8,
         {{1, {255, 0, 0}}, {2, {0, 255, 0}}, {4, {0, 0, 255}}, {7, {255, 255, 255}}}},
        {"Halftone 1", [](clsPal& P) { P.CreateHalftone(1); }, 27, {{2, {255, 0, 0}}, {9, {0, 0, 128}}}},
        {"Halftone 2", [](clsPal& P) { P.CreateHalftone(2); }, 64, {{4, {0, 85, 0}}, {63, {255, 255, 255}}}},
        {"Halftone 3", [](clsPal& P) { P.CreateHalftone(3); }, 125, {{4, {255, 0, 0}}, {25, {0, 0, 64}}}},
        {"Halftone 4", [](clsPal& P) { P.CreateHalftone(4); }, 216,
         {{1, {51, 0, 0}}, {6, {0, 51, 0}}, {43, {51, 51, 51}}, {215, {255, 255, 255}}}},
        {"Websafe", [](clsPal& P) { P.CreateWebsafe(); }, 216,
         {{5, {255, 0, 0}}, {30, {0, 255, 0}}, {180, {0, 0, 255}}}},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        clsPal Pal;
        Pal.CreatePalette16();
        Pal.rgbR(200, 9);  // left over from before: every recipe starts from a clean table
        C.Make(Pal);
        EXPECT_EQ(Pal.MaxCount(), C.Count);
        EXPECT_NE(Pal.PALhPal(), 0);
        EXPECT_EQ(EntryOf(Pal, 0), (Rgb{0, 0, 0}));
        for (const auto& [Index, Color] : C.Pinned)
            EXPECT_EQ(EntryOf(Pal, Index), Color) << "entry " << Index;
        std::vector<uint8_t> Bytes;
        Pal.GetPaletteFromPAL(Bytes);
        // Entries lie blue, green, red, 0, and the rest of the 1,024 bytes is clear.
        const std::vector<Rgb> Entries = EntriesOf(Pal);
        std::vector<uint8_t> Expected(1024, 0);
        for (size_t I = 0; I < Entries.size(); ++I) {
            Expected[I * 4] = uint8_t(Entries[I][2]);
            Expected[I * 4 + 1] = uint8_t(Entries[I][1]);
            Expected[I * 4 + 2] = uint8_t(Entries[I][0]);
        }
        EXPECT_EQ(Bytes, Expected);
    }
}

TEST(clsPal, BlankPaletteClearUpAndHandle)
{
    clsPal Pal;
    EXPECT_EQ(Pal.MaxCount() | Pal.PALhPal(), 0);
    Pal.CreatePalette2();
    for (auto [Size, Count] : {std::pair{int16_t(-3), 2}, {int16_t(1), 2}, {int16_t(100), 100}, {int16_t(300), 256}}) {
        EXPECT_EQ(Pal.CreateBlankPalette(Size), Pal.PalettePtr());
        EXPECT_EQ(Pal.MaxCount(), Count);
        EXPECT_EQ(Pal.PALhPal(), 0);  // no palette object until a recipe makes one
        EXPECT_EQ(EntryOf(Pal, 1), (Rgb{0, 0, 0}));
        Pal.CreatePalette2();
    }
    Pal.CreateHalftone(5);  // no such cube: nothing changes
    EXPECT_EQ(Pal.MaxCount(), 2);
    EXPECT_NE(Pal.PALhPal(), 0);
    Pal.ClearUp();
    EXPECT_EQ(Pal.MaxCount() | Pal.PALhPal() | Pal.rgbR(1) | Pal.NearestPaletteIndex(255, 255, 255), 0);
}

TEST(clsPal, IsGreyScale)
{
    clsPal Pal;
    EXPECT_FALSE(Pal.IsGreyScale());  // a fresh object has no entries
    Pal.CreateGrays(256);
    EXPECT_TRUE(Pal.IsGreyScale());
    Pal.rgbG(255, 254);
    EXPECT_FALSE(Pal.IsGreyScale());
    Pal.CreatePalette2();
    Pal.rgbB(2, 99);  // past the entries in use
    EXPECT_TRUE(Pal.IsGreyScale());
    Pal.CreatePalette16();
    EXPECT_FALSE(Pal.IsGreyScale());
    Pal.setMaxCount(1);
    EXPECT_TRUE(Pal.IsGreyScale());
    Pal.setMaxCount(0);
    EXPECT_FALSE(Pal.IsGreyScale());
}

TEST(clsPal, NearestIndexPairsChannelsAndTakesTheLowestTie)
{
    clsPal Pal;
    Pal.CreatePalette16();
    // Red queries find red, not blue; 160 lies exactly between entries 8 (128) and 7 (192).
    for (auto [R, G, B, Index] : {std::array{250, 10, 0, 9}, {0, 10, 250, 12}, {120, 0, 10, 1}, {10, 0, 120, 4},
                                  {159, 159, 159, 8}, {160, 160, 160, 7}})
        EXPECT_EQ(Pal.NearestPaletteIndex(uint8_t(R), uint8_t(G), uint8_t(B)), Index) << R << "," << G << "," << B;
    Pal.CreateGrays(16);
    Pal.rgbR(15, 0);
    Pal.rgbG(15, 0);
    Pal.rgbB(15, 0);
    EXPECT_EQ(Pal.NearestPaletteIndex(255, 255, 255), 15);  // writes do not reach the palette object
    clsDIB Dib;
    MakeRow(Dib, {Quad(0, 0, 90), Quad(0, 0, 10), Quad(0, 0, 30), Quad(0, 0, 10)});
    Pal.CreatePalette256(Dib);  // entries 90, 10, 30 of red
    EXPECT_EQ(Pal.NearestPaletteIndex(20, 0, 0), 1);
    EXPECT_EQ(Pal.NearestPaletteIndex(60, 0, 0), 0);
    EXPECT_EQ(Pal.NearestPaletteIndex(59, 0, 0), 2);
}

TEST(clsPal, NearestIndexAnswersAgreeWithAPlainSearch)
{
    // Queries repeat and the table changes between rounds, so remembered answers are checked too.
    clsDIB Photo;
    MakePhoto(Photo, 40, 30);
    const std::vector<uint32_t> Queries = RandomWords(3000, 11);
    clsPal Pal;
    for (int Round = 0; Round < 4; ++Round) {
        SCOPED_TRACE(Round);
        if (Round % 2 == 0) Pal.CreateOptimal(Photo, 200 - Round * 90, 8);
        if (Round == 1) Pal.CreateHalftone(4);
        if (Round == 3) Pal.CreateGrays(256);
        for (int Pass = 0; Pass < 2; ++Pass)
            for (uint32_t Q : Queries) {
                const Rgb C{int(Q & 255), int((Q >> 8) & 255), int((Q >> 16) & 255)};
                int Best = 0, BestDistance = 1 << 30;
                for (int I = 0; I < Pal.MaxCount(); ++I) {
                    int D = 0;
                    for (int K = 0; K < 3; ++K)
                        D += (EntryOf(Pal, I)[K] - C[K]) * (EntryOf(Pal, I)[K] - C[K]);
                    if (D < BestDistance) BestDistance = D, Best = I;
                }
                ASSERT_EQ(Pal.NearestPaletteIndex(uint8_t(C[0]), uint8_t(C[1]), uint8_t(C[2])), Best) << Q;
            }
    }
}

TEST(clsPal, Palette256KeepsFirstSeenColoursInStorageOrder)
{
    // 300 distinct colours over three rows of a bottom-up surface, so the bottom image row is read first.
    const std::vector<uint32_t> Quads = Grid(100, 3, [](int X, int Y) {
        const int N = (2 - Y) * 100 + X;  // order of storage
        return Quad(uint8_t(N % 7), uint8_t(N / 7), 5, uint8_t(X));  // alpha plays no part
    });
    clsDIB Dib;
    MakeDIB32(Dib, 100, 3, Quads, false);
    clsPal Pal;
    std::vector<std::string> Events;
    Record(Pal, Events);
    Pal.CreatePalette256(Dib);
    ASSERT_EQ(Pal.MaxCount(), 256);
    for (int N : {0, 1, 99, 100, 255})
        EXPECT_EQ(EntryOf(Pal, N), (Rgb{5, N / 7, N % 7})) << N;
    // Two rows done, then the scan stops inside the third.
    EXPECT_EQ(Events, (std::vector<std::string>{"0", "50", "end", "end"}));

    MakeRow(Dib, {Quad(1, 2, 3, 0), Quad(1, 2, 3, 255), Quad(9, 9, 9), Quad(1, 2, 3), Quad(0, 0, 0)});
    Events.clear();
    Pal.CreatePalette256(Dib);
    EXPECT_EQ(EntriesOf(Pal), (std::vector<Rgb>{{3, 2, 1}, {9, 9, 9}, {0, 0, 0}}));
    EXPECT_EQ(Events, (std::vector<std::string>{"end", "end"}));  // one row: no percentage
}

TEST(clsPal, OptimalKeepsTheFirstColourOfEachLeaf)
{
    struct Case {
        const char* Name;
        std::vector<uint32_t> Quads;  // one row
        int MaxColors;
        std::vector<Rgb> Entries;  // worked out by hand from the midpoint splits
    };
    const std::vector<Case> Cases = {
        {"solid", std::vector<uint32_t>(50, Quad(30, 60, 90)), 256, {{90, 60, 30}}},
        // 0 and 1 share every box down to depth 8 (the last split of 0..2 is at 1).
        {"one leaf", {Quad(1, 0, 1), Quad(0, 1, 0), Quad(1, 1, 1)}, 256, {{1, 0, 1}}},
        {"one leaf swapped", {Quad(0, 1, 0), Quad(1, 0, 1), Quad(1, 1, 1)}, 256, {{0, 1, 0}}},
        // Leaves come out in the order their nodes were made, white before black.
        {"pool order", {Quad(255, 255, 255), Quad(0, 0, 0), Quad(0, 0, 255)}, 256,
         {{255, 255, 255}, {0, 0, 0}, {255, 0, 0}}},
        // 0 and 2 split only at depth 8; their merge weighs each once, however often it was seen.
        {"merge", {Quad(0, 0, 0), Quad(0, 0, 0), Quad(0, 0, 0), Quad(0, 0, 2)}, 1, {{1, 0, 0}}},
        // The merged leaf is closed: the colours after it change nothing.
        {"merge rounds halves to even", {Quad(0, 0, 0), Quad(0, 1, 2), Quad(0, 1, 0), Quad(0, 2, 2)}, 1,
         {{1, 0, 0}}},
        {"merge rounds up to even", {Quad(0, 1, 0), Quad(0, 2, 2)}, 1, {{1, 2, 0}}},
        // The root's own children are never merged.
        {"root children stay", {Quad(0, 0, 0), Quad(255, 255, 255)}, 1, {{0, 0, 0}, {255, 255, 255}}},
    };
    for (const Case& C : Cases) {
        SCOPED_TRACE(C.Name);
        clsDIB Dib;
        MakeRow(Dib, C.Quads);
        clsPal Pal;
        Pal.CreateOptimal(Dib, C.MaxColors, 8);
        EXPECT_EQ(EntriesOf(Pal), C.Entries);
        EXPECT_NE(Pal.PALhPal(), 0);
    }
}

TEST(clsPal, OptimalDependsOnWhichPixelComesFirst)
{
    clsDIB Photo;
    MakePhoto(Photo, 64, 48);
    clsPal Pal;
    Pal.CreateOptimal(Photo, 16, 8);
    const std::vector<Rgb> Before = EntriesOf(Pal);
    const uint32_t First = GetQuad(Photo, 0, 0);
    SetQuad(Photo, 0, 0, GetQuad(Photo, 1, 0));
    SetQuad(Photo, 1, 0, First);
    Pal.CreateOptimal(Photo, 16, 8);
    EXPECT_NE(EntriesOf(Pal), Before);
}

TEST(clsPal, OptimalStaysWithinItsLimits)
{
    clsDIB Photo;
    MakePhoto(Photo, 64, 48);
    clsPal Pal;
    for (int MaxColors : {8, 16, 100, 256}) {
        Pal.CreateOptimal(Photo, MaxColors, 8);
        EXPECT_GT(Pal.MaxCount(), MaxColors * 3 / 4) << MaxColors;
        EXPECT_LE(Pal.MaxCount(), MaxColors) << MaxColors;
    }
    // Out-of-range limits are brought into range rather than trusted.
    Pal.CreateOptimal(Photo, 256, 8);
    const std::vector<Rgb> Full = EntriesOf(Pal);
    Pal.CreateOptimal(Photo, 100000, 200);
    EXPECT_EQ(EntriesOf(Pal), Full);
    Pal.CreateOptimal(Photo, 1, 1);
    const std::vector<Rgb> Coarsest = EntriesOf(Pal);
    EXPECT_LE(Coarsest.size(), 8u);
    Pal.CreateOptimal(Photo, -7, 0);
    EXPECT_EQ(EntriesOf(Pal), Coarsest);
    // Surfaces without 32-bit pixels give an empty table and no palette object.
    clsDIB Empty, Eight;
    ASSERT_TRUE(Eight.CreateBlankDIB(4, 4, 8, 0xFFFFFF, false));
    for (clsDIB* Dib : {&Empty, &Eight}) {
        Pal.CreateOptimal(*Dib, 256, 8);
        EXPECT_EQ(Pal.MaxCount() | Pal.PALhPal(), 0);
        Pal.CreatePalette16();
        Pal.CreatePalette256(*Dib);
        EXPECT_EQ(Pal.MaxCount() | Pal.PALhPal(), 0);
    }
}

TEST(clsPal, OptimalReportsRowsThenNodes)
{
    clsDIB Dib;
    MakeDIB32(Dib, 2, 3, std::vector<uint32_t>(6, Quad(1, 2, 3)));
    clsPal Pal;
    std::vector<std::string> Events;
    Record(Pal, Events);
    Pal.CreateOptimal(Dib, 256, 8);
    // Three rows, then one event for each of the pool's first 50 nodes.
    std::vector<std::string> Expected = {"0", "50", "100", "end"};
    for (int I = 0; I < 50; ++I)
        Expected.push_back(std::to_string(int(std::nearbyint(I * 100.0 / 49))));
    Expected.push_back("end");
    EXPECT_EQ(Events, Expected);
}
