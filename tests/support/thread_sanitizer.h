#pragma once

/**
 * Prepares a process that is built with the thread sanitizer; does nothing in any other.
 *
 * Qt hands events over and waits for threads under locks of its own, which the sanitizer does not see because
 * the libraries are built without it, so that every queued signal would count as a race. It is told that what
 * a thread did before it emitted a signal or ended has happened before whatever a later event brings about,
 * or whoever waited for its end does, in another. What two threads do at the same time, without a signal in
 * between, is still seen. OpenCV stays on the thread that calls it, for the same reason.
 */
void prepareThreadSanitizer();
