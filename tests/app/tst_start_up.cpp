#include "app/log.h"
#include "camera/camera.h"
#include "tests/file/hand_made_file.h"
#include "tests/support/vesk_test_main.h"

#include <QFile>
#include <QProcess>

#include <csignal>

/**
 * Start and log of the process. The test starts itself again, with the application object and no more, in
 * folders of its own, because a process has one application and one message handler.
 */
class TestStartUp : public QObject
{
    Q_OBJECT

public:
    static inline QString self;

private:
    struct Run {
        int exitCode;
        bool crashed;
        QString errorOutput;
    };

    Run start(const QStringList &arguments = {})
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("VESK_TEST_CHILD", "1");
        environment.insert("XDG_CONFIG_HOME", m_dir->filePath("config"));
        environment.insert("XDG_DATA_HOME", m_dir->filePath("data"));
        process.setProcessEnvironment(environment);
        process.start(self, arguments);
        if (!process.waitForFinished(20000))
            return {-1, true, "no end"};
        return {process.exitCode(), process.exitStatus() == QProcess::CrashExit,
                QString::fromUtf8(process.readAllStandardError())};
    }

    QString configPath() const { return m_dir->filePath("config/Morvane/VESK.json"); }
    QString logPath() const { return m_dir->filePath("data/Morvane/VESK/log.txt"); }

    void writeSettings(const QByteArray &text)
    {
        QVERIFY(QDir().mkpath(m_dir->filePath("config/Morvane")));
        QFile file(configPath());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    static QString contentOf(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    std::unique_ptr<QTemporaryDir> m_dir;

private slots:
    void init() { m_dir = std::make_unique<QTemporaryDir>(); }

    void withoutLogTheBannerGoesToTheDefaultOutputAndNoFileIsDeleted()
    {
        QVERIFY(QDir().mkpath(m_dir->filePath("data/Morvane/VESK")));
        QFile old(logPath());
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("old");
        old.close();
        const Run run = start();
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(run.errorOutput.contains("vesk/log = 0"), qPrintable(run.errorOutput));
        QVERIFY(run.errorOutput.contains("VESK version: 10.0"));
        QVERIFY(run.errorOutput.contains("Settings path: " + configPath()));
        QCOMPARE(contentOf(logPath()), "old");
        QVERIFY(contentOf(configPath()).contains("\"version\": \"10.0\""));
    }

    void logStartsWithTheDateAndLeavesOutItsOwnSwitch()
    {
        writeSettings("{\"vesk\":{\"log\":1}}");
        QCOMPARE(start().exitCode, 0);
        const QString log = contentOf(logPath());
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
        writeSettings("{\"vesk\":{\"log\":1}}");
        start({"first.vesk"});
        QVERIFY(contentOf(logPath()).contains("first.vesk"));
        start();
        const QString log = contentOf(logPath());
        QVERIFY(!log.isEmpty());
        QVERIFY(!log.contains("first.vesk"));
    }

    void everyKindOfMessageHasItsWord()
    {
        writeSettings("{\"vesk\":{\"log\":1}}");
        start();
        const QString log = contentOf(logPath());
        for (const char *line :
             {"Debug: a debug", "Info: an info", "Warning: a warning", "Critical: a critical"})
            QVERIFY2(log.contains(QString("\n%1\n").arg(line)), line);
    }

    void fileThatCannotBeOpenedStillStarts()
    {
        const QString path = m_dir->filePath("gone.vesk");
        const Run run = start({path, "second.vesk"});
        QCOMPARE(run.exitCode, 0);
        QVERIFY(run.errorOutput.contains("error opening \"" + path + "\""));
        QVERIFY(!run.errorOutput.contains("second.vesk"));
        QVERIFY(run.errorOutput.contains("sources: 0"));
    }

    void fileOnTheCommandLineIsOpenedAndShown()
    {
        const QByteArray json =
            R"({"acq":{"res":"4x2"},"first_fr":0,"fr_cnt":1,"last_fr":0,"meta":{"size":8}})";
        QFile file(m_dir->filePath("take #3.vesk"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(HandMade::usual(json, HandMade::record(1, 0)));
        file.close();
        const Run run = start({file.fileName()});
        QCOMPARE(run.exitCode, 0);
        QVERIFY(!run.errorOutput.contains("error opening"));
        QVERIFY2(run.errorOutput.contains("sources: 1"), qPrintable(run.errorOutput));
        QVERIFY(run.errorOutput.contains("picture: 4 x 2"));
    }

    void settingsThatAreNoJsonGiveDefaultsAndAreKept()
    {
        writeSettings("not { json");
        const Run run = start();
        QCOMPARE(run.exitCode, 0);
        QVERIFY(run.errorOutput.contains("vesk/log = 0"));
        QCOMPARE(contentOf(configPath() + ".bad"), "not { json");
    }

    void crashLeavesALineInTheLogAndEndsTheProcess()
    {
        writeSettings("{\"vesk\":{\"log\":1}}");
        const Run run = start({"--crash"});
        QVERIFY(run.crashed);
        QVERIFY(contentOf(logPath()).contains("Critical: segfault 11\n"));
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
    return 0;
}

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsSet("VESK_TEST_CHILD"))
        return child(argc, argv);
    TestStartUp::self = QFileInfo(QString::fromLocal8Bit(argv[0])).absoluteFilePath();
    return runVeskTest<TestStartUp>(argc, argv);
}

#include "tst_start_up.moc"
