// tessavo-cli's icon commands: what an icon, cursor, animated cursor or resource file holds,
// their images taken out as 32-bit BMP files with alpha (or as icons), and pictures written as
// TGA, PCX, icons and cursors.
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <algorithm>

#include "Array2D.h"
#include "CliCommands.h"
#include "basANI.h"
#include "basIconCursor.h"
#include "basMath.h"
#include "basPEResource.h"
#include "clsICO.h"
#include "clsPCX.h"
#include "clsTGA.h"

namespace CliCommands {

namespace {

const char* const MsgSaveFailed = "Failed to save this file.";

QString Ext(const QString& Name) { return Name.section(QLatin1Char('.'), -1).toLower(); }

QString Numbered(const QDir& Folder, int N, const char* Suffix)
{
    return Folder.filePath(QStringLiteral("%1.%2").arg(N, 3, 10, QChar('0')).arg(QLatin1String(Suffix)));
}

// A 32-bit picture with alpha from an image and its mask: clear where the mask is white, and
// elsewhere the image's own alpha values where it has them.
bool SaveWithAlpha(const clsDIB& Image, const clsDIB& Mask, const Array2D<uint8_t>& Alpha, const QString& Name)
{
    const int W = Image.DIBWidth(), H = Image.DIBHeight();
    clsDIB Out;
    if (!Out.CreateBlankDIB(W, H, 32, 0, false, true))
        return false;
    const bool OwnAlpha = Alpha.Width() == W && Alpha.Height() == H;
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X) {
            const uint32_t Color = Image.DIBhDC()->GetPixel(X, Y);
            const bool Clear = Mask.DIBhDC() && Mask.DIBhDC()->GetPixel(X, Y) == 0xFFFFFF;
            uint8_t* P = Out.DIBhDC()->Row(Y) + X * 4;
            P[0] = ColorB(Color);
            P[1] = ColorG(Color);
            P[2] = ColorR(Color);
            P[3] = Clear ? 0 : OwnAlpha ? Alpha(X, Y) : 255;
        }
    Out.setDIBhasAlpha(true);
    return Out.Save_DIB_To_File(Name, Out);
}

bool MakeFolder(const QString& Name, QDir& Folder)
{
    Folder = QDir(Name);
    return Folder.mkpath(QStringLiteral("."));
}

int IcoInfo(const QString& FileName, QTextStream& Out, QTextStream& Err)
{
    basIconCursor::IconRecord Record;
    const std::string Status = basIconCursor::ReadIconFileStatus(FileArgument(FileName), Record, false);
    clsICO Ico;
    if (!Ico.OpenICO(FileArgument(FileName)))
        return Fail(Err, QStringLiteral("Invalid icon file."));
    Out << "status: " << QString::fromStdString(Status) << "\n";
    Out << "type: " << (Ico.FileType() == 2 ? "cursor" : "icon") << "\n";
    Out << "images: " << Ico.IconCount() << "\n";
    for (int16_t I = 0; I < Ico.IconCount(); ++I) {
        Out << I << ": " << Ico.IconWidth(I) << " x " << Ico.IconHeight(I) << ", " << Ico.IconBPP(I) << " bpp, "
            << Ico.IconBytesInRes(I) << " bytes";
        if (Ico.FileType() == 2)
            Out << ", hotspot " << Ico.HotSpotX(I) << "," << Ico.HotSpotY(I);
        Out << "\n";
    }
    Out.flush();
    return ExitOk;
}

int IcoExtract(const QString& FileName, const QString& DirName, bool AsIcons, QTextStream& Out, QTextStream& Err)
{
    clsICO Ico;
    if (!Ico.OpenICO(FileArgument(FileName)))
        return Fail(Err, QStringLiteral("Invalid icon file."));
    QDir Folder;
    if (!MakeFolder(DirName, Folder))
        return Fail(Err, MsgSaveFailed);
    for (int16_t I = 0; I < Ico.IconCount(); ++I) {
        bool Saved = false;
        if (AsIcons) {
            Saved = Ico.SaveICO_Single(I, FileArgument(Numbered(Folder, I + 1, "ico")));
        } else {
            Array2D<uint8_t> Alpha;
            Ico.getArrayAlpha(I, Alpha);
            const clsDIB* Image = Ico.DIBXOR(I);
            const clsDIB* Mask = Ico.DIBAND(I);
            Saved = Image && Mask && SaveWithAlpha(*Image, *Mask, Alpha, Numbered(Folder, I + 1, "bmp"));
        }
        if (!Saved)
            return Fail(Err, MsgSaveFailed);
    }
    Out << "images: " << Ico.IconCount() << "\n";
    Out.flush();
    return ExitOk;
}

int AniInfo(const QString& FileName, QTextStream& Out, QTextStream& Err)
{
    basANI::AniCursor Cursor;
    if (!basANI::LoadAniCursor(FileArgument(FileName), Cursor))
        return Fail(Err, QStringLiteral("Invalid ANI file."));
    const int16_t Steps = basANI::CountAniSteps(Cursor);
    basANI::AniData Data;
    if (Steps < 1 || !basANI::ReadAniData(FileArgument(FileName), Steps, Data))
        return Fail(Err, QString::fromStdString(basANI::FrameLimitMessage(basANI::MaxSteps)));
    QStringList Jiffies, Sequence;
    for (uint8_t J : Data.Jiffies)
        Jiffies << QString::number(J);
    for (int32_t S : Cursor.Sequence)
        Sequence << QString::number(S);
    Out << "frames: " << Steps << "\n";
    Out << "icons: " << Cursor.Frames.size() << "\n";
    Out << "jiffies: " << Jiffies.join(' ') << "\n";
    Out << "sequence: " << (Sequence.isEmpty() ? QStringLiteral("in order") : Sequence.join(' ')) << "\n";
    Out << "hotspot: " << (Data.HasHotspot ? QStringLiteral("%1,%2").arg(Data.HotspotX).arg(Data.HotspotY)
                                             : QStringLiteral("none"))
        << "\n";
    Out.flush();
    return ExitOk;
}

int AniExtract(const QString& FileName, const QString& DirName, QTextStream& Out, QTextStream& Err)
{
    basANI::AniCursor Cursor;
    if (!basANI::LoadAniCursor(FileArgument(FileName), Cursor))
        return Fail(Err, QStringLiteral("Invalid ANI file."));
    QDir Folder;
    if (!MakeFolder(DirName, Folder))
        return Fail(Err, MsgSaveFailed);
    int16_t Step = 0;
    for (; Step < basANI::MaxSteps; ++Step) {
        clsDIB Image, Mask;
        if (!basANI::DrawAniStep(Cursor, Step, Image, Mask))
            break;
        if (!SaveWithAlpha(Image, Mask, Array2D<uint8_t>(), Numbered(Folder, Step + 1, "bmp")))
            return Fail(Err, MsgSaveFailed);
    }
    Out << "frames: " << Step << "\n";
    Out.flush();
    return ExitOk;
}

int PeIcons(const QString& FileName, const QString& DirName, QTextStream& Out, QTextStream& Err)
{
    basPEResource::IconResources Resources;
    if (!basPEResource::ReadIconResources(FileArgument(FileName), Resources))
        return Fail(Err, QStringLiteral("No icon in this file"));
    QDir Folder;
    if (!MakeFolder(DirName, Folder))
        return Fail(Err, MsgSaveFailed);
    int Written = 0;
    for (int32_t G = 0; G < basPEResource::IconGroupCount(Resources); ++G) {
        std::vector<uint8_t> Ico;
        if (!basPEResource::GroupIconFile(Resources, G, Ico))
            continue;
        QFile File(Numbered(Folder, G + 1, "ico"));
        if (!File.open(QIODevice::WriteOnly) ||
            File.write(reinterpret_cast<const char*>(Ico.data()), static_cast<qint64>(Ico.size())) !=
                static_cast<qint64>(Ico.size()))
            return Fail(Err, MsgSaveFailed);
        ++Written;
    }
    Out << "icons: " << Written << "\n";
    Out.flush();
    return ExitOk;
}

// An icon or cursor of Side pixels from the picture stretched to it, pixels of the transparent
// colour (when one is given) clear on the mask and black on the image.
bool SaveIconOrCursor(clsDIB& Picture, const QString& Name, bool Cursor, int Side, int64_t Transparent, int HotX,
                      int HotY)
{
    clsDIB Source, Image, Mask;
    if (!Source.CreateBlankDIB(Picture.DIBWidth(), Picture.DIBHeight(), 32, 0xFFFFFF, true) ||
        !Image.CreateBlankDIB(Side, Side, 32, 0xFFFFFF, true) || !Mask.CreateBlankDIB(Side, Side, 32, 0, true))
        return false;
    BitBlt(Source.DIBhDC(), 0, 0, Source.DIBWidth(), Source.DIBHeight(), Picture.DIBhDC(), 0, 0, SRCCOPY);
    SetStretchBltMode(Image.DIBhDC(), COLORONCOLOR);
    StretchBlt(Image.DIBhDC(), 0, 0, Side, Side, Source.DIBhDC(), 0, 0, Source.DIBWidth(), Source.DIBHeight(),
               SRCCOPY);
    if (Transparent >= 0)
        for (int Y = 0; Y < Side; ++Y)
            for (int X = 0; X < Side; ++X)
                if (Image.DIBhDC()->GetPixel(X, Y) == static_cast<uint32_t>(Transparent)) {
                    Image.DIBhDC()->SetPixelV(X, Y, 0);
                    Mask.DIBhDC()->SetPixelV(X, Y, 0xFFFFFF);
                }
    Array2D<uint8_t> Alpha;
    return Cursor ? basIconCursor::SaveCursorFile(Image, Mask, FileArgument(Name), static_cast<uint16_t>(HotX),
                                                  static_cast<uint16_t>(HotY))
                  : basIconCursor::SaveIconFile(Image, Mask, FileArgument(Name), false, Alpha);
}

} // namespace

bool LoadOwnFormat(const QString& FileName, clsDIB& Dib)
{
    const QString Kind = Ext(FileName);
    if (Kind == "tga")
        return clsTGA::LoadTGAToDIB(FileArgument(FileName), Dib);
    if (Kind == "pcx")
        return clsPCX::LoadPCXToDIB(FileArgument(FileName), Dib);
    if (Kind == "ico" || Kind == "cur") {
        // The largest, deepest image, drawn over white.
        clsICO Ico;
        if (!Ico.OpenICO(FileArgument(FileName)) || Ico.IconCount() < 1)
            return false;
        int16_t Best = 0;
        for (int16_t I = 1; I < Ico.IconCount(); ++I)
            if (std::pair(Ico.IconWidth(I) * Ico.IconHeight(I), Ico.IconBPP(I)) >
                std::pair(Ico.IconWidth(Best) * Ico.IconHeight(Best), Ico.IconBPP(Best)))
                Best = I;
        return Dib.CreateBlankDIB(Ico.IconWidth(Best), Ico.IconHeight(Best), 32, 0xFFFFFF, true) &&
               Ico.DrawIcon_To_DIB(Dib, Best, 0, 0);
    }
    return false;
}

bool IsIconConvert(const QStringList& Arguments)
{
    for (int I = 1; I < Arguments.size(); ++I) {
        if (Arguments[I].startsWith("--")) {
            ++I;
            continue;
        }
        if (I > 1 && QStringList{"tga", "pcx", "ico", "cur"}.contains(Ext(Arguments[I])))
            return true;
    }
    return false;
}

int ConvertIcon(const QStringList& Arguments, QTextStream& Err)
{
    const QString Why = QStringLiteral(
        "convert to .tga, .pcx (--compress), .ico (--size N, --transparent RRGGBB) or .cur (--transparent RRGGBB, "
        "--hotspot X,Y) takes an input file and an output file");
    QStringList Names;
    bool Compress = false;
    int Side = 32, HotX = 0, HotY = 0;
    int64_t Transparent = -1;
    bool SizeGiven = false, HotspotGiven = false;
    for (int I = 1; I < Arguments.size(); ++I) {
        const QString& A = Arguments[I];
        const QString Value = I + 1 < Arguments.size() ? Arguments[I + 1] : QString();
        bool Ok = true;
        if (A == "--compress") {
            Compress = true;
        } else if (A == "--size") {
            Side = Value.toInt(&Ok);
            Ok = Ok && QList<int>{12, 16, 24, 32, 48, 64}.contains(Side);
            SizeGiven = true;
            ++I;
        } else if (A == "--transparent") {
            const uint32_t Rgb = Value.toUInt(&Ok, 16);
            Ok = Ok && Value.size() == 6;
            Transparent = RGBColor(Rgb >> 16, Rgb >> 8, Rgb);
            ++I;
        } else if (A == "--hotspot") {
            const QRegularExpressionMatch M = QRegularExpression(QStringLiteral("^(\\d+),(\\d+)$")).match(Value);
            Ok = M.hasMatch();
            HotX = M.captured(1).toInt();
            HotY = M.captured(2).toInt();
            Ok = Ok && HotX < 32 && HotY < 32;
            HotspotGiven = true;
            ++I;
        } else if (A.startsWith("--")) {
            Ok = false;
        } else {
            Names << A;
        }
        if (!Ok)
            return Usage(Err, Why);
    }
    if (Names.size() != 2)
        return Usage(Err, Why);
    const QString Kind = Ext(Names[1]);
    // Each option belongs to its formats; a cursor is always 32 by 32.
    if ((Compress && Kind != "pcx") || (SizeGiven && Kind != "ico") || (HotspotGiven && Kind != "cur") ||
        (Transparent >= 0 && Kind != "ico" && Kind != "cur"))
        return Usage(Err, Why);
    clsDIB Dib;
    if (!Load(Names[0], Dib, Err))
        return ExitFailure;
    const std::string Target = FileArgument(Names[1]);
    bool Saved = false;
    if (Kind == "tga")
        Saved = clsTGA::SaveDIBAsTGA(Target, Dib);
    else if (Kind == "pcx")
        Saved = clsPCX().SavePCXinFile(Target, Dib.DIBhDC(), Dib.DIBWidth(), Dib.DIBHeight(), Compress ? 1 : 0);
    else
        Saved = SaveIconOrCursor(Dib, Names[1], Kind == "cur", Kind == "cur" ? 32 : Side, Transparent, HotX, HotY);
    return Saved ? ExitOk : Fail(Err, MsgSaveFailed);
}

int Ico(const QStringList& A, QTextStream& Out, QTextStream& Err)
{
    if (A.size() == 3 && A[1] == "info")
        return IcoInfo(A[2], Out, Err);
    if ((A.size() == 4 || (A.size() == 5 && A[4] == "--ico")) && A[1] == "extract")
        return IcoExtract(A[2], A[3], A.size() == 5, Out, Err);
    return Usage(Err, "ico takes info FILE or extract FILE DIR [--ico]");
}

int Ani(const QStringList& A, QTextStream& Out, QTextStream& Err)
{
    if (A.size() == 3 && A[1] == "info")
        return AniInfo(A[2], Out, Err);
    if (A.size() == 4 && A[1] == "extract")
        return AniExtract(A[2], A[3], Out, Err);
    return Usage(Err, "ani takes info FILE or extract FILE DIR");
}

int Pe(const QStringList& A, QTextStream& Out, QTextStream& Err)
{
    if (A.size() == 4 && A[1] == "icons")
        return PeIcons(A[2], A[3], Out, Err);
    return Usage(Err, "pe takes icons FILE DIR");
}

} // namespace CliCommands
