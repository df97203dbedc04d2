"""Which file holds the picture that a test expects."""

from __future__ import annotations

import hashlib
import os
import re

max_name = 120  # characters; a file system takes 255 bytes with what is added


def file_words(text: str) -> str:
    """The text as a part of a file's name. Different texts give different words."""
    words = re.sub(r"[^A-Za-z0-9_.-]+", "-", text).strip("-.")[:max_name]
    if words != text:
        words += "-" + hashlib.sha256(text.encode("utf-8", "surrogatepass")).hexdigest()[:6]
    return words


class GoldenFiles:
    """The pictures of one test: `test_oven.test_start.png` beside test_oven.py for the first, then
    `test_oven.test_start.2.png`, or `test_oven.test_start.NAME.png` for one with a name."""

    def __init__(self, test_file: str, test_name: str) -> None:
        self._folder = os.path.dirname(os.path.abspath(test_file))
        stem = os.path.splitext(os.path.basename(test_file))[0]
        self._start = stem + "." + file_words(test_name)
        self._unnamed = 0

    def path(self, name: str) -> str:
        """The file for a name, "" for the next without one; a path starts from the test's folder."""
        if name.endswith((".png", ".pbm")) or "/" in name:
            return os.path.join(self._folder, name)
        if name:
            end = f".{file_words(name)}.png"
        else:
            self._unnamed += 1
            end = f".{self._unnamed}.png" if self._unnamed > 1 else ".png"
        return os.path.join(self._folder, self._start + end)
