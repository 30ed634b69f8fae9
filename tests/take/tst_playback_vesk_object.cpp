#include "tests/support/playback_source.h"
#include "tests/support/vesk_test_main.h"

#include <QChronoTimer>
#include <QMetaProperty>
#include <QSignalSpy>

#include <limits>

using namespace std::chrono_literals;

namespace
{
struct ValueRow {
    const char *property;
    const char *path;
    int type;
};

/** The record of a recording, written down a second time. */
const QList<ValueRow> valueRows{
    {"firstFr", "first_fr", QMetaType::Int},
    {"lastFr", "last_fr", QMetaType::Int},
    {"frCnt", "fr_cnt", QMetaType::Int},
    {"ptFrCnt", "pt_fr_cnt", QMetaType::Int},
    {"res", "acq/res", QMetaType::QString},
    {"bpp", "acq/bpp", QMetaType::Int},
    {nullptr, "acq/clk_freq", QMetaType::Int},
    {"expClks", "acq/exp_clks", QMetaType::Int},
    {"expTime", "acq/exp_time", QMetaType::Double},
    {"frClks", "acq/fr_clks", QMetaType::Int},
    {"frRate", "acq/fr_rate", QMetaType::Double},
    {"fsyncMode", "acq/fsync_mode", QMetaType::Int},
    {"fsyncState", "acq/fsync_state", QMetaType::Int},
    {"cameraName", "camera/name", QMetaType::QString},
    {"cameraSerial", "camera/serial", QMetaType::QString},
    {"cameraModel", "camera/model", QMetaType::QString},
    {"cfa", "camera/cfa", QMetaType::Int},
    {"fwVer", "camera/fw_ver", QMetaType::QString},
    {"metaSize", "meta/size", QMetaType::Int},
    {"yearOffset", "meta/year_offset", QMetaType::Int},
    {"lensMount", "lens/mount", QMetaType::QString},
    {"lensId", "lens/id", QMetaType::Int},
    {"lensName", "lens/name", QMetaType::QString},
    {"lensAFSwitch", "lens/af_switch", QMetaType::Int},
    {"lensFocalLenMin", "lens/focal_len_min", QMetaType::Int},
    {"lensFocalLenMax", "lens/focal_len_max", QMetaType::Int},
    {"lensFocalLen", "lens/focal_len", QMetaType::Int},
    {"lensFstopMin", "lens/fstop_min", QMetaType::Double},
    {"lensFstopMax", "lens/fstop_max", QMetaType::Double},
    {"lensFstop", "lens/fstop", QMetaType::Double},
    {"lensFocusDist", "lens/focus_dist", QMetaType::Double},
};

constexpr qlonglong Lowest = std::numeric_limits<qlonglong>::min();
constexpr qlonglong Highest = std::numeric_limits<qlonglong>::max();
} // namespace

/** A source of recorded frames at rest: values, current frame, markers, rate, step. */
class TestPlaybackVeskObject : public QObject
{
    Q_OBJECT

private slots:
    void newSourcePlaysFromNowhere()
    {
        PlaybackSource source;
        QCOMPARE(source.state(), PlaybackVeskObject::Play);
        QCOMPARE(source.fr(), Lowest);
        QCOMPARE(source.aFr(), Lowest);
        QCOMPARE(source.bFr(), Highest);
        QCOMPARE(source.playStep(), 1);
        QCOMPARE(source.repeatMode(), PlaybackVeskObject::RepeatLoop);
        QCOMPARE(source.playFrRate(), 1000000000.0 / 33333333.0);
        QVERIFY(!source.valuesInit());
        QVERIFY(source.imgSearch());
    }

    void enumerationsHaveTheNumbersOfTheInterface()
    {
        const QMetaEnum states = QMetaEnum::fromType<PlaybackVeskObject::State>();
        QCOMPARE(states.keyCount(), 7);
        QCOMPARE(states.keyToValue("Paused"), 0);
        QCOMPARE(states.keyToValue("Play"), 1);
        QCOMPARE(states.keyToValue("Rev"), 2);
        QCOMPARE(states.keyToValue("PlayRev"), 3);
        QCOMPARE(states.keyToValue("Fast"), 4);
        QCOMPARE(states.keyToValue("PlayFastFwd"), 5);
        QCOMPARE(states.keyToValue("PlayFastRev"), 7);
        const QMetaEnum modes = QMetaEnum::fromType<PlaybackVeskObject::RepeatMode>();
        QCOMPARE(modes.keyCount(), 2);
        QCOMPARE(modes.keyToValue("RepeatLoop"), 0);
        QCOMPARE(modes.keyToValue("RepeatPingPong"), 1);
    }

    void valuesStandInTheirOrderWithTheirPathsAndTypes()
    {
        const PlaybackSource source;
        QCOMPARE(source.values().size(), valueRows.size());
        for (int i = 0; i < valueRows.size(); ++i) {
            const VeskValue *value = source.values()[i];
            QCOMPARE(value->jsonPath().join(u'/'), QLatin1StringView(valueRows[i].path));
            QCOMPARE(value->type(), valueRows[i].type);
            QCOMPARE(value->parent(), &source);
            if (valueRows[i].property)
                QCOMPARE(source.property(valueRows[i].property).value<VeskValue *>(), value);
            const bool older = value == source.metaSizeValue() || value == source.yearOffsetValue();
            QCOMPARE(value->altJsonPath() == QStringList{QString()}, !older);
        }
    }

    void propertiesStandInTheOrderOfTheValues()
    {
        const QMetaObject &meta = PlaybackVeskObject::staticMetaObject;
        QStringList properties;
        for (int i = meta.indexOfProperty("firstFr"); i < meta.propertyCount(); ++i) {
            QVERIFY2(meta.property(i).isConstant(), meta.property(i).name());
            properties << meta.property(i).name();
        }
        QStringList expected;
        for (const ValueRow &row : valueRows) {
            if (row.property)
                expected << row.property;
            if (qstrcmp(row.property, "fsyncState") == 0)
                expected << "corrMode";
        }
        QCOMPARE(properties, expected);
    }

    void olderFirmwareTellsMetaSizeAndYearElsewhere()
    {
        PlaybackSource source;
        source.updateValues({{"meta_size", 48}, {"time", QJsonObject{{"year_offset", 1735689600}}}});
        QCOMPARE(source.metaSizeValue()->variant(), 48);
        QCOMPARE(source.yearOffsetValue()->variant(), 1735689600);
        source.updateValues({{"meta", QJsonObject{{"size", 32}, {"year_offset", 1704067200}}},
                             {"meta_size", 48},
                             {"time", QJsonObject{{"year_offset", 1735689600}}}});
        QCOMPARE(source.metaSizeValue()->variant(), 32);
        QCOMPARE(source.yearOffsetValue()->variant(), 1704067200);
    }

    void valuesAreReadyOnce()
    {
        PlaybackSource source;
        QSignalSpy changed(&source, &PlaybackVeskObject::valuesInitChanged);
        QSignalSpy finished(&source, &PlaybackVeskObject::valuesInitFinished);
        bool toldBefore = false;
        connect(&source, &PlaybackVeskObject::valuesInitFinished, this,
                [&] { toldBefore = source.valuesInit() && changed.count() == 1; });
        source.open(-10, 20);
        QVERIFY(toldBefore);
        QCOMPARE(source.aFr(), -10);
        QCOMPARE(source.bFr(), 20);
        QCOMPARE(source.fr(), -10);
        source.open(-10, 20);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(finished.count(), 1);
    }

    void settingTheFrameKeepsItInTheRange_data()
    {
        QTest::addColumn<qlonglong>("fr");
        QTest::addColumn<qlonglong>("expected");
        // -100 to 200 held, A at -20, B at 50.
        QTest::newRow("before the first") << -101LL << -20LL;
        QTest::newRow("before A") << -21LL << -20LL;
        QTest::newRow("A") << -20LL << -20LL;
        QTest::newRow("inside") << 7LL << 7LL;
        QTest::newRow("B") << 50LL << 50LL;
        QTest::newRow("behind B") << 51LL << 50LL;
        QTest::newRow("behind the last") << 5000000000LL << 50LL;
    }
    void settingTheFrameKeepsItInTheRange()
    {
        PlaybackSource source;
        source.open(-100, 200);
        source.setAFr(-20);
        source.setBFr(50);
        QSignalSpy changed(&source, &PlaybackVeskObject::frChanged);
        QFETCH(qlonglong, fr);
        QVERIFY(source.setProperty("fr", fr));
        QTEST(source.fr(), "expected");
        QCOMPARE(changed.count(), 1);
    }

    void presentFrameTellsOnlyWhenForced()
    {
        PlaybackSource source;
        source.open(0, 100);
        source.setFr(30);
        QSignalSpy changed(&source, &PlaybackVeskObject::frChanged);
        source.setFr(30);
        QCOMPARE(changed.count(), 0);
        source.setFr(30, true);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(source.fr(), 30);
    }

    void forcedPresentFrameIsBroughtIntoTheRange()
    {
        PlaybackSource source;
        source.open(0, 100);
        source.setFr(30);
        source.setAFr(40);
        source.setFr(30);
        QCOMPARE(source.fr(), 30);
        source.setFr(30, true);
        QCOMPARE(source.fr(), 40);
    }

    void markersCannotCrossAndAlwaysTell()
    {
        PlaybackSource source;
        source.open(0, 100);
        source.setAFr(20);
        source.setBFr(60);
        QSignalSpy aChanged(&source, &PlaybackVeskObject::aFrChanged);
        QSignalSpy bChanged(&source, &PlaybackVeskObject::bFrChanged);
        source.setAFr(61);
        QCOMPARE(source.aFr(), 60);
        source.setAFr(60);
        QCOMPARE(source.aFr(), 60);
        QCOMPARE(aChanged.count(), 2);
        source.setBFr(59);
        QCOMPARE(source.bFr(), 60);
        QCOMPARE(bChanged.count(), 1);
        source.setAFr(-1);
        QCOMPARE(source.aFr(), 0);
        source.setBFr(101);
        QCOMPARE(source.bFr(), 100);
        QCOMPARE(aChanged.count(), 3);
        QCOMPARE(bChanged.count(), 2);
    }

    void forcedMarkersAreStoredAsTheyAre()
    {
        PlaybackSource source;
        source.open(0, 100);
        source.setAFr(5000000000, true);
        source.setBFr(-5000000000, true);
        QCOMPARE(source.aFr(), 5000000000);
        QCOMPARE(source.bFr(), -5000000000);
    }

    void markersLeaveTheCurrentFrameOfASourceAtRest()
    {
        PlaybackSource source;
        source.open(0, 100);
        source.pause();
        QSignalSpy changed(&source, &PlaybackVeskObject::frChanged);
        source.setAFr(20);
        QCOMPARE(source.fr(), 0);
        QCOMPARE(changed.count(), 0);
    }

    void stepsGoOneFrameAndRoundTheEnds()
    {
        PlaybackSource source;
        source.open(0, 100);
        source.setAFr(10);
        source.setBFr(12);
        source.pause();
        source.setPlayStep(7);
        source.setFr(10);
        QSignalSpy changed(&source, &PlaybackVeskObject::frChanged);
        QList<qlonglong> shown;
        const auto step = [&](void (PlaybackVeskObject::*oneStep)()) {
            (source.*oneStep)();
            shown << source.fr();
        };
        for (int i = 0; i < 3; ++i)
            step(&PlaybackVeskObject::stepFrFwd);
        for (int i = 0; i < 3; ++i)
            step(&PlaybackVeskObject::stepFrRev);
        QCOMPARE(shown, (QList<qlonglong>{11, 12, 10, 12, 11, 10}));
        QCOMPARE(changed.count(), 6);
        QCOMPARE(source.state(), PlaybackVeskObject::Paused);
    }

    void stepInARangeOfOneFrameTellsAndStays()
    {
        PlaybackSource source;
        source.open(7, 7);
        source.pause();
        QSignalSpy changed(&source, &PlaybackVeskObject::frChanged);
        source.stepFrFwd();
        source.stepFrRev();
        QCOMPARE(source.fr(), 7);
        QCOMPARE(changed.count(), 2);
    }

    void stepsStopAtTheEndsOfTheScale()
    {
        PlaybackSource source;
        source.pause();
        source.setAFr(0, true);
        source.stepFrRev();
        QCOMPARE(source.fr(), Lowest);
    }

    void rateReadsBackWhatItsPeriodGives()
    {
        PlaybackSource source;
        QSignalSpy changed(&source, &PlaybackVeskObject::playFrRateChanged);
        QVERIFY(source.setProperty("playFrRate", 59.94));
        QCOMPARE(source.property("playFrRate").toDouble(), 1000000000.0 / 16683333.0);
        QVERIFY(source.playFrRate() != 59.94);
        QCOMPARE(changed.count(), 1);
        source.setPlayFrRate(source.playFrRate());
        QCOMPARE(changed.count(), 1);
        source.setPlayFrRate(23.98);
        source.setPlayFrRate(23.976);
        QCOMPARE(changed.count(), 2);
        source.setPlayFrRate(0);
        QCOMPARE(source.playFrRate(), 0.1);
        source.setPlayFrRate(100000000);
        QCOMPARE(source.playFrRate(), 10000000.0);
    }

    void timerTicksTwiceAClockStepInEveryStateWhileSelected()
    {
        PlaybackSource source;
        const auto *timer = source.findChild<QChronoTimer *>();
        QVERIFY(timer);
        QCOMPARE(timer->timerType(), Qt::PreciseTimer);
        QVERIFY(!timer->isActive());
        source.setSelected(true);
        QVERIFY(timer->isActive());
        QCOMPARE(timer->interval(), 16666666ns);
        source.setPlayFrRate(59.94);
        QCOMPARE(timer->interval(), 8341666ns);
        source.pause();
        QVERIFY(timer->isActive());
        source.setPlayFrRate(100000000);
        QCOMPARE(timer->interval(), 50ns);
        QVERIFY(timer->isActive());
        source.setSelected(false);
        QVERIFY(!timer->isActive());
    }

    void selectionGoesOnFromTheFrameThatWasShown()
    {
        PlaybackSource source;
        source.open(0, 1000);
        source.setSelected(true);
        source.pass(10 * 33333333);
        QCOMPARE(source.fr(), 10);
        source.setSelected(false);
        *source.nowNs += 1000000000;
        source.setSelected(true);
        source.tick();
        QCOMPARE(source.fr(), 10);
        source.pass(33333333);
        QCOMPARE(source.fr(), 11);
    }

    void timerMovesTheSource()
    {
        PlaybackSource source;
        source.open(0, 100);
        source.setSelected(true);
        *source.nowNs += 33333333;
        QTRY_COMPARE(source.fr(), 1);
    }

    void playStepIsLimited()
    {
        PlaybackSource source;
        QSignalSpy changed(&source, &PlaybackVeskObject::playStepChanged);
        source.setPlayStep(0);
        QCOMPARE(source.playStep(), 1);
        QCOMPARE(changed.count(), 0);
        source.setPlayStep(20000000);
        QCOMPARE(source.playStep(), 10000000);
        source.setPlayStep(30000000);
        QCOMPARE(changed.count(), 1);
        source.setPlayStep(-4);
        QCOMPARE(source.playStep(), 1);
        QCOMPARE(changed.count(), 2);
    }

    void repeatModeIsToldWhenItChanges()
    {
        PlaybackSource source;
        QSignalSpy changed(&source, &PlaybackVeskObject::repeatModeChanged);
        source.setRepeatMode(PlaybackVeskObject::RepeatLoop);
        QCOMPARE(changed.count(), 0);
        QVERIFY(source.setProperty("repeatMode", 1));
        QCOMPARE(source.repeatMode(), PlaybackVeskObject::RepeatPingPong);
        QCOMPARE(changed.count(), 1);
    }
};

VESK_TEST_MAIN(TestPlaybackVeskObject)
#include "tst_playback_vesk_object.moc"
