#include "app/qml_object_list_model_base.h"
#include "file/vesk_file.h"
#include "save/vesk_writer.h"
#include "save/vesk_writer_worker.h"
#include "take/abstract_take_reader.h"
#include "tests/file/hand_made_file.h"
#include "tests/save/save_source_fixture.h"
#include "tests/support/thread_names.h"
#include "tests/support/vesk_test_main.h"

#include <QSignalSpy>
#include <QThread>

using namespace Qt::StringLiterals;

/** The thread of a save's writer: its name, and what becomes of it and the output when no frames come. */
class TestWriterThread : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SaveSourceFixture> m_fixture;

    static void addFormats()
    {
        QTest::addColumn<Util::Format>("format");
        QTest::addColumn<QString>("threadName");
        QTest::newRow("native") << Util::FormatVesk << u"VeskFileWriter Thread"_s;
        QTest::newRow("images") << Util::FormatTiff << u"VideoFileWriter Thread"_s;
        QTest::newRow("film") << Util::FormatAvi << u"VideoFileWriter Thread"_s;
    }

    static VeskWriter *writerOf(const SaveJob *job) { return job->findChild<VeskWriter *>(); }

    /** A native file that was there when it was opened, and is not any more. */
    std::unique_ptr<VeskFile> goneFile() const
    {
        const HandMade::Folder folder;
        auto file = std::make_unique<VeskFile>(folder.write(HandMade::usualRun(-5, 9)), VeskApp::instance());
        if (!file->open())
            return nullptr;
        return file;
    }

    /** What this process holds open. */
    static QString openFiles()
    {
        const QDir handles(u"/proc/self/fd"_s);
        QStringList names;
        for (const QString &handle : handles.entryList(QDir::AllEntries | QDir::System))
            names.append(QFile::symLinkTarget(handles.filePath(handle)));
        return names.join(u'\n');
    }

private slots:
    void init() { m_fixture = std::make_unique<SaveSourceFixture>(); }
    void cleanup() { m_fixture.reset(); }

    void threadHasItsNameWhileItWrites_data() { addFormats(); }

    void threadHasItsNameWhileItWrites()
    {
        QFETCH(const Util::Format, format);
        QFETCH(const QString, threadName);
        m_fixture->holdFrames();
        SaveJob *job = m_fixture->save(format, -5, 3);
        QCOMPARE(job->state(), SaveJob::Saving);
        const QThread *thread = writerOf(job)->worker()->thread();
        QCOMPARE(thread->objectName(), threadName);
        QTRY_VERIFY(hasThread(qPrintable(threadName)));
        QVERIFY(thread != QThread::currentThread());
        job->cancel();
        QVERIFY(thread->isFinished());
        QCOMPARE(writerOf(job)->worker(), nullptr);
    }

    void framesThatComeBehindACancelReachNobody_data() { addFormats(); }

    void framesThatComeBehindACancelReachNobody()
    {
        QFETCH(const Util::Format, format);
        m_fixture->answerFrames(SaveSourceFixture::records(3));
        m_fixture->holdFrames();
        SaveJob *job = m_fixture->save(format, -5, 3);
        auto *reader = job->findChild<AbstractTakeReader *>();
        const VeskWriter *writer = writerOf(job);
        QSignalSpy written(writer, &VeskWriter::framesWrittenChanged);
        QTRY_COMPARE(m_fixture->server.heldCount(), 1);
        job->cancel();
        QCOMPARE(job->state(), SaveJob::Cancelled);
        emit reader->readyRead(SaveSourceFixture::records(3), 3, 3, 0);
        m_fixture->server.release();
        // Behind it a whole save has its turn, so that all that was under way has come to its end.
        SaveJob *next = m_fixture->save(Util::FormatVesk, -5, 3, u"next"_s);
        QTRY_COMPARE(next->state(), SaveJob::Done);
        QCOMPARE(written.count(), 0);
        QCOMPARE(writer->framesWritten(), 0);
        QCOMPARE(job->state(), SaveJob::Cancelled);
        QCOMPARE(job->progress(), 0.0);
        QCOMPARE(m_fixture->files(), QStringList(u"next.vesk"_s));
    }

    void readerThatCannotStartEndsTheThreadAndLeavesNoMoreThanAHeader_data() { addFormats(); }

    void readerThatCannotStartEndsTheThreadAndLeavesNoMoreThanAHeader()
    {
        QFETCH(const Util::Format, format);
        const auto file = goneFile();
        QVERIFY(file);
        QVERIFY(!QFile::exists(file->fileName()));
        SaveJob *job = m_fixture->manager->createSaveJob(file.get(), -5, 3, SaveManager::FileDest, format,
                                                         Util::CodecRaw_BGR24, 30.0, 15, u"shot"_s,
                                                         m_fixture->folder.path());
        QVERIFY(job);
        QCOMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), QString());
        QCOMPARE(m_fixture->manager->saveJobs()->size(), 1);
        QCOMPARE(writerOf(job)->worker(), nullptr);
        QTRY_VERIFY(!hasThread("VeskFileWriter Thread") && !hasThread("VideoFileWriter Thread"));
        // A native file is kept as far as it came. A film or an image of no frame would only look like one.
        const bool native = format == Util::FormatVesk;
        QCOMPARE(m_fixture->files(), native ? QStringList(u"shot.vesk"_s) : QStringList());
        const QByteArray header = m_fixture->content(u"shot.vesk"_s);
        QCOMPARE(header.first(native ? 4 : 0), native ? QByteArray("VESK") : QByteArray());
        QVERIFY(header.size() <= 4096);
        QVERIFY(!openFiles().contains(u"shot"_s));
    }
};

VESK_TEST_MAIN(TestWriterThread)
#include "tst_writer_thread.moc"
