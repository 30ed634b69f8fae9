#include "sim/control.h"

#include "sim/camera.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace q4sim
{

namespace
{

QJsonObject requestToJson(const Request &request)
{
    QJsonObject headers;
    for (const auto &[name, value] : request.headers)
        headers[QString::fromLatin1(name)] = QString::fromLatin1(value);
    return {{"method", QString::fromLatin1(request.method)},
            {"path", request.path},
            {"headers", headers},
            {"body", QString::fromUtf8(request.body)},
            {"time_ns", request.timeNs}};
}

Answer fault(Camera &camera, const Request &request)
{
    if (request.method == "DELETE") {
        camera.clearFaults();
        return jsonAnswer({});
    }
    QString error;
    const auto order = readFault(QJsonDocument::fromJson(request.body).object(), &error);
    if (!order)
        return refusal(400, error);
    camera.setFault(order->route, order->fault);
    return jsonAnswer({});
}

Answer log(Camera &camera, const Request &request)
{
    if (request.method == "DELETE") {
        camera.clearRequests();
        return jsonAnswer({});
    }
    QJsonArray list;
    const QList<Request> all = camera.requests();
    for (const Request &received : all)
        list.append(requestToJson(received));
    return jsonAnswer({{"requests", list}});
}

Answer force(Camera &camera, const Request &request)
{
    const QJsonObject order = QJsonDocument::fromJson(request.body).object();
    if (!order["path"].isString())
        return refusal(400, QStringLiteral("\"path\" must be a text"));
    camera.forceValue(order["path"].toString(), order.value(QStringLiteral("value")));
    return jsonAnswer({});
}

Answer hardware(Camera &camera, const Request &request)
{
    const QJsonDocument document = QJsonDocument::fromJson(request.body);
    const QString error =
        document.isObject() ? camera.operate(document.object()) : QStringLiteral("not a JSON object");
    return error.isEmpty() ? jsonAnswer({}) : refusal(400, error);
}

Answer makeTake(Camera &camera, const Request &request)
{
    const QJsonDocument document = QJsonDocument::fromJson(request.body);
    if (!document.isObject())
        return refusal(400, QStringLiteral("not a JSON object"));
    QString error;
    const std::optional<TakeOrder> order = readTakeOrder(document.object(), &error);
    const int number = order ? camera.makeTake(*order, &error) : 0;
    return number ? jsonAnswer({{"take", number}}) : refusal(400, error);
}

} // namespace

Answer control(Camera &camera, const Request &request)
{
    const bool write = request.method == "POST";
    const bool read = request.method == "GET";
    const bool clear = request.method == "DELETE";
    if (request.path == u"/sim/fault" && (write || clear))
        return fault(camera, request);
    if (request.path == u"/sim/log" && (read || clear))
        return log(camera, request);
    if (request.path == u"/sim/force" && write)
        return force(camera, request);
    if (request.path == u"/sim/take" && write)
        return makeTake(camera, request);
    if (request.path == u"/sim/hardware" && write)
        return hardware(camera, request);
    if (request.path == u"/sim/state" && read)
        return jsonAnswer({{"status", camera.status()},
                           {"requests", camera.requests().size()},
                           {"frame", camera.liveFrame()},
                           {"upload", camera.upload()}});
    return refusal(404, QStringLiteral("no control %1").arg(request.path));
}

} // namespace q4sim
