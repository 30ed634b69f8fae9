#include "sim/firmware_form.h"

#include <QRegularExpression>

namespace q4sim
{

namespace
{

constexpr qsizetype headMax = 8192; // bytes

FirmwareForm bad(const QString &error)
{
    return {error, {}, {}};
}

} // namespace

FirmwareForm readFirmwareForm(const QByteArray &contentType, const QByteArray &body)
{
    static const QRegularExpression type(
        QStringLiteral("^multipart/form-data;\\s*boundary=(\"?)([^\\s\";]+)\\1$"),
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression head(QStringLiteral(
        "^(?i:content-disposition): form-data; name=\"q4fw\"; filename=\"([^\"/\\\\\\r\\n]+)\"$"));
    const QByteArray boundary = type.match(QString::fromLatin1(contentType)).captured(2).toLatin1();
    if (boundary.isEmpty())
        return bad(QStringLiteral("no multipart form"));

    const QByteArray begin = "--" + boundary + "\r\n";
    const QByteArray end = "\r\n--" + boundary + "--\r\n";
    if (!body.startsWith(begin) || !body.endsWith(end))
        return bad(QStringLiteral("the form has no begin or no end"));
    const qsizetype headEnd = body.indexOf("\r\n\r\n", begin.size());
    if (headEnd < 0 || headEnd > headMax)
        return bad(QStringLiteral("the part has no head"));
    const auto match = head.match(QString::fromUtf8(body.mid(begin.size(), headEnd - begin.size())));
    if (!match.hasMatch())
        return bad(QStringLiteral("the part is not just a file named q4fw"));

    const qsizetype fileBegin = headEnd + 4;
    const qsizetype fileEnd = body.indexOf(end.chopped(4), fileBegin);
    if (fileEnd != body.size() - end.size())
        return bad(QStringLiteral("the form has more than one part"));
    return {{}, match.captured(1), QByteArrayView(body).sliced(fileBegin, fileEnd - fileBegin)};
}

} // namespace q4sim
