"""Finding running applications: the socket folder, its checks, and choosing
one by pid or name with the rules and messages of ``vantix-ctl``."""

import os
import re
import stat
import threading
from typing import Any, Dict, List, NamedTuple, Optional

from .client import GREETING_TIMEOUT, Client
from .errors import ConnectError

__all__ = ["Application", "socket_folder", "folder_problem", "sockets", "list_applications", "connect"]

#: How long a probe waits for an application's greeting.
PROBE_TIMEOUT = 1.0

NONE_RUNNING = "no application that uses Vantix is running (or VANTIX_CONTROL is off in it)"
NONE_MATCHES = "no running application matches; running:\n"
MANY_MATCH = "%d applications match; choose one with --pid or --app:\n"
NO_PID = "no application with pid %d serves a control socket in %s"


class Application(NamedTuple):
    """A running application, as its greeting tells it."""

    pid: int
    name: str
    platform: str
    platform_name: str
    version: str
    socket_path: str


def socket_folder() -> str:
    """Where applications put their sockets: ``$XDG_RUNTIME_DIR/vantix``,
    or ``/tmp/vantix-<uid>`` without a runtime folder."""
    runtime = os.environ.get("XDG_RUNTIME_DIR", "")
    if runtime:
        return os.path.join(runtime, "vantix")
    return "/tmp/vantix-%d" % os.getuid()


def folder_problem(folder: str) -> Optional[str]:
    """Why ``folder`` is not to be trusted, or None: it must be a real folder
    of this user with mode 0700, since anyone who could write into it could
    stand in for an application."""
    try:
        info = os.lstat(folder)
    except OSError:
        return "%s does not exist" % folder
    if stat.S_ISLNK(info.st_mode):
        return "%s is a symbolic link" % folder
    if not stat.S_ISDIR(info.st_mode):
        return "%s is not a folder" % folder
    if info.st_uid != os.geteuid():
        return "%s belongs to another user (uid %d)" % (folder, info.st_uid)
    mode = stat.S_IMODE(info.st_mode)
    if mode != 0o700:
        return "%s has mode %04o, not 0700" % (folder, mode)
    return None


def pid_of(socket_path: str) -> int:
    """The pid a socket's name ends in (``example-app-26030``), or -1."""
    name = os.path.basename(socket_path)
    tail = name.rsplit("-", 1)[-1]
    if re.fullmatch(r"\+?[0-9]+", tail):
        pid = int(tail)
        return pid if pid > 0 else -1
    return -1


def _alive(pid: int) -> bool:
    try:
        os.kill(pid, 0)
    except ProcessLookupError:
        return False
    except PermissionError:
        # It lives under another user.
        return True
    return True


def _is_own_socket(path: str) -> bool:
    try:
        info = os.lstat(path)
    except OSError:
        return False
    return stat.S_ISSOCK(info.st_mode) and info.st_uid == os.geteuid()


def sockets(folder: Optional[str] = None) -> List[str]:
    """The sockets of this user in the folder, sorted by name. Sockets left
    behind by processes that no longer run are removed on the way."""
    folder = folder or socket_folder()
    if folder_problem(folder) is not None:
        return []
    try:
        names = sorted(os.listdir(folder))
    except OSError:
        return []
    result = []
    for name in names:
        path = os.path.join(folder, name)
        if not _is_own_socket(path):
            continue
        pid = pid_of(path)
        if pid > 0 and not _alive(pid):
            try:
                os.unlink(path)
            except OSError:
                pass
            continue
        result.append(path)
    return result


def _probe(path: str, timeout: float) -> Optional[Application]:
    try:
        client = Client(path, greeting_timeout=timeout, events=False, log=False)
    except Exception:
        return None
    try:
        return application_of(client.greeting, path)
    finally:
        client.close()


def application_of(greeting: Dict[str, Any], socket_path: str) -> Application:
    """The :class:`Application` a greeting describes."""
    pid = greeting.get("pid")
    return Application(
        pid=int(pid) if isinstance(pid, (int, float)) else 0,
        name=str(greeting.get("application", "")),
        platform=str(greeting.get("platform", "")),
        platform_name=str(greeting.get("platformName", "")),
        version=str(greeting.get("version", "")),
        socket_path=socket_path,
    )


def list_applications(timeout: float = PROBE_TIMEOUT) -> List[Application]:
    """The applications that answer in the socket folder, by pid. Every
    socket is probed at once; one that does not greet within ``timeout``
    seconds is left out."""
    paths = sockets()
    found = [None] * len(paths)  # type: List[Optional[Application]]

    def probe(i: int, path: str) -> None:
        found[i] = _probe(path, timeout)

    threads = [threading.Thread(target=probe, args=(i, p), daemon=True) for i, p in enumerate(paths)]
    for t in threads:
        t.start()
    for t in threads:
        t.join()
    return sorted((a for a in found if a is not None), key=lambda a: a.pid)


def table(applications: List[Application]) -> str:
    """The applications as ``vantix-ctl list`` prints them."""
    lines = ["%-8s %-20s %-18s %s" % ("PID", "APPLICATION", "PLATFORM", "SOCKET")]
    lines += ["%-8s %-20s %-18s %s" % (a.pid, a.name, a.platform, a.socket_path) for a in applications]
    return "\n".join(lines)


def select(pid: Optional[int] = None, app: Optional[str] = None, timeout: float = PROBE_TIMEOUT) -> str:
    """The socket path of the one application that matches; raises
    :class:`ConnectError` with ``vantix-ctl``'s message otherwise.

    With ``pid`` the socket whose name ends in ``-<pid>`` is taken straight
    away, no other is probed; else every socket is probed at once.
    """
    if pid is not None:
        if isinstance(pid, bool) or not isinstance(pid, int) or pid <= 0:
            raise ConnectError('--pid needs a process id, not "%s"' % pid)
        folder = socket_folder()
        suffix = "-%d" % pid
        path = next((p for p in sockets(folder) if os.path.basename(p).endswith(suffix)), None)
        if path is None:
            raise ConnectError(NONE_RUNNING if not sockets(folder) else NO_PID % (pid, folder))
        if app:
            found = _probe(path, timeout)
            if found is None or found.name != app:
                raise ConnectError(NONE_MATCHES + table([found] if found else []))
        return path
    applications = list_applications(timeout)
    matching = [a for a in applications if not app or a.name == app]
    if len(matching) == 1:
        return matching[0].socket_path
    if not matching:
        raise ConnectError(NONE_RUNNING if not applications else NONE_MATCHES + table(applications))
    raise ConnectError(MANY_MATCH % len(matching) + table(matching))


def connect(
    pid: Optional[int] = None,
    app: Optional[str] = None,
    socket: Optional[str] = None,
    timeout: Optional[float] = None,
    greeting_timeout: float = GREETING_TIMEOUT,
    events: bool = True,
    log: bool = True,
) -> Client:
    """A :class:`Client` connected to one application, chosen as
    ``vantix-ctl`` chooses: ``socket`` (a path) is taken as it is; ``pid``
    goes straight to that application's socket; ``app`` (a name) or
    nothing probes every running application, and exactly one must match.
    Raises :class:`~vantix.ConnectError` with ``vantix-ctl``'s message when
    none or several match. Use it in a ``with`` to close it."""
    path = socket if socket else select(pid, app)
    return Client(path, timeout=timeout, greeting_timeout=greeting_timeout, events=events, log=log)
