#pragma once
// The per-pixel tools' view of a 32-bit surface: the surface's own memory read and written as
// 32-bit words, with no copy. A view is made for one piece of work and dropped before the surface
// can change size or be replaced. Words hold blue, green, red and a fourth byte (0xAARRGGBB read
// little-endian); colour values elsewhere are 0x00BBGGRR, so `ToWord` and `ToColor` convert.
#include <cstddef>
#include <cstdint>

class clsDIB;

class PixelArray32 {
public:
    // Empty (Valid() false) unless the surface stores 32 bits a pixel. Any painting running on
    // the surface's device context is finished first, so the memory is current.
    explicit PixelArray32(clsDIB& Dib);

    bool Valid() const { return Base != nullptr; }
    int Width() const { return W; }
    int Height() const { return H; }
    bool Contains(int X, int Y) const { return X >= 0 && Y >= 0 && X < W && Y < H; }

    // Row Y of the picture, 0 being the top row, whatever the storage order.
    uint32_t* Row(int Y) const { return Base + (TopDown ? Y : H - 1 - Y) * Pitch; }
    uint32_t& At(int X, int Y) const { return Row(Y)[X]; }
    // The array as the tools index it: the second index counts from the bottom row.
    uint32_t& Bottom(int X, int RowFromBottom) const { return At(X, H - 1 - RowFromBottom); }

    // A stored word from a colour, with the fourth byte 0 as a brush leaves it.
    static uint32_t ToWord(uint32_t Color)
    {
        return ((Color & 0xFF) << 16) | (Color & 0xFF00) | ((Color >> 16) & 0xFF);
    }
    static uint32_t ToColor(uint32_t Word)
    {
        return ((Word & 0xFF) << 16) | (Word & 0xFF00) | ((Word >> 16) & 0xFF);
    }
    // Pixels compare by their colour alone: drawing through the painter sets the fourth byte,
    // the tools' own loops clear it.
    static bool SameColor(uint32_t Word, uint32_t OtherWord) { return ((Word ^ OtherWord) & 0xFFFFFF) == 0; }

private:
    uint32_t* Base = nullptr;
    int W = 0;
    int H = 0;
    ptrdiff_t Pitch = 0;
    bool TopDown = false;
};
