#include "camera/camera.h"
#include "tests/support/camera_document.h"
#include "tests/support/camera_polls.h"
#include "tests/support/end_requests.h"
#include "tests/support/http_recorder.h"
#include "tests/support/vesk_test_main.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSignalSpy>
#include <memory>

/** Connecting, polling and disconnecting, against replies to the byte. */
class TestCamera : public QObject
{
    Q_OBJECT

private:
    static QJsonObject document()
    {
        return {{"camera", QJsonObject{{"name", "Cam"}, {"serial", "42"}, {"fw_ver", "1.2"}}},
                {"acq",
                 acquisition(
                     {{"exp_clks", 100}, {"state", 1}, {"prtn_cnt", 4}, {"saved_takes", QJsonArray{1, 2}}})},
                {"meta", QJsonObject{{"year_offset", 1000}}},
                {"adjust", QJsonObject{{"gain", 2.0}, {"cfa", 1}}}};
    }

    static HttpRecorder::Reply json(const QJsonObject &object)
    {
        return {QJsonDocument(object).toJson(), {}, QHttpServerResponder::StatusCode::Ok};
    }

    void answerPollsWith(const QByteArray &body,
                         QHttpServerResponder::StatusCode status = QHttpServerResponder::StatusCode::Ok)
    {
        m_server->setAnswer([body, status](const HttpRecorder::Request &request) {
            return request.path == "/" ? HttpRecorder::Reply{body, {}, status} : json({});
        });
    }

    qsizetype polls() const { return m_server->requests("GET", "/").size(); }

    void connectIt() { QVERIFY(connects(*m_camera)); }

    std::unique_ptr<HttpRecorder> m_server;
    std::unique_ptr<Camera> m_camera;

private slots:
    void init()
    {
        m_server = std::make_unique<HttpRecorder>("127.0.2.2");
        QVERIFY(m_server->isListening());
        m_server->setAnswer([](const auto &) { return json(document()); });
        m_camera = std::make_unique<Camera>(QHostAddress("127.0.2.2"), nullptr);
    }

    void cleanup()
    {
        m_camera.reset();
        m_server.reset();
        endRequests();
    }

    void objectNameIsHexadecimalWithTheClass()
    {
        const QRegularExpression form("^[0-9A-F]{1,16}-Camera$");
        QVERIFY2(form.match(m_camera->objectName()).hasMatch(), qPrintable(m_camera->objectName()));
        QVERIFY(Camera(QHostAddress("127.0.2.2"), nullptr).objectName() != m_camera->objectName());
    }

    void vocabularyStandsInOrderWithItsTypes()
    {
        const QList<VeskValue *> &values = m_camera->values();
        QCOMPARE(values.size(), 64 + 7 * 7 + 19);
        const struct {
            int index;
            const char *property;
            QStringList path;
            int type;
        } rows[] = {
            {0, "name", {"camera", "name"}, QMetaType::QString},
            {4, "fwVer", {"camera", "fw_ver"}, QMetaType::QString},
            {5, "fwVerInt", {"camera", "fw_ver"}, QMetaType::Int},
            {15, "expTime", {"acq", "exp_time"}, QMetaType::Double},
            {25, "brefState", {"acq", "bref_state"}, QMetaType::UInt},
            {27, "take1PrtnFrCnt", {"takes", "take1", "prtn_fr_cnt"}, QMetaType::Int},
            {45, "ssdWrSeq", {"ssd", "wr_seq"}, QMetaType::Double},
            {48, "ssdSize", {"ssd", "size"}, VeskValue::HexUInt64},
            {54, "ssdAutosaveName", {"ssd", "autosave", "name"}, QMetaType::QString},
            {56, "yearOffset", {"meta", "year_offset"}, QMetaType::Int},
            {62, "featureSsdFormat", {"features", "ssd-format"}, QMetaType::Int},
            {63, "featureSsdSave", {"features", "ssd-save"}, QMetaType::Int},
        };
        for (const auto &row : rows) {
            auto *value = m_camera->property(row.property).value<CameraValue *>();
            QCOMPARE(value, values[row.index]);
            QCOMPARE(value->jsonPath(), row.path);
            QCOMPARE(value->type(), row.type);
            QCOMPARE(value->parent(), m_camera.get());
        }
        QCOMPARE(values[56]->altJsonPath(), (QStringList{"time", "year_offset"}));
        QCOMPARE(values[0]->altJsonPath(), QStringList{""});
        QCOMPARE(values[64]->jsonPath(), (QStringList{"io", "trigger", "signal"}));
        QCOMPARE(values[65]->jsonPath(), (QStringList{"io", "trigger", "mode"}));
        QCOMPARE(values[112]->jsonPath(), (QStringList{"io", "io6", "max"}));
        QCOMPARE(values[113]->jsonPath(), (QStringList{"adjust", "offset"}));
        QCOMPARE(values[131]->jsonPath(), (QStringList{"adjust", "wb_cal_b"}));
    }

    void firstReplyFillsValuesBeforeTheCameraIsConnected()
    {
        QStringList order;
        connect(m_camera->prtnCntValue(), &VeskValue::valueChanged, this, [&] { order << "values"; });
        connect(m_camera.get(), &Camera::connectedChanged, this, [&] {
            QVERIFY(m_camera->connected());
            QCOMPARE(m_camera->takesAvailable(), 2);
            order << "connectedChanged";
        });
        connect(m_camera->timeValue(), &VeskValue::valueChanged, this, [&] { order << "time"; });
        connect(m_camera.get(), &Camera::cameraConnected, this, [&] { order << "cameraConnected"; });
        connect(m_camera.get(), &Camera::valuesPolled, this, [&] { order << "valuesPolled"; });
        QVERIFY(!m_camera->connected());
        m_camera->connectCamera();
        QTRY_VERIFY(order.contains("valuesPolled"));
        QCOMPARE(order.mid(0, 5),
                 (QStringList{"values", "connectedChanged", "time", "cameraConnected", "valuesPolled"}));
        QCOMPARE(m_camera->imgAdjModel()->gain()->variant(), QVariant(2.0));
    }

    void pollCarriesOnlyTheAgentHeader()
    {
        connectIt();
        const HttpRecorder::Request request = m_server->requests("GET", "/")[0];
        QCOMPARE(request.headers.value("User-Agent"), "Vesk 1.0");
        QVERIFY(!request.headers.contains("Content-Type"));
        QVERIFY(!request.headers.contains("Cookie"));
        QVERIFY(request.body.isEmpty());
    }

    void clockOfTheCameraIsSetAtEveryConnection()
    {
        connectIt();
        QTRY_COMPARE(m_server->requests("PUT", "/meta/time").size(), 1);
        const QByteArray body = m_server->requests("PUT", "/meta/time")[0].body;
        QVERIFY(body.startsWith('"') && body.endsWith('"'));
        const QDateTime sent =
            QDateTime::fromString(QString::fromLatin1(body.mid(1, body.size() - 2)), "yyyy-MM-dd hh:mm:ss");
        QVERIFY2(sent.isValid(), body.constData());
        const QDateTime utc(sent.date(), sent.time(), QTimeZone::UTC);
        QVERIFY(qAbs(utc.secsTo(QDateTime::currentDateTimeUtc())) < 10);
    }

    void connectedCameraIsPolledFourTimesASecond()
    {
        connectIt();
        m_server->clear();
        QElapsedTimer timer;
        timer.start();
        QTRY_COMPARE_WITH_TIMEOUT(polls(), 4, 5000);
        QVERIFY2(timer.elapsed() >= 700, qPrintable(QString::number(timer.elapsed())));
    }

    void pollTickDuringAPollSendsNothing()
    {
        connectIt();
        m_server->setHold([](const HttpRecorder::Request &request) { return request.path == "/"; });
        QTRY_COMPARE(m_server->heldCount(), 1);
        const qsizetype before = polls();
        QTest::qWait(700);
        QCOMPARE(polls(), before);
        m_server->release();
        QTRY_VERIFY(polls() > before);
    }

    void yearOffsetComesFromTheAlternativePlace()
    {
        m_server->setAnswer([](const auto &) {
            QJsonObject object = document();
            object.remove("meta");
            object.insert("time", QJsonObject{{"year_offset", 1735689600}});
            return json(object);
        });
        connectIt();
        QCOMPARE(m_camera->yearOffsetValue()->variant(), QVariant(1735689600));
    }

    void firmwareVersionIsReadAsTextAndAsNumber()
    {
        connectIt();
        QCOMPARE(m_camera->fwVerValue()->text(), "1.2");
        QCOMPARE(m_camera->fwVerIntValue()->variant(), QVariant(0));
        m_camera->updateValues({{"camera", QJsonObject{{"fw_ver", 31}}}});
        QCOMPARE(m_camera->fwVerValue()->text(), "");
        QCOMPARE(m_camera->fwVerIntValue()->variant(), QVariant(31));
    }

    void missingKeyLeavesTheValue()
    {
        m_camera->updateValues(document());
        m_camera->updateValues({{"acq", QJsonObject{{"exp_clks", QJsonValue::Null}}}, {"camera", 5}});
        QCOMPARE(m_camera->expClksValue()->variant(), QVariant(100));
        QCOMPARE(m_camera->nameValue()->text(), "Cam");
        QVERIFY(!m_camera->lensNameValue()->variant().isValid());
    }

    void valuesStandAtTheirPlacesInTheJsonOfAll()
    {
        m_camera->updateValues(document());
        const QJsonObject all = m_camera->valuesToJson();
        QCOMPARE(all["acq"].toObject()["exp_clks"].toInt(), 100);
        QCOMPARE(all["camera"].toObject()["name"].toString(), "Cam");
        QCOMPARE(all["meta"].toObject()["year_offset"].toInt(), 1000);
        QCOMPARE(all["adjust"].toObject()["gain"].toDouble(), 2.0);
    }

    void localWriteOutlivesThePollUnderWay()
    {
        connectIt();
        m_server->setHold([](const HttpRecorder::Request &request) { return request.path == "/"; });
        QTRY_COMPARE(m_server->heldCount(), 1);
        m_camera->expClksValue()->setValue(500, false);
        QTRY_COMPARE(m_server->requests("PUT", "/acq/exp_clks").size(), 1);
        QSignalSpy polled(m_camera.get(), &Camera::valuesPolled);
        m_server->release();
        QTRY_COMPARE(polled.count(), 1);
        QCOMPARE(m_camera->expClksValue()->variant(), QVariant(500));
        QTRY_COMPARE(polled.count(), 2);
        QCOMPARE(m_camera->expClksValue()->variant(), QVariant(100));
    }

    void noTakesAreAvailableWhenEveryPartitionIsSaved()
    {
        m_server->setAnswer([](const auto &) {
            QJsonObject object = document();
            object.insert("acq",
                          acquisition({{"prtn_cnt", 2}, {"saved_takes", QJsonArray{1, 2, 2, 9, "x"}}}));
            return json(object);
        });
        connectIt();
        QCOMPARE(m_camera->takesAvailable(), 0);
    }

    void replyThatIsNoJsonIsALogLineOnly_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("cut") << QByteArray("{\"acq\":{\"state\":");
        QTest::newRow("html") << QByteArray("<html>");
        QTest::newRow("scalar") << QByteArray("5");
        QTest::newRow("deep") << QByteArray(200000, '[');
    }

    void replyThatIsNoJsonIsALogLineOnly()
    {
        QFETCH(QByteArray, body);
        QJsonParseError error;
        QVERIFY(QJsonDocument::fromJson(body, &error).isNull());
        connectIt();
        QSignalSpy polled(m_camera.get(), &Camera::valuesPolled);
        const QString line = m_camera->objectName() + ": json parse error: " + error.errorString();
        QTest::ignoreMessage(QtCriticalMsg, line.toUtf8().constData());
        answerPollsWith(body);
        m_server->clear();
        QTRY_COMPARE(polls(), 1);
        QTRY_COMPARE(polls(), 2);
        QCOMPARE(polled.count(), 0);
        m_server->setAnswer([](const auto &) { return json(document()); });
        QVERIFY(m_camera->connected());
        QCOMPARE(m_camera->nameValue()->text(), "Cam");
        QTRY_VERIFY(polled.count() > 0);
    }

    void documentOfAnErrorReplyIsIgnored()
    {
        connectIt();
        QSignalSpy polled(m_camera.get(), &Camera::valuesPolled);
        answerPollsWith("{\"camera\":{\"name\":\"Other\"}}",
                        QHttpServerResponder::StatusCode::InternalServerError);
        QTRY_VERIFY(polled.count() >= 2);
        QCOMPARE(m_camera->nameValue()->text(), "Cam");
        QVERIFY(m_camera->connected());
    }

    void wrongTypesBecomeDefaults()
    {
        connectIt();
        m_camera->updateValues({{"acq", QJsonObject{{"state", "x"}, {"exp_clks", QJsonArray{1}}}},
                                {"camera", QJsonObject{{"name", 5}}},
                                {"adjust", QJsonObject{{"gain", "much"}, {"cfa", 1e300}}}});
        QCOMPARE(m_camera->acqStateValue()->variant(), QVariant(0));
        QCOMPARE(m_camera->expClksValue()->variant(), QVariant(0));
        QCOMPARE(m_camera->nameValue()->text(), "");
        QCOMPARE(m_camera->imgAdjModel()->cfa()->variant(), QVariant(0));
    }

    void failedFirstPollLeavesTheCameraNotConnectedWithoutRetry()
    {
        answerPollsWith("");
        QTest::ignoreMessage(QtCriticalMsg, QRegularExpression(": json parse error: "));
        m_camera->connectCamera();
        QTRY_COMPARE(polls(), 1);
        QTest::qWait(600);
        QCOMPARE(polls(), 1);
        QVERIFY(!m_camera->connected());
    }

    void cameraOffTheNetworkStaysConnectedAndComesBack()
    {
        connectIt();
        QTest::ignoreMessage(QtCriticalMsg, QRegularExpression(": json parse error: "));
        m_server.reset();
        QTest::qWait(600);
        QVERIFY(m_camera->connected());
        m_server = std::make_unique<HttpRecorder>("127.0.2.2");
        QVERIFY(m_server->isListening());
        m_server->setAnswer([](const auto &) { return json(statusDocument("Back")); });
        QTRY_COMPARE_WITH_TIMEOUT(m_camera->nameValue()->text(), "Back", 10000);
    }

    void disconnectBeforeTheFirstReplyTellsFailure()
    {
        m_server->setHold([](const auto &) { return true; });
        QSignalSpy failed(m_camera.get(), &Camera::cameraConnectFailed);
        QSignalSpy unselect(m_camera.get(), &VeskObject::shouldBeUnselected);
        QSignalSpy disconnected(m_camera.get(), &Camera::cameraDisconnected);
        m_camera->connectCamera();
        QTRY_COMPARE(m_server->heldCount(), 1);
        m_camera->disconnectCamera();
        QCOMPARE(failed.count(), 1);
        QCOMPARE(unselect.count(), 1);
        QCOMPARE(disconnected.count(), 0);
        m_camera.reset();
        m_server->release();
        QTest::qWait(50);
        QCOMPARE(polls(), 1);
    }

    void disconnectStopsPollingAndTellsOnce()
    {
        connectIt();
        QSignalSpy changed(m_camera.get(), &Camera::connectedChanged);
        QSignalSpy disconnected(m_camera.get(), &Camera::cameraDisconnected);
        QSignalSpy failed(m_camera.get(), &Camera::cameraConnectFailed);
        m_camera->setSelected(true);
        m_camera->disconnectCamera();
        QCOMPARE(changed.count(), 1);
        QCOMPARE(disconnected.count(), 1);
        QCOMPARE(failed.count(), 0);
        QVERIFY(!m_camera->connected());
        QTest::qWait(100);
        m_server->clear();
        QTest::qWait(600);
        QCOMPARE(m_server->requests().size(), 0);
    }

    void settingsLieUnderTheSerialNumber()
    {
        VeskApp *app = VeskApp::instance();
        m_camera->setSetting("x", 1);
        QCOMPARE(app->setting("cameras/000000/x"), QVariant(1));
        QCOMPARE(m_camera->setting("x").toInt(), 1);
        m_camera->updateValues(document());
        QCOMPARE(m_camera->setting("x", 7).toInt(), 7);
        m_camera->setSetting("x", 2);
        QCOMPARE(app->setting("cameras/42/x"), QVariant(2));
    }
};

VESK_TEST_MAIN(TestCamera)
#include "tst_camera.moc"
