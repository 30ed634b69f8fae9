#pragma once

#include <QImage>
#include <QList>

#include <array>

/** The adjustment tables of red, green and blue at 8 bits a sample, and those that they were made of. */
struct ByteTables {
    std::array<QList<quint16>, 3> luts;
    std::array<QList<uchar>, 3> bytes;
    /** Each sample of all three channels comes to what to8Bits() makes of it. */
    bool untouched = false;
};

/** The buffers of one decoded frame. What is shared with a reader is replaced, not copied, by the next frame.
 */
struct DevelopedFrame {
    /**
     * Of one that is saved there may be its picture alone, for an image, or its marked samples alone, for a
     * film; it takes one core, as others are made at the same time.
     */
    enum class Use { Shown, SavedImage, SavedVideo };

    Use use = Use::Shown;
    /** The mosaic as received, widened to 16 bits, in sensor geometry. */
    QList<quint16> raw;
    /** The adjusted image in blue, green, red order, with overlays and without; may share their storage. */
    QList<quint16> marked;
    QList<quint16> clean;
    /**
     * marked at 8 bits a channel; null when it has not been made along the way. In the order of marked or,
     * for an image that is saved, of image files.
     */
    QImage picture;
    ByteTables byteTables;
    quint16 width = 0;
    quint16 height = 0;
};
