#include "save/img_file_writer.h"

#include "save/file_save_job.h"
#include "save/whole_file.h"
#include "take/playback_vesk_object.h"

#include <QBuffer>
#include <QFile>
#include <QImageWriter>

bool ImgFileWriter::start()
{
    // The thread has had this name ever since it wrote films, too; debuggers and logs know it by it.
    startWorker(std::make_unique<ImgFileWriterWorker>(*job()->source(), job()->fileNameTemplate()),
                QStringLiteral("VideoFileWriter Thread"));
    return true;
}

void ImgFileWriter::close(SaveJob::FinishState) {}

ImgFileWriterWorker::ImgFileWriterWorker(const PlaybackVeskObject &source, const FileNameTemplate &fileName)
    : m_fileName(fileName), m_geometry(frameGeometry(source)),
      m_yearOffset(source.yearOffsetValue()->variant().toULongLong()), m_imgAdj(source.imgAdjModel()->data()),
      m_veskFrame(new VeskFrame(&m_imgAdj, this))
{
    m_veskFrame->decodeInPlace();
    m_veskFrame->decodeForSaving();
}

void ImgFileWriterWorker::writeFrames(QByteArray data, qlonglong dataFrameCnt, qlonglong framesRead,
                                      qlonglong framesRemaining)
{
    if (hasEnded())
        return;
    const bool given = isWhole(data, dataFrameCnt, m_geometry.frameSize()) &&
                       writeRecords(data, dataFrameCnt, framesRead - dataFrameCnt);
    if (!lastIsWritten() || !given) {
        failWriting();
        return;
    }
    emit framesWritten(framesRead);
    if (framesRemaining == 0)
        emit finished(SaveJob::FinishDone);
}

bool ImgFileWriterWorker::writeRecords(const QByteArray &data, qlonglong count, qlonglong firstIndex)
{
    const qsizetype frameSize = qsizetype(m_geometry.frameSize());
    for (qlonglong i = 0; i < count; ++i) {
        const QByteArray record = QByteArray::fromRawData(data.constData() + i * frameSize, frameSize);
        // The GUI thread may be waiting for the end: it gets it after this image, not after a whole chunk.
        if (hasEnded() || !writeFrame(record, firstIndex + i))
            return false;
    }
    return true;
}

/** One image is written at a time, so that none follows one that failed. */
bool ImgFileWriterWorker::writeFrame(const QByteArray &record, qlonglong frameIndex)
{
    if (!encode(record) || !lastIsWritten())
        return false;
    m_written.swap(m_encoded);
    m_writing = std::async(std::launch::async, [this, frameIndex] { return writeEncoded(frameIndex); });
    return true;
}

/** Waits for the image before, if there is one. */
bool ImgFileWriterWorker::lastIsWritten()
{
    return !m_writing.valid() || m_writing.get();
}

/** An image that the disk does not take whole is removed again. */
bool ImgFileWriterWorker::writeEncoded(qlonglong frameIndex) const
{
    QFile file;
    if (!openFree(file, frameIndex))
        return false;
    if (writeWhole(file, m_written) && closeWhole(file))
        return true;
    file.remove();
    return false;
}

/** Another save may take a name that was free a moment ago: then the next one is looked for. */
bool ImgFileWriterWorker::openFree(QFile &file, qlonglong frameIndex) const
{
    do {
        file.setFileName(m_fileName.filePath(frameIndex, m_fileName.freeSuffix(frameIndex)));
        if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
            return true;
    } while (QFile::exists(file.fileName()));
    return false;
}

/** Into memory: the image library does not tell of all that goes wrong with a file. */
bool ImgFileWriterWorker::encode(const QByteArray &record)
{
    if (!m_veskFrame->set(record, m_geometry.width, m_geometry.height, m_geometry.imgSize(),
                          m_geometry.metaSize, m_yearOffset))
        return false;
    // The image library adds to what it finds.
    m_encoded.resize(0);
    QBuffer buffer(&m_encoded);
    return buffer.open(QIODevice::WriteOnly) &&
           QImageWriter(&buffer, QByteArrayLiteral("tiff")).write(m_veskFrame->image(false));
}
