#include "take_frames_case.h"

#include <algorithm>

using namespace q4sim;
using namespace std::chrono_literals;

namespace
{

using Time = std::pair<quint32, quint32>;

// 9-bit sample of a code, by the three segments of slope 1, 2 and 4.
int expanded(quint8 code)
{
    return code < 128 ? code : code < 192 ? 2 * code - 127 : 4 * code - 509;
}

} // namespace

// Frames of takes: which they are, when they were, and what is in them.
class TestSimTakeFrames : public QObject, private TakeFramesCase
{
    Q_OBJECT

public:
    TestSimTakeFrames() : TakeFramesCase(QStringLiteral("127.0.1.81")) {}

private slots:
    void init() { start(); }
    void oneFrameFormGivesThatFrame_data();
    void oneFrameFormGivesThatFrame();
    void oldFamilyHeadersDescribeTheFrame();
    void pixelsAreThoseOfTheTakesScene();
    void recordedFramesCountFromTheTrigger();
    void frameTimesFollowTheRate_data();
    void frameTimesFollowTheRate();
    void lastFrameEndsNowWithoutATriggerTime();
    void framesOfTwoYearsCountFromTheFirst();
    void secondsBeginAnewWhenTheirBitsEnd();
    void numberBeyond31BitsShowsItsLowBits();
    void stillSceneHasNothingButItsNumber();
    void plainSceneIsOneCode();
    void changedPixelIsThereInItsFramesAlone();
    void changedPixelStaysWithinItsEightBits();
    void correctionTakesNoiseAway();
    void badTransfersAreRefused_data();
    void badTransfersAreRefused();
};

void TestSimTakeFrames::oneFrameFormGivesThatFrame_data()
{
    QTest::addColumn<qint64>("frame");
    for (const qint64 frame : {-100, -7, -1, 0, 1, 99})
        QTest::newRow(qPrintable(QString::number(frame))) << frame;
}

void TestSimTakeFrames::oneFrameFormGivesThatFrame()
{
    QFETCH(qint64, frame);
    make({});
    const QByteArray body =
        R"({"type":3,"src":0,"take":1,"start":)" + QByteArray::number(frame) + R"(,"cnt":1,"lock":0})";
    const Reply reply = m_fix.client().send("POST", "/xfer", body);
    QCOMPARE(reply.status, 200);
    QCOMPARE(reply.header("Img-Width"), QByteArray("320"));
    QCOMPARE(reply.header("Img-Height"), QByteArray("120"));
    QCOMPARE(reply.header("Img-Size"), QByteArray("38400"));
    QCOMPARE(reply.header("Meta-Size"), QByteArray("32"));
    QCOMPARE(reply.header("Content-Length"), QByteArray("38432"));
    QCOMPARE(reply.body.size(), recordSize);
    QCOMPARE(shownNumber(reply.body, width), std::optional<qint32>(qint32(frame)));
}

void TestSimTakeFrames::oldFamilyHeadersDescribeTheFrame()
{
    Config config = m_fix.config();
    config.headerFamily = HeaderFamily::Fr;
    m_fix.start(config);
    make({.res = "320x120"});
    const Reply reply = m_fix.client().send("POST", "/xfer", transferOf(1, 0, 1));
    QCOMPARE(reply.header("Fr-Width"), QByteArray("320"));
    QCOMPARE(reply.header("Fr-Size"), QByteArray("38400"));
    QVERIFY(reply.header("Img-Width").isNull());
}

void TestSimTakeFrames::pixelsAreThoseOfTheTakesScene()
{
    make({.res = "640x120"});
    const SceneParams scene = m_fix.camera().takeScene(1);
    QCOMPARE(scene.width, 640);
    QCOMPARE(scene.height, 120);
    QCOMPARE(scene.cfa, 1);
    const QByteArray record = transfer(1, -33);
    QCOMPARE(record.size(), 32 + 640 * 120);
    int different = 0;
    for (int y = 0; y < 120; ++y) {
        for (int x = 0; x < 640; ++x)
            different += quint8(record[32 + y * 640 + x]) != pixel(scene, -33, x, y);
    }
    QCOMPARE(different, 0);
}

void TestSimTakeFrames::recordedFramesCountFromTheTrigger()
{
    QCOMPARE(m_fix.put("/acq/trig_offset", "400"), 200);
    QCOMPARE(m_fix.post("/rec"), 200);
    m_fix.wait(2s);
    QCOMPARE(m_fix.post("/trig"), 200);
    m_fix.wait(1s);
    const QByteArray body = transfer(1, -600, 1000);
    QCOMPARE(body.size(), 1000 * recordSize);
    QCOMPARE(shownNumber(body.first(recordSize), width), std::optional<qint32>(-600));
    QCOMPARE(shownNumber(body.last(recordSize), width), std::optional<qint32>(399));
    // 72 days, 9:26:55 for the trigger, 0.6 s less and 0.399 s more for the ends.
    QCOMPARE(frameTime(body.mid(600 * recordSize, 8)), Time(72 * 86400 + 34015, 0));
    QCOMPARE(frameTime(body), Time(72 * 86400 + 34014, 400000000));
    QCOMPARE(frameTime(body.last(recordSize)), Time(72 * 86400 + 34015, 399000000));
    QCOMPARE(m_fix.camera().takeFrameTimeNs(1, 399), 1741944415LL * nsPerSecond + 399000000);
}

void TestSimTakeFrames::frameTimesFollowTheRate_data()
{
    QTest::addColumn<double>("rate");
    QTest::addColumn<qint64>("frame");
    QTest::addColumn<qint64>("afterTriggerNs");
    QTest::newRow("trigger") << 59.94 << qint64(0) << qint64(0);
    QTest::newRow("59.94") << 59.94 << qint64(1) << qint64(16683350); // 16683350.02
    QTest::newRow("100 s at 59.94") << 59.94 << qint64(5994) << 100 * nsPerSecond;
    QTest::newRow("100 s before") << 59.94 << qint64(-5994) << -100 * nsPerSecond;
    QTest::newRow("an hour at 23.976")
        << 23.976 << qint64(86313) << qint64(3599974974975); // 3599.974974974975 s
    QTest::newRow("1000 s at 23.976") << 23.976 << qint64(23976) << 1000 * nsPerSecond;
    QTest::newRow("a third of a millisecond") << 3000.0 << qint64(1) << qint64(333333);
    QTest::newRow("2 to the 31") << 1e6 << qint64(2147483648) << qint64(2147483648000);
}

void TestSimTakeFrames::frameTimesFollowTheRate()
{
    QFETCH(double, rate);
    QFETCH(qint64, frame);
    QFETCH(qint64, afterTriggerNs);
    const qint64 triggerNs = 1741944413LL * nsPerSecond + 589793238;
    make({.first = -6000, .last = 3000000000, .frameRate = rate, .triggerNs = triggerNs});
    const qint64 expected = triggerNs + afterTriggerNs;
    QCOMPARE(m_fix.camera().takeFrameTimeNs(1, frame), expected);
    const qint64 inYear = expected / nsPerSecond - 1735689600; // 2025-01-01
    QCOMPARE(frameTime(transfer(1, frame)), Time(quint32(inYear), quint32(expected % nsPerSecond)));
}

void TestSimTakeFrames::lastFrameEndsNowWithoutATriggerTime()
{
    make({.first = -100, .last = 499, .frameRate = 100});
    // 500 frames of 10 ms from the trigger on.
    QCOMPARE(m_fix.camera().takeFrameTimeNs(1, 0), (1741944413LL - 5) * nsPerSecond);
    QCOMPARE(m_fix.camera().takeFrameTimeNs(1, -100), (1741944413LL - 6) * nsPerSecond);
}

void TestSimTakeFrames::framesOfTwoYearsCountFromTheFirst()
{
    // Frame 0 half a second after New Year 2025, frame -1000 half a second before.
    make({.first = -1000, .last = 0, .triggerNs = 1735689600LL * nsPerSecond + 500000000});
    const QJsonObject told = m_fix.camera().takeDescription(1);
    QCOMPARE(told["meta"]["year_offset"], QJsonValue(1704067200)); // 2024-01-01
    QCOMPARE(frameTime(transfer(1, -1000)), Time(366 * 86400 - 1, 500000000));
    QCOMPARE(frameTime(transfer(1, 0)), Time(366 * 86400, 500000000));
}

void TestSimTakeFrames::secondsBeginAnewWhenTheirBitsEnd()
{
    // One frame a second from the start of 2025 on; 25 bits hold 33554432 seconds.
    make({.first = 0, .last = 40000000, .frameRate = 1, .triggerNs = 1735689600LL * nsPerSecond});
    QCOMPARE(frameTime(transfer(1, 33554431)), Time(33554431, 0));
    QCOMPARE(frameTime(transfer(1, 33554432)), Time(0, 0));
    QCOMPARE(frameTime(transfer(1, 33554433)), Time(1, 0));
}

void TestSimTakeFrames::numberBeyond31BitsShowsItsLowBits()
{
    make({.first = -(1LL << 32), .last = 1LL << 33});
    QCOMPARE(shownNumber(transfer(1, (1LL << 33) - 5), width), std::optional<qint32>(-5));
    QCOMPARE(shownNumber(transfer(1, 5 - (1LL << 32)), width), std::optional<qint32>(5));
    QCOMPARE(shownNumber(transfer(1, 2147483648), width), std::optional<qint32>(-2147483647 - 1));
}

void TestSimTakeFrames::stillSceneHasNothingButItsNumber()
{
    make({.look = Look::Still});
    const QByteArray one = transfer(1, -50);
    const QByteArray other = transfer(1, 51);
    QCOMPARE(shownNumber(one, width), std::optional<qint32>(-50));
    QCOMPARE(shownNumber(other, width), std::optional<qint32>(51));
    int largest = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto i = 32 + y * width + x;
            const bool inPanel = x >= 4 && x < 300 && y >= 4 && y < 44;
            QVERIFY(inPanel || one[i] == other[i]);
            largest = std::max(largest, std::abs(expanded(quint8(one[i])) - expanded(quint8(other[i]))));
        }
    }
    // Black 40 and white 100 of 511: less than an eighth of the scale.
    QCOMPARE(largest, 60);
}

void TestSimTakeFrames::plainSceneIsOneCode()
{
    make({.look = Look::Plain, .code = 200});
    QCOMPARE(transfer(1, -100).mid(32), QByteArray(width * height, char(200)));
    QCOMPARE(transfer(1, 99).mid(32), QByteArray(width * height, char(200)));
}

void TestSimTakeFrames::changedPixelIsThereInItsFramesAlone()
{
    QCOMPARE(m_fix.post("/sim/take", R"({"scene":"plain","code":64,"changes":[
        {"frame":10,"x":5,"y":7,"add":30},{"frame":20,"to":22,"x":319,"y":119,"add":-4}]})"),
             200);
    QByteArray plain(width * height, char(64));
    QByteArray first = plain;
    first[7 * width + 5] = char(94);
    QByteArray second = plain;
    second[119 * width + 319] = char(60);
    for (int frame = 8; frame < 25; ++frame) {
        const bool inSecond = frame >= 20 && frame <= 22;
        QCOMPARE(transfer(1, frame).mid(32), frame == 10 ? first : inSecond ? second : plain);
    }
}

void TestSimTakeFrames::changedPixelStaysWithinItsEightBits()
{
    make({.look = Look::Plain,
          .code = 100,
          .changes = {{.first = 0, .last = 0, .x = 0, .y = 0, .add = 200},
                      {.first = 0, .last = 0, .x = 1, .y = 0, .add = -200}}});
    const QByteArray pixels = transfer(1, 0).mid(32);
    QCOMPARE(quint8(pixels[0]), quint8(255));
    QCOMPARE(quint8(pixels[1]), quint8(0));
    QCOMPARE(quint8(pixels[2]), quint8(100));
}

void TestSimTakeFrames::correctionTakesNoiseAway()
{
    make({});
    SceneParams quiet = m_fix.camera().takeScene(1);
    quiet.noise = 0;
    const auto largestNoise = [&](const QByteArray &record) {
        int largest = 0;
        for (int i = 0; i < width * height; ++i) {
            const quint8 clean = pixel(quiet, 3, i % width, i / width);
            if (clean < 120) // where a code is one step of the sensor's
                largest = std::max(largest, std::abs(quint8(record[32 + i]) - clean));
        }
        return largest;
    };
    QCOMPARE(largestNoise(transfer(1, 3)), 5);
    QCOMPARE(m_fix.put("/takes/take1/acq/corr_mode", "1"), 200);
    QCOMPARE(largestNoise(transfer(1, 3)), 1);
}

void TestSimTakeFrames::badTransfersAreRefused_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    QTest::newRow("no such partition") << transferOf(5, 0, 1) << 404;
    QTest::newRow("partition 0") << transferOf(0, 0, 1) << 404;
    QTest::newRow("empty partition") << transferOf(2, 0, 1) << 404;
    QTest::newRow("before the first frame") << transferOf(1, -101, 1) << 404;
    QTest::newRow("behind the last frame") << transferOf(1, 100, 1) << 404;
    QTest::newRow("run beyond the last frame") << transferOf(1, 98, 3) << 404;
    QTest::newRow("run beyond all numbers") << transferOf(1, 0, 9007199254740992) << 404;
    QTest::newRow("no frames") << transferOf(1, 0, 0) << 400;
    QTest::newRow("less than none") << transferOf(1, 0, -1) << 400;
    QTest::newRow("no take") << QByteArray(R"({"type":3,"src":0,"start":0,"cnt":1})") << 400;
    QTest::newRow("no start") << QByteArray(R"({"type":3,"src":0,"take":1,"cnt":1})") << 400;
    QTest::newRow("no count") << QByteArray(R"({"type":3,"src":0,"take":1,"start":0})") << 400;
    QTest::newRow("half a frame") << QByteArray(R"({"type":3,"src":0,"take":1,"start":0.5,"cnt":1})") << 400;
    QTest::newRow("text") << QByteArray(R"({"type":3,"src":0,"take":1,"start":"0","cnt":1})") << 400;
    QTest::newRow("recording on the drive")
        << QByteArray(R"({"type":3,"src":2,"take":1,"start":0,"cnt":1})") << 404;
}

void TestSimTakeFrames::badTransfersAreRefused()
{
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    make({});
    const Reply reply = m_fix.client().send("POST", "/xfer", body);
    QCOMPARE(reply.status, status);
    QVERIFY(reply.json()["error"].isString());
}

QTEST_GUILESS_MAIN(TestSimTakeFrames)
#include "tst_sim_take_frames.moc"
