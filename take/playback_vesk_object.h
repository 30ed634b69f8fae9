#pragma once

#include "take/play_clock.h"
#include "take/play_range.h"
#include "take/playback_values.h"
#include "take/vesk_object.h"

#include <QtQmlIntegration>

#include <array>
#include <limits>

class ImgSearch;
class QChronoTimer;

Q_MOC_INCLUDE("image/img_search.h")

/**
 * A source with recorded frames: its current frame, the markers between which it plays, how it plays, and
 * what is told about the recording.
 *
 * Play is clocked, not stepped: the frame number follows the time that has passed, whether or not the frames
 * arrive, and frames that cannot be had in time are skipped. A new source plays as soon as it is selected
 * and its values are in. Lives on the GUI thread.
 */
class PlaybackVeskObject : public VeskObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
    Q_PROPERTY(qlonglong fr READ fr WRITE setFr NOTIFY frChanged)
    Q_PROPERTY(qlonglong aFr READ aFr WRITE setAFr NOTIFY aFrChanged)
    Q_PROPERTY(qlonglong bFr READ bFr WRITE setBFr NOTIFY bFrChanged)
    Q_PROPERTY(State state READ state NOTIFY stateChanged)
    Q_PROPERTY(double playFrRate READ playFrRate WRITE setPlayFrRate NOTIFY playFrRateChanged)
    Q_PROPERTY(int playStep READ playStep WRITE setPlayStep NOTIFY playStepChanged)
    Q_PROPERTY(RepeatMode repeatMode READ repeatMode WRITE setRepeatMode NOTIFY repeatModeChanged)
    Q_PROPERTY(ImgSearch *imgSearch READ imgSearch CONSTANT)
    Q_PROPERTY(bool valuesInit READ valuesInit NOTIFY valuesInitChanged)
#define VESK_VALUE_PROPERTY(property, path, altPath, type)                                                   \
    Q_PROPERTY(VeskValue *property READ property##Value CONSTANT)
#define VESK_NO_PROPERTY(property, path, altPath, type)
#define VESK_SUBCLASS_PROPERTY(property) Q_PROPERTY(VeskValue *property READ property##Value CONSTANT)
    VESK_PLAYBACK_VALUES(VESK_VALUE_PROPERTY, VESK_NO_PROPERTY, VESK_SUBCLASS_PROPERTY)
#undef VESK_VALUE_PROPERTY
#undef VESK_NO_PROPERTY
#undef VESK_SUBCLASS_PROPERTY

public:
    /** Bits: Play moves, Rev backwards, Fast ten frames at a time. Rev and Fast alone are no states. */
    enum State { Paused = 0, Play = 1, Rev = 2, PlayRev = 3, Fast = 4, PlayFastFwd = 5, PlayFastRev = 7 };
    Q_ENUM(State)
    /** What happens at the ends of the range. */
    enum RepeatMode { RepeatLoop = 0, RepeatPingPong = 1 };
    Q_ENUM(RepeatMode)

    /** playClock tells which frame is due; tests move one of their own. */
    PlaybackVeskObject(Type type, QObject *parent, const PlayClock &playClock = PlayClock());
    ~PlaybackVeskObject() override;

    qlonglong fr() const { return m_fr; }
    /** Brings the number into the range. Unless forced, the present number changes and tells nothing. */
    void setFr(qlonglong fr, bool force = false);

    /**
     * The markers. A write is kept inside the frames held and before or behind the other marker; a forced
     * one is stored as it is. Both always tell, so that a dragged marker snaps back. The current frame stays
     * where it is until it is set again or play goes on.
     */
    qlonglong aFr() const { return m_aFr; }
    qlonglong bFr() const { return m_bFr; }
    void setAFr(qlonglong aFr, bool force = false);
    void setBFr(qlonglong bFr, bool force = false);

    State state() const { return m_state; }
    /** Clock steps per second, 0.1 to 10^7; reads back what the period in whole nanoseconds gives. */
    double playFrRate() const;
    void setPlayFrRate(double frRate);
    /** Frames per clock step, 1 to 10^7. */
    int playStep() const { return m_playStep; }
    void setPlayStep(int playStep);
    RepeatMode repeatMode() const { return m_repeatMode; }
    void setRepeatMode(RepeatMode repeatMode);

    ImgSearch *imgSearch() const { return m_imgSearch; }
    /** The values have been read once; never false again. */
    bool valuesInit() const { return m_valuesInit; }
    void setValuesInit(bool valuesInit);

#define VESK_VALUE_ACCESSOR(property, path, altPath, type)                                                   \
    VeskValue *property##Value() const { return m_playbackValues[std::size_t(ValueIndex::property)]; }
#define VESK_SUBCLASS_ACCESSOR(property)                                                                     \
    VeskValue *property##Value() const { return m_playbackValues[std::size_t(ValueIndex::property)]; }
    VESK_PLAYBACK_VALUES(VESK_VALUE_ACCESSOR, VESK_VALUE_ACCESSOR, VESK_SUBCLASS_ACCESSOR)
#undef VESK_VALUE_ACCESSOR
#undef VESK_SUBCLASS_ACCESSOR

    Q_INVOKABLE void pause();
    Q_INVOKABLE void play();
    Q_INVOKABLE void playRev();
    Q_INVOKABLE void playFastFwd();
    Q_INVOKABLE void playFastRev();
    /** One frame back or on, whatever the play step, and round the ends of the range. */
    Q_INVOKABLE void stepFrRev();
    Q_INVOKABLE void stepFrFwd();

    /** Starts getting the current frame. */
    int getFrame(RawFrame *rawFrame) override;
    /** Starts getting a frame by its number; below 0 when it could not start. */
    virtual int getFrame(RawFrame *rawFrame, qlonglong fr) = 0;

public slots:
    int requestFrame() override;
    /** Gets the frame on screen once more if the source rests; a playing one brings changes along. */
    void refreshIfPaused();

signals:
    void frChanged();
    void aFrChanged();
    void bFrChanged();
    void stateChanged();
    void playFrRateChanged();
    void playStepChanged();
    void repeatModeChanged();
    void valuesInitChanged();
    /** The values are there for the first and only time. */
    void valuesInitFinished();

protected:
    quint64 yearOffset() const override;
    /** The subclass's value of this name, which it has also appended to its values. */
    void setCorrModeValue(VeskValue *corrMode);

private slots:
    void incrementFrame();

private:
    enum class ValueIndex : std::size_t {
#define VESK_VALUE_INDEX(property, path, altPath, type) property,
#define VESK_SUBCLASS_INDEX(property) property,
        VESK_PLAYBACK_VALUES(VESK_VALUE_INDEX, VESK_VALUE_INDEX, VESK_SUBCLASS_INDEX)
#undef VESK_VALUE_INDEX
#undef VESK_SUBCLASS_INDEX
            count
    };

    void createValues();
    /**
     * A tick of a source that is not selected has nothing to do but to hold the frame, so none is delivered:
     * a camera may have a thousand partitions. With the selection play goes on from the frame that was shown.
     */
    void armPlayTimer();
    PlayRange playRange() const;
    /** Frames per clock step with their direction. */
    qint64 stride() const { return qint64(m_playStep) * m_playDir; }
    void startPlaying(State state, int playDir);
    void setState(State state);
    void restartIfPlaying(qint64 playStartFr);
    void stepTo(qint64 fr);
    qint64 turnedAround(qint64 due, const PlayRange &range);
    qint64 lapped(qint64 due, const PlayRange &range);

    qint64 m_fr = std::numeric_limits<qint64>::min();
    qint64 m_aFr = std::numeric_limits<qint64>::min();
    qint64 m_bFr = std::numeric_limits<qint64>::max();
    /** Current frame of the last request that was accepted. */
    qint64 m_lastRequestedFr = 0;
    std::array<VeskValue *, std::size_t(ValueIndex::count)> m_playbackValues{};
    State m_state = Play;
    int m_playDir = 1; // 0, 1, -1, 10 or -10
    qint64 m_playPeriodNs = 33'333'333;
    int m_playStep = 1;
    RepeatMode m_repeatMode = RepeatLoop;
    QChronoTimer *m_playTimer;
    PlayClock m_playClock;
    ImgSearch *m_imgSearch;
    bool m_valuesInit = false;
};
