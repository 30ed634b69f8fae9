#pragma once

#include "sim/firmware_form.h"

#include <QJsonObject>

namespace q4sim
{

/// The camera's side of a firmware upload: judges what came in, and shows the verdict a moment later.
class FirmwareUpdate
{
public:
    /// Numbers of camera/fw_state; from 2 on they are errors.
    enum State { Idle = 0, Installed = 1, BadForm = 2, EmptyFile = 3, Rejected = 4 };
    static constexpr qint64 checkNs = 1000000000; ///< from the last byte to the verdict

    /// Rejects files that begin with `rejected`; with an empty one takes all.
    explicit FirmwareUpdate(const QByteArray &rejected) : m_rejected(rejected) {}

    void begin(qint64 bodySize);
    void receive(qint64 received) { m_received = received; } ///< bytes of the body until now
    void end(const FirmwareForm &form, qint64 bodySize, qint64 nowNs);

    int state(qint64 nowNs) const;
    QJsonObject report() const; ///< see Camera::upload()

private:
    State verdict(const FirmwareForm &form) const;

    QByteArray m_rejected;
    qint64 m_expected = 0;
    qint64 m_received = 0;
    bool m_complete = false;
    QJsonObject m_report; ///< of a complete upload; the file itself is not kept
    State m_verdict = Idle;
    qint64 m_endNs = 0;
};

} // namespace q4sim
