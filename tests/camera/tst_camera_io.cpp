#include "camera/camera.h"
#include "camera/camera_io.h"
#include "tests/support/vesk_test_main.h"

#include <QSignalSpy>
#include <memory>

using namespace Qt::StringLiterals;

/** What may be set on an electrical line, against a table typed by hand. */
class TestCameraIO : public QObject
{
    Q_OBJECT

private:
    static QString lists(CameraIO &line)
    {
        return line.modeList()->stringList().join(u","_s) + u"|"_s +
               line.polarityList()->stringList().join(u","_s);
    }

    static QString enables(const CameraIO &line)
    {
        return (line.filterEn() ? u"F"_s : u"-"_s) + (line.delayEn() ? u"D"_s : u"-"_s) +
               (line.minEn() ? u"m"_s : u"-"_s) + (line.maxEn() ? u"M"_s : u"-"_s);
    }

    std::unique_ptr<Camera> m_camera;
    std::unique_ptr<CameraIO> m_user;
    std::unique_ptr<CameraIO> m_trigger;

private slots:
    void init()
    {
        m_camera = std::make_unique<Camera>(QHostAddress("127.0.2.8"), nullptr);
        m_camera->clkFreqValue()->updateValue(100000000);
        m_user = std::make_unique<CameraIO>(u"I/O 9"_s, u"io9"_s, m_camera.get(), CameraIO::User);
        m_trigger = std::make_unique<CameraIO>(u"Line"_s, u"line"_s, m_camera.get(), CameraIO::Trig);
    }

    void cleanup()
    {
        m_user.reset();
        m_trigger.reset();
        m_camera.reset();
    }

    void listsAreEmptyUntilTheConnection()
    {
        QCOMPARE(m_user->signalList()->rowCount(), 0);
        QCOMPARE(m_user->modeList()->rowCount(), 0);
        QCOMPARE(m_user->polarityList()->rowCount(), 0);
    }

    void signalsOfALineStandInTheOrderOfTheirTokens()
    {
        m_user->update();
        QCOMPARE(m_user->signalList()->stringList(),
                 QStringList({u"Disabled"_s, u"Event 1"_s, u"Event 2"_s, u"Frame Sync"_s, u"IRIG"_s,
                              u"Ready"_s, u"Record"_s, u"Shutter"_s, u"Trigger"_s}));
        QCOMPARE(m_user->signalIndex(), 0);
        m_trigger->update();
        QCOMPARE(m_trigger->signalList()->stringList(), QStringList({u"Disabled"_s, u"Enabled"_s}));
    }

    void valuesStandUnderTheLinesToken()
    {
        QCOMPARE(m_user->signalValue()->jsonPath(), QStringList({u"io"_s, u"io9"_s, u"signal"_s}));
        QCOMPARE(m_user->maxValue()->jsonPath(), QStringList({u"io"_s, u"io9"_s, u"max"_s}));
        QCOMPARE(m_user->signalValue()->type(), int(QMetaType::QString));
        QCOMPARE(m_user->filterValue()->type(), int(QMetaType::Int));
    }

    void signalDecidesModesAndPolarities_data()
    {
        QTest::addColumn<bool>("trigger");
        QTest::addColumn<QString>("token");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("modesAndPolarities");
        QTest::addColumn<QString>("fields");
        QTest::addColumn<uint>("clkFreq");

        const QString all = u"Disabled,Input,Input w/ Pull-up,Output,OD Output,OD Bidirectional|"_s;
        const QString outputs = u"Disabled,Output,OD Output|"_s;
        const QString inOut = u"Disabled,Input,Output|"_s;
        const QString noPlainOutput = u"Disabled,Input,Input w/ Pull-up,OD Output,OD Bidirectional|"_s;
        const QString levels = u"Active High,Active Low"_s;
        const QString edges = u"Rising Edge,Falling Edge"_s;
        const QString allEdges = u"Rising Edge,Falling Edge,Falling (Trailing),Rising (Trailing)"_s;
        const uint fixed = 125000000;
        const uint camera = 100000000;
        const auto rows = [](bool trigger, const char *token, const QString &modes, const QString &polarities,
                             const QString &onInput, const QStringList &fields, uint clkFreq) {
            constexpr std::array modeKeys{0, 1, 2, 4, 8, 16};
            for (qsizetype i = 0; i < fields.size(); ++i) {
                const int mode = modeKeys[std::size_t(i)];
                QTest::addRow("%s \"%s\" mode %d", trigger ? "trigger line" : "line", token, mode)
                    << trigger << QString::fromLatin1(token) << mode
                    << modes + (mode == 1 ? onInput : polarities) << fields[i] << clkFreq;
            }
        };
        // Fields of the modes 0, 1, 2, 4, 8 and 16: filter, delay, min, max.
        const QStringList none(6, u"----"_s);
        const QStringList full{u"----"_s, u"FDmM"_s, u"FDmM"_s, u"-DmM"_s, u"-DmM"_s, u"F-mM"_s};
        const QStringList unfiltered{u"----"_s, u"-DmM"_s, u"-DmM"_s, u"-DmM"_s, u"-DmM"_s, u"--mM"_s};
        rows(false, "", u"Disabled|"_s, {}, {}, none, camera);
        rows(false, "trig", all, edges, allEdges, full, fixed);
        rows(false, "ready", outputs, levels, levels, unfiltered, fixed);
        rows(false, "rec", outputs, levels, levels, unfiltered, fixed);
        rows(false, "irig", inOut, {}, {}, none, fixed);
        rows(false, "event1", all, levels, levels, full, fixed);
        rows(false, "event2", all, levels, levels, full, fixed);
        rows(false, "fsync", inOut, edges, allEdges, full, camera);
        rows(false, "shtr", u"Disabled,Output|"_s, levels, levels, unfiltered, camera);
        rows(true, "", u"Disabled|"_s, {}, {}, none, fixed);
        rows(true, "trig", noPlainOutput, edges, allEdges, full, fixed);
    }

    void signalDecidesModesAndPolarities()
    {
        QFETCH(bool, trigger);
        QFETCH(QString, token);
        QFETCH(int, mode);
        QFETCH(QString, modesAndPolarities);
        QFETCH(QString, fields);
        QFETCH(uint, clkFreq);
        CameraIO &line = trigger ? *m_trigger : *m_user;
        line.update();
        line.signalValue()->updateValue(token);
        line.modeValue()->updateValue(mode);
        QCOMPARE(lists(line), modesAndPolarities);
        QCOMPARE(enables(line), fields);
        QCOMPARE(line.clkFreq(), clkFreq);
    }

    void indexesAreThoseOfTheValues()
    {
        m_user->update();
        m_user->signalValue()->updateValue(u"trig"_s);
        m_user->modeValue()->updateValue(1);
        m_user->polarityValue()->updateValue(3);
        QCOMPARE(m_user->signalIndex(), 8);
        QCOMPARE(m_user->modeIndex(), 1);
        QCOMPARE(m_user->polarityIndex(), 3);
        m_user->modeValue()->updateValue(16);
        QCOMPARE(m_user->modeIndex(), 5);
        QCOMPARE(m_user->polarityIndex(), -1); // the trailing edges have gone with the plain input
        m_user->polarityValue()->updateValue(1);
        QCOMPARE(m_user->polarityIndex(), 1);
        m_user->signalValue()->updateValue(u"irig"_s);
        QCOMPARE(m_user->polarityIndex(), 0); // no polarity
    }

    void signalWithFewerModesLeavesTheMode()
    {
        m_user->update();
        m_user->signalValue()->updateValue(u"trig"_s);
        m_user->modeValue()->updateValue(16);
        m_user->setSignalByIndex(7); // "Shutter" has "Output" only
        QCOMPARE(m_user->signalValue()->text(), u"shtr"_s);
        QCOMPARE(m_user->modeValue()->variant().toInt(), 16);
        QCOMPARE(m_user->modeIndex(), -1);
    }

    void unknownTokenAndKeyGiveNoIndex()
    {
        m_user->update();
        QSignalSpy changed(m_user.get(), &CameraIO::signalIndexChanged);
        m_user->signalValue()->updateValue(u"laser"_s);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(m_user->signalIndex(), -1);
        QCOMPARE(lists(*m_user), u"Disabled|"_s);
        QCOMPARE(enables(*m_user), u"----"_s);
        m_user->signalValue()->updateValue(u"trig"_s);
        m_user->modeValue()->updateValue(3);
        QCOMPARE(m_user->modeIndex(), -1);
        QCOMPARE(enables(*m_user), u"----"_s);
        m_user->polarityValue()->updateValue(9);
        QCOMPARE(m_user->polarityIndex(), -1);
    }

    void clockFollowsTheCameraOnlyWithTheSignal()
    {
        m_user->update();
        QSignalSpy changed(m_user.get(), &CameraIO::clkFreqChanged);
        m_camera->clkFreqValue()->updateValue(50000000);
        QCOMPARE(m_user->clkFreq(), 100000000u);
        QCOMPARE(changed.count(), 0);
        m_user->signalValue()->updateValue(u"fsync"_s);
        QCOMPARE(m_user->clkFreq(), 50000000u);
        QCOMPARE(changed.count(), 1);
        m_user->signalValue()->updateValue(u"shtr"_s);
        QCOMPARE(changed.count(), 1);
    }

    void choicesByIndexWriteTokenAndKey()
    {
        m_user->update();
        QSignalSpy written(m_user->signalValue(), &VeskValue::valueChangedLocal);
        m_user->setSignalByIndex(8);
        QCOMPARE(written.count(), 1);
        QCOMPARE(m_user->signalValue()->text(), u"trig"_s);
        m_user->setModeByIndex(5);
        QCOMPARE(m_user->modeValue()->variant(), QVariant(16));
        m_user->setModeByIndex(1);
        QCOMPARE(m_user->modeValue()->variant(), QVariant(1));
        m_user->setPolarityByIndex(2);
        QCOMPARE(m_user->polarityValue()->variant(), QVariant(2));
        QCOMPARE(m_user->polarityIndex(), 2);
        m_user->setSignalByIndex(5); // "Ready": levels
        m_user->setPolarityByIndex(1);
        QCOMPARE(m_user->polarityValue()->variant(), QVariant(1));
    }

    void indexOutsideOfTheListsWritesOnlyTheNoPolarity()
    {
        m_user->update();
        m_user->signalValue()->updateValue(u"trig"_s);
        m_user->modeValue()->updateValue(1);
        m_user->polarityValue()->updateValue(1);
        m_user->setSignalByIndex(9);
        m_user->setSignalByIndex(-1);
        m_user->setModeByIndex(6);
        m_user->setModeByIndex(-1);
        QCOMPARE(m_user->signalValue()->text(), u"trig"_s);
        QCOMPARE(m_user->modeValue()->variant(), QVariant(1));
        m_user->setPolarityByIndex(-1);
        QCOMPARE(m_user->polarityValue()->variant(), QVariant(0));
    }

    void cameraHasSevenLines()
    {
        QStringList lines;
        QQmlObjectListModelBase *ios = m_camera->ios();
        for (int i = 0; i < ios->size(); ++i) {
            const auto *line = qobject_cast<const CameraIO *>(ios->get(i));
            lines << line->token() + u"="_s + line->name();
        }
        QCOMPARE(lines, QStringList({u"trigger=Trigger I/O"_s, u"io1=I/O 1"_s, u"io2=I/O 2"_s, u"io3=I/O 3"_s,
                                     u"io4=I/O 4"_s, u"io5=I/O 5"_s, u"io6=I/O 6"_s}));
    }
};

VESK_TEST_MAIN(TestCameraIO)
#include "tst_camera_io.moc"
