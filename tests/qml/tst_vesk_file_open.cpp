#include "app/vesk_app.h"
#include "camera/camera.h"
#include "file/vesk_file.h"
#include "sim/camera.h"
#include "sim/footage.h"
#include "tests/qml/vesk_file_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QRegularExpression>

using namespace Qt::StringLiterals;
using Recording = VeskFileFixture::Recording;

/** The way of native files into the window, and the menus that it begins in. */
class TestVeskFileOpen : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void fileMenuStandsInItsOrder_data();
    void fileMenuStandsInItsOrder();
    void openItemHasTheIconOfAFile();
    void addButtonOffersToOpen();
    void pickedFileIsOpenedAndItsFolderKept();
    void dialogAsksForNativeFilesInTheDocumentsAtFirst();
    void dismissedDialogOpensNothing();
    void dialogCanBeOpenedAgain();
    void folderThatIsGoneHindersNothing();
    void programEndsWithTheDialogOpen();
    void dialogOpenedFromATakeOpensAFile();
    void fileIsSelectedThoughACameraIs();
    void refusedFileIsToldToTheLogAlone_data();
    void refusedFileIsToldToTheLogAlone();

private:
    QObject *fileDialog() const;
    void startDialog(const QString &folder);

    VeskFileFixture m_view;
};

/** The dialog proper, null while there is none. */
QObject *TestVeskFileOpen::fileDialog() const
{
    const QObjectList objects = m_view.window()->findChildren<QObject *>();
    for (QObject *object : objects) {
        if (object->inherits("QQuickFileDialog"))
            return object;
    }
    return nullptr;
}

/** Opens it from the file menu, in a folder; empty for the one that it begins with. */
void TestVeskFileOpen::startDialog(const QString &folder)
{
    if (!folder.isEmpty())
        VeskApp::instance()->setSetting(u"open/folder"_s, folder);
    QVERIFY(!fileDialog());
    QVERIFY(m_view.click(u"File"_s));
    QVERIFY(m_view.click(u"Open VESK File..."_s));
    QTRY_VERIFY(fileDialog());
    QTRY_VERIFY(m_view.drawnDialog());
}

void TestVeskFileOpen::fileMenuStandsInItsOrder_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("entries");
    const QString start = u"Connect Camera...|Open VESK File...|-|"_s;
    QTest::newRow("no source") << int(VeskObject::UnknownType) << start + u"Exit"_s;
    QTest::newRow("camera") << int(VeskObject::CameraType)
                            << start + u"Open SSD Take...|Delete All Takes...|Disconnect|-|Exit"_s;
    QTest::newRow("take") << int(VeskObject::TakeType) << start + u"Save...|Delete...|-|Exit"_s;
    QTest::newRow("native file") << int(VeskObject::VeskFileType) << start + u"Save...|Close|-|Exit"_s;
}

void TestVeskFileOpen::fileMenuStandsInItsOrder()
{
    QFETCH(const int, type);
    if (type == VeskObject::CameraType || type == VeskObject::TakeType)
        QVERIFY(m_view.startWithCamera());
    else
        m_view.open();
    if (type == VeskObject::TakeType) {
        QCOMPARE(m_view.simulated()->makeTake({.first = 0, .last = 9}), 1);
        QVERIFY(m_view.click(u"Take 1"_s));
    }
    if (type == VeskObject::VeskFileType)
        QVERIFY(VeskFileFixture::openFile(m_view.write(u"a.vesk"_s, Recording{})));
    VeskObject *selected = VeskApp::instance()->selectedVeskObject();
    QCOMPARE(selected ? selected->type() : int(VeskObject::UnknownType), type);
    QVERIFY(m_view.click(u"File"_s));
    QVERIFY(m_view.offers(u"Exit"_s));
    QTEST(m_view.menuWith(u"Exit"_s).join(u'|'), "entries");
    QTest::keyClick(m_view.window(), Qt::Key_Escape);
}

void TestVeskFileOpen::openItemHasTheIconOfAFile()
{
    m_view.open();
    QVERIFY(m_view.click(u"File"_s));
    QVERIFY(m_view.offers(u"Open VESK File..."_s));
    auto *item =
        qobject_cast<QQuickItem *>(m_view.element(u"Open VESK File..."_s, QAccessible::MenuItem)->object());
    QVERIFY(ViewFixture::itemWithText(item, u"\uECC5"_s));
    QTest::keyClick(m_view.window(), Qt::Key_Escape);
}

void TestVeskFileOpen::addButtonOffersToOpen()
{
    m_view.open();
    QVERIFY(m_view.click(u"Add source"_s));
    QVERIFY(m_view.offers(u"Open VESK File..."_s));
    QCOMPARE(m_view.menuWith(u"Open VESK File..."_s),
             QStringList({u"Connect Camera..."_s, u"Open VESK File..."_s}));
    QVERIFY(m_view.click(u"Open VESK File..."_s));
    QTRY_VERIFY(m_view.drawnDialog());
    QVERIFY(m_view.clickInDrawn(u"Cancel"_s));
    QTRY_VERIFY(!m_view.drawnDialog());
}

void TestVeskFileOpen::pickedFileIsOpenedAndItsFolderKept()
{
    m_view.open();
    m_view.write(u"take #3 100%.vesk"_s, Recording{});
    startDialog(m_view.folder() + u"/."_s);
    QVERIFY(m_view.clickInDrawn(u"take #3 100%.vesk"_s));
    QVERIFY(m_view.clickInDrawn(u"Open"_s));
    QTRY_COMPARE(VeskApp::instance()->veskObjects().size(), 1);
    const auto *file = qobject_cast<VeskFile *>(VeskApp::instance()->selectedVeskObject());
    QVERIFY(file);
    QCOMPARE(file->fileName(), m_view.path(u"take #3 100%.vesk"_s));
    QTRY_COMPARE(m_view.rowText(u"VESK File"_s, u"File Name"_s), u"take #3 100%"_s);
    QTRY_VERIFY(!fileDialog());
    QTRY_VERIFY(!m_view.drawnDialog());
    QCOMPARE(VeskApp::instance()->setting(u"open/folder"_s).toString(), m_view.folder());
}

void TestVeskFileOpen::dialogAsksForNativeFilesInTheDocumentsAtFirst()
{
    QFile folders(qEnvironmentVariable("XDG_CONFIG_HOME") + u"/user-dirs.dirs"_s);
    QVERIFY(folders.open(QIODevice::WriteOnly));
    folders.write("XDG_DOCUMENTS_DIR=\"" + m_view.folder().toLocal8Bit() + "\"\n");
    folders.close();
    m_view.open();
    startDialog({});
    const QObject *dialog = fileDialog();
    QCOMPARE(dialog->property("title").toString(), u"Open Vesk File"_s);
    QCOMPARE(dialog->property("nameFilters").toStringList(),
             QStringList({u"VESK files (*.vesk)"_s, u"All files (*)"_s}));
    QCOMPARE(dialog->property("currentFolder").toUrl(), QUrl::fromLocalFile(m_view.folder()));
    QVERIFY(m_view.clickInDrawn(u"Cancel"_s));
    QTRY_VERIFY(!fileDialog());
    QVERIFY(folders.remove());
}

void TestVeskFileOpen::dismissedDialogOpensNothing()
{
    m_view.open();
    m_view.write(u"a.vesk"_s, Recording{});
    startDialog(m_view.folder());
    QVERIFY(m_view.clickInDrawn(u"a.vesk"_s));
    QVERIFY(m_view.clickInDrawn(u"Cancel"_s));
    QTRY_VERIFY(!fileDialog());
    QTRY_VERIFY(!m_view.drawnDialog());
    QVERIFY(VeskApp::instance()->veskObjects().isEmpty());
    QCOMPARE(VeskApp::instance()->setting(u"open/folder"_s).toString(), m_view.folder());
}

void TestVeskFileOpen::dialogCanBeOpenedAgain()
{
    m_view.open();
    m_view.write(u"a.vesk"_s, Recording{});
    for (int count = 1; count <= 2; ++count) {
        startDialog(m_view.folder());
        QVERIFY(m_view.clickInDrawn(u"a.vesk"_s));
        QVERIFY(m_view.clickInDrawn(u"Open"_s));
        QTRY_COMPARE(VeskApp::instance()->veskObjects().size(), count);
        QTRY_VERIFY(!fileDialog());
    }
}

void TestVeskFileOpen::folderThatIsGoneHindersNothing()
{
    m_view.open();
    startDialog(m_view.folder() + u"/gone"_s);
    QVERIFY(m_view.clickInDrawn(u"Cancel"_s));
    QTRY_VERIFY(!fileDialog());
}

void TestVeskFileOpen::programEndsWithTheDialogOpen()
{
    m_view.open();
    startDialog(m_view.folder());
    m_view.close();
    QVERIFY(QGuiApplication::topLevelWindows().isEmpty());
}

/** The menu bar that the dialog came from goes when its file is shown. */
void TestVeskFileOpen::dialogOpenedFromATakeOpensAFile()
{
    QVERIFY(m_view.startWithCamera());
    QCOMPARE(m_view.simulated()->makeTake({.first = 0, .last = 9}), 1);
    QVERIFY(m_view.click(u"Take 1"_s));
    m_view.write(u"a.vesk"_s, Recording{});
    startDialog(m_view.folder());
    // The take vanishes, and with it the menu that was used.
    m_view.simulated()->dropTake(1);
    QTRY_COMPARE(VeskApp::instance()->selectedVeskObject(), m_view.camera());
    QVERIFY(m_view.clickInDrawn(u"a.vesk"_s));
    QVERIFY(m_view.clickInDrawn(u"Open"_s));
    QTRY_COMPARE(m_view.rowText(u"VESK File"_s, u"File Name"_s), u"a"_s);
}

void TestVeskFileOpen::fileIsSelectedThoughACameraIs()
{
    QVERIFY(m_view.startWithCamera());
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), m_view.camera());
    VeskFile *file = VeskFileFixture::openFile(m_view.write(u"a.vesk"_s, Recording{}));
    QVERIFY(file);
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), file);
    QTRY_VERIFY(m_view.tab(u"a.vesk"_s) && m_view.tab(u"Simulated Q4"_s));
    QVERIFY(m_view.click(u"Simulated Q4"_s));
    QTRY_VERIFY(m_view.shows(u"Black Reference"_s));
    QVERIFY(m_view.click(u"a.vesk"_s));
    file->close();
    QTRY_VERIFY(m_view.shows(u"Version 10.0"_s));
    QVERIFY(m_view.tab(u"Simulated Q4"_s));
}

void TestVeskFileOpen::refusedFileIsToldToTheLogAlone_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("line");
    const QByteArray whole = VeskFileFixture::bytes({});
    QTest::newRow("no native file") << QByteArray("hello") << u"Critical: unsupported vesk file"_s;
    QTest::newRow("of the future") << HandMade::header(3, 36, 2, 4096)
                                   << u"Critical: unsupported vesk file"_s;
    QTest::newRow("cut in its header")
        << whole.left(20) << u"Critical: [0-9A-F]+-VeskFile: json parse error: .+"_s;
    QTest::newRow("cut in its values")
        << whole.left(100) << u"Critical: [0-9A-F]+-VeskFile: json parse error: .+"_s;
}

void TestVeskFileOpen::refusedFileIsToldToTheLogAlone()
{
    QFETCH(const QByteArray, content);
    QFETCH(const QString, line);
    m_view.open();
    m_view.write(u"bad.vesk"_s, content);
    {
        const HandMade::LogLines log;
        startDialog(m_view.folder());
        QVERIFY(m_view.clickInDrawn(u"bad.vesk"_s));
        QVERIFY(m_view.clickInDrawn(u"Open"_s));
        QTRY_VERIFY(!fileDialog());
        QCOMPARE(HandMade::LogLines::lines().size(), 1);
        const QRegularExpression expected(QRegularExpression::anchoredPattern(line));
        QVERIFY2(expected.match(HandMade::LogLines::lines().first()).hasMatch(),
                 qPrintable(HandMade::LogLines::lines().first()));
    }
    QVERIFY(VeskApp::instance()->veskObjects().isEmpty());
    QVERIFY(!m_view.tab(u"bad.vesk"_s));
    QVERIFY(m_view.shows(u"Version 10.0"_s));
    // A good one opens afterwards.
    QVERIFY(VeskFileFixture::openFile(m_view.write(u"a.vesk"_s, Recording{})));
}

VIEW_TEST_MAIN(TestVeskFileOpen)
#include "tst_vesk_file_open.moc"
