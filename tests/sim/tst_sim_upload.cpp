#include "camera_fixture.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QHttpMultiPart>
#include <QTcpSocket>

using namespace q4sim;
using namespace std::chrono_literals;

namespace
{

// What a form of one part is made of.
struct Form {
    QByteArray disposition = R"(form-data; name="q4fw"; filename="new.q4fw")";
    QByteArray file = "firmware";
};

QByteArray body(const Form &form)
{
    return "--XX\r\nContent-Disposition: " + form.disposition + "\r\n\r\n" + form.file + "\r\n--XX--\r\n";
}

} // namespace

class TestSimUpload : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_fix.start(m_fix.config()); }
    void goodFileIsInstalled();
    void fileIsKnownByItsHash_data();
    void fileIsKnownByItsHash();
    void boundaryCutByThePiecesIsFound();
    void badFormIsRefused_data();
    void badFormIsRefused();
    void emptyFileIsAnError();
    void rejectedFileIsAnError();
    void nextUploadBeginsAtIdle();
    void connectionBreaksAtAByte_data();
    void connectionBreaksAtAByte();
    void clientThatGoesAwayLeavesAnOpenUpload();
    void uploadIsReadSlowly();
    void refusedUploadHasNoEffect();
    void otherRequestsAreAnsweredMeanwhile();
    void uploadIsLoggedFromItsHeadOnWithoutItsBody();
    void nextRequestFollowsOnTheSameConnection();
    void clientThatAsksFirstIsToldToGoOn();

private:
    // A form as a client of the camera's makes it.
    Reply upload(const QByteArray &file, const QString &name = QStringLiteral("new.q4fw"));
    Reply sendForm(const QByteArray &content, const QByteArray &type = "multipart/form-data; boundary=XX");

    // Waits until the camera has so many bytes of a form.
    bool waitForBytes(qint64 bytes)
    {
        return QTest::qWaitFor([&] { return m_fix.camera().upload()["received"].toInteger() == bytes; });
    }

    CameraFixture m_fix{QStringLiteral("127.0.1.74")};
    QNetworkAccessManager m_manager;
};

Reply TestSimUpload::upload(const QByteArray &file, const QString &name)
{
    auto *form = new QHttpMultiPart(QHttpMultiPart::FormDataType);
    QHttpPart part;
    part.setHeader(QNetworkRequest::ContentDispositionHeader,
                   QStringLiteral("form-data; name=\"q4fw\"; filename=\"%1\"").arg(name));
    part.setBody(file);
    form->append(part);
    QNetworkReply *sent = m_manager.post(QNetworkRequest(QUrl("http://127.0.1.74/q4fw")), form);
    form->setParent(sent);
    QSignalSpy finished(sent, &QNetworkReply::finished);
    finished.wait(20000);
    Reply reply;
    reply.status = sent->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    reply.body = sent->readAll();
    reply.error = sent->error();
    sent->deleteLater();
    return reply;
}

Reply TestSimUpload::sendForm(const QByteArray &content, const QByteArray &type)
{
    QNetworkRequest request(QUrl("http://127.0.1.74/q4fw"));
    request.setRawHeader("Content-Type", type);
    QNetworkReply *sent = m_manager.post(request, content);
    QSignalSpy finished(sent, &QNetworkReply::finished);
    finished.wait(20000);
    Reply reply;
    reply.status = sent->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    reply.body = sent->readAll();
    reply.error = sent->error();
    sent->deleteLater();
    return reply;
}

void TestSimUpload::goodFileIsInstalled()
{
    QCOMPARE(m_fix.number("camera/fw_state"), 0);
    QCOMPARE(upload("abc").status, 200);
    QCOMPARE(m_fix.number("camera/fw_state"), 0);
    m_fix.wait(999ms);
    QCOMPARE(m_fix.number("camera/fw_state"), 0);
    m_fix.wait(1ms);
    QCOMPARE(m_fix.number("camera/fw_state"), 1);
    const QJsonObject report = m_fix.client().get("/sim/state").json()["upload"].toObject();
    QCOMPARE(report["complete"].toBool(), true);
    QCOMPARE(report["error"].toString(), QString());
    QCOMPARE(report["file_name"].toString(), QStringLiteral("new.q4fw"));
    QCOMPARE(report["size"].toInteger(), 3);
    // SHA-256 of "abc", as published with the algorithm.
    QCOMPARE(report["sha256"].toString(),
             QStringLiteral("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"));
    QCOMPARE(report["headers"].toObject(),
             QJsonObject({{"content-disposition", "form-data; name=\"q4fw\"; filename=\"new.q4fw\""}}));
    QVERIFY(report["expected"].toInteger() > 3);
    QCOMPARE(report["received"].toInteger(), report["expected"].toInteger());
}

void TestSimUpload::fileIsKnownByItsHash_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("one byte") << QByteArray(1, '\0');
    QTest::newRow("line ends and dashes") << QByteArray("\r\n--\r\n\r\n--XX\r--");
    QTest::newRow("ends with half a boundary") << QByteArray("data\r\n--bound");
    QTest::newRow("one piece") << QByteArray(65536, 'a');
    QTest::newRow("a piece and a byte") << QByteArray(65537, 'b');
    QByteArray noise(5000000, '\0');
    quint32 state = 1;
    for (char &byte : noise) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>(state >> 24);
    }
    QTest::newRow("noise of 5 MB") << noise;
}

void TestSimUpload::fileIsKnownByItsHash()
{
    QFETCH(QByteArray, file);
    QCOMPARE(upload(file, QString::fromUtf8("Füße 2.q4fw")).status, 200);
    const QJsonObject report = m_fix.camera().upload();
    QCOMPARE(report["file_name"].toString(), QString::fromUtf8("Füße 2.q4fw"));
    QCOMPARE(report["size"].toInteger(), file.size());
    QCOMPARE(report["sha256"].toString().toLatin1(),
             QCryptographicHash::hash(file, QCryptographicHash::Sha256).toHex());
}

void TestSimUpload::boundaryCutByThePiecesIsFound()
{
    const QByteArray file = "a\r\n--XY\r\n-";
    const QByteArray form = body({.file = file});
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.1.74"), 80);
    QVERIFY(socket.waitForConnected());
    socket.write("POST /q4fw HTTP/1.1\r\nHost: x\r\nContent-Type: multipart/form-data; boundary=\"XX\"\r\n"
                 "Content-Length: " +
                 QByteArray::number(form.size()) + "\r\n\r\n");
    for (qsizetype i = 0; i < form.size(); ++i) {
        socket.write(form.mid(i, 1));
        QVERIFY(waitForBytes(i + 1));
    }
    QVERIFY(QTest::qWaitFor([&] { return socket.bytesAvailable() > 0; }));
    QVERIFY(socket.readAll().startsWith("HTTP/1.1 200 "));
    QCOMPARE(m_fix.camera().upload()["size"].toInteger(), file.size());
    QCOMPARE(m_fix.camera().upload()["sha256"].toString().toLatin1(),
             QCryptographicHash::hash(file, QCryptographicHash::Sha256).toHex());
}

void TestSimUpload::badFormIsRefused_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QByteArray>("content");
    const QByteArray type = "multipart/form-data; boundary=XX";
    const auto named = [](const char *disposition) { return body({.disposition = disposition}); };
    QTest::newRow("JSON") << QByteArray("application/json") << QByteArray("{}");
    QTest::newRow("mixed parts") << QByteArray("multipart/mixed; boundary=XX") << body({});
    QTest::newRow("no boundary") << QByteArray("multipart/form-data") << body({});
    QTest::newRow("other boundary") << QByteArray("multipart/form-data; boundary=YY") << body({});
    QTest::newRow("empty") << type << QByteArray();
    QTest::newRow("no part") << type << QByteArray("--XX--\r\n");
    QTest::newRow("two parts") << type
                               << QByteArray(body({}).chopped(4) + "\r\nContent-Disposition: form-data; "
                                                                   "name=\"q4fw\"; filename=\"b\"\r\n\r\n"
                                                                   "x\r\n--XX--\r\n");
    QTest::newRow("no end") << type << body({}).chopped(8);
    QTest::newRow("no headers") << type << QByteArray("--XX\r\n\r\nfirmware\r\n--XX--\r\n");
    QTest::newRow("broken header") << type << QByteArray("--XX\r\nfirmware\r\n\r\nx\r\n--XX--\r\n");
    QTest::newRow("headers without an end") << type << QByteArray("--XX\r\n" + QByteArray(20000, 'a'));
    QTest::newRow("other name") << type << named(R"(form-data; name="file"; filename="new.q4fw")");
    QTest::newRow("no name") << type << named(R"(form-data; filename="q4fw")");
    QTest::newRow("no file name") << type << named(R"(form-data; name="q4fw")");
    QTest::newRow("empty file name") << type << named(R"(form-data; name="q4fw"; filename="")");
    QTest::newRow("folders") << type << named(R"(form-data; name="q4fw"; filename="/tmp/new.q4fw")");
    QTest::newRow("attachment") << type << named(R"(attachment; name="q4fw"; filename="new.q4fw")");
}

void TestSimUpload::badFormIsRefused()
{
    QFETCH(QByteArray, type);
    QFETCH(QByteArray, content);
    const Reply reply = sendForm(content, type);
    QCOMPARE(reply.status, 400);
    QVERIFY(!reply.json()["error"].toString().isEmpty());
    QCOMPARE(m_fix.camera().upload()["error"].toString(), reply.json()["error"].toString());
    m_fix.wait(1s);
    QCOMPARE(m_fix.number("camera/fw_state"), 2);
}

void TestSimUpload::emptyFileIsAnError()
{
    QCOMPARE(upload({}).status, 200);
    QCOMPARE(m_fix.camera().upload()["size"].toInteger(-1), 0);
    m_fix.wait(1s);
    QCOMPARE(m_fix.number("camera/fw_state"), 3);
}

void TestSimUpload::rejectedFileIsAnError()
{
    Config config = m_fix.config();
    config.rejectedFirmware = "OLD";
    m_fix.start(config);
    QCOMPARE(upload("OLD firmware").status, 200);
    m_fix.wait(999ms);
    QCOMPARE(m_fix.number("camera/fw_state"), 0);
    m_fix.wait(1ms);
    QCOMPARE(m_fix.number("camera/fw_state"), 4);
    QCOMPARE(upload("NEW firmware, not OLD").status, 200);
    m_fix.wait(1s);
    QCOMPARE(m_fix.number("camera/fw_state"), 1);
}

void TestSimUpload::nextUploadBeginsAtIdle()
{
    QCOMPARE(upload({}).status, 200);
    m_fix.wait(1s);
    QCOMPARE(m_fix.number("camera/fw_state"), 3);
    QCOMPARE(upload("abc").status, 200);
    QCOMPARE(m_fix.number("camera/fw_state"), 0);
    m_fix.wait(1s);
    QCOMPARE(m_fix.number("camera/fw_state"), 1);
}

void TestSimUpload::connectionBreaksAtAByte_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::newRow("first byte") << qint64(1);
    QTest::newRow("in the file") << qint64(100000);
    QTest::newRow("half of it") << qint64(0);
}

void TestSimUpload::connectionBreaksAtAByte()
{
    QFETCH(qint64, bytes);
    m_fix.camera().setFault(Route::Q4fw, {.kind = FaultKind::CloseUpload, .bytes = bytes});
    // A client may try again by itself.
    const Reply reply = upload(QByteArray(3000000, 'x'));
    QCOMPARE(reply.status, 0);
    QVERIFY(reply.error != QNetworkReply::NoError);
    const QJsonObject report = m_fix.camera().upload();
    QCOMPARE(report["complete"].toBool(true), false);
    QCOMPARE(report["received"].toInteger(), bytes > 0 ? bytes : report["expected"].toInteger() / 2);
    QVERIFY(!report.contains("sha256"));
    m_fix.wait(10s);
    QCOMPARE(m_fix.number("camera/fw_state"), 0);
    m_fix.camera().clearFaults();
    QCOMPARE(upload("abc").status, 200);
}

void TestSimUpload::clientThatGoesAwayLeavesAnOpenUpload()
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.1.74"), 80);
    QVERIFY(socket.waitForConnected());
    socket.write("POST /q4fw HTTP/1.1\r\nContent-Type: multipart/form-data; boundary=XX\r\n"
                 "Content-Length: 1000\r\n\r\n--XX\r\n");
    QVERIFY(waitForBytes(6));
    socket.abort();
    QCOMPARE(upload("abc").status, 200);
    QCOMPARE(m_fix.camera().upload()["complete"].toBool(), true);
    QCOMPARE(m_fix.camera().upload()["size"].toInteger(), 3);
}

void TestSimUpload::uploadIsReadSlowly()
{
    m_fix.camera().setFault(Route::Q4fw, {.kind = FaultKind::SlowUpload, .ms = 5, .bytes = 1000});
    QElapsedTimer timer;
    timer.start();
    const QByteArray file(50000, 'x');
    QCOMPARE(upload(file).status, 200);
    // 50 pieces and the form around the file, 5 ms each, less what a coarse timer may take off.
    QVERIFY2(timer.elapsed() >= 200, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(m_fix.camera().upload()["size"].toInteger(), 50000);
}

void TestSimUpload::refusedUploadHasNoEffect()
{
    m_fix.camera().setFault(Route::Q4fw, {.kind = FaultKind::Http500, .count = 1});
    QCOMPARE(upload("abc").status, 500);
    QCOMPARE(m_fix.camera().upload()["complete"].toBool(true), false);
    m_fix.wait(10s);
    QCOMPARE(m_fix.number("camera/fw_state"), 0);
}

void TestSimUpload::otherRequestsAreAnsweredMeanwhile()
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.1.74"), 80);
    QVERIFY(socket.waitForConnected());
    socket.write("POST /q4fw HTTP/1.1\r\nContent-Type: multipart/form-data; boundary=XX\r\n"
                 "Content-Length: 1000\r\n\r\n--XX\r\n");
    QVERIFY(waitForBytes(6));
    QCOMPARE(m_fix.client().get().status, 200);
    QCOMPARE(m_fix.put("/camera/name", "\"Busy\""), 200);
    QCOMPARE(m_fix.text("camera/name"), QStringLiteral("Busy"));
}

void TestSimUpload::uploadIsLoggedFromItsHeadOnWithoutItsBody()
{
    m_fix.camera().setFault(Route::Q4fw, {.kind = FaultKind::CloseUpload, .bytes = 1});
    QVERIFY(upload("abc").error != QNetworkReply::NoError);
    m_fix.camera().clearFaults();
    QCOMPARE(upload("abc").status, 200);
    const QList<Request> received = m_fix.camera().requests("POST", "/q4fw");
    QVERIFY(received.size() >= 2);
    for (const Request &request : received) {
        QVERIFY(request.header("Content-Type").startsWith("multipart/form-data; boundary="));
        QCOMPARE(request.body, QByteArray());
    }
}

void TestSimUpload::nextRequestFollowsOnTheSameConnection()
{
    const QByteArray form = body({});
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.1.74"), 80);
    QVERIFY(socket.waitForConnected());
    // In one go, so that the status request lies right behind the form.
    socket.write("POST /q4fw HTTP/1.1\r\nContent-Type: multipart/form-data; boundary=XX\r\nContent-Length: " +
                 QByteArray::number(form.size()) + "\r\n\r\n" + form +
                 "GET / HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
    QVERIFY(QTest::qWaitFor([&] { return socket.state() == QAbstractSocket::UnconnectedState; }));
    const QByteArray all = socket.readAll();
    QCOMPARE(all.count("HTTP/1.1 200 OK\r\n"), 2);
    const QByteArray status = all.mid(all.lastIndexOf("\r\n\r\n") + 4);
    QCOMPARE(QJsonDocument::fromJson(status).object(), m_fix.camera().status());
}

void TestSimUpload::clientThatAsksFirstIsToldToGoOn()
{
    const QByteArray form = body({});
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.1.74"), 80);
    QVERIFY(socket.waitForConnected());
    socket.write("POST /q4fw HTTP/1.1\r\nExpect: 100-continue\r\n"
                 "Content-Type: multipart/form-data; boundary=XX\r\nContent-Length: " +
                 QByteArray::number(form.size()) + "\r\n\r\n");
    QVERIFY(QTest::qWaitFor([&] { return socket.bytesAvailable() >= 25; }));
    QCOMPARE(socket.readAll(), QByteArray("HTTP/1.1 100 Continue\r\n\r\n"));
    socket.write(form);
    QVERIFY(QTest::qWaitFor([&] { return socket.bytesAvailable() > 0; }));
    QVERIFY(socket.readAll().startsWith("HTTP/1.1 200 OK\r\n"));
}

QTEST_GUILESS_MAIN(TestSimUpload)
#include "tst_sim_upload.moc"
