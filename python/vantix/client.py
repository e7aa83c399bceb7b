"""A connection to one application: console lines with typed answers and
errors, the schema, events and log entries, scripts.

Any number of threads may use one client; every request waits for its own
answer (matched by id), and when the connection goes, every call that waits
raises :class:`~vantix.Disconnected`.
"""

import json
import os
import time
from pathlib import Path
from typing import Any, Callable, Dict, List, Optional, Set, Union

from . import words
from .connection import GREETING_TIMEOUT, MAX_LINE_BYTES, PROTOCOL, Connection, Stream
from .errors import BadRequest, Disconnected, Error, ExpectationFailed, Failed, ScriptError, Timeout, error_for
from .messages import Event, LogEntry
from .schema import Schema
from .values import flags_of, format_value, from_reply, same_value

__all__ = ["Client", "PROTOCOL", "EventStream", "LogStream", "GREETING_TIMEOUT", "MAX_LINE_BYTES"]

# Events and log entries kept for expect_event() and for reports.
DEFAULT_HISTORY = 10000
# JSON string literals, from the C encoder json.dumps uses.
_json_text = json.encoder.encode_basestring_ascii  # type: ignore[attr-defined]


class EventStream(Stream):
    """Events from the moment :meth:`Client.events` was called, those that
    pass its filter; an iterator (see :class:`~vantix.connection.Stream`)."""


class LogStream(Stream):
    """Log entries from the moment :meth:`Client.log` was called; as :class:`EventStream`."""


# The methods set __tracebackhide__: a failure in a pytest test is shown at
# the test's own line, not inside this package.
class Client:
    """A connection to the control socket of an application that uses Vantix.

    Usually made by :func:`vantix.connect` or :func:`vantix.launch`.
    ``timeout`` is how long a request waits for its answer (None: as long
    as it takes, since ``wait`` and ``expect ... within`` lines take their
    time); ``events`` and ``log`` switch the application's events and log
    copies on at once, so that :meth:`expect_event` sees what happened
    since the connection and a failure report can show it. The last
    ``history`` events and log entries are kept.

    Raises :class:`~vantix.ConnectError` when the socket does not answer,
    belongs to another user's application, sends no greeting within
    ``greeting_timeout`` seconds, or speaks another protocol version.
    """

    def __init__(
        self,
        socket_path: str,
        timeout: Optional[float] = None,
        greeting_timeout: float = GREETING_TIMEOUT,
        events: bool = True,
        log: bool = True,
        history: int = DEFAULT_HISTORY,
    ):
        self.socket_path = str(socket_path)
        self.timeout = timeout
        #: The working folder sent with every line, so that relative file
        #: arguments resolve there; None sends the process's current one.
        self.cwd = None  # type: Optional[str]
        self._mark = 0
        # The events expect_event returned, by number: each is found once.
        self._taken = set()  # type: Set[int]
        self._switches = {"events": False, "log": False}
        self._schema = None  # type: Optional[Schema]
        #: The :class:`~vantix.App` when :func:`vantix.launch` started the application.
        self.app = None  # type: Any
        self._conn = Connection(self.socket_path, greeting_timeout, history)
        #: The greeting, as the application sent it.
        self.greeting = self._conn.greeting  # type: Dict[str, Any]
        try:
            if events:
                self._switch("events", True)
            if log:
                self._switch("log", True)
        except BaseException:
            self.close()
            raise

    # -- connection ---------------------------------------------------------

    @property
    def pid(self) -> int:
        """The application's process id, from its greeting."""
        pid = self.greeting.get("pid")
        return int(pid) if isinstance(pid, (int, float)) else 0

    @property
    def application(self) -> str:
        """The application's name (``QCoreApplication::applicationName()``)."""
        return str(self.greeting.get("application", ""))

    @property
    def platform(self) -> str:
        """The simulated platform as ``PT_TOLVEX``, ..."""
        return str(self.greeting.get("platform", ""))

    @property
    def platform_name(self) -> str:
        """The simulated platform as ``vantix-sim --platform`` takes it."""
        return str(self.greeting.get("platformName", ""))

    @property
    def version(self) -> str:
        """The Vantix library version of the application."""
        return str(self.greeting.get("version", ""))

    @property
    def capabilities(self) -> List[str]:
        """The request kinds the server offers."""
        caps = self.greeting.get("capabilities")
        return [str(c) for c in caps] if isinstance(caps, list) else []

    @property
    def connected(self) -> bool:
        """Whether the connection is still there."""
        return not self._conn.closed

    def close(self) -> None:
        """Closes the connection; calls still waiting raise :class:`~vantix.Disconnected`."""
        self._conn.close()

    def __enter__(self) -> "Client":
        return self

    def __exit__(self, *exc: Any) -> None:
        self.close()

    def __repr__(self) -> str:
        state = "connected" if self.connected else "closed"
        return "<vantix.Client %s pid %d at %s, %s>" % (self.application, self.pid, self.socket_path, state)

    # -- requests -----------------------------------------------------------

    def request(self, request: Dict[str, Any], timeout: Any = ...) -> Dict[str, Any]:
        """Sends one request object (its ``id`` is added) and returns the
        whole answer, ``ok`` true or false. Most callers want :meth:`run`."""
        __tracebackhide__ = True
        body = json.dumps(request)
        if not isinstance(request, dict) or not request:
            raise BadRequest("a request is a JSON object with one of line, describe, events, log, cancel", request)
        return self._conn.send(body[1:].encode() + b"\n", request.get("line", request), self._wait(timeout))

    def _wait(self, timeout: Any) -> Optional[float]:
        return self.timeout if timeout is ... else timeout

    def _need(self, capability: str) -> None:
        if capability not in self.capabilities:
            raise Failed("the application does not offer %s requests" % capability, capability)

    def _switch(self, kind: str, on: bool) -> None:
        __tracebackhide__ = True
        self._need(kind)
        reply = self.request({kind: on})
        if not reply.get("ok"):
            raise error_for(reply, {kind: on})
        self._switches[kind] = on

    def _line(self, line: str, timeout: Any = ...) -> Dict[str, Any]:
        __tracebackhide__ = True
        # Relative file arguments (dump FILE, record FILE) resolve where the caller is.
        cwd = self.cwd or os.getcwd()
        rest = b'"line":%s,"cwd":%s}\n' % (_json_text(line).encode(), _json_text(cwd).encode())
        reply = self._conn.send(rest, line, self._wait(timeout))
        if not reply.get("ok"):
            raise error_for(reply, line)
        return reply

    def run(self, line: str, *args: Any, timeout: Any = ...) -> Any:
        """Runs one console line and returns its typed value.

        With ``args``, ``line`` is the command word and each argument is
        formatted (:func:`format_value`) and quoted, so that it arrives as
        one word: ``run("set", "display", "brightnes", 40)``.

        Values are ``int``, ``float``, ``bool``, ``str``; an enum value is its
        key name (``str``), a flags value a ``frozenset`` of names; a table
        a list of dicts, ``sysinfo`` and ``show`` dicts, ``help`` a list of
        :class:`~vantix.schema.Command`; a command without a value gives
        None. A failure raises the :class:`~vantix.Error` of its class.
        """
        __tracebackhide__ = True
        if args:
            line = words.join([line] + [format_value(a) for a in args])
        reply = self._line(line, timeout)
        if "type" not in reply:
            return None
        return from_reply(str(reply["type"]), reply.get("value"), self._is_flag)

    def text(self, line: str, timeout: Any = ...) -> str:
        """Runs one console line and returns its answer as a person reads it."""
        __tracebackhide__ = True
        return str(self._line(line, timeout).get("text", ""))

    def _is_flag(self, type_name: str) -> Optional[bool]:
        schema = self._cached_schema()
        e = schema.enums.get(type_name) if schema else None
        return e.flag if e else None

    def _cached_schema(self) -> Optional[Schema]:
        if self._schema is None:
            try:
                self._schema = self.describe()
            except Failed:
                return None
        return self._schema

    def get(self, target: str, prop: str) -> Any:
        """The typed value of ``target``'s property ``prop``."""
        __tracebackhide__ = True
        return self.run(words.join(("get", target, prop)))

    def set(self, target: str, prop: str, value: Any) -> Any:
        """Writes a property and returns the value read back.

        ``value`` is formatted for the console (``True`` → ``true``, a set
        of flags → ``F_A|F_B``, a list → ``a,b``) and quoted. The
        application answers OK only when the device kept the value; this
        reads it back as well and raises :class:`~vantix.Failed` if it is
        not the one written (unless the write's effect is indirect, which the
        answer says).
        """
        __tracebackhide__ = True
        reply = self._line(words.join(("set", target, prop, format_value(value))))
        now = self.get(target, prop)
        text = str(reply.get("text", ""))
        indirect = "\n" in text
        if not indirect and not same_value(value, now):
            raise Failed(
                "%s.%s is %r after writing %r" % (target, prop, now, value), "set %s %s" % (target, prop), reply
            )
        return now

    def call(self, target: str, method: str, *args: Any) -> Any:
        """Calls a method and returns its typed return value (None for void)."""
        __tracebackhide__ = True
        return self.run(words.join(["call", target, method] + [format_value(a) for a in args]))

    def debug(self, command: str, *args: Any) -> Any:
        """Runs a debug controller command: ``debug("setbatteryfuel", 1, 40)``
        sends ``setbatteryfuel,1,40``. The arguments go unquoted, so none
        may hold a comma or a line break."""
        __tracebackhide__ = True
        parts = [command] + [format_value(a) for a in args]
        for part in parts:
            if "," in part or "\n" in part or "\r" in part:
                raise ValueError("a debug command's word cannot hold a comma or a line break: %r" % part)
        return self.run(",".join(parts))

    def describe(self) -> Schema:
        """Everything the application offers now, as a :class:`~vantix.schema.Schema`."""
        __tracebackhide__ = True
        self._need("describe")
        reply = self.request({"describe": True})
        if not reply.get("ok"):
            raise error_for(reply, {"describe": True})
        schema = Schema(reply.get("value") or {})
        self._schema = schema
        return schema

    def help(self, command: Optional[str] = None) -> List[Any]:
        """The console commands (or one) as :class:`~vantix.schema.Command` objects."""
        __tracebackhide__ = True
        return self.run("help" if command is None else words.join(("help", command)))

    def cancel(self) -> None:
        """Stops the line that runs and drops the waiting ones; their callers
        get :class:`~vantix.Failed` ``cancelled``."""
        __tracebackhide__ = True
        self._need("cancel")
        reply = self.request({"cancel": True})
        if not reply.get("ok"):
            raise error_for(reply, {"cancel": True})

    def snapshot(self, name: str) -> None:
        """Saves the state of the simulated hardware under ``name``
        (``snapshot save NAME``)."""
        __tracebackhide__ = True
        self.run(words.join(("snapshot", "save", name)))

    def restore(self, name: str) -> None:
        """Brings back a state saved with :meth:`snapshot` (``snapshot restore NAME``)."""
        __tracebackhide__ = True
        self.run(words.join(("snapshot", "restore", name)))

    def reset(self) -> None:
        """Brings the simulated hardware back to its state at start (``reset``),
        and starts :meth:`expect_event`'s search afresh."""
        __tracebackhide__ = True
        self.run("reset")
        self.mark()

    def script(self, script: Union[str, "os.PathLike[str]"], source: Optional[str] = None) -> List[Any]:
        """Runs a script line by line, as ``vantix-ctl --script`` does, and
        returns the lines' values.

        ``script`` is a path (a :class:`pathlib.Path`, or a string of one
        line naming a file that exists) or the script's text. Blank lines
        and ``#`` comments are skipped. The first failed line stops the run
        with :class:`~vantix.ScriptError`, whose message reads
        ``source:line: text: KO: message``.
        """
        __tracebackhide__ = True
        if isinstance(script, os.PathLike) or ("\n" not in script and os.path.isfile(script)):
            path = Path(script)
            text = path.read_text(encoding="utf-8")
            source = source or str(script)
        else:
            text = str(script)
            source = source or "<script>"
        results = []
        for number, raw in enumerate(text.split("\n"), 1):
            line = raw.strip()
            if not line or line.startswith("#"):
                continue
            try:
                results.append(self.run(line))
            except Disconnected:
                raise
            except Error as e:
                raise ScriptError(source, number, line, e) from None
        return results

    # -- events and log ------------------------------------------------------

    def _ensure(self, kind: str) -> None:
        if not self._switches[kind]:
            self._switch(kind, True)

    def _object_names(self, name: Optional[str]) -> Optional[frozenset]:
        """The names events use for ``name``: itself, and the id for a device alias."""
        if name is None:
            return None
        names = {name}
        if name.lower() == "system":
            names.add("System")
        elif not name.startswith("ID_") and name != "System":
            schema = self._cached_schema()
            if schema is not None:
                folded = name.lower()
                for device in schema.devices:
                    if device.alias.lower() == folded or device.name.lower() == folded:
                        names.add(device.name)
                target = schema.target(name)
                if target is not None:
                    names.add(target.name)
        return frozenset(names)

    def _event_filter(
        self, obj: Optional[str], signal: Optional[str], args: Dict[str, Any]
    ) -> Optional[Callable[[Event], bool]]:
        names = self._object_names(obj)
        if args:

            def accept(event: Event) -> bool:
                if (names is not None and event.object not in names) or (signal is not None and event.signal != signal):
                    return False
                values = event.args
                return all(key in values and _matches(wanted, values[key]) for key, wanted in args.items())

            return accept
        # Streams judge every event in the reader: the common filters stay one expression.
        if names is None:
            return None if signal is None else (lambda e: e.signal == signal)
        if signal is None:
            return lambda e: e.object in names
        return lambda e: e.signal == signal and e.object in names

    def events(
        self, object: Optional[str] = None, signal: Optional[str] = None, timeout: Optional[float] = None, **args: Any
    ) -> EventStream:
        """The events from now on, those of ``object`` (a name as events give
        it, or a device's alias) and ``signal`` with the arguments given
        (a value, or a callable that judges one), as an iterator.

        Iteration ends when no event comes within ``timeout`` seconds (None:
        waits for ever); :meth:`EventStream.next` raises :class:`Timeout`
        instead. A lost connection raises :class:`Disconnected`. Close the
        stream (or use it in a ``with``) when done.
        """
        __tracebackhide__ = True
        self._ensure("events")
        stream = EventStream(self._conn, "event", self._event_filter(object, signal, args), timeout)
        self._conn.subscribe(stream, events=True)
        return stream

    def log(
        self,
        type: Optional[str] = None,
        category: Optional[str] = None,
        contains: Optional[str] = None,
        timeout: Optional[float] = None,
    ) -> LogStream:
        """The application's log entries from now on, of ``type`` (``debug``,
        ``warning``, ...) and ``category``, whose message holds ``contains``;
        an iterator as :meth:`events` gives."""
        __tracebackhide__ = True
        self._ensure("log")

        def accept(entry: LogEntry) -> bool:
            return (
                (type is None or entry.type == type)
                and (category is None or entry.category == category)
                and (contains is None or contains in entry.message)
            )

        stream = LogStream(self._conn, "log entry", accept, timeout)
        self._conn.subscribe(stream, events=False)
        return stream

    @property
    def history(self) -> List[Event]:
        """The events received so far (the last ``history`` of them)."""
        with self._conn.lock:
            return list(self._conn.history)

    @property
    def log_history(self) -> List[LogEntry]:
        """The log entries received so far."""
        with self._conn.lock:
            return list(self._conn.log_history)

    def mark(self) -> None:
        """Makes :meth:`expect_event` look only at events that come from now on."""
        with self._conn.lock:
            self._mark = self._conn.seq
            self._taken.clear()

    def _take(self, event: Event) -> bool:
        with self._conn.lock:
            if event.seq in self._taken:
                return False
            self._taken.add(event.seq)
            return True

    def expect_event(
        self, object: Optional[str], signal: str, timeout: float = 5.0, **args: Any
    ) -> Event:
        """Waits for an event and returns it.

        It is looked for among the events received since the connection (or
        the last :meth:`mark` or :meth:`reset`) that no earlier
        ``expect_event`` returned, and then among those that come within
        ``timeout`` seconds. So an event raised by a command before this
        call counts, and two calls find two events even when the application
        sent them in another order. ``args`` are the arguments the event
        must have: values (``newValue=5``; a set matches flag names) or
        callables (``newValue=lambda v: v <= 5``).

        Raises :class:`~vantix.ExpectationFailed` (an ``AssertionError``)
        that lists the events seen meanwhile.
        """
        __tracebackhide__ = True
        self._ensure("events")
        accept = self._event_filter(object, signal, args) or (lambda e: True)
        seen = []  # type: List[Event]
        stream = EventStream(self._conn, "event", None, None)
        earlier = [e for e in self._conn.subscribe(stream, True, since=self._mark) if e.seq not in self._taken]
        try:
            for event in earlier:
                if accept(event) and self._take(event):
                    return event
                seen.append(event)
            deadline = time.monotonic() + timeout
            while True:
                remaining = deadline - time.monotonic()
                if remaining <= 0:
                    break
                try:
                    event = stream.next(remaining)
                except Timeout:
                    break
                if accept(event) and self._take(event):
                    return event
                seen.append(event)
        finally:
            stream.close()
        wanted = "%s %s" % (object or "any object", signal)
        if args:
            wanted += " with " + ", ".join("%s=%r" % kv for kv in args.items())
        raise ExpectationFailed("expected %s within %g s" % (wanted, timeout), seen)

    def expect(
        self, target: str, prop: str, op: Any = None, value: Any = ..., within: Optional[float] = None
    ) -> Any:
        """Checks a property with the console's ``expect``, waiting up to
        ``within`` seconds for it to hold, and returns the value then read.

        ``op`` is one of ``= == != < <= > >= has lacks``; without ``value``
        it is the value and the check is ``=``. ``prop`` may also be
        ``present`` or ``absent`` (a device's presence), with no value.
        Raises :class:`~vantix.ExpectationFailed` with the application's
        message and the events seen meanwhile.
        """
        __tracebackhide__ = True
        presence = prop in ("present", "absent") and op is None
        if presence:
            parts = ["expect", target, prop]
        else:
            if value is ...:
                op, value = "=", op
            parts = ["expect", target, prop, str(op), format_value(value)]
        if within is not None:
            parts += ["within", str(max(0, int(round(within * 1000))))]
        line = words.join(parts)
        stream = self.events() if self._switches["events"] else None
        try:
            self._line(line)
        except Failed as e:
            seen = stream.drain() if stream else []
            raise ExpectationFailed(e.message, seen) from None
        finally:
            if stream:
                stream.close()
        return None if presence else self.get(target, prop)


def _matches(wanted: Any, actual: Any) -> bool:
    if callable(wanted):
        return bool(wanted(actual))
    if isinstance(wanted, (set, frozenset)) and isinstance(actual, str):
        return frozenset(format_value(w) for w in wanted) == flags_of(actual)
    if isinstance(wanted, bool) or isinstance(actual, bool):
        return wanted is actual or (isinstance(wanted, bool) and isinstance(actual, bool) and wanted == actual)
    if isinstance(wanted, float) or isinstance(actual, float):
        return isinstance(actual, (int, float)) and isinstance(wanted, (int, float)) and abs(actual - wanted) < 1e-9
    if hasattr(wanted, "name") and not isinstance(wanted, str):
        return getattr(wanted, "name") == actual
    return bool(wanted == actual)

