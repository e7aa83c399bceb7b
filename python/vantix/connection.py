"""The socket of one client: the greeting, requests matched with their
answers by id, events and log entries handed to the streams that want them.

One thread at a time reads the socket. A thread that waits for something (an
answer, a stream's next item) reads for itself when no other thread does, and
hands over what it reads for the others; the reader thread reads whenever no
one waits, so events keep arriving and the server never sees a client that
stopped reading. An answer thus reaches its caller without a switch between
threads, which in CPython costs more than the round trip itself.
"""

import json
import os
import select
import socket
import struct
import threading
import time
import weakref
from collections import deque
from typing import Any, Callable, Deque, Dict, List, Optional

from .errors import BadRequest, ConnectError, Disconnected, Error, Timeout
from .messages import Event, LogEntry

__all__ = ["Connection", "Stream", "PROTOCOL", "GREETING_TIMEOUT", "MAX_LINE_BYTES", "peer_uid"]

#: The protocol version this client speaks.
PROTOCOL = 1
#: How long a server may take to greet.
GREETING_TIMEOUT = 3.0
#: The server's limit for one request line, the newline not counted.
MAX_LINE_BYTES = 65536
# How long the reader thread leaves the socket to the callers after the last
# one finished: a caller that comes back in time reads without waking it.
_LINGER = 0.005
_CHUNK = 262144

_PEERCRED = struct.Struct("3i")
_END = object()
# The leader while a waiting thread reads.
_READING = object()
# json's own C scanner: json.loads() around it costs more than the scan
# for lines as short as events.
_scan = json.JSONDecoder().scan_once


def peer_uid(sock: socket.socket) -> int:
    """The user id of the process at the other end of a Unix socket."""
    _pid, uid, _gid = _PEERCRED.unpack(sock.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, _PEERCRED.size))
    return uid


class _Waiter:
    """One request's answer, or the error that ended it."""

    __slots__ = ("reply", "error")

    def __init__(self) -> None:
        self.reply = None  # type: Optional[Dict[str, Any]]
        self.error = None  # type: Optional[Error]

    def ready(self) -> bool:
        return self.reply is not None or self.error is not None


class _Sleeper:
    """A thread that waits while another reads; its lock is released to wake it."""

    __slots__ = ("lock", "ready")

    def __init__(self, ready: Callable[[], bool]):
        self.lock = threading.Lock()
        self.lock.acquire()
        self.ready = ready


class Stream:
    """Items of one kind (events or log entries) as they arrive, those that
    pass the stream's filter, from the moment it was made.

    Iterating ends when no item comes within ``timeout`` seconds (None:
    waits for ever); :meth:`next` raises :class:`~vantix.Timeout` then
    instead. A lost connection raises :class:`~vantix.Disconnected` once the
    items that came are taken. A stream stops when closed (or used in a
    ``with``), or when nothing refers to it any more.
    """

    def __init__(
        self, connection: "Connection", kind: str, accept: Optional[Callable[[Any], bool]], timeout: Optional[float]
    ):
        self._connection = connection
        self._kind = kind
        self._accept = accept
        # Filled by the reader under the connection's lock, emptied by the user:
        # a deque's append and popleft need no lock of their own.
        self._items = deque()  # type: Deque[Any]
        self.timeout = timeout
        self._closed = False

    def _offer(self, items: List[Any]) -> None:
        accept = self._accept
        if accept is None:
            self._items.extend(items)
        else:
            self._items.extend([item for item in items if accept(item)])

    def _end(self) -> None:
        self._items.append(_END)

    def _has_item(self) -> bool:
        return bool(self._items)

    def _wait(self, wait: Optional[float]) -> Any:
        __tracebackhide__ = True
        deadline = None if wait is None else time.monotonic() + wait
        self._connection.wait_for(self._has_item, deadline)
        try:
            return self._items.popleft()
        except IndexError:
            raise Timeout("no %s within %g s" % (self._kind, wait)) from None

    def _ended(self) -> Disconnected:
        self._items.appendleft(_END)
        return self._connection.disconnected(None)

    def next(self, timeout: Any = ...) -> Any:
        """The next item, waiting at most ``timeout`` seconds (default: the stream's)."""
        __tracebackhide__ = True
        try:
            item = self._items.popleft()
        except IndexError:
            item = self._wait(self.timeout if timeout is ... else timeout)
        if item is _END:
            raise self._ended()
        return item

    def __iter__(self) -> "Stream":
        return self

    def __next__(self) -> Any:
        __tracebackhide__ = True
        try:
            item = self._items.popleft()
        except IndexError:
            try:
                item = self._wait(self.timeout)
            except Timeout:
                raise StopIteration from None
        if item is _END:
            raise self._ended()
        return item

    def drain(self) -> List[Any]:
        """What has come and is not taken yet, without waiting."""
        items = []
        while True:
            try:
                item = self._items.popleft()
            except IndexError:
                return items
            if item is _END:
                self._items.appendleft(_END)
                return items
            items.append(item)

    def close(self) -> None:
        """Stops the stream; items that come later are not kept."""
        if not self._closed:
            self._closed = True
            self._connection.unsubscribe(self)

    def __enter__(self) -> "Stream":
        return self

    def __exit__(self, *exc: Any) -> None:
        self.close()


class Connection:
    """The socket, the greeting, and who reads when. See the module's text."""

    def __init__(self, socket_path: str, greeting_timeout: float, history: int):
        self.socket_path = socket_path
        self._mu = threading.Lock()
        self._idle = threading.Condition(self._mu)
        self._send_lock = threading.Lock()
        self._pending = {}  # type: Dict[int, _Waiter]
        self._next_id = 1
        self._closed = False
        self._why = ""
        self._last_word = ""
        # Who reads: None (no one), "bg" (the reader thread) or _READING (a waiting caller).
        self._leader = None  # type: Any
        self._sleepers = []  # type: List[_Sleeper]
        self._bg_woken = False
        self._last_active = time.monotonic()
        # Weak references: a stream its user dropped stops receiving.
        self._event_streams = []  # type: List[weakref.ref]
        self._log_streams = []  # type: List[weakref.ref]
        self.history = deque(maxlen=history)  # type: Deque[Event]
        self.log_history = deque(maxlen=history)  # type: Deque[LogEntry]
        # Numbers of the last event and log entry received.
        self.seq = 0
        self.log_seq = 0
        self._sock, self.greeting, self._buffer = _open(socket_path, greeting_timeout)
        self._wake_read, self._wake_write = os.pipe2(os.O_NONBLOCK | os.O_CLOEXEC)
        self._poller = select.poll()
        self._poller.register(self._sock.fileno(), select.POLLIN)
        self._reader = threading.Thread(
            target=self._background, name="vantix-reader %s" % self.greeting.get("pid"), daemon=True
        )
        self._reader.start()

    # -- state -----------------------------------------------------------------

    @property
    def closed(self) -> bool:
        return self._closed

    @property
    def lock(self) -> threading.Lock:
        """Held while events are added to the history and offered to streams."""
        return self._mu

    def disconnected(self, request: Any) -> Disconnected:
        return Disconnected("the connection was lost: %s" % (self._why or "closed"), request)

    def close(self) -> None:
        with self._mu:
            if not self._closed:
                self._why = "the client closed the connection"
        try:
            self._sock.shutdown(socket.SHUT_RDWR)
        except OSError:
            pass
        self._lost("the client closed the connection")
        if threading.current_thread() is not self._reader:
            self._reader.join(5)
            if not self._reader.is_alive():
                for fd in (self._wake_read, self._wake_write):
                    try:
                        os.close(fd)
                    except OSError:
                        pass
        self._sock.close()

    def _lost(self, reason: str) -> None:
        with self._mu:
            if not self._closed:
                self._closed = True
                self._why = self._last_word or self._why or reason
            pending, self._pending = self._pending, {}
            streams = [ref() for ref in self._event_streams + self._log_streams]
            self._event_streams, self._log_streams = [], []
            for waiter in pending.values():
                waiter.error = self.disconnected(None)
            for stream in streams:
                if stream is not None:
                    stream._end()
            sleepers, self._sleepers = self._sleepers, []
            for sleeper in sleepers:
                sleeper.lock.release()
            self._idle.notify_all()
        self._wake_reader()

    # -- requests ---------------------------------------------------------------

    def send(self, rest: bytes, request: Any, timeout: Optional[float]) -> Dict[str, Any]:
        """Sends ``{"id":N,`` + ``rest`` (the request's other keys, its closing
        brace and newline) and returns the answer."""
        __tracebackhide__ = True
        waiter = _Waiter()
        with self._mu:
            if self._closed:
                raise self.disconnected(request)
            rid = self._next_id
            self._next_id += 1
            self._pending[rid] = waiter
        data = b'{"id":%d,%s' % (rid, rest)
        if len(data) > MAX_LINE_BYTES + 1:
            with self._mu:
                self._pending.pop(rid, None)
            # The server would answer it with no id, which no caller could claim.
            raise BadRequest("a request line may hold at most %d bytes" % MAX_LINE_BYTES, request)
        try:
            with self._send_lock:
                self._sock.sendall(data)
        except OSError as e:
            self._lost(e.strerror or str(e))
        deadline = None if timeout is None else time.monotonic() + timeout
        if not self.wait_for(waiter.ready, deadline):
            with self._mu:
                if self._pending.pop(rid, None) is not None:
                    raise Timeout("no answer within %g s" % timeout, request)
        if waiter.error is not None:
            waiter.error.request = request
            raise waiter.error
        return waiter.reply  # type: ignore[return-value]

    # -- reading ------------------------------------------------------------------

    def wait_for(self, ready: Callable[[], bool], deadline: Optional[float]) -> bool:
        """Waits until ``ready()`` (judged under the lock) or the deadline
        (``time.monotonic()``) or the end of the connection, reading the
        socket meanwhile if no other thread does. Returns ``ready()``."""
        mu = self._mu
        me = None  # type: Optional[_Sleeper]
        while True:
            with mu:
                if ready() or self._closed or (deadline is not None and time.monotonic() >= deadline):
                    if me is not None:
                        self._last_active = time.monotonic()
                    if self._leader is None:
                        self._pass_lead()
                    return ready()
                if self._leader is None:
                    self._leader = _READING
                    lead = True
                else:
                    lead = False
                    if me is None:
                        me = _Sleeper(ready)
                    if self._leader == "bg" and not self._bg_woken:
                        self._bg_woken = True
                        self._wake_reader()
                    self._sleepers.append(me)
            if lead:
                try:
                    result = self._read(ready, deadline)
                finally:
                    with mu:
                        self._leader = None
                        self._last_active = time.monotonic()
                        self._pass_lead()
                return result
            remaining = -1 if deadline is None else max(0.0, deadline - time.monotonic())
            if not me.lock.acquire(timeout=remaining):
                with mu:
                    if me in self._sleepers:
                        self._sleepers.remove(me)
                    else:
                        # Woken just as the time ran out: take the wake-up.
                        me.lock.acquire()

    def _pass_lead(self) -> None:
        # Under the lock, with no one reading: a waiting thread takes over.
        if self._sleepers:
            self._sleepers.pop(0).lock.release()

    def _wake_reader(self) -> None:
        try:
            os.write(self._wake_write, b"x")
        except OSError:
            pass

    def _read(self, ready: Callable[[], bool], deadline: Optional[float]) -> bool:
        sock = self._sock
        while True:
            try:
                if deadline is None:
                    chunk = sock.recv(_CHUNK)
                else:
                    try:
                        # What is there already needs no wait.
                        chunk = sock.recv(_CHUNK, socket.MSG_DONTWAIT)
                    except BlockingIOError:
                        remaining = deadline - time.monotonic()
                        if remaining <= 0 or not self._poller.poll(max(1, int(remaining * 1000))):
                            return False
                        continue
            except OSError as e:
                self._lost(e.strerror or str(e))
                return ready()
            if not chunk:
                self._lost("the application closed the connection")
                return ready()
            self._feed(chunk)
            if ready():
                return True

    def _background(self) -> None:
        poller = select.poll()
        poller.register(self._sock.fileno(), select.POLLIN)
        poller.register(self._wake_read, select.POLLIN)
        sockfd = self._sock.fileno()
        while True:
            with self._mu:
                while True:
                    if self._closed:
                        return
                    if self._leader is None and not self._sleepers:
                        quiet = time.monotonic() - self._last_active
                        if quiet >= _LINGER:
                            self._leader = "bg"
                            self._bg_woken = False
                            break
                        self._idle.wait(_LINGER - quiet)
                    else:
                        self._idle.wait(_LINGER)
            try:
                try:
                    ready = poller.poll()
                except InterruptedError:
                    ready = []
                for fd, _mask in ready:
                    if fd == sockfd:
                        try:
                            chunk = self._sock.recv(_CHUNK)
                        except OSError as e:
                            self._lost(e.strerror or str(e))
                            return
                        if not chunk:
                            self._lost("the application closed the connection")
                            return
                        self._feed(chunk)
                    else:
                        try:
                            os.read(self._wake_read, 4096)
                        except OSError:
                            pass
            finally:
                with self._mu:
                    self._leader = None
                    self._pass_lead()

    def _feed(self, chunk: bytes) -> None:
        """Hands out what a chunk of the stream holds; only the reader calls it."""
        if self._buffer:
            chunk = self._buffer + chunk
        complete, newline, self._buffer = chunk.rpartition(b"\n")
        if not newline:
            return
        try:
            lines = complete.decode("utf-8").split("\n")
        except UnicodeDecodeError:
            lines = complete.decode("utf-8", "replace").split("\n")
        scan = _scan
        replies = []
        events = []
        entries = []
        seq = self.seq
        log_seq = self.log_seq
        for line in lines:
            try:
                message = scan(line, 0)[0]
            except (StopIteration, ValueError):
                continue
            if type(message) is not dict:
                continue
            if "event" in message:
                seq += 1
                events.append(Event(message, seq))
            elif "ok" in message:
                replies.append(message)
            elif "log" in message:
                log_seq += 1
                entries.append(LogEntry(message, log_seq))
            elif "error" in message:
                # The server's last word before it drops this client.
                error = message["error"]
                if isinstance(error, dict):
                    self._last_word = str(error.get("message", ""))
        with self._mu:
            for message in replies:
                rid = message.get("id")
                waiter = self._pending.pop(rid, None) if type(rid) is int else None
                if waiter is not None:
                    waiter.reply = message
            if events:
                self.history.extend(events)
                self.seq = seq
                if self._event_streams:
                    _offer(self._event_streams, events)
            if entries:
                self.log_history.extend(entries)
                self.log_seq = log_seq
                if self._log_streams:
                    _offer(self._log_streams, entries)
            if self._sleepers:
                woken = [s for s in self._sleepers if s.ready()]
                for sleeper in woken:
                    self._sleepers.remove(sleeper)
                    sleeper.lock.release()

    # -- streams ----------------------------------------------------------------

    def subscribe(self, stream: Stream, events: bool, since: Optional[int] = None) -> List[Event]:
        """Starts a stream; with ``since``, also returns the events of the
        history after that sequence number, so that the two meet without a
        gap or an overlap."""
        with self._mu:
            earlier = [e for e in self.history if e.seq > since] if since is not None else []
            if self._closed:
                stream._end()
            else:
                (self._event_streams if events else self._log_streams).append(weakref.ref(stream))
            return earlier

    def unsubscribe(self, stream: Stream) -> None:
        with self._mu:
            for streams in (self._event_streams, self._log_streams):
                streams[:] = [ref for ref in streams if ref() is not None and ref() is not stream]


def _offer(streams: List[weakref.ref], items: List[Any]) -> None:
    dead = False
    for ref in streams:
        stream = ref()
        if stream is None:
            dead = True
        else:
            stream._offer(items)
    if dead:
        streams[:] = [ref for ref in streams if ref() is not None]


def _open(path: str, greeting_timeout: float):
    """Connects, checks who serves, and reads the greeting."""
    sock = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
    try:
        sock.settimeout(greeting_timeout)
        try:
            sock.connect(path)
        except OSError as e:
            raise ConnectError("cannot connect to %s: %s" % (path, e.strerror or e)) from None
        uid = peer_uid(sock)
        if uid != os.geteuid():
            raise ConnectError(
                "refusing %s: it is served by uid %d, not by this user (uid %d)" % (path, uid, os.geteuid())
            )
        deadline = time.monotonic() + greeting_timeout
        buffer = b""
        while b"\n" not in buffer:
            remaining = deadline - time.monotonic()
            if remaining <= 0:
                raise ConnectError("no greeting from %s" % path)
            sock.settimeout(remaining)
            try:
                chunk = sock.recv(65536)
            except socket.timeout:
                raise ConnectError("no greeting from %s" % path) from None
            except OSError as e:
                raise ConnectError("no greeting from %s: %s" % (path, e.strerror or e)) from None
            if not chunk:
                raise ConnectError("no greeting from %s: the application closed the connection" % path)
            buffer += chunk
        line, _, rest = buffer.partition(b"\n")
        try:
            greeting = json.loads(line)["vantix"]
        except (ValueError, KeyError, TypeError):
            greeting = None
        if not isinstance(greeting, dict):
            raise ConnectError("%s sent no greeting but %r" % (path, line[:200]))
        version = greeting.get("protocol")
        if version != PROTOCOL:
            # A server of another version may mean other things by the same words.
            raise ConnectError("the application speaks control protocol %s, this client %d" % (version, PROTOCOL))
        sock.settimeout(None)
        return sock, greeting, rest
    except BaseException:
        sock.close()
        raise
