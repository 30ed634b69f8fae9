#include "tests/e2e/session.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace
{
constexpr QRgb highlight = 0xFFD25F15;
constexpr QRgb base = 0xFF191919;

bool isBright(QRgb colour)
{
    return qRed(colour) > 150 && qGreen(colour) > 150 && qBlue(colour) > 150;
}

// A glyph in the highlight colour; the fringes of a white one are not.
/// The highlight's colour, D25F15; the edges of a white glyph shimmer in others like it.
bool isLit(QRgb colour)
{
    return qAbs(qRed(colour) - 0xD2) < 16 && qAbs(qGreen(colour) - 0x5F) < 16 &&
           qAbs(qBlue(colour) - 0x15) < 16;
}
} // namespace

/// A camera's live picture in the real program: found by the program itself,
/// shown, and changed by hand.
class TestLiveCamera : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void cameraIsFoundByTheProgramsOwnBroadcastAndSelected();
    void frameNumbersOnTheScreenRise();
    void timestampRunsWithThePicture();
    void histogramShowsThePicturesColours();
    void readOutFollowsThePointer();
    void controlAndWheelZoomsAtThePointer();
    void controlAndPlusZoomsAtTheCentre();
    void dragMovesThePicture();
    void menuGoesBackToOneToOneAndFits();
    void transformButtonsTurnAndFlipThePicture_data();
    void transformButtonsTurnAndFlipThePicture();
    void wheelMovesAPictureThatIsHigherThanItsArea();
    void focusPeakingMarksEdgesInPureGreen();
    void exposureAssistMarksWhatIsOverexposed();
    void autoWhiteBalanceIsSentToTheCamera();

private:
    QRect picture() const { return m_session.shown().painted(); }
    Bar bar(const QImage &window, int y);
    void choose(const QString &row, int index);
    int purePixels(const QImage &window, QRgb colour) const;
    // Waits until the green bar has a width, give or take one pixel of the
    // camera, along a line of the window.
    bool waitForBarWidth(int y, int width);

    Session m_session;
};

void TestLiveCamera::initTestCase()
{
    QCOMPARE(m_session.start(), QString());
    QVERIFY(m_session.waitForLivePicture());
    m_session.keepPicture(u"window"_s);
    // What follows is in reach without this one.
    m_session.toggleSection(u"Acquisition"_s, true);
}

void TestLiveCamera::cleanup()
{
    if (QTest::currentTestFailed())
        m_session.keepPicture(u"failed-"_s + QString::fromLatin1(QTest::currentTestFunction()));
    QCOMPARE(m_session.program().complaints(), QStringList());
}

Bar TestLiveCamera::bar(const QImage &window, int y)
{
    const QRect area = m_session.layout().pictureArea();
    return greenBar(window, y, area.left(), area.right() + 1);
}

bool TestLiveCamera::waitForBarWidth(int y, int width)
{
    Bar found;
    if (m_session.wait(
            [&](const QImage &window) { return qAbs((found = bar(window, y)).width - width) <= 3; }))
        return true;
    qWarning("the green bar is %d wide from %d on, not %d", found.width, found.left, width);
    return false;
}

void TestLiveCamera::choose(const QString &row, int index)
{
    QVERIFY(m_session.choose(row, index));
}

int TestLiveCamera::purePixels(const QImage &window, QRgb colour) const
{
    return Session::count(window, picture(), [colour](QRgb here) { return here == colour; });
}

void TestLiveCamera::cameraIsFoundByTheProgramsOwnBroadcastAndSelected()
{
    // The program was given no address: what came to the camera came by way of
    // its answer to the broadcast.
    QCOMPARE(m_session.camera.firstHeader(u"User-Agent"_s), u"Vesk 1.0"_s);
    const QRect tab = m_session.layout().tab();
    QVERIFY(m_session.wait([tab](const QImage &window) {
        return window.pixel(tab.topLeft()) == highlight && window.pixel(tab.bottomRight()) == highlight &&
               window.pixel(tab.topLeft() - QPoint(1, 1)) != highlight &&
               window.pixel(tab.bottomRight() + QPoint(1, 1)) != highlight;
    }));
    const QImage window = m_session.window();
    QVERIFY(Session::count(window, m_session.layout().tabIcon(), isBright) > 20);
    QVERIFY(Session::count(window, m_session.layout().tabName(), isBright) > 50);
}

void TestLiveCamera::frameNumbersOnTheScreenRise()
{
    const auto first = m_session.shown().frameNumber();
    QVERIFY(first);
    // At 1000 frames a second: not less than half a second of pictures.
    QTRY_VERIFY(m_session.shown().frameNumber().value_or(0) > *first + 500);
    QVERIFY(m_session.wait([this](const QImage &) { return m_session.shown().barsInPlace(); }));
}

void TestLiveCamera::timestampRunsWithThePicture()
{
    const QRect text = m_session.layout().timestamp();
    const QImage before = m_session.window();
    QVERIFY(Session::count(before, text, isBright) > 100);
    // The date, in the first 60 pixels, stands while the fractions of the second
    // run.
    const QRect date(text.topLeft(), QSize(60, text.height()));
    QVERIFY(m_session.wait([&](const QImage &now) {
        return now.copy(text) != before.copy(text) && now.copy(date) == before.copy(date);
    }));
}

void TestLiveCamera::histogramShowsThePicturesColours()
{
    const QRect row = m_session.layout().widget(u"Histogram"_s);
    const QImage before = m_session.window();
    for (const int bits : {4, 2, 1})
        QVERIFY2(Session::count(before, row, [bits](QRgb colour) { return colourBits(colour) == bits; }) > 20,
                 qPrintable(u"no curve of %1"_s.arg(bits)));
    QVERIFY(m_session.wait([&](const QImage &now) { return now.copy(row) != before.copy(row); }));
}

void TestLiveCamera::readOutFollowsThePointer()
{
    const QRect text = m_session.layout().readOut();
    const QRect x(text.topLeft(), QSize(50, text.height()));
    const QRect y = x.translated(50, 0);
    m_session.move(m_session.layout().pictureArea().topLeft() - QPoint(20, -5));
    QVERIFY(m_session.wait([&](const QImage &now) { return Session::count(now, text, isBright) == 0; }));

    m_session.move(picture().topLeft() + QPoint(100, 150));
    QVERIFY(m_session.wait([&](const QImage &now) {
        return Session::count(now, x, isBright) > 10 && Session::count(now, y, isBright) > 10;
    }));
    const QImage first = m_session.window();
    m_session.keepPicture(u"read-out"_s);
    m_session.move(picture().topLeft() + QPoint(100, 157));
    QVERIFY(m_session.wait([&](const QImage &now) { return now.copy(y) != first.copy(y); }));
    QCOMPARE(m_session.window().copy(x), first.copy(x));
}

void TestLiveCamera::controlAndWheelZoomsAtThePointer()
{
    // The border of the green and the magenta bar, 320 from the left of the
    // frame.
    const QPoint border = m_session.shown().place(320, 450);
    QVERIFY(waitForBarWidth(border.y(), 80));
    m_session.wheel(border, 4, u"ctrl"_s);
    // The picture is now hardly higher than its area, so its foot is at the foot
    // of the area.
    const int y = m_session.layout().pictureArea().bottom() - 20;
    QVERIFY(waitForBarWidth(y, 100));
    const Bar now = bar(m_session.window(), y);
    QVERIFY2(qAbs(now.left + now.width - border.x()) <= 3, qPrintable(QString::number(now.left + now.width)));
}

void TestLiveCamera::controlAndPlusZoomsAtTheCentre()
{
    const QRect area = m_session.layout().pictureArea();
    const int y = area.bottom() - 8;
    const Bar before = bar(m_session.window(), y);
    m_session.key(u"ctrl+plus"_s);
    QVERIFY(waitForBarWidth(y, 120));
    const Bar now = bar(m_session.window(), y);
    const double expected = area.center().x() + (before.left - area.center().x()) * 1.5 / 1.25;
    QVERIFY2(qAbs(now.left - expected) <= 4, qPrintable(u"%1, not %2"_s.arg(now.left).arg(expected)));
    m_session.keepPicture(u"zoom-1.5"_s);
}

void TestLiveCamera::dragMovesThePicture()
{
    const QRect area = m_session.layout().pictureArea();
    const int y = area.bottom() - 8;
    // Height of what is seen of the bars.
    const auto barHeight = [&](const QImage &window, int x) {
        int height = 0;
        while (colourBits(window.pixel(x, area.bottom() - height)) == 2)
            ++height;
        return height;
    };
    const QImage before = m_session.window();
    const Bar old = bar(before, y);
    const int oldHeight = barHeight(before, old.left + 110);
    m_session.drag(area.center(), area.center() + QPoint(-90, -40));
    QVERIFY(m_session.wait([&](const QImage &window) {
        const Bar now = bar(window, y);
        return qAbs(now.width - 120) <= 3 && qAbs(now.left - (old.left - 90)) <= 3 &&
               qAbs(barHeight(window, now.left + 110) - (oldHeight + 40)) <= 3;
    }));
    m_session.keepPicture(u"panned"_s);
}

void TestLiveCamera::menuGoesBackToOneToOneAndFits()
{
    const QPoint centre = m_session.layout().pictureArea().center();
    m_session.click(centre, 3);
    m_session.keepPicture(u"zoom-menu"_s);
    m_session.click(centre + QPoint(30, 13));
    QVERIFY(m_session.wait([this](const QImage &) {
        return m_session.shown().barsInPlace() && m_session.shown().frameNumber();
    }));
    // At 1:1 only "Zoom Fit" is left. The width decides: 672 / 640.
    m_session.click(centre, 3);
    m_session.click(centre + QPoint(30, 13));
    const Placement fit{.scale = 1.05};
    QVERIFY(m_session.wait([&](const QImage &) { return m_session.shown(fit).barsInPlace(); }));
    QVERIFY(waitForBarWidth(m_session.shown(fit).place(320, 450).y(), 84));
    m_session.keepPicture(u"zoom-fit"_s);

    m_session.click(centre, 3);
    m_session.click(centre + QPoint(30, 13));
    QVERIFY(m_session.wait([this](const QImage &) { return m_session.shown().frameNumber().has_value(); }));
}

void TestLiveCamera::transformButtonsTurnAndFlipThePicture_data()
{
    QTest::addColumn<int>("button");
    QTest::addColumn<int>("rotate");
    QTest::addColumn<bool>("flipH");
    QTest::addColumn<bool>("flipV");
    QTest::newRow("flip horizontally") << 0 << 0 << true << false;
    QTest::newRow("flip vertically") << 1 << 0 << false << true;
    QTest::newRow("by 90 degrees") << 2 << 90 << false << false;
    QTest::newRow("by 270 degrees") << 3 << 270 << false << false;
}

void TestLiveCamera::transformButtonsTurnAndFlipThePicture()
{
    QFETCH(int, button);
    QFETCH(int, rotate);
    QFETCH(bool, flipH);
    QFETCH(bool, flipV);
    const QPoint place = m_session.layout().transformButton(button);
    const QRect glyph(place - QPoint(10, 10), QSize(21, 21));
    const auto lit = [&](const QImage &window) { return Session::count(window, glyph, isLit) > 20; };
    QVERIFY(!lit(m_session.window()));
    // An earlier zoom has left its place behind, which shows again when the
    // picture does not fit.
    m_session.wheel(m_session.layout().pictureArea().center(), 4);
    m_session.click(place);
    // Of a turned picture, which is higher than its area, the lines below 593 are
    // not shown.
    const Placement placement{.rotate = rotate, .flipH = flipH, .flipV = flipV};
    QVERIFY(m_session.wait([&](const QImage &window) {
        const ShownPicture shown(window, m_session.layout().pictureArea(), placement);
        return lit(window) && colourBits(shown.colour(360, 450)) == 5 &&
               colourBits(shown.colour(280, 450)) == 2 && (rotate == 270 || shown.frameNumber()) &&
               (rotate != 0 || shown.barsInPlace());
    }));
    m_session.keepPicture(u"transform-%1"_s.arg(button));
    m_session.click(place);
    QVERIFY(m_session.wait([&](const QImage &window) {
        return !lit(window) && ShownPicture(window, m_session.layout().pictureArea(), {}).barsInPlace();
    }));
}

void TestLiveCamera::wheelMovesAPictureThatIsHigherThanItsArea()
{
    const QPoint turn = m_session.layout().transformButton(3);
    m_session.click(turn);
    // Down to the end, where the strip of the frame's number stands upright at
    // the left.
    const int hidden = 640 - m_session.layout().pictureArea().height();
    m_session.wheel(m_session.layout().pictureArea().center(), 5);
    const Placement placement{.rotate = 270, .source = {0, hidden}};
    QVERIFY(
        m_session.wait([&](const QImage &) { return m_session.shown(placement).frameNumber().has_value(); }));
    m_session.click(turn);
    QVERIFY(m_session.wait([this](const QImage &) { return m_session.shown().frameNumber().has_value(); }));
}

void TestLiveCamera::focusPeakingMarksEdgesInPureGreen()
{
    constexpr QRgb pureGreen = 0xFF00FF00;
    QCOMPARE(purePixels(m_session.window(), pureGreen), 0);
    choose(u"Focus Peaking"_s, 3);
    QVERIFY(m_session.wait([&](const QImage &window) { return purePixels(window, pureGreen) > 500; }));
    m_session.keepPicture(u"focus-peaking"_s);
    choose(u"Focus Peaking"_s, 0);
    QVERIFY(m_session.wait([&](const QImage &window) { return purePixels(window, pureGreen) == 0; }));
}

void TestLiveCamera::exposureAssistMarksWhatIsOverexposed()
{
    constexpr QRgb pureRed = 0xFFFF0000;
    for (const char *path : {"/adjust/gain", "/adjust/gain_r", "/adjust/gain_b"})
        QVERIFY(m_session.camera.put(QString::fromLatin1(path), "10"));
    // Ten times the light: the white bar is white and the black one is not black.
    QVERIFY(
        m_session.wait([this](const QImage &) { return m_session.shown().colour(40, 450) == 0xFFFFFFFF; }));
    choose(u"Exposure Assist"_s, 1);
    QVERIFY(m_session.wait([&](const QImage &) { return m_session.shown().colour(40, 450) == pureRed; }));
    QVERIFY(m_session.shown().colour(600, 450) != pureRed);
    m_session.keepPicture(u"exposure-assist"_s);
    choose(u"Exposure Assist"_s, 0);
    for (const char *path : {"/adjust/gain", "/adjust/gain_r", "/adjust/gain_b"})
        QVERIFY(m_session.camera.put(QString::fromLatin1(path), "1"));
    QVERIFY(m_session.wait([this](const QImage &) { return m_session.shown().barsInPlace(); }));
}

void TestLiveCamera::autoWhiteBalanceIsSentToTheCamera()
{
    m_session.toggleSection(u"Camera"_s, true);
    m_session.toggleSection(u"Image Adjustments"_s, true);
    m_session.toggleSection(u"Color Adjustments"_s, false);
    // All three factors far off: the white bar is at its limit.
    const QStringList paths = {u"/adjust/wb_r"_s, u"/adjust/wb_g"_s, u"/adjust/wb_b"_s};
    for (const QString &path : paths)
        QVERIFY(m_session.camera.put(path, "2.5"));
    QVERIFY(
        m_session.wait([this](const QImage &) { return m_session.shown().colour(40, 450) == 0xFFFFFFFF; }));
    m_session.camera.forgetRequests();
    m_session.click(m_session.layout().widget(u"Auto White Balance"_s).center());
    QList<double> sent;
    for (const QString &path : paths) {
        QTRY_VERIFY2(!m_session.camera.requests("PUT", path).isEmpty(), qPrintable(path));
        sent.append(m_session.camera.requests("PUT", path).last().toDouble());
        QCOMPARE(m_session.camera.value(path.mid(1)).toDouble(), sent.last());
    }
    // The scene is bluish: blue keeps its level, red and green are raised to it,
    // each by less than a half.
    QCOMPARE(sent[2], 1.0);
    QVERIFY2(sent[0] > 1.01 && sent[0] < 1.5, qPrintable(QString::number(sent[0])));
    QVERIFY2(sent[1] > 1.01 && sent[1] < 1.5, qPrintable(QString::number(sent[1])));
    QVERIFY(m_session.wait([this](const QImage &) { return m_session.shown().barsInPlace(); }));
    m_session.keepPicture(u"white-balance"_s);
}

QTEST_GUILESS_MAIN(TestLiveCamera)
#include "tst_live_camera.moc"
