#include "camera/camera.h"
#include "tests/e2e/process.h"
#include "tests/sim/http_client.h"
#include "tests/support/camera_polls.h"
#include "tests/support/vesk_test_main.h"

#include <QCryptographicHash>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>
#include <memory>

using namespace Qt::StringLiterals;

// Freed memory is kept back for a while under the address sanitizer, and would count as grown.
extern "C" const char *__asan_default_options();
extern "C" const char *__asan_default_options()
{
    return "quarantine_size_mb=4";
}

namespace
{
constexpr qint64 MiB = 1 << 20;

qint64 numberIn(const QString &path, const QByteArray &key)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray text = file.readAll();
    const qsizetype at = text.indexOf(key);
    return at < 0 ? -1 : text.sliced(at + key.size()).simplified().split(' ').first().toLongLong();
}

/** Growth of this process's memory from the construction to its peak, in bytes. */
class MemoryWatch
{
public:
    MemoryWatch()
    {
        QFile reset(u"/proc/self/clear_refs"_s);
        m_started = reset.open(QIODevice::WriteOnly) && reset.write("5") == 1;
        reset.close();
        m_before = numberIn(u"/proc/self/status"_s, "VmRSS:");
    }
    bool started() const { return m_started && m_before > 0; }
    qint64 growth() const { return (numberIn(u"/proc/self/status"_s, "VmHWM:") - m_before) * 1024; }

private:
    bool m_started;
    qint64 m_before;
};

/** The longest time for which the event loop of this thread did not come round. */
class LoopWatch : public QObject
{
public:
    LoopWatch()
    {
        connect(&m_timer, &QTimer::timeout, this, &LoopWatch::comeRound);
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.start(5);
        m_sinceLast.start();
        m_waited = waitedForProcessor();
    }
    qint64 longestMs() const { return m_longestNs / 1000000; }
    int rounds() const { return m_rounds; }

private:
    /** Time in ns that the thread could have run and another one had the processor, which blocks nobody. */
    static qint64 waitedForProcessor()
    {
        QFile file(u"/proc/thread-self/schedstat"_s);
        return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toLongLong() : 0;
    }

    void comeRound()
    {
        const qint64 waited = waitedForProcessor();
        m_longestNs = std::max(m_longestNs, m_sinceLast.nsecsElapsed() - (waited - m_waited));
        m_waited = waited;
        m_sinceLast.start();
        ++m_rounds;
    }

    QTimer m_timer;
    QElapsedTimer m_sinceLast;
    qint64 m_waited = 0;
    qint64 m_longestNs = 0;
    int m_rounds = 0;
};
} // namespace

/** Firmware for a simulated camera in a process of its own. */
class TestFirmwareUpload : public QObject
{
    Q_OBJECT

private:
    static constexpr const char *Address = "127.0.2.19";

    void start(const QStringList &options = {})
    {
        m_camera.reset();
        m_process = std::make_unique<Process>();
        m_process->start(QString::fromLocal8Bit(Q4SIM_PROGRAM),
                         QStringList{u"--address"_s, QString::fromLatin1(Address), u"--no-discovery"_s} +
                             options);
        QVERIFY2(!m_process->readUntil("q4sim: camera ").isEmpty(),
                 m_process->readAllStandardError().constData());
        m_camera = std::make_unique<Camera>(QHostAddress(QLatin1StringView(Address)), nullptr);
        QVERIFY(connects(*m_camera));
    }

    /** A file with holes, which takes no room on the disk and no two places of which are alike. */
    QString sparseFile(const QString &name, qint64 size) const
    {
        const QString path = m_folder.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || !file.resize(size))
            return {};
        for (const qint64 at : {qint64(0), size / 3, size / 2 + 1, size - 32}) {
            if (!file.seek(at) || file.write("firmware at " + QByteArray::number(at)) < 0)
                return {};
        }
        return path;
    }

    QString smallFile(const QString &name, const QByteArray &content) const
    {
        QFile file(m_folder.filePath(name));
        return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() ? file.fileName()
                                                                                        : QString();
    }

    static QByteArray sha256(const QString &path)
    {
        QFile file(path);
        QCryptographicHash hash(QCryptographicHash::Sha256);
        return file.open(QIODevice::ReadOnly) && hash.addData(&file) ? hash.result().toHex() : QByteArray();
    }

    void update(const QString &path) { m_camera->fwUpdate(QUrl::fromLocalFile(path).toString()); }

    /**
     * Runs the event loop until the upload tells that it holds. (The waiting macros sleep between rounds of
     * the loop, which would make an upload crawl.)
     */
    template <class Condition> bool uploadTells(Condition condition)
    {
        QSignalSpy told(m_camera.get(), &Camera::fwUpdateStatusChanged);
        while (!condition()) {
            if (!told.wait(20000))
                return false;
        }
        return true;
    }

    bool statusBecomes(const QString &status)
    {
        return uploadTells([&] { return m_camera->fwUpdateStatus() == status; });
    }

    QJsonObject received() { return m_client.get(u"/sim/state"_s).json()["upload"].toObject(); }

    bool spoilUpload(const QByteArray &fault)
    {
        return m_client.post(u"/sim/fault"_s, R"({"on":"q4fw",)" + fault + "}") == 200;
    }

    HttpClient m_client{QString::fromLatin1(Address)};
    QTemporaryDir m_folder;
    std::unique_ptr<Process> m_process;
    std::unique_ptr<Camera> m_camera;

private slots:
    void cleanup()
    {
        m_camera.reset();
        m_process.reset();
    }

    void largeFileArrivesWholeAndIsNeverHeldInMemory()
    {
        start();
        const QString path = sparseFile(u"large.q4fw"_s, 200 * MiB);
        QCOMPARE(QFileInfo(path).size(), 209715200);
        const QByteArray hash = sha256(path);
        const MemoryWatch memory;
        QVERIFY(memory.started());
        const LoopWatch loop;
        double progress = 0;
        int backwards = 0;
        connect(m_camera.get(), &Camera::fwUpdateProgressChanged, this, [&] {
            if (m_camera->fwUpdateProgress() < progress && m_camera->fwUpdateProgress() > 0)
                ++backwards;
            progress = m_camera->fwUpdateProgress();
        });
        update(path);
        QVERIFY(statusBecomes(u"Installing firmware update...Do NOT power off camera!"_s));
        QCOMPARE(m_camera->fwUpdateProgress(), 100.0);
        QVERIFY(uploadTells([&] { return m_camera->fwUpdateProgress() <= 0.0; }));
        QVERIFY2(memory.growth() < 32 * MiB, qPrintable(u"%1 MiB"_s.arg(memory.growth() / MiB)));
        QVERIFY2(loop.longestMs() < 100, qPrintable(u"%1 ms"_s.arg(loop.longestMs())));
        QVERIFY(loop.rounds() > 10);
        QCOMPARE(backwards, 0);
        const QJsonObject upload = received();
        QCOMPARE(upload["size"].toInteger(), 209715200);
        QCOMPARE(upload["sha256"].toString().toLatin1(), hash);
        QCOMPARE(upload["file_name"].toString(), u"large.q4fw"_s);
        QTRY_COMPARE(m_camera->fwUpdateStatus(), u"Finalizing firmware update...Do NOT power off camera!"_s);
    }

    void installedFirmwareIsToldAfterTheWait()
    {
        start();
        update(smallFile(u"a.q4fw"_s, "firmware"));
        QTRY_COMPARE(m_camera->fwUpdateStatus(), u"Finalizing firmware update...Do NOT power off camera!"_s);
        auto *wait = m_camera->findChild<QTimer *>(u"fwFinalizeTimer"_s);
        QCOMPARE(wait->interval(), 90000);
        wait->start(1); // its end
        QTRY_COMPARE(m_camera->fwUpdateStatus(),
                     u"Firmware update installed! Restart camera to complete update."_s);
        // A camera that comes later is told of the update that was made before.
        Camera later(QHostAddress(QLatin1StringView(Address)), nullptr);
        later.connectCamera();
        QTRY_COMPARE(later.fwUpdateStatus(),
                     u"Firmware update installed! Restart camera to complete update."_s);
    }

    void fileWithoutContentIsTheCamerasError_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("empty") << u"empty.q4fw"_s;
        QTest::newRow("missing") << u"missing.q4fw"_s;
        QTest::newRow("folder") << u"folder.q4fw"_s;
    }

    void fileWithoutContentIsTheCamerasError()
    {
        QFETCH(QString, name);
        start();
        QVERIFY(!smallFile(u"empty.q4fw"_s, {}).isEmpty());
        QVERIFY(QDir(m_folder.path()).mkpath(u"folder.q4fw"_s));
        QStringList told;
        connect(m_camera.get(), &Camera::fwUpdateStatusChanged, this,
                [&] { told << m_camera->fwUpdateStatus(); });
        update(m_folder.filePath(name));
        QTRY_COMPARE(m_camera->fwUpdateStatus(), u"Update error: 3"_s);
        QCOMPARE(told.first(), u"Uploading Q4FW file...0%"_s);
        QVERIFY(!told.contains(u"Update error: upload failed"_s));
        QCOMPARE(received()["size"].toInteger(-1), 0);
        QCOMPARE(received()["file_name"].toString(), name);
    }

    void refusedFileIsToldByItsNumber()
    {
        start({u"--reject-firmware"_s, u"BAD"_s});
        update(smallFile(u"bad.q4fw"_s, "BAD firmware"));
        QTRY_COMPARE(m_camera->fwUpdateStatus(), u"Update error: 4"_s);
        // Another try with a good one; the number stays until the camera has another.
        update(smallFile(u"good.q4fw"_s, "firmware"));
        QCOMPARE(m_camera->fwUpdateStatus(), u"Uploading Q4FW file...0%"_s);
        QTRY_COMPARE(m_camera->fwUpdateStatus(), u"Finalizing firmware update...Do NOT power off camera!"_s);
    }

    void cameraThatBreaksOffAtHalfIsAFailedUpload()
    {
        start();
        QVERIFY(spoilUpload(R"("kind":"close-upload","percent":50)"));
        update(sparseFile(u"half.q4fw"_s, 40 * MiB));
        QVERIFY(statusBecomes(u"Update error: upload failed"_s));
        QCOMPARE(m_camera->fwUpdateProgress(), 0.0);
        const QJsonObject upload = received();
        QCOMPARE(upload["complete"].toBool(true), false);
        QVERIFY(upload["received"].toInteger() >= 20 * MiB);
        QVERIFY(upload["received"].toInteger() < 40 * MiB);
        QSignalSpy polled(m_camera.get(), &Camera::valuesPolled);
        QTRY_VERIFY(polled.count() >= 3);
        QCOMPARE(m_camera->fwUpdateStatus(), u"Update error: upload failed"_s);
    }

    void cameraThatDiesInTheMiddleIsAFailedUpload()
    {
        start();
        QVERIFY(spoilUpload(R"("kind":"slow-upload","bytes":1048576,"ms":20)"));
        QSignalSpy polled(m_camera.get(), &Camera::valuesPolled);
        update(sparseFile(u"slow.q4fw"_s, 100 * MiB));
        QVERIFY(uploadTells([&] { return m_camera->fwUpdateProgress() > 20; }));
        QVERIFY(m_camera->fwUpdateProgress() < 95);
        QVERIFY(polled.count() > 0); // the upload stops nothing else
        QCOMPARE(m_camera->fwUpdateStatus(),
                 u"Uploading Q4FW file..."_s + QString::number(m_camera->fwUpdateProgress(), 'f', 0) + u'%');
        m_process->kill();
        QVERIFY(statusBecomes(u"Update error: upload failed"_s));
        QCOMPARE(m_camera->fwUpdateProgress(), 0.0);
        QVERIFY(m_camera->connected());
    }

    void uploadGoesOnWithoutItsCamera()
    {
        start();
        QVERIFY(spoilUpload(R"("kind":"slow-upload","bytes":4194304,"ms":20)"));
        const QString path = sparseFile(u"alone.q4fw"_s, 60 * MiB);
        update(path);
        QVERIFY(uploadTells([&] { return m_camera->fwUpdateProgress() > 5; }));
        QVERIFY(m_camera->fwUpdateProgress() < 100);
        m_camera.reset();
        // The questions to the camera run the event loop meanwhile.
        QTRY_VERIFY_WITH_TIMEOUT(received()["complete"].toBool(), 20000);
        QCOMPARE(received()["sha256"].toString().toLatin1(), sha256(path));
    }
};

VESK_TEST_MAIN(TestFirmwareUpload)
#include "tst_firmware_upload.moc"
