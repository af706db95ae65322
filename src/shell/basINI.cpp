#include "basINI.h"

#include <QFileInfo>
#include <QFile>
#include <QSaveFile>
#include <QStringDecoder>

namespace basINI {

namespace {

// One line of the file as byte offsets. Line ends are "\r\n", "\n" or a lone "\r"; the last line may
// have none.
struct LineSpan {
    qsizetype Begin = 0;      // first byte of the line
    qsizetype ContentEnd = 0; // end of the text, before the line end
    qsizetype End = 0;        // first byte after the line end
};

enum class LineKind { Other, Section, Key };

struct LineInfo {
    LineKind Kind = LineKind::Other;
    qsizetype NameBegin = 0; // section or key name, trimmed
    qsizetype NameEnd = 0;
    qsizetype ValueBegin = 0; // key lines: the value, trimmed
    qsizetype ValueEnd = 0;
    bool Blank = true;
};

bool IsBlankByte(char c)
{
    return c == ' ' || c == '\t';
}

bool NextLine(const QByteArray& bytes, qsizetype& pos, LineSpan& line)
{
    const qsizetype size = bytes.size();
    if (pos >= size)
        return false;
    const char* data = bytes.constData();
    qsizetype i = pos;
    while (i < size && data[i] != '\n' && data[i] != '\r')
        ++i;
    line.Begin = pos;
    line.ContentEnd = i;
    if (i < size) {
        if (data[i] == '\r' && i + 1 < size && data[i + 1] == '\n')
            i += 2;
        else
            i += 1;
    }
    line.End = i;
    pos = i;
    return true;
}

LineInfo Classify(const QByteArray& bytes, const LineSpan& line)
{
    const char* data = bytes.constData();
    LineInfo info;
    qsizetype b = line.Begin;
    qsizetype e = line.ContentEnd;
    // A UTF-8 byte order mark belongs to no name.
    if (b == 0 && e >= 3 && static_cast<unsigned char>(data[0]) == 0xEF
        && static_cast<unsigned char>(data[1]) == 0xBB && static_cast<unsigned char>(data[2]) == 0xBF)
        b = 3;
    while (b < e && IsBlankByte(data[b]))
        ++b;
    while (e > b && IsBlankByte(data[e - 1]))
        --e;
    info.Blank = (b == e);
    if (info.Blank || data[b] == ';' || data[b] == '#')
        return info;
    if (data[b] == '[') {
        // A header without its "]" still opens a section: the rest of the line names it.
        qsizetype nb = b + 1;
        qsizetype ne = nb;
        while (ne < e && data[ne] != ']')
            ++ne;
        while (nb < ne && IsBlankByte(data[nb]))
            ++nb;
        while (ne > nb && IsBlankByte(data[ne - 1]))
            --ne;
        info.Kind = LineKind::Section;
        info.NameBegin = nb;
        info.NameEnd = ne;
        return info;
    }
    qsizetype eq = b;
    while (eq < e && data[eq] != '=')
        ++eq;
    if (eq == e)
        return info; // no "=": kept, never matched
    qsizetype ne = eq;
    while (ne > b && IsBlankByte(data[ne - 1]))
        --ne;
    qsizetype vb = eq + 1;
    while (vb < e && IsBlankByte(data[vb]))
        ++vb;
    info.Kind = LineKind::Key;
    info.NameBegin = b;
    info.NameEnd = ne;
    info.ValueBegin = vb;
    info.ValueEnd = e;
    return info;
}

QString DecodeText(const char* data, qsizetype length)
{
    // Stateless: a sequence cut off at the end is an error, not a wait for more bytes.
    QStringDecoder decoder(QStringConverter::Utf8,
                           QStringConverter::Flag::ConvertInitialBom | QStringConverter::Flag::Stateless);
    QString text = decoder.decode(QByteArrayView(data, length));
    if (decoder.hasError())
        return QString::fromLatin1(data, length);
    return text;
}

bool NameMatches(const QByteArray& bytes, qsizetype begin, qsizetype end, const QString& wanted)
{
    if (begin >= end)
        return false;
    return DecodeText(bytes.constData() + begin, end - begin).compare(wanted, Qt::CaseInsensitive) == 0;
}

QString CapValue(QString text)
{
    if (text.size() > IniMaxValueLength) {
        qsizetype n = IniMaxValueLength;
        if (text.at(n - 1).isHighSurrogate())
            --n; // never split a surrogate pair
        text.truncate(n);
    }
    return text;
}

// Names that could not be found again once written are refused.
bool ValidSection(const QString& section)
{
    return !section.isEmpty() && !section.contains(QLatin1Char(']')) && !section.contains(QLatin1Char('\n'))
        && !section.contains(QLatin1Char('\r'));
}

bool ValidKey(const QString& key)
{
    if (key.isEmpty() || key.contains(QLatin1Char('=')) || key.contains(QLatin1Char('\n'))
        || key.contains(QLatin1Char('\r')))
        return false;
    const QChar first = key.at(0);
    return first != QLatin1Char('[') && first != QLatin1Char(';') && first != QLatin1Char('#');
}

QByteArray LineEndOf(const QByteArray& bytes)
{
    qsizetype pos = 0;
    LineSpan line;
    while (NextLine(bytes, pos, line)) {
        if (line.End > line.ContentEnd)
            return bytes.mid(line.ContentEnd, line.End - line.ContentEnd);
    }
    return QByteArrayLiteral("\n");
}

} // namespace

QString IniReadBuffer(const QByteArray& bytes, const QString& section, const QString& key,
                      const QString& defaultValue)
{
    const QString wantedSection = TrimBlanks(section);
    const QString wantedKey = TrimBlanks(key);
    if (wantedSection.isEmpty() || wantedKey.isEmpty() || bytes.size() > IniMaxFileBytes)
        return CapValue(defaultValue);
    bool inSection = false;
    qsizetype pos = 0;
    LineSpan line;
    while (NextLine(bytes, pos, line)) {
        const LineInfo info = Classify(bytes, line);
        if (info.Kind == LineKind::Section) {
            inSection = NameMatches(bytes, info.NameBegin, info.NameEnd, wantedSection);
        } else if (inSection && info.Kind == LineKind::Key
                   && NameMatches(bytes, info.NameBegin, info.NameEnd, wantedKey)) {
            if (info.ValueBegin == info.ValueEnd)
                break; // an empty value reads as a missing key
            return CapValue(DecodeText(bytes.constData() + info.ValueBegin, info.ValueEnd - info.ValueBegin));
        }
    }
    return CapValue(defaultValue);
}

bool IniWriteBuffer(QByteArray& bytes, const QString& section, const QString& key, const QString& value)
{
    const QString wantedSection = TrimBlanks(section);
    const QString wantedKey = TrimBlanks(key);
    if (!ValidSection(wantedSection) || !ValidKey(wantedKey) || value.contains(QLatin1Char('\n'))
        || value.contains(QLatin1Char('\r')) || bytes.size() > IniMaxFileBytes)
        return false;
    const QByteArray encodedValue = value.toUtf8();

    bool inSection = false;
    bool sectionSeen = false;   // the first matching section has been met
    bool inFirstSection = false;
    qsizetype insertAt = 0;     // after the last non-blank line of the first matching section
    bool insertNeedsLineEnd = false;
    qsizetype pos = 0;
    LineSpan line;
    while (NextLine(bytes, pos, line)) {
        const LineInfo info = Classify(bytes, line);
        if (info.Kind == LineKind::Section) {
            inSection = NameMatches(bytes, info.NameBegin, info.NameEnd, wantedSection);
            inFirstSection = inSection && !sectionSeen;
            if (inFirstSection) {
                sectionSeen = true;
                insertAt = line.End;
                insertNeedsLineEnd = (line.End == line.ContentEnd);
            }
            continue;
        }
        if (inSection && info.Kind == LineKind::Key
            && NameMatches(bytes, info.NameBegin, info.NameEnd, wantedKey)) {
            // Replace the value in place, keeping the key's spelling and the blanks before the value.
            bytes.replace(info.ValueBegin, line.ContentEnd - info.ValueBegin, encodedValue);
            return true;
        }
        if (inFirstSection && !info.Blank) {
            insertAt = line.End;
            insertNeedsLineEnd = (line.End == line.ContentEnd);
        }
    }

    const QByteArray lineEnd = LineEndOf(bytes);
    QByteArray keyLine = wantedKey.toUtf8();
    keyLine += '=';
    keyLine += encodedValue;
    keyLine += lineEnd;
    if (sectionSeen) {
        if (insertNeedsLineEnd)
            keyLine.prepend(lineEnd);
        bytes.insert(insertAt, keyLine);
        return true;
    }
    if (!bytes.isEmpty() && !bytes.endsWith('\n') && !bytes.endsWith('\r'))
        bytes += lineEnd;
    bytes += '[';
    bytes += wantedSection.toUtf8();
    bytes += ']';
    bytes += lineEnd;
    bytes += keyLine;
    return true;
}

bool IniDeleteBuffer(QByteArray& bytes, const QString& section, const QString& key)
{
    const QString wantedSection = TrimBlanks(section);
    const QString wantedKey = TrimBlanks(key);
    if (wantedSection.isEmpty() || wantedKey.isEmpty() || bytes.size() > IniMaxFileBytes)
        return false;
    // Every line of the key goes, so a duplicate further down cannot surface afterwards.
    QByteArray kept;
    bool removed = false;
    bool inSection = false;
    qsizetype copyFrom = 0;
    qsizetype pos = 0;
    LineSpan line;
    while (NextLine(bytes, pos, line)) {
        const LineInfo info = Classify(bytes, line);
        if (info.Kind == LineKind::Section) {
            inSection = NameMatches(bytes, info.NameBegin, info.NameEnd, wantedSection);
        } else if (inSection && info.Kind == LineKind::Key
                   && NameMatches(bytes, info.NameBegin, info.NameEnd, wantedKey)) {
            if (!removed)
                kept.reserve(bytes.size());
            kept.append(bytes.constData() + copyFrom, line.Begin - copyFrom);
            copyFrom = line.End;
            removed = true;
        }
    }
    if (removed) {
        kept.append(bytes.constData() + copyFrom, bytes.size() - copyFrom);
        bytes = kept;
    }
    return true;
}

bool LoadIniBytes(const QString& iniFile, QByteArray& bytes)
{
    bytes.clear();
    if (iniFile.isEmpty())
        return false;
    // Only regular files: opening a pipe or a device could block or never end.
    const QFileInfo info(iniFile);
    if (!info.isFile() || info.size() > IniMaxFileBytes)
        return false;
    QFile file(iniFile);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    bytes = file.read(IniMaxFileBytes + 1);
    if (bytes.size() > IniMaxFileBytes) {
        bytes.clear();
        return false;
    }
    return true;
}

bool SaveIniBytes(const QString& iniFile, const QByteArray& bytes)
{
    if (iniFile.isEmpty() || QFileInfo(iniFile).isDir())
        return false;
    QSaveFile file(iniFile);
    file.setDirectWriteFallback(false);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    if (file.write(bytes) != bytes.size()) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}

QString IniRead(const QString& section, const QString& key, const QString& defaultValue, const QString& iniFile)
{
    QByteArray bytes;
    if (!LoadIniBytes(iniFile, bytes))
        return CapValue(defaultValue);
    return IniReadBuffer(bytes, section, key, defaultValue);
}

bool IniWrite(const QString& section, const QString& key, const QString& value, const QString& iniFile)
{
    QByteArray bytes;
    // A file that exists but cannot be read is left alone rather than replaced by one key.
    if (QFileInfo::exists(iniFile) && !LoadIniBytes(iniFile, bytes))
        return false;
    if (!IniWriteBuffer(bytes, section, key, value))
        return false;
    return SaveIniBytes(iniFile, bytes);
}

bool IniDelete(const QString& section, const QString& key, const QString& iniFile)
{
    if (!QFileInfo::exists(iniFile))
        return !iniFile.isEmpty(); // nothing to delete; the file is not created
    QByteArray bytes;
    if (!LoadIniBytes(iniFile, bytes))
        return false;
    const QByteArray before = bytes;
    if (!IniDeleteBuffer(bytes, section, key))
        return false;
    if (bytes == before)
        return true;
    return SaveIniBytes(iniFile, bytes);
}

QString TrimBlanks(const QString& text)
{
    qsizetype b = 0;
    qsizetype e = text.size();
    while (b < e && (text.at(b) == QLatin1Char(' ') || text.at(b) == QLatin1Char('\t')))
        ++b;
    while (e > b && (text.at(e - 1) == QLatin1Char(' ') || text.at(e - 1) == QLatin1Char('\t')))
        --e;
    return text.mid(b, e - b);
}

} // namespace basINI
