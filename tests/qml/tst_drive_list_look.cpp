#include "camera/camera.h"
#include "sim/camera.h"
#include "tests/qml/drive_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QAccessibleActionInterface>
#include <QColor>
#include <QFont>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

/** Sizes, colours and texts of the window that lists a drive, which is there once a camera. */
class TestDriveListLook : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void listingHasItsSizes();
    void listLiesInARoundedBox();
    void rulesStandBetweenTheTitles();
    void titleUnderThePointerIsLit();
    void titleCanBePressedByAnAssistant();
    void titleShowsTheOrder();
    void rowTellsNameDateAndSize();
    void listWithoutASelectedRowTellsWhereTheKeysGo();
    void listingIsOpenOnceACamera_data();
    void listingIsOpenOnceACamera();

private:
    QQuickItem *title(const QString &name) const;
    /** What the listing shows at a place. */
    QColor colorAt(QPointF place) const;

    DriveFixture m_view;
};

QQuickItem *TestDriveListLook::title(const QString &name) const
{
    QAccessibleInterface *found = m_view.inListing(name, QAccessible::ColumnHeader);
    return found ? qobject_cast<QQuickItem *>(found->object()) : nullptr;
}

QColor TestDriveListLook::colorAt(QPointF place) const
{
    return m_view.listing()->grabWindow().pixelColor(place.toPoint());
}

void TestDriveListLook::listingHasItsSizes()
{
    QVERIFY(m_view.startWithDrive(DriveFixture::fourRecordings()));
    const QQuickWindow *window = m_view.openListing(DriveFixture::PanelButton, 4);
    QVERIFY(window);
    QCOMPARE(window->size(), QSize(512, 512));
    QCOMPARE(window->minimumSize(), QSize(512, 300));
    QVERIFY(window->maximumWidth() > 4000 && window->maximumHeight() > 4000);
    const auto title = [this](const QString &name) {
        return qobject_cast<QQuickItem *>(m_view.inListing(name, QAccessible::ColumnHeader)->object());
    };
    QCOMPARE(title(u"Date"_s)->size(), QSizeF(141, 28));
    QCOMPARE(title(u"Size"_s)->size(), QSizeF(101, 28));
    const QQuickItem *list = title(u"Name"_s)->parentItem();
    QCOMPARE(title(u"Name"_s)->width(), list->width() - 242);
    QCOMPARE(m_view.row(u"alpha.vesk"_s)->size(), QSizeF(list->width(), 20));
}

void TestDriveListLook::rowTellsNameDateAndSize()
{
    QVERIFY(m_view.startWithDrive(DriveFixture::fourRecordings()));
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    QQuickItem *row = m_view.row(u"alpha.vesk"_s);
    const QQuickItem *icon = ViewFixture::itemWithText(row, u"\uECC5"_s);
    QVERIFY(icon);
    const QString date = QDateTime::fromSecsSinceEpoch(1738411200).toString(u"yyyy-MM-dd HH:mm:ss"_s);
    QQuickItem *dateItem = ViewFixture::itemWithText(row, date);
    QVERIFY(dateItem);
    QCOMPARE(dateItem->width(), 141.0);
    const QJsonArray listed =
        QJsonDocument::fromJson(m_view.simulated()->answer("POST", u"/ssd-ls"_s, R"({"long": 1})").body)
            .object()
            .value(u"ssd-ls"_s)
            .toArray();
    QCOMPARE(listed.size(), 4);
    const qint64 bytes = listed.at(1).toObject().value(u"size"_s).toInteger();
    QVERIFY(bytes > 0);
    QQuickItem *size =
        ViewFixture::itemWithText(row, QLocale().formattedDataSize(bytes, 2, QLocale::DataSizeSIFormat));
    QVERIFY(size);
    QCOMPARE(size->width(), 101.0);
}

void TestDriveListLook::titleShowsTheOrder()
{
    QVERIFY(m_view.startWithDrive(DriveFixture::fourRecordings()));
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    const auto arrow = [this](const QString &title) {
        auto *item = qobject_cast<QQuickItem *>(m_view.inListing(title, QAccessible::ColumnHeader)->object());
        for (const QString &glyph : {u"\uEA78"_s, u"\uEA4E"_s}) {
            const QQuickItem *found = ViewFixture::itemWithText(item, glyph);
            if (found && found->property("font").value<QFont>().pixelSize() == 16)
                return glyph;
        }
        return QString();
    };
    QCOMPARE(arrow(u"Name"_s), u"\uEA78"_s);
    QCOMPARE(arrow(u"Date"_s), QString());
    QVERIFY(m_view.pressInListing(u"Name"_s, QAccessible::ColumnHeader));
    QCOMPARE(arrow(u"Name"_s), u"\uEA4E"_s);
    QVERIFY(m_view.pressInListing(u"Date"_s, QAccessible::ColumnHeader));
    QCOMPARE(arrow(u"Name"_s), QString());
    QCOMPARE(arrow(u"Date"_s), u"\uEA4E"_s);
    QVERIFY(m_view.pressInListing(u"Date"_s, QAccessible::ColumnHeader));
    QCOMPARE(arrow(u"Date"_s), u"\uEA78"_s);
}

void TestDriveListLook::listLiesInARoundedBox()
{
    QVERIFY(m_view.startWithDrive(DriveFixture::fourRecordings()));
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    const QQuickItem *box = title(u"Name"_s);
    while (box && box->property("radius").toReal() <= 0)
        box = box->parentItem();
    QVERIFY(box);
    QCOMPARE(box->property("color").value<QColor>(), QColor("#191919"));
    QCOMPARE(box->property("border").value<QObject *>()->property("color").value<QColor>(),
             QColor("#323232").darker(140));
    QCOMPARE(box->width(), m_view.listing()->width() - 20.0);
}

void TestDriveListLook::rulesStandBetweenTheTitles()
{
    QVERIFY(m_view.startWithDrive(DriveFixture::fourRecordings()));
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    for (const QString &name : {u"Date"_s, u"Size"_s}) {
        const QPointF rule = title(name)->mapToScene({0, 10});
        QCOMPARE(colorAt(rule), QColor("#323232"));
        for (const int beside : {-1, 1})
            QCOMPARE(colorAt(rule + QPointF(beside, 0)), QColor("#191919"));
    }
}

void TestDriveListLook::titleUnderThePointerIsLit()
{
    QVERIFY(m_view.startWithDrive(DriveFixture::fourRecordings()));
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    const auto shade = [this](const QString &name) {
        return title(name)->property("background").value<QQuickItem *>()->property("color").value<QColor>();
    };
    const QStringList titles{u"Name"_s, u"Date"_s, u"Size"_s};
    for (const QString &pointed : titles) {
        QTest::mouseMove(m_view.listing(), title(pointed)->mapToScene({30, 14}).toPoint());
        for (const QString &name : titles)
            QTRY_COMPARE(shade(name), name == pointed ? QColor("#262626") : QColor(Qt::transparent));
    }
}

/** As by a screen reader, which has no pointer. */
void TestDriveListLook::titleCanBePressedByAnAssistant()
{
    QVERIFY(m_view.startWithDrive(DriveFixture::fourRecordings()));
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    for (const QString &first : {u"Charlie.vesk"_s, u"alpha.vesk"_s}) {
        QAccessibleActionInterface *actions =
            m_view.inListing(u"Size"_s, QAccessible::ColumnHeader)->actionInterface();
        QVERIFY(actions);
        QVERIFY(actions->actionNames().contains(QAccessibleActionInterface::pressAction()));
        actions->doAction(QAccessibleActionInterface::pressAction());
        QTRY_COMPARE(m_view.names().first(), first);
    }
}

void TestDriveListLook::listWithoutASelectedRowTellsWhereTheKeysGo()
{
    QVERIFY(m_view.startWithDrive(DriveFixture::fourRecordings()));
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    // Below the rows, at the edge of the list and one pixel further in.
    const QPointF edge = title(u"Name"_s)->mapToScene({0, 200});
    QTRY_COMPARE(colorAt(edge), QColor("#D25F15"));
    QCOMPARE(colorAt(edge + QPointF(1, 0)), QColor("#191919"));
    QTest::keyClick(m_view.listing(), Qt::Key_Down);
    QTRY_COMPARE(colorAt(edge), QColor("#191919"));
    m_view.camera()->ssdLs();
    QTRY_COMPARE(colorAt(edge), QColor("#D25F15"));
    auto *cancel = qobject_cast<QQuickItem *>(m_view.inListing(u"Cancel"_s, QAccessible::Button)->object());
    cancel->forceActiveFocus(Qt::TabFocusReason);
    QTRY_COMPARE(colorAt(edge), QColor("#191919"));
}

void TestDriveListLook::listingIsOpenOnceACamera_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("second");
    QTest::newRow("panel, then tab") << int(DriveFixture::PanelButton) << int(DriveFixture::CameraTabMenu);
    QTest::newRow("tab, then file menu")
        << int(DriveFixture::CameraTabMenu) << int(DriveFixture::CameraFileMenu);
    QTest::newRow("file menu, then panel")
        << int(DriveFixture::CameraFileMenu) << int(DriveFixture::PanelButton);
}

void TestDriveListLook::listingIsOpenOnceACamera()
{
    QFETCH(const int, first);
    QFETCH(const int, second);
    QVERIFY(m_view.startWithDrive(DriveFixture::fourRecordings()));
    const QQuickWindow *opened = m_view.openListing(DriveFixture::Listing(first), 4);
    QVERIFY(opened);
    m_view.window()->requestActivate();
    QVERIFY(QTest::qWaitForWindowActive(m_view.window()));
    QCOMPARE(m_view.openListing(DriveFixture::Listing(second), 4), opened);
    const auto listings = [] {
        const QWindowList windows = QGuiApplication::topLevelWindows();
        return std::ranges::count_if(windows, [](const QWindow *window) {
            return window->isVisible() && window->title() == u"Open SSD Take";
        });
    };
    QCOMPARE(listings(), 1);
    QTRY_COMPARE(m_view.simulated()->requests("POST", u"/ssd-ls"_s).size(), 2);
    QVERIFY(m_view.pressInListing(u"Cancel"_s));
    QTRY_COMPARE(listings(), 0);
    QVERIFY(m_view.openListing(DriveFixture::Listing(second), 4));
    QCOMPARE(listings(), 1);
}

VIEW_TEST_MAIN(TestDriveListLook)
#include "tst_drive_list_look.moc"
