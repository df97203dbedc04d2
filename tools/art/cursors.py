#!/usr/bin/python3
"""Draws the two mouse cursors: cursors.py DIRECTORY.

Writes move.png and hand.png, 32 x 32 pixels, black outline, white inside, clear outside, no shades:
they can be taken as a picture and a mask of one bit each. Their hot spots are printed.
"""

import pathlib
import sys

from PIL import Image

# The hand with '#' for black and '.' for white; its hot spot is the first '#' of the finger's tip.
HAND = """
      ##
     #..#
     #..#
     #..#
     #..#
     #..###
     #..#..###
     #..#..#..##
     #..#..#..#.#
 ### #..#..#..#..#
#...##........#..#
#....#...........#
 #...#...........#
  #..............#
  #..............#
   #.............#
   #............#
    #...........#
    #..........#
     #.........#
     #.........#
     ###########
"""
HAND_SPOT = (6, 0)
MOVE_SPOT = (15, 15)


def move_inside(x, y):
    """Whether the cross of four arrows is white at x, y from its centre."""
    along, across = max(abs(x), abs(y)), min(abs(x), abs(y))
    return across <= 11 - along if along >= 8 else across <= 1


def outlined(inside):
    """A 32 x 32 picture: white where `inside` holds (x, y), black on its neighbours."""
    image = Image.new("RGBA", (32, 32), (0, 0, 0, 0))
    for y in range(32):
        for x in range(32):
            if (x, y) in inside:
                image.putpixel((x, y), (255, 255, 255, 255))
            elif any((x + dx, y + dy) in inside for dx, dy in ((1, 0), (-1, 0), (0, 1), (0, -1))):
                image.putpixel((x, y), (0, 0, 0, 255))
    return image


def move_picture():
    cx, cy = MOVE_SPOT
    return outlined({(x, y) for y in range(32) for x in range(32) if move_inside(x - cx, y - cy)})


def hand_picture(left, top):
    image = Image.new("RGBA", (32, 32), (0, 0, 0, 0))
    colours = {"#": (0, 0, 0, 255), ".": (255, 255, 255, 255)}
    for y, line in enumerate(HAND.strip("\n").split("\n")):
        for x, mark in enumerate(line):
            if mark in colours:
                image.putpixel((left + x, top + y), colours[mark])
    return image


def main():
    if len(sys.argv) != 2 or sys.argv[1].startswith("-"):
        sys.exit(__doc__)
    folder = pathlib.Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    left, top = 6, 4
    move_picture().save(folder / "move.png")
    hand_picture(left, top).save(folder / "hand.png")
    print("move.png: hot spot", *MOVE_SPOT)
    print("hand.png: hot spot", HAND_SPOT[0] + left, HAND_SPOT[1] + top)


main()
