#!/usr/bin/python3
"""Draws the lettering of the About box: about.py OUTPUT.bmp.

128 x 42 pixels in the 16 standard colours, 4 bits a pixel, rows from the bottom.
"""

import pathlib
import sys

from PIL import Image, ImageDraw, ImageFont

from standard_colours import BLACK, BLUE, GREEN, GREY, NAVY, OLIVE, SILVER, TEAL, WHITE, YELLOW, bmp_of

WIDTH, HEIGHT = 128, 42
FONT_FOLDER = "/usr/share/fonts/truetype/dejavu/"


def lettering(image, at, string, font_file, size, shades):
    """Text whose edges take the shades between the ground (first) and the ink (last)."""
    patch = Image.new("L", image.size, 0)
    ImageDraw.Draw(patch).text(at, string, font=ImageFont.truetype(FONT_FOLDER + font_file, size), fill=255, anchor="ls")
    for y in range(image.height):
        for x in range(image.width):
            level = patch.getpixel((x, y))
            if level > 40:
                image.putpixel((x, y), shades[min(len(shades) - 1, level * len(shades) // 256)])


def module(draw, x, y):
    """A module of 40 x 26 pixels, with its shadow."""
    draw.rectangle([x + 1, y + 2, x + 40, y + 27], fill=SILVER)
    draw.rectangle([x, y, x + 39, y + 25], fill=GREEN)
    draw.line([x, y, x + 39, y], fill=TEAL)
    for cx, cy in ((x, y), (x + 39, y), (x, y + 25), (x + 39, y + 25)):
        draw.point((cx, cy), fill=WHITE if (cx, cy) != (x + 39, y + 25) else SILVER)
    for hx, hy in ((x + 1, y + 1), (x + 37, y + 1), (x + 1, y + 23), (x + 37, y + 23)):
        draw.rectangle([hx, hy, hx + 1, hy + 1], fill=SILVER)
        draw.point((hx + 1, hy + 1), fill=GREY)
    draw.rectangle([x + 2, y + 5, x + 5, y + 20], fill=BLACK)
    for i in range(5):
        draw.point([(x + 3, y + 6 + i * 3), (x + 4, y + 6 + i * 3)], fill=YELLOW)
        draw.point([(x + 3, y + 7 + i * 3), (x + 4, y + 7 + i * 3)], fill=OLIVE)
    draw.rectangle([x + 8, y + 3, x + 37, y + 22], fill=BLACK)
    draw.line([x + 8, y + 3, x + 36, y + 3], fill=GREY)
    draw.line([x + 8, y + 3, x + 8, y + 21], fill=GREY)
    draw.rectangle([x + 10, y + 5, x + 35, y + 20], fill=BLUE)
    draw.line([x + 10, y + 5, x + 35, y + 5], fill=NAVY)
    draw.line([x + 10, y + 5, x + 10, y + 20], fill=NAVY)
    # What the glass says: a word, a bar, two keys.
    for i, row in enumerate(("#.#.##..", "#.#.#.#.", "###.#.#.", "#.#.#.#.", "#.#.##..")):
        for j, mark in enumerate(row):
            if mark == "#":
                draw.point((x + 13 + j, y + 7 + i), fill=WHITE)
    draw.rectangle([x + 23, y + 7, x + 33, y + 9], outline=WHITE)
    draw.line([x + 24, y + 8, x + 29, y + 8], fill=WHITE)
    draw.rectangle([x + 13, y + 14, x + 21, y + 18], outline=WHITE)
    draw.rectangle([x + 24, y + 14, x + 32, y + 18], fill=WHITE)
    draw.line([x + 26, y + 16, x + 30, y + 16], fill=BLUE)
    draw.line([x + 15, y + 16, x + 19, y + 16], fill=WHITE)


def main():
    if len(sys.argv) != 2 or sys.argv[1].startswith("-"):
        sys.exit(__doc__)
    image = Image.new("P", (WIDTH, HEIGHT), WHITE)
    draw = ImageDraw.Draw(image)
    draw.rectangle([0, 0, WIDTH - 1, HEIGHT - 1], outline=SILVER)
    module(draw, 5, 7)
    lettering(image, (52, 18), "HD", "DejaVuSans-Bold.ttf", 11, (WHITE, SILVER, GREY, BLACK))
    lettering(image, (51, 34), "Orvanel42", "DejaVuSansCondensed-Bold.ttf", 14, (WHITE, SILVER, GREY, NAVY))
    draw.line([74, 14, 121, 14], fill=NAVY)
    draw.line([74, 16, 121, 16], fill=SILVER)
    pathlib.Path(sys.argv[1]).write_bytes(bmp_of(image))


main()
