#pragma once

#include "tests/e2e/session.h"

/// The dialog for saving, worked by mouse and keys. Places are those of its design.
class SaveDialog
{
public:
    explicit SaveDialog(const Session &session) : m_session(session) {}

    /// Clicks a place of the main window and waits for the dialog. That of a native file has no row of a
    /// take.
    bool open(QPoint button, bool ofFile = false);
    bool setName(const QString &name) const;
    /// Of a take: 0 a file, 1 the camera's drive.
    bool setDestination(int index) const { return pick(destinationBox, index); }
    /// 0 native files, 1 AVI, 2 MP4, 3 images.
    bool setFormat(int index) const { return pick(formatBox, index); }
    /// In the order of the list.
    bool setCodec(int index) const { return pick(codecBox, index); }
    void keepPicture(const QString &name) const { m_session.screen.keepPicture(name); }
    /// Presses "Save" and waits until the dialog has gone.
    bool save() const;

private:
    // The three sections lie below each other; a row is 24 high and 10 from the next.
    static constexpr QPoint destinationBox{175, 298};
    static constexpr QPoint formatBox{175, 472};
    static constexpr QPoint codecBox{383, 472};

    std::optional<Screen::Window> window() const;
    bool click(QPoint place) const;
    bool pick(QPoint box, int index) const;

    const Session &m_session;
    bool m_ofFile = false;
};
