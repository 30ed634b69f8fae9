#include "image/img_adj_data.h"
#include "image/img_adj_util.h"
#include "take/raw_frame.h"
#include "take/vesk_frame.h"
#include "tests/image/test_frames.h"
#include "tests/support/vesk_test_main.h"

#include <QSignalSpy>
#include <QTest>

using Samples = QList<quint16>;

/** Decoding of whole records, the pictures and the read-out. */
class TestVeskFrame : public QObject
{
    Q_OBJECT

private slots:
    void recordFillsAllStages();
    void rawFrameIsDecodedAsItsFields();
    void rotationSwapsTheGeometryButNotTheMosaic();
    void timeIsMasked_data();
    void timeIsMasked();
    void metadataOfNoBytesReadsTheTimeFromThePixels();
    void readOutFollowsThePoint();
    void readOutFollowsTheNextFrame();
    void pointBeyondTheEndKeepsTheColourAndTellsThePoint();
    void negativePointKeepsTheColour();
    void presentPointTellsNothing();
    void statisticsStayZero();
    void cleanPictureHasNoOverlay();
    void grayPictureIsOfTheMarkedImage();
    void picturesOfOddWidthHaveNoSkew();
    void frameBeforeTheFirstHasNoPicture();
    void steadyFramesReuseTheirBuffers();
    void frameDecodedInPlaceIsTheSameAndTakesNoOtherRoom();
};

static ImgAdjData mono()
{
    return TestFrames::identityAdjustment(ImgAdjUtil::CfaMono);
}

/** A frame of codes 1 to 6, that is samples 128, 256, 385, 513, 641, 769. */
static QByteArray sixCodes()
{
    return QByteArray("\x01\x02\x03\x04\x05\x06", 6);
}

void TestVeskFrame::recordFillsAllStages()
{
    const ImgAdjData adj = mono();
    VeskFrame frame(&adj, nullptr);
    QVERIFY(frame.set(TestFrames::record(sixCodes(), 8), 3, 2, 6, 8, 1234567890123));
    QCOMPARE(frame.raw(), Samples({128, 256, 385, 513, 641, 769}));
    const Samples image{128, 128, 128, 256, 256, 256, 385, 385, 385,
                        513, 513, 513, 641, 641, 641, 769, 769, 769};
    QCOMPARE(frame.clean(), image);
    QCOMPARE(frame.marked(), image);
    QCOMPARE(frame.width(), 3);
    QCOMPARE(frame.height(), 2);
    QCOMPARE(frame.imgSize(), 6);
    QCOMPARE(frame.metaSize(), 8U);
    QCOMPARE(frame.yearOffset(), 1234567890123ULL);
    const QImage picture = frame.image(false);
    QCOMPARE(picture.format(), QImage::Format_BGR888);
    QCOMPARE(picture.size(), QSize(3, 2));
    // 769 / 257 = 2.99
    QCOMPARE(picture.pixelColor(2, 1), QColor(3, 3, 3));
}

void TestVeskFrame::rawFrameIsDecodedAsItsFields()
{
    const ImgAdjData adj = mono();
    VeskFrame frame(&adj, nullptr);
    RawFrame raw;
    raw.init(QByteArray("\x07\0\0\0\x09\0\0\0", 8) + sixCodes(), 2, 3, 6, 8, 5);
    QVERIFY(frame.set(&raw));
    QCOMPARE(frame.width(), 2);
    QCOMPARE(frame.height(), 3);
    QCOMPARE(frame.seconds(), 7U);
    QCOMPARE(frame.nanoseconds(), 9U);
    QCOMPARE(frame.yearOffset(), 5ULL);
}

void TestVeskFrame::rotationSwapsTheGeometryButNotTheMosaic()
{
    ImgAdjData adj = mono();
    adj.rotate = 90;
    VeskFrame frame(&adj, nullptr);
    QVERIFY(frame.set(sixCodes(), 3, 2, 6, 0, 0));
    QCOMPARE(frame.raw(), Samples({128, 256, 385, 513, 641, 769}));
    QCOMPARE(frame.width(), 2);
    QCOMPARE(frame.height(), 3);
    QCOMPARE(frame.image(false).size(), QSize(2, 3));
    QCOMPARE(frame.grayImage().size(), QSize(2, 3));
    // Turned clockwise the rows are 4 1 / 5 2 / 6 3.
    frame.setRgbPoint(QPoint(1, 2));
    QCOMPARE(frame.r(), ushort(385));
}

void TestVeskFrame::timeIsMasked_data()
{
    QTest::addColumn<QByteArray>("words");
    QTest::addColumn<quint32>("seconds");
    QTest::addColumn<quint32>("nanoseconds");
    QTest::newRow("all bits") << QByteArray(8, '\xff') << 0x1FFFFFFU << 0x3FFFFFFFU;
    QTest::newRow("upper bits alone") << QByteArray("\0\0\0\xfe\0\0\0\xc0", 8) << 0U << 0U;
    QTest::newRow("little-endian") << QByteArray("\x04\x03\x02\x01\x08\x07\x06\x05", 8) << 0x1020304U
                                   << 0x5060708U;
    QTest::newRow("seven bytes") << QByteArray("\x04\x03\x02\x01\x08\x07\x06", 7) << 0x1020304U << 0x60708U;
    QTest::newRow("three bytes") << QByteArray("\x04\x03\x02", 3) << 0x20304U << 0U;
    QTest::newRow("none") << QByteArray() << 0U << 0U;
}

void TestVeskFrame::timeIsMasked()
{
    QFETCH(QByteArray, words);
    QFETCH(quint32, seconds);
    QFETCH(quint32, nanoseconds);
    const ImgAdjData adj = mono();
    VeskFrame frame(&adj, nullptr);
    QVERIFY(frame.set(words, 1, 1, 1, quint32(words.size()), 0));
    QCOMPARE(frame.seconds(), seconds);
    QCOMPARE(frame.nanoseconds(), nanoseconds);
}

void TestVeskFrame::metadataOfNoBytesReadsTheTimeFromThePixels()
{
    const ImgAdjData adj = mono();
    VeskFrame frame(&adj, nullptr);
    QVERIFY(frame.set(QByteArray("\x01\0\0\0\x02\0\0\0", 8), 4, 2, 8, 0, 0));
    QCOMPARE(frame.seconds(), 1U);
    QCOMPARE(frame.nanoseconds(), 2U);
    QCOMPARE(frame.raw(), Samples({128, 0, 0, 0, 256, 0, 0, 0}));
}

void TestVeskFrame::readOutFollowsThePoint()
{
    ImgAdjData adj = mono();
    adj.cfa = ImgAdjUtil::CfaRGGB;
    std::fill(adj.lutR.begin(), adj.lutR.end(), quint16(30));
    std::fill(adj.lutG.begin(), adj.lutG.end(), quint16(20));
    std::fill(adj.lutB.begin(), adj.lutB.end(), quint16(10));
    VeskFrame frame(&adj, nullptr);
    QVERIFY(frame.set(QByteArray(16, '\x55'), 4, 4, 16, 0, 0));
    QSignalSpy rgb(&frame, &VeskFrame::rgbChanged);
    QSignalSpy point(&frame, &VeskFrame::rgbPointChanged);
    frame.setRgbPoint(QPoint(3, 3));
    QCOMPARE(frame.r(), ushort(30));
    QCOMPARE(frame.g(), ushort(20));
    QCOMPARE(frame.b(), ushort(10));
    QCOMPARE(rgb.count(), 1);
    QCOMPARE(point.count(), 1);
}

void TestVeskFrame::readOutFollowsTheNextFrame()
{
    const ImgAdjData adj = mono();
    VeskFrame frame(&adj, nullptr);
    frame.setRgbPoint(QPoint(1, 1));
    QSignalSpy rgb(&frame, &VeskFrame::rgbChanged);
    QVERIFY(frame.set(sixCodes(), 3, 2, 6, 0, 0));
    QCOMPARE(frame.r(), ushort(641));
    QCOMPARE(rgb.count(), 1);
    // The same colour once more is told as well: the frame is another.
    QVERIFY(frame.set(sixCodes(), 3, 2, 6, 0, 0));
    QCOMPARE(rgb.count(), 2);
}

void TestVeskFrame::pointBeyondTheEndKeepsTheColourAndTellsThePoint()
{
    const ImgAdjData adj = mono();
    VeskFrame frame(&adj, nullptr);
    QVERIFY(frame.set(sixCodes(), 3, 2, 6, 0, 0));
    frame.setRgbPoint(QPoint(2, 1));
    QSignalSpy rgb(&frame, &VeskFrame::rgbChanged);
    QSignalSpy point(&frame, &VeskFrame::rgbPointChanged);
    frame.setRgbPoint(QPoint(0, 2));
    QCOMPARE(frame.r(), ushort(769));
    QCOMPARE(frame.g(), ushort(769));
    QCOMPARE(frame.b(), ushort(769));
    QCOMPARE(rgb.count(), 0);
    QCOMPARE(point.count(), 1);
    QCOMPARE(frame.rgbPoint(), QPoint(0, 2));
}

void TestVeskFrame::negativePointKeepsTheColour()
{
    const ImgAdjData adj = mono();
    VeskFrame frame(&adj, nullptr);
    QVERIFY(frame.set(sixCodes(), 3, 2, 6, 0, 0));
    QSignalSpy rgb(&frame, &VeskFrame::rgbChanged);
    QSignalSpy point(&frame, &VeskFrame::rgbPointChanged);
    frame.setRgbPoint(QPoint(-1, 0));
    frame.setRgbPoint(QPoint(INT_MIN, INT_MIN));
    frame.setRgbPoint(QPoint(INT_MAX, INT_MAX));
    QCOMPARE(frame.r(), ushort(128));
    QCOMPARE(rgb.count(), 0);
    QCOMPARE(point.count(), 3);
}

void TestVeskFrame::presentPointTellsNothing()
{
    const ImgAdjData adj = mono();
    VeskFrame frame(&adj, nullptr);
    QVERIFY(frame.set(sixCodes(), 3, 2, 6, 0, 0));
    frame.setRgbPoint(QPoint(1, 1));
    QSignalSpy rgb(&frame, &VeskFrame::rgbChanged);
    QSignalSpy point(&frame, &VeskFrame::rgbPointChanged);
    frame.setRgbPoint(QPoint(1, 1));
    QCOMPARE(rgb.count(), 0);
    QCOMPARE(point.count(), 0);
}

void TestVeskFrame::statisticsStayZero()
{
    const ImgAdjData adj = mono();
    VeskFrame frame(&adj, nullptr);
    QSignalSpy min(&frame, &VeskFrame::minChanged);
    QSignalSpy avg(&frame, &VeskFrame::avgChanged);
    for (int i = 0; i < 3; ++i)
        QVERIFY(frame.set(sixCodes(), 3, 2, 6, 0, 0));
    for (const char *name : {"min", "max", "mode", "avg", "stdDev"})
        QCOMPARE(frame.property(name).toDouble(), 0.0);
    QCOMPARE(min.count() + avg.count(), 0);
}

void TestVeskFrame::cleanPictureHasNoOverlay()
{
    ImgAdjData adj = mono();
    adj.expAssist = 1;
    VeskFrame frame(&adj, nullptr);
    QVERIFY(frame.set(QByteArray("\0\xff\x80", 3), 3, 1, 3, 0, 0));
    const QImage marked = frame.image(false);
    QCOMPARE(marked.pixelColor(0, 0), QColor(Qt::blue));
    QCOMPARE(marked.pixelColor(1, 0), QColor(Qt::red));
    // Code 128 is 16544, and 16544 / 257 = 64.4.
    QCOMPARE(marked.pixelColor(2, 0), QColor(64, 64, 64));
    const QImage clean = frame.image(true);
    QCOMPARE(clean.pixelColor(0, 0), QColor(Qt::black));
    QCOMPARE(clean.pixelColor(1, 0), QColor(Qt::white));
    QCOMPARE(frame.raw(), Samples({0, 65535, 16544}));
}

void TestVeskFrame::grayPictureIsOfTheMarkedImage()
{
    ImgAdjData adj = mono();
    adj.expAssist = 1;
    VeskFrame frame(&adj, nullptr);
    QVERIFY(frame.set(QByteArray("\0\xff\x01", 3), 3, 1, 3, 0, 0));
    const QImage gray = frame.grayImage();
    QCOMPARE(gray.format(), QImage::Format_Grayscale16);
    const auto *samples = reinterpret_cast<const quint16 *>(gray.constScanLine(0));
    // The blue mark weighs 0.299 and the red one 0.114, as in the overlays; the library's weights have 15
    // bits: 65535 x 9798 / 32768 and 65535 x 3735 / 32768.
    QCOMPARE(int(samples[0]), 19596);
    QCOMPARE(int(samples[1]), 7470);
    QCOMPARE(int(samples[2]), 128);
}

void TestVeskFrame::picturesOfOddWidthHaveNoSkew()
{
    ImgAdjData adj = mono();
    for (const int rotate : {0, 180}) {
        adj.rotate = rotate;
        VeskFrame frame(&adj, nullptr);
        QByteArray codes(7 * 5, '\0');
        for (int y = 0; y < 5; ++y)
            codes[7 * y + 3] = '\xff';
        QVERIFY(frame.set(codes, 7, 5, 35, 0, 0));
        for (int y = 0; y < 5; ++y) {
            for (int x = 0; x < 7; ++x) {
                QCOMPARE(frame.image(false).pixelColor(x, y), QColor(x == 3 ? Qt::white : Qt::black));
                QCOMPARE(frame.image(true).pixelColor(x, y), QColor(x == 3 ? Qt::white : Qt::black));
                QCOMPARE(frame.grayImage().pixelColor(x, y), QColor(x == 3 ? Qt::white : Qt::black));
            }
        }
    }
}

void TestVeskFrame::frameBeforeTheFirstHasNoPicture()
{
    const ImgAdjData adj = mono();
    const VeskFrame frame(&adj, nullptr);
    QVERIFY(frame.image(false).isNull());
    QVERIFY(frame.image(true).isNull());
    QVERIFY(frame.grayImage().isNull());
    QCOMPARE(frame.r(), ushort(0));
}

void TestVeskFrame::steadyFramesReuseTheirBuffers()
{
    const ImgAdjData adj = TestFrames::strongAdjustment(ImgAdjUtil::CfaRGGB);
    VeskFrame frame(&adj, nullptr);
    // A reader each holds the present picture and image until it gets the next ones, as the screen does.
    QImage shownPicture;
    Samples shownImage;
    QSet<const void *> buffers;
    for (quint32 i = 0; i < 10; ++i) {
        QVERIFY(frame.set(TestFrames::noise(64, 48, i), 64, 48, 64 * 48, 0, 0));
        shownPicture = frame.image(false);
        shownImage = frame.clean();
        buffers << shownPicture.constBits() << shownImage.constData() << frame.raw().constData();
    }
    QCOMPARE(buffers.size(), 6);
}

void TestVeskFrame::frameDecodedInPlaceIsTheSameAndTakesNoOtherRoom()
{
    ImgAdjData adj = mono();
    VeskFrame usual(&adj, nullptr);
    VeskFrame inPlace(&adj, nullptr);
    inPlace.decodeInPlace();
    const quint16 *room = nullptr;
    const Samples held = [&] {
        for (const char first : {'\x10', '\x20', '\x30'}) {
            const QByteArray record = TestFrames::record(first + sixCodes().sliced(1), 8);
            if (!usual.set(record, 3, 2, 6, 8, 0) || !inPlace.set(record, 3, 2, 6, 8, 0) ||
                inPlace.raw() != usual.raw() || inPlace.clean() != usual.clean() ||
                inPlace.marked() != usual.marked() || (room && inPlace.clean().constData() != room))
                return Samples();
            room = inPlace.clean().constData();
        }
        return inPlace.clean();
    }();
    QCOMPARE(held.size(), 18);
    // Somebody holds the samples: they stay theirs, also for another look and size.
    adj.expAssist = 1;
    const Samples before = held;
    for (VeskFrame *frame : {&usual, &inPlace})
        QVERIFY(frame->set(TestFrames::record(sixCodes(), 8), 2, 3, 6, 8, 0));
    QCOMPARE(held, before);
    QCOMPARE(inPlace.clean(), usual.clean());
    QCOMPARE(inPlace.marked(), usual.marked());
    QCOMPARE(inPlace.image(false), usual.image(false));
}

VESK_TEST_MAIN(TestVeskFrame)
#include "tst_vesk_frame.moc"
