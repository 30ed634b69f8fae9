#include "camera_fixture.h"
#include "take_frames.h"

#include <QElapsedTimer>
#include <QJsonArray>

using namespace q4sim;
using namespace std::chrono_literals;

namespace
{

constexpr int width = 320;
constexpr int recordSize = 32 + width * 120;

} // namespace

// Frames and descriptions that fail, come late or belong to a take that vanishes.
class TestSimTakeFaults : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void oneFrameFailsAndItsNeighboursDoNot();
    void oneFrameIsCut();
    void runFailsWhenItHoldsTheFrame();
    void runClosesInTheMiddleOfTheFrame_data();
    void runClosesInTheMiddleOfTheFrame();
    void endlessRunClosesInTheMiddleOfTheFrame();
    void runIsShortFromTheMiddleOfTheFrameOn();
    void sparedTransferUsesUpNoFault();
    void liveFrameIsNoFrameOfATake();
    void faultOfOneTakeSparesTheOthers();
    void slowFrameIsWhole();
    void descriptionFailsAndTheStatusDoesNot_data();
    void descriptionFailsAndTheStatusDoesNot();
    void chosenKeysOfADescriptionAreMissing();
    void slowDescriptionLeavesTheStatusFast();
    void drippedRunIsWhole();
    void takeDeletedWhileItsFrameIsSlowIs404();
    void takeDeletedInMidRunBreaksTheConnection_data();
    void takeDeletedInMidRunBreaksTheConnection();
    void newTakeInThePartitionDoesNotSaveTheRun();
    void vanishingTakeIs404();
    void vanishingTakeBreaksTheConnection();
    void vanishingTakeLeavesTheDescriptionOfAnEmptyPartition();
    void faultsOfTakesAreSetFromOutside();

private:
    Reply transfer(int take, qint64 start, qint64 cnt = 1)
    {
        return m_fix.client().send("POST", "/xfer", transferOf(take, start, cnt));
    }

    CameraFixture m_fix{QStringLiteral("127.0.1.82")};
};

// Take 1 and 2 with frames -100 to 99 each.
void TestSimTakeFaults::init()
{
    Config config = m_fix.config();
    config.resolutions = QStringList{"320x120"};
    config.takes = {{}, {}};
    m_fix.start(config);
}

void TestSimTakeFaults::oneFrameFailsAndItsNeighboursDoNot()
{
    m_fix.camera().setFault(Route::Xfer, {.kind = FaultKind::Http500, .frames = {-3, 40}});
    QCOMPARE(transfer(1, -4).status, 200);
    QCOMPARE(transfer(1, -3).status, 500);
    QCOMPARE(transfer(1, -2).status, 200);
    QCOMPARE(transfer(1, 40).status, 500);
    QCOMPARE(transfer(2, 40).status, 500);
}

void TestSimTakeFaults::oneFrameIsCut()
{
    m_fix.camera().setFault(Route::Xfer, {.kind = FaultKind::CloseMidBody, .bytes = 5000, .frames = {7}});
    const QByteArray whole = m_fix.camera().answer("POST", "/xfer", transferOf(1, 7, 1)).body;
    const Reply cut = transfer(1, 7);
    QCOMPARE(cut.header("Content-Length"), QByteArray::number(recordSize));
    QCOMPARE(cut.body, whole.first(5000));
    QCOMPARE(transfer(1, 8).body.size(), recordSize);
}

void TestSimTakeFaults::runFailsWhenItHoldsTheFrame()
{
    m_fix.camera().setFault(Route::Xfer, {.kind = FaultKind::Http500, .frames = {10}});
    QCOMPARE(transfer(1, 0, 10).status, 200);
    QCOMPARE(transfer(1, 1, 10).status, 500);
    QCOMPARE(transfer(1, 10, 10).status, 500);
    QCOMPARE(transfer(1, 11, 10).status, 200);
}

void TestSimTakeFaults::runClosesInTheMiddleOfTheFrame_data()
{
    QTest::addColumn<int>("count");
    QTest::newRow("sent at once") << 5;
    QTest::newRow("sent while it is made") << 100;
}

void TestSimTakeFaults::runClosesInTheMiddleOfTheFrame()
{
    QFETCH(int, count);
    const QByteArray whole = m_fix.camera().answer("POST", "/xfer", transferOf(1, -100, count)).body;
    m_fix.camera().setFault(Route::Xfer, {.kind = FaultKind::CloseMidBody, .frames = {50, -97}});
    const Reply reply = transfer(1, -100, count);
    // Less than was promised; the client library does not call that an error each time.
    QCOMPARE(reply.header("Content-Length"), QByteArray::number(count * recordSize));
    // Three frames before frame -97, and half of it.
    QCOMPARE(reply.body, whole.first(3 * recordSize + recordSize / 2));
    m_fix.camera().clearFaults();
    QCOMPARE(transfer(1, -100, count).body, whole);
}

void TestSimTakeFaults::endlessRunClosesInTheMiddleOfTheFrame()
{
    QVERIFY(m_fix.camera().makeTake({.first = 0, .last = 1LL << 33}) == 3);
    m_fix.camera().setFault(Route::Xfer, {.kind = FaultKind::CloseMidBody, .frames = {30}});
    const Reply reply = transfer(3, 0, 1LL << 33);
    QCOMPARE(reply.body.size(), 30 * recordSize + recordSize / 2);
    QCOMPARE(shownNumber(reply.body.mid(29 * recordSize), width), std::optional<qint32>(29));
    QCOMPARE(m_fix.client().get().status, 200);
}

void TestSimTakeFaults::runIsShortFromTheMiddleOfTheFrameOn()
{
    const QByteArray whole = m_fix.camera().answer("POST", "/xfer", transferOf(1, 0, 100)).body;
    m_fix.camera().setFault(Route::Xfer, {.kind = FaultKind::ShortBody, .frames = {60}});
    const Reply reply = transfer(1, 0, 100);
    QCOMPARE(reply.error, QNetworkReply::NoError);
    QCOMPARE(reply.body, whole.first(60 * recordSize + recordSize / 2));
}

void TestSimTakeFaults::sparedTransferUsesUpNoFault()
{
    m_fix.camera().setFault(Route::Xfer, {.kind = FaultKind::Http500, .count = 1, .frames = {5}});
    QCOMPARE(transfer(1, 4).status, 200);
    QCOMPARE(transfer(1, 6).status, 200);
    QCOMPARE(transfer(1, 5).status, 500);
    QCOMPARE(transfer(1, 5).status, 200);
}

void TestSimTakeFaults::liveFrameIsNoFrameOfATake()
{
    m_fix.camera().setFault(Route::Xfer, {.kind = FaultKind::Http500, .frames = {0}});
    QCOMPARE(m_fix.post("/xfer", R"({"type":3,"src":1})"), 200);
    QCOMPARE(transfer(1, 0).status, 500);
}

void TestSimTakeFaults::faultOfOneTakeSparesTheOthers()
{
    m_fix.camera().setFault(Route::Xfer, {.kind = FaultKind::Http500, .take = 2});
    m_fix.camera().setFault(Route::Takes, {.kind = FaultKind::Http500, .take = 1});
    QCOMPARE(transfer(1, 0).status, 200);
    QCOMPARE(transfer(2, 0).status, 500);
    QCOMPARE(m_fix.post("/xfer", R"({"type":3,"src":1})"), 200);
    QCOMPARE(m_fix.client().get("/takes/take1").status, 500);
    QCOMPARE(m_fix.client().get("/takes/take2").status, 200);
}

void TestSimTakeFaults::slowFrameIsWhole()
{
    m_fix.camera().setFault(Route::Xfer, {.kind = FaultKind::Delay, .ms = 200});
    for (const int count : {1, 100}) {
        QElapsedTimer timer;
        timer.start();
        const Reply reply = transfer(1, -100, count);
        QVERIFY(timer.elapsed() >= 200);
        QCOMPARE(reply.body, m_fix.camera().answer("POST", "/xfer", transferOf(1, -100, count)).body);
    }
}

void TestSimTakeFaults::descriptionFailsAndTheStatusDoesNot_data()
{
    QTest::addColumn<FaultKind>("kind");
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("json");
    QTest::newRow("http 500") << FaultKind::Http500 << 500 << true;
    QTest::newRow("no JSON") << FaultKind::InvalidJson << 200 << false;
    QTest::newRow("truncated") << FaultKind::TruncatedJson << 200 << false;
    QTest::newRow("empty") << FaultKind::EmptyReply << 200 << false;
}

void TestSimTakeFaults::descriptionFailsAndTheStatusDoesNot()
{
    QFETCH(FaultKind, kind);
    QFETCH(int, status);
    QFETCH(bool, json);
    m_fix.camera().setFault(Route::Takes, {.kind = kind});
    const Reply reply = m_fix.client().get("/takes/take1");
    QCOMPARE(reply.status, status);
    QCOMPARE(!QJsonDocument::fromJson(reply.body).isNull(), json);
    QCOMPARE(m_fix.client().get().json(), m_fix.camera().status());
}

void TestSimTakeFaults::chosenKeysOfADescriptionAreMissing()
{
    m_fix.camera().setFault(
        Route::Takes, {.kind = FaultKind::MissingKeys, .keys = {"takes/take1/meta", "takes/take1/fr_cnt"}});
    QJsonObject expected = m_fix.camera().takeDescription(1);
    QVERIFY(expected.contains("meta") && expected.contains("fr_cnt"));
    expected.remove("meta");
    expected.remove("fr_cnt");
    QCOMPARE(m_fix.client().get("/takes/take1").json()["takes"]["take1"].toObject(), expected);
}

void TestSimTakeFaults::slowDescriptionLeavesTheStatusFast()
{
    m_fix.camera().setFault(Route::Takes, {.kind = FaultKind::Delay, .ms = 300});
    QElapsedTimer timer;
    timer.start();
    QNetworkReply *slow = m_fix.client().start("GET", "/takes/take1");
    QSignalSpy finished(slow, &QNetworkReply::finished);
    QCOMPARE(m_fix.client().get().status, 200);
    QCOMPARE(finished.size(), 0);
    QVERIFY(finished.wait());
    QVERIFY(timer.elapsed() >= 300);
    QCOMPARE(QJsonDocument::fromJson(slow->readAll())["takes"]["take1"]["fr_cnt"].toInt(), 200);
    slow->deleteLater();
}

void TestSimTakeFaults::drippedRunIsWhole()
{
    m_fix.camera().setFault(Route::Xfer, {.kind = FaultKind::Drip, .ms = 5, .bytes = 100000});
    QElapsedTimer timer;
    timer.start();
    const Reply reply = transfer(1, -100, 200);
    // 7686400 bytes in pieces of 100000: at least 76 of them, 5 ms apart, although the camera makes the run
    // as it goes.
    QVERIFY2(timer.elapsed() >= 350, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(reply.error, QNetworkReply::NoError);
    QCOMPARE(reply.body, m_fix.camera().answer("POST", "/xfer", transferOf(1, -100, 200)).body);
}

void TestSimTakeFaults::takeDeletedWhileItsFrameIsSlowIs404()
{
    m_fix.camera().setFault(Route::Xfer, {.kind = FaultKind::Delay, .ms = 200});
    QNetworkReply *slow = m_fix.client().start("POST", "/xfer", transferOf(1, 0, 1));
    QSignalSpy finished(slow, &QNetworkReply::finished);
    QVERIFY(QTest::qWaitFor([&] { return m_fix.camera().requests("POST", "/xfer").size() == 1; }));
    QCOMPARE(m_fix.post("/del", R"({"take":1})"), 200);
    QCOMPARE(finished.size(), 0);
    QVERIFY(finished.wait());
    QCOMPARE(slow->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), 404);
    slow->deleteLater();
}

void TestSimTakeFaults::takeDeletedInMidRunBreaksTheConnection_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<FaultKind>("kind");
    QTest::newRow("deleted") << "/del" << QByteArray(R"({"take":3})") << FaultKind::None;
    QTest::newRow("all deleted") << "/del" << QByteArray(R"({"take":-1})") << FaultKind::None;
    QTest::newRow("partitioned") << "/prtn" << QByteArray(R"({"cnt":4})") << FaultKind::None;
    QTest::newRow("deleted from a slow camera") << "/del" << QByteArray(R"({"take":3})") << FaultKind::Drip;
}

void TestSimTakeFaults::takeDeletedInMidRunBreaksTheConnection()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, body);
    QFETCH(FaultKind, kind);
    QVERIFY(m_fix.camera().makeTake({.first = 0, .last = 1LL << 32}) == 3);
    m_fix.camera().setFault(Route::Xfer, {.kind = kind, .ms = 1, .bytes = 10000});
    QNetworkReply *run = m_fix.client().start("POST", "/xfer", transferOf(3, 0, 1LL << 32));
    run->setReadBufferSize(4 << 20);
    QSignalSpy finished(run, &QNetworkReply::finished);
    QVERIFY(QTest::qWaitFor([run] { return run->bytesAvailable() >= 3 * recordSize; }, 20000));
    QCOMPARE(m_fix.client().post(path, body), 200);
    // The end is behind what has arrived already.
    QVERIFY(QTest::qWaitFor(
        [&] {
            run->readAll();
            return finished.size() == 1;
        },
        20000));
    QCOMPARE(run->error(), QNetworkReply::RemoteHostClosedError);
    QCOMPARE(transfer(3, 0).status, 404);
    run->deleteLater();
}

void TestSimTakeFaults::newTakeInThePartitionDoesNotSaveTheRun()
{
    m_fix.camera().setFault(Route::Xfer, {.kind = FaultKind::Delay, .ms = 200, .count = 1});
    QNetworkReply *slow = m_fix.client().start("POST", "/xfer", transferOf(1, 0, 1));
    QSignalSpy finished(slow, &QNetworkReply::finished);
    QVERIFY(QTest::qWaitFor([&] { return m_fix.camera().requests("POST", "/xfer").size() == 1; }));
    m_fix.camera().dropTake(1);
    QVERIFY(m_fix.camera().makeTake({}) == 1);
    QVERIFY(finished.wait());
    QCOMPARE(slow->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), 404);
    QCOMPARE(transfer(1, 0).status, 200);
    slow->deleteLater();
}

void TestSimTakeFaults::vanishingTakeIs404()
{
    m_fix.camera().setTakeLocked(2, true);
    m_fix.camera().setFault(Route::Xfer, {.kind = FaultKind::Vanish, .count = 1, .take = 2});
    QCOMPARE(transfer(1, 0).status, 200);
    QCOMPARE(transfer(2, 0).status, 404);
    QCOMPARE(m_fix.value("acq/saved_takes").toArray(), QJsonArray({1}));
    QCOMPARE(m_fix.value("acq/locked_takes").toArray(), QJsonArray());
}

void TestSimTakeFaults::vanishingTakeBreaksTheConnection()
{
    for (const auto &[take, count] : {std::pair(1, 1), std::pair(2, 100)}) {
        const QByteArray whole = m_fix.camera().answer("POST", "/xfer", transferOf(take, 0, count)).body;
        m_fix.camera().setFault(Route::Xfer, {.kind = FaultKind::Vanish, .bytes = 20000});
        const Reply reply = transfer(take, 0, count);
        QCOMPARE(reply.header("Content-Length"), QByteArray::number(whole.size()));
        QCOMPARE(reply.body, whole.first(20000));
        QVERIFY(!m_fix.value("acq/saved_takes").toArray().contains(take));
    }
}

void TestSimTakeFaults::vanishingTakeLeavesTheDescriptionOfAnEmptyPartition()
{
    m_fix.camera().setFault(Route::Takes, {.kind = FaultKind::Vanish, .count = 1});
    const QJsonObject told = m_fix.client().get("/takes/take1").json()["takes"]["take1"].toObject();
    QCOMPARE(told.keys(), QStringList({"fr_cnt", "prtn_fr_cnt", "prtn_pt_cnt"}));
    QCOMPARE(m_fix.value("acq/saved_takes").toArray(), QJsonArray({2}));
}

void TestSimTakeFaults::faultsOfTakesAreSetFromOutside()
{
    QCOMPARE(m_fix.post("/sim/fault", R"({"on":"xfer","kind":"http-500","frames":[-5,6],"take":1})"), 200);
    QCOMPARE(transfer(1, -5).status, 500);
    QCOMPARE(transfer(1, 6).status, 500);
    QCOMPARE(transfer(1, 5).status, 200);
    QCOMPARE(transfer(2, 6).status, 200);
    QCOMPARE(m_fix.post("/sim/fault", R"({"on":"takes","kind":"empty-reply","take":2})"), 200);
    QCOMPARE(m_fix.client().get("/takes/take2").body, QByteArray());
    QVERIFY(!m_fix.client().get("/takes/take1").body.isEmpty());
    QCOMPARE(m_fix.post("/sim/fault", R"({"on":"xfer","kind":"vanish"})"), 200);
    QCOMPARE(transfer(2, 0).status, 404);
    QCOMPARE(m_fix.value("acq/saved_takes").toArray(), QJsonArray({1}));
}

QTEST_GUILESS_MAIN(TestSimTakeFaults)
#include "tst_sim_take_faults.moc"
