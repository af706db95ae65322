#include "basTsMainPro.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace basTsMainPro {

namespace {

QString& AppFolderOverride()
{
    static QString folder;
    return folder;
}

QString WithTrailingSlash(QString folder)
{
    if (!folder.endsWith(QLatin1Char('/')))
        folder += QLatin1Char('/');
    return folder;
}

QString ExecutableFolder()
{
    if (QCoreApplication::instance())
        return QCoreApplication::applicationDirPath();
    // Before the application object exists (tools, early start-up) the kernel still knows.
    const QFileInfo self(QStringLiteral("/proc/self/exe"));
    if (self.exists())
        return self.canonicalPath();
    return QDir::currentPath();
}

} // namespace

bool FileExists(const QString& path)
{
    if (path.isEmpty())
        return false;
    // Only regular files are opened: opening a pipe for reading would wait for a writer.
    if (!QFileInfo(path).isFile())
        return false;
    QFile file(path);
    return file.open(QIODevice::ReadOnly);
}

bool FolderExists(const QString& path)
{
    return !path.isEmpty() && QFileInfo(path).isDir();
}

QString ParseFileSpec(const QString& path, int part)
{
    if (part < 0 || part > 6 || path.isEmpty() || path.size() > MaxParsedPathLength)
        return QString();
    const QChar first = path.at(0);
    if (first == QLatin1Char('$') || first == QLatin1Char(' ') || first == QLatin1Char('\t'))
        return QString();
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    const QString folder = path.left(slash + 1);
    const QString nameAndExtension = path.mid(slash + 1);
    const qsizetype dot = nameAndExtension.lastIndexOf(QLatin1Char('.'));
    const QString name = dot < 0 ? nameAndExtension : nameAndExtension.left(dot);
    const QString extension = dot < 0 ? QString() : nameAndExtension.mid(dot);
    switch (part) {
    case 0:
    case 3:
        return folder;
    case 1:
        return folder + name;
    case 2:
        return QString(); // no drive letters here
    case 4:
        return nameAndExtension;
    case 5:
        return name;
    default:
        return extension;
    }
}

QString ShortenPathForDisplay(const QString& path, int maxLen)
{
    QString shown = path;
    if (path.count(QLatin1Char('/')) >= 4) {
        const qsizetype second = path.indexOf(QLatin1Char('/'), path.indexOf(QLatin1Char('/')) + 1);
        const qsizetype last = path.lastIndexOf(QLatin1Char('/'));
        shown = path.left(second) + QStringLiteral("/...../") + path.mid(last + 1);
    }
    if (shown.size() > maxLen) {
        // Below 9 characters there is no tail left to show; the head and the dots remain.
        const qsizetype tail = maxLen > 9 ? maxLen - 9 : 0;
        shown = shown.left(3) + QStringLiteral("......") + shown.right(tail);
    }
    return shown;
}

QString AppFolder()
{
    const QString& folder = AppFolderOverride();
    if (!folder.isEmpty())
        return folder;
    return WithTrailingSlash(ExecutableFolder());
}

void SetAppFolder(const QString& folder)
{
    AppFolderOverride() = folder.isEmpty() ? QString() : WithTrailingSlash(folder);
}

} // namespace basTsMainPro
