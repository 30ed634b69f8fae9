#pragma once

#include <QObject>
#include <QPointer>
#include <QThread>
#include <QtQmlIntegration>

#include <memory>

class ImgSearchWorker;
class PlaybackVeskObject;
class RawFrame;

/**
 * Walks through a source's frames, from the one that is shown, to the first that differs from a reference
 * frame, and shows that one. What is compared is what would be seen, overlays included. Frames are read one
 * at a time; a frame that cannot be read ends the search without a word. Lives on the GUI thread, the
 * comparing on a thread that exists while a search runs.
 */
class ImgSearch : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
    Q_PROPERTY(State state READ state NOTIFY stateChanged)
    Q_PROPERTY(RefFrame refFrame READ refFrame WRITE setRefFrame NOTIFY refFrameChanged)
    Q_PROPERTY(qlonglong step READ step WRITE setStep NOTIFY stepChanged)
    Q_PROPERTY(double threshold READ threshold WRITE setThreshold NOTIFY thresholdChanged)
    Q_PROPERTY(qlonglong fr READ fr NOTIFY frChanged)

public:
    enum State { Idle = 0, Searching = 1 };
    Q_ENUM(State)
    /** What a frame is compared with: the examined frame before it, or the one where the search began. */
    enum RefFrame { PreviousFrame = 0, StartFrame = 1 };
    Q_ENUM(RefFrame)

    explicit ImgSearch(PlaybackVeskObject *source);
    ~ImgSearch() override;

    State state() const { return m_state; }
    RefFrame refFrame() const { return m_refFrame; }
    void setRefFrame(RefFrame refFrame);
    /** Frames from one comparison to the next. A change takes effect with the next search. */
    qlonglong step() const { return m_step; }
    void setStep(qlonglong step);
    /** Largest difference of a pixel that counts as none, as a fraction of full scale; 0.01 to 0.99. */
    double threshold() const { return m_threshold; }
    void setThreshold(double threshold);
    /** A threshold in whole 16-bit samples, cut off. */
    static quint16 thresholdSamples(double threshold);
    /** The frame under examination. */
    qlonglong fr() const { return m_fr; }

    /** Pauses the source and begins a search, in place of one that runs. */
    Q_INVOKABLE void start(bool forward);
    /** Ends a search; the source's current frame stays as it is. */
    Q_INVOKABLE void cancel();

signals:
    void stateChanged();
    void refFrameChanged();
    void stepChanged();
    void thresholdChanged();
    void frChanged();

private:
    using WorkerSlot = void (ImgSearchWorker::*)();

    void startWorker();
    /** The search of that number still runs. */
    bool isCurrent(quint64 searchNumber) const;
    void setFr(qint64 fr);
    void readFrame(WorkerSlot arrived);
    void examineNext();
    void frameFound();
    void readFailed();
    void sourceFrChanged();
    void endThread();
    /** Only while the worker does not look at the frame. */
    void dropRawFrame();

    PlaybackVeskObject *m_source;
    State m_state = Idle;
    RefFrame m_refFrame = PreviousFrame;
    qint64 m_step = 100;
    double m_threshold = 0.5;
    qint64 m_fr = 0;
    QThread m_thread;
    std::unique_ptr<ImgSearchWorker> m_worker;
    qint64 m_workingStep = 0;
    bool m_forward = true;
    qint64 m_startFr = 0;
    QPointer<RawFrame> m_rawFrame;
    /** Tells what the worker of an earlier search has left in the event queue from what is meant for this. */
    quint64 m_searchNumber = 0;
};
