#include "sim/http_head.h"

#include <QUrl>

#include <array>

namespace q4sim
{

namespace
{

struct Reason {
    int status;
    const char *text;
};
constexpr std::array<Reason, 9> reasons = {{{200, "OK"},
                                            {400, "Bad Request"},
                                            {403, "Forbidden"},
                                            {404, "Not Found"},
                                            {405, "Method Not Allowed"},
                                            {409, "Conflict"},
                                            {411, "Length Required"},
                                            {413, "Content Too Large"},
                                            {500, "Internal Server Error"}}};

QByteArray reasonOf(int status)
{
    for (const Reason &reason : reasons) {
        if (reason.status == status)
            return reason.text;
    }
    return "Unknown";
}

// The target is a path, or a whole URL when the client takes the camera for a proxy.
QString pathOf(const QByteArray &target)
{
    const QString path = QUrl::fromEncoded(target).path();
    return path.isEmpty() ? QStringLiteral("/") : path;
}

} // namespace

std::optional<QList<QPair<QByteArray, QByteArray>>> parseHeaders(const QByteArray &lines)
{
    QList<QPair<QByteArray, QByteArray>> headers;
    const QList<QByteArray> all = lines.split('\n');
    for (const QByteArray &line : all) {
        const QByteArray text = line.trimmed();
        if (text.isEmpty())
            continue;
        const qsizetype colon = text.indexOf(':');
        if (colon < 1)
            return std::nullopt;
        headers.append({text.first(colon).toLower(), text.mid(colon + 1).trimmed()});
    }
    return headers;
}

std::optional<HttpHead> parseHead(const QByteArray &head)
{
    const qsizetype lineEnd = head.indexOf("\r\n");
    const QList<QByteArray> words = head.first(std::max<qsizetype>(lineEnd, 0)).split(' ');
    if (words.size() != 3 || words[0].isEmpty() || words[1].isEmpty() || !words[2].startsWith("HTTP/1."))
        return std::nullopt;
    const auto headers = parseHeaders(head.mid(lineEnd));
    if (!headers)
        return std::nullopt;
    HttpHead result;
    result.request.method = words[0].toUpper();
    result.request.path = pathOf(words[1]);
    result.request.headers = *headers;
    const QByteArray connection = result.request.header("Connection").toLower();
    result.keepAlive = words[2] == "HTTP/1.0" ? connection == "keep-alive" : connection != "close";
    result.chunked = !result.request.header("Transfer-Encoding").isEmpty();
    result.expectsContinue = result.request.header("Expect").toLower() == "100-continue";
    if (const QByteArray size = result.request.header("Content-Length"); !size.isEmpty()) {
        bool good = false;
        result.bodySize = size.toLongLong(&good);
        if (!good || result.bodySize < 0)
            return std::nullopt;
    }
    return result;
}

QByteArray answerHead(const Answer &answer, bool keepAlive)
{
    QByteArray head =
        "HTTP/1.1 " + QByteArray::number(answer.status) + ' ' + reasonOf(answer.status) + "\r\n";
    head += "Content-Type: " + answer.contentType + "\r\n";
    for (const auto &[name, value] : answer.headers)
        head += name + ": " + value + "\r\n";
    head += "Content-Length: " + QByteArray::number(answer.body.size()) + "\r\n";
    if (!keepAlive)
        head += "Connection: close\r\n";
    return head + "\r\n";
}

} // namespace q4sim
