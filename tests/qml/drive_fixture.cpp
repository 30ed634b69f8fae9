#include "tests/qml/drive_fixture.h"

#include "app/vesk_app.h"
#include "camera/camera.h"
#include "sim/camera.h"
#include "take/ssd_take.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

using namespace Qt::StringLiterals;

static q4sim::RecordingOrder recording(const QString &name, qint64 time, qint64 last)
{
    return {name, time, {.first = 0, .last = last, .triggerNs = 1735732000000000000}};
}

q4sim::Config DriveFixture::fourRecordings()
{
    q4sim::Config config;
    config.recordings = {
        recording(u"Bravo.vesk"_s, 1735732800, 19), recording(u"alpha.vesk"_s, 1738411200, 9),
        recording(u"delta.vesk"_s, 1735732800, 19), recording(u"Charlie.vesk"_s, 1740830400, 29)};
    return config;
}

q4sim::Config DriveFixture::oneRecording(const QString &name)
{
    q4sim::Config config;
    config.recordings = {recording(name, 1735732800, 9)};
    return config;
}

q4sim::Camera *DriveFixture::startWithDrive(const q4sim::Config &config)
{
    startFolder();
    q4sim::Camera *simulated = startWithCamera(config);
    const auto ready = [this] { return camera()->ssdStateValue()->variant().toInt() == Camera::SsdReady; };
    return simulated && QTest::qWaitFor(ready) ? simulated : nullptr;
}

q4sim::Camera *DriveFixture::startWithDrive()
{
    return startWithDrive({});
}

SsdTake *DriveFixture::startWithRecording(const QString &name, const q4sim::Config &config)
{
    if (!startWithDrive(config))
        return nullptr;
    camera()->ssdFOpen(name);
    const bool shown =
        QTest::qWaitFor([] { return selectedRecording() && selectedRecording()->valuesInit(); });
    return shown ? selectedRecording() : nullptr;
}

SsdTake *DriveFixture::startWithRecording(const QString &name)
{
    return startWithRecording(name, {});
}

SsdTake *DriveFixture::selectedRecording()
{
    return qobject_cast<SsdTake *>(VeskApp::instance()->selectedVeskObject());
}

QQuickWindow *DriveFixture::listing() const
{
    return dialog(u"Open SSD Take"_s);
}

QQuickWindow *DriveFixture::openListing(Listing way, int rows) const
{
    const QString entry = u"Open SSD Take..."_s;
    const bool opened = way == PanelButton ? clickIn(u"SSD"_s, u"Open SSD Take"_s)
                        : way == CameraFileMenu
                            ? click(u"File"_s) && offers(entry) && click(entry)
                            : click(camera()->nameValue()->variant().toString(), Qt::RightButton) &&
                                  offers(entry) && click(entry);
    if (!opened || !QTest::qWaitFor([this] { return listing() != nullptr; }) ||
        !QTest::qWaitForWindowActive(listing()))
        return nullptr;
    return QTest::qWaitFor([&] { return names().size() == rows; }) ? listing() : nullptr;
}

/** The visible rows below an element. */
static void collectRows(QAccessibleInterface *parent, QList<QAccessibleInterface *> *rows)
{
    for (int i = 0; parent && i < parent->childCount(); ++i) {
        QAccessibleInterface *child = parent->child(i);
        if (!child || child->state().invisible)
            continue;
        if (child->role() == QAccessible::ListItem)
            rows->append(child);
        collectRows(child, rows);
    }
}

QStringList DriveFixture::names() const
{
    QList<QAccessibleInterface *> rows;
    collectRows(QAccessible::queryAccessibleInterface(listing()), &rows);
    std::ranges::sort(rows, {}, [](QAccessibleInterface *row) { return row->rect().y(); });
    QStringList names;
    for (QAccessibleInterface *row : rows)
        names.append(row->text(QAccessible::Name));
    return names;
}

QAccessibleInterface *DriveFixture::inListing(const QString &name, QAccessible::Role role) const
{
    return listing() ? element(listing(), name, role) : nullptr;
}

QQuickItem *DriveFixture::row(const QString &name) const
{
    QAccessibleInterface *found = inListing(name, QAccessible::ListItem);
    return found ? qobject_cast<QQuickItem *>(found->object()) : nullptr;
}

bool DriveFixture::isSelected(const QString &name) const
{
    QAccessibleInterface *found = inListing(name, QAccessible::ListItem);
    return found && found->state().selected;
}

bool DriveFixture::pressInListing(const QString &name, QAccessible::Role role) const
{
    return ViewFixture::click(listing(), inListing(name, role));
}

bool DriveFixture::doubleClickRow(const QString &name) const
{
    if (!row(name))
        return false;
    QTest::mouseDClick(listing(), Qt::LeftButton, {},
                       centre(listing(), inListing(name, QAccessible::ListItem)));
    return true;
}

QQuickItem *DriveFixture::tabOf(const QString &name) const
{
    QAccessibleInterface *found = element(name, QAccessible::PageTab);
    return found ? qobject_cast<QQuickItem *>(found->object()) : nullptr;
}
