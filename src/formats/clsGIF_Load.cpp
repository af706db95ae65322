// Reading GIF files: the file tests, the block loop, the decoding of each image and the
// messages of a refused file.
#include "clsGIF.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "basGIFLZWDec.h"

namespace {

// Files larger than this are not read into memory: no GIF of the sizes this program accepts
// comes near it.
constexpr int64_t MaxFileBytes = int64_t(1) << 30;

// A refusal found deep inside the reader, carried out to the routine that answers the code.
struct ReadFailure {
    int16_t Code;
};

// The read position over the whole file. Every advance is checked against the last index;
// a byte read beyond it is a failure of its own.
struct Cursor {
    const std::vector<uint8_t>& Bytes;
    int64_t Pos = 0;
    int64_t Last;

    explicit Cursor(const std::vector<uint8_t>& From) : Bytes(From), Last(static_cast<int64_t>(From.size()) - 1) {}

    uint8_t At(int64_t Index) const
    {
        if (Index < 0 || Index > Last)
            throw ReadFailure{clsGIF::ErrInvalid};
        return Bytes[static_cast<size_t>(Index)];
    }
    uint8_t Here() const { return At(Pos); }
    void Advance(int64_t By)
    {
        Pos += By;
        if (Pos > Last)
            throw ReadFailure{clsGIF::ErrOutOfBounds};
    }
    // The N bytes at the position, which is then moved past them.
    const uint8_t* Take(int64_t N)
    {
        const uint8_t* From = Bytes.data() + Pos;
        Advance(N);
        return From;
    }
    // Walks a chain of sub-blocks up to its terminator, handing each one's bytes to Keep.
    // The position is left on the terminator.
    template <class Sink>
    void SubBlocks(Sink&& Keep)
    {
        for (;;) {
            const uint8_t Length = Here();
            if (Length == 0)
                return;
            if (Pos + Length > Last)
                throw ReadFailure{clsGIF::ErrInvalid};
            Keep(Bytes.data() + Pos + 1, static_cast<size_t>(Length));
            Pos += Length + 1;
        }
    }
};

inline uint16_t Word(const uint8_t* P)
{
    return static_cast<uint16_t>(P[0] | (P[1] << 8));
}

// Reads Entries red, green, blue triples into a table of blue, green, red, 0 entries.
void ReadColorTable(Cursor& C, int32_t Entries, std::array<uint8_t, 1024>& Palette)
{
    const uint8_t* Triples = C.Take(int64_t(Entries) * 3);
    for (int32_t I = 0; I < Entries; ++I) {
        Palette[I * 4] = Triples[I * 3 + 2];
        Palette[I * 4 + 1] = Triples[I * 3 + 1];
        Palette[I * 4 + 2] = Triples[I * 3];
        Palette[I * 4 + 3] = 0;
    }
}

bool ScreenAllowed(int32_t Width, int32_t Height, int32_t MaxSide, int64_t MaxArea)
{
    return Width >= 1 && Height >= 1 && Width <= MaxSide && Height <= MaxSide &&
           int64_t(Width) * Height <= MaxArea;
}

// Bytes of a frame's index surface and mask together.
int64_t FrameBytes(int64_t Width, int64_t Height)
{
    return ((Width * 8 + 31) / 32 * 4 + (Width + 31) / 32 * 4) * Height;
}

bool ReadWholeFile(const std::string& FileName, std::vector<uint8_t>& Bytes)
{
    std::ifstream In(FileName, std::ios::binary | std::ios::ate);
    if (!In)
        return false;
    const std::streamoff Size = In.tellg();
    if (Size < 0 || Size > MaxFileBytes)
        return false;
    Bytes.resize(static_cast<size_t>(Size));
    In.seekg(0);
    return Size == 0 || static_cast<bool>(In.read(reinterpret_cast<char*>(Bytes.data()), Size));
}

} // namespace

int16_t clsGIF::FileTests(const std::string& FileName, std::vector<uint8_t>& Bytes, int16_t ReadFailureCode)
{
    std::error_code Error;
    if (FileName.empty() || !std::filesystem::is_regular_file(FileName, Error))
        return ErrFileNotFound;
    const auto Length = static_cast<int64_t>(std::filesystem::file_size(FileName, Error));
    if (Error)
        return ErrFileNotFound;
    if (Length - 1 < MinLastIndex)
        return ErrNotGIF;
    std::ifstream In(FileName, std::ios::binary);
    uint8_t Head[10] = {};
    uint8_t Tail = 0;
    if (!In.read(reinterpret_cast<char*>(Head), sizeof Head) || !In.seekg(Length - 1) ||
        !In.read(reinterpret_cast<char*>(&Tail), 1))
        return ReadFailureCode;
    if (std::memcmp(Head, "GIF", 3) != 0)
        return ErrNoSignature;
    if (std::memcmp(Head + 3, "89a", 3) != 0 && std::memcmp(Head + 3, "87a", 3) != 0)
        return ErrUnknownVersion;
    const int32_t Width = static_cast<int16_t>(Word(Head + 6));
    const int32_t Height = static_cast<int16_t>(Word(Head + 8));
    if (Tail != 0x3B)
        return ErrNoTrailer;
    if (Width < 1 || Height < 1 || int64_t(Width) * Height >= MaxScreenArea + 1)
        return ErrScreenSize;
    return ReadWholeFile(FileName, Bytes) ? int16_t(ErrNone) : ReadFailureCode;
}

int16_t clsGIF::PreliminaryTest(const std::string& FileName)
{
    std::vector<uint8_t> Bytes;
    const int16_t Code = FileTests(FileName, Bytes, ErrTestFailed);
    if (Code != ErrNone)
        ClearUp();
    return Code;
}

int16_t clsGIF::LoadFromGIFFile(const std::string& FileName)
{
    std::vector<uint8_t> Bytes;
    const int16_t Code = FileTests(FileName, Bytes, ErrLoadFailed);
    if (Code != ErrNone) {
        ClearUp();
        return Code;
    }
    return LoadStream(Bytes);
}

int16_t clsGIF::LoadStream(std::vector<uint8_t>& Bytes)
{
    ClearUp();
    LastIndex = static_cast<int32_t>(std::min<size_t>(Bytes.size(), INT32_MAX)) - 1;
    int16_t Images = 0;
    int16_t Code = ReadStream(Bytes, Header, Controls, Frames, Images, false);
    std::vector<uint8_t>().swap(Bytes);
    if (Code == ErrNone && Images < 1)
        Code = ErrNoFrame;
    if (Code != ErrNone) {
        ClearUp();
        return Code;
    }
    Count = Images;
    EnsureRecords(Count);
    return ErrNone;
}

int16_t clsGIF::ReadStream(const std::vector<uint8_t>& Bytes, FileHeader& Head, std::vector<FrameControl>& Ctrls,
                           std::vector<FrameRecord>& Records, int16_t& Images, bool FirstImageOnly)
{
    Images = 0;
    try {
        Cursor C(Bytes);
        Head.Signature.assign({char(C.At(0)), char(C.At(1)), char(C.At(2))});
        if (Head.Signature != "GIF")
            return ErrNoSignature;
        Head.Version.assign({char(C.At(3)), char(C.At(4)), char(C.At(5))});
        if (Head.Version != "89a" && Head.Version != "87a")
            return ErrUnknownVersion;
        C.Advance(6);
        const uint8_t* Screen = C.Take(7);
        Head.Screen.Width = static_cast<int16_t>(Word(Screen));
        Head.Screen.Height = static_cast<int16_t>(Word(Screen + 2));
        Head.Screen.Flags = Screen[4];
        Head.Screen.BackgroundIndex = Screen[5];
        Head.Screen.AspectByte = Screen[6];
        if (!ScreenAllowed(Head.Screen.Width, Head.Screen.Height, MaxScreenSide, MaxScreenArea))
            return ErrScreenSize;
        Head.GlobalExists = (Head.Screen.Flags & 0x80) != 0;
        if (Head.GlobalExists) {
            Head.GlobalSorted = (Head.Screen.Flags & 8) != 0;
            Head.GlobalEntries = static_cast<int16_t>(2 << (Head.Screen.Flags & 7));
            ReadColorTable(C, Head.GlobalEntries, Head.GlobalPalette);
        }

        int16_t ControlCount = 0;
        int64_t AllFrameBytes = 0;
        std::vector<uint8_t> Data;
        for (;;) {
            const uint8_t Block = C.Here();
            if (Block == 0x21) {
                C.Advance(1);
                const uint8_t Label = C.Here();
                C.Advance(1);
                if (Label == 0xF9) {
                    // Control blocks are counted on their own; image n takes the nth of them.
                    ++ControlCount;
                    if (Ctrls.size() < size_t(ControlCount) + 1)
                        Ctrls.resize(size_t(ControlCount) + 1);
                    const uint8_t* P = C.Take(5);
                    FrameControl& Control = Ctrls[ControlCount];
                    Control = FrameControl();
                    Control.DisposalMethod = static_cast<uint8_t>((P[1] & 28) >> 2);
                    Control.UserInput = (P[1] & 2) != 0;
                    Control.UseTransparentColor = (P[1] & 1) != 0;
                    Control.Delay = static_cast<int16_t>(Word(P + 2));
                    if (Control.UseTransparentColor)
                        Control.TransparentColorIndex = P[4];
                } else if (Label == 0xFE && Head.Version == "89a" && Head.Comment.empty()) {
                    C.SubBlocks([&](const uint8_t* P, size_t N) {
                        for (size_t I = 0; I < N; ++I)
                            if ((P[I] >= 32 && P[I] <= 126) || P[I] == 13 || P[I] == 10)
                                Head.Comment.push_back(static_cast<char>(P[I]));
                    });
                } else if (Label == 0xFF) {
                    const uint8_t* Identifier = C.Take(12) + 1;
                    Data.assign(1, 0);
                    C.SubBlocks([&](const uint8_t* P, size_t N) { Data.insert(Data.end(), P, P + N); });
                    if (std::memcmp(Identifier, "NETSCAPE2.0", 11) == 0) {
                        if (Data.size() < 4)
                            return ErrInvalid;
                        Head.Loops = static_cast<uint16_t>(Data[2] + 256 * Data[3]);
                    }
                } else {
                    // Comments not kept, plain text and any unknown extension.
                    C.SubBlocks([](const uint8_t*, size_t) {});
                }
            } else if (Block == 0x2C) {
                if (FirstImageOnly && Images >= 1)
                    break;
                C.Advance(1);
                if (++Images > MaxFrames)
                    return ErrTooManyFrames;
                if (Records.size() < size_t(Images) + 1)
                    Records.resize(size_t(Images) + 1);
                const uint8_t* D = C.Take(9);
                // The screen is tested again at each image: an animation has a smaller limit.
                if (Images == 1 ? !ScreenAllowed(Head.Screen.Width, Head.Screen.Height, MaxScreenSide, MaxScreenArea)
                                : !ScreenAllowed(Head.Screen.Width, Head.Screen.Height, MaxAnimationSide,
                                                 MaxAnimationArea))
                    return ErrScreenSize;
                FrameRecord& Record = Records[Images];
                Record = FrameRecord();
                Record.Left = static_cast<int16_t>(Word(D));
                Record.Top = static_cast<int16_t>(Word(D + 2));
                const int32_t Width = Word(D + 4);
                const int32_t Height = Word(D + 6);
                Record.Interlaced = (D[8] & 0x40) != 0;
                Record.LocalPaletteUsed = (D[8] & 0x80) != 0;
                if (Record.LocalPaletteUsed) {
                    Record.LocalPaletteSorted = (D[8] & 0x20) != 0;
                    Record.LocalPaletteEntries = static_cast<int16_t>(2 << (D[8] & 7));
                    ReadColorTable(C, Record.LocalPaletteEntries, Record.Palette);
                } else {
                    Record.LocalPaletteSorted = Head.GlobalSorted;
                    Record.LocalPaletteEntries = Head.GlobalEntries;
                    Record.Palette = Head.GlobalPalette;
                }
                // A frame's own size is not held against the screen, but memory is checked
                // before anything is allocated. A frame of no width or height keeps empty surfaces.
                if (Width > 0 && Height > 0) {
                    const int64_t Need = FrameBytes(Width, Height);
                    AllFrameBytes += Need;
                    if (Need > MaxFrameBytes || AllFrameBytes > MaxFramesBytes ||
                        !Record.DIBXOR->CreateBlankDIB(Width, Height, 8, 0xFFFFFF, true) ||
                        !Record.DIBAND->CreateBlankDIB(Width, Height, 1, 0xFFFFFF, true))
                        return ErrInvalid;
                }
                const uint8_t MinCodeSize = C.Here();
                C.Advance(1);
                Data.assign(1, 0);
                C.SubBlocks([&](const uint8_t* P, size_t N) { Data.insert(Data.end(), P, P + N); });
                if (Data.size() < 2) {
                    // An image without data ends the reading; the frames before it stand.
                    Records[Images] = FrameRecord();
                    --Images;
                    break;
                }
                if (size_t(Images) >= Ctrls.size())
                    return ErrInvalid;
                DecodeFrame(Record, Ctrls[Images], MinCodeSize, Data);
            } else if (Block == 0x3B) {
                break;
            }
            C.Advance(1);
        }
    } catch (const ReadFailure& Failure) {
        return Failure.Code;
    } catch (const std::bad_alloc&) {
        return ErrInvalid;
    }
    return ErrNone;
}

void clsGIF::DecodeFrame(FrameRecord& Record, const FrameControl& Control, uint8_t MinCodeSize,
                         const std::vector<uint8_t>& Data)
{
    std::vector<uint8_t> Table(Record.Palette.begin(), Record.Palette.end());
    if (Control.UseTransparentColor && Control.TransparentColorIndex >= 0 && Control.TransparentColorIndex <= 255)
        std::fill_n(Table.begin() + Control.TransparentColorIndex * 4, 3, uint8_t(0));
    Record.DIBXOR->SetPaletteToDIB8BPP(Table);
    Record.DIBAND->SetPaletteToDIB8BPP({0, 0, 0, 0, 255, 255, 255, 0});
    basGIFLZWDec::DecodeFrameLZW(*Record.DIBXOR, Record.Interlaced, MinCodeSize, Data);
    if (Control.UseTransparentColor)
        MaskRecord(Record, Control, static_cast<uint8_t>(Control.TransparentColorIndex));
}

std::string clsGIF::ErrMessageText(int16_t Code, const std::string& FileName)
{
    std::string Message;
    switch (Code) {
    case ErrFileNotFound: Message = "File not found."; break;
    case ErrNotGIF: Message = "Not a GIF file."; break;
    case ErrNoSignature: Message = "No GIF signature."; break;
    case ErrUnknownVersion: Message = "Unknown GIF version."; break;
    case ErrNoTrailer: Message = "No GIF trailer found."; break;
    case ErrScreenSize: Message = "Unallowed GIF size or max width/height excceded, refer Help."; break;
    case ErrTestFailed: Message = "Failed to open this file as animated GIF."; break;
    case ErrLoadFailed: Message = "Unknown error on loading GIF file."; break;
    case ErrOutOfBounds: Message = "Invalid/corrupted file - failed to read within boundary"; break;
    case ErrTooManyFrames: Message = "No of frames exceeds maximum allowed: " + std::to_string(MaxFrames) + "."; break;
    case ErrNoFrame: Message = "No frame found."; break;
    default: Message = "Invalid GIF file/failed to read GIF image."; break;
    }
    return FileName.empty() ? Message + "\n" : FileName + "\n" + Message + "\n";
}

void clsGIF::FlagErrMessage(int16_t Code, const std::string& FileName, const std::string& Title)
{
    if (MessageSink)
        MessageSink(ErrMessageText(Code, FileName), Title);
}
