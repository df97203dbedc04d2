"""The example of a device: its CI files do here what they do on a server, but for the packages."""

import os
import pathlib
import re
import shlex
import shutil
import subprocess

import pytest

example = pathlib.Path(__file__).resolve().parents[2] / "examples" / "thermostat"
strict = "-Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Werror"


def block(lines, start, indent):
    """The lines from `start` on that are at least as far to the right."""
    end = start
    while end < len(lines) and lines[end].startswith(" " * indent):
        end += 1
    return [line[indent:] for line in lines[start:end]]


def commands_of(path):
    """What a CI file runs, in its order."""
    lines = path.read_text(encoding="utf-8").splitlines()
    found = []
    for at, line in enumerate(lines):
        step = re.fullmatch(r"( +)(?:- )?run: (.*)", line)
        if step and step[2] == "|":
            found += block(lines, at + 1, len(step[1]) + 2)
        elif step:
            found.append(step[2])
        elif re.fullmatch(r" +(before_script|script):", line):
            indent = len(line) - len(line.lstrip()) + 2
            found += [item[2:] for item in block(lines, at + 1, indent)]
    return found


@pytest.fixture
def project(tmp_path):
    """The example as a version control has it: without what a build made."""
    folder = tmp_path / "project"
    shutil.copytree(example, folder, ignore=shutil.ignore_patterns(
        "thermostat", "page.bin", "page.h", "report*", "__pycache__", ".pytest_cache"))
    return folder


@pytest.fixture
def environment():
    """That of an installed package: the programs on the path, and the plugin known to pytest."""
    return {**os.environ, "PATH": os.environ["ORVANEL42_BIN"] + os.pathsep + os.environ["PATH"],
            "PYTEST_ADDOPTS": "-p orvanel42.plugin -p no:cacheprovider", "CFLAGS": strict}


@pytest.mark.parametrize("file", [".github/workflows/screens.yml", ".gitlab-ci.yml"])
def test_the_commands_of_a_ci_file(file, project, environment):
    commands = commands_of(project / file)
    installed = [command for command in commands if command.startswith("apt-get ")]
    fonts = any("fonts-dejavu-core" in shlex.split(command) for command in installed)
    assert fonts, "page.kit draws with fonts of that package, which debian:12 doesn't have"
    rest = [command for command in commands if command not in installed]
    assert "make" in rest and any(command.startswith("pytest-3 ") for command in rest)
    done = subprocess.run(["bash", "-euo", "pipefail", "-c", "\n".join(rest)], cwd=project, env=environment,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, check=False)
    assert done.returncode == 0, done.stdout.decode("utf-8", "replace")
    assert (project / "report" / "index.html").is_file()


@pytest.mark.parametrize("old, new, cause", [
    ('"CWarmer"', '"CHotter"', "no key 'Warmer'; there are"),
    ("#BR room_bar,96", "#BR room_bar,99", "test_thermostat.test_start.png"),
])
def test_a_change_of_the_page_is_named(old, new, cause, project, environment):
    kit = project / "page.kit"
    kit.write_text(kit.read_text(encoding="utf-8").replace(old, new), encoding="utf-8")
    done = subprocess.run(["make", "check"], cwd=project, env=environment, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    assert done.returncode != 0 and cause in done.stdout.decode("utf-8", "replace")
