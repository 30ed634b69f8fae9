#include "camera/camera.h"
#include "tests/support/camera_polls.h"
#include "tests/support/end_requests.h"
#include "tests/support/http_recorder.h"
#include "tests/support/vesk_test_main.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QStringListModel>
#include <memory>

using namespace Qt::StringLiterals;

/** Which values make which menus anew, and when. */
class TestCameraLists : public QObject
{
    Q_OBJECT

private:
    static QJsonObject acquisition()
    {
        return {{"clk_freq", 100000000},
                {"exp_clks", 1000},
                {"exp_clks_min", 10},
                {"exp_clks_max", 200000},
                {"exp_clks_mult", 1},
                {"exp_clks_ofst", 0},
                {"fr_rate", 2000.0},
                {"fr_clks", 50000},
                {"fr_clks_min", 1000},
                {"fr_clks_max", 100000},
                {"fsync_mode", 0},
                {"trig_offset", 500},
                {"prtn_cnt", 4},
                {"res", "640x480"},
                {"valid_res", QJsonArray{"1280x1024", "640x480"}}};
    }

    static QJsonObject document(const QJsonObject &acq = acquisition())
    {
        return {{"camera", QJsonObject{{"name", "Cam"}, {"serial", "42"}}},
                {"acq", acq},
                {"takes", QJsonObject{{"take1", QJsonObject{{"prtn_fr_cnt", 1000}}}}},
                {"lens", QJsonObject{{"fstop_min", 22.0}, {"fstop_max", 2.8}, {"fstop", 4.0}}},
                {"video", QJsonObject{{"format", "1280x720p60"}}}};
    }

    void answerWith(const QJsonObject &object)
    {
        const QByteArray body = QJsonDocument(object).toJson();
        m_server->setAnswer([body](const auto &) {
            return HttpRecorder::Reply{body, {}, QHttpServerResponder::StatusCode::Ok};
        });
    }

    void connectIt() { QVERIFY(connects(*m_camera)); }

    static QString current(const QStringListModel *list, int index)
    {
        return list->stringList().value(index);
    }

    std::unique_ptr<HttpRecorder> m_server;
    std::unique_ptr<Camera> m_camera;

private slots:
    void init()
    {
        m_server = std::make_unique<HttpRecorder>("127.0.2.10");
        QVERIFY(m_server->isListening());
        answerWith(document());
        m_camera = std::make_unique<Camera>(QHostAddress("127.0.2.10"), nullptr);
    }

    void cleanup()
    {
        m_camera.reset();
        m_server.reset();
        endRequests();
    }

    void listsStandBeforeTheCameraIsToldConnected()
    {
        QStringList atConnection;
        connect(m_camera.get(), &Camera::cameraConnected, this, [&] {
            atConnection = {current(m_camera->resList(), m_camera->resIndex()),
                            current(m_camera->frRateList(), m_camera->frRateListIndex()),
                            current(m_camera->expList(), m_camera->expListIndex()),
                            current(m_camera->trigOffsetList(), m_camera->trigOffsetListIndex()),
                            current(m_camera->vidFormatList(), m_camera->vidFormatIndex()),
                            current(m_camera->fstopList(), m_camera->fstopIndex())};
        });
        connectIt();
        QCOMPARE(atConnection,
                 QStringList({u"640x480"_s, u"2000"_s, u"10.000"_s, u"500"_s, u"1280x720p60"_s, u"4"_s}));
    }

    void noListOfTimesBeforeTheConnection()
    {
        m_camera->clkFreqValue()->updateValue(100000000);
        m_camera->frClksValue()->updateValue(50000);
        m_camera->expClksValue()->updateValue(1000);
        QCOMPARE(m_camera->frRateList()->rowCount(), 0);
        QCOMPARE(m_camera->expList()->rowCount(), 0);
        QCOMPARE(m_camera->expListIndex(), -1);
        m_camera->take1PrtnFrCntValue()->updateValue(1000);
        QCOMPARE(m_camera->trigOffsetList()->stringList(), QStringList({u"0"_s, u"2"_s, u"500"_s, u"999"_s}));
    }

    void sameEntriesLeaveTheModelAlone()
    {
        connectIt();
        QSignalSpy listChanged(m_camera.get(), &Camera::trigOffsetListChanged);
        QSignalSpy reset(m_camera->trigOffsetList(), &QStringListModel::modelReset);
        QSignalSpy indexChanged(m_camera.get(), &Camera::trigOffsetListIndexChanged);
        m_camera->trigOffsetValue()->updateValue(2);
        QCOMPARE(indexChanged.count(), 1);
        QCOMPARE(m_camera->trigOffsetListIndex(), 0);
        QCOMPARE(listChanged.count(), 0); // 500 is half of the partition and stays
        QCOMPARE(reset.count(), 0);
        m_camera->trigOffsetValue()->updateValue(3);
        QCOMPARE(listChanged.count(), 1);
        QCOMPARE(m_camera->trigOffsetListIndex(), 1);
    }

    void externalSyncOffersTheMeasuredRateOnly()
    {
        connectIt();
        m_camera->frRateValue()->updateValue(1234.5678);
        m_camera->fsyncModeValue()->updateValue(int(Camera::FsyncModeExt));
        QCOMPARE(m_camera->frRateList()->stringList(), QStringList(u"1234.57"_s));
        QCOMPARE(m_camera->frRateListIndex(), 0);
        m_camera->fsyncModeValue()->updateValue(int(Camera::FsyncModeInt));
        QVERIFY(m_camera->frRateList()->rowCount() > 1);
    }

    void resolutionsAreFixedForTheConnection()
    {
        connectIt();
        QJsonObject acq = acquisition();
        acq["valid_res"] = QJsonArray{"320x240"};
        answerWith(document(acq));
        const auto polls = m_server->requests("GET", "/").size();
        QTRY_VERIFY(m_server->requests("GET", "/").size() > polls + 2);
        QCOMPARE(m_camera->resList()->stringList(), QStringList({u"1280x1024"_s, u"640x480"_s}));
        QCOMPARE(m_camera->resIndex(), 1);
    }

    void oneVideoFormatIsAListOfOne()
    {
        QJsonObject object = document();
        object["video"] =
            QJsonObject{{"format", "1920x1080p30"}, {"valid_format", QJsonArray{"1920x1080p30"}}};
        answerWith(object);
        connectIt();
        QCOMPARE(m_camera->vidFormatList()->stringList(), QStringList(u"1920x1080p30"_s));
        QCOMPARE(m_camera->vidFormatIndex(), 0);
    }

    void fstopOutsideOfTheTableHasNoIndex()
    {
        connectIt();
        m_camera->lensFstopValue()->setValue(3.3, false);
        QCOMPARE(m_camera->fstopIndex(), -1);
        m_camera->lensFstopValue()->setValue(5.6, false);
        QCOMPARE(current(m_camera->fstopList(), m_camera->fstopIndex()), u"5.6"_s);
    }

    void fstopsFollowTheSmallestOpeningOnly()
    {
        // No connection is needed; the widest opening of the lens shows at the next change of the other.
        m_camera->lensFstopMaxValue()->updateValue(2.8);
        QCOMPARE(m_camera->fstopList()->rowCount(), 0);
        QSignalSpy listChanged(m_camera.get(), &Camera::fstopListChanged);
        m_camera->lensFstopMinValue()->updateValue(4.0);
        QCOMPARE(m_camera->fstopList()->stringList(), QStringList({u"2.8"_s, u"3.2"_s, u"3.5"_s, u"4"_s}));
        QCOMPARE(listChanged.count(), 1);
        m_camera->lensFstopMaxValue()->updateValue(3.5);
        QCOMPARE(listChanged.count(), 1);
        m_camera->lensFstopMinValue()->updateValue(4.5);
        QCOMPARE(m_camera->fstopList()->stringList(), QStringList({u"3.5"_s, u"4"_s, u"4.5"_s}));
    }

    void indexOfAMenuIsToldOnlyWhenItMoves()
    {
        connectIt();
        QSignalSpy res(m_camera.get(), &Camera::resIndexChanged);
        QSignalSpy fstop(m_camera.get(), &Camera::fstopIndexChanged);
        m_camera->resValue()->updateValue(u"1280x1024"_s);
        QCOMPARE(res.count(), 1);
        QCOMPARE(m_camera->resIndex(), 0);
        m_camera->resValue()->updateValue(u"1x1"_s);
        m_camera->resValue()->updateValue(u"2x2"_s);
        QCOMPARE(res.count(), 2);
        QCOMPARE(m_camera->resIndex(), -1);
        m_camera->lensFstopValue()->updateValue(3.3);
        m_camera->lensFstopValue()->updateValue(3.4);
        QCOMPARE(fstop.count(), 1);
    }

    void currentExposureIsFoundAmongTheOthers()
    {
        connectIt();
        const QStringList texts = m_camera->expList()->stringList();
        QCOMPARE(texts.size(), 110);
        QCOMPARE(texts.count(u"10.000"_s), 1);
        QCOMPARE(m_camera->expListIndex(), 10); // after the longest and 100 to 20
    }
};

VESK_TEST_MAIN(TestCameraLists)
#include "tst_camera_lists.moc"
