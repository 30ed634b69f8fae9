#pragma once

#include "take/playback_vesk_object.h"

class Camera;
class QJsonObject;
class QNetworkReply;
class QTimer;
class SaveJobQueue;

Q_MOC_INCLUDE("camera/camera.h")
Q_MOC_INCLUDE("save/save_job_queue.h")

/**
 * A recording that lives on the camera: its number, its description and its frames over HTTP, and how it
 * appears and vanishes. The camera's status says which recordings there are. Lives on the GUI thread.
 */
class AbstractTake : public PlaybackVeskObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
    Q_PROPERTY(int takeId READ takeId WRITE setTakeId NOTIFY takeIdChanged)
    Q_PROPERTY(Camera *camera READ camera CONSTANT)
    Q_PROPERTY(bool savedOpened READ savedOpened NOTIFY savedOpenedChanged)
    Q_PROPERTY(SaveJobQueue *fileSaveJobQueue READ fileSaveJobQueue CONSTANT)

public:
    AbstractTake(int takeId, Type type, Camera *camera);

    /** The take's number on the camera. */
    int takeId() const { return m_takeId; }
    void setTakeId(int takeId);
    Camera *camera() const { return m_camera; }
    /** The recording exists. */
    bool savedOpened() const { return m_savedOpened; }
    /**
     * The recording has appeared or is gone. quiet: it was there when the connection was made. latch: it was
     * closed from here, so that the next change is taken from a status that is still an old one, and ignored.
     */
    void setSavedOpened(bool value, bool latch, bool quiet);

    /** The camera's. */
    SaveJobQueue *fileSaveJobQueue() const;

    /** Path of the take's record on the camera. */
    QString takePath() const;
    /**
     * Asks for the description unless one is on its way or, without force, the take is not selected. The
     * answer to an init request, which waits for no other, also opens the range.
     */
    void getTakeInfo(bool force, bool init);

    using PlaybackVeskObject::getFrame;
    int getFrame(RawFrame *rawFrame, qlonglong fr) override;
    /** Asks for a run of frames; the caller owns the reply, which holds one record after the other. */
    QNetworkReply *startXfer(qlonglong start, qlonglong cnt);

signals:
    void takeIdChanged();
    void savedOpenedChanged();
    /** The recording is gone. */
    void deletedClosed();

protected:
    bool framesBlocked() const override;
    /** The path of the takes of this kind on the camera. */
    virtual QString takesPath() const = 0;
    /** Where the camera finds the frames. */
    virtual int xferSrc() const = 0;
    /** The recording was finished while the application runs. */
    virtual void takeSaved() = 0;

    void startInfoTimer();
    void stopInfoTimer();
    /** The time for the next description has come. */
    virtual void infoTimeout() = 0;

protected slots:
    void frameReady() override;

private slots:
    void getTakeInfoFinished();

private:
    bool readTakeInfo(QNetworkReply *reply);
    void openRange();

    Camera *m_camera;
    int m_takeId;
    bool m_savedOpened = false;
    bool m_closeLatch = false;
    QTimer *m_infoTimer;
    bool m_infoInFlight = false;
    /** The description that was to bring the markers into a later recording did not come. */
    bool m_rangeLost = false;
};
