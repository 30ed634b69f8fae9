#pragma once

#include "sim/fault.h"
#include "sim/form_reader.h"

#include <QObject>
#include <QTcpSocket>
#include <QTimer>

#include <memory>

namespace q4sim
{

class Camera;

/// One client's connection: hands its requests to the camera, one after another, and sends the answers,
/// whole or spoilt. A firmware file goes on to the camera piece by piece as it comes in, so that no more
/// than `pieceMax` bytes of it and what the socket holds are ever in memory. Deletes itself at the end.
class HttpConnection : public QObject
{
    Q_OBJECT

public:
    HttpConnection(qintptr handle, Camera &camera, QObject *parent);
    ~HttpConnection() override;

    static constexpr qint64 headMax = 64 << 10;
    static constexpr qint64 bodyMax = 16 << 20; ///< of all but a firmware file
    static constexpr qint64 pieceMax = 64 << 10;

private:
    enum class Stage { Head, Body, File, Answer, Closed };

    void advance(); ///< does all that can be done with what has come in
    bool readHead();
    bool readBody();
    void beginFile();
    bool readFile();
    void onDisconnected();
    void onTimer();

    void refuse(int status, const QString &text);
    void reply(const Answer &answer, const Fault &fault);
    void send(const Answer &answer);
    void sendDrop();
    void endRequest();
    void closeBehindAnswer();

    Camera &m_camera;
    QTcpSocket m_socket;
    QTimer m_timer; ///< drops of an answer, or pieces of a file that is read slowly
    Stage m_stage = Stage::Head;
    Request m_request;
    qint64 m_left = 0; ///< bytes of the body that have not come in
    bool m_keepAlive = true;
    QByteArray m_held; ///< what is left of an answer that drips
    Fault m_fault;
    std::unique_ptr<FormReader> m_form;
    qint64 m_received = 0; ///< bytes of the form
    qint64 m_breakAt = -1; ///< the connection breaks behind so many of them; -1: it does not
};

} // namespace q4sim
