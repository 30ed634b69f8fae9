#include "camera/camera.h"
#include "tests/support/end_requests.h"
#include "tests/support/http_recorder.h"
#include "tests/support/vesk_test_main.h"

#include <QNetworkReply>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>
#include <memory>

using namespace Qt::StringLiterals;

/** The upload of a firmware file and the line that tells how it gets on. */
class TestCameraFirmware : public QObject
{
    Q_OBJECT

private:
    QString writeFile(const QString &name, const QByteArray &content)
    {
        const QString path = m_folder.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            return {};
        return path;
    }

    void update(const QString &path) { m_camera->fwUpdate(QUrl::fromLocalFile(path).toString()); }
    void setState(int state) { m_camera->fwStateValue()->updateValue(state); }
    QTimer *finalizeTimer() const { return m_camera->findChild<QTimer *>(u"fwFinalizeTimer"_s); }

    /** The upload that runs; its progress can be told here as the network would tell it. */
    QNetworkReply *upload() const
    {
        return VeskApp::instance()->networkAccessManager()->findChild<QNetworkReply *>();
    }

    QTemporaryDir m_folder;
    std::unique_ptr<HttpRecorder> m_server;
    std::unique_ptr<Camera> m_camera;

private slots:
    void init()
    {
        m_server = std::make_unique<HttpRecorder>("127.0.2.11");
        QVERIFY(m_server->isListening());
        m_camera = std::make_unique<Camera>(QHostAddress("127.0.2.11"), nullptr);
    }

    void cleanup()
    {
        // An upload that is cut off would be sent again, to the server of the next test.
        m_server->release();
        QTRY_VERIFY(!upload());
        m_camera.reset();
        m_server.reset();
        endRequests();
    }

    void fileGoesOutAsOnePartOfAForm()
    {
        const QByteArray content = QByteArray("\r\nfirmware\0bytes\r\n", 18).repeated(1000);
        const QString path = writeFile(u"camera v2.q4fw"_s, content);
        QVERIFY(!path.isEmpty());
        update(path);
        QTRY_COMPARE(m_server->requests("POST", "/q4fw").size(), 1);
        const HttpRecorder::Request request = m_server->requests("POST", "/q4fw").first();
        const QByteArray type = request.headers.value("content-type").toByteArray();
        QVERIFY2(type.startsWith("multipart/form-data; boundary="), type.constData());
        QByteArray boundary = type.mid(type.indexOf('=') + 1);
        boundary.replace('"', "");
        // The names of headers may be written in any case.
        const QByteArray start = "--" + boundary + "\r\ncontent-disposition: ";
        QCOMPARE(request.body.first(start.size()).toLower(), start.toLower());
        QCOMPARE(request.body.sliced(start.size()),
                 "form-data; name=\"q4fw\"; filename=\"camera v2.q4fw\"\r\n\r\n" + content + "\r\n--" +
                     boundary + "--\r\n");
        QCOMPARE(request.headers.value("user-agent"), "Vesk 1.0"_ba);
    }

    void statusFollowsTheUploadAndTheCamera()
    {
        QStringList told;
        connect(m_camera.get(), &Camera::fwUpdateStatusChanged, this, [&] {
            if (told.isEmpty() || told.last() != m_camera->fwUpdateStatus())
                told << m_camera->fwUpdateStatus();
        });
        m_server->setHold([](const auto &request) { return request.path == "/q4fw"; });
        update(writeFile(u"a.q4fw"_s, QByteArray(1000, 'x')));
        QCOMPARE(m_camera->fwUpdateProgress(), 0.0001);
        QCOMPARE(m_camera->fwUpdateStatus(), u"Uploading Q4FW file...0%"_s);
        QTRY_COMPARE(m_camera->fwUpdateStatus(), u"Installing firmware update...Do NOT power off camera!"_s);
        QCOMPARE(m_camera->fwUpdateProgress(), 100.0);
        m_server->release();
        QTRY_COMPARE(m_camera->fwUpdateProgress(), 0.0);
        QCOMPARE(m_camera->fwUpdateStatus(), QString());
        QVERIFY(!finalizeTimer()->isActive());
        setState(1);
        QCOMPARE(m_camera->fwUpdateStatus(), u"Finalizing firmware update...Do NOT power off camera!"_s);
        QVERIFY(finalizeTimer()->isActive());
        QCOMPARE(finalizeTimer()->interval(), 90000);
        finalizeTimer()->start(1); // the end of the 90 s
        QTRY_COMPARE(m_camera->fwUpdateStatus(),
                     u"Firmware update installed! Restart camera to complete update."_s);
        QCOMPARE(told.first(), u"Uploading Q4FW file...0%"_s);
        QVERIFY(!told.contains(u"Update error: upload failed"_s));
    }

    void percentHasNoDecimalsAndInstallsOnlyAtItsEnd_data()
    {
        QTest::addColumn<qint64>("sent");
        QTest::addColumn<QString>("status");
        QTest::newRow("0.4 %") << qint64(4) << u"Uploading Q4FW file...0%"_s;
        QTest::newRow("0.6 %") << qint64(6) << u"Uploading Q4FW file...1%"_s;
        QTest::newRow("50 %") << qint64(500) << u"Uploading Q4FW file...50%"_s;
        QTest::newRow("99.4 %") << qint64(994) << u"Uploading Q4FW file...99%"_s;
        QTest::newRow("99.6 %") << qint64(996) << u"Uploading Q4FW file...100%"_s;
        QTest::newRow("100 %") << qint64(1000) << u"Installing firmware update...Do NOT power off camera!"_s;
    }

    void percentHasNoDecimalsAndInstallsOnlyAtItsEnd()
    {
        QFETCH(qint64, sent);
        QFETCH(QString, status);
        m_server->setHold([](const auto &request) { return request.path == "/q4fw"; });
        update(writeFile(u"a.q4fw"_s, "x"));
        QTRY_COMPARE(m_server->heldCount(), 1);
        QTRY_COMPARE(m_camera->fwUpdateProgress(), 100.0);
        emit upload() -> uploadProgress(1, 1000);
        QCOMPARE(m_camera->fwUpdateStatus(), u"Uploading Q4FW file...0%"_s);
        QSignalSpy progress(m_camera.get(), &Camera::fwUpdateProgressChanged);
        QSignalSpy told(m_camera.get(), &Camera::fwUpdateStatusChanged);
        emit upload() -> uploadProgress(sent, 1000);
        QCOMPARE(m_camera->fwUpdateProgress(), double(sent) * 100.0 / 1000.0);
        QCOMPARE(m_camera->fwUpdateStatus(), status);
        emit upload() -> uploadProgress(sent, 1000);     // the same again
        emit upload() -> uploadProgress(2 * sent, 2000); // and the same share
        emit upload() -> uploadProgress(sent, 0);        // of what is not known, no share
        QCOMPARE(progress.count(), 1);
        QCOMPARE(told.count(), 1);
        QCOMPARE(m_camera->fwUpdateStatus(), status);
    }

    void progressIsNotHeldUpByTheStateOfTheCamera()
    {
        setState(1);
        m_server->setHold([](const auto &request) { return request.path == "/q4fw"; });
        update(writeFile(u"a.q4fw"_s, "x"));
        QCOMPARE(m_camera->fwUpdateStatus(), u"Uploading Q4FW file...0%"_s);
        QTRY_COMPARE(m_server->heldCount(), 1);
        setState(5);
        QCOMPARE(m_camera->fwUpdateStatus(), u"Installing firmware update...Do NOT power off camera!"_s);
        setState(1);
        m_server->release();
        // An update over an installed one: the number alone does not tell them apart.
        QTRY_COMPARE(m_camera->fwUpdateStatus(), u"Finalizing firmware update...Do NOT power off camera!"_s);
    }

    void everyOtherStateIsAnErrorOfItsNumber()
    {
        for (const int state : {2, 3, 4, 99, -1}) {
            setState(state);
            QCOMPARE(m_camera->fwUpdateStatus(), u"Update error: "_s + QString::number(state));
        }
        setState(0);
        QCOMPARE(m_camera->fwUpdateStatus(), QString());
    }

    void laterStatusDoesNotStartTheWaitAgain()
    {
        update(writeFile(u"a.q4fw"_s, "x"));
        QTRY_COMPARE(m_camera->fwUpdateProgress(), 0.0);
        setState(1);
        QVERIFY(finalizeTimer()->isActive());
        finalizeTimer()->start(50000);
        emit m_camera->fwUpdateProgressChanged();
        QCOMPARE(m_camera->fwUpdateStatus(), u"Finalizing firmware update...Do NOT power off camera!"_s);
        QCOMPARE(finalizeTimer()->interval(), 50000);
    }

    void earlierUpdateIsToldWithoutAnUpload()
    {
        setState(1);
        QCOMPARE(m_camera->fwUpdateStatus(),
                 u"Firmware update installed! Restart camera to complete update."_s);
        QVERIFY(!finalizeTimer()->isActive());
    }

    void cameraThatRefusesIsTold()
    {
        m_server->setHold([](const auto &request) { return request.path == "/q4fw"; });
        update(writeFile(u"a.q4fw"_s, "x"));
        QTRY_COMPARE(m_server->heldCount(), 1);
        setState(2);
        m_server->release();
        QTRY_COMPARE(m_camera->fwUpdateStatus(), u"Update error: 2"_s);
        setState(1); // nothing was thought to be finishing
        QCOMPARE(m_camera->fwUpdateStatus(),
                 u"Firmware update installed! Restart camera to complete update."_s);
    }

    void failedUploadIsToldUntilTheStateChanges()
    {
        m_server->setAnswer([](const auto &) {
            return HttpRecorder::Reply{{}, {}, QHttpServerResponder::StatusCode::InternalServerError};
        });
        update(writeFile(u"a.q4fw"_s, "x"));
        QTRY_COMPARE(m_camera->fwUpdateStatus(), u"Update error: upload failed"_s);
        QCOMPARE(m_camera->fwUpdateProgress(), 0.0);
        setState(3);
        QCOMPARE(m_camera->fwUpdateStatus(), u"Update error: 3"_s);
    }

    void absentCameraIsAFailedUpload()
    {
        Camera absent(QHostAddress("127.0.2.12"), nullptr);
        absent.fwUpdate(QUrl::fromLocalFile(writeFile(u"a.q4fw"_s, "x")).toString());
        QTRY_COMPARE(absent.fwUpdateStatus(), u"Update error: upload failed"_s);
    }

    void fileThatCannotBeReadGoesOutEmpty()
    {
        update(m_folder.filePath(u"absent.q4fw"_s));
        QTRY_COMPARE(m_server->requests("POST", "/q4fw").size(), 1);
        const QByteArray body = m_server->requests("POST", "/q4fw").first().body;
        QVERIFY(body.contains("name=\"q4fw\"; filename=\"absent.q4fw\"\r\n\r\n\r\n--"));
        QTRY_COMPARE(m_camera->fwUpdateProgress(), 0.0);
    }

    void emptyFileGoesOutEmpty()
    {
        update(writeFile(u"empty.q4fw"_s, {}));
        QTRY_COMPARE(m_server->requests("POST", "/q4fw").size(), 1);
        QTRY_COMPARE(m_camera->fwUpdateProgress(), 0.0);
        QCOMPARE(m_camera->fwUpdateStatus(), QString());
    }

    void cameraMayGoInTheMiddleOfAnUpload()
    {
        m_server->setHold([](const auto &request) { return request.path == "/q4fw"; });
        update(writeFile(u"a.q4fw"_s, QByteArray(100000, 'x')));
        QTRY_COMPARE(m_server->heldCount(), 1);
        m_camera.reset();
        m_server->release();
        QTest::qWait(50);
    }
};

VESK_TEST_MAIN(TestCameraFirmware)
#include "tst_camera_firmware.moc"
