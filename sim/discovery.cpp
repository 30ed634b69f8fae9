#include "sim/discovery.h"

#include <QNetworkDatagram>
#include <QNetworkInterface>

namespace q4sim
{

namespace
{

constexpr char question[] = "VESK_BCAST\n";
constexpr char reply[] = "VESK_REPLY\n";

// Broadcast address of the interface's network that an address belongs to. The loopback names none, but
// the system takes its highest address as one.
QHostAddress broadcastOf(const QHostAddress &address)
{
    const auto interfaces = QNetworkInterface::allInterfaces();
    for (const QNetworkInterface &interface : interfaces) {
        const auto entries = interface.addressEntries();
        for (const QNetworkAddressEntry &entry : entries) {
            if (entry.ip().protocol() != QAbstractSocket::IPv4Protocol ||
                !address.isInSubnet(entry.ip(), entry.prefixLength()))
                continue;
            if (!entry.broadcast().isNull())
                return entry.broadcast();
            return QHostAddress(entry.ip().toIPv4Address() | ~entry.netmask().toIPv4Address());
        }
    }
    return {};
}

} // namespace

Discovery::Discovery(QObject *parent) : QObject(parent), m_broadcasts(this), m_own(this)
{
    for (QUdpSocket *socket : {&m_broadcasts, &m_own})
        connect(socket, &QUdpSocket::readyRead, this, [this, socket] { answer(socket); });
}

QString Discovery::listen(const QHostAddress &address)
{
    m_address = address;
    const auto mode = QAbstractSocket::ShareAddress | QAbstractSocket::ReuseAddressHint;
    if (!m_broadcasts.bind(QHostAddress(QHostAddress::AnyIPv4), port, mode))
        return QStringLiteral("cannot bind UDP port %1: %2").arg(port).arg(m_broadcasts.errorString());
    if (!m_own.bind(address, port, mode))
        return QStringLiteral("cannot bind %1 UDP port %2: %3")
            .arg(address.toString())
            .arg(port)
            .arg(m_own.errorString());
    return {};
}

void Discovery::answer(QUdpSocket *socket)
{
    while (socket->hasPendingDatagrams()) {
        const QNetworkDatagram datagram = socket->receiveDatagram();
        if (datagram.data() == question && concerns(datagram.destinationAddress()))
            m_own.writeDatagram(reply, sizeof reply - 1, datagram.senderAddress(),
                                static_cast<quint16>(datagram.senderPort()));
    }
}

bool Discovery::concerns(const QHostAddress &destination) const
{
    const QHostAddress ipv4(destination.toIPv4Address());
    return ipv4 == m_address || ipv4 == QHostAddress(QHostAddress::Broadcast) ||
           ipv4 == broadcastOf(m_address);
}

} // namespace q4sim
