#include "camera/camera.h"
#include "camera/camera_io.h"
#include "sim/camera.h"
#include "tests/support/http_recorder.h"
#include "tests/support/vesk_test_main.h"

#include <QSignalSpy>
#include <memory>

using namespace Qt::StringLiterals;

/** An electrical line: what follows its values, what is written, and in which order it is told. */
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
        m_camera = std::make_unique<Camera>(QHostAddress("127.0.2.13"), nullptr);
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

    void changeIsToldFromTheSignalDownToTheClock()
    {
        m_user->update();
        m_user->signalValue()->updateValue(u"ready"_s);
        QStringList told;
        const auto note = [&told](const QString &name) { return [&told, name] { told << name; }; };
        connect(m_user.get(), &CameraIO::signalIndexChanged, this, note(u"signal"_s));
        connect(m_user.get(), &CameraIO::modeIndexChanged, this, note(u"mode"_s));
        connect(m_user.get(), &CameraIO::polarityIndexChanged, this, note(u"polarity"_s));
        connect(m_user.get(), &CameraIO::manipEnsChanged, this, note(u"fields"_s));
        connect(m_user.get(), &CameraIO::clkFreqChanged, this, note(u"clock"_s));
        const QStringList modeChain{u"mode"_s, u"fields"_s, u"polarity"_s};
        m_user->polarityValue()->updateValue(1);
        QCOMPARE(std::exchange(told, {}), QStringList(u"polarity"_s));
        m_user->modeValue()->updateValue(4);
        QCOMPARE(std::exchange(told, {}), modeChain);
        m_user->signalValue()->updateValue(u"shtr"_s);
        QCOMPARE(std::exchange(told, {}),
                 QStringList(u"signal"_s) + modeChain + QStringList({u"polarity"_s, u"clock"_s}));
        m_user->signalValue()->updateValue(u"fsync"_s); // the same clock
        QCOMPARE(std::exchange(told, {}), QStringList(u"signal"_s) + modeChain + QStringList(u"polarity"_s));
        m_user->update();
        QCOMPARE(told, QStringList(u"signal"_s) + modeChain + QStringList(u"polarity"_s) + modeChain +
                           QStringList(u"polarity"_s));
    }

    void indexStandsWhenTheListIsTold()
    {
        // Whoever binds to the index finds the list that it points into.
        m_user->update();
        m_user->modeValue()->updateValue(8);
        QStringList mode;
        connect(m_user.get(), &CameraIO::modeIndexChanged, this,
                [&] { mode << m_user->modeList()->stringList().value(m_user->modeIndex()); });
        m_user->setSignalByIndex(5);
        QCOMPARE(mode, QStringList(u"OD Output"_s));
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

    void choicesByIndexAreSentAsTokenAndKey()
    {
        HttpRecorder server(u"127.0.2.13"_s);
        QVERIFY(server.isListening());
        auto *line = qobject_cast<CameraIO *>(m_camera->ios()->get(3));
        line->update();
        const auto sent = [&server](const QByteArray &path) {
            QByteArrayList bodies;
            for (const HttpRecorder::Request &request : server.requests("PUT", path))
                bodies << request.body;
            return bodies;
        };
        line->setSignalByIndex(8);
        line->setModeByIndex(1);
        line->setPolarityByIndex(3);
        QTRY_COMPARE(sent("/io/io3/polarity"), QByteArrayList{"3"});
        QCOMPARE(sent("/io/io3/signal"), QByteArrayList{"\"trig\""});
        QCOMPARE(sent("/io/io3/mode"), QByteArrayList{"1"});
        line->setModeByIndex(5);
        QTRY_COMPARE(sent("/io/io3/mode"), (QByteArrayList{"1", "16"}));
        line->setSignalByIndex(0);
        line->setPolarityByIndex(0); // a signal without polarities
        QTRY_COMPARE(sent("/io/io3/polarity"), (QByteArrayList{"3", "0"}));
        QTRY_COMPARE(sent("/io/io3/signal"), (QByteArrayList{"\"trig\"", "\"\""}));
        line->setSignalByIndex(0); // as it is
        line->delayValue()->setValue(268435455, false);
        QTRY_COMPARE(sent("/io/io3/delay"), QByteArrayList{"268435455"});
        QCOMPARE(server.requests().size(), 7);
    }

    void cameraHoldsWhatWasChosenAndCorrectsIt()
    {
        q4sim::Config config;
        config.address = QHostAddress("127.0.2.14");
        config.discovery = false;
        q4sim::Camera sim(config);
        QCOMPARE(sim.listen(), QString());
        Camera camera(config.address, nullptr);
        QSignalSpy connected(&camera, &Camera::cameraConnected);
        camera.connectCamera();
        QTRY_COMPARE(connected.count(), 1);
        auto *line = qobject_cast<CameraIO *>(camera.ios()->get(1));
        line->setSignalByIndex(3); // "Frame Sync"
        line->setModeByIndex(2);   // "Output"
        line->setPolarityByIndex(1);
        QTRY_COMPARE(sim.value("io/io1/signal").toString(), u"fsync"_s);
        QTRY_COMPARE(sim.value("io/io1/mode").toInt(), 4);
        QTRY_COMPARE(sim.value("io/io1/polarity").toInt(), 1);
        QCOMPARE(line->clkFreq(), 100000000u);
        // What the camera does not take comes back after the polls, and the index with it.
        line->modeValue()->setValue(3, false);
        QCOMPARE(line->modeIndex(), -1);
        QTRY_COMPARE(line->modeIndex(), 2);
        QCOMPARE(line->modeValue()->variant(), QVariant(4));
        sim.forceValue("io/io1/signal", u"irig"_s);
        QTRY_COMPARE(line->signalIndex(), 4);
        QCOMPARE(lists(*line), u"Disabled,Input,Output|"_s);
        QCOMPARE(line->clkFreq(), 125000000u);
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
