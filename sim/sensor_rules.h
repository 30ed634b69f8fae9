#pragma once

#include <QtGlobal>

namespace q4sim
{

// The sensor's timing, counted in clocks of clkFreq. Invented figures of a plausible sensor: a row takes
// one clock for eight pixels and a pause, a frame has a pause of its own, and an exposure ends some time
// before the next frame starts.
constexpr int clkFreq = 100000000; ///< Hz
constexpr int frClksMax = 2000000; ///< 50 frames per second
constexpr int expClksMult = 25;
constexpr int expClksOfst = 13;
constexpr int expClksMin = 113;
constexpr int metaSize = 32; ///< bytes in front of a frame's pixels

/// Numbers of acq/fsync_mode that have a source here.
enum FsyncMode { FsyncInternal = 0, FsyncExternal = 1 };

/// Shortest frame of a resolution, in clocks.
int frClksMin(int width, int height);

/// Longest exposure at a frame length, in clocks; not on the exposure grid.
int expClksMaxFor(int frClks);

/// The exposure that the camera takes for a wanted one: within the limits, on the grid
/// expClksOfst + k * expClksMult, the next one below if between two.
int snapExposure(qint64 wanted, int frClks);

/// Frames that a partition holds.
int partitionFrames(qint64 memoryBytes, int partitions, int width, int height);

/// The camera's frame counter: which frame is exposed at a time, and when a frame was.
class FrameClock
{
public:
    FrameClock(qint64 startNs, int frClks);

    qint64 frameAt(qint64 ns) const;
    qint64 timeNs(qint64 frame) const; ///< start of the frame

    /// Goes on with another frame length from the frame of this moment.
    void retime(qint64 ns, int frClks);

private:
    qint64 m_anchorNs;
    qint64 m_anchorFrame = 0;
    qint64 m_frClks;
};

} // namespace q4sim
