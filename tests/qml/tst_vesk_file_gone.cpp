#include "app/vesk_app.h"
#include "file/vesk_file.h"
#include "image/img_search.h"
#include "tests/qml/playback_in_hand.h"
#include "tests/qml/vesk_file_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;
using Recording = VeskFileFixture::Recording;

/** Native files that are closed while somebody has them in hand: the view goes, and nothing is left of it. */
class TestVeskFileGone : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void fileGoesWhileItIsUsed_data();
    void fileGoesWhileItIsUsed();
    void closedByTheUser_data();
    void closedByTheUser();
    void anotherFileTakesThePlaceWhileOneIsUsed_data() { fileGoesWhileItIsUsed_data(); }
    void anotherFileTakesThePlaceWhileOneIsUsed();

private:
    enum MoreUses { IsSearched = PlaybackInHand::UseCount, TabMenuOpen, FileMenuOpen, SaveDialogOpen };
    bool use(int what);
    enum Way { FileMenu, TabMenu, TabMenuByKeys };
    bool close(int way);

    VeskFileFixture m_view;
};

/** Long enough for a search that does not end by itself while the test goes on. */
static const Recording Long{.firstFr = -20, .lastFr = 3000};

void TestVeskFileGone::fileGoesWhileItIsUsed_data()
{
    QTest::addColumn<int>("what");
    PlaybackInHand::addUses();
    QTest::newRow("is searched") << int(IsSearched);
    QTest::newRow("tab's menu open") << int(TabMenuOpen);
    QTest::newRow("file menu open") << int(FileMenuOpen);
    QTest::newRow("save dialog open") << int(SaveDialogOpen);
}

bool TestVeskFileGone::use(int what)
{
    switch (what) {
    case IsSearched: {
        auto *file = qobject_cast<VeskFile *>(VeskApp::instance()->selectedVeskObject());
        file->imgSearch()->start(true);
        return file->imgSearch()->state() == ImgSearch::Searching;
    }
    case TabMenuOpen:
        return m_view.click(u"a.vesk"_s, Qt::RightButton) && m_view.offers(u"Close"_s);
    case FileMenuOpen:
        return m_view.click(u"File"_s) && m_view.offers(u"Close"_s);
    case SaveDialogOpen:
        return m_view.clickIn(u"VESK File"_s, u"Save..."_s) &&
               QTest::qWaitFor([this] { return m_view.dialog(u"Save"_s) != nullptr; });
    default:
        return PlaybackInHand::use(m_view, what);
    }
}

void TestVeskFileGone::fileGoesWhileItIsUsed()
{
    QFETCH(const int, what);
    QPointer<VeskFile> file = m_view.start(Long);
    QVERIFY(file);
    QVERIFY(use(what));
    file->close();
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), nullptr);
    PlaybackInHand::letGo(m_view);
    QTRY_VERIFY(!file);
    QVERIFY(!m_view.tab(u"a.vesk"_s));
    QTRY_VERIFY(m_view.shows(u"Version 10.0"_s));
    QVERIFY(!m_view.shows(u"Close"_s));
    QTRY_VERIFY(!m_view.dialog(u"Save"_s));
    QVERIFY(VeskFileFixture::openFile(m_view.write(u"b.vesk"_s, Recording{})));
    QTRY_COMPARE(m_view.rowText(u"VESK File"_s, u"File Name"_s), u"b"_s);
}

bool TestVeskFileGone::close(int way)
{
    if (way == FileMenu)
        return m_view.click(u"File"_s) && m_view.click(u"Close"_s);
    if (way == TabMenu)
        return m_view.click(u"a.vesk"_s, Qt::RightButton) && m_view.click(u"Close"_s);
    m_view.tab(u"a.vesk"_s)->forceActiveFocus(Qt::TabFocusReason);
    QTest::keyClick(m_view.window(), Qt::Key_Menu);
    if (!m_view.offers(u"Close"_s))
        return false;
    const qsizetype entries = m_view.menuWith(u"Close"_s).size();
    for (qsizetype i = 0; i < entries; ++i)
        QTest::keyClick(m_view.window(), Qt::Key_Down);
    QTest::keyClick(m_view.window(), Qt::Key_Return);
    return true;
}

void TestVeskFileGone::closedByTheUser_data()
{
    QTest::addColumn<int>("way");
    QTest::addColumn<bool>("searched");
    QTest::newRow("file menu") << int(FileMenu) << false;
    QTest::newRow("tab's menu") << int(TabMenu) << false;
    QTest::newRow("tab's menu by keys") << int(TabMenuByKeys) << false;
    QTest::newRow("file menu, searched") << int(FileMenu) << true;
    QTest::newRow("tab's menu, searched") << int(TabMenu) << true;
}

void TestVeskFileGone::closedByTheUser()
{
    QFETCH(const int, way);
    QFETCH(const bool, searched);
    QPointer<VeskFile> file = m_view.start(Long);
    QVERIFY(file);
    QCOMPARE(file->state(), PlaybackVeskObject::Play);
    if (searched)
        QVERIFY(use(IsSearched));
    QVERIFY(close(way));
    QTRY_VERIFY(!file);
    QVERIFY(VeskApp::instance()->veskObjects().isEmpty());
    QTRY_VERIFY(m_view.shows(u"Version 10.0"_s));
    QVERIFY(!m_view.tab(u"a.vesk"_s));
}

void TestVeskFileGone::anotherFileTakesThePlaceWhileOneIsUsed()
{
    QFETCH(const int, what);
    QPointer<VeskFile> file = m_view.start(Long);
    QVERIFY(file);
    QVERIFY(use(what));
    QVERIFY(VeskFileFixture::openFile(m_view.write(u"b.vesk"_s, Recording{})));
    PlaybackInHand::letGo(m_view);
    file->close();
    QTRY_VERIFY(!file);
    QTRY_COMPARE(m_view.rowText(u"VESK File"_s, u"File Name"_s), u"b"_s);
    QVERIFY(m_view.tab(u"b.vesk"_s));
    QVERIFY(!m_view.tab(u"a.vesk"_s));
}

VIEW_TEST_MAIN(TestVeskFileGone)
#include "tst_vesk_file_gone.moc"
