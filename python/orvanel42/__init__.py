"""The HD Orvanel42 display module for tests: send, touch by label, read the glass, compare pictures.

    from orvanel42 import Module

    with Module(kit="page.kit") as module:
        module.tap("Start")
        module.expect_text("22.0", near="Target")
        module.expect_screen("running.png")

With pytest the fixture `module` does the same, and keeps the pictures beside the tests.
"""

from .device import Device
from .faults import (
    ExpectationFailed,
    Fault,
    FaultRecord,
    GaveUp,
    LineError,
    Mistake,
    OrvanelError,
    ProgramDied,
    ProgramNotFound,
    ProtocolError,
    StartFailed,
    WrongLine,
)
from .module import Comparison, Module
from .pactlink import Packet, Pactlink, Waiting
from .screen import Screen
from .tables import Area, Bar, MenuRow, Text
from .version import __version__

__all__ = [
    "Area",
    "Bar",
    "Comparison",
    "Device",
    "ExpectationFailed",
    "Fault",
    "FaultRecord",
    "GaveUp",
    "LineError",
    "MenuRow",
    "Mistake",
    "Module",
    "OrvanelError",
    "Packet",
    "Pactlink",
    "ProgramDied",
    "ProgramNotFound",
    "ProtocolError",
    "Screen",
    "StartFailed",
    "Text",
    "Waiting",
    "WrongLine",
    "__version__",
]
