#pragma once

#include "tests/qml/save_fixture.h"

class SsdTake;

/** The program's window with a simulated camera's drive: its listing, and recordings that were opened. */
class DriveFixture : public SaveFixture
{
    Q_OBJECT

public:
    /** Sizes rise and dates fall in the order of the names, but for two alike. */
    static q4sim::Config fourRecordings();
    /** One recording on the drive, of 10 frames. */
    static q4sim::Config oneRecording(const QString &name);

    enum Listing { PanelButton, CameraTabMenu, CameraFileMenu };

    /** A camera whose drive is ready, selected; null if that fails. */
    q4sim::Camera *startWithDrive(const q4sim::Config &config);
    q4sim::Camera *startWithDrive();
    /** startWithDrive with a recording opened, once its view has its values; null if that fails. */
    SsdTake *startWithRecording(const QString &name, const q4sim::Config &config);
    SsdTake *startWithRecording(const QString &name);

    /** Opens the listing and waits for a number of rows; null if it does not come. */
    QQuickWindow *openListing(Listing way, int rows) const;
    QQuickWindow *listing() const;
    /** Names in the listing, from top to bottom. */
    QStringList names() const;
    QAccessibleInterface *inListing(const QString &name, QAccessible::Role role) const;
    QQuickItem *row(const QString &name) const;
    bool isSelected(const QString &name) const;
    bool pressInListing(const QString &name, QAccessible::Role role = QAccessible::Button) const;
    bool doubleClickRow(const QString &name) const;
    /** What is selected, if it is a recording of the drive. */
    static SsdTake *selectedRecording();

    /** The tab of a source, null if there is none. */
    QQuickItem *tabOf(const QString &name) const;
};
