#pragma once

#include "image/img_adj_model.h"
#include "take/playback_vesk_object.h"
#include "take/raw_frame.h"

#include <QJsonObject>
#include <QList>
#include <QPointer>
#include <QSize>

#include <functional>
#include <memory>

/**
 * A monochrome source that plays on a clock which the test moves, and whose frames the test hands in. A frame
 * carries its number as the seconds of its time.
 */
class PlaybackSource : public PlaybackVeskObject
{
public:
    PlaybackSource() : PlaybackSource(std::make_shared<qint64>(0)) {}

    /** What a subclass does once it has read its values for the first time. */
    void open(int firstFr, int lastFr)
    {
        updateValues({{"first_fr", firstFr}, {"last_fr", lastFr}});
        setAFr(firstFr, true);
        setBFr(lastFr, true);
        setFr(firstFr, true);
        setValuesInit(true);
    }

    /** Time passes, then the timer fires. */
    void pass(qint64 ns)
    {
        *nowNs += ns;
        QMetaObject::invokeMethod(this, "incrementFrame", Qt::DirectConnection);
    }
    void tick() { pass(0); }

    /** The frame that was asked for last arrives. */
    void answer()
    {
        const quint32 seconds = quint32(asked.last()) & 0x1FFFFFF;
        QByteArray data(8, '\0');
        for (int i = 0; i < 4; ++i)
            data[i] = char(seconds >> (8 * i));
        data += pixels(asked.last());
        requested->init(data, quint16(size.width()), quint16(size.height()),
                        quint32(size.width() * size.height()), 8, 0);
    }
    void fail() { emit requested->initError(); }

    using PlaybackVeskObject::getFrame;
    using PlaybackVeskObject::yearOffset;
    int getFrame(RawFrame *rawFrame, qlonglong number) override
    {
        asked.append(number);
        requested = rawFrame;
        if (answersAtOnce)
            answer();
        return result;
    }

    /** Numbers of the frames asked for, in order. */
    QList<qlonglong> asked;
    QPointer<RawFrame> requested;
    bool answersAtOnce = false;
    int result = 0;
    bool blocked = false;
    QSize size{2, 2};
    /** Codes of a frame's pixels. */
    std::function<QByteArray(qlonglong)> pixels = [](qlonglong) { return QByteArray(4, '\0'); };
    const std::shared_ptr<qint64> nowNs;

protected:
    bool framesBlocked() const override { return blocked; }

private:
    explicit PlaybackSource(const std::shared_ptr<qint64> &ns)
        : PlaybackVeskObject(VeskFileType, nullptr, PlayClock([ns] { return *ns; })), nowNs(ns)
    {
        auto *model = new ImgAdjModel(this);
        setImgAdjModel(model);
        setVeskFrame(new VeskFrame(&model->data(), this));
        connect(model, &ImgAdjModel::imgAdjUpdated, this, &PlaybackVeskObject::refreshIfPaused);
    }
};
