// Reading animated cursors: the RIFF chunks that hold the frames, each frame's icon drawn at 32
// by 32, and the pattern search for jiffies and hotspot.
#include "basANI.h"

#include <algorithm>
#include <cstring>

#include "basIconCursor.h"
#include "basIconCursor_Layout.h"

namespace basANI {

namespace {

using basIconCursor::LE16;
using basIconCursor::LE32;

// "icon" chunks kept of one file; far more than any stepping can reach.
constexpr size_t MaxFrameChunks = 4096;

bool IsTag(const std::vector<uint8_t>& Bytes, int64_t At, const char* Tag)
{
    return At >= 0 && At + 4 <= static_cast<int64_t>(Bytes.size()) && std::memcmp(Bytes.data() + At, Tag, 4) == 0;
}

// A chunk id of four printable characters.
bool LooksLikeTag(const std::vector<uint8_t>& Bytes, int64_t At)
{
    if (At < 0 || At + 8 > static_cast<int64_t>(Bytes.size()))
        return false;
    return std::all_of(Bytes.begin() + At, Bytes.begin() + At + 4, [](uint8_t C) { return C >= 0x20 && C < 0x7F; });
}

// Where the chunk after the one at At (data of Size bytes) starts. RIFF pads odd sizes to even,
// but some writers do not: the pad byte is skipped unless a chunk starts right behind the data
// and none behind the pad.
int64_t NextChunk(const std::vector<uint8_t>& Bytes, int64_t At, int64_t Size)
{
    const int64_t End = At + 8 + Size;
    if ((Size & 1) != 0 && LooksLikeTag(Bytes, End) && !LooksLikeTag(Bytes, End + 1))
        return End;
    return End + (Size & 1);
}

// Walks the chunks from Start to End, handing each id's position and its clipped data size.
template <class Visit>
void WalkChunks(const std::vector<uint8_t>& Bytes, int64_t Start, int64_t End, Visit&& Each)
{
    for (int64_t At = Start; At + 8 <= End;) {
        const int64_t Size = std::min<int64_t>(LE32(Bytes.data() + At + 4), End - At - 8);
        Each(At, Size);
        At = NextChunk(Bytes, At, Size);
    }
}

int64_t Find(const std::vector<uint8_t>& Bytes, const char* Pattern, size_t Length)
{
    const auto Hit = std::search(Bytes.begin(), Bytes.end(), Pattern, Pattern + Length);
    return Hit == Bytes.end() ? -1 : Hit - Bytes.begin();
}

uint8_t ClampJiffy(uint8_t Value)
{
    return std::clamp<uint8_t>(Value, 1, 90);
}

// Decodes an icon or cursor file held in a frame chunk: its first 32 by 32 image, or else its
// first image, by the sizes of the bitmap header (frames' directories often say 0).
bool DecodeFrame(const std::vector<uint8_t>& Icon, clsDIB& Image, clsDIB& Mask, Array2D<uint8_t>& Alpha)
{
    basIconCursor::IconRecord Record;
    if (!basIconCursor::ReadDirectory(Icon, Record) || (Record.Header.Type != 1 && Record.Header.Type != 2) ||
        Record.Entries.empty())
        return false;
    int64_t Offset = -1;
    int32_t Width = 0, Height = 0;
    for (const basIconCursor::IconDirEntry& Entry : Record.Entries) {
        BitmapInfoHeader Header;
        if (!basIconCursor::ReadBitmapHeader(Icon, Entry.ImageOffset, Header))
            continue;
        const bool Exact = Header.biWidth == FrameSide && Header.biHeight / 2 == FrameSide;
        if (Offset < 0 || Exact) {
            Offset = Entry.ImageOffset;
            Width = Header.biWidth;
            Height = Header.biHeight / 2;
        }
        if (Exact)
            break;
    }
    return Offset >= 0 && basIconCursor::DecodeIconRecord(Icon, Offset, Width, Height, Image, Mask, Alpha);
}

} // namespace

bool LoadAniCursor(const std::string& FileName, AniCursor& Cursor)
{
    Cursor = AniCursor();
    if (!basIconCursor::ReadFileBytes(FileName, Cursor.Bytes, basIconCursor::MaxFileBytes))
        return false;
    const std::vector<uint8_t>& Bytes = Cursor.Bytes;
    if (!IsTag(Bytes, 0, "RIFF") || !IsTag(Bytes, 8, "ACON"))
        return false;
    // The size field is not trusted: the program's own files give the whole file's length.
    WalkChunks(Bytes, 12, static_cast<int64_t>(Bytes.size()), [&](int64_t At, int64_t Size) {
        if (IsTag(Bytes, At, "seq ") && Cursor.Sequence.empty()) {
            const int64_t Steps = std::min<int64_t>(Size / 4, MaxSteps);
            for (int64_t I = 0; I < Steps; ++I)
                Cursor.Sequence.push_back(static_cast<int32_t>(LE32(Bytes.data() + At + 8 + 4 * I)));
        } else if (IsTag(Bytes, At, "LIST") && Size >= 4 && IsTag(Bytes, At + 8, "fram") && Cursor.Frames.empty()) {
            WalkChunks(Bytes, At + 12, At + 8 + Size, [&](int64_t Inner, int64_t InnerSize) {
                if (IsTag(Bytes, Inner, "icon") && Cursor.Frames.size() < MaxFrameChunks)
                    Cursor.Frames.emplace_back(Inner + 8, InnerSize);
            });
        }
    });
    return true;
}

bool DrawAniStep(const AniCursor& Cursor, int16_t Step, clsDIB& Image, clsDIB& Mask)
{
    const size_t Steps = Cursor.Sequence.empty() ? Cursor.Frames.size() : Cursor.Sequence.size();
    if (Step < 0 || static_cast<size_t>(Step) >= Steps)
        return false;
    const int64_t Frame = Cursor.Sequence.empty() ? Step : Cursor.Sequence[static_cast<size_t>(Step)];
    if (Frame < 0 || Frame >= static_cast<int64_t>(Cursor.Frames.size()))
        return false;
    const auto [Start, Length] = Cursor.Frames[static_cast<size_t>(Frame)];
    const std::vector<uint8_t> Icon(Cursor.Bytes.begin() + Start, Cursor.Bytes.begin() + Start + Length);
    clsDIB SourceImage, SourceMask;
    Array2D<uint8_t> Alpha;
    if (!DecodeFrame(Icon, SourceImage, SourceMask, Alpha) ||
        !Image.CreateBlankDIB(FrameSide, FrameSide, 32, 0, true) ||
        !Mask.CreateBlankDIB(FrameSide, FrameSide, 32, 0, true))
        return false;
    // Stretched to 32 by 32 by the nearest pixel; an image with alpha is drawn over black, as the
    // editor's frames never keep alpha.
    const int32_t Width = SourceImage.DIBWidth(), Height = SourceImage.DIBHeight();
    const bool HasAlpha = Alpha.Width() == Width && Alpha.Height() == Height;
    for (int32_t Y = 0; Y < FrameSide; ++Y) {
        const int32_t SY = Y * Height / FrameSide;
        const uint8_t* Src = SourceImage.DIBhDC()->Row(SY);
        const uint8_t* MaskSrc = SourceMask.DIBhDC()->Row(SY);
        uint8_t* Dst = Image.DIBhDC()->Row(Y);
        uint8_t* MaskDst = Mask.DIBhDC()->Row(Y);
        for (int32_t X = 0; X < FrameSide; ++X) {
            const int32_t SX = X * Width / FrameSide;
            const uint32_t A = HasAlpha ? Alpha(SX, SY) : 255;
            for (int C = 0; C < 3; ++C)
                Dst[X * 4 + C] = static_cast<uint8_t>((Src[SX * 4 + C] * A + 127) / 255);
            Dst[X * 4 + 3] = 0;
            std::memcpy(MaskDst + X * 4, MaskSrc + SX * 4, 4);
        }
    }
    return true;
}

int16_t CountAniSteps(const AniCursor& Cursor)
{
    clsDIB Image, Mask;
    int16_t Steps = 0;
    while (Steps < MaxSteps && DrawAniStep(Cursor, Steps, Image, Mask))
        ++Steps;
    return Steps;
}

bool ReadAniData(const std::string& FileName, int16_t FrameCount, AniData& Data)
{
    Data = AniData();
    std::vector<uint8_t> Bytes;
    if (FrameCount < 0 || !basIconCursor::ReadFileBytes(FileName, Bytes, basIconCursor::MaxFileBytes) ||
        !IsTag(Bytes, 0, "RIFF"))
        return false;
    const int64_t Size = static_cast<int64_t>(Bytes.size());
    const int64_t Anih = Find(Bytes, "anih", 4);
    if (Anih < 0)
        return false;
    // Only the low byte of each rate is read.
    const int64_t Rate = Find(Bytes, "rate", 4);
    if (Rate >= 0) {
        if (FrameCount > 0 && Rate + 8 + 4 * int64_t(FrameCount - 1) >= Size)
            return false;
        for (int16_t I = 0; I < FrameCount; ++I)
            Data.Jiffies.push_back(ClampJiffy(Bytes[static_cast<size_t>(Rate + 8 + 4 * I)]));
    } else {
        // Without rates, one jiffy for all frames: 8 bytes before "seq " (the default rate of an
        // "anih" standing right before it), else the default rate of "anih".
        const int64_t Seq = Find(Bytes, "seq ", 4);
        const int64_t At = Seq >= 0 ? Seq - 8 : Anih + 36;
        if (At < 0 || At >= Size)
            return false;
        Data.Jiffies.assign(static_cast<size_t>(FrameCount), ClampJiffy(Bytes[static_cast<size_t>(At)]));
    }
    // The first frame's icon file: its type at +14 and the hotspot of its first entry at +22, +24.
    const int64_t Icon = Find(Bytes, "framicon", 8);
    if (Icon >= 0 && Icon + 25 < Size && LE16(Bytes.data() + Icon + 14) == 2) {
        Data.HasHotspot = true;
        Data.HotspotX = std::min<int16_t>(Bytes[static_cast<size_t>(Icon + 22)], 31);
        Data.HotspotY = std::min<int16_t>(Bytes[static_cast<size_t>(Icon + 24)], 31);
    }
    return true;
}

std::string FrameLimitMessage(int16_t Limit)
{
    return "Either an invalid ANI file or number of frames exceeds limit of " + std::to_string(Limit) + ".";
}

int16_t ReadAniFile(const std::string& FileName, int16_t Limit, AniFrameList& Frames, AniData& Data)
{
    Frames.clear();
    Data = AniData();
    AniCursor Cursor;
    if (!LoadAniCursor(FileName, Cursor))
        return AniUnreadable;
    // One step more than the limit is enough to know the limit is exceeded.
    const int16_t Reach = std::min<int16_t>(MaxSteps, static_cast<int16_t>(std::max<int16_t>(Limit, 0) + 1));
    for (int16_t Step = 0; Step < Reach; ++Step) {
        auto Frame = std::make_unique<AniFrame>();
        if (!DrawAniStep(Cursor, Step, Frame->Image, Frame->Mask))
            break;
        Frames.push_back(std::move(Frame));
    }
    const auto Count = static_cast<int16_t>(Frames.size());
    if (Count == 0 || Count > Limit) {
        Frames.clear();
        return AniFrameLimit;
    }
    if (!ReadAniData(FileName, Count, Data)) {
        Frames.clear();
        return AniDataFailed;
    }
    return AniOk;
}

} // namespace basANI
