#pragma once

#include <QString>

class QQuickItem;
class QQuickWindow;
class ViewFixture;

/** The keyboard of a user who has no pointer: every key goes to the window that has the focus. */
class Keys
{
public:
    explicit Keys(const ViewFixture &view) : m_view(view) {}

    /** The window that keys go to. When none has the focus the main window gets it, as on a desktop. */
    QQuickWindow *window() const;
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const;
    void type(const QString &text) const;
    /** Replaces what is in the field that has the focus. */
    void replace(const QString &text) const;

    /** Name of the control that has the focus. */
    QString focused() const;
    /** Presses Tab until a control has the focus, if need be that of one section; false if it never gets it.
     */
    bool tabTo(const QString &name, const QString &section = {}) const;
    /** Goes to a control and presses it. */
    bool use(const QString &name, const QString &section = {}) const;
    /** Goes to a field, replaces its text and ends with Return. */
    bool enter(const QString &field, const QString &text) const;

    /** Opens a menu by its letter and picks an entry. */
    bool pickFromMenu(Qt::Key letter, const QString &entry) const;
    /** Picks an entry of the menu that is open. */
    bool pick(const QString &entry) const;
    /** Waits until a dialog has the focus. */
    bool waitForDialog(const QString &title) const;
    /** Waits until it is no longer there. */
    bool waitForNoDialog(const QString &title) const;

private:
    bool isIn(const QString &section) const;

    const ViewFixture &m_view;
};
