"""The layout of the board: what stands where. Both the drawing of the board and the scene read it.

Places are in pixels of the finished picture, x to the right and y downward from its upper left
corner; turns are in degrees, counted clockwise as one sees them.
"""

WIDTH, HEIGHT = 584, 328

# The glass and the one-colour surround, as the finished picture holds them (right, bottom exclusive).
GLASS = (74, 38, 554, 294)
SURROUND = (66, 30, 562, 302)
# The lip's shadow on the pane, which is surround of no colour: left, top, right, bottom.
SHADOW = (1.6, 2.2, 0.6, 0.6)
# The outside of the bezel.
BEZEL = (54.5, 19.0, 572.5, 312.5)

# The outline: rounded corners, two notches, holes to look through, and the half holes
# that stay where a board was broken out of its panel.
CORNER = 9.0
NOTCHES = [(0.0, 203.0, 5.0), (584.0, 164.0, 4.2)]  # x, y, radius
HOLES = [(39.5, 11.0, 4.3), (39.5, 317.0, 4.3)]
BITES = [(196 + 4.4 * i, 0.0, 1.5) for i in range(5)] + [(372 + 4.4 * i, 328.0, 1.5) for i in range(5)]

SCREWS = [(12.0, 12.0, 17), (572.6, 11.0, 61), (12.0, 316.0, -22), (572.6, 317.0, 40)]

HEADER = dict(x=20.0, y=129.0, pitch=11.3, rows=10)

# kind, name, x, y, turn, place of its name (centre) or None
PARTS = [
    ("so8", "U1", 24.0, 45.5, 0, (24.0, 27.6)),
    ("c0603", "C1", 46.0, 36.0, 90, (46.0, 27.6)),
    ("r0603", "R1", 46.0, 55.0, 90, (46.0, 64.0)),
    ("r0603", "R2", 45.5, 80.0, 0, (45.5, 87.6)),
    ("r0603", "R3", 45.5, 98.0, 0, (45.5, 105.6)),
    ("c0603", "C2", 45.5, 116.0, 0, (45.5, 123.6)),
    ("sot23", "Q1", 44.5, 138.0, 0, (44.5, 149.6)),
    ("r0603", "R4", 45.5, 160.0, 0, (45.5, 167.6)),
    ("tantal", "C3", 44.0, 186.0, 90, (34.2, 199.5)),
    ("trimmer", "VR1", 22.0, 229.0, 0, (22.0, 249.4)),
    ("elcap", "C4", 34.5, 276.0, 0, (12.5, 267.0)),
    ("r0603", "R5", 45.6, 216.0, 90, (45.6, 206.4)),
    ("r0603", "R6", 45.6, 236.0, 90, (45.6, 246.0)),
    ("c0603", "C5", 9.5, 284.0, 90, (9.5, 295.0)),
    ("r0603", "R7", 578.3, 66.0, 90, None),
    ("c0603", "C6", 578.3, 92.0, 90, None),
    ("c0603", "C7", 578.3, 236.0, 90, None),
    ("r0603", "R8", 420.0, 9.6, 0, (434.5, 9.6)),
    ("c0603", "C8", 456.0, 9.6, 0, (470.5, 9.6)),
    ("led0603", "D1", 508.0, 9.6, 0, (522.5, 9.6)),
]

# Bent tabs of the bezel: side, place along it.
TABS = [("t", 168.0), ("t", 368.0), ("t", 486.0), ("b", 118.0), ("b", 316.0), ("b", 500.0),
        ("l", 45.5), ("l", 255.0), ("r", 112.0), ("r", 214.0)]

# Bare round pads for the probes of a tester: name, x, y.
PROBES = [("", 245.0, 321.4), ("", 256.0, 321.4), ("", 267.0, 321.4), ("", 278.0, 321.4)]
FIDUCIALS = [(64.0, 9.5), (478.0, 319.6)]

# Silk print: text, x, y (centre), size of capitals, bold, turn.
PRINTS = [
    ("ORVANEL 42", 292.0, 9.7, 8.0, True, 0),
    ("HD", 92.0, 9.7, 7.2, True, 0),
    ("240x128", 128.0, 9.7, 5.6, False, 0),
    ("REV C", 84.0, 320.3, 5.6, False, 0),
    ("5V  SERIAL", 160.0, 320.3, 5.6, False, 0),
    ("08 / 11", 452.0, 320.3, 5.6, False, 0),
    ("1", 13.6, 66.6, 6.0, True, 0),
    ("2", 26.4, 66.6, 6.0, True, 0),
    ("19", 12.8, 192.6, 6.0, True, 0),
    ("20", 27.6, 192.6, 6.0, True, 0),
]
