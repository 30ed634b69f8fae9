#pragma once

#include "tests/qml/playback_in_hand.h"
#include "tests/qml/take_fixture.h"

/** A take that somebody has in hand in one of many ways, for tests that take it away. */
class TakeInHand : public TakeFixture
{
    Q_OBJECT

public:
    /** Beside those of every recorded source. */
    enum Use {
        PlaysSlowly = PlaybackInHand::UseCount,
        IsSearched,
        TabMenuOpen,
        FileMenuOpen,
        ListOpen,
        QuestionOpen
    };

    /** Column "what" with a row for each use. */
    static void addUses();

    /** A camera with take 1, -20 to 2000, shown, and take 2 beside it; the first, null if that fails. */
    Take *start();
    bool use(int what) const;
    /** Lets the mouse and the keys go, as the user's hand would. */
    void letGo() const { PlaybackInHand::letGo(*this); }
};
