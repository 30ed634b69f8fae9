#include "tests/qml/playback_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

/** The step and the rate of playback. */
class TestPlaybackPace : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void stepFieldTellsItsUnit();
    void typedStepIsWritten();
    void rateFieldShowsTwoDecimalsAtMost_data();
    void rateFieldShowsTwoDecimalsAtMost();
    void typedRateIsWritten();
    void rateSliderWritesWholeRates();
    void glyphStandsBesideItsField_data();
    void glyphStandsBesideItsField();

private:
    PlaybackFixture m_view;
};

void TestPlaybackPace::cleanup()
{
    QCOMPARE(m_view.end(), QStringList());
}

void TestPlaybackPace::stepFieldTellsItsUnit()
{
    PlaybackSource *source = m_view.startPaused(0, 100);
    QVERIFY(source);
    QCOMPARE(m_view.shownText(u"Play step"_s), u"1"_s);
    QVERIFY(m_view.itemWithText(u"frame"_s));
    QVERIFY(!m_view.itemWithText(u"frames"_s));
    source->setPlayStep(2);
    QCOMPARE(m_view.shownText(u"Play step"_s), u"2"_s);
    QVERIFY(m_view.itemWithText(u"frames"_s));
    QVERIFY(!m_view.itemWithText(u"frame"_s));
}

void TestPlaybackPace::typedStepIsWritten()
{
    PlaybackSource *source = m_view.startPaused(0, 100);
    QVERIFY(source);
    QVERIFY(m_view.typeInto(u"Play step"_s, u"123"_s));
    QCOMPARE(source->playStep(), 123);
    QVERIFY(m_view.typeInto(u"Play step"_s, u"-99.999999x9"_s));
    QCOMPARE(source->playStep(), 10'000'000);
    QCOMPARE(m_view.shownText(u"Play step"_s), u"10000000"_s);
    QVERIFY(m_view.typeInto(u"Play step"_s, u"0"_s));
    QCOMPARE(source->playStep(), 1);
    QCOMPARE(m_view.shownText(u"Play step"_s), u"1"_s);
    QVERIFY(m_view.typeInto(u"Play step"_s, QString()));
    QCOMPARE(source->playStep(), 1);
    QCOMPARE(m_view.shownText(u"Play step"_s), u"1"_s);
}

void TestPlaybackPace::rateFieldShowsTwoDecimalsAtMost_data()
{
    QTest::addColumn<double>("rate");
    QTest::addColumn<QString>("text");
    QTest::newRow("whole") << 25.0 << u"25"_s;
    QTest::newRow("one decimal") << 12.5 << u"12.5"_s;
    QTest::newRow("two decimals") << 59.94 << u"59.94"_s;
    QTest::newRow("three decimals") << 23.976 << u"23.98"_s;
    QTest::newRow("thousands") << 1000.0 << u"1000"_s;
    QTest::newRow("slowest") << 0.0 << u"0.1"_s;
    QTest::newRow("fastest") << 1e9 << u"10000000"_s;
}

void TestPlaybackPace::rateFieldShowsTwoDecimalsAtMost()
{
    QFETCH(const double, rate);
    PlaybackSource *source = m_view.startPaused(0, 100);
    QVERIFY(source);
    source->setPlayFrRate(rate);
    QTEST(m_view.shownText(u"Play rate"_s, QAccessible::EditableText), "text");
    QVERIFY(m_view.itemWithText(u"fps"_s));
}

void TestPlaybackPace::typedRateIsWritten()
{
    PlaybackSource *source = m_view.startPaused(0, 100);
    QVERIFY(source);
    QVERIFY(m_view.typeInto(u"Play rate"_s, u"29.97"_s));
    QCOMPARE(source->playFrRate(), 1e9 / 33'366'666);
    QVERIFY(m_view.typeInto(u"Play rate"_s, u".5"_s));
    QCOMPARE(source->playFrRate(), 0.5);
    QVERIFY(m_view.typeInto(u"Play rate"_s, u"1x2,3.45678"_s));
    // 123.456 frames a second: 8,100,051.8 ns.
    QCOMPARE(source->playFrRate(), 1e9 / 8'100'051);
    QCOMPARE(m_view.shownText(u"Play rate"_s, QAccessible::EditableText), u"123.46"_s);
    for (const QString &text : {u"."_s, QString()}) {
        QVERIFY(m_view.typeInto(u"Play rate"_s, text));
        QCOMPARE(source->playFrRate(), 1e9 / 8'100'051);
        QCOMPARE(m_view.shownText(u"Play rate"_s, QAccessible::EditableText), u"123.46"_s);
    }
}

void TestPlaybackPace::rateSliderWritesWholeRates()
{
    PlaybackSource *source = m_view.startPaused(0, 100);
    QVERIFY(source);
    QQuickItem *slider = m_view.item(u"Play rate"_s, QAccessible::Slider);
    QCOMPARE(slider->property("from"), 1.0);
    QCOMPARE(slider->property("to"), 240.0);
    QCOMPARE(slider->property("stepSize"), 1.0);
    QVERIFY(qAbs(slider->property("value").toDouble() - 30) < 1e-6);
    const QPoint middle = m_view.middle(u"Play rate"_s, QAccessible::Slider);
    QTest::mouseClick(m_view.window(), Qt::LeftButton, {}, middle);
    const int written = qRound(source->playFrRate());
    QVERIFY(written > 110 && written < 130);
    QCOMPARE(source->playFrRate(), 1e9 / int(1e9 / written));
    QCOMPARE(m_view.shownText(u"Play rate"_s, QAccessible::EditableText), QString::number(written));
    // It has let the keys go.
    QTest::keyClick(m_view.window(), Qt::Key_Right);
    QCOMPARE(source->fr(), 1);
    source->setPlayFrRate(1000);
    QCOMPARE(slider->property("value"), 240.0);
    QCOMPARE(source->playFrRate(), 1000.0);
}

void TestPlaybackPace::glyphStandsBesideItsField_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("glyph");
    QTest::newRow("step") << u"Play step"_s << u"\uF318"_s;
    QTest::newRow("rate") << u"Play rate"_s << u"\uF371"_s;
}

void TestPlaybackPace::glyphStandsBesideItsField()
{
    QFETCH(const QString, name);
    QFETCH(const QString, glyph);
    QVERIFY(m_view.startPaused(0, 100));
    ViewFixture::settle(m_view.window());
    QQuickItem *icon = m_view.itemWithText(glyph);
    QVERIFY(icon);
    QCOMPARE(icon->property("font").value<QFont>().family(), u"remixicon"_s);
    QAccessibleInterface *field = m_view.element(name, QAccessible::EditableText);
    const QPoint place = icon->mapToScene({icon->width(), icon->height() / 2}).toPoint();
    const int middle = ViewFixture::centre(m_view.window(), field).y();
    QVERIFY2(qAbs(place.y() - middle) <= 2, qPrintable(u"%1 beside %2"_s.arg(place.y()).arg(middle)));
    const int gap = m_view.window()->mapFromGlobal(field->rect().topLeft()).x() - place.x();
    QVERIFY2(gap >= 0 && gap <= 20, qPrintable(QString::number(gap)));
}

VIEW_TEST_MAIN(TestPlaybackPace)
#include "tst_playback_pace.moc"
