#include "image/img_frame.h"
#include "tests/qml/playback_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;
using State = PlaybackVeskObject::State;

/** Playback worked with keys, and by programs that read it aloud. */
class TestPlaybackKeys : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void arrowsStep();
    void spacePausesAnyStateAndPlaysOnwards_data();
    void spacePausesAnyStateAndPlaysOnwards();
    void keysGoOnWorkingAfterClicks();
    void keysWithModifiersGoToThePictureAlone();
    void tabReachesEveryControl();
    void skipMenuIsWorkedWithKeys();
    void menuKeyOffersToResetAMarker();
    void keysInAFieldDoNotStep();
    void screenReaderPressesButtons();

private:
    PlaybackFixture m_view;
};

void TestPlaybackKeys::cleanup()
{
    QCOMPARE(m_view.end(), QStringList());
}

void TestPlaybackKeys::arrowsStep()
{
    PlaybackSource *source = m_view.startPaused(0, 10);
    QVERIFY(source);
    for (const int expected : {1, 2}) {
        QTest::keyClick(m_view.window(), Qt::Key_Right);
        QCOMPARE(source->fr(), expected);
    }
    for (const int expected : {1, 0, 10}) {
        QTest::keyClick(m_view.window(), Qt::Key_Left);
        QCOMPARE(source->fr(), expected);
    }
    QCOMPARE(source->state(), State::Paused);
}

void TestPlaybackKeys::spacePausesAnyStateAndPlaysOnwards_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("state");
    QTest::newRow("rewind") << u"Rewind"_s << int(State::PlayFastRev);
    QTest::newRow("backwards") << u"Play backwards"_s << int(State::PlayRev);
    QTest::newRow("play") << u"Play"_s << int(State::Play);
    QTest::newRow("fast forward") << u"Fast forward"_s << int(State::PlayFastFwd);
}

void TestPlaybackKeys::spacePausesAnyStateAndPlaysOnwards()
{
    QFETCH(const QString, name);
    QFETCH(const int, state);
    PlaybackSource *source = m_view.startPaused(0, 10);
    QVERIFY(source);
    QVERIFY(m_view.press(name));
    m_view.release();
    QCOMPARE(int(source->state()), state);
    QTest::keyClick(m_view.window(), Qt::Key_Space);
    QCOMPARE(source->state(), State::Paused);
    QTest::keyClick(m_view.window(), Qt::Key_Space);
    QCOMPARE(source->state(), State::Play);
}

void TestPlaybackKeys::keysGoOnWorkingAfterClicks()
{
    PlaybackSource *source = m_view.startPaused(-10, 10);
    QVERIFY(source);
    for (const QString &name : {u"Play"_s, u"Repeat from the start"_s, u"Step back"_s, u"Go to the trigger"_s,
                                u"Start of the range here"_s, u"End of the range here"_s}) {
        QVERIFY(m_view.click(m_view.window(), u"Frame"_s));
        QCOMPARE(m_view.focusedName(), u"Frame"_s);
        QVERIFY(m_view.press(name));
        m_view.release();
        source->pause();
        source->setAFr(-10);
        source->setBFr(10);
        source->setFr(3);
        QTest::keyClick(m_view.window(), Qt::Key_Right);
        QCOMPARE(source->fr(), 4);
        QTest::keyClick(m_view.window(), Qt::Key_Space);
        QCOMPARE(source->state(), State::Play);
    }
}

void TestPlaybackKeys::keysWithModifiersGoToThePictureAlone()
{
    PlaybackSource *source = m_view.startPaused(0, 10);
    QVERIFY(source);
    QTRY_VERIFY(!source->imgFrame()->image().isNull());
    QTest::keyClick(m_view.window(), Qt::Key_Right, Qt::ControlModifier);
    QCOMPARE(source->fr(), 0);
    QTest::keyClick(m_view.window(), Qt::Key_Plus, Qt::ControlModifier);
    QCOMPARE(source->imgFrame()->zoomScale(), 1.25);
    QVERIFY(m_view.press(u"Step forward"_s));
    m_view.release();
    QTest::keyClick(m_view.window(), Qt::Key_Plus, Qt::ControlModifier);
    QCOMPARE(source->imgFrame()->zoomScale(), 1.5);
}

void TestPlaybackKeys::tabReachesEveryControl()
{
    QVERIFY(m_view.startPaused(-10, 10));
    QAccessible::setActive(true);
    const QStringList names = {u"Rewind"_s,
                               u"Play backwards"_s,
                               u"Play"_s,
                               u"Fast forward"_s,
                               u"Repeat from the start"_s,
                               u"Skip back"_s,
                               u"Step back"_s,
                               u"Go to the trigger"_s,
                               u"Step forward"_s,
                               u"Skip forward"_s,
                               u"Start of the range here"_s,
                               u"Start of the range"_s,
                               u"Frame"_s,
                               u"End of the range"_s,
                               u"End of the range here"_s,
                               u"Play step"_s,
                               u"Play rate"_s,
                               u"Play rate"_s};
    for (int i = 0; i < 120 && m_view.focusedName() != names.first(); ++i)
        QTest::keyClick(m_view.window(), Qt::Key_Tab);
    for (const QString &name : names) {
        QCOMPARE(m_view.focusedName(), name);
        QTest::keyClick(m_view.window(), Qt::Key_Tab);
    }
}

void TestPlaybackKeys::skipMenuIsWorkedWithKeys()
{
    PlaybackSource *source = m_view.startPaused(-10, 10);
    QVERIFY(source);
    QAccessible::setActive(true);
    for (int i = 0; i < 120 && m_view.focusedName() != u"Skip forward"_s; ++i)
        QTest::keyClick(m_view.window(), Qt::Key_Tab);
    QTest::keyClick(m_view.window(), Qt::Key_Space);
    QTRY_VERIFY(m_view.shows(u"Last Frame"_s));
    QTest::keyClick(m_view.window(), Qt::Key_Down);
    QTest::keyClick(m_view.window(), Qt::Key_Return);
    QCOMPARE(source->fr(), 10);
    QTRY_VERIFY(!m_view.shows(u"Last Frame"_s));
    QVERIFY(!m_view.item(u"Skip forward"_s)->property("down").toBool());
    QTest::keyClick(m_view.window(), Qt::Key_Left);
    QCOMPARE(source->fr(), 9);
}

void TestPlaybackKeys::screenReaderPressesButtons()
{
    PlaybackSource *source = m_view.startPaused(-10, 10);
    QVERIFY(source);
    const auto press = [this](const QString &name) {
        m_view.element(name)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    };
    press(u"Step forward"_s);
    QCOMPARE(source->fr(), -9);
    press(u"Play"_s);
    QCOMPARE(source->state(), State::Play);
    press(u"Pause"_s);
    QCOMPARE(source->state(), State::Paused);
}

void TestPlaybackKeys::menuKeyOffersToResetAMarker()
{
    PlaybackSource *source = m_view.startPaused(-100, 100);
    QVERIFY(source);
    source->setBFr(30);
    QAccessible::setActive(true);
    for (int i = 0; i < 120 && m_view.focusedName() != u"End of the range here"_s; ++i)
        QTest::keyClick(m_view.window(), Qt::Key_Tab);
    QTest::keyClick(m_view.window(), Qt::Key_Menu);
    QTRY_VERIFY(m_view.shows(u"Reset"_s, QAccessible::MenuItem));
    QTest::keyClick(m_view.window(), Qt::Key_Down);
    QTest::keyClick(m_view.window(), Qt::Key_Return);
    QCOMPARE(source->bFr(), 100);
}

void TestPlaybackKeys::keysInAFieldDoNotStep()
{
    PlaybackSource *source = m_view.startPaused(0, 1000);
    QVERIFY(source);
    source->setFr(10);
    for (const QString &name : {u"Frame"_s, u"Play step"_s}) {
        QVERIFY(m_view.click(m_view.window(), name));
        for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Left, Qt::Key_Left, Qt::Key_Left, Qt::Key_Space,
                                  Qt::Key_Right, Qt::Key_Right, Qt::Key_Right, Qt::Key_Right})
            QTest::keyClick(m_view.window(), key);
        QTest::keyClick(m_view.window(), Qt::Key_Escape);
    }
    QCOMPARE(source->fr(), 10);
    QCOMPARE(source->state(), State::Paused);
}

VIEW_TEST_MAIN(TestPlaybackKeys)
#include "tst_playback_keys.moc"
