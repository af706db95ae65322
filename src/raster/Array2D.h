#pragma once
// A two-dimensional array indexed (x, y), as the icon routines pass colours, masks and alpha.
#include <cstddef>
#include <vector>

template <class T>
class Array2D {
public:
    Array2D() = default;
    Array2D(int Width, int Height, T Fill = T()) { Resize(Width, Height, Fill); }
    void Resize(int Width, int Height, T Fill = T())
    {
        W = Width > 0 ? Width : 0;
        H = Height > 0 ? Height : 0;
        Data.assign(static_cast<size_t>(W) * H, Fill);
    }
    int Width() const { return W; }
    int Height() const { return H; }
    T& operator()(int X, int Y) { return Data[static_cast<size_t>(Y) * W + X]; }
    const T& operator()(int X, int Y) const { return Data[static_cast<size_t>(Y) * W + X]; }

private:
    int W = 0;
    int H = 0;
    std::vector<T> Data;
};
