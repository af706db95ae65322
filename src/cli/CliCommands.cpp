#include "CliCommands.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include "basGIFpublic.h"
#include "basMath.h"
#include "basReduce.h"
#include "clsDIB.h"
#include "clsGIF.h"
#include "clsPal.h"
#include "clsPalDither.h"

namespace CliCommands {

namespace {

// The program's own messages for what went wrong.
const char* const MsgFileNotFound = "File not found";
const char* const MsgLoadFailed = "Failed to retrieve incoming image";
const char* const MsgSaveFailed = "Failed to save this file.";

bool IsGifName(const QString& Name)
{
    return Name.toUpper().endsWith(".GIF");
}

bool ParseInt(const QString& Text, int Low, int High, int& Value)
{
    bool Ok = false;
    Value = Text.toInt(&Ok);
    return Ok && Value >= Low && Value <= High;
}

bool IsBmpName(const QString& Name)
{
    return Name.toUpper().endsWith(".BMP");
}

// The pixel routines work on 32 bits a pixel: a surface of any depth is painted on one.
bool To32(clsDIB& From, clsDIB& To)
{
    if (!To.CreateBlankDIB(From.DIBWidth(), From.DIBHeight(), 32, 0xFFFFFF, false, true))
        return false;
    To.PaintFromDIBtoDIB(From, To, 0, 0, From.DIBWidth(), From.DIBHeight());
    To.setDIBhasAlpha(From.DIBhasAlpha());
    return true;
}

int Save(clsDIB& Dib, const QString& FileName, QTextStream& Err)
{
    return Dib.Save_DIB_To_File(FileName, Dib) ? ExitOk : Fail(Err, MsgSaveFailed);
}

// Any picture as a GIF of at most 256 colours, through the palette work file in a folder of its own.
int SaveGif(clsDIB& Dib, const QString& FileName, QTextStream& Err)
{
    QTemporaryDir Work;
    clsPal Pal;
    if (!Work.isValid() || !basGIFpublic::ReduceToPaletteFile(Dib, Pal, FileArgument(Work.path())) ||
        !clsGIF().SaveGIFFrom_BPP8_DIB(FileArgument(FileName), Dib, Pal, false, -1, false))
        return Fail(Err, MsgSaveFailed);
    return ExitOk;
}

// Reads a GIF file; on a refusal prints the reader's message and answers false.
bool LoadGif(const QString& FileName, clsGIF& Gif, QTextStream& Err)
{
    const int16_t Code = Gif.LoadFromGIFFile(FileArgument(FileName));
    if (Code != 0) {
        Err << QString::fromStdString(clsGIF::ErrMessageText(Code, FileArgument(FileName)));
        Err.flush();
    }
    return Code == 0;
}

int GifInfo(const QStringList& A, QTextStream& Out, QTextStream& Err)
{
    clsGIF Gif;
    if (!LoadGif(A[2], Gif, Err))
        return ExitFailure;
    QString Comment = QString::fromStdString(Gif.CommentText());
    // Line breaks of a comment are shown escaped, so that the answer keeps one line a field.
    Comment.replace("\r", "\\r").replace("\n", "\\n");
    Out << "version: " << QString::fromStdString(Gif.GIFVersion()) << "\n";
    Out << "screen: " << Gif.BgdWidth() << " x " << Gif.BgdHeight() << "\n";
    Out << "background: " << int(Gif.BgdColorIndex()) << "\n";
    Out << "loops: " << Gif.NetscapeLoops() << "\n";
    Out << "global-palette: " << (Gif.GlobalPaletteExists() ? Gif.GlobalPaletteEntries() : 0) << "\n";
    Out << "comment: " << Comment << "\n";
    Out << "frames: " << Gif.FramesCount() << "\n";
    for (int16_t F = 1; F <= Gif.FramesCount(); ++F) {
        Out << "frame " << F << ": " << Gif.FrameWidth(F) << " x " << Gif.FrameHeight(F) << ", left "
            << Gif.FrameLeft(F) << ", top " << Gif.FrameTop(F) << ", delay " << Gif.FrameDelay(F) << ", disposal "
            << int(Gif.FrameDisposalMethod(F)) << ", transparent "
            << (Gif.FrameUseTransparentColor(F) ? QString::number(Gif.FrameTransparentColorIndex(F)) : "-")
            << ", interlaced " << (Gif.FrameInterlaced(F) ? "yes" : "no") << ", palette "
            << (Gif.LocalPaletteUsed(F) ? QString::number(Gif.LocalPaletteEntries(F)) : "global") << "\n";
    }
    Out.flush();
    return ExitOk;
}

// Each frame's indexes in its colours, transparent pixels with alpha 0, as 001.bmp, 002.bmp, ...
int GifFrames(const QStringList& A, QTextStream& Out, QTextStream& Err)
{
    clsGIF Gif;
    if (!LoadGif(A[2], Gif, Err))
        return ExitFailure;
    const QDir Folder(A[3]);
    if (!Folder.mkpath("."))
        return Fail(Err, MsgSaveFailed);
    for (int16_t F = 1; F <= Gif.FramesCount(); ++F) {
        clsDIB& Image = Gif.FrameDIBXOR(F);
        clsDIB Frame;
        if (!Image.DIBBitsPtr() || !Frame.CreateBlankDIB(Image.DIBWidth(), Image.DIBHeight(), 32, 0, false, true))
            continue;
        const bool Transparent = Gif.FrameUseTransparentColor(F);
        for (int Y = 0; Y < Image.DIBHeight(); ++Y) {
            const uint8_t* Index = Image.DIBhDC()->Row(Y);
            uint8_t* Pixel = Frame.DIBhDC()->Row(Y);
            for (int X = 0; X < Image.DIBWidth(); ++X, Pixel += 4) {
                const uint32_t Color = Gif.LocalPaletteColor(F, Index[X]);
                Pixel[0] = ColorB(Color);
                Pixel[1] = ColorG(Color);
                Pixel[2] = ColorR(Color);
                Pixel[3] = Transparent && Index[X] == Gif.FrameTransparentColorIndex(F) ? 0 : 255;
            }
        }
        Frame.setDIBhasAlpha(true);
        if (!Frame.Save_DIB_To_File(Folder.filePath(QString("%1.bmp").arg(F, 3, 10, QChar('0'))), Frame))
            return Fail(Err, MsgSaveFailed);
    }
    Out << "frames: " << Gif.FramesCount() << "\n";
    Out.flush();
    return ExitOk;
}

int Gif(const QStringList& A, QTextStream& Out, QTextStream& Err)
{
    if (A.size() == 3 && A[1] == "info")
        return GifInfo(A, Out, Err);
    if (A.size() == 4 && A[1] == "frames")
        return GifFrames(A, Out, Err);
    return Usage(Err, "gif takes info FILE or frames FILE DIR");
}

int Info(const QStringList& A, QTextStream& Out, QTextStream& Err)
{
    if (A.size() != 2)
        return Usage(Err, "info takes one file");
    clsDIB Dib;
    if (!Load(A[1], Dib, Err))
        return ExitFailure;
    Out << "size: " << Dib.DIBWidth() << " x " << Dib.DIBHeight() << "\n";
    Out << "depth: " << Dib.DIBbpp() << "\n";
    Out << "colors: " << Dib.CountColorsDIB(Dib) << "\n";
    Out << "actual-bpp: " << Dib.BPPperActualDIB(Dib) << "\n";
    Out << "alpha: " << (Dib.DIBhasAlpha() ? "yes" : "no") << "\n";
    Out.flush();
    return ExitOk;
}

int Convert(const QStringList& Arguments, QTextStream& Err)
{
    // Options may stand anywhere after the command; two names remain: the input and the output.
    QStringList Names;
    basReduce::Recipe Plan;
    bool Reduced = false, PaletteGiven = false, DitherGiven = false;
    const QString Why = QStringLiteral(
        "convert takes an input file and an output .bmp or .gif file, with --bpp 1|4|8 and its --palette or "
        "--dither for .bmp");
    for (int I = 1; I < Arguments.size(); ++I) {
        const QString& A = Arguments[I];
        const bool HasValue = I + 1 < Arguments.size();
        if (A == "--bpp") {
            if (!HasValue || !ParseInt(Arguments[++I], 1, 8, Plan.Bpp) || (Plan.Bpp != 1 && Plan.Bpp != 4 && Plan.Bpp != 8))
                return Usage(Err, Why);
            Reduced = true;
        } else if (A == "--palette") {
            if (!HasValue || !basReduce::ParsePalette(Arguments[++I], Plan))
                return Usage(Err, Why);
            PaletteGiven = true;
        } else if (A == "--dither") {
            if (!HasValue || !basReduce::ParseDither(Arguments[++I], Plan))
                return Usage(Err, Why);
            DitherGiven = true;
        } else {
            Names << A;
        }
    }
    // A palette belongs to 4 and 8 bits, a black-and-white method to 1 bit.
    if (Names.size() != 2 || !(IsBmpName(Names[1]) || (IsGifName(Names[1]) && !Reduced)) ||
        ((PaletteGiven || DitherGiven) && !Reduced) ||
        (PaletteGiven && Plan.Bpp == 1) || (DitherGiven && Plan.Bpp != 1))
        return Usage(Err, Why);
    if (Reduced && Plan.Bpp == 4 && !PaletteGiven)
        Plan.Palette = basReduce::PaletteKind::Standard16;
    clsDIB Dib;
    if (!Load(Names[0], Dib, Err))
        return ExitFailure;
    if (IsGifName(Names[1]))
        return SaveGif(Dib, Names[1], Err);
    if (!Reduced)
        return Save(Dib, Names[1], Err);
    clsDIB Surface;
    clsPal Pal;
    clsPalDither Dither;
    if (!To32(Dib, Surface))
        return Fail(Err, MsgSaveFailed);
    if (!basReduce::Reduce(Surface, Plan, Pal, Dither))
        return Fail(Err, QStringLiteral("The palette does not fit %1 bits.").arg(Plan.Bpp));
    return Surface.Save_BMP_To_File_With_PAL(Names[1], Surface, Pal, Dither, static_cast<int16_t>(Plan.Bpp))
               ? ExitOk
               : Fail(Err, MsgSaveFailed);
}

int Rotate(const QStringList& A, QTextStream& Err)
{
    int Mode = 0;
    if (A.size() != 4 || !ParseInt(A[1], 0, 3, Mode) || !IsBmpName(A[3]))
        return Usage(Err, "rotate takes a mode from 0 to 3, an input file and an output .bmp file");
    clsDIB Dib;
    if (!Load(A[2], Dib, Err))
        return ExitFailure;
    Dib.RotateDIB(Dib, static_cast<int16_t>(Mode));
    return Save(Dib, A[3], Err);
}

int Resize(const QStringList& A, QTextStream& Err)
{
    int Width = 0, Height = 0;
    if (A.size() != 5 || !ParseInt(A[1], 1, 32767, Width) || !ParseInt(A[2], 1, 32767, Height) || !IsBmpName(A[4]))
        return Usage(Err, "resize takes a width and a height from 1 to 32767, an input file and an output .bmp file");
    clsDIB Loaded, Source, Target;
    if (!Load(A[3], Loaded, Err))
        return ExitFailure;
    if (!To32(Loaded, Source) || !Target.CreateBlankDIB(Width, Height, 32, 0xFFFFFF, false, true))
        return Fail(Err, MsgSaveFailed);
    Target.StretchPaintFromDIBtoDIB_Antialias_NativeDB(Source, Target);
    return Save(Target, A[4], Err);
}

} // namespace

std::string FileArgument(const QString& Name)
{
    return QFile::encodeName(Name).toStdString();
}

int Usage(QTextStream& Err, const QString& Why)
{
    Err << "tessavo-cli: " << Why << "\n" << UsageText();
    Err.flush();
    return ExitUsage;
}

int Fail(QTextStream& Err, const QString& Message)
{
    Err << Message << "\n";
    Err.flush();
    return ExitFailure;
}

bool Load(const QString& FileName, clsDIB& Dib, QTextStream& Err)
{
    if (!QFileInfo(FileName).isFile()) {
        Fail(Err, MsgFileNotFound);
        return false;
    }
    if (!LoadOwnFormat(FileName, Dib) && !Dib.CreateDIBFromFile(FileName, false)) {
        Fail(Err, MsgLoadFailed);
        return false;
    }
    return true;
}

QString UsageText()
{
    return QStringLiteral(
        "Usage: tessavo-cli COMMAND ARGUMENTS\n"
        "\n"
        "  info FILE                  size, depth, colour count, smallest depth and alpha of a picture\n"
        "  convert IN OUT.bmp         load a picture and write it as a 24-bit (or 32-bit with alpha) BMP\n"
        "    --bpp 1|4|8              reduce the colours first and write a paletted BMP:\n"
        "    --palette NAME           for 4 and 8 bits: optimal (8-bit default), exact, 16 (4-bit default),\n"
        "                             grays, halftone:0..4, websafe\n"
        "    --dither NAME            for 1 bit: stucki (default), floyd, burke, ordered\n"
        "  convert IN OUT.gif         load a picture, reduce it to 256 colours or fewer and write a GIF\n"
        "  convert IN OUT.png         load a picture and write it as a PNG\n"
        "    --bpp 8|24               24 (default): true colour; 8: reduced to 256 colours or fewer, paletted\n"
        "  gif info FILE              the screen, loops, palette and comment of a GIF, and one line a frame\n"
        "  gif frames FILE DIR        each frame of a GIF in its colours as a 32-bit BMP: DIR/001.bmp, ...\n"
        "  png tags FILE              one line a chunk of a PNG: type/length/stored CRC in hexadecimal\n"
        "  png decode FILE OUT.bmp    a PNG as a BMP: 32-bit with alpha when the picture has alpha,\n"
        "                             24-bit otherwise\n"
        "  convert IN OUT.tga         load a picture and write it as an uncompressed 24-bit TGA\n"
        "  convert IN OUT.pcx         load a picture and write it as a 24-bit PCX\n"
        "    --compress               run-length encoded\n"
        "  convert IN OUT.ico|.cur    load a picture and write it as an icon or a cursor\n"
        "    --size N                 icon side: 12, 16, 24, 32 (default), 48 or 64; a cursor is 32\n"
        "    --transparent RRGGBB     pixels of this colour become transparent\n"
        "    --hotspot X,Y            a cursor's hotspot, each from 0 to 31 (default 0,0)\n"
        "  ico info FILE              the icon editor's status of an icon or cursor, then a line an image\n"
        "  ico extract FILE DIR       each image as a 32-bit BMP with alpha: DIR/001.bmp, ...\n"
        "    --ico                    each image as a single-image icon instead\n"
        "  ani info FILE              frames, jiffies, sequence and hotspot of an animated cursor\n"
        "  ani extract FILE DIR       each frame at 32 x 32 as a 32-bit BMP with alpha\n"
        "  pe icons FILE DIR          every icon group of a DLL or EXE as an icon file: DIR/001.ico, ...\n"
        "  rotate MODE IN OUT.bmp     0 mirror left to right, 1 top to bottom, 2 quarter turn\n"
        "                             counter-clockwise, 3 quarter turn clockwise\n"
        "  resize W H IN OUT.bmp      bilinear resampling to W x H pixels\n"
        "  --help                     this text\n"
        "\n"
        "Exit status: 0 done, 1 the file could not be read or written, 2 wrong usage.\n");
}

int Run(const QStringList& Arguments, QTextStream& Out, QTextStream& Err)
{
    if (Arguments.isEmpty())
        return Usage(Err, "no command given");
    const QString& Command = Arguments[0];
    if (Command == "--help" || Command == "-h" || Command == "help") {
        Out << UsageText();
        Out.flush();
        return ExitOk;
    }
    if (Command == "info")
        return Info(Arguments, Out, Err);
    if (Command == "convert")
        return IsPngConvert(Arguments)    ? ConvertPng(Arguments, Err)
               : IsIconConvert(Arguments) ? ConvertIcon(Arguments, Err)
                                          : Convert(Arguments, Err);
    if (Command == "rotate")
        return Rotate(Arguments, Err);
    if (Command == "resize")
        return Resize(Arguments, Err);
    if (Command == "gif")
        return Gif(Arguments, Out, Err);
    if (Command == "png")
        return Png(Arguments, Out, Err);
    if (Command == "ico")
        return Ico(Arguments, Out, Err);
    if (Command == "ani")
        return Ani(Arguments, Out, Err);
    if (Command == "pe")
        return Pe(Arguments, Out, Err);
    return Usage(Err, "unknown command \"" + Command + "\"");
}

} // namespace CliCommands
