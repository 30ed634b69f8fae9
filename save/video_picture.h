#pragma once

#include "save/av_pointers.h"

#include <QList>

/** Size and order of a picture, and what an encoder takes of it. */
struct VideoLayout {
    /** Pixels of the picture. */
    int width = 0;
    int height = 0;
    /** Pixels that are coded: the picture's, or more; then it stands in the middle of black. */
    int codedWidth = 0;
    int codedHeight = 0;
    AVPixelFormat pixFmt = AV_PIX_FMT_NONE;
    /** The last row comes first. */
    bool bottomUp = false;
};

/**
 * A picture on its way into an encoder, which takes it in a format of its own. The buffers serve one picture
 * after the other. Several may be converted at the same time, each on one thread.
 */
class VideoPicture
{
public:
    explicit VideoPicture(const VideoLayout &layout) : m_layout(layout) {}

    /** Gets the buffers; false, with a log line, when there is no memory for them. */
    bool allocate();
    /**
     * Converts an image of height x width x 3 samples in blue, green, red order, rows without padding. False,
     * with a log line where there is more to tell, when it is smaller or cannot be converted.
     */
    bool fill(const QList<ushort> &image);
    /** The converted picture. */
    AVFrame *frame() const { return m_frame.get(); }

private:
    bool isRaw() const;
    bool reduce(const QList<ushort> &image);
    void copyToTmpFrame(const QList<ushort> &image);
    bool convert();

    VideoLayout m_layout;
    /** In the encoder's pixel format. */
    AvPointer<AVFrame> m_frame;
    /** In the image's own format; not there where the samples only lose depth. */
    AvPointer<AVFrame> m_tmpFrame;
    AvPointer<SwsContext> m_swsContext;
};
