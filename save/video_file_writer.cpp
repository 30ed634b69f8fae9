#include "save/video_file_writer.h"

#include "save/file_save_job.h"
#include "save/video_encoder.h"
#include "take/playback_vesk_object.h"
#include "take/vesk_frame.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFile>

bool VideoFileWriter::start()
{
    const QString suffix = job()->fileNameTemplate().freeSuffix(0);
    if (!suffix.isEmpty())
        job()->appendToFileName(suffix);
    m_encoder = newEncoder();
    if (!m_encoder->open()) {
        setError(QStringLiteral("can't open file for writing"));
        m_encoder->deleteLater();
        return false;
    }
    connect(qApp, &QCoreApplication::aboutToQuit, this, &VideoFileWriter::endWithProgram);
    startWorker(std::make_unique<VideoFileWriterWorker>(*job()->source(), m_encoder),
                QStringLiteral("VideoFileWriter Thread"));
    return true;
}

VideoEncoder *VideoFileWriter::newEncoder()
{
    const FrameGeometry geometry = frameGeometry(*job()->source());
    // Half a turn changes the sides as well: the film's rows then go on in the middle of the frame's.
    const bool turned = job()->source()->imgAdjModel()->rotate().toInt() != 0;
    return new VideoEncoder(job()->fileNameTemplate().filePath(0, {}),
                            turned ? geometry.height : geometry.width,
                            turned ? geometry.width : geometry.height, geometry.metaSize, job()->format(),
                            job()->codec(), job()->frameRate(), job()->quality(), this);
}

/** The film gets its end, without which it may not be playable; the saves that wait behind are not begun. */
void VideoFileWriter::endWithProgram()
{
    disconnect(this, nullptr, job(), nullptr);
    finish(SaveJob::FinishError, {});
}

void VideoFileWriter::close(SaveJob::FinishState state)
{
    const bool cancelled = state == SaveJob::FinishCancelled;
    // What the encoder still holds may take it seconds: nobody waits for the end of a film that goes.
    if (cancelled)
        m_encoder->discard();
    else if (m_encoder->isOpen())
        m_encoder->close();
    // A film of no frame would only look like one.
    if (cancelled || (state == SaveJob::FinishError && m_encoder->isEmpty()))
        QFile::remove(job()->fileNameTemplate().filePath(0, {}));
    m_encoder->deleteLater();
}

VideoFileWriterWorker::VideoFileWriterWorker(const PlaybackVeskObject &source, VideoEncoder *encoder)
    : DevelopWorker(source), m_encoder(encoder), m_lanes(laneCount())
{
    for (Lane &lane : m_lanes) {
        lane.frame = newFrame(DevelopedFrame::Use::SavedVideo);
        lane.picture = m_encoder->newPicture();
    }
}

VideoFileWriterWorker::~VideoFileWriterWorker() = default;

void VideoFileWriterWorker::writeFrames(QByteArray data, qlonglong dataFrameCnt, qlonglong framesRead,
                                        qlonglong framesRemaining)
{
    if (hasEnded())
        return;
    const bool last = framesRemaining == 0;
    const bool given = isWhole(data, dataFrameCnt);
    const auto taken = [&] {
        if (!last)
            emit framesWritten(framesRead);
    };
    if (!given || !writeRecords(data, dataFrameCnt, taken) || (last && !m_encoder->close())) {
        // What the encoder still holds may take it seconds, which the GUI thread has no need to wait for. A
        // save that was cut short is ended by that thread, as only it knows how.
        if (m_encoder->isOpen() && !hasEnded())
            m_encoder->close();
        failWriting();
        return;
    }
    if (last) {
        emit framesWritten(framesRead);
        emit finished(SaveJob::FinishDone);
    }
}

/**
 * Whether all are written. Tells of them when the last ones are on their way to the encoder, so that a reader
 * that waits for that fetches the next ones meanwhile.
 */
bool VideoFileWriterWorker::writeRecords(const QByteArray &data, qlonglong count,
                                         const std::function<void()> &taken)
{
    const bool written = tried([&] { return encodeRecords(data, count, taken); });
    // Those behind one that failed are still at work on the chunk.
    for (Lane &lane : m_lanes)
        lane.ready = {};
    return written;
}

/** Throws where the system has no memory or thread left. */
bool VideoFileWriterWorker::encodeRecords(const QByteArray &data, qlonglong count,
                                          const std::function<void()> &taken)
{
    const auto lanes = qlonglong(m_lanes.size());
    bool written = true;
    // The lane of a record is that of the one that is encoded before it.
    for (qlonglong i = 0; i < count + lanes && written; ++i) {
        Lane &lane = m_lanes[std::size_t(i % lanes)];
        // The GUI thread may be waiting for the end: it gets it after this frame, not after a whole chunk.
        written = !hasEnded() && (!lane.ready.valid() || writePicture(lane));
        if (!written || i >= count)
            continue;
        lane.ready =
            std::async(std::launch::async, [this, &lane, &data, i] { return prepare(lane, data, i); });
        if (i == count - 1)
            taken();
    }
    return written;
}

bool VideoFileWriterWorker::writePicture(Lane &lane)
{
    if (lane.ready.get())
        return m_encoder->write(*lane.picture) >= 0;
    qDebug() << "getVideoFrame failed!";
    return false;
}

bool VideoFileWriterWorker::prepare(Lane &lane, const QByteArray &data, qlonglong index) const
{
    return lane.picture && develop(*lane.frame, data, index) && lane.picture->fill(lane.frame->marked());
}
