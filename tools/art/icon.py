#!/usr/bin/python3
"""Draws the program's icon: icon.py DIRECTORY.

Writes orvanel42.svg and a PNG of each usual size. All lines lie on a grid of 16, so that each size
that is a multiple of 16 is crisp; 24 has a grid of its own. Small sizes leave details away.
"""

import pathlib
import subprocess
import sys

# The dots of "42".
DIGITS = ["#.#.###", "#.#...#", "###.###", "..#.#..", "..#.###"]

# Board, bezel, glass as x, y, width, height; one dot; the first dot; pins as x, first y, step, count.
GRID_16 = dict(size=16, board=(0, 2, 16, 12), bezel=(3, 3, 11, 10), glass=(4, 4, 9, 8), dot=1, first=(5, 5.5), pins=(1, 5, 2, 4),
               holes=[(1, 3), (15, 3), (1, 13), (15, 13)])
SNAPPED_16 = dict(GRID_16, first=(5, 5))
GRID_24 = dict(size=24, board=(0, 3, 24, 18), bezel=(4, 4, 18, 16), glass=(5, 5, 16, 14), dot=2, first=(6, 7), pins=(1, 8, 3, 4),
               holes=[(1.5, 4.5), (22.5, 4.5), (1.5, 19.5), (22.5, 19.5)])


def rect(x, y, width, height, radius, fill, more=""):
    return f'<rect x="{x:g}" y="{y:g}" width="{width:g}" height="{height:g}" rx="{radius:g}" fill="{fill}" {more}/>'


def gradient(name, *stops, across=False):
    end = 'x2="1" y2="1"' if across else 'x2="0" y2="1"'
    inner = "".join(f'<stop offset="{at}" stop-color="{colour}"/>' for at, colour in stops)
    return f'<linearGradient id="{name}" x1="0" y1="0" {end}>{inner}</linearGradient>'


def picture(grid, fine):
    """The icon as SVG; `fine` adds what needs three pixels for each line of the grid."""
    size = grid["size"]
    board, bezel, glass = grid["board"], grid["bezel"], grid["glass"]
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {size} {size}" width="256" height="256">', "<defs>",
             gradient("board", (0, "#2f9a56"), (.5, "#1c7a41"), (1, "#0f5a2d")),
             gradient("bezel", (0, "#4a4d52"), (.12, "#26282b"), (1, "#121315")),
             gradient("glass", (0, "#4f7dff"), (.45, "#2a4dfa"), (1, "#1426d6"), across=True),
             gradient("pin", (0, "#ffe9a0"), (1, "#c8922a"), across=True),
             '<radialGradient id="shade"><stop offset="0" stop-color="#000" stop-opacity=".45"/>'
             '<stop offset="1" stop-color="#000" stop-opacity="0"/></radialGradient>', "</defs>"]
    if fine:
        parts.append(f'<ellipse cx="8" cy="14.2" rx="8" ry="1.1" fill="url(#shade)"/>')
    x, y, width, height = board
    parts.append(rect(x, y, width, height, 1, "url(#board)"))
    if fine:
        parts.append(rect(x + .06, y + .06, width - .12, height - .12, .94, "none", 'stroke="#8fe0a8" stroke-opacity=".45" stroke-width=".12"'))
        for hx, hy in [(.95, 2.95), (15.05, 2.95), (.95, 13.05), (15.05, 13.05)]:
            parts.append(f'<circle cx="{hx}" cy="{hy}" r=".52" fill="#d9d4bf"/><circle cx="{hx}" cy="{hy}" r=".30" fill="#0b2415"/>')
        for i in range(5):
            parts.append(f'<path d="M1.9 {5.0 + i * .9:g}h.5l.3 .3h.4" fill="none" stroke="#0d4f28" stroke-width=".14"/>')
    x, y, width, height = bezel
    if fine:
        parts.append(rect(x - .1, y + .15, width + .35, height + .25, .7, "#06200f", 'fill-opacity=".55"'))
    parts.append(rect(x, y, width, height, .55 if fine else 0, "url(#bezel)" if fine else "#17181b"))
    if fine:
        parts.append(rect(x + .05, y + .05, width - .1, height - .1, .5, "none", 'stroke="#8b9098" stroke-opacity=".55" stroke-width=".1"'))
    x, y, width, height = glass
    parts.append(rect(x, y, width, height, .15 if fine else 0, "url(#glass)"))
    if fine:
        parts.append(rect(x, y, width, .22, 0, "#000a50", 'fill-opacity=".55"'))
        parts.append(rect(x, y, .16, height, 0, "#000a50", 'fill-opacity=".35"'))
    dot, (dx, dy) = grid["dot"], grid["first"]
    gap = dot * .07 if fine else 0
    for row, line in enumerate(DIGITS):
        for column, on in enumerate(line):
            if on == "#":
                parts.append(rect(dx + column * dot + gap, dy + row * dot + gap, dot - 2 * gap, dot - 2 * gap, 0, "#ffffff"))
    if fine:
        parts.append(f'<path d="M{x:g} {y:g}h{width * .62:g}l-{width * .42:g} {height:g}h-{width * .2:g}z" fill="#fff" fill-opacity=".10"/>')
    px, py, step, count = grid["pins"]
    for i in range(count):
        if fine:
            parts.append(rect(px - .45, py - .5 + i * step, 1.5, 2, .1, "#15161a"))
            for j in range(2):
                for k in range(2):
                    parts.append(rect(px - .2 + k * .62, py - .25 + i * step + j, .38, .5, .06, "url(#pin)"))
        else:
            parts.append(rect(px, py + i * step, 1, 1, 0, "#ffd257"))
    parts.append("</svg>")
    return "\n".join(parts) + "\n"


def main():
    if len(sys.argv) != 2 or sys.argv[1].startswith("-"):
        sys.exit(__doc__)
    folder = pathlib.Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    whole = picture(GRID_16, True)
    (folder / "orvanel42.svg").write_text(whole)
    for size in (16, 24, 32, 48, 64, 128, 256):
        source = picture(GRID_24, False) if size == 24 else picture(SNAPPED_16, False) if size == 16 else picture(GRID_16, size >= 48)
        subprocess.run(["rsvg-convert", "-w", str(size), "-h", str(size), "-o", folder / f"orvanel42-{size}.png"], input=source.encode(), check=True)


main()
