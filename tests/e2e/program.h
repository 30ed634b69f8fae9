#pragma once

#include "tests/e2e/process.h"

/// The program as a user starts it: no arguments, settings and data in the
/// folder given.
class Program
{
public:
    explicit Program(const QString &folder) : m_folder(folder) {}

    bool start(const QString &display);
    /// Puts settings in the place of those that are kept, before it starts.
    bool keepSettings(const QByteArray &json) const;
    /// Where choices of files begin; it is empty at first.
    QString workingFolder() const { return m_folder + QStringLiteral("/work"); }
    /// Where saves go unless another folder is chosen.
    QString documents() const { return m_folder + QStringLiteral("/Documents"); }
    void stop() { m_process.stop(); }
    bool running() const { return m_process.state() == QProcess::Running; }

    /// Waits for it to end by itself. Gives its exit code, none when it is still
    /// there or crashed.
    std::optional<int> exitCode(int ms);

    /// The lines of its output that tell of something wrong, since the last call.
    QStringList complaints();

private:
    QString m_folder;
    Process m_process;
};
