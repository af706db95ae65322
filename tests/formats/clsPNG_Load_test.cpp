// The PNG reader on files built here: the size floor, the chunk walker's errors and tag strings,
// every colour type and depth through every row filter and Adam7, transparency, the background
// colour and its composition, the text and gamma chunks, drawing; and the checksum class.
#include <gtest/gtest.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>

#include "basMath.h"
#include "clsCRC.h"
#include "clsDIB.h"
#include "clsPNG.h"
#include "PNGTestSupport.h"

namespace {

using namespace PNGTestSupport;

using Bytes = std::vector<uint8_t>;
const Bytes Signature = {137, 'P', 'N', 'G', 13, 10, 26, 10};

void Put32(Bytes& Out, uint32_t Value)
{
    for (int Shift = 24; Shift >= 0; Shift -= 8)
        Out.push_back(static_cast<uint8_t>(Value >> Shift));
}

// Length, type, payload and the CRC-32 of type and payload, spoilt by CrcXor.
Bytes Chunk(const std::string& Type, const Bytes& Payload, uint32_t CrcXor = 0)
{
    Bytes Out;
    Put32(Out, static_cast<uint32_t>(Payload.size()));
    Bytes Body(Type.begin(), Type.end());
    Body.insert(Body.end(), Payload.begin(), Payload.end());
    Out.insert(Out.end(), Body.begin(), Body.end());
    Put32(Out, static_cast<uint32_t>(crc32(0, Body.data(), static_cast<uInt>(Body.size()))) ^ CrcXor);
    return Out;
}

Bytes Ihdr(uint32_t Width, uint32_t Height, uint8_t Depth, uint8_t Type, uint8_t Interlace = 0)
{
    Bytes Out;
    Put32(Out, Width);
    Put32(Out, Height);
    Out.insert(Out.end(), {Depth, Type, 0, 0, Interlace});
    return Out;
}

Bytes Deflate(const Bytes& Raw)
{
    uLongf Size = compressBound(static_cast<uLong>(Raw.size()));
    Bytes Out(Size);
    compress2(Out.data(), &Size, Raw.data(), static_cast<uLong>(Raw.size()), 9);
    Out.resize(Size);
    return Out;
}

// The signature, a private chunk that lifts the whole to at least AtLeast bytes (exactly, where
// the parts leave room), then the parts.
Bytes File(std::initializer_list<Bytes> Parts, size_t AtLeast = 100)
{
    size_t Size = Signature.size();
    for (const Bytes& P : Parts)
        Size += P.size();
    Bytes Out = Signature;
    if (Size < AtLeast) {
        const Bytes Fill = Chunk("fiLl", Bytes(AtLeast - Size >= 12 ? AtLeast - Size - 12 : 0, 'x'));
        Out.insert(Out.end(), Fill.begin(), Fill.end());
    }
    for (const Bytes& P : Parts)
        Out.insert(Out.end(), P.begin(), P.end());
    return Out;
}

// A picture as samples, one to four a pixel, row after row.
struct Picture {
    int W = 1, H = 1;
    uint8_t Type = 0, Depth = 8;
    std::vector<uint16_t> Samples;
    Bytes Plte;
    int Channels() const { return Type == 2 ? 3 : Type == 4 ? 2 : Type == 6 ? 4 : 1; }
    uint32_t Max() const { return (1u << Depth) - 1; }
};

Bytes Pack(const std::vector<uint16_t>& Samples, int Depth)
{
    Bytes Out((Samples.size() * Depth + 7) / 8, 0);
    for (size_t I = 0; I < Samples.size(); ++I) {
        if (Depth == 16) {
            Out[I * 2] = static_cast<uint8_t>(Samples[I] >> 8);
            Out[I * 2 + 1] = static_cast<uint8_t>(Samples[I]);
        } else {
            Out[I * Depth / 8] |= static_cast<uint8_t>(Samples[I] << (8 - Depth - I * Depth % 8));
        }
    }
    return Out;
}

// The filter byte, then the row with filter Type applied against Prev, the row above.
Bytes Filtered(uint8_t Type, const Bytes& Row, const Bytes& Prev, size_t Left)
{
    Bytes Out{Type};
    for (size_t I = 0; I < Row.size(); ++I) {
        const int A = I >= Left ? Row[I - Left] : 0, B = Prev[I], C = I >= Left ? Prev[I - Left] : 0;
        const int P = A + B - C, PA = std::abs(P - A), PB = std::abs(P - B), PC = std::abs(P - C);
        const int Predict = Type == 1 ? A : Type == 2 ? B : Type == 3 ? (A + B) / 2
                          : Type == 4 ? (PA <= PB && PA <= PC ? A : PB <= PC ? B : C) : 0;
        Out.push_back(static_cast<uint8_t>(Row[I] - Predict));
    }
    return Out;
}

// The filtered rows, in the seven Adam7 passes when interlaced. Filter 5 takes row number mod 5;
// a pass starts over from a row of zeros.
Bytes Stream(const Picture& P, bool Interlaced, int Filter)
{
    struct Pass { int X0, Y0, DX, DY; };
    const std::vector<Pass> Passes = Interlaced
        ? std::vector<Pass>{{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4}, {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}}
        : std::vector<Pass>{{0, 0, 1, 1}};
    const size_t Left = std::max(1, P.Channels() * P.Depth / 8);
    Bytes Out;
    for (const Pass& S : Passes) {
        Bytes Prev;
        for (int Y = S.Y0, Row = 0; Y < P.H && S.X0 < P.W; Y += S.DY, ++Row) {
            std::vector<uint16_t> Samples;
            for (int X = S.X0; X < P.W; X += S.DX)
                for (int C = 0; C < P.Channels(); ++C)
                    Samples.push_back(P.Samples[(static_cast<size_t>(Y) * P.W + X) * P.Channels() + C]);
            const Bytes Packed = Pack(Samples, P.Depth);
            if (Prev.empty())
                Prev.assign(Packed.size(), 0);
            const Bytes F = Filtered(static_cast<uint8_t>(Filter == 5 ? Row % 5 : Filter), Packed, Prev, Left);
            Out.insert(Out.end(), F.begin(), F.end());
            Prev = Packed;
        }
    }
    return Out;
}

// The picture's file: IHDR, PLTE, the Extra chunks, IDAT in chunks of Split bytes, IEND.
Bytes Encode(const Picture& P, bool Interlaced = false, int Filter = 0, const std::vector<Bytes>& Extra = {},
             size_t Split = 0)
{
    Bytes Body = Chunk("IHDR", Ihdr(P.W, P.H, P.Depth, P.Type, Interlaced));
    if (!P.Plte.empty()) {
        const Bytes Plte = Chunk("PLTE", P.Plte);
        Body.insert(Body.end(), Plte.begin(), Plte.end());
    }
    for (const Bytes& E : Extra)
        Body.insert(Body.end(), E.begin(), E.end());
    const Bytes Z = Deflate(Stream(P, Interlaced, Filter));
    const size_t Step = Split ? Split : Z.size();
    for (size_t At = 0; At < Z.size(); At += Step) {
        const Bytes Idat = Chunk("IDAT", Bytes(Z.begin() + At, Z.begin() + std::min(At + Step, Z.size())));
        Body.insert(Body.end(), Idat.begin(), Idat.end());
    }
    return File({Body, Chunk("IEND", {})});
}

Picture RandomPicture(int W, int H, uint8_t Type, uint8_t Depth, uint32_t Seed)
{
    std::mt19937 Rng(Seed);
    // Half the samples from a few values, which make Paeth's ties and the sums' wrap-around common.
    static const uint16_t Pool[] = {0, 1, 2, 0x7F, 0x80, 0xFE, 0xFF, 0x1FF, 0x80FF, 0xFF00, 0xFFFF};
    Picture P{W, H, Type, Depth, {}, {}};
    P.Samples.resize(static_cast<size_t>(W) * H * P.Channels());
    for (uint16_t& S : P.Samples)
        S = static_cast<uint16_t>((Rng() % 2 ? Pool[Rng() % std::size(Pool)] : Rng()) & P.Max());
    if (Type == 3)
        for (uint32_t I = 0; I < 3 * (1u << Depth); ++I)
            P.Plte.push_back(static_cast<uint8_t>(Rng()));
    return P;
}


// What the reader shows of each pixel when there is no tRNS or bKGD: alpha << 24 | 0x00BBGGRR.
std::vector<uint32_t> Expected(const Picture& P)
{
    std::vector<uint32_t> Out;
    const auto Byte = [&](uint32_t V) { return P.Depth == 16 ? V >> 8 : V * 255 / P.Max(); };
    for (size_t I = 0; I < P.Samples.size(); I += P.Channels()) {
        const uint16_t* S = &P.Samples[I];
        switch (P.Type) {
        case 0: Out.push_back(Pixel(Byte(S[0]), Byte(S[0]), Byte(S[0]))); break;
        case 2: Out.push_back(Pixel(Byte(S[0]), Byte(S[1]), Byte(S[2]))); break;
        case 3: Out.push_back(Pixel(P.Plte[S[0] * 3], P.Plte[S[0] * 3 + 1], P.Plte[S[0] * 3 + 2])); break;
        case 4: Out.push_back(Pixel(Byte(S[0]), Byte(S[0]), Byte(S[0]), Byte(S[1]))); break;
        default: Out.push_back(Pixel(Byte(S[0]), Byte(S[1]), Byte(S[2]), Byte(S[3]))); break;
        }
    }
    return Out;
}


int32_t Open(clsPNG& Png, const Bytes& F, bool TagMode = false)
{
    return Png.OpenPNGBytes(F.data(), F.size(), TagMode);
}

// A file of this process in the temporary folder; the files go at exit.
std::string TempFile(const std::string& Name, const Bytes& Content)
{
    static struct Made {
        std::vector<std::string> Paths;
        ~Made() { for (const std::string& P : Paths) std::remove(P.c_str()); }
    } Files;
    const std::string Path = testing::TempDir() + "clsPNG_Load_" + std::to_string(getpid()) + "_" + Name;
    Files.Paths.push_back(Path);
    std::ofstream(Path, std::ios::binary).write(reinterpret_cast<const char*>(Content.data()), static_cast<std::streamsize>(Content.size()));
    return Path;
}

const Bytes Grey1x1 = Ihdr(1, 1, 8, 0);
const Bytes Idat1x1 = Chunk("IDAT", Deflate({0, 0x42}));
const Bytes Iend = Chunk("IEND", {});

} // namespace

TEST(clsPNGLoad, SizeFloorAndSignature)
{
    Bytes Bad = File({Chunk("IHDR", Grey1x1), Idat1x1, Iend}, 100);
    Bad[1] = 'Q';
    const struct { const char* Name; Bytes Content; size_t Size; int32_t Code; } Cases[] = {
        {"99", File({Chunk("IHDR", Grey1x1), Idat1x1, Iend}, 99), 99, clsPNG::ErrInvalidFile},
        {"100", File({Chunk("IHDR", Grey1x1), Idat1x1, Iend}, 100), 100, clsPNG::ErrNone},
        {"100sig", Bad, 100, clsPNG::ErrSignature},
        {"empty", {}, 0, clsPNG::ErrInvalidFile},
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(C.Name);
        ASSERT_EQ(C.Content.size(), C.Size);
        clsPNG A, B;
        EXPECT_EQ(A.OpenPNG(TempFile(C.Name, C.Content)), C.Code);
        EXPECT_EQ(A.ErrorNum(), C.Code);
        EXPECT_EQ(Open(B, C.Content), C.Code);
    }
    clsPNG Png;
    EXPECT_EQ(Png.OpenPNG(testing::TempDir() + "clsPNG_Load_none.png"), clsPNG::ErrFileNotFound);
    const char* const Messages[] = {"File not found.", "Invalid PNG file.", "Invalid PNG file signature.",
                                    "Chunk name invalid or dislocated.", "Will read pass the file end.",
                                    "Invalid CRC check sum found.", "Error reading header data.",
                                    "Essential data chunks not present.", "Critical chunk erroneoursly repeated."};
    for (int16_t Code = 1; Code <= 9; ++Code)
        EXPECT_EQ(clsPNG::ErrMsgOpenText(Code), "Error: " + std::to_string(Code) + "   " + Messages[Code - 1]);
}

TEST(clsPNGLoad, ChunkWalkerErrors)
{
    Bytes Past = Chunk("tEXt", Bytes(10, 'a'));
    Past[3] = 200;  // the length now runs past the file's end
    Bytes NoCrc = Iend;
    NoCrc.resize(8);
    Bytes Huge = Chunk("IDAT", {});
    Huge[0] = Huge[1] = Huge[2] = Huge[3] = 0xFF;
    const struct { const char* Name; Bytes Content; int32_t Image, Tag; } Cases[] = {
        {"whole", File({Chunk("IHDR", Grey1x1), Idat1x1, Iend}), 0, 0},
        {"chunk past the end", File({Chunk("IHDR", Grey1x1), Idat1x1, Past}), 5, 5},
        {"length 2^32-1", File({Chunk("IHDR", Grey1x1), Huge, Idat1x1, Iend}), 5, 5},
        {"no room for the CRC", File({Chunk("IHDR", Grey1x1), Idat1x1, NoCrc}), 5, 5},
        {"no IEND", File({Chunk("IHDR", Grey1x1), Idat1x1}), 5, 5},
        {"seven bytes after the last chunk", File({Chunk("IHDR", Grey1x1), Idat1x1, Bytes(7, 0)}), 5, 5},
        {"bad CRC on IHDR", File({Chunk("IHDR", Grey1x1, 1), Idat1x1, Iend}), 6, 6},
        {"bad CRC on an unknown chunk", File({Chunk("IHDR", Grey1x1), Chunk("abCd", {1, 2}, 0x100), Idat1x1, Iend}), 6, 6},
        {"bad CRC on IEND", File({Chunk("IHDR", Grey1x1), Idat1x1, Chunk("IEND", {}, 0x80000000)}), 6, 6},
        {"IHDR of 12 bytes", File({Chunk("IHDR", Bytes(Grey1x1.begin(), Grey1x1.end() - 1)), Idat1x1, Iend}), 7, 7},
        {"width 0", File({Chunk("IHDR", Ihdr(0, 1, 8, 0)), Idat1x1, Iend}), 7, 7},
        {"height 0", File({Chunk("IHDR", Ihdr(1, 0, 8, 0)), Idat1x1, Iend}), 7, 7},
        {"width 2^31", File({Chunk("IHDR", Ihdr(0x80000000u, 1, 8, 0)), Idat1x1, Iend}), 7, 7},
        {"colour type 1", File({Chunk("IHDR", Ihdr(1, 1, 8, 1)), Idat1x1, Iend}), 7, 0},
        {"grey depth 3", File({Chunk("IHDR", Ihdr(1, 1, 3, 0)), Idat1x1, Iend}), 7, 0},
        {"RGB depth 4", File({Chunk("IHDR", Ihdr(1, 1, 4, 2)), Idat1x1, Iend}), 7, 0},
        {"palette depth 16", File({Chunk("IHDR", Ihdr(1, 1, 16, 3)), Idat1x1, Iend}), 7, 0},
        {"no IDAT", File({Chunk("IHDR", Grey1x1), Iend}), 8, 8},
        {"no IHDR", File({Idat1x1, Iend}), 8, 8},
        {"two IHDR", File({Chunk("IHDR", Grey1x1), Chunk("IHDR", Grey1x1), Idat1x1, Iend}), 9, 9},
        {"two IHDR, no IDAT", File({Chunk("IHDR", Grey1x1), Chunk("IHDR", Grey1x1), Iend}), 8, 8},
        {"two IHDR, bad CRC later", File({Chunk("IHDR", Grey1x1), Chunk("IHDR", Grey1x1), Idat1x1, Chunk("IEND", {}, 1)}), 6, 6},
        {"IDAT before IHDR", File({Idat1x1, Chunk("IHDR", Grey1x1), Iend}), 0, 0},
        {"bytes after IEND", File({Chunk("IHDR", Grey1x1), Idat1x1, Iend, Bytes(5, 0xFF)}), 0, 0},
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(C.Name);
        clsPNG Image, Tag;
        EXPECT_EQ(Open(Image, C.Content), C.Image);
        EXPECT_EQ(Image.ErrorNum(), C.Image);
        EXPECT_EQ(Open(Tag, C.Content, true), C.Tag);
        // A chunk running past the end is refused before its payload is taken.
        EXPECT_EQ(Image.CommentText(), "");
    }
}

TEST(clsPNGLoad, PicturesOverMaxPixelsAreRefused)
{
    const int64_t Saved = clsPNG::MaxPixels;
    clsPNG::MaxPixels = 99;
    const Bytes Ten = Encode(RandomPicture(10, 10, 0, 8, 1)), Nine = Encode(RandomPicture(11, 9, 0, 8, 1));
    clsPNG A, B, C;
    EXPECT_EQ(Open(A, Ten), clsPNG::ErrHeader);
    EXPECT_EQ(Open(B, Ten, true), clsPNG::ErrNone);
    EXPECT_EQ(Open(C, Nine), clsPNG::ErrNone);
    clsPNG::MaxPixels = Saved;
}

TEST(clsPNGLoad, TagStrings)
{
    const auto Hex = [](const Bytes& C) {
        std::ostringstream S;
        S << std::hex << crc32(0, C.data() + 4, static_cast<uInt>(C.size() - 8));
        return S.str();
    };
    // A payload whose CRC has a leading zero digit.
    Bytes Low;
    for (uint32_t I = 0; Low.empty() || Hex(Chunk("zeRo", Low)).size() == 8; ++I)
        Low = {static_cast<uint8_t>(I), static_cast<uint8_t>(I >> 8)};
    const Bytes Header = Chunk("IHDR", Grey1x1), Text = Chunk("tEXt", Bytes(40, 'a')), Zero = Chunk("zeRo", Low);
    const std::string Path = TempFile("tags.png", File({Header, Text, Zero, Idat1x1, Iend}));
    ASSERT_EQ(Hex(Zero).size(), 7u);
    const std::vector<std::string> Want = {"IHDR/13/" + Hex(Header), "tEXt/40/" + Hex(Text), "zeRo/2/" + Hex(Zero),
                                           "IDAT/" + std::to_string(Idat1x1.size() - 12) + "/" + Hex(Idat1x1),
                                           "IEND/0/ae426082"};
    clsPNG Png;
    std::vector<std::string> Tags = {"kept"};
    ASSERT_EQ(Png.OpenPNG_GetTagData(Path, Tags), 0);
    EXPECT_EQ(Tags, Want);
    EXPECT_EQ(Png.Tags(), Want);
    // An image-mode walk keeps no list; a failing walk leaves the caller's array alone.
    clsPNG Image, Failing;
    ASSERT_EQ(Image.OpenPNG(Path), 0);
    EXPECT_TRUE(Image.Tags().empty());
    Tags = {"kept"};
    EXPECT_EQ(Failing.OpenPNG_GetTagData(TempFile("tags-bad.png", File({Header, Iend})), Tags), 8);
    EXPECT_EQ(Tags, std::vector<std::string>{"kept"});
}

TEST(clsPNGLoad, EveryFormatThroughEveryFilterAndAdam7)
{
    const struct { uint8_t Type, Depth; int16_t Working, WorkingInterlaced; } Formats[] = {
        {0, 1, 1, 8}, {0, 2, 8, 8}, {0, 4, 4, 8}, {0, 8, 8, 8}, {0, 16, 8, 8}, {2, 8, 24, 24}, {2, 16, 24, 24},
        {3, 1, 1, 8}, {3, 2, 8, 8}, {3, 4, 4, 8}, {3, 8, 8, 8}, {4, 8, 32, 32}, {4, 16, 32, 32}, {6, 8, 32, 32},
        {6, 16, 32, 32},
    };
    const std::pair<int, int> Sizes[] = {{1, 1}, {3, 5}, {9, 9}, {33, 17}};
    uint32_t Seed = 0;
    for (const auto& F : Formats)
        for (const auto& [W, H] : Sizes)
            for (int Interlaced = 0; Interlaced < 2; ++Interlaced)
                for (int Filter = 0; Filter <= 5; ++Filter) {
                    SCOPED_TRACE(testing::Message() << "type " << int{F.Type} << " depth " << int{F.Depth} << " " << W
                                                    << "x" << H << " interlaced " << Interlaced << " filter " << Filter);
                    const Picture P = RandomPicture(W, H, F.Type, F.Depth, ++Seed);
                    clsPNG Png;
                    ASSERT_EQ(Open(Png, Encode(P, Interlaced, Filter)), 0);
                    EXPECT_EQ(Png.WorkingDepth(), Interlaced ? F.WorkingInterlaced : F.Working);
                    EXPECT_EQ(Png.AlphaSet(), F.Type >= 4);
                    // Grey takes a ramp of 2^depth levels, 256 at 16 bits.
                    if (F.Type == 0) {
                        EXPECT_EQ(Png.BitmapPalette().size(), 3u << std::min<int>(F.Depth, 8));
                    }
                    EXPECT_TRUE(SamePixels(Pixels(Png), Expected(P)));
                }
}

TEST(clsPNGLoad, IdatSplitAnywhereDecodesTheSame)
{
    const Picture P = RandomPicture(21, 13, 2, 8, 3);
    clsPNG Whole;
    ASSERT_EQ(Open(Whole, Encode(P, false, 5)), 0);
    ASSERT_TRUE(SamePixels(Pixels(Whole), Expected(P)));
    for (size_t Split : {1, 2, 3, 7, 100}) {
        clsPNG Png;
        ASSERT_EQ(Open(Png, Encode(P, false, 5, {}, Split)), 0);
        EXPECT_EQ(Png.BitmapRows(), Whole.BitmapRows()) << Split;
    }
}

TEST(clsPNGLoad, UnknownFilterLeavesTheRowAsStored)
{
    // Rows 1 and 2 carry filters 5 and 255: their bytes are taken as they stand, and row 3's Up
    // filter builds on them.
    const Bytes Row0 = {10, 20, 30, 40}, Stored1 = {1, 2, 3, 250}, Stored2 = {7, 8, 9, 10}, Row3 = {200, 100, 50, 0};
    Bytes Raw = Filtered(1, Row0, Bytes(4, 0), 1);
    Raw.push_back(5);
    Raw.insert(Raw.end(), Stored1.begin(), Stored1.end());
    Raw.push_back(255);
    Raw.insert(Raw.end(), Stored2.begin(), Stored2.end());
    const Bytes F3 = Filtered(2, Row3, Stored2, 1);
    Raw.insert(Raw.end(), F3.begin(), F3.end());
    clsPNG Png;
    ASSERT_EQ(Open(Png, File({Chunk("IHDR", Ihdr(4, 4, 8, 0)), Chunk("IDAT", Deflate(Raw)), Iend})), 0);
    std::vector<uint32_t> Want;
    for (const Bytes* Row : {&Row0, &Stored1, &Stored2, &Row3})
        for (uint8_t V : *Row)
            Want.push_back(Pixel(V, V, V));
    EXPECT_TRUE(SamePixels(Pixels(Png), Want));
}

TEST(clsPNGLoad, RowLayoutOfTheBitmap)
{
    // 24 bits: top-down B, G, R rows padded to 4 bytes; 32 bits: bottom-up B, G, R, A; grey
    // with alpha: G, G, G, A.
    const struct { Picture P; Bytes Rows; } Cases[] = {
        {{3, 2, 2, 8, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18}, {}},
         {3, 2, 1, 6, 5, 4, 9, 8, 7, 0, 0, 0, 12, 11, 10, 15, 14, 13, 18, 17, 16, 0, 0, 0}},
        {{1, 2, 6, 8, {1, 2, 3, 4, 5, 6, 7, 8}, {}}, {7, 6, 5, 8, 3, 2, 1, 4}},
        {{1, 1, 4, 16, {0x12FF, 0x34FF}, {}}, {0x12, 0x12, 0x12, 0x34}},
    };
    for (const auto& C : Cases) {
        clsPNG Png;
        ASSERT_EQ(Open(Png, Encode(C.P)), 0);
        EXPECT_EQ(Png.BitmapRows(), C.Rows) << int{C.P.Type};
    }
}

TEST(clsPNGLoad, TransparencyOfGreyAndPalettePictures)
{
    const Bytes Plte = {10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 120};
    const struct { const char* Name; Picture P; bool Interlaced; Bytes Trns; std::vector<uint32_t> Want; } Cases[] = {
        {"palette, alpha 255 past the list", {4, 1, 3, 2, {0, 1, 2, 3}, Plte}, false, {0, 128},
         {Pixel(10, 20, 30, 0), Pixel(40, 50, 60, 128), Pixel(70, 80, 90), Pixel(100, 110, 120)}},
        {"grey 4 bits", {3, 1, 0, 4, {5, 6, 15}, {}}, false, {0, 5}, {Pixel(85, 85, 85, 0), Pixel(102, 102, 102), Pixel(255, 255, 255)}},
        {"grey 8 bits, interlaced", {2, 2, 0, 8, {9, 1, 9, 2}, {}}, true, {0, 9},
         {Pixel(9, 9, 9, 0), Pixel(1, 1, 1), Pixel(9, 9, 9, 0), Pixel(2, 2, 2)}},
        // At 16 bits the payload's low byte is the level, met by the samples' high bytes.
        {"grey 16 bits", {2, 1, 0, 16, {0x3400, 0x1234}, {}}, false, {0x12, 0x34}, {Pixel(0x34, 0x34, 0x34, 0), Pixel(0x12, 0x12, 0x12)}},
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(C.Name);
        clsPNG Png;
        ASSERT_EQ(Open(Png, Encode(C.P, C.Interlaced, 0, {Chunk("tRNS", C.Trns)})), 0);
        EXPECT_EQ(Png.WorkingDepth(), 32);
        EXPECT_TRUE(Png.AlphaSet());
        EXPECT_TRUE(Png.HasTranspColor());
        EXPECT_EQ(Png.TranspData(), C.Trns);
        EXPECT_TRUE(SamePixels(Pixels(Png), C.Want));
    }
}

TEST(clsPNGLoad, TransparencyOfRgbComparesSixBytes)
{
    // At 8 bits the payload 0,R,0,G,0,B is read as R,R,G,G,B,B and set against the six bytes
    // from the pixel on; at 16 bits the pixel's own colour. Matches show the background.
    const Bytes Grey50 = {0, 50, 0, 50, 0, 50}, Back = Chunk("bKGD", {0, 9, 0, 8, 0, 7});
    const struct { const char* Name; Picture P; Bytes Trns; bool Bkgd; std::vector<bool> Clear; } Cases[] = {
        {"grey run", {4, 1, 2, 8, {50, 50, 50, 50, 50, 50, 50, 50, 50, 50, 50, 50}, {}}, Grey50, true, {1, 1, 1, 0}},
        {"grey run without bKGD", {2, 1, 2, 8, {50, 50, 50, 50, 50, 50}, {}}, Grey50, false, {1, 0}},
        {"run across the row end", {1, 2, 2, 8, {50, 50, 50, 50, 50, 50}, {}}, Grey50, true, {1, 0}},
        {"the colour itself", {2, 1, 2, 8, {10, 20, 30, 10, 20, 30}, {}}, {0, 10, 0, 20, 0, 30}, true, {0, 0}},
        {"R,R,G then G,B,B", {2, 1, 2, 8, {10, 10, 20, 20, 30, 30}, {}}, {0, 10, 0, 20, 0, 30}, true, {1, 0}},
        {"black past the end", {1, 1, 2, 8, {0, 0, 0}, {}}, Bytes(6, 0), true, {1}},
        {"16 bits", {2, 1, 2, 16, {0x0102, 0x0304, 0x0506, 0x0102, 0x0304, 0x0507}, {}}, {1, 2, 3, 4, 5, 6}, true, {1, 0}},
        {"payload of 4 bytes", {2, 1, 2, 8, {0, 0, 0, 0, 0, 0}, {}}, Bytes(4, 0), true, {0, 0}},
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(C.Name);
        clsPNG Png;
        std::vector<Bytes> Extra = {Chunk("tRNS", C.Trns)};
        if (C.Bkgd)
            Extra.push_back(Back);
        ASSERT_EQ(Open(Png, Encode(C.P, false, 0, Extra)), 0);
        EXPECT_EQ(Png.WorkingDepth(), 24);
        std::vector<uint32_t> Want = Expected(C.P);
        // The 16-bit reading of that bKGD rounds to black, as does no bKGD.
        const uint32_t Background = C.Bkgd && C.P.Depth == 8 ? Pixel(9, 8, 7) : Pixel(0, 0, 0);
        for (size_t I = 0; I < Want.size(); ++I)
            if (C.Clear[I])
                Want[I] = Background;
        EXPECT_TRUE(SamePixels(Pixels(Png), Want));
    }
}

TEST(clsPNGLoad, BackgroundColourPerColourType)
{
    const Bytes Two = {1, 2, 3, 4, 5, 6};
    const struct { uint8_t Type, Depth; Bytes Payload; uint32_t Color; } Cases[] = {
        {0, 4, {0, 5}, RGBColor(85, 85, 85)},        {0, 4, {0, 16}, 0},  {0, 4, {5}, 0},
        {0, 1, {0, 1}, RGBColor(255, 255, 255)},     {0, 2, {0, 2}, RGBColor(170, 170, 170)},
        {0, 16, {0x80, 0xFF}, RGBColor(128, 128, 128)}, {4, 8, {0, 200}, RGBColor(200, 200, 200)},
        {2, 8, {0, 10, 0, 20, 0, 30}, RGBColor(10, 20, 30)},
        {2, 16, {0xFF, 0xFF, 0x80, 0x80, 0x00, 0x80}, RGBColor(255, 128, 0)},
        {6, 16, {0x00, 0x81, 0x7F, 0x7F, 0x01, 0x01}, RGBColor(1, 127, 1)},
        {6, 8, {0, 10, 0, 20, 0}, 0},                {3, 8, {1}, RGBColor(4, 5, 6)},  {3, 8, {2}, 0},
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(testing::Message() << int{C.Type} << "/" << int{C.Depth} << "/" << C.Payload.size());
        Picture P = RandomPicture(2, 2, C.Type, C.Depth, 5);
        if (C.Type == 3)
            P.Plte = Two;
        P.Samples.assign(P.Samples.size(), 0);
        clsPNG Png;
        ASSERT_EQ(Open(Png, Encode(P, false, 0, {Chunk("bKGD", C.Payload)}), true), 0);
        EXPECT_TRUE(Png.HasBKGDChunk());
        EXPECT_EQ(Png.BKGDchunkColor(), C.Color);
        EXPECT_EQ(Png.BKGDchunkColorPerFile(), C.Color);
        Png.ClearUp();
        EXPECT_EQ(Png.BKGDchunkColorPerFile(), -1);
        EXPECT_FALSE(Png.HasBKGDChunk());
    }
}

TEST(clsPNGLoad, CompositionOverTheBackground)
{
    // Alpha 0 takes the background, 255 the pixel, anything between (S*A + (255-A)*B + 255) >> 8.
    const Picture P{5, 1, 6, 8, {200, 100, 0, 0, 200, 100, 0, 1, 200, 100, 0, 128, 200, 100, 0, 254, 200, 100, 0, 255}, {}};
    const auto Mix = [](uint32_t S, uint32_t A, uint32_t B) { return (S * A + (255 - A) * B + 255) >> 8; };
    const auto Over = [&](uint32_t A, uint32_t R, uint32_t G, uint32_t B) {
        return Pixel(Mix(200, A, R), Mix(100, A, G), Mix(0, A, B));
    };
    const Bytes File = Encode(P, false, 0, {Chunk("bKGD", {0, 100, 0, 50, 0, 250})});
    clsPNG Png;
    ASSERT_EQ(Open(Png, File), 0);
    EXPECT_EQ(Png.WorkingDepth(), 24);
    EXPECT_TRUE(SamePixels(Pixels(Png), {Pixel(100, 50, 250), Over(1, 100, 50, 250), Over(128, 100, 50, 250),
                                         Over(254, 100, 50, 250), Pixel(200, 100, 0)}));
    EXPECT_EQ(Mix(200, 128, 100), 150u);
    // A background the caller set before opening survives, and is the one composed over.
    clsPNG Caller;
    Caller.setHasBKGDChunk(true);
    Caller.setBKGDchunkColor(RGBColor(1, 2, 3));
    ASSERT_EQ(Open(Caller, File), 0);
    EXPECT_EQ(Caller.BKGDchunkColor(), RGBColor(1, 2, 3));
    EXPECT_EQ(Caller.BKGDchunkColorPerFile(), RGBColor(100, 50, 250));
    EXPECT_TRUE(SamePixels(Pixels(Caller), {Pixel(1, 2, 3), Over(1, 1, 2, 3), Over(128, 1, 2, 3), Over(254, 1, 2, 3),
                                            Pixel(200, 100, 0)}));
    // A palette picture with tRNS is composed the same way; without tRNS it stays indexed.
    const Picture Indexed{2, 1, 3, 8, {0, 1}, {10, 20, 30, 40, 50, 60}};
    clsPNG WithAlpha, Plain;
    ASSERT_EQ(Open(WithAlpha, Encode(Indexed, false, 0, {Chunk("tRNS", {0}), Chunk("bKGD", {1})})), 0);
    EXPECT_EQ(WithAlpha.WorkingDepth(), 24);
    EXPECT_TRUE(SamePixels(Pixels(WithAlpha), {Pixel(40, 50, 60), Pixel(40, 50, 60)}));
    ASSERT_EQ(Open(Plain, Encode(Indexed, false, 0, {Chunk("bKGD", {1})})), 0);
    EXPECT_EQ(Plain.WorkingDepth(), 8);
    EXPECT_TRUE(SamePixels(Pixels(Plain), Expected(Indexed)));
}

TEST(clsPNGLoad, TextGammaAndPassedOverChunks)
{
    const std::string First("Title\0One", 9), Second("Title\0Two", 9);
    const Bytes Gamma = {0, 0, 0xB1, 0x8F};  // 45455
    clsPNG Png;
    ASSERT_EQ(Open(Png, Encode(RandomPicture(2, 2, 0, 8, 1), false, 0,
                               {Chunk("tEXt", Bytes(First.begin(), First.end())), Chunk("gAMA", Gamma),
                                Chunk("zTXt", {'k', 0, 0, 1, 2}), Chunk("tIME", {7, 0xE0, 1, 2, 3, 4, 5}),
                                Chunk("tEXt", Bytes(Second.begin(), Second.end()))})),
              0);
    EXPECT_EQ(Png.CommentText(), Second + std::string(1, '\0'));
    EXPECT_DOUBLE_EQ(Png.Gama(), 0.45455);
    EXPECT_EQ(Png.zText(), "");
    EXPECT_EQ(Png.ModiTime(), "");
}

TEST(clsPNGLoad, DrawPNGPlacesThePicture)
{
    const Picture P = RandomPicture(3, 2, 3, 4, 11);
    clsPNG Png;
    ASSERT_EQ(Open(Png, Encode(P)), 0);
    const std::vector<uint32_t> Want = Expected(P);
    clsDIB Target;
    ASSERT_TRUE(Target.CreateBlankDIB(6, 5, 32, RGBColor(1, 2, 3), true));
    Png.DrawPNG(Target.DIBhDC(), 0, -1, 2, 1);
    for (int Y = 0; Y < 5; ++Y)
        for (int X = 0; X < 6; ++X) {
            const bool Inside = X >= 2 && X < 5 && Y >= 1 && Y < 3;
            EXPECT_EQ(Target.DIBhDC()->GetPixel(X, Y), Inside ? Want[(Y - 1) * 3 + X - 2] & 0xFFFFFF : RGBColor(1, 2, 3))
                << X << "," << Y;
        }
}

TEST(clsCRC, KnownValuesAndStates)
{
    const std::string Check = "123456789";
    clsCRC Crc;
    EXPECT_EQ(Crc.Algorithm(), -1);
    EXPECT_EQ(Crc.CalculateString(Check), 0xCBF43926u);
    EXPECT_EQ(clsCRC::Crc32(reinterpret_cast<const uint8_t*>(Check.data()), Check.size()), 0xCBF43926u);
    // Added in parts, and carried on from a value set back in.
    Crc.Clear();
    Crc.AddString("1234");
    const uint32_t Half = Crc.CurrValue();
    clsCRC Other;
    Other.setCurrValue(Half);
    EXPECT_EQ(Other.AddString("56789"), 0xCBF43926u);

    // CCITT CRC-16 from zero, bit by bit here.
    uint16_t Bitwise = 0;
    for (char C : Check) {
        Bitwise ^= static_cast<uint16_t>(static_cast<uint8_t>(C) << 8);
        for (int K = 0; K < 8; ++K)
            Bitwise = static_cast<uint16_t>(Bitwise & 0x8000 ? (Bitwise << 1) ^ 0x1021 : Bitwise << 1);
    }
    ASSERT_EQ(Bitwise, 0x31C3);
    Crc.setAlgorithm(0);
    EXPECT_EQ(Crc.Algorithm(), 0);
    EXPECT_EQ(Crc.CalculateBytes(Bytes(Check.begin(), Check.end())), Bitwise);
    Crc.setAlgorithm(5);
    EXPECT_EQ(Crc.Algorithm(), -1);

    const std::string Empty = TempFile("empty", {}), Full = TempFile("check", Bytes(Check.begin(), Check.end()));
    EXPECT_EQ(Crc.CalculateFile(Empty), std::nullopt);
    EXPECT_EQ(Crc.CalculateFile(Full), std::optional<uint32_t>(0xCBF43926u));
    EXPECT_EQ(Crc.CalculateFile(Empty + ".none"), std::nullopt);
}

TEST(clsPNGLoad, InterlacedStreamPastTheBufferKeepsThePassesThatFit)
{
    // 9 x 1000 at 1 bit: the passes take 4250 bytes, the buffer holds the expected 4000 plus
    // 100. Passes 1 to 6 (the even rows, 2750 bytes) lie wholly within it and must come out
    // right; pass 7 is cut.
    const Picture P = RandomPicture(9, 1000, 0, 1, 3);
    clsPNG Png;
    ASSERT_EQ(Open(Png, Encode(P, true, 0)), 0);
    ASSERT_EQ(Png.WorkingDepth(), 8);
    const Bytes& Rows = Png.BitmapRows();
    ASSERT_GE(Rows.size(), 12u * 1000);
    for (size_t Y = 0; Y < 1000; Y += 2)
        for (size_t X = 0; X < 9; ++X)
            ASSERT_EQ(int{Rows[Y * 12 + X]}, int{P.Samples[Y * 9 + X]}) << X << "," << Y;
}
