#!/usr/bin/python3
"""Draws what lies flat on the board and on its parts: textures.py DIRECTORY.

Writes board.png (colours), metal.png (white where the solder mask is open), relief.png (heights),
and the prints on the parts. Eight pixels here are one of the finished picture.
"""

import math
import pathlib
import random
import sys

import numpy as np
from PIL import Image, ImageChops, ImageDraw, ImageFilter, ImageFont

import board

SCALE = 8
SIZE = (board.WIDTH * SCALE, board.HEIGHT * SCALE)
FONT_FOLDER = "/usr/share/fonts/truetype/dejavu/"
REGULAR, BOLD = FONT_FOLDER + "DejaVuSans.ttf", FONT_FOLDER + "DejaVuSans-Bold.ttf"

CLEARANCE = 1.25  # laminate left free around each trace


def layer(value=0):
    return Image.new("L", SIZE, value)


def scaled(values):
    return [v * SCALE for v in values]


def line(image, points, width, value=255):
    """A trace with round joints and ends."""
    draw = ImageDraw.Draw(image)
    flat = [(x * SCALE, y * SCALE) for x, y in points]
    draw.line(flat, fill=value, width=max(1, round(width * SCALE)), joint="curve")
    r = width * SCALE / 2
    for x, y in (flat[0], flat[-1]):
        draw.ellipse([x - r, y - r, x + r, y + r], fill=value)


def disc(image, x, y, radius, value=255):
    ImageDraw.Draw(image).ellipse(scaled([x - radius, y - radius, x + radius, y + radius]), fill=value)


def box(image, x, y, half_width, half_height, round_by=0.4, value=255):
    ImageDraw.Draw(image).rounded_rectangle(
        scaled([x - half_width, y - half_height, x + half_width, y + half_height]), round_by * SCALE, fill=value)


def text(image, string, x, y, capital, bold=False, turn=0, stroke=0.0):
    """Print with capitals of the given height, centred on x, y by the capitals."""
    size = round(capital * SCALE / 0.729)
    font = ImageFont.truetype(BOLD if bold else REGULAR, size)
    width = font.getlength(string)
    patch = Image.new("L", (int(width) + 4 * SCALE, 2 * size), 0)
    base = int(size * 1.3)
    ImageDraw.Draw(patch).text((2 * SCALE, base), string, font=font, fill=255, anchor="ls",
                               stroke_width=round(stroke * SCALE))
    middle = base - capital * SCALE / 2
    if turn:
        patch = patch.rotate(-turn, resample=Image.BICUBIC, center=(patch.width / 2, middle))
    at = (round(x * SCALE - patch.width / 2), round(y * SCALE - middle))
    area = (at[0], at[1], at[0] + patch.width, at[1] + patch.height)
    image.paste(ImageChops.lighter(image.crop(area), patch), at)


def turned(x, y, dx, dy, turn):
    a = math.radians(turn)
    return x + dx * math.cos(a) - dy * math.sin(a), y + dx * math.sin(a) + dy * math.cos(a)


# Half the distance of the two pads, and the pads' half sizes.
CHIP_PADS = {"r0603": (3.4, 1.9, 2.1), "c0603": (3.4, 1.9, 2.1), "led0603": (3.6, 2.0, 2.1), "tantal": (7.0, 2.9, 4.2)}


def pads_of_part(kind, x, y, turn):
    """(x, y, half width, half height) of each pad of a part."""
    pads = []
    if kind in CHIP_PADS:
        apart, half_width, half_height = CHIP_PADS[kind]
        pads = [(-apart, 0, half_width, half_height), (apart, 0, half_width, half_height)]
    elif kind == "so8":
        pads = [(side * 11.6, -8.4 + 5.6 * i, 3.0, 1.5) for side in (-1, 1) for i in range(4)]
    elif kind == "sot23":
        pads = [(-4.2, -4.2, 2.4, 1.9), (-4.2, 4.2, 2.4, 1.9), (4.2, 0, 2.4, 1.9)]
    elif kind == "elcap":
        pads = [(-12.0, 0, 4.6, 2.2), (12.0, 0, 4.6, 2.2)]
    placed = []
    for dx, dy, half_width, half_height in pads:
        px, py = turned(x, y, dx, dy, turn)
        if turn % 180:
            half_width, half_height = half_height, half_width
        placed.append((px, py, half_width, half_height))
    return placed


def header_pins():
    header = board.HEADER
    top = header["y"] - (header["rows"] - 1) / 2 * header["pitch"]
    return [(header["x"] + side * header["pitch"] / 2, top + i * header["pitch"], side)
            for i in range(header["rows"]) for side in (-1, 1)]


def jog(start, rise_at, end_y, end_x):
    """A level trace that changes its height by a slope of 45 degrees at rise_at."""
    x, y = start
    step = abs(end_y - y)
    toward = 1 if end_x > x else -1
    return [(x, y), (rise_at, y), (rise_at + toward * step, end_y), (end_x, end_y)]


def traces_and_vias():
    """The lists of (points, width) and of (x, y, radius) that make the wiring that shows."""
    rng = random.Random(42)
    traces, vias = [], []
    blocked = [(y - 5.0, y + 5.0) for _, _, x, y, _, _ in board.PARTS if 40 < x < 50]
    for x, y, side in header_pins():
        level = y if side > 0 else y + board.HEADER["pitch"] / 2
        if side < 0:
            traces.append(([(x, y), (x + 5.65, level), (37, level)], 1.1))
        else:
            traces.append(([(x, y), (37, level)], 1.1))
        near = [p for p in board.PARTS if 40 < p[2] < 50 and abs(p[3] - level) < 5.0]
        if near:
            reach = near[0][3]
            if abs(reach - level) < 3.6:
                traces.append((jog((37, level), 37.2, reach, 41.5), 1.1))
                traces.append(([(49, reach), (62, reach)], 1.1))
            else:
                vias.append((37.6, level, 1.7))
        elif not any(low < level < high for low, high in blocked):
            end = level + rng.choice([-2.0, 0, 0, 2.0])
            traces.append((jog((37, level), rng.uniform(39, 46), end, 64), 1.1))
    # Supply: wide, along the left edge and to the trimmer.
    traces += [([(5.2, 33), (5.2, 190), (8, 194), (8, 210), (10, 214)], 2.4),
               ([(12, 36), (7.4, 31.5), (7.4, 24)], 1.6),
               ([(36, 37.1), (41, 37.1), (43.5, 39.4), (46, 39.4)], 1.3),
               ([(36, 42.7), (52, 42.7), (56, 38.7), (64, 38.7)], 1.1),
               ([(36, 48.3), (42.5, 48.3), (46, 51.6)], 1.1),
               ([(36, 53.9), (38, 55.9), (38, 60), (41, 63), (41, 66.5)], 1.1),
               ([(46, 32.6), (46, 30.6), (51, 25.6), (64, 25.6)], 1.3),
               ([(46, 58.4), (52.5, 62), (64, 62)], 1.1),
               ([(12, 37.1), (8.8, 40.3), (8.8, 62), (12, 65.2), (25.6, 65.2), (28.5, 62.3), (28.5, 60)], 1.1),
               ([(12, 42.7), (10.6, 44.1), (10.6, 60.6), (13.4, 63.4)], 1.1),
               ([(44, 179), (52, 171), (64, 171)], 2.0), ([(44, 193), (44, 199), (50, 205), (64, 205)], 2.0),
               ([(45.6, 219.4), (45.6, 232.6)], 1.1), ([(45.6, 226), (38, 226)], 1.1),
               ([(45.6, 239.4), (52, 245.8), (52, 252), (57, 257), (64, 257)], 1.1),
               ([(45.6, 212.6), (50, 208.2), (64, 208.2)], 1.1),
               ([(22, 244), (22, 254.5), (27, 259.5), (64, 259.5)], 1.1),
               ([(12, 222), (6.6, 227.4), (6.6, 270), (12.5, 276), (12.5, 280.6)], 1.3),
               ([(12.5, 287.4), (12.5, 290), (19, 296.5), (64, 296.5)], 1.3),
               ([(12.5, 280.6), (17, 276), (24, 276)], 2.0), ([(49, 276), (64, 276)], 2.0),
               ([(22, 300), (52, 300), (56, 304), (64, 304)], 1.1), ([(24, 302.6), (50, 302.6), (54, 306.6), (64, 306.6)], 1.1)]
    vias += [(38.2, 200, 1.7), (41, 67.6, 1.7), (13.6, 64.2, 1.7), (21.6, 299.6, 1.7), (23.6, 303.6, 1.7), (53, 42.7, 1.7),
             (51.5, 150.5, 1.7), (54, 127, 1.7), (51.6, 191, 1.7), (36, 216, 1.7), (38, 222, 1.7), (34, 262, 1.7), (53, 268, 1.7), (26, 305, 1.7)]
    # The upper rim: a bundle of level traces, stepping aside one after another.
    for i in range(5):
        y = 12.4 + i * 2.3
        start, end = 236 - i * 5.5, 344 + i * 6
        traces.append(([(150 + i * 14, y + 9), (159 + i * 14, y), (start + 210, y), (start + 216, y + 6)], 1.1))
        vias.append((158 + i * 14 - 4, y + 1.0, 1.5)) if i < 2 else None
    for i in range(4):
        y = 3.2 + i * 2.3
        traces.append(([(536 - i * 9, 22), (536 - i * 9, y + 7 + i), (543 - i * 9 - 2 * i, y), (552 + i, y)], 1.1))
    for px in (416.6, 452.6, 504.4):
        traces.append(([(px, 9.6), (px - 3.5, 13.1), (px - 3.5, 22)], 1.1))
    for px in (423.4, 459.4, 511.6):
        traces.append(([(px, 9.6), (px, 6.5), (px + 3.0, 3.5)], 1.3))
        vias.append((px + 3.4, 3.2, 1.7))
    traces += [([(64, 16.2), (176, 16.2), (182, 22)], 1.1), ([(104, 22), (111, 15), (111, 3)], 0.9)]
    # The lower rim.
    for i in range(4):
        y = 326.0 - 2.3 - i * 2.3
        traces.append(([(296 + i * 8, y - 12), (308 + i * 8, y), (430 - i * 9, y), (445 - i * 9, y - 15)], 1.1))
    for name, x, y in board.PROBES:
        traces.append(([(x, y), (x + 6, y - 6), (x + 6, 308)], 1.1))
    for i in range(3):
        y = 316.2 + i * 2.3
        traces.append(([(494 + i * 9, 309), (494 + i * 9, y - 3), (497 + i * 9, y), (553, y), (557, y - 4), (557, 308)], 1.1))
    traces += [([(62, 315), (196, 315), (202, 309)], 1.1)]
    # The right rim.
    for i in range(2):
        traces.append(([(569, 40 + i * 4), (574.6 + i * 2.2, 46 + i * 4), (574.6 + i * 2.2, 140 - i * 4), (568, 148)], 1.1))
    traces += [([(578.3, 62.6), (578.3, 40), (570, 32)], 1.1), ([(578.3, 69.4), (578.3, 88.6)], 1.1),
               ([(578.3, 95.4), (578.3, 126)], 1.6), ([(578.3, 239.4), (578.3, 280), (570, 288)], 1.6),
               ([(578.3, 232.6), (578.3, 200), (574.8, 196), (574.8, 176), (568, 170)], 1.1),
               ([(568, 222), (574.6, 228), (574.6, 284), (568, 291)], 1.1)]
    vias += [(578.3, 128, 1.7), (578.3, 198, 1.5), (576.2, 300, 1.7), (579, 30, 1.7)]
    # Stitches of the ground along the edges.
    stitches = [(x, 2.9) for x in range(58, 560, 14)] + [(x, 325.1) for x in range(58, 560, 14)]
    stitches += [(2.9, y) for y in range(30, 300, 14)] + [(581.1, y) for y in range(34, 300, 14)]
    taken = [(x, y) for x, y, _ in vias] + [(x, y) for x, y, _ in board.NOTCHES + board.BITES + board.HOLES]
    for x, y in stitches:
        if all(math.hypot(x - tx, y - ty) > 9.5 for tx, ty in taken) and not near_trace(traces, x, y, 3.2):
            vias.append((x + rng.uniform(-.1, .1), y + rng.uniform(-.1, .1), 1.35))
    return traces, vias


def near_trace(traces, x, y, distance):
    for points, _ in traces:
        for (x1, y1), (x2, y2) in zip(points, points[1:]):
            length = (x2 - x1) ** 2 + (y2 - y1) ** 2
            t = max(0.0, min(1.0, ((x - x1) * (x2 - x1) + (y - y1) * (y2 - y1)) / length)) if length else 0.0
            if math.hypot(x - x1 - t * (x2 - x1), y - y1 - t * (y2 - y1)) < distance:
                return True
    return False


def draw_copper():
    """The layers copper, open (no solder mask) and drill."""
    copper, opened, drill = layer(255), layer(), layer()
    traces, vias = traces_and_vias()
    pads = [pad for kind, _, x, y, turn, _ in board.PARTS for pad in pads_of_part(kind, x, y, turn)]
    # The ground ends before the edge of the board and before each hole.
    ImageDraw.Draw(copper).rectangle([0, 0, SIZE[0] - 1, SIZE[1] - 1], outline=0, width=int(1.6 * SCALE))
    for x, y, r in board.HOLES + board.NOTCHES + board.BITES:
        disc(copper, x, y, r + 1.8, 0)
    for points, width in traces:
        line(copper, points, width + 2 * CLEARANCE, 0)
    for x, y, half_width, half_height in pads:
        box(copper, x, y, half_width + CLEARANCE, half_height + CLEARANCE, 1, 0)
    for x, y, _ in header_pins():
        disc(copper, x, y, 3.7 + CLEARANCE, 0)
    for _, x, y in board.PROBES:
        disc(copper, x, y, 3.4 + CLEARANCE, 0)
    for x, y in board.FIDUCIALS:
        disc(copper, x, y, 5.4, 0)
    for points, width in traces:
        line(copper, points, width)
    for x, y, half_width, half_height in pads:
        box(copper, x, y, half_width, half_height, .5)
        box(opened, x, y, half_width + .35, half_height + .35, .5)
        # Ground pads hang on the ground by four bridges; two are enough to be seen.
        line(copper, [(x, y - half_height - 2), (x, y + half_height + 2)], .9)
    for x, y, _ in header_pins():
        disc(copper, x, y, 3.7)
        disc(opened, x, y, 3.9)
    for side, along in board.TABS:
        left, top, right, bottom = board.BEZEL
        if side in "tb":
            box(opened, along, top - 3.2 if side == "t" else bottom + 3.2, 6, 3)
        else:
            box(opened, left - 3.2 if side == "l" else right + 3.2, along, 3, 6)
    for _, x, y in board.PROBES:
        disc(copper, x, y, 3.2)
        disc(opened, x, y, 3.0)
    for x, y in board.FIDUCIALS:
        disc(copper, x, y, 2.2)
        disc(opened, x, y, 4.6)
    for x, y, r in vias:
        disc(copper, x, y, r)
        disc(drill, x, y, r * .45)
    for x, y, _ in board.SCREWS:
        disc(copper, x, y, 9.6)
        disc(opened, x, y, 9.3)
    ring = layer()
    for x, y, r in vias:
        disc(ring, x, y, r)
        disc(ring, x, y, r * .62, 0)
    return copper, opened, drill, ring


def draw_rim():
    """The narrow rim along the outline and around the holes."""
    wide = .7
    rim = layer(255)
    ImageDraw.Draw(rim).rounded_rectangle(scaled([wide, wide, board.WIDTH - wide, board.HEIGHT - wide]),
                                          (board.CORNER - wide) * SCALE, fill=0)
    for x, y, r in board.HOLES + board.NOTCHES + board.BITES:
        disc(rim, x, y, r + wide)
    return rim


def draw_silk():
    silk = layer()
    for string, x, y, capital, bold, turn in board.PRINTS:
        text(silk, string, x, y, capital, bold, turn, 0 if bold else .12)
    for kind, name, x, y, turn, name_at in board.PARTS:
        if name_at:
            text(silk, name, *name_at, 4.9, False, 0, .16)
        if kind in ("r0603", "c0603", "led0603"):
            for side in (-1, 1):
                line(silk, [turned(x, y, -2.2 if kind[0] != "l" else -5, side * 3.3, turn), turned(x, y, 2.2, side * 3.3, turn)], .7)
        elif kind == "so8":
            disc(silk, x - 12.6, y - 12.6, 1.3)
            for side in (-1, 1):
                line(silk, [(x - 8, y + side * 12.6), (x + 8, y + side * 12.6)], .7)
        elif kind == "elcap":
            c = 15.4
            for points in ([(-c + 5, -c), (c, -c), (c, -4)], [(c, 4), (c, c), (-c + 5, c), (-c, c - 5), (-c, 4)],
                           [(-c, -4), (-c, -c + 5), (-c + 5, -c)]):
                line(silk, [(x + px, y + py) for px, py in points], .7)
        elif kind == "trimmer":
            ImageDraw.Draw(silk).rectangle(scaled([x - 13.6, y - 13.6, x + 13.6, y + 13.6]), outline=255, width=6)
        elif kind == "tantal":
            line(silk, [(x - 6, y - 11.6), (x + 6, y - 11.6)], 1.3)
    header = board.HEADER
    half_width, half_height = header["pitch"] + 1.4, header["rows"] / 2 * header["pitch"] + 1.4
    x, y = header["x"], header["y"]
    ImageDraw.Draw(silk).rectangle(scaled([x - half_width, y - half_height, x + half_width, y + half_height]), outline=255, width=6)
    corner = [(x - half_width - 2.6, y - half_height - 2.6), (x - half_width + 3.4, y - half_height - 2.6), (x - half_width - 2.6, y - half_height + 3.4)]
    ImageDraw.Draw(silk).polygon([(px * SCALE, py * SCALE) for px, py in corner], fill=255)
    return silk


def noise(rng, shape, cell):
    """Smooth noise around 0 with about the given cell size, in pixels of this drawing."""
    small = rng.normal(0, 1, (shape[0] // cell + 2, shape[1] // cell + 2)).astype(np.float32)
    image = Image.fromarray(small).resize((shape[1], shape[0]), Image.BICUBIC)
    return np.asarray(image)


def blurred(image, radius):
    return np.asarray(image.filter(ImageFilter.GaussianBlur(radius)), np.float32) / 255


def save_board(folder):
    rng = np.random.default_rng(42)
    shape = (SIZE[1], SIZE[0])
    copper, opened, drill, ring = draw_copper()
    silk = draw_silk()

    height = blurred(copper, 2.6)
    edge = np.abs(height - blurred(copper, 6.5))
    hole = blurred(drill, 1.5)
    open_at = blurred(opened, 1.2)

    grain, cloud, drift = noise(rng, shape, 3), noise(rng, shape, 60), noise(rng, shape, 700)
    y, x = np.mgrid[0:shape[0], 0:shape[1]].astype(np.float32)
    weave = np.sin(x * (2 * np.pi / 15.3)) * np.sin(y * (2 * np.pi / 15.3))

    laminate = np.array([6, 40, 26], np.float32)
    plane = np.array([17, 86, 45], np.float32)
    colour = laminate + (plane - laminate) * height[..., None]
    colour += (1 - height)[..., None] * weave[..., None] * np.array([3, 6, 2], np.float32)
    colour += edge[..., None] * np.array([34, 40, 16], np.float32)
    colour *= (1 + .02 * grain + .018 * cloud + .05 * drift)[..., None]
    colour += drift[..., None] * np.array([2.5, 0, -1.5], np.float32)
    colour += blurred(ring, 1.5)[..., None] * np.array([16, 24, 9], np.float32)
    colour *= (1 - .75 * hole)[..., None]

    # The mask stops just before the rim, and the routed fibres show.
    rim = blurred(draw_rim(), 1.5)[..., None] * np.clip(.8 + .1 * grain, .2, 1)[..., None]
    colour = colour * (1 - .8 * rim) + np.array([116, 128, 84], np.float32) * .8 * rim

    # Where the mask is open: gold on copper, laminate beside it.
    bare = np.array([66, 72, 40], np.float32)
    metal_at = open_at * (height > .5)
    colour = colour * (1 - open_at[..., None]) + bare * open_at[..., None]

    # A paper label with bars.
    rows, columns = slice(int(316.2 * SCALE), int(325.6 * SCALE)), slice(206 * SCALE, 237 * SCALE)
    paper = np.full((rows.stop - rows.start, columns.stop - columns.start, 3), (228, 227, 220), np.float32)
    widths = random.Random(8)
    at = int(2.4 * SCALE)
    while at < paper.shape[1] - 3 * SCALE:
        wide = widths.choice([4, 4, 8, 12])
        paper[int(1.6 * SCALE):-int(1.6 * SCALE), at:at + wide] = (40, 40, 42)
        at += wide + widths.choice([6, 6, 10, 14])

    # Ink runs a little, and is thinner here and there.
    ink = np.clip((blurred(silk, 3.0) + .035 * noise(rng, shape, 5) - .34) / .3, 0, 1) * np.clip(.82 + .05 * cloud + .06 * grain, .6, .95)
    ink *= (1 - open_at)
    colour = colour * (1 - ink[..., None]) + np.array([226, 229, 220], np.float32) * ink[..., None]

    colour[rows, columns] = paper * (1 + .012 * grain[rows, columns, None])
    Image.fromarray(np.clip(colour, 0, 255).astype(np.uint8)).save(folder / "board.png")
    Image.fromarray((metal_at * 255).astype(np.uint8)).save(folder / "metal.png")

    relief = .50 * blurred(copper, 3.5) + .10 * blurred(ring, 2) + .16 * ink - .5 * hole - .22 * open_at + .012 * noise(rng, shape, 20) + .03 * noise(rng, shape, 160)
    relief[rows, columns] = .62 + .01 * grain[rows, columns]
    relief = np.clip((relief + .7) / 1.6, 0, 1)
    Image.fromarray((relief * 65535).astype(np.uint16)).save(folder / "relief.png")


def print_on(folder, name, size, lines, paper, ink, soft=2.0):
    """The print on top of a part: lines of (text, x, y, capital) in units of 1/100 of the width."""
    unit = size[0] / 100
    image = Image.new("L", size, 0)
    for string, x, y, capital in lines:
        font = ImageFont.truetype(BOLD, round(capital * unit / .729))
        ImageDraw.Draw(image).text((x * unit, y * unit), string, font=font, fill=255, anchor="mm")
    alpha = np.asarray(image.filter(ImageFilter.GaussianBlur(soft)), np.float32)[..., None] / 255
    rng = np.random.default_rng(len(name))
    colour = np.array(paper, np.float32) * (1 - alpha) + np.array(ink, np.float32) * alpha
    colour *= 1 + .05 * noise(rng, (size[1], size[0]), 4)[..., None]
    Image.fromarray(np.clip(colour, 0, 255).astype(np.uint8)).save(folder / f"{name}.png")


def main():
    folder = pathlib.Path(sys.argv[1])
    save_board(folder)
    print_on(folder, "so8", (440, 560), [("HD42", 50, 45, 20), ("SER.2", 50, 78, 17), ("0811", 50, 104, 13)], (27, 27, 29), (112, 112, 110))
    print_on(folder, "resistor", (400, 320), [("103", 50, 40, 34)], (22, 22, 24), (190, 190, 185))
    print_on(folder, "tantal", (600, 360), [("22", 57, 20, 17), ("16V", 57, 43, 14)], (178, 118, 30), (84, 44, 8))
    print_on(folder, "can", (512, 512), [("47", 66, 32, 15), ("16V", 66, 52, 12), ("A42", 66, 70, 10)], (206, 207, 209), (26, 26, 34))


main()
