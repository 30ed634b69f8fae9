#include "app/vesk_app.h"
#include "camera/vesk_value.h"
#include "file/vesk_file.h"
#include "tests/qml/vesk_file_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QColor>
#include <QFont>
#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;
using Recording = VeskFileFixture::Recording;

/** Native files in the window: their tabs, their panel, and what can be done with their frames. */
class TestVeskFileViews : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void tabStandsInTheListLikeThatOfACamera();
    void clickOnATabSelectsItsFile();
    void tabCanBeWorkedWithKeys();
    void rightClickOnATabOffersItsMenu();
    void panelTellsTheRecording();
    void modesAreToldInWords_data();
    void modesAreToldInWords();
    void modeOfTheBlackReferenceCannotBeChosen();
    void colourIsAdjustedOnlyWhereThereIsSome_data();
    void colourIsAdjustedOnlyWhereThereIsSome();
    void longNameIsCutWithATooltip();
    void nameIsNoMarkup();
    void filePlaysAndIsSteppedThrough();
    void adjustmentOfARestingFileChangesThePicture();
    void fileOpenedTwiceHasTwoTabs();
    void closingAnotherFileKeepsTheView();
    void fileOfOneFrameIsShown();
    void fileOfTheCommandLineIsShown();
    void foldedSectionStaysFoldedForTheNextFile();

private:
    QColor colorOf(const QQuickItem *item) const { return item->property("color").value<QColor>(); }
    static QImage picture(const VeskFile *file) { return file->imgFrame()->image().copy(); }

    VeskFileFixture m_view;
};

void TestVeskFileViews::tabStandsInTheListLikeThatOfACamera()
{
    QVERIFY(m_view.start());
    QQuickItem *tab = m_view.tab(u"a.vesk"_s);
    QVERIFY(tab);
    // The list is 239 wide: 240 of the bar, less its rule.
    QCOMPARE(tab->size(), QSizeF(239 - 16, 50));
    const QAccessibleInterface *button = m_view.element(u"Add source"_s);
    QCOMPARE(tab->mapToScene({0, 0}).y(),
             m_view.window()->mapFromGlobal(button->rect().bottomLeft()).y() + 11);
    QCOMPARE(colorOf(tab), QColor("#262626"));
    const auto *border = tab->property("border").value<QObject *>();
    QCOMPARE(border->property("width").toInt(), 2);
    QCOMPARE(border->property("color").value<QColor>(), QColor("#D25F15"));
    const QQuickItem *icon = ViewFixture::itemWithText(tab, u"\uECC5"_s);
    QVERIFY(icon);
    QCOMPARE(icon->size(), QSizeF(50, 50));
    QCOMPARE(icon->property("font").value<QFont>().pixelSize(), 24);
    QCOMPARE(colorOf(icon), QColor("white"));
    QCOMPARE(colorOf(ViewFixture::itemWithText(tab, u"a.vesk"_s)), QColor("white"));
}

void TestVeskFileViews::clickOnATabSelectsItsFile()
{
    VeskFile *first = m_view.start();
    VeskFile *second = VeskFileFixture::openFile(m_view.write(u"b.vesk"_s, Recording{.lastFr = 5}));
    QVERIFY(first && second);
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), second);
    QTRY_VERIFY(m_view.tab(u"b.vesk"_s));
    const auto *border = m_view.tab(u"b.vesk"_s)->property("border").value<QObject *>();
    QVERIFY(m_view.click(u"a.vesk"_s));
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), first);
    QTRY_COMPARE(m_view.rowText(u"VESK File"_s, u"File Name"_s), u"a"_s);
    QVERIFY(m_view.element(u"a.vesk"_s, QAccessible::PageTab)->state().selected);
    QVERIFY(!m_view.element(u"b.vesk"_s, QAccessible::PageTab)->state().selected);
    QCOMPARE(border->property("color").value<QColor>(), QColor("#212121"));
    // 8 below the box of the first one.
    ViewFixture::settle(m_view.window());
    QCOMPARE(m_view.tab(u"b.vesk"_s)->mapToScene({0, 0}).y(),
             m_view.tab(u"a.vesk"_s)->mapToScene({0, 0}).y() + 58);
}

void TestVeskFileViews::tabCanBeWorkedWithKeys()
{
    VeskFile *first = m_view.start();
    QVERIFY(VeskFileFixture::openFile(m_view.write(u"b.vesk"_s, Recording{})));
    m_view.tab(u"a.vesk"_s)->forceActiveFocus(Qt::TabFocusReason);
    QTest::keyClick(m_view.window(), Qt::Key_Return);
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), first);
}

void TestVeskFileViews::rightClickOnATabOffersItsMenu()
{
    QVERIFY(m_view.start());
    QVERIFY(m_view.click(u"a.vesk"_s, Qt::RightButton));
    m_view.checkTabMenu();
}

void TestVeskFileViews::panelTellsTheRecording()
{
    QVERIFY(m_view.start({.lens = {{u"mount"_s, u"EF"_s}, {u"name"_s, u"50mm"_s}}}));
    const QString section = u"VESK File"_s;
    QCOMPARE(m_view.rowText(section, u"File Name"_s), u"a"_s);
    QCOMPARE(m_view.rowText(section, u"Resolution"_s), u"64x48"_s);
    QCOMPARE(m_view.rowText(section, u"Frame Rate"_s), u"1000 fps"_s);
    QCOMPARE(m_view.rowText(section, u"Exposure Time"_s), u"499.88 µs"_s);
    QCOMPARE(m_view.rowText(section, u"Frame Sync Mode"_s), u"Internal"_s);
    QCOMPARE(m_view.rowText(section, u"Black Ref Mode"_s), u"Normal"_s);
    QCOMPARE(m_view.rowText(u"Camera"_s, u"Name"_s), u"Lab 7"_s);
    QCOMPARE(m_view.rowText(u"Camera"_s, u"Serial"_s), u"Q4-00012"_s);
    QCOMPARE(m_view.rowText(u"Camera"_s, u"Model"_s), u"Q4"_s);
    QCOMPARE(m_view.rowText(u"Camera"_s, u"Firmware Version"_s), u"3.2.1"_s);
    QCOMPARE(m_view.rowText(u"Lens Info"_s, u"Mount"_s), u"EF"_s);
    QCOMPARE(m_view.rowText(u"Lens Info"_s, u"Name"_s), u"50mm"_s);
    QVERIFY(!m_view.shows(u"Take"_s));
    QVERIFY(!m_view.shows(u"Delete..."_s));
}

void TestVeskFileViews::modesAreToldInWords_data()
{
    QTest::addColumn<int>("fsyncMode");
    QTest::addColumn<int>("corrMode");
    QTest::addColumn<QString>("sync");
    QTest::addColumn<QString>("bref");
    QTest::newRow("internal, normal") << 0 << 0 << u"Internal"_s << u"Normal"_s;
    QTest::newRow("external, advanced") << 1 << 1 << u"External"_s << u"Advanced"_s;
    QTest::newRow("another mode, other bits") << 3 << 6 << u"External"_s << u"Normal"_s;
    QTest::newRow("advanced among other bits") << 0 << 7 << u"Internal"_s << u"Advanced"_s;
}

void TestVeskFileViews::modesAreToldInWords()
{
    QFETCH(const int, fsyncMode);
    QFETCH(const int, corrMode);
    QVERIFY(m_view.start({.fsyncMode = fsyncMode, .corrMode = corrMode}));
    QTEST(m_view.rowText(u"VESK File"_s, u"Frame Sync Mode"_s), "sync");
    QTEST(m_view.rowText(u"VESK File"_s, u"Black Ref Mode"_s), "bref");
}

void TestVeskFileViews::modeOfTheBlackReferenceCannotBeChosen()
{
    QVERIFY(m_view.start());
    QVERIFY(m_view.inSection(u"VESK File"_s, u"Black Ref Mode"_s, QAccessible::StaticText));
    QVERIFY(!m_view.inSection(u"VESK File"_s, u"Black Ref Mode"_s, QAccessible::ComboBox));
}

void TestVeskFileViews::colourIsAdjustedOnlyWhereThereIsSome_data()
{
    QTest::addColumn<int>("cfa");
    QTest::addColumn<bool>("shown");
    QTest::newRow("monochrome") << 0 << false;
    QTest::newRow("colour") << 1 << true;
}

void TestVeskFileViews::colourIsAdjustedOnlyWhereThereIsSome()
{
    QFETCH(const int, cfa);
    QVERIFY(m_view.start({.cfa = cfa}));
    QVERIFY(m_view.shows(u"Image Adjustments"_s));
    QTEST(m_view.shows(u"Color Adjustments"_s), "shown");
}

void TestVeskFileViews::longNameIsCutWithATooltip()
{
    m_view.open();
    const QString name = QString(100, u'n');
    QVERIFY(VeskFileFixture::openFile(m_view.write(name + u".vesk"_s, Recording{})));
    QTRY_COMPARE(m_view.rowText(u"VESK File"_s, u"File Name"_s), name);
    const QAccessibleInterface *row =
        m_view.inSection(u"VESK File"_s, u"File Name"_s, QAccessible::StaticText);
    QVERIFY(row->object()->property("truncated").toBool());
    ViewFixture::settle(m_view.window());
    QTest::mouseMove(m_view.window(), m_view.window()->mapFromGlobal(row->rect().center()));
    QTRY_VERIFY(m_view.showsTooltip(name));
    QTest::mouseMove(m_view.window(), QPoint(640, 300));
    QTRY_VERIFY(!m_view.showsTooltip(name));

    QTRY_VERIFY(m_view.tab(name + u".vesk"_s));
    const QQuickItem *label = ViewFixture::itemWithText(m_view.tab(name + u".vesk"_s), name + u".vesk"_s);
    QVERIFY(label->property("truncated").toBool());
    QTest::mouseMove(m_view.window(), label->mapToScene(label->boundingRect().center()).toPoint());
    QTRY_VERIFY(m_view.showsTooltip(name + u".vesk"_s));
}

void TestVeskFileViews::nameIsNoMarkup()
{
    m_view.open();
    const QString name = u"<b>1<b> #2%20 &amp.x"_s;
    QVERIFY(VeskFileFixture::openFile(m_view.write(name + u".vesk"_s, Recording{})));
    QTRY_COMPARE(m_view.rowText(u"VESK File"_s, u"File Name"_s), name);
    QTRY_VERIFY(m_view.tab(name + u".vesk"_s));
}

void TestVeskFileViews::filePlaysAndIsSteppedThrough()
{
    const VeskFile *file = m_view.start();
    QVERIFY(file);
    QCOMPARE(file->state(), PlaybackVeskObject::Play);
    const qlonglong early = file->fr();
    QTRY_VERIFY(file->fr() > early + 3);
    QTest::keyClick(m_view.window(), Qt::Key_Space);
    QCOMPARE(file->state(), PlaybackVeskObject::Paused);
    QTest::keyClick(m_view.window(), Qt::Key_Left);
    const qlonglong at = file->fr();
    const QImage before = picture(file);
    const QString time = file->timestamp();
    QTest::keyClick(m_view.window(), Qt::Key_Right);
    QCOMPARE(file->fr(), at == 29 ? -20 : at + 1);
    QTRY_VERIFY(picture(file) != before);
    QVERIFY(file->timestamp() != time);
    QTRY_COMPARE(m_view.rowText(u"Time of the frame"_s), file->timestamp());
    QTest::keyClick(m_view.window(), Qt::Key_Left);
    QTRY_COMPARE(picture(file), before);
    QVERIFY(m_view.click(u"Play"_s));
    QCOMPARE(file->state(), PlaybackVeskObject::Play);
}

void TestVeskFileViews::adjustmentOfARestingFileChangesThePicture()
{
    VeskFile *file = m_view.start();
    QVERIFY(file);
    file->pause();
    file->setFr(0);
    ViewFixture::settle(m_view.window());
    const QImage before = picture(file);
    const qlonglong at = file->fr();
    QVERIFY(m_view.type(u"Image Adjustments"_s, u"Gain"_s, u"2"_s));
    QTRY_COMPARE(file->imgAdjModel()->gain()->variant().toDouble(), 2.0);
    QTRY_VERIFY(picture(file) != before);
    QVERIFY(picture(file).pixelColor(20, 20).green() > before.pixelColor(20, 20).green());
    QCOMPARE(file->fr(), at);
    QVERIFY(m_view.type(u"Image Adjustments"_s, u"Gain"_s, u"1"_s));
    QTRY_COMPARE(picture(file), before);
}

void TestVeskFileViews::fileOpenedTwiceHasTwoTabs()
{
    QPointer<VeskFile> first = m_view.start();
    VeskFile *second = VeskFileFixture::openFile(m_view.path(u"a.vesk"_s));
    QVERIFY(first && second && first != second);
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), second);
    const QAccessibleInterface *list = m_view.element(u"Sources"_s, QAccessible::PageTabList);
    const auto tabs = [list] {
        int found = 0;
        const QList<QQuickItem *> items =
            list->object()->property("contentItem").value<QQuickItem *>()->childItems();
        for (QQuickItem *item : items)
            found += ViewFixture::itemWithText(item, u"a.vesk"_s) != nullptr;
        return found;
    };
    QTRY_COMPARE(tabs(), 2);
    // What is adjusted in the one is not in the other.
    first->imgAdjModel()->gain()->setValue(3.0, false);
    QCOMPARE(second->imgAdjModel()->gain()->variant().toDouble(), 1.0);
    second->close();
    QTRY_COMPARE(tabs(), 1);
    QVERIFY(first);
}

void TestVeskFileViews::closingAnotherFileKeepsTheView()
{
    const VeskFile *first = m_view.start();
    QPointer<VeskFile> second = VeskFileFixture::openFile(m_view.write(u"b.vesk"_s, Recording{}));
    QVERIFY(first && second);
    QVERIFY(m_view.click(u"a.vesk"_s));
    QVERIFY(m_view.click(u"b.vesk"_s, Qt::RightButton));
    QVERIFY(m_view.click(u"Close"_s));
    QTRY_VERIFY(!second);
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), first);
    QCOMPARE(m_view.rowText(u"VESK File"_s, u"File Name"_s), u"a"_s);
    QTRY_VERIFY(!m_view.tab(u"b.vesk"_s));
}

void TestVeskFileViews::fileOfOneFrameIsShown()
{
    const VeskFile *file = m_view.start({.firstFr = 7, .lastFr = 7});
    QVERIFY(file);
    QCOMPARE(file->fr(), 7);
    QTest::keyClick(m_view.window(), Qt::Key_Right);
    QCOMPARE(file->fr(), 7);
}

void TestVeskFileViews::fileOfTheCommandLineIsShown()
{
    // That one is opened before there is a window.
    const VeskFile *file = VeskFileFixture::openFile(m_view.write(u"a.vesk"_s, Recording{}));
    QVERIFY(file);
    m_view.open();
    QTRY_COMPARE(m_view.rowText(u"VESK File"_s, u"File Name"_s), u"a"_s);
    QTRY_VERIFY(!file->imgFrame()->image().isNull());
    QTRY_VERIFY(m_view.tab(u"a.vesk"_s));
    QVERIFY(m_view.element(u"a.vesk"_s, QAccessible::PageTab)->state().selected);
}

void TestVeskFileViews::foldedSectionStaysFoldedForTheNextFile()
{
    QVERIFY(m_view.start());
    QVERIFY(m_view.click(u"VESK File"_s));
    QTRY_VERIFY(!m_view.inSection(u"VESK File"_s, u"Resolution"_s));
    QVERIFY(VeskFileFixture::openFile(m_view.write(u"b.vesk"_s, Recording{})));
    QTRY_VERIFY(m_view.inSection(u"Camera"_s, u"Serial"_s));
    QVERIFY(!m_view.inSection(u"VESK File"_s, u"Resolution"_s));
    QCOMPARE(VeskApp::instance()->setting(u"playback/main_pane_expanded"_s).toBool(), false);
}

VIEW_TEST_MAIN(TestVeskFileViews)
#include "tst_vesk_file_views.moc"
