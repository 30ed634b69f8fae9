#include "camera/camera.h"
#include "sim/camera.h"
#include "tests/qml/view_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

/** Dialogs of the drive, and the one that deletes all takes. */
class TestDriveDialogs : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void formatDialogFormats();
    void formatNameRefusesWhatNoDriveIsCalled();
    void formatCanBeCancelled();
    void formatFollowsTheDrive();
    void templateNeedsATag_data();
    void templateNeedsATag();
    void tagIsInsertedAtTheCursor();
    void templateIsKeptOnCancel();
    void deletionOfAllTakesIsAsked();
    void deletionIsNotAskedOnceAnotherCameraIsShown();
    void deletionOfAllTakesIsNotAskedWhenTheWarningIsOff();

private:
    QQuickWindow *openFormat();
    QQuickWindow *openTemplate();
    QQuickWindow *opened(const QString &title) const;

    ViewFixture m_view;
};

static const QString DeleteWarning = u"vesk/disable_take_delete_warn"_s;
static const QString TemplateTitle = u"SSD Auto Save - Edit File Name"_s;

void TestDriveDialogs::cleanup()
{
    VeskApp::instance()->settings()->remove(DeleteWarning);
    QCOMPARE(m_view.end(), QStringList());
}

QQuickWindow *TestDriveDialogs::opened(const QString &title) const
{
    if (!QTest::qWaitFor([&] { return m_view.dialog(title) != nullptr; }))
        return nullptr;
    QQuickWindow *dialog = m_view.dialog(title);
    return QTest::qWaitForWindowActive(dialog) ? dialog : nullptr;
}

QQuickWindow *TestDriveDialogs::openFormat()
{
    return m_view.clickIn(u"SSD"_s, u"Format"_s) ? opened(u"SSD Format"_s) : nullptr;
}

QQuickWindow *TestDriveDialogs::openTemplate()
{
    return m_view.clickIn(u"SSD Autosave"_s, u"Edit file name"_s) ? opened(TemplateTitle) : nullptr;
}

static QString textIn(QQuickWindow *dialog, const QString &field)
{
    return ViewFixture::element(dialog, field, QAccessible::EditableText)->text(QAccessible::Value);
}

static void typeInto(QQuickWindow *dialog, const QByteArray &text)
{
    QTest::keySequence(dialog, QKeySequence::SelectAll);
    QTest::keyClick(dialog, Qt::Key_Delete);
    for (const char key : text)
        QTest::keyClick(dialog, key);
}

static bool offers(QQuickWindow *dialog, const QString &button)
{
    return !ViewFixture::element(dialog, button, QAccessible::Button)->state().disabled;
}

void TestDriveDialogs::formatDialogFormats()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QQuickWindow *dialog = openFormat();
    QVERIFY(dialog);
    QCOMPARE(dialog->size(), QSize(320, 160));
    QCOMPARE(dialog->minimumSize(), QSize(320, 160));
    QCOMPARE(dialog->maximumSize(), QSize(320, 160));
    QCOMPARE(dialog->modality(), Qt::ApplicationModal);
    QVERIFY(ViewFixture::element(dialog, u"Camera:"_s));
    QVERIFY(ViewFixture::element(dialog, u"SSD Name:"_s));
    QVERIFY(ViewFixture::element(dialog, u"Warning: All data on the SSD will be erased!"_s));
    QAccessibleInterface *camera = ViewFixture::element(dialog, u"Camera"_s, QAccessible::StaticText);
    QCOMPARE(camera->text(QAccessible::Description), u"Simulated Q4"_s);
    const QFont font = camera->object()->property("font").value<QFont>();
    QVERIFY(font.bold());
    QCOMPARE(font.pixelSize(), 13);
    QCOMPARE(textIn(dialog, u"SSD Name"_s), u"Q4SSD"_s);
    typeInto(dialog, "FIELD 2");
    QVERIFY(ViewFixture::click(dialog, u"Format"_s));
    QTRY_VERIFY(!m_view.dialog(u"SSD Format"_s));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "POST", u"/ssd-format"_s),
                 QByteArrayList{"{\"name\":\"FIELD 2\"}"});
    QTRY_COMPARE(m_view.rowText(u"SSD"_s, u"State"_s), u"Formatting..."_s);
    QTRY_COMPARE(m_view.rowText(u"SSD"_s, u"Name"_s), u"FIELD 2"_s);
}

void TestDriveDialogs::formatNameRefusesWhatNoDriveIsCalled()
{
    QVERIFY(m_view.startWithCamera());
    QQuickWindow *dialog = openFormat();
    QVERIFY(dialog);
    typeInto(dialog, "ABCDEFGHIJKL");
    QCOMPARE(textIn(dialog, u"SSD Name"_s), u"ABCDEFGHIJK"_s);
    typeInto(dialog, "a*b?c:d/e\\f|g<h>i\"j");
    QCOMPARE(textIn(dialog, u"SSD Name"_s), u"abcdefghij"_s);
    QTest::keyClick(dialog, Qt::Key_Escape);
    QTRY_VERIFY(!m_view.dialog(u"SSD Format"_s));
}

void TestDriveDialogs::formatCanBeCancelled()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QQuickWindow *dialog = openFormat();
    QVERIFY(dialog);
    QVERIFY(ViewFixture::click(dialog, u"Cancel"_s));
    QTRY_VERIFY(!m_view.dialog(u"SSD Format"_s));
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(simulated->requests("POST", u"/ssd-format"_s).size(), 0);
}

void TestDriveDialogs::formatFollowsTheDrive()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QQuickWindow *dialog = openFormat();
    QVERIFY(dialog);
    QVERIFY(offers(dialog, u"Format"_s));
    simulated->forceValue(u"ssd/wr_state"_s, 1);
    QTRY_VERIFY(!offers(dialog, u"Format"_s));
    QTest::keyClick(dialog, Qt::Key_Return);
    simulated->forceValue(u"ssd/wr_state"_s, 0);
    simulated->forceValue(u"ssd/state"_s, 8);
    QTRY_VERIFY(offers(dialog, u"Format"_s));
    simulated->forceValue(u"ssd/state"_s, 0);
    QTRY_VERIFY(!offers(dialog, u"Format"_s));
    QCOMPARE(simulated->requests("POST", u"/ssd-format"_s).size(), 0);
}

void TestDriveDialogs::templateNeedsATag_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("none") << QByteArray("take") << false;
    QTest::newRow("empty") << QByteArray() << false;
    QTest::newRow("word without brackets") << QByteArray("take seq time") << false;
    QTest::newRow("unfinished") << QByteArray("take <seq") << false;
    QTest::newRow("another tag") << QByteArray("take <date>") << false;
    QTest::newRow("sequence") << QByteArray("take <seq>") << true;
    QTest::newRow("sequence with digits") << QByteArray("<seq:4>") << true;
    QTest::newRow("time") << QByteArray("take <time> a") << true;
    QTest::newRow("time with a form") << QByteArray("x<time:hhmm>") << true;
}

void TestDriveDialogs::templateNeedsATag()
{
    QFETCH(const QByteArray, text);
    QFETCH(const bool, accepted);
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    simulated->answer("PUT", u"/ssd/autosave/mode"_s, "1");
    QQuickWindow *dialog = openTemplate();
    QVERIFY(dialog);
    QCOMPARE(dialog->size(), QSize(480, 160));
    QCOMPARE(dialog->maximumSize(), QSize(480, 160));
    QCOMPARE(dialog->modality(), Qt::ApplicationModal);
    QVERIFY(ViewFixture::element(dialog, u"File Name:"_s));
    QVERIFY(ViewFixture::element(dialog, u"Must contain a tag such as a sequence number or timestamp to "
                                         u"ensure file names are unique"_s));
    QCOMPARE(textIn(dialog, u"File Name"_s), u"take"_s);
    typeInto(dialog, text);
    QCOMPARE(offers(dialog, u"OK"_s), accepted);
    QTest::keyClick(dialog, Qt::Key_Return);
    const QByteArrayList sent = accepted ? QByteArrayList{'"' + text + '"'} : QByteArrayList();
    QTRY_COMPARE(m_view.dialog(TemplateTitle) == nullptr, accepted);
    QVERIFY(m_view.waitForPolls(2));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "PUT", u"/ssd/autosave/name"_s), sent);
    if (accepted)
        QCOMPARE(m_view.rowText(u"SSD Autosave"_s, u"File Name"_s), QString::fromLatin1(text));
}

void TestDriveDialogs::tagIsInsertedAtTheCursor()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    simulated->answer("PUT", u"/ssd/autosave/mode"_s, "1");
    QQuickWindow *dialog = openTemplate();
    QVERIFY(dialog);
    typeInto(dialog, "ab");
    QTest::keyClick(dialog, Qt::Key_Left);
    for (const QString &item : {u"Sequence Number"_s, u"Timestamp"_s}) {
        QVERIFY(ViewFixture::click(dialog, u"Insert tag"_s));
        QTRY_VERIFY(ViewFixture::element(dialog, item, QAccessible::MenuItem));
        auto *row =
            qobject_cast<QQuickItem *>(ViewFixture::element(dialog, item, QAccessible::MenuItem)->object());
        QCOMPARE(row->window(), dialog);
        QVERIFY(row->width() <= 128);
        QVERIFY(ViewFixture::click(dialog, item));
        QTRY_VERIFY(!ViewFixture::element(dialog, item, QAccessible::MenuItem));
    }
    QCOMPARE(textIn(dialog, u"File Name"_s), u"a<seq><time>b"_s);
    QTest::keyClick(dialog, 'x');
    QCOMPARE(textIn(dialog, u"File Name"_s), u"a<seq><time>xb"_s);
    QVERIFY(ViewFixture::click(dialog, u"OK"_s));
    QTRY_COMPARE(simulated->value(u"ssd/autosave/name"_s).toString(), u"a<seq><time>xb"_s);
}

void TestDriveDialogs::templateIsKeptOnCancel()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    simulated->answer("PUT", u"/ssd/autosave/mode"_s, "1");
    QQuickWindow *dialog = openTemplate();
    QVERIFY(dialog);
    typeInto(dialog, " <seq>/a\"b|c?d*e");
    QCOMPARE(textIn(dialog, u"File Name"_s), u"<seq>abcde"_s);
    QVERIFY(ViewFixture::click(dialog, u"Cancel"_s));
    QTRY_VERIFY(!m_view.dialog(TemplateTitle));
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(ViewFixture::writtenPaths(*simulated), QStringList());
}

void TestDriveDialogs::deletionOfAllTakesIsAsked()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    for (const bool agreed : {false, true}) {
        QVERIFY(m_view.click(u"File"_s));
        QVERIFY(m_view.click(u"Delete All Takes..."_s));
        QQuickWindow *dialog = opened(u"VESK"_s);
        QVERIFY(dialog);
        QCOMPARE(dialog->size(), QSize(200, 100));
        QCOMPARE(dialog->maximumSize(), QSize(200, 100));
        QCOMPARE(dialog->modality(), Qt::NonModal);
        QVERIFY(ViewFixture::element(dialog, u"Are you sure you want to delete all takes?"_s));
        QVERIFY(ViewFixture::click(dialog, agreed ? u"OK"_s : u"Cancel"_s));
        QTRY_VERIFY(!m_view.dialog(u"VESK"_s));
        QVERIFY(m_view.waitForPolls(2));
        QCOMPARE(ViewFixture::bodies(*simulated, "POST", u"/del"_s),
                 agreed ? QByteArrayList{"{\"take\":-1}"} : QByteArrayList());
    }
}

void TestDriveDialogs::deletionIsNotAskedOnceAnotherCameraIsShown()
{
    QVERIFY(m_view.startWithCamera());
    q4sim::Config config;
    config.address = QHostAddress(ViewFixture::address(2));
    config.name = u"Second"_s;
    config.discovery = false;
    QVERIFY(m_view.simulate(config));
    QVERIFY(m_view.connectTo(ViewFixture::address(2)));
    QVERIFY(m_view.click(u"File"_s));
    QVERIFY(m_view.click(u"Delete All Takes..."_s));
    QVERIFY(opened(u"VESK"_s));
    QVERIFY(m_view.click(m_view.window(), m_view.element(u"Second"_s, QAccessible::PageTab)));
    QTRY_VERIFY(!m_view.dialog(u"VESK"_s));
}

void TestDriveDialogs::deletionOfAllTakesIsNotAskedWhenTheWarningIsOff()
{
    VeskApp::instance()->setSetting(DeleteWarning, true);
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QVERIFY(m_view.click(u"File"_s));
    QVERIFY(m_view.click(u"Delete All Takes"_s));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "POST", u"/del"_s), QByteArrayList{"{\"take\":-1}"});
    QVERIFY(!m_view.dialog(u"VESK"_s));
    // The same from the camera's tab.
    QVERIFY(m_view.click(m_view.window(), m_view.element(u"Simulated Q4"_s, QAccessible::PageTab),
                         Qt::RightButton));
    QVERIFY(m_view.click(u"Delete All Takes"_s));
    QTRY_COMPARE(simulated->requests("POST", u"/del"_s).size(), 2);
}

VIEW_TEST_MAIN(TestDriveDialogs)
#include "tst_drive_dialogs.moc"
