#pragma once

#include "image/developed_frame.h"
#include "image/img_adj_data.h"
#include "save/vesk_writer_worker.h"
#include "take/frame_geometry.h"

#include <functional>

class PlaybackVeskObject;
class VeskFrame;

/**
 * A worker that makes pictures of the frame records: decodes them, with the look that the source had at the
 * start. A few may be made at the same time, each in a lane, which is a VeskFrame and what follows it.
 */
class DevelopWorker : public VeskWriterWorker
{
    Q_OBJECT

protected:
    /** Freezes the look that the source has now. */
    explicit DevelopWorker(const PlaybackVeskObject &source);

    /** How many lanes this computer has use for, at least one. */
    static std::size_t laneCount();
    /** For one lane; a child of the worker. */
    VeskFrame *newFrame(DevelopedFrame::Use use);

    /** The chunk is made of as many records as it tells. */
    bool isWhole(const QByteArray &data, qlonglong dataFrameCnt) const;
    /** Makes the picture of a record of a whole chunk, counted from 0. On any one thread. */
    bool develop(VeskFrame &frame, const QByteArray &data, qlonglong index) const;
    /** What work tells; false, with a log line, where the system has no memory or thread left for it. */
    static bool tried(const std::function<bool()> &work);

private:
    FrameGeometry m_geometry;
    /** Seconds since 1970. */
    quint64 m_yearOffset;
    ImgAdjData m_imgAdj;
};
