#include "image/img_frame.h"
#include "image/img_frame_control.h"

#include <QQuickWindow>
#include <QSignalSpy>
#include <QTest>

#include <cmath>
#include <memory>

/** Lies under the control and sees what the control lets through. */
class Backdrop : public QQuickItem
{
    Q_OBJECT

public:
    explicit Backdrop(QQuickItem *parent) : QQuickItem(parent)
    {
        setAcceptedMouseButtons(Qt::AllButtons);
        setFlag(ItemIsFocusScope);
    }

    int presses = 0;
    /** Keys that came through, but for the modifiers themselves. */
    QList<int> keys;

protected:
    void mousePressEvent(QMouseEvent *) override { ++presses; }
    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->key() != Qt::Key_Control)
            keys.append(event->key());
    }
};

/** A picture in a window of its own, worked with mouse, wheel and keys. */
class TestImgFrameControl : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
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
    void pictureGoesWithItsFrame();
    void otherFrameBringsItsOwnView();
    void pointerTellsThePixelBelow_data();
    void pointerTellsThePixelBelow();
    void pointerTellsThePixelOfAZoomedImage();
    void pointerLeavingTheImageTellsNoPixel_data();
    void pointerLeavingTheImageTellsNoPixel();
    void pointerOnTheFirstPixelIsOnTheImage();
    void pressBesideTheImageIsLetThrough();
    void dragMovesTheImage();
    void dragEndsAtTheEdge();
    void rightClickIsToldInsideAndOutside();
    void rightDragDoesNotMove();
    void wheelMovesByATenth_data();
    void wheelMovesByATenth();
    void controlWheelKeepsThePixelUnderThePointer_data();
    void controlWheelKeepsThePixelUnderThePointer();
    void wheelWithoutImageIsIgnored();
    void keysZoomAroundTheCentre_data();
    void keysZoomAroundTheCentre();
    void otherKeysAreLetThrough_data();
    void otherKeysAreLetThrough();

private:
    static constexpr QPoint Origin{50, 40};

    /** Shows an image in a control of 200 x 120. */
    void show(const QImage &image)
    {
        m_frame->setImage(image);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }
    void move(const QPoint &position) { QTest::mouseMove(m_window.get(), Origin + position); }
    bool wheel(const QPoint &position, int delta, Qt::KeyboardModifiers modifiers)
    {
        const QPointF place = Origin + position;
        QWheelEvent event(place, m_window->mapToGlobal(place), QPoint(), QPoint(0, delta), Qt::NoButton,
                          modifiers, Qt::NoScrollPhase, false);
        event.ignore();
        QCoreApplication::sendEvent(m_window.get(), &event);
        return event.isAccepted();
    }
    QColor grabbed(const QPoint &position) { return m_window->grabWindow().pixelColor(Origin + position); }

    std::unique_ptr<ImgFrame> m_frame;
    std::unique_ptr<QQuickWindow> m_window;
    Backdrop *m_backdrop = nullptr;
    ImgFrameControl *m_control = nullptr;
};

static QImage plain(int width, int height, Qt::GlobalColor color)
{
    QImage image(width, height, QImage::Format_BGR888);
    image.fill(color);
    return image;
}

/** Red, green, blue and white quarters, from the top left along the rows. */
static QImage quarters(int width, int height)
{
    QImage image(width, height, QImage::Format_BGR888);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool right = x >= width / 2;
            image.setPixelColor(x, y, y < height / 2 ? (right ? Qt::green : Qt::red)
                                                     : (right ? Qt::white : Qt::blue));
        }
    }
    return image;
}

void TestImgFrameControl::init()
{
    m_frame = std::make_unique<ImgFrame>();
    m_window = std::make_unique<QQuickWindow>();
    m_window->setColor(Qt::magenta);
    m_window->resize(300, 200);
    m_backdrop = new Backdrop(m_window->contentItem());
    m_backdrop->setSize(QSizeF(300, 200));
    m_control = new ImgFrameControl(m_backdrop);
    m_control->setPosition(Origin);
    m_control->setSize(QSizeF(200, 120));
    m_control->setImgFrame(m_frame.get());
}

void TestImgFrameControl::cleanup()
{
    // The pointer of the next test starts from a place where there is no control.
    QTest::mouseMove(m_window.get(), QPoint(1, 1));
    m_window.reset();
    m_frame.reset();
}

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

void TestImgFrameControl::pictureGoesWithItsFrame()
{
    show(plain(40, 30, Qt::red));
    move(QPoint(100, 60));
    m_frame.reset();
    QCOMPARE(m_control->imgFrame(), nullptr);
    QCOMPARE(grabbed(QPoint(100, 60)), QColor(Qt::magenta));
    // Nothing of what a user may do needs a frame.
    move(QPoint(101, 61));
    QVERIFY(!wheel(QPoint(100, 60), 120, Qt::ControlModifier));
    QTest::mouseClick(m_window.get(), Qt::LeftButton, {}, Origin + QPoint(100, 60));
    m_control->forceActiveFocus();
    QTest::keyClick(m_window.get(), Qt::Key_Plus, Qt::ControlModifier);
    QVERIFY(!m_control->containsMouse());
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

void TestImgFrameControl::pointerTellsThePixelBelow_data()
{
    QTest::addColumn<QPoint>("pointer");
    QTest::addColumn<QPoint>("pixel");
    // A 40 x 30 image lies at (80, 45).
    QTest::newRow("inside") << QPoint(90, 50) << QPoint(10, 5);
    QTest::newRow("last pixel") << QPoint(119, 74) << QPoint(39, 29);
    QTest::newRow("first row") << QPoint(100, 45) << QPoint(20, 0);
}

void TestImgFrameControl::pointerTellsThePixelBelow()
{
    QFETCH(QPoint, pointer);
    QFETCH(QPoint, pixel);
    show(plain(40, 30, Qt::red));
    QSignalSpy changed(m_control, &ImgFrameControl::mouseXYChanged);
    QSignalSpy contains(m_control, &ImgFrameControl::containsMouseChanged);
    move(pointer);
    QCOMPARE(QPoint(m_control->mouseX(), m_control->mouseY()), pixel);
    QVERIFY(m_control->containsMouse());
    QCOMPARE(m_control->cursor().shape(), Qt::CrossCursor);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(contains.count(), 1);
}

void TestImgFrameControl::pointerTellsThePixelOfAZoomedImage()
{
    show(plain(400, 300, Qt::red));
    m_frame->setZoomScale(2.0);
    m_frame->setPanX(0.25);
    m_frame->setPanY(0.5);
    QSignalSpy changed(m_control, &ImgFrameControl::mouseXYChanged);
    move(QPoint(30, 20));
    QCOMPARE(QPoint(m_control->mouseX(), m_control->mouseY()), QPoint(100 + 15, 150 + 10));
    // The other half of the same pixel is no change.
    move(QPoint(31, 21));
    QCOMPARE(changed.count(), 1);
    move(QPoint(32, 21));
    QCOMPARE(QPoint(m_control->mouseX(), m_control->mouseY()), QPoint(116, 160));
    QCOMPARE(changed.count(), 2);
}

void TestImgFrameControl::pointerLeavingTheImageTellsNoPixel_data()
{
    QTest::addColumn<QPoint>("outside");
    QTest::newRow("left of the image") << QPoint(79, 60);
    QTest::newRow("above it") << QPoint(100, 44);
    QTest::newRow("right of it") << QPoint(120, 60);
    QTest::newRow("below it") << QPoint(100, 75);
    QTest::newRow("out of the item") << QPoint(-20, -20);
}

void TestImgFrameControl::pointerLeavingTheImageTellsNoPixel()
{
    QFETCH(QPoint, outside);
    show(plain(40, 30, Qt::red));
    move(QPoint(90, 50));
    QSignalSpy changed(m_control, &ImgFrameControl::mouseXYChanged);
    QSignalSpy contains(m_control, &ImgFrameControl::containsMouseChanged);
    move(outside);
    QCOMPARE(m_control->mouseX(), 0);
    QCOMPARE(m_control->mouseY(), 0);
    QVERIFY(!m_control->containsMouse());
    QCOMPARE(m_control->cursor().shape(), Qt::ArrowCursor);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(contains.count(), 1);
}

void TestImgFrameControl::pointerOnTheFirstPixelIsOnTheImage()
{
    show(plain(40, 30, Qt::red));
    QSignalSpy changed(m_control, &ImgFrameControl::mouseXYChanged);
    move(QPoint(80, 45));
    QVERIFY(m_control->containsMouse());
    QCOMPARE(m_control->mouseX(), 0);
    QCOMPARE(m_control->mouseY(), 0);
    QCOMPARE(changed.count(), 0);
}

void TestImgFrameControl::pressBesideTheImageIsLetThrough()
{
    show(plain(160, 300, Qt::red));
    QCOMPARE(m_control->paintedRect(), QRectF(20, 0, 160, 120));
    const QPoint beside = Origin + QPoint(10, 60);
    QTest::mousePress(m_window.get(), Qt::LeftButton, {}, beside);
    QCOMPARE(m_backdrop->presses, 1);
    QTest::mouseMove(m_window.get(), beside - QPoint(0, 30));
    QTest::mouseRelease(m_window.get(), Qt::LeftButton, {}, beside - QPoint(0, 30));
    QCOMPARE(m_frame->panY(), 0.0);
    QTest::mousePress(m_window.get(), Qt::RightButton, {}, beside);
    QTest::mouseRelease(m_window.get(), Qt::RightButton, {}, beside);
    QCOMPARE(m_backdrop->presses, 1);
    QTest::mouseClick(m_window.get(), Qt::LeftButton, {}, Origin + QPoint(30, 60));
    QCOMPARE(m_backdrop->presses, 1);
}

void TestImgFrameControl::dragMovesTheImage()
{
    show(plain(400, 300, Qt::red));
    m_frame->setZoomScale(2.0);
    // The whole image is 800 x 600 on the screen.
    QTest::mousePress(m_window.get(), Qt::LeftButton, {}, Origin + QPoint(150, 100));
    QTest::mouseMove(m_window.get(), Origin + QPoint(110, 70));
    QCOMPARE(m_control->cursor().shape(), Qt::ClosedHandCursor);
    QCOMPARE(m_frame->panX(), 40.0 / 800.0);
    QCOMPARE(m_frame->panY(), 30.0 / 600.0);
    QVERIFY(m_frame->panZoomActive());
    QTest::mouseMove(m_window.get(), Origin + QPoint(126, 64));
    QCOMPARE(m_frame->panX(), 24.0 / 800.0);
    QCOMPARE(m_frame->panY(), 36.0 / 600.0);
    QTest::mouseRelease(m_window.get(), Qt::LeftButton, {}, Origin + QPoint(126, 64));
    QCOMPARE(m_control->cursor().shape(), Qt::CrossCursor);
    QTest::mouseMove(m_window.get(), Origin + QPoint(20, 20));
    QCOMPARE(m_frame->panX(), 24.0 / 800.0);
}

void TestImgFrameControl::dragEndsAtTheEdge()
{
    show(plain(250, 150, Qt::red));
    QTest::mousePress(m_window.get(), Qt::LeftButton, {}, Origin + QPoint(190, 60));
    QTest::mouseMove(m_window.get(), Origin + QPoint(10, -30));
    QCOMPARE(m_frame->panX(), 0.2);
    QCOMPARE(m_frame->panY(), 0.2);
    QTest::mouseRelease(m_window.get(), Qt::LeftButton, {}, Origin + QPoint(10, -30));
    QCOMPARE(m_control->cursor().shape(), Qt::ArrowCursor);
}

void TestImgFrameControl::rightClickIsToldInsideAndOutside()
{
    show(plain(40, 30, Qt::red));
    QSignalSpy clicked(m_control, &ImgFrameControl::rightClicked);
    QTest::mousePress(m_window.get(), Qt::RightButton, {}, Origin + QPoint(100, 60));
    QCOMPARE(clicked.count(), 0);
    QTest::mouseRelease(m_window.get(), Qt::RightButton, {}, Origin + QPoint(100, 60));
    QCOMPARE(clicked.count(), 1);
    QTest::mouseClick(m_window.get(), Qt::RightButton, {}, Origin + QPoint(5, 5));
    QCOMPARE(clicked.count(), 2);
    QTest::mouseClick(m_window.get(), Qt::LeftButton, {}, Origin + QPoint(100, 60));
    QCOMPARE(clicked.count(), 2);
}

void TestImgFrameControl::rightDragDoesNotMove()
{
    show(plain(400, 300, Qt::red));
    QTest::mousePress(m_window.get(), Qt::RightButton, {}, Origin + QPoint(150, 100));
    QTest::mouseMove(m_window.get(), Origin + QPoint(100, 50));
    QTest::mouseRelease(m_window.get(), Qt::RightButton, {}, Origin + QPoint(100, 50));
    QCOMPARE(m_frame->panX(), 0.0);
    QCOMPARE(m_frame->panY(), 0.0);
}

void TestImgFrameControl::wheelMovesByATenth_data()
{
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<int>("delta");
    QTest::addColumn<double>("panX");
    QTest::addColumn<double>("panY");
    const Qt::KeyboardModifiers none;
    QTest::newRow("up") << none << 120 << 0.25 << 0.2;
    QTest::newRow("down") << none << -120 << 0.25 << 0.4;
    QTest::newRow("far down is one step too") << none << -960 << 0.25 << 0.4;
    QTest::newRow("none") << none << 0 << 0.25 << 0.3;
    QTest::newRow("shift up") << Qt::KeyboardModifiers(Qt::ShiftModifier) << 120 << 0.15 << 0.3;
    QTest::newRow("shift down") << Qt::KeyboardModifiers(Qt::ShiftModifier) << -120 << 0.35 << 0.3;
    QTest::newRow("shift none") << Qt::KeyboardModifiers(Qt::ShiftModifier) << 0 << 0.25 << 0.3;
}

void TestImgFrameControl::wheelMovesByATenth()
{
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QFETCH(int, delta);
    QFETCH(double, panX);
    QFETCH(double, panY);
    show(plain(400, 300, Qt::red));
    m_frame->setPanX(0.25);
    m_frame->setPanY(0.3);
    QVERIFY(wheel(QPoint(50, 30), delta, modifiers));
    QCOMPARE(m_frame->panX(), panX);
    QCOMPARE(m_frame->panY(), panY);
    QCOMPARE(m_frame->zoomScale(), 1.0);
}

void TestImgFrameControl::controlWheelKeepsThePixelUnderThePointer_data()
{
    QTest::addColumn<int>("delta");
    QTest::addColumn<double>("scale");
    QTest::addColumn<double>("panX");
    QTest::addColumn<double>("panY");
    // From 1 and pan (0.25, 0.3) the pixel under (50, 30) is (100 + 50, 90 + 30).
    // At 1.25 it would be (100 + 40, 90 + 24): 10 and 6 pixels back.
    QTest::newRow("in") << 120 << 1.25 << 0.25 + 10.0 / 400.0 << 0.3 + 6.0 / 300.0;
    // At 0.75 the image is 300 x 225: the pixel would be (100 + 66, 90 + 40).
    QTest::newRow("out") << -120 << 0.75 << 0.25 - 16.0 / 400.0 << 0.3 - 10.0 / 300.0;
    QTest::newRow("one unit is enough") << 1 << 1.25 << 0.25 + 10.0 / 400.0 << 0.3 + 6.0 / 300.0;
    QTest::newRow("none") << 0 << 1.0 << 0.25 << 0.3;
}

void TestImgFrameControl::controlWheelKeepsThePixelUnderThePointer()
{
    QFETCH(int, delta);
    QFETCH(double, scale);
    QFETCH(double, panX);
    QFETCH(double, panY);
    show(plain(400, 300, Qt::red));
    m_frame->setPanX(0.25);
    m_frame->setPanY(0.3);
    wheel(QPoint(50, 30), delta, Qt::ControlModifier);
    QCOMPARE(m_frame->zoomScale(), scale);
    QCOMPARE(m_frame->panX(), panX);
    QCOMPARE(m_frame->panY(), panY);
    // The visible part starts at a whole pixel, which may cost one.
    move(QPoint(50, 30));
    QVERIFY(std::abs(m_control->mouseX() - 150) <= 1);
    QVERIFY(std::abs(m_control->mouseY() - 120) <= 1);
}

void TestImgFrameControl::wheelWithoutImageIsIgnored()
{
    m_window->show();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    for (const auto modifiers : {Qt::NoModifier, Qt::ShiftModifier, Qt::ControlModifier})
        QVERIFY(!wheel(QPoint(50, 30), 120, modifiers));
    QCOMPARE(m_frame->zoomScale(), 1.0);
    QCOMPARE(m_frame->panX(), 0.0);
}

void TestImgFrameControl::keysZoomAroundTheCentre_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<double>("scale");
    QTest::addColumn<double>("panX");
    QTest::addColumn<double>("panY");
    // The centre is (0.5, 0.5). At 1.25, 0.4 of the width and 0.32 of the height are visible; at 0.75,
    // 200 / 300 and 120 / 225.
    for (const auto &[name, key] : {std::pair("+", Qt::Key_Plus), std::pair("=", Qt::Key_Equal)})
        QTest::newRow(name) << key << 1.25 << 0.3 << 0.34;
    for (const auto &[name, key] : {std::pair("-", Qt::Key_Minus), std::pair("_", Qt::Key_Underscore)})
        QTest::newRow(name) << key << 0.75 << 0.5 - 100.0 / 300.0 << 0.5 - 60.0 / 225.0;
}

void TestImgFrameControl::keysZoomAroundTheCentre()
{
    QFETCH(Qt::Key, key);
    QFETCH(double, scale);
    QFETCH(double, panX);
    QFETCH(double, panY);
    show(plain(400, 300, Qt::red));
    m_frame->setPanX(0.25);
    m_frame->setPanY(0.3);
    m_control->forceActiveFocus();
    QTest::keyClick(m_window.get(), key, Qt::ControlModifier);
    QCOMPARE(m_frame->zoomScale(), scale);
    QCOMPARE(m_frame->panX(), panX);
    QCOMPARE(m_frame->panY(), panY);
    QVERIFY(m_backdrop->keys.isEmpty());
}

void TestImgFrameControl::otherKeysAreLetThrough_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::newRow("plus alone") << Qt::Key_Plus << Qt::KeyboardModifiers();
    QTest::newRow("minus alone") << Qt::Key_Minus << Qt::KeyboardModifiers();
    QTest::newRow("space") << Qt::Key_Space << Qt::KeyboardModifiers();
    QTest::newRow("control left") << Qt::Key_Left << Qt::KeyboardModifiers(Qt::ControlModifier);
}

void TestImgFrameControl::otherKeysAreLetThrough()
{
    QFETCH(Qt::Key, key);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    show(plain(400, 300, Qt::red));
    m_control->forceActiveFocus();
    QTest::keyClick(m_window.get(), key, modifiers);
    QCOMPARE(m_backdrop->keys, QList<int>{key});
    QCOMPARE(m_frame->zoomScale(), 1.0);
}

QTEST_MAIN(TestImgFrameControl)
#include "tst_img_frame_control.moc"
