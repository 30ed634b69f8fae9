#include "take/vesk_frame.h"

#include "app/vesk_app.h"
#include "image/img_adj_data.h"
#include "image/img_adj_util.h"
#include "take/raw_frame.h"

#include <QDebug>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <utility>

namespace
{
/** No sensor comes near this; a reply that claims more is not believed. */
constexpr quint32 MaxPixels = 16777216;

/** Bits of the first two words of the metadata block; the camera uses the rest for itself. */
constexpr quint32 SecondsMask = 0x1FFFFFF;
constexpr quint32 NanosecondsMask = 0x3FFFFFFF;

const ImgAdjUtil *engine()
{
    return VeskApp::instance()->imgAdjUtil();
}
} // namespace

VeskFrame::VeskFrame(const ImgAdjData *adj, QObject *parent) : QObject(parent), m_adj(adj) {}

bool VeskFrame::set(const RawFrame *rawFrame)
{
    return set(rawFrame->data(), rawFrame->width(), rawFrame->height(), rawFrame->imgSize(),
               rawFrame->metaSize(), rawFrame->yearOffset());
}

bool VeskFrame::set(const QByteArray &data, quint16 width, quint16 height, quint32 imgSize, quint32 metaSize,
                    quint64 yearOffset)
{
    if (!sizesHold(data.size(), width, height, imgSize, metaSize) ||
        !develop(QByteArrayView(data).sliced(qsizetype(metaSize)), width, height, imgSize))
        return false;
    m_imgSize = qint32(imgSize);
    m_metaSize = metaSize;
    m_yearOffset = yearOffset;
    readTime(data);
    if (readRgb())
        emit rgbChanged();
    return true;
}

bool VeskFrame::sizesHold(qsizetype recordSize, quint16 width, quint16 height, quint32 imgSize,
                          quint32 metaSize) const
{
    const quint32 pixels = quint32(width) * height;
    const bool hold =
        pixels > 0 && pixels <= MaxPixels && imgSize <= MaxPixels && qint64(metaSize) <= recordSize;
    if (!hold) {
        qWarning() << "Frame refused: impossible size" << width << "x" << height << "pixels" << imgSize
                   << "metadata" << metaSize << "record" << recordSize;
        return false;
    }
    if (!engine()->takesFrame(*m_adj, width, height)) {
        qWarning() << "Frame refused: too large for a colour frame:" << width << "x" << height;
        return false;
    }
    return true;
}

bool VeskFrame::develop(QByteArrayView pixels, quint16 width, quint16 height, quint32 imgSize)
{
    DevelopedFrame &frame = m_inPlace ? m_frame : m_nextFrame;
    frame.width = width;
    frame.height = height;
    try {
        engine()->developFrame(*m_adj, pixels, imgSize, frame);
    } catch (const std::exception &error) {
        qWarning() << "Frame refused:" << error.what();
        return false;
    }
    if (!m_inPlace)
        std::swap(m_frame, m_nextFrame);
    return true;
}

void VeskFrame::readTime(const QByteArray &data)
{
    std::array<uchar, 8> words{};
    std::memcpy(words.data(), data.constData(), std::min(words.size(), std::size_t(data.size())));
    m_seconds = qFromLittleEndian<quint32>(words.data()) & SecondsMask;
    m_nanoseconds = qFromLittleEndian<quint32>(words.data() + 4) & NanosecondsMask;
}

bool VeskFrame::readRgb()
{
    const qint64 i = (qint64(width()) * m_rgbPoint.y() + m_rgbPoint.x()) * 3;
    if (i < 0 || i >= clean().size())
        return false;
    m_b = clean()[i];
    m_g = clean()[i + 1];
    m_r = clean()[i + 2];
    return true;
}

void VeskFrame::setRgbPoint(const QPoint &point)
{
    if (m_rgbPoint == point)
        return;
    m_rgbPoint = point;
    if (readRgb())
        emit rgbChanged();
    emit rgbPointChanged();
}

QImage VeskFrame::image(bool clean) const
{
    if (!clean && !m_frame.picture.isNull())
        return m_frame.picture.convertToFormat(QImage::Format_BGR888);
    if (m_frame.clean.isEmpty())
        return {};
    QImage picture = ImgAdjUtil::unpaddedImage(width(), height(), QImage::Format_BGR888);
    engine()->lut16To8Convert(clean ? m_frame.clean : m_frame.marked, picture.bits());
    return picture;
}

QImage VeskFrame::fileImage() const
{
    return m_frame.picture.isNull() ? image(false) : m_frame.picture;
}

QImage VeskFrame::grayImage() const
{
    if (m_frame.marked.isEmpty())
        return {};
    QImage picture = ImgAdjUtil::unpaddedImage(width(), height(), QImage::Format_Grayscale16);
    engine()->rgbToGray16(m_frame.marked, width(), height(), reinterpret_cast<quint16 *>(picture.bits()));
    return picture;
}
