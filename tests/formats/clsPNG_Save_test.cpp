// The PNG writer: 8- and 24-bit files that pngcheck passes and libpng reads back to the source's
// pixels, the order and payloads of the chunks, rows with filter 0 and the IDAT data ending with
// the Adler-32 twice, the IDAT split, odd widths, the alpha plane, and the refusals.
#include <gtest/gtest.h>
#include <png.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

#include "basMath.h"
#include "clsDIB.h"
#include "clsPNG.h"

namespace {

using Bytes = std::vector<uint8_t>;
using Chunks = std::vector<std::pair<std::string, Bytes>>;

// A file name of this process in the temporary folder; the files go at exit.
std::string TempPath(const std::string& Name)
{
    static struct Made {
        std::vector<std::string> Paths;
        ~Made() { for (const std::string& P : Paths) std::remove(P.c_str()); }
    } Files;
    Files.Paths.push_back(testing::TempDir() + "clsPNG_Save_" + std::to_string(getpid()) + "_" + Name);
    return Files.Paths.back();
}

Bytes ReadAll(const std::string& Path)
{
    std::ifstream In(Path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(In), std::istreambuf_iterator<char>());
}

uint32_t BE32(const uint8_t* P)
{
    return (uint32_t{P[0]} << 24) | (uint32_t{P[1]} << 16) | (uint32_t{P[2]} << 8) | P[3];
}

// The file's chunks after the signature, each CRC checked on the way.
Chunks Walk(const std::string& Path)
{
    const Bytes File = ReadAll(Path);
    Chunks Out;
    EXPECT_TRUE(File.size() >= 8 && Bytes(File.begin(), File.begin() + 8) == Bytes({137, 'P', 'N', 'G', 13, 10, 26, 10}));
    for (size_t At = 8; At + 12 <= File.size();) {
        const uint32_t Length = BE32(&File[At]);
        if (At + 12 + Length > File.size())
            break;
        Out.emplace_back(std::string(File.begin() + At + 4, File.begin() + At + 8),
                         Bytes(File.begin() + At + 8, File.begin() + At + 8 + Length));
        EXPECT_EQ(BE32(&File[At + 8 + Length]), crc32(0, &File[At + 4], Length + 4)) << Out.back().first;
        At += 12 + Length;
    }
    return Out;
}

std::vector<std::string> Names(const Chunks& List)
{
    std::vector<std::string> Out;
    for (const auto& C : List)
        Out.push_back(C.first);
    return Out;
}

const Bytes& Payload(const Chunks& List, const std::string& Type)
{
    static const Bytes None;
    for (const auto& C : List)
        if (C.first == Type)
            return C.second;
    return None;
}

// The IDAT data inflated by zlib; Tail gets what follows the end of the zlib stream.
Bytes Rows(const Chunks& List, Bytes& Tail)
{
    Bytes Z;
    for (const auto& C : List)
        if (C.first == "IDAT")
            Z.insert(Z.end(), C.second.begin(), C.second.end());
    Bytes Out(1 << 22);
    z_stream S{};
    inflateInit(&S);
    S.next_in = Z.data();
    S.avail_in = static_cast<uInt>(Z.size());
    S.next_out = Out.data();
    S.avail_out = static_cast<uInt>(Out.size());
    EXPECT_EQ(inflate(&S, Z_FINISH), Z_STREAM_END);
    Out.resize(S.total_out);
    Tail.assign(Z.begin() + static_cast<std::ptrdiff_t>(S.total_in), Z.end());
    inflateEnd(&S);
    return Out;
}

bool PngcheckPasses(const std::string& Path)
{
    return std::system(("pngcheck -q '" + Path + "' >/dev/null 2>&1").c_str()) == 0;
}

// libpng's reading of the file as 8-bit R, G, B, A.
Bytes ReadBack(const std::string& Path)
{
    png_image Image{};
    Image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&Image, Path.c_str()))
        return {};
    Image.format = PNG_FORMAT_RGBA;
    Bytes Out(PNG_IMAGE_SIZE(Image));
    if (!png_image_finish_read(&Image, nullptr, Out.data(), 0, nullptr))
        return {};
    return Out;
}

using ColorAt = std::function<uint32_t(int X, int Y)>;

// A surface of the given depth painted pixel by pixel.
void Paint(clsDIB& Dib, int W, int H, int16_t Bpp, bool TopDown, const ColorAt& Color)
{
    ASSERT_TRUE(Dib.CreateBlankDIB(W, H, Bpp, 0, TopDown));
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X)
            Dib.DIBhDC()->SetPixelV(X, Y, Color(X, Y));
}

// The source's pixels as libpng gives them (alpha 255), or as the unfiltered rows hold them.
Bytes Expected(int W, int H, const ColorAt& Color, int Channels)
{
    Bytes Out;
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X) {
            const uint32_t C = Color(X, Y);
            Out.insert(Out.end(), {ColorR(C), ColorG(C), ColorB(C)});
            if (Channels == 4)
                Out.push_back(255);
        }
    return Out;
}

// The rows without their filter bytes, each of which must be 0.
Bytes Unfiltered(const Bytes& Raw, int H)
{
    const size_t Row = Raw.size() / H;
    Bytes Out;
    for (int Y = 0; Y < H; ++Y) {
        EXPECT_EQ(Raw[Y * Row], 0) << "row " << Y;
        Out.insert(Out.end(), Raw.begin() + Y * Row + 1, Raw.begin() + (Y + 1) * Row);
    }
    return Out;
}

const ColorAt Smooth = [](int X, int Y) { return RGBColor(X * 37 + Y, 255 - X * 5, Y * 53 ^ X); };

} // namespace

TEST(clsPNGSave, TwentyFourBitFiles)
{
    const struct { int W, H; int16_t SourceBpp; bool TopDown; } Cases[] = {
        {1, 3, 24, true}, {3, 2, 32, false}, {17, 9, 24, false}, {64, 40, 32, true},
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(testing::Message() << C.W << "x" << C.H << " from " << C.SourceBpp);
        clsDIB Source;
        Paint(Source, C.W, C.H, C.SourceBpp, C.TopDown, Smooth);
        const std::string Path = TempPath("24.png");
        clsPNG Png;
        ASSERT_EQ(Png.SavePNG(Path, Source.DIBhDC(), C.W, C.H, 24), 0);
        EXPECT_TRUE(PngcheckPasses(Path));
        const Chunks List = Walk(Path);
        EXPECT_EQ(Names(List), (std::vector<std::string>{"IHDR", "IDAT", "IEND"}));
        const Bytes Header = {0, 0, 0, static_cast<uint8_t>(C.W), 0, 0, 0, static_cast<uint8_t>(C.H), 8, 2, 0, 0, 0};
        EXPECT_EQ(Payload(List, "IHDR"), Header);
        Bytes Tail;
        const Bytes Raw = Rows(List, Tail);
        ASSERT_EQ(Raw.size(), static_cast<size_t>(C.H) * (1 + 3 * C.W));
        EXPECT_EQ(Unfiltered(Raw, C.H), Expected(C.W, C.H, Smooth, 3));
        // The zlib stream ends with the rows' Adler-32, and the same four bytes follow it.
        const uint32_t Adler = adler32(adler32(0, nullptr, 0), Raw.data(), static_cast<uInt>(Raw.size()));
        ASSERT_EQ(Tail.size(), 4u);
        EXPECT_EQ(BE32(Tail.data()), Adler);
        const Bytes& Idat = Payload(List, "IDAT");
        EXPECT_EQ(BE32(&Idat[Idat.size() - 8]), Adler);
        EXPECT_EQ(ReadBack(Path), Expected(C.W, C.H, Smooth, 4));
    }
}

TEST(clsPNGSave, EightBitFiles)
{
    // An 8-bit source keeps its indexes and colour table; a deeper one with few colours gets
    // them exactly.
    const int W = 13, H = 7;
    Bytes Quads(1024, 0), Plte;
    for (int I = 0; I < 256; ++I) {
        const uint32_t C = RGBColor(I, 255 - I, I * 7);
        Quads[I * 4] = ColorB(C);
        Quads[I * 4 + 1] = ColorG(C);
        Quads[I * 4 + 2] = ColorR(C);
        Plte.insert(Plte.end(), {ColorR(C), ColorG(C), ColorB(C)});
    }
    clsDIB Indexed;
    ASSERT_TRUE(Indexed.CreateBlankDIB(W, H, 8, 0, false));
    Indexed.SetPaletteToDIB8BPP(Quads);
    Bytes Indexes;
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X) {
            Indexed.DIBhDC()->Row(Y)[X] = static_cast<uint8_t>(X * 19 + Y * 3);
            Indexes.push_back(Indexed.DIBhDC()->Row(Y)[X]);
        }
    const std::string Path = TempPath("8.png");
    clsPNG Png;
    ASSERT_EQ(Png.SavePNG(Path, Indexed.DIBhDC(), W, H, 8), 0);
    EXPECT_TRUE(PngcheckPasses(Path));
    Chunks List = Walk(Path);
    EXPECT_EQ(Names(List), (std::vector<std::string>{"IHDR", "PLTE", "IDAT", "IEND"}));
    EXPECT_EQ(Payload(List, "IHDR"), Bytes({0, 0, 0, W, 0, 0, 0, H, 8, 3, 0, 0, 0}));
    EXPECT_EQ(Payload(List, "PLTE"), Plte);
    Bytes Tail;
    EXPECT_EQ(Unfiltered(Rows(List, Tail), H), Indexes);
    EXPECT_EQ(Tail.size(), 4u);

    const ColorAt Few = [](int X, int Y) { return RGBColor((X % 5) * 60, (Y % 3) * 100, 77); };
    clsDIB Deep;
    Paint(Deep, W, H, 24, true, Few);
    ASSERT_EQ(Png.SavePNG(Path, Deep.DIBhDC(), W, H, 8), 0);
    EXPECT_TRUE(PngcheckPasses(Path));
    List = Walk(Path);
    EXPECT_EQ(Payload(List, "PLTE").size(), 768u);
    EXPECT_EQ(ReadBack(Path), Expected(W, H, Few, 4));
}

TEST(clsPNGSave, ChunkOrderAndPayloads)
{
    const std::string Comment("Title\0Some words", 16);
    for (int16_t Bpp : {8, 24}) {
        SCOPED_TRACE(Bpp);
        clsDIB Source;
        Paint(Source, 40, 30, 24, true, Smooth);
        clsPNG Png;
        Png.setHasTranspColor(true);
        Png.setTranspColor(RGBColor(10, 20, 30));
        Png.setHasBKGDChunk(true);
        Png.setBKGDchunkColor(RGBColor(200, 150, 100));
        Png.setCommentText(Comment);
        Png.setIDATchunkSplitSize(100);
        const std::string Path = TempPath("order.png");
        ASSERT_EQ(Png.SavePNG(Path, Source.DIBhDC(), 40, 30, Bpp), 0);
        const Chunks List = Walk(Path);
        const std::vector<std::string> Got = Names(List);
        const auto Idats = std::count(Got.begin(), Got.end(), "IDAT");
        EXPECT_GE(Idats, 2);
        std::vector<std::string> Want = {"IHDR"};
        if (Bpp == 8)
            Want.push_back("PLTE");
        Want.insert(Want.end(), {"tRNS", "bKGD"});
        Want.insert(Want.end(), static_cast<size_t>(Idats), "IDAT");
        Want.insert(Want.end(), {"tEXt", "IEND"});
        EXPECT_EQ(Got, Want);
        EXPECT_EQ(Payload(List, "PLTE").size(), Bpp == 8 ? 768u : 0u);
        EXPECT_EQ(Payload(List, "tRNS"), Bytes({0, 10, 0, 20, 0, 30}));
        EXPECT_EQ(Payload(List, "bKGD"), Bytes({0, 200, 0, 150, 0, 100}));
        EXPECT_EQ(Payload(List, "tEXt"), Bytes(Comment.begin(), Comment.end()));
        // Six-byte tRNS and bKGD are right for RGB only.
        if (Bpp == 24) {
            EXPECT_TRUE(PngcheckPasses(Path));
        }
        // Read back, the comment has one more NUL.
        clsPNG Again;
        ASSERT_EQ(Again.OpenPNG(Path), 0);
        EXPECT_EQ(Again.CommentText(), Comment + std::string(1, '\0'));
    }
}

TEST(clsPNGSave, IdatSplit)
{
    EXPECT_EQ(clsPNG().IDATchunkSplitSize(), 204800);
    clsDIB Source;
    Paint(Source, 64, 64, 24, true, [](int X, int Y) { return static_cast<uint32_t>((X * 2654435761u) ^ (Y * 40503u)); });
    const std::string Path = TempPath("split.png");
    const auto Sizes = [&](int32_t Split, Bytes& Data) {
        clsPNG Png;
        Png.setIDATchunkSplitSize(Split);
        EXPECT_EQ(Png.SavePNG(Path, Source.DIBhDC(), 64, 64, 24), 0);
        std::vector<size_t> Out;
        Data.clear();
        for (const auto& C : Walk(Path))
            if (C.first == "IDAT") {
                Out.push_back(C.second.size());
                Data.insert(Data.end(), C.second.begin(), C.second.end());
            }
        return Out;
    };
    Bytes Whole, Data;
    const std::vector<size_t> One = Sizes(INT32_MAX, Whole);
    ASSERT_EQ(One.size(), 1u);
    const size_t L = One[0];
    ASSERT_GT(L, 1000u);
    EXPECT_EQ(Sizes(static_cast<int32_t>(L), Data), std::vector<size_t>{L});
    EXPECT_EQ(Sizes(static_cast<int32_t>(L - 1), Data), (std::vector<size_t>{L - 1, 1}));
    EXPECT_EQ(Data, Whole);
    const size_t Third = L / 3 - 1;
    EXPECT_EQ(Sizes(static_cast<int32_t>(Third), Data), (std::vector<size_t>{Third, Third, Third, L - 3 * Third}));
    EXPECT_EQ(Data, Whole);
}

TEST(clsPNGSave, AlphaPlane)
{
    const size_t W = 5, H = 3;
    clsDIB Source;
    Paint(Source, W, H, 24, true, Smooth);
    Bytes Alpha, Want = Expected(W, H, Smooth, 4);
    for (size_t I = 0; I < W * H; ++I)
        Alpha.push_back(Want[I * 4 + 3] = static_cast<uint8_t>(I * 17));
    for (size_t Size : {W * H, W * H + 1, W * H - 1}) {
        SCOPED_TRACE(Size);
        clsPNG Png;
        Png.setAlphaSet(true);
        Bytes Plane = Alpha;
        Plane.resize(Size, 1);
        Png.SetAlphaBytes(Plane);
        const std::string Path = TempPath("alpha.png");
        ASSERT_EQ(Png.SavePNG(Path, Source.DIBhDC(), W, H, 24), 0);
        const Chunks List = Walk(Path);
        EXPECT_EQ(Payload(List, "IHDR")[9], 6);
        Bytes Tail;
        const Bytes Raw = Rows(List, Tail);
        if (Size == Alpha.size()) {
            EXPECT_TRUE(PngcheckPasses(Path));
            EXPECT_EQ(ReadBack(Path), Want);
        } else {
            // A plane of any other size leaves three bytes a pixel under a colour type 6 header.
            EXPECT_EQ(Raw.size(), static_cast<size_t>(H) * (1 + 3 * W));
        }
    }
}

TEST(clsPNGSave, Refusals)
{
    clsDIB Source;
    Paint(Source, 4, 4, 24, true, Smooth);
    const std::string Missing = TempPath("refused.png"), Kept = TempPath("kept.png");
    std::filesystem::remove(Missing);
    std::ofstream(Kept) << "old";
    for (int16_t Bpp : {0, 1, 4, 16, 32}) {
        clsPNG Png;
        EXPECT_EQ(Png.SavePNG(Missing, Source.DIBhDC(), 4, 4, Bpp), clsPNG::ErrSaveDepth) << Bpp;
        EXPECT_EQ(Png.ErrorNum(), clsPNG::ErrSaveDepth);
        EXPECT_EQ(Png.SavePNG(Kept, Source.DIBhDC(), 4, 4, Bpp), clsPNG::ErrSaveDepth) << Bpp;
    }
    EXPECT_FALSE(std::filesystem::exists(Missing));
    EXPECT_EQ(ReadAll(Kept), Bytes({'o', 'l', 'd'}));
    // A read-only file stays; a writable one is replaced.
    ASSERT_EQ(chmod(Kept.c_str(), 0444), 0);
    clsPNG Png;
    EXPECT_EQ(Png.SavePNG(Kept, Source.DIBhDC(), 4, 4, 24), clsPNG::ErrSaveReadOnly);
    EXPECT_EQ(ReadAll(Kept), Bytes({'o', 'l', 'd'}));
    ASSERT_EQ(chmod(Kept.c_str(), 0644), 0);
    EXPECT_EQ(Png.SavePNG(Kept, Source.DIBhDC(), 4, 4, 24), 0);
    EXPECT_TRUE(PngcheckPasses(Kept));
    EXPECT_EQ(clsPNG::ErrMsgSaveText(1), "Error: 1   Not 24-bit or 8-bit.");
    EXPECT_EQ(clsPNG::ErrMsgSaveText(2), "Error: 2   File exists and read only.");
}
