#include "ScanRegion.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "PixelArray32.h"

namespace {

constexpr int ColumnLimit = 1 << 24;
// Lets a pixel centre that falls on an edge, up to rounding, count as inside.
constexpr double Tolerance = 1e-9;

int ClampColumn(double X)
{
    return static_cast<int>(std::clamp(X, -static_cast<double>(ColumnLimit), static_cast<double>(ColumnLimit)));
}

}  // namespace

ScanRegion ScanRegion::Begin(double First, double Last, int& Rows)
{
    ScanRegion Region;
    const double Low = std::clamp(First, 0.0, static_cast<double>(MaxRows));
    const double High = std::clamp(Last, 0.0, static_cast<double>(MaxRows));
    Region.Top = static_cast<int>(Low);
    Rows = High > Low ? static_cast<int>(High) - Region.Top : 0;
    Region.RowStart.reserve(static_cast<size_t>(Rows) + 1);
    Region.RowStart.push_back(0);
    return Region;
}

void ScanRegion::AddSpan(int Left, int Right)
{
    if (Left >= Right)
        return;
    const uint32_t RowBegin = RowStart.back();
    if (Spans.size() > RowBegin && Left <= Spans.back().Right) {
        Spans.back().Right = std::max(Spans.back().Right, Right);
        return;
    }
    Spans.push_back({Left, Right});
}

void ScanRegion::AddCentreSpan(double XLeft, double XRight)
{
    if (!(XLeft <= XRight))
        return;
    AddSpan(ClampColumn(std::ceil(XLeft - 0.5 - Tolerance)), ClampColumn(std::floor(XRight - 0.5 + Tolerance)) + 1);
}

ScanRegion ScanRegion::Rect(int Left, int Top, int Right, int Bottom)
{
    if (Left > Right)
        std::swap(Left, Right);
    if (Top > Bottom)
        std::swap(Top, Bottom);
    int Rows = 0;
    ScanRegion Region = Begin(Top, Bottom, Rows);
    for (int Row = 0; Row < Rows; ++Row) {
        Region.AddSpan(std::clamp(Left, -ColumnLimit, ColumnLimit), std::clamp(Right, -ColumnLimit, ColumnLimit));
        Region.EndRow();
    }
    return Region;
}

ScanRegion ScanRegion::Ellipse(int Left, int Top, int Right, int Bottom)
{
    return RoundBox(Left, Top, Right, Bottom, std::numeric_limits<double>::infinity(),
                    std::numeric_limits<double>::infinity());
}

ScanRegion ScanRegion::RoundRect(int Left, int Top, int Right, int Bottom, int CornerWidth, int CornerHeight)
{
    return RoundBox(Left, Top, Right, Bottom, std::abs(static_cast<double>(CornerWidth)),
                    std::abs(static_cast<double>(CornerHeight)));
}

ScanRegion ScanRegion::RoundBox(int Left, int Top, int Right, int Bottom, double CornerWidth, double CornerHeight)
{
    if (Left > Right)
        std::swap(Left, Right);
    if (Top > Bottom)
        std::swap(Top, Bottom);
    // Corner ellipses larger than the box are cut to it, so a box-sized corner gives the ellipse.
    const double Width = static_cast<double>(Right) - Left, Height = static_cast<double>(Bottom) - Top;
    const double RadiusX = std::min(CornerWidth, Width) / 2;
    const double RadiusY = std::min(CornerHeight, Height) / 2;
    if (RadiusX <= 0 || RadiusY <= 0)
        return Rect(Left, Top, Right, Bottom);
    int Rows = 0;
    ScanRegion Region = Begin(Top, Bottom, Rows);
    for (int Row = 0; Row < Rows; ++Row) {
        const double Centre = Region.Top + Row + 0.5;
        double Depth = 0;  // how far the row lies inside a corner band, in radii
        if (Centre < Top + RadiusY)
            Depth = (Top + RadiusY - Centre) / RadiusY;
        else if (Centre > Bottom - RadiusY)
            Depth = (Centre - (Bottom - RadiusY)) / RadiusY;
        const double Inset = RadiusX - RadiusX * std::sqrt(std::max(0.0, 1 - Depth * Depth));
        Region.AddCentreSpan(Left + Inset, Right - Inset);
        Region.EndRow();
    }
    return Region;
}

ScanRegion ScanRegion::Polygon(const std::vector<QPoint>& Points)
{
    std::vector<QPointF> Real(Points.begin(), Points.end());
    return PolygonF(Real);
}

ScanRegion ScanRegion::PolygonF(const std::vector<QPointF>& Points)
{
    if (Points.size() < 3 || Points.size() > MaxPolygonPoints)
        return {};
    struct Edge {
        double TopY, BottomY, X, Slope;  // X at TopY, dx per dy
    };
    std::vector<Edge> Edges;
    double MinY = Points[0].y(), MaxY = Points[0].y();
    for (size_t I = 0; I < Points.size(); ++I) {
        QPointF A = Points[I], B = Points[(I + 1) % Points.size()];
        if (!std::isfinite(A.x()) || !std::isfinite(A.y()))
            return {};
        MinY = std::min(MinY, A.y());
        MaxY = std::max(MaxY, A.y());
        if (A.y() == B.y())
            continue;
        if (A.y() > B.y())
            std::swap(A, B);
        Edges.push_back({A.y(), B.y(), A.x(), (B.x() - A.x()) / (B.y() - A.y())});
    }
    std::sort(Edges.begin(), Edges.end(), [](const Edge& P, const Edge& Q) { return P.TopY < Q.TopY; });
    int Rows = 0;
    ScanRegion Region = Begin(std::floor(MinY), std::ceil(MaxY), Rows);
    std::vector<const Edge*> Active;
    std::vector<double> Crossings;
    size_t Next = 0;
    for (int Row = 0; Row < Rows; ++Row) {
        const double Centre = Region.Top + Row + 0.5;
        // An edge counts for rows whose centre lies in [TopY, BottomY).
        while (Next < Edges.size() && Edges[Next].TopY <= Centre)
            Active.push_back(&Edges[Next++]);
        Active.erase(std::remove_if(Active.begin(), Active.end(),
                                    [Centre](const Edge* E) { return E->BottomY <= Centre; }),
                     Active.end());
        Crossings.clear();
        for (const Edge* E : Active)
            Crossings.push_back(E->X + (Centre - E->TopY) * E->Slope);
        std::sort(Crossings.begin(), Crossings.end());
        for (size_t I = 0; I + 1 < Crossings.size(); I += 2) {
            // Pixels whose centre lies in [left crossing, right crossing).
            const double L = std::ceil(Crossings[I] - 0.5), R = std::ceil(Crossings[I + 1] - 0.5);
            Region.AddSpan(ClampColumn(L), ClampColumn(R));
        }
        Region.EndRow();
    }
    return Region;
}

void ScanRegion::Subtract(const ScanRegion& Other)
{
    if (IsEmpty() || Other.IsEmpty())
        return;
    std::vector<Span> Result;
    std::vector<uint32_t> Starts{0};
    Result.reserve(Spans.size());
    for (int Row = 0; Row < RowCount(); ++Row) {
        const int OtherRow = Top + Row - Other.Top;
        const Span* Cut = nullptr;
        const Span* CutEnd = nullptr;
        if (OtherRow >= 0 && OtherRow < Other.RowCount()) {
            Cut = Other.Spans.data() + Other.RowStart[OtherRow];
            CutEnd = Other.Spans.data() + Other.RowStart[OtherRow + 1];
        }
        for (uint32_t I = RowStart[Row]; I < RowStart[Row + 1]; ++I) {
            int Left = Spans[I].Left;
            const int Right = Spans[I].Right;
            // Both lists are sorted: skip the cuts wholly left of this span, then carve.
            while (Cut != CutEnd && Cut->Right <= Left)
                ++Cut;
            for (const Span* C = Cut; C != CutEnd && C->Left < Right; ++C) {
                if (C->Left > Left)
                    Result.push_back({Left, C->Left});
                Left = std::max(Left, C->Right);
            }
            if (Left < Right)
                Result.push_back({Left, Right});
        }
        Starts.push_back(static_cast<uint32_t>(Result.size()));
    }
    Spans = std::move(Result);
    RowStart = std::move(Starts);
}

bool ScanRegion::Contains(int X, int Y) const
{
    const int Row = Y - Top;
    if (Y < Top || Row >= RowCount())
        return false;
    const auto First = Spans.begin() + RowStart[Row], Last = Spans.begin() + RowStart[Row + 1];
    const auto It = std::upper_bound(First, Last, X, [](int Value, const Span& S) { return Value < S.Right; });
    return It != Last && It->Left <= X;
}

bool ScanRegion::IsEmpty() const
{
    return Spans.empty();
}

QRect ScanRegion::Bounds() const
{
    int Left = ColumnLimit, Right = -ColumnLimit, First = -1, Last = -1;
    for (int Row = 0; Row < RowCount(); ++Row) {
        if (RowStart[Row] == RowStart[Row + 1])
            continue;
        if (First < 0)
            First = Row;
        Last = Row;
        Left = std::min(Left, Spans[RowStart[Row]].Left);
        Right = std::max(Right, Spans[RowStart[Row + 1] - 1].Right);
    }
    if (First < 0)
        return {};
    return QRect(QPoint(Left, Top + First), QPoint(Right - 1, Top + Last));
}

QRect ScanRegion::Fill(clsDIB& Dib, uint32_t Color) const
{
    PixelArray32 Pixels(Dib);
    if (!Pixels.Valid())
        return {};
    const uint32_t Word = PixelArray32::ToWord(Color);
    QRect Touched;
    const int FirstRow = std::max(Top, 0), EndRow = std::min(Top + RowCount(), Pixels.Height());
    for (int Y = FirstRow; Y < EndRow; ++Y) {
        uint32_t* Line = Pixels.Row(Y);
        for (uint32_t I = RowStart[Y - Top]; I < RowStart[Y - Top + 1]; ++I) {
            const int Left = std::max(Spans[I].Left, 0), Right = std::min(Spans[I].Right, Pixels.Width());
            if (Left >= Right)
                continue;
            std::fill(Line + Left, Line + Right, Word);
            Touched |= QRect(Left, Y, Right - Left, 1);
        }
    }
    return Touched;
}
