#include "tests/qml/take_fixture.h"

#include "app/vesk_app.h"
#include "camera/camera.h"
#include "sim/camera.h"
#include "sim/footage.h"
#include "take/saved_take_model.h"
#include "take/take.h"

#include <QQuickItem>
#include <QTest>

using namespace Qt::StringLiterals;

q4sim::Camera *TakeFixture::startWithTakes(const q4sim::Config &config)
{
    q4sim::Camera *simulated = startWithCamera(config);
    if (!simulated || simulated->makeTake({.first = -20, .last = 29}) != 1 ||
        simulated->makeTake({.first = 0, .last = 99}) != 2)
        return nullptr;
    const bool shown = QTest::qWaitFor([this] { return camera()->savedTakes()->count() == 2; });
    return shown ? simulated : nullptr;
}

q4sim::Camera *TakeFixture::startWithTakes()
{
    return startWithTakes({});
}

QQuickItem *TakeFixture::tab(int takeId) const
{
    QAccessibleInterface *found = element(u"Take %1"_s.arg(takeId), QAccessible::PageTab);
    return found ? qobject_cast<QQuickItem *>(found->object()) : nullptr;
}

Take *TakeFixture::openTake(int takeId) const
{
    if (!QTest::qWaitFor([&] { return tab(takeId) != nullptr; }) || !click(u"Take %1"_s.arg(takeId)))
        return nullptr;
    auto *take = qobject_cast<Take *>(VeskApp::instance()->selectedVeskObject());
    return take && QTest::qWaitFor([take] { return take->valuesInit(); }) ? take : nullptr;
}

QStringList TakeFixture::end()
{
    const QStringList warnings = ViewFixture::end();
    VeskApp::instance()->settings()->remove(u"playback"_s);
    return warnings;
}
