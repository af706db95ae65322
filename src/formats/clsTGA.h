#pragma once
// One TGA file: the reader of colour-mapped, true-colour and grey pictures, raw or run-length
// encoded, and the writer of uncompressed 24-bit files. The reader builds its picture through
// the row routines of basBitMap and keeps a 32-bit copy of it. Failure is a false result,
// never an exception, and leaves the object empty; the caller words any message.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "clsDIB.h"

class DeviceContext;

// The 18-byte file header, little-endian on disk.
struct TGAHeader {
    uint8_t IdLength = 0;
    uint8_t ColorMapType = 0;
    uint8_t ImageType = 0;
    uint16_t FirstEntry = 0;
    uint16_t MapLength = 0;
    uint8_t EntrySize = 0;  // bits per colour map entry
    uint16_t XOrigin = 0;
    uint16_t YOrigin = 0;
    uint16_t Width = 0;
    uint16_t Height = 0;
    uint8_t BitsPerPixel = 0;
    uint8_t Descriptor = 0;
};

class clsTGA {
public:
    static constexpr size_t HeaderSize = 18;
    // Larger files are refused before they are read.
    static constexpr int64_t MaxFileBytes = int64_t(1) << 30;
    // The longest side a picture of the program can have.
    static constexpr int32_t MaxSide = 32767;
    // The most pixels a picture may have; a larger header is refused before anything is
    // allocated. Settable so that the fuzz target can keep its inputs quick.
    static inline int64_t MaxPixels = int64_t(64) * 1024 * 1024;

    clsTGA() = default;
    clsTGA(const clsTGA&) = delete;
    clsTGA& operator=(const clsTGA&) = delete;

    // Reads the file (or the same bytes held in memory) into the picture.
    bool LoadTGA(const std::string& FileName);
    bool LoadTGABytes(const uint8_t* Bytes, size_t Count);
    // BitBlt of the picture to the target at X, Y; a width or height below 1 means the
    // picture's own.
    void DrawTGA(DeviceContext* Target, int32_t X, int32_t Y, int32_t Width = 0, int32_t Height = 0);

    // The picture's size: the header's size less its origin.
    int32_t TGAWidth() const { return PictureWidth; }
    int32_t TGAHeight() const { return PictureHeight; }
    // Types 9 and 10: the run-length encoded ones this reader decodes.
    bool Compressed() const { return Head.ImageType == 9 || Head.ImageType == 10; }
    int16_t Bpp() const { return Head.BitsPerPixel; }
    bool IsTGA() const;
    const TGAHeader& Header() const { return Head; }
    // The picture read: 32 bits a pixel, top-down, alpha bytes 0. No surface when none.
    clsDIB& Picture() { return Bitmap; }

    // Writes Width x Height of the source from its top left as an uncompressed 24-bit file,
    // deleting any file of that name first. Parts beyond the source are black.
    bool SaveTGAinFile(const std::string& FileName, DeviceContext* Source, int32_t Width, int32_t Height);
    // The bytes SaveTGAinFile writes.
    static bool TGAFileBytes(DeviceContext* Source, int32_t Width, int32_t Height, std::vector<uint8_t>& File);

    void ClearUp();

    // For the paint document and the command line: the file as a 32-bit top-down surface
    // (Target is left as it was when the file is refused), and a whole surface written as a file.
    static bool LoadTGAToDIB(const std::string& FileName, clsDIB& Target);
    static bool SaveDIBAsTGA(const std::string& FileName, clsDIB& Source);

private:
    // Decodes the file whose header is in Head into a 32-bit top-down surface.
    bool Decode(const uint8_t* Bytes, size_t Count, clsDIB& Into);
    bool MakePicture(const uint8_t* Pixels, size_t Available, const std::vector<uint8_t>& Palette, clsDIB& Into);

    TGAHeader Head;
    int32_t PictureWidth = 0;
    int32_t PictureHeight = 0;
    clsDIB Bitmap;
};
