#include "camera/camera.h"
#include "tests/support/camera_document.h"
#include "tests/support/end_requests.h"
#include "tests/support/http_recorder.h"
#include "tests/support/vesk_test_main.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTimer>
#include <memory>

/** When the picture of a camera is asked for. */
class TestCameraPreview : public QObject
{
    Q_OBJECT

private:
    static constexpr int IntervalMs = 33;

    std::unique_ptr<HttpRecorder> m_server;
    std::unique_ptr<Camera> m_camera;

    /** The camera's only precise one. */
    QTimer *previewTimer() const
    {
        QTimer *precise = nullptr;
        for (QTimer *timer : m_camera->findChildren<QTimer *>(Qt::FindDirectChildrenOnly)) {
            if (timer->timerType() == Qt::PreciseTimer)
                precise = precise ? nullptr : timer;
        }
        return precise;
    }

    qsizetype frameCount() const { return m_server->requests("POST", "/xfer").size(); }

private slots:
    void init()
    {
        m_server = std::make_unique<HttpRecorder>("127.0.2.29");
        QVERIFY(m_server->isListening());
        m_server->setAnswer([](const HttpRecorder::Request &request) {
            if (request.path == "/")
                return HttpRecorder::Reply{statusBody("Cam"), {}};
            return HttpRecorder::Reply{{}, {}, QHttpServerResponder::StatusCode::NotFound}; // no picture
        });
        m_camera = std::make_unique<Camera>(m_server->address(), nullptr);
        QVERIFY(previewTimer());
        QSignalSpy connected(m_camera.get(), &Camera::cameraConnected);
        m_camera->connectCamera();
        QTRY_COMPARE(connected.count(), 1);
    }

    void cleanup()
    {
        m_camera.reset();
        m_server.reset();
        endRequests();
    }

    void ticksComeEvery33Ms()
    {
        m_camera->setSelected(true);
        QVERIFY(previewTimer()->interval() <= IntervalMs); // to the next tick of those that it left out
        QTRY_VERIFY(frameCount() >= 2);
        QCOMPARE(previewTimer()->interval(), IntervalMs);
        QVERIFY(previewTimer()->isActive() && !previewTimer()->isSingleShot());
    }

    void ticksEndWithTheSelectionAndWithTheConnection()
    {
        QVERIFY(!previewTimer()->isActive());
        m_camera->setSelected(true);
        QVERIFY(previewTimer()->isActive());
        m_camera->setSelected(false);
        QVERIFY(!previewTimer()->isActive());
        m_camera->setSelected(true);
        m_camera->disconnectCamera();
        QVERIFY(!previewTimer()->isActive());
        m_camera->setSelected(true);
        QVERIFY(!previewTimer()->isActive());
    }

    void changeOfSelectionKeepsThePhaseOfTheTicks()
    {
        // Where in the 33 ms the next tick falls due, seen from this clock. Only what was measured in one go.
        QElapsedTimer clock;
        clock.start();
        QList<qint64> phases;
        const auto measured = [&] {
            for (int tries = 0; phases.size() < 12 && tries < 200; ++tries) {
                m_camera->setSelected(false);
                QTest::qWait(5 + tries % 17);
                const qint64 before = clock.elapsed();
                m_camera->setSelected(true);
                const int due = previewTimer()->interval();
                if (clock.elapsed() - before <= 1)
                    phases.append((before + due) % IntervalMs);
            }
            return phases.size() == 12;
        };
        QVERIFY(measured());
        for (const qint64 phase : std::as_const(phases)) {
            const qint64 apart = qAbs(phase - phases.first());
            QVERIFY2(std::min(apart, IntervalMs - apart) <= 3, qPrintable(QString::number(apart)));
        }
    }
};

VESK_TEST_MAIN(TestCameraPreview)
#include "tst_camera_preview.moc"
