"""The program as a process: lines go in, one answer comes out for each.

Everything that may block is in one loop that reads both outputs while it writes, so a program that
writes much, reads nothing, dies or hangs costs an exception and no test run.
"""

from __future__ import annotations

import os
import select
import signal
import subprocess
import threading
import time
from typing import List, Optional, Sequence

from .answer import Answer, check_greeting, read_answer
from .faults import OrvanelError, ProgramDied, ProtocolError, StartFailed

max_answer_bytes = 64 * 1024 * 1024
max_line_bytes = 1024 * 1024
max_last_words = 8 * 1024
_chunk = 65536
_grace_s = 2.0  # for an end that was asked for, before the next way to ask


def words_of_end(status: int) -> str:
    """How a process with this status ended, as a clause."""
    if status >= 0:
        return f"ended with status {status}"
    try:
        name = f" ({signal.Signals(-status).name})"
    except ValueError:
        name = ""
    return f"was ended by signal {-status}{name}"


def _await_end(process: "subprocess.Popen[bytes]", seconds: float) -> bool:
    """Waits for the end of a process, and tells whether it came in time."""
    if not hasattr(os, "pidfd_open"):
        try:
            process.wait(seconds)
        except subprocess.TimeoutExpired:
            return False
        return True
    # Popen's own wait with a limit sleeps a millisecond and more at a time.
    try:
        fd = os.pidfd_open(process.pid)
    except OSError:
        return process.poll() is not None
    try:
        poll = select.poll()
        poll.register(fd, select.POLLIN)
        return bool(poll.poll(seconds * 1000))
    finally:
        os.close(fd)


class Talk:
    """One run of the program, from its greeting to its end.

    Threads may share it: one line is asked after the other. A process that was forked off may not.
    """

    def __init__(self, command: Sequence[str], time_limit_s: float) -> None:
        """Starts the command. `time_limit_s` is how long one answer may take on the real clock."""
        self._owner = os.getpid()
        self._process: Optional["subprocess.Popen[bytes]"] = None
        self._lock = threading.RLock()
        self._time_limit_s = time_limit_s
        self._out = bytearray()  # what has come of answers
        self._error_line = bytearray()  # what has come of a line of standard error
        self._last_words = b""
        self._to_write = b""
        self._fault: Optional[OrvanelError] = None  # why nothing can be asked any more
        self.trace_lines: List[bytes] = []  # JSON lines of --trace-json
        self.lines_sent = 0
        self.program = os.path.basename(command[0])
        try:
            # A session of its own: Ctrl+C is for the tests, which then end the program.
            self._process = subprocess.Popen(
                command, bufsize=0, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                stderr=subprocess.PIPE, start_new_session=True)  # fmt: skip
        except (OSError, ValueError) as fault:
            raise StartFailed(f"{command[0]} can't be started: {fault}") from None
        self._open_pipes(self._process)
        try:
            check_greeting(self._read_line(time_limit_s))
        except ProgramDied as fault:
            raise StartFailed(fault.last_words or str(fault)) from None
        except BaseException:
            self.kill()
            raise

    def _open_pipes(self, process: "subprocess.Popen[bytes]") -> None:
        assert process.stdin and process.stdout and process.stderr
        self._in_fd, self._out_fd = process.stdin.fileno(), process.stdout.fileno()
        self._err_fd = process.stderr.fileno()
        self._poll = select.poll()
        for fd in (self._out_fd, self._err_fd):
            os.set_blocking(fd, False)
            self._poll.register(fd, select.POLLIN)
        os.set_blocking(self._in_fd, False)

    @property
    def pid(self) -> int:
        """The number of the process, 0 if there is none any more."""
        return self._process.pid if self._process is not None else 0

    def ask(self, lines: Sequence[bytes], extra_s: float = 0.0) -> List[Answer]:
        """The answers to these lines, which have no ends. Each may take the time limit and
        `extra_s`. Raises ProgramDied or ProtocolError, and from then on always the same one."""
        self._check_owner()
        for line in lines:
            if b"\n" in line or b"\r" in line or len(line) > max_line_bytes:
                raise ValueError(f"no line of at most {max_line_bytes} bytes: {line[:60]!r}...")
        with self._lock:
            if self._fault is not None:
                raise self._fault
            try:
                return self._exchange(lines, extra_s)
            except BaseException as fault:
                # Whatever has cut the exchange, the next answer wouldn't be that of the next line.
                self._fault = self._fault or (
                    fault if isinstance(fault, OrvanelError)
                    else ProgramDied(f"{self.program} was ended since a talk with it was cut short")
                )  # fmt: skip
                self.kill()
                raise

    def _exchange(self, lines: Sequence[bytes], extra_s: float) -> List[Answer]:
        self._to_write += b"".join(line + b"\n" for line in lines)
        self._write_some()
        answers = []
        for line in lines:
            self.lines_sent += 1
            answer = self._read_line(self._time_limit_s + extra_s, line)
            answers.append(read_answer(answer, self.lines_sent))
        return answers

    def _read_line(self, limit_s: float, asked: bytes = b"") -> bytes:
        """The next line of standard output."""
        line = self._wait_line(limit_s, asked)
        if line is None:
            raise self._too_late(asked, limit_s)
        return line

    def _wait_line(self, limit_s: float, asked: bytes) -> Optional[bytes]:
        """The next line of standard output, None if it hasn't come in time."""
        end = time.monotonic() + limit_s
        searched = 0
        while True:
            place = self._out.find(b"\n", searched)
            if place >= 0:
                line = bytes(self._out[:place])
                del self._out[: place + 1]
                return line
            searched = len(self._out)
            if searched > max_answer_bytes:
                raise ProtocolError(f"an answer of {self.program} has no end")
            left = end - time.monotonic()
            if left <= 0:
                return None
            if not self._move_bytes(left):
                raise self._died(asked)

    def _move_bytes(self, seconds: float) -> bool:
        """Waits until bytes have moved, `seconds` at most. False: no answer can come any more."""
        if self._to_write:
            self._poll.register(self._in_fd, select.POLLOUT)
        ready = self._poll.poll(min(seconds, 3600.0) * 1000 + 1)
        if self._to_write:
            self._poll.unregister(self._in_fd)
        goes_on = True
        for fd, _ in ready:
            if fd == self._in_fd:
                self._write_some()
            else:
                piece = self._read_some(fd)
                if piece == b"":
                    self._poll.unregister(fd)
                    goes_on = goes_on and fd != self._out_fd
        return goes_on

    def _write_some(self) -> None:
        try:
            self._to_write = self._to_write[os.write(self._in_fd, self._to_write[:_chunk]) :]
        except BlockingIOError:
            pass
        except BrokenPipeError:
            self._to_write = b""  # its end shows on its output

    def _read_some(self, fd: int) -> Optional[bytes]:
        """Takes what has come. Nothing but b"" means the end, None that there is nothing yet."""
        try:
            piece = os.read(fd, _chunk)
        except BlockingIOError:
            return None
        if fd == self._out_fd:
            self._out += piece
        else:
            self._take_error(piece)
        return piece

    def _take_error(self, piece: bytes) -> None:
        """Lines of the trace are kept, of all others the end."""
        self._error_line += piece
        *whole, rest = self._error_line.split(b"\n")
        self._error_line = rest if len(rest) <= max_answer_bytes else bytearray()
        for line in whole:
            if line.startswith(b'{"time":'):
                self.trace_lines.append(bytes(line))
            else:
                self._last_words = (self._last_words + bytes(line) + b"\n")[-max_last_words:]

    def read_trace(self) -> List[bytes]:
        """The lines of the trace so far."""
        with self._lock:
            if self._process is not None and self._owner == os.getpid():
                while self._read_some(self._err_fd):
                    pass
            return self.trace_lines

    def _read_last_words(self) -> None:
        """What is there of standard error. What the program started may hold it open and write on."""
        for _ in range(64):
            if not self._read_some(self._err_fd):
                break

    def _died(self, asked: bytes) -> ProgramDied:
        assert self._process is not None
        if not _await_end(self._process, _grace_s):  # it has closed its output and goes on
            self._process.kill()
        self._process.wait()
        self._read_last_words()
        status = self._process.returncode
        return self._death(words_of_end(status), status, asked)

    def _too_late(self, asked: bytes, limit_s: float) -> ProgramDied:
        assert self._process is not None
        self._process.kill()
        self._process.wait()
        self._read_last_words()
        return self._death(f"gave no answer within {limit_s:g} s and was killed", -9, asked)

    def _death(self, how: str, status: int, asked: bytes) -> ProgramDied:
        words = (self._last_words + bytes(self._error_line))[-max_last_words:]
        last_words = words.decode("utf-8", "backslashreplace").strip()
        at = asked[:200].decode("utf-8", "backslashreplace")
        message = f"{self.program} {how}" + (f", at: {at}" if at else "")
        return ProgramDied(message + (f"\n{last_words}" if last_words else ""), status, last_words)

    def _check_owner(self) -> None:
        if os.getpid() != self._owner:
            raise OrvanelError(
                f"this module belongs to process {self._owner}: a process that was forked off starts "
                "a Module of its own")  # fmt: skip

    def end(self) -> Optional[Answer]:
        """Ends the program in order. Its last answer; None if it has ended before. Raises ProgramDied
        and ProtocolError; there is no process after it in any case."""
        if self._owner != os.getpid():
            return None
        with self._lock:
            process = self._process
            if process is None or self._fault is not None:
                self.kill()
                return None
            self._fault = OrvanelError("the module is closed")
            try:
                return read_answer(self._last_line(process), 0)
            finally:
                self.kill()

    def _last_line(self, process: "subprocess.Popen[bytes]") -> bytes:
        assert process.stdin
        process.stdin.close()
        line = self._wait_line(_grace_s, b"")
        if line is None:
            # Another process that was forked off holds the pipe open, or the program is at work.
            process.terminate()
            line = self._read_line(self._time_limit_s)
        _await_end(process, _grace_s)  # if it doesn't end, its last word is said all the same
        return line

    def kill(self) -> None:
        """Ends the process at once if there is one, and leaves neither it nor a pipe."""
        process, self._process = self._process, None
        if process is None:
            return
        for pipe in (process.stdin, process.stdout, process.stderr):
            if pipe is not None:
                pipe.close()
        if self._owner == os.getpid():
            if process.poll() is None:
                process.kill()
            process.wait()
        else:
            process.returncode = 0  # not ours: its parent waits for it

    def __del__(self) -> None:
        if getattr(self, "_process", None) is not None:
            self.kill()
