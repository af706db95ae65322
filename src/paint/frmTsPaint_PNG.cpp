// PNG in the paint document: a PNG file opens as the picture through the program's own reader, and
// a picture is saved as a 24-bit, a paletted 8-bit or an "optimized" PNG (8-bit when the picture
// has no more than 256 colours) through the save options dialog.
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QImage>
#include <cstring>

#include "basGIFpublic.h"
#include "basMath.h"
#include "basMsgBox.h"
#include "basTsMainPro.h"
#include "clsPNG.h"
#include "clsTsDialog.h"
#include "frmTsFileSaveGIForPNG.h"
#include "frmTsPaint.h"
#include "ucCanvas.h"

using namespace basMsgBox;

namespace {

// The writer's deflate step needs zlib; without it nothing can be saved, and the words say
// whether the picture loader's writer could have stood in.
bool ZlibReady()
{
    if (basTsMainPro::ZlibAvailable())
        return true;
    const QString Missing =
        basTsMainPro::GdiPlusAvailable
            ? QStringLiteral("zLIB.dll missing in Tessavo Paint program folder.")
            : QStringLiteral("(1) zLIB.dll missing in Tessavo Paint program folder and (2) GDIplus.dll not found.");
    MsgBox(Missing + "\n" + QStringLiteral("Hence cannot proceed to save PNG file."), MsgBoxButtons::OK,
           MsgBoxIcon::Exclamation);
    return false;
}

frmTsFileSaveGIForPNG::Kind DialogKind(int Index)
{
    switch (Index) {
    case frmTsPaint::PNGOptimized: return frmTsFileSaveGIForPNG::Kind::PNGOptimized;
    case frmTsPaint::PNG8Bit: return frmTsFileSaveGIForPNG::Kind::PNG8;
    default: return frmTsFileSaveGIForPNG::Kind::PNG24;
    }
}

// One alpha byte a pixel of a top-down 32-bit surface, top row first: Alpha where the pixel has
// the colour, opaque elsewhere.
std::vector<uint8_t> AlphaPlane(const clsDIB& Picture, uint32_t Color, uint8_t Alpha)
{
    const int W = Picture.DIBWidth(), H = Picture.DIBHeight();
    std::vector<uint8_t> Plane(static_cast<size_t>(W) * H, 255);
    for (int Y = 0; Y < H; ++Y) {
        const uint8_t* Pixel = Picture.DIBhDC()->Row(Y);
        for (int X = 0; X < W; ++X, Pixel += 4)
            if (RGBColor(Pixel[2], Pixel[1], Pixel[0]) == Color)
                Plane[static_cast<size_t>(Y) * W + X] = Alpha;
    }
    return Plane;
}

} // namespace

bool frmTsPaint::ReadPNGFile(const QString& Path, clsDIB& Picture, QString& Message)
{
    clsPNG Png;
    Png.ClearUp();
    // A background set before reading wins over the file's own: transparent parts come out
    // blended on white, as the picture loader gives them.
    Png.setHasBKGDChunk(true);
    Png.setBKGDchunkColor(0xFFFFFF);
    const int32_t Code = Png.OpenPNG(QFile::encodeName(Path).toStdString());
    if (Code != 0) {
        Message = QString::fromStdString(clsPNG::ErrMsgOpenText(static_cast<int16_t>(Code)));
        return false;
    }
    if (Png.WorkingDepth() == 0 || !Picture.CreateBlankDIB(Png.Width(), Png.Height(), 32, 0xFFFFFF, true))
        return false;
    Png.DrawPNG(Picture.DIBhDC(), 0, 0, 0, 0);
    return true;
}

void frmTsPaint::mnuFileSavePNGSub_Click(int Index)
{
    if (!Canvas->DIB.DIBBitsPtr() || !ZlibReady())
        return;
    clsTsDialog Dialog;
    Dialog.Filter = QStringLiteral("(*.png)|*.png|");
    Dialog.DialogTitle = tr("Save As PNG");
    Dialog.InitDir = FilePath.isEmpty() ? QDir::currentPath() : basTsMainPro::ParseFileSpec(FilePath, 0);
    Dialog.FileName = FilePath.isEmpty() ? QString() : basTsMainPro::ParseFileSpec(FilePath, 5) + ".png";
    if (!Dialog.ShowSave(this) || Dialog.FileName.isEmpty())
        return;
    QString Path = Dialog.FileName;
    if (basTsMainPro::ParseFileSpec(Path, 6).toUpper() != ".PNG")
        Path += QStringLiteral(".png");
    SaveAsPNG(Path, Index);
}

bool frmTsPaint::SaveAsPNG(const QString& Path, int Index)
{
    if (!Canvas->DIB.DIBBitsPtr() || !ZlibReady())
        return false;
    if (basTsMainPro::FileExists(Path) && basTsMainPro::IsReadOnlyFile(Path)) {
        MsgBox(QStringLiteral("File is read only."));
        return false;
    }
    const int W = Canvas->DIB.DIBWidth(), H = Canvas->DIB.DIBHeight();
    QImage Preview(W, H, QImage::Format_RGB32);
    for (int Y = 0; Y < H; ++Y)
        std::memcpy(Preview.scanLine(Y), Canvas->DIB.DIBhDC()->Row(Y), static_cast<size_t>(W) * 4);
    frmTsFileSaveGIForPNG Options(DialogKind(Index), Preview, this);
    if (!Options.Run())
        return false;
    if (!Options.Transparency() && !Options.BackgroundChunk() && !Options.Interlaced() &&
        MsgBox(QStringLiteral("No particular setting to be made.   Proceed?"), MsgBoxButtons::YesNo,
               MsgBoxIcon::Question) != MsgBoxResult::Yes)
        return false;

    QApplication::setOverrideCursor(Qt::WaitCursor);
    clsDIB Work;
    bool Ready = Work.CreateBlankDIB(W, H, 32, 0xFFFFFF, true) &&
                 BitBlt(Work.DIBhDC(), 0, 0, W, H, Canvas->DIB.DIBhDC(), 0, 0, SRCCOPY);
    const bool Paletted = Index == PNG8Bit || (Index == PNGOptimized && Ready && Work.BPPperActualDIB(Work) <= 8);

    clsPNG Png;
    const uint32_t Picked = Options.TransparentColor();
    if (Options.Transparency()) {
        // Per-pixel alpha needs the true-colour file; a paletted one keeps the single colour.
        if (Options.AlphaValues() && !Paletted) {
            Png.setAlphaSet(true);
            Png.SetAlphaBytes(AlphaPlane(Work, Picked, static_cast<uint8_t>(RoundHalfEven(Options.Opacity() * 255 / 100.0))));
        } else {
            Png.setHasTranspColor(true);
            Png.setTranspColor(Picked);
        }
    }
    if (Options.BackgroundChunk()) {
        Png.setHasBKGDChunk(true);
        Png.setBKGDchunkColor(Picked);
    }
    // Interlacing is not written: the writer makes plain rows whatever the option says.

    int32_t Code = 0;
    const QString Intermediate = basTsMainPro::TempFolder + QStringLiteral("xxGIF256.bmp");
    if (Ready && Paletted) {
        // 256 colours by the same road as a GIF: the 8-bit intermediate file, whose indexes and
        // colour table the writer takes as they are.
        clsDIB Indexed;
        clsPal Pal;
        Ready = basGIFpublic::ReduceToPaletteFile(Work, Pal, QFile::encodeName(basTsMainPro::TempFolder).toStdString()) &&
                basGIFpublic::SaveBMPWithPalette(QFile::encodeName(Intermediate).toStdString(), Work, Pal, 8) &&
                Indexed.CreateDIBFromFile(Intermediate, false) && Indexed.DIBbpp() == 8;
        if (Ready)
            Code = Png.SavePNG(QFile::encodeName(Path).toStdString(), Indexed.DIBhDC(), W, H, 8);
        QFile::remove(Intermediate);
    } else if (Ready) {
        Code = Png.SavePNG(QFile::encodeName(Path).toStdString(), Work.DIBhDC(), W, H, 24);
    }
    QApplication::restoreOverrideCursor();
    if (Code == clsPNG::ErrSaveDepth || Code == clsPNG::ErrSaveReadOnly) {
        MsgBox(QString::fromStdString(clsPNG::ErrMsgSaveText(static_cast<int16_t>(Code))), MsgBoxButtons::OK,
               MsgBoxIcon::Exclamation);
        return false;
    }
    if (!AfterSave(Ready && Code == 0 && QFile::exists(Path), Path))
        return false;
    MsgBox(QStringLiteral("Saved to ") + Path);
    return true;
}
