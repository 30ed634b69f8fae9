#include "camera/camera.h"
#include "image/img_frame.h"
#include "sim/camera.h"
#include "tests/qml/view_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

/** The picture of a selected camera and what is shown over it. */
class TestFrameView : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void runningBlackReferenceShowsOverThePicture();
    void keysReachThePictureAfterAClick();
    void pictureShowsTimeAndPixel();
    void rightClickOffersTheZooms();

private:
    QPoint picturePoint(int x, int y) const;

    ViewFixture m_view;
};

void TestFrameView::cleanup()
{
    m_view.close();
    QCOMPARE(m_view.warnings(), QStringList());
    VeskApp::instance()->settings()->remove(u"cameras"_s);
}

/** A point of the window that lies on the picture's pixel; the picture is shown 1:1 and whole. */
QPoint TestFrameView::picturePoint(int x, int y) const
{
    QAccessibleInterface *picture = m_view.element(u"Picture"_s);
    auto *item = qobject_cast<QQuickItem *>(picture->object());
    const QRectF painted = item->property("paintedRect").toRectF();
    return item->mapToScene(painted.topLeft() + QPointF(x, y)).toPoint();
}

void TestFrameView::runningBlackReferenceShowsOverThePicture()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    simulated->forceValue(u"acq/bref_state"_s, Camera::BrefInProgress);
    QTRY_VERIFY(m_view.itemWithText(u"BLACK REF IN PROGRESS..."_s));
    QQuickItem *text = m_view.itemWithText(u"BLACK REF IN PROGRESS..."_s);
    QCOMPARE(text->parentItem()->height(), 28.0);
    QCOMPARE(text->parentItem()->width(), text->width() + 12);
    simulated->forceValue(u"acq/bref_state"_s, 0);
    QTRY_VERIFY(!m_view.itemWithText(u"BLACK REF IN PROGRESS..."_s));
}

void TestFrameView::keysReachThePictureAfterAClick()
{
    QVERIFY(m_view.startWithCamera());
    QTRY_VERIFY(!m_view.camera()->imgFrame()->image().isNull());
    QTest::keyClick(m_view.window(), Qt::Key_Plus, Qt::ControlModifier);
    QCOMPARE(m_view.camera()->imgFrame()->zoomScale(), 1.25);
    QVERIFY(m_view.click(u"Black Reference"_s));
    QVERIFY(m_view.click(u"Flip vertically"_s));
    QTest::keyClick(m_view.window(), Qt::Key_Plus, Qt::ControlModifier);
    QCOMPARE(m_view.camera()->imgFrame()->zoomScale(), 1.5);
    QTest::keyClick(m_view.window(), Qt::Key_Minus, Qt::ControlModifier);
    QCOMPARE(m_view.camera()->imgFrame()->zoomScale(), 1.25);
}

void TestFrameView::pictureShowsTimeAndPixel()
{
    QVERIFY(m_view.startWithCamera());
    QTRY_VERIFY(m_view.element(u"Picture"_s)->object()->property("paintedRect").toRectF().isValid());
    QCOMPARE(m_view.rowText(u"Time of the frame"_s), m_view.camera()->timestamp());
    QVERIFY(!m_view.itemWithText(u"X: 12"_s));
    QTest::mouseMove(m_view.window(), picturePoint(12, 34));
    QTRY_VERIFY(m_view.itemWithText(u"X: 12"_s));
    QVERIFY(m_view.itemWithText(u"Y: 34"_s));
    QCOMPARE(m_view.camera()->veskFrame()->rgbPoint(), QPoint(12, 34));
    QTest::mouseMove(m_view.window(), picturePoint(-20, -20));
    QTRY_VERIFY(!m_view.itemWithText(u"X: 0"_s));
}

void TestFrameView::rightClickOffersTheZooms()
{
    QVERIFY(m_view.startWithCamera());
    QTRY_VERIFY(!m_view.camera()->imgFrame()->image().isNull());
    QQuickWindow *window = m_view.window();
    QTest::mouseClick(window, Qt::RightButton, {}, picturePoint(100, 100));
    QTRY_VERIFY(m_view.shows(u"Zoom Fit"_s));
    QVERIFY(!m_view.shows(u"Zoom 1:1"_s));
    QVERIFY(m_view.click(u"Zoom Fit"_s));
    QTRY_VERIFY(m_view.camera()->imgFrame()->zoomFit());
    QTRY_VERIFY(m_view.camera()->imgFrame()->zoomScale() != 1.0);
    QTRY_VERIFY(!m_view.shows(u"Zoom Fit"_s));
    QTest::mouseClick(window, Qt::RightButton, {}, picturePoint(50, 50));
    QTRY_VERIFY(m_view.shows(u"Zoom 1:1"_s));
    QVERIFY(!m_view.shows(u"Zoom Fit"_s));
    QVERIFY(m_view.click(u"Zoom 1:1"_s));
    QTRY_COMPARE(m_view.camera()->imgFrame()->zoomScale(), 1.0);
    QVERIFY(!m_view.camera()->imgFrame()->zoomFit());
}

VIEW_TEST_MAIN(TestFrameView)
#include "tst_frame_view.moc"
