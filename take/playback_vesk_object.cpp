#include "take/playback_vesk_object.h"

#include "app/arithmetic.h"
#include "image/img_search.h"

#include <QChronoTimer>

#include <algorithm>

namespace
{
constexpr double NsPerSecond = 1'000'000'000.0;
constexpr int MaxPlayStep = 10'000'000;
constexpr int FastFrames = 10;

/** Two ticks a clock step keep the number shown less than one step behind. */
std::chrono::nanoseconds tickInterval(qint64 playPeriodNs)
{
    return std::chrono::nanoseconds(playPeriodNs / 2);
}
} // namespace

PlaybackVeskObject::PlaybackVeskObject(Type type, QObject *parent, const PlayClock &playClock)
    : VeskObject(type, parent), m_playTimer(new QChronoTimer(this)), m_playClock(playClock)
{
    m_playTimer->setTimerType(Qt::PreciseTimer);
    connect(m_playTimer, &QChronoTimer::timeout, this, &PlaybackVeskObject::incrementFrame);
    m_playTimer->setInterval(tickInterval(m_playPeriodNs));
    connect(this, &VeskObject::selectedChanged, this, &PlaybackVeskObject::armPlayTimer);
    m_playClock.restart(m_fr);
    m_imgSearch = new ImgSearch(this);
    connect(this, &PlaybackVeskObject::frChanged, this, [this] { requestFrame(); });
    createValues();
}

PlaybackVeskObject::~PlaybackVeskObject() = default;

void PlaybackVeskObject::armPlayTimer()
{
    if (!selected()) {
        m_playTimer->stop();
        return;
    }
    m_playClock.restart(m_fr);
    m_playTimer->start();
    // Of a source at rest, and of a recording of one frame, none falls due; a search may have moved it.
    const bool stale = m_state == Paused && m_fr != m_lastRequestedFr;
    if (m_valuesInit && (stale || imgFrame()->image().isNull()))
        requestFrame();
}

void PlaybackVeskObject::createValues()
{
    struct ValueRow {
        ValueIndex index;
        const char *path;
        const char *altPath;
        int type;
    };
    static constexpr ValueRow rows[] = {
#define VESK_VALUE_ROW(property, path, altPath, type) {ValueIndex::property, path, altPath, type},
#define VESK_SUBCLASS_ROW(property)
        VESK_PLAYBACK_VALUES(VESK_VALUE_ROW, VESK_VALUE_ROW, VESK_SUBCLASS_ROW)
#undef VESK_VALUE_ROW
#undef VESK_SUBCLASS_ROW
    };
    for (const ValueRow &row : rows) {
        auto *value = new VeskValue(QString::fromLatin1(row.path).split(QLatin1Char('/')), row.type, this,
                                    nullptr, QString::fromLatin1(row.altPath).split(QLatin1Char('/')));
        m_playbackValues[std::size_t(row.index)] = value;
        appendValue(value);
    }
}

void PlaybackVeskObject::setCorrModeValue(VeskValue *corrMode)
{
    m_playbackValues[std::size_t(ValueIndex::corrMode)] = corrMode;
}

quint64 PlaybackVeskObject::yearOffset() const
{
    return yearOffsetValue()->variant().toULongLong();
}

PlayRange PlaybackVeskObject::playRange() const
{
    return {firstFrValue()->variant().toInt(), lastFrValue()->variant().toInt(), m_aFr, m_bFr};
}

void PlaybackVeskObject::setValuesInit(bool valuesInit)
{
    if (valuesInit == m_valuesInit)
        return;
    m_valuesInit = valuesInit;
    emit valuesInitChanged();
    if (valuesInit)
        emit valuesInitFinished();
}

int PlaybackVeskObject::getFrame(RawFrame *rawFrame)
{
    return getFrame(rawFrame, m_fr);
}

int PlaybackVeskObject::requestFrame()
{
    if (VeskObject::requestFrame() < 0)
        return -1;
    m_lastRequestedFr = m_fr;
    return 0;
}

void PlaybackVeskObject::refreshIfPaused()
{
    if (m_state == Paused)
        setFr(m_fr, true);
}

void PlaybackVeskObject::setFr(qlonglong fr, bool force)
{
    if (!force && fr == m_fr)
        return;
    m_fr = playRange().clamped(fr);
    restartIfPlaying(m_fr);
    emit frChanged();
}

void PlaybackVeskObject::setAFr(qlonglong aFr, bool force)
{
    m_aFr = force ? aFr : playRange().clampedA(aFr);
    emit aFrChanged();
}

void PlaybackVeskObject::setBFr(qlonglong bFr, bool force)
{
    m_bFr = force ? bFr : playRange().clampedB(bFr);
    emit bFrChanged();
}

void PlaybackVeskObject::stepFrFwd()
{
    stepTo(m_fr == m_bFr ? m_aFr : saturatedSum(m_fr, 1));
}

void PlaybackVeskObject::stepFrRev()
{
    stepTo(m_fr == m_aFr ? m_bFr : saturatedSum(m_fr, -1));
}

void PlaybackVeskObject::stepTo(qint64 fr)
{
    m_fr = fr;
    restartIfPlaying(m_fr);
    emit frChanged();
}

void PlaybackVeskObject::pause()
{
    m_playDir = 0;
    setState(Paused);
}

void PlaybackVeskObject::play()
{
    startPlaying(Play, 1);
}

void PlaybackVeskObject::playRev()
{
    startPlaying(PlayRev, -1);
}

void PlaybackVeskObject::playFastFwd()
{
    startPlaying(PlayFastFwd, FastFrames);
}

void PlaybackVeskObject::playFastRev()
{
    startPlaying(PlayFastRev, -FastFrames);
}

void PlaybackVeskObject::startPlaying(State state, int playDir)
{
    m_playDir = playDir;
    m_playClock.restart(m_fr);
    setState(state);
}

void PlaybackVeskObject::setState(State state)
{
    if (state == m_state)
        return;
    m_state = state;
    emit stateChanged();
}

void PlaybackVeskObject::restartIfPlaying(qint64 playStartFr)
{
    if (m_state != Paused)
        m_playClock.restart(playStartFr);
}

double PlaybackVeskObject::playFrRate() const
{
    return NsPerSecond / double(m_playPeriodNs);
}

void PlaybackVeskObject::setPlayFrRate(double frRate)
{
    const qint64 periodNs = playPeriodNs(frRate);
    if (periodNs == m_playPeriodNs)
        return;
    m_playPeriodNs = periodNs;
    m_playTimer->setInterval(tickInterval(periodNs));
    // The step that the old rate had begun counts as done, so that a dragged rate slider does not hold the
    // picture still.
    restartIfPlaying(saturatedSum(m_fr, stride()));
    emit playFrRateChanged();
}

void PlaybackVeskObject::setPlayStep(int playStep)
{
    const int limited = std::clamp(playStep, 1, MaxPlayStep);
    if (limited == m_playStep)
        return;
    m_playStep = limited;
    restartIfPlaying(saturatedSum(m_fr, stride()));
    emit playStepChanged();
}

void PlaybackVeskObject::setRepeatMode(RepeatMode repeatMode)
{
    if (repeatMode == m_repeatMode)
        return;
    m_repeatMode = repeatMode;
    emit repeatModeChanged();
}

void PlaybackVeskObject::incrementFrame()
{
    // The request for the frame on which the source came to rest was refused, because one was in flight or
    // the source was blocked: ask until it is accepted.
    if (m_state == Paused && m_fr != m_lastRequestedFr) {
        setFr(m_fr, true);
        return;
    }
    if (m_state == Paused || !selected() || framesBlocked()) {
        // Held, so that play resumes from here without a jump.
        m_playClock.restart(m_fr);
        return;
    }
    const PlayRange range = playRange();
    qint64 due = m_playClock.dueFr(m_playPeriodNs, stride());
    due = m_repeatMode == RepeatPingPong ? turnedAround(due, range) : lapped(due, range);
    if (due == m_fr)
        return;
    // Past setFr, which would start the clock anew: the number stays tied to the time that has passed.
    m_fr = due;
    emit frChanged();
}

qint64 PlaybackVeskObject::turnedAround(qint64 due, const PlayRange &range)
{
    const bool before = range.isBefore(due);
    if (!before && !range.isBehind(due))
        return due;
    const qint64 end = before ? range.aFr : range.bFr;
    m_playDir = -m_playDir;
    setState(State(m_state ^ Rev));
    m_playClock.restart(end);
    return end;
}

qint64 PlaybackVeskObject::lapped(qint64 due, const PlayRange &range)
{
    if (!range.isBefore(due) && !range.isBehind(due))
        return due;
    const qint64 otherEnd = range.wrapped(due);
    m_playClock.restart(otherEnd);
    return otherEnd;
}
