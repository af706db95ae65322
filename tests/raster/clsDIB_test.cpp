// Creation and bookkeeping of the surface: header, stride, storage order, colour tables,
// the Force32 trap, refused sizes, ClearUp, the 8-bit palette calls.
#include <gtest/gtest.h>

#include <QFile>
#include <chrono>

#include "TestImages.h"
#include "clsDIB.h"

using namespace TestImages;

namespace {

struct BlankCase {
    int32_t Width, Height;
    int16_t Bpp;
    bool TopDown;
    int32_t Stride;  // worked out by hand
};

const BlankCase BlankCases[] = {
    {1, 1, 1, false, 4},   {31, 2, 1, false, 4},  {32, 2, 1, true, 4},   {33, 3, 1, false, 8},
    {8, 2, 4, false, 4},   {9, 2, 4, true, 8},    {17, 1, 4, false, 12}, {4, 3, 8, false, 4},
    {5, 3, 8, true, 8},    {7, 2, 8, false, 8},   {3, 2, 24, false, 12}, {4, 2, 24, true, 12},
    {5, 2, 24, false, 16}, {1, 1, 24, false, 4},  {3, 2, 32, false, 12}, {1, 5, 32, true, 4},
};

long VmPeakKb()
{
    QFile Status(QStringLiteral("/proc/self/status"));
    if (!Status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& Line : Status.readAll().split('\n'))
        if (Line.startsWith("VmPeak:"))
            return Line.mid(7).trimmed().split(' ').first().toLong();
    return -1;
}

void ExpectEmpty(const clsDIB& Dib)
{
    EXPECT_EQ(Dib.DIBhDC(), nullptr);
    EXPECT_EQ(Dib.DIBhDIB(), nullptr);
    EXPECT_EQ(Dib.DIBBitsPtr(), nullptr);
    EXPECT_EQ(Dib.DIBWidth(), 0);
    EXPECT_EQ(Dib.DIBHeight(), 0);
    EXPECT_EQ(Dib.DIBbpp(), 0);
    EXPECT_EQ(Dib.BytesPerScanline(), 0);
    EXPECT_EQ(Dib.DIBSize(), 0);
    EXPECT_FALSE(Dib.DIBhasAlpha());
    EXPECT_EQ(Dib.DIBBackColor(), 0u);
    const BitmapInfoHeader& H = Dib.Header();
    EXPECT_EQ(H.biSize, 0);
    EXPECT_EQ(H.biWidth, 0);
    EXPECT_EQ(H.biHeight, 0);
    EXPECT_EQ(H.biBitCount, 0);
    EXPECT_EQ(H.biSizeImage, 0);
}

} // namespace

TEST(clsDIB, CreateBlankDIBFillsHeaderAndStride)
{
    for (const BlankCase& C : BlankCases) {
        SCOPED_TRACE(testing::Message() << C.Width << "x" << C.Height << " at " << C.Bpp << " top-down " << C.TopDown);
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(C.Width, C.Height, C.Bpp, 0x00102030, C.TopDown, false));
        const BitmapInfoHeader& H = Dib.Header();
        EXPECT_EQ(H.biSize, 40);
        EXPECT_EQ(H.biWidth, C.Width);
        EXPECT_EQ(H.biHeight, C.TopDown ? -C.Height : C.Height);
        EXPECT_EQ(H.biPlanes, 1);
        EXPECT_EQ(H.biBitCount, C.Bpp);
        EXPECT_EQ(H.biCompression, 0);
        EXPECT_EQ(H.biSizeImage, C.Stride * C.Height);
        EXPECT_EQ(H.biXPelsPerMeter, 0);
        EXPECT_EQ(H.biYPelsPerMeter, 0);
        EXPECT_EQ(H.biClrUsed, 0);
        EXPECT_EQ(H.biClrImportant, 0);
        EXPECT_EQ(Dib.DIBWidth(), C.Width);
        EXPECT_EQ(Dib.DIBHeight(), C.Height);
        EXPECT_EQ(Dib.DIBbpp(), C.Bpp);
        EXPECT_EQ(Dib.BytesPerScanline(), C.Stride);
        EXPECT_EQ(Dib.DIBSize(), C.Stride * C.Height);
        EXPECT_EQ(Dib.DIBBackColor(), 0x00102030u);
        EXPECT_FALSE(Dib.DIBhasAlpha());
        ASSERT_NE(Dib.DIBhDC(), nullptr);
        EXPECT_NE(Dib.DIBBitsPtr(), nullptr);
        EXPECT_EQ(Dib.DIBhDC()->Bpp(), C.Bpp);
        EXPECT_EQ(Dib.DIBhDC()->Stride(), C.Stride);
        EXPECT_EQ(Dib.DIBhDC()->TopDown(), C.TopDown);
        EXPECT_EQ(Dib.DIBhDC()->Bits(), Dib.DIBBitsPtr());
    }
}

TEST(clsDIB, ImageRowZeroIsTheLastStorageRowUnlessTopDown)
{
    for (int16_t Bpp : {int16_t(24), int16_t(32)}) {
        for (bool TopDown : {false, true}) {
            SCOPED_TRACE(testing::Message() << Bpp << " bits, top-down " << TopDown);
            clsDIB Dib;
            ASSERT_TRUE(Dib.CreateBlankDIB(3, 4, Bpp, 0, TopDown));
            Dib.DIBhDC()->SetPixelV(1, 0, 0x00332211);  // image row 0, red 0x11
            const int Stride = StrideOf(3, Bpp), Step = Bpp / 8;
            const int Row = TopDown ? 0 : 3;
            for (int R = 0; R < 4; ++R) {
                const uint8_t* P = Dib.DIBBitsPtr() + R * Stride + Step;
                if (R == Row) {
                    EXPECT_EQ(P[0], 0x33);  // blue
                    EXPECT_EQ(P[1], 0x22);
                    EXPECT_EQ(P[2], 0x11);  // red
                } else {
                    EXPECT_EQ(P[0] | P[1] | P[2], 0) << "storage row " << R;
                }
            }
            EXPECT_EQ(Dib.DIBhDC()->Row(0), Dib.DIBBitsPtr() + Row * Stride);
        }
    }
}

TEST(clsDIB, ShallowSurfaceHasBlackPixelsAndBackColourAsEntryOne)
{
    for (int16_t Bpp : {int16_t(1), int16_t(4), int16_t(8)}) {
        for (uint32_t Back : {0x00FFFFFFu, 0x00123456u}) {
            SCOPED_TRACE(testing::Message() << Bpp << " bits, back colour " << std::hex << Back);
            clsDIB Dib;
            ASSERT_TRUE(Dib.CreateBlankDIB(13, 3, Bpp, Back, false));
            std::vector<uint8_t> Table;
            ASSERT_EQ(Dib.GetPaletteFromDIB8BPP(Table), 1 << Bpp);
            ASSERT_EQ(Table.size(), size_t(4) << Bpp);
            std::vector<uint8_t> Expected(Table.size(), 0);
            Expected[4] = uint8_t(Back >> 16);  // blue
            Expected[5] = uint8_t(Back >> 8);
            Expected[6] = uint8_t(Back);  // red
            EXPECT_EQ(Table, Expected);
            for (int I = 0; I < Dib.DIBSize(); ++I)
                ASSERT_EQ(Dib.DIBBitsPtr()[I], 0) << "byte " << I;
            EXPECT_EQ(Dib.DIBhDC()->GetPixel(0, 0), 0u);
            EXPECT_EQ(Dib.DIBhDC()->GetPixel(12, 2), 0u);
        }
    }
}

TEST(clsDIB, DeepSurfaceIsFilledWithBackColourAndAlphaZero)
{
    for (int16_t Bpp : {int16_t(24), int16_t(32)}) {
        SCOPED_TRACE(testing::Message() << Bpp << " bits");
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(3, 2, Bpp, 0x00123456, false));
        std::vector<uint8_t> Expected;
        for (int R = 0; R < 2; ++R) {
            for (int X = 0; X < 3; ++X) {
                Expected.insert(Expected.end(), {0x12, 0x34, 0x56});
                if (Bpp == 32)
                    Expected.push_back(0);
            }
            while (Expected.size() % 4)
                Expected.push_back(0);  // row padding stays zero
        }
        ASSERT_EQ(Dib.DIBSize(), int(Expected.size()));
        EXPECT_EQ(std::vector<uint8_t>(Dib.DIBBitsPtr(), Dib.DIBBitsPtr() + Dib.DIBSize()), Expected);
    }
}

TEST(clsDIB, Force32KeepsTheRequestedDepthInTheFields)
{
    struct Case {
        int16_t Bpp;
        int16_t HeaderBits;
        int32_t Stride;  // of the requested depth, width 5
    };
    for (const Case& C : {Case{24, 32, 16}, Case{16, 32, 12}, Case{32, 32, 20}, Case{8, 8, 8}, Case{4, 4, 4}}) {
        SCOPED_TRACE(testing::Message() << "BPP " << C.Bpp);
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(5, 3, C.Bpp, 0x00A0B0C0, false, true));
        EXPECT_EQ(Dib.Header().biBitCount, C.HeaderBits);
        EXPECT_EQ(Dib.StorageBpp(), C.HeaderBits);
        EXPECT_EQ(Dib.DIBbpp(), C.Bpp);
        EXPECT_EQ(Dib.BytesPerScanline(), C.Stride);
        EXPECT_EQ(Dib.Header().biSizeImage, C.Stride * 3);
        EXPECT_EQ(Dib.DIBSize(), C.Stride * 3);
        EXPECT_EQ(Dib.DIBhDC()->Bpp(), C.HeaderBits);
        EXPECT_EQ(Dib.DIBhDC()->Stride(), StrideOf(5, C.HeaderBits));
        if (C.HeaderBits == 32) {
            // The memory really holds four bytes a pixel, all of them filled.
            for (int R = 0; R < 3; ++R)
                for (int X = 0; X < 5; ++X)
                    EXPECT_EQ(GetQuad(Dib, X, R), Quad(0xA0, 0xB0, 0xC0, 0)) << X << "," << R;
        }
    }
}

TEST(clsDIB, RefusesSidesOutOfRangeWithoutAllocating)
{
    struct Case {
        int32_t Width, Height;
        int16_t Bpp;
    };
    const Case Refused[] = {{0, 5, 32},      {5, 0, 32},          {-1, 5, 32},          {5, -3, 8},
                            {32768, 1, 32},  {1, 32768, 8},       {-32768, -32768, 1},  {32767, 32767, 32},
                            {32767, 32767, 24}, {32767, 16385, 32}, {2147483647, 2, 32},
                            {2, 2147483647, 32}};
    const long PeakBefore = VmPeakKb();
    const auto Start = std::chrono::steady_clock::now();
    for (const Case& C : Refused) {
        SCOPED_TRACE(testing::Message() << C.Width << "x" << C.Height << " at " << C.Bpp);
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(2, 2, 32, 0, false));
        EXPECT_FALSE(Dib.CreateBlankDIB(C.Width, C.Height, C.Bpp, 0, false, true));
        // The old surface was cleared first.
        ExpectEmpty(Dib);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - Start, std::chrono::seconds(1));
    if (PeakBefore > 0) {
        EXPECT_LT(VmPeakKb() - PeakBefore, 512L * 1024) << "a refused size reserved memory";
    }

    // The largest sides themselves are fine when the memory is small.
    clsDIB Wide, Tall;
    EXPECT_TRUE(Wide.CreateBlankDIB(32767, 1, 32, 0, false));
    EXPECT_EQ(Wide.BytesPerScanline(), 32767 * 4);
    EXPECT_TRUE(Tall.CreateBlankDIB(1, 32767, 1, 0, true));
    EXPECT_EQ(Tall.DIBSize(), 4 * 32767);
}

TEST(clsDIB, ClearUpIsSafeTwiceAndZeroesEverything)
{
    clsDIB Dib;
    Dib.ClearUp();
    Dib.ClearUp();
    ExpectEmpty(Dib);
    ASSERT_TRUE(Dib.CreateBlankDIB(4, 3, 32, 0x00FFFFFF, true));
    Dib.setDIBhasAlpha(true);
    Dib.ClearUp();
    ExpectEmpty(Dib);
    Dib.ClearUp();
    ExpectEmpty(Dib);
    // The object is usable again, and a second creation replaces the first surface.
    ASSERT_TRUE(Dib.CreateBlankDIB(4, 4, 32, 0, false));
    ASSERT_TRUE(Dib.CreateBlankDIB(2, 3, 8, 0x00FF0000, false));
    EXPECT_EQ(Dib.DIBWidth(), 2);
    EXPECT_EQ(Dib.DIBHeight(), 3);
    EXPECT_EQ(Dib.DIBbpp(), 8);
    EXPECT_EQ(Dib.BytesPerScanline(), 4);
    EXPECT_EQ(Dib.DIBBackColor(), 0x00FF0000u);
}

TEST(clsDIB, PaletteCallsSetAndReadTheColourTable)
{
    for (int16_t Bpp : {int16_t(1), int16_t(4), int16_t(8)}) {
        SCOPED_TRACE(testing::Message() << Bpp << " bits");
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(3, 2, Bpp, 0x00FFFFFF, false));
        const int Entries = 1 << Bpp;
        // Three entries given: only they change. Then more entries than the table holds.
        std::vector<uint8_t> Three = {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0};
        Dib.SetPaletteToDIB8BPP(Three);
        std::vector<uint8_t> Read;
        ASSERT_EQ(Dib.GetPaletteFromDIB8BPP(Read), Entries);
        std::vector<uint8_t> Expected(size_t(Entries) * 4, 0);
        for (size_t I = 0; I < Expected.size() && I < Three.size(); ++I)
            Expected[I] = Three[I];
        EXPECT_EQ(Read, Expected);
        // The pixels, all index 0, now show entry 0: blue 1, green 2, red 3.
        EXPECT_EQ(Dib.DIBhDC()->GetPixel(2, 1), 0x00010203u);

        std::vector<uint8_t> Many(300 * 4);
        for (size_t I = 0; I < Many.size(); ++I)
            Many[I] = uint8_t(I * 7 + 1);
        Dib.SetPaletteToDIB8BPP(Many);
        ASSERT_EQ(Dib.GetPaletteFromDIB8BPP(Read), Entries);
        EXPECT_EQ(Read, std::vector<uint8_t>(Many.begin(), Many.begin() + Entries * 4));
    }

    // Deep surfaces and empty objects have no table.
    clsDIB Deep, None;
    ASSERT_TRUE(Deep.CreateBlankDIB(2, 2, 32, 0x00123456, false));
    Deep.SetPaletteToDIB8BPP({1, 2, 3, 0});
    std::vector<uint8_t> Read;
    EXPECT_EQ(Deep.GetPaletteFromDIB8BPP(Read), 0);
    EXPECT_EQ(Deep.DIBhDC()->GetPixel(0, 0), 0x00123456u);
    None.SetPaletteToDIB8BPP({1, 2, 3, 0});
    EXPECT_EQ(None.GetPaletteFromDIB8BPP(Read), 0);
}

TEST(clsDIB, PaletteIndexReadsStorageRows)
{
    for (bool TopDown : {false, true}) {
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(5, 3, 8, 0, TopDown));
        for (int R = 0; R < 3; ++R)
            for (int X = 0; X < 5; ++X)
                Dib.DIBBitsPtr()[R * 8 + X] = uint8_t(200 + R * 10 + X);
        clsDIB Caller;
        for (int R = 0; R < 3; ++R)
            for (int X = 0; X < 5; ++X)
                EXPECT_EQ(Caller.PaletteIndex_In_DIB_XY(Dib, X, R), 200 + R * 10 + X)
                    << "column " << X << ", storage row " << R << ", top-down " << TopDown;
    }
}
