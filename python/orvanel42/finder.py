"""Finds the programs of the simulator."""

from __future__ import annotations

import os
import shutil
from typing import List, Optional, Union

from .faults import ProgramNotFound

Path = Union[str, "os.PathLike[str]"]

variable = "ORVANEL42_BIN"
headless = "orvanel42-headless"
kit_compiler = "orvanel42-kit"


def _is_program(path: str) -> bool:
    return os.path.isfile(path) and os.access(path, os.X_OK)


def _named(place: str, name: str, who: str) -> str:
    """The program at a place that somebody has named: it, its folder, or one beside it."""
    program = os.path.join(place, name) if os.path.isdir(place) else place
    if name != headless and not os.path.isdir(place):
        program = os.path.join(os.path.dirname(place), name)
    if _is_program(program):
        return os.path.abspath(program)
    is_there = "is no program" if os.path.exists(program) else "is not there"
    raise ProgramNotFound(
        f"{program} {is_there}: {who} has to name {headless}, or the folder that it lies in"
    )


def find_command(program: Optional[Path] = None, name: str = headless) -> List[str]:
    """The command that starts a program of the simulator, as a list of words.

    `program` is the program or its folder; else the variable ORVANEL42_BIN of the environment names
    either; else the program is looked for on the path. Raises ProgramNotFound.
    """
    if program is not None:
        return [_named(os.fspath(program), name, "the argument `program`")]
    named = os.environ.get(variable, "")
    if named:
        return [_named(named, name, variable)]
    found = shutil.which(name)
    if found:
        return [os.path.abspath(found)]
    raise ProgramNotFound(
        f"there is no {name}: install Debian's package orvanel42-tools so that it is on the path, "
        f"name the program or its folder in the variable {variable}, or pass it as `program`"
    )
