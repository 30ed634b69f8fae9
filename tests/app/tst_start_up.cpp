#include "app/log.h"
#include "camera/camera.h"
#include "tests/app/started_copy.h"
#include "tests/file/hand_made_file.h"
#include "tests/support/vesk_test_main.h"

#include <QFileInfo>

#include <csignal>

/** Start and log of the process: of a copy with the application object and no more. */
class TestStartUp : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<StartedCopy> m_copy;

private slots:
    void init() { m_copy = std::make_unique<StartedCopy>(); }

    void withoutLogTheBannerGoesToTheDefaultOutputAndNoFileIsDeleted()
    {
        QVERIFY(QDir().mkpath(m_copy->path("data/Morvane/VESK")));
        QFile old(m_copy->logPath());
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("old");
        old.close();
        const StartedCopy::Run run = m_copy->start();
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(run.errorOutput.contains("vesk/log = 0"), qPrintable(run.errorOutput));
        QVERIFY(run.errorOutput.contains("VESK version: 10.0"));
        QVERIFY(run.errorOutput.contains("Settings path: " + m_copy->configPath()));
        QCOMPARE(StartedCopy::contentOf(m_copy->logPath()), "old");
        QVERIFY(StartedCopy::contentOf(m_copy->configPath()).contains("\"version\": \"10.0\""));
    }

    void logStartsWithTheDateAndLeavesOutItsOwnSwitch()
    {
        m_copy->writeSettings("{\"vesk\":{\"log\":1}}");
        QCOMPARE(m_copy->start().exitCode, 0);
        const QString log = StartedCopy::contentOf(m_copy->logPath());
        const QString year = QString::number(QDate::currentDate().year());
        const QString first = log.section('\n', 0, 0);
        QVERIFY2(first.startsWith("Debug: ") && first.contains(year), qPrintable(first));
        QVERIFY(!log.contains("vesk/log ="));
        const QStringList labels{"VESK version:", "Host:",    "Product:",      "Type:",   "Version:",
                                 "Boot ID:",      "Build:",   "CPU:",          "Kernel:", "Kernel version:",
                                 "Qt version:",   "Qt path:", "Settings path:"};
        for (qsizetype i = 0; i < labels.size(); ++i)
            QVERIFY2(log.section('\n', int(i) + 1, int(i) + 1).startsWith("Debug: " + labels[i]),
                     qPrintable(labels[i]));
    }

    void secondStartReplacesTheLog()
    {
        m_copy->writeSettings("{\"vesk\":{\"log\":1}}");
        m_copy->start({"first.vesk"});
        QVERIFY(StartedCopy::contentOf(m_copy->logPath()).contains("first.vesk"));
        m_copy->start();
        const QString log = StartedCopy::contentOf(m_copy->logPath());
        QVERIFY(!log.isEmpty());
        QVERIFY(!log.contains("first.vesk"));
    }

    void everyKindOfMessageHasItsWord()
    {
        m_copy->writeSettings("{\"vesk\":{\"log\":1}}");
        m_copy->start();
        const QString log = StartedCopy::contentOf(m_copy->logPath());
        for (const char *line :
             {"Debug: a debug", "Info: an info", "Warning: a warning", "Critical: a critical"})
            QVERIFY2(log.contains(QString("\n%1\n").arg(line)), line);
    }

    void fileThatCannotBeOpenedStillStarts()
    {
        const QString path = m_copy->path("gone.vesk");
        const StartedCopy::Run run = m_copy->start({path, "second.vesk"});
        QCOMPARE(run.exitCode, 0);
        QVERIFY(run.errorOutput.contains("error opening \"" + path + "\""));
        QVERIFY(!run.errorOutput.contains("second.vesk"));
        QVERIFY(run.errorOutput.contains("sources: 0"));
    }

    void fileOnTheCommandLineIsOpenedAndShown()
    {
        const QByteArray json =
            R"({"acq":{"res":"4x2"},"first_fr":0,"fr_cnt":1,"last_fr":0,"meta":{"size":8}})";
        QFile file(m_copy->path("take #3.vesk"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(HandMade::usual(json, HandMade::record(1, 0)));
        file.close();
        const StartedCopy::Run run = m_copy->start({file.fileName()});
        QCOMPARE(run.exitCode, 0);
        QVERIFY(!run.errorOutput.contains("error opening"));
        QVERIFY2(run.errorOutput.contains("sources: 1"), qPrintable(run.errorOutput));
        QVERIFY(run.errorOutput.contains("picture: 4 x 2"));
    }

    void settingsThatAreNoJsonGiveDefaultsAndAreKept()
    {
        m_copy->writeSettings("not { json");
        const StartedCopy::Run run = m_copy->start();
        QCOMPARE(run.exitCode, 0);
        QVERIFY(run.errorOutput.contains("vesk/log = 0"));
        QCOMPARE(StartedCopy::contentOf(m_copy->configPath() + ".bad"), "not { json");
    }

    void crashLeavesALineInTheLogAndEndsTheProcess()
    {
        m_copy->writeSettings("{\"vesk\":{\"log\":1}}");
        const StartedCopy::Run run = m_copy->start({"--crash"});
        QVERIFY(run.crashed);
        QVERIFY(StartedCopy::contentOf(m_copy->logPath()).contains("Critical: segfault 11\n"));
    }

    void fatalMessageIsInTheLogOfTheProcessThatItEnds()
    {
        m_copy->writeSettings("{\"vesk\":{\"log\":1}}");
        QVERIFY(m_copy->start({"--fatal"}).crashed);
        QVERIFY(StartedCopy::contentOf(m_copy->logPath()).endsWith("\nFatal: a fatal\n"));
    }
};

/** What the started copy does: builds the application, writes one line of each kind and ends. */
static int child(int argc, char *argv[])
{
    std::signal(SIGSEGV, segfaultHandler);
    VeskApp app(argc, argv, "VESK", "10.0", "morvane.example", "Morvane");
    qDebug("a debug");
    qInfo("an info");
    qWarning("a warning");
    qCritical("a critical");
    qDebug("sources: %d", app.veskObjModel()->count());
    if (const VeskObject *source = app.selectedVeskObject())
        qDebug("picture: %d x %d", source->imgFrame()->image().width(), source->imgFrame()->image().height());
    if (QCoreApplication::arguments().contains("--crash")) {
        // A page that is never mapped.
        volatile std::uintptr_t page = 64;
        *reinterpret_cast<volatile int *>(page) = 1;
    }
    if (QCoreApplication::arguments().contains("--fatal"))
        qFatal("a fatal");
    return 0;
}

int main(int argc, char *argv[])
{
    if (StartedCopy::isCopy())
        return child(argc, argv);
    StartedCopy::self = QFileInfo(QString::fromLocal8Bit(argv[0])).absoluteFilePath();
    return runVeskTest<TestStartUp>(argc, argv);
}

#include "tst_start_up.moc"
