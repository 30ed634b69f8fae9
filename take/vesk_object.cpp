#include "take/vesk_object.h"

#include "app/vesk_app.h"
#include "camera/vesk_value.h"
#include "image/img_adj_util.h"
#include "take/frame_time.h"
#include "take/raw_frame.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPointer>
#include <QRandomGenerator>

VeskObject::VeskObject(Type type, QObject *parent)
    : QObject(parent), m_type(type), m_imgFrame(new ImgFrame(this)), m_histogram(new Histogram(this))
{
    setObjectName(QString::number(QRandomGenerator::global()->generate64(), 16).toUpper());
}

VeskObject::~VeskObject() = default;

void VeskObject::setSelected(bool selected)
{
    if (selected == m_selected)
        return;
    m_selected = selected;
    emit selectedChanged();
}

void VeskObject::setTimestamp(const QString &timestamp)
{
    if (timestamp == m_timestamp)
        return;
    m_timestamp = timestamp;
    emit timestampChanged();
}

void VeskObject::updateValues(const QJsonObject &object)
{
    for (VeskValue *value : std::as_const(m_values)) {
        QJsonValue json = jsonValue(value->jsonPath(), object);
        if (json.isNull() || json.isUndefined())
            json = jsonValue(value->altJsonPath(), object);
        if (!json.isNull() && !json.isUndefined())
            value->setValueFromJson(json);
    }
}

/** Puts json at a path below object, making the nested objects that are missing. */
static QJsonObject withValueAt(QJsonObject object, const QStringList &path, const QJsonValue &json)
{
    if (path.isEmpty())
        return object;
    const QString &key = path.first();
    if (path.size() == 1)
        object.insert(key, json);
    else
        object.insert(key, withValueAt(object.value(key).toObject(), path.mid(1), json));
    return object;
}

QJsonObject VeskObject::valuesToJson() const
{
    QJsonObject object;
    for (const VeskValue *value : m_values)
        object = withValueAt(object, value->jsonPath(), QJsonValue::fromVariant(value->variant()));
    return object;
}

QJsonValue VeskObject::jsonValue(const QStringList &path, const QJsonObject &object)
{
    // The empty key stands for no place at all. The lookup would find it under "\u0000" too, or read from a
    // null pointer.
    if (path.isEmpty() || path.last().isEmpty())
        return QJsonValue::Null;
    QJsonObject step = object;
    for (qsizetype i = 0; i < path.size() - 1; ++i) {
        const QJsonValue next = step.value(path[i]);
        if (!next.isObject())
            return QJsonValue::Null;
        step = next.toObject();
    }
    return step.value(path.last());
}

int VeskObject::requestFrame()
{
    if (m_frameInFlight || !m_selected || framesBlocked())
        return -1;
    auto *rawFrame = new RawFrame(this);
    connect(rawFrame, &RawFrame::initFinished, this, [this] { frameReady(); });
    connect(rawFrame, &RawFrame::initError, this, [this] { frameFailed(); });
    // A source that has its frames at hand answers before getFrame returns.
    m_frameInFlight = true;
    if (getFrame(rawFrame) < 0)
        frameFailed();
    return 0;
}

void VeskObject::frameReady()
{
    auto *rawFrame = qobject_cast<RawFrame *>(sender());
    if (m_veskFrame->set(rawFrame))
        showFrame(m_veskFrame);
    m_frameInFlight = false;
    rawFrame->deleteLater();
}

void VeskObject::frameFailed()
{
    m_frameInFlight = false;
}

void VeskObject::showFrame(VeskFrame *frame)
{
    m_imgFrame->setImage(frame->image(false));
    setTimestamp(frameTimestamp(frame->yearOffset(), frame->seconds(), frame->nanoseconds()));
    m_histogram->setImage(frame->clean(), frame->width(), frame->height());
}

void VeskObject::autoWhiteBalance()
{
    double gainR = 1.0;
    double gainG = 1.0;
    double gainB = 1.0;
    if (!VeskApp::instance()->imgAdjUtil()->measureWhiteBalance(m_veskFrame->raw(), m_veskFrame->height(),
                                                                m_veskFrame->width(), m_imgAdjModel->data(),
                                                                gainR, gainG, gainB))
        return;
    m_imgAdjModel->wbR()->setValue(gainR, false);
    m_imgAdjModel->wbG()->setValue(gainG, false);
    m_imgAdjModel->wbB()->setValue(gainB, false);
}

int VeskObject::getFrameXfer(RawFrame *rawFrame, const QHostAddress &address, const QByteArray &body)
{
    if (!rawFrame)
        return -1;
    QNetworkReply *reply = VeskApp::instance()->networkAccessManager()->post(
        VeskApp::cameraRequest(address, QStringLiteral("/xfer"), VeskApp::JsonBody), body);
    VeskApp::limitReply(reply);
    reply->setProperty("rawFrame", QVariant::fromValue(QPointer(rawFrame)));
    connect(reply, &QNetworkReply::finished, this, &VeskObject::getFrameXferFinished);
    connect(this, &QObject::destroyed, reply, &QObject::deleteLater);
    return 0;
}

void VeskObject::getFrameXferFinished()
{
    auto *reply = qobject_cast<QNetworkReply *>(sender());
    const auto rawFrame = reply->property("rawFrame").value<QPointer<RawFrame>>();
    reply->deleteLater();
    if (!rawFrame)
        return;
    const QByteArray body = reply->readAll();
    // Of a connection that closes in the middle of a long body the network manager may tell no error.
    const bool whole = body.size() >= reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
    if (reply->error() != QNetworkReply::NoError || !whole) {
        qDebug() << "getFrameXferFinished error";
        emit rawFrame->initError();
        return;
    }
    const QByteArray family = reply->hasRawHeader("Img-Width") ? "Img-" : "Fr-";
    rawFrame->init(body, reply->rawHeader(family + "Width").toUShort(),
                   reply->rawHeader(family + "Height").toUShort(), reply->rawHeader(family + "Size").toUInt(),
                   reply->rawHeader("Meta-Size").toUInt(), yearOffset());
}
