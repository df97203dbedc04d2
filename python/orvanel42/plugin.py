"""The pytest plugin: the fixtures `module` and `device`, options, golden pictures, a report.

It works under pytest-xdist: the processes that run the tests hand their screens over with the results
of the tests, and the one that you started writes the page.
"""

from __future__ import annotations

import os
import subprocess
import xml.etree.ElementTree as ElementTree
from typing import Any, Dict, Generator, Iterator, List, Optional

import pytest

from . import report as pages
from .device import Device
from .faults import Fault, ProgramNotFound, StartFailed
from .finder import find_command, kit_compiler
from .golden import GoldenFiles, file_words
from .module import Comparison, Module

_kib = 1024
_kits = pytest.StashKey[Dict[str, str]]()
_screens = pytest.StashKey[List[Comparison]]()

_settings = (
    ("kit", "FILE", "the kit that each module begins with"),
    ("image", "FILE", "the EEPROM image that each module begins with"),
    ("strict", "remarks|hints|off", "which findings of the trace fail a test: remarks, if not given"),
    ("bin", "PATH", "the program orvanel42-headless, or its folder"),
    ("line", "LINE", "a line with hardware for the fixture `device`, such as /dev/ttyUSB0@19200"),
    ("protocol", "plain|pactlink", "what the fixture `device` speaks: pactlink, if not given"),
)


def pytest_addoption(parser: pytest.Parser) -> None:
    group = parser.getgroup("orvanel42", "screens of the HD Orvanel42 display")
    group.addoption("--orvanel-update", action="store_true",
                    help="write all golden pictures that tests compare with")  # fmt: skip
    group.addoption("--orvanel-update-missing", action="store_true",
                    help="write the golden pictures that are missing")  # fmt: skip
    group.addoption("--orvanel-report", metavar="DIR",
                    help="write DIR/index.html with all screens: expected, actual, difference; the "
                    "pictures of what failed go to DIR, too")  # fmt: skip
    for name, value, words in _settings:
        group.addoption("--orvanel-" + name, metavar=value, help=words)
        parser.addini("orvanel_" + name, words)


def pytest_configure(config: pytest.Config) -> None:
    config.addinivalue_line(
        "markers", "orvanel(**arguments): arguments of orvanel42.Module for the fixtures of this test")
    kits: Dict[str, str] = {}
    config.stash[_kits] = kits
    folder = config.getoption("--orvanel-report")
    if folder and not hasattr(config, "workerinput"):
        config.pluginmanager.register(_ReportWriter(config, os.path.abspath(folder)))


class _ReportWriter:
    """Gathers what the tests have shown, also from other processes."""

    def __init__(self, config: pytest.Config, folder: str) -> None:
        self._root = str(config.rootpath)
        self._folder = folder
        self._report = pages.Report()

    def pytest_runtest_logreport(self, report: pytest.TestReport) -> None:
        self._report.add(report.nodeid, getattr(report, "orvanel42_screens", []))

    def pytest_sessionfinish(self) -> None:
        self._report.write(self._folder, self._root)

    def pytest_terminal_summary(self, terminalreporter: Any) -> None:
        terminalreporter.write_line(f"screens: {os.path.join(self._folder, 'index.html')}")


@pytest.hookimpl(hookwrapper=True)  # type: ignore[misc]
def pytest_runtest_makereport(
    item: pytest.Item, call: "pytest.CallInfo[None]"
) -> Generator[None, Any, None]:
    outcome = yield
    if call.when != "call":
        return
    report = outcome.get_result()
    none: List[Comparison] = []
    screens = item.stash.get(_screens, none)
    report.orvanel42_screens = [pages.shown_of(screen) for screen in screens]
    fault = call.excinfo.value if call.excinfo is not None else None
    report.orvanel42_files = list(fault.files) if isinstance(fault, Fault) else []


def pytest_runtest_logreport(report: pytest.TestReport) -> None:
    """Pictures of a failed test belong to its JUnit case, in the words of GitLab."""
    files = getattr(report, "orvanel42_files", [])
    results = _junit_of_session() if files else None
    if results is None:
        return
    out = ElementTree.Element("system-out")
    out.text = "\n".join(f"[[ATTACHMENT|{os.path.relpath(file)}]]" for file in files)
    results.node_reporter(report).append(out)


_junit: List[Any] = []


def pytest_sessionstart(session: pytest.Session) -> None:
    _junit.clear()
    try:
        from _pytest.junitxml import xml_key
    except ImportError:
        return
    _junit.append(session.config.stash.get(xml_key, None))


def _junit_of_session() -> Any:
    """Writes the JUnit file; None if there is to be none."""
    return _junit[0] if _junit else None


class _Setup:
    """What a test wants of its module: options, then ini keys, then its mark."""

    def __init__(self, request: pytest.FixtureRequest) -> None:
        self._request = request
        self._config = request.config
        self._node = request.node
        self._file = str(request.path)
        mark = self._node.get_closest_marker("orvanel")
        self._marked: Dict[str, Any] = dict(mark.kwargs) if mark is not None else {}

    def setting(self, name: str) -> Optional[str]:
        option = self._config.getoption("--orvanel-" + name)
        value = option if option is not None else self._config.getini("orvanel_" + name)
        return None if not value else str(value)

    def _file_setting(self, name: str) -> Optional[str]:
        """A path: an option's starts from the present folder, an ini key's from that of its file."""
        option = self._config.getoption("--orvanel-" + name)
        if option is not None:
            return os.path.abspath(str(option))
        value = self._config.getini("orvanel_" + name)
        folder = self._config.inipath.parent if self._config.inipath else self._config.rootpath
        return os.path.join(str(folder), str(value)) if value else None

    def _memory(self, kit: Optional[str], image: Optional[str]) -> Dict[str, Any]:
        if kit is None:
            return {} if image is None else {"image": image, "mem": _mem_of(image)}
        made = self._image_of(kit)
        return {"image": made, "mem": _mem_of(made)}

    def _image_of(self, kit: str) -> str:
        """The image of a kit, which is built once in a run."""
        kits = self._config.stash[_kits]
        if kit not in kits:
            factory = self._request.getfixturevalue("tmp_path_factory")
            made = str(factory.getbasetemp() / f"orvanel-{len(kits)}.bin")
            command = find_command(self._program(), kit_compiler)
            done = subprocess.run([*command, "build", "--quiet", kit, "-o", made], check=False,
                                  stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT)  # fmt: skip
            if done.returncode != 0:
                words = done.stdout.decode("utf-8", "backslashreplace").strip()
                raise StartFailed(words or f"{command[0]} ended with status {done.returncode}")
            kits[kit] = made
        return kits[kit]

    def _program(self) -> Optional[str]:
        if "program" in self._marked:
            return str(os.fspath(self._marked["program"]))
        return self._file_setting("bin")

    def start(self, **more: Any) -> Module:
        """Starts the module of the test, or fails it in the words of the program."""
        try:
            return self._start(**more)
        except (ProgramNotFound, StartFailed, Fault) as fault:
            words = str(fault)
        pytest.fail(words, pytrace=False)

    def _start(self, **more: Any) -> Module:
        beside = os.path.dirname(self._file)
        kit, image = self._file_setting("kit"), self._file_setting("image")
        arguments: Dict[str, Any] = {}
        marked = dict(self._marked)
        if "kit" in marked or "image" in marked:
            kit, image = (
                os.path.join(beside, os.fspath(path)) if path is not None else None
                for path in (marked.pop("kit", None), marked.pop("image", None))
            )
        elif self._config.getoption("--orvanel-kit") is not None:
            image = None
        elif self._config.getoption("--orvanel-image") is not None:
            kit = None
        arguments.update(self._memory(kit, image))
        arguments.update(strict=self.setting("strict") or True, program=self._program(),
                         out=self._out(), update=self._update())  # fmt: skip
        arguments.update(more)
        arguments.update(marked)
        module = Module(**arguments)
        module.update_words = "--orvanel-update-missing"
        module.golden = GoldenFiles(self._file, self._test_name()).path
        if self._config.getoption("--orvanel-report"):
            module.on_comparison = self._node.stash.setdefault(_screens, []).append
        return module

    def _test_name(self) -> str:
        """The test within its file, with its class and parameters."""
        return ".".join(self._node.nodeid.split("::")[1:]) or str(self._node.name)

    def _out(self) -> str:
        """Where pictures of failed comparisons go; nothing makes the folder before there are any."""
        folder = self._config.getoption("--orvanel-report")
        if folder:
            start = os.path.abspath(folder)
        else:
            factory = self._request.getfixturevalue("tmp_path_factory")
            start = str(factory.getbasetemp() / "orvanel")
        stem = os.path.splitext(os.path.relpath(self._file, self._config.rootpath))[0]
        return os.path.join(str(start), file_words(f"{stem}.{self._test_name()}"))

    def _update(self) -> Any:
        if self._config.getoption("--orvanel-update"):
            return True
        return "missing" if self._config.getoption("--orvanel-update-missing") else False


def _mem_of(image: str) -> int:
    """The KiB of the EEPROM that an image is for."""
    try:
        return 64 if os.path.getsize(image) > 32 * _kib else 32
    except OSError:
        return 32  # the program tells what is wrong with the file


@pytest.fixture
def module(request: pytest.FixtureRequest) -> Iterator[Module]:
    """A module of the test's own, in module time. The mark `orvanel` changes its arguments:
    `@pytest.mark.orvanel(kit="page.kit", strict="hints")`; paths start from the test's folder."""
    with _Setup(request).start() as started:
        yield started


@pytest.fixture
def device(request: pytest.FixtureRequest) -> Iterator[Device]:
    """The device at the module's line: that of --orvanel-line, or a simulated module on the real
    clock, which then is `device.module`."""
    setup = _Setup(request)
    protocol = setup.setting("protocol") or "pactlink"
    hardware = setup.setting("line")
    if hardware is not None:
        with Device(hardware, protocol=protocol) as real:
            yield real
        return
    with setup.start(serial="pty", protocol=protocol) as started:
        with Device(started.line_name, protocol=protocol, module=started) as simulated:
            yield simulated
