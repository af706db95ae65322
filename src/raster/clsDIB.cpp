// Creation, clearing and the colour table of the surface.
#include "clsDIB.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QClipboard>
#include <cstdlib>
#include <cstring>

#include "basMath.h"
#include "basPicture.h"

namespace {

int32_t StrideFor(int32_t Width, int32_t Bits)
{
    return static_cast<int32_t>((static_cast<int64_t>(Width) * Bits + 31) / 32 * 4);
}

bool KnownDepth(int Bits)
{
    return Bits == 1 || Bits == 4 || Bits == 8 || Bits == 16 || Bits == 24 || Bits == 32;
}

} // namespace

clsDIB::~clsDIB()
{
    ClearUp();
}

bool clsDIB::Allocate(int32_t NewWidth, int32_t NewHeight, int StorageBits, bool TopDown)
{
    if (NewWidth <= 0 || NewHeight <= 0 || NewWidth > basPicture::MaxPictureSide ||
        NewHeight > basPicture::MaxPictureSide)
        return false;
    const int64_t Bytes = static_cast<int64_t>(StrideFor(NewWidth, StorageBits)) * NewHeight;
    if (Bytes > basPicture::MaxPictureBytes)
        return false;
    Memory = PixelMemory(static_cast<size_t>(Bytes));
    Bits = Memory.Data();
    if (!Bits)
        return false;
    const int Entries = StorageBits <= 8 ? (1 << StorageBits) : 0;
    ColorTable.assign(static_cast<size_t>(Entries), 0);
    Context = std::make_unique<DeviceContext>(Bits, NewWidth, NewHeight, StorageBits, StrideFor(NewWidth, StorageBits),
                                              TopDown, Entries ? ColorTable.data() : nullptr, Entries);
    return true;
}

bool clsDIB::CreateBlankDIB(int32_t NewWidth, int32_t NewHeight, int16_t BPP, uint32_t NewBackColor, bool TopDown,
                            bool Force32)
{
    return Create(NewWidth, NewHeight, BPP, NewBackColor, TopDown, Force32, true);
}

bool clsDIB::Create(int32_t NewWidth, int32_t NewHeight, int16_t BPP, uint32_t NewBackColor, bool TopDown,
                    bool Force32, bool Fill)
{
    ClearUp();
    if (!KnownDepth(BPP))
        return false;
    const int StorageBits = (BPP > 8 && Force32) ? 32 : BPP;
    if (!Allocate(NewWidth, NewHeight, StorageBits, TopDown))
        return false;
    Info.biSize = 40;
    Info.biPlanes = 1;
    Info.biBitCount = static_cast<int16_t>(StorageBits);
    Info.biWidth = NewWidth;
    Info.biHeight = TopDown ? -NewHeight : NewHeight;
    Bpp = BPP;
    Width = NewWidth;
    Height = NewHeight;
    // Stride and image size follow the depth asked for, even where Force32 made the
    // memory deeper: callers have always read them so.
    Stride = StrideFor(NewWidth, BPP);
    Info.biSizeImage = Stride * NewHeight;
    if (BPP < 9) {
        // Entry 1 takes the back colour, but the pixels stay index 0: a blank shallow
        // surface is black whatever the back colour says.
        ColorTable[1] = QuadFromColor(NewBackColor);
    } else if (Fill) {
        Context->FillRect(0, 0, NewWidth, NewHeight, NewBackColor);
    }
    BackColor = NewBackColor;
    return true;
}

void clsDIB::ClearUp()
{
    Context.reset();
    Memory.Release();
    Bits = nullptr;
    ColorTable.clear();
    Info = BitmapInfoHeader();
    Bpp = Width = Height = Stride = 0;
    HasAlpha = false;
    BackColor = 0;
}

PixelMemory clsDIB::TakeBits()
{
    PixelMemory Taken = std::move(Memory);
    Bits = nullptr;
    ClearUp();
    return Taken;
}

bool clsDIB::CreateDIBFromPic(const StdPicture& Picture, bool Force32)
{
    const DeviceContext* From = Picture.hDC();
    if (!Picture.IsBitmap() || !From)
        return false;
    const int16_t Depth = static_cast<int16_t>(Force32 ? 32 : Picture.Bpp());
    // A 24-bit picture makes a surface that holds 32 bits a pixel and reports 24.
    if (!CreateBlankDIB(Picture.Width(), Picture.Height(), Depth, 0, false, true))
        return false;
    if (Depth <= 8)
        for (size_t I = 0; I < ColorTable.size() && static_cast<int>(I) < From->ColorCount(); ++I)
            ColorTable[I] = From->ColorTable()[I];
    BitBlt(Context.get(), 0, 0, Width, Height, From, 0, 0, SRCCOPY);
    return true;
}

bool clsDIB::CreateDIBFromFile(const QString& FileName, bool FlipIfOpaque)
{
    const QFileInfo File(FileName);
    if (!File.isFile() || File.size() == 0)
        return false;
    StdPicture Picture;
    if (!basPicture::LoadPicture(FileName, Picture))
        return false;
    const DeviceContext* From = Picture.hDC();
    // The section keeps the file's own depth.
    if (!From || !CreateBlankDIB(Picture.Width(), Picture.Height(), static_cast<int16_t>(Picture.Bpp()), 0, false))
        return false;
    for (size_t I = 0; I < ColorTable.size() && static_cast<int>(I) < From->ColorCount(); ++I)
        ColorTable[I] = From->ColorTable()[I];
    BitBlt(Context.get(), 0, 0, Width, Height, From, 0, 0, SRCCOPY);
    HasAlpha = false;
    if (Bpp == 32) {
        const uint8_t* End = Bits + static_cast<size_t>(DIBSize());
        for (const uint8_t* P = Bits + 3; P < End; P += 4)
            if (*P) {
                HasAlpha = true;
                break;
            }
    }
    if (!HasAlpha && FlipIfOpaque)
        StretchBlt(Context.get(), 0, Height - 1, Width, -Height, Context.get(), 0, 0, Width, Height, SRCCOPY);
    return true;
}

void clsDIB::CloneDIB(clsDIB& Source, clsDIB& Target, uint32_t NewBackColor, bool TopDown)
{
    if (!Source.Bits || !Target.CreateBlankDIB(Source.Width, Source.Height, static_cast<int16_t>(Source.Bpp),
                                               NewBackColor, TopDown, true))
        return;
    if (Source.Bpp < 9)
        Target.ColorTable = Source.ColorTable;
    // One block of bytes, whatever the row order asked for, so a clone of the other order
    // is upside down. Only a surface whose memory is shallower than its clone's (a true
    // 24-bit one) goes through a blit, which a block copy would garble. Alpha travels as
    // raw bytes either way.
    if (Source.StorageBpp() == Target.StorageBpp())
        std::memcpy(Target.Bits, Source.Bits,
                    static_cast<size_t>(Source.Context->Stride()) * static_cast<size_t>(Source.Height));
    else
        BitBlt(Target.Context.get(), 0, 0, Source.Width, Source.Height, Source.Context.get(), 0, 0, SRCCOPY);
}

void clsDIB::SetPaletteToDIB8BPP(const std::vector<uint8_t>& Bytes)
{
    if (!Bits || Bpp > 8)
        return;
    const size_t Entries = std::min(Bytes.size() / 4, ColorTable.size());
    for (size_t I = 0; I < Entries; ++I)
        ColorTable[I] = static_cast<uint32_t>(Bytes[I * 4]) | (static_cast<uint32_t>(Bytes[I * 4 + 1]) << 8) |
                        (static_cast<uint32_t>(Bytes[I * 4 + 2]) << 16) |
                        (static_cast<uint32_t>(Bytes[I * 4 + 3]) << 24);
}

int32_t clsDIB::GetPaletteFromDIB8BPP(std::vector<uint8_t>& Bytes) const
{
    if (!Bits || Bpp > 8)
        return 0;
    const size_t Entries = static_cast<size_t>(1) << Bpp;
    Bytes.assign(Entries * 4, 0);
    for (size_t I = 0; I < Entries && I < ColorTable.size(); ++I)
        std::memcpy(&Bytes[I * 4], &ColorTable[I], 4);
    return static_cast<int32_t>(Entries);
}

int16_t clsDIB::PaletteIndex_In_DIB_XY(clsDIB& Dib, int X, int Y)
{
    if (!Dib.Bits || X < 0 || Y < 0 || X >= Dib.Stride || Y >= Dib.Height)
        return 0;
    return Dib.Bits[static_cast<size_t>(Y) * Dib.Stride + X];
}

int32_t clsDIB::BPPperActualPic(const StdPicture& Picture) const
{
    return Picture.IsBitmap() ? Picture.Bpp() : -1;
}

void clsDIB::GetBestFitPointAndSize(int32_t BoxWidth, int32_t BoxHeight, int32_t& X, int32_t& Y, int32_t& OutWidth,
                                    int32_t& OutHeight, bool Enlarge)
{
    if (!Bits)
        return;
    if (Width <= BoxWidth && Height <= BoxHeight && !Enlarge) {
        OutWidth = Width;
        OutHeight = Height;
    } else {
        const float ScaleX = static_cast<float>(BoxWidth) / static_cast<float>(Width);
        const float ScaleY = static_cast<float>(BoxHeight) / static_cast<float>(Height);
        if (ScaleX >= ScaleY) {
            OutHeight = BoxHeight;
            OutWidth = RoundHalfEven(ScaleY * static_cast<float>(Width));
        } else {
            OutWidth = BoxWidth;
            OutHeight = RoundHalfEven(ScaleX * static_cast<float>(Height));
        }
    }
    X = (BoxWidth - OutWidth) / 2;
    Y = (BoxHeight - OutHeight) / 2;
}

void clsDIB::CopyToClipboard()
{
    if (!Bits || !QGuiApplication::instance())
        return;
    QImage Image(Width, Height, QImage::Format_RGB32);
    DeviceContext Screen(Image.bits(), Width, Height, 32, static_cast<int>(Image.bytesPerLine()), true, nullptr, 0);
    BitBlt(&Screen, 0, 0, Width, Height, Context.get(), 0, 0, SRCCOPY);
    // A screen bitmap is opaque.
    for (int Y = 0; Y < Height; ++Y) {
        QRgb* Line = reinterpret_cast<QRgb*>(Image.scanLine(Y));
        for (int X = 0; X < Width; ++X)
            Line[X] |= 0xFF000000u;
    }
    QGuiApplication::clipboard()->setImage(Image);
}
