#pragma once

#include <QByteArrayView>
#include <QImage>
#include <QList>
#include <QObject>
#include <QtQmlIntegration>

#include <array>
#include <memory>

namespace cv
{
class Mat;
}
struct DevelopedFrame;
struct ImgAdjData;

/**
 * The image engine: the one place where pixels are computed.
 *
 * It holds tables and masks that are only read after construction, so that one instance serves every thread.
 * Samples are 16 bits; a working image is blue, green, red. A violated precondition is thrown as a
 * cv::Exception, which is a std::exception.
 */
class ImgAdjUtil : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")

public:
    /** Mosaic of a sensor, named by its first two rows. */
    enum CfaType { CfaMono = 0, CfaRGGB = 1, CfaGBRG = 2, CfaBGGR = 3, CfaGRBG = 4 };
    Q_ENUM(CfaType)

    /** The largest colour frame; monochrome frames have no bound here. */
    static constexpr int MaxColorWidth = 640;
    static constexpr int MaxColorHeight = 480;

    explicit ImgAdjUtil(QObject *parent = nullptr);
    ~ImgAdjUtil() override;

    static QString openCvVersion();

    /** A 16-bit sample on the 9-bit scale of the read-out, 0 to 511. */
    Q_INVOKABLE ushort pix16bTo9b(ushort pix16) const { return m_lut16To9[pix16]; }

    /** Widens the companded payload; the shorter of the two decides how many samples are written. */
    void lut8To16Convert(QByteArrayView payload, QList<quint16> &samples) const;
    /** destination has room for as many bytes as there are samples. */
    void lut16To8Convert(const QList<quint16> &samples, uchar *destination) const;
    /** Writes the 65536 entries of one channel. offset is a fraction of full scale, contrast -1 to 1. */
    void updateLut(QList<quint16> &lut, double offset, double gain, double gamma, double contrast) const;

    /** Whether frames of this size can be adjusted: colour frames are bound by the masks. */
    bool takesFrame(const ImgAdjData &adj, int width, int height) const;
    /**
     * Turns a mosaic of height x width samples into the adjusted image, with overlays (marked) and without
     * (clean), height x width x 3 samples each. height and width become those of the result.
     */
    void adjustImage(const ImgAdjData &adj, const QList<quint16> &raw, QList<quint16> &marked,
                     QList<quint16> &clean, ushort &height, ushort &width) const;
    /**
     * lut8To16Convert and adjustImage of one received frame in as few passes over memory as can be, with the
     * same result to the bit. frame holds the sensor's geometry on entry and the picture's afterwards.
     * Samples that payload does not hold are 0; raw gets imgSize samples, or the sensor's if those are more.
     */
    void developFrame(const ImgAdjData &adj, QByteArrayView payload, quint32 imgSize,
                      DevelopedFrame &frame) const;
    /** Puts channel 2 through lutR, channel 1 through lutG, channel 0 through lutB. */
    void lut16Adjust(cv::Mat &image, const QList<ushort> &lutR, const QList<ushort> &lutG,
                     const QList<ushort> &lutB) const;

    /**
     * Gains that bring the means of red and green and blue sites to the greatest of them. False, with the
     * gains untouched, when the geometry does not fit the masks or raw.
     */
    bool measureWhiteBalance(const QList<quint16> &raw, ushort height, ushort width, const ImgAdjData &adj,
                             double &wbR, double &wbG, double &wbB) const;
    /** destination has room for width x height samples. */
    void rgbToGray16(const QList<quint16> &image, ushort width, ushort height, quint16 *destination) const;
    /** True when some sample of two gray images differs by more than threshold. */
    bool framesDiffer(const quint16 *first, const quint16 *second, ushort height, ushort width,
                      ushort threshold) const;
    /**
     * Level curves of an image of width x height x 3 samples, as a picture of its own size with at most bins
     * bins. Null when the image or the picture has no pixels.
     */
    QImage renderHistogram(const QList<quint16> &samples, ushort width, ushort height, int pictureWidth,
                           int pictureHeight, int bins) const;

    /** An uninitialised picture whose rows follow one another without padding. */
    static QImage unpaddedImage(int width, int height, QImage::Format format);

private:
    struct Masks;

    const std::array<cv::Mat, 3> &masksFor(int cfa) const;
    cv::Mat demosaiced(const ImgAdjData &adj, const cv::Mat &raw) const;
    cv::Mat whiteBalanced(const ImgAdjData &adj, const cv::Mat &mosaic) const;

    std::array<quint16, 256> m_lut8To16;
    std::array<quint8, 65536> m_lut16To8;
    std::array<quint16, 65536> m_lut16To9;
    std::unique_ptr<const Masks> m_masks;
};
