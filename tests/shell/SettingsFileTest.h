#pragma once
// What the settings tests share: a settings file in a fresh folder, its bytes as a string (so a
// failure shows them escaped), and readable QStrings in failure messages.
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <ostream>
#include <string>

inline void PrintTo(const QString& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
}

inline std::string ReadFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string("<missing>");
}

inline void WriteFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

class SettingsFileTest : public ::testing::Test {
protected:
    QTemporaryDir Dir;
    QString Ini = Dir.filePath(QStringLiteral("TsPaint.ini"));
};
