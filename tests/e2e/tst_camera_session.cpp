#include "tests/e2e/session.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{
constexpr QRgb highlight = 0xFFD25F15;

bool isBright(QRgb colour)
{
    return qRed(colour) > 150 && qGreen(colour) > 150 && qBlue(colour) > 150;
}

bool isRed(QRgb colour)
{
    return qRed(colour) - qMax(qGreen(colour), qBlue(colour)) > 100;
}

bool isGreen(QRgb colour)
{
    return qGreen(colour) - qMax(qRed(colour), qBlue(colour)) > 50;
}
// The same text, which may lie a fraction of a pixel aside in its glyphs.
bool sameText(const QImage &one, const QImage &other)
{
    int different = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x)
            different += qAbs(qGray(one.pixel(x, y)) - qGray(other.pixel(x, y))) > 40 ? 1 : 0;
    }
    return one.size() == other.size() && different < 10;
}
} // namespace

/// A session with a camera in the real program: recording, naming, leaving and
/// coming back.
class TestCameraSession : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void recordTriggerAndAbortReachTheCameraOnPress();
    void blackReferenceShowsItsBannerUntilItIsDone();
    void typedNameReachesTheCameraAndStays();
    void escapeLeavesTheNameAsItWas();
    void disconnectLeadsBackToTheAboutView();
    void typedAddressConnectsTheCamera();
    void closingTheWindowEndsTheProgramWithZero();
    void foldedSectionAndNameAreThereAfterARestart();
    void silentCameraDoesNotFreezeTheWindow();
    void windowWithASilentCameraClosesAsFast();

private:
    // Presses the record button, and lets go when the camera has got the command.
    void pressRecord(const QString &path);
    bool waitForState(bool (*colour)(QRgb), bool (*other)(QRgb));
    QImage tabName() const { return m_session.window().copy(m_session.layout().tabName()); }
    std::optional<Screen::Window> nameDialog() const
    {
        return m_session.screen.window(u"Camera - Edit Name"_s);
    }
    void openNameDialog();
    void closeByWindow();

    mutable Session m_session;
    QImage m_name; ///< of the camera in its tab
};

void TestCameraSession::initTestCase()
{
    QCOMPARE(m_session.start(), QString());
    QVERIFY(m_session.waitForLivePicture());
}

void TestCameraSession::cleanup()
{
    if (QTest::currentTestFailed())
        m_session.keepPicture(u"failed-"_s + QString::fromLatin1(QTest::currentTestFunction()));
    QCOMPARE(m_session.program().complaints(), QStringList());
}

void TestCameraSession::pressRecord(const QString &path)
{
    m_session.camera.forgetRequests();
    m_session.press(m_session.layout().widget(u"Record"_s).center());
    QTRY_COMPARE(m_session.camera.requests("POST", path).size(), 1);
    m_session.release();
}

bool TestCameraSession::waitForState(bool (*colour)(QRgb), bool (*other)(QRgb))
{
    const QRect label = m_session.layout().widget(u"State"_s);
    return m_session.wait([&](const QImage &window) {
        return Session::count(window, label, colour) > 30 && Session::count(window, label, other) == 0;
    });
}

void TestCameraSession::recordTriggerAndAbortReachTheCameraOnPress()
{
    const QRect icon = m_session.layout().tabIcon();
    const QRect label = m_session.layout().widget(u"State"_s);
    const QRect button = m_session.layout().widget(u"Record"_s);
    QVERIFY(waitForState(isGreen, isRed));
    QCOMPARE(Session::count(m_session.window(), icon, isRed), 0);
    const QImage standby = m_session.window().copy(button);

    pressRecord(u"/rec"_s);
    QCOMPARE(m_session.camera.value(u"acq/state"_s).toInt(), 2);
    QVERIFY(waitForState(isRed, isGreen));
    QVERIFY(m_session.wait([&](const QImage &now) { return Session::count(now, icon, isRed) > 20; }));
    const QImage recording = m_session.window();
    QVERIFY(recording.copy(button) != standby);
    m_session.keepPicture(u"recording"_s);

    pressRecord(u"/trig"_s);
    QCOMPARE(m_session.camera.value(u"acq/state"_s).toInt(), 3);
    // "TRIG" in place of "REC", both in red; the tab's icon is white for a third
    // of a second now and then.
    QVERIFY(m_session.wait([&](const QImage &now) { return now.copy(label) != recording.copy(label); }));
    QVERIFY(waitForState(isRed, isGreen));
    QVERIFY(m_session.wait([&](const QImage &now) { return Session::count(now, icon, isRed) == 0; }));
    QVERIFY(m_session.wait([&](const QImage &now) { return Session::count(now, icon, isRed) > 20; }));
    m_session.keepPicture(u"triggered"_s);

    pressRecord(u"/abort"_s);
    QCOMPARE(m_session.camera.value(u"acq/state"_s).toInt(), 1);
    QVERIFY(waitForState(isGreen, isRed));
    QCOMPARE(Session::count(m_session.window(), icon, isRed), 0);
    QCOMPARE(m_session.camera.value(u"acq/saved_takes"_s).toArray().size(), 0);
}

void TestCameraSession::blackReferenceShowsItsBannerUntilItIsDone()
{
    const QRect button = m_session.layout().widget(u"Black Reference"_s);
    // The warning left of the button: there is no black reference yet.
    const QRect warning(button.left() - 36, button.top() + 8, 24, 24);
    const auto isHighlight = [](QRgb colour) { return colour == highlight; };
    const auto isWarm = [](QRgb colour) { return qRed(colour) - qBlue(colour) > 60; };
    QVERIFY(Session::count(m_session.window(), warning, isWarm) > 20);
    const QPoint centre = m_session.layout().pictureArea().center();
    // The banner is 28 high with a border of 2 around the centre of the picture.
    const QRect upperBorder(centre.x() - 60, centre.y() - 14, 120, 3);
    const auto banner = [&](const QImage &window) {
        return Session::count(window, upperBorder, isHighlight) >= 240;
    };
    QVERIFY(!banner(m_session.window()));
    m_session.camera.forgetRequests();
    m_session.click(button.center());
    QVERIFY(m_session.wait(banner));
    m_session.keepPicture(u"black-reference"_s);
    QCOMPARE(m_session.camera.requests("POST", u"/bref"_s).size(), 1);
    QVERIFY(m_session.wait(
        [&](const QImage &now) { return !banner(now) && Session::count(now, warning, isWarm) == 0; }));
}

void TestCameraSession::openNameDialog()
{
    m_session.click(m_session.layout().editNameButton());
    QTRY_VERIFY(nameDialog());
    QCOMPARE(m_session.screen.geometry(*nameDialog()).size(), QSize(480, 96));
    m_session.screen.focus(*nameDialog());
    m_session.keepPicture(u"edit-name"_s);
}

void TestCameraSession::typedNameReachesTheCameraAndStays()
{
    const QImage before = tabName();
    m_session.camera.forgetRequests();
    openNameDialog();
    m_session.key(u"ctrl+a"_s);
    QVERIFY(m_session.screen.type(u"Lab 7 <north>"_s));
    m_session.key(u"Return"_s);
    QTRY_COMPARE(m_session.camera.requests("PUT", u"/camera/name"_s),
                 QList<QByteArray>{R"("Lab 7 <north>")"});
    QTRY_VERIFY(!nameDialog());
    m_session.focus();
    QVERIFY(m_session.wait([&](const QImage &) { return !sameText(tabName(), before); }));
    m_name = tabName();
    // Four polls later the camera's own word is what stands there.
    m_session.camera.forgetRequests();
    QTRY_VERIFY(m_session.camera.requests("GET", u"/"_s).size() >= 4);
    QCOMPARE(m_session.camera.value(u"camera/name"_s).toString(), u"Lab 7 <north>"_s);
    QVERIFY(sameText(tabName(), m_name));
    m_session.keepPicture(u"renamed"_s);
}

void TestCameraSession::escapeLeavesTheNameAsItWas()
{
    m_session.camera.forgetRequests();
    openNameDialog();
    QVERIFY(m_session.screen.type(u"nothing"_s));
    m_session.key(u"Escape"_s);
    QTRY_VERIFY(!nameDialog());
    m_session.focus();
    QTRY_VERIFY(m_session.camera.requests("GET", u"/"_s).size() >= 2);
    QCOMPARE(m_session.camera.requests("PUT", u"/camera/name"_s).size(), 0);
    QVERIFY(sameText(tabName(), m_name));
}

void TestCameraSession::disconnectLeadsBackToTheAboutView()
{
    QVERIFY(m_session.pickFromFileMenu(4));
    QVERIFY(m_session.wait([&](const QImage &now) {
        return Session::count(now, m_session.layout().tab(), isBright) == 0 && !WindowLayout(now).valid();
    }));
    // The name in letters 140 high is dimgray.
    QVERIFY(m_session.wait([&](const QImage &now) {
        return Session::count(now, m_session.layout().mainArea(),
                              [](QRgb colour) { return colour == 0xFF696969; }) > 3000;
    }));
    m_session.keepPicture(u"about"_s);
    m_session.camera.forgetRequests();
    QTest::qWait(500);
    QCOMPARE(m_session.camera.requests("GET", u"/"_s).size(), 0);
}

void TestCameraSession::typedAddressConnectsTheCamera()
{
    const auto dialog = [this] { return m_session.screen.window(u"Connect Camera"_s); };
    QVERIFY(m_session.pickFromFileMenu(0));
    QTRY_VERIFY(dialog());
    QCOMPARE(m_session.screen.geometry(*dialog()).size(), QSize(220, 90));
    m_session.screen.focus(*dialog());
    QVERIFY(m_session.screen.type(m_session.camera.address()));
    m_session.key(u"Return"_s);
    QVERIFY(m_session.wait([&](const QImage &now) {
        return Session::count(now, m_session.layout().tabName(), isBright) > 50 &&
               m_session.shown().frameNumber();
    }));
    m_session.keepPicture(u"connect-camera"_s);
    // It stays, so that more cameras can be connected.
    QVERIFY(dialog());
    m_session.key(u"Escape"_s);
    QTRY_VERIFY(!dialog());
    m_session.focus();
    QVERIFY(m_session.wait([&](const QImage &) { return sameText(tabName(), m_name); }));
}

void TestCameraSession::closeByWindow()
{
    const auto window = m_session.screen.window(u"VESK"_s);
    QVERIFY(window);
    m_session.screen.close(*window);
    QCOMPARE(m_session.program().exitCode(2000), std::optional(0));
}

void TestCameraSession::closingTheWindowEndsTheProgramWithZero()
{
    m_session.toggleSection(u"Acquisition"_s, true);
    const QPoint next = m_session.layout().sectionHeader(u"Frame Buffer"_s);
    // Where there was the panel's pane there is the next section's header.
    QVERIFY(m_session.wait([&](const QImage &now) {
        return Session::count(now, QRect(5, next.y() - 8, 100, 16), isBright) > 30;
    }));
    m_session.keepPicture(u"folded"_s);
    closeByWindow();
}

void TestCameraSession::foldedSectionAndNameAreThereAfterARestart()
{
    QCOMPARE(m_session.startProgram(), QString());
    m_session.layout().setFolded(u"Acquisition"_s, true);
    const QPoint next = m_session.layout().sectionHeader(u"Frame Buffer"_s);
    QVERIFY(m_session.wait([&](const QImage &now) {
        return Session::count(now, QRect(5, next.y() - 8, 100, 16), isBright) > 30 &&
               sameText(tabName(), m_name);
    }));
    m_session.toggleSection(u"Acquisition"_s, false);
    QVERIFY(waitForState(isGreen, isRed));
}

void TestCameraSession::silentCameraDoesNotFreezeTheWindow()
{
    QVERIFY(m_session.camera.setFault(u"*"_s, u"no-answer"_s));
    const QImage still = m_session.window();
    const QRect area = m_session.layout().pictureArea();
    // The picture stands once the last answers are through.
    QVERIFY(!m_session.resting(area).isNull());
    m_session.move(m_session.layout().fileMenu());
    QElapsedTimer timer;
    timer.start();
    m_session.click(m_session.layout().fileMenu());
    const QPoint item = m_session.layout().fileMenuItem(5);
    const auto open = [&](const QImage &now) {
        return now.copy(QRect(item, QSize(40, 8))) != still.copy(QRect(item, QSize(40, 8)));
    };
    QVERIFY(m_session.wait(open));
    QVERIFY2(timer.elapsed() < 1000, qPrintable(u"%1 ms"_s.arg(timer.elapsed())));
    m_session.keepPicture(u"file-menu"_s);
    m_session.key(u"Escape"_s);
    QVERIFY(m_session.wait([&](const QImage &now) { return !open(now); }));
}

void TestCameraSession::windowWithASilentCameraClosesAsFast()
{
    closeByWindow();
}

QTEST_GUILESS_MAIN(TestCameraSession)
#include "tst_camera_session.moc"
