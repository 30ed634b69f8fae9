#include "camera/camera.h"
#include "sim/camera.h"
#include "tests/qml/view_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

static const QString Lens = u"Lens & Shutter"_s;

/** The section of the lens and the shutter. */
class TestLensPanel : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void readyLensTellsAll();
    void lensIsFollowedFromRemovedToReady();
    void otherStatesAreErrors();
    void longNameIsToldInATooltip();
    void focusDistanceIsTold();
    void focusButtonsActOnPress();
    void focusButtonsMoveTheFocus();
    void lensThatDoesNotFocusIsManual_data();
    void lensThatDoesNotFocusIsManual();
    void stopIsHiddenWithoutTheFeature();
    void stopOutsideOfTheListShows();
    void typedStopShowsBeforeTheCameraTells();
    void shutterMovesAndTellsTheOtherWay();
    void failedShutterCanBeOpened();
    void shutterIsDisabledWithoutTheFeature();

private:
    QStringList rows() const;

    ViewFixture m_view;
};

void TestLensPanel::cleanup()
{
    QCOMPARE(m_view.end(), QStringList());
}

/** Rows that tell a value, with a value each. */
QStringList TestLensPanel::rows() const
{
    QStringList found;
    for (const QString &label : {u"Mount"_s, u"Name"_s, u"Focal Length"_s, u"Focus Distance"_s, u"Focus"_s}) {
        if (m_view.inSection(Lens, label, QAccessible::StaticText))
            found.append(label + ": "_L1 + m_view.rowText(Lens, label));
    }
    return found;
}

void TestLensPanel::readyLensTellsAll()
{
    QVERIFY(m_view.startWithCamera());
    QTRY_COMPARE(rows(), (QStringList{u"Mount: EF"_s, u"Name: 24-70mm f/2.8"_s, u"Focal Length: 50 mm"_s,
                                      u"Focus Distance: 0.48 m"_s}));
    QTRY_COMPARE(m_view.fieldText(Lens, u"F-stop"_s), u"4"_s);
    QVERIFY(m_view.inSection(Lens, u"Focus 1 step farther"_s, QAccessible::Button));
    QVERIFY(m_view.itemWithText(u" f/"_s));
}

void TestLensPanel::lensIsFollowedFromRemovedToReady()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QTRY_VERIFY(m_view.inSection(Lens, u"F-stop"_s));
    QCOMPARE(simulated->operate({{"lens", "remove"}}), QString());
    QTRY_COMPARE(rows(), QStringList{u"Mount: EF"_s});
    QVERIFY(!m_view.inSection(Lens, u"F-stop"_s));
    QVERIFY(!m_view.inSection(Lens, u"Focus 1 step farther"_s));
    QCOMPARE(simulated->operate({{"lens", "mount"}}), QString());
    QTRY_COMPARE(rows(), (QStringList{u"Mount: EF"_s, u"Name: Detecting"_s}));
    QTRY_COMPARE(rows(), (QStringList{u"Mount: EF"_s, u"Name: Initializing"_s}));
    QTRY_COMPARE(m_view.rowText(Lens, u"Name"_s), u"24-70mm f/2.8"_s);
    QTRY_VERIFY(m_view.inSection(Lens, u"Focus 1 step farther"_s));
    QTRY_COMPARE(m_view.fieldText(Lens, u"F-stop"_s), u"4"_s);
}

void TestLensPanel::otherStatesAreErrors()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    for (const int state : {4, 5, -1, 4}) {
        simulated->forceValue(u"lens/state"_s, state);
        QTRY_COMPARE(rows(), (QStringList{u"Mount: EF"_s, u"Name: Error"_s}));
        simulated->forceValue(u"lens/state"_s, 3);
        QTRY_COMPARE(m_view.rowText(Lens, u"Name"_s), u"24-70mm f/2.8"_s);
    }
    simulated->forceValue(u"lens/state"_s, QJsonValue::Undefined);
    QCOMPARE(simulated->operate({{"lens", "fail"}}), QString());
    QTRY_COMPARE(m_view.rowText(Lens, u"Name"_s), u"Error"_s);
}

void TestLensPanel::longNameIsToldInATooltip()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    const QString name = u"Super Telephoto 400-1200mm f/5.6-8 with built-in converter"_s;
    simulated->forceValue(u"lens/name"_s, name);
    QTRY_COMPARE(m_view.rowText(Lens, u"Name"_s), name);
    QAccessibleInterface *row = m_view.inSection(Lens, u"Name"_s, QAccessible::StaticText);
    QCOMPARE(row->object()->property("truncated").toBool(), true);
    ViewFixture::settle(m_view.window());
    ViewFixture::reveal(row);
    ViewFixture::settle(m_view.window());
    const QPoint point = ViewFixture::centre(m_view.window(), row);
    QTest::mouseMove(m_view.window(), point);
    QTest::mouseMove(m_view.window(), point + QPoint(1, 0));
    QTRY_VERIFY(m_view.showsTooltip(name));
}

void TestLensPanel::focusDistanceIsTold()
{
    struct Row {
        double distance;
        QString text;
        QString font;
    };
    const QList<Row> rows = {{0.0, {}, u"Inter"_s},
                             {0.38, u"0.38 m"_s, u"Inter"_s},
                             {120.5, u"120.5 m"_s, u"Inter"_s},
                             {12.0, u"12 m"_s, u"Inter"_s},
                             {65534.0, u"65534 m"_s, u"Inter"_s},
                             {65535.0, u"\uF3B8"_s, u"remixicon"_s}};
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    for (const Row &row : rows) {
        simulated->forceValue(u"lens/focus_dist"_s, row.distance);
        QTRY_COMPARE(m_view.rowText(Lens, u"Focus Distance"_s), row.text);
        const QObject *label = m_view.inSection(Lens, u"Focus Distance"_s, QAccessible::StaticText)->object();
        QCOMPARE(label->property("font").value<QFont>().family(), row.font);
    }
}

static QQuickItem *buttonWithText(QAccessibleInterface *parent, const QString &text)
{
    for (int i = 0; parent && i < parent->childCount(); ++i) {
        QAccessibleInterface *child = parent->child(i);
        auto *item = qobject_cast<QQuickItem *>(child->object());
        if (child->role() == QAccessible::Button && item && item->property("text").toString() == text)
            return item;
        if (QQuickItem *found = buttonWithText(child, text))
            return found;
    }
    return nullptr;
}

void TestLensPanel::focusButtonsActOnPress()
{
    struct Row {
        QString glyph;
        int step;
        int column;
        int row;
    };
    const QList<Row> rows = {{u"\uEA78"_s, 1, 0, 0},     {u"\uF2EB"_s, 10, 1, 0}, {u"\uF550"_s, 100, 2, 0},
                             {u"\uF3B8"_s, 32767, 3, 0}, {u"\uEA4E"_s, -1, 0, 1}, {u"\uF2E1"_s, -10, 1, 1},
                             {u"\uF54F"_s, -100, 2, 1},  {u"0"_s, 0, 3, 1}};
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QTRY_VERIFY(m_view.inSection(Lens, u"Focus 1 step farther"_s));
    ViewFixture::reveal(m_view.inSection(Lens, u"Focus 1 step farther"_s));
    ViewFixture::settle(m_view.window());
    for (const Row &row : rows) {
        simulated->clearRequests();
        QQuickItem *button = buttonWithText(m_view.element(Lens, QAccessible::Grouping), row.glyph);
        QVERIFY(button);
        QCOMPARE(button->parentItem()->height(), 56.0);
        QCOMPARE(button->x(), row.column * (button->width() + 2));
        QCOMPARE(button->y(), row.row * (button->height() + 2));
        const QPoint point =
            ViewFixture::centre(m_view.window(), QAccessible::queryAccessibleInterface(button));
        QTest::mousePress(m_view.window(), Qt::LeftButton, {}, point);
        const QByteArrayList bodies = {"{\"step\":" + QByteArray::number(row.step) + "}"};
        QTRY_COMPARE(ViewFixture::bodies(*simulated, "POST", u"/focus"_s), bodies);
        QTest::mouseRelease(m_view.window(), Qt::LeftButton, {}, point);
        QVERIFY(!button->hasActiveFocus());
        QTest::qWait(20);
        QCOMPARE(ViewFixture::bodies(*simulated, "POST", u"/focus"_s), bodies);
    }
}

void TestLensPanel::focusButtonsMoveTheFocus()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QTRY_VERIFY(m_view.inSection(Lens, u"Focus to infinity"_s));
    QVERIFY(m_view.clickIn(Lens, u"Focus to infinity"_s));
    QTRY_COMPARE(m_view.rowText(Lens, u"Focus Distance"_s), u"\uF3B8"_s);
    QVERIFY(m_view.clickIn(Lens, u"Focus to the nearest distance"_s));
    QTRY_COMPARE(m_view.rowText(Lens, u"Focus Distance"_s), u"0.38 m"_s);
}

void TestLensPanel::lensThatDoesNotFocusIsManual_data()
{
    QTest::addColumn<int>("afSwitch");
    QTest::addColumn<int>("features");
    QTest::addColumn<bool>("manual");
    QTest::newRow("autofocus") << 0 << 3 << false;
    QTest::newRow("focus alone") << 0 << 2 << false;
    QTest::newRow("switched to manual") << 1 << 3 << true;
    QTest::newRow("no feature") << 0 << 1 << true;
    QTest::newRow("neither") << 2 << 0 << true;
}

void TestLensPanel::lensThatDoesNotFocusIsManual()
{
    QFETCH(const int, afSwitch);
    QFETCH(const int, features);
    QFETCH(const bool, manual);
    q4sim::Config config;
    config.afSwitch = afSwitch;
    config.features[u"lens"_s] = features;
    QVERIFY(m_view.startWithCamera(config));
    QTRY_COMPARE(m_view.rowText(Lens, u"Focal Length"_s), u"50 mm"_s);
    QCOMPARE(m_view.inSection(Lens, u"Focus 1 step farther"_s) == nullptr, manual);
    if (manual)
        QCOMPARE(m_view.rowText(Lens, u"Focus"_s), u"Manual"_s);
    else
        QVERIFY(!m_view.inSection(Lens, u"Focus"_s, QAccessible::StaticText));
}

void TestLensPanel::stopIsHiddenWithoutTheFeature()
{
    q4sim::Config config;
    config.features[u"lens"_s] = 2;
    QVERIFY(m_view.startWithCamera(config));
    QTRY_COMPARE(m_view.rowText(Lens, u"Focal Length"_s), u"50 mm"_s);
    QVERIFY(!m_view.inSection(Lens, u"F-stop"_s));
}

void TestLensPanel::stopOutsideOfTheListShows()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    simulated->forceValue(u"lens/fstop"_s, 3.3);
    QTRY_COMPARE(m_view.fieldText(Lens, u"F-stop"_s), u"3.3"_s);
    QCOMPARE(m_view.camera()->fstopIndex(), -1);
    QVERIFY(m_view.type(Lens, u"F-stop"_s, u"3.4"_s));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "PUT", u"/lens/fstop"_s), QByteArrayList{"3.400000"});
    simulated->forceValue(u"lens/fstop"_s, 3.4);
    QVERIFY(m_view.waitForPolls(2));
    QTRY_COMPARE(m_view.fieldText(Lens, u"F-stop"_s), u"3.4"_s);
}

/** The camera does not answer any more, and no list has such a stop. */
void TestLensPanel::typedStopShowsBeforeTheCameraTells()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QTRY_COMPARE(m_view.fieldText(Lens, u"F-stop"_s), u"4"_s);
    simulated->setFault(q4sim::Route::Status, {.kind = q4sim::FaultKind::NoAnswer});
    for (const QString &stop : {u"3.3"_s, u"6.7"_s}) {
        QVERIFY(m_view.type(Lens, u"F-stop"_s, stop));
        QCOMPARE(m_view.fieldText(Lens, u"F-stop"_s), stop);
        QVERIFY(!m_view.field(Lens, u"F-stop"_s)->hasActiveFocus());
        QCOMPARE(m_view.camera()->fstopIndex(), -1);
        ViewFixture::settle(m_view.window());
        QCOMPARE(m_view.fieldText(Lens, u"F-stop"_s), stop);
    }
}

void TestLensPanel::shutterMovesAndTellsTheOtherWay()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QVERIFY(m_view.clickIn(Lens, u"Close Shutter"_s));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "POST", u"/shtr"_s), QByteArrayList{"{\"pos\":1}"});
    QVERIFY(m_view.clickIn(Lens, u"Open Shutter"_s));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "POST", u"/shtr"_s),
                 (QByteArrayList{"{\"pos\":1}", "{\"pos\":0}"}));
    QTRY_VERIFY(m_view.inSection(Lens, u"Close Shutter"_s));
}

void TestLensPanel::failedShutterCanBeOpened()
{
    q4sim::Config config;
    config.shutterFails = true;
    q4sim::Camera *simulated = m_view.startWithCamera(config);
    QVERIFY(simulated);
    QVERIFY(m_view.clickIn(Lens, u"Close Shutter"_s));
    QTRY_VERIFY(m_view.inSection(Lens, u"Open Shutter"_s));
    QCOMPARE(simulated->value(u"shtr/state"_s).toInt(), 2);
    QCOMPARE(simulated->operate({{"shutter", "work"}}), QString());
    QVERIFY(m_view.clickIn(Lens, u"Open Shutter"_s));
    QTRY_VERIFY(m_view.inSection(Lens, u"Close Shutter"_s));
    QCOMPARE(simulated->value(u"shtr/state"_s).toInt(), 0);
}

void TestLensPanel::shutterIsDisabledWithoutTheFeature()
{
    q4sim::Camera *simulated = m_view.startWithCamera(q4sim::bareConfig());
    QVERIFY(simulated);
    QTRY_VERIFY(m_view.inSection(Lens, u"Close Shutter"_s));
    QVERIFY(m_view.inSection(Lens, u"Close Shutter"_s)->state().disabled);
    QVERIFY(!m_view.inSection(Lens, u"Name"_s));
}

VIEW_TEST_MAIN(TestLensPanel)
#include "tst_lens_panel.moc"
