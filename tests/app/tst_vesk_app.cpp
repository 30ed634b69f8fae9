#include "camera/camera.h"
#include "tests/support/camera_document.h"
#include "tests/support/end_requests.h"
#include "tests/support/http_recorder.h"
#include "tests/support/vesk_test_main.h"

#include <QNetworkReply>
#include <QPointer>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>

/** The application object: helpers, the list of sources and the selection. */
class TestVeskApp : public QObject
{
    Q_OBJECT

private:
    static VeskApp *app() { return VeskApp::instance(); }
    static Camera *cameraAt(int row) { return qobject_cast<Camera *>(app()->veskObjModel()->get(row)); }

private slots:
    void cleanup()
    {
        app()->stopBroadcast();
        while (Camera *camera = cameraAt(0))
            camera->disconnectCamera();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        app()->setNullVeskObject();
        QCOMPARE(app()->veskObjModel()->count(), 0);
        QCOMPARE(app()->selectedVeskObject(), nullptr);
        endRequests();
    }

    void bytesAvailableOnNoVolumeAreZero()
    {
        QCOMPARE(app()->folderBytesAvailable("/no/such/volume/anywhere"), 0);
        QTemporaryDir dir;
        QVERIFY(app()->folderBytesAvailable(dir.path()) > 0);
    }

    void currentDateTimeHasNoColon()
    {
        const QString text = app()->currentDateTime();
        QVERIFY2(QRegularExpression("^\\d{4}-\\d{2}-\\d{2}T\\d{6}Z$").match(text).hasMatch(),
                 qPrintable(text));
    }

    void pathsAndUrlsConvert()
    {
        QCOMPARE(app()->fileNameFromPath("/a/b.c/take.1.vesk"), "take.1.vesk");
        QCOMPARE(app()->baseNameFromPath("/a/b.c/take.1.vesk"), "take.1");
        QCOMPARE(app()->filePathFromUrl("file:///a/b%20c"), "/a/b c");
        QCOMPARE(app()->filePathFromUrl("http://x/y"), "");
        QCOMPARE(app()->fileUrlFromPath("/a/b c").toEncoded(), "file:///a/b%20c");
    }

    void settingsFallBackToTheDefault()
    {
        QCOMPARE(app()->setting("window/none", 5), QVariant(5));
        QVERIFY(!app()->setting("window/none").isValid());
        app()->setSetting("window/x", 10);
        QCOMPARE(app()->setting("window/x", 5), QVariant(10));
        QCOMPARE(app()->setting("vesk/version"), QVariant("10.0"));
    }

    void networkManagerIsToldOnlyWhenItChanges()
    {
        QNetworkAccessManager *before = app()->networkAccessManager();
        QNetworkAccessManager other;
        QSignalSpy changed(app(), &VeskApp::networkAccessManagerChanged);
        QVERIFY(!app()->set_networkAccessManager(before));
        QVERIFY(app()->set_networkAccessManager(&other));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed[0][0].value<QNetworkAccessManager *>(), &other);
        app()->set_networkAccessManager(before);
    }

    void firstCameraIsSelectedAndLaterOnesAreNot()
    {
        app()->connectVirtualCamera();
        QCOMPARE(app()->selectedVeskObject(), cameraAt(0));
        QVERIFY(cameraAt(0)->selected());
        app()->connectCamera(QStringLiteral("127.0.2.9"));
        QCOMPARE(app()->veskObjModel()->count(), 2);
        QCOMPARE(app()->selectedVeskObject(), cameraAt(0));
        QVERIFY(!cameraAt(1)->selected());
    }

    void virtualCameraNeverPollsOrConnects()
    {
        app()->connectVirtualCamera();
        QCOMPARE(cameraAt(0)->ipString(), "192.0.2.0");
        QCOMPARE(app()->networkAccessManager()->findChildren<QNetworkReply *>().size(), 0);
        QTest::qWait(100);
        QVERIFY(!cameraAt(0)->connected());
        QVERIFY(cameraAt(0)->imgFrame()->image().isNull());
    }

    void sameAddressMakesOneTab()
    {
        app()->connectCamera(QStringLiteral("127.0.2.9"));
        app()->connectCamera(QHostAddress("127.0.2.9"));
        app()->connectCamera(QHostAddress("::ffff:127.0.2.9"));
        QCOMPARE(app()->veskObjModel()->count(), 1);
    }

    void removingTheSelectedCameraFallsBackToTheEmptyView()
    {
        app()->connectVirtualCamera();
        QPointer<Camera> camera = cameraAt(0);
        QSignalSpy changed(app(), &VeskApp::selectedVeskObjectChanged);
        camera->disconnectCamera();
        QCOMPARE(app()->selectedVeskObject(), nullptr);
        QCOMPARE(app()->backgroundView(), VeskApp::Empty);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(app()->veskObjModel()->count(), 0);
        QTRY_VERIFY(!camera);
    }

    void selectedSourceThatIsDestroyedIsForgotten()
    {
        auto *camera = new Camera(QHostAddress("192.0.2.1"), nullptr);
        app()->setSelectedVeskObject(camera);
        app()->setNullVeskObject(VeskApp::SaveProgress);
        app()->setSelectedVeskObject(camera);
        QSignalSpy changed(app(), &VeskApp::selectedVeskObjectChanged);
        delete camera;
        QCOMPARE(app()->selectedVeskObject(), nullptr);
        QCOMPARE(changed.count(), 1);
    }

    void selectionMovesTheSelectedFlagAndResetsTheBackground()
    {
        app()->connectVirtualCamera();
        app()->connectCamera(QStringLiteral("127.0.2.9"));
        QSignalSpy background(app(), &VeskApp::backgroundViewChanged);
        app()->setNullVeskObject(VeskApp::SaveProgress);
        QCOMPARE(app()->backgroundView(), VeskApp::SaveProgress);
        QVERIFY(!cameraAt(0)->selected());
        app()->setNullVeskObject(VeskApp::SaveProgress);
        QCOMPARE(background.count(), 1);
        app()->setSelectedVeskObject(cameraAt(1));
        QCOMPARE(app()->backgroundView(), VeskApp::Empty);
        QCOMPARE(background.count(), 2);
        QVERIFY(cameraAt(1)->selected());
        app()->setSelectedVeskObject(cameraAt(0));
        QVERIFY(cameraAt(0)->selected());
        QVERIFY(!cameraAt(1)->selected());
    }

    void selectingNothingOrTheSameChangesNothing()
    {
        app()->connectVirtualCamera();
        QSignalSpy changed(app(), &VeskApp::selectedVeskObjectChanged);
        app()->setSelectedVeskObject(nullptr);
        app()->setSelectedVeskObject(cameraAt(0));
        QCOMPARE(changed.count(), 0);
        QCOMPARE(app()->selectedVeskObject(), cameraAt(0));
    }

    void cameraThatNeverAnswersStaysUntilItIsDisconnected()
    {
        QTest::ignoreMessage(QtCriticalMsg, QRegularExpression(": json parse error: "));
        app()->connectCamera(QStringLiteral("127.0.2.9"));
        QTest::qWait(300);
        QCOMPARE(app()->veskObjModel()->count(), 1);
        QVERIFY(!cameraAt(0)->connected());
        cameraAt(0)->disconnectCamera();
        QCOMPARE(app()->veskObjModel()->count(), 0);
    }

    void replyThatComesAfterTheDisconnectFindsTheCameraGone()
    {
        HttpRecorder server("127.0.2.6");
        QVERIFY(server.isListening());
        server.setAnswer([](const auto &) { return HttpRecorder::Reply{statusBody("A"), {}}; });
        server.setHold([](const auto &) { return true; });
        app()->connectCamera(QStringLiteral("127.0.2.6"));
        QTRY_COMPARE(server.heldCount(), 1);
        const QPointer<Camera> camera = cameraAt(0);
        QSignalSpy failed(camera.data(), &Camera::cameraConnectFailed);
        QSignalSpy selected(app(), &VeskApp::selectedVeskObjectChanged);
        camera->disconnectCamera();
        QCOMPARE(failed.count(), 1);
        server.release();
        QTest::qWait(400);
        QVERIFY(!camera);
        QCOMPARE(app()->veskObjModel()->count(), 0);
        QCOMPARE(selected.count(), 1);
        QCOMPARE(server.requests().size(), 1);
    }

    void textThatIsNoAddressIsATabThatNeverConnects()
    {
        QTest::ignoreMessage(QtCriticalMsg, QRegularExpression(": json parse error: "));
        app()->connectCamera(QStringLiteral("no address"));
        QCOMPARE(app()->veskObjModel()->count(), 1);
        QTest::qWait(100);
        QVERIFY(!cameraAt(0)->connected());
        cameraAt(0)->disconnectCamera();
        QCOMPARE(app()->veskObjModel()->count(), 0);
    }

    void connectedCameraIsRemovedOnceOnDisconnect()
    {
        HttpRecorder server("127.0.2.6");
        QVERIFY(server.isListening());
        server.setAnswer([](const auto &) { return HttpRecorder::Reply{statusBody("A"), {}}; });
        app()->connectCamera(QStringLiteral("127.0.2.6"));
        QTRY_VERIFY(cameraAt(0)->connected());
        QSignalSpy removed(app()->veskObjModel(), &QAbstractItemModel::rowsRemoved);
        cameraAt(0)->disconnectCamera();
        QCOMPARE(removed.count(), 1);
    }

    void nativeFileThatCannotBeOpenedAddsNoSource()
    {
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("^error opening \"/no/such file.vesk\""));
        app()->openVeskFile("file:/no/such file.vesk");
        QCOMPARE(app()->veskObjModel()->count(), 0);
    }
};

VESK_TEST_MAIN(TestVeskApp)
#include "tst_vesk_app.moc"
