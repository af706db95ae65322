#pragma once
// A picture: a bitmap of the window toolkit that keeps its depth. Depth 1 is a
// QImage::Format_Mono, 4 and 8 are Format_Indexed8 (at most 16 entries for 4),
// 24 is Format_BGR888 and 32 is Format_ARGB32, whose bytes lie blue, green, red,
// alpha as in a 32-bit surface. A null image is "no bitmap".
#include <QImage>
#include <cstdint>
#include <memory>
#include <vector>

#include "DeviceContext.h"

class StdPicture {
public:
    StdPicture() = default;
    // Takes an image in one of the formats above; Bpp 4 marks an Indexed8 of 16 colours.
    StdPicture(QImage Image, int Bpp);
    StdPicture(const StdPicture& Other);
    StdPicture& operator=(const StdPicture& Other);
    StdPicture(StdPicture&&) noexcept = default;
    StdPicture& operator=(StdPicture&&) noexcept = default;
    ~StdPicture();

    // Any QImage, converted to the nearest of the depths a picture keeps.
    static StdPicture FromImage(const QImage& Image);

    bool IsBitmap() const { return !Img.isNull() && Depth != 0; }
    int Bpp() const { return Depth; }
    int Width() const { return Img.width(); }
    int Height() const { return Img.height(); }
    const QImage& Image() const { return Img; }

    // The device context over the picture's own bytes; null when there is no bitmap.
    // Writing through it changes the picture.
    DeviceContext* hDC();
    const DeviceContext* hDC() const;
    // Puts changes made to the colour table through hDC back into the image.
    void SyncColorTable();

private:
    void MakeContext() const;
    QImage Img;
    int Depth = 0;
    mutable std::vector<uint32_t> Quads;
    mutable std::unique_ptr<DeviceContext> Context;
};
