#include "http_client.h"

#include "sim/camera.h"

#include <QJsonArray>
#include <QTest>

using namespace q4sim;
using namespace std::chrono_literals;

namespace
{

constexpr int standby = 1;
constexpr int recording = 2;
constexpr int triggered = 3;
constexpr int framesPerPartition = 1000;

} // namespace

class TestSimRecording : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void recordFillsTheFirstFreePartition();
    void triggerEndsTheTakeAfterItsPostTriggerFrames();
    void shortRecordingHoldsLessThanAPartition();
    void secondTakeGoesToTheNextPartition();
    void recordingGoesOnWithTheNextPartitionInContinuousMode();
    void continuousModeEndsInStandbyWhenAllIsFull();
    void recordIsRefusedWhenAllPartitionsAreSaved();
    void abortDropsTheTake();
    void commandsInTheWrongStateAreRefused_data();
    void commandsInTheWrongStateAreRefused();
    void settingsAreHeldWhileTriggered();
    void resolutionMayChangeWhileRecording();
    void deleteFreesOnePartition();
    void deleteAllSparesLockedTakes();
    void deleteIsRefused_data();
    void deleteIsRefused();
    void partitioningDropsTheTakes();
    void partitioningIsRefusedWithALockedTake();
    void partitioningWhileRecordingBeginsAnew();
    void frameRateChangeWhileTriggeredKeepsTheFrameCount();

private:
    int post(const char *path, const QByteArray &body = {})
    {
        return m_client->post(QString::fromLatin1(path), body);
    }
    int number(const char *path) { return m_camera->value(QString::fromLatin1(path)).toInt(-1); }
    QJsonArray list(const char *path) { return m_camera->value(QString::fromLatin1(path)).toArray(); }
    void recordTake()
    {
        QCOMPARE(post("/rec"), 200);
        m_clock->advance(2s);
        QCOMPARE(post("/trig"), 200);
        m_clock->advance(1s);
    }

    std::shared_ptr<ManualClock> m_clock;
    std::unique_ptr<Camera> m_camera;
    std::unique_ptr<HttpClient> m_client;
};

// Four partitions of 1000 frames of 320x120, 1000 frames a second, 400 of them after the trigger.
void TestSimRecording::init()
{
    m_clock = std::make_shared<ManualClock>(1741944413LL * 1000000000);
    Config config;
    config.address = QHostAddress(QStringLiteral("127.0.1.40"));
    config.discovery = false;
    config.resolutions = QStringList{"320x120", "320x240"};
    config.partitions = 4;
    config.memoryBytes = 4LL * framesPerPartition * (32 + 320 * 120);
    config.clock = m_clock;
    m_camera = std::make_unique<Camera>(config);
    QCOMPARE(m_camera->listen(), QString());
    m_client = std::make_unique<HttpClient>(QStringLiteral("127.0.1.40"));
    QCOMPARE(m_client->put("/acq/trig_offset", "400"), 200);
    QCOMPARE(number("takes/take1/prtn_fr_cnt"), framesPerPartition);
}

void TestSimRecording::cleanup()
{
    m_client.reset();
    m_camera.reset();
}

void TestSimRecording::recordFillsTheFirstFreePartition()
{
    QCOMPARE(number("acq/state"), standby);
    QCOMPARE(number("acq/active_take"), 0);
    QCOMPARE(post("/rec"), 200);
    QCOMPARE(number("acq/state"), recording);
    QCOMPARE(number("acq/active_take"), 1);
    QCOMPARE(number("takes/take1/fr_cnt"), 0);
    m_clock->advance(250ms);
    QCOMPARE(number("takes/take1/fr_cnt"), 250);
    m_clock->advance(1h);
    QCOMPARE(number("acq/state"), recording);
    QCOMPARE(number("takes/take1/fr_cnt"), framesPerPartition);
}

void TestSimRecording::triggerEndsTheTakeAfterItsPostTriggerFrames()
{
    QCOMPARE(post("/rec"), 200);
    m_clock->advance(2s);
    QCOMPARE(post("/trig"), 200);
    QCOMPARE(number("acq/state"), triggered);
    m_clock->advance(399ms);
    QCOMPARE(number("acq/state"), triggered);
    QCOMPARE(list("acq/saved_takes"), QJsonArray());
    m_clock->advance(1ms);
    QCOMPARE(number("acq/state"), standby);
    QCOMPARE(number("acq/active_take"), 0);
    QCOMPARE(list("acq/saved_takes"), QJsonArray({1}));
    // The ring holds the 400 frames from the trigger on and the 600 before it.
    QCOMPARE(number("takes/take1/first_fr"), -600);
    QCOMPARE(number("takes/take1/last_fr"), 399);
    QCOMPARE(number("takes/take1/fr_cnt"), 1000);
}

void TestSimRecording::shortRecordingHoldsLessThanAPartition()
{
    QCOMPARE(post("/rec"), 200);
    m_clock->advance(50ms);
    QCOMPARE(post("/trig"), 200);
    m_clock->advance(400ms);
    QCOMPARE(number("takes/take1/first_fr"), -50);
    QCOMPARE(number("takes/take1/last_fr"), 399);
    QCOMPARE(number("takes/take1/fr_cnt"), 450);
}

void TestSimRecording::secondTakeGoesToTheNextPartition()
{
    recordTake();
    QCOMPARE(post("/rec"), 200);
    QCOMPARE(number("acq/active_take"), 2);
    QCOMPARE(post("/trig"), 200);
    m_clock->advance(1s);
    QCOMPARE(list("acq/saved_takes"), QJsonArray({1, 2}));
}

void TestSimRecording::recordingGoesOnWithTheNextPartitionInContinuousMode()
{
    QCOMPARE(m_client->put("/acq/mode", "1"), 200);
    recordTake();
    QCOMPARE(list("acq/saved_takes"), QJsonArray({1}));
    QCOMPARE(number("acq/state"), recording);
    QCOMPARE(number("acq/active_take"), 2);
    // Since the end of the first take, 400 ms after its trigger, 600 ms have passed.
    QCOMPARE(post("/trig"), 200);
    m_clock->advance(400ms);
    QCOMPARE(list("acq/saved_takes"), QJsonArray({1, 2}));
    QCOMPARE(post("/abort"), 200);
    QCOMPARE(post("/del", "{\"take\":1}"), 200);
    QCOMPARE(post("/rec"), 200);
    QCOMPARE(number("acq/active_take"), 1);
}

void TestSimRecording::continuousModeEndsInStandbyWhenAllIsFull()
{
    QCOMPARE(m_client->put("/acq/mode", "1"), 200);
    QCOMPARE(post("/rec"), 200);
    for (int n = 1; n <= 4; ++n) {
        QCOMPARE(number("acq/active_take"), n);
        QCOMPARE(post("/trig"), 200);
        m_clock->advance(400ms);
    }
    QCOMPARE(list("acq/saved_takes"), QJsonArray({1, 2, 3, 4}));
    QCOMPARE(number("acq/state"), standby);
    QCOMPARE(number("acq/active_take"), 0);
}

void TestSimRecording::recordIsRefusedWhenAllPartitionsAreSaved()
{
    for (int n = 0; n < 4; ++n)
        recordTake();
    QCOMPARE(post("/rec"), 409);
    QCOMPARE(number("acq/state"), standby);
}

void TestSimRecording::abortDropsTheTake()
{
    QCOMPARE(post("/rec"), 200);
    QCOMPARE(post("/trig"), 200);
    m_clock->advance(100ms);
    QCOMPARE(post("/abort"), 200);
    QCOMPARE(number("acq/state"), standby);
    m_clock->advance(10s);
    QCOMPARE(list("acq/saved_takes"), QJsonArray());
    QCOMPARE(post("/rec"), 200);
    QCOMPARE(number("acq/active_take"), 1);
}

void TestSimRecording::commandsInTheWrongStateAreRefused_data()
{
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QString>("command");
    QTest::addColumn<int>("state");
    QTest::newRow("trigger in standby") << QStringList() << "/trig" << standby;
    QTest::newRow("abort in standby") << QStringList() << "/abort" << standby;
    QTest::newRow("record while recording") << QStringList("/rec") << "/rec" << recording;
    QTest::newRow("record while triggered") << QStringList({"/rec", "/trig"}) << "/rec" << triggered;
    QTest::newRow("trigger while triggered") << QStringList({"/rec", "/trig"}) << "/trig" << triggered;
    QTest::newRow("black reference while triggered")
        << QStringList({"/rec", "/trig"}) << "/bref" << triggered;
}

void TestSimRecording::commandsInTheWrongStateAreRefused()
{
    QFETCH(QStringList, before);
    QFETCH(QString, command);
    QFETCH(int, state);
    for (const QString &path : before)
        QCOMPARE(m_client->post(path), 200);
    const QJsonObject status = m_camera->status();
    QCOMPARE(m_client->post(command), 409);
    QCOMPARE(m_camera->status(), status);
    QCOMPARE(number("acq/state"), state);
}

void TestSimRecording::settingsAreHeldWhileTriggered()
{
    QCOMPARE(post("/rec"), 200);
    QCOMPARE(post("/trig"), 200);
    QCOMPARE(m_client->put("/acq/res", "\"320x240\""), 409);
    QCOMPARE(m_client->put("/acq/trig_offset", "1"), 409);
    QCOMPARE(m_client->put("/acq/prtn_cnt", "2"), 409);
    QCOMPARE(post("/prtn", "{\"cnt\":2}"), 409);
    QCOMPARE(m_camera->value("acq/res").toString(), QStringLiteral("320x120"));
    QCOMPARE(number("acq/trig_offset"), 400);
    QCOMPARE(number("acq/prtn_cnt"), 4);
}

void TestSimRecording::resolutionMayChangeWhileRecording()
{
    QCOMPARE(post("/rec"), 200);
    m_clock->advance(100ms);
    QCOMPARE(m_client->put("/acq/res", "\"320x240\""), 200);
    QCOMPARE(number("acq/state"), recording);
    QCOMPARE(number("takes/take1/fr_cnt"), 0);
    m_clock->advance(30ms);
    QCOMPARE(number("takes/take1/fr_cnt"), 30);
}

void TestSimRecording::deleteFreesOnePartition()
{
    recordTake();
    recordTake();
    QCOMPARE(post("/del", "{\"take\":1}"), 200);
    QCOMPARE(list("acq/saved_takes"), QJsonArray({2}));
    QCOMPARE(post("/rec"), 200);
    QCOMPARE(number("acq/active_take"), 1);
}

void TestSimRecording::deleteAllSparesLockedTakes()
{
    recordTake();
    recordTake();
    recordTake();
    m_camera->setTakeLocked(2, true);
    QCOMPARE(list("acq/locked_takes"), QJsonArray({2}));
    QCOMPARE(post("/del", "{\"take\":-1}"), 200);
    QCOMPARE(list("acq/saved_takes"), QJsonArray({2}));
    m_camera->setTakeLocked(2, false);
    QCOMPARE(post("/del", "{\"take\":-1}"), 200);
    QCOMPARE(list("acq/saved_takes"), QJsonArray());
}

void TestSimRecording::deleteIsRefused_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    QTest::newRow("empty partition") << QByteArray("{\"take\":2}") << 404;
    QTest::newRow("no partition") << QByteArray("{\"take\":5}") << 404;
    QTest::newRow("zero") << QByteArray("{\"take\":0}") << 404;
    QTest::newRow("locked") << QByteArray("{\"take\":1}") << 409;
    QTest::newRow("text") << QByteArray("{\"take\":\"1\"}") << 400;
    QTest::newRow("fraction") << QByteArray("{\"take\":1.5}") << 400;
    QTest::newRow("beyond 32 bits") << QByteArray("{\"take\":4294967297}") << 400;
    QTest::newRow("no key") << QByteArray("{}") << 400;
    QTest::newRow("empty") << QByteArray() << 400;
}

void TestSimRecording::deleteIsRefused()
{
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    recordTake();
    m_camera->setTakeLocked(1, true);
    QCOMPARE(post("/del", body), status);
    QCOMPARE(list("acq/saved_takes"), QJsonArray({1}));
}

void TestSimRecording::partitioningDropsTheTakes()
{
    recordTake();
    recordTake();
    QCOMPARE(post("/prtn", "{\"cnt\":2}"), 200);
    QCOMPARE(number("acq/prtn_cnt"), 2);
    QCOMPARE(list("acq/saved_takes"), QJsonArray());
    QCOMPARE(number("takes/take1/prtn_fr_cnt"), 2 * framesPerPartition);
    QCOMPARE(post("/prtn", "{\"cnt\":0}"), 400);
    QCOMPARE(post("/prtn", "{\"cnt\":1025}"), 400);
    QCOMPARE(number("acq/prtn_cnt"), 2);
}

void TestSimRecording::partitioningIsRefusedWithALockedTake()
{
    recordTake();
    recordTake();
    m_camera->setTakeLocked(1, true);
    QCOMPARE(post("/prtn", "{\"cnt\":2}"), 409);
    QCOMPARE(number("acq/prtn_cnt"), 4);
    QCOMPARE(list("acq/saved_takes"), QJsonArray({1, 2}));
}

void TestSimRecording::partitioningWhileRecordingBeginsAnew()
{
    QCOMPARE(post("/rec"), 200);
    m_clock->advance(700ms);
    QCOMPARE(post("/prtn", "{\"cnt\":8}"), 200);
    QCOMPARE(number("acq/state"), recording);
    QCOMPARE(number("acq/active_take"), 1);
    QCOMPARE(number("takes/take1/fr_cnt"), 0);
    m_clock->advance(1s);
    QCOMPARE(number("takes/take1/fr_cnt"), framesPerPartition / 2);
}

void TestSimRecording::frameRateChangeWhileTriggeredKeepsTheFrameCount()
{
    QCOMPARE(post("/rec"), 200);
    m_clock->advance(2s);
    QCOMPARE(post("/trig"), 200);
    m_clock->advance(200ms);
    // Half as fast: the 200 frames that are left take 400 ms.
    QCOMPARE(m_client->put("/acq/fr_clks", "200000"), 200);
    m_clock->advance(399ms);
    QCOMPARE(number("acq/state"), triggered);
    m_clock->advance(1ms);
    QCOMPARE(number("acq/state"), standby);
    QCOMPARE(number("takes/take1/fr_cnt"), 1000);
}

QTEST_GUILESS_MAIN(TestSimRecording)
#include "tst_sim_recording.moc"
