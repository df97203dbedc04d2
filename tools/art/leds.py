#!/usr/bin/python3
"""Draws the strip of lights: leds.py OUTPUT.bmp.

45 images of 15 x 15 pixels side by side, in the 16 standard colours, 4 bits a pixel, rows from the
bottom; cyan is clear. Five shapes (round, low bar with bevel, square with bevel, flat low bar, flat
upright bar), and of each red bright, red dark, green bright, and so on for yellow and blue, then grey.
"""

import math
import pathlib
import sys

from PIL import Image

from standard_colours import BLACK, BLUE, CYAN, GREEN, GREY, LIME, MAROON, NAVY, OLIVE, RED, SILVER, WHITE, YELLOW, bmp_of

SIZE = 15
# The tones of a lamp from its shade to its gleam.
LAMPS = []
for bright, dark in ((RED, MAROON), (LIME, GREEN), (YELLOW, OLIVE), (BLUE, NAVY)):
    LAMPS += [(dark, bright, WHITE), (BLACK, dark, SILVER)]
LAMPS.append((GREY, SILVER, WHITE))

# Which of two tones a pixel between them takes: thresholds for a square of two by two.
THRESHOLDS = ((.2, .7), (.95, .45))


def mixed(low, high, share, x, y):
    return high if share > THRESHOLDS[y % 2][x % 2] else low


def round_lamp(x, y, tones, lit):
    """A domed lens in a ring of metal, lit from the upper left."""
    shade, body, gleam = tones
    dx, dy = x - 7, y - 7
    distance = math.hypot(dx, dy)
    if distance > 7.3:
        return CYAN
    toward_light = -(dx + dy) / (math.sqrt(2) * max(distance, .1))
    if distance > 6.1:
        return GREY if toward_light > .5 else WHITE if toward_light < -.5 else SILVER
    if distance > 5.2:
        return BLACK if toward_light > -.3 or not lit else shade
    # The gleam of a window, and the light that the dome gathers at its far side.
    if lit and math.hypot(dx + 1.6, dy + 1.8) < 1.6 or not lit and (dx, dy) in ((-2, -2), (-1, -2), (-2, -1)):
        return gleam
    away = (dx + dy) / math.sqrt(2)
    if lit:
        gathered = math.hypot(dx - 2.2, dy - 2.2)
        if gathered < .8:
            return gleam
        return mixed(shade, body, 1.5 - max(0.0, distance - 3.4) / 1.6 if away > -1 else 1.6 - max(0.0, distance - 3.9) / 1.2, x, y)
    return mixed(shade, body, .95 + (away + 1.5) / 6, x, y)


def bevelled(x, y, tones, lit, left, top, right, bottom):
    """A window of glass in a sunken frame."""
    shade, body, gleam = tones
    if not (left <= x <= right and top <= y <= bottom):
        return CYAN
    if x == left or y == top:
        return GREY if (x, y) not in ((left, bottom), (right, top)) else SILVER
    if x == right or y == bottom:
        return WHITE
    if x == left + 1 or y == top + 1:
        return BLACK if not lit else shade
    if y == top + 2 and left + 2 < x < right - 1 - (right - left) // 3:
        return gleam if lit or tones[0] == GREY else body
    return body


def flat(x, y, tones, left, top, right, bottom):
    if not (left <= x <= right and top <= y <= bottom):
        return CYAN
    return tones[1] if left < x < right and top < y < bottom else tones[0]


def pixel(shape, lamp, x, y):
    tones, lit = LAMPS[lamp], lamp % 2 == 0
    if shape == 0:
        return round_lamp(x, y, tones, lit)
    if shape == 1:
        return bevelled(x, y, tones, lit, 0, 3, 14, 11)
    if shape == 2:
        return bevelled(x, y, tones, lit, 1, 1, 13, 13)
    if shape == 3:
        return flat(x, y, tones, 0, 5, 14, 9)
    return flat(x, y, tones, 5, 0, 9, 14)


def main():
    if len(sys.argv) != 2 or sys.argv[1].startswith("-"):
        sys.exit(__doc__)
    image = Image.new("P", (45 * SIZE, SIZE))
    for number in range(45):
        for y in range(SIZE):
            for x in range(SIZE):
                image.putpixel((number * SIZE + x, y), pixel(number // 9, number % 9, x, y))
    pathlib.Path(sys.argv[1]).write_bytes(bmp_of(image))


main()
