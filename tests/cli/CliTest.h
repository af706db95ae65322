#pragma once
// tessavo-cli run as a user runs it: the real executable, its exit code and what it printed.
#include <QFile>
#include <QProcess>
#include <QString>
#include <QStringList>

struct CliResult {
    int Exit = -1;
    QString Out;
    QString Err;
};

inline CliResult RunCli(const QStringList& Arguments)
{
    QProcess Process;
    Process.start(QStringLiteral(TESSAVO_CLI), Arguments);
    Process.waitForFinished(60000);
    return {Process.exitStatus() == QProcess::NormalExit ? Process.exitCode() : -1,
            QString::fromUtf8(Process.readAllStandardOutput()), QString::fromUtf8(Process.readAllStandardError())};
}

inline QByteArray ReadAll(const QString& File)
{
    QFile F(File);
    return F.open(QIODevice::ReadOnly) ? F.readAll() : QByteArray();
}
