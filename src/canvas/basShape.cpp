#include "basShape.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "PixelArray32.h"
#include "ScanRegion.h"
#include "basLine.h"
#include "basMath.h"

namespace {

constexpr int CoordinateLimit = 1 << 30;
constexpr int MaxPen = 1000;
using AngleRange = std::pair<double, double>;

// The two corners ordered, held well inside the range of int so that +1 and insets cannot overflow.
void Order(int A, int B, int& Low, int& High)
{
    Low = std::clamp(std::min(A, B), -CoordinateLimit, CoordinateLimit);
    High = std::clamp(std::max(A, B), -CoordinateLimit, CoordinateLimit);
}

int RoundToPixel(double Value)
{
    if (std::isnan(Value))
        return 0;
    return RoundHalfEven(std::clamp(Value, -static_cast<double>(CoordinateLimit), static_cast<double>(CoordinateLimit)));
}

// A solid ring: the shape less the same shape inset by Brush, when anything is left inside.
template <typename MakeShape>
QRect FillShape(clsDIB& Dib, int Left, int Top, int Right, int Bottom, uint32_t Color, int Brush, bool Filled,
                MakeShape Make)
{
    ScanRegion Shape = Make(Left, Top, Right + 1, Bottom + 1);
    const int64_t Inset = std::max(Brush, 1);
    if (!Filled && Left + Inset <= Right + 1 - Inset && Top + Inset <= Bottom + 1 - Inset)
        Shape.Subtract(Make(static_cast<int>(Left + Inset), static_cast<int>(Top + Inset),
                            static_cast<int>(Right + 1 - Inset), static_cast<int>(Bottom + 1 - Inset)));
    return Shape.Fill(Dib, Color);
}

// Angles in [0, 2 pi] at which Centre + Radius * cos(angle - Shift) lies in [Low, High].
std::vector<AngleRange> AnglesWithin(double Centre, double Radius, double Low, double High, double Shift)
{
    const double TwoPi = 2 * std::numbers::pi;
    if (Radius <= 0)
        return Centre >= Low && Centre <= High ? std::vector<AngleRange>{{0, TwoPi}} : std::vector<AngleRange>{};
    const double CosLow = (Low - Centre) / Radius, CosHigh = (High - Centre) / Radius;
    if (CosLow > 1 || CosHigh < -1)
        return {};
    const double A = std::acos(std::min(CosHigh, 1.0)), B = std::acos(std::max(CosLow, -1.0));
    std::vector<AngleRange> Ranges;
    for (AngleRange Range : {AngleRange{A, B}, AngleRange{TwoPi - B, TwoPi - A}}) {
        Range.first += Shift;
        Range.second += Shift;
        if (Range.first >= TwoPi)
            Range = {Range.first - TwoPi, Range.second - TwoPi};
        if (Range.second > TwoPi) {
            Ranges.push_back({Range.first, TwoPi});
            Ranges.push_back({0, Range.second - TwoPi});
        } else {
            Ranges.push_back(Range);
        }
    }
    return Ranges;
}

// The angles at which the oval's point can fall on the picture (one pixel around it counted),
// widened by Margin, sorted and without overlaps, so no point is taken twice.
std::vector<AngleRange> OvalAnglesOnPicture(double CX, double CY, double RX, double RY, int Width, int Height,
                                            double Margin)
{
    std::vector<AngleRange> Both;
    for (const AngleRange& X : AnglesWithin(CX, RX, -1, Width, 0))
        for (const AngleRange& Y : AnglesWithin(CY, RY, -1, Height, std::numbers::pi / 2))
            if (std::max(X.first, Y.first) <= std::min(X.second, Y.second))
                Both.push_back({std::max(X.first, Y.first) - Margin, std::min(X.second, Y.second) + Margin});
    std::sort(Both.begin(), Both.end());
    std::vector<AngleRange> Merged;
    for (const AngleRange& Range : Both) {
        if (!Merged.empty() && Range.first <= Merged.back().second)
            Merged.back().second = std::max(Merged.back().second, Range.second);
        else
            Merged.push_back(Range);
    }
    return Merged;
}

}  // namespace

namespace basShape {

QRect DrawRectangle(clsDIB& Dib, int X1, int Y1, int X2, int Y2, uint32_t Color, int BrushSize, bool Filled,
                    int CornerShape)
{
    int Left, Right, Top, Bottom;
    Order(X1, X2, Left, Right);
    Order(Y1, Y2, Top, Bottom);
    if (CornerShape < 1 || CornerShape > 3) {
        if (Filled)
            return ScanRegion::Rect(Left, Top, Right + 1, Bottom + 1).Fill(Dib, Color);
        return BitsBrushLine(Dib, Left, Top, Right, Bottom, Color, BrushSize);
    }
    const int Diameter = 10 * CornerShape;
    return FillShape(Dib, Left, Top, Right, Bottom, Color, BrushSize, Filled, [Diameter](int L, int T, int R, int B) {
        return ScanRegion::RoundRect(L, T, R, B, Diameter, Diameter);
    });
}

QRect BitsBrushLine(clsDIB& Dib, int Left, int Top, int Right, int Bottom, uint32_t Color, int BrushSize)
{
    Order(Left, Right, Left, Right);
    Order(Top, Bottom, Top, Bottom);
    return FillShape(Dib, Left, Top, Right, Bottom, Color, BrushSize, false, ScanRegion::Rect);
}

QRect DrawOval(clsDIB& Dib, int X1, int Y1, int X2, int Y2, uint32_t Color, int BrushSize, bool Filled)
{
    int Left, Right, Top, Bottom;
    Order(X1, X2, Left, Right);
    Order(Y1, Y2, Top, Bottom);
    return FillShape(Dib, Left, Top, Right, Bottom, Color, BrushSize, Filled, ScanRegion::Ellipse);
}

// The ellipse's centre and radii run through the centres of the box's edge pixels. The angle
// steps by 0.53407073 / the larger radius, so neighbouring points lie about half a pixel apart;
// only the steps whose point can fall on the picture are taken, and radii beyond 65536 step as
// if they were 65536, which keeps absurd ovals cheap.
// Each point is shared among its four neighbour pixels by the products of its fractional parts,
// as whole weights out of 256 (truncated), and each pixel gains weight * channel / 256 of red,
// green and blue, held at 255.
QRect DrawOvalAntialiased(clsDIB& Dib, int X1, int Y1, int X2, int Y2, uint32_t Color)
{
    PixelArray32 Pixels(Dib);
    if (!Pixels.Valid())
        return {};
    int Left, Right, Top, Bottom;
    Order(X1, X2, Left, Right);
    Order(Y1, Y2, Top, Bottom);
    if (Right < -1 || Bottom < -1 || Left > Pixels.Width() || Top > Pixels.Height())
        return {};
    const double CX = (static_cast<double>(Left) + Right) / 2, CY = (static_cast<double>(Top) + Bottom) / 2;
    const double RX = (static_cast<double>(Right) - Left) / 2, RY = (static_cast<double>(Bottom) - Top) / 2;
    const double Step = 0.53407073 / std::clamp(std::max(RX, RY), 0.5, 65536.0);
    const int R = ColorR(Color), G = ColorG(Color), B = ColorB(Color);
    QRect Touched;
    auto Add = [&](double X, double Y, double Weight) {
        const int IX = static_cast<int>(X), IY = static_cast<int>(Y), W = static_cast<int>(Weight * 256);
        if (!Pixels.Contains(IX, IY) || W <= 0)
            return;
        uint32_t& Word = Pixels.At(IX, IY);
        const int NewR = std::min(255, static_cast<int>((Word >> 16) & 255) + W * R / 256);
        const int NewG = std::min(255, static_cast<int>((Word >> 8) & 255) + W * G / 256);
        const int NewB = std::min(255, static_cast<int>(Word & 255) + W * B / 256);
        Word = (static_cast<uint32_t>(NewR) << 16) | (static_cast<uint32_t>(NewG) << 8) | static_cast<uint32_t>(NewB);
        Touched |= QRect(IX, IY, 1, 1);
    };
    const int64_t Count = static_cast<int64_t>(6.283185 / Step);
    for (const auto& [From, To] : OvalAnglesOnPicture(CX, CY, RX, RY, Pixels.Width(), Pixels.Height(), 2 * Step)) {
        const int64_t Last = std::min(Count, static_cast<int64_t>(std::floor(To / Step)));
        for (int64_t I = std::max<int64_t>(0, static_cast<int64_t>(std::ceil(From / Step))); I <= Last; ++I) {
            const double Angle = static_cast<double>(I) * Step;
            const double X = CX + RX * std::cos(Angle), Y = CY + RY * std::sin(Angle);
            const double FloorX = std::floor(X), FloorY = std::floor(Y);
            if (FloorX < -1 || FloorY < -1 || FloorX >= Pixels.Width() || FloorY >= Pixels.Height())
                continue;
            const double FX = X - FloorX, FY = Y - FloorY;
            Add(FloorX, FloorY, (1 - FX) * (1 - FY));
            Add(FloorX + 1, FloorY, FX * (1 - FY));
            Add(FloorX, FloorY + 1, (1 - FX) * FY);
            Add(FloorX + 1, FloorY + 1, FX * FY);
        }
    }
    return Touched;
}

bool ArcFromThreePoints(QPointF P1, QPointF P2, QPointF P3, QPointF& Centre, double& Radius)
{
    // Worked relative to P1, which keeps the arithmetic small for points far from the origin.
    const double BX = P2.x() - P1.x(), BY = P2.y() - P1.y(), CX = P3.x() - P1.x(), CY = P3.y() - P1.y();
    const double B2 = BX * BX + BY * BY, C2 = CX * CX + CY * CY;
    const double Cross = BX * CY - BY * CX;
    if (!std::isfinite(Cross) || B2 == 0 || C2 == 0 || std::abs(Cross) <= 1e-12 * std::sqrt(B2 * C2))
        return false;
    const double UX = (CY * B2 - BY * C2) / (2 * Cross), UY = (BX * C2 - CX * B2) / (2 * Cross);
    Centre = QPointF(P1.x() + UX, P1.y() + UY);
    Radius = std::hypot(UX, UY);
    return true;
}

QRect DrawArc(clsDIB& Dib, QPoint P1, QPoint P2, QPoint P3, uint32_t Color, int BrushSize, bool Chord)
{
    const double Pen = std::clamp(BrushSize, 1, MaxPen);
    QPointF Centre;
    double Radius = 0;
    if (!ArcFromThreePoints(P1, P2, P3, Centre, Radius))
        return basLine::DrawPenSegment(Dib, P1, P2, Color, Pen, basLine::PenEnds::Round);
    // Sweep from P1 to P2 the way that passes P3.
    const double TwoPi = 2 * std::numbers::pi;
    auto AngleOf = [&Centre](QPointF P) { return std::atan2(P.y() - Centre.y(), P.x() - Centre.x()); };
    const double Start = AngleOf(P1);
    const double ToEnd = std::fmod(AngleOf(P2) - Start + 2 * TwoPi, TwoPi);
    const double ToThrough = std::fmod(AngleOf(P3) - Start + 2 * TwoPi, TwoPi);
    const double Sweep = ToThrough < ToEnd ? ToEnd : ToEnd - TwoPi;
    // Chords of about two pixels; a bounded count for huge circles of nearly collinear points.
    const int Count = static_cast<int>(std::clamp(std::ceil(std::abs(Sweep) * Radius / 2), 8.0, 8192.0));
    std::vector<QPointF> Points;
    Points.reserve(static_cast<size_t>(Count) + 1);
    Points.push_back(P1);
    for (int I = 1; I < Count; ++I) {
        const double Angle = Start + Sweep * I / Count;
        Points.emplace_back(Centre.x() + Radius * std::cos(Angle), Centre.y() + Radius * std::sin(Angle));
    }
    Points.push_back(P2);
    if (Chord)
        Points.push_back(P1);
    return basLine::DrawPenPath(Dib, Points, Color, Pen);
}

QRect DrawBezier(clsDIB& Dib, const std::array<QPoint, 4>& Nodes, uint32_t Color, int BrushSize, int BezierType,
                 uint32_t FillColor)
{
    const double Pen = std::clamp(BrushSize, 1, MaxPen);
    std::array<QPointF, 4> N;
    double Reach = 0;  // length of the control polygon
    for (size_t I = 0; I < 4; ++I) {
        N[I] = QPointF(std::clamp(Nodes[I].x(), -CoordinateLimit, CoordinateLimit),
                       std::clamp(Nodes[I].y(), -CoordinateLimit, CoordinateLimit));
        if (I > 0)
            Reach += std::hypot(N[I].x() - N[I - 1].x(), N[I].y() - N[I - 1].y());
    }
    // Pieces of about two pixels, at most 4096.
    const int Count = static_cast<int>(std::clamp(std::ceil(Reach / 2), 1.0, 4096.0));
    std::vector<QPointF> Points;
    Points.reserve(static_cast<size_t>(Count) + 2);
    for (int I = 0; I <= Count; ++I) {
        const double T = static_cast<double>(I) / Count, S = 1 - T;
        const double A = S * S * S, B = 3 * S * S * T, C = 3 * S * T * T, D = T * T * T;
        Points.emplace_back(A * N[0].x() + B * N[1].x() + C * N[2].x() + D * N[3].x(),
                            A * N[0].y() + B * N[1].y() + C * N[2].y() + D * N[3].y());
    }
    QRect Touched;
    if (BezierType == 1) {
        // The region's vertices sit on pixel corners, the pen's on pixel centres.
        std::vector<QPointF> Corners;
        Corners.reserve(Points.size());
        for (const QPointF& P : Points)
            Corners.push_back(P + QPointF(0.5, 0.5));
        Touched = ScanRegion::PolygonF(Corners).Fill(Dib, FillColor);
        Points.push_back(Points.front());
    }
    return Touched | basLine::DrawPenPath(Dib, Points, Color, Pen);
}

// Vertex i of the convex polygon stands at the angle a * 3.14159265359 / 180 + pi / 2 +
// i * 6.28318530718 / n from the centre, counted anticlockwise as the user sees the picture:
// x = centre + R cos, y = centre - R sin, since rows grow downwards. At angle 0 the first vertex
// is straight above the centre. The star takes 2n vertices at half that spacing, the odd ones
// on the radius R * c. Vertices are rounded half to even.
std::vector<QPoint> PolygonAutoVertices(int CentreX, int CentreY, int NumPoints, int Radius, float ConcaveFactor,
                                        int AngleDegrees)
{
    if (NumPoints < 1)
        return {};
    const int N = std::min(NumPoints, 32767);
    double C = std::isfinite(ConcaveFactor) ? ConcaveFactor : 1.0;
    if (C < 1.0 && N < 9)
        C = N / 10.0;
    const double Base = AngleDegrees * 3.14159265359 / 180 + 3.14159265359 / 2;
    const bool Convex = C == 1.0;
    const int Count = Convex ? N : 2 * N;
    std::vector<QPoint> Points;
    Points.reserve(static_cast<size_t>(Count));
    for (int I = 0; I < Count; ++I) {
        const double Angle = Base + I * 6.28318530718 / Count;
        const double R = (!Convex && I % 2 == 1) ? Radius * C : Radius;
        Points.emplace_back(RoundToPixel(CentreX + R * std::cos(Angle)), RoundToPixel(CentreY - R * std::sin(Angle)));
    }
    return Points;
}

QRect DrawPolygon(clsDIB& Dib, const std::vector<QPoint>& Points, uint32_t Color, int BrushSize, int OperationType,
                  uint32_t BackColor)
{
    if (Points.empty() || Points.size() > ScanRegion::MaxPolygonPoints)
        return {};
    const int Operation = ((OperationType % 3) + 3) % 3;
    if (Operation != 0)
        return ScanRegion::Polygon(Points).Fill(Dib, Operation == 1 ? Color : BackColor);
    QRect Touched;
    const size_t Edges = Points.size() < 3 ? 1 : Points.size();
    for (size_t I = 0; I < Edges; ++I) {
        const QPoint& A = Points[I];
        const QPoint& B = Points[(I + 1) % Points.size()];
        Touched |= basLine::DrawLineShaped(Dib, A.x(), A.y(), B.x(), B.y(), Color, BrushSize, 0);
    }
    return Touched;
}

}  // namespace basShape
