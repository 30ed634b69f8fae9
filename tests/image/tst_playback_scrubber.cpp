#include "tests/image/scrubber_window.h"

#include <QSignalSpy>

#include <limits>

/** Where the handles of the bar of playback may stand. */
class TestPlaybackScrubber : public QObject, private ScrubberWindow
{
    Q_OBJECT

private slots:
    void init() { open(); }
    void cleanup() { close(); }
    void handlesStartWithoutARange();
    void framesAreIgnoredUntilTheRangeIsSet();
    void rangeOpensEverything();
    void impossibleRangeChangesNothing();
    void sameRangeChangesNothing();
    void newRangeTakesTheHandlesAlong();
    void framesKeepTheirPlaces_data();
    void framesKeepTheirPlaces();
    void modelWritesAreNotMoves();
    void positionsFollowTheFrames();
    void triggerStandsAtFrameZero_data();
    void triggerStandsAtFrameZero();
    void handleItemWithoutParentJoinsTheScrubber();
};

void TestPlaybackScrubber::handlesStartWithoutARange()
{
    constexpr qlonglong Lowest = std::numeric_limits<qlonglong>::min();
    constexpr qlonglong Highest = std::numeric_limits<qlonglong>::max();
    QCOMPARE(m_scrubber->firstFr(), Lowest);
    QCOMPARE(m_scrubber->lastFr(), Highest);
    QCOMPARE(m_scrubber->playHead()->type(), 0);
    QCOMPARE(m_scrubber->aMarker()->type(), 1);
    QCOMPARE(m_scrubber->bMarker()->type(), 2);
    QCOMPARE(m_scrubber->trigMarker()->type(), 3);
    QCOMPARE(m_scrubber->playHead()->fr(), Lowest);
    QCOMPARE(m_scrubber->aMarker()->fr(), Lowest);
    QCOMPARE(m_scrubber->bMarker()->fr(), Highest);
    QCOMPARE(m_scrubber->trigMarker()->fr(), 0);
    QCOMPARE(m_scrubber->aMarker()->position(), 0.0);
    QCOMPARE(m_scrubber->bMarker()->position(), 1.0);
}

void TestPlaybackScrubber::framesAreIgnoredUntilTheRangeIsSet()
{
    for (Handle *handle :
         {m_scrubber->playHead(), m_scrubber->aMarker(), m_scrubber->bMarker(), m_scrubber->trigMarker()}) {
        const qlonglong before = handle->fr();
        QSignalSpy changed(handle, &Handle::frChanged);
        QVERIFY(handle->setProperty("fr", 7));
        QCOMPARE(handle->fr(), before);
        QCOMPARE(changed.count(), 0);
    }
}

void TestPlaybackScrubber::rangeOpensEverything()
{
    QSignalSpy firstChanged(m_scrubber, &PlaybackScrubberTemplate::firstFrChanged);
    QSignalSpy lastChanged(m_scrubber, &PlaybackScrubberTemplate::lastFrChanged);
    m_scrubber->setFrRange(-50, 150);
    QCOMPARE(m_scrubber->firstFr(), -50);
    QCOMPARE(m_scrubber->lastFr(), 150);
    QCOMPARE(firstChanged.count(), 1);
    QCOMPARE(lastChanged.count(), 1);
    QCOMPARE(m_scrubber->aMarker()->fr(), -50);
    QCOMPARE(m_scrubber->bMarker()->fr(), 150);
    QCOMPARE(m_scrubber->playHead()->fr(), -50);
    QCOMPARE(m_scrubber->trigMarker()->fr(), 0);
    QCOMPARE(m_scrubber->aMarker()->position(), 0.0);
    QCOMPARE(m_scrubber->bMarker()->position(), 1.0);
    QCOMPARE(m_scrubber->playHead()->position(), 0.0);
    QCOMPARE(m_scrubber->trigMarker()->position(), 0.25);
}

void TestPlaybackScrubber::impossibleRangeChangesNothing()
{
    m_scrubber->setFrRange(0, 100);
    QSignalSpy firstChanged(m_scrubber, &PlaybackScrubberTemplate::firstFrChanged);
    m_scrubber->setFrRange(10, 5);
    QCOMPARE(firstChanged.count(), 0);
    QCOMPARE(m_scrubber->firstFr(), 0);
    QCOMPARE(m_scrubber->lastFr(), 100);
    QCOMPARE(m_scrubber->aMarker()->fr(), 0);
    QCOMPARE(m_scrubber->bMarker()->fr(), 100);
}

void TestPlaybackScrubber::sameRangeChangesNothing()
{
    m_scrubber->setFrRange(0, 100);
    m_scrubber->aMarker()->setFr(20);
    m_scrubber->setFrRange(0, 100);
    QCOMPARE(m_scrubber->aMarker()->fr(), 20);
}

void TestPlaybackScrubber::newRangeTakesTheHandlesAlong()
{
    m_scrubber->setFrRange(0, 100);
    m_scrubber->aMarker()->setFr(90);
    m_scrubber->playHead()->setFr(95);
    m_scrubber->setFrRange(1000, 3000);
    QCOMPARE(m_scrubber->aMarker()->position(), 0.0);
    QCOMPARE(m_scrubber->bMarker()->position(), 1.0);
    QCOMPARE(m_scrubber->playHead()->position(), 0.0);
    QCOMPARE(m_scrubber->playHead()->fr(), 1000);
    QCOMPARE(m_scrubber->trigMarker()->position(), 0.0);
}

void TestPlaybackScrubber::framesKeepTheirPlaces_data()
{
    QTest::addColumn<qlonglong>("written");
    QTest::addColumn<qlonglong>("playHead");
    QTest::addColumn<qlonglong>("aMarker");
    QTest::addColumn<qlonglong>("bMarker");
    // -100 to 100, A at -20 and B at 40.
    QTest::newRow("before the first") << -101LL << -20LL << -100LL << -20LL;
    QTest::newRow("before A") << -50LL << -20LL << -50LL << -20LL;
    QTest::newRow("between") << 10LL << 10LL << 10LL << 10LL;
    QTest::newRow("behind B") << 60LL << 40LL << 40LL << 60LL;
    QTest::newRow("behind the last") << 5000000000LL << 40LL << 40LL << 100LL;
}

void TestPlaybackScrubber::framesKeepTheirPlaces()
{
    QFETCH(qlonglong, written);
    const auto writeTo = [&](Handle *(PlaybackScrubberTemplate::*handle)() const) {
        m_scrubber->setFrRange(0, 1);
        m_scrubber->setFrRange(-100, 100);
        m_scrubber->aMarker()->setFr(-20);
        m_scrubber->bMarker()->setFr(40);
        (m_scrubber->*handle)()->setFr(written);
        return (m_scrubber->*handle)()->fr();
    };
    QTEST(writeTo(&PlaybackScrubberTemplate::playHead), "playHead");
    QTEST(writeTo(&PlaybackScrubberTemplate::aMarker), "aMarker");
    QTEST(writeTo(&PlaybackScrubberTemplate::bMarker), "bMarker");
    QCOMPARE(writeTo(&PlaybackScrubberTemplate::trigMarker), 0);
}

void TestPlaybackScrubber::modelWritesAreNotMoves()
{
    m_scrubber->setFrRange(0, 100);
    QSignalSpy changed(m_scrubber->playHead(), &Handle::frChanged);
    QSignalSpy moved(m_scrubber->playHead(), &Handle::moved);
    m_scrubber->playHead()->setFr(30);
    m_scrubber->playHead()->setFr(30);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(moved.count(), 0);
}

void TestPlaybackScrubber::positionsFollowTheFrames()
{
    m_scrubber->setFrRange(-50, 150);
    QSignalSpy changed(m_scrubber->playHead(), &Handle::positionChanged);
    m_scrubber->playHead()->setFr(0);
    QCOMPARE(m_scrubber->playHead()->position(), 0.25);
    m_scrubber->bMarker()->setFr(100);
    QCOMPARE(m_scrubber->bMarker()->position(), 0.75);
    m_scrubber->aMarker()->setFr(50);
    QCOMPARE(m_scrubber->aMarker()->position(), 0.5);
    QCOMPARE(changed.count(), 1);
    m_scrubber->playHead()->setFr(51);
    QCOMPARE(m_scrubber->playHead()->position(), 0.505);
}

void TestPlaybackScrubber::triggerStandsAtFrameZero_data()
{
    QTest::addColumn<qlonglong>("firstFr");
    QTest::addColumn<qlonglong>("lastFr");
    QTest::addColumn<double>("position");
    QTest::newRow("inside") << -30LL << 70LL << 0.3;
    QTest::newRow("before the range") << 10LL << 20LL << 0.0;
    QTest::newRow("behind the range") << -20LL << -10LL << 1.0;
}

void TestPlaybackScrubber::triggerStandsAtFrameZero()
{
    QFETCH(qlonglong, firstFr);
    QFETCH(qlonglong, lastFr);
    m_scrubber->setFrRange(firstFr, lastFr);
    m_scrubber->trigMarker()->setFr(15);
    QCOMPARE(m_scrubber->trigMarker()->fr(), 0);
    QTEST(m_scrubber->trigMarker()->position(), "position");
}

void TestPlaybackScrubber::handleItemWithoutParentJoinsTheScrubber()
{
    QQuickItem item;
    QQuickItem elsewhere;
    QQuickItem child(&elsewhere);
    Handle *handle = m_scrubber->trigMarker();
    QSignalSpy changed(handle, &Handle::handleChanged);
    handle->setHandle(&item);
    QCOMPARE(item.parentItem(), m_scrubber);
    QCOMPARE(changed.count(), 1);
    handle->setHandle(&child);
    QCOMPARE(child.parentItem(), &elsewhere);
    QCOMPARE(handle->handle(), &child);
    QCOMPARE(changed.count(), 2);
    handle->setHandle(nullptr);
}

QTEST_MAIN(TestPlaybackScrubber)
#include "tst_playback_scrubber.moc"
