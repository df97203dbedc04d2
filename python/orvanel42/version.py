"""The version of this package, which is that of the programs it comes with."""

__version__ = "1.5.0"
