#pragma once

#include <QString>

/**
 * Text of a frame's time: UTC in ISO form with nine digits behind the seconds, such as
 * 2025-03-14T09:26:53.589793238Z. yearOffset and seconds add up to seconds since 1970; the nanoseconds are
 * those within the second. Empty when the time lies beyond what a date can hold.
 */
QString frameTimestamp(quint64 yearOffset, quint32 seconds, quint32 nanoseconds);
