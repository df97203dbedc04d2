"""What the tests share: a page of a device, and programs that break the protocol."""

import os
import stat
import sys

import pytest

pytest_plugins = ["pytester"]

page = (
    b"#TA\n#ZF0,#AF0,#AE7,#ZL10,10,Target 22.5\n"
    b"#AT20,60,100,90,65,97,Heat\n#AT140,60,220,90,66,98,Stop\n"
)


@pytest.fixture
def fake(tmp_path):
    """Writes a program of Python lines that stands in for orvanel42-headless."""

    def write(*lines):
        program = tmp_path / "orvanel42-headless"
        start = [f"#!{sys.executable} -IS", "import os, signal, sys, time", "line = sys.stdin.readline",
                 "def say(text): print(text, flush=True)",
                 "def greet(): say('{\"protocol\":1,\"version\":\"1\"}')"]
        program.write_text("\n".join([*start, *lines]) + "\n")
        program.chmod(program.stat().st_mode | stat.S_IXUSR)
        return program

    return write


@pytest.fixture
def no_process_left():
    """After the test there is no child, not even a dead one."""
    yield
    with pytest.raises(ChildProcessError):
        os.waitpid(-1, os.WNOHANG)
