#include "sim/frame_run.h"
#include "tests/camera/drive_case.h"
#include "tests/support/vesk_test_main.h"

#include <QFile>
#include <QJsonArray>
#include <QPointer>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using q4sim::FaultKind;
using q4sim::Route;

/** The drive of a simulated camera, worked over the network, and what happens to it meanwhile. */
class TestCameraDrive : public QObject, private DriveCase
{
    Q_OBJECT

private slots:
    void init() { start(config()); }
    void cleanup() { end(); }

    void recordingIsListedOpenedAndClosed()
    {
        QCOMPARE(listed(), QStringList({u"衝突 (2).vesk"_s, u"b.vesk"_s}));
        QCOMPARE(list()->items()[0]->size(), 8 * RecordSize);
        list()->items()[0]->select(false);
        m_camera->ssdFOpen();
        QTRY_COMPARE(m_camera->ssdTakes()->size(), 1);
        QTRY_VERIFY(recording()->valuesInit());
        QCOMPARE(recording()->name(), u"衝突 (2).vesk"_s);
        QCOMPARE(recording()->aFr(), -3);
        QCOMPARE(recording()->bFr(), 4);
        QTRY_VERIFY(!recording()->imgFrame()->image().isNull());
        recording()->fclose();
        QTRY_COMPARE(m_camera->ssdTakes()->size(), 0);
        QCOMPARE(sim().value(u"ssd/open_takes"_s).toArray(), QJsonArray());
    }

    void recordingIsSavedIntoAFile()
    {
        open(u"b.vesk"_s);
        const QTemporaryDir folder;
        SaveJob *job = m_manager->createSaveJob(recording(), 10, 20, SaveManager::FileDest, Util::FormatVesk,
                                                Util::CodecVesk, 0.0, 0, u"copy"_s, folder.path());
        QTRY_COMPARE(job->state(), SaveJob::Done);
        const q4sim::Answer sent =
            sim().answer("POST", u"/xfer"_s, R"({"type":3,"src":2,"take":1,"start":10,"cnt":20})");
        QFile file(folder.filePath(u"copy.vesk"_s));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        QCOMPARE(sent.body.size(), 20 * RecordSize);
        QVERIFY(bytes.contains(sent.body));
    }

    void savedTakeIsOpenedFromTheDrive_data()
    {
        QTest::addColumn<int>("speed");
        QTest::newRow("within a poll") << 500000000;
        QTest::newRow("longer") << 1000000;
    }

    void savedTakeIsOpenedFromTheDrive()
    {
        QFETCH(int, speed);
        q4sim::Config with = config();
        with.driveBytesPerSecond = speed;
        start(with);
        SaveJob *first = save(u"run"_s);
        SaveJob *second = save(u"run"_s, 0, 5);
        QTRY_COMPARE(second->state(), SaveJob::Done);
        QCOMPARE(first->state(), SaveJob::Done);
        QCOMPARE(first->fileName(), u"run"_s);
        QCOMPARE(second->fileName(), u"run (2)"_s);
        second->open();
        QTRY_COMPARE(m_camera->ssdTakes()->size(), 1);
        QTRY_VERIFY(recording()->valuesInit());
        QCOMPARE(recording()->name(), u"run (2).vesk"_s);
        QCOMPARE(recording()->aFr(), 0);
        QCOMPARE(recording()->bFr(), 4);
    }

    void longSaveShowsItsProgress_data()
    {
        QTest::addColumn<int>("ssdSave");
        QTest::newRow("older") << 1;
        QTest::newRow("newer") << 2;
    }

    void longSaveShowsItsProgress()
    {
        QFETCH(int, ssdSave);
        q4sim::Config slow = slowConfig();
        slow.features[u"ssd-save"_s] = ssdSave;
        start(slow);
        SaveJob *job = save(ssdSave == 1 ? QString() : u"run"_s, 0, 20);
        QList<double> shown;
        connect(job, &SaveJob::progressChanged, this, [&] { shown.append(job->progress()); });
        QTRY_COMPARE(job->state(), SaveJob::Done);
        QVERIFY(shown.size() >= 3);
        QVERIFY(shown.first() > 0.0 && shown.first() < 100.0);
        QCOMPARE(shown.last(), 100.0);
        QVERIFY(listed().contains(ssdSave == 1 ? u"take1.vesk"_s : u"run.vesk"_s));
        QTRY_VERIFY(!take()->locked());
    }

    void saveThatAnotherHandStartedComesFirst()
    {
        start(slowConfig());
        sim().answer("POST", u"/ssd-save"_s, R"({"take":1,"start":0,"cnt":20,"name":"other"})");
        SaveJob *job = save(u"run"_s, 0, 1);
        QTRY_COMPARE(job->state(), SaveJob::QueuedFW);
        QCOMPARE(job->progress(), 0.0);
        QTRY_COMPARE(job->state(), SaveJob::Done);
    }

    void spoiltSave_data()
    {
        QTest::addColumn<FaultKind>("kind");
        QTest::addColumn<SaveJob::State>("state");
        QTest::addColumn<QString>("error");
        QTest::newRow("server error") << FaultKind::Http500 << SaveJob::Error << u"out of order"_s;
        QTest::newRow("drive gone") << FaultKind::Vanish << SaveJob::Error
                                    << u"the drive is not ready, or writes"_s;
        QTest::newRow("broken JSON") << FaultKind::InvalidJson << SaveJob::Done << QString();
        QTest::newRow("empty reply") << FaultKind::EmptyReply << SaveJob::Done << QString();
        QTest::newRow("no answer") << FaultKind::NoAnswer << SaveJob::Saving << QString();
    }

    void spoiltSave()
    {
        QFETCH(FaultKind, kind);
        QFETCH(SaveJob::State, state);
        QFETCH(QString, error);
        sim().setFault(Route::SsdSave, {.kind = kind});
        SaveJob *job = save(u"run"_s);
        QTRY_COMPARE(sim().requests("POST", u"/ssd-save"_s).size(), 1);
        QTRY_COMPARE(job->state(), state);
        QCOMPARE(job->error(), error);
        poll();
        QCOMPARE(job->state(), state);
    }

    void drivePulledBehindTheAnswerFailsTheSave()
    {
        start(slowConfig());
        sim().setFault(Route::SsdSave, {.kind = FaultKind::Vanish, .bytes = 1});
        SaveJob *job = save(u"run"_s, 0, 20);
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"ssd.state = 0"_s);
        QTRY_VERIFY(!take()->locked());
    }

    void spoiltListing_data()
    {
        QTest::addColumn<FaultKind>("kind");
        QTest::addColumn<int>("left");
        QTest::newRow("server error") << FaultKind::Http500 << 0;
        QTest::newRow("drive gone") << FaultKind::Vanish << 0;
        QTest::newRow("other types") << FaultKind::WrongTypes << 0;
        QTest::newRow("no keys") << FaultKind::MissingKeys << 0;
        QTest::newRow("broken JSON") << FaultKind::InvalidJson << 2;
        QTest::newRow("cut JSON") << FaultKind::TruncatedJson << 2;
        QTest::newRow("cut reply") << FaultKind::CloseMidBody << 2;
        QTest::newRow("empty reply") << FaultKind::EmptyReply << 2;
        QTest::newRow("no answer") << FaultKind::NoAnswer << 2;
    }

    void spoiltListing()
    {
        QFETCH(FaultKind, kind);
        QFETCH(int, left);
        QCOMPARE(listed().size(), 2);
        sim().setFault(Route::SsdLs, {.kind = kind, .count = 1});
        m_camera->ssdLs();
        QTRY_COMPARE(sim().requests("POST", u"/ssd-ls"_s).size(), 2);
        QTRY_COMPARE(list()->size(), left);
        poll();
        QCOMPARE(list()->size(), left);
        if (kind != FaultKind::Vanish)
            QCOMPARE(listed().size(), 2);
    }

    void spoiltOpen_data()
    {
        QTest::addColumn<FaultKind>("kind");
        QTest::newRow("server error") << FaultKind::Http500;
        QTest::newRow("drive gone") << FaultKind::Vanish;
        QTest::newRow("drive gone behind it") << FaultKind::None;
        QTest::newRow("no answer") << FaultKind::NoAnswer;
        QTest::newRow("broken JSON") << FaultKind::InvalidJson;
        QTest::newRow("empty reply") << FaultKind::EmptyReply;
    }

    void spoiltOpen()
    {
        QFETCH(FaultKind, kind);
        const bool behind = kind == FaultKind::None;
        sim().setFault(Route::SsdFopen,
                       {.kind = behind ? FaultKind::Vanish : kind, .bytes = behind, .count = 1});
        m_camera->ssdFOpen(u"b.vesk"_s);
        QTRY_COMPARE(sim().requests("POST", u"/ssd-fopen"_s).size(), 1);
        poll();
        QTRY_COMPARE(m_camera->ssdTakes()->size(), 0);
        if (kind != FaultKind::Vanish && !behind)
            open(u"b.vesk"_s);
    }

    void spoiltClose_data()
    {
        QTest::addColumn<FaultKind>("kind");
        QTest::addColumn<bool>("open");
        QTest::newRow("server error") << FaultKind::Http500 << true;
        QTest::newRow("no answer") << FaultKind::NoAnswer << true;
        QTest::newRow("broken JSON") << FaultKind::InvalidJson << false;
        QTest::newRow("empty reply") << FaultKind::EmptyReply << false;
        QTest::newRow("drive gone") << FaultKind::Vanish << false;
    }

    void spoiltClose()
    {
        QFETCH(FaultKind, kind);
        QFETCH(bool, open);
        this->open(u"b.vesk"_s);
        sim().setFault(Route::SsdFclose, {.kind = kind, .count = 1});
        recording()->fclose();
        QTRY_COMPARE(sim().requests("POST", u"/ssd-fclose"_s).size(), 1);
        poll();
        QTRY_COMPARE(m_camera->ssdTakes()->size(), open ? 1 : 0);
        if (!open)
            return;
        QVERIFY(recording()->savedOpened());
        recording()->fclose();
        QTRY_COMPARE(m_camera->ssdTakes()->size(), 0);
    }

    void spoiltDescription_data()
    {
        QTest::addColumn<FaultKind>("kind");
        QTest::addColumn<bool>("gone");
        QTest::newRow("server error") << FaultKind::Http500 << false;
        QTest::newRow("broken JSON") << FaultKind::InvalidJson << false;
        QTest::newRow("empty reply") << FaultKind::EmptyReply << false;
        QTest::newRow("no answer") << FaultKind::NoAnswer << false;
        QTest::newRow("drive gone") << FaultKind::Vanish << true;
    }

    void spoiltDescription()
    {
        QFETCH(FaultKind, kind);
        QFETCH(bool, gone);
        sim().setFault(Route::SsdTakes, {.kind = kind, .count = 1});
        m_camera->ssdFOpen(u"b.vesk"_s);
        QTRY_VERIFY(!sim().requests("GET", u"/ssd/takes/take1"_s).isEmpty());
        poll();
        QTRY_COMPARE(m_camera->ssdTakes()->size(), gone ? 0 : 1);
        if (gone)
            return;
        // The markers of this one are lost, and it can be closed.
        QVERIFY(!recording()->valuesInit());
        recording()->fclose();
        QTRY_COMPARE(m_camera->ssdTakes()->size(), 0);
    }

    void spoiltCommandChangesNothing_data()
    {
        QTest::addColumn<FaultKind>("kind");
        QTest::addColumn<bool>("format");
        for (const bool format : {false, true}) {
            const char *what = format ? "format" : "eject";
            QTest::addRow("%s: server error", what) << FaultKind::Http500 << format;
            QTest::addRow("%s: no answer", what) << FaultKind::NoAnswer << format;
        }
    }

    void spoiltCommandChangesNothing()
    {
        QFETCH(FaultKind, kind);
        QFETCH(bool, format);
        const auto command = [&] {
            if (format)
                m_camera->ssdFormat(u"FRESH"_s);
            else
                m_camera->ssdUmount();
        };
        sim().setFault(Route::Command, {.kind = kind, .count = 1});
        command();
        poll();
        QCOMPARE(m_camera->ssdStateValue()->variant().toInt(), int(Camera::SsdReady));
        command();
        QTRY_COMPARE(m_camera->ssdStateValue()->variant().toInt(),
                     int(format ? Camera::SsdFormat : Camera::SsdOff));
        if (!format)
            return;
        QTRY_VERIFY(m_camera->ssdProgressValue()->variant().toInt() > 0);
        QTRY_COMPARE(m_camera->ssdStateValue()->variant().toInt(), int(Camera::SsdReady));
        QCOMPARE(m_camera->ssdNameValue()->variant().toString(), u"FRESH"_s);
        QCOMPARE(listed(), QStringList());
    }

    void recordingThatTheCameraClosesEndsItsSave_data()
    {
        QTest::addColumn<QJsonObject>("deed");
        QTest::newRow("closed") << QJsonObject{{"ssd_close", 1}};
        QTest::newRow("pulled") << QJsonObject{{"ssd", "remove"}};
        QTest::newRow("failed") << QJsonObject{{"ssd", "fail"}};
    }

    void recordingThatTheCameraClosesEndsItsSave()
    {
        QFETCH(QJsonObject, deed);
        open(u"b.vesk"_s);
        const QPointer<SsdTake> opened = recording();
        sim().setFault(Route::Xfer, {.kind = FaultKind::Drip, .ms = 20, .bytes = 100});
        const QTemporaryDir folder;
        SaveJob *job = m_manager->createSaveJob(recording(), 0, 100, SaveManager::FileDest, Util::FormatVesk,
                                                Util::CodecVesk, 0.0, 0, u"copy"_s, folder.path());
        QTRY_VERIFY(job->progress() > 0.0);
        QCOMPARE(sim().operate(deed), QString());
        QTRY_COMPARE(m_camera->ssdTakes()->size(), 0);
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QVERIFY2(job->error() == u"take deleted or closed"_s || job->error() == u"HTTP 200"_s,
                 qPrintable(job->error()));
        QTRY_VERIFY(!opened);
    }

    void cameraGoesAtAnyMoment_data()
    {
        QTest::addColumn<Route>("route");
        QTest::newRow("listing") << Route::SsdLs;
        QTest::newRow("opening") << Route::SsdFopen;
        QTest::newRow("describing") << Route::SsdTakes;
        QTest::newRow("closing") << Route::SsdFclose;
        QTest::newRow("saving") << Route::SsdSave;
    }

    void cameraGoesAtAnyMoment()
    {
        QFETCH(Route, route);
        if (route == Route::SsdFclose)
            open(u"b.vesk"_s);
        sim().setFault(route, {.kind = FaultKind::Delay, .ms = 200});
        sim().clearRequests();
        m_camera->ssdLs();
        m_camera->ssdFOpen(u"b.vesk"_s);
        if (route == Route::SsdFclose)
            recording()->fclose();
        save(u"run"_s);
        const auto concerned = [&] {
            const auto all = sim().requests();
            return std::any_of(all.begin(), all.end(), [&](const q4sim::Request &request) {
                return q4sim::routeOf(request) == route;
            });
        };
        QTRY_VERIFY(concerned());
        m_camera->disconnectCamera();
        m_camera.reset();
        QCOMPARE(VeskApp::instance()->selectedVeskObject(), nullptr);
        QTRY_VERIFY(VeskApp::instance()->networkAccessManager()->findChildren<QNetworkReply *>().isEmpty());
    }
};

VESK_TEST_MAIN(TestCameraDrive)
#include "tst_camera_drive.moc"
