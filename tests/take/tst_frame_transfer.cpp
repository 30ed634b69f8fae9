#include "camera/camera.h"
#include "take/raw_frame.h"
#include "tests/support/end_requests.h"
#include "tests/support/http_recorder.h"
#include "tests/support/vesk_test_main.h"

#include <QSignalSpy>
#include <array>
#include <memory>
#include <thread>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

/**
 * Promises a whole frame on port 80 of a loopback address, sends its start and closes at once. On a thread
 * of its own, as the end must follow the data while the client still reads.
 */
class CuttingServer
{
public:
    explicit CuttingServer(const char *address) : m_socket(::socket(AF_INET, SOCK_STREAM, 0))
    {
        const int on = 1;
        setsockopt(m_socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
        sockaddr_in place{};
        place.sin_family = AF_INET;
        place.sin_port = htons(80);
        inet_aton(address, &place.sin_addr);
        m_listening = ::bind(m_socket, reinterpret_cast<sockaddr *>(&place), sizeof place) == 0 &&
                      ::listen(m_socket, 10) == 0;
        if (m_listening)
            m_thread = std::thread([this] {
                for (int one = 0; (one = ::accept(m_socket, nullptr, nullptr)) >= 0;)
                    serve(one);
            });
    }
    ~CuttingServer()
    {
        ::shutdown(m_socket, SHUT_RDWR); // ends the accept that waits
        if (m_thread.joinable())
            m_thread.join();
        ::close(m_socket);
    }
    Q_DISABLE_COPY_MOVE(CuttingServer)

    bool isListening() const { return m_listening; }

private:
    static void serve(int connection)
    {
        QByteArray received;
        while (!received.endsWith('}')) {
            std::array<char, 4096> part;
            const auto count = ::recv(connection, part.data(), part.size(), 0);
            if (count <= 0)
                break;
            received.append(part.data(), count);
        }
        const QByteArray start =
            "HTTP/1.1 200 OK\r\nImg-Width: 640\r\nImg-Height: 480\r\nImg-Size: 307200\r\n"
            "Meta-Size: 32\r\nContent-Length: 307232\r\n\r\n" +
            QByteArray(1000, '\x40');
        ::send(connection, start.constData(), std::size_t(start.size()), MSG_NOSIGNAL);
        ::close(connection);
    }

    int m_socket;
    bool m_listening = false;
    std::thread m_thread;
};

/** One frame over the wire: what is asked, and how headers and body are read. */
class TestFrameTransfer : public QObject
{
    Q_OBJECT

private:
    using Headers = QList<QPair<QByteArray, QByteArray>>;

    void answerWith(const QByteArray &body, const Headers &headers)
    {
        QHttpHeaders all;
        for (const auto &[name, value] : headers)
            all.append(name, value);
        m_server->setAnswer([body, all](const auto &) { return HttpRecorder::Reply{body, all}; });
    }

    std::unique_ptr<HttpRecorder> m_server;
    std::unique_ptr<Camera> m_camera;

private slots:
    void init()
    {
        m_server = std::make_unique<HttpRecorder>("127.0.2.5");
        QVERIFY(m_server->isListening());
        m_camera = std::make_unique<Camera>(QHostAddress("127.0.2.5"), nullptr);
        m_camera->yearOffsetValue()->setValueFromJson(1735689600);
    }

    void cleanup()
    {
        m_camera.reset();
        m_server.reset();
        endRequests();
    }

    void headersOfOneFamilyAreRead_data()
    {
        QTest::addColumn<Headers>("headers");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::addColumn<quint32>("imgSize");
        QTest::addColumn<quint32>("metaSize");
        QTest::newRow("newer") << Headers{{"Img-Width", "4"},
                                          {"Img-Height", "2"},
                                          {"Img-Size", "8"},
                                          {"Meta-Size", "16"}}
                               << 4 << 2 << 8U << 16U;
        QTest::newRow("older") << Headers{{"Fr-Width", "6"},
                                          {"Fr-Height", "3"},
                                          {"Fr-Size", "18"},
                                          {"Meta-Size", "8"}}
                               << 6 << 3 << 18U << 8U;
        QTest::newRow("newer beside older")
            << Headers{{"Img-Width", "4"}, {"Img-Height", "2"}, {"Img-Size", "8"},  {"Fr-Width", "6"},
                       {"Fr-Height", "3"}, {"Fr-Size", "18"},   {"Meta-Size", "16"}}
            << 4 << 2 << 8U << 16U;
        QTest::newRow("newer without width reads the older")
            << Headers{{"Img-Height", "2"}, {"Img-Size", "8"}, {"Fr-Width", "6"}} << 6 << 0 << 0U << 0U;
        QTest::newRow("none") << Headers{} << 0 << 0 << 0U << 0U;
    }

    void headersOfOneFamilyAreRead()
    {
        QFETCH(Headers, headers);
        answerWith("0123456789abcdef", headers);
        RawFrame frame;
        QSignalSpy finished(&frame, &RawFrame::initFinished);
        QCOMPARE(m_camera->getFrame(&frame), 0);
        QTRY_COMPARE(finished.count(), 1);
        QTEST(int(frame.width()), "width");
        QTEST(int(frame.height()), "height");
        QTEST(frame.imgSize(), "imgSize");
        QTEST(frame.metaSize(), "metaSize");
        QCOMPARE(frame.data(), "0123456789abcdef");
        QCOMPARE(frame.yearOffset(), 1735689600ULL);
    }

    void liveRequestHasNoMoreThanTypeAndSource()
    {
        RawFrame frame;
        QSignalSpy finished(&frame, &RawFrame::initFinished);
        QCOMPARE(m_camera->getFrame(&frame), 0);
        QTRY_COMPARE(finished.count(), 1);
        QCOMPARE(m_server->requests().size(), 1);
        const HttpRecorder::Request request = m_server->requests()[0];
        QCOMPARE(request.method, "POST");
        QCOMPARE(request.path, "/xfer");
        QCOMPARE(request.body, "{\"type\":3,\"src\":1}");
        QCOMPARE(request.headers.value("User-Agent"), "Vesk 1.0");
        QCOMPARE(request.headers.value("Content-Type"), "application/json");
    }

    void noFrameToFillSendsNothing()
    {
        QCOMPARE(m_camera->getFrame(nullptr), -1);
        QTest::qWait(50);
        QCOMPARE(m_server->requests().size(), 0);
    }

    void errorReplyFailsTheFrame()
    {
        m_server->setAnswer([](const auto &) {
            return HttpRecorder::Reply{"x", {}, QHttpServerResponder::StatusCode::NotFound};
        });
        RawFrame frame;
        QSignalSpy failed(&frame, &RawFrame::initError);
        QSignalSpy finished(&frame, &RawFrame::initFinished);
        QTest::ignoreMessage(QtDebugMsg, "getFrameXferFinished error");
        m_camera->getFrame(&frame);
        QTRY_COMPARE(failed.count(), 1);
        QCOMPARE(finished.count(), 0);
    }

    void replyCutInItsBodyFailsTheFrame()
    {
        const CuttingServer server("127.0.2.15");
        QVERIFY(server.isListening());
        Camera camera(QHostAddress("127.0.2.15"), nullptr);
        for (int i = 0; i < 20; ++i) {
            RawFrame frame;
            QSignalSpy finished(&frame, &RawFrame::initFinished);
            QSignalSpy failed(&frame, &RawFrame::initError);
            QTest::ignoreMessage(QtDebugMsg, "getFrameXferFinished error");
            QCOMPARE(camera.getFrame(&frame), 0);
            QTRY_VERIFY(finished.count() + failed.count() > 0);
            QCOMPARE(finished.count(), 0);
            QCOMPARE(failed.count(), 1);
        }
    }

    void unreadBitsOfTheTimeAreMaskedOff_data()
    {
        QTest::addColumn<QByteArray>("meta");
        QTest::addColumn<int>("metaSize");
        QTest::newRow("clear") << QByteArray::fromHex("0500000007000000") << 8;
        QTest::newRow("set") << QByteArray::fromHex("050000fe070000c0") << 8;
        QTest::newRow("no metadata") << QByteArray::fromHex("050000fe070000c0") << 0;
    }

    void unreadBitsOfTheTimeAreMaskedOff()
    {
        QFETCH(QByteArray, meta);
        QFETCH(int, metaSize);
        answerWith(meta + QByteArray(8, '\x10'), {{"Img-Width", "4"},
                                                  {"Img-Height", "2"},
                                                  {"Img-Size", "8"},
                                                  {"Meta-Size", QByteArray::number(metaSize)}});
        m_camera->setSelected(true);
        QCOMPARE(m_camera->requestFrame(), 0);
        QTRY_COMPARE(m_camera->timestamp(), "2025-01-01T00:00:05.000000007Z");
        const quint16 firstPixel = metaSize == 0 ? 5 : 16;
        QCOMPARE(m_camera->veskFrame()->raw()[0], quint16(qRound(firstPixel * 65535.0 / 511.0)));
    }

    void frameThatIsGoneBeforeItsReplyIsLeftAlone()
    {
        m_server->setHold([](const auto &) { return true; });
        auto frame = std::make_unique<RawFrame>();
        m_camera->getFrame(frame.get());
        QTRY_COMPARE(m_server->heldCount(), 1);
        frame.reset();
        m_server->release();
        QTest::qWait(50);
        QVERIFY(m_camera->timestamp().isEmpty());
    }
};

VESK_TEST_MAIN(TestFrameTransfer)
#include "tst_frame_transfer.moc"
