#pragma once

#include "take/abstract_take.h"

/**
 * A recording in one partition of the camera's frame memory. The object stands for the partition and lives as
 * long as the memory is divided that way, whether or not it holds a recording.
 */
class Take : public AbstractTake
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
    Q_PROPERTY(bool active READ active WRITE setActive NOTIFY activeChanged)
    Q_PROPERTY(bool locked READ locked WRITE setLocked NOTIFY lockedChanged)
    Q_PROPERTY(VeskValue *prtnFrCnt READ prtnFrCntValue CONSTANT)
    Q_PROPERTY(VeskValue *prtnPtFrCnt READ prtnPtFrCntValue CONSTANT)

public:
    Take(int takeId, Camera *camera);

    /** This is the partition that records now. */
    bool active() const { return m_active; }
    /** An active take is asked for its description every 100 ms: its frame count is shown as it grows. */
    void setActive(bool active);
    /** The camera needs the recording; it refuses to delete it. */
    bool locked() const { return m_locked; }
    void setLocked(bool locked);
    /** Size of the partition in frames, in all and behind the trigger. */
    VeskValue *prtnFrCntValue() const { return m_prtnFrCnt; }
    VeskValue *prtnPtFrCntValue() const { return m_prtnPtFrCnt; }

public slots:
    /** Asks the camera to delete the recording, and then to record again if wanted, whatever the answer. */
    void deleteTake(bool restartRecord = false);

private slots:
    void autosaveStart();
    void autosaveFinish();

signals:
    void activeChanged();
    void lockedChanged();

protected slots:
    void frameReady() override;
    void frameFailed() override;

protected:
    QString takesPath() const override { return QStringLiteral("/takes"); }
    int xferSrc() const override { return 0; }
    void takeSaved() override;
    void infoTimeout() override { getTakeInfo(m_active, false); }

private:
    void correctionChanged();
    void refreshIfStale();

    bool m_active = false;
    bool m_locked = false;
    VeskValue *m_prtnFrCnt;
    VeskValue *m_prtnPtFrCnt;
    /** The frame on its way may have been corrected the old way. */
    bool m_staleFrame = false;
};
