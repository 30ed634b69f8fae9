#include "save/save_job.h"

#include "app/arithmetic.h"
#include "save/save_job_queue.h"
#include "take/abstract_take.h"

#include <QDebug>

SaveJob::SaveJob(const SaveSource &source, qlonglong startFr, qlonglong frCnt, const Output &output,
                 const FileNameTemplate &fileName, QObject *parent)
    : QObject(parent), m_source(source.object), m_queue(source.queue),
      m_sourceType(SourceType(source.object->type())), m_sourceCameraName(source.cameraName),
      m_sourceTakeId(source.takeId), m_sourceFileName(source.fileName), m_startFr(startFr), m_frCnt(frCnt),
      m_output(output), m_fileName(fileName)
{
    if (m_queue)
        m_lossConnections.append(connect(m_queue, &QObject::destroyed, this, &SaveJob::queueDestroyed));
    if (auto *take = qobject_cast<AbstractTake *>(source.object))
        m_lossConnections.append(
            connect(take, &AbstractTake::deletedClosed, this, &SaveJob::sourceDeletedClosed));
}

PlaybackVeskObject *SaveJob::source() const
{
    return m_source;
}

SaveJobQueue *SaveJob::queue() const
{
    return m_queue;
}

void SaveJob::appendToFileName(const QString &text)
{
    m_fileName.setName(text, true);
    emit fileNameChanged();
}

bool SaveJob::start()
{
    qDebug() << Q_FUNC_INFO;
    if (!doStart())
        return false;
    setState(Saving);
    return true;
}

void SaveJob::finish(FinishState state)
{
    doFinish(state);
    switch (state) {
    case FinishDone:
        if (!fuzzyEqual(m_progress, 100.0))
            setProgress(100.0);
        setState(Done);
        break;
    case FinishCancelled:
        setState(Cancelled);
        break;
    case FinishError:
        setState(Error);
        break;
    }
    for (const QMetaObject::Connection &connection : std::as_const(m_lossConnections))
        disconnect(connection);
    m_lossConnections.clear();
    emit finished();
}

void SaveJob::queueDestroyed()
{
    fail(QStringLiteral("camera disconnected"));
}

void SaveJob::sourceDeletedClosed()
{
    m_source = nullptr;
    const bool waits = m_state == Queued;
    fail(QStringLiteral("take deleted or closed"));
    if (waits && m_queue)
        m_queue->remove(this);
}

/** The text goes in the place of whatever the end of the work has left. */
void SaveJob::fail(const QString &error)
{
    if (m_state == Saving)
        cancel(FinishError);
    else
        setState(Error);
    setError(error);
}

void SaveJob::setProgress(double progress)
{
    if (progress == m_progress)
        return;
    m_progress = progress;
    emit progressChanged();
}

void SaveJob::setError(const QString &error)
{
    if (error == m_error)
        return;
    m_error = error;
    emit errorChanged();
}

void SaveJob::setState(State state)
{
    if (state == m_state)
        return;
    m_state = state;
    emit stateChanged();
}

void SaveJob::setFileName(const QString &text)
{
    m_fileName.setName(text, false);
    emit fileNameChanged();
}

void SaveJob::setFileExt(const QString &)
{
    emit fileExtChanged();
}
