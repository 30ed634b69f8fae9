#pragma once

#include "sim/config.h"

#include <QCommandLineParser>
#include <QList>

namespace q4sim
{

/// Adds the program's options to a parser.
void addOptions(QCommandLineParser &parser);

/// One configuration for each address of a parsed command line. Sets `error` to one sentence when an option
/// makes no sense; the list is empty then.
QList<Config> readOptions(const QCommandLineParser &parser, QString *error);

} // namespace q4sim
