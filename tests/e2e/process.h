#pragma once

#include <QProcess>

/// A process that ends with the test, however the test ends.
class Process : public QProcess
{
public:
    Process();
    ~Process() override;

    /// Collects output until `ready` is in it. Gives what was said; empty when
    /// the process ended or said nothing of the kind in 20 s.
    QByteArray readUntil(const QByteArray &ready);

    /// Asks it to end, and ends it when it does not in 5 s.
    void stop();
};
