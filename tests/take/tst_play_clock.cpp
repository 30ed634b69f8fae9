#include "take/play_clock.h"

#include <QTest>

#include <cmath>
#include <limits>

/** When which frame is due. */
class TestPlayClock : public QObject
{
    Q_OBJECT

private slots:
    void rateGivesThePeriod_data()
    {
        QTest::addColumn<double>("frRate");
        QTest::addColumn<qint64>("periodNs");
        QTest::newRow("59.94") << 59.94 << qint64(16683333);
        QTest::newRow("29.97") << 29.97 << qint64(33366666);
        QTest::newRow("23.98") << 23.98 << qint64(41708333);
        QTest::newRow("23.976") << 23.976 << qint64(41708333);
        QTest::newRow("a hair beside 59.94") << 59.94 + 1e-12 << qint64(16683333);
        // 1e9 / 59.941 = 16683071.687
        QTest::newRow("beside a video rate") << 59.941 << qint64(16683071);
        QTest::newRow("30") << 30.0 << qint64(33333333);
        QTest::newRow("240") << 240.0 << qint64(4166666);
        QTest::newRow("lowest") << 0.1 << qint64(10000000000);
        QTest::newRow("zero") << 0.0 << qint64(10000000000);
        QTest::newRow("negative") << -30.0 << qint64(10000000000);
        QTest::newRow("no number") << std::nan("") << qint64(10000000000);
        QTest::newRow("highest") << 10000000.0 << qint64(100);
        QTest::newRow("beyond") << 100000000.0 << qint64(100);
        QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << qint64(100);
    }
    void rateGivesThePeriod()
    {
        QFETCH(double, frRate);
        QTEST(playPeriodNs(frRate), "periodNs");
    }

    void frameIsDueWhenItsWholeStepHasPassed()
    {
        qint64 now = 5;
        PlayClock clock([&now] { return now; });
        clock.restart(-3);
        QCOMPARE(clock.dueFr(1000, 2), -3);
        now = 1004;
        QCOMPARE(clock.dueFr(1000, 2), -3);
        now = 1005;
        QCOMPARE(clock.dueFr(1000, 2), -1);
        now = 7004;
        QCOMPARE(clock.dueFr(1000, 2), 9);
        QCOMPARE(clock.dueFr(1000, -10), -63);
        QCOMPARE(clock.dueFr(1000, 0), -3);
        clock.restart(100);
        QCOMPARE(clock.dueFr(1000, 2), 100);
    }

    void numbersStopAtTheEndsOfTheScale()
    {
        constexpr qint64 Lowest = std::numeric_limits<qint64>::min();
        constexpr qint64 Highest = std::numeric_limits<qint64>::max();
        qint64 now = 0;
        PlayClock clock([&now] { return now; });
        clock.restart(Lowest);
        now = 1000;
        QCOMPARE(clock.dueFr(100, -1), Lowest);
        QCOMPARE(clock.dueFr(100, 1), Lowest + 10);
        clock.restart(Highest);
        now = 2000;
        QCOMPARE(clock.dueFr(100, 1), Highest);
        QCOMPARE(clock.dueFr(100, -1), Highest - 10);
        // Half a day asleep at the highest rate and the widest step.
        clock.restart(0);
        now += 12LL * 3600 * 1000000000;
        QCOMPARE(clock.dueFr(100, 100000000), Highest);
        QCOMPARE(clock.dueFr(100, -100000000), Lowest);
    }

    void systemClockMovesOn()
    {
        PlayClock clock;
        clock.restart(0);
        QTRY_VERIFY(clock.dueFr(1000000, 1) > 0);
    }
};

QTEST_APPLESS_MAIN(TestPlayClock)
#include "tst_play_clock.moc"
