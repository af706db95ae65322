// One running copy: a later start learns from the first what became of its command line.
#include "clsSingleInstance.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QUuid>

#include <atomic>
#include <thread>

namespace {

QString UniqueName()
{
    return QStringLiteral("TessavoTest-") + QUuid::createUuid().toString(QUuid::WithoutBraces);
}

// A later start runs in its own thread, as a second process would, while the first copy's event
// loop keeps serving.
clsSingleInstance::Outcome ClaimFromAnotherCopy(const QString& name, const QString& commandLine)
{
    std::atomic<bool> done = false;
    clsSingleInstance::Outcome outcome = clsSingleInstance::Outcome::First;
    std::thread later([&] {
        clsSingleInstance second(name);
        outcome = second.Claim(commandLine, 5000);
        done = true;
    });
    while (!done)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    later.join();
    return outcome;
}

} // namespace

TEST(clsSingleInstance, LaterStartsLearnWhatTheFirstDid)
{
    const QString name = UniqueName();
    clsSingleInstance first(name);
    ASSERT_EQ(first.Claim(QString()), clsSingleInstance::Outcome::First);
    bool exclusive = false;
    first.ExclusiveSessionQuery = [&exclusive] { return exclusive; };

    // Before the frame listens, files wait in the queue.
    EXPECT_EQ(ClaimFromAnotherCopy(name, QStringLiteral("/pictures/early.bmp")),
              clsSingleInstance::Outcome::FileHandedOver);
    EXPECT_EQ(first.TakePendingFiles(), QStringList{QStringLiteral("/pictures/early.bmp")});

    first.SetDeliverFiles(true);
    QSignalSpy received(&first, &clsSingleInstance::FileReceived);
    EXPECT_EQ(ClaimFromAnotherCopy(name, QStringLiteral("/pictures/a b.gif")),
              clsSingleInstance::Outcome::FileHandedOver);
    EXPECT_EQ(ClaimFromAnotherCopy(name, QString()), clsSingleInstance::Outcome::AlreadyRunning);
    exclusive = true;
    EXPECT_EQ(ClaimFromAnotherCopy(name, QStringLiteral("/pictures/ignored.png")),
              clsSingleInstance::Outcome::ExclusiveSessionRunning);
    EXPECT_EQ(ClaimFromAnotherCopy(name, QString()), clsSingleInstance::Outcome::ExclusiveSessionRunning);

    ASSERT_EQ(received.size(), 1);
    EXPECT_EQ(received[0][0].toString(), QStringLiteral("/pictures/a b.gif"));
}

TEST(clsSingleInstance, LeftoverSocketOfACrashedCopyIsTakenOver)
{
    const QString name = UniqueName();
    // A copy that died leaves its socket's file behind; nobody answers on it.
    QFile leftover(QDir::tempPath() + QLatin1Char('/') + name);
    ASSERT_TRUE(leftover.open(QIODevice::WriteOnly));
    leftover.close();
    clsSingleInstance first(name);
    EXPECT_EQ(first.Claim(QString(), 500), clsSingleInstance::Outcome::First);
    EXPECT_EQ(ClaimFromAnotherCopy(name, QString()), clsSingleInstance::Outcome::AlreadyRunning);
}
