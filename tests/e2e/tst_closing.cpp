#include "tests/e2e/save_dialog.h"

#include <QDir>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QTest>

using namespace Qt::StringLiterals;

/// The user closes the window in the midst of something. The program ends at once, without a complaint.
class TestClosing : public QObject
{
    Q_OBJECT

private slots:
    void programEndsInTheMidstOfThings_data();
    void programEndsInTheMidstOfThings();
    void programEndsFromItsMenuByKeys();

private:
    // Each brings the program to something that goes on for long; false if it does not come to it.
    bool connecting();
    bool live();
    bool recording();
    bool triggered();
    bool playing();
    bool searching();
    bool nativeFile() { return fileSave(0); }
    bool rawFilm() { return fileSave(1); }
    bool codedFilm() { return fileSave(2); }
    bool images() { return fileSave(3); }
    bool driveSave() { return saveOntoDrive() && isWriting(); }
    bool driveSaveHeldBack();
    bool driveSaveUnanswered();
    bool olderDriveSave();
    bool driveListing();
    bool driveRecordingPlays();
    bool autosave();
    struct Moment {
        const char *name;
        bool (TestClosing::*come)();
        QStringList cameraOptions = {};
    };
    static QList<Moment> moments();

    bool openTake();
    bool openSaveDialog(const QString &name);
    bool fileSave(int format);
    bool saveOntoDrive();
    bool isWriting();
    bool openListing();
    QJsonValue value(const QString &path) { return m_session->camera.value(path); }
    void waitForTheEnd();

    std::unique_ptr<Session> m_session;
};

static bool waitFor(const std::function<bool()> &condition)
{
    return QTest::qWaitFor(condition, 20000);
}

bool TestClosing::connecting()
{
    // Another program ends first: the one that is closed has never had an answer.
    m_session->program().stop();
    return m_session->camera.setFault(u"status"_s, u"no-answer"_s) && m_session->startProgram().isEmpty() &&
           waitFor([this] { return !m_session->camera.requests("GET", u"/"_s).isEmpty(); });
}

bool TestClosing::live()
{
    return m_session->waitForLivePicture();
}

bool TestClosing::recording()
{
    if (!live())
        return false;
    m_session->click(m_session->layout().widget(u"Record"_s).center());
    return waitFor([this] { return value(u"acq/state"_s) == 2; });
}

bool TestClosing::triggered()
{
    if (!recording())
        return false;
    m_session->camera.forgetRequests();
    const auto polls = [this] { return m_session->camera.requests("GET", u"/"_s).size(); };
    return m_session->camera.command(u"/trig"_s) && value(u"acq/state"_s) == 3 &&
           waitFor([&] { return polls() > 2; });
}

bool TestClosing::openTake()
{
    WindowLayout &layout = m_session->layout();
    if (!m_session->camera.makeTake(R"({"first":-1000,"last":5000,"scene":"still"})") ||
        !m_session->wait([&](const QImage &now) {
            return Session::count(now, layout.takeTabIcon(1), [](QRgb c) { return qGreen(c) > 180; }) > 20;
        }))
        return false;
    m_session->click(layout.takeTab(1).center());
    layout.setPanel(WindowLayout::Panel::Take);
    return waitFor([this] { return m_session->camera.requests("POST", u"/xfer"_s).size() > 10; });
}

bool TestClosing::playing()
{
    return openTake();
}

bool TestClosing::searching()
{
    if (!openTake())
        return false;
    m_session->key(u"space"_s);
    if (!m_session->camera.delayFrames(500))
        return false;
    m_session->camera.forgetRequests();
    m_session->click(m_session->layout().stepButton(4));
    for (const QString &key : {u"Down"_s, u"Down"_s, u"Return"_s})
        m_session->key(key);
    return waitFor([this] { return m_session->camera.requests("POST", u"/xfer"_s).size() >= 2; });
}

bool TestClosing::openSaveDialog(const QString &name)
{
    SaveDialog dialog(*m_session);
    return openTake() && dialog.open(m_session->layout().widget(u"Save..."_s).center()) &&
           dialog.setName(name);
}

bool TestClosing::fileSave(int format)
{
    const SaveDialog dialog(*m_session);
    // Pictures need numbers.
    if (!openSaveDialog(format == 3 ? u"cut <fr>"_s : u"cut"_s) || !dialog.setFormat(format) ||
        !m_session->camera.dripFrames(300, 700'000) || !dialog.save())
        return false;
    const QDir folder(m_session->program().documents());
    return waitFor([&] { return !folder.entryList({u"cut*"_s}, QDir::Files).isEmpty(); });
}

bool TestClosing::saveOntoDrive()
{
    const SaveDialog dialog(*m_session);
    return openSaveDialog(u"cut"_s) && dialog.setDestination(1) && dialog.save() &&
           waitFor([this] { return m_session->camera.requests("POST", u"/ssd-save"_s).size() == 1; });
}

bool TestClosing::isWriting()
{
    // The program has seen it, too.
    m_session->camera.forgetRequests();
    return waitFor([this] { return value(u"ssd/wr_state"_s) == 1; }) &&
           waitFor([this] { return m_session->camera.requests("GET", u"/"_s).size() > 3; });
}

bool TestClosing::driveSaveHeldBack()
{
    return m_session->camera.force(u"ssd/wr_seq"_s, "-5") && saveOntoDrive() &&
           m_session->camera.force(u"ssd/wr_seq"_s, "-4") && isWriting();
}

bool TestClosing::driveSaveUnanswered()
{
    return m_session->camera.setFault(R"({"on":"ssd-save","kind":"no-answer"})") && saveOntoDrive();
}

/// The older firmware is asked by a timer how far it is.
bool TestClosing::olderDriveSave()
{
    return saveOntoDrive() && isWriting();
}

bool TestClosing::openListing()
{
    Screen &screen = m_session->screen;
    const auto listing = [&] { return screen.window(u"Open SSD Take"_s); };
    if (!live() || !m_session->pickFromFileMenu(2) || !waitFor([&] { return listing().has_value(); }))
        return false;
    screen.focus(*listing());
    return waitFor([this] { return m_session->camera.requests("POST", u"/ssd-ls"_s).size() == 1; });
}

bool TestClosing::driveListing()
{
    return m_session->camera.setFault(R"({"on":"ssd-ls","kind":"no-answer"})") && openListing();
}

bool TestClosing::driveRecordingPlays()
{
    if (!openListing())
        return false;
    const auto asked = [this] { return m_session->camera.requests("POST", u"/ssd-fopen"_s).size() == 1; };
    const auto tryToOpen = [&] {
        m_session->key(u"Down"_s);
        m_session->key(u"Return"_s);
        return QTest::qWaitFor(asked, 1000);
    };
    m_session->camera.forgetRequests();
    return waitFor(tryToOpen) &&
           waitFor([this] { return m_session->camera.requests("POST", u"/xfer"_s).size() > 10; });
}

bool TestClosing::autosave()
{
    return m_session->camera.put(u"/ssd/autosave/mode"_s, "5") && recording() &&
           m_session->camera.put(u"/acq/trig_offset"_s, "300") && m_session->camera.command(u"/trig"_s) &&
           isWriting();
}

QList<TestClosing::Moment> TestClosing::moments()
{
    const QStringList slow = {u"--ssd-speed"_s, u"1"_s};
    const QStringList older = slow + QStringList{u"--feature"_s, u"ssd-save=1"_s};
    using T = TestClosing;
    return {{"camera connects", &T::connecting},
            {"live picture", &T::live},
            {"camera records", &T::recording},
            {"camera is triggered", &T::triggered},
            {"take plays", &T::playing},
            {"take is searched", &T::searching},
            {"native file is saved", &T::nativeFile},
            {"film without codec is saved", &T::rawFilm},
            {"film with codec is saved", &T::codedFilm},
            {"images are saved", &T::images},
            {"save onto the drive", &T::driveSave, slow},
            {"save onto the drive is held back", &T::driveSaveHeldBack, slow},
            {"save onto the drive is not answered", &T::driveSaveUnanswered, slow},
            {"save onto the drive of older firmware", &T::olderDriveSave, older},
            {"listing is not answered", &T::driveListing},
            {"recording of the drive plays", &T::driveRecordingPlays},
            {"autosave", &T::autosave, {u"--ssd-speed"_s, u"1"_s, u"--memory"_s, u"1024"_s}}};
}

/// A second for the user; some more for a machine that has other things to do.
void TestClosing::waitForTheEnd()
{
    QElapsedTimer waiting;
    waiting.start();
    QCOMPARE(m_session->program().exitCode(4000), 0);
    qInfo("%lld ms", waiting.elapsed());
    QCOMPARE(m_session->program().complaints(), QStringList());
}

void TestClosing::programEndsInTheMidstOfThings_data()
{
    QTest::addColumn<int>("moment");
    for (int i = 0; i < moments().size(); ++i)
        QTest::newRow(moments().at(i).name) << i;
}

void TestClosing::programEndsInTheMidstOfThings()
{
    QFETCH(const int, moment);
    const Moment what = moments().at(moment);
    m_session = std::make_unique<Session>();
    QCOMPARE(m_session->start(what.cameraOptions), QString());
    const bool there = (this->*what.come)();
    const QString picture = QString::fromLatin1(what.name).replace(u' ', u'-');
    m_session->screen.keepPicture((there ? u"closing-"_s : u"failed-"_s) + picture);
    QVERIFY(there);
    m_session->screen.close(*m_session->screen.window(u"VESK"_s));
    waitForTheEnd();
}

void TestClosing::programEndsFromItsMenuByKeys()
{
    m_session = std::make_unique<Session>();
    QCOMPARE(m_session->start(), QString());
    QVERIFY(live());
    m_session->key(u"alt+f"_s);
    // To the last entry, where the arrow stays.
    for (int i = 0; i < 8; ++i)
        m_session->key(u"Down"_s);
    m_session->screen.keepPicture(u"closing-by-keys"_s);
    m_session->key(u"Return"_s);
    waitForTheEnd();
}

QTEST_GUILESS_MAIN(TestClosing)
#include "tst_closing.moc"
