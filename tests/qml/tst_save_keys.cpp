#include "app/vesk_app.h"
#include "camera/camera.h"
#include "save/save_job.h"
#include "save/save_manager.h"
#include "sim/camera.h"
#include "take/take.h"
#include "tests/qml/save_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

/** Saving by keys alone, and what is open in the dialog when it goes. */
class TestSaveKeys : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void everythingInTheDialogIsReachedByTab();
    void saveIsMadeByKeysAlone();
    void escapeClosesWhatIsOnTop_data();
    void escapeClosesWhatIsOnTop();
    void keysAreThoseOfPlaybackWhenTheDialogHasGone_data();
    void keysAreThoseOfPlaybackWhenTheDialogHasGone();
    void takeGoesWhileTheDialogIsUsed_data();
    void takeGoesWhileTheDialogIsUsed();
    void focusedRowIsInSight();
    void focusedButtonIsInSightBehindWideColumns();
    void listStaysWhereItIsWhenARowGoes();
    void arrowsScrollTheList();

private:
    enum Use { TagMenuOpen, FormatsOpen, NameTyped, FrameTyped, FolderDialogOpen };
    bool use(int what);
    bool tabTo(const QString &name);
    QString walk(Qt::Key key, int rows);

    SaveFixture m_view;
};

static QString focusedName(const QQuickWindow *window)
{
    for (QQuickItem *item = window->activeFocusItem(); item; item = item->parentItem()) {
        QAccessibleInterface *element = QAccessible::queryAccessibleInterface(item);
        if (element && !element->text(QAccessible::Name).isEmpty())
            return element->text(QAccessible::Name);
    }
    return {};
}

/** The file of the row with the control that has the focus. */
static QString focusedRow(const QQuickWindow *window)
{
    for (QQuickItem *item = window->activeFocusItem(); item; item = item->parentItem()) {
        QAccessibleInterface *element = QAccessible::queryAccessibleInterface(item);
        if (element && element->role() == QAccessible::Row)
            return element->text(QAccessible::Name);
    }
    return {};
}

/** Presses Tab in the dialog until the control with a name has the focus; false when it never gets it. */
bool TestSaveKeys::tabTo(const QString &name)
{
    for (int i = 0; i < 30; ++i) {
        QTest::keyClick(m_view.saveDialog(), Qt::Key_Tab);
        if (focusedName(m_view.saveDialog()) == name)
            return true;
    }
    return false;
}

void TestSaveKeys::everythingInTheDialogIsReachedByTab()
{
    QVERIFY(m_view.startWithTake(1));
    QVERIFY(m_view.openSave());
    QVERIFY(m_view.pick(u"Format"_s, u"TIFF"_s));
    QVERIFY(m_view.press(u"Selection"_s, QAccessible::RadioButton));
    QVERIFY(tabTo(u"Cancel"_s));
    QStringList names;
    do {
        QTest::keyClick(m_view.saveDialog(), Qt::Key_Tab);
        names.append(focusedName(m_view.saveDialog()));
    } while (names.last() != u"Cancel"_s && names.size() < 30);
    QCOMPARE(names, QStringList({u"Source"_s, u"All frames"_s, u"Playback Frames"_s, u"Selection"_s,
                                 u"First Frame"_s, u"Last Frame"_s, u"Destination"_s, u"Save To"_s,
                                 u"File Name"_s, u"Insert a number"_s, u"Select Folder"_s, u"Format"_s,
                                 u"Format"_s, u"Save"_s, u"Cancel"_s}));
}

void TestSaveKeys::saveIsMadeByKeysAlone()
{
    Take *take = m_view.startWithTake(1);
    QVERIFY(take);
    take->pause();
    take->setAFr(-5);
    QVERIFY(m_view.openSave());
    QVERIFY(tabTo(u"Selection"_s));
    QTest::keyClick(m_view.saveDialog(), Qt::Key_Space);
    QVERIFY(tabTo(u"Last Frame"_s));
    QTest::keyClick(m_view.saveDialog(), Qt::Key_7);
    QVERIFY(tabTo(u"File Name"_s));
    QTest::keySequence(m_view.saveDialog(), QKeySequence::SelectAll);
    QTest::keyClick(m_view.saveDialog(), Qt::Key_K);
    QVERIFY(tabTo(u"Insert a number"_s));
    QTest::keyClick(m_view.saveDialog(), Qt::Key_Space);
    QTRY_VERIFY(ViewFixture::element(m_view.saveDialog(), u"Frame Number"_s, QAccessible::MenuItem));
    QTest::keyClick(m_view.saveDialog(), Qt::Key_Down);
    QTest::keyClick(m_view.saveDialog(), Qt::Key_Return);
    QTRY_COMPARE(m_view.typed(u"File Name"_s), u"k<fr>"_s);
    QTRY_VERIFY(!ViewFixture::element(m_view.saveDialog(), u"Frame Number"_s, QAccessible::MenuItem));
    QVERIFY(tabTo(u"Save"_s));
    QTest::keyClick(m_view.saveDialog(), Qt::Key_Return);
    QTRY_COMPARE(SaveFixture::jobs().size(), 1);
    QCOMPARE(SaveFixture::jobs()[0]->startFr(), -5);
    QCOMPARE(SaveFixture::jobs()[0]->frCnt(), 13);
    QTRY_COMPARE(SaveFixture::jobs()[0]->state(), SaveJob::Done);
    QCOMPARE(m_view.files(), QStringList{u"k-5.vesk"_s});
}

bool TestSaveKeys::use(int what)
{
    switch (what) {
    case TagMenuOpen:
        return m_view.press(u"Insert a number"_s) && QTest::qWaitFor([this] {
                   return ViewFixture::element(m_view.saveDialog(), u"Frame Number"_s,
                                               QAccessible::MenuItem) != nullptr;
               });
    case FormatsOpen:
        return m_view.press(u"Format"_s, QAccessible::ComboBox) && QTest::qWaitFor([this] {
                   return ViewFixture::element(m_view.saveDialog(), u"TIFF"_s, QAccessible::MenuItem) !=
                          nullptr;
               });
    case NameTyped:
        return m_view.typeInto(u"File Name"_s, u"typ"_s, Qt::Key_unknown);
    case FrameTyped:
        return m_view.press(u"Selection"_s, QAccessible::RadioButton) &&
               m_view.typeInto(u"First Frame"_s, u"7"_s, Qt::Key_unknown);
    case FolderDialogOpen:
        return m_view.press(u"Select Folder"_s) &&
               QTest::qWaitFor([this] { return m_view.drawnDialog(m_view.saveDialog()) != nullptr; });
    default:
        return false;
    }
}

void TestSaveKeys::escapeClosesWhatIsOnTop_data()
{
    QTest::addColumn<int>("what");
    QTest::addColumn<QString>("entry");
    QTest::newRow("tags") << int(TagMenuOpen) << u"Frame Number"_s;
    QTest::newRow("formats") << int(FormatsOpen) << u"TIFF"_s;
}

void TestSaveKeys::escapeClosesWhatIsOnTop()
{
    QFETCH(const int, what);
    QFETCH(const QString, entry);
    QVERIFY(m_view.startWithTake(1));
    QVERIFY(m_view.openSave());
    QVERIFY(use(what));
    QTest::keyClick(m_view.saveDialog(), Qt::Key_Escape);
    QTRY_VERIFY(!ViewFixture::element(m_view.saveDialog(), entry, QAccessible::MenuItem));
    QVERIFY(m_view.saveDialog());
    QTest::keyClick(m_view.saveDialog(), Qt::Key_Escape);
    QTRY_VERIFY(!m_view.saveDialog());
}

void TestSaveKeys::keysAreThoseOfPlaybackWhenTheDialogHasGone_data()
{
    QTest::addColumn<int>("way");
    QTest::addColumn<bool>("escape");
    QTest::newRow("button, Escape") << int(SaveFixture::Button) << true;
    QTest::newRow("button, Cancel") << int(SaveFixture::Button) << false;
    QTest::newRow("tab's menu, Escape") << int(SaveFixture::TabMenu) << true;
    QTest::newRow("file menu, Escape") << int(SaveFixture::FileMenu) << true;
    QTest::newRow("file menu, Cancel") << int(SaveFixture::FileMenu) << false;
}

void TestSaveKeys::keysAreThoseOfPlaybackWhenTheDialogHasGone()
{
    QFETCH(const int, way);
    QFETCH(const bool, escape);
    Take *take = m_view.startWithTake(1);
    QVERIFY(take);
    take->pause();
    take->setFr(3, true);
    QVERIFY(m_view.openSave(way));
    if (escape)
        QTest::keyClick(m_view.saveDialog(), Qt::Key_Escape);
    else
        QVERIFY(m_view.press(u"Cancel"_s));
    QTRY_VERIFY(!m_view.saveDialog());
    // Which a desktop does by itself.
    m_view.window()->requestActivate();
    QVERIFY(QTest::qWaitForWindowActive(m_view.window()));
    QTest::keyClick(m_view.window(), Qt::Key_Right);
    QCOMPARE(take->fr(), 4);
    QTest::keyClick(m_view.window(), Qt::Key_Space);
    QCOMPARE(take->state(), PlaybackVeskObject::Play);
}

void TestSaveKeys::takeGoesWhileTheDialogIsUsed_data()
{
    QTest::addColumn<int>("what");
    QTest::addColumn<bool>("wholeCamera");
    const QList<std::pair<QString, int>> uses = {{u"tag menu open"_s, TagMenuOpen},
                                                 {u"formats open"_s, FormatsOpen},
                                                 {u"name typed"_s, NameTyped},
                                                 {u"frame typed"_s, FrameTyped},
                                                 {u"folder dialog open"_s, FolderDialogOpen}};
    for (const auto &[name, what] : uses) {
        QTest::addRow("%s, take", qPrintable(name)) << what << false;
        QTest::addRow("%s, camera", qPrintable(name)) << what << true;
    }
}

void TestSaveKeys::takeGoesWhileTheDialogIsUsed()
{
    QFETCH(const int, what);
    QFETCH(const bool, wholeCamera);
    QVERIFY(m_view.startWithTake(1));
    QVERIFY(m_view.openSave());
    QVERIFY(use(what));
    if (wholeCamera)
        m_view.camera()->disconnectCamera();
    else
        m_view.simulated()->dropTake(1);
    QTRY_VERIFY(!m_view.saveDialog());
    QTRY_VERIFY(!m_view.drawnDialog());
    QVERIFY(SaveFixture::jobs().isEmpty());
    if (wholeCamera)
        return;
    QVERIFY(m_view.openTake(2));
    QVERIFY(m_view.openSave());
    QCOMPARE(m_view.textOf(u"Take"_s), u"2"_s);
}

/** Saves that have failed already, as their folder is not there. */
static void failSaves(Take *take, int count)
{
    for (int i = 0; i < count; ++i)
        VeskApp::instance()->saveManager()->createSaveJob(take, 0, 1, SaveManager::FileDest, Util::FormatVesk,
                                                          Util::CodecVesk, 30, 15, u"shot%1"_s.arg(i),
                                                          u"/nowhere"_s);
}

static QRectF focusedRect(const QQuickWindow *window)
{
    const QQuickItem *item = window->activeFocusItem();
    return item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
}

/** Presses a key until the buttons of so many rows had the focus; tells where the first one out of sight was.
 */
QString TestSaveKeys::walk(Qt::Key key, int rows)
{
    const auto rect = [this](const QString &name, QAccessible::Role role) {
        return m_view.element(name, role)->rect().translated(-m_view.window()->position());
    };
    const int top = rect(u"Name"_s, QAccessible::ColumnHeader).bottom() + 1;
    const int bottom = rect(u"Saves"_s, QAccessible::Table).bottom() + 1;
    QSet<QString> met;
    for (int i = 0; i < 200 && met.size() < rows; ++i) {
        QTest::keyClick(m_view.window(), key, key == Qt::Key_Backtab ? Qt::ShiftModifier : Qt::NoModifier);
        if (focusedName(m_view.window()) != u"Remove"_s)
            continue;
        // The next rows are made while this one is drawn.
        ViewFixture::settle(m_view.window());
        met.insert(focusedRow(m_view.window()));
        const QRectF button = focusedRect(m_view.window());
        if (button.top() < top || button.bottom() > bottom)
            return u"row %1 at %2"_s.arg(met.size()).arg(button.top());
    }
    return met.size() == rows ? QString() : u"only %1 rows"_s.arg(met.size());
}

void TestSaveKeys::focusedRowIsInSight()
{
    Take *take = m_view.startWithTake(1);
    QVERIFY(take);
    failSaves(take, 40);
    QVERIFY(m_view.click(u"Save progress"_s));
    QTRY_VERIFY(m_view.shows(u"Saves"_s, QAccessible::Table));
    ViewFixture::settle(m_view.window());
    QCOMPARE(walk(Qt::Key_Tab, 40), QString());
    QCOMPARE(walk(Qt::Key_Backtab, 39), QString());
}

void TestSaveKeys::focusedButtonIsInSightBehindWideColumns()
{
    Take *take = m_view.startWithTake(1);
    QVERIFY(take);
    failSaves(take, 1);
    QVERIFY(m_view.click(u"Save progress"_s));
    QTRY_VERIFY(m_view.shows(u"Name"_s, QAccessible::ColumnHeader));
    ViewFixture::settle(m_view.window());
    QAccessibleInterface *header = m_view.element(u"Name"_s, QAccessible::ColumnHeader);
    const QPoint edge = header->rect().translated(-m_view.window()->position()).topRight() + QPoint(0, 14);
    QTest::mousePress(m_view.window(), Qt::LeftButton, {}, edge);
    QTest::mouseMove(m_view.window(), edge + QPoint(200, 0));
    QTest::mouseMove(m_view.window(), edge + QPoint(400, 0));
    QTest::mouseRelease(m_view.window(), Qt::LeftButton, {}, edge + QPoint(400, 0));
    ViewFixture::settle(m_view.window());
    for (int i = 0; i < 20 && focusedName(m_view.window()) != u"Remove"_s; ++i)
        QTest::keyClick(m_view.window(), Qt::Key_Tab);
    QCOMPARE(focusedName(m_view.window()), u"Remove"_s);
    QCOMPARE_LE(focusedRect(m_view.window()).right(), double(m_view.window()->width() - 240));
}

/** Distance of the list's upper end from that of its first row, in pixels. */
static double scrolled(const ViewFixture &view)
{
    return view.element(u"Saves"_s, QAccessible::Table)->object()->property("contentY").toDouble();
}

void TestSaveKeys::listStaysWhereItIsWhenARowGoes()
{
    Take *take = m_view.startWithTake(1);
    QVERIFY(take);
    failSaves(take, 40);
    QVERIFY(m_view.click(u"Save progress"_s));
    QTRY_VERIFY(m_view.shows(u"Saves"_s, QAccessible::Table));
    QCOMPARE(walk(Qt::Key_Tab, 40), QString());
    // That of the last row.
    QPointer<QQuickItem> button = m_view.window()->activeFocusItem();
    const QRectF before = focusedRect(m_view.window());
    VeskApp::instance()->saveManager()->removeSaveJob(SaveFixture::jobs().first());
    QTRY_VERIFY(!m_view.hasRow(u"shot0.vesk"_s));
    ViewFixture::settle(m_view.window());
    QVERIFY(button);
    QCOMPARE(m_view.window()->activeFocusItem(), button);
    QCOMPARE(focusedRect(m_view.window()), before);
}

void TestSaveKeys::arrowsScrollTheList()
{
    Take *take = m_view.startWithTake(1);
    QVERIFY(take);
    failSaves(take, 40);
    QVERIFY(m_view.click(u"Save progress"_s));
    QTRY_VERIFY(m_view.shows(u"Saves"_s, QAccessible::Table));
    ViewFixture::settle(m_view.window());
    const double before = scrolled(m_view);
    for (int i = 0; i < 3; ++i)
        QTest::keyClick(m_view.window(), Qt::Key_Down);
    QCOMPARE(qRound(scrolled(m_view) - before), 3 * 48);
    for (int i = 0; i < 4; ++i)
        QTest::keyClick(m_view.window(), Qt::Key_Up);
    QCOMPARE(qRound(scrolled(m_view) - before), 0);
}

VIEW_TEST_MAIN(TestSaveKeys)
#include "tst_save_keys.moc"
