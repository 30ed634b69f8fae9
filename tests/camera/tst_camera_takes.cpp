#include "app/qml_object_list_model_base.h"
#include "camera/camera.h"
#include "image/img_adj_model.h"
#include "take/saved_take_model.h"
#include "take/take.h"
#include "tests/support/camera_document.h"
#include "tests/support/camera_polls.h"
#include "tests/support/end_requests.h"
#include "tests/support/http_recorder.h"
#include "tests/support/vesk_test_main.h"

#include <QAbstractItemModelTester>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPointer>
#include <QSignalSpy>
#include <memory>

/** A camera's takes: one for each partition, following the camera's status. */
class TestCameraTakes : public QObject
{
    Q_OBJECT

private:
    /** The polls answer with this; descriptions are those of takes without anything. */
    void tell(const QJsonObject &acq)
    {
        const QByteArray body =
            QJsonDocument(QJsonObject{{"camera", QJsonObject{{"name", "Cam"}}}, {"acq", acquisition(acq)}})
                .toJson();
        m_server->setAnswer([body](const HttpRecorder::Request &request) {
            return HttpRecorder::Reply{
                request.path == "/" ? body : QByteArray("{}"), {}, QHttpServerResponder::StatusCode::Ok};
        });
    }

    void connectIt() { QVERIFY(connects(*m_camera)); }

    void poll() { QVERIFY(polls(*m_camera)); }

    Take *take(int takeId) const { return qobject_cast<Take *>(m_camera->takes()->get(takeId - 1)); }

    QList<int> takeIds() const
    {
        QList<int> ids;
        for (int i = 0; i < m_camera->takes()->size(); ++i)
            ids.append(qobject_cast<Take *>(m_camera->takes()->get(i))->takeId());
        return ids;
    }

    QList<int> savedIds() const
    {
        QList<int> ids;
        for (int row = 0; row < m_camera->savedTakes()->rowCount(); ++row)
            ids.append(m_camera->savedTakes()->index(row, 0).data(256).value<Take *>()->takeId());
        return ids;
    }

    std::unique_ptr<HttpRecorder> m_server;
    std::unique_ptr<Camera> m_camera;

private slots:
    void init()
    {
        m_server = std::make_unique<HttpRecorder>("127.0.2.22");
        QVERIFY(m_server->isListening());
        m_camera = std::make_unique<Camera>(QHostAddress("127.0.2.22"), nullptr);
    }

    void cleanup()
    {
        m_camera.reset();
        m_server.reset();
        endRequests();
    }

    void firstPollMakesTheTakesBeforeTheCameraIsConnected()
    {
        tell({{"prtn_cnt", 4},
              {"saved_takes", QJsonArray{2}},
              {"active_take", 3},
              {"locked_takes", QJsonArray{2}}});
        QCOMPARE(m_camera->takes()->size(), 0);
        QCOMPARE(m_camera->activeTake(), nullptr);
        int there = -1;
        connect(m_camera.get(), &Camera::connectedChanged, this,
                [this, &there] { there = m_camera->takes()->size(); });
        connectIt();
        QCOMPARE(there, 4);
        QCOMPARE(takeIds(), QList<int>({1, 2, 3, 4}));
        QCOMPARE(savedIds(), QList<int>({2}));
        QCOMPARE(m_camera->savedTakes()->count(), 1);
        QCOMPARE(m_camera->takesAvailable(), 3);
        QCOMPARE(m_camera->activeTake(), take(3));
        QVERIFY(take(3)->active() && !take(2)->active());
        QVERIFY(take(2)->locked() && !take(3)->locked());
    }

    void statusIsFollowedBySavedLockedAndActive()
    {
        tell({{"prtn_cnt", 3}, {"active_take", 1}});
        connectIt();
        QSignalSpy counted(m_camera->savedTakes(), &SavedTakeModel::countChanged);
        QSignalSpy activated(m_camera.get(), &Camera::activeTakeChanged);
        tell({{"prtn_cnt", 3},
              {"active_take", 2},
              {"saved_takes", QJsonArray{1, 3, 9}},
              {"locked_takes", QJsonArray{3}}});
        QTRY_COMPARE(savedIds(), QList<int>({1, 3})); // there is no partition 9
        QVERIFY(counted.count() >= 1);
        QCOMPARE(m_camera->takesAvailable(), 1);
        QCOMPARE(activated.count(), 1);
        QCOMPARE(m_camera->activeTake(), take(2));
        QCOMPARE(take(3)->locked(), true);
        tell({{"prtn_cnt", 3}, {"active_take", 7}, {"saved_takes", QJsonArray{3}}});
        QTRY_COMPARE(savedIds(), QList<int>({3}));
        QCOMPARE(m_camera->activeTake(), nullptr);
        QCOMPARE(activated.count(), 2);
        QCOMPARE(take(3)->locked(), false);
    }

    void statusThatSaysTheSameTellsNothing()
    {
        tell({{"prtn_cnt", 2}, {"active_take", 1}, {"saved_takes", QJsonArray{2}}});
        connectIt();
        const QList<int> ids = takeIds();
        QPointer<Take> first(take(1));
        QSignalSpy activated(m_camera.get(), &Camera::activeTakeChanged);
        QSignalSpy counted(m_camera->savedTakes(), &SavedTakeModel::countChanged);
        QSignalSpy opened(take(2), &AbstractTake::savedOpenedChanged);
        poll();
        QCOMPARE(take(1), first.data());
        QCOMPARE(activated.count() + counted.count() + opened.count(), 0);
    }

    void everyPartitionSavedLeavesNoRoom()
    {
        tell({{"prtn_cnt", 2}, {"saved_takes", QJsonArray{1, 2}}});
        connectIt();
        QCOMPARE(m_camera->takesAvailable(), 0);
    }

    void anotherPartitionCountReplacesAllTakes()
    {
        tell({{"prtn_cnt", 4}, {"saved_takes", QJsonArray{1, 2}}, {"active_take", 3}});
        connectIt();
        QList<QPointer<Take>> before;
        for (int takeId = 1; takeId <= 4; ++takeId)
            before.append(take(takeId));
        tell({{"prtn_cnt", 2}, {"active_take", 1}});
        QTRY_COMPARE(takeIds(), QList<int>({1, 2}));
        QCOMPARE(m_camera->savedTakes()->count(), 0);
        QCOMPARE(m_camera->activeTake(), take(1));
        for (const QPointer<Take> &old : std::as_const(before))
            QTRY_VERIFY(old.isNull());
    }

    void selectedTakeGoesWithItsPartitionsAndLeavesNothingSelected()
    {
        tell({{"prtn_cnt", 4}, {"saved_takes", QJsonArray{2}}});
        connectIt();
        VeskApp *app = VeskApp::instance();
        QPointer<Take> shown(take(2));
        app->setSelectedVeskObject(shown);
        // Views go with the selection, and need their take until then.
        bool thereWhenTold = false;
        const QObject listener;
        connect(app, &VeskApp::selectedVeskObjectChanged, &listener, [&] { thereWhenTold = shown; });
        tell({{"prtn_cnt", 2}});
        QTRY_COMPARE(app->selectedVeskObject(), nullptr);
        QVERIFY(thereWhenTold);
        QTRY_VERIFY(!shown);
        QTRY_COMPARE(takeIds(), QList<int>({1, 2}));
    }

    void selectedTakeGoesWithItsCamera()
    {
        tell({{"prtn_cnt", 2}, {"saved_takes", QJsonArray{2}}});
        connectIt();
        VeskApp *app = VeskApp::instance();
        app->setSelectedVeskObject(take(2));
        m_camera->disconnectCamera();
        QCOMPARE(app->selectedVeskObject(), nullptr);
        QCOMPARE(m_camera->connected(), false);
    }

    void takeFinishedWhileItIsWatchedAppearsByItself()
    {
        tell({{"prtn_cnt", 2}, {"active_take", 1}, {"state", 3}});
        connectIt();
        tell({{"prtn_cnt", 2}, {"active_take", 2}, {"state", 1}, {"saved_takes", QJsonArray{1}}});
        QTRY_COMPARE(savedIds(), QList<int>({1}));
        QTRY_VERIFY(take(1)->valuesInit());
    }

    void modelOfSavedTakesIsSoundThroughEveryChange()
    {
        QAbstractItemModelTester tester(m_camera->savedTakes(),
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        tell({{"prtn_cnt", 4}, {"saved_takes", QJsonArray{1, 4}}});
        connectIt();
        for (const QJsonArray &saved : {QJsonArray{2, 3}, QJsonArray{1, 2, 3, 4}, QJsonArray()}) {
            tell({{"prtn_cnt", 4}, {"saved_takes", saved}});
            QTRY_COMPARE(m_camera->savedTakes()->count(), int(saved.size()));
        }
        tell({{"prtn_cnt", 6}, {"saved_takes", QJsonArray{5}}});
        QTRY_COMPARE(savedIds(), QList<int>({5}));
    }

    void takesShareTheirTablesUntilOneIsAdjusted()
    {
        tell({{"prtn_cnt", 2}});
        connectIt();
        const ImgAdjData &first = take(1)->imgAdjModel()->data();
        const ImgAdjData &second = take(2)->imgAdjModel()->data();
        QVERIFY(first.lutR.isSharedWith(second.lutR));
        take(1)->imgAdjModel()->gainR()->setValue(2.0, false);
        QVERIFY(!first.lutR.isSharedWith(second.lutR));
        QVERIFY(first.lutB.isSharedWith(second.lutB));
        QCOMPARE(int(first.lutR[1000]), 2000);
        QCOMPARE(int(second.lutR[1000]), 1000);
    }

    void absurdPartitionCountTakesNoMemory_data()
    {
        QTest::addColumn<int>("told");
        QTest::addColumn<int>("made");
        QTest::newRow("negative") << -3 << 0;
        QTest::newRow("more than a camera has") << 100000 << 1024;
        QTest::newRow("huge") << 2000000000 << 1024;
    }

    void absurdPartitionCountTakesNoMemory()
    {
        QFETCH(int, told);
        tell({{"prtn_cnt", told}});
        connectIt();
        QTEST(m_camera->takes()->size(), "made");
    }

    void roomLeftIsThatOfTheTakesThatThereAre_data() { absurdPartitionCountTakesNoMemory_data(); }

    void roomLeftIsThatOfTheTakesThatThereAre()
    {
        QFETCH(int, told);
        QFETCH(int, made);
        tell({{"prtn_cnt", told}, {"saved_takes", QJsonArray{2, 1024, 1025}}});
        connectIt();
        // Of those that are told as saved, the huge counts have takes 2 and 1024, and none the one behind.
        QCOMPARE(m_camera->savedTakes()->count(), made == 0 ? 0 : 2);
        QCOMPARE(m_camera->takesAvailable(), made == 0 ? 0 : 1022);
    }

    void modelSaysWhetherItSortsByItself()
    {
        QTest::ignoreMessage(QtDebugMsg, "dynamic:  true");
        const Camera camera(QHostAddress("127.0.2.23"), nullptr);
        QCOMPARE(camera.savedTakes()->rowCount(), 0);
    }
};

VESK_TEST_MAIN(TestCameraTakes)
#include "tst_camera_takes.moc"
