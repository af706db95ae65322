// Writing GIF files: the whole animation or one frame of it, and a single 8-bit surface.
#include "clsGIF.h"

#include <cstdio>
#include <fstream>

#include "basGIFLZWEnc.h"
#include "clsPal.h"

namespace {

// A write that cannot be made: what is already written stays in the file.
struct WriteFailure {};

struct Writer {
    std::vector<uint8_t> Bytes;

    void Byte(int32_t Value)
    {
        if (Value < 0 || Value > 255)
            throw WriteFailure{};
        Bytes.push_back(static_cast<uint8_t>(Value));
    }
    void Word(int32_t Value)
    {
        const auto V = static_cast<uint16_t>(Value);
        Bytes.push_back(static_cast<uint8_t>(V & 255));
        Bytes.push_back(static_cast<uint8_t>(V >> 8));
    }
    void Text(const char* Value)
    {
        for (; *Value; ++Value)
            Bytes.push_back(static_cast<uint8_t>(*Value));
    }
    // A colour table of 2^Bits entries, the first Entries taken from a blue, green, red, 0
    // table and the rest black.
    void ColorTable(const uint8_t* Palette, int32_t Entries, int32_t Bits)
    {
        if (Bits > 8)
            throw WriteFailure{};
        for (int32_t I = 0; I < (1 << Bits); ++I) {
            const bool Filled = I < Entries;
            Bytes.push_back(Filled ? Palette[I * 4 + 2] : 0);
            Bytes.push_back(Filled ? Palette[I * 4 + 1] : 0);
            Bytes.push_back(Filled ? Palette[I * 4] : 0);
        }
    }
    // A comment of one sub-block.
    void CommentBlock(const std::string& Comment)
    {
        if (Comment.empty())
            return;
        if (Comment.size() > 255)
            throw WriteFailure{};
        Byte(0x21);
        Byte(0xFE);
        Byte(static_cast<int32_t>(Comment.size()));
        Bytes.insert(Bytes.end(), Comment.begin(), Comment.end());
        Byte(0);
    }
    // The image data: the minimum code size, the sub-blocks, the terminator.
    void ImageData(const clsDIB& Image, int32_t MinCodeSize, bool Interlaced)
    {
        Byte(MinCodeSize);
        if (!basGIFLZWEnc::EncodeFrameLZW(Bytes, Image, static_cast<uint8_t>(MinCodeSize + 1), Interlaced))
            throw WriteFailure{};
        Byte(0);
    }
};

// The smallest number of bits from 1 upward whose power of two holds Entries.
int32_t TableBits(int32_t Entries)
{
    int32_t Bits = 1;
    while ((1 << Bits) < Entries && Bits < 16)
        ++Bits;
    return Bits;
}

// Writes whatever was built, the unfinished part of a failed save included.
bool Flush(std::ofstream& File, const Writer& Out)
{
    File.write(reinterpret_cast<const char*>(Out.Bytes.data()), static_cast<std::streamsize>(Out.Bytes.size()));
    File.close();
    return static_cast<bool>(File);
}

bool OpenFresh(const std::string& FileName, std::ofstream& File)
{
    std::remove(FileName.c_str());
    File.open(FileName, std::ios::binary | std::ios::trunc);
    return File.is_open();
}

// Opens the file afresh, builds its bytes with Body and writes them; a failure while building
// still writes what was built, and answers false.
template <class Build>
bool WriteGIF(const std::string& FileName, Build&& Body)
{
    std::ofstream File;
    if (!OpenFresh(FileName, File))
        return false;
    Writer Out;
    try {
        Body(Out);
    } catch (const WriteFailure&) {
        Flush(File, Out);
        return false;
    } catch (const std::bad_alloc&) {
        Flush(File, Out);
        return false;
    }
    return Flush(File, Out);
}

} // namespace

bool clsGIF::Save(const std::string& FileName, int16_t FrameOne, const std::string& Comment)
{
    return WriteGIF(FileName, [&](Writer& Out) {
        Out.Text("GIF");
        Out.Text(Count > 0 || Controls[1].UseTransparentColor || !Comment.empty() ? "89a" : "87a");
        const int32_t GlobalBits = Header.GlobalExists ? TableBits(Header.GlobalEntries) : 0;
        Out.Word(Header.Screen.Width);
        Out.Word(Header.Screen.Height);
        // The colour resolution is written equal to the table's size.
        Out.Byte(Header.GlobalExists ? (0x80 | ((GlobalBits - 1) << 4) | (Header.GlobalSorted ? 8 : 0) |
                                        (GlobalBits - 1)) & 0xFF
                                     : 0);
        Out.Byte(Header.Screen.BackgroundIndex);
        Out.Byte(Header.Screen.AspectByte);
        if (Header.GlobalExists)
            Out.ColorTable(Header.GlobalPalette.data(), Header.GlobalEntries, GlobalBits);
        if (Count > 0) {
            Out.Byte(0x21);
            Out.Byte(0xFF);
            Out.Byte(0x0B);
            Out.Text("NETSCAPE2.0");
            Out.Byte(3);
            Out.Byte(1);
            Out.Word(Header.Loops);
            Out.Byte(0);
        }
        Out.CommentBlock(Comment);
        for (int16_t F = FrameOne > 0 ? FrameOne : 1; F <= (FrameOne > 0 ? FrameOne : Count); ++F) {
            if (!ValidFrame(F))
                throw WriteFailure{};
            const FrameControl& Control = Controls[F];
            const FrameRecord& Record = Frames[F];
            Out.Byte(0x21);
            Out.Byte(0xF9);
            Out.Byte(4);
            Out.Byte((Control.UseTransparentColor ? 1 : 0) | (Control.UserInput ? 2 : 0) |
                     (Control.DisposalMethod << 2));
            Out.Word(Control.Delay);
            Out.Byte(Control.UseTransparentColor ? Control.TransparentColorIndex : 0);
            Out.Byte(0);
            const int32_t LocalBits = Record.LocalPaletteUsed ? TableBits(Record.LocalPaletteEntries) : 0;
            // Without a local table the global size stands in the byte; with neither table there
            // is no size to write and the save fails.
            const int32_t SizeField = Record.LocalPaletteUsed ? LocalBits - 1 : GlobalBits - 1;
            if (SizeField < 0 || SizeField > 7)
                throw WriteFailure{};
            Out.Byte(0x2C);
            Out.Word(Record.Left);
            Out.Word(Record.Top);
            Out.Word(Record.DIBXOR->DIBWidth());
            Out.Word(Record.DIBXOR->DIBHeight());
            Out.Byte(SizeField | (Record.LocalPaletteSorted ? 0x20 : 0) | (Record.Interlaced ? 0x40 : 0) |
                     (Record.LocalPaletteUsed ? 0x80 : 0));
            if (Record.LocalPaletteUsed)
                Out.ColorTable(Record.Palette.data(), Record.LocalPaletteEntries, LocalBits);
            Out.ImageData(*Record.DIBXOR, std::max(Record.LocalPaletteUsed ? LocalBits : GlobalBits, 2),
                          Record.Interlaced);
        }
        Out.Byte(0x3B);
    });
}

bool clsGIF::SaveGIFFrom_BPP8_DIB(const std::string& FileName, clsDIB& Dib, const clsPal& Pal, bool UseTransparent,
                                  int32_t TransparentColor, bool Interlace, const std::string& Comment)
{
    if (!Dib.DIBBitsPtr() || Dib.DIBbpp() != 8)
        return false;
    return WriteGIF(FileName, [&](Writer& Out) {
        Out.Text("GIF");
        Out.Text(!Comment.empty() || UseTransparent ? "89a" : "87a");
        Out.Word(Dib.DIBWidth());
        Out.Word(Dib.DIBHeight());
        Out.Byte(0xF7);
        Out.Byte(0);
        Out.Byte(0);
        Out.ColorTable(Pal.PalettePtr(), 256, 8);
        int32_t TransparentIndex = 0;
        if (UseTransparent && TransparentColor >= 0) {
            const auto Color = static_cast<uint32_t>(TransparentColor);
            for (int32_t I = 0; I < 256; ++I)
                if (Pal.rgbR(uint8_t(I)) == (Color & 255) && Pal.rgbG(uint8_t(I)) == ((Color >> 8) & 255) &&
                    Pal.rgbB(uint8_t(I)) == ((Color >> 16) & 255)) {
                    TransparentIndex = I;
                    break;
                }
        }
        Out.CommentBlock(Comment);
        // The control block stands in every file, an 87a one too.
        Out.Byte(0x21);
        Out.Byte(0xF9);
        Out.Byte(4);
        Out.Byte(UseTransparent ? 1 : 0);
        Out.Word(0);
        Out.Byte(TransparentIndex);
        Out.Byte(0);
        Out.Byte(0x2C);
        Out.Word(0);
        Out.Word(0);
        Out.Word(Dib.DIBWidth());
        Out.Word(Dib.DIBHeight());
        Out.Byte(Interlace ? 0x47 : 7);
        Out.ImageData(Dib, 8, Interlace);
        Out.Byte(0x3B);
    });
}
