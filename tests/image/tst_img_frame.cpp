#include "image/img_frame.h"

#include <QSignalSpy>
#include <QTest>

/** Zoom and pan of a picture without a screen. */
class TestImgFrame : public QObject
{
    Q_OBJECT

private slots:
    void defaultsAreThoseOfAnUntouchedPicture();
    void zoomMovesOnItsLadder_data();
    void zoomMovesOnItsLadder();
    void zoomStepsOffTheFittingScale_data();
    void zoomStepsOffTheFittingScale();
    void zoomAtItsLimitTellsNoScale();
    void writtenScaleIsLimited_data();
    void writtenScaleIsLimited();
    void unclampedScaleIsTakenAsItStands();
    void silentScaleAsksForNoUpdate();
    void scaleOfRoundingErrorTellsNothing();
    void panIsLimited_data();
    void panIsLimited();
    void panOfAVisibleImageStaysAtZero();
    void panAtItsLimitStillShowsTheBars();
    void imageIsToldWithEveryWrite();
    void zoomFitTellsOnce();
    void maxPanTellsEachSideThatChanged();
    void panIsBroughtIntoNewLimits();
    void zoomingAndPanningAreActiveForASecond();
    void activityRestartsWithEveryMove();
};

void TestImgFrame::defaultsAreThoseOfAnUntouchedPicture()
{
    const ImgFrame frame;
    QVERIFY(frame.image().isNull());
    QVERIFY(!frame.zoomFit());
    QCOMPARE(frame.zoomScale(), 1.0);
    QCOMPARE(frame.panX(), 0.0);
    QCOMPARE(frame.panY(), 0.0);
    QCOMPARE(frame.maxPanX(), 0.0);
    QCOMPARE(frame.maxPanY(), 0.0);
    QVERIFY(!frame.panZoomActive());
}

void TestImgFrame::zoomMovesOnItsLadder_data()
{
    QTest::addColumn<double>("from");
    QTest::addColumn<bool>("in");
    QTest::addColumn<double>("to");
    QTest::newRow("1 up") << 1.0 << true << 1.25;
    QTest::newRow("1 down") << 1.0 << false << 0.75;
    QTest::newRow("8 stays") << 8.0 << true << 8.0;
    QTest::newRow("8 down") << 8.0 << false << 7.75;
    QTest::newRow("0.75 stays") << 0.75 << false << 0.75;
    QTest::newRow("0.75 up") << 0.75 << true << 1.0;
    QTest::newRow("off the ladder up") << 1.33 << true << 1.5;
    QTest::newRow("off the ladder down") << 1.4 << false << 1.25;
    QTest::newRow("half a step rounds up") << 1.125 << true << 1.5;
    QTest::newRow("small comes in") << 0.2 << true << 0.75;
    QTest::newRow("large comes back") << 20.0 << false << 8.0;
}

void TestImgFrame::zoomMovesOnItsLadder()
{
    QFETCH(double, from);
    QFETCH(bool, in);
    QFETCH(double, to);
    ImgFrame frame;
    frame.setZoomScale(from, true, true);
    QVERIFY(QMetaObject::invokeMethod(&frame, in ? "zoomIn" : "zoomOut"));
    QCOMPARE(frame.zoomScale(), to);
    QVERIFY(frame.panZoomActive());
}

void TestImgFrame::zoomStepsOffTheFittingScale_data()
{
    QTest::addColumn<bool>("in");
    QTest::addColumn<double>("to");
    QTest::newRow("in") << true << 1.5;
    QTest::newRow("out") << false << 1.0;
}

void TestImgFrame::zoomStepsOffTheFittingScale()
{
    QFETCH(bool, in);
    QFETCH(double, to);
    ImgFrame frame;
    frame.setZoomFit(true);
    frame.setZoomScale(1.33, false, true);
    QSignalSpy fit(&frame, &ImgFrame::zoomFitChanged);
    QSignalSpy scale(&frame, &ImgFrame::zoomScaleChanged);
    QSignalSpy data(&frame, &ImgFrame::dataChanged);
    if (in)
        frame.zoomIn();
    else
        frame.zoomOut();
    QCOMPARE(frame.zoomScale(), to);
    QVERIFY(!frame.zoomFit());
    QCOMPARE(fit.count(), 1);
    QCOMPARE(scale.count(), 1);
    QCOMPARE(data.count(), 2);
}

void TestImgFrame::zoomAtItsLimitTellsNoScale()
{
    ImgFrame frame;
    frame.setZoomScale(8.0);
    QSignalSpy scale(&frame, &ImgFrame::zoomScaleChanged);
    QSignalSpy data(&frame, &ImgFrame::dataChanged);
    frame.zoomIn();
    QCOMPARE(scale.count(), 0);
    QCOMPARE(data.count(), 0);
    QVERIFY(frame.panZoomActive());
}

void TestImgFrame::writtenScaleIsLimited_data()
{
    QTest::addColumn<double>("written");
    QTest::addColumn<double>("stored");
    QTest::newRow("below") << 0.1 << 0.75;
    QTest::newRow("above") << 9.0 << 8.0;
    QTest::newRow("between steps") << 1.9 << 1.9;
    QTest::newRow("no number") << qQNaN() << 1.0;
}

void TestImgFrame::writtenScaleIsLimited()
{
    QFETCH(double, written);
    QFETCH(double, stored);
    ImgFrame frame;
    QVERIFY(frame.setProperty("zoomScale", written));
    QCOMPARE(frame.zoomScale(), stored);
}

void TestImgFrame::unclampedScaleIsTakenAsItStands()
{
    ImgFrame frame;
    frame.setZoomScale(0.1, true, true);
    QCOMPARE(frame.zoomScale(), 0.1);
    frame.setZoomScale(25.0, true, true);
    QCOMPARE(frame.zoomScale(), 25.0);
}

void TestImgFrame::silentScaleAsksForNoUpdate()
{
    ImgFrame frame;
    QSignalSpy scale(&frame, &ImgFrame::zoomScaleChanged);
    QSignalSpy data(&frame, &ImgFrame::dataChanged);
    frame.setZoomScale(2.0, false);
    QCOMPARE(scale.count(), 1);
    QCOMPARE(data.count(), 0);
    frame.setZoomScale(3.0);
    QCOMPARE(scale.count(), 2);
    QCOMPARE(data.count(), 1);
}

void TestImgFrame::scaleOfRoundingErrorTellsNothing()
{
    ImgFrame frame;
    frame.setZoomScale(1.2);
    QSignalSpy scale(&frame, &ImgFrame::zoomScaleChanged);
    frame.setZoomScale(1.2 + 5e-13);
    frame.setZoomScale(0.4 * 3.0);
    QCOMPARE(scale.count(), 0);
    frame.setZoomScale(1.2 + 1e-10);
    QCOMPARE(scale.count(), 1);
}

void TestImgFrame::panIsLimited_data()
{
    QTest::addColumn<double>("written");
    QTest::addColumn<double>("stored");
    QTest::newRow("inside") << 0.25 << 0.25;
    QTest::newRow("below") << -0.1 << 0.0;
    QTest::newRow("above") << 0.9 << 0.5;
    QTest::newRow("no number") << qQNaN() << 0.0;
}

void TestImgFrame::panIsLimited()
{
    QFETCH(double, written);
    QFETCH(double, stored);
    ImgFrame frame;
    frame.setMaxPan(0.5, 0.5);
    QSignalSpy x(&frame, &ImgFrame::panXChanged);
    QSignalSpy y(&frame, &ImgFrame::panYChanged);
    QSignalSpy data(&frame, &ImgFrame::dataChanged);
    frame.setPanX(written);
    QCOMPARE(frame.panX(), stored);
    QCOMPARE(frame.panY(), 0.0);
    frame.setPanY(written);
    QCOMPARE(frame.panY(), stored);
    const int changes = stored != 0.0 ? 1 : 0;
    QCOMPARE(x.count(), changes);
    QCOMPARE(y.count(), changes);
    QCOMPARE(data.count(), 2 * changes);
}

void TestImgFrame::panOfAVisibleImageStaysAtZero()
{
    ImgFrame frame;
    frame.setPanX(0.3);
    frame.setPanY(0.3);
    QCOMPARE(frame.panX(), 0.0);
    QCOMPARE(frame.panY(), 0.0);
}

void TestImgFrame::panAtItsLimitStillShowsTheBars()
{
    ImgFrame frame;
    QSignalSpy active(&frame, &ImgFrame::panZoomActiveChanged);
    frame.setPanX(0.0);
    QVERIFY(frame.panZoomActive());
    frame.setPanY(0.0);
    QCOMPARE(active.count(), 1);
}

void TestImgFrame::imageIsToldWithEveryWrite()
{
    ImgFrame frame;
    QSignalSpy image(&frame, &ImgFrame::imageChanged);
    QSignalSpy data(&frame, &ImgFrame::dataChanged);
    const QImage picture(4, 3, QImage::Format_BGR888);
    frame.setImage(picture);
    frame.setImage(picture);
    QCOMPARE(image.count(), 2);
    QCOMPARE(data.count(), 2);
    QCOMPARE(frame.image().constBits(), picture.constBits());
}

void TestImgFrame::zoomFitTellsOnce()
{
    ImgFrame frame;
    QSignalSpy fit(&frame, &ImgFrame::zoomFitChanged);
    QSignalSpy data(&frame, &ImgFrame::dataChanged);
    frame.setZoomFit(true);
    frame.setZoomFit(true);
    QCOMPARE(fit.count(), 1);
    QCOMPARE(data.count(), 1);
}

void TestImgFrame::maxPanTellsEachSideThatChanged()
{
    ImgFrame frame;
    QSignalSpy x(&frame, &ImgFrame::maxPanXChanged);
    QSignalSpy y(&frame, &ImgFrame::maxPanYChanged);
    frame.setMaxPan(0.5, 0.0);
    QCOMPARE(x.count(), 1);
    QCOMPARE(y.count(), 0);
    frame.setMaxPan(0.5, 0.25);
    QCOMPARE(x.count(), 1);
    QCOMPARE(y.count(), 1);
    QCOMPARE(frame.maxPanX(), 0.5);
    QCOMPARE(frame.maxPanY(), 0.25);
}

void TestImgFrame::panIsBroughtIntoNewLimits()
{
    ImgFrame frame;
    frame.setMaxPan(0.75, 0.5);
    frame.setPanX(0.75);
    frame.setPanY(0.25);
    QSignalSpy x(&frame, &ImgFrame::panXChanged);
    QSignalSpy y(&frame, &ImgFrame::panYChanged);
    QSignalSpy data(&frame, &ImgFrame::dataChanged);
    frame.setMaxPan(0.5, 0.5);
    QCOMPARE(frame.panX(), 0.5);
    QCOMPARE(frame.panY(), 0.25);
    QCOMPARE(x.count(), 1);
    QCOMPARE(y.count(), 0);
    frame.setMaxPan(0.0, 0.0);
    QCOMPARE(frame.panX(), 0.0);
    QCOMPARE(frame.panY(), 0.0);
    QCOMPARE(y.count(), 1);
    QCOMPARE(data.count(), 0);
}

void TestImgFrame::zoomingAndPanningAreActiveForASecond()
{
    ImgFrame frame;
    QSignalSpy active(&frame, &ImgFrame::panZoomActiveChanged);
    QElapsedTimer elapsed;
    elapsed.start();
    frame.zoomIn();
    QVERIFY(frame.panZoomActive());
    QVERIFY(active.wait(5000));
    QVERIFY(!frame.panZoomActive());
    // Coarse timers may be early by a twentieth.
    QVERIFY(elapsed.elapsed() >= 950);
    QCOMPARE(active.count(), 1 + 1);
}

void TestImgFrame::activityRestartsWithEveryMove()
{
    ImgFrame frame;
    QSignalSpy active(&frame, &ImgFrame::panZoomActiveChanged);
    frame.setPanX(0.0);
    QElapsedTimer elapsed;
    elapsed.start();
    QVERIFY(!active.wait(600));
    frame.setPanY(0.0);
    QVERIFY(active.wait(5000));
    QVERIFY(elapsed.elapsed() >= 1500);
    QVERIFY(!frame.panZoomActive());
    QCOMPARE(active.count(), 2);
}

QTEST_GUILESS_MAIN(TestImgFrame)
#include "tst_img_frame.moc"
