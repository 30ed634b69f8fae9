#include "save/img_file_writer.h"

#include "save/file_save_job.h"
#include "save/whole_file.h"
#include "take/playback_vesk_object.h"

#include <QBuffer>
#include <QFile>
#include <QImageWriter>

#include <algorithm>
#include <future>

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

/** Whether all are written. None is still at work at the end. */
bool ImgFileWriterWorker::writeRecords(const QByteArray &data, qlonglong count, qlonglong firstIndex)
{
    Chunk chunk{.data = data, .count = count, .firstIndex = firstIndex};
    const std::size_t lanes = std::min(m_lanes.size(), std::size_t(count));
    std::vector<std::future<void>> others;
    // The images of a lane that cannot begin are made by the others.
    tried([&] {
        others.reserve(lanes);
        for (std::size_t i = 1; i < lanes; ++i)
            others.push_back(std::async(std::launch::async, [&, i] { makeImages(m_lanes[i], chunk); }));
        return true;
    });
    makeImages(m_lanes[0], chunk);
    for (const std::future<void> &other : others)
        other.wait();
    return !chunk.failed;
}

/**
 * No image is written behind one that failed. The GUI thread may be waiting for the end: it gets it after the
 * images at hand, not after a whole chunk.
 */
void ImgFileWriterWorker::makeImages(Lane &lane, Chunk &chunk) const noexcept
{
    for (qlonglong i = chunk.taken++; i < chunk.count; i = chunk.taken++) {
        const bool encoded =
            !chunk.failed && !hasEnded() && tried([&] { return encode(lane, chunk.data, i); });
        for (qlonglong ended = chunk.ended; ended < i; ended = chunk.ended)
            chunk.ended.wait(ended);
        if (!encoded || chunk.failed || !tried([&] { return write(lane, chunk.firstIndex + i); }))
            chunk.failed = true;
        chunk.ended = i + 1;
        chunk.ended.notify_all();
    }
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
           QImageWriter(&buffer, QByteArrayLiteral("tiff")).write(lane.frame->fileImage());
}
