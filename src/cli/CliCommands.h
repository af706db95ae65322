#pragma once
// The commands of tessavo-cli, apart from main() so that tests can run them in-process.
#include <QStringList>
#include <QTextStream>

namespace CliCommands {

constexpr int ExitOk = 0;
constexpr int ExitFailure = 1;
constexpr int ExitUsage = 2;

QString UsageText();

// Runs one command line (without the program name). Results go to Out, the program's
// messages and usage errors to Err. Returns the exit code.
int Run(const QStringList& Arguments, QTextStream& Out, QTextStream& Err);

} // namespace CliCommands
