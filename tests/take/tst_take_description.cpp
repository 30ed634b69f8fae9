#include "camera/camera.h"
#include "take/take.h"
#include "tests/support/end_requests.h"
#include "tests/support/http_recorder.h"
#include "tests/support/vesk_test_main.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTimer>
#include <memory>

using namespace Qt::StringLiterals;

/** When a take asks for its description, what a failed answer does, and how the correction is followed. */
class TestTakeDescription : public QObject
{
    Q_OBJECT

private:
    static QByteArray tree(const QJsonObject &take)
    {
        return QJsonDocument(QJsonObject{{"takes", QJsonObject{{"take3", take}}}}).toJson();
    }

    static HttpRecorder::Reply frame()
    {
        QHttpHeaders headers;
        for (const auto &[name, value] :
             {std::pair("Img-Width", "2"), {"Img-Height", "2"}, {"Img-Size", "4"}, {"Meta-Size", "8"}})
            headers.append(name, value);
        return {QByteArray(12, '\x40'), headers, QHttpServerResponder::StatusCode::Ok};
    }

    /** Frames are answered with a frame, all else with this. */
    void answerWith(const QByteArray &body,
                    QHttpServerResponder::StatusCode status = QHttpServerResponder::StatusCode::Ok)
    {
        m_server->setAnswer([body, status](const HttpRecorder::Request &request) {
            return request.path == "/xfer" ? frame() : HttpRecorder::Reply{body, {}, status};
        });
    }

    qsizetype infoCount() const { return m_server->requests("GET", "/takes/take3").size(); }
    qsizetype frameCount() const { return m_server->requests("POST", "/xfer").size(); }
    QByteArray lastFrameBody() const { return m_server->requests("POST", "/xfer").last().body; }
    /** The timer of the description; the object's only other timer is the one of play. */
    const QTimer *infoTimer() const { return m_take->findChild<QTimer *>(); }

    static bool noReplyIsOpen()
    {
        return VeskApp::instance()->networkAccessManager()->findChildren<QNetworkReply *>().isEmpty();
    }

    void appear()
    {
        m_take->setSavedOpened(true, false, true);
        QTRY_VERIFY(m_take->valuesInit());
    }

    /** Selected, resting, and nothing on its way. */
    void rest()
    {
        appear();
        m_take->setSelected(true);
        m_take->pause();
        QTRY_VERIFY(frameCount() > 0 && !m_take->frameInFlight());
        m_server->clear();
    }

    std::unique_ptr<HttpRecorder> m_server;
    std::unique_ptr<Camera> m_camera;
    Take *m_take = nullptr;

private slots:
    void init()
    {
        m_server = std::make_unique<HttpRecorder>("127.0.2.21");
        QVERIFY(m_server->isListening());
        answerWith(tree({{"first_fr", -5}, {"last_fr", 9}}));
        m_camera = std::make_unique<Camera>(QHostAddress("127.0.2.21"), nullptr);
        m_take = new Take(3, m_camera.get());
    }

    void cleanup()
    {
        m_take = nullptr;
        m_camera.reset();
        m_server.reset();
        endRequests();
    }

    /** The states that a camera's status brings about, one step a row. */
    void timerRunsForATakeThatIsActiveOrSaved()
    {
        QVERIFY(!infoTimer()->isActive());
        m_take->setActive(true); // recording
        QVERIFY(infoTimer()->isActive());
        QCOMPARE(infoTimer()->interval(), 100);
        m_take->setSavedOpened(true, false, true); // saved, still the active one
        QVERIFY(infoTimer()->isActive());
        m_take->setActive(false); // saved
        QVERIFY(infoTimer()->isActive());
        QCOMPARE(infoTimer()->interval(), 100);
        m_take->setActive(true);
        m_take->setSavedOpened(false, false, true); // deleted while active: no polls until something changes
        QVERIFY(!infoTimer()->isActive());
        m_take->setActive(true);
        QVERIFY(!infoTimer()->isActive());
        m_take->setActive(false);
        QVERIFY(!infoTimer()->isActive());
        m_take->setActive(true);
        QVERIFY(infoTimer()->isActive());
        m_take->setActive(false); // empty
        QVERIFY(!infoTimer()->isActive());
    }

    void becomingActiveAsksAtOnceAndTellsOnce()
    {
        QSignalSpy changed(m_take, &Take::activeChanged);
        m_take->setActive(true);
        m_take->setActive(true);
        QCOMPARE(changed.count(), 1);
        QTRY_VERIFY(infoCount() >= 1);
        QCOMPARE(m_take->valuesInit(), false); // only an appearing recording opens the range
    }

    void lockedTellsOnlyWhenItChanges()
    {
        QSignalSpy changed(m_take, &Take::lockedChanged);
        m_take->setLocked(false);
        QCOMPARE(changed.count(), 0);
        m_take->setLocked(true);
        m_take->setLocked(true);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(m_take->locked(), true);
    }

    void unselectedSavedTakeSendsNothing()
    {
        appear();
        m_server->clear();
        QSignalSpy ticks(infoTimer(), &QTimer::timeout);
        QTRY_VERIFY(ticks.count() >= 3);
        QCOMPARE(m_server->requests().size(), 0);
    }

    void selectedTakeAndActiveTakeAreAskedAgainAndAgain_data()
    {
        QTest::addColumn<bool>("selected");
        QTest::newRow("selected") << true;
        QTest::newRow("active") << false;
    }

    void selectedTakeAndActiveTakeAreAskedAgainAndAgain()
    {
        QFETCH(bool, selected);
        appear();
        m_take->pause();
        if (selected)
            m_take->setSelected(true);
        else
            m_take->setActive(true);
        QTRY_VERIFY(infoCount() >= 5);
        answerWith(tree({{"fr_cnt", 77}}));
        QTRY_COMPARE(m_take->frCntValue()->variant().toInt(), 77);
    }

    void requestOnItsWayHoldsTheNextOneBackUnlessARecordingAppears()
    {
        m_server->setHold([](const auto &) { return true; });
        m_take->setActive(true);
        QTRY_COMPARE(m_server->heldCount(), 1);
        QSignalSpy ticks(infoTimer(), &QTimer::timeout);
        QTRY_VERIFY(ticks.count() >= 3);
        QCOMPARE(infoCount(), 1);
        m_take->setSavedOpened(true, false, true);
        QTRY_COMPARE(m_server->heldCount(), 2);
        m_server->release();
        QTRY_VERIFY(m_take->valuesInit());
        QTRY_VERIFY(infoCount() >= 3);
    }

    void descriptionThatIsNoJsonIsLoggedAndAskedForAgain()
    {
        answerWith("{\"takes\":");
        QTest::ignoreMessage(QtCriticalMsg,
                             QRegularExpression(u"^[0-9A-F]{1,16}-Take: json parse error: .+"_s));
        m_take->setActive(true);
        QTRY_COMPARE(infoCount(), 1);
        QSignalSpy ticks(infoTimer(), &QTimer::timeout);
        answerWith(tree({{"fr_cnt", 5}}));
        QTRY_COMPARE(m_take->frCntValue()->variant().toInt(), 5);
    }

    void descriptionWithAnHttpErrorChangesNothing()
    {
        answerWith(tree({{"fr_cnt", 5}}), QHttpServerResponder::StatusCode::InternalServerError);
        m_take->setActive(true);
        QTRY_VERIFY(infoCount() >= 3);
        QCOMPARE(m_take->frCntValue()->variant().toInt(), 0);
    }

    void failedFirstDescriptionIsNotMadeUpFor()
    {
        answerWith(tree({{"first_fr", -5}}), QHttpServerResponder::StatusCode::InternalServerError);
        m_take->setSelected(true);
        m_take->setSavedOpened(true, false, true);
        QTRY_VERIFY(infoCount() >= 1);
        answerWith(tree({{"first_fr", -5}}));
        QTRY_COMPARE(m_take->firstFrValue()->variant().toInt(), -5);
        QCOMPARE(m_take->valuesInit(), false);
    }

    void lostDescriptionOfALaterRecordingLeavesNoMarkerBesideIt_data()
    {
        QTest::addColumn<QByteArray>("lost");
        QTest::addColumn<QHttpServerResponder::StatusCode>("status");
        const auto failed = QHttpServerResponder::StatusCode::InternalServerError;
        QTest::newRow("refused") << QByteArray("{}") << failed;
        QTest::newRow("no JSON") << QByteArray("{") << QHttpServerResponder::StatusCode::Ok;
    }

    void lostDescriptionOfALaterRecordingLeavesNoMarkerBesideIt()
    {
        QFETCH(const QByteArray, lost);
        QFETCH(const QHttpServerResponder::StatusCode, status);
        rest();                     // frames -5 to 9
        m_take->setSelected(false); // so that the first description is the only one
        QTRY_VERIFY(noReplyIsOpen());
        m_take->setSavedOpened(false, false, false);
        const QRegularExpression parseError(u"-Take: json parse error: .+"_s);
        if (status == QHttpServerResponder::StatusCode::Ok)
            QTest::ignoreMessage(QtCriticalMsg, parseError);
        answerWith(lost, status);
        m_server->clear();
        m_take->setSavedOpened(true, false, false);
        QTRY_VERIFY(infoCount() == 1 && noReplyIsOpen());
        QCOMPARE(m_take->bFr(), 9);
        answerWith(tree({{"first_fr", -3}, {"last_fr", 4}}));
        m_take->setSelected(true);
        QTRY_COMPARE(m_take->bFr(), 4);
        QCOMPARE(m_take->aFr(), -3);
        QCOMPARE(m_take->fr(), -3);
        QTRY_VERIFY(frameCount() > 0 && lastFrameBody().contains("\"start\":-3,"));
        // Once: what the operator marks from now on stays, whatever the camera tells.
        m_take->setBFr(2);
        answerWith(tree({{"first_fr", 0}, {"last_fr", 1}}));
        QTRY_COMPARE(m_take->lastFrValue()->variant().toInt(), 1);
        QCOMPARE(m_take->bFr(), 2);
    }

    void ownValuesFollowThoseOfEveryRecordingInTheirOrder()
    {
        const QList<VeskValue *> own{m_take->prtnFrCntValue(), m_take->prtnPtFrCntValue(),
                                     m_take->corrModeValue()};
        QCOMPARE(m_take->values().last(3), own);
    }

    void changedCorrectionIsWrittenToTheTakeAndShownWithAFreshFrame()
    {
        rest();
        m_take->corrModeValue()->setValue(1U, false);
        QTRY_COMPARE(m_server->requests("PUT", "/takes/take3/acq/corr_mode").size(), 1);
        QCOMPARE(m_server->requests("PUT", "/takes/take3/acq/corr_mode").first().body, QByteArray("1"));
        QTRY_COMPARE(frameCount(), 1);
    }

    void correctionChangedAtTheCameraIsShownWithAFreshFrame()
    {
        rest();
        answerWith(tree({{"first_fr", -5}, {"last_fr", 9}, {"acq", QJsonObject{{"corr_mode", 1}}}}));
        QTRY_COMPARE(m_take->corrModeValue()->variant(), QVariant(1U));
        QTRY_COMPARE(frameCount(), 1);
    }

    void frameThatWasOnItsWayWhenTheCorrectionChangedIsAskedForAgain()
    {
        rest();
        m_server->setHold([](const HttpRecorder::Request &request) { return request.path == "/xfer"; });
        m_take->refreshIfPaused();
        QTRY_COMPARE(m_server->heldCount(), 1);
        QSignalSpy sent(qobject_cast<CameraValue *>(m_take->corrModeValue()), &CameraValue::valueSent);
        m_take->corrModeValue()->setValue(1U, false);
        QTRY_COMPARE(sent.count(), 1);
        QCoreApplication::processEvents();
        QCOMPARE(frameCount(), 1);
        m_server->release();
        QTRY_COMPARE(frameCount(), 2);
    }

    void changedCorrectionOfAPlayingTakeAsksForNoFrameOfItsOwn()
    {
        rest();
        m_take->setSelected(false);
        m_take->play();
        m_take->setSelected(true);
        m_server->setHold([](const HttpRecorder::Request &request) { return request.path == "/xfer"; });
        QTRY_COMPARE(m_server->heldCount(), 1);
        m_take->corrModeValue()->setValue(1U, false);
        QTRY_COMPARE(m_server->requests("PUT", "/takes/take3/acq/corr_mode").size(), 1);
        const qlonglong shown = m_take->fr();
        QTRY_VERIFY(m_take->fr() != shown);
        QCOMPARE(frameCount(), 1);
    }
};

VESK_TEST_MAIN(TestTakeDescription)
#include "tst_take_description.moc"
