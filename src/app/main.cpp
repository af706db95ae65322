// The `tessavo` program: every window layer registers its windows, then the start-up routine runs.
#include "basMain.h"
#include "basMsgBox.h"
#include "clsGIF.h"
#include "clsPNG.h"
#include "frmTsColorChart.h"
#include "frmTsPaint.h"
#include "frmTsPanoramic.h"
#include "frmTsPrint.h"

#include <QApplication>
#include <QIcon>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Tessavo"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TESSAVO_VERSION));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/tessavo.svg")));
    QGuiApplication::setDesktopFileName(QStringLiteral("tessavo"));
    // The file classes' messages reach the user through the program's message box.
    clsGIF::MessageSink = [](const std::string& Text, const std::string&) {
        basMsgBox::MsgBox(QString::fromStdString(Text), basMsgBox::MsgBoxButtons::OK, basMsgBox::MsgBoxIcon::Exclamation);
    };
    clsPNG::MessageSink = [](const std::string& Text, const std::string&) {
        basMsgBox::MsgBox(QString::fromStdString(Text), basMsgBox::MsgBoxButtons::OK, basMsgBox::MsgBoxIcon::Exclamation);
    };
    frmTsColorChart::Register();
    frmTsPaint::Register();
    frmTsPanoramic::Register();
    frmTsPrint::Register();
    return basMain::Main(app);
}
