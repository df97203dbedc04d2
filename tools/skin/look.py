#!/usr/bin/python3
"""Shows a skin as the program would: look.py SKIN.bmp DIRECTORY.

Writes pictures of all models and lights, zooms 1 to 3, turned, and cut over dark and light desktops.
"""

import pathlib
import sys

import numpy as np
from PIL import Image, ImageDraw, ImageFont

# name: set dot, clear dot and surround at full, half and no light
MODELS = {
    "B-Q": ((0xD2D2D2, 0xA2A2A2, 0x2E2E2E), (0x0000E6, 0x0000A9, 0x000071), (0x2520FD, 0x0B00C7, 0x050192)),
    "J-Q": ((0x191945, 0x080837, 0x000031), (0xD1D1D4, 0xB7B7BC, 0x888887), (0xDCDCDC, 0xC1C1C6, 0x91918E)),
    "J-R": ((0x191919, 0x080808, 0x000000), (0xE6A71B, 0xAA8229, 0x888887), (0xE8B439, 0xB18F3F, 0x91918E)),
    "yellow-green": ((0x0A280A, 0x081E08, 0x051405), (0xBEEB01, 0xAAD201, 0x9CAB00), (0xCFFD04, 0xB4DC00, 0xA9BA00)),
    "black": ((0xFAFAFF, 0xBBBBC1, 0x101010), (0x373737, 0x2D2D2D, 0x000000), (0x414141, 0x373737, 0x000000)),
}


def rgb(value):
    return (value >> 16, value >> 8 & 255, value & 255)


def read(path):
    data = path.read_bytes()
    palette = np.frombuffer(data, np.uint8, 1024, 54).reshape(256, 4)[:, 2::-1].copy()
    rows = np.frombuffer(data, np.uint8, 584 * 328, 1078).reshape(328, 584)[::-1].copy()
    cut = int(rows[0, 1])
    rows[0, 1] = rows[0, 0]
    return palette, rows, cut


def greeting():
    """Something on the glass: 240 x 128 dots."""
    dots = Image.new("L", (240, 128), 0)
    draw = ImageDraw.Draw(dots)
    draw.fontmode = "1"
    font = ImageFont.truetype("/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf", 26)
    small = ImageFont.truetype("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", 11)
    draw.text((16, 14), "Orvanel42", font=font, fill=255)
    draw.text((17, 46), "240 x 128 dots, ready.", font=small, fill=255)
    for i in range(3):
        draw.rounded_rectangle([16 + i * 72, 84, 16 + i * 72 + 62, 112], 6, outline=255)
        draw.text((34 + i * 72, 91), ("One", "Two", "Go")[i], font=small, fill=255)
    return np.asarray(dots) > 127


def composed(skin, model, level, key):
    palette, rows, _ = skin
    colours = palette.copy()
    dot, clear, surround = (rgb(v[level]) for v in MODELS[model])
    colours[96] = surround
    colours[118] = key
    image = colours[rows]
    glass = np.where(greeting()[..., None], np.array(dot, np.uint8), np.array(clear, np.uint8))
    image[38:294, 74:554] = glass.repeat(2, 0).repeat(2, 1)
    return Image.fromarray(image.astype(np.uint8))


def over(skin, model, desktop):
    """Cut to the outline at zoom 2, over a plain desktop."""
    palette, rows, cut = skin
    image = np.array(composed(skin, model, 0, palette[cut]))
    frame = np.zeros((388, 644, 3), np.uint8) + np.array(desktop, np.uint8)
    area = frame[30:358, 30:614]
    area[rows != 118] = image[rows != 118]
    return Image.fromarray(frame)


def main():
    skin = read(pathlib.Path(sys.argv[1]))
    folder = pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    sheet = Image.new("RGB", (5 * 304, 3 * 176), (240, 240, 240))
    for column, model in enumerate(MODELS):
        for level in range(3):
            small = composed(skin, model, level, (255, 255, 255)).resize((292, 164), Image.Resampling.BOX)
            sheet.paste(small, (6 + column * 304, 6 + level * 176))
    sheet.save(folder / "models-zoom-1.png")
    for model in MODELS:
        composed(skin, model, 0, (255, 255, 255)).save(folder / f"{model}-zoom-2.png")
    composed(skin, "B-Q", 0, (255, 255, 255)).resize((876, 492), Image.Resampling.BILINEAR).save(folder / "zoom-3.png")
    composed(skin, "J-Q", 1, (255, 255, 255)).rotate(-90, expand=True).save(folder / "turned.png")
    desks = Image.new("RGB", (644, 776))
    desks.paste(over(skin, "B-Q", (24, 26, 32)), (0, 0))
    desks.paste(over(skin, "J-Q", (222, 226, 232)), (0, 388))
    desks.save(folder / "cut.png")


main()
