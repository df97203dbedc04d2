#!/usr/bin/env python3
"""What the programs say of mistakes: run.py PROGRAMS FILE [--print]

FILE is a list of mistakes that reads as a manual: a heading with the name of the kind and what went
wrong, an explanation, then blocks of indented lines:

    feed:      a stream, fed to a fresh module
    scenario:  a scenario instead
    kit:       a kit instead, checked by orvanel42-kit
    file NAME: a file that the others use, beside empty.pbm, the picture of an empty glass
    says:      all that is said, without the name of the file
    cure:      the same without the mistake, of which nothing is said

A mistake whose heading ends in "(remark)" or "(hint)" is of that degree. --print writes what is said,
for a new entry.
"""

import pathlib
import re
import subprocess
import sys
import tempfile

block_head = re.compile(r"^(feed|scenario|kit|says|cure|file \S+):$")


class Mistake:
    def __init__(self, line, kind, title):
        self.line, self.kind, self.title = line, kind, title
        self.words = []
        self.blocks = {}


def read(path):
    """The mistakes of a file, in its order."""
    mistakes, block = [], None
    for number, text in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        heading = re.match(r"^## (\S+): (.*)$", text)
        head = block_head.match(text)
        if heading:
            mistakes.append(Mistake(number, *heading.groups()))
            block = None
        elif head:
            block = mistakes[-1].blocks.setdefault(head.group(1), [])
        elif block is not None and text.startswith("    "):
            block.append(text[4:])
        elif block is not None and text:
            sys.exit(f"{path}:{number}: error: neither a block nor one of its lines")
        elif text and mistakes:
            mistakes[-1].words.append(text)
        elif block is not None:
            block.append("")
    return mistakes


def said(programs, folder, form, lines):
    """All that is said of these lines, without the name of their file."""
    text = "\n".join(lines).rstrip("\n") + "\n"
    if form == "kit":
        (folder / "page.kit").write_text(text, encoding="utf-8")
        command = [programs / "orvanel42-kit", "check", "page.kit"]
    else:
        if form == "feed":
            (folder / "page.orv").write_text(text, encoding="utf-8")
            text = "scenario 1\nfeed page.orv\nsettle\nexpect-answers\n"
        (folder / "page.scn").write_text(text, encoding="utf-8")
        command = [programs / "orvanel42-headless", "--strict=hints", "page.scn"]
    done = subprocess.run(command, cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          text=True, check=False)
    told = done.stdout if form == "kit" else done.stderr
    told = re.sub(r"(?m)^page\.(orv|scn|kit):", "", told)
    return [line.removesuffix(" (page.scn:2)").strip() for line in told.splitlines()]


def main():
    programs, path = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2])
    failed = False
    for mistake in read(path):
        form = next(f for f in ("feed", "scenario", "kit") if f in mistake.blocks)
        with tempfile.TemporaryDirectory(prefix="mistake-") as name:
            folder = pathlib.Path(name)
            (folder / "empty.pbm").write_bytes(b"P4 240 128\n" + bytes(240 * 128 // 8))
            for block, lines in mistake.blocks.items():
                if block.startswith("file "):
                    (folder / block[5:]).write_text("\n".join(lines) + "\n", encoding="utf-8")
            says = said(programs, folder, form, mistake.blocks[form])
            cured = said(programs, folder, form, mistake.blocks["cure"])
        expected = [line for line in mistake.blocks.get("says", []) if line]
        named = all(line.endswith("]") or "] (" in line or "], " in line for line in says)
        for what, there, wanted in (("says", says, expected), ("of the cure", cured, [])):
            if there != wanted:
                failed = True
                print(f"{path}:{mistake.line}: {mistake.kind}: {what}")
                print("\n".join(f"    {line}" for line in there))
        if not named or not any(f"[{mistake.kind}]" in line for line in says):
            failed = True
            print(f"{path}:{mistake.line}: {mistake.kind}: isn't named")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
