#pragma once

#include "take/abstract_take.h"

/**
 * A recording on the camera's drive that was opened. The object is made to open it and goes when the camera
 * no longer lists it as open; the camera's number for it is valid in between.
 */
class SsdTake : public AbstractTake
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
    Q_PROPERTY(QString name READ name CONSTANT)

public:
    /** name is the recording's on the drive. Nothing is opened yet, and the number is -1. */
    SsdTake(const QString &name, Camera *camera);

    const QString &name() const { return m_name; }

    /**
     * A status that was asked for before the recording was open cannot know of it, and says nothing about it.
     */
    bool knownToStatus() const { return m_knownToStatus; }
    void setKnownToStatus() { m_knownToStatus = true; }

public slots:
    void fopen();
    /** The recording stays until the camera has closed it. */
    void fclose();

signals:
    /** Whether it is open is told by savedOpened. */
    void fopenFinished();
    void fcloseFinished();

protected:
    QString takesPath() const override { return QStringLiteral("/ssd/takes"); }
    int xferSrc() const override { return 2; }
    void takeSaved() override {}
    void infoTimeout() override { getTakeInfo(false, false); }

private slots:
    void fopenHandleFinished();
    void fcloseHandleFinished();

private:
    QNetworkReply *post(const QString &path, const QString &body);

    QString m_name;
    bool m_knownToStatus = false;
};
