#include "camera/camera.h"
#include "tests/support/end_requests.h"
#include "tests/support/http_recorder.h"
#include "tests/support/vesk_test_main.h"

#include <QRegularExpression>
#include <memory>

/** Every command as it goes over the wire. */
class TestCameraCommands : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<HttpRecorder> m_server;
    std::unique_ptr<Camera> m_camera;

private slots:
    void init()
    {
        m_server = std::make_unique<HttpRecorder>("127.0.2.3");
        QVERIFY(m_server->isListening());
        m_camera = std::make_unique<Camera>(QHostAddress("127.0.2.3"), nullptr);
    }

    void cleanup()
    {
        m_camera.reset();
        m_server.reset();
        endRequests();
    }

    void commandPostsItsBody_data()
    {
        using Command = std::function<void(Camera &)>;
        QTest::addColumn<Command>("command");
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("body");
        const auto row = [](const char *name, const QByteArray &path, const QByteArray &body,
                            const Command &command) { QTest::newRow(name) << command << path << body; };
        row("record", "/rec", "", [](Camera &c) { c.record(); });
        row("trigger", "/trig", "", [](Camera &c) { c.trigger(); });
        row("abort", "/abort", "", [](Camera &c) { c.abort(); });
        row("delete all takes", "/del", "{\"take\":-1}", [](Camera &c) { c.deleteAllTakes(); });
        row("partition", "/prtn", "{\"cnt\":4}", [](Camera &c) { c.partition(4); });
        row("focus far", "/focus", "{\"step\":100}", [](Camera &c) { c.lensFocus(100); });
        row("focus near", "/focus", "{\"step\":-10}", [](Camera &c) { c.lensFocus(-10); });
        row("focus infinity", "/focus", "{\"step\":32767}", [](Camera &c) { c.lensFocus(32767); });
        row("close shutter", "/shtr", "{\"pos\":1}", [](Camera &c) { c.shutterMove(true); });
        row("open shutter", "/shtr", "{\"pos\":0}", [](Camera &c) { c.shutterMove(false); });
        row("eject", "/ssd-umount", "", [](Camera &c) { c.ssdUmount(); });
        row("format", "/ssd-format", "{\"name\":\"DISK\"}", [](Camera &c) { c.ssdFormat("DISK"); });
        row("format with quote", "/ssd-format", "{\"name\":\"A\"B\"}",
            [](Camera &c) { c.ssdFormat("A\"B"); });
    }

    void commandPostsItsBody()
    {
        QFETCH(std::function<void(Camera &)>, command);
        QFETCH(QByteArray, path);
        QFETCH(QByteArray, body);
        command(*m_camera);
        QTRY_COMPARE(m_server->requests().size(), 1);
        const HttpRecorder::Request request = m_server->requests()[0];
        QCOMPARE(request.method, "POST");
        QCOMPARE(request.path, path);
        QCOMPARE(request.body, body);
        QCOMPARE(request.headers.value("Content-Type"), "application/json");
        QCOMPARE(request.headers.value("User-Agent"), "Vesk 1.0");
    }

    void refusedCommandIsSilent()
    {
        m_server->setAnswer([](const auto &) {
            return HttpRecorder::Reply{
                "{\"error\":\"busy\"}", {}, QHttpServerResponder::StatusCode::Conflict};
        });
        m_camera->acqStateValue()->setValueFromJson(1);
        m_camera->record();
        QTRY_COMPARE(m_server->requests().size(), 1);
        QTest::qWait(50);
        QCOMPARE(m_camera->acqStateValue()->variant(), QVariant(1));
    }

    void blackReferenceReplyShowsWithoutThePoll()
    {
        m_server->setAnswer([](const auto &) { return HttpRecorder::Reply{"{\"bref_state\":3}", {}}; });
        m_camera->bref();
        QTRY_COMPARE(m_camera->brefStateValue()->variant(), QVariant(3U));
        QCOMPARE(m_server->requests("POST", "/bref")[0].body, "");
    }

    void blackReferenceReplyThatIsNoJsonChangesNothing()
    {
        m_camera->brefStateValue()->setValueFromJson(1);
        m_server->setAnswer([](const auto &) { return HttpRecorder::Reply{"{bref", {}}; });
        const QRegularExpression line("^" + m_camera->objectName() + ": json parse error: ");
        QTest::ignoreMessage(QtCriticalMsg, line);
        m_camera->bref();
        QTRY_COMPARE(m_server->requests().size(), 1);
        QTest::qWait(50);
        QCOMPARE(m_camera->brefStateValue()->variant(), QVariant(1U));
    }

    void blackReferenceErrorOrReplyWithoutTheStateChangesNothing()
    {
        m_camera->brefStateValue()->setValueFromJson(1);
        m_server->setAnswer([](const auto &) {
            return HttpRecorder::Reply{"{\"bref_state\":4}", {}, QHttpServerResponder::StatusCode::Conflict};
        });
        m_camera->bref();
        QTRY_COMPARE(m_server->requests().size(), 1);
        m_server->setAnswer([](const auto &) { return HttpRecorder::Reply{"{}", {}}; });
        m_camera->bref();
        QTRY_COMPARE(m_server->requests().size(), 2);
        QTest::qWait(50);
        QCOMPARE(m_camera->brefStateValue()->variant(), QVariant(1U));
    }

    void cameraThatGoesAwayDuringACommandIsSafe()
    {
        m_server->setHold([](const auto &) { return true; });
        m_camera->bref();
        m_camera->record();
        QTRY_COMPARE(m_server->heldCount(), 2);
        m_camera.reset();
        QCoreApplication::processEvents();
        m_server->release();
        QTest::qWait(50);
        QCOMPARE(m_server->requests().size(), 2);
    }

    void addressesBecomeUrls_data()
    {
        QTest::addColumn<QHostAddress>("address");
        QTest::addColumn<QString>("url");
        QTest::newRow("IPv4") << QHostAddress("10.0.0.7") << "http://10.0.0.7/rec";
        QTest::newRow("IPv6") << QHostAddress("fd00::7") << "http://[fd00::7]/rec";
        QTest::newRow("none") << QHostAddress() << "";
    }

    void addressesBecomeUrls()
    {
        QFETCH(QHostAddress, address);
        QFETCH(QString, url);
        QCOMPARE(VeskApp::urlForAddress(address, "/rec").toString(), url);
    }
};

VESK_TEST_MAIN(TestCameraCommands)
#include "tst_camera_commands.moc"
