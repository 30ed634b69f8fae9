#include "http_client.h"

#include "sim/camera.h"

#include <QJsonArray>
#include <QTest>

using namespace q4sim;
using namespace std::chrono_literals;

class TestSimDevices : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void blackReferenceTakesOneSecond();
    void blackReferenceIsRefusedWhileOneRuns();
    void blackReferenceSlotsRunOut();
    void deletingAllTakesFreesBlackReferenceSlots();
    void lensMovesStepByStep();
    void lensReachesBothEnds();
    void focusIsRefusedWithoutALens();
    void shutterMovesWithinAFifthOfASecond();
    void shutterIsRefused();
    void driveListsItsRecordings();
    void oldFirmwareListsNamesOnly();
    void driveIsUnmounted();
    void driveIsFormatted();
    void formatIsRefused_data();
    void formatIsRefused();
    void cameraWithoutDriveRefusesDriveCommands();

private:
    void start(const Config &config);
    int post(const char *path, const QByteArray &body = {})
    {
        return m_client->post(QString::fromLatin1(path), body);
    }
    QJsonValue value(const char *path) { return m_camera->value(QString::fromLatin1(path)); }
    int number(const char *path) { return value(path).toInt(-1); }

    Config m_config;
    std::shared_ptr<ManualClock> m_clock;
    std::unique_ptr<Camera> m_camera;
    std::unique_ptr<HttpClient> m_client;
};

void TestSimDevices::init()
{
    m_clock = std::make_shared<ManualClock>(1741944413LL * 1000000000);
    m_config = Config();
    m_config.address = QHostAddress(QStringLiteral("127.0.1.45"));
    m_config.discovery = false;
    m_config.blackRefSlots = 2;
    m_config.clock = m_clock;
    start(m_config);
}

void TestSimDevices::start(const Config &config)
{
    cleanup();
    m_camera = std::make_unique<Camera>(config);
    QCOMPARE(m_camera->listen(), QString());
    m_client = std::make_unique<HttpClient>(QStringLiteral("127.0.1.45"));
}

void TestSimDevices::cleanup()
{
    m_client.reset();
    m_camera.reset();
}

void TestSimDevices::blackReferenceTakesOneSecond()
{
    QCOMPARE(number("acq/bref_state"), 1);
    const Reply reply = m_client->send("POST", "/bref");
    QCOMPARE(reply.status, 200);
    QCOMPARE(reply.json()["bref_state"].toInt(), 1 | 2);
    QCOMPARE(number("acq/bref_state"), 1 | 2);
    m_clock->advance(999ms);
    QCOMPARE(number("acq/bref_state"), 1 | 2);
    m_clock->advance(1ms);
    QCOMPARE(number("acq/bref_state"), 0);
}

void TestSimDevices::blackReferenceIsRefusedWhileOneRuns()
{
    QCOMPARE(post("/bref"), 200);
    m_clock->advance(500ms);
    QCOMPARE(post("/bref"), 409);
    m_clock->advance(500ms);
    QCOMPARE(number("acq/bref_state"), 0);
}

void TestSimDevices::blackReferenceSlotsRunOut()
{
    QCOMPARE(post("/bref"), 200);
    m_clock->advance(1s);
    QCOMPARE(post("/bref"), 200);
    QCOMPARE(number("acq/bref_state"), 1 | 2 | 4);
    m_clock->advance(1s);
    QCOMPARE(number("acq/bref_state"), 4);
    QCOMPARE(post("/bref"), 409);
    QCOMPARE(number("acq/bref_state"), 4);
}

void TestSimDevices::deletingAllTakesFreesBlackReferenceSlots()
{
    QCOMPARE(post("/bref"), 200);
    m_clock->advance(1s);
    QCOMPARE(post("/bref"), 200);
    m_clock->advance(1s);
    QCOMPARE(post("/del", "{\"take\":-1}"), 200);
    // The one in use stays valid and keeps its slot.
    QCOMPARE(number("acq/bref_state"), 0);
    QCOMPARE(post("/bref"), 200);
    QCOMPARE(number("acq/bref_state"), 1 | 2 | 4);
}

void TestSimDevices::lensMovesStepByStep()
{
    // Step 400 of 2000 at the start: 0.38 m * 2000 / 1600.
    QCOMPARE(value("lens/focus_dist").toDouble(), 0.48);
    QCOMPARE(post("/focus", "{\"step\":600}"), 200);
    m_clock->advance(300ms);
    // A thousand steps a second: at 700, 0.38 m * 2000 / 1300.
    QCOMPARE(value("lens/focus_dist").toDouble(), 0.58);
    m_clock->advance(10s);
    QCOMPARE(value("lens/focus_dist").toDouble(), 0.76);
    QCOMPARE(post("/focus", "{\"step\":-200}"), 200);
    m_clock->advance(1s);
    // At 800: 0.38 m * 2000 / 1200.
    QCOMPARE(value("lens/focus_dist").toDouble(), 0.63);
}

void TestSimDevices::lensReachesBothEnds()
{
    QCOMPARE(post("/focus", "{\"step\":32767}"), 200);
    m_clock->advance(5s);
    QCOMPARE(value("lens/focus_dist").toDouble(), 65535.0);
    QCOMPARE(post("/focus", "{\"step\":100}"), 200);
    m_clock->advance(5s);
    QCOMPARE(value("lens/focus_dist").toDouble(), 65535.0);
    QCOMPARE(post("/focus", "{\"step\":0}"), 200);
    m_clock->advance(5s);
    QCOMPARE(value("lens/focus_dist").toDouble(), 0.38);
    QCOMPARE(post("/focus", "{\"step\":\"far\"}"), 400);
}

void TestSimDevices::focusIsRefusedWithoutALens()
{
    m_config.hasLens = false;
    start(m_config);
    QCOMPARE(number("lens/state"), 0);
    QCOMPARE(number("features/lens"), 0);
    QCOMPARE(post("/focus", "{\"step\":1}"), 409);
    QCOMPARE(m_client->put("/lens/fstop", "4"), 409);
}

void TestSimDevices::shutterMovesWithinAFifthOfASecond()
{
    QCOMPARE(number("shtr/state"), 0);
    QCOMPARE(post("/shtr", "{\"pos\":1}"), 200);
    m_clock->advance(199ms);
    QCOMPARE(number("shtr/state"), 0);
    m_clock->advance(1ms);
    QCOMPARE(number("shtr/state"), 1);
    QCOMPARE(post("/shtr", "{\"pos\":0}"), 200);
    QCOMPARE(number("shtr/state"), 1);
    m_clock->advance(200ms);
    QCOMPARE(number("shtr/state"), 0);
}

void TestSimDevices::shutterIsRefused()
{
    QCOMPARE(post("/shtr", "{\"pos\":2}"), 400);
    QCOMPARE(post("/shtr", "{}"), 400);
    m_config.hasShutter = false;
    start(m_config);
    QCOMPARE(number("features/shtr"), 0);
    QCOMPARE(post("/shtr", "{\"pos\":1}"), 409);
    m_clock->advance(1s);
    QCOMPARE(number("shtr/state"), 0);
}

void TestSimDevices::driveListsItsRecordings()
{
    QCOMPARE(number("ssd/state"), 3);
    const Reply reply = m_client->send("POST", "/ssd-ls", "{\"long\": 1}");
    QCOMPARE(reply.status, 200);
    const QJsonArray list = reply.json()["ssd-ls"].toArray();
    QVERIFY(list.size() >= 2);
    qint64 sum = 0;
    for (const QJsonValue &entry : list) {
        QVERIFY(!entry["name"].toString().isEmpty());
        QVERIFY(entry["size"].toInteger() > 0);
        QVERIFY(entry["time"].toInteger() > 1700000000);
        sum += entry["size"].toInteger();
    }
    QCOMPARE(value("ssd/used").toString().toLongLong(nullptr, 16), sum);
    QCOMPARE(value("ssd/size").toString().toLongLong(nullptr, 16), 2000000000000LL);
}

void TestSimDevices::oldFirmwareListsNamesOnly()
{
    m_config.firmware = Firmware::Old;
    start(m_config);
    const QJsonArray list = m_client->send("POST", "/ssd-ls", "{\"long\": 1}").json()["ssd-ls"].toArray();
    QVERIFY(list.size() >= 2);
    for (const QJsonValue &entry : list)
        QVERIFY(entry.isString());
    QCOMPARE(post("/ssd-format", "{\"name\":\"NEW\"}"), 404);
}

void TestSimDevices::driveIsUnmounted()
{
    QCOMPARE(post("/ssd-umount"), 200);
    QCOMPARE(number("ssd/state"), 4);
    QCOMPARE(post("/ssd-ls", "{\"long\": 1}"), 409);
    m_clock->advance(500ms);
    QCOMPARE(number("ssd/state"), 6);
    QCOMPARE(post("/ssd-umount"), 409);
}

void TestSimDevices::driveIsFormatted()
{
    QCOMPARE(post("/ssd-format", "{\"name\":\"EMPTY\"}"), 200);
    QCOMPARE(number("ssd/state"), 9);
    QCOMPARE(post("/ssd-umount"), 409);
    m_clock->advance(2s);
    QCOMPARE(number("ssd/state"), 3);
    QCOMPARE(value("ssd/name").toString(), QStringLiteral("EMPTY"));
    QCOMPARE(value("ssd/used").toString(), QStringLiteral("0"));
    QCOMPARE(m_client->send("POST", "/ssd-ls", "{\"long\": 1}").json()["ssd-ls"].toArray(), QJsonArray());
}

void TestSimDevices::formatIsRefused_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("no name") << QByteArray("{}");
    QTest::newRow("number") << QByteArray("{\"name\":1}");
    QTest::newRow("twelve characters") << QByteArray("{\"name\":\"abcdefghijkl\"}");
    QTest::newRow("quote in the name") << QByteArray("{\"name\":\"a\"b\"}");
    QTest::newRow("empty") << QByteArray();
}

void TestSimDevices::formatIsRefused()
{
    QFETCH(QByteArray, body);
    const QJsonObject before = m_camera->status();
    QCOMPARE(post("/ssd-format", body), 400);
    QCOMPARE(m_camera->status(), before);
}

void TestSimDevices::cameraWithoutDriveRefusesDriveCommands()
{
    m_config.hasSsd = false;
    start(m_config);
    QCOMPARE(number("ssd/state"), 0);
    QCOMPARE(post("/ssd-ls", "{\"long\": 1}"), 409);
    QCOMPARE(post("/ssd-umount"), 409);
    QCOMPARE(post("/ssd-format", "{\"name\":\"X\"}"), 409);
}

QTEST_GUILESS_MAIN(TestSimDevices)
#include "tst_sim_devices.moc"
