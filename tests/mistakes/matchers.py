#!/usr/bin/env python3
"""The problem matchers in examples/matchers against what the programs print: matchers.py PROGRAMS MATCHERS

Each line that names a place has to be taken by exactly one pattern of a file, with the file, line,
column and degree that it names.
"""

import json
import pathlib
import re
import subprocess
import sys
import tempfile

programs, matchers = (pathlib.Path(word).resolve() for word in sys.argv[1:3])

files = {
    "wrong.kit": '[normal macro 0]\n#GX\n#GP "ü",300\n',
    "whole.kit": "[image]\nlength = 3000\n[normal macro 0]\n#DL\n",
    "doubtful.kit": '[power-on macro 0]\n#AF 0\n#GD 0,0,250,9\n#AT 10,10,90,40,65,0,"Cooler"\n',
    "page.orv": "#TA #GD10,10,250,20,\n#ZF0#ZL10,10,Hi\n",
    "page.scn": 'scenario 1\nfeed page.orv\nsettle\ntap "None"\nexpect-answers 01\n',
    "idle.scn": 'scenario 1\nsend "#TA#GD10,10,100,20,"\nsettle\n',
}

# Commands, and of each line that names a place its file, line, column and degree.
runs = [
    (["orvanel42-kit", "build", "wrong.kit", "-o", "a.bin"],
     [("wrong.kit", "2", "3", "error"), ("wrong.kit", "3", "5", "error")]),
    (["orvanel42-kit", "build", "whole.kit", "-o", "a.bin"], [("whole.kit", None, None, "error")]),
    (["orvanel42-kit", "check", "doubtful.kit"],
     [("doubtful.kit", "3", "1", "warning"), ("doubtful.kit", "4", "1", "hint")]),
    (["orvanel42-headless", "--strict=hints", "page.scn"],
     [("page.scn", "4", None, "error"), ("page.scn", "5", None, "error"),
      ("page.orv", "1", "5", "warning"), ("page.orv", "2", "1", "hint")]),
    (["orvanel42-headless", "--kit", "doubtful.kit", "--strict=hints", "idle.scn"],
     [("doubtful.kit", "3", "1", "warning"), ("doubtful.kit", "4", "1", "hint"),
      ("idle.scn", None, None, "hint")]),
]


def without_comments(text):
    return re.sub(r"(?m)^\s*//.*$", "", text)


def groups(pattern, match, default):
    def group(name):
        return match.group(pattern[name]) if name in pattern else None
    return group("file"), group("line"), group("column"), group("severity") or default


def told(folder, command):
    done = subprocess.run([str(programs / command[0]), *command[1:]], cwd=folder, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    return [line for line in done.stdout.splitlines() if re.search(r": (error|warning|hint): ", line)]


def taken(line, patterns):
    """What each pattern that takes the line makes of it."""
    return [groups(pattern, match, default) for pattern, default in patterns
            if (match := re.search(pattern["regexp"], line))]


def patterns_of(task):
    return [(matcher["pattern"], "hint") for matcher in task["problemMatcher"]]


tasks = json.loads(without_comments((matchers / "tasks.json").read_text(encoding="utf-8")))
github = json.loads((matchers / "github.json").read_text(encoding="utf-8"))
sets = {f"tasks.json, {task['label']}": patterns_of(task) for task in tasks["tasks"]}
sets["github.json"] = [(matcher["pattern"][0], "hint") for matcher in github["problemMatcher"]]

failed = False
with tempfile.TemporaryDirectory(prefix="matchers-") as name:
    for file, text in files.items():
        (pathlib.Path(name) / file).write_text(text, encoding="utf-8")
    for command, places in runs:
        lines = told(name, command)
        for title, patterns in sets.items():
            found = [taken(line, patterns) for line in lines]
            if found != [[place] for place in places]:
                failed = True
                print(f"{title}: {' '.join(command)}: {found}, not {places}:", *lines, sep="\n    ")
sys.exit(1 if failed else 0)
