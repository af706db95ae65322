#pragma once
// One PCX file: the reader of mono, 16-colour (one plane or four), 256-colour and 24-bit
// pictures, raw or run-length encoded, and the writer of 24-bit files. The reader builds its
// picture through the row routines of basBitMap and keeps a 32-bit copy of it. Failure is a
// false result, never an exception, and leaves the object empty; the caller words any message.
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "clsDIB.h"

class DeviceContext;

// The fields of the 128-byte file header, little-endian on disk. The 60 bytes after
// BytesPerLine are not read and are written as 0.
struct PCXHeader {
    uint8_t Manufacturer = 0;
    uint8_t Version = 0;
    uint8_t Encoding = 0;
    uint8_t BitsPerPixel = 0;  // per plane
    uint16_t XMin = 0;
    uint16_t YMin = 0;
    uint16_t XMax = 0;
    uint16_t YMax = 0;
    uint16_t HRes = 0;
    uint16_t VRes = 0;
    std::array<uint8_t, 48> Palette{};  // 16 red, green, blue triples
    uint8_t Reserved = 0;
    uint8_t Planes = 0;
    uint16_t BytesPerLine = 0;  // per plane
};

class clsPCX {
public:
    static constexpr size_t HeaderSize = 128;
    // Larger files are refused before they are read.
    static constexpr int64_t MaxFileBytes = int64_t(1) << 30;
    // The longest side a picture of the program can have.
    static constexpr int32_t MaxSide = 32767;
    // The most pixels a picture may have; a larger header is refused before anything is
    // allocated. Settable so that the fuzz target can keep its inputs quick.
    static inline int64_t MaxPixels = int64_t(64) * 1024 * 1024;
    // The marker byte before a 256-colour palette at the end of the file.
    static constexpr uint8_t PaletteMarker = 12;

    clsPCX() = default;
    clsPCX(const clsPCX&) = delete;
    clsPCX& operator=(const clsPCX&) = delete;

    // Reads the file (or the same bytes held in memory) into the picture.
    bool LoadPCX(const std::string& FileName);
    bool LoadPCXBytes(const uint8_t* Bytes, size_t Count);
    // BitBlt of the picture to the target at X, Y; a width or height below 1 means the
    // picture's own.
    void DrawPCX(DeviceContext* Target, int32_t X, int32_t Y, int32_t Width = 0, int32_t Height = 0);

    // The size of the header's window, both ends included.
    int32_t PCXWidth() const { return PictureWidth; }
    int32_t PCXHeight() const { return PictureHeight; }
    bool Compressed() const { return Head.Encoding == 1; }
    // Bits a pixel over all planes: 1, 4, 8 or 24 for the files this reader takes.
    int16_t Bpp() const { return static_cast<int16_t>(Head.BitsPerPixel * Head.Planes); }
    // The manufacturer byte 10 and a version of 0, 2, 3 or 5.
    bool IsPCX() const;
    const PCXHeader& Header() const { return Head; }
    // The picture read: 32 bits a pixel, top-down, alpha bytes 0. No surface when none.
    clsDIB& Picture() { return Bitmap; }

    // Writes Width x Height of the source from its top left as a version 5 file of three 8-bit
    // planes, run-length encoded when Compress is not 0 (true is stored as -1), deleting any
    // file of that name first. Parts beyond the source are black.
    bool SavePCXinFile(const std::string& FileName, DeviceContext* Source, int32_t Width, int32_t Height,
                       int16_t Compress);
    // The bytes SavePCXinFile writes.
    static bool PCXFileBytes(DeviceContext* Source, int32_t Width, int32_t Height, int16_t Compress,
                             std::vector<uint8_t>& File);

    void ClearUp();

    // For the paint document and the command line: the file as a 32-bit top-down surface
    // (Target is left as it was when the file is refused), and a whole surface written as a
    // compressed file.
    static bool LoadPCXToDIB(const std::string& FileName, clsDIB& Target);
    static bool SaveDIBAsPCX(const std::string& FileName, clsDIB& Source);

private:
    // Decodes the file whose header is in Head into a 32-bit top-down surface.
    bool Decode(const uint8_t* Bytes, size_t Count, clsDIB& Into);
    bool MakePicture(const std::vector<uint8_t>& Body, const uint8_t* Bytes, size_t Count, clsDIB& Into);

    PCXHeader Head;
    int32_t PictureWidth = 0;
    int32_t PictureHeight = 0;
    clsDIB Bitmap;
};
