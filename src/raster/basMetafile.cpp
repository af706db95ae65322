// Metafiles are drawn in two steps: a library turns the records into SVG text (libwmf's SVG
// device for WMF, libemf2svg for EMF) and QSvgRenderer paints that text on white. SVG is the one
// output both libraries write completely and in memory, without an X11 or GD back end, so one
// renderer draws both formats with the same antialiasing and fonts, straight into the picture.
#include "basMetafileShared.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <QXmlStreamReader>

#include <cstdint>
#include <cstdlib>

#include "basMath.h"

namespace basPicture {
namespace Metafile {
namespace {

// A compressed bitmap inside a metafile may not claim more pixels than this.
constexpr int64_t MaxPackedBitmapPixels = int64_t(1) << 24;

bool IsEmf(const QByteArray& Bytes)
{
    const auto* P = reinterpret_cast<const uint8_t*>(Bytes.constData());
    return Bytes.size() >= 88 && ReadU32(P) == 1 && ReadU32(P + 40) == 0x464D4520;
}

// A Windows metafile has no signature of its own: the placeable key, or a standard header
// whose type, size and version fields hold the only values they may hold.
bool IsWmf(const QByteArray& Bytes)
{
    const auto* P = reinterpret_cast<const uint8_t*>(Bytes.constData());
    const qsizetype Base = Bytes.size() >= 22 && ReadU32(P) == PlaceableKey ? 22 : 0;
    if (Bytes.size() < Base + 18)
        return false;
    const uint16_t FileType = ReadU16(P + Base), HeaderWords = ReadU16(P + Base + 2);
    const uint16_t Version = ReadU16(P + Base + 4);
    return (FileType == 1 || FileType == 2) && HeaderWords == 9 && (Version == 0x0100 || Version == 0x0300);
}

} // namespace

int PixelsFor(double Length, double UnitsPerInch)
{
    const double Pixels = Length * ScreenDpi / UnitsPerInch;
    if (!(Pixels >= 0.0) || Pixels > MaxPictureSide + 1.0)
        return -1;
    return RoundHalfEven(Pixels);
}

bool SizeAllowed(int Width, int Height)
{
    if (Width <= 0 || Height <= 0 || Width > MaxPictureSide || Height > MaxPictureSide)
        return false;
    const int64_t Stride = (int64_t(Width) * 3 + 3) & ~int64_t(3);
    return Stride * Height <= MaxPictureBytes;
}

bool DibSane(const uint8_t* Dib, size_t InfoAvail, size_t BitsAvail, bool BitsFollow)
{
    if (InfoAvail < 12)
        return false;
    const uint32_t HeaderSize = ReadU32(Dib);
    const bool Core = HeaderSize == 12;
    if (!Core && (HeaderSize < 40 || HeaderSize > InfoAvail))
        return false;
    const int64_t Width = Core ? ReadU16(Dib + 4) : ReadS32(Dib + 4);
    const int64_t Height = std::abs(Core ? int64_t(ReadU16(Dib + 6)) : int64_t(ReadS32(Dib + 8)));
    const uint32_t BitCount = ReadU16(Dib + (Core ? 10 : 14)), Compression = Core ? 0 : ReadU32(Dib + 16);
    const uint64_t Used = Core ? 0 : ReadU32(Dib + 32);
    const uint64_t Colours = Used != 0 ? Used : BitCount <= 8 ? uint64_t(1) << BitCount : 0;
    const uint64_t Table = HeaderSize + Colours * (Core ? 3 : 4) + (Compression == 3 && HeaderSize == 40 ? 12 : 0);
    // A table shorter than the depth implies is common; one of a stated size must be there.
    if (Width <= 0 || Height == 0 || Width > MaxPictureSide || Height > MaxPictureSide
        || (Table > InfoAvail && (Used != 0 || BitsFollow)))
        return false;
    if (BitsFollow)
        BitsAvail = InfoAvail - size_t(Table);
    if (Compression == 0 || Compression == 3) {
        const int64_t Row = ((Width * BitCount + 31) / 32) * 4;
        return BitCount != 0 && BitCount <= 32 && Row * Height <= int64_t(BitsAvail);
    }
    return Width * Height <= MaxPackedBitmapPixels;
}

bool RenderSvg(const QString& Svg, int Width, int Height, StdPicture& Picture)
{
    QXmlStreamReader Reader(Svg);
    QSvgRenderer Renderer(&Reader);
    if (!Renderer.isValid())
        return false;
    QImage Image(Width, Height, QImage::Format_BGR888);
    if (Image.isNull())
        return false;
    Image.fill(Qt::white);
    {
        QPainter Painter(&Image);
        Painter.setRenderHint(QPainter::Antialiasing);
        Painter.setRenderHint(QPainter::SmoothPixmapTransform);
        Renderer.render(&Painter, QRectF(0, 0, Width, Height));
    }
    Picture = StdPicture(Image.convertToFormat(QImage::Format_BGR888), 24);
    return true;
}

} // namespace Metafile

bool LoadMetafileFromMemory(const QByteArray& Bytes, StdPicture& Picture)
{
    using namespace Metafile;
    const bool Enhanced = IsEmf(Bytes);
    if (!Enhanced && !IsWmf(Bytes))
        return false;
    // Painting text needs the font database, which exists only with a GUI application.
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return false;
    try {
        const auto* Begin = reinterpret_cast<const uint8_t*>(Bytes.constData());
        ByteVector Data(Begin, Begin + Bytes.size());
        QString Svg;
        if (Enhanced) {
            EmfLayout Layout;
            return PrepareEmf(Data, Layout) && EmfToSvg(Data, Svg)
                && RenderSvg(Svg, Layout.Width, Layout.Height, Picture);
        }
        WmfLayout Layout;
        int Width = 0, Height = 0;
        return PrepareWmf(Data, Layout) && WmfToSvg(Data, Layout, Svg, Width, Height)
            && RenderSvg(Svg, Width, Height, Picture);
    } catch (...) {
        return false;
    }
}

} // namespace basPicture
