#include "image/img_adj_data.h"
#include "image/img_adj_util.h"
#include "take/raw_frame.h"
#include "take/vesk_frame.h"
#include "tests/image/test_frames.h"
#include "tests/support/vesk_test_main.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <opencv2/core.hpp>

using Samples = QList<quint16>;

/** Memory for the library's images that has run out. */
class NoMemory : public cv::MatAllocator
{
public:
    cv::UMatData *allocate(int, const int *, int, void *, size_t *, cv::AccessFlag,
                           cv::UMatUsageFlags) const override
    {
        CV_Error(cv::Error::StsNoMem, "no memory is left");
    }
    bool allocate(cv::UMatData *, cv::AccessFlag, cv::UMatUsageFlags) const override { return false; }
    void deallocate(cv::UMatData *) const override {}
};

/** Decoding of whole, short and impossible records, and the read-out. */
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
    void pixelsThatAreMissingAreBlack_data();
    void pixelsThatAreMissingAreBlack();
    void pixelsBeyondTheImageStayInTheMosaic();
    void impossibleSizesAreRefused_data();
    void impossibleSizesAreRefused();
    void colourFrameTooLargeIsRefused();
    void refusedFrameLeavesThePictureAsItWas();
    void engineExceptionLeavesThePictureAsItWas();
    void steadyFramesReuseTheirBuffers();
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

void TestVeskFrame::pixelsThatAreMissingAreBlack_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<quint32>("imgSize");
    QTest::addColumn<quint32>("metaSize");
    QTest::addColumn<int>("rotate");
    QTest::addColumn<Samples>("green");
    for (const int rotate : {0, 45}) {
        const QByteArray turn = rotate == 0 ? "at once: " : "step by step: ";
        QTest::addRow("%sshort record", turn.constData())
            << sixCodes().first(4) << 6U << 0U << rotate << Samples{128, 256, 385, 513, 0, 0};
        QTest::addRow("%sno pixels at all", turn.constData())
            << QByteArray(8, '\x05') << 6U << 8U << rotate << Samples{0, 0, 0, 0, 0, 0};
        QTest::addRow("%sempty record", turn.constData())
            << QByteArray() << 6U << 0U << rotate << Samples{0, 0, 0, 0, 0, 0};
    }
}

void TestVeskFrame::pixelsThatAreMissingAreBlack()
{
    QFETCH(QByteArray, data);
    QFETCH(quint32, imgSize);
    QFETCH(quint32, metaSize);
    QFETCH(int, rotate);
    QFETCH(Samples, green);
    ImgAdjData adj = mono();
    VeskFrame frame(&adj, nullptr);
    // Frames before leave their pixels in the buffers.
    QVERIFY(frame.set(QByteArray(6, '\xff'), 3, 2, 6, 0, 0));
    QVERIFY(frame.set(QByteArray(6, '\xff'), 3, 2, 6, 0, 0));
    adj.rotate = rotate;
    QVERIFY(frame.set(data, 3, 2, imgSize, metaSize, 0));
    QCOMPARE(frame.raw(), green);
    for (int i = 0; i < 6; ++i)
        QCOMPARE(frame.clean()[3 * i + 1], green[i]);
}

void TestVeskFrame::pixelsBeyondTheImageStayInTheMosaic()
{
    for (const int rotate : {0, 45}) {
        ImgAdjData adj = mono();
        adj.rotate = rotate;
        VeskFrame frame(&adj, nullptr);
        QVERIFY(frame.set(sixCodes(), 2, 2, 8, 0, 0));
        QCOMPARE(frame.raw(), Samples({128, 256, 385, 513, 641, 769, 0, 0}));
        QCOMPARE(frame.clean().size(), 12);
        QCOMPARE(frame.clean().last(), quint16(513));
        // More bytes than the header says are not pixels.
        QVERIFY(frame.set(sixCodes(), 2, 2, 4, 0, 0));
        QCOMPARE(frame.raw(), Samples({128, 256, 385, 513}));
        // A header that says less than width times height.
        QVERIFY(frame.set(sixCodes().first(3), 2, 2, 3, 0, 0));
        QCOMPARE(frame.raw(), Samples({128, 256, 385, 0}));
    }
}

void TestVeskFrame::impossibleSizesAreRefused_data()
{
    QTest::addColumn<quint16>("width");
    QTest::addColumn<quint16>("height");
    QTest::addColumn<quint32>("imgSize");
    QTest::addColumn<quint32>("metaSize");
    QTest::newRow("no width") << quint16(0) << quint16(2) << 6U << 0U;
    QTest::newRow("no height") << quint16(3) << quint16(0) << 6U << 0U;
    QTest::newRow("nothing at all") << quint16(0) << quint16(0) << 0U << 0U;
    QTest::newRow("more pixels than any sensor") << quint16(4097) << quint16(4096) << 6U << 0U;
    QTest::newRow("largest numbers") << quint16(65535) << quint16(65535) << 4294967295U << 0U;
    QTest::newRow("more bytes than any frame") << quint16(3) << quint16(2) << 16777217U << 0U;
    QTest::newRow("metadata beyond the record") << quint16(3) << quint16(2) << 6U << 7U;
    QTest::newRow("metadata far beyond") << quint16(3) << quint16(2) << 6U << 4294967295U;
}

void TestVeskFrame::impossibleSizesAreRefused()
{
    QFETCH(quint16, width);
    QFETCH(quint16, height);
    QFETCH(quint32, imgSize);
    QFETCH(quint32, metaSize);
    const ImgAdjData adj = mono();
    VeskFrame frame(&adj, nullptr);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^Frame refused: impossible size"));
    QVERIFY(!frame.set(sixCodes(), width, height, imgSize, metaSize, 0));
    QVERIFY(frame.raw().isEmpty());
    QVERIFY(frame.image(false).isNull());
}

void TestVeskFrame::colourFrameTooLargeIsRefused()
{
    ImgAdjData adj = mono();
    adj.cfa = ImgAdjUtil::CfaRGGB;
    VeskFrame frame(&adj, nullptr);
    const QByteArray codes(641 * 480, '\x10');
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^Frame refused: too large for a colour frame"));
    QVERIFY(!frame.set(codes, 641, 480, 641 * 480, 0, 0));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^Frame refused: too large for a colour frame"));
    QVERIFY(!frame.set(codes, 480, 641, 641 * 480, 0, 0));
    adj.cfa = ImgAdjUtil::CfaMono;
    QVERIFY(frame.set(codes, 641, 480, 641 * 480, 0, 0));
}

void TestVeskFrame::refusedFrameLeavesThePictureAsItWas()
{
    ImgAdjData adj = mono();
    VeskFrame frame(&adj, nullptr);
    QVERIFY(frame.set(QByteArray("\x07\0\0\0\x09\0\0\0", 8) + sixCodes(), 3, 2, 6, 8, 5));
    const QImage picture = frame.image(false);
    const Samples raw = frame.raw();
    QSignalSpy rgb(&frame, &VeskFrame::rgbChanged);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^Frame refused"));
    QVERIFY(!frame.set(QByteArray(3, '\x01'), 4097, 4097, 9, 1, 6));
    adj.cfa = ImgAdjUtil::CfaGBRG;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^Frame refused"));
    QVERIFY(!frame.set(QByteArray(700, '\x01'), 700, 1, 700, 0, 6));
    QCOMPARE(frame.image(false), picture);
    QCOMPARE(frame.raw(), raw);
    QCOMPARE(frame.width(), 3);
    QCOMPARE(frame.height(), 2);
    QCOMPARE(frame.imgSize(), 6);
    QCOMPARE(frame.metaSize(), 8U);
    QCOMPARE(frame.seconds(), 7U);
    QCOMPARE(frame.nanoseconds(), 9U);
    QCOMPARE(frame.yearOffset(), 5ULL);
    QCOMPARE(rgb.count(), 0);
}

void TestVeskFrame::engineExceptionLeavesThePictureAsItWas()
{
    ImgAdjData adj = mono();
    VeskFrame frame(&adj, nullptr);
    QVERIFY(frame.set(sixCodes(), 3, 2, 6, 0, 0));
    const QImage picture = frame.image(false);
    // Turned by no right angle, the frame is adjusted step by step, in images that the library allocates.
    adj.rotate = 45;
    NoMemory noMemory;
    cv::Mat::setDefaultAllocator(&noMemory);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^Frame refused: .*no memory is left"));
    const bool taken = frame.set(QByteArray(6, '\x01'), 2, 3, 6, 0, 0);
    cv::Mat::setDefaultAllocator(cv::Mat::getStdAllocator());
    QVERIFY(!taken);
    QCOMPARE(frame.image(false), picture);
    QCOMPARE(frame.width(), 3);
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

VESK_TEST_MAIN(TestVeskFrame)
#include "tst_vesk_frame.moc"
