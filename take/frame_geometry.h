#pragma once

#include <QtTypes>

class PlaybackVeskObject;

/** Sizes of a source's frame records: a block of metadata, then one byte for each pixel of the sensor. */
struct FrameGeometry {
    quint16 width = 0;
    quint16 height = 0;
    quint32 metaSize = 0;

    quint32 imgSize() const { return quint32(width) * height; }
    /** Bytes of a record, held in 32 bits. */
    quint32 frameSize() const { return metaSize + imgSize(); }
};

/**
 * What the source tells of its records. A resolution that is not two decimal numbers with an x between them
 * makes both 0; a number that does not fit 16 bits is 0.
 */
FrameGeometry frameGeometry(const PlaybackVeskObject &source);
