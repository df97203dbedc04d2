"""One page of HTML with all screens of a run: expected, actual and difference."""

from __future__ import annotations

import base64
import html
import os
import stat
from typing import Dict, Iterable, List, Sequence, Union

from .module import Comparison

# A picture on its way from the process of a test to the page: plain words, for they go by a wire.
Shown = Dict[str, Union[str, bool]]

max_picture_bytes = 1024 * 1024
_png_start = b"\x89PNG\r\n\x1a\n"

_page = """<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<title>Screens: {failed} of {count} differ</title>
<style>
body {{ font: 15px/1.5 sans-serif; margin: 2em; color: #222; background: #fff }}
section {{ border-top: 1px solid #ccc; padding: 1em 0 }}
h2 {{ font-size: 1em; margin: 0 0 .5em }}
.failed h2 {{ color: #b00020 }}
figure {{ display: inline-block; margin: 0 1em 0 0; vertical-align: top }}
figcaption {{ color: #666; font-size: .9em }}
img {{ image-rendering: pixelated; border: 1px solid #888; background: #fff; max-width: 100% }}
figure.glass img {{ width: 360px }}
pre {{ background: #f5f5f5; padding: .5em; overflow: auto }}
</style>
</head>
<body>
<h1>{failed} of {count} screens differ</h1>
{sections}
</body>
</html>
"""


def read_picture(path: str) -> str:
    """A PNG file in base 64, or "" for what is none, isn't there or is too large to be shown."""
    try:
        fd = os.open(path, os.O_RDONLY | os.O_NONBLOCK | os.O_CLOEXEC)
    except (OSError, ValueError):
        return ""
    try:
        if not stat.S_ISREG(os.fstat(fd).st_mode):
            return ""
        with open(fd, "rb", closefd=False) as file:
            data = file.read(max_picture_bytes + 1)
    except OSError:
        return ""
    finally:
        os.close(fd)
    if not data.startswith(_png_start) or len(data) > max_picture_bytes:
        return ""
    return base64.b64encode(data).decode("ascii")


def shown_of(comparison: Comparison) -> Shown:
    """What the page shows of a comparison."""
    difference = ""
    for file in comparison.files:
        if file.endswith(".diff.png"):
            difference = read_picture(file)
    return {
        "golden": comparison.golden,
        "failed": comparison.failed,
        "expected": read_picture(comparison.golden),
        "actual": base64.b64encode(comparison.actual.png()).decode("ascii"),
        "difference": difference,
    }


def _figure(kind: str, picture: Union[str, bool], words: str) -> str:
    if not picture:
        return ""
    return (
        f'<figure class="{kind}"><img alt="{words}" src="data:image/png;base64,{picture}">'
        f"<figcaption>{words}</figcaption></figure>"
    )


def _section(test: str, shown: Shown, folder: str) -> str:
    golden = os.path.relpath(str(shown["golden"]), folder)
    head = f"{html.escape(test)}: {html.escape(golden)}"
    kind = "failed" if shown["failed"] else "passed"
    if shown["failed"]:
        figures = (
            _figure("glass", shown["expected"], "expected")
            + _figure("glass", shown["actual"], "actual")
            + _figure("wide", shown["difference"], "expected, actual, difference")
        )
    else:
        figures = _figure("glass", shown["actual"], "as expected")
    return f'<section class="{kind}"><h2>{head}</h2>{figures}</section>'


class Report:
    """Gathers the screens of all tests and writes the page."""

    def __init__(self) -> None:
        self._screens: Dict[str, List[Shown]] = {}

    def add(self, test: str, screens: Sequence[Shown]) -> None:
        """The screens of a test that has run."""
        self._screens.setdefault(test, []).extend(screens)

    def _all(self) -> Iterable["tuple[str, Shown]"]:
        """What failed comes first; the rest stands by the names of the tests."""
        pairs = [(test, shown) for test in sorted(self._screens) for shown in self._screens[test]]
        return sorted(pairs, key=lambda pair: not pair[1]["failed"])

    def write(self, folder: str, root: str) -> None:
        """Writes folder/index.html; files are named from the folder `root`. Raises OSError."""
        pairs = list(self._all())
        page = _page.format(
            count=len(pairs),
            failed=sum(bool(shown["failed"]) for _, shown in pairs),
            sections="\n".join(_section(test, shown, root) for test, shown in pairs),
        )
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, "index.html"), "wb") as file:
            file.write(page.encode("utf-8", "backslashreplace"))
