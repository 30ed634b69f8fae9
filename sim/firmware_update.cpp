#include "sim/firmware_update.h"

namespace q4sim
{

void FirmwareUpdate::begin(qint64 bodySize)
{
    m_expected = bodySize;
    m_received = 0;
    m_complete = false;
    m_upload = {};
    m_verdict = Idle;
}

void FirmwareUpdate::end(const Upload &upload, qint64 nowNs)
{
    m_complete = true;
    m_upload = upload;
    m_verdict = verdict(upload);
    m_endNs = nowNs;
}

FirmwareUpdate::State FirmwareUpdate::verdict(const Upload &upload) const
{
    if (!upload.error.isEmpty())
        return BadForm;
    if (upload.size == 0)
        return EmptyFile;
    if (!m_rejected.isEmpty() && upload.start.startsWith(m_rejected))
        return Rejected;
    return Installed;
}

int FirmwareUpdate::state(qint64 nowNs) const
{
    return m_complete && nowNs - m_endNs >= checkNs ? m_verdict : Idle;
}

QJsonObject FirmwareUpdate::report() const
{
    QJsonObject report = {{"expected", m_expected}, {"received", m_received}, {"complete", m_complete}};
    if (!m_complete)
        return report;
    QJsonObject headers;
    for (const auto &[name, value] : m_upload.headers)
        headers[QString::fromLatin1(name)] = QString::fromUtf8(value);
    report["error"] = m_upload.error;
    report["file_name"] = m_upload.fileName;
    report["size"] = m_upload.size;
    report["sha256"] = QString::fromLatin1(m_upload.sha256.toHex());
    report["headers"] = headers;
    return report;
}

} // namespace q4sim
