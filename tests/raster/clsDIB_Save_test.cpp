// The BMP writers, byte for byte: Save_DIB_To_File (24 bits, or 32 with alpha) and
// Save_BMP_To_File_With_PAL (1, 4, 8 and 24 bits from a palette and packed rows).
#include <gtest/gtest.h>

#include <QFileInfo>
#include <QTemporaryDir>

#include "TestImages.h"
#include "clsDIB.h"
#include "clsPal.h"
#include "clsPalDither.h"

using namespace TestImages;

namespace {

// Rows of 24 or 32 bits, bottom row first, each padded with zeros to 32 bits.
QByteArray RowsOf(int W, int H, int Bits, const std::function<uint32_t(int, int)>& QuadAt)
{
    QByteArray Rows;
    for (int Y = H - 1; Y >= 0; --Y) {
        for (int X = 0; X < W; ++X) {
            const uint32_t Q = QuadAt(X, Y);
            Rows.append(reinterpret_cast<const char*>(&Q), Bits / 8);
        }
        Rows.append(QByteArray(StrideOf(W, Bits) - W * Bits / 8, '\0'));
    }
    return Rows;
}

class clsDIBSave : public testing::Test {
protected:
    QTemporaryDir Dir;
    QString Path = Dir.filePath(QStringLiteral("out.bmp"));
    clsDIB Caller;
};

} // namespace

TEST_F(clsDIBSave, SaveDIBToFileWritesTwentyFourBitsOrThirtyTwoWithAlpha)
{
    ASSERT_TRUE(WriteBytes(Path, QByteArray(1000, 'x')));  // an older, longer file is replaced
    const std::vector<uint32_t> Q = RandomWords(6, 7);  // alpha bytes not zero either
    const auto QuadAt = [&](int X, int Y) { return Q[Y * 3 + X]; };
    for (int Mode = 0; Mode < 3; ++Mode) {
        const bool TopDown = Mode == 1, Alpha = Mode == 2;
        clsDIB Dib;
        MakeDIB32(Dib, 3, 2, Q, TopDown);
        Dib.setDIBhasAlpha(Alpha);
        ASSERT_TRUE(Caller.Save_DIB_To_File(Path, Dib));
        const int Bits = Alpha ? 32 : 24;
        EXPECT_EQ(ReadBytes(Path).toHex(' '), BmpFile(3, 2, Bits, {}, RowsOf(3, 2, Bits, QuadAt)).toHex(' '))
            << "top-down " << TopDown << ", alpha " << Alpha;
    }
}

TEST_F(clsDIBSave, SaveDIBToFileConvertsShallowSurfacesThroughTheirTable)
{
    clsDIB Dib;
    ASSERT_TRUE(Dib.CreateBlankDIB(3, 3, 8, 0, false));
    std::vector<uint8_t> Table(1024, 0);
    for (int I = 0; I < 256; ++I) {
        Table[I * 4] = uint8_t(I);  // blue
        Table[I * 4 + 1] = uint8_t(255 - I);
        Table[I * 4 + 2] = uint8_t(I * 3);  // red
    }
    Dib.SetPaletteToDIB8BPP(Table);
    for (int R = 0; R < 3; ++R)
        for (int X = 0; X < 3; ++X)
            Dib.DIBBitsPtr()[R * 4 + X] = uint8_t(R * 50 + X * 9 + 1);
    ASSERT_TRUE(Caller.Save_DIB_To_File(Path, Dib));
    const auto QuadAt = [&](int X, int Y) {
        const int I = (2 - Y) * 50 + X * 9 + 1;
        return Quad(uint8_t(I), uint8_t(255 - I), uint8_t(I * 3));
    };
    EXPECT_EQ(ReadBytes(Path).toHex(' '), BmpFile(3, 3, 24, {}, RowsOf(3, 3, 24, QuadAt)).toHex(' '));
}

TEST_F(clsDIBSave, SaveDIBToFileFailsWithoutSurfaceOrFolder)
{
    clsDIB Empty, Dib;
    EXPECT_FALSE(Caller.Save_DIB_To_File(Path, Empty));
    ASSERT_TRUE(Dib.CreateBlankDIB(2, 2, 32, 0, false));
    EXPECT_FALSE(Caller.Save_DIB_To_File(Dir.filePath(QStringLiteral("no/such/folder/x.bmp")), Dib));
    EXPECT_FALSE(Caller.Save_DIB_To_File(Dir.path(), Dib));  // a folder of that name
    EXPECT_TRUE(QFileInfo(Dir.path()).isDir());
}

TEST_F(clsDIBSave, SaveBMPWithPalWritesTableAndPackedRowsAsTheyStand)
{
    for (int Bpp : {1, 4, 8}) {
        SCOPED_TRACE(testing::Message() << Bpp << " bits");
        const int W = 13, H = 3;
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(W, H, 32, 0x00FFFFFF, false));
        clsPal Pal;
        Pal.CreateBlankPalette(int16_t(1 << Bpp));
        QByteArray Table;
        for (int I = 0; I < (1 << Bpp); ++I) {
            Pal.rgbR(uint8_t(I), uint8_t(I * 5 + 1));
            Pal.rgbG(uint8_t(I), uint8_t(I * 11 + 2));
            Pal.rgbB(uint8_t(I), uint8_t(I * 17 + 3));
            const char Entry[4] = {char(I * 17 + 3), char(I * 11 + 2), char(I * 5 + 1), 0};
            Table.append(Entry, 4);
        }
        clsPalDither Dither;
        ASSERT_NE(Dither.CreateBlankPaletteTable(W, H, uint8_t(Bpp)), nullptr);
        const int Size = StrideOf(W, Bpp) * H;
        ASSERT_EQ(Dither.TableEntry().size(), size_t(Size));
        QByteArray Rows;
        for (int I = 0; I < Size; ++I) {
            Dither.TableEntryPtr()[I] = uint8_t(I * 37 + Bpp);  // padding bytes too: written as they stand
            Rows.append(char(I * 37 + Bpp));
        }
        ASSERT_TRUE(Caller.Save_BMP_To_File_With_PAL(Path, Dib, Pal, Dither, int16_t(Bpp)));
        EXPECT_EQ(ReadBytes(Path).toHex(' '), BmpFile(W, H, Bpp, Table, Rows).toHex(' '));
    }
}

TEST_F(clsDIBSave, SaveBMPWithPalAtTwentyFourBitsTakesTheSurface)
{
    clsDIB Dib;
    const std::vector<uint32_t> Q = RandomWords(10, 9);
    MakeDIB32(Dib, 5, 2, Q);
    clsPal Pal;
    Pal.CreateBlankPalette(256);
    clsPalDither Dither;
    ASSERT_TRUE(Caller.Save_BMP_To_File_With_PAL(Path, Dib, Pal, Dither, 24));
    EXPECT_EQ(ReadBytes(Path).toHex(' '),
              BmpFile(5, 2, 24, {}, RowsOf(5, 2, 24, [&](int X, int Y) { return Q[Y * 5 + X]; })).toHex(' '));
    // Any other depth writes the headers and no rows.
    Caller.Save_BMP_To_File_With_PAL(Path, Dib, Pal, Dither, 16);
    const QByteArray Headers = ReadBytes(Path);
    ASSERT_EQ(Headers.size(), 54);
    EXPECT_EQ(Headers.mid(6).toHex(' '), BmpFile(5, 2, 16, {}, {}).mid(6).toHex(' '));
}
