#include "image/playback_scrubber_template.h"
#include "tests/qml/view_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QJSValue>
#include <QQmlListReference>
#include <QQmlProperty>
#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;
using Handle = PlaybackScrubberHandleObject;

/** The look of the bar of a recording, and its handles under the pointer. */
class TestPlaybackBar : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void itemsHaveTheirSizes();
    void handlesStandWhereTheirFramesAre_data();
    void handlesStandWhereTheirFramesAre();
    void partBetweenTheMarkersIsLit();
    void triggerMarkShowsInsideTheRecordingOnly_data();
    void triggerMarkShowsInsideTheRecordingOnly();
    void triggerMarkIsAGlyph();
    void colorsAreThoseOfTheStyle();
    void handlesAreDrawn();
    void handlesFollowTheWidth();
    void wholeHandleCanBeTaken_data();
    void wholeHandleCanBeTaken();
    void draggedPlayHeadFollowsThePointer();
    void draggedMarkerTakesThePlayHeadAlong();
    void draggedMarkerStopsAtTheOther();
    void recordingOfOneFrameStandsAtTheStart();

private:
    bool show(qlonglong firstFr, qlonglong lastFr);
    QQuickItem *track() const;
    QQuickItem *lit() const { return track()->childItems().first(); }
    QRectF place(QQuickItem *item) const { return item->mapRectToItem(m_bar, {{}, item->size()}); }
    QPoint inWindow(double x, double y) const { return m_bar->mapToScene({x, y}).toPoint(); }
    void drag(const QPoint &from, const QPoint &to);

    ViewFixture m_view;
    PlaybackScrubberTemplate *m_bar = nullptr;
};

// The track is 401 wide: a frame's place is a whole pixel of 400 on.
static constexpr char Document[] = R"(
import QtQuick
import QtQuick.Controls
import QtQuick.Controls.Fusion
import Vesk

ApplicationWindow {
    id: window

    required property int barWidth
    readonly property color outline: Fusion.outline(window.palette)
    readonly property color groove: Fusion.grooveColor(window.palette)

    width: 600
    height: 200
    visible: true

    PlaybackScrubber {
        objectName: "bar"
        x: 50
        y: 40
        width: window.barWidth
    }
}
)";

void TestPlaybackBar::cleanup()
{
    QTest::mouseMove(m_view.window(), {1, 1});
    m_view.close();
    QCOMPARE(m_view.warnings(), QStringList());
}

bool TestPlaybackBar::show(qlonglong firstFr, qlonglong lastFr)
{
    m_view.openDocument(Document, u"barWidth"_s, 411);
    m_bar = m_view.window() ? m_view.window()->findChild<PlaybackScrubberTemplate *>(u"bar"_s) : nullptr;
    if (!m_bar)
        return false;
    m_bar->setFrRange(firstFr, lastFr);
    ViewFixture::settle(m_view.window());
    return true;
}

QQuickItem *TestPlaybackBar::track() const
{
    const QList<QQuickItem *> children = m_bar->childItems();
    for (QQuickItem *child : children) {
        if (child->inherits("QQuickRectangle"))
            return child;
    }
    return nullptr;
}

void TestPlaybackBar::drag(const QPoint &from, const QPoint &to)
{
    QTest::mousePress(m_view.window(), Qt::LeftButton, {}, from);
    QTest::mouseMove(m_view.window(), (from + to) / 2);
    QTest::mouseMove(m_view.window(), to);
    QTest::mouseRelease(m_view.window(), Qt::LeftButton, {}, to);
}

void TestPlaybackBar::itemsHaveTheirSizes()
{
    QVERIFY(show(0, 1000));
    const double glyph = m_bar->trigMarker()->handle()->height();
    QVERIFY(glyph > 0);
    QCOMPARE(m_bar->height(), glyph + 20 + 5);
    QCOMPARE(m_bar->property("markerOffset"), 5);
    QCOMPARE(place(track()), QRectF(5, glyph + 3, 401, 20));
    QCOMPARE(track()->property("radius"), 2.0);
    QCOMPARE(lit()->property("radius"), 2.0);
    const QRectF head = place(m_bar->playHead()->handle());
    QCOMPARE(head.size(), QSizeF(11, 22));
    QCOMPARE(head.top(), glyph + 3);
    for (const Handle *marker : {m_bar->aMarker(), m_bar->bMarker()}) {
        QCOMPARE(marker->handle()->size(), QSizeF(11, 24));
        QCOMPARE(marker->handle()->y(), glyph + 1);
        QQuickItem *bar = marker->handle()->childItems().first();
        QCOMPARE(bar->position(), QPointF(4, 0));
        QCOMPARE(bar->size(), QSizeF(3, 24));
        QCOMPARE(bar->property("radius"), 2.0);
    }
}

void TestPlaybackBar::handlesStandWhereTheirFramesAre_data()
{
    QTest::addColumn<qlonglong>("first");
    QTest::addColumn<qlonglong>("last");
    QTest::addColumn<QList<qlonglong>>("frames"); // A, play head, B
    QTest::addColumn<QList<double>>("places");    // of their pixels on the track
    QTest::newRow("whole range") << 0LL << 1000LL << QList<qlonglong>{0, 0, 1000} << QList<double>{0, 0, 400};
    QTest::newRow("inside") << 0LL << 1000LL << QList<qlonglong>{250, 500, 750}
                            << QList<double>{100, 200, 300};
    // 400 x 1/1000 = 0.4, 400 x 499/1000 = 199.6, 400 x 999/1000 = 399.6
    QTest::newRow("rounded") << -1LL << 999LL << QList<qlonglong>{0, 498, 998} << QList<double>{0, 200, 400};
    QTest::newRow("before the trigger")
        << -400LL << -200LL << QList<qlonglong>{-399, -300, -201} << QList<double>{2, 200, 398};
    QTest::newRow("beyond 2^31") << -3'000'000'000LL << 5'000'000'000LL
                                 << QList<qlonglong>{-2'980'000'000, 1'000'000'000, 4'980'000'000}
                                 << QList<double>{1, 200, 399};
}

void TestPlaybackBar::handlesStandWhereTheirFramesAre()
{
    QFETCH(const qlonglong, first);
    QFETCH(const qlonglong, last);
    QFETCH(const QList<qlonglong>, frames);
    QFETCH(const QList<double>, places);
    QVERIFY(show(first, last));
    m_bar->aMarker()->setFr(frames[0]);
    m_bar->bMarker()->setFr(frames[2]);
    m_bar->playHead()->setFr(frames[1]);
    // The track begins at 5, and so does the middle of a handle 11 wide.
    QCOMPARE(m_bar->aMarker()->handle()->x(), places[0]);
    QCOMPARE(m_bar->playHead()->handle()->x(), places[1]);
    QCOMPARE(m_bar->bMarker()->handle()->x(), places[2]);
}

void TestPlaybackBar::partBetweenTheMarkersIsLit()
{
    QVERIFY(show(0, 1000));
    QCOMPARE(place(lit()), QRectF(5, track()->y(), 401, 20));
    m_bar->aMarker()->setFr(250);
    m_bar->bMarker()->setFr(750);
    QCOMPARE(place(lit()), QRectF(105, track()->y(), 201, 20));
    m_bar->bMarker()->setFr(250);
    QCOMPARE(place(lit()), QRectF(105, track()->y(), 1, 20));
}

void TestPlaybackBar::triggerMarkShowsInsideTheRecordingOnly_data()
{
    QTest::addColumn<qlonglong>("first");
    QTest::addColumn<qlonglong>("last");
    QTest::addColumn<double>("middle"); // below 0 where there is no mark
    QTest::newRow("inside") << -250LL << 750LL << 5 + 100 + 0.5;
    QTest::newRow("first frame") << 0LL << 10LL << 5.5;
    QTest::newRow("last frame") << -10LL << 0LL << 405.5;
    QTest::newRow("before") << 1LL << 10LL << -1.0;
    QTest::newRow("behind") << -10LL << -1LL << -1.0;
}

void TestPlaybackBar::triggerMarkShowsInsideTheRecordingOnly()
{
    QFETCH(const qlonglong, first);
    QFETCH(const qlonglong, last);
    QFETCH(const double, middle);
    QVERIFY(show(first, last));
    QQuickItem *mark = m_bar->trigMarker()->handle();
    QCOMPARE(mark->isVisible(), middle >= 0);
    if (middle >= 0)
        QCOMPARE(place(mark).center().x(), middle);
}

void TestPlaybackBar::triggerMarkIsAGlyph()
{
    QVERIFY(show(-10, 10));
    QQuickItem *mark = m_bar->trigMarker()->handle();
    QCOMPARE(mark->property("text"), u"\uF201"_s);
    QCOMPARE(mark->property("color").value<QColor>(), QColor(u"white"_s));
    const QFont font = mark->property("font").value<QFont>();
    QCOMPARE(font.family(), u"remixicon"_s);
    QCOMPARE(font.pixelSize(), 14);
    QVERIFY(font.bold());
}

static QColor stop(QQuickItem *item, int index)
{
    const QQmlListReference stops(item->property("gradient").value<QJSValue>().toQObject(), "stops");
    return stops.at(index)->property("color").value<QColor>();
}

void TestPlaybackBar::colorsAreThoseOfTheStyle()
{
    QVERIFY(show(0, 1000));
    const auto ofStyle = [this](const char *name) { return m_view.window()->property(name).value<QColor>(); };
    const QColor highlight(u"#D25F15"_s);
    const auto border = [](QQuickItem *item) {
        return QQmlProperty::read(item, u"border.color"_s).value<QColor>();
    };
    QCOMPARE(border(track()), ofStyle("outline"));
    QCOMPARE(stop(track(), 0), ofStyle("groove").darker(110));
    QCOMPARE(stop(track(), 1), ofStyle("groove").lighter(110));
    QCOMPARE(border(lit()), highlight.darker(110));
    QCOMPARE(stop(lit(), 0), highlight.darker(120));
    QCOMPARE(stop(lit(), 1).rgba(), highlight.rgba());
}

void TestPlaybackBar::handlesAreDrawn()
{
    QVERIFY(show(0, 1000));
    m_bar->aMarker()->setFr(250);
    m_bar->bMarker()->setFr(750);
    m_bar->playHead()->setFr(500);
    ViewFixture::settle(m_view.window());
    const QImage picture = m_view.window()->grabWindow();
    const double top = track()->y();
    const auto at = [&](double x, double y) { return picture.pixelColor(inWindow(x, top + y)); };
    const QColor grey(u"#dddddd"_s);
    QCOMPARE(at(105, 10), grey);
    QCOMPARE(at(105, -1), grey);
    QCOMPARE(at(305, 10), grey);
    QCOMPARE(at(305, 21), grey);
    // The line of the play head, and both sides of its triangle: 7 high, as wide as the handle at its foot.
    QCOMPARE(at(205, 5), grey);
    QCOMPARE(at(202, 20), grey);
    QCOMPARE(at(208, 20), grey);
    QVERIFY(at(202, 12) != grey);
    // The track is orange between the markers and grey beside them.
    QVERIFY(at(150, 10).red() > 2 * at(150, 10).green());
    QCOMPARE(at(50, 10).red(), at(50, 10).green());
    QVERIFY(at(50, 10) != at(50, -5));
}

void TestPlaybackBar::handlesFollowTheWidth()
{
    QVERIFY(show(0, 1000));
    m_bar->aMarker()->setFr(250);
    m_bar->playHead()->setFr(500);
    m_view.window()->setProperty("barWidth", 211);
    QCOMPARE(track()->width(), 201.0);
    QCOMPARE(m_bar->aMarker()->handle()->x(), 50.0);
    QCOMPARE(m_bar->bMarker()->handle()->x(), 200.0);
    QCOMPARE(m_bar->playHead()->handle()->x(), 100.0);
}

void TestPlaybackBar::wholeHandleCanBeTaken_data()
{
    QTest::addColumn<double>("x");
    QTest::addColumn<bool>("taken");
    QTest::newRow("beside its left edge") << 99.0 << false;
    QTest::newRow("left edge") << 100.0 << true;
    QTest::newRow("middle") << 105.0 << true;
    QTest::newRow("right edge") << 110.0 << true;
    QTest::newRow("beside its right edge") << 111.0 << false;
}

void TestPlaybackBar::wholeHandleCanBeTaken()
{
    QFETCH(const double, x);
    QFETCH(const bool, taken);
    QVERIFY(show(0, 1000));
    m_bar->aMarker()->setFr(250);
    m_bar->playHead()->setFr(700);
    const QPoint point = inWindow(x, track()->y() + 10);
    QTest::mousePress(m_view.window(), Qt::LeftButton, {}, point);
    QCOMPARE(m_bar->aMarker()->pressed(), taken);
    QCOMPARE(m_bar->playHead()->pressed(), !taken);
    QCOMPARE(m_bar->property("pressed"), true);
    QTest::mouseRelease(m_view.window(), Qt::LeftButton, {}, point);
    QCOMPARE(m_bar->property("pressed"), false);
    QCOMPARE(m_bar->aMarker()->fr(), 250);
}

void TestPlaybackBar::draggedPlayHeadFollowsThePointer()
{
    QVERIFY(show(0, 411'000));
    m_bar->playHead()->setFr(100'000);
    // A thousand frames a pixel of the bar, its margins included.
    drag(inWindow(102, 30), inWindow(300, 30));
    QCOMPARE(m_bar->playHead()->fr(), 300'000);
    // 400 x 300/411 = 291.97
    QCOMPARE(m_bar->playHead()->handle()->x(), 292.0);
}

void TestPlaybackBar::draggedMarkerTakesThePlayHeadAlong()
{
    QVERIFY(show(0, 411'000));
    drag(inWindow(5, 30), inWindow(60, 30));
    QCOMPARE(m_bar->aMarker()->fr(), 60'000);
    QCOMPARE(m_bar->playHead()->fr(), 60'000);
    drag(inWindow(405, 30), inWindow(350, 30));
    QCOMPARE(m_bar->bMarker()->fr(), 350'000);
    QCOMPARE(m_bar->playHead()->fr(), 350'000);
    QCOMPARE(m_bar->aMarker()->fr(), 60'000);
}

void TestPlaybackBar::draggedMarkerStopsAtTheOther()
{
    QVERIFY(show(0, 411'000));
    m_bar->bMarker()->setFr(200'000);
    drag(inWindow(5, 30), inWindow(400, 30));
    QCOMPARE(m_bar->aMarker()->fr(), 200'000);
    QCOMPARE(m_bar->playHead()->fr(), 200'000);
    QCOMPARE(m_bar->aMarker()->handle()->x(), m_bar->bMarker()->handle()->x());
    QCOMPARE(lit()->width(), 1.0);
}

void TestPlaybackBar::recordingOfOneFrameStandsAtTheStart()
{
    QVERIFY(show(5, 5));
    for (const Handle *handle : {m_bar->aMarker(), m_bar->bMarker(), m_bar->playHead()})
        QCOMPARE(handle->handle()->x(), 0.0);
    QCOMPARE(lit()->width(), 1.0);
    QVERIFY(!m_bar->trigMarker()->handle()->isVisible());
    drag(inWindow(5, 30), inWindow(200, 30));
    QCOMPARE(m_bar->aMarker()->fr(), 5);
    QCOMPARE(m_bar->playHead()->fr(), 5);
}

VIEW_TEST_MAIN(TestPlaybackBar)
#include "tst_playback_bar.moc"
