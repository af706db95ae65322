// Metafiles are drawn in two steps: a library turns the records into SVG text (libwmf's SVG
// device for WMF, libemf2svg for EMF) and QSvgRenderer paints that text on white. SVG is the one
// output both libraries write completely and in memory, without an X11 or GD back end, so one
// renderer draws both formats with the same antialiasing and fonts, straight into the picture.
#include "basPicture.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <QXmlStreamReader>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "basMath.h"

// Last: libwmf defines U16, S32 and friends as macros.
#include <emf2svg.h>
#include <libwmf/api.h>
#include <libwmf/svg.h>

namespace basPicture {
namespace {

constexpr double ScreenDpi = 96.0;
constexpr uint32_t PlaceableKey = 0x9AC6CDD7;
constexpr size_t MaxSvgBytes = size_t(64) * 1024 * 1024;
// A compressed bitmap inside a metafile may not claim more pixels than this.
constexpr int64_t MaxPackedBitmapPixels = int64_t(1) << 24;
// The libraries may read a little past what a record describes (a colour table shorter than
// its bit depth implies): zero bytes after the data keep such reads inside the buffer.
constexpr size_t TailPadding = 4096;

// libwmf keeps no documented thread-safety promise and libemf2svg draws ids from rand():
// each library is entered by one thread at a time.
std::mutex WmfLock;
std::mutex EmfLock;

using ByteVector = std::vector<uint8_t>;

uint16_t ReadU16(const uint8_t* P) { return static_cast<uint16_t>(P[0] | (P[1] << 8)); }
int16_t ReadS16(const uint8_t* P) { return static_cast<int16_t>(ReadU16(P)); }
uint32_t ReadU32(const uint8_t* P) { return uint32_t(ReadU16(P)) | (uint32_t(ReadU16(P + 2)) << 16); }
int32_t ReadS32(const uint8_t* P) { return static_cast<int32_t>(ReadU32(P)); }
void WriteU32(uint8_t* P, uint32_t V)
{
    for (int I = 0; I < 4; ++I)
        P[I] = static_cast<uint8_t>(V >> (8 * I));
}

// The pixel size of a length given in units per inch, or -1 when it is out of range.
int PixelsFor(double Length, double UnitsPerInch)
{
    const double Pixels = Length * ScreenDpi / UnitsPerInch;
    if (!(Pixels >= 0.0) || Pixels > MaxPictureSide + 1.0)
        return -1;
    return RoundHalfEven(Pixels);
}

bool SizeAllowed(int Width, int Height)
{
    if (Width <= 0 || Height <= 0 || Width > MaxPictureSide || Height > MaxPictureSide)
        return false;
    const int64_t Stride = (int64_t(Width) * 3 + 3) & ~int64_t(3);
    return Stride * Height <= MaxPictureBytes;
}

// A bitmap embedded in a record: sane sides, a colour table inside the space given for the
// header and, uncompressed, bits inside the space given for them (right after the table when
// BitsFollow). The libraries allocate by these fields before they look at the data.
bool DibSane(const uint8_t* Dib, size_t InfoAvail, size_t BitsAvail, bool BitsFollow)
{
    if (InfoAvail < 12)
        return false;
    const uint32_t HeaderSize = ReadU32(Dib);
    const bool Core = HeaderSize == 12;
    if (!Core && (HeaderSize < 40 || HeaderSize > InfoAvail))
        return false;
    const int64_t Width = Core ? ReadU16(Dib + 4) : ReadS32(Dib + 4);
    const int64_t Height = std::abs(Core ? int64_t(ReadU16(Dib + 6)) : int64_t(ReadS32(Dib + 8)));
    const uint32_t BitCount = ReadU16(Dib + (Core ? 10 : 14)), Compression = Core ? 0 : ReadU32(Dib + 16);
    const uint64_t Used = Core ? 0 : ReadU32(Dib + 32);
    const uint64_t Colours = Used != 0 ? Used : BitCount <= 8 ? uint64_t(1) << BitCount : 0;
    const uint64_t Table = HeaderSize + Colours * (Core ? 3 : 4) + (Compression == 3 && HeaderSize == 40 ? 12 : 0);
    // A table shorter than the depth implies is common; one of a stated size must be there.
    if (Width <= 0 || Height == 0 || Width > MaxPictureSide || Height > MaxPictureSide
        || (Table > InfoAvail && (Used != 0 || BitsFollow)))
        return false;
    if (BitsFollow)
        BitsAvail = InfoAvail - size_t(Table);
    if (Compression == 0 || Compression == 3) {
        const int64_t Row = ((Width * BitCount + 31) / 32) * 4;
        return BitCount != 0 && BitCount <= 32 && Row * Height <= int64_t(BitsAvail);
    }
    return Width * Height <= MaxPackedBitmapPixels;
}

// Checks the bitmap of a bitmap-carrying record. The blits carry one only when they are
// longer than their bare parameters; the 16-bit bitmaps of the old records give width,
// height and bytes per row, with the bits 10 bytes on.
bool WmfBitmapSane(const uint8_t* Record, size_t RecordBytes, uint16_t Function, uint32_t Words)
{
    struct Carrier {
        uint16_t Function;
        uint8_t Offset;
        bool Dib, Optional;
    };
    static constexpr Carrier Carriers[] = {
        {0x0940, 22, true, true},   // DIBBITBLT
        {0x0B41, 26, true, true},   // DIBSTRETCHBLT
        {0x0F43, 28, true, false},  // STRETCHDIB
        {0x0142, 10, true, false},  // DIBCREATEPATTERNBRUSH
        {0x0D33, 24, true, false},  // SETDIBTODEV
        {0x0922, 22, false, true},  // BITBLT
        {0x0B23, 26, false, true},  // STRETCHBLT
        {0x01F9, 6, false, false}}; // CREATEPATTERNBRUSH
    for (const Carrier& C : Carriers) {
        if (C.Function != Function || (C.Optional && Words == uint32_t((Function >> 8) + 3)))
            continue;
        if (size_t(C.Offset) + 12 > RecordBytes)
            return false;
        const uint8_t* Bitmap = Record + C.Offset;
        const size_t Avail = RecordBytes - C.Offset;
        if (C.Dib)
            return DibSane(Bitmap, Avail, 0, true);
        const int Width = ReadS16(Bitmap + 2), Height = ReadS16(Bitmap + 4), RowBytes = ReadS16(Bitmap + 6);
        return Width > 0 && Height > 0 && RowBytes > 0 && int64_t(RowBytes) * Height <= int64_t(Avail) - 10;
    }
    return true;
}

struct WmfLayout {
    bool Placeable = false;
    int Width = 0;  // from the placeable header, else 0
    int Height = 0;
    ByteVector Window; // the file's mapping records and a blit over its window, for placeable files
};

// Records that set up the mapping from logical to device units (with SAVEDC and RESTOREDC),
// and records that put something on the page.
constexpr uint16_t MappingRecords[] = {0x001E, 0x0127, 0x0103, 0x020B, 0x020C, 0x020D,
                                       0x020E, 0x020F, 0x0211, 0x0410, 0x0412};
constexpr uint16_t DrawingRecords[] = {0x0213, 0x0325, 0x0324, 0x0538, 0x041B, 0x061C, 0x0418, 0x0817, 0x081A,
                                       0x0830, 0x0521, 0x0A32, 0x041F, 0x061D, 0x0922, 0x0B23, 0x0940, 0x0B41,
                                       0x0F43, 0x0D33, 0x0228, 0x0429, 0x012B, 0x012A, 0x0419, 0x0548, 0x062F};
template <size_t N> bool IsOneOf(uint16_t Function, const uint16_t (&List)[N])
{
    return std::find(std::begin(List), std::end(List), Function) != std::end(List);
}

// Checks the headers and walks every record up to the end record, so that libwmf only ever
// sees records that lie inside the buffer. Fixes the header's size fields to what the walk
// found (libwmf allocates its record buffer by the largest record size the header claims).
bool PrepareWmf(ByteVector& Data, WmfLayout& Layout)
{
    size_t Base = 0;
    int16_t Frame[4] = {}; // left, top, right, bottom of the placeable header
    if (Data.size() >= 22 && ReadU32(Data.data()) == PlaceableKey) {
        for (int I = 0; I < 4; ++I)
            Frame[I] = ReadS16(Data.data() + 6 + 2 * I);
        const uint16_t Inch = ReadU16(Data.data() + 14);
        if (Inch == 0)
            return false;
        Layout.Placeable = true;
        Layout.Width = PixelsFor(std::abs(Frame[2] - Frame[0]), Inch);
        Layout.Height = PixelsFor(std::abs(Frame[3] - Frame[1]), Inch);
        Base = 22;
    }
    size_t Pos = Base + 18;
    uint32_t LargestWords = 3;
    int32_t Window[4] = {Frame[0], Frame[1], Frame[2] - Frame[0], Frame[3] - Frame[1]}; // origin, extent
    ByteVector Mapping(Data.begin(), Data.begin() + static_cast<std::ptrdiff_t>(Pos));
    uint32_t MappingLargestWords = 9;
    bool Drawing = false;
    for (;;) {
        if (Data.size() - Pos < 6)
            return false;
        const uint8_t* Record = Data.data() + Pos;
        const uint32_t Words = ReadU32(Record);
        const uint16_t Function = ReadU16(Record + 4);
        if (Words < 3 || Words > (Data.size() - Pos) / 2)
            return false;
        LargestWords = std::max(LargestWords, Words);
        Pos += size_t(Words) * 2;
        if (Function == 0)
            break;
        Drawing = Drawing || IsOneOf(Function, DrawingRecords);
        if (!Drawing && (Function == 0x020B || Function == 0x020C) && Words >= 5) { // SETWINDOWORG, -EXT: y, x
            Window[Function == 0x020B ? 0 : 2] = ReadS16(Record + 8);
            Window[Function == 0x020B ? 1 : 3] = ReadS16(Record + 6);
        }
        if (Layout.Placeable && !Drawing && IsOneOf(Function, MappingRecords)) {
            Mapping.insert(Mapping.end(), Record, Record + size_t(Words) * 2);
            MappingLargestWords = std::max(MappingLargestWords, Words);
        }
        if (!WmfBitmapSane(Record, size_t(Words) * 2, Function, Words))
            return false;
    }
    Data.resize(Pos);
    WriteU32(Data.data() + Base + 6, static_cast<uint32_t>((Pos - Base) / 2));
    WriteU32(Data.data() + Base + 12, LargestWords);

    // libwmf maps the extent of what is drawn onto the picture, where Windows maps the window
    // and clips the rest. The records that set the mapping before the first drawing, closed by
    // a blit over the window that leaves the page as it is (raster operation D), tell libwmf's
    // scan where the window lies in its device units.
    const int32_t Left = std::min(Window[0], Window[0] + Window[2]);
    const int32_t Top = std::min(Window[1], Window[1] + Window[3]);
    const int32_t Width = std::abs(Window[2]), Height = std::abs(Window[3]);
    if (Layout.Placeable && Width > 0 && Height > 0 && Left >= INT16_MIN && Top >= INT16_MIN
        && Left + Width <= INT16_MAX && Top + Height <= INT16_MAX) {
        uint8_t Blit[24] = {9, 0, 0, 0, 0x1D, 0x06, 0x29, 0x00, 0xAA, 0x00};
        const int32_t Fields[4] = {Height, Width, Top, Left};
        for (int I = 0; I < 4; ++I) {
            Blit[10 + 2 * I] = static_cast<uint8_t>(Fields[I] & 0xFF);
            Blit[11 + 2 * I] = static_cast<uint8_t>((Fields[I] >> 8) & 0xFF);
        }
        Blit[18] = 3; // the end record
        Mapping.insert(Mapping.end(), std::begin(Blit), std::end(Blit));
        WriteU32(Mapping.data() + Base + 6, static_cast<uint32_t>((Mapping.size() - Base) / 2));
        WriteU32(Mapping.data() + Base + 12, MappingLargestWords);
        Layout.Window = std::move(Mapping);
    }
    return true;
}

// libwmf needs a font file for every face it meets, even to write SVG, and fails the whole
// file without one. The standard faces map onto metric-compatible fonts where installed.
// libwmf caches faces by path, so a file serving two faces gets a distinct "./" spelling.
struct WmfFonts {
    std::vector<std::string> Dirs;
    std::vector<std::string> Names, Files;
    std::vector<char*> DirList;
    std::vector<wmfMapping> Map;
};

const WmfFonts& FontsForWmf()
{
    static const WmfFonts Fonts = [] {
        WmfFonts F;
        static const char* const Dirs[] = {"/usr/share/fonts/truetype/liberation2",
                                           "/usr/share/fonts/truetype/liberation",
                                           "/usr/share/fonts/truetype/dejavu", "/usr/share/fonts/TTF"};
        // Times, Helvetica and Courier in four styles each, then Symbol (on the serif face).
        static const char* const Faces[] = {
            "Times-Roman", "Times-Italic", "Times-Bold", "Times-BoldItalic",
            "Helvetica", "Helvetica-Oblique", "Helvetica-Bold", "Helvetica-BoldOblique",
            "Courier", "Courier-Oblique", "Courier-Bold", "Courier-BoldOblique", "Symbol"};
        static const char* const Liberation[] = {"LiberationSerif-", "LiberationSans-", "LiberationMono-"};
        static const char* const Styles[] = {"Regular", "Italic", "Bold", "BoldItalic"};
        static const char* const DejaVu[] = {"DejaVuSerif", "DejaVuSans", "DejaVuSansMono"};
        static const char* const DejaVuStyles[2][4] = {{"", "-Italic", "-Bold", "-BoldItalic"},
                                                       {"", "-Oblique", "-Bold", "-BoldOblique"}};
        auto Exists = [](const std::string& Path, bool Directory) {
            struct stat Info {};
            return stat(Path.c_str(), &Info) == 0 && (Directory ? S_ISDIR(Info.st_mode) : S_ISREG(Info.st_mode));
        };
        for (const char* Dir : Dirs)
            if (Exists(Dir, true))
                F.Dirs.emplace_back(Dir);
        for (size_t Face = 0; Face < std::size(Faces); ++Face) {
            const size_t Family = Face < 12 ? Face / 4 : 0, Style = Face < 12 ? Face % 4 : 0;
            const std::string Candidates[] = {std::string(Liberation[Family]) + Styles[Style] + ".ttf",
                                              std::string(Liberation[Family]) + "Regular.ttf",
                                              std::string(DejaVu[Family]) + DejaVuStyles[Family != 0][Style] + ".ttf",
                                              std::string(DejaVu[Family]) + ".ttf"};
            for (const std::string& Candidate : Candidates) {
                auto Holds = [&](const std::string& Dir) { return Exists(Dir + "/" + Candidate, false); };
                if (std::none_of(F.Dirs.begin(), F.Dirs.end(), Holds))
                    continue;
                std::string File = Candidate;
                while (std::find(F.Files.begin(), F.Files.end(), File) != F.Files.end())
                    File = "./" + File;
                F.Names.emplace_back(Faces[Face]);
                F.Files.push_back(File);
                break;
            }
        }
        for (std::string& Dir : F.Dirs)
            F.DirList.push_back(Dir.data());
        F.DirList.push_back(nullptr);
        for (size_t I = 0; I < F.Names.size(); ++I)
            F.Map.push_back(wmfMapping{F.Names[I].data(), F.Files[I].data(), FT_ENCODING_NONE});
        F.Map.push_back(wmfMapping{nullptr, nullptr, FT_ENCODING_NONE});
        return F;
    }();
    return Fonts;
}

struct SvgSink {
    std::string Text;
    bool Failed = false;
};

int SinkPuts(char* Text, void* Context)
{
    auto* Sink = static_cast<SvgSink*>(Context);
    try {
        const size_t Length = std::strlen(Text);
        if (Sink->Failed || Sink->Text.size() + Length > MaxSvgBytes) {
            Sink->Failed = true;
            return EOF;
        }
        Sink->Text.append(Text, Length);
        return 0;
    } catch (...) {
        Sink->Failed = true;
        return EOF;
    }
}

int SinkReset(void* Context)
{
    static_cast<SvgSink*>(Context)->Text.clear();
    return 0;
}

// libwmf writes text runs byte for byte (ANSI, unescaped), declares no namespaces, scales
// each bitmap twice (by its size and again by a transform), and fills every shape half
// transparent when the background mode is transparent, which concerns only hatch and text
// backgrounds. This makes its output well-formed and as the metafile means it.
QString TidyWmfSvg(const std::string& Svg)
{
    QString Text = QString::fromLatin1(Svg.data(), static_cast<qsizetype>(Svg.size()));
    Text.replace(QLatin1String("fill-opacity:0.5;"), QLatin1String("fill-opacity:1.0;"));
    const qsizetype Root = Text.indexOf(QLatin1String("<svg "));
    if (Root >= 0)
        Text.insert(Root + 5, QLatin1String("xmlns=\"http://www.w3.org/2000/svg\" "
                                            "xmlns:xlink=\"http://www.w3.org/1999/xlink\" "));
    const QLatin1String ImageTag("<image "), TextTag("<text "), Matrix("\ttransform=\"matrix(");
    QString Out;
    Out.reserve(Text.size());
    qsizetype From = 0, NextImage = Text.indexOf(ImageTag), NextText = Text.indexOf(TextTag);
    while (NextImage >= 0 || NextText >= 0) {
        if (NextImage >= 0 && (NextText < 0 || NextImage < NextText)) {
            const qsizetype Start = Text.indexOf(Matrix, NextImage);
            const qsizetype End = Start < 0 ? -1 : Text.indexOf(QLatin1String("\"\n"), Start + Matrix.size());
            if (End < 0)
                break;
            Out += QStringView(Text).mid(From, Start - From);
            From = End + 2;
            NextImage = Text.indexOf(ImageTag, From);
            continue;
        }
        const qsizetype Open = Text.indexOf(QLatin1String("\n\t>"), NextText);
        const qsizetype Close = Open < 0 ? -1 : Text.indexOf(QLatin1String("</text>\n"), Open);
        if (Close < 0)
            break;
        Out += QStringView(Text).mid(From, Open + 3 - From);
        for (const QChar C : QStringView(Text).mid(Open + 3, Close - Open - 3)) {
            if (C == u'&')
                Out += QLatin1String("&amp;");
            else if (C == u'<')
                Out += QLatin1String("&lt;");
            else if (C == u'>')
                Out += QLatin1String("&gt;");
            else if (C.unicode() >= 0x20 || C == u'\t')
                Out += C;
        }
        From = Close;
        NextText = Text.indexOf(TextTag, From);
        if (NextImage >= 0 && NextImage < From)
            NextImage = Text.indexOf(ImageTag, From);
    }
    Out += QStringView(Text).mid(From);
    return Out;
}

// One libwmf instance writing SVG, fed with a buffer and scanned.
class WmfSession {
public:
    WmfSession(const WmfSession&) = delete;
    WmfSession& operator=(const WmfSession&) = delete;
    explicit WmfSession(ByteVector& Data)
    {
        const WmfFonts& Fonts = FontsForWmf();
        wmfAPI_Options Options;
        std::memset(&Options, 0, sizeof Options);
        Options.function = wmf_svg_function;
        unsigned long Flags = WMF_OPT_FUNCTION | WMF_OPT_IGNORE_NONFATAL | WMF_OPT_NO_ERROR | WMF_OPT_NO_DEBUG;
        if (Fonts.Map.size() > 1) {
            Options.fontdirs = const_cast<char**>(Fonts.DirList.data());
            Options.font.ps = const_cast<wmfMapping*>(Fonts.Map.data());
            Flags |= WMF_OPT_FONTDIRS | WMF_OPT_FONTMAP;
        }
        if (wmf_api_create(&Api, Flags, &Options) != wmf_E_None)
            return;
        const size_t Length = Data.size();
        Data.resize(Length + TailPadding);
        Opened = wmf_mem_open(Api, Data.data(), static_cast<long>(Length)) == wmf_E_None;
        Scanned = Opened && wmf_scan(Api, 0, &Box) == wmf_E_None && Box.BR.x > Box.TL.x && Box.BR.y > Box.TL.y;
    }
    ~WmfSession()
    {
        if (Opened)
            wmf_mem_close(Api);
        if (Api)
            wmf_api_destroy(Api);
    }
    wmfAPI* Api = nullptr;
    bool Opened = false;
    bool Scanned = false;
    wmfD_Rect Box{};
};

bool WmfToSvg(ByteVector& Data, WmfLayout& Layout, QString& Svg, int& Width, int& Height)
{
    std::lock_guard<std::mutex> Guard(WmfLock);
    wmfD_Rect Page{};
    bool HasPage = false;
    if (!Layout.Window.empty()) {
        WmfSession Window(Layout.Window);
        HasPage = Window.Scanned;
        Page = Window.Box;
    }
    WmfSession Session(Data);
    if (!Session.Scanned)
        return false;
    Width = Layout.Width;
    Height = Layout.Height;
    if (!Layout.Placeable) {
        unsigned int DisplayWidth = 0, DisplayHeight = 0;
        if (wmf_display_size(Session.Api, &DisplayWidth, &DisplayHeight, ScreenDpi, ScreenDpi) != wmf_E_None)
            return false;
        Width = static_cast<int>(std::min<unsigned int>(DisplayWidth, MaxPictureSide + 1u));
        Height = static_cast<int>(std::min<unsigned int>(DisplayHeight, MaxPictureSide + 1u));
    }
    if (!SizeAllowed(Width, Height))
        return false;
    SvgSink Sink;
    wmfStream Stream{&Sink, SinkPuts, SinkReset};
    wmf_svg_t* Device = WMF_SVG_GetData(Session.Api);
    Device->flags |= WMF_SVG_INLINE_IMAGES;
    Device->out = &Stream;
    Device->bbox = HasPage ? Page : Session.Box;
    Device->width = static_cast<unsigned int>(Width);
    Device->height = static_cast<unsigned int>(Height);
    const bool Ok = wmf_play(Session.Api, 0, &Session.Box) == wmf_E_None && !Sink.Failed;
    Device->out = nullptr;
    if (Ok)
        Svg = TidyWmfSvg(Sink.Text);
    return Ok;
}

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

struct EmfLayout {
    int Width = 0;
    int Height = 0;
};

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

bool RenderSvg(const QString& Svg, int Width, int Height, StdPicture& Picture)
{
    QXmlStreamReader Reader(Svg);
    QSvgRenderer Renderer(&Reader);
    if (!Renderer.isValid())
        return false;
    QImage Image(Width, Height, QImage::Format_BGR888);
    if (Image.isNull())
        return false;
    Image.fill(Qt::white);
    {
        QPainter Painter(&Image);
        Painter.setRenderHint(QPainter::Antialiasing);
        Painter.setRenderHint(QPainter::SmoothPixmapTransform);
        Renderer.render(&Painter, QRectF(0, 0, Width, Height));
    }
    Picture = StdPicture(Image.convertToFormat(QImage::Format_BGR888), 24);
    return true;
}

bool IsEmf(const QByteArray& Bytes)
{
    const auto* P = reinterpret_cast<const uint8_t*>(Bytes.constData());
    return Bytes.size() >= 88 && ReadU32(P) == 1 && ReadU32(P + 40) == 0x464D4520;
}

// A Windows metafile has no signature of its own: the placeable key, or a standard header
// whose type, size and version fields hold the only values they may hold.
bool IsWmf(const QByteArray& Bytes)
{
    const auto* P = reinterpret_cast<const uint8_t*>(Bytes.constData());
    const qsizetype Base = Bytes.size() >= 22 && ReadU32(P) == PlaceableKey ? 22 : 0;
    if (Bytes.size() < Base + 18)
        return false;
    const uint16_t FileType = ReadU16(P + Base), HeaderWords = ReadU16(P + Base + 2);
    const uint16_t Version = ReadU16(P + Base + 4);
    return (FileType == 1 || FileType == 2) && HeaderWords == 9 && (Version == 0x0100 || Version == 0x0300);
}

} // namespace

bool LoadMetafileFromMemory(const QByteArray& Bytes, StdPicture& Picture)
{
    const bool Enhanced = IsEmf(Bytes);
    if (!Enhanced && !IsWmf(Bytes))
        return false;
    // Painting text needs the font database, which exists only with a GUI application.
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return false;
    try {
        const auto* Begin = reinterpret_cast<const uint8_t*>(Bytes.constData());
        ByteVector Data(Begin, Begin + Bytes.size());
        QString Svg;
        if (Enhanced) {
            EmfLayout Layout;
            return PrepareEmf(Data, Layout) && EmfToSvg(Data, Svg)
                && RenderSvg(Svg, Layout.Width, Layout.Height, Picture);
        }
        WmfLayout Layout;
        int Width = 0, Height = 0;
        return PrepareWmf(Data, Layout) && WmfToSvg(Data, Layout, Svg, Width, Height)
            && RenderSvg(Svg, Width, Height, Picture);
    } catch (...) {
        return false;
    }
}

} // namespace basPicture
