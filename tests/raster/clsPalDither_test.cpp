// Colour reduction: the ditherers on small pictures worked out by hand and on a larger one against
// their arithmetic written out plainly, the progress events, and BMP files written from the packed
// rows, byte for byte and read back by ImageMagick where it is installed.
#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <numeric>

#include "TestImages.h"
#include "basMath.h"
#include "clsPal.h"
#include "clsPalDither.h"

using namespace TestImages;

namespace {

enum Routine { Stucki, FloydSteinberg, Burke, Ordered, Palette16, Palette256, TrueColor };

void Reduce(clsPalDither& Dither, Routine Which, clsDIB& Dib, const clsPal* Pal = nullptr)
{
    switch (Which) {
    case Stucki: Dither.DitherToBW_Stucki(Dib, 15); break;
    case FloydSteinberg: Dither.DitherToBW_FloydSteinberg(Dib, 15); break;
    case Burke: Dither.DitherToBW_Burke(Dib, 15); break;
    case Ordered: Dither.DitherToBW_Ordered(Dib); break;
    case Palette16: Dither.DitherToPalette16(Dib, *Pal); break;
    case Palette256: Dither.DitherToPalette256(Dib, *Pal); break;
    case TrueColor: Dither.DitherToTrueColor(Dib); break;
    }
}

std::vector<uint32_t> Greys(const std::vector<int>& Levels, uint8_t Alpha)
{
    std::vector<uint32_t> Q;
    for (int L : Levels)
        Q.push_back(Quad(uint8_t(L), uint8_t(L), uint8_t(L), Alpha));
    return Q;
}

// A 32-bit surface whose storage row R holds Quads[R * W ...], whichever way up it lies.
void MakeStorage(clsDIB& Dib, int W, int H, const std::vector<uint32_t>& Quads, bool TopDown = false)
{
    ASSERT_TRUE(Dib.CreateBlankDIB(W, H, 32, 0, TopDown, true));
    for (int R = 0; R < H; ++R)
        for (int X = 0; X < W; ++X)
            SetQuad(Dib, X, R, Quads[size_t(R) * W + X]);
}

// Storage rows as '#' for white and '.' for black (with the alpha given), rows joined by '/'.
std::string BlackAndWhite(const clsDIB& Dib, uint8_t Alpha)
{
    std::string Out;
    for (int R = 0; R < Dib.DIBHeight(); ++R)
        for (int X = 0; X < Dib.DIBWidth(); ++X) {
            const uint32_t Q = GetQuad(Dib, X, R);
            Out += X || !R ? "" : "/";
            Out += Q == Quad(255, 255, 255, Alpha) ? '#' : Q == Quad(0, 0, 0, Alpha) ? '.' : '?';
        }
    return Out;
}

// Error diffusion to black and white written out plainly: a whole error plane, a division per
// share, the limits as each routine states them. Gives 0 or 255 for each pixel in storage order.
std::vector<int> PlainDiffusion(Routine Which, const std::vector<uint32_t>& Q, int W, int H)
{
    using Taps = std::vector<std::array<int, 3>>;  // dx, dy, weight
    Taps Kernel = {{1, 0, 8}, {2, 0, 4}, {-2, 1, 2}, {-1, 1, 4}, {0, 1, 8}, {1, 1, 4}, {2, 1, 2}};
    if (Which == Stucki)
        Kernel.insert(Kernel.end(), {{-2, 2, 1}, {-1, 2, 2}, {0, 2, 4}, {1, 2, 2}, {2, 2, 1}});
    if (Which == FloydSteinberg)
        Kernel = {{1, 0, 6}, {-1, 1, 2}, {0, 1, 4}, {1, 1, 0}};
    const int Divisor = Which == Stucki ? 42 : Which == Burke ? 32 : 16, Short = Which == Stucki ? 1 : 0;
    std::vector<int> Level, Error(Q.size(), 0);
    for (uint32_t P : Q)
        Level.push_back((QB(P) + QG(P) + QR(P)) / 3);
    const int Mean = int(std::accumulate(Level.begin(), Level.end(), int64_t(0)) / int64_t(Q.size()));
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X) {
            int& L = Level[size_t(Y) * W + X];
            const int V = std::clamp(L + Error[size_t(Y) * W + X] * 10 / 15, 0, 255);
            L = V >= Mean ? 255 : 0;
            for (const auto& [Dx, Dy, Weight] : Kernel)
                if (X + Dx >= 0 && (Dx < 1 || X < W - Dx - Short) && (Dy == 0 || Y < H - Dy - Short))
                    Error[size_t(Y + Dy) * W + X + Dx] += (V - L) * Weight / Divisor;
        }
    return Level;
}

// The palette ditherer written out plainly: the nearest entry asked at each pixel's grid point,
// then divisions, clamps and bounds tests channel by channel. Gives the indexes.
std::vector<int> PlainPaletteDither(std::vector<uint32_t>& Q, int W, int H, const clsPal& Pal)
{
    std::vector<int> Indexes;
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X) {
            uint8_t* P = reinterpret_cast<uint8_t*>(&Q[size_t(Y) * W + X]);
            const auto Grid = [&](int C) { return uint8_t(17 * RoundHalfEven(P[C] / 17.0)); };
            const auto I = uint8_t(Pal.NearestPaletteIndex(Grid(2), Grid(1), Grid(0)));
            const int E[3] = {P[0] - Pal.rgbB(I), P[1] - Pal.rgbG(I), P[2] - Pal.rgbR(I)};
            Indexes.push_back(I);
            Q[size_t(Y) * W + X] = Quad(Pal.rgbB(I), Pal.rgbG(I), Pal.rgbR(I));
            using Taps = std::vector<std::array<int, 3>>;  // dx, dy, weight
            if (std::abs(E[0]) + std::abs(E[1]) + std::abs(E[2]) > 3)
                for (const auto& [Dx, Dy, Weight] : Taps{{1, 0, 7}, {0, 1, 5}, {1, 1, 1}, {-1, 1, 3}})
                    if (X + Dx >= 0 && X + Dx < W && Y + Dy < H)
                        for (int C = 0; C < 3; ++C) {
                            uint8_t& N = reinterpret_cast<uint8_t*>(&Q[size_t(Y + Dy) * W + X + Dx])[C];
                            N = uint8_t(std::clamp(N + E[C] * Weight / 16, 0, 255));
                        }
        }
    return Indexes;
}

} // namespace

TEST(clsPalDither, BlackAndWhiteOnSmallPictures)
{
    const auto Flat = [](int N, int Level) { return Greys(std::vector<int>(size_t(N), Level), 0x5A); };
    std::vector<uint32_t> Matrix;  // levels 7 (grey 96) on the left, 6 (grey 95) on the right
    for (int R = 0; R < 4; ++R)
        for (int X = 0; X < 8; ++X)
            Matrix.push_back(Quad(X < 4 ? 96 : 95, X < 4 ? 96 : 95, X < 4 ? 96 : 95, 0x5A));
    const struct {
        Routine Which;
        int W, H;
        std::vector<uint32_t> Quads;
        std::string Expected;
    } Cases[] = {
        // Mean 128: the level equal to it turns white; Stucki sends nothing to the last column.
        {FloydSteinberg, 3, 1, Greys({127, 128, 129}, 0x5A), ".#."},
        {Burke, 3, 1, Greys({127, 128, 129}, 0x5A), ".#."},
        {Stucki, 3, 1, Greys({127, 128, 129}, 0x5A), ".##"},
        {FloydSteinberg, 4, 2, Flat(8, 158), "#.#./.#.#"},  // the published weights end in "/.###"
        // Stucki stops one short of the right and bottom edges, Burke does not.
        {Stucki, 1, 4, Flat(4, 128), "#/./#/#"},
        {Stucki, 2, 4, Flat(8, 128), "##/../##/##"},
        {Stucki, 3, 4, Flat(12, 128), "#.#/.#./#.#/#.#"},
        {Burke, 1, 4, Flat(4, 128), "#/./#/."},
        // The level is the plain mean of the channels: pure blue 255 is 85, pure red 127 is 42.
        {Stucki, 2, 1, {Quad(255, 0, 0, 0x5A), Quad(0, 0, 127, 0x5A)}, "#."},
        // By storage row, white where the level is not below the matrix.
        {Ordered, 8, 4, Matrix, "#.#.#.#./.#...#../#.#.#.#./.#.#...#"},
    };
    for (const auto& C : Cases)
        for (bool TopDown : {false, true}) {  // the rows are storage rows either way
            SCOPED_TRACE(testing::Message() << "routine " << C.Which << ", " << C.W << " by " << C.H);
            clsDIB Dib;
            MakeStorage(Dib, C.W, C.H, C.Quads, TopDown);
            clsPalDither Dither;
            Reduce(Dither, C.Which, Dib);
            EXPECT_EQ(BlackAndWhite(Dib, 0x5A), C.Expected);
            std::vector<uint8_t> Packed(size_t(4 * C.H), 0);  // only Stucki fills its rows
            int R = 0, X = 0;
            for (char Pixel : C.Expected) {
                if (Pixel == '/') {
                    ++R, X = 0;
                    continue;
                }
                if (Pixel == '#' && C.Which == Stucki)
                    Packed[size_t(R) * 4] |= uint8_t(0x80 >> X);
                ++X;
            }
            EXPECT_EQ(Dither.TableEntry(), Packed);
        }
}

TEST(clsPalDither, PaletteDitherOnSmallPictures)
{
    clsPal BlackWhite, RedStep, Greys100And110;
    BlackWhite.CreatePalette2();
    clsDIB Source;
    MakeStorage(Source, 2, 1, {Quad(0, 0, 0), Quad(0, 0, 17)});
    RedStep.CreatePalette256(Source);  // black, then red 17
    MakeStorage(Source, 2, 1, Greys({100, 110}, 0));
    Greys100And110.CreatePalette256(Source);
    const struct {
        const clsPal& Pal;
        int W, H;
        std::vector<uint32_t> Quads;
        std::vector<uint8_t> Table;
    } Cases[] = {
        // Grey 110 is black with error 110: then 158 turns white, 126 black and 141 white.
        {BlackWhite, 2, 2, Greys({110, 110, 110, 110}, 0xC3), {0, 1, 0, 0, 0, 1, 0, 0}},
        // An error of 3 is dropped; one of 4 takes red 8 over to the grid point 17.
        {RedStep, 2, 1, {Quad(0, 0, 3), Quad(0, 0, 8)}, {0, 0, 0, 0}},
        {RedStep, 2, 1, {Quad(0, 1, 3), Quad(0, 0, 8)}, {0, 1, 0, 0}},
        // Grey 110 is in the palette, but its grid point 102 lies nearer grey 100.
        {Greys100And110, 1, 1, Greys({110}, 0xC3), {0, 0, 0, 0}},
    };
    for (const auto& C : Cases) {
        clsDIB Dib;
        MakeStorage(Dib, C.W, C.H, C.Quads);
        clsPalDither Dither;
        Dither.DitherToPalette256(Dib, C.Pal);
        EXPECT_EQ(Dither.TableEntry(), C.Table);
        for (int I = 0; I < C.W * C.H; ++I) {  // each pixel takes its entry, alpha 0
            const uint8_t E = C.Table[I / C.W * 4 + I % C.W];
            EXPECT_EQ(GetQuad(Dib, I % C.W, I / C.W), Quad(C.Pal.rgbB(E), C.Pal.rgbG(E), C.Pal.rgbR(E), 0));
        }
    }
}

TEST(clsPalDither, DitherersMatchTheirPlainArithmetic)
{
    const int W = 67, H = 41;
    const std::vector<uint32_t> Noise = RandomWords(size_t(W) * H, 23);
    const std::vector<uint32_t> Photo = Grid(W, H, [&](int X, int Y) {
        const uint32_t N = Noise[size_t(Y) * W + X];
        return Quad(uint8_t(X * 3 + (N & 15)), uint8_t(Y * 6 + X + ((N >> 4) & 31)), uint8_t(200 - X - Y + (N >> 28)),
                    uint8_t(N >> 9));
    });
    clsPal Cube, Standard;
    Cube.CreateHalftone(4);
    Standard.CreatePalette16();
    for (const Routine Which : {Stucki, FloydSteinberg, Burke, Palette256, Palette16}) {
        SCOPED_TRACE(testing::Message() << "routine " << Which);
        clsDIB Dib;
        MakeStorage(Dib, W, H, Photo);
        clsPalDither Dither;
        Reduce(Dither, Which, Dib, Which == Palette256 ? &Cube : &Standard);
        if (Which < Ordered) {
            std::vector<int> Blue;
            for (uint32_t Q : StorageQuads(Dib))
                Blue.push_back(QB(Q));
            EXPECT_EQ(Blue, PlainDiffusion(Which, Photo, W, H));
            continue;
        }
        std::vector<uint32_t> Expected = Photo;
        const std::vector<int> Indexes = PlainPaletteDither(Expected, W, H, Which == Palette256 ? Cube : Standard);
        EXPECT_EQ(StorageQuads(Dib), Expected);
        const int Bits = Which == Palette256 ? 8 : 4;
        std::vector<uint8_t> Table(size_t(StrideOf(W, Bits)) * H, 0);
        for (int I = 0; I < W * H; ++I)  // 4 bits: even columns in the high nibble
            Table[size_t(I / W) * StrideOf(W, Bits) + size_t(I % W) * Bits / 8] |=
                uint8_t(Bits == 8 ? Indexes[I] : Indexes[I] << (I % W % 2 ? 0 : 4));
        EXPECT_EQ(Dither.TableEntry(), Table);
    }
}

TEST(clsPalDither, ProgressAfterEachRowAndEndOfEachPass)
{
    clsPal Pal;
    Pal.CreatePalette16();
    const struct {
        Routine Which;
        int H;
        std::string Expected;
    } Cases[] = {
        {FloydSteinberg, 3, "0 50 100 E 0 50 100 E "}, {Burke, 1, "E E "},
        {Stucki, 3, "0 50 100 0 50 100 E "},           {Stucki, 1, "E "},
        {Ordered, 9, "0 12 25 38 50 62 75 88 100 E "}, {Palette16, 1, "E "},
        {Palette256, 3, "0 50 100 E "},                 {TrueColor, 3, "0 1 2 E "},
    };
    for (const auto& C : Cases) {
        clsDIB Dib;
        ASSERT_TRUE(Dib.CreateBlankDIB(5, C.H, 32, 0x336699, false, true));
        clsPalDither Dither;
        std::string Events;
        Dither.Progress = [&](int32_t Percent) { Events += std::to_string(Percent) + " "; };
        Dither.ProgressEnd = [&] { Events += "E "; };
        Reduce(Dither, C.Which, Dib, &Pal);
        EXPECT_EQ(Events, C.Expected) << "routine " << C.Which << ", height " << C.H;
    }
}

TEST(clsPalDither, SurfacesNotAcceptedAreLeftAlone)
{
    clsPal Pal, Empty;
    Pal.CreatePalette16();
    clsDIB None, Shallow, Deep;
    ASSERT_TRUE(Shallow.CreateBlankDIB(5, 3, 8, 0, false));
    std::fill(Shallow.DIBBitsPtr(), Shallow.DIBBitsPtr() + Shallow.DIBSize(), 0x77);
    MakeStorage(Deep, 2, 1, {Quad(1, 2, 3, 4), Quad(5, 6, 7, 8)});
    clsPalDither Dither;
    bool Raised = false;
    Dither.Progress = [&](int32_t) { Raised = true; };
    for (int I = Stucki; I <= TrueColor; ++I) {
        Reduce(Dither, Routine(I), None, &Pal);
        if (I != TrueColor)  // which raises its events on any surface
            Reduce(Dither, Routine(I), Shallow, &Pal);
    }
    // A Strength of 0 and a palette without entries change nothing either.
    Dither.DitherToBW_FloydSteinberg(Deep, 0);
    Dither.DitherToPalette256(Deep, Empty);
    EXPECT_FALSE(Raised);
    EXPECT_EQ(Memory(Shallow), std::vector<uint8_t>(size_t(Shallow.DIBSize()), 0x77));
    EXPECT_EQ(StorageQuads(Deep), (std::vector<uint32_t>{Quad(1, 2, 3, 4), Quad(5, 6, 7, 8)}));
}

TEST(clsPalDither, BmpFilesFromThePackedRows)
{
    QTemporaryDir Dir;
    const QString Path = Dir.filePath(QStringLiteral("reduced.bmp"));
    const auto Hex = [](const char* Text) { return QByteArray::fromHex(Text); };
    const uint32_t White = Quad(255, 255, 255), Black = Quad(0, 0, 0);
    clsPal Pal;
    clsDIB Caller;
    clsPalDither Dither;
    for (int Bits : {1, 4, 8}) {
        SCOPED_TRACE(testing::Message() << Bits << " bits");
        clsDIB Dib;
        QByteArray Table, Rows;
        int W = 3;
        if (Bits == 1) {  // already black and white, so no error arises: "#..#....##" over ".#######.#"
            W = 10;
            std::vector<uint32_t> Q;
            for (char C : std::string("#..#....##.#######.#"))
                Q.push_back(C == '#' ? White : Black);
            MakeStorage(Dib, W, 2, Q);
            Pal.CreatePalette2();
            Dither.DitherToBW_Stucki(Dib, 15);
            Table = Hex("00000000 ffffff00");
            Rows = Hex("90c00000 7f400000");
        } else if (Bits == 4) {  // standard colours meet their own entries: 9, 12, 15 over 1, 14, 7
            MakeStorage(Dib, W, 2, {Quad(0, 0, 255), Quad(255, 0, 0), White, Quad(0, 0, 128), Quad(255, 255, 0),
                                    Quad(192, 192, 192)});
            Pal.CreatePalette16();
            Dither.DitherToPalette16(Dib, Pal);
            Table = Hex("00000000 00008000 00800000 00808000 80000000 80008000 80800000 c0c0c000"
                        "80808000 0000ff00 00ff0000 00ffff00 ff000000 ff00ff00 ffff0000 ffffff00");
            Rows = Hex("9cf00000 1e700000");
        } else {  // six colours on grid points, the palette made of them in storage order
            MakeStorage(Dib, W, 2, {Quad(17, 34, 51), Quad(255, 0, 0), Quad(0, 255, 0), Quad(0, 0, 255), White,
                                    Quad(68, 85, 102)});
            Pal.CreatePalette256(Dib);
            Dither.DitherToPalette256(Dib, Pal);
            Table = Hex("11223300 ff000000 00ff0000 0000ff00 ffffff00 44556600") + QByteArray(250 * 4, '\0');
            Rows = Hex("00010200 03040500");
        }
        ASSERT_TRUE(Caller.Save_BMP_To_File_With_PAL(Path, Dib, Pal, Dither, int16_t(Bits)));
        EXPECT_EQ(ReadBytes(Path).toHex(' '), BmpFile(W, 2, Bits, Table, Rows).toHex(' '));

        // An independent reader sees the surface's reduced colours, top row first.
        if (!QFile::exists(QStringLiteral("/usr/bin/convert")))
            continue;
        QProcess Convert;
        Convert.start(QStringLiteral("/usr/bin/convert"), {Path, QStringLiteral("txt:-")});
        ASSERT_TRUE(Convert.waitForFinished(20000));
        std::vector<uint32_t> Read, Shown;
        const QString Text = QString::fromLatin1(Convert.readAllStandardOutput());
        for (const auto& M : QRegularExpression(QStringLiteral("#([0-9A-F]{6})")).globalMatch(Text))
            Read.push_back(ColorOfRgb(M.captured(1).toUInt(nullptr, 16)));
        for (uint32_t Q : ImageQuads(Dib))
            Shown.push_back(ColorOfQuad(Q));
        EXPECT_EQ(Read, Shown);
    }
}
