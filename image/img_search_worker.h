#pragma once

#include "image/img_adj_data.h"

#include <QList>
#include <QObject>

class RawFrame;
class VeskFrame;

/**
 * Compares the frames of one search, with the look of the moment at which the search began. Made on the GUI
 * thread, then moved to the search's own; its slots run there and are connected to RawFrame::initFinished.
 */
class ImgSearchWorker : public QObject
{
    Q_OBJECT

public:
    enum class Reference { Previous, Start };

    /** threshold: largest difference of two 16-bit gray samples that still counts as none. */
    ImgSearchWorker(quint16 threshold, Reference reference, const ImgAdjData &adj);

public slots:
    /** Takes the frame at which the search begins as the first reference. */
    void init();
    /** Compares a frame with the reference. */
    void compare();

signals:
    /** Not different: the next frame may come. */
    void compareReady();
    void found();
    /** The frame cannot be decoded, or is not of the reference's size. */
    void frameRefused();

private:
    struct Side {
        VeskFrame *frame = nullptr;
        /** The frame as 16-bit gray; kept from frame to frame, so that nothing is allocated. */
        QList<quint16> gray;
    };

    bool load(const RawFrame *rawFrame, Side &side);
    bool sameSize() const;

    quint16 m_threshold;
    Reference m_reference;
    ImgAdjData m_adj;
    Side m_a;
    Side m_b;
    Side *m_target = nullptr;
};
