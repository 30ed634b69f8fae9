#include "camera/setting_lists.h"
#include "tests/camera/walked_frame_rates.h"

#include <QRandomGenerator>
#include <QTest>

#include <map>

using namespace Qt::StringLiterals;

static constexpr uint ClkFreq = 100000000;

/** The menus of rates and exposures against the plain walk over every count, on clocks of all kinds. */
class TestSettingWalks : public QObject
{
    Q_OBJECT

private:
    /** The exposures step by step, with the two rules of the grid written out. */
    static QStringList steppedExposures(const ExposureTiming &timing)
    {
        const qint64 c = timing.clkFreq;
        const qint64 m = timing.clksMult;
        const qint64 o = timing.clksOffset;
        const auto atLeastZero = [](qint64 x) { return x < 0 ? 0 : x; };
        const auto down = [=](qint64 x) { return atLeastZero((x - o) - ((x - o) % m) + o); };
        const auto up = [=](qint64 x) { return atLeastZero((x - o - 1 + m) - ((x - o - 1 + m) % m) + o); };
        std::map<double, QString, std::greater<>> entries;
        const auto add = [&](qint64 x) {
            const QString text = QString::number(double(x) / double(c) * 1e6, 'f', 3);
            entries.emplace(text.toDouble(), text);
        };
        const qint64 top = down(timing.clksMax);
        add(timing.clks);
        add(top);
        add(timing.clksMin);
        for (int t = 10; t <= 100 && up(t * c / 1000000) <= top; t += 10)
            add(up(t * c / 1000000));
        for (int t = 1; t <= 9 && up(t * c / 1000000) <= top; ++t)
            add(up(t * c / 1000000));
        for (qint64 x = up(timing.clksMin); x < up(c / 1000000) && x <= top; x += m)
            add(x);
        QStringList texts;
        for (const auto &[us, text] : entries)
            texts << text;
        return texts;
    }

    static uint nextPrime(uint from)
    {
        const auto prime = [](uint n) {
            for (uint d = 2; d <= n / d; ++d) {
                if (n % d == 0)
                    return false;
            }
            return n > 1;
        };
        while (!prime(from))
            ++from;
        return from;
    }

    /** Clocks with many divisors, with few and with none, not only of whole thousands. */
    static uint randomClock(QRandomGenerator &random, int kind)
    {
        switch (kind) {
        case 0:
            return 1000u * (1 + random.bounded(60u)) * (1 + random.bounded(40u)) * (1 + random.bounded(30u));
        case 1:
            return random.generate();
        case 2:
            return nextPrime(random.bounded(10000000u));
        case 3:
            return 1000 * nextPrime(random.bounded(4000000u));
        default:
            return 1000 * random.bounded(4294967u);
        }
    }

    /** A range whose ends lie on a pair of divisors or one count beside. */
    static void takeBorders(QRandomGenerator &random, FrameTiming *timing)
    {
        const uint product = std::max(timing->clkFreq / 1000, 1u);
        uint divisor = 1 + random.bounded(std::min(product, 3000u));
        while (product % divisor != 0)
            --divisor;
        const uint end = std::max(random.bounded(2) ? divisor : product / divisor, 2u);
        if (random.bounded(2)) {
            timing->clksMin = end - 1 + random.bounded(3u);
            timing->clksMax = timing->clksMin + random.bounded(2000u);
        } else {
            timing->clksMax = end - 1 + random.bounded(3u);
            timing->clksMin = timing->clksMax - random.bounded(std::min(timing->clksMax, 2000u));
        }
    }

    static FrameTiming randomTiming(QRandomGenerator &random, int round)
    {
        FrameTiming timing{.clkFreq = randomClock(random, round % 5),
                           .clks = 1 + random.bounded(100000u),
                           .clksMin = 1 + random.bounded(5000u),
                           .clksMax = 0};
        switch (round / 5 % 4) {
        case 0:
            timing.clksMax = timing.clksMin + random.bounded(5000u);
            break;
        case 1:
            timing.clksMax = timing.clksMin;
            break;
        case 2:
            timing.clksMax = random.bounded(timing.clksMin);
            break;
        default:
            takeBorders(random, &timing);
        }
        return timing;
    }

private slots:
    void frameRatesEqualThePlainWalk_data()
    {
        QTest::addColumn<uint>("clkFreq");
        QTest::addColumn<uint>("clks");
        QTest::addColumn<uint>("clksMin");
        QTest::addColumn<uint>("clksMax");
        QTest::newRow("whole range") << ClkFreq << 1000u << 1u << 200000u;
        QTest::newRow("empty range") << ClkFreq << 1000u << 2000u << 1999u;
        QTest::newRow("one count") << ClkFreq << 1000u << 2000u << 2000u;
        QTest::newRow("square") << 1000u * 300 * 300 << 300u << 299u << 301u;
        QTest::newRow("clock that stands still") << 0u << 7u << 3u << 9u;
        QTest::newRow("clock that stands still, empty range") << 0u << 7u << 3u << 2u;
        QTest::newRow("clock below a thousand") << 999u << 7u << 1u << 2000u;
        QTest::newRow("clock of a thousand") << 1000u << 7u << 1u << 2000u;
        QTest::newRow("clock that is no multiple of a thousand") << 99999999u << 7u << 1u << 100000u;
        QTest::newRow("fastest clock") << 4294967000u << 50000u << 1u << 300000u;
        QTest::newRow("ten million counts") << ClkFreq << 50000u << 1000u << 10000000u;
        QTest::newRow("prime clock") << 99999989u << 7u << 1u << 100000u;
    }

    void frameRatesEqualThePlainWalk()
    {
        QFETCH(uint, clkFreq);
        QFETCH(uint, clks);
        QFETCH(uint, clksMin);
        QFETCH(uint, clksMax);
        const FrameTiming timing{.clkFreq = clkFreq, .clks = clks, .clksMin = clksMin, .clksMax = clksMax};
        QCOMPARE(frameRateEntries(timing).texts, walkedFrameRates(timing));
    }

    void frameRatesEqualThePlainWalkOnRandomClocks()
    {
        QRandomGenerator random(20261121);
        for (int round = 0; round < 6000; ++round) {
            const FrameTiming timing = randomTiming(random, round);
            const QStringList texts = frameRateEntries(timing).texts;
            QVERIFY2(texts == walkedFrameRates(timing),
                     qPrintable(u"clock %1, now %2, %3 to %4: %5"_s.arg(timing.clkFreq)
                                    .arg(timing.clks)
                                    .arg(timing.clksMin)
                                    .arg(timing.clksMax)
                                    .arg(texts.join(u' '))));
        }
    }

    void exposuresEqualThoseOfTheRulesOnRandomGrids()
    {
        QRandomGenerator random(20261122);
        for (int round = 0; round < 4000; ++round) {
            const ExposureTiming timing{.clkFreq = 1 + random.bounded(round % 2 ? 300000000 : 3000000),
                                        .clks = random.bounded(100000),
                                        .clksMin = random.bounded(400),
                                        .clksMax = random.bounded(round % 3 ? 30000 : 300),
                                        .clksMult = 1 + random.bounded(60),
                                        .clksOffset = random.bounded(200) - 50};
            const QStringList texts = exposureEntries(timing).texts;
            QVERIFY2(texts == steppedExposures(timing),
                     qPrintable(u"clock %1, now %2, %3 to %4, %5 + k * %6: %7"_s.arg(timing.clkFreq)
                                    .arg(timing.clks)
                                    .arg(timing.clksMin)
                                    .arg(timing.clksMax)
                                    .arg(timing.clksOffset)
                                    .arg(timing.clksMult)
                                    .arg(texts.join(u' '))));
        }
    }
};

QTEST_GUILESS_MAIN(TestSettingWalks)
#include "tst_setting_walks.moc"
