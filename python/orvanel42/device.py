"""The device at the other end of the module's line."""

from __future__ import annotations

import time
from types import TracebackType
from typing import Optional, Type

from .faults import ExpectationFailed, FaultRecord
from .line import open_line
from .lines import Data, data_bytes
from .module import Module
from .pactlink import Packet, Pactlink, Waiting

_poll_s = 0.005


def _shown(data: bytes) -> str:
    return data.hex(" ").upper() if data else "nothing"


class Device:
    """Plays the device on a line, on the real clock: the module behind it is a simulated one or the
    hardware, and the test is the same.

    All calls raise LineError if the line has gone, or if Pactlink isn't answered in time.
    """

    def __init__(
        self,
        line: str,
        *,
        protocol: str = "pactlink",
        address: int = 7,
        time_limit: float = 60.0,
        module: Optional[Module] = None,
    ) -> None:
        """Opens the line.

        line: `tcp:PORT`, `tcp:HOST:PORT`, or a device such as `/dev/ttyUSB0`, `/dev/ttyUSB0@19200` or
            the link of a pseudo terminal. One that isn't there yet is waited for.
        protocol: `plain` or `pactlink`.
        address: of the module, 0 to 255; one that isn't 7 is selected first. Pactlink alone.
        time_limit: seconds that the module may take to answer a frame, or to take bytes.
        module: the simulated module behind the line, for tests that look at its glass.
        """
        if protocol not in ("plain", "pactlink"):
            raise ValueError(f"protocol is 'plain' or 'pactlink', not {protocol!r}")
        if not 0 <= address <= 255:
            raise ValueError(f"an address is 0 to 255, not {address!r}")
        self.module = module
        """The simulated module behind the line; None with hardware."""
        self._limit_s = time_limit
        self._line = open_line(line, time_limit)
        self._pactlink = Pactlink(self._line, time_limit) if protocol == "pactlink" else None
        self._got = b""  # answers that nobody has taken
        if self._pactlink is not None and address != 7:
            try:
                self._pactlink.select(address)
            except BaseException:
                self.close()
                raise

    def __enter__(self) -> "Device":
        return self

    def __exit__(
        self,
        kind: Optional[Type[BaseException]],
        fault: Optional[BaseException],
        where: Optional[TracebackType],
    ) -> None:
        self.close()

    def close(self) -> None:
        """Closes the line. May be called again."""
        self._line.close()

    @property
    def pactlink(self) -> Pactlink:
        """The frames themselves. Raises ValueError with plain bytes."""
        if self._pactlink is None:
            raise ValueError("this device speaks plain bytes")
        return self._pactlink

    def send(self, *data: Data) -> None:
        """Sends bytes: pieces are bytes, text in ASCII, or numbers 0 to 255."""
        __tracebackhide__ = True
        whole = data_bytes(data)
        if self._pactlink is not None:
            self._pactlink.send(whole)
        else:
            self._line.write(whole, self._limit_s)

    def _collect(self, seconds: float) -> bool:
        """Takes what has come, or comes within these seconds. Whether there was anything."""
        if self._pactlink is None:
            piece = self._line.read(65536, seconds)
        else:
            piece = self._pactlink.fetch()
            if not piece and seconds > 0:
                time.sleep(min(seconds, _poll_s))
        self._got += piece
        return bool(piece)

    def answers(self, quiet: int = 0) -> bytes:
        """Takes all that has come, and what comes until nothing has for `quiet` ms."""
        __tracebackhide__ = True
        end = time.monotonic() + quiet / 1000
        while True:
            if self._collect(max(0.0, end - time.monotonic())):
                end = time.monotonic() + quiet / 1000
            elif time.monotonic() >= end:
                break
        got, self._got = self._got, b""
        return got

    def receive(self, count: int, within: int = 5000) -> bytes:
        """Takes so many bytes of answers. Raises ExpectationFailed if fewer come `within` ms; these
        stay there."""
        __tracebackhide__ = True
        end = time.monotonic() + within / 1000
        while len(self._got) < count:
            left = end - time.monotonic()
            if not self._collect(max(0.0, left)) and left <= 0:
                raise self._failure(f"{count} bytes expected within {within} ms, and these came: "
                                    f"{_shown(self._got)}")  # fmt: skip
        got, self._got = self._got[:count], self._got[count:]
        return got

    def await_answers(self, *data: Data, within: int = 5000) -> None:
        """Waits `within` ms for answers that begin with these bytes, and takes these alone. Raises
        ExpectationFailed; other bytes in their place fail at once, and stay there."""
        __tracebackhide__ = True
        whole = data_bytes(data)
        end = time.monotonic() + within / 1000
        while not self._got.startswith(whole):
            left = end - time.monotonic()
            if not whole.startswith(self._got) or (not self._collect(max(0.0, left)) and left <= 0):
                raise self._failure(f"answers {_shown(whole)} expected within {within} ms, and these "
                                    f"came: {_shown(self._got)}")  # fmt: skip
        self._got = self._got[len(whole) :]

    def expect_answers(self, *data: Data, quiet: int = 100) -> None:
        """Takes all answers, until nothing has come for `quiet` ms: they have to be these bytes."""
        __tracebackhide__ = True
        whole, got = data_bytes(data), self.answers(quiet)
        if got != whole:
            raise self._failure(f"answers {_shown(whole)} expected, and these came: {_shown(got)}")

    @staticmethod
    def _failure(message: str) -> ExpectationFailed:
        return ExpectationFailed([FaultRecord("expectation", message, "", 0, ())])

    def waiting(self) -> Waiting:
        """What the module says of its buffers. Pactlink alone."""
        return self.pactlink.waiting()

    def packet(self) -> Packet:
        """How the module cuts its answers. Pactlink alone."""
        return self.pactlink.packet()
