#pragma once

#include <QHostAddress>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QString>
#include <QtQmlIntegration>

#include "image/histogram.h"
#include "image/img_adj_model.h"
#include "image/img_frame.h"
#include "take/vesk_frame.h"

class QNetworkReply;
class RawFrame;
class VeskValue;

/**
 * Base of everything that can be selected and shown. Holds the source's values, and runs the cycle of asking
 * for one frame, turning it into a picture and asking for the next; at most one frame is on its way. Lives on
 * the GUI thread.
 */
class VeskObject : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
    Q_PROPERTY(int type READ type CONSTANT)
    Q_PROPERTY(bool selected READ selected WRITE setSelected NOTIFY selectedChanged)
    Q_PROPERTY(VeskFrame *veskFrame READ veskFrame CONSTANT)
    Q_PROPERTY(ImgFrame *imgFrame READ imgFrame CONSTANT)
    Q_PROPERTY(Histogram *histogram READ histogram CONSTANT)
    Q_PROPERTY(QString timestamp READ timestamp WRITE setTimestamp NOTIFY timestampChanged)
    Q_PROPERTY(ImgAdjModel *imgAdjModel READ imgAdjModel CONSTANT)

public:
    enum Type {
        UnknownType = 0,
        CameraType = 1,
        CameraGroupType = 2,
        TakeType = 3,
        SsdTakeType = 4,
        VeskFileType = 5
    };
    Q_ENUM(Type)

    VeskObject(Type type, QObject *parent);
    ~VeskObject() override;

    int type() const { return m_type; }
    const QList<VeskValue *> &values() const { return m_values; }
    /** Makes a value, which is a child of this object, part of what updateValues and valuesToJson cover. */
    void appendValue(VeskValue *value) { m_values.append(value); }

    bool selected() const { return m_selected; }
    void setSelected(bool selected);
    VeskFrame *veskFrame() const { return m_veskFrame; }
    ImgFrame *imgFrame() const { return m_imgFrame; }
    Histogram *histogram() const { return m_histogram; }
    ImgAdjModel *imgAdjModel() const { return m_imgAdjModel; }
    const QString &timestamp() const { return m_timestamp; }
    void setTimestamp(const QString &timestamp);
    bool frameInFlight() const { return m_frameInFlight; }

    /** Pours a JSON document over the values; a value whose key is missing or null is left alone. */
    void updateValues(const QJsonObject &object);
    /** An object with every value at its place. */
    QJsonObject valuesToJson() const;
    /** The value at a path, Null when a step on the way is missing or not an object. */
    static QJsonValue jsonValue(const QStringList &path, const QJsonObject &object);

    /** Puts a decoded frame on screen. */
    void showFrame(VeskFrame *frame);
    /** Measures the white balance on the newest frame and writes it to the adjustment values. */
    Q_INVOKABLE void autoWhiteBalance();

    /** Starts getting the current frame; below 0 when it could not start. */
    virtual int getFrame(RawFrame *rawFrame) = 0;

public slots:
    /** Asks for a frame unless one is on its way, the source is not selected or frames are blocked (-1). */
    virtual int requestFrame();

protected slots:
    virtual void frameReady();
    virtual void frameFailed();
    void getFrameXferFinished();

protected:
    /** True while this source must not ask for frames. */
    virtual bool framesBlocked() const = 0;
    /** Start of the frames' clock in seconds since 1970. */
    virtual quint64 yearOffset() const = 0;

    /** Posts a transfer request whose reply fills rawFrame; -1 when rawFrame is null. */
    int getFrameXfer(RawFrame *rawFrame, const QHostAddress &address, const QByteArray &body);

    void setImgAdjModel(ImgAdjModel *model) { m_imgAdjModel = model; }
    void setVeskFrame(VeskFrame *frame) { m_veskFrame = frame; }

signals:
    void selectedChanged();
    /** The source is going away. */
    void shouldBeUnselected();
    void timestampChanged();

private:
    Type m_type;
    QList<VeskValue *> m_values;
    ImgAdjModel *m_imgAdjModel = nullptr;
    VeskFrame *m_veskFrame = nullptr;
    ImgFrame *m_imgFrame;
    Histogram *m_histogram;
    QString m_timestamp;
    bool m_selected = false;
    bool m_frameInFlight = false;
};
