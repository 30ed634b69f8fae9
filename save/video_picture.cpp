#include "save/video_picture.h"

#include "image/sample_depth.h"

#include <QDebug>

#include <algorithm>
#include <cstring>

/** Rows have no padding with an alignment of 1; 0 leaves the alignment to the library. */
static AvPointer<AVFrame> newFrame(AVPixelFormat format, int width, int height, int align)
{
    AvPointer<AVFrame> frame(av_frame_alloc());
    if (!frame)
        return {};
    frame->format = format;
    frame->width = width;
    frame->height = height;
    if (const int code = av_frame_get_buffer(frame.get(), align); code < 0) {
        qDebug() << "av_frame_get_buffer failed:" << code;
        return {};
    }
    return frame;
}

/** The film holds the very samples of the screen. The library's own way there is off by up to two levels. */
bool VideoPicture::isRaw() const
{
    return m_layout.pixFmt == AV_PIX_FMT_BGR24 || m_layout.pixFmt == AV_PIX_FMT_GRAY8;
}

bool VideoPicture::allocate()
{
    m_frame = newFrame(m_layout.pixFmt, m_layout.codedWidth, m_layout.codedHeight, 0);
    if (!m_frame) {
        qDebug() << "frameAlloc failed!";
        return false;
    }
    if (isRaw())
        return true;
    // An image is copied in one block, whatever its width.
    m_tmpFrame = newFrame(AV_PIX_FMT_BGR48LE, m_layout.codedWidth, m_layout.codedHeight, 1);
    if (!m_tmpFrame)
        qDebug() << "frameAlloc (temp) failed!";
    return m_tmpFrame != nullptr;
}

bool VideoPicture::fill(const QList<ushort> &image)
{
    if (image.size() < qsizetype(m_layout.width) * m_layout.height * 3 ||
        av_frame_make_writable(m_frame.get()) < 0)
        return false;
    if (isRaw())
        return reduce(image);
    copyToTmpFrame(image);
    return convert();
}

/** Luma as of ITU-R BT.601; the weights add up to 65536, so that gray stays as it is. */
static uchar gray(const ushort *bgr)
{
    return to8Bits(ushort((bgr[0] * 7471u + bgr[1] * 38470u + bgr[2] * 19595u + 32768u) >> 16));
}

bool VideoPicture::reduce(const QList<ushort> &image)
{
    const qsizetype rowSamples = qsizetype(m_layout.width) * 3;
    for (int y = 0; y < m_layout.height; ++y) {
        const ushort *samples =
            image.constData() + rowSamples * (m_layout.bottomUp ? m_layout.height - 1 - y : y);
        uchar *row = m_frame->data[0] + qsizetype(m_frame->linesize[0]) * y;
        if (m_layout.pixFmt == AV_PIX_FMT_BGR24) {
            std::transform(samples, samples + rowSamples, row, to8Bits);
            continue;
        }
        for (int x = 0; x < m_layout.width; ++x)
            row[x] = gray(samples + 3 * x);
    }
    return true;
}

void VideoPicture::copyToTmpFrame(const QList<ushort> &image)
{
    const int width = m_layout.width;
    const int height = m_layout.height;
    const std::size_t rowBytes = std::size_t(width) * 3 * sizeof(ushort);
    uchar *target = m_tmpFrame->data[0];
    if (m_layout.codedWidth == width && m_layout.codedHeight == height) {
        std::memcpy(target, image.constData(), rowBytes * std::size_t(height));
        return;
    }
    const qsizetype lineSize = m_tmpFrame->linesize[0];
    std::memset(target, 0, std::size_t(lineSize * m_layout.codedHeight));
    target += lineSize * ((m_layout.codedHeight - height) / 2);
    target += qsizetype((m_layout.codedWidth - width) / 2) * qsizetype(3 * sizeof(ushort));
    for (int y = 0; y < height; ++y)
        std::memcpy(target + lineSize * y, image.constData() + qsizetype(width) * 3 * y, rowBytes);
}

bool VideoPicture::convert()
{
    const int width = m_layout.codedWidth;
    const int height = m_layout.codedHeight;
    if (!m_swsContext)
        m_swsContext.reset(sws_getContext(width, height, AV_PIX_FMT_BGR48LE, width, height, m_layout.pixFmt,
                                          SWS_BICUBIC, nullptr, nullptr, nullptr));
    if (!m_swsContext) {
        qDebug() << "sws_getContext failed!";
        return false;
    }
    if (sws_scale(m_swsContext.get(), m_tmpFrame->data, m_tmpFrame->linesize, 0, height, m_frame->data,
                  m_frame->linesize) < 0) {
        qDebug() << "bad sws_scale";
        return false;
    }
    return true;
}
