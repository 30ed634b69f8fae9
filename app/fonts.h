#pragma once

class VeskApp;

/** Sets the application font, Inter at 9 point, and loads the icon font; a missing font is a log line. */
void initFonts(VeskApp &app);
