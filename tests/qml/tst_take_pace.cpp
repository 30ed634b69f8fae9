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

/** Takes of a camera that is slow to answer. */
class TestTakePace : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void adjustmentOfARestingTakeAsksForOneFrameAtATimeAndEndsOnTheLastPosition();
    void framesThatComeLateAreSkippedAndTheRightOneComesOncePaused();

private:
    TakeInHand m_view;
};

void TestTakePace::adjustmentOfARestingTakeAsksForOneFrameAtATimeAndEndsOnTheLastPosition()
{
    Take *take = m_view.start();
    QVERIFY(take);
    take->pause();
    QTRY_VERIFY(!take->frameInFlight());
    m_view.simulated()->setFault(q4sim::Route::Xfer, {.kind = q4sim::FaultKind::Delay, .ms = 150});
    m_view.simulated()->clearRequests();
    QVERIFY(m_view.drag(u"Image Adjustments"_s, u"Gain"_s, 0.5, 0.9, 1000));
    // One after the other, each 150 ms on its way.
    const auto asked = m_view.simulated()->requests("POST", u"/xfer"_s).size();
    QVERIFY2(asked >= 2 && asked <= 9, qPrintable(QString::number(asked)));
    // 0.1 x 100 ^ 0.9, give or take the pixels of the handle.
    const double gain = take->imgAdjModel()->gain()->variant().toDouble();
    QVERIFY2(gain > 5.5 && gain < 7.0, qPrintable(QString::number(gain)));
    // The camera keeps six digits behind the point, which come back with a poll.
    const QByteArray kept = QByteArray::number(gain, 'f', 6);
    QTRY_COMPARE(ViewFixture::bodies(*m_view.simulated(), "PUT", u"/takes/take1/adjust/gain"_s).last(), kept);
    QTRY_COMPARE(take->imgAdjModel()->gain()->variant().toDouble(), kept.toDouble());
    QTRY_VERIFY(!take->frameInFlight());
    const QImage shown = take->imgFrame()->image().copy();
    m_view.simulated()->clearFaults();
    take->refreshIfPaused();
    QTRY_VERIFY(!take->frameInFlight());
    QCOMPARE(take->imgFrame()->image(), shown);
}

void TestTakePace::framesThatComeLateAreSkippedAndTheRightOneComesOncePaused()
{
    Take *take = m_view.start();
    QVERIFY(take);
    m_view.simulated()->setFault(q4sim::Route::Xfer, {.kind = q4sim::FaultKind::Delay, .ms = 200});
    take->setFr(0);
    QElapsedTimer clock;
    clock.start();
    m_view.simulated()->clearRequests();
    QTRY_VERIFY(take->fr() >= 45); // one and a half seconds at 30 frames a second
    const qint64 passed = clock.elapsed();
    // The number keeps real time, whatever the camera does: two ticks and a poll of this loop aside.
    QVERIFY2(qAbs(double(take->fr()) - double(passed) * 0.03) <= 5, qPrintable(QString::number(passed)));
    const auto asked = m_view.simulated()->requests("POST", u"/xfer"_s).size();
    QVERIFY2(asked >= 3 && asked <= 9, qPrintable(QString::number(asked)));
    take->pause();
    const qlonglong resting = take->fr();
    const auto wanted = QByteArray::number(resting);
    QTRY_VERIFY(
        m_view.simulated()->requests("POST", u"/xfer"_s).last().body.contains("\"start\":" + wanted + ","));
    QTRY_VERIFY(!take->frameInFlight());
    const qint64 ns = m_view.simulated()->takeFrameTimeNs(1, resting);
    QTRY_VERIFY2(
        take->timestamp().endsWith(u'.' + QString::number(ns % 1000000000).rightJustified(9, u'0') + u'Z'),
        qPrintable(take->timestamp()));
    QCOMPARE(take->fr(), resting);
}

VIEW_TEST_MAIN(TestTakePace)
#include "tst_take_pace.moc"
