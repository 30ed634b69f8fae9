#pragma once

#include <QSettings>

/**
 * The settings format of the program: one JSON object in a file with the extension "json". Each section of a
 * key but the last is a nested object, so that a/b/c = 1 stands as {"a": {"b": {"c": 1}}}.
 */
QSettings::Format jsonSettingsFormat();

/** Fills map with the keys of a JSON document; false, with nothing filled in, when it does not parse. */
bool readJsonSettings(QIODevice &device, QSettings::SettingsMap &map);
/** Writes map as one indented JSON object; false when the device takes less than all of it. */
bool writeJsonSettings(QIODevice &device, const QSettings::SettingsMap &map);
