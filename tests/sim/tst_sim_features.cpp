#include "camera_fixture.h"

#include <QJsonArray>

using namespace q4sim;

class TestSimFeatures : public QObject
{
    Q_OBJECT

private slots:
    void cameraWithEverything();
    void bareMonochromeCamera();
    void featureTakesItsNumber_data();
    void featureTakesItsNumber();
    void featureThatIsOffRefuses_data();
    void featureThatIsOffRefuses();
    void missingFeatureIsNoKeyAndIsOff();
    void unknownFeatureIsNamedInOneSentence_data();
    void unknownFeatureIsNamedInOneSentence();
    void videoFormatsAreThoseOfTheCamera_data();
    void videoFormatsAreThoseOfTheCamera();
    void cameraThatDoesNotTellItsFormatsTakesThem();
    void framesFollowTheSignalAtTheSyncInput();
    void signalThatIsTooFastIsNone();
    void signalIsPluggedAndPulled();
    void onlyTheExternalModeLooksAtTheSyncInput_data();
    void onlyTheExternalModeLooksAtTheSyncInput();
    void exposureFitsBetweenFramesOfTheSignal();

private:
    CameraFixture m_fix{QStringLiteral("127.0.1.73")};
};

void TestSimFeatures::cameraWithEverything()
{
    m_fix.start(m_fix.config());
    QCOMPARE(
        m_fix.value("features").toObject(),
        QJsonObject(
            {{"corr_mode", 1}, {"q4fw", 1}, {"lens", 3}, {"shtr", 1}, {"ssd-format", 1}, {"ssd-save", 3}}));
    QCOMPARE(m_fix.number("camera/cfa"), 1);
    QCOMPARE(m_fix.number("lens/state"), 3);
    QCOMPARE(m_fix.number("ssd/state"), 3);
    QCOMPARE(m_fix.value("video/valid_format").toArray().size(), 13);
}

void TestSimFeatures::bareMonochromeCamera()
{
    Config config = bareConfig();
    config.address = m_fix.config().address;
    config.discovery = false;
    m_fix.start(config);
    QCOMPARE(
        m_fix.value("features").toObject(),
        QJsonObject(
            {{"corr_mode", 0}, {"q4fw", 0}, {"lens", 0}, {"shtr", 0}, {"ssd-format", 0}, {"ssd-save", 0}}));
    QCOMPARE(m_fix.number("camera/cfa"), 0);
    QCOMPARE(m_fix.number("lens/state"), 0);
    QCOMPARE(m_fix.number("ssd/state"), 0);
    QCOMPARE(m_fix.value("video/valid_format").toArray(), QJsonArray({"1280x720p30"}));
    QCOMPARE(m_fix.text("video/format"), QStringLiteral("1280x720p30"));
}

void TestSimFeatures::featureTakesItsNumber_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"corr_mode", "q4fw", "lens", "shtr", "ssd-format", "ssd-save"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestSimFeatures::featureTakesItsNumber()
{
    QFETCH(QString, name);
    for (int number : {0, 1, 2, 3}) {
        Config config = m_fix.config();
        config.features[name] = number;
        QCOMPARE(Camera(config).value(QStringLiteral("features/") + name).toInt(-1), number);
    }
}

void TestSimFeatures::featureThatIsOffRefuses_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    const auto row = [](const char *name, const char *method, const char *path, const char *body,
                        int status) {
        QTest::newRow(name) << QString::fromLatin1(name) << QByteArray(method) << QString::fromLatin1(path)
                            << QByteArray(body) << status;
    };
    row("corr_mode", "PUT", "/acq/corr_mode", "1", 400);
    row("q4fw", "POST", "/q4fw", "", 404);
    row("lens", "PUT", "/lens/fstop", "8.000000", 409);
    row("shtr", "POST", "/shtr", "{\"pos\":1}", 409);
    row("ssd-format", "POST", "/ssd-format", "{\"name\":\"X\"}", 404);
    row("ssd-save", "PUT", "/ssd/autosave/mode", "1", 409);
}

void TestSimFeatures::featureThatIsOffRefuses()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, method);
    QFETCH(QString, path);
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    Config config = m_fix.config();
    config.features[name] = 0;
    m_fix.start(config);
    const QJsonObject before = m_fix.camera().status();
    QCOMPARE(m_fix.client().send(method, path, body).status, status);
    QCOMPARE(m_fix.camera().status(), before);
    if (name == u"q4fw")
        return; // An empty body is no firmware, so that a camera with the feature refuses it, too.
    m_fix.start(m_fix.config());
    QCOMPARE(m_fix.client().send(method, path, body).status, 200);
}

void TestSimFeatures::missingFeatureIsNoKeyAndIsOff()
{
    Config config = m_fix.config();
    config.features["q4fw"] = -1;
    config.features["shtr"] = -1;
    m_fix.start(config);
    QCOMPARE(m_fix.value("features").toObject().keys(),
             QStringList({"corr_mode", "lens", "ssd-format", "ssd-save"}));
    QCOMPARE(m_fix.post("/q4fw"), 404);
    QCOMPARE(m_fix.post("/shtr", "{\"pos\":1}"), 409);
}

void TestSimFeatures::unknownFeatureIsNamedInOneSentence_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("number");
    QTest::newRow("unknown") << "autofocus" << 1;
    QTest::newRow("below none") << "lens" << -2;
}

void TestSimFeatures::unknownFeatureIsNamedInOneSentence()
{
    QFETCH(QString, name);
    QFETCH(int, number);
    Config config = m_fix.config();
    config.features[name] = number;
    QCOMPARE(Camera(config).listen(), QStringLiteral("\"%1\" = %2 is no feature").arg(name).arg(number));
}

void TestSimFeatures::videoFormatsAreThoseOfTheCamera_data()
{
    QTest::addColumn<QStringList>("formats");
    QTest::addColumn<QString>("initial");
    QTest::newRow("one") << QStringList{"1280x720p50"} << "1280x720p50";
    QTest::newRow("two") << QStringList{"1280x720p50", "1920x1080p30"} << "1920x1080p30";
    QTest::newRow("one that no other camera has") << QStringList{"3840x2160p30"} << "3840x2160p30";
    QTest::newRow("none") << QStringList() << "1920x1080p30";
}

void TestSimFeatures::videoFormatsAreThoseOfTheCamera()
{
    QFETCH(QStringList, formats);
    QFETCH(QString, initial);
    Config config = m_fix.config();
    config.videoFormats = formats;
    m_fix.start(config);
    QCOMPARE(m_fix.value("video/valid_format"), QJsonValue(QJsonArray::fromStringList(formats)));
    QCOMPARE(m_fix.text("video/format"), initial);
    QCOMPARE(m_fix.put("/video/format", "\"1280x720p60\""), 400);
    for (const QString &format : std::as_const(formats)) {
        QCOMPARE(m_fix.client().put("/video/format", '"' + format.toUtf8() + '"'), 200);
        QCOMPARE(m_fix.text("video/format"), format);
    }
}

void TestSimFeatures::cameraThatDoesNotTellItsFormatsTakesThem()
{
    Config config = m_fix.config();
    config.tellsVideoFormats = false;
    m_fix.start(config);
    QCOMPARE(m_fix.value("video").toObject().keys(), QStringList{"format"});
    QCOMPARE(m_fix.put("/video/format", "\"1280x720p23.98\""), 200);
    QCOMPARE(m_fix.text("video/format"), QStringLiteral("1280x720p23.98"));
    QCOMPARE(m_fix.put("/video/format", "\"4K\""), 400);
}

void TestSimFeatures::framesFollowTheSignalAtTheSyncInput()
{
    Config config = m_fix.config();
    config.syncFps = 250.0;
    m_fix.start(config);
    QCOMPARE(m_fix.value("acq/fr_rate").toDouble(), 1000.0);
    QCOMPARE(m_fix.put("/acq/fsync_mode", "1"), 200);
    QCOMPARE(m_fix.number("acq/fsync_state"), 1);
    QCOMPARE(m_fix.value("acq/fr_rate").toDouble(), 250.0);
    const qint64 frame = m_fix.camera().liveFrame();
    m_fix.wait(std::chrono::seconds(2));
    QCOMPARE(m_fix.camera().liveFrame(), frame + 500);
    // The camera's own rate can be set meanwhile, and counts again afterwards.
    QCOMPARE(m_fix.put("/acq/fr_clks", "200000"), 200);
    QCOMPARE(m_fix.value("acq/fr_rate").toDouble(), 250.0);
    QCOMPARE(m_fix.put("/acq/fsync_mode", "0"), 200);
    QCOMPARE(m_fix.number("acq/fsync_state"), 0);
    QCOMPARE(m_fix.value("acq/fr_rate").toDouble(), 500.0);
}

void TestSimFeatures::signalThatIsTooFastIsNone()
{
    Config config = m_fix.config();
    // 48400 clocks of 10 ns is the shortest frame of 640x480: 2066.1 frames per second.
    config.syncFps = 2067.0;
    m_fix.start(config);
    QCOMPARE(m_fix.put("/acq/fsync_mode", "1"), 200);
    QCOMPARE(m_fix.number("acq/fsync_state"), -1);
    QCOMPARE(m_fix.value("acq/fr_rate").toDouble(), 1000.0);
    QCOMPARE(m_fix.camera().operate({{"sync_fps", 2066.0}}), QString());
    QCOMPARE(m_fix.number("acq/fsync_state"), 1);
    QCOMPARE(m_fix.value("acq/fr_rate").toDouble(), 2066.0);
}

void TestSimFeatures::signalIsPluggedAndPulled()
{
    m_fix.start(m_fix.config());
    QCOMPARE(m_fix.put("/acq/fsync_mode", "1"), 200);
    QCOMPARE(m_fix.number("acq/fsync_state"), -1);
    QCOMPARE(m_fix.camera().operate({{"sync_fps", 29.97}}), QString());
    QCOMPARE(m_fix.number("acq/fsync_state"), 1);
    QCOMPARE(m_fix.value("acq/fr_rate").toDouble(), 29.97);
    QCOMPARE(m_fix.camera().operate({{"sync_fps", 0}}), QString());
    QCOMPARE(m_fix.number("acq/fsync_state"), -1);
    QCOMPARE(m_fix.value("acq/fr_rate").toDouble(), 1000.0);
    QVERIFY(!m_fix.camera().operate({{"sync_fps", -1}}).isEmpty());
    QVERIFY(!m_fix.camera().operate({{"sync_fps", "fast"}}).isEmpty());
}

void TestSimFeatures::onlyTheExternalModeLooksAtTheSyncInput_data()
{
    QTest::addColumn<QByteArray>("mode");
    QTest::addColumn<int>("state");
    QTest::newRow("internal") << QByteArray("0") << 0;
    QTest::newRow("external") << QByteArray("1") << 1;
    QTest::newRow("IRIG") << QByteArray("2") << -1;
    QTest::newRow("trigger") << QByteArray("3") << -1;
}

void TestSimFeatures::onlyTheExternalModeLooksAtTheSyncInput()
{
    QFETCH(QByteArray, mode);
    QFETCH(int, state);
    Config config = m_fix.config();
    config.syncFps = 100.0;
    m_fix.start(config);
    QCOMPARE(m_fix.put("/acq/fsync_mode", mode), 200);
    QCOMPARE(m_fix.value("acq/fsync_mode").toInt(-1), mode.toInt());
    QCOMPARE(m_fix.number("acq/fsync_state"), state);
}

void TestSimFeatures::exposureFitsBetweenFramesOfTheSignal()
{
    Config config = m_fix.config();
    config.syncFps = 2000.0;
    m_fix.start(config);
    QCOMPARE(m_fix.put("/acq/exp_clks", "90013"), 200);
    QCOMPARE(m_fix.number("acq/exp_clks"), 90013);
    QCOMPARE(m_fix.put("/acq/fsync_mode", "1"), 200);
    // 50000 clocks a frame: at most 49400, and 13 + 25 * 1975 on the grid.
    QCOMPARE(m_fix.number("acq/exp_clks_max"), 49400);
    QCOMPARE(m_fix.number("acq/exp_clks"), 49388);
}

QTEST_GUILESS_MAIN(TestSimFeatures)
#include "tst_sim_features.moc"
