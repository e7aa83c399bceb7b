"""The exceptions of the package.

The server answers a failed request with an error class; each class it
names has an exception here, and a class this client does not know is
treated as :class:`Failed`, as the protocol asks.
"""

from typing import Any, Dict, Optional, Sequence

__all__ = [
    "Error",
    "UnknownCommand",
    "UnknownTarget",
    "BadValue",
    "BadRequest",
    "Failed",
    "Disconnected",
    "ConnectError",
    "Timeout",
    "ScriptError",
    "ExpectationFailed",
    "error_for",
]


class Error(Exception):
    """Base of every error of this package.

    ``message`` is the server's message (what follows ``KO:``), ``request``
    the request that was answered so (the console line, or the request
    object for other kinds), ``reply`` the whole answer when there was one.
    """

    def __init__(self, message: str, request: Any = None, reply: Optional[Dict[str, Any]] = None):
        super().__init__(message)
        self.message = message
        self.request = request
        self.reply = reply

    @property
    def error_class(self) -> str:
        """The class the server named (``Failed`` for one this client does not know)."""
        if self.reply and isinstance(self.reply.get("error"), dict):
            return str(self.reply["error"].get("class", "Failed"))
        return type(self).__name__

    def __str__(self) -> str:
        if isinstance(self.request, str):
            return "%s (request: %s)" % (self.message, self.request)
        return self.message


class UnknownCommand(Error):
    """The line's command word is no console command, or no debug command."""


class UnknownTarget(Error):
    """No such device, object, property or method, or a device not plugged."""


class BadValue(Error):
    """A value that does not convert to what is expected."""


class BadRequest(Error):
    """A malformed request or command: wrong number of words, open quote, full queue."""


class Failed(Error):
    """Understood, but not done or without effect (also a cancelled line)."""


class Disconnected(Error):
    """The connection is gone; raised in every call that waited on it."""


class ConnectError(Error):
    """No connection was made: no such application, no greeting, another user's server."""


class Timeout(Error):
    """No answer within the time the caller gave."""


class ScriptError(Error):
    """A line of a script was answered with an error; the run stopped there.

    ``source`` and ``line`` say where (``line`` counts from 1), ``text`` is
    the line, ``cause`` the error it got. The message reads
    ``source:line: text: KO: message``, as ``vantix-sim --script`` writes it.
    """

    def __init__(self, source: str, line: int, text: str, cause: Error):
        super().__init__("%s:%d: %s: KO: %s" % (source, line, text, cause.message), text, cause.reply)
        self.source = source
        self.line = line
        self.text = text
        self.cause = cause

    def __str__(self) -> str:
        return self.message


class ExpectationFailed(AssertionError):
    """An expectation that was not met: ``expect_event`` or ``expect``.

    ``events`` holds the events seen while it waited, which the message
    lists as well.
    """

    def __init__(self, message: str, events: Sequence[Any] = ()):
        self.events = list(events)
        if self.events:
            shown = self.events[-50:]
            lines = ["%s; events seen meanwhile (%d):" % (message, len(self.events))]
            if len(shown) < len(self.events):
                lines.append("  ... %d earlier" % (len(self.events) - len(shown)))
            lines.extend("  " + str(e) for e in shown)
            text = "\n".join(lines)
        else:
            text = "%s; no events were seen meanwhile" % message
        super().__init__(text)
        self.message = message


_CLASSES = {
    "UnknownCommand": UnknownCommand,
    "UnknownTarget": UnknownTarget,
    "BadValue": BadValue,
    "BadRequest": BadRequest,
    "Failed": Failed,
}


def error_for(reply: Dict[str, Any], request: Any) -> Error:
    """The exception for a failed answer."""
    error = reply.get("error")
    if not isinstance(error, dict):
        error = {}
    cls = _CLASSES.get(str(error.get("class")), Failed)
    message = error.get("message")
    if not isinstance(message, str):
        text = reply.get("text", "")
        message = text[4:] if isinstance(text, str) and text.startswith("KO: ") else str(text)
    return cls(message, request, reply)
