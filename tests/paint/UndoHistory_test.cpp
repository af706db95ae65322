#include "UndoHistory.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

#include "DeviceContext.h"
#include "clsDIB.h"

namespace {

// A small picture that tells its change number in every pixel, alpha bytes included.
void Paint(clsDIB& Dib, int Mark, int W = 3, int H = 2, bool TopDown = true, int16_t Bpp = 32)
{
    ASSERT_TRUE(Dib.CreateBlankDIB(W, H, Bpp, 0xFFFFFF, TopDown, true));
    for (int Y = 0; Y < H; ++Y)
        for (int X = 0; X < W; ++X) {
            const uint32_t Value = (uint32_t(Mark + 1) << 24) | (uint32_t(Mark) << 16) | (uint32_t(Y) << 8) | X;
            std::memcpy(Dib.DIBhDC()->Row(Y) + X * 4, &Value, 4);
        }
}

// Size and pixels in image order: what a user sees.
struct Seen {
    int W = 0, H = 0;
    std::vector<uint32_t> Pixels;
    bool operator==(const Seen&) const = default;
};
Seen Look(const clsDIB& Dib)
{
    Seen S{Dib.DIBWidth(), Dib.DIBHeight(), {}};
    for (int Y = 0; Y < S.H; ++Y) {
        const auto* Row = reinterpret_cast<const uint32_t*>(Dib.DIBhDC()->Row(Y));
        S.Pixels.insert(S.Pixels.end(), Row, Row + S.W);
    }
    return S;
}
Seen Expected(int Mark, int W = 3, int H = 2)
{
    clsDIB Dib;
    Paint(Dib, Mark, W, H);
    return Look(Dib);
}

class UndoHistoryTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(Dir.isValid());
        History.UndoBase = Dir.path() + "/7";
    }
    // Opening the document, then Changes changes, each kept as a state.
    void Edit(int Changes, int From = 0)
    {
        for (int Mark = From; Mark <= Changes; ++Mark) {
            Paint(Canvas, Mark);
            History.SaveUndoState(Canvas);
        }
    }
    // The names in the folder, sorted.
    QStringList Files() const { return QDir(Dir.path()).entryList(QDir::Files, QDir::Name); }
    static QStringList Names(const QString& Slot, int First, int Last)
    {
        QStringList L;
        for (int I = First; I <= Last; ++I)
            L << Slot + QString::asprintf("%03d.m_Temp", I);
        return L;
    }

    QTemporaryDir Dir;
    UndoHistory History;
    clsDIB Canvas;
};

TEST_F(UndoHistoryTest, FileNamesCarryBaseAndThreeDigits)
{
    EXPECT_EQ(History.StateFile(1), Dir.path() + "/7001.m_Temp");
    EXPECT_EQ(History.StateFile(11), Dir.path() + "/7011.m_Temp");
    Edit(0);
    EXPECT_EQ(Files(), QStringList{"7001.m_Temp"});
}

TEST_F(UndoHistoryTest, StateTableAfterChangesAndUndos)
{
    EXPECT_EQ(History.UndoPos, 0);
    EXPECT_FALSE(History.CanUndo() || History.CanRedo() || History.CanUndoAll() || History.Undo(Canvas));
    for (int Changes : {0, 1, 4, 10, 12}) {
        const int Kept = std::min(Changes, 10);
        for (int Undos = 0; Undos <= Kept; ++Undos) {
            SCOPED_TRACE(testing::Message() << Changes << " changes, " << Undos << " undos");
            History.DeleteAll();
            Edit(Changes);
            for (int I = 0; I < Undos; ++I)
                ASSERT_TRUE(History.Undo(Canvas));
            EXPECT_EQ(History.UndoPos, Kept + 1 - Undos);
            EXPECT_EQ(History.UndoTop, Kept + 1);
            EXPECT_EQ(History.CanUndo(), History.UndoPos >= 2);
            EXPECT_EQ(History.CanUndoAll(), History.UndoPos >= 2);
            EXPECT_EQ(History.CanRedo(), Undos > 0);
            EXPECT_TRUE(Look(Canvas) == Expected(Changes - Undos));
            EXPECT_EQ(Files(), Names("7", 1, Kept + 1));
        }
    }
}

TEST_F(UndoHistoryTest, TwelveChangesKeepElevenStatesAndTenUndosReachTheSecondChange)
{
    Edit(12);
    EXPECT_EQ(Files(), Names("7", 1, 11));
    for (int I = 0; I < 10; ++I)
        ASSERT_TRUE(History.Undo(Canvas));
    EXPECT_TRUE(Look(Canvas) == Expected(2));
    EXPECT_FALSE(History.Undo(Canvas)); // the opened picture has fallen off
    EXPECT_EQ(History.UndoPos, 1);
    for (int Mark = 3; Mark <= 12; ++Mark) {
        ASSERT_TRUE(History.Redo(Canvas));
        EXPECT_TRUE(Look(Canvas) == Expected(Mark));
    }
    EXPECT_FALSE(History.Redo(Canvas));
}

TEST_F(UndoHistoryTest, ChangeAfterUndoEndsTheRedoChain)
{
    Edit(5);
    for (int I = 0; I < 3; ++I)
        ASSERT_TRUE(History.Undo(Canvas));
    Paint(Canvas, 40);
    History.SaveUndoState(Canvas);
    EXPECT_EQ(History.UndoPos, 4);
    EXPECT_EQ(History.UndoTop, 4);
    EXPECT_EQ(Files(), Names("7", 1, 4));
    EXPECT_FALSE(History.CanRedo() || History.Redo(Canvas));
    ASSERT_TRUE(History.Undo(Canvas));
    EXPECT_TRUE(Look(Canvas) == Expected(2));
    ASSERT_TRUE(History.Redo(Canvas));
    EXPECT_TRUE(Look(Canvas) == Expected(40));
}

TEST_F(UndoHistoryTest, UndoAllGoesToTheOldestKeptState)
{
    for (int Changes : {3, 12}) {
        History.DeleteAll();
        Edit(Changes);
        ASSERT_TRUE(History.Undo(Canvas));
        ASSERT_TRUE(History.UndoAll(Canvas));
        EXPECT_EQ(History.UndoPos, 1);
        EXPECT_EQ(History.UndoTop, 1);
        EXPECT_EQ(Files(), QStringList{"7001.m_Temp"});
        EXPECT_TRUE(Look(Canvas) == Expected(Changes > 10 ? Changes - 10 : 0)) << Changes;
        EXPECT_FALSE(History.CanRedo() || History.UndoAll(Canvas));
    }
}

TEST_F(UndoHistoryTest, TwoDocumentsKeepApartThroughTheirBases)
{
    UndoHistory Other;
    Other.UndoBase = Dir.path() + "/1";
    clsDIB OtherCanvas;
    for (int Mark = 0; Mark <= 3; ++Mark) {
        Paint(Canvas, Mark);
        History.SaveUndoState(Canvas);
        Paint(OtherCanvas, 100 + Mark, 4, 4);
        Other.SaveUndoState(OtherCanvas);
    }
    ASSERT_TRUE(History.Undo(Canvas));
    ASSERT_TRUE(Other.UndoAll(OtherCanvas));
    EXPECT_TRUE(Look(Canvas) == Expected(2));
    EXPECT_TRUE(Look(OtherCanvas) == Expected(100, 4, 4));
    History.DeleteAll();
    EXPECT_EQ(Files(), QStringList{"1001.m_Temp"});
}

TEST_F(UndoHistoryTest, UndoAcrossASizeChangeRestoresTheOldSize)
{
    Edit(0);
    Paint(Canvas, 1, 5, 4);
    Canvas.setDIBhasAlpha(true);
    History.SaveUndoState(Canvas);
    ASSERT_TRUE(History.Undo(Canvas));
    EXPECT_TRUE(Look(Canvas) == Expected(0));
    EXPECT_EQ(Canvas.Header().biHeight, -2); // top-down
    EXPECT_EQ(Canvas.DIBbpp(), 32);
    EXPECT_FALSE(Canvas.DIBhasAlpha());
    ASSERT_TRUE(History.Redo(Canvas));
    EXPECT_TRUE(Look(Canvas) == Expected(1, 5, 4));
    EXPECT_TRUE(Canvas.DIBhasAlpha());
}

TEST_F(UndoHistoryTest, BottomUpAndShallowPicturesComeBackTopDownWithTheSameRows)
{
    clsDIB Up, Shallow, Back;
    Paint(Up, 9, 7, 5, false);
    History.SaveUndoState(Up);
    ASSERT_TRUE(History.LoadUndoState(History.StateFile(1), Back));
    EXPECT_TRUE(Look(Back) == Look(Up));
    EXPECT_EQ(Back.Header().biHeight, -5);
    // A 24-bit surface comes back as 32 bits with its colours.
    ASSERT_TRUE(Shallow.CreateBlankDIB(3, 3, 24, 0x336699, false));
    History.SaveUndoState(Shallow);
    ASSERT_TRUE(History.LoadUndoState(History.StateFile(2), Back));
    EXPECT_EQ(Back.DIBbpp(), 32);
    EXPECT_EQ(Back.DIBBackColor(), 0x336699u);
    EXPECT_EQ(Back.DIBhDC()->GetPixel(2, 2), 0x336699u);
}

TEST_F(UndoHistoryTest, MissingRedoFileStopsWithoutChange)
{
    Edit(2);
    ASSERT_TRUE(History.Undo(Canvas));
    ASSERT_TRUE(History.Undo(Canvas));
    ASSERT_TRUE(QFile::remove(History.StateFile(2)));
    EXPECT_FALSE(History.Redo(Canvas));
    EXPECT_EQ(History.UndoPos, 1);
    EXPECT_TRUE(Look(Canvas) == Expected(0));
}

TEST_F(UndoHistoryTest, ShortOrDamagedStatesAreRefusedAndLeaveThePicture)
{
    Edit(1);
    QFile Good(History.StateFile(1));
    ASSERT_TRUE(Good.open(QIODevice::ReadOnly));
    const QByteArray Whole = Good.readAll();
    ASSERT_EQ(Whole.size(), 24 + 3 * 2 * 4);
    auto Patched = [&](int At, QByteArray Bytes) { return QByteArray(Whole).replace(At, Bytes.size(), Bytes); };
    const struct {
        const char* Why;
        QByteArray File;
    } Cases[] = {
        {"empty", {}},
        {"header only", Whole.left(24)},
        {"one byte short", Whole.chopped(1)},
        {"one byte more", Whole + 'x'},
        {"other magic", Patched(0, "BM")},
        {"other version", Patched(4, QByteArray("\x02\x00", 2))},
        {"unknown flag", Patched(6, QByteArray("\x02\x00", 2))},
        {"zero width", Patched(8, QByteArray(4, 0))},
        {"negative height", Patched(12, QByteArray("\xFF\xFF\xFF\xFF", 4))},
        {"side over the limit", Patched(8, QByteArray("\x00\x80\x00\x00", 4))},
        {"32767 square, over the memory limit",
         Patched(8, QByteArray("\xFF\x7F\x00\x00\xFF\x7F\x00\x00", 8)) + QByteArray(64, 0)},
        {"size disagrees with the length", Patched(8, QByteArray("\x04\x00\x00\x00\x04\x00\x00\x00", 8))},
    };
    for (const auto& C : Cases) {
        QFile Bad(History.StateFile(1));
        ASSERT_TRUE(Bad.open(QIODevice::WriteOnly | QIODevice::Truncate));
        Bad.write(C.File);
        Bad.close();
        EXPECT_FALSE(History.Undo(Canvas)) << C.Why;
        EXPECT_EQ(History.UndoPos, 2) << C.Why;
        EXPECT_TRUE(Look(Canvas) == Expected(1)) << C.Why;
    }
    EXPECT_FALSE(History.LoadUndoState(Dir.path() + "/none", Canvas));
}

TEST_F(UndoHistoryTest, UnwritableStateLeavesNoFileAndTheNumbersRunOn)
{
    // A full disk: the writes of state 2 fail.
    ASSERT_TRUE(QFile::link("/dev/full", History.StateFile(2)));
    Edit(2);
    EXPECT_EQ(History.UndoPos, 3);
    EXPECT_EQ(History.UndoTop, 3);
    EXPECT_EQ(Files(), (QStringList{"7001.m_Temp", "7003.m_Temp"}));
    EXPECT_FALSE(History.Undo(Canvas));
    EXPECT_EQ(History.UndoPos, 3);
}

TEST_F(UndoHistoryTest, NothingIsKeptWithoutPixelsOrBase)
{
    clsDIB Empty;
    History.SaveUndoState(Empty);
    UndoHistory NoBase;
    Paint(Canvas, 0);
    NoBase.SaveUndoState(Canvas);
    EXPECT_EQ(History.UndoPos + NoBase.UndoPos, 0);
    EXPECT_TRUE(Files().isEmpty());
}

TEST_F(UndoHistoryTest, DeleteAllRemovesEveryState)
{
    Edit(12);
    History.DeleteAll();
    EXPECT_TRUE(Files().isEmpty());
    EXPECT_EQ(History.UndoPos, 0);
    EXPECT_EQ(History.UndoTop, 0);
}

TEST_F(UndoHistoryTest, EventsLetInWhileBusyStartNothingAndACloseWaits)
{
    bool IsBusy = false;
    int Yields = 0, YieldsWhileIdle = 0, Rounds = 0;
    History.Busy = [&](bool On) {
        EXPECT_NE(On, IsBusy);
        IsBusy = On;
    };
    History.Yield = [&] {
        ++Yields;
        YieldsWhileIdle += !IsBusy;
    };
    Edit(11);
    // The first state clears the ten names after it, change j the 10 - j after it; the shift of
    // the eleventh change has eleven rounds. Each save yields once more.
    EXPECT_EQ(Yields, (1 + 10) + (10 + 45) + (11 + 1));
    EXPECT_EQ(YieldsWhileIdle, 0);
    EXPECT_FALSE(IsBusy);

    // A second change, an undo and a close arrive during the first change's yields.
    History.Yield = [&] {
        if (++Rounds != 1)
            return;
        clsDIB Nested;
        Paint(Nested, 99);
        History.SaveUndoState(Nested);
        EXPECT_FALSE(History.Undo(Nested));
        EXPECT_EQ(History.UndoPos, 11);
        History.DeleteAll();
    };
    Paint(Canvas, 12);
    History.SaveUndoState(Canvas);
    EXPECT_TRUE(Files().isEmpty());
    EXPECT_EQ(History.UndoPos, 0);
    EXPECT_FALSE(IsBusy);
}

} // namespace
