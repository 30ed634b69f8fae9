#include "tests/qml/dialog_fixture.h"

#include "camera/camera.h"
#include "sim/camera.h"

#include <QJsonArray>
#include <QQuickWindow>
#include <QTest>

#include <array>

using namespace Qt::StringLiterals;

const DialogFixture::Design &DialogFixture::design(int dialog)
{
    static const std::array<Design, DialogCount> designs = {
        {{"connect", "Connect Camera", {220, 90}},
         {"camera's name", "Camera - Edit Name", {480, 96}},
         {"partition", "Partition", {175, 100}},
         {"firmware", "Firmware Update", {480, 160}},
         {"listing", "Open SSD Take", {512, 512}},
         {"format", "SSD Format", {320, 160}},
         {"autosave's file name", "SSD Auto Save - Edit File Name", {480, 160}},
         {"delete a take", "VESK", {200, 100}},
         {"delete all takes", "VESK", {200, 100}},
         {"locked take", "VESK", {200, 100}},
         {"no partition left", "VESK", {200, 100}},
         {"no slot left", "VESK", {240, 100}},
         {"save", "Save", {480, 640}}}};
    return designs.at(static_cast<size_t>(dialog));
}

void DialogFixture::addDialogs()
{
    QTest::addColumn<int>("dialog");
    for (int dialog = 0; dialog < DialogCount; ++dialog)
        QTest::newRow(design(dialog).name) << dialog;
}

/** With a take shown for what is asked about takes; with every section of the camera unfolded for the rest.
 */
bool DialogFixture::start(int dialog)
{
    if (dialog == DeleteTake || dialog == TakeLocked || dialog == Save)
        return startWithTake(1) != nullptr;
    return startUnfolded() &&
           QTest::qWaitFor([this] { return camera()->ssdStateValue()->variant() == Camera::SsdReady; });
}

bool DialogFixture::ask(int dialog)
{
    switch (dialog) {
    case Connect:
        return click(u"File"_s) && offers(u"Connect Camera..."_s) && click(u"Connect Camera..."_s);
    case EditName:
        return clickIn(u"Camera"_s, u"Edit name"_s);
    case Partition:
        return clickIn(u"Frame Buffer"_s, u"Partition"_s);
    case FirmwareUpdate:
        return clickIn(u"Firmware"_s, u"Firmware Update"_s);
    case Listing:
        return openListing(PanelButton, 3) != nullptr;
    case Format:
        return clickIn(u"SSD"_s, u"Format"_s);
    case EditFileName:
        return simulated()->answer("PUT", u"/ssd/autosave/mode"_s, "1").status == 200 &&
               clickIn(u"SSD Autosave"_s, u"Edit file name"_s);
    case DeleteAllTakes:
        return click(u"File"_s) && offers(u"Delete All Takes..."_s) && click(u"Delete All Takes..."_s);
    case TakeLocked:
        simulated()->setTakeLocked(1, true);
        return waitForPolls(2) && clickIn(u"Take"_s, u"Delete..."_s);
    case DeleteTake:
        return clickIn(u"Take"_s, u"Delete..."_s);
    case NoPartition:
        simulated()->forceValue(u"acq/saved_takes"_s, QJsonArray{1, 2, 3, 4});
        return waitForPolls(2) && clickIn(u"Acquisition"_s, u"Record"_s);
    case NoSlot:
        simulated()->forceValue(u"acq/bref_state"_s, Camera::BrefFull);
        return waitForPolls(2) && clickIn(u"Acquisition"_s, u"Black Reference"_s);
    default:
        return openSave() != nullptr;
    }
}

QQuickWindow *DialogFixture::startWithDialog(int which)
{
    const QString title = QString::fromLatin1(design(which).title);
    if (!start(which) || !ask(which) || !QTest::qWaitFor([&] { return dialog(title) != nullptr; }))
        return nullptr;
    settle(dialog(title));
    return dialog(title);
}
