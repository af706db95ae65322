#include "basMain.h"

#include "basMsgBox.h"
#include "basTsMainPro.h"
#include "clsSingleInstance.h"
#include "frmTsMainPro.h"
#include "frmTsSplash.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QLineEdit>
#include <QPointer>
#include <QScreen>

#include <exception>

namespace basMain {

namespace {

using basMsgBox::MsgBox;
using basMsgBox::MsgBoxButtons;
using basMsgBox::MsgBoxIcon;

// The picture loader stands in for the optional imaging library when it reads PNG and TIFF.
bool PictureLoaderHasPngAndTiff()
{
    const QList<QByteArray> formats = QImageReader::supportedImageFormats();
    return formats.contains("png") && formats.contains("tiff");
}

} // namespace

bool ExclusiveSessionShowing()
{
    static const QStringList exclusiveTitles = {
        QStringLiteral("Icon Editor of Tessavo").toUpper(),
        QStringLiteral("New Animated GIF Screen").toUpper(),
        QStringLiteral("Animated GIF Main Screen").toUpper(),
    };
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && exclusiveTitles.contains(window->windowTitle().trimmed().toUpper()))
            return true;
    }
    return false;
}

QString CommandLineOf(const QStringList& arguments)
{
    return arguments.mid(1).join(QLatin1Char(' '));
}

frmTsMainPro* Startup(const QStringList& arguments, const StartOptions& options, clsSingleInstance*& instance,
                      int& exitCode)
{
    exitCode = 0;
    instance = nullptr;
    const QString commandLine = CommandLineOf(arguments);

    // 1. Another copy may own the session.
    auto* single = new clsSingleInstance(
        options.ServerName.isEmpty() ? clsSingleInstance::DefaultServerName() : options.ServerName);
    switch (single->Claim(commandLine)) {
    case clsSingleInstance::Outcome::ExclusiveSessionRunning:
    case clsSingleInstance::Outcome::FileHandedOver:
        delete single;
        return nullptr;
    case clsSingleInstance::Outcome::AlreadyRunning:
        delete single;
        MsgBox(QStringLiteral("Program is already running.\n\n"), MsgBoxButtons::OK, MsgBoxIcon::Exclamation);
        return nullptr;
    case clsSingleInstance::Outcome::First:
        break;
    }
    single->ExclusiveSessionQuery = ExclusiveSessionShowing;
    instance = single;

    // 2 to 5. The folders.
    const QString appFolder = basTsMainPro::AppFolder();
    basTsMainPro::WindowsFolder = QStringLiteral("/etc");
    if (!basTsMainPro::FolderExists(basTsMainPro::WindowsFolder)) {
        MsgBox(QStringLiteral("Unknown windows directory, cannot proceed"));
        exitCode = 1;
        return nullptr;
    }
    basTsMainPro::SystemFolder = QStringLiteral("/usr/lib");
    if (!basTsMainPro::FolderExists(basTsMainPro::SystemFolder)) {
        MsgBox(QStringLiteral("Unknown windows system directory, cannot proceed"));
        exitCode = 1;
        return nullptr;
    }
    const QString temp = QDir::tempPath();
    basTsMainPro::TempFolder =
        basTsMainPro::FolderExists(temp) ? (temp.endsWith(QLatin1Char('/')) ? temp : temp + QLatin1Char('/'))
                                         : appFolder;

    // 6 to 9. Screen, libraries, system version.
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        basTsMainPro::ScreenDpiX = static_cast<int16_t>(qRound(screen->logicalDotsPerInchX()));
        basTsMainPro::ScreenDpiY = static_cast<int16_t>(qRound(screen->logicalDotsPerInchY()));
    }
    basTsMainPro::ZlibPath = appFolder + QStringLiteral("zLIB.dll");
    basTsMainPro::WinVerCode = 0;
    basTsMainPro::GdiPlusAvailable = PictureLoaderHasPngAndTiff();
    basTsMainPro::GdiPlusStartFailed = false;

    // 10. The splash.
    QPointer<frmTsSplash> splash = new frmTsSplash;
    splash->show();
    frmTsSplash::WaitYielding(options.SplashMilliseconds);

    // 11, 12. Dialog memories, then the frame.
    basTsMainPro::ResetDialogMemories();
    auto* frame = new frmTsMainPro(commandLine);
    frame->setAttribute(Qt::WA_DeleteOnClose);
    frame->show();

    // 13. Without a file to open, the splash stays a moment over the frame.
    if (splash) {
        if (commandLine.isEmpty()) {
            splash->MakeTopmost();
            frmTsSplash::WaitYielding(options.SplashTopmostMilliseconds);
        }
        if (splash)
            splash->close();
    }

    // 14. From now on later starts hand their files to the frame's hidden box.
    QObject::connect(single, &clsSingleInstance::FileReceived, frame, [frame](const QString& file) {
        frame->txbCommandHidden->setText(file);
    });
    single->SetDeliverFiles(true);
    for (const QString& file : single->TakePendingFiles())
        frame->txbCommandHidden->setText(file);
    single->setParent(frame);
    return frame;
}

int Main(QApplication& app, const StartOptions& options)
{
    try {
        QCoreApplication::setApplicationName(QStringLiteral("Tessavo"));
        clsSingleInstance* instance = nullptr;
        int exitCode = 0;
        frmTsMainPro* frame = Startup(QCoreApplication::arguments(), options, instance, exitCode);
        if (frame == nullptr)
            return exitCode;
        return app.exec();
    } catch (const std::exception&) {
        MsgBox(QStringLiteral("Error encountered in main, cannot proceed"));
        return 1;
    }
}

} // namespace basMain
