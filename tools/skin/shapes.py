#!/usr/bin/python3
"""Writes what the scene includes: shapes.py DIRECTORY.

layout.inc places the parts of board.py; bezel.inc is the pressed sheet around the glass as a mesh;
outline.inc is what is taken away from the board.
"""

import math
import pathlib
import sys

import numpy as np

import board

CAMERA = (292.0, 84.0, 2100.0)  # as scene.pov has it: y upward
RIM_HEIGHT = 17.0  # of the bezel above the board


def under_camera(px, py, z):
    """The place at height z that is seen at picture pixel (px, py); y upward."""
    x, y = px, board.HEIGHT - py
    near = (CAMERA[2] - z) / CAMERA[2]
    return CAMERA[0] + (x - CAMERA[0]) * near, CAMERA[1] + (y - CAMERA[1]) * near


def profile():
    """(d, z, slope angle) from the lip at the glass (d = 0) to the foot outside (d = 1 ... the board).

    Distances are in units from the window's edge, outward; the angle is that of the normal, 0 upward,
    positive toward the outside.
    """
    points = []

    def arc(cx, cz, radius, start, end, steps):
        for i in range(steps + 1):
            a = math.radians(start + (end - start) * i / steps)
            points.append((cx + radius * math.sin(a), cz + radius * math.cos(a), a))

    # The lip's rolled edge, a slope up, a soft crest, a level land, the outer shoulder, the wall.
    slope = -33.0
    arc(0.9, 7.2, 0.9, -120, slope, 6)
    run = 4.3
    x, z, _ = points[-1]
    rise = run * math.tan(math.radians(-slope))
    crest = 2.2
    cx = x + run + crest * math.sin(math.radians(-slope))
    cz = z + rise - crest * math.cos(math.radians(slope))
    arc(cx, cz, crest, slope, 0, 8)
    return points, cx, cz + crest


def bezel_mesh():
    """Vertices, normals and faces of the sheet, swept around the window."""
    inner, land_x, top = profile()
    # The window's edge lies where it hides what is outside the surround; each side has its own width.
    shadow = board.SHADOW
    left, upper = under_camera(board.SURROUND[0] - shadow[0], board.SURROUND[1] - shadow[1], 7.2)
    right, lower = under_camera(board.SURROUND[2] + shadow[2], board.SURROUND[3] + shadow[3], 7.2)
    outer_left, outer_upper = under_camera(board.BEZEL[0], board.BEZEL[1], top - 3)
    outer_right, outer_lower = under_camera(board.BEZEL[2], board.BEZEL[3], top - 3)
    widths = {"l": left - outer_left, "r": outer_right - right, "t": outer_upper - upper, "b": lower - outer_lower}

    shoulder = 3.0
    outside = []
    for i in range(11):
        a = math.radians(90 * i / 10)
        outside.append((-shoulder + shoulder * math.sin(a), -shoulder + shoulder * math.cos(a), a))
    outside.append((0.0, -top, math.radians(90)))

    rng = np.random.default_rng(7)
    waves = [(rng.uniform(.004, .02), rng.uniform(.004, .02), rng.uniform(0, 6.3), rng.uniform(.02, .06)) for _ in range(10)]

    def rings():
        """(inset of each side from the window, corner radius, z, angle)"""
        for d, z, a in inner:
            yield {s: d for s in widths}, 4.6 + .8 * d, z, a
        for d, z, a in outside:
            yield {s: widths[s] + d for s in widths}, 9.5 + d, top + z, a

    vertices, normals, rows = [], [], []
    for insets, radius, z, angle in rings():
        x1, x2 = left - insets["l"], right + insets["r"]
        y1, y2 = lower - insets["b"], upper + insets["t"]
        row = []
        corners = [(x2, y2, 0, 1, 1), (x1, y2, 90, -1, 1), (x1, y1, 180, -1, -1), (x2, y1, 270, 1, -1)]
        places = []
        for n, (x, y, start, sx, sy) in enumerate(corners):
            cx, cy = x - sx * radius, y - sy * radius
            for i in range(13):
                a = math.radians(start + 90 * i / 12)
                places.append((cx + radius * math.cos(a), cy + radius * math.sin(a), math.cos(a), math.sin(a)))
            nx, ny, _, nsx, nsy = corners[(n + 1) % 4]
            a = math.radians(start + 90)
            ex, ey = places[-1][:2]
            fx = nx - nsx * radius + radius * math.cos(a)
            fy = ny - nsy * radius + radius * math.sin(a)
            steps = 48
            for i in range(1, steps):
                t = i / steps
                places.append((ex + (fx - ex) * t, ey + (fy - ey) * t, math.cos(a), math.sin(a)))
        for x, y, ox, oy in places:
            bow = sum(w * math.sin(kx * x + ky * y + p) for kx, ky, p, w in waves)
            sway = sum(w * math.cos(kx * x + ky * y + p) * np.array([kx, ky]) for kx, ky, p, w in waves)
            up = math.cos(angle)
            vertices.append((x, y, z + (bow if z > 1 else 0)))
            normals.append((math.sin(angle) * ox - sway[0] * up, math.sin(angle) * oy - sway[1] * up, up))
            row.append(len(vertices) - 1)
        rows.append(row)
    faces = []
    for low, high in zip(rows, rows[1:]):
        count = len(low)
        for i in range(count):
            j = (i + 1) % count
            faces += [(low[i], low[j], high[j]), (low[i], high[j], high[i])]
    return vertices, normals, faces


def vector(values):
    return "<" + ",".join(f"{v:.4f}" for v in values) + ">"


def write_bezel(folder):
    vertices, normals, faces = bezel_mesh()
    with open(folder / "bezel.inc", "w") as out:
        out.write("mesh2{\nvertex_vectors{%d,\n%s}\n" % (len(vertices), ",\n".join(map(vector, vertices))))
        out.write("normal_vectors{%d,\n%s}\n" % (len(normals), ",\n".join(map(vector, normals))))
        out.write("face_indices{%d,\n%s}\n}\n" % (len(faces), ",\n".join("<%d,%d,%d>" % f for f in faces)))


def write_layout(folder):
    with open(folder / "layout.inc", "w") as out:
        for kind, name, x, y, turn, _ in board.PARTS:
            out.write(f"object{{ {kind}(\"{name}\") rotate {-turn}*z translate <{x},{board.HEIGHT - y},0> }}\n")
        header = board.HEADER
        out.write(f"object{{ header({header['rows']},{header['pitch']}) translate <{header['x']},{board.HEIGHT - header['y']},0> }}\n")
        for x, y, turn in board.SCREWS:
            out.write(f"object{{ screw() rotate {turn}*z translate <{x},{board.HEIGHT - y},0> }}\n")
        left, top, right, bottom = board.BEZEL
        for side, along in board.TABS:
            place, turn = {"t": ((along, top), 0), "b": ((along, bottom), 180), "l": ((left, along), 90), "r": ((right, along), -90)}[side]
            x, y = under_camera(*place, 0)
            out.write(f"object{{ tab() rotate {turn}*z translate <{x:.3f},{y:.3f},0> }}\n")


def write_outline(folder):
    with open(folder / "outline.inc", "w") as out:
        for x, y, radius in board.HOLES + board.NOTCHES + board.BITES:
            out.write(f"hole({x},{board.HEIGHT - y},{radius})\n")


def main():
    folder = pathlib.Path(sys.argv[1])
    write_bezel(folder)
    write_layout(folder)
    write_outline(folder)


main()
