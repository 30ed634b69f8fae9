#include "image/img_adj_util.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <vector>

namespace
{
constexpr int Background = 38;
constexpr int Mountain = 150;
constexpr int Curve = 255;
constexpr int MaxBins = 65536;

/** Counts of blue, green and red, one after the other. */
using Counts = std::vector<quint32>;

/**
 * Adds the samples to counts in one pass. A bin's width is a power of two over bins, so that the integer
 * product puts every sample where a division in floating point would.
 */
void countSamples(const quint16 *samples, qsizetype pixels, quint32 bins, Counts &counts)
{
    // Two sets in turn, as increments of the same bin must wait for each other in a flat image.
    Counts second(counts.size());
    quint32 *first = counts.data();
    quint32 *other = second.data();
    const auto bin = [bins](quint16 sample) { return (sample * bins) >> 16; };
    for (qsizetype pairs = pixels / 2; pairs > 0; --pairs, samples += 6) {
        for (quint32 channel = 0; channel < 3; ++channel) {
            ++first[channel * bins + bin(samples[channel])];
            ++other[channel * bins + bin(samples[channel + 3])];
        }
    }
    for (quint32 channel = 0; pixels % 2 != 0 && channel < 3; ++channel)
        ++first[channel * bins + bin(samples[channel])];
    std::transform(counts.cbegin(), counts.cend(), second.cbegin(), counts.begin(), std::plus());
}

/** Counts of a whole image, a band of rows to each of OpenCV's workers. */
Counts countImage(const QList<quint16> &samples, int width, int height, int bins)
{
    const int bands = std::clamp(cv::getNumThreads(), 1, height);
    std::vector<Counts> counts(std::size_t(bands), Counts(std::size_t(3 * bins)));
    cv::parallel_for_(cv::Range(0, bands), [&](const cv::Range &range) {
        for (int band = range.start; band < range.end; ++band) {
            const qsizetype start = qsizetype(height) * band / bands;
            const qsizetype end = qsizetype(height) * (band + 1) / bands;
            countSamples(samples.constData() + start * width * 3, (end - start) * width, quint32(bins),
                         counts[std::size_t(band)]);
        }
    });
    for (std::size_t i = 1; i < counts.size(); ++i)
        std::transform(counts[0].cbegin(), counts[0].cend(), counts[i].cbegin(), counts[0].begin(),
                       std::plus());
    return counts[0];
}

/** The outline of one curve, from the bottom left corner to the bottom right one. */
std::vector<cv::Point> outline(const cv::Mat &heights, int bins, int binWidth, cv::Size size)
{
    const int bottom = size.height - 1;
    const int right = size.width - 1;
    const int xOffset = binWidth / 2 - (binWidth > 1 ? 1 : 0);
    const auto level = [&](int bin) { return bottom - int(std::rint(heights.at<float>(bin))); };

    std::vector<cv::Point> points{{0, bottom}, {0, level(0)}};
    for (int i = 0; i < bins; ++i)
        points.emplace_back(i * binWidth + xOffset, level(i));
    points.emplace_back(right, level(bins - 1));
    points.emplace_back(right, bottom);
    return points;
}

cv::Mat curvePlane(const std::vector<cv::Point> &points, cv::Size size)
{
    cv::Mat plane(size, CV_8U, cv::Scalar(Background));
    cv::fillPoly(plane, std::vector<std::vector<cv::Point>>{points}, cv::Scalar(Mountain), cv::LINE_8);
    for (std::size_t i = 1; i + 2 < points.size(); ++i)
        cv::line(plane, points[i], points[i + 1], cv::Scalar(Curve), 1, cv::LINE_8);
    return plane;
}
} // namespace

QImage ImgAdjUtil::renderHistogram(const QList<quint16> &samples, ushort width, ushort height,
                                   int pictureWidth, int pictureHeight, int bins) const
{
    const qsizetype needed = qsizetype(width) * height * 3;
    if (needed == 0 || samples.size() < needed || pictureWidth <= 0 || pictureHeight <= 0)
        return {};

    const int binCount = std::clamp(std::min(bins, pictureWidth), 1, MaxBins);
    const int binWidth = int(std::rint(double(pictureWidth) / binCount));
    const Counts counts = countImage(samples, width, height, binCount);
    std::array<double, 3> tallest;
    for (int i = 0; i < 3; ++i) {
        const auto channel = counts.cbegin() + i * binCount;
        tallest[std::size_t(i)] = *std::max_element(channel, channel + binCount);
    }
    const double top = *std::max_element(tallest.begin(), tallest.end());

    const cv::Size size(pictureWidth, pictureHeight);
    std::array<cv::Mat, 3> planes;
    for (std::size_t i = 0; i < planes.size(); ++i) {
        cv::Mat heights(binCount, 1, CV_32F);
        const auto channel = counts.cbegin() + std::ptrdiff_t(i) * binCount;
        std::transform(channel, channel + binCount, heights.begin<float>(),
                       [](quint32 count) { return float(count); });
        cv::normalize(heights, heights, tallest[i] / top * (pictureHeight - 1), 0.0, cv::NORM_INF);
        planes[i] = curvePlane(outline(heights, binCount, binWidth, size), size);
    }
    QImage picture(pictureWidth, pictureHeight, QImage::Format_BGR888);
    cv::Mat target(size, CV_8UC3, picture.bits(), std::size_t(picture.bytesPerLine()));
    cv::merge(planes.data(), planes.size(), target);
    return picture;
}
