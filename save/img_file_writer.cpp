#include "save/img_file_writer.h"

#include "save/file_save_job.h"
#include "save/whole_file.h"
#include "take/playback_vesk_object.h"

#include <QBuffer>
#include <QDebug>
#include <QFile>
#include <QImageWriter>
#include <QThread>

#include <algorithm>
#include <exception>

bool ImgFileWriter::start()
{
    // The thread has had this name ever since it wrote films, too; debuggers and logs know it by it.
    startWorker(std::make_unique<ImgFileWriterWorker>(*job()->source(), job()->fileNameTemplate()),
                QStringLiteral("VideoFileWriter Thread"));
    return true;
}

void ImgFileWriter::close(SaveJob::FinishState) {}

/** Each takes the memory of some pictures, and one disk takes what a few of them make. */
static constexpr int MaxLanes = 4;

ImgFileWriterWorker::ImgFileWriterWorker(const PlaybackVeskObject &source, const FileNameTemplate &fileName)
    : m_fileName(fileName), m_geometry(frameGeometry(source)),
      m_yearOffset(source.yearOffsetValue()->variant().toULongLong()), m_imgAdj(source.imgAdjModel()->data()),
      m_lanes(std::size_t(std::clamp(QThread::idealThreadCount(), 1, MaxLanes)))
{
    for (Lane &lane : m_lanes) {
        lane.frame = new VeskFrame(&m_imgAdj, this);
        lane.frame->decodeInPlace();
        lane.frame->decodeFor(DevelopedFrame::Use::SavedImage);
    }
}

void ImgFileWriterWorker::writeFrames(QByteArray data, qlonglong dataFrameCnt, qlonglong framesRead,
                                      qlonglong framesRemaining)
{
    if (hasEnded())
        return;
    const bool given = isWhole(data, dataFrameCnt, m_geometry.frameSize());
    if (!given || !writeRecords(data, dataFrameCnt, framesRead - dataFrameCnt)) {
        failWriting();
        return;
    }
    emit framesWritten(framesRead);
    if (framesRemaining == 0)
        emit finished(SaveJob::FinishDone);
}

/** Whether all are written. No image is written behind one that failed, and none is still at work at the end.
 */
bool ImgFileWriterWorker::writeRecords(const QByteArray &data, qlonglong count, qlonglong firstIndex)
{
    bool written = false;
    try {
        written = makeImages(data, count, firstIndex);
    } catch (const std::exception &problem) {
        qDebug() << "no image:" << problem.what();
    }
    for (Lane &lane : m_lanes) {
        if (lane.written.valid())
            lane.written.wait();
        lane.written = {};
    }
    return written;
}

/** Throws where the system has no memory or thread left. */
bool ImgFileWriterWorker::makeImages(const QByteArray &data, qlonglong count, qlonglong firstIndex)
{
    const qsizetype frameSize = qsizetype(m_geometry.frameSize());
    std::shared_future<bool> before;
    qlonglong i = 0;
    for (; i < count; ++i) {
        Lane &lane = m_lanes[std::size_t(i) % m_lanes.size()];
        // The GUI thread may be waiting for the end: it gets it after these images, not after a whole chunk.
        if (hasEnded() || (lane.written.valid() && !lane.written.get()))
            break;
        const QByteArray record = QByteArray::fromRawData(data.constData() + i * frameSize, frameSize);
        before = lane.written = std::async(std::launch::async, [this, &lane, record, before, firstIndex, i] {
            const bool encoded = encode(lane, record);
            return (!before.valid() || before.get()) && encoded && write(lane, firstIndex + i);
        });
    }
    // It waits for all before it.
    return (i == 0 || before.get()) && i == count;
}

/** An image that the disk does not take whole is removed again. */
bool ImgFileWriterWorker::write(const Lane &lane, qlonglong frameIndex) const
{
    QFile file;
    if (!openFree(file, frameIndex))
        return false;
    if (writeWhole(file, lane.encoded) && closeWhole(file))
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
bool ImgFileWriterWorker::encode(Lane &lane, const QByteArray &record) const
{
    if (!lane.frame->set(record, m_geometry.width, m_geometry.height, m_geometry.imgSize(),
                         m_geometry.metaSize, m_yearOffset))
        return false;
    // The image library adds to what it finds.
    lane.encoded.resize(0);
    QBuffer buffer(&lane.encoded);
    return buffer.open(QIODevice::WriteOnly) &&
           QImageWriter(&buffer, QByteArrayLiteral("tiff")).write(lane.frame->image(false));
}
