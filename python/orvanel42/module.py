"""The module: sends, touches, reads, compares."""

from __future__ import annotations

import json
import os
import re
import sys
from types import TracebackType
from typing import Any, Callable, Dict, List, NamedTuple, Optional, Sequence, Tuple, Type, Union

from . import lines, tables
from .answer import Answer
from .faults import Fault, FaultRecord, OrvanelError, fault_of
from .finder import Path, find_command
from .lines import Data, Dot, Rectangle, quoted, quoted_path, whole_number
from .process import Talk
from .screen import Screen, read_screen
from .tables import Area, Bar, MenuRow, Text

Target = Union[str, int, Dot, Area]
Picture = Union[str, "os.PathLike[str]"]

max_places = 100000  # of lines whose place among the tests is kept
_place = re.compile(r"^-:(\d+)(?=:)|(?<=\()-:(\d+)(?=\)$)", re.MULTILINE)


class Comparison(NamedTuple):
    """A picture that was compared, for who keeps a report."""

    golden: str  # the file
    actual: Screen
    failed: bool
    files: Tuple[str, ...]  # that were written about it


def strictness(strict: Union[bool, str]) -> List[str]:
    """The option of the program for `strict`. Raises ValueError."""
    if strict is False or strict in ("off", "no"):
        return []
    if strict is True or strict == "remarks":
        return ["--strict"]
    if strict == "hints":
        return ["--strict=hints"]
    raise ValueError(f"strict is True, False, 'remarks' or 'hints', not {strict!r}")


def _caller() -> Tuple[str, int]:
    """The place in the tests that called this package."""
    frame = sys._getframe(1)
    while frame.f_back is not None and frame.f_globals.get("__package__") == __package__:
        frame = frame.f_back
    return frame.f_code.co_filename, frame.f_lineno


class Module:
    """A simulated module of its own, from its power-on to `close`.

    It runs in module time: nothing takes real time, and the same test gives the same bytes, dots and
    times wherever it runs. With `serial` it runs on the real clock.

    What is not as expected raises a Fault at once: ExpectationFailed, GaveUp, Mistake or WrongLine,
    with the text that a scenario tells. If the program dies, ProgramDied has its last words.
    """

    def __init__(
        self,
        *,
        kit: Optional[Path] = None,
        image: Optional[Path] = None,
        mem: Optional[int] = None,
        serial: Optional[str] = None,
        protocol: Optional[str] = None,
        strict: Union[bool, str] = True,
        update: Union[bool, str] = False,
        trace: bool = False,
        out: Optional[Path] = None,
        settle: bool = True,
        program: Optional[Path] = None,
        options: Sequence[str] = (),
        time_limit: float = 300.0,
    ) -> None:
        """Starts the program.

        kit: a kit that is built into the EEPROM, or
        image: an EEPROM image; without either the EEPROM is blank.
        mem: its size in KiB, 32 or 64; 32 if not given. A kit brings its own.
        serial: what stands behind COM1, on the real clock: `pty`, `pty:LINK`, `tcp:PORT`,
            `tcp:HOST:PORT` or a device. `line_name` is where the device at the other end connects.
        protocol: `plain` or `pactlink`, the default.
        strict: a remark of the trace is a Mistake; with `hints` a hint is one too, with False neither.
        update: pictures are written, not compared: True, or `missing` for those that aren't there.
        trace: what the module makes of each byte is kept for `trace`.
        out: the folder for pictures of failed comparisons; beside the expected ones if not given.
        settle: whether to wait until the module is quiet after its power-on.
        program: the program or its folder; else ORVANEL42_BIN or the path has it.
        options: further options of orvanel42-headless.
        time_limit: seconds of the real clock after which a program that doesn't answer is killed.

        Raises ProgramNotFound, StartFailed with the program's own words, or ValueError; and a Fault for
        what shows at the power-on, such as a Mistake in the kit's macros.
        """
        self.is_real_time = serial is not None
        """Whether the real clock runs."""
        self.events: List[str] = []
        """What the module did on its own: `beep`, `message "CAPTION" "TEXT"`; empty it as you like."""
        self.ms = 0.0
        """Milliseconds of the module's clock after the last line."""
        self.line_name = ""
        """Where the device at the other end of `serial` connects: a path, or `tcp:HOST:PORT`."""
        self.golden: Optional[Callable[[str], str]] = None
        """The file for the name of a picture, "" for none; the pytest plugin sets it."""
        self.on_comparison: Optional[Callable[[Comparison], None]] = None
        """Gets each picture that was compared; the pytest plugin sets it."""
        self.update_words = "update='missing'"
        self._places: Dict[int, Tuple[str, int]] = {}
        self._trace_read: List[Dict[str, Any]] = []
        self._traces = trace
        self._folder = os.getcwd()
        command = find_command(program) + ["--json"] + strictness(strict)
        for name, path in (("--kit", kit), ("--image", image), ("--out", out)):
            if path is not None:
                command += [name, os.path.abspath(os.fspath(path))]
        if mem is not None:
            command += ["--mem", whole_number(mem, "mem")]
        if serial is not None:
            command += ["--realtime", "--serial", serial]
        if protocol is not None:
            command += ["--protocol", protocol]
        if update not in (True, False, "missing"):
            raise ValueError(f"update is True, False or 'missing', not {update!r}")
        if update:
            command.append("--update-missing" if update == "missing" else "--update")
        if trace:
            command += ["--trace-json", "-"]
        self._talk = Talk([*command, *options, "-"], time_limit)
        try:
            self._begin(settle)
        except BaseException:
            self._talk.kill()
            raise

    def _begin(self, settle: bool) -> None:
        """Lets the power-on pass. The line opens with the first command, which then has its name."""
        if settle:
            self._do("settle", extra_ms=60000)
        elif self.is_real_time:
            self._do("time")
        for event in self.events:
            if event.startswith("serial "):
                name = event[len("serial ") :]
                self.line_name = name if "/" in name else "tcp:" + name

    def __enter__(self) -> "Module":
        return self

    def __exit__(
        self,
        kind: Optional[Type[BaseException]],
        fault: Optional[BaseException],
        where: Optional[TracebackType],
    ) -> None:
        __tracebackhide__ = True
        if fault is None:
            self.close()
        else:
            self._talk.kill()

    def close(self) -> None:
        """Ends the module. May be called again. Raises a Fault for what showed only at the end, and
        ProgramDied if the program had died unnoticed."""
        __tracebackhide__ = True
        last = self._talk.end()
        if last is not None:
            self._take(last)

    # Talking

    def command(self, line: str) -> List[str]:
        """Plays any line of a scenario (docs/reference/scenarios.md). What it prints, line by line."""
        __tracebackhide__ = True
        return self._do(line)

    def _do(self, *asked: str, extra_ms: float = 0) -> List[str]:
        """Plays lines. What the first one prints."""
        __tracebackhide__ = True
        encoded = [os.fsencode(line) if "\udc80" <= max(line, default=" ") <= "\udcff"
                   else line.encode("utf-8", "surrogateescape") for line in asked]  # fmt: skip
        place = _caller()
        for number in range(self._talk.lines_sent + 1, self._talk.lines_sent + 1 + len(asked)):
            self._places[number] = place
            self._places.pop(number - max_places, None)
        answers = self._talk.ask(encoded, extra_ms / 1000 if self.is_real_time else 0)
        self._take(*answers)
        return list(answers[0].printed)

    def _take(self, *answers: Answer) -> None:
        """Keeps what answers tell, and raises what they find fault with."""
        __tracebackhide__ = True
        records: List[FaultRecord] = []
        for answer in answers:
            self.ms = answer.ms
            self.events += answer.events
            records += [self._in_words_of_tests(record) for record in answer.faults]
        if records:
            raise fault_of(records)

    def _in_words_of_tests(self, record: FaultRecord) -> FaultRecord:
        def place(found: "re.Match[str]") -> str:
            known = self._places.get(int(found.group(1) or found.group(2)))
            if known is None:
                return found.group(0)
            return f"{known[0].replace(os.path.join(self._folder, ''), '', 1)}:{known[1]}"

        message = _place.sub(place, record.message)
        return record._replace(message=message.replace("--update-missing", self.update_words))

    def _settled(self, line: str, settle: bool) -> None:
        __tracebackhide__ = True
        if settle:
            self._do(line, "settle", extra_ms=60000)
        else:
            self._do(line)

    # Bytes

    def send(self, *data: Data, settle: bool = True) -> None:
        """Sends bytes to the module, of one call 80000 at most, and waits until it has taken them.

        Pieces are bytes, text in ASCII, or numbers 0 to 255: `send("#ZL10,10,Hi\\n")`,
        `send(b"\\x1bZL\\x0a\\x0aHi\\0")`, `send(0x1B, "?")`. settle: see `settle`.
        """
        __tracebackhide__ = True
        whole = lines.data_bytes(data)
        if len(whole) > lines.max_send_bytes:
            raise ValueError(
                f"{len(whole)} bytes are more than the {lines.max_send_bytes} that the module has room "
                "for: send them in parts, or feed a file"
            )
        self._settled("send " + (whole.hex() or '""'), settle)

    def feed(self, path: Path, settle: bool = True) -> None:
        """Feeds a file of commands, block by block each 100 ms, and waits until all is taken."""
        __tracebackhide__ = True
        self._settled("feed " + quoted_path(path), settle)

    def open(self, path: Path, x: int = 0, y: int = 0, settle: bool = True) -> None:
        """Opens a file as the window does: a picture is drawn with its corner at dot x, y; a kit is
        built and fed; all else is fed."""
        __tracebackhide__ = True
        at = " " + lines.numbers((x, y), "a corner", 2)
        self._settled(f"open {quoted_path(path)}{at}", settle)

    def settle(self, within: int = 60000) -> None:
        """Waits until the module has taken no byte for 20 ms of its time and none is left for it.
        Raises GaveUp after `within` ms. What sends or touches does so by itself."""
        __tracebackhide__ = True
        self._do("settle " + whole_number(within, "within"), extra_ms=within)

    def answers(self) -> bytes:
        """Takes all that the module has answered; b"" if nothing waits."""
        __tracebackhide__ = True
        return self._bytes_of(self._do("answers"))

    def expect_answers(self, *data: Data) -> None:
        """Takes all answers: they have to be these bytes, without data none."""
        __tracebackhide__ = True
        self._do("expect-answers " + lines.data_bytes(data).hex())

    def await_answers(self, *data: Data, within: int = 5000) -> None:
        """Waits `within` ms of the module's time for answers that begin with these bytes, and takes
        these alone. Other bytes in their place fail at once."""
        __tracebackhide__ = True
        whole = lines.data_bytes(data).hex()
        self._do(f"await-answers {whole} within {whole_number(within, 'within')}", extra_ms=within)

    def allow(self, *names: str) -> None:
        """What is found of these kinds with the next call is no Mistake. The name of a kind stands in
        brackets after what was found."""
        __tracebackhide__ = True
        for name in names:
            self._do("allow " + name)

    @staticmethod
    def _bytes_of(printed: Sequence[str]) -> bytes:
        return bytes.fromhex(printed[0].partition(" ")[2]) if printed else b""

    # Touch

    @staticmethod
    def _target(target: Target, y: Optional[int]) -> str:
        if y is not None or (isinstance(target, tuple) and not isinstance(target, Area)):
            dot = (target, y) if y is not None else target
            return lines.numbers(dot, "a dot", 2)  # type: ignore[arg-type]
        if isinstance(target, Area):
            if target.label:
                return quoted(target.label)
            return lines.numbers(
                ((target.x1 + target.x2) // 2, (target.y1 + target.y2) // 2), "a dot", 2
            )
        if isinstance(target, str):
            return quoted(target)
        return whole_number(target, "a code")

    def tap(
        self, target: Target, y: Optional[int] = None, *, ms: int = 0, settle: bool = True
    ) -> None:
        """Puts the finger on a key or switch and takes it off as soon as the module has seen it.

        target: the label, the code, the dot as `tap(x, y)` or `tap((x, y))`, or a row of `areas`.
        ms: how long the finger stays at least, in ms of the module's time.
        Raises ExpectationFailed if there is no such thing, or more than one.
        """
        __tracebackhide__ = True
        lasting = f" for {whole_number(ms, 'ms')}" if ms else ""
        self._settled(f"tap {self._target(target, y)}{lasting}", settle)

    def hold(self, target: Target, y: Optional[int] = None, *, settle: bool = True) -> None:
        """Puts the finger there and leaves it for `lift`; one that is down slides there."""
        __tracebackhide__ = True
        self._settled("hold " + self._target(target, y), settle)

    def lift(self, settle: bool = True) -> None:
        """Takes the finger off."""
        __tracebackhide__ = True
        self._settled("lift", settle)

    def drag(
        self, target: Union[str, int, Dot], to: Union[int, str, Dot], *, settle: bool = True
    ) -> None:
        """Drags a touch bar, by the text nearest to it or its number, to a value of its scale or to
        percent of it, `drag("Volume", "70 %")`; or the finger from dot to dot."""
        __tracebackhide__ = True
        if isinstance(target, tuple):
            goal = lines.numbers(to, "a dot", 2)  # type: ignore[arg-type]
        elif isinstance(to, str):
            if not re.fullmatch(r"\d{1,3} ?%", to):
                raise ValueError(f"a bar goes to a value, or to percent as '70 %', not to {to!r}")
            goal = to
        else:
            goal = whole_number(to, "a value")  # type: ignore[arg-type]
        self._settled(f"drag {self._target(target, None)} to {goal}", settle)

    def choose(self, row: Union[str, int], *, settle: bool = True) -> None:
        """Taps a row of the open menu list, by what it says or by its number from 1."""
        __tracebackhide__ = True
        self._settled("choose " + self._target(row, None), settle)

    def areas(self) -> List[Area]:
        """The touch table."""
        __tracebackhide__ = True
        return tables.read_areas(self._do("areas"))

    def bars(self) -> List[Bar]:
        """The bar graphs, whether or not they can be touched."""
        __tracebackhide__ = True
        return tables.read_bars(self._do("bars"))

    def menu_rows(self) -> List[MenuRow]:
        """The rows of the open menu box; none if there is none."""
        __tracebackhide__ = True
        return tables.read_menu_rows(self._do("menu-rows"))

    # The glass

    def text(self, inside: Optional[Rectangle] = None) -> str:
        """All that can be read on the glass, or in a part of it, as lines from top to bottom."""
        __tracebackhide__ = True
        rows: List[List[Text]] = []
        for text in sorted(self.texts(), key=lambda text: (text.y1, text.x1)):
            if inside is not None and not (
                inside[0] <= text.x1 and text.x2 <= inside[2]
                and inside[1] <= text.y1 and text.y2 <= inside[3]
            ):  # fmt: skip
                continue
            if rows and text.y1 <= (rows[-1][0].y1 + rows[-1][0].y2) // 2:
                rows[-1].append(text)
            else:
                rows.append([text])
        return "\n".join(" ".join(text.text for text in sorted(row)) for row in rows)

    def texts(self, phase: Optional[str] = None) -> List[Text]:
        """What can be read on the glass: each text with its place, font and zoom.

        phase: `main` or `flash`; else the one that shows. A look at all takes about 25 ms.
        """
        __tracebackhide__ = True
        return tables.read_texts(self._do("texts" + self._phase(phase)))

    def expect_text(
        self,
        text: str,
        *,
        inside: Optional[Rectangle] = None,
        near: Optional[str] = None,
        whole: bool = False,
        any_phase: bool = False,
    ) -> None:
        """The glass has to show the text, dot by dot in one of the module's fonts.

        inside: the part of the glass that has to hold it, (x1, y1, x2, y2), corners included.
        near: a text next to it, 60 dots beside and 20 above or below at most.
        whole: nothing may go on before or after it.
        any_phase: either phase of flashing will do, not only the present one.
        """
        __tracebackhide__ = True
        self._do(f"expect-text {quoted(text)}{lines.where(inside, near, whole, any_phase)}")

    def expect_no_text(
        self,
        text: str,
        *,
        inside: Optional[Rectangle] = None,
        near: Optional[str] = None,
        whole: bool = False,
        any_phase: bool = False,
    ) -> None:
        """The glass must not show the text; see `expect_text`."""
        __tracebackhide__ = True
        self._do(f"expect-no-text {quoted(text)}{lines.where(inside, near, whole, any_phase)}")

    def await_text(
        self,
        text: str,
        *,
        within: int = 5000,
        inside: Optional[Rectangle] = None,
        near: Optional[str] = None,
        whole: bool = False,
        any_phase: bool = False,
    ) -> None:
        """Waits `within` ms of the module's time until the glass shows the text; see `expect_text`."""
        __tracebackhide__ = True
        words = lines.where(inside, near, whole, any_phase)
        limit = f" within {whole_number(within, 'within')}"
        self._do(f"await-text {quoted(text)}{words}{limit}", extra_ms=within)

    def expect_terminal(self, row: int, text: str) -> None:
        """Row 1 to 16 of the terminal has to show the text and nothing after it."""
        __tracebackhide__ = True
        self._do(f"expect-terminal {whole_number(row, 'row')} {quoted(text)}")

    def screen(self, phase: Optional[str] = None) -> Screen:
        """What the glass shows; phase: `main` or `flash`, else the one that shows."""
        __tracebackhide__ = True
        return read_screen(self._do("dots" + self._phase(phase))[0])

    def expect_screen(
        self,
        picture: Picture = "",
        *,
        phase: Optional[str] = None,
        inside: Optional[Rectangle] = None,
        without: Sequence[Rectangle] = (),
    ) -> None:
        """The glass has to show this picture, or it is written where `update` says so.

        picture: a file that ends in .png or .pbm. In a test of the pytest plugin a path starts from
            the folder of the test; a plain name, or none, makes a file beside the test.
        phase: `main` or `flash`, else the one that shows.
        inside: the part that is compared, (x1, y1, x2, y2), corners included.
        without: parts that are left out.
        """
        __tracebackhide__ = True
        self._compare("expect-screen", picture, phase, lines.part(inside, without))

    def await_screen(
        self,
        picture: Picture = "",
        *,
        within: int = 5000,
        phase: Optional[str] = None,
        inside: Optional[Rectangle] = None,
        without: Sequence[Rectangle] = (),
    ) -> None:
        """Waits `within` ms of the module's time until the glass shows the picture."""
        __tracebackhide__ = True
        words = lines.part(inside, without) + f" within {whole_number(within, 'within')}"
        self._compare("await-screen", picture, phase, words, within)

    def _compare(
        self, command: str, picture: Picture, phase: Optional[str], words: str, extra_ms: int = 0
    ) -> None:
        __tracebackhide__ = True
        path = os.fspath(picture)
        if self.golden is not None:
            path = self.golden(path)
        elif not path:
            raise ValueError("a picture needs a file: expect_screen('start.png')")
        fault: Optional[Fault] = None
        try:
            self._do(f"{command} {quoted_path(path)}{self._phase(phase)}{words}", extra_ms=extra_ms)
        except Fault as found:
            fault = found
        if self.on_comparison is not None and not self.is_ended:
            files = fault.files if fault is not None else ()
            self.on_comparison(Comparison(path, self.screen(phase), fault is not None, files))
        if fault is not None:
            raise fault

    @staticmethod
    def _phase(phase: Optional[str]) -> str:
        if phase not in (None, "main", "flash"):
            raise ValueError(f"phase is 'main', 'flash' or None, not {phase!r}")
        return "" if phase is None else " " + phase

    # The rest

    def wait(self, ms: int) -> None:
        """Lets so many milliseconds of the module's time pass."""
        __tracebackhide__ = True
        self._do("wait " + whole_number(ms, "ms"), extra_ms=ms)

    def reset(self, kind: int = 0) -> None:
        """Resets the module, 0 (power-on) to 3, and waits until it is quiet."""
        __tracebackhide__ = True
        self._do("reset " + whole_number(kind, "kind"), "settle", extra_ms=60000)

    @property
    def trace(self) -> List[Dict[str, Any]]:
        """What the module made of each byte so far, in order: the objects that
        docs/users/trace.md describes. Raises OrvanelError unless the module began with trace=True."""
        if not self._traces:
            raise OrvanelError("no trace is kept: start the module with trace=True")
        raw = self._talk.read_trace()
        self._trace_read += [json.loads(line) for line in raw[len(self._trace_read) :]]
        return list(self._trace_read)

    @property
    def is_ended(self) -> bool:
        """Whether the program has ended."""
        return self._talk.pid == 0
