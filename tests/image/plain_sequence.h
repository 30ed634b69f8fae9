#pragma once

#include "image/img_adj_data.h"

#include <QByteArrayView>
#include <QImage>
#include <QList>

#include <opencv2/core.hpp>

#include <array>

/**
 * The image engine a second time, as the plain sequence of library calls with no step fused: what the engine
 * must equal to the bit, and what its speed is measured against. All buffers are kept from frame to frame.
 */
class PlainSequence
{
public:
    PlainSequence();

    /** Decodes and adjusts one frame of at least width x height codes. */
    void set(const ImgAdjData &adj, QByteArrayView codes, int width, int height);
    /** Adjusts a mosaic that is in raw already. */
    void adjust(const ImgAdjData &adj, int width, int height);
    /** marked at 8 bits, as one run of bytes. */
    const QByteArray &picture();

    const QList<quint16> &raw() const { return m_raw; }
    const QList<quint16> &clean() const { return m_clean; }
    const QList<quint16> &marked() const { return m_marked; }
    int width() const { return m_width; }
    int height() const { return m_height; }

    /** The level curves of clean samples. */
    QImage histogram(const QList<quint16> &samples, int width, int height, int pictureWidth,
                     int pictureHeight, int binsWanted);

private:
    void whiteBalance(const ImgAdjData &adj, const cv::Mat &mosaic);
    static void exposureAssist(cv::Mat &image);
    static void focusPeaking(cv::Mat &image, double threshold);

    std::array<quint16, 256> m_widen;
    std::array<uchar, 65536> m_narrow;
    std::array<cv::Mat, 3> m_rggb;
    std::array<cv::Mat, 3> m_gbrg;
    std::array<cv::Mat, 3> m_sites;
    cv::Mat m_balanced;
    cv::Mat m_image;
    QList<quint16> m_raw;
    QList<quint16> m_clean;
    QList<quint16> m_marked;
    QByteArray m_picture;
    std::array<cv::Mat, 3> m_histogramPlanes;
    int m_width = 0;
    int m_height = 0;
};
