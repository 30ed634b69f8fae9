#include "tests/e2e/camera_process.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

QString CameraProcess::start(const QStringList &options)
{
    m_process.start(QString::fromLocal8Bit(Q4SIM_PROGRAM),
                    QStringList{u"--address"_s, address(), u"--memory"_s, u"131072"_s} + options);
    if (m_process.readUntil("q4sim: camera ").isEmpty())
        return u"q4sim does not serve: "_s + QString::fromUtf8(m_process.readAllStandardError());
    return {};
}

QString CameraProcess::address() const
{
    return u"10.77.0.2"_s;
}

QList<QByteArray> CameraProcess::requests(const QByteArray &method, const QString &path)
{
    QList<QByteArray> bodies;
    const QJsonArray all = m_client.get(u"/sim/log"_s).json()["requests"_L1].toArray();
    for (const QJsonValue request : all) {
        if (request["method"_L1].toString().toLatin1() == method && request["path"_L1].toString() == path)
            bodies.append(request["body"_L1].toString().toUtf8());
    }
    return bodies;
}

QStringList CameraProcess::requestsOf(const QByteArray &method)
{
    QStringList paths;
    const QJsonArray all = m_client.get(u"/sim/log"_s).json()["requests"_L1].toArray();
    for (const QJsonValue request : all) {
        if (request["method"_L1].toString().toLatin1() == method)
            paths.append(request["path"_L1].toString());
    }
    return paths;
}

QString CameraProcess::firstHeader(const QString &name)
{
    const QJsonArray all = m_client.get(u"/sim/log"_s).json()["requests"_L1].toArray();
    const QJsonObject headers = all.first()["headers"_L1].toObject();
    for (auto it = headers.begin(); it != headers.end(); ++it) {
        if (it.key().compare(name, Qt::CaseInsensitive) == 0)
            return it.value().toString();
    }
    return {};
}

void CameraProcess::forgetRequests()
{
    m_client.send("DELETE", u"/sim/log"_s);
}

QJsonValue CameraProcess::value(const QString &path)
{
    QJsonValue value = m_client.get(u"/sim/state"_s).json()["status"_L1];
    const QStringList keys = path.split(u'/');
    for (const QString &key : keys)
        value = value[key];
    return value;
}

QJsonObject CameraProcess::upload()
{
    return m_client.get(u"/sim/state"_s).json()["upload"_L1].toObject();
}

bool CameraProcess::put(const QString &path, const QByteArray &json)
{
    return m_client.put(path, json) == 200;
}

bool CameraProcess::command(const QString &path, const QByteArray &json)
{
    return m_client.post(path, json) == 200;
}

bool CameraProcess::setFault(const QByteArray &order)
{
    return m_client.post(u"/sim/fault"_s, order) == 200;
}

bool CameraProcess::setFault(const QString &route, const QString &kind)
{
    const QStringList every = {u"status"_s, u"xfer"_s,   u"takes"_s,  u"bref"_s,
                               u"put"_s,    u"ssd-ls"_s, u"command"_s};
    const QStringList routes = route == "*"_L1 ? every : QStringList{route};
    for (const QString &on : routes) {
        const QByteArray body = QJsonDocument(QJsonObject{{u"on"_s, on}, {u"kind"_s, kind}}).toJson();
        if (!setFault(body))
            return false;
    }
    return true;
}

bool CameraProcess::force(const QString &path, const QByteArray &json)
{
    return m_client.post(u"/sim/force"_s, R"({"path":")" + path.toUtf8() + R"(","value":)" + json + "}") ==
           200;
}

bool CameraProcess::delayFrames(int ms)
{
    return setFault(QStringLiteral(R"({"on":"xfer","kind":"delay","ms":%1})").arg(ms).toUtf8());
}

bool CameraProcess::dripFrames(int ms, int bytes)
{
    const QString order = QStringLiteral(R"({"on":"xfer","kind":"drip","ms":%1,"bytes":%2})");
    return setFault(order.arg(ms).arg(bytes).toUtf8());
}

bool CameraProcess::clearFaults()
{
    return m_client.send("DELETE", u"/sim/fault"_s).status == 200;
}

bool CameraProcess::makeTake(const QByteArray &order)
{
    return m_client.post(u"/sim/take"_s, order) == 200;
}

bool CameraProcess::trigger()
{
    return m_client.post(u"/trig"_s) == 200;
}

QStringList CameraProcess::recordings()
{
    QStringList names;
    const QJsonArray listed =
        m_client.send("POST", u"/ssd-ls"_s, "{\"long\": 1}").json()["ssd-ls"_L1].toArray();
    for (const QJsonValue recording : listed)
        names.append(recording.isString() ? recording.toString() : recording["name"_L1].toString());
    return names;
}
