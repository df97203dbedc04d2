"""The objects that the program answers with, checked before anybody leans on them."""

from __future__ import annotations

import json
from typing import Any, Dict, List, NamedTuple, Tuple

from .faults import FaultRecord, ProtocolError

version = 1  # of the protocol


class Answer(NamedTuple):
    """What a line was answered."""

    ok: bool  # there are no faults
    ms: float  # of the module's clock
    events: Tuple[str, ...]  # what module and window did on their own
    printed: Tuple[str, ...]  # what the line prints
    faults: Tuple[FaultRecord, ...]
    status: int  # of the last answer: the exit status; 0 for all others


def _excerpt(line: bytes) -> str:
    text = line[:200].decode("utf-8", "backslashreplace")
    return repr(text) + ("..." if len(line) > 200 else "")


def _object(line: bytes) -> Dict[str, Any]:
    try:
        value = json.loads(line.decode("utf-8"))
    except (ValueError, RecursionError):
        value = None
    if not isinstance(value, dict):
        raise ProtocolError(f"the program answers with no JSON object: {_excerpt(line)}")
    return value


def _is_whole(value: Any) -> bool:
    return isinstance(value, int) and not isinstance(value, bool)


def _texts(value: Any) -> Tuple[str, ...]:
    if not isinstance(value, list) or not all(isinstance(text, str) for text in value):
        raise TypeError
    return tuple(value)


def _fault(value: Any) -> FaultRecord:
    texts = [value["kind"], value["message"], value["file"]]
    _texts(texts)
    if not _is_whole(value["line"]):
        raise TypeError
    return FaultRecord(texts[0], texts[1], texts[2], value["line"], _texts(value["files"]))


def check_greeting(line: bytes) -> None:
    """Raises ProtocolError unless the line greets in the version that this package speaks."""
    spoken = _object(line).get("protocol")
    if not _is_whole(spoken):
        raise ProtocolError(f"the program greets otherwise: {_excerpt(line)}")
    if spoken != version:
        raise ProtocolError(
            f"the program speaks version {spoken} of the protocol, and this package speaks "
            f"{version}: install the two of one release"
        )


def read_answer(line: bytes, number: int) -> Answer:
    """The answer to line `number`, or the last one if that is 0. Raises ProtocolError."""
    value = _object(line)
    try:
        if number > 0 and value["line"] != number:
            raise ProtocolError(f"line {number} is answered with {_excerpt(line)}")
        if number == 0 and value["end"] is not True:
            raise TypeError
        ok, ms, status = value["ok"], value["ms"], value["status"] if number == 0 else 0
        listed: List[Any] = value["faults"]
        faults = tuple(_fault(fault) for fault in listed)
        is_number = isinstance(ms, (int, float)) and not isinstance(ms, bool)
        if not isinstance(ok, bool) or not is_number or not _is_whole(status) or ok == bool(faults):
            raise TypeError
        return Answer(ok, float(ms), _texts(value["events"]), _texts(value["printed"]), faults, status)
    except (KeyError, TypeError, IndexError, OverflowError):
        raise ProtocolError(f"the program answers otherwise than agreed: {_excerpt(line)}") from None
