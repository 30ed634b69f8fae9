#include "camera/camera.h"
#include "take/raw_frame.h"
#include "tests/support/camera_document.h"
#include "tests/support/camera_polls.h"
#include "tests/support/end_requests.h"
#include "tests/support/http_recorder.h"
#include "tests/support/vesk_test_main.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <memory>

/** What no request to a camera carries or goes through, and replies that are larger than any camera's. */
class TestCameraRequests : public QObject
{
    Q_OBJECT

public:
    /** Where the environment of this process says that a proxy is. */
    static constexpr const char *ProxyAddress = "127.0.2.8";

private:
    void answerPollsWith(const HttpRecorder::Reply &reply)
    {
        m_server->setAnswer([reply](const HttpRecorder::Request &request) {
            return request.method == "GET" ? reply : HttpRecorder::Reply{};
        });
    }

    void connectIt() { QVERIFY(connects(*m_camera)); }

    qsizetype polls() const { return m_server->requests("GET", "/").size(); }

    std::unique_ptr<HttpRecorder> m_server;
    std::unique_ptr<Camera> m_camera;

private slots:
    void init()
    {
        m_server = std::make_unique<HttpRecorder>("127.0.2.7");
        QVERIFY(m_server->isListening());
        answerPollsWith({statusBody("Cam"), {}});
        m_camera = std::make_unique<Camera>(QHostAddress("127.0.2.7"), nullptr);
    }

    void cleanup()
    {
        m_camera.reset();
        m_server.reset();
        endRequests();
    }

    void proxyOfTheMachineIsNotAsked()
    {
        // Loopback addresses are never asked of a proxy; those of the private network are.
        HttpRecorder server("10.77.0.2");
        QVERIFY2(server.isListening(), "the private network is missing: run the tests with ./dev test");
        server.setAnswer([](const auto &) { return HttpRecorder::Reply{statusBody({}), {}}; });
        HttpRecorder proxy(ProxyAddress);
        QVERIFY(proxy.isListening());
        Camera camera(QHostAddress("10.77.0.2"), nullptr);
        camera.connectCamera();
        QTRY_VERIFY(camera.connected() || !proxy.requests().isEmpty());
        QVERIFY(camera.connected());
        QCOMPARE(proxy.requests().size(), 0);
    }

    void cookieOfACameraIsNotSentBack()
    {
        QHttpHeaders headers;
        headers.append("Set-Cookie", "session=1");
        answerPollsWith({statusBody("Cam"), headers});
        connectIt();
        QTRY_VERIFY(polls() >= 2);
        m_camera->record();
        QTRY_COMPARE(m_server->requests("POST", "/rec").size(), 1);
        for (const HttpRecorder::Request &request : m_server->requests())
            QVERIFY2(!request.headers.contains("Cookie"), request.path.constData());
    }

    void redirectIsNotFollowed()
    {
        QHttpHeaders headers;
        headers.append("Location", "http://127.0.2.7/other");
        m_server->setAnswer([headers](const HttpRecorder::Request &) {
            return HttpRecorder::Reply{statusBody({}), headers, QHttpServerResponder::StatusCode::Found};
        });
        connectIt();
        QTRY_VERIFY(polls() >= 2);
        QCOMPARE(m_server->requests("GET", "/other").size(), 0);
    }

    void statusLargerThanAnyCameraSendsIsALogLineOnly()
    {
        connectIt();
        QSignalSpy polled(m_camera.get(), &Camera::valuesPolled);
        answerPollsWith(
            {"{\"camera\":{\"name\":\"Big\"},\"pad\":\"" + QByteArray(48 << 20, 'x') + "\"}", {}});
        QTest::ignoreMessage(QtCriticalMsg,
                             QRegularExpression(m_camera->objectName() + ": json parse error: "));
        m_server->clear();
        QTRY_VERIFY(polls() >= 2);
        QCOMPARE(m_camera->nameValue()->text(), "Cam");
        answerPollsWith({statusBody("Back"), {}});
        QTRY_COMPARE(m_camera->nameValue()->text(), "Back");
    }

    void frameLargerThanAnyCameraSendsFails()
    {
        m_server->setAnswer([](const auto &) { return HttpRecorder::Reply{QByteArray(48 << 20, 'x'), {}}; });
        RawFrame frame;
        QSignalSpy failed(&frame, &RawFrame::initError);
        QSignalSpy finished(&frame, &RawFrame::initFinished);
        QTest::ignoreMessage(QtDebugMsg, "getFrameXferFinished error");
        QCOMPARE(m_camera->getFrame(&frame), 0);
        QTRY_COMPARE(failed.count() + finished.count(), 1);
        QCOMPARE(failed.count(), 1);
    }
};

int main(int argc, char *argv[])
{
    for (const char *name : {"http_proxy", "HTTP_PROXY", "all_proxy"})
        qputenv(name, QByteArray("http://") + TestCameraRequests::ProxyAddress + ":80");
    return runVeskTest<TestCameraRequests>(argc, argv);
}

#include "tst_camera_requests.moc"
