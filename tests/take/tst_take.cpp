#include "camera/camera.h"
#include "image/img_search.h"
#include "take/raw_frame.h"
#include "take/take.h"
#include "tests/support/end_requests.h"
#include "tests/support/http_recorder.h"
#include "tests/support/vesk_test_main.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkReply>
#include <QSignalSpy>
#include <memory>

using namespace Qt::StringLiterals;

/** Counts how often it was finished. */
class CountingTake : public Take
{
public:
    using Take::Take;

    int savedCount = 0;

protected:
    void takeSaved() override { ++savedCount; }
};

/** One take: what it asks of the camera, what it takes from the answer, and how it comes and goes. */
class TestTake : public QObject
{
    Q_OBJECT

private:
    static QJsonObject record(const QJsonObject &more = {})
    {
        QJsonObject take{{"first_fr", -5}, {"last_fr", 9}, {"fr_cnt", 15}, {"prtn_fr_cnt", 100}};
        for (auto row = more.begin(); row != more.end(); ++row)
            take[row.key()] = row.value();
        return take;
    }

    static QByteArray tree(const QJsonObject &take, const QString &key = u"take3"_s)
    {
        return QJsonDocument(QJsonObject{{"takes", QJsonObject{{key, take}}}}).toJson();
    }

    void answerWith(const QByteArray &body,
                    QHttpServerResponder::StatusCode status = QHttpServerResponder::StatusCode::Ok)
    {
        m_server->setAnswer([body, status](const auto &) { return HttpRecorder::Reply{body, {}, status}; });
    }

    qsizetype infoCount() const { return m_server->requests("GET", "/takes/take3").size(); }

    /** The recording appears and its description arrives. */
    void appear()
    {
        QSignalSpy init(m_take, &PlaybackVeskObject::valuesInitFinished);
        m_take->setSavedOpened(true, false, true);
        QTRY_COMPARE(init.count(), 1);
    }

    std::unique_ptr<HttpRecorder> m_server;
    std::unique_ptr<Camera> m_camera;
    Take *m_take = nullptr;

private slots:
    void init()
    {
        m_server = std::make_unique<HttpRecorder>("127.0.2.20");
        QVERIFY(m_server->isListening());
        answerWith(tree(record()));
        m_camera = std::make_unique<Camera>(QHostAddress("127.0.2.20"), nullptr);
        m_take = new Take(3, m_camera.get());
    }

    void cleanup()
    {
        m_take = nullptr;
        m_camera.reset();
        m_server.reset();
        endRequests();
    }

    void takeIsNamedAndPlaysAndIsEmptyAtTheStart()
    {
        QVERIFY2(m_take->objectName().endsWith("-Take"), qPrintable(m_take->objectName()));
        QCOMPARE(m_take->type(), int(VeskObject::TakeType));
        QCOMPARE(m_take->camera(), m_camera.get());
        QCOMPARE(m_take->parent(), m_camera.get());
        QCOMPARE(m_take->takeId(), 3);
        QCOMPARE(m_take->savedOpened(), false);
        QCOMPARE(m_take->active(), false);
        QCOMPARE(m_take->locked(), false);
        QCOMPARE(m_take->valuesInit(), false);
        QCOMPARE(m_take->state(), PlaybackVeskObject::Play);
        QCOMPARE(m_take->metaSizeValue()->variant(), QVariant(32));
    }

    void takeIdTellsOnlyWhenItChanges()
    {
        QSignalSpy changed(m_take, &AbstractTake::takeIdChanged);
        m_take->setTakeId(3);
        QCOMPARE(changed.count(), 0);
        m_take->setTakeId(4);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(m_take->takeId(), 4);
        QCOMPARE(m_take->takePath(), u"/takes/take4"_s);
    }

    void descriptionIsAskedAtTheTakesPathAndPouredOverItsValues()
    {
        answerWith(
            tree(record({{"pt_fr_cnt", 10},
                         {"prtn_pt_cnt", 90},
                         {"acq", QJsonObject{{"res", "640x480"}, {"fr_rate", 1000.5}, {"corr_mode", 1}}},
                         {"camera", QJsonObject{{"name", "Cam"}, {"cfa", 2}}},
                         {"lens", QJsonObject{{"focal_len", 50}}},
                         {"adjust", QJsonObject{{"gain", 2.5}}}})));
        appear();
        const auto asked = m_server->requests("GET", "/takes/take3");
        QCOMPARE(asked.first().headers.combinedValue("user-agent"), QByteArray("Vesk 1.0"));
        QCOMPARE(m_take->firstFrValue()->variant(), QVariant(-5));
        QCOMPARE(m_take->lastFrValue()->variant(), QVariant(9));
        QCOMPARE(m_take->frCntValue()->variant(), QVariant(15));
        QCOMPARE(m_take->ptFrCntValue()->variant(), QVariant(10));
        QCOMPARE(m_take->prtnFrCntValue()->variant(), QVariant(100));
        QCOMPARE(m_take->prtnPtFrCntValue()->variant(), QVariant(90));
        QCOMPARE(m_take->resValue()->variant(), QVariant(u"640x480"_s));
        QCOMPARE(m_take->frRateValue()->variant(), QVariant(1000.5));
        QCOMPARE(m_take->corrModeValue()->variant(), QVariant(1U));
        QCOMPARE(m_take->cameraNameValue()->variant(), QVariant(u"Cam"_s));
        QCOMPARE(m_take->cfaValue()->variant(), QVariant(2));
        QCOMPARE(m_take->lensFocalLenValue()->variant(), QVariant(50));
        QCOMPARE(m_take->imgAdjModel()->gain()->variant(), QVariant(2.5));
    }

    void firstDescriptionOpensTheRangeAndPutsThePlayheadOnTheFirstFrame()
    {
        appear();
        QCOMPARE(m_take->aFr(), -5);
        QCOMPARE(m_take->bFr(), 9);
        QCOMPARE(m_take->fr(), -5);
        QCOMPARE(m_take->valuesInit(), true);
    }

    void descriptionOfAnotherTakeChangesNothing()
    {
        answerWith(tree(record(), u"take4"_s));
        appear();
        QCOMPARE(m_take->lastFrValue()->variant().toInt(), 0);
        QCOMPARE(m_take->aFr(), 0);
    }

    void metaSizeStays32UntilTheCameraTellsIt_data()
    {
        QTest::addColumn<QJsonObject>("more");
        QTest::addColumn<int>("metaSize");
        QTest::newRow("not told") << QJsonObject() << 32;
        QTest::newRow("in meta") << QJsonObject{{"meta", QJsonObject{{"size", 64}}}} << 64;
        QTest::newRow("older firmware") << QJsonObject{{"meta_size", 16}} << 16;
        QTest::newRow("meta without size") << QJsonObject{{"meta", QJsonObject()}} << 32;
    }

    void metaSizeStays32UntilTheCameraTellsIt()
    {
        QFETCH(QJsonObject, more);
        answerWith(tree(record(more)));
        appear();
        QTEST(m_take->metaSizeValue()->variant().toInt(), "metaSize");
    }

    void laterRecordingKeepsMarkersAndFinishesNoSecondTime()
    {
        QSignalSpy finished(m_take, &PlaybackVeskObject::valuesInitFinished);
        appear();
        m_take->pause();
        m_take->setAFr(-2);
        m_take->setBFr(4);
        m_take->setFr(3);
        m_take->setSavedOpened(false, false, false);
        answerWith(tree(record({{"first_fr", -20}, {"last_fr", 30}})));
        m_take->setSavedOpened(true, false, false);
        QTRY_COMPARE(m_take->lastFrValue()->variant().toInt(), 30);
        QCOMPARE(m_take->aFr(), -2);
        QCOMPARE(m_take->bFr(), 4);
        QCOMPARE(m_take->fr(), 3);
        QCOMPARE(m_take->valuesInit(), true);
        QCOMPARE(finished.count(), 1);
    }

    void markersBesideALaterRecordingStandAtItsEnds_data()
    {
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("last");
        QTest::addColumn<int>("a");
        QTest::addColumn<int>("b");
        QTest::newRow("shorter") << -3 << 4 << -3 << 4;
        QTest::newRow("behind") << 20 << 30 << 20 << 20;
        QTest::newRow("before") << -40 << -30 << -30 << -30;
    }

    void markersBesideALaterRecordingStandAtItsEnds()
    {
        QFETCH(int, first);
        QFETCH(int, last);
        appear(); // -5 to 9
        m_take->pause();
        m_take->setSavedOpened(false, false, false);
        answerWith(tree(record({{"first_fr", first}, {"last_fr", last}})));
        m_take->setSavedOpened(true, false, false);
        QTRY_COMPARE(m_take->lastFrValue()->variant().toInt(), last);
        QTEST(int(m_take->aFr()), "a");
        QTEST(int(m_take->bFr()), "b");
        QVERIFY(m_take->fr() >= m_take->aFr() && m_take->fr() <= m_take->bFr());
    }

    void takeAsksForFramesOnlyWhileItHoldsARecording()
    {
        m_take->setSelected(true);
        QCOMPARE(m_take->requestFrame(), -1);
        QCOMPARE(m_server->requests("POST", "/xfer").size(), 0);
        answerWith(tree(record()), QHttpServerResponder::StatusCode::NotFound);
        m_take->setSavedOpened(true, false, true);
        QTRY_VERIFY(m_server->requests("POST", "/xfer").size() > 0);
    }

    void appearingTellsOnceAndAsksAtOnce()
    {
        QSignalSpy changed(m_take, &AbstractTake::savedOpenedChanged);
        m_take->setSavedOpened(false, false, false);
        QCOMPARE(changed.count(), 0);
        m_take->setSavedOpened(true, false, false);
        m_take->setSavedOpened(true, false, false);
        QCOMPARE(changed.count(), 1);
        QTRY_COMPARE(infoCount(), 1);
    }

    void vanishingTellsAndSelectsTheCameraAndLeavesNoPicture()
    {
        appear();
        VeskApp::instance()->setSelectedVeskObject(m_take);
        QImage picture(4, 4, QImage::Format_BGR888);
        picture.fill(Qt::red);
        m_take->imgFrame()->setImage(picture);
        QSignalSpy gone(m_take, &AbstractTake::deletedClosed);
        m_take->setSavedOpened(false, false, false);
        QCOMPARE(gone.count(), 1);
        QCOMPARE(VeskApp::instance()->selectedVeskObject(), m_camera.get());
        QVERIFY(m_take->imgFrame()->image().isNull());
    }

    void frameThatArrivesAfterTheTakeHasGoneIsNotShown()
    {
        appear();
        VeskApp::instance()->setSelectedVeskObject(m_take);
        m_take->pause();
        QTRY_VERIFY(!m_take->frameInFlight());
        QHttpHeaders headers;
        for (const auto &[name, value] :
             {std::pair("Img-Width", "2"), {"Img-Height", "2"}, {"Img-Size", "4"}, {"Meta-Size", "8"}})
            headers.append(name, value);
        m_server->setAnswer([headers](const auto &) {
            return HttpRecorder::Reply{QByteArray(12, '\x40'), headers, QHttpServerResponder::StatusCode::Ok};
        });
        m_server->setHold([](const HttpRecorder::Request &request) { return request.path == "/xfer"; });
        m_take->refreshIfPaused();
        QTRY_COMPARE(m_server->heldCount(), 1);
        m_take->setSavedOpened(false, false, false);
        m_server->release();
        QTRY_VERIFY(!m_take->frameInFlight());
        QVERIFY(m_take->imgFrame()->image().isNull());
    }

    void recordingInAPartitionThatWasPausedIsShownWhenItIsOpened()
    {
        appear();
        VeskApp *app = VeskApp::instance();
        app->setSelectedVeskObject(m_take);
        m_take->pause();
        QTRY_VERIFY(!m_take->frameInFlight());
        m_take->setSavedOpened(false, false, false);
        m_take->setSavedOpened(true, false, false);
        QTRY_VERIFY(infoCount() >= 2);
        m_server->clear();
        app->setSelectedVeskObject(m_take);
        QTRY_COMPARE(m_server->requests("POST", "/xfer").size(), 1);
    }

    void lateDescriptionOfATakeThatHasGoneOpensNothing()
    {
        m_server->setHold([](const auto &) { return true; });
        m_take->setSavedOpened(true, false, true);
        QTRY_COMPARE(m_server->heldCount(), 1);
        m_take->setSavedOpened(false, false, true);
        m_server->release();
        QTRY_COMPARE(m_take->lastFrValue()->variant().toInt(), 9);
        QCOMPARE(m_take->valuesInit(), false);
        answerWith(tree(record({{"first_fr", -1}, {"last_fr", 1}})));
        appear();
        QCOMPARE(m_take->aFr(), -1);
        QCOMPARE(m_take->bFr(), 1);
        QCOMPARE(m_take->fr(), -1);
    }

    void goingIsToldBeforeTheCameraIsSelected()
    {
        appear();
        VeskApp *app = VeskApp::instance();
        app->setSelectedVeskObject(m_take);
        m_take->imgSearch()->start(true);
        QStringList order;
        const QObject listener;
        connect(m_take, &AbstractTake::savedOpenedChanged, &listener, [&] { order.append("saved"); });
        connect(m_take, &AbstractTake::deletedClosed, &listener, [&] { order.append("gone"); });
        connect(app, &VeskApp::selectedVeskObjectChanged, &listener, [&] {
            if (app->selectedVeskObject())
                order.append("selected");
        });
        m_take->setSavedOpened(false, false, false);
        QCOMPARE(order, QStringList({"saved", "gone", "selected"}));
        QCOMPARE(m_take->imgSearch()->state(), ImgSearch::Idle);
    }

    void onlyATakeThatAppearsWhileWatchedIsSavedByItself_data()
    {
        QTest::addColumn<bool>("quiet");
        QTest::addColumn<int>("saved");
        QTest::newRow("at the connection") << true << 0;
        QTest::newRow("later") << false << 1;
    }

    void onlyATakeThatAppearsWhileWatchedIsSavedByItself()
    {
        QFETCH(const bool, quiet);
        CountingTake take(5, m_camera.get());
        take.setSavedOpened(true, false, quiet);
        take.setSavedOpened(true, false, false);
        QTEST(take.savedCount, "saved");
    }

    void vanishingWhileAnotherSourceIsSelectedLeavesThat()
    {
        appear();
        auto *other = new Take(4, m_camera.get());
        VeskApp::instance()->setSelectedVeskObject(other);
        m_take->setSavedOpened(false, false, false);
        QCOMPARE(VeskApp::instance()->selectedVeskObject(), other);
    }

    void closeFromHereIgnoresTheNextStatusThatIsStillOld()
    {
        appear();
        QSignalSpy changed(m_take, &AbstractTake::savedOpenedChanged);
        m_take->setSavedOpened(false, true, false);
        QCOMPARE(changed.count(), 1);
        m_take->setSavedOpened(true, false, false); // the old status
        QCOMPARE(m_take->savedOpened(), false);
        QCOMPARE(changed.count(), 1);
        m_take->setSavedOpened(true, false, false); // opened again
        QCOMPARE(m_take->savedOpened(), true);
    }

    void latchIsClearedByACallThatChangesNothing()
    {
        appear();
        m_take->setSavedOpened(false, true, false);
        m_take->setSavedOpened(false, false, false);
        m_take->setSavedOpened(true, false, false);
        QCOMPARE(m_take->savedOpened(), true);
    }

    void deletionNamesTheTakeAndDoesNotRecordAgain()
    {
        m_take->deleteTake();
        QTRY_COMPARE(m_server->requests("POST", "/del").size(), 1);
        const auto request = m_server->requests("POST", "/del").first();
        QCOMPARE(request.body, QByteArray("{\"take\":3}"));
        QCOMPARE(request.headers.combinedValue("user-agent"), QByteArray("Vesk 1.0"));
        QCOMPARE(request.headers.combinedValue("content-type"), QByteArray("application/json"));
        m_camera->trigger(); // whatever followed the answer would be here before this
        QTRY_COMPARE(m_server->requests("POST", "/trig").size(), 1);
        QCOMPARE(m_server->requests("POST", "/rec").size(), 0);
    }

    void deletionRecordsAgainWhenWantedWhateverTheAnswer()
    {
        answerWith({}, QHttpServerResponder::StatusCode::InternalServerError);
        m_take->deleteTake(true);
        QTRY_COMPARE(m_server->requests("POST", "/rec").size(), 1);
    }

    void takeThatGoesBeforeItsDeletionIsAnsweredStillRecordsAgain()
    {
        m_server->setHold([](const HttpRecorder::Request &request) { return request.path == "/del"; });
        m_take->deleteTake(true);
        QTRY_COMPARE(m_server->heldCount(), 1);
        delete std::exchange(m_take, nullptr);
        m_server->release();
        QTRY_COMPARE(m_server->requests("POST", "/rec").size(), 1);
    }

    void frameIsAskedForByNumber()
    {
        RawFrame frame;
        QCOMPARE(m_take->getFrame(&frame, -7), 0);
        QCOMPARE(m_take->getFrame(nullptr, -7), -1);
        QTRY_COMPARE(m_server->requests("POST", "/xfer").size(), 1);
        QCOMPARE(m_server->requests("POST", "/xfer").first().body,
                 QByteArray(R"({"type":3,"src":0,"take":3,"start":-7,"cnt":1,"lock":0})"));
    }

    void runOfFramesIsAskedForWithoutLock()
    {
        const std::unique_ptr<QNetworkReply> reply(m_take->startXfer(-4294967296, 8589934592));
        QTRY_COMPARE(m_server->requests("POST", "/xfer").size(), 1);
        const auto request = m_server->requests("POST", "/xfer").first();
        QCOMPARE(request.body,
                 QByteArray(R"({"type":3,"src":0,"take":3,"start":-4294967296,"cnt":8589934592})"));
        QCOMPARE(request.headers.combinedValue("user-agent"), QByteArray("Vesk 1.0"));
        QCOMPARE(request.headers.combinedValue("content-type"), QByteArray("application/json"));
    }

    void adjustmentIsWrittenToTheTakesRecord()
    {
        m_take->imgAdjModel()->gain()->setValue(2.5, false);
        QTRY_COMPARE(m_server->requests("PUT", "/takes/take3/adjust/gain").size(), 1);
        QCOMPARE(m_server->requests("PUT", "/takes/take3/adjust/gain").first().body, QByteArray("2.500000"));
    }

    void takeThatIsDestroyedWithRequestsOnTheirWayIsNotTouched()
    {
        m_server->setHold([](const auto &) { return true; });
        m_take->setSavedOpened(true, false, true);
        m_take->setSelected(true);
        m_take->requestFrame();
        m_take->imgAdjModel()->gain()->setValue(2.5, false);
        QTRY_COMPARE(m_server->heldCount(), 3);
        delete std::exchange(m_take, nullptr);
        m_server->release();
        m_camera->trigger();
        QTRY_COMPARE(m_server->requests("POST", "/trig").size(), 1);
    }
};

VESK_TEST_MAIN(TestTake)
#include "tst_take.moc"
