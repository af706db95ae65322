// The PCX reader and writer: made-up files for the rules the public suite does not reach, the
// exact bytes written, and the public suite against ImageMagick. Refused on purpose: two bits a
// pixel (CGA_FSD, CGA_RGBI) and 01r_00, whose lines are shorter than its width. Mono pictures
// show set bits white, as the reference picture of CGA_BW does, where ImageMagick shows them
// black: CGA_BW, pil184, test-bpp1 and ver3_0_palette_1bpp_10x10_white are compared with its
// negative.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "PixelCompare.h"
#include "clsDIB.h"
#include "clsPCX.h"

namespace {

using namespace PixelCompare;

using Bytes = std::vector<uint8_t>;



// A file with the window from 0, 0, a header palette that is not black and white, and Tail
// after the body.
Bytes Pcx(uint8_t Bits, uint8_t Planes, uint16_t W, uint16_t H, uint8_t PlaneLine, const Bytes& Body,
          uint8_t Encoding = 1, const Bytes& Tail = {})
{
    Bytes F(128, 0);
    const uint8_t Fields[] = {10, 5, Encoding, Bits, 0, 0, 0, 0, uint8_t(W - 1), uint8_t((W - 1) >> 8),
                              uint8_t(H - 1), uint8_t((H - 1) >> 8)};
    std::copy(std::begin(Fields), std::end(Fields), F.begin());
    const uint8_t Palette[] = {1, 2, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 50, 51, 52, 60, 61, 62};
    std::copy(std::begin(Palette), std::end(Palette), F.begin() + 19);
    F[65] = Planes;
    F[66] = PlaneLine;
    F.insert(F.end(), Body.begin(), Body.end());
    F.insert(F.end(), Tail.begin(), Tail.end());
    return F;
}

Bytes With(Bytes File, size_t At, uint8_t Value)
{
    File[At] = Value;
    return File;
}

// A 256-colour tail after its marker, entry 1 being red 10, green 20, blue 30.
Bytes Tail(uint8_t Marker)
{
    Bytes T(769, 0);
    T[0] = Marker, T[4] = 10, T[5] = 20, T[6] = 30;
    return T;
}

void Paint(clsDIB& Dib, int W, int H, uint32_t (*Colour)(int X, int Y))
{
    ASSERT_TRUE(Dib.CreateBlankDIB(W, H, 32, 0, true));
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X)
            Dib.DIBhDC()->SetPixelV(X, Y, Colour(X, Y));
}

} // namespace

TEST(clsPCX, MadeUpFilesFollowTheReadingRules)
{
    const struct {
        const char* Case;
        Bytes File;
        Pixels Expected;  // empty when the load must fail
    } Cases[] = {
        {"a run crosses a line end; grey without a tail", Pcx(8, 1, 2, 2, 2, {0xC3, 7, 9}),
         {0x070707, 0x070707, 0x070707, 0x090909}},
        {"no 12, a grey ramp", Pcx(8, 1, 1, 1, 1, {1}, 1, Tail(11)), {0x010101}},
        {"a run of 0 bytes", Pcx(8, 1, 2, 1, 2, {0xC0, 5, 6, 7}), {0x060606, 0x070707}},
        {"mono is black and white", Pcx(1, 1, 3, 1, 2, {0xA0, 0}, 0), {0xFFFFFF, 0, 0xFFFFFF}},
        {"8 bits in two planes", Pcx(8, 2, 1, 1, 2, {0, 0, 0, 0}, 0), {}},
        {"run data cut short", Pcx(8, 1, 2, 2, 2, {0xC2, 1}), {}},
        {"a count byte last", Pcx(8, 1, 2, 2, 2, {1, 2, 3, 0xC1}), {}},
        {"raw body cut short", Pcx(8, 3, 1, 1, 2, {10, 0, 20, 0, 30}, 0), {}},
        {"encoding 2", Pcx(8, 1, 1, 1, 1, {1}, 2), {}},
        {"version 4", With(Pcx(8, 1, 1, 1, 1, {1}), 1, 4), {}},
        {"manufacturer 0", With(Pcx(8, 1, 1, 1, 1, {1}), 0, 0), {}},
        {"window ending before its start", With(Pcx(8, 1, 1, 1, 1, {1}), 4, 1), {}},
        {"more lines than the file could hold", With(Pcx(8, 1, 4000, 4000, 0xA0, {0xFF, 1}), 67, 0x0F), {}},
        {"more pixels than a picture may have", With(Pcx(8, 1, 32767, 32767, 0xFF, {0xFF, 1}), 67, 0x7F), {}},
        {"header cut short", Bytes(127, 10), {}},
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(C.Case);
        clsPCX Reader;
        ASSERT_EQ(Reader.LoadPCXBytes(C.File.data(), C.File.size()), !C.Expected.empty());
        EXPECT_EQ(Ours(Reader.Picture()), C.Expected);
    }
}

TEST(clsPCX, WritesTheHeaderAndEncodesLines)
{
    const struct {
        const char* Case;
        int W, H;
        uint32_t (*Colour)(int X, int Y);
        int16_t Compress;
        Bytes Body;
    } Cases[] = {
        {"5 wide, raw: 6 bytes a plane, the pad 0", 5, 1, [](int X, int) { return 0x150B01u + X * 0x010101u; }, 0,
         {1, 2, 3, 4, 5, 0, 11, 12, 13, 14, 15, 0, 21, 22, 23, 24, 25, 0}},
        {"64 equal bytes: a run of 63 and a single byte", 64, 1, [](int, int) { return 0x1E140Au; }, -1,
         {255, 10, 10, 255, 20, 20, 255, 30, 30}},
        {"a lone 200 and a lone 192 escaped by 193; an odd width keeps planes apart", 1, 1,
         [](int, int) { return 0xC005C8u; }, -1, {193, 200, 0, 5, 0, 193, 192, 0}},
        {"runs go on across planes with an even width, not across lines", 2, 2, [](int, int) { return 0x323232u; },
         -1, {198, 50, 198, 50}},
        {"two of 200", 2, 1, [](int, int) { return 0x0707C8u; }, -1, {194, 200, 196, 7}},
        {"300 wide", 300, 1, [](int, int) { return 0u; }, 0, Bytes(900, 0)},
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(C.Case);
        clsDIB Source;
        Paint(Source, C.W, C.H, C.Colour);
        Bytes Expected(128, 0);
        const int Line = C.W + (C.W & 1);
        const uint8_t Fields[] = {10, 5, uint8_t(C.Compress ? 1 : 0), 8, 1, 0, 1, 0, uint8_t(C.W), uint8_t(C.W >> 8),
                                  uint8_t(C.H), 0, 96, 0, 96, 0};
        std::copy(std::begin(Fields), std::end(Fields), Expected.begin());
        Expected[65] = 3, Expected[66] = uint8_t(Line), Expected[67] = uint8_t(Line >> 8);
        Expected.insert(Expected.end(), C.Body.begin(), C.Body.end());
        Bytes File;
        ASSERT_TRUE(clsPCX::PCXFileBytes(Source.DIBhDC(), C.W, C.H, C.Compress, File));
        EXPECT_EQ(File, Expected);
    }
    Bytes File;
    EXPECT_FALSE(clsPCX::PCXFileBytes(nullptr, 3, 3, -1, File));
}

TEST(clsPCX, ImageMagickAndOurReaderReadWhatWeWrite)
{
    const std::string Path = testing::TempDir() + "pcx_written_" + std::to_string(getpid()) + ".pcx";
    std::ofstream(Path) << std::string(5000, 'x');
    for (const auto& [W, H] : {std::pair{1, 1}, {5, 3}, {64, 7}, {33, 40}, {200, 3}})
        for (const int16_t Compress : {int16_t(0), int16_t(-1)}) {
            SCOPED_TRACE(std::to_string(W) + "x" + std::to_string(H) + (Compress ? " compressed" : " raw"));
            clsDIB Source, Back;
            // Noise on the left, long runs with bytes of 192 and above on the right.
            Paint(Source, W, H, [](int X, int Y) {
                return X < 20 ? (X * 37 + Y * 91) * 2654435761u & 0xFFFFFF : 0xC0C8FFu - Y * 0x010101u * (X / 70);
            });
            ASSERT_TRUE(clsPCX().SavePCXinFile(Path, Source.DIBhDC(), W, H, Compress));
            EXPECT_EQ(ImageMagick(Path), Ours(Source));
            ASSERT_TRUE(clsPCX::LoadPCXToDIB(Path, Back));
            EXPECT_EQ(Ours(Back), Ours(Source));
        }
}

TEST(clsPCX, PublicSuiteMatchesImageMagick)
{
    const std::set<std::string> Refused = {"CGA_FSD.PCX", "CGA_RGBI.PCX", "01r_00.pcx"};
    int Compared = 0;
    for (const auto& Entry : std::filesystem::recursive_directory_iterator(TESSAVO_TESTDATA "/pcx")) {
        const std::string Extension = Entry.path().extension().string(), Name = Entry.path().filename().string();
        if (Extension != ".pcx" && Extension != ".PCX")
            continue;
        SCOPED_TRACE(Name);
        clsPCX Reader;
        ASSERT_EQ(Reader.LoadPCX(Entry.path().string()), !Refused.count(Name));
        if (Refused.count(Name))
            continue;
        EXPECT_EQ(Ours(Reader.Picture()), ImageMagick(Entry.path().string(), Reader.Bpp() == 1 ? "-negate" : ""));
        ++Compared;
    }
    EXPECT_EQ(Compared, 15);
}

TEST(clsPCX, DamagedCopiesOfRealFilesAreRefused)
{
    for (const auto& Entry : std::filesystem::recursive_directory_iterator(TESSAVO_TESTDATA "/pcx")) {
        if (!Entry.is_regular_file())
            continue;
        std::ifstream In(Entry.path(), std::ios::binary);
        const Bytes File((std::istreambuf_iterator<char>(In)), std::istreambuf_iterator<char>());
        clsPCX Reader;
        if (!Reader.LoadPCXBytes(File.data(), File.size()))
            continue;
        SCOPED_TRACE(Entry.path().filename().string());
        // Without a body, and with lines longer than the file holds.
        EXPECT_FALSE(Reader.LoadPCXBytes(File.data(), 128));
        const Bytes Long = With(With(File, 66, 0xFF), 67, 0x7F);
        EXPECT_FALSE(Reader.LoadPCXBytes(Long.data(), Long.size()));
        EXPECT_EQ(Reader.Picture().DIBhDC(), nullptr);
    }
}
