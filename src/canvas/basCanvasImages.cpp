#include "basCanvasImages.h"

#include <QColor>
#include <QGuiApplication>
#include <QHash>
#include <QImageReader>
#include <QPainter>
#include <QPalette>
#include <QPen>
#include <QtMath>

#include <algorithm>

// The library is static, so its resources are registered by hand before the first cursor is read.
// The macro declares a global function and must be used outside any namespace.
static void InitCanvasResources()
{
    Q_INIT_RESOURCE(canvas);
}

namespace basCanvasImages {

namespace {

constexpr int CursorSize = 32;

// The cursors and where each acts, at 1x. The file is the name in lower case under :/cursors.
struct CursorEntry {
    const char* Name;
    int HotX;
    int HotY;
};

// Shapes, regions and point tools share one crosshair centred on pixel (10, 10), with the tool's
// picture below right; the drawing tools act at the tip of the brush, eraser face, drop or pipette;
// the move and hand cursors at their middle.
constexpr CursorEntry Cursors[] = {
    {"PAINT", 2, 29},        {"ERASE", 5, 26},       {"FILL", 6, 29},       {"POLIGON", 10, 10},
    {"LINE", 10, 10},        {"ARC", 10, 10},        {"BEZIERSTART", 10, 10}, {"BEZIER", 10, 10},
    {"RECTANGLE", 10, 10},   {"OVAL", 10, 10},       {"REGION", 10, 10},    {"REGIONDRAG", 16, 16},
    {"PASTEDRAG", 16, 16},   {"STAMP", 10, 10},      {"SPRAY", 10, 10},     {"REPLACE", 10, 10},
    {"COLORPICKER", 3, 28},  {"HANDOFF", 16, 16},    {"HANDON", 16, 16},
};

const CursorEntry* FindCursor(const QString& Name)
{
    for (const CursorEntry& Entry : Cursors)
        if (Name == QLatin1String(Entry.Name))
            return &Entry;
    return nullptr;
}

qreal ScreenRatio()
{
    return qGuiApp ? std::max<qreal>(1.0, qGuiApp->devicePixelRatio()) : 1.0;
}

// The cursor's picture rendered straight at the device size, so it is not scaled afterwards.
QPixmap RenderCursor(const CursorEntry& Entry, qreal Ratio)
{
    static const bool Registered = (InitCanvasResources(), true);
    Q_UNUSED(Registered);
    const int DeviceSize = qCeil(CursorSize * Ratio);
    QImageReader Reader(QStringLiteral(":/cursors/%1.svg").arg(QString::fromLatin1(Entry.Name).toLower()));
    Reader.setScaledSize(QSize(DeviceSize, DeviceSize));
    const QImage Image = Reader.read();
    if (Image.isNull())
        return QPixmap();
    QPixmap Pixmap = QPixmap::fromImage(Image);
    Pixmap.setDevicePixelRatio(qreal(DeviceSize) / CursorSize);
    return Pixmap;
}

struct CursorCache {
    qreal Ratio = 0;
    QHash<QString, QCursor> Made;
};

// Kept for the life of the program: the cursors must not outlive the application object's
// pixmap support at exit, so the cache is never destroyed.
CursorCache& Cache()
{
    static CursorCache* TheCache = new CursorCache;
    return *TheCache;
}

// Fills whole device pixels: the small handles are drawn without scaling so their edges stay sharp.
QPixmap RingedSquare(int LogicalSize, const QColor Rings[], int RingCount)
{
    const qreal Ratio = ScreenRatio();
    const int Size = std::max(LogicalSize, qRound(LogicalSize * Ratio));
    const int Ring = std::max(1, qRound(Ratio));
    QImage Image(Size, Size, QImage::Format_ARGB32_Premultiplied);
    QPainter Painter(&Image);
    for (int i = 0; i < RingCount; ++i) {
        const int Inset = i * Ring;
        const QRect Box(Inset, Inset, Size - 2 * Inset, Size - 2 * Inset);
        if (Box.isEmpty())
            break;
        Painter.fillRect(Box, Rings[i]);
    }
    Painter.end();
    QPixmap Pixmap = QPixmap::fromImage(Image);
    Pixmap.setDevicePixelRatio(qreal(Size) / LogicalSize);
    return Pixmap;
}

const QColor Outline(0x2b, 0x2b, 0x2b);

} // namespace

QCursor CanvasCursor(const QString& Name)
{
    const CursorEntry* Entry = FindCursor(Name);
    if (!Entry)
        return QCursor(Qt::ArrowCursor);
    CursorCache& Made = Cache();
    const qreal Ratio = ScreenRatio();
    if (Made.Ratio != Ratio) {
        Made.Made.clear();
        Made.Ratio = Ratio;
    }
    auto Found = Made.Made.constFind(Name);
    if (Found != Made.Made.constEnd())
        return *Found;
    const QPixmap Pixmap = RenderCursor(*Entry, Ratio);
    const QCursor Cursor = Pixmap.isNull() ? QCursor(Qt::ArrowCursor) : QCursor(Pixmap, Entry->HotX, Entry->HotY);
    Made.Made.insert(Name, Cursor);
    return Cursor;
}

QPoint CursorHotspot(const QString& Name)
{
    const CursorEntry* Entry = FindCursor(Name);
    return Entry ? QPoint(Entry->HotX, Entry->HotY) : QPoint(-1, -1);
}

bool HasCursor(const QString& Name)
{
    return FindCursor(Name) && CanvasCursor(Name).shape() == Qt::BitmapCursor;
}

namespace {

QImage DrawGlass(bool Convex)
{
    QImage Image(GlassWidth, GlassHeight, QImage::Format_RGB32);
    Image.fill(QColor(255, 0, 255));
    QPainter Painter(&Image);
    Painter.setRenderHint(QPainter::Antialiasing, false);

    // The lens sits in the middle of the image, because the view is built about the glass's centre;
    // the handle runs to the lower right corner.
    const QPoint Centre(GlassWidth / 2, GlassHeight / 2);
    const QPointF Along(0.8, 0.6);
    const QPointF HandleStart = QPointF(Centre) + Along * 48;
    const QPointF HandleEnd = QPointF(Centre) + Along * 80;
    Painter.setPen(QPen(Outline, 16, Qt::SolidLine, Qt::RoundCap));
    Painter.drawLine(HandleStart, HandleEnd);
    Painter.setPen(QPen(QColor(0x6b, 0x6b, 0x6b), 12, Qt::SolidLine, Qt::RoundCap));
    Painter.drawLine(HandleStart, HandleEnd);

    Painter.setPen(Qt::NoPen);
    auto Disc = [&](int Radius, const QColor& Color) {
        Painter.setBrush(Color);
        Painter.drawEllipse(QRect(Centre.x() - Radius, Centre.y() - Radius, 2 * Radius, 2 * Radius));
    };
    Disc(54, Outline);
    Disc(52, QColor(0xa6, 0xa6, 0xa6));
    Disc(48, Outline);
    if (Convex) {
        Disc(47, QColor(0xb8, 0xd4, 0xf5));
        Disc(43, Qt::white);
    } else {
        Disc(47, Qt::white);
    }
    return Image;
}

} // namespace

QImage GlassImage(bool Convex)
{
    static const QImage Plain = DrawGlass(false);
    static const QImage ConvexGlass = DrawGlass(true);
    return Convex ? ConvexGlass : Plain;
}

uint32_t GlassKeyColor()
{
    const QRgb Corner = GlassImage().pixel(0, 0);
    return uint32_t(qRed(Corner)) | (uint32_t(qGreen(Corner)) << 8) | (uint32_t(qBlue(Corner)) << 16);
}

QPixmap NodePixmap()
{
    // A dark edge and a white ring keep the node visible on any picture; the middle follows the
    // desktop's selection colour.
    const QColor Rings[] = {Outline, Qt::white, QGuiApplication::palette().color(QPalette::Highlight)};
    return RingedSquare(NodeSize, Rings, 3);
}

QPixmap GripPixmap()
{
    // The grips sit on the window's face beside the picture, so both colours come from the palette.
    const QPalette Palette = QGuiApplication::palette();
    const QColor Rings[] = {Palette.color(QPalette::WindowText), Palette.color(QPalette::Highlight)};
    return RingedSquare(GripSize, Rings, 2);
}

} // namespace basCanvasImages
