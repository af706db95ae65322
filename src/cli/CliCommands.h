#pragma once
// The commands of tessavo-cli, apart from main() so that tests can run them in-process.
#include <QStringList>
#include <QTextStream>

class clsDIB;
#include <string>

class clsDIB;

namespace CliCommands {

constexpr int ExitOk = 0;
constexpr int ExitFailure = 1;
constexpr int ExitUsage = 2;

QString UsageText();

// Runs one command line (without the program name). Results go to Out, the program's
// messages and usage errors to Err. Returns the exit code.
int Run(const QStringList& Arguments, QTextStream& Out, QTextStream& Err);

// Shared by the command files.
// Prints the reason and the usage text; ExitUsage.
int Usage(QTextStream& Err, const QString& Why);
// Prints the message; ExitFailure.
int Fail(QTextStream& Err, const QString& Message);
// Loads a picture file into a surface; on failure prints the message and answers false.
bool Load(const QString& FileName, clsDIB& Dib, QTextStream& Err);
// A file name as the file classes take it.
std::string FileArgument(const QString& Name);

// CliPng.cpp: png tags FILE, png decode FILE OUT.bmp.
int Png(const QStringList& Arguments, QTextStream& Out, QTextStream& Err);
// True when a convert command line names a .png output; ConvertPng then runs it.
bool IsPngConvert(const QStringList& Arguments);
int ConvertPng(const QStringList& Arguments, QTextStream& Err);

// CliIcons.cpp: ico info|extract, ani info|extract, pe icons, and convert to .tga, .pcx, .ico,
// .cur.
int Ico(const QStringList& Arguments, QTextStream& Out, QTextStream& Err);
int Ani(const QStringList& Arguments, QTextStream& Out, QTextStream& Err);
int Pe(const QStringList& Arguments, QTextStream& Out, QTextStream& Err);
bool IsIconConvert(const QStringList& Arguments);
int ConvertIcon(const QStringList& Arguments, QTextStream& Err);
// TGA, PCX, icons and cursors through the program's own readers; false for other names.
bool LoadOwnFormat(const QString& FileName, clsDIB& Dib);

} // namespace CliCommands
