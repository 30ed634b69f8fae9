#pragma once

#include <QTcpServer>

namespace q4sim
{

class Camera;

/// Takes the connections to a camera's port.
///
/// The HTTP is the simulation's own: a ready-made server holds a body in memory until it is complete, and a
/// firmware file must not be held at all.
class HttpFront : public QTcpServer
{
    Q_OBJECT

public:
    explicit HttpFront(Camera &camera) : m_camera(camera) {}

    /// Returns an empty text, or what went wrong.
    QString start(const QHostAddress &address, quint16 port);

protected:
    void incomingConnection(qintptr handle) override;

private:
    Camera &m_camera;
};

} // namespace q4sim
