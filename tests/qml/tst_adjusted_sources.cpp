#include "app/vesk_app.h"
#include "camera/camera.h"
#include "camera/vesk_value.h"
#include "image/img_adj_model.h"
#include "sim/camera.h"
#include "tests/qml/any_source_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

static const QString Image = u"Image Adjustments"_s;
static const QString Color = u"Color Adjustments"_s;
static const QString Tools = u"Image Tools"_s;

namespace
{
/** A slider and its field. */
struct Adjustment {
    QString section;
    QString label;
    QStringList values;
    bool logarithmic;
};
} // namespace

static const QList<Adjustment> adjustments = {
    {Image, u"Offset"_s, {u"offsetR"_s, u"offset"_s, u"offsetB"_s}, false},
    {Image, u"Gain"_s, {u"gainR"_s, u"gain"_s, u"gainB"_s}, true},
    {Image, u"Gamma"_s, {u"gammaR"_s, u"gamma"_s, u"gammaB"_s}, true},
    {Image, u"Contrast"_s, {u"contrastR"_s, u"contrast"_s, u"contrastB"_s}, false},
    {Color, u"Red"_s, {u"wbR"_s}, true},
    {Color, u"Green"_s, {u"wbG"_s}, true},
    {Color, u"Blue"_s, {u"wbB"_s}, true}};

/** The sections of a picture's look, worked for every kind of source. */
class TestAdjustedSources : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void slidersAndFieldsWrite_data() { addSources(); }
    void slidersAndFieldsWrite();
    void pickedChannelIsWritten_data() { addSources(); }
    void pickedChannelIsWritten();
    void whiteIsBalanced_data() { addSources(); }
    void whiteIsBalanced();
    void pictureIsTurnedAndMarked_data() { addSources(); }
    void pictureIsTurnedAndMarked();

private:
    static void addSources();
    bool start(int what);
    static ImgAdjModel *model() { return VeskApp::instance()->selectedVeskObject()->imgAdjModel(); }
    static double held(const QString &value);
    static bool become(const QStringList &values, double number);

    AnySourceFixture m_view;
};

void TestAdjustedSources::cleanup()
{
    QCOMPARE(m_view.end(), QStringList());
}

void TestAdjustedSources::addSources()
{
    QTest::addColumn<int>("what");
    QTest::newRow("camera") << int(AnySourceFixture::TheCamera);
    QTest::newRow("take") << int(AnySourceFixture::TheTake);
    QTest::newRow("recording on the drive") << int(AnySourceFixture::TheRecording);
    QTest::newRow("native file") << int(AnySourceFixture::TheFile);
}

bool TestAdjustedSources::start(int what)
{
    VeskApp::instance()->setSetting(u"color_adj_pane_expanded"_s, true);
    VeskApp::instance()->setSetting(u"playback/color_adj_pane_expanded"_s, true);
    return m_view.show(what) && QTest::qWaitFor([this] { return m_view.inSection(Color, u"Blue"_s); });
}

double TestAdjustedSources::held(const QString &value)
{
    return model()->property(value.toLatin1().constData()).value<VeskValue *>()->variant().toDouble();
}

/** Waits until all of the values are this number, as exact as it is written to a camera. */
bool TestAdjustedSources::become(const QStringList &values, double number)
{
    return std::ranges::all_of(values, [number](const QString &value) {
        return QTest::qWaitFor([&] { return qAbs(held(value) - number) < 2e-6; });
    });
}

void TestAdjustedSources::slidersAndFieldsWrite()
{
    QFETCH(const int, what);
    QVERIFY(start(what));
    for (const Adjustment &row : adjustments) {
        const std::string text = row.label.toStdString();
        const char *label = text.c_str();
        QVERIFY2(become(row.values, row.logarithmic ? 1.0 : 0.0), label);
        QAccessibleInterface *found = m_view.inSection(row.section, row.label, QAccessible::Slider);
        auto *slider = found ? qobject_cast<QQuickItem *>(found->object()) : nullptr;
        QVERIFY2(slider, label);
        slider->forceActiveFocus(Qt::TabFocusReason);
        QTest::keyClick(m_view.window(), Qt::Key_Right);
        // A step of a logarithmic one is a fiftieth of a decade.
        QVERIFY2(become(row.values, row.logarithmic ? 1.0471285 : 0.01), label);
        QTest::keyClick(m_view.window(), Qt::Key_Left);
        QTest::keyClick(m_view.window(), Qt::Key_Left);
        QVERIFY2(become(row.values, row.logarithmic ? 0.9549926 : -0.01), label);
        QVERIFY2(m_view.drag(row.section, row.label, 0.5, 1.0, 100), label);
        QVERIFY2(become(row.values, row.logarithmic ? 10.0 : 1.0), label);
        QVERIFY2(m_view.type(row.section, row.label, u"0.25"_s), label);
        QVERIFY2(become(row.values, 0.25), label);
        QCOMPARE(m_view.fieldText(row.section, row.label), u"0.25"_s);
    }
}

void TestAdjustedSources::pickedChannelIsWritten()
{
    QFETCH(const int, what);
    QVERIFY(start(what));
    QTRY_COMPARE(m_view.choice(Image, u"Channel"_s), u"RGB"_s);
    QVERIFY(m_view.choose(Image, u"Channel"_s, u"Red"_s));
    QVERIFY(m_view.drag(Image, u"Contrast"_s, 0.5, 1.0, 100));
    QVERIFY(become({u"contrastR"_s}, 1.0));
    QVERIFY(m_view.choose(Image, u"Channel"_s, u"Blue"_s));
    QTRY_COMPARE(m_view.fieldText(Image, u"Contrast"_s), u"0.00"_s);
    QVERIFY(m_view.type(Image, u"Gamma"_s, u"4"_s));
    QVERIFY(become({u"gammaB"_s}, 4.0));
    QVERIFY(become({u"contrast"_s, u"contrastB"_s}, 0.0));
    QVERIFY(become({u"gamma"_s, u"gammaR"_s}, 1.0));
    QVERIFY(m_view.clickIn(Image, u"Reset"_s));
    QVERIFY(become({u"gammaB"_s}, 1.0));
    QTRY_COMPARE(held(u"contrastR"_s), 1.0);
}

void TestAdjustedSources::whiteIsBalanced()
{
    QFETCH(const int, what);
    QVERIFY(start(what));
    VeskObject *source = VeskApp::instance()->selectedVeskObject();
    QTRY_VERIFY(!source->imgFrame()->image().isNull());
    for (const QString &label : {u"Red"_s, u"Green"_s, u"Blue"_s})
        QVERIFY(m_view.type(Color, label, u"10"_s));
    QVERIFY(become({u"wbR"_s, u"wbG"_s, u"wbB"_s}, 10.0));
    QVERIFY(m_view.clickIn(Color, u"Auto White Balance"_s));
    // One factor is always 1: that of the brightest channel.
    QTRY_COMPARE(std::min({held(u"wbR"_s), held(u"wbG"_s), held(u"wbB"_s)}), 1.0);
}

void TestAdjustedSources::pictureIsTurnedAndMarked()
{
    QFETCH(const int, what);
    QVERIFY(start(what));
    const auto is = [](const char *name) { return model()->property(name).toInt(); };
    for (const int on : {1, 0}) {
        QVERIFY(m_view.clickIn(Tools, u"Flip horizontally"_s));
        QTRY_COMPARE(is("flipH"), on);
        QVERIFY(m_view.clickIn(Tools, u"Flip vertically"_s));
        QTRY_COMPARE(is("flipV"), on);
        QVERIFY(m_view.clickIn(Tools, u"Rotate by 90 degrees"_s));
        QTRY_COMPARE(is("rotate"), on ? 90 : 0);
    }
    QVERIFY(m_view.clickIn(Tools, u"Rotate by 270 degrees"_s));
    QTRY_COMPARE(is("rotate"), 270);
    const QStringList levels = {u"Disabled"_s, u"Low"_s, u"Medium"_s, u"High"_s};
    for (const int level : {3, 1, 2, 0}) {
        QVERIFY(m_view.choose(Tools, u"Focus Peaking"_s, levels[level]));
        QTRY_COMPARE(is("focusPeak"), level);
    }
    QVERIFY(m_view.choose(Tools, u"Exposure Assist"_s, u"Enabled"_s));
    QTRY_COMPARE(is("expAssist"), 1);
    QCOMPARE(m_view.choice(Tools, u"Exposure Assist"_s), u"Enabled"_s);
}

VIEW_TEST_MAIN(TestAdjustedSources)
#include "tst_adjusted_sources.moc"
