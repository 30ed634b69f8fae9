#pragma once

#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QPair>
#include <QString>

#include <memory>

namespace q4sim
{

class FrameRun;

/// One request as it was received.
struct Request {
    QByteArray method; ///< "GET", "PUT", "POST" and so on
    QString path;
    QList<QPair<QByteArray, QByteArray>> headers; ///< names as they came in, lower case
    QByteArray body;
    qint64 timeNs = 0; ///< since 1970, by the camera's clock source

    /// Value of a header, name in any case; empty when absent.
    QByteArray header(const QByteArray &name) const
    {
        for (const auto &[key, value] : headers) {
            if (key.compare(name, Qt::CaseInsensitive) == 0)
                return value;
        }
        return {};
    }
};

/// What the camera answers. Refusals carry {"error":TEXT}.
struct Answer {
    int status = 200;
    QByteArray contentType = "application/json";
    QList<QPair<QByteArray, QByteArray>> headers;
    QByteArray body;
    std::shared_ptr<FrameRun> run; ///< frames of a take in place of the body
};

} // namespace q4sim

Q_DECLARE_METATYPE(q4sim::Request)
