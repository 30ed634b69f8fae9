#include "http_client.h"

#include "sim/camera.h"

#include <QTest>
#include <QtEndian>

using namespace q4sim;

namespace
{

// 2025-03-14 09:26:53.589793238 UTC
constexpr qint64 startNs = 1741944413LL * 1000000000 + 589793238;
constexpr auto live = "{\"type\":3,\"src\":1}";

Config testConfig()
{
    Config config;
    config.address = QHostAddress(QStringLiteral("127.0.1.20"));
    config.discovery = false;
    config.clock = std::make_shared<ManualClock>(startNs);
    return config;
}

// 0 when the record is too short for it.
quint32 word(const QByteArray &record, int offset)
{
    return record.size() < offset + 4 ? 0 : qFromLittleEndian<quint32>(record.constData() + offset);
}

} // namespace

class TestSimXfer : public QObject
{
    Q_OBJECT

private slots:
    void newFamilyHeadersDescribeTheFrame();
    void oldFamilyHeadersDescribeTheFrame();
    void pixelsAreThoseOfTheScene();
    void metadataCarriesTheTimeOfTheFrame();
    void unreadBitsAndBytesAreNoise();
    void frameNumberCountsAtTheFrameRate();
    void frameNumberGoesOnAfterAChangeOfRate();
    void frameNumberIsReadableInTheMonoPicture();
    void resolutionChangesTheFrame();
    void badTransfersAreRefused_data();
    void badTransfersAreRefused();
};

void TestSimXfer::newFamilyHeadersDescribeTheFrame()
{
    Camera camera(testConfig());
    QCOMPARE(camera.listen(), QString());
    const Reply reply = HttpClient("127.0.1.20").send("POST", "/xfer", live);
    QCOMPARE(reply.status, 200);
    QCOMPARE(reply.header("Img-Width"), QByteArray("640"));
    QCOMPARE(reply.header("Img-Height"), QByteArray("480"));
    QCOMPARE(reply.header("Img-Size"), QByteArray("307200"));
    QCOMPARE(reply.header("Meta-Size"), QByteArray("32"));
    QVERIFY(reply.header("Fr-Width").isNull());
    QCOMPARE(reply.body.size(), 32 + 307200);
}

void TestSimXfer::oldFamilyHeadersDescribeTheFrame()
{
    Config config = testConfig();
    config.headerFamily = HeaderFamily::Fr;
    config.resolutions = QStringList{"320x120"};
    Camera camera(config);
    QCOMPARE(camera.listen(), QString());
    const Reply reply = HttpClient("127.0.1.20").send("POST", "/xfer", live);
    QCOMPARE(reply.header("Fr-Width"), QByteArray("320"));
    QCOMPARE(reply.header("Fr-Height"), QByteArray("120"));
    QCOMPARE(reply.header("Fr-Size"), QByteArray("38400"));
    QCOMPARE(reply.header("Meta-Size"), QByteArray("32"));
    QVERIFY(reply.header("Img-Width").isNull());
    QCOMPARE(reply.body.size(), 32 + 38400);
}

void TestSimXfer::pixelsAreThoseOfTheScene()
{
    const Config config = testConfig();
    Camera camera(config);
    QCOMPARE(camera.listen(), QString());
    static_cast<ManualClock *>(config.clock.get())->advance(std::chrono::milliseconds(1500));
    const QByteArray record = HttpClient("127.0.1.20").send("POST", "/xfer", live).body;
    const SceneParams params = camera.sceneParams();
    QCOMPARE(params.width, 640);
    QCOMPARE(params.cfa, 1);
    int different = 0;
    for (int y = 0; y < 480; ++y) {
        for (int x = 0; x < 640; ++x)
            different += static_cast<quint8>(record[32 + y * 640 + x]) != pixel(params, 1500, x, y);
    }
    QCOMPARE(different, 0);
}

void TestSimXfer::metadataCarriesTheTimeOfTheFrame()
{
    const Config config = testConfig();
    Camera camera(config);
    // At the start frame 0 has just begun; 400 us later it is still the one.
    static_cast<ManualClock *>(config.clock.get())->advance(std::chrono::microseconds(400));
    const QByteArray first = camera.answer("POST", "/xfer", live).body;
    // From 2025-01-01 to 2025-03-14 09:26:53: 31 + 28 + 13 days and 34013 seconds.
    QCOMPARE(word(first, 0) & 0x1FFFFFF, quint32(72 * 86400 + 34013));
    QCOMPARE(word(first, 4) & 0x3FFFFFFF, quint32(589793238));
    // Frame 500 of 1 ms: 0.5 s later, in the next second.
    static_cast<ManualClock *>(config.clock.get())->advance(std::chrono::milliseconds(500));
    const QByteArray later = camera.answer("POST", "/xfer", live).body;
    QCOMPARE(word(later, 0) & 0x1FFFFFF, quint32(72 * 86400 + 34014));
    QCOMPARE(word(later, 4) & 0x3FFFFFFF, quint32(89793238));
}

void TestSimXfer::unreadBitsAndBytesAreNoise()
{
    const Config config = testConfig();
    Camera camera(config);
    quint32 seconds = 0;
    quint32 nanoseconds = 0;
    QSet<QByteArray> rests;
    for (int i = 0; i < 64; ++i) {
        const QByteArray record = camera.answer("POST", "/xfer", live).body;
        seconds |= word(record, 0);
        nanoseconds |= word(record, 4);
        rests.insert(record.mid(8, 24));
        static_cast<ManualClock *>(config.clock.get())->advance(std::chrono::milliseconds(1));
    }
    QCOMPARE(seconds >> 25, 0x7FU);
    QCOMPARE(nanoseconds >> 30, 3U);
    QCOMPARE(rests.size(), 64);
}

void TestSimXfer::frameNumberCountsAtTheFrameRate()
{
    Config config = testConfig();
    config.frameRate = 2000;
    const Camera camera(config);
    QCOMPARE(camera.liveFrame(), 0);
    static_cast<ManualClock *>(config.clock.get())->advance(std::chrono::microseconds(1000499));
    QCOMPARE(camera.liveFrame(), 2000);
    static_cast<ManualClock *>(config.clock.get())->advance(std::chrono::microseconds(1));
    QCOMPARE(camera.liveFrame(), 2001);
    static_cast<ManualClock *>(config.clock.get())->advance(std::chrono::hours(24 * 300));
    QCOMPARE(camera.liveFrame(), 2001 + 2000LL * 86400 * 300);
}

void TestSimXfer::frameNumberGoesOnAfterAChangeOfRate()
{
    const Config config = testConfig();
    Camera camera(config);
    static_cast<ManualClock *>(config.clock.get())->advance(std::chrono::seconds(1));
    QCOMPARE(camera.answer("PUT", "/acq/fr_clks", "1000000").status, 200);
    QCOMPARE(camera.liveFrame(), 1000);
    static_cast<ManualClock *>(config.clock.get())->advance(std::chrono::seconds(1));
    QCOMPARE(camera.liveFrame(), 1100);
    QCOMPARE(camera.frameTimeNs(1100), startNs + 2000000000);
    QCOMPARE(camera.frameTimeNs(1000), startNs + 1000000000);
}

void TestSimXfer::frameNumberIsReadableInTheMonoPicture()
{
    Config config = testConfig();
    config.cfa = CfaMono;
    config.frameRate = 500;
    Camera camera(config);
    static_cast<ManualClock *>(config.clock.get())->advance(std::chrono::seconds(42));
    const QByteArray record = camera.answer("POST", "/xfer", live).body;
    QCOMPARE(record.size(), 32 + 1280 * 1024);
    const auto number =
        readStrip([&record](int x, int y) { return double(quint8(record[32 + y * 1280 + x])); });
    QCOMPARE(number.value_or(-1), 21000);
}

void TestSimXfer::resolutionChangesTheFrame()
{
    Camera camera(testConfig());
    QCOMPARE(camera.answer("POST", "/xfer", live).body.size(), 32 + 640 * 480);
    QCOMPARE(camera.answer("PUT", "/acq/res", "\"320x240\"").status, 200);
    QCOMPARE(camera.answer("POST", "/xfer", live).body.size(), 32 + 320 * 240);
}

void TestSimXfer::badTransfersAreRefused_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    QTest::newRow("empty") << QByteArray() << 400;
    QTest::newRow("no JSON") << QByteArray("{type:3}") << 400;
    QTest::newRow("other type") << QByteArray("{\"type\":2,\"src\":1}") << 400;
    QTest::newRow("no source") << QByteArray("{\"type\":3}") << 400;
    QTest::newRow("unknown source") << QByteArray("{\"type\":3,\"src\":7}") << 404;
}

void TestSimXfer::badTransfersAreRefused()
{
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    Camera camera(testConfig());
    QCOMPARE(camera.listen(), QString());
    QCOMPARE(HttpClient("127.0.1.20").post("/xfer", body), status);
}

QTEST_GUILESS_MAIN(TestSimXfer)
#include "tst_sim_xfer.moc"
