"""What can go wrong, as exceptions. Each has its message for the person who reads it."""

from __future__ import annotations

from typing import NamedTuple, Sequence, Tuple


class OrvanelError(Exception):
    """The base of all exceptions of this package."""


class ProgramNotFound(OrvanelError):
    """There is no simulator to start. The message names the ways to say where it is."""


class StartFailed(OrvanelError):
    """The program ended before it greeted, say since the kit has a fault. The message is its own."""


class ProgramDied(OrvanelError):
    """The program ended, or had to be ended, in the middle of a talk.

    `status` is its exit status, below 0 the number of the signal that ended it; `last_words` the end
    of what it wrote on standard error.
    """

    def __init__(self, message: str, status: int = 0, last_words: str = "") -> None:
        super().__init__(message)
        self.status = status
        self.last_words = last_words

    def __reduce__(self) -> Tuple[object, ...]:
        return ProgramDied, (str(self), self.status, self.last_words)


class ProtocolError(OrvanelError):
    """What came is no answer of version 1 of the protocol, or no frame of Pactlink."""


class LineError(OrvanelError):
    """A serial line can't be opened, has gone, or takes or gives no bytes in time."""


class FaultRecord(NamedTuple):
    """One thing that was not as it should be."""

    kind: str  # expectation, settle, line, remark or hint
    message: str  # for the person who reads it, in several lines if there is a drawing
    file: str  # where it stands: `-`, or an included file
    line: int  # in that file, from 1; 0 for what belongs to no line
    files: Tuple[str, ...]  # pictures that were written about it


class Fault(OrvanelError):
    """Something was not as it should be; `records` has what, one by one.

    The text is what a scenario would tell, without a scenario's file and line in front.
    """

    def __init__(self, records: Sequence[FaultRecord]) -> None:
        super().__init__("\n".join(record.message for record in records))
        self.records = tuple(records)

    def __reduce__(self) -> Tuple[object, ...]:
        return type(self), (self.records,)

    @property
    def files(self) -> Tuple[str, ...]:
        """The pictures that were written about it."""
        return tuple(file for record in self.records for file in record.files)


class ExpectationFailed(Fault, AssertionError):
    """The module shows, says or has something else than expected."""


class GaveUp(Fault, AssertionError):
    """The module didn't come to rest in the time that `settle` had."""


class Mistake(Fault, AssertionError):
    """What the module was sent has a mistake that `strict` counts: a remark or a hint of the trace."""


class WrongLine(Fault, ValueError):
    """A value that the program refuses, or a file that can't be read or written."""


# The fault that counts most gives the class.
_classes = (
    ("line", WrongLine),
    ("settle", GaveUp),
    ("expectation", ExpectationFailed),
    ("remark", Mistake),
    ("hint", Mistake),
)


def fault_of(records: Sequence[FaultRecord]) -> Fault:
    """The exception for these records, of which there is at least one."""
    kinds = {record.kind for record in records}
    for kind, fault in _classes:
        if kind in kinds:
            return fault(records)
    return Fault(records)
