#include "image/img_adj_data.h"
#include "image/img_adj_util.h"
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

/** Records that are short, impossible or too much for the engine. */
class TestVeskFrameBadInput : public QObject
{
    Q_OBJECT

private slots:
    void pixelsThatAreMissingAreBlack_data();
    void pixelsThatAreMissingAreBlack();
    void pixelsBeyondTheImageStayInTheMosaic();
    void impossibleSizesAreRefused_data();
    void impossibleSizesAreRefused();
    void colourFrameTooLargeIsRefused();
    void refusedFrameLeavesThePictureAsItWas();
    void engineExceptionLeavesThePictureAsItWas();
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

void TestVeskFrameBadInput::pixelsThatAreMissingAreBlack_data()
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

void TestVeskFrameBadInput::pixelsThatAreMissingAreBlack()
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

void TestVeskFrameBadInput::pixelsBeyondTheImageStayInTheMosaic()
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

void TestVeskFrameBadInput::impossibleSizesAreRefused_data()
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

void TestVeskFrameBadInput::impossibleSizesAreRefused()
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

void TestVeskFrameBadInput::colourFrameTooLargeIsRefused()
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

void TestVeskFrameBadInput::refusedFrameLeavesThePictureAsItWas()
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

void TestVeskFrameBadInput::engineExceptionLeavesThePictureAsItWas()
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

VESK_TEST_MAIN(TestVeskFrameBadInput)
#include "tst_vesk_frame_bad_input.moc"
