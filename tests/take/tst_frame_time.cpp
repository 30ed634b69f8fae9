#include "take/frame_time.h"

#include <QTest>

/** The text of a frame's time. */
class TestFrameTime : public QObject
{
    Q_OBJECT

private slots:
    void textHasNineDigitsBehindTheSeconds_data()
    {
        QTest::addColumn<quint64>("yearOffset");
        QTest::addColumn<quint32>("seconds");
        QTest::addColumn<quint32>("nanoseconds");
        QTest::addColumn<QString>("text");
        // 2025-01-01 is 1735689600; 14 March is day 72, 09:26:53 is 34013 s.
        QTest::newRow("within the year")
            << 1735689600ULL << quint32(72 * 86400 + 34013) << 589793238U << "2025-03-14T09:26:53.589793238Z";
        QTest::newRow("few nanoseconds") << 0ULL << 0U << 5U << "1970-01-01T00:00:00.000000005Z";
        QTest::newRow("more than a second") << 0ULL << 1U << 1073741823U << "1970-01-01T00:00:02.1073741823Z";
        QTest::newRow("beyond every date") << ~0ULL / 2000 << 0U << 0U << "";
    }

    void textHasNineDigitsBehindTheSeconds()
    {
        QFETCH(quint64, yearOffset);
        QFETCH(quint32, seconds);
        QFETCH(quint32, nanoseconds);
        QTEST(frameTimestamp(yearOffset, seconds, nanoseconds), "text");
    }
};

QTEST_GUILESS_MAIN(TestFrameTime)
#include "tst_frame_time.moc"
