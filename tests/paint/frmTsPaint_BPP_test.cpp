// The BPP menu on a real picture: the questions, the reduced colours and the undo state.
#include <set>

#include "PaintTest.h"

namespace {

std::set<uint32_t> Colours(clsDIB& Dib)
{
    std::set<uint32_t> All;
    for (int Y = 0; Y < Dib.DIBHeight(); ++Y)
        for (int X = 0; X < Dib.DIBWidth(); ++X)
            All.insert(Dib.DIBhDC()->GetPixel(X, Y) & 0xFFFFFF);
    return All;
}

} // namespace

TEST_F(PaintTest, ColourReductionsAskReduceAndTakeAState)
{
    struct Case {
        const char* Action;
        const char* Question;
        size_t MaxColours;
    };
    const Case Cases[] = {
        {"mnuColorReductionSub_0", "Proceed to change BPP?", 256},
        {"mnuColorReductionSub_2", "Proceed to change BPP?", 16},
        {"mnuColorReductionSub_10", "Proceed to convert websafe?", 216},
        {"mnuColorReductionBWSub_1", "Proceed to convert to B&W?", 2},
        {"mnuColorReductionBWSub_3", "Proceed to convert to B&W?", 2},
    };
    for (const Case& C : Cases) {
        frmTsPaint* Doc = OpenThroughMenu(Suite + "rgb24.bmp");
        ASSERT_NE(Doc, nullptr);
        const auto Before = Colours(Doc->Canvas->DIB);
        ASSERT_GT(Before.size(), 256u);
        QAction* Action = Doc->findChild<QAction*>(C.Action);
        ASSERT_NE(Action, nullptr) << C.Action;
        // No leaves the picture alone.
        Boxes.Answer(basMsgBox::MsgBoxResult::No);
        Action->trigger();
        EXPECT_EQ(Boxes.Texts().back(), C.Question);
        EXPECT_EQ(Colours(Doc->Canvas->DIB), Before);
        Boxes.Answer(basMsgBox::MsgBoxResult::Yes);
        Action->trigger();
        EXPECT_LE(Colours(Doc->Canvas->DIB).size(), C.MaxColours) << C.Action;
        EXPECT_EQ(Doc->History().UndoPos, 2) << C.Action;
        EXPECT_TRUE(Doc->Dirty());
        Frame->cmdEditTB[1]->click();
        EXPECT_EQ(Colours(Doc->Canvas->DIB), Before);
    }
}
