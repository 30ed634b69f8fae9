#include "http_client.h"

#include "sim/camera.h"

#include <QJsonArray>
#include <QTest>

using namespace q4sim;

class TestSimPut : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void writeIsShownByTheNextStatus_data();
    void writeIsShownByTheNextStatus();
    void writeIsRefused_data();
    void writeIsRefused();
    void exposureGoesToItsGridAndLimits_data();
    void exposureGoesToItsGridAndLimits();
    void frameClocksStayWithinLimits();
    void exposureLimitFollowsFrameClocks();
    void resolutionChangesLimitsAndPartitionSize();
    void resolutionInvalidatesTheBlackReference();
    void partitionsDivideTheMemory();
    void triggerOffsetStaysWithinThePartition();
    void externalSyncHasNoSignal();
    void fstopStaysWithinTheLens();

private:
    int put(const char *path, const QByteArray &body)
    {
        return m_client->put(QString::fromLatin1(path), body);
    }
    int number(const char *path) { return m_camera->value(QString::fromLatin1(path)).toInt(); }

    std::unique_ptr<Camera> m_camera;
    std::unique_ptr<HttpClient> m_client;
};

void TestSimPut::init()
{
    Config config;
    config.address = QHostAddress(QStringLiteral("127.0.1.10"));
    config.discovery = false;
    config.memoryBytes = 1LL << 30;
    config.clock = std::make_shared<ManualClock>(1741944413LL * 1000000000);
    m_camera = std::make_unique<Camera>(config);
    QCOMPARE(m_camera->listen(), QString());
    m_client = std::make_unique<HttpClient>(QStringLiteral("127.0.1.10"));
}

void TestSimPut::cleanup()
{
    m_client.reset();
    m_camera.reset();
}

void TestSimPut::writeIsShownByTheNextStatus_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QJsonValue>("value");
    const auto row = [](const char *path, const char *body, const QJsonValue &value) {
        QTest::newRow(path) << QString::fromLatin1(path) << QByteArray(body) << value;
    };
    row("camera/name", "\"Left camera\"", "Left camera");
    row("acq/mode", "1", 1);
    row("acq/fsync_mode", "3", 3);
    row("acq/corr_mode", "1", 1);
    row("acq/trig_offset", "2", 2);
    row("acq/prtn_cnt", "7", 7);
    row("acq/res", "\"320x240\"", "320x240");
    row("acq/fr_clks", "200000", 200000);
    row("ssd/name_seq", "4294967295", 4294967295.0);
    row("ssd/autosave/mode", "5", 5);
    row("ssd/autosave/start", "-2147483648", -2147483648.0);
    row("ssd/autosave/cnt", "12", 12);
    row("ssd/autosave/name", "\"run\"", "run");
    row("meta/time", "\"2024-02-29 12:00:00\"", "2024-02-29 12:00:00");
    row("video/format", "\"1280x720p60\"", "1280x720p60");
    row("lens/fstop", "5.600000", 5.6);
    row("io/trigger/signal", "\"\"", "");
    row("io/io1/signal", "\"event2\"", "event2");
    row("io/io6/mode", "16", 16);
    row("io/io2/polarity", "3", 3);
    row("io/io3/filter", "262143", 262143);
    row("io/io4/delay", "268435455", 268435455);
    row("io/io5/min", "1", 1);
    row("io/io5/max", "2", 2);
    row("adjust/offset", "-1.000000", -1.0);
    row("adjust/gain_r", "2.500000", 2.5);
    row("adjust/gamma_b", "0.100000", 0.1);
    row("adjust/contrast", "1.000000", 1.0);
    row("adjust/wb_g", "10.000000", 10.0);
}

void TestSimPut::writeIsShownByTheNextStatus()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, body);
    QFETCH(QJsonValue, value);
    QVERIFY(m_camera->value(path) != value);
    QCOMPARE(m_client->put(u'/' + path, body), 200);
    QJsonValue shown = m_client->get().json();
    const QStringList keys = path.split(u'/');
    for (const QString &key : keys)
        shown = shown.toObject()[key];
    QCOMPARE(shown, value);
}

void TestSimPut::writeIsRefused_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    const auto row = [](const char *name, const char *path, const char *body, int status) {
        QTest::newRow(name) << QString::fromLatin1(path) << QByteArray(body) << status;
    };
    row("no such value", "/acq/nothing", "1", 404);
    row("no such line", "/io/io7/mode", "1", 404);
    row("an object", "/acq", "1", 404);
    row("deeper than a value", "/acq/res/x", "1", 404);
    row("read-only number", "/acq/state", "2", 403);
    row("read-only text", "/camera/serial", "\"x\"", 403);
    row("read-only list", "/acq/valid_res", "1", 403);
    row("feature", "/features/lens", "1", 403);
    row("calibration", "/adjust/wb_cal_r", "1.0", 403);
    row("empty body", "/acq/fr_clks", "", 400);
    row("no JSON", "/acq/fr_clks", "12x", 400);
    row("bare text", "/camera/name", "Left", 400);
    row("quote in a text", "/camera/name", "\"a\"b\"", 400);
    row("two scalars", "/acq/fr_clks", "1,2", 400);
    row("object", "/acq/fr_clks", "{\"a\":1}", 400);
    row("null", "/acq/fr_clks", "null", 400);
    row("text for a number", "/acq/fr_clks", "\"200000\"", 400);
    row("number for a text", "/camera/name", "5", 400);
    row("boolean for a number", "/acq/mode", "true", 400);
    row("fraction for a whole number", "/acq/fr_clks", "2.5", 400);
    row("resolution not in the list", "/acq/res", "\"641x480\"", 400);
    row("format not in the list", "/video/format", "\"4K\"", 400);
    row("sync mode too high", "/acq/fsync_mode", "4", 400);
    row("sync mode negative", "/acq/fsync_mode", "-1", 400);
    row("no partition", "/acq/prtn_cnt", "0", 400);
    row("too many partitions", "/acq/prtn_cnt", "1025", 400);
    row("line signal unknown", "/io/io1/signal", "\"clock\"", 400);
    row("trigger line takes no event", "/io/trigger/signal", "\"event1\"", 400);
    row("line mode of two bits", "/io/io1/mode", "3", 400);
    row("line delay too long", "/io/io1/delay", "268435456", 400);
    row("line filter too long", "/io/io1/filter", "262144", 400);
    row("gain too high", "/adjust/gain", "10.5", 400);
    row("time too late", "/meta/time", "\"2200-01-01 00:00:00\"", 400);
    row("time too early", "/meta/time", "\"1969-12-31 23:59:59\"", 400);
    row("time of no form", "/meta/time", "\"yesterday\"", 400);
}

void TestSimPut::writeIsRefused()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    const QJsonObject before = m_camera->status();
    const Reply reply = m_client->send("PUT", path, body);
    QCOMPARE(reply.status, status);
    QVERIFY(!reply.json()["error"].toString().isEmpty());
    QCOMPARE(m_camera->status(), before);
}

void TestSimPut::exposureGoesToItsGridAndLimits_data()
{
    QTest::addColumn<QByteArray>("written");
    QTest::addColumn<int>("held");
    // Frame of 100000 clocks: at most 100000 - 600; grid 13 + 25 k, so the top is 13 + 25 * 3975 = 99388.
    QTest::newRow("on the grid") << QByteArray("1013") << 1013;
    QTest::newRow("just above") << QByteArray("1014") << 1013;
    QTest::newRow("just below the next") << QByteArray("1037") << 1013;
    QTest::newRow("next") << QByteArray("1038") << 1038;
    QTest::newRow("below the limit") << QByteArray("1") << 113;
    QTest::newRow("negative") << QByteArray("-5") << 113;
    QTest::newRow("above the limit") << QByteArray("2000000000") << 99388;
}

void TestSimPut::exposureGoesToItsGridAndLimits()
{
    QFETCH(QByteArray, written);
    QFETCH(int, held);
    QCOMPARE(number("acq/fr_clks"), 100000);
    QCOMPARE(put("/acq/exp_clks", written), 200);
    QCOMPARE(number("acq/exp_clks"), held);
    // 100 clocks a microsecond.
    QCOMPARE(m_camera->value("acq/exp_time").toDouble(), held / 100.0);
}

void TestSimPut::frameClocksStayWithinLimits()
{
    // 640x480: 480 rows of 640 / 8 + 20 clocks and 400 more.
    QCOMPARE(number("acq/fr_clks_min"), 48400);
    QCOMPARE(put("/acq/fr_clks", "10"), 200);
    QCOMPARE(number("acq/fr_clks"), 48400);
    QCOMPARE(put("/acq/fr_clks", "2000000000"), 200);
    QCOMPARE(number("acq/fr_clks"), number("acq/fr_clks_max"));
    QCOMPARE(put("/acq/fr_clks", "62500"), 200);
    QCOMPARE(m_camera->value("acq/fr_rate").toDouble(), 1600.0);
}

void TestSimPut::exposureLimitFollowsFrameClocks()
{
    QCOMPARE(put("/acq/exp_clks", "90013"), 200);
    QCOMPARE(number("acq/exp_clks"), 90013);
    QCOMPARE(put("/acq/fr_clks", "50000"), 200);
    QCOMPARE(number("acq/exp_clks_max"), 49400);
    // 13 + 25 * 1975
    QCOMPARE(number("acq/exp_clks"), 49388);
}

void TestSimPut::resolutionChangesLimitsAndPartitionSize()
{
    // A quarter of 1 GiB in records of 32 bytes and the pixels.
    QCOMPARE(number("takes/take1/prtn_fr_cnt"), 268435456 / (32 + 640 * 480));
    QCOMPARE(put("/acq/res", "\"320x240\""), 200);
    QCOMPARE(number("takes/take1/prtn_fr_cnt"), 268435456 / (32 + 320 * 240));
    // 240 rows of 320 / 8 + 20 clocks and 400 more.
    QCOMPARE(number("acq/fr_clks_min"), 14800);
    QCOMPARE(put("/acq/fr_clks", "20000"), 200);
    QCOMPARE(number("acq/fr_clks"), 20000);
    QCOMPARE(put("/acq/res", "\"640x480\""), 200);
    QCOMPARE(number("acq/fr_clks"), 48400);
}

void TestSimPut::resolutionInvalidatesTheBlackReference()
{
    QCOMPARE(number("acq/bref_state"), 1);
    QCOMPARE(m_client->post("/bref"), 200);
    static_cast<ManualClock *>(m_camera->config().clock.get())->advance(std::chrono::seconds(1));
    QCOMPARE(number("acq/bref_state"), 0);
    QCOMPARE(put("/acq/res", "\"320x240\""), 200);
    QCOMPARE(number("acq/bref_state"), 1);
}

void TestSimPut::partitionsDivideTheMemory()
{
    QCOMPARE(put("/acq/prtn_cnt", "1"), 200);
    QCOMPARE(number("takes/take1/prtn_fr_cnt"), (1 << 30) / (32 + 640 * 480));
    QCOMPARE(put("/acq/prtn_cnt", "8"), 200);
    QCOMPARE(number("takes/take1/prtn_fr_cnt"), (1 << 27) / (32 + 640 * 480));
}

void TestSimPut::triggerOffsetStaysWithinThePartition()
{
    const int frames = number("takes/take1/prtn_fr_cnt");
    QCOMPARE(put("/acq/trig_offset", "100000000"), 200);
    QCOMPARE(number("acq/trig_offset"), frames);
    QCOMPARE(put("/acq/trig_offset", "-4"), 200);
    QCOMPARE(number("acq/trig_offset"), 1);
    QCOMPARE(put("/acq/trig_offset", "800"), 200);
    QCOMPARE(put("/acq/prtn_cnt", "16"), 200);
    QCOMPARE(number("acq/trig_offset"), (1 << 26) / (32 + 640 * 480));
}

void TestSimPut::externalSyncHasNoSignal()
{
    QCOMPARE(number("acq/fsync_state"), 0);
    QCOMPARE(put("/acq/fsync_mode", "1"), 200);
    QVERIFY(number("acq/fsync_state") < 0);
    QCOMPARE(put("/acq/fsync_mode", "0"), 200);
    QCOMPARE(number("acq/fsync_state"), 0);
}

void TestSimPut::fstopStaysWithinTheLens()
{
    QCOMPARE(put("/lens/fstop", "1.400000"), 200);
    QCOMPARE(m_camera->value("lens/fstop").toDouble(), 2.8);
    QCOMPARE(put("/lens/fstop", "32"), 200);
    QCOMPARE(m_camera->value("lens/fstop").toDouble(), 22.0);
}

QTEST_GUILESS_MAIN(TestSimPut)
#include "tst_sim_put.moc"
