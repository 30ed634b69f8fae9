#include "http_client.h"

#include "sim/camera.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QTest>

using namespace q4sim;

class TestSimFaults : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void http500RefusesAndHasNoEffect_data();
    void http500RefusesAndHasNoEffect();
    void delayedAnswerIsWhole();
    void drippedAnswerIsWhole();
    void connectionClosesInMidBody_data();
    void connectionClosesInMidBody();
    void connectionClosesBehindABodyThatIsShorter();
    void shortBodyHasAnHonestLength();
    void sizesLie();
    void chosenHeaderLies();
    void statusIsNoJson();
    void statusIsTruncated();
    void statusHasWrongTypes();
    void chosenKeysHaveWrongTypes();
    void blackReferenceReplyHasAWrongType();
    void statusIsEmptyObject();
    void chosenKeysAreMissing();
    void whatClientsDivideByOutlivesWrongTypes_data();
    void whatClientsDivideByOutlivesWrongTypes();
    void whatClientsDivideByIsThereAtTheFirstConnection_data();
    void whatClientsDivideByIsThereAtTheFirstConnection();
    void emptyReplyIsASuccess();
    void noAnswerEverComes();
    void faultOfOneRouteSparesTheOthers();
    void faultEndsAfterItsCount();
    void clearedFaultIsGone();
    void healthyAnswerFollowsOnTheSameConnection();
    void closingACameraWithHeldAnswersIsClean();

private:
    Camera &camera() { return *m_camera; }

    std::unique_ptr<Camera> m_camera;
    std::unique_ptr<HttpClient> m_client;
};

namespace
{

constexpr auto live = "{\"type\":3,\"src\":1}";
constexpr int recordSize = 32 + 320 * 120;

} // namespace

void TestSimFaults::init()
{
    Config config;
    config.address = QHostAddress(QStringLiteral("127.0.1.50"));
    config.discovery = false;
    config.resolutions = QStringList{"320x120"};
    config.clock = std::make_shared<ManualClock>(1741944413LL * 1000000000);
    m_camera = std::make_unique<Camera>(config);
    QCOMPARE(m_camera->listen(), QString());
    m_client = std::make_unique<HttpClient>(QStringLiteral("127.0.1.50"));
}

void TestSimFaults::cleanup()
{
    m_client.reset();
    m_camera.reset();
}

void TestSimFaults::http500RefusesAndHasNoEffect_data()
{
    QTest::addColumn<Route>("route");
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("status") << Route::Status << QByteArray("GET") << "/" << QByteArray();
    QTest::newRow("xfer") << Route::Xfer << QByteArray("POST") << "/xfer" << QByteArray(live);
    QTest::newRow("bref") << Route::Bref << QByteArray("POST") << "/bref" << QByteArray();
    QTest::newRow("put") << Route::Put << QByteArray("PUT") << "/camera/name" << QByteArray("\"New\"");
    QTest::newRow("ssd-ls") << Route::SsdLs << QByteArray("POST") << "/ssd-ls" << QByteArray("{\"long\": 1}");
    QTest::newRow("command") << Route::Command << QByteArray("POST") << "/rec" << QByteArray();
}

void TestSimFaults::http500RefusesAndHasNoEffect()
{
    QFETCH(Route, route);
    QFETCH(QByteArray, method);
    QFETCH(QString, path);
    QFETCH(QByteArray, body);
    const QJsonObject before = camera().status();
    camera().setFault(route, {.kind = FaultKind::Http500, .count = 1});
    QCOMPARE(m_client->send(method, path, body).status, 500);
    QCOMPARE(camera().status(), before);
    QCOMPARE(camera().requests(method, path).size(), 1);
    QCOMPARE(m_client->send(method, path, body).status, 200);
}

void TestSimFaults::delayedAnswerIsWhole()
{
    camera().setFault(Route::Status, {.kind = FaultKind::Delay, .ms = 150});
    QElapsedTimer timer;
    timer.start();
    const Reply reply = m_client->get();
    QVERIFY(timer.elapsed() >= 150);
    QCOMPARE(reply.json(), camera().status());
}

void TestSimFaults::drippedAnswerIsWhole()
{
    camera().setFault(Route::Xfer, {.kind = FaultKind::Drip, .ms = 5, .bytes = 2000});
    QElapsedTimer timer;
    timer.start();
    const Reply reply = m_client->send("POST", "/xfer", live);
    QCOMPARE(reply.body, camera().answer("POST", "/xfer", live).body);
    // 38432 bytes and the header in pieces of 2000: at least 20 of them, 5 ms apart.
    QVERIFY(timer.elapsed() >= 90);
}

void TestSimFaults::connectionClosesInMidBody_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<qint64>("received");
    QTest::newRow("half") << qint64(0) << qint64(recordSize / 2);
    QTest::newRow("in the metadata") << qint64(5) << qint64(5);
    QTest::newRow("one byte missing") << qint64(recordSize - 1) << qint64(recordSize - 1);
}

void TestSimFaults::connectionClosesInMidBody()
{
    QFETCH(qint64, bytes);
    QFETCH(qint64, received);
    camera().setFault(Route::Xfer, {.kind = FaultKind::CloseMidBody, .bytes = bytes, .count = 1});
    const Reply reply = m_client->send("POST", "/xfer", live);
    QCOMPARE(reply.error, QNetworkReply::RemoteHostClosedError);
    QCOMPARE(reply.header("Content-Length"), QByteArray::number(recordSize));
    QCOMPARE(reply.body, camera().answer("POST", "/xfer", live).body.first(received));
    QCOMPARE(m_client->send("POST", "/xfer", live).body.size(), recordSize);
}

void TestSimFaults::connectionClosesBehindABodyThatIsShorter()
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.1.50"), 80);
    QVERIFY(socket.waitForConnected());
    camera().setFault(Route::Command, {.kind = FaultKind::CloseMidBody, .bytes = 1000});
    socket.write("POST /rec HTTP/1.1\r\nHost: x\r\nContent-Length: 0\r\n\r\n");
    QVERIFY(QTest::qWaitFor([&] { return socket.state() == QAbstractSocket::UnconnectedState; }));
    const QByteArray all = socket.readAll();
    QVERIFY2(all.startsWith("HTTP/1.1 200"), all.constData());
    QVERIFY2(all.endsWith("\r\n\r\n{}"), all.constData());
}

void TestSimFaults::shortBodyHasAnHonestLength()
{
    camera().setFault(Route::Xfer, {.kind = FaultKind::ShortBody, .bytes = 100, .count = 1});
    Reply reply = m_client->send("POST", "/xfer", live);
    QCOMPARE(reply.error, QNetworkReply::NoError);
    QCOMPARE(reply.body.size(), recordSize - 100);
    QCOMPARE(reply.header("Content-Length"), QByteArray::number(recordSize - 100));
    QCOMPARE(reply.header("Img-Size"), QByteArray("38400"));
    camera().setFault(Route::Xfer, {.kind = FaultKind::ShortBody});
    QCOMPARE(m_client->send("POST", "/xfer", live).body.size(), recordSize / 2);
    camera().setFault(Route::Xfer, {.kind = FaultKind::ShortBody, .bytes = 10000000});
    reply = m_client->send("POST", "/xfer", live);
    QCOMPARE(reply.status, 200);
    QCOMPARE(reply.body.size(), 0);
    QCOMPARE(reply.header("Img-Size"), QByteArray("38400"));
}

void TestSimFaults::sizesLie()
{
    camera().setFault(Route::Xfer, {.kind = FaultKind::LyingSizes});
    const Reply reply = m_client->send("POST", "/xfer", live);
    QCOMPARE(reply.header("Img-Width"), QByteArray("640"));
    QCOMPARE(reply.header("Img-Height"), QByteArray("240"));
    QCOMPARE(reply.header("Img-Size"), QByteArray("76800"));
    QCOMPARE(reply.body.size(), recordSize);
}

void TestSimFaults::chosenHeaderLies()
{
    camera().setFault(Route::Xfer, {.kind = FaultKind::LyingSizes, .headers = {{"Img-Height", "65535"}}});
    const Reply reply = m_client->send("POST", "/xfer", live);
    QCOMPARE(reply.header("Img-Width"), QByteArray("320"));
    QCOMPARE(reply.header("Img-Height"), QByteArray("65535"));
    QCOMPARE(reply.header("Img-Size"), QByteArray("38400"));
}

void TestSimFaults::statusIsNoJson()
{
    camera().setFault(Route::Status, {.kind = FaultKind::InvalidJson});
    const Reply reply = m_client->get();
    QCOMPARE(reply.status, 200);
    QVERIFY(!reply.body.isEmpty());
    QVERIFY(QJsonDocument::fromJson(reply.body).isNull());
}

void TestSimFaults::statusIsTruncated()
{
    camera().setFault(Route::Status, {.kind = FaultKind::TruncatedJson, .bytes = 1});
    const Reply reply = m_client->get();
    QCOMPARE(reply.error, QNetworkReply::NoError);
    QVERIFY(QJsonDocument::fromJson(reply.body).isNull());
    QCOMPARE(QJsonDocument::fromJson(reply.body + '}').object(), camera().status());
}

void TestSimFaults::statusHasWrongTypes()
{
    camera().setFault(Route::Status, {.kind = FaultKind::WrongTypes});
    const QJsonObject acq = m_client->get().json()["acq"].toObject();
    QVERIFY(acq["state"].isString());
    QVERIFY(acq["res"].isDouble());
    QVERIFY(acq["valid_res"].isDouble());
    QVERIFY(acq["saved_takes"].isDouble());
}

void TestSimFaults::chosenKeysHaveWrongTypes()
{
    camera().setFault(Route::Status, {.kind = FaultKind::WrongTypes, .keys = {"acq/exp_clks"}});
    QJsonObject acq = m_client->get().json()["acq"].toObject();
    QVERIFY(acq["exp_clks"].isString());
    acq["exp_clks"] = camera().value("acq/exp_clks");
    QCOMPARE(acq, camera().status()["acq"].toObject());
}

void TestSimFaults::blackReferenceReplyHasAWrongType()
{
    camera().setFault(Route::Bref, {.kind = FaultKind::WrongTypes});
    const Reply reply = m_client->send("POST", "/bref");
    QCOMPARE(reply.status, 200);
    QVERIFY(reply.json()["bref_state"].isString());
    QCOMPARE(camera().value("acq/bref_state").toInt(), 3);
}

void TestSimFaults::statusIsEmptyObject()
{
    QCOMPARE(m_client->get().status, 200);
    camera().setFault(Route::Status, {.kind = FaultKind::MissingKeys});
    QCOMPARE(m_client->get().body, QByteArray("{}"));
}

void TestSimFaults::chosenKeysAreMissing()
{
    camera().setFault(Route::Status,
                      {.kind = FaultKind::MissingKeys, .keys = {"video/valid_format", "lens"}});
    QJsonObject expected = camera().status();
    expected.remove("lens");
    QJsonObject video = expected["video"].toObject();
    video.remove("valid_format");
    expected["video"] = video;
    QCOMPARE(m_client->get().json(), expected);
}

void TestSimFaults::whatClientsDivideByOutlivesWrongTypes_data()
{
    QTest::addColumn<QStringList>("keys");
    QTest::newRow("everywhere") << QStringList();
    QTest::newRow("their object") << QStringList{"acq"};
    QTest::newRow("themselves") << QStringList{"acq/exp_clks_mult", "acq/fr_clks", "acq/fr_clks_min",
                                               "acq/state"};
}

void TestSimFaults::whatClientsDivideByOutlivesWrongTypes()
{
    QFETCH(QStringList, keys);
    camera().setFault(Route::Status, {.kind = FaultKind::WrongTypes, .keys = keys});
    for (int i = 0; i < 2; ++i) {
        const QJsonObject acq = m_client->get().json()["acq"].toObject();
        QVERIFY(acq["state"].isString());
        QCOMPARE(acq["exp_clks_mult"].toInt(), 25);
        // 1000 frames a second; 120 rows of 320 / 8 + 20 clocks and 400 more.
        QCOMPARE(acq["fr_clks"].toInt(), 100000);
        QCOMPARE(acq["fr_clks_min"].toInt(), 7600);
    }
}

void TestSimFaults::whatClientsDivideByIsThereAtTheFirstConnection_data()
{
    QTest::addColumn<QStringList>("keys");
    QTest::newRow("all") << QStringList();
    QTest::newRow("their object") << QStringList{"acq"};
    QTest::newRow("themselves") << QStringList{"acq/exp_clks_mult", "acq/fr_clks", "acq/fr_clks_min"};
}

void TestSimFaults::whatClientsDivideByIsThereAtTheFirstConnection()
{
    QFETCH(QStringList, keys);
    const QStringList divisors = {"exp_clks_mult", "fr_clks", "fr_clks_min"};
    camera().setFault(Route::Status, {.kind = FaultKind::Http500, .count = 1});
    QCOMPARE(m_client->get().status, 500);
    camera().setFault(Route::Status, {.kind = FaultKind::MissingKeys, .keys = keys});
    QJsonObject acq = m_client->get().json()["acq"].toObject();
    for (const QString &divisor : divisors)
        QVERIFY2(acq[divisor].toInt() > 0, qPrintable(divisor));
    // From then on a client has them, and keeps what it has.
    acq = m_client->get().json()["acq"].toObject();
    for (const QString &divisor : divisors)
        QVERIFY2(!acq.contains(divisor), qPrintable(divisor));
}

void TestSimFaults::emptyReplyIsASuccess()
{
    for (const Route route : {Route::Status, Route::Bref, Route::Xfer})
        camera().setFault(route, {.kind = FaultKind::EmptyReply});
    for (const Reply &reply :
         {m_client->get(), m_client->send("POST", "/bref"), m_client->send("POST", "/xfer", live)}) {
        QCOMPARE(reply.status, 200);
        QCOMPARE(reply.error, QNetworkReply::NoError);
        QCOMPARE(reply.body, QByteArray());
    }
}

void TestSimFaults::noAnswerEverComes()
{
    camera().setFault(Route::Put, {.kind = FaultKind::NoAnswer});
    const QString name = camera().value("camera/name").toString();
    QSignalSpy received(m_camera.get(), &Camera::requestReceived);
    QNetworkReply *reply = m_client->start("PUT", "/camera/name", "\"Other\"");
    QSignalSpy finished(reply, &QNetworkReply::finished);
    QVERIFY(received.wait());
    QVERIFY(!finished.wait(300));
    QCOMPARE(camera().value("camera/name").toString(), name);
    reply->abort();
    camera().clearFaults();
    QCOMPARE(m_client->put("/camera/name", "\"Other\""), 200);
}

void TestSimFaults::faultOfOneRouteSparesTheOthers()
{
    camera().setFault(Route::Xfer, {.kind = FaultKind::Http500});
    QCOMPARE(m_client->get().status, 200);
    QCOMPARE(m_client->put("/camera/name", "\"A\""), 200);
    QCOMPARE(m_client->post("/rec"), 200);
    QCOMPARE(m_client->post("/xfer", live), 500);
}

void TestSimFaults::faultEndsAfterItsCount()
{
    camera().setFault(Route::Status, {.kind = FaultKind::Http500, .count = 2});
    QCOMPARE(m_client->get().status, 500);
    QCOMPARE(m_client->get().status, 500);
    QCOMPARE(m_client->get().status, 200);
}

void TestSimFaults::clearedFaultIsGone()
{
    camera().setFault(Route::Status, {.kind = FaultKind::Http500});
    QCOMPARE(m_client->get().status, 500);
    camera().clearFaults();
    QCOMPARE(m_client->get().status, 200);
}

void TestSimFaults::healthyAnswerFollowsOnTheSameConnection()
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.1.50"), 80);
    QVERIFY(socket.waitForConnected());
    camera().setFault(Route::Bref, {.kind = FaultKind::Drip, .ms = 1, .bytes = 10, .count = 1});
    QByteArray all;
    const auto answers = [&](int count) {
        all += socket.readAll();
        return all.count("HTTP/1.1 200") == count && all.endsWith('}');
    };
    socket.write("POST /bref HTTP/1.1\r\nHost: x\r\nContent-Length: 0\r\n\r\n");
    QVERIFY(QTest::qWaitFor([&] { return answers(1); }));
    socket.write("GET / HTTP/1.1\r\nHost: x\r\n\r\n");
    QVERIFY(QTest::qWaitFor([&] { return answers(2); }));
    const QByteArray status = all.mid(all.lastIndexOf("\r\n\r\n") + 4);
    QCOMPARE(QJsonDocument::fromJson(status).object(), camera().status());
}

void TestSimFaults::closingACameraWithHeldAnswersIsClean()
{
    camera().setFault(Route::Status, {.kind = FaultKind::Delay, .ms = 60000});
    camera().setFault(Route::Xfer, {.kind = FaultKind::NoAnswer});
    QSignalSpy received(m_camera.get(), &Camera::requestReceived);
    QNetworkReply *status = m_client->start("GET", "/");
    QNetworkReply *xfer = m_client->start("POST", "/xfer", live);
    QVERIFY(QTest::qWaitFor([&] { return received.size() == 2; }));
    camera().close();
    QVERIFY(QTest::qWaitFor([&] { return status->isFinished() && xfer->isFinished(); }));
    QVERIFY(status->error() != QNetworkReply::NoError);
    QVERIFY(xfer->error() != QNetworkReply::NoError);
    camera().clearFaults();
    QCOMPARE(camera().listen(), QString());
    QCOMPARE(m_client->get().status, 200);
}

QTEST_GUILESS_MAIN(TestSimFaults)
#include "tst_sim_faults.moc"
