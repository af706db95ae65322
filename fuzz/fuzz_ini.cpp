// Feeds any bytes to the settings reader and writer as the content of "TsPaint.ini": looks keys up,
// writes one and deletes it again. Beyond not crashing, a written key must read back and a deleted
// key must read as missing, whatever the rest of the file holds.

#include "basINI.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>

namespace {

void Check(bool condition)
{
    if (!condition)
        __builtin_trap();
}


// Writes, reads back (also under `otherSpelling` of the section), deletes and reads again one key.
// Names the writer refuses are skipped.
void RoundTrip(QByteArray bytes, const QString& section, const QString& otherSpelling, const QString& key,
               const QString& value)
{
    if (!basINI::IniWriteBuffer(bytes, section, key, value))
        return;
    Check(basINI::IniReadBuffer(bytes, section, key, QString()) == basINI::TrimBlanks(value));
    Check(basINI::IniReadBuffer(bytes, otherSpelling, key, QString()) == basINI::TrimBlanks(value));
    Check(basINI::IniDeleteBuffer(bytes, section, key));
    Check(basINI::IniReadBuffer(bytes, section, key, QStringLiteral("gone")) == QStringLiteral("gone"));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));

    static const char* const lookups[][2] = {
        {"Options", "SDIOnly"},     {"options", "WATCHRAM"},       {"File History", "1."},
        {"ColorChart Pos", "Left"}, {"Last Folder", "PAL"},        {"IconEditor Options", "GridLines"},
    };
    for (const auto& lookup : lookups)
        Check(basINI::IniReadBuffer(bytes, QString::fromLatin1(lookup[0]), QString::fromLatin1(lookup[1]),
                                    QString())
                  .size()
              <= basINI::IniMaxValueLength);

    RoundTrip(bytes, QStringLiteral("Options"), QStringLiteral("OPTIONS"), QStringLiteral("WatchRAM"),
              QStringLiteral("3"));
    RoundTrip(bytes, QStringLiteral("File History - ANIcursor"), QStringLiteral("file history - anicursor"),
              QStringLiteral("8."), QStringLiteral(" /a b/c.ani "));

    // Names and a value taken from the input itself, so odd bytes reach the writer too.
    if (size >= 24) {
        const QString section = QString::fromLatin1(reinterpret_cast<const char*>(data), 8);
        const QString key = QString::fromUtf8(reinterpret_cast<const char*>(data) + 8, 8);
        const QString value = QString::fromLatin1(reinterpret_cast<const char*>(data) + 16, 8);
        RoundTrip(bytes, section, section, key, value);
    }
    return 0;
}
