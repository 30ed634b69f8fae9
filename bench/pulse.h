#pragma once

#include <QElapsedTimer>
#include <QEventLoop>
#include <QObject>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <utility>

/** Asks the GUI thread from another one, again and again, and keeps the longest time until it answered. */
class Pulse : public QThread
{
public:
    ~Pulse() override
    {
        requestInterruption();
        wait();
    }

    void run() override
    {
        while (!isInterruptionRequested()) {
            QElapsedTimer timer;
            timer.start();
            QMetaObject::invokeMethod(
                &m_gui, [this, timer] { m_longestNs = std::max(m_longestNs, timer.nsecsElapsed()); });
            sleep(std::chrono::milliseconds(2));
        }
    }

    /** Since the last call, in seconds. On the GUI thread, which has answered when it comes to it. */
    double takeLongestS() { return double(std::exchange(m_longestNs, 0)) * 1e-9; }

private:
    QObject m_gui;
    qint64 m_longestNs = 0;
};

/** Runs the event loop for so long; a pulse then knows of all that was done before. */
inline void settle(std::chrono::milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}
