#include "app/interface.h"
#include "save/file_save_job.h"
#include "tests/save/foreign_film.h"
#include "tests/save/foreign_tiff.h"
#include "tests/save/sim_save_fixture.h"
#include "tests/support/vesk_test_main.h"

#include <QProcess>
#include <QQmlApplicationEngine>
#include <QTimer>
#include <QWindow>
#include <QtEndian>

#include <cstdio>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using q4sim::FaultKind;

static constexpr char ChildVariable[] = "VESK_TEST_CHILD";
static constexpr int Frames = 200;

/** The window is closed while a save runs. The program with the save is a process of its own. */
class TestSaveQuit : public QObject
{
    Q_OBJECT

public:
    static inline QString self;

private:
    static constexpr qsizetype RecordSize = 160 * 96 + 32;

    std::unique_ptr<SimSaveFixture> m_fixture;

    /** Starts the program, which ends in mid-save; gives what it said, or what went wrong. */
    QString quit(const QString &what, const QString &source)
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QString::fromLatin1(ChildVariable), u"1"_s);
        process.setProcessEnvironment(environment);
        process.start(self, {what, source, m_fixture->folder});
        if (!process.waitForFinished(60000))
            return u"it does not end"_s;
        if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
            return u"it crashed or failed: "_s + QString::fromUtf8(process.readAllStandardError());
        return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    }

    QString address() const { return m_fixture->host.camera().config().address.toString(); }

private slots:
    void init()
    {
        m_fixture = std::make_unique<SimSaveFixture>(
            q4sim::TakeOrder{.first = 0, .last = Frames - 1, .frameRate = 500.0, .res = u"160x96"_s});
        QVERIFY(m_fixture->open());
        m_fixture->fault({.kind = FaultKind::Drip, .ms = 20, .bytes = RecordSize});
    }

    void cleanup() { m_fixture.reset(); }

    void nativeFileKeepsTheFramesThatWereWritten()
    {
        QCOMPARE(quit(u"native"_s, address()), u"closed in state 2"_s);
        QCOMPARE(m_fixture->files(), QStringList(u"shot.vesk"_s));
        const QByteArray file = m_fixture->content(u"shot.vesk"_s);
        QCOMPARE(file.first(4), QByteArray("VESK"));
        const auto dataOffset = qFromLittleEndian<quint64>(file.constData() + 24);
        const QByteArray records = file.sliced(qsizetype(dataOffset));
        QVERIFY(records.size() >= RecordSize && records.size() < Frames * RecordSize);
        QCOMPARE(records.size() % RecordSize, 0);
        QVERIFY(m_fixture->sent(0, Frames).startsWith(records));
    }

    void imagesThatWereWrittenAreWhole()
    {
        QCOMPARE(quit(u"images"_s, address()), u"closed in state 2"_s);
        const QStringList files = m_fixture->files();
        QVERIFY2(!files.isEmpty() && files.size() < Frames, qPrintable(QString::number(files.size())));
        QCOMPARE(files.last(), u"shot_%1.tiff"_s.arg(files.size() - 1, 3, 10, QChar(u'0')));
        for (const QString &file : {files.first(), files.last()})
            QCOMPARE(ForeignTiff::read(m_fixture->path(file)).rgb.size(), 160 * 96 * 3);
    }

    void filmCanBePlayedUpToTheFrameThatWasWritten_data()
    {
        QTest::addColumn<int>("codec");
        for (const int codec : {Util::CodecRaw_BGR24, Util::CodecAV1_YUV420P, Util::CodecH264})
            QTest::addRow("codec %d", codec) << codec;
    }

    void filmCanBePlayedUpToTheFrameThatWasWritten()
    {
        QFETCH(const int, codec);
        QCOMPARE(quit(u"film %1"_s.arg(codec), address()), u"closed in state 2"_s);
        QCOMPARE(m_fixture->files().size(), 1);
        const ForeignFilm film(m_fixture->path(m_fixture->files().first()));
        QCOMPARE(film.size(), u"160x96"_s);
        QVERIFY2(film.frames() > 0 && film.frames() < Frames, qPrintable(QString::number(film.frames())));
        QCOMPARE(film.decoded(u"gray"_s).size(), film.frames() * 160 * 96);
    }

    void saveThatHasNoAnswerYetLeavesNoFrames()
    {
        m_fixture->fault({.kind = FaultKind::NoAnswer});
        QCOMPARE(quit(u"unanswered"_s, address()), u"closed in state 2"_s);
        const QByteArray file = m_fixture->content(u"shot.vesk"_s);
        QCOMPARE(file.first(4), QByteArray("VESK"));
        QVERIFY(file.size() <= 4096);
    }

    void waitingSavesLeaveNothing_data()
    {
        QTest::addColumn<QString>("what");
        QTest::addColumn<QString>("file");
        QTest::newRow("native files") << "waiting" << "shot.vesk";
        QTest::newRow("films") << "waiting film 6" << "shot.mp4";
    }

    void waitingSavesLeaveNothing()
    {
        QFETCH(const QString, what);
        QFETCH(const QString, file);
        QCOMPARE(quit(what, address()), u"closed in state 2"_s);
        QCOMPARE(m_fixture->files(), QStringList(file));
    }
};

/** Orders the save as soon as the take is open, and closes the window once it is under way. */
static void orderSave(const QQmlApplicationEngine &engine, Camera &camera, const QString &what,
                      const QString &folder)
{
    auto *take = qobject_cast<Take *>(camera.takes()->get(0));
    SaveManager *manager = VeskApp::instance()->saveManager();
    const auto save = [=] {
        const auto codec = Util::Codec(what.contains(u"film") ? what.last(1).toInt() : 0);
        Util::Format format = what == u"images" ? Util::FormatTiff : Util::FormatVesk;
        if (codec != Util::CodecVesk)
            format = codec == Util::CodecRaw_BGR24 ? Util::FormatAvi : Util::FormatMp4;
        return manager->createSaveJob(take, 0, Frames, SaveManager::FileDest, format, codec, 30.0, 15,
                                      u"shot"_s, folder);
    };
    SaveJob *job = save();
    if (what.startsWith(u"waiting")) {
        save();
        save();
    }
    const auto close = [&engine, job] {
        std::printf("closed in state %d\n", job->state());
        std::fflush(stdout);
        for (QObject *root : engine.rootObjects())
            qobject_cast<QWindow *>(root)->close();
    };
    if (what == u"unanswered")
        QTimer::singleShot(300ms, job, close);
    else
        QObject::connect(job, &SaveJob::progressChanged, job, close, Qt::SingleShotConnection);
}

static int runProgram(int argc, char *argv[])
{
    const TestFolders folders;
    prepareThreadSanitizer();
    int appArgc = 1;
    VeskApp app(appArgc, argv, u"VESK"_s, u"10.0"_s, u"morvane.example"_s, u"Morvane"_s);
    app.stopBroadcast();
    QQmlApplicationEngine engine;
    loadInterface(app, engine);
    if (argc != 4 || engine.rootObjects().isEmpty())
        return 2;
    app.connectCamera(QString::fromLocal8Bit(argv[2]));
    auto *camera = qobject_cast<Camera *>(app.veskObjects().first());
    const QString what = QString::fromLocal8Bit(argv[1]);
    const QString folder = QString::fromLocal8Bit(argv[3]);
    QTimer looking;
    QObject::connect(&looking, &QTimer::timeout, camera, [&] {
        const auto *take = qobject_cast<Take *>(camera->takes()->get(0));
        if (!take || !take->valuesInit())
            return;
        looking.stop();
        orderSave(engine, *camera, what, folder);
    });
    looking.start(20ms);
    return QCoreApplication::exec();
}

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsSet(ChildVariable))
        return runProgram(argc, argv);
    TestSaveQuit::self = QString::fromLocal8Bit(argv[0]);
    return runVeskTest<TestSaveQuit>(argc, argv);
}
#include "tst_save_quit.moc"
