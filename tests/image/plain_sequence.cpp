#include "tests/image/plain_sequence.h"

#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <vector>

PlainSequence::PlainSequence()
{
    for (std::size_t i = 0; i < 256; ++i) {
        const double code =
            i < 128 ? double(i) : (i < 192 ? 2.0 * double(i) - 127.0 : 4.0 * double(i) - 509.0);
        m_widen[i] = quint16(std::lround(code * 65535.0 / 511.0));
    }
    for (std::size_t i = 0; i < 65536; ++i)
        m_narrow[i] = uchar(std::lround(double(i) * 255.0 / 65535.0));
    for (std::size_t color = 0; color < 3; ++color) {
        m_rggb[color] = cv::Mat::zeros(480, 640, CV_8U);
        m_gbrg[color] = cv::Mat::zeros(480, 640, CV_8U);
    }
    for (int y = 0; y < 480; ++y) {
        for (int x = 0; x < 640; ++x) {
            const std::size_t rggb = y % 2 == 0 ? (x % 2 == 0 ? 0 : 1) : (x % 2 == 0 ? 1 : 2);
            const std::size_t gbrg = y % 2 == 0 ? (x % 2 == 0 ? 1 : 2) : (x % 2 == 0 ? 0 : 1);
            m_rggb[rggb].at<uchar>(y, x) = 255;
            m_gbrg[gbrg].at<uchar>(y, x) = 255;
        }
    }
}

void PlainSequence::set(const ImgAdjData &adj, QByteArrayView codes, int width, int height)
{
    m_raw.resize(qsizetype(width) * height);
    quint16 *raw = m_raw.data();
    for (qsizetype i = 0; i < m_raw.size(); ++i)
        raw[i] = m_widen[uchar(codes[i])];
    adjust(adj, width, height);
}

void PlainSequence::whiteBalance(const ImgAdjData &adj, const cv::Mat &mosaic)
{
    const auto &masks = adj.cfa.toInt() == 1 ? m_rggb : m_gbrg;
    const std::array gains{adj.wbR.toDouble() * adj.wbCalR.toDouble(),
                           adj.wbG.toDouble() * adj.wbCalG.toDouble(),
                           adj.wbB.toDouble() * adj.wbCalB.toDouble()};
    for (std::size_t color = 0; color < 3; ++color) {
        m_sites[color].create(mosaic.size(), CV_16U);
        m_sites[color].setTo(0);
        mosaic.copyTo(m_sites[color], masks[color](cv::Rect(0, 0, mosaic.cols, mosaic.rows)));
        m_sites[color].convertTo(m_sites[color], -1, gains[color], 0.0);
    }
    cv::add(m_sites[0], m_sites[1], m_balanced);
    cv::add(m_balanced, m_sites[2], m_balanced);
}

void PlainSequence::adjust(const ImgAdjData &adj, int width, int height)
{
    const cv::Mat mosaic(height, width, CV_16U, m_raw.data());
    const int cfa = adj.cfa.toInt();
    if (cfa == 0) {
        cv::cvtColor(mosaic, m_image, 8);
    } else {
        whiteBalance(adj, mosaic);
        cv::demosaicing(m_balanced, m_image, cfa == 2 ? 49 : 46);
    }
    cv::Mat image = m_image;
    const QRect crop = adj.cropRect;
    if (crop.width() != 0 && crop.height() != 0 && QRect(0, 0, image.cols, image.rows).contains(crop, false))
        image = image(cv::Range(crop.y(), crop.y() + crop.height()),
                      cv::Range(crop.x(), crop.x() + crop.width()));

    const quint16 *red = cfa == 0 ? adj.lutG.constData() : adj.lutR.constData();
    const quint16 *green = adj.lutG.constData();
    const quint16 *blue = cfa == 0 ? adj.lutG.constData() : adj.lutB.constData();
    image.forEach<cv::Vec3w>(
        [=](cv::Vec3w &p, const int *) { p = cv::Vec3w(blue[p[0]], green[p[1]], red[p[2]]); });

    const int turn = ((qint16(adj.rotate.toInt()) % 360) + 360) % 360;
    if (turn == 90 || turn == 180 || turn == 270)
        cv::rotate(image, image, turn == 90 ? 0 : (turn == 180 ? 1 : 2));
    const bool h = adj.flipH.toBool();
    const bool v = adj.flipV.toBool();
    if (h || v)
        cv::flip(image, image, h && v ? -1 : (h ? 1 : 0));

    m_width = image.cols;
    m_height = image.rows;
    const qsizetype samples = qsizetype(m_width) * m_height * 3;
    m_clean.resize(samples);
    m_marked.resize(samples);
    image.copyTo(cv::Mat(m_height, m_width, CV_16UC3, m_clean.data()));
    if (adj.focusPeak > 0)
        focusPeaking(image, adj.focusPeak == 2 ? 100.0 : (adj.focusPeak == 3 ? 50.0 : 150.0));
    else if (adj.expAssist > 0)
        exposureAssist(image);
    image.copyTo(cv::Mat(m_height, m_width, CV_16UC3, m_marked.data()));
}

const QByteArray &PlainSequence::picture()
{
    m_picture.resize(m_marked.size());
    char *bytes = m_picture.data();
    const quint16 *samples = m_marked.constData();
    for (qsizetype i = 0; i < m_marked.size(); ++i)
        bytes[i] = char(m_narrow[samples[i]]);
    return m_picture;
}

void PlainSequence::exposureAssist(cv::Mat &image)
{
    for (int y = 0; y < image.rows; ++y) {
        for (int x = 0; x < image.cols; ++x) {
            auto &p = image.at<cv::Vec3w>(y, x);
            cv::Mat gray;
            cv::cvtColor(cv::Mat(1, 1, CV_16UC3, cv::Scalar(p[0], p[1], p[2])), gray, 7);
            const ushort level = gray.at<ushort>(0, 0);
            if (level == 65535)
                p = cv::Vec3w(0, 0, 65535);
            else if (level == 0)
                p = cv::Vec3w(65535, 0, 0);
        }
    }
}

void PlainSequence::focusPeaking(cv::Mat &image, double threshold)
{
    cv::Mat gray, equalized, blurred, edges, mask;
    cv::cvtColor(image, gray, 7);
    const auto clahe = cv::createCLAHE();
    clahe->setClipLimit(2.0);
    clahe->setTilesGridSize(cv::Size(8, 8));
    clahe->apply(gray, equalized);
    cv::GaussianBlur(equalized, blurred, cv::Size(3, 3), 0.0, 0.0, 4);
    cv::Laplacian(blurred, edges, 5, 3, 1.0, 0.0, 4);
    cv::convertScaleAbs(edges, mask, 0.0038910505836575876, 0.0);
    cv::threshold(mask, mask, threshold, 255.0, 0);
    cv::filterSpeckles(mask, 0.0, 1, 1.0);
    image.setTo(cv::Scalar(0, 65535, 0), mask);
}

QImage PlainSequence::histogram(const QList<quint16> &samples, int width, int height, int pictureWidth,
                                int pictureHeight, int binsWanted)
{
    const int bins = std::min(binsWanted, pictureWidth);
    const int binWidth = int(std::rint(double(pictureWidth) / bins));
    const float range[] = {0.0F, 65536.0F};
    const float *ranges[] = {range};
    cv::split(cv::Mat(height, width, CV_16UC3, const_cast<quint16 *>(samples.constData())),
              m_histogramPlanes.data());
    std::array<cv::Mat, 3> counts;
    std::array<double, 3> tallest;
    for (std::size_t i = 0; i < 3; ++i) {
        cv::calcHist(&m_histogramPlanes[i], 1, nullptr, cv::Mat(), counts[i], 1, &bins, ranges);
        cv::minMaxLoc(counts[i], nullptr, &tallest[i]);
    }
    const double top = std::max({tallest[0], tallest[1], tallest[2]});
    const int bottom = pictureHeight - 1;
    const int right = pictureWidth - 1;
    const int xOffset = binWidth == 1 ? 0 : binWidth / 2 - 1;
    std::vector<cv::Mat> planes;
    for (std::size_t i = 0; i < 3; ++i) {
        cv::normalize(counts[i], counts[i], tallest[i] / top * (pictureHeight - 1), 0.0, cv::NORM_INF);
        std::vector<cv::Point> points{{0, bottom}, {0, bottom - int(std::rint(counts[i].at<float>(0)))}};
        for (int bin = 0; bin < bins; ++bin)
            points.push_back({bin * binWidth + xOffset, bottom - int(std::rint(counts[i].at<float>(bin)))});
        points.push_back({right, bottom - int(std::rint(counts[i].at<float>(bins - 1)))});
        points.push_back({right, bottom});
        cv::Mat plane(pictureHeight, pictureWidth, CV_8U, cv::Scalar(38));
        cv::fillPoly(plane, std::vector<std::vector<cv::Point>>{points}, cv::Scalar(150), 8);
        for (std::size_t p = 1; p + 2 < points.size(); ++p)
            cv::line(plane, points[p], points[p + 1], cv::Scalar(255), 1, 8);
        planes.push_back(plane);
    }
    QImage picture(pictureWidth, pictureHeight, QImage::Format_BGR888);
    cv::Mat target(pictureHeight, pictureWidth, CV_8UC3, picture.bits(), std::size_t(picture.bytesPerLine()));
    cv::merge(planes, target);
    return picture;
}
