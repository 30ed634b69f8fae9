#pragma once

class PlaybackVeskObject;
class ViewFixture;

/** Ways in which somebody has the view of a recorded source in hand, for tests that take the source away. */
namespace PlaybackInHand
{
enum Use {
    Plays,
    PlayHeadDragged,
    MarkerDragged,
    SkipMenuOpen,
    ResetMenuOpen,
    ZoomMenuOpen,
    NumberTyped,
    SliderDragged,
    UseCount
};

/** Rows of the column "what", one for each use. */
void addUses();
/** True when the source that is selected is in use that way now. */
bool use(const ViewFixture &view, int what);
/** Lets the mouse and the keys go, as the user's hand would. */
void letGo(const ViewFixture &view);
} // namespace PlaybackInHand
