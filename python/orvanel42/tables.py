"""What the module has to touch and to read, as records."""

from __future__ import annotations

from typing import Callable, List, NamedTuple, Sequence, TypeVar

from .faults import ProtocolError
from .lines import words_of

Record = TypeVar("Record")


class Text(NamedTuple):
    """A text that can be read on the glass. The corners are dots of its rectangle, included."""

    x1: int
    y1: int
    x2: int
    y2: int
    text: str
    font: int  # number of the font, 0 the built-in one
    zoom_x: int  # 1 to 4
    zoom_y: int
    upward: bool  # turned by 90 degrees
    inverted: bool


class Area(NamedTuple):
    """A row of the touch table. The corners are dots, included."""

    number: int  # from 1
    type: str  # key, switch, bar, draw, opener, list or report
    x1: int
    y1: int
    x2: int
    y2: int
    down_code: int  # of a press, 0 for none
    up_code: int  # of a release
    label: str
    state: str  # such as `up`, `on`, `off group 2`, `bar 3`, `closed`


class Bar(NamedTuple):
    """A bar graph. The corners are dots, included."""

    number: int  # 1 to 32
    kind: str  # bar or pointer
    direction: str  # left, right, up or down
    x1: int
    y1: int
    x2: int
    y2: int
    low: int  # the lowest value of its scale
    high: int
    value: int


class MenuRow(NamedTuple):
    """A row of the open menu box. The corners are dots, included."""

    number: int  # from 1
    kind: str  # `list` for the finger, `box` of the device
    x1: int
    y1: int
    x2: int
    y2: int
    code: int  # 0 for none
    text: str
    selected: bool


def _text(w: List[str]) -> Text:
    at = w.index("font", 6)
    return Text(int(w[1]), int(w[2]), int(w[3]), int(w[4]), w[5], int(w[at + 1]), int(w[at + 3]),
                int(w[at + 4]), "upward" in w[at + 5 :], "inverted" in w[at + 5 :])  # fmt: skip


def _area(w: List[str]) -> Area:
    return Area(int(w[1]), w[2], int(w[3]), int(w[4]), int(w[5]), int(w[6]), int(w[7]), int(w[8]),
                w[9], " ".join(w[10:]))  # fmt: skip


def _bar(w: List[str]) -> Bar:
    return Bar(int(w[1]), w[2], w[3], int(w[4]), int(w[5]), int(w[6]), int(w[7]), int(w[8]),
               int(w[9]), int(w[10]))  # fmt: skip


def _menu_row(w: List[str]) -> MenuRow:
    return MenuRow(int(w[1]), w[2], int(w[3]), int(w[4]), int(w[5]), int(w[6]), int(w[7]), w[8],
                   "selected" in w[9:])  # fmt: skip


def _rows(printed: Sequence[str], read: Callable[[List[str]], Record]) -> List[Record]:
    try:
        return [read(words_of(line)) for line in printed[1:]]
    except (ValueError, IndexError):
        raise ProtocolError(f"the program prints a table otherwise: {printed[:3]!r}") from None


def read_texts(printed: Sequence[str]) -> List[Text]:
    return _rows(printed, _text)


def read_areas(printed: Sequence[str]) -> List[Area]:
    return _rows(printed, _area)


def read_bars(printed: Sequence[str]) -> List[Bar]:
    return _rows(printed, _bar)


def read_menu_rows(printed: Sequence[str]) -> List[MenuRow]:
    return _rows(printed, _menu_row)
