#include "camera/camera.h"
#include "sim/camera.h"
#include "take/ssd_ls_sort_proxy_model.h"
#include "take/ssd_take.h"
#include "tests/qml/drive_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QColor>
#include <QKeySequence>
#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

/** The window that lists what a camera's drive holds. */
class TestDriveListing : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void listingOpensFrom_data();
    void listingOpensFrom();
    void listingIsOfferedWhileTheDriveIsReady();
    void oldFirmwareTellsNamesAlone();
    void titlesSort_data();
    void titlesSort();
    void titlesCanBeWorkedWithKeys();
    void clickSelectsOne();
    void nothingIsOpenedWithoutASelection();
    void recordingOpensBy_data();
    void recordingOpensBy();
    void keysEndAtTheEndsOfTheList();
    void keysKeepTheRowInSight();
    void listingIsMadeAnewEachTime();
    void keysBeginAnewWithANewList();
    void emptyDriveHasAnEmptyList();
    void cancelOnlyCloses();
    void listingGoesWithItsCamera();
    void recordingThatIsGoneOpensNothing();

private:
    bool openEnabled() const;

    DriveFixture m_view;
};

bool TestDriveListing::openEnabled() const
{
    return !m_view.inListing(u"Open"_s, QAccessible::Button)->state().disabled;
}

void TestDriveListing::listingOpensFrom_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("panel") << int(DriveFixture::PanelButton);
    QTest::newRow("camera's tab") << int(DriveFixture::CameraTabMenu);
    QTest::newRow("file menu") << int(DriveFixture::CameraFileMenu);
}

void TestDriveListing::listingOpensFrom()
{
    QFETCH(const int, way);
    q4sim::Camera *simulated = m_view.startWithDrive(DriveFixture::fourRecordings());
    QVERIFY(simulated);
    QVERIFY(m_view.openListing(DriveFixture::Listing(way), 4));
    QCOMPARE(ViewFixture::bodies(*simulated, "POST", u"/ssd-ls"_s).size(), 1);
    QCOMPARE(m_view.names(),
             QStringList({u"alpha.vesk"_s, u"Bravo.vesk"_s, u"Charlie.vesk"_s, u"delta.vesk"_s}));
    QVERIFY(!m_view.listing()->modality());
}

void TestDriveListing::listingIsOfferedWhileTheDriveIsReady()
{
    q4sim::Camera *simulated = m_view.startWithDrive();
    QVERIFY(simulated);
    simulated->forceValue(u"ssd/state"_s, 6);
    QTRY_COMPARE(m_view.rowText(u"SSD"_s, u"State"_s), u"Ejected"_s);
    QVERIFY(m_view.inSection(u"SSD"_s, u"Open SSD Take"_s, QAccessible::Button)->state().disabled);
    const QString entry = u"Open SSD Take..."_s;
    QVERIFY(m_view.click(u"Simulated Q4"_s, Qt::RightButton));
    QVERIFY(m_view.offers(entry));
    QVERIFY(m_view.element(entry, QAccessible::MenuItem)->state().disabled);
    QCOMPARE(m_view.menuWith(entry), QStringList({entry, u"Delete All Takes..."_s, u"Disconnect"_s}));
    QTest::keyClick(m_view.window(), Qt::Key_Escape);
    QTRY_VERIFY(!m_view.shows(entry));
    QVERIFY(m_view.click(u"File"_s));
    QVERIFY(m_view.offers(entry));
    QVERIFY(m_view.element(entry, QAccessible::MenuItem)->state().disabled);
    QCOMPARE(m_view.menuWith(entry),
             QStringList({u"Connect Camera..."_s, u"Open VESK File..."_s, u"-"_s, entry,
                          u"Delete All Takes..."_s, u"Disconnect"_s, u"-"_s, u"Exit"_s}));
    simulated->forceValue(u"ssd/state"_s, 3);
    QTRY_VERIFY(!m_view.element(entry, QAccessible::MenuItem)->state().disabled);
    QTest::keyClick(m_view.window(), Qt::Key_Escape);
}

void TestDriveListing::oldFirmwareTellsNamesAlone()
{
    q4sim::Config config = DriveFixture::fourRecordings();
    config.firmware = q4sim::Firmware::Old;
    QVERIFY(m_view.startWithDrive(config));
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    for (const QString &name : m_view.names())
        QCOMPARE(m_view.inListing(name, QAccessible::ListItem)->text(QAccessible::Description), QString());
    QVERIFY(m_view.pressInListing(u"Size"_s, QAccessible::ColumnHeader));
    QTRY_COMPARE(m_view.names(),
                 QStringList({u"alpha.vesk"_s, u"Bravo.vesk"_s, u"Charlie.vesk"_s, u"delta.vesk"_s}));
}

void TestDriveListing::titlesSort_data()
{
    QTest::addColumn<QStringList>("titles");
    QTest::addColumn<QString>("order");
    QTest::newRow("name again") << QStringList{u"Name"_s} << u"dcba"_s;
    QTest::newRow("name twice") << QStringList{u"Name"_s, u"Name"_s} << u"abcd"_s;
    QTest::newRow("date") << QStringList{u"Date"_s} << u"cabd"_s;
    QTest::newRow("date twice") << QStringList{u"Date"_s, u"Date"_s} << u"bdac"_s;
    QTest::newRow("size") << QStringList{u"Size"_s} << u"cbda"_s;
    QTest::newRow("size twice") << QStringList{u"Size"_s, u"Size"_s} << u"abdc"_s;
    QTest::newRow("name after size") << QStringList{u"Size"_s, u"Name"_s} << u"abcd"_s;
    QTest::newRow("date after all") << QStringList{u"Date"_s, u"Size"_s, u"Date"_s} << u"cabd"_s;
}

void TestDriveListing::titlesSort()
{
    QFETCH(const QStringList, titles);
    QVERIFY(m_view.startWithDrive(DriveFixture::fourRecordings()));
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    for (const QString &title : titles)
        QVERIFY(m_view.pressInListing(title, QAccessible::ColumnHeader));
    const auto initials = [this] {
        QString text;
        for (const QString &name : m_view.names())
            text += name.at(0).toLower();
        return text;
    };
    ViewFixture::settle(m_view.listing());
    QTEST(initials(), "order");
}

void TestDriveListing::titlesCanBeWorkedWithKeys()
{
    QVERIFY(m_view.startWithDrive(DriveFixture::fourRecordings()));
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return}) {
        auto *title =
            qobject_cast<QQuickItem *>(m_view.inListing(u"Name"_s, QAccessible::ColumnHeader)->object());
        title->forceActiveFocus(Qt::TabFocusReason);
        const QString first = m_view.names().first();
        QTest::keyClick(m_view.listing(), key);
        QTRY_COMPARE(m_view.names().last(), first);
    }
    QVERIFY(m_view.listing());
}

void TestDriveListing::clickSelectsOne()
{
    QVERIFY(m_view.startWithDrive(DriveFixture::fourRecordings()));
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    QVERIFY(m_view.pressInListing(u"alpha.vesk"_s, QAccessible::ListItem));
    QVERIFY(m_view.isSelected(u"alpha.vesk"_s));
    QCOMPARE(m_view.row(u"alpha.vesk"_s)->property("color").value<QColor>(), QColor("#D25F15"));
    QVERIFY(m_view.pressInListing(u"delta.vesk"_s, QAccessible::ListItem));
    QVERIFY(m_view.isSelected(u"delta.vesk"_s));
    QVERIFY(!m_view.isSelected(u"alpha.vesk"_s));
    QTest::mouseMove(
        m_view.listing(),
        ViewFixture::centre(m_view.listing(), m_view.inListing(u"Bravo.vesk"_s, QAccessible::ListItem)));
    QTRY_COMPARE(m_view.row(u"Bravo.vesk"_s)->property("color").value<QColor>(), QColor("#262626"));
}

void TestDriveListing::nothingIsOpenedWithoutASelection()
{
    q4sim::Camera *simulated = m_view.startWithDrive(DriveFixture::fourRecordings());
    QVERIFY(simulated);
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    QVERIFY(!openEnabled());
    QTest::keyClick(m_view.listing(), Qt::Key_Return);
    QVERIFY(m_view.waitForPolls(1));
    QVERIFY(m_view.listing());
    QCOMPARE(ViewFixture::bodies(*simulated, "POST", u"/ssd-fopen"_s), QByteArrayList());
    QVERIFY(m_view.pressInListing(u"alpha.vesk"_s, QAccessible::ListItem));
    QTRY_VERIFY(openEnabled());
}

void TestDriveListing::recordingOpensBy_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("button") << 0;
    QTest::newRow("double click") << 1;
    QTest::newRow("keys") << 2;
}

void TestDriveListing::recordingOpensBy()
{
    QFETCH(const int, way);
    q4sim::Camera *simulated = m_view.startWithDrive(DriveFixture::fourRecordings());
    QVERIFY(simulated);
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    if (way == 0) {
        QVERIFY(m_view.pressInListing(u"Charlie.vesk"_s, QAccessible::ListItem));
        QVERIFY(m_view.pressInListing(u"Open"_s));
    } else if (way == 1) {
        QVERIFY(m_view.doubleClickRow(u"Charlie.vesk"_s));
    } else {
        for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Return})
            QTest::keyClick(m_view.listing(), key);
    }
    QTRY_VERIFY(!m_view.listing());
    QTRY_VERIFY(DriveFixture::selectedRecording());
    QCOMPARE(ViewFixture::bodies(*simulated, "POST", u"/ssd-fopen"_s),
             QByteArrayList{R"({"name":"Charlie.vesk"})"});
    QCOMPARE(DriveFixture::selectedRecording()->name(), u"Charlie.vesk"_s);
    QTRY_VERIFY(m_view.tabOf(u"Charlie.vesk"_s));
}

void TestDriveListing::keysEndAtTheEndsOfTheList()
{
    QVERIFY(m_view.startWithDrive(DriveFixture::fourRecordings()));
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    const QString first = u"alpha.vesk"_s;
    const QString last = u"delta.vesk"_s;
    const std::pair<Qt::Key, QString> steps[] = {
        {Qt::Key_Up, first},     {Qt::Key_Up, first},      {Qt::Key_End, last},  {Qt::Key_Down, last},
        {Qt::Key_PageUp, first}, {Qt::Key_PageDown, last}, {Qt::Key_Home, first}};
    for (const auto &[key, selected] : steps) {
        QTest::keyClick(m_view.listing(), key);
        QVERIFY2(m_view.isSelected(selected), qPrintable(QKeySequence(key).toString()));
    }
}

/** Neither under the titles nor below the window. */
void TestDriveListing::keysKeepTheRowInSight()
{
    q4sim::Config config;
    config.recordings = {};
    for (int i = 0; i < 100; ++i)
        config.recordings.append({u"r%1.vesk"_s.arg(i, 3, 10, '0'_L1),
                                  1735732800 + i,
                                  {.first = 0, .last = 9, .triggerNs = 1735732000000000000}});
    QVERIFY(m_view.startWithDrive(config));
    QVERIFY(m_view.clickIn(u"SSD"_s, u"Open SSD Take"_s));
    QTRY_COMPARE(m_view.camera()->ssdLsEntries()->rowCount(), 100);
    QTRY_VERIFY(m_view.listing() && m_view.row(u"r000.vesk"_s));
    QVERIFY(QTest::qWaitForWindowActive(m_view.listing()));
    const auto inSight = [this](int number) {
        const QString name = u"r%1.vesk"_s.arg(number, 3, 10, '0'_L1);
        ViewFixture::settle(m_view.listing());
        const auto item = [this](const QString &element, QAccessible::Role role) {
            return qobject_cast<QQuickItem *>(m_view.inListing(element, role)->object());
        };
        auto *row = item(u"Recordings"_s, QAccessible::List)->property("currentItem").value<QQuickItem *>();
        const QQuickItem *title = item(u"Name"_s, QAccessible::ColumnHeader);
        const auto *told = QAccessible::queryAccessibleInterface(row);
        if (!told || !told->state().selected || told->text(QAccessible::Name) != name)
            return false;
        const qreal top = row->mapToScene({0, 0}).y();
        const qreal titles = title->mapToScene({0, 28}).y();
        // The box ends above the buttons, which are 40 high.
        return top >= titles && top + 20 <= m_view.listing()->height() - 40;
    };
    QTest::keyClick(m_view.listing(), Qt::Key_End);
    QTRY_VERIFY(inSight(99));
    for (int number = 98; number >= 60; --number) {
        QTest::keyClick(m_view.listing(), Qt::Key_Up);
        QTRY_VERIFY2(inSight(number), qPrintable(QString::number(number)));
    }
    QTest::keyClick(m_view.listing(), Qt::Key_Home);
    QTRY_VERIFY(inSight(0));
    for (int number = 1; number <= 40; ++number) {
        QTest::keyClick(m_view.listing(), Qt::Key_Down);
        QTRY_VERIFY2(inSight(number), qPrintable(QString::number(number)));
    }
}

void TestDriveListing::keysBeginAnewWithANewList()
{
    QVERIFY(m_view.startWithDrive(DriveFixture::fourRecordings()));
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    QTest::keyClick(m_view.listing(), Qt::Key_End);
    QVERIFY(m_view.isSelected(u"delta.vesk"_s));
    m_view.camera()->ssdLs();
    QTRY_VERIFY(!m_view.isSelected(u"delta.vesk"_s) && m_view.names().size() == 4);
    QTest::keyClick(m_view.listing(), Qt::Key_Down);
    QVERIFY(m_view.isSelected(u"alpha.vesk"_s));
}

void TestDriveListing::listingIsMadeAnewEachTime()
{
    q4sim::Camera *simulated = m_view.startWithDrive(DriveFixture::fourRecordings());
    QVERIFY(simulated);
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    QVERIFY(m_view.pressInListing(u"alpha.vesk"_s, QAccessible::ListItem));
    QVERIFY(m_view.pressInListing(u"Cancel"_s));
    QTRY_VERIFY(!m_view.listing());
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "POST", u"/ssd-ls"_s).size(), 2);
    QTRY_VERIFY(!m_view.isSelected(u"alpha.vesk"_s));
    QVERIFY(!openEnabled());
}

void TestDriveListing::emptyDriveHasAnEmptyList()
{
    q4sim::Config config;
    config.recordings = {};
    QVERIFY(m_view.startWithDrive(config));
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 0));
    QTest::keyClick(m_view.listing(), Qt::Key_Down);
    QTest::keyClick(m_view.listing(), Qt::Key_Return);
    QVERIFY(!openEnabled());
}

void TestDriveListing::cancelOnlyCloses()
{
    q4sim::Camera *simulated = m_view.startWithDrive(DriveFixture::fourRecordings());
    QVERIFY(simulated);
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    QVERIFY(m_view.pressInListing(u"alpha.vesk"_s, QAccessible::ListItem));
    QVERIFY(m_view.pressInListing(u"Cancel"_s));
    QTRY_VERIFY(!m_view.listing());
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(ViewFixture::bodies(*simulated, "POST", u"/ssd-fopen"_s), QByteArrayList());
}

void TestDriveListing::listingGoesWithItsCamera()
{
    QVERIFY(m_view.startWithDrive(DriveFixture::fourRecordings()));
    QVERIFY(m_view.openListing(DriveFixture::CameraTabMenu, 4));
    m_view.camera()->disconnectCamera();
    QTRY_VERIFY(!m_view.listing());
}

void TestDriveListing::recordingThatIsGoneOpensNothing()
{
    q4sim::Camera *simulated = m_view.startWithDrive(DriveFixture::fourRecordings());
    QVERIFY(simulated);
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    QCOMPARE(simulated->operate({{u"ssd"_s, u"insert-blank"_s}}), QString());
    QVERIFY(m_view.doubleClickRow(u"alpha.vesk"_s));
    QTRY_VERIFY(!m_view.listing());
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "POST", u"/ssd-fopen"_s).size(), 1);
    QVERIFY(m_view.waitForPolls(2));
    QVERIFY(!DriveFixture::selectedRecording());
    QVERIFY(!m_view.tabOf(u"alpha.vesk"_s));
}

VIEW_TEST_MAIN(TestDriveListing)
#include "tst_drive_listing.moc"
