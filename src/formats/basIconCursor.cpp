// Reading for the icon editor: the status texts of icon and cursor files and the decoding of one
// image record into the editor's image and mask pictures.
#include "basIconCursor.h"
#include "FileBytes.h"

#include <cstring>
#include <fstream>

#include "basIconCursor_Layout.h"

namespace basIconCursor {

namespace {

IconRecord Shared;
int16_t Error = ErrNone;

// A side above this is no icon this program reads; it also bounds what a record may allocate.
constexpr int32_t MaxSide = 256;

const std::string NoIcon = "0/0/0/0/0/0/0/0/0";

bool StandardSide(int32_t Side)
{
    return Side == 16 || Side == 24 || Side == 32 || Side == 48;
}

// Colour count as the directory entry gives it: the colour byte when it says 2 or 16, a
// rounded one for any other non-zero byte, else from the bit count.
int32_t DirectoryColors(const IconDirEntry& Entry)
{
    int32_t Colors;
    if (Entry.ColorCount != 0) {
        Colors = (Entry.ColorCount == 2 || Entry.ColorCount == 16) ? Entry.ColorCount : (Entry.ColorCount > 2 ? 16 : 2);
    } else if (Entry.BitCount > 8 || Entry.BitCount < 0) {
        Colors = -1;
    } else if (Entry.BitCount == 0) {
        Colors = 256;
    } else {
        Colors = 1 << Entry.BitCount;
    }
    return Colors > 256 ? -1 : Colors;
}

int32_t HeaderColors(int32_t Bits)
{
    switch (Bits) {
    case 1: return 2;
    case 4: return 16;
    case 8: return 256;
    default: return -1;
    }
}

std::string Join(std::initializer_list<int32_t> Fields)
{
    std::string Text;
    for (const int32_t Field : Fields) {
        if (!Text.empty())
            Text += '/';
        Text += std::to_string(Field);
    }
    return Text;
}

// The bitmap header of the image an entry points at; false when it does not lie in the file.
bool HeaderOf(const std::vector<uint8_t>& Bytes, const IconDirEntry& Entry, BitmapInfoHeader& Header)
{
    return ReadBitmapHeader(Bytes, Entry.ImageOffset, Header);
}

} // namespace

IconRecord& SharedRecord()
{
    return Shared;
}

int16_t LastError()
{
    return Error;
}

void SetLastError(int16_t Code)
{
    Error = Code;
}

std::string ErrorText(int16_t Code)
{
    switch (Code) {
    case ErrTrueColorDepth: return std::string("Incoming icon is a True Color icon") + " but not of 24 BPP or 32 BPP.";
    case ErrReadOnly: return "File is read-only";
    default: return std::string();
    }
}

bool ReadFileBytes(const std::string& FileName, std::vector<uint8_t>& Bytes, int64_t Limit)
{
    return FileBytes::Read(FileName, Bytes, Limit);
}

namespace {

// The file's bytes and its directory, of Type (1 icon, 2 cursor), with at least one image and a
// first entry that passes the entry test; Error says why not.
bool ReadTypedFile(const std::string& FileName, int16_t Type, std::vector<uint8_t>& Bytes, IconRecord& Record)
{
    Error = ErrInvalid;
    if (!ReadFileBytes(FileName, Bytes, MaxFileBytes)) {
        Error = ErrFile;
        return false;
    }
    return ReadDirectory(Bytes, Record) && Record.Header.Type == Type && Record.Header.Count >= 1 &&
           EntryPasses(Record.Entries[0]);
}

} // namespace

std::string ReadIconFileStatus(const std::string& FileName, IconRecord& Destination, bool StrictSize,
                               bool Prefer8Bit)
{
    Destination = IconRecord();
    std::vector<uint8_t> Bytes;
    if (!ReadTypedFile(FileName, 1, Bytes, Destination))
        return NoIcon;
    const std::vector<IconDirEntry>& Entries = Destination.Entries;

    if (Entries.size() == 1) {
        const IconDirEntry& Entry = Entries[0];
        const bool Usable = StrictSize ? StandardSide(Entry.Width) && StandardSide(Entry.Height)
                                       : Entry.Width >= 12 && Entry.Width <= 128 && Entry.Height >= 12 &&
                                             Entry.Height <= 128;
        if (!Usable) {
            Error = ErrNone;
            return "1/0/0/0/0/0/0/0/0";
        }
        if (!HeaderOf(Bytes, Entry, Destination.Bitmap))
            return NoIcon;
        Error = ErrNone;
        return Join({1, 1, 0, Entry.Width, Entry.Height, DirectoryColors(Entry), Entry.BitCount,
                     HeaderColors(Destination.Bitmap.biBitCount), Destination.Bitmap.biBitCount});
    }

    int32_t Usable = 0;
    int32_t Chosen = -1;
    bool Have32 = false;
    bool Stopped = false;
    for (size_t I = 0; I < Entries.size(); ++I) {
        const IconDirEntry& Entry = Entries[I];
        if (Entry.Width != Entry.Height || !StandardSide(Entry.Width))
            continue;
        ++Usable;
        if (Entry.Width != 32) {
            if (Chosen < 0)
                Chosen = static_cast<int32_t>(I);
        } else if (!Have32) {
            Chosen = static_cast<int32_t>(I);
            Have32 = true;
        } else if (!Stopped) {
            // A further 32 by 32 image of 8 bits is preferred to the first one.
            BitmapInfoHeader Header;
            if (HeaderOf(Bytes, Entry, Header) && Header.biBitCount == 8) {
                Chosen = static_cast<int32_t>(I);
                Stopped = Prefer8Bit && I > 0;
            }
        }
    }
    int32_t Width, Height;
    if (Usable == 0) {
        if (StrictSize) {
            Error = ErrNone;
            return "2/0/0/0/0/0/0/0/0";
        }
        // Without the strict rule the first image is taken, and the size reported is that of
        // the last entry read, as the program has always reported it.
        Usable = Destination.Header.Count;
        Chosen = 0;
        Width = Entries.back().Width;
        Height = Entries.back().Height;
    } else {
        Width = Entries[static_cast<size_t>(Chosen)].Width;
        Height = Entries[static_cast<size_t>(Chosen)].Height;
    }
    const IconDirEntry& Entry = Entries[static_cast<size_t>(Chosen)];
    if (!HeaderOf(Bytes, Entry, Destination.Bitmap))
        return NoIcon;
    Error = ErrNone;
    return Join({2, Usable, Chosen, Width, Height, DirectoryColors(Entry), Entry.BitCount,
                 HeaderColors(Destination.Bitmap.biBitCount), Destination.Bitmap.biBitCount});
}

std::string ReadCursorFileStatus(const std::string& FileName)
{
    IconRecord& Record = Shared;
    Record = IconRecord();
    std::vector<uint8_t> Bytes;
    if (!ReadTypedFile(FileName, 2, Bytes, Record))
        return "0/0/0";
    const IconDirEntry& Entry = Record.Entries[0];
    if (Entry.Width != 32 || Entry.Height != 32 || Entry.ImageOffset != 22 ||
        Entry.Planes < 0 || Entry.Planes > 31 || Entry.BitCount < 0 || Entry.BitCount > 31 ||
        !HeaderOf(Bytes, Entry, Record.Bitmap))
        return "0/0/0";
    Error = ErrNone;
    return Join({1, HeaderColors(Record.Bitmap.biBitCount), Record.Bitmap.biBitCount});
}

bool DecodeIconRecord(const std::vector<uint8_t>& Bytes, int64_t Offset, int32_t Width, int32_t Height,
                      clsDIB& Image, clsDIB& Mask, Array2D<uint8_t>& Alpha)
{
    Error = ErrInvalid;
    BitmapInfoHeader& Header = Shared.Bitmap;
    if (Width < 1 || Height < 1 || Width > MaxSide || Height > MaxSide || !ReadBitmapHeader(Bytes, Offset, Header))
        return false;
    const int32_t Bits = Header.biBitCount;
    const bool Indexed = Bits == 1 || Bits == 4 || Bits == 8;
    if (!Indexed && Bits != 24 && Bits != 32) {
        Error = ErrTrueColorDepth;
        return false;
    }
    const int64_t TableBytes = Indexed ? int64_t(4) << Bits : 0;
    const int64_t ColorRow = ColorRowBytes(Width, Bits);
    const int64_t MaskRow = PaddedRowBytes(Width, 1);
    const int64_t Pixels = Offset + BitmapHeaderBytes + TableBytes;
    const int64_t MaskStart = Pixels + ColorRow * Height;
    if (MaskStart + MaskRow * Height > static_cast<int64_t>(Bytes.size()))
        return false;
    if (!Image.CreateBlankDIB(Width, Height, 32, 0, true) || !Mask.CreateBlankDIB(Width, Height, 32, 0, true)) {
        Image.ClearUp();
        Mask.ClearUp();
        Error = ErrFile;
        return false;
    }
    if (Bits == 32)
        Alpha.Resize(Width, Height, 255);
    else
        Alpha.Resize(0, 0);

    const uint8_t* Table = Bytes.data() + Offset + BitmapHeaderBytes;
    const DeviceContext* ImageDC = Image.DIBhDC();
    const DeviceContext* MaskDC = Mask.DIBhDC();
    for (int32_t Y = 0; Y < Height; ++Y) {
        // Rows run bottom to top in the file.
        const uint8_t* Src = Bytes.data() + Pixels + ColorRow * (Height - 1 - Y);
        const uint8_t* MaskSrc = Bytes.data() + MaskStart + MaskRow * (Height - 1 - Y);
        uint8_t* Dst = ImageDC->Row(Y);
        uint8_t* MaskDst = MaskDC->Row(Y);
        for (int32_t X = 0; X < Width; ++X) {
            uint8_t* P = Dst + X * 4;
            if (Indexed) {
                // Bits are unpacked most significant first.
                const int32_t BitPos = X * Bits;
                const int Index = (Src[BitPos >> 3] >> (8 - Bits - (BitPos & 7))) & ((1 << Bits) - 1);
                const uint8_t* Entry = Table + Index * 4;
                P[0] = Entry[0];
                P[1] = Entry[1];
                P[2] = Entry[2];
            } else {
                const uint8_t* S = Src + X * (Bits / 8);
                P[0] = S[0];
                P[1] = S[1];
                P[2] = S[2];
                if (Bits == 32 && S[3] != 0)
                    Alpha(X, Y) = S[3];
            }
            P[3] = 0;
            const bool Transparent = (MaskSrc[X >> 3] >> (7 - (X & 7))) & 1;
            std::memset(MaskDst + X * 4, Transparent ? 255 : 0, 3);
            MaskDst[X * 4 + 3] = 0;
            // Only a 32-bit image turns its transparent pixels black; at the other depths the
            // colour under a white mask is kept, which is how inverse-colour pixels survive.
            if (Transparent && Bits == 32)
                std::memset(P, 0, 3);
        }
    }
    return true;
}

bool LoadIconFileToPictures(const std::string& FileName, int16_t Index, clsDIB& Image, clsDIB& Mask,
                            Array2D<uint8_t>& Alpha)
{
    Shared = IconRecord();
    std::vector<uint8_t> Bytes;
    if (!ReadTypedFile(FileName, 1, Bytes, Shared) || Index < 0 || Index >= Shared.Header.Count)
        return false;
    const IconDirEntry& Entry = Shared.Entries[static_cast<size_t>(Index)];
    return DecodeIconRecord(Bytes, Entry.ImageOffset, Entry.Width, Entry.Height, Image, Mask, Alpha);
}

bool LoadCursorFileToPictures(const std::string& FileName, clsDIB& Image, clsDIB& Mask, Array2D<uint8_t>& Alpha,
                              int16_t& HotspotX, int16_t& HotspotY)
{
    Shared = IconRecord();
    std::vector<uint8_t> Bytes;
    if (!ReadTypedFile(FileName, 2, Bytes, Shared))
        return false;
    const IconDirEntry& Entry = Shared.Entries[0];
    if (!DecodeIconRecord(Bytes, Entry.ImageOffset, Entry.Width, Entry.Height, Image, Mask, Alpha))
        return false;
    HotspotX = Entry.Planes;
    HotspotY = Entry.BitCount;
    return true;
}

} // namespace basIconCursor
