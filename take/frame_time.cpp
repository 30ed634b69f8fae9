#include "take/frame_time.h"

#include <QDateTime>
#include <QTimeZone>

QString frameTimestamp(quint64 yearOffset, quint32 seconds, quint32 nanoseconds)
{
    const quint64 milliseconds = (yearOffset + seconds) * 1000 + nanoseconds / 1'000'000;
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(qint64(milliseconds), QTimeZone::UTC);
    QString text = time.toString(Qt::ISODate);
    if (text.isEmpty())
        return text;
    return text.insert(text.size() - 1, QString::asprintf(".%09u", nanoseconds));
}
