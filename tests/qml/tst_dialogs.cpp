#include "camera/camera.h"
#include "sim/camera.h"
#include "tests/qml/view_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickWindow>
#include <QUdpSocket>

using namespace Qt::StringLiterals;

/** The dialogs: what they take, what they refuse and how they end. */
class TestDialogs : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void recordWithoutRoomIsRefused();
    void blackReferenceWithoutASlotIsRefused_data();
    void blackReferenceWithoutASlotIsRefused();
    void camerasAreLookedForAtEachPress();
    void connectDialogStaysOpenAndConnects();
    void connectDialogTakesAddressesOnly();
    void renamedCameraKeepsItsName();
    void nameWithForbiddenCharactersCannotBeTyped();

private:
    ViewFixture m_view;
};

void TestDialogs::cleanup()
{
    m_view.close();
    QCOMPARE(m_view.warnings(), QStringList());
    VeskApp::instance()->settings()->remove(u"cameras"_s);
}

void TestDialogs::recordWithoutRoomIsRefused()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    simulated->forceValue(u"acq/saved_takes"_s, QJsonArray{1, 2, 3, 4});
    QTRY_COMPARE(m_view.camera()->takesAvailable(), 0);
    QVERIFY(m_view.click(u"Record"_s));
    QTRY_VERIFY(m_view.dialog(u"VESK"_s));
    QQuickWindow *dialog = m_view.dialog(u"VESK"_s);
    QCOMPARE(dialog->size(), QSize(200, 100));
    QVERIFY(
        ViewFixture::element(dialog, u"No take partitions remaining! Delete takes to begin recording."_s));
    QVERIFY(ViewFixture::click(dialog, u"OK"_s));
    QTRY_VERIFY(!m_view.dialog(u"VESK"_s));
    QCOMPARE(simulated->requests("POST", u"/rec"_s).size(), 0);
}

void TestDialogs::blackReferenceWithoutASlotIsRefused_data()
{
    QTest::addColumn<bool>("byMouse");
    QTest::newRow("closed by Escape") << false;
    QTest::newRow("closed by its button") << true;
}

void TestDialogs::blackReferenceWithoutASlotIsRefused()
{
    QFETCH(const bool, byMouse);
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    simulated->forceValue(u"acq/bref_state"_s, Camera::BrefFull);
    QTRY_COMPARE(m_view.camera()->property("brefState").value<VeskValue *>()->variant().toInt(), 4);
    QVERIFY(m_view.click(u"Black Reference"_s));
    QTRY_VERIFY(m_view.dialog(u"VESK"_s));
    QQuickWindow *dialog = m_view.dialog(u"VESK"_s);
    QCOMPARE(dialog->size(), QSize(240, 100));
    QVERIFY(ViewFixture::element(
        dialog, u"No black reference slots remaining! Delete saved takes to clear slots."_s));
    if (byMouse)
        QVERIFY(ViewFixture::click(dialog, u"OK"_s));
    else
        QTest::keyClick(dialog, Qt::Key_Escape);
    QTRY_VERIFY(!m_view.dialog(u"VESK"_s));
    QCOMPARE(simulated->requests("POST", u"/bref"_s).size(), 0);
}

/** On the private network of the build environment, as a camera would hear it. */
void TestDialogs::camerasAreLookedForAtEachPress()
{
    QUdpSocket camera;
    QVERIFY2(camera.bind(QHostAddress(u"10.77.0.255"_s), 8890,
                         QAbstractSocket::ShareAddress | QAbstractSocket::ReuseAddressHint),
             "the private network is missing: run the tests with ./dev test");
    QByteArrayList heard;
    connect(&camera, &QUdpSocket::readyRead, this, [&] {
        while (camera.hasPendingDatagrams()) {
            QByteArray word(camera.pendingDatagramSize(), '\0');
            QHostAddress from;
            camera.readDatagram(word.data(), word.size(), &from);
            if (from.toString() == "10.77.0.1"_L1)
                heard.append(word);
        }
    });
    m_view.open();
    QVERIFY(m_view.click(u"Add source"_s));
    QVERIFY(m_view.click(u"Connect Camera..."_s));
    QTRY_VERIFY(m_view.dialog(u"Connect Camera"_s));
    QCOMPARE(heard, QByteArrayList());
    for (int press = 0; press < 2; ++press) {
        heard.clear();
        QVERIFY(ViewFixture::click(m_view.dialog(u"Connect Camera"_s), u"Scan for Cameras"_s));
        QTRY_COMPARE_WITH_TIMEOUT(heard, QByteArrayList(2, "VESK_BCAST\n"), 10'000);
        // Replies are waited for as long as from one round to the next; then the search has ended.
        QTest::qWait(1500);
        QCOMPARE(heard.size(), 2);
    }
}

void TestDialogs::connectDialogStaysOpenAndConnects()
{
    q4sim::Config config;
    config.address = QHostAddress(u"127.0.15.2"_s);
    config.discovery = false;
    QVERIFY(m_view.simulate(config));
    m_view.open();
    QVERIFY(m_view.click(u"File"_s));
    QVERIFY(m_view.click(u"Connect Camera..."_s));
    QTRY_VERIFY(m_view.dialog(u"Connect Camera"_s));
    QQuickWindow *dialog = m_view.dialog(u"Connect Camera"_s);
    QCOMPARE(dialog->size(), QSize(220, 90));
    QCOMPARE(dialog->maximumSize(), QSize(220, 90));
    for (const char key : QByteArray("127.0.15.2"))
        QTest::keyClick(dialog, key);
    QVERIFY(ViewFixture::click(dialog, u"Connect"_s));
    QTRY_COMPARE(VeskApp::instance()->veskObjects().size(), 1);
    QTRY_COMPARE(m_view.rowText(u"IP Address"_s), u"127.0.15.2"_s);
    QVERIFY(dialog->isVisible());
    dialog->close();
    QTRY_VERIFY(!m_view.dialog(u"Connect Camera"_s));
}

void TestDialogs::connectDialogTakesAddressesOnly()
{
    m_view.open();
    QVERIFY(m_view.click(u"File"_s));
    QVERIFY(m_view.click(u"Connect Camera..."_s));
    QTRY_VERIFY(m_view.dialog(u"Connect Camera"_s));
    QQuickWindow *dialog = m_view.dialog(u"Connect Camera"_s);
    QAccessibleInterface *field = ViewFixture::element(dialog, u"IP Address"_s);
    for (const char key : QByteArray("camera.local"))
        QTest::keyClick(dialog, key);
    QCOMPARE(field->text(QAccessible::Value), QString());
    for (const char key : QByteArray("10.0.0"))
        QTest::keyClick(dialog, key);
    QVERIFY(ViewFixture::element(dialog, u"Connect"_s)->state().disabled);
    QTest::keyClick(dialog, Qt::Key_Return);
    QCOMPARE(VeskApp::instance()->veskObjects().size(), 0);
}

void TestDialogs::renamedCameraKeepsItsName()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QVERIFY(m_view.click(u"Edit name"_s));
    QTRY_VERIFY(m_view.dialog(u"Camera - Edit Name"_s));
    QQuickWindow *dialog = m_view.dialog(u"Camera - Edit Name"_s);
    QCOMPARE(dialog->size(), QSize(480, 96));
    QCOMPARE(dialog->modality(), Qt::ApplicationModal);
    QCOMPARE(ViewFixture::element(dialog, u"Camera Name"_s)->text(QAccessible::Value), u"Simulated Q4"_s);
    QTest::keySequence(dialog, QKeySequence::SelectAll);
    for (const char key : QByteArray("Lab 7"))
        QTest::keyClick(dialog, key);
    QVERIFY(ViewFixture::click(dialog, u"OK"_s));
    QTRY_VERIFY(!m_view.dialog(u"Camera - Edit Name"_s));
    QTRY_COMPARE(simulated->value(u"camera/name"_s).toString(), u"Lab 7"_s);
    QTRY_COMPARE(m_view.rowText(u"Name"_s), u"Lab 7"_s);
}

void TestDialogs::nameWithForbiddenCharactersCannotBeTyped()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QVERIFY(m_view.click(u"Edit name"_s));
    QTRY_VERIFY(m_view.dialog(u"Camera - Edit Name"_s));
    QQuickWindow *dialog = m_view.dialog(u"Camera - Edit Name"_s);
    QTest::keySequence(dialog, QKeySequence::SelectAll);
    for (const char key : QByteArray(" a/b\\c*d?e\"f|g"))
        QTest::keyClick(dialog, key);
    QCOMPARE(ViewFixture::element(dialog, u"Camera Name"_s)->text(QAccessible::Value), u"abcdefg"_s);
    QVERIFY(ViewFixture::click(dialog, u"Cancel"_s));
    QTRY_VERIFY(!m_view.dialog(u"Camera - Edit Name"_s));
    QCOMPARE(simulated->value(u"camera/name"_s).toString(), u"Simulated Q4"_s);
    QCOMPARE(simulated->requests("PUT", u"/camera/name"_s).size(), 0);
}

VIEW_TEST_MAIN(TestDialogs)
#include "tst_dialogs.moc"
