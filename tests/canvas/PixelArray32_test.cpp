#include <gtest/gtest.h>

#include <QPainter>

#include "PixelArray32.h"
#include "clsDIB.h"

TEST(PixelArray32, RowsMapToThePictureWhateverTheStorageOrder)
{
    for (bool TopDown : {false, true}) {
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(3, 4, 32, 0xFFFFFF, TopDown));
        Dib.DIBhDC()->SetPixelV(1, 0, 0x0000FF);  // red at the top row
        PixelArray32 Pixels(Dib);
        ASSERT_TRUE(Pixels.Valid());
        EXPECT_EQ(Pixels.ToColor(Pixels.At(1, 0)) & 0xFFFFFF, 0x0000FFu) << TopDown;
        EXPECT_EQ(&Pixels.Bottom(1, 3), &Pixels.At(1, 0)) << TopDown;
        Pixels.At(2, 3) = PixelArray32::ToWord(0xFF0000);  // blue at the bottom row
        EXPECT_EQ(Dib.DIBhDC()->GetPixel(2, 3), 0xFF0000u) << TopDown;
    }
}

TEST(PixelArray32, FinishesPaintingAndRefusesOtherDepths)
{
    clsDIB Dib;
    ASSERT_TRUE(Dib.CreateBlankDIB(4, 4, 32, 0xFFFFFF, false));
    Dib.DIBhDC()->Painter()->fillRect(0, 0, 2, 1, QColor(0, 255, 0));
    PixelArray32 Pixels(Dib);
    EXPECT_TRUE(PixelArray32::SameColor(Pixels.At(0, 0), PixelArray32::ToWord(0x00FF00)));

    clsDIB Paletted;
    ASSERT_TRUE(Paletted.CreateBlankDIB(4, 4, 8, 0, false));
    EXPECT_FALSE(PixelArray32(Paletted).Valid());
    clsDIB Empty;
    EXPECT_FALSE(PixelArray32(Empty).Valid());
}
