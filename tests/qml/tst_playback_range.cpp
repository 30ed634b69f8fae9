#include "image/img_search.h"
#include "tests/qml/playback_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QSignalSpy>

using namespace Qt::StringLiterals;
using State = PlaybackVeskObject::State;

static const QColor White(u"white"_s);
static const QColor Highlight(u"#D25F15"_s);

/** The numbers of playback: frame and markers, step and rate, and what a search tells in their place. */
class TestPlaybackRange : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void bracketsSetTheMarkersOnPress();
    void bracketsTellByColourWhetherTheMarkersStandAtTheEnds();
    void rightClickOffersToResetAMarker();
    void fieldsShowTheFrames();
    void fieldsAreEmptyUntilTheValuesAreThere();
    void fieldsStandInARow();
    void typedFramesAreWritten_data();
    void typedFramesAreWritten();
    void textThatIsNoNumberIsDropped_data();
    void textThatIsNoNumberIsDropped();
    void typedTextIsLeftAloneWhileThePlayHeadMoves();
    void unchangedTextIsTakenByReturnOnly();
    void numberIsReplacedByWhatIsTyped();
    void clickOnThePictureEndsAnEdit();
    void clickOnTheBarEndsAnEdit();
    void playingWritesNothing();
    void searchTakesThePlaceOfTheNumbers();
    void cancelBringsTheNumbersBack();

private:
    PlaybackFixture m_view;
};

void TestPlaybackRange::cleanup()
{
    QCOMPARE(m_view.end(), QStringList());
}

void TestPlaybackRange::bracketsSetTheMarkersOnPress()
{
    PlaybackSource *source = m_view.startPaused(-100, 100);
    QVERIFY(source);
    source->setFr(-20);
    QVERIFY(m_view.press(u"Start of the range here"_s));
    QCOMPARE(source->aFr(), -20);
    m_view.release();
    source->setFr(30);
    QVERIFY(m_view.press(u"End of the range here"_s));
    QCOMPARE(source->bFr(), 30);
    m_view.release();
    QCOMPARE(source->aFr(), -20);
    QCOMPARE(source->fr(), 30);
}

void TestPlaybackRange::bracketsTellByColourWhetherTheMarkersStandAtTheEnds()
{
    PlaybackSource *source = m_view.startPaused(-100, 100);
    QVERIFY(source);
    QCOMPARE(m_view.shownText(u"Start of the range here"_s), u"["_s);
    QCOMPARE(m_view.shownText(u"End of the range here"_s), u"]"_s);
    QCOMPARE(m_view.textColor(u"Start of the range here"_s), White);
    QCOMPARE(m_view.textColor(u"End of the range here"_s), White);
    source->setAFr(-99);
    QCOMPARE(m_view.textColor(u"Start of the range here"_s), Highlight);
    QCOMPARE(m_view.textColor(u"End of the range here"_s), White);
    source->setBFr(99);
    QCOMPARE(m_view.textColor(u"End of the range here"_s), Highlight);
    source->setAFr(-100);
    source->setBFr(100);
    QCOMPARE(m_view.textColor(u"Start of the range here"_s), White);
    QCOMPARE(m_view.textColor(u"End of the range here"_s), White);
}

void TestPlaybackRange::rightClickOffersToResetAMarker()
{
    PlaybackSource *source = m_view.startPaused(-100, 100);
    QVERIFY(source);
    source->setAFr(-20);
    source->setBFr(30);
    source->setFr(5);
    QVERIFY(m_view.click(u"Start of the range here"_s, Qt::RightButton));
    QTRY_VERIFY(m_view.shows(u"Reset"_s, QAccessible::MenuItem));
    QCOMPARE(m_view.item(u"Reset"_s, QAccessible::MenuItem)
                 ->property("menu")
                 .value<QObject *>()
                 ->property("width"),
             48.0);
    QCOMPARE(source->aFr(), -20);
    ViewFixture::settle(m_view.window());
    const QQuickItem *reset = m_view.item(u"Reset"_s, QAccessible::MenuItem);
    const QPointF bracket = m_view.item(u"Start of the range here"_s)->mapToScene({0, 0});
    QVERIFY(reset->mapToScene({0, reset->height()}).y() <= bracket.y());
    QVERIFY(std::abs(reset->mapToScene({0, 0}).x() - bracket.x()) <= 2);
    QVERIFY(m_view.click(m_view.window(), m_view.element(u"Reset"_s, QAccessible::MenuItem)));
    QCOMPARE(source->aFr(), -100);
    QCOMPARE(source->bFr(), 30);
    QTRY_VERIFY(!m_view.shows(u"Reset"_s, QAccessible::MenuItem));
    QVERIFY(m_view.click(u"End of the range here"_s, Qt::RightButton));
    QTRY_VERIFY(m_view.shows(u"Reset"_s, QAccessible::MenuItem));
    QVERIFY(m_view.click(m_view.window(), m_view.element(u"Reset"_s, QAccessible::MenuItem)));
    QCOMPARE(source->bFr(), 100);
    QCOMPARE(source->fr(), 5);
}

void TestPlaybackRange::fieldsShowTheFrames()
{
    PlaybackSource *source = m_view.startPaused(-100, 100);
    QVERIFY(source);
    source->setAFr(-20);
    source->setBFr(30);
    source->setFr(7);
    QCOMPARE(m_view.shownText(u"Start of the range"_s), u"-20"_s);
    QCOMPARE(m_view.shownText(u"Frame"_s), u"7"_s);
    QCOMPARE(m_view.shownText(u"End of the range"_s), u"30"_s);
    // Beyond what a whole number of a view holds.
    source->setAFr(-5'000'000'001, true);
    source->setBFr(5'000'000'002, true);
    QCOMPARE(m_view.shownText(u"Start of the range"_s), u"-5000000001"_s);
    QCOMPARE(m_view.shownText(u"End of the range"_s), u"5000000002"_s);
}

void TestPlaybackRange::fieldsAreEmptyUntilTheValuesAreThere()
{
    PlaybackSource *source = m_view.startUnread();
    QVERIFY(source);
    QCOMPARE(m_view.shownText(u"Start of the range"_s), QString());
    QCOMPARE(m_view.shownText(u"Frame"_s), QString());
    QCOMPARE(m_view.shownText(u"End of the range"_s), QString());
    source->open(-3, 9);
    QCOMPARE(m_view.shownText(u"Start of the range"_s), u"-3"_s);
    QCOMPARE(m_view.shownText(u"Frame"_s), u"-3"_s);
    QCOMPARE(m_view.shownText(u"End of the range"_s), u"9"_s);
}

void TestPlaybackRange::fieldsStandInARow()
{
    QVERIFY(m_view.startPaused(-100, 100));
    ViewFixture::settle(m_view.window());
    QQuickItem *frame = m_view.item(u"Frame"_s);
    QQuickItem *row = frame->parentItem();
    QQuickItem *bar = m_view.item(u"Frames"_s, QAccessible::Graphic);
    QCOMPARE(row->height(), 24.0);
    QCOMPARE(row->width(), bar->width() - 12);
    QCOMPARE(row->mapToItem(bar, {0, 0}), QPointF(6, bar->height() + 6));
    QVERIFY(std::abs(frame->x() + frame->width() / 2 - row->width() / 2) <= 1);
    double x = -1;
    for (const QString &name : {u"Start of the range here"_s, u"Start of the range"_s, u"Frame"_s,
                                u"End of the range"_s, u"End of the range here"_s}) {
        QVERIFY(m_view.item(name)->mapToItem(row, {0, 0}).x() > x);
        x = m_view.item(name)->mapToItem(row, {0, 0}).x();
    }
    const QFont font = frame->property("font").value<QFont>();
    QCOMPARE(font.letterSpacing(), -0.5);
    QCOMPARE(font.featureValue("tnum"), 1u);
}

void TestPlaybackRange::typedFramesAreWritten_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("text");
    QTest::addColumn<qlonglong>("a");
    QTest::addColumn<qlonglong>("fr");
    QTest::addColumn<qlonglong>("b");
    QTest::newRow("A") << u"Start of the range"_s << u"-44"_s << -44LL << 0LL << 50LL;
    QTest::newRow("A behind B") << u"Start of the range"_s << u"77"_s << 50LL << 0LL << 50LL;
    QTest::newRow("A out of the recording") << u"Start of the range"_s << u"-101"_s << -100LL << 0LL << 50LL;
    QTest::newRow("frame") << u"Frame"_s << u"12"_s << -50LL << 12LL << 50LL;
    QTest::newRow("frame before A") << u"Frame"_s << u"-51"_s << -50LL << -50LL << 50LL;
    QTest::newRow("13 digits") << u"Frame"_s << u"9999999999999"_s << -50LL << 50LL << 50LL;
    QTest::newRow("a 14th digit and a letter are not taken")
        << u"Frame"_s << u"x-00000000000021"_s << -50LL << -2LL << 50LL;
    QTest::newRow("B") << u"End of the range"_s << u"44"_s << -50LL << 0LL << 44LL;
    QTest::newRow("B before A") << u"End of the range"_s << u"-60"_s << -50LL << 0LL << -50LL;
}

void TestPlaybackRange::typedFramesAreWritten()
{
    QFETCH(const QString, field);
    QFETCH(const QString, text);
    QFETCH(const qlonglong, a);
    QFETCH(const qlonglong, fr);
    QFETCH(const qlonglong, b);
    PlaybackSource *source = m_view.startPaused(-100, 100);
    QVERIFY(source);
    source->setAFr(-50);
    source->setBFr(50);
    source->setFr(0);
    QVERIFY(m_view.typeInto(field, text));
    QCOMPARE(source->aFr(), a);
    QCOMPARE(source->fr(), fr);
    QCOMPARE(source->bFr(), b);
    // The field shows what became of it, and has let the keys go.
    QCOMPARE(m_view.shownText(u"Start of the range"_s), QString::number(a));
    QCOMPARE(m_view.shownText(u"Frame"_s), QString::number(fr));
    QCOMPARE(m_view.shownText(u"End of the range"_s), QString::number(b));
    QVERIFY(!m_view.item(field)->hasActiveFocus());
    source->setFr(b - 1);
    QCOMPARE(m_view.shownText(u"Frame"_s), QString::number(source->fr()));
}

void TestPlaybackRange::textThatIsNoNumberIsDropped_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("end");
    QTest::newRow("nothing") << QString() << int(Qt::Key_Return);
    QTest::newRow("sign") << u"-"_s << int(Qt::Key_Return);
    QTest::newRow("left by Tab") << u"-"_s << int(Qt::Key_Tab);
    QTest::newRow("escaped") << u"7"_s << int(Qt::Key_Escape);
}

void TestPlaybackRange::textThatIsNoNumberIsDropped()
{
    QFETCH(const QString, text);
    QFETCH(const int, end);
    PlaybackSource *source = m_view.startPaused(-100, 100);
    QVERIFY(source);
    source->setFr(33);
    QSignalSpy changed(source, &PlaybackVeskObject::frChanged);
    QVERIFY(m_view.typeInto(u"Frame"_s, text, Qt::Key(end)));
    QCOMPARE(changed.size(), 0);
    QCOMPARE(m_view.shownText(u"Frame"_s), u"33"_s);
    QVERIFY(!m_view.item(u"Frame"_s)->hasActiveFocus());
}

void TestPlaybackRange::typedTextIsLeftAloneWhileThePlayHeadMoves()
{
    PlaybackSource *source = m_view.start(0, 1000);
    QVERIFY(source);
    QVERIFY(m_view.typeInto(u"Frame"_s, u"50"_s, Qt::Key_unknown));
    source->pass(PlaybackFixture::Second);
    QCOMPARE(source->fr(), 30);
    QCOMPARE(m_view.shownText(u"Frame"_s), u"50"_s);
    QTest::keyClick(m_view.window(), Qt::Key_Return);
    QCOMPARE(source->fr(), 50);
    source->pass(PlaybackFixture::Second);
    QCOMPARE(m_view.shownText(u"Frame"_s), u"80"_s);
}

void TestPlaybackRange::unchangedTextIsTakenByReturnOnly()
{
    PlaybackSource *source = m_view.start(0, 1000);
    QVERIFY(source);
    source->pass(PlaybackFixture::Second);
    QVERIFY(m_view.click(m_view.window(), u"Frame"_s));
    source->pass(PlaybackFixture::Second);
    QCOMPARE(m_view.shownText(u"Frame"_s), u"30"_s);
    // The frame that was pointed at.
    QTest::keyClick(m_view.window(), Qt::Key_Return);
    QCOMPARE(source->fr(), 30);
    QVERIFY(m_view.click(m_view.window(), u"Frame"_s));
    source->pass(PlaybackFixture::Second);
    QTest::keyClick(m_view.window(), Qt::Key_Tab);
    QCOMPARE(source->fr(), 60);
}

void TestPlaybackRange::numberIsReplacedByWhatIsTyped()
{
    PlaybackSource *source = m_view.startPaused(0, 1000);
    QVERIFY(source);
    source->setFr(56);
    QVERIFY(m_view.click(m_view.window(), u"Frame"_s));
    QCoreApplication::processEvents();
    QTest::keyClick(m_view.window(), '7');
    QCOMPARE(m_view.shownText(u"Frame"_s), u"7"_s);
    QTest::keyClick(m_view.window(), Qt::Key_Return);
    QCOMPARE(source->fr(), 7);
}

void TestPlaybackRange::clickOnThePictureEndsAnEdit()
{
    PlaybackSource *source = m_view.startPaused(0, 1000);
    QVERIFY(source);
    QVERIFY(m_view.typeInto(u"Frame"_s, u"55"_s, Qt::Key_unknown));
    QVERIFY(m_view.click(m_view.window(), u"Picture"_s));
    QCOMPARE(source->fr(), 55);
    QTest::keyClick(m_view.window(), Qt::Key_Right);
    QCOMPARE(source->fr(), 56);
}

void TestPlaybackRange::clickOnTheBarEndsAnEdit()
{
    PlaybackSource *source = m_view.startPaused(0, 1000);
    QVERIFY(source);
    QVERIFY(m_view.typeInto(u"End of the range"_s, u"900"_s, Qt::Key_unknown));
    QVERIFY(m_view.click(m_view.window(), u"Frames"_s));
    QCOMPARE(source->bFr(), 900);
    const qlonglong there = source->fr();
    QVERIFY(there > 400 && there < 600);
    QCOMPARE(m_view.shownText(u"Frame"_s), QString::number(there));
    QTest::keyClick(m_view.window(), Qt::Key_Right);
    QCOMPARE(source->fr(), there + 1);
}

void TestPlaybackRange::playingWritesNothing()
{
    PlaybackSource *source = m_view.start(-50, 1000);
    QVERIFY(source);
    source->setAFr(-20);
    QSignalSpy a(source, &PlaybackVeskObject::aFrChanged);
    QSignalSpy b(source, &PlaybackVeskObject::bFrChanged);
    QSignalSpy rate(source, &PlaybackVeskObject::playFrRateChanged);
    source->setFr(-20);
    for (int i = 1; i <= 20; ++i) {
        source->pass(PlaybackFixture::Second / 10);
        // Ends of frames fall together with the moments of the test but for a few nanoseconds.
        QCOMPARE(source->fr(), -20 + 3 * i);
        ViewFixture::settle(m_view.window());
    }
    QCOMPARE(a.size() + b.size() + rate.size(), 0);
}

void TestPlaybackRange::searchTakesThePlaceOfTheNumbers()
{
    PlaybackSource *source = m_view.startPaused(0, 1000);
    QVERIFY(source);
    source->setFr(7);
    source->imgSearch()->setStep(10);
    source->answersAtOnce = false;
    source->imgSearch()->start(true);
    QVERIFY(m_view.itemWithText(u"Searching frame: 7"_s));
    for (const QString &name : {u"Start of the range here"_s, u"Start of the range"_s, u"Frame"_s,
                                u"End of the range"_s, u"End of the range here"_s})
        QVERIFY(!m_view.shows(name));
    source->answer();
    QTRY_VERIFY(m_view.itemWithText(u"Searching frame: 17"_s));
    QCOMPARE(m_view.item(u"Cancel the search"_s)->width(), 18.0);
    QCOMPARE(m_view.shownText(u"Cancel the search"_s), u"\uEB98"_s);
}

void TestPlaybackRange::cancelBringsTheNumbersBack()
{
    PlaybackSource *source = m_view.startPaused(0, 1000);
    QVERIFY(source);
    source->setFr(7);
    source->answersAtOnce = false;
    source->imgSearch()->start(true);
    QVERIFY(m_view.click(u"Cancel the search"_s));
    QCOMPARE(source->imgSearch()->state(), ImgSearch::Idle);
    QVERIFY(!m_view.shows(u"Cancel the search"_s));
    QVERIFY(!m_view.itemWithText(u"Searching frame: 7"_s));
    QCOMPARE(m_view.shownText(u"Frame"_s), u"7"_s);
    QVERIFY(m_view.press(u"Step forward"_s));
    m_view.release();
    QCOMPARE(source->fr(), 8);
}

VIEW_TEST_MAIN(TestPlaybackRange)
#include "tst_playback_range.moc"
