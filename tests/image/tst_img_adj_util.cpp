#include "image/img_adj_data.h"
#include "image/img_adj_util.h"
#include "tests/image/test_frames.h"

#include <QTest>

using Lut = QList<quint16>;

/** Tables, formulas and measurements of the engine, against numbers worked out by hand. */
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
    void whiteBalanceIsMeasuredOnItsSites_data();
    void whiteBalanceIsMeasuredOnItsSites();
    void darkFrameMeasuresFiniteGains();
    void measurementRefusesWhatDoesNotFit();
    void framesDifferOnlyAboveTheThreshold();
    void everyPixelCountsForADifference();
    void differenceIsThatOfThePlainComparison();
    void grayWeighsTheFirstChannelAsRed();

private:
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

void TestImgAdjUtil::everyPixelCountsForADifference()
{
    constexpr ushort Width = 5;
    constexpr ushort Height = 67;
    const Lut first(Width * Height, 1000);
    for (qsizetype i = 0; i < first.size(); ++i) {
        Lut second = first;
        second[i] = 3000;
        QVERIFY(m_util.framesDiffer(first.constData(), second.constData(), Height, Width, 1999));
        QVERIFY(!m_util.framesDiffer(first.constData(), second.constData(), Height, Width, 2000));
    }
}

void TestImgAdjUtil::differenceIsThatOfThePlainComparison()
{
    // Sizes around the parts of the comparison; differences of any size at any place.
    QRandomGenerator random(4);
    for (const qsizetype count : {1, 7, 16383, 16384, 16385, 40000}) {
        Lut first(count);
        Lut second(count);
        int largest = 0;
        for (qsizetype i = 0; i < count; ++i) {
            first[i] = quint16(random.bounded(65536));
            second[i] = quint16(qBound(0, first[i] + random.bounded(-300, 301), 65535));
            largest = std::max(largest, std::abs(int(first[i]) - int(second[i])));
        }
        const auto differ = [&](int threshold) {
            return m_util.framesDiffer(first.constData(), second.constData(), 1, ushort(count),
                                       ushort(threshold));
        };
        QVERIFY(!differ(largest));
        QVERIFY(largest == 0 || differ(largest - 1));
    }
    const Lut low(9, 0);
    const Lut high(9, 65535);
    QVERIFY(m_util.framesDiffer(low.constData(), high.constData(), 3, 3, 65534));
    QVERIFY(!m_util.framesDiffer(high.constData(), low.constData(), 3, 3, 65535));
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
