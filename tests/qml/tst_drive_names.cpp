#include "app/vesk_app.h"
#include "camera/camera.h"
#include "sim/camera.h"
#include "take/ssd_take.h"
#include "tests/qml/drive_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

static const QString Section = u"SSD Take"_s;

/** Recordings with names of all kinds: how they are asked for, and how each place of the window shows them.
 */
class TestDriveNames : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void nameIsShownWholeEverywhere_data();
    void nameIsShownWholeEverywhere();
    void cutNameIsToldUnderThePointer();
    void nameWithDoubleQuotesIsSentAsItStands();
    void longNameIsCutBeforeTheDate();
    void nameIsNoMarkup();

private:
    /** Moves the pointer onto what shows the name below an item, and waits until it is told there. */
    static bool tells(QQuickItem *parent, const QString &name);
    QQuickItem *itemOf(QAccessibleInterface *element) const
    {
        return element ? qobject_cast<QQuickItem *>(element->object()) : nullptr;
    }

    DriveFixture m_view;
};

bool TestDriveNames::tells(QQuickItem *parent, const QString &name)
{
    QQuickItem *label = parent ? ViewFixture::itemWithText(parent, name) : nullptr;
    if (!label || !label->property("truncated").toBool())
        return false;
    ViewFixture::settle(label->window());
    const QPoint middle = label->mapToScene({label->width() / 2, label->height() / 2}).toPoint();
    if (ViewFixture::showsTooltip(label->window(), name))
        return false;
    QTest::mouseMove(label->window(), middle - QPoint(3, 0));
    QTest::mouseMove(label->window(), middle);
    return QTest::qWaitFor([&] { return ViewFixture::showsTooltip(label->window(), name); });
}

void TestDriveNames::nameIsShownWholeEverywhere_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("tab");
    const auto row = [](const char *label, const QString &name, const QString &tab = {}) {
        QTest::newRow(label) << name << (tab.isEmpty() ? name : tab);
    };
    row("not Latin", u"\u6771\u4eac \u0434\u043e\u043c.vesk"_s);
    row("right to left", u"\u05e9\u05dc\u05d5\u05dd 1 \u0645\u0631\u062d\u0628\u0627.vesk"_s);
    row("quotes", u"a 'b' c.vesk"_s);
    row("blanks at both ends", u"  edge  .vesk"_s);
    row("blank behind it all", u"edge.vesk "_s);
    row("folder", u"day 1/shot.vesk"_s, u"shot.vesk"_s);
    row("placeholders", u"%1 %2 &x.vesk"_s);
    row("255 letters", QString(250, u'n') + u".vesk"_s);
    row("255 bytes", QString(83, u'\u6771') + u"a.vesk"_s);
}

void TestDriveNames::nameIsShownWholeEverywhere()
{
    QFETCH(const QString, name);
    QFETCH(const QString, tab);
    QVERIFY(name.toUtf8().size() <= 255);
    q4sim::Camera *simulated = m_view.startWithDrive(DriveFixture::oneRecording(name));
    QVERIFY(simulated);
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 1));
    QCOMPARE(m_view.names(), QStringList(name));
    QVERIFY(ViewFixture::itemWithText(m_view.row(name), name));
    QVERIFY(m_view.doubleClickRow(name));
    QTRY_VERIFY(DriveFixture::selectedRecording() && DriveFixture::selectedRecording()->valuesInit());
    QCOMPARE(ViewFixture::bodies(*simulated, "POST", u"/ssd-fopen"_s),
             QByteArrayList{"{\"name\":\"" + name.toUtf8() + "\"}"});
    QTRY_VERIFY(m_view.tabOf(tab));
    const QQuickItem *label = ViewFixture::itemWithText(m_view.tabOf(tab), tab);
    QVERIFY(label);
    QCOMPARE(label->property("truncated").toBool(), tab.size() > 40);
    QCOMPARE(m_view.rowText(Section, u"Name"_s), tab.section(u'.', 0, 0));
    QVERIFY(m_view.clickIn(Section, u"Save..."_s));
    QTRY_VERIFY(m_view.saveDialog());
    QVERIFY(QTest::qWaitForWindowActive(m_view.saveDialog()));
    QCOMPARE(m_view.textOf(u"SSD Take"_s), tab);
    QVERIFY(m_view.typeInto(u"File Name"_s, u"copy"_s));
    QVERIFY(m_view.press(u"Save"_s));
    QTRY_COMPARE(m_view.cell(u"copy.vesk"_s, u"Status"_s), u"Complete"_s);
    QCOMPARE(m_view.cell(u"copy.vesk"_s, u"Source"_s), tab);
}

void TestDriveNames::cutNameIsToldUnderThePointer()
{
    const QString name = QString(125, u'\u0434') + u".vesk"_s;
    QVERIFY(m_view.startWithDrive(DriveFixture::oneRecording(name)));
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 1));
    QVERIFY(tells(m_view.row(name), name));
    QVERIFY(m_view.doubleClickRow(name));
    QTRY_VERIFY(DriveFixture::selectedRecording() && m_view.tabOf(name));
    QVERIFY(tells(m_view.tabOf(name), name));
    QVERIFY(m_view.clickIn(Section, u"Save..."_s));
    QTRY_VERIFY(m_view.saveDialog());
    QVERIFY(QTest::qWaitForWindowActive(m_view.saveDialog()));
    QVERIFY(tells(m_view.saveDialog()->contentItem(), name));
    QVERIFY(m_view.typeInto(u"File Name"_s, u"copy"_s));
    QVERIFY(m_view.press(u"Save"_s));
    QTRY_COMPARE(m_view.cell(u"copy.vesk"_s, u"Status"_s), u"Complete"_s);
    QVERIFY(tells(itemOf(m_view.element(u"copy.vesk"_s, QAccessible::Row)), name));
}

/** What the camera then makes of it is no JSON to it, and nothing is opened. */
void TestDriveNames::nameWithDoubleQuotesIsSentAsItStands()
{
    const QString name = u"a \"b\".vesk"_s;
    q4sim::Config config = DriveFixture::fourRecordings();
    config.recordings[0].name = name;
    q4sim::Camera *simulated = m_view.startWithDrive(config);
    QVERIFY(simulated);
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    QVERIFY(m_view.names().contains(name));
    QVERIFY(ViewFixture::itemWithText(m_view.row(name), name));
    QTest::ignoreMessage(QtDebugMsg, "fopenFinished error");
    QVERIFY(m_view.doubleClickRow(name));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "POST", u"/ssd-fopen"_s),
                 QByteArrayList{R"({"name":"a "b".vesk"})"});
    QTRY_VERIFY(!m_view.listing());
    QVERIFY(m_view.waitForPolls(2));
    QVERIFY(!DriveFixture::selectedRecording());
    QVERIFY(!m_view.tabOf(name));
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 4));
    QVERIFY(m_view.doubleClickRow(u"alpha.vesk"_s));
    QTRY_VERIFY(m_view.tabOf(u"alpha.vesk"_s));
}

void TestDriveNames::longNameIsCutBeforeTheDate()
{
    const QString name = QString(250, u'n') + u".vesk"_s;
    QVERIFY(m_view.startWithDrive(DriveFixture::oneRecording(name)));
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 1));
    const QQuickItem *label = ViewFixture::itemWithText(m_view.row(name), name);
    QVERIFY(label);
    QVERIFY(label->property("truncated").toBool());
    QVERIFY(label->x() + label->width() <= m_view.row(name)->width() - 242);
}

void TestDriveNames::nameIsNoMarkup()
{
    const QString name = u"<b>x<br> \u6771\u4eac & 'q'.vesk"_s;
    QVERIFY(m_view.startWithDrive(DriveFixture::oneRecording(name)));
    QVERIFY(m_view.openListing(DriveFixture::PanelButton, 1));
    QCOMPARE(m_view.names(), QStringList(name));
    QVERIFY(ViewFixture::itemWithText(m_view.row(name), name));
    QVERIFY(m_view.doubleClickRow(name));
    QTRY_VERIFY(DriveFixture::selectedRecording());
    QTRY_VERIFY(m_view.tabOf(name));
}

VIEW_TEST_MAIN(TestDriveNames)
#include "tst_drive_names.moc"
