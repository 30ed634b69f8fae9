#pragma once

#include <QObject>
#include <QString>

/**
 * Reads the frames of a save job and delivers them in chunks to the worker of the job's writer: a readyRead
 * signal of the subclass carries dataFrameCnt whole records back to back, the number of frames delivered
 * until then and the number still to come, which is 0 for the last chunk. Lives on the GUI thread.
 */
class VeskReader : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString error READ error NOTIFY errorChanged)

public:
    explicit VeskReader(QObject *parent);

    /** Why the frames ended early, in the operator's words. */
    const QString &error() const { return m_error; }
    void setError(const QString &error);

    /** Called once, when the writer has its worker. False, with the error set, when no frames can come. */
    virtual bool start() = 0;
    /** The writer takes no more frames. */
    virtual void stop() = 0;

signals:
    void errorChanged();

private:
    QString m_error;
};
