#include "clsSingleInstance.h"

#include <QElapsedTimer>
#include <QLocalServer>
#include <QLocalSocket>

#include <unistd.h>

namespace {

constexpr char ReplyExclusive[] = "EXCLUSIVE";
constexpr char ReplyTaken[] = "TAKEN";
constexpr char ReplyRunning[] = "RUNNING";

} // namespace

clsSingleInstance::clsSingleInstance(const QString& serverName, QObject* parent)
    : QObject(parent), ServerName(serverName)
{
}

clsSingleInstance::~clsSingleInstance() = default;

QString clsSingleInstance::DefaultServerName()
{
    return QStringLiteral("Tessavo-%1").arg(static_cast<qulonglong>(::getuid()));
}

bool clsSingleInstance::Listen()
{
    Server = new QLocalServer(this);
    // Only this user may hand files over.
    Server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!Server->listen(ServerName)) {
        delete Server;
        Server = nullptr;
        return false;
    }
    connect(Server, &QLocalServer::newConnection, this, &clsSingleInstance::ServeConnection);
    return true;
}

clsSingleInstance::Outcome clsSingleInstance::Claim(const QString& commandLine, int timeoutMs)
{
    for (int attempt = 0; attempt < 2; ++attempt) {
        QLocalSocket socket;
        socket.connectToServer(ServerName);
        if (socket.waitForConnected(timeoutMs)) {
            socket.write(commandLine.toUtf8() + '\n');
            socket.flush();
            QByteArray reply;
            QElapsedTimer clock;
            clock.start();
            while (!reply.contains('\n') && clock.elapsed() < timeoutMs) {
                if (!socket.waitForReadyRead(int(timeoutMs - clock.elapsed())))
                    break;
                reply += socket.readAll();
            }
            reply = reply.trimmed();
            if (reply == ReplyExclusive)
                return Outcome::ExclusiveSessionRunning;
            if (reply == ReplyTaken)
                return Outcome::FileHandedOver;
            if (reply == ReplyRunning)
                return Outcome::AlreadyRunning;
            // A copy that does not answer is hung or still starting: treat it as running, so a
            // second window never appears beside it.
            return commandLine.isEmpty() ? Outcome::AlreadyRunning : Outcome::FileHandedOver;
        }
        if (Listen())
            return Outcome::First;
        // Nobody answers but the name is taken: a copy that crashed left its socket behind.
        QLocalServer::removeServer(ServerName);
        if (Listen())
            return Outcome::First;
    }
    return Outcome::First;
}

QStringList clsSingleInstance::TakePendingFiles()
{
    QStringList files;
    files.swap(PendingFiles);
    return files;
}

void clsSingleInstance::ServeConnection()
{
    while (QLocalSocket* socket = Server->nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
            if (!socket->canReadLine())
                return;
            const QString commandLine = QString::fromUtf8(socket->readLine()).trimmed();
            const bool exclusive = ExclusiveSessionQuery && ExclusiveSessionQuery();
            if (exclusive) {
                socket->write(QByteArray(ReplyExclusive) + '\n');
            } else if (commandLine.isEmpty()) {
                socket->write(QByteArray(ReplyRunning) + '\n');
            } else {
                socket->write(QByteArray(ReplyTaken) + '\n');
                if (DeliverFiles)
                    emit FileReceived(commandLine);
                else
                    PendingFiles.append(commandLine);
            }
            socket->flush();
            socket->disconnectFromServer();
        });
    }
}
