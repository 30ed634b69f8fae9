#include "app/vesk_app.h"
#include "save/save_job.h"
#include "take/take.h"
#include "tests/qml/save_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QDir>
#include <QQuickItem>
#include <QQuickWindow>
#include <QStorageInfo>

#include <cmath>

using namespace Qt::StringLiterals;

/** The dialog for saving worked by mouse: where files go, its sections and its slider. */
class TestSavePlaces : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void pickedFolderIsSavedTo();
    void dismissedFolderIsNotTaken();
    void freeSpaceIsThatOfTheFolder_data();
    void freeSpaceIsThatOfTheFolder();
    void headerFolds_data();
    void headerFolds();
    void draggedQualityIsTaken();

private:
    bool startInOuterFolder();
    QPoint onSlider(double part) const;

    SaveFixture m_view;
};

/** The dialog, whose folder has another one, "inner", in it. */
bool TestSavePlaces::startInOuterFolder()
{
    return m_view.startWithTake(1) && QDir().mkpath(m_view.path(u"inner"_s)) && m_view.openSave();
}

void TestSavePlaces::pickedFolderIsSavedTo()
{
    QVERIFY(startInOuterFolder());
    QVERIFY(m_view.typeInto(u"File Name"_s, u"shot"_s));
    QVERIFY(m_view.press(u"Select Folder"_s));
    QTRY_VERIFY(m_view.drawnDialog(m_view.saveDialog()));
    QCOMPARE(m_view.drawnDialog(m_view.saveDialog())->title(), u"Select Folder"_s);
    QVERIFY(m_view.clickInDrawn(u"inner"_s, m_view.saveDialog()));
    QVERIFY(m_view.clickInDrawn(u"Open"_s, m_view.saveDialog()));
    QTRY_COMPARE(m_view.textOf(u"Folder"_s), m_view.path(u"inner"_s));
    QTRY_VERIFY(!m_view.drawnDialog(m_view.saveDialog()));
    QVERIFY(m_view.press(u"Save"_s));
    QTRY_COMPARE(SaveFixture::jobs().size(), 1);
    QTRY_COMPARE(SaveFixture::jobs()[0]->state(), SaveJob::Done);
    QCOMPARE(QDir(m_view.path(u"inner"_s)).entryList(QDir::Files), QStringList{u"shot.vesk"_s});
    QCOMPARE(m_view.files(), QStringList());
    QCOMPARE(VeskApp::instance()->setting(u"save/folder"_s).toString(), m_view.path(u"inner"_s));
}

void TestSavePlaces::dismissedFolderIsNotTaken()
{
    QVERIFY(startInOuterFolder());
    const QString before = m_view.textOf(u"Folder"_s);
    QVERIFY(m_view.press(u"Select Folder"_s));
    QVERIFY(m_view.clickInDrawn(u"inner"_s, m_view.saveDialog()));
    QVERIFY(m_view.clickInDrawn(u"Cancel"_s, m_view.saveDialog()));
    QTRY_VERIFY(!m_view.drawnDialog(m_view.saveDialog()));
    QCOMPARE(m_view.textOf(u"Folder"_s), before);
}

void TestSavePlaces::freeSpaceIsThatOfTheFolder_data()
{
    QTest::addColumn<QString>("folder");
    QTest::newRow("of temporary files") << QDir::tempPath();
    QTest::newRow("in memory") << u"/dev/shm"_s;
}

/** Bytes of a text like "12.34 GB". */
static double bytesOf(const QString &text)
{
    static const QStringList units = {u"bytes"_s, u"kB"_s, u"MB"_s, u"GB"_s, u"TB"_s};
    const QStringList parts = text.split(u' ');
    const qsizetype unit = units.indexOf(parts.value(1));
    return unit < 0 ? -1.0 : parts[0].toDouble() * std::pow(1000.0, double(unit));
}

void TestSavePlaces::freeSpaceIsThatOfTheFolder()
{
    QFETCH(const QString, folder);
    QVERIFY(QDir(folder).exists());
    QVERIFY(m_view.startWithTake(1));
    VeskApp::instance()->setSetting(u"save/folder"_s, folder);
    QVERIFY(m_view.openSave());
    QCOMPARE(m_view.textOf(u"Folder"_s), folder);
    // Others write there at the same time.
    const auto expected = double(QStorageInfo(folder).bytesAvailable());
    const double shown = bytesOf(m_view.textOf(u"Free Space"_s));
    QVERIFY2(std::abs(shown - expected) < 0.02 * expected + 1e6, qPrintable(m_view.textOf(u"Free Space"_s)));
}

void TestSavePlaces::headerFolds_data()
{
    QTest::addColumn<QString>("section");
    QTest::addColumn<QString>("inside");
    QTest::addColumn<int>("role");
    QTest::newRow("source") << u"Source"_s << u"All frames"_s << int(QAccessible::RadioButton);
    QTest::newRow("destination") << u"Destination"_s << u"File Name"_s << int(QAccessible::EditableText);
    QTest::newRow("format") << u"Format"_s << u"Format"_s << int(QAccessible::ComboBox);
}

void TestSavePlaces::headerFolds()
{
    QFETCH(const QString, section);
    QFETCH(const QString, inside);
    QFETCH(const int, role);
    QVERIFY(m_view.startWithTake(1));
    QVERIFY(m_view.openSave());
    const auto isShown = [&] {
        return ViewFixture::element(m_view.saveDialog(), inside, QAccessible::Role(role)) != nullptr;
    };
    QVERIFY(isShown());
    QVERIFY(m_view.press(section));
    QTRY_VERIFY(!isShown());
    for (const QString &other : {u"Source"_s, u"Destination"_s, u"Format"_s})
        QCOMPARE(ViewFixture::element(m_view.saveDialog(), other, QAccessible::Grouping) != nullptr,
                 other != section);
    QVERIFY(m_view.press(section));
    QTRY_VERIFY(isShown());
}

/** A point on the groove of the slider, 0 at its left end. */
QPoint TestSavePlaces::onSlider(double part) const
{
    QAccessibleInterface *slider =
        ViewFixture::element(m_view.saveDialog(), u"Quality"_s, QAccessible::Slider);
    const double handle = slider->object()->property("handle").value<QQuickItem *>()->width();
    const QRect place(m_view.saveDialog()->mapFromGlobal(slider->rect().topLeft()), slider->rect().size());
    return {qRound(place.left() + handle / 2 + (place.width() - handle) * part), place.center().y()};
}

void TestSavePlaces::draggedQualityIsTaken()
{
    QVERIFY(m_view.startWithTake(1));
    QQuickWindow *dialog = m_view.openSave();
    QVERIFY(dialog);
    QVERIFY(m_view.pick(u"Format"_s, u"MP4"_s));
    QTRY_VERIFY(ViewFixture::element(dialog, u"Quality"_s, QAccessible::Slider));
    QVERIFY(m_view.pick(u"Codec"_s, u"H.264 - YUV420P"_s));
    ViewFixture::settle(dialog);
    const auto shows = [&](const QString &number) {
        return ViewFixture::itemWithText(dialog->contentItem(), number);
    };
    // 51 on the left to 1 on the right: 15 stands at 36 parts of 50.
    QTRY_VERIFY(shows(u"15"_s));
    QTest::mousePress(dialog, Qt::LeftButton, {}, onSlider(0.72));
    QTest::mouseMove(dialog, onSlider(0.6));
    QTest::mouseMove(dialog, onSlider(0.5));
    QTRY_VERIFY(shows(u"26"_s));
    QTest::mouseMove(dialog, onSlider(-0.5));
    QTRY_VERIFY(shows(u"51"_s));
    QTest::mouseMove(dialog, onSlider(1.5));
    QTest::mouseRelease(dialog, Qt::LeftButton, {}, onSlider(1.5));
    QTRY_VERIFY(shows(u"1"_s));
    QVERIFY(m_view.press(u"Save"_s));
    QTRY_COMPARE(SaveFixture::jobs().size(), 1);
    QCOMPARE(SaveFixture::jobs()[0]->quality(), 1);
}

VIEW_TEST_MAIN(TestSavePlaces)
#include "tst_save_places.moc"
