// The EMF route: checks every record of an enhanced metafile, keeps libemf2svg away from the
// text it cannot handle safely, then has it write SVG for the shared renderer.
#include "basMetafileShared.h"

#include <QString>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <mutex>

#include <emf2svg.h>

namespace basPicture::Metafile {
namespace {

// libemf2svg draws ids from rand(): it is entered by one thread at a time.
std::mutex EmfLock;

// Records that carry bitmaps, and where their first (offBmi, cbBmi, offBits, cbBits) field
// sits; the masked copies carry a second set further on.
struct EmfBitmapField {
    uint32_t Type;
    size_t Offset;
};
constexpr EmfBitmapField EmfBitmapFields[] = {
    {76, 84}, {77, 84}, {78, 84}, {78, 112}, {79, 96}, {79, 124}, {80, 48},
    {81, 48}, {93, 16}, {94, 16}, {114, 84}, {116, 84}};

bool EmfBitmapsSane(const uint8_t* Record, uint32_t Type, uint32_t Size)
{
    for (const EmfBitmapField& Field : EmfBitmapFields) {
        if (Field.Type != Type)
            continue;
        if (size_t(Size) < Field.Offset + 16)
            return false;
        const uint32_t OffBmi = ReadU32(Record + Field.Offset), CbBmi = ReadU32(Record + Field.Offset + 4);
        const uint32_t OffBits = ReadU32(Record + Field.Offset + 8), CbBits = ReadU32(Record + Field.Offset + 12);
        if (CbBmi == 0)
            continue;
        if (uint64_t(OffBmi) + CbBmi > Size || uint64_t(OffBits) + CbBits > Size)
            return false;
        if (!DibSane(Record + OffBmi, CbBmi, CbBits, false))
            return false;
    }
    return true;
}

// libemf2svg turns glyph-index text back into characters through fontconfig and then calls
// FcFini, which tears down the font configuration Qt shares in this process (fontconfig
// asserts, or Qt goes on with freed data). Such text runs are left out, and text records too
// short for their fixed fields (whose options libemf2svg would read from the next record)
// refuse the file.
bool TextRecordSafe(uint8_t* Record, uint32_t Type, uint32_t Size)
{
    constexpr uint32_t GlyphIndex = 0x10;
    auto Drop = [&](uint64_t CountAt, uint64_t OptionsAt) {
        if ((ReadU32(Record + OptionsAt) & GlyphIndex) != 0) {
            WriteU32(Record + CountAt, 0);
            WriteU32(Record + OptionsAt, ReadU32(Record + OptionsAt) & ~GlyphIndex);
        }
    };
    switch (Type) {
    case 83: case 84: // EXTTEXTOUTA, -W: character count at 44, options at 52
        if (Size < 76)
            return false;
        Drop(44, 52);
        return true;
    case 108: // SMALLTEXTOUT
        if (Size < 36)
            return false;
        Drop(16, 20);
        return true;
    case 96: case 97: { // POLYTEXTOUTA, -W: a count at 36, then 40-byte entries
        if (Size < 40 || 40 + uint64_t(ReadU32(Record + 36)) * 40 > Size)
            return false;
        for (uint64_t I = 0, Count = ReadU32(Record + 36); I < Count; ++I)
            Drop(40 + I * 40 + 8, 40 + I * 40 + 16);
        return true;
    }
    default:
        return true;
    }
}

} // namespace

// Checks the header and walks every record up to the end record: sizes in range, no record
// beyond the buffer, embedded bitmaps that fit their records.
bool PrepareEmf(ByteVector& Data, EmfLayout& Layout)
{
    const uint8_t* P = Data.data();
    const uint32_t HeaderSize = ReadU32(P + 4), FileBytes = ReadU32(P + 48);
    if (HeaderSize < 88 || HeaderSize % 4 != 0 || FileBytes > Data.size() || HeaderSize > FileBytes)
        return false;
    const uint32_t DescChars = ReadU32(P + 60), DescOffset = ReadU32(P + 64);
    if (DescChars != 0 && (DescOffset < 88 || uint64_t(DescOffset) + uint64_t(DescChars) * 2 > HeaderSize))
        return false;
    size_t Pos = HeaderSize;
    uint32_t Records = 1;
    for (;;) {
        if (FileBytes - Pos < 8)
            return false;
        const uint32_t Type = ReadU32(P + Pos), Size = ReadU32(P + Pos + 4);
        if (Size < 8 || Size % 4 != 0 || Size > FileBytes - Pos || Type < 2 || Type > 122)
            return false;
        if (!EmfBitmapsSane(P + Pos, Type, Size) || !TextRecordSafe(Data.data() + Pos, Type, Size))
            return false;
        ++Records;
        Pos += Size;
        if (Type == 14)
            break;
    }
    Data.resize(Pos);
    // libemf2svg starts with a viewport extent of zero, so a file that switches to an
    // anisotropic mapping and sets only the window extent (GDI keeps the viewport at 1 by 1)
    // collapses to a point. An explicit 1 by 1 extent after the header gives it GDI's default.
    static const uint8_t ViewportExtent[16] = {11, 0, 0, 0, 16, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};
    Data.insert(Data.begin() + HeaderSize, std::begin(ViewportExtent), std::end(ViewportExtent));
    WriteU32(Data.data() + 48, static_cast<uint32_t>(Data.size()));
    WriteU32(Data.data() + 52, Records + 1);
    P = Data.data();

    // The frame, in 0.01 mm, gives the picture's size; libemf2svg maps the bounds (inclusive
    // device pixels) onto its page, and that page is stretched over the picture.
    const int64_t FrameWidth = int64_t(ReadS32(P + 32)) - ReadS32(P + 24);
    const int64_t FrameHeight = int64_t(ReadS32(P + 36)) - ReadS32(P + 28);
    const int64_t BoundsWidth = int64_t(ReadS32(P + 16)) - ReadS32(P + 8);
    const int64_t BoundsHeight = int64_t(ReadS32(P + 20)) - ReadS32(P + 12);
    if (FrameWidth > 0 && FrameHeight > 0) {
        Layout.Width = PixelsFor(double(FrameWidth), 2540.0);
        Layout.Height = PixelsFor(double(FrameHeight), 2540.0);
    } else if (BoundsWidth >= 0 && BoundsHeight >= 0) {
        Layout.Width = PixelsFor(double(BoundsWidth + 1), ScreenDpi);
        Layout.Height = PixelsFor(double(BoundsHeight + 1), ScreenDpi);
    }
    return SizeAllowed(Layout.Width, Layout.Height);
}

bool EmfToSvg(ByteVector& Data, QString& Svg)
{
    static char NoNamespace[] = "";
    generatorOptions Options;
    std::memset(&Options, 0, sizeof Options);
    Options.nameSpace = NoNamespace;
    Options.verbose = false;
    // EMF+ records are skipped: a dual file draws from its EMF records, which the checks above
    // have seen, and libemf2svg reads EMF+ only in part.
    Options.emfplus = false;
    Options.svgDelimiter = true;
    char* Out = nullptr;
    size_t OutLength = 0;
    int Ok;
    {
        std::lock_guard<std::mutex> Guard(EmfLock);
        const size_t Length = Data.size();
        Data.resize(Length + TailPadding);
        Ok = emf2svg(reinterpret_cast<char*>(Data.data()), Length, &Out, &OutLength, &Options);
    }
    bool Good = Ok != 0 && Out && OutLength > 0 && OutLength <= MaxSvgBytes;
    if (Good)
        Svg = QString::fromUtf8(Out, static_cast<qsizetype>(OutLength));
    std::free(Out);
    return Good;
}

} // namespace basPicture::Metafile
