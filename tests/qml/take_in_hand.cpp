#include "tests/qml/take_in_hand.h"

#include "app/vesk_app.h"
#include "camera/camera.h"
#include "image/img_search.h"
#include "sim/camera.h"
#include "sim/fault.h"
#include "sim/footage.h"
#include "take/saved_take_model.h"
#include "take/take.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

using namespace Qt::StringLiterals;

void TakeInHand::addUses()
{
    QTest::addColumn<int>("what");
    PlaybackInHand::addUses();
    QTest::newRow("plays slowly") << int(PlaysSlowly);
    QTest::newRow("is searched") << int(IsSearched);
    QTest::newRow("tab's menu open") << int(TabMenuOpen);
    QTest::newRow("file menu open") << int(FileMenuOpen);
    QTest::newRow("list open") << int(ListOpen);
    QTest::newRow("question open") << int(QuestionOpen);
}

Take *TakeInHand::start()
{
    q4sim::Camera *there = startWithCamera();
    if (!there || there->makeTake({.first = -20, .last = 2000}) != 1 ||
        there->makeTake({.first = 0, .last = 9}) != 2)
        return nullptr;
    Take *take = openTake(1);
    const bool shown = take && QTest::qWaitFor([take] { return !take->imgFrame()->image().isNull(); });
    settle(window());
    return shown ? take : nullptr;
}

bool TakeInHand::use(int what) const
{
    auto *take = qobject_cast<Take *>(VeskApp::instance()->selectedVeskObject());
    switch (what) {
    case PlaysSlowly:
    case IsSearched:
        simulated()->setFault(q4sim::Route::Xfer, {.kind = q4sim::FaultKind::Delay, .ms = 200});
        if (what == IsSearched)
            take->imgSearch()->start(true);
        return QTest::qWaitFor([&] { return what == IsSearched || take->frameInFlight(); });
    case TabMenuOpen:
        return click(u"Take 1"_s, Qt::RightButton) && offers(u"Delete..."_s);
    case FileMenuOpen:
        return click(u"File"_s) && offers(u"Delete..."_s);
    case ListOpen:
        return openList(u"Take"_s, u"Black Ref Mode"_s) && offers(u"Advanced"_s);
    case QuestionOpen:
        return clickIn(u"Take"_s, u"Delete..."_s) &&
               QTest::qWaitFor([this] { return dialog(u"VESK"_s) != nullptr; });
    default:
        return PlaybackInHand::use(*this, what);
    }
}
