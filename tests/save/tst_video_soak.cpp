#include "tests/save/film_fixture.h"
#include "tests/support/vesk_test_main.h"

#include <algorithm>
#include <malloc.h>

using namespace Qt::StringLiterals;

/** A hundred saves in a row, of all formats. */
class TestVideoSoak : public QObject
{
    Q_OBJECT

private:
    /** What is allocated: what the C library keeps of what was freed may still grow for a while. */
    static qint64 allocatedBytes()
    {
        const struct mallinfo2 info = mallinfo2();
        return qint64(info.uordblks + info.hblkhd);
    }

    /** Without connections, of which the camera and the program keep some for the next request. */
    static qsizetype openFiles()
    {
        const QFileInfoList all = QDir(u"/proc/self/fd"_s).entryInfoList(QDir::Files | QDir::System);
        return std::ranges::count_if(
            all, [](const QFileInfo &one) { return !one.readSymLink().contains(u"socket:"_s); });
    }
    static qsizetype threads()
    {
        return QDir(u"/proc/self/task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
    }

    /** Each tenth is cancelled, each tenth cannot begin. */
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
        const qint64 allocated = allocatedBytes();
        const qsizetype files = openFiles();
        const qsizetype tasks = threads();
        for (int number = 30; number < 130 && !QTest::currentTestFailed(); ++number)
            save(fixture, number);
        QTRY_COMPARE_LE(openFiles(), files);
        QTRY_COMPARE_LE(threads(), tasks);
        // One decoded frame that each save forgets would be 9 MB. With the simulated camera in the same
        // process a save grows it by some 2.5 kB, of native files as much as of films.
        const qint64 grown = allocatedBytes() - allocated;
        QVERIFY2(grown < 2000 * 1000, qPrintable(u"%1 bytes on top of %2"_s.arg(grown).arg(allocated)));
    }
};

VESK_TEST_MAIN(TestVideoSoak)
#include "tst_video_soak.moc"
