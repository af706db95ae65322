// Creation and bookkeeping of the surface: header, stride, colour tables, the Force32 trap,
// refused sizes, ClearUp, the 8-bit palette calls.
#include <gtest/gtest.h>

#include <QFile>
#include <chrono>

#include "TestImages.h"
#include "clsDIB.h"

using namespace TestImages;

namespace {

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
    EXPECT_EQ(Dib.DIBBitsPtr(), nullptr);
    EXPECT_EQ(Shape(Dib), std::vector<int64_t>(8, 0));
    EXPECT_EQ(Dib.DIBBackColor() | Dib.Header().biSize | Dib.Header().biWidth | Dib.Header().biSizeImage, 0u);
}

} // namespace

TEST(clsDIB, CreateBlankDIBFillsHeaderAndStride)
{
    struct Case {
        int32_t Width, Height;
        int16_t Bpp;
        bool TopDown;
        int32_t Stride;  // worked out by hand
    };
    for (const Case& C : {Case{1, 1, 1, false, 4}, Case{33, 3, 1, false, 8}, Case{9, 2, 4, true, 8},
                          Case{17, 1, 4, false, 12}, Case{5, 3, 8, true, 8}, Case{3, 2, 24, false, 12},
                          Case{5, 2, 24, false, 16}, Case{1, 5, 32, true, 4}}) {
        SCOPED_TRACE(testing::Message() << C.Width << "x" << C.Height << " at " << C.Bpp << " top-down " << C.TopDown);
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(C.Width, C.Height, C.Bpp, 0x00102030, C.TopDown, false));
        const int32_t SignedHeight = C.TopDown ? -C.Height : C.Height;
        EXPECT_EQ(Shape(Dib), (std::vector<int64_t>{C.Width, C.Height, C.Bpp, C.Bpp, C.Stride, C.Stride * C.Height,
                                                    SignedHeight, false}));
        const BitmapInfoHeader& H = Dib.Header();
        EXPECT_EQ((std::vector<int64_t>{H.biSize, H.biWidth, H.biPlanes, H.biSizeImage}),
                  (std::vector<int64_t>{40, C.Width, 1, C.Stride * C.Height}));
        EXPECT_EQ(H.biCompression | H.biXPelsPerMeter | H.biYPelsPerMeter | H.biClrUsed | H.biClrImportant, 0);
        EXPECT_EQ(Dib.DIBBackColor(), 0x00102030u);
        ASSERT_NE(Dib.DIBhDC(), nullptr);
        EXPECT_EQ(Dib.DIBhDC()->Bits(), Dib.DIBBitsPtr());
        EXPECT_EQ((std::vector<int>{Dib.DIBhDC()->Bpp(), Dib.DIBhDC()->Stride(), Dib.DIBhDC()->TopDown()}),
                  (std::vector<int>{C.Bpp, C.Stride, C.TopDown}));
    }
}

TEST(clsDIB, ShallowSurfacesAreIndexZeroWithBackColourAsEntryOneDeepOnesTheBackColour)
{
    for (int16_t Bpp : {int16_t(1), int16_t(4), int16_t(8), int16_t(24), int16_t(32)}) {
        SCOPED_TRACE(testing::Message() << Bpp << " bits");
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(3, 2, Bpp, 0x00123456, false));
        const uint8_t Back[3] = {0x12, 0x34, 0x56};  // blue, green, red
        std::vector<uint8_t> Table, Pixels, Entries(Bpp <= 8 ? size_t(4) << Bpp : 0, 0);
        for (int R = 0; R < 2; ++R) {
            for (int X = 0; X < 3 && Bpp > 8; ++X) {
                Pixels.insert(Pixels.end(), Back, Back + 3);
                if (Bpp == 32)
                    Pixels.push_back(0);
            }
            Pixels.resize(size_t(R + 1) * StrideOf(3, Bpp), 0);  // row padding stays zero
        }
        if (Bpp <= 8)
            std::copy_n(Back, 3, Entries.begin() + 4);
        EXPECT_EQ(Memory(Dib), Pixels);
        EXPECT_EQ(Dib.GetPaletteFromDIB8BPP(Table), Bpp <= 8 ? 1 << Bpp : 0);
        EXPECT_EQ(Table, Entries);
    }
}

TEST(clsDIB, Force32KeepsTheRequestedDepthInTheFields)
{
    struct Case {
        int16_t Bpp, StorageBpp;
        int32_t Stride;  // of the requested depth, width 5
    };
    for (const Case& C : {Case{24, 32, 16}, Case{16, 32, 12}, Case{32, 32, 20}, Case{8, 8, 8}, Case{4, 4, 4}}) {
        SCOPED_TRACE(testing::Message() << "BPP " << C.Bpp);
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(5, 3, C.Bpp, 0x00A0B0C0, false, true));
        EXPECT_EQ(Shape(Dib), (std::vector<int64_t>{5, 3, C.Bpp, C.StorageBpp, C.Stride, C.Stride * 3, 3, false}));
        EXPECT_EQ(Dib.Header().biSizeImage, C.Stride * 3);
        EXPECT_EQ(Dib.DIBhDC()->Bpp(), C.StorageBpp);
        EXPECT_EQ(Dib.DIBhDC()->Stride(), StrideOf(5, C.StorageBpp));
        if (C.StorageBpp == 32) {  // the memory really holds four bytes a pixel, all of them filled
            EXPECT_EQ(StorageQuads(Dib), std::vector<uint32_t>(15, Quad(0xA0, 0xB0, 0xC0, 0)));
        }
    }
}

TEST(clsDIB, RefusesSidesOutOfRangeWithoutAllocating)
{
    struct Case {
        int32_t Width, Height;
        int16_t Bpp;
    };
    const long PeakBefore = VmPeakKb();
    const auto Start = std::chrono::steady_clock::now();
    for (const Case& C : {Case{0, 5, 32}, Case{5, -3, 8}, Case{32768, 1, 32}, Case{1, 32768, 8}, Case{32767, 32767, 32},
                          Case{32767, 32767, 24}, Case{32767, 16385, 32}, Case{2147483647, 2, 32}}) {
        SCOPED_TRACE(testing::Message() << C.Width << "x" << C.Height << " at " << C.Bpp);
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(2, 2, 32, 0x00FFFFFF, false));
        Dib.setDIBhasAlpha(true);
        EXPECT_FALSE(Dib.CreateBlankDIB(C.Width, C.Height, C.Bpp, 0, false, true));
        ExpectEmpty(Dib);  // the old surface was cleared first
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
    Tall.ClearUp();
    Tall.ClearUp();
    ExpectEmpty(Tall);
}

TEST(clsDIB, PaletteCallsSetAndReadTheColourTable)
{
    std::vector<uint8_t> Read;
    for (int16_t Bpp : {int16_t(1), int16_t(4), int16_t(8)}) {
        SCOPED_TRACE(testing::Message() << Bpp << " bits");
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(3, 2, Bpp, 0x00FFFFFF, false));
        const int Entries = 1 << Bpp;
        // Three entries given: only they change. Then more entries than the table holds.
        const std::vector<uint8_t> Three = {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0};
        Dib.SetPaletteToDIB8BPP(Three);
        ASSERT_EQ(Dib.GetPaletteFromDIB8BPP(Read), Entries);
        std::vector<uint8_t> Expected(size_t(Entries) * 4, 0);
        std::copy_n(Three.begin(), std::min(Expected.size(), Three.size()), Expected.begin());
        EXPECT_EQ(Read, Expected);
        EXPECT_EQ(Dib.DIBhDC()->GetPixel(2, 1), 0x00010203u);  // all pixels are index 0: blue 1, green 2, red 3

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
    EXPECT_EQ(Deep.DIBhDC()->GetPixel(0, 0), 0x00123456u);
    None.SetPaletteToDIB8BPP({1, 2, 3, 0});
    EXPECT_EQ(None.GetPaletteFromDIB8BPP(Read), 0);
}

TEST(clsDIB, PaletteIndexReadsStorageRows)
{
    clsDIB Dib, Caller;
    ASSERT_TRUE(Dib.CreateBlankDIB(5, 3, 8, 0, false));
    for (int I = 0; I < 3 * 8; ++I)
        Dib.DIBBitsPtr()[I] = uint8_t(200 + I);
    EXPECT_EQ(Grid(5, 3, [&](int X, int R) { return uint32_t(Caller.PaletteIndex_In_DIB_XY(Dib, X, R)); }),
              Grid(5, 3, [](int X, int R) { return uint32_t(200 + R * 8 + X); }));
}
