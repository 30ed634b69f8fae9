#include "camera/camera.h"
#include "image/img_adj_model.h"
#include "sim/camera.h"
#include "tests/qml/view_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

/** The control bar of a selected camera. */
class TestCameraControlBar : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void cameraSectionTellsWhichCameraItIs();
    void stateIsNamed_data();
    void stateIsNamed();
    void recordButtonActsOnPress_data();
    void recordButtonActsOnPress();
    void blackReferenceIsSent();
    void blackReferenceIsOfferedOnlyWhenItCanBeTaken_data();
    void blackReferenceIsOfferedOnlyWhenItCanBeTaken();
    void invalidBlackReferenceIsMarked();
    void monochromeCameraHasNoColorSection();
    void transformsActAndLightUp();
    void overlaysExcludeEachOther();
    void autoWhiteBalanceWritesTheFactors();
    void whiteBalanceFieldWritesItsFactor();
    void panesAreKeptWithTheCamera();
    void colorPaneIsWrittenToTheCameraButReadFromTheApplication();

private:
    ViewFixture m_view;
};

void TestCameraControlBar::cleanup()
{
    m_view.close();
    QCOMPARE(m_view.warnings(), QStringList());
    VeskApp::instance()->settings()->remove(u"cameras"_s);
}

void TestCameraControlBar::cameraSectionTellsWhichCameraItIs()
{
    q4sim::Config config;
    config.name = u"Bench 3"_s;
    config.serial = u"Q4-00077"_s;
    config.model = u"Q4-C"_s;
    QVERIFY(m_view.startWithCamera(config));
    QCOMPARE(m_view.rowText(u"Name"_s), u"Bench 3"_s);
    QCOMPARE(m_view.rowText(u"Serial"_s), u"Q4-00077"_s);
    QCOMPARE(m_view.rowText(u"IP Address"_s), u"127.0.15.1"_s);
    QCOMPARE(m_view.rowText(u"Model"_s), u"Q4-C"_s);
}

void TestCameraControlBar::stateIsNamed_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QColor>("color");
    QTest::addColumn<QString>("button");
    QTest::newRow("standby") << 1 << u"STBY"_s << QColor(u"green"_s) << u"Record"_s;
    QTest::newRow("recording") << 2 << u"REC"_s << QColor(u"red"_s) << u"Trigger"_s;
    QTest::newRow("triggered") << 3 << u"TRIG"_s << QColor(u"red"_s) << u"Abort Recording"_s;
    QTest::newRow("recording, 6") << 6 << u"REC"_s << QColor(u"red"_s) << QString();
    QTest::newRow("unknown") << 9 << QString() << QColor() << QString();
}

void TestCameraControlBar::stateIsNamed()
{
    QFETCH(const int, state);
    QFETCH(const QString, name);
    QFETCH(const QColor, color);
    QFETCH(const QString, button);
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    simulated->forceValue(u"acq/state"_s, state);
    QTRY_COMPARE(m_view.rowText(u"State"_s), name);
    if (color.isValid())
        QCOMPARE(m_view.itemWithText(name)->property("color").value<QColor>(), color);
    for (const QString &text : {u"Record"_s, u"Trigger"_s, u"Abort Recording"_s}) {
        QAccessibleInterface *shown = m_view.element(text, QAccessible::Button);
        QCOMPARE(shown != nullptr, text == button);
        QVERIFY(!shown || !shown->state().disabled);
    }
}

void TestCameraControlBar::recordButtonActsOnPress_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("path");
    QTest::newRow("record") << 1 << u"Record"_s << u"/rec"_s;
    QTest::newRow("trigger") << 2 << u"Trigger"_s << u"/trig"_s;
    QTest::newRow("abort") << 3 << u"Abort Recording"_s << u"/abort"_s;
}

void TestCameraControlBar::recordButtonActsOnPress()
{
    QFETCH(const int, state);
    QFETCH(const QString, text);
    QFETCH(const QString, path);
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    simulated->forceValue(u"acq/state"_s, state);
    QTRY_VERIFY(m_view.shows(text, QAccessible::Button));
    QQuickWindow *window = m_view.window();
    const QPoint point = ViewFixture::centre(window, m_view.element(text, QAccessible::Button));
    QTest::mousePress(window, Qt::LeftButton, {}, point);
    QTRY_COMPARE(simulated->requests("POST", path).size(), 1);
    QTest::mouseRelease(window, Qt::LeftButton, {}, point);
    QCOMPARE(simulated->requests("POST", path).size(), 1);
}

void TestCameraControlBar::blackReferenceIsSent()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QVERIFY(m_view.click(u"Black Reference"_s));
    QTRY_COMPARE(simulated->requests("POST", u"/bref"_s).size(), 1);
}

void TestCameraControlBar::blackReferenceIsOfferedOnlyWhenItCanBeTaken_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<int>("bref");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("standby") << 1 << 0 << true;
    QTest::newRow("standby, invalid") << 1 << 1 << true;
    QTest::newRow("standby, in progress") << 1 << 2 << false;
    QTest::newRow("recording") << 2 << 0 << true;
    QTest::newRow("triggered") << 3 << 0 << false;
    QTest::newRow("recording, 6") << 6 << 0 << true;
    QTest::newRow("unknown state") << 7 << 0 << false;
}

void TestCameraControlBar::blackReferenceIsOfferedOnlyWhenItCanBeTaken()
{
    QFETCH(const int, state);
    QFETCH(const int, bref);
    QFETCH(const bool, enabled);
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    simulated->forceValue(u"acq/state"_s, state);
    simulated->forceValue(u"acq/bref_state"_s, bref);
    const auto intOf = [this](const char *name) {
        return m_view.camera()->property(name).value<VeskValue *>()->variant().toInt();
    };
    QTRY_COMPARE(intOf("acqState"), state);
    QTRY_COMPARE(intOf("brefState"), bref);
    QCOMPARE(!m_view.element(u"Black Reference"_s)->state().disabled, enabled);
}

void TestCameraControlBar::invalidBlackReferenceIsMarked()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    simulated->forceValue(u"acq/bref_state"_s, Camera::BrefInvalid);
    QTRY_VERIFY(m_view.shows(u"Black reference is invalid"_s));
    QQuickItem *glyph = m_view.itemWithText(u"\uECA1"_s);
    QVERIFY(glyph);
    QQuickItem *button = m_view.itemWithText(u"Black Reference"_s);
    QVERIFY(glyph->mapToScene({}).x() < button->mapToScene({}).x());
    simulated->forceValue(u"acq/bref_state"_s, 0);
    QTRY_VERIFY(!m_view.itemWithText(u"\uECA1"_s));
}

void TestCameraControlBar::monochromeCameraHasNoColorSection()
{
    q4sim::Config config;
    config.cfa = q4sim::CfaMono;
    QVERIFY(m_view.startWithCamera(config));
    QVERIFY(m_view.shows(u"Image Tools"_s));
    QVERIFY(!m_view.shows(u"Color Adjustments"_s));
    m_view.close();
    QVERIFY(m_view.startWithCamera());
    QVERIFY(m_view.shows(u"Color Adjustments"_s));
}

void TestCameraControlBar::transformsActAndLightUp()
{
    QVERIFY(m_view.startWithCamera());
    const ImgAdjModel *model = m_view.camera()->imgAdjModel();
    const auto lit = [this](const QString &glyph) {
        return m_view.itemWithText(glyph)->property("color").value<QColor>() == QColor(u"#D25F15"_s);
    };
    QVERIFY(!lit(u"\uF4D6"_s));
    QVERIFY(m_view.click(u"Flip horizontally"_s));
    QCOMPARE(model->property("flipH").toBool(), true);
    QVERIFY(lit(u"\uF4D6"_s));
    QVERIFY(m_view.click(u"Flip horizontally"_s));
    QCOMPARE(model->property("flipH").toBool(), false);
    QVERIFY(m_view.click(u"Flip vertically"_s));
    QCOMPARE(model->property("flipV").toBool(), true);
    QVERIFY(m_view.click(u"Rotate by 90 degrees"_s));
    QCOMPARE(model->property("rotate").toInt(), 90);
    QVERIFY(m_view.click(u"Rotate by 270 degrees"_s));
    QCOMPARE(model->property("rotate").toInt(), 270);
    QVERIFY(lit(u"\uEA3C"_s));
    QVERIFY(!lit(u"\uEB95"_s));
    QVERIFY(m_view.click(u"Rotate by 270 degrees"_s));
    QCOMPARE(model->property("rotate").toInt(), 0);
}

void TestCameraControlBar::overlaysExcludeEachOther()
{
    QVERIFY(m_view.startWithCamera());
    const auto valueOf = [this](const QString &box) {
        return qobject_cast<QQuickItem *>(m_view.element(box, QAccessible::ComboBox)->object())
            ->property("displayText")
            .toString();
    };
    QCOMPARE(valueOf(u"Focus Peaking"_s), u"Disabled"_s);
    QVERIFY(m_view.click(u"Focus Peaking"_s));
    QVERIFY(m_view.click(u"High"_s));
    QTRY_COMPARE(m_view.camera()->imgAdjModel()->property("focusPeak").toInt(), 3);
    QCOMPARE(valueOf(u"Focus Peaking"_s), u"High"_s);
    QVERIFY(m_view.click(u"Exposure Assist"_s));
    QVERIFY(m_view.click(u"Enabled"_s));
    QTRY_COMPARE(m_view.camera()->imgAdjModel()->property("expAssist").toInt(), 1);
    QCOMPARE(m_view.camera()->imgAdjModel()->property("focusPeak").toInt(), 0);
    QCOMPARE(valueOf(u"Focus Peaking"_s), u"Disabled"_s);
}

void TestCameraControlBar::autoWhiteBalanceWritesTheFactors()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QTRY_VERIFY(!m_view.camera()->timestamp().isEmpty());
    QVERIFY(m_view.click(u"Image Tools"_s));
    QVERIFY(m_view.click(u"Color Adjustments"_s));
    QVERIFY(m_view.click(u"Auto White Balance"_s));
    QTRY_VERIFY(simulated->requests("PUT", u"/adjust/wb_r"_s).size() +
                    simulated->requests("PUT", u"/adjust/wb_g"_s).size() +
                    simulated->requests("PUT", u"/adjust/wb_b"_s).size() >=
                2);
}

void TestCameraControlBar::whiteBalanceFieldWritesItsFactor()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QVERIFY(m_view.click(u"Image Tools"_s));
    QVERIFY(m_view.click(u"Color Adjustments"_s));
    QTRY_VERIFY(m_view.shows(u"Red"_s, QAccessible::EditableText));
    QQuickWindow *window = m_view.window();
    ViewFixture::settle(window);
    const QPoint point = ViewFixture::centre(window, m_view.element(u"Red"_s, QAccessible::EditableText));
    QTest::mouseClick(window, Qt::LeftButton, {}, point);
    QTest::keySequence(window, QKeySequence::SelectAll);
    for (const char key : {'2', '.', '5'})
        QTest::keyClick(window, key);
    QTest::keyClick(window, Qt::Key_Return);
    QTRY_COMPARE(simulated->requests("PUT", u"/adjust/wb_r"_s).size(), 1);
    QCOMPARE(simulated->requests("PUT", u"/adjust/wb_r"_s).first().body, QByteArray("2.500000"));
}

void TestCameraControlBar::panesAreKeptWithTheCamera()
{
    QVERIFY(m_view.startWithCamera());
    QVERIFY(m_view.click(u"Image Tools"_s));
    QTRY_VERIFY(!m_view.shows(u"Focus Peaking"_s));
    m_view.close();
    QCOMPARE(VeskApp::instance()->setting(u"cameras/Q4-00001/img_tools_pane_expanded"_s), false);
    const auto kept = [](const QString &name) {
        return VeskApp::instance()->setting(u"cameras/Q4-00001/%1_pane_expanded"_s.arg(name));
    };
    for (const char *name : {"fr_buffer", "img_adj", "ssd", "ssd_autosave", "lens", "video"})
        QCOMPARE(kept(QString::fromLatin1(name)), true);
    for (const char *name : {"fw", "trigger", "io1", "io2", "io3", "io4", "io5", "io6", "color_adj"})
        QCOMPARE(kept(QString::fromLatin1(name)), false);
    QCOMPARE(VeskApp::instance()->setting(u"cameras/Q4-00001/main_pane_expanded"_s), true);
    QCOMPARE(VeskApp::instance()->setting(u"cameras/Q4-00001/acq_pane_expanded"_s), true);
    QVERIFY(m_view.startWithCamera());
    QTRY_VERIFY(!m_view.shows(u"Focus Peaking"_s));
    QVERIFY(m_view.shows(u"Serial"_s));
    m_view.close();
    q4sim::Config other;
    other.serial = u"Q4-00002"_s;
    QVERIFY(m_view.startWithCamera(other));
    QTRY_VERIFY(m_view.shows(u"Focus Peaking"_s));
}

void TestCameraControlBar::colorPaneIsWrittenToTheCameraButReadFromTheApplication()
{
    QVERIFY(m_view.startWithCamera());
    QVERIFY(!m_view.shows(u"Auto White Balance"_s));
    QVERIFY(m_view.click(u"Color Adjustments"_s));
    QTRY_VERIFY(m_view.shows(u"Auto White Balance"_s));
    m_view.close();
    QCOMPARE(VeskApp::instance()->setting(u"cameras/Q4-00001/color_adj_pane_expanded"_s), true);
    QCOMPARE(VeskApp::instance()->setting(u"color_adj_pane_expanded"_s), QVariant());
    QVERIFY(m_view.startWithCamera());
    QVERIFY(!m_view.shows(u"Auto White Balance"_s));
    m_view.close();
    VeskApp::instance()->setSetting(u"color_adj_pane_expanded"_s, true);
    QVERIFY(m_view.startWithCamera());
    QTRY_VERIFY(m_view.shows(u"Auto White Balance"_s));
    VeskApp::instance()->settings()->remove(u"color_adj_pane_expanded"_s);
}

VIEW_TEST_MAIN(TestCameraControlBar)
#include "tst_camera_control_bar.moc"
