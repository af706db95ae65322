// GIF in the paint document: the first frame of a GIF file opens as the picture, and a picture is
// saved as a one-frame GIF through the save options dialog.
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QImage>
#include <cstring>

#include "basGIFpublic.h"
#include "basMsgBox.h"
#include "basTsMainPro.h"
#include "clsGIF.h"
#include "clsTsDialog.h"
#include "frmTsFileSaveGIForPNG.h"
#include "frmTsPaint.h"
#include "ucCanvas.h"

using namespace basMsgBox;

bool frmTsPaint::ReadGIFFirstFrame(const QString& Path, clsDIB& Picture)
{
    clsGIF Gif;
    if (Gif.LoadFromGIFFile(QFile::encodeName(Path).toStdString()) != 0 || Gif.FramesCount() < 1)
        return false;
    // The frame on white at its own size; transparent pixels stay white.
    if (!Picture.CreateBlankDIB(Gif.FrameWidth(1), Gif.FrameHeight(1), 32, 0xFFFFFF, true))
        return false;
    Gif.FrameDraw(Picture.DIBhDC(), 1, -Gif.FrameLeft(1), -Gif.FrameTop(1));
    return true;
}

void frmTsPaint::mnuFileSaveGIFSub_Click()
{
    if (!Canvas->DIB.DIBBitsPtr())
        return;
    clsTsDialog Dialog;
    Dialog.Filter = QStringLiteral("(*.gif)|*.gif");
    Dialog.DialogTitle = tr("Save As GIF");
    Dialog.InitDir = FilePath.isEmpty() ? QDir::currentPath() : basTsMainPro::ParseFileSpec(FilePath, 0);
    Dialog.FileName = FilePath.isEmpty() ? QString() : basTsMainPro::ParseFileSpec(FilePath, 5) + ".gif";
    if (!Dialog.ShowSave(this) || Dialog.FileName.isEmpty())
        return;
    QString Path = Dialog.FileName;
    if (basTsMainPro::ParseFileSpec(Path, 6).toUpper() != ".GIF")
        Path += QStringLiteral(".gif");
    SaveAsGIF(Path);
}

bool frmTsPaint::SaveAsGIF(const QString& Path)
{
    if (basTsMainPro::FileExists(Path) && basTsMainPro::IsReadOnlyFile(Path)) {
        MsgBox(QStringLiteral("File is read only."));
        return false;
    }
    const int W = Canvas->DIB.DIBWidth(), H = Canvas->DIB.DIBHeight();
    QImage Picture(W, H, QImage::Format_RGB32);
    for (int Y = 0; Y < H; ++Y)
        std::memcpy(Picture.scanLine(Y), Canvas->DIB.DIBhDC()->Row(Y), static_cast<size_t>(W) * 4);
    frmTsFileSaveGIForPNG Options(frmTsFileSaveGIForPNG::Kind::GIF, Picture, this);
    if (!Options.Run())
        return false;
    if (!Options.Transparency() && !Options.Interlaced() &&
        MsgBox(QStringLiteral("Non-transparent and non-interlaced.   Proceed?"), MsgBoxButtons::YesNo,
               MsgBoxIcon::Question) != MsgBoxResult::Yes)
        return false;

    QApplication::setOverrideCursor(Qt::WaitCursor);
    // The picture goes to 256 colours by way of the 8-bit intermediate file, from which the GIF
    // is written.
    const std::string Folder = QFile::encodeName(basTsMainPro::TempFolder).toStdString();
    const QString Intermediate = basTsMainPro::TempFolder + QStringLiteral("xxGIF256.bmp");
    clsDIB Work, Indexed;
    clsPal Pal;
    bool Saved = Work.CreateBlankDIB(W, H, 32, 0xFFFFFF, true) &&
                 BitBlt(Work.DIBhDC(), 0, 0, W, H, Canvas->DIB.DIBhDC(), 0, 0, SRCCOPY) &&
                 basGIFpublic::ReduceToPaletteFile(Work, Pal, Folder) &&
                 basGIFpublic::SaveBMPWithPalette(QFile::encodeName(Intermediate).toStdString(), Work, Pal, 8) &&
                 Indexed.CreateDIBFromFile(Intermediate, true);  // memory rows top first, as the writer reads them
    if (Saved && Indexed.DIBbpp() == 8) {
        clsGIF Gif;
        Saved = Gif.SaveGIFFrom_BPP8_DIB(QFile::encodeName(Path).toStdString(), Indexed, Pal, Options.Transparency(),
                                         Options.Transparency() ? static_cast<int32_t>(Options.TransparentColor()) : -1,
                                         Options.Interlaced());
    } else {
        Saved = false;
    }
    QFile::remove(Intermediate);
    QApplication::restoreOverrideCursor();
    if (!AfterSave(Saved, Path))
        return false;
    MsgBox(QStringLiteral("Saved to ") + Path);
    return true;
}
