"""The dots of the glass."""

from __future__ import annotations

import os
import struct
import zlib
from typing import TYPE_CHECKING, NamedTuple, Union

from .faults import ProtocolError

if TYPE_CHECKING:
    from PIL.Image import Image


def _png_chunk(name: bytes, body: bytes) -> bytes:
    return struct.pack(">I", len(body)) + name + body + struct.pack(">I", zlib.crc32(name + body))


class Screen(NamedTuple):
    """A picture of the glass. Two are equal if all their dots are."""

    data: bytes  # rows from the top, (width + 7) // 8 bytes each, leftmost dot in bit 7, 1 is dark
    width: int  # dots, 240
    height: int  # dots, 128

    def dot(self, x: int, y: int) -> bool:
        """Whether the dot is dark. Raises IndexError off the picture."""
        if not (0 <= x < self.width and 0 <= y < self.height):
            raise IndexError(f"dot {x}, {y} is off the {self.width} x {self.height} dots")
        return bool(self.data[y * ((self.width + 7) // 8) + x // 8] & 0x80 >> x % 8)

    def png(self) -> bytes:
        """The picture as a PNG file, dark dots black."""
        stride = (self.width + 7) // 8
        light = self.data.translate(bytes(range(255, -1, -1)))
        rows = b"".join(
            b"\0" + light[at : at + stride] for at in range(0, self.height * stride, stride)
        )
        head = struct.pack(">IIBBBBB", self.width, self.height, 1, 0, 0, 0, 0)
        return (
            b"\x89PNG\r\n\x1a\n"
            + _png_chunk(b"IHDR", head)
            + _png_chunk(b"IDAT", zlib.compress(rows, 1))
            + _png_chunk(b"IEND", b"")
        )

    def save(self, path: "Union[str, os.PathLike[str]]") -> None:
        """Writes the picture as a PNG file. Raises OSError."""
        with open(path, "wb") as file:
            file.write(self.png())

    def image(self) -> "Image":
        """The picture for Pillow, in mode `1`, dark dots 0. Raises ImportError where Pillow is not."""
        from PIL import Image as pillow

        light = self.data.translate(bytes(range(255, -1, -1)))
        return pillow.frombytes("1", (self.width, self.height), light)

    def __str__(self) -> str:
        """The picture in characters, `#` for a dark dot: a line for each row."""
        return "\n".join(
            "".join("#" if self.dot(x, y) else "." for x in range(self.width))
            for y in range(self.height)
        )

    def __repr__(self) -> str:
        return f"<Screen of {self.width} x {self.height} dots, {zlib.crc32(self.data):08X}>"


def read_screen(printed: str) -> Screen:
    """The picture that a line `dots WIDTH HEIGHT HEX` holds. Raises ProtocolError."""
    try:
        _, width, height, digits = printed.split(" ")
        screen = Screen(bytes.fromhex(digits), int(width), int(height))
        if len(screen.data) != (screen.width + 7) // 8 * screen.height:
            raise ValueError
        return screen
    except ValueError:
        raise ProtocolError(f"the program prints dots otherwise: {printed[:60]!r}") from None
