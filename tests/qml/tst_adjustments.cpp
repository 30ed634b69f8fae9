#include "camera/camera.h"
#include "image/img_adj_model.h"
#include "sim/camera.h"
#include "tests/qml/view_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

static const QString Image = u"Image Adjustments"_s;
static const QString Color = u"Color Adjustments"_s;

/** Offset, gain, gamma, contrast and white balance: which values a slider or field writes. */
class TestAdjustments : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void fieldWritesThePickedChannel_data();
    void fieldWritesThePickedChannel();
    void pickedChannelShowsItsValues();
    void monochromeHasOneChannelAndNoColorSection();
    void fieldRefuses_data();
    void fieldRefuses();
    void fieldShowsTwoDecimalsAndTakesNoPoll();
    void resetSetsThePickedChannel_data();
    void resetSetsThePickedChannel();
    void dragOfOneSecondSendsAtMostTwentyAndTheLast();
    void dragOfAColorFactorWritesThatOne();
    void sliderKeepsToItsSteps();
    void sliderIsLogarithmic();
    void sliderGivesUpFocus();

private:
    QByteArray sent(const QString &name) const;
    double held(const QString &name) const;
    double sliderAt(const QString &section, const QString &label) const;

    ViewFixture m_view;
    q4sim::Camera *m_simulated = nullptr;
};

void TestAdjustments::cleanup()
{
    QCOMPARE(m_view.end(), QStringList());
}

/** The last body of a value's writes, empty when there was none. */
QByteArray TestAdjustments::sent(const QString &name) const
{
    const QByteArrayList bodies = ViewFixture::bodies(*m_simulated, "PUT", u"/adjust/"_s + name);
    return bodies.isEmpty() ? QByteArray() : bodies.last();
}

double TestAdjustments::held(const QString &name) const
{
    return m_simulated->value(u"adjust/"_s + name).toDouble();
}

double TestAdjustments::sliderAt(const QString &section, const QString &label) const
{
    return m_view.inSection(section, label, QAccessible::Slider)->object()->property("value").toDouble();
}

void TestAdjustments::fieldWritesThePickedChannel_data()
{
    QTest::addColumn<QString>("channel");
    QTest::addColumn<QStringList>("written");
    QTest::newRow("RGB") << u"RGB"_s << QStringList{u"_r"_s, u""_s, u"_b"_s};
    QTest::newRow("Red") << u"Red"_s << QStringList{u"_r"_s};
    QTest::newRow("Green") << u"Green"_s << QStringList{u""_s};
    QTest::newRow("Blue") << u"Blue"_s << QStringList{u"_b"_s};
}

void TestAdjustments::fieldWritesThePickedChannel()
{
    QFETCH(const QString, channel);
    QFETCH(const QStringList, written);
    m_simulated = m_view.startWithCamera();
    QVERIFY(m_simulated);
    QTRY_COMPARE(m_view.choice(Image, u"Channel"_s), u"RGB"_s);
    if (channel != "RGB"_L1)
        QVERIFY(m_view.choose(Image, u"Channel"_s, channel));
    QVERIFY(m_view.type(Image, u"Offset"_s, u"-0.25"_s));
    QVERIFY(m_view.type(Image, u"Gain"_s, u"2.5"_s));
    QVERIFY(m_view.type(Image, u"Gamma"_s, u"0.1"_s));
    QVERIFY(m_view.type(Image, u"Contrast"_s, u"1"_s));
    const QHash<QString, QByteArray> bodies = {{u"offset"_s, "-0.250000"},
                                               {u"gain"_s, "2.500000"},
                                               {u"gamma"_s, "0.100000"},
                                               {u"contrast"_s, "1.000000"}};
    for (const auto &[name, body] : bodies.asKeyValueRange()) {
        for (const QString &suffix : {u"_r"_s, u""_s, u"_b"_s})
            QTRY_COMPARE(sent(name + suffix), written.contains(suffix) ? body : QByteArray());
    }
    QCOMPARE(ViewFixture::writtenPaths(*m_simulated).size(), 4 * written.size());
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(m_view.fieldText(Image, u"Offset"_s), u"-0.25"_s);
    QCOMPARE(m_view.fieldText(Image, u"Gain"_s), u"2.50"_s);
    QCOMPARE(m_view.fieldText(Image, u"Gamma"_s), u"0.10"_s);
    QCOMPARE(m_view.fieldText(Image, u"Contrast"_s), u"1.00"_s);
}

void TestAdjustments::pickedChannelShowsItsValues()
{
    m_simulated = m_view.startWithCamera();
    QVERIFY(m_simulated);
    m_simulated->forceValue(u"adjust/offset_r"_s, -0.5);
    m_simulated->forceValue(u"adjust/offset"_s, 0.25);
    m_simulated->forceValue(u"adjust/offset_b"_s, 0.75);
    QTRY_COMPARE(m_view.fieldText(Image, u"Offset"_s), u"0.25"_s);
    const QList<std::pair<QString, double>> rows = {
        {u"Red"_s, -0.5}, {u"Green"_s, 0.25}, {u"Blue"_s, 0.75}, {u"RGB"_s, 0.25}};
    for (const auto &[channel, value] : rows) {
        QVERIFY(m_view.choose(Image, u"Channel"_s, channel));
        QTRY_COMPARE(m_view.fieldText(Image, u"Offset"_s), QString::number(value, 'f', 2));
        QCOMPARE(sliderAt(Image, u"Offset"_s), value);
    }
    QCOMPARE(ViewFixture::writtenPaths(*m_simulated), QStringList());
}

void TestAdjustments::monochromeHasOneChannelAndNoColorSection()
{
    q4sim::Config config;
    config.cfa = q4sim::CfaMono;
    m_simulated = m_view.startUnfolded(config);
    QVERIFY(m_simulated);
    QTRY_COMPARE(m_view.choice(Image, u"Channel"_s), u"Monochrome"_s);
    QVERIFY(m_view.inSection(Image, u"Channel"_s, QAccessible::ComboBox)->state().disabled);
    QVERIFY(!m_view.shows(Color));
    // One channel, and like "RGB" it stands for all three.
    QVERIFY(m_view.type(Image, u"Gain"_s, u"3"_s));
    for (const QString &name : {u"gain_r"_s, u"gain"_s, u"gain_b"_s})
        QTRY_COMPARE(sent(name), QByteArray("3.000000"));
    QVERIFY(m_view.clickIn(Image, u"Reset"_s));
    for (const QString &name : {u"gain_r"_s, u"gain"_s, u"gain_b"_s})
        QTRY_COMPARE(held(name), 1.0);
}

void TestAdjustments::fieldRefuses_data()
{
    QTest::addColumn<QString>("section");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<QString>("shown");
    const QStringList linear = {u"1.01"_s, u"-1.01"_s, u"5"_s, u""_s, u"-"_s, u"abc"_s, u"."_s};
    const QStringList logarithmic = {u"0"_s, u"0.09"_s, u"10.01"_s, u"99"_s, u""_s, u"abc"_s, u"."_s};
    QTest::newRow("offset") << Image << u"Offset"_s << linear << u"0.00"_s;
    QTest::newRow("contrast") << Image << u"Contrast"_s << linear << u"0.00"_s;
    QTest::newRow("gain") << Image << u"Gain"_s << logarithmic << u"1.00"_s;
    QTest::newRow("gamma") << Image << u"Gamma"_s << logarithmic << u"1.00"_s;
    QTest::newRow("white balance") << Color << u"Red"_s << logarithmic << u"1.00"_s;
}

void TestAdjustments::fieldRefuses()
{
    QFETCH(const QString, section);
    QFETCH(const QString, label);
    QFETCH(const QStringList, texts);
    QFETCH(const QString, shown);
    m_simulated = m_view.startUnfolded();
    QVERIFY(m_simulated);
    QTRY_COMPARE(m_view.fieldText(section, label), shown);
    for (const QString &text : texts) {
        QVERIFY(m_view.type(section, label, text, Qt::Key_Return));
        QCOMPARE(m_view.fieldText(section, label) + " after "_L1 + text, shown + " after "_L1 + text);
        QVERIFY(!m_view.field(section, label)->hasActiveFocus());
    }
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(ViewFixture::writtenPaths(*m_simulated), QStringList());
}

void TestAdjustments::fieldShowsTwoDecimalsAndTakesNoPoll()
{
    m_simulated = m_view.startWithCamera();
    QVERIFY(m_simulated);
    m_simulated->forceValue(u"adjust/gain"_s, 1.2345);
    QTRY_COMPARE(m_view.fieldText(Image, u"Gain"_s), u"1.23"_s);
    // Left as it was: 1.23 is not written over 1.2345.
    QVERIFY(m_view.click(m_view.window(), m_view.inSection(Image, u"Gain"_s, QAccessible::EditableText)));
    QTest::keyClick(m_view.window(), Qt::Key_Return);
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(ViewFixture::writtenPaths(*m_simulated), QStringList());
}

void TestAdjustments::resetSetsThePickedChannel_data()
{
    QTest::addColumn<QString>("channel");
    QTest::addColumn<QStringList>("reset");
    QTest::newRow("RGB") << u"RGB"_s << QStringList{u"_r"_s, u""_s, u"_b"_s};
    QTest::newRow("Red") << u"Red"_s << QStringList{u"_r"_s};
    QTest::newRow("Green") << u"Green"_s << QStringList{u""_s};
    QTest::newRow("Blue") << u"Blue"_s << QStringList{u"_b"_s};
}

void TestAdjustments::resetSetsThePickedChannel()
{
    QFETCH(const QString, channel);
    QFETCH(const QStringList, reset);
    m_simulated = m_view.startWithCamera();
    QVERIFY(m_simulated);
    const QHash<QString, double> neutral = {
        {u"offset"_s, 0.0}, {u"gain"_s, 1.0}, {u"gamma"_s, 1.0}, {u"contrast"_s, 0.0}};
    for (const auto &[name, value] : neutral.asKeyValueRange()) {
        for (const QString &suffix : {u"_r"_s, u""_s, u"_b"_s})
            QCOMPARE(m_simulated->answer("PUT", u"/adjust/"_s + name + suffix, "0.5").status, 200);
    }
    QTRY_COMPARE(m_view.fieldText(Image, u"Contrast"_s), u"0.50"_s);
    if (channel != "RGB"_L1)
        QVERIFY(m_view.choose(Image, u"Channel"_s, channel));
    QVERIFY(m_view.clickIn(Image, u"Reset"_s));
    for (const auto &[name, value] : neutral.asKeyValueRange()) {
        for (const QString &suffix : {u"_r"_s, u""_s, u"_b"_s})
            QTRY_COMPARE(held(name + suffix), reset.contains(suffix) ? value : 0.5);
    }
    QTRY_COMPARE(m_view.fieldText(Image, u"Gain"_s), u"1.00"_s);
}

void TestAdjustments::dragOfOneSecondSendsAtMostTwentyAndTheLast()
{
    m_simulated = m_view.startWithCamera();
    QVERIFY(m_simulated);
    QTRY_COMPARE(m_view.choice(Image, u"Channel"_s), u"RGB"_s);
    // One second from the press to the tick of 50 ms that sends the last value.
    QVERIFY(m_view.drag(Image, u"Gain"_s, 0.5, 1.0, 950));
    QVERIFY(m_view.waitForPolls(2));
    for (const QString &name : {u"gain_r"_s, u"gain"_s, u"gain_b"_s}) {
        const QByteArrayList bodies = ViewFixture::bodies(*m_simulated, "PUT", u"/adjust/"_s + name);
        QVERIFY2(bodies.size() <= 20, qPrintable(QString::number(bodies.size())));
        QVERIFY2(bodies.size() >= 5, qPrintable(QString::number(bodies.size())));
        QCOMPARE(bodies.last(), QByteArray("10.000000"));
        QCOMPARE(held(name), 10.0);
    }
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(m_view.fieldText(Image, u"Gain"_s), u"10.00"_s);
    QCOMPARE(sliderAt(Image, u"Gain"_s), 1.0);
}

void TestAdjustments::dragOfAColorFactorWritesThatOne()
{
    m_simulated = m_view.startUnfolded();
    QVERIFY(m_simulated);
    QTRY_COMPARE(m_view.fieldText(Color, u"Green"_s), u"1.00"_s);
    QVERIFY(m_view.drag(Color, u"Green"_s, 0.5, 0.0, 200));
    QTRY_COMPARE(sent(u"wb_g"_s), QByteArray("0.100000"));
    QTRY_COMPARE(held(u"wb_g"_s), 0.1);
    const QStringList paths = ViewFixture::writtenPaths(*m_simulated);
    QCOMPARE(paths.count(u"/adjust/wb_g"_s), paths.size());
    QCOMPARE(m_view.fieldText(Color, u"Green"_s), u"0.10"_s);
}

void TestAdjustments::sliderKeepsToItsSteps()
{
    m_simulated = m_view.startWithCamera();
    QVERIFY(m_simulated);
    QVERIFY(m_view.choose(Image, u"Channel"_s, u"Blue"_s));
    QVERIFY(m_view.drag(Image, u"Offset"_s, 0.5, 0.8, 150));
    QTRY_VERIFY(!sent(u"offset_b"_s).isEmpty());
    QVERIFY(m_view.waitForPolls(2));
    const QByteArrayList bodies = ViewFixture::bodies(*m_simulated, "PUT", u"/adjust/offset_b"_s);
    for (const QByteArray &body : bodies) {
        const double hundredths = body.toDouble() * 100;
        QVERIFY2(qAbs(hundredths - qRound(hundredths)) < 1e-3, body.constData());
    }
    QCOMPARE(sent(u"offset"_s), QByteArray());
    QTRY_VERIFY(held(u"offset_b"_s) > 0.5 && held(u"offset_b"_s) < 0.7);
}

void TestAdjustments::sliderIsLogarithmic()
{
    m_simulated = m_view.startWithCamera();
    QVERIFY(m_simulated);
    // Two decades: each quarter of the way is a factor of the square root of 10.
    const QList<std::pair<double, double>> rows = {
        {0.1, 0.0}, {0.316227766, 0.25}, {1.0, 0.5}, {3.16227766, 0.75}, {10.0, 1.0}};
    for (const auto &[value, position] : rows) {
        m_simulated->forceValue(u"adjust/gamma"_s, value);
        QTRY_VERIFY(qAbs(sliderAt(Image, u"Gamma"_s) - position) < 1e-6);
    }
    QCOMPARE(ViewFixture::writtenPaths(*m_simulated), QStringList());
}

void TestAdjustments::sliderGivesUpFocus()
{
    m_simulated = m_view.startWithCamera();
    QVERIFY(m_simulated);
    QVERIFY(m_view.drag(Image, u"Contrast"_s, 0.5, 0.6, 50));
    auto *slider =
        qobject_cast<QQuickItem *>(m_view.inSection(Image, u"Contrast"_s, QAccessible::Slider)->object());
    QVERIFY(!slider->hasActiveFocus());
}

VIEW_TEST_MAIN(TestAdjustments)
#include "tst_adjustments.moc"
