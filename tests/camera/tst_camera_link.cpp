#include "camera/camera.h"
#include "sim/camera.h"
#include "tests/support/camera_polls.h"
#include "tests/support/end_requests.h"
#include "tests/support/vesk_test_main.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <memory>

/** A camera and the simulated one: commands and their effect, pictures, and replies that are spoilt. */
class TestCameraLink : public QObject
{
    Q_OBJECT

private:
    static int state(const Camera &camera) { return camera.acqStateValue()->variant().toInt(); }

    /** What the sim shows in a picture of its frame, read from the screen image. */
    static std::optional<qint32> numberIn(const QImage &image)
    {
        return q4sim::readStrip([&image](int x, int y) { return double(qGray(image.pixel(x, y))); });
    }

    void start(const q4sim::Config &config)
    {
        m_camera.reset();
        m_sim = std::make_unique<q4sim::Camera>(config);
        QCOMPARE(m_sim->listen(), QString());
        m_camera = std::make_unique<Camera>(config.address, nullptr);
        QVERIFY(connects(*m_camera));
    }

    q4sim::Config config() const
    {
        q4sim::Config config;
        config.address = QHostAddress("127.0.2.4");
        config.discovery = false;
        return config;
    }

    /** What the time of the frame on screen is by the camera's own count. */
    QString expectedTimestamp() const
    {
        const qint64 time = m_sim->frameTimeNs(numberIn(m_camera->imgFrame()->image()).value_or(0));
        const QString seconds = QDateTime::fromSecsSinceEpoch(time / 1'000'000'000, QTimeZone::UTC)
                                    .toString("yyyy-MM-ddThh:mm:ss");
        return seconds + QString::asprintf(".%09lldZ", time % 1'000'000'000);
    }

    void startPicture()
    {
        QSignalSpy images(m_camera->imgFrame(), &ImgFrame::imageChanged);
        m_camera->setSelected(true);
        QTRY_VERIFY(images.count() > 0);
    }

    std::unique_ptr<q4sim::Camera> m_sim;
    std::unique_ptr<Camera> m_camera;

private slots:
    void init() { start(config()); }

    void cleanup()
    {
        m_camera.reset();
        m_sim.reset();
        endRequests();
    }

    void recordTriggerAndAbortShowAtTheNextPoll()
    {
        QTRY_COMPARE(state(*m_camera), 1);
        m_camera->record();
        QTRY_COMPARE(state(*m_camera), 2);
        m_camera->trigger();
        QTRY_VERIFY(state(*m_camera) != 2);
        QCOMPARE(m_sim->requests("POST", "/rec").size(), 1);
        QCOMPARE(m_sim->requests("POST", "/trig").size(), 1);
    }

    void abortReachesTheCamera()
    {
        QTRY_COMPARE(state(*m_camera), 1);
        m_camera->record();
        QTRY_COMPARE(state(*m_camera), 2);
        m_camera->trigger();
        QTRY_COMPARE(state(*m_camera), 3);
        m_camera->abort();
        QTRY_VERIFY(state(*m_camera) != 3);
        QCOMPARE(m_sim->requests("POST", "/abort").size(), 1);
    }

    void blackReferenceRunsAndClearsInvalid()
    {
        QTRY_VERIFY(m_camera->brefStateValue()->variant().toUInt() & Camera::BrefInvalid);
        m_camera->bref();
        QTRY_VERIFY(m_camera->brefStateValue()->variant().toUInt() & Camera::BrefInProgress);
        QTRY_COMPARE(m_camera->brefStateValue()->variant().toUInt(), 0U);
    }

    void renamedCameraKeepsItsName()
    {
        m_camera->nameValue()->setValue("Lab 7", false);
        QCOMPARE(m_camera->nameValue()->text(), "Lab 7");
        QTRY_COMPARE(m_sim->value("camera/name").toString(), "Lab 7");
        QSignalSpy polled(m_camera.get(), &Camera::valuesPolled);
        QTRY_VERIFY(polled.count() >= 3);
        QCOMPARE(m_camera->nameValue()->text(), "Lab 7");
    }

    void whatTheCameraRoundedComesBack()
    {
        const int before = m_camera->expClksValue()->variant().toInt();
        m_camera->expClksValue()->setValue(2'000'000'000, false);
        QTRY_COMPARE(m_camera->expClksValue()->variant().toInt(), m_sim->value("acq/exp_clks").toInt());
        QTRY_VERIFY(m_camera->expClksValue()->variant().toInt() != 2'000'000'000);
        QVERIFY(m_camera->expClksValue()->variant().toInt() >= before);
    }

    void pictureOfTheSelectedCameraRuns()
    {
        startPicture();
        const QImage first = m_camera->imgFrame()->image();
        QCOMPARE(first.size(), QSize(640, 480));
        QCOMPARE(first.format(), QImage::Format_BGR888);
        const auto number = numberIn(first);
        QVERIFY(number);
        QTRY_VERIFY(numberIn(m_camera->imgFrame()->image()) > number);
        QCOMPARE(m_camera->histogram()->width(), 640);
        QCOMPARE(m_camera->histogram()->height(), 480);
    }

    void mosaicIsThatOfTheSentFrame()
    {
        startPicture();
        const auto number = numberIn(m_camera->imgFrame()->image());
        QVERIFY(number);
        const q4sim::SceneParams scene = m_sim->sceneParams();
        for (int y = 0; y < scene.height; y += 7) {
            for (int x = 0; x < scene.width; ++x) {
                const int code = q4sim::pixel(scene, *number, x, y);
                const int wide = code < 128 ? code : code < 192 ? 2 * code - 127 : 4 * code - 509;
                QCOMPARE(m_camera->veskFrame()->raw()[y * scene.width + x],
                         quint16(qRound(wide * 65535.0 / 511.0)));
            }
        }
    }

    void timestampIsThatOfTheFrame()
    {
        startPicture();
        // The workstation may have set the camera's clock between the first frames.
        QTRY_COMPARE(m_camera->timestamp(), expectedTimestamp());
    }

    void bothHeaderFamiliesAndAllPatternsGiveAPicture_data()
    {
        QTest::addColumn<int>("cfa");
        QTest::addColumn<bool>("older");
        for (const int cfa : {0, 1, 2}) {
            for (const bool older : {false, true})
                QTest::addRow("cfa %d older %d", cfa, older) << cfa << older;
        }
    }

    void bothHeaderFamiliesAndAllPatternsGiveAPicture()
    {
        QFETCH(int, cfa);
        QFETCH(bool, older);
        q4sim::Config special = config();
        special.cfa = cfa;
        if (older) {
            special.headerFamily = q4sim::HeaderFamily::Fr;
            special.firmware = q4sim::Firmware::Old;
            special.yearOffsetPlace = q4sim::YearOffsetPlace::Time;
        }
        cleanup();
        start(special);
        startPicture();
        QCOMPARE(m_camera->veskFrame()->width(), m_sim->sceneParams().width);
        QVERIFY(numberIn(m_camera->imgFrame()->image()));
        QVERIFY(
            m_camera->timestamp().startsWith(QString::number(QDateTime::currentDateTimeUtc().date().year())));
    }

    void unselectedCameraFetchesNoFrame()
    {
        QTest::qWait(200);
        QCOMPARE(m_sim->requests("POST", "/xfer").size(), 0);
        startPicture();
        QCOMPARE(m_sim->requests("POST", "/xfer")[0].body, "{\"type\":3,\"src\":1}");
        m_camera->setSelected(false);
        QTRY_VERIFY(!m_camera->frameInFlight());
        const auto count = m_sim->requests("POST", "/xfer").size();
        QTest::qWait(200);
        QCOMPARE(m_sim->requests("POST", "/xfer").size(), count);
        m_camera->setSelected(true);
        QTRY_VERIFY(m_sim->requests("POST", "/xfer").size() > count + 2);
    }

    void spoiltFrameKeepsThePictureAndTheNextOneComes_data()
    {
        using q4sim::FaultKind;
        QTest::addColumn<q4sim::Fault>("fault");
        const auto lying = [](std::initializer_list<QPair<QByteArray, QByteArray>> headers) {
            return q4sim::Fault{.kind = FaultKind::LyingSizes, .headers = headers};
        };
        QTest::newRow("500") << q4sim::Fault{.kind = FaultKind::Http500};
        QTest::newRow("empty") << q4sim::Fault{.kind = FaultKind::EmptyReply};
        QTest::newRow("cut") << q4sim::Fault{.kind = FaultKind::CloseMidBody, .bytes = 1000};
        QTest::newRow("doubled sizes") << q4sim::Fault{.kind = FaultKind::LyingSizes};
        QTest::newRow("no sizes") << lying(
            {{"Img-Width", "0"}, {"Img-Height", "0"}, {"Img-Size", "0"}, {"Meta-Size", "0"}});
        QTest::newRow("huge") << lying({{"Img-Width", "65535"},
                                        {"Img-Height", "65535"},
                                        {"Img-Size", "4294836225"},
                                        {"Meta-Size", "32"}});
        QTest::newRow("huge meta") << lying({{"Img-Width", "640"},
                                             {"Img-Height", "480"},
                                             {"Img-Size", "307200"},
                                             {"Meta-Size", "4294967295"}});
        QTest::newRow("no numbers") << lying(
            {{"Img-Width", "wide"}, {"Img-Height", "-1"}, {"Img-Size", "1e9"}, {"Meta-Size", ""}});
        QTest::newRow("colour too wide") << lying(
            {{"Img-Width", "1280"}, {"Img-Height", "240"}, {"Img-Size", "307200"}, {"Meta-Size", "32"}});
    }

    void spoiltFrameKeepsThePictureAndTheNextOneComes()
    {
        QFETCH(q4sim::Fault, fault);
        startPicture();
        m_sim->setFault(q4sim::Route::Xfer, fault);
        const auto before = m_sim->requests("POST", "/xfer").size();
        QTRY_VERIFY(m_sim->requests("POST", "/xfer").size() >= before + 3);
        const QImage kept = m_camera->imgFrame()->image();
        const QString timestamp = m_camera->timestamp();
        QCOMPARE(kept.size(), QSize(640, 480));
        const auto later = m_sim->requests("POST", "/xfer").size();
        QTRY_VERIFY(m_sim->requests("POST", "/xfer").size() >= later + 3);
        QCOMPARE(m_camera->imgFrame()->image(), kept);
        QCOMPARE(m_camera->timestamp(), timestamp);
        m_sim->clearFaults();
        QTRY_VERIFY(m_camera->timestamp() != timestamp);
    }

    void shortRecordShowsThePixelsThatAreThere()
    {
        m_sim->setFault(q4sim::Route::Xfer, {.kind = q4sim::FaultKind::ShortBody, .bytes = 640 * 240});
        startPicture();
        const QList<quint16> &raw = m_camera->veskFrame()->raw();
        QCOMPARE(raw.size(), 640 * 480);
        QVERIFY(
            std::any_of(raw.cbegin() + 640 * 230, raw.cbegin() + 640 * 240, [](quint16 v) { return v > 0; }));
        QVERIFY(std::all_of(raw.cbegin() + 640 * 240, raw.cend(), [](quint16 v) { return v == 0; }));
    }

    void spoiltStatusNeverEndsTheConnection_data()
    {
        using q4sim::FaultKind;
        QTest::addColumn<q4sim::Fault>("fault");
        QTest::newRow("500") << q4sim::Fault{.kind = FaultKind::Http500};
        QTest::newRow("empty") << q4sim::Fault{.kind = FaultKind::EmptyReply};
        QTest::newRow("invalid") << q4sim::Fault{.kind = FaultKind::InvalidJson};
        QTest::newRow("truncated") << q4sim::Fault{.kind = FaultKind::TruncatedJson};
        QTest::newRow("wrong types") << q4sim::Fault{.kind = FaultKind::WrongTypes};
        QTest::newRow("missing keys") << q4sim::Fault{.kind = FaultKind::MissingKeys};
        QTest::newRow("cut") << q4sim::Fault{.kind = FaultKind::CloseMidBody, .bytes = 100};
        QTest::newRow("dripping") << q4sim::Fault{.kind = FaultKind::Drip, .ms = 10, .bytes = 1000};
    }

    void spoiltStatusNeverEndsTheConnection()
    {
        QFETCH(q4sim::Fault, fault);
        m_sim->setFault(q4sim::Route::Status, fault);
        m_sim->clearRequests();
        QTRY_VERIFY(m_sim->requests("GET", "/").size() >= 3);
        QVERIFY(m_camera->connected());
        m_sim->clearFaults();
        QTRY_COMPARE(m_camera->serialValue()->text(), m_sim->config().serial);
        QTRY_COMPARE(state(*m_camera), 1);
    }

    void silentCameraNeverBlocksTheEventLoop()
    {
        startPicture();
        m_sim->setFault(q4sim::Route::Status, {.kind = q4sim::FaultKind::NoAnswer});
        m_sim->setFault(q4sim::Route::Xfer, {.kind = q4sim::FaultKind::NoAnswer});
        QElapsedTimer pass;
        qint64 longest = 0;
        for (int i = 0; i < 60; ++i) {
            pass.start();
            QTest::qWait(10);
            longest = std::max(longest, pass.elapsed());
        }
        QVERIFY2(longest < 500, qPrintable(QString::number(longest)));
        QVERIFY(m_camera->connected());
    }

    void autoWhiteBalanceRaisesTheDarkerChannels()
    {
        startPicture();
        m_camera->setSelected(false);
        QTRY_VERIFY(!m_camera->frameInFlight());
        const QList<quint16> &raw = m_camera->veskFrame()->raw();
        double sum[3] = {};
        double count[3] = {};
        for (int y = 0; y < 480; ++y) {
            for (int x = 0; x < 640; ++x) {
                const int channel = (y & 1) + (x & 1); // R G / G B
                sum[channel] += raw[y * 640 + x];
                count[channel] += 1;
            }
        }
        double mean[3];
        for (int i = 0; i < 3; ++i)
            mean[i] = sum[i] / count[i];
        const double top = std::max({mean[0], mean[1], mean[2]});
        const double calR = m_camera->imgAdjModel()->wbCalR()->variant().toDouble();
        const double calB = m_camera->imgAdjModel()->wbCalB()->variant().toDouble();
        m_camera->autoWhiteBalance();
        const double gainR = m_camera->imgAdjModel()->wbR()->variant().toDouble();
        const double gainB = m_camera->imgAdjModel()->wbB()->variant().toDouble();
        QVERIFY(qAbs(gainR - top / mean[0] / calR) < 1e-9);
        QVERIFY(qAbs(gainB - top / mean[2] / calB) < 1e-9);
        QTRY_VERIFY(!m_sim->requests("PUT", "/adjust/wb_r").isEmpty());
    }
};

VESK_TEST_MAIN(TestCameraLink)
#include "tst_camera_link.moc"
