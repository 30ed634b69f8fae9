#include "image/img_adj_data.h"
#include "image/img_adj_util.h"
#include "tests/image/test_frames.h"

#include <QTest>

#include <opencv2/core.hpp>

using Lut = QList<quint16>;

/** Tables, formulas and single operations of the engine, against numbers worked out by hand. */
class TestImgAdjUtil : public QObject
{
    Q_OBJECT

private slots:
    void payloadWidensAlongThreeSegments_data();
    void payloadWidensAlongThreeSegments();
    void wideningStopsAtTheShorterBuffer();
    void samplesReduceToEightBitsToNearest_data();
    void samplesReduceToEightBitsToNearest();
    void samplesReduceToNineBitsToNearest_data();
    void samplesReduceToNineBitsToNearest();
    void defaultsGiveTheIdentityTable();
    void fullContrastIsAStepAtTheMidPoint();
    void noContrastIsFlatAtTheMidPoint();
    void fullOffsetSaturates();
    void offsetIsRoundedBeforeItIsAdded();
    void everyStageOfATableRounds_data();
    void everyStageOfATableRounds();
    void absurdParametersStayInRange_data();
    void absurdParametersStayInRange();
    void tablesActOnTheirChannels();
    void monochromeUsesTheUnsuffixedTable();
    void monochromeIsNotWhiteBalanced();
    void whiteBalanceMultipliesEachSite_data();
    void whiteBalanceMultipliesEachSite();
    void rotationAndFlipsMovePixels_data();
    void rotationAndFlipsMovePixels();
    void cropKeepsAPart_data();
    void cropKeepsAPart();
    void blackTurnsBlueUnderExposureAssist();
    void saturatedTurnsRedUnderExposureAssist();
    void midtonesStayUnderExposureAssist();
    void redWeighsAsBlueInOverlays();
    void focusPeakingWinsOverExposureAssist();
    void higherFocusPeakingMarksMore();
    void overlaysLeaveTheCleanImageAlone();
    void colourFramesAreBoundByTheMasks_data();
    void colourFramesAreBoundByTheMasks();
    void whiteBalanceIsMeasuredOnItsSites_data();
    void whiteBalanceIsMeasuredOnItsSites();
    void darkFrameMeasuresFiniteGains();
    void measurementRefusesWhatDoesNotFit();
    void framesDifferOnlyAboveTheThreshold();
    void grayWeighsTheFirstChannelAsRed();

private:
    struct Result {
        Lut marked;
        Lut clean;
        ushort height;
        ushort width;
    };
    Result adjust(const ImgAdjData &adj, const Lut &raw, ushort width, ushort height) const
    {
        Result result{{}, {}, height, width};
        m_util.adjustImage(adj, raw, result.marked, result.clean, result.height, result.width);
        return result;
    }
    Lut lut(double offset, double gain, double gamma, double contrast) const
    {
        Lut entries(65536);
        m_util.updateLut(entries, offset, gain, gamma, contrast);
        return entries;
    }

    ImgAdjUtil m_util;
};

void TestImgAdjUtil::payloadWidensAlongThreeSegments_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("sample");
    // Codes on the 9-bit scale: 0, 1, 127, 129, 131, 255, 259, 263, 511; each times 65535 / 511.
    QTest::newRow("black") << 0 << 0;
    QTest::newRow("1") << 1 << 128;
    QTest::newRow("end of slope 1") << 127 << 16288;
    QTest::newRow("start of slope 2") << 128 << 16544;
    QTest::newRow("second of slope 2") << 129 << 16801;
    QTest::newRow("end of slope 2") << 191 << 32703;
    QTest::newRow("start of slope 4") << 192 << 33216;
    QTest::newRow("second of slope 4") << 193 << 33729;
    QTest::newRow("white") << 255 << 65535;
}

void TestImgAdjUtil::payloadWidensAlongThreeSegments()
{
    QFETCH(int, code);
    QFETCH(int, sample);
    Lut samples(1);
    m_util.lut8To16Convert(QByteArray(1, char(code)), samples);
    QCOMPARE(int(samples[0]), sample);
}

void TestImgAdjUtil::wideningStopsAtTheShorterBuffer()
{
    Lut samples(3, quint16(7));
    m_util.lut8To16Convert(QByteArray("\xff\xff"), samples);
    QCOMPARE(samples, Lut({65535, 65535, 7}));
    Lut one(1);
    m_util.lut8To16Convert(QByteArray(5, '\x01'), one);
    QCOMPARE(one, Lut({128}));
}

void TestImgAdjUtil::samplesReduceToEightBitsToNearest_data()
{
    QTest::addColumn<int>("sample");
    QTest::addColumn<int>("byte");
    QTest::newRow("0") << 0 << 0;
    QTest::newRow("last of 0") << 128 << 0;
    QTest::newRow("first of 1") << 129 << 1;
    QTest::newRow("last of 127") << 32767 << 127;
    QTest::newRow("first of 128") << 32768 << 128;
    QTest::newRow("last of 254") << 65406 << 254;
    QTest::newRow("first of 255") << 65407 << 255;
    QTest::newRow("65535") << 65535 << 255;
}

void TestImgAdjUtil::samplesReduceToEightBitsToNearest()
{
    QFETCH(int, sample);
    QFETCH(int, byte);
    uchar reduced = 77;
    m_util.lut16To8Convert(Lut{quint16(sample)}, &reduced);
    QCOMPARE(int(reduced), byte);
}

void TestImgAdjUtil::samplesReduceToNineBitsToNearest_data()
{
    QTest::addColumn<ushort>("sample");
    QTest::addColumn<ushort>("read");
    QTest::newRow("0") << ushort(0) << ushort(0);
    QTest::newRow("last of 0") << ushort(64) << ushort(0);
    QTest::newRow("first of 1") << ushort(65) << ushort(1);
    QTest::newRow("code 127") << ushort(16288) << ushort(127);
    QTest::newRow("middle") << ushort(32768) << ushort(256);
    QTest::newRow("white") << ushort(65535) << ushort(511);
}

void TestImgAdjUtil::samplesReduceToNineBitsToNearest()
{
    QFETCH(ushort, sample);
    QFETCH(ushort, read);
    QCOMPARE(m_util.pix16bTo9b(sample), read);
}

void TestImgAdjUtil::defaultsGiveTheIdentityTable()
{
    const Lut entries = lut(0.0, 1.0, 1.0, 0.0);
    QCOMPARE(entries.size(), 65536);
    for (int i = 0; i < 65536; ++i)
        QCOMPARE(int(entries[i]), i);
}

void TestImgAdjUtil::fullContrastIsAStepAtTheMidPoint()
{
    const Lut entries = lut(0.0, 1.0, 1.0, 1.0);
    for (int i = 0; i < 65536; ++i)
        QCOMPARE(int(entries[i]), i <= 32767 ? 0 : 65535);
}

void TestImgAdjUtil::noContrastIsFlatAtTheMidPoint()
{
    QCOMPARE(lut(0.0, 1.0, 1.0, -1.0), Lut(65536, quint16(32768)));
}

void TestImgAdjUtil::fullOffsetSaturates()
{
    QCOMPARE(lut(1.0, 1.0, 1.0, 0.0), Lut(65536, quint16(65535)));
    QCOMPARE(lut(-1.0, 1.0, 1.0, 0.0), Lut(65536, quint16(0)));
}

void TestImgAdjUtil::offsetIsRoundedBeforeItIsAdded()
{
    // 0.1 x 65535 = 6553.5, which rounds to 6554; -0.1 to -6554.
    QCOMPARE(lut(0.1, 1.0, 1.0, 0.0)[100], quint16(6654));
    QCOMPARE(lut(-0.1, 1.0, 1.0, 0.0)[6554], quint16(0));
    QCOMPARE(lut(-0.1, 1.0, 1.0, 0.0)[6555], quint16(1));
}

void TestImgAdjUtil::everyStageOfATableRounds_data()
{
    QTest::addColumn<double>("gain");
    QTest::addColumn<double>("gamma");
    QTest::addColumn<double>("contrast");
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("entry");
    QTest::newRow("half rounds up") << 0.5 << 1.0 << 0.0 << 3 << 2;
    QTest::newRow("gain saturates") << 10.0 << 1.0 << 0.0 << 6554 << 65535;
    QTest::newRow("gain below saturation") << 10.0 << 1.0 << 0.0 << 6553 << 65530;
    // sqrt(16384 / 65535) x 65535 = 32767.75
    QTest::newRow("gamma 2") << 1.0 << 2.0 << 0.0 << 16384 << 32768;
    // (10000 / 65535)^2 x 65535 = 1525.9
    QTest::newRow("gamma 0.5") << 1.0 << 0.5 << 0.0 << 10000 << 1526;
    // round(3 x 0.5) = 2; sqrt(2 / 65535) x 65535 = 362.04; without the first rounding it would be 313.5
    QTest::newRow("gain, then gamma") << 0.5 << 2.0 << 0.0 << 3 << 362;
    // tan(3 pi / 8) = 2.41421: (40000 - 32767.5) x 2.41421 + 32767.5 = 50228.3
    QTest::newRow("contrast 0.5") << 1.0 << 1.0 << 0.5 << 40000 << 50228;
    // round(1 x 0.5) = 1, so the slope 2.41421 has 1 to work on: far below 0
    QTest::newRow("contrast limits below") << 0.5 << 1.0 << 0.5 << 1 << 0;
    // tan(pi / 8) = 0.414214: (0 - 32767.5) x 0.414214 + 32767.5 = 19194.8
    QTest::newRow("contrast -0.5") << 1.0 << 1.0 << -0.5 << 0 << 19195;
}

void TestImgAdjUtil::everyStageOfATableRounds()
{
    QFETCH(double, gain);
    QFETCH(double, gamma);
    QFETCH(double, contrast);
    QFETCH(int, index);
    QFETCH(int, entry);
    QCOMPARE(int(lut(0.0, gain, gamma, contrast)[index]), entry);
}

void TestImgAdjUtil::absurdParametersStayInRange_data()
{
    QTest::addColumn<double>("offset");
    QTest::addColumn<double>("gain");
    QTest::addColumn<double>("gamma");
    QTest::addColumn<double>("contrast");
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("last");
    const double infinity = std::numeric_limits<double>::infinity();
    QTest::newRow("gamma 0") << 0.0 << 1.0 << 0.0 << 0.0 << 0 << 65535;
    QTest::newRow("gain infinite") << 0.0 << infinity << 1.0 << 0.0 << 0 << 65535;
    QTest::newRow("gain negative") << 0.0 << -1.0 << 1.0 << 0.0 << 0 << 0;
    QTest::newRow("offset huge") << 1e300 << 1.0 << 1.0 << 0.0 << 65535 << 65535;
    QTest::newRow("gain no number") << 0.0 << qQNaN() << 1.0 << 0.0 << 0 << 0;
}

void TestImgAdjUtil::absurdParametersStayInRange()
{
    QFETCH(double, offset);
    QFETCH(double, gain);
    QFETCH(double, gamma);
    QFETCH(double, contrast);
    QFETCH(int, first);
    QFETCH(int, last);
    const Lut entries = lut(offset, gain, gamma, contrast);
    QCOMPARE(int(entries.first()), first);
    QCOMPARE(int(entries.last()), last);
}

void TestImgAdjUtil::tablesActOnTheirChannels()
{
    cv::Mat image(1, 1, CV_16UC3, cv::Scalar(10, 20, 30));
    Lut red(65536, quint16(1));
    Lut green(65536, quint16(2));
    Lut blue(65536, quint16(3));
    red[30] = 300;
    green[20] = 200;
    blue[10] = 100;
    m_util.lut16Adjust(image, red, green, blue);
    QCOMPARE(image.at<cv::Vec3w>(0, 0), cv::Vec3w(100, 200, 300));
}

void TestImgAdjUtil::monochromeUsesTheUnsuffixedTable()
{
    ImgAdjData adj = TestFrames::identityAdjustment(ImgAdjUtil::CfaMono);
    adj.lutG[500] = 11;
    adj.lutR[500] = 22;
    adj.lutB[500] = 33;
    const Result result = adjust(adj, {500}, 1, 1);
    QCOMPARE(result.clean, Lut({11, 11, 11}));
    QCOMPARE(result.marked, Lut({11, 11, 11}));
}

void TestImgAdjUtil::monochromeIsNotWhiteBalanced()
{
    ImgAdjData adj = TestFrames::identityAdjustment(ImgAdjUtil::CfaMono);
    adj.wbR = 3.0;
    adj.wbG = 0.5;
    adj.wbB = 7.0;
    adj.wbCalG = 2.5;
    const Result result = adjust(adj, {100, 200, 300, 400}, 2, 2);
    QCOMPARE(result.clean, Lut({100, 100, 100, 200, 200, 200, 300, 300, 300, 400, 400, 400}));
}

void TestImgAdjUtil::whiteBalanceMultipliesEachSite_data()
{
    QTest::addColumn<int>("cfa");
    QTest::addColumn<Lut>("center");
    // A flat mosaic of 1000 with gains 2 (red), 3 (green), 4 (blue); the centre of 3 x 3, blue green red.
    QTest::newRow("RGGB") << 1 << Lut{4000, 3000, 2000};
    QTest::newRow("GBRG") << 2 << Lut{4000, 3000, 2000};
    // Balanced as GBRG: G B G / R G R / G B G, taken apart as RGGB: the sites' colours are mixed up.
    // centre = "blue" site with G 3000; "green" = (B + R + R + B) / 4; "red" = G corners.
    QTest::newRow("BGGR") << 3 << Lut{3000, 3000, 3000};
    QTest::newRow("GRBG") << 4 << Lut{3000, 3000, 3000};
}

void TestImgAdjUtil::whiteBalanceMultipliesEachSite()
{
    QFETCH(int, cfa);
    QFETCH(Lut, center);
    ImgAdjData adj = TestFrames::identityAdjustment(cfa);
    adj.wbR = 4.0;
    adj.wbCalR = 0.5;
    adj.wbG = 3.0;
    adj.wbB = 2.0;
    adj.wbCalB = 2.0;
    const Result result = adjust(adj, Lut(9, quint16(1000)), 3, 3);
    QCOMPARE(result.clean.mid(4 * 3, 3), center);
}

void TestImgAdjUtil::rotationAndFlipsMovePixels_data()
{
    QTest::addColumn<int>("rotate");
    QTest::addColumn<bool>("flipH");
    QTest::addColumn<bool>("flipV");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<Lut>("pixels");
    // The image is 1 2 3 / 4 5 6.
    QTest::newRow("0") << 0 << false << false << 3 << 2 << Lut{1, 2, 3, 4, 5, 6};
    QTest::newRow("90") << 90 << false << false << 2 << 3 << Lut{4, 1, 5, 2, 6, 3};
    QTest::newRow("180") << 180 << false << false << 3 << 2 << Lut{6, 5, 4, 3, 2, 1};
    QTest::newRow("270") << 270 << false << false << 2 << 3 << Lut{3, 6, 2, 5, 1, 4};
    QTest::newRow("-90 is 270") << -90 << false << false << 2 << 3 << Lut{3, 6, 2, 5, 1, 4};
    QTest::newRow("450 is 90") << 450 << false << false << 2 << 3 << Lut{4, 1, 5, 2, 6, 3};
    QTest::newRow("-450 is 270") << -450 << false << false << 2 << 3 << Lut{3, 6, 2, 5, 1, 4};
    QTest::newRow("45 is none") << 45 << false << false << 3 << 2 << Lut{1, 2, 3, 4, 5, 6};
    QTest::newRow("flipH") << 0 << true << false << 3 << 2 << Lut{3, 2, 1, 6, 5, 4};
    QTest::newRow("flipV") << 0 << false << true << 3 << 2 << Lut{4, 5, 6, 1, 2, 3};
    QTest::newRow("both") << 0 << true << true << 3 << 2 << Lut{6, 5, 4, 3, 2, 1};
    QTest::newRow("rotation, then flipH") << 90 << true << false << 2 << 3 << Lut{1, 4, 2, 5, 3, 6};
    QTest::newRow("rotation, then flipV") << 90 << false << true << 2 << 3 << Lut{6, 3, 5, 2, 4, 1};
    // 65626 is 90 as a signed 16-bit number.
    QTest::newRow("16 bits") << 65626 << false << false << 2 << 3 << Lut{4, 1, 5, 2, 6, 3};
}

void TestImgAdjUtil::rotationAndFlipsMovePixels()
{
    QFETCH(int, rotate);
    QFETCH(bool, flipH);
    QFETCH(bool, flipV);
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(Lut, pixels);
    ImgAdjData adj = TestFrames::identityAdjustment(ImgAdjUtil::CfaMono);
    adj.rotate = rotate;
    adj.flipH = flipH;
    adj.flipV = flipV;
    const Result result = adjust(adj, {1, 2, 3, 4, 5, 6}, 3, 2);
    QCOMPARE(int(result.width), width);
    QCOMPARE(int(result.height), height);
    Lut green;
    for (qsizetype i = 1; i < result.clean.size(); i += 3)
        green.append(result.clean[i]);
    QCOMPARE(green, pixels);
}

void TestImgAdjUtil::cropKeepsAPart_data()
{
    QTest::addColumn<QRect>("crop");
    QTest::addColumn<int>("width");
    QTest::addColumn<Lut>("pixels");
    QTest::newRow("part") << QRect(1, 1, 2, 1) << 2 << Lut{5, 6};
    QTest::newRow("whole") << QRect(0, 0, 3, 2) << 3 << Lut{1, 2, 3, 4, 5, 6};
    QTest::newRow("null keeps all") << QRect() << 3 << Lut{1, 2, 3, 4, 5, 6};
    QTest::newRow("beyond keeps all") << QRect(2, 0, 2, 1) << 3 << Lut{1, 2, 3, 4, 5, 6};
    QTest::newRow("no height keeps all") << QRect(0, 0, 2, 0) << 3 << Lut{1, 2, 3, 4, 5, 6};
    QTest::newRow("negative keeps all") << QRect(2, 1, -2, -1) << 3 << Lut{1, 2, 3, 4, 5, 6};
}

void TestImgAdjUtil::cropKeepsAPart()
{
    QFETCH(QRect, crop);
    QFETCH(int, width);
    QFETCH(Lut, pixels);
    ImgAdjData adj = TestFrames::identityAdjustment(ImgAdjUtil::CfaMono);
    adj.cropRect = crop;
    const Result result = adjust(adj, {1, 2, 3, 4, 5, 6}, 3, 2);
    QCOMPARE(int(result.width), width);
    Lut green;
    for (qsizetype i = 1; i < result.clean.size(); i += 3)
        green.append(result.clean[i]);
    QCOMPARE(green, pixels);
}

static Lut repeated(const Lut &pixel, int count)
{
    Lut image;
    for (int i = 0; i < count; ++i)
        image += pixel;
    return image;
}

void TestImgAdjUtil::blackTurnsBlueUnderExposureAssist()
{
    ImgAdjData adj = TestFrames::identityAdjustment(ImgAdjUtil::CfaMono);
    adj.expAssist = 1;
    QCOMPARE(adjust(adj, Lut(20, quint16(0)), 5, 4).marked, repeated({65535, 0, 0}, 20));
}

void TestImgAdjUtil::saturatedTurnsRedUnderExposureAssist()
{
    ImgAdjData adj = TestFrames::identityAdjustment(ImgAdjUtil::CfaMono);
    adj.expAssist = 1;
    QCOMPARE(adjust(adj, Lut(20, quint16(65535)), 5, 4).marked, repeated({0, 0, 65535}, 20));
}

void TestImgAdjUtil::midtonesStayUnderExposureAssist()
{
    ImgAdjData adj = TestFrames::identityAdjustment(ImgAdjUtil::CfaMono);
    adj.expAssist = 1;
    const Lut raw{1, 30000, 65534};
    QCOMPARE(adjust(adj, raw, 3, 1).marked, Lut({1, 1, 1, 30000, 30000, 30000, 65534, 65534, 65534}));
}

void TestImgAdjUtil::redWeighsAsBlueInOverlays()
{
    // Of (4, 0, 0) the gray is 0.299 x 4, of (0, 0, 4) it is 0.114 x 4, which rounds to 0.
    Lut gray(2);
    m_util.rgbToGray16({4, 0, 0, 0, 0, 4}, 2, 1, gray.data());
    QCOMPARE(gray, Lut({1, 0}));
    ImgAdjData adj = TestFrames::identityAdjustment(ImgAdjUtil::CfaMono);
    adj.cfa = ImgAdjUtil::CfaRGGB;
    adj.lutR = Lut(65536, quint16(4));
    adj.lutG = Lut(65536, quint16(0));
    adj.lutB = Lut(65536, quint16(0));
    adj.expAssist = 1;
    QCOMPARE(adjust(adj, Lut(9, quint16(1000)), 3, 3).marked, repeated({65535, 0, 0}, 9));
    std::swap(adj.lutR, adj.lutB);
    QCOMPARE(adjust(adj, Lut(9, quint16(1000)), 3, 3).marked, repeated({4, 0, 0}, 9));
}

/** How many pixels of a 64 x 64 frame with edges of many heights are pure green. */
static int greenPixels(const Lut &image)
{
    int count = 0;
    for (qsizetype i = 0; i < image.size(); i += 3)
        count += image[i] == 0 && image[i + 1] == 65535 && image[i + 2] == 0;
    return count;
}

static Lut stripes()
{
    Lut raw;
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
            raw.append(quint16((x / 4) % 2 == 0 ? 20000 : 20000 + 600 * y));
    return raw;
}

void TestImgAdjUtil::focusPeakingWinsOverExposureAssist()
{
    ImgAdjData adj = TestFrames::identityAdjustment(ImgAdjUtil::CfaMono);
    adj.focusPeak = 3;
    Lut raw = stripes();
    std::fill_n(raw.begin(), 64 * 8, quint16(0));
    const Result peaks = adjust(adj, raw, 64, 64);
    QVERIFY(greenPixels(peaks.marked) > 0);
    adj.expAssist = 1;
    QCOMPARE(adjust(adj, raw, 64, 64).marked, peaks.marked);
    for (qsizetype i = 0; i < peaks.marked.size(); i += 3) {
        const bool green = peaks.marked[i + 1] == 65535 && peaks.marked[i] == 0;
        QVERIFY(green || peaks.marked.mid(i, 3) == peaks.clean.mid(i, 3));
    }
}

void TestImgAdjUtil::higherFocusPeakingMarksMore()
{
    ImgAdjData adj = TestFrames::identityAdjustment(ImgAdjUtil::CfaMono);
    std::array<int, 5> marked{};
    for (int level = 1; level <= 4; ++level) {
        adj.focusPeak = level;
        marked[std::size_t(level)] = greenPixels(adjust(adj, stripes(), 64, 64).marked);
    }
    QVERIFY(marked[1] > 0);
    QVERIFY(marked[2] > marked[1]);
    QVERIFY(marked[3] > marked[2]);
    // A level that nobody knows is as the lowest one.
    QCOMPARE(marked[4], marked[1]);
}

void TestImgAdjUtil::overlaysLeaveTheCleanImageAlone()
{
    ImgAdjData adj = TestFrames::identityAdjustment(ImgAdjUtil::CfaMono);
    const Result plain = adjust(adj, stripes(), 64, 64);
    QCOMPARE(plain.marked, plain.clean);
    adj.focusPeak = 3;
    const Result peaks = adjust(adj, stripes(), 64, 64);
    QCOMPARE(peaks.clean, plain.clean);
    QVERIFY(peaks.marked != peaks.clean);
}

void TestImgAdjUtil::colourFramesAreBoundByTheMasks_data()
{
    QTest::addColumn<int>("cfa");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<bool>("taken");
    QTest::newRow("largest") << 1 << 640 << 480 << true;
    QTest::newRow("too wide") << 1 << 641 << 480 << false;
    QTest::newRow("too high") << 2 << 640 << 481 << false;
    QTest::newRow("upright") << 3 << 480 << 640 << false;
    QTest::newRow("monochrome") << 0 << 1280 << 1024 << true;
    QTest::newRow("empty") << 0 << 0 << 1 << false;
}

void TestImgAdjUtil::colourFramesAreBoundByTheMasks()
{
    QFETCH(int, cfa);
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(bool, taken);
    const ImgAdjData adj = TestFrames::identityAdjustment(cfa);
    QCOMPARE(m_util.takesFrame(adj, width, height), taken);
    if (!taken && width > 0)
        QVERIFY_THROWS_EXCEPTION(cv::Exception,
                                 adjust(adj, Lut(width * height), ushort(width), ushort(height)));
}

void TestImgAdjUtil::whiteBalanceIsMeasuredOnItsSites_data()
{
    QTest::addColumn<int>("cfa");
    QTest::addColumn<double>("red");
    QTest::addColumn<double>("green");
    QTest::addColumn<double>("blue");
    // Sites 100 400 / 600 1000. RGGB: red 100, green (400 + 600) / 2, blue 1000.
    QTest::newRow("RGGB") << 1 << 10.0 << 2.0 << 1.0;
    // GBRG: green (100 + 1000) / 2, blue 400, red 600.
    QTest::newRow("GBRG") << 2 << 1.0 << 600.0 / 550.0 << 1.5;
    QTest::newRow("any other is measured as GBRG") << 4 << 1.0 << 600.0 / 550.0 << 1.5;
}

void TestImgAdjUtil::whiteBalanceIsMeasuredOnItsSites()
{
    QFETCH(int, cfa);
    QFETCH(double, red);
    QFETCH(double, green);
    QFETCH(double, blue);
    ImgAdjData adj = TestFrames::identityAdjustment(cfa);
    adj.wbCalR = 2.0;
    adj.wbCalB = 0.5;
    adj.wbR = 5.0;
    const Lut raw{100, 400, 100, 400, 600, 1000, 600, 1000};
    double wbR = 0.0;
    double wbG = 0.0;
    double wbB = 0.0;
    QVERIFY(m_util.measureWhiteBalance(raw, 2, 4, adj, wbR, wbG, wbB));
    QCOMPARE(wbR, red / 2.0);
    QCOMPARE(wbG, green);
    QCOMPARE(wbB, blue / 0.5);
}

void TestImgAdjUtil::darkFrameMeasuresFiniteGains()
{
    const ImgAdjData adj = TestFrames::identityAdjustment(1);
    double wbR = 0.0;
    double wbG = 0.0;
    double wbB = 0.0;
    QVERIFY(m_util.measureWhiteBalance(Lut(16), 4, 4, adj, wbR, wbG, wbB));
    QCOMPARE(wbR, 1.0);
    QCOMPARE(wbG, 1.0);
    QCOMPARE(wbB, 1.0);
    // Red alone is lit: the others are raised from 1e-10.
    QVERIFY(m_util.measureWhiteBalance({500, 0, 0, 0}, 2, 2, adj, wbR, wbG, wbB));
    QCOMPARE(wbR, 1.0);
    QCOMPARE(wbG, 5e12);
    QCOMPARE(wbB, 5e12);
}

void TestImgAdjUtil::measurementRefusesWhatDoesNotFit()
{
    const ImgAdjData adj = TestFrames::identityAdjustment(1);
    double wbR = 7.0;
    double wbG = 8.0;
    double wbB = 9.0;
    QVERIFY(!m_util.measureWhiteBalance(Lut(640 * 480), 640, 480, adj, wbR, wbG, wbB));
    QVERIFY(!m_util.measureWhiteBalance(Lut(15), 4, 4, adj, wbR, wbG, wbB));
    QVERIFY(!m_util.measureWhiteBalance(Lut(), 0, 0, adj, wbR, wbG, wbB));
    QCOMPARE(wbR, 7.0);
    QCOMPARE(wbG, 8.0);
    QCOMPARE(wbB, 9.0);
}

void TestImgAdjUtil::framesDifferOnlyAboveTheThreshold()
{
    const std::array<quint16, 4> first{100, 200, 300, 400};
    std::array<quint16, 4> second = first;
    QVERIFY(!m_util.framesDiffer(first.data(), second.data(), 2, 2, 0));
    second[3] = 350;
    QVERIFY(!m_util.framesDiffer(first.data(), second.data(), 2, 2, 50));
    QVERIFY(m_util.framesDiffer(first.data(), second.data(), 2, 2, 49));
    QVERIFY(m_util.framesDiffer(second.data(), first.data(), 2, 2, 49));
}

void TestImgAdjUtil::grayWeighsTheFirstChannelAsRed()
{
    // Weights 0.299, 0.587, 0.114 in the order of the channels.
    Lut gray(4);
    m_util.rgbToGray16({10000, 0, 0, 0, 10000, 0, 0, 0, 10000, 65535, 65535, 65535}, 2, 2, gray.data());
    QCOMPARE(gray, Lut({2990, 5870, 1140, 65535}));
}

QTEST_MAIN(TestImgAdjUtil)
#include "tst_img_adj_util.moc"
