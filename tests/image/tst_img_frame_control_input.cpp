#include "tests/image/frame_window.h"

#include <QSignalSpy>
#include <QTest>

#include <cstdlib>

/** A picture in a window worked with real mouse, wheel and key events. */
class TestImgFrameControlInput : public QObject, private FrameWindow
{
    Q_OBJECT

private slots:
    void init() { open(); }
    void cleanup() { close(); }
    void pictureGoesWithItsFrame();
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
};

void TestImgFrameControlInput::pictureGoesWithItsFrame()
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

void TestImgFrameControlInput::pointerTellsThePixelBelow_data()
{
    QTest::addColumn<QPoint>("pointer");
    QTest::addColumn<QPoint>("pixel");
    // A 40 x 30 image lies at (80, 45).
    QTest::newRow("inside") << QPoint(90, 50) << QPoint(10, 5);
    QTest::newRow("last pixel") << QPoint(119, 74) << QPoint(39, 29);
    QTest::newRow("first row") << QPoint(100, 45) << QPoint(20, 0);
}

void TestImgFrameControlInput::pointerTellsThePixelBelow()
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

void TestImgFrameControlInput::pointerTellsThePixelOfAZoomedImage()
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

void TestImgFrameControlInput::pointerLeavingTheImageTellsNoPixel_data()
{
    QTest::addColumn<QPoint>("outside");
    QTest::newRow("left of the image") << QPoint(79, 60);
    QTest::newRow("above it") << QPoint(100, 44);
    QTest::newRow("right of it") << QPoint(120, 60);
    QTest::newRow("below it") << QPoint(100, 75);
    QTest::newRow("out of the item") << QPoint(-20, -20);
}

void TestImgFrameControlInput::pointerLeavingTheImageTellsNoPixel()
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

void TestImgFrameControlInput::pointerOnTheFirstPixelIsOnTheImage()
{
    show(plain(40, 30, Qt::red));
    QSignalSpy changed(m_control, &ImgFrameControl::mouseXYChanged);
    move(QPoint(80, 45));
    QVERIFY(m_control->containsMouse());
    QCOMPARE(m_control->mouseX(), 0);
    QCOMPARE(m_control->mouseY(), 0);
    QCOMPARE(changed.count(), 0);
}

void TestImgFrameControlInput::pressBesideTheImageIsLetThrough()
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

void TestImgFrameControlInput::dragMovesTheImage()
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

void TestImgFrameControlInput::dragEndsAtTheEdge()
{
    show(plain(250, 150, Qt::red));
    QTest::mousePress(m_window.get(), Qt::LeftButton, {}, Origin + QPoint(190, 60));
    QTest::mouseMove(m_window.get(), Origin + QPoint(10, -30));
    QCOMPARE(m_frame->panX(), 0.2);
    QCOMPARE(m_frame->panY(), 0.2);
    QTest::mouseRelease(m_window.get(), Qt::LeftButton, {}, Origin + QPoint(10, -30));
    QCOMPARE(m_control->cursor().shape(), Qt::ArrowCursor);
}

void TestImgFrameControlInput::rightClickIsToldInsideAndOutside()
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

void TestImgFrameControlInput::rightDragDoesNotMove()
{
    show(plain(400, 300, Qt::red));
    QTest::mousePress(m_window.get(), Qt::RightButton, {}, Origin + QPoint(150, 100));
    QTest::mouseMove(m_window.get(), Origin + QPoint(100, 50));
    QTest::mouseRelease(m_window.get(), Qt::RightButton, {}, Origin + QPoint(100, 50));
    QCOMPARE(m_frame->panX(), 0.0);
    QCOMPARE(m_frame->panY(), 0.0);
}

void TestImgFrameControlInput::wheelMovesByATenth_data()
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

void TestImgFrameControlInput::wheelMovesByATenth()
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

void TestImgFrameControlInput::controlWheelKeepsThePixelUnderThePointer_data()
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

void TestImgFrameControlInput::controlWheelKeepsThePixelUnderThePointer()
{
    QFETCH(int, delta);
    QFETCH(double, scale);
    QFETCH(double, panX);
    QFETCH(double, panY);
    show(plain(400, 300, Qt::red));
    m_frame->setPanX(0.25);
    m_frame->setPanY(0.3);
    QTRY_VERIFY(!m_frame->panZoomActive());
    wheel(QPoint(50, 30), delta, Qt::ControlModifier);
    QCOMPARE(m_frame->zoomScale(), scale);
    QCOMPARE(m_frame->panX(), panX);
    QCOMPARE(m_frame->panY(), panY);
    QVERIFY(m_frame->panZoomActive());
    // The visible part starts at a whole pixel, which may cost one.
    move(QPoint(50, 30));
    QVERIFY(std::abs(m_control->mouseX() - 150) <= 1);
    QVERIFY(std::abs(m_control->mouseY() - 120) <= 1);
}

void TestImgFrameControlInput::wheelWithoutImageIsIgnored()
{
    m_window->show();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    for (const auto modifiers : {Qt::NoModifier, Qt::ShiftModifier, Qt::ControlModifier})
        QVERIFY(!wheel(QPoint(50, 30), 120, modifiers));
    QCOMPARE(m_frame->zoomScale(), 1.0);
    QCOMPARE(m_frame->panX(), 0.0);
}

void TestImgFrameControlInput::keysZoomAroundTheCentre_data()
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

void TestImgFrameControlInput::keysZoomAroundTheCentre()
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

void TestImgFrameControlInput::otherKeysAreLetThrough_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::newRow("plus alone") << Qt::Key_Plus << Qt::KeyboardModifiers();
    QTest::newRow("minus alone") << Qt::Key_Minus << Qt::KeyboardModifiers();
    QTest::newRow("space") << Qt::Key_Space << Qt::KeyboardModifiers();
    QTest::newRow("control left") << Qt::Key_Left << Qt::KeyboardModifiers(Qt::ControlModifier);
}

void TestImgFrameControlInput::otherKeysAreLetThrough()
{
    QFETCH(Qt::Key, key);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    show(plain(400, 300, Qt::red));
    m_control->forceActiveFocus();
    QTest::keyClick(m_window.get(), key, modifiers);
    QCOMPARE(m_backdrop->keys, QList<int>{key});
    QCOMPARE(m_frame->zoomScale(), 1.0);
}

QTEST_MAIN(TestImgFrameControlInput)
#include "tst_img_frame_control_input.moc"
