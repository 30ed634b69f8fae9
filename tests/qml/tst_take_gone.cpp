#include "camera/camera.h"
#include "image/img_search.h"
#include "sim/camera.h"
#include "sim/fault.h"
#include "sim/footage.h"
#include "take/take.h"
#include "tests/qml/take_in_hand.h"
#include "tests/qml/view_test_main.h"

#include <QPointer>

using namespace Qt::StringLiterals;

/** Takes that the camera drops while somebody has them in hand: the view goes, and nothing is left of it. */
class TestTakeGone : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void takeGoesWhileItIsUsed_data() { TakeInHand::addUses(); }
    void takeGoesWhileItIsUsed();
    void takeGoesWhileItsFirstDescriptionIsOnItsWay();

private:
    TakeInHand m_view;
};

void TestTakeGone::takeGoesWhileItIsUsed()
{
    QFETCH(const int, what);
    QPointer<Take> take = m_view.start();
    QVERIFY(take);
    QVERIFY(m_view.use(what));
    m_view.simulated()->dropTake(1);
    QTRY_COMPARE(VeskApp::instance()->selectedVeskObject(), m_view.camera());
    m_view.letGo();
    QVERIFY(take); // it stands for the partition
    QVERIFY(take->imgFrame()->image().isNull());
    QCOMPARE(take->imgSearch()->state(), ImgSearch::Idle);
    QVERIFY(!m_view.dialog(u"VESK"_s));
    QVERIFY(!m_view.shows(u"Take 1"_s));
    QTRY_VERIFY(m_view.shows(u"Black Reference"_s));
    m_view.simulated()->clearFaults();
    QVERIFY(m_view.click(u"Take 2"_s));
    QTRY_COMPARE(m_view.rowText(u"Take"_s, u"Take Number"_s), u"2"_s);
}

void TestTakeGone::takeGoesWhileItsFirstDescriptionIsOnItsWay()
{
    QVERIFY(m_view.startWithCamera());
    m_view.simulated()->setFault(q4sim::Route::Takes, {.kind = q4sim::FaultKind::Delay, .ms = 700});
    QCOMPARE(m_view.simulated()->makeTake({.first = 0, .last = 9}), 1);
    QTRY_VERIFY(m_view.shows(u"Take 1"_s));
    QVERIFY(m_view.click(u"Take 1"_s));
    m_view.simulated()->dropTake(1);
    QTRY_COMPARE(VeskApp::instance()->selectedVeskObject(), m_view.camera());
    QTRY_VERIFY(!m_view.shows(u"Take 1"_s));
    QTRY_VERIFY(m_view.simulated()->requests("GET", u"/takes/take1"_s).size() >= 1);
    QVERIFY(m_view.waitForPolls(4));
}

VIEW_TEST_MAIN(TestTakeGone)
#include "tst_take_gone.moc"
