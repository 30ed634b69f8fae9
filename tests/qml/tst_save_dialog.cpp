#include "app/vesk_app.h"
#include "camera/camera.h"
#include "save/save_job.h"
#include "save/save_manager.h"
#include "sim/camera.h"
#include "take/take.h"
#include "tests/qml/save_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

static const QString FirstFrame = u"First Frame"_s;
static const QString LastFrame = u"Last Frame"_s;
static const QString FrameCount = u"Frame Count"_s;
static const QString FileName = u"File Name"_s;

/** The dialog in which a range of frames becomes a save. */
class TestSaveDialog : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void dialogOpensForTheTakeOf_data();
    void dialogOpensForTheTakeOf();
    void dialogStartsWithThePlaybackRangeAndTheDateAsName();
    void allFramesAreTheFramesOfTheTake();
    void fieldsOfTheRangeTakeTextOnlyWithSelection();
    void typedFrames_data();
    void typedFrames();
    void emptiedNameBecomesTheDateAndTime();
    void nameTakesNo_data();
    void nameTakesNo();
    void tagsGoInAtTheCursor_data();
    void tagsGoInAtTheCursor();
    void imagesHaveACodecAndNativeFilesNone();
    void estimateFollowsRangeAndFormat();
    void saveMakesTheJobAndKeepsTheChoices();
    void typedTextCountsWhenSaveIsPressed();
    void nextDialogStartsLikeTheLastSave();
    void unknownStoredFormatIsTheFirstOne();
    void cancelOnlyCloses();
    void dialogGoesWithItsTake();
    void descriptionMayComeWhileTheDialogIsOpen();
    void dialogHasItsSizes();

private:
    Take *start();

    SaveFixture m_view;
};

/** Take 1, -20 to 29, paused at the markers -5 and 4. */
Take *TestSaveDialog::start()
{
    Take *take = m_view.startWithTake(1);
    if (!take)
        return nullptr;
    take->pause();
    take->setAFr(-5);
    take->setBFr(4);
    return take;
}

void TestSaveDialog::dialogOpensForTheTakeOf_data()
{
    QTest::addColumn<int>("way");
    QTest::addColumn<int>("shown");
    QTest::newRow("button") << int(SaveFixture::Button) << 1;
    QTest::newRow("tab's menu") << int(SaveFixture::TabMenu) << 1;
    QTest::newRow("file menu") << int(SaveFixture::FileMenu) << 1;
    QTest::newRow("menu of another tab") << int(SaveFixture::TabMenu) << 2;
}

void TestSaveDialog::dialogOpensForTheTakeOf()
{
    QFETCH(const int, way);
    QFETCH(const int, shown);
    QVERIFY(m_view.startWithTake(1));
    QVERIFY(m_view.openTake(2));
    QVERIFY(m_view.openTake(shown));
    QVERIFY(m_view.openSave(way));
    QCOMPARE(m_view.textOf(u"Camera"_s), m_view.camera()->nameValue()->variant().toString());
    QCOMPARE(m_view.textOf(u"Take"_s), u"1"_s);
    QTRY_COMPARE(m_view.textOf(FrameCount), u"50  of  50"_s);
}

void TestSaveDialog::dialogStartsWithThePlaybackRangeAndTheDateAsName()
{
    QVERIFY(start());
    QVERIFY(m_view.openSave());
    QCOMPARE(m_view.typed(FirstFrame), u"-5"_s);
    QCOMPARE(m_view.typed(LastFrame), u"4"_s);
    QCOMPARE(m_view.textOf(FrameCount), u"10  of  50"_s);
    QVERIFY(QRegularExpression(u"^\\d{4}-\\d\\d-\\d\\dT\\d{6}Z$"_s).match(m_view.typed(FileName)).hasMatch());
    QCOMPARE(m_view.chosen(u"Save To"_s), u"File"_s);
    QVERIFY(m_view.isEnabled(u"Save To"_s, QAccessible::ComboBox));
    QCOMPARE(m_view.chosen(u"Format"_s), u"VESK"_s);
    QCOMPARE(m_view.textOf(u"Folder"_s) + u"/x"_s, m_view.path(u"x"_s));
}

void TestSaveDialog::allFramesAreTheFramesOfTheTake()
{
    QVERIFY(start());
    QVERIFY(m_view.openSave());
    QVERIFY(m_view.press(u"All frames"_s, QAccessible::RadioButton));
    QCOMPARE(m_view.typed(FirstFrame), u"-20"_s);
    QCOMPARE(m_view.typed(LastFrame), u"29"_s);
    QCOMPARE(m_view.textOf(FrameCount), u"50  of  50"_s);
    QVERIFY(m_view.press(u"Playback Frames"_s, QAccessible::RadioButton));
    QCOMPARE(m_view.textOf(FrameCount), u"10  of  50"_s);
}

void TestSaveDialog::fieldsOfTheRangeTakeTextOnlyWithSelection()
{
    QVERIFY(start());
    QVERIFY(m_view.openSave());
    QVERIFY(!m_view.isEnabled(FirstFrame, QAccessible::EditableText));
    QVERIFY(!m_view.isEnabled(LastFrame, QAccessible::EditableText));
    QVERIFY(m_view.press(u"Selection"_s, QAccessible::RadioButton));
    QVERIFY(m_view.isEnabled(FirstFrame, QAccessible::EditableText));
    QVERIFY(m_view.isEnabled(LastFrame, QAccessible::EditableText));
    QCOMPARE(m_view.textOf(FrameCount), u"10  of  50"_s);
}

void TestSaveDialog::typedFrames_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("last");
    QTest::newRow("first") << FirstFrame << u"-12"_s << u"-12"_s << u"4"_s;
    QTest::newRow("first above the last") << FirstFrame << u"9"_s << u"4"_s << u"4"_s;
    QTest::newRow("first below all") << FirstFrame << u"-21"_s << u"-20"_s << u"4"_s;
    QTest::newRow("first emptied") << FirstFrame << u""_s << u"-20"_s << u"4"_s;
    QTest::newRow("first only a sign") << FirstFrame << u"-"_s << u"-20"_s << u"4"_s;
    QTest::newRow("last") << LastFrame << u"28"_s << u"-5"_s << u"28"_s;
    QTest::newRow("last below the first") << LastFrame << u"-6"_s << u"-5"_s << u"-5"_s;
    QTest::newRow("last above all") << LastFrame << u"9999999999999"_s << u"-5"_s << u"29"_s;
    QTest::newRow("last emptied") << LastFrame << u""_s << u"-5"_s << u"29"_s;
}

void TestSaveDialog::typedFrames()
{
    QFETCH(const QString, field);
    QFETCH(const QString, text);
    QVERIFY(start());
    QVERIFY(m_view.openSave());
    QVERIFY(m_view.press(u"Selection"_s, QAccessible::RadioButton));
    QVERIFY(m_view.typeInto(field, text));
    QTEST(m_view.typed(FirstFrame), "first");
    QTEST(m_view.typed(LastFrame), "last");
    const int count = m_view.typed(LastFrame).toInt() - m_view.typed(FirstFrame).toInt() + 1;
    QCOMPARE(m_view.textOf(FrameCount), u"%1  of  50"_s.arg(count));
}

void TestSaveDialog::emptiedNameBecomesTheDateAndTime()
{
    VeskApp::instance()->setSetting(u"save/filename"_s, u"shot"_s);
    QVERIFY(start());
    QVERIFY(m_view.openSave());
    QCOMPARE(m_view.typed(FileName), u"shot"_s);
    QVERIFY(m_view.typeInto(FileName, {}));
    QVERIFY(QRegularExpression(u"^\\d{4}-\\d\\d-\\d\\dT\\d{6}Z$"_s).match(m_view.typed(FileName)).hasMatch());
}

void TestSaveDialog::nameTakesNo_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("taken");
    QTest::newRow("slash") << u"a/b"_s << u"ab"_s;
    QTest::newRow("backslash") << u"a\\b"_s << u"ab"_s;
    QTest::newRow("star, question mark, quote, bar") << u"a*?\"|b"_s << u"ab"_s;
    QTest::newRow("leading blank") << u" a b"_s << u"a b"_s;
    QTest::newRow("but tags") << u"a<fr:3>"_s << u"a<fr:3>"_s;
}

void TestSaveDialog::nameTakesNo()
{
    QFETCH(const QString, text);
    QVERIFY(start());
    QVERIFY(m_view.openSave());
    QVERIFY(m_view.typeInto(FileName, text));
    QTEST(m_view.typed(FileName), "taken");
}

void TestSaveDialog::tagsGoInAtTheCursor_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("after");
    QTest::newRow("frame") << u"ab"_s << u"Frame Number"_s << u"a<fr>b"_s;
    QTest::newRow("sequence") << u"ab"_s << u"Sequence Number"_s << u"a<seq>b"_s;
    QTest::newRow("into an empty name") << u""_s << u"Sequence Number"_s << u"<seq>"_s;
}

void TestSaveDialog::tagsGoInAtTheCursor()
{
    QFETCH(const QString, before);
    QFETCH(const QString, entry);
    QVERIFY(start());
    QVERIFY(m_view.openSave());
    QVERIFY(m_view.typeInto(FileName, before, Qt::Key_Left));
    QVERIFY(m_view.press(u"Insert a number"_s));
    QTRY_VERIFY(ViewFixture::element(m_view.saveDialog(), entry, QAccessible::MenuItem));
    QVERIFY(m_view.press(entry, QAccessible::MenuItem));
    QTEST(m_view.typed(FileName), "after");
}

void TestSaveDialog::imagesHaveACodecAndNativeFilesNone()
{
    QVERIFY(start());
    QVERIFY(m_view.openSave());
    QCOMPARE(m_view.chosen(u"Codec"_s), u"no box Codec"_s);
    QVERIFY(m_view.pick(u"Format"_s, u"TIFF"_s));
    QCOMPARE(m_view.chosen(u"Codec"_s), u"RAW - RGB24"_s);
    QVERIFY(!m_view.isEnabled(u"Codec"_s, QAccessible::ComboBox));
    QVERIFY(m_view.pick(u"Format"_s, u"VESK"_s));
    QCOMPARE(m_view.chosen(u"Codec"_s), u"no box Codec"_s);
}

void TestSaveDialog::estimateFollowsRangeAndFormat()
{
    Take *take = start();
    QVERIFY(take);
    const qint64 meta = take->metaSizeValue()->variant().toInt();
    QCOMPARE(take->resValue()->variant().toString(), u"640x480"_s);
    const auto size = [](qint64 bytes) {
        return QLocale().formattedDataSize(bytes, 2, QLocale::DataSizeSIFormat);
    };
    QVERIFY(m_view.openSave());
    QCOMPARE(m_view.textOf(u"Est. File Size"_s), size((307'200 + meta) * 10 + 4096));
    QVERIFY(m_view.press(u"All frames"_s, QAccessible::RadioButton));
    QCOMPARE(m_view.textOf(u"Est. File Size"_s), size((307'200 + meta) * 50 + 4096));
    QVERIFY(m_view.pick(u"Format"_s, u"TIFF"_s));
    QCOMPARE(m_view.textOf(u"Est. File Size"_s), size((307'200 + 68) * 3 * 50));
}

void TestSaveDialog::saveMakesTheJobAndKeepsTheChoices()
{
    QVERIFY(start());
    SaveJob *job = m_view.saveAs(u"shot"_s, u"TIFF"_s);
    QVERIFY(job);
    QCOMPARE(job->startFr(), -5);
    QCOMPARE(job->frCnt(), 10);
    QCOMPARE(job->format(), Util::FormatTiff);
    QCOMPARE(job->dest(), SaveJob::FileDest);
    QTRY_VERIFY(!m_view.saveDialog());
    const VeskApp &app = *VeskApp::instance();
    QCOMPARE(app.selectedVeskObject(), nullptr);
    QCOMPARE(app.backgroundView(), VeskApp::SaveProgress);
    QTRY_VERIFY(m_view.hasRow(u"shot_00.tiff"_s));
    QCOMPARE(app.setting(u"save/dest"_s).toInt(), 0);
    QCOMPARE(app.setting(u"save/format"_s).toInt(), 3);
    QCOMPARE(app.setting(u"save/codec"_s).toInt(), 2);
    QCOMPARE(app.setting(u"save/fr_rate"_s).toDouble(), 30.0);
    QCOMPARE(app.setting(u"save/quality"_s).toInt(), 15);
    QCOMPARE(app.setting(u"save/filename"_s).toString(), u"shot"_s);
    QCOMPARE(app.setting(u"save/folder"_s).toString() + u"/x"_s, m_view.path(u"x"_s));
    QTRY_COMPARE(job->state(), SaveJob::Done);
    QCOMPARE(m_view.files().size(), 10);
}

void TestSaveDialog::typedTextCountsWhenSaveIsPressed()
{
    QVERIFY(start());
    QVERIFY(m_view.openSave());
    QVERIFY(m_view.press(u"Selection"_s, QAccessible::RadioButton));
    QVERIFY(m_view.typeInto(FileName, u"typed"_s, Qt::Key_unknown));
    QVERIFY(m_view.typeInto(FirstFrame, u"3"_s, Qt::Key_unknown));
    QVERIFY(m_view.press(u"Save"_s));
    QTRY_COMPARE(SaveFixture::jobs().size(), 1);
    QCOMPARE(SaveFixture::jobs()[0]->startFr(), 3);
    QCOMPARE(SaveFixture::jobs()[0]->frCnt(), 2);
    QCOMPARE(SaveFixture::jobs()[0]->fileName(), u"typed"_s);
    QTRY_COMPARE(SaveFixture::jobs()[0]->state(), SaveJob::Done);
}

void TestSaveDialog::nextDialogStartsLikeTheLastSave()
{
    QVERIFY(start());
    QVERIFY(m_view.saveAs(u"shot"_s, u"TIFF"_s));
    QTRY_COMPARE(SaveFixture::jobs()[0]->state(), SaveJob::Done);
    QVERIFY(m_view.openTake(2));
    QVERIFY(m_view.openSave());
    QCOMPARE(m_view.typed(FileName), u"shot"_s);
    QCOMPARE(m_view.chosen(u"Format"_s), u"TIFF"_s);
    QCOMPARE(m_view.textOf(u"Take"_s), u"2"_s);
    QCOMPARE(m_view.textOf(FrameCount), u"100  of  100"_s);
}

void TestSaveDialog::unknownStoredFormatIsTheFirstOne()
{
    VeskApp::instance()->setSetting(u"save/format"_s, 77);
    VeskApp::instance()->setSetting(u"save/codec"_s, 77);
    QVERIFY(start());
    QVERIFY(m_view.openSave());
    QCOMPARE(m_view.chosen(u"Format"_s), u"VESK"_s);
}

void TestSaveDialog::cancelOnlyCloses()
{
    Take *take = start();
    QVERIFY(take);
    QVERIFY(m_view.openSave());
    QVERIFY(m_view.typeInto(FileName, u"shot"_s));
    QVERIFY(m_view.press(u"Cancel"_s));
    QTRY_VERIFY(!m_view.saveDialog());
    QCOMPARE(SaveFixture::jobs().size(), 0);
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), take);
    QVERIFY(!VeskApp::instance()->settings()->contains(u"save/filename"_s));
    QCOMPARE(m_view.files(), QStringList());
}

void TestSaveDialog::dialogGoesWithItsTake()
{
    QVERIFY(start());
    QVERIFY(m_view.openSave());
    m_view.simulated()->dropTake(1);
    QTRY_VERIFY(!m_view.tab(1));
    QTRY_VERIFY(!m_view.saveDialog());
    QVERIFY(m_view.openTake(2));
    QVERIFY(m_view.openSave());
    QCOMPARE(m_view.textOf(u"Take"_s), u"2"_s);
}

void TestSaveDialog::descriptionMayComeWhileTheDialogIsOpen()
{
    const Take *take = start();
    QVERIFY(take);
    m_view.simulated()->setFault(q4sim::Route::Takes, {.kind = q4sim::FaultKind::Delay, .ms = 2000});
    QCOMPARE(m_view.simulated()->makeTake({.first = 7, .last = 7}), 3);
    QTRY_VERIFY(m_view.tab(3));
    QVERIFY(m_view.openSave(SaveFixture::TabMenu, 3));
    QCOMPARE(m_view.textOf(u"Take"_s), u"3"_s);
    QVERIFY(!m_view.isEnabled(u"Save"_s, QAccessible::Button));
    QTRY_VERIFY(m_view.isEnabled(u"Save"_s, QAccessible::Button));
    QTRY_COMPARE(m_view.textOf(FrameCount), u"1  of  1"_s);
    QCOMPARE(m_view.typed(FirstFrame), u"7"_s);
    QCOMPARE(m_view.typed(LastFrame), u"7"_s);
    const qint64 bytes = 307'200 + take->metaSizeValue()->variant().toInt() + 4096;
    QCOMPARE(m_view.textOf(u"Est. File Size"_s),
             QLocale().formattedDataSize(bytes, 2, QLocale::DataSizeSIFormat));
}

void TestSaveDialog::dialogHasItsSizes()
{
    QVERIFY(start());
    QQuickWindow *dialog = m_view.openSave();
    QVERIFY(dialog);
    QCOMPARE(dialog->minimumSize(), QSize(480, 640));
    QCOMPARE(dialog->maximumSize(), QSize(960, 640));
    QCOMPARE(dialog->modality(), Qt::ApplicationModal);
    const auto rect = [&](const QString &name, QAccessible::Role role) {
        return ViewFixture::element(dialog, name, role)->rect().size();
    };
    QCOMPARE(rect(FirstFrame, QAccessible::EditableText), QSize(110, 24));
    QCOMPARE(rect(u"Save To"_s, QAccessible::ComboBox), QSize(110, 24));
    QVERIFY(m_view.pick(u"Format"_s, u"TIFF"_s));
    QTRY_COMPARE(rect(u"Format"_s, QAccessible::ComboBox), QSize(110, 24));
    QTRY_COMPARE(rect(u"Codec"_s, QAccessible::ComboBox), QSize(140, 24));
    const auto left = [&](const QString &name) {
        return ViewFixture::element(dialog, name, QAccessible::ComboBox)->rect().left();
    };
    dialog->setWidth(960);
    QTRY_COMPARE(ViewFixture::element(dialog, FileName, QAccessible::EditableText)->rect().width(), 788);
    ViewFixture::settle(dialog);
    QCOMPARE(left(u"Format"_s), left(u"Save To"_s));
    QCOMPARE(left(u"Codec"_s), left(u"Format"_s) + 110 + 14 + 55 + 14);
}

VIEW_TEST_MAIN(TestSaveDialog)
#include "tst_save_dialog.moc"
