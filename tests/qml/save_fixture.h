#pragma once

#include "tests/qml/take_fixture.h"

#include <QTemporaryDir>

#include <memory>

class SaveJob;

/** The window of TakeFixture, its dialog for saving and its list of saves. Saves go into a folder of their
 * own. */
class SaveFixture : public TakeFixture
{
    Q_OBJECT

public:
    enum Way { Button, TabMenu, FileMenu };

    /** A path in the folder. */
    QString path(const QString &name) const { return m_folder->filePath(name); }
    /** Names of the files in the folder, sorted. */
    QStringList files() const;
    /** Bytes of a file, empty if it cannot be read. */
    QByteArray contents(const QString &name) const;
    /** startWithTakes, with the dialog's folder set; the take, opened and shown. */
    Take *startWithTake(int takeId);
    Take *startWithTake(int takeId, const q4sim::Config &config);
    /** Saves go into a new folder. */
    void startFolder();
    /** Opens the dialog for the take; null if it does not come. */
    QQuickWindow *openSave(int way = Button, int takeId = 1) const;
    QQuickWindow *saveDialog() const;

    // Elements of the dialog.
    QString textOf(const QString &row) const;
    QString typed(const QString &field) const;
    bool isEnabled(const QString &name, QAccessible::Role role) const;
    QString chosen(const QString &box) const;
    bool pick(const QString &box, const QString &entry) const;
    bool typeInto(const QString &field, const QString &text, Qt::Key end = Qt::Key_Tab) const;
    bool press(const QString &name, QAccessible::Role role = QAccessible::Button) const;
    /** Saves the take's frames from the window: the job, null if there is none. */
    SaveJob *saveAs(const QString &name, const QString &format, const QString &which = {});

    // The list of saves.
    static QList<SaveJob *> jobs();
    /** What a cell of the row that shows a file tells. */
    QString cell(const QString &file, const QString &column) const;
    bool hasRow(const QString &file) const;
    bool pressInRow(const QString &file, const QString &button) const;
    bool rowHas(const QString &file, const QString &button) const;

    /** Forgets the saves and how they were chosen, too. */
    QStringList end();

private:
    QAccessibleInterface *row(const QString &file) const;
    QAccessibleInterface *inDialog(const QString &name, QAccessible::Role role) const;

    std::unique_ptr<QTemporaryDir> m_folder;
};
