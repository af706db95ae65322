// Start-up: a later start ends according to the first copy's answer; a first start settles the
// folders and shows the frame.
#include "basMain.h"

#include "SettingsFileTest.h"
#include "basMsgBox.h"
#include "basTsMainPro.h"
#include "clsSingleInstance.h"
#include "frmTsMainPro.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPointer>
#include <QThread>
#include <QUuid>

namespace {

// The first copy, serving from a thread of its own as another process would.
class FirstCopy {
public:
    explicit FirstCopy(const QString& name)
    {
        Instance = new clsSingleInstance(name);
        Instance->moveToThread(&Thread);
        Thread.start();
        QMetaObject::invokeMethod(
            Instance, [this] { Instance->Claim(QString(), 500); }, Qt::BlockingQueuedConnection);
        Instance->ExclusiveSessionQuery = [this] { return Exclusive.load(); };
    }
    ~FirstCopy()
    {
        QMetaObject::invokeMethod(Instance, [this] { delete Instance; }, Qt::BlockingQueuedConnection);
        Thread.quit();
        Thread.wait();
    }
    std::atomic<bool> Exclusive = false;
    clsSingleInstance* Instance = nullptr;
    QThread Thread;
};

basMain::StartOptions QuickStart(const QString& name)
{
    basMain::StartOptions options;
    options.SplashMilliseconds = 0;
    options.SplashTopmostMilliseconds = 0;
    options.ServerName = name;
    return options;
}

QString UniqueName()
{
    return QStringLiteral("TessavoStart-") + QUuid::createUuid().toString(QUuid::WithoutBraces);
}

} // namespace

TEST(basMain, LaterStartsEndAsTheFirstCopySays)
{
    const QString name = UniqueName();
    FirstCopy first(name);
    basMsgBox::MsgBoxScript boxes;
    clsSingleInstance* instance = nullptr;
    int exitCode = -1;

    EXPECT_EQ(basMain::Startup({QStringLiteral("tessavo")}, QuickStart(name), instance, exitCode), nullptr);
    ASSERT_EQ(boxes.Calls().size(), 1u);
    EXPECT_EQ(boxes.Calls()[0].Text, QStringLiteral("Program is already running.\n\n"));
    EXPECT_EQ(boxes.Calls()[0].Icon, basMsgBox::MsgBoxIcon::Exclamation);

    EXPECT_EQ(basMain::Startup({QStringLiteral("tessavo"), QStringLiteral("/x/a.bmp")}, QuickStart(name), instance,
                               exitCode),
              nullptr);
    first.Exclusive = true;
    EXPECT_EQ(basMain::Startup({QStringLiteral("tessavo")}, QuickStart(name), instance, exitCode), nullptr);
    EXPECT_EQ(boxes.Calls().size(), 1u); // handed over and exclusive: silent
    EXPECT_EQ(exitCode, 0);
    EXPECT_EQ(instance, nullptr);
}

TEST_F(SettingsFileTest, FirstStartSettlesFoldersAndShowsTheFrame)
{
    basTsMainPro::SetAppFolder(Dir.path());
    basTsMainPro::TextDialogMemory[2] = 12;
    clsSingleInstance* instance = nullptr;
    int exitCode = -1;
    QPointer<frmTsMainPro> frame =
        basMain::Startup({QStringLiteral("tessavo"), QStringLiteral("/no/such/file.bmp")}, QuickStart(UniqueName()),
                         instance, exitCode);
    ASSERT_NE(frame, nullptr);
    EXPECT_TRUE(frame->isVisible());
    EXPECT_NE(instance, nullptr);
    EXPECT_EQ(basTsMainPro::WindowsFolder, QStringLiteral("/etc"));
    EXPECT_EQ(basTsMainPro::SystemFolder, QStringLiteral("/usr/lib"));
    EXPECT_TRUE(basTsMainPro::TempFolder.endsWith(QLatin1Char('/')));
    EXPECT_EQ(basTsMainPro::ZlibPath, basTsMainPro::AppFolder() + QStringLiteral("zLIB.dll"));
    EXPECT_EQ(basTsMainPro::WinVerCode, 0);
    EXPECT_TRUE(basTsMainPro::GdiPlusAvailable);
    EXPECT_EQ(basTsMainPro::TextDialogMemory[2], -361);
    EXPECT_GT(basTsMainPro::ScreenDpiX, 0);
    EXPECT_EQ(basMain::CommandLineOf({QStringLiteral("tessavo"), QStringLiteral("a"), QStringLiteral("b.bmp")}),
              QStringLiteral("a b.bmp"));
    frame->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(frame.isNull());
    basTsMainPro::SetAppFolder(QString());
}
