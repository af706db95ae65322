// The BMP writers, byte for byte: Save_DIB_To_File (24 bits, or 32 with alpha) and
// Save_BMP_To_File_With_PAL (1, 4, 8 and 24 bits from a palette and packed rows).
#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <functional>

#include "TestImages.h"
#include "clsDIB.h"
#include "clsPal.h"
#include "clsPalDither.h"

using namespace TestImages;

namespace {

// The file as the writers lay it out; bfSize leaves out the 14 bytes of the file header.
QByteArray ExpectedFile(int W, int H, int Bits, const QByteArray& Table, const QByteArray& Rows)
{
    QByteArray F("BM");
    PutLe32(F, uint32_t(40 + Table.size() + Rows.size()));
    PutLe16(F, 0);
    PutLe16(F, 0);
    PutLe32(F, uint32_t(54 + Table.size()));
    PutLe32(F, 40);
    PutLe32(F, uint32_t(W));
    PutLe32(F, uint32_t(H));
    PutLe16(F, 1);
    PutLe16(F, uint16_t(Bits));
    for (int I = 0; I < 6; ++I)
        PutLe32(F, 0);  // compression, image size, resolutions, colours used and important
    return F + Table + Rows;
}

// Rows of 24 or 32 bits, bottom row first, each padded with zeros to 32 bits.
QByteArray RowsOf(int W, int H, int Bits, const std::function<uint32_t(int, int)>& QuadAt)
{
    QByteArray Rows;
    for (int Y = H - 1; Y >= 0; --Y) {
        QByteArray Row;
        for (int X = 0; X < W; ++X) {
            const uint32_t Q = QuadAt(X, Y);
            Row.append(char(QB(Q)));
            Row.append(char(QG(Q)));
            Row.append(char(QR(Q)));
            if (Bits == 32)
                Row.append(char(QA(Q)));
        }
        Row.append(QByteArray(StrideOf(W, Bits) - Row.size(), '\0'));
        Rows += Row;
    }
    return Rows;
}

} // namespace

TEST(clsDIBSave, SaveDIBToFileWritesTwentyFourBitsWithoutAlpha)
{
    QTemporaryDir Dir;
    const QString Path = Dir.filePath(QStringLiteral("plain.bmp"));
    ASSERT_TRUE(WriteBytes(Path, QByteArray(1000, 'x')));  // an older, longer file is replaced
    for (bool TopDown : {false, true}) {
        SCOPED_TRACE(testing::Message() << "top-down " << TopDown);
        clsDIB Dib, Caller;
        const std::vector<uint32_t> Q = RandomWords(6, 7);  // alpha bytes not zero either
        MakeDIB32(Dib, 3, 2, Q, TopDown);
        ASSERT_TRUE(Caller.Save_DIB_To_File(Path, Dib));
        const QByteArray Expected = ExpectedFile(3, 2, 24, {}, RowsOf(3, 2, 24, [&](int X, int Y) { return Q[Y * 3 + X]; }));
        const QByteArray Actual = ReadBytes(Path);
        EXPECT_EQ(Actual.toHex(' '), Expected.toHex(' '));
        EXPECT_EQ(Le32(Actual, 2), uint32_t(Actual.size() - 14));
    }
}

TEST(clsDIBSave, SaveDIBToFileKeepsAlphaInThirtyTwoBits)
{
    QTemporaryDir Dir;
    const QString Path = Dir.filePath(QStringLiteral("alpha.bmp"));
    clsDIB Dib, Caller;
    const std::vector<uint32_t> Q = RandomWords(10, 8);
    MakeDIB32(Dib, 5, 2, Q);
    Dib.setDIBhasAlpha(true);
    ASSERT_TRUE(Caller.Save_DIB_To_File(Path, Dib));
    EXPECT_EQ(ReadBytes(Path).toHex(' '),
              ExpectedFile(5, 2, 32, {}, RowsOf(5, 2, 32, [&](int X, int Y) { return Q[Y * 5 + X]; })).toHex(' '));
}

TEST(clsDIBSave, SaveDIBToFileConvertsShallowSurfacesThroughTheirTable)
{
    QTemporaryDir Dir;
    const QString Path = Dir.filePath(QStringLiteral("eight.bmp"));
    clsDIB Dib, Caller;
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
    EXPECT_EQ(ReadBytes(Path).toHex(' '), ExpectedFile(3, 3, 24, {}, RowsOf(3, 3, 24, QuadAt)).toHex(' '));
}

TEST(clsDIBSave, SaveDIBToFileFailsWithoutSurfaceOrFolder)
{
    QTemporaryDir Dir;
    clsDIB Empty, Dib, Caller;
    const QString Path = Dir.filePath(QStringLiteral("none.bmp"));
    EXPECT_FALSE(Caller.Save_DIB_To_File(Path, Empty));
    ASSERT_TRUE(Dib.CreateBlankDIB(2, 2, 32, 0, false));
    EXPECT_FALSE(Caller.Save_DIB_To_File(Dir.filePath(QStringLiteral("no/such/folder/x.bmp")), Dib));
    EXPECT_FALSE(Caller.Save_DIB_To_File(Dir.path(), Dib));  // a folder of that name
    EXPECT_TRUE(QFileInfo(Dir.path()).isDir());
}

TEST(clsDIBSave, SaveBMPWithPalWritesTableAndPackedRowsAsTheyStand)
{
    QTemporaryDir Dir;
    for (int Bpp : {1, 4, 8}) {
        SCOPED_TRACE(testing::Message() << Bpp << " bits");
        const int W = 13, H = 3;
        clsDIB Dib, Caller;
        ASSERT_TRUE(Dib.CreateBlankDIB(W, H, 32, 0x00FFFFFF, false));
        clsPal Pal;
        Pal.CreateBlankPalette(int16_t(1 << Bpp));
        QByteArray Table;
        for (int I = 0; I < (1 << Bpp); ++I) {
            Pal.rgbR(uint8_t(I), uint8_t(I * 5 + 1));
            Pal.rgbG(uint8_t(I), uint8_t(I * 11 + 2));
            Pal.rgbB(uint8_t(I), uint8_t(I * 17 + 3));
            Table.append(char(I * 17 + 3));
            Table.append(char(I * 11 + 2));
            Table.append(char(I * 5 + 1));
            Table.append('\0');
        }
        clsPalDither Dither;
        ASSERT_NE(Dither.CreateBlankPaletteTable(W, H, uint8_t(Bpp)), nullptr);
        const int RowSize = StrideOf(W, Bpp);
        ASSERT_EQ(Dither.TableEntry().size(), size_t(RowSize * H));
        QByteArray Rows;
        for (int I = 0; I < RowSize * H; ++I) {
            Dither.TableEntryPtr()[I] = uint8_t(I * 37 + Bpp);  // padding bytes too: written as they stand
            Rows.append(char(I * 37 + Bpp));
        }
        const QString Path = Dir.filePath(QStringLiteral("pal%1.bmp").arg(Bpp));
        ASSERT_TRUE(Caller.Save_BMP_To_File_With_PAL(Path, Dib, Pal, Dither, int16_t(Bpp)));
        const QByteArray Actual = ReadBytes(Path);
        EXPECT_EQ(Actual.toHex(' '), ExpectedFile(W, H, Bpp, Table, Rows).toHex(' '));
        EXPECT_EQ(Le32(Actual, 2), uint32_t(Actual.size() - 14));
    }
}

TEST(clsDIBSave, SaveBMPWithPalAtTwentyFourBitsTakesTheSurface)
{
    QTemporaryDir Dir;
    const QString Path = Dir.filePath(QStringLiteral("rgb.bmp"));
    clsDIB Dib, Caller;
    const std::vector<uint32_t> Q = RandomWords(10, 9);
    MakeDIB32(Dib, 5, 2, Q);
    clsPal Pal;
    Pal.CreateBlankPalette(256);
    clsPalDither Dither;
    ASSERT_TRUE(Caller.Save_BMP_To_File_With_PAL(Path, Dib, Pal, Dither, 24));
    EXPECT_EQ(ReadBytes(Path).toHex(' '),
              ExpectedFile(5, 2, 24, {}, RowsOf(5, 2, 24, [&](int X, int Y) { return Q[Y * 5 + X]; })).toHex(' '));

    // Any other depth writes the headers and no rows.
    const QString Other = Dir.filePath(QStringLiteral("sixteen.bmp"));
    Caller.Save_BMP_To_File_With_PAL(Other, Dib, Pal, Dither, 16);
    const QByteArray Actual = ReadBytes(Other);
    ASSERT_EQ(Actual.size(), 54);
    EXPECT_EQ(Le16(Actual, 28), 16);
    EXPECT_EQ(Le32(Actual, 10), 54u);
}
