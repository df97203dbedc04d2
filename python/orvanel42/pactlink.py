"""Pactlink, the device's end: frames with a sum, and answers that come when they are asked for.

docs/reference/pactlink.md has the frames, byte by byte.
"""

from __future__ import annotations

import time
from typing import NamedTuple, Tuple

from .faults import LineError, ProtocolError
from .line import Line

data_start = 0x11
control_start = 0x12
acknowledged = 0x06
refused = 0x15
max_payload = 255
_retry_s = 0.01


def frame(start: int, payload: bytes) -> bytes:
    """A frame of data (0x11) or control (0x12) with at most 255 bytes. Raises ValueError."""
    if start not in (data_start, control_start):
        raise ValueError(f"a frame begins with 0x11 or 0x12, not with 0x{start:02X}")
    if len(payload) > max_payload:
        raise ValueError(f"a frame holds {max_payload} bytes, not {len(payload)}")
    body = bytes([start, len(payload)]) + payload
    return body + bytes([sum(body) & 0xFF])


class Waiting(NamedTuple):
    """What the module says of its buffers."""

    answers: int  # bytes that wait to be fetched; 128 stands for more
    room: int  # bytes that its input has room for, 250 for more


class Packet(NamedTuple):
    """How the module cuts its answers."""

    max_size: int  # the largest packet there is
    size: int  # bytes of an answer frame at most
    limit_s: float  # after which a frame that stalls is dropped; 0: never


class Pactlink:
    """The talk over one line. Each call may take `limit_s` seconds, then raises LineError."""

    def __init__(self, line: Line, limit_s: float) -> None:
        self._line = line
        self._limit_s = limit_s

    def _take(self, count: int, end: float, what: str) -> bytes:
        got = b""
        while len(got) < count:
            left = end - time.monotonic()
            piece = self._line.read(count - len(got), left) if left > 0 else b""
            if not piece:
                raise LineError(
                    f"{self._line.name}: {what} after {self._limit_s:g} s. Is the module set to "
                    "Pactlink, and selected (address 7 is from the start)?"
                )
            got += piece
        return got

    def _send(self, start: int, payload: bytes) -> float:
        """Sends a frame until the module takes it. When the call has to be over."""
        end = time.monotonic() + self._limit_s
        while True:
            self._line.write(frame(start, payload), self._limit_s)
            said = self._take(1, end, "no acknowledge")[0]
            if said == acknowledged:
                return end
            if said != refused:
                raise ProtocolError(f"{self._line.name}: 0x{said:02X} in place of an acknowledge")
            if time.monotonic() >= end:
                raise LineError(f"{self._line.name}: the module takes no frame: it has no room")
            time.sleep(_retry_s)  # its input is full; it works on it

    def _answer(self, start: int, end: float) -> bytes:
        """The payload of the frame that comes. One with a wrong sum is asked for again."""
        for attempt in range(3):
            if attempt > 0:
                end = self._send(control_start, b"R")
            head = self._take(2, end, "no answer frame")
            rest = self._take(head[1] + 1, end, "only a part of an answer frame")
            if head[0] == start and sum(head + rest[:-1]) & 0xFF == rest[-1]:
                return rest[:-1]
        raise ProtocolError(f"{self._line.name}: three answer frames in a row are damaged")

    def send(self, data: bytes) -> None:
        """Sends bytes to the module, in as many frames as it takes."""
        for at in range(0, len(data), max_payload):
            self._send(data_start, data[at : at + max_payload])

    def fetch(self) -> bytes:
        """Bytes that wait in the module, one packet at most; b"" if there are none."""
        return self._answer(data_start, self._send(control_start, b"S"))

    def waiting(self) -> Waiting:
        """How much waits, and how much room there is."""
        answers, room = self._pair(self._answer(control_start, self._send(control_start, b"I")))
        return Waiting(answers, room)

    def _pair(self, payload: bytes) -> Tuple[int, int]:
        if len(payload) != 2:
            raise ProtocolError(f"{self._line.name}: {payload!r} in place of two bytes")
        return payload[0], payload[1]

    def packet(self) -> Packet:
        """The packet size and time limit in force."""
        payload = self._answer(control_start, self._send(control_start, b"P"))
        if len(payload) != 3:
            raise ProtocolError(f"{self._line.name}: {payload!r} in place of three bytes")
        return Packet(payload[0], payload[1], payload[2] / 100)

    def set_packet(self, size: int, limit_s: float) -> None:
        """Packets of 1 to 64 bytes, and a time limit of 0 to 2.55 s in steps of 10 ms."""
        limit = round(limit_s * 100)
        if not 1 <= size <= 64 or not 0 <= limit <= 255:
            raise ValueError(f"packets have 1 to 64 bytes and 0 to 2.55 s, not {size} and {limit_s:g}")
        self._send(control_start, bytes([ord("D"), size, limit]))

    def select(self, address: int) -> None:
        """Selects the module with the address 0 to 255; all others on the line are deselected."""
        self._send(control_start, b"AS" + bytes([address]))

    def deselect(self, address: int) -> None:
        """Deselects it: it answers nothing but a `select`."""
        self._send(control_start, b"AD" + bytes([address]))
