#include "image/img_search_worker.h"

#include "app/vesk_app.h"
#include "image/img_adj_util.h"
#include "take/raw_frame.h"
#include "take/vesk_frame.h"

ImgSearchWorker::ImgSearchWorker(quint16 threshold, Reference reference, const ImgAdjData &adj)
    : m_threshold(threshold), m_reference(reference), m_adj(adj)
{
}

bool ImgSearchWorker::load(const RawFrame *rawFrame, Side &side)
{
    if (!side.frame->set(rawFrame))
        return false;
    const VeskFrame &frame = *side.frame;
    side.gray.resize(qsizetype(frame.width()) * frame.height());
    VeskApp::instance()->imgAdjUtil()->rgbToGray16(frame.marked(), frame.width(), frame.height(),
                                                   side.gray.data());
    return true;
}

bool ImgSearchWorker::sameSize() const
{
    return m_a.frame->width() == m_b.frame->width() && m_a.frame->height() == m_b.frame->height();
}

void ImgSearchWorker::init()
{
    const auto *rawFrame = qobject_cast<RawFrame *>(sender());
    if (!rawFrame) // taken back while its signal was on the way
        return;
    m_a.frame = new VeskFrame(&m_adj, this);
    m_a.frame->setObjectName(QStringLiteral("A"));
    m_b.frame = new VeskFrame(&m_adj, this);
    m_b.frame->setObjectName(QStringLiteral("B"));
    // Nobody else looks at them, and a frame that is refused ends the search.
    m_a.frame->decodeInPlace();
    m_b.frame->decodeInPlace();
    m_target = &m_b;
    if (!load(rawFrame, m_a)) {
        emit frameRefused();
        return;
    }
    emit compareReady();
}

void ImgSearchWorker::compare()
{
    const auto *rawFrame = qobject_cast<RawFrame *>(sender());
    if (!rawFrame) // taken back while its signal was on the way
        return;
    if (!load(rawFrame, *m_target) || !sameSize()) {
        emit frameRefused();
        return;
    }
    if (VeskApp::instance()->imgAdjUtil()->framesDiffer(m_a.gray.constData(), m_b.gray.constData(),
                                                        m_a.frame->height(), m_a.frame->width(),
                                                        m_threshold)) {
        emit found();
        return;
    }
    if (m_reference == Reference::Previous)
        m_target = m_target == &m_b ? &m_a : &m_b;
    emit compareReady();
}
