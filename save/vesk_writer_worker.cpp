#include "save/vesk_writer_worker.h"

#include <QThread>

VeskWriterWorker::VeskWriterWorker() = default;

/** An event loop that is told to quit still delivers all that is queued already. */
bool VeskWriterWorker::hasEnded() const
{
    return m_failed || thread()->isInterruptionRequested();
}

bool VeskWriterWorker::isWhole(const QByteArray &data, qlonglong dataFrameCnt, qsizetype frameSize)
{
    return data.size() == dataFrameCnt * frameSize;
}

void VeskWriterWorker::failWriting()
{
    m_failed = true;
    emit finished(SaveJob::FinishError, QStringLiteral("write error"));
}
