#!/usr/bin/env python3
"""How fast tests of the Python package are, pytest's own time included: python_bench.py PROGRAMS

Writes 200 tests of three taps and three pictures each into a folder of their own, has the pictures
written, and runs the tests in one process and in two.
"""

import os
import pathlib
import subprocess
import sys
import tempfile
import time

tests = 200
runs = 5
root = pathlib.Path(__file__).resolve().parents[1]
python = "/usr/bin/python3"  # Debian's, which has pytest and pytest-xdist

page = """import pytest

PAGE = (b"#TA\\n#ZF0,#AF0,#AE7,#ZC120,10,Oven\\n#AT20,60,100,90,65,97,Heat\\n"
        b"#AT140,60,220,90,66,98,Stop\\n#GR6,6,233,121\\n")


@pytest.mark.parametrize("number", range(%d))
def test_page(module, number):
    module.send(PAGE)
    for key in "Heat", "Stop", "Heat":
        module.tap(key)
        module.expect_screen(f"{key}.png")
"""


def seconds_of(folder, *options):
    environment = {**os.environ, "ORVANEL42_BIN": str(pathlib.Path(sys.argv[1]).resolve()),
                   "PYTHONPATH": str(root / "python"), "PYTHONDONTWRITEBYTECODE": "1"}
    begin = time.monotonic()
    done = subprocess.run(
        [python, "-m", "pytest", "-q", "-p", "no:cacheprovider", "-p", "orvanel42.plugin", *options],
        cwd=folder, env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    if done.returncode != 0:
        sys.exit(done.stdout.decode())
    return time.monotonic() - begin


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    with tempfile.TemporaryDirectory() as folder:
        (pathlib.Path(folder) / "test_page.py").write_text(page % tests, encoding="utf-8")
        seconds_of(folder, "--orvanel-update")
        for words, options in (("one process", []), ("-n 2", ["-n", "2"]),
                               ("-n 2 with a report", ["-n", "2", "--orvanel-report", "report"])):
            all_seconds = sorted(seconds_of(folder, *options) for _ in range(runs))
            seconds = all_seconds[runs // 2]
            print(f"{words:20} {seconds * 1000 / tests:6.1f} ms a test, {tests / seconds:5.0f} a second")


main()
