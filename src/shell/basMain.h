#pragma once

// The start-up routine: settles the single instance, learns the folders and the optional
// libraries, shows the splash and then the frame, and hands over to the event loop.

#include <QString>
#include <QStringList>

class QApplication;
class clsSingleInstance;
class frmTsMainPro;

namespace basMain {

struct StartOptions {
    int SplashMilliseconds = 2000;      // the splash's first wait
    int SplashTopmostMilliseconds = 1000; // its second wait, over the frame, without a command line
    QString ServerName;                  // empty: the per-user default
};

// The title texts of the exclusive sessions' windows; a running copy showing one of them turns
// every later start away.
bool ExclusiveSessionShowing();

// The program's command line as one file name: the arguments after the program's name.
QString CommandLineOf(const QStringList& arguments);

// Runs start-up steps up to the shown frame. Returns the frame, or null when this start ends
// here (another copy runs, or the machine lacks what the program needs); `exitCode` says how.
// `instance` receives the single-instance object that must live as long as the frame.
frmTsMainPro* Startup(const QStringList& arguments, const StartOptions& options, clsSingleInstance*& instance,
                      int& exitCode);

// Startup, then the event loop. The program's main.
int Main(QApplication& app, const StartOptions& options = StartOptions());

} // namespace basMain
