#pragma once

#include "sim/request.h"

#include <optional>

namespace q4sim
{

/// What stands in front of a request's body.
struct HttpHead {
    Request request; ///< without body and time
    qint64 bodySize = 0;
    bool chunked = false; ///< the body's size is told piece by piece, in a coding that the camera cannot read
    bool expectsContinue = false; ///< the client waits for a word before it sends the body
    bool keepAlive = true;
};

/// Reads a head, from its request line to its empty line. None when it makes no sense.
std::optional<HttpHead> parseHead(const QByteArray &head);

/// Reads the lines "Name: value" of a head or of a part of a form; names come out in lower case. None when
/// a line is of another form.
std::optional<QList<QPair<QByteArray, QByteArray>>> parseHeaders(const QByteArray &lines);

/// Head of an answer, its empty line included.
QByteArray answerHead(const Answer &answer, bool keepAlive);

} // namespace q4sim
