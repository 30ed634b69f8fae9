#include "camera/setting_lists.h"

#include <QJsonArray>
#include <QTest>

#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

static constexpr uint ClkFreq = 100000000;

/** The menus as texts, against numbers worked by hand. */
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

    /** True when the process does not outlive it. */
    template <class Function> static bool endsTheProcess(Function function)
    {
        const pid_t child = fork();
        if (child == 0) {
            dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
            signal(SIGFPE, SIG_DFL);
            [[maybe_unused]] volatile bool result = function();
            _exit(0);
        }
        int status = 0;
        return waitpid(child, &status, 0) == child && !(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }

private slots:
    void exposuresRunFromTheLongestToTheGridBelowAMicrosecond()
    {
        const QString expected =
            u"2000.000 100.000 90.000 80.000 70.000 60.000 50.000 40.000 30.000 20.000 10.000 9.000 8.000 "
            u"7.000 "
            u"6.000 5.000 4.000 3.000 2.000 1.000 0.990 0.980 0.970 0.960 0.950 0.940 0.930 0.920 "
            u"0.910 0.900 0.890 0.880 0.870 0.860 0.850 0.840 0.830 0.820 0.810 0.800 0.790 0.780 "
            u"0.770 0.760 0.750 0.740 0.730 0.720 0.710 0.700 0.690 0.680 0.670 0.660 0.650 0.640 "
            u"0.630 0.620 0.610 0.600 0.590 0.580 0.570 0.560 0.550 0.540 0.530 0.520 0.510 0.500 "
            u"0.490 0.480 0.470 0.460 0.450 0.440 0.430 0.420 0.410 0.400 0.390 0.380 0.370 0.360 "
            u"0.350 0.340 0.330 0.320 0.310 0.300 0.290 0.280 0.270 0.260 0.250 0.240 0.230 0.220 "
            u"0.210 0.200 0.190 0.180 0.170 0.160 0.150 0.140 0.130 0.120 0.110 0.100"_s;
        const SettingEntries entries = exposureEntries(exposure());
        QCOMPARE(entries.texts, expected.split(u' '));
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

    void gridPointsBelowNothingCountAsNothing()
    {
        ExposureTiming timing = exposure();
        timing.clksOffset = -50;
        timing.clksMult = 100; // grid -50, 50, 150
        timing.clksMax = 10;
        timing.clksMin = 5;
        QCOMPARE(exposureEntries(timing).texts, QStringList({u"10.000"_s, u"0.050"_s, u"0.000"_s}));
    }

    void limitBelowTheOffsetSnapsTowardsIt()
    {
        // (200 - 1000) cut to a multiple of 600 is -600, and so the longest exposure is 400 clocks.
        ExposureTiming timing = exposure();
        timing.clksOffset = 1000;
        timing.clksMult = 600;
        timing.clksMax = 200;
        timing.clksMin = 20;
        QCOMPARE(exposureEntries(timing).texts, QStringList({u"10.000"_s, u"4.000"_s, u"0.200"_s}));
    }

    void clockThatStandsStillExposesForever()
    {
        ExposureTiming timing = exposure();
        timing.clkFreq = 0;
        const SettingEntries entries = exposureEntries(timing);
        QCOMPARE(entries.texts, QStringList(u"inf"_s));
        QCOMPARE(entries.current, u"inf"_s);
    }

    // By contract a camera never tells these; a guard here would only hide that one does.
    void divisorOfZeroEndsTheProcess()
    {
        const FrameTiming good{.clkFreq = ClkFreq, .clks = 50000, .clksMin = 1000, .clksMax = 2000};
        QVERIFY(!endsTheProcess([=] { return !frameRateEntries(good).texts.isEmpty(); }));
        FrameTiming timing = good;
        timing.clks = 0;
        QVERIFY(endsTheProcess([=] { return !frameRateEntries(timing).texts.isEmpty(); }));
        timing = good;
        timing.clksMin = 0;
        QVERIFY(endsTheProcess([=] { return !frameRateEntries(timing).texts.isEmpty(); }));
        ExposureTiming exposed = exposure();
        exposed.clksMult = 0;
        QVERIFY(endsTheProcess([=] { return !exposureEntries(exposed).texts.isEmpty(); }));
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
