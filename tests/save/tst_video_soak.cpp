#include "tests/save/film_fixture.h"
#include "tests/support/vesk_test_main.h"

using namespace Qt::StringLiterals;

/** A hundred saves in a row, of all formats. */
class TestVideoSoak : public QObject
{
    Q_OBJECT

private:
    static qint64 memoryKiB()
    {
        QFile file(u"/proc/self/status"_s);
        if (!file.open(QIODevice::ReadOnly))
            return -1;
        const QByteArray status = file.readAll();
        const qsizetype at = status.indexOf("VmRSS:") + 6;
        return status.mid(at, status.indexOf("kB", at) - at).trimmed().toLongLong();
    }

    static qsizetype openFiles()
    {
        return QDir(u"/proc/self/fd"_s).entryList(QDir::Files | QDir::System).size();
    }
    static qsizetype threads()
    {
        return QDir(u"/proc/self/task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
    }

    /** Each tenth is cancelled, each tenth has no encoder that takes it. */
    static void save(FilmFixture &fixture, int number)
    {
        constexpr Util::Codec codecs[] = {
            Util::CodecRaw_BGR24, Util::CodecRaw_Gray8, Util::CodecAV1_YUV420P, Util::CodecAV1_YUV420P10,
            Util::CodecH264,      Util::CodecVesk,      Util::CodecRaw_RGB24};
        const Util::Codec codec = codecs[number % 7];
        const bool refused = number % 10 == 3;
        fixture.take->resValue()->updateValue(refused ? u"160"_s : u"160x96"_s);
        SaveJob *job = codec == Util::CodecVesk        ? fixture.save(Util::FormatVesk, 0, 20)
                       : codec == Util::CodecRaw_RGB24 ? fixture.save(Util::FormatTiff, 0, 20)
                                                       : fixture.film(codec, 0, 20);
        QVERIFY(job);
        if (number % 10 == 7)
            job->cancel();
        QTRY_VERIFY_WITH_TIMEOUT(job->state() > SaveJob::Saving, 30000);
        if (refused)
            QCOMPARE(job->state(), SaveJob::Error);
        else
            QCOMPARE(job->state(), number % 10 == 7 ? SaveJob::Cancelled : SaveJob::Done);
        fixture.manager->removeSaveJob(job);
        QVERIFY(QDir(fixture.folder).removeRecursively() && QDir().mkpath(fixture.folder));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

private slots:
    void hundredSavesLeaveNeitherMemoryNorFilesNorThreads()
    {
        FilmFixture fixture(1);
        QVERIFY(fixture.open());
        for (int number = 0; number < 30; ++number)
            save(fixture, number);
        const qint64 memory = memoryKiB();
        const qsizetype files = openFiles();
        const qsizetype tasks = threads();
        for (int number = 30; number < 130 && !QTest::currentTestFailed(); ++number)
            save(fixture, number);
        qInfo() << "KiB before and after" << memory << memoryKiB() << "files" << files << openFiles();
        QTRY_COMPARE_LE(openFiles(), files);
        QTRY_COMPARE_LE(threads(), tasks);
        // The memory of one film in AV1 is more than this.
        QCOMPARE_LE(memoryKiB(), memory + 16 * 1024);
    }
};

VESK_TEST_MAIN(TestVideoSoak)
#include "tst_video_soak.moc"
