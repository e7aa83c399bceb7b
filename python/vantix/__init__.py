"""A client of the Vantix control protocol, and a pytest plugin.

Every application that links Vantix serves its simulated hardware on a
local socket. This package finds such applications, runs console commands
there with typed answers and errors, and follows their events and log::

    import vantix

    with vantix.connect(app="example-app") as client:
        client.debug("setbatteryfuel", 1, 5)
        client.expect_event("System", "apiClosed", timeout=2)
        assert client.get("battery1", "fuelGauge") == 5

It needs nothing but Python's standard library (3.9 and later).
"""

from .client import PROTOCOL, Client, EventStream, LogStream
from .discovery import Application, connect, list_applications, socket_folder
from .errors import (
    BadRequest,
    BadValue,
    ConnectError,
    Disconnected,
    Error,
    ExpectationFailed,
    Failed,
    ScriptError,
    Timeout,
    UnknownCommand,
    UnknownTarget,
)
from .launch import App, launch
from .messages import Event, LogEntry
from .schema import Schema
from .words import join, quote, split

__version__ = "0.2.0"

#: The running applications, as ``vantix-ctl list`` shows them. Left out of
#: ``__all__``: a star import would hide the builtin.
list = list_applications

__all__ = [
    "App",
    "Application",
    "BadRequest",
    "BadValue",
    "Client",
    "ConnectError",
    "Disconnected",
    "Error",
    "Event",
    "EventStream",
    "ExpectationFailed",
    "Failed",
    "LogEntry",
    "LogStream",
    "PROTOCOL",
    "Schema",
    "ScriptError",
    "Timeout",
    "UnknownCommand",
    "UnknownTarget",
    "connect",
    "join",
    "launch",
    "list_applications",
    "quote",
    "socket_folder",
    "split",
]
