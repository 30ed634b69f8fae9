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
    : DevelopWorker(source), m_fileName(fileName), m_lanes(laneCount())
{
    for (Lane &lane : m_lanes)
        lane.frame = newFrame(DevelopedFrame::Use::SavedImage);
}

void ImgFileWriterWorker::writeFrames(QByteArray data, qlonglong dataFrameCnt, qlonglong framesRead,
                                      qlonglong framesRemaining)
{
    if (hasEnded())
        return;
    const bool given = isWhole(data, dataFrameCnt);
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
    const bool written = tried([&] { return makeImages(data, count, firstIndex); });
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
    std::shared_future<bool> before;
    qlonglong i = 0;
    for (; i < count; ++i) {
        Lane &lane = m_lanes[std::size_t(i) % m_lanes.size()];
        // The GUI thread may be waiting for the end: it gets it after these images, not after a whole chunk.
        if (hasEnded() || (lane.written.valid() && !lane.written.get()))
            break;
        before = lane.written = std::async(std::launch::async, [this, &lane, &data, before, firstIndex, i] {
            const bool encoded = encode(lane, data, i);
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
bool ImgFileWriterWorker::encode(Lane &lane, const QByteArray &data, qlonglong index) const
{
    if (!develop(*lane.frame, data, index))
        return false;
    // The image library adds to what it finds.
    lane.encoded.resize(0);
    QBuffer buffer(&lane.encoded);
    return buffer.open(QIODevice::WriteOnly) &&
           QImageWriter(&buffer, QByteArrayLiteral("tiff")).write(lane.frame->image(false));
}
