#include "image/img_search_worker.h"

#include "app/vesk_app.h"
#include "image/img_adj_util.h"
#include "take/raw_frame.h"
#include "take/vesk_frame.h"

namespace
{
const quint16 *samples(const QImage &gray)
{
    return reinterpret_cast<const quint16 *>(gray.constBits());
}
} // namespace

ImgSearchWorker::ImgSearchWorker(quint16 threshold, Reference reference, const ImgAdjData &adj)
    : m_threshold(threshold), m_reference(reference), m_adj(adj)
{
}

bool ImgSearchWorker::load(const RawFrame *rawFrame, Side &side)
{
    if (!side.frame->set(rawFrame))
        return false;
    side.gray = side.frame->grayImage();
    return true;
}

void ImgSearchWorker::init()
{
    const auto *rawFrame = qobject_cast<RawFrame *>(sender());
    m_a.frame = new VeskFrame(&m_adj, this);
    m_a.frame->setObjectName(QStringLiteral("A"));
    m_b.frame = new VeskFrame(&m_adj, this);
    m_b.frame->setObjectName(QStringLiteral("B"));
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
    if (!load(rawFrame, *m_target) || m_a.gray.size() != m_b.gray.size()) {
        emit frameRefused();
        return;
    }
    if (VeskApp::instance()->imgAdjUtil()->framesDiffer(
            samples(m_a.gray), samples(m_b.gray), m_a.frame->height(), m_a.frame->width(), m_threshold)) {
        emit found();
        return;
    }
    if (m_reference == Reference::Previous)
        m_target = m_target == &m_b ? &m_a : &m_b;
    emit compareReady();
}
