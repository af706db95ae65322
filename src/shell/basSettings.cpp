#include "basSettings.h"

#include "basINI.h"
#include "basTsMainPro.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <limits>

namespace basSettings {

namespace {

QString PerUserSettingsFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
}

bool ToWholeNumber(const QString& text, int& value)
{
    bool ok = false;
    value = text.toInt(&ok);
    return ok;
}

} // namespace

QString SettingsFilePath()
{
    const QString appFolder = basTsMainPro::AppFolder();
    const QFileInfo info(appFolder);
    if (info.isDir() && info.isWritable())
        return appFolder + QLatin1String(SettingsFileName);
    const QString userFolder = PerUserSettingsFolder();
    if (userFolder.isEmpty())
        return appFolder + QLatin1String(SettingsFileName);
    return userFolder + QLatin1Char('/') + QLatin1String(SettingsFileName);
}

QString SettingsFilePathForWriting()
{
    const QString path = SettingsFilePath();
    const QString folder = QFileInfo(path).absolutePath();
    if (!QFileInfo(folder).isDir())
        QDir().mkpath(folder);
    return path;
}

bool BooleanFromText(const QString& stored, bool whenMissing)
{
    if (stored.isEmpty())
        return whenMissing;
    return stored == QLatin1String("-1");
}

QString TextFromBoolean(bool value)
{
    return value ? QStringLiteral("-1") : QStringLiteral("0");
}

std::optional<int> WatchRAMFromText(const QString& stored)
{
    if (stored.isEmpty())
        return WatchRAMDefault;
    int index = 0;
    if (!ToWholeNumber(stored, index) || index < 0 || index >= WatchRAMEntries)
        return std::nullopt;
    return index;
}

int WatchRAMMirror(std::optional<int> checkedEntry)
{
    return checkedEntry.value_or(0);
}

int BrushSizeIndexFromText(const QString& stored, int listCount)
{
    int index = 0;
    if (stored.isEmpty() || !ToWholeNumber(stored, index) || index < 0 || index >= listCount)
        return BrushSizeIndexDefault;
    return index;
}

int16_t ColorChartCoordinateFromText(const QString& stored)
{
    int value = 0;
    if (stored.isEmpty() || !ToWholeNumber(stored, value) || value < std::numeric_limits<int16_t>::min()
        || value > std::numeric_limits<int16_t>::max())
        return -1;
    return static_cast<int16_t>(value);
}

ColorChartPos ClampColorChartPos(ColorChartPos pos, int screenWidthTwips, int screenHeightTwips)
{
    const auto clamp = [](int16_t value, int screenTwips, int margin) {
        int v = value;
        const long long limit = static_cast<long long>(screenTwips) - margin;
        if (v > limit)
            v = static_cast<int>(limit);
        if (v < 0)
            v = 0;
        return static_cast<int16_t>(v);
    };
    pos.Left = clamp(pos.Left, screenWidthTwips, ColorChartMarginWidth);
    pos.Top = clamp(pos.Top, screenHeightTwips, ColorChartMarginHeight);
    return pos;
}

int NumberFromText(const QString& stored)
{
    qsizetype i = 0;
    while (i < stored.size() && (stored.at(i) == QLatin1Char(' ') || stored.at(i) == QLatin1Char('\t')))
        ++i;
    bool negative = false;
    if (i < stored.size() && (stored.at(i) == QLatin1Char('-') || stored.at(i) == QLatin1Char('+'))) {
        negative = stored.at(i) == QLatin1Char('-');
        ++i;
    }
    long long value = 0;
    for (; i < stored.size(); ++i) {
        const char16_t c = stored.at(i).unicode();
        if (c < u'0' || c > u'9')
            break;
        value = std::min<long long>(value * 10 + (c - u'0'), std::numeric_limits<int>::max());
    }
    return static_cast<int>(negative ? -value : value);
}

int SlideSizeFromText(const QString& stored)
{
    const bool holdsDigit = std::any_of(stored.cbegin(), stored.cend(),
                                        [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); });
    return holdsDigit ? NumberFromText(stored) : 0;
}

QString FolderOrFallback(const QString& stored, const QString& fallback)
{
    return basTsMainPro::FolderExists(stored) ? stored : fallback;
}

QString ReadRaw(const QString& section, const QString& key, const QString& iniFile)
{
    return basINI::IniRead(section, key, QString(), iniFile);
}

bool WriteIfChanged(const QString& section, const QString& key, const QString& value, const QString& iniFile)
{
    const QString old = ReadRaw(section, key, iniFile);
    if (!old.isEmpty() && old == value)
        return false;
    return basINI::IniWrite(section, key, value, iniFile);
}

OptionSettings ReadOptions(const QString& iniFile)
{
    const auto option = [&iniFile](const char* key, bool whenMissing) {
        return BooleanFromText(ReadRaw(QLatin1String(SectionOptions), QLatin1String(key), iniFile), whenMissing);
    };
    OptionSettings options;
    options.SDIOnly = option(KeySDIOnly, false);
    options.WatchRAMChecked = WatchRAMFromText(ReadRaw(QLatin1String(SectionOptions), QLatin1String(KeyWatchRAM), iniFile));
    options.RemindColorSetting = option(KeyRemindColorSetting, true);
    options.InvokeIconEditorOnProgramStart = option(KeyInvokeIconEditorOnProgramStart, true);
    options.FitInEvenIfSmaller = option(KeyFitInEvenIfSmaller, false);
    options.JPGAddBackEXIF = option(KeyJPGAddBackEXIF, true);
    return options;
}

void WriteOptions(const OptionSettings& options, const QString& iniFile)
{
    const QString section = QLatin1String(SectionOptions);
    const auto option = [&](const char* key, bool value) {
        WriteIfChanged(section, QLatin1String(key), TextFromBoolean(value), iniFile);
    };
    option(KeySDIOnly, options.SDIOnly);
    WriteIfChanged(section, QLatin1String(KeyWatchRAM), QString::number(WatchRAMMirror(options.WatchRAMChecked)),
                   iniFile);
    option(KeyRemindColorSetting, options.RemindColorSetting);
    option(KeyInvokeIconEditorOnProgramStart, options.InvokeIconEditorOnProgramStart);
    option(KeyFitInEvenIfSmaller, options.FitInEvenIfSmaller);
    option(KeyJPGAddBackEXIF, options.JPGAddBackEXIF);
}

int ReadBrushSizeIndex(int listCount, const QString& iniFile)
{
    return BrushSizeIndexFromText(ReadRaw(QLatin1String(SectionSettings), QLatin1String(KeyBrushSizeIndex), iniFile),
                                  listCount);
}

void WriteBrushSizeIndex(int index, const QString& iniFile)
{
    WriteIfChanged(QLatin1String(SectionSettings), QLatin1String(KeyBrushSizeIndex), QString::number(index), iniFile);
}

ColorChartPos ReadColorChartPos(const QString& iniFile)
{
    const QString section = QLatin1String(SectionColorChartPos);
    ColorChartPos pos;
    pos.Left = ColorChartCoordinateFromText(ReadRaw(section, QLatin1String(KeyLeft), iniFile));
    pos.Top = ColorChartCoordinateFromText(ReadRaw(section, QLatin1String(KeyTop), iniFile));
    return pos;
}

void WriteColorChartPos(ColorChartPos pos, const QString& iniFile)
{
    const QString section = QLatin1String(SectionColorChartPos);
    WriteIfChanged(section, QLatin1String(KeyLeft), QString::number(pos.Left), iniFile);
    WriteIfChanged(section, QLatin1String(KeyTop), QString::number(pos.Top), iniFile);
}

bool ReadShowPreview(const QString& iniFile)
{
    return BooleanFromText(
        ReadRaw(QLatin1String(SectionDialogShowPreview), QLatin1String(KeyShowPreview), iniFile), true);
}

void WriteShowPreview(bool showPreview, const QString& iniFile)
{
    WriteIfChanged(QLatin1String(SectionDialogShowPreview), QLatin1String(KeyShowPreview),
                   TextFromBoolean(showPreview), iniFile);
}

SlideShowSettings ReadSlideShow(const QString& iniFile)
{
    const QString section = QLatin1String(SectionSlideShow);
    SlideShowSettings slideShow;
    slideShow.SlideSize = SlideSizeFromText(ReadRaw(section, QLatin1String(KeySlideSize), iniFile));
    slideShow.SlideStyle = NumberFromText(ReadRaw(section, QLatin1String(KeySlideStyle), iniFile));
    slideShow.SlidePace = NumberFromText(ReadRaw(section, QLatin1String(KeySlidePace), iniFile));
    return slideShow;
}

void WriteSlideShow(const SlideShowSettings& slideShow, const QString& iniFile)
{
    const QString section = QLatin1String(SectionSlideShow);
    WriteIfChanged(section, QLatin1String(KeySlideSize), QString::number(slideShow.SlideSize), iniFile);
    WriteIfChanged(section, QLatin1String(KeySlideStyle), QString::number(slideShow.SlideStyle), iniFile);
    WriteIfChanged(section, QLatin1String(KeySlidePace), QString::number(slideShow.SlidePace), iniFile);
}

QString ReadLastFolder(const QString& key, const QString& fallback, const QString& iniFile)
{
    return ReadLastFolder(QLatin1String(SectionLastFolder), key, fallback, iniFile);
}

QString ReadLastFolder(const QString& section, const QString& key, const QString& fallback, const QString& iniFile)
{
    return FolderOrFallback(ReadRaw(section, key, iniFile), fallback);
}

void WriteLastFolder(const QString& key, const QString& folder, const QString& iniFile)
{
    WriteIfChanged(QLatin1String(SectionLastFolder), key, folder, iniFile);
}

} // namespace basSettings
