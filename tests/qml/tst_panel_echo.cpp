#include "camera/camera.h"
#include "sim/camera.h"
#include "tests/qml/view_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickWindow>

using namespace Qt::StringLiterals;

/** What the camera reports is shown and never sent back. */
class TestPanelEcho : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void polledValuesAreNotSentBack();
    void connectionSendsNoSetting_data();
    void connectionSendsNoSetting();
    void selectionSendsNothing();

private:
    ViewFixture m_view;
};

void TestPanelEcho::cleanup()
{
    QCOMPARE(m_view.end(), QStringList());
}

namespace
{
struct Reported {
    const char *path;
    QJsonArray values;
};
} // namespace

static QList<Reported> reportedValues()
{
    QList<Reported> values = {{"camera/name", {"A", "Another", ""}},
                              {"camera/serial", {"Q4-00001", "Q4-00007", "Q4-00001"}},
                              {"camera/model", {"Q4", "A model of quite a long name", "Q4-M"}},
                              {"camera/fw_ver", {"3.2.1", 117, ""}},
                              {"camera/fw_state", {0, 2, 1}},
                              {"acq/state", {2, 3, 6}},
                              {"acq/res", {"320x240", "11x11", "640x240"}},
                              {"acq/clk_freq", {50000000, 75000000, 100000000}},
                              {"acq/fr_clks", {123457, 100000, 66667}},
                              {"acq/fr_rate", {810.0, 1000.0, 1499.99}},
                              {"acq/fr_clks_min", {50000, 60000, 48400}},
                              {"acq/exp_clks", {12345, 113, 1013}},
                              {"acq/exp_clks_max", {90000, 50000, 99400}},
                              {"acq/fsync_mode", {1, 2, 0}},
                              {"acq/fsync_state", {-1, 1, 0}},
                              {"acq/corr_mode", {1, 2, 0}},
                              {"acq/bref_state", {1, 4, 0}},
                              {"acq/trig_offset", {2, 77, 3000}},
                              {"acq/prtn_cnt", {8, 1, 4}},
                              {"acq/active_take", {1, 3, 0}},
                              {"acq/saved_takes", {QJsonArray{1}, QJsonArray{1, 2}, QJsonArray{}}},
                              {"lens/state", {0, 1, 3}},
                              {"lens/af_switch", {1, 0, 1}},
                              {"lens/fstop", {5.6, 3.3, 22}},
                              {"lens/fstop_min", {16, 32, 22}},
                              {"lens/focus_dist", {0, 65535, 1.25}},
                              {"shtr/state", {1, 2, 0}},
                              {"ssd/state", {8, 3, 9}},
                              {"ssd/wr_state", {1, 0, 1}},
                              {"ssd/progress", {10, 50, 100}},
                              {"ssd/name", {"ONE", "TWO", ""}},
                              {"ssd/used", {"1", "ffffffff", "0"}},
                              {"ssd/name_seq", {7, 4294967295.0, 0}},
                              {"ssd/autosave/mode", {3, 1, 7}},
                              {"ssd/autosave/start", {5, -2147483648.0, 0}},
                              {"ssd/autosave/cnt", {6, 4294967295.0, 0}},
                              {"ssd/autosave/name", {"x<seq>", "", "<time>"}},
                              {"video/format", {"1280x720p24", "none", "1920x1080p30"}},
                              {"features/corr_mode", {0, 1, 3}},
                              {"features/q4fw", {0, 1, 1}},
                              {"features/lens", {1, 2, 3}},
                              {"features/shtr", {0, 1, 1}},
                              {"features/ssd-format", {0, 1, 1}},
                              {"features/ssd-save", {0, 3, 4}}};
    for (const char *path : {"adjust/offset", "adjust/offset_r", "adjust/offset_b", "adjust/contrast",
                             "adjust/contrast_r", "adjust/contrast_b"})
        values.append({path, {0.123, -0.5, 1.0}});
    for (const char *path : {"adjust/gain", "adjust/gain_r", "adjust/gain_b", "adjust/gamma",
                             "adjust/gamma_r", "adjust/gamma_b", "adjust/wb_r", "adjust/wb_g", "adjust/wb_b"})
        values.append({path, {0.1, 3.33333, 10.0}});
    return values;
}

static void report(q4sim::Camera &camera, qsizetype round)
{
    const QList<Reported> values = reportedValues();
    for (const Reported &value : values)
        camera.forceValue(QString::fromLatin1(value.path), value.values[round]);
    // Round by round the lines carry other signals, down to none at all and one unknown.
    const QStringList carried = {u"trig"_s, u""_s, u"irig"_s, u"fsync"_s, u"unknown"_s, u"event1"_s};
    const QList<int> modes = {1, 16, 2, 4, 0, 3};
    const QStringList lines = {u"trigger"_s, u"io1"_s, u"io2"_s, u"io3"_s, u"io4"_s, u"io5"_s, u"io6"_s};
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QString path = u"io/"_s + lines[i] + u'/';
        const qsizetype at = (i + round) % carried.size();
        camera.forceValue(path + u"signal"_s, lines[i] == "trigger"_L1 && at != 0 ? QString() : carried[at]);
        camera.forceValue(path + u"mode"_s, modes[(i + 2 * round) % modes.size()]);
        camera.forceValue(path + u"polarity"_s, int(round));
        for (const QString &field : {u"filter"_s, u"delay"_s, u"min"_s, u"max"_s})
            camera.forceValue(path + field, int((i + 1) * 1000 * round));
    }
}

void TestPanelEcho::polledValuesAreNotSentBack()
{
    q4sim::Camera *simulated = m_view.startUnfolded();
    QVERIFY(simulated);
    QTRY_VERIFY(m_view.inSection(u"I/O 6"_s, u"Signal"_s));
    QTRY_VERIFY(m_view.inSection(u"Firmware"_s, u"Firmware Update"_s));
    for (const qsizetype round : {0, 1, 2, 0, 2, 1, 2}) {
        report(*simulated, round);
        QVERIFY(m_view.waitForPolls(2));
        ViewFixture::settle(m_view.window());
        // All of it is shown.
        QTRY_COMPARE(m_view.fieldText(u"Image Adjustments"_s, u"Gain"_s),
                     (QStringList{u"0.10"_s, u"3.33"_s, u"10.00"_s}[round]));
        QTRY_COMPARE(m_view.fieldText(u"Acquisition"_s, u"Trigger Offset"_s),
                     (QStringList{u"2"_s, u"77"_s, u"3000"_s}[round]));
        QCOMPARE(ViewFixture::writtenPaths(*simulated), QStringList());
    }
    const QList<q4sim::Request> requests = simulated->requests();
    for (const q4sim::Request &request : requests) {
        const bool command = request.method == "POST" && request.path != "/xfer"_L1;
        QVERIFY2(!command, qPrintable(request.path));
    }
}

void TestPanelEcho::connectionSendsNoSetting_data()
{
    QTest::addColumn<bool>("bare");
    QTest::newRow("everything") << false;
    QTest::newRow("bare") << true;
}

void TestPanelEcho::connectionSendsNoSetting()
{
    QFETCH(const bool, bare);
    q4sim::Camera *simulated = bare ? m_view.startUnfolded(q4sim::bareConfig()) : m_view.startUnfolded();
    QVERIFY(simulated);
    QVERIFY(m_view.waitForPolls(3));
    QCOMPARE(ViewFixture::writtenPaths(*simulated), QStringList());
}

void TestPanelEcho::selectionSendsNothing()
{
    q4sim::Camera *first = m_view.startUnfolded();
    QVERIFY(first);
    q4sim::Config config;
    config.address = QHostAddress(ViewFixture::address(2));
    config.serial = u"Q4-00002"_s;
    config.name = u"Second"_s;
    config.discovery = false;
    q4sim::Camera *second = m_view.simulate(config);
    QVERIFY(second);
    QVERIFY(m_view.connectTo(ViewFixture::address(2)));
    // As the camera reports them, not as this program writes them.
    first->forceValue(u"acq/exp_clks"_s, 777);
    first->forceValue(u"adjust/gain"_s, 1.23456);
    for (const QString &name : {u"Second"_s, u"Simulated Q4"_s, u"Second"_s, u"Simulated Q4"_s}) {
        QVERIFY(m_view.click(m_view.window(), m_view.element(name, QAccessible::PageTab)));
        QTRY_COMPARE(m_view.rowText(u"Camera"_s, u"Name"_s), name);
        QVERIFY(m_view.waitForPolls(2));
    }
    QTRY_COMPARE(m_view.fieldText(u"Acquisition"_s, u"Exposure Time"_s), u"7.770"_s);
    QCOMPARE(ViewFixture::writtenPaths(*first), QStringList());
    QCOMPARE(ViewFixture::writtenPaths(*second), QStringList());
}

VIEW_TEST_MAIN(TestPanelEcho)
#include "tst_panel_echo.moc"
