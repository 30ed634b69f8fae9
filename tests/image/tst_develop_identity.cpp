#include "image/developed_frame.h"
#include "image/img_adj_data.h"
#include "image/img_adj_util.h"
#include "take/vesk_frame.h"
#include "tests/image/plain_sequence.h"
#include "tests/image/test_frames.h"
#include "tests/support/vesk_test_main.h"

#include <QScopeGuard>
#include <QTest>

#include <opencv2/core/utility.hpp>

#include <algorithm>

/** Decoded frames equal the plain sequence of library calls to the bit, whichever way they take. */
class TestDevelopIdentity : public QObject
{
    Q_OBJECT

private slots:
    void everySizeAndMosaicEqualsThePlainSequence_data();
    void everySizeAndMosaicEqualsThePlainSequence();
    void everyTransformEqualsThePlainSequence_data();
    void everyTransformEqualsThePlainSequence();
    void everyGainScalesAllCodesAsTheLibraryDoes_data();
    void everyGainScalesAllCodesAsTheLibraryDoes();
    void eightBitStepEqualsTheTableForEverySample();
    void monochromeOfAnySizeEqualsThePlainSequence();
    void buffersOfAnotherSizeOrLookLeaveNoTrace();
    void picturesStillShownAreNotWrittenTo();
    void savedPictureFollowsItsTables();
    void untouchedLookIsKnownAsSuch();
    void processorWithoutWideVectorsDoesTheSame_data();
    void processorWithoutWideVectorsDoesTheSame();

private:
    void compareWithPlain(const ImgAdjData &adj, VeskFrame &frame, const QByteArray &codes, int width,
                          int height);
    void compareSavedPicture(VeskFrame &frame, const QByteArray &codes, int width, int height);

    PlainSequence m_plain;
};

static QByteArray pictureBytes(const QImage &picture)
{
    QByteArray bytes;
    for (int y = 0; y < picture.height(); ++y)
        bytes.append(reinterpret_cast<const char *>(picture.constScanLine(y)), picture.width() * 3);
    return bytes;
}

void TestDevelopIdentity::compareWithPlain(const ImgAdjData &adj, VeskFrame &frame, const QByteArray &codes,
                                           int width, int height)
{
    m_plain.set(adj, codes, width, height);
    QVERIFY(
        frame.set(TestFrames::record(codes), quint16(width), quint16(height), quint32(codes.size()), 32, 0));
    QCOMPARE(int(frame.width()), m_plain.width());
    QCOMPARE(int(frame.height()), m_plain.height());
    QVERIFY(frame.raw() == m_plain.raw());
    QVERIFY(frame.clean() == m_plain.clean());
    QVERIFY(frame.marked() == m_plain.marked());
    QCOMPARE(frame.image(false).size(), QSize(m_plain.width(), m_plain.height()));
    QVERIFY(pictureBytes(frame.image(false)) == m_plain.picture());
    VeskFrame saved(&adj, nullptr);
    compareSavedPicture(saved, codes, width, height);
}

/** That of a frame which is only saved, with what the plain sequence has made of the same codes. */
void TestDevelopIdentity::compareSavedPicture(VeskFrame &frame, const QByteArray &codes, int width,
                                              int height)
{
    frame.decodeFor(DevelopedFrame::Use::SavedImage);
    QVERIFY(
        frame.set(TestFrames::record(codes), quint16(width), quint16(height), quint32(codes.size()), 32, 0));
    QCOMPARE(frame.image(false).format(), QImage::Format_BGR888);
    for (const QImage &picture :
         {frame.image(false), frame.fileImage().convertToFormat(QImage::Format_BGR888)}) {
        QCOMPARE(picture.size(), QSize(m_plain.width(), m_plain.height()));
        QVERIFY(pictureBytes(picture) == m_plain.picture());
    }
}

void TestDevelopIdentity::everySizeAndMosaicEqualsThePlainSequence_data()
{
    QTest::addColumn<int>("cfa");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("natural");
    const QList<QSize> sizes{{1, 1}, {2, 2}, {1, 7},  {7, 1},   {2, 9},     {9, 2},    {3, 3},    {3, 5},
                             {4, 4}, {5, 3}, {17, 9}, {64, 49}, {639, 479}, {640, 25}, {640, 480}};
    for (int cfa = 0; cfa <= 4; ++cfa) {
        for (const QSize size : sizes) {
            for (const bool natural : {false, true})
                QTest::addRow("cfa %d, %d x %d, %s", cfa, size.width(), size.height(),
                              natural ? "scene" : "noise")
                    << cfa << size << natural;
        }
    }
}

void TestDevelopIdentity::everySizeAndMosaicEqualsThePlainSequence()
{
    QFETCH(int, cfa);
    QFETCH(QSize, size);
    QFETCH(bool, natural);
    const ImgAdjData strong = TestFrames::strongAdjustment(cfa);
    ImgAdjData balanced = strong;
    const ImgAdjData untouched = TestFrames::identityAdjustment(cfa);
    balanced.lutR = balanced.lutG = balanced.lutB = untouched.lutG;
    const auto make = natural ? TestFrames::scene : TestFrames::noise;
    for (const ImgAdjData &adj : {strong, balanced, untouched}) {
        VeskFrame frame(&adj, nullptr);
        for (const quint32 seed : {1U, 2U, 3U})
            compareWithPlain(adj, frame, make(size.width(), size.height(), seed), size.width(),
                             size.height());
    }
}

void TestDevelopIdentity::everyTransformEqualsThePlainSequence_data()
{
    QTest::addColumn<int>("cfa");
    QTest::addColumn<int>("rotate");
    QTest::addColumn<int>("flips");
    QTest::addColumn<int>("overlay");
    QTest::addColumn<QRect>("crop");
    for (int cfa = 0; cfa <= 4; ++cfa) {
        for (const int rotate : {0, 90, 180, 270, -90, 45})
            for (int flips = 0; flips < 4; ++flips)
                QTest::addRow("cfa %d, %d degrees, flips %d", cfa, rotate, flips)
                    << cfa << rotate << flips << 0 << QRect();
        for (const int overlay : {1, 2, 3, 10, 13})
            QTest::addRow("cfa %d, overlay %d", cfa, overlay) << cfa << 0 << 0 << overlay << QRect();
        QTest::addRow("cfa %d, crop", cfa) << cfa << 0 << 0 << 0 << QRect(11, 6, 33, 21);
        QTest::addRow("cfa %d, everything", cfa) << cfa << 90 << 3 << 3 << QRect(11, 6, 77, 81);
    }
}

void TestDevelopIdentity::everyTransformEqualsThePlainSequence()
{
    QFETCH(int, cfa);
    QFETCH(int, rotate);
    QFETCH(int, flips);
    QFETCH(int, overlay);
    QFETCH(QRect, crop);
    ImgAdjData adj = TestFrames::strongAdjustment(cfa);
    adj.rotate = rotate;
    adj.flipH = flips & 1;
    adj.flipV = flips >> 1;
    adj.focusPeak = overlay % 10;
    adj.expAssist = overlay / 10;
    adj.cropRect = crop;
    VeskFrame frame(&adj, nullptr);
    compareWithPlain(adj, frame, TestFrames::scene(161, 119, 5), 161, 119);
    compareWithPlain(adj, frame, TestFrames::noise(161, 119, 6), 161, 119);
}

void TestDevelopIdentity::everyGainScalesAllCodesAsTheLibraryDoes_data()
{
    QTest::addColumn<double>("gain");
    for (const double gain :
         {0.0, -1.0, 1e-9,    0.1,  0.5,   0.999999, 1.0,     1.0 + 1e-12, 1.000001, 1.5,
          2.0, 2.5,  4.01961, 10.0, 100.0, 32768.0,  40000.0, 1e6,         1e12,     1e300})
        QTest::addRow("%.15g", gain) << gain;
    for (int i = 1; i <= 60; ++i)
        QTest::addRow("0.1 x 1.08 ^ %d", i) << 0.1 * std::pow(1.08, i);
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity();
    QTest::newRow("no number") << qQNaN();
}

void TestDevelopIdentity::everyGainScalesAllCodesAsTheLibraryDoes()
{
    QFETCH(double, gain);
    // Every code on every site: the frame repeats each code in blocks of 4 x 4.
    QByteArray codes(64 * 64, Qt::Uninitialized);
    for (int i = 0; i < codes.size(); ++i)
        codes[i] = char(i / 64 / 4 * 16 + i % 64 / 4);
    for (const int cfa : {1, 2, 4}) {
        ImgAdjData adj = TestFrames::identityAdjustment(cfa);
        adj.wbR = gain;
        adj.wbG = gain * 0.7;
        adj.wbB = gain * 1.3;
        VeskFrame frame(&adj, nullptr);
        compareWithPlain(adj, frame, codes, 64, 64);
    }
}

void TestDevelopIdentity::eightBitStepEqualsTheTableForEverySample()
{
    // A table of its own for each run of 256 samples carries every 16-bit number through the fast way.
    ImgAdjData adj = TestFrames::identityAdjustment(ImgAdjUtil::CfaMono);
    const ImgAdjUtil util;
    QByteArray codes(256, Qt::Uninitialized);
    std::iota(codes.begin(), codes.end(), char(0));
    QList<quint16> widened(256);
    util.lut8To16Convert(codes, widened);
    for (int high = 0; high < 256; ++high) {
        for (int low = 0; low < 256; ++low)
            adj.lutG[widened[low]] = quint16(high * 256 + low);
        VeskFrame frame(&adj, nullptr);
        QVERIFY(frame.set(codes, 256, 1, 256, 0, 0));
        const QImage picture = frame.image(false);
        for (int low = 0; low < 256; ++low)
            QCOMPARE(int(picture.constScanLine(0)[3 * low]), (2 * (high * 256 + low) + 257) / 514);
    }
}

void TestDevelopIdentity::monochromeOfAnySizeEqualsThePlainSequence()
{
    const ImgAdjData adj = TestFrames::strongAdjustment(ImgAdjUtil::CfaMono);
    VeskFrame frame(&adj, nullptr);
    for (const QSize size : {QSize(1280, 1024), QSize(1281, 3), QSize(5, 1000)})
        compareWithPlain(adj, frame, TestFrames::scene(size.width(), size.height(), 9), size.width(),
                         size.height());
}

void TestDevelopIdentity::buffersOfAnotherSizeOrLookLeaveNoTrace()
{
    ImgAdjData adj = TestFrames::strongAdjustment(ImgAdjUtil::CfaRGGB);
    VeskFrame frame(&adj, nullptr);
    for (int round = 0; round < 12; ++round) {
        adj.cfa = round % 3;
        adj.rotate = round % 4 == 1 ? 90 : 0;
        adj.focusPeak = round % 5 == 2 ? 3 : 0;
        const int width = 40 + 13 * (round % 4);
        const int height = 60 - 7 * (round % 5);
        compareWithPlain(adj, frame, TestFrames::noise(width, height, quint32(round)), width, height);
    }
}

void TestDevelopIdentity::picturesStillShownAreNotWrittenTo()
{
    const ImgAdjData adj = TestFrames::strongAdjustment(ImgAdjUtil::CfaRGGB);
    VeskFrame frame(&adj, nullptr);
    QList<QImage> pictures;
    QList<QList<quint16>> images;
    for (quint32 seed = 0; seed < 5; ++seed) {
        compareWithPlain(adj, frame, TestFrames::noise(32, 24, seed), 32, 24);
        pictures.append(frame.image(false));
        images.append(frame.clean());
    }
    for (quint32 seed = 0; seed < 5; ++seed) {
        m_plain.set(adj, TestFrames::noise(32, 24, seed), 32, 24);
        QVERIFY(pictureBytes(pictures[seed]) == m_plain.picture());
        QVERIFY(images[seed] == m_plain.clean());
    }
}

void TestDevelopIdentity::savedPictureFollowsItsTables()
{
    const ImgAdjData strong = TestFrames::strongAdjustment(ImgAdjUtil::CfaRGGB);
    ImgAdjData adj = strong;
    VeskFrame frame(&adj, nullptr);
    frame.decodeInPlace();
    QByteArray codes = TestFrames::noise(64, 48, 1);
    codes[64 + 1] = char(255); // a blue pixel that is white
    const auto compare = [&] {
        m_plain.set(adj, codes, 64, 48);
        compareSavedPicture(frame, codes, 64, 48);
    };
    compare();
    adj.lutR = adj.lutB = adj.lutG; // all the same
    compare();
    adj.lutR = strong.lutR; // one of its own
    compare();
    adj.lutB = adj.lutR;
    adj.lutG = strong.lutB;
    compare();
    for (quint16 &entry : adj.lutR) // in its place, which it shared with blue
        entry = quint16(65535 - entry);
    compare();
    std::ranges::reverse(adj.lutG);
    compare();
    std::ranges::reverse(adj.lutG); // in its place, which it shares with nobody but the frame
    compare();
    adj = strong;
    compare();
    adj = TestFrames::identityAdjustment(ImgAdjUtil::CfaRGGB); // nothing to look up
    compare();
    adj.lutB[65535] = 0;
    compare();
    adj.lutB[65535] = 65535;
    compare();
    adj.lutG = strong.lutG;
    compare();
}

/** Whatever its white balance. */
void TestDevelopIdentity::untouchedLookIsKnownAsSuch()
{
    const ImgAdjUtil util;
    const QByteArray codes = TestFrames::noise(8, 6, 1);
    DevelopedFrame frame;
    frame.use = DevelopedFrame::Use::SavedImage;
    frame.width = 8;
    frame.height = 6;
    const auto isUntouched = [&](const ImgAdjData &adj) {
        util.developFrame(adj, codes, 48, frame);
        return frame.byteTables.untouched;
    };
    const ImgAdjData strong = TestFrames::strongAdjustment(ImgAdjUtil::CfaRGGB);
    QVERIFY(!isUntouched(strong));
    ImgAdjData adj = strong;
    for (QList<quint16> *lut : {&adj.lutR, &adj.lutG, &adj.lutB})
        util.updateLut(*lut, 0.0, 1.0, 1.0, 0.0);
    QVERIFY(isUntouched(adj));
    adj.lutG[1] = 200; // is 1 at 8 bits
    QVERIFY(!isUntouched(adj));
    adj.lutG[1] = 2; // is 0 at 8 bits, as before
    QVERIFY(isUntouched(adj));
    adj.lutR = strong.lutR;
    QVERIFY(!isUntouched(adj));
    adj.lutR = adj.lutB;
    QVERIFY(isUntouched(adj));
}

void TestDevelopIdentity::processorWithoutWideVectorsDoesTheSame_data()
{
    everySizeAndMosaicEqualsThePlainSequence_data();
}

void TestDevelopIdentity::processorWithoutWideVectorsDoesTheSame()
{
    if (!cv::checkHardwareSupport(CV_CPU_AVX2))
        return; // it has done so all along
    cv::setUseOptimized(false);
    const auto restore = qScopeGuard([] { cv::setUseOptimized(true); });
    QVERIFY(!cv::checkHardwareSupport(CV_CPU_AVX2));
    everySizeAndMosaicEqualsThePlainSequence();
}

VESK_TEST_MAIN(TestDevelopIdentity)
#include "tst_develop_identity.moc"
