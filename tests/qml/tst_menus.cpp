#include "app/vesk_app.h"
#include "camera/camera.h"
#include "sim/camera.h"
#include "take/ssd_take.h"
#include "tests/qml/any_source_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

/** The entries of every menu bar and of every tab's menu, by mouse and by keys. */
class TestMenus : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void exitEndsTheProgram_data() { addAll(); }
    void exitEndsTheProgram();
    void viewAndHelpLeadAway_data() { addAll(); }
    void viewAndHelpLeadAway();
    void sourcesAreAddedFrom_data() { addAll(); }
    void sourcesAreAddedFrom();
    void saveOpensFor_data();
    void saveOpensFor();
    void menuKeyOpensTheMenuOfATab_data();
    void menuKeyOpensTheMenuOfATab();
    void clickOnATabSelectsItsRecording();
    void allTakesAreDeletedFromTheTabAfterAQuestion();

private:
    static void addAll();
    bool clickEntry(const QString &entry) const;

    AnySourceFixture m_view;
};

void TestMenus::addAll()
{
    QTest::addColumn<int>("what");
    QTest::newRow("no source") << int(AnySourceFixture::Nothing);
    QTest::newRow("camera") << int(AnySourceFixture::TheCamera);
    QTest::newRow("take") << int(AnySourceFixture::TheTake);
    QTest::newRow("recording on the drive") << int(AnySourceFixture::TheRecording);
    QTest::newRow("native file") << int(AnySourceFixture::TheFile);
}

/** Clicks an entry of the menu that is opening. */
bool TestMenus::clickEntry(const QString &entry) const
{
    return m_view.offers(entry) &&
           ViewFixture::click(m_view.window(), m_view.element(entry, QAccessible::MenuItem));
}

void TestMenus::exitEndsTheProgram()
{
    QFETCH(const int, what);
    QVERIFY(m_view.show(what));
    QSignalSpy quit(qmlEngine(m_view.window()), &QQmlEngine::quit);
    QVERIFY(m_view.click(u"File"_s));
    QVERIFY(m_view.offers(u"Exit"_s));
    QCOMPARE(quit.size(), 0);
    QVERIFY(clickEntry(u"Exit"_s));
    QTRY_COMPARE(quit.size(), 1);
}

void TestMenus::viewAndHelpLeadAway()
{
    QFETCH(const int, what);
    QVERIFY(m_view.show(what));
    VeskObject *source = VeskApp::instance()->selectedVeskObject();
    QCOMPARE(source != nullptr, what != AnySourceFixture::Nothing);
    const auto listIsShown = [this] { return m_view.shows(u"Saves"_s, QAccessible::Table); };
    QVERIFY(m_view.click(u"View"_s));
    QVERIFY(clickEntry(u"Save Progress"_s));
    QTRY_VERIFY(listIsShown());
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), nullptr);

    VeskApp::instance()->setSelectedVeskObject(source);
    QTRY_COMPARE(listIsShown(), what == AnySourceFixture::Nothing);
    QTest::keyClick(m_view.window(), Qt::Key_H, Qt::AltModifier);
    QVERIFY(m_view.offers(u"About VESK"_s));
    QTest::keyClick(m_view.window(), Qt::Key_Down);
    QTest::keyClick(m_view.window(), Qt::Key_Return);
    QTRY_VERIFY(m_view.shows(u"Version 10.0"_s));
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), nullptr);

    VeskApp::instance()->setSelectedVeskObject(source);
    QTRY_COMPARE(m_view.shows(u"Version 10.0"_s), what == AnySourceFixture::Nothing);
    QTest::keyClick(m_view.window(), Qt::Key_V, Qt::AltModifier);
    QVERIFY(m_view.offers(u"Save Progress"_s));
    QTest::keyClick(m_view.window(), Qt::Key_Down);
    QTest::keyClick(m_view.window(), Qt::Key_Return);
    QTRY_VERIFY(listIsShown());

    VeskApp::instance()->setSelectedVeskObject(source);
    QTRY_COMPARE(listIsShown(), what == AnySourceFixture::Nothing);
    QVERIFY(m_view.click(u"Help"_s));
    QVERIFY(clickEntry(u"About VESK"_s));
    QTRY_VERIFY(m_view.shows(u"Version 10.0"_s));
    QVERIFY(!listIsShown());
}

void TestMenus::sourcesAreAddedFrom()
{
    QFETCH(const int, what);
    QVERIFY(m_view.show(what));
    QVERIFY(m_view.click(u"File"_s));
    QVERIFY(clickEntry(u"Connect Camera..."_s));
    QTRY_VERIFY(m_view.dialog(u"Connect Camera"_s));
    m_view.dialog(u"Connect Camera"_s)->close();
    QTRY_VERIFY(!m_view.dialog(u"Connect Camera"_s));
    // Nothing else brings a window to the front where there is no desktop.
    m_view.window()->requestActivate();
    QVERIFY(QTest::qWaitForWindowActive(m_view.window()));
    QTest::keyClick(m_view.window(), Qt::Key_F, Qt::AltModifier);
    QVERIFY(clickEntry(u"Open VESK File..."_s));
    QTRY_VERIFY(m_view.drawnDialog());
    QVERIFY(m_view.clickInDrawn(u"Cancel"_s));
    QTRY_VERIFY(!m_view.drawnDialog());
}

void TestMenus::saveOpensFor_data()
{
    QTest::addColumn<int>("what");
    QTest::addColumn<QString>("opener");
    QTest::addColumn<QString>("row");
    const QString recordingRow = u"SSD Take"_s;
    const QString fileRow = u"VESK File"_s;
    QTest::newRow("recording's file menu")
        << int(AnySourceFixture::TheRecording) << u"File"_s << recordingRow;
    QTest::newRow("recording's tab") << int(AnySourceFixture::TheRecording)
                                     << AnySourceFixture::tabName(AnySourceFixture::TheRecording)
                                     << recordingRow;
    QTest::newRow("file's file menu") << int(AnySourceFixture::TheFile) << u"File"_s << fileRow;
    QTest::newRow("file's tab") << int(AnySourceFixture::TheFile) << u"a.vesk"_s << fileRow;
}

void TestMenus::saveOpensFor()
{
    QFETCH(const int, what);
    QFETCH(const QString, opener);
    QFETCH(const QString, row);
    QVERIFY(m_view.show(what));
    QTRY_VERIFY(m_view.shows(opener));
    QVERIFY(m_view.click(opener, opener == "File"_L1 ? Qt::LeftButton : Qt::RightButton));
    QVERIFY(clickEntry(u"Save..."_s));
    QTRY_VERIFY(m_view.saveDialog());
    QTRY_COMPARE(m_view.textOf(row), AnySourceFixture::tabName(what));
    QVERIFY(m_view.press(u"Cancel"_s));
    QTRY_VERIFY(!m_view.saveDialog());
}

void TestMenus::menuKeyOpensTheMenuOfATab_data()
{
    QTest::addColumn<int>("what");
    QTest::addColumn<QStringList>("entries");
    QTest::newRow("camera") << int(AnySourceFixture::TheCamera)
                            << QStringList{u"Open SSD Take..."_s, u"Delete All Takes..."_s, u"Disconnect"_s};
    QTest::newRow("take") << int(AnySourceFixture::TheTake) << QStringList{u"Save..."_s, u"Delete..."_s};
    QTest::newRow("recording on the drive")
        << int(AnySourceFixture::TheRecording) << QStringList{u"Save..."_s, u"Close"_s};
    QTest::newRow("native file") << int(AnySourceFixture::TheFile) << QStringList{u"Save..."_s, u"Close"_s};
}

void TestMenus::menuKeyOpensTheMenuOfATab()
{
    QFETCH(const int, what);
    QFETCH(const QStringList, entries);
    QVERIFY(m_view.show(what));
    QTRY_VERIFY(m_view.tabOf(AnySourceFixture::tabName(what)));
    m_view.tabOf(AnySourceFixture::tabName(what))->forceActiveFocus(Qt::TabFocusReason);
    QTest::keyClick(m_view.window(), Qt::Key_Menu);
    QVERIFY(m_view.offers(entries.last()));
    QCOMPARE(m_view.menuWith(entries.last()), entries);
    QTest::keyClick(m_view.window(), Qt::Key_Escape);
    QTRY_VERIFY(!m_view.shows(entries.last(), QAccessible::MenuItem));
}

void TestMenus::clickOnATabSelectsItsRecording()
{
    SsdTake *recording = m_view.startWithRecording(AnySourceFixture::tabName(AnySourceFixture::TheRecording));
    QVERIFY(recording);
    VeskApp::instance()->setSelectedVeskObject(m_view.camera());
    QTRY_VERIFY(m_view.shows(u"Black Reference"_s));
    QVERIFY(m_view.click(AnySourceFixture::tabName(AnySourceFixture::TheRecording)));
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), recording);
    QTRY_COMPARE(m_view.rowText(u"SSD Take"_s, u"Name"_s), u"wheel"_s);
}

void TestMenus::allTakesAreDeletedFromTheTabAfterAQuestion()
{
    QVERIFY(m_view.startWithTakes());
    for (const bool agreed : {false, true}) {
        QVERIFY(m_view.click(u"Simulated Q4"_s, Qt::RightButton));
        QVERIFY(clickEntry(u"Delete All Takes..."_s));
        QTRY_VERIFY(m_view.dialog(u"VESK"_s));
        QCOMPARE(ViewFixture::bodies(*m_view.simulated(), "POST", u"/del"_s), QByteArrayList());
        QVERIFY(ViewFixture::click(m_view.dialog(u"VESK"_s), agreed ? u"OK"_s : u"Cancel"_s));
        QTRY_VERIFY(!m_view.dialog(u"VESK"_s));
        QVERIFY(m_view.waitForPolls(2));
        QCOMPARE(m_view.tab(1) == nullptr, agreed);
        QCOMPARE(m_view.tab(2) == nullptr, agreed);
    }
    QCOMPARE(ViewFixture::bodies(*m_view.simulated(), "POST", u"/del"_s), QByteArrayList{"{\"take\":-1}"});
}

VIEW_TEST_MAIN(TestMenus)
#include "tst_menus.moc"
