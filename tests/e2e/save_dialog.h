#pragma once

#include "tests/e2e/session.h"

/// The dialog for saving, worked by mouse and keys. Places are those of its design.
class SaveDialog
{
public:
    explicit SaveDialog(const Session &session) : m_session(session) {}

    /// Clicks a place of the main window and waits for the dialog. That of a native file has no row of a take.
    bool open(QPoint button, bool ofFile = false);
    bool setName(const QString &name) const;
    /// 0 native files, 1 AVI, 2 MP4, 3 images; the list opens over the entry that is chosen.
    bool setFormat(int from, int to) const;
    /// In the order of the list; the first one is chosen with its format.
    bool setCodec(int from, int to) const;
    void keepPicture(const QString &name) const { m_session.screen.keepPicture(name); }
    /// Presses "Save" and waits until the dialog has gone.
    bool save() const;

private:
    std::optional<Screen::Window> window() const;
    bool click(QPoint place) const;
    bool pick(QPoint box, int from, int to) const;

    const Session &m_session;
    bool m_ofFile = false;
};
