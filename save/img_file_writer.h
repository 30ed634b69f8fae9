#pragma once

#include "image/img_adj_data.h"
#include "save/vesk_writer.h"
#include "save/vesk_writer_worker.h"
#include "take/frame_geometry.h"

#include <future>

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
 * Decodes, adjusts and writes the frames. Lives on the writer's thread. While it works on an image, the disk
 * takes the one before from a thread that lasts as long as that.
 */
class ImgFileWriterWorker : public VeskWriterWorker
{
    Q_OBJECT

public:
    /** Freezes the look that the source has now. */
    ImgFileWriterWorker(const PlaybackVeskObject &source, const FileNameTemplate &fileName);

    void writeFrames(QByteArray data, qlonglong dataFrameCnt, qlonglong framesRead,
                     qlonglong framesRemaining) override;

private:
    bool writeRecords(const QByteArray &data, qlonglong count, qlonglong firstIndex);
    bool writeFrame(const QByteArray &record, qlonglong frameIndex);
    bool encode(const QByteArray &record);
    bool writeEncoded(qlonglong frameIndex) const;
    bool lastIsWritten();
    bool openFree(QFile &file, qlonglong frameIndex) const;

    FileNameTemplate m_fileName;
    FrameGeometry m_geometry;
    /** Seconds since 1970. */
    quint64 m_yearOffset;
    ImgAdjData m_imgAdj;
    VeskFrame *m_veskFrame;
    /** The file of the image at work. */
    QByteArray m_encoded;
    /** That of the image before, which belongs to its thread until that has ended. */
    QByteArray m_written;
    /** Goes first, and waits for the thread. */
    std::future<bool> m_writing;
};
