#include "camera_fixture.h"

using namespace q4sim;
using namespace std::chrono_literals;

class TestSimLens : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_fix.start(m_fix.config()); }
    void mountedLensIsFoundThenSetUpThenReady();
    void lensThatIsNotReadyMovesNothing();
    void failedLensStaysFailedUntilMountedAnew();
    void handsOnLensTakesNoFocusButAnFstop();
    void focusStepMovesTheDistance_data();
    void focusStepMovesTheDistance();
    void focusRunsToBothEndsAndBack();
    void fstopGoesToTheNearestStop_data();
    void fstopGoesToTheNearestStop();
    void lensFeaturesAreSwitchedOneByOne_data();
    void lensFeaturesAreSwitchedOneByOne();
    void shutterFailsAndIsMended();
    void shutterThatFailsFromTheStart();

private:
    double distance() const { return m_fix.value("lens/focus_dist").toDouble(-1); }

    CameraFixture m_fix{QStringLiteral("127.0.1.70")};
};

void TestSimLens::mountedLensIsFoundThenSetUpThenReady()
{
    QCOMPARE(m_fix.number("lens/state"), 3);
    QCOMPARE(m_fix.camera().operate({{"lens", "remove"}}), QString());
    QCOMPARE(m_fix.number("lens/state"), 0);
    QCOMPARE(m_fix.text("lens/name"), QString());
    QCOMPARE(m_fix.number("lens/fstop_min"), 0);
    QCOMPARE(distance(), 0.0);
    QCOMPARE(m_fix.camera().operate({{"lens", "mount"}}), QString());
    QCOMPARE(m_fix.number("lens/state"), 1);
    QCOMPARE(m_fix.text("lens/name"), QString());
    m_fix.wait(499ms);
    QCOMPARE(m_fix.number("lens/state"), 1);
    m_fix.wait(1ms);
    QCOMPARE(m_fix.number("lens/state"), 2);
    m_fix.wait(999ms);
    QCOMPARE(m_fix.number("lens/state"), 2);
    m_fix.wait(1ms);
    QCOMPARE(m_fix.number("lens/state"), 3);
    QCOMPARE(m_fix.text("lens/name"), QStringLiteral("24-70mm f/2.8"));
    QCOMPARE(m_fix.number("lens/focal_len"), 50);
    QCOMPARE(m_fix.value("lens/fstop_max").toDouble(), 2.8);
    QCOMPARE(m_fix.number("lens/fstop_min"), 22);
}

void TestSimLens::lensThatIsNotReadyMovesNothing()
{
    m_fix.camera().operate({{"lens", "remove"}});
    QCOMPARE(m_fix.post("/focus", "{\"step\":1}"), 409);
    QCOMPARE(m_fix.put("/lens/fstop", "8.000000"), 409);
    m_fix.camera().operate({{"lens", "mount"}});
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(m_fix.post("/focus", "{\"step\":1}"), 409);
        QCOMPARE(m_fix.put("/lens/fstop", "8.000000"), 409);
        m_fix.wait(700ms);
    }
    m_fix.wait(100ms);
    QCOMPARE(m_fix.post("/focus", "{\"step\":1}"), 200);
    QCOMPARE(m_fix.put("/lens/fstop", "8.000000"), 200);
}

void TestSimLens::failedLensStaysFailedUntilMountedAnew()
{
    m_fix.camera().operate({{"lens", "fail"}});
    m_fix.wait(1h);
    QCOMPARE(m_fix.number("lens/state"), 4);
    QCOMPARE(m_fix.post("/focus", "{\"step\":1}"), 409);
    m_fix.camera().operate({{"lens", "mount"}});
    m_fix.wait(1500ms);
    QCOMPARE(m_fix.number("lens/state"), 3);
}

void TestSimLens::handsOnLensTakesNoFocusButAnFstop()
{
    QCOMPARE(m_fix.number("lens/af_switch"), 0);
    m_fix.camera().operate({{"af_switch", 1}});
    QCOMPARE(m_fix.number("lens/af_switch"), 1);
    const double before = distance();
    QCOMPARE(m_fix.post("/focus", "{\"step\":100}"), 409);
    m_fix.wait(1s);
    QCOMPARE(distance(), before);
    QCOMPARE(m_fix.put("/lens/fstop", "8.000000"), 200);
    m_fix.camera().operate({{"af_switch", 0}});
    QCOMPARE(m_fix.post("/focus", "{\"step\":100}"), 200);
}

void TestSimLens::focusStepMovesTheDistance_data()
{
    QTest::addColumn<QByteArray>("step");
    QTest::addColumn<double>("metres");
    // 0.38 m * 2000 / (2000 - position) from position 400, in whole centimetres.
    QTest::newRow("1") << QByteArray("1") << 0.48;       // 0.4753
    QTest::newRow("10") << QByteArray("10") << 0.48;     // 0.4780
    QTest::newRow("100") << QByteArray("100") << 0.51;   // 0.5067
    QTest::newRow("-1") << QByteArray("-1") << 0.47;     // 0.4747
    QTest::newRow("-10") << QByteArray("-10") << 0.47;   // 0.4720
    QTest::newRow("-100") << QByteArray("-100") << 0.45; // 0.4471
    QTest::newRow("0") << QByteArray("0") << 0.38;
    QTest::newRow("32767") << QByteArray("32767") << 65535.0;
    QTest::newRow("beyond the near end") << QByteArray("-30000") << 0.38;
    QTest::newRow("beyond the far end") << QByteArray("30000") << 65535.0;
}

void TestSimLens::focusStepMovesTheDistance()
{
    QFETCH(QByteArray, step);
    QFETCH(double, metres);
    QCOMPARE(m_fix.post("/focus", "{\"step\":" + step + "}"), 200);
    m_fix.wait(2s);
    QCOMPARE(distance(), metres);
}

void TestSimLens::focusRunsToBothEndsAndBack()
{
    QCOMPARE(m_fix.post("/focus", "{\"step\":32767}"), 200);
    // A step takes a millisecond, and 1600 are left.
    m_fix.wait(1599ms);
    QCOMPARE(distance(), 760.0);
    m_fix.wait(1ms);
    QCOMPARE(distance(), 65535.0);
    QCOMPARE(m_fix.post("/focus", "{\"step\":-1}"), 200);
    m_fix.wait(1ms);
    QCOMPARE(distance(), 760.0);
    QCOMPARE(m_fix.post("/focus", "{\"step\":0}"), 200);
    m_fix.wait(2s);
    QCOMPARE(distance(), 0.38);
}

void TestSimLens::fstopGoesToTheNearestStop_data()
{
    QTest::addColumn<QByteArray>("written");
    QTest::addColumn<double>("taken");
    QTest::newRow("a stop") << QByteArray("5.600000") << 5.6;
    QTest::newRow("between, nearer to the lower") << QByteArray("3.300000") << 3.2;
    QTest::newRow("between, nearer to the upper") << QByteArray("12.500000") << 13.0;
    // 11 * 13 = 143, and 11.9 squared is less.
    QTest::newRow("by ratio, not by difference") << QByteArray("11.970000") << 13.0;
    QTest::newRow("just below the middle") << QByteArray("11.900000") << 11.0;
    QTest::newRow("wider than the lens") << QByteArray("1.000000") << 2.8;
    QTest::newRow("smaller than the lens") << QByteArray("90.000000") << 22.0;
    QTest::newRow("none") << QByteArray("0.000000") << 2.8;
}

void TestSimLens::fstopGoesToTheNearestStop()
{
    QFETCH(QByteArray, written);
    QFETCH(double, taken);
    QCOMPARE(m_fix.put("/lens/fstop", written), 200);
    QCOMPARE(m_fix.value("lens/fstop").toDouble(), taken);
}

void TestSimLens::lensFeaturesAreSwitchedOneByOne_data()
{
    QTest::addColumn<int>("feature");
    QTest::addColumn<int>("fstop");
    QTest::addColumn<int>("focus");
    QTest::newRow("none") << 0 << 409 << 409;
    QTest::newRow("f-stop") << 1 << 200 << 409;
    QTest::newRow("focus") << 2 << 409 << 200;
    QTest::newRow("both") << 3 << 200 << 200;
}

void TestSimLens::lensFeaturesAreSwitchedOneByOne()
{
    QFETCH(int, feature);
    QFETCH(int, fstop);
    QFETCH(int, focus);
    Config config = m_fix.config();
    config.features["lens"] = feature;
    m_fix.start(config);
    QCOMPARE(m_fix.number("features/lens"), feature);
    QCOMPARE(m_fix.put("/lens/fstop", "8.000000"), fstop);
    QCOMPARE(m_fix.value("lens/fstop").toDouble(), fstop == 200 ? 8.0 : 4.0);
    QCOMPARE(m_fix.post("/focus", "{\"step\":0}"), focus);
    m_fix.wait(1s);
    QCOMPARE(distance(), focus == 200 ? 0.38 : 0.48);
}

void TestSimLens::shutterFailsAndIsMended()
{
    m_fix.camera().operate({{"shutter", "fail"}});
    QCOMPARE(m_fix.number("shtr/state"), 0);
    QCOMPARE(m_fix.post("/shtr", "{\"pos\":1}"), 200);
    m_fix.wait(199ms);
    QCOMPARE(m_fix.number("shtr/state"), 0);
    m_fix.wait(1ms);
    QCOMPARE(m_fix.number("shtr/state"), 2);
    QCOMPARE(m_fix.post("/shtr", "{\"pos\":0}"), 200);
    m_fix.wait(1s);
    QCOMPARE(m_fix.number("shtr/state"), 2);
    m_fix.camera().operate({{"shutter", "work"}});
    QCOMPARE(m_fix.number("shtr/state"), 2);
    QCOMPARE(m_fix.post("/shtr", "{\"pos\":0}"), 200);
    m_fix.wait(200ms);
    QCOMPARE(m_fix.number("shtr/state"), 0);
}

void TestSimLens::shutterThatFailsFromTheStart()
{
    Config config = m_fix.config();
    config.shutterFails = true;
    m_fix.start(config);
    QCOMPARE(m_fix.post("/shtr", "{\"pos\":1}"), 200);
    m_fix.wait(200ms);
    QCOMPARE(m_fix.number("shtr/state"), 2);
}

QTEST_GUILESS_MAIN(TestSimLens)
#include "tst_sim_lens.moc"
