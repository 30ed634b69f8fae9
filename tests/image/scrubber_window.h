#pragma once

#include "image/playback_scrubber_template.h"

#include <QQuickWindow>
#include <QTest>

#include <cmath>
#include <memory>

/** A scrubber, 200 wide at (50, 40) of a window, with an item for each handle that can be dragged. */
class ScrubberWindow
{
protected:
    using Handle = PlaybackScrubberHandleObject;

    static constexpr QPoint Origin{50, 40};

    void open()
    {
        m_window = std::make_unique<QQuickWindow>();
        m_window->resize(300, 100);
        m_scrubber = new PlaybackScrubberTemplate(m_window->contentItem());
        m_scrubber->setPosition(Origin);
        m_scrubber->setSize(QSizeF(200, 20));
        for (Handle *handle : {m_scrubber->playHead(), m_scrubber->aMarker(), m_scrubber->bMarker()}) {
            auto *item = new QQuickItem(m_scrubber);
            item->setSize(QSizeF(11, 20));
            handle->setHandle(item);
        }
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }

    void close()
    {
        // The pointer of the next test starts from a place where there is no scrubber.
        QTest::mouseMove(m_window.get(), QPoint(1, 1));
        m_window.reset();
    }

    /** Puts the items where the handles are, as a view does. */
    void layOut()
    {
        for (const Handle *handle : {m_scrubber->playHead(), m_scrubber->aMarker(), m_scrubber->bMarker()})
            handle->handle()->setX(std::round(handle->position() * 199) - 5);
    }
    void press(int x) { QTest::mousePress(m_window.get(), Qt::LeftButton, {}, Origin + QPoint(x, 10)); }
    void moveTo(int x) { QTest::mouseMove(m_window.get(), Origin + QPoint(x, 10)); }
    void release(int x) { QTest::mouseRelease(m_window.get(), Qt::LeftButton, {}, Origin + QPoint(x, 10)); }

    std::unique_ptr<QQuickWindow> m_window;
    PlaybackScrubberTemplate *m_scrubber = nullptr;
};
