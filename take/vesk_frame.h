#pragma once

#include "image/developed_frame.h"

#include <QByteArrayView>
#include <QImage>
#include <QList>
#include <QObject>
#include <QPoint>
#include <QtQmlIntegration>

struct ImgAdjData;
class RawFrame;

/**
 * A decoded frame at its three stages, with its geometry, its time and the colour under the pointer.
 *
 * The buffers are kept from frame to frame. Lives on the thread of its owner: a source's own frame on the GUI
 * thread, a worker's on the worker's.
 */
class VeskFrame : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
    Q_PROPERTY(QPoint rgbPoint READ rgbPoint WRITE setRgbPoint NOTIFY rgbPointChanged)
    Q_PROPERTY(ushort r READ r NOTIFY rgbChanged)
    Q_PROPERTY(ushort g READ g NOTIFY rgbChanged)
    Q_PROPERTY(ushort b READ b NOTIFY rgbChanged)
    Q_PROPERTY(ushort min READ min NOTIFY minChanged)
    Q_PROPERTY(ushort max READ max NOTIFY maxChanged)
    Q_PROPERTY(ushort mode READ mode NOTIFY modeChanged)
    Q_PROPERTY(double avg READ avg NOTIFY avgChanged)
    Q_PROPERTY(double stdDev READ stdDev NOTIFY stdDevChanged)

public:
    /** adj is not owned and must outlive the frame. */
    VeskFrame(const ImgAdjData *adj, QObject *parent);

    /**
     * From now on a frame is decoded into the buffers of the one before it, which takes half of the memory
     * and so of the time that it costs. For an owner whose work ends with the first frame that is refused: it
     * may leave the one before in pieces.
     */
    void decodeInPlace() { m_inPlace = true; }
    /** From now on a frame is decoded on one core for fileImage() or for marked(), and may have no more. */
    void decodeFor(DevelopedFrame::Use use) { m_frame.use = m_nextFrame.use = use; }

    /**
     * Decodes and adjusts a received frame. Pixels that the record promises but does not hold are 0. False,
     * with a log line and nothing changed, when the sizes describe no frame that a camera could send (no
     * pixels, more pixels than any sensor has, metadata beyond the record) or the engine refuses the frame.
     */
    bool set(const RawFrame *rawFrame);
    bool set(const QByteArray &data, quint16 width, quint16 height, quint32 imgSize, quint32 metaSize,
             quint64 yearOffset);

    /** The picture, 8 bits a channel (Format_BGR888): with overlays, or without them when clean is set. */
    QImage image(bool clean) const;
    /** image(false) for an image file, which may have it in another order of the channels. */
    QImage fileImage() const;
    /** The picture with overlays as 16-bit gray (Format_Grayscale16). */
    QImage grayImage() const;

    /** The frame's mosaic widened to 16 bits, one entry a pixel, in sensor geometry. */
    const QList<quint16> &raw() const { return m_frame.raw; }
    /** The adjusted image with overlays; blue, green, red; height x width x 3 entries. */
    const QList<quint16> &marked() const { return m_frame.marked; }
    /** The same before the overlays. */
    const QList<quint16> &clean() const { return m_frame.clean; }
    quint16 width() const { return m_frame.width; }
    quint16 height() const { return m_frame.height; }
    qint32 imgSize() const { return m_imgSize; }
    quint32 metaSize() const { return m_metaSize; }
    quint64 yearOffset() const { return m_yearOffset; }
    quint32 seconds() const { return m_seconds; }
    quint32 nanoseconds() const { return m_nanoseconds; }

    QPoint rgbPoint() const { return m_rgbPoint; }
    void setRgbPoint(const QPoint &point);
    /** 16-bit colour of clean() at rgbPoint. */
    ushort r() const { return m_r; }
    ushort g() const { return m_g; }
    ushort b() const { return m_b; }

    /** Declared for a statistics read-out that nothing computes; always 0. */
    ushort min() const { return 0; }
    ushort max() const { return 0; }
    ushort mode() const { return 0; }
    double avg() const { return 0.0; }
    double stdDev() const { return 0.0; }

signals:
    void rgbPointChanged();
    void rgbChanged();
    void minChanged();
    void maxChanged();
    void modeChanged();
    void avgChanged();
    void stdDevChanged();

private:
    bool sizesHold(qsizetype recordSize, quint16 width, quint16 height, quint32 imgSize,
                   quint32 metaSize) const;
    bool develop(QByteArrayView pixels, quint16 width, quint16 height, quint32 imgSize);
    void readTime(const QByteArray &data);
    bool readRgb();

    const ImgAdjData *m_adj;
    DevelopedFrame m_frame;
    /**
     * Takes the next frame: readers may still hold the present one, which then needs no copy, and a frame
     * that fails half-way leaves it whole. The two change places with every frame.
     */
    DevelopedFrame m_nextFrame;
    bool m_inPlace = false;
    qint32 m_imgSize = 0;
    quint32 m_metaSize = 0;
    quint64 m_yearOffset = 0;
    quint32 m_seconds = 0;
    quint32 m_nanoseconds = 0;
    QPoint m_rgbPoint;
    ushort m_r = 0;
    ushort m_g = 0;
    ushort m_b = 0;
};
