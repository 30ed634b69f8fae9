#pragma once

#include "sim/fault.h"
#include "sim/fault_socket.h"

#include <QAbstractHttpServer>
#include <QHttpServerResponder>

#include <map>

namespace q4sim
{

class Camera;

/// Carries requests from the network to a camera and its answers back, faults applied.
class HttpFront : public QAbstractHttpServer
{
    Q_OBJECT

public:
    explicit HttpFront(Camera &camera);
    ~HttpFront() override;

    /// Returns an empty text, or what went wrong.
    QString listen(const QHostAddress &address, quint16 port);

protected:
    bool handleRequest(const QHttpServerRequest &request, QHttpServerResponder &responder) override;
    void missingHandler(const QHttpServerRequest &request, QHttpServerResponder &responder) override;

private:
    void watchUploads(FaultSocket *socket);
    static void armConnection(const Fault &fault, const Answer &answer, FaultSocket *connection);
    void send(QHttpServerResponder &responder, const Answer &answer, FaultSocket *connection);
    void hold(QHttpServerResponder &&responder, const Answer &answer, FaultSocket *connection, int ms);

    Camera &m_camera;
    FaultTcpServer *m_tcp = nullptr;            ///< a child
    std::map<int, QHttpServerResponder> m_held; ///< answers that come later or never
    int m_nextHeld = 0;
};

} // namespace q4sim
