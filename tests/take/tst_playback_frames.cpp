#include "tests/support/playback_source.h"
#include "tests/support/vesk_test_main.h"

#include <QSignalSpy>

#include <algorithm>

namespace
{
constexpr qint64 StepNs = 33333333;
constexpr qint64 TickNs = 16666666;
constexpr qint64 MsNs = 1000000;
} // namespace

/** Which frames a source asks for, and what is on screen. */
class TestPlaybackFrames : public QObject
{
    Q_OBJECT

private slots:
    void currentFrameIsAskedFor()
    {
        PlaybackSource source;
        source.open(-10, 10);
        QVERIFY(source.asked.isEmpty());
        source.setSelected(true);
        QCOMPARE(source.asked, QList<qlonglong>{-10});
        source.answer();
        source.setFr(-7);
        QCOMPARE(source.asked, (QList<qlonglong>{-10, -7}));
        QCOMPARE(source.requestFrame(), -1);
        source.answer();
        QCOMPARE(source.requestFrame(), 0);
        QCOMPARE(source.asked, (QList<qlonglong>{-10, -7, -7}));
    }

    void selectionAsksForAFrameOnlyWhileNothingIsOnScreen()
    {
        PlaybackSource source;
        source.setSelected(true);
        QVERIFY(source.asked.isEmpty()); // the values are not in
        source.setSelected(false);
        source.open(0, 0); // it plays, and of one frame none falls due
        source.setSelected(true);
        QCOMPARE(source.asked, QList<qlonglong>{0});
        source.answer();
        QCOMPARE(source.imgFrame()->image().size(), QSize(2, 2));
        source.setSelected(false);
        source.setSelected(true);
        QCOMPARE(source.asked, QList<qlonglong>{0});
        source.pause();
        source.setSelected(false);
        source.imgFrame()->setImage({});
        source.setSelected(true);
        QCOMPARE(source.asked, (QList<qlonglong>{0, 0}));
    }

    void pausedSourceThatMovedMeanwhileAsksForItsFrameWhenItIsSelected()
    {
        PlaybackSource source;
        source.setSelected(true);
        source.open(0, 100);
        source.answer();
        source.pause();
        source.setSelected(false);
        source.setFr(30);
        QCOMPARE(source.asked, QList<qlonglong>{0});
        source.setSelected(true); // at once, not with the next tick
        QCOMPARE(source.asked, (QList<qlonglong>{0, 30}));
        source.answer();
        QCOMPARE(source.veskFrame()->seconds(), 30U);
        source.setSelected(false);
        source.setSelected(true); // it shows what it should
        source.tick();
        QCOMPARE(source.asked, (QList<qlonglong>{0, 30}));
    }

    void slowFramesAreSkippedNeverQueued()
    {
        PlaybackSource source;
        source.setSelected(true);
        source.open(0, 1000);
        source.answer();
        source.asked.clear();
        QSignalSpy shown(&source, &VeskObject::timestampChanged);

        const qint64 startNs = *source.nowNs;
        qint64 askedNs = 0;
        for (int tick = 1; tick <= 180; ++tick) {
            const qsizetype before = source.asked.size();
            source.pass(TickNs);
            QCOMPARE(source.fr(), (*source.nowNs - startNs) / StepNs);
            if (source.asked.size() > before) {
                QCOMPARE(source.asked.size(), before + 1);
                QCOMPARE(source.asked.last(), source.fr());
                askedNs = *source.nowNs;
            }
            if (source.frameInFlight() && *source.nowNs - askedNs >= 200 * MsNs) {
                source.answer();
                QCOMPARE(qlonglong(source.veskFrame()->seconds()), source.asked.last());
            }
        }
        // Three seconds: a new frame every 200 to 250 ms, and numbers left out in between.
        QVERIFY2(source.asked.size() >= 12 && source.asked.size() <= 15,
                 qPrintable(QString::number(source.asked.size())));
        for (int i = 1; i < source.asked.size(); ++i)
            QVERIFY(source.asked[i] - source.asked[i - 1] >= 6);
        QVERIFY(shown.count() >= 11);
    }

    void pausedSourceGetsTheFrameThatWasRefused()
    {
        PlaybackSource source;
        source.setSelected(true);
        source.open(0, 1000);
        source.answer();
        source.pass(StepNs);
        source.pass(4 * StepNs);
        source.pause();
        QCOMPARE(source.fr(), 5);
        QCOMPARE(source.asked, (QList<qlonglong>{0, 1}));
        for (int i = 0; i < 5; ++i)
            source.pass(TickNs);
        QCOMPARE(source.asked, (QList<qlonglong>{0, 1}));

        source.answer();
        QCOMPARE(source.veskFrame()->seconds(), 1);
        source.pass(TickNs);
        QCOMPARE(source.asked, (QList<qlonglong>{0, 1, 5}));
        source.answer();
        QCOMPARE(source.veskFrame()->seconds(), 5);
        for (int i = 0; i < 5; ++i)
            source.pass(TickNs);
        QCOMPARE(source.asked, (QList<qlonglong>{0, 1, 5}));
        QCOMPARE(source.fr(), 5);
    }

    void scrubThatMeetsAFrameInFlightEndsOnItsLastPosition()
    {
        PlaybackSource source;
        source.setSelected(true);
        source.open(0, 1000);
        source.answer();
        source.pause();
        for (const qlonglong fr : {10, 20, 30, 40})
            source.setFr(fr);
        QCOMPARE(source.asked, (QList<qlonglong>{0, 10}));
        source.answer();
        source.tick();
        QCOMPARE(source.asked, (QList<qlonglong>{0, 10, 40}));
    }

    void pausedSourceOutsideOfItsMarkersIsBroughtInWhenItAsksAgain()
    {
        PlaybackSource source;
        source.setSelected(true);
        source.open(0, 100);
        source.pause();
        source.setFr(30);
        source.setAFr(40);
        source.answer();
        source.tick();
        QCOMPARE(source.fr(), 40);
        QCOMPARE(source.asked, (QList<qlonglong>{0, 40}));
    }

    void failedFrameIsNotAskedForAgain()
    {
        PlaybackSource source;
        source.setSelected(true);
        source.open(0, 100);
        source.answer();
        source.pause();
        source.setFr(3);
        source.fail();
        source.tick();
        source.tick();
        QCOMPARE(source.asked, (QList<qlonglong>{0, 3}));
        QCOMPARE(source.veskFrame()->seconds(), 0);
    }

    void failedFrameDoesNotStopPlay()
    {
        PlaybackSource source;
        source.setSelected(true);
        source.open(0, 100);
        source.fail();
        source.pass(StepNs);
        source.fail();
        source.pass(StepNs);
        QCOMPARE(source.asked, (QList<qlonglong>{0, 1, 2}));
    }

    void sourceWithFramesAtHandShowsEveryOne()
    {
        PlaybackSource source;
        source.answersAtOnce = true;
        source.setSelected(true);
        source.open(0, 100);
        for (int i = 1; i <= 5; ++i) {
            source.pass(StepNs);
            QCOMPARE(source.veskFrame()->seconds(), quint32(i));
        }
        QCOMPARE(source.asked, (QList<qlonglong>{0, 1, 2, 3, 4, 5}));
    }

    void refreshAsksAgainOnlyAtRest()
    {
        PlaybackSource source;
        source.answersAtOnce = true;
        source.setSelected(true);
        source.open(0, 100);
        source.refreshIfPaused();
        QCOMPARE(source.asked, QList<qlonglong>{0});
        source.pause();
        source.refreshIfPaused();
        QCOMPARE(source.asked, (QList<qlonglong>{0, 0}));
    }

    void adjustmentWhileAFrameIsOnItsWayShowsWithThatFrame()
    {
        PlaybackSource source;
        source.pixels = [](qlonglong) { return QByteArray("\xff\0\0\0", 4); };
        source.setSelected(true);
        source.open(0, 100);
        source.answer();
        source.pause();
        source.setFr(4);
        QCOMPARE(source.asked.size(), 2);
        source.imgAdjModel()->setFlipH(true);
        source.imgAdjModel()->setFlipV(true);
        source.imgAdjModel()->setFlipH(false);
        source.tick();
        QCOMPARE(source.asked.size(), 2);
        source.answer();
        // Flipped upside down only: the bright pixel has come from the top left to the bottom left.
        QCOMPARE(source.imgFrame()->image().pixelColor(0, 1), QColor(Qt::white));
        QCOMPARE(source.imgFrame()->image().pixelColor(0, 0), QColor(Qt::black));
        source.imgAdjModel()->setFlipV(false);
        QCOMPARE(source.asked, (QList<qlonglong>{0, 4, 4}));
        source.answer();
        QCOMPARE(source.imgFrame()->image().pixelColor(0, 0), QColor(Qt::white));
    }

    void frameThatCouldNotStartCountsAsAskedFor()
    {
        PlaybackSource source;
        source.setSelected(true);
        source.open(0, 100);
        source.answer();
        source.pause();
        source.result = -1;
        source.setFr(9);
        QVERIFY(!source.frameInFlight());
        source.tick();
        QCOMPARE(source.asked, (QList<qlonglong>{0, 9}));
    }

    void timeOfAFrameStartsWithTheYearOfTheRecording()
    {
        PlaybackSource source;
        source.updateValues({{"meta", QJsonObject{{"year_offset", 1735689600}}}});
        QCOMPARE(source.yearOffset(), 1735689600);
    }
};

VESK_TEST_MAIN(TestPlaybackFrames)
#include "tst_playback_frames.moc"
