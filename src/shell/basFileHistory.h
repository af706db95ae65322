#pragma once

// The recent-file lists kept in the settings file. Four lists share this code; each is a section
// holding the keys "1." to "8.", newest first.

#include <QString>

#include <vector>

namespace basFileHistory {

inline constexpr char SectionPaint[] = "File History";
inline constexpr char SectionIconEditor[] = "File History Icon Editor";
inline constexpr char SectionGIFani[] = "File History GIFani";
inline constexpr char SectionANIcursor[] = "File History - ANIcursor";

inline constexpr int MaxEntries = 8;

// Shown by the window when a chosen file is gone; the entry stays in the list.
inline constexpr char FileNotFoundMessage[] = "File not found.";

// The key of entry `number` (1..8): "1." to "8.".
QString EntryKey(int number);

// Puts `path` first in the list: an empty list gets it as "1."; a list that already starts with it
// is left as it stands; otherwise it goes first, the others follow in order without empties or a
// second copy of it, and the oldest beyond eight falls off. The file is written once, and not at
// all when nothing changed. False when the path is empty or the file could not be written.
bool AddToHistory(const QString& section, const QString& path, const QString& iniFile);

struct HistoryEntry {
    QString FullPath; // as stored, trimmed
    QString Caption;  // "&" + number + " " + the path shortened to 80 characters
};

struct HistoryList {
    std::vector<HistoryEntry> Entries; // numbered consecutively from 1
    bool ShowSeparator = false;        // the menu's separator shows when there is an entry
};

// The menu's view of a list: the non-empty keys "1." to "8." in order. A missing settings file
// gives an empty list.
HistoryList ListHistory(const QString& section, const QString& iniFile);

struct HistoryChoice {
    QString FullPath; // empty when the index is outside the list
    bool Exists = false;
};

// The file behind menu entry `index` (0-based in Entries), taken from the list rather than the
// caption, and whether it can still be opened.
HistoryChoice ChooseHistoryEntry(const HistoryList& list, int index);

} // namespace basFileHistory
