#include "camera/camera.h"
#include "sim/camera.h"
#include "tests/support/camera_polls.h"
#include "tests/support/end_requests.h"
#include "tests/support/vesk_test_main.h"

#include <QJsonArray>
#include <QSignalSpy>
#include <QStringListModel>
#include <memory>

using namespace Qt::StringLiterals;

/** Settings as typed, as a simulated camera takes them, and as they then stand in the menus. */
class TestCameraSettings : public QObject
{
    Q_OBJECT

private:
    void start(q4sim::Config config)
    {
        config.address = QHostAddress(u"127.0.2.18"_s);
        config.discovery = false;
        m_sim = std::make_unique<q4sim::Camera>(config);
        QCOMPARE(m_sim->listen(), QString());
        m_camera = std::make_unique<Camera>(config.address, nullptr);
        QVERIFY(connects(*m_camera));
    }

    static QString current(const QStringListModel *list, int index)
    {
        return list->stringList().value(index);
    }

    std::unique_ptr<q4sim::Camera> m_sim;
    std::unique_ptr<Camera> m_camera;

private slots:
    void init() { start(q4sim::Config()); }

    void cleanup()
    {
        m_camera.reset();
        m_sim.reset();
        endRequests();
    }

    void exposureBetweenTheGridComesBackOnIt()
    {
        m_camera->expClksValue()->setValue(1000, false);
        QCOMPARE(current(m_camera->expList(), m_camera->expListIndex()), u"10.000"_s);
        // 13 + 39 * 25
        QTRY_COMPARE(m_camera->expClksValue()->variant(), QVariant(988));
        QCOMPARE(m_sim->value("acq/exp_clks").toInt(), 988);
        QCOMPARE(current(m_camera->expList(), m_camera->expListIndex()), u"9.880"_s);
        QCOMPARE(m_camera->expList()->stringList().count(u"10.000"_s), 0);
        QCOMPARE(m_sim->requests("PUT", "/acq/exp_clks").size(), 1);
    }

    void listedExposureIsTakenAsItIs()
    {
        const QStringList texts = m_camera->expList()->stringList();
        // At 100 MHz on the grid 13 + k * 25 from 113: 1 us is 113 clocks, 10 us 1013, 100 us 10013.
        for (const QString &text : {u"1.130"_s, u"10.130"_s, u"100.130"_s}) {
            QVERIFY(texts.contains(text));
            const double clks = m_camera->clkFreqValue()->variant().toDouble() * text.toDouble() / 1000000;
            m_camera->expClksValue()->setValue(clks, false);
            const int wanted = qRound(text.toDouble() * 100);
            QTRY_COMPARE(m_sim->value("acq/exp_clks").toInt(), wanted);
            QSignalSpy polled(m_camera.get(), &Camera::valuesPolled);
            QTRY_VERIFY(polled.count() >= 3);
            QCOMPARE(m_camera->expClksValue()->variant(), QVariant(wanted));
            QCOMPARE(current(m_camera->expList(), m_camera->expListIndex()), text);
        }
    }

    void exposureBeyondTheLimitsComesBackAtThem()
    {
        m_camera->expClksValue()->setValue(1, false);
        QTRY_COMPARE(m_camera->expClksValue()->variant(), QVariant(113));
        QCOMPARE(current(m_camera->expList(), m_camera->expListIndex()), u"1.130"_s);
        m_camera->expClksValue()->setValue(2000000000, false);
        // 1000 fps less 600 clocks are 99400; 13 + 3975 * 25 on the grid
        QTRY_COMPARE(m_camera->expClksValue()->variant(), QVariant(99388));
        QCOMPARE(m_camera->expListIndex(), 0);
        QCOMPARE(current(m_camera->expList(), 0), u"993.880"_s);
    }

    void rateBeyondTheSensorComesBackAtItsLimit()
    {
        m_camera->frClksValue()->setValue(1, false);
        QTRY_VERIFY(m_sim->value("acq/fr_clks").toInt() != 100000);
        // 480 rows of 640 / 8 + 20 clocks, and 400
        QTRY_COMPARE(m_camera->frClksValue()->variant(), QVariant(48400));
        QCOMPARE(current(m_camera->frRateList(), m_camera->frRateListIndex()), u"2066"_s);
        QCOMPARE(m_camera->frRateList()->stringList(), QStringList({u"2066"_s, u"2000"_s, u"1000"_s}));
    }

    void fstopBetweenTheStopsComesBackAtOne()
    {
        QTRY_COMPARE(m_camera->lensStateValue()->variant(), QVariant(int(Camera::LensReady)));
        m_camera->lensFstopValue()->setValue(u"5.5"_s, false);
        QCOMPARE(m_camera->fstopIndex(), -1);
        QTRY_COMPARE(current(m_camera->fstopList(), m_camera->fstopIndex()), u"5.6"_s);
        QCOMPARE(m_sim->requests("PUT", "/lens/fstop").first().body, "5.500000"_ba);
    }

    void offsetBeyondThePartitionComesBackAtItsEnd()
    {
        const int frames = m_camera->take1PrtnFrCntValue()->variant().toInt();
        QVERIFY(frames > 2);
        m_camera->trigOffsetValue()->setValue(frames + 1000, false);
        QTRY_COMPARE(m_camera->trigOffsetValue()->variant(), QVariant(frames));
        QCOMPARE(m_camera->trigOffsetListIndex(), 3); // after 2, the half and the last but one
        QCOMPARE(current(m_camera->trigOffsetList(), 3), QString::number(frames));
    }

    void refusedResolutionComesBackAsItWas()
    {
        const QString before = m_camera->resValue()->text();
        m_camera->resValue()->setValue(u"7x7"_s, false);
        QCOMPARE(m_camera->resIndex(), -1);
        QTRY_COMPARE(m_camera->resValue()->text(), before);
        QCOMPARE(current(m_camera->resList(), m_camera->resIndex()), before);
    }

    void externalSyncFollowsTheSignal()
    {
        m_sim->operate({{"sync_fps", 321.5}});
        m_camera->fsyncModeValue()->setValue(int(Camera::FsyncModeExt), false);
        QTRY_COMPARE(m_camera->frRateList()->stringList(), QStringList(u"321.5"_s));
        QCOMPARE(m_camera->frRateListIndex(), 0);
        m_camera->fsyncModeValue()->setValue(int(Camera::FsyncModeInt), false);
        QTRY_COMPARE(current(m_camera->frRateList(), m_camera->frRateListIndex()), u"1000"_s);
    }

    void pollsWriteNothingBack()
    {
        QTRY_COMPARE(m_camera->lensStateValue()->variant(), QVariant(int(Camera::LensReady)));
        m_sim->forceValue("acq/trig_offset", 77);
        QTRY_COMPARE(m_camera->trigOffsetValue()->variant(), QVariant(77));
        m_sim->forceValue("io/io1/signal", u"trig"_s);
        QTRY_COMPARE(m_camera->trigOffsetListIndex(), 1);
        QSignalSpy polled(m_camera.get(), &Camera::valuesPolled);
        QTRY_VERIFY(polled.count() >= 3);
        QStringList written;
        for (const q4sim::Request &request : m_sim->requests()) {
            // The clock is set at the connection, unless it shows the same second.
            if (request.method == "PUT" && request.path != "/meta/time"_L1)
                written << request.path;
        }
        QCOMPARE(written, QStringList());
        m_camera->trigOffsetValue()->setValue(78, false); // and what is written is seen here
        QTRY_COMPARE(m_sim->requests("PUT", "/acq/trig_offset").size(), 1);
    }

    void cameraWithoutFormatsGetsTheCommonOnes()
    {
        cleanup();
        q4sim::Config config;
        config.tellsVideoFormats = false;
        start(config);
        QCOMPARE(m_camera->vidFormatList()->rowCount(), 13);
        QCOMPARE(current(m_camera->vidFormatList(), m_camera->vidFormatIndex()), u"1920x1080p30"_s);
    }

    void bareCameraHasOneFormatAndNoStop()
    {
        cleanup();
        start(q4sim::bareConfig());
        QCOMPARE(m_camera->vidFormatList()->rowCount(), 1);
        QCOMPARE(m_camera->vidFormatIndex(), 0);
        QCOMPARE(m_camera->fstopList()->rowCount(), 0);
        QCOMPARE(m_camera->fstopIndex(), -1);
    }
};

VESK_TEST_MAIN(TestCameraSettings)
#include "tst_camera_settings.moc"
