#include "image/histogram.h"
#include "image/histogram_control.h"
#include "image/img_adj_util.h"
#include "take/vesk_frame.h"
#include "tests/image/plain_sequence.h"
#include "tests/image/test_frames.h"
#include "tests/support/vesk_test_main.h"

#include <QQuickWindow>
#include <QSignalSpy>
#include <QTest>

using Samples = QList<quint16>;

/** The histogram picture, its data and the item that draws it. */
class TestHistogram : public QObject
{
    Q_OBJECT

private slots:
    void pictureEqualsThePlainSequence_data();
    void pictureEqualsThePlainSequence();
    void flatColourIsOnePeakReachingTheTop();
    void everyBinOfANarrowPictureIsOneColumn();
    void widePictureHasTwoColumnsABin();
    void channelsShareOneScale();
    void channelsMixToWhiteWhereTheyAgree();
    void overexposedFrameCountsInTheTopBin();
    void nothingToCountOrNowhereToDrawGivesNoPicture();
    void dataIsSharedAndToldInOrder();
    void itemDrawsThePictureAtItsOwnSize();
    void itemWithoutSizeDrawsNothing();
    void itemFollowsItsHistogramOnly();
    void itemOutlivesItsHistogram();

private:
    QImage render(const Samples &samples, ushort width, ushort height, int pw, int ph, int bins = 256) const
    {
        return VeskApp::instance()->imgAdjUtil()->renderHistogram(samples, width, height, pw, ph, bins);
    }
};

static Samples flat(int pixels, quint16 blue, quint16 green, quint16 red)
{
    Samples samples;
    for (int i = 0; i < pixels; ++i)
        samples << blue << green << red;
    return samples;
}

void TestHistogram::pictureEqualsThePlainSequence_data()
{
    QTest::addColumn<QSize>("frame");
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<int>("bins");
    QTest::newRow("as in the control bar") << QSize(640, 480) << QSize(128, 64) << 256;
    QTest::newRow("wide") << QSize(640, 480) << QSize(640, 200) << 256;
    QTest::newRow("in between") << QSize(161, 119) << QSize(300, 77) << 256;
    QTest::newRow("bins of three columns") << QSize(64, 48) << QSize(768, 50) << 256;
    QTest::newRow("bins that divide nothing") << QSize(64, 48) << QSize(131, 50) << 100;
    QTest::newRow("many bins") << QSize(64, 48) << QSize(1000, 50) << 1000;
    QTest::newRow("one pixel") << QSize(1, 1) << QSize(128, 64) << 256;
    QTest::newRow("odd count") << QSize(7, 3) << QSize(1, 1) << 256;
    QTest::newRow("one bin") << QSize(7, 3) << QSize(50, 20) << 1;
}

void TestHistogram::pictureEqualsThePlainSequence()
{
    QFETCH(QSize, frame);
    QFETCH(QSize, picture);
    QFETCH(int, bins);
    PlainSequence plain;
    const ImgAdjData adj = TestFrames::strongAdjustment(ImgAdjUtil::CfaRGGB);
    for (const auto make : {TestFrames::scene, TestFrames::noise}) {
        plain.set(adj, make(frame.width(), frame.height(), 4), frame.width(), frame.height());
        const QImage expected = plain.histogram(plain.clean(), frame.width(), frame.height(), picture.width(),
                                                picture.height(), bins);
        const QImage rendered = render(plain.clean(), ushort(frame.width()), ushort(frame.height()),
                                       picture.width(), picture.height(), bins);
        QCOMPARE(rendered.format(), QImage::Format_BGR888);
        QCOMPARE(rendered, expected);
    }
}

void TestHistogram::flatColourIsOnePeakReachingTheTop()
{
    // 128 bins of 512 levels: 5120 is bin 10, 10240 bin 20, 40960 bin 80.
    const QImage picture = render(flat(100, 5120, 10240, 40960), 10, 10, 128, 64);
    QCOMPARE(picture.pixelColor(10, 0).blue(), 255);
    QCOMPARE(picture.pixelColor(20, 0).green(), 255);
    QCOMPARE(picture.pixelColor(80, 0).red(), 255);
    for (int x = 0; x < 128; ++x) {
        const QColor top = picture.pixelColor(x, 0);
        QCOMPARE(top.blue(), x == 10 ? 255 : 38);
        QCOMPARE(top.green(), x == 20 ? 255 : 38);
        QCOMPARE(top.red(), x == 80 ? 255 : 38);
    }
    QCOMPARE(picture.pixelColor(50, 40), QColor(38, 38, 38));
    // The curve runs along the bottom where nothing was counted.
    QCOMPARE(picture.pixelColor(50, 63), QColor(255, 255, 255));
}

void TestHistogram::everyBinOfANarrowPictureIsOneColumn()
{
    // Bins 20, 40, 60 and 80 with 1, 2, 4 and 1 of 8 pixels, at the lower and the upper end of the bins.
    Samples samples;
    for (const int level : {20 * 512, 40 * 512, 40 * 512 + 511, 60 * 512, 60 * 512, 60 * 512 + 511,
                            60 * 512 + 511, 80 * 512 + 511})
        samples += flat(1, quint16(level), quint16(level), quint16(level));
    const QImage picture = render(samples, 8, 1, 128, 64);
    const auto level = [&](int x) {
        int y = 0;
        while (picture.pixelColor(x, y) != QColor(255, 255, 255))
            ++y;
        return 63 - y;
    };
    // Of 63 rows: all, a half and a quarter, rounded to nearest, to even in the middle.
    QCOMPARE(level(60), 63);
    QCOMPARE(level(40), 32);
    QCOMPARE(level(20), 16);
    QCOMPARE(level(80), 16);
    for (const int x : {0, 18, 22, 38, 42, 58, 62, 78, 82, 127})
        QCOMPARE(level(x), 0);
}

void TestHistogram::widePictureHasTwoColumnsABin()
{
    // 256 bins of 256 levels, two columns each: bin 100 stands at column 200.
    const QImage picture = render(flat(4, 25600, 25600, 25600), 2, 2, 640, 64);
    QCOMPARE(picture.pixelColor(200, 0), QColor(255, 255, 255));
    QCOMPARE(picture.pixelColor(199, 0), QColor(38, 38, 38));
    QCOMPARE(picture.pixelColor(202, 0), QColor(38, 38, 38));
    // The last bin stands at 510; the outline runs level from there to the right edge.
    QCOMPARE(picture.pixelColor(639, 63), QColor(255, 255, 255));
}

void TestHistogram::channelsShareOneScale()
{
    // Green has 4 pixels in one bin, blue 2 and 2, red 1 in each of four bins.
    Samples samples;
    for (int i = 0; i < 4; ++i)
        samples << quint16(i < 2 ? 20 * 512 : 30 * 512) << quint16(60 * 512) << quint16((90 + 5 * i) * 512);
    const QImage picture = render(samples, 2, 2, 128, 65);
    QCOMPARE(picture.pixelColor(60, 0).green(), 255);
    QCOMPARE(picture.pixelColor(20, 32).blue(), 255);
    QCOMPARE(picture.pixelColor(20, 31).blue(), 38);
    QCOMPARE(picture.pixelColor(90, 48).red(), 255);
    QCOMPARE(picture.pixelColor(90, 47).red(), 38);
}

void TestHistogram::channelsMixToWhiteWhereTheyAgree()
{
    Samples samples;
    for (int i = 0; i < 400; ++i) {
        const auto level = quint16((20 + i % 40) * 512);
        samples << level << level << level;
    }
    const QImage picture = render(samples, 20, 20, 128, 64);
    // One gray mountain of equal bins: 255 along its top, 150 within, 38 outside.
    QCOMPARE(picture.pixelColor(40, 0), QColor(255, 255, 255));
    QCOMPARE(picture.pixelColor(40, 30), QColor(150, 150, 150));
    QCOMPARE(picture.pixelColor(100, 30), QColor(38, 38, 38));
}

void TestHistogram::overexposedFrameCountsInTheTopBin()
{
    ImgAdjData adj = TestFrames::identityAdjustment(ImgAdjUtil::CfaMono);
    adj.expAssist = 1;
    VeskFrame frame(&adj, nullptr);
    QVERIFY(frame.set(QByteArray(64, '\xff'), 8, 8, 64, 0, 0));
    QCOMPARE(frame.marked().first(3), Samples({0, 0, 65535}));
    const QImage picture = render(frame.clean(), 8, 8, 128, 64);
    QCOMPARE(picture.pixelColor(127, 0), QColor(255, 255, 255));
    for (int x = 0; x < 126; ++x)
        QCOMPARE(picture.pixelColor(x, 62), QColor(38, 38, 38));
}

void TestHistogram::nothingToCountOrNowhereToDrawGivesNoPicture()
{
    const Samples samples = flat(4, 1, 2, 3);
    QVERIFY(render({}, 0, 0, 128, 64).isNull());
    QVERIFY(render(samples, 0, 2, 128, 64).isNull());
    QVERIFY(render(samples, 2, 3, 128, 64).isNull());
    QVERIFY(render(samples, 2, 2, 0, 64).isNull());
    QVERIFY(render(samples, 2, 2, 128, 0).isNull());
    QVERIFY(!render(samples, 2, 2, 128, 64).isNull());
}

void TestHistogram::dataIsSharedAndToldInOrder()
{
    Histogram histogram;
    QStringList told;
    connect(&histogram, &Histogram::imageChanged, this, [&] {
        QCOMPARE(histogram.width(), 2);
        QCOMPARE(histogram.height(), 1);
        told << "image";
    });
    connect(&histogram, &Histogram::widthChanged, this, [&] { told << "width"; });
    connect(&histogram, &Histogram::heightChanged, this, [&] { told << "height"; });
    const Samples samples = flat(2, 1, 2, 3);
    histogram.setImage(samples, 2, 1);
    QVERIFY(histogram.image().isSharedWith(samples));
    histogram.setImage(samples, 2, 1);
    QCOMPARE(told, QStringList({"image", "width", "height", "image", "width", "height"}));
}

void TestHistogram::itemDrawsThePictureAtItsOwnSize()
{
    QQuickWindow window;
    window.setColor(Qt::magenta);
    window.resize(200, 100);
    HistogramControl control(window.contentItem());
    control.setPosition(QPointF(20, 10));
    control.setSize(QSizeF(128, 64));
    Histogram histogram;
    control.setHistogram(&histogram);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCOMPARE(window.grabWindow().pixelColor(84, 42), QColor(Qt::magenta));

    histogram.setImage(flat(100, 5120, 10240, 40960), 10, 10);
    const QImage grabbed = window.grabWindow().convertToFormat(QImage::Format_BGR888);
    QCOMPARE(grabbed.copy(20, 10, 128, 64), render(histogram.image(), 10, 10, 128, 64));
    QCOMPARE(grabbed.pixelColor(19, 42), QColor(Qt::magenta));
    QCOMPARE(grabbed.pixelColor(148, 42), QColor(Qt::magenta));

    // The last frame stays until the next one comes.
    histogram.setImage(flat(100, 40960, 5120, 20480), 10, 10);
    const QImage next = window.grabWindow().convertToFormat(QImage::Format_BGR888);
    QCOMPARE(next.copy(20, 10, 128, 64), render(histogram.image(), 10, 10, 128, 64));
}

void TestHistogram::itemWithoutSizeDrawsNothing()
{
    QQuickWindow window;
    window.setColor(Qt::magenta);
    window.resize(100, 100);
    HistogramControl control(window.contentItem());
    Histogram histogram;
    control.setHistogram(&histogram);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    histogram.setImage(flat(100, 5120, 10240, 40960), 10, 10);
    const QImage grabbed = window.grabWindow();
    for (int y = 0; y < 100; y += 9)
        QCOMPARE(grabbed.pixelColor(0, y), QColor(Qt::magenta));
    QCOMPARE(control.implicitWidth(), 0.0);
    QCOMPARE(control.implicitHeight(), 0.0);
}

void TestHistogram::itemFollowsItsHistogramOnly()
{
    QQuickWindow window;
    window.resize(128, 64);
    HistogramControl control(window.contentItem());
    control.setSize(QSizeF(128, 64));
    Histogram first;
    Histogram second;
    QSignalSpy changed(&control, &HistogramControl::histogramChanged);
    control.setHistogram(&first);
    control.setHistogram(&second);
    QCOMPARE(changed.count(), 2);
    QCOMPARE(control.histogram(), &second);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    second.setImage(flat(4, 5120, 5120, 5120), 2, 2);
    first.setImage(flat(4, 40960, 40960, 40960), 2, 2);
    const QImage grabbed = window.grabWindow();
    QCOMPARE(grabbed.pixelColor(10, 0), QColor(255, 255, 255));
    QCOMPARE(grabbed.pixelColor(80, 0), QColor(38, 38, 38));
}

void TestHistogram::itemOutlivesItsHistogram()
{
    HistogramControl control;
    {
        Histogram histogram;
        control.setHistogram(&histogram);
    }
    QCOMPARE(control.histogram(), nullptr);
    Histogram next;
    control.setHistogram(&next);
    QCOMPARE(control.histogram(), &next);
    control.setHistogram(nullptr);
    QCOMPARE(control.histogram(), nullptr);
}

VESK_TEST_MAIN(TestHistogram)
#include "tst_histogram.moc"
