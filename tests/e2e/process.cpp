#include "tests/e2e/process.h"

#include <QElapsedTimer>

#include <csignal>
#include <sys/prctl.h>

Process::Process()
{
    setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

Process::~Process()
{
    stop();
}

QByteArray Process::readUntil(const QByteArray &ready)
{
    QByteArray said;
    QElapsedTimer timer;
    timer.start();
    while (!said.contains(ready)) {
        waitForReadyRead(1000);
        said += readAllStandardOutput();
        if (state() != Running || timer.hasExpired(20000))
            break;
    }
    if (!said.contains(ready))
        return {};
    return said;
}

void Process::stop()
{
    if (state() == NotRunning)
        return;
    terminate();
    if (!waitForFinished(5000)) {
        kill();
        waitForFinished();
    }
}
