#include "http_client.h"

#include "sim/camera.h"

#include <QJsonArray>
#include <QTest>

using namespace q4sim;

class TestSimControl : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void faultIsSetAndCleared();
    void faultTakesItsNumbers();
    void unknownFaultsAreRefused_data();
    void unknownFaultsAreRefused();
    void logShowsWhatWasReceived();
    void controlIsNotLogged();
    void stateShowsTheTruthUnderAFault();
    void valueIsForcedAndFreed();
    void hardwareIsPluggedAndPulled();
    void senselessHardwareIsRefused_data();
    void senselessHardwareIsRefused();
    void unknownControlsAre404();

private:
    std::unique_ptr<Camera> m_camera;
    std::unique_ptr<HttpClient> m_client;
};

void TestSimControl::init()
{
    Config config;
    config.address = QHostAddress(QStringLiteral("127.0.1.55"));
    config.discovery = false;
    config.clock = std::make_shared<ManualClock>(1741944413LL * 1000000000);
    m_camera = std::make_unique<Camera>(config);
    QCOMPARE(m_camera->listen(), QString());
    m_client = std::make_unique<HttpClient>(QStringLiteral("127.0.1.55"));
}

void TestSimControl::cleanup()
{
    m_client.reset();
    m_camera.reset();
}

void TestSimControl::faultIsSetAndCleared()
{
    QCOMPARE(m_client->post("/sim/fault", R"({"on":"status","kind":"http-500"})"), 200);
    QCOMPARE(m_client->get().status, 500);
    QCOMPARE(m_client->get().status, 500);
    QCOMPARE(m_client->send("DELETE", "/sim/fault").status, 200);
    QCOMPARE(m_client->get().status, 200);
}

void TestSimControl::faultTakesItsNumbers()
{
    QCOMPARE(m_client->post("/sim/fault",
                            R"({"on":"xfer","kind":"lying-sizes","count":1,"headers":{"Img-Width":7}})"),
             200);
    const QByteArray live = R"({"type":3,"src":1})";
    QCOMPARE(m_client->send("POST", "/xfer", live).header("Img-Width"), QByteArray("7"));
    QCOMPARE(m_client->send("POST", "/xfer", live).header("Img-Width"), QByteArray("640"));
    QCOMPARE(m_client->post("/sim/fault", R"({"on":"xfer","kind":"short-body","bytes":3})"), 200);
    QCOMPARE(m_client->send("POST", "/xfer", live).body.size(), 32 + 640 * 480 - 3);
    QCOMPARE(m_client->post("/sim/fault", R"({"on":"status","kind":"missing-keys","keys":["lens"]})"), 200);
    QVERIFY(!m_client->get().json().contains("lens"));
    QCOMPARE(m_client->post("/sim/fault", R"({"on":"q4fw","kind":"close-upload","percent":90})"), 200);
    QCOMPARE(m_client->post("/q4fw", QByteArray(3000000, 'x')), 0);
    const QJsonObject upload = m_client->get("/sim/state").json()["upload"].toObject();
    QCOMPARE(upload["expected"].toInt(), 3000000);
    QVERIFY2(upload["received"].toInt() >= 2700000 && upload["received"].toInt() < 3000000,
             qPrintable(QString::number(upload["received"].toInt())));
}

void TestSimControl::unknownFaultsAreRefused_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("no JSON") << QByteArray("status");
    QTest::newRow("no route") << QByteArray(R"({"kind":"delay"})");
    QTest::newRow("unknown route") << QByteArray(R"({"on":"frame","kind":"delay"})");
    QTest::newRow("unknown kind") << QByteArray(R"({"on":"xfer","kind":"explode"})");
}

void TestSimControl::unknownFaultsAreRefused()
{
    QFETCH(QByteArray, body);
    const Reply reply = m_client->send("POST", "/sim/fault", body);
    QCOMPARE(reply.status, 400);
    QVERIFY(reply.json()["error"].toString().startsWith(u"unknown "));
}

void TestSimControl::logShowsWhatWasReceived()
{
    m_client->put("/acq/fr_clks", "200000");
    m_client->post("/nothing", "x");
    const QJsonArray log = m_client->get("/sim/log").json()["requests"].toArray();
    QCOMPARE(log.size(), 2);
    QCOMPARE(log[0]["method"].toString(), QStringLiteral("PUT"));
    QCOMPARE(log[0]["path"].toString(), QStringLiteral("/acq/fr_clks"));
    QCOMPARE(log[0]["body"].toString(), QStringLiteral("200000"));
    QCOMPARE(log[0]["headers"]["content-type"].toString(), QStringLiteral("application/json"));
    QCOMPARE(log[0]["headers"]["user-agent"].toString(), QStringLiteral("test"));
    QCOMPARE(log[0]["time_ns"].toInteger(), 1741944413LL * 1000000000);
    QCOMPARE(log[1]["path"].toString(), QStringLiteral("/nothing"));
    QCOMPARE(m_client->send("DELETE", "/sim/log").status, 200);
    QCOMPARE(m_client->get("/sim/log").json()["requests"].toArray(), QJsonArray());
}

void TestSimControl::controlIsNotLogged()
{
    m_client->get("/sim/state");
    m_client->get("/sim/log");
    QCOMPARE(m_camera->requests().size(), 0);
}

void TestSimControl::stateShowsTheTruthUnderAFault()
{
    QCOMPARE(m_client->post("/sim/fault", R"({"on":"status","kind":"invalid-json"})"), 200);
    m_client->get();
    const QJsonObject state = m_client->get("/sim/state").json();
    QCOMPARE(state["status"].toObject(), m_camera->status());
    QCOMPARE(state["requests"].toInt(), 1);
    QCOMPARE(state["frame"].toInteger(-1), m_camera->liveFrame());
}

void TestSimControl::valueIsForcedAndFreed()
{
    QCOMPARE(m_client->post("/sim/force", R"({"path":"camera/fw_state","value":2})"), 200);
    QCOMPARE(m_client->get().json()["camera"]["fw_state"].toInt(), 2);
    QCOMPARE(m_client->post("/sim/force", R"({"path":"camera/fw_state"})"), 200);
    QCOMPARE(m_client->get().json()["camera"]["fw_state"].toInt(-1), 0);
    QCOMPARE(m_client->post("/sim/force", R"({"value":2})"), 400);
}

void TestSimControl::hardwareIsPluggedAndPulled()
{
    QCOMPARE(m_client->post("/sim/hardware", R"({"lens":"remove","ssd":"remove","sync_fps":100})"), 200);
    QCOMPARE(m_camera->value("lens/state").toInt(-1), 0);
    QCOMPARE(m_camera->value("ssd/state").toInt(-1), 0);
    QCOMPARE(m_client->put("/acq/fsync_mode", "1"), 200);
    QCOMPARE(m_camera->value("acq/fsync_state").toInt(), 1);
    QCOMPARE(m_client->post("/sim/hardware", R"({"lens":"mount","af_switch":1})"), 200);
    QCOMPARE(m_camera->value("lens/state").toInt(-1), 1);
    QCOMPARE(m_camera->value("lens/af_switch").toInt(-1), 1);
}

void TestSimControl::senselessHardwareIsRefused_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("no JSON") << QByteArray("lens");
    QTest::newRow("list") << QByteArray("[]");
    QTest::newRow("unknown thing") << QByteArray(R"({"ssd":"remove","tripod":"remove"})");
    QTest::newRow("unknown deed") << QByteArray(R"({"ssd":"remove","lens":"polish"})");
    QTest::newRow("deed of another") << QByteArray(R"({"ssd":"remove","shutter":"remove"})");
    QTest::newRow("number for a deed") << QByteArray(R"({"ssd":"remove","lens":1})");
    QTest::newRow("text for a number") << QByteArray(R"({"ssd":"remove","af_switch":"manual"})");
    QTest::newRow("no such take") << QByteArray(R"({"ssd":"remove","drop":1})");
    QTest::newRow("text for a take") << QByteArray(R"({"ssd":"remove","lock":"1"})");
    QTest::newRow("negative signal") << QByteArray(R"({"ssd":"remove","sync_fps":-1})");
}

void TestSimControl::senselessHardwareIsRefused()
{
    QFETCH(QByteArray, body);
    const QJsonObject before = m_camera->status();
    const Reply reply = m_client->send("POST", "/sim/hardware", body);
    QCOMPARE(reply.status, 400);
    QVERIFY(!reply.json()["error"].toString().isEmpty());
    QCOMPARE(m_camera->status(), before);
}

void TestSimControl::unknownControlsAre404()
{
    QCOMPARE(m_client->get("/sim/nothing").status, 404);
    QCOMPARE(m_client->post("/sim/log"), 404);
    QCOMPARE(m_client->get("/sim/fault").status, 404);
}

QTEST_GUILESS_MAIN(TestSimControl)
#include "tst_sim_control.moc"
