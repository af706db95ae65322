#pragma once

// One running copy of the program per user. The first copy listens on a local socket named after
// the user; a later start connects, says its command line and learns what the first copy did with
// it: an exclusive session (icon editor, animation editor) turns every later start away silently,
// a file name is taken over and opened by the first copy, and a start without one is told that
// the program is already running.

#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

class QLocalServer;

class clsSingleInstance : public QObject {
    Q_OBJECT

public:
    enum class Outcome {
        First,                   // this copy is the first: it serves the later ones
        ExclusiveSessionRunning, // the first copy runs an exclusive session: end silently
        FileHandedOver,          // the first copy took the file name: end
        AlreadyRunning,          // no file name: tell the user, then end
    };

    explicit clsSingleInstance(const QString& serverName = DefaultServerName(), QObject* parent = nullptr);
    ~clsSingleInstance() override;

    // The per-user name of the local socket.
    static QString DefaultServerName();

    // Becomes the first copy, or asks the first copy and hands it `commandLine`.
    Outcome Claim(const QString& commandLine, int timeoutMs = 3000);

    // The first copy's answer to whether an exclusive session is up; none means no.
    std::function<bool()> ExclusiveSessionQuery;

    // File names that arrived before anybody listened to FileReceived.
    QStringList TakePendingFiles();
    void SetDeliverFiles(bool deliver) { DeliverFiles = deliver; }

signals:
    // A later start handed over its command line (never emitted during an exclusive session).
    void FileReceived(const QString& commandLine);

private:
    bool Listen();
    void ServeConnection();

    QString ServerName;
    QLocalServer* Server = nullptr;
    QStringList PendingFiles;
    bool DeliverFiles = false;
};
