#include "tests/support/playback_source.h"
#include "tests/support/vesk_test_main.h"

#include <QSignalSpy>

#include <cmath>

namespace
{
using State = PlaybackVeskObject::State;

constexpr qint64 StepNs = 33333333;
constexpr qint64 SecondNs = 1000000000;

/** A selected source whose first frame never comes, so that it asks for no other. */
void prepare(PlaybackSource &source, int firstFr, int lastFr)
{
    source.setSelected(true);
    source.open(firstFr, lastFr);
}

void enter(PlaybackSource &source, State state)
{
    switch (state) {
    case PlaybackVeskObject::Play:
        return source.play();
    case PlaybackVeskObject::PlayRev:
        return source.playRev();
    case PlaybackVeskObject::PlayFastFwd:
        return source.playFastFwd();
    case PlaybackVeskObject::PlayFastRev:
        return source.playFastRev();
    default:
        return source.pause();
    }
}

qlonglong framesPerStep(State state)
{
    switch (state) {
    case PlaybackVeskObject::Play:
        return 1;
    case PlaybackVeskObject::PlayRev:
        return -1;
    case PlaybackVeskObject::PlayFastFwd:
        return 10;
    case PlaybackVeskObject::PlayFastRev:
        return -10;
    default:
        return 0;
    }
}

const QList<State> states{PlaybackVeskObject::Paused, PlaybackVeskObject::Play, PlaybackVeskObject::PlayRev,
                          PlaybackVeskObject::PlayFastFwd, PlaybackVeskObject::PlayFastRev};
} // namespace

/** A source that plays, on a clock that the test moves. */
class TestPlaybackPlay : public QObject
{
    Q_OBJECT

private slots:
    void everyStateFollowsFromEveryOther_data()
    {
        QTest::addColumn<State>("from");
        QTest::addColumn<State>("to");
        for (const State from : states) {
            for (const State to : states)
                QTest::addRow("%d to %d", from, to) << from << to;
        }
    }
    void everyStateFollowsFromEveryOther()
    {
        QFETCH(State, from);
        QFETCH(State, to);
        PlaybackSource source;
        prepare(source, -1000, 1000);
        source.setFr(0);
        enter(source, from);
        QSignalSpy changed(&source, &PlaybackVeskObject::stateChanged);
        enter(source, to);
        QCOMPARE(source.state(), to);
        QCOMPARE(changed.count(), from == to ? 0 : 1);
        source.pass(StepNs);
        QCOMPARE(source.fr(), framesPerStep(to));
        source.pass(2 * StepNs);
        QCOMPARE(source.fr(), 3 * framesPerStep(to));
    }

    void startingToPlayStartsTheClockAnew()
    {
        PlaybackSource source;
        prepare(source, 0, 100);
        source.pass(StepNs - 1);
        source.play();
        source.pass(StepNs - 1);
        QCOMPARE(source.fr(), 0);
        source.pass(1);
        QCOMPARE(source.fr(), 1);
    }

    void endOfTheRangeTurnsPingPongAround_data()
    {
        QTest::addColumn<State>("from");
        QTest::addColumn<qlonglong>("start");
        QTest::addColumn<State>("to");
        QTest::addColumn<qlonglong>("end");
        QTest::addColumn<qlonglong>("next");
        QTest::newRow("Play") << PlaybackVeskObject::Play << 50LL << PlaybackVeskObject::PlayRev << 50LL
                              << 49LL;
        QTest::newRow("PlayRev") << PlaybackVeskObject::PlayRev << 10LL << PlaybackVeskObject::Play << 10LL
                                 << 11LL;
        QTest::newRow("PlayFastFwd") << PlaybackVeskObject::PlayFastFwd << 45LL
                                     << PlaybackVeskObject::PlayFastRev << 50LL << 40LL;
        QTest::newRow("PlayFastRev") << PlaybackVeskObject::PlayFastRev << 15LL
                                     << PlaybackVeskObject::PlayFastFwd << 10LL << 20LL;
    }
    void endOfTheRangeTurnsPingPongAround()
    {
        QFETCH(State, from);
        QFETCH(qlonglong, start);
        PlaybackSource source;
        prepare(source, 0, 100);
        source.setAFr(10);
        source.setBFr(50);
        source.setRepeatMode(PlaybackVeskObject::RepeatPingPong);
        source.setFr(start);
        enter(source, from);
        QSignalSpy changed(&source, &PlaybackVeskObject::stateChanged);
        source.pass(StepNs);
        QTEST(source.fr(), "end");
        QTEST(source.state(), "to");
        QCOMPARE(changed.count(), 1);
        source.pass(StepNs);
        QTEST(source.fr(), "next");
        QCOMPARE(changed.count(), 1);
    }

    void endOfTheFramesHeldTurnsPingPongAroundAtTheMarker()
    {
        PlaybackSource source;
        prepare(source, 0, 100);
        source.setBFr(120, true);
        source.setRepeatMode(PlaybackVeskObject::RepeatPingPong);
        source.setFr(100);
        source.pass(StepNs);
        QCOMPARE(source.fr(), 120);
        QCOMPARE(source.state(), PlaybackVeskObject::PlayRev);
    }

    void loopGoesOnAtTheOtherMarker_data()
    {
        QTest::addColumn<State>("state");
        QTest::addColumn<qlonglong>("start");
        QTest::addColumn<qlonglong>("lands");
        QTest::addColumn<qlonglong>("next");
        QTest::newRow("Play") << PlaybackVeskObject::Play << 50LL << 10LL << 11LL;
        QTest::newRow("PlayRev") << PlaybackVeskObject::PlayRev << 10LL << 50LL << 49LL;
        QTest::newRow("PlayFastFwd") << PlaybackVeskObject::PlayFastFwd << 45LL << 10LL << 20LL;
        QTest::newRow("PlayFastRev") << PlaybackVeskObject::PlayFastRev << 15LL << 50LL << 40LL;
    }
    void loopGoesOnAtTheOtherMarker()
    {
        QFETCH(State, state);
        QFETCH(qlonglong, start);
        PlaybackSource source;
        prepare(source, 0, 100);
        source.setAFr(10);
        source.setBFr(50);
        source.setFr(start);
        enter(source, state);
        QSignalSpy stateChanged(&source, &PlaybackVeskObject::stateChanged);
        source.pass(StepNs);
        QTEST(source.fr(), "lands");
        source.pass(StepNs);
        QTEST(source.fr(), "next");
        QCOMPARE(stateChanged.count(), 0);
    }

    void rangeOfOneFrameStandsStill()
    {
        for (const auto mode : {PlaybackVeskObject::RepeatLoop, PlaybackVeskObject::RepeatPingPong}) {
            PlaybackSource source;
            prepare(source, 7, 7);
            source.setRepeatMode(mode);
            QSignalSpy changed(&source, &PlaybackVeskObject::frChanged);
            for (int i = 0; i < 5; ++i)
                source.pass(StepNs);
            QCOMPARE(source.fr(), 7);
            QCOMPARE(changed.count(), 0);
        }
    }

    void markerMovedPastThePlayheadBringsItBack()
    {
        PlaybackSource source;
        prepare(source, 0, 100);
        source.setFr(30);
        source.setAFr(40);
        QCOMPARE(source.fr(), 30);
        source.tick();
        QCOMPARE(source.fr(), 100);
        source.setBFr(60);
        source.tick();
        QCOMPARE(source.fr(), 40);
    }

    void secondOfPlayIsRateTimesStep()
    {
        PlaybackSource source;
        prepare(source, 0, 1000);
        source.setPlayFrRate(30);
        source.setPlayStep(3);
        source.setFr(5);
        source.pass(SecondNs);
        QCOMPARE(source.fr(), 95);
    }

    void fastPlayCoversTenTimesTheStep()
    {
        PlaybackSource source;
        prepare(source, 0, 10000);
        source.setPlayStep(3);
        source.playFastFwd();
        source.setFr(0);
        source.pass(SecondNs);
        QCOMPARE(source.fr(), 900);
    }

    void busyWindowMakesTheNumberJump()
    {
        PlaybackSource source;
        prepare(source, 0, 100);
        source.pass(7 * StepNs + 5);
        QCOMPARE(source.fr(), 7);
        source.pass(StepNs - 6);
        QCOMPARE(source.fr(), 7);
        source.pass(1);
        QCOMPARE(source.fr(), 8);
    }

    void rangeBeyondTwoToTheThirtyFirstPlaysThrough()
    {
        PlaybackSource source;
        prepare(source, std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
        source.setPlayStep(10000000);
        source.playFastFwd();
        source.pass(42 * StepNs);
        QCOMPARE(source.fr(), 2052516352);
        source.pass(StepNs);
        QCOMPARE(source.fr(), -2147483648LL);
        source.playFastRev();
        source.pass(StepNs);
        QCOMPARE(source.fr(), 2147483647LL);
        source.pass(30 * StepNs);
        QCOMPARE(source.fr(), -852516353LL);
    }

    void sourceThatIsNotSelectedHoldsItsFrame()
    {
        PlaybackSource source;
        prepare(source, 0, 100);
        source.pass(5 * StepNs);
        source.setSelected(false);
        for (int i = 0; i < 10; ++i)
            source.pass(SecondNs);
        QCOMPARE(source.fr(), 5);
        source.setSelected(true);
        source.tick();
        QCOMPARE(source.fr(), 5);
        source.pass(StepNs);
        QCOMPARE(source.fr(), 6);
    }

    void blockedSourceHoldsItsFrame()
    {
        PlaybackSource source;
        prepare(source, 0, 100);
        source.blocked = true;
        for (int i = 0; i < 10; ++i)
            source.pass(SecondNs);
        QCOMPARE(source.fr(), 0);
        source.blocked = false;
        source.pass(StepNs);
        QCOMPARE(source.fr(), 1);
    }

    void pauseHoldsThroughTime()
    {
        PlaybackSource source;
        prepare(source, 0, 100);
        source.answersAtOnce = true;
        source.answer();
        source.pass(StepNs);
        source.pause();
        for (int i = 0; i < 10; ++i)
            source.pass(SecondNs);
        QCOMPARE(source.fr(), 1);
        source.play();
        source.tick();
        QCOMPARE(source.fr(), 1);
    }

    void frameSetWhilePlayingIsWherePlayGoesOn()
    {
        PlaybackSource source;
        prepare(source, 0, 100);
        source.pass(StepNs - 1);
        source.setFr(40);
        source.pass(StepNs - 1);
        QCOMPARE(source.fr(), 40);
        source.pass(1);
        QCOMPARE(source.fr(), 41);
    }

    void stepWhilePlayingIsWherePlayGoesOn()
    {
        PlaybackSource source;
        prepare(source, 0, 100);
        source.pass(StepNs - 1);
        source.stepFrFwd();
        QCOMPARE(source.fr(), 1);
        source.pass(StepNs - 1);
        QCOMPARE(source.fr(), 1);
        source.stepFrRev();
        source.stepFrRev();
        QCOMPARE(source.fr(), 100);
        QCOMPARE(source.state(), PlaybackVeskObject::Play);
        source.pass(StepNs);
        QCOMPARE(source.fr(), 0);
    }

    void changeOfRateOrStepEndsTheStepThatHadBegun()
    {
        PlaybackSource source;
        prepare(source, 0, 1000);
        source.playFastRev();
        source.setFr(500);
        source.setPlayStep(2);
        QCOMPARE(source.fr(), 500);
        source.tick();
        QCOMPARE(source.fr(), 480);
        source.setPlayFrRate(50);
        source.tick();
        QCOMPARE(source.fr(), 460);
        source.pass(20000000);
        QCOMPARE(source.fr(), 440);
        source.pause();
        source.setPlayStep(9);
        source.setPlayFrRate(10);
        source.tick();
        QCOMPARE(source.fr(), 440);
    }

    void hourOfPlayDriftsByLessThanAFrame_data()
    {
        QTest::addColumn<double>("frRate");
        QTest::addColumn<qint64>("tickNs");
        QTest::addColumn<qlonglong>("atTheEnd");
        // 3600 s in steps of 41,708,333 ns and of 16,683,333 ns.
        QTest::newRow("23.976") << 23.976 << qint64(20854166) << 86313LL;
        QTest::newRow("59.94") << 59.94 << qint64(8341666) << 215784LL;
    }
    void hourOfPlayDriftsByLessThanAFrame()
    {
        QFETCH(double, frRate);
        QFETCH(qint64, tickNs);
        PlaybackSource source;
        prepare(source, 0, 1000000);
        source.setPlayFrRate(frRate);
        source.setFr(0, true);
        const qint64 startNs = *source.nowNs;
        const qint64 hourNs = 3600 * SecondNs;
        // Ticks come late by anything up to 24 ms, in a pattern that does not repeat with the frames.
        for (qint64 i = 1, nextNs = 0; nextNs < hourNs; ++i) {
            nextNs = std::min(hourNs, i * tickNs + (i * 7919) % 24 * 1000000);
            source.pass(std::max<qint64>(0, startNs + nextNs - *source.nowNs));
            const double seconds = double(*source.nowNs - startNs) / double(SecondNs);
            const double drift = double(source.fr()) - seconds * frRate;
            if (std::abs(drift) >= 1.0)
                QFAIL(qPrintable(QStringLiteral("%1 frames off after %2 s").arg(drift).arg(seconds)));
        }
        QCOMPARE(*source.nowNs - startNs, hourNs);
        QTEST(source.fr(), "atTheEnd");
    }
};

VESK_TEST_MAIN(TestPlaybackPlay)
#include "tst_playback_play.moc"
