// The PNG reader on the public suites: every valid PngSuite file gives the pixels libpng reads
// (no gamma, 16-bit samples cut to their high byte), except where this reader's own rules for
// tRNS and bKGD differ, which are applied here to libpng's samples; every corrupt file gives its
// error number; no other file makes the reader fail outside its codes.
#include <gtest/gtest.h>
#include <png.h>
#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include "basMath.h"
#include "clsDIB.h"
#include "clsPNG.h"
#include "PNGTestSupport.h"

namespace {

using namespace PNGTestSupport;

using Bytes = std::vector<uint8_t>;

Bytes ReadAll(const std::string& Path)
{
    std::ifstream In(Path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(In), std::istreambuf_iterator<char>());
}

std::vector<std::string> Files(const std::string& Folder)
{
    std::vector<std::string> Out;
    std::error_code Error;
    for (const auto& E : std::filesystem::recursive_directory_iterator(Folder, Error))
        if (E.is_regular_file() && E.path().extension() == ".png")
            Out.push_back(E.path().string());
    std::sort(Out.begin(), Out.end());
    return Out;
}

std::string Name(const std::string& Path)
{
    return std::filesystem::path(Path).filename().string();
}

// The file with a private chunk after the signature that lifts it over the size floor.
Bytes Lifted(const Bytes& File)
{
    Bytes Chunk = {0, 0, 0, 100, 'f', 'i', 'L', 'l'};
    Chunk.resize(108, 'x');
    const uLong Crc = crc32(0, Chunk.data() + 4, 104);
    for (int Shift = 24; Shift >= 0; Shift -= 8)
        Chunk.push_back(static_cast<uint8_t>(Crc >> Shift));
    Bytes Out(File.begin(), File.begin() + static_cast<std::ptrdiff_t>(std::min<size_t>(8, File.size())));
    Out.insert(Out.end(), Chunk.begin(), Chunk.end());
    if (File.size() > 8)
        Out.insert(Out.end(), File.begin() + 8, File.end());
    return Out;
}

// libpng's reading: with Expand, 8-bit R, G, B, A after expanding palette, grey and tRNS and
// stripping 16-bit samples to their high byte; otherwise the samples as stored, one byte a
// sample below 8 bits. No gamma in either.
struct Reference {
    uint32_t W = 0, H = 0;
    int Type = 0, Depth = 0, Interlace = 0;
    Bytes Rows;
    Bytes Palette;
    bool HasBkgd = false;
    png_color_16 Bkgd{};
};

struct Source {
    const Bytes* File;
    size_t At;
};

void ReadBytes(png_structp Png, png_bytep Out, size_t Count)
{
    auto* S = static_cast<Source*>(png_get_io_ptr(Png));
    if (S->At + Count > S->File->size())
        png_error(Png, "end of file");
    std::memcpy(Out, S->File->data() + S->At, Count);
    S->At += Count;
}

[[noreturn]] void Fail(png_structp Png, png_const_charp) { std::longjmp(png_jmpbuf(Png), 1); }
void Quiet(png_structp, png_const_charp) {}

bool ReadWithLibpng(const Bytes& File, bool Expand, Reference& Ref)
{
    png_structp Png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, Fail, Quiet);
    png_infop Info = png_create_info_struct(Png);
    Source S{&File, 0};
    std::vector<png_bytep> Pointers;
    if (setjmp(png_jmpbuf(Png))) {
        png_destroy_read_struct(&Png, &Info, nullptr);
        return false;
    }
    png_set_read_fn(Png, &S, ReadBytes);
    png_read_info(Png, Info);
    Ref.W = png_get_image_width(Png, Info);
    Ref.H = png_get_image_height(Png, Info);
    Ref.Type = png_get_color_type(Png, Info);
    Ref.Depth = png_get_bit_depth(Png, Info);
    Ref.Interlace = png_get_interlace_type(Png, Info);
    if (Expand) {
        png_set_expand(Png);
        png_set_strip_16(Png);
        png_set_gray_to_rgb(Png);
        png_set_filler(Png, 0xFF, PNG_FILLER_AFTER);
    } else {
        png_set_packing(Png);
    }
    png_set_interlace_handling(Png);
    png_read_update_info(Png, Info);
    const size_t RowBytes = png_get_rowbytes(Png, Info);
    if (Expand && RowBytes != Ref.W * 4)
        png_error(Png, "not four bytes a pixel");
    Ref.Rows.assign(RowBytes * Ref.H, 0);
    for (uint32_t Y = 0; Y < Ref.H; ++Y)
        Pointers.push_back(&Ref.Rows[Y * RowBytes]);
    png_read_image(Png, Pointers.data());
    png_read_end(Png, nullptr);
    png_colorp Palette = nullptr;
    int Entries = 0;
    if (png_get_PLTE(Png, Info, &Palette, &Entries))
        for (int I = 0; I < Entries; ++I)
            Ref.Palette.insert(Ref.Palette.end(), {Palette[I].red, Palette[I].green, Palette[I].blue});
    png_color_16p Bkgd = nullptr;
    Ref.HasBkgd = png_get_bKGD(Png, Info, &Bkgd) != 0;
    if (Ref.HasBkgd)
        Ref.Bkgd = *Bkgd;
    png_destroy_read_struct(&Png, &Info, nullptr);
    return true;
}


// The background this reader takes from the file: libpng's bKGD by this reader's rules
// (16-bit grey by its high byte, 16-bit colour rounded to 8 bits), black where libpng found the
// chunk invalid.
uint32_t Background(const Reference& Ref)
{
    if (!Ref.HasBkgd)
        return 0;
    const png_color_16& B = Ref.Bkgd;
    const auto Scale = [&](uint32_t V) -> uint32_t {
        return Ref.Depth == 16 ? static_cast<uint32_t>(std::lround(V * 255.0 / 65535.0)) : V;
    };
    switch (Ref.Type) {
    case 0:
    case 4: {
        const uint32_t G = Ref.Depth == 16 ? B.gray >> 8 : B.gray * 255u / ((1u << Ref.Depth) - 1);
        return RGBColor(G, G, G);
    }
    case 3:
        return RGBColor(Ref.Palette[B.index * 3], Ref.Palette[B.index * 3 + 1], Ref.Palette[B.index * 3 + 2]);
    default:
        return RGBColor(Scale(B.red), Scale(B.green), Scale(B.blue));
    }
}

struct Want {
    std::vector<uint32_t> Pixels;
    int16_t Depth = 0;
};

// libpng's pixels, changed where this reader's rules differ: the grey tRNS level is the
// payload's low byte met by the sample (its high byte at 16 bits); an RGB pixel is transparent
// where the six bytes from it on equal the payload (read R,R,G,G,B,B at 8 bits) and then shows
// the background; alpha is composed over a bKGD by (S*A + (255-A)*B + 255) >> 8.
Want ByTheRules(const Reference& Full, const Reference& Raw, const clsPNG& Png)
{
    const size_t N = static_cast<size_t>(Full.W) * Full.H;
    const int Type = Full.Type, Depth = Full.Depth;
    const Bytes& Trns = Png.TranspData();
    const bool Trans = Png.HasTranspColor();
    const uint32_t Back = Png.HasBKGDChunk() ? Background(Full) : 0;
    Want Out;
    for (size_t I = 0; I < N; ++I) {
        const uint8_t* P = &Full.Rows[I * 4];
        Out.Pixels.push_back(Pixel(P[0], P[1], P[2], P[3]));
    }
    if (Type == 0 || Type == 3) {
        const bool Interlaced = Full.Interlace != 0;
        Out.Depth = static_cast<int16_t>(Trans ? 32 : Interlaced || Depth == 2 || Depth == 16 ? 8 : Depth);
        for (size_t I = 0; I < N; ++I) {
            const uint8_t Index = Raw.Rows[I * (Depth == 16 ? 2 : 1)];
            uint32_t Alpha = 255;
            if (Trans && Type == 0)
                Alpha = Trns.size() >= 2 && Index == Trns[1] ? 0 : 255;
            else if (Trans)
                Alpha = Index < Trns.size() ? Trns[Index] : 255;
            uint32_t Rgb = Out.Pixels[I] & 0xFFFFFF;
            if (Type == 3)
                Rgb = Index * 3u + 2 < Full.Palette.size()
                          ? RGBColor(Full.Palette[Index * 3], Full.Palette[Index * 3 + 1], Full.Palette[Index * 3 + 2])
                          : 0;
            Out.Pixels[I] = Rgb | (Alpha << 24);
        }
    } else if (Type == 2) {
        Out.Depth = 24;
        const size_t Step = Depth / 8;
        uint8_t Key[6] = {};
        std::copy_n(Trns.begin(), std::min<size_t>(Trns.size(), 6), Key);
        if (Depth == 8)
            for (int K = 0; K < 6; K += 2)
                Key[K] = Key[K + 1];
        for (size_t I = 0; Trans && I < N; ++I) {
            bool Match = Trns.size() == 6;
            for (size_t K = 0; K < 6 && Match; ++K) {
                const size_t At = I * 3 * Step + K;
                Match = (At < Raw.Rows.size() ? Raw.Rows[At] : 0) == Key[K];
            }
            Out.Pixels[I] = (Match ? Back : Out.Pixels[I]) | 0xFF000000u;
        }
        for (uint32_t& P : Out.Pixels)
            P |= 0xFF000000u;
        return Out;
    } else {
        Out.Depth = 32;
    }
    if (Out.Depth == 32 && Png.HasBKGDChunk()) {
        Out.Depth = 24;
        const auto Mix = [](uint32_t S, uint32_t A, uint32_t B) { return (S * A + (255 - A) * B + 255) >> 8; };
        for (uint32_t& P : Out.Pixels) {
            const uint32_t A = P >> 24;
            P = A == 255 ? P
                : A == 0 ? Back | 0xFF000000u
                         : Pixel(Mix(ColorR(P), A, ColorR(Back)), Mix(ColorG(P), A, ColorG(Back)),
                                 Mix(ColorB(P), A, ColorB(Back)));
        }
    }
    if (Out.Depth != 32)
        for (uint32_t& P : Out.Pixels)
            P |= 0xFF000000u;
    return Out;
}


// Opens the file as the program does, or, below the size floor, checks the refusal and opens it
// lifted over the floor.
int32_t OpenAnyway(clsPNG& Png, const std::string& Path, const Bytes& File, bool TagMode = false)
{
    const int32_t Result = Png.OpenPNG(Path, TagMode);
    if (File.size() >= clsPNG::MinFileSize)
        return Result;
    EXPECT_EQ(Result, clsPNG::ErrInvalidFile);
    const Bytes Big = Lifted(File);
    Png.ClearUp();
    return Png.OpenPNGBytes(Big.data(), Big.size(), TagMode);
}

// Decodes the file and compares with libpng under this reader's rules; the drawn surface too.
void CompareWithLibpng(const std::string& Path, const Bytes& File, clsPNG& Png)
{
    Reference Full, Raw;
    if (!ReadWithLibpng(File, true, Full) || !ReadWithLibpng(File, false, Raw))
        return;
    ASSERT_EQ(Png.Width(), static_cast<int32_t>(Full.W)) << Path;
    const Want W = ByTheRules(Full, Raw, Png);
    EXPECT_EQ(Png.WorkingDepth(), W.Depth) << Path;
    EXPECT_TRUE(SamePixels(Pixels(Png), W.Pixels)) << Path;
    clsDIB Target;
    ASSERT_TRUE(Target.CreateBlankDIB(Png.Width(), Png.Height(), 32, 0, true));
    Png.DrawPNG(Target.DIBhDC(), -1, -1, 0, 0);
    std::vector<uint32_t> Drawn;
    for (int Y = 0; Y < Png.Height(); ++Y)
        for (int X = 0; X < Png.Width(); ++X) {
            const uint8_t* P = Target.DIBhDC()->Row(Y) + X * 4;
            Drawn.push_back(Pixel(P[2], P[1], P[0], W.Depth == 32 ? P[3] : 255));
        }
    EXPECT_TRUE(SamePixels(Drawn, W.Pixels)) << Path << " drawn";
}

// The corrupt files of PngSuite, by what their names say: x, then s = signature, c = colour
// type, d = depth, dt = data, h = header CRC; image and tag mode.
const std::map<std::string, std::pair<int32_t, int32_t>> Corrupt = {
    {"xs1n0g01.png", {3, 3}},  // signature byte 1 with its high bit cleared
    {"xs2n0g01.png", {3, 3}},  // signature byte 2 a "Q"
    {"xs4n0g01.png", {3, 3}},  // signature byte 4 in lower case
    {"xs7n0g01.png", {3, 3}},  // signature byte 7 a space
    {"xcrn0g04.png", {3, 3}},  // CR bytes added by a text-mode transfer: the signature breaks first
    {"xc1n0g08.png", {7, 0}},  // colour type 1: the conversion knows none
    {"xd0n2c08.png", {7, 0}},  // RGB of depth 0
    {"xd9n2c08.png", {7, 0}},  // RGB of depth 99
    {"xhdn0g08.png", {6, 6}},  // IHDR checksum wrong
    {"xdtn0g01.png", {8, 8}},  // no IDAT; 61 bytes, so refused by the size floor unless lifted
};

} // namespace

TEST(clsPNGFiles, PngSuiteMatchesLibpng)
{
    int Compared = 0;
    for (const std::string& Path : Files(TESSAVO_TESTDATA "/pngsuite/png")) {
        if (Name(Path)[0] == 'x')
            continue;
        SCOPED_TRACE(Name(Path));
        const Bytes File = ReadAll(Path);
        clsPNG Png;
        ASSERT_EQ(OpenAnyway(Png, Path, File), 0);
        Reference Check;
        ASSERT_TRUE(ReadWithLibpng(File, true, Check));
        CompareWithLibpng(Path, File, Png);
        ++Compared;
    }
    EXPECT_GE(Compared, 120);
}

TEST(clsPNGFiles, CorruptPngSuiteFilesGiveTheirNumbers)
{
    int Seen = 0;
    for (const std::string& Path : Files(TESSAVO_TESTDATA "/pngsuite/png")) {
        if (Name(Path)[0] != 'x')
            continue;
        SCOPED_TRACE(Name(Path));
        const auto Found = Corrupt.find(Name(Path));
        ASSERT_NE(Found, Corrupt.end()) << "a corrupt file without an expected number";
        const Bytes File = ReadAll(Path);
        clsPNG Image, Tag;
        EXPECT_EQ(OpenAnyway(Image, Path, File), Found->second.first);
        EXPECT_EQ(Image.ErrorNum(), Found->second.first);
        EXPECT_EQ(OpenAnyway(Tag, Path, File, true), Found->second.second);
        ++Seen;
    }
    EXPECT_EQ(Seen, static_cast<int>(Corrupt.size()));
}

TEST(clsPNGFiles, ExtraFilesStayWithinTheCodes)
{
    // Corrupt and odd files: any code of the table, never a crash; those both readers take whole
    // give the same pixels.
    const auto All = Files(TESSAVO_TESTDATA "/png-extra");
    ASSERT_GE(All.size(), 60u);
    for (const std::string& Path : All) {
        SCOPED_TRACE(Path);
        const Bytes File = ReadAll(Path);
        clsPNG Image, Tag;
        const int32_t Result = Image.OpenPNG(Path);
        EXPECT_GE(Result, 0);
        EXPECT_LE(Result, 9);
        EXPECT_EQ(Result == 0, Image.WorkingDepth() != 0);
        const int32_t Tags = Tag.OpenPNG(Path, true);
        EXPECT_GE(Tags, 0);
        EXPECT_LE(Tags, 9);
        if (File.size() < clsPNG::MinFileSize) {
            EXPECT_EQ(Result, clsPNG::ErrInvalidFile);
        }
        if (Result == 0)
            CompareWithLibpng(Path, File, Image);
    }
}
