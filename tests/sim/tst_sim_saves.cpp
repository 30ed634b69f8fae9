#include "drive_fixture.h"

#include <QJsonArray>

using namespace q4sim;
using namespace std::chrono_literals;

class TestSimSaves : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void saveTakesItsTime();
    void savesAreQueuedAndCounted();
    void takenNameGetsANumber();
    void savedRangeKeepsItsNumbers();
    void recordingOutlivesItsTake();
    void olderFirmwareNamesAndCountsNothing();
    void saveIsRefused_data();
    void saveIsRefused();
    void fullDriveTakesNothingMore();
    void failedDriveLosesItsSaves();

private:
    QJsonObject save(int take, int start, int count, const QString &name, int status = 200);

    DriveFixture m_fix{QStringLiteral("127.0.1.76")};
};

void TestSimSaves::init()
{
    m_fix.startWithRecordings();
}

QJsonObject TestSimSaves::save(int take, int start, int count, const QString &name, int status)
{
    const QJsonObject order = {{"take", take}, {"start", start}, {"cnt", count}, {"name", name}};
    const Reply reply = m_fix.client().send("POST", "/ssd-save", QJsonDocument(order).toJson());
    if (reply.status != status)
        qWarning("status %d", reply.status);
    return reply.status == status ? reply.json() : QJsonObject{{"failed", true}};
}

void TestSimSaves::saveTakesItsTime()
{
    // 100 frames of 288 bytes, a byte a microsecond.
    QCOMPARE(save(1, -10, 100, "run"), QJsonObject({{"seq", 1}, {"name", "run.vesk"}}));
    QCOMPARE(m_fix.number("ssd/wr_state"), 1);
    QCOMPARE(m_fix.number("ssd/wr_seq"), 0);
    QCOMPARE(m_fix.value("acq/locked_takes").toArray(), QJsonArray({1}));
    m_fix.wait(7200us);
    QCOMPARE(m_fix.number("ssd/progress"), 25);
    QVERIFY(!m_fix.names().contains("run.vesk"));
    m_fix.wait(21600us);
    QCOMPARE(m_fix.number("ssd/wr_state"), 0);
    QCOMPARE(m_fix.number("ssd/wr_seq"), 1);
    QCOMPARE(m_fix.number("ssd/progress"), 0);
    QCOMPARE(m_fix.value("acq/locked_takes").toArray(), QJsonArray());
    QVERIFY(m_fix.names().contains("run.vesk"));
}

void TestSimSaves::savesAreQueuedAndCounted()
{
    QCOMPARE(save(1, -10, 100, "a")["seq"].toInt(), 1);
    QCOMPARE(save(1, 0, 10, "b")["seq"].toInt(), 2);
    QCOMPARE(save(2, 0, 10, "c")["seq"].toInt(), 3);
    m_fix.wait(28800us);
    QCOMPARE(m_fix.number("ssd/wr_seq"), 1);
    QCOMPARE(m_fix.value("acq/locked_takes").toArray(), QJsonArray({1, 2}));
    m_fix.wait(2880us);
    QCOMPARE(m_fix.number("ssd/wr_seq"), 2);
    QCOMPARE(m_fix.value("acq/locked_takes").toArray(), QJsonArray({2}));
    m_fix.wait(2880us);
    QCOMPARE(m_fix.number("ssd/wr_seq"), 3);
    QCOMPARE(save(2, 0, 1, "d")["seq"].toInt(), 4);
}

void TestSimSaves::takenNameGetsANumber()
{
    QCOMPARE(save(1, 0, 1, "plain")["name"].toString(), QStringLiteral("plain (2).vesk"));
    QCOMPARE(save(1, 0, 1, "plain")["name"].toString(), QStringLiteral("plain (3).vesk"));
}

void TestSimSaves::savedRangeKeepsItsNumbers()
{
    QCOMPARE(save(1, -4, 3, "part")["seq"].toInt(), 1);
    m_fix.wait(1s);
    const int number = m_fix.open("part.vesk");
    const QJsonObject take = m_fix.camera().openTakeDescription(number);
    QCOMPARE(take["first_fr"].toInt(), -4);
    QCOMPARE(take["last_fr"].toInt(), -2);
    const auto frames = [&](int src, int of) {
        const QString body = QStringLiteral(R"({"type":3,"src":%1,"take":%2,"start":-4,"cnt":3})");
        return m_fix.client().send("POST", "/xfer", body.arg(src).arg(of).toUtf8()).body;
    };
    QCOMPARE(frames(2, number).size(), 3 * 288);
    QCOMPARE(frames(2, number), frames(0, 1));
}

void TestSimSaves::recordingOutlivesItsTake()
{
    save(1, 0, 10, "kept");
    m_fix.camera().dropTake(1);
    m_fix.wait(1s);
    const int number = m_fix.open("kept.vesk");
    QCOMPARE(
        m_fix.post("/xfer",
                   QStringLiteral(R"({"type":3,"src":2,"take":%1,"start":0,"cnt":10})").arg(number).toUtf8()),
        200);
}

void TestSimSaves::olderFirmwareNamesAndCountsNothing()
{
    Config config = m_fix.config();
    config.resolutions = QStringList{"16x16"};
    config.takes = {{.first = 0, .last = 99}};
    config.driveBytesPerSecond = 1000000;
    config.features["ssd-save"] = 1;
    m_fix.start(config);
    QVERIFY(m_fix.value("ssd/wr_seq").isUndefined());
    QCOMPARE(m_fix.client().send("POST", "/ssd-save", R"({"take":1,"start":0,"cnt":100})").json(),
             QJsonObject());
    QCOMPARE(m_fix.number("ssd/wr_state"), 1);
    QCOMPARE(m_fix.post("/ssd-save", R"({"take":1,"start":0,"cnt":100})"), 409);
    m_fix.wait(28800us);
    QCOMPARE(m_fix.number("ssd/wr_state"), 0);
    QVERIFY(m_fix.names().contains("take1.vesk"));
    QCOMPARE(m_fix.post("/ssd-save", R"({"take":1,"start":0,"cnt":100})"), 200);
    m_fix.wait(1s);
    QVERIFY(m_fix.names().contains("take1 (2).vesk"));
}

void TestSimSaves::saveIsRefused_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    const auto order = [](int take, int start, int count, const QByteArray &name) {
        return QStringLiteral(R"({"take":%1,"start":%2,"cnt":%3,"name":"%4"})")
            .arg(take)
            .arg(start)
            .arg(count)
            .arg(QString::fromUtf8(name))
            .toUtf8();
    };
    QTest::newRow("no such take") << order(3, 0, 1, "x") << 404;
    QTest::newRow("frames before") << order(1, -11, 1, "x") << 404;
    QTest::newRow("frames behind") << order(1, 89, 2, "x") << 404;
    QTest::newRow("no frames") << order(1, 0, 0, "x") << 400;
    QTest::newRow("no name") << order(1, 0, 1, "") << 400;
    QTest::newRow("slash") << order(1, 0, 1, "a/b") << 400;
    QTest::newRow("255 bytes") << order(1, 0, 1, QByteArray(250, 'x')) << 200;
    QTest::newRow("256 bytes") << order(1, 0, 1, QByteArray(251, 'x')) << 400;
    QTest::newRow("quote as it stands") << order(1, 0, 1, "a\"b") << 400;
    QTest::newRow("no number") << QByteArray(R"({"take":"1","start":0,"cnt":1,"name":"x"})") << 400;
}

void TestSimSaves::saveIsRefused()
{
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    QCOMPARE(m_fix.post("/ssd-save", body), status);
    QCOMPARE(m_fix.number("ssd/wr_state"), status == 200 ? 1 : 0);
}

void TestSimSaves::fullDriveTakesNothingMore()
{
    save(2, 0, 10, "before");
    QCOMPARE(m_fix.camera().operate({{"ssd", "full"}}), QString());
    QCOMPARE(save(1, 0, 1, "x", 507)["error"].toString(), QStringLiteral("the drive is full"));
    m_fix.wait(1s);
    QVERIFY(m_fix.names().contains("before.vesk"));
    QCOMPARE(m_fix.text("ssd/used"), m_fix.text("ssd/size"));
    QCOMPARE(m_fix.post("/ssd-format", "{\"name\":\"X\"}"), 200);
    m_fix.wait(2s);
    QCOMPARE(save(1, 0, 1, "x")["seq"].toInt(), 2);
}

void TestSimSaves::failedDriveLosesItsSaves()
{
    save(1, 0, 10, "lost");
    QCOMPARE(m_fix.camera().operate({{"ssd", "fail"}}), QString());
    QCOMPARE(m_fix.number("ssd/state"), 7);
    QCOMPARE(m_fix.number("ssd/wr_state"), 0);
    QCOMPARE(m_fix.value("acq/locked_takes").toArray(), QJsonArray());
    QCOMPARE(m_fix.post("/ssd-ls", "{\"long\": 1}"), 409);
    QCOMPARE(m_fix.post("/ssd-fopen", "{\"name\":\"plain.vesk\"}"), 409);
    QVERIFY(save(1, 0, 10, "x", 409).contains("error"));
    m_fix.wait(1s);
    QCOMPARE(m_fix.number("ssd/wr_seq"), 0);
    m_fix.camera().operate({{"ssd", "insert"}});
    m_fix.wait(1s);
    QCOMPARE(m_fix.names(), QStringList({"b \"c\"/d.vesk", "plain.vesk"}));
}

QTEST_GUILESS_MAIN(TestSimSaves)
#include "tst_sim_saves.moc"
