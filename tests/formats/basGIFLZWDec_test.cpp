// The GIF LZW decoder: hand-made streams for each way a stream can end or go wrong, the
// surface-size stop, the surplus pixels, and real files read alike by giflib.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "LZWTestSupport.h"
#include "basGIFLZWDec.h"
#include "basGIFLZWEnc.h"

using namespace LZWTest;

namespace {

class GIFLZWDec : public ::testing::Test {
protected:
    void SetUp() override
    {
        basGIFLZWDec::InitDecoderPowers();
        basGIFLZWEnc::InitEncoderMasks();
    }
};

constexpr uint8_t Blank = 0xEE;  // what the surface held before the decode

struct HandStream {
    const char* Name;
    int Width, Height;
    bool Interlaced;
    int MinCodeSize;
    std::vector<uint8_t> Data;
    std::vector<uint8_t> Expected;  // row by row, top first
};

std::vector<uint8_t> Decode(const HandStream& Case)
{
    auto Dib = MakeSurface(Case.Width, Case.Height, Blank);
    basGIFLZWDec::DecodeFrameLZW(*Dib, Case.Interlaced, static_cast<uint8_t>(Case.MinCodeSize), Case.Data);
    return Pixels(*Dib);
}

TEST_F(GIFLZWDec, HandMadeStreams)
{
    const uint8_t B = Blank;
    const HandStream Cases[] = {
        {"plain", 3, 1, false, 2, PackCodes({{4, 3}, {1, 3}, {2, 3}, {3, 3}, {5, 4}}), {1, 2, 3}},
        // Without End the frame stands as far as the data went. (36 bits: the 4 bits of padding
        // make no code.)
        {"no End code", 6, 1, false, 8, PackCodes({{256, 9}, {1, 9}, {2, 9}, {3, 9}}), {1, 2, 3, B, B, B}},
        // The first code is taken for a Clear and dropped, whatever it is.
        {"no leading Clear", 4, 1, false, 2, PackCodes({{1, 3}, {2, 3}, {3, 3}, {5, 3}}), {2, 3, B, B}},
        // Clear 256, 1, 2, then 3 of which only 5 bits came: the two pixels stand.
        {"cut short", 6, 1, false, 8, std::vector<uint8_t>{0, 0x00, 0x03, 0x08, 0x18}, {1, 2, B, B, B, B}},
        // A Clear straight after the first code is a pixel of value Clear (4), not a Clear.
        {"Clear after Clear", 3, 1, false, 2, PackCodes({{4, 3}, {4, 3}, {2, 3}, {5, 3}}), {4, 2, B}},
        // 12 is above the next free code 10 and no string came yet: Stack(0) goes out as 0 and
        // decoding goes on.
        {"code above NextFree first", 4, 1, false, 3, PackCodes({{8, 4}, {1, 4}, {12, 4}, {3, 4}, {9, 4}}),
         {1, 0, 3, B}},
        // After the string of 2, a code above the next free code (11) ends the decode.
        {"code above NextFree later", 4, 1, false, 3, PackCodes({{8, 4}, {1, 4}, {2, 4}, {12, 4}, {3, 4}, {9, 4}}),
         {1, 2, B, B}},
        // 10 = 11, 11 = 111, 12 = 1111, then 2, 3, 14 = 23 (the width is then 5), 4, 5, 6: 17
        // pixels for a 1x4 surface. Surplus pixels start again at row 0 for three more passes;
        // the 17th would begin a fifth and is not written.
        {"surplus pixels wrap four times",
         1, 4, false, 3,
         PackCodes({{8, 4}, {1, 4}, {10, 4}, {11, 4}, {12, 4}, {2, 4}, {3, 4}, {14, 4}, {4, 5}, {5, 5}, {6, 5}, {9, 5}}),
         {2, 3, 4, 5}},
        // Interlaced with a height of 5: the pixels go to rows 0, 4, 2, 1, 3.
        {"interlaced passes", 1, 5, true, 3, PackCodes({{8, 4}, {1, 4}, {8, 4}, {2, 4}, {8, 4}, {3, 4}, {8, 4},
                                                      {4, 4}, {8, 4}, {5, 4}, {9, 4}}),
         {1, 4, 3, 5, 2}},
        // Interlaced with a height of 4 is read in plain row order.
        {"interlaced, height 4", 1, 4, true, 3,
         PackCodes({{8, 4}, {1, 4}, {8, 4}, {2, 4}, {8, 4}, {3, 4}, {8, 4}, {4, 4}, {9, 4}}), {1, 2, 3, 4}},
        // With 9-bit codes, pairs of a pixel and a Clear take 18 bits: the read position after
        // each code runs 3, 4, ..., 10, 12, ..., 19, 21, ...: it stands at 12 but never at 20. A
        // 4x3 surface (12 bytes) stops after the Clear behind pixel 4; a 2x5 one (stride 4, 20
        // bytes) reads on to End.
        {"stops where the read position meets the surface size", 4, 3, false, 8,
         PackCodes({{256, 9}, {1, 9}, {256, 9}, {2, 9}, {256, 9}, {3, 9}, {256, 9}, {4, 9}, {256, 9}, {5, 9},
                    {256, 9}, {6, 9}, {256, 9}, {7, 9}, {257, 9}}),
         {1, 2, 3, 4, B, B, B, B, B, B, B, B}},
        {"reads on when the read position jumps over the surface size", 2, 5, false, 8,
         PackCodes({{256, 9}, {1, 9},  {256, 9}, {2, 9},  {256, 9}, {3, 9},  {256, 9}, {4, 9},
                    {256, 9}, {5, 9},  {256, 9}, {6, 9},  {256, 9}, {7, 9},  {256, 9}, {8, 9},
                    {256, 9}, {9, 9},  {256, 9}, {10, 9}, {257, 9}}),
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}},
        // A minimum code size whose largest code leaves 32 bits decodes nothing.
        {"code size 31", 2, 1, false, 30, std::vector<uint8_t>(40, 0x01), {B, B}},
    };
    for (const HandStream& Case : Cases) {
        SCOPED_TRACE(Case.Name);
        EXPECT_EQ(Decode(Case), Case.Expected);
    }
}

// A stream that fills the table and goes on without a Clear: Clear 256 and then literal codes,
// each adding an entry, 9 bits up to entry 511, 10 to 1023, 11 to 2047, 12 above.
std::vector<uint8_t> LiteralsWithoutClear(int Count)
{
    std::vector<uint8_t> Data{0};
    uint64_t Bits = 256;  // Clear at 9 bits
    int Held = 9;
    int NextFree = 258;
    for (int I = 0; I < Count; ++I) {
        const int Width = NextFree < 512 ? 9 : NextFree < 1024 ? 10 : NextFree < 2048 ? 11 : 12;
        Bits |= static_cast<uint64_t>(I % 200) << Held;
        Held += Width;
        if (I > 0)
            ++NextFree;
        while (Held >= 8) {
            Data.push_back(static_cast<uint8_t>(Bits));
            Bits >>= 8;
            Held -= 8;
        }
    }
    if (Held > 0)
        Data.push_back(static_cast<uint8_t>(Bits));
    return Data;
}

TEST_F(GIFLZWDec, FullTableWithoutClearStopsTwoCodesLater)
{
    // Literal 1 makes no entry; literals 2 to 3839 fill 258 to 4095. Literal 3840 is stored in
    // slot 4096; literal 3841 writes its pixel and fails on the store at 4097.
    const std::vector<uint8_t> Data = LiteralsWithoutClear(3845);
    auto Dib = MakeSurface(4000, 2, Blank);  // 8000 bytes, longer than the data
    ASSERT_LT(Data.size(), 8000u);
    basGIFLZWDec::DecodeFrameLZW(*Dib, false, 8, Data);
    const std::vector<uint8_t> Out = Pixels(*Dib);
    for (size_t I = 0; I < 3841; ++I)
        ASSERT_EQ(Out[I], I % 200) << I;
    for (size_t I = 3841; I < Out.size(); ++I)
        ASSERT_EQ(Out[I], Blank) << I;
}

TEST_F(GIFLZWDec, NothingButAnEightBitSurface)
{
    clsDIB Deep;
    ASSERT_TRUE(Deep.CreateBlankDIB(3, 1, 32, 0xFFFFFF, true));
    std::memset(Deep.DIBBitsPtr(), Blank, static_cast<size_t>(Deep.DIBSize()));
    basGIFLZWDec::DecodeFrameLZW(Deep, false, 2, PackCodes({{4, 3}, {1, 3}, {2, 3}, {3, 3}, {5, 4}}));
    for (int I = 0; I < Deep.DIBSize(); ++I)
        ASSERT_EQ(Deep.DIBBitsPtr()[I], Blank);
}

TEST_F(GIFLZWDec, NoiseLongerThanItsSurfaceIsCutWhereTheReadPositionLands)
{
    // 256-colour noise compresses to more bytes than its surface has. Every code but the last
    // two makes a table entry or a Clear, so where each code lies in the data depends on its
    // number alone: in the run of 12-bit codes from byte 2336 on, the read position stands at
    // 2339, 2340, 2342, 2343, ... and never at 2341 + 3n. A 64x60 surface (3840 bytes) is cut
    // there; a 64x61 or 64x64 one (3904, 4096 bytes) is not, and decodes whole.
    struct NoiseCase {
        int Height;
        bool Cut;
    };
    std::mt19937 Random(3);
    for (const NoiseCase& Case : {NoiseCase{60, true}, NoiseCase{61, false}, NoiseCase{64, false}}) {
        for (int Trial = 0; Trial < 2; ++Trial) {
            SCOPED_TRACE(testing::Message() << "64x" << Case.Height << " trial " << Trial);
            std::vector<uint8_t> Noise(64 * static_cast<size_t>(Case.Height));
            for (uint8_t& Value : Noise)
                Value = static_cast<uint8_t>(Random());
            auto Source = SurfaceOf(64, Case.Height, Noise);
            std::vector<uint8_t> Blocks;
            basGIFLZWEnc::EncodeFrameLZW(Blocks, *Source, 9, false);
            const std::vector<uint8_t> Data = JoinSubBlocks(Blocks);
            ASSERT_GT(Data.size(), Noise.size() + 1);
            auto Target = MakeSurface(64, Case.Height, Blank);
            basGIFLZWDec::DecodeFrameLZW(*Target, false, 8, Data);
            const std::vector<uint8_t> Out = Pixels(*Target);
            size_t Good = 0;
            while (Good < Out.size() && Out[Good] == Noise[Good])
                ++Good;
            if (!Case.Cut) {
                EXPECT_EQ(Good, Out.size());
                continue;
            }
            // The codes up to byte 3839 hold about three quarters of the pixels.
            EXPECT_GT(Good, Out.size() / 2);
            EXPECT_LT(Good, Out.size());
            for (size_t I = Good; I < Out.size(); ++I)
                ASSERT_EQ(Out[I], Blank) << I;
        }
    }
}

// The images of a GIF file as LZW data: minimum code size, size, interlace flag and the joined
// sub-blocks of each.
struct FileImage {
    int Width = 0, Height = 0, MinCodeSize = 0;
    bool Interlaced = false;
    std::vector<uint8_t> Data;
};

std::vector<FileImage> ImagesOf(const std::vector<uint8_t>& File)
{
    std::vector<FileImage> Images;
    size_t Pos = 13;
    auto SkipBlocks = [&File, &Pos](std::vector<uint8_t>* Keep) {
        while (Pos < File.size() && File[Pos] != 0) {
            const size_t Length = File[Pos];
            if (Keep && Pos + 1 + Length <= File.size())
                Keep->insert(Keep->end(), File.begin() + static_cast<ptrdiff_t>(Pos) + 1,
                             File.begin() + static_cast<ptrdiff_t>(Pos + 1 + Length));
            Pos += 1 + Length;
        }
        ++Pos;
    };
    if (File.size() < 13)
        return Images;
    if (File[10] & 0x80)
        Pos += 3u << ((File[10] & 7) + 1);
    while (Pos < File.size() && File[Pos] != 0x3B) {
        if (File[Pos] == 0x21) {
            Pos += 2;
            SkipBlocks(nullptr);
        } else if (File[Pos] == 0x2C && Pos + 10 < File.size()) {
            FileImage Image;
            Image.Width = File[Pos + 5] | File[Pos + 6] << 8;
            Image.Height = File[Pos + 7] | File[Pos + 8] << 8;
            const uint8_t Flags = File[Pos + 9];
            Image.Interlaced = (Flags & 0x40) != 0;
            Pos += 10;
            if (Flags & 0x80)
                Pos += 3u << ((Flags & 7) + 1);
            if (Pos >= File.size())
                break;
            Image.MinCodeSize = File[Pos++];
            Image.Data.push_back(0);
            SkipBlocks(&Image.Data);
            Images.push_back(std::move(Image));
        } else {
            ++Pos;
        }
    }
    return Images;
}

TEST_F(GIFLZWDec, RealFilesDecodeAsGiflibDecodesThem)
{
    const std::filesystem::path Folder = std::filesystem::path(TESSAVO_TESTDATA) / "gif-giflib" / "pic";
    int Checked = 0;
    for (const char* Name : {"fire.gif", "gifgrid.gif", "porsche.gif", "solid2.gif", "treescap.gif", "wedge.gif",
                             "x-trans.gif"}) {
        SCOPED_TRACE(Name);
        std::ifstream Stream(Folder / Name, std::ios::binary);
        ASSERT_TRUE(Stream.good());
        const std::vector<uint8_t> File{std::istreambuf_iterator<char>(Stream), std::istreambuf_iterator<char>()};
        const std::vector<FileImage> Images = ImagesOf(File);
        ASSERT_FALSE(Images.empty());
        // giflib gives the first image; the others are checked by wrapping each alone.
        for (size_t Index = 0; Index < Images.size(); ++Index) {
            const FileImage& Image = Images[Index];
            std::vector<uint8_t> Blocks;
            for (size_t Pos = 1; Pos < Image.Data.size(); Pos += 255) {
                const size_t Length = std::min<size_t>(255, Image.Data.size() - Pos);
                Blocks.push_back(static_cast<uint8_t>(Length));
                Blocks.insert(Blocks.end(), Image.Data.begin() + static_cast<ptrdiff_t>(Pos),
                              Image.Data.begin() + static_cast<ptrdiff_t>(Pos + Length));
            }
            std::vector<uint8_t> Expected;
            int Width = 0, Height = 0;
            ASSERT_TRUE(GiflibDecode(WrapInGif(Image.Width, Image.Height, Image.MinCodeSize, Image.Interlaced, Blocks),
                                     Expected, Width, Height));
            auto Dib = MakeSurface(Image.Width, Image.Height, 0);
            basGIFLZWDec::DecodeFrameLZW(*Dib, Image.Interlaced, static_cast<uint8_t>(Image.MinCodeSize), Image.Data);
            EXPECT_EQ(Pixels(*Dib), Expected) << "image " << Index;
            ++Checked;
        }
    }
    EXPECT_GT(Checked, 7);
}

} // namespace
