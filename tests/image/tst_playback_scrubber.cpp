#include "image/playback_scrubber_template.h"

#include <QQuickWindow>
#include <QSignalSpy>
#include <QTest>

#include <cmath>
#include <limits>
#include <memory>

using Handle = PlaybackScrubberHandleObject;

/** The bar of playback, worked with real pointer events: 200 wide at (50, 40) of a window. */
class TestPlaybackScrubber : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void handlesStartWithoutARange();
    void framesAreIgnoredUntilTheRangeIsSet();
    void rangeOpensEverything();
    void impossibleRangeChangesNothing();
    void sameRangeChangesNothing();
    void rangeOfOneFrameStandsAtTheStart();
    void newRangeTakesTheHandlesAlong();
    void framesKeepTheirPlaces_data();
    void framesKeepTheirPlaces();
    void modelWritesAreNotMoves();
    void positionsFollowTheFrames();
    void triggerStandsAtFrameZero_data();
    void triggerStandsAtFrameZero();
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
    void handleItemWithoutParentJoinsTheScrubber();
    void rangeBeyondTwoToTheThirtyFirst();
    void widestRangeIsSafe();

private:
    static constexpr QPoint Origin{50, 40};

    QQuickItem *addItem(Handle *handle);
    /** Puts the items where the handles are, as a view does. */
    void layOut();
    void press(int x) { QTest::mousePress(m_window.get(), Qt::LeftButton, {}, Origin + QPoint(x, 10)); }
    void moveTo(int x) { QTest::mouseMove(m_window.get(), Origin + QPoint(x, 10)); }
    void release(int x) { QTest::mouseRelease(m_window.get(), Qt::LeftButton, {}, Origin + QPoint(x, 10)); }

    std::unique_ptr<QQuickWindow> m_window;
    PlaybackScrubberTemplate *m_scrubber = nullptr;
};

void TestPlaybackScrubber::init()
{
    m_window = std::make_unique<QQuickWindow>();
    m_window->resize(300, 100);
    m_scrubber = new PlaybackScrubberTemplate(m_window->contentItem());
    m_scrubber->setPosition(Origin);
    m_scrubber->setSize(QSizeF(200, 20));
    for (Handle *handle : {m_scrubber->playHead(), m_scrubber->aMarker(), m_scrubber->bMarker()})
        addItem(handle);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void TestPlaybackScrubber::cleanup()
{
    QTest::mouseMove(m_window.get(), QPoint(1, 1));
    m_window.reset();
}

QQuickItem *TestPlaybackScrubber::addItem(Handle *handle)
{
    auto *item = new QQuickItem(m_scrubber);
    item->setSize(QSizeF(11, 20));
    handle->setHandle(item);
    return item;
}

void TestPlaybackScrubber::layOut()
{
    for (const Handle *handle : {m_scrubber->playHead(), m_scrubber->aMarker(), m_scrubber->bMarker()})
        handle->handle()->setX(std::round(handle->position() * 199) - 5);
}

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

void TestPlaybackScrubber::rangeOfOneFrameStandsAtTheStart()
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

void TestPlaybackScrubber::pressOnTheTrackMovesThePlayHead_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<qlonglong>("fr");
    // 1000 frames beyond the first on 200 pixels: five a pixel.
    QTest::newRow("middle") << 100 << 0LL;
    QTest::newRow("a pixel on") << 101 << 5LL;
    QTest::newRow("beside A") << 7 << -465LL;
    QTest::newRow("beside B") << 190 << 450LL;
}

void TestPlaybackScrubber::pressOnTheTrackMovesThePlayHead()
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

void TestPlaybackScrubber::pressBesideTheMarkersStopsAtThem()
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

void TestPlaybackScrubber::markersWinOverThePlayHead()
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

void TestPlaybackScrubber::draggedPlayHeadStaysBetweenTheMarkers()
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

void TestPlaybackScrubber::draggedMarkerTakesThePlayHeadAlong()
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

void TestPlaybackScrubber::draggedMarkersDoNotCross()
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

void TestPlaybackScrubber::dragBeyondTheBarStopsAtTheEnds()
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

void TestPlaybackScrubber::moveWithoutAPressMovesNothing()
{
    m_scrubber->setFrRange(0, 1000);
    layOut();
    QSignalSpy moved(m_scrubber->playHead(), &Handle::moved);
    moveTo(50);
    moveTo(100);
    QCOMPARE(m_scrubber->playHead()->fr(), 0);
    QCOMPARE(moved.count(), 0);
}

void TestPlaybackScrubber::otherButtonsAreLetThrough()
{
    m_scrubber->setFrRange(0, 1000);
    layOut();
    QTest::mouseClick(m_window.get(), Qt::RightButton, {}, Origin + QPoint(100, 10));
    QCOMPARE(m_scrubber->playHead()->fr(), 0);
}

void TestPlaybackScrubber::lostGrabReleases()
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

void TestPlaybackScrubber::pointerTellsWhatItIsOver()
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

void TestPlaybackScrubber::rangeBeyondTwoToTheThirtyFirst()
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

void TestPlaybackScrubber::widestRangeIsSafe()
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

QTEST_MAIN(TestPlaybackScrubber)
#include "tst_playback_scrubber.moc"
