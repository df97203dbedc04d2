"""What stands in a line of a scenario, written and read."""

from __future__ import annotations

import os
import re
from typing import List, Optional, Sequence, Tuple, Union

Data = Union[bytes, bytearray, str, int]
Rectangle = Tuple[int, int, int, int]  # x1, y1, x2, y2: dots of the glass, corners included
Dot = Tuple[int, int]  # x 0 to 239, y 0 to 127

max_send_bytes = 80000  # the room of the module's input
_letters = {"\\": "\\", '"': '"', "n": "\n", "r": "\r", "t": "\t", "e": "\x1b"}
_word = re.compile(r'"((?:[^"\\]|\\.)*)"|(\S+)')
_escape = re.compile(r"\\(x[0-9A-Fa-f]{2}|.)")


def quoted(text: str) -> str:
    """The text in double quotes, for a label or what stands on the glass."""
    if not isinstance(text, str):
        raise TypeError(f"a text is a str, not {type(text).__name__}: {text!r}")
    try:
        text.encode("utf-8")
    except UnicodeEncodeError:
        raise ValueError(f"{text!r} is no text in Unicode") from None
    pieces = []
    for character in text:
        if character in '\\"':
            pieces.append("\\" + character)
        elif character < " " or character == "\x7f":
            pieces.append(f"\\x{ord(character):02X}")
        else:
            pieces.append(character)
    return '"' + "".join(pieces) + '"'


def quoted_path(path: "Union[str, os.PathLike[str]]") -> str:
    """The path, made absolute, as a line names it."""
    name = os.path.abspath(os.fspath(path))
    if any(character in name for character in '"\n\r\0'):
        raise ValueError(f"a path can't hold double quotes, line ends or zero bytes: {name!r}")
    return f'"{name}"'


def data_bytes(data: Sequence[Data]) -> bytes:
    """The pieces one after the other: bytes as they are, a str of ASCII, an int 0 to 255."""
    whole = bytearray()
    for piece in data:
        if isinstance(piece, str):
            if not piece.isascii():
                raise ValueError(
                    f"{piece!r} has characters beyond ASCII: send the module's codes of them as bytes"
                )
            whole += piece.encode("ascii")
        elif isinstance(piece, int):
            if not 0 <= piece <= 255:
                raise ValueError(f"{piece} is no byte: 0 to 255")
            whole.append(piece)
        elif isinstance(piece, (bytes, bytearray)):
            whole += piece
        else:
            raise TypeError(f"bytes, str or int are sent, not {type(piece).__name__}")
    return bytes(whole)


def whole_number(value: int, what: str) -> str:
    """The number as a line has it. The program knows its range."""
    if isinstance(value, bool) or not isinstance(value, int):
        raise TypeError(f"{what} is a whole number, not {value!r}")
    return str(value)


def numbers(values: Sequence[int], what: str, count: int) -> str:
    """So many numbers, as a rectangle or a dot."""
    if isinstance(values, (str, bytes)) or len(values) != count:
        raise ValueError(f"{what} is {count} whole numbers, not {values!r}")
    return " ".join(whole_number(value, what) for value in values)


def where(inside: Optional[Rectangle], near: Optional[str], whole: bool, any_phase: bool) -> str:
    """What stands after a text that is looked for."""
    words = ""
    if inside is not None:
        words += " in " + numbers(inside, "inside", 4)
    if near is not None:
        words += " near " + quoted(near)
    return words + (" whole" if whole else "") + (" in any phase" if any_phase else "")


def part(inside: Optional[Rectangle], without: Sequence[Rectangle]) -> str:
    """Which part of a picture is compared."""
    words = "" if inside is None else " in " + numbers(inside, "inside", 4)
    return words + "".join(" except " + numbers(area, "each of without", 4) for area in without)


def _unescaped(text: str) -> str:
    def character(found: "re.Match[str]") -> str:
        what = found.group(1)
        return chr(int(what[1:], 16)) if len(what) == 3 else _letters.get(what, what)

    return _escape.sub(character, text)


def words_of(line: str) -> List[str]:
    """The words of a printed line. A text in quotes is one word, without its quotes and escapes."""
    return [
        found.group(2) if found.group(2) is not None else _unescaped(found.group(1))
        for found in _word.finditer(line)
    ]
