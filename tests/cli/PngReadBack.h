#pragma once
// PNG files as libpng, the reference reader, sees them: the header, the chunks as they lie in the
// file, and the pixels as red, green, blue, alpha bytes. No gamma is applied, as the program's
// own reader applies none.
#include <png.h>
#include <zlib.h>

#include <QByteArray>
#include <QFile>
#include <QString>
#include <cstdint>
#include <cstdio>
#include <vector>

struct PngReadBack {
    int Width = 0;
    int Height = 0;
    int ColorType = -1;
    int BitDepth = 0;
    std::vector<uint8_t> Rgba;  // top row first; alpha 255 where the file has none
};

inline bool ReadPngBack(const QString& File, PngReadBack& Out)
{
    FILE* F = std::fopen(QFile::encodeName(File).constData(), "rb");
    if (!F)
        return false;
    png_structp Png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, [](png_structp, png_const_charp) {});
    png_infop Info = png_create_info_struct(Png);
    std::vector<png_bytep> Rows;
    if (setjmp(png_jmpbuf(Png))) {
        png_destroy_read_struct(&Png, &Info, nullptr);
        std::fclose(F);
        return false;
    }
    png_init_io(Png, F);
    png_read_info(Png, Info);
    Out.ColorType = png_get_color_type(Png, Info);
    Out.BitDepth = png_get_bit_depth(Png, Info);
    png_set_expand(Png);
    png_set_strip_16(Png);
    png_set_gray_to_rgb(Png);
    png_set_filler(Png, 0xFF, PNG_FILLER_AFTER);
    png_set_interlace_handling(Png);
    png_read_update_info(Png, Info);
    Out.Width = static_cast<int>(png_get_image_width(Png, Info));
    Out.Height = static_cast<int>(png_get_image_height(Png, Info));
    Out.Rgba.assign(static_cast<size_t>(Out.Width) * Out.Height * 4, 0);
    for (int Y = 0; Y < Out.Height; ++Y)
        Rows.push_back(Out.Rgba.data() + static_cast<size_t>(Y) * Out.Width * 4);
    png_read_image(Png, Rows.data());
    png_read_end(Png, nullptr);
    png_destroy_read_struct(&Png, &Info, nullptr);
    std::fclose(F);
    return true;
}

struct PngChunk {
    QByteArray Type;
    QByteArray Data;
    uint32_t StoredCrc = 0;
    uint32_t ComputedCrc = 0;  // zlib's CRC-32 over type and data
};

// The chunks after the signature, in file order, up to the end of the bytes.
inline std::vector<PngChunk> PngChunks(const QByteArray& File)
{
    auto Be32 = [&File](qsizetype At) {
        return static_cast<uint32_t>(uint8_t(File[At])) << 24 | static_cast<uint32_t>(uint8_t(File[At + 1])) << 16 |
               static_cast<uint32_t>(uint8_t(File[At + 2])) << 8 | uint8_t(File[At + 3]);
    };
    std::vector<PngChunk> Chunks;
    for (qsizetype At = 8; At + 12 <= File.size();) {
        const uint32_t Length = Be32(At);
        if (Length > static_cast<uint32_t>(File.size() - At - 12))
            break;
        PngChunk C;
        C.Type = File.mid(At + 4, 4);
        C.Data = File.mid(At + 8, Length);
        C.StoredCrc = Be32(At + 8 + Length);
        C.ComputedCrc = static_cast<uint32_t>(
            crc32(0, reinterpret_cast<const Bytef*>(File.constData() + At + 4), static_cast<uInt>(Length + 4)));
        Chunks.push_back(C);
        At += 12 + Length;
    }
    return Chunks;
}

inline const PngChunk* FindChunk(const std::vector<PngChunk>& Chunks, const char* Type)
{
    for (const PngChunk& C : Chunks)
        if (C.Type == Type)
            return &C;
    return nullptr;
}
