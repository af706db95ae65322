#pragma once
// tessavo-cli run as a user runs it: the real executable, its exit code and what it printed.
#include <QFile>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <vector>

struct CliResult {
    int Exit = -1;
    QString Out;
    QString Err;
};

inline CliResult RunCli(const QStringList& Arguments)
{
    QProcess Process;
    Process.start(QStringLiteral(TESSAVO_CLI), Arguments);
    Process.waitForFinished(60000);
    return {Process.exitStatus() == QProcess::NormalExit ? Process.exitCode() : -1,
            QString::fromUtf8(Process.readAllStandardOutput()), QString::fromUtf8(Process.readAllStandardError())};
}

inline QByteArray ReadAll(const QString& File)
{
    QFile F(File);
    return F.open(QIODevice::ReadOnly) ? F.readAll() : QByteArray();
}

// A 24- or 32-bit bottom-up BMP as red, green, blue, alpha bytes, top row first (alpha 255 for
// 24 bits).
inline bool ReadBmp(const QString& File, int& Width, int& Height, int& Bits, std::vector<uint8_t>& Rgba)
{
    const QByteArray B = ReadAll(File);
    if (B.size() < 54)
        return false;
    auto Le32 = [&B](int At) {
        return static_cast<int32_t>(uint8_t(B[At]) | uint8_t(B[At + 1]) << 8 | uint8_t(B[At + 2]) << 16 |
                                    static_cast<uint32_t>(uint8_t(B[At + 3])) << 24);
    };
    Width = Le32(18);
    Height = Le32(22);
    Bits = uint8_t(B[28]);
    const int Bytes = Bits / 8, Stride = (Width * Bits + 31) / 32 * 4, Offset = Le32(10);
    if ((Bits != 24 && Bits != 32) || Width < 1 || Height < 1 || B.size() < Offset + Stride * Height)
        return false;
    Rgba.clear();
    for (int Y = Height - 1; Y >= 0; --Y)
        for (int X = 0; X < Width; ++X) {
            const char* P = B.constData() + Offset + Y * Stride + X * Bytes;
            Rgba.insert(Rgba.end(), {uint8_t(P[2]), uint8_t(P[1]), uint8_t(P[0]), Bits == 32 ? uint8_t(P[3]) : uint8_t(255)});
        }
    return true;
}
