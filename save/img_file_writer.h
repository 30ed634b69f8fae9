#pragma once

#include "save/develop_worker.h"
#include "save/vesk_writer.h"

#include <atomic>
#include <vector>

class PlaybackVeskObject;
class QFile;
class VeskFrame;

/** Writes each frame as a TIFF of its own. Images that are written stay, however the save ends. */
class ImgFileWriter : public VeskWriter
{
    Q_OBJECT

public:
    using VeskWriter::VeskWriter;

    bool start() override;
    void close(SaveJob::FinishState state) override;
};

/**
 * Decodes, adjusts and writes the frames. Lives on the writer's thread. A few images are made at the same
 * time, one on that thread and each other on one that lasts as long as the chunk, and written one after the
 * other.
 */
class ImgFileWriterWorker : public DevelopWorker
{
    Q_OBJECT

public:
    /** Freezes the look that the source has now. */
    ImgFileWriterWorker(const PlaybackVeskObject &source, const FileNameTemplate &fileName);

    void writeFrames(QByteArray data, qlonglong dataFrameCnt, qlonglong framesRead,
                     qlonglong framesRemaining) override;

private:
    /** Makes one image after the other. */
    struct Lane {
        VeskFrame *frame;
        /** The file of the image. */
        QByteArray encoded;
    };
    /** What the lanes make images of. Each takes the next frame that no other has. */
    struct Chunk {
        const QByteArray &data;
        qlonglong count;
        /** Of the first frame in the save. */
        qlonglong firstIndex;
        std::atomic<qlonglong> taken = 0;
        /** The images up to here are written or, behind one that is not, left out. */
        std::atomic<qlonglong> ended = 0;
        std::atomic<bool> failed = false;
    };

    bool writeRecords(const QByteArray &data, qlonglong count, qlonglong firstIndex);
    void makeImages(Lane &lane, Chunk &chunk) const noexcept;
    bool encode(Lane &lane, const QByteArray &data, qlonglong index) const;
    bool write(const Lane &lane, qlonglong frameIndex) const;
    bool openFree(QFile &file, qlonglong frameIndex) const;

    FileNameTemplate m_fileName;
    std::vector<Lane> m_lanes;
};
