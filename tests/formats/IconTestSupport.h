#pragma once
// What the icon and animated cursor tests share: pictures made from rules, a scratch folder,
// and icoutils (with libpng for the PNG files it extracts) as an independent reader.
#include <png.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <regex>
#include <string>
#include <vector>

#include "basIconCursor.h"

namespace IconTest {

inline const std::string TestData = TESSAVO_TESTDATA;

// A file name in a folder of this test process's own, removed when the process ends.
inline std::string Scratch(const std::string& Name)
{
    static const struct Folder {
        std::filesystem::path Path = std::filesystem::temp_directory_path() / ("tessavo_icon_" + std::to_string(getpid()));
        Folder() { std::filesystem::create_directories(Path); }
        ~Folder()
        {
            std::error_code Error;
            std::filesystem::remove_all(Path, Error);
        }
    } Holder;
    return (Holder.Path / Name).string();
}

// Image and mask pictures of the editor's form, from a colour rule and a transparency rule.
inline void MakePictures(clsDIB& Image, clsDIB& Mask, int Width, int Height,
                         const std::function<uint32_t(int, int)>& Color,
                         const std::function<bool(int, int)>& Transparent = nullptr)
{
    Image.CreateBlankDIB(Width, Height, 32, 0, true);
    Mask.CreateBlankDIB(Width, Height, 32, 0, true);
    for (int Y = 0; Y < Height; ++Y)
        for (int X = 0; X < Width; ++X) {
            Image.DIBhDC()->SetPixelV(X, Y, Color(X, Y));
            Mask.DIBhDC()->SetPixelV(X, Y, Transparent && Transparent(X, Y) ? 0xFFFFFF : 0);
        }
}

inline std::vector<uint32_t> Colors(const clsDIB& Picture)
{
    std::vector<uint32_t> Out;
    basIconCursor::PictureColors(Picture, Out);
    return Out;
}

inline std::vector<uint8_t> FileBytes(const std::string& FileName)
{
    std::vector<uint8_t> Bytes;
    basIconCursor::ReadFileBytes(FileName, Bytes, int64_t(1) << 30);
    return Bytes;
}

inline void WriteBytes(const std::string& FileName, const std::vector<uint8_t>& Bytes)
{
    if (FILE* Out = std::fopen(FileName.c_str(), "wb")) {
        if (!Bytes.empty())
            std::fwrite(Bytes.data(), 1, Bytes.size(), Out);
        std::fclose(Out);
    }
}

// Standard output of a command (file names here hold no quotes).
inline std::string RunCommand(const std::string& Command)
{
    std::string Output;
    if (FILE* Pipe = popen((Command + " 2>/dev/null").c_str(), "r")) {
        char Buffer[4096];
        for (size_t Got; (Got = std::fread(Buffer, 1, sizeof Buffer, Pipe)) > 0;)
            Output.append(Buffer, Got);
        pclose(Pipe);
    }
    return Output;
}

// One line of `icotool -l` per image: its --name=value fields ("width", "bit-depth",
// "hotspot-x", ...), and whether it is a cursor.
struct ListedImage {
    std::string Line;
    int Field(const char* Name) const
    {
        std::smatch Match;
        return std::regex_search(Line, Match, std::regex(std::string("--") + Name + "=([0-9]+)")) ? std::stoi(Match[1])
                                                                                                   : -1;
    }
    bool Cursor() const { return Line.find("--cursor") != std::string::npos; }
};

inline std::vector<ListedImage> IcotoolList(const std::string& FileName)
{
    std::vector<ListedImage> Images;
    const std::string Text = RunCommand("icotool -l '" + FileName + "'");
    const std::regex Line("--(icon|cursor) [^\n]*");
    for (std::sregex_iterator It(Text.begin(), Text.end(), Line), End; It != End; ++It)
        Images.push_back({It->str()});
    return Images;
}

// Image Index (from 1) as icotool extracts it, RGBA from the top row (red in the low byte),
// fully transparent pixels as 0; empty when icotool or libpng fails.
inline std::vector<uint32_t> IcotoolPixels(const std::string& FileName, int Index)
{
    const std::string Png = Scratch("extracted.png");
    std::filesystem::remove(Png);
    // icotool may complain of another image of the file and still write this one.
    RunCommand("icotool -x -i " + std::to_string(Index) + " -o '" + Png + "' '" + FileName + "'");
    png_image Image{};
    Image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&Image, Png.c_str()))
        return {};
    Image.format = PNG_FORMAT_RGBA;
    std::vector<uint32_t> Pixels(size_t(Image.width) * Image.height);
    if (!png_image_finish_read(&Image, nullptr, Pixels.data(), 0, nullptr))
        return {};
    for (uint32_t& P : Pixels)
        if ((P >> 24) == 0)
            P = 0;
    return Pixels;
}

// The pixels an icon pair stands for in the same form: colour and alpha (255 without an alpha
// array) where the mask is black, 0 where it is white.
inline std::vector<uint32_t> PairAsRGBA(const clsDIB& Image, const clsDIB& Mask, const Array2D<uint8_t>& Alpha)
{
    const std::vector<uint32_t> C = Colors(Image), M = Colors(Mask);
    std::vector<uint32_t> Out(C.size());
    const int W = Image.DIBWidth();
    for (size_t I = 0; I < C.size(); ++I) {
        const uint32_t A = M[I] == 0xFFFFFF ? 0 : (Alpha.Width() ? Alpha(int(I) % W, int(I) / W) : 255);
        Out[I] = A == 0 ? 0 : (C[I] | A << 24);
    }
    return Out;
}

} // namespace IconTest
