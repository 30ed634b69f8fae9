#pragma once

#include "camera/vesk_value.h"

#include <QBasicTimer>
#include <QDeadlineTimer>

class Camera;

/**
 * A value of a camera. A local write shows at once and is sent within 50 ms, however many writes come in
 * between, but not before the answer to the one before; the next remote update is dropped, because the poll
 * under way may still carry the old value, and the one after it is believed again, unless a change still
 * waits for that answer.
 */
class CameraValue : public VeskValue
{
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(QVariant value READ variant WRITE setLocal NOTIFY valueChanged)

public:
    /** parent is the Camera whose JSON document holds the value. */
    CameraValue(const QStringList &jsonPath, int type, QObject *parent, QVariant *storage = nullptr,
                const QStringList &altJsonPath = {});

    void setValue(const QVariant &value, bool silent) override;
    bool setValueFromJson(const QJsonValue &json) override;
    bool updateValue(const QVariant &value) override;

signals:
    /** A remote update changed the value. */
    void valueChangedRemote();
    /** The reply to the value's PUT has arrived, whatever its outcome. */
    void valueSent();

protected:
    void timerEvent(QTimerEvent *event) override;
    /** Sends a change that is waiting. */
    virtual void sendValue();
    void putValue(Camera *camera, const QString &path);
    /** The key list as a URL path, each key with a leading "/". */
    QString keyPath() const;

private:
    void setLocal(const QVariant &value) { setValue(value, false); }
    /** Whether a remote update is older than what was written here. */
    bool ignoresUpdate();

    bool m_ignoreNextUpdate = false;
    bool m_sendPending = false;
    QBasicTimer m_sendTimer;
    int m_unanswered = 0; // PUTs on their way
    QDeadlineTimer m_answerBy;
};
