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
    QTest::newRow("plays") << int(Plays);
    QTest::newRow("plays slowly") << int(PlaysSlowly);
    QTest::newRow("is searched") << int(IsSearched);
    QTest::newRow("play head dragged") << int(PlayHeadDragged);
    QTest::newRow("marker dragged") << int(MarkerDragged);
    QTest::newRow("tab's menu open") << int(TabMenuOpen);
    QTest::newRow("skip menu open") << int(SkipMenuOpen);
    QTest::newRow("reset menu open") << int(ResetMenuOpen);
    QTest::newRow("zoom menu open") << int(ZoomMenuOpen);
    QTest::newRow("file menu open") << int(FileMenuOpen);
    QTest::newRow("list open") << int(ListOpen);
    QTest::newRow("question open") << int(QuestionOpen);
    QTest::newRow("number typed") << int(NumberTyped);
    QTest::newRow("slider dragged") << int(SliderDragged);
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

QPoint TakeInHand::onScrubber(double position) const
{
    const QRect bar = element(u"Frames"_s)->rect();
    return window()->mapFromGlobal(
        QPoint(bar.left() + 5 + qRound(position * (bar.width() - 11)), bar.bottom() - 8));
}

static bool appears(const ViewFixture &view, const QString &item)
{
    return QTest::qWaitFor([&] { return view.element(item, QAccessible::MenuItem) != nullptr; });
}

bool TakeInHand::use(int what) const
{
    QQuickWindow *shown = window();
    auto *take = qobject_cast<Take *>(VeskApp::instance()->selectedVeskObject());
    switch (what) {
    case Plays:
        return take->state() == PlaybackVeskObject::Play;
    case PlaysSlowly:
    case IsSearched:
        simulated()->setFault(q4sim::Route::Xfer, {.kind = q4sim::FaultKind::Delay, .ms = 200});
        if (what == IsSearched)
            take->imgSearch()->start(true);
        return QTest::qWaitFor([&] { return what == IsSearched || take->frameInFlight(); });
    case PlayHeadDragged:
    case MarkerDragged:
        QTest::mousePress(shown, Qt::LeftButton, {}, onScrubber(what == MarkerDragged ? 0.0 : 0.3));
        QTest::mouseMove(shown, onScrubber(0.5));
        return true;
    case TabMenuOpen:
        return click(u"Take 1"_s, Qt::RightButton) && appears(*this, u"Delete..."_s);
    case SkipMenuOpen:
        return click(u"Skip forward"_s) && appears(*this, u"Last Frame"_s);
    case ResetMenuOpen:
        return click(u"Start of the range here"_s, Qt::RightButton) && appears(*this, u"Reset"_s);
    case ZoomMenuOpen:
        return click(u"Picture"_s, Qt::RightButton);
    case FileMenuOpen:
        return click(u"File"_s) && appears(*this, u"Delete..."_s);
    case ListOpen:
        return openList(u"Take"_s, u"Black Ref Mode"_s) && appears(*this, u"Advanced"_s);
    case QuestionOpen:
        return clickIn(u"Take"_s, u"Delete..."_s) &&
               QTest::qWaitFor([this] { return dialog(u"VESK"_s) != nullptr; });
    case NumberTyped:
        if (!click(u"Frame"_s))
            return false;
        QTest::keyClick(shown, '4');
        return true;
    case SliderDragged: {
        QAccessibleInterface *slider = inSection(u"Image Adjustments"_s, u"Gain"_s, QAccessible::Slider);
        ViewFixture::reveal(slider);
        ViewFixture::settle(shown);
        const QPoint handle = ViewFixture::centre(shown, slider);
        QTest::mousePress(shown, Qt::LeftButton, {}, handle);
        QTest::mouseMove(shown, handle + QPoint(20, 0));
        return true;
    }
    default:
        return false;
    }
}

void TakeInHand::letGo() const
{
    QTest::mouseRelease(window(), Qt::LeftButton, {}, QPoint(640, 300));
    QTest::keyClick(window(), Qt::Key_Escape);
    ViewFixture::settle(window());
}
