#pragma once

#include "tests/qml/drive_fixture.h"

#include <QSize>

/** The program's window with each of its own dialogs, one after the other. */
class DialogFixture : public DriveFixture
{
    Q_OBJECT

public:
    enum Dialog {
        Connect,
        EditName,
        Partition,
        FirmwareUpdate,
        Listing,
        Format,
        EditFileName,
        DeleteTake,
        DeleteAllTakes,
        TakeLocked,
        NoPartition,
        NoSlot,
        Save,
        DialogCount
    };

    /** Title, and size in pixels that do not depend on the display. */
    struct Design {
        const char *name;
        const char *title;
        QSize size;
    };
    static const Design &design(int dialog);
    /** Column "dialog" with a row for each. */
    static void addDialogs();

    /** Starts with a camera that gives reason for the dialog, and opens it; null if it does not come. */
    QQuickWindow *startWithDialog(int dialog);

private:
    bool start(int dialog);
    bool ask(int dialog);
};
