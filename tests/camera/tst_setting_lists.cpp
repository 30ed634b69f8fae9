#include "camera/setting_lists.h"

#include <QJsonArray>
#include <QMap>
#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;

static constexpr uint ClkFreq = 100000000;

/** The menus as texts, against numbers worked by hand and against the plain walk over every count. */
class TestSettingLists : public QObject
{
    Q_OBJECT

private:
    static ExposureTiming exposure()
    {
        return {.clkFreq = int(ClkFreq),
                .clks = 1000,
                .clksMin = 10,
                .clksMax = 200000,
                .clksMult = 1,
                .clksOffset = 0};
    }

    /** The plain walk: every count of clocks of the range, one at a time. */
    static QStringList walkedFrameRates(const FrameTiming &timing)
    {
        QMap<double, QString> entries;
        const auto add = [&](uint rate) { entries.insert(double(rate), QString::number(rate)); };
        add(timing.clkFreq / timing.clks);
        add(timing.clkFreq / timing.clksMin);
        for (uint clks = timing.clksMin; clks <= timing.clksMax; ++clks) {
            if (timing.clkFreq % clks == 0 && (timing.clkFreq / clks) % 1000 == 0)
                add(timing.clkFreq / clks);
        }
        QStringList texts = entries.values();
        std::reverse(texts.begin(), texts.end());
        return texts;
    }

private slots:
    void exposuresRunFromTheLongestToTheGridBelowAMicrosecond()
    {
        QStringList expected{u"2000.000"_s};
        for (int us = 100; us >= 10; us -= 10)
            expected << QString::number(us) + u".000"_s;
        for (int us = 9; us >= 1; --us)
            expected << QString::number(us) + u".000"_s;
        for (int hundredths = 99; hundredths >= 10; --hundredths)
            expected << u"0.%1"_s.arg(hundredths) + u"0"_s;
        const SettingEntries entries = exposureEntries(exposure());
        QCOMPARE(entries.texts, expected);
        QCOMPARE(entries.current, u"10.000"_s);
        QCOMPARE(entries.texts.count(u"10.000"_s), 1);
    }

    void exposureOffTheGridIsListed()
    {
        ExposureTiming timing = exposure();
        timing.clks = 123457; // 1234.57 us
        timing.clksMult = 100;
        QVERIFY(exposureEntries(timing).texts.contains(u"1234.570"_s));
        QCOMPARE(exposureEntries(timing).current, u"1234.570"_s);
    }

    void exactLowerLimitIsListedBesideTheGrid()
    {
        ExposureTiming timing = exposure();
        timing.clksMult = 40;
        timing.clksOffset = 15; // grid 15, 55, 95, 135
        timing.clksMin = 42;
        const QStringList texts = exposureEntries(timing).texts;
        // below 1 us (135 clocks): 55, 95; the limit of 42 clocks as it stands
        QVERIFY(texts.contains(u"0.420"_s));
        QVERIFY(texts.contains(u"0.550"_s));
        QVERIFY(texts.contains(u"0.950"_s));
        QVERIFY(!texts.contains(u"0.150"_s));
        // 1 us is the grid point at or above 100 clocks, 135; the top is 199975, at or below 200000
        QVERIFY(texts.contains(u"1.350"_s));
        QCOMPARE(texts.first(), u"1999.750"_s);
        QCOMPARE(texts.last(), u"0.420"_s);
    }

    void noExposureIsLongerThanTheGridAllows()
    {
        ExposureTiming timing = exposure();
        timing.clks = 10;
        timing.clksMax = 2500; // 25 us
        QStringList texts = exposureEntries(timing).texts;
        QCOMPARE(texts.mid(0, 4), QStringList({u"25.000"_s, u"20.000"_s, u"10.000"_s, u"9.000"_s}));
        timing.clksMax = 350;
        texts = exposureEntries(timing).texts;
        QCOMPARE(texts.mid(0, 4), QStringList({u"3.500"_s, u"3.000"_s, u"2.000"_s, u"1.000"_s}));
        timing.clksMax = 50;
        texts = exposureEntries(timing).texts;
        QCOMPARE(texts.first(), u"0.500"_s);
        QCOMPARE(texts.size(), 41); // 50 to 10 clocks
    }

    void frameRatesAreTheExactMultiplesOfAThousand()
    {
        const SettingEntries entries =
            frameRateEntries({.clkFreq = ClkFreq, .clks = 50000, .clksMin = 1000, .clksMax = 100000});
        // the divisors of 100000 up to 100, times 1000
        QCOMPARE(entries.texts, QStringList({u"100000"_s, u"80000"_s, u"50000"_s, u"40000"_s, u"32000"_s,
                                             u"25000"_s, u"20000"_s, u"16000"_s, u"10000"_s, u"8000"_s,
                                             u"5000"_s, u"4000"_s, u"2000"_s, u"1000"_s}));
        QCOMPARE(entries.current, u"2000"_s);
    }

    void currentRateAndFastestRateAreListedWhereverTheyLie()
    {
        const SettingEntries entries =
            frameRateEntries({.clkFreq = ClkFreq, .clks = 30011, .clksMin = 7777, .clksMax = 100000});
        QCOMPARE(entries.current, u"3332"_s);
        QCOMPARE(entries.texts, QStringList({u"12858"_s, u"10000"_s, u"8000"_s, u"5000"_s, u"4000"_s,
                                             u"3332"_s, u"2000"_s, u"1000"_s}));
    }

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
        QRandomGenerator random(20261121);
        for (int i = 0; i < 60; ++i) {
            const uint smooth =
                1000u * (1 + random.bounded(60u)) * (1 + random.bounded(40u)) * (1 + random.bounded(30u));
            const uint clkFreq = i % 3 ? smooth : random.generate();
            const uint clksMin = 1 + random.bounded(5000u);
            QTest::addRow("random %d", i)
                << clkFreq << 1 + random.bounded(100000u) << clksMin << clksMin + random.bounded(100000u);
        }
        QTest::newRow("fastest clock") << 4294967000u << 50000u << 1u << 300000u;
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

    void externalRateIsTheOnlyOne()
    {
        QCOMPARE(externalFrameRateEntries(1234.5678).texts, QStringList(u"1234.57"_s));
        QCOMPARE(externalFrameRateEntries(1234.5678).current, u"1234.57"_s);
        QCOMPARE(externalFrameRateEntries(2000000.0).texts, QStringList(u"2e+06"_s));
    }

    void triggerOffsetsAreFewFirst()
    {
        const SettingEntries entries = triggerOffsetEntries(500, 1000);
        QCOMPARE(entries.texts, QStringList({u"2"_s, u"500"_s, u"999"_s}));
        QCOMPARE(entries.texts.indexOf(entries.current), 1);
        QCOMPARE(triggerOffsetEntries(10, 1000).texts, QStringList({u"2"_s, u"10"_s, u"500"_s, u"999"_s}));
    }

    void emptyPartitionListsMinusOne()
    {
        QCOMPARE(triggerOffsetEntries(7, 0).texts, QStringList({u"-1"_s, u"0"_s, u"2"_s, u"7"_s}));
    }

    void fstopsLieBetweenTheLimits()
    {
        QCOMPARE(fstopEntries(22, 2.8),
                 QStringList({u"2.8"_s, u"3.2"_s, u"3.5"_s, u"4"_s, u"4.5"_s, u"5"_s, u"5.6"_s, u"6.3"_s,
                              u"7.1"_s, u"8"_s, u"9"_s, u"10"_s, u"11"_s, u"13"_s, u"14"_s, u"16"_s, u"18"_s,
                              u"20"_s, u"22"_s}));
    }

    void limitsThatAreSwappedGiveTheEndStopsOnly()
    {
        QCOMPARE(fstopEntries(2.8, 22), QStringList({u"2.8"_s, u"22"_s}));
    }

    void limitsOffTheTableAreNotListed()
    {
        QCOMPARE(fstopEntries(6.0, 4.2), QStringList({u"4.5"_s, u"5"_s, u"5.6"_s}));
        QCOMPARE(fstopEntries(0, 0), QStringList());
    }

    void fstopTextsAreShort()
    {
        QCOMPARE(fstopText(3.3), u"3.3"_s);
        QCOMPARE(fstopText(22.0), u"22"_s);
    }

    void resolutionsKeepTheCamerasOrderAndOnlyTexts()
    {
        QCOMPARE(resolutionEntries(QJsonArray{u"640x480"_s, 5, u"1280x1024"_s, QJsonValue(), u"320x240"_s}),
                 QStringList({u"640x480"_s, u"1280x1024"_s, u"320x240"_s}));
        QCOMPARE(resolutionEntries(QJsonValue(u"640x480"_s)), QStringList());
        QCOMPARE(resolutionEntries(QJsonValue(QJsonValue::Undefined)), QStringList());
    }

    void missingVideoFormatsAreTheCommonOnes()
    {
        const QStringList common{u"1280x720p23.98"_s, u"1280x720p24"_s,  u"1280x720p25"_s,
                                 u"1280x720p29.97"_s, u"1280x720p30"_s,  u"1280x720p50"_s,
                                 u"1280x720p59.94"_s, u"1280x720p60"_s,  u"1920x1080p23.98"_s,
                                 u"1920x1080p24"_s,   u"1920x1080p25"_s, u"1920x1080p29.97"_s,
                                 u"1920x1080p30"_s};
        QCOMPARE(videoFormatEntries(QJsonValue(QJsonValue::Undefined)), common);
        QCOMPARE(videoFormatEntries(QJsonValue(u"1280x720p60"_s)), common);
        QCOMPARE(videoFormatEntries(QJsonArray{}), QStringList());
        QCOMPARE(videoFormatEntries(QJsonArray{u"1920x1080p30"_s, 3}), QStringList(u"1920x1080p30"_s));
    }
};

QTEST_GUILESS_MAIN(TestSettingLists)
#include "tst_setting_lists.moc"
