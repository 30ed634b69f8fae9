#include "sim/http_front.h"

#include "sim/http_connection.h"

#include <QHostAddress>

namespace q4sim
{

QString HttpFront::start(const QHostAddress &address, quint16 port)
{
    if (listen(address, port))
        return {};
    return QStringLiteral("cannot listen on %1 port %2: %3")
        .arg(address.toString())
        .arg(port)
        .arg(errorString());
}

void HttpFront::incomingConnection(qintptr handle)
{
    // A child: the connections end with the server.
    new HttpConnection(handle, m_camera, this);
}

} // namespace q4sim
