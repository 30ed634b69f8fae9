#include "tests/image/search_source.h"
#include "tests/support/vesk_test_main.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTimer>

/** What ends a search before it has found anything, and what takes its place. */
class TestImgSearchEnd : public QObject
{
    Q_OBJECT

private slots:
    void cancelInMidReadLeavesTheFrame();
    void lateFailureMeetsNoSearch();
    void newStartReplacesTheSearchThatRuns();
    void everyRestartReadsItsOwnFramesOnly();
    void changeOfTheFrameEndsTheSearch();
    void frameAskedForOnceMoreDoesNotEndTheSearch();
    void frameThatFailsEndsTheSearch_data();
    void frameThatFailsEndsTheSearch();
    void frameThatCannotBeAskedForEndsTheSearch();
    void frameThatIsNoFrameEndsTheSearch();
    void frameOfAnotherSizeEndsTheSearch();
    void handlerThatCancelsEndsTheReading();
    void searchBegunByAHandlerGoesOn_data();
    void searchBegunByAHandlerGoesOn();
    void quitEndsTheSearch();
    void quitWhileFramesAreComparedEndsTheSearch();
    void windowWaitsForOneComparisonAtMost();
    void sourceMayGoInMidSearch();
    void noFrameIsLeftBehind();
};

void TestImgSearchEnd::cancelInMidReadLeavesTheFrame()
{
    const auto source = sourceAt(0);
    source->answersAtOnce = false;
    source->imgSearch()->start(true);
    source->answer();
    QVERIFY(reads(*source, 10));
    source->imgSearch()->cancel();
    QCOMPARE(source->imgSearch()->state(), ImgSearch::Idle);
    QCOMPARE(source->fr(), 0);
    source->answer();
    QTRY_VERIFY(!source->requested);
    QCOMPARE(source->imgSearch()->state(), ImgSearch::Idle);
    QCOMPARE(source->asked, (Numbers{0, 10}));
}

void TestImgSearchEnd::lateFailureMeetsNoSearch()
{
    const auto source = sourceAt(0);
    source->answersAtOnce = false;
    source->imgSearch()->start(true);
    const QPointer<RawFrame> early = source->requested;
    source->imgSearch()->start(true);
    QVERIFY(early);
    emit early->initError();
    QCOMPARE(source->imgSearch()->state(), ImgSearch::Searching);
    source->answer();
    QVERIFY(reads(*source, 10));
    QTRY_VERIFY(!early);
    source->imgSearch()->cancel();
}

void TestImgSearchEnd::newStartReplacesTheSearchThatRuns()
{
    const auto source = sourceAt(50);
    source->answersAtOnce = false;
    QSignalSpy stateChanged(source->imgSearch(), &ImgSearch::stateChanged);
    source->imgSearch()->start(true);
    source->answer();
    QVERIFY(reads(*source, 60));
    source->imgSearch()->start(false);
    QCOMPARE(stateChanged.count(), 3);
    QCOMPARE(source->imgSearch()->fr(), 50);
    source->answersAtOnce = true;
    source->answer();
    QVERIFY(ends(*source));
    QCOMPARE(source->asked, (Numbers{50, 60, 50, 40, 30, 20, 10, 0}));
    QCOMPARE(source->fr(), 0);
}

void TestImgSearchEnd::everyRestartReadsItsOwnFramesOnly()
{
    // What a worker has said just before its search was replaced lies in the event queue.
    for (int i = 0; i < 100; ++i) {
        const auto source = sourceAt(50);
        source->imgSearch()->start(true);
        // Longer each time, so that the replacement meets the first search at every point.
        for (int round = 0; round < i % 7; ++round)
            QCoreApplication::processEvents();
        if (source->imgSearch()->state() == ImgSearch::Idle)
            continue;
        source->asked.clear();
        source->imgSearch()->start(false);
        QVERIFY(ends(*source));
        QCOMPARE(source->asked, (Numbers{50, 40, 30, 20, 10, 0}));
    }
}

void TestImgSearchEnd::changeOfTheFrameEndsTheSearch()
{
    const auto source = sourceAt(0);
    source->answersAtOnce = false;
    source->imgSearch()->start(true);
    source->stepFrFwd();
    QCOMPARE(source->imgSearch()->state(), ImgSearch::Idle);
    QCOMPARE(source->fr(), 1);
}

void TestImgSearchEnd::frameAskedForOnceMoreDoesNotEndTheSearch()
{
    const auto source = sourceAt(30);
    source->answersAtOnce = false;
    source->imgSearch()->start(true);
    QSignalSpy changed(source.get(), &PlaybackVeskObject::frChanged);
    source->tick();
    source->refreshIfPaused();
    QCOMPARE(changed.count(), 2);
    QCOMPARE(source->imgSearch()->state(), ImgSearch::Searching);
}

void TestImgSearchEnd::frameThatFailsEndsTheSearch_data()
{
    QTest::addColumn<int>("goodFrames");
    QTest::newRow("the first") << 0;
    QTest::newRow("the second") << 1;
    QTest::newRow("the third") << 2;
}

void TestImgSearchEnd::frameThatFailsEndsTheSearch()
{
    QFETCH(int, goodFrames);
    const auto source = sourceAt(0);
    source->answersAtOnce = false;
    source->imgSearch()->start(true);
    for (int i = 0; i < goodFrames; ++i) {
        source->answer();
        QVERIFY(reads(*source, 10 * (i + 1)));
    }
    source->fail();
    QCOMPARE(source->imgSearch()->state(), ImgSearch::Idle);
    QCOMPARE(source->fr(), 0);
    QTRY_VERIFY(!source->requested);
}

void TestImgSearchEnd::frameThatCannotBeAskedForEndsTheSearch()
{
    const auto source = sourceAt(0);
    source->answersAtOnce = false;
    source->result = -1;
    source->imgSearch()->start(true);
    QCOMPARE(source->imgSearch()->state(), ImgSearch::Idle);
    QTRY_VERIFY(!source->requested);
}

void TestImgSearchEnd::frameThatIsNoFrameEndsTheSearch()
{
    const auto source = sourceAt(0);
    source->answersAtOnce = false;
    source->imgSearch()->start(true);
    source->answer();
    QVERIFY(reads(*source, 10));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^Frame refused: impossible size")));
    source->requested->init({}, 0, 0, 0, 0, 0);
    QVERIFY(ends(*source));
    QCOMPARE(source->fr(), 0);
    QTRY_VERIFY(!source->requested);
}

void TestImgSearchEnd::frameOfAnotherSizeEndsTheSearch()
{
    const auto source = sourceAt(0);
    source->answersAtOnce = false;
    source->imgSearch()->start(true);
    source->answer();
    QVERIFY(reads(*source, 10));
    source->size = {4, 4};
    source->pixels = [](qlonglong) { return QByteArray(16, '\xff'); };
    source->answer();
    QVERIFY(ends(*source));
    QCOMPARE(source->fr(), 0);
}

void TestImgSearchEnd::handlerThatCancelsEndsTheReading()
{
    const auto source = sourceAt(0);
    ImgSearch *search = source->imgSearch();
    connect(search, &ImgSearch::frChanged, search, [search] {
        if (search->fr() == 20)
            search->cancel();
    });
    search->start(true);
    QVERIFY(ends(*source));
    QCOMPARE(source->asked, (Numbers{0, 10}));
    QCOMPARE(source->fr(), 0);
}

void TestImgSearchEnd::searchBegunByAHandlerGoesOn_data()
{
    QTest::addColumn<QByteArray>("signal");
    QTest::newRow("state of the search") << QByteArray(SIGNAL(stateChanged()));
    QTest::newRow("frame of the search") << QByteArray(SIGNAL(frChanged()));
    QTest::newRow("state of the source") << QByteArray("source");
}

/** Starts a search backwards as soon as it is told of something. */
class Restarter : public QObject
{
    Q_OBJECT

public:
    explicit Restarter(ImgSearch *search) : m_search(search) {}

public slots:
    void restart()
    {
        if (!std::exchange(m_done, true))
            m_search->start(false);
    }

private:
    ImgSearch *m_search;
    bool m_done = false;
};

void TestImgSearchEnd::searchBegunByAHandlerGoesOn()
{
    QFETCH(const QByteArray, signal);
    for (int round = 0; round < 20; ++round) {
        const auto source = sourceAt(50);
        ImgSearch *search = source->imgSearch();
        Restarter restarter(search);
        if (signal == "source")
            connect(source.get(), &PlaybackVeskObject::stateChanged, &restarter, &Restarter::restart);
        else
            connect(search, signal.constData(), &restarter, SLOT(restart()));
        search->start(true);
        QVERIFY(QTest::qWaitFor([&] { return search->state() == ImgSearch::Idle && source->fr() == 0; }));
        QCOMPARE(source->asked.last(), 0); // backwards to the start of the range
    }
}

void TestImgSearchEnd::quitEndsTheSearch()
{
    const auto source = sourceAt(0);
    source->answersAtOnce = false;
    source->imgSearch()->start(true);
    QMetaObject::invokeMethod(qApp, [] { QCoreApplication::quit(); }, Qt::QueuedConnection);
    QCoreApplication::exec();
    QCOMPARE(source->imgSearch()->state(), ImgSearch::Idle);
    QCOMPARE(source->fr(), 0);
}

/** A source with large frames that never differ. */
static std::unique_ptr<PlaybackSource> largeSource()
{
    auto source = sourceAt(0, 0, 1000000);
    source->size = {1280, 1024};
    const QByteArray pixels(1280 * 1024, '\x40');
    source->pixels = [pixels](qlonglong) { return pixels; };
    source->imgSearch()->setStep(1);
    return source;
}

void TestImgSearchEnd::quitWhileFramesAreComparedEndsTheSearch()
{
    const auto source = largeSource();
    source->imgSearch()->start(true);
    // While the worker compares what has just been read.
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] {
        if (source->asked.size() > 2)
            QCoreApplication::quit();
    });
    timer.start(0);
    QCoreApplication::exec();
    QCOMPARE(source->imgSearch()->state(), ImgSearch::Idle);
    QCOMPARE(source->fr(), 0);
}

void TestImgSearchEnd::windowWaitsForOneComparisonAtMost()
{
    const auto source = largeSource();
    // What a frame costs: all of it is the worker's, the source answers at once.
    QElapsedTimer timer;
    timer.start();
    source->imgSearch()->start(true);
    QVERIFY(reads(*source, 40));
    const double comparisonMs = double(timer.elapsed()) / 40;
    // Cancelled at any point of a comparison.
    double longestMs = 0;
    for (int round = 0; round < 10; ++round) {
        source->imgSearch()->start(true);
        const auto already = source->asked.size();
        QVERIFY(QTest::qWaitFor([&] { return source->asked.size() > already + 2 + round % 3; }));
        timer.restart();
        source->imgSearch()->cancel();
        longestMs = std::max(longestMs, double(timer.nsecsElapsed()) * 1e-6);
    }
    // The factor and the rest are for a machine that does other things meanwhile.
    QVERIFY2(longestMs <= 3 * comparisonMs + 30,
             qPrintable(QStringLiteral("%1 ms of %2 ms").arg(longestMs).arg(comparisonMs)));
}

void TestImgSearchEnd::sourceMayGoInMidSearch()
{
    for (int i = 0; i < 20; ++i) {
        auto source = sourceAt(0, 0, 100000);
        source->imgSearch()->setStep(1);
        source->imgSearch()->start(true);
        for (int round = 0; round < i; ++round)
            QCoreApplication::processEvents();
        const QPointer<ImgSearch> search = source->imgSearch();
        source.reset();
        QVERIFY(!search);
    }
}

void TestImgSearchEnd::noFrameIsLeftBehind()
{
    const auto source = sourceAt(0);
    source->pixels = [](qlonglong fr) { return onePixel(fr >= 50 ? 255 : 0); };
    source->imgSearch()->start(true);
    QVERIFY(ends(*source));
    QTRY_COMPARE(source->imgSearch()->findChildren<RawFrame *>().size(), 0);
}

VESK_TEST_MAIN(TestImgSearchEnd)
#include "tst_img_search_end.moc"
