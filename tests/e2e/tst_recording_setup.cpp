#include "tests/e2e/session.h"

#include <QCryptographicHash>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{
bool isRed(QRgb colour)
{
    return qRed(colour) - qMax(qGreen(colour), qBlue(colour)) > 100;
}
} // namespace

/// A recording is set up in the real program by mouse and keys, section by section, and the camera holds what
/// was picked, typed and dragged.
class TestRecordingSetup : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void resolutionIsPicked();
    void frameRateIsTypedAndPicked();
    void exposureIsTyped();
    void triggerOffsetIsTyped();
    void whatIsNoNumberLeavesTheFrameRateAsItWas();
    void externalSyncWithoutASignalIsMarkedRed();
    void blackReferenceModeIsPicked();
    void memoryIsPartitioned();
    void draggedGainIsSentSparinglyToItsEnd();
    void autosaveIsSetUp();
    void driveIsEjected();
    void lensIsFocusedAndStopped();
    void shutterIsClosed();
    void lineIsSetUp();
    void videoFormatIsPicked();
    void firmwareIsPickedAndSent();
    void pollsBringNothingBack();

private:
    void fold(const QStringList &sections);
    QJsonValue value(const QString &path) { return m_session.camera.value(path); }

    mutable Session m_session;
};

void TestRecordingSetup::initTestCase()
{
    QCOMPARE(m_session.start(), QString());
    QVERIFY(m_session.waitForLivePicture());
}

void TestRecordingSetup::cleanup()
{
    if (QTest::currentTestFailed())
        m_session.keepPicture(u"failed-"_s + QString::fromLatin1(QTest::currentTestFunction()));
    QCOMPARE(m_session.program().complaints(), QStringList());
}

/// Folds sections, so that those below come into reach.
void TestRecordingSetup::fold(const QStringList &sections)
{
    for (const QString &section : sections)
        m_session.toggleSection(section, true);
}

void TestRecordingSetup::resolutionIsPicked()
{
    const QJsonArray offered = value(u"acq/valid_res"_s).toArray();
    QVERIFY(offered.size() > 2);
    QVERIFY(value(u"acq/res"_s) != offered[1]);
    QVERIFY(m_session.choose(u"Resolution"_s, 1));
    QTRY_COMPARE(value(u"acq/res"_s), offered[1]);
    // The window knows it, too: what stands there is not sent again.
    m_session.camera.forgetRequests();
    QTRY_VERIFY(m_session.camera.requests("GET", u"/"_s).size() >= 3);
    QVERIFY(m_session.choose(u"Resolution"_s, 0));
    QTRY_COMPARE(value(u"acq/res"_s), offered[0]);
}

void TestRecordingSetup::frameRateIsTypedAndPicked()
{
    const double clkFreq = value(u"acq/clk_freq"_s).toDouble();
    QVERIFY(m_session.type(u"Frame Rate"_s, u"250"_s));
    QTRY_COMPARE(value(u"acq/fr_clks"_s).toInt(), qRound(clkFreq / 250));
    // The fastest one stands first, in whole frames a second.
    const int fastest = int(clkFreq) / value(u"acq/fr_clks_min"_s).toInt();
    QVERIFY(m_session.choose(u"Frame Rate"_s, 0));
    QTRY_COMPARE(value(u"acq/fr_clks"_s).toInt(), qRound(clkFreq / fastest));
    m_session.keepPicture(u"frame-rate"_s);
}

void TestRecordingSetup::exposureIsTyped()
{
    QVERIFY(m_session.type(u"Exposure Time"_s, u"100"_s));
    const double clkFreq = value(u"acq/clk_freq"_s).toDouble();
    const int mult = value(u"acq/exp_clks_mult"_s).toInt();
    const int wanted = qRound(clkFreq * 100 / 1000000);
    // The camera takes the next shorter exposure of its grid.
    QTRY_VERIFY(value(u"acq/exp_clks"_s).toInt() <= wanted);
    QVERIFY(value(u"acq/exp_clks"_s).toInt() > wanted - mult);
}

void TestRecordingSetup::triggerOffsetIsTyped()
{
    QVERIFY(m_session.type(u"Trigger Offset"_s, u"123"_s));
    QTRY_COMPARE(value(u"acq/trig_offset"_s).toInt(), 123);
}

void TestRecordingSetup::whatIsNoNumberLeavesTheFrameRateAsItWas()
{
    const int clks = value(u"acq/fr_clks"_s).toInt();
    // The number and its unit; the arrow is lit or not by where the pointer is.
    const QRect box = m_session.layout().widget(u"Frame Rate"_s).adjusted(3, 4, -24, -4);
    m_session.move(box.center() - QPoint(20, 0));
    const QImage before = m_session.resting(box);
    QVERIFY(!before.isNull());
    m_session.camera.forgetRequests();
    QVERIFY(m_session.type(u"Frame Rate"_s, u"fast"_s));
    QVERIFY(m_session.wait([&](const QImage &now) { return now.copy(box) == before; }));
    QTRY_VERIFY(m_session.camera.requests("GET", u"/"_s).size() >= 2);
    QCOMPARE(m_session.camera.requests("PUT", u"/acq/fr_clks"_s).size(), 0);
    QCOMPARE(value(u"acq/fr_clks"_s).toInt(), clks);
}

void TestRecordingSetup::externalSyncWithoutASignalIsMarkedRed()
{
    const QRect label = m_session.layout().label(u"Frame Rate"_s);
    QCOMPARE(Session::count(m_session.window(), label, isRed), 0);
    QVERIFY(m_session.choose(u"Frame Sync Mode"_s, 1));
    QTRY_COMPARE(value(u"acq/fsync_mode"_s).toInt(), 1);
    QTRY_COMPARE(value(u"acq/fsync_state"_s).toInt(), -1);
    QVERIFY(m_session.wait([&](const QImage &now) { return Session::count(now, label, isRed) > 20; }));
    m_session.keepPicture(u"no-sync"_s);
    QVERIFY(m_session.choose(u"Frame Sync Mode"_s, 0));
    QTRY_COMPARE(value(u"acq/fsync_mode"_s).toInt(), 0);
    QVERIFY(m_session.wait([&](const QImage &now) { return Session::count(now, label, isRed) == 0; }));
}

void TestRecordingSetup::blackReferenceModeIsPicked()
{
    QVERIFY(m_session.choose(u"Black Ref Mode"_s, 1));
    QTRY_COMPARE(value(u"acq/corr_mode"_s).toInt() & 1, 1);
}

void TestRecordingSetup::memoryIsPartitioned()
{
    const auto dialog = [this] { return m_session.screen.window(u"Partition"_s); };
    m_session.click(m_session.layout().widget(u"Partition"_s).center());
    QTRY_VERIFY(dialog());
    QCOMPARE(m_session.screen.geometry(*dialog()).size(), QSize(175, 100));
    m_session.screen.focus(*dialog());
    m_session.keepPicture(u"partition"_s);
    m_session.key(u"ctrl+a"_s);
    QVERIFY(m_session.screen.type(u"8"_s));
    m_session.key(u"Return"_s);
    QTRY_COMPARE(value(u"acq/prtn_cnt"_s).toInt(), 8);
    QTRY_VERIFY(!dialog());
    m_session.focus();
}

void TestRecordingSetup::draggedGainIsSentSparinglyToItsEnd()
{
    fold({u"Acquisition"_s, u"Frame Buffer"_s});
    const QRect row = m_session.layout().widget(u"Gain"_s);
    const int y = row.top() + 11;
    m_session.camera.forgetRequests();
    m_session.press({row.center().x(), y});
    QString moves;
    for (int step = 1; step <= 50; ++step)
        moves += u" mousemove_relative 1 0 sleep 0.02"_s;
    QVERIFY(m_session.screen.input(moves));
    m_session.release();
    QTRY_VERIFY(!m_session.camera.requests("PUT", u"/adjust/gain"_s).isEmpty());
    QTest::qWait(200); // the last one is on its way
    for (const char *path : {"/adjust/gain", "/adjust/gain_r", "/adjust/gain_b"}) {
        const QList<QByteArray> sent = m_session.camera.requests("PUT", QString::fromLatin1(path));
        QVERIFY2(sent.size() >= 5, path);
        // 20 a second, and the drag took a little longer.
        QVERIFY2(sent.size() <= 40, qPrintable(QString::number(sent.size())));
        QCOMPARE(value(QString::fromLatin1(path + 1)).toDouble(), sent.last().toDouble());
    }
    // 50 of 128 pixels to the right of the middle, where 1 is, in a range of 10 to either side.
    const double gain = value(u"adjust/gain"_s).toDouble();
    QVERIFY2(gain > 5 && gain < 8, qPrintable(QString::number(gain)));
    m_session.keepPicture(u"gain"_s);
}

void TestRecordingSetup::autosaveIsSetUp()
{
    fold({u"Camera"_s, u"Image Tools"_s, u"Image Adjustments"_s});
    QVERIFY(m_session.choose(u"Mode"_s, 1, u"SSD Autosave"_s));
    QTRY_COMPARE(value(u"ssd/autosave/mode"_s).toInt(), 1);
    m_session.layout().setShown(u"SSD Autosave"_s,
                                {u"Save"_s, u"After Save"_s, u"File Name"_s, u"File Name Seq"_s});
    QVERIFY(m_session.choose(u"Save"_s, 1, u"SSD Autosave"_s));
    QTRY_COMPARE(value(u"ssd/autosave/mode"_s).toInt(), 3);
    m_session.layout().setShown(u"SSD Autosave"_s, {u"Start Frame"_s, u"Frame Count"_s});
    QVERIFY(m_session.type(u"Start Frame"_s, u"-50"_s));
    QTRY_COMPARE(value(u"ssd/autosave/start"_s).toInt(), -50);
    QVERIFY(m_session.type(u"Frame Count"_s, u"99"_s));
    QTRY_COMPARE(value(u"ssd/autosave/cnt"_s).toInt(), 99);
    QVERIFY(m_session.choose(u"After Save"_s, 1));
    QTRY_COMPARE(value(u"ssd/autosave/mode"_s).toInt(), 7);
    m_session.keepPicture(u"autosave"_s);
}

void TestRecordingSetup::driveIsEjected()
{
    m_session.click(m_session.layout().widget(u"Eject"_s).center());
    QTRY_COMPARE(value(u"ssd/state"_s).toInt(), 6);
    m_session.keepPicture(u"ejected"_s);
}

void TestRecordingSetup::lensIsFocusedAndStopped()
{
    fold({u"SSD"_s, u"SSD Autosave"_s});
    const double distance = value(u"lens/focus_dist"_s).toDouble();
    const QRect focus = m_session.layout().widget(u"Focus"_s);
    // The third of four in the upper row: a hundred steps farther.
    m_session.click({focus.left() + focus.width() * 5 / 8, focus.top() + 13});
    QTRY_VERIFY(value(u"lens/focus_dist"_s).toDouble() > distance);
    QCOMPARE(m_session.camera.requests("POST", u"/focus"_s).last(), R"({"step":100})"_ba);
    QVERIFY(m_session.type(u"F-stop"_s, u"8"_s));
    QTRY_COMPARE(value(u"lens/fstop"_s).toDouble(), 8.0);
    m_session.keepPicture(u"lens"_s);
}

void TestRecordingSetup::shutterIsClosed()
{
    m_session.click(m_session.layout().widget(u"Shutter"_s).center());
    QTRY_COMPARE(value(u"shtr/state"_s).toInt(), 1);
    QCOMPARE(m_session.camera.requests("POST", u"/shtr"_s).last(), R"({"pos":1})"_ba);
}

void TestRecordingSetup::lineIsSetUp()
{
    const QString line = u"I/O 6"_s;
    fold({u"Lens & Shutter"_s});
    m_session.toggleSection(line, false);
    // The signals in the order of their tokens: nothing, event1, event2, fsync, irig, ready, rec, shtr, trig.
    QVERIFY(m_session.choose(u"Signal"_s, 8, line));
    QTRY_COMPARE(value(u"io/io6/signal"_s).toString(), u"trig"_s);
    QVERIFY(m_session.choose(u"Mode"_s, 1, line));
    QTRY_COMPARE(value(u"io/io6/mode"_s).toInt(), 1);
    QVERIFY(m_session.choose(u"Polarity"_s, 3, line));
    QTRY_COMPARE(value(u"io/io6/polarity"_s).toInt(), 3);
    QVERIFY(m_session.type(u"Delay"_s, u"2.5 us"_s, line));
    // In the fixed clock of 125 MHz.
    QTRY_COMPARE(value(u"io/io6/delay"_s).toInt(), 313);
    QVERIFY(m_session.type(u"Filter"_s, u"9999 ms"_s, line));
    QTRY_COMPARE(value(u"io/io6/filter"_s).toInt(), 262143);
    m_session.keepPicture(u"line"_s);
}

void TestRecordingSetup::videoFormatIsPicked()
{
    const QString before = value(u"video/format"_s).toString();
    m_session.toggleSection(u"I/O 6"_s, true);
    m_session.click(m_session.layout().widget(u"Format"_s, u"Video"_s).center());
    // By keys: up to the first one, and one down.
    for (int i = 0; i < value(u"video/valid_format"_s).toArray().size(); ++i)
        m_session.key(u"Up"_s);
    m_session.key(u"Down"_s);
    m_session.keepPicture(u"video-formats"_s);
    m_session.key(u"Return"_s);
    QTRY_VERIFY(value(u"video/format"_s).toString() != before);
    QCOMPARE(value(u"video/format"_s), value(u"video/valid_format"_s).toArray()[1]);
}

void TestRecordingSetup::firmwareIsPickedAndSent()
{
    const QByteArray content = QByteArray("firmware of the camera\n").repeated(100000);
    QFile file(m_session.program().workingFolder() + u"/camera 4.q4fw"_s);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    file.close();
    m_session.toggleSection(u"Firmware"_s, false);
    m_session.click(m_session.layout().widget(u"Firmware Update"_s).center());
    Screen &screen = m_session.screen;
    QTRY_VERIFY(screen.window(u"Firmware Update"_s));
    screen.move(*screen.window(u"Firmware Update"_s), {400, 300});
    QTRY_COMPARE(screen.geometry(*screen.window(u"Firmware Update"_s)).topLeft(), QPoint(400, 300));
    const QRect dialog = screen.geometry(*screen.window(u"Firmware Update"_s));
    QCOMPARE(dialog.size(), QSize(480, 160));
    const auto clickIn = [&](QPoint place, const QRect &window) {
        const QPoint point = window.topLeft() + place;
        QVERIFY(screen.input(u"mousemove %1 %2 sleep 0.2 click 1"_s.arg(point.x()).arg(point.y())));
    };
    // The glyph at the end of the second row opens the system's choice of files, or the one drawn here.
    clickIn({458, 47}, dialog);
    QTRY_VERIFY(screen.window(u"Open Q4FW File"_s));
    screen.focus(*screen.window(u"Open Q4FW File"_s));
    // The only file there is marked.
    const QRect choice = screen.geometry(*screen.window(u"Open Q4FW File"_s));
    QTRY_VERIFY(Session::count(screen.picture(), choice, [](QRgb colour) { return colour == 0xFFD25F15; }) >
                5000);
    screen.keepPicture(u"file-choice"_s);
    clickIn({100, 62}, choice);
    clickIn({460, 375}, choice);
    QTRY_VERIFY(!screen.window(u"Open Q4FW File"_s));
    screen.focus(*screen.window(u"Firmware Update"_s));
    const QPoint startUpdate(120, 135);
    clickIn(startUpdate, dialog);
    QTRY_COMPARE(m_session.camera.upload()["size"_L1].toInt(), content.size());
    QCOMPARE(m_session.camera.upload()["file_name"_L1].toString(), u"camera 4.q4fw"_s);
    QCOMPARE(m_session.camera.upload()["sha256"_L1].toString().toLatin1(),
             QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex());
    QTRY_COMPARE(value(u"camera/fw_state"_s).toInt(), 1);
    screen.keepPicture(u"firmware"_s);
    // The same dialog starts no second one.
    m_session.camera.forgetRequests();
    clickIn(startUpdate, dialog);
    clickIn({360, 135}, dialog);
    QTRY_VERIFY(!screen.window(u"Firmware Update"_s));
    QCOMPARE(m_session.camera.requests("POST", u"/q4fw"_s).size(), 0);
    m_session.focus();
}

void TestRecordingSetup::pollsBringNothingBack()
{
    m_session.camera.forgetRequests();
    QTRY_VERIFY(m_session.camera.requests("GET", u"/"_s).size() >= 6);
    QCOMPARE(m_session.camera.requestsOf("PUT"), QStringList());
    m_session.keepPicture(u"set-up"_s);
}

QTEST_GUILESS_MAIN(TestRecordingSetup)
#include "tst_recording_setup.moc"
