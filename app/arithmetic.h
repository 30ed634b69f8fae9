#pragma once

#include <QtNumeric>

#include <limits>

/** Equality of doubles that were computed or typed: alike to one part in 10^12, or both that near to 0. */
inline bool fuzzyEqual(double a, double b)
{
    return qFuzzyIsNull(a - b) || qFuzzyCompare(a, b);
}

/** A number without its fraction, and the nearer end of the 64-bit scale for one beyond it. */
inline qint64 wholePart(double value)
{
    constexpr double limit = 9223372036854775808.0; // 2^63, the first double that is too large
    if (!(value > -limit && value < limit))
        return value > 0 ? std::numeric_limits<qint64>::max() : std::numeric_limits<qint64>::min();
    return static_cast<qint64>(value);
}

/** The end of the 64-bit scale that lies in the direction of a sign. */
inline qint64 scaleEnd(bool negative)
{
    return negative ? std::numeric_limits<qint64>::min() : std::numeric_limits<qint64>::max();
}

/** Sum that stops at the ends of the 64-bit scale, where markers that nobody has set stand. */
inline qint64 saturatedSum(qint64 a, qint64 b)
{
    qint64 sum = 0;
    return qAddOverflow(a, b, &sum) ? scaleEnd(b < 0) : sum;
}

/** Product that stops at the ends of the 64-bit scale. */
inline qint64 saturatedProduct(qint64 a, qint64 b)
{
    qint64 product = 0;
    return qMulOverflow(a, b, &product) ? scaleEnd((a < 0) != (b < 0)) : product;
}
