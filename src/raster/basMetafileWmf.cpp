// The WMF route: checks every record of a Windows metafile, then has libwmf's SVG device
// write it out for the shared renderer.
#include "basMetafileShared.h"

#include <QString>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <mutex>
#include <string>
#include <sys/stat.h>
#include <vector>

// Last: libwmf defines U16, S32 and friends as macros.
#include <libwmf/api.h>
#include <libwmf/svg.h>

namespace basPicture::Metafile {
namespace {

// libwmf keeps no documented thread-safety promise: it is entered by one thread at a time.
std::mutex WmfLock;

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

} // namespace

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

namespace {

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

} // namespace

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

} // namespace basPicture::Metafile
