#!/usr/bin/env python3
"""A trace with all hints while three threads work: realtime.py HEADLESS

A device talks on a pseudo terminal, a scenario touches, feeds, and opens a kit, and the module runs macros.
Each layer has its lines, whole ones, and the mistakes of all three have their places. Under the thread
sanitizer this is the test of the trace's threads.
"""

import json
import os
import pathlib
import subprocess
import sys
import tempfile
import threading
import time

headless = pathlib.Path(sys.argv[1]).resolve()
limit = 600  # seconds, for a very busy machine

page = '[power-on macro 0]\n#TA\n#AF 0\n#AT 10,10,90,40,65,66,"Cooler"\n[touch macro 65]\n#GD 0,0,250,9\n'
scenario = """scenario 1
await-received "#GP9,9," within 300000
open page.kit
settle
touch 50 25
wait 50
touch 52 26
wait 50
lift
wait 50
touch 200 100
wait 50
lift
feed page.orv
settle
await-received "#GP8,8," within 300000
settle
"""


def talk(link, answers, problems):
    """Sends mistakes until the program is gone, and takes what it says."""
    end = time.monotonic() + limit
    while not link.exists() and time.monotonic() < end:
        time.sleep(0.05)
    try:
        line = os.open(link, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)
        for _ in range(int(limit / 0.02)):
            os.write(line, b"#TA#GD10,10,250,20,\n\x1b?#ZF0#ZL1,1,a\n#GP9,9,#GP8,8,")
            try:
                answers.append(os.read(line, 4096))
            except BlockingIOError:
                pass
            time.sleep(0.02)
    except OSError:
        return  # the program has closed its end
    problems.append("the program goes on and on")


def main():
    problems = []
    with tempfile.TemporaryDirectory(prefix="realtime-") as name:
        folder = pathlib.Path(name)
        for file, text in (("page.kit", page), ("page.orv", "#ZL10,10,a\n#ZF0#GP1,1,\n"),
                           ("page.scn", scenario)):
            (folder / file).write_text(text, encoding="utf-8")
        answers = []
        device = threading.Thread(target=talk, daemon=True, args=(folder / "line", answers, problems))
        device.start()
        done = subprocess.run(
            [headless, "--realtime", "--serial", "pty:line", "--protocol", "plain", "--trace-json",
             "trace", "--strict=hints", "page.scn"], cwd=folder, timeout=limit, text=True,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        trace = [json.loads(line) for line in (folder / "trace").read_text().splitlines()]
    told = done.stderr
    if done.returncode != 1:
        problems.append(f"status {done.returncode}")
    for member in ("wire", "touch", "answer", "command", "reset"):
        if not any(member in line for line in trace):
            problems.append(f"no line of the trace has {member}")
    for words in ("page.kit:4:1: hint: power-on macro 0", "page.kit:6:1: warning: touch macro 65",
                  "page.orv:2:1: hint: ", "[nothing-there]", "# G D 10 10 250 20: 250 clamped"):
        if words not in told:
            problems.append(f"isn't said: {words}")
    if not any(answers):
        problems.append("the device got no answer")
    if problems:
        print(*problems, told, sep="\n")
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
