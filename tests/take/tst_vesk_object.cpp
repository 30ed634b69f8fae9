#include "image/camera_img_adj_model.h"
#include "take/raw_frame.h"
#include "take/vesk_object.h"
#include "tests/support/vesk_test_main.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>

/** A monochrome source whose frames the test hands in. */
class Source : public VeskObject
{
    Q_OBJECT

public:
    Source() : VeskObject(VeskFileType, nullptr)
    {
        auto *model = new ImgAdjModel(this);
        setImgAdjModel(model);
        setVeskFrame(new VeskFrame(&model->data(), this));
    }

    int getFrame(RawFrame *rawFrame) override
    {
        ++asked;
        last = rawFrame;
        if (answerAtOnce)
            answer(rawFrame);
        return result;
    }

    void answer(RawFrame *rawFrame, quint32 seconds = 7)
    {
        QByteArray data(8 + 4, '\0');
        data[0] = char(seconds);
        data[4] = 5;
        rawFrame->init(data, 2, 2, 4, 8, 0);
    }

    int asked = 0;
    int result = 0;
    bool answerAtOnce = false;
    bool blocked = false;
    RawFrame *last = nullptr;

protected:
    bool framesBlocked() const override { return blocked; }
    quint64 yearOffset() const override { return 0; }
};

/** The cycle of asking for one frame after the other. */
class TestVeskObject : public QObject
{
    Q_OBJECT

private slots:
    void requestOnAnUnselectedSourceSendsNothing()
    {
        Source source;
        QCOMPARE(source.requestFrame(), -1);
        QCOMPARE(source.asked, 0);
        QCOMPARE(source.findChildren<RawFrame *>().size(), 0);
    }

    void requestOnABlockedSourceSendsNothing()
    {
        Source source;
        source.setSelected(true);
        source.blocked = true;
        QCOMPARE(source.requestFrame(), -1);
        QCOMPARE(source.asked, 0);
    }

    void secondRequestWhileOneIsInFlightIsRefused()
    {
        Source source;
        source.setSelected(true);
        QCOMPARE(source.requestFrame(), 0);
        QVERIFY(source.frameInFlight());
        QCOMPARE(source.requestFrame(), -1);
        QCOMPARE(source.asked, 1);
        QCOMPARE(source.findChildren<RawFrame *>().size(), 1);
        QCOMPARE(source.last->parent(), &source);
    }

    void sourceThatCannotStartIsFreeAgainBeforeTheRequestReturns()
    {
        Source source;
        source.setSelected(true);
        source.result = -1;
        QCOMPARE(source.requestFrame(), 0);
        QVERIFY(!source.frameInFlight());
        QCOMPARE(source.requestFrame(), 0);
        QCOMPARE(source.asked, 2);
    }

    void sourceMayAnswerBeforeTheRequestReturns()
    {
        Source source;
        source.setSelected(true);
        source.answerAtOnce = true;
        QCOMPARE(source.requestFrame(), 0);
        QVERIFY(!source.frameInFlight());
        QCOMPARE(source.imgFrame()->image().size(), QSize(2, 2));
        QTRY_COMPARE(source.findChildren<RawFrame *>().size(), 0);
    }

    void failedFrameLeavesPictureTimeAndHistogram()
    {
        Source source;
        source.setSelected(true);
        source.requestFrame();
        source.answer(source.last);
        const QImage picture = source.imgFrame()->image();
        QSignalSpy histogram(source.histogram(), &Histogram::imageChanged);
        source.requestFrame();
        emit source.last->initError();
        QVERIFY(!source.frameInFlight());
        QCOMPARE(source.imgFrame()->image(), picture);
        QCOMPARE(source.timestamp(), "1970-01-01T00:00:07.000000005Z");
        QCOMPARE(histogram.count(), 0);
    }

    void frameOfASourceThatLostTheSelectionIsStillShown()
    {
        Source source;
        source.setSelected(true);
        source.requestFrame();
        source.setSelected(false);
        source.answer(source.last);
        QCOMPARE(source.imgFrame()->image().size(), QSize(2, 2));
        QCOMPARE(source.requestFrame(), -1);
    }

    void frameWithTheSameTimeDoesNotTellTheTimestamp()
    {
        Source source;
        source.setSelected(true);
        QSignalSpy changed(&source, &VeskObject::timestampChanged);
        for (const quint32 seconds : {7U, 7U, 8U}) {
            source.requestFrame();
            source.answer(source.last, seconds);
        }
        QCOMPARE(changed.count(), 2);
    }

    void emptyKeyOfADocumentStandsForNoPlace_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::newRow("empty") << QByteArray(R"({"":5})");
        QTest::newRow("null character") << QByteArray(R"({"\u0000":5})");
        QTest::newRow("null character among others") << QByteArray(R"({"acq":{"bpp":8},"\u0000":{"a":1}})");
    }

    void emptyKeyOfADocumentStandsForNoPlace()
    {
        QFETCH(const QByteArray, json);
        const QJsonObject document = QJsonDocument::fromJson(json).object();
        QVERIFY(!document.isEmpty());
        QCOMPARE(VeskObject::jsonValue({QString()}, document), QJsonValue(QJsonValue::Null));
        QCOMPARE(VeskObject::jsonValue({"acq", QString()}, document), QJsonValue(QJsonValue::Null));

        Source source;
        auto *value = new VeskValue({QString()}, QMetaType::Int, &source);
        source.appendValue(value);
        source.updateValues(document);
        QVERIFY(!value->variant().isValid());
    }

    void statisticsStayZero()
    {
        Source source;
        source.setSelected(true);
        source.requestFrame();
        source.answer(source.last);
        for (const char *name : {"min", "max", "mode", "avg", "stdDev"})
            QCOMPARE(source.veskFrame()->property(name).toDouble(), 0.0);
    }

    void selectionIsToldOnlyWhenItChanges()
    {
        Source source;
        QSignalSpy changed(&source, &VeskObject::selectedChanged);
        source.setSelected(false);
        QCOMPARE(changed.count(), 0);
        source.setSelected(true);
        source.setSelected(true);
        QCOMPARE(changed.count(), 1);
    }

    void typeNumbersAreThoseOfTheInterface()
    {
        const QMetaEnum types = QMetaEnum::fromType<VeskObject::Type>();
        const QStringList names{"UnknownType", "CameraType",  "CameraGroupType",
                                "TakeType",    "SsdTakeType", "VeskFileType"};
        QCOMPARE(types.keyCount(), names.size());
        for (int i = 0; i < names.size(); ++i)
            QCOMPARE(types.keyToValue(names[i].toLatin1().constData()), i);
    }
};

VESK_TEST_MAIN(TestVeskObject)
#include "tst_vesk_object.moc"
