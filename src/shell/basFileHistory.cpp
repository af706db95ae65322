#include "basFileHistory.h"

#include "basINI.h"
#include "basTsMainPro.h"

#include <QByteArray>
#include <QFileInfo>
#include <QStringList>

namespace basFileHistory {

QString EntryKey(int number)
{
    return QString::number(number) + QLatin1Char('.');
}

bool AddToHistory(const QString& section, const QString& path, const QString& iniFile)
{
    const QString entry = basINI::TrimBlanks(path);
    if (entry.isEmpty())
        return false;
    QByteArray bytes;
    if (QFileInfo::exists(iniFile) && !basINI::LoadIniBytes(iniFile, bytes))
        return false;
    const QByteArray before = bytes;

    // All changes are made in memory and the file is written once.
    bool ok = true;
    const QString first = basINI::IniReadBuffer(bytes, section, EntryKey(1), QString());
    if (first.isEmpty() || first == entry) {
        // Rewriting an equal first entry in place leaves the file as it was.
        ok = basINI::IniWriteBuffer(bytes, section, EntryKey(1), entry);
    } else {
        QStringList list{entry};
        for (int n = 1; n <= MaxEntries; ++n) {
            const QString stored = basINI::IniReadBuffer(bytes, section, EntryKey(n), QString());
            if (!stored.isEmpty() && stored != entry)
                list.append(stored);
        }
        for (int n = 1; n <= MaxEntries; ++n)
            ok = basINI::IniDeleteBuffer(bytes, section, EntryKey(n)) && ok;
        for (int i = 0; i < list.size() && i < MaxEntries; ++i)
            ok = basINI::IniWriteBuffer(bytes, section, EntryKey(i + 1), list.at(i)) && ok;
    }
    if (!ok)
        return false;
    if (bytes == before)
        return true;
    return basINI::SaveIniBytes(iniFile, bytes);
}

HistoryList ListHistory(const QString& section, const QString& iniFile)
{
    HistoryList list;
    QByteArray bytes;
    if (!QFileInfo::exists(iniFile) || !basINI::LoadIniBytes(iniFile, bytes))
        return list;
    for (int n = 1; n <= MaxEntries; ++n) {
        const QString stored = basINI::IniReadBuffer(bytes, section, EntryKey(n), QString());
        if (stored.isEmpty())
            continue;
        const int number = static_cast<int>(list.Entries.size()) + 1;
        list.Entries.push_back({stored, QLatin1Char('&') + QString::number(number) + QLatin1Char(' ')
                                            + basTsMainPro::ShortenPathForDisplay(
                                                stored, basTsMainPro::DisplayPathLength)});
    }
    list.ShowSeparator = !list.Entries.empty();
    return list;
}

HistoryChoice ChooseHistoryEntry(const HistoryList& list, int index)
{
    HistoryChoice choice;
    if (index < 0 || static_cast<size_t>(index) >= list.Entries.size())
        return choice;
    choice.FullPath = list.Entries[static_cast<size_t>(index)].FullPath;
    choice.Exists = basTsMainPro::FileExists(choice.FullPath);
    return choice;
}

} // namespace basFileHistory
