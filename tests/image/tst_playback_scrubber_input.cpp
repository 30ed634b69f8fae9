#include "tests/image/scrubber_window.h"

#include <QSignalSpy>

#include <limits>

/** The bar of playback, worked with real pointer events. */
class TestPlaybackScrubberInput : public QObject, private ScrubberWindow
{
    Q_OBJECT

private slots:
    void init() { open(); }
    void cleanup() { close(); }
    void rangeOfOneFrameStandsAtTheStart();
    void pressOnTheTrackMovesThePlayHead_data();
    void pressOnTheTrackMovesThePlayHead();
    void pressBesideTheMarkersStopsAtThem();
    void markersWinOverThePlayHead();
    void draggedPlayHeadStaysBetweenTheMarkers();
    void draggedMarkerTakesThePlayHeadAlong();
    void draggedMarkersDoNotCross();
    void dragBeyondTheBarStopsAtTheEnds();
    void moveWithoutAPressMovesNothing();
    void otherButtonsAreLetThrough();
    void lostGrabReleases();
    void pointerTellsWhatItIsOver();
    void rangeBeyondTwoToTheThirtyFirst();
    void widestRangeIsSafe();
};

void TestPlaybackScrubberInput::rangeOfOneFrameStandsAtTheStart()
{
    m_scrubber->setFrRange(5, 5);
    for (const Handle *handle :
         {m_scrubber->playHead(), m_scrubber->aMarker(), m_scrubber->bMarker(), m_scrubber->trigMarker()})
        QCOMPARE(handle->position(), 0.0);
    layOut();
    press(150);
    QCOMPARE(m_scrubber->playHead()->fr(), 5);
    release(150);
}

void TestPlaybackScrubberInput::pressOnTheTrackMovesThePlayHead_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<qlonglong>("fr");
    // 1000 frames beyond the first on 200 pixels: five a pixel.
    QTest::newRow("middle") << 100 << 0LL;
    QTest::newRow("a pixel on") << 101 << 5LL;
    QTest::newRow("beside A") << 7 << -465LL;
    QTest::newRow("beside B") << 190 << 450LL;
}

void TestPlaybackScrubberInput::pressOnTheTrackMovesThePlayHead()
{
    QFETCH(int, x);
    m_scrubber->setFrRange(-500, 500);
    layOut();
    QSignalSpy moved(m_scrubber->playHead(), &Handle::moved);
    press(x);
    QTEST(m_scrubber->playHead()->fr(), "fr");
    QVERIFY(m_scrubber->playHead()->pressed());
    QVERIFY(m_scrubber->keepMouseGrab());
    QCOMPARE(moved.count(), 1);
    release(x);
    QVERIFY(!m_scrubber->playHead()->pressed());
}

void TestPlaybackScrubberInput::pressBesideTheMarkersStopsAtThem()
{
    m_scrubber->setFrRange(0, 1000);
    m_scrubber->aMarker()->setFr(200);
    m_scrubber->bMarker()->setFr(600);
    layOut();
    press(180);
    QCOMPARE(m_scrubber->playHead()->fr(), 600);
    release(180);
    layOut();
    press(10);
    QCOMPARE(m_scrubber->playHead()->fr(), 200);
    release(10);
}

void TestPlaybackScrubberInput::markersWinOverThePlayHead()
{
    m_scrubber->setFrRange(0, 1000);
    m_scrubber->playHead()->setFr(500);
    m_scrubber->aMarker()->setFr(500);
    m_scrubber->bMarker()->setFr(500);
    layOut();
    press(100);
    QVERIFY(m_scrubber->aMarker()->pressed());
    QVERIFY(!m_scrubber->bMarker()->pressed());
    QVERIFY(!m_scrubber->playHead()->pressed());
    QCOMPARE(m_scrubber->cursor().shape(), Qt::SizeHorCursor);
    release(100);
    m_scrubber->aMarker()->setFr(0);
    layOut();
    press(100);
    QVERIFY(m_scrubber->bMarker()->pressed());
    QCOMPARE(m_scrubber->bMarker()->fr(), 500);
    release(100);
}

void TestPlaybackScrubberInput::draggedPlayHeadStaysBetweenTheMarkers()
{
    m_scrubber->setFrRange(0, 1000);
    m_scrubber->aMarker()->setFr(200);
    m_scrubber->bMarker()->setFr(600);
    m_scrubber->playHead()->setFr(400);
    layOut();
    QSignalSpy moved(m_scrubber->playHead(), &Handle::moved);
    QSignalSpy bMoved(m_scrubber->bMarker(), &Handle::moved);
    press(80);
    moveTo(90);
    QCOMPARE(m_scrubber->playHead()->fr(), 450);
    moveTo(160);
    QCOMPARE(m_scrubber->playHead()->fr(), 600);
    moveTo(20);
    QCOMPARE(m_scrubber->playHead()->fr(), 200);
    release(20);
    QCOMPARE(moved.count(), 4);
    QCOMPARE(bMoved.count(), 0);
    QCOMPARE(m_scrubber->bMarker()->fr(), 600);
}

void TestPlaybackScrubberInput::draggedMarkerTakesThePlayHeadAlong()
{
    m_scrubber->setFrRange(0, 1000);
    m_scrubber->playHead()->setFr(800);
    layOut();
    QStringList moves;
    connect(m_scrubber->aMarker(), &Handle::moved, this,
            [&] { moves << QStringLiteral("A %1").arg(m_scrubber->aMarker()->fr()); });
    connect(m_scrubber->bMarker(), &Handle::moved, this,
            [&] { moves << QStringLiteral("B %1").arg(m_scrubber->bMarker()->fr()); });
    connect(m_scrubber->playHead(), &Handle::moved, this,
            [&] { moves << QStringLiteral("head %1").arg(m_scrubber->playHead()->fr()); });
    press(2);
    QVERIFY(moves.isEmpty());
    moveTo(60);
    release(60);
    layOut();
    press(198);
    moveTo(100);
    release(100);
    QCOMPARE(moves, (QStringList{"A 300", "head 300", "B 500", "head 500"}));
}

void TestPlaybackScrubberInput::draggedMarkersDoNotCross()
{
    m_scrubber->setFrRange(0, 1000);
    m_scrubber->bMarker()->setFr(600);
    layOut();
    press(0);
    moveTo(180);
    QCOMPARE(m_scrubber->aMarker()->fr(), 600);
    QCOMPARE(m_scrubber->playHead()->fr(), 600);
    moveTo(40);
    QCOMPARE(m_scrubber->aMarker()->fr(), 200);
    release(40);
    layOut();
    press(121);
    moveTo(10);
    QCOMPARE(m_scrubber->bMarker()->fr(), 200);
    QCOMPARE(m_scrubber->playHead()->fr(), 200);
    release(10);
}

void TestPlaybackScrubberInput::dragBeyondTheBarStopsAtTheEnds()
{
    m_scrubber->setFrRange(-500, 500);
    layOut();
    press(100);
    moveTo(-45);
    QCOMPARE(m_scrubber->playHead()->fr(), -500);
    moveTo(245);
    QCOMPARE(m_scrubber->playHead()->fr(), 500);
    release(245);
}

void TestPlaybackScrubberInput::moveWithoutAPressMovesNothing()
{
    m_scrubber->setFrRange(0, 1000);
    layOut();
    QSignalSpy moved(m_scrubber->playHead(), &Handle::moved);
    moveTo(50);
    moveTo(100);
    QCOMPARE(m_scrubber->playHead()->fr(), 0);
    QCOMPARE(moved.count(), 0);
}

void TestPlaybackScrubberInput::otherButtonsAreLetThrough()
{
    m_scrubber->setFrRange(0, 1000);
    layOut();
    QTest::mouseClick(m_window.get(), Qt::RightButton, {}, Origin + QPoint(100, 10));
    QCOMPARE(m_scrubber->playHead()->fr(), 0);
}

void TestPlaybackScrubberInput::lostGrabReleases()
{
    m_scrubber->setFrRange(0, 1000);
    layOut();
    press(100);
    m_scrubber->ungrabMouse();
    QVERIFY(!m_scrubber->playHead()->pressed());
    moveTo(150);
    QCOMPARE(m_scrubber->playHead()->fr(), 500);
    release(150);
}

void TestPlaybackScrubberInput::pointerTellsWhatItIsOver()
{
    m_scrubber->setFrRange(0, 1000);
    m_scrubber->aMarker()->setFr(200);
    m_scrubber->playHead()->setFr(500);
    layOut();
    const auto hovered = [this] {
        QString names;
        names += m_scrubber->aMarker()->hovered() ? u"A" : u"";
        names += m_scrubber->bMarker()->hovered() ? u"B" : u"";
        names += m_scrubber->playHead()->hovered() ? u"head" : u"";
        return names;
    };
    moveTo(40);
    QCOMPARE(hovered(), "A");
    QCOMPARE(m_scrubber->cursor().shape(), Qt::SizeHorCursor);
    moveTo(100);
    QCOMPARE(hovered(), "head");
    QCOMPARE(m_scrubber->cursor().shape(), Qt::ArrowCursor);
    moveTo(198);
    QCOMPARE(hovered(), "B");
    QCOMPARE(m_scrubber->cursor().shape(), Qt::SizeHorCursor);
    moveTo(150);
    QCOMPARE(hovered(), "");
    QCOMPARE(m_scrubber->cursor().shape(), Qt::ArrowCursor);
    moveTo(40);
    QTest::mouseMove(m_window.get(), QPoint(5, 5));
    QCOMPARE(hovered(), "");
    QCOMPARE(m_scrubber->cursor().shape(), Qt::ArrowCursor);
}

void TestPlaybackScrubberInput::rangeBeyondTwoToTheThirtyFirst()
{
    m_scrubber->setFrRange(-4000000000, 6000000000);
    layOut();
    press(150);
    QCOMPARE(m_scrubber->playHead()->fr(), 3500000000);
    QCOMPARE(m_scrubber->playHead()->position(), 0.75);
    release(150);
    m_scrubber->playHead()->setFr(5999999999);
    QCOMPARE(m_scrubber->playHead()->fr(), 5999999999);
    QVERIFY(m_scrubber->playHead()->position() < 1.0);
}

void TestPlaybackScrubberInput::widestRangeIsSafe()
{
    constexpr qlonglong Lowest = std::numeric_limits<qlonglong>::min();
    constexpr qlonglong Highest = std::numeric_limits<qlonglong>::max();
    m_scrubber->setFrRange(Lowest + 1, Highest);
    layOut();
    press(100);
    moveTo(245);
    moveTo(-45);
    QCOMPARE(m_scrubber->playHead()->fr(), Lowest + 1);
    release(-45);
}

QTEST_MAIN(TestPlaybackScrubberInput)
#include "tst_playback_scrubber_input.moc"
