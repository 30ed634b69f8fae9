#include "camera/camera.h"
#include "camera/camera_io.h"
#include "tests/support/vesk_test_main.h"

#include <array>
#include <memory>

using namespace Qt::StringLiterals;

/** Every signal in every mode and polarity of both kinds of line, against a table typed by hand. */
class TestIoChoices : public QObject
{
    Q_OBJECT

private:
    static constexpr std::array ModeKeys{0, 1, 2, 4, 8, 16, 3}; // 3 is the key of no mode
    static constexpr std::array PolarityKeys{0, 1, 2, 3, 4};    // nor 4 of a polarity
    using ModeIndexes = std::array<int, ModeKeys.size()>;
    using PolarityIndexes = std::array<int, PolarityKeys.size()>;

    /** What one signal allows: polarities on the plain input and on every other mode, fields by mode. */
    struct Expected {
        CameraIO::Type type;
        const char *token;
        const char *modes;
        ModeIndexes modeIndexes;
        const char *polarities;
        PolarityIndexes polarityIndexes;
        const char *inputPolarities;
        PolarityIndexes inputPolarityIndexes;
        const char *fields; // filter, delay, min, max
        uint clkFreq;
    };

    static QList<Expected> expected()
    {
        constexpr auto user = CameraIO::User;
        constexpr auto trigger = CameraIO::Trig;
        constexpr uint camera = 100000000;
        constexpr uint fixed = 125000000;
        constexpr auto all = "Disabled,Input,Input w/ Pull-up,Output,OD Output,OD Bidirectional";
        constexpr auto but4 = "Disabled,Input,Input w/ Pull-up,OD Output,OD Bidirectional";
        constexpr auto outputs = "Disabled,Output,OD Output";
        constexpr auto inOut = "Disabled,Input,Output";
        constexpr auto levels = "Active High,Active Low";
        constexpr auto edges = "Rising Edge,Falling Edge";
        constexpr auto fourEdges = "Rising Edge,Falling Edge,Falling (Trailing),Rising (Trailing)";
        constexpr ModeIndexes inAll{0, 1, 2, 3, 4, 5, -1};
        constexpr ModeIndexes inBut4{0, 1, 2, -1, 3, 4, -1};
        constexpr ModeIndexes inOutputs{0, -1, -1, 1, 2, -1, -1};
        constexpr ModeIndexes inInOut{0, 1, -1, 2, -1, -1, -1};
        constexpr ModeIndexes inOne{0, -1, -1, 1, -1, -1, -1};
        constexpr ModeIndexes inNone{0, -1, -1, -1, -1, -1, -1};
        constexpr PolarityIndexes two{0, 1, -1, -1, -1};
        constexpr PolarityIndexes four{0, 1, 2, 3, -1};
        constexpr PolarityIndexes none{0, 0, 0, 0, 0};
        // Of the modes 0, 1, 2, 4, 8, 16 and 3.
        constexpr auto full = "---- FDmM FDmM -DmM -DmM F-mM ----";
        constexpr auto unfiltered = "---- -DmM -DmM -DmM -DmM --mM ----";
        constexpr auto no = "---- ---- ---- ---- ---- ---- ----";
        return {{trigger, "", "Disabled", inNone, "", none, "", none, no, fixed},
                {trigger, "trig", but4, inBut4, edges, two, fourEdges, four, full, fixed},
                {user, "", "Disabled", inNone, "", none, "", none, no, camera},
                {user, "trig", all, inAll, edges, two, fourEdges, four, full, fixed},
                {user, "ready", outputs, inOutputs, levels, two, levels, two, unfiltered, fixed},
                {user, "rec", outputs, inOutputs, levels, two, levels, two, unfiltered, fixed},
                {user, "irig", inOut, inInOut, "", none, "", none, no, fixed},
                {user, "event1", all, inAll, levels, two, levels, two, full, fixed},
                {user, "event2", all, inAll, levels, two, levels, two, full, fixed},
                {user, "fsync", inOut, inInOut, edges, two, fourEdges, four, full, camera},
                {user, "shtr", "Disabled,Output", inOne, levels, two, levels, two, unfiltered, camera}};
    }

    static QString enables(const CameraIO &line)
    {
        return (line.filterEn() ? u"F"_s : u"-"_s) + (line.delayEn() ? u"D"_s : u"-"_s) +
               (line.minEn() ? u"m"_s : u"-"_s) + (line.maxEn() ? u"M"_s : u"-"_s);
    }

    static QString shown(CameraIO &line)
    {
        return u"%1 @%2; %3 @%4; %5; %6 Hz"_s.arg(line.modeList()->stringList().join(u','))
            .arg(line.modeIndex())
            .arg(line.polarityList()->stringList().join(u','))
            .arg(line.polarityIndex())
            .arg(enables(line))
            .arg(line.clkFreq());
    }

    static QString shown(const Expected &row, std::size_t mode, std::size_t polarity)
    {
        const bool input = ModeKeys[mode] == 1;
        return u"%1 @%2; %3 @%4; %5; %6 Hz"_s.arg(QLatin1StringView(row.modes))
            .arg(row.modeIndexes[mode])
            .arg(QLatin1StringView(input ? row.inputPolarities : row.polarities))
            .arg((input ? row.inputPolarityIndexes : row.polarityIndexes)[polarity])
            .arg(QString::fromLatin1(row.fields).split(u' ').at(qsizetype(mode)))
            .arg(row.clkFreq);
    }

    std::unique_ptr<Camera> m_camera;
    std::unique_ptr<CameraIO> m_user;
    std::unique_ptr<CameraIO> m_trigger;

private slots:
    void init()
    {
        m_camera = std::make_unique<Camera>(QHostAddress("127.0.2.16"), nullptr);
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

    void everySettingShowsWhatTheTableAllows_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("polarity");
        const QList<Expected> rows = expected();
        for (int row = 0; row < rows.size(); ++row) {
            for (std::size_t mode = 0; mode < ModeKeys.size(); ++mode) {
                for (std::size_t polarity = 0; polarity < PolarityKeys.size(); ++polarity)
                    QTest::addRow("%s \"%s\" mode %d polarity %d",
                                  rows[row].type == CameraIO::Trig ? "trigger line" : "line", rows[row].token,
                                  ModeKeys[mode], PolarityKeys[polarity])
                        << row << int(mode) << int(polarity);
            }
        }
    }

    void everySettingShowsWhatTheTableAllows()
    {
        QFETCH(int, row);
        QFETCH(int, mode);
        QFETCH(int, polarity);
        const Expected wanted = expected().at(row);
        CameraIO &line = wanted.type == CameraIO::Trig ? *m_trigger : *m_user;
        const QString token = QString::fromLatin1(wanted.token);
        // From the values to the lists at the connection, as after the first poll.
        line.signalValue()->updateValue(token);
        line.modeValue()->updateValue(ModeKeys[std::size_t(mode)]);
        line.polarityValue()->updateValue(PolarityKeys[std::size_t(polarity)]);
        line.update();
        const QString text = shown(wanted, std::size_t(mode), std::size_t(polarity));
        QCOMPARE(shown(line), text);
        // From anything else, one value after the other, in the other order.
        line.signalValue()->updateValue(u"laser"_s);
        line.modeValue()->updateValue(-1);
        line.polarityValue()->updateValue(-1);
        line.polarityValue()->updateValue(PolarityKeys[std::size_t(polarity)]);
        line.modeValue()->updateValue(ModeKeys[std::size_t(mode)]);
        line.signalValue()->updateValue(token);
        QCOMPARE(shown(line), text);
    }

    void signalIndexIsThatOfTheLabel_data()
    {
        QTest::addColumn<bool>("trigger");
        QTest::addColumn<QString>("token");
        QTest::addColumn<int>("index");
        const QStringList user{u""_s,      u"event1"_s, u"event2"_s, u"fsync"_s, u"irig"_s,
                               u"ready"_s, u"rec"_s,    u"shtr"_s,   u"trig"_s};
        for (int i = 0; i < user.size(); ++i)
            QTest::addRow("line \"%s\"", qPrintable(user[i])) << false << user[i] << i;
        QTest::newRow("line of nothing known") << false << u"Trigger"_s << -1;
        QTest::newRow("trigger line off") << true << u""_s << 0;
        QTest::newRow("trigger line on") << true << u"trig"_s << 1;
        QTest::newRow("trigger line with another signal") << true << u"event1"_s << -1;
    }

    void signalIndexIsThatOfTheLabel()
    {
        QFETCH(bool, trigger);
        QFETCH(QString, token);
        QFETCH(int, index);
        CameraIO &line = trigger ? *m_trigger : *m_user;
        line.update();
        line.signalValue()->updateValue(token);
        QCOMPARE(line.signalIndex(), index);
    }
};

VESK_TEST_MAIN(TestIoChoices)
#include "tst_io_choices.moc"
