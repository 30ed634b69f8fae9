#include "camera/camera.h"
#include "file/vesk_file.h"
#include "image/img_frame.h"
#include "sim/camera.h"
#include "tests/qml/vesk_file_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QFont>
#include <QQuickItem>
#include <QQuickWindow>

#include <cmath>

using namespace Qt::StringLiterals;

/** Zooming and moving a picture by mouse, and what is told beside it. */
class TestPicture : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void readOutTellsTheColorOnNineBits_data();
    void readOutTellsTheColorOnNineBits();
    void readOutTellsEachChannel();
    void readOutStandsBottomLeft();
    void timeStandsTopLeftInFiguresOfOneWidth();
    void scrollBarsLieBesideThePicture();
    void draggedScrollBarMovesThePicture_data();
    void draggedScrollBarMovesThePicture();
    void zoomGoesOnFromTheWholePicture_data();
    void zoomGoesOnFromTheWholePicture();

private:
    QQuickItem *item(const QString &name) const;
    QRectF painted() const { return item(u"Picture"_s)->property("paintedRect").toRectF(); }
    /** A point of the window that lies on a place of the picture's area. */
    QPoint at(const QPointF &place) const { return item(u"Picture"_s)->mapToScene(place).toPoint(); }
    QPoint shownPixel() const;
    bool pointAt(const QPoint &pixel);
    ImgFrame *startZoomed(double scale);

    VeskFileFixture m_view;
};

QQuickItem *TestPicture::item(const QString &name) const
{
    QAccessibleInterface *found = m_view.element(name);
    return found ? qobject_cast<QQuickItem *>(found->object()) : nullptr;
}

/** What the read-out tells of the place under the pointer. */
QPoint TestPicture::shownPixel() const
{
    return {item(u"Picture"_s)->property("mouseX").toInt(), item(u"Picture"_s)->property("mouseY").toInt()};
}

/** Moves the pointer onto a pixel of a picture that is shown 1:1. */
bool TestPicture::pointAt(const QPoint &pixel)
{
    ViewFixture::settle(m_view.window());
    QTest::mouseMove(m_view.window(), at(painted().topLeft() + pixel));
    return QTest::qWaitFor([&] { return shownPixel() == pixel; });
}

/** A camera's picture that is larger than its area by this scale. */
ImgFrame *TestPicture::startZoomed(double scale)
{
    if (!m_view.startWithCamera())
        return nullptr;
    ImgFrame *frame = m_view.camera()->imgFrame();
    if (!QTest::qWaitFor([&] { return !frame->image().isNull() && painted().isValid(); }))
        return nullptr;
    frame->setZoomScale(scale);
    ViewFixture::settle(m_view.window());
    return frame->maxPanX() > 0.0 && frame->maxPanY() > 0.0 ? frame : nullptr;
}

void TestPicture::readOutTellsTheColorOnNineBits_data()
{
    QTest::addColumn<int>("frame");
    QTest::addColumn<QPoint>("pixel");
    QTest::addColumn<QString>("shown");
    // A byte is x + 2 * frame. Below 128 it is the number itself, from 128 on 2 * byte - 127, from 192 on
    // 4 * byte - 509.
    QTest::newRow("dark") << 0 << QPoint(12, 34) << u"RGB: 12, 12, 12"_s;
    QTest::newRow("last of the first part") << 50 << QPoint(27, 3) << u"RGB: 127, 127, 127"_s;
    QTest::newRow("middle") << 50 << QPoint(40, 3) << u"RGB: 153, 153, 153"_s;
    QTest::newRow("bright") << 70 << QPoint(60, 47) << u"RGB: 291, 291, 291"_s;
    QTest::newRow("brightest") << 96 << QPoint(63, 20) << u"RGB: 511, 511, 511"_s;
}

void TestPicture::readOutTellsTheColorOnNineBits()
{
    QFETCH(const int, frame);
    QFETCH(const QPoint, pixel);
    QFETCH(const QString, shown);
    VeskFile *file = m_view.start({.firstFr = 0, .lastFr = 99});
    QVERIFY(file);
    file->pause();
    file->setFr(frame);
    QVERIFY(pointAt(pixel));
    QTRY_VERIFY2(m_view.itemWithText(shown), qPrintable(shown));
    QVERIFY(m_view.itemWithText(u"X: %1"_s.arg(pixel.x())));
    QVERIFY(m_view.itemWithText(u"Y: %1"_s.arg(pixel.y())));
}

void TestPicture::readOutTellsEachChannel()
{
    VeskFile *file = m_view.start({.firstFr = 0, .lastFr = 9, .cfa = 1});
    QVERIFY(file);
    file->pause();
    file->setFr(5);
    QVERIFY(m_view.click(u"Color Adjustments"_s));
    QTRY_VERIFY(m_view.field(u"Color Adjustments"_s, u"Red"_s));
    QVERIFY(m_view.type(u"Color Adjustments"_s, u"Red"_s, u"2"_s));
    QVERIFY(m_view.type(u"Color Adjustments"_s, u"Blue"_s, u"3"_s));
    // Bytes of frame 5 are x + 10, alike from top to bottom, so that what lies between two is their mean.
    QVERIFY(pointAt({30, 20}));
    QTRY_VERIFY(m_view.itemWithText(u"RGB: 80, 40, 120"_s));
}

void TestPicture::readOutStandsBottomLeft()
{
    QVERIFY(m_view.start());
    QVERIFY(pointAt({5, 6}));
    const QQuickItem *x = m_view.itemWithText(u"X: 5"_s);
    QVERIFY(x);
    const QQuickItem *readOut = x->parentItem();
    const QList<QQuickItem *> fields = readOut->childItems();
    QCOMPARE(fields.size(), 3);
    QCOMPARE(fields[0]->width(), 50.0);
    QCOMPARE(fields[1]->width(), 50.0);
    QCOMPARE(fields[2]->width(), 120.0);
    QVERIFY(fields[2]->property("text").toString().startsWith("RGB: "_L1));
    const QQuickItem *view = readOut->parentItem();
    QCOMPARE(readOut->x(), 20.0);
    QCOMPARE(readOut->y() + readOut->height(), view->height() - 20.0);
    QCOMPARE(fields[0]->x(), 0.0);
    QCOMPARE(fields[1]->x(), 50.0);
    QCOMPARE(fields[2]->x(), 100.0);
}

void TestPicture::timeStandsTopLeftInFiguresOfOneWidth()
{
    QVERIFY(m_view.start());
    const QQuickItem *time = item(u"Time of the frame"_s);
    QVERIFY(time);
    QVERIFY(!time->property("text").toString().isEmpty());
    QCOMPARE(time->position(), QPointF(20, 20));
    QCOMPARE(time->property("color").value<QColor>(), QColor(Qt::white));
    const QFont font = time->property("font").value<QFont>();
    QCOMPARE(font.letterSpacingType(), QFont::AbsoluteSpacing);
    QCOMPARE(font.letterSpacing(), -0.5);
    QCOMPARE(font.featureValue("tnum"), 1u);
}

void TestPicture::scrollBarsLieBesideThePicture()
{
    ImgFrame *frame = startZoomed(4.0);
    QVERIFY(frame);
    frame->setPanX(0.25);
    frame->setPanY(0.5);
    ViewFixture::settle(m_view.window());
    const QQuickItem *picture = item(u"Picture"_s);
    const QQuickItem *upright = item(u"Vertical position"_s);
    const QQuickItem *lying = item(u"Horizontal position"_s);
    QVERIFY(upright && lying);
    // At four times its size the picture fills its area.
    QCOMPARE(painted(), QRectF({}, picture->size()));
    QCOMPARE(upright->position(), picture->position() + QPointF(picture->width() + 2, 0));
    QCOMPARE(upright->height(), picture->height());
    QCOMPARE(lying->position(), picture->position() + QPointF(0, picture->height() + 2));
    QCOMPARE(lying->width(), picture->width());
    const QSizeF full = QSizeF(frame->image().size()) * 4.0;
    QCOMPARE(upright->property("size").toDouble(), picture->height() / full.height());
    QCOMPARE(lying->property("size").toDouble(), picture->width() / full.width());
    QCOMPARE(upright->property("position").toDouble(), 0.5);
    QCOMPARE(lying->property("position").toDouble(), 0.25);
    QVERIFY(upright->property("active").toBool());
    // A second after the last move the bars fade, unless the pointer is on them.
    QTest::mouseMove(m_view.window(), at({100, 100}));
    QTRY_VERIFY(!upright->property("active").toBool());
    QVERIFY(!lying->property("active").toBool());
}

void TestPicture::draggedScrollBarMovesThePicture_data()
{
    QTest::addColumn<bool>("upright");
    QTest::newRow("vertical") << true;
    QTest::newRow("horizontal") << false;
}

void TestPicture::draggedScrollBarMovesThePicture()
{
    QFETCH(const bool, upright);
    ImgFrame *frame = startZoomed(4.0);
    QVERIFY(frame);
    const QQuickItem *bar = item(upright ? u"Vertical position"_s : u"Horizontal position"_s);
    QVERIFY(bar);
    const auto pan = [&] { return upright ? frame->panY() : frame->panX(); };
    const double length = upright ? bar->height() : bar->width();
    const auto pointOn = [&](double part) {
        const QPointF place =
            upright ? QPointF(bar->width() / 2, length * part) : QPointF(length * part, bar->height() / 2);
        return bar->mapToScene(place).toPoint();
    };
    const double grip = bar->property("size").toDouble() / 2;
    QTest::mousePress(m_view.window(), Qt::LeftButton, {}, pointOn(grip));
    for (const double part : {0.1, 0.2, 0.3})
        QTest::mouseMove(m_view.window(), pointOn(grip + part));
    QVERIFY2(std::abs(pan() - 0.3) < 0.02, qPrintable(QString::number(pan())));
    QCOMPARE(upright ? frame->panX() : frame->panY(), 0.0);
    // Beyond its end it takes the picture to the last pixels.
    QTest::mouseMove(m_view.window(), pointOn(1.5));
    QTest::mouseRelease(m_view.window(), Qt::LeftButton, {}, pointOn(1.5));
    QCOMPARE(pan(), upright ? frame->maxPanY() : frame->maxPanX());
    QTest::mouseMove(m_view.window(), at(painted().bottomRight() - QPointF(8, 8)));
    const QSize image = frame->image().size();
    const int last = (upright ? image.height() : image.width()) - 1;
    QTRY_VERIFY((upright ? shownPixel().y() : shownPixel().x()) >= last - 2);
}

void TestPicture::zoomGoesOnFromTheWholePicture_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<bool>("wheel");
    QTest::newRow("fit, then the wheel") << u"Zoom Fit"_s << true;
    QTest::newRow("fit, then keys") << u"Zoom Fit"_s << false;
    QTest::newRow("1:1, then the wheel") << u"Zoom 1:1"_s << true;
    QTest::newRow("1:1, then keys") << u"Zoom 1:1"_s << false;
}

/** Where the picture was moved to before it was shown whole has no part in it. */
void TestPicture::zoomGoesOnFromTheWholePicture()
{
    QFETCH(const QString, entry);
    QFETCH(const bool, wheel);
    ImgFrame *frame = startZoomed(4.0);
    QVERIFY(frame);
    frame->setPanX(0.6);
    frame->setPanY(0.6);
    QTest::mouseClick(m_view.window(), Qt::RightButton, {}, at({50, 50}));
    QVERIFY(m_view.click(entry));
    QTRY_COMPARE(frame->maxPanX(), 0.0);
    QTRY_COMPARE(frame->maxPanY(), 0.0);
    QTRY_VERIFY(!m_view.shows(entry));
    ViewFixture::settle(m_view.window());
    // By keys the middle of the area stays; the wheel keeps the pixel under the pointer, left of it here.
    const QRectF whole = painted();
    const QPointF place(wheel ? whole.left() + whole.width() / 4 : whole.center().x(), whole.center().y());
    QTest::mouseMove(m_view.window(), at(place - QPointF(7, 0)));
    QTest::mouseMove(m_view.window(), at(place));
    QTRY_VERIFY(shownPixel() != QPoint());
    const QPoint before = shownPixel();
    for (int step = 0; step < 8; ++step) {
        if (wheel)
            QTest::wheelEvent(m_view.window(), at(place), {0, 120}, {}, Qt::ControlModifier);
        else
            QTest::keyClick(m_view.window(), Qt::Key_Plus, Qt::ControlModifier);
    }
    QCOMPARE(frame->zoomScale(), 3.0);
    QTest::mouseMove(m_view.window(), at(place - QPointF(7, 0)));
    QTest::mouseMove(m_view.window(), at(place));
    // Each step may lose part of a pixel.
    const QPoint off = shownPixel() - before;
    QVERIFY2(off.manhattanLength() <= 16, qPrintable(u"%1, %2"_s.arg(off.x()).arg(off.y())));
}

VIEW_TEST_MAIN(TestPicture)
#include "tst_picture.moc"
