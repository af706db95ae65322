#pragma once

// Reader and writer of INI files with private-profile behaviour:
// - sections and keys are matched without regard to case;
// - an empty value and a missing key read alike (the caller's default);
// - values are read trimmed of surrounding blanks, at most IniMaxValueLength characters;
// - a write keeps every other byte of the file: order, comments, blank lines, foreign lines and
//   line ends; an existing key gets its value replaced in place, a new key goes at the end of its
//   section, a new section at the end of the file;
// - the file is written to a temporary in the same folder and renamed over the old one, so a failed
//   write leaves the old file whole. Writing creates the file, never its folder.
// Text is UTF-8 on disk; bytes that are not valid UTF-8 are read as Latin-1.
// Nothing here throws and nothing reports: failures return false or the default.

#include <QByteArray>
#include <QString>

namespace basINI {

// The reader hands back what a 2048-character buffer holds: 2047 characters and the terminator.
inline constexpr int IniMaxValueLength = 2047;

// Settings files are small; anything larger is refused rather than read into memory.
inline constexpr qsizetype IniMaxFileBytes = 16 * 1024 * 1024;

// The blanks the reader strips around names and values: spaces and tabs, nothing else.
QString TrimBlanks(const QString& text);

QString IniRead(const QString& section, const QString& key, const QString& defaultValue,
                const QString& iniFile);
bool IniWrite(const QString& section, const QString& key, const QString& value,
              const QString& iniFile);
bool IniDelete(const QString& section, const QString& key, const QString& iniFile);

// The same operations on the bytes of a file held in memory. They let a caller run several changes
// and write the file once, and let the parser be exercised without touching the disk.
QString IniReadBuffer(const QByteArray& bytes, const QString& section, const QString& key,
                      const QString& defaultValue);
bool IniWriteBuffer(QByteArray& bytes, const QString& section, const QString& key,
                    const QString& value);
bool IniDeleteBuffer(QByteArray& bytes, const QString& section, const QString& key);

// Whole-file access used by the routines above. LoadIniBytes fails for a missing file, a folder or
// any other non-regular file, and a file over IniMaxFileBytes. SaveIniBytes replaces the file
// atomically.
bool LoadIniBytes(const QString& iniFile, QByteArray& bytes);
bool SaveIniBytes(const QString& iniFile, const QByteArray& bytes);

} // namespace basINI
