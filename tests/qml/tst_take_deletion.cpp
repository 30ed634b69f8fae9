#include "camera/camera.h"
#include "sim/camera.h"
#include "take/take.h"
#include "tests/qml/take_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

/** The ways to delete a take, and what keeps one from it. */
class TestTakeDeletion : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void takeIsDeletedAfterAQuestion_data();
    void takeIsDeletedAfterAQuestion();
    void cancelledDeletionKeepsTheTake();
    void lockedTakeIsNotDeleted_data() { takeIsDeletedAfterAQuestion_data(); }
    void lockedTakeIsNotDeleted();
    void withoutTheWarningATakeIsDeletedAtOnce_data() { takeIsDeletedAfterAQuestion_data(); }
    void withoutTheWarningATakeIsDeletedAtOnce();
    void withoutTheWarningALockedTakeStaysWithoutAWord();
    void questionIsNotAnsweredForAnotherTake();

private:
    enum Way { Button, TabMenu, FileMenu };

    bool askToDelete(int way, int takeId, const QString &item) const;
    QQuickWindow *openedDialog() const;
    void answer(const QString &button) const;

    TakeFixture m_view;
};

void TestTakeDeletion::cleanup()
{
    VeskApp::instance()->settings()->remove(u"vesk/disable_take_delete_warn"_s);
    QCOMPARE(m_view.end(), QStringList());
}

bool TestTakeDeletion::askToDelete(int way, int takeId, const QString &item) const
{
    if (way == Button)
        return m_view.clickIn(u"Take"_s, u"Delete..."_s);
    if (way == TabMenu && !m_view.click(u"Take %1"_s.arg(takeId), Qt::RightButton))
        return false;
    if (way == FileMenu && !m_view.click(u"File"_s))
        return false;
    QAccessibleInterface *entry = nullptr;
    return QTest::qWaitFor([&] {
               entry = m_view.element(item, QAccessible::MenuItem);
               return entry != nullptr;
           }) &&
           ViewFixture::click(m_view.window(), entry);
}

QQuickWindow *TestTakeDeletion::openedDialog() const
{
    QQuickWindow *dialog = nullptr;
    const bool opened = QTest::qWaitFor([&] { return (dialog = m_view.dialog(u"VESK"_s)) != nullptr; });
    return opened ? dialog : nullptr;
}

void TestTakeDeletion::answer(const QString &button) const
{
    QQuickWindow *dialog = openedDialog();
    QVERIFY(dialog);
    QVERIFY(ViewFixture::click(dialog, button));
    QTRY_VERIFY(!m_view.dialog(u"VESK"_s));
}

void TestTakeDeletion::takeIsDeletedAfterAQuestion_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("button") << int(Button);
    QTest::newRow("tab's menu") << int(TabMenu);
    QTest::newRow("file menu") << int(FileMenu);
}

void TestTakeDeletion::takeIsDeletedAfterAQuestion()
{
    QFETCH(const int, way);
    QVERIFY(m_view.startWithTakes());
    QVERIFY(m_view.openTake(2));
    QVERIFY(askToDelete(way, 2, u"Delete..."_s));
    QQuickWindow *dialog = openedDialog();
    QVERIFY(dialog);
    QCOMPARE(dialog->size(), QSize(200, 100));
    QVERIFY(ViewFixture::element(dialog, u"Are you sure you want to delete Take 2?"_s));
    QCOMPARE(m_view.simulated()->requests("POST", u"/del"_s).size(), 0);
    answer(u"OK"_s);
    QTRY_COMPARE(ViewFixture::bodies(*m_view.simulated(), "POST", u"/del"_s), QByteArrayList{"{\"take\":2}"});
    QTRY_VERIFY(!m_view.tab(2));
    QTRY_COMPARE(VeskApp::instance()->selectedVeskObject(), m_view.camera());
    QVERIFY(m_view.tab(1));
    QCOMPARE(m_view.simulated()->requests("POST", u"/rec"_s).size(), 0);
}

void TestTakeDeletion::cancelledDeletionKeepsTheTake()
{
    QVERIFY(m_view.startWithTakes());
    QVERIFY(m_view.openTake(2));
    QVERIFY(askToDelete(Button, 2, {}));
    answer(u"Cancel"_s);
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(m_view.simulated()->requests("POST", u"/del"_s).size(), 0);
    QVERIFY(m_view.tab(2));
}

void TestTakeDeletion::lockedTakeIsNotDeleted()
{
    QFETCH(const int, way);
    QVERIFY(m_view.startWithTakes());
    Take *take = m_view.openTake(2);
    QVERIFY(take);
    m_view.simulated()->setTakeLocked(2, true);
    QTRY_VERIFY(take->locked());
    QVERIFY(askToDelete(way, 2, u"Delete..."_s));
    QQuickWindow *dialog = openedDialog();
    QVERIFY(dialog);
    QCOMPARE(dialog->size(), QSize(200, 100));
    QVERIFY(ViewFixture::element(dialog, u"Take 2 can't be deleted while save is in progress!"_s));
    QVERIFY(!ViewFixture::element(dialog, u"Cancel"_s));
    answer(u"OK"_s);
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(m_view.simulated()->requests("POST", u"/del"_s).size(), 0);
    QVERIFY(m_view.tab(2));
}

void TestTakeDeletion::withoutTheWarningATakeIsDeletedAtOnce()
{
    QFETCH(const int, way);
    VeskApp::instance()->setSetting(u"vesk/disable_take_delete_warn"_s, true);
    QVERIFY(m_view.startWithTakes());
    QVERIFY(m_view.openTake(2));
    QVERIFY(askToDelete(way, 2, u"Delete"_s));
    QTRY_COMPARE(ViewFixture::bodies(*m_view.simulated(), "POST", u"/del"_s), QByteArrayList{"{\"take\":2}"});
    QVERIFY(!m_view.dialog(u"VESK"_s));
    QTRY_VERIFY(!m_view.tab(2));
}

void TestTakeDeletion::withoutTheWarningALockedTakeStaysWithoutAWord()
{
    VeskApp::instance()->setSetting(u"vesk/disable_take_delete_warn"_s, true);
    QVERIFY(m_view.startWithTakes());
    Take *take = m_view.openTake(2);
    QVERIFY(take);
    m_view.simulated()->setTakeLocked(2, true);
    QTRY_VERIFY(take->locked());
    QVERIFY(askToDelete(Button, 2, {}));
    QVERIFY(m_view.waitForPolls(2));
    QVERIFY(!m_view.dialog(u"VESK"_s));
    QCOMPARE(m_view.simulated()->requests("POST", u"/del"_s).size(), 0);
}

void TestTakeDeletion::questionIsNotAnsweredForAnotherTake()
{
    QVERIFY(m_view.startWithTakes());
    QVERIFY(m_view.openTake(2));
    QVERIFY(askToDelete(FileMenu, 2, u"Delete..."_s));
    QVERIFY(openedDialog());
    QVERIFY(m_view.openTake(1));
    QTRY_VERIFY(!m_view.dialog(u"VESK"_s));
    QCOMPARE(m_view.simulated()->requests("POST", u"/del"_s).size(), 0);
}

VIEW_TEST_MAIN(TestTakeDeletion)
#include "tst_take_deletion.moc"
