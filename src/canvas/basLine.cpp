#include "basLine.h"

#include <QPainter>
#include <QPen>
#include <algorithm>
#include <cmath>
#include <limits>

#include "PixelArray32.h"
#include "basMath.h"
#include "clsDIB.h"

namespace {

constexpr double Tolerance = 1e-9;
constexpr double Pi = 3.14159265359;
constexpr int MaxShapedSize = 21;

bool Finite(QPointF P)
{
    return std::isfinite(P.x()) && std::isfinite(P.y());
}

int RoundToPixel(double Value)
{
    return RoundHalfEven(std::clamp(Value, -1073741824.0, 1073741824.0));
}

// Narrows [Low, High] to the x for which Coef * x + Base lies in [Min, Max].
bool Narrow(double Coef, double Base, double Min, double Max, double& Low, double& High)
{
    if (std::abs(Coef) < 1e-12)
        return Base >= Min && Base <= Max;
    double P = (Min - Base) / Coef, Q = (Max - Base) / Coef;
    if (P > Q)
        std::swap(P, Q);
    Low = std::max(Low, P);
    High = std::min(High, Q);
    return Low <= High;
}

// The part of A->B inside the box, as parameters T0 <= T1 in 0..1; false when none.
bool ClipToBox(QPointF A, QPointF B, double Left, double Top, double Right, double Bottom, double& T0, double& T1)
{
    T0 = 0;
    T1 = 1;
    const double D[2] = {B.x() - A.x(), B.y() - A.y()};
    const double From[2] = {A.x(), A.y()}, Min[2] = {Left, Top}, Max[2] = {Right, Bottom};
    for (int Axis = 0; Axis < 2; ++Axis) {
        double Low = -std::numeric_limits<double>::infinity(), High = -Low;
        if (!Narrow(D[Axis], From[Axis], Min[Axis], Max[Axis], Low, High))
            return false;
        T0 = std::max(T0, Low);
        T1 = std::min(T1, High);
    }
    return T0 <= T1;
}

// The pen's outline, filled row by row: the band along A->B (lengthened by half the width at
// square ends) and, for round ends, a disc at each end. Pixel centres sit on whole coordinates.
QRect PenSegment(const PixelArray32& Pixels, QPointF A, QPointF B, uint32_t Word, double Width, basLine::PenEnds Ends)
{
    if (!Finite(A) || !Finite(B) || !(Width > 0))
        return {};
    const double Half = std::clamp(Width, 1.0, 1e6) / 2;
    const double DX = B.x() - A.x(), DY = B.y() - A.y();
    double Length = std::hypot(DX, DY), UX = 1, UY = 0;
    if (Length < Tolerance) {
        Length = 0;
    } else {
        UX = DX / Length;
        UY = DY / Length;
    }
    const double NX = -UY, NY = UX;
    const double T0 = Ends == basLine::PenEnds::Square ? -Half : 0;
    const double T1 = Ends == basLine::PenEnds::Square ? Length + Half : Length;
    const double Reach = Ends == basLine::PenEnds::Round ? Half : Half * 1.5;  // half the square's diagonal
    const double FirstRow = std::clamp(std::floor(std::min(A.y(), B.y()) - Reach), 0.0, Pixels.Height() * 1.0);
    const double LastRow = std::min(std::ceil(std::max(A.y(), B.y()) + Reach), Pixels.Height() - 1.0);
    QRect Touched;
    for (int Y = static_cast<int>(FirstRow); Y <= LastRow; ++Y) {
        const double RowA = Y - A.y();
        double Low = -std::numeric_limits<double>::infinity(), High = -Low;
        double Left = -Low, Right = Low;  // union of the pieces, empty to start
        if (Narrow(UX, RowA * UY - A.x() * UX, T0 - Tolerance, T1 + Tolerance, Low, High) &&
            Narrow(NX, RowA * NY - A.x() * NX, -Half - Tolerance, Half - Tolerance, Low, High)) {
            Left = Low;
            Right = High;
        }
        if (Ends == basLine::PenEnds::Round) {
            for (QPointF C : {A, B}) {
                const double Off = Y - C.y(), Square = Half * Half - Off * Off;
                if (Square <= Tolerance)
                    continue;
                const double Across = std::sqrt(Square) - Tolerance;
                Left = std::min(Left, C.x() - Across);
                Right = std::max(Right, C.x() + Across);
            }
        }
        const double XFrom = std::max(std::ceil(Left), 0.0), XTo = std::min(std::floor(Right), Pixels.Width() - 1.0);
        if (XFrom > XTo)
            continue;
        uint32_t* Line = Pixels.Row(Y);
        std::fill(Line + static_cast<int>(XFrom), Line + static_cast<int>(XTo) + 1, Word);
        Touched |= QRect(static_cast<int>(XFrom), Y, static_cast<int>(XTo - XFrom) + 1, 1);
    }
    return Touched;
}

QRect DrawBarbs(const PixelArray32& Pixels, const basLine::ArrowBarbs& Head, uint32_t Word, int BrushSize)
{
    const double Width = std::clamp(BrushSize, 1, 1000);
    return PenSegment(Pixels, Head.Tip, Head.Barb1, Word, Width, basLine::PenEnds::Round) |
           PenSegment(Pixels, Head.Tip, Head.Barb2, Word, Width, basLine::PenEnds::Round);
}

basLine::ArrowBarbs Barbs(int X1, int Y1, int X2, int Y2, int BrushSize, bool AtStart)
{
    const double Rise = static_cast<double>(Y2) - Y1, Run = static_cast<double>(X2) - X1;
    const double Angle = X2 == X1 ? 90.0 : std::atan(Rise / Run) * 180 / Pi;
    const double L = BrushSize < 8 ? 8.0 : BrushSize;
    double D = 0;
    if (X2 > X1 || (X2 == X1 && Y2 > Y1))
        D = 1;
    else if (X2 < X1 || Y2 < Y1)
        D = -1;
    const int TipX = AtStart ? X1 : X2, TipY = AtStart ? Y1 : Y2;
    if (AtStart)
        D = -D;
    const double Rad = Pi / 180;
    basLine::ArrowBarbs Head;
    Head.Tip = QPoint(TipX, TipY);
    Head.Barb1 = QPoint(RoundToPixel(TipX - L * std::cos((Angle + 45) * Rad) * D),
                        RoundToPixel(TipY - L * std::sin((Angle + 45) * Rad) * D));
    Head.Barb2 = QPoint(RoundToPixel(TipX - L * std::cos((45 - Angle) * Rad) * D),
                        RoundToPixel(TipY + L * std::sin((45 - Angle) * Rad) * D));
    return Head;
}

}  // namespace

namespace basLine {

QRect DrawPenSegment(clsDIB& Dib, QPointF A, QPointF B, uint32_t Color, double Width, PenEnds Ends)
{
    PixelArray32 Pixels(Dib);
    if (!Pixels.Valid())
        return {};
    return PenSegment(Pixels, A, B, PixelArray32::ToWord(Color), Width, Ends);
}

QRect DrawPenPath(clsDIB& Dib, const std::vector<QPointF>& Points, uint32_t Color, double Width)
{
    PixelArray32 Pixels(Dib);
    if (!Pixels.Valid() || Points.empty())
        return {};
    const uint32_t Word = PixelArray32::ToWord(Color);
    if (Points.size() == 1)
        return PenSegment(Pixels, Points[0], Points[0], Word, Width, PenEnds::Round);
    QRect Touched;
    for (size_t I = 1; I < Points.size(); ++I)
        Touched |= PenSegment(Pixels, Points[I - 1], Points[I], Word, Width, PenEnds::Round);
    return Touched;
}

QRect DrawPlainLine(clsDIB& Dib, int X1, int Y1, int X2, int Y2, uint32_t Color)
{
    PixelArray32 Pixels(Dib);
    if (!Pixels.Valid())
        return {};
    const int W = Pixels.Width(), H = Pixels.Height();
    int64_t XA = X1, YA = Y1, XB = X2, YB = Y2;
    // A line much longer than the picture is cut to the picture first, so the walk stays short;
    // lines of ordinary length are walked whole, which keeps their pixels exact.
    if (std::max(std::llabs(XB - XA), std::llabs(YB - YA)) > 4LL * (W + H) + 64) {
        double T0, T1;
        const QPointF A(X1, Y1), B(X2, Y2);
        if (!ClipToBox(A, B, -2, -2, W + 1, H + 1, T0, T1))
            return {};
        const QPointF P = A + (B - A) * T0, Q = A + (B - A) * T1;
        XA = RoundToPixel(P.x());
        YA = RoundToPixel(P.y());
        XB = RoundToPixel(Q.x());
        YB = RoundToPixel(Q.y());
    }
    const uint32_t Word = PixelArray32::ToWord(Color);
    const int64_t DX = std::llabs(XB - XA), DY = -std::llabs(YB - YA);
    const int SX = XA < XB ? 1 : -1, SY = YA < YB ? 1 : -1;
    int64_t Error = DX + DY;
    QRect Touched;
    for (;;) {
        if (XA >= 0 && YA >= 0 && XA < W && YA < H) {
            Pixels.At(static_cast<int>(XA), static_cast<int>(YA)) = Word;
            Touched |= QRect(static_cast<int>(XA), static_cast<int>(YA), 1, 1);
        }
        if (XA == XB && YA == YB)
            break;
        const int64_t Twice = 2 * Error;
        if (Twice >= DY) {
            Error += DY;
            XA += SX;
        }
        if (Twice <= DX) {
            Error += DX;
            YA += SY;
        }
    }
    return Touched;
}

// Pen widths of the round line by angle. A level or upright line has no staircase and reads a
// pixel thinner than a slanted one drawn with the same pen, so it gets a whole pixel more. The
// regular staircase near 45 degrees reads about half a pixel thinner (diagonal correction:
// half a pixel more), the staircases near 22 and 67 degrees a quarter of a pixel (second
// correction: a quarter more). Other angles take the brush as it is.
double PenWidthForAngle(int AngleDegrees, int Size)
{
    if (Size == 1)
        return 1;
    const int A = ((AngleDegrees % 180) + 180) % 180;
    if (A == 0 || A == 90)
        return Size + 1.0;
    if ((A >= 40 && A <= 50) || (A >= 130 && A <= 140))
        return Size + 0.5;
    if ((A >= 15 && A <= 30) || (A >= 61 && A <= 74) || (A >= 105 && A <= 120) || (A >= 150 && A <= 164))
        return Size + 0.25;
    return Size;
}

QRect DrawLineShaped(clsDIB& Dib, int X1, int Y1, int X2, int Y2, uint32_t Color, int Size, int Type)
{
    if (Type < 0 || Type > 4)
        return {};
    Size = std::clamp(Size, 1, MaxShapedSize);
    if (Y1 > Y2 || (Y1 == Y2 && X1 > X2)) {
        std::swap(X1, X2);
        std::swap(Y1, Y2);
    }
    double Width = Size;
    if (Type == 0) {
        const double Degrees = std::atan2(static_cast<double>(Y2) - Y1, static_cast<double>(X2) - X1) * 180 / Pi;
        Width = PenWidthForAngle(RoundHalfEven(Degrees) % 180, Size);
    }
    const PenEnds Ends = Type == 0 ? PenEnds::Round : Type == 1 ? PenEnds::Square : PenEnds::Flat;
    return DrawPenSegment(Dib, QPointF(X1, Y1), QPointF(X2, Y2), Color, Width, Ends);
}

// The patterns, along the line from (X1, Y1), with s the size and D the dash length (12, or 1
// for the dot line). Each piece takes a step of D + s + 1 pixels. A dash covers exactly D
// pixels along the line and ends flat, so dashes stand s + 1 pixels apart; a dot is a round dab
// of the brush, centred on its place, so dots of the dot line (step s + 2) stand two pixels
// apart. The dash dot pattern repeats every 2.0 steps with its dot in the middle of the space
// after the dash; the dash dot dot pattern every 3.0 steps, its two dots 2.0 pixels apart, the
// pair in the middle of that space.
QRect DrawDashedLine(clsDIB& Dib, int X1, int Y1, int X2, int Y2, uint32_t Color, int Size, int Type)
{
    if (Type < 2 || Type > 5)
        return {};
    PixelArray32 Pixels(Dib);
    if (!Pixels.Valid())
        return {};
    const int S = std::clamp(Size, 1, MaxShapedSize);
    const int Dash = Type == 3 ? 1 : 12;
    const int Step = Dash + S + 1;
    const int Period = Type == 4 ? 2 * Step : Type == 5 ? 3 * Step : Step;
    const QPointF A(X1, Y1), B(X2, Y2);
    const double Length = std::hypot(B.x() - A.x(), B.y() - A.y());
    const QPointF Unit = Length > 0 ? (B - A) / Length : QPointF(1, 0);
    double T0, T1;
    if (!ClipToBox(A, B, -S - 2, -S - 2, Pixels.Width() + S + 1, Pixels.Height() + S + 1, T0, T1))
        return {};
    const uint32_t Word = PixelArray32::ToWord(Color);
    QRect Touched;
    auto Dot = [&](double U) {
        if (U <= Length + Tolerance)
            Touched |= PenSegment(Pixels, A + Unit * U, A + Unit * U, Word, S, PenEnds::Round);
    };
    const int64_t First = std::max<int64_t>(0, static_cast<int64_t>(std::floor(T0 * Length / Period)) - 1);
    const int64_t Last = static_cast<int64_t>(std::floor(T1 * Length / Period));
    for (int64_t K = First; K <= Last; ++K) {
        const double Base = static_cast<double>(K) * Period;
        if (Type == 3) {
            Dot(Base);
            continue;
        }
        if (Base <= Length)
            Touched |= PenSegment(Pixels, A + Unit * Base, A + Unit * std::min(Base + Dash - 1, Length), Word, S,
                                  PenEnds::Flat);
        if (Type == 4)
            Dot(Base + Dash + (Period - Dash - 1) / 2);
        if (Type == 5) {
            const double Second = Base + Dash + (Period - Dash - (S + 2) - 1) / 2;
            Dot(Second);
            Dot(Second + S + 2);
        }
    }
    return Touched;
}

ArrowBarbs ArrowHeadAt(int X1, int Y1, int X2, int Y2, int BrushSize)
{
    return Barbs(X1, Y1, X2, Y2, BrushSize, false);
}

ArrowBarbs ArrowHeadAtStart(int X1, int Y1, int X2, int Y2, int BrushSize)
{
    return Barbs(X1, Y1, X2, Y2, BrushSize, true);
}

QRect DrawArrowHead(clsDIB& Dib, int X1, int Y1, int X2, int Y2, uint32_t Color, int BrushSize)
{
    PixelArray32 Pixels(Dib);
    if (!Pixels.Valid())
        return {};
    return DrawBarbs(Pixels, ArrowHeadAt(X1, Y1, X2, Y2, BrushSize), PixelArray32::ToWord(Color), BrushSize);
}

QRect DrawLineAntialiased(clsDIB& Dib, int X1, int Y1, int X2, int Y2, uint32_t Color)
{
    DeviceContext* Context = Dib.DIBhDC();
    if (!Context || !Dib.DIBBitsPtr() || Context->Bpp() != 32)
        return {};
    const int W = Context->Width(), H = Context->Height();
    const QPointF A(X1, Y1), B(X2, Y2);
    double T0, T1;
    // Cut to the picture first: the painter's own arithmetic is not meant for far-off ends.
    if (!ClipToBox(A, B, -4, -4, W + 3, H + 3, T0, T1))
        return {};
    QPainter* Painter = Context->Painter();
    if (!Painter)
        return {};
    // The painter draws pixel (x, y) over the square from (x, y) to (x + 1, y + 1).
    const QPointF Centre(0.5, 0.5);
    const QPointF P = A + (B - A) * T0 + Centre, Q = A + (B - A) * T1 + Centre;
    Painter->save();
    Painter->resetTransform();
    Painter->setClipping(false);
    Painter->setRenderHint(QPainter::Antialiasing, true);
    Painter->setCompositionMode(QPainter::CompositionMode_SourceOver);
    Painter->setPen(QPen(QColor(ColorR(Color), ColorG(Color), ColorB(Color)), 2, Qt::SolidLine, Qt::RoundCap));
    if (P == Q)
        Painter->drawPoint(P);
    else
        Painter->drawLine(P, Q);
    Painter->restore();
    Context->EndPaint();
    const QRect Box = QRectF(P, Q).normalized().adjusted(-2, -2, 2, 2).toAlignedRect();
    return Box & QRect(0, 0, W, H);
}

QRect DrawLineTool(clsDIB& Dib, int X1, int Y1, int X2, int Y2, uint32_t Color, int BrushSize, int LineType)
{
    if (BrushSize <= 1)
        return DrawPlainLine(Dib, X1, Y1, X2, Y2, Color);
    switch (LineType) {
    case 0:
    case 1:
        return DrawLineShaped(Dib, X1, Y1, X2, Y2, Color, BrushSize, LineType);
    case 2:
    case 3:
    case 4:
    case 5:
        return DrawDashedLine(Dib, X1, Y1, X2, Y2, Color, BrushSize, LineType);
    case 6:
    case 7: {
        QRect Touched = DrawLineShaped(Dib, X1, Y1, X2, Y2, Color, BrushSize, 0);
        Touched |= DrawArrowHead(Dib, X1, Y1, X2, Y2, Color, BrushSize);
        if (LineType == 7) {
            PixelArray32 Pixels(Dib);
            if (Pixels.Valid())
                Touched |= DrawBarbs(Pixels, ArrowHeadAtStart(X1, Y1, X2, Y2, BrushSize),
                                     PixelArray32::ToWord(Color), BrushSize);
        }
        return Touched;
    }
    case 8:
        return DrawLineAntialiased(Dib, X1, Y1, X2, Y2, Color);
    default:
        return {};
    }
}

}  // namespace basLine
