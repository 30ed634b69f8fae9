#include "image/playback_scrubber_template.h"
#include "tests/qml/playback_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

/** The bar of a recording bound to a source. */
class TestPlaybackTimeline : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void barShowsWhereTheSourceStands();
    void barOpensWhenTheValuesArrive();
    void barTakesUpASourceInTheMiddle();
    void barFollowsTheSource();
    void clickShowsThatFrame();
    void draggedPlayHeadStaysBetweenTheMarkers();
    void draggedMarkersAreWritten();
    void markersDoNotCross();
    void playHeadFollowsWhenTheMarkersLetItGo();
    void playHeadStaysWhereTheFrameIsWhenAMarkerPassesIt();
    void dragGoesOnWhilePlaying();

private:
    PlaybackSource *shown(PlaybackSource *source);
    /** A point of the window where the pointer means the frame, to the nearest pixel. */
    QPoint pointOf(double fr) const;

    PlaybackFixture m_view;
    PlaybackScrubberTemplate *m_bar = nullptr;
};

void TestPlaybackTimeline::cleanup()
{
    QCOMPARE(m_view.end(), QStringList());
}

PlaybackSource *TestPlaybackTimeline::shown(PlaybackSource *source)
{
    ViewFixture::settle(m_view.window());
    m_bar = qobject_cast<PlaybackScrubberTemplate *>(m_view.item(u"Frames"_s, QAccessible::Graphic));
    return m_bar ? source : nullptr;
}

QPoint TestPlaybackTimeline::pointOf(double fr) const
{
    const double first = double(m_bar->firstFr());
    const double part = (fr - first) / (double(m_bar->lastFr()) - first);
    return m_bar->mapToScene({part * m_bar->width(), m_bar->height() - 10}).toPoint();
}

void TestPlaybackTimeline::barShowsWhereTheSourceStands()
{
    PlaybackSource *source = shown(m_view.startPaused(-100, 300));
    QVERIFY(source);
    QCOMPARE(m_bar->firstFr(), -100);
    QCOMPARE(m_bar->lastFr(), 300);
    QCOMPARE(m_bar->aMarker()->fr(), -100);
    QCOMPARE(m_bar->bMarker()->fr(), 300);
    QCOMPARE(m_bar->playHead()->fr(), -100);
    QCOMPARE(m_bar->trigMarker()->position(), 0.25);
}

void TestPlaybackTimeline::barOpensWhenTheValuesArrive()
{
    PlaybackSource *source = shown(m_view.startUnread());
    QVERIFY(source);
    QVERIFY(!m_bar->hasRange());
    source->setFr(7, true);
    QVERIFY(!m_bar->hasRange());
    source->open(-100, 300);
    QCOMPARE(m_bar->firstFr(), -100);
    QCOMPARE(m_bar->lastFr(), 300);
    QCOMPARE(m_bar->playHead()->fr(), -100);
    source->setFr(7);
    QCOMPARE(m_bar->playHead()->fr(), 7);
}

void TestPlaybackTimeline::barTakesUpASourceInTheMiddle()
{
    PlaybackSource *source = m_view.startPaused(-100, 300);
    QVERIFY(source);
    source->setAFr(-50);
    source->setBFr(200);
    source->setFr(30);
    m_view.show(); // anew, as when the source is selected again
    QVERIFY(shown(source));
    QCOMPARE(m_bar->aMarker()->fr(), -50);
    QCOMPARE(m_bar->bMarker()->fr(), 200);
    QCOMPARE(m_bar->playHead()->fr(), 30);
    QCOMPARE(source->aFr(), -50);
    QCOMPARE(source->bFr(), 200);
    QCOMPARE(source->fr(), 30);
}

void TestPlaybackTimeline::barFollowsTheSource()
{
    PlaybackSource *source = shown(m_view.start(0, 400));
    QVERIFY(source);
    source->pass(PlaybackFixture::Second);
    QCOMPARE(m_bar->playHead()->fr(), 30);
    source->setAFr(20);
    source->setBFr(100);
    QCOMPARE(m_bar->aMarker()->position(), 0.05);
    QCOMPARE(m_bar->bMarker()->position(), 0.25);
}

void TestPlaybackTimeline::clickShowsThatFrame()
{
    PlaybackSource *source = shown(m_view.startPaused(-1000, 1000));
    QVERIFY(source);
    const QPoint point = pointOf(500);
    const double x = m_bar->mapFromScene(point).x();
    QTest::mouseClick(m_view.window(), Qt::LeftButton, {}, point);
    QCOMPARE(source->fr(), -1000 + qlonglong(std::round(2000 * (x / m_bar->width()))));
    QVERIFY(source->fr() > 490 && source->fr() < 510);
    QCOMPARE(m_view.shownText(u"Frame"_s), QString::number(source->fr()));
    QCOMPARE(source->aFr(), -1000);
}

void TestPlaybackTimeline::draggedPlayHeadStaysBetweenTheMarkers()
{
    PlaybackSource *source = shown(m_view.startPaused(-1000, 1000));
    QVERIFY(source);
    source->setAFr(-500);
    source->setBFr(500);
    QTest::mousePress(m_view.window(), Qt::LeftButton, {}, pointOf(0));
    QTest::mouseMove(m_view.window(), pointOf(900));
    QCOMPARE(source->fr(), 500);
    QTest::mouseMove(m_view.window(), pointOf(-900));
    QCOMPARE(source->fr(), -500);
    QTest::mouseRelease(m_view.window(), Qt::LeftButton, {}, pointOf(-900));
    QCOMPARE(source->aFr(), -500);
    QCOMPARE(source->bFr(), 500);
}

void TestPlaybackTimeline::draggedMarkersAreWritten()
{
    PlaybackSource *source = shown(m_view.startPaused(-1000, 1000));
    QVERIFY(source);
    for (const double end : {-1.0, 1.0}) {
        QTest::mousePress(m_view.window(), Qt::LeftButton, {}, pointOf(end * 975));
        QTest::mouseMove(m_view.window(), pointOf(end * 700));
        QTest::mouseMove(m_view.window(), pointOf(end * 400));
        QTest::mouseRelease(m_view.window(), Qt::LeftButton, {}, pointOf(end * 400));
        const qlonglong written = end < 0 ? source->aFr() : source->bFr();
        QVERIFY(qAbs(written - end * 400) < 10);
        QCOMPARE(source->fr(), written);
    }
    QVERIFY(source->aFr() < -390);
    QCOMPARE(m_view.textColor(u"Start of the range here"_s), QColor(u"#D25F15"_s));
}

void TestPlaybackTimeline::markersDoNotCross()
{
    PlaybackSource *source = shown(m_view.startPaused(-1000, 1000));
    QVERIFY(source);
    source->setBFr(100);
    QTest::mousePress(m_view.window(), Qt::LeftButton, {}, pointOf(-975));
    QTest::mouseMove(m_view.window(), pointOf(300));
    QTest::mouseRelease(m_view.window(), Qt::LeftButton, {}, pointOf(300));
    QCOMPARE(source->aFr(), 100);
    QCOMPARE(source->bFr(), 100);
    QCOMPARE(source->fr(), 100);
    QCOMPARE(m_bar->aMarker()->fr(), 100);
}

void TestPlaybackTimeline::playHeadFollowsWhenTheMarkersLetItGo()
{
    PlaybackSource *source = m_view.startPaused(0, 400);
    QVERIFY(source);
    source->setFr(50);
    source->setAFr(100);
    m_view.show();
    QVERIFY(shown(source));
    // The current frame stays where it was; its mark cannot.
    QCOMPARE(m_bar->playHead()->fr(), 100);
    source->setAFr(0);
    QCOMPARE(source->fr(), 50);
    QCOMPARE(m_bar->playHead()->fr(), 50);
    QCOMPARE(m_bar->playHead()->position(), 0.125);
}

void TestPlaybackTimeline::playHeadStaysWhereTheFrameIsWhenAMarkerPassesIt()
{
    PlaybackSource *source = shown(m_view.startPaused(0, 400));
    QVERIFY(source);
    source->setFr(50);
    source->setAFr(100);
    QCOMPARE(source->fr(), 50);
    QCOMPARE(m_bar->playHead()->position(), 0.125);
    source->setFr(51);
    QCOMPARE(source->fr(), 100);
    QCOMPARE(m_bar->playHead()->position(), 0.25);
}

void TestPlaybackTimeline::dragGoesOnWhilePlaying()
{
    PlaybackSource *source = shown(m_view.start(-1000, 1000));
    QVERIFY(source);
    QTest::mousePress(m_view.window(), Qt::LeftButton, {}, pointOf(0));
    source->pass(PlaybackFixture::Second / 3);
    QTest::mouseMove(m_view.window(), pointOf(500));
    const qlonglong dragged = source->fr();
    QVERIFY(dragged > 490 && dragged < 510);
    QTest::mouseRelease(m_view.window(), Qt::LeftButton, {}, pointOf(500));
    source->pass(PlaybackFixture::Second);
    QCOMPARE(source->fr(), dragged + 30);
    QCOMPARE(m_bar->playHead()->fr(), dragged + 30);
    QCOMPARE(source->state(), PlaybackVeskObject::Play);
}

VIEW_TEST_MAIN(TestPlaybackTimeline)
#include "tst_playback_timeline.moc"
