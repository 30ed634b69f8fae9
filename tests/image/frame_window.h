#pragma once

#include "image/img_frame.h"
#include "image/img_frame_control.h"

#include <QQuickWindow>
#include <QTest>

#include <memory>

inline QImage plain(int width, int height, Qt::GlobalColor color)
{
    QImage image(width, height, QImage::Format_BGR888);
    image.fill(color);
    return image;
}

/** Red, green, blue and white quarters, from the top left along the rows. */
inline QImage quarters(int width, int height)
{
    QImage image(width, height, QImage::Format_BGR888);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool right = x >= width / 2;
            image.setPixelColor(
                x, y, y < height / 2 ? (right ? Qt::green : Qt::red) : (right ? Qt::white : Qt::blue));
        }
    }
    return image;
}

/** Lies under the control and sees what the control lets through. */
class Backdrop : public QQuickItem
{
public:
    explicit Backdrop(QQuickItem *parent) : QQuickItem(parent)
    {
        setAcceptedMouseButtons(Qt::AllButtons);
        setFlag(ItemIsFocusScope);
    }

    int presses = 0;
    /** Keys that came through, but for the modifiers themselves. */
    QList<int> keys;

protected:
    void mousePressEvent(QMouseEvent *) override { ++presses; }
    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->key() != Qt::Key_Control)
            keys.append(event->key());
    }
};

/** A magenta window of 300 x 200 with a control of 200 x 120 that shows one frame. */
class FrameWindow
{
protected:
    static constexpr QPoint Origin{50, 40};

    void open()
    {
        m_frame = std::make_unique<ImgFrame>();
        m_window = std::make_unique<QQuickWindow>();
        m_window->setColor(Qt::magenta);
        m_window->resize(300, 200);
        m_backdrop = new Backdrop(m_window->contentItem());
        m_backdrop->setSize(QSizeF(300, 200));
        m_control = new ImgFrameControl(m_backdrop);
        m_control->setPosition(Origin);
        m_control->setSize(QSizeF(200, 120));
        m_control->setImgFrame(m_frame.get());
    }

    void close()
    {
        // The pointer of the next test starts from a place where there is no control.
        QTest::mouseMove(m_window.get(), QPoint(1, 1));
        m_window.reset();
        m_frame.reset();
    }

    /** Sets the image and waits for the window. */
    void show(const QImage &image)
    {
        m_frame->setImage(image);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }
    void move(const QPoint &position) { QTest::mouseMove(m_window.get(), Origin + position); }
    bool wheel(const QPoint &position, int delta, Qt::KeyboardModifiers modifiers)
    {
        const QPointF place = Origin + position;
        QWheelEvent event(place, m_window->mapToGlobal(place), QPoint(), QPoint(0, delta), Qt::NoButton,
                          modifiers, Qt::NoScrollPhase, false);
        event.ignore();
        QCoreApplication::sendEvent(m_window.get(), &event);
        return event.isAccepted();
    }
    QColor grabbed(const QPoint &position) { return m_window->grabWindow().pixelColor(Origin + position); }

    std::unique_ptr<ImgFrame> m_frame;
    std::unique_ptr<QQuickWindow> m_window;
    Backdrop *m_backdrop = nullptr;
    ImgFrameControl *m_control = nullptr;
};
