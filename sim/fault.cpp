#include "sim/fault.h"

#include "sim/frame_run.h"
#include "sim/value_table.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <array>

namespace q4sim
{

namespace
{

struct RouteName {
    const char *name;
    Route route;
};
constexpr std::array routeNames = {RouteName{"status", Route::Status},
                                   RouteName{"xfer", Route::Xfer},
                                   RouteName{"takes", Route::Takes},
                                   RouteName{"ssd-takes", Route::SsdTakes},
                                   RouteName{"bref", Route::Bref},
                                   RouteName{"put", Route::Put},
                                   RouteName{"ssd-ls", Route::SsdLs},
                                   RouteName{"ssd-fopen", Route::SsdFopen},
                                   RouteName{"ssd-fclose", Route::SsdFclose},
                                   RouteName{"ssd-save", Route::SsdSave},
                                   RouteName{"command", Route::Command},
                                   RouteName{"q4fw", Route::Q4fw}};

// Paths of the POST requests that have a route of their own.
struct PathRoute {
    const char *path;
    Route route;
};
constexpr std::array pathRoutes = {
    PathRoute{"/xfer", Route::Xfer},          PathRoute{"/q4fw", Route::Q4fw},
    PathRoute{"/bref", Route::Bref},          PathRoute{"/ssd-ls", Route::SsdLs},
    PathRoute{"/ssd-fopen", Route::SsdFopen}, PathRoute{"/ssd-fclose", Route::SsdFclose},
    PathRoute{"/ssd-save", Route::SsdSave}};

struct KindName {
    const char *name;
    FaultKind kind;
};
constexpr std::array<KindName, 16> kindNames = {{{"none", FaultKind::None},
                                                 {"delay", FaultKind::Delay},
                                                 {"drip", FaultKind::Drip},
                                                 {"close-mid-body", FaultKind::CloseMidBody},
                                                 {"short-body", FaultKind::ShortBody},
                                                 {"lying-sizes", FaultKind::LyingSizes},
                                                 {"http-500", FaultKind::Http500},
                                                 {"invalid-json", FaultKind::InvalidJson},
                                                 {"truncated-json", FaultKind::TruncatedJson},
                                                 {"wrong-types", FaultKind::WrongTypes},
                                                 {"missing-keys", FaultKind::MissingKeys},
                                                 {"empty-reply", FaultKind::EmptyReply},
                                                 {"no-answer", FaultKind::NoAnswer},
                                                 {"vanish", FaultKind::Vanish},
                                                 {"close-upload", FaultKind::CloseUpload},
                                                 {"slow-upload", FaultKind::SlowUpload}}};

// What clients divide by.
constexpr std::array divisors = {"acq/exp_clks_mult", "acq/fr_clks", "acq/fr_clks_min"};

QJsonValue wrongType(const QJsonValue &value)
{
    if (value.isDouble())
        return QJsonValue(QStringLiteral("x"));
    if (!value.isObject())
        return QJsonValue(1);
    QJsonObject object = value.toObject();
    for (auto it = object.begin(); it != object.end(); ++it)
        it.value() = wrongType(it.value());
    return object;
}

void spoilTree(const Fault &fault, Answer *answer, bool knownDivisors)
{
    const QJsonObject healthy = QJsonDocument::fromJson(answer->body).object();
    QJsonObject tree = healthy;
    const bool missing = fault.kind == FaultKind::MissingKeys;
    if (fault.keys.isEmpty())
        tree = missing ? QJsonObject() : wrongType(tree).toObject();
    for (const QString &path : fault.keys)
        setValueAt(tree, path, missing ? QJsonValue(QJsonValue::Undefined) : wrongType(valueAt(tree, path)));
    for (const char *divisor : divisors) {
        const QString path = QString::fromLatin1(divisor);
        const QJsonValue value = valueAt(healthy, path);
        if (!value.isUndefined() && !(missing && knownDivisors))
            setValueAt(tree, path, value);
    }
    answer->body = QJsonDocument(tree).toJson(QJsonDocument::Compact);
}

// Place in a transfer of the first frame that a fault is set for.
std::optional<qint64> firstSpoilt(const Fault &fault, const Request &request)
{
    if (takeOf(request) == 0 || request.path != u"/xfer")
        return std::nullopt;
    const QJsonObject arguments = QJsonDocument::fromJson(request.body).object();
    const qint64 start = arguments["start"].toInteger();
    std::optional<qint64> first;
    for (const qint64 frame : fault.frames) {
        if (frame >= start && frame - start < arguments["cnt"].toInteger())
            first = std::min(first.value_or(frame - start), frame - start);
    }
    return first;
}

void cutBody(const Fault &fault, Answer *answer)
{
    const qint64 size = bodySize(*answer);
    const qint64 cut = fault.bytes > 0 ? fault.bytes : size / 2;
    answer->body.chop(std::min<qint64>(cut, size));
    if (answer->run)
        answer->run->cut(cut);
}

void lie(const Fault &fault, Answer *answer)
{
    for (auto &[name, value] : answer->headers) {
        if (fault.headers.isEmpty())
            value = QByteArray::number(value.toLongLong() * 2);
        for (const auto &[wanted, lied] : fault.headers) {
            if (wanted.compare(name, Qt::CaseInsensitive) == 0)
                value = lied;
        }
    }
}

} // namespace

Route routeOf(const Request &request)
{
    if (request.method == "PUT")
        return Route::Put;
    if (request.method == "GET" && request.path.startsWith(u"/takes/"))
        return Route::Takes;
    if (request.method == "GET")
        return request.path.startsWith(u"/ssd/takes/") ? Route::SsdTakes : Route::Status;
    const auto found = std::find_if(pathRoutes.begin(), pathRoutes.end(), [&](const PathRoute &row) {
        return request.path == QLatin1StringView(row.path);
    });
    return found == pathRoutes.end() ? Route::Command : found->route;
}

bool concernsDrive(const Request &request)
{
    if (request.path != u"/xfer")
        return request.path.startsWith(u"/ssd");
    return QJsonDocument::fromJson(request.body).object()["src"].toInt() == 2;
}

qint64 bodySize(const Answer &answer)
{
    return answer.run ? answer.run->size() : answer.body.size();
}

int takeOf(const Request &request)
{
    if (request.path != u"/xfer")
        return takeNumber(request.path.mid(1));
    const QJsonObject arguments = QJsonDocument::fromJson(request.body).object();
    return arguments["src"].toInt(-1) == 0 ? arguments["take"].toInt() : 0;
}

bool concerns(const Fault &fault, const Request &request)
{
    if (fault.take != 0 && fault.take != takeOf(request))
        return false;
    return fault.frames.isEmpty() || firstSpoilt(fault, request).has_value();
}

void aim(Fault *fault, const Request &request, const Answer &answer)
{
    const std::optional<qint64> place = firstSpoilt(*fault, request);
    if (!place || !answer.run || fault->bytes > 0)
        return;
    const qint64 record = answer.run->recordSize();
    const qint64 bytes = *place * record + record / 2;
    fault->bytes = fault->kind == FaultKind::ShortBody ? answer.run->size() - bytes : bytes;
}

bool showsDivisors(const Answer &answer)
{
    const QJsonObject tree = QJsonDocument::fromJson(answer.body).object();
    return std::all_of(divisors.begin(), divisors.end(), [&tree](const char *divisor) {
        return valueAt(tree, QString::fromLatin1(divisor)).toDouble() > 0;
    });
}

bool spoilsArrival(FaultKind kind)
{
    return kind == FaultKind::CloseUpload || kind == FaultKind::SlowUpload;
}

bool hasNoEffect(FaultKind kind)
{
    return kind == FaultKind::Http500 || kind == FaultKind::NoAnswer;
}

void spoil(const Fault &fault, Answer *answer, bool knownDivisors)
{
    const bool other = fault.kind == FaultKind::Http500 || fault.kind == FaultKind::InvalidJson ||
                       fault.kind == FaultKind::EmptyReply;
    if (other)
        answer->run.reset();
    switch (fault.kind) {
    case FaultKind::Http500:
        answer->status = 500;
        answer->contentType = "application/json";
        answer->headers.clear();
        answer->body = R"({"error":"out of order"})";
        break;
    case FaultKind::InvalidJson:
        answer->body = "this is {no} JSON";
        break;
    case FaultKind::EmptyReply:
        answer->body.clear();
        break;
    case FaultKind::ShortBody:
    case FaultKind::TruncatedJson:
        cutBody(fault, answer);
        break;
    case FaultKind::WrongTypes:
    case FaultKind::MissingKeys:
        spoilTree(fault, answer, knownDivisors);
        break;
    case FaultKind::LyingSizes:
        lie(fault, answer);
        break;
    case FaultKind::None:
    case FaultKind::Delay:
    case FaultKind::Drip:
    case FaultKind::CloseMidBody:
    case FaultKind::NoAnswer:
    case FaultKind::Vanish:
    case FaultKind::CloseUpload:
    case FaultKind::SlowUpload:
        break;
    }
}

std::optional<FaultOrder> readFault(const QJsonObject &order, QString *error)
{
    const QString on = order["on"].toString();
    const QString kind = order["kind"].toString();
    const auto route = std::find_if(routeNames.begin(), routeNames.end(),
                                    [&on](const RouteName &n) { return on == QLatin1StringView(n.name); });
    const auto named = std::find_if(kindNames.begin(), kindNames.end(),
                                    [&kind](const KindName &n) { return kind == QLatin1StringView(n.name); });
    if (route == routeNames.end() || named == kindNames.end()) {
        *error = route == routeNames.end() ? QStringLiteral("unknown \"on\": %1").arg(on)
                                           : QStringLiteral("unknown \"kind\": %1").arg(kind);
        return std::nullopt;
    }
    FaultOrder result = {route->route, {}};
    result.fault.kind = named->kind;
    result.fault.ms = order["ms"].toInt();
    result.fault.bytes = order["bytes"].toInteger();
    result.fault.percent = std::clamp(order["percent"].toInt(50), 0, 100);
    result.fault.count = order["count"].toInt(-1);
    result.fault.take = order["take"].toInt();
    const QJsonArray frames = order["frames"].toArray();
    for (const QJsonValue &frame : frames)
        result.fault.frames.append(frame.toInteger());
    const QJsonArray keys = order["keys"].toArray();
    for (const QJsonValue &key : keys)
        result.fault.keys.append(key.toString());
    const QJsonObject headers = order["headers"].toObject();
    for (auto it = headers.begin(); it != headers.end(); ++it)
        result.fault.headers.append({it.key().toLatin1(), it.value().toVariant().toString().toLatin1()});
    return result;
}

} // namespace q4sim
