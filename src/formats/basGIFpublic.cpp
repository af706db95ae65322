#include "basGIFpublic.h"

#include <cstdio>
#include <fstream>

#include "BmpFileHeader.h"
#include "DeviceContext.h"
#include "clsDIB.h"
#include "clsPal.h"
#include "clsPalDither.h"

namespace basGIFpublic {

namespace {

// A 32-bit bottom-up copy of any surface: its storage rows are the rows of a BMP file.
bool BottomUp32(clsDIB& From, clsDIB& To)
{
    if (!To.CreateBlankDIB(From.DIBWidth(), From.DIBHeight(), 32, 0xFFFFFF, false, true))
        return false;
    To.PaintFromDIBtoDIB(From, To, 0, 0, From.DIBWidth(), From.DIBHeight());
    return true;
}

std::string InFolder(const std::string& Folder, const char* Name)
{
    if (Folder.empty() || Folder.back() == '/')
        return Folder + Name;
    return Folder + "/" + Name;
}

} // namespace

bool MapDIBBits(ByteView& Target, const clsDIB& Dib)
{
    Target = ByteView();
    if (!Dib.DIBBitsPtr())
        return false;
    Target.Bits = Dib.DIBBitsPtr();
    Target.Columns = Dib.BytesPerScanline();
    Target.Rows = Dib.DIBHeight();
    return true;
}

bool SaveBMPWithPalette(const std::string& FileName, clsDIB& Dib, const clsPal& Pal, int16_t Bits)
{
    if ((Bits != 1 && Bits != 4 && Bits != 8) || !Dib.DIBBitsPtr())
        return false;
    clsDIB Rows;
    if (!BottomUp32(Dib, Rows))
        return false;
    const int32_t Width = Rows.DIBWidth();
    const int32_t Height = Rows.DIBHeight();
    const int32_t Stride = (Width * Bits + 31) / 32 * 4;
    const uint32_t TableBytes = (1u << Bits) * 4;
    const uint32_t PixelBytes = static_cast<uint32_t>(Stride) * static_cast<uint32_t>(Height);
    std::vector<uint8_t> Out = BmpFileHeaders(Width, Height, Bits, TableBytes, PixelBytes, true);
    Out.reserve(54 + TableBytes + PixelBytes);
    const uint8_t* Table = Pal.PalettePtr();
    for (uint32_t I = 0; I < TableBytes; I += 4) {
        Out.push_back(Table[I]);
        Out.push_back(Table[I + 1]);
        Out.push_back(Table[I + 2]);
        Out.push_back(0);
    }
    // Each pixel becomes the index of the nearest entry, as the platform's conversion gives it.
    const size_t RowStart = Out.size();
    Out.resize(RowStart + PixelBytes, 0);
    for (int32_t Y = 0; Y < Height; ++Y) {
        const uint8_t* Pixel = Rows.DIBBitsPtr() + static_cast<size_t>(Y) * Rows.BytesPerScanline();
        uint8_t* Row = Out.data() + RowStart + static_cast<size_t>(Y) * Stride;
        for (int32_t X = 0; X < Width; ++X, Pixel += 4) {
            const auto Index = static_cast<uint8_t>(Pal.NearestPaletteIndex(Pixel[2], Pixel[1], Pixel[0]));
            if (Bits == 8)
                Row[X] = Index;
            else if (Bits == 4)
                Row[X / 2] |= static_cast<uint8_t>((X & 1) ? (Index & 15) : (Index << 4));
            else if (Index & 1)
                Row[X / 8] |= static_cast<uint8_t>(0x80 >> (X & 7));
        }
    }
    std::remove(FileName.c_str());
    std::ofstream File(FileName, std::ios::binary | std::ios::trunc);
    if (!File)
        return false;
    File.write(reinterpret_cast<const char*>(Out.data()), static_cast<std::streamsize>(Out.size()));
    File.close();
    return static_cast<bool>(File);
}

bool ReduceToPaletteFile(clsDIB& Dib, clsPal& Pal, const std::string& Folder)
{
    const std::string WorkFile = InFolder(Folder, PaletteWorkFile);
    std::remove(WorkFile.c_str());
    clsDIB Work;
    if (!Dib.DIBBitsPtr() || !BottomUp32(Dib, Work))
        return false;
    // A picture of 256 colours or fewer keeps them exactly; a richer one is dithered to an
    // optimal palette. Either way every pixel then holds a colour of the palette.
    const int32_t Depth = Work.BPPperActualDIB(Work);
    if (Depth >= 1 && Depth <= 8) {
        Pal.CreatePalette256(Work);
    } else {
        Pal.CreateOptimal(Work, 256, 8);
        clsPalDither Dither;
        Dither.DitherToPalette256(Work, Pal);
    }
    clsDIB Loaded;
    const bool Written = SaveBMPWithPalette(WorkFile, Work, Pal, 8);
    const bool Read = Written && Loaded.CreateDIBFromFile(QString::fromStdString(WorkFile), false) &&
                      Loaded.DIBbpp() == 8 && Loaded.DIBWidth() == Work.DIBWidth() &&
                      Loaded.DIBHeight() == Work.DIBHeight();
    std::remove(WorkFile.c_str());
    if (!Read || !Dib.CreateBlankDIB(Loaded.DIBWidth(), Loaded.DIBHeight(), 8, 0xFFFFFF, true))
        return false;
    std::vector<uint8_t> Table;
    Loaded.GetPaletteFromDIB8BPP(Table);
    Dib.SetPaletteToDIB8BPP(Table);
    // Same depth and table: the rows are copied as they stand, turned to top-down order.
    BitBlt(Dib.DIBhDC(), 0, 0, Dib.DIBWidth(), Dib.DIBHeight(), Loaded.DIBhDC(), 0, 0, SRCCOPY);
    return true;
}

} // namespace basGIFpublic
