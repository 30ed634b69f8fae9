#include "tests/e2e/save_dialog.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QSet>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace
{
bool isWhite(QRgb colour)
{
    return qMin(qRed(colour), qMin(qGreen(colour), qBlue(colour))) > 180;
}
} // namespace

/// The drive of a camera is worked in the real program by mouse and keys: recordings are listed, opened,
/// played, saved into files and closed, takes are written to it, and it is formatted, ejected and left to
/// fill by itself.
class TestCameraDriveWindow : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_session = std::make_unique<Session>(); }
    void cleanup();

    void recordingIsListedPlayedSavedAndClosed_data();
    void recordingIsListedPlayedSavedAndClosed();
    void takesAreWrittenToTheDriveOneByOne_data();
    void takesAreWrittenToTheDriveOneByOne();
    void driveIsFormattedAndEjected();
    void cameraRecordsUnattended();

private:
    WindowLayout &layout() { return m_session->layout(); }
    CameraProcess &camera() { return m_session->camera; }
    std::optional<int> frame() const { return m_session->shown().frameNumber(); }

    static void addFirmwares();
    bool start(const QStringList &options);
    /// Opens the listing from the camera's file menu.
    std::optional<Screen::Window> openListing();
    bool clickIn(Screen::Window window, QPoint place, const QString &clicks = u"click 1"_s);
    bool pickFile(int item);
    /// A save in the list that can be opened is done.
    bool isComplete(int row);

    std::unique_ptr<Session> m_session;
};

void TestCameraDriveWindow::cleanup()
{
    if (QTest::currentTestFailed())
        m_session->screen.keepPicture(u"failed-"_s + QString::fromLatin1(QTest::currentTestFunction()));
    QCOMPARE(m_session->program().complaints(), QStringList());
    m_session.reset();
}

void TestCameraDriveWindow::addFirmwares()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("new") << QStringList();
    QTest::newRow("old") << QStringList{u"--firmware"_s, u"old"_s};
}

bool TestCameraDriveWindow::start(const QStringList &options)
{
    const QString problem = m_session->start(options);
    if (!problem.isEmpty())
        qWarning() << problem;
    return problem.isEmpty() && m_session->waitForLivePicture();
}

bool TestCameraDriveWindow::clickIn(Screen::Window window, QPoint place, const QString &clicks)
{
    const QPoint at = m_session->screen.geometry(window).topLeft() + place;
    return m_session->screen.input(
        u"mousemove %1 %2 sleep 0.2 %3 sleep 0.2"_s.arg(at.x()).arg(at.y()).arg(clicks));
}

bool TestCameraDriveWindow::pickFile(int item)
{
    m_session->focus();
    return m_session->pickFromFileMenu(item);
}

std::optional<Screen::Window> TestCameraDriveWindow::openListing()
{
    camera().forgetRequests();
    const auto window = [this] { return m_session->screen.window(u"Open SSD Take"_s, QSize(512, 512)); };
    if (!pickFile(2) || !QTest::qWaitFor([&] { return window().has_value(); }, 10000) ||
        !QTest::qWaitFor([&] { return camera().requests("POST", u"/ssd-ls"_s).size() == 1; }, 10000))
        return {};
    m_session->screen.focus(*window());
    QTest::qWait(500); // until its rows are drawn
    return window();
}

bool TestCameraDriveWindow::isComplete(int row)
{
    const QRect button = layout().savesOpenButton(row);
    return QTest::qWaitFor([&] { return Session::count(m_session->window(), button, isWhite) > 20; }, 60000);
}

void TestCameraDriveWindow::recordingIsListedPlayedSavedAndClosed_data()
{
    addFirmwares();
}

void TestCameraDriveWindow::recordingIsListedPlayedSavedAndClosed()
{
    QFETCH(const QStringList, options);
    QVERIFY(start(options));
    const auto listing = openListing();
    QVERIFY(listing);
    m_session->screen.keepPicture(u"drive-listing-"_s + QString::fromLatin1(QTest::currentDataTag()));
    // By date, the latest first; older firmware tells none, and the names decide.
    QVERIFY(clickIn(*listing, {330, 25}));
    QVERIFY(clickIn(*listing, {100, 39 + 10}, u"click --repeat 2 --delay 60 1"_s));
    const bool dated = options.isEmpty();
    const QByteArray name = dated ? "wheel" : "Airbag 07";
    QTRY_COMPARE(camera().requests("POST", u"/ssd-fopen"_s),
                 QList<QByteArray>{"{\"name\":\"" + name + ".vesk\"}"});
    QTRY_VERIFY(!m_session->screen.window(u"Open SSD Take"_s));
    layout().setPanel(WindowLayout::Panel::Take);
    QSet<int> seen;
    QVERIFY(m_session->wait([&](const QImage &) {
        if (frame())
            seen.insert(*frame());
        return seen.size() > 5;
    }));
    for (const int number : std::as_const(seen))
        QVERIFY(dated ? number >= 0 && number <= 999 : number >= -500 && number <= 4499);
    m_session->keepPicture(u"drive-recording"_s);

    m_session->focus();
    m_session->click(layout().fileMenu());
    SaveDialog dialog(*m_session);
    QVERIFY(dialog.open(layout().fileMenuItem(2)));
    QVERIFY(dialog.setName(u"copy"_s));
    QVERIFY(dialog.save());
    QVERIFY(isComplete(0));
    QFile file(m_session->program().documents() + u"/copy.vesk"_s);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.read(4), "VESK"_ba);
    QVERIFY(file.size() > (dated ? 1000 : 5000) * qint64(640 * 480));

    m_session->click(layout().takeTab(1).center());
    QVERIFY(m_session->wait([&](const QImage &) { return frame().has_value(); }));
    QVERIFY(pickFile(3));
    QTRY_COMPARE(camera().value(u"ssd/open_takes"_s).toArray(), QJsonArray());
    QCOMPARE(camera().requests("POST", u"/ssd-fclose"_s).size(), 1);
    layout().setPanel(WindowLayout::Panel::Camera);
    QVERIFY(m_session->waitForLivePicture());
}

void TestCameraDriveWindow::takesAreWrittenToTheDriveOneByOne_data()
{
    addFirmwares();
}

void TestCameraDriveWindow::takesAreWrittenToTheDriveOneByOne()
{
    QFETCH(QStringList, options);
    const bool names = options.isEmpty();
    QVERIFY(start(options + QStringList{u"--ssd-speed"_s, u"6"_s}));
    QVERIFY(camera().makeTake(R"({"first":0,"last":199,"res":"640x480"})"));
    QVERIFY(m_session->wait(
        [&](const QImage &now) { return Session::count(now, layout().takeTabIcon(1), isWhite) > 20; }));
    SaveDialog dialog(*m_session);
    for (const QString &name : {u"first"_s, u"second"_s}) {
        m_session->click(layout().takeTab(1).center());
        layout().setPanel(WindowLayout::Panel::Take);
        QVERIFY(m_session->wait([&](const QImage &) { return frame().has_value(); }));
        m_session->focus();
        m_session->click(layout().fileMenu());
        QVERIFY(dialog.open(layout().fileMenuItem(2)));
        QVERIFY(dialog.setDestination(1));
        if (names)
            QVERIFY(dialog.setName(name));
        dialog.keepPicture(u"drive-save-dialog"_s);
        QVERIFY(dialog.save());
    }
    // The second waits until the first, of 61 MB, is written.
    QTRY_COMPARE(camera().value(u"ssd/wr_state"_s).toInt(), 1);
    QCOMPARE(camera().requests("POST", u"/ssd-save"_s).size(), 1);
    m_session->keepPicture(u"drive-saves"_s);
    QTRY_COMPARE_WITH_TIMEOUT(camera().requests("POST", u"/ssd-save"_s).size(), 2, 60'000);
    QTRY_COMPARE_WITH_TIMEOUT(camera().recordings().size(), 5, 60'000);
    QTRY_COMPARE_WITH_TIMEOUT(camera().value(u"acq/locked_takes"_s).toArray(), QJsonArray(), 60'000);
    if (!names)
        return;
    QVERIFY(camera().recordings().contains(u"first.vesk"_s));
    QVERIFY(camera().recordings().contains(u"second.vesk"_s));
    QVERIFY(isComplete(1));
    m_session->click(layout().savesOpenButton(1).center());
    QTRY_COMPARE(camera().requests("POST", u"/ssd-fopen"_s), QList<QByteArray>{R"({"name":"second.vesk"})"});
    QVERIFY(m_session->wait([&](const QImage &) { return frame().has_value(); }));
    m_session->keepPicture(u"drive-save-opened"_s);
}

void TestCameraDriveWindow::driveIsFormattedAndEjected()
{
    QVERIFY(start({}));
    for (const QString &section : {u"Camera"_s, u"Acquisition"_s, u"Frame Buffer"_s, u"Image Tools"_s})
        m_session->toggleSection(section, true);
    m_session->click(layout().widget(u"Format"_s, u"SSD"_s).center());
    const auto dialog = [this] { return m_session->screen.window(u"SSD Format"_s, QSize(320, 160)); };
    QTRY_VERIFY(dialog());
    m_session->screen.focus(*dialog());
    QTest::qWait(300);
    m_session->key(u"ctrl+a"_s);
    QVERIFY(m_session->screen.type(u"FIELD 2"_s));
    m_session->screen.keepPicture(u"drive-format"_s);
    m_session->key(u"Return"_s);
    QTRY_COMPARE(camera().requests("POST", u"/ssd-format"_s), QList<QByteArray>{R"({"name":"FIELD 2"})"});
    QTRY_COMPARE(camera().value(u"ssd/name"_s).toString(), u"FIELD 2"_s);
    QTRY_COMPARE(camera().value(u"ssd/state"_s).toInt(), 3);
    QTRY_VERIFY(!dialog());
    QCOMPARE(camera().recordings(), QStringList());
    m_session->focus();
    QTRY_COMPARE(camera().value(u"ssd/wr_state"_s).toInt(), 0);
    QTest::qWait(1000); // two polls, until the button is there again
    m_session->click(layout().widget(u"Eject"_s).center());
    QTRY_COMPARE(camera().value(u"ssd/state"_s).toInt(), 6);
    QCOMPARE(camera().requests("POST", u"/ssd-umount"_s).size(), 1);
}

void TestCameraDriveWindow::cameraRecordsUnattended()
{
    constexpr int count = 5;
    QVERIFY(m_session->program().keepSettings(
        R"({"vesk":{"x-autosave":true,"x-autosave_filename":"crash","x-autosave_restart":true}})"));
    QVERIFY(start({u"--partitions"_s, u"8"_s, u"--partition-order"_s, u"next"_s}));
    const qsizetype before = camera().recordings().size();
    QVERIFY(camera().put(u"/acq/trig_offset"_s, "100"));
    m_session->click(layout().widget(u"Record"_s).center());
    for (int n = 1; n <= count; ++n) {
        QTRY_COMPARE(camera().value(u"acq/state"_s).toInt(), 2);
        QTest::qWait(200);
        QVERIFY(camera().trigger());
        QTRY_COMPARE_WITH_TIMEOUT(camera().requests("POST", u"/rec"_s).size(), n + 1, 60'000);
    }
    QCOMPARE(camera().requests("POST", u"/ssd-save"_s).size(), count);
    QCOMPARE(camera().requests("POST", u"/del"_s).size(), count);
    QCOMPARE(camera().recordings().size(), before + count);
    QVERIFY(camera().recordings().contains(u"crash (5).vesk"_s));
    QCOMPARE(camera().value(u"acq/saved_takes"_s).toArray(), QJsonArray());
    // The window still shows what the camera sees.
    QVERIFY(m_session->waitForLivePicture());
    m_session->keepPicture(u"drive-autosave"_s);
}

QTEST_GUILESS_MAIN(TestCameraDriveWindow)
#include "tst_camera_drive_window.moc"
