#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <optional>

namespace q4sim
{

/// JSON kind that a value accepts in a write.
enum class Kind { Int, Double, Text, Time };

enum class Access { ReadOnly, Writable };

/// One leaf of the status document. Writes outside min to max are refused, except where the camera has a
/// rule of its own for the path (timing values are moved into their limits).
struct ValueRow {
    const char *path; ///< keys joined with "/"; "*" stands for any one key
    Kind kind;
    Access access;
    double min;
    double max;
};

/// Row of a path such as "acq/exp_clks"; none for a path that is no value.
std::optional<ValueRow> findValue(const QString &path);

/// Number of the take that a path such as "takes/take3" or "takes/take3/acq/corr_mode" is of; 0 for others.
int takeNumber(const QString &path);

/// The same of a recording that was opened, such as "ssd/takes/take3".
int openTakeNumber(const QString &path);

/// Value at a path of keys joined with "/"; Undefined when a step is missing.
QJsonValue valueAt(const QJsonObject &tree, const QString &path);

/// Puts a value, making the objects on the way. An Undefined value takes the key away.
void setValueAt(QJsonObject &tree, const QString &path, const QJsonValue &value);

} // namespace q4sim
