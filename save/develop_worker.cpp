#include "save/develop_worker.h"

#include "take/playback_vesk_object.h"
#include "take/vesk_frame.h"

#include <QDebug>
#include <QThread>

#include <algorithm>

/** Each takes the memory of some pictures, and one disk or encoder takes what a few of them make. */
static constexpr int MaxLanes = 4;

DevelopWorker::DevelopWorker(const PlaybackVeskObject &source)
    : m_geometry(frameGeometry(source)), m_yearOffset(source.yearOffsetValue()->variant().toULongLong()),
      m_imgAdj(source.imgAdjModel()->data())
{
}

std::size_t DevelopWorker::laneCount()
{
    return std::size_t(std::clamp(QThread::idealThreadCount(), 1, MaxLanes));
}

VeskFrame *DevelopWorker::newFrame(DevelopedFrame::Use use)
{
    auto *frame = new VeskFrame(&m_imgAdj, this);
    frame->decodeInPlace();
    frame->decodeFor(use);
    return frame;
}

bool DevelopWorker::isWhole(const QByteArray &data, qlonglong dataFrameCnt) const
{
    return VeskWriterWorker::isWhole(data, dataFrameCnt, m_geometry.frameSize());
}

bool DevelopWorker::develop(VeskFrame &frame, const QByteArray &data, qlonglong index) const
{
    const qsizetype frameSize = qsizetype(m_geometry.frameSize());
    const QByteArray record = QByteArray::fromRawData(data.constData() + index * frameSize, frameSize);
    return frame.set(record, m_geometry.width, m_geometry.height, m_geometry.imgSize(), m_geometry.metaSize,
                     m_yearOffset);
}

void DevelopWorker::logProblem(const char *problem) noexcept
{
    try {
        qDebug() << "no picture:" << problem;
    } catch (...) {
        // The log needs memory, too.
        return;
    }
}
