#pragma once

#include "save/save_job.h"

#include <QObject>
#include <QString>
#include <QThread>

#include <memory>

class FileSaveJob;
class VeskWriterWorker;

/**
 * Writes the frames of a save job: prepares the output, has a worker on a thread of its own fill it, counts
 * the frames and closes up. It is used once. Lives on the GUI thread; its parent is the job.
 */
class VeskWriter : public QObject
{
    Q_OBJECT
    Q_PROPERTY(qlonglong framesWritten READ framesWritten WRITE setFramesWritten NOTIFY framesWrittenChanged)
    Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
    Q_PROPERTY(QString error READ error NOTIFY errorChanged)

public:
    explicit VeskWriter(FileSaveJob *job);
    /** Waits for the chunk that is being written. What is there of the output stays. */
    ~VeskWriter() override;

    qlonglong framesWritten() const { return m_framesWritten; }
    /** Percent. */
    double progress() const { return m_progress; }
    /** Why the writing ended early, in the operator's words. */
    const QString &error() const { return m_error; }
    void setError(const QString &error);
    /** Takes the frames, between start and the end; then null. */
    VeskWriterWorker *worker() const { return m_worker.get(); }

    /** Opens the output and starts the thread. False, with the error set, when there can be no output. */
    virtual bool start() = 0;
    /** Closes the output, and removes it if that is due. The thread has ended. */
    virtual void close(SaveJob::FinishState state) = 0;

    /** Ends the writing before the last frame. */
    void cancel(SaveJob::FinishState state);
    /** There will be no more frames; the reader knows why. */
    void readerFailed();

public slots:
    /**
     * Ends the writing: waits for the chunk in progress, drops those that wait, closes the output. Blocks the
     * GUI thread meanwhile. Only the first call counts.
     */
    void finish(SaveJob::FinishState state, const QString &error);
    void setFramesWritten(qlonglong framesWritten);

signals:
    void framesWrittenChanged();
    void progressChanged();
    void errorChanged();
    void finished(SaveJob::FinishState state);

protected:
    FileSaveJob *job() const;
    /** What is left to do of start(): takes the worker over and lets it run on a thread of that name. */
    void startWorker(std::unique_ptr<VeskWriterWorker> worker, const QString &threadName);

private:
    void endThread();

    std::unique_ptr<VeskWriterWorker> m_worker;
    QThread m_thread;
    qlonglong m_framesWritten = 0;
    double m_progress = 0.0;
    QString m_error;
    bool m_finished = false;
};
