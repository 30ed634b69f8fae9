#include "tests/camera/drive_case.h"
#include "tests/support/vesk_test_main.h"

#include <QDir>
#include <QPointer>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using q4sim::FaultKind;
using q4sim::Route;

/** Frames and commands of a drive that fail: what was there stays, and the next try works. */
class TestDriveFaults : public QObject, private DriveCase
{
    Q_OBJECT

private:
    qsizetype asked() const { return sim().requests("POST", u"/xfer"_s).size(); }

    bool isAsked(const QByteArray &body) const
    {
        const auto all = sim().requests("POST", u"/xfer"_s);
        return std::ranges::any_of(all, [&](const q4sim::Request &request) { return request.body == body; });
    }

    SaveJob *saveFrames(const QString &folder, const QString &name)
    {
        return m_manager->createSaveJob(recording(), 0, 20, SaveManager::FileDest, Util::FormatVesk,
                                        Util::CodecVesk, 0.0, 0, name, folder);
    }

    void closeIt()
    {
        const QPointer<SsdTake> closed = recording();
        closed->fclose();
        QTRY_VERIFY(!closed);
        QCOMPARE(m_camera->ssdTakes()->size(), 0);
    }

    int driveState() const { return m_camera->ssdStateValue()->variant().toInt(); }

private slots:
    void init() { start(config()); }
    void cleanup() { end(); }

    void spoiltFrameLeavesThePicture_data()
    {
        QTest::addColumn<FaultKind>("kind");
        QTest::newRow("server error") << FaultKind::Http500;
        QTest::newRow("broken answer") << FaultKind::InvalidJson;
        QTest::newRow("empty reply") << FaultKind::EmptyReply;
        QTest::newRow("cut reply") << FaultKind::CloseMidBody;
        QTest::newRow("no answer") << FaultKind::NoAnswer;
        QTest::newRow("drive gone") << FaultKind::Vanish;
    }

    void spoiltFrameLeavesThePicture()
    {
        QFETCH(const FaultKind, kind);
        open(u"b.vesk"_s);
        const QPointer<SsdTake> take = recording();
        take->pause();
        QTRY_VERIFY(!take->imgFrame()->image().isNull() && !take->frameInFlight());
        const QImage before = take->imgFrame()->image().copy();
        sim().setFault(Route::Xfer, {.kind = kind, .count = 1});
        const qsizetype sent = asked();
        take->setFr(3, true);
        QTRY_VERIFY(asked() > sent);
        if (kind == FaultKind::Vanish) {
            QTRY_VERIFY(!take);
            QCOMPARE(m_camera->ssdTakes()->size(), 0);
            QCOMPARE(VeskApp::instance()->selectedVeskObject(), m_camera.get());
            return;
        }
        if (kind == FaultKind::NoAnswer) {
            // It is waited for; the recording can be left and opened anew.
            poll();
            QVERIFY(take->frameInFlight());
            QCOMPARE(take->imgFrame()->image(), before);
            closeIt();
            open(u"b.vesk"_s);
            QTRY_COMPARE(recording()->imgFrame()->image(), before);
            return;
        }
        QTRY_VERIFY(!take->frameInFlight());
        QCOMPARE(take->imgFrame()->image(), before);
        QVERIFY(take->savedOpened());
        take->setFr(5, true);
        QTRY_VERIFY(take->imgFrame()->image() != before);
    }

    void spoiltFramesEndTheSave_data()
    {
        QTest::addColumn<FaultKind>("kind");
        QTest::addColumn<QString>("error");
        QTest::newRow("server error") << FaultKind::Http500 << u"out of order"_s;
        QTest::newRow("cut reply") << FaultKind::CloseMidBody << u"HTTP 200"_s;
        QTest::newRow("drive gone") << FaultKind::Vanish << u"no recording 1 is open"_s;
        // Nothing tells that there will be no more: the operator does.
        QTest::newRow("broken answer") << FaultKind::InvalidJson << QString();
        QTest::newRow("empty reply") << FaultKind::EmptyReply << QString();
        QTest::newRow("no answer") << FaultKind::NoAnswer << QString();
    }

    void spoiltFramesEndTheSave()
    {
        QFETCH(const FaultKind, kind);
        QFETCH(const QString, error);
        open(u"b.vesk"_s);
        VeskApp::instance()->setSelectedVeskObject(m_camera.get());
        QTRY_VERIFY(!recording()->frameInFlight());
        const QTemporaryDir folder;
        sim().setFault(Route::Xfer, {.kind = kind});
        SaveJob *job = saveFrames(folder.path(), u"first"_s);
        QTRY_VERIFY(isAsked(R"({"type":3,"src":2,"take":1,"start":0,"cnt":20})"));
        if (error.isEmpty()) {
            poll();
            QCOMPARE(job->state(), SaveJob::Saving);
            job->cancel();
            QTRY_COMPARE(job->state(), SaveJob::Cancelled);
            QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList());
        } else {
            QTRY_COMPARE(job->state(), SaveJob::Error);
            QVERIFY2(job->error() == error ||
                         (kind == FaultKind::Vanish && job->error() == u"take deleted or closed"),
                     qPrintable(job->error()));
        }
        sim().clearFaults();
        if (kind == FaultKind::Vanish) {
            QTRY_COMPARE(m_camera->ssdTakes()->size(), 0);
            return;
        }
        QVERIFY(recording()->savedOpened());
        SaveJob *next = saveFrames(folder.path(), u"next"_s);
        QTRY_COMPARE(next->state(), SaveJob::Done);
        QVERIFY(QFileInfo(folder.filePath(u"next.vesk"_s)).size() > 20 * RecordSize);
    }

    void spoiltAnswerToACommandLeavesItsEffect_data()
    {
        QTest::addColumn<FaultKind>("kind");
        QTest::addColumn<bool>("format");
        for (const bool format : {false, true}) {
            const char *what = format ? "format" : "eject";
            QTest::addRow("%s: broken JSON", what) << FaultKind::InvalidJson << format;
            QTest::addRow("%s: empty reply", what) << FaultKind::EmptyReply << format;
            QTest::addRow("%s: cut reply", what) << FaultKind::CloseMidBody << format;
        }
    }

    /** What has become of the drive is read from the status, and nothing is sent again. */
    void spoiltAnswerToACommandLeavesItsEffect()
    {
        QFETCH(const FaultKind, kind);
        QFETCH(const bool, format);
        sim().setFault(Route::Command, {.kind = kind, .count = 1});
        if (format)
            m_camera->ssdFormat(u"FRESH"_s);
        else
            m_camera->ssdUmount();
        QTRY_COMPARE(driveState(), int(format ? Camera::SsdFormat : Camera::SsdOff));
        if (format) {
            QTRY_COMPARE(driveState(), int(Camera::SsdReady));
            QCOMPARE(m_camera->ssdNameValue()->variant().toString(), u"FRESH"_s);
        }
        QCOMPARE(sim().requests("POST", format ? u"/ssd-format"_s : u"/ssd-umount"_s).size(), 1);
    }

    void refusedCommandChangesNothing_data()
    {
        QTest::addColumn<bool>("format");
        QTest::newRow("format") << true;
        QTest::newRow("eject") << false;
    }

    /** The camera refuses while it writes, and does it when it is asked again. */
    void refusedCommandChangesNothing()
    {
        QFETCH(const bool, format);
        start(slowConfig());
        SaveJob *job = save(u"run"_s, 0, 20);
        QTRY_COMPARE(sim().value(u"ssd/wr_state"_s).toInt(), 1);
        const auto command = [&] {
            if (format)
                m_camera->ssdFormat(u"FRESH"_s);
            else
                m_camera->ssdUmount();
        };
        command();
        QTRY_COMPARE(sim().requests("POST", format ? u"/ssd-format"_s : u"/ssd-umount"_s).size(), 1);
        QTRY_COMPARE(job->state(), SaveJob::Done);
        QCOMPARE(driveState(), int(Camera::SsdReady));
        QVERIFY(listed().contains(u"run.vesk"_s));
        command();
        QTRY_COMPARE(driveState(), int(format ? Camera::SsdFormat : Camera::SsdOff));
    }

    void vanishedDriveIsToldByTheStatus_data() { refusedCommandChangesNothing_data(); }

    void vanishedDriveIsToldByTheStatus()
    {
        QFETCH(const bool, format);
        open(u"b.vesk"_s);
        sim().setFault(Route::Command, {.kind = FaultKind::Vanish, .count = 1});
        if (format)
            m_camera->ssdFormat(u"FRESH"_s);
        else
            m_camera->ssdUmount();
        QTRY_COMPARE(driveState(), int(Camera::SsdRemoved));
        QTRY_COMPARE(m_camera->ssdTakes()->size(), 0);
        QCOMPARE(sim().operate({{"ssd", "insert"}}), QString());
        QTRY_COMPARE(driveState(), int(Camera::SsdReady));
        QCOMPARE(listed().size(), 2);
    }

    void refusedListingEmptiesTheList()
    {
        QCOMPARE(listed().size(), 2);
        QCOMPARE(sim().operate({{"ssd", "remove"}}), QString());
        QTRY_COMPARE(driveState(), int(Camera::SsdRemoved));
        QTest::ignoreMessage(QtDebugMsg, "ssdLsFinished error");
        QCOMPARE(listed(), QStringList());
        QCOMPARE(sim().operate({{"ssd", "insert"}}), QString());
        QTRY_COMPARE(driveState(), int(Camera::SsdReady));
        QCOMPARE(listed().size(), 2);
    }

    void fullDriveRefusesTheSave()
    {
        QCOMPARE(sim().operate({{"ssd", "full"}}), QString());
        SaveJob *refused = save(u"run"_s);
        QTRY_COMPARE(refused->state(), SaveJob::Error);
        QCOMPARE(refused->error(), u"the drive is full"_s);
        QVERIFY(take()->savedOpened());
        m_camera->ssdFormat(u"FRESH"_s);
        QTRY_COMPARE(driveState(), int(Camera::SsdFormat));
        QTRY_COMPARE(driveState(), int(Camera::SsdReady));
        SaveJob *next = save(u"run"_s);
        QTRY_COMPARE(next->state(), SaveJob::Done);
        QCOMPARE(listed(), QStringList(u"run.vesk"_s));
    }
};

VESK_TEST_MAIN(TestDriveFaults)
#include "tst_drive_faults.moc"
