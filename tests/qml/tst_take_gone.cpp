#include "camera/camera.h"
#include "image/img_search.h"
#include "sim/camera.h"
#include "sim/fault.h"
#include "sim/footage.h"
#include "take/saved_take_model.h"
#include "take/take.h"
#include "tests/qml/view_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

/**
 * Takes that go while somebody has them in hand: the camera drops one, is divided anew, or is disconnected.
 * The view goes, nothing is left of it, and what is left can be used.
 */
class TestTakeGone : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void takeGoesWhileItIsUsed_data();
    void takeGoesWhileItIsUsed();
    void partitionsGoWhileATakeIsUsed_data() { takeGoesWhileItIsUsed_data(); }
    void partitionsGoWhileATakeIsUsed();
    void cameraGoesWhileATakeIsUsed_data() { takeGoesWhileItIsUsed_data(); }
    void cameraGoesWhileATakeIsUsed();
    void takeGoesWhileItsFirstDescriptionIsOnItsWay();
    void partitionsGoBeforeTheFirstDescriptionIsThere();
    void adjustmentOfARestingTakeAsksForOneFrameAtATimeAndEndsOnTheLastPosition();
    void framesThatComeLateAreSkippedAndTheRightOneComesOncePaused();

private:
    enum Use {
        Plays,
        PlaysSlowly,
        IsSearched,
        PlayHeadDragged,
        MarkerDragged,
        TabMenuOpen,
        SkipMenuOpen,
        ResetMenuOpen,
        ZoomMenuOpen,
        FileMenuOpen,
        ListOpen,
        QuestionOpen,
        NumberTyped,
        SliderDragged
    };

    Take *start(const q4sim::TakeOrder &order = {.first = -20, .last = 2000});
    bool use(int what);
    bool rightClick(const QString &name) const;
    QPoint onScrubber(double position) const;
    /** Lets the mouse and the keys go, as the user's hand would. */
    void letGo() const;

    ViewFixture m_view;
    q4sim::Camera *m_simulated = nullptr;
};

void TestTakeGone::cleanup()
{
    const QStringList warnings = m_view.end();
    VeskApp::instance()->settings()->remove(u"playback"_s);
    QCOMPARE(warnings, QStringList());
}

/** A camera with take 1 as ordered, shown, and take 2 beside it. */
Take *TestTakeGone::start(const q4sim::TakeOrder &order)
{
    m_simulated = m_view.startWithCamera();
    if (!m_simulated || m_simulated->makeTake(order) != 1 ||
        m_simulated->makeTake({.first = 0, .last = 9}) != 2)
        return nullptr;
    if (!QTest::qWaitFor([this] { return m_view.camera()->savedTakes()->count() == 2; }) ||
        !m_view.click(u"Take 1"_s))
        return nullptr;
    auto *take = qobject_cast<Take *>(VeskApp::instance()->selectedVeskObject());
    const bool shown =
        take && QTest::qWaitFor([take] { return take->valuesInit() && !take->imgFrame()->image().isNull(); });
    ViewFixture::settle(m_view.window());
    return shown ? take : nullptr;
}

QPoint TestTakeGone::onScrubber(double position) const
{
    const QRect bar = m_view.element(u"Frames"_s)->rect();
    return m_view.window()->mapFromGlobal(
        QPoint(bar.left() + 5 + qRound(position * (bar.width() - 11)), bar.bottom() - 8));
}

bool TestTakeGone::rightClick(const QString &name) const
{
    return m_view.click(name, Qt::RightButton);
}

static bool appears(const ViewFixture &view, const QString &item)
{
    return QTest::qWaitFor([&] { return view.element(item, QAccessible::MenuItem) != nullptr; });
}

bool TestTakeGone::use(int what)
{
    QQuickWindow *window = m_view.window();
    auto *take = qobject_cast<Take *>(VeskApp::instance()->selectedVeskObject());
    switch (what) {
    case Plays:
        return take->state() == PlaybackVeskObject::Play;
    case PlaysSlowly:
    case IsSearched:
        m_simulated->setFault(q4sim::Route::Xfer, {.kind = q4sim::FaultKind::Delay, .ms = 200});
        if (what == IsSearched)
            take->imgSearch()->start(true);
        return QTest::qWaitFor([&] { return what == IsSearched || take->frameInFlight(); });
    case PlayHeadDragged:
    case MarkerDragged:
        QTest::mousePress(window, Qt::LeftButton, {}, onScrubber(what == MarkerDragged ? 0.0 : 0.3));
        QTest::mouseMove(window, onScrubber(0.5));
        return true;
    case TabMenuOpen:
        return rightClick(u"Take 1"_s) && appears(m_view, u"Delete..."_s);
    case SkipMenuOpen:
        return m_view.click(u"Skip forward"_s) && appears(m_view, u"Last Frame"_s);
    case ResetMenuOpen:
        return rightClick(u"Start of the range here"_s) && appears(m_view, u"Reset"_s);
    case ZoomMenuOpen:
        return rightClick(u"Picture"_s);
    case FileMenuOpen:
        return m_view.click(u"File"_s) && appears(m_view, u"Delete..."_s);
    case ListOpen:
        return m_view.openList(u"Take"_s, u"Black Ref Mode"_s) && appears(m_view, u"Advanced"_s);
    case QuestionOpen:
        return m_view.clickIn(u"Take"_s, u"Delete..."_s) &&
               QTest::qWaitFor([this] { return m_view.dialog(u"VESK"_s) != nullptr; });
    case NumberTyped:
        if (!m_view.click(u"Frame"_s))
            return false;
        QTest::keyClick(window, '4');
        return true;
    case SliderDragged: {
        QAccessibleInterface *slider =
            m_view.inSection(u"Image Adjustments"_s, u"Gain"_s, QAccessible::Slider);
        ViewFixture::reveal(slider);
        ViewFixture::settle(window);
        const QPoint handle = ViewFixture::centre(window, slider);
        QTest::mousePress(window, Qt::LeftButton, {}, handle);
        QTest::mouseMove(window, handle + QPoint(20, 0));
        return true;
    }
    default:
        return false;
    }
}

void TestTakeGone::letGo() const
{
    QTest::mouseRelease(m_view.window(), Qt::LeftButton, {}, QPoint(640, 300));
    QTest::keyClick(m_view.window(), Qt::Key_Escape);
    ViewFixture::settle(m_view.window());
}

void TestTakeGone::takeGoesWhileItIsUsed_data()
{
    QTest::addColumn<int>("what");
    QTest::newRow("plays") << int(Plays);
    QTest::newRow("plays slowly") << int(PlaysSlowly);
    QTest::newRow("is searched") << int(IsSearched);
    QTest::newRow("play head dragged") << int(PlayHeadDragged);
    QTest::newRow("marker dragged") << int(MarkerDragged);
    QTest::newRow("tab's menu open") << int(TabMenuOpen);
    QTest::newRow("skip menu open") << int(SkipMenuOpen);
    QTest::newRow("reset menu open") << int(ResetMenuOpen);
    QTest::newRow("zoom menu open") << int(ZoomMenuOpen);
    QTest::newRow("file menu open") << int(FileMenuOpen);
    QTest::newRow("list open") << int(ListOpen);
    QTest::newRow("question open") << int(QuestionOpen);
    QTest::newRow("number typed") << int(NumberTyped);
    QTest::newRow("slider dragged") << int(SliderDragged);
}

void TestTakeGone::takeGoesWhileItIsUsed()
{
    QFETCH(const int, what);
    QPointer<Take> take = start();
    QVERIFY(take);
    QVERIFY(use(what));
    m_simulated->dropTake(1);
    QTRY_COMPARE(VeskApp::instance()->selectedVeskObject(), m_view.camera());
    letGo();
    QVERIFY(take); // it stands for the partition
    QVERIFY(take->imgFrame()->image().isNull());
    QCOMPARE(take->imgSearch()->state(), ImgSearch::Idle);
    QVERIFY(!m_view.dialog(u"VESK"_s));
    QVERIFY(!m_view.shows(u"Take 1"_s));
    QTRY_VERIFY(m_view.shows(u"Black Reference"_s));
    m_simulated->clearFaults();
    QVERIFY(m_view.click(u"Take 2"_s));
    QTRY_COMPARE(m_view.rowText(u"Take"_s, u"Take Number"_s), u"2"_s);
}

void TestTakeGone::partitionsGoWhileATakeIsUsed()
{
    QFETCH(const int, what);
    QPointer<Take> take = start();
    QVERIFY(take);
    QVERIFY(use(what));
    QCOMPARE(m_simulated->answer("POST", u"/prtn"_s, R"({"cnt":2})").status, 200);
    QTRY_VERIFY(!take);
    letGo();
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), nullptr);
    QTRY_VERIFY(m_view.shows(u"Version 10.0"_s));
    QVERIFY(!m_view.dialog(u"VESK"_s));
    m_simulated->clearFaults();
    QCOMPARE(m_simulated->makeTake({.first = 5, .last = 9}), 1);
    QTRY_VERIFY(m_view.shows(u"Take 1"_s));
    QVERIFY(m_view.click(u"Take 1"_s));
    QTRY_COMPARE(m_view.rowText(u"Take"_s, u"Take Number"_s), u"1"_s);
}

void TestTakeGone::cameraGoesWhileATakeIsUsed()
{
    QFETCH(const int, what);
    QPointer<Take> take = start();
    QVERIFY(take);
    QVERIFY(use(what));
    m_view.camera()->disconnectCamera();
    QTRY_VERIFY(!take);
    letGo();
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), nullptr);
    QTRY_VERIFY(m_view.shows(u"Version 10.0"_s));
    QVERIFY(!m_view.dialog(u"VESK"_s));
    QCOMPARE(VeskApp::instance()->veskObjects().size(), 0);
}

void TestTakeGone::takeGoesWhileItsFirstDescriptionIsOnItsWay()
{
    m_simulated = m_view.startWithCamera();
    QVERIFY(m_simulated);
    m_simulated->setFault(q4sim::Route::Takes, {.kind = q4sim::FaultKind::Delay, .ms = 700});
    QCOMPARE(m_simulated->makeTake({.first = 0, .last = 9}), 1);
    QTRY_VERIFY(m_view.shows(u"Take 1"_s));
    QVERIFY(m_view.click(u"Take 1"_s));
    m_simulated->dropTake(1);
    QTRY_COMPARE(VeskApp::instance()->selectedVeskObject(), m_view.camera());
    QTRY_VERIFY(!m_view.shows(u"Take 1"_s));
    QTRY_VERIFY(m_simulated->requests("GET", u"/takes/take1"_s).size() >= 1);
    QVERIFY(m_view.waitForPolls(4));
}

void TestTakeGone::partitionsGoBeforeTheFirstDescriptionIsThere()
{
    m_simulated = m_view.startWithCamera();
    QVERIFY(m_simulated);
    m_simulated->setFault(q4sim::Route::Takes, {.kind = q4sim::FaultKind::Delay, .ms = 700});
    QCOMPARE(m_simulated->makeTake({.first = 0, .last = 9}), 1);
    QTRY_VERIFY(m_view.shows(u"Take 1"_s));
    QVERIFY(m_view.click(u"Take 1"_s));
    QPointer<VeskObject> take = VeskApp::instance()->selectedVeskObject();
    QCOMPARE(m_simulated->answer("POST", u"/prtn"_s, R"({"cnt":2})").status, 200);
    QTRY_VERIFY(!take);
    QVERIFY(m_view.waitForPolls(4));
    QTRY_VERIFY(m_view.shows(u"Version 10.0"_s));
}

void TestTakeGone::adjustmentOfARestingTakeAsksForOneFrameAtATimeAndEndsOnTheLastPosition()
{
    Take *take = start();
    QVERIFY(take);
    take->pause();
    QTRY_VERIFY(!take->frameInFlight());
    m_simulated->setFault(q4sim::Route::Xfer, {.kind = q4sim::FaultKind::Delay, .ms = 150});
    m_simulated->clearRequests();
    QVERIFY(m_view.drag(u"Image Adjustments"_s, u"Gain"_s, 0.5, 0.9, 1000));
    // One after the other, each 150 ms on its way.
    const auto asked = m_simulated->requests("POST", u"/xfer"_s).size();
    QVERIFY2(asked >= 2 && asked <= 9, qPrintable(QString::number(asked)));
    QTRY_VERIFY(!take->frameInFlight());
    QVERIFY(m_view.waitForPolls(2));
    const QImage shown = take->imgFrame()->image().copy();
    const double gain = take->imgAdjModel()->gain()->variant().toDouble();
    QVERIFY(gain > 2.0);
    m_simulated->clearFaults();
    take->refreshIfPaused();
    QTRY_VERIFY(!take->frameInFlight());
    QCOMPARE(take->imgFrame()->image(), shown);
    QTRY_COMPARE(ViewFixture::bodies(*m_simulated, "PUT", u"/takes/take1/adjust/gain"_s).last().toDouble(),
                 gain);
}

void TestTakeGone::framesThatComeLateAreSkippedAndTheRightOneComesOncePaused()
{
    Take *take = start();
    QVERIFY(take);
    m_simulated->setFault(q4sim::Route::Xfer, {.kind = q4sim::FaultKind::Delay, .ms = 200});
    take->setFr(0);
    QElapsedTimer clock;
    clock.start();
    m_simulated->clearRequests();
    QTRY_VERIFY(take->fr() >= 45); // one and a half seconds at 30 frames a second
    const qint64 passed = clock.elapsed();
    // The number keeps real time, whatever the camera does: two ticks and a poll of this loop aside.
    QVERIFY2(qAbs(double(take->fr()) - double(passed) * 0.03) <= 5, qPrintable(QString::number(passed)));
    const auto asked = m_simulated->requests("POST", u"/xfer"_s).size();
    QVERIFY2(asked >= 3 && asked <= 9, qPrintable(QString::number(asked)));
    take->pause();
    const qlonglong resting = take->fr();
    const auto wanted = QByteArray::number(resting);
    QTRY_VERIFY(m_simulated->requests("POST", u"/xfer"_s).last().body.contains("\"start\":" + wanted + ","));
    QTRY_VERIFY(!take->frameInFlight());
    const qint64 ns = m_simulated->takeFrameTimeNs(1, resting);
    QTRY_VERIFY2(
        take->timestamp().endsWith(u'.' + QString::number(ns % 1000000000).rightJustified(9, u'0') + u'Z'),
        qPrintable(take->timestamp()));
    QCOMPARE(take->fr(), resting);
}

VIEW_TEST_MAIN(TestTakeGone)
#include "tst_take_gone.moc"
