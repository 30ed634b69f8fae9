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

/** A camera that is divided anew, or goes, while one of its takes is in use. */
class TestPartitionsGone : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void partitionsGoWhileATakeIsUsed_data() { TakeInHand::addUses(); }
    void partitionsGoWhileATakeIsUsed();
    void cameraGoesWhileATakeIsUsed_data() { TakeInHand::addUses(); }
    void cameraGoesWhileATakeIsUsed();
    void partitionsGoBeforeTheFirstDescriptionIsThere();

private:
    TakeInHand m_view;
};

void TestPartitionsGone::partitionsGoWhileATakeIsUsed()
{
    QFETCH(const int, what);
    QPointer<Take> take = m_view.start();
    QVERIFY(take);
    QVERIFY(m_view.use(what));
    QCOMPARE(m_view.simulated()->answer("POST", u"/prtn"_s, R"({"cnt":2})").status, 200);
    QTRY_VERIFY(!take);
    m_view.letGo();
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), nullptr);
    QTRY_VERIFY(m_view.shows(u"Version 10.0"_s));
    QVERIFY(!m_view.dialog(u"VESK"_s));
    m_view.simulated()->clearFaults();
    QCOMPARE(m_view.simulated()->makeTake({.first = 5, .last = 9}), 1);
    QTRY_VERIFY(m_view.shows(u"Take 1"_s));
    QVERIFY(m_view.click(u"Take 1"_s));
    QTRY_COMPARE(m_view.rowText(u"Take"_s, u"Take Number"_s), u"1"_s);
}

void TestPartitionsGone::cameraGoesWhileATakeIsUsed()
{
    QFETCH(const int, what);
    QPointer<Take> take = m_view.start();
    QVERIFY(take);
    QVERIFY(m_view.use(what));
    m_view.camera()->disconnectCamera();
    QTRY_VERIFY(!take);
    m_view.letGo();
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), nullptr);
    QTRY_VERIFY(m_view.shows(u"Version 10.0"_s));
    QVERIFY(!m_view.dialog(u"VESK"_s));
    QCOMPARE(VeskApp::instance()->veskObjects().size(), 0);
}

void TestPartitionsGone::partitionsGoBeforeTheFirstDescriptionIsThere()
{
    QVERIFY(m_view.startWithCamera());
    m_view.simulated()->setFault(q4sim::Route::Takes, {.kind = q4sim::FaultKind::Delay, .ms = 700});
    QCOMPARE(m_view.simulated()->makeTake({.first = 0, .last = 9}), 1);
    QTRY_VERIFY(m_view.shows(u"Take 1"_s));
    QVERIFY(m_view.click(u"Take 1"_s));
    QPointer<VeskObject> take = VeskApp::instance()->selectedVeskObject();
    QCOMPARE(m_view.simulated()->answer("POST", u"/prtn"_s, R"({"cnt":2})").status, 200);
    QTRY_VERIFY(!take);
    QVERIFY(m_view.waitForPolls(4));
    QTRY_VERIFY(m_view.shows(u"Version 10.0"_s));
}

VIEW_TEST_MAIN(TestPartitionsGone)
#include "tst_partitions_gone.moc"
