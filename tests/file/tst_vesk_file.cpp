#include "camera/vesk_value.h"
#include "file/vesk_file.h"
#include "file/vesk_file_value.h"
#include "take/raw_frame.h"
#include "tests/file/hand_made_file.h"
#include "tests/support/vesk_test_main.h"

#include <QJsonDocument>
#include <QRegularExpression>
#include <QSignalSpy>

#include <limits>
#include <memory>

using namespace HandMade;

/** A native file as a source: what it tells of the recording, its frames and its adjustments. */
class TestVeskFile : public QObject
{
    Q_OBJECT

private:
    /** A file of these bytes, opened. */
    std::unique_ptr<VeskFile> opened(const QByteArray &bytes)
    {
        auto file = std::make_unique<VeskFile>(m_folder->write(bytes), VeskApp::instance());
        if (!file->open())
            qFatal("the file does not open");
        return file;
    }
    static QVariant property(const VeskFile &file, const char *name)
    {
        const auto *value = file.property(name).value<VeskValue *>();
        return value ? value->variant() : QVariant();
    }

    std::unique_ptr<Folder> m_folder;

private slots:
    void init() { m_folder = std::make_unique<Folder>(); }

    void fileIsClosedUntilItIsOpened()
    {
        const QString path = m_folder->write(usualRun(0, 1));
        VeskFile file(path, VeskApp::instance());
        QCOMPARE(file.type(), 5);
        QCOMPARE(file.property("fileName"), path);
        QVERIFY(QRegularExpression("^[0-9A-F]{1,16}-VeskFile$").match(file.objectName()).hasMatch());
        QVERIFY(!file.isOpen());
        QVERIFY(!file.valuesInit());
        QVERIFY(!file.frCntValue()->variant().isValid());
        RawFrame frame;
        QSignalSpy filled(&frame, &RawFrame::initFinished);
        QCOMPARE(file.getFrame(&frame, 0), -1);
        file.setSelected(true);
        QCOMPARE(file.requestFrame(), -1);
        QCOMPARE(filled.count(), 0);
    }

    void everyValueComesFromItsPlace_data()
    {
        QTest::addColumn<QByteArray>("property");
        QTest::addColumn<QVariant>("value");
        const auto row = [](const char *name, const QVariant &value) {
            QTest::newRow(name) << QByteArray(name) << value;
        };
        row("firstFr", -7);
        row("lastFr", 11);
        row("frCnt", 19);
        row("ptFrCnt", 12);
        row("res", "4x2");
        row("bpp", 8);
        row("expClks", 101);
        row("expTime", 0.25);
        row("frClks", 102);
        row("frRate", 1000.5);
        row("fsyncMode", 1);
        row("fsyncState", 2);
        row("corrMode", 3000000000U);
        row("cameraName", QStringLiteral("K\u00E4fer"));
        row("cameraSerial", "S1");
        row("cameraModel", "M1");
        row("cfa", 4);
        row("fwVer", "1.2");
        row("metaSize", 8);
        row("yearOffset", 1767225600);
        row("lensMount", "EF");
        row("lensId", 31);
        row("lensName", "50mm");
        row("lensAFSwitch", 1);
        row("lensFocalLenMin", 32);
        row("lensFocalLenMax", 33);
        row("lensFocalLen", 34);
        row("lensFstopMin", 1.5);
        row("lensFstopMax", 22.5);
        row("lensFstop", 2.5);
        row("lensFocusDist", 0.75);
        row("offset", 0.01);
        row("offsetR", 0.02);
        row("offsetB", 0.03);
        row("gain", 1.01);
        row("gainR", 1.02);
        row("gainB", 1.03);
        row("gamma", 2.01);
        row("gammaR", 2.02);
        row("gammaB", 2.03);
        row("contrast", 0.11);
        row("contrastR", 0.12);
        row("contrastB", 0.13);
        row("wbR", 3.01);
        row("wbG", 3.02);
        row("wbB", 3.03);
        row("wbCalR", 4.01);
        row("wbCalG", 4.02);
        row("wbCalB", 4.03);
        row("adjustment cfa", 5);
    }

    void everyValueComesFromItsPlace()
    {
        const QByteArray json =
            "{\"first_fr\":-7,\"last_fr\":11,\"fr_cnt\":19,\"pt_fr_cnt\":12,\"prtn_fr_cnt\":77,\"other\":[1],"
            "\"acq\":{\"res\":\"4x2\",\"bpp\":8,\"clk_freq\":100,\"exp_clks\":101,\"exp_time\":0.25,"
            "\"fr_clks\":102,\"fr_rate\":1000.5,\"fsync_mode\":1,\"fsync_state\":2,\"corr_mode\":3000000000},"
            "\"camera\":{\"name\":\"K\xC3\xA4\x66\x65r\",\"serial\":\"S1\",\"model\":\"M1\",\"cfa\":4,"
            "\"fw_ver\":\"1.2\"},\"meta\":{\"size\":8,\"year_offset\":1767225600},"
            "\"lens\":{\"mount\":\"EF\",\"id\":31,\"name\":\"50mm\",\"af_switch\":1,\"focal_len_min\":32,"
            "\"focal_len_max\":33,\"focal_len\":34,\"fstop_min\":1.5,\"fstop_max\":22.5,\"fstop\":2.5,"
            "\"focus_dist\":0.75},"
            "\"adjust\":{\"offset\":0.01,\"offset_r\":0.02,\"offset_b\":0.03,\"gain\":1.01,\"gain_r\":1.02,"
            "\"gain_b\":1.03,\"gamma\":2.01,\"gamma_r\":2.02,\"gamma_b\":2.03,\"contrast\":0.11,"
            "\"contrast_r\":0.12,\"contrast_b\":0.13,\"cfa\":5,\"wb_r\":3.01,\"wb_g\":3.02,\"wb_b\":3.03,"
            "\"wb_cal_r\":4.01,\"wb_cal_g\":4.02,\"wb_cal_b\":4.03}}";
        QFETCH(const QByteArray, property);
        const auto file = opened(usual(json, {}));
        const bool ofRecording = file->metaObject()->indexOfProperty(property.constData()) >= 0;
        const QVariant found =
            ofRecording ? TestVeskFile::property(*file, property.constData())
            : property == "adjustment cfa"
                ? file->imgAdjModel()->cfa()->variant()
                : file->imgAdjModel()->property(property.constData()).value<VeskValue *>()->variant();
        QTEST(found, "value");
    }

    void olderPlacesAreReadWhereTheFirstHasNothing_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QVariant>("metaSize");
        QTest::addColumn<QVariant>("yearOffset");
        const auto row = [](const char *name, const char *json, const QVariant &size,
                            const QVariant &offset) {
            QTest::newRow(name) << QByteArray(json) << size << offset;
        };
        row("no meta", R"({"meta_size":16,"time":{"year_offset":5}})", 16, 5);
        row("null", R"({"meta":{"size":null},"meta_size":16,"time":{"year_offset":5}})", 16, 5);
        row("meta is no object", R"({"meta":7,"meta_size":16,"time":{"year_offset":5}})", 16, 5);
        row("both", R"({"meta":{"size":8,"year_offset":6},"meta_size":16,"time":{"year_offset":5}})", 8, 6);
        row("empty key", R"({"":{"size":3},"\u0000":{"size":4},"meta_size":16})", 16, {});
        row("zero counts", R"({"meta":{"size":0},"meta_size":16})", 0, {});
        row("nowhere", "{}", {}, {});
        row("null everywhere", R"({"meta":{"size":null},"meta_size":null,"time":null})", {}, {});
        row("wrong kind", R"({"meta":{"size":"8","year_offset":true}})", 0, 0);
    }

    void olderPlacesAreReadWhereTheFirstHasNothing()
    {
        QFETCH(const QByteArray, json);
        const auto file = opened(usual(json, {}));
        QTEST(file->metaSizeValue()->variant(), "metaSize");
        QTEST(file->yearOffsetValue()->variant(), "yearOffset");
    }

    void valuesWithoutAnOlderPlaceTakeNothingFromAnEmptyKey_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::newRow("empty") << QByteArray(R"({"":5})");
        QTest::newRow("null character") << QByteArray(R"({"\u0000":5})");
        QTest::newRow("null character among others")
            << QByteArray(R"({"acq":{"res":"4x2"},"\u0000":{"a":1}})");
    }

    void valuesWithoutAnOlderPlaceTakeNothingFromAnEmptyKey()
    {
        QFETCH(const QByteArray, json);
        const auto file = opened(usual(json, {}));
        QVERIFY(!file->firstFrValue()->variant().isValid());
        QVERIFY(!file->corrModeValue()->variant().isValid());
        QCOMPARE(file->imgAdjModel()->gain()->variant(), QVariant(1.0));
    }

    void fileOpensToAllFramesAndStandsOnTheFirst()
    {
        VeskFile file(m_folder->write(usualRun(-2, 2)), VeskApp::instance());
        QStringList told;
        connect(&file, &VeskFile::frChanged, this, [&told] { told.append("fr"); });
        connect(&file, &VeskFile::aFrChanged, this, [&told] { told.append("a"); });
        connect(&file, &VeskFile::bFrChanged, this, [&told] { told.append("b"); });
        connect(&file, &VeskFile::valuesInitChanged, this, [&told] { told.append("init"); });
        connect(&file, &VeskFile::valuesInitFinished, this, [&told] { told.append("finished"); });
        QVERIFY(file.open());
        QCOMPARE(told.join(' '), "fr a b init finished");
        QVERIFY(file.isOpen());
        QVERIFY(file.valuesInit());
        QCOMPARE(file.fr(), -2);
        QCOMPARE(file.aFr(), -2);
        QCOMPARE(file.bFr(), 2);
        QCOMPARE(file.version(), 2U);
        QCOMPARE(file.jsonOffset(), 36U);
        QCOMPARE(file.jsonSize(), quint64(description(-2, 2).size()));
        QCOMPARE(file.dataOffset(), 4096);
        QCOMPARE(file.dataFormat(), 3U);
    }

    void markersOfOneFrameCoincide()
    {
        const auto file = opened(usualRun(7, 7));
        QCOMPARE(file->fr(), 7);
        QCOMPARE(file->aFr(), 7);
        QCOMPARE(file->bFr(), 7);
    }

    void frameIsReadFromItsPlace_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<qint64>("fr");
        QTest::addColumn<QByteArray>("data");
        const QByteArray json = description(-2, 2);
        QByteArray frames;
        for (quint32 i = 0; i < 5; ++i)
            frames += record(i, uchar(10 * i));
        const auto size = quint64(json.size());
        const QByteArray version1 = (header(1, 32, size, 500) + json).leftJustified(500, '\0') + frames;
        const QByteArray framesFirst = header(2, 116, size, 36) + frames + json;
        QTest::newRow("first") << usual(json, frames) << qint64(-2) << record(0, 0);
        QTest::newRow("trigger") << usual(json, frames) << qint64(0) << record(2, 20);
        QTest::newRow("last") << usual(json, frames) << qint64(2) << record(4, 40);
        QTest::newRow("version 1") << version1 << qint64(1) << record(3, 30);
        QTest::newRow("before the description") << framesFirst << qint64(1) << record(3, 30);
        QTest::newRow("behind the end") << usual(json, frames) << qint64(3) << QByteArray();
        QTest::newRow("no number yet")
            << usual(json, frames) << std::numeric_limits<qint64>::max() << QByteArray();
        QTest::newRow("before the file") << usual(json, frames) << qint64(-1000) << QByteArray();
        QTest::newRow("before the first") << usual(json, frames) << qint64(-3) << QByteArray();
        QTest::newRow("cut off") << usual(json, frames.first(76)) << qint64(2) << record(4, 40).first(12);
        QTest::newRow("cut off in the metadata")
            << usual(json, frames.first(67)) << qint64(2) << record(4, 40).first(3);
    }

    void frameIsReadFromItsPlace()
    {
        QFETCH(const QByteArray, bytes);
        QFETCH(const qint64, fr);
        const auto file = opened(bytes);
        RawFrame frame;
        QSignalSpy filled(&frame, &RawFrame::initFinished);
        QCOMPARE(file->getFrame(&frame, fr), 0);
        QCOMPARE(filled.count(), 1);
        QTEST(frame.data(), "data");
        QCOMPARE(frame.width(), 4);
        QCOMPARE(frame.height(), 2);
        QCOMPARE(frame.imgSize(), 8U);
        QCOMPARE(frame.metaSize(), 8U);
        QCOMPARE(frame.yearOffset(), 0U);
        QCOMPARE(file->getFrame(nullptr, fr), -1);
    }

    void framesBeyondFourGigabytesAreRead()
    {
        const QByteArray json =
            R"({"acq":{"res":"1024x1024"},"first_fr":-3000,"last_fr":2999,"meta":{"size":32,"year_offset":9}})";
        QFile sparse(m_folder->write(usual(json, {})));
        QVERIFY(sparse.open(QIODevice::ReadWrite));
        // 4096 + 4500 * (32 + 1024 * 1024)
        QVERIFY(sparse.seek(4718740096));
        const QByteArray written = QByteArray(32, 'm') + QByteArray(1024 * 1024, 'p');
        QCOMPARE(sparse.write(written), written.size());
        sparse.close();

        VeskFile file(sparse.fileName(), VeskApp::instance());
        QVERIFY(file.open());
        RawFrame frame;
        QCOMPARE(file.getFrame(&frame, 1500), 0);
        QVERIFY(frame.data() == written);
        QCOMPARE(frame.yearOffset(), 9U);
        RawFrame hole;
        file.getFrame(&hole, 1499);
        QVERIFY(hole.data() == QByteArray(32 + 1024 * 1024, '\0'));
        RawFrame behind;
        file.getFrame(&behind, 1501);
        QVERIFY(behind.data().isEmpty());
    }

    void selectedFileShowsItsFirstFrame()
    {
        const auto file = opened(usualRun(-2, 2));
        QVERIFY(file->imgFrame()->image().isNull());
        file->setSelected(true);
        QCOMPARE(file->imgFrame()->image().size(), QSize(4, 2));
        QCOMPARE(file->timestamp(), "1970-01-01T00:00:00.000000500Z");
        QVERIFY(!file->frameInFlight());
        file->pause();
        file->setFr(1);
        QCOMPARE(file->timestamp(), "1970-01-01T00:00:03.000000500Z");
    }

    void filePlaysOnTheClock()
    {
        qint64 nowNs = 0;
        VeskFile file(m_folder->write(usualRun(-2, 2)), VeskApp::instance(),
                      PlayClock([&nowNs] { return nowNs; }));
        QVERIFY(file.open());
        file.setSelected(true);
        QCOMPARE(file.state(), PlaybackVeskObject::Play);
        const auto passSteps = [&](int steps) {
            nowNs += 33'333'333LL * steps;
            QMetaObject::invokeMethod(&file, "incrementFrame", Qt::DirectConnection);
            return file.veskFrame()->seconds();
        };
        QCOMPARE(passSteps(1), 1U);
        QCOMPARE(passSteps(3), 4U); // three steps on from the frame before
        QCOMPARE(file.fr(), 2);
        QCOMPARE(passSteps(1), 0U); // round the end
        QCOMPARE(file.fr(), -2);
    }

    void pausedFileShowsAChangedAdjustment()
    {
        const auto file = opened(usualRun(0, 3));
        file->setSelected(true);
        file->pause();
        const QImage before = file->imgFrame()->image().copy();
        file->imgAdjModel()->gain()->setValue(3.0, false);
        QVERIFY(file->imgFrame()->image() != before);
        file->imgAdjModel()->reset();
        QCOMPARE(file->imgFrame()->image(), before);
    }

    void adjustmentsTellWhereAChangeComesFrom()
    {
        const auto file = opened(usualRun(0, 3, ",\"adjust\":{\"gain\":2.5}"));
        auto *gain = qobject_cast<VeskFileValue *>(file->imgAdjModel()->gain());
        QVERIFY(gain);
        QSignalSpy local(gain, &VeskValue::valueChangedLocal);
        QSignalSpy remote(gain, &VeskFileValue::valueChangedRemote);
        QSignalSpy changed(gain, &VeskValue::valueChanged);
        QSignalSpy updated(file->imgAdjModel(), &ImgAdjModel::imgAdjUpdated);
        QVERIFY(gain->setProperty("value", 3.5)); // as a view writes
        QCOMPARE(gain->variant(), QVariant(3.5));
        QCOMPARE(local.count(), 1);
        QCOMPARE(local[0][0].value<VeskValue *>(), gain);
        QCOMPARE(remote.count(), 0);
        QCOMPARE(updated.count(), 1);
        gain->setValue(3.5, false);
        QCOMPARE(changed.count(), 1);
        gain->setValue(4.5, true);
        QCOMPARE(changed.count(), 2);
        QCOMPARE(local.count(), 1);
        QCOMPARE(updated.count(), 1);
        QVERIFY(gain->setValueFromJson(1.5));
        QVERIFY(!gain->setValueFromJson(1.5));
        QCOMPARE(remote.count(), 1);
        QVERIFY(gain->updateValue(2.0));
        QVERIFY(!gain->updateValue(2.0));
        QCOMPARE(remote.count(), 2);
        QCOMPARE(local.count(), 1);
        QCOMPARE(updated.count(), 3);
    }

    void whatTellsOfTheRecordingCannotBeWritten()
    {
        const auto file = opened(usualRun(0, 3));
        QVERIFY(!file->corrModeValue()->setProperty("value", 1));
        QVERIFY(!file->resValue()->setProperty("value", "8x1"));
        QCOMPARE(file->resValue()->variant(), QVariant("4x2"));
    }

    void tablesFollowTheAdjustmentsOfTheFile()
    {
        const auto file = opened(usualRun(0, 0, ",\"adjust\":{\"offset_r\":1.0,\"gain\":0.0}"));
        const ImgAdjData &data = file->imgAdjModel()->data();
        QCOMPARE(data.lutR.first(), 65535);
        QCOMPARE(data.lutG.last(), 0);
        QCOMPARE(data.lutB.first(), 0);
        QCOMPARE(data.lutB.last(), 65535);
    }

    void changedAdjustmentsAreInTheValuesButNotInTheFile()
    {
        const QByteArray bytes = usualRun(0, 3, ",\"adjust\":{\"gain\":2.5}");
        const auto file = opened(bytes);
        file->imgAdjModel()->gain()->setValue(7.5, false);
        QCOMPARE(file->valuesToJson()["adjust"].toObject()["gain"], QJsonValue(7.5));
        file->close();
        QFile onDisk(m_folder->path());
        QVERIFY(onDisk.open(QIODevice::ReadOnly));
        QCOMPARE(onDisk.readAll(), bytes);
        VeskFile again(m_folder->path(), VeskApp::instance());
        QVERIFY(again.open());
        QCOMPARE(again.imgAdjModel()->gain()->variant(), QVariant(2.5));
    }

    void valuesMakeTheDescriptionOfTheNextSave()
    {
        const auto file =
            opened(usualRun(-2, 2, ",\"camera\":{\"name\":\"A\"},\"time\":{\"year_offset\":4}"));
        const QJsonObject values = file->valuesToJson();
        QCOMPARE(values["camera"].toObject()["name"], QJsonValue("A"));
        QCOMPARE(values["meta"].toObject()["size"], QJsonValue(8));
        QCOMPARE(values["acq"].toObject()["res"], QJsonValue("4x2"));
        QCOMPARE(values["first_fr"], QJsonValue(-2));
        QVERIFY(!values.contains("time"));
        QVERIFY(!values.contains("meta_size"));
        // What was never told stays untold.
        QCOMPARE(values["lens"].toObject()["name"], QJsonValue(QJsonValue::Null));
        QCOMPARE(values.keys(), QStringList({"acq", "adjust", "camera", "first_fr", "fr_cnt", "last_fr",
                                             "lens", "meta", "pt_fr_cnt"}));
    }
};

VESK_TEST_MAIN(TestVeskFile)
#include "tst_vesk_file.moc"
