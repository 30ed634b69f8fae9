#pragma once

#include "image/developed_frame.h"
#include "image/img_adj_data.h"
#include "save/vesk_writer_worker.h"
#include "take/frame_geometry.h"

#include <exception>

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
    /**
     * What work tells; false, with a log line, where the system has no memory or thread left for it. Lets
     * nothing through: others may be waiting for what comes behind it.
     */
    template <class Work> static bool tried(const Work &work) noexcept
    {
        try {
            return work();
        } catch (const std::exception &problem) {
            logProblem(problem.what());
        } catch (...) {
            logProblem("unknown");
        }
        return false;
    }

private:
    static void logProblem(const char *problem) noexcept;

    FrameGeometry m_geometry;
    /** Seconds since 1970. */
    quint64 m_yearOffset;
    ImgAdjData m_imgAdj;
};
