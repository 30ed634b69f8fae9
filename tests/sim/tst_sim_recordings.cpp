#include "drive_fixture.h"

#include "sim/scene.h"

#include <QJsonArray>

using namespace q4sim;
using namespace std::chrono_literals;

class TestSimRecordings : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void drivesHoldWhatTheyAreTold();
    void oldFirmwareListsNames();
    void openedRecordingHasANumberOfItsOwn();
    void openedRecordingIsDescribed();
    void openedRecordingGivesItsFrames();
    void frameOutsideIsRefused_data();
    void frameOutsideIsRefused();
    void onlyTheAdjustmentIsWritten_data();
    void onlyTheAdjustmentIsWritten();
    void closedRecordingIsGone();
    void cameraClosesByItself_data();
    void cameraClosesByItself();
    void unknownRecordingIsRefused_data();
    void unknownRecordingIsRefused();
    void formatShowsItsProgress();
    void vanishedDriveAnswersNothing_data();
    void vanishedDriveAnswersNothing();
    void recordingsGoRoundThePartitions();
    void senselessDeedIsRefused_data();
    void senselessDeedIsRefused();

private:
    DriveFixture m_fix{QStringLiteral("127.0.1.75")};
};

void TestSimRecordings::init()
{
    m_fix.startWithRecordings();
}

void TestSimRecordings::drivesHoldWhatTheyAreTold()
{
    const QJsonArray list =
        m_fix.client().send("POST", "/ssd-ls", "{\"long\": 1}").json()["ssd-ls"].toArray();
    QCOMPARE(list,
             QJsonArray({QJsonObject{{"name", "b \"c\"/d.vesk"}, {"size", 8 * 288}, {"time", 1700000000}},
                         QJsonObject{{"name", "plain.vesk"}, {"size", 544}, {"time", 1700000060}}}));
    QCOMPARE(m_fix.text("ssd/used").toLongLong(nullptr, 16), 8 * 288 + 544);
    QCOMPARE(m_fix.names("{}"), QStringList({"b \"c\"/d.vesk", "plain.vesk"}));
}

void TestSimRecordings::oldFirmwareListsNames()
{
    Config config = m_fix.config();
    config.firmware = Firmware::Old;
    m_fix.start(config);
    const QJsonArray list =
        m_fix.client().send("POST", "/ssd-ls", "{\"long\": 1}").json()["ssd-ls"].toArray();
    QCOMPARE(list, QJsonArray({"drop-test.vesk", "Airbag 07.vesk", "wheel.vesk"}));
}

void TestSimRecordings::openedRecordingHasANumberOfItsOwn()
{
    QCOMPARE(m_fix.value("ssd/open_takes").toArray(), QJsonArray());
    QCOMPARE(m_fix.open("plain.vesk"), 1);
    QCOMPARE(m_fix.open("b \"c\"/d.vesk"), 2);
    QCOMPARE(m_fix.open("plain.vesk"), 3);
    QCOMPARE(m_fix.value("ssd/open_takes").toArray(), QJsonArray({1, 2, 3}));
}

void TestSimRecordings::openedRecordingIsDescribed()
{
    m_fix.open("plain.vesk");
    m_fix.open("b \"c\"/d.vesk");
    const QJsonObject tree = m_fix.client().send("GET", "/ssd/takes/take2").json();
    QCOMPARE(tree.keys(), QStringList{"ssd"});
    const QJsonObject take = tree["ssd"]["takes"]["take2"].toObject();
    QCOMPARE(take, m_fix.camera().openTakeDescription(2));
    QCOMPARE(take["first_fr"].toInt(), -3);
    QCOMPARE(take["last_fr"].toInt(), 4);
    QCOMPARE(take["fr_cnt"].toInt(), 8);
    QCOMPARE(take["pt_fr_cnt"].toInt(), 5);
    QCOMPARE(take["acq"]["res"].toString(), QStringLiteral("16x16"));
    QCOMPARE(take["meta"]["size"].toInt(), 32);
    QCOMPARE(take["meta"]["year_offset"].toInt(), 1672531200); // 2023
    QVERIFY(!take.contains("prtn_fr_cnt"));
    QCOMPARE(m_fix.client().send("GET", "/ssd/takes/take3").status, 404);
    QCOMPARE(m_fix.client().send("GET", "/ssd/takes/take2/acq").status, 404);
}

void TestSimRecordings::openedRecordingGivesItsFrames()
{
    m_fix.open("b \"c\"/d.vesk");
    const Reply reply =
        m_fix.client().send("POST", "/xfer", R"({"type":3,"src":2,"take":1,"start":-3,"cnt":8})");
    QCOMPARE(reply.status, 200);
    QCOMPARE(reply.body.size(), 8 * 288);
    const SceneParams scene = m_fix.camera().openTakeScene(1);
    QCOMPARE(scene.width, 16);
    for (int frame = -3; frame <= 4; ++frame) {
        const qsizetype at = (frame + 3) * 288 + 32;
        for (int y = 0; y < 16; ++y) {
            for (int x = 0; x < 16; ++x)
                QCOMPARE(int(quint8(reply.body[at + y * 16 + x])), int(pixel(scene, frame, x, y)));
        }
    }
}

void TestSimRecordings::frameOutsideIsRefused_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    QTest::newRow("before") << QByteArray(R"({"type":3,"src":2,"take":1,"start":-4,"cnt":1})") << 404;
    QTest::newRow("behind") << QByteArray(R"({"type":3,"src":2,"take":1,"start":4,"cnt":2})") << 404;
    QTest::newRow("none") << QByteArray(R"({"type":3,"src":2,"take":1,"start":0,"cnt":0})") << 400;
    QTest::newRow("not open") << QByteArray(R"({"type":3,"src":2,"take":2,"start":0,"cnt":1})") << 404;
    QTest::newRow("no number") << QByteArray(R"({"type":3,"src":2,"start":0,"cnt":1})") << 404;
}

void TestSimRecordings::frameOutsideIsRefused()
{
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    m_fix.open("b \"c\"/d.vesk");
    QCOMPARE(m_fix.post("/xfer", body), status);
}

void TestSimRecordings::onlyTheAdjustmentIsWritten_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    QTest::newRow("gain") << "/ssd/takes/take1/adjust/gain" << QByteArray("2.5") << 200;
    QTest::newRow("gain out of range") << "/ssd/takes/take1/adjust/gain" << QByteArray("11") << 400;
    QTest::newRow("correction") << "/ssd/takes/take1/acq/corr_mode" << QByteArray("1") << 403;
    QTest::newRow("unknown") << "/ssd/takes/take1/adjust/nothing" << QByteArray("1") << 404;
    QTest::newRow("not open") << "/ssd/takes/take2/adjust/gain" << QByteArray("2.5") << 404;
}

void TestSimRecordings::onlyTheAdjustmentIsWritten()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    m_fix.open("plain.vesk");
    QCOMPARE(m_fix.client().put(path, body), status);
    const QJsonObject take = m_fix.camera().openTakeDescription(1);
    const double gain = take["adjust"]["gain"].toDouble();
    QCOMPARE(gain, status == 200 ? 2.5 : 1.0);
}

void TestSimRecordings::closedRecordingIsGone()
{
    m_fix.open("plain.vesk");
    m_fix.open("plain.vesk");
    QCOMPARE(m_fix.post("/ssd-fclose", "{\"take\":1}"), 200);
    QCOMPARE(m_fix.value("ssd/open_takes").toArray(), QJsonArray({2}));
    QCOMPARE(m_fix.post("/ssd-fclose", "{\"take\":1}"), 404);
    QCOMPARE(m_fix.post("/ssd-fclose", "{\"take\":-1}"), 404);
    QCOMPARE(m_fix.post("/ssd-fclose", "{}"), 404);
    QCOMPARE(m_fix.client().send("GET", "/ssd/takes/take1").status, 404);
    QCOMPARE(m_fix.open("plain.vesk"), 3);
}

void TestSimRecordings::cameraClosesByItself_data()
{
    QTest::addColumn<QJsonObject>("order");
    QTest::addColumn<QJsonArray>("open");
    QTest::newRow("one") << QJsonObject{{"ssd_close", 1}} << QJsonArray({2});
    QTest::newRow("pulled") << QJsonObject{{"ssd", "remove"}} << QJsonArray();
    QTest::newRow("failed") << QJsonObject{{"ssd", "fail"}} << QJsonArray();
    QTest::newRow("another drive") << QJsonObject{{"ssd", "insert"}} << QJsonArray();
    QTest::newRow("full") << QJsonObject{{"ssd", "full"}} << QJsonArray({1, 2});
}

void TestSimRecordings::cameraClosesByItself()
{
    QFETCH(QJsonObject, order);
    QFETCH(QJsonArray, open);
    m_fix.open("plain.vesk");
    m_fix.open("plain.vesk");
    QCOMPARE(m_fix.camera().operate(order), QString());
    QCOMPARE(m_fix.value("ssd/open_takes").toArray(), open);
}

void TestSimRecordings::unknownRecordingIsRefused_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    QTest::newRow("other name") << QByteArray("{\"name\":\"plain\"}") << 404;
    QTest::newRow("no name") << QByteArray("{}") << 404;
    QTest::newRow("quote as it stands") << QByteArray("{\"name\":\"b \"c\"/d.vesk\"}") << 400;
}

void TestSimRecordings::unknownRecordingIsRefused()
{
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    QCOMPARE(m_fix.post("/ssd-fopen", body), status);
    QCOMPARE(m_fix.value("ssd/open_takes").toArray(), QJsonArray());
}

void TestSimRecordings::formatShowsItsProgress()
{
    m_fix.open("plain.vesk");
    QCOMPARE(m_fix.post("/ssd-format", "{\"name\":\"X\"}"), 200);
    QCOMPARE(m_fix.value("ssd/open_takes").toArray(), QJsonArray());
    QCOMPARE(m_fix.number("ssd/progress"), 0);
    m_fix.wait(500ms);
    QCOMPARE(m_fix.number("ssd/progress"), 25);
    QCOMPARE(m_fix.number("ssd/state"), 9);
    m_fix.wait(1500ms);
    QCOMPARE(m_fix.number("ssd/progress"), 0);
    QCOMPARE(m_fix.names(), QStringList());
}

void TestSimRecordings::vanishedDriveAnswersNothing_data()
{
    QTest::addColumn<Route>("route");
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    const QByteArray post = "POST";
    QTest::newRow("list") << Route::SsdLs << post << "/ssd-ls" << QByteArray("{\"long\": 1}") << 409;
    QTest::newRow("open") << Route::SsdFopen << post << "/ssd-fopen"
                          << QByteArray("{\"name\":\"plain.vesk\"}") << 409;
    QTest::newRow("close") << Route::SsdFclose << post << "/ssd-fclose" << QByteArray("{\"take\":1}") << 404;
    QTest::newRow("save") << Route::SsdSave << post << "/ssd-save"
                          << QByteArray(R"({"take":1,"start":0,"cnt":1,"name":"x"})") << 409;
    QTest::newRow("description") << Route::SsdTakes << QByteArray("GET") << "/ssd/takes/take1" << QByteArray()
                                 << 404;
    QTest::newRow("frame") << Route::Xfer << post << "/xfer"
                           << QByteArray(R"({"type":3,"src":2,"take":1,"start":5,"cnt":1})") << 404;
    QTest::newRow("eject") << Route::Command << post << "/ssd-umount" << QByteArray() << 409;
}

void TestSimRecordings::vanishedDriveAnswersNothing()
{
    QFETCH(Route, route);
    QFETCH(QByteArray, method);
    QFETCH(QString, path);
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    m_fix.open("plain.vesk");
    m_fix.camera().setFault(route, {.kind = FaultKind::Vanish, .count = 1});
    QCOMPARE(m_fix.client().send(method, path, body).status, status);
    QCOMPARE(m_fix.number("ssd/state"), 0);
}

void TestSimRecordings::recordingsGoRoundThePartitions()
{
    Config config = m_fix.config();
    config.resolutions = QStringList{"16x16"};
    config.partitions = 3;
    config.partitionOrder = PartitionOrder::Next;
    m_fix.start(config);
    QCOMPARE(m_fix.put("/acq/trig_offset", "10"), 200);
    for (const int expected : {1, 2, 3, 1, 2}) {
        QCOMPARE(m_fix.post("/rec"), 200);
        QCOMPARE(m_fix.number("acq/active_take"), expected);
        QCOMPARE(m_fix.post("/trig"), 200);
        m_fix.wait(1s);
        QCOMPARE(m_fix.post("/del", QStringLiteral("{\"take\":%1}").arg(expected).toUtf8()), 200);
    }
}

void TestSimRecordings::senselessDeedIsRefused_data()
{
    QTest::addColumn<QJsonObject>("order");
    QTest::newRow("closing what is not open") << QJsonObject{{"ssd_close", 1}};
    QTest::newRow("closing nothing") << QJsonObject{{"ssd_close", "plain.vesk"}};
    QTest::newRow("unknown deed") << QJsonObject{{"ssd", "burn"}};
}

void TestSimRecordings::senselessDeedIsRefused()
{
    QFETCH(QJsonObject, order);
    QVERIFY(!m_fix.camera().operate(order).isEmpty());
}

QTEST_GUILESS_MAIN(TestSimRecordings)
#include "tst_sim_recordings.moc"
