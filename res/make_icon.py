#!/usr/bin/env python3
"""Draws the icon of the application: an aperture of six blades with a bright opening.

    make_icon.py [ORKAM.png]

Every pixel is the mean of SAMPLES x SAMPLES points of a picture that is given by formula, in units of
the icon's half width: the middle is (0, 0), the edges lie at -1 and 1.
"""

import math
import pathlib
import struct
import sys
import zlib

SIZE = 256
SAMPLES = 4
BLADES = 6
RIM = 0.94
BLADE_RADIUS = 0.80
OPENING = 0.34  # distance of the opening's sides from the middle
GAP = 0.016  # half width of the line between two blades

CLEAR = (0, 0, 0, 0)
RIM_COLOUR = (38, 44, 54, 255)
GAP_COLOUR = (24, 28, 35, 255)
DOT_COLOUR = (222, 52, 44, 255)
DOT_RADIUS = 0.11

NORMALS = [(math.cos(a), math.sin(a)) for a in (2 * math.pi * (k + 0.25) / BLADES for k in range(BLADES))]


def opening_colour(x, y):
    light = 0.5 - 0.5 * (x + y) / (2 * OPENING)
    return (int(120 + 90 * light), int(190 + 50 * light), 255, 255)


def blade_colour(k, distance):
    shade = 0.62 + 0.30 * math.cos(2 * math.pi * (k + 2.0) / BLADES) + 0.10 * distance
    return (int(128 * shade), int(146 * shade), int(172 * shade), 255)


def colour(x, y):
    """The colour at a point, with straight alpha."""
    radius = math.hypot(x, y)
    if radius > RIM:
        return CLEAR
    if radius > BLADE_RADIUS:
        return RIM_COLOUR
    if radius < DOT_RADIUS:
        return DOT_COLOUR
    beyond = [x * nx + y * ny - OPENING for nx, ny in NORMALS]
    if max(beyond) < -GAP:
        return opening_colour(x, y)
    if max(beyond) < GAP:
        return GAP_COLOUR
    # A point outside the opening lies beyond a run of neighbouring sides; the last one is its blade.
    k = next(i for i in range(BLADES) if beyond[i] > GAP and beyond[(i + 1) % BLADES] <= GAP)
    if abs(beyond[(k + 1) % BLADES]) < GAP:
        return GAP_COLOUR
    return blade_colour(k, radius)


def pixel(column, row):
    """The mean colour of one pixel; colours count by their alpha, so that the rim has no dark seam."""
    total = [0, 0, 0, 0]
    for j in range(SAMPLES):
        for i in range(SAMPLES):
            x = 2 * (column + (i + 0.5) / SAMPLES) / SIZE - 1
            y = 2 * (row + (j + 0.5) / SAMPLES) / SIZE - 1
            r, g, b, a = colour(x, y)
            for n, value in enumerate((r * a, g * a, b * a, a)):
                total[n] += value
    alpha = total[3]
    if alpha == 0:
        return bytes(4)
    return bytes([total[0] // alpha, total[1] // alpha, total[2] // alpha, alpha // SAMPLES**2])


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def png():
    """The picture as a PNG file: 8 bits a channel, RGBA, every row with filter 0."""
    rows = b"".join(b"\0" + b"".join(pixel(x, y) for x in range(SIZE)) for y in range(SIZE))
    header = struct.pack(">IIBBBBB", SIZE, SIZE, 8, 6, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows, 9))
            + chunk(b"IEND", b""))


def main():
    target = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).parent / "ORKAM.png"
    target.write_bytes(png())


if __name__ == "__main__":
    main()
