#include "tests/image/frame_window.h"

#include <QSignalSpy>
#include <QTest>

#include <cmath>

/** Where a picture lies, what of it is visible and what is drawn. */
class TestImgFrameControl : public QObject, private FrameWindow
{
    Q_OBJECT

private slots:
    void init() { open(); }
    void cleanup() { close(); }
    void imageLiesInTheMiddle_data();
    void imageLiesInTheMiddle();
    void scaleDecidesWhatIsVisible_data();
    void scaleDecidesWhatIsVisible();
    void zoomFitMayLeaveTheLadder_data();
    void zoomFitMayLeaveTheLadder();
    void zoomFitFollowsTheItem();
    void zoomFitOfAnItemWithoutAreaKeepsTheScale();
    void implicitSizeFollowsTheSizesThatAreSet_data();
    void implicitSizeFollowsTheSizesThatAreSet();
    void emptyImageHasNoSizeAndDrawsNothing();
    void imageIsDrawnWhereItIsSaidToBe();
    void visiblePartIsDrawn_data();
    void visiblePartIsDrawn();
    void nextImageReplacesTheOneBefore();
    void otherFrameBringsItsOwnView();
};

void TestImgFrameControl::imageLiesInTheMiddle_data()
{
    QTest::addColumn<QSizeF>("item");
    QTest::addColumn<QSize>("image");
    QTest::addColumn<QRectF>("painted");
    QTest::newRow("even") << QSizeF(200, 120) << QSize(40, 30) << QRectF(80, 45, 40, 30);
    QTest::newRow("half a pixel goes up") << QSizeF(201, 121) << QSize(40, 30) << QRectF(81, 46, 40, 30);
    QTest::newRow("larger than the item") << QSizeF(200, 120) << QSize(400, 300) << QRectF(0, 0, 200, 120);
    QTest::newRow("wide") << QSizeF(200, 120) << QSize(400, 20) << QRectF(0, 50, 200, 20);
}

void TestImgFrameControl::imageLiesInTheMiddle()
{
    QFETCH(QSizeF, item);
    QFETCH(QSize, image);
    QFETCH(QRectF, painted);
    m_control->setSize(item);
    QSignalSpy changed(m_control, &ImgFrameControl::paintedRectChanged);
    m_frame->setImage(plain(image.width(), image.height(), Qt::red));
    QCOMPARE(m_control->paintedRect(), painted);
    m_frame->setImage(plain(image.width(), image.height(), Qt::green));
    QCOMPARE(changed.count(), 1);
}

void TestImgFrameControl::scaleDecidesWhatIsVisible_data()
{
    QTest::addColumn<double>("scale");
    QTest::addColumn<QRectF>("painted");
    QTest::addColumn<double>("maxPanX");
    QTest::addColumn<double>("maxPanY");
    // The image is 40 x 30, the item 200 x 120.
    QTest::newRow("0.75") << 0.75 << QRectF(85, 49, 30, 22.5) << 0.0 << 0.0;
    QTest::newRow("4 fits") << 4.0 << QRectF(20, 0, 160, 120) << 0.0 << 0.0;
    QTest::newRow("5: 200 x 150") << 5.0 << QRectF(0, 0, 200, 120) << 0.0 << 0.2;
    QTest::newRow("8: 320 x 240") << 8.0 << QRectF(0, 0, 200, 120) << 0.375 << 0.5;
}

void TestImgFrameControl::scaleDecidesWhatIsVisible()
{
    QFETCH(double, scale);
    QFETCH(QRectF, painted);
    QFETCH(double, maxPanX);
    QFETCH(double, maxPanY);
    m_frame->setImage(plain(40, 30, Qt::red));
    m_frame->setZoomScale(scale);
    QCOMPARE(m_control->paintedRect(), painted);
    QCOMPARE(m_frame->maxPanX(), maxPanX);
    QCOMPARE(m_frame->maxPanY(), maxPanY);
    // What is visible as a whole cannot be panned.
    m_frame->setPanX(1.0);
    m_frame->setPanY(1.0);
    QCOMPARE(m_frame->panX(), maxPanX);
    QCOMPARE(m_frame->panY(), maxPanY);
}

void TestImgFrameControl::zoomFitMayLeaveTheLadder_data()
{
    QTest::addColumn<QSize>("image");
    QTest::addColumn<double>("scale");
    QTest::newRow("by height") << QSize(40, 30) << 4.0;
    QTest::newRow("by width") << QSize(150, 30) << 200.0 / 150.0;
    QTest::newRow("below 0.75") << QSize(2000, 30) << 0.1;
    QTest::newRow("above 8") << QSize(4, 2) << 50.0;
}

void TestImgFrameControl::zoomFitMayLeaveTheLadder()
{
    QFETCH(QSize, image);
    QFETCH(double, scale);
    m_frame->setImage(plain(image.width(), image.height(), Qt::red));
    QSignalSpy changed(m_frame.get(), &ImgFrame::zoomScaleChanged);
    m_frame->setZoomFit(true);
    QCOMPARE(m_frame->zoomScale(), scale);
    QCOMPARE(changed.count(), 1);
    QVERIFY(qFuzzyIsNull(m_frame->maxPanX()));
    QVERIFY(qFuzzyIsNull(m_frame->maxPanY()));
}

void TestImgFrameControl::zoomFitFollowsTheItem()
{
    m_frame->setImage(plain(40, 30, Qt::red));
    m_frame->setZoomFit(true);
    m_control->setSize(QSizeF(60, 60));
    QCOMPARE(m_frame->zoomScale(), 1.5);
    QCOMPARE(m_control->paintedRect(), QRectF(0, 8, 60, 45));
    // From there a step goes to the ladder and the item no longer decides.
    m_frame->zoomIn();
    QCOMPARE(m_frame->zoomScale(), 1.75);
    m_control->setSize(QSizeF(200, 120));
    QCOMPARE(m_frame->zoomScale(), 1.75);
}

void TestImgFrameControl::zoomFitOfAnItemWithoutAreaKeepsTheScale()
{
    m_frame->setImage(plain(40, 30, Qt::red));
    m_frame->setZoomFit(true);
    m_control->setSize(QSizeF(0, 120));
    QCOMPARE(m_frame->zoomScale(), 4.0);
    QVERIFY(!std::isnan(m_frame->maxPanX()));
    m_control->setSize(QSizeF(80, 120));
    QCOMPARE(m_frame->zoomScale(), 2.0);
    QCOMPARE(m_frame->maxPanX(), 0.0);
}

void TestImgFrameControl::implicitSizeFollowsTheSizesThatAreSet_data()
{
    QTest::addColumn<double>("width");
    QTest::addColumn<double>("height");
    QTest::addColumn<double>("scale");
    QTest::addColumn<QSizeF>("implicit");
    // The image is 40 x 30; a size of 0 stands for one that is not set.
    QTest::newRow("none set") << 0.0 << 0.0 << 2.0 << QSizeF(40, 30);
    QTest::newRow("both set") << 200.0 << 120.0 << 2.0 << QSizeF(40, 30);
    QTest::newRow("width set") << 200.0 << 0.0 << 0.75 << QSizeF(40, 22.5);
    QTest::newRow("width set, enlarged") << 200.0 << 0.0 << 2.0 << QSizeF(40, 30);
    QTest::newRow("height set") << 0.0 << 120.0 << 0.75 << QSizeF(30, 30);
}

void TestImgFrameControl::implicitSizeFollowsTheSizesThatAreSet()
{
    QFETCH(double, width);
    QFETCH(double, height);
    QFETCH(double, scale);
    QFETCH(QSizeF, implicit);
    ImgFrameControl control;
    if (width > 0.0)
        control.setWidth(width);
    if (height > 0.0)
        control.setHeight(height);
    control.setImgFrame(m_frame.get());
    m_control->setImgFrame(nullptr);
    m_frame->setZoomScale(scale);
    m_frame->setImage(plain(40, 30, Qt::red));
    QCOMPARE(QSizeF(control.implicitWidth(), control.implicitHeight()), implicit);
}

void TestImgFrameControl::emptyImageHasNoSizeAndDrawsNothing()
{
    show(plain(40, 30, Qt::red));
    QCOMPARE(m_control->implicitWidth(), 40.0);
    QCOMPARE(grabbed(QPoint(100, 60)), QColor(Qt::red));
    m_frame->setImage(QImage());
    QCOMPARE(m_control->implicitWidth(), 0.0);
    QCOMPARE(m_control->implicitHeight(), 0.0);
    QCOMPARE(grabbed(QPoint(100, 60)), QColor(Qt::magenta));
    m_frame->zoomIn();
    m_frame->setZoomFit(true);
    QCOMPARE(m_frame->zoomScale(), 1.25);
}

void TestImgFrameControl::imageIsDrawnWhereItIsSaidToBe()
{
    show(quarters(40, 30));
    const QImage window = m_window->grabWindow();
    const QPoint corner = Origin + QPoint(80, 45);
    QCOMPARE(window.pixelColor(corner), QColor(Qt::red));
    QCOMPARE(window.pixelColor(corner + QPoint(39, 0)), QColor(Qt::green));
    QCOMPARE(window.pixelColor(corner + QPoint(0, 29)), QColor(Qt::blue));
    QCOMPARE(window.pixelColor(corner + QPoint(39, 29)), QColor(Qt::white));
    QCOMPARE(window.pixelColor(corner - QPoint(1, 0)), QColor(Qt::magenta));
    QCOMPARE(window.pixelColor(corner - QPoint(0, 1)), QColor(Qt::magenta));
    QCOMPARE(window.pixelColor(corner + QPoint(40, 0)), QColor(Qt::magenta));
    QCOMPARE(window.pixelColor(corner + QPoint(0, 30)), QColor(Qt::magenta));
}

void TestImgFrameControl::visiblePartIsDrawn_data()
{
    QTest::addColumn<double>("scale");
    QTest::addColumn<double>("panX");
    QTest::addColumn<double>("panY");
    QTest::addColumn<QColor>("first");
    QTest::addColumn<QColor>("last");
    // The quarters of a 400 x 300 image are 200 x 150, the item is 200 x 120.
    QTest::newRow("top left") << 1.0 << 0.0 << 0.0 << QColor(Qt::red) << QColor(Qt::red);
    QTest::newRow("top right") << 1.0 << 0.5 << 0.0 << QColor(Qt::green) << QColor(Qt::green);
    QTest::newRow("bottom left") << 1.0 << 0.0 << 0.6 << QColor(Qt::blue) << QColor(Qt::blue);
    QTest::newRow("bottom right") << 1.0 << 0.5 << 0.6 << QColor(Qt::white) << QColor(Qt::white);
    QTest::newRow("middle") << 1.0 << 0.25 << 0.3 << QColor(Qt::red) << QColor(Qt::white);
    QTest::newRow("middle, twice as large") << 2.0 << 0.375 << 0.4 << QColor(Qt::red) << QColor(Qt::white);
}

void TestImgFrameControl::visiblePartIsDrawn()
{
    QFETCH(double, scale);
    QFETCH(double, panX);
    QFETCH(double, panY);
    QFETCH(QColor, first);
    QFETCH(QColor, last);
    show(quarters(400, 300));
    m_frame->setZoomScale(scale);
    m_frame->setPanX(panX);
    m_frame->setPanY(panY);
    QCOMPARE(m_frame->panX(), panX);
    QCOMPARE(m_frame->panY(), panY);
    QCOMPARE(grabbed(QPoint(1, 1)), first);
    QCOMPARE(grabbed(QPoint(198, 118)), last);
}

void TestImgFrameControl::nextImageReplacesTheOneBefore()
{
    show(plain(40, 30, Qt::red));
    QCOMPARE(grabbed(QPoint(100, 60)), QColor(Qt::red));
    m_frame->setImage(plain(40, 30, Qt::green));
    QCOMPARE(grabbed(QPoint(100, 60)), QColor(Qt::green));
    m_frame->setImage(plain(20, 60, Qt::blue));
    QCOMPARE(grabbed(QPoint(100, 31)), QColor(Qt::blue));
    QCOMPARE(grabbed(QPoint(85, 60)), QColor(Qt::magenta));
}

void TestImgFrameControl::otherFrameBringsItsOwnView()
{
    show(plain(40, 30, Qt::red));
    ImgFrame other;
    other.setImage(plain(60, 20, Qt::blue));
    other.setZoomScale(2.0);
    QSignalSpy changed(m_control, &ImgFrameControl::imgFrameChanged);
    m_control->setImgFrame(&other);
    m_control->setImgFrame(&other);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(m_control->paintedRect(), QRectF(40, 40, 120, 40));
    QCOMPARE(grabbed(QPoint(41, 41)), QColor(Qt::blue));
    // The frame that is out of sight no longer moves what is shown.
    m_frame->setImage(plain(10, 10, Qt::green));
    QCOMPARE(m_control->paintedRect(), QRectF(40, 40, 120, 40));
}

QTEST_MAIN(TestImgFrameControl)
#include "tst_img_frame_control.moc"
