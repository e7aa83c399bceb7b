"""What the application sends unasked: events and copies of its message log."""

from typing import Any, Dict, Mapping

__all__ = ["Event", "LogEntry"]


class Event:
    """One signal of the simulated hardware.

    ``object`` is who sent it (``ID_BATTERY_1ST``, ``System``,
    ``ID_NETWORK_WIFI.accessPoints``), ``signal`` the signal's name, ``args``
    its arguments by name (enums and flags as their key names, flags joined
    by ``|``), ``args_text`` the same as ``vantix-sim`` prints them, ``ms``
    the time since the application's ``System::initialize()``.
    """

    # Made for every event that arrives, wanted or not: only what filters
    # read is taken out of the message at once.
    __slots__ = ("object", "signal", "seq", "raw")

    def __init__(self, raw: Dict[str, Any], seq: int = 0):
        self.raw = raw
        self.signal = raw.get("event")
        self.object = raw.get("object")
        self.seq = seq

    @property
    def args(self) -> Dict[str, Any]:
        """The arguments by parameter name (an unnamed one by its position, ``"0"``)."""
        args = self.raw.get("args")
        return args if isinstance(args, dict) else {}

    @property
    def args_text(self) -> str:
        """The arguments as ``vantix-sim`` prints them: ``newValue=10``."""
        return str(self.raw.get("argsText", ""))

    @property
    def ms(self) -> Any:
        """Milliseconds since the application's ``System::initialize()``, monotonic."""
        return self.raw.get("ms")

    @property
    def name(self) -> str:
        """The signal's name (as ``signal``)."""
        return self.signal

    def __getitem__(self, key: str) -> Any:
        return self.args[key]

    def __str__(self) -> str:
        text = "%s %s" % (self.object, self.signal)
        if self.args_text:
            text += " " + self.args_text
        return "[%s ms] %s" % (self.ms, text) if self.ms is not None else text

    def __repr__(self) -> str:
        return "<Event %s>" % self


class LogEntry:
    """One record of the application's Qt message log: ``type`` (``debug``,
    ``info``, ``warning``, ``critical``, ``fatal``), ``category``,
    ``function`` (may be empty), ``message`` and ``ms``."""

    __slots__ = ("type", "category", "function", "message", "ms", "seq", "raw")

    def __init__(self, raw: Dict[str, Any], seq: int = 0):
        self.raw = raw
        self.seq = seq
        entry = raw.get("log")
        if not isinstance(entry, Mapping):
            entry = {}
        self.type = entry.get("type", "")
        self.category = entry.get("category", "")
        self.function = entry.get("function", "")
        self.message = entry.get("message", "")
        self.ms = raw.get("ms")

    def __str__(self) -> str:
        where = " %s:" % self.function if self.function else ""
        return "[%s ms] %s %s:%s %s" % (self.ms, self.type, self.category, where, self.message)

    def __repr__(self) -> str:
        return "<LogEntry %s>" % self
