// Icons, cursors, TGA and PCX in the paint document: an icon or cursor opens as its chosen image
// on white, TGA and PCX files open and save through their own codecs, and the picture (or its
// region) is saved as an icon or cursor through frmTsFileSaveICOorCUR.
#include <QApplication>
#include <QDir>
#include <QFile>

#include "Array2D.h"
#include "basIconCursor.h"
#include "basMsgBox.h"
#include "basTsMainPro.h"
#include "clsPCX.h"
#include "clsTGA.h"
#include "clsTsDialog.h"
#include "frmTsFileSaveICOorCUR.h"
#include "frmTsPaint.h"
#include "ucCanvas.h"

using namespace basMsgBox;

namespace {

std::string Native(const QString& Path) { return QFile::encodeName(Path).toStdString(); }

// The image over white where the mask is white, blended by its alpha where it has one.
bool OnWhite(const clsDIB& Image, const clsDIB& Mask, const Array2D<uint8_t>& Alpha, clsDIB& Picture)
{
    const int W = Image.DIBWidth(), H = Image.DIBHeight();
    if (!Picture.CreateBlankDIB(W, H, 32, 0xFFFFFF, true))
        return false;
    const bool WithAlpha = Alpha.Width() == W && Alpha.Height() == H;
    for (int Y = 0; Y < H; ++Y) {
        const uint8_t* In = Image.DIBhDC()->Row(Y);
        const uint8_t* Cover = Mask.DIBhDC()->Row(Y);
        uint8_t* Out = Picture.DIBhDC()->Row(Y);
        for (int X = 0; X < W; ++X, In += 4, Cover += 4, Out += 4) {
            const uint32_t A = WithAlpha ? Alpha(X, Y) : Cover[0] ? 0 : 255;
            for (int C = 0; C < 3; ++C)
                Out[C] = static_cast<uint8_t>(A == 255 ? In[C] : A == 0 ? 255 : (In[C] * A + (255 - A) * 255 + 255) >> 8);
        }
    }
    return true;
}

} // namespace

bool frmTsPaint::ReadIconOrCursor(const QString& Path, bool Cursor, clsDIB& Picture, QString& Message)
{
    clsDIB Image, Mask;
    Array2D<uint8_t> Alpha;
    bool Read = false;
    if (Cursor) {
        int16_t HotspotX = 0, HotspotY = 0;
        Read = basIconCursor::ReadCursorFileStatus(Native(Path)).rfind("1/", 0) == 0 &&
               basIconCursor::LoadCursorFileToPictures(Native(Path), Image, Mask, Alpha, HotspotX, HotspotY);
        if (!Read)
            Message = QStringLiteral("Invalid cursor file");
    } else {
        // Any single image from 12 to 128 pixels a side, or the best square one of a family.
        basIconCursor::IconRecord Record;
        const QStringList Fields =
            QString::fromStdString(basIconCursor::ReadIconFileStatus(Native(Path), Record, false)).split('/');
        Read = Fields.size() == 9 && Fields[1].toInt() > 0 &&
               basIconCursor::LoadIconFileToPictures(Native(Path), static_cast<int16_t>(Fields[2].toInt()), Image,
                                                     Mask, Alpha);
        if (!Read) {
            const std::string Why = basIconCursor::ErrorText(basIconCursor::LastError());
            Message = !Why.empty() ? QString::fromStdString(Why)
                                   : QStringLiteral("Invalid icon file or icon not a size of\n the allowable limit.");
        }
    }
    return Read && OnWhite(Image, Mask, Alpha, Picture);
}

bool frmTsPaint::ReadTGAOrPCX(const QString& Path, bool Pcx, clsDIB& Picture)
{
    return Pcx ? clsPCX::LoadPCXToDIB(Native(Path), Picture) : clsTGA::LoadTGAToDIB(Native(Path), Picture);
}

void frmTsPaint::mnuFileSaveTGAorPCX_Click(bool Pcx)
{
    if (!Canvas->DIB.DIBBitsPtr())
        return;
    const QString Ext = Pcx ? QStringLiteral(".pcx") : QStringLiteral(".tga");
    clsTsDialog Dialog;
    Dialog.Filter = Pcx ? QStringLiteral("(*.pcx)|*.pcx|") : QStringLiteral("(*.tga)|*.tga|");
    Dialog.DialogTitle = Pcx ? tr("Save As PCX") : tr("Save As TGA");
    Dialog.InitDir = FilePath.isEmpty() ? QDir::currentPath() : basTsMainPro::ParseFileSpec(FilePath, 0);
    Dialog.FileName = FilePath.isEmpty() ? QString() : basTsMainPro::ParseFileSpec(FilePath, 5) + Ext;
    if (!Dialog.ShowSave(this) || Dialog.FileName.isEmpty())
        return;
    QString Path = Dialog.FileName;
    if (basTsMainPro::ParseFileSpec(Path, 6).toLower() != Ext)
        Path += Ext;
    SaveAsTGAOrPCX(Path, Pcx);
}

bool frmTsPaint::SaveAsTGAOrPCX(const QString& Path, bool Pcx)
{
    if (basTsMainPro::FileExists(Path) && basTsMainPro::IsReadOnlyFile(Path)) {
        MsgBox(QStringLiteral("File is read only."));
        return false;
    }
    QApplication::setOverrideCursor(Qt::WaitCursor);
    // PCX files are always written run-length encoded.
    const bool Saved = Pcx ? clsPCX::SaveDIBAsPCX(Native(Path), Canvas->DIB)
                           : clsTGA::SaveDIBAsTGA(Native(Path), Canvas->DIB);
    QApplication::restoreOverrideCursor();
    return AfterSave(Saved, Path);
}

void frmTsPaint::mnuFileSaveICOorCUR_Click(bool Cursor)
{
    if (!Canvas->DIB.DIBBitsPtr())
        return;
    // A region drawn may be the source instead of the whole picture.
    clsDIB Source;
    bool FromRegion = false;
    if (Canvas->HasRegion() &&
        MsgBox(QStringLiteral("Currently there is a region drawn.  Import the region?\n(Otherwise whole picture)"),
               MsgBoxButtons::YesNo, MsgBoxIcon::Question) == MsgBoxResult::Yes) {
        if (Canvas->RegionLifted() && Canvas->DIBRegion.DIBBitsPtr()) {
            FromRegion = Source.CreateBlankDIB(Canvas->DIBRegion.DIBWidth(), Canvas->DIBRegion.DIBHeight(), 32,
                                               0xFFFFFF, true) &&
                         BitBlt(Source.DIBhDC(), 0, 0, Source.DIBWidth(), Source.DIBHeight(),
                                Canvas->DIBRegion.DIBhDC(), 0, 0, SRCCOPY);
        } else {
            const QRect Box = Canvas->RegionImageBox().intersected(
                QRect(0, 0, Canvas->DIB.DIBWidth(), Canvas->DIB.DIBHeight()));
            FromRegion = !Box.isEmpty() && Source.CreateBlankDIB(Box.width(), Box.height(), 32, 0xFFFFFF, true) &&
                         BitBlt(Source.DIBhDC(), 0, 0, Box.width(), Box.height(), Canvas->DIB.DIBhDC(), Box.x(),
                                Box.y(), SRCCOPY);
        }
    }
    clsDIB& From = FromRegion ? Source : Canvas->DIB;
    const QString Folder = FilePath.isEmpty() ? QDir::currentPath() : basTsMainPro::ParseFileSpec(FilePath, 0);
    frmTsFileSaveICOorCUR Dialog(Cursor ? QStringLiteral("2") : QStringLiteral("1"), From, Folder, this);
    // The icon editor, which would take the saved icon on, comes with its own window; until then
    // there is nothing to ask after saving.
    Dialog.Run();
}
