#include "image/img_adj_data.h"
#include "image/img_adj_util.h"
#include "tests/image/test_frames.h"

#include <QTest>

#include <opencv2/core.hpp>

using Lut = QList<quint16>;

/** What adjustImage does to the pixels of small images, worked out by hand. */
class TestAdjustImage : public QObject
{
    Q_OBJECT

private slots:
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

    ImgAdjUtil m_util;
};

void TestAdjustImage::tablesActOnTheirChannels()
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

void TestAdjustImage::monochromeUsesTheUnsuffixedTable()
{
    ImgAdjData adj = TestFrames::identityAdjustment(ImgAdjUtil::CfaMono);
    adj.lutG[500] = 11;
    adj.lutR[500] = 22;
    adj.lutB[500] = 33;
    const Result result = adjust(adj, {500}, 1, 1);
    QCOMPARE(result.clean, Lut({11, 11, 11}));
    QCOMPARE(result.marked, Lut({11, 11, 11}));
}

void TestAdjustImage::monochromeIsNotWhiteBalanced()
{
    ImgAdjData adj = TestFrames::identityAdjustment(ImgAdjUtil::CfaMono);
    adj.wbR = 3.0;
    adj.wbG = 0.5;
    adj.wbB = 7.0;
    adj.wbCalG = 2.5;
    const Result result = adjust(adj, {100, 200, 300, 400}, 2, 2);
    QCOMPARE(result.clean, Lut({100, 100, 100, 200, 200, 200, 300, 300, 300, 400, 400, 400}));
}

void TestAdjustImage::whiteBalanceMultipliesEachSite_data()
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

void TestAdjustImage::whiteBalanceMultipliesEachSite()
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

void TestAdjustImage::rotationAndFlipsMovePixels_data()
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

void TestAdjustImage::rotationAndFlipsMovePixels()
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

void TestAdjustImage::cropKeepsAPart_data()
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

void TestAdjustImage::cropKeepsAPart()
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

void TestAdjustImage::blackTurnsBlueUnderExposureAssist()
{
    ImgAdjData adj = TestFrames::identityAdjustment(ImgAdjUtil::CfaMono);
    adj.expAssist = 1;
    QCOMPARE(adjust(adj, Lut(20, quint16(0)), 5, 4).marked, repeated({65535, 0, 0}, 20));
}

void TestAdjustImage::saturatedTurnsRedUnderExposureAssist()
{
    ImgAdjData adj = TestFrames::identityAdjustment(ImgAdjUtil::CfaMono);
    adj.expAssist = 1;
    QCOMPARE(adjust(adj, Lut(20, quint16(65535)), 5, 4).marked, repeated({0, 0, 65535}, 20));
}

void TestAdjustImage::midtonesStayUnderExposureAssist()
{
    ImgAdjData adj = TestFrames::identityAdjustment(ImgAdjUtil::CfaMono);
    adj.expAssist = 1;
    const Lut raw{1, 30000, 65534};
    QCOMPARE(adjust(adj, raw, 3, 1).marked, Lut({1, 1, 1, 30000, 30000, 30000, 65534, 65534, 65534}));
}

void TestAdjustImage::redWeighsAsBlueInOverlays()
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

void TestAdjustImage::focusPeakingWinsOverExposureAssist()
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

void TestAdjustImage::higherFocusPeakingMarksMore()
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

void TestAdjustImage::overlaysLeaveTheCleanImageAlone()
{
    ImgAdjData adj = TestFrames::identityAdjustment(ImgAdjUtil::CfaMono);
    const Result plain = adjust(adj, stripes(), 64, 64);
    QCOMPARE(plain.marked, plain.clean);
    adj.focusPeak = 3;
    const Result peaks = adjust(adj, stripes(), 64, 64);
    QCOMPARE(peaks.clean, plain.clean);
    QVERIFY(peaks.marked != peaks.clean);
}

void TestAdjustImage::colourFramesAreBoundByTheMasks_data()
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

void TestAdjustImage::colourFramesAreBoundByTheMasks()
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

QTEST_MAIN(TestAdjustImage)
#include "tst_adjust_image.moc"
