#include "image/img_search.h"

#include "app/arithmetic.h"
#include "image/img_search_worker.h"
#include "take/playback_vesk_object.h"
#include "take/raw_frame.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace
{
constexpr double MinThreshold = 0.01;
constexpr double MaxThreshold = 0.99;
constexpr double FullScale = 65535.0;
} // namespace

ImgSearch::ImgSearch(PlaybackVeskObject *source) : QObject(source), m_source(source)
{
    connect(source, &PlaybackVeskObject::frChanged, this, &ImgSearch::sourceFrChanged);
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this, &ImgSearch::cancel);
}

ImgSearch::~ImgSearch()
{
    endThread();
}

void ImgSearch::setRefFrame(RefFrame refFrame)
{
    if (refFrame == m_refFrame)
        return;
    m_refFrame = refFrame;
    emit refFrameChanged();
}

void ImgSearch::setStep(qlonglong step)
{
    if (step == m_step)
        return;
    m_step = step;
    emit stepChanged();
}

void ImgSearch::setThreshold(double threshold)
{
    if (std::isnan(threshold) || fuzzyEqual(threshold, m_threshold))
        return;
    // Tells also when the limit brings back the present value, so that a field shows it again.
    m_threshold = std::clamp(threshold, MinThreshold, MaxThreshold);
    emit thresholdChanged();
}

quint16 ImgSearch::thresholdSamples(double threshold)
{
    return quint16(threshold * FullScale);
}

void ImgSearch::setFr(qint64 fr)
{
    if (fr == m_fr)
        return;
    m_fr = fr;
    emit frChanged();
}

void ImgSearch::start(bool forward)
{
    cancel();
    m_source->pause();
    m_workingStep = m_step;
    m_startFr = m_source->fr();
    setFr(m_startFr);
    // Whoever was told of all this may have begun a search in the meantime; that one goes on.
    if (m_state == Searching)
        return;
    m_forward = forward;
    m_state = Searching;
    startWorker();
    const quint64 number = m_searchNumber;
    emit stateChanged();
    if (isCurrent(number))
        readFrame(&ImgSearchWorker::init);
}

bool ImgSearch::isCurrent(quint64 searchNumber) const
{
    return m_state == Searching && searchNumber == m_searchNumber;
}

void ImgSearch::startWorker()
{
    const auto reference =
        m_refFrame == StartFrame ? ImgSearchWorker::Reference::Start : ImgSearchWorker::Reference::Previous;
    m_worker = std::make_unique<ImgSearchWorker>(thresholdSamples(m_threshold), reference,
                                                 m_source->imgAdjModel()->data());
    m_worker->moveToThread(&m_thread);

    const quint64 number = ++m_searchNumber;
    const auto forThisSearch = [this, number](void (ImgSearch::*handler)()) {
        return [this, number, handler] {
            if (isCurrent(number))
                (this->*handler)();
        };
    };
    connect(m_worker.get(), &ImgSearchWorker::compareReady, this, forThisSearch(&ImgSearch::examineNext));
    connect(m_worker.get(), &ImgSearchWorker::found, this, forThisSearch(&ImgSearch::frameFound));
    connect(m_worker.get(), &ImgSearchWorker::frameRefused, this, forThisSearch(&ImgSearch::readFailed));

    m_thread.setObjectName(QStringLiteral("ImgSearch Thread"));
    m_thread.start(QThread::InheritPriority);
}

void ImgSearch::readFrame(WorkerSlot arrived)
{
    m_rawFrame = new RawFrame(this);
    connect(m_rawFrame, &RawFrame::initFinished, m_worker.get(), arrived);
    connect(m_rawFrame, &RawFrame::initError, this, &ImgSearch::readFailed);
    if (m_source->getFrame(m_rawFrame, m_fr) < 0)
        readFailed();
}

void ImgSearch::examineNext()
{
    const quint64 number = m_searchNumber;
    dropRawFrame();
    setFr(saturatedSum(m_fr, saturatedProduct(m_workingStep, m_forward ? 1 : -1)));
    // Whoever was told of the step may have cancelled.
    if (!isCurrent(number))
        return;
    const qint64 limit = std::max(m_source->aFr(), std::min<qint64>(m_fr, m_source->bFr()));
    if (limit == m_fr) {
        readFrame(&ImgSearchWorker::compare);
        return;
    }
    setFr(limit);
    if (isCurrent(number))
        frameFound();
}

void ImgSearch::frameFound()
{
    const quint64 number = m_searchNumber;
    m_source->setFr(m_fr);
    if (isCurrent(number))
        cancel();
}

void ImgSearch::readFailed()
{
    cancel();
}

void ImgSearch::sourceFrChanged()
{
    // A source at rest also tells frChanged when it gets the frame on screen once more, because the last
    // request was refused or the look has changed; the search goes on then.
    if (m_source->fr() != m_startFr)
        cancel();
}

void ImgSearch::cancel()
{
    if (m_state == Idle)
        return;
    m_state = Idle;
    endThread();
    emit stateChanged();
}

void ImgSearch::endThread()
{
    m_thread.quit();
    m_thread.wait();
    // Not on its own thread: with it go its connections to the frame, which belongs to this one.
    m_worker.reset();
    dropRawFrame();
}

void ImgSearch::dropRawFrame()
{
    if (!m_rawFrame)
        return;
    // Its reply may still be on the way and must not meet the next search.
    m_rawFrame->disconnect();
    m_rawFrame->deleteLater();
    m_rawFrame = nullptr;
}
