#include "sim/scene.h"

#include <QElapsedTimer>
#include <QTest>

#include <set>

using namespace q4sim;

namespace
{

std::vector<quint8> render(const SceneParams &params, qint64 frame)
{
    std::vector<quint8> out(static_cast<size_t>(params.width * params.height));
    SceneRenderer(params).render(frame, out.data());
    return out;
}

// 9-bit sample of a code, by the three segments of slope 1, 2 and 4.
int expanded(int code)
{
    return code < 128 ? code : code < 192 ? 2 * code - 127 : 4 * code - 509;
}

double fractionEqual(const std::vector<quint8> &a, const std::vector<quint8> &b)
{
    size_t equal = 0;
    for (size_t i = 0; i < a.size(); ++i)
        equal += a[i] == b[i];
    return double(equal) / double(a.size());
}

} // namespace

class TestSimScene : public QObject
{
    Q_OBJECT

private slots:
    void compandPicksTheNearestCode();
    void rendererGivesTheBytesOfPixel_data();
    void rendererGivesTheBytesOfPixel();
    void sceneMovesFromFrameToFrame();
    void noiseIsSeededAndSmall();
    void mosaicFollowsThePattern();
    void monoHasNoMosaic();
    void longerExposureIsBrighter();
    void stripCarriesTheFrameNumber_data();
    void stripCarriesTheFrameNumber();
    void stripIsNotReadFromADamagedPicture();
    void frameIsRenderedInUnderFiveMilliseconds();
};

void TestSimScene::compandPicksTheNearestCode()
{
    QCOMPARE(compand(-3), quint8(0));
    QCOMPARE(compand(600), quint8(255));
    for (int v = 0; v < 512; ++v) {
        int best = 1000;
        for (int code = 0; code < 256; ++code)
            best = std::min(best, std::abs(expanded(code) - v));
        QCOMPARE(std::abs(expanded(compand(v)) - v), best);
    }
    std::set<quint8> used;
    for (int v = 0; v < 512; ++v)
        used.insert(compand(v));
    QCOMPARE(used.size(), size_t(256));
}

void TestSimScene::rendererGivesTheBytesOfPixel_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<int>("cfa");
    QTest::addColumn<qint64>("frame");
    QTest::addColumn<Look>("look");
    QTest::newRow("colour") << 640 << 480 << 1 << qint64(12345) << Look::Moving;
    QTest::newRow("other pattern") << 320 << 240 << 2 << qint64(0) << Look::Moving;
    QTest::newRow("before the trigger") << 320 << 120 << 1 << qint64(-77) << Look::Moving;
    QTest::newRow("mono") << 1280 << 1024 << 0 << (qint64(1) << 40) << Look::Moving;
    QTest::newRow("tiny") << 64 << 32 << 0 << qint64(5) << Look::Moving;
    QTest::newRow("still") << 640 << 480 << 1 << qint64(-12) << Look::Still;
    QTest::newRow("plain") << 320 << 240 << 0 << qint64(8) << Look::Plain;
}

void TestSimScene::rendererGivesTheBytesOfPixel()
{
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(int, cfa);
    QFETCH(qint64, frame);
    QFETCH(Look, look);
    SceneParams params;
    params.width = width;
    params.height = height;
    params.cfa = cfa;
    params.seed = 99;
    params.gainQ8 = 300;
    params.look = look;
    params.noise = look == Look::Moving ? 5 : 0;
    // The same pixel twice, in this frame alone and behind it.
    params.changes = {
        {frame, frame, 50, 20, 9}, {frame - 5, frame, 50, 20, 4}, {frame + 1, frame + 9, 3, 3, 9}};
    const std::vector<quint8> frameBytes = render(params, frame);
    qint64 different = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            different += frameBytes[static_cast<size_t>(y * width + x)] != pixel(params, frame, x, y);
    }
    QCOMPARE(different, 0);
}

void TestSimScene::sceneMovesFromFrameToFrame()
{
    SceneParams params;
    params.noise = 0;
    QCOMPARE(fractionEqual(render(params, 10), render(params, 10)), 1.0);
    const double next = fractionEqual(render(params, 10), render(params, 11));
    QVERIFY2(next < 1.0, qPrintable(QString::number(next)));
    const double later = fractionEqual(render(params, 10), render(params, 60));
    QVERIFY2(later < 0.95 && later > 0.5, qPrintable(QString::number(later)));
}

void TestSimScene::noiseIsSeededAndSmall()
{
    SceneParams quiet;
    quiet.noise = 0;
    SceneParams noisy;
    SceneParams otherSeed;
    otherSeed.seed = 2;
    const auto base = render(quiet, 7);
    const auto a = render(noisy, 7);
    QVERIFY(fractionEqual(a, render(otherSeed, 7)) < 0.5);
    int largest = 0;
    double sum = 0;
    for (size_t i = 0; i < a.size(); ++i) {
        if (base[i] >= 110)
            continue;
        largest = std::max(largest, std::abs(a[i] - base[i]));
        sum += a[i] - base[i];
    }
    QCOMPARE(largest, noisy.noise);
    QVERIFY(std::abs(sum / double(a.size())) < 0.2);
}

void TestSimScene::mosaicFollowsThePattern()
{
    // The sixth bar of eight at the bottom is red: bright at the red sites and dark at the others.
    for (const int cfa : {1, 2}) {
        SceneParams params;
        params.cfa = cfa;
        params.noise = 0;
        for (int y = 470; y < 474; ++y) {
            for (int x = 420; x < 424; ++x) {
                const bool redSite = x % 2 == 0 && y % 2 == (cfa == 1 ? 0 : 1);
                QCOMPARE(pixel(params, 0, x, y) > 100, redSite);
            }
        }
    }
}

void TestSimScene::monoHasNoMosaic()
{
    SceneParams params;
    params.cfa = 0;
    params.noise = 0;
    for (int i = 0; i < 4; ++i)
        QCOMPARE(pixel(params, 0, 420 + i % 2, 470 + i / 2), pixel(params, 0, 420, 470));
}

void TestSimScene::longerExposureIsBrighter()
{
    SceneParams dim;
    dim.noise = 0;
    SceneParams bright = dim;
    bright.gainQ8 = 384;
    // White bar: 420 on the 9-bit scale; half as much again is beyond 511.
    QCOMPARE(pixel(dim, 0, 10, 470), compand(420));
    QCOMPARE(pixel(bright, 0, 10, 470), quint8(255));
}

void TestSimScene::stripCarriesTheFrameNumber_data()
{
    QTest::addColumn<qint64>("frame");
    for (const qint64 frame : {0LL, 1LL, 255LL, 123456789LL, 2147483647LL, -1LL, -2147483648LL, -600LL})
        QTest::newRow(qPrintable(QString::number(frame))) << qint64(frame);
}

void TestSimScene::stripCarriesTheFrameNumber()
{
    QFETCH(qint64, frame);
    for (const int cfa : {0, 1, 2}) {
        SceneParams params;
        params.cfa = cfa;
        const auto bytes = render(params, frame);
        const auto read = readStrip(
            [&](int x, int y) { return double(expanded(bytes[static_cast<size_t>(y * params.width + x)])); });
        QVERIFY(read.has_value());
        QCOMPARE(qint64(*read), frame);
    }
}

void TestSimScene::stripIsNotReadFromADamagedPicture()
{
    const SceneParams params;
    auto bytes = render(params, 1000);
    const auto at = [&](int x, int y) {
        return double(expanded(bytes[static_cast<size_t>(y * params.width + x)]));
    };
    QVERIFY(readStrip(at).has_value());
    // One block of the number inverted: the parity tells.
    for (int y = 8; y < 16; ++y) {
        for (int x = 8 + 8 * 20; x < 8 + 8 * 21; ++x) {
            auto &byte = bytes[static_cast<size_t>(y * params.width + x)];
            byte = byte > 128 ? quint8(20) : quint8(240);
        }
    }
    QVERIFY(!readStrip(at).has_value());
    QVERIFY(!readStrip([](int, int) { return 100.0; }).has_value());
}

void TestSimScene::frameIsRenderedInUnderFiveMilliseconds()
{
    const SceneParams params;
    const SceneRenderer renderer(params);
    std::vector<quint8> out(640 * 480);
    // The best of many: other programs may be running.
    qint64 best = std::numeric_limits<qint64>::max();
    for (int i = 0; i < 40; ++i) {
        QElapsedTimer timer;
        timer.start();
        renderer.render(i, out.data());
        best = std::min(best, timer.nsecsElapsed());
    }
    qInfo("640x480: %lld us", best / 1000);
#if defined(__OPTIMIZE__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    constexpr qint64 limitNs = 5000000;
#else
    constexpr qint64 limitNs = 250000000; // instrumented builds are slower by far
#endif
    QVERIFY(best < limitNs);
}

QTEST_GUILESS_MAIN(TestSimScene)
#include "tst_sim_scene.moc"
