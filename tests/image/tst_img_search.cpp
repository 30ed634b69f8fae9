#include "tests/image/search_source.h"
#include "tests/support/thread_names.h"
#include "tests/support/vesk_test_main.h"

#include <cmath>
#include <limits>

namespace
{
/** The gray level, of 65535, of a pixel with code 127, which is 127/511 of full scale. */
constexpr int Level127 = 16288;

/** The threshold that comes to so many samples. */
double thresholdOf(int samples)
{
    return (samples + 0.5) / 65535.0;
}
} // namespace

/** The search for the frame where something happens. */
class TestImgSearch : public QObject
{
    Q_OBJECT

private slots:
    void newSearchIsIdleWithItsDefaults();
    void enumerationsHaveTheNumbersOfTheInterface();
    void settingsTellChangesOnly();
    void thresholdIsLimited_data();
    void thresholdIsLimited();
    void thresholdIsCutOffToWholeSamples();
    void onePixelAboveTheThresholdIsFound_data();
    void onePixelAboveTheThresholdIsFound();
    void referenceDecidesWhetherSlowChangeIsFound_data();
    void referenceDecidesWhetherSlowChangeIsFound();
    void runningOffTheRangeStopsAtItsEnd_data();
    void runningOffTheRangeStopsAtItsEnd();
    void widestStepStopsAtTheEndOfTheRange();
    void searchPausesTheSourceAndShowsWhatItFound();
    void stepChangedDuringASearchWaitsForTheNext();
    void lookIsThatOfTheStart();
    void overlaysAreCompared();
    void threadOfASearchHasItsNameAndEndsWithIt();
};

void TestImgSearch::newSearchIsIdleWithItsDefaults()
{
    const PlaybackSource source;
    const ImgSearch *search = source.imgSearch();
    QCOMPARE(search->state(), ImgSearch::Idle);
    QCOMPARE(search->refFrame(), ImgSearch::PreviousFrame);
    QCOMPARE(search->step(), 100);
    QCOMPARE(search->threshold(), 0.5);
    QCOMPARE(search->parent(), &source);
}

void TestImgSearch::enumerationsHaveTheNumbersOfTheInterface()
{
    QCOMPARE(QMetaEnum::fromType<ImgSearch::State>().keyToValue("Idle"), 0);
    QCOMPARE(QMetaEnum::fromType<ImgSearch::State>().keyToValue("Searching"), 1);
    QCOMPARE(QMetaEnum::fromType<ImgSearch::RefFrame>().keyToValue("PreviousFrame"), 0);
    QCOMPARE(QMetaEnum::fromType<ImgSearch::RefFrame>().keyToValue("StartFrame"), 1);
}

void TestImgSearch::settingsTellChangesOnly()
{
    const PlaybackSource source;
    ImgSearch *search = source.imgSearch();
    QSignalSpy stepChanged(search, &ImgSearch::stepChanged);
    QSignalSpy refFrameChanged(search, &ImgSearch::refFrameChanged);
    QVERIFY(search->setProperty("step", 100));
    QVERIFY(search->setProperty("refFrame", 0));
    QCOMPARE(stepChanged.count() + refFrameChanged.count(), 0);
    QVERIFY(search->setProperty("step", 2147483647));
    QVERIFY(search->setProperty("refFrame", 1));
    QCOMPARE(search->step(), 2147483647);
    QCOMPARE(search->refFrame(), ImgSearch::StartFrame);
    QCOMPARE(stepChanged.count(), 1);
    QCOMPARE(refFrameChanged.count(), 1);
}

void TestImgSearch::thresholdIsLimited_data()
{
    QTest::addColumn<double>("written");
    QTest::addColumn<double>("expected");
    QTest::addColumn<int>("told");
    QTest::newRow("present") << 0.5 << 0.5 << 0;
    QTest::newRow("a hair beside") << 0.5 + 1e-13 << 0.5 << 0;
    QTest::newRow("inside") << 0.25 << 0.25 << 1;
    QTest::newRow("lowest") << 0.01 << 0.01 << 1;
    QTest::newRow("too low") << 0.0 << 0.01 << 1;
    QTest::newRow("negative") << -3.0 << 0.01 << 1;
    QTest::newRow("highest") << 0.99 << 0.99 << 1;
    QTest::newRow("too high") << 1.0 << 0.99 << 1;
    QTest::newRow("no number") << std::nan("") << 0.5 << 0;
}

void TestImgSearch::thresholdIsLimited()
{
    const PlaybackSource source;
    QSignalSpy told(source.imgSearch(), &ImgSearch::thresholdChanged);
    QFETCH(double, written);
    source.imgSearch()->setThreshold(written);
    QTEST(source.imgSearch()->threshold(), "expected");
    QTEST(int(told.count()), "told");
}

void TestImgSearch::thresholdIsCutOffToWholeSamples()
{
    QCOMPARE(ImgSearch::thresholdSamples(0.5), 32767);
    QCOMPARE(ImgSearch::thresholdSamples(0.01), 655);
    QCOMPARE(ImgSearch::thresholdSamples(0.99), 64879);
}

void TestImgSearch::onePixelAboveTheThresholdIsFound_data()
{
    QTest::addColumn<int>("samples");
    QTest::addColumn<qlonglong>("changeAt");
    QTest::addColumn<bool>("forward");
    QTest::addColumn<qlonglong>("found");
    QTest::addColumn<Numbers>("asked");
    // The pixel is bright from frame 45 on, or up to it; every tenth frame is looked at.
    QTest::newRow("above") << Level127 - 1 << 45LL << true << 50LL << Numbers{30, 40, 50};
    QTest::newRow("at") << Level127 << 45LL << true << 60LL << Numbers{30, 40, 50, 60};
    QTest::newRow("above, backwards") << Level127 - 1 << 15LL << false << 10LL << Numbers{30, 20, 10};
    QTest::newRow("at, backwards") << Level127 << 15LL << false << 0LL << Numbers{30, 20, 10, 0};
}

void TestImgSearch::onePixelAboveTheThresholdIsFound()
{
    QFETCH(qlonglong, changeAt);
    QFETCH(int, samples);
    QFETCH(bool, forward);
    const auto source = sourceAt(30, 0, 60);
    source->pixels = [changeAt](qlonglong fr) { return onePixel(fr >= changeAt ? 127 : 0); };
    source->imgSearch()->setThreshold(thresholdOf(samples));
    source->imgSearch()->start(forward);
    QVERIFY(ends(*source));
    QTEST(source->fr(), "found");
    QTEST(source->imgSearch()->fr(), "found");
    QTEST(source->asked, "asked");
}

void TestImgSearch::referenceDecidesWhetherSlowChangeIsFound_data()
{
    QTest::addColumn<ImgSearch::RefFrame>("refFrame");
    QTest::addColumn<qlonglong>("start");
    QTest::addColumn<bool>("forward");
    QTest::addColumn<qlonglong>("found");
    // A frame is one 511th of full scale brighter than the one before: ten frames make 1282 samples, twenty
    // 2565 and thirty 3847, and the threshold is 3276.
    QTest::newRow("previous") << ImgSearch::PreviousFrame << 0LL << true << 100LL;
    QTest::newRow("previous, backwards") << ImgSearch::PreviousFrame << 100LL << false << 0LL;
    QTest::newRow("start") << ImgSearch::StartFrame << 0LL << true << 30LL;
    QTest::newRow("start, backwards") << ImgSearch::StartFrame << 100LL << false << 70LL;
}

void TestImgSearch::referenceDecidesWhetherSlowChangeIsFound()
{
    QFETCH(ImgSearch::RefFrame, refFrame);
    QFETCH(qlonglong, start);
    QFETCH(bool, forward);
    const auto source = sourceAt(start);
    source->pixels = [](qlonglong fr) { return onePixel(int(fr)); };
    source->imgSearch()->setRefFrame(refFrame);
    source->imgSearch()->setThreshold(0.05);
    source->imgSearch()->start(forward);
    QVERIFY(ends(*source));
    QTEST(source->fr(), "found");
}

void TestImgSearch::runningOffTheRangeStopsAtItsEnd_data()
{
    QTest::addColumn<qlonglong>("start");
    QTest::addColumn<bool>("forward");
    QTest::addColumn<qlonglong>("end");
    QTest::addColumn<Numbers>("asked");
    // -50 to 50 are held, A stands at -15 and B at 25.
    QTest::newRow("at B") << 25LL << true << 25LL << Numbers{25};
    QTest::newRow("at A, backwards") << -15LL << false << -15LL << Numbers{-15};
    QTest::newRow("past B") << 0LL << true << 25LL << Numbers{0, 10, 20};
    QTest::newRow("past A, backwards") << 10LL << false << -15LL << Numbers{10, 0, -10};
    QTest::newRow("onto B") << 5LL << true << 25LL << Numbers{5, 15, 25};
}

void TestImgSearch::runningOffTheRangeStopsAtItsEnd()
{
    QFETCH(qlonglong, start);
    QFETCH(bool, forward);
    const auto source = sourceAt(start, -50, 50);
    source->setAFr(-15);
    source->setBFr(25);
    source->imgSearch()->start(forward);
    QVERIFY(ends(*source));
    QTEST(source->fr(), "end");
    QTEST(source->imgSearch()->fr(), "end");
    QTEST(source->asked, "asked");
}

void TestImgSearch::widestStepStopsAtTheEndOfTheRange()
{
    const auto source = sourceAt(30);
    source->imgSearch()->setStep(std::numeric_limits<qlonglong>::max());
    source->imgSearch()->start(true);
    QVERIFY(ends(*source));
    QCOMPARE(source->fr(), 100);
    source->imgSearch()->start(false);
    QVERIFY(ends(*source));
    QCOMPARE(source->fr(), 0);
}

void TestImgSearch::searchPausesTheSourceAndShowsWhatItFound()
{
    const auto source = sourceAt(0);
    source->setSelected(true);
    source->pixels = [](qlonglong fr) { return onePixel(fr >= 20 ? 255 : 0); };
    QSignalSpy stateChanged(source->imgSearch(), &ImgSearch::stateChanged);
    source->imgSearch()->start(true);
    QCOMPARE(source->state(), PlaybackVeskObject::Paused);
    QCOMPARE(source->imgSearch()->state(), ImgSearch::Searching);
    QVERIFY(ends(*source));
    QCOMPARE(stateChanged.count(), 2);
    QCOMPARE(source->veskFrame()->seconds(), 20);
    QCOMPARE(source->state(), PlaybackVeskObject::Paused);
}

void TestImgSearch::stepChangedDuringASearchWaitsForTheNext()
{
    const auto source = sourceAt(0);
    source->answersAtOnce = false;
    source->imgSearch()->start(true);
    source->imgSearch()->setStep(7);
    source->answer();
    QVERIFY(reads(*source, 10));
    source->answer();
    QVERIFY(reads(*source, 20));
    source->imgSearch()->cancel();
    source->imgSearch()->start(true);
    source->answer();
    QVERIFY(reads(*source, 7));
    source->imgSearch()->cancel();
}

void TestImgSearch::lookIsThatOfTheStart()
{
    const auto source = sourceAt(0);
    source->pixels = [](qlonglong) { return onePixel(255); };
    source->answersAtOnce = false;
    source->imgSearch()->start(true);
    source->answer();
    QVERIFY(reads(*source, 10));
    // Seen this way the bright pixel is elsewhere.
    source->imgAdjModel()->setFlipV(true);
    source->answersAtOnce = true;
    source->answer();
    QVERIFY(ends(*source));
    QCOMPARE(source->fr(), 100);
}

void TestImgSearch::overlaysAreCompared()
{
    // From 57840 to 65535 the pixel changes by less than the threshold of 19660. Painted red, as it is when
    // it is saturated, it becomes darker by much more, whatever share of the gray red is given.
    const auto search = [](ImgAdjModel::ExpAssist expAssist) {
        const auto source = sourceAt(0);
        source->pixels = [](qlonglong fr) { return onePixel(fr < 50 ? 240 : 255); };
        source->imgAdjModel()->setExpAssist(expAssist);
        source->imgSearch()->setThreshold(0.3);
        source->imgSearch()->start(true);
        return ends(*source) ? source->fr() : -1;
    };
    QCOMPARE(search(ImgAdjModel::ExpAssistDisabled), 100);
    QCOMPARE(search(ImgAdjModel::ExpAssistEnabled), 50);
}

void TestImgSearch::threadOfASearchHasItsNameAndEndsWithIt()
{
    const auto source = sourceAt(0);
    source->answersAtOnce = false;
    // Threads that the image library has made for itself have taken the name over from the one of a search.
    const QStringList before = threadsNamed("ImgSearch Thread");
    const auto added = [&before] {
        QStringList now = threadsNamed("ImgSearch Thread");
        now.removeIf([&before](const QString &number) { return before.contains(number); });
        return now.size();
    };
    source->imgSearch()->start(true);
    QTRY_COMPARE(added(), 1);
    source->imgSearch()->cancel();
    QTRY_COMPARE(added(), 0);
}

VESK_TEST_MAIN(TestImgSearch)
#include "tst_img_search.moc"
