#include "file/vesk_file_writer.h"

#include "file/vesk_file_format.h"
#include "save/file_save_job.h"
#include "save/whole_file.h"
#include "take/frame_geometry.h"
#include "take/playback_vesk_object.h"

#include <QFile>

bool VeskFileWriter::start()
{
    const QString suffix = job()->fileNameTemplate().freeSuffix(0);
    if (!suffix.isEmpty())
        job()->appendToFileName(suffix);
    m_file = new QFile(job()->fileNameTemplate().filePath(0, {}), this);
    // The records go from the connection's buffer to the disk; one more buffer would only copy them.
    if (!m_file->open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
        setError(QStringLiteral("can't open file for writing"));
        m_file->deleteLater();
        return false;
    }
    if (!writeHeader()) {
        setError(QStringLiteral("write error"));
        m_file->remove();
        m_file->deleteLater();
        return false;
    }
    startWorker(std::make_unique<VeskFileWriterWorker>(m_file, frameGeometry(*job()->source()).frameSize()),
                QStringLiteral("VeskFileWriter Thread"));
    return true;
}

bool VeskFileWriter::writeHeader()
{
    const VeskFileFormat::Preamble preamble =
        VeskFileFormat::preamble(job()->source()->valuesToJson(), job()->startFr(), job()->frCnt());
    return writeWhole(*m_file, preamble.bytes) && m_file->seek(preamble.dataOffset);
}

void VeskFileWriter::close(SaveJob::FinishState state)
{
    if (state == SaveJob::FinishCancelled)
        m_file->remove();
    else
        m_file->close();
    m_file->deleteLater();
}

VeskFileWriterWorker::VeskFileWriterWorker(QFileDevice *file, quint32 frameSize)
    : m_file(file), m_frameSize(frameSize)
{
}

void VeskFileWriterWorker::writeFrames(QByteArray data, qlonglong dataFrameCnt, qlonglong framesRead,
                                       qlonglong framesRemaining)
{
    if (hasEnded())
        return;
    const bool last = framesRemaining == 0;
    // Of records of another size the header would give a wrong account, and nobody could read them.
    if (!isWhole(data, dataFrameCnt, m_frameSize) || !writeWhole(*m_file, data) ||
        (last && !closeWhole(*m_file))) {
        failWriting();
        return;
    }
    emit framesWritten(framesRead);
    if (last)
        emit finished(SaveJob::FinishDone);
}
