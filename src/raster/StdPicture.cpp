#include "StdPicture.h"

#include <algorithm>
#include <cstring>

StdPicture::StdPicture(QImage Image, int Bpp) : Img(std::move(Image)), Depth(Img.isNull() ? 0 : Bpp)
{
}

StdPicture::StdPicture(const StdPicture& Other) : Img(Other.Img), Depth(Other.Depth)
{
}

StdPicture& StdPicture::operator=(const StdPicture& Other)
{
    if (this != &Other) {
        Context.reset();
        Img = Other.Img;
        Depth = Other.Depth;
    }
    return *this;
}

StdPicture::~StdPicture() = default;

StdPicture StdPicture::FromImage(const QImage& Image)
{
    if (Image.isNull())
        return {};
    switch (Image.format()) {
    case QImage::Format_Mono:
        return StdPicture(Image, 1);
    case QImage::Format_MonoLSB:
        return StdPicture(Image.convertToFormat(QImage::Format_Mono), 1);
    case QImage::Format_Indexed8:
        return StdPicture(Image, Image.colorCount() <= 16 ? 4 : 8);
    case QImage::Format_Grayscale8: {
        QList<QRgb> Ramp;
        for (int I = 0; I < 256; ++I)
            Ramp.append(qRgb(I, I, I));
        // Convert through the ramp so that every grey keeps its exact level.
        QImage Indexed(Image.size(), QImage::Format_Indexed8);
        Indexed.setColorTable(Ramp);
        for (int Y = 0; Y < Image.height(); ++Y)
            std::memcpy(Indexed.scanLine(Y), Image.constScanLine(Y), static_cast<size_t>(Image.width()));
        return StdPicture(Indexed, 8);
    }
    default:
        break;
    }
    if (Image.hasAlphaChannel())
        return StdPicture(Image.convertToFormat(QImage::Format_ARGB32), 32);
    return StdPicture(Image.convertToFormat(QImage::Format_BGR888), 24);
}

void StdPicture::MakeContext() const
{
    if (Context || !IsBitmap())
        return;
    QImage& Image = const_cast<QImage&>(Img);
    Quads.clear();
    int StorageBpp = Depth;
    if (Img.format() == QImage::Format_Indexed8 || Img.format() == QImage::Format_Mono) {
        StorageBpp = Img.format() == QImage::Format_Mono ? 1 : 8;
        const int Entries = StorageBpp == 1 ? 2 : 256;
        Quads.assign(static_cast<size_t>(Entries), 0);
        const QList<QRgb> Table = Img.colorTable();
        for (int I = 0; I < Entries && I < Table.size(); ++I)
            Quads[static_cast<size_t>(I)] = Table[I] & 0xFFFFFF;
    }
    const int Count = Depth <= 8 ? std::min<int>(static_cast<int>(Quads.size()), 1 << std::min(Depth, 8)) : 0;
    Context = std::make_unique<DeviceContext>(Image.bits(), Img.width(), Img.height(), StorageBpp,
                                              static_cast<int>(Img.bytesPerLine()), true,
                                              Quads.empty() ? nullptr : Quads.data(), Count);
}

DeviceContext* StdPicture::hDC()
{
    MakeContext();
    return Context.get();
}

const DeviceContext* StdPicture::hDC() const
{
    MakeContext();
    return Context.get();
}

void StdPicture::SyncColorTable()
{
    if (!Context || Quads.empty())
        return;
    QList<QRgb> Table;
    const int Count = Img.format() == QImage::Format_Mono ? 2 : static_cast<int>(std::max(Img.colorCount(), 1 << std::min(Depth, 8)));
    for (int I = 0; I < Count && I < static_cast<int>(Quads.size()); ++I)
        Table.append(0xFF000000u | (Quads[static_cast<size_t>(I)] & 0xFFFFFF));
    const uint8_t* Before = Img.constBits();
    Img.setColorTable(Table);
    // setColorTable must not move the pixels the context points at.
    Q_ASSERT(Before == Img.constBits());
}
