#include "camera/camera.h"
#include "tests/support/camera_document.h"
#include "tests/support/camera_polls.h"
#include "tests/support/end_requests.h"
#include "tests/support/http_recorder.h"
#include "tests/support/vesk_test_main.h"

#include <QHash>
#include <QJsonArray>
#include <QMetaProperty>
#include <QSignalSpy>
#include <QStringListModel>
#include <memory>

using namespace Qt::StringLiterals;

/** Which value makes which menu anew, the gaps included: every value of a camera, one after the other. */
class TestCameraWiring : public QObject
{
    Q_OBJECT

private:
    static QJsonObject document()
    {
        return {{"camera", QJsonObject{{"name", "Cam"}}},
                {"acq", acquisition({{"clk_freq", 100000000},
                                     {"exp_clks", 1000},
                                     {"exp_clks_max", 40000},
                                     {"fr_clks_max", 100000},
                                     {"res", "640x480"},
                                     {"valid_res", QJsonArray{"640x480"}}})},
                {"lens", QJsonObject{{"fstop_min", 22.0}, {"fstop_max", 2.8}, {"fstop", 4.0}}},
                {"video", QJsonObject{{"format", "1280x720p60"}}}};
    }

    /** The values of the camera by the names of its properties. */
    QHash<QString, CameraValue *> values() const
    {
        QHash<QString, CameraValue *> values;
        const QMetaObject &type = Camera::staticMetaObject;
        for (int i = 0; i < type.propertyCount(); ++i) {
            if (auto *value = type.property(i).read(m_camera.get()).value<CameraValue *>())
                values.insert(QString::fromLatin1(type.property(i).name()), value);
        }
        return values;
    }

    /** What a signal of every value touches, with all menus spoilt before; values that touch nothing not. */
    template <class Signal> QMap<QString, QString> touched(Signal signal)
    {
        QMap<QString, QString> touched;
        const auto all = values();
        for (auto it = all.begin(); it != all.end(); ++it) {
            for (QStringListModel *list :
                 {m_camera->resList(), m_camera->frRateList(), m_camera->expList(),
                  m_camera->trigOffsetList(), m_camera->vidFormatList(), m_camera->fstopList()})
                list->setStringList({u"spoilt"_s});
            m_told.clear();
            emit(it.value()->*signal)();
            if (!m_told.isEmpty())
                touched.insert(it.key(), m_told.join(u' '));
            restore();
        }
        return touched;
    }

    void restore()
    {
        m_camera->resList()->setStringList({u"640x480"_s});
        m_camera->vidFormatList()->setStringList({u"1280x720p60"_s});
        for (CameraValue *value :
             {m_camera->resValue(), m_camera->vidFormatValue(), m_camera->lensFstopMinValue()})
            emit value->valueChanged();
    }

    void note(void (Camera::*signal)(), const QString &name)
    {
        connect(m_camera.get(), signal, this, [this, name] { m_told << name; });
    }

    std::unique_ptr<HttpRecorder> m_server;
    std::unique_ptr<Camera> m_camera;
    QStringList m_told;

private slots:
    void init()
    {
        m_server = std::make_unique<HttpRecorder>(u"127.0.2.17"_s);
        QVERIFY(m_server->isListening());
        const QByteArray body = QJsonDocument(document()).toJson();
        m_server->setAnswer([body](const auto &) {
            return HttpRecorder::Reply{body, {}, QHttpServerResponder::StatusCode::Ok};
        });
        m_camera = std::make_unique<Camera>(QHostAddress(u"127.0.2.17"_s), nullptr);
        QVERIFY(connects(*m_camera));
        // From here on nothing comes from the camera.
        m_server->setHold([](const auto &request) { return request.method == "GET"; });
        note(&Camera::resListChanged, u"resList"_s);
        note(&Camera::resIndexChanged, u"resIndex"_s);
        note(&Camera::frRateListChanged, u"frRateList"_s);
        note(&Camera::frRateListIndexChanged, u"frRateListIndex"_s);
        note(&Camera::expListChanged, u"expList"_s);
        note(&Camera::expListIndexChanged, u"expListIndex"_s);
        note(&Camera::trigOffsetListChanged, u"trigOffsetList"_s);
        note(&Camera::trigOffsetListIndexChanged, u"trigOffsetListIndex"_s);
        note(&Camera::vidFormatListChanged, u"vidFormatList"_s);
        note(&Camera::vidFormatIndexChanged, u"vidFormatIndex"_s);
        note(&Camera::fstopListChanged, u"fstopList"_s);
        note(&Camera::fstopIndexChanged, u"fstopIndex"_s);
        note(&Camera::fwUpdateStatusChanged, u"fwUpdateStatus"_s);
    }

    void cleanup()
    {
        m_camera.reset();
        m_server.reset();
        endRequests();
        m_told.clear();
    }

    void changedValueMakesItsMenuAnew()
    {
        QCOMPARE(values().size(), 64);
        const QString exposure = u"expList expListIndex"_s;
        const QString rate = u"frRateList frRateListIndex"_s;
        const QString offset = u"trigOffsetList trigOffsetListIndex"_s;
        QCOMPARE(touched(&VeskValue::valueChanged),
                 (QMap<QString, QString>{{u"fwState"_s, u"fwUpdateStatus"_s},
                                         {u"expClks"_s, exposure},
                                         {u"expClksMin"_s, exposure},
                                         {u"expClksMax"_s, exposure},
                                         {u"frRate"_s, rate},
                                         {u"frClks"_s, rate},
                                         {u"frClksMax"_s, rate},
                                         {u"fsyncMode"_s, rate},
                                         {u"trigOffset"_s, offset},
                                         {u"take1PrtnFrCnt"_s, offset},
                                         {u"res"_s, u"resIndex"_s},
                                         {u"lensFstopMin"_s, u"fstopList"_s},
                                         {u"lensFstop"_s, u"fstopIndex"_s},
                                         {u"vidFormat"_s, u"vidFormatIndex"_s}}));
    }

    void sentValueMakesItsMenuAnew()
    {
        QCOMPARE(touched(&CameraValue::valueSent),
                 (QMap<QString, QString>{{u"expClks"_s, u"expList expListIndex"_s},
                                         {u"frClks"_s, u"frRateList frRateListIndex"_s},
                                         {u"trigOffset"_s, u"trigOffsetList trigOffsetListIndex"_s},
                                         {u"lensFstop"_s, u"fstopIndex"_s}}));
    }

    void repliedWriteIsASentValue()
    {
        m_camera->expClksValue()->setValue(2345, false);
        QCOMPARE(m_told, QStringList({u"expList"_s, u"expListIndex"_s}));
        QTRY_COMPARE(m_told.size(), 3);
        QCOMPARE(m_told.last(), u"expListIndex"_s);
        QCOMPARE(m_server->requests("PUT", "/acq/exp_clks").size(), 1);
    }

    void valueWithoutAMenuLeavesThemToTheNextRebuild()
    {
        const QStringList before = m_camera->expList()->stringList();
        m_camera->expClksMultValue()->updateValue(7);
        m_camera->expClksOfstValue()->updateValue(3);
        m_camera->clkFreqValue()->updateValue(50000000);
        QCOMPARE(m_told, QStringList());
        QCOMPARE(m_camera->expList()->stringList(), before);
        m_camera->expClksMaxValue()->updateValue(30000);
        // (30000 - 3) cut to a multiple of 7 is 29995; 29998 clocks of 50 MHz
        QCOMPARE(m_camera->expList()->stringList().first(), u"599.960"_s);
        QCOMPARE(m_told, QStringList({u"expList"_s, u"expListIndex"_s}));
    }

    void rateIsDividedInWholeNumbers()
    {
        m_camera->frClksValue()->updateValue(30000); // 3333.33 a second
        QCOMPARE(m_camera->frRateList()->stringList().value(m_camera->frRateListIndex()), u"3333"_s);
    }
};

VESK_TEST_MAIN(TestCameraWiring)
#include "tst_camera_wiring.moc"
