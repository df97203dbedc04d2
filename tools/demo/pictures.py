#!/usr/bin/env python3
"""Draws the pictures of the demo again: tools/demo/pictures.py

They are kept in data/demo/pictures, so nobody needs this to build. It takes python3-pil and
python3-numpy, and the outlines of fonts-dejavu.
"""

import pathlib

import numpy
from PIL import Image, ImageDraw, ImageFont

folder = pathlib.Path(__file__).resolve().parents[2] / "data/demo/pictures"
fonts = "/usr/share/fonts/truetype/dejavu/"
dark, light = 0, 1


def canvas(width, height):
    picture = Image.new("1", (width, height), light)
    pen = ImageDraw.Draw(picture)
    pen.fontmode = "1"
    return picture, pen


def font(name, size):
    return ImageFont.truetype(fonts + name + ".ttf", size)


# ---- The tiles of the overview, 24 x 24 dots each, in one row.

def icon_type(pen):
    pen.text((0, -3), "A", dark, font("DejaVuSerif-Bold", 24))
    pen.text((16, 9), "g", dark, font("DejaVuSerif", 13))


def icon_lines(pen):
    for i in range(0, 24, 4):
        pen.line((1, 22, 22, i), dark)
    pen.line((1, 22, 1, 1), dark)


def icon_patterns(pen):
    pen.rectangle((1, 1, 22, 22), light, dark)
    for y in range(2, 22):
        for x in range(2, 22):
            left, upper = x < 12, y < 12
            on = ((x + y) % 2 == 0 if left and upper else
                  (x + y) % 4 == 0 if left else
                  (x % 4 == 0 and y % 4 == 0) if upper else (x - y) % 4 < 2)
            if on:
                pen.point((x, y), dark)
    pen.line((1, 12, 22, 12), dark)
    pen.line((12, 1, 12, 22), dark)


def icon_borders(pen):
    pen.rounded_rectangle((1, 2, 22, 21), 5, light, dark, 2)
    pen.rectangle((6, 7, 17, 16), light, dark)
    pen.rectangle((8, 9, 15, 14), dark)


def icon_pictures(pen):
    pen.rectangle((1, 3, 22, 20), light, dark)
    pen.ellipse((15, 6, 19, 10), dark)
    pen.polygon(((2, 19), (9, 9), (16, 19)), dark)
    pen.polygon(((12, 19), (17, 13), (21, 17), (21, 19)), dark)


def icon_flash(pen):
    pen.polygon(((14, 0), (4, 13), (11, 13), (9, 23), (19, 9), (12, 9)), dark)


def icon_bars(pen):
    for x, top in ((2, 14), (8, 8), (14, 3), (20, 11)):
        pen.rectangle((x - 1, top, x + 2, 20), dark)
    pen.line((0, 22, 23, 22), dark)


def icon_switches(pen):
    pen.rounded_rectangle((1, 2, 22, 10), 4, light, dark)
    pen.ellipse((14, 3, 20, 9), dark)
    pen.rounded_rectangle((1, 13, 22, 21), 4, dark)
    pen.ellipse((3, 14, 9, 20), light)


def icon_menu(pen):
    pen.rectangle((2, 1, 21, 22), light, dark)
    pen.line((3, 23, 22, 23), dark)
    pen.line((22, 3, 22, 23), dark)
    for y in (4, 9, 19):
        pen.line((5, y + 1, 18, y + 1), dark)
    pen.rectangle((4, 12, 19, 17), dark)
    pen.line((6, 14, 17, 14), light)


def icon_light(pen):
    pen.ellipse((6, 5, 17, 16), light, dark)
    pen.rectangle((9, 16, 14, 20), light, dark)
    pen.line((9, 18, 14, 18), dark)
    pen.line((10, 22, 13, 22), dark)
    for x1, y1, x2, y2 in ((11, 0, 11, 2), (2, 10, 4, 10), (19, 10, 21, 10), (4, 3, 6, 5),
                           (19, 3, 17, 5)):
        pen.line((x1, y1, x2, y2), dark)


def icon_drawing(pen):
    pen.polygon(((3, 15), (15, 3), (20, 8), (8, 20)), light, dark)
    pen.line((12, 6, 17, 11), dark)
    pen.polygon(((3, 15), (8, 20), (1, 22)), dark)
    pen.line((10, 22, 22, 22), dark)


def icon_codes(pen):
    pen.rounded_rectangle((1, 5, 22, 18), 2, light, dark)
    pen.text((4, 5), "41", dark, font("DejaVuSansMono-Bold", 12))
    pen.line((11, 20, 11, 22), dark)


icons = [icon_type, icon_lines, icon_patterns, icon_borders, icon_pictures, icon_flash, icon_bars,
         icon_switches, icon_menu, icon_light, icon_drawing, icon_codes]


def draw_icons():
    sheet, _ = canvas(24 * len(icons), 24)
    for i, draw in enumerate(icons):
        picture, pen = canvas(24, 24)
        draw(pen)
        sheet.paste(picture, (24 * i, 0))
    return sheet


# ---- The lettering of the greeting.

def draw_logo():
    lettering = font("DejaVuSans-Bold", 36)
    picture, pen = canvas(1, 1)
    name, number = (int(pen.textlength(text, lettering)) for text in ("Orvanel", "42"))
    width = name + 4 + number + 10
    picture, pen = canvas(width, 41)
    pen.text((-2, -3), "Orvanel", dark, lettering)
    pen.rounded_rectangle((name + 3, 0, width - 1, 35), 7, dark)
    pen.text((name + 7, -3), "42", light, lettering)
    pen.rectangle((1, 39, width - 2, 40), dark)
    return picture


# ---- A photograph of something that isn't there: a ball over a tiled floor.

def shade(width, height, seen_from=2):
    """Gray values 0..1 of a small ray traced scene."""
    side = width * seen_from, height * seen_from
    x, y = numpy.meshgrid(numpy.linspace(-1.5, 1.5, side[0]),
                          numpy.linspace(1.12, -1.12, side[1]))
    ray = numpy.stack([x, y - 0.2, numpy.full_like(x, 2.6)], axis=-1)
    ray /= numpy.linalg.norm(ray, axis=-1, keepdims=True)
    lamp = numpy.array([-0.55, 0.75, -0.45])
    lamp /= numpy.linalg.norm(lamp)
    eye = numpy.array([0.0, 0.3, -3.6])
    ball = numpy.array([0.15, 0.0, 0.0])

    def floor_and_sky(start, ray):
        far = (start[..., 1] + 1.0) / numpy.maximum(-ray[..., 1], 1e-6)
        far = numpy.where(ray[..., 1] < -1e-3, far, 1e3)
        spot = start + ray * far[..., None]
        tile = (numpy.floor(spot[..., 0] * 0.9 + 0.35) + numpy.floor(spot[..., 2] * 0.9)) % 2
        gray = 0.12 + 0.8 * tile
        to_ball = spot - ball
        b = (to_ball * lamp).sum(-1)
        c = (to_ball * to_ball).sum(-1) - 1.0
        in_shadow = (b < 0) & (b * b - c > 0)
        gray = numpy.where(in_shadow, gray * 0.28, gray)
        fog = numpy.exp(-0.05 * numpy.abs(far))
        sky = 0.22 + 0.5 * numpy.clip(1.0 - ray[..., 1] * 2.6, 0, 1)
        gray = gray * fog + 0.72 * (1 - fog)
        return numpy.where(ray[..., 1] < -1e-3, gray, sky)

    start = numpy.broadcast_to(eye, ray.shape)
    gray = floor_and_sky(start, ray)
    to_ball = eye - ball
    b = (ray * to_ball).sum(-1)
    under = b * b - ((to_ball * to_ball).sum() - 1.0)
    hit = under > 0
    way = -b - numpy.sqrt(numpy.maximum(under, 0))
    spot = start + ray * way[..., None]
    normal = spot - ball
    mirrored = ray - 2 * (ray * normal).sum(-1, keepdims=True) * normal
    light_on = numpy.clip((normal * lamp).sum(-1), 0, 1)
    glint = numpy.clip((mirrored * lamp).sum(-1), 0, 1) ** 40
    on_ball = 0.04 + 0.85 * light_on + 0.22 * floor_and_sky(spot, mirrored) + glint
    gray = numpy.where(hit, on_ball, gray)
    gray = gray.reshape(height, seen_from, width, seen_from).mean((1, 3))
    return numpy.clip(gray, 0, 1)


def draw_photo():
    gray = (shade(112, 84) ** 1.15 * 255).astype(numpy.uint8)
    return Image.fromarray(gray, "L").convert("1", dither=Image.Dither.FLOYDSTEINBERG)


# ---- Smaller ones.

def draw_arrows():
    """To the left and to the right, 24 x 11 each."""
    sheet, _ = canvas(48, 11)
    picture, pen = canvas(24, 11)
    pen.polygon(((4, 5), (12, 0), (12, 10)), dark)
    pen.rectangle((12, 4, 19, 6), dark)
    sheet.paste(picture, (0, 0))
    sheet.paste(picture.transpose(Image.Transpose.FLIP_LEFT_RIGHT), (24, 0))
    return sheet


def draw_home():
    picture, pen = canvas(13, 11)
    pen.polygon(((0, 6), (6, 0), (12, 6)), dark)
    pen.rectangle((2, 6, 10, 10), dark)
    pen.rectangle((5, 7, 7, 10), light)
    return picture


def draw_sliders():
    """A sliding switch, off and on, 32 x 16 each."""
    sheet, _ = canvas(64, 16)
    for i, on in enumerate((False, True)):
        picture, pen = canvas(32, 16)
        pen.rounded_rectangle((0, 1, 31, 14), 7, dark if on else light, dark)
        pen.ellipse((18, 3, 28, 12) if on else (3, 3, 13, 12), light if on else dark)
        sheet.paste(picture, (32 * i, 0))
    return sheet


def draw_radios():
    """A radio button, off and on, 15 x 15 each."""
    sheet, _ = canvas(30, 15)
    for i, on in enumerate((False, True)):
        picture, pen = canvas(15, 15)
        pen.ellipse((0, 0, 14, 14), light, dark)
        pen.ellipse((1, 1, 13, 13), light, dark)
        if on:
            pen.ellipse((4, 4, 10, 10), dark)
        sheet.paste(picture, (15 * i, 0))
    return sheet


def draw_warning():
    picture, pen = canvas(34, 30)
    pen.polygon(((16, 0), (17, 0), (33, 29), (0, 29)), dark)
    pen.polygon(((16, 6), (17, 6), (29, 27), (4, 27)), light)
    pen.rectangle((15, 12, 18, 20), dark)
    pen.rectangle((15, 23, 18, 25), dark)
    return picture


for name, draw in {"icons": draw_icons, "logo": draw_logo, "photo": draw_photo,
                   "arrows": draw_arrows, "home": draw_home,
                   "sliders": draw_sliders, "radios": draw_radios,
                   "warning": draw_warning}.items():
    folder.mkdir(parents=True, exist_ok=True)
    draw().save(folder / f"{name}.png", optimize=True)
