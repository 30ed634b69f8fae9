#include "app/qml_object_list_model_base.h"
#include "camera/camera.h"
#include "image/img_adj_model.h"
#include "take/raw_frame.h"
#include "take/ssd_ls_list_model.h"
#include "take/ssd_ls_sort_proxy_model.h"
#include "take/ssd_take.h"
#include "tests/support/camera_document.h"
#include "tests/support/camera_polls.h"
#include "tests/support/end_requests.h"
#include "tests/support/http_recorder.h"
#include "tests/support/vesk_test_main.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkReply>
#include <QPointer>
#include <QSignalSpy>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;
using Status = QHttpServerResponder::StatusCode;

/** A recording on the drive as a source: how it is opened, what it asks for, and how it goes. */
class TestSsdTake : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<HttpRecorder> m_server;
    std::unique_ptr<Camera> m_camera;
    QJsonValue m_openTakes = QJsonArray();
    HttpRecorder::Reply m_opened;
    HttpRecorder::Reply m_closed;

    HttpRecorder::Reply answer(const HttpRecorder::Request &request) const
    {
        if (request.path == "/") {
            QJsonObject status = statusDocument(u"Cam"_s);
            status["ssd"] = QJsonObject{{"state", 3}, {"open_takes", m_openTakes}};
            return {QJsonDocument(status).toJson(), {}, Status::Ok};
        }
        if (request.path == "/ssd-fopen")
            return m_opened;
        if (request.path == "/ssd-fclose")
            return m_closed;
        if (!request.path.startsWith("/ssd/takes/"))
            return {};
        const QString key = QString::fromLatin1(request.path.mid(11));
        const QJsonObject take{{"first_fr", -5},
                               {"last_fr", 9},
                               {"fr_cnt", 15},
                               {"acq", QJsonObject{{"res", "4x2"}, {"corr_mode", 1}}}};
        const QJsonObject tree{{"ssd", QJsonObject{{"takes", QJsonObject{{key, take}}}}}};
        return {QJsonDocument(tree).toJson(), {}, Status::Ok};
    }

    QQmlObjectListModelBase *list() const { return m_camera->ssdTakes(); }
    SsdTake *take(int row = 0) const { return qobject_cast<SsdTake *>(list()->get(row)); }
    static VeskObject *selected() { return VeskApp::instance()->selectedVeskObject(); }

    void connectIt() { QVERIFY(connects(*m_camera)); }

    void poll() { QVERIFY(polls(*m_camera)); }

    /** Opens a recording, which gets this number. */
    SsdTake *open(int number = 7, const QString &name = u"run.vesk"_s)
    {
        m_openTakes = QJsonArray{number};
        m_opened.body = QStringLiteral("{\"take\":%1}").arg(number).toUtf8();
        const int before = list()->size();
        m_camera->ssdFOpen(name);
        return QTest::qWaitFor([&] { return list()->size() > before && take(before)->valuesInit(); })
                   ? take(before)
                   : nullptr;
    }

    /** The recording has been tried to open. */
    void tryToOpen(const QString &name = u"run.vesk"_s)
    {
        m_camera->ssdFOpen(name);
        auto *opening = m_camera->findChild<SsdTake *>();
        QVERIFY(opening);
        QSignalSpy finished(opening, &SsdTake::fopenFinished);
        QTRY_COMPARE(finished.count(), 1);
    }

private slots:
    void init()
    {
        m_openTakes = QJsonArray();
        m_opened = {"{\"take\":7}", {}, Status::Ok};
        m_closed = {"{}", {}, Status::Ok};
        m_server = std::make_unique<HttpRecorder>("127.0.2.25");
        QVERIFY(m_server->isListening());
        m_server->setAnswer([this](const HttpRecorder::Request &request) { return answer(request); });
        m_camera = std::make_unique<Camera>(QHostAddress("127.0.2.25"), nullptr);
    }

    void cleanup()
    {
        m_camera.reset();
        m_server.reset();
        endRequests();
        QCOMPARE(selected(), nullptr);
    }

    void newTakeIsMadeAndNotOpen()
    {
        auto *made = new SsdTake(u"a b"_s, m_camera.get());
        QCOMPARE(made->name(), u"a b"_s);
        QCOMPARE(made->takeId(), -1);
        QVERIFY(!made->savedOpened());
        QCOMPARE(made->type(), int(VeskObject::SsdTakeType));
        QCOMPARE(made->parent(), m_camera.get());
        QVERIFY(made->objectName().endsWith(u"-SsdTake"));
        QCOMPARE(made->fileSaveJobQueue(), m_camera->fileSaveJobQueue());
    }

    void openedTakeIsListedAndSelected()
    {
        connectIt();
        SsdTake *opened = open();
        QVERIFY(opened);
        QCOMPARE(list()->size(), 1);
        QCOMPARE(opened->takeId(), 7);
        QVERIFY(opened->savedOpened());
        QCOMPARE(selected(), opened);
        QCOMPARE(opened->aFr(), -5);
        QCOMPARE(opened->bFr(), 9);
        const auto sent = m_server->requests("POST", "/ssd-fopen");
        QCOMPARE(sent.size(), 1);
        QCOMPARE(sent[0].body, QByteArray("{\"name\":\"run.vesk\"}"));
        QCOMPARE(sent[0].headers.value("User-Agent").toByteArray(), QByteArray("Vesk 1.0"));
        QCOMPARE(sent[0].headers.value("Content-Type").toByteArray(), QByteArray("application/json"));
        QVERIFY(!m_server->requests("GET", "/ssd/takes/take7").isEmpty());
    }

    void nameIsSentAsItStands_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("quote") << u"a \"b\".vesk"_s;
        QTest::newRow("backslash") << u"a\\b.vesk"_s;
        QTest::newRow("slash") << u"a/b.vesk"_s;
        QTest::newRow("blanks") << u"  a  b "_s;
        QTest::newRow("placeholder") << u"%1 %2.vesk"_s;
        QTest::newRow("Japanese") << u"衝突試験.vesk"_s;
        QTest::newRow("255 bytes") << QString(250, u'x') + u".vesk"_s;
        QTest::newRow("empty") << QString();
    }

    void nameIsSentAsItStands()
    {
        QFETCH(QString, name);
        m_opened.status = Status::BadRequest;
        QTest::ignoreMessage(QtDebugMsg, "fopenFinished error");
        tryToOpen(name);
        QCOMPARE(m_server->requests("POST", "/ssd-fopen")[0].body, "{\"name\":\"" + name.toUtf8() + "\"}");
    }

    void selectedEntryIsTheOneThatIsOpened()
    {
        m_camera->ssdFOpen();
        QVERIFY(!m_camera->findChild<SsdTake *>());
        auto *entries = qobject_cast<SsdLsListModel *>(m_camera->ssdLsEntries()->sourceModel());
        for (const QString &name : {u"a"_s, u"b"_s})
            entries->append(new SsdLsEntry(entries->size(), name, 0, 0, false, m_camera.get()));
        m_camera->ssdFOpen();
        QVERIFY(!m_camera->findChild<SsdTake *>());
        entries->items().at(1)->select(false);
        m_camera->ssdFOpen();
        QTRY_COMPARE(m_server->requests("POST", "/ssd-fopen").size(), 1);
        QCOMPARE(m_server->requests("POST", "/ssd-fopen")[0].body, QByteArray("{\"name\":\"b\"}"));
    }

    void refusedOpenLeavesNothingButALine_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<Status>("status");
        QTest::newRow("refusal") << QByteArray(R"({"error":"no such recording"})") << Status::NotFound;
        QTest::newRow("server error") << QByteArray() << Status::InternalServerError;
        QTest::newRow("error with a number") << QByteArray(R"({"take":3})") << Status::Conflict;
    }

    void refusedOpenLeavesNothingButALine()
    {
        QFETCH(QByteArray, body);
        QFETCH(Status, status);
        m_opened = {body, {}, status};
        QSignalSpy listed(list(), &QAbstractItemModel::rowsInserted);
        QTest::ignoreMessage(QtDebugMsg, "fopenFinished error");
        tryToOpen();
        const QPointer<SsdTake> refused = m_camera->findChild<SsdTake *>();
        QTRY_VERIFY(!refused);
        QCOMPARE(listed.count(), 0);
        QCOMPARE(selected(), nullptr);
    }

    void answerWithoutANumberOpensNumberNought_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("no key") << QByteArray("{}");
        QTest::newRow("broken JSON") << QByteArray("{\"take\":7");
        QTest::newRow("text") << QByteArray("{\"take\":\"7\"}");
        QTest::newRow("empty") << QByteArray();
    }

    void answerWithoutANumberOpensNumberNought()
    {
        QFETCH(QByteArray, body);
        connectIt();
        m_opened.body = body;
        m_camera->ssdFOpen(u"run.vesk"_s);
        QTRY_COMPARE(list()->size(), 1);
        QCOMPARE(take()->takeId(), 0);
        // The camera knows of no such recording.
        QTRY_COMPARE(list()->size(), 0);
    }

    void silentCameraLeavesTheOpenWaiting()
    {
        m_server->setHold([](const HttpRecorder::Request &request) { return request.path == "/ssd-fopen"; });
        m_camera->ssdFOpen(u"run.vesk"_s);
        QTRY_COMPARE(m_server->heldCount(), 1);
        QCOMPARE(list()->size(), 0);
        const QPointer<SsdTake> waiting = m_camera->findChild<SsdTake *>();
        m_camera.reset();
        QVERIFY(!waiting);
        m_server->release();
        QTRY_VERIFY(VeskApp::instance()->networkAccessManager()->findChildren<QNetworkReply *>().isEmpty());
    }

    void statusThatWasAskedForBeforeTheOpenSaysNothingOfIt()
    {
        connectIt();
        m_server->setHold([](const HttpRecorder::Request &request) { return request.path == "/"; });
        QTRY_COMPARE(m_server->heldCount(), 1);
        m_camera->ssdFOpen(u"run.vesk"_s);
        QTRY_COMPARE(list()->size(), 1);
        // The held status still lists nothing.
        QSignalSpy polled(m_camera.get(), &Camera::valuesPolled);
        m_server->release();
        QTRY_COMPARE(polled.count(), 1);
        QCOMPARE(list()->size(), 1);
        QVERIFY(take()->savedOpened());
        // The next one counts.
        QTRY_COMPARE(list()->size(), 0);
    }

    void closedTakeSelectsItsCameraAndLeavesWithTheNextStatus()
    {
        connectIt();
        QPointer<SsdTake> opened = open();
        QVERIFY(opened);
        QSignalSpy gone(opened, &AbstractTake::deletedClosed);
        QSignalSpy finished(opened, &SsdTake::fcloseFinished);
        opened->fclose();
        QVERIFY(opened->savedOpened());
        QTRY_COMPARE(finished.count(), 1);
        QCOMPARE(m_server->requests("POST", "/ssd-fclose")[0].body, QByteArray("{\"take\":7}"));
        QVERIFY(!opened->savedOpened());
        QCOMPARE(gone.count(), 1);
        QCOMPARE(selected(), m_camera.get());
        QVERIFY(opened->imgFrame()->image().isNull());
        // A status that still lists it leaves it in place, closed.
        poll();
        QCOMPARE(list()->size(), 1);
        QVERIFY(!opened->savedOpened());
        QCOMPARE(gone.count(), 1);
        m_openTakes = QJsonArray();
        QTRY_COMPARE(list()->size(), 0);
        QTRY_VERIFY(!opened);
        QCOMPARE(selected(), m_camera.get());
    }

    void refusedCloseLeavesTheTakeOpen_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<Status>("status");
        QTest::newRow("refusal") << QByteArray(R"({"error":"busy"})") << Status::Conflict;
        QTest::newRow("server error") << QByteArray() << Status::InternalServerError;
    }

    void refusedCloseLeavesTheTakeOpen()
    {
        QFETCH(QByteArray, body);
        QFETCH(Status, status);
        connectIt();
        SsdTake *opened = open();
        QVERIFY(opened);
        m_closed = {body, {}, status};
        QSignalSpy finished(opened, &SsdTake::fcloseFinished);
        QTest::ignoreMessage(QtDebugMsg, "fcloseFinished error");
        opened->fclose();
        QTRY_COMPARE(finished.count(), 1);
        poll();
        QVERIFY(opened->savedOpened());
        QCOMPARE(list()->size(), 1);
        QCOMPARE(selected(), opened);
    }

    void brokenAnswerToACloseClosesAllTheSame()
    {
        connectIt();
        SsdTake *opened = open();
        m_closed.body = "this is {no} JSON";
        opened->fclose();
        QTRY_VERIFY(!opened->savedOpened());
    }

    void cameraThatClosesByItselfTakesTheTakeAway()
    {
        connectIt();
        QPointer<SsdTake> opened = open();
        QVERIFY(opened);
        QSignalSpy gone(opened, &AbstractTake::deletedClosed);
        QSignalSpy left(opened, &VeskObject::shouldBeUnselected);
        m_openTakes = QJsonArray{1, 2};
        QTRY_COMPARE(list()->size(), 0);
        QCOMPARE(gone.count(), 1);
        QCOMPARE(left.count(), 1);
        QCOMPARE(selected(), m_camera.get());
        QTRY_VERIFY(!opened);
    }

    void onlyWhatIsMissingGoes()
    {
        connectIt();
        SsdTake *first = open(7);
        m_opened.body = "{\"take\":8}";
        m_openTakes = QJsonArray{7, 8, 9};
        m_camera->ssdFOpen(u"other.vesk"_s);
        QTRY_COMPARE(list()->size(), 2);
        m_openTakes = QJsonArray{8};
        QTRY_COMPARE(list()->size(), 1);
        QCOMPARE(take()->takeId(), 8);
        QVERIFY(take() != first);
        QCOMPARE(selected(), take());
    }

    void statusWithoutTheListChangesNothing_data()
    {
        QTest::addColumn<QJsonValue>("openTakes");
        QTest::newRow("none") << QJsonValue(QJsonValue::Undefined);
        QTest::newRow("null") << QJsonValue();
        QTest::newRow("object") << QJsonValue(QJsonObject());
        QTest::newRow("number") << QJsonValue(0);
    }

    void statusWithoutTheListChangesNothing()
    {
        QFETCH(QJsonValue, openTakes);
        connectIt();
        QVERIFY(open());
        m_openTakes = openTakes;
        poll();
        QCOMPARE(list()->size(), 1);
        QVERIFY(take()->savedOpened());
    }

    void takeStaysListedUntilItsCameraGoes()
    {
        connectIt();
        const QPointer<SsdTake> opened = open();
        QVERIFY(opened);
        m_camera->disconnectCamera();
        QCOMPARE(list()->size(), 1);
        QCOMPARE(selected(), nullptr);
        QVERIFY(opened->savedOpened());
        m_camera.reset();
        QVERIFY(!opened);
    }

    void framesComeFromTheDrive()
    {
        connectIt();
        SsdTake *opened = open();
        QVERIFY(opened);
        opened->pause();
        QTRY_VERIFY(!m_server->requests("POST", "/xfer").isEmpty());
        RawFrame frame;
        QCOMPARE(opened->getFrame(&frame, 3), 0);
        std::unique_ptr<QNetworkReply> run(opened->startXfer(-5, 15));
        const auto asked = [this](const QByteArray &body) {
            const auto sent = m_server->requests("POST", "/xfer");
            return std::any_of(sent.begin(), sent.end(), [&](const auto &one) { return one.body == body; });
        };
        QTRY_VERIFY(asked(R"({"type":3,"src":2,"take":7,"start":-5,"cnt":15})"));
        QTRY_VERIFY(asked(R"({"type":3,"src":2,"take":7,"start":3,"cnt":1,"lock":0})"));
        for (const auto &request : m_server->requests("POST", "/xfer"))
            QVERIFY2(request.body.startsWith(R"({"type":3,"src":2,"take":7,)"), request.body.constData());
    }

    void correctionIsShownAndCannotBeWritten()
    {
        connectIt();
        SsdTake *opened = open();
        QVERIFY(opened);
        QVERIFY(!qobject_cast<CameraValue *>(opened->corrModeValue()));
        QCOMPARE(opened->corrModeValue()->variant().toInt(), 1);
        QVERIFY(!opened->corrModeValue()->setProperty("value", 0));
        opened->corrModeValue()->setValue(0, false);
        opened->imgAdjModel()->gain()->setValue(2.0, false);
        // The write of the gain, which has a way to the camera, is there; that of the correction never comes.
        QTRY_COMPARE(m_server->requests("PUT", "/ssd/takes/take7/adjust/gain").size(), 1);
        QCOMPARE(m_server->requests("PUT", "/ssd/takes/take7/acq/corr_mode").size(), 0);
    }

    void descriptionIsAskedForOnlyWhileSelected()
    {
        connectIt();
        SsdTake *opened = open();
        QVERIFY(opened);
        const auto asked = [this] { return m_server->requests("GET", "/ssd/takes/take7").size(); };
        const qsizetype before = asked();
        QTRY_VERIFY(asked() > before + 1);
        VeskApp::instance()->setSelectedVeskObject(m_camera.get());
        poll();
        const qsizetype after = asked();
        poll();
        QCOMPARE(asked(), after);
    }

    void frameIsAskedForOnlyWhileOpenAndSelected()
    {
        connectIt();
        auto *made = new SsdTake(u"a"_s, m_camera.get());
        VeskApp::instance()->setSelectedVeskObject(made);
        QCOMPARE(made->requestFrame(), -1);
        SsdTake *opened = open();
        QVERIFY(opened);
        VeskApp::instance()->setSelectedVeskObject(m_camera.get());
        QCOMPARE(opened->requestFrame(), -1);
    }
};

VESK_TEST_MAIN(TestSsdTake)
#include "tst_ssd_take.moc"
