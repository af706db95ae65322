#include "basFill.h"

#include <algorithm>
#include <new>

#include "PixelArray32.h"
#include "clsDIB.h"

namespace {

constexpr uint32_t ColorBits = 0xFFFFFF;

// The two dot tiles, a row a byte, the left pixel in the high bit: set bits are dots.
constexpr uint8_t DotTiles[2][8] = {
    {0x80, 0x00, 0x00, 0x00, 0x08, 0x00, 0x00, 0x00},
    {0x88, 0x00, 0x22, 0x00, 0x88, 0x00, 0x22, 0x00},
};

// Whether pixel (X, Y) of an 8 by 8 hatch tile lies on a line.
bool HatchLine(int Style, int X, int Y)
{
    const bool Horizontal = Y == 0, Vertical = X == 0;
    const bool Forward = X + Y == 7, Backward = X == Y;
    switch (Style) {
    case 0: return Horizontal;
    case 1: return Vertical;
    case 2: return Forward;
    case 3: return Backward;
    case 4: return Horizontal || Vertical;
    default: return Forward || Backward;
    }
}

// First index in [X, End) of the flooded colour, End if none. Blocks of eight first, so that
// the compiler can test them in vector registers.
int FindSame(const uint32_t* Row, int X, int End, uint32_t Target)
{
    while (X + 8 <= End) {
        uint32_t Least = ColorBits;
        for (int I = 0; I < 8; ++I)
            Least = std::min(Least, (Row[X + I] ^ Target) & ColorBits);
        if (Least == 0)
            break;
        X += 8;
    }
    while (X < End && ((Row[X] ^ Target) & ColorBits) != 0)
        ++X;
    return X;
}

// First index in [X, End) of another colour, End if none.
int FindOther(const uint32_t* Row, int X, int End, uint32_t Target)
{
    while (X + 8 <= End) {
        uint32_t Any = 0;
        for (int I = 0; I < 8; ++I)
            Any |= (Row[X + I] ^ Target) & ColorBits;
        if (Any != 0)
            break;
        X += 8;
    }
    while (X < End && ((Row[X] ^ Target) & ColorBits) == 0)
        ++X;
    return X;
}

// The first index of the run of the flooded colour that holds X.
int RunStart(const uint32_t* Row, int X, uint32_t Target)
{
    while (X >= 8) {
        uint32_t Any = 0;
        for (int I = 1; I <= 8; ++I)
            Any |= (Row[X - I] ^ Target) & ColorBits;
        if (Any != 0)
            break;
        X -= 8;
    }
    while (X > 0 && ((Row[X - 1] ^ Target) & ColorBits) == 0)
        --X;
    return X;
}

// The scanline fill. Runs are whole stretches of the flooded colour in a row, found by colour
// alone: painting never touches the pixels that bound a run, so a run is always filled whole,
// and one bit per pixel says which runs are done. That bit is what ends the fill when the brush
// paints the flooded colour itself.
class Filler {
public:
    Filler(const PixelArray32& Pixels, uint32_t Target, const basFill::FillBrush& Brush)
        : Pixels(Pixels), Target(Target), Brush(Brush), W(Pixels.Width()), H(Pixels.Height()),
          RowWords((static_cast<size_t>(W) + 63) / 64)
    {
    }

    QRect Run(int X, int Y)
    {
        try {
            Done.assign(RowWords * static_cast<size_t>(H), 0);
            Seeds.push_back({X, Y, 0, 0, 0});
            while (!Seeds.empty()) {
                const Seed S = Seeds.back();
                Seeds.pop_back();
                FillFrom(S);
            }
        } catch (const std::bad_alloc&) {
            // Out of memory for the seeds: what was filled so far stays, and is reported.
        }
        if (MinX > MaxX)
            return {};
        return QRect(QPoint(MinX, MinY), QPoint(MaxX, MaxY));
    }

private:
    // A pixel to fill from, and the run of the row it was found from (Parent -1 above, +1 below,
    // 0 none): that stretch of the parent row is filled already and need not be looked at again.
    struct Seed {
        int X, Y, ParentLeft, ParentRight, Parent;
    };

    bool IsDone(int X, int Y) const
    {
        return (Done[static_cast<size_t>(Y) * RowWords + static_cast<size_t>(X) / 64] >> (X % 64)) & 1;
    }

    void MarkDone(int Y, int Left, int Right)
    {
        uint64_t* Words = Done.data() + static_cast<size_t>(Y) * RowWords;
        for (int X = Left; X <= Right;) {
            const int Bit = X % 64;
            const int Count = std::min(64 - Bit, Right - X + 1);
            Words[X / 64] |= (Count == 64 ? ~uint64_t(0) : ((uint64_t(1) << Count) - 1) << Bit);
            X += Count;
        }
    }

    void Paint(uint32_t* Row, int Y, int Left, int Right)
    {
        const int TW = Brush.TileWidth;
        if (TW == 1 && Brush.TileHeight == 1) {
            std::fill(Row + Left, Row + Right + 1, Brush.Tile[0]);
            return;
        }
        const uint32_t* Tile = Brush.Tile.data() + static_cast<size_t>(Y % Brush.TileHeight) * TW;
        int K = Left % TW;
        for (int X = Left; X <= Right; ++X) {
            Row[X] = Tile[K];
            if (++K == TW)
                K = 0;
        }
    }

    void FillFrom(const Seed& S)
    {
        uint32_t* Row = Pixels.Row(S.Y);
        if (((Row[S.X] ^ Target) & ColorBits) != 0 || IsDone(S.X, S.Y))
            return;
        const int Left = RunStart(Row, S.X, Target);
        const int Right = FindOther(Row, S.X, W, Target) - 1;
        MarkDone(S.Y, Left, Right);
        Paint(Row, S.Y, Left, Right);
        MinX = std::min(MinX, Left);
        MaxX = std::max(MaxX, Right);
        MinY = std::min(MinY, S.Y);
        MaxY = std::max(MaxY, S.Y);
        for (int Direction : {-1, 1}) {
            const int Y = S.Y + Direction;
            if (Y < 0 || Y >= H)
                continue;
            if (Direction == S.Parent) {
                // Only the parts that reach past the parent's run.
                LookAt(Y, Left, S.ParentLeft - 1, Left, Right, S.Y);
                LookAt(Y, S.ParentRight + 1, Right, Left, Right, S.Y);
            } else {
                LookAt(Y, Left, Right, Left, Right, S.Y);
            }
        }
    }

    // Seeds one pixel of every stretch of the flooded colour in [From, To] of row Y whose run is
    // not done yet.
    void LookAt(int Y, int From, int To, int RunLeft, int RunRight, int RunY)
    {
        if (From > To)
            return;
        const uint32_t* Row = Pixels.Row(Y);
        const int End = To + 1;
        int X = From;
        while ((X = FindSame(Row, X, End, Target)) < End) {
            if (!IsDone(X, Y))
                Seeds.push_back({X, Y, RunLeft, RunRight, RunY - Y});
            X = FindOther(Row, X, End, Target);
        }
    }

    const PixelArray32& Pixels;
    const uint32_t Target;
    const basFill::FillBrush& Brush;
    const int W, H;
    const size_t RowWords;
    std::vector<uint64_t> Done;
    std::vector<Seed> Seeds;
    int MinX = INT32_MAX, MaxX = INT32_MIN, MinY = INT32_MAX, MaxY = INT32_MIN;
};

} // namespace

namespace basFill {

bool MakeFillBrush(int FillPattern, uint32_t ColorToUse, uint32_t FloodedColor, clsDIB* CustomPattern,
                   FillBrush& Brush)
{
    const uint32_t Ink = PixelArray32::ToWord(ColorToUse), Ground = PixelArray32::ToWord(FloodedColor);
    if (FillPattern == 0) {
        Brush = FillBrush{{Ink}, 1, 1};
        return true;
    }
    if (FillPattern >= 1 && FillPattern <= 8) {
        Brush = FillBrush{std::vector<uint32_t>(64), 8, 8};
        for (int Y = 0; Y < 8; ++Y)
            for (int X = 0; X < 8; ++X) {
                const bool On = FillPattern <= 2 ? ((DotTiles[FillPattern - 1][Y] << X) & 0x80) != 0
                                                 : HatchLine(FillPattern - 3, X, Y);
                Brush.Tile[static_cast<size_t>(Y) * 8 + X] = On ? Ink : Ground;
            }
        return true;
    }
    if (FillPattern != 9 || !CustomPattern)
        return false;
    const DeviceContext* Pattern = CustomPattern->DIBhDC();
    if (!Pattern || !Pattern->Bits() || Pattern->Width() < 1 || Pattern->Height() < 1)
        return false;
    const int W = Pattern->Width(), H = Pattern->Height();
    FillBrush Made;
    try {
        Made.Tile.resize(static_cast<size_t>(W) * H);
    } catch (const std::bad_alloc&) {
        return false;
    }
    Made.TileWidth = W;
    Made.TileHeight = H;
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X)
            Made.Tile[static_cast<size_t>(Y) * W + X] = PixelArray32::ToWord(Pattern->GetPixel(X, Y));
    Brush = std::move(Made);
    return true;
}

QRect ExtFloodFill(clsDIB& Dib, int X, int Y, uint32_t FloodedColor, const FillBrush& Brush)
{
    PixelArray32 Pixels(Dib);
    if (!Pixels.Valid() || !Pixels.Contains(X, Y) || Brush.TileWidth < 1 || Brush.TileHeight < 1 ||
        Brush.Tile.size() != static_cast<size_t>(Brush.TileWidth) * static_cast<size_t>(Brush.TileHeight))
        return {};
    const uint32_t Target = PixelArray32::ToWord(FloodedColor);
    if (!PixelArray32::SameColor(Pixels.At(X, Y), Target))
        return {};
    return Filler(Pixels, Target, Brush).Run(X, Y);
}

QRect ReplaceColor(clsDIB& Dib, uint32_t Old, uint32_t New)
{
    PixelArray32 Pixels(Dib);
    if (!Pixels.Valid())
        return {};
    const uint32_t From = PixelArray32::ToWord(Old), To = PixelArray32::ToWord(New);
    const int W = Pixels.Width();
    int MinX = W, MaxX = -1, MinY = -1, MaxY = -1;
    for (int Y = 0; Y < Pixels.Height(); ++Y) {
        uint32_t* Row = Pixels.Row(Y);
        const int First = FindSame(Row, 0, W, From);
        if (First == W)
            continue;
        int Last = W - 1;
        while (((Row[Last] ^ From) & ColorBits) != 0)
            --Last;
        for (int X = First; X <= Last; ++X)
            Row[X] = ((Row[X] ^ From) & ColorBits) == 0 ? To : Row[X];
        MinX = std::min(MinX, First);
        MaxX = std::max(MaxX, Last);
        if (MinY < 0)
            MinY = Y;
        MaxY = Y;
    }
    if (MaxY < 0)
        return {};
    return QRect(QPoint(MinX, MinY), QPoint(MaxX, MaxY));
}

} // namespace basFill
