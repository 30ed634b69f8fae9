#pragma once

#include "tests/qml/drive_fixture.h"

/** The program's window with a source of any kind, for what is alike for all of them. */
class AnySourceFixture : public DriveFixture
{
    Q_OBJECT

public:
    enum Shown { Nothing, TheCamera, TheTake, TheRecording, TheFile };

    /** Opens the window with a source of that kind selected; false if that fails. All of them have colours.
     */
    bool show(int what);
    /** The name of its tab. */
    static QString tabName(int what);
    /** Forgets where files were opened, too. */
    QStringList end();

private:
    bool showFile();
};
