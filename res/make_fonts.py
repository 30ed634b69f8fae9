#!/usr/bin/env python3
"""Makes the two fonts of the interface from the files that their projects publish.

    make_fonts.py --inter Inter_400Regular.ttf --remixicon remixicon.ttf [--out FOLDER]

Inter is taken as it is. To remixicon 4.2 four glyphs are added that the published font lacks, at code
points which it leaves free:

    U+F54D step back     U+F54E step forward
    U+F54F three chevrons down     U+F550 three chevrons up

Their outlines follow the font's own grid: 24 units to the em, strokes 2 units wide. Later versions of
the font put other pictures at these places, so the script refuses a font that has them already.
"""

import argparse
import pathlib
import shutil
import sys

from fontTools.pens.ttGlyphPen import TTGlyphPen
from fontTools.ttLib import TTFont

GRID = 24
FAMILY = "remixicon"
NAME_FAMILY = 1
NAME_DESCRIPTION = 10

# Contours on the 24-unit grid, y downwards. Outer contours of a TrueType glyph run clockwise as seen.
STEP_TRIANGLE = [[(8.5, 4.7), (19.5, 12), (8.5, 19.3)]]
STEP_BAR = [[(4.5, 4), (6.5, 4), (6.5, 20), (4.5, 20)]]
STEP_FORWARD = STEP_BAR + STEP_TRIANGLE

CHEVRON_HALF_WIDTH = 6.364
CHEVRON_DROP = 4.950  # from the inner corner of an arm to the inner corner of the point
CHEVRON_ARM = 1.414  # a stroke of 2 units at 45 degrees, seen along an axis
CHEVRON_PITCH = 5.0


def chevron(top):
    """One chevron that points down; `top` is the upper end of its arms."""
    left, right = 12 - CHEVRON_HALF_WIDTH, 12 + CHEVRON_HALF_WIDTH
    return [
        (left + CHEVRON_ARM, top),
        (12, top + CHEVRON_DROP),
        (right - CHEVRON_ARM, top),
        (right, top + CHEVRON_ARM),
        (12, top + CHEVRON_ARM + CHEVRON_HALF_WIDTH),
        (left, top + CHEVRON_ARM),
    ]


def chevrons_down():
    """Three chevrons, one above the other, centred on the grid."""
    height = 2 * CHEVRON_PITCH + CHEVRON_ARM + CHEVRON_HALF_WIDTH
    first = (GRID - height) / 2
    return [chevron(first + n * CHEVRON_PITCH) for n in range(3)]


def mirrored(contours, horizontally):
    """The contours flipped about the middle of the grid; reversed, so that they stay clockwise."""
    def flip(x, y):
        return (GRID - x, y) if horizontally else (x, GRID - y)

    return [[flip(x, y) for x, y in reversed(contour)] for contour in contours]


GLYPHS = [
    (0xF54D, "step-back-fill", mirrored(STEP_FORWARD, horizontally=True)),
    (0xF54E, "step-forward-fill", STEP_FORWARD),
    (0xF54F, "arrow-down-triple-line", chevrons_down()),
    (0xF550, "arrow-up-triple-line", mirrored(chevrons_down(), horizontally=False)),
]


def outline(contours, units_per_em, ascent):
    """A glyph of filled polygons; the grid's upper edge lies on the ascent of the font."""
    scale = units_per_em / GRID
    pen = TTGlyphPen(None)
    for contour in contours:
        points = [(round(x * scale), round(ascent - y * scale)) for x, y in contour]
        pen.moveTo(points[0])
        for point in points[1:]:
            pen.lineTo(point)
        pen.closePath()
    return pen.glyph()


def stand_in_their_places(font):
    """Lets every glyph be drawn where its outline lies.

    The font gives most glyphs a left side bearing of 0 although they begin further right; a renderer then
    draws them that much too far left, and none of them stands in the middle of its square.
    """
    glyphs, metrics = font["glyf"], font["hmtx"]
    for name in font.getGlyphOrder():
        glyph = glyphs[name]
        if glyph.numberOfContours != 0:
            glyph.recalcBounds(glyphs)  # the bounds in the file are 0, too
            metrics[name] = (metrics[name][0], glyph.xMin)


def add_glyphs(font):
    """Adds the four glyphs; an error text when the font has something at their places."""
    taken = [f"U+{code:04X}" for code, _, _ in GLYPHS if code in font.getBestCmap()]
    if taken:
        return "the font already has a glyph at " + ", ".join(taken)
    if font["name"].getDebugName(NAME_FAMILY) != FAMILY:
        return f'the family of the font is not "{FAMILY}"'

    em, ascent = font["head"].unitsPerEm, font["hhea"].ascent
    order = font.getGlyphOrder()
    for code, name, contours in GLYPHS:
        glyph = outline(contours, em, ascent)
        font["glyf"][name] = glyph
        glyph.recalcBounds(font["glyf"])
        font["hmtx"][name] = (em, glyph.xMin)
        for table in font["cmap"].tables:
            if table.isUnicode():
                table.cmap[code] = name
    font.setGlyphOrder(order)
    stand_in_their_places(font)
    note = " Changed for Vesk: the glyphs U+F54D to U+F550 are added, and every glyph stands in the middle" \
        " of its square."
    names = font["name"]
    for record in [r for r in names.names if r.nameID == NAME_DESCRIPTION]:
        names.setName(str(record) + note, NAME_DESCRIPTION, record.platformID, record.platEncID, record.langID)
    return None


def main():
    parser = argparse.ArgumentParser(description="Makes the fonts of the interface.")
    parser.add_argument("--inter", required=True, type=pathlib.Path, help="Inter, Regular, as .ttf")
    parser.add_argument("--remixicon", required=True, type=pathlib.Path, help="remixicon 4.2, .ttf")
    parser.add_argument("--out", type=pathlib.Path, default=pathlib.Path(__file__).parent,
                        help="folder for the results (default: the folder of this script)")
    args = parser.parse_args()

    # The file keeps the date it was published with, so that the same input gives the same bytes.
    font = TTFont(args.remixicon, recalcTimestamp=False)
    error = add_glyphs(font)
    if error:
        sys.exit(f"make_fonts.py: {args.remixicon}: {error}")
    font.save(args.out / "remixicon.ttf")
    shutil.copyfile(args.inter, args.out / "Inter-Regular.ttf")


if __name__ == "__main__":
    main()
