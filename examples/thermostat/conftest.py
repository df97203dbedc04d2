"""The firmware as the tests run it: on what the module has said, or at the module's line."""

import pathlib
import subprocess

import pytest

program = pathlib.Path(__file__).parent / "thermostat"


class Firmware:
    """The firmware in the module's own time. It gets all that the module has answered from the start,
    at once, so that its clock has no say; what it tells beyond the last time goes to the module."""

    def __init__(self, module, room):
        self._module = module
        self._command = [str(program), "-r", str(room)]
        self._heard = b""
        self._told = b""
        self.answer()

    def answer(self):
        __tracebackhide__ = True  # pytest shows the line of the test
        self._heard += self._module.answers()
        told = subprocess.run(self._command, input=self._heard, stdout=subprocess.PIPE,
                              check=True).stdout
        assert told.startswith(self._told)
        self._module.send(told[len(self._told):])
        self._told = told

    def touch(self, label):
        __tracebackhide__ = True
        self._module.tap(label)
        self.answer()


@pytest.fixture
def start(module):
    """Starts the firmware in a room of so many tenths of a degree."""
    return lambda room=180: Firmware(module, room)


@pytest.fixture
def start_at_line(module):
    """Starts the firmware at the line of a module with `serial`, on the real clock."""
    running = []

    def start(room=180):
        running.append(subprocess.Popen([str(program), "-r", str(room), module.line_name]))

    yield start
    for process in running:
        process.terminate()
        process.wait()
