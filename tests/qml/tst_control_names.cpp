#include "app/vesk_app.h"
#include "save/save_job.h"
#include "sim/camera.h"
#include "tests/qml/dialog_fixture.h"
#include "tests/qml/vesk_file_fixture.h"
#include "tests/qml/view_test_main.h"
#include "tests/qml/window_check.h"

#include <QQuickWindow>

using namespace Qt::StringLiterals;

/** All that the window and its dialogs show can be read aloud. */
class TestControlNames : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void everyControlOfAViewHasAName_data();
    void everyControlOfAViewHasAName();
    void everyControlOfADialogHasAName_data() { DialogFixture::addDialogs(); }
    void everyControlOfADialogHasAName();
    void everyEntryOfAMenuHasAName_data();
    void everyEntryOfAMenuHasAName();

private:
    enum View { OfCamera, OfSilentCamera, OfTake, OfSearch, OfRecording, OfFile, OfSaves, About };

    bool show(int view);
    bool showCamera();
    bool showSearch();
    bool showSaves();
    bool showFile();

    DialogFixture m_view;
    VeskFileFixture m_files;
};

void TestControlNames::cleanup()
{
    QCOMPARE(m_view.end(), QStringList());
    VeskApp::instance()->setNullVeskObject(VeskApp::Empty);
}

bool TestControlNames::showCamera()
{
    return m_view.startUnfolded() &&
           m_view.simulated()->answer("PUT", u"/ssd/autosave/mode"_s, "3").status == 200 &&
           QTest::qWaitFor([this] {
               return m_view.shows(u"Frame Count"_s) && m_view.shows(u"Firmware Update"_s) &&
                      m_view.shows(u"Auto White Balance"_s);
           });
}

/** No frame comes as long as it goes on. */
bool TestControlNames::showSearch()
{
    if (!m_view.startWithTake(1))
        return false;
    m_view.simulated()->setFault(q4sim::Route::Xfer, {.kind = q4sim::FaultKind::NoAnswer});
    return m_view.click(u"Skip forward"_s) && m_view.offers(u"Next Image Diff"_s) &&
           m_view.click(u"Next Image Diff"_s) &&
           QTest::qWaitFor([this] { return m_view.shows(u"Cancel the search"_s); });
}

/** One that is complete, and one that goes on. */
bool TestControlNames::showSaves()
{
    if (!m_view.startWithTake(1))
        return false;
    SaveJob *done = m_view.saveAs(u"done"_s, u"VESK"_s);
    if (!done || !QTest::qWaitFor([done] { return done->state() == SaveJob::Done; }) || !m_view.openTake(1))
        return false;
    m_view.simulated()->setFault(q4sim::Route::Xfer, {.kind = q4sim::FaultKind::NoAnswer});
    return m_view.saveAs(u"runs"_s, u"VESK"_s) &&
           QTest::qWaitFor([this] { return m_view.hasRow(u"done.vesk"_s) && m_view.hasRow(u"runs.vesk"_s); });
}

bool TestControlNames::showFile()
{
    m_view.open();
    return VeskFileFixture::openFile(m_files.write(u"a.vesk"_s, {.cfa = 1})) &&
           QTest::qWaitFor([this] { return m_view.shows(u"VESK File"_s); });
}

bool TestControlNames::show(int view)
{
    switch (view) {
    case OfCamera:
        return showCamera();
    case OfSilentCamera:
        m_view.open();
        VeskApp::instance()->connectCamera(ViewFixture::address(9));
        return QTest::qWaitFor([this] { return m_view.shows(u"Black Reference"_s); });
    case OfTake:
        return m_view.startWithTake(1);
    case OfSearch:
        return showSearch();
    case OfRecording:
        return m_view.startWithRecording(u"wheel.vesk"_s);
    case OfFile:
        return showFile();
    case OfSaves:
        return showSaves();
    default:
        m_view.open();
        return m_view.shows(u"Credits"_s);
    }
}

void TestControlNames::everyControlOfAViewHasAName_data()
{
    QTest::addColumn<int>("view");
    QTest::newRow("camera") << int(OfCamera);
    QTest::newRow("camera that never answered") << int(OfSilentCamera);
    QTest::newRow("take") << int(OfTake);
    QTest::newRow("take that is searched") << int(OfSearch);
    QTest::newRow("recording of the drive") << int(OfRecording);
    QTest::newRow("native file") << int(OfFile);
    QTest::newRow("saves") << int(OfSaves);
    QTest::newRow("about") << int(About);
}

void TestControlNames::everyControlOfAViewHasAName()
{
    QFETCH(const int, view);
    QVERIFY(show(view));
    ViewFixture::settle(m_view.window());
    QCOMPARE(WindowCheck::namelessControls(m_view.window()).join(u", "_s), QString());
}

void TestControlNames::everyControlOfADialogHasAName()
{
    QFETCH(const int, dialog);
    QQuickWindow *window = m_view.startWithDialog(dialog);
    QVERIFY(window);
    QVERIFY(!window->title().isEmpty());
    QCOMPARE(WindowCheck::namelessControls(window).join(u", "_s), QString());
}

void TestControlNames::everyEntryOfAMenuHasAName_data()
{
    everyControlOfAViewHasAName_data();
}

void TestControlNames::everyEntryOfAMenuHasAName()
{
    QFETCH(const int, view);
    QVERIFY(show(view));
    const QList<QPair<QString, QString>> menus = {
        {u"File"_s, u"Exit"_s}, {u"View"_s, u"Save Progress"_s}, {u"Help"_s, u"About VESK"_s}};
    for (const auto &[menu, entry] : menus) {
        QVERIFY(m_view.click(m_view.window(), m_view.element(menu, QAccessible::MenuItem)));
        QVERIFY(m_view.offers(entry));
        QCOMPARE(WindowCheck::namelessControls(m_view.window()).join(u", "_s), QString());
        QTest::keyClick(m_view.window(), Qt::Key_Escape);
        QTRY_VERIFY(!m_view.shows(entry));
    }
}

VIEW_TEST_MAIN(TestControlNames)
#include "tst_control_names.moc"
