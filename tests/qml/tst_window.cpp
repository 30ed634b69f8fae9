#include "camera/camera.h"
#include "sim/camera.h"
#include "tests/qml/view_fixture.h"
#include "tests/qml/view_test_main.h"
#include "tests/support/url_catcher.h"

#include <QElapsedTimer>
#include <QQuickItem>
#include <QQuickWindow>
#include <QScreen>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

/** The main window: its place, its menus, its tabs and the view without a source. */
class TestWindow : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void aboutViewTellsTheProduct();
    void creditsOpenBy_data();
    void creditsOpenBy();
    void everyMenuIsThere();
    void fileMenuOffersConnectAndExitWithoutASource();
    void fileMenuOfACameraOffersDisconnect();
    void aboutItemDeselectsAndShowsTheAboutView();
    void connectedCameraIsSelectedAndHasATab();
    void tabTakesTheNameOfTheCamera();
    void clickOnATabSelectsItsCamera();
    void rightClickOnATabOffersDisconnect();
    void disconnectingTheSelectedCameraShowsTheAboutView();
    void disconnectingAnotherCameraKeepsTheView();
    void iconIsWhiteInStandby();
    void iconIsRedWhileRecording_data();
    void iconIsRedWhileRecording();
    void iconBlinksAfterTheTrigger();
    void iconBlinksEvenlyForLong();
    void saveToTheDriveShowsInTheTab();
    void addButtonOffersToConnect();
    void firstStartIsCentredAtTheMinimumSize();
    void closedWindowComesBackWhereItWas();
    void minimumSizeIsStoredCentredOf_data();
    void minimumSizeIsStoredCentredOf();
    void maximizedWindowStartsMaximized();

private:
    q4sim::Camera *simulate(const QString &address, const QString &name = u"Simulated Q4"_s);

    ViewFixture m_view;
};

void TestWindow::cleanup()
{
    m_view.close();
    QCOMPARE(m_view.warnings(), QStringList());
    for (const char *key : {"window/maximized", "window/x", "window/y", "window/width", "window/height"})
        VeskApp::instance()->setSetting(QLatin1StringView(key), {});
    VeskApp::instance()->settings()->remove(u"window"_s);
}

q4sim::Camera *TestWindow::simulate(const QString &address, const QString &name)
{
    q4sim::Config config;
    config.address = QHostAddress(address);
    config.name = name;
    config.discovery = false;
    return m_view.simulate(config);
}

void TestWindow::aboutViewTellsTheProduct()
{
    m_view.open();
    QCOMPARE(m_view.window()->title(), u"VESK"_s);
    for (const QString &text :
         {u"VESK"_s, u"Q4 HIGH-SPEED CAMERA CONTROL"_s, u"Version 10.0"_s, u"Credits"_s})
        QVERIFY2(m_view.shows(text), qPrintable(text));
    QCOMPARE(m_view.element(u"Credits"_s)->role(), QAccessible::Link);
    QCOMPARE(m_view.itemWithText(u"VESK"_s)->property("font").value<QFont>().pixelSize(), 140);
    QCOMPARE(m_view.itemWithText(u"VESK"_s)->property("color").value<QColor>(), QColor(u"dimgray"_s));
    const QPoint credits = ViewFixture::centre(m_view.window(), m_view.element(u"Credits"_s));
    QTest::mouseMove(m_view.window(), credits);
    QTRY_COMPARE(m_view.window()->cursor().shape(), Qt::PointingHandCursor);
}

void TestWindow::creditsOpenBy_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("click") << 0;
    QTest::newRow("Space") << int(Qt::Key_Space);
    QTest::newRow("Return") << int(Qt::Key_Return);
}

void TestWindow::creditsOpenBy()
{
    QFETCH(const int, key);
    const UrlCatcher opened;
    m_view.open();
    QAccessibleInterface *credits = m_view.element(u"Credits"_s, QAccessible::Link);
    QVERIFY(credits);
    if (key == 0)
        QVERIFY(ViewFixture::click(m_view.window(), credits));
    for (int i = 0; key != 0 && i < 20 && m_view.window()->activeFocusItem() != credits->object(); ++i)
        QTest::keyClick(m_view.window(), Qt::Key_Tab);
    QCOMPARE(opened.urls.size(), key == 0 ? 1 : 0);
    if (key != 0)
        QTest::keyClick(m_view.window(), Qt::Key(key));
    QTRY_COMPARE(opened.urls.size(), 1);
    QCOMPARE(opened.urls[0].adjusted(QUrl::NormalizePathSegments), QUrl(u"file:CREDITS.txt"_s));
}

void TestWindow::everyMenuIsThere()
{
    m_view.open();
    QVERIFY(m_view.shows(u"File"_s, QAccessible::MenuItem));
    QVERIFY(m_view.shows(u"Help"_s, QAccessible::MenuItem));
}

void TestWindow::fileMenuOffersConnectAndExitWithoutASource()
{
    m_view.open();
    QVERIFY(m_view.click(u"File"_s));
    QTRY_VERIFY(m_view.shows(u"Connect Camera..."_s));
    QVERIFY(m_view.shows(u"Exit"_s));
    QVERIFY(!m_view.shows(u"Disconnect"_s));
}

void TestWindow::fileMenuOfACameraOffersDisconnect()
{
    QVERIFY(simulate(u"127.0.14.1"_s));
    m_view.open();
    QVERIFY(m_view.connectTo(u"127.0.14.1"_s));
    QVERIFY(m_view.click(u"File"_s));
    QTRY_VERIFY(m_view.shows(u"Connect Camera..."_s));
    QVERIFY(m_view.shows(u"Exit"_s));
    QVERIFY(m_view.click(u"Disconnect"_s));
    QTRY_COMPARE(VeskApp::instance()->veskObjects().size(), 0);
}

void TestWindow::aboutItemDeselectsAndShowsTheAboutView()
{
    QVERIFY(simulate(u"127.0.14.1"_s));
    m_view.open();
    QVERIFY(m_view.connectTo(u"127.0.14.1"_s));
    QVERIFY(!m_view.shows(u"Version 10.0"_s));
    QVERIFY(m_view.click(u"Help"_s));
    QVERIFY(m_view.click(u"About VESK"_s));
    QTRY_VERIFY(m_view.shows(u"Version 10.0"_s));
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), nullptr);
    QVERIFY(m_view.click(u"File"_s));
    QTRY_VERIFY(m_view.shows(u"Exit"_s));
    QVERIFY(!m_view.shows(u"Disconnect"_s));
    // The camera stays open: its tab is still there.
    QVERIFY(m_view.shows(u"Simulated Q4"_s, QAccessible::PageTab));
}

void TestWindow::connectedCameraIsSelectedAndHasATab()
{
    QVERIFY(simulate(u"127.0.14.1"_s));
    m_view.open();
    Camera *camera = m_view.connectTo(u"127.0.14.1"_s);
    QVERIFY(camera);
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), camera);
    QVERIFY(m_view.shows(u"Simulated Q4"_s, QAccessible::PageTab));
    QVERIFY(m_view.element(u"Simulated Q4"_s, QAccessible::PageTab)->state().selected);
    QVERIFY(m_view.shows(u"Picture"_s));
}

void TestWindow::tabTakesTheNameOfTheCamera()
{
    q4sim::Camera *simulated = simulate(u"127.0.14.1"_s);
    QVERIFY(simulated);
    m_view.open();
    QVERIFY(m_view.connectTo(u"127.0.14.1"_s));
    simulated->forceValue(u"camera/name"_s, u"Lab 7"_s);
    QTRY_VERIFY(m_view.shows(u"Lab 7"_s, QAccessible::PageTab));
}

void TestWindow::clickOnATabSelectsItsCamera()
{
    QVERIFY(simulate(u"127.0.14.1"_s, u"First"_s));
    QVERIFY(simulate(u"127.0.14.2"_s, u"Second"_s));
    m_view.open();
    Camera *first = m_view.connectTo(u"127.0.14.1"_s);
    Camera *second = m_view.connectTo(u"127.0.14.2"_s);
    QVERIFY(first && second);
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), first);
    QVERIFY(m_view.click(u"Second"_s));
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), second);
    QTRY_COMPARE(m_view.rowText(u"IP Address"_s), u"127.0.14.2"_s);
    QVERIFY(m_view.element(u"Second"_s, QAccessible::PageTab)->state().selected);
    QVERIFY(!m_view.element(u"First"_s, QAccessible::PageTab)->state().selected);
}

void TestWindow::rightClickOnATabOffersDisconnect()
{
    QVERIFY(simulate(u"127.0.14.1"_s));
    m_view.open();
    QVERIFY(m_view.connectTo(u"127.0.14.1"_s));
    QAccessibleInterface *tab = m_view.element(u"Simulated Q4"_s, QAccessible::PageTab);
    QTest::mouseClick(m_view.window(), Qt::RightButton, {}, ViewFixture::centre(m_view.window(), tab));
    QVERIFY(m_view.click(u"Disconnect"_s));
    QTRY_VERIFY(!m_view.shows(u"Simulated Q4"_s, QAccessible::PageTab));
    QCOMPARE(VeskApp::instance()->veskObjects().size(), 0);
}

void TestWindow::disconnectingTheSelectedCameraShowsTheAboutView()
{
    QVERIFY(simulate(u"127.0.14.1"_s));
    m_view.open();
    Camera *camera = m_view.connectTo(u"127.0.14.1"_s);
    QVERIFY(camera);
    QPointer<Camera> alive = camera;
    camera->disconnectCamera();
    QTRY_VERIFY(m_view.shows(u"Version 10.0"_s));
    QTRY_VERIFY(!alive);
    QVERIFY(!m_view.shows(u"Black Reference"_s));
}

void TestWindow::disconnectingAnotherCameraKeepsTheView()
{
    QVERIFY(simulate(u"127.0.14.1"_s, u"First"_s));
    QVERIFY(simulate(u"127.0.14.2"_s, u"Second"_s));
    m_view.open();
    QVERIFY(m_view.connectTo(u"127.0.14.1"_s));
    QPointer<Camera> second = m_view.connectTo(u"127.0.14.2"_s);
    QVERIFY(second);
    second->disconnectCamera();
    QTRY_VERIFY(!second);
    QTRY_VERIFY(!m_view.shows(u"Second"_s, QAccessible::PageTab));
    QCOMPARE(m_view.rowText(u"IP Address"_s), u"127.0.14.1"_s);
}

void TestWindow::iconIsWhiteInStandby()
{
    QVERIFY(simulate(u"127.0.14.1"_s));
    m_view.open();
    QVERIFY(m_view.connectTo(u"127.0.14.1"_s));
    QQuickItem *icon = m_view.itemWithText(u"\uF288"_s);
    QVERIFY(icon);
    QCOMPARE(icon->property("color").value<QColor>(), QColor(Qt::white));
    QCOMPARE(icon->property("font").value<QFont>().pixelSize(), 24);
    QCOMPARE(icon->size(), QSizeF(50, 50));
    QSignalSpy changed(icon, SIGNAL(colorChanged()));
    QVERIFY(!changed.wait(3 * 333));
}

void TestWindow::iconIsRedWhileRecording_data()
{
    QTest::addColumn<int>("state");
    QTest::newRow("recording") << 2;
    QTest::newRow("recording, 6") << 6;
}

void TestWindow::iconIsRedWhileRecording()
{
    QFETCH(const int, state);
    q4sim::Camera *simulated = simulate(u"127.0.14.1"_s);
    QVERIFY(simulated);
    m_view.open();
    QVERIFY(m_view.connectTo(u"127.0.14.1"_s));
    simulated->forceValue(u"acq/state"_s, state);
    QQuickItem *icon = m_view.itemWithText(u"\uF288"_s);
    QTRY_COMPARE(icon->property("color").value<QColor>(), QColor(Qt::red));
    QSignalSpy changed(icon, SIGNAL(colorChanged()));
    QVERIFY(!changed.wait(2 * 333));
}

void TestWindow::iconBlinksAfterTheTrigger()
{
    q4sim::Camera *simulated = simulate(u"127.0.14.1"_s);
    QVERIFY(simulated);
    m_view.open();
    QVERIFY(m_view.connectTo(u"127.0.14.1"_s));
    QQuickItem *icon = m_view.itemWithText(u"\uF288"_s);
    QSignalSpy changed(icon, SIGNAL(colorChanged()));
    simulated->forceValue(u"acq/state"_s, 3);
    QVERIFY(changed.wait());
    QCOMPARE(icon->property("color").value<QColor>(), QColor(Qt::red));
    QElapsedTimer sinceRed;
    sinceRed.start();
    for (const Qt::GlobalColor color : {Qt::white, Qt::red, Qt::white, Qt::red}) {
        QVERIFY(changed.wait());
        QCOMPARE(icon->property("color").value<QColor>(), QColor(color));
    }
    // Four half cycles of 333 ms; the upper bound leaves room for a busy machine.
    QVERIFY2(sinceRed.elapsed() >= 4 * 300, qPrintable(QString::number(sinceRed.elapsed())));
    QVERIFY2(sinceRed.elapsed() <= 4 * 666, qPrintable(QString::number(sinceRed.elapsed())));
}

void TestWindow::iconBlinksEvenlyForLong()
{
    q4sim::Camera *simulated = simulate(u"127.0.14.1"_s);
    QVERIFY(simulated);
    m_view.open();
    QVERIFY(m_view.connectTo(u"127.0.14.1"_s));
    QSignalSpy changed(m_view.itemWithText(u"\uF288"_s), SIGNAL(colorChanged()));
    simulated->forceValue(u"acq/state"_s, 3);
    QVERIFY(changed.wait());
    changed.clear();
    QElapsedTimer time;
    time.start();
    QTRY_VERIFY_WITH_TIMEOUT(changed.size() >= 24, 20'000);
    // 24 half cycles of 333 ms. A frame of the window may be waited for in each, and some are late when the
    // machine is busy, but none is early.
    QVERIFY2(time.elapsed() >= 24 * 330, qPrintable(QString::number(time.elapsed())));
    QVERIFY2(time.elapsed() <= 24 * 420, qPrintable(QString::number(time.elapsed())));
}

void TestWindow::saveToTheDriveShowsInTheTab()
{
    q4sim::Camera *simulated = simulate(u"127.0.14.1"_s);
    QVERIFY(simulated);
    m_view.open();
    QVERIFY(m_view.connectTo(u"127.0.14.1"_s));
    QVERIFY(!m_view.itemWithText(u"SSD:"_s));
    simulated->forceValue(u"ssd/state"_s, Camera::SsdReady);
    simulated->forceValue(u"ssd/wr_state"_s, Camera::SsdWrSave);
    simulated->forceValue(u"ssd/progress"_s, 42);
    QTRY_VERIFY(m_view.itemWithText(u"42%"_s));
    QVERIFY(m_view.itemWithText(u"SSD:"_s));
    QCOMPARE(m_view.itemWithText(u"42%"_s)->width(), 28.0);
    simulated->forceValue(u"ssd/wr_state"_s, Camera::SsdWrIdle);
    QTRY_VERIFY(!m_view.itemWithText(u"SSD:"_s));
}

void TestWindow::addButtonOffersToConnect()
{
    m_view.open();
    QVERIFY(m_view.click(u"Add source"_s));
    QVERIFY(m_view.click(u"Connect Camera..."_s));
    QTRY_VERIFY(m_view.dialog(u"Connect Camera"_s));
}

void TestWindow::firstStartIsCentredAtTheMinimumSize()
{
    m_view.open();
    QCOMPARE(m_view.window()->size(), QSize(1280, 720));
    const QSize screen = m_view.window()->screen()->size();
    QCOMPARE(m_view.window()->position(), QPoint(screen.width() / 2 - 640, screen.height() / 2 - 360));
}

void TestWindow::closedWindowComesBackWhereItWas()
{
    m_view.open();
    m_view.window()->setGeometry(31, 47, 1300, 760);
    QTRY_COMPARE(m_view.window()->geometry(), QRect(31, 47, 1300, 760));
    m_view.window()->close();
    m_view.close();
    QCOMPARE(VeskApp::instance()->setting(u"window/maximized"_s), false);
    QCOMPARE(VeskApp::instance()->setting(u"window/x"_s), 31);
    QCOMPARE(VeskApp::instance()->setting(u"window/y"_s), 47);
    QCOMPARE(VeskApp::instance()->setting(u"window/width"_s), 1300);
    QCOMPARE(VeskApp::instance()->setting(u"window/height"_s), 760);
    m_view.open();
    QCOMPARE(m_view.window()->geometry(), QRect(31, 47, 1300, 760));
}

void TestWindow::minimumSizeIsStoredCentredOf_data()
{
    QTest::addColumn<QWindow::Visibility>("visibility");
    QTest::newRow("a maximized window") << QWindow::Maximized;
    QTest::newRow("a minimized window") << QWindow::Minimized;
}

void TestWindow::minimumSizeIsStoredCentredOf()
{
    QFETCH(const QWindow::Visibility, visibility);
    m_view.open();
    const QSize screen = m_view.window()->screen()->size();
    m_view.window()->setGeometry(31, 47, 1300, 760);
    QTRY_COMPARE(m_view.window()->geometry(), QRect(31, 47, 1300, 760));
    m_view.window()->setVisibility(visibility);
    QTRY_COMPARE(m_view.window()->visibility(), visibility);
    m_view.window()->close();
    QCOMPARE(VeskApp::instance()->setting(u"window/maximized"_s), visibility == QWindow::Maximized);
    QCOMPARE(VeskApp::instance()->setting(u"window/width"_s), 1280);
    QCOMPARE(VeskApp::instance()->setting(u"window/height"_s), 720);
    QCOMPARE(VeskApp::instance()->setting(u"window/x"_s), screen.width() / 2 - 640);
    QCOMPARE(VeskApp::instance()->setting(u"window/y"_s), screen.height() / 2 - 360);
}

void TestWindow::maximizedWindowStartsMaximized()
{
    VeskApp::instance()->setSetting(u"window/maximized"_s, true);
    m_view.open();
    QTRY_COMPARE(m_view.window()->visibility(), QWindow::Maximized);
}

VIEW_TEST_MAIN(TestWindow)
#include "tst_window.moc"
