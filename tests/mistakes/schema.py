#!/usr/bin/env python3
"""docs/reference/trace.schema.json against real traces: schema.py HEADLESS SCHEMA SCENARIOS

Every line of the traces of these folders' scenarios, and of one made here, has to be valid; among
them are lines of each kind. A line that is damaged has not.
"""

import json
import pathlib
import subprocess
import sys
import tempfile

import jsonschema

headless, schema_file, scenarios = (pathlib.Path(word).resolve() for word in sys.argv[1:4])
schema = json.loads(schema_file.read_text(encoding="utf-8"))
kinds = {name: jsonschema.Draft7Validator({**schema["definitions"][name],
                                           "definitions": schema["definitions"]})
         for name in (ref["$ref"].rpartition("/")[2] for ref in schema["oneOf"])}

# What the scenarios of the tests have too little of: frames that go wrong, timers and touches in vain,
# bytes of all kinds, a macro of a kit.
odd_kit = '[power-on macro 0]\n#TA\n#MG 7,1\n#AF 0\n#GD 0,0,255,9\n#AT 10,10,90,40,65,0,"CKey"\n'
odd_scenario = """scenario 1
settle
touch 30 20
touch 31 22
lift
touch 200 100
lift
send 1B "QX" 00 FF "\\x84" "#ZF9,#ZL1,1,a\\x84\\n#UL1,1," 08 08 00 00 00 00 00 00 00 00 "\\"\\\\"
wait 500
port 1
protocol 1
wait 200
line 11 02 1B "?" 6E 11 02 1B "?" 6D 12 01 53 66 41
wait 3000
protocol 0
line 11 02 1B "?" 6D
wait 300
reset 2
settle
expect-answers
"""

failures = []


def trace_of(folder, arguments):
    """The lines of a run's trace, whatever its status."""
    with tempfile.TemporaryDirectory(prefix="schema-") as name:
        file = pathlib.Path(name) / "trace"
        subprocess.run([headless, "--out", name, "--trace-json", file, *arguments], cwd=folder,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
        return file.read_text(encoding="utf-8").splitlines()


def kinds_of(line):
    return [name for name, validator in kinds.items() if validator.is_valid(line)]


def damaged(line):
    """The line without each member that it needs, with one too many, and with each of a wrong type."""
    yield {**line, "colour": "red"}
    yield {name: value for name, value in line.items() if name != "time"}
    for name in line:
        yield {**line, name: {}}


def take(title, lines, seen):
    for text in lines:
        line = json.loads(text)
        found = kinds_of(line)
        if len(found) != 1:
            failures.append(f"{title}: {text}: {found or 'of no kind'}")
        else:
            seen.setdefault(found[0], line)


def main():
    seen = {}
    for scenario in sorted(scenarios.glob("*.scn")):
        take(scenario.name, trace_of(scenarios, [scenario.name]), seen)
    with tempfile.TemporaryDirectory(prefix="schema-") as name:
        folder = pathlib.Path(name)
        (folder / "odd.kit").write_text(odd_kit, encoding="utf-8")
        (folder / "odd.scn").write_text(odd_scenario, encoding="utf-8")
        lines = trace_of(folder, ["--kit", "odd.kit", "--strict=hints", "odd.scn"])
        take("odd.scn", lines, seen)
    for kind in kinds:
        if kind not in seen:
            failures.append(f"no line of the kind {kind} was seen")
    for kind, line in seen.items():
        for wrong in damaged(line):
            if kinds_of(wrong):
                failures.append(f"{kind}: {json.dumps(wrong)} passes")
    print("\n".join(failures[:20]))
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
