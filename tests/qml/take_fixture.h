#pragma once

#include "tests/qml/view_fixture.h"

class Take;

/** The program's window with takes of a simulated camera. */
class TakeFixture : public ViewFixture
{
    Q_OBJECT

public:
    /** A camera with two takes, -20 to 29 and 0 to 99, whose tabs are there; null if that fails. */
    q4sim::Camera *startWithTakes(const q4sim::Config &config);
    q4sim::Camera *startWithTakes();
    /** Clicks the tab; the take, once its view has its values. */
    Take *openTake(int takeId) const;
    /** The tab of a take, null if there is none. */
    QQuickItem *tab(int takeId) const;
    /** Closes, forgets the panes, and gives the warnings: what a test ends with. */
    QStringList end();
};
