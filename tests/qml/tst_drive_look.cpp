#include "camera/camera.h"
#include "sim/camera.h"
#include "tests/qml/drive_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

/** Sizes of the drive's dialogs, and what a camera's tab tells of its drive. */
class TestDriveLook : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void formsHaveTheirRows_data();
    void formsHaveTheirRows();
    void tagMenuHasItsWidth();
    void cameraTabTellsTheSave();

private:
    DriveFixture m_view;
};

void TestDriveLook::formsHaveTheirRows_data()
{
    QTest::addColumn<QString>("section");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("window");
    QTest::addColumn<QString>("field");
    QTest::newRow("format") << u"SSD"_s << u"Format"_s << u"SSD Format"_s << u"SSD Name"_s;
    QTest::newRow("template") << u"SSD Autosave"_s << u"Edit file name"_s
                              << u"SSD Auto Save - Edit File Name"_s << u"File Name"_s;
}

void TestDriveLook::formsHaveTheirRows()
{
    QFETCH(const QString, section);
    QFETCH(const QString, button);
    QFETCH(const QString, window);
    QFETCH(const QString, field);
    QVERIFY(m_view.startWithDrive({}));
    QCOMPARE(m_view.simulated()->answer("PUT", u"/ssd/autosave/mode"_s, "1").status, 200);
    QVERIFY(m_view.clickIn(section, button));
    QTRY_VERIFY(m_view.dialog(window));
    QQuickWindow *dialog = m_view.dialog(window);
    ViewFixture::settle(dialog);
    const auto place = [&](const QString &name, QAccessible::Role role) {
        QAccessibleInterface *found = ViewFixture::element(dialog, name, role);
        const auto *item = found ? qobject_cast<QQuickItem *>(found->object()) : nullptr;
        return item ? item->mapRectToScene(QRectF({}, item->size())) : QRectF();
    };
    QCOMPARE(place(u"Camera:"_s, QAccessible::StaticText), QRectF(10, 10, 64, 18));
    QCOMPARE(place(u"Camera"_s, QAccessible::StaticText), QRectF(10 + 64 + 14, 10, dialog->width() - 98, 18));
    QCOMPARE(place(field + u':', QAccessible::StaticText), QRectF(10, 10 + 18 + 10, 64, 18));
    QCOMPARE(place(field, QAccessible::EditableText).topLeft(), QPointF(10 + 64 + 14, 38));
    QCOMPARE(place(field, QAccessible::EditableText).height(), 18.0);
    const auto *footer = dialog->property("footer").value<QQuickItem *>();
    QCOMPARE(footer->mapRectToScene(QRectF({}, footer->size())),
             QRectF(0, dialog->height() - 40, dialog->width(), 40));
    const QRectF left = place(section == u"SSD" ? u"Format"_s : u"OK"_s, QAccessible::Button);
    const QRectF right = place(u"Cancel"_s, QAccessible::Button);
    QCOMPARE(left.left(), 10.0);
    QCOMPARE(right.right(), dialog->width() - 10.0);
    QCOMPARE(left.width(), right.width());
    QTest::keyClick(dialog, Qt::Key_Escape);
    QTRY_VERIFY(!m_view.dialog(window));
}

void TestDriveLook::tagMenuHasItsWidth()
{
    QVERIFY(m_view.startWithDrive({}));
    QCOMPARE(m_view.simulated()->answer("PUT", u"/ssd/autosave/mode"_s, "1").status, 200);
    QVERIFY(m_view.clickIn(u"SSD Autosave"_s, u"Edit file name"_s));
    const QString window = u"SSD Auto Save - Edit File Name"_s;
    QTRY_VERIFY(m_view.dialog(window));
    QQuickWindow *dialog = m_view.dialog(window);
    QVERIFY(QTest::qWaitForWindowActive(dialog));
    QVERIFY(ViewFixture::click(dialog, u"Insert tag"_s));
    const auto entry = [&] { return ViewFixture::element(dialog, u"Timestamp"_s, QAccessible::MenuItem); };
    QTRY_VERIFY(entry());
    QCOMPARE(entry()->object()->property("menu").value<QObject *>()->property("width").toReal(), 128.0);
    QTest::keyClick(dialog, Qt::Key_Escape);
    QTRY_VERIFY(!entry());
}

void TestDriveLook::cameraTabTellsTheSave()
{
    q4sim::Camera *simulated = m_view.startWithDrive({});
    QVERIFY(simulated);
    const auto bar = [this] { return m_view.element(u"SSD save progress"_s, QAccessible::ProgressBar); };
    QVERIFY(!bar());
    simulated->forceValue(u"ssd/progress"_s, 37);
    simulated->forceValue(u"ssd/wr_state"_s, 1);
    QQuickItem *tab = m_view.tabOf(u"Simulated Q4"_s);
    QTRY_VERIFY(bar() && ViewFixture::itemWithText(tab, u"37%"_s));
    const auto *item = qobject_cast<QQuickItem *>(bar()->object());
    QCOMPARE(item->size(), QSizeF(88, 8));
    QCOMPARE(item->property("value").toReal() / item->property("to").toReal(), 0.37);
    const QQuickItem *percent = ViewFixture::itemWithText(tab, u"37%"_s);
    QCOMPARE(percent->width(), 28.0);
    QCOMPARE(percent->property("horizontalAlignment").toInt(), int(Qt::AlignRight));
    QVERIFY(ViewFixture::itemWithText(tab, u"SSD:"_s));
    // A drive that fails leaves its last write as it was.
    for (const int state : {7, 3, 0, 3}) {
        simulated->forceValue(u"ssd/state"_s, state);
        QTRY_COMPARE(m_view.camera()->ssdStateValue()->variant().toInt(), state);
        QCOMPARE(m_view.camera()->ssdWrStateValue()->variant().toInt(), 1);
        QTRY_COMPARE(bar() != nullptr, state == 3);
    }
}

VIEW_TEST_MAIN(TestDriveLook)
#include "tst_drive_look.moc"
