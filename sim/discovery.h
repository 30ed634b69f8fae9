#pragma once

#include <QHostAddress>
#include <QObject>
#include <QUdpSocket>

namespace q4sim
{

/// Answers the datagram "VESK_BCAST\n" on UDP port 8890 with "VESK_REPLY\n", from the camera's own address
/// to where it came from. Any number of cameras share the port.
class Discovery : public QObject
{
    Q_OBJECT

public:
    explicit Discovery(QObject *parent = nullptr);

    /// Starts answering for an address. Returns an empty text, or what went wrong.
    QString listen(const QHostAddress &address);

    static constexpr quint16 port = 8890;

private:
    void answer(QUdpSocket *socket);
    bool concerns(const QHostAddress &destination) const;

    QHostAddress m_address;
    QUdpSocket m_broadcasts; ///< bound to all addresses: broadcasts reach no socket bound to one of them
    QUdpSocket m_own;        ///< bound to the camera's, for sending and for datagrams to it alone
};

} // namespace q4sim
