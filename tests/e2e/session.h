#pragma once

#include "tests/e2e/camera_process.h"
#include "tests/e2e/program.h"
#include "tests/e2e/screen.h"
#include "tests/e2e/shown_picture.h"
#include "tests/e2e/window_layout.h"

#include <QTemporaryDir>

#include <functional>

/// A user's session: a display, a camera on the network and the program, worked
/// by mouse and keys. Places are in the main window's pixels.
class Session
{
public:
    /// Starts all three and waits for the live picture. One sentence on what went
    /// wrong, or nothing.
    QString start(const QStringList &cameraOptions = {});
    /// Starts the program (again) and waits until it shows a camera.
    QString startProgram();

    CameraProcess camera;
    Screen screen;

    Program &program() { return m_program; }
    WindowLayout &layout() { return m_layout; }

    /// What the main window shows now.
    QImage window() const;
    ShownPicture shown(const Placement &placement = {}) const;

    void move(QPoint place) const;
    void press(QPoint place) const;
    void release() const;
    void click(QPoint place, int button = 1) const;
    /// `x11Button`: 4 up, 5 down.
    void wheel(QPoint place, int x11Button, const QString &modifier = {}) const;
    void drag(QPoint from, QPoint to) const;
    void key(const QString &keys) const;
    /// Gives the main window the keys, as after a click in it under a window
    /// manager.
    void focus() const { screen.focus(m_window); }
    /// Folds or unfolds a section of the panel.
    void toggleSection(const QString &section, bool folded);

    /// Opens a box of the panel and picks an entry.
    bool choose(const QString &row, int index, const QString &section = {}) const;
    /// Clicks into a field of the panel, replaces its text and ends with Return.
    bool type(const QString &row, const QString &text, const QString &section = {}) const;

    /// Opens the "File" menu and picks an entry of WindowLayout::fileMenuItem().
    bool pickFromFileMenu(int index) const;

    /// Waits for a condition on the window; false after 10 s.
    bool wait(const std::function<bool(const QImage &window)> &condition) const;

    /// What a part of the window shows once it has been the same for half a second, in which a busy machine
    /// draws what it has yet to draw; null when that is never so.
    QImage resting(const QRect &part) const;

    /// Waits for a frame whose number can be read; keeps a picture of what is there instead.
    bool waitForLivePicture() const;

    /// Number of pixels in a part of the window that fulfil a condition.
    static int count(const QImage &window, const QRect &part, const std::function<bool(QRgb)> &condition);

    /// Keeps a picture of the window in the folder of VESK_PICTURES when that is
    /// set.
    void keepPicture(const QString &name) const;

private:
    QPoint onScreen(QPoint place) const;

    QTemporaryDir m_folder;
    Program m_program{m_folder.path()};
    Screen::Window m_window = 0;
    QRect m_geometry;
    WindowLayout m_layout{QImage()};
};
