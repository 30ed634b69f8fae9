#include "tests/qml/playback_in_hand.h"

#include "app/vesk_app.h"
#include "take/playback_vesk_object.h"
#include "tests/qml/view_fixture.h"

#include <QQuickWindow>
#include <QTest>

using namespace Qt::StringLiterals;

void PlaybackInHand::addUses()
{
    QTest::newRow("plays") << int(Plays);
    QTest::newRow("play head dragged") << int(PlayHeadDragged);
    QTest::newRow("marker dragged") << int(MarkerDragged);
    QTest::newRow("skip menu open") << int(SkipMenuOpen);
    QTest::newRow("reset menu open") << int(ResetMenuOpen);
    QTest::newRow("zoom menu open") << int(ZoomMenuOpen);
    QTest::newRow("number typed") << int(NumberTyped);
    QTest::newRow("slider dragged") << int(SliderDragged);
}

static QPoint onScrubber(const ViewFixture &view, double position)
{
    const QRect bar = view.element(u"Frames"_s)->rect();
    return view.window()->mapFromGlobal(
        QPoint(bar.left() + 5 + qRound(position * (bar.width() - 11)), bar.bottom() - 8));
}

static bool dragOnScrubber(const ViewFixture &view, double from)
{
    QTest::mousePress(view.window(), Qt::LeftButton, {}, onScrubber(view, from));
    QTest::mouseMove(view.window(), onScrubber(view, 0.5));
    return true;
}

static bool dragSlider(const ViewFixture &view)
{
    QAccessibleInterface *slider = view.inSection(u"Image Adjustments"_s, u"Gain"_s, QAccessible::Slider);
    if (!slider)
        return false;
    ViewFixture::reveal(slider);
    ViewFixture::settle(view.window());
    const QPoint handle = ViewFixture::centre(view.window(), slider);
    QTest::mousePress(view.window(), Qt::LeftButton, {}, handle);
    QTest::mouseMove(view.window(), handle + QPoint(20, 0));
    return true;
}

bool PlaybackInHand::use(const ViewFixture &view, int what)
{
    switch (what) {
    case Plays: {
        const auto *source = qobject_cast<PlaybackVeskObject *>(VeskApp::instance()->selectedVeskObject());
        return source && source->state() == PlaybackVeskObject::Play;
    }
    case PlayHeadDragged:
        return dragOnScrubber(view, 0.3);
    case MarkerDragged:
        return dragOnScrubber(view, 0.0);
    case SkipMenuOpen:
        return view.click(u"Skip forward"_s) && view.offers(u"Last Frame"_s);
    case ResetMenuOpen:
        return view.click(u"Start of the range here"_s, Qt::RightButton) && view.offers(u"Reset"_s);
    case ZoomMenuOpen:
        return view.click(u"Picture"_s, Qt::RightButton);
    case NumberTyped:
        if (!view.click(u"Frame"_s))
            return false;
        QTest::keyClick(view.window(), '4');
        return true;
    case SliderDragged:
        return dragSlider(view);
    default:
        return false;
    }
}

void PlaybackInHand::letGo(const ViewFixture &view)
{
    QTest::mouseRelease(view.window(), Qt::LeftButton, {}, QPoint(640, 300));
    QTest::keyClick(view.window(), Qt::Key_Escape);
    ViewFixture::settle(view.window());
}
