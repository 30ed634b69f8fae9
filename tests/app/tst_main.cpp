#include "tests/app/started_copy.h"
#include "tests/support/vesk_test_main.h"

#include <QFileInfo>
#include <QFont>
#include <QFontDatabase>
#include <QRegularExpression>
#include <QThread>
#include <QTimer>

using namespace Qt::StringLiterals;

/** The program's own main(). */
int veskMain(int argc, char **argv);

/** The whole program from its start to the end of its event loop. */
class TestMain : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<StartedCopy> m_copy;

    /** What the copy has logged, without the words for the kinds of messages. */
    static QStringList lines(const StartedCopy::Run &run)
    {
        return run.errorOutput.split(u'\n', Qt::SkipEmptyParts);
    }

private slots:
    void init() { m_copy = std::make_unique<StartedCopy>(); }

    void logTellsTheStepsAndTheLibrariesInTheirOrder()
    {
        m_copy->writeSettings("{\"vesk\":{\"log\":1}}");
        QCOMPARE(m_copy->start().exitCode, 0);
        const QStringList log = StartedCopy::contentOf(m_copy->logPath()).split(u'\n');
        const qsizetype first = log.indexOf("Debug: FFmpeg:"_L1);
        QVERIFY(first > 0);
        QVERIFY2(log[first - 1].startsWith("Debug: void initFonts(VeskApp"_L1), qPrintable(log[first - 1]));
        // Behind the word for the kind stand two blanks more.
        const QStringList libraries{u"Debug:   Lavu59.39.100"_s, u"Debug:   Lavc61.19.100"_s,
                                    u"Debug:   Lavf61.7.100"_s,  u"Debug:   Lavd61.3.100"_s,
                                    u"Debug:   Lavfi10.4.100"_s, u"Debug:   SwS8.3.100"_s,
                                    u"Debug:   SwR5.3.100"_s,    u"Debug: OpenCV: " OPENCV_VERSION ""_s};
        QCOMPARE(log.sliced(first + 1, libraries.size()), libraries);
        qsizetype at = first;
        for (const char *step : {"set_networkAccessManager", "register types", "setContextProperty",
                                 "engine.load()", "app.exec()"}) {
            const qsizetype next = log.indexOf("Debug: "_L1 + QLatin1StringView(step), at);
            QVERIFY2(next > at, step);
            at = next;
        }
    }

    void mainThreadHasItsName()
    {
        const StartedCopy::Run run = m_copy->start();
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(lines(run).contains(u"thread: \"Main Thread\""_s), qPrintable(run.errorOutput));
    }

    void rootDocumentThatFailsToLoadEndsTheProgram()
    {
        const StartedCopy::Run run = m_copy->start({}, {"QT_QUICK_CONTROLS_STYLE=NoSuchStyle"});
        QVERIFY(!run.crashed);
        QCOMPARE(run.exitCode, 255); // what the system makes of -1
        QVERIFY2(lines(run).contains(u"QQmlApplicationEngine load failed"_s), qPrintable(run.errorOutput));
    }

    void textIsSetInTheFontOfTheProgram()
    {
        const StartedCopy::Run run = m_copy->start();
        QVERIFY2(lines(run).contains(u"font: \"Inter\" 9"_s), qPrintable(run.errorOutput));
        QVERIFY(!run.errorOutput.contains("error adding"));
    }

    void programRunsOnWithoutItsFonts()
    {
        const StartedCopy::Run run = m_copy->start({}, {"VESK_TEST_NO_FONTS=1"});
        QCOMPARE(run.exitCode, 0);
        const QStringList told = lines(run);
        const qsizetype text = told.indexOf(u"error adding Inter-Regular.ttf from resource"_s);
        const qsizetype icons = told.indexOf(u"error adding remixicon.ttf from resource"_s);
        QVERIFY2(text >= 0 && icons > text, qPrintable(run.errorOutput));
        // Of a machine that has the fonts nothing more is told.
        const QString used = told.filter(QRegularExpression(u"^font: "_s)).value(0).section(u'"', 1, 1);
        QVERIFY(!used.isEmpty());
        const bool hasInter = told.contains(u"has Inter: 1"_s);
        QCOMPARE(told.value(text + 1) == u"Inter Regular font not installed. Using \"%1\""_s.arg(used),
                 !hasInter);
        QCOMPARE(told.contains(u"remixicon font not installed"_s), told.contains(u"has remixicon: 0"_s));
    }
};

/** Runs in the copy as soon as there is an application. */
static void prepareCopy()
{
    if (!StartedCopy::isCopy())
        return;
    if (qEnvironmentVariableIsSet("VESK_TEST_NO_FONTS"))
        Q_CLEANUP_RESOURCE(vesk_res);
    // Delivered by the program's event loop, when all is there.
    QTimer::singleShot(0, qApp, [] {
        const QFont font = QGuiApplication::font();
        qDebug() << "thread:" << QThread::currentThread()->objectName();
        qDebug() << "font:" << font.family() << font.pointSize();
        qDebug("has Inter: %d", int(QFontDatabase::families().contains("Inter"_L1)));
        qDebug("has remixicon: %d", int(QFontDatabase::families().contains("remixicon"_L1)));
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
    });
}
Q_COREAPP_STARTUP_FUNCTION(prepareCopy)

int main(int argc, char *argv[])
{
    if (StartedCopy::isCopy()) {
        prepareThreadSanitizer();
        return veskMain(argc, argv);
    }
    StartedCopy::self = QFileInfo(QString::fromLocal8Bit(argv[0])).absoluteFilePath();
    return runVeskTest<TestMain>(argc, argv);
}

#include "tst_main.moc"
