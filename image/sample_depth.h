#pragma once

#include <QtTypes>

/** A sample of 16 bits at 8: v / 257 to nearest, in arithmetic that never leaves 16 bits. */
constexpr uchar to8Bits(quint16 sample)
{
    return uchar(quint16(sample - (sample >> 8) + 127 + (sample >> 15)) >> 8);
}
