// The routines on the program's windows: finding them by name, closing the tool windows and the
// documents, the percent bar.
#include "FrameTest.h"

#include <QCoreApplication>
#include <QEvent>
#include <QLabel>

TEST_F(FrameTest, WindowsAreFoundByNameAndToolWindowsClose)
{
    frmTsMainPro& frame = MakeFrame();
    frame.show();
    auto* chart = new QWidget(&frame, Qt::Tool);
    chart->setObjectName(QStringLiteral("frmTsColorChart"));
    chart->show();
    auto* other = new QWidget(&frame, Qt::Tool);
    other->setObjectName(QStringLiteral("frmTsSomethingElse"));
    other->show();
    OpenChild();

    EXPECT_TRUE(basTsMainPro::IsFormLoaded(QStringLiteral("FRMTSCOLORCHART")));
    EXPECT_TRUE(basTsMainPro::IsFormLoaded(QStringLiteral("frmtspaint")));
    EXPECT_FALSE(basTsMainPro::IsFormLoaded(QStringLiteral("frmTsPanoramic")));
    EXPECT_TRUE(basTsMainPro::ActivateFormIfLoaded(QStringLiteral("frmTsColorChart")));
    EXPECT_FALSE(basTsMainPro::ActivateFormIfLoaded(QStringLiteral("frmTsPanoramic")));

    basTsMainPro::CloseToolWindows();
    EXPECT_FALSE(basTsMainPro::IsFormLoaded(QStringLiteral("frmTsColorChart")));
    EXPECT_TRUE(other->isVisible());
    EXPECT_TRUE(basTsMainPro::AnyDocumentOpen());

    basTsMainPro::CloseAllDocuments();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(basTsMainPro::AnyDocumentOpen());
    EXPECT_TRUE(basTsMainPro::DocSlots()[0].Closed);
    EXPECT_EQ(basTsMainPro::DocForms()[0], nullptr);
}

TEST(basTsMainPro, PercentBarClampsAndWritesItsNumber)
{
    QWidget outer;
    outer.resize(200, 20);
    auto* inner = new QLabel(&outer);
    struct Case {
        int Percent;
        bool ShowText;
        int Width;
        const char* Text;
    };
    const Case cases[] = {{50, true, 100, "50%"}, {0, true, 2, "1%"}, {150, true, 198, "99%"}, {25, false, 50, ""}};
    for (const Case& c : cases) {
        basTsMainPro::ShowPercentBar(&outer, inner, c.Percent, c.ShowText);
        EXPECT_EQ(inner->width(), c.Width) << c.Percent;
        EXPECT_EQ(inner->text(), QString::fromLatin1(c.Text)) << c.Percent;
    }
}
