#include "take/play_range.h"

#include <QTest>

#include <limits>

/** Where the playhead and the markers may stand. */
class TestPlayRange : public QObject
{
    Q_OBJECT

private slots:
    void numbersKeepTheirPlace_data()
    {
        QTest::addColumn<qint64>("fr");
        QTest::addColumn<qint64>("clamped");
        QTest::addColumn<qint64>("wrapped");
        QTest::addColumn<qint64>("clampedA");
        QTest::addColumn<qint64>("clampedB");
        // The source holds -100 to 200, A stands at -20 and B at 50.
        QTest::newRow("far before") << qint64(-5000000000) << -20LL << 50LL << -100LL << -20LL;
        QTest::newRow("before the first") << -101LL << -20LL << 50LL << -100LL << -20LL;
        QTest::newRow("first") << -100LL << -20LL << 50LL << -100LL << -20LL;
        QTest::newRow("before A") << -21LL << -20LL << 50LL << -21LL << -20LL;
        QTest::newRow("A") << -20LL << -20LL << -20LL << -20LL << -20LL;
        QTest::newRow("trigger") << 0LL << 0LL << 0LL << 0LL << 0LL;
        QTest::newRow("B") << 50LL << 50LL << 50LL << 50LL << 50LL;
        QTest::newRow("behind B") << 51LL << 50LL << -20LL << 50LL << 51LL;
        QTest::newRow("last") << 200LL << 50LL << -20LL << 50LL << 200LL;
        QTest::newRow("behind the last") << 201LL << 50LL << -20LL << 50LL << 200LL;
        QTest::newRow("far behind") << qint64(5000000000) << 50LL << -20LL << 50LL << 200LL;
    }
    void numbersKeepTheirPlace()
    {
        const PlayRange range{-100, 200, -20, 50};
        QFETCH(qint64, fr);
        QTEST(range.clamped(fr), "clamped");
        QTEST(range.wrapped(fr), "wrapped");
        QTEST(range.clampedA(fr), "clampedA");
        QTEST(range.clampedB(fr), "clampedB");
    }

    void markersThatNobodySetLeaveTheFramesHeldAsTheRange()
    {
        const PlayRange range{-5, 5, std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max()};
        QVERIFY(range.isBefore(-6));
        QVERIFY(!range.isBefore(-5));
        QVERIFY(!range.isBehind(5));
        QVERIFY(range.isBehind(6));
        QCOMPARE(range.clampedA(-6), -5);
        QCOMPARE(range.clampedB(6), 5);
    }

    void rangeOfOneFrameHoldsItAlone()
    {
        const PlayRange range{7, 7, 7, 7};
        for (const qint64 fr : {6LL, 7LL, 8LL}) {
            QCOMPARE(range.clamped(fr), 7);
            QCOMPARE(range.wrapped(fr), 7);
            QCOMPARE(range.clampedA(fr), 7);
            QCOMPARE(range.clampedB(fr), 7);
        }
    }
};

QTEST_APPLESS_MAIN(TestPlayRange)
#include "tst_play_range.moc"
