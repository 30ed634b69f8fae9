#include "save/img_file_writer.h"

#include "save/file_save_job.h"
#include "save/whole_file.h"
#include "take/playback_vesk_object.h"

#include <QBuffer>
#include <QFile>
#include <QImageWriter>

#include <algorithm>

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
}

void ImgFileWriterWorker::writeFrames(QByteArray data, qlonglong dataFrameCnt, qlonglong framesRead,
                                      qlonglong framesRemaining)
{
    if (hasEnded())
        return;
    const qsizetype frameSize = qsizetype(m_geometry.frameSize());
    for (qlonglong i = 0; i < dataFrameCnt; ++i) {
        const qsizetype at = std::min(i * frameSize, data.size());
        const QByteArray record =
            QByteArray::fromRawData(data.constData() + at, std::min(frameSize, data.size() - at));
        if (!writeFrame(record, framesRead - dataFrameCnt + i)) {
            failWriting();
            return;
        }
    }
    emit framesWritten(framesRead);
    if (framesRemaining == 0)
        emit finished(SaveJob::FinishDone);
}

/** An image that the disk does not take whole is removed again. */
bool ImgFileWriterWorker::writeFrame(const QByteArray &record, qlonglong frameIndex)
{
    if (!m_veskFrame->set(record, m_geometry.width, m_geometry.height, m_geometry.imgSize(),
                          m_geometry.metaSize, m_yearOffset) ||
        !encode())
        return false;
    QFile file(m_fileName.filePath(frameIndex, m_fileName.freeSuffix(frameIndex)));
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
        return false;
    if (writeWhole(file, m_encoded) && closeWhole(file))
        return true;
    file.remove();
    return false;
}

/** Into memory: the image library does not tell of all that goes wrong with a file. */
bool ImgFileWriterWorker::encode()
{
    // The image library adds to what it finds.
    m_encoded.resize(0);
    QBuffer buffer(&m_encoded);
    return buffer.open(QIODevice::WriteOnly) &&
           QImageWriter(&buffer, QByteArrayLiteral("tiff")).write(m_veskFrame->image(false));
}
