#pragma once

#include "save/develop_worker.h"
#include "save/vesk_writer.h"

#include <functional>
#include <future>
#include <memory>
#include <vector>

class PlaybackVeskObject;
class VeskFrame;
class VideoEncoder;
class VideoPicture;

/** Writes a film. One that is cut short can be played up to there; a save that was cancelled leaves none. */
class VideoFileWriter : public VeskWriter
{
    Q_OBJECT

public:
    using VeskWriter::VeskWriter;

    bool start() override;
    void close(SaveJob::FinishState state) override;

private:
    VideoEncoder *newEncoder();
    void endWithProgram();

    /** The worker's alone while the thread runs. */
    VideoEncoder *m_encoder = nullptr;
};

/**
 * Decodes and adjusts the frames and gives them to the encoder, one after the other. Lives on the writer's
 * thread. While a frame is encoded the next ones are decoded and converted, each on a thread that lasts as
 * long as that.
 */
class VideoFileWriterWorker : public DevelopWorker
{
    Q_OBJECT

public:
    /** encoder is open and outlives the worker. Freezes the look that the source has now. */
    VideoFileWriterWorker(const PlaybackVeskObject &source, VideoEncoder *encoder);
    ~VideoFileWriterWorker() override;

    void writeFrames(QByteArray data, qlonglong dataFrameCnt, qlonglong framesRead,
                     qlonglong framesRemaining) override;

private:
    /** Makes one picture after the other. */
    struct Lane {
        VeskFrame *frame;
        std::unique_ptr<VideoPicture> picture;
        /** Whether the picture is ready to be encoded. */
        std::future<bool> ready;
    };

    bool writeRecords(const QByteArray &data, qlonglong count, const std::function<void()> &taken);
    bool encodeRecords(const QByteArray &data, qlonglong count, const std::function<void()> &taken);
    bool prepare(Lane &lane, const QByteArray &data, qlonglong index) const;
    bool writePicture(Lane &lane);

    VideoEncoder *m_encoder;
    std::vector<Lane> m_lanes;
};
