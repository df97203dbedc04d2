"""A serial line as a device opens it: a terminal device, a pseudo terminal, or TCP."""

from __future__ import annotations

import os
import re
import select
import socket
import time
from typing import Any, Callable

from .faults import LineError

default_baud = 115200
_retry_s = 0.02


class Line:
    """An open line. Raises LineError where it has gone."""

    def __init__(self, name: str) -> None:
        self.name = name

    def write(self, data: bytes, seconds: float) -> None:
        """Writes all of it. Raises LineError if that takes longer."""
        raise NotImplementedError

    def read(self, max_bytes: int, seconds: float) -> bytes:
        """What has come, at most so much; b"" if nothing does in time."""
        raise NotImplementedError

    def close(self) -> None:
        """Closes it. May be called again."""
        raise NotImplementedError


class _DescriptorLine(Line):
    """A line behind a descriptor that doesn't block."""

    def __init__(self, name: str, fd: int, close: Callable[[], None]) -> None:
        super().__init__(name)
        self._fd = fd
        self._close = close

    def _ready(self, event: int, seconds: float) -> bool:
        if self._fd < 0:
            raise LineError(f"{self.name} is closed")
        poll = select.poll()
        poll.register(self._fd, event)
        return bool(poll.poll(max(0.0, seconds) * 1000))

    def write(self, data: bytes, seconds: float) -> None:
        end = time.monotonic() + seconds
        while data:
            if not self._ready(select.POLLOUT, end - time.monotonic()):
                raise LineError(f"{self.name} took no bytes for {seconds:g} s")
            try:
                data = data[os.write(self._fd, data) :]
            except BlockingIOError:
                pass
            except OSError as fault:
                raise LineError(f"{self.name} has gone: {fault.strerror}") from None

    def read(self, max_bytes: int, seconds: float) -> bytes:
        if not self._ready(select.POLLIN, seconds):
            return b""
        try:
            data = os.read(self._fd, max_bytes)
        except BlockingIOError:
            return b""
        except OSError as fault:
            raise LineError(f"{self.name} has gone: {fault.strerror}") from None
        if not data:
            raise LineError(f"{self.name} has gone: the other end has closed it")
        return data

    def close(self) -> None:
        if self._fd >= 0:
            self._fd = -1
            self._close()


class _PortLine(Line):
    """A port that pyserial has opened."""

    def __init__(self, name: str, port: Any, fault: Any) -> None:
        super().__init__(name)
        self._port = port
        self._fault = fault

    def write(self, data: bytes, seconds: float) -> None:
        try:
            self._port.write_timeout = seconds
            self._port.write(data)
        except (OSError, self._fault) as fault:
            raise LineError(f"{self.name} takes no bytes: {fault}") from None

    def read(self, max_bytes: int, seconds: float) -> bytes:
        try:
            self._port.timeout = max(0.0, seconds)
            data = bytes(self._port.read(1))
            if data and max_bytes > 1:
                data += bytes(self._port.read(min(max_bytes - 1, self._port.in_waiting)))
            return data
        except (OSError, self._fault) as fault:
            raise LineError(f"{self.name} has gone: {fault}") from None

    def close(self) -> None:
        self._port.close()


def _open_tcp(name: str) -> Line:
    found = re.fullmatch(r"tcp:(?:(\[[^]]*\]|[^:]*):)?(\d{1,5})", name)
    if not found or int(found.group(2)) > 65535:
        raise ValueError(f"{name!r} is no tcp:PORT or tcp:HOST:PORT")
    host = (found.group(1) or "127.0.0.1").strip("[]")
    line = socket.create_connection((host, int(found.group(2))), timeout=10)
    line.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    line.setblocking(False)
    return _DescriptorLine(name, line.fileno(), line.close)


def _open_terminal(name: str, path: str, baud: int) -> Line:
    """A terminal device by the system's own means, for pseudo terminals and where pyserial is not."""
    import termios
    import tty

    fd = os.open(path, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK | os.O_CLOEXEC)
    try:
        tty.setraw(fd)
        settings = termios.tcgetattr(fd)
        speed = getattr(termios, f"B{baud}", None)
        if speed is None:
            raise ValueError(f"{baud} baud is no speed of this system")
        settings[2] |= termios.CLOCAL | termios.CREAD
        settings[4] = settings[5] = speed
        termios.tcsetattr(fd, termios.TCSANOW, settings)
    except termios.error as fault:
        os.close(fd)
        raise OSError(*fault.args) from None
    except BaseException:
        os.close(fd)
        raise
    return _DescriptorLine(name, fd, lambda: os.close(fd))


def _open_port(name: str) -> Line:
    path, _, speed = name.partition("@")
    if speed and not speed.isdigit():
        raise ValueError(f"{name!r} has no speed after its @")
    baud = int(speed) if speed else default_baud
    if os.path.realpath(path).startswith("/dev/pts/"):
        return _open_terminal(name, path, baud)
    try:
        import serial
    except ImportError:
        return _open_terminal(name, path, baud)
    os.stat(path)  # its words are plainer than those of pyserial
    try:
        return _PortLine(name, serial.Serial(path, baud, rtscts=True), serial.SerialException)
    except serial.SerialException as fault:
        raise LineError(f"{name} can't be opened: {fault}") from None


def open_line(name: str, within_s: float = 10.0) -> Line:
    """Opens `tcp:PORT`, `tcp:HOST:PORT`, or a device by its path, `/dev/ttyUSB0` or
    `/dev/ttyUSB0@19200`; 115200 baud if not given. One that isn't there yet is waited for, `within_s`
    seconds. Real devices go through pyserial if that is there. Raises LineError or ValueError.
    """
    end = time.monotonic() + within_s
    while True:
        try:
            return _open_tcp(name) if name.startswith("tcp:") else _open_port(name)
        except (ConnectionRefusedError, FileNotFoundError) as fault:
            if time.monotonic() >= end:
                raise LineError(f"{name} can't be opened: {fault.strerror}") from None
            time.sleep(_retry_s)
        except OSError as fault:
            raise LineError(f"{name} can't be opened: {fault.strerror or fault}") from None
