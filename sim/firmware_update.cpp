#include "sim/firmware_update.h"

#include <QCryptographicHash>

namespace q4sim
{

void FirmwareUpdate::begin(qint64 bodySize)
{
    m_expected = bodySize;
    m_received = 0;
    m_complete = false;
    m_report = {};
    m_verdict = Idle;
}

void FirmwareUpdate::end(const FirmwareForm &form, qint64 bodySize, qint64 nowNs)
{
    m_expected = m_received = bodySize;
    m_complete = true;
    const QByteArray hash = QCryptographicHash::hash(form.file, QCryptographicHash::Sha256);
    m_report = {{"error", form.error},
                {"file_name", form.fileName},
                {"size", form.file.size()},
                {"sha256", QString::fromLatin1(hash.toHex())}};
    m_verdict = verdict(form);
    m_endNs = nowNs;
}

FirmwareUpdate::State FirmwareUpdate::verdict(const FirmwareForm &form) const
{
    if (!form.error.isEmpty())
        return BadForm;
    if (form.file.isEmpty())
        return EmptyFile;
    if (!m_rejected.isEmpty() && form.file.startsWith(m_rejected))
        return Rejected;
    return Installed;
}

int FirmwareUpdate::state(qint64 nowNs) const
{
    return m_complete && nowNs - m_endNs >= checkNs ? m_verdict : Idle;
}

QJsonObject FirmwareUpdate::report() const
{
    QJsonObject report = m_report;
    report["expected"] = m_expected;
    report["received"] = m_received;
    report["complete"] = m_complete;
    return report;
}

} // namespace q4sim
