// tessavo-cli: the program's pictures and surfaces from the command line, without a display.
#include <QGuiApplication>
#include <cstdio>

#include "CliCommands.h"

namespace {

// The toolkit's own chatter (missing runtime folders and the like) is no business of a
// command-line user: only the program's messages reach stderr.
void QuietMessages(QtMsgType Type, const QMessageLogContext&, const QString& Message)
{
    if (Type == QtCriticalMsg || Type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", qPrintable(Message));
}

} // namespace

int main(int argc, char* argv[])
{
    qInstallMessageHandler(QuietMessages);
    // Fonts and metafile rendering need a GUI application, but never a screen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication App(argc, argv);
    QStringList Arguments = App.arguments();
    Arguments.removeFirst();
    QTextStream Out(stdout);
    QTextStream Err(stderr);
    return CliCommands::Run(Arguments, Out, Err);
}
