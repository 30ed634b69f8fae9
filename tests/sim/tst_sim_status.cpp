#include "http_client.h"

#include "sim/camera.h"
#include "sim/camera_thread.h"

#include <QJsonArray>
#include <QTest>

using namespace q4sim;

namespace
{

// 2025-03-14 09:26:53 UTC
constexpr qint64 startNs = 1741944413LL * 1000000000;

Config testConfig(const char *address)
{
    Config config;
    config.address = QHostAddress(QString::fromLatin1(address));
    config.discovery = false;
    config.clock = std::make_shared<ManualClock>(startNs);
    return config;
}

QJsonValue at(QJsonObject tree, const QString &path)
{
    QStringList keys = path.split(u'/');
    const QString last = keys.takeLast();
    for (const QString &key : std::as_const(keys))
        tree = tree[key].toObject();
    return tree[last];
}

} // namespace

class TestSimStatus : public QObject
{
    Q_OBJECT

private slots:
    void everyValueIsServed_data();
    void everyValueIsServed();
    void ioHasSevenLinesOfSevenKeys();
    void adjustHasNineteenKeys();
    void oldFirmwareIsNumberedAndHasFewFeatures();
    void newFirmwareIsNamedByText();
    void yearOffsetStandsWhereConfigured();
    void timeIsWhatWasWrittenAndGoesOn();
    void timingFollowsTheStartRate();
    void colourCameraOffersNothingAbove640x480();
    void monoCameraOffers1280x1024();
    void startRateStaysWithinTheSensor_data();
    void startRateStaysWithinTheSensor();
    void tooLargeColourResolutionIsRefused();
    void resolutionSlowerThanTheLongestFrameIsRefused();
    void busyPortIsNamedInOneSentence();
    void unknownPathsAre404();
    void requestsAreLoggedInOrder();
    void severalCamerasShareAProcess();
    void cameraAnswersFromItsOwnThread();
    void forcedValueShowsUntilTakenAway();
};

void TestSimStatus::everyValueIsServed_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QJsonValue::Type>("type");
    const auto rows = [](QJsonValue::Type type, const QStringList &paths) {
        for (const QString &path : paths)
            QTest::newRow(qPrintable(path)) << path << type;
    };
    rows(QJsonValue::String,
         {"camera/name", "camera/serial", "camera/model", "camera/fw_ver", "acq/res", "lens/mount",
          "lens/name", "ssd/name", "ssd/size", "ssd/used", "ssd/autosave/name", "meta/time", "video/format"});
    rows(QJsonValue::Array,
         {"acq/valid_res", "video/valid_format", "acq/saved_takes", "acq/locked_takes", "ssd/open_takes"});
    rows(QJsonValue::Double, {"camera/cfa",
                              "camera/fw_state",
                              "acq/mode",
                              "acq/state",
                              "acq/clk_freq",
                              "acq/exp_clks",
                              "acq/exp_clks_min",
                              "acq/exp_clks_max",
                              "acq/exp_clks_mult",
                              "acq/exp_clks_ofst",
                              "acq/exp_time",
                              "acq/fr_rate",
                              "acq/fr_clks",
                              "acq/fr_clks_min",
                              "acq/fr_clks_max",
                              "acq/fsync_mode",
                              "acq/fsync_state",
                              "acq/trig_offset",
                              "acq/prtn_cnt",
                              "acq/active_take",
                              "acq/bref_state",
                              "acq/corr_mode",
                              "takes/take1/prtn_fr_cnt",
                              "acq/bpp",
                              "lens/state",
                              "lens/id",
                              "lens/af_switch",
                              "lens/focal_len_min",
                              "lens/focal_len_max",
                              "lens/focal_len",
                              "lens/fstop_min",
                              "lens/fstop_max",
                              "lens/fstop",
                              "lens/focus_dist",
                              "shtr/state",
                              "ssd/state",
                              "ssd/wr_state",
                              "ssd/wr_seq",
                              "ssd/progress",
                              "ssd/name_seq",
                              "ssd/autosave/mode",
                              "ssd/autosave/start",
                              "ssd/autosave/cnt",
                              "meta/year_offset",
                              "features/corr_mode",
                              "features/q4fw",
                              "features/lens",
                              "features/shtr",
                              "features/ssd-format",
                              "features/ssd-save"});
}

void TestSimStatus::everyValueIsServed()
{
    QFETCH(QString, path);
    QFETCH(QJsonValue::Type, type);
    Camera camera(testConfig("127.0.1.1"));
    QCOMPARE(camera.listen(), QString());
    HttpClient client(QStringLiteral("127.0.1.1"));
    const Reply reply = client.get();
    QCOMPARE(reply.status, 200);
    QCOMPARE(at(reply.json(), path).type(), type);
}

void TestSimStatus::ioHasSevenLinesOfSevenKeys()
{
    const QJsonObject io = Camera(testConfig("127.0.1.1")).status()["io"].toObject();
    QCOMPARE(io.keys(), QStringList({"io1", "io2", "io3", "io4", "io5", "io6", "trigger"}));
    for (const QJsonValue &line : io) {
        QCOMPARE(line.toObject().keys(),
                 QStringList({"delay", "filter", "max", "min", "mode", "polarity", "signal"}));
    }
}

void TestSimStatus::adjustHasNineteenKeys()
{
    const QJsonObject adjust = Camera(testConfig("127.0.1.1")).status()["adjust"].toObject();
    QCOMPARE(adjust.keys(),
             QStringList({"cfa", "contrast", "contrast_b", "contrast_r", "gain", "gain_b", "gain_r", "gamma",
                          "gamma_b", "gamma_r", "offset", "offset_b", "offset_r", "wb_b", "wb_cal_b",
                          "wb_cal_g", "wb_cal_r", "wb_g", "wb_r"}));
}

void TestSimStatus::oldFirmwareIsNumberedAndHasFewFeatures()
{
    Config config = testConfig("127.0.1.1");
    config.firmware = Firmware::Old;
    const Camera camera(config);
    QVERIFY(camera.value("camera/fw_ver").isDouble());
    QCOMPARE(camera.value("features/q4fw").toInt(-1), 0);
    QCOMPARE(camera.value("features/ssd-format").toInt(-1), 0);
    QCOMPARE(camera.value("features/corr_mode").toInt(-1), 0);
    QVERIFY(camera.value("features/ssd-save").toInt(-1) < 2);
}

void TestSimStatus::newFirmwareIsNamedByText()
{
    const Camera camera(testConfig("127.0.1.1"));
    QVERIFY(!camera.value("camera/fw_ver").toString().isEmpty());
    QCOMPARE(camera.value("features/q4fw").toInt(), 1);
    QVERIFY(camera.value("features/ssd-save").toInt() >= 2);
}

void TestSimStatus::yearOffsetStandsWhereConfigured()
{
    // 2025-01-01 00:00 UTC
    constexpr qint64 year = 1735689600;
    Config config = testConfig("127.0.1.1");
    QCOMPARE(Camera(config).value("meta/year_offset").toInteger(), year);
    QVERIFY(Camera(config).value("time/year_offset").isUndefined());
    config.yearOffsetPlace = YearOffsetPlace::Time;
    QCOMPARE(Camera(config).value("time/year_offset").toInteger(), year);
    QVERIFY(Camera(config).value("meta/year_offset").isUndefined());
}

void TestSimStatus::timeIsWhatWasWrittenAndGoesOn()
{
    const Config config = testConfig("127.0.1.1");
    Camera camera(config);
    QCOMPARE(camera.value("meta/time").toString(), QStringLiteral("2025-03-14 09:26:53"));
    QCOMPARE(camera.answer("PUT", "/meta/time", "\"2026-12-31 23:59:58\"").status, 200);
    QCOMPARE(camera.value("meta/time").toString(), QStringLiteral("2026-12-31 23:59:58"));
    static_cast<ManualClock *>(config.clock.get())->advance(std::chrono::seconds(3));
    QCOMPARE(camera.value("meta/time").toString(), QStringLiteral("2027-01-01 00:00:01"));
    // 2027-01-01 00:00 UTC
    QCOMPARE(camera.value("meta/year_offset").toInteger(), 1798761600);
}

void TestSimStatus::timingFollowsTheStartRate()
{
    Config config = testConfig("127.0.1.1");
    config.frameRate = 500;
    const Camera camera(config);
    QCOMPARE(camera.value("acq/fr_clks").toInt() * 500, camera.value("acq/clk_freq").toInt());
    QCOMPARE(camera.value("acq/fr_rate").toDouble(), 500.0);
    const int exposure = camera.value("acq/exp_clks").toInt();
    QCOMPARE((exposure - camera.value("acq/exp_clks_ofst").toInt()) %
                 camera.value("acq/exp_clks_mult").toInt(),
             0);
    QCOMPARE(camera.value("acq/exp_time").toDouble(), exposure / 100.0);
}

void TestSimStatus::startRateStaysWithinTheSensor_data()
{
    QTest::addColumn<double>("rate");
    QTest::addColumn<QString>("limit");
    QTest::newRow("slower than the sensor") << 1.0 << "acq/fr_clks_max";
    QTest::newRow("a frame of more clocks than any number holds") << 1e-300 << "acq/fr_clks_max";
    QTest::newRow("faster than the sensor") << 1e6 << "acq/fr_clks_min";
    QTest::newRow("infinite") << qInf() << "acq/fr_clks_min";
}

void TestSimStatus::startRateStaysWithinTheSensor()
{
    QFETCH(double, rate);
    QFETCH(QString, limit);
    Config config = testConfig("127.0.1.1");
    config.frameRate = rate;
    const Camera camera(config);
    QCOMPARE(camera.value("acq/fr_clks"), camera.value(limit));
}

void TestSimStatus::colourCameraOffersNothingAbove640x480()
{
    const QJsonArray list = Camera(testConfig("127.0.1.1")).value("acq/valid_res").toArray();
    QVERIFY(list.contains("640x480"));
    for (const QJsonValue &entry : list) {
        QVERIFY(entry.toString().section(u'x', 0, 0).toInt() <= 640);
        QVERIFY(entry.toString().section(u'x', 1, 1).toInt() <= 480);
    }
}

void TestSimStatus::monoCameraOffers1280x1024()
{
    Config config = testConfig("127.0.1.1");
    config.cfa = CfaMono;
    const Camera camera(config);
    QVERIFY(camera.value("acq/valid_res").toArray().contains("1280x1024"));
    QCOMPARE(camera.value("camera/cfa").toInt(-1), 0);
    QCOMPARE(camera.value("adjust/cfa").toInt(-1), 0);
}

void TestSimStatus::tooLargeColourResolutionIsRefused()
{
    Config config = testConfig("127.0.1.1");
    config.resolutions = QStringList{"1280x1024"};
    Camera camera(config);
    QVERIFY(camera.listen().contains(u"1280x1024"));
    HttpClient client(QStringLiteral("127.0.1.1"));
    QCOMPARE(client.get().status, 0);
}

void TestSimStatus::resolutionSlowerThanTheLongestFrameIsRefused()
{
    Config config = testConfig("127.0.1.1");
    config.cfa = CfaMono;
    // 4096 rows of 4096 / 8 + 20 clocks and 400 more are 2179472, of 3072 / 8 + 20 clocks 1655184.
    config.resolutions = QStringList{"3072x4096", "4096x4096"};
    Camera tooLarge(config);
    QVERIFY(tooLarge.listen().contains(u"4096x4096"));
    config.resolutions.removeLast();
    Camera camera(config);
    QCOMPARE(camera.listen(), QString());
    QCOMPARE(camera.value("acq/fr_clks_min").toInt(), 1655184);
    QVERIFY(camera.value("acq/fr_clks_max").toInt() > 1655184);
}

void TestSimStatus::busyPortIsNamedInOneSentence()
{
    Camera first(testConfig("127.0.1.1"));
    QCOMPARE(first.listen(), QString());
    Camera second(testConfig("127.0.1.1"));
    const QString text = second.listen();
    QVERIFY2(text.startsWith(u"cannot listen on 127.0.1.1 port 80: "), qPrintable(text));
    QVERIFY(!text.contains(u'\n'));
}

void TestSimStatus::unknownPathsAre404()
{
    Camera camera(testConfig("127.0.1.1"));
    QCOMPARE(camera.listen(), QString());
    HttpClient client(QStringLiteral("127.0.1.1"));
    QCOMPARE(client.get(QStringLiteral("/nothing")).status, 404);
    QCOMPARE(client.post(QStringLiteral("/nothing")), 404);
    QCOMPARE(client.put(QStringLiteral("/acq"), "1"), 404);
}

void TestSimStatus::requestsAreLoggedInOrder()
{
    Camera camera(testConfig("127.0.1.1"));
    QSignalSpy received(&camera, &Camera::requestReceived);
    QCOMPARE(camera.listen(), QString());
    HttpClient client(QStringLiteral("127.0.1.1"));
    client.get();
    client.put(QStringLiteral("/camera/name"), "\"A\"");
    client.post(QStringLiteral("/prtn"), "{\"cnt\":4}");
    const QList<Request> all = camera.requests();
    QCOMPARE(all.size(), 3);
    QCOMPARE(received.size(), 3);
    QCOMPARE(all[0].method, QByteArray("GET"));
    QCOMPARE(all[0].path, QStringLiteral("/"));
    QCOMPARE(all[0].header("User-Agent"), QByteArray("test"));
    QCOMPARE(all[0].timeNs, startNs);
    QCOMPARE(all[1].method, QByteArray("PUT"));
    QCOMPARE(all[1].body, QByteArray("\"A\""));
    QCOMPARE(all[1].header("Content-Type"), QByteArray("application/json"));
    QCOMPARE(all[2].body, QByteArray("{\"cnt\":4}"));
    QCOMPARE(camera.requests("PUT", "/camera/name").size(), 1);
    camera.clearRequests();
    QCOMPARE(camera.requests().size(), 0);
}

void TestSimStatus::severalCamerasShareAProcess()
{
    Config one = testConfig("127.0.1.1");
    one.name = QStringLiteral("One");
    Config two = testConfig("127.0.1.2");
    two.name = QStringLiteral("Two");
    Camera first(one);
    Camera second(two);
    QCOMPARE(first.listen(), QString());
    QCOMPARE(second.listen(), QString());
    QCOMPARE(at(HttpClient("127.0.1.1").get().json(), "camera/name").toString(), QStringLiteral("One"));
    QCOMPARE(at(HttpClient("127.0.1.2").get().json(), "camera/name").toString(), QStringLiteral("Two"));
}

void TestSimStatus::cameraAnswersFromItsOwnThread()
{
    CameraThread host(testConfig("127.0.1.1"));
    QCOMPARE(host.listen(), QString());
    // A client that never enters its event loop, so that only another thread can answer.
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.1.1"), 80);
    QVERIFY(socket.waitForConnected(10000));
    socket.write("GET / HTTP/1.1\r\nHost: 127.0.1.1\r\nConnection: close\r\n\r\n");
    QVERIFY(socket.waitForBytesWritten(10000));
    QVERIFY(socket.waitForReadyRead(10000));
    QVERIFY(socket.readAll().startsWith("HTTP/1.1 200"));
    QCOMPARE(host.camera().requests().size(), 1);
}

void TestSimStatus::forcedValueShowsUntilTakenAway()
{
    Camera camera(testConfig("127.0.1.1"));
    camera.forceValue("acq/state", 6);
    QCOMPARE(camera.value("acq/state").toInt(), 6);
    camera.forceValue("acq/state", QJsonValue::Undefined);
    QCOMPARE(camera.value("acq/state").toInt(), 1);
}

QTEST_GUILESS_MAIN(TestSimStatus)
#include "tst_sim_status.moc"
