#pragma once

#include "image/img_search.h"
#include "tests/support/playback_source.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

using Numbers = QList<qlonglong>;

/** Black, with one pixel of this code. */
inline QByteArray onePixel(int code)
{
    QByteArray pixels(4, '\0');
    pixels[2] = char(code);
    return pixels;
}

/** A source at a frame of its recording. It is not selected, so that what it is asked for is the search's. */
inline std::unique_ptr<PlaybackSource> sourceAt(qlonglong fr, int firstFr = 0, int lastFr = 100)
{
    auto source = std::make_unique<PlaybackSource>();
    source->open(firstFr, lastFr);
    source->setFr(fr);
    source->answersAtOnce = true;
    source->imgSearch()->setStep(10);
    return source;
}

/** Waits for the end of the search. */
inline bool ends(const PlaybackSource &source)
{
    const ImgSearch *search = source.imgSearch();
    if (search->state() == ImgSearch::Searching)
        QSignalSpy(search, &ImgSearch::stateChanged).wait();
    return search->state() == ImgSearch::Idle;
}

/** Whether a search by hand gets so far that it reads this frame. */
inline bool reads(const PlaybackSource &source, qlonglong fr)
{
    return QTest::qWaitFor([&] { return !source.asked.isEmpty() && source.asked.last() == fr; });
}
