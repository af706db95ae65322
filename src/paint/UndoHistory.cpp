#include "UndoHistory.h"

#include <QFile>
#include <QtEndian>
#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "basPicture.h"
#include "basTsMainPro.h"
#include "clsDIB.h"

namespace {

constexpr char Magic[4] = {'T', 's', 'U', 'S'};
constexpr uint16_t Version = 1;
constexpr uint16_t FlagAlpha = 1;
constexpr int HeaderBytes = 24;
// Rows of a surface that is not one top-down block go out in pieces of about this size.
constexpr int64_t ChunkBytes = int64_t(4) * 1024 * 1024;

struct StateHeader {
    int32_t Width = 0;
    int32_t Height = 0;
    uint32_t BackColor = 0;
    bool HasAlpha = false;
};

void PutHeader(uint8_t* Out, const StateHeader& Header)
{
    std::memcpy(Out, Magic, 4);
    qToLittleEndian<uint16_t>(Version, Out + 4);
    qToLittleEndian<uint16_t>(Header.HasAlpha ? FlagAlpha : 0, Out + 6);
    qToLittleEndian<int32_t>(Header.Width, Out + 8);
    qToLittleEndian<int32_t>(Header.Height, Out + 12);
    qToLittleEndian<uint32_t>(Header.BackColor, Out + 16);
    qToLittleEndian<uint32_t>(0, Out + 20);
}

// The pixel bytes a header announces, or -1 when the header is not one of ours or the
// picture could not be a surface.
int64_t GetHeader(const uint8_t* In, StateHeader& Header)
{
    if (std::memcmp(In, Magic, 4) != 0 || qFromLittleEndian<uint16_t>(In + 4) != Version)
        return -1;
    const uint16_t Flags = qFromLittleEndian<uint16_t>(In + 6);
    if ((Flags & ~FlagAlpha) != 0 || qFromLittleEndian<uint32_t>(In + 20) != 0)
        return -1;
    Header.Width = qFromLittleEndian<int32_t>(In + 8);
    Header.Height = qFromLittleEndian<int32_t>(In + 12);
    Header.BackColor = qFromLittleEndian<uint32_t>(In + 16);
    Header.HasAlpha = (Flags & FlagAlpha) != 0;
    if (Header.Width < 1 || Header.Height < 1 || Header.Width > basPicture::MaxPictureSide ||
        Header.Height > basPicture::MaxPictureSide)
        return -1;
    const int64_t Bytes = int64_t(Header.Width) * Header.Height * 4;
    return Bytes > basPicture::MaxPictureBytes ? -1 : Bytes;
}

// Writes the rows of a 32-bit context top row first: one block when memory holds them so,
// otherwise gathered in chunks.
bool WriteRows(QFile& File, const DeviceContext& Rows)
{
    const int64_t RowBytes = int64_t(Rows.Width()) * 4;
    if (Rows.TopDown() && Rows.Stride() == RowBytes) {
        const int64_t Bytes = RowBytes * Rows.Height();
        return File.write(reinterpret_cast<const char*>(Rows.Bits()), Bytes) == Bytes;
    }
    const int RowsPerChunk = int(std::clamp<int64_t>(ChunkBytes / RowBytes, 1, Rows.Height()));
    std::unique_ptr<uint8_t[]> Chunk(new (std::nothrow) uint8_t[size_t(RowBytes * RowsPerChunk)]);
    if (!Chunk)
        return false;
    for (int Y = 0; Y < Rows.Height(); Y += RowsPerChunk) {
        const int Count = std::min(RowsPerChunk, Rows.Height() - Y);
        for (int I = 0; I < Count; ++I)
            std::memcpy(Chunk.get() + RowBytes * I, Rows.Row(Y + I), size_t(RowBytes));
        if (File.write(reinterpret_cast<const char*>(Chunk.get()), RowBytes * Count) != RowBytes * Count)
            return false;
    }
    return true;
}

} // namespace

// Marks the history as working and the window as busy for as long as it lives.
class UndoHistory::WorkScope {
public:
    explicit WorkScope(UndoHistory& History) : Owner(History)
    {
        Owner.Working = true;
        if (Owner.Busy)
            Owner.Busy(true);
    }
    ~WorkScope()
    {
        Owner.Working = false;
        if (Owner.Busy)
            Owner.Busy(false);
        if (Owner.DeletePending) {
            Owner.DeletePending = false;
            Owner.DeleteAll();
        }
    }
    WorkScope(const WorkScope&) = delete;
    WorkScope& operator=(const WorkScope&) = delete;

private:
    UndoHistory& Owner;
};

QString UndoHistory::StateFile(int Number) const
{
    return UndoBase + QStringLiteral("%1").arg(Number, 3, 10, QLatin1Char('0')) + QStringLiteral(".m_Temp");
}

void UndoHistory::YieldNow() const
{
    if (Yield)
        Yield();
}

void UndoHistory::DeleteState(int Number) const
{
    const QString Path = StateFile(Number);
    if (basTsMainPro::FileExists(Path))
        basTsMainPro::DeleteFileSafe(Path);
}

void UndoHistory::SaveUndoState(clsDIB& Picture)
{
    // Without a base the names would land in the working folder.
    if (!Picture.DIBBitsPtr() || UndoBase.isEmpty() || Working)
        return;
    WorkScope Scope(*this);
    UndoPos = std::max<int16_t>(UndoPos, 0);
    if (UndoPos >= MaxStates) {
        // The oldest state falls off and the others move down one number.
        for (int I = 1; I <= MaxStates; ++I) {
            DeleteState(I);
            if (I < MaxStates && basTsMainPro::FileExists(StateFile(I + 1)))
                QFile::rename(StateFile(I + 1), StateFile(I));
            YieldNow();
        }
        UndoPos = MaxStates - 1;
    }
    // A file that cannot be written is simply missing later: the numbers run on all the same.
    WriteState(StateFile(UndoPos + 1), Picture);
    YieldNow();
    UndoPos = int16_t(UndoPos + 1);
    UndoTop = UndoPos;
    // The redo chain ends here.
    for (int I = UndoTop + 1; I <= MaxStates; ++I) {
        DeleteState(I);
        YieldNow();
    }
}

bool UndoHistory::WriteState(const QString& Path, clsDIB& Picture) const
{
    const DeviceContext* Rows = Picture.DIBhDC();
    if (!Rows || Picture.DIBWidth() < 1 || Picture.DIBHeight() < 1)
        return false;
    // Shallower surfaces are kept as 32 bits, the depth they come back in.
    clsDIB Deep;
    if (Picture.StorageBpp() != 32) {
        if (!Deep.CreateBlankDIB(Picture.DIBWidth(), Picture.DIBHeight(), 32, Picture.DIBBackColor(), true, true))
            return false;
        Deep.PaintFromDIBtoDIB(Picture, Deep, 0, 0, 0, 0);
        Rows = Deep.DIBhDC();
    }
    uint8_t Header[HeaderBytes];
    PutHeader(Header, {Picture.DIBWidth(), Picture.DIBHeight(), Picture.DIBBackColor(), Picture.DIBhasAlpha()});
    QFile File(Path);
    bool Written = File.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered) &&
                   File.write(reinterpret_cast<const char*>(Header), HeaderBytes) == HeaderBytes &&
                   WriteRows(File, *Rows);
    if (File.isOpen()) {
        File.close();
        Written = Written && File.error() == QFileDevice::NoError;
    }
    // A half-written state would load as a damaged picture: better none at all.
    if (!Written)
        QFile::remove(Path);
    return Written;
}

bool UndoHistory::LoadUndoState(const QString& Path, clsDIB& Picture)
{
    QFile File(Path);
    if (!File.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return false;
    uint8_t Raw[HeaderBytes];
    if (File.read(reinterpret_cast<char*>(Raw), HeaderBytes) != HeaderBytes)
        return false;
    StateHeader Header;
    const int64_t Bytes = GetHeader(Raw, Header);
    if (Bytes < 0 || File.size() != HeaderBytes + Bytes)
        return false;
    // A picture of the same kind is filled where it stands; anything else is made anew.
    const bool Reuse = Picture.DIBBitsPtr() && Picture.StorageBpp() == 32 && Picture.DIBbpp() == 32 &&
                       Picture.Header().biHeight < 0 && Picture.DIBWidth() == Header.Width &&
                       Picture.DIBHeight() == Header.Height && Picture.DIBBackColor() == Header.BackColor;
    if (!Reuse && !Picture.CreateBlankDIB(Header.Width, Header.Height, 32, Header.BackColor, true, true))
        return false;
    if (File.read(reinterpret_cast<char*>(Picture.DIBBitsPtr()), Bytes) != Bytes)
        return false;
    Picture.setDIBhasAlpha(Header.HasAlpha);
    return true;
}

bool UndoHistory::Undo(clsDIB& Picture)
{
    if (!CanUndo() || Working)
        return false;
    const int Previous = UndoPos - 1;
    if (!LoadUndoState(StateFile(Previous), Picture))
        return false;
    UndoPos = int16_t(Previous);
    return true;
}

bool UndoHistory::Redo(clsDIB& Picture)
{
    if (!CanRedo() || Working)
        return false;
    const QString Next = StateFile(UndoPos + 1);
    if (!basTsMainPro::FileExists(Next) || !LoadUndoState(Next, Picture))
        return false;
    UndoPos = int16_t(UndoPos + 1);
    return true;
}

bool UndoHistory::UndoAll(clsDIB& Picture)
{
    if (!CanUndoAll() || Working)
        return false;
    {
        WorkScope Scope(*this);
        for (int I = 2; I <= MaxStates; ++I) {
            DeleteState(I);
            YieldNow();
        }
        UndoPos = 1;
        UndoTop = 1;
    }
    const QString First = StateFile(1);
    return basTsMainPro::FileExists(First) && LoadUndoState(First, Picture);
}

void UndoHistory::DeleteAll()
{
    if (Working) {
        DeletePending = true;
        return;
    }
    if (!UndoBase.isEmpty()) {
        WorkScope Scope(*this);
        for (int I = 1; I <= MaxStates; ++I) {
            DeleteState(I);
            YieldNow();
        }
    }
    UndoPos = 0;
    UndoTop = 0;
}
