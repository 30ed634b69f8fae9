#include "sim/form_reader.h"

#include "sim/http_head.h"

#include <QRegularExpression>

#include <algorithm>

namespace q4sim
{

namespace
{

constexpr qsizetype partHeadMax = 8192;

QByteArray boundaryOf(const QByteArray &contentType)
{
    static const QRegularExpression form(
        QStringLiteral("^multipart/form-data;\\s*boundary=(?:\"([^\"]+)\"|([^\\s\";]+))\\s*$"),
        QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = form.match(QString::fromLatin1(contentType));
    return (match.captured(1) + match.captured(2)).toLatin1();
}

// A quoted parameter of a disposition; null when it is not there.
QString parameter(const QString &disposition, const QString &name)
{
    const QRegularExpression form(QStringLiteral(";\\s*%1=\"([^\"]*)\"").arg(name));
    return form.match(disposition).captured(1);
}

QByteArray valueOf(const QList<QPair<QByteArray, QByteArray>> &headers, const QByteArray &name)
{
    for (const auto &[key, value] : headers) {
        if (key == name)
            return value;
    }
    return {};
}

} // namespace

FormReader::FormReader(const QByteArray &contentType)
    : m_boundary("--" + boundaryOf(contentType)), m_hash(QCryptographicHash::Sha256)
{
    if (m_boundary.size() == 2)
        fail(QStringLiteral("no multipart form"));
}

void FormReader::feed(const QByteArray &piece)
{
    if (m_at == At::Broken || m_at == At::End)
        return;
    m_pending += piece;
    while (step()) {
    }
}

Upload FormReader::result()
{
    if (m_at != At::End && m_at != At::Broken)
        fail(QStringLiteral("the form has no end"));
    m_upload.sha256 = m_hash.result();
    return m_upload;
}

bool FormReader::step()
{
    switch (m_at) {
    case At::FirstBoundary:
        return readBoundary();
    case At::PartHead:
        return readPartHead();
    case At::File:
        return readFile();
    case At::FileEnd:
        return readFileEnd();
    case At::End:
    case At::Broken:
        m_pending.clear();
        return false;
    }
    return false;
}

bool FormReader::readBoundary()
{
    if (m_pending.size() < m_boundary.size() + 2)
        return false;
    if (!m_pending.startsWith(m_boundary + "\r\n"))
        return fail(QStringLiteral("the form has no part"));
    // The line's end stays, so that a part without any header ends with an empty line, too.
    m_pending.remove(0, m_boundary.size());
    m_at = At::PartHead;
    return true;
}

bool FormReader::readPartHead()
{
    const qsizetype end = m_pending.indexOf("\r\n\r\n");
    if (end < 0)
        return m_pending.size() > partHeadMax && fail(QStringLiteral("the part has no body"));
    const auto headers = parseHeaders(m_pending.first(end));
    m_pending.remove(0, end + 4);
    if (!headers)
        return fail(QStringLiteral("the part has a broken header"));
    m_upload.headers = *headers;
    const QString disposition = QString::fromUtf8(valueOf(*headers, "content-disposition"));
    m_upload.fileName = parameter(disposition, QStringLiteral("filename"));
    if (!disposition.startsWith(u"form-data;") || parameter(disposition, QStringLiteral("name")) != u"q4fw")
        return fail(QStringLiteral("the part is not named q4fw"));
    if (m_upload.fileName.isEmpty() || m_upload.fileName.contains(u'/') || m_upload.fileName.contains(u'\\'))
        return fail(QStringLiteral("the part has no plain file name"));
    m_at = At::File;
    return true;
}

bool FormReader::readFile()
{
    const QByteArray end = "\r\n" + m_boundary;
    const qsizetype at = m_pending.indexOf(end);
    if (at < 0) {
        // The end may be cut in two by the pieces.
        keep(std::max<qsizetype>(m_pending.size() - end.size() + 1, 0));
        return false;
    }
    keep(at);
    m_pending.remove(0, end.size());
    m_at = At::FileEnd;
    return true;
}

bool FormReader::readFileEnd()
{
    if (m_pending.size() < 2)
        return false;
    if (!m_pending.startsWith("--"))
        return fail(QStringLiteral("the form has more than one part"));
    m_at = At::End;
    return true;
}

void FormReader::keep(qsizetype size)
{
    const QByteArray bytes = m_pending.first(size);
    m_hash.addData(bytes);
    m_upload.size += size;
    m_upload.start += bytes.first(std::min(size, Upload::startSize - m_upload.start.size()));
    m_pending.remove(0, size);
}

bool FormReader::fail(const QString &error)
{
    m_upload.error = error;
    m_at = At::Broken;
    return true;
}

} // namespace q4sim
