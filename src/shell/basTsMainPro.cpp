#include "basTsMainPro.h"

#include "clsDIB.h"
#include "DeviceContext.h"
#include "basMath.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

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

namespace {

bool& ZlibAvailableFlag()
{
    static bool available = true;
    return available;
}

int64_t& AvailableKBOverride()
{
    static int64_t kb = -1;
    return kb;
}

} // namespace

bool ZlibAvailable()
{
    return ZlibAvailableFlag();
}

void SetZlibAvailableForTest(bool available)
{
    ZlibAvailableFlag() = available;
}

std::vector<DocSlot>& DocSlots()
{
    static std::vector<DocSlot> docSlots(1);
    return docSlots;
}

std::vector<QWidget*>& DocForms()
{
    static std::vector<QWidget*> forms(1, nullptr);
    return forms;
}

void ResetDocSlots()
{
    DocSlots().assign(1, DocSlot{});
    DocForms().assign(1, nullptr);
}

int NextFreeDocSlot()
{
    std::vector<DocSlot>& docSlots = DocSlots();
    std::vector<QWidget*>& forms = DocForms();
    for (size_t i = 0; i < docSlots.size(); ++i) {
        if (i >= forms.size() || forms[i] == nullptr)
            return static_cast<int>(i);
    }
    docSlots.push_back(DocSlot{});
    forms.resize(docSlots.size(), nullptr);
    return static_cast<int>(docSlots.size() - 1);
}

bool AnyDocumentOpen()
{
    const std::vector<DocSlot>& docSlots = DocSlots();
    const std::vector<QWidget*>& forms = DocForms();
    for (size_t i = 0; i < docSlots.size() && i < forms.size(); ++i) {
        if (forms[i] != nullptr && !docSlots[i].Closed)
            return true;
    }
    return false;
}

void ResetDialogMemories()
{
    TextDialogMemory[0] = DialogMemoryDefault;
    TextDialogMemory[1] = DialogMemoryDefault;
    TextDialogMemory[2] = TextDialogAngleDefault;
    AdjustEdgeMemory = DialogMemoryDefault;
    GradientMemory = DialogMemoryDefault;
    ShadowMemory = DialogMemoryDefault;
    RegionOperationMemory = DialogMemoryDefault;
}

QString GetShortPath(const QString& path)
{
    return path;
}

bool IsReadOnlyFile(const QString& path)
{
    // The owner's write bit plays the read-only attribute: it holds for every user, root included.
    const QFileInfo info(path);
    return info.exists() && !(info.permissions() & QFileDevice::WriteOwner);
}

bool ClearFileAttributes(const QString& path)
{
    QFile file(path);
    return file.setPermissions(file.permissions() | QFileDevice::WriteOwner | QFileDevice::ReadOwner);
}

bool DeleteFileSafe(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists() && !info.isSymLink())
        return true;
    if (!info.isFile() || IsReadOnlyFile(path))
        return false;
    return QFile::remove(path);
}

void ClampRGB(int16_t& r, int16_t& g, int16_t& b)
{
    auto clamp = [](int16_t& value) { value = value < 0 ? int16_t(0) : value > 255 ? int16_t(255) : value; };
    clamp(r);
    clamp(g);
    clamp(b);
}

QString ColorToHex(int r, int g, int b)
{
    auto hex = [](int value) { return QStringLiteral("%1").arg(value & 255, 2, 16, QLatin1Char('0')).toUpper(); };
    return hex(r) + hex(g) + hex(b);
}

void BestFitSize(int32_t w, int32_t h, int32_t maxW, int32_t maxH, int32_t& outW, int32_t& outH, bool force)
{
    if (w > 0 && h > 0 && w <= maxW && h <= maxH && !force) {
        outW = w;
        outH = h;
        return;
    }
    if (w <= 0 || h <= 0) {
        outW = 0;
        outH = 0;
        return;
    }
    const double scale = std::min(double(maxW) / w, double(maxH) / h);
    outW = RoundHalfEven(w * scale);
    outH = RoundHalfEven(h * scale);
}

bool NonBlankBounds(const clsDIB& picture, uint32_t blank, PixelBox& box)
{
    const int32_t width = picture.DIBWidth();
    const int32_t height = picture.DIBHeight();
    DeviceContext* dc = picture.DIBhDC();
    box = PixelBox{width, height, -1, -1};
    if (dc == nullptr)
        return false;
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            if (dc->GetPixel(x, y) == blank)
                continue;
            box.Left = std::min(box.Left, x);
            box.Right = std::max(box.Right, x);
            box.Top = std::min(box.Top, y);
            box.Bottom = std::max(box.Bottom, y);
        }
    }
    if (box.Right < 0) {
        box = PixelBox{};
        return false;
    }
    return true;
}

int64_t AvailablePhysicalKB()
{
    if (AvailableKBOverride() >= 0)
        return AvailableKBOverride();
    QFile meminfo(QStringLiteral("/proc/meminfo"));
    if (!meminfo.open(QIODevice::ReadOnly))
        return -1;
    while (!meminfo.atEnd()) {
        const QByteArray line = meminfo.readLine();
        if (!line.startsWith("MemAvailable:"))
            continue;
        const QList<QByteArray> fields = line.simplified().split(' ');
        return fields.size() >= 2 ? fields.at(1).toLongLong() : -1;
    }
    return -1;
}

void SetAvailablePhysicalKBForTest(int64_t kb)
{
    AvailableKBOverride() = kb;
}

int32_t RamLimitKB(int watchIndex)
{
    return watchIndex >= 1 && watchIndex <= 4 ? watchIndex * 10000 : 0;
}

QString RamLowMessage(int64_t availableKB)
{
    return QStringLiteral("Reminder: Your current RAM memory at ") + QString::number(availableKB) +
           QStringLiteral(" KB is running low.\nYou may wish to try to reboot.\n\n"
                          "(Note: You can change Option to remove RAM monitoring)");
}

} // namespace basTsMainPro
