#pragma once

#include "tests/e2e/process.h"

#include <QImage>

#include <optional>
#include <xcb/xcb.h>

/// A virtual display without a window manager: what is on it, and a mouse and a
/// keyboard for it.
class Screen
{
public:
    using Window = xcb_window_t;

    Screen() = default;
    ~Screen();
    Q_DISABLE_COPY_MOVE(Screen)

    /// Starts it on a display number of its own, 1280 by 800. One sentence on
    /// what went wrong, or nothing.
    QString start();

    QString display() const { return m_display; }
    QImage picture() const;

    /// Keeps a picture of the whole screen in the folder of VESK_PICTURES when that is set.
    void keepPicture(const QString &name) const { keep(picture(), name); }
    static void keep(const QImage &picture, const QString &name);

    /// The visible window of that title, and of that size if one is given.
    std::optional<Window> window(const QString &title, QSize size = {}) const;
    QRect geometry(Window window) const;
    /// What a window manager would do when the user picks the window.
    void focus(Window window) const;
    void move(Window window, QPoint place) const;
    /// What a window manager would do when the user presses the window's close
    /// button.
    void close(Window window) const;

    /// Runs xdotool: real events by way of the server. `command` in its own
    /// words, "mousemove 3 4 click 1".
    bool input(const QString &command) const;
    bool type(const QString &text) const;

private:
    bool xdotool(const QStringList &arguments) const;
    xcb_atom_t atom(const char *name) const;
    QByteArray title(Window window) const;

    Process m_server;
    QString m_display;
    xcb_connection_t *m_connection = nullptr;
    Window m_root = 0;
};
