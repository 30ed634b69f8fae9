#pragma once

#include <QString>

class QSettings;

/** Folder of the program's own data, the log among it. */
QString appDataFolder();

/**
 * Starts the log: with the setting "vesk/log" above 0 every message goes to a fresh "log.txt" in the data
 * folder. Then writes what program, machine and settings this is.
 */
void initLog(const QSettings &settings);

/** Handler of signal 11: leaves a line in the log and lets the fault end the process. */
void segfaultHandler(int signal);
