#include "tests/e2e/session.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace
{
constexpr QRgb highlight = 0xFFD25F15;

bool isWhite(QRgb colour)
{
    return qMin(qRed(colour), qMin(qGreen(colour), qBlue(colour))) > 180;
}
} // namespace

/// A take is recorded, triggered, opened, played, marked, searched and deleted in the real program by mouse
/// and keys. Which frame is shown is read from the picture.
class TestTakeReview : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void triggeredRecordingAppearsByItself();
    void openedTakePlaysByItself();
    void spaceStopsAndPlays();
    void arrowsStepFrameByFrame();
    void buttonsPlayBothWaysAndFast();
    void pauseStandsInPlaceOfWhatPlays();
    void triggerButtonShowsTheTriggerFrame();
    void clickOnTheBarShowsThatFrame();
    void bracketsMarkAndPlayStaysBetweenThem();
    void draggedMarkerTakesThePictureWithIt();
    void pingPongTurnsAtTheMarkers();
    void typedNumberShowsThatFrame();
    void adjustmentOfARestingTakeShowsAtOnce();
    void searchStopsWhereSomethingHappens();
    void cancelledSearchStaysWhereItBegan();
    void deletedTakeLeadsBackToTheCamera();
    void windowClosesInMidSearch();

private:
    QJsonValue value(const QString &path) { return m_session.camera.value(path); }
    WindowLayout &layout() { return m_session.layout(); }
    /// The number of the frame that is shown.
    std::optional<int> frame() const { return m_session.shown().frameNumber(); }
    bool shows(int number) const;
    /// Takes a picture until the frame stays the same for half a second; then its number.
    int restingFrame() const;
    /// Frames shown one after the other within so many milliseconds.
    QList<int> framesShown(int ms) const;
    void openTake(int place);

    mutable Session m_session;
    int m_first = 0;
    int m_last = 0;
};

void TestTakeReview::initTestCase()
{
    QCOMPARE(m_session.start(), QString());
    QVERIFY(m_session.waitForLivePicture());
    QVERIFY(m_session.camera.put(u"/acq/trig_offset"_s, "300"));
}

void TestTakeReview::cleanup()
{
    if (QTest::currentTestFailed())
        m_session.keepPicture(u"failed-"_s + QString::fromLatin1(QTest::currentTestFunction()));
    QCOMPARE(m_session.program().complaints(), QStringList());
}

bool TestTakeReview::shows(int number) const
{
    return m_session.wait([&](const QImage &) { return frame() == number; });
}

int TestTakeReview::restingFrame() const
{
    std::optional<int> seen;
    QElapsedTimer since;
    since.start();
    const bool rests = QTest::qWaitFor(
        [&] {
            const std::optional<int> now = frame();
            if (!now || now != seen) {
                seen = now;
                since.restart();
            }
            return seen && since.elapsed() > 500;
        },
        10000);
    return rests ? *seen : std::numeric_limits<int>::min();
}

QList<int> TestTakeReview::framesShown(int ms) const
{
    QList<int> frames;
    QElapsedTimer clock;
    for (clock.start(); clock.elapsed() < ms;) {
        const std::optional<int> now = frame();
        if (now && (frames.isEmpty() || frames.last() != *now))
            frames.append(*now);
        QTest::qWait(5);
    }
    return frames;
}

void TestTakeReview::openTake(int place)
{
    m_session.click(layout().takeTab(place).center());
    layout().setPanel(WindowLayout::Panel::Take);
    QVERIFY(m_session.wait([&](const QImage &) { return frame().has_value(); }));
}

void TestTakeReview::triggeredRecordingAppearsByItself()
{
    const QRect icon = layout().takeTabIcon(1);
    QCOMPARE(Session::count(m_session.window(), icon, isWhite), 0);
    const QPoint record = layout().widget(u"Record"_s).center();
    m_session.click(record);
    QTRY_COMPARE(value(u"acq/state"_s).toInt(), 2);
    // The count of recorded frames grows meanwhile.
    const QRect counted = layout().widget(u"Recorded Frames"_s);
    QVERIFY(m_session.wait([&](const QImage &now) { return Session::count(now, counted, isWhite) > 20; }));
    const QImage before = m_session.window().copy(counted);
    QVERIFY(m_session.wait([&](const QImage &now) { return now.copy(counted) != before; }));
    m_session.click(record);
    QTRY_COMPARE(value(u"acq/state"_s).toInt(), 3);
    QTRY_COMPARE(value(u"acq/saved_takes"_s).toArray(), QJsonArray{1});
    QVERIFY(m_session.wait([&](const QImage &now) { return Session::count(now, icon, isWhite) > 20; }));
    m_session.keepPicture(u"take-finished"_s);
}

void TestTakeReview::openedTakePlaysByItself()
{
    openTake(1);
    const QList<int> frames = framesShown(1500);
    QVERIFY2(frames.size() > 5, qPrintable(QString::number(frames.size())));
    QVERIFY(std::is_sorted(frames.begin(), frames.end()));
    // From its first frame on, which was recorded before the trigger.
    QVERIFY(frames.first() < 0);
    m_session.keepPicture(u"take-playing"_s);
}

void TestTakeReview::spaceStopsAndPlays()
{
    m_session.key(u"space"_s);
    const int resting = restingFrame();
    QCOMPARE(framesShown(400), QList<int>{resting});
    m_session.keepPicture(u"take-paused"_s);
    m_session.key(u"space"_s);
    QVERIFY(m_session.wait([&](const QImage &) { return frame() > resting; }));
    m_session.key(u"space"_s);
}

void TestTakeReview::arrowsStepFrameByFrame()
{
    const int resting = restingFrame();
    m_session.key(u"Right"_s);
    QVERIFY(shows(resting + 1));
    m_session.key(u"Right"_s);
    QVERIFY(shows(resting + 2));
    m_session.key(u"Left"_s);
    QVERIFY(shows(resting + 1));
    m_session.click(layout().stepButton(1));
    QVERIFY(shows(resting));
    m_session.click(layout().stepButton(3));
    QVERIFY(shows(resting + 1));
    // The buttons gave the keys back.
    m_session.key(u"Left"_s);
    QVERIFY(shows(resting));
}

void TestTakeReview::buttonsPlayBothWaysAndFast()
{
    m_session.click(layout().onBar(0.5));
    restingFrame();
    m_session.click(layout().playButton(1));
    const QList<int> backwards = framesShown(700);
    QVERIFY(backwards.size() > 2);
    QVERIFY(std::is_sorted(backwards.rbegin(), backwards.rend()));
    m_session.click(layout().playButton(1)); // pauses
    m_session.click(layout().onBar(0.5));
    const int middle = restingFrame();
    m_session.click(layout().playButton(3));
    QVERIFY(m_session.wait([&](const QImage &) { return frame() > middle + 60; }));
    m_session.click(layout().playButton(3));
    m_session.click(layout().onBar(0.5));
    QCOMPARE(restingFrame(), middle);
    m_session.click(layout().playButton(0));
    QVERIFY(m_session.wait([&](const QImage &) { return frame() < middle - 60; }));
    m_session.click(layout().playButton(0));
    restingFrame();
}

void TestTakeReview::pauseStandsInPlaceOfWhatPlays()
{
    for (const int button : {0, 1, 2, 3}) {
        const QRect glyph(layout().playButton(button) - QPoint(14, 14), QSize(28, 28));
        m_session.move(layout().playButton(button));
        QTest::qWait(200); // the glyph grows under the pointer
        const QImage resting = m_session.window().copy(glyph);
        m_session.click(layout().playButton(button));
        QVERIFY(m_session.wait([&](const QImage &now) { return now.copy(glyph) != resting; }));
        m_session.click(layout().playButton(button));
        QVERIFY(m_session.wait([&](const QImage &now) { return now.copy(glyph) == resting; }));
    }
}

void TestTakeReview::triggerButtonShowsTheTriggerFrame()
{
    m_session.click(layout().stepButton(2));
    QVERIFY(shows(0));
}

void TestTakeReview::clickOnTheBarShowsThatFrame()
{
    m_session.click(layout().onBar(0.0) + QPoint(8, 0)); // beside the marker
    m_first = restingFrame();
    m_session.click(layout().onBar(1.0) - QPoint(8, 0));
    m_last = restingFrame();
    // 300 frames after the trigger; a pixel of the bar is some frames wide.
    QVERIFY2(m_first < 0 && m_last > 250 && m_last <= 300, qPrintable(u"%1 %2"_s.arg(m_first).arg(m_last)));
    m_session.click(layout().onBar(0.5));
    QVERIFY(qAbs(restingFrame() - (m_first + m_last) / 2) < (m_last - m_first) / 50 + 5);
}

void TestTakeReview::bracketsMarkAndPlayStaysBetweenThem()
{
    m_session.click(layout().onBar(0.4));
    const int a = restingFrame();
    m_session.click(layout().startHere());
    m_session.click(layout().onBar(0.4) + QPoint(12, 0));
    const int b = restingFrame();
    QVERIFY(b > a);
    m_session.click(layout().endHere());
    const auto lit = [](QRgb colour) { return colour == highlight; };
    const QRect bracket(layout().endHere() - QPoint(9, 12), QSize(18, 24));
    m_session.move(layout().onBar(0.9));
    QVERIFY(m_session.wait([&](const QImage &now) { return Session::count(now, bracket, lit) > 8; }));
    m_session.keepPicture(u"take-marked"_s);
    m_session.key(u"space"_s);
    const QList<int> frames = framesShown(4000);
    const auto [lowest, highest] = std::minmax_element(frames.begin(), frames.end());
    QVERIFY2(*lowest >= a && *highest <= b,
             qPrintable(u"%1 to %2 in %3 to %4"_s.arg(*lowest).arg(*highest).arg(a).arg(b)));
    // Round the end: from somewhere near B to somewhere near A.
    QVERIFY(!std::is_sorted(frames.begin(), frames.end()));
    m_session.key(u"space"_s);
    restingFrame();
}

void TestTakeReview::draggedMarkerTakesThePictureWithIt()
{
    const int before = restingFrame();
    m_session.drag(layout().onBar(0.4) + QPoint(12, 0), layout().onBar(0.8));
    const int b = restingFrame();
    QVERIFY(b > before);
    m_session.click(layout().onBar(0.95)); // beyond the marker: as far as it
    QCOMPARE(restingFrame(), b);
    m_session.keepPicture(u"take-marker-dragged"_s);
}

void TestTakeReview::pingPongTurnsAtTheMarkers()
{
    m_session.click(layout().onBar(0.75));
    restingFrame();
    m_session.click(layout().playButton(4));
    m_session.key(u"space"_s);
    // Forwards to the marker, then the same way back.
    QList<int> frames;
    const bool turned = QTest::qWaitFor(
        [&] {
            frames += framesShown(100);
            return frames.last() < *std::max_element(frames.begin(), frames.end()) - 20;
        },
        15000);
    QVERIFY(turned);
    const auto top = std::max_element(frames.begin(), frames.end());
    QVERIFY(std::is_sorted(frames.begin(), top + 1));
    QVERIFY(std::is_sorted(std::make_reverse_iterator(frames.end()), std::make_reverse_iterator(top)));
    m_session.key(u"space"_s);
    m_session.click(layout().playButton(4));
    restingFrame();
}

void TestTakeReview::typedNumberShowsThatFrame()
{
    const int wanted = restingFrame() - 11;
    m_session.click(layout().frameRow().center());
    m_session.key(u"ctrl+a"_s);
    QVERIFY(m_session.screen.type(QString::number(wanted)));
    m_session.key(u"Return"_s);
    QVERIFY(shows(wanted));
    m_session.key(u"Right"_s); // the field gave the keys back
    QVERIFY(shows(wanted + 1));
}

void TestTakeReview::adjustmentOfARestingTakeShowsAtOnce()
{
    for (const char *section : {"Take", "Camera", "Image Tools"})
        m_session.toggleSection(QString::fromLatin1(section), true);
    const int resting = restingFrame();
    const int bright = qGray(m_session.shown().colour(40, 450));
    const QRect gain = layout().widget(u"Gain"_s);
    const QPoint middle(gain.center().x(), gain.top() + 11);
    m_session.drag(middle, middle - QPoint(gain.width() / 2, 0));
    QVERIFY(m_session.wait(
        [&](const QImage &) { return qGray(m_session.shown().colour(40, 450)) < bright / 2; }));
    QTRY_VERIFY(!m_session.camera.requestsOf("PUT").filter(u"/takes/take1/adjust/gain"_s).isEmpty());
    m_session.keepPicture(u"take-adjusted"_s);
    m_session.click(layout().widget(u"Reset"_s).center());
    QVERIFY(m_session.wait(
        [&](const QImage &) { return qAbs(qGray(m_session.shown().colour(40, 450)) - bright) < 8; }));
    QVERIFY(shows(resting));
}

void TestTakeReview::searchStopsWhereSomethingHappens()
{
    // A spot of three by three pixels lights up in one frame.
    QJsonArray changes;
    for (int i = 0; i < 9; ++i)
        changes.append(QJsonObject{{"frame", 160}, {"x", 300 + i % 3}, {"y", 300 + i / 3}, {"add", 180}});
    const QJsonObject order{{"first", -40}, {"last", 900}, {"scene", "still"}, {"changes", changes}};
    QVERIFY(m_session.camera.makeTake(QJsonDocument(order).toJson()));
    QVERIFY(m_session.wait(
        [&](const QImage &now) { return Session::count(now, layout().takeTabIcon(2), isWhite) > 20; }));
    m_session.click(layout().takeTab(2).center());
    m_session.toggleSection(u"Image Adjustments"_s, true);
    QVERIFY(m_session.type(u"Frame Step"_s, u"1"_s));
    m_session.click(layout().stepButton(2)); // to the trigger, from where the search begins
    QVERIFY(m_session.wait(
        [&](const QImage &) { return !m_session.camera.requests("POST", u"/xfer"_s).isEmpty(); }));
    const QPoint skip = layout().stepButton(4);
    m_session.camera.forgetRequests();
    m_session.click(skip);
    m_session.keepPicture(u"take-skip-menu"_s);
    m_session.key(u"Down"_s);
    m_session.key(u"Down"_s);
    m_session.key(u"Return"_s);
    QTRY_VERIFY(m_session.camera.requests("POST", u"/xfer"_s).size() > 20);
    m_session.keepPicture(u"take-searching"_s);
    QTRY_VERIFY_WITH_TIMEOUT(m_session.camera.requests("POST", u"/xfer"_s).last().contains("\"start\":160,"),
                             30000);
    // The change is there, bright where all else is dark.
    QVERIFY(m_session.wait([&](const QImage &) { return qGray(m_session.shown().colour(301, 301)) > 60; }));
    m_session.keepPicture(u"take-found"_s);
    m_session.camera.forgetRequests();
    QTRY_VERIFY(m_session.camera.requests("GET", u"/"_s).size() >= 3);
    QCOMPARE(m_session.camera.requests("POST", u"/xfer"_s).size(), 0);
}

void TestTakeReview::cancelledSearchStaysWhereItBegan()
{
    // Beyond the change, which the next frame takes back.
    m_session.key(u"Right"_s);
    m_session.key(u"Right"_s);
    QTRY_VERIFY(m_session.camera.requests("POST", u"/xfer"_s).last().contains("\"start\":162,"));
    m_session.move(layout().onBar(0.9));
    const QImage before = m_session.resting(layout().frameRow());
    QVERIFY(!before.isNull());
    QVERIFY(m_session.camera.delayFrames(300));
    m_session.camera.forgetRequests();
    m_session.click(layout().stepButton(4));
    m_session.key(u"Down"_s);
    m_session.key(u"Down"_s);
    m_session.key(u"Return"_s);
    QTRY_VERIFY(m_session.camera.requests("POST", u"/xfer"_s).size() >= 3);
    m_session.keepPicture(u"take-search-slow"_s);
    // The cross stands right of the text, which is in the middle of the row.
    QImage searching;
    QVERIFY(m_session.wait([&](const QImage &now) {
        searching = now;
        return now.copy(layout().frameRow()) != before;
    }));
    int cross = -1;
    for (int x = layout().frameRow().right(); x > layout().frameRow().center().x() && cross < 0; --x)
        cross = isWhite(searching.pixel(x, layout().frameRow().center().y())) ? x : -1;
    QVERIFY(cross > 0);
    m_session.click(QPoint(cross, layout().frameRow().center().y()));
    m_session.move(layout().onBar(0.9));
    QVERIFY(m_session.wait([&](const QImage &now) { return now.copy(layout().frameRow()) == before; }));
    m_session.camera.forgetRequests();
    QTRY_VERIFY(m_session.camera.requests("GET", u"/"_s).size() >= 4);
    QCOMPARE(m_session.camera.requests("POST", u"/xfer"_s).size(), 0);
    QVERIFY(m_session.camera.clearFaults());
}

void TestTakeReview::deletedTakeLeadsBackToTheCamera()
{
    m_session.toggleSection(u"Take"_s, false);
    m_session.click(layout().widget(u"Delete..."_s).center());
    const auto dialog = [this] { return m_session.screen.window(u"VESK"_s, QSize(200, 100)); };
    QTRY_VERIFY(dialog());
    m_session.screen.focus(*dialog());
    m_session.screen.keepPicture(u"take-delete"_s);
    const QRect place = m_session.screen.geometry(*dialog());
    QVERIFY(
        m_session.screen.input(u"mousemove %1 %2 click 1"_s.arg(place.left() + 55).arg(place.bottom() - 25)));
    QTRY_COMPARE(m_session.camera.requests("POST", u"/del"_s), QList<QByteArray>{"{\"take\":2}"});
    QTRY_COMPARE(value(u"acq/saved_takes"_s).toArray(), QJsonArray{1});
    layout().setPanel(WindowLayout::Panel::Camera);
    QVERIFY(m_session.waitForLivePicture());
    QVERIFY(m_session.wait([&](const QImage &now) {
        return Session::count(now, layout().takeTabIcon(2), isWhite) == 0 &&
               Session::count(now, layout().takeTabIcon(1), isWhite) > 20;
    }));
    QCOMPARE(m_session.camera.requests("POST", u"/rec"_s).size(), 0);
    m_session.keepPicture(u"take-deleted"_s);
}

void TestTakeReview::windowClosesInMidSearch()
{
    openTake(1);
    QVERIFY(m_session.camera.delayFrames(500));
    m_session.camera.forgetRequests();
    m_session.click(layout().stepButton(4));
    m_session.key(u"Down"_s);
    m_session.key(u"Down"_s);
    m_session.key(u"Return"_s);
    QTRY_VERIFY(m_session.camera.requests("POST", u"/xfer"_s).size() >= 2);
    m_session.screen.close(*m_session.screen.window(u"VESK"_s));
    QCOMPARE(m_session.program().exitCode(1000), 0);
}

QTEST_GUILESS_MAIN(TestTakeReview)
#include "tst_take_review.moc"
