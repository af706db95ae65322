// tessavo-cli's PNG commands: the chunk list and the decoded picture of a PNG file through the
// program's own reader, and any picture written as a 24-bit or paletted 8-bit PNG.
#include <QTemporaryDir>

#include "CliCommands.h"
#include "basGIFpublic.h"
#include "clsDIB.h"
#include "clsPNG.h"
#include "clsPal.h"

namespace CliCommands {

namespace {

const char* const MsgLoadFailed = "Failed to retrieve incoming image";
const char* const MsgSaveFailed = "Failed to save this file.";

bool EndsWith(const QString& Name, const char* Ext)
{
    return Name.toUpper().endsWith(QLatin1String(Ext));
}

// The reader's refusal in its own words.
int FailOpen(QTextStream& Err, int32_t Code)
{
    return Fail(Err, QString::fromStdString(clsPNG::ErrMsgOpenText(static_cast<int16_t>(Code))));
}

int PngTags(const QString& FileName, QTextStream& Out, QTextStream& Err)
{
    clsPNG Png;
    std::vector<std::string> Tags;
    const int32_t Code = Png.OpenPNG_GetTagData(FileArgument(FileName), Tags);
    if (Code != 0)
        return FailOpen(Err, Code);
    for (const std::string& Tag : Tags)
        Out << QString::fromStdString(Tag) << "\n";
    Out.flush();
    return ExitOk;
}

int PngDecode(const QString& FileName, const QString& Target, QTextStream& Err)
{
    clsPNG Png;
    const int32_t Code = Png.OpenPNG(FileArgument(FileName));
    if (Code != 0)
        return FailOpen(Err, Code);
    clsDIB Picture;
    if (Png.WorkingDepth() == 0 || !Picture.CreateBlankDIB(Png.Width(), Png.Height(), 32, 0xFFFFFF, false, true))
        return Fail(Err, MsgLoadFailed);
    Png.DrawPNG(Picture.DIBhDC(), 0, 0, 0, 0);
    // The BMP writer keeps the fourth byte only for a surface that says it has alpha.
    Picture.setDIBhasAlpha(Png.WorkingDepth() == 32);
    return Picture.Save_DIB_To_File(Target, Picture) ? ExitOk : Fail(Err, MsgSaveFailed);
}

// The command line's names once the options and their values are taken out.
QStringList Names(const QStringList& Arguments)
{
    QStringList Result;
    for (int I = 1; I < Arguments.size(); ++I) {
        if (Arguments[I] == "--bpp" || Arguments[I] == "--palette" || Arguments[I] == "--dither")
            ++I;
        else
            Result << Arguments[I];
    }
    return Result;
}

} // namespace

int Png(const QStringList& A, QTextStream& Out, QTextStream& Err)
{
    if (A.size() == 3 && A[1] == "tags")
        return PngTags(A[2], Out, Err);
    if (A.size() == 4 && A[1] == "decode" && EndsWith(A[3], ".BMP"))
        return PngDecode(A[2], A[3], Err);
    return Usage(Err, "png takes tags FILE or decode FILE OUT.bmp");
}

bool IsPngConvert(const QStringList& Arguments)
{
    const QStringList Given = Names(Arguments);
    return Given.size() == 2 && EndsWith(Given[1], ".PNG");
}

int ConvertPng(const QStringList& Arguments, QTextStream& Err)
{
    const QString Why = QStringLiteral("convert to .png takes an input file and an output .png file, with --bpp 8|24");
    int Bpp = 24;
    for (int I = 1; I < Arguments.size(); ++I) {
        if (Arguments[I] == "--bpp") {
            const QString Value = I + 1 < Arguments.size() ? Arguments[++I] : QString();
            if (Value != "8" && Value != "24")
                return Usage(Err, Why);
            Bpp = Value.toInt();
        } else if (Arguments[I].startsWith("--")) {
            return Usage(Err, Why);
        }
    }
    const QStringList Given = Names(Arguments);
    if (Given.size() != 2)
        return Usage(Err, Why);
    clsDIB Dib;
    if (!Load(Given[0], Dib, Err))
        return ExitFailure;
    if (Bpp == 8) {
        // The same reduction as a GIF's: the exact colours of a small picture, an optimal
        // dithered palette otherwise; the writer takes the indexes and the table as they are.
        QTemporaryDir Work;
        clsPal Pal;
        if (!Work.isValid() || !basGIFpublic::ReduceToPaletteFile(Dib, Pal, FileArgument(Work.path())))
            return Fail(Err, MsgSaveFailed);
    }
    clsPNG Png;
    const int32_t Code =
        Png.SavePNG(FileArgument(Given[1]), Dib.DIBhDC(), Dib.DIBWidth(), Dib.DIBHeight(), static_cast<int16_t>(Bpp));
    if (Code == clsPNG::ErrSaveDepth || Code == clsPNG::ErrSaveReadOnly)
        return Fail(Err, QString::fromStdString(clsPNG::ErrMsgSaveText(static_cast<int16_t>(Code))));
    return Code == 0 ? ExitOk : Fail(Err, MsgSaveFailed);
}

} // namespace CliCommands
