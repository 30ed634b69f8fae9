#include "save/vesk_writer.h"

#include "save/background.h"
#include "save/file_save_job.h"
#include "save/vesk_writer_worker.h"
#include "take/vesk_reader.h"

VeskWriter::VeskWriter(FileSaveJob *job) : QObject(job) {}

VeskWriter::~VeskWriter()
{
    endThread();
}

FileSaveJob *VeskWriter::job() const
{
    return qobject_cast<FileSaveJob *>(parent());
}

void VeskWriter::startWorker(std::unique_ptr<VeskWriterWorker> worker, const QString &threadName)
{
    m_worker = std::move(worker);
    m_worker->moveToThread(&m_thread);
    connect(m_worker.get(), &VeskWriterWorker::framesWritten, this, &VeskWriter::setFramesWritten);
    connect(m_worker.get(), &VeskWriterWorker::finished, this, &VeskWriter::finish);
    connect(&m_thread, &QThread::started, m_worker.get(), &giveWay);
    m_thread.setObjectName(threadName);
    m_thread.start(QThread::InheritPriority);
}

void VeskWriter::cancel(SaveJob::FinishState state)
{
    finish(state, {});
}

void VeskWriter::readerFailed()
{
    finish(SaveJob::FinishError, job()->reader()->error());
}

void VeskWriter::finish(SaveJob::FinishState state, const QString &error)
{
    // A second end is one that was under way already, from the worker or the network.
    if (std::exchange(m_finished, true))
        return;
    endThread();
    close(state);
    if (state == SaveJob::FinishError) {
        setError(error);
        job()->reader()->stop();
    }
    emit finished(state);
}

/** Once the thread has ended its worker may go from here, and with it the chunks that still wait for it. */
void VeskWriter::endThread()
{
    m_thread.disconnect();
    if (m_worker)
        m_worker->disconnect();
    m_thread.requestInterruption();
    m_thread.quit();
    m_thread.wait(QDeadlineTimer(QDeadlineTimer::Forever));
    m_worker.reset();
}

void VeskWriter::setFramesWritten(qlonglong framesWritten)
{
    if (framesWritten == m_framesWritten)
        return;
    m_framesWritten = framesWritten;
    emit framesWrittenChanged();
    m_progress = double(framesWritten) * 100.0 / double(job()->frCnt());
    emit progressChanged();
}

void VeskWriter::setError(const QString &error)
{
    if (error == m_error)
        return;
    m_error = error;
    emit errorChanged();
}
