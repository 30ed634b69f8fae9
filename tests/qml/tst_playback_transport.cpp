#include "image/img_frame.h"
#include "image/img_search.h"
#include "tests/qml/playback_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QSignalSpy>
#include <QStyleHints>

using namespace Qt::StringLiterals;
using State = PlaybackVeskObject::State;

/** The buttons and keys of playback. */
class TestPlaybackTransport : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void playButtonActsOnPressAndPausesItsOwnState_data();
    void playButtonActsOnPressAndPausesItsOwnState();
    void onlyTheButtonOfTheStateShowsPause_data();
    void onlyTheButtonOfTheStateShowsPause();
    void playButtonsChangeOverWithoutAPause();
    void repeatButtonTogglesTheMode();
    void secondRowShowsItsGlyphs();
    void stepButtonsStepOneFrameAndRoundTheEnds();
    void triggerButtonShowsFrameZero();
    void triggerButtonNeedsFrameZeroInTheRange_data();
    void triggerButtonNeedsFrameZeroInTheRange();
    void skipMenusGoToTheEndsOfTheRange();
    void skipMenusStartSearches_data();
    void skipMenusStartSearches();
    void skipMenuOpensOnPress();
    void buttonsGrowUnderThePointer();
    void skipMenuClosesOnASecondPress();
    void everyButtonHasATooltip_data();
    void everyButtonHasATooltip();
    void pressedButtonNeedsNoTooltip();

private:
    PlaybackFixture m_view;
};

void TestPlaybackTransport::cleanup()
{
    QCOMPARE(m_view.end(), QStringList());
}

void TestPlaybackTransport::playButtonActsOnPressAndPausesItsOwnState_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("glyph");
    QTest::addColumn<int>("state");
    QTest::newRow("rewind") << u"Rewind"_s << u"\uF085"_s << int(State::PlayFastRev);
    QTest::newRow("backwards") << u"Play backwards"_s << u"\uF4A7"_s << int(State::PlayRev);
    QTest::newRow("play") << u"Play"_s << u"\uF00A"_s << int(State::Play);
    QTest::newRow("fast forward") << u"Fast forward"_s << u"\uF176"_s << int(State::PlayFastFwd);
}

void TestPlaybackTransport::playButtonActsOnPressAndPausesItsOwnState()
{
    QFETCH(const QString, name);
    QFETCH(const QString, glyph);
    QFETCH(const int, state);
    QVERIFY(m_view.startPaused(0, 100));
    QCOMPARE(m_view.shownText(name), glyph);
    QVERIFY(!m_view.shows(u"Pause"_s));
    QVERIFY(m_view.press(name));
    QCOMPARE(int(m_view.source()->state()), state);
    QCOMPARE(m_view.shownText(u"Pause"_s), u"\uEFD8"_s);
    m_view.release();
    QCOMPARE(int(m_view.source()->state()), state);
    QVERIFY(m_view.press(u"Pause"_s));
    QCOMPARE(m_view.source()->state(), State::Paused);
    m_view.release();
    QCOMPARE(m_view.shownText(name), glyph);
}

void TestPlaybackTransport::onlyTheButtonOfTheStateShowsPause_data()
{
    playButtonActsOnPressAndPausesItsOwnState_data();
}

void TestPlaybackTransport::onlyTheButtonOfTheStateShowsPause()
{
    QFETCH(const QString, name);
    QFETCH(const int, state);
    PlaybackSource *source = m_view.startPaused(0, 100);
    QVERIFY(source);
    const QPoint place = m_view.middle(name);
    using Start = void (PlaybackVeskObject::*)();
    const QHash<int, Start> starts = {{State::PlayFastRev, &PlaybackVeskObject::playFastRev},
                                      {State::PlayRev, &PlaybackVeskObject::playRev},
                                      {State::Play, &PlaybackVeskObject::play},
                                      {State::PlayFastFwd, &PlaybackVeskObject::playFastFwd}};
    (source->*starts[state])();
    QCOMPARE(m_view.middle(u"Pause"_s), place);
    for (const QString &other : {u"Rewind"_s, u"Play backwards"_s, u"Play"_s, u"Fast forward"_s})
        QCOMPARE(m_view.shows(other, QAccessible::Button), other != name);
}

void TestPlaybackTransport::playButtonsChangeOverWithoutAPause()
{
    PlaybackSource *source = m_view.start(0, 100);
    QVERIFY(source);
    QCOMPARE(source->state(), State::Play);
    QSignalSpy changed(source, &PlaybackVeskObject::stateChanged);
    QVERIFY(m_view.press(u"Rewind"_s));
    m_view.release();
    QCOMPARE(source->state(), State::PlayFastRev);
    QCOMPARE(changed.size(), 1);
}

void TestPlaybackTransport::repeatButtonTogglesTheMode()
{
    PlaybackSource *source = m_view.startPaused(0, 100);
    QVERIFY(source);
    QCOMPARE(m_view.shownText(u"Repeat from the start"_s), u"\uF073"_s);
    QVERIFY(m_view.press(u"Repeat from the start"_s));
    QCOMPARE(source->repeatMode(), PlaybackVeskObject::RepeatPingPong);
    m_view.release();
    QCOMPARE(m_view.shownText(u"Repeat back and forth"_s), u"\uEA61"_s);
    QVERIFY(m_view.press(u"Repeat back and forth"_s));
    QCOMPARE(source->repeatMode(), PlaybackVeskObject::RepeatLoop);
    m_view.release();
}

void TestPlaybackTransport::secondRowShowsItsGlyphs()
{
    QVERIFY(m_view.startPaused(0, 100));
    const QList<std::pair<QString, QString>> buttons = {{u"Skip back"_s, u"\uF13F"_s},
                                                        {u"Step back"_s, u"\uF54D"_s},
                                                        {u"Go to the trigger"_s, u"\uF201"_s},
                                                        {u"Step forward"_s, u"\uF54E"_s},
                                                        {u"Skip forward"_s, u"\uF143"_s}};
    QPoint before(-1, m_view.middle(u"Skip back"_s).y());
    for (const auto &[name, glyph] : buttons) {
        QCOMPARE(m_view.shownText(name), glyph);
        // From left to right, in one row.
        const QPoint place = m_view.middle(name);
        QVERIFY(place.x() > before.x());
        QCOMPARE(place.y(), before.y());
        before = place;
    }
}

void TestPlaybackTransport::stepButtonsStepOneFrameAndRoundTheEnds()
{
    PlaybackSource *source = m_view.startPaused(-10, 10);
    QVERIFY(source);
    source->setPlayStep(5);
    QVERIFY(m_view.press(u"Step forward"_s));
    QCOMPARE(source->fr(), -9);
    m_view.release();
    QCOMPARE(source->fr(), -9);
    for (const int expected : {-10, 10, 9}) {
        QVERIFY(m_view.press(u"Step back"_s));
        m_view.release();
        QCOMPARE(source->fr(), expected);
    }
}

void TestPlaybackTransport::triggerButtonShowsFrameZero()
{
    PlaybackSource *source = m_view.startPaused(-10, 10);
    QVERIFY(source);
    QCOMPARE(m_view.shownText(u"Go to the trigger"_s), u"\uF201"_s);
    QVERIFY(m_view.press(u"Go to the trigger"_s));
    QCOMPARE(source->fr(), 0);
    m_view.release();
}

void TestPlaybackTransport::triggerButtonNeedsFrameZeroInTheRange_data()
{
    QTest::addColumn<int>("a");
    QTest::addColumn<int>("b");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("inside") << -1 << 1 << true;
    QTest::newRow("at A") << 0 << 5 << true;
    QTest::newRow("at B") << -5 << 0 << true;
    QTest::newRow("before A") << 1 << 5 << false;
    QTest::newRow("behind B") << -5 << -1 << false;
}

void TestPlaybackTransport::triggerButtonNeedsFrameZeroInTheRange()
{
    QFETCH(const int, a);
    QFETCH(const int, b);
    QFETCH(const bool, enabled);
    PlaybackSource *source = m_view.startPaused(-10, 10);
    QVERIFY(source);
    QVERIFY(m_view.enabled(u"Go to the trigger"_s));
    source->setAFr(a);
    source->setBFr(b);
    QCOMPARE(m_view.enabled(u"Go to the trigger"_s), enabled);
    source->setFr(b);
    QVERIFY(m_view.press(u"Go to the trigger"_s));
    m_view.release();
    QCOMPARE(source->fr(), enabled ? 0 : b);
}

void TestPlaybackTransport::skipMenusGoToTheEndsOfTheRange()
{
    PlaybackSource *source = m_view.startPaused(-10, 10);
    QVERIFY(source);
    source->setAFr(-6);
    source->setBFr(7);
    source->setFr(2);
    QVERIFY(m_view.click(u"Skip back"_s));
    QTRY_VERIFY(m_view.shows(u"First Frame"_s));
    QVERIFY(m_view.shows(u"Prev Image Diff"_s));
    QCOMPARE(m_view.item(u"First Frame"_s)->property("menu").value<QObject *>()->property("width"), 112.0);
    QVERIFY(m_view.click(u"First Frame"_s));
    QCOMPARE(source->fr(), -6);
    QTRY_VERIFY(!m_view.shows(u"First Frame"_s));
    QVERIFY(m_view.click(u"Skip forward"_s));
    QTRY_VERIFY(m_view.shows(u"Last Frame"_s));
    QVERIFY(m_view.shows(u"Next Image Diff"_s));
    QCOMPARE(m_view.item(u"Last Frame"_s)->property("menu").value<QObject *>()->property("width"), 112.0);
    QVERIFY(m_view.click(u"Last Frame"_s));
    QCOMPARE(source->fr(), 7);
}

void TestPlaybackTransport::skipMenusStartSearches_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("entry");
    QTest::addColumn<qlonglong>("first");
    QTest::newRow("back") << u"Skip back"_s << u"Prev Image Diff"_s << 490LL;
    QTest::newRow("forward") << u"Skip forward"_s << u"Next Image Diff"_s << 510LL;
}

void TestPlaybackTransport::skipMenusStartSearches()
{
    QFETCH(const QString, button);
    QFETCH(const QString, entry);
    PlaybackSource *source = m_view.start(0, 1000);
    QVERIFY(source);
    source->pause();
    source->setFr(500);
    source->play();
    source->imgSearch()->setStep(10);
    source->answersAtOnce = false;
    source->asked.clear();
    QVERIFY(m_view.click(button));
    QVERIFY(m_view.click(entry));
    QCOMPARE(source->state(), State::Paused);
    QCOMPARE(source->imgSearch()->state(), ImgSearch::Searching);
    QCOMPARE(source->asked, QList<qlonglong>{500});
    source->answer();
    QTRY_COMPARE(source->asked.size(), 2);
    QTEST(source->asked.last(), "first");
}

void TestPlaybackTransport::skipMenuOpensOnPress()
{
    QVERIFY(m_view.startPaused(0, 10));
    QVERIFY(m_view.press(u"Skip forward"_s));
    QTRY_VERIFY(m_view.shows(u"Last Frame"_s));
    m_view.release();
    QVERIFY(m_view.shows(u"Last Frame"_s));
    QCOMPARE(m_view.source()->fr(), 0);
}

void TestPlaybackTransport::buttonsGrowUnderThePointer()
{
    QVERIFY(m_view.startPaused(0, 10));
    const auto size = [this](const QString &name) {
        auto *content = m_view.item(name)->property("contentItem").value<QQuickItem *>();
        return content->property("font").value<QFont>().pixelSize();
    };
    QTest::mouseMove(m_view.window(), {600, 300});
    QCOMPARE(size(u"Play"_s), 24);
    QTest::mouseMove(m_view.window(), m_view.middle(u"Play"_s));
    QTRY_COMPARE(size(u"Play"_s), 28);
    QCOMPARE(size(u"Rewind"_s), 24);
    QTest::mouseMove(m_view.window(), m_view.middle(u"Start of the range here"_s));
    QTRY_COMPARE(size(u"Start of the range here"_s), 22);
    QCOMPARE(size(u"Play"_s), 24);
    QCOMPARE(size(u"End of the range here"_s), 18);
}

void TestPlaybackTransport::skipMenuClosesOnASecondPress()
{
    QVERIFY(m_view.startPaused(0, 100));
    QVERIFY(m_view.click(m_view.window(), u"Skip forward"_s));
    QTRY_VERIFY(m_view.shows(u"Last Frame"_s));
    QVERIFY(m_view.click(m_view.window(), u"Skip forward"_s));
    QTRY_VERIFY(!m_view.shows(u"Last Frame"_s));
    QTest::mouseMove(m_view.window(), QPoint(5, 5));
    QVERIFY(!m_view.shows(u"Last Frame"_s));
}

void TestPlaybackTransport::everyButtonHasATooltip_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name :
         {"Rewind", "Play backwards", "Play", "Fast forward", "Repeat from the start", "Skip back",
          "Step back", "Go to the trigger", "Step forward", "Skip forward", "Start of the range here",
          "End of the range here", "Start of the range", "Frame", "End of the range", "Play step"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestPlaybackTransport::everyButtonHasATooltip()
{
    QFETCH(const QString, name);
    QVERIFY(m_view.startPaused(0, 10));
    QTest::mouseMove(m_view.window(), {600, 300});
    QVERIFY(!m_view.showsTooltip(name));
    const int usual = QGuiApplication::styleHints()->mousePressAndHoldInterval();
    QGuiApplication::styleHints()->setMousePressAndHoldInterval(50);
    QTest::mouseMove(m_view.window(), m_view.middle(name));
    QTRY_VERIFY(m_view.showsTooltip(name));
    QGuiApplication::styleHints()->setMousePressAndHoldInterval(usual);
}

void TestPlaybackTransport::pressedButtonNeedsNoTooltip()
{
    QVERIFY(m_view.startPaused(0, 10));
    QTest::mouseMove(m_view.window(), {600, 300});
    const int usual = QGuiApplication::styleHints()->mousePressAndHoldInterval();
    QGuiApplication::styleHints()->setMousePressAndHoldInterval(50);
    QTest::mouseMove(m_view.window(), m_view.middle(u"Play"_s));
    QTRY_VERIFY(m_view.showsTooltip(u"Play"_s));
    // It is called "Pause" now.
    QVERIFY(m_view.press(u"Play"_s));
    m_view.release();
    QTRY_VERIFY(!m_view.showsTooltip(u"Play"_s) && !m_view.showsTooltip(u"Pause"_s));
    QTest::mouseMove(m_view.window(), {600, 300});
    QTest::mouseMove(m_view.window(), m_view.middle(u"Pause"_s));
    QTRY_VERIFY(m_view.showsTooltip(u"Pause"_s));
    QGuiApplication::styleHints()->setMousePressAndHoldInterval(usual);
}

VIEW_TEST_MAIN(TestPlaybackTransport)
#include "tst_playback_transport.moc"
