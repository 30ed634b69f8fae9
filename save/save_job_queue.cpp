#include "save/save_job_queue.h"

#include <QDebug>

SaveJobQueue::SaveJobQueue(QObject *parent) : QObject(parent) {}

/** The jobs end with their queue, but it is too late then to start the next one. */
SaveJobQueue::~SaveJobQueue()
{
    disconnect(m_activeFinished);
}

void SaveJobQueue::enqueue(SaveJob *saveJob)
{
    qDebug() << Q_FUNC_INFO;
    if (m_activeSaveJob)
        m_pending.append(saveJob);
    else
        startSaveJob(saveJob);
}

void SaveJobQueue::remove(SaveJob *saveJob)
{
    m_pending.removeOne(saveJob);
}

/** One whose take went while the camera held it back has failed, but has not come to its end yet. */
void SaveJobQueue::release(SaveJob *saveJob)
{
    if (saveJob && saveJob == m_activeSaveJob)
        finishSaveJob();
    else
        remove(saveJob);
}

void SaveJobQueue::startSaveJob(SaveJob *saveJob)
{
    qDebug() << Q_FUNC_INFO;
    if (!saveJob->start()) {
        startQueuedSaveJob();
        return;
    }
    m_activeFinished = connect(saveJob, &SaveJob::finished, this, &SaveJobQueue::finishSaveJob);
    setActiveSaveJob(saveJob);
}

void SaveJobQueue::finishSaveJob()
{
    qDebug() << Q_FUNC_INFO;
    disconnect(m_activeFinished);
    setActiveSaveJob(nullptr);
    startQueuedSaveJob();
}

void SaveJobQueue::startQueuedSaveJob()
{
    qDebug() << Q_FUNC_INFO;
    if (!m_pending.isEmpty())
        startSaveJob(m_pending.takeFirst());
}

void SaveJobQueue::setActiveSaveJob(SaveJob *saveJob)
{
    if (saveJob == m_activeSaveJob)
        return;
    m_activeSaveJob = saveJob;
    emit activeSaveJobChanged();
}
