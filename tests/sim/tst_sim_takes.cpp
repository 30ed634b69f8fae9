#include "camera_fixture.h"

#include <QJsonArray>

using namespace q4sim;
using namespace std::chrono_literals;

// What takes tell, and how they are written to, locked and deleted.
class TestSimTakes : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void recordedTakeDescribesItself();
    void replyIsTheTreeDownToTheTake();
    void oldFirmwareTellsMetaSizeAndYearOffsetElsewhere();
    void emptyPartitionTellsItsSizeAlone();
    void activeTakeCountsItsFrames();
    void unknownTakesAre404_data();
    void unknownTakesAre404();
    void laterSettingsDoNotTouchATake();
    void correctionIsWrittenOnTheTakesPath();
    void adjustmentIsWrittenOnTheTakesPath();
    void badWritesAreRefused_data();
    void badWritesAreRefused();
    void forcedValueShowsInTheDescription();
    void lockedTakeIsNotDeleted();
    void droppedTakeIsGoneThoughLocked();
    void deletedTakeLeavesAnEmptyPartition();
    void partitioningLeavesEmptyPartitions();

private:
    const QJsonObject take(int number) // const, so that take(1)["a"]["b"] reads and does not insert
    {
        const QString name = QStringLiteral("take%1").arg(number);
        return m_fix.client().get(QStringLiteral("/takes/") + name).json()["takes"][name].toObject();
    }
    Reply make(const QByteArray &json) { return m_fix.client().send("POST", "/sim/take", json); }
    QJsonArray list(const char *path) { return m_fix.value(path).toArray(); }

    CameraFixture m_fix{QStringLiteral("127.0.1.80")};
};

// Four partitions of 1000 frames of 320x120, 1000 frames a second, 400 of them after the trigger.
void TestSimTakes::init()
{
    Config config = m_fix.config();
    config.resolutions = QStringList{"320x120", "320x240"};
    config.memoryBytes = 4LL * 1000 * (32 + 320 * 120);
    m_fix.start(config);
    QCOMPARE(m_fix.put("/acq/trig_offset", "400"), 200);
}

void TestSimTakes::recordedTakeDescribesItself()
{
    QCOMPARE(m_fix.put("/adjust/gain_r", "1.5"), 200);
    QCOMPARE(m_fix.post("/rec"), 200);
    m_fix.wait(2s);
    QCOMPARE(m_fix.post("/trig"), 200);
    m_fix.wait(1s);
    const QJsonObject told = take(1);
    QCOMPARE(told["prtn_fr_cnt"], QJsonValue(1000));
    QCOMPARE(told["prtn_pt_cnt"], QJsonValue(400));
    QCOMPARE(told["first_fr"], QJsonValue(-600));
    QCOMPARE(told["last_fr"], QJsonValue(399));
    QCOMPARE(told["fr_cnt"], QJsonValue(1000));
    QCOMPARE(told["pt_fr_cnt"], QJsonValue(400));
    // Half of the 100000 clocks of a frame is 50000; 49988 is 13 + 1999 times 25.
    const QJsonObject acq = {{"res", "320x120"},  {"bpp", 8},           {"clk_freq", 100000000},
                             {"exp_clks", 49988}, {"exp_time", 499.88}, {"fr_clks", 100000},
                             {"fr_rate", 1000},   {"fsync_mode", 0},    {"fsync_state", 0},
                             {"corr_mode", 0}};
    QCOMPARE(told["acq"].toObject(), acq);
    const QJsonObject camera = {
        {"name", "Simulated Q4"}, {"serial", "Q4-00001"}, {"model", "Q4"}, {"cfa", 1}, {"fw_ver", "3.2.1"}};
    QCOMPARE(told["camera"].toObject(), camera);
    // 2025-01-01 00:00 UTC.
    const QJsonObject meta = {{"size", 32}, {"year_offset", 1735689600}};
    QCOMPARE(told["meta"].toObject(), meta);
    const QJsonObject lens = {{"mount", "EF"},   {"id", 61182},         {"name", "24-70mm f/2.8"},
                              {"af_switch", 0},  {"focal_len_min", 24}, {"focal_len_max", 70},
                              {"focal_len", 50}, {"fstop_min", 22},     {"fstop_max", 2.8},
                              {"fstop", 4},      {"focus_dist", 0.48}};
    QCOMPARE(told["lens"].toObject(), lens);
    const QJsonObject adjust = {{"offset", 0},   {"offset_r", 0}, {"offset_b", 0},   {"gain", 1},
                                {"gain_r", 1.5}, {"gain_b", 1},   {"gamma", 1},      {"gamma_r", 1},
                                {"gamma_b", 1},  {"contrast", 0}, {"contrast_r", 0}, {"contrast_b", 0},
                                {"cfa", 1},      {"wb_r", 1},     {"wb_g", 1},       {"wb_b", 1},
                                {"wb_cal_r", 1}, {"wb_cal_g", 1}, {"wb_cal_b", 1}};
    QCOMPARE(told["adjust"].toObject(), adjust);
    QCOMPARE(told.size(), 6 + 5);
}

void TestSimTakes::replyIsTheTreeDownToTheTake()
{
    QVERIFY(m_fix.camera().makeTake({.take = 3}) == 3);
    const Reply reply = m_fix.client().get("/takes/take3");
    QCOMPARE(reply.status, 200);
    QCOMPARE(reply.json().keys(), QStringList("takes"));
    QCOMPARE(reply.json()["takes"].toObject().keys(), QStringList("take3"));
    QCOMPARE(reply.json()["takes"]["take3"].toObject(), m_fix.camera().takeDescription(3));
    QCOMPARE(reply.json()["takes"]["take3"]["fr_cnt"].toInt(), 200);
}

void TestSimTakes::oldFirmwareTellsMetaSizeAndYearOffsetElsewhere()
{
    Config config = m_fix.config();
    config.firmware = Firmware::Old;
    config.yearOffsetPlace = YearOffsetPlace::Time;
    m_fix.start(config);
    QCOMPARE(make("{}").json(), QJsonObject({{"take", 1}}));
    const QJsonObject told = take(1);
    QVERIFY(!told.contains("meta"));
    QCOMPARE(told["meta_size"], QJsonValue(32));
    QCOMPARE(told["time"].toObject(), QJsonObject({{"year_offset", 1735689600}}));
    QCOMPARE(told["camera"]["fw_ver"], QJsonValue(117));
}

void TestSimTakes::emptyPartitionTellsItsSizeAlone()
{
    QCOMPARE(take(4), QJsonObject({{"prtn_fr_cnt", 1000}, {"prtn_pt_cnt", 400}, {"fr_cnt", 0}}));
}

void TestSimTakes::activeTakeCountsItsFrames()
{
    QCOMPARE(m_fix.post("/rec"), 200);
    m_fix.wait(250ms);
    QCOMPARE(take(1)["fr_cnt"], QJsonValue(250));
    QCOMPARE(take(1)["pt_fr_cnt"], QJsonValue(0));
    QCOMPARE(take(1)["acq"]["res"], QJsonValue("320x120"));
    QVERIFY(!take(1).contains("first_fr"));
    QCOMPARE(take(2)["fr_cnt"], QJsonValue(0));
    QCOMPARE(m_fix.post("/trig"), 200);
    m_fix.wait(100ms);
    QCOMPARE(take(1)["fr_cnt"], QJsonValue(350));
    QCOMPARE(take(1)["pt_fr_cnt"], QJsonValue(100));
    m_fix.wait(300ms);
    QCOMPARE(take(1)["first_fr"], QJsonValue(-250));
    QCOMPARE(take(1)["fr_cnt"], QJsonValue(650));
}

void TestSimTakes::unknownTakesAre404_data()
{
    QTest::addColumn<QString>("path");
    for (const char *path : {"/takes", "/takes/", "/takes/take0", "/takes/take5", "/takes/take-1",
                             "/takes/take01", "/takes/take1x", "/takes/take1/acq", "/takes/take99999"})
        QTest::newRow(path) << QString::fromLatin1(path);
}

void TestSimTakes::unknownTakesAre404()
{
    QFETCH(QString, path);
    QVERIFY(m_fix.camera().makeTake({}) == 1);
    QCOMPARE(m_fix.client().get(path).status, 404);
}

void TestSimTakes::laterSettingsDoNotTouchATake()
{
    QCOMPARE(m_fix.post("/rec"), 200);
    QCOMPARE(m_fix.post("/trig"), 200);
    m_fix.wait(1s);
    const QByteArray body = R"({"type":3,"src":0,"take":1,"start":0,"cnt":3})";
    const QJsonObject told = take(1);
    const QByteArray frames = m_fix.client().send("POST", "/xfer", body).body;
    QCOMPARE(frames.size(), 3 * (32 + 320 * 120));
    QCOMPARE(m_fix.put("/acq/res", "\"320x240\""), 200);
    QCOMPARE(m_fix.put("/acq/fr_clks", "400000"), 200);
    QCOMPARE(m_fix.put("/acq/exp_clks", "100000"), 200);
    QCOMPARE(m_fix.put("/acq/corr_mode", "1"), 200);
    QCOMPARE(m_fix.put("/camera/name", "\"Other\""), 200);
    QCOMPARE(m_fix.put("/adjust/gain", "3"), 200);
    QCOMPARE(m_fix.put("/lens/fstop", "22"), 200);
    QCOMPARE(m_fix.put("/meta/time", "\"2031-07-01 00:00:00\""), 200);
    m_fix.wait(1h);
    QCOMPARE(take(1), told);
    QCOMPARE(m_fix.client().send("POST", "/xfer", body).body, frames);
    // A new take has all of them.
    QVERIFY(m_fix.camera().makeTake({}) == 2);
    QCOMPARE(take(2)["acq"]["res"], QJsonValue("320x240"));
    QCOMPARE(take(2)["acq"]["fr_rate"], QJsonValue(250));
    QCOMPARE(take(2)["acq"]["corr_mode"], QJsonValue(1));
    QCOMPARE(take(2)["camera"]["name"], QJsonValue("Other"));
    QCOMPARE(take(2)["adjust"]["gain"], QJsonValue(3));
    QCOMPARE(take(2)["lens"]["fstop"], QJsonValue(22));
    QCOMPARE(take(2)["meta"]["year_offset"], QJsonValue(1924992000)); // 2031-01-01
}

void TestSimTakes::correctionIsWrittenOnTheTakesPath()
{
    QVERIFY(m_fix.camera().makeTake({}) == 1);
    QVERIFY(m_fix.camera().makeTake({}) == 2);
    QCOMPARE(m_fix.put("/takes/take1/acq/corr_mode", "1"), 200);
    QCOMPARE(take(1)["acq"]["corr_mode"], QJsonValue(1));
    QCOMPARE(take(2)["acq"]["corr_mode"], QJsonValue(0));
    QCOMPARE(m_fix.number("acq/corr_mode"), 0);
    // It takes noise away: 5 steps of the 9-bit scale become 1.
    QCOMPARE(m_fix.camera().takeScene(1).noise, 1);
    QCOMPARE(m_fix.camera().takeScene(2).noise, 5);
    QCOMPARE(m_fix.put("/takes/take1/acq/corr_mode", "0"), 200);
    QCOMPARE(take(1)["acq"]["corr_mode"], QJsonValue(0));
    QCOMPARE(m_fix.camera().takeScene(1).noise, 5);
}

void TestSimTakes::adjustmentIsWrittenOnTheTakesPath()
{
    QVERIFY(m_fix.camera().makeTake({}) == 1);
    QCOMPARE(m_fix.put("/takes/take1/adjust/gamma_b", "2.500000"), 200);
    QCOMPARE(take(1)["adjust"]["gamma_b"], QJsonValue(2.5));
    QCOMPARE(m_fix.value("adjust/gamma_b"), QJsonValue(1));
}

void TestSimTakes::badWritesAreRefused_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    QTest::newRow("frame count") << "/takes/take1/fr_cnt" << QByteArray("5") << 403;
    QTest::newRow("resolution") << "/takes/take1/acq/res" << QByteArray("\"320x240\"") << 403;
    QTest::newRow("pattern") << "/takes/take1/adjust/cfa" << QByteArray("0") << 403;
    QTest::newRow("unknown key") << "/takes/take1/acq/mode" << QByteArray("0") << 404;
    QTest::newRow("no partition") << "/takes/take5/acq/corr_mode" << QByteArray("1") << 404;
    QTest::newRow("empty partition") << "/takes/take2/acq/corr_mode" << QByteArray("1") << 404;
    QTest::newRow("active take") << "/takes/take3/acq/corr_mode" << QByteArray("1") << 409;
    QTest::newRow("no such correction") << "/takes/take1/acq/corr_mode" << QByteArray("2") << 400;
    QTest::newRow("text") << "/takes/take1/acq/corr_mode" << QByteArray("\"1\"") << 400;
    QTest::newRow("object") << "/takes/take1/acq/corr_mode" << QByteArray("{}") << 400;
    QTest::newRow("gain beyond its range") << "/takes/take1/adjust/gain" << QByteArray("11") << 400;
}

void TestSimTakes::badWritesAreRefused()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    QVERIFY(m_fix.camera().makeTake({}) == 1);
    QVERIFY(m_fix.camera().makeTake({}) == 2);
    QCOMPARE(m_fix.post("/rec"), 200);
    QCOMPARE(m_fix.number("acq/active_take"), 3);
    QCOMPARE(m_fix.post("/del", R"({"take":2})"), 200);
    const QJsonObject before = take(1);
    QCOMPARE(m_fix.client().put(path, body), status);
    QCOMPARE(take(1), before);
}

void TestSimTakes::forcedValueShowsInTheDescription()
{
    QVERIFY(m_fix.camera().makeTake({}) == 1);
    m_fix.camera().forceValue("takes/take1/last_fr", 5000000000LL);
    QCOMPARE(take(1)["last_fr"].toInteger(), 5000000000LL);
    m_fix.camera().forceValue("takes/take1/last_fr", QJsonValue::Undefined);
    QCOMPARE(take(1)["last_fr"].toInteger(), 99);
}

void TestSimTakes::lockedTakeIsNotDeleted()
{
    for (int n = 1; n <= 3; ++n)
        QVERIFY(m_fix.camera().makeTake({}) == n);
    QCOMPARE(m_fix.post("/sim/hardware", R"({"lock":2})"), 200);
    QCOMPARE(list("acq/locked_takes"), QJsonArray({2}));
    QCOMPARE(m_fix.post("/del", R"({"take":2})"), 409);
    QCOMPARE(m_fix.post("/del", R"({"take":-1})"), 200);
    QCOMPARE(list("acq/saved_takes"), QJsonArray({2}));
    QCOMPARE(m_fix.post("/prtn", R"({"cnt":2})"), 409);
    QCOMPARE(m_fix.post("/sim/hardware", R"({"unlock":2})"), 200);
    QCOMPARE(list("acq/locked_takes"), QJsonArray());
    QCOMPARE(m_fix.post("/del", R"({"take":2})"), 200);
    QCOMPARE(list("acq/saved_takes"), QJsonArray());
    QCOMPARE(m_fix.post("/sim/hardware", R"({"lock":2})"), 400);
}

void TestSimTakes::droppedTakeIsGoneThoughLocked()
{
    QVERIFY(m_fix.camera().makeTake({.locked = true}) == 1);
    QVERIFY(m_fix.camera().makeTake({.locked = true}) == 2);
    QCOMPARE(m_fix.post("/sim/hardware", R"({"drop":1})"), 200);
    QCOMPARE(list("acq/saved_takes"), QJsonArray({2}));
    QCOMPARE(list("acq/locked_takes"), QJsonArray({2}));
    m_fix.camera().dropTake(2);
    QCOMPARE(list("acq/saved_takes"), QJsonArray());
    QCOMPARE(list("acq/locked_takes"), QJsonArray());
}

void TestSimTakes::deletedTakeLeavesAnEmptyPartition()
{
    QVERIFY(m_fix.camera().makeTake({}) == 1);
    QCOMPARE(m_fix.post("/del", R"({"take":1})"), 200);
    QCOMPARE(list("acq/saved_takes"), QJsonArray());
    QCOMPARE(take(1), QJsonObject({{"prtn_fr_cnt", 1000}, {"prtn_pt_cnt", 400}, {"fr_cnt", 0}}));
    // What is recorded there next has nothing of the old one.
    QVERIFY(m_fix.camera().makeTake({.first = 7, .last = 8}) == 1);
    QCOMPARE(take(1)["fr_cnt"], QJsonValue(2));
}

void TestSimTakes::partitioningLeavesEmptyPartitions()
{
    QVERIFY(m_fix.camera().makeTake({.take = 4}) == 4);
    QCOMPARE(m_fix.put("/acq/prtn_cnt", "2"), 200);
    QCOMPARE(list("acq/saved_takes"), QJsonArray());
    QCOMPARE(m_fix.client().get("/takes/take4").status, 404);
    QCOMPARE(take(2)["prtn_fr_cnt"], QJsonValue(2000));
    QCOMPARE(m_fix.post("/prtn", R"({"cnt":4})"), 200);
    QCOMPARE(take(4), QJsonObject({{"prtn_fr_cnt", 1000}, {"prtn_pt_cnt", 400}, {"fr_cnt", 0}}));
}

QTEST_GUILESS_MAIN(TestSimTakes)
#include "tst_sim_takes.moc"
