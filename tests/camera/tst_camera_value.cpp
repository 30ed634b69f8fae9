#include "camera/camera.h"
#include "tests/support/end_requests.h"
#include "tests/support/http_recorder.h"
#include "tests/support/vesk_test_main.h"

#include <QSignalSpy>
#include <memory>

/** What a local write sends, and which polls it holds back. */
class TestCameraValue : public QObject
{
    Q_OBJECT

private:
    CameraValue *exposure() const { return m_camera->expClksValue(); }
    QList<HttpRecorder::Request> exposurePuts() const { return m_server->requests("PUT", "/acq/exp_clks"); }

    /** Long enough for any change that waits to have been sent. */
    static void passSendInterval() { QTest::qWait(120); }

    std::unique_ptr<HttpRecorder> m_server;
    std::unique_ptr<Camera> m_camera;

private slots:
    void init()
    {
        m_server = std::make_unique<HttpRecorder>("127.0.2.1");
        QVERIFY(m_server->isListening());
        m_camera = std::make_unique<Camera>(QHostAddress("127.0.2.1"), nullptr);
        exposure()->setValueFromJson(100);
    }

    void cleanup()
    {
        m_camera.reset();
        m_server.reset();
        endRequests();
    }

    void writeOfPresentValueSendsNothing()
    {
        QSignalSpy changed(exposure(), &VeskValue::valueChanged);
        exposure()->setValue(100, false);
        passSendInterval();
        QCOMPARE(changed.count(), 0);
        QCOMPARE(m_server->requests().size(), 0);
        QVERIFY2(exposure()->setValueFromJson(200), "the next poll is believed");
        QCOMPARE(exposure()->variant(), QVariant(200));
    }

    void twoWritesWithinATickMakeOneRequestWithTheLast()
    {
        exposure()->setValue(200, false);
        exposure()->setValue(300, false);
        QTRY_COMPARE(exposurePuts().size(), 1);
        passSendInterval();
        QCOMPARE(exposurePuts().size(), 1);
        QCOMPARE(exposurePuts()[0].body, "300");
    }

    void writeAndBackWithinATickSendsTheEarlierValue()
    {
        exposure()->setValue(200, false);
        exposure()->setValue(100, false);
        QTRY_COMPARE(exposurePuts().size(), 1);
        passSendInterval();
        QCOMPARE(exposurePuts().size(), 1);
        QCOMPARE(exposurePuts()[0].body, "100");
    }

    void silentWriteIsSentButNotTold()
    {
        QSignalSpy local(exposure(), &VeskValue::valueChangedLocal);
        QSignalSpy sent(exposure(), &CameraValue::valueSent);
        exposure()->setValue(200, true);
        QTRY_COMPARE(sent.count(), 1);
        QCOMPARE(exposurePuts().size(), 1);
        QCOMPARE(local.count(), 0);
    }

    void onlyThePollAfterAWriteIsDropped()
    {
        QSignalSpy remote(exposure(), &CameraValue::valueChangedRemote);
        exposure()->setValue(200, false);
        QVERIFY(!exposure()->setValueFromJson(100));
        QCOMPARE(exposure()->variant(), QVariant(200));
        QCOMPARE(remote.count(), 0);
        QVERIFY(exposure()->setValueFromJson(198));
        QCOMPARE(exposure()->variant(), QVariant(198));
        QCOMPARE(remote.count(), 1);
        QTRY_COMPARE(exposurePuts().size(), 1);
    }

    void droppedPollDoesNotStopTheRequest()
    {
        exposure()->setValue(200, false);
        QVERIFY(!exposure()->setValueFromJson(100));
        QTRY_COMPARE(exposurePuts().size(), 1);
        QCOMPARE(exposurePuts()[0].body, "200");
    }

    void updateFollowsTheSameRuleAsAPoll()
    {
        exposure()->setValue(200, false);
        QVERIFY(!exposure()->updateValue(100));
        QVERIFY(exposure()->updateValue(150));
        QCOMPARE(exposure()->variant(), QVariant(150));
    }

    void bodyIsALoneScalarOfTheType_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("text") << int(QMetaType::QString) << QVariant("Cam 1") << QByteArray("\"Cam 1\"");
        QTest::newRow("text with quote")
            << int(QMetaType::QString) << QVariant("a\"b") << QByteArray("\"a\"b\"");
        QTest::newRow("text beyond ascii") << int(QMetaType::QString) << QVariant(QString::fromUtf8("Bänk"))
                                           << QByteArray("\"B\xc3\xa4nk\"");
        QTest::newRow("int") << int(QMetaType::Int) << QVariant(5) << QByteArray("5");
        QTest::newRow("double") << int(QMetaType::Double) << QVariant(2.5) << QByteArray("2.500000");
        QTest::newRow("bool") << int(QMetaType::Bool) << QVariant(true) << QByteArray("true");
        QTest::newRow("hex") << int(VeskValue::HexUInt64) << QVariant("ff") << QByteArray("\"255\"");
    }

    void bodyIsALoneScalarOfTheType()
    {
        QFETCH(int, type);
        QFETCH(QVariant, value);
        QFETCH(QByteArray, body);
        CameraValue one({"a", "b", "c"}, type, m_camera.get());
        one.setValue(value, false);
        QTRY_COMPARE(m_server->requests().size(), 1);
        const HttpRecorder::Request request = m_server->requests()[0];
        QCOMPARE(request.method, "PUT");
        QCOMPARE(request.path, "/a/b/c");
        QCOMPARE(request.body, body);
        QCOMPARE(request.headers.value("Content-Type"), "application/json");
        QCOMPARE(request.headers.value("User-Agent"), "Vesk 1.0");
    }

    void failedWriteIsToldAsSent()
    {
        m_server->setAnswer([](const auto &) {
            return HttpRecorder::Reply{"no", {}, QHttpServerResponder::StatusCode::InternalServerError};
        });
        QSignalSpy sent(exposure(), &CameraValue::valueSent);
        exposure()->setValue(200, false);
        QTRY_COMPARE(sent.count(), 1);
        QCOMPARE(exposure()->variant(), QVariant(200));
    }

    void secondOfDraggingMakesAtMostTwentyRequestsAndKeepsTheLast()
    {
        QElapsedTimer timer;
        timer.start();
        int last = 100;
        while (timer.elapsed() < 1000) {
            exposure()->setValue(++last, false);
            QTest::qWait(4);
        }
        passSendInterval();
        QVERIFY2(exposurePuts().size() <= 21, qPrintable(QString::number(exposurePuts().size())));
        QVERIFY(exposurePuts().size() >= 10);
        QCOMPARE(exposurePuts().last().body, QByteArray::number(last));
    }

    void changeDoesNotOvertakeTheOneBefore()
    {
        m_server->setHold([](const auto &request) { return request.body == "200"; });
        exposure()->setValue(200, false);
        QTRY_COMPARE(m_server->heldCount(), 1);
        exposure()->setValue(300, false);
        passSendInterval();
        QCOMPARE(exposurePuts().size(), 1);
        exposure()->setValue(400, false);
        m_server->release();
        QTRY_COMPARE(exposurePuts().size(), 2);
        QCOMPARE(exposurePuts()[1].body, "400");
    }

    void changeThatIsHeldBackIsNotUndoneByPolls()
    {
        m_server->setHold([](const auto &request) { return request.body == "200"; });
        exposure()->setValue(200, false);
        QTRY_COMPARE(m_server->heldCount(), 1);
        exposure()->setValue(300, false);
        for (int poll = 0; poll < 3; ++poll)
            exposure()->setValueFromJson(100);
        exposure()->updateValue(100);
        QCOMPARE(exposure()->variant().toInt(), 300);
        QSignalSpy sent(exposure(), &CameraValue::valueSent);
        m_server->release();
        QTRY_COMPARE(sent.count(), 2);
        QCOMPARE(exposurePuts().size(), 2);
        QCOMPARE(exposurePuts()[1].body, "300");
        exposure()->setValueFromJson(100); // this one may have been on its way before
        exposure()->setValueFromJson(250); // the camera's word is believed again
        QCOMPARE(exposure()->variant().toInt(), 250);
    }

    void silentCameraHoldsAChangeBackForASecondOnly()
    {
        m_server->setHold([](const auto &) { return true; });
        exposure()->setValue(200, false);
        QTRY_COMPARE(m_server->heldCount(), 1);
        QElapsedTimer timer;
        timer.start();
        exposure()->setValue(300, false);
        QTRY_COMPARE(exposurePuts().size(), 2);
        QVERIFY2(timer.elapsed() >= 900, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(exposurePuts()[1].body, "300");
        m_server->release();
    }

    void pollsAreIgnoredUntilOneBehindAChangeThatWasHeldBack()
    {
        m_server->setHold([](const auto &) { return true; });
        exposure()->setValue(200, false);
        QTRY_COMPARE(m_server->heldCount(), 1);
        exposure()->setValue(300, false);
        for (int poll = 0; poll < 3; ++poll)
            QVERIFY(!exposure()->setValueFromJson(200));
        QTRY_COMPARE(exposurePuts().size(), 2);
        // It may have been on its way when the change went out.
        QVERIFY(!exposure()->setValueFromJson(200));
        QCOMPARE(exposure()->variant().toInt(), 300);
        QVERIFY(exposure()->setValueFromJson(200));
        QCOMPARE(exposure()->variant().toInt(), 200);
        m_server->release();
    }

    void twoValuesGoOutAsTwoRequests()
    {
        m_camera->trigOffsetValue()->setValue(-5, false);
        exposure()->setValue(200, false);
        QTRY_COMPARE(m_server->requests().size(), 2);
        QCOMPARE(m_server->requests("PUT", "/acq/trig_offset")[0].body, "-5");
        QCOMPARE(exposurePuts()[0].body, "200");
    }

    void valueThatDiesWhileItsRequestIsOutIsSafe()
    {
        m_server->setHold([](const auto &) { return true; });
        exposure()->setValue(200, false);
        QTRY_COMPARE(m_server->heldCount(), 1);
        m_camera.reset();
        QCoreApplication::processEvents();
        m_server->release();
        passSendInterval();
        QCOMPARE(m_server->requests().size(), 1);
    }
};

VESK_TEST_MAIN(TestCameraValue)
#include "tst_camera_value.moc"
