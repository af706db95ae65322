// Transfers between surfaces and pictures, tiling, filling, and the BMP writers.
#include <QFile>
#include <algorithm>
#include <cstring>

#include "BmpFileHeader.h"
#include "basMath.h"
#include "clsDIB.h"
#include "clsPal.h"
#include "clsPalDither.h"

namespace {

// Runs a StretchBlt in the stretch mode asked for and puts the target's mode back.
void StretchInMode(DeviceContext* Target, bool Halftone, int X, int Y, int Width, int Height,
                   const DeviceContext* Source, int SrcX, int SrcY, int SrcWidth, int SrcHeight)
{
    if (!Target || !Source)
        return;
    if (Width < 1)
        Width = Target->Width();
    if (Height < 1)
        Height = Target->Height();
    if (SrcWidth < 1)
        SrcWidth = Source->Width();
    if (SrcHeight < 1)
        SrcHeight = Source->Height();
    const int OldMode = GetStretchBltMode(Target);
    SetStretchBltMode(Target, Halftone ? HALFTONE : COLORONCOLOR);
    StretchBlt(Target, X, Y, Width, Height, Source, SrcX, SrcY, SrcWidth, SrcHeight, SRCCOPY);
    SetStretchBltMode(Target, OldMode);
}

// The surface's rows at the depth asked for, bottom row first, as GetDIBits gives them.
std::vector<uint8_t> DIBits(const DeviceContext* Source, int BitCount)
{
    const int Stride = static_cast<int>((static_cast<int64_t>(Source->Width()) * BitCount + 31) / 32 * 4);
    std::vector<uint8_t> Rows(static_cast<size_t>(Stride) * Source->Height(), 0);
    DeviceContext Buffer(Rows.data(), Source->Width(), Source->Height(), BitCount, Stride, false, nullptr, 0);
    BitBlt(&Buffer, 0, 0, Source->Width(), Source->Height(), Source, 0, 0, SRCCOPY);
    return Rows;
}

bool WriteFile(const QString& FileName, const std::vector<uint8_t>& Head, const uint8_t* Data, size_t Size)
{
    QFile::remove(FileName);
    QFile File(FileName);
    if (!File.open(QIODevice::WriteOnly))
        return false;
    if (File.write(reinterpret_cast<const char*>(Head.data()), static_cast<qint64>(Head.size())) !=
        static_cast<qint64>(Head.size()))
        return false;
    if (Size && File.write(reinterpret_cast<const char*>(Data), static_cast<qint64>(Size)) != static_cast<qint64>(Size))
        return false;
    return File.flush();
}

} // namespace

void clsDIB::PaintFromDIBtoDIB(clsDIB& Source, clsDIB& Target, int X, int Y, int W, int H, int SrcX, int SrcY)
{
    if (!Source.Context || !Target.Context)
        return;
    BitBlt(Target.Context.get(), X, Y, W < 1 ? Source.Width : W, H < 1 ? Source.Height : H, Source.Context.get(),
           SrcX, SrcY, SRCCOPY);
}

void clsDIB::StretchPaintFromDIBtoDIB(clsDIB& Source, clsDIB& Target, bool Halftone, int X, int Y, int W, int H,
                                      int SrcX, int SrcY, int SrcWidth, int SrcHeight)
{
    StretchInMode(Target.Context.get(), Halftone, X, Y, W, H, Source.Context.get(), SrcX, SrcY, SrcWidth, SrcHeight);
}

bool clsDIB::FillDIBFromPic(const StdPicture& Picture)
{
    const DeviceContext* From = Picture.hDC();
    if (!Context || !Picture.IsBitmap() || !From)
        return false;
    return BitBlt(Context.get(), 0, 0, Picture.Width(), Picture.Height(), From, 0, 0, SRCCOPY);
}

void clsDIB::PaintFromPicToDIB(const StdPicture& Picture, clsDIB& Target, int X, int Y, int W, int H, int SrcX,
                               int SrcY, uint32_t Rop)
{
    if (Picture.IsBitmap())
        BitBlt(Target.Context.get(), X, Y, W, H, Picture.hDC(), SrcX, SrcY, Rop);
}

void clsDIB::PaintFromDIBToPic(clsDIB& Source, StdPicture& Picture, int X, int Y, int W, int H, int SrcX, int SrcY,
                               uint32_t Rop)
{
    if (Picture.IsBitmap())
        BitBlt(Picture.hDC(), X, Y, W, H, Source.Context.get(), SrcX, SrcY, Rop);
}

void clsDIB::StretchPaintFromDIBToPic(clsDIB& Source, StdPicture& Picture, bool Halftone, int X, int Y, int W, int H,
                                      int SrcX, int SrcY, int SrcWidth, int SrcHeight)
{
    if (Picture.IsBitmap())
        StretchInMode(Picture.hDC(), Halftone, X, Y, W, H, Source.Context.get(), SrcX, SrcY, SrcWidth, SrcHeight);
}

void clsDIB::StretchPaintFromDIBToForm(clsDIB& Source, DeviceContext* FormDC, bool Halftone, int X, int Y, int W,
                                       int H, int SrcX, int SrcY, int SrcWidth, int SrcHeight)
{
    StretchInMode(FormDC, Halftone, X, Y, W, H, Source.Context.get(), SrcX, SrcY, SrcWidth, SrcHeight);
}

void clsDIB::StretchPaintFromPicToDIB(const StdPicture& Picture, clsDIB& Target, bool Halftone, int X, int Y, int W,
                                      int H, int SrcX, int SrcY, int SrcWidth, int SrcHeight)
{
    if (Picture.IsBitmap())
        StretchInMode(Target.Context.get(), Halftone, X, Y, W, H, Picture.hDC(), SrcX, SrcY, SrcWidth, SrcHeight);
}

void clsDIB::ColorBackGroundDIB(clsDIB& Target, uint32_t Color)
{
    // Colour translation is the identity here: values are already 0x00BBGGRR.
    if (Target.Context)
        Target.Context->FillRect(0, 0, Target.Width, Target.Height, Color);
    BackColor = Color;
}

void clsDIB::TileDIB(clsDIB& Target, const StdPicture& Tile)
{
    const DeviceContext* From = Tile.hDC();
    if (!Target.Context || !From || Tile.Width() < 1 || Tile.Height() < 1)
        return;
    for (int X = 0; X <= Target.Width - 1; X += Tile.Width())
        for (int Y = 0; Y <= Target.Height - 1; Y += Tile.Height())
            BitBlt(Target.Context.get(), X, Y, Tile.Width(), Tile.Height(), From, 0, 0, SRCCOPY);
}

bool clsDIB::Save_DIB_To_File(const QString& FileName, clsDIB& Source)
{
    if (!Source.Context)
        return false;
    const int BitCount = (Source.Bpp == 32 && Source.HasAlpha) ? 32 : 24;
    const std::vector<uint8_t> Rows = DIBits(Source.Context.get(), BitCount);
    const auto Head = BmpFileHeaders(Source.Width, Source.Height, BitCount, 0, static_cast<uint32_t>(Rows.size()), false);
    return WriteFile(FileName, Head, Rows.data(), Rows.size());
}

bool clsDIB::Save_BMP_To_File_With_PAL(const QString& FileName, clsDIB& Source, const clsPal& Pal,
                                       const clsPalDither& PalDither, int16_t BPP)
{
    if (!Source.Context || BPP < 1 || BPP > 32)
        return false;
    const uint32_t TableBytes = BPP < 9 ? (1u << BPP) * 4 : 0;
    const uint32_t RowBytes = static_cast<uint32_t>((static_cast<int64_t>(Source.Width) * BPP + 31) / 32 * 4);
    auto Head = BmpFileHeaders(Source.Width, Source.Height, BPP, TableBytes, RowBytes * static_cast<uint32_t>(Source.Height),
                               false);
    for (uint32_t I = 0; I < TableBytes / 4; ++I) {
        const auto Index = static_cast<uint8_t>(I);
        Head.push_back(Pal.rgbB(Index));
        Head.push_back(Pal.rgbG(Index));
        Head.push_back(Pal.rgbR(Index));
        Head.push_back(0);
    }
    if (BPP == 1 || BPP == 4 || BPP == 8) {
        const std::vector<uint8_t>& Table = PalDither.TableRef();
        return WriteFile(FileName, Head, Table.data(), Table.size());
    }
    if (BPP == 24) {
        const std::vector<uint8_t> Rows = DIBits(Source.Context.get(), 24);
        return WriteFile(FileName, Head, Rows.data(), Rows.size());
    }
    return WriteFile(FileName, Head, nullptr, 0);
}
