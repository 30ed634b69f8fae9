#include "camera/camera.h"
#include "image/camera_img_adj_model.h"
#include "image/img_adj_util.h"
#include "take/vesk_frame.h"
#include "tests/support/vesk_test_main.h"

#include <QJsonObject>
#include <QSignalSpy>
#include <QTest>

#include <memory>

/** The adjustment of a camera: where its values live, which table follows which value, and the overlays. */
class TestImgAdjModel : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void valuesStandInTheirOrderBelowAdjust();
    void valuesLiveInTheAdjustmentData();
    void freshModelGivesIdentityTables();
    void freshModelShowsAFrameAsItCameIn();
    void localWriteRecomputesOnlyItsTable_data();
    void localWriteRecomputesOnlyItsTable();
    void remoteWriteRecomputesOnlyItsTable_data() { localWriteRecomputesOnlyItsTable_data(); }
    void remoteWriteRecomputesOnlyItsTable();
    void writeOfPresentValueTellsNothing();
    void whiteBalanceNeedsNoTable_data();
    void whiteBalanceNeedsNoTable();
    void resetOfOneChannelLeavesTheOthers();
    void resetTellsOnceAndRecomputesOnce();
    void resetLeavesWhiteBalanceTransformAndOverlays();
    void transformTellsEachChangeOnce_data();
    void transformTellsEachChangeOnce();
    void transformIsForgottenWithTheModel();
    void focusPeakingEndsExposureAssist();
    void exposureAssistEndsFocusPeaking();
    void endingAnOverlayLeavesTheOtherOff();
    void copyKeepsTheLookOfItsMoment();
    void copyOutlivesRecomputedTables();

private:
    ImgAdjModel &model() { return *m_camera->imgAdjModel(); }
    VeskValue *value(const QString &property)
    {
        return model().property(property.toLatin1().constData()).value<VeskValue *>();
    }
    void poll(const QString &key, const QJsonValue &value)
    {
        m_camera->updateValues({{"adjust", QJsonObject{{key, value}}}});
    }

    std::unique_ptr<Camera> m_camera;
};

void TestImgAdjModel::init()
{
    m_camera = std::make_unique<Camera>(QHostAddress("127.0.0.1"), nullptr);
}

void TestImgAdjModel::valuesStandInTheirOrderBelowAdjust()
{
    const QStringList keys{"offset",  "offset_r", "offset_b", "gain",       "gain_r",     "gain_b", "gamma",
                           "gamma_r", "gamma_b",  "contrast", "contrast_r", "contrast_b", "cfa",    "wb_r",
                           "wb_g",    "wb_b",     "wb_cal_r", "wb_cal_g",   "wb_cal_b"};
    const QStringList properties{"offset", "offsetR", "offsetB",  "gain",      "gainR",     "gainB", "gamma",
                                 "gammaR", "gammaB",  "contrast", "contrastR", "contrastB", "cfa",   "wbR",
                                 "wbG",    "wbB",     "wbCalR",   "wbCalG",    "wbCalB"};
    QList<VeskValue *> values;
    for (VeskValue *one : m_camera->values())
        if (one->jsonPath().first() == "adjust")
            values.append(one);
    QCOMPARE(values.size(), 19);
    for (qsizetype i = 0; i < 19; ++i) {
        QCOMPARE(values[i]->jsonPath(), QStringList({"adjust", keys[i]}));
        QCOMPARE(values[i]->altJsonPath(), QStringList({QString()}));
        QCOMPARE(values[i]->type(), int(keys[i] == "cfa" ? QMetaType::Int : QMetaType::Double));
        QCOMPARE(values[i]->parent(), m_camera.get());
        QVERIFY(qobject_cast<CameraValue *>(values[i]));
        QCOMPARE(value(properties[i]), values[i]);
    }
}

void TestImgAdjModel::valuesLiveInTheAdjustmentData()
{
    const QJsonObject adjust{
        {"offset", 0.01},     {"offset_r", 0.02},   {"offset_b", 0.03}, {"gain", 1.01},    {"gain_r", 1.02},
        {"gain_b", 1.03},     {"gamma", 1.04},      {"gamma_r", 1.05},  {"gamma_b", 1.06}, {"contrast", 0.04},
        {"contrast_r", 0.05}, {"contrast_b", 0.06}, {"cfa", 2},         {"wb_r", 1.07},    {"wb_g", 1.08},
        {"wb_b", 1.09},       {"wb_cal_r", 1.1},    {"wb_cal_g", 1.2},  {"wb_cal_b", 1.3}};
    m_camera->updateValues({{"adjust", adjust}});
    const ImgAdjData &data = model().data();
    QCOMPARE(data.offset, QVariant(0.01));
    QCOMPARE(data.offsetR, QVariant(0.02));
    QCOMPARE(data.offsetB, QVariant(0.03));
    QCOMPARE(data.gain, QVariant(1.01));
    QCOMPARE(data.gainR, QVariant(1.02));
    QCOMPARE(data.gainB, QVariant(1.03));
    QCOMPARE(data.gamma, QVariant(1.04));
    QCOMPARE(data.gammaR, QVariant(1.05));
    QCOMPARE(data.gammaB, QVariant(1.06));
    QCOMPARE(data.contrast, QVariant(0.04));
    QCOMPARE(data.contrastR, QVariant(0.05));
    QCOMPARE(data.contrastB, QVariant(0.06));
    QCOMPARE(data.cfa, QVariant(2));
    QCOMPARE(data.wbR, QVariant(1.07));
    QCOMPARE(data.wbG, QVariant(1.08));
    QCOMPARE(data.wbB, QVariant(1.09));
    QCOMPARE(data.wbCalR, QVariant(1.1));
    QCOMPARE(data.wbCalG, QVariant(1.2));
    QCOMPARE(data.wbCalB, QVariant(1.3));
    QCOMPARE(m_camera->valuesToJson()["adjust"].toObject(), adjust);
}

void TestImgAdjModel::freshModelGivesIdentityTables()
{
    const ImgAdjData &data = model().data();
    for (const QList<quint16> &lut : {data.lutR, data.lutG, data.lutB}) {
        QCOMPARE(lut.size(), 65536);
        for (int i = 0; i < 65536; ++i)
            QCOMPARE(int(lut[i]), i);
    }
    QCOMPARE(data.cfa, QVariant(0));
    QCOMPARE(data.wbCalB, QVariant(1.0));
}

void TestImgAdjModel::freshModelShowsAFrameAsItCameIn()
{
    QVERIFY(m_camera->veskFrame()->set(QByteArray("\x00\x7f\x80\xff", 4), 4, 1, 4, 0, 0));
    QCOMPARE(m_camera->veskFrame()->marked(),
             QList<quint16>({0, 0, 0, 16288, 16288, 16288, 16544, 16544, 16544, 65535, 65535, 65535}));
}

void TestImgAdjModel::localWriteRecomputesOnlyItsTable_data()
{
    QTest::addColumn<QString>("property");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("table");
    QTest::addColumn<double>("number");
    QTest::addColumn<int>("entry");
    // Entry 10000 of the table: 10000 + 655; 20000; sqrt(10000 / 65535) x 65535 = 25600; and
    // (10000 - 32767.5) x tan(3 pi / 8) + 32767.5, which is below 0.
    for (const auto &[suffix, keySuffix, table] :
         {std::tuple("", "", "G"), std::tuple("R", "_r", "R"), std::tuple("B", "_b", "B")}) {
        const auto row = [&](const QString &name, double number, int entry) {
            QTest::newRow(qPrintable(name + suffix))
                << name + suffix << name + keySuffix << QString(table) << number << entry;
        };
        row("offset", 0.01, 10655);
        row("gain", 2.0, 20000);
        row("gamma", 2.0, 25600);
        row("contrast", 0.5, 0);
    }
}

void TestImgAdjModel::localWriteRecomputesOnlyItsTable()
{
    QFETCH(QString, property);
    QFETCH(QString, table);
    QFETCH(double, number);
    QFETCH(int, entry);
    const ImgAdjData before = model().data();
    QSignalSpy updated(&model(), &ImgAdjModel::imgAdjUpdated);
    value(property)->setValue(number, false);
    QCOMPARE(updated.count(), 1);
    const ImgAdjData &data = model().data();
    QCOMPARE(int(data.lutR[10000]), table == "R" ? entry : 10000);
    QCOMPARE(int(data.lutG[10000]), table == "G" ? entry : 10000);
    QCOMPARE(int(data.lutB[10000]), table == "B" ? entry : 10000);
    // A table that has not been written is still shared with the copy.
    QCOMPARE(data.lutR.isSharedWith(before.lutR), table != "R");
    QCOMPARE(data.lutG.isSharedWith(before.lutG), table != "G");
    QCOMPARE(data.lutB.isSharedWith(before.lutB), table != "B");
}

void TestImgAdjModel::remoteWriteRecomputesOnlyItsTable()
{
    QFETCH(QString, key);
    QFETCH(QString, table);
    QFETCH(double, number);
    QFETCH(int, entry);
    const ImgAdjData before = model().data();
    QSignalSpy updated(&model(), &ImgAdjModel::imgAdjUpdated);
    poll(key, number);
    QCOMPARE(updated.count(), 1);
    const ImgAdjData &data = model().data();
    QCOMPARE(int(data.lutR[10000]), table == "R" ? entry : 10000);
    QCOMPARE(int(data.lutG[10000]), table == "G" ? entry : 10000);
    QCOMPARE(int(data.lutB[10000]), table == "B" ? entry : 10000);
    QCOMPARE(data.lutR.isSharedWith(before.lutR), table != "R");
    QCOMPARE(data.lutG.isSharedWith(before.lutG), table != "G");
    QCOMPARE(data.lutB.isSharedWith(before.lutB), table != "B");
}

void TestImgAdjModel::writeOfPresentValueTellsNothing()
{
    const ImgAdjData before = model().data();
    QSignalSpy updated(&model(), &ImgAdjModel::imgAdjUpdated);
    QSignalSpy changed(model().gain(), &VeskValue::valueChanged);
    model().gain()->setValue(1.0, false);
    model().wbR()->setValue(1.0, false);
    poll("gain", 1.0);
    model().setRotate(0);
    model().setExpAssist(ImgAdjModel::ExpAssistDisabled);
    model().setFocusPeak(ImgAdjModel::FocusPeakDisabled);
    QCOMPARE(updated.count(), 0);
    QCOMPARE(changed.count(), 0);
    QVERIFY(model().data().lutG.isSharedWith(before.lutG));
}

void TestImgAdjModel::whiteBalanceNeedsNoTable_data()
{
    QTest::addColumn<QString>("property");
    for (const char *name : {"cfa", "wbR", "wbG", "wbB", "wbCalR", "wbCalG", "wbCalB"})
        QTest::newRow(name) << name;
}

void TestImgAdjModel::whiteBalanceNeedsNoTable()
{
    QFETCH(QString, property);
    const ImgAdjData before = model().data();
    VeskValue *changedValue = value(property);
    QSignalSpy updated(&model(), &ImgAdjModel::imgAdjUpdated);
    changedValue->setValue(2, false);
    QCOMPARE(updated.count(), 1);
    // No signal of a local write, and still the look has changed.
    changedValue->setValue(3, true);
    QCOMPARE(updated.count(), 2);
    QVERIFY(model().data().lutR.isSharedWith(before.lutR));
    QVERIFY(model().data().lutG.isSharedWith(before.lutG));
    QVERIFY(model().data().lutB.isSharedWith(before.lutB));
}

void TestImgAdjModel::resetOfOneChannelLeavesTheOthers()
{
    for (VeskValue *gain : {model().gain(), model().gainR(), model().gainB()})
        gain->setValue(2.0, false);
    model().offsetR()->setValue(0.25, false);
    model().gammaR()->setValue(3.0, false);
    model().contrastR()->setValue(0.5, false);
    model().contrastB()->setValue(0.5, false);
    model().reset(Util::R);
    const ImgAdjData &data = model().data();
    QCOMPARE(data.offsetR, QVariant(0.0));
    QCOMPARE(data.gainR, QVariant(1.0));
    QCOMPARE(data.gammaR, QVariant(1.0));
    QCOMPARE(data.contrastR, QVariant(0.0));
    QCOMPARE(data.gain, QVariant(2.0));
    QCOMPARE(data.gainB, QVariant(2.0));
    QCOMPARE(data.contrastB, QVariant(0.5));
    QCOMPARE(data.lutR[10000], quint16(10000));
    QCOMPARE(data.lutG[10000], quint16(20000));
    QVERIFY(data.lutB[10000] != 10000);
}

void TestImgAdjModel::resetTellsOnceAndRecomputesOnce()
{
    for (VeskValue *gain : {model().gain(), model().gainR(), model().gainB(), model().gamma()})
        gain->setValue(2.0, false);
    QSignalSpy updated(&model(), &ImgAdjModel::imgAdjUpdated);
    QSignalSpy changed(model().gain(), &VeskValue::valueChanged);
    QSignalSpy local(model().gain(), &VeskValue::valueChangedLocal);
    QVERIFY(QMetaObject::invokeMethod(&model(), "reset"));
    QCOMPARE(updated.count(), 1);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(local.count(), 0);
    for (const QList<quint16> &lut : {model().data().lutR, model().data().lutG, model().data().lutB})
        QCOMPARE(lut[10000], quint16(10000));
}

void TestImgAdjModel::resetLeavesWhiteBalanceTransformAndOverlays()
{
    model().wbR()->setValue(2.0, false);
    model().setRotate(90);
    model().setFlipH(true);
    model().setFocusPeak(ImgAdjModel::FocusPeakMed);
    model().reset();
    QCOMPARE(model().data().wbR, QVariant(2.0));
    QCOMPARE(model().rotate(), QVariant(90));
    QCOMPARE(model().flipH(), QVariant(true));
    QCOMPARE(model().focusPeak(), ImgAdjModel::FocusPeakMed);
}

void TestImgAdjModel::transformTellsEachChangeOnce_data()
{
    QTest::addColumn<QByteArray>("property");
    QTest::addColumn<QVariant>("setting");
    QTest::newRow("rotate") << QByteArray("rotate") << QVariant(90);
    QTest::newRow("flipH") << QByteArray("flipH") << QVariant(true);
    QTest::newRow("flipV") << QByteArray("flipV") << QVariant(true);
}

void TestImgAdjModel::transformTellsEachChangeOnce()
{
    QFETCH(QByteArray, property);
    QFETCH(QVariant, setting);
    QSignalSpy changed(&model(), ("2" + property + "Changed()").constData());
    QSignalSpy updated(&model(), &ImgAdjModel::imgAdjUpdated);
    QVERIFY(model().setProperty(property.constData(), setting));
    QVERIFY(model().setProperty(property.constData(), setting));
    QCOMPARE(model().property(property.constData()), setting);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(updated.count(), 1);
}

void TestImgAdjModel::transformIsForgottenWithTheModel()
{
    model().setRotate(90);
    model().setFlipH(true);
    model().setFlipV(true);
    model().setExpAssist(ImgAdjModel::ExpAssistEnabled);
    const QJsonObject kept = m_camera->valuesToJson()["adjust"].toObject();
    QCOMPARE(kept.size(), 19);
    init();
    m_camera->updateValues({{"adjust", kept}});
    QCOMPARE(model().rotate(), QVariant(0));
    QCOMPARE(model().flipH(), QVariant(0));
    QCOMPARE(model().flipV(), QVariant(0));
    QCOMPARE(model().expAssist(), ImgAdjModel::ExpAssistDisabled);
}

void TestImgAdjModel::focusPeakingEndsExposureAssist()
{
    model().setExpAssist(ImgAdjModel::ExpAssistEnabled);
    QSignalSpy expAssist(&model(), &ImgAdjModel::expAssistChanged);
    QSignalSpy focusPeak(&model(), &ImgAdjModel::focusPeakChanged);
    QSignalSpy updated(&model(), &ImgAdjModel::imgAdjUpdated);
    model().setFocusPeak(ImgAdjModel::FocusPeakHigh);
    QCOMPARE(model().expAssist(), ImgAdjModel::ExpAssistDisabled);
    QCOMPARE(model().focusPeak(), ImgAdjModel::FocusPeakHigh);
    QCOMPARE(expAssist.count(), 1);
    QCOMPARE(focusPeak.count(), 1);
    QCOMPARE(updated.count(), 2);
}

void TestImgAdjModel::exposureAssistEndsFocusPeaking()
{
    model().setFocusPeak(ImgAdjModel::FocusPeakLow);
    QSignalSpy expAssist(&model(), &ImgAdjModel::expAssistChanged);
    QSignalSpy focusPeak(&model(), &ImgAdjModel::focusPeakChanged);
    QSignalSpy updated(&model(), &ImgAdjModel::imgAdjUpdated);
    model().setExpAssist(ImgAdjModel::ExpAssistEnabled);
    QCOMPARE(model().expAssist(), ImgAdjModel::ExpAssistEnabled);
    QCOMPARE(model().focusPeak(), ImgAdjModel::FocusPeakDisabled);
    QCOMPARE(expAssist.count(), 1);
    QCOMPARE(focusPeak.count(), 1);
    QCOMPARE(updated.count(), 2);
}

void TestImgAdjModel::endingAnOverlayLeavesTheOtherOff()
{
    model().setFocusPeak(ImgAdjModel::FocusPeakLow);
    QSignalSpy expAssist(&model(), &ImgAdjModel::expAssistChanged);
    model().setFocusPeak(ImgAdjModel::FocusPeakDisabled);
    QCOMPARE(model().data().focusPeak, 0);
    QCOMPARE(model().data().expAssist, 0);
    QCOMPARE(expAssist.count(), 0);
}

void TestImgAdjModel::copyKeepsTheLookOfItsMoment()
{
    model().setFocusPeak(ImgAdjModel::FocusPeakMed);
    const ImgAdjData copy = model().data();
    model().setFocusPeak(ImgAdjModel::FocusPeakDisabled);
    model().setRotate(270);
    model().wbR()->setValue(3.0, false);
    model().gain()->setValue(2.0, false);
    QCOMPARE(copy.focusPeak, 2);
    QCOMPARE(copy.rotate, QVariant(0));
    QCOMPARE(copy.wbR, QVariant(1.0));
    QCOMPARE(copy.lutG[10000], quint16(10000));
}

void TestImgAdjModel::copyOutlivesRecomputedTables()
{
    const ImgAdjData copy = model().data();
    m_camera.reset();
    QCOMPARE(copy.lutB[65535], quint16(65535));
    QCOMPARE(copy.gain, QVariant(1.0));
}

VESK_TEST_MAIN(TestImgAdjModel)
#include "tst_img_adj_model.moc"
