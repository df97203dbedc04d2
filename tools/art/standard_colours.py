"""The 16 standard colours, and pictures in them as BMP files of 4 bits a pixel."""

import struct

BLACK, MAROON, GREEN, OLIVE, NAVY, PURPLE, TEAL, SILVER, GREY, RED, LIME, YELLOW, BLUE, MAGENTA, CYAN, WHITE = range(16)

COLOURS = [(0, 0, 0), (128, 0, 0), (0, 128, 0), (128, 128, 0), (0, 0, 128), (128, 0, 128), (0, 128, 128), (192, 192, 192),
           (128, 128, 128), (255, 0, 0), (0, 255, 0), (255, 255, 0), (0, 0, 255), (255, 0, 255), (0, 255, 255), (255, 255, 255)]


def bmp_of(image):
    """A picture of colour numbers (mode P) as a BMP file; each row is padded to four bytes."""
    width, height = image.size
    stride = (width + 7) // 8 * 4
    rows = bytearray()
    for y in reversed(range(height)):
        row = bytearray(stride)
        for x in range(width):
            row[x // 2] |= image.getpixel((x, y)) << (0 if x % 2 else 4)
        rows += row
    start = 14 + 40 + 64
    head = struct.pack("<2sIHHI", b"BM", start + len(rows), 0, 0, start)
    head += struct.pack("<IiiHHIIiiII", 40, width, height, 1, 4, 0, len(rows), 3780, 3780, 16, 0)
    return head + b"".join(bytes((b, g, r, 0)) for r, g, b in COLOURS) + bytes(rows)
