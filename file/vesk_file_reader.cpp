#include "file/vesk_file_reader.h"

#include "camera/vesk_value.h"
#include "file/vesk_file.h"
#include "file/vesk_file_format.h"
#include "save/file_save_job.h"
#include "save/vesk_writer.h"
#include "save/vesk_writer_worker.h"
#include "take/frame_geometry.h"

#include <QFile>

#include <algorithm>

VeskFileReaderWorker::VeskFileReaderWorker(QIODevice *file, const Range &range)
    : m_file(file), m_range(range), m_framesRemaining(range.frCnt)
{
}

void VeskFileReaderWorker::read()
{
    // The writer tells of its last chunks when there is nothing left to read.
    if (m_ended)
        return;
    const qlonglong count = std::min(m_framesRemaining, MaxChunkFrames);
    const auto position = VeskFileFormat::framePosition(m_range.dataOffset, m_range.frameSize,
                                                        m_range.startFr + m_framesRead, m_range.firstFr);
    const QByteArray data = VeskFileFormat::readRecords(*m_file, position, m_range.frameSize, count);
    // Records of no size would make a save of nothing that tells that it is complete.
    if (m_range.frameSize == 0 || count < 0 || data.size() != count * m_range.frameSize) {
        m_ended = true;
        emit finished(SaveJob::FinishError, QStringLiteral("read error"));
        return;
    }
    m_framesRead += count;
    m_framesRemaining -= count;
    m_ended = m_framesRemaining == 0;
    emit readyRead(data, count, m_framesRead, m_framesRemaining);
    if (m_ended)
        emit finished(SaveJob::FinishDone);
}

VeskFileReader::VeskFileReader(FileSaveJob *job) : VeskReader(job), m_job(job) {}

VeskFileReader::~VeskFileReader()
{
    end();
}

bool VeskFileReader::start()
{
    const auto *source = qobject_cast<VeskFile *>(m_job->source());
    m_file = std::make_unique<QFile>(source ? source->fileName() : QString());
    // The chunks are large, so that a buffer would only copy them.
    if (!source || !m_file->open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        setError(QStringLiteral("can't open file for reading"));
        return false;
    }
    m_worker = std::make_unique<VeskFileReaderWorker>(
        m_file.get(), VeskFileReaderWorker::Range{.startFr = m_job->startFr(),
                                                  .frCnt = m_job->frCnt(),
                                                  .firstFr = source->firstFrValue()->variant().toInt(),
                                                  .dataOffset = source->dataOffset(),
                                                  .frameSize = frameGeometry(*source).frameSize()});
    m_worker->moveToThread(&m_thread);
    VeskWriter *writer = m_job->writer();
    connect(&m_thread, &QThread::started, m_worker.get(), &VeskFileReaderWorker::read);
    connect(writer, &VeskWriter::framesWrittenChanged, m_worker.get(), &VeskFileReaderWorker::read);
    connect(m_worker.get(), &VeskFileReaderWorker::readyRead, writer->worker(),
            &VeskWriterWorker::writeFrames);
    connect(m_worker.get(), &VeskFileReaderWorker::finished, this, &VeskFileReader::workerFinished);
    m_thread.setObjectName(QStringLiteral("VeskFileReader Thread"));
    m_thread.start(QThread::InheritPriority);
    return true;
}

void VeskFileReader::workerFinished(SaveJob::FinishState state, const QString &error)
{
    if (!end() || state != SaveJob::FinishError)
        return;
    setError(error);
    m_job->writer()->readerFailed();
}

void VeskFileReader::stop()
{
    end();
}

/** Once the thread has ended its worker may go from here, and then the file that it read. */
bool VeskFileReader::end()
{
    if (std::exchange(m_finished, true))
        return false;
    m_thread.disconnect();
    if (m_worker)
        m_worker->disconnect();
    m_thread.quit();
    m_thread.wait(QDeadlineTimer(QDeadlineTimer::Forever));
    m_worker.reset();
    m_file.reset();
    return true;
}
