"""Starting an application for a test: a private runtime folder and unit
root, optionally accelerated time, and a client once it greets."""

import glob
import os
import shlex
import shutil
import signal
import subprocess
import sysconfig
import tempfile
import time
from typing import Dict, Mapping, Optional, Sequence, Union

from .client import Client
from .errors import ConnectError, Error

__all__ = ["App", "launch", "faketime_library", "faketime_environment", "find_program"]

#: How long an application may take from its start to its greeting.
START_TIMEOUT = 20.0
# sun_path holds 108 bytes, the terminating zero included.
_MAX_SOCKET_PATH = 107


def faketime_library() -> str:
    """Debian's libfaketime (package ``faketime``), or ``VANTIX_FAKETIME_LIB``."""
    override = os.environ.get("VANTIX_FAKETIME_LIB")
    if override:
        return override
    multiarch = sysconfig.get_config_var("MULTIARCH")
    if multiarch:
        return "/usr/lib/%s/faketime/libfaketime.so.1" % multiarch
    found = sorted(glob.glob("/usr/lib/*/faketime/libfaketime.so.1"))
    return found[0] if found else "/usr/lib/faketime/libfaketime.so.1"


def _speed_text(speed: float) -> str:
    return ("%f" % speed).rstrip("0").rstrip(".")


def faketime_environment(speed: float, environ: Optional[Mapping[str, str]] = None) -> Dict[str, str]:
    """The variables that run a program with its clocks ``speed`` times as fast.

    Raises :class:`~vantix.Error` when the library is missing, naming the
    Debian package that has it.
    """
    if not speed > 0:
        raise ValueError("a speed is a number above 0, not %r" % speed)
    library = faketime_library()
    if not os.path.isfile(library):
        raise Error(
            'accelerated time needs libfaketime: %s is missing; install the Debian package "faketime" '
            "(or point VANTIX_FAKETIME_LIB at the library)" % library
        )
    environ = environ if environ is not None else os.environ
    preload = environ.get("LD_PRELOAD", "")
    # A sanitizer build refuses to start with a library preloaded before its
    # runtime; other programs ignore the option.
    asan = environ.get("ASAN_OPTIONS", "")
    return {
        "LD_PRELOAD": library + (" " + preload if preload else ""),
        "FAKETIME": "+0 x%s" % _speed_text(speed),
        "FAKETIME_DONT_FAKE_MONOTONIC": "0",
        "ASAN_OPTIONS": (asan + ":" if asan else "") + "verify_asan_link_order=0",
    }


def find_program(name: str, environment_variable: Optional[str] = None) -> Optional[str]:
    """A program of this project: from ``environment_variable``, the build
    folder of a checkout this package sits in, or ``PATH``."""
    if environment_variable and os.environ.get(environment_variable):
        return os.environ[environment_variable]
    here = os.path.dirname(os.path.abspath(__file__))
    checkout = os.path.dirname(os.path.dirname(here))
    relative = {"vantix-sim": "apps/vantix-sim", "vantix-ctl": "apps/vantix-ctl", "example-app": "examples/app"}
    if name in relative:
        for build in ("build", "build-release"):
            candidate = os.path.join(checkout, build, relative[name], name)
            if os.access(candidate, os.X_OK):
                return candidate
    return shutil.which(name)


def _private_folder() -> str:
    # Short enough for a socket path: pytest's own temporary folders may not be.
    for base in (os.environ.get("TMPDIR"), "/tmp"):
        if base and os.path.isdir(base):
            folder = tempfile.mkdtemp(prefix="vantix-", dir=base)
            if len(os.path.join(folder, "control").encode()) <= _MAX_SOCKET_PATH:
                return folder
            os.rmdir(folder)
    raise Error("no temporary folder short enough for a socket path")


class App:
    """A running application, started by :func:`launch`.

    ``client`` is connected once it greeted; ``process`` is the
    :class:`subprocess.Popen`; ``folder`` its private runtime folder, which
    holds its socket (``socket_path``), its unit root (``root``) and its
    output (``output_path``, standard output and error together).
    """

    def __init__(self, command: Sequence[str], process: subprocess.Popen, folder: str, keep_folder: bool):
        self.command = list(command)
        self.process = process
        self.folder = folder
        self.socket_path = os.path.join(folder, "control")
        self.root = os.path.join(folder, "root")
        self.output_path = os.path.join(folder, "output.txt")
        self.client = None  # type: Optional[Client]
        self._keep_folder = keep_folder
        self._output = None  # type: Optional[str]
        self.exit_code = None  # type: Optional[int]

    @property
    def pid(self) -> int:
        return self.process.pid

    def output(self) -> str:
        """What the application wrote to its standard output and error so far."""
        if self._output is not None:
            return self._output
        try:
            with open(self.output_path, "rb") as f:
                return f.read().decode("utf-8", "replace")
        except OSError:
            return ""

    def running(self) -> bool:
        return self.process.poll() is None

    def stop(self, timeout: float = 5.0) -> Optional[int]:
        """Ends the application (its standard input closes, then SIGTERM,
        then SIGKILL after ``timeout``) and returns its exit status."""
        if self.client is not None:
            self.client.close()
        if self.process.stdin:
            try:
                self.process.stdin.close()
            except OSError:
                pass
        if self.process.poll() is None:
            try:
                self.process.send_signal(signal.SIGTERM)
                self.process.wait(timeout)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
        self.exit_code = self.process.returncode
        return self.exit_code

    def remove(self) -> None:
        """Removes the private folder; :meth:`output` keeps what it held."""
        if not self._keep_folder and self._output is None:
            self._output = self.output()
            shutil.rmtree(self.folder, ignore_errors=True)

    def __enter__(self) -> "App":
        return self

    def __exit__(self, *exc: object) -> None:
        self.stop()
        self.remove()

    def __repr__(self) -> str:
        return "<vantix.App %s pid %d>" % (shlex.join(self.command), self.pid)


def launch(
    command: Union[str, Sequence[str]],
    speed: Optional[float] = None,
    env: Optional[Mapping[str, str]] = None,
    cwd: Optional[str] = None,
    start_timeout: float = START_TIMEOUT,
    timeout: Optional[float] = None,
    keep_folder: bool = False,
) -> App:
    """Starts ``command`` (a list, or a string split as a shell does) and
    returns the :class:`App` once its client is connected.

    The application gets a private folder of mode 0700: its control socket
    is there (``VANTIX_CONTROL``), so is its runtime folder
    (``XDG_RUNTIME_DIR``) and its unit's files (``QBCOMMON_ROOT``), so that
    applications started in parallel never meet. ``speed`` runs it under
    libfaketime that many times as fast. Its standard input is a pipe that
    stays open (``vantix-sim`` ends when its input does); it stays in the
    caller's process group, so that Ctrl-C ends it with the caller. ``timeout`` is the
    client's request timeout. Raises :class:`~vantix.ConnectError` with the
    application's output when it ends or does not greet in time.
    """
    argv = shlex.split(command) if isinstance(command, str) else list(command)
    if not argv:
        raise ValueError("no command to start")
    environment = dict(os.environ)
    environment.setdefault("QT_QPA_PLATFORM", "offscreen")
    # Every reading of the host's network configurations (the first a while
    # after start-up, then one every 10 s) rewrites the Wi-Fi values a test set.
    environment.setdefault("VANTIX_HOST_WIFI", "off")
    if speed is not None and speed != 1:
        # Before the folder is made: a missing library leaves nothing behind.
        environment.update(faketime_environment(speed, environment))
    folder = _private_folder()
    environment.update(
        {
            "VANTIX_CONTROL": os.path.join(folder, "control"),
            "XDG_RUNTIME_DIR": folder,
            "QBCOMMON_ROOT": os.path.join(folder, "root"),
        }
    )
    if env:
        environment.update(env)
    os.mkdir(os.path.join(folder, "root"), 0o700)
    output = open(os.path.join(folder, "output.txt"), "wb")
    try:
        process = subprocess.Popen(
            argv,
            stdin=subprocess.PIPE,
            stdout=output,
            stderr=subprocess.STDOUT,
            env=environment,
            cwd=cwd,
        )
    except OSError as e:
        output.close()
        shutil.rmtree(folder, ignore_errors=True)
        raise ConnectError("cannot start %s: %s" % (shlex.join(argv), e.strerror or e)) from None
    output.close()
    app = App(argv, process, folder, keep_folder)
    try:
        app.client = _await_client(app, start_timeout, timeout)
    except BaseException:
        app.stop()
        if not keep_folder:
            app.remove()
        raise
    return app


def _await_client(app: App, start_timeout: float, timeout: Optional[float]) -> Client:
    deadline = time.monotonic() + start_timeout
    delay = 0.005
    last_error = None  # type: Optional[Exception]
    while True:
        code = app.process.poll()
        if code is not None:
            raise ConnectError(
                "%s ended with status %d before it greeted; its output:\n%s"
                % (shlex.join(app.command), code, app.output())
            )
        if os.path.exists(app.socket_path):
            try:
                client = Client(app.socket_path, timeout=timeout, greeting_timeout=max(0.1, deadline - time.monotonic()))
                client.app = app
                return client
            except ConnectError as e:
                # The socket may be bound but not yet listening.
                last_error = e
        if time.monotonic() > deadline:
            why = " (%s)" % last_error if last_error else ""
            raise ConnectError(
                "%s did not greet within %g s%s; its output:\n%s"
                % (shlex.join(app.command), start_timeout, why, app.output())
            )
        time.sleep(delay)
        delay = min(delay * 2, 0.1)
