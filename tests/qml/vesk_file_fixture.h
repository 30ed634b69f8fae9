#pragma once

#include "tests/file/hand_made_file.h"
#include "tests/qml/view_fixture.h"

#include <QJsonObject>

class VeskFile;

/** The program's window with native files that are put together by hand. */
class VeskFileFixture : public ViewFixture
{
    Q_OBJECT

public:
    /** A recording of 64x48 pixels, whose brightness rises to the right and from each frame to the next. */
    struct Recording {
        int firstFr = -20;
        int lastFr = 29;
        int cfa = 0;
        int fsyncMode = 0;
        int corrMode = 0;
        QJsonObject lens = {};
    };

    static QByteArray bytes(const Recording &recording);
    /** Writes a file into the folder of this fixture and gives its path. */
    QString write(const QString &name, const Recording &recording) const;
    QString write(const QString &name, const QByteArray &bytes) const { return m_folder.write(bytes, name); }
    /** A file in the fixture's folder. */
    QString path(const QString &name) const { return m_folder.path(name); }
    QString folder() const;

    /** Opens the file as the program does when it is asked to; null if there is no new source. */
    static VeskFile *openFile(const QString &path);
    /** Opens the window with a file "a.vesk" and waits for a picture; null if that fails. */
    VeskFile *start(const Recording &recording);
    VeskFile *start() { return start({}); }

    /** The tab of a file, null if there is none. */
    QQuickItem *tab(const QString &name) const;
    /** Closes, forgets the panes and the folder, and gives the warnings: what a test ends with. */
    QStringList end();

private:
    HandMade::Folder m_folder;
};
