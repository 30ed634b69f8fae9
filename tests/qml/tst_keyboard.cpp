#include "camera/camera.h"
#include "image/img_adj_model.h"
#include "image/img_frame.h"
#include "sim/camera.h"
#include "tests/qml/keys.h"
#include "tests/qml/view_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQmlProperty>
#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

/** The window worked with keys alone, and by programs that press its controls. */
class TestKeyboard : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void tabReachesEveryControlOfACamera();
    void focusedControlIsScrolledIntoSight();
    void focusedTabIsNotMarkedAsSelected();
    void tabOfANamelessCameraIsNamedByItsAddress();
    void keysReachThePictureAfterTheAddMenu();
    void choiceOpenedByMouseTakesKeys();
    void choiceGivesUpFocusWhenItIsLeftAsItWas();
    void pressActionRecords();
    void pressActionFlips();
    void menuKeyOffersTheZooms();
    void arrowsMoveAZoomedPicture();

private:
    bool press(const QString &name);

    ViewFixture m_view;
    Keys m_keys{m_view};
};

void TestKeyboard::cleanup()
{
    QCOMPARE(m_view.end(), QStringList());
}

/** Does what a screen reader does to activate an element. */
bool TestKeyboard::press(const QString &name)
{
    QAccessibleInterface *element = m_view.element(name);
    if (!element || !element->actionInterface())
        return false;
    element->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    return true;
}

void TestKeyboard::tabReachesEveryControlOfACamera()
{
    q4sim::Camera *simulated = m_view.startUnfolded();
    QVERIFY(simulated);
    QCOMPARE(simulated->answer("PUT", u"/ssd/autosave/mode"_s, "3").status, 200);
    QTRY_VERIFY(m_view.shows(u"Frame Count"_s));
    QTRY_VERIFY(m_view.shows(u"Firmware Update"_s));
    // In the order of the control bar, top to bottom; then the tabs.
    const QStringList names = {u"Camera"_s,
                               u"Edit name"_s,
                               u"Acquisition"_s,
                               u"Resolution"_s,
                               u"Frame Rate"_s,
                               u"Exposure Time"_s,
                               u"Trigger Offset"_s,
                               u"Frame Sync Mode"_s,
                               u"Black Ref Mode"_s,
                               u"Black Reference"_s,
                               u"Record"_s,
                               u"Frame Buffer"_s,
                               u"Partition"_s,
                               u"Image Tools"_s,
                               u"Flip horizontally"_s,
                               u"Flip vertically"_s,
                               u"Rotate by 90 degrees"_s,
                               u"Rotate by 270 degrees"_s,
                               u"Focus Peaking"_s,
                               u"Exposure Assist"_s,
                               u"Image Adjustments"_s,
                               u"Channel"_s,
                               u"Offset"_s,
                               u"Gain"_s,
                               u"Gamma"_s,
                               u"Contrast"_s,
                               u"Reset"_s,
                               u"Color Adjustments"_s,
                               u"Red"_s,
                               u"Green"_s,
                               u"Blue"_s,
                               u"Auto White Balance"_s,
                               u"SSD"_s,
                               u"Open SSD Take"_s,
                               u"Eject"_s,
                               u"Format"_s,
                               u"SSD Autosave"_s,
                               u"Mode"_s,
                               u"Save"_s,
                               u"Start Frame"_s,
                               u"Frame Count"_s,
                               u"After Save"_s,
                               u"Edit file name"_s,
                               u"File Name Seq"_s,
                               u"Lens & Shutter"_s,
                               u"Focus 1 step farther"_s,
                               u"Focus 10 steps farther"_s,
                               u"Focus 100 steps farther"_s,
                               u"Focus to infinity"_s,
                               u"Focus 1 step nearer"_s,
                               u"Focus 10 steps nearer"_s,
                               u"Focus 100 steps nearer"_s,
                               u"Focus to the nearest distance"_s,
                               u"F-stop"_s,
                               u"Close Shutter"_s,
                               u"Trigger I/O"_s,
                               u"Signal"_s,
                               u"Mode"_s,
                               u"Polarity"_s,
                               u"Delay"_s,
                               u"Min. Width"_s,
                               u"Max. Width"_s,
                               u"Filter"_s,
                               u"I/O 1"_s,
                               u"I/O 2"_s,
                               u"I/O 3"_s,
                               u"I/O 4"_s,
                               u"I/O 5"_s,
                               u"I/O 6"_s,
                               u"Video"_s,
                               u"Format"_s,
                               u"Firmware"_s,
                               u"Firmware Update"_s,
                               u"Add source"_s,
                               u"Simulated Q4"_s};
    QVERIFY(m_keys.tabTo(names.first()));
    for (const QString &name : names) {
        // A slider and its field have the same name, so that two steps may lie between two names.
        for (int step = 0; step < 10 && m_keys.focused() != name; ++step)
            QTest::keyClick(m_view.window(), Qt::Key_Tab);
        QCOMPARE(m_keys.focused(), name);
    }
    QCOMPARE(ViewFixture::writtenPaths(*simulated), QStringList());
}

void TestKeyboard::focusedControlIsScrolledIntoSight()
{
    VeskApp::instance()->setSetting(u"color_adj_pane_expanded"_s, true);
    QVERIFY(m_view.startWithCamera());
    ViewFixture::settle(m_view.window());
    const auto isInSight = [this](const QString &name) {
        auto *item = qobject_cast<QQuickItem *>(m_view.element(name)->object());
        const QRectF place = item->mapRectToScene({0, 0, item->width(), item->height()});
        return place.top() >= 0 && place.bottom() <= m_view.window()->height();
    };
    QVERIFY(!isInSight(u"Auto White Balance"_s));
    QVERIFY(m_keys.tabTo(u"Auto White Balance"_s));
    QVERIFY(isInSight(u"Auto White Balance"_s));
    QVERIFY(m_keys.tabTo(u"Edit name"_s));
    QVERIFY(isInSight(u"Edit name"_s));
}

void TestKeyboard::focusedTabIsNotMarkedAsSelected()
{
    QVERIFY(m_view.startWithCamera());
    q4sim::Config config;
    config.address = QHostAddress(u"127.0.15.2"_s);
    config.name = u"Second"_s;
    config.discovery = false;
    QVERIFY(m_view.simulate(config));
    QVERIFY(m_view.connectTo(u"127.0.15.2"_s));
    QVERIFY(m_keys.tabTo(u"Second"_s));
    QObject *tab = m_view.element(u"Second"_s, QAccessible::PageTab)->object();
    const auto border = [tab] { return QQmlProperty::read(tab, u"border.color"_s).value<QColor>(); };
    QCOMPARE(border(), QColor(u"#212121"_s));
    QTest::keyClick(m_view.window(), Qt::Key_Space);
    QTRY_COMPARE(border(), QColor(u"#D25F15"_s));
}

void TestKeyboard::tabOfANamelessCameraIsNamedByItsAddress()
{
    m_view.open();
    VeskApp::instance()->connectCamera(u"127.0.15.9"_s);
    QTRY_VERIFY(m_view.shows(u"127.0.15.9"_s, QAccessible::PageTab));
}

void TestKeyboard::keysReachThePictureAfterTheAddMenu()
{
    QVERIFY(m_view.startWithCamera());
    QTRY_VERIFY(!m_view.camera()->imgFrame()->image().isNull());
    QVERIFY(m_keys.tabTo(u"Add source"_s));
    QTest::keyClick(m_view.window(), Qt::Key_Space);
    QTRY_VERIFY(m_view.shows(u"Connect Camera..."_s));
    QTest::keyClick(m_view.window(), Qt::Key_Escape);
    QTRY_VERIFY(!m_view.shows(u"Connect Camera..."_s));
    QTest::keyClick(m_view.window(), Qt::Key_Plus, Qt::ControlModifier);
    QCOMPARE(m_view.camera()->imgFrame()->zoomScale(), 1.25);
}

void TestKeyboard::choiceOpenedByMouseTakesKeys()
{
    QVERIFY(m_view.startWithCamera());
    QTRY_VERIFY(!m_view.camera()->imgFrame()->image().isNull());
    QVERIFY(m_view.click(u"Focus Peaking"_s));
    QTRY_VERIFY(m_view.shows(u"High"_s));
    // The pointer may have marked any of the four.
    for (const Qt::Key key : {Qt::Key_Up, Qt::Key_Up, Qt::Key_Up, Qt::Key_Down, Qt::Key_Down, Qt::Key_Return})
        QTest::keyClick(m_view.window(), key);
    QCOMPARE(m_view.camera()->imgAdjModel()->property("focusPeak").toInt(), 2);
    QTRY_VERIFY(!m_view.shows(u"High"_s));
    QTest::keyClick(m_view.window(), Qt::Key_Plus, Qt::ControlModifier);
    QCOMPARE(m_view.camera()->imgFrame()->zoomScale(), 1.25);
}

void TestKeyboard::choiceGivesUpFocusWhenItIsLeftAsItWas()
{
    QVERIFY(m_view.startWithCamera());
    QVERIFY(m_view.click(u"Focus Peaking"_s));
    QTRY_VERIFY(m_view.shows(u"High"_s));
    QCOMPARE(m_keys.focused(), u"Focus Peaking"_s);
    QTest::keyClick(m_view.window(), Qt::Key_Escape);
    QTRY_VERIFY(!m_view.shows(u"High"_s));
    QVERIFY(m_keys.focused() != u"Focus Peaking"_s);
    QCOMPARE(m_view.camera()->imgAdjModel()->property("focusPeak").toInt(), 0);
}

void TestKeyboard::pressActionRecords()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QTRY_VERIFY(m_view.shows(u"Record"_s, QAccessible::Button));
    QVERIFY(press(u"Record"_s));
    QTRY_COMPARE(simulated->requests("POST", u"/rec"_s).size(), 1);
}

void TestKeyboard::pressActionFlips()
{
    QVERIFY(m_view.startWithCamera());
    QVERIFY(press(u"Flip vertically"_s));
    QCOMPARE(m_view.camera()->imgAdjModel()->property("flipV").toBool(), true);
}

void TestKeyboard::menuKeyOffersTheZooms()
{
    QVERIFY(m_view.startWithCamera());
    QTRY_VERIFY(!m_view.camera()->imgFrame()->image().isNull());
    QTest::keyClick(m_view.window(), Qt::Key_Menu);
    QTRY_VERIFY(m_view.shows(u"Zoom Fit"_s));
    QTest::keyClick(m_view.window(), Qt::Key_Down);
    QTest::keyClick(m_view.window(), Qt::Key_Return);
    QTRY_VERIFY(m_view.camera()->imgFrame()->zoomFit());
}

void TestKeyboard::arrowsMoveAZoomedPicture()
{
    QVERIFY(m_view.startWithCamera());
    ImgFrame *frame = m_view.camera()->imgFrame();
    QTRY_VERIFY(!frame->image().isNull());
    QVERIFY(!m_keys.tabTo(u"Horizontal position"_s));
    frame->setZoomScale(4.0);
    frame->setPanX(0.0);
    frame->setPanY(0.0);
    QVERIFY(m_keys.tabTo(u"Horizontal position"_s));
    QTest::keyClick(m_view.window(), Qt::Key_Right);
    QCOMPARE(frame->panX(), 0.1);
    QTest::keyClick(m_view.window(), Qt::Key_Left);
    QCOMPARE(frame->panX(), 0.0);
    QVERIFY(m_keys.tabTo(u"Vertical position"_s));
    QTest::keyClick(m_view.window(), Qt::Key_Down);
    QCOMPARE(frame->panY(), 0.1);
}

VIEW_TEST_MAIN(TestKeyboard)
#include "tst_keyboard.moc"
