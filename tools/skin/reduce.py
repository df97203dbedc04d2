#!/usr/bin/python3
"""Develops the render into the skin: reduce.py DIRECTORY SKIN.bmp.

Reads scene.hdr (light) and what.png (red the module, green the pane), both the same whole multiple
of the finished size, and writes the 8-bit BMP that the program is built with. It ends with an error
if the picture that it wrote does not have the form that the program looks for.
"""

import pathlib
import struct
import sys

import numpy as np
from PIL import Image

import board

W, H = board.WIDTH, board.HEIGHT
KEY, CUT, GLASS, BAND = 118, 65, 13, 96
FREE = [i for i in range(256) if i not in (KEY, CUT, GLASS, BAND)]
EXPOSURE = 0.88


def read_hdr(path):
    """The pixels of a Radiance picture as linear floats, rows from the top."""
    data = path.read_bytes()
    head = data.index(b"\n\n") + 2
    end = data.index(b"\n", head)
    _, height, _, width = data[head:end].split()
    height, width = int(height), int(width)
    at = end + 1
    rows = np.zeros((height, 4, width), np.uint8)
    for y in range(height):
        if data[at:at + 2] != b"\2\2":
            rows[y] = np.frombuffer(data, np.uint8, width * 4, at).reshape(width, 4).T
            at += width * 4
            continue
        at += 4
        for channel in range(4):
            x = 0
            while x < width:
                count = data[at]
                if count > 128:
                    rows[y, channel, x:x + count - 128] = data[at + 1]
                    at, x = at + 2, x + count - 128
                else:
                    rows[y, channel, x:x + count] = np.frombuffer(data, np.uint8, count, at + 1)
                    at, x = at + 1 + count, x + count
    scale = np.ldexp(1.0, rows[:, 3].astype(np.int32) - 136).astype(np.float32)
    return np.stack([(rows[:, c] + .5) * scale for c in range(3)], axis=-1)


def windowed(samples, size):
    """Reduces the first axis to `size` with a Lanczos window of two lobes."""
    ratio = samples.shape[0] / size
    lobes = 2
    reach = int(np.ceil(lobes * ratio))
    result = np.zeros((size,) + samples.shape[1:], np.float32)
    total = np.zeros(size, np.float32)
    centre = (np.arange(size) + .5) * ratio - .5
    for offset in range(-reach, reach + 1):
        at = np.floor(centre).astype(int) + offset
        d = (at - centre) / ratio
        weight = np.where(np.abs(d) < lobes, np.sinc(d) * np.sinc(d / lobes), 0).astype(np.float32)
        weight[(at < 0) | (at >= samples.shape[0])] = 0
        result += samples[np.clip(at, 0, samples.shape[0] - 1)] * weight.reshape((-1,) + (1,) * (samples.ndim - 1))
        total += weight
    return result / total.reshape((-1,) + (1,) * (samples.ndim - 1))


def reduce_both(samples):
    return windowed(windowed(samples, H).swapaxes(0, 1), W).swapaxes(0, 1)


def box(samples):
    s = samples.shape[0] // H
    return samples.reshape(H, s, W, s).mean((1, 3))


def blur(image, radius):
    """Gaussian blur of an array (rows, columns, channels)."""
    reach = int(radius * 3) + 1
    kernel = np.exp(-.5 * (np.arange(-reach, reach + 1) / radius) ** 2)
    kernel /= kernel.sum()
    for axis in (0, 1):
        pad = [(0, 0)] * image.ndim
        pad[axis] = (reach, reach)
        padded = np.pad(image, pad, mode="edge")
        image = sum(k * np.take(padded, range(i, i + image.shape[axis]), axis) for i, k in enumerate(kernel))
    return image


def film(light):
    """Linear light to a print's values 0 to 1: a soft toe, and a shoulder that keeps highlights."""
    x = np.maximum(light * EXPOSURE, 0)
    shoulder = .72
    bent = np.where(x > shoulder, shoulder + (1 - shoulder) * (1 - np.exp(-(x - shoulder) / (1 - shoulder))), x)
    value = np.where(bent <= .0031308, bent * 12.92, 1.055 * np.power(np.maximum(bent, 1e-9), 1 / 2.4) - .055)
    return np.clip(value + .04 * np.sin((value - .5) * 2 * np.pi), 0, 1)


def develop(light, module):
    """The photograph, 0 to 1, from light and the share of each pixel that is the module."""
    # Highlights far beyond white would make hard stairs; a lens spreads a little of them.
    light = np.minimum(light, 6.0)
    share = module[..., None]
    small = reduce_both(light * share) / np.maximum(reduce_both(share), .02)
    small = np.maximum(small, 0)
    glow = blur(np.clip(small - .8, 0, 3), 2.2)
    small = small + .10 * glow
    value = film(small)
    # Unsharp masking, as any camera does.
    value = value + .35 * (value - blur(value, .8))
    y, x = np.mgrid[0:H, 0:W]
    value *= (1.02 - .07 * (((x - W * .42) / W) ** 2 + ((y - H * .4) / H) ** 2))[..., None]
    rng = np.random.default_rng(3)
    grain = rng.normal(0, 1, (H, W, 1)) * .8 + rng.normal(0, 1, (H, W, 3)) * .5
    value = value + grain * .0055 * (.5 + np.sqrt(np.clip(value, 0, 1)))
    return np.clip(value, 0, 1)


def palette_of(pixels, count, seed=5):
    """`count` colours for the pixels (n, 3), by splitting and then by means."""
    image = Image.fromarray(pixels.reshape(1, -1, 3))
    start = image.quantize(count, method=Image.Quantize.MAXCOVERAGE, dither=Image.Dither.NONE)
    colours = np.array(start.getpalette()[:count * 3], np.float32).reshape(-1, 3)
    samples = pixels.astype(np.float32)
    # What is rare, such as a blue part, shall have its colours too.
    bins = (pixels.astype(np.int32) >> 3) @ np.array([1024, 32, 1])
    weight = np.bincount(bins)[bins] ** -.5
    for _ in range(20):
        nearest = nearest_of(samples, colours)
        counts = np.bincount(nearest, weight, minlength=count)
        for c in range(3):
            sums = np.bincount(nearest, weight * samples[:, c], minlength=count)
            colours[:, c] = np.where(counts > 0, sums / np.maximum(counts, 1e-9), colours[:, c])
        # A colour that nobody wants goes where the error is largest.
        idle = np.flatnonzero(counts == 0)
        if len(idle):
            error = ((samples - colours[nearest]) ** 2).sum(1) * weight
            colours[idle] = samples[np.argsort(error)[-len(idle):]]
    return np.rint(colours).astype(np.uint8)


WEIGHTS = np.array([1.0, 1.35, .75], np.float32)  # about how the eye weighs red, green and blue


def nearest_of(samples, colours):
    result = np.zeros(len(samples), np.int32)
    b = colours.astype(np.float32) * WEIGHTS
    for start in range(0, len(samples), 8192):
        a = samples[start:start + 8192].astype(np.float32) * WEIGHTS
        result[start:start + 8192] = np.argmin((b * b).sum(1)[None] - 2 * a @ b.T, axis=1)
    return result


def dithered(value, wanted, colours):
    """Palette places for the pixels where `wanted`: error diffusion, half strength, in serpentines."""
    work = value.astype(np.float32) * 255
    places = np.zeros((H, W), np.int32)
    table = colours.astype(np.float32)
    for y in range(H):
        step = 1 if y % 2 == 0 else -1
        for x in range(W)[::step]:
            if not wanted[y, x]:
                continue
            want = work[y, x]
            place = int(np.argmin((((table - want) * WEIGHTS) ** 2).sum(1)))
            places[y, x] = place
            error = np.clip(want - table[place], -24, 24) * .75
            for dx, dy, part in ((step, 0, 7), (-step, 1, 3), (0, 1, 5), (step, 1, 1)):
                if 0 <= x + dx < W and y + dy < H:
                    work[y + dy, x + dx] += error * (part / 16)
    return places


def bmp_of(indices, palette):
    """An 8-bit BMP, rows from the bottom, two bytes of padding at its end."""
    data = struct.pack("<2sIHHI", b"BM", 54 + 1024 + W * H + 2, 0, 0, 1078)
    data += struct.pack("<IiiHHIIiiII", 40, W, H, 1, 8, 0, W * H + 2, 5865, 5865, 256, 0)
    data += b"".join(bytes((int(b), int(g), int(r), 0)) for r, g, b in palette)
    return data + indices[::-1].astype(np.uint8).tobytes() + b"\0\0"


def check(bmp):
    """Walks over the picture as the program does at its start."""
    rows = np.frombuffer(bmp, np.uint8, W * H, 1078).reshape(H, W)[::-1]
    cx, cy = W // 2, H // 2
    top = bottom = cy
    while rows[top - 1, cx] == GLASS:
        top -= 1
    while rows[bottom + 1, cx] == GLASS:
        bottom += 1
    left = cx
    while rows[bottom, left - 1] == GLASS:
        left -= 1
    found = (len(bmp), rows[0, 0], rows[0, 1], rows[cy, cx], rows[top - 1, cx], top, bottom, left, (rows == GLASS).sum())
    expected = (192632, KEY, CUT, GLASS, BAND, 38, 293, 74, 480 * 256)
    if found != expected:
        sys.exit(f"reduce: the picture has {found}, not {expected}")


def main():
    folder = pathlib.Path(sys.argv[1])
    light = read_hdr(folder / "scene.hdr")
    what = np.asarray(Image.open(folder / "what.png").convert("RGB"), np.float32) / 255
    pane_at = what[..., 1]
    module = np.clip(what[..., 0] + pane_at, 0, 1)
    value = develop(light, module)

    key = box(module) < .5
    glass = np.zeros((H, W), bool)
    left, top, right, bottom = board.GLASS
    glass[top:bottom, left:right] = True
    band = np.zeros((H, W), bool)
    left, top, right, bottom = board.SURROUND
    band[top:bottom, left:right] = box(pane_at)[top:bottom, left:right] > .98
    band &= ~glass
    key[0, 0:2] = True
    photo = ~(key | band | glass)

    pixels = (value[photo] * 255 + .5).astype(np.uint8)
    colours = palette_of(pixels, len(FREE))
    palette = np.zeros((256, 3), np.uint8)
    palette[FREE] = colours
    palette[KEY] = 255
    # Half-cut pixels at the rim show this one: the board's own edge.
    rim = photo & (blur(key.astype(np.float32)[..., None], 1.2)[..., 0] > .05)
    palette[CUT] = np.rint(np.median(value[rim], axis=0) * 255 * .8)
    palette[GLASS] = (150, 160, 150)
    palette[BAND] = (0xDC, 0xDC, 0xDC)

    indices = np.zeros((H, W), np.int32)
    indices[photo] = np.array(FREE)[dithered(value, photo, colours)[photo]]
    indices[key] = KEY
    indices[0, 1] = CUT
    indices[band] = BAND
    indices[glass] = GLASS
    bmp = bmp_of(indices, palette)
    check(bmp)
    pathlib.Path(sys.argv[2]).write_bytes(bmp)
    error = np.sqrt(np.mean((palette[indices][photo].astype(float) - value[photo] * 255) ** 2))
    print(f"reduce: {photo.sum()} pixels of photograph, mean error {error:.2f} of 255")


if __name__ == "__main__":
    main()
