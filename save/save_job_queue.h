#pragma once

#include "save/save_job.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QtQmlIntegration>

/** Runs one save job after the other, first in, first out. Lives on the GUI thread. */
class SaveJobQueue : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
    Q_PROPERTY(SaveJob *activeSaveJob READ activeSaveJob NOTIFY activeSaveJobChanged)

public:
    explicit SaveJobQueue(QObject *parent);
    ~SaveJobQueue() override;

    /** The job that runs, null while none does. */
    SaveJob *activeSaveJob() const { return m_activeSaveJob; }
    /** The jobs that wait. */
    const QList<SaveJob *> &pending() const { return m_pending; }

    void enqueue(SaveJob *saveJob);
    /** Takes a job out that waits. */
    void remove(SaveJob *saveJob);
    /** Forgets a job that does not run any more, or not yet. */
    void release(SaveJob *saveJob);

signals:
    void activeSaveJobChanged();

private slots:
    void finishSaveJob();

private:
    void startSaveJob(SaveJob *saveJob);
    void startQueuedSaveJob();
    void setActiveSaveJob(SaveJob *saveJob);

    QList<SaveJob *> m_pending;
    QPointer<SaveJob> m_activeSaveJob;
    QMetaObject::Connection m_activeFinished;
};
