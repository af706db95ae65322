#include "basCanvasImages.h"

#include <gtest/gtest.h>

#include <QSet>

namespace {

const char* const CursorNames[] = {"PAINT",      "ERASE",     "FILL",    "POLIGON", "LINE",        "ARC",
                                   "BEZIERSTART", "BEZIER",    "RECTANGLE", "OVAL",  "REGION",      "REGIONDRAG",
                                   "PASTEDRAG",  "STAMP",     "SPRAY",   "REPLACE", "COLORPICKER", "HANDOFF",
                                   "HANDON"};

} // namespace

TEST(basCanvasImages, EveryCursorLoadsWithItsHotspotOnThePicture)
{
    for (const char* Name : CursorNames) {
        SCOPED_TRACE(Name);
        const QString Key = QString::fromLatin1(Name);
        ASSERT_TRUE(basCanvasImages::HasCursor(Key));
        const QCursor Cursor = basCanvasImages::CanvasCursor(Key);
        ASSERT_EQ(Cursor.shape(), Qt::BitmapCursor);
        const QPoint Hot = basCanvasImages::CursorHotspot(Key);
        EXPECT_EQ(Cursor.hotSpot(), Hot);
        ASSERT_TRUE(QRect(0, 0, 32, 32).contains(Hot));
        const QPixmap Pixmap = Cursor.pixmap();
        EXPECT_EQ(Pixmap.deviceIndependentSize(), QSizeF(32, 32));
        // Made once: the second request hands back the same picture.
        EXPECT_EQ(basCanvasImages::CanvasCursor(Key).pixmap().cacheKey(), Pixmap.cacheKey());
        // The hotspot is on the drawing (the tip, or the crosshair's framed centre), not in empty space.
        const QImage Image = Pixmap.toImage().scaled(32, 32);
        int Opaque = 0;
        for (int y = Hot.y() - 1; y <= Hot.y() + 1; ++y)
            for (int x = Hot.x() - 1; x <= Hot.x() + 1; ++x)
                if (Image.valid(x, y) && qAlpha(Image.pixel(x, y)) > 128)
                    ++Opaque;
        EXPECT_GE(Opaque, 2);
    }
}

TEST(basCanvasImages, UnknownCursorIsTheArrow)
{
    for (const char* Name : {"", "GLASS", "paint", "PAINT "}) {
        SCOPED_TRACE(Name);
        EXPECT_FALSE(basCanvasImages::HasCursor(QString::fromLatin1(Name)));
        EXPECT_EQ(basCanvasImages::CanvasCursor(QString::fromLatin1(Name)).shape(), Qt::ArrowCursor);
        EXPECT_EQ(basCanvasImages::CursorHotspot(QString::fromLatin1(Name)), QPoint(-1, -1));
    }
}

TEST(basCanvasImages, GlassHasKeyFaceAndRimOnly)
{
    const uint32_t Key = basCanvasImages::GlassKeyColor();
    const QRgb KeyRgb = qRgb(Key & 0xFF, (Key >> 8) & 0xFF, (Key >> 16) & 0xFF);
    for (bool Convex : {false, true}) {
        SCOPED_TRACE(Convex);
        const QImage Glass = basCanvasImages::GlassImage(Convex);
        ASSERT_EQ(Glass.format(), QImage::Format_RGB32);
        ASSERT_EQ(Glass.size(), QSize(basCanvasImages::GlassWidth, basCanvasImages::GlassHeight));
        ASSERT_GE(Glass.width(), 100);
        ASSERT_GE(Glass.height(), 80);
        EXPECT_EQ(Glass.pixel(0, 0) & 0xFFFFFF, KeyRgb & 0xFFFFFF);
        // The view is built about the glass's centre, so the lens face must cover it.
        EXPECT_EQ(Glass.pixel(Glass.width() / 2, Glass.height() / 2) & 0xFFFFFF, 0xFFFFFFu);
        int White = 0;
        int Outside = 0;
        QSet<QRgb> Rim;
        bool FaceTouchesOutside = false;
        for (int y = 0; y < Glass.height(); ++y) {
            for (int x = 0; x < Glass.width(); ++x) {
                const QRgb Pixel = Glass.pixel(x, y) & 0xFFFFFF;
                if (Pixel == (KeyRgb & 0xFFFFFF)) {
                    ++Outside;
                } else if (Pixel == 0xFFFFFF) {
                    ++White;
                    for (const QPoint& Step : {QPoint(1, 0), QPoint(-1, 0), QPoint(0, 1), QPoint(0, -1)})
                        if (Glass.valid(x + Step.x(), y + Step.y()) &&
                            (Glass.pixel(x + Step.x(), y + Step.y()) & 0xFFFFFF) == (KeyRgb & 0xFFFFFF))
                            FaceTouchesOutside = true;
                } else {
                    Rim.insert(Pixel);
                }
            }
        }
        EXPECT_GT(White, Glass.width() * Glass.height() / 4);
        EXPECT_GT(Outside, 0);
        // Drawn aliased: a handful of rim colours, no blends into the key or the face.
        EXPECT_GE(Rim.size(), 1);
        EXPECT_LE(Rim.size(), 4);
        EXPECT_FALSE(FaceTouchesOutside);
    }
}

TEST(basCanvasImages, NodeAndGripHaveAFramedSquare)
{
    const QPixmap Node = basCanvasImages::NodePixmap();
    const QPixmap Grip = basCanvasImages::GripPixmap();
    EXPECT_EQ(Node.deviceIndependentSize(), QSizeF(9, 9));
    EXPECT_EQ(Grip.deviceIndependentSize(), QSizeF(6, 6));
    for (const QPixmap& Pixmap : {Node, Grip}) {
        const QImage Image = Pixmap.toImage();
        const QRgb Middle = Image.pixel(Image.width() / 2, Image.height() / 2);
        EXPECT_NE(Image.pixel(0, 0), Middle);
        EXPECT_EQ(Image.pixel(0, 0), Image.pixel(Image.width() - 1, Image.height() - 1));
        EXPECT_EQ(qAlpha(Middle), 255);
    }
}
