#include "image/img_adj_util.h"

#include "image/frame_kernel.h"
#include "image/img_adj_data.h"
#include "image/img_overlay.h"

#include <QDebug>

#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

namespace
{
constexpr double FullScale = 65535.0;

/** Limits to 0..65535. A value that is no number, as absurd parameters can make it, becomes 0. */
double limited(double value)
{
    return value > 0.0 ? std::min(value, FullScale) : 0.0;
}

/** The camera's companding: three straight segments of slope 1, 2 and 4 onto a 9-bit scale. */
int expandedCode(int code)
{
    if (code < 128)
        return code;
    return code < 192 ? 2 * code - 127 : 4 * code - 509;
}

/** value times factor, to nearest, no more than max. */
template <class Sample> Sample scaled(int value, double factor, double max)
{
    return static_cast<Sample>(std::clamp(std::round(value * factor), 0.0, max));
}

/** Wraps samples that are only read. */
cv::Mat wrapped(const quint16 *samples, int height, int width, int type)
{
    return cv::Mat(height, width, type, const_cast<quint16 *>(samples));
}

/** Masks of the red, green and blue sites of a mosaic; 1, 2 and 3 in the pattern stand for those colours. */
std::array<cv::Mat, 3> siteMasks(const cv::Mat &pattern)
{
    cv::Mat tiled;
    cv::repeat(pattern, ImgAdjUtil::MaxColorHeight / 2 + 1, ImgAdjUtil::MaxColorWidth / 2 + 1, tiled);
    const cv::Mat sites = tiled(cv::Rect(0, 0, ImgAdjUtil::MaxColorWidth, ImgAdjUtil::MaxColorHeight));
    qDebug().nospace() << "Mask Size: " << sites.cols << " x " << sites.rows;
    return {cv::Mat(sites == 1.0), cv::Mat(sites == 2.0), cv::Mat(sites == 3.0)};
}

cv::Mat cropped(const cv::Mat &image, const QRect &crop)
{
    // QRect::contains would turn a rectangle of negative size around.
    if (crop.isEmpty() || !QRect(0, 0, image.cols, image.rows).contains(crop, false))
        return image;
    return image(cv::Rect(crop.x(), crop.y(), crop.width(), crop.height()));
}

cv::Mat rotated(const cv::Mat &image, int degrees)
{
    cv::Mat result;
    switch ((degrees % 360 + 360) % 360) {
    case 90:
        cv::rotate(image, result, cv::ROTATE_90_CLOCKWISE);
        return result;
    case 180:
        cv::rotate(image, result, cv::ROTATE_180);
        return result;
    case 270:
        cv::rotate(image, result, cv::ROTATE_90_COUNTERCLOCKWISE);
        return result;
    default:
        return image;
    }
}

cv::Mat flipped(const cv::Mat &image, bool horizontally, bool vertically)
{
    if (!horizontally && !vertically)
        return image;
    cv::Mat result;
    cv::flip(image, result, horizontally && vertically ? -1 : (horizontally ? 1 : 0));
    return result;
}

void copyToList(const cv::Mat &image, QList<quint16> &list)
{
    list.resize(qsizetype(image.rows) * image.cols * 3);
    image.copyTo(cv::Mat(image.rows, image.cols, CV_16UC3, list.data()));
}
} // namespace

struct ImgAdjUtil::Masks {
    std::array<cv::Mat, 3> rggb = siteMasks((cv::Mat_<double>(2, 2) << 1, 2, 2, 3));
    std::array<cv::Mat, 3> gbrg = siteMasks((cv::Mat_<double>(2, 2) << 2, 3, 1, 2));
};

ImgAdjUtil::ImgAdjUtil(QObject *parent) : QObject(parent), m_masks(std::make_unique<const Masks>())
{
    for (int i = 0; i < 256; ++i)
        m_lut8To16[std::size_t(i)] = scaled<quint16>(expandedCode(i), FullScale / 511.0, FullScale);
    for (int i = 0; i < 65536; ++i) {
        m_lut16To8[std::size_t(i)] = scaled<quint8>(i, 255.0 / FullScale, 255.0);
        m_lut16To9[std::size_t(i)] = scaled<quint16>(i, 511.0 / FullScale, 511.0);
    }
}

ImgAdjUtil::~ImgAdjUtil() = default;

QString ImgAdjUtil::openCvVersion()
{
    return QString::fromStdString(cv::getVersionString());
}

void ImgAdjUtil::lut8To16Convert(QByteArrayView payload, QList<quint16> &samples) const
{
    const auto count = std::min(payload.size(), samples.size());
    const auto *codes = reinterpret_cast<const uchar *>(payload.data());
    std::transform(codes, codes + count, samples.data(), [this](uchar code) { return m_lut8To16[code]; });
}

void ImgAdjUtil::lut16To8Convert(const QList<quint16> &samples, uchar *destination) const
{
    std::transform(samples.cbegin(), samples.cend(), destination,
                   [this](quint16 sample) { return m_lut16To8[sample]; });
}

void ImgAdjUtil::updateLut(QList<quint16> &lut, double offset, double gain, double gamma,
                           double contrast) const
{
    const double shift = std::trunc(std::round(offset * FullScale));
    const double invGamma = 1.0 / gamma;
    constexpr double quarterPi = std::numbers::pi / 4.0;
    const double slope = std::tan(contrast * quarterPi + quarterPi);
    constexpr double midPoint = 32767.5;

    lut.resize(65536);
    quint16 *entries = lut.data();
    // Each stage rounds and limits before the next; the steps that this leaves are part of the look.
    for (int i = 0; i < 65536; ++i) {
        const double amplified = std::round(limited(i + shift)) * gain;
        const double curved = std::pow(std::round(limited(amplified)) / FullScale, invGamma) * FullScale;
        const double stretched = (std::round(limited(curved)) - midPoint) * slope + midPoint;
        entries[i] = static_cast<quint16>(std::round(limited(stretched)));
    }
}

bool ImgAdjUtil::takesFrame(const ImgAdjData &adj, int width, int height) const
{
    if (width <= 0 || height <= 0)
        return false;
    return adj.cfa.toInt() == CfaMono || (width <= MaxColorWidth && height <= MaxColorHeight);
}

const std::array<cv::Mat, 3> &ImgAdjUtil::masksFor(int cfa) const
{
    return cfa == CfaRGGB ? m_masks->rggb : m_masks->gbrg;
}

cv::Mat ImgAdjUtil::whiteBalanced(const ImgAdjData &adj, const cv::Mat &mosaic) const
{
    const std::array gains{adj.wbR.toDouble() * adj.wbCalR.toDouble(),
                           adj.wbG.toDouble() * adj.wbCalG.toDouble(),
                           adj.wbB.toDouble() * adj.wbCalB.toDouble()};
    const auto &masks = masksFor(adj.cfa.toInt());
    cv::Mat sum = cv::Mat::zeros(mosaic.size(), CV_16U);
    for (std::size_t i = 0; i < gains.size(); ++i) {
        cv::Mat sites = cv::Mat::zeros(mosaic.size(), CV_16U);
        mosaic.copyTo(sites, masks[i](cv::Rect(0, 0, mosaic.cols, mosaic.rows)));
        sites.convertTo(sites, -1, gains[i], 0.0);
        sum += sites;
    }
    return sum;
}

cv::Mat ImgAdjUtil::demosaiced(const ImgAdjData &adj, const cv::Mat &raw) const
{
    cv::Mat image;
    const int cfa = adj.cfa.toInt();
    // Two codes serve all mosaics: no sensor with one of the other two patterns has been built.
    if (cfa == CfaMono)
        cv::cvtColor(raw, image, cv::COLOR_GRAY2BGR);
    else
        cv::demosaicing(whiteBalanced(adj, raw), image,
                        cfa == CfaGBRG ? cv::COLOR_BayerGR2BGR : cv::COLOR_BayerBG2BGR);
    return image;
}

void ImgAdjUtil::adjustImage(const ImgAdjData &adj, const QList<quint16> &raw, QList<quint16> &marked,
                             QList<quint16> &clean, ushort &height, ushort &width) const
{
    cv::Mat image = cropped(demosaiced(adj, wrapped(raw.constData(), height, width, CV_16U)), adj.cropRect);
    const bool mono = adj.cfa.toInt() == CfaMono;
    lut16Adjust(image, mono ? adj.lutG : adj.lutR, adj.lutG, mono ? adj.lutG : adj.lutB);
    image = flipped(rotated(image, qint16(adj.rotate.toInt())), adj.flipH.toBool(), adj.flipV.toBool());

    height = ushort(image.rows);
    width = ushort(image.cols);
    copyToList(image, clean);
    if (adj.focusPeak > 0)
        ImgOverlay::focusPeaking(image, adj.focusPeak);
    else if (adj.expAssist > 0)
        ImgOverlay::exposureAssist(image);
    copyToList(image, marked);
}

void ImgAdjUtil::lut16Adjust(cv::Mat &image, const QList<ushort> &lutR, const QList<ushort> &lutG,
                             const QList<ushort> &lutB) const
{
    // The copies share the lists, so that an update of a table meanwhile cannot free them.
    image.forEach<cv::Vec3w>([lutR, lutG, lutB](cv::Vec3w &pixel, const int *) {
        pixel[0] = lutB[pixel[0]];
        pixel[1] = lutG[pixel[1]];
        pixel[2] = lutR[pixel[2]];
    });
}

bool ImgAdjUtil::measureWhiteBalance(const QList<quint16> &raw, ushort height, ushort width,
                                     const ImgAdjData &adj, double &wbR, double &wbG, double &wbB) const
{
    const bool fits = width > 0 && height > 0 && width <= MaxColorWidth && height <= MaxColorHeight;
    if (!fits || raw.size() < qsizetype(width) * height)
        return false;

    const cv::Mat image = wrapped(raw.constData(), height, width, CV_16U);
    const auto &masks = masksFor(adj.cfa.toInt());
    std::array<double, 3> means;
    for (std::size_t i = 0; i < means.size(); ++i) {
        const double mean = cv::mean(image, masks[i](cv::Rect(0, 0, width, height)))[0];
        means[i] = std::abs(mean) <= 1e-12 ? 1e-10 : mean;
    }
    const double brightest = *std::max_element(means.begin(), means.end());
    wbR = brightest / means[0] / adj.wbCalR.toDouble();
    wbG = brightest / means[1] / adj.wbCalG.toDouble();
    wbB = brightest / means[2] / adj.wbCalB.toDouble();
    return true;
}

void ImgAdjUtil::rgbToGray16(const QList<quint16> &image, ushort width, ushort height,
                             quint16 *destination) const
{
    cv::Mat gray(height, width, CV_16U, destination);
    cv::cvtColor(wrapped(image.constData(), height, width, CV_16UC3), gray, cv::COLOR_RGB2GRAY);
}

bool ImgAdjUtil::framesDiffer(const quint16 *first, const quint16 *second, ushort height, ushort width,
                              ushort threshold) const
{
    // A part at a time: a change near the top need not wait for the rest.
    constexpr std::size_t PartSamples = 16384;
    const std::size_t count = std::size_t(width) * height;
    for (std::size_t start = 0; start < count; start += PartSamples) {
        const std::size_t part = std::min(PartSamples, count - start);
        if (FrameKernel::largestDifference(first + start, second + start, part) > threshold)
            return true;
    }
    return false;
}

QImage ImgAdjUtil::unpaddedImage(int width, int height, QImage::Format format)
{
    const qsizetype bytesPerLine = (qsizetype(width) * QImage::toPixelFormat(format).bitsPerPixel() + 7) / 8;
    auto buffer = std::make_unique_for_overwrite<uchar[]>(std::size_t(bytesPerLine * height));
    uchar *bytes = buffer.release();
    return QImage(
        bytes, width, height, bytesPerLine, format,
        [](void *data) { std::unique_ptr<uchar[]>(static_cast<uchar *>(data)); }, bytes);
}
