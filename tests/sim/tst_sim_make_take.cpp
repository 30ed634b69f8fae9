#include "camera_fixture.h"

#include <QJsonArray>

using namespace q4sim;
using namespace std::chrono_literals;

// Takes that are made without recording.
class TestSimMakeTake : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void madeTakeIsSavedAtOnce();
    void madeTakeHasTheOrderedRange_data();
    void madeTakeHasTheOrderedRange();
    void madeTakeHasTheOrderedRate_data();
    void madeTakeHasTheOrderedRate();
    void takeGoesIntoTheOrderedPartition();
    void recordingPartitionTakesNoOther();
    void badOrdersAreRefused_data();
    void badOrdersAreRefused();
    void takesAreThereAtStart();
    void takesThatDoNotFitPreventTheStart();

private:
    const QJsonObject take(int number) // const, so that take(1)["a"]["b"] reads and does not insert
    {
        const QString name = QStringLiteral("take%1").arg(number);
        return m_fix.client().get(QStringLiteral("/takes/") + name).json()["takes"][name].toObject();
    }
    Reply make(const QByteArray &json) { return m_fix.client().send("POST", "/sim/take", json); }
    QJsonArray list(const char *path) { return m_fix.value(path).toArray(); }

    CameraFixture m_fix{QStringLiteral("127.0.1.83")};
};

// Four partitions of 1000 frames of 320x120, 1000 frames a second, 400 of them after the trigger.
void TestSimMakeTake::init()
{
    Config config = m_fix.config();
    config.resolutions = QStringList{"320x120", "320x240"};
    config.memoryBytes = 4LL * 1000 * (32 + 320 * 120);
    m_fix.start(config);
    QCOMPARE(m_fix.put("/acq/trig_offset", "400"), 200);
}

void TestSimMakeTake::madeTakeIsSavedAtOnce()
{
    const Reply reply = make("{}");
    QCOMPARE(reply.status, 200);
    QCOMPARE(reply.json(), QJsonObject({{"take", 1}}));
    QCOMPARE(list("acq/saved_takes"), QJsonArray({1}));
    QCOMPARE(list("acq/locked_takes"), QJsonArray());
    QCOMPARE(m_fix.number("acq/active_take"), 0);
    const QJsonObject told = take(1);
    QCOMPARE(told["first_fr"], QJsonValue(-100));
    QCOMPARE(told["last_fr"], QJsonValue(99));
    QCOMPARE(told["fr_cnt"], QJsonValue(200));
    QCOMPARE(told["pt_fr_cnt"], QJsonValue(100));
    QCOMPARE(told["prtn_fr_cnt"], QJsonValue(1000));
    QCOMPARE(told["acq"]["fr_rate"], QJsonValue(1000));
    QCOMPARE(told.size(), 6 + 5);
}

void TestSimMakeTake::madeTakeHasTheOrderedRange_data()
{
    QTest::addColumn<qint64>("first");
    QTest::addColumn<qint64>("last");
    QTest::addColumn<qint64>("count");
    QTest::addColumn<qint64>("postTrigger");
    QTest::newRow("one frame") << qint64(0) << qint64(0) << qint64(1) << qint64(1);
    QTest::newRow("before the trigger") << qint64(-9) << qint64(-5) << qint64(5) << qint64(0);
    QTest::newRow("behind the trigger") << qint64(5) << qint64(9) << qint64(5) << qint64(5);
    QTest::newRow("more than the partition") << qint64(-1000) << qint64(1999) << qint64(3000) << qint64(2000);
    QTest::newRow("beyond 31 bits") << qint64(-3000000000) << qint64(4000000000) << qint64(7000000001)
                                    << qint64(4000000001);
}

void TestSimMakeTake::madeTakeHasTheOrderedRange()
{
    QFETCH(qint64, first);
    QFETCH(qint64, last);
    QFETCH(qint64, count);
    QFETCH(qint64, postTrigger);
    QString error;
    QVERIFY2(m_fix.camera().makeTake({.first = first, .last = last}, &error) == 1, qPrintable(error));
    const QJsonObject told = take(1);
    QCOMPARE(told["first_fr"].toInteger(), first);
    QCOMPARE(told["last_fr"].toInteger(), last);
    QCOMPARE(told["fr_cnt"].toInteger(), count);
    QCOMPARE(told["pt_fr_cnt"].toInteger(), postTrigger);
    QCOMPARE(told["prtn_fr_cnt"].toInteger(), std::max<qint64>(count, 1000));
}

void TestSimMakeTake::madeTakeHasTheOrderedRate_data()
{
    QTest::addColumn<QByteArray>("rate");
    QTest::addColumn<int>("frClks");
    // 100 MHz by the rate, to the nearest clock.
    QTest::newRow("23.976") << QByteArray("23.976") << 4170838;
    QTest::newRow("59.94") << QByteArray("59.94") << 1668335;
    QTest::newRow("250000") << QByteArray("250000") << 400;
    QTest::newRow("a tenth") << QByteArray("0.1") << 1000000000;
}

void TestSimMakeTake::madeTakeHasTheOrderedRate()
{
    QFETCH(QByteArray, rate);
    QFETCH(int, frClks);
    QCOMPARE(make("{\"rate\":" + rate + ",\"res\":\"64x48\"}").status, 200);
    QCOMPARE(take(1)["acq"]["fr_rate"].toDouble(), rate.toDouble());
    QCOMPARE(take(1)["acq"]["fr_clks"].toInt(), frClks);
    QCOMPARE(take(1)["acq"]["res"], QJsonValue("64x48"));
    QCOMPARE(m_fix.value("acq/fr_rate"), QJsonValue(1000));
}

void TestSimMakeTake::takeGoesIntoTheOrderedPartition()
{
    QCOMPARE(make(R"({"take":3,"locked":true})").json(), QJsonObject({{"take", 3}}));
    QCOMPARE(list("acq/saved_takes"), QJsonArray({3}));
    QCOMPARE(list("acq/locked_takes"), QJsonArray({3}));
    QCOMPARE(make("{}").json(), QJsonObject({{"take", 1}}));
    QCOMPARE(make("{}").json(), QJsonObject({{"take", 2}}));
    QCOMPARE(make("{}").json(), QJsonObject({{"take", 4}}));
    QCOMPARE(make("{}").json(), QJsonObject({{"error", "no free partition"}}));
}

void TestSimMakeTake::recordingPartitionTakesNoOther()
{
    QCOMPARE(m_fix.post("/rec"), 200);
    QCOMPARE(make(R"({"take":1})").status, 400);
    QCOMPARE(make("{}").json(), QJsonObject({{"take", 2}}));
    QCOMPARE(m_fix.post("/trig"), 200);
    m_fix.wait(1s);
    QCOMPARE(list("acq/saved_takes"), QJsonArray({1, 2}));
}

void TestSimMakeTake::badOrdersAreRefused_data()
{
    QTest::addColumn<QByteArray>("order");
    QTest::newRow("no JSON") << QByteArray("take");
    QTest::newRow("list") << QByteArray("[]");
    QTest::newRow("unknown key") << QByteArray(R"({"frames":5})");
    QTest::newRow("no such partition") << QByteArray(R"({"take":5})");
    QTest::newRow("negative partition") << QByteArray(R"({"take":-1})");
    QTest::newRow("no frames") << QByteArray(R"({"first":1,"last":0})");
    QTest::newRow("half a frame") << QByteArray(R"({"first":-1.5})");
    QTest::newRow("text for a number") << QByteArray(R"({"last":"5"})");
    QTest::newRow("rate below its range") << QByteArray(R"({"rate":0.01})");
    QTest::newRow("text for a rate") << QByteArray(R"({"rate":"60"})");
    QTest::newRow("odd resolution") << QByteArray(R"({"res":"321x120"})");
    QTest::newRow("unknown scene") << QByteArray(R"({"scene":"beach"})");
    QTest::newRow("code beyond 8 bits") << QByteArray(R"({"scene":"plain","code":256})");
    QTest::newRow("change without a frame") << QByteArray(R"({"changes":[{"x":5}]})");
    QTest::newRow("change outside of the picture") << QByteArray(R"({"changes":[{"frame":1,"x":320}]})");
    QTest::newRow("before 1970") << QByteArray(R"({"trigger_ns":1000000000,"first":-1001})");
    QTest::newRow("beyond 2199") << QByteArray(R"({"rate":0.1,"last":600000000})");
    QTest::newRow("frames beyond all") << QByteArray(R"({"rate":1e8,"last":1099511627777})");
}

void TestSimMakeTake::badOrdersAreRefused()
{
    QFETCH(QByteArray, order);
    const Reply reply = make(order);
    QCOMPARE(reply.status, 400);
    QVERIFY(!reply.json()["error"].toString().isEmpty());
    QCOMPARE(list("acq/saved_takes"), QJsonArray());
}

void TestSimMakeTake::takesAreThereAtStart()
{
    Config config = m_fix.config();
    config.takes = {{.take = 2, .first = -5, .last = 5}, {.locked = true}};
    m_fix.start(config);
    QCOMPARE(list("acq/saved_takes"), QJsonArray({1, 2}));
    QCOMPARE(list("acq/locked_takes"), QJsonArray({1}));
    QCOMPARE(take(2)["fr_cnt"], QJsonValue(11));
}

void TestSimMakeTake::takesThatDoNotFitPreventTheStart()
{
    Config config = m_fix.config();
    config.takes = {{.take = 2}, {.take = 2}};
    QCOMPARE(Camera(config).listen(), QStringLiteral("no free partition"));
    config.takes = {{.first = 5, .last = 4}};
    QVERIFY(Camera(config).listen().startsWith(u"the frames must be first to last"));
}

QTEST_GUILESS_MAIN(TestSimMakeTake)
#include "tst_sim_make_take.moc"
