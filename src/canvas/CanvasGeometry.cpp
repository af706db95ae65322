#include "CanvasGeometry.h"

#include <algorithm>

#include "clsDIB.h"

namespace {

int FloorDiv(long long A, long long B)
{
    long long Q = A / B;
    if ((A % B != 0) && ((A < 0) != (B < 0)))
        --Q;
    return static_cast<int>(Q);
}

}  // namespace

CanvasLayout ComputeCanvasLayout(clsDIB& Dib, int Magnify, bool FitIn, bool FitEvenIfSmaller, int ControlWidth,
                                 int ControlHeight, int BarThickness)
{
    CanvasLayout L;
    const long long W = Dib.DIBWidth();
    const long long H = Dib.DIBHeight();
    const long long M = std::max(1, Magnify);
    L.InnerWidth = std::max(0, ControlWidth);
    L.InnerHeight = std::max(0, ControlHeight);
    if (W <= 0 || H <= 0)
        return L;

    if (FitIn) {
        int32_t X = 0, Y = 0, FitW = 0, FitH = 0;
        Dib.GetBestFitPointAndSize(std::max(1, L.InnerWidth - 2), std::max(1, L.InnerHeight - 2), X, Y, FitW, FitH,
                                   FitEvenIfSmaller);
        L.Disp = QRect(std::max(1, static_cast<int>(X)), std::max(1, static_cast<int>(Y)), std::max(1, FitW),
                       std::max(1, FitH));
        return L;
    }

    for (int Round = 0; Round < 2; ++Round) {
        L.HBar = M * W > L.InnerWidth - 2;
        L.VBar = M * H > L.InnerHeight - 2;
        L.InnerWidth = std::max(0, ControlWidth - (L.VBar ? BarThickness : 0));
        L.InnerHeight = std::max(0, ControlHeight - (L.HBar ? BarThickness : 0));
    }
    L.HBar = M * W > L.InnerWidth - 2;
    L.VBar = M * H > L.InnerHeight - 2;

    int Left, Width, Top, Height;
    if (!L.HBar) {
        Width = static_cast<int>(M * W);
        Left = (L.InnerWidth - Width) / 2;
    } else {
        Left = 1;
        Width = std::max(1, L.InnerWidth - 2);
        L.ScrollMaxX = static_cast<int>(std::min<long long>(M * W - Width, 1 << 30));
    }
    if (!L.VBar) {
        Height = static_cast<int>(M * H);
        Top = (L.InnerHeight - Height) / 2;
    } else {
        Top = 1;
        Height = std::max(1, L.InnerHeight - 2);
        L.ScrollMaxY = static_cast<int>(std::min<long long>(M * H - Height, 1 << 30));
    }
    L.Disp = QRect(Left, Top, Width, Height);
    return L;
}

AxisMapping ComputeAxisMapping(int PictureSize, int DispSize, int Magnify, int Scroll, int ScrollMax)
{
    AxisMapping A;
    const int M = std::max(1, Magnify);
    if (PictureSize <= 0 || DispSize <= 0)
        return A;
    if (ScrollMax < 1) {
        A.First = 0;
        A.SourceCount = PictureSize;
        A.DestStart = 0;
        A.DestCount = DispSize;
        return A;
    }
    Scroll = std::clamp(Scroll, 0, ScrollMax);
    A.First = Scroll / M;
    A.DestStart = -(Scroll % M);
    const int Needed = (DispSize - A.DestStart + M - 1) / M;
    A.SourceCount = std::max(0, std::min(Needed, PictureSize - A.First));
    A.DestCount = A.SourceCount * M;
    return A;
}

int DisplayToPicture(int D, int PictureSize, int DispSize, int Magnify, int Scroll, bool FitIn)
{
    if (FitIn) {
        if (DispSize <= 0)
            return 0;
        return FloorDiv((2LL * D + 1) * PictureSize, 2LL * DispSize);
    }
    return FloorDiv(static_cast<long long>(D) + Scroll, std::max(1, Magnify));
}

int PictureToDisplay(int I, int PictureSize, int DispSize, int Magnify, int Scroll, bool FitIn)
{
    if (FitIn) {
        if (PictureSize <= 0)
            return 0;
        // The first display pixel whose nearest picture column is I.
        return std::max(0, static_cast<int>((2LL * I * DispSize - PictureSize + 2LL * PictureSize - 1) /
                                            (2LL * PictureSize)));
    }
    return static_cast<int>(static_cast<long long>(I) * std::max(1, Magnify) - Scroll);
}
